/*
 * The flow-hop statistics sensor through the whole plug-in: samples read back
 * by a standard protobuf parser and a JSON parser, delays, counters, filters
 * on raw delays and the JSON floor.
 */
#include <cstring>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "flow_records.h"
#include "flow_samples.h"
#include "mdtlm_host.h"
#include "mdtlm_vraldcn.h"
#include "plugin_fixture.h"

using namespace flowtest;

namespace {

constexpr uint32_t kHop = MDTLM_SENSOR_VRAL_FLOWHOP;
constexpr const char *kProto = "flow_hop_statistics.proto";
constexpr const char *kSample = "mdtlm.flowhop.Sample";

class FlowHopPath : public PluginFixture {
protected:
    static std::map<std::string, std::string> Texts(const MDTLM_FLOWHOP_STATS_REC &r)
    {
        return {{"chassis-id", r.chassisId}, {"slot-id", r.slotId}};
    }
};

} // namespace

TEST_F(FlowHopPath, GpbAndJsonTasksReceiveTheSameRecords)
{
    MDTLM_TASK_DATA *gpb = AddTask(kHop, 2, 1, PathInfoBuilder(MDTLM_ENCODE_TYPE_GPB).Get());
    MDTLM_TASK_DATA *json = AddTask(kHop, 2, 2, PathInfoBuilder(MDTLM_ENCODE_TYPE_JSON).Get());
    ASSERT_TRUE(gpb && json);
    const uint32_t unicast0 = g_unicastJsonHopSequenceNumber;
    const uint32_t multicast0 = g_multicastJsonHopSequenceNumber;

    const MDTLM_FLOWHOP_STATS_REC a = FlowHopRecord(); /* delays 2^24 + 1 and 3, total count 2^32 + 5 */
    MDTLM_FLOWHOP_STATS_REC b = FlowHopRecord();
    b.castType = 2;
    b.tunnelFlag = 0;
    Deliver(kHop, std::vector<MDTLM_FLOWHOP_STATS_REC>{a, b});
    Tick();

    const auto all = Samples();
    const auto gpbSamples = SamplesOfTask(all, 1);
    ASSERT_EQ(gpbSamples.size(), 1u);
    const DecodedSample d = DecodeGpb(gpbSamples[0], kProto, kSample);
    ASSERT_EQ(d.records.size(), 2u);
    ExpectGpbRecord(*d.records[0], FlowHopMembers(a, 0), Texts(a), true);
    ExpectGpbRecord(*d.records[1], FlowHopMembers(b, 0), Texts(b), false);
    EXPECT_EQ(U(*d.records[0], "maximum_delay"), 256u);
    EXPECT_EQ(U(*d.records[0], "total_delay"), 768u);
    EXPECT_EQ(U(*d.records[0], "total_count"), 4294967301u);

    const auto jsonSamples = SamplesOfTask(all, 2);
    ASSERT_EQ(jsonSamples.size(), 1u);
    const auto records = JsonRecords(jsonSamples[0], "flow_hop_statistics", "flow_hop_statistic");
    ASSERT_EQ(records.size(), 2u);
    const auto keys = KeysOf(FlowHopTemplateMembers());
    ExpectJsonRecord(records[0], FlowHopMembers(a, 0), Texts(a), keys);
    ExpectJsonRecord(records[1], FlowHopMembers(b, 0), Texts(b), keys);
    EXPECT_EQ(records[0]["total-count"], 5u);

    /* Both tasks numbered each cast type from 0; only the JSON task's records
     * advanced the exported hop counters. */
    for (MDTLM_TASK_DATA *task : {gpb, json}) {
        EXPECT_EQ(task->unicastSeqNum, 1u);
        EXPECT_EQ(task->multicastSeqNum, 1u);
    }
    EXPECT_EQ(g_unicastJsonHopSequenceNumber - unicast0, 1u);
    EXPECT_EQ(g_multicastJsonHopSequenceNumber - multicast0, 1u);
}

TEST_F(FlowHopPath, DelayFiltersCompareRawValues)
{
    ASSERT_NE(AddTask(kHop, 1, 1, PathInfoBuilder().Filter("total-delay", MDTLM_FILTER_OP_EQ, 3).Get()), nullptr);
    ASSERT_NE(AddTask(kHop, 1, 2, PathInfoBuilder().Filter("total-delay", MDTLM_FILTER_OP_EQ, 768).Get()), nullptr);
    ASSERT_NE(AddTask(kHop, 1, 3,
                      PathInfoBuilder()
                          .Filter("maximum-delay", MDTLM_FILTER_OP_GT, 1)
                          .Filter("total-count", MDTLM_FILTER_OP_EQ, 5) /* only the low bits: fails */
                          .Logic(2)                                     /* OR */
                          .Get()),
              nullptr);
    Deliver(kHop, FlowHopRecord());
    Tick();
    const auto all = Samples();
    EXPECT_EQ(SamplesOfTask(all, 1).size(), 1u);
    EXPECT_EQ(SamplesOfTask(all, 2).size(), 0u);
    EXPECT_EQ(SamplesOfTask(all, 3).size(), 1u);
}

