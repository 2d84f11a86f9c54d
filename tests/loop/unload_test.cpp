/* Full unload: the worker thread ends, queues, timer and server go, queued work is released. */
#include "../frame/frame_fixture.h"

namespace {

using LoopTest = PluginTest;

/* Queue, channel, epoll and timer destructions since the last reset. */
std::vector<uint64_t> Destroys()
{
    return {MDTLM_HOST_CallCount(MDTLM_HOST_OP_QUE_DESTROY), MDTLM_HOST_CallCount(MDTLM_HOST_OP_CHAN_DESTROY),
            MDTLM_HOST_CallCount(MDTLM_HOST_OP_EPOLL_DESTROY), MDTLM_HOST_CallCount(MDTLM_HOST_OP_TIMER_DESTROY)};
}

void ExpectNothingLeft()
{
    EXPECT_EQ(g_mdtlmVralDcnEpollId, UINT32_MAX);
    EXPECT_EQ(g_mdtlmVralDcnTimerId, -1);
    EXPECT_EQ(g_mdtlmVralDcnTaskEventHdl, nullptr);
    EXPECT_EQ(g_mdtlmNtvVralDcnStatsQueHdl, nullptr);
    EXPECT_EQ(g_mdtlmNtvVralDcnChanHandle, nullptr);
}

} // namespace

TEST_F(LoopTest, UnloadEndsTheWorkerThread)
{
    MDTLM_HOST_SetManualTasks(0);
    ASSERT_EQ(MDTLM_VRALDCN_Init(7), 0u);
    MDTLM_VRALDCN_Unload();
    EXPECT_EQ(MDTLM_HOST_JoinTasks(), 1u);
    EXPECT_EQ(MDTLM_HOST_RunningTasks(), 0u);
    EXPECT_EQ(Fw().Outstanding(), 0);
    EXPECT_TRUE(Fw().HasShape(L("[VRALDCN_THREAD_StatsMain] Start run mdtlm vral stats thread."), 1));
    ExpectNothingLeft();
}

TEST_F(LoopTest, UnloadReleasesQueuedWorkTimerAndIsIdempotent)
{
    Start();
    ASSERT_EQ(MDTLM_VRALDCN_STATS_CreateTimer(), 0u);
    for (uint32_t i = 0; i < 3; ++i) {
        ASSERT_EQ(MDTLM_VRALDCN_EVENT_Push(NewEvent(1, 3544, i)), 0u);
    }
    uint8_t body[56] = {1};
    MDTLM_VRALDCN_STATS_IPC_PushMsgToStatsQue(6, body, sizeof(body));
    MDTLM_VRALDCN_STATS_IPC_PushMsgToStatsQue(6, body, sizeof(body));
    ASSERT_EQ(Fw().Outstanding(), 5);

    MDTLM_HOST_CallCountReset();
    MDTLM_VRALDCN_Unload();
    EXPECT_EQ(Fw().Outstanding(), 0);
    EXPECT_EQ(Destroys(), (std::vector<uint64_t>{2, 1, 1, 1}));
    ExpectNothingLeft();

    MDTLM_HOST_CallCountReset();
    MDTLM_VRALDCN_Unload();
    EXPECT_EQ(Destroys(), (std::vector<uint64_t>{0, 0, 0, 0}));
}

