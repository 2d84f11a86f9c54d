/*
 * The encoders of the flow and flow-hop sensors on their own: every field as
 * a standard parser reads it, field order, group writers, capacities, JSON
 * text and floors, texts that fill their field, and exact bytes.
 */
#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "flow_check.h"
#include "mdtlm_vraldcn.h"
#include "record_pipeline.h"

using namespace flowtest;

namespace {

using FlowRec = MDTLM_FLOW_STATS_REC;
using HopRec = MDTLM_FLOWHOP_STATS_REC;

using CheckFunc = int32_t (*)(const void *record, const uint8_t *out, int32_t cap);

template <typename Rec, int32_t (*Check)(const Rec *, const uint8_t *, int32_t)>
int32_t CheckOf(const void *record, const uint8_t *out, int32_t cap)
{
    return Check(static_cast<const Rec *>(record), out, cap);
}

/* What the parametrised tests need to know of a sensor. */
struct Sensor {
    const char *name;
    const char *proto, *sample;
    uint32_t container;
    int32_t floor;
    MDTLM_RECORD_ENCODE_FUNC gpb, json;
    CheckFunc check;
    const char *const *jsonTemplate;
    const std::vector<std::pair<std::string, std::string>> *templ;
    std::vector<uint32_t> body; /* field numbers of a tunnelled record, in order */
    uint32_t tunnelId, outerTtl;
    const char *paramError;
};

void PrintTo(const Sensor &s, std::ostream *os) { *os << s.name; }

/* Both records share their first 124 bytes (tunnel, cast, texts): the
 * parametrised tests change only those. */
union AnyRec {
    FlowRec flow;
    HopRec hop;
};

const Sensor kSensors[] = {
    {"flow", "flow_statistics.proto", "mdtlm.flow.Sample", 2, 1449,
     MDTLM_PipelineEncoder<FlowRec, MDTLM_VRALDCN_FLOW_GPB_EncodeMsg>,
     MDTLM_PipelineEncoder<FlowRec, MDTLM_VRALDCN_FLOW_JSON_EncodeMsg>,
     CheckOf<FlowRec, MDTLM_VRALDCN_FLOW_JSON_CheckEncodePara>, &MDTLM_VRALDCN_FLOW_STATS_JSON_TEMPLATE,
     &kFlowTemplate,
     {1, 2, 12, 14, 25, 3, 4, 5, 10, 8, 9, 13, 33, 15, 16, 17, 18, 19, 21, 23, 36, 37, 38, 39, 35, 41, 42},
     37, 38, "[mdtlm.vraldcn.statis:#][VRALDCN_FLOW_GPB_EncodeMsg] Param error, msg is NULL."},
    {"flowhop", "flow_hop_statistics.proto", "mdtlm.flowhop.Sample", 3, 1335,
     MDTLM_PipelineEncoder<HopRec, MDTLM_VRALDCN_FLOWHOP_GPB_EncodeMsg>,
     MDTLM_PipelineEncoder<HopRec, MDTLM_VRALDCN_FLOWHOP_JSON_EncodeMsg>,
     CheckOf<HopRec, MDTLM_VRALDCN_FLOWHOP_JSON_CheckEncodePara>,
     &MDTLM_VRALDCN_FLOWHOP_STATS_JSON_TEMPLATE, &kFlowHopTemplate,
     {1, 2, 3, 13, 27, 4, 23, 5, 6, 7, 8, 9, 11, 29, 30, 31, 32, 33, 14, 16, 17, 28, 35, 36}, 31, 32,
     "[mdtlm.vraldcn.statis:#][VRALDCN_FLOWHOP_GPB_EncodeMsg] Param error, msg is NULL."},
};

class FlowEncode : public ::testing::TestWithParam<Sensor> {
protected:
    void SetUp() override
    {
        fw.Reset();
        fw.Install();
        ASSERT_EQ(MDTLM_VRALDCN_InitTlmFrmVtbl(), 0u); /* log lines reach the double */
        if (IsFlow()) {
            rec.flow = FlowRecord();
        } else {
            rec.hop = FlowHopRecord();
        }
    }

    bool IsFlow() const { return GetParam().container == 2; }

