#include <gtest/gtest.h>
#include <pthread.h>

#include <atomic>
#include <cstring>
#include <string>

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
    int32_t first = FWM_TIMER_Create(1, CountTick, nullptr, ep.Id());
    int32_t second = FWM_TIMER_Create(1000, CountTick, nullptr, ep.Id());
    ASSERT_GE(first, 1); /* 0 is never handed out */
    EXPECT_GT(second, first);

    EXPECT_EQ(MDTLM_HOST_EpollPump(ep.Id(), 30, 1), 0u); /* a 1 ms timer, yet no expiry */
    EXPECT_EQ(MDTLM_HOST_TimerFire(first, 3), 0u);
    EXPECT_EQ(MDTLM_HOST_TimerFire(second, 2), 0u);
    EXPECT_EQ(MDTLM_HOST_EpollPump(ep.Id(), 100, 1), 5u);
    EXPECT_EQ(g_ticks.load(), 5u);
    EXPECT_EQ(MDTLM_HOST_EpollPump(ep.Id(), 0, 1), 0u);

    EXPECT_EQ(FWM_TIMER_Destroy(first), 0u);
    EXPECT_NE(FWM_TIMER_Destroy(first), 0u);
    EXPECT_NE(MDTLM_HOST_TimerFire(first, 1), 0u);
    EXPECT_EQ(FWM_TIMER_Destroy(second), 0u);
}

