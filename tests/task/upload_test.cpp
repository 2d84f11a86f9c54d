/* The period tick: JSON framing, the drain limit, report-end flags, upload accounting. */
#include <cstring>
#include <ctime>

#include "task_world.h"

static std::vector<uint32_t> ItemCounts()
{
    std::vector<uint32_t> out;
    for (const CapturedSample &s : FakeFramework::Get().Samples()) {
        out.push_back(s.header.itemCnt);
    }
    return out;
}

TEST_F(TaskWorld, JsonSampleIsOneDocumentPerSensor)
{
    for (uint32_t s = 1; s <= 6; ++s) {
        ASSERT_EQ(Add(s, 70, 80 + s, 1), 0u);
        Queue(s, "{\"a\":1},");
        Queue(s, "{\"b\":22},");
    }
    Tick();
    const auto samples = fw().Samples();
    ASSERT_EQ(samples.size(), 6u);
    for (uint32_t s = 1; s <= 6; ++s) {
        const CapturedSample &sample = samples[s - 1];
        const std::string header = MDTLM_VRALDCN_TASK_GetJsonHeader(s);
        EXPECT_EQ(sample.data, header + "{\"a\":1},{\"b\":22}]}}");
        EXPECT_EQ(sample.header.dataLen, header.size() + 17 + 2);
        EXPECT_EQ(sample.header.itemCnt, 2u);
        EXPECT_EQ(sample.header.instanceId, 70u);
        EXPECT_EQ(sample.header.taskId, 80 + s);
        EXPECT_EQ(sample.header.reserved3, 0u); /* never stale memory */
        EXPECT_EQ(sample.header.collectTimestamp, Task(s, 70, 80 + s)->jsonBuffer->collectTimestamp);
        EXPECT_EQ(Task(s, 70, 80 + s)->jsonBuffer->dataLen, 0u);
    }
    fw().ClearSamples();
    Tick();
    EXPECT_TRUE(fw().Samples().empty()); /* nothing queued, nothing sent */
}

TEST_F(TaskWorld, FullBufferIsSentAtOnceAndTheDrainStopsAt2000)
{
    ASSERT_EQ(Add(2, 1, 1), 0u);
    for (char c : std::string("ABCD")) {
        Queue(2, std::string(8000, c));
    }
    Tick();
    EXPECT_EQ(ItemCounts(), (std::vector<uint32_t>{3, 1}));
    EXPECT_EQ(fw().Samples().at(0).data, std::string(8000, 'A') + std::string(8000, 'B') + std::string(8000, 'C'));
    EXPECT_EQ(fw().Samples().at(0).header.dataLen, 24000u); /* GPB: the buffer byte for byte */
    EXPECT_EQ(fw().Samples().at(1).data, std::string(8000, 'D'));

    ASSERT_EQ(Add(2, 1, 2), 0u);
    Queue(2, "rec,", 1900);
    Queue(5, "none", 300); /* no task: freed without counting */
    Queue(2, "rec,", 600);
    fw().ClearSamples();
    Tick();
    EXPECT_EQ(MDTLM_HOST_QueueCount(g_mdtlmNtvVralDcnStatsQueHdl), 500);
    EXPECT_EQ(ItemCounts(), (std::vector<uint32_t>{2000, 2000}));
    fw().ClearSamples();
    Tick();
    EXPECT_EQ(ItemCounts(), (std::vector<uint32_t>{500, 500}));
    EXPECT_EQ(Sql("SELECT recv_msg_count FROM fem_mdtlm_stat WHERE task_id = 2"), 2500);
    EXPECT_EQ(Sql("SELECT upload_ok_count FROM fem_mdtlm_stat WHERE task_id = 1"), 4);
}

