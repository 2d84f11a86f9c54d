/*
 * The flow and flow-hop sensors through the whole plug-in: tasks added through
 * the framework's entries, records handed to the statistics channel, period
 * ticks, samples read back by a standard protobuf parser and a JSON parser.
 */
#include <cstring>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "flow_check.h"
#include "mdtlm_host.h"
#include "mdtlm_vraldcn.h"
#include "plugin_fixture.h"

using namespace flowtest;

namespace {

constexpr uint32_t kFlow = MDTLM_SENSOR_VRAL_FLOW;
constexpr uint32_t kHop = MDTLM_SENSOR_VRAL_FLOWHOP;
constexpr const char *kFlowProto = "flow_statistics.proto";
constexpr const char *kFlowSample = "mdtlm.flow.Sample";
constexpr const char *kHopProto = "flow_hop_statistics.proto";
constexpr const char *kHopSample = "mdtlm.flowhop.Sample";

using FlowPath = PluginFixture;

template <typename Rec>
std::vector<Rec> Many(std::initializer_list<Rec> records)
{
    return records;
}

Decoded DecodeFlow(const CapturedSample &s)
{
    EXPECT_EQ(s.header.dataLen, s.data.size());
    Decoded d = DecodeGpb(s.data, kFlowProto, kFlowSample);
    EXPECT_EQ(d.records.size(), s.header.itemCnt);
    return d;
}

template <typename Rec, typename Encode>
uint32_t EncodedLength(Rec rec, uint32_t seq, Encode encode)
{
    rec.sequenceNumber = seq; /* as a task stamps it */
    uint8_t out[4096];
    return static_cast<uint32_t>(std::max(encode(&rec, out, static_cast<int32_t>(sizeof(out))), 0));
}

} // namespace

TEST_F(FlowPath, GpbSampleCarriesEveryRecordNumberedPerCastType)
{
    MDTLM_TASK_DATA *task = AddTask(kFlow, 3, 100, PathInfoBuilder(MDTLM_ENCODE_TYPE_GPB).Get());
    ASSERT_NE(task, nullptr);
    const MDTLM_FLOW_STATS_REC v4 = FlowRecord();
    MDTLM_FLOW_STATS_REC v6 = FlowRecordIpv6();
    v6.tunnelFlag = 0;
    MDTLM_FLOW_STATS_REC multi = FlowRecord();
    multi.castType = 2;
    EXPECT_EQ(Deliver(kFlow, Many({v4, v6, multi})), 0u);
    Tick();

    const auto samples = Samples();
    ASSERT_EQ(samples.size(), 1u);
    EXPECT_EQ(std::tie(samples[0].header.instanceId, samples[0].header.taskId), std::make_tuple(3u, 100u));
    const Decoded d = DecodeFlow(samples[0]);
    ASSERT_EQ(d.records.size(), 3u);
    ExpectGpb(*d.records[0], Members(v4, 0), TextsOf(v4, kFlowIpv4Texts), true);
    ExpectGpb(*d.records[1], Members(v6, 1), TextsOf(v6, kFlowIpv6Texts), false);
    ExpectGpb(*d.records[2], Members(multi, 0), TextsOf(multi, kFlowIpv4Texts), true);
    EXPECT_EQ(std::tie(task->unicastSeqNum, task->multicastSeqNum), std::make_tuple(2u, 1u));
}

TEST_F(FlowPath, JsonSampleIsOneDocumentThroughTheEventLoop)
{
    ASSERT_NE(AddTask(kFlow, 1, 7, PathInfoBuilder(MDTLM_ENCODE_TYPE_JSON).Get()), nullptr);
    const MDTLM_FLOW_STATS_REC a = FlowRecord();
    MDTLM_FLOW_STATS_REC b = FlowRecordIpv6();
    b.tunnelFlag = 0;
    Deliver(kFlow, Many({a, b}));
    ASSERT_GE(g_mdtlmVralDcnTimerId, 0);
    MDTLM_HOST_TimerFire(g_mdtlmVralDcnTimerId, 1);
    Pump();

    const auto samples = Samples();
    ASSERT_EQ(samples.size(), 1u);
    const auto records = JsonSampleRecords(samples[0], "flow_statistics", "flow_statistic");
    ASSERT_EQ(records.size(), 2u);
    ExpectJson(records[0], Members(a, 0), TextsOf(a, kFlowIpv4Texts), kFlowTemplate);
    ExpectJson(records[1], Members(b, 1), TextsOf(b, kFlowIpv6Texts), kFlowTemplate);
}

