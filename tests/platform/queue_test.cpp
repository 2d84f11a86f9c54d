#include <gtest/gtest.h>

#include <atomic>
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
    constexpr uint32_t kWriters = 4;
    constexpr uint32_t kPerWriter = 20000;
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
    uint32_t total = 0;
    while (total < kWriters * kPerWriter) {
        Tagged out[64];
        int32_t n = FWM_QUE_AsyRead(q, out, 64);
        ASSERT_GE(n, 0);
        for (int32_t i = 0; i < n; i++) {
            ASSERT_LT(out[i].writer, kWriters);
            ASSERT_EQ(out[i].seq, next[out[i].writer]) << "writer " << out[i].writer;
            next[out[i].writer]++;
        }
        total += static_cast<uint32_t>(n);
        if (n == 0)
            std::this_thread::yield();
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
    EXPECT_EQ(out[0], 10u);
    EXPECT_EQ(out[2], 12u);
    EXPECT_EQ(FWM_QUE_AsyWrite(q, in + 4, 2), 2); /* wraps past the end of the ring */
    EXPECT_EQ(MDTLM_HOST_QueueCount(q), 3);
    EXPECT_EQ(FWM_QUE_AsyRead(q, out, 6), 3);
    EXPECT_EQ(out[0], 13u);
    EXPECT_EQ(out[1], 14u);
    EXPECT_EQ(out[2], 15u);
    EXPECT_EQ(FWM_QUE_AsyRead(q, out, 1), 0); /* empty */
    EXPECT_EQ(FWM_QUE_Destory(q), 0u);
}

TEST(PlatformQueue, RefusesBadArgumentsAndDestroyedHandles)
{
    EXPECT_EQ(FWM_QUE_CreateNew("zero depth", 1, 0, 8), nullptr);
    EXPECT_EQ(FWM_QUE_CreateNew("zero size", 1, 8, 0), nullptr);
    EXPECT_EQ(FWM_QUE_CreateNew(nullptr, 1, 8, 8), nullptr);
    EXPECT_EQ(FWM_QUE_CreateNew("huge", 1, 0xFFFFFFFFu, 0xFFFFFFFFu), nullptr);

    void *q = FWM_QUE_CreateNew("args", 1, 8, 8);
    ASSERT_NE(q, nullptr);
    uint64_t v = 1;
    int bogus = 0;
    EXPECT_LT(FWM_QUE_AsyWrite(nullptr, &v, 1), 0);
    EXPECT_LT(FWM_QUE_AsyWrite(&bogus, &v, 1), 0);
    EXPECT_LT(FWM_QUE_AsyWrite(q, nullptr, 1), 0);
    EXPECT_LT(FWM_QUE_AsyRead(q, nullptr, 1), 0);
    EXPECT_EQ(FWM_QUE_AsyWrite(q, &v, 0), 0);

    EXPECT_EQ(FWM_QUE_Destory(q), 0u);
    EXPECT_NE(FWM_QUE_Destory(q), 0u);
    EXPECT_LT(FWM_QUE_AsyWrite(q, &v, 1), 0);
    EXPECT_EQ(MDTLM_HOST_QueueCount(q), -1);
}

TEST(PlatformQueue, FindReturnsTheNewestLiveQueueOfAName)
{
    void *first = FWM_QUE_CreateNew("MDTLM_VRALDCN_EVENT", 6, 4, 8);
    void *second = FWM_QUE_CreateNew("MDTLM_VRALDCN_EVENT", 6, 4, 8);
    EXPECT_EQ(MDTLM_HOST_QueueFind("MDTLM_VRALDCN_EVENT"), second);
    FWM_QUE_Destory(second);
    EXPECT_EQ(MDTLM_HOST_QueueFind("MDTLM_VRALDCN_EVENT"), first);
    FWM_QUE_Destory(first);
    EXPECT_EQ(MDTLM_HOST_QueueFind("MDTLM_VRALDCN_EVENT"), nullptr);
}

std::vector<uint32_t> g_flowEvents;

uint32_t RecordFlow(uint32_t event)
{
    g_flowEvents.push_back(event);
    return 0;
}

TEST(PlatformQueue, FlowControlStartsOncePerUpwardCrossingAndStopsAtTheLowMark)
{
    void *q = FWM_QUE_CreateNew("flow", 1, 10, sizeof(uint32_t));
    ASSERT_NE(q, nullptr);
    MDTLM_QUE_MONITOR_CFG cfg{8, 2, 0, 0, 0};
    ASSERT_EQ(FWM_QUE_MonitorReg(q, &cfg, RecordFlow), 0u);

    /* Positive: write that many; negative: read that many. Events after each step. */
    struct Step {
        int delta;
        std::vector<uint32_t> events;
    };
    const Step steps[] = {
        {7, {}},         /* 7: below the high mark */
        {1, {0}},        /* 8: reaches it */
        {2, {0}},        /* 10: still above, no second start */
        {-2, {0}},       /* 8 */
        {-5, {0}},       /* 3: above the low mark */
        {-1, {0, 1}},    /* 2: reaches it */
        {-2, {0, 1}},    /* 0 */
        {5, {0, 1}},     /* 5 */
        {-5, {0, 1}},    /* 0: no stop without a start */
        {10, {0, 1, 0}}, /* one write straight to full: one start */
        {-10, {0, 1, 0, 1}},
    };
    uint32_t buf[10] = {};
    for (const Step &s : steps) {
        if (s.delta > 0)
            ASSERT_EQ(FWM_QUE_AsyWrite(q, buf, static_cast<uint32_t>(s.delta)), s.delta);
        else
            ASSERT_EQ(FWM_QUE_AsyRead(q, buf, static_cast<uint32_t>(-s.delta)), -s.delta);
        EXPECT_EQ(g_flowEvents, s.events) << "after step " << s.delta << ", fill " << MDTLM_HOST_QueueCount(q);
    }
    FWM_QUE_Destory(q);
}

