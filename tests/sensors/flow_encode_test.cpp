/*
 * The flow statistics sensor's encoders on their own: exact GPB bytes, every
 * field as a standard parser reads it, group writers, capacities, JSON text.
 */
#include <cstring>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "fake_framework.h"
#include "flow_records.h"
#include "flow_wire.h"
#include "mdtlm_vraldcn.h"

using namespace flowtest;

namespace {

constexpr const char *kProto = "flow_statistics.proto";
constexpr const char *kSample = "mdtlm.flow.Sample";
constexpr const char *kLogParamNull = "[mdtlm.vraldcn.statis:#][VRALDCN_FLOW_GPB_EncodeMsg] Param error, msg is NULL.";
constexpr const char *kLogJsonNull = "[mdtlm.vraldcn.statis:#][FLOW_JSON_CheckEncodePara] Param error, msg is NULL.";

class FlowEncode : public ::testing::Test {
protected:
    void SetUp() override
    {
        fw.Reset();
        fw.Install();
        ASSERT_EQ(MDTLM_VRALDCN_InitTlmFrmVtbl(), 0u); /* log lines reach the double */
    }

    static std::string Gpb(const MDTLM_FLOW_STATS_REC &rec)
    {
        uint8_t out[2048];
        const int32_t n = MDTLM_VRALDCN_FLOW_GPB_EncodeMsg(&rec, out, sizeof(out));
        EXPECT_GT(n, 0);
        return n > 0 ? std::string(reinterpret_cast<char *>(out), static_cast<size_t>(n)) : std::string();
    }

    static std::string Json(const MDTLM_FLOW_STATS_REC &rec, int32_t cap = 4096)
    {
        std::vector<uint8_t> out(4096, 0xA5);
        const int32_t n = MDTLM_VRALDCN_FLOW_JSON_EncodeMsg(&rec, out.data(), cap);
        EXPECT_GT(n, 0);
        if (n <= 0) {
            return {};
        }
        EXPECT_EQ(out[static_cast<size_t>(n)], 0) << "text not terminated right behind the record";
        return std::string(reinterpret_cast<char *>(out.data()), static_cast<size_t>(n));
    }

    FakeFramework &fw = FakeFramework::Get();
};

std::string Hex(const std::string &bytes)
{
    static const char *digits = "0123456789abcdef";
    std::string text;
    for (unsigned char c : bytes) {
        text += digits[c >> 4];
        text += digits[c & 15];
    }
    return text;
}

std::string Unhex(const std::string &hex)
{
    std::string bytes;
    for (size_t i = 0; i + 1 < hex.size(); i += 2) {
        bytes += static_cast<char>(std::stoi(hex.substr(i, 2), nullptr, 16));
    }
    return bytes;
}

MDTLM_FLOW_STATS_REC SmallRecord()
{
    MDTLM_FLOW_STATS_REC r{};
    r.flowIdLow = 5;
    r.direction = 1;
    r.ifIndex = 2;
    r.interval = 3;
    r.addressFamily = 1;
    r.srcAddr[0] = 0x0A000001;
    r.dstAddr[0] = 0x0A000002;
    r.protocol = 6;
    r.srcPort = 80;
    r.dstPort = 443;
    r.periodId = 7;
    r.packetCount = 1;
    r.byteCount = 64;
    r.ttl = 64;
    SetText(r.chassisId, "c");
    SetText(r.slotId, "s");
    return r;
}

} // namespace

TEST_F(FlowEncode, SmallRecordGivesExactBytes)
{
    const std::string body = "0805" "1001" "6002" "7003" "c80100"    /* flow info: 1 2 12 14 25 */
                             "1800"                                   /* 3 address family 0 */
                             "2208" "31302e302e302e31"                /* 4 "10.0.0.1" */
                             "2a08" "31302e302e302e32"                /* 5 "10.0.0.2" */
                             "5006" "4050" "48bb03"                   /* 10 protocol, 8 and 9 ports */
                             "6800" "880200" "7807" "800101" "880140" /* 13 33 15 16 17 */
                             "900100" "980100"                        /* 18 19 */
                             "a80140" "b80100" "a00201" "b80200"      /* 21 23 36 39, no 37 38 */
                             "980200" "ca020163" "d2020173";          /* 35 41 "c" 42 "s" */
    ASSERT_EQ(body.size() / 2, 82u);
    const std::string expected = "1254" "0a52" + body; /* container 2, field 1 */
    EXPECT_EQ(Hex(Gpb(SmallRecord())), expected);
    EXPECT_EQ(Unhex(expected).size(), 86u);
}