TEST_F(FlowPath, UnknownAddressFamilyIsDroppedButNumbered)
{
    MDTLM_TASK_DATA *gpb = AddTask(kFlow, 1, 1, PathInfoBuilder(MDTLM_ENCODE_TYPE_GPB).Get());
    MDTLM_TASK_DATA *json = AddTask(kFlow, 1, 2, PathInfoBuilder(MDTLM_ENCODE_TYPE_JSON).Get());
    ASSERT_TRUE(gpb && json);
    MDTLM_FLOW_STATS_REC bad = FlowRecord();
    bad.addressFamily = 3;
    Deliver(kFlow, Many({bad, FlowRecord()}));
    Tick();

    EXPECT_EQ(fw.CountShape("[mdtlm.vraldcn.statis:#][STATS_EncodeStatsData] Stats data encode failed, ret: -1.",
                            MDTLM_LOG_FAILURE),
              2u)
        << "one line per task";
    const auto all = Samples();
    ASSERT_EQ(OfTask(all, 1).size(), 1u);
    ASSERT_EQ(OfTask(all, 2).size(), 1u);
    EXPECT_EQ(U(*DecodeFlow(OfTask(all, 1)[0]).records.at(0), "sequence_number"), 1u) << "number 0 went unused";
    EXPECT_EQ(JsonSampleRecords(OfTask(all, 2)[0], "flow_statistics", "flow_statistic").at(0)["sequence-number"], 1u);
    EXPECT_EQ(gpb->unicastSeqNum + json->unicastSeqNum, 4u);
}

TEST_F(FlowPath, TasksWithDifferentConditionsNumberRecordsIndependently)
{
    MDTLM_FLOW_STATS_REC other = FlowRecord();
    other.flowIdHigh = 4096;
    other.flowIdLow = 0; /* flow-id 2^32 */
    MDTLM_TASK_DATA *all = AddTask(kFlow, 1, 10, PathInfoBuilder().Get());
    MDTLM_TASK_DATA *picky =
        AddTask(kFlow, 1, 20, PathInfoBuilder().Condition("flow-id", "4294967296").Condition("direction", "4").Get());
    ASSERT_TRUE(all && picky);

    Deliver(kFlow, FlowRecord());
    Tick();
    auto samples = Samples();
    ASSERT_EQ(samples.size(), 1u);
    EXPECT_EQ(samples[0].header.taskId, 10u);
    EXPECT_EQ(U(*DecodeFlow(samples[0]).records.at(0), "sequence_number"), 0u);
    EXPECT_EQ(std::tie(all->unicastSeqNum, picky->unicastSeqNum), std::make_tuple(1u, 1u)) << "rejected still counts";

    fw.ClearSamples();
    Deliver(kFlow, other);
    Tick();
    samples = Samples();
    for (uint32_t taskId : {10u, 20u}) {
        ASSERT_EQ(OfTask(samples, taskId).size(), 1u) << taskId;
        const Decoded d = DecodeFlow(OfTask(samples, taskId)[0]);
        EXPECT_EQ(U(*d.records.at(0), "sequence_number"), 1u) << taskId;
        EXPECT_EQ(U(*d.records.at(0), "flow_id"), kTwo32);
    }
}

TEST_F(FlowPath, FiltersCompareWideFieldsAndTheStampedNumber)
{
    ASSERT_NE(AddTask(kFlow, 1, 1,
                      PathInfoBuilder()
                          .Filter("byte-count", MDTLM_FILTER_OP_GT, kTwo32 + 5)
                          .Filter("flow-id", MDTLM_FILTER_OP_EQ, kTwo32)
                          .Logic(MDTLM_FILTER_LOGIC_AND)
                          .Get()),
              nullptr);
    ASSERT_NE(AddTask(kFlow, 1, 2, PathInfoBuilder().Filter("sequence-number", MDTLM_FILTER_OP_GE, 2).Get()), nullptr);
    MDTLM_FLOW_STATS_REC pass = FlowRecord();
    pass.flowIdHigh = 4096;
    pass.flowIdLow = 0;
    pass.byteCount = kTwo32 + 6;
    MDTLM_FLOW_STATS_REC otherFlow = pass;
    otherFlow.flowIdLow = 1;
    MDTLM_FLOW_STATS_REC fewBytes = pass;
    fewBytes.byteCount = 6; /* above the threshold's low 32 bits only */
    Deliver(kFlow, Many({otherFlow, pass, fewBytes}));
    Tick();

    const auto all = Samples();
    const Decoded wide = DecodeFlow(OfTask(all, 1).at(0));
    ASSERT_EQ(wide.records.size(), 1u);
    EXPECT_EQ(U(*wide.records[0], "byte_count"), kTwo32 + 6);
    EXPECT_EQ(U(*wide.records[0], "sequence_number"), 1u);
    const Decoded late = DecodeFlow(OfTask(all, 2).at(0));
    ASSERT_EQ(late.records.size(), 1u);
    EXPECT_EQ(U(*late.records[0], "sequence_number"), 2u);
}

