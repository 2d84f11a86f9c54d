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

/* Writers push batches of three into a small ring, so partial writes and the
 * wrap happen all the time; each writer's sequence must arrive whole and in order. */
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
    FWM_QUE_Destory(q);
}

TEST(PlatformQueue, FlowEventsAlternateUnderConcurrentWriters)
{
    void *q = FWM_QUE_CreateNew("contended", 1, 64, 8);
    MDTLM_QUE_MONITOR_CFG cfg{48, 16, 0, 0, 0};
    ASSERT_EQ(FWM_QUE_MonitorReg(q, &cfg, RecordFlow), 0u);
    std::atomic<int> finished{0};
    std::vector<std::thread> writers;
    for (int w = 0; w < 3; w++)
        writers.emplace_back([&] {
            for (uint64_t v = 0, i = 0; i < 5000;)
                i += FWM_QUE_AsyWrite(q, &v, 1) == 1 ? 1 : (std::this_thread::yield(), 0);
            finished++;
        });
    /* Waits for the high mark, then empties the queue: one start and one stop per round. */
    for (uint64_t out[8]; finished.load() < 3;)
        if (MDTLM_HOST_QueueCount(q) < 48)
            std::this_thread::yield();
        else
            while (FWM_QUE_AsyRead(q, out, 8) > 0) {
            }
    for (auto &t : writers)
        t.join();
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
    FWM_QUE_Destory(q);
}

} /* namespace */

namespace {

/* Writes and reads find their queue again without the table once a thread has
 * used it; a queue destroyed since must refuse them, and a queue created
 * afterwards (the allocator may hand it the same address) must get them. */
TEST(PlatformQueue, TransfersOfOneThreadFollowDestroyAndRecreate)
{
    for (int round = 0; round < 50; round++) {
        void *first = FWM_QUE_CreateNew("reused", 1, 4, sizeof(uint32_t));
        ASSERT_NE(first, nullptr);
        uint32_t value = 7, out = 0;
        ASSERT_EQ(FWM_QUE_AsyWrite(first, &value, 1), 1);
        ASSERT_EQ(FWM_QUE_AsyRead(first, &out, 1), 1);
        ASSERT_EQ(FWM_QUE_AsyWrite(first, &value, 1), 1);
        ASSERT_EQ(FWM_QUE_Destory(first), 0u);
        EXPECT_EQ(FWM_QUE_AsyWrite(first, &value, 1), -1);
        EXPECT_EQ(FWM_QUE_AsyRead(first, &out, 1), -1);

        void *second = FWM_QUE_CreateNew("reused", 1, 4, sizeof(uint32_t));
        ASSERT_NE(second, nullptr);
        EXPECT_EQ(MDTLM_HOST_QueueCount(second), 0) << "round " << round;
        EXPECT_EQ(FWM_QUE_AsyRead(second, &out, 1), 0);
        value = 9;
        EXPECT_EQ(FWM_QUE_AsyWrite(second, &value, 1), 1);
        EXPECT_EQ(FWM_QUE_AsyRead(second, &out, 1), 1);
        EXPECT_EQ(out, 9u);
        EXPECT_EQ(FWM_QUE_Destory(second), 0u);
    }
}

} /* namespace */
