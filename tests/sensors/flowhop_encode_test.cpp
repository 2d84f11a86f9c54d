/*
 * The flow-hop statistics sensor's encoders on their own: every field as a
 * standard parser reads it, field order, delays, capacities, JSON text and
 * the hop JSON counters.
 */
#include <algorithm>
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

constexpr const char *kProto = "flow_hop_statistics.proto";
constexpr const char *kSample = "mdtlm.flowhop.Sample";

class FlowHopEncode : public ::testing::Test {
protected:
    void SetUp() override
    {
        fw.Reset();
        fw.Install();
        ASSERT_EQ(MDTLM_VRALDCN_InitTlmFrmVtbl(), 0u);
    }

    static std::string Gpb(const MDTLM_FLOWHOP_STATS_REC &rec)
    {
        uint8_t out[2048];
        const int32_t n = MDTLM_VRALDCN_FLOWHOP_GPB_EncodeMsg(&rec, out, sizeof(out));
        EXPECT_GT(n, 0);
        return n > 0 ? std::string(reinterpret_cast<char *>(out), static_cast<size_t>(n)) : std::string();
    }

    static std::string Json(const MDTLM_FLOWHOP_STATS_REC &rec, int32_t cap = 4096)
    {
        std::vector<uint8_t> out(4096, 0xA5);
        const int32_t n = MDTLM_VRALDCN_FLOWHOP_JSON_EncodeMsg(&rec, out.data(), cap);
        EXPECT_GT(n, 0);
        return n > 0 ? std::string(reinterpret_cast<char *>(out.data()), static_cast<size_t>(n)) : std::string();
    }

    FakeFramework &fw = FakeFramework::Get();
};

} // namespace

TEST_F(FlowHopEncode, GpbRecordDecodesFieldForField)
{
    MDTLM_FLOWHOP_STATS_REC plain = FlowHopRecord();
    plain.tunnelFlag = 0;
    plain.direction = 9;
    MDTLM_FLOWHOP_STATS_REC zeros{};
    /* Bytes where the flow record keeps its addresses are not this record's. */
    MDTLM_FLOWHOP_STATS_REC junk = FlowHopRecord();
    std::memset(junk.reserved124, 0xEE, sizeof(junk.reserved124));
    const std::vector<std::pair<const char *, MDTLM_FLOWHOP_STATS_REC>> cases = {
        {"tunnelled", FlowHopRecord()}, {"not tunnelled", plain}, {"all zero", zeros}, {"address bytes", junk}};
    for (const auto &[name, base] : cases) {
        SCOPED_TRACE(name);
        MDTLM_FLOWHOP_STATS_REC rec = base;
        rec.sequenceNumber = 123456;
        std::string error;
        auto sample = DecodeSample(kProto, kSample, Gpb(rec), &error);
        ASSERT_TRUE(sample) << error;
        const auto records = SampleRecords(*sample);
        ASSERT_EQ(records.size(), 1u);
        ExpectGpbRecord(*records[0], FlowHopMembers(rec, 123456),
                        {{"chassis-id", rec.chassisId}, {"slot-id", rec.slotId}}, rec.tunnelFlag == 1);
    }
}

TEST_F(FlowHopEncode, DelaysAreScaledOnlyInTheEncodings)
{
    const MDTLM_FLOWHOP_STATS_REC rec = FlowHopRecord(); /* 2^24 + 1, 3, 2^32 + 5 */
    std::string error;
    auto sample = DecodeSample(kProto, kSample, Gpb(rec), &error);
    ASSERT_TRUE(sample) << error;
    const auto *gpb = SampleRecords(*sample).at(0);
    EXPECT_EQ(U(*gpb, "maximum_delay"), 256u);
    EXPECT_EQ(U(*gpb, "total_delay"), 768u);
    EXPECT_EQ(U(*gpb, "total_count"), 4294967301u);

    const auto json = ParseRecordRun(Json(rec)).at(0);
    EXPECT_EQ(json["maximum-delay"], 256u);
    EXPECT_EQ(json["total-delay"], 768u);
    EXPECT_EQ(json["total-count"], 5u);

    MDTLM_FLOWHOP_STATS_REC wide = rec;
    wide.totalDelay = (1ull << 60) + 1; /* 64-bit shift: the top bits go, the rest stays */
    auto sample2 = DecodeSample(kProto, kSample, Gpb(wide), &error);
    ASSERT_TRUE(sample2) << error;
    EXPECT_EQ(U(*SampleRecords(*sample2).at(0), "total_delay"), ((1ull << 60) + 1) << 8);
}

