/*
 * Sample upload: the period tick's drain and upload, JSON framing, report-end
 * flags, the upload counters and the failure lines.
 */
#include <cstdlib>
#include <cstring>
#include <ctime>

#include "mdtlm_host.h"
#include "mdtlm_vraldcn.h"
#include "task_world.h"

namespace {

class Upload : public TaskWorld {
protected:
    MDTLM_SAMPLE_BUFFER *NewBuffer(uint32_t dataLen, uint8_t fill = 'x')
    {
        auto *b = static_cast<MDTLM_SAMPLE_BUFFER *>(MDTLM_VRALDCN_BufAlloc(sizeof(MDTLM_SAMPLE_BUFFER)));
        std::memset(b, 0, sizeof(*b));
        std::memset(b->data, fill, sizeof(b->data));
        b->dataLen = dataLen;
        b->itemCnt = 1;
        return b;
    }
    void FreeBuffer(MDTLM_SAMPLE_BUFFER *b) { MDTLM_VRALDCN_BufFree(reinterpret_cast<void **>(&b)); }
    std::vector<uint32_t> ItemCounts()
    {
        std::vector<uint32_t> out;
        for (const CapturedSample &s : fw().Samples()) {
            out.push_back(s.header.itemCnt);
        }
        return out;
    }
};

TEST_F(Upload, JsonSampleIsOneDocumentPerSensor)
{
    const std::string a = "{\"a\":1},";
    const std::string b = "{\"b\":22},";
    for (uint32_t s = 1; s <= 6; ++s) {
        SCOPED_TRACE(s);
        ASSERT_EQ(Add(s, 70 + s, 80 + s, MDTLM_ENCODE_TYPE_JSON), 0u);
        Queue(s, a);
        Queue(s, b);
        fw().ClearSamples();
        Tick();
        const std::string header = MDTLM_VRALDCN_TASK_GetJsonHeader(s);
        ASSERT_EQ(fw().Samples().size(), 1u);
        const CapturedSample sample = fw().Samples()[0];
        EXPECT_EQ(sample.data, header + "{\"a\":1},{\"b\":22}]}}");
        EXPECT_EQ(sample.header.dataLen, header.size() + (a.size() + b.size()) + 2);
        EXPECT_EQ(sample.header.itemCnt, 2u);
        EXPECT_EQ(sample.header.instanceId, 70 + s);
        EXPECT_EQ(sample.header.taskId, 80 + s);
        EXPECT_EQ(sample.header.reserved3, 0u);
        MDTLM_TASK_DATA *task = Task(s, 70 + s, 80 + s);
        EXPECT_EQ(sample.header.collectTimestamp, task->jsonBuffer->collectTimestamp);
        EXPECT_NE(sample.header.collectTimestamp, 0u);
        EXPECT_EQ(task->jsonBuffer->dataLen, 0u); /* emptied at the end of the tick */
        EXPECT_EQ(task->jsonBuffer->itemCnt, 0u);
    }
    EXPECT_EQ(std::strlen(MDTLM_VRALDCN_TASK_GetJsonHeader(1)), 38u);
}

TEST_F(Upload, GpbSampleIsTheBufferByteForByte)
{
    ASSERT_EQ(Add(6, 1, 2, MDTLM_ENCODE_TYPE_GPB), 0u);
    const std::string rec1("\x08\x00\x12\x03" "abc", 7);
    const std::string rec2("\x00\xff", 2);
    Queue(6, rec1);
    Queue(6, rec2);
    Tick();
    ASSERT_EQ(fw().Samples().size(), 1u);
    EXPECT_EQ(fw().Samples()[0].data, rec1 + rec2);
    EXPECT_EQ(fw().Samples()[0].header.dataLen, 9u);
    EXPECT_EQ(fw().Samples()[0].header.itemCnt, 2u);

    fw().ClearSamples();
    Tick(); /* nothing queued: nothing sent */
    EXPECT_TRUE(fw().Samples().empty());
}

TEST_F(Upload, FullBufferIsSentAtOnceAndTheRestAtTheEnd)
{
    ASSERT_EQ(Add(2, 1, 1, MDTLM_ENCODE_TYPE_GPB), 0u);
    for (char c : std::string("ABCD")) {
        Queue(2, std::string(8000, c));
    }
    Tick();
    EXPECT_EQ(ItemCounts(), (std::vector<uint32_t>{3, 1}));
    ASSERT_EQ(fw().Samples().size(), 2u);
    EXPECT_EQ(fw().Samples()[0].data, std::string(8000, 'A') + std::string(8000, 'B') + std::string(8000, 'C'));
    EXPECT_EQ(fw().Samples()[1].data, std::string(8000, 'D'));
    MDTLM_FEM_TASK_STAT_REC rec{};
    MDTLM_DB_KEY key{0, 1};
    ASSERT_EQ(MDTLM_FEM_GetTaskStatDbRecord(&key, &rec), 0u);
    EXPECT_EQ(rec.upload_ok_count, 2u);
    EXPECT_EQ(rec.recv_msg_count, 4u);
    EXPECT_EQ(rec.match_item_count, 4u);
}

TEST_F(Upload, AtMost2000MessagesThatReachATaskPerTick)
{
    ASSERT_EQ(Add(1, 1, 1), 0u);
    ASSERT_EQ(Add(1, 1, 2), 0u);
    for (int i = 0; i < 1900; ++i) {
        Queue(1, "rec,");
    }
    for (int i = 0; i < 300; ++i) {
        Queue(5, "none"); /* no task: freed, not counted */
    }
    for (int i = 0; i < 600; ++i) {
        Queue(1, "rec,");
    }
    Tick();
    EXPECT_EQ(StatsQueueCount(), 500);
    EXPECT_EQ(ItemCounts(), (std::vector<uint32_t>{2000, 2000}));
    fw().ClearSamples();
    Tick();
    EXPECT_EQ(StatsQueueCount(), 0);
    EXPECT_EQ(ItemCounts(), (std::vector<uint32_t>{500, 500}));
    MDTLM_FEM_TASK_STAT_REC rec{};
    MDTLM_DB_KEY key{0, 2};
    ASSERT_EQ(MDTLM_FEM_GetTaskStatDbRecord(&key, &rec), 0u);
    EXPECT_EQ(rec.recv_msg_count, 2500u);
    EXPECT_EQ(rec.upload_ok_count, 2u);
}

TEST_F(Upload, RefusedSampleIsCountedAsFailedAndDropped)
{
    ASSERT_EQ(Add(4, 3, 9, MDTLM_ENCODE_TYPE_GPB), 0u);
    Queue(4, "r1");
    fw().SetUploadResult(3);
    fw().ClearLogs();
    Tick();
    EXPECT_EQ(CountLogs("[NTVVRALDCN_UploadDataToTlm] SampleDataUpload failed, ret: 3.", 2), 1u);
    MDTLM_FEM_TASK_STAT_REC rec{};
    MDTLM_DB_KEY key{0, 9};
    ASSERT_EQ(MDTLM_FEM_GetTaskStatDbRecord(&key, &rec), 0u);
    EXPECT_EQ(rec.upload_fail_count, 1u);
    EXPECT_EQ(rec.upload_ok_count, 0u);
    EXPECT_LE(std::abs(static_cast<long>(rec.last_upload_fail_time) - static_cast<long>(std::time(nullptr))), 2);
    EXPECT_EQ(rec.last_upload_ok_time, 0u);

    fw().SetUploadResult(0);
    fw().ClearSamples();
    Tick();
    EXPECT_TRUE(fw().Samples().empty()); /* the refused records are gone */

    /* No upload slot: the same failure accounting, its own line. */
    auto saved = fw().table.SampleDataUpload;
    fw().table.SampleDataUpload = nullptr;
    MDTLM_SAMPLE_BUFFER *buffer = NewBuffer(4);
    MDTLM_TASK_DATA *task = Task(4, 3, 9);
    EXPECT_EQ(MDTLM_VRALDCN_UploadDataToTlm(buffer), 1u);
    MDTLM_VRALDCN_TASK_UploadStatsDataByTask(buffer, task);
    fw().table.SampleDataUpload = saved;
    EXPECT_EQ(CountLogs("[NTVVRALDCN_UploadDataToTlm] mdtlmVtbl is NULL.", 2), 2u);
    EXPECT_EQ(task->stats.uploadFailCnt, 1u);
    EXPECT_NE(task->stats.lastUploadFailTime, 0u);
    EXPECT_EQ(MDTLM_VRALDCN_UploadDataToTlm(buffer), 0u);
    FreeBuffer(buffer);
}

TEST_F(Upload, FormatBoundaries)
{
    struct Case {
        uint32_t sensorType, codeType, srcLen;
        uint32_t result, dataLen;
        bool copyLine;
    };
    const Case cases[] = {
        {1, 0, 24576, 0, 24576, false}, /* GPB: the whole area */
        {1, 0, 24577, 1, 0, true},
        {1, 1, 24535, 0, 24575, false}, /* closing fits exactly behind the dropped comma */
        {1, 1, 24536, 1, 0, false},     /* records fit, closing does not */
        {1, 1, 24538, 1, 0, false},
        {1, 1, 24539, 1, 0, true},      /* header and records exceed the area */
        {9, 1, 10, 1, 0, false},        /* no header for the sensor */
    };
    MDTLM_SAMPLE_BUFFER *dst = NewBuffer(0);
    for (const Case &c : cases) {
        SCOPED_TRACE(c.srcLen);
        MDTLM_SAMPLE_BUFFER *src = NewBuffer(c.srcLen, ',');
        src->collectTimestamp = 1234;
        src->reportEnd = 1;
        src->itemCnt = 77;
        src->reserved3 = 0xDEADBEEF;
        std::memset(dst, 0, sizeof(*dst));
        fw().ClearLogs();
        EXPECT_EQ(MDTLM_VRALDCN_TASK_FormatStatsData(c.sensorType, c.codeType, src, dst), c.result);
        EXPECT_EQ(CountLogs("[NTVVRALDCN_TASK_FormatStatsData] Copy sampleData failed, codetype: " +
                                std::to_string(c.codeType) + ".",
                            2),
                  c.copyLine ? 1u : 0u);
        if (c.result == 0) {
            EXPECT_EQ(dst->dataLen, c.dataLen);
            EXPECT_EQ(dst->collectTimestamp, 1234u);
            EXPECT_EQ(dst->itemCnt, 77u);
            EXPECT_EQ(dst->reportEnd, 1u);
            EXPECT_EQ(dst->reserved3, 0u);
            if (c.codeType == 1) {
                EXPECT_EQ(std::string(reinterpret_cast<char *>(dst->data) + c.dataLen - 4, 4), ",]}}");
            }
        }
        FreeBuffer(src);
    }
    FreeBuffer(dst);
}

TEST_F(Upload, TaskUploadFailuresSendAndCountNothing)
{
    ASSERT_EQ(Add(1, 1, 1, MDTLM_ENCODE_TYPE_JSON), 0u);
    MDTLM_TASK_DATA *task = Task(1, 1, 1);
    struct Case {
        uint32_t dataLen;
        bool failSampleAlloc, failHeader;
        std::vector<std::string> lines;
    };
    const Case cases[] = {
        {10, true, false, {"[NTVVRALDCN_UploadDataToTlm] Alloc buff failed, codetype: 1."}},
        {10, false, true, {"[NTVVRALDCN_UploadDataToTlm] Format sampleData failed, codetype: 1."}},
        {24536, false, false, {"[NTVVRALDCN_UploadDataToTlm] Format sampleData failed, codetype: 1."}},
        {24539,
         false,
         false,
         {"[NTVVRALDCN_TASK_FormatStatsData] Copy sampleData failed, codetype: 1.",
          "[NTVVRALDCN_UploadDataToTlm] Format sampleData failed, codetype: 1."}},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.dataLen);
        MDTLM_SAMPLE_BUFFER *buffer = NewBuffer(c.dataLen);
        const int64_t live = fw().Outstanding();
        fw().ClearLogs();
        if (c.failSampleAlloc) {
            fw().FailAllocOfSize(sizeof(MDTLM_SAMPLE_BUFFER), 1);
        }
        if (c.failHeader) {
            MDTLM_HOST_FaultSet(MDTLM_HOST_OP_SPRINTF_S, 0, 1, -1);
        }
        MDTLM_VRALDCN_TASK_UploadStatsDataByTask(buffer, task);
        MDTLM_HOST_FaultClear();
        std::vector<std::string> expected;
        for (const std::string &l : c.lines) {
            expected.push_back(LogShape(l));
        }
        EXPECT_EQ(fw().Shapes(), expected);
        EXPECT_TRUE(fw().Samples().empty());
        EXPECT_EQ(task->stats.uploadOkCnt + task->stats.uploadFailCnt, 0u);
        EXPECT_EQ(fw().Outstanding(), live);
        FreeBuffer(buffer);
    }
}

