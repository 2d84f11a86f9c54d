/*
 * Sample buffers: per-tick re-initialisation of sensor and task buffers, time
 * stamps, and the allocation failure paths.
 */
#include <sys/time.h>

#include <cstring>
#include <ctime>

#include "mdtlm_host.h"
#include "mdtlm_vraldcn.h"
#include "task_world.h"

namespace {

uint64_t NowMs()
{
    struct timeval tv {};
    gettimeofday(&tv, nullptr);
    return static_cast<uint64_t>(tv.tv_sec) * 1000 + static_cast<uint64_t>(tv.tv_usec) / 1000;
}

bool IsZeroedAfterHeaderStamp(const MDTLM_SAMPLE_BUFFER *b)
{
    MDTLM_SAMPLE_BUFFER zero{};
    zero.collectTimestamp = b->collectTimestamp;
    return std::memcmp(&zero, b, sizeof(zero)) == 0;
}

class SampleBuffers : public TaskWorld {};

TEST_F(SampleBuffers, EveryTickGivesEverySensorTwoZeroedStampedBuffers)
{
    ASSERT_EQ(Add(2, 1, 1, 1), 0u); /* the first add starts the ticks */
    ASSERT_EQ(Add(4, 1, 1, 0), 0u);
    ASSERT_EQ(Add(4, 1, 2, 1), 0u);
    const uint64_t before = NowMs();
    Tick();
    const uint64_t after = NowMs();
    const uint32_t codeTypes[] = {0, 1, 0, 2, 0, 0};
    for (uint32_t s = 1; s <= 6; ++s) {
        SCOPED_TRACE(s);
        MDTLM_STATS_MAP_ENTRY *row = MDTLM_VRALDCN_STATS_GetStatsMap(s);
        ASSERT_EQ(row, &g_femMdtlmStatsMap[s - 1]);
        EXPECT_EQ(row->encodeType, codeTypes[s - 1]);
        for (MDTLM_SAMPLE_BUFFER *b : {row->sampleData->gpbBuffer, row->sampleData->jsonBuffer}) {
            ASSERT_NE(b, nullptr);
            EXPECT_GE(b->collectTimestamp, before);
            EXPECT_LE(b->collectTimestamp, after);
            EXPECT_TRUE(IsZeroedAfterHeaderStamp(b));
        }
        EXPECT_EQ(row->sampleData->gpbBuffer->collectTimestamp, row->sampleData->jsonBuffer->collectTimestamp);
    }
    EXPECT_EQ(MDTLM_VRALDCN_STATS_GetStatsMap(0), nullptr);
    EXPECT_EQ(MDTLM_VRALDCN_STATS_GetStatsMap(7), nullptr);
    EXPECT_EQ(MDTLM_VRALDCN_STATS_GetStatsMap(6)->sampleData, &g_mdtlmZelkSampleData);

    /* Task buffers keep their addresses and are restamped each tick. */
    MDTLM_TASK_DATA *task = Task(4, 1, 2);
    MDTLM_SAMPLE_BUFFER *gpb = task->gpbBuffer;
    MDTLM_SAMPLE_BUFFER *json = task->jsonBuffer;
    EXPECT_GE(gpb->collectTimestamp, before);
    EXPECT_EQ(gpb->collectTimestamp, json->collectTimestamp);
    std::memset(gpb->reserved1, 0x5A, sizeof(gpb->reserved1));
    const uint64_t allocations = fw().Allocations();
    Tick();
    EXPECT_EQ(task->gpbBuffer, gpb);
    EXPECT_EQ(task->jsonBuffer, json);
    EXPECT_TRUE(IsZeroedAfterHeaderStamp(gpb));
    EXPECT_EQ(fw().Allocations(), allocations + 1); /* only the tick event itself */
}

TEST_F(SampleBuffers, SensorBufferFailureStopsThatRowOnly)
{
    ASSERT_EQ(Add(1, 1, 1), 0u);
    fw().ClearLogs();
    fw().FailAllocOfSize(sizeof(MDTLM_SAMPLE_BUFFER), 3); /* row 2, GPB */
    Tick();
    EXPECT_EQ(fw().Shapes(), std::vector<std::string>{
                                 LogShape("[GetAndInitSampleDataBuff] Alloc buff failed, msgId: 2, codeType: 0")});
    EXPECT_EQ(g_mdtlmVralDcnFlowHopSampleData.gpbBuffer, nullptr);
    EXPECT_EQ(g_mdtlmVralDcnFlowHopSampleData.jsonBuffer, nullptr); /* not attempted */
    EXPECT_NE(g_mdtlmSrvtlmSampleData.gpbBuffer, nullptr);

    fw().ClearLogs();
    fw().FailAllocOfSize(sizeof(MDTLM_SAMPLE_BUFFER), 2); /* row 2 again, now the JSON one */
    Tick();
    EXPECT_EQ(fw().Shapes(), std::vector<std::string>{
                                 LogShape("[GetAndInitSampleDataBuff] Alloc buff failed, msgId: 2, codeType: 1")});
    ASSERT_NE(g_mdtlmVralDcnFlowHopSampleData.gpbBuffer, nullptr);
    EXPECT_NE(g_mdtlmVralDcnFlowHopSampleData.gpbBuffer->collectTimestamp, 0u);
    EXPECT_EQ(g_mdtlmVralDcnFlowHopSampleData.jsonBuffer, nullptr);
}

TEST_F(SampleBuffers, TaskBufferFailureDropsBothAndEndsTheWalk)
{
    ASSERT_EQ(Add(3, 1, 1), 0u); /* A */
    ASSERT_EQ(Add(3, 1, 2), 0u); /* B, visited first */
    Tick();
    MDTLM_TASK_DATA *a = Task(3, 1, 1);
    MDTLM_TASK_DATA *b = Task(3, 1, 2);
    MDTLM_VRALDCN_BufFree(reinterpret_cast<void **>(&b->jsonBuffer));
    std::memset(a->gpbBuffer->reserved1, 0x5A, sizeof(a->gpbBuffer->reserved1));
    const uint64_t aStamp = a->gpbBuffer->collectTimestamp;
    fw().ClearLogs();

    fw().FailAllocOfSize(sizeof(MDTLM_SAMPLE_BUFFER), 1);
    MDTLM_STATS_InitTaskStats(3);
    EXPECT_EQ(fw().Shapes(), (std::vector<std::string>{
                                 LogShape("[InitTaskSampleBuffer] Alloc buff failed, msgId: 3, codeType: 1"),
                                 LogShape("[InitTaskStats] Alloc buff failed"),
                             }));
    EXPECT_EQ(b->gpbBuffer, nullptr);
    EXPECT_EQ(b->jsonBuffer, nullptr);
    EXPECT_EQ(a->gpbBuffer->reserved1[0], 0x5A); /* A was not reached */
    EXPECT_EQ(a->gpbBuffer->collectTimestamp, aStamp);

    /* A task without buffers takes no records and uploads nothing; A, not
     * reached by the walk, still collects into its (empty) buffer. */
    Queue(3, "rec");
    fw().ClearLogs();
    fw().FailAllocOfSize(sizeof(MDTLM_SAMPLE_BUFFER), 1);
    Tick();
    EXPECT_EQ(CountLogs("[InitTaskSampleBuffer] Alloc buff failed, msgId: 3, codeType: 0", 2), 1u);
    ASSERT_EQ(fw().Samples().size(), 1u);
    EXPECT_EQ(fw().Samples()[0].header.taskId, 1u);
    EXPECT_EQ(fw().Samples()[0].data, "rec");
    EXPECT_EQ(a->gpbBuffer->reserved1[0], 0x5A);

    Tick(); /* the next tick allocates again and reaches A */
    EXPECT_NE(b->gpbBuffer, nullptr);
    EXPECT_NE(b->jsonBuffer, nullptr);
    EXPECT_EQ(a->gpbBuffer->reserved1[0], 0);
}

TEST_F(SampleBuffers, ClockReadings)
{
    const uint64_t before = NowMs();
    const uint64_t stamp = MDTLM_VRALDCN_STATS_GetTimestamps();
    EXPECT_GE(stamp, before);
    EXPECT_LE(stamp, NowMs());

    const uint32_t sec = MDTLM_VRALDCN_STATS_GetTimestampSec();
    EXPECT_LE(static_cast<int64_t>(sec) - static_cast<int64_t>(std::time(nullptr)), 1);
    EXPECT_GE(static_cast<int64_t>(sec) - static_cast<int64_t>(std::time(nullptr)), -1);
    MDTLM_HOST_FaultSet(MDTLM_HOST_OP_SYSTIME_GET, 0, 1, 1);
    EXPECT_EQ(MDTLM_VRALDCN_STATS_GetTimestampSec(), 0u);

    MDTLM_SAMPLE_BUFFER *one = static_cast<MDTLM_SAMPLE_BUFFER *>(MDTLM_VRALDCN_BufAlloc(sizeof(MDTLM_SAMPLE_BUFFER)));
    one->collectTimestamp = 0;
    MDTLM_VRALDCN_STATS_SetCollectTimestamp(nullptr, one);
    EXPECT_GE(one->collectTimestamp, before);
    MDTLM_VRALDCN_BufFree(reinterpret_cast<void **>(&one));
}

} // namespace