TEST_F(FlowPath, FullBufferIsUploadedBeforeTheNextRecord)
{
    const MDTLM_FLOW_STATS_REC flow = FlowRecord();
    const MDTLM_FLOWHOP_STATS_REC hop = FlowHopRecord();
    const uint32_t flowGpb = EncodedLength(flow, flow.sequenceNumber, MDTLM_VRALDCN_FLOW_GPB_EncodeMsg);
    struct Case {
        const char *name;
        uint32_t sensor, encodeType, left;
        bool uploads;
    };
    const std::vector<Case> cases = {
        {"flow json 1449 left", kFlow, MDTLM_ENCODE_TYPE_JSON, 1449, false},
        {"flow json 1448 left", kFlow, MDTLM_ENCODE_TYPE_JSON, 1448, true},
        {"flow json 23200 used", kFlow, MDTLM_ENCODE_TYPE_JSON, 24576 - 23200, true},
        {"hop json 1335 left", kHop, MDTLM_ENCODE_TYPE_JSON, 1335, false},
        {"hop json 1334 left", kHop, MDTLM_ENCODE_TYPE_JSON, 1334, true},
        {"flow gpb exact fit", kFlow, MDTLM_ENCODE_TYPE_GPB, flowGpb, false},
        {"flow gpb one byte short", kFlow, MDTLM_ENCODE_TYPE_GPB, flowGpb - 1, true},
    };
    uint32_t taskId = 0;
    for (const Case &c : cases) {
        SCOPED_TRACE(c.name);
        MDTLM_TASK_DATA *task = AddTask(c.sensor, 1, ++taskId, PathInfoBuilder(c.encodeType).Get());
        ASSERT_NE(task, nullptr);
        Tick(); /* the tick gives the task its buffers */
        MDTLM_SAMPLE_BUFFER *buffer = c.encodeType == MDTLM_ENCODE_TYPE_JSON ? task->jsonBuffer : task->gpbBuffer;
        ASSERT_NE(buffer, nullptr);
        const uint32_t used = MDTLM_SAMPLE_DATA_SIZE - c.left;
        std::memset(buffer->data, 'x', used);
        buffer->dataLen = used;
        buffer->itemCnt = 5;
        fw.ClearSamples();

        if (c.sensor == kFlow) {
            MDTLM_VRALDCN_FLOW_STATS_EncodeStatsData(&flow, task);
        } else {
            MDTLM_VRALDCN_FLOWHOP_STATS_EncodeStatsData(&hop, task);
        }
        const auto samples = Samples();
        ASSERT_EQ(samples.size(), c.uploads ? 1u : 0u);
        if (c.uploads) {
            EXPECT_EQ(samples[0].header.itemCnt, 5u);
            EXPECT_EQ(buffer->itemCnt, 1u);
            EXPECT_LT(buffer->dataLen, 1449u);
        } else {
            EXPECT_EQ(buffer->itemCnt, 6u);
            EXPECT_GT(buffer->dataLen, used);
        }
        DelTask(c.sensor, 1, taskId);
    }
}

TEST_F(FlowPath, FlowHopGpbAndJsonTasksReceiveTheSameRecords)
{
    MDTLM_TASK_DATA *gpb = AddTask(kHop, 2, 1, PathInfoBuilder(MDTLM_ENCODE_TYPE_GPB).Get());
    MDTLM_TASK_DATA *json = AddTask(kHop, 2, 2, PathInfoBuilder(MDTLM_ENCODE_TYPE_JSON).Get());
    ASSERT_TRUE(gpb && json);
    const uint32_t unicast0 = g_unicastJsonHopSequenceNumber, multicast0 = g_multicastJsonHopSequenceNumber;
    const MDTLM_FLOWHOP_STATS_REC a = FlowHopRecord(); /* delays 2^24 + 1 and 3, total count 2^32 + 5 */
    MDTLM_FLOWHOP_STATS_REC b = FlowHopRecord();
    b.castType = 2;
    b.tunnelFlag = 0;
    Deliver(kHop, Many({a, b}));
    Tick();

    const auto all = Samples();
    ASSERT_EQ(OfTask(all, 1).size(), 1u);
    const Decoded d = DecodeGpb(OfTask(all, 1)[0].data, kHopProto, kHopSample);
    ASSERT_EQ(d.records.size(), 2u);
    ExpectGpb(*d.records[0], Members(a, 0), TextsOf(a), true);
    ExpectGpb(*d.records[1], Members(b, 0), TextsOf(b), false);
    EXPECT_EQ(std::make_tuple(U(*d.records[0], "maximum_delay"), U(*d.records[0], "total_delay"),
                              U(*d.records[0], "total_count")),
              std::make_tuple(256u, 768u, 4294967301u));

    ASSERT_EQ(OfTask(all, 2).size(), 1u);
    const auto records = JsonSampleRecords(OfTask(all, 2)[0], "flow_hop_statistics", "flow_hop_statistic");
    ASSERT_EQ(records.size(), 2u);
    ExpectJson(records[0], Members(a, 0), TextsOf(a), kFlowHopTemplate);
    ExpectJson(records[1], Members(b, 0), TextsOf(b), kFlowHopTemplate);
    EXPECT_EQ(records[0]["total-count"], 5u);

    /* Each task numbered each cast type from 0; only the JSON task's records
     * advanced the exported hop counters. */
    for (MDTLM_TASK_DATA *task : {gpb, json}) {
        EXPECT_EQ(std::tie(task->unicastSeqNum, task->multicastSeqNum), std::make_tuple(1u, 1u));
    }
    EXPECT_EQ(g_unicastJsonHopSequenceNumber - unicast0, 1u);
    EXPECT_EQ(g_multicastJsonHopSequenceNumber - multicast0, 1u);
}