TEST_F(FlowHopEncode, BodyFollowsTheFieldTable)
{
    MDTLM_FLOWHOP_STATS_REC rec = FlowHopRecord();
    const std::vector<uint32_t> tunnelled = {1,  2,  3,  13, 27, 4,  23, 5,  6,  7,  8,  9,
                                             11, 29, 30, 31, 32, 33, 14, 16, 17, 28, 35, 36};
    EXPECT_EQ(Numbers(Fields(BodyOf(Gpb(rec), 3))), tunnelled);

    rec.tunnelFlag = 0;
    std::vector<uint32_t> plain = tunnelled;
    plain.erase(std::find(plain.begin(), plain.end(), 31), std::find(plain.begin(), plain.end(), 33));
    EXPECT_EQ(Numbers(Fields(BodyOf(Gpb(rec), 3))), plain);
}

TEST_F(FlowHopEncode, GroupWritersWriteTheirFieldsInOrder)
{
    using Writer = int32_t (*)(const MDTLM_FLOWHOP_STATS_REC *, uint8_t *, int32_t);
    const MDTLM_FLOWHOP_STATS_REC r = FlowHopRecord();
    struct Case {
        const char *name;
        Writer writer;
        std::vector<WireField> fields;
    };
    const std::vector<Case> cases = {
        {"FlowInfo", MDTLM_VRALDCN_FLOWHOP_GPB_EncodeFlowInfo,
         {Int(1, FlowIdOf(0x3FF, 0x100001)), Int(2, 1), Int(3, 44), Int(13, 3), Int(27, 2000)}},
        {"Statistics", MDTLM_VRALDCN_FLOWHOP_GPB_EncodeStatistics,
         {Int(4, 1), Int(23, 77), Int(5, 66), Int(6, r.packetCount), Int(7, r.byteCount), Int(8, 1700000100),
          Int(9, 5)}},
        {"ErrorInfo", MDTLM_VRALDCN_FLOWHOP_GPB_EncodeErrorInfo, {Int(4, 1), Int(23, 77)}},
        {"PacketByteCnt", MDTLM_VRALDCN_FLOWHOP_GPB_EncodePacketByteCnt,
         {Int(6, r.packetCount), Int(7, r.byteCount)}},
        {"TimeStamp", MDTLM_VRALDCN_FLOWHOP_GPB_EncodeTimeStamp, {Int(8, 1700000100), Int(9, 5)}},
        {"PacketInfo", MDTLM_VRALDCN_FLOWHOP_GPB_EncodePacketInfo,
         {Int(11, 41), Int(29, 100), Int(30, 3), Int(31, 80002), Int(32, 42), Int(33, 12)}},
        {"Delay", MDTLM_VRALDCN_FLOWHOP_GPB_EncodeDelay, {Int(14, 256), Int(16, 768), Int(17, r.totalCount)}},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.name);
        uint8_t out[512];
        const int32_t n = c.writer(&r, out, sizeof(out));
        ASSERT_GT(n, 0);
        EXPECT_EQ(Fields(std::string(reinterpret_cast<char *>(out), static_cast<size_t>(n))), c.fields);
        EXPECT_EQ(c.writer(&r, out, n - 1), MDTLM_ENCODE_NO_SPACE);
    }
}

