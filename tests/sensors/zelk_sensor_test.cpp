/*
 * Export flow cache sensor: records through the whole path in GPB and JSON,
 * values without an enumeration text, exact bytes, conditions and filters,
 * JSON room.
 */
#include <string>
#include <vector>

#include "table_sensor_check.h"

namespace sensor_test {
namespace {

const Schema kSchema = {"export_flow_caches.proto", "mdtlm.zelk.Sample", "export-flow-caches", "export-flow-cache"};

using Rec = MDTLM_ZELK_CACHE_REC;

/* A record with the texts its encodings must show. */
struct ZelkCase {
    Rec rec;
    const char *src, *dst, *state, *recovery, *op;
};

std::vector<FieldCase> Fields(const ZelkCase &c)
{
    const Rec &r = c.rec;
    const auto num = [](const char *gpb, const char *json, uint64_t v) { return FieldCase{gpb, json, N(v), N(v)}; };
    const auto enu = [](const char *gpb, const char *json, uint64_t v, const char *text) {
        return FieldCase{gpb, json, N(v), T(text)};
    };
    const auto txt = [](const char *gpb, const char *json, const std::string &v) {
        return FieldCase{gpb, json, T(v), T(v)};
    };
    return {
        txt("slot_id", "slot-id", std::to_string(r.slotId)),
        txt("source_ip", "source-ip", c.src),
        txt("destination_ip", "destination-ip", c.dst),
        enu("protocol_id", "protocol-id", r.protocolId, "tcp"),
        num("l4_source_port", "l4-source-port", r.l4SourcePort),
        num("l4_destination_port", "l4-destination-port", r.l4DestinationPort),
        num("if_index", "if-index", r.ifIndex),
        num("detect_timestamp_second", "detect-timestamp-second", r.detectTimestampSecond),
        enu("state", "state", r.state, c.state),
        num("seed", "seed", r.seed),
        num("recovery_count", "recovery-count", r.recoveryCount),
        num("sequence_number", "sequence-number", r.sequenceNumber),
        enu("recovery_mode", "recovery-mode", r.recoveryMode, c.recovery),
        enu("op_mode", "op-mode", r.opMode, c.op),
    };
}

/* Between them every value that has a text. */
const ZelkCase kCases[] = {
    {{3, 0x0A000001, 0xC0A80A01, 6, 443, 51000, 17, 1700000000, 2, 0xFFFFFFFF, 4, 99, 2, 3}, "10.0.0.1",
     "192.168.10.1", "reach-limit", "underlay-overlay", "tcp-reserved-value-isolate-outbound"},
    {{0xFFFFFFFF, 0xFFFFFFFF, 0, 6, 0, 65535, 0, 0, 0, 0, 0, 0xFFFFFFFF, 3, 1}, "255.255.255.255", "0.0.0.0",
     "success", "none", "auto-fail-detection"},
    {{0, 0x01020304, 0x7F000001, 6, 1, 2, 3, 4, 1, 5, 6, 7, 3, 2}, "1.2.3.4", "127.0.0.1", "failed", "none",
     "manual-fail-recovery"},
    {{9, 0, 0, 6, 0, 0, 0, 0, 3, 0, 0, 0, 2, 4}, "0.0.0.0", "0.0.0.0", "disable", "underlay-overlay", "none"},
};

class ZelkSensorTest : public TableSensorTest {};

TEST_F(ZelkSensorTest, RecordsReachGpbAndJsonTasksFieldForField)
{
    std::vector<Rec> recs;
    std::vector<std::vector<FieldCase>> expected;
    for (const ZelkCase &c : kCases) {
        recs.push_back(c.rec);
        expected.push_back(Fields(c));
    }
    ExpectWholePath(MDTLM_SENSOR_ZELK_CACHE, kSchema, recs, expected);
}

TEST_F(ZelkSensorTest, ValuesWithoutTextAreStoredByGpbAndDroppedByJson)
{
    struct Bad {
        const char *gpbName;
        uint32_t Rec::*field;
        uint32_t value;
    };
    const Bad bad[] = {
        {"protocol_id", &Rec::protocolId, 17},   {"protocol_id", &Rec::protocolId, 0},
        {"state", &Rec::state, 4},                {"recovery_mode", &Rec::recoveryMode, 0},
        {"recovery_mode", &Rec::recoveryMode, 1}, {"recovery_mode", &Rec::recoveryMode, 4},
        {"op_mode", &Rec::opMode, 0},             {"op_mode", &Rec::opMode, 5},
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
    EXPECT_EQ(jsonTask->jsonBuffer->dataLen, 0u);
    MDTLM_VRALDCN_STATS_UploadRest();
    const std::vector<const Message *> gpb = GpbOf(1, kSchema);
    ASSERT_EQ(gpb.size(), std::size(bad));
    for (size_t i = 0; i < std::size(bad); ++i) {
        EXPECT_EQ(U(*gpb[i], bad[i].gpbName), bad[i].value);
    }
    EXPECT_TRUE(SamplesOf(2).empty());
}

TEST_F(ZelkSensorTest, ExactBytes)
{
    const Rec zero{};
    const uint8_t gpb[] = {
        0x3A, 0x2D, 0x0A, 0x2B,                                        // container 7, field 1
        0x0A, 0x01, '0',                                               // slot-id
        0x12, 0x07, '0', '.', '0', '.', '0', '.', '0',                 // source-ip
        0x1A, 0x07, '0', '.', '0', '.', '0', '.', '0',                 // destination-ip
        0x20, 0, 0x28, 0, 0x30, 0, 0x38, 0,                            // fields 4-7
        0x40, 0, 0x48, 0, 0x50, 0, 0x58, 0, 0x60, 0, 0x68, 0, 0x70, 0, // fields 8-14
    };
    uint8_t out[700];
    ASSERT_EQ(MDTLM_ZELK_GPB_EncodeMsg(&zero, out, sizeof(out)), static_cast<int32_t>(sizeof(gpb)));
    EXPECT_EQ(std::vector<uint8_t>(out, out + sizeof(gpb)), std::vector<uint8_t>(gpb, gpb + sizeof(gpb)));
    EXPECT_EQ(MDTLM_ZELK_JSON_EncodeMsg(&zero, out, sizeof(out)), MDTLM_ENCODE_FAIL) << "protocol 0 has no text";

    const std::string json =
        "{\"slot-id\":\"3\",\"source-ip\":\"10.0.0.1\",\"destination-ip\":\"192.168.10.1\",\"protocol-id\":\"tcp\","
        "\"l4-source-port\":443,\"l4-destination-port\":51000,\"if-index\":17,\"detect-timestamp-second\":1700000000,"
        "\"state\":\"reach-limit\",\"seed\":4294967295,\"recovery-count\":4,\"sequence-number\":99,"
        "\"recovery-mode\":\"underlay-overlay\",\"op-mode\":\"tcp-reserved-value-isolate-outbound\"},";
    ASSERT_EQ(MDTLM_ZELK_JSON_EncodeMsg(&kCases[0].rec, out, 633), static_cast<int32_t>(json.size()));
    EXPECT_EQ(std::string(reinterpret_cast<char *>(out), json.size()), json);

    std::memset(out, 0xEE, sizeof(out));
    EXPECT_EQ(MDTLM_ZELK_JSON_EncodeMsg(&kCases[0].rec, out, 632), MDTLM_ENCODE_NO_SPACE);
    EXPECT_EQ(out[0], 0xEE) << "nothing written below the floor";

    fw.ClearLogs();
    EXPECT_EQ(MDTLM_ZELK_GPB_EncodeMsg(nullptr, out, sizeof(out)), MDTLM_ENCODE_FAIL);
    EXPECT_EQ(MDTLM_ZELK_GPB_EncodeMsg(&zero, out, 0), MDTLM_ENCODE_NO_SPACE);
    EXPECT_EQ(MDTLM_ZELK_JSON_EncodeMsg(&zero, nullptr, 700), MDTLM_ENCODE_FAIL);
    EXPECT_EQ(fw.Shapes(), NullRecordLines("[ZELK][JSON]"));
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
        {"port and slot equal", B().Condition("l4-source-port", "443").Condition("slot-id", "3"), 2, 1},
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
