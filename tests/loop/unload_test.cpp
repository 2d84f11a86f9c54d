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

void ExpectNothingLeft() { EXPECT_TRUE(manual_host::HandlesCleared()); }

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
    MDTLM_LOSS_COUNTERS losses{};
    ASSERT_EQ(MDTLM_VRALDCN_STATS_GetLossCounters(&losses), 0u);
    EXPECT_EQ(losses.eventsDiscardedAtStopCnt, 3u);
    EXPECT_EQ(losses.discardedAtStopCnt, 2u);
    EXPECT_EQ(losses.eventsLeftAtStopCnt + losses.leftAtStopCnt, 0u);

    MDTLM_HOST_CallCountReset();
    MDTLM_VRALDCN_Unload();
    EXPECT_EQ(Destroys(), (std::vector<uint64_t>{0, 0, 0, 0}));
}


/* Reads of the queues failing at unload: a few failures are tried through;
 * a platform that never gives the elements back leaves them allocated, and the
 * unload says how many, in its log and its counters. */
TEST_F(LoopTest, UnloadWhenQueueReadsFail)
{
    const struct {
        const char *name;
        uint32_t failingReads;
        uint64_t eventsLeft, msgsLeft;
        std::vector<std::string> lines;
    } cases[] = {
        {"one failing read is tried again", 1, 0, 0, {}},
        {"three failing reads in a row", 3, 0, 0, {}},
        {"every read fails", 1000, 3, 2,
         {"[VRALDCN_Unload] Queue MdtlmNtvVralDcnStatsQue would not give back 2 buffers, left allocated.",
          "[VRALDCN_Unload] Queue MDTLM_VRALDCN_EVENT would not give back 3 buffers, left allocated."}},
    };
    uint64_t eventsLeft = 0, msgsLeft = 0;
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        Start();
        std::vector<void *> buffers;
        for (uint32_t i = 0; i < 3; ++i) {
            MDTLM_EVENT_MSG *event = NewEvent(1, 3544, i);
            buffers.push_back(event);
            ASSERT_EQ(MDTLM_VRALDCN_EVENT_Push(event), 0u);
        }
        for (uint32_t i = 0; i < 2; ++i) {
            auto *msg = static_cast<MDTLM_STATS_MSG *>(MDTLM_VRALDCN_BufAlloc(8 + 56));
            msg->msgType = 6;
            msg->msgLen = 56;
            buffers.push_back(msg);
            ASSERT_EQ(MDTLM_VRALDCN_STATS_QUE_Push(msg), 0u);
        }
        MDTLM_HOST_FaultSet(MDTLM_HOST_OP_QUE_READ, 0, c.failingReads, -1);
        Fw().ClearLogs();
        MDTLM_VRALDCN_Unload();
        MDTLM_HOST_FaultClear();
        ExpectNothingLeft();
        EXPECT_EQ(Fw().Shapes(), Lines(c.lines));
        EXPECT_EQ(Fw().Outstanding(), static_cast<int64_t>(c.eventsLeft + c.msgsLeft));
        eventsLeft += c.eventsLeft;
        msgsLeft += c.msgsLeft;
        MDTLM_LOSS_COUNTERS losses{};
        ASSERT_EQ(MDTLM_VRALDCN_STATS_GetLossCounters(&losses), 0u);
        EXPECT_EQ(losses.eventsLeftAtStopCnt, eventsLeft);
        EXPECT_EQ(losses.leftAtStopCnt, msgsLeft);
        if (Fw().Outstanding() != 0) {
            /* The test still knows the buffers the platform kept. */
            for (void *buffer : buffers) {
                MDTLM_VRALDCN_BufFree(&buffer);
            }
        }
        EXPECT_EQ(Fw().Outstanding(), 0);
    }
}

/* Releases the platform refuses: two refusals are tried through; three are
 * logged and counted, and a refused epoll destroy stops the unload before it
 * releases what the loop might still use. */
TEST_F(LoopTest, UnloadWhenReleasesAreRefused)
{
    const struct {
        const char *name;
        MDTLM_HOST_OP op;
        uint32_t refusals;
        std::vector<std::string> lines;
        int64_t buffersAfterUnload;
    } cases[] = {
        {"queue refuses twice", MDTLM_HOST_OP_QUE_DESTROY, 2, {}, 0},
        {"queue refuses", MDTLM_HOST_OP_QUE_DESTROY, 3,
         {"[VRALDCN_PlatformRelease] Release queue failed 3 times, ret: 4294967295."}, 0},
        {"timer refuses", MDTLM_HOST_OP_TIMER_DESTROY, 3,
         {"[VRALDCN_PlatformRelease] Release timer failed 3 times, ret: 4294967295."}, 0},
        {"server refuses", MDTLM_HOST_OP_CHAN_DESTROY, 3,
         {"[VRALDCN_PlatformRelease] Release channel server failed 3 times, ret: 4294967295."}, 0},
        {"epoll instance refuses", MDTLM_HOST_OP_EPOLL_DESTROY, 3,
         {"[VRALDCN_PlatformRelease] Release epoll instance failed 3 times, ret: 4294967295.",
          "[VRALDCN_Unload] Epoll instance not destroyed, nothing released."},
         1},
    };
    uint64_t refused = 0;
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        Start();
        ASSERT_EQ(MDTLM_VRALDCN_STATS_CreateTimer(), 0u);
        ASSERT_EQ(MDTLM_VRALDCN_EVENT_Push(NewEvent(1, 3544, 0)), 0u);
        MDTLM_HOST_FaultSet(c.op, 0, c.refusals, -1);
        Fw().ClearLogs();
        MDTLM_VRALDCN_Unload();
        MDTLM_HOST_FaultClear();
        EXPECT_EQ(Fw().Shapes(), Lines(c.lines));
        EXPECT_EQ(Fw().Outstanding(), c.buffersAfterUnload);
        refused += c.lines.empty() ? 0 : 1;
        MDTLM_LOSS_COUNTERS losses{};
        ASSERT_EQ(MDTLM_VRALDCN_STATS_GetLossCounters(&losses), 0u);
        EXPECT_EQ(losses.releaseFailCnt, refused);
        MDTLM_VRALDCN_Unload(); /* what the first unload kept is released now */
        EXPECT_EQ(Fw().Outstanding(), 0);
        ExpectNothingLeft();
    }
}

/* Without a timer the stored id is handed over once, as it is, and a refusal
 * of that is nothing to retry or report. */
TEST_F(LoopTest, DestroyTimerWithoutTimerCallsOnce)
{
    Start();
    MDTLM_HOST_CallCountReset();
    MDTLM_VRALDCN_STATS_DestroyTimer();
    EXPECT_EQ(MDTLM_HOST_CallCount(MDTLM_HOST_OP_TIMER_DESTROY), 1u);
    EXPECT_EQ(Fw().Shapes(), Lines({}));
    MDTLM_LOSS_COUNTERS losses{};
    ASSERT_EQ(MDTLM_VRALDCN_STATS_GetLossCounters(&losses), 0u);
    EXPECT_EQ(losses.releaseFailCnt, 0u);
}
