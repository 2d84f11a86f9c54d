#include <gtest/gtest.h>

#include <atomic>

#include "platform_test_util.h"

namespace {

std::atomic<uint32_t> g_ticks{0};

uint32_t CountTick(void)
{
    g_ticks++;
    return 0;
}

TEST(PlatformTimer, ManualClockDeliversExactlyTheFiredTicks)
{
    MDTLM_HOST_SetManualClock(1);
    ScopedEpoll ep;
    int32_t fast = FWM_TIMER_Create(1, CountTick, nullptr, ep.Id());
    int32_t slow = FWM_TIMER_Create(1000, CountTick, nullptr, ep.Id());
    ASSERT_TRUE(fast >= 1 && slow > fast); /* 0 is never handed out */
    EXPECT_EQ(MDTLM_HOST_EpollPump(ep.Id(), 30, 1), 0u); /* a 1 ms timer, yet no expiry */
    EXPECT_EQ(MDTLM_HOST_TimerFire(fast, 3), 0u);
    EXPECT_EQ(MDTLM_HOST_TimerFire(slow, 2), 0u);
    EXPECT_EQ(MDTLM_HOST_EpollPump(ep.Id(), 100, 1), 5u);
    EXPECT_EQ(g_ticks.load(), 5u);

    /* Ticks fired but not yet delivered die with their timer. */
    EXPECT_EQ(MDTLM_HOST_TimerFire(slow, 4), 0u);
    EXPECT_EQ(FWM_TIMER_Destroy(slow), 0u);
    EXPECT_EQ(MDTLM_HOST_EpollPump(ep.Id(), 20, 1), 0u);
    EXPECT_NE(FWM_TIMER_Destroy(slow), 0u);
}

uint32_t g_loopEpoll;
std::atomic<int> g_runResult{-1};
std::atomic<bool> g_inCallback{false}, g_callbackDone{false};

uint32_t RunLoop(void)
{
    g_runResult = static_cast<int>(FWM_EPOLL_Run(g_loopEpoll, 5, -1));
    return 0;
}

uint32_t SlowTick(void)
{
    g_inCallback = true;
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    g_callbackDone = true;
    return 0;
}

TEST(PlatformEpoll, DestroyFromAnotherThreadWaitsForTheRunningCallbackAndEndsTheLoop)
{
    MDTLM_HOST_SetManualClock(1);
    int32_t id = FWM_EPOLL_Create();
    ASSERT_GE(id, 0);
    g_loopEpoll = static_cast<uint32_t>(id);
    int32_t timer = FWM_TIMER_Create(1000, SlowTick, nullptr, g_loopEpoll);
    uint32_t taskId = 0;
    ASSERT_EQ(PAL_TaskCreate("MDTLM_VRALDCN_STATS", &taskId, RunLoop, 1, 0, 0, nullptr), 0u);

    ASSERT_EQ(MDTLM_HOST_TimerFire(timer, 1), 0u);
    ASSERT_TRUE(WaitUntil([] { return g_inCallback.load(); }));
    EXPECT_EQ(FWM_EPOLL_Destroy(g_loopEpoll), 0u);
    EXPECT_TRUE(g_callbackDone.load()); /* Destroy returned only after the callback */
    EXPECT_EQ(MDTLM_HOST_JoinTasks(), 1u);
    EXPECT_EQ(g_runResult.load(), 0);
    EXPECT_NE(FWM_EPOLL_Destroy(g_loopEpoll), 0u);
    EXPECT_EQ(FWM_TIMER_Destroy(timer), 0u); /* its membership went with the instance */
}

} /* namespace */