TEST(PlatformTimer, FiredTicksOfADestroyedTimerAreNeverDelivered)
{
    MDTLM_HOST_SetManualClock(1);
    ScopedEpoll ep;
    int32_t id = FWM_TIMER_Create(1000, CountTick, nullptr, ep.Id());
    ASSERT_EQ(MDTLM_HOST_TimerFire(id, 4), 0u);
    ASSERT_EQ(FWM_TIMER_Destroy(id), 0u);
    EXPECT_EQ(MDTLM_HOST_EpollPump(ep.Id(), 20, 1), 0u);
    EXPECT_EQ(g_ticks.load(), 0u);
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

TEST(PlatformTimer, RefusesBadArguments)
{
    ScopedEpoll ep;
    EXPECT_LT(FWM_TIMER_Create(0, CountTick, nullptr, ep.Id()), 0);
    EXPECT_LT(FWM_TIMER_Create(1000, nullptr, nullptr, ep.Id()), 0);
    EXPECT_LT(FWM_TIMER_Create(1000, CountTick, nullptr, 63), 0);
    EXPECT_LT(FWM_TIMER_Create(1000, CountTick, nullptr, 1000), 0);
}

uint32_t g_loopEpoll;
std::atomic<int> g_runResult{-1};

uint32_t RunLoop(void)
{
    g_runResult = static_cast<int>(FWM_EPOLL_Run(g_loopEpoll, 5, -1));
    return 0;
}

std::atomic<bool> g_inCallback{false};
std::atomic<bool> g_callbackDone{false};

uint32_t SlowPop(void *queue)
{
    uint64_t v;
    FWM_QUE_AsyRead(queue, &v, 1);
    g_inCallback = true;
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    g_callbackDone = true;
    return 0;
}

TEST(PlatformEpoll, DestroyFromAnotherThreadWaitsForTheRunningCallbackAndEndsTheLoop)
{
    int32_t id = FWM_EPOLL_Create();
    ASSERT_GE(id, 0);
    g_loopEpoll = static_cast<uint32_t>(id);
    void *q = FWM_QUE_CreateNew("slow", 6, 4, 8);
    ASSERT_EQ(FWM_QUE_EpollReg(q, g_loopEpoll, SlowPop), 0u);

    uint32_t taskId = 0;
    uint8_t param[32] = {};
    ASSERT_EQ(PAL_TaskCreate("MDTLM_VRALDCN_STATS", &taskId, RunLoop, 1, 0, 0, param), 0u);
    EXPECT_GE(taskId, 1u);
    EXPECT_EQ(MDTLM_HOST_RunningTasks(), 1u);

    uint64_t v = 7;
    ASSERT_EQ(FWM_QUE_AsyWrite(q, &v, 1), 1);
    ASSERT_TRUE(WaitUntil([] { return g_inCallback.load(); }));
    EXPECT_EQ(FWM_EPOLL_Destroy(g_loopEpoll), 0u);
    EXPECT_TRUE(g_callbackDone.load()); /* Destroy returned only after the callback */

    EXPECT_EQ(MDTLM_HOST_JoinTasks(), 1u);
    EXPECT_EQ(g_runResult.load(), 0);
    EXPECT_EQ(MDTLM_HOST_RunningTasks(), 0u);
    EXPECT_NE(FWM_EPOLL_Destroy(g_loopEpoll), 0u);

    /* The queue lost its membership with the instance but still works. */
    EXPECT_EQ(FWM_QUE_AsyWrite(q, &v, 1), 1);
    EXPECT_NE(FWM_QUE_EpollReg(q, g_loopEpoll, SlowPop), 0u);
    EXPECT_EQ(FWM_QUE_Destory(q), 0u);
}

uint32_t g_selfEpoll;
std::atomic<int> g_afterDestroyCalls{0};

uint32_t DestroyOwnInstance(void)
{
    g_afterDestroyCalls++;
    EXPECT_EQ(FWM_EPOLL_Destroy(g_selfEpoll), 0u);
    return 0;
}

TEST(PlatformEpoll, DestroyInsideACallbackEndsTheLoopAfterIt)
{
    MDTLM_HOST_SetManualClock(1);
    int32_t id = FWM_EPOLL_Create();
    g_selfEpoll = static_cast<uint32_t>(id);
    int32_t timer = FWM_TIMER_Create(1000, DestroyOwnInstance, nullptr, g_selfEpoll);
    int32_t other = FWM_TIMER_Create(1000, DestroyOwnInstance, nullptr, g_selfEpoll);
    ASSERT_EQ(MDTLM_HOST_TimerFire(timer, 1), 0u);
    ASSERT_EQ(MDTLM_HOST_TimerFire(other, 1), 0u);
    EXPECT_EQ(FWM_EPOLL_Run(g_selfEpoll, 5, -1), 0u); /* returns on this thread */
    EXPECT_EQ(g_afterDestroyCalls.load(), 1);         /* the second ready source was dropped */
    EXPECT_EQ(FWM_TIMER_Destroy(timer), 0u);
    EXPECT_EQ(FWM_TIMER_Destroy(other), 0u);
}

TEST(PlatformEpoll, UnknownInstancesAreRefused)
{
    EXPECT_NE(FWM_EPOLL_Run(63, 5, -1), 0u);
    EXPECT_NE(FWM_EPOLL_Run(0xFFFFFFFFu, 5, -1), 0u);
    EXPECT_NE(FWM_EPOLL_Destroy(0xFFFFFFFFu), 0u);
    EXPECT_EQ(MDTLM_HOST_EpollPump(63, 0, 1), 0u);
}

TEST(PlatformEpoll, IdsAreSmallAndReusedAfterDestroy)
{
    int32_t a = FWM_EPOLL_Create();
    int32_t b = FWM_EPOLL_Create();
    ASSERT_GE(a, 0);
    EXPECT_EQ(b, a + 1);
    EXPECT_EQ(FWM_EPOLL_Destroy(static_cast<uint32_t>(a)), 0u);
    EXPECT_EQ(FWM_EPOLL_Create(), a);
}

char g_threadName[32];

uint32_t RecordName(void)
{
    pthread_getname_np(pthread_self(), g_threadName, sizeof(g_threadName));
    return 0;
}

TEST(PlatformTask, ThreadIsNamedWithTheFirstFifteenCharactersAndIdsIncrease)
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
    EXPECT_EQ(MDTLM_HOST_JoinTasks(), 0u);

    uint32_t id = 0;
    EXPECT_NE(PAL_TaskCreate("x", nullptr, RecordName, 1, 0, 0, nullptr), 0u);
    EXPECT_NE(PAL_TaskCreate("x", &id, nullptr, 1, 0, 0, nullptr), 0u);
}