TEST_F(Upload, ReportEndFollowsTheSampleInterval)
{
    MDTLM_TASK_DATA task{};
    struct Step {
        uint32_t interval, mark, now, flag, markAfter;
    };
    const Step steps[] = {
        {999, 5, 5, 1, 5},         /* under a second: every upload ends a report */
        {10000, 100, 101, 0, 100},
        {10000, 100, 109, 0, 100},
        {10000, 100, 110, 1, 110},
        {10000, 110, 110, 0, 110}, /* a second upload in the same tick */
        {10000, 100, 250, 1, 250},
        {3000, 0xFFFFFFFEu, 1, 0, 0xFFFFFFFEu}, /* across the wrap one tick less counts */
        {3000, 0xFFFFFFFEu, 2, 1, 2},
        {0, 7, 3, 1, 3},
    };
    for (const Step &s : steps) {
        SCOPED_TRACE(s.now);
        task.pathInfo.sampleInterval = s.interval;
        task.lastReportSecondCnt = s.mark;
        g_mdtlmVralTimerSecondCnt = s.now;
        EXPECT_EQ(MDTLM_VRALDCN_TASK_IsActiveReportEnd(&task), s.flag);
        EXPECT_EQ(task.lastReportSecondCnt, s.markAfter);
    }
}

