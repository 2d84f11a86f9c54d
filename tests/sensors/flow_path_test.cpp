/*
 * The flow statistics sensor through the whole plug-in: tasks added through
 * the framework's entry, records handed to the statistics channel, period
 * ticks, samples read back by a standard protobuf parser and a JSON parser.
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

constexpr uint32_t kFlow = MDTLM_SENSOR_VRAL_FLOW;
constexpr const char *kProto = "flow_statistics.proto";
constexpr const char *kSample = "mdtlm.flow.Sample";
constexpr const char *kEncodeFailed =
    "[mdtlm.vraldcn.statis:#][STATS_EncodeStatsData] Stats data encode failed, ret: -1.";

class FlowPath : public PluginFixture {
protected:
    static std::map<std::string, std::string> Texts(const MDTLM_FLOW_STATS_REC &r, const std::string &src,
                                                    const std::string &dst)
    {
        return {{"source-ip", src}, {"destination-ip", dst}, {"chassis-id", r.chassisId}, {"slot-id", r.slotId}};
    }

    static std::string JsonOf(const MDTLM_FLOW_STATS_REC &rec)
    {
        uint8_t out[4096];
        const int32_t n = MDTLM_VRALDCN_FLOW_JSON_EncodeMsg(&rec, out, sizeof(out));
        return n > 0 ? std::string(reinterpret_cast<char *>(out), static_cast<size_t>(n)) : std::string();
    }

    static std::string GpbOf(const MDTLM_FLOW_STATS_REC &rec)
    {
        uint8_t out[2048];
        const int32_t n = MDTLM_VRALDCN_FLOW_GPB_EncodeMsg(&rec, out, sizeof(out));
        return n > 0 ? std::string(reinterpret_cast<char *>(out), static_cast<size_t>(n)) : std::string();
    }
};

} // namespace

TEST_F(FlowPath, GpbSampleCarriesEveryRecordNumberedPerCastType)
{
    MDTLM_TASK_DATA *task = AddTask(kFlow, 3, 100, PathInfoBuilder(MDTLM_ENCODE_TYPE_GPB).Get());
    ASSERT_NE(task, nullptr);

    MDTLM_FLOW_STATS_REC v4 = FlowRecord();
    MDTLM_FLOW_STATS_REC v6 = FlowRecord();
    SetIpv6(&v6);
    v6.tunnelFlag = 0;
    MDTLM_FLOW_STATS_REC multi = FlowRecord();
    multi.castType = 2;
    EXPECT_EQ(Deliver(kFlow, std::vector<MDTLM_FLOW_STATS_REC>{v4, v6, multi}), 0u);
    Tick();

    const auto samples = Samples();
    ASSERT_EQ(samples.size(), 1u);
    EXPECT_EQ(samples[0].header.instanceId, 3u);
    EXPECT_EQ(samples[0].header.taskId, 100u);
    const DecodedSample d = DecodeGpb(samples[0], kProto, kSample);
    ASSERT_EQ(d.records.size(), 3u);
    ExpectGpbRecord(*d.records[0], FlowMembers(v4, 0), Texts(v4, "192.168.10.1", "10.0.0.2"), true);
    ExpectGpbRecord(*d.records[1], FlowMembers(v6, 1),
                    Texts(v6, "2001:db8:0:0:0:0:0:1", "fe80:0:0:1:abcd:0:ffff:ffff"), false);
    ExpectGpbRecord(*d.records[2], FlowMembers(multi, 0), Texts(multi, "192.168.10.1", "10.0.0.2"), true);
    EXPECT_EQ(task->unicastSeqNum, 2u);
    EXPECT_EQ(task->multicastSeqNum, 1u);
}

TEST_F(FlowPath, JsonSampleIsOneDocument)
{
    MDTLM_TASK_DATA *task = AddTask(kFlow, 1, 7, PathInfoBuilder(MDTLM_ENCODE_TYPE_JSON).Get());
    ASSERT_NE(task, nullptr);
    MDTLM_FLOW_STATS_REC a = FlowRecord();
    MDTLM_FLOW_STATS_REC b = FlowRecord();
    SetIpv6(&b);
    b.tunnelFlag = 0;
    b.direction = 1;
    Deliver(kFlow, std::vector<MDTLM_FLOW_STATS_REC>{a, b});
    Tick();

    const auto samples = Samples();
    ASSERT_EQ(samples.size(), 1u);
    const auto records = JsonRecords(samples[0], "flow_statistics", "flow_statistic");
    ASSERT_EQ(records.size(), 2u);
    const auto keys = KeysOf(FlowTemplateMembers());
    ExpectJsonRecord(records[0], FlowMembers(a, 0), Texts(a, "192.168.10.1", "10.0.0.2"), keys);
    ExpectJsonRecord(records[1], FlowMembers(b, 1), Texts(b, "2001:db8:0:0:0:0:0:1", "fe80:0:0:1:abcd:0:ffff:ffff"),
                     keys);
    EXPECT_EQ(g_unicastJsonSequenceNumber, 0u) << "the flow path never advances its JSON counters";
    EXPECT_EQ(g_multicastJsonSequenceNumber, 0u);
}

TEST_F(FlowPath, TickThroughTheEventLoop)
{
    ASSERT_NE(AddTask(kFlow, 1, 1, PathInfoBuilder().Get()), nullptr);
    Deliver(kFlow, FlowRecord());
    ASSERT_GE(g_mdtlmVralDcnTimerId, 0);
    MDTLM_HOST_TimerFire(g_mdtlmVralDcnTimerId, 1);
    Pump();
    const auto samples = Samples();
    ASSERT_EQ(samples.size(), 1u);
    EXPECT_EQ(DecodeGpb(samples[0], kProto, kSample).records.size(), 1u);
}

TEST_F(FlowPath, UnknownAddressFamilyIsDroppedButNumbered)
{
    MDTLM_TASK_DATA *gpb = AddTask(kFlow, 1, 1, PathInfoBuilder(MDTLM_ENCODE_TYPE_GPB).Get());
    MDTLM_TASK_DATA *json = AddTask(kFlow, 1, 2, PathInfoBuilder(MDTLM_ENCODE_TYPE_JSON).Get());
    ASSERT_TRUE(gpb && json);
    MDTLM_FLOW_STATS_REC bad = FlowRecord();
    bad.addressFamily = 3;
    const MDTLM_FLOW_STATS_REC good = FlowRecord();
    Deliver(kFlow, std::vector<MDTLM_FLOW_STATS_REC>{bad, good});
    Tick();

    EXPECT_EQ(fw.CountShape(kEncodeFailed, MDTLM_LOG_FAILURE), 2u) << "one line per task";
    const auto all = Samples();
    const auto gpbSamples = SamplesOfTask(all, 1);
    const auto jsonSamples = SamplesOfTask(all, 2);
    ASSERT_EQ(gpbSamples.size(), 1u);
    ASSERT_EQ(jsonSamples.size(), 1u);
    const DecodedSample d = DecodeGpb(gpbSamples[0], kProto, kSample);
    ASSERT_EQ(d.records.size(), 1u);
    EXPECT_EQ(U(*d.records[0], "sequence_number"), 1u) << "the dropped record kept number 0";
    const auto j = JsonRecords(jsonSamples[0], "flow_statistics", "flow_statistic");
    ASSERT_EQ(j.size(), 1u);
    EXPECT_EQ(j[0]["sequence-number"], 1u);
    EXPECT_EQ(gpb->unicastSeqNum, 2u);
    EXPECT_EQ(json->unicastSeqNum, 2u);
}

TEST_F(FlowPath, TasksWithDifferentConditionsNumberRecordsIndependently)
{
    const MDTLM_FLOW_STATS_REC first = FlowRecord(); /* flow-id (4097 << 20) | 0x12345 */
    MDTLM_FLOW_STATS_REC second = FlowRecord();
    second.flowIdHigh = 4096;
    second.flowIdLow = 0; /* flow-id 2^32 */
    MDTLM_TASK_DATA *all = AddTask(kFlow, 1, 10, PathInfoBuilder().Get());
    MDTLM_TASK_DATA *picky =
        AddTask(kFlow, 1, 20, PathInfoBuilder().Condition("flow-id", "4294967296").Condition("direction", "4").Get());
    ASSERT_TRUE(all && picky);

    Deliver(kFlow, first);
    Tick();
    auto samples = Samples();
    ASSERT_EQ(samples.size(), 1u);
    EXPECT_EQ(samples[0].header.taskId, 10u);
    EXPECT_EQ(U(*DecodeGpb(samples[0], kProto, kSample).records.at(0), "sequence_number"), 0u);
    EXPECT_EQ(all->unicastSeqNum, 1u);
    EXPECT_EQ(picky->unicastSeqNum, 1u) << "a rejected record still counts";

    fw.ClearSamples();
    Deliver(kFlow, second);
    Tick();
    samples = Samples();
    ASSERT_EQ(samples.size(), 2u);
    for (uint32_t taskId : {10u, 20u}) {
        const auto mine = SamplesOfTask(samples, taskId);
        ASSERT_EQ(mine.size(), 1u) << taskId;
        const DecodedSample d = DecodeGpb(mine[0], kProto, kSample);
        ASSERT_EQ(d.records.size(), 1u);
        EXPECT_EQ(U(*d.records[0], "sequence_number"), 1u) << taskId;
        EXPECT_EQ(U(*d.records[0], "flow_id"), kTwo32);
    }
}