TEST_F(FlowHopPath, EncodeFailureIsLoggedWithTheSensorsTag)
{
    MDTLM_TASK_DATA *task = AddTask(kHop, 1, 1, PathInfoBuilder(MDTLM_ENCODE_TYPE_JSON).Get());
    ASSERT_NE(task, nullptr);
    Tick();
    ASSERT_NE(task->jsonBuffer, nullptr);
    /* A JSON text that cannot be formatted fails the record; it is not retried. */
    MDTLM_HOST_FaultSet(MDTLM_HOST_OP_SPRINTF_S, 0, 1000, -1);
    const MDTLM_FLOWHOP_STATS_REC rec = FlowHopRecord();
    MDTLM_VRALDCN_FLOWHOP_STATS_EncodeStatsData(&rec, task);
    MDTLM_HOST_FaultClear();
    EXPECT_EQ(fw.CountShape("[mdtlm.vraldcn.statis:#][FLOWHOP_STATS_EncodeStatsData] Stats data encode failed, "
                            "ret: -1.",
                            MDTLM_LOG_FAILURE),
              1u);
    EXPECT_EQ(task->jsonBuffer->dataLen, 0u);
    EXPECT_EQ(task->jsonBuffer->itemCnt, 0u);
    EXPECT_TRUE(Samples().empty());
}

TEST_F(FlowHopPath, JsonFloorUploadsEarly)
{
    const MDTLM_FLOWHOP_STATS_REC rec = FlowHopRecord();
    struct Case {
        uint32_t left;
        bool uploads;
    };
    uint32_t taskId = 0;
    for (const Case &c : std::vector<Case>{{1335, false}, {1334, true}}) {
        SCOPED_TRACE(c.left);
        MDTLM_TASK_DATA *task = AddTask(kHop, 1, ++taskId, PathInfoBuilder(MDTLM_ENCODE_TYPE_JSON).Get());
        ASSERT_NE(task, nullptr);
        Tick();
        MDTLM_SAMPLE_BUFFER *buffer = task->jsonBuffer;
        ASSERT_NE(buffer, nullptr);
        const uint32_t used = MDTLM_SAMPLE_DATA_SIZE - c.left;
        std::memset(buffer->data, 'x', used);
        buffer->dataLen = used;
        buffer->itemCnt = 9;
        fw.ClearSamples();

        MDTLM_VRALDCN_FLOWHOP_STATS_EncodeStatsData(&rec, task);

        EXPECT_EQ(Samples().size(), c.uploads ? 1u : 0u);
        EXPECT_EQ(buffer->itemCnt, c.uploads ? 1u : 10u);
        if (c.uploads) {
            EXPECT_EQ(Samples()[0].header.itemCnt, 9u);
        }
        DelTask(kHop, 1, taskId);
    }
}

TEST_F(FlowHopPath, ReportPerformanceIsKeyedByThePeriodId)
{
    ASSERT_NE(AddTask(kHop, 1, 1, PathInfoBuilder().Get()), nullptr);
    ASSERT_NE(AddTask(kHop, 1, 2, PathInfoBuilder().Get()), nullptr);
    MDTLM_FLOWHOP_STATS_REC rec = FlowHopRecord(); /* period id 66: slot 2 */
    Deliver(kHop, rec);
    rec.sequenceNumber = 0; /* as both tasks stamp it */
    uint8_t out[2048];
    const int32_t len = MDTLM_VRALDCN_FLOWHOP_GPB_EncodeMsg(&rec, out, sizeof(out));
    ASSERT_GT(len, 0);
    Tick();

    ASSERT_NE(g_mdtlmNtvVralDcnReportPerf, nullptr);
    const MDTLM_REPORT_PERF_REC &slot = g_mdtlmNtvVralDcnReportPerf[66 & 63].rec;
    EXPECT_EQ(slot.period_index, 66u);
    EXPECT_EQ(slot.in_fwm_item_count, 2u) << "counted once per accepting task";
    EXPECT_EQ(slot.in_fwm_item_byte_count, 2u * 264u);
    EXPECT_EQ(slot.out_item_count, 2u);
    EXPECT_EQ(slot.out_item_byte_count, 2u * static_cast<uint32_t>(len));
}