TEST_F(Upload, ReportEndOnTheTicksOfATask)
{
    g_mdtlmVralTimerSecondCnt = 100;
    ASSERT_EQ(Add(3, 1, 1, MDTLM_ENCODE_TYPE_GPB, 2500), 0u); /* created at tick 100 */
    std::vector<uint32_t> flags;
    for (int i = 0; i < 5; ++i) {
        Queue(3, "r");
        fw().ClearSamples();
        Tick(); /* ticks 101 .. 105 */
        ASSERT_EQ(fw().Samples().size(), 1u);
        flags.push_back(fw().Samples()[0].header.reportEnd);
    }
    EXPECT_EQ(flags, (std::vector<uint32_t>{0, 1, 0, 1, 0}));
    EXPECT_EQ(g_mdtlmVralTimerSecondCnt, 105u);
}

TEST_F(Upload, SensorWideUploadGoesToEveryTaskOfTheCodeType)
{
    ASSERT_EQ(Add(3, 1, 1, MDTLM_ENCODE_TYPE_GPB), 0u);
    ASSERT_EQ(Add(3, 1, 2, MDTLM_ENCODE_TYPE_JSON), 0u);
    ASSERT_EQ(Add(3, 2, 3, MDTLM_ENCODE_TYPE_GPB), 0u);
    MDTLM_SAMPLE_BUFFER *src = NewBuffer(3, 'q');
    src->itemCnt = 1;
    MDTLM_VRALDCN_TASK_UploadStatsData(3, src, MDTLM_ENCODE_TYPE_GPB);
    std::vector<std::pair<uint32_t, uint32_t>> ids;
    for (const CapturedSample &s : fw().Samples()) {
        ids.emplace_back(s.header.instanceId, s.header.taskId);
        EXPECT_EQ(s.data, "qqq");
    }
    EXPECT_EQ(ids, (std::vector<std::pair<uint32_t, uint32_t>>{{2, 3}, {1, 1}}));
    EXPECT_EQ(Task(3, 2, 3)->stats.uploadOkCnt, 1u);
    EXPECT_EQ(Task(3, 1, 2)->stats.uploadOkCnt, 0u);

    fw().ClearSamples();
    src->data[2] = ',';
    MDTLM_VRALDCN_TASK_UploadStatsData(3, src, MDTLM_ENCODE_TYPE_JSON);
    ASSERT_EQ(fw().Samples().size(), 1u);
    EXPECT_EQ(fw().Samples()[0].header.taskId, 2u);
    EXPECT_EQ(fw().Samples()[0].data, "{\"flow_statistics\":{\"flow_statistic\":[qq]}}");

    fw().ClearSamples();
    fw().ClearLogs();
    fw().FailAllocOfSize(sizeof(MDTLM_SAMPLE_BUFFER), 1);
    MDTLM_VRALDCN_TASK_UploadStatsData(3, src, MDTLM_ENCODE_TYPE_GPB);
    src->dataLen = 24577;
    MDTLM_VRALDCN_TASK_UploadStatsData(3, src, MDTLM_ENCODE_TYPE_GPB);
    src->dataLen = 0;
    MDTLM_VRALDCN_TASK_UploadStatsData(3, src, MDTLM_ENCODE_TYPE_GPB);
    MDTLM_VRALDCN_TASK_UploadStatsData(3, nullptr, MDTLM_ENCODE_TYPE_GPB);
    EXPECT_EQ(fw().Shapes(), (std::vector<std::string>{
                                 LogShape("[UploadStatsData] Alloc buff failed, codetype: 0."),
                                 LogShape("[NTVVRALDCN_TASK_FormatStatsData] Copy sampleData failed, codetype: 0."),
                                 LogShape("[UploadStatsData] Format sampleData failed, codetype: 0."),
                             }));
    EXPECT_TRUE(fw().Samples().empty());
    FreeBuffer(src);
}

