/*
 * Result statistics sensor: records through the whole path in GPB and JSON,
 * protocol names, 64-bit counters, texts that fill their fields, conditions
 * and filters, leading bytes, JSON room.
 */
#include <cstring>
#include <string>
#include <vector>

#include "table_sensor_check.h"

namespace sensor_test {
namespace {

constexpr const char *kProto = "result_statistics.proto";
constexpr const char *kSample = "mdtlm.quma.Sample";

using Rec = MDTLM_QUMA_RESULT_REC;

template <size_t N>
std::string Text(const char (&field)[N])
{
    return std::string(field, strnlen(field, N));
}

Rec MakeRec(uint32_t id, uint32_t protocol, const std::string &acl, const std::string &warn, uint64_t in,
            uint64_t out)
{
    Rec r{};
    r.id = id;
    r.periodId = id + 100;
    r.protocol = protocol;
    r.ruleId = id * 3;
    r.aclNumber = 3000 + id;
    std::memcpy(r.aclName, acl.data(), std::min(acl.size(), sizeof(r.aclName)));
    r.vxlanReservedValue = 0x11223344;
    r.vxlanReservedValueSecond = 0x55667788;
    r.reserved92 = 0xDEADBEEF;
    r.inputPackets = in;
    r.outputPackets = out;
    r.lossRate = 50;
    std::memcpy(r.warnInfo, warn.data(), std::min(warn.size(), sizeof(r.warnInfo)));
    r.timeStamp = 1700000000 + id;
    return r;
}

std::vector<FieldCase> Fields(const Rec &r, const char *protocolName)
{
    return {
        {"id", "id", N(r.id), N(r.id)},
        {"period_id", "period_id", N(r.periodId), N(r.periodId)},
        {"protocol", "protocol", N(r.protocol), T(protocolName)},
        {"rule_id", "rule_id", N(r.ruleId), T(std::to_string(r.ruleId))},
        {"acl_number", "acl_number", N(r.aclNumber), N(r.aclNumber)},
        {"acl_name", "acl_name", T(Text(r.aclName)), T(Text(r.aclName))},
        {"vxlan_reserved_value", "vxlan_reserved_value", N(r.vxlanReservedValue), N(r.vxlanReservedValue)},
        {"vxlan_reserved_value_second", "vxlan-reserved-value-second", N(r.vxlanReservedValueSecond),
         N(r.vxlanReservedValueSecond)},
        {"input_packets", "input_packets", N(r.inputPackets), N(r.inputPackets)},
        {"output_packets", "output_packets", N(r.outputPackets), N(r.outputPackets)},
        {"warn_info", "warn_info", T(Text(r.warnInfo)), T(Text(r.warnInfo))},
        {"time_stamp", "time_stamp", N(r.timeStamp), N(r.timeStamp)},
    };
}

struct QumaCase {
    Rec rec;
    const char *protocolName;
};

const QumaCase kCases[] = {
    /* texts that fill their fields: nothing behind them may follow */
    {MakeRec(7, 3, std::string(64, 'A'), std::string(32, 'w'), (1ull << 32) + 5, UINT64_MAX), "Protocol_L2"},
    {Rec{}, "Protocol_INVALID"},
    {MakeRec(1, 1, "acl-web", "high loss", 1, 0), "Protocol_IPV4"},
    {MakeRec(2, 2, "", "", 0, 1ull << 63), "Protocol_IPV6"},
};

class QumaSensorTest : public TableSensorTest {};

TEST_F(QumaSensorTest, RecordsReachGpbAndJsonTasksFieldForField)
{
    AddTask(MDTLM_SENSOR_QUMA_RESULT, 1, 1, PathInfoBuilder(MDTLM_ENCODE_TYPE_GPB).Get());
    AddTask(MDTLM_SENSOR_QUMA_RESULT, 1, 2, PathInfoBuilder(MDTLM_ENCODE_TYPE_JSON).Get());
    std::vector<Rec> recs;
    for (const QumaCase &c : kCases) {
        recs.push_back(c.rec);
    }
    Deliver(MDTLM_SENSOR_QUMA_RESULT, recs);
    Tick();

    GpbRecords gpb = GpbOf(1, kProto, kSample);
    std::vector<Json> json = JsonOf(2, "result-statistic", "result-statistic");
    ASSERT_EQ(gpb.records.size(), std::size(kCases));
    ASSERT_EQ(json.size(), std::size(kCases));
    for (size_t i = 0; i < std::size(kCases); ++i) {
        SCOPED_TRACE("record " + std::to_string(i));
        ExpectGpb(*gpb.records[i], Fields(kCases[i].rec, kCases[i].protocolName), &gpb.raw[0]);
        ExpectJson(json[i], Fields(kCases[i].rec, kCases[i].protocolName));
    }
}

TEST_F(QumaSensorTest, ProtocolAbove3IsStoredByGpbAndDroppedByJson)
{
    MDTLM_TASK_DATA *gpbTask = ReadyTask(MDTLM_SENSOR_QUMA_RESULT, 1, PathInfoBuilder(MDTLM_ENCODE_TYPE_GPB));
    MDTLM_TASK_DATA *jsonTask = ReadyTask(MDTLM_SENSOR_QUMA_RESULT, 2, PathInfoBuilder(MDTLM_ENCODE_TYPE_JSON));
    const Rec rec = MakeRec(4, 4, "acl", "", 9, 9);
    EXPECT_EQ(Offer(MDTLM_SENSOR_QUMA_RESULT, gpbTask, rec), 1u);
    EXPECT_EQ(Offer(MDTLM_SENSOR_QUMA_RESULT, jsonTask, rec), 1u);
    EXPECT_EQ(EncodeFailures(-1), 1u);
    EXPECT_EQ(jsonTask->jsonBuffer->itemCnt, 0u);
    MDTLM_VRALDCN_STATS_UploadRest();
    GpbRecords gpb = GpbOf(1, kProto, kSample);
    ASSERT_EQ(gpb.records.size(), 1u);
    EXPECT_EQ(U(*gpb.records[0], "protocol"), 4u);
    EXPECT_TRUE(SamplesOf(2).empty());
}

TEST_F(QumaSensorTest, ConditionsAndFilters)
{
    struct Case {
        const char *what;
        PathInfoBuilder info;
        uint64_t outputPackets;
        uint32_t passed;
    };
    using B = PathInfoBuilder;
    const uint64_t k32 = 1ull << 32;
    const Case cases[] = {
        {"input 2^32+5 above 2^32-1", B().Filter("input-packets", MDTLM_FILTER_OP_GT, k32 - 1), 0, 1},
        {"input 2^32+5 not above 2^32+5", B().Filter("input-packets", MDTLM_FILTER_OP_GT, k32 + 5), 0, 0},
        {"output 2^33 below 2^32+1 only by low bits", B().Filter("output-packets", MDTLM_FILTER_OP_LT, k32 + 1),
         2 * k32, 0},
        {"output 2^32 at least 2^32", B().Filter("output-packets", MDTLM_FILTER_OP_GE, k32), k32, 1},
        {"vxlan second has no filter row", B().Filter("vxlan-reserved-value-second", MDTLM_FILTER_OP_EQ, 0x55667788),
         0, 0},
        {"loss-rate decides", B().Filter("loss-rate", MDTLM_FILTER_OP_GE, 50), 0, 1},
        {"loss-rate rejects", B().Filter("loss-rate", MDTLM_FILTER_OP_GT, 50), 0, 0},
        {"acl-number and time-stamp (AND)",
         B().Filter("acl-number", MDTLM_FILTER_OP_EQ, 3007).Filter("time-stamp", MDTLM_FILTER_OP_LE, 1700000006)
             .Logic(MDTLM_FILTER_LOGIC_AND), 0, 0},
        {"condition id", B().Condition("id", "7").Condition("period-id", "107"), 0, 1},
        {"condition id differs", B().Condition("id", "8"), 0, 0},
        {"protocol is no condition field", B().Condition("protocol", "0"), 0, 1},
    };
    uint32_t taskId = 10;
    for (const Case &c : cases) {
        SCOPED_TRACE(c.what);
        MDTLM_TASK_DATA *task = ReadyTask(MDTLM_SENSOR_QUMA_RESULT, taskId++, c.info);
        Rec rec = kCases[0].rec;
        rec.outputPackets = c.outputPackets;
        EXPECT_EQ(Offer(MDTLM_SENSOR_QUMA_RESULT, task, rec), c.passed);
    }

    /* The compare callback knows the field the map cannot name. */
    MDTLM_PATH_FILTER filter{};
    filter.op = MDTLM_FILTER_OP_EQ;
    filter.threshold = 0x55667788;
    EXPECT_EQ(MDTLM_QUMA_STATS_CmpFieldWithThread(10, &filter, &kCases[0].rec), 1u);
    filter.threshold = 1;
    EXPECT_EQ(MDTLM_QUMA_STATS_CmpFieldWithThread(10, &filter, &kCases[0].rec), 0u);
    EXPECT_EQ(MDTLM_QUMA_STATS_CmpFieldWithThread(11, &filter, &kCases[0].rec), 1u);
}

TEST_F(QumaSensorTest, GpbRecordOpensWithContainer3AndTheId)
{
    uint8_t out[512];
    const int32_t len = MDTLM_QUMA_GPB_EncodeMsg(&kCases[2].rec, out, sizeof(out));
    ASSERT_GT(len, 6);
    ASSERT_LT(len, 128);
    EXPECT_EQ(out[0], 0x1A);
    EXPECT_EQ(out[1], len - 2);
    EXPECT_EQ(out[2], 0x0A);
    EXPECT_EQ(out[3], len - 4);
    EXPECT_EQ(out[4], 0x08);
    EXPECT_EQ(out[5], kCases[2].rec.id);

    fw.ClearLogs();
    EXPECT_EQ(MDTLM_QUMA_GPB_EncodeMsg(nullptr, out, sizeof(out)), MDTLM_ENCODE_FAIL);
    EXPECT_EQ(MDTLM_QUMA_JSON_EncodeMsg(&kCases[0].rec, nullptr, 800), MDTLM_ENCODE_FAIL);
    EXPECT_EQ(fw.Shapes(), (std::vector<std::string>{
                               "[mdtlm.vraldcn.statis:#][VRALDCN_FLOW_GPB_EncodeMsg] Param error, msg is NULL.",
                               "[mdtlm.vraldcn.statis:#][FLOW_JSON_CheckEncodePara] Param error, msg is NULL.",
                           }));
}

TEST_F(QumaSensorTest, JsonBufferCountsAsFullBelow745BytesLeft)
{
    ExpectJsonFloor(MDTLM_SENSOR_QUMA_RESULT, 745, kCases[0].rec);
}

} // namespace
} // namespace sensor_test
