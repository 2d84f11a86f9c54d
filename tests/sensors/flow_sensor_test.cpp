/*
 * Exact encoder output, and what only the flow and flow-hop sensors do:
 * per-task sequence numbers, the exported JSON counters, refused short
 * messages, encode failures and report performance slots.
 */
#include "mdtlm_host.h"
#include "sensor_records.h"

namespace sensor_test {
namespace {

std::string Hex(const uint8_t *bytes, int32_t n)
{
    std::string text;
    for (int32_t i = 0; i < n; ++i) {
        text += "0123456789abcdef"[bytes[i] >> 4];
        text += "0123456789abcdef"[bytes[i] & 15];
    }
    return text;
}

TEST(SensorBytes, SmallRecordsEncodeExactly)
{
    const MDTLM_FLOW_STATS_REC flow = {.interval = 3, .chassisId = "c", .slotId = "s", .srcAddr = {0x0A000001},
                                       .dstAddr = {0x0A000002}, .addressFamily = 1, .protocol = 6, .srcPort = 80,
                                       .dstPort = 443, .flowIdLow = 5, .ifIndex = 2, .direction = 1,
                                       .periodId = 7, .packetCount = 1, .byteCount = 64};
    const MDTLM_ZELK_CACHE_REC zelk{};
    uint8_t out[700];
    int32_t n = MDTLM_VRALDCN_FLOW_GPB_EncodeMsg(&flow, out, sizeof(out));
    EXPECT_EQ(Hex(out, n), "1254" "0a52"                                /* container 2, field 1 */
                           "0805" "1001" "6002" "7003" "c80100"         /* flow info: 1 2 12 14 25 */
                           "1800"                                       /* 3: IPv4 is family 0 */
                           "2208" "31302e302e302e31"                    /* 4 "10.0.0.1" */
                           "2a08" "31302e302e302e32"                    /* 5 "10.0.0.2" */
                           "5006" "4050" "48bb03"                       /* 10 protocol, 8 and 9 ports */
                           "6800" "880200" "7807" "800101" "880140"     /* 13 33 15 16 17 */
                           "900100" "980100"                            /* 18 19 */
                           "a80100" "b80100" "a00201" "b80200"          /* 21 23 36 39, no 37 38 */
                           "980200" "ca020163" "d2020173");             /* 35 41 "c" 42 "s" */
    n = MDTLM_ZELK_GPB_EncodeMsg(&zelk, out, sizeof(out));
    EXPECT_EQ(Hex(out, n), "3a2d" "0a2b"                                /* container 7, field 1 */
                           "0a0130"                                     /* slot-id "0" */
                           "1207" "302e302e302e30" "1a07" "302e302e302e30" /* addresses "0.0.0.0" */
                           "2000" "2800" "3000" "3800" "4000" "4800" "5000" "5800" "6000" "6800" "7000");

    const std::string json =
        "{\"slot-id\":\"3\",\"source-ip\":\"10.0.0.1\",\"destination-ip\":\"192.168.10.1\",\"protocol-id\":\"tcp\","
        "\"l4-source-port\":443,\"l4-destination-port\":51000,\"if-index\":17,\"detect-timestamp-second\":1700000000,"
        "\"state\":\"reach-limit\",\"seed\":4294967295,\"recovery-count\":4,\"sequence-number\":99,"
        "\"recovery-mode\":\"underlay-overlay\",\"op-mode\":\"tcp-reserved-value-isolate-outbound\"},";
    ASSERT_EQ(MDTLM_ZELK_JSON_EncodeMsg(&kZelk[0].rec, out, 633), static_cast<int32_t>(json.size()));
    EXPECT_EQ(std::string(reinterpret_cast<char *>(out), json.size()), json);
}

TEST(SensorBytes, LongestFlowJsonRecordsFitTheFloor)
{
    MDTLM_FLOW_STATS_REC flow;
    MDTLM_FLOWHOP_STATS_REC hop;
    std::memset(&flow, 0xFF, sizeof(flow));
    std::memset(&hop, 0xFF, sizeof(hop));
    flow.addressFamily = 2; /* IPv6 texts of 39 characters */
    for (char *text : {flow.chassisId, flow.slotId, hop.chassisId, hop.slotId}) {
        std::memset(text, '9', 32);
    }
    std::vector<uint8_t> out(2048);
    const int32_t flowLen = MDTLM_VRALDCN_FLOW_JSON_EncodeMsg(&flow, out.data(), 1449),
                  hopLen = MDTLM_VRALDCN_FLOWHOP_JSON_EncodeMsg(&hop, out.data(), 1335);
    EXPECT_TRUE(flowLen > 0 && flowLen < 1449) << flowLen;
    EXPECT_TRUE(hopLen > 0 && hopLen < 1335) << hopLen;
}

/* Only the hop JSON encoder advances the exported counters, per cast type
 * (anything but 1 is multicast), and not when it refuses the record. */
TEST(FlowSequence, OnlyTheHopJsonEncoderAdvancesItsCounters)
{
    const uint32_t before[4] = {g_unicastJsonSequenceNumber, g_multicastJsonSequenceNumber,
                                g_unicastJsonHopSequenceNumber, g_multicastJsonHopSequenceNumber};
    MDTLM_FLOW_STATS_REC flow = FlowRecord();
    MDTLM_FLOWHOP_STATS_REC hop = FlowHopRecord();
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

TEST(FlowSequence, ShortBodiesAreRefusedUntouched)
{
    for (MDTLM_STATS_MSG_PROC_FUNC handler :
         {MDTLM_VRALDCN_FLOW_STATS_StatsMsgProc, MDTLM_VRALDCN_FLOWHOP_STATS_StatsMsgProc}) {
        alignas(8) uint8_t raw[8 + 264] = {};
        auto *msg = reinterpret_cast<MDTLM_STATS_MSG *>(raw);
        msg->msgLen = 263;
        std::memset(msg->body + 56, 0x77, 4);
        MDTLM_TASK_DATA task{};
        EXPECT_EQ(handler(&task, msg), 0u);
        EXPECT_EQ(task.unicastSeqNum + task.multicastSeqNum, 0u);
        EXPECT_EQ(msg->body[56], 0x77) << "sequence stamped into a refused message";
    }
}

using FlowPath = SensorTest;

TEST_F(FlowPath, TasksNumberRecordsIndependentlyAndCountRejectedOnes)
{
    const Schema &schema = kFlowSchema;
    MDTLM_FLOW_STATS_REC other = FlowRecord();
    other.flowIdHigh = 4096;
    other.flowIdLow = 0; /* flow-id 2^32 */
    MDTLM_TASK_DATA *all = AddTask(MDTLM_SENSOR_VRAL_FLOW, 1, 10, PathInfoBuilder().Get());
    MDTLM_TASK_DATA *picky = AddTask(MDTLM_SENSOR_VRAL_FLOW, 1, 20,
                                     PathInfoBuilder().Condition("flow-id", "4294967296").Condition("direction", "4").Get());
    ASSERT_TRUE(all && picky);

    Deliver(MDTLM_SENSOR_VRAL_FLOW, FlowRecord());
    Tick();
    ASSERT_EQ(fw.Samples().size(), 1u);
    ASSERT_EQ(GpbOf(10, schema).size(), 1u);
    EXPECT_EQ(U(*GpbOf(10, schema)[0], "sequence_number"), 0u);
    EXPECT_EQ(std::tie(all->unicastSeqNum, picky->unicastSeqNum), std::make_tuple(1u, 1u)) << "rejected still counts";

    fw.ClearSamples();
    Deliver(MDTLM_SENSOR_VRAL_FLOW, other);
    Tick();
    for (uint32_t taskId : {10u, 20u}) {
        const auto records = GpbOf(taskId, schema);
        ASSERT_EQ(records.size(), 1u) << taskId;
        EXPECT_EQ(U(*records[0], "sequence_number"), 1u) << taskId;
        EXPECT_EQ(U(*records[0], "flow_id"), kTwo32);
    }
}

TEST_F(FlowPath, FlowHopEncodeFailureIsLoggedWithItsTag)
{
    MDTLM_TASK_DATA *task = ReadyTask(MDTLM_SENSOR_VRAL_FLOWHOP, 1, PathInfoBuilder(MDTLM_ENCODE_TYPE_JSON));
    ASSERT_TRUE(task != nullptr && task->jsonBuffer != nullptr);
    /* Without its sample buffer (the tick could not allocate it) the record cannot be stored. */
    MDTLM_SAMPLE_BUFFER *buffer = task->jsonBuffer;
    task->jsonBuffer = nullptr;
    const MDTLM_FLOWHOP_STATS_REC rec = FlowHopRecord();
    MDTLM_VRALDCN_FLOWHOP_STATS_EncodeStatsData(&rec, task);
    task->jsonBuffer = buffer;
    EXPECT_EQ(fw.CountShape("[mdtlm.vraldcn.statis:#][FLOWHOP_STATS_EncodeStatsData] Stats data encode failed, "
                            "ret: -1.",
                            MDTLM_LOG_FAILURE),
              1u);
    EXPECT_EQ(std::tie(task->jsonBuffer->dataLen, task->jsonBuffer->itemCnt), std::make_tuple(0u, 0u));
    EXPECT_TRUE(fw.Samples().empty());
}

TEST_F(FlowPath, ReportPerformanceKeys)
{
    /* Flow counts under its report period index (70: slot 6), not its period id (5). */
    ASSERT_NE(AddTask(MDTLM_SENSOR_VRAL_FLOW, 1, 1, PathInfoBuilder().Get()), nullptr);
    ASSERT_NE(AddTask(MDTLM_SENSOR_VRAL_FLOW, 1, 2, PathInfoBuilder().Condition("direction", "1").Get()), nullptr);
    /* Flow-hop counts under its period id (66: slot 2), once per accepting task. */
    ASSERT_NE(AddTask(MDTLM_SENSOR_VRAL_FLOWHOP, 1, 3, PathInfoBuilder().Get()), nullptr);
    ASSERT_NE(AddTask(MDTLM_SENSOR_VRAL_FLOWHOP, 1, 4, PathInfoBuilder().Get()), nullptr);
    Deliver(MDTLM_SENSOR_VRAL_FLOW, FlowRecord());
    Deliver(MDTLM_SENSOR_VRAL_FLOWHOP, FlowHopRecord());
    Tick();

    ASSERT_NE(g_mdtlmNtvVralDcnReportPerf, nullptr);
    MDTLM_FLOW_STATS_REC flow = FlowRecord();
    MDTLM_FLOWHOP_STATS_REC hop = FlowHopRecord();
    flow.sequenceNumber = hop.sequenceNumber = 0; /* as the tasks stamped them */
    uint8_t out[4096];
    const uint32_t flowLen = MDTLM_VRALDCN_FLOW_GPB_EncodeMsg(&flow, out, sizeof(out)),
                   hopLen = MDTLM_VRALDCN_FLOWHOP_GPB_EncodeMsg(&hop, out, sizeof(out));
    struct Slot {
        uint32_t slot, period, in, out, outBytes;
    };
    for (const Slot &s : std::vector<Slot>{{6, 70, 1, 1, flowLen}, {2, 66, 2, 2, 2 * hopLen}}) {
        const MDTLM_REPORT_PERF_REC &r = g_mdtlmNtvVralDcnReportPerf[s.slot].rec;
        EXPECT_EQ(std::make_tuple(r.period_index, r.in_fwm_item_count, r.in_fwm_item_byte_count, r.out_item_count,
                                  r.out_item_byte_count),
                  std::make_tuple(s.period, s.in, 264 * s.in, s.out, s.outBytes))
            << "slot " << s.slot;
    }
    EXPECT_EQ(g_mdtlmNtvVralDcnReportPerf[5].rec.in_fwm_item_count, 0u);
}

} // namespace
} // namespace sensor_test