TEST_F(FlowPath, FiltersCompareWideFieldsInSixtyFourBits)
{
    MDTLM_TASK_DATA *task = AddTask(kFlow, 1, 1,
                                    PathInfoBuilder()
                                        .Filter("byte-count", MDTLM_FILTER_OP_GT, kTwo32 + 5)
                                        .Filter("flow-id", MDTLM_FILTER_OP_EQ, kTwo32)
                                        .Logic(MDTLM_FILTER_LOGIC_AND)
                                        .Get());
    ASSERT_NE(task, nullptr);
    MDTLM_FLOW_STATS_REC pass = FlowRecord();
    pass.flowIdHigh = 4096;
    pass.flowIdLow = 0;
    pass.byteCount = kTwo32 + 6;
    MDTLM_FLOW_STATS_REC otherFlow = pass;
    otherFlow.flowIdLow = 1;
    MDTLM_FLOW_STATS_REC fewBytes = pass;
    fewBytes.byteCount = 6; /* above the threshold's low 32 bits only */
    Deliver(kFlow, std::vector<MDTLM_FLOW_STATS_REC>{otherFlow, pass, fewBytes});
    Tick();

    const auto samples = Samples();
    ASSERT_EQ(samples.size(), 1u);
    const DecodedSample d = DecodeGpb(samples[0], kProto, kSample);
    ASSERT_EQ(d.records.size(), 1u);
    EXPECT_EQ(U(*d.records[0], "byte_count"), kTwo32 + 6);
    EXPECT_EQ(U(*d.records[0], "sequence_number"), 1u);
    EXPECT_EQ(task->unicastSeqNum, 3u);
}