TEST_F(TaskWorld, RefusedOrImpossibleUploads)
{
    ASSERT_EQ(Add(1, 3, 9, 0), 0u);
    Queue(1, "r1");
    fw().ClearLogs();
    fw().SetUploadResult(3);
    Tick();
    EXPECT_EQ(Logs(), Lines{"2 [NTVVRALDCN_UploadDataToTlm] SampleDataUpload failed, ret: 3."});
    EXPECT_EQ(Sql("SELECT upload_fail_count FROM fem_mdtlm_stat WHERE task_id = 9"), 1);
    EXPECT_NEAR(Sql("SELECT last_upload_fail_time FROM fem_mdtlm_stat WHERE task_id = 9"), std::time(nullptr), 2);
    EXPECT_EQ(Sql("SELECT last_upload_ok_time FROM fem_mdtlm_stat WHERE task_id = 9"), 0);
    fw().SetUploadResult(0);
    fw().ClearSamples();
    Tick();
    EXPECT_TRUE(fw().Samples().empty()); /* the refused records are gone */

    MDTLM_TASK_DATA *task = Task(1, 3, 9); /* 38-byte JSON header */
    task->pathInfo.encodeType = 1;
    struct Case {
        uint32_t dataLen;
        bool noSample, noHeader, noSlot;
        Lines lines;
        uint64_t failed;
    };
    const std::string fmt = "2 [NTVVRALDCN_UploadDataToTlm] Format sampleData failed, codetype: 1.";
    const Case cases[] = {
        {10, true, false, false, {"2 [NTVVRALDCN_UploadDataToTlm] Alloc buff failed, codetype: 1."}, 0},
        {10, false, true, false, {fmt}, 0},
        {24536, false, false, false, {fmt}, 0}, /* records fit, the closing does not */
        {24539, false, false, false, {"2 [NTVVRALDCN_TASK_FormatStatsData] Copy sampleData failed, codetype: 1.", fmt}, 0},
        {10, false, false, true, {"2 [NTVVRALDCN_UploadDataToTlm] mdtlmVtbl is NULL."}, 1},
        {24535, false, false, false, {}, 0}, /* the closing ends exactly at the end of the area */
        {0, false, false, false, {}, 0},
    };
    auto saved = fw().table.SampleDataUpload;
    for (const Case &c : cases) {
        auto *buffer = static_cast<MDTLM_SAMPLE_BUFFER *>(MDTLM_VRALDCN_BufAlloc(sizeof(MDTLM_SAMPLE_BUFFER)));
        std::memset(buffer, 0, sizeof(*buffer));
        std::memset(buffer->data, ',', sizeof(buffer->data));
        buffer->dataLen = c.dataLen;
        const int64_t live = fw().Outstanding();
        fw().ClearLogs();
        task->stats = MDTLM_TASK_STATS{};
        fw().FailAllocOfSize(sizeof(MDTLM_SAMPLE_BUFFER), c.noSample ? 1 : 0);
        MDTLM_HOST_FaultSet(MDTLM_HOST_OP_SPRINTF_S, 0, c.noHeader ? 1 : 0, -1);
        fw().table.SampleDataUpload = c.noSlot ? nullptr : saved;
        MDTLM_VRALDCN_TASK_UploadStatsDataByTask(buffer, task);
        fw().table.SampleDataUpload = saved;
        EXPECT_EQ(Logs(), c.lines) << c.dataLen;
        EXPECT_EQ(task->stats.uploadFailCnt, c.failed);
        EXPECT_EQ(task->stats.uploadOkCnt, c.dataLen == 24535 ? 1u : 0u);
        EXPECT_EQ(fw().Outstanding(), live);
        MDTLM_VRALDCN_BufFree(reinterpret_cast<void **>(&buffer));
    }
    ASSERT_EQ(fw().Samples().size(), 1u);
    EXPECT_EQ(fw().Samples()[0].header.dataLen, 24575u);
    EXPECT_EQ(fw().Samples()[0].data.substr(24571), ",]}}");
}

TEST_F(TaskWorld, ReportEndFollowsTheSampleInterval)
{
    MDTLM_TASK_DATA task{};
    struct Step {
        uint32_t interval, mark, now, flag, markAfter;
    };
    const Step steps[] = {
        {999, 5, 5, 1, 5}, {10000, 100, 101, 0, 100}, {10000, 100, 109, 0, 100}, {10000, 100, 110, 1, 110},
        {10000, 110, 110, 0, 110}, {3000, 0xFFFFFFFEu, 1, 0, 0xFFFFFFFEu}, {3000, 0xFFFFFFFEu, 2, 1, 2},
    };
    for (const Step &s : steps) {
        task.pathInfo.sampleInterval = s.interval;
        task.lastReportSecondCnt = s.mark;
        g_mdtlmVralTimerSecondCnt = s.now;
        EXPECT_EQ(MDTLM_VRALDCN_TASK_IsActiveReportEnd(&task), s.flag) << s.now;
        EXPECT_EQ(task.lastReportSecondCnt, s.markAfter);
    }

    g_mdtlmVralTimerSecondCnt = 100;
    ASSERT_EQ(Add(3, 1, 1, 0, 2500), 0u); /* created at tick 100 */
    std::vector<uint32_t> flags;
    for (int i = 0; i < 5; ++i) {
        Queue(3, "r");
        fw().ClearSamples();
        Tick();
        flags.push_back(fw().Samples().at(0).header.reportEnd);
    }
    EXPECT_EQ(flags, (std::vector<uint32_t>{0, 1, 0, 1, 0}));
}
