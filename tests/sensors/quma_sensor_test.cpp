/*
 * Result statistics sensor: records through the whole path in GPB and JSON
 * (64-bit counters, texts that fill their fields, protocol names), a protocol
 * without a name, conditions and filters, leading bytes, JSON room.
 */
#include <cstring>
#include <string>
#include <vector>

#include "table_sensor_check.h"

namespace sensor_test {
namespace {

const Schema kSchema = {"result_statistics.proto", "mdtlm.quma.Sample", "result-statistic", "result-statistic"};

using Rec = MDTLM_QUMA_RESULT_REC;

template <size_t N>
std::string Text(const char (&field)[N])
{
    return std::string(field, strnlen(field, N));
}

Rec MakeRec(uint32_t id, uint32_t protocol, const std::string &acl, const std::string &warn, uint64_t in,
            uint64_t out)
{
    Rec r{id, id + 100, protocol, id * 3, 3000 + id, {}, 0x11223344, 0x55667788, 0xDEADBEEF, in, out, 50, {},
          1700000000 + id};
    std::memcpy(r.aclName, acl.data(), std::min(acl.size(), sizeof(r.aclName)));
    std::memcpy(r.warnInfo, warn.data(), std::min(warn.size(), sizeof(r.warnInfo)));
    return r;
}

std::vector<FieldCase> Fields(const Rec &r, const char *protocolName)
{
    return {
        Num("id", r.id),
        Num("period_id", r.periodId),
        {"protocol", "protocol", N(r.protocol), T(protocolName)},
        {"rule_id", "rule_id", N(r.ruleId), T(std::to_string(r.ruleId))},
        Num("acl_number", r.aclNumber),
        {"acl_name", "acl_name", T(Text(r.aclName)), T(Text(r.aclName))},
        Num("vxlan_reserved_value", r.vxlanReservedValue),
        {"vxlan_reserved_value_second", "vxlan-reserved-value-second", N(r.vxlanReservedValueSecond),
         N(r.vxlanReservedValueSecond)},
        Num("input_packets", r.inputPackets),
        Num("output_packets", r.outputPackets),
        {"warn_info", "warn_info", T(Text(r.warnInfo)), T(Text(r.warnInfo))},
        Num("time_stamp", r.timeStamp),
    };
}

/* Texts that fill their fields are followed by non-zero bytes, which must not show. */
const Rec kFull = MakeRec(7, 3, std::string(64, 'A'), std::string(32, 'w'), (1ull << 32) + 5, UINT64_MAX);
const Rec kSmall = MakeRec(1, 1, "acl-web", "high loss", 1, 0);

class QumaSensorTest : public TableSensorTest {};

TEST_F(QumaSensorTest, RecordsReachGpbAndJsonTasksFieldForField)
{
    const Rec v6 = MakeRec(2, 2, "", "", 0, 1ull << 63);
    ExpectWholePath(MDTLM_SENSOR_QUMA_RESULT, kSchema, std::vector<Rec>{kFull, Rec{}, kSmall, v6},
                    {Fields(kFull, "Protocol_L2"), Fields(Rec{}, "Protocol_INVALID"), Fields(kSmall, "Protocol_IPV4"),
                     Fields(v6, "Protocol_IPV6")});
}

TEST_F(QumaSensorTest, ProtocolAbove3IsStoredByGpbAndDroppedByJson)
{
    MDTLM_TASK_DATA *gpbTask = ReadyTask(MDTLM_SENSOR_QUMA_RESULT, 1, PathInfoBuilder(MDTLM_ENCODE_TYPE_GPB));
    MDTLM_TASK_DATA *jsonTask = ReadyTask(MDTLM_SENSOR_QUMA_RESULT, 2, PathInfoBuilder(MDTLM_ENCODE_TYPE_JSON));
    const Rec rec = MakeRec(4, 4, "acl", "", 9, 9);
    EXPECT_EQ(Offer(MDTLM_SENSOR_QUMA_RESULT, gpbTask, rec), 1u);
    EXPECT_EQ(Offer(MDTLM_SENSOR_QUMA_RESULT, jsonTask, rec), 1u);
    EXPECT_EQ(EncodeFailures(-1), 1u);
    MDTLM_VRALDCN_STATS_UploadRest();
    const std::vector<const Message *> gpb = GpbOf(1, kSchema);
    ASSERT_EQ(gpb.size(), 1u);
    EXPECT_EQ(U(*gpb[0], "protocol"), 4u);
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
        {"input 2^32+5 not above itself", B().Filter("input-packets", MDTLM_FILTER_OP_GT, k32 + 5), 0, 0},
        {"output 2^33 below 2^32+1 only by low bits", B().Filter("output-packets", MDTLM_FILTER_OP_LT, k32 + 1),
         2 * k32, 0},
        {"output 2^32 at least 2^32", B().Filter("output-packets", MDTLM_FILTER_OP_GE, k32), k32, 1},
        {"vxlan second has no filter row", B().Filter("vxlan-reserved-value-second", MDTLM_FILTER_OP_EQ, 0x55667788),
         0, 0},
        {"loss-rate decides", B().Filter("loss-rate", MDTLM_FILTER_OP_GE, 50), 0, 1},
        {"loss-rate rejects", B().Filter("loss-rate", MDTLM_FILTER_OP_GT, 50), 0, 0},
        {"acl-number and time-stamp (AND)",
         B().Filter("acl-number", MDTLM_FILTER_OP_EQ, 3007)
             .Filter("time-stamp", MDTLM_FILTER_OP_LE, 1700000006)
             .Logic(MDTLM_FILTER_LOGIC_AND),
         0, 0},
        {"id and period", B().Condition("id", "7").Condition("period-id", "107"), 0, 1},
        {"id differs", B().Condition("id", "8"), 0, 0},
        {"protocol is no condition field", B().Condition("protocol", "0"), 0, 1},
    };
    uint32_t taskId = 10;
    for (const Case &c : cases) {
        SCOPED_TRACE(c.what);
        MDTLM_TASK_DATA *task = ReadyTask(MDTLM_SENSOR_QUMA_RESULT, taskId++, c.info);
        Rec rec = kFull;
        rec.outputPackets = c.outputPackets;
        EXPECT_EQ(Offer(MDTLM_SENSOR_QUMA_RESULT, task, rec), c.passed);
    }