TEST(PlatformQueue, MonitorRefusesMarksThatCannotCross)
{
    void *q = FWM_QUE_CreateNew("marks", 1, 10, 4);
    const MDTLM_QUE_MONITOR_CFG bad[] = {{0, 0, 0, 0, 0}, {11, 2, 0, 0, 0}, {5, 5, 0, 0, 0}, {4, 6, 0, 0, 0}};
    for (const auto &cfg : bad)
        EXPECT_NE(FWM_QUE_MonitorReg(q, &cfg, RecordFlow), 0u) << cfg.highMark << "/" << cfg.lowMark;
    MDTLM_QUE_MONITOR_CFG good{10, 0, 0, 0, 0};
    EXPECT_NE(FWM_QUE_MonitorReg(q, &good, nullptr), 0u);
    EXPECT_NE(FWM_QUE_MonitorReg(nullptr, &good, RecordFlow), 0u);
    EXPECT_EQ(FWM_QUE_MonitorReg(q, &good, RecordFlow), 0u);
    FWM_QUE_Destory(q);
}

std::vector<uint32_t> g_popped;
void *g_expectedQueue;

/* Reads one element per call, as the event queue's consumer does. */
uint32_t PopOne(void *queue)
{
    EXPECT_EQ(queue, g_expectedQueue);
    uint32_t v;
    if (FWM_QUE_AsyRead(queue, &v, 1) == 1)
        g_popped.push_back(v);
    return 0;
}

TEST(PlatformQueue, ReadableCallbackRepeatsWhileElementsRemain)
{
    ScopedEpoll ep;
    void *q = FWM_QUE_CreateNew("readable", 6, 16, sizeof(uint32_t));
    g_expectedQueue = q;
    ASSERT_EQ(FWM_QUE_EpollReg(q, ep.Id(), PopOne), 0u);

    EXPECT_EQ(MDTLM_HOST_EpollPump(ep.Id(), 0, 1), 0u); /* empty queue: never called */
    const uint32_t in[5] = {1, 2, 3, 4, 5};
    ASSERT_EQ(FWM_QUE_AsyWrite(q, in, 5), 5);
    EXPECT_EQ(MDTLM_HOST_EpollPump(ep.Id(), 100, 1), 5u);
    EXPECT_EQ(g_popped, (std::vector<uint32_t>{1, 2, 3, 4, 5}));
    EXPECT_EQ(MDTLM_HOST_EpollPump(ep.Id(), 0, 1), 0u);

    /* A single pump without drain takes one element per wait. */
    ASSERT_EQ(FWM_QUE_AsyWrite(q, in, 2), 2);
    EXPECT_EQ(MDTLM_HOST_EpollPump(ep.Id(), 100, 0), 1u);
    EXPECT_EQ(MDTLM_HOST_QueueCount(q), 1);
    EXPECT_EQ(MDTLM_HOST_EpollPump(ep.Id(), 100, 0), 1u);
    EXPECT_EQ(MDTLM_HOST_QueueCount(q), 0);

    EXPECT_NE(FWM_QUE_EpollReg(q, 63, PopOne), 0u); /* no such instance */
    EXPECT_NE(FWM_QUE_EpollReg(q, ep.Id(), nullptr), 0u);
    FWM_QUE_Destory(q);
}

std::atomic<int> g_destroyingCalls{0};

uint32_t DestroyOwnQueue(void *queue)
{
    g_destroyingCalls++;
    FWM_QUE_Destory(queue);
    return 0;
}

TEST(PlatformQueue, QueueDestroyedInItsOwnCallbackIsNotCalledAgain)
{
    ScopedEpoll ep;
    void *q = FWM_QUE_CreateNew("self-destroying", 6, 16, 8);
    ASSERT_EQ(FWM_QUE_EpollReg(q, ep.Id(), DestroyOwnQueue), 0u);
    uint64_t v[3] = {};
    ASSERT_EQ(FWM_QUE_AsyWrite(q, v, 3), 3);
    EXPECT_EQ(MDTLM_HOST_EpollPump(ep.Id(), 100, 1), 1u);
    EXPECT_EQ(g_destroyingCalls.load(), 1);
    EXPECT_EQ(MDTLM_HOST_QueueCount(q), -1);
}

} /* namespace */