TEST_F(FlowPath, FlowHopDelayFiltersCompareRawValues)
{
    const auto filtered = [](const char *name, uint8_t op, uint64_t threshold) {
        return PathInfoBuilder().Filter(name, op, threshold).Get();
    };
    ASSERT_NE(AddTask(kHop, 1, 1, filtered("total-delay", MDTLM_FILTER_OP_EQ, 3)), nullptr);
    ASSERT_NE(AddTask(kHop, 1, 2, filtered("total-delay", MDTLM_FILTER_OP_EQ, 768)), nullptr);
    ASSERT_NE(AddTask(kHop, 1, 3, filtered("maximum-delay", MDTLM_FILTER_OP_GT, 1)), nullptr);
    ASSERT_NE(AddTask(kHop, 1, 4, filtered("total-count", MDTLM_FILTER_OP_EQ, 5)), nullptr);
    Deliver(kHop, FlowHopRecord());
    Tick();
    const auto all = Samples();
    EXPECT_EQ(std::make_tuple(OfTask(all, 1).size(), OfTask(all, 2).size(), OfTask(all, 3).size(),
                              OfTask(all, 4).size()),
              std::make_tuple(1u, 0u, 1u, 0u));
}

TEST_F(FlowPath, FlowHopEncodeFailureIsLoggedWithItsTag)
{
    MDTLM_TASK_DATA *task = AddTask(kHop, 1, 1, PathInfoBuilder(MDTLM_ENCODE_TYPE_JSON).Get());
    ASSERT_NE(task, nullptr);
    Tick();
    ASSERT_NE(task->jsonBuffer, nullptr);
    MDTLM_HOST_FaultSet(MDTLM_HOST_OP_SPRINTF_S, 0, 1000, -1); /* no JSON text can be formatted */
    const MDTLM_FLOWHOP_STATS_REC rec = FlowHopRecord();
    MDTLM_VRALDCN_FLOWHOP_STATS_EncodeStatsData(&rec, task);
    MDTLM_HOST_FaultClear();
    EXPECT_EQ(fw.CountShape("[mdtlm.vraldcn.statis:#][FLOWHOP_STATS_EncodeStatsData] Stats data encode failed, "
                            "ret: -1.",
                            MDTLM_LOG_FAILURE),
              1u);
    EXPECT_EQ(std::tie(task->jsonBuffer->dataLen, task->jsonBuffer->itemCnt), std::make_tuple(0u, 0u));
    EXPECT_TRUE(Samples().empty());
}

TEST_F(FlowPath, ReportPerformanceKeys)
{
    /* Flow counts under its report period index (70: slot 6), not its period id (5). */
    ASSERT_NE(AddTask(kFlow, 1, 1, PathInfoBuilder().Get()), nullptr);
    ASSERT_NE(AddTask(kFlow, 1, 2, PathInfoBuilder().Condition("direction", "1").Get()), nullptr);
    /* Flow-hop counts under its period id (66: slot 2), once per accepting task. */
    ASSERT_NE(AddTask(kHop, 1, 3, PathInfoBuilder().Get()), nullptr);
    ASSERT_NE(AddTask(kHop, 1, 4, PathInfoBuilder().Get()), nullptr);
    Deliver(kFlow, FlowRecord());
    Deliver(kHop, FlowHopRecord());
    Tick();

    ASSERT_NE(g_mdtlmNtvVralDcnReportPerf, nullptr);
    const uint32_t flowLen = EncodedLength(FlowRecord(), 0, MDTLM_VRALDCN_FLOW_GPB_EncodeMsg);
    const uint32_t hopLen = EncodedLength(FlowHopRecord(), 0, MDTLM_VRALDCN_FLOWHOP_GPB_EncodeMsg);
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