TEST_F(FlowHopEncode, GpbArgumentsAndCapacity)
{
    const MDTLM_FLOWHOP_STATS_REC rec = FlowHopRecord();
    const int32_t need = static_cast<int32_t>(Gpb(rec).size());
    uint8_t out[2048];
    EXPECT_EQ(MDTLM_VRALDCN_FLOWHOP_GPB_EncodeMsg(nullptr, out, sizeof(out)), MDTLM_ENCODE_FAIL);
    EXPECT_EQ(fw.CountShape("[mdtlm.vraldcn.statis:#][VRALDCN_FLOWHOP_GPB_EncodeMsg] Param error, msg is NULL.",
                            MDTLM_LOG_FAILURE),
              1u);
    EXPECT_EQ(MDTLM_VRALDCN_FLOWHOP_GPB_EncodeMsg(&rec, nullptr, 100), MDTLM_ENCODE_NO_SPACE);
    EXPECT_EQ(MDTLM_VRALDCN_FLOWHOP_GPB_EncodeMsg(&rec, out, 0), MDTLM_ENCODE_NO_SPACE);
    EXPECT_EQ(MDTLM_VRALDCN_FLOWHOP_GPB_EncodeMsg(&rec, out, need - 1), MDTLM_ENCODE_NO_SPACE);
    EXPECT_EQ(MDTLM_VRALDCN_FLOWHOP_GPB_EncodeMsg(&rec, out, need), need);
}

TEST_F(FlowHopEncode, TextsWithoutTerminatorAreCutAtTheirField)
{
    MDTLM_FLOWHOP_STATS_REC rec = FlowHopRecord();
    std::memset(rec.chassisId, 'C', sizeof(rec.chassisId));
    std::memset(rec.slotId, 'S', sizeof(rec.slotId));
    std::memset(rec.reserved124, 'X', sizeof(rec.reserved124)); /* what an uncut text would run into */
    std::string error;
    auto sample = DecodeSample(kProto, kSample, Gpb(rec), &error);
    ASSERT_TRUE(sample) << error;
    EXPECT_EQ(S(*SampleRecords(*sample).at(0), "chassis_id"), std::string(32, 'C'));
    EXPECT_EQ(S(*SampleRecords(*sample).at(0), "slot_id"), std::string(32, 'S'));
    const auto json = ParseRecordRun(Json(rec)).at(0);
    EXPECT_EQ(json["chassis-id"], std::string(32, 'C'));
    EXPECT_EQ(json["slot-id"], std::string(32, 'S'));
}

TEST_F(FlowHopEncode, JsonTemplateIsTheMemberTable)
{
    std::string expected;
    for (const TemplateMember &m : FlowHopTemplateMembers()) {
        expected += expected.empty() ? "" : ",";
        expected += "\"" + std::string(m.key) + "\":";
        expected += std::string(m.conversion) == "text" ? "\"%s\"" : m.conversion;
    }
    EXPECT_EQ(std::string(MDTLM_VRALDCN_FLOWHOP_STATS_JSON_TEMPLATE), expected);
}