TEST_F(Upload, OneMessageOfferedToEveryTaskOfItsSensor)
{
    ASSERT_EQ(Add(6, 1, 1, MDTLM_ENCODE_TYPE_GPB), 0u);
    ASSERT_EQ(Add(6, 1, 2, MDTLM_ENCODE_TYPE_JSON), 0u);
    alignas(8) uint8_t storage[16] = {};
    auto *msg = reinterpret_cast<MDTLM_STATS_MSG *>(storage);
    msg->msgType = 6;
    msg->msgLen = 3;
    std::memcpy(msg->body, "ok,", 3);
    EXPECT_EQ(MDTLM_VRALDCN_STATS_UploadStatsDataByStatsMsg(msg), 2u);
    std::memcpy(msg->body, "!no", 3);
    EXPECT_EQ(MDTLM_VRALDCN_STATS_UploadStatsDataByStatsMsg(msg), 0u);
    for (uint32_t id : {1u, 2u}) {
        EXPECT_EQ(Task(6, 1, id)->stats.recvMsgCnt, 2u);
        EXPECT_EQ(Task(6, 1, id)->stats.matchItemCnt, 1u);
    }
    msg->msgType = 9;
    EXPECT_EQ(MDTLM_VRALDCN_STATS_UploadStatsDataByStatsMsg(msg), 0u);
    msg->msgType = 5;
    EXPECT_EQ(MDTLM_VRALDCN_STATS_UploadStatsDataByStatsMsg(msg), 0u);

    MDTLM_VRALDCN_STATS_UploadRestByTask(6);
    ASSERT_EQ(fw().Samples().size(), 2u);
    EXPECT_EQ(fw().Samples()[0].data, "{\"export-flow-caches\":{\"export-flow-cache\":[ok]}}");
    EXPECT_EQ(fw().Samples()[1].data, "ok,");
    EXPECT_EQ(Task(6, 1, 1)->gpbBuffer->dataLen, 0u);
    MDTLM_VRALDCN_STATS_UploadRest();
    EXPECT_EQ(fw().Samples().size(), 2u);
}

} // namespace