    std::string Encode(MDTLM_RECORD_ENCODE_FUNC encode, int32_t cap = 2048) const
    {
        std::vector<uint8_t> out(4096, 0xA5);
        const int32_t n = encode(&rec, out.data(), cap);
        EXPECT_GT(n, 0);
        return std::string(reinterpret_cast<char *>(out.data()), static_cast<size_t>(std::max(n, 0)));
    }

    std::vector<Member> Expected(uint32_t seq) const
    {
        return IsFlow() ? Members(rec.flow, seq) : Members(rec.hop, seq);
    }
    Texts ExpectedTexts() const { return IsFlow() ? TextsOf(rec.flow, kFlowIpv4Texts) : TextsOf(rec.hop); }

    FakeFramework &fw = FakeFramework::Get();
    AnyRec rec{};
};

/* Each group writer writes exactly its fields, in order, and refuses a
 * capacity one byte short of them. */
template <typename Rec>
using GroupCases = std::vector<std::pair<int32_t (*)(const Rec *, uint8_t *, int32_t), std::vector<WireField>>>;

template <typename Rec>
void CheckGroups(const Rec &r, const GroupCases<Rec> &cases)
{
    for (const auto &[writer, fields] : cases) {
        uint8_t out[512];
        const int32_t n = writer(&r, out, sizeof(out));
        ASSERT_GT(n, 0);
        EXPECT_EQ(Fields(std::string(reinterpret_cast<char *>(out), static_cast<size_t>(n))), fields);
        EXPECT_EQ(writer(&r, out, n - 1), MDTLM_ENCODE_NO_SPACE);
    }
}

std::string Hex(const std::string &bytes)
{
    std::string text;
    for (unsigned char c : bytes) {
        text += "0123456789abcdef"[c >> 4];
        text += "0123456789abcdef"[c & 15];
    }
    return text;
}

} // namespace

INSTANTIATE_TEST_SUITE_P(Sensors, FlowEncode, ::testing::ValuesIn(kSensors),
                         [](const auto &info) { return std::string(info.param.name); });

TEST_P(FlowEncode, GpbRecordDecodesFieldForFieldInTableOrder)
{
    const Sensor &s = GetParam();
    for (uint32_t flag : {1u, 0u, 2u}) { /* only 1 means tunnelled */
        SCOPED_TRACE(flag);
        rec.flow.tunnelFlag = flag;
        rec.flow.sequenceNumber = 123456;
        const std::string wire = Encode(s.gpb);
        const Decoded d = DecodeGpb(wire, s.proto, s.sample);
        ASSERT_EQ(d.records.size(), 1u);
        ExpectGpb(*d.records[0], Expected(123456), ExpectedTexts(), flag == 1);

        std::vector<uint32_t> order = s.body;
        if (flag != 1) {
            order.erase(std::find(order.begin(), order.end(), s.tunnelId));
            order.erase(std::find(order.begin(), order.end(), s.outerTtl));
        }
        std::vector<uint32_t> numbers;
        for (const WireField &f : Fields(BodyOf(wire, s.container))) {
            numbers.push_back(f.number);
        }
        EXPECT_EQ(numbers, order);
    }
}

TEST_P(FlowEncode, ZeroRecordStillWritesEveryField)
{
    const Sensor &s = GetParam();
    std::memset(&rec, 0, sizeof(rec));
    rec.flow.addressFamily = 2; /* the hop record does not read this byte */
    const Decoded d = DecodeGpb(Encode(s.gpb), s.proto, s.sample);
    ASSERT_EQ(d.records.size(), 1u);
    ExpectGpb(*d.records[0], Expected(0), {{"chassis-id", ""}, {"slot-id", ""}}, false);
}

