/*
 * Export flow cache sensor: records through the whole path in GPB and JSON,
 * enumeration texts, conditions and filters, exact bytes, JSON room.
 */
#include <cstring>
#include <string>
#include <vector>

#include "table_sensor_check.h"

namespace sensor_test {
namespace {

constexpr const char *kProto = "export_flow_caches.proto";
constexpr const char *kSample = "mdtlm.zelk.Sample";

using Rec = MDTLM_ZELK_CACHE_REC;

/* A record with the texts its encodings must show. */
struct ZelkCase {
    Rec rec;
    const char *src, *dst, *state, *recovery, *op;
};

std::vector<FieldCase> Fields(const ZelkCase &c)
{
    const Rec &r = c.rec;
    return {
        {"slot_id", "slot-id", T(std::to_string(r.slotId)), T(std::to_string(r.slotId))},
        {"source_ip", "source-ip", T(c.src), T(c.src)},
        {"destination_ip", "destination-ip", T(c.dst), T(c.dst)},
        {"protocol_id", "protocol-id", N(r.protocolId), T("tcp")},
        {"l4_source_port", "l4-source-port", N(r.l4SourcePort), N(r.l4SourcePort)},
        {"l4_destination_port", "l4-destination-port", N(r.l4DestinationPort), N(r.l4DestinationPort)},
        {"if_index", "if-index", N(r.ifIndex), N(r.ifIndex)},
        {"detect_timestamp_second", "detect-timestamp-second", N(r.detectTimestampSecond),
         N(r.detectTimestampSecond)},
        {"state", "state", N(r.state), T(c.state)},
        {"seed", "seed", N(r.seed), N(r.seed)},
        {"recovery_count", "recovery-count", N(r.recoveryCount), N(r.recoveryCount)},
        {"sequence_number", "sequence-number", N(r.sequenceNumber), N(r.sequenceNumber)},
        {"recovery_mode", "recovery-mode", N(r.recoveryMode), T(c.recovery)},
        {"op_mode", "op-mode", N(r.opMode), T(c.op)},
    };
}

const ZelkCase kCases[] = {
    {{3, 0x0A000001, 0xC0A80A01, 6, 443, 51000, 17, 1700000000, 2, 0xFFFFFFFF, 4, 99, 2, 3},
     "10.0.0.1", "192.168.10.1", "reach-limit", "underlay-overlay", "tcp-reserved-value-isolate-outbound"},
    {{0xFFFFFFFF, 0xFFFFFFFF, 0, 6, 0, 65535, 0, 0, 0, 0, 0, 0xFFFFFFFF, 3, 1},
     "255.255.255.255", "0.0.0.0", "success", "none", "auto-fail-detection"},
    {{0, 0x01020304, 0x7F000001, 6, 1, 2, 3, 4, 1, 5, 6, 7, 3, 2}, "1.2.3.4", "127.0.0.1", "failed", "none",
     "manual-fail-recovery"},
    {{9, 0, 0, 6, 0, 0, 0, 0, 3, 0, 0, 0, 2, 4}, "0.0.0.0", "0.0.0.0", "disable", "underlay-overlay", "none"},
};

class ZelkSensorTest : public TableSensorTest {};

TEST_F(ZelkSensorTest, RecordsReachGpbAndJsonTasksFieldForField)
{
    AddTask(MDTLM_SENSOR_ZELK_CACHE, 1, 1, PathInfoBuilder(MDTLM_ENCODE_TYPE_GPB).Get());
    AddTask(MDTLM_SENSOR_ZELK_CACHE, 1, 2, PathInfoBuilder(MDTLM_ENCODE_TYPE_JSON).Get());
    std::vector<Rec> recs;
    for (const ZelkCase &c : kCases) {
        recs.push_back(c.rec);
    }
    Deliver(MDTLM_SENSOR_ZELK_CACHE, recs);
    Tick();

    GpbRecords gpb = GpbOf(1, kProto, kSample);
    std::vector<Json> json = JsonOf(2, "export-flow-caches", "export-flow-cache");
    ASSERT_EQ(gpb.records.size(), std::size(kCases));
    ASSERT_EQ(json.size(), std::size(kCases));
    EXPECT_EQ(SamplesOf(1)[0].header.itemCnt, std::size(kCases));
    for (size_t i = 0; i < std::size(kCases); ++i) {
        SCOPED_TRACE("record " + std::to_string(i));
        ExpectGpb(*gpb.records[i], Fields(kCases[i]), &gpb.raw[0]);
        ExpectJson(json[i], Fields(kCases[i]));
    }
}

TEST_F(ZelkSensorTest, ValuesWithoutTextAreStoredByGpbAndDroppedByJson)
{
    struct Bad {
        const char *gpbName;
        uint32_t Rec::*field;
        uint32_t value;
    };
    const Bad bad[] = {
        {"protocol_id", &Rec::protocolId, 17},  {"protocol_id", &Rec::protocolId, 0},
        {"state", &Rec::state, 4},               {"recovery_mode", &Rec::recoveryMode, 0},
        {"recovery_mode", &Rec::recoveryMode, 1}, {"recovery_mode", &Rec::recoveryMode, 4},
        {"op_mode", &Rec::opMode, 0},            {"op_mode", &Rec::opMode, 5},
    };
    MDTLM_TASK_DATA *gpbTask = ReadyTask(MDTLM_SENSOR_ZELK_CACHE, 1, PathInfoBuilder(MDTLM_ENCODE_TYPE_GPB));
    MDTLM_TASK_DATA *jsonTask = ReadyTask(MDTLM_SENSOR_ZELK_CACHE, 2, PathInfoBuilder(MDTLM_ENCODE_TYPE_JSON));
    for (const Bad &b : bad) {
        SCOPED_TRACE(std::string(b.gpbName) + " " + std::to_string(b.value));
        Rec rec = kCases[0].rec;
        rec.*b.field = b.value;
        fw.ClearLogs();
        EXPECT_EQ(Offer(MDTLM_SENSOR_ZELK_CACHE, gpbTask, rec), 1u);
        EXPECT_EQ(Offer(MDTLM_SENSOR_ZELK_CACHE, jsonTask, rec), 1u);
        EXPECT_EQ(EncodeFailures(-1), 1u);
    }
    EXPECT_EQ(jsonTask->jsonBuffer->itemCnt, 0u);
    EXPECT_EQ(jsonTask->jsonBuffer->dataLen, 0u);
    MDTLM_VRALDCN_STATS_UploadRest();
    GpbRecords gpb = GpbOf(1, kProto, kSample);
    ASSERT_EQ(gpb.records.size(), std::size(bad));
    for (size_t i = 0; i < std::size(bad); ++i) {
        EXPECT_EQ(U(*gpb.records[i], bad[i].gpbName), bad[i].value);
    }
    EXPECT_TRUE(SamplesOf(2).empty());
}

TEST_F(ZelkSensorTest, AllZeroRecordHasEveryGpbFieldAndNoJson)
{
    const Rec zero{};
    const uint8_t expected[] = {
        0x3A, 0x2D, 0x0A, 0x2B,                                    // container 7, field 1
        0x0A, 0x01, '0',                                           // slot-id
        0x12, 0x07, '0', '.', '0', '.', '0', '.', '0',             // source-ip
        0x1A, 0x07, '0', '.', '0', '.', '0', '.', '0',             // destination-ip
        0x20, 0, 0x28, 0, 0x30, 0, 0x38, 0,                        // fields 4-7
        0x40, 0, 0x48, 0, 0x50, 0, 0x58, 0, 0x60, 0, 0x68, 0, 0x70, 0, // fields 8-14
    };
    uint8_t out[128];
    ASSERT_EQ(MDTLM_ZELK_GPB_EncodeMsg(&zero, out, sizeof(out)), static_cast<int32_t>(sizeof(expected)));
    EXPECT_EQ(std::string(reinterpret_cast<char *>(out), sizeof(expected)),
              std::string(reinterpret_cast<const char *>(expected), sizeof(expected)));
    EXPECT_EQ(MDTLM_ZELK_JSON_EncodeMsg(&zero, out, 700), MDTLM_ENCODE_FAIL);
}

TEST_F(ZelkSensorTest, JsonObjectIsTheTemplateFilledIn)
{
    const std::string expected =
        "{\"slot-id\":\"3\",\"source-ip\":\"10.0.0.1\",\"destination-ip\":\"192.168.10.1\",\"protocol-id\":\"tcp\","
        "\"l4-source-port\":443,\"l4-destination-port\":51000,\"if-index\":17,\"detect-timestamp-second\":1700000000,"
        "\"state\":\"reach-limit\",\"seed\":4294967295,\"recovery-count\":4,\"sequence-number\":99,"
        "\"recovery-mode\":\"underlay-overlay\",\"op-mode\":\"tcp-reserved-value-isolate-outbound\"},";
    std::vector<uint8_t> out(633, 0xEE);
    ASSERT_EQ(MDTLM_ZELK_JSON_EncodeMsg(&kCases[0].rec, out.data(), 633), static_cast<int32_t>(expected.size()));
    EXPECT_EQ(std::string(out.begin(), out.begin() + expected.size()), expected);

    std::vector<uint8_t> tight(632, 0xEE);
    EXPECT_EQ(MDTLM_ZELK_JSON_EncodeMsg(&kCases[0].rec, tight.data(), 632), MDTLM_ENCODE_NO_SPACE);
    EXPECT_EQ(tight, std::vector<uint8_t>(632, 0xEE)) << "nothing written below the floor";
}

TEST_F(ZelkSensorTest, MissingRecordOrOutputIsLogged)
{
    fw.ClearLogs();
    uint8_t out[700];
    EXPECT_EQ(MDTLM_ZELK_GPB_EncodeMsg(nullptr, out, sizeof(out)), MDTLM_ENCODE_FAIL);
    EXPECT_EQ(MDTLM_ZELK_GPB_EncodeMsg(&kCases[0].rec, nullptr, 100), MDTLM_ENCODE_NO_SPACE);
    EXPECT_EQ(MDTLM_ZELK_GPB_EncodeMsg(&kCases[0].rec, out, 0), MDTLM_ENCODE_NO_SPACE);
    EXPECT_EQ(MDTLM_ZELK_JSON_EncodeMsg(nullptr, out, sizeof(out)), MDTLM_ENCODE_FAIL);
    EXPECT_EQ(MDTLM_ZELK_JSON_CheckEncodePara(&kCases[0].rec, nullptr, 700), MDTLM_ENCODE_FAIL);
    EXPECT_EQ(fw.Shapes(), (std::vector<std::string>{
                               "[mdtlm.vraldcn.statis:#][VRALDCN_FLOW_GPB_EncodeMsg] Param error, msg is NULL.",
                               "[mdtlm.vraldcn.statis:#][ZELK][JSON] Param error, msg is NULL.",
                               "[mdtlm.vraldcn.statis:#][ZELK][JSON] Param error, msg is NULL.",
                           }));
}

TEST_F(ZelkSensorTest, EnumerationTexts)
{
    using Lookup = int32_t (*)(uint32_t, char *, uint32_t);
    struct Row {
        Lookup fn;
        uint32_t value;
        const char *text; /* null: no text */
    };
    const Row rows[] = {
        {MDTLM_ZELK_GetProtocol, 6, "tcp"},
        {MDTLM_ZELK_GetProtocol, 5, nullptr},
        {MDTLM_ZELK_GetProtocol, 7, nullptr},
        {MDTLM_ZELK_GetProtocol, 17, nullptr},
        {MDTLM_ZELK_GetAclAppStatStr, 0, "success"},
        {MDTLM_ZELK_GetAclAppStatStr, 3, "disable"},
        {MDTLM_ZELK_GetAclAppStatStr, 4, nullptr},
        {MDTLM_ZELK_GetRecoveryModeStr, 1, nullptr},
        {MDTLM_ZELK_GetRecoveryModeStr, 2, "underlay-overlay"},
        {MDTLM_ZELK_GetRecoveryModeStr, 3, "none"},
        {MDTLM_ZELK_GetRecoveryModeStr, 4, nullptr},
        {MDTLM_ZELK_GetOpModeStr, 0, nullptr},
        {MDTLM_ZELK_GetOpModeStr, 1, "auto-fail-detection"},
        {MDTLM_ZELK_GetOpModeStr, 4, "none"},
        {MDTLM_ZELK_GetOpModeStr, 5, nullptr},
        {MDTLM_ZELK_GetOpModeStr, 0xFFFFFFFF, nullptr},
    };
    for (const Row &r : rows) {
        char out[128] = "untouched";
        const int32_t ret = r.fn(r.value, out, sizeof(out));
        if (r.text == nullptr) {
            EXPECT_EQ(ret, -1) << r.value;
            EXPECT_STREQ(out, "untouched");
        } else {
            EXPECT_EQ(ret, static_cast<int32_t>(std::strlen(r.text)));
            EXPECT_STREQ(out, r.text);
        }
    }
    char small[3];
    EXPECT_LT(MDTLM_ZELK_GetProtocol(6, small, sizeof(small)), 0) << "the formatter's failure is passed on";
}

TEST_F(ZelkSensorTest, ConditionsAndFilters)
{
    struct Case {
        const char *what;
        PathInfoBuilder info;
        uint32_t state;
        uint32_t passed;
    };
    using B = PathInfoBuilder;
    const Case cases[] = {
        {"source address text", B().Condition("source-ip", "10.0.0.1"), 2, 1},
        {"leading zero octet", B().Condition("source-ip", "10.0.0.01"), 2, 0},
        {"destination address", B().Condition("destination-ip", "192.168.10.1"), 2, 1},
        {"protocol matches any value", B().Condition("protocol-id", "99"), 2, 1},
        {"port equal", B().Condition("l4-source-port", "443").Condition("slot-id", "3"), 2, 1},
        {"port differs", B().Condition("l4-destination-port", "51001"), 2, 0},
        {"seed is no condition field", B().Condition("seed", "12345"), 2, 1},
        {"slot-id is no filter field", B().Filter("slot-id", MDTLM_FILTER_OP_EQ, 3), 2, 0},
        {"state above 1 (reach-limit)", B().Filter("state", MDTLM_FILTER_OP_GT, 1), 2, 1},
        {"state above 1 (disable)", B().Filter("state", MDTLM_FILTER_OP_GT, 1), 3, 1},
        {"state above 1 (failed)", B().Filter("state", MDTLM_FILTER_OP_GT, 1), 1, 0},
        {"threshold by its low 32 bits", B().Filter("seed", MDTLM_FILTER_OP_EQ, 0x1FFFFFFFFull), 2, 1},
    };
    uint32_t taskId = 10;
    for (const Case &c : cases) {
        SCOPED_TRACE(c.what);
        MDTLM_TASK_DATA *task = ReadyTask(MDTLM_SENSOR_ZELK_CACHE, taskId++, c.info);
        Rec rec = kCases[0].rec;
        rec.state = c.state;
        EXPECT_EQ(Offer(MDTLM_SENSOR_ZELK_CACHE, task, rec), c.passed);
        EXPECT_EQ(task->gpbBuffer->itemCnt, c.passed);
    }
}

TEST_F(ZelkSensorTest, JsonBufferCountsAsFullBelow633BytesLeft)
{
    ExpectJsonFloor(MDTLM_SENSOR_ZELK_CACHE, 633, kCases[0].rec);
}

} // namespace
} // namespace sensor_test