TEST_F(FlowHopEncode, JsonRecordParsesAndAdvancesTheHopCounters)
{
    const uint32_t unicast0 = g_unicastJsonHopSequenceNumber;
    const uint32_t multicast0 = g_multicastJsonHopSequenceNumber;
    struct Case {
        const char *name;
        uint32_t castType;
        uint32_t unicast, multicast; /* counters advanced so far */
    };
    const std::vector<Case> cases = {{"unicast", 1, 1, 0}, {"multicast", 2, 1, 1}, {"cast 0", 0, 1, 2}};
    for (const Case &c : cases) {
        SCOPED_TRACE(c.name);
        MDTLM_FLOWHOP_STATS_REC rec = FlowHopRecord();
        rec.castType = c.castType;
        rec.sequenceNumber = 3;
        const auto records = ParseRecordRun(Json(rec));
        ASSERT_EQ(records.size(), 1u);
        ExpectJsonRecord(records[0], FlowHopMembers(rec, 3), {{"chassis-id", "hop-chassis"}, {"slot-id", "hop-slot"}},
                         KeysOf(FlowHopTemplateMembers()));
        EXPECT_EQ(g_unicastJsonHopSequenceNumber - unicast0, c.unicast);
        EXPECT_EQ(g_multicastJsonHopSequenceNumber - multicast0, c.multicast);
    }
    /* A refused record advances nothing; the GPB encoder never does. */
    uint8_t out[2048];
    const MDTLM_FLOWHOP_STATS_REC rec = FlowHopRecord();
    EXPECT_EQ(MDTLM_VRALDCN_FLOWHOP_JSON_EncodeMsg(&rec, out, 1334), MDTLM_ENCODE_NO_SPACE);
    EXPECT_GT(MDTLM_VRALDCN_FLOWHOP_GPB_EncodeMsg(&rec, out, sizeof(out)), 0);
    EXPECT_EQ(g_unicastJsonHopSequenceNumber - unicast0, 1u);
    EXPECT_EQ(g_multicastJsonHopSequenceNumber - multicast0, 2u);
    /* The exported helper advances the same pair. */
    MDTLM_VRALDCN_FLOWHOP_JSON_AddSequenceNumber(1);
    MDTLM_VRALDCN_FLOWHOP_JSON_AddSequenceNumber(7);
    EXPECT_EQ(g_unicastJsonHopSequenceNumber - unicast0, 2u);
    EXPECT_EQ(g_multicastJsonHopSequenceNumber - multicast0, 3u);
}

TEST_F(FlowHopEncode, JsonFloorRefusesWithoutWriting)
{
    const MDTLM_FLOWHOP_STATS_REC rec = FlowHopRecord();
    struct Case {
        int32_t cap;
        int32_t check;
    };
    for (const Case &c : std::vector<Case>{{-7, -2}, {0, -2}, {1334, -2}, {1335, 0}, {1449, 0}}) {
        SCOPED_TRACE(c.cap);
        std::vector<uint8_t> out(4096, 0xA5);
        EXPECT_EQ(MDTLM_VRALDCN_FLOWHOP_JSON_CheckEncodePara(&rec, out.data(), c.cap), c.check);
        const int32_t n = MDTLM_VRALDCN_FLOWHOP_JSON_EncodeMsg(&rec, out.data(), c.cap);
        if (c.check == 0) {
            EXPECT_GT(n, 0);
        } else {
            EXPECT_EQ(n, MDTLM_ENCODE_NO_SPACE);
            EXPECT_EQ(std::count(out.begin(), out.end(), 0xA5), 4096) << "written below the floor";
        }
    }
    uint8_t out[16];
    EXPECT_EQ(MDTLM_VRALDCN_FLOWHOP_JSON_EncodeMsg(nullptr, out, 2000), MDTLM_ENCODE_FAIL);
    EXPECT_EQ(MDTLM_VRALDCN_FLOWHOP_JSON_CheckEncodePara(&rec, nullptr, 2000), MDTLM_ENCODE_FAIL);
    EXPECT_EQ(fw.CountShape("[mdtlm.vraldcn.statis:#][FLOW_JSON_CheckEncodePara] Param error, msg is NULL.",
                            MDTLM_LOG_FAILURE),
              2u);
}

TEST_F(FlowHopEncode, LongestJsonRecordFitsTheFloor)
{
    MDTLM_FLOWHOP_STATS_REC rec;
    std::memset(&rec, 0xFF, sizeof(rec));
    std::memset(rec.chassisId, '9', sizeof(rec.chassisId));
    std::memset(rec.slotId, '9', sizeof(rec.slotId));
    const std::string text = Json(rec, 1335);
    EXPECT_LT(text.size(), 1335u);
    EXPECT_EQ(ParseRecordRun(text).size(), 1u);
}