TEST_P(FlowEncode, GpbArgumentsAndCapacity)
{
    const Sensor &s = GetParam();
    const int32_t need = static_cast<int32_t>(Encode(s.gpb).size());
    std::vector<uint8_t> out(2048, 0xA5);
    EXPECT_EQ(s.gpb(nullptr, out.data(), 2048), MDTLM_ENCODE_FAIL);
    EXPECT_EQ(fw.CountShape(s.paramError, MDTLM_LOG_FAILURE), 1u);
    EXPECT_EQ(s.gpb(&rec, nullptr, 2048), MDTLM_ENCODE_NO_SPACE);
    EXPECT_EQ(s.gpb(&rec, out.data(), 0), MDTLM_ENCODE_NO_SPACE);
    EXPECT_EQ(s.gpb(&rec, out.data(), -5), MDTLM_ENCODE_NO_SPACE);
    EXPECT_EQ(s.gpb(&rec, out.data(), need - 1), MDTLM_ENCODE_NO_SPACE);
    EXPECT_EQ(std::count(out.begin() + need - 1, out.end(), 0xA5), 2048 - need + 1) << "written past the capacity";
    EXPECT_EQ(s.gpb(&rec, out.data(), need), need);
}

TEST_P(FlowEncode, TextsFillingTheirFieldAreCutThere)
{
    const Sensor &s = GetParam();
    std::memset(rec.flow.chassisId, 'A', 32); /* would run on into the slot text */
    std::memset(rec.flow.slotId, 'B', 32);    /* would run on into the next field */
    const Decoded d = DecodeGpb(Encode(s.gpb), s.proto, s.sample);
    ASSERT_EQ(d.records.size(), 1u);
    EXPECT_EQ(S(*d.records[0], "chassis_id"), std::string(32, 'A'));
    EXPECT_EQ(S(*d.records[0], "slot_id"), std::string(32, 'B'));
    const Json j = ParseRun(Encode(s.json, 4096)).at(0);
    EXPECT_EQ(j["chassis-id"], std::string(32, 'A'));
    EXPECT_EQ(j["slot-id"], std::string(32, 'B'));
}

TEST_P(FlowEncode, JsonTemplateAndRecord)
{
    const Sensor &s = GetParam();
    std::string expected;
    for (const auto &[key, conversion] : *s.templ) {
        expected += (expected.empty() ? "\"" : ",\"") + key + "\":" + (conversion == "s" ? "\"%s\"" : conversion);
    }
    EXPECT_EQ(std::string(*s.jsonTemplate), expected);

    for (uint32_t flag : {1u, 0u}) { /* the JSON carries tunnel-id and outer-ttl either way */
        rec.flow.tunnelFlag = flag;
        rec.flow.sequenceNumber = 17;
        std::vector<uint8_t> out(4096, 0xA5);
        const int32_t n = s.json(&rec, out.data(), 4096);
        ASSERT_GT(n, 0);
        EXPECT_EQ(out[static_cast<size_t>(n)], 0) << "the text ends right behind the record";
        const auto records = ParseRun(std::string(reinterpret_cast<char *>(out.data()), static_cast<size_t>(n)));
        ASSERT_EQ(records.size(), 1u);
        ExpectJson(records[0], Expected(17), ExpectedTexts(), *s.templ);
    }
}

TEST_P(FlowEncode, JsonFloorRefusesWithoutWriting)
{
    const Sensor &s = GetParam();
    for (int32_t cap : {-1, 0, 1, s.floor - 1, s.floor, 24576}) {
        SCOPED_TRACE(cap);
        std::vector<uint8_t> out(24576, 0xA5);
        const int32_t expect = cap < s.floor ? MDTLM_ENCODE_NO_SPACE : 0;
        EXPECT_EQ(s.check(&rec, out.data(), cap), expect);
        const int32_t n = s.json(&rec, out.data(), cap);
        EXPECT_EQ(n > 0 ? 0 : n, expect);
        if (expect != 0) {
            EXPECT_EQ(std::count(out.begin(), out.end(), 0xA5), 24576) << "written below the floor";
        }
    }
    EXPECT_TRUE(fw.Logs().empty());
    uint8_t out[8];
    EXPECT_EQ(s.json(nullptr, out, 4096), MDTLM_ENCODE_FAIL);
    EXPECT_EQ(s.json(&rec, nullptr, 4096), MDTLM_ENCODE_FAIL);
    EXPECT_EQ(s.check(nullptr, out, 4096), MDTLM_ENCODE_FAIL);
    EXPECT_EQ(fw.CountShape("[mdtlm.vraldcn.statis:#][FLOW_JSON_CheckEncodePara] Param error, msg is NULL.",
                            MDTLM_LOG_FAILURE),
              3u);

    /* The longest record the template can produce fits the floor. */
    std::memset(&rec, 0xFF, sizeof(rec));
    rec.flow.addressFamily = 2; /* IPv6 texts of 39 characters */
    std::memset(rec.flow.chassisId, '9', sizeof(rec.flow.chassisId));
    std::memset(rec.flow.slotId, '9', sizeof(rec.flow.slotId));
    EXPECT_LT(Encode(s.json, s.floor).size(), static_cast<size_t>(s.floor));
}