std::atomic<int> g_manualRuns{0};

uint32_t CountRun(void)
{
    g_manualRuns++;
    return 0;
}

TEST(PlatformTask, ManualTasksAreRecordedButNeverStarted)
{
    MDTLM_HOST_SetManualTasks(1);
    uint32_t id = 0;
    ASSERT_EQ(PAL_TaskCreate("manual", &id, CountRun, 1, 0, 0, nullptr), 0u);
    EXPECT_GE(id, 1u);
    EXPECT_EQ(MDTLM_HOST_RunningTasks(), 0u);
    EXPECT_EQ(MDTLM_HOST_JoinTasks(), 0u);
    EXPECT_EQ(g_manualRuns.load(), 0);
    MDTLM_HOST_SetManualTasks(0);
}

struct CivilTime {
    uint16_t year;
    uint8_t month, day, hour, minute, second;
    uint32_t expectSeconds; /* 0xFFFFFFFF: refused */
    uint32_t expectHigh;
};

TEST(PlatformSystime, ConvertsUtcFieldsToSecondsSince1970)
{
    const CivilTime cases[] = {
        {1970, 1, 1, 0, 0, 0, 0, 0},
        {2000, 2, 29, 12, 34, 56, 951827696u, 0},
        {2038, 1, 19, 3, 14, 8, 2147483648u, 0},
        {2106, 2, 7, 6, 28, 16, 0, 1}, /* 2^32 */
        {2023, 2, 29, 0, 0, 0, 0xFFFFFFFFu, 0},
        {2024, 13, 1, 0, 0, 0, 0xFFFFFFFFu, 0},
        {2024, 1, 1, 24, 0, 0, 0xFFFFFFFFu, 0},
        {1969, 12, 31, 23, 59, 59, 0xFFFFFFFFu, 0},
    };
    for (const CivilTime &c : cases) {
        PAL_SYSTIME t{c.year, c.month, c.day, c.hour, c.minute, c.second, 0, 0, 0};
        uint32_t high = 99, seconds = 99;
        uint32_t rc = PAL_SystimeSecSince1970(&t, &high, &seconds);
        if (c.expectSeconds == 0xFFFFFFFFu) {
            EXPECT_NE(rc, 0u) << c.year << "-" << +c.month << "-" << +c.day;
            continue;
        }
        ASSERT_EQ(rc, 0u) << c.year;
        EXPECT_EQ(seconds, c.expectSeconds) << c.year;
        EXPECT_EQ(high, c.expectHigh) << c.year;
    }
}

TEST(PlatformSystime, ReadsTheCurrentUtcTime)
{
    PAL_SYSTIME now;
    std::memset(&now, 0xAB, sizeof(now));
    time_t before = time(nullptr);
    ASSERT_EQ(PAL_SystimeGet(&now), 0u);
    EXPECT_EQ(now.reserved, 0u);
    EXPECT_LT(now.millisecond, 1000u);
    uint32_t high = 1, seconds = 0;
    ASSERT_EQ(PAL_SystimeSecSince1970(&now, &high, &seconds), 0u);
    EXPECT_EQ(high, 0u);
    EXPECT_LE(static_cast<time_t>(seconds) - before, 1);
    EXPECT_GE(static_cast<time_t>(seconds), before);
    tm utc;
    time_t back = seconds;
    gmtime_r(&back, &utc);
    EXPECT_EQ(now.weekday, utc.tm_wday);
    EXPECT_NE(PAL_SystimeGet(nullptr), 0u);
}

} /* namespace */