TEST_F(FlowPath, SequenceNumberFilterSeesTheStampedNumber)
{
    ASSERT_NE(AddTask(kFlow, 1, 1, PathInfoBuilder().Filter("sequence-number", MDTLM_FILTER_OP_GE, 2).Get()), nullptr);
    Deliver(kFlow, std::vector<MDTLM_FLOW_STATS_REC>(4, FlowRecord()));
    Tick();
    const auto samples = Samples();
    ASSERT_EQ(samples.size(), 1u);
    const DecodedSample d = DecodeGpb(samples[0], kProto, kSample);
    ASSERT_EQ(d.records.size(), 2u);
    EXPECT_EQ(U(*d.records[0], "sequence_number"), 2u);
    EXPECT_EQ(U(*d.records[1], "sequence_number"), 3u);
}

TEST_F(FlowPath, FullBufferIsUploadedBeforeTheNextRecord)
{
    const MDTLM_FLOW_STATS_REC rec = FlowRecord();
    const uint32_t jsonLen = static_cast<uint32_t>(JsonOf(rec).size());
    const uint32_t gpbLen = static_cast<uint32_t>(GpbOf(rec).size());
    ASSERT_GT(jsonLen, 0u);
    struct Case {
        const char *name;
        uint32_t encodeType;
        uint32_t used;
        bool uploads;
        uint32_t recordLen;
    };
    const std::vector<Case> cases = {
        {"json 1449 left", MDTLM_ENCODE_TYPE_JSON, 24576 - 1449, false, jsonLen},
        {"json 1448 left", MDTLM_ENCODE_TYPE_JSON, 24576 - 1448, true, jsonLen},
        {"json 23200 used", MDTLM_ENCODE_TYPE_JSON, 23200, true, jsonLen},
        {"gpb exact fit", MDTLM_ENCODE_TYPE_GPB, 24576 - gpbLen, false, gpbLen},
        {"gpb one byte short", MDTLM_ENCODE_TYPE_GPB, 24576 - gpbLen + 1, true, gpbLen},
    };
    uint32_t taskId = 0;
    for (const Case &c : cases) {
        SCOPED_TRACE(c.name);
        MDTLM_TASK_DATA *task = AddTask(kFlow, 1, ++taskId, PathInfoBuilder(c.encodeType).Get());
        ASSERT_NE(task, nullptr);
        Tick(); /* the tick gives the task its buffers */
        MDTLM_SAMPLE_BUFFER *buffer = c.encodeType == MDTLM_ENCODE_TYPE_JSON ? task->jsonBuffer : task->gpbBuffer;
        ASSERT_NE(buffer, nullptr);
        std::memset(buffer->data, 'x', c.used);
        buffer->dataLen = c.used;
        buffer->itemCnt = 5;
        fw.ClearSamples();

        MDTLM_VRALDCN_FLOW_STATS_EncodeStatsData(&rec, task);

        const auto samples = Samples();
        if (c.uploads) {
            ASSERT_EQ(samples.size(), 1u);
            EXPECT_EQ(samples[0].header.itemCnt, 5u);
            EXPECT_EQ(samples[0].header.taskId, taskId);
            EXPECT_EQ(buffer->itemCnt, 1u);
            EXPECT_EQ(buffer->dataLen, c.recordLen);
        } else {
            EXPECT_TRUE(samples.empty());
            EXPECT_EQ(buffer->itemCnt, 6u);
            EXPECT_EQ(buffer->dataLen, c.used + c.recordLen);
        }
        DelTask(kFlow, 1, taskId);
    }
}