TEST(FlowEncodeBytes, SmallFlowRecordGivesExactBytes)
{
    const MDTLM_FLOW_STATS_REC r = {.interval = 3, .chassisId = "c", .slotId = "s", .srcAddr = {0x0A000001},
                                    .dstAddr = {0x0A000002}, .addressFamily = 1, .protocol = 6, .srcPort = 80,
                                    .dstPort = 443, .flowIdLow = 5, .ifIndex = 2, .direction = 1, .periodId = 7,
                                    .packetCount = 1, .byteCount = 64};
    const std::string body = "0805" "1001" "6002" "7003" "c80100"    /* flow info: 1 2 12 14 25 */
                             "1800"                                   /* 3: IPv4 is family 0 */
                             "2208" "31302e302e302e31"                /* 4 "10.0.0.1" */
                             "2a08" "31302e302e302e32"                /* 5 "10.0.0.2" */
                             "5006" "4050" "48bb03"                   /* 10 protocol, 8 and 9 ports */
                             "6800" "880200" "7807" "800101" "880140" /* 13 33 15 16 17 */
                             "900100" "980100"                        /* 18 19 */
                             "a80100" "b80100" "a00201" "b80200"      /* 21 23 36 39, no 37 38 */
                             "980200" "ca020163" "d2020173";          /* 35 41 "c" 42 "s" */
    ASSERT_EQ(body.size() / 2, 0x52u);
    uint8_t out[256];
    const int32_t n = MDTLM_VRALDCN_FLOW_GPB_EncodeMsg(&r, out, sizeof(out));
    ASSERT_EQ(n, 86);
    EXPECT_EQ(Hex(std::string(reinterpret_cast<char *>(out), 86)), "1254" "0a52" + body);
}

TEST(FlowEncodeBytes, GroupWritersWriteTheirFieldsInOrder)
{
    const FlowRec f = FlowRecord();
    CheckGroups<FlowRec>(
        f, {{MDTLM_VRALDCN_FLOW_GPB_EncodeFlowInfo,
             {I(1, FlowIdOf(4097, 0x12345)), I(2, 4), I(12, 33), I(14, 1000), I(25, 2)}},
            {MDTLM_VRALDCN_FLOW_GPB_EncodeTuple,
             {I(3, 0), T(4, "192.168.10.1"), T(5, "10.0.0.2"), I(10, 17), I(8, 5000), I(9, 65535)}},
            {MDTLM_VRALDCN_FLOW_GPB_EncodeIpAddress, {T(4, "192.168.10.1"), T(5, "10.0.0.2")}},
            {MDTLM_VRALDCN_FLOW_GPB_EncodeProtocolPort, {I(10, 17), I(8, 5000), I(9, 65535)}},
            {MDTLM_VRALDCN_FLOW_GPB_EncodeStatistics,
             {I(13, 200), I(33, 0x80000001), I(15, 5), I(16, f.packetCount), I(17, f.byteCount), I(18, 1700000000),
              I(19, 999999999)}},
            {MDTLM_VRALDCN_FLOW_GPB_EncodeErrorInfo, {I(13, 200), I(33, 0x80000001)}},
            {MDTLM_VRALDCN_FLOW_GPB_EncodePacketByteCnt, {I(16, f.packetCount), I(17, f.byteCount)}},
            {MDTLM_VRALDCN_FLOW_GPB_EncodeTimeStamp, {I(18, 1700000000), I(19, 999999999)}},
            {MDTLM_VRALDCN_FLOW_GPB_EncodePacketInfo,
             {I(21, 61), I(23, 4094), I(36, 4), I(37, 70001), I(38, 62), I(39, 9)}}});
    const HopRec h = FlowHopRecord();
    CheckGroups<HopRec>(
        h, {{MDTLM_VRALDCN_FLOWHOP_GPB_EncodeFlowInfo,
             {I(1, FlowIdOf(0x3FF, 0x100001)), I(2, 1), I(3, 44), I(13, 3), I(27, 2000)}},
            {MDTLM_VRALDCN_FLOWHOP_GPB_EncodeStatistics,
             {I(4, 1), I(23, 77), I(5, 66), I(6, h.packetCount), I(7, h.byteCount), I(8, 1700000100), I(9, 5)}},
            {MDTLM_VRALDCN_FLOWHOP_GPB_EncodeErrorInfo, {I(4, 1), I(23, 77)}},
            {MDTLM_VRALDCN_FLOWHOP_GPB_EncodePacketByteCnt, {I(6, h.packetCount), I(7, h.byteCount)}},
            {MDTLM_VRALDCN_FLOWHOP_GPB_EncodeTimeStamp, {I(8, 1700000100), I(9, 5)}},
            {MDTLM_VRALDCN_FLOWHOP_GPB_EncodePacketInfo,
             {I(11, 41), I(29, 100), I(30, 3), I(31, 80002), I(32, 42), I(33, 12)}},
            /* 2^24 + 1 loses its top bit within 32 bits; 3 becomes 768 */
            {MDTLM_VRALDCN_FLOWHOP_GPB_EncodeDelay, {I(14, 256), I(16, 768), I(17, kTwo32 + 5)}}});
}

