#include <gtest/gtest.h>

#include <atomic>
#include <mutex>
#include <thread>
#include <vector>

#include "platform_test_util.h"

namespace {

struct Tagged {
    uint32_t writer;
    uint32_t seq;
};

TEST(PlatformQueue, ConcurrentWritersLoseNothingAndKeepEachWritersOrder)
{
    constexpr uint32_t kWriters = 4, kPerWriter = 20000;
    void *q = FWM_QUE_CreateNew("concurrent", 1, 256, sizeof(Tagged));
    ASSERT_NE(q, nullptr);
    std::vector<std::thread> writers;
    for (uint32_t w = 0; w < kWriters; w++) {
        writers.emplace_back([q, w] {
            for (uint32_t seq = 0; seq < kPerWriter;) {
                Tagged batch[3];
                uint32_t n = std::min<uint32_t>(3, kPerWriter - seq);
                for (uint32_t i = 0; i < n; i++)
                    batch[i] = Tagged{w, seq + i};
                int32_t written = FWM_QUE_AsyWrite(q, batch, n);
                ASSERT_GE(written, 0);
                seq += static_cast<uint32_t>(written);
                if (written == 0)
                    std::this_thread::yield();
            }
        });
    }
    std::vector<uint32_t> next(kWriters, 0);
    for (uint32_t total = 0; total < kWriters * kPerWriter;) {
        Tagged out[64];
        int32_t n = FWM_QUE_AsyRead(q, out, 64);
        ASSERT_GE(n, 0);
        for (int32_t i = 0; i < n; i++) {
            ASSERT_LT(out[i].writer, kWriters);
            ASSERT_EQ(out[i].seq, next[out[i].writer]++) << "writer " << out[i].writer;
        }
        total += static_cast<uint32_t>(n);
    }
    for (auto &t : writers)
        t.join();
    EXPECT_EQ(MDTLM_HOST_QueueCount(q), 0);
    EXPECT_EQ(FWM_QUE_Destory(q), 0u);
}

TEST(PlatformQueue, WritesWhatFitsAndReadsInOrderAcrossTheWrap)
{
    void *q = FWM_QUE_CreateNew("small", 6, 4, sizeof(uint32_t));
    ASSERT_NE(q, nullptr);
    const uint32_t in[6] = {10, 11, 12, 13, 14, 15};
    uint32_t out[6] = {};
    EXPECT_EQ(FWM_QUE_AsyWrite(q, in, 6), 4);
    EXPECT_EQ(FWM_QUE_AsyWrite(q, in, 1), 0); /* full: nothing, no wait */
    EXPECT_EQ(FWM_QUE_AsyRead(q, out, 3), 3);
    EXPECT_EQ(out[2], 12u);
    EXPECT_EQ(FWM_QUE_AsyWrite(q, in + 4, 2), 2); /* wraps past the end of the ring */
    EXPECT_EQ(FWM_QUE_AsyRead(q, out, 6), 3);
    EXPECT_EQ(std::vector<uint32_t>(out, out + 3), (std::vector<uint32_t>{13, 14, 15}));
    EXPECT_EQ(FWM_QUE_AsyRead(q, out, 1), 0);
    EXPECT_LT(FWM_QUE_AsyWrite(q, nullptr, 1), 0);
    EXPECT_EQ(FWM_QUE_Destory(q), 0u);
    EXPECT_LT(FWM_QUE_AsyWrite(q, in, 1), 0); /* a destroyed handle is refused */
    EXPECT_NE(FWM_QUE_Destory(q), 0u);
}

std::mutex g_flowMu;
std::vector<uint32_t> g_flowEvents;

/* A start takes a while to handle, which gives a stop raised meanwhile on
 * another thread every chance to overtake it. */
uint32_t RecordFlow(uint32_t event)
{
    if (event == 0)
        std::this_thread::sleep_for(std::chrono::microseconds(100));
    std::lock_guard<std::mutex> lock(g_flowMu);
    g_flowEvents.push_back(event);
    return 0;
}

TEST(PlatformQueue, FlowControlStartsOncePerUpwardCrossingAndStopsAtTheLowMark)
{
    void *q = FWM_QUE_CreateNew("flow", 1, 10, sizeof(uint32_t));
    MDTLM_QUE_MONITOR_CFG cfg{8, 2, 0, 0, 0};
    ASSERT_EQ(FWM_QUE_MonitorReg(q, &cfg, RecordFlow), 0u);
    /* Positive: write that many; negative: read that many; then the events so far. */
    const struct {
        int delta;
        std::vector<uint32_t> events;
    } steps[] = {
        {7, {}},         {1, {0}},     /* reaches the high mark */
        {2, {0}},        {-7, {0}},    /* 10, then 3: no second start, not yet low */
        {-1, {0, 1}},    {-2, {0, 1}}, /* reaches the low mark */
        {5, {0, 1}},     {-5, {0, 1}}, /* no stop without a start */
        {10, {0, 1, 0}}, {-10, {0, 1, 0, 1}},
    };
    uint32_t buf[10] = {};
    for (const auto &s : steps) {
        uint32_t n = static_cast<uint32_t>(s.delta > 0 ? s.delta : -s.delta);
        ASSERT_EQ(s.delta > 0 ? FWM_QUE_AsyWrite(q, buf, n) : FWM_QUE_AsyRead(q, buf, n), static_cast<int32_t>(n));
        EXPECT_EQ(g_flowEvents, s.events) << "after " << s.delta << ", fill " << MDTLM_HOST_QueueCount(q);
    }
    MDTLM_QUE_MONITOR_CFG lowAboveHigh{4, 6, 0, 0, 0};
    EXPECT_NE(FWM_QUE_MonitorReg(q, &lowAboveHigh, RecordFlow), 0u);
    FWM_QUE_Destory(q);
}

TEST(PlatformQueue, FlowEventsAlternateUnderConcurrentWritersAndReaders)
{
    void *q = FWM_QUE_CreateNew("contended", 1, 64, 8);
    MDTLM_QUE_MONITOR_CFG cfg{48, 16, 0, 0, 0};
    ASSERT_EQ(FWM_QUE_MonitorReg(q, &cfg, RecordFlow), 0u);
    std::atomic<bool> stop{false};
    std::vector<std::thread> writers;
    for (int w = 0; w < 3; w++) {
        writers.emplace_back([&] {
            uint64_t v = 0;
            for (int i = 0; i < 5000;)
                i += FWM_QUE_AsyWrite(q, &v, 1) == 1 ? 1 : (std::this_thread::yield(), 0);
        });
    }
    /* Waits for the high mark, then empties the queue: one start and one stop per round. */
    std::thread reader([&] {
        uint64_t out[8];
        while (!stop.load()) {
            if (MDTLM_HOST_QueueCount(q) < 48)
                std::this_thread::yield();
            else
                while (FWM_QUE_AsyRead(q, out, 8) > 0) {
                }
        }
    });
    for (auto &t : writers)
        t.join();
    stop = true;
    reader.join();

    std::lock_guard<std::mutex> lock(g_flowMu);
    EXPECT_GT(g_flowEvents.size(), 100u);
    for (size_t i = 0; i < g_flowEvents.size(); i++)
        ASSERT_EQ(g_flowEvents[i], i % 2) << "event " << i << " of " << g_flowEvents.size();
    FWM_QUE_Destory(q);
}

std::vector<uint32_t> g_popped;

/* Reads one element per call, as the event queue's consumer does. */
uint32_t PopOne(void *queue)
{
    uint32_t v;
    if (FWM_QUE_AsyRead(queue, &v, 1) == 1)
        g_popped.push_back(v);
    return 0;
}

TEST(PlatformQueue, ReadableCallbackRepeatsWhileElementsRemain)
{
    ScopedEpoll ep;
    void *q = FWM_QUE_CreateNew("readable", 6, 16, sizeof(uint32_t));
    ASSERT_EQ(FWM_QUE_EpollReg(q, ep.Id(), PopOne), 0u);
    EXPECT_EQ(MDTLM_HOST_EpollPump(ep.Id(), 0, 1), 0u); /* empty: never called */
    const uint32_t in[5] = {1, 2, 3, 4, 5};
    ASSERT_EQ(FWM_QUE_AsyWrite(q, in, 5), 5);
    EXPECT_EQ(MDTLM_HOST_EpollPump(ep.Id(), 100, 0), 1u); /* one wait, one call */
    EXPECT_EQ(MDTLM_HOST_EpollPump(ep.Id(), 100, 1), 4u);
    EXPECT_EQ(g_popped, (std::vector<uint32_t>{1, 2, 3, 4, 5}));
    EXPECT_EQ(MDTLM_HOST_EpollPump(ep.Id(), 0, 1), 0u);
    EXPECT_NE(FWM_QUE_EpollReg(q, 63, PopOne), 0u); /* no such instance */
    FWM_QUE_Destory(q);
}

uint32_t g_loopId;
std::atomic<bool> g_slowStarted{false}, g_slowFinished{false};
std::atomic<int> g_slowCalls{0};

uint32_t RunLoop(void)
{
    return FWM_EPOLL_Run(g_loopId, 5, -1);
}

uint32_t SlowReader(void *queue)
{
    g_slowCalls++;
    g_slowStarted = true;
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    uint64_t v;
    FWM_QUE_AsyRead(queue, &v, 1);
    g_slowFinished = true;
    return 0;
}

TEST(PlatformQueue, DestroyWaitsForTheRunningCallbackOnTheLoopThread)
{
    ScopedEpoll ep;
    g_loopId = ep.Id();
    void *q = FWM_QUE_CreateNew("slow", 6, 16, 8);
    ASSERT_EQ(FWM_QUE_EpollReg(q, ep.Id(), SlowReader), 0u);
    uint32_t task = 0;
    ASSERT_EQ(PAL_TaskCreate("loop", &task, RunLoop, 1, 0, 0, nullptr), 0u);
    uint64_t v[4] = {};
    ASSERT_EQ(FWM_QUE_AsyWrite(q, v, 4), 4);
    ASSERT_TRUE(WaitUntil([] { return g_slowStarted.load(); }));
    EXPECT_EQ(FWM_QUE_Destory(q), 0u);
    EXPECT_TRUE(g_slowFinished.load());
    int calls = g_slowCalls.load();
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_EQ(g_slowCalls.load(), calls); /* elements remained, yet no further call */
    FWM_EPOLL_Destroy(ep.Id());
    ep.Forget();
    EXPECT_EQ(MDTLM_HOST_JoinTasks(), 1u);
}

} /* namespace */