TEST_F(FlowPath, ReportPerformanceIsKeyedByTheReportPeriodIndex)
{
    ASSERT_NE(AddTask(kFlow, 1, 1, PathInfoBuilder().Get()), nullptr);
    ASSERT_NE(AddTask(kFlow, 1, 2, PathInfoBuilder().Condition("direction", "1").Get()), nullptr);
    MDTLM_FLOW_STATS_REC rec = FlowRecord(); /* period id 5, report period index 70: slot 6 */
    Deliver(kFlow, rec);
    rec.sequenceNumber = 0; /* as the accepting task stamps it */
    const uint32_t len = static_cast<uint32_t>(GpbOf(rec).size());
    Tick();

    ASSERT_NE(g_mdtlmNtvVralDcnReportPerf, nullptr);
    const MDTLM_REPORT_PERF_REC &slot = g_mdtlmNtvVralDcnReportPerf[70 & 63].rec;
    EXPECT_EQ(slot.period_index, 70u);
    EXPECT_EQ(slot.in_fwm_item_count, 1u) << "only the task that accepted the record counts";
    EXPECT_EQ(slot.in_fwm_item_byte_count, 264u);
    EXPECT_EQ(slot.out_item_count, 1u);
    EXPECT_EQ(slot.out_item_byte_count, len);
    EXPECT_EQ(g_mdtlmNtvVralDcnReportPerf[5].rec.in_fwm_item_count, 0u);
}