TEST(FlowEncodeBytes, UnknownAddressFamilyFailsTheRecord)
{
    FlowRec r = FlowRecord();
    uint8_t out[2048];
    for (uint8_t family : {0, 3, 255}) {
        r.addressFamily = family;
        EXPECT_EQ(MDTLM_VRALDCN_FLOW_GPB_EncodeIpAddress(&r, out, sizeof(out)), MDTLM_ENCODE_FAIL);
        EXPECT_EQ(MDTLM_VRALDCN_FLOW_GPB_EncodeMsg(&r, out, sizeof(out)), MDTLM_ENCODE_FAIL);
        EXPECT_EQ(MDTLM_VRALDCN_FLOW_JSON_EncodeMsg(&r, out, sizeof(out)), MDTLM_ENCODE_FAIL);
    }
}

TEST(FlowEncodeBytes, OnlyTheHopJsonEncoderAdvancesItsCounters)
{
    const uint32_t before[4] = {g_unicastJsonSequenceNumber, g_multicastJsonSequenceNumber,
                                g_unicastJsonHopSequenceNumber, g_multicastJsonHopSequenceNumber};
    FlowRec flow = FlowRecord();
    HopRec hop = FlowHopRecord();
    uint8_t out[4096];
    for (uint32_t cast : {1u, 2u, 0u}) {
        flow.castType = hop.castType = cast;
        EXPECT_GT(MDTLM_VRALDCN_FLOW_JSON_EncodeMsg(&flow, out, sizeof(out)), 0);
        EXPECT_GT(MDTLM_VRALDCN_FLOWHOP_JSON_EncodeMsg(&hop, out, sizeof(out)), 0);
        EXPECT_GT(MDTLM_VRALDCN_FLOWHOP_GPB_EncodeMsg(&hop, out, sizeof(out)), 0);
    }
    EXPECT_EQ(MDTLM_VRALDCN_FLOWHOP_JSON_EncodeMsg(&hop, out, 1334), MDTLM_ENCODE_NO_SPACE);
    MDTLM_VRALDCN_FLOW_JSON_AddSequenceNumber(1);
    MDTLM_VRALDCN_FLOWHOP_JSON_AddSequenceNumber(7);
    EXPECT_EQ(g_unicastJsonSequenceNumber - before[0], 1u);
    EXPECT_EQ(g_multicastJsonSequenceNumber - before[1], 0u);
    EXPECT_EQ(g_unicastJsonHopSequenceNumber - before[2], 1u);
    EXPECT_EQ(g_multicastJsonHopSequenceNumber - before[3], 3u);
}