TEST_F(FlowEncode, GpbRecordDecodesFieldForField)
{
    struct Case {
        const char *name;
        MDTLM_FLOW_STATS_REC rec;
        std::string src, dst;
    };
    MDTLM_FLOW_STATS_REC ipv6 = FlowRecord();
    SetIpv6(&ipv6);
    MDTLM_FLOW_STATS_REC plain = FlowRecord();
    plain.tunnelFlag = 0;
    plain.direction = 1;
    MDTLM_FLOW_STATS_REC zeros{};
    zeros.addressFamily = 2;
    const std::vector<Case> cases = {
        {"ipv4 tunnelled", FlowRecord(), "192.168.10.1", "10.0.0.2"},
        {"ipv6", ipv6, "2001:db8:0:0:0:0:0:1", "fe80:0:0:1:abcd:0:ffff:ffff"},
        {"not tunnelled", plain, "192.168.10.1", "10.0.0.2"},
        {"all zero", zeros, "0:0:0:0:0:0:0:0", "0:0:0:0:0:0:0:0"},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.name);
        MDTLM_FLOW_STATS_REC rec = c.rec;
        rec.sequenceNumber = 41;
        std::string error;
        auto sample = DecodeSample(kProto, kSample, Gpb(rec), &error);
        ASSERT_TRUE(sample) << error;
        const auto records = SampleRecords(*sample);
        ASSERT_EQ(records.size(), 1u);
        ExpectGpbRecord(*records[0], FlowMembers(rec, 41),
                        {{"source-ip", c.src}, {"destination-ip", c.dst}, {"chassis-id", rec.chassisId},
                         {"slot-id", rec.slotId}},
                        rec.tunnelFlag == 1);
    }
}

TEST_F(FlowEncode, BodyFollowsTheFieldTable)
{
    MDTLM_FLOW_STATS_REC rec = FlowRecord();
    const std::vector<uint32_t> tunnelled = {1,  2,  12, 14, 25, 3,  4,  5,  10, 8,  9,  13, 33, 15,
                                             16, 17, 18, 19, 21, 23, 36, 37, 38, 39, 35, 41, 42};
    EXPECT_EQ(Numbers(Fields(BodyOf(Gpb(rec), 2))), tunnelled);

    rec.tunnelFlag = 2; /* only 1 means tunnelled */
    std::vector<uint32_t> plain = tunnelled;
    plain.erase(std::find(plain.begin(), plain.end(), 37), std::find(plain.begin(), plain.end(), 39));
    EXPECT_EQ(Numbers(Fields(BodyOf(Gpb(rec), 2))), plain);
}

TEST_F(FlowEncode, GroupWritersWriteTheirFieldsInOrder)
{
    using Writer = int32_t (*)(const MDTLM_FLOW_STATS_REC *, uint8_t *, int32_t);
    const MDTLM_FLOW_STATS_REC r = FlowRecord();
    const uint64_t flowId = FlowIdOf(r.flowIdHigh, r.flowIdLow);
    struct Case {
        const char *name;
        Writer writer;
        std::vector<WireField> fields;
    };
    const std::vector<Case> cases = {
        {"FlowInfo", MDTLM_VRALDCN_FLOW_GPB_EncodeFlowInfo,
         {Int(1, flowId), Int(2, 4), Int(12, 33), Int(14, 1000), Int(25, 2)}},
        {"Tuple", MDTLM_VRALDCN_FLOW_GPB_EncodeTuple,
         {Int(3, 0), Text(4, "192.168.10.1"), Text(5, "10.0.0.2"), Int(10, 17), Int(8, 5000), Int(9, 65535)}},
        {"IpAddress", MDTLM_VRALDCN_FLOW_GPB_EncodeIpAddress, {Text(4, "192.168.10.1"), Text(5, "10.0.0.2")}},
        {"ProtocolPort", MDTLM_VRALDCN_FLOW_GPB_EncodeProtocolPort, {Int(10, 17), Int(8, 5000), Int(9, 65535)}},
        {"Statistics", MDTLM_VRALDCN_FLOW_GPB_EncodeStatistics,
         {Int(13, 200), Int(33, 0x80000001), Int(15, 5), Int(16, r.packetCount), Int(17, r.byteCount),
          Int(18, 1700000000), Int(19, 999999999)}},
        {"ErrorInfo", MDTLM_VRALDCN_FLOW_GPB_EncodeErrorInfo, {Int(13, 200), Int(33, 0x80000001)}},
        {"PacketByteCnt", MDTLM_VRALDCN_FLOW_GPB_EncodePacketByteCnt,
         {Int(16, r.packetCount), Int(17, r.byteCount)}},
        {"TimeStamp", MDTLM_VRALDCN_FLOW_GPB_EncodeTimeStamp, {Int(18, 1700000000), Int(19, 999999999)}},
        {"PacketInfo", MDTLM_VRALDCN_FLOW_GPB_EncodePacketInfo,
         {Int(21, 61), Int(23, 4094), Int(36, 4), Int(37, 70001), Int(38, 62), Int(39, 9)}},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.name);
        uint8_t out[512];
        const int32_t n = c.writer(&r, out, sizeof(out));
        ASSERT_GT(n, 0);
        EXPECT_EQ(Fields(std::string(reinterpret_cast<char *>(out), static_cast<size_t>(n))), c.fields);
        /* One byte less than needed is refused. */
        EXPECT_EQ(c.writer(&r, out, n - 1), MDTLM_ENCODE_NO_SPACE);
    }
}

