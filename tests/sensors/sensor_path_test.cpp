/*
 * The six sensors through the whole plug-in, one table row per sensor:
 * records field for field in GPB and JSON samples, encoder arguments and
 * capacities, and the room a task's buffers must keep.
 */
#include "mdtlm_host.h"
#include "sensor_records.h"
#include "sensor_calls.h"

namespace sensor_test {
namespace {

constexpr const char *kGpbNullTag = "[VRALDCN_FLOW_GPB_EncodeMsg]";

struct SensorRow {
    const char *name;
    uint32_t type;
    Schema schema;
    std::vector<uint8_t> recs; /* back to back; the first one is tunnelled where that applies */
    std::vector<std::vector<FieldCase>> expected;
    std::vector<int> wireOrder; /* of the first record; empty: the listed order */
    std::string gpbNullTag = kGpbNullTag, jsonNullTag = "[FLOW_JSON_CheckEncodePara]";
    /* The sensor's encoders, record size and JSON floor. */
    const sensor_table::SensorCalls &Calls() const { return sensor_table::kSensors[type - 1]; }
};
void PrintTo(const SensorRow &row, std::ostream *os) { *os << row.name; }

std::vector<SensorRow> Rows()
{
    using FlowRec = MDTLM_FLOW_STATS_REC;
    using HopRec = MDTLM_FLOWHOP_STATS_REC;
    /* Unicast 0 and 1, multicast 0 and (cast type 0 counts as multicast) 1. */
    const FlowRec v4 = FlowRecord();
    FlowRec v6 = FlowRecordIpv6(), multi = FlowRecord(), zero{};
    v6.tunnelFlag = 0;
    multi.castType = 2;
    std::memset(multi.chassisId, 'A', sizeof(multi.chassisId)); /* must stop at the field's end */
    std::memset(multi.slotId, 'B', sizeof(multi.slotId));
    zero.addressFamily = 2;
    const HopRec hop = FlowHopRecord();
    HopRec hopMulti = FlowHopRecord(), hopZero{};
    hopMulti.castType = 2;
    hopMulti.tunnelFlag = 0;
    std::memset(hopMulti.chassisId, 'C', sizeof(hopMulti.chassisId));

    std::vector<MDTLM_ZELK_CACHE_REC> zelk;
    std::vector<std::vector<FieldCase>> zelkFields;
    for (const ZelkCase &c : kZelk) {
        zelk.push_back(c.rec);
        zelkFields.push_back(ZelkFields(c));
    }
    const MDTLM_QUMA_RESULT_REC qSmall = QumaRecord(1, 1, "acl-web", "high loss", 1, 0),
                                qV6 = QumaRecord(2, 2, "", "", 0, 1ull << 63);
    const std::vector<MDTLM_SRVTLM_FLOW_STATS_REC> srv = {SrvtlmRecord(0, 0x10), SrvtlmRecord(1, 0x80000000), {}};
    const std::vector<MDTLM_SRVTLM_FCTFLOW_STATS_REC> fct = {FctRecord(0, 1), FctRecord(1, 2), {}};
    return {
        {"flow", MDTLM_SENSOR_VRAL_FLOW, kFlowSchema, Bytes(std::vector<FlowRec>{v4, v6, multi, zero}),
         {FlowFields(v4, 0, "192.168.10.1", "10.0.0.2"),
          FlowFields(v6, 1, "2001:db8:0:0:0:0:0:1", "fe80:0:0:1:abcd:0:ffff:ffff"),
          FlowFields(multi, 0, "192.168.10.1", "10.0.0.2"), FlowFields(zero, 1, "0:0:0:0:0:0:0:0", "0:0:0:0:0:0:0:0")},
         {1, 2, 12, 14, 25, 3, 4, 5, 10, 8, 9, 13, 33, 15, 16, 17, 18, 19, 21, 23, 36, 37, 38, 39, 35, 41, 42}},
        {"flowhop", MDTLM_SENSOR_VRAL_FLOWHOP, kHopSchema, Bytes(std::vector<HopRec>{hop, hopMulti, hopZero}),
         {FlowHopFields(hop, 0), FlowHopFields(hopMulti, 0), FlowHopFields(hopZero, 1)},
         {1, 2, 3, 13, 27, 4, 23, 5, 6, 7, 8, 9, 11, 29, 30, 31, 32, 33, 14, 16, 17, 28, 35, 36},
         "[VRALDCN_FLOWHOP_GPB_EncodeMsg]"},
        {"zelk", MDTLM_SENSOR_ZELK_CACHE, kZelkSchema, Bytes(zelk), zelkFields, {}, kGpbNullTag, "[ZELK][JSON]"},
        {"quma", MDTLM_SENSOR_QUMA_RESULT, kQumaSchema, Bytes(std::vector<MDTLM_QUMA_RESULT_REC>{kQumaFull, {}, qSmall, qV6}),
         {QumaFields(kQumaFull, "Protocol_L2"), QumaFields({}, "Protocol_INVALID"), QumaFields(qSmall, "Protocol_IPV4"),
          QumaFields(qV6, "Protocol_IPV6")}},
        {"srvtlm", MDTLM_SENSOR_SRVTLM_FLOW, kSrvSchema, Bytes(srv),
         {SrvtlmFields(srv[0], "192.168.1.1", "10.0.0.2"), SrvtlmFields(srv[1], kSrvV6Src, kSrvV6Dst),
          SrvtlmFields(srv[2], "0.0.0.0", "0.0.0.0")}},
        {"fct", MDTLM_SENSOR_SRVTLM_FCTFLOW, kFctSchema, Bytes(fct),
         {FctFields(fct[0], "172.16.0.1", "172.16.0.2"),
          FctFields(fct[1], "2001:db8:0:0:0:0:ffff:1", "2001:db8:0:abcd:0:0:0:0"),
          FctFields(fct[2], "0.0.0.0", "0.0.0.0")}},
    };
}

class SensorPath : public SensorTest, public ::testing::WithParamInterface<SensorRow> {};

INSTANTIATE_TEST_SUITE_P(Sensors, SensorPath, ::testing::ValuesIn(Rows()),
                         [](const auto &info) { return std::string(info.param.name); });

/* Records delivered to a GPB and a JSON task arrive, after the period timer
 * fires, field for field and in order. */
TEST_P(SensorPath, RecordsReachGpbAndJsonTasksFieldForField)
{
    const SensorRow &row = GetParam();
    ASSERT_NE(AddTask(row.type, 3, 1, PathInfoBuilder(MDTLM_ENCODE_TYPE_GPB).Get()), nullptr);
    ASSERT_NE(AddTask(row.type, 3, 2, PathInfoBuilder(MDTLM_ENCODE_TYPE_JSON).Get()), nullptr);
    const uint32_t recLen = row.Calls().recordSize, count = static_cast<uint32_t>(row.recs.size() / recLen);
    EXPECT_EQ(Deliver(row.type, row.recs.data(), recLen, count), 0u);
    ASSERT_GE(g_mdtlmVralDcnTimerId, 0);
    MDTLM_HOST_TimerFire(g_mdtlmVralDcnTimerId, 1);
    Pump();

    ASSERT_EQ(fw.Samples().size(), 2u);
    for (const CapturedSample &s : fw.Samples()) {
        EXPECT_EQ(s.header.instanceId, 3u);
    }
    const std::vector<const Message *> gpb = GpbOf(1, row.schema);
    const std::vector<Json> json = JsonOf(2, row.schema);
    ASSERT_EQ(gpb.size(), row.expected.size());
    ASSERT_EQ(json.size(), row.expected.size());
    for (size_t i = 0; i < row.expected.size(); ++i) {
        SCOPED_TRACE("record " + std::to_string(i));
        const std::vector<int> order = ExpectGpb(*gpb[i], row.expected[i]);
        if (i == 0) {
            EXPECT_EQ(WireOrder(SamplesOf(1)[0].data), row.wireOrder.empty() ? order : row.wireOrder);
        }
        ExpectJson(json[i], row.expected[i]);
    }
}

/* Missing arguments fail with one log line each; a capacity one byte short of
 * the record (GPB) or of the floor (JSON) is refused without a byte written. */
TEST_P(SensorPath, EncoderArgumentsAndCapacity)
{
    const SensorRow &row = GetParam();
    const sensor_table::SensorCalls &calls = row.Calls();
    const std::vector<uint8_t> rec(row.recs.begin(), row.recs.begin() + calls.recordSize);
    std::vector<uint8_t> out(4096, 0xA5);
    const int32_t need = calls.gpb(rec.data(), out.data(), 4096);
    ASSERT_GT(need, 0);
    /* GPB may have begun the record within the capacity; JSON writes nothing below its floor. */
    for (const auto &[encode, cap, untouched] :
         {std::tuple{calls.gpb, need, need - 1}, std::tuple{calls.json, calls.jsonFloor, 0}}) {
        std::fill(out.begin(), out.end(), 0xA5);
        EXPECT_EQ(encode(rec.data(), out.data(), cap - 1), MDTLM_ENCODE_NO_SPACE);
        EXPECT_EQ(encode(rec.data(), out.data(), 0), MDTLM_ENCODE_NO_SPACE);
        EXPECT_EQ(std::count(out.begin() + untouched, out.end(), 0xA5), 4096 - untouched) << "written past the capacity";
        EXPECT_GT(encode(rec.data(), out.data(), cap), 0);
    }
    EXPECT_EQ(calls.gpb(rec.data(), out.data(), need), need);

    fw.ClearLogs();
    EXPECT_EQ(calls.gpb(nullptr, out.data(), 4096), MDTLM_ENCODE_FAIL);
    EXPECT_EQ(calls.json(nullptr, out.data(), 4096), MDTLM_ENCODE_FAIL);
    EXPECT_EQ(calls.json(rec.data(), nullptr, 4096), MDTLM_ENCODE_FAIL);
    const std::string statis = "[mdtlm.vraldcn.statis:#]", error = " Param error, msg is NULL.";
    EXPECT_EQ(fw.Shapes(), (std::vector<std::string>{statis + row.gpbNullTag + error, statis + row.jsonNullTag + error,
                                                     statis + row.jsonNullTag + error}));
}

/* A buffer with room for the record (GPB: its length; JSON: the floor) takes
 * it in place; with one byte less it is uploaded first and the record opens
 * the emptied buffer. */
TEST_P(SensorPath, FullBufferIsUploadedBeforeTheRecord)
{
    const SensorRow &row = GetParam();
    const std::vector<uint8_t> rec(row.recs.begin(), row.recs.begin() + row.Calls().recordSize);
    for (uint32_t encodeType : {MDTLM_ENCODE_TYPE_GPB, MDTLM_ENCODE_TYPE_JSON}) {
        MDTLM_TASK_DATA *task = ReadyTask(row.type, 10 + encodeType, PathInfoBuilder(encodeType));
        ASSERT_NE(task, nullptr);
        MDTLM_SAMPLE_BUFFER *buf = encodeType == MDTLM_ENCODE_TYPE_GPB ? task->gpbBuffer : task->jsonBuffer;
        ASSERT_NE(buf, nullptr);
        EXPECT_EQ(Offer(row.type, task, rec), 1u);
        const uint32_t floor = encodeType == MDTLM_ENCODE_TYPE_GPB ? buf->dataLen : static_cast<uint32_t>(row.Calls().jsonFloor);
        for (uint32_t left : {floor, floor - 1}) {
            SCOPED_TRACE((encodeType == MDTLM_ENCODE_TYPE_GPB ? "GPB, bytes left " : "JSON, bytes left ") +
                         std::to_string(left));
            const bool full = left < floor;
            std::memset(buf->data, ' ', sizeof(buf->data));
            buf->dataLen = MDTLM_SAMPLE_DATA_SIZE - left;
            buf->itemCnt = 3;
            fw.ClearSamples();
            EXPECT_EQ(Offer(row.type, task, rec), 1u);
            ASSERT_EQ(fw.Samples().size(), full ? 1u : 0u);
            EXPECT_EQ(buf->itemCnt, full ? 1u : 4u);
            if (full) {
                EXPECT_EQ(fw.Samples()[0].header.itemCnt, 3u);
                EXPECT_TRUE(encodeType == MDTLM_ENCODE_TYPE_GPB ? buf->dataLen == floor : buf->dataLen < floor);
            } else {
                EXPECT_GT(buf->dataLen, MDTLM_SAMPLE_DATA_SIZE - left);
            }
            if (encodeType == MDTLM_ENCODE_TYPE_JSON) {
                EXPECT_EQ(buf->data[full ? 0 : MDTLM_SAMPLE_DATA_SIZE - left], '{');
            }
        }
        buf->dataLen = buf->itemCnt = 0;
    }
}

} // namespace
} // namespace sensor_test