    /* The compare callback knows the field the map cannot name. */
    MDTLM_PATH_FILTER filter{};
    filter.threshold = 0x55667788;
    EXPECT_EQ(MDTLM_QUMA_STATS_CmpFieldWithThread(10, &filter, &kFull), 1u);
    filter.threshold = 1;
    EXPECT_EQ(MDTLM_QUMA_STATS_CmpFieldWithThread(10, &filter, &kFull), 0u);
    EXPECT_EQ(MDTLM_QUMA_STATS_CmpFieldWithThread(11, &filter, &kFull), 1u);
}

TEST_F(QumaSensorTest, FramingAndMissingRecords)
{
    ExpectLeadingBytes(MDTLM_QUMA_GPB_EncodeMsg, kSmall, 0x1A, 1);
    uint8_t out[800];
    fw.ClearLogs();
    EXPECT_EQ(MDTLM_QUMA_GPB_EncodeMsg(nullptr, out, sizeof(out)), MDTLM_ENCODE_FAIL);
    EXPECT_EQ(MDTLM_QUMA_JSON_EncodeMsg(&kSmall, nullptr, 800), MDTLM_ENCODE_FAIL);
    EXPECT_EQ(fw.Shapes(), NullRecordLines("[FLOW_JSON_CheckEncodePara]"));
}

TEST_F(QumaSensorTest, JsonBufferCountsAsFullBelow745BytesLeft)
{
    ExpectJsonFloor(MDTLM_SENSOR_QUMA_RESULT, 745, kFull);
}

} // namespace
} // namespace sensor_test