TEST_F(FlowEncode, UnknownAddressFamilyFailsTheRecord)
{
    for (uint8_t family : {0, 3, 255}) {
        SCOPED_TRACE(int{family});
        MDTLM_FLOW_STATS_REC rec = FlowRecord();
        rec.addressFamily = family;
        uint8_t out[2048];
        EXPECT_EQ(MDTLM_VRALDCN_FLOW_GPB_EncodeIpAddress(&rec, out, sizeof(out)), MDTLM_ENCODE_FAIL);
        EXPECT_EQ(MDTLM_VRALDCN_FLOW_GPB_EncodeMsg(&rec, out, sizeof(out)), MDTLM_ENCODE_FAIL);
        EXPECT_EQ(MDTLM_VRALDCN_FLOW_JSON_EncodeMsg(&rec, out, sizeof(out)), MDTLM_ENCODE_FAIL);
    }
}

TEST_F(FlowEncode, GpbArgumentsAndCapacity)
{
    const MDTLM_FLOW_STATS_REC rec = FlowRecord();
    const int32_t need = static_cast<int32_t>(Gpb(rec).size());
    uint8_t out[2048];

    EXPECT_EQ(MDTLM_VRALDCN_FLOW_GPB_EncodeMsg(nullptr, out, sizeof(out)), MDTLM_ENCODE_FAIL);
    EXPECT_EQ(fw.CountShape(kLogParamNull, MDTLM_LOG_FAILURE), 1u);
    EXPECT_EQ(MDTLM_VRALDCN_FLOW_GPB_EncodeMsg(&rec, nullptr, sizeof(out)), MDTLM_ENCODE_NO_SPACE);
    EXPECT_EQ(MDTLM_VRALDCN_FLOW_GPB_EncodeMsg(&rec, out, 0), MDTLM_ENCODE_NO_SPACE);
    EXPECT_EQ(MDTLM_VRALDCN_FLOW_GPB_EncodeMsg(&rec, out, -5), MDTLM_ENCODE_NO_SPACE);

    std::memset(out, 0xA5, sizeof(out));
    EXPECT_EQ(MDTLM_VRALDCN_FLOW_GPB_EncodeMsg(&rec, out, need - 1), MDTLM_ENCODE_NO_SPACE);
    for (int32_t i = need - 1; i < static_cast<int32_t>(sizeof(out)); ++i) {
        ASSERT_EQ(out[i], 0xA5) << "byte " << i << " written past the capacity";
    }
    EXPECT_EQ(MDTLM_VRALDCN_FLOW_GPB_EncodeMsg(&rec, out, need), need);
}

TEST_F(FlowEncode, TextsWithoutTerminatorAreCutAtTheirField)
{
    MDTLM_FLOW_STATS_REC rec = FlowRecord();
    std::memset(rec.chassisId, 'A', sizeof(rec.chassisId)); /* runs straight into the slot text */
    std::memset(rec.slotId, 'B', sizeof(rec.slotId));       /* runs into the address bytes */
    rec.sequenceNumber = 0;

    std::string error;
    auto sample = DecodeSample(kProto, kSample, Gpb(rec), &error);
    ASSERT_TRUE(sample) << error;
    const auto records = SampleRecords(*sample);
    ASSERT_EQ(records.size(), 1u);
    EXPECT_EQ(S(*records[0], "chassis_id"), std::string(32, 'A'));
    EXPECT_EQ(S(*records[0], "slot_id"), std::string(32, 'B'));

    const auto json = nlohmann::json::parse(Json(rec).substr(0, Json(rec).size() - 1));
    EXPECT_EQ(json["chassis-id"], std::string(32, 'A'));
    EXPECT_EQ(json["slot-id"], std::string(32, 'B'));
}

