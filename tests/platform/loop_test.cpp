#include <gtest/gtest.h>
#include <pthread.h>

#include <atomic>
#include <cstring>

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
    ASSERT_GE(fast, 1); /* 0 is never handed out */
    EXPECT_GT(slow, fast);
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
    EXPECT_NE(MDTLM_HOST_TimerFire(slow, 1), 0u);
    EXPECT_LT(FWM_TIMER_Create(1000, CountTick, nullptr, 63), 0); /* no such instance */
}

TEST(PlatformTimer, RealClockTicksPeriodically)
{
    ScopedEpoll ep;
    int32_t id = FWM_TIMER_Create(5, CountTick, nullptr, ep.Id());
    ASSERT_GE(id, 1);
    uint32_t delivered = 0;
    for (int i = 0; i < 100 && delivered < 3; i++)
        delivered += MDTLM_HOST_EpollPump(ep.Id(), 50, 0);
    EXPECT_GE(delivered, 3u);
    EXPECT_EQ(delivered, g_ticks.load());
    FWM_TIMER_Destroy(id);
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
    uint8_t param[32] = {};
    ASSERT_EQ(PAL_TaskCreate("MDTLM_VRALDCN_STATS", &taskId, RunLoop, 1, 0, 0, param), 0u);
    EXPECT_EQ(MDTLM_HOST_RunningTasks(), 1u);

    ASSERT_EQ(MDTLM_HOST_TimerFire(timer, 1), 0u);
    ASSERT_TRUE(WaitUntil([] { return g_inCallback.load(); }));
    EXPECT_EQ(FWM_EPOLL_Destroy(g_loopEpoll), 0u);
    EXPECT_TRUE(g_callbackDone.load()); /* Destroy returned only after the callback */
    EXPECT_EQ(MDTLM_HOST_JoinTasks(), 1u);
    EXPECT_EQ(g_runResult.load(), 0);
    EXPECT_EQ(MDTLM_HOST_RunningTasks(), 0u);
    EXPECT_NE(FWM_EPOLL_Destroy(g_loopEpoll), 0u);
    EXPECT_NE(FWM_EPOLL_Run(g_loopEpoll, 5, -1), 0u);
    EXPECT_EQ(FWM_TIMER_Destroy(timer), 0u); /* its membership went with the instance */
}

uint32_t g_selfEpoll;
std::atomic<int> g_destroyingCalls{0};

uint32_t DestroyOwnInstance(void)
{
    g_destroyingCalls++;
    EXPECT_EQ(FWM_EPOLL_Destroy(g_selfEpoll), 0u);
    return 0;
}

TEST(PlatformEpoll, DestroyInsideACallbackEndsTheLoopAfterIt)
{
    MDTLM_HOST_SetManualClock(1);
    g_selfEpoll = static_cast<uint32_t>(FWM_EPOLL_Create());
    int32_t first = FWM_TIMER_Create(1000, DestroyOwnInstance, nullptr, g_selfEpoll);
    int32_t second = FWM_TIMER_Create(1000, DestroyOwnInstance, nullptr, g_selfEpoll);
    ASSERT_EQ(MDTLM_HOST_TimerFire(first, 1), 0u);
    ASSERT_EQ(MDTLM_HOST_TimerFire(second, 1), 0u);
    EXPECT_EQ(FWM_EPOLL_Run(g_selfEpoll, 5, -1), 0u); /* returns on this very thread */
    EXPECT_EQ(g_destroyingCalls.load(), 1);           /* the other ready source was dropped */
    EXPECT_EQ(FWM_EPOLL_Create(), static_cast<int32_t>(g_selfEpoll)); /* the small id is free again */
}

char g_threadName[32];

uint32_t RecordName(void)
{
    pthread_getname_np(pthread_self(), g_threadName, sizeof(g_threadName));
    return 0;
}

TEST(PlatformTask, ThreadsAreNamedWithTheFirstFifteenCharactersAndIdsIncrease)
{
    uint32_t first = 0, second = 0;
    ASSERT_EQ(PAL_TaskCreate("MDTLM_VRALDCN_STATS", &first, RecordName, 1, 0, 0, nullptr), 0u);
    EXPECT_EQ(MDTLM_HOST_JoinTasks(), 1u);
    EXPECT_STREQ(g_threadName, "MDTLM_VRALDCN_S");
    ASSERT_EQ(PAL_TaskCreate("short", &second, RecordName, 1, 256 * 1024, 0, nullptr), 0u);
    EXPECT_EQ(MDTLM_HOST_JoinTasks(), 1u);
    EXPECT_STREQ(g_threadName, "short");
    EXPECT_GE(first, 1u);
    EXPECT_GT(second, first);

    MDTLM_HOST_SetManualTasks(1);
    g_threadName[0] = '\0';
    uint32_t manual = 0;
    ASSERT_EQ(PAL_TaskCreate("manual", &manual, RecordName, 1, 0, 0, nullptr), 0u);
    EXPECT_GT(manual, second);
    EXPECT_EQ(MDTLM_HOST_RunningTasks(), 0u);
    EXPECT_EQ(MDTLM_HOST_JoinTasks(), 0u);
    EXPECT_STREQ(g_threadName, ""); /* recorded, never started */
}

TEST(PlatformSystime, ConvertsUtcFieldsToSecondsSince1970)
{
    constexpr uint32_t kRefused = 0xFFFFFFFFu;
    const struct {
        uint16_t year;
        uint8_t month, day, hour, minute, second;
        uint32_t seconds, high;
    } cases[] = {
        {1970, 1, 1, 0, 0, 0, 0, 0},          {2000, 2, 29, 12, 34, 56, 951827696u, 0},
        {2038, 1, 19, 3, 14, 8, 2147483648u, 0}, {2106, 2, 7, 6, 28, 16, 0, 1}, /* 2^32 */
        {2023, 2, 29, 0, 0, 0, kRefused, 0},  {2024, 13, 1, 0, 0, 0, kRefused, 0},
        {2024, 1, 1, 24, 0, 0, kRefused, 0},  {1969, 12, 31, 23, 59, 59, kRefused, 0},
    };
    for (const auto &c : cases) {
        PAL_SYSTIME t{c.year, c.month, c.day, c.hour, c.minute, c.second, 0, 0, 0};
        uint32_t high = 99, seconds = 99;
        uint32_t rc = PAL_SystimeSecSince1970(&t, &high, &seconds);
        EXPECT_EQ(rc != 0, c.seconds == kRefused) << c.year << "-" << +c.month << "-" << +c.day;
        if (rc == 0) {
            EXPECT_EQ(seconds, c.seconds) << c.year;
            EXPECT_EQ(high, c.high) << c.year;
        }
    }

    PAL_SYSTIME now;
    time_t before = time(nullptr);
    ASSERT_EQ(PAL_SystimeGet(&now), 0u);
    uint32_t high = 1, seconds = 0;
    ASSERT_EQ(PAL_SystimeSecSince1970(&now, &high, &seconds), 0u);
    EXPECT_TRUE(high == 0 && seconds >= before && seconds <= before + 1);
    tm utc;
    time_t back = seconds;
    gmtime_r(&back, &utc);
    EXPECT_EQ(now.weekday, utc.tm_wday);
    EXPECT_TRUE(now.millisecond < 1000 && now.reserved == 0);
}

} /* namespace */