TEST_F(FlowEncode, JsonTemplateIsTheMemberTable)
{
    std::string expected;
    for (const TemplateMember &m : FlowTemplateMembers()) {
        expected += expected.empty() ? "" : ",";
        expected += "\"" + std::string(m.key) + "\":";
        expected += std::string(m.conversion) == "text" ? "\"%s\"" : m.conversion;
    }
    EXPECT_EQ(std::string(MDTLM_VRALDCN_FLOW_STATS_JSON_TEMPLATE), expected);
}

TEST_F(FlowEncode, JsonRecordParsesFieldForField)
{
    MDTLM_FLOW_STATS_REC ipv6 = FlowRecord();
    SetIpv6(&ipv6);
    ipv6.castType = 2;
    MDTLM_FLOW_STATS_REC plain = FlowRecord();
    plain.tunnelFlag = 0;
    struct Case {
        const char *name;
        MDTLM_FLOW_STATS_REC rec;
        std::string src, dst;
    };
    const std::vector<Case> cases = {
        {"ipv4 tunnelled", FlowRecord(), "192.168.10.1", "10.0.0.2"},
        {"ipv6 multicast", ipv6, "2001:db8:0:0:0:0:0:1", "fe80:0:0:1:abcd:0:ffff:ffff"},
        /* The JSON carries tunnel-id and outer-ttl whatever the tunnel flag. */
        {"not tunnelled", plain, "192.168.10.1", "10.0.0.2"},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.name);
        MDTLM_FLOW_STATS_REC rec = c.rec;
        rec.sequenceNumber = 17;
        const std::string text = Json(rec);
        const auto records = ParseRecordRun(text);
        ASSERT_EQ(records.size(), 1u);
        ExpectJsonRecord(records[0], FlowMembers(rec, 17),
                         {{"source-ip", c.src}, {"destination-ip", c.dst}, {"chassis-id", "chassis-1"},
                          {"slot-id", "slot-3"}},
                         KeysOf(FlowTemplateMembers()));
    }
    /* The flow sensor's own JSON counters are never advanced by its encoder. */
    EXPECT_EQ(g_unicastJsonSequenceNumber, 0u);
    EXPECT_EQ(g_multicastJsonSequenceNumber, 0u);
}

TEST_F(FlowEncode, JsonFloorRefusesWithoutWriting)
{
    const MDTLM_FLOW_STATS_REC rec = FlowRecord();
    struct Case {
        int32_t cap;
        int32_t check;
    };
    for (const Case &c : std::vector<Case>{{-1, -2}, {0, -2}, {1, -2}, {1448, -2}, {1449, 0}, {24576, 0}}) {
        SCOPED_TRACE(c.cap);
        std::vector<uint8_t> out(24576, 0xA5);
        EXPECT_EQ(MDTLM_VRALDCN_FLOW_JSON_CheckEncodePara(&rec, out.data(), c.cap), c.check);
        const int32_t n = MDTLM_VRALDCN_FLOW_JSON_EncodeMsg(&rec, out.data(), c.cap);
        if (c.check == 0) {
            EXPECT_EQ(n, static_cast<int32_t>(Json(rec).size()));
        } else {
            EXPECT_EQ(n, MDTLM_ENCODE_NO_SPACE);
            EXPECT_EQ(std::count(out.begin(), out.end(), 0xA5), 24576) << "written below the floor";
        }
    }
    EXPECT_TRUE(fw.Logs().empty());
}

TEST_F(FlowEncode, JsonNullArgumentsAreLogged)
{
    const MDTLM_FLOW_STATS_REC rec = FlowRecord();
    uint8_t out[2048];
    EXPECT_EQ(MDTLM_VRALDCN_FLOW_JSON_EncodeMsg(nullptr, out, sizeof(out)), MDTLM_ENCODE_FAIL);
    EXPECT_EQ(MDTLM_VRALDCN_FLOW_JSON_EncodeMsg(&rec, nullptr, sizeof(out)), MDTLM_ENCODE_FAIL);
    EXPECT_EQ(MDTLM_VRALDCN_FLOW_JSON_CheckEncodePara(nullptr, out, sizeof(out)), MDTLM_ENCODE_FAIL);
    EXPECT_EQ(fw.CountShape(kLogJsonNull, MDTLM_LOG_FAILURE), 3u);
}

TEST_F(FlowEncode, LongestJsonRecordFitsTheFloor)
{
    MDTLM_FLOW_STATS_REC rec;
    std::memset(&rec, 0xFF, sizeof(rec));
    rec.addressFamily = 2;
    rec.tunnelFlag = 1;
    std::memset(rec.chassisId, '9', sizeof(rec.chassisId));
    std::memset(rec.slotId, '9', sizeof(rec.slotId));
    const std::string text = Json(rec, 1449);
    EXPECT_LT(text.size(), 1449u);
    EXPECT_EQ(ParseRecordRun(text).size(), 1u);
}
