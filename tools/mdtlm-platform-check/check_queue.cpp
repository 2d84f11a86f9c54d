/*
 * Queues: what the plug-in's event queue (pointers, written from several
 * threads, served by the worker's loop) and statistics queue (pointers,
 * drained at each tick) rely on.
 */
#include <algorithm>
#include <atomic>
#include <mutex>
#include <thread>

#include "loop_thread.h"
#include "rule.h"

namespace mdtlm::check {
namespace {

using namespace std::chrono_literals;

/* A queue that is destroyed when the check ends. */
class Queue {
public:
    Queue(const PlatformApi &api, const char *name, uint32_t mode, uint32_t depth, uint32_t elementSize)
        : api_(api), handle_(api.FWM_QUE_CreateNew(name, mode, depth, elementSize))
    {
    }
    ~Queue() { Destroy(); }
    Queue(const Queue &) = delete;
    Queue &operator=(const Queue &) = delete;

    void *Get() const { return handle_; }
    int32_t Write(const void *elements, uint32_t count) { return api_.FWM_QUE_AsyWrite(handle_, elements, count); }
    int32_t Read(void *elements, uint32_t count) { return api_.FWM_QUE_AsyRead(handle_, elements, count); }
    uint32_t Destroy()
    {
        uint32_t ret = handle_ != nullptr ? api_.FWM_QUE_Destory(handle_) : 0;
        handle_ = nullptr;
        return ret;
    }

private:
    const PlatformApi &api_;
    void *handle_;
};

void CheckCreate(const PlatformApi &api, const CheckSettings &, Findings &findings)
{
    int32_t epollId = api.FWM_EPOLL_Create();
    if (!findings.Expect(epollId >= 0, "FWM_EPOLL_Create returned " + Str(epollId))) {
        return;
    }
    struct Shape {
        const char *name;
        uint32_t mode, depth, highMark, lowMark;
        bool onLoop;
    };
    /* The plug-in's event queue and statistics queue. */
    const Shape shapes[] = {{"MDTLM_VRALDCN_EVENT", 6, 1024, 819, 204, true},
                            {"MdtlmNtvVralDcnStatsQue", 1, 196608, 157286, 39321, false}};
    auto noReadable = [](void *) -> uint32_t { return 0; };
    auto noFlowCtrl = [](uint32_t) -> uint32_t { return 0; };
    for (const Shape &shape : shapes) {
        std::string what = std::string("queue \"") + shape.name + "\"";
        Queue queue(api, shape.name, shape.mode, shape.depth, 8);
        if (!findings.Expect(queue.Get() != nullptr, "FWM_QUE_CreateNew returned NULL for " + what)) {
            continue;
        }
        if (shape.onLoop) {
            uint32_t ret = api.FWM_QUE_EpollReg(queue.Get(), static_cast<uint32_t>(epollId), noReadable);
            findings.Expect(ret == 0, "FWM_QUE_EpollReg of " + what + " returned " + Str(ret));
        }
        MDTLM_QUE_MONITOR_CFG cfg{shape.highMark, shape.lowMark, static_cast<uint32_t>(epollId), 0, 0};
        uint32_t ret = api.FWM_QUE_MonitorReg(queue.Get(), &cfg, noFlowCtrl);
        findings.Expect(ret == 0, "FWM_QUE_MonitorReg of " + what + " returned " + Str(ret));
        ret = queue.Destroy();
        findings.Expect(ret == 0, "FWM_QUE_Destory of " + what + " returned " + Str(ret));
    }
    api.FWM_EPOLL_Destroy(static_cast<uint32_t>(epollId));
}

void CheckDepth(const PlatformApi &api, const CheckSettings &, Findings &findings)
{
    constexpr uint32_t kDepth = 16;
    Queue queue(api, "check.depth", 1, kDepth, 8);
    if (!findings.Expect(queue.Get() != nullptr, "FWM_QUE_CreateNew returned NULL")) {
        return;
    }
    uint64_t in[kDepth + 1] = {};
    uint64_t out[kDepth + 4] = {};
    int32_t n = queue.Read(out, 1);
    findings.Expect(n == 0, "a read from the empty queue returned " + Str(n) + ", not 0");
    n = queue.Write(in, kDepth + 1);
    findings.Expect(n == static_cast<int32_t>(kDepth),
                    "writing 17 elements into a queue of depth 16 returned " + Str(n) + ", not 16");
    auto start = std::chrono::steady_clock::now();
    n = queue.Write(in, 1);
    findings.Expect(n == 0, "a write into the full queue returned " + Str(n) + ", not 0");
    findings.Expect(std::chrono::steady_clock::now() - start < 500ms, "a write into the full queue waited");
    n = queue.Read(out, kDepth + 4);
    findings.Expect(n == static_cast<int32_t>(kDepth), "reading 20 from 16 queued returned " + Str(n));
    n = queue.Read(out, 1);
    findings.Expect(n == 0, "a read from the drained queue returned " + Str(n) + ", not 0");
}

void CheckOrder(const PlatformApi &api, const CheckSettings &, Findings &findings)
{
    /* 24-byte elements, 3 written per round into 5 slots: the ring wraps
     * around again and again, and every byte of every element is checked. */
    struct Element {
        uint64_t words[3];
    };
    Queue queue(api, "check.order", 1, 5, sizeof(Element));
    if (!findings.Expect(queue.Get() != nullptr, "FWM_QUE_CreateNew returned NULL")) {
        return;
    }
    uint64_t next = 1;
    uint64_t expected = 1;
    for (int round = 0; round < 40 && findings.Holds(); round++) {
        Element in[3];
        for (Element &e : in) {
            e = {{next, ~next, next * 0x9E3779B97F4A7C15ull}};
            next++;
        }
        int32_t n = queue.Write(in, 3);
        findings.Expect(n == 3, "round " + Str(round) + ": writing 3 returned " + Str(n));
        Element out[4] = {};
        n = queue.Read(out, 4);
        findings.Expect(n == 3, "round " + Str(round) + ": reading 4 with 3 queued returned " + Str(n));
        for (int i = 0; i < std::min(n, 3); i++, expected++) {
            const Element want = {{expected, ~expected, expected * 0x9E3779B97F4A7C15ull}};
            findings.Expect(std::equal(std::begin(want.words), std::end(want.words), std::begin(out[i].words)),
                            "round " + Str(round) + ": element " + Str(i) + " read as " + Str(out[i].words[0]) +
                                " where " + Str(expected) + " was written (order or bytes differ)");
        }
    }
}

void CheckWriters(const PlatformApi &api, const CheckSettings &, Findings &findings)
{
    constexpr uint32_t kWriters = 4;
    constexpr uint32_t kEach = 2000;
    Queue queue(api, "check.writers", 6, kWriters * kEach, 8);
    if (!findings.Expect(queue.Get() != nullptr, "FWM_QUE_CreateNew returned NULL")) {
        return;
    }
    std::atomic<uint32_t> refused{0};
    std::vector<std::thread> writers;
    for (uint32_t w = 0; w < kWriters; w++) {
        writers.emplace_back([&queue, &refused, w] {
            for (uint32_t i = 0; i < kEach; i++) {
                uint64_t value = (uint64_t{w} << 32) | i;
                if (queue.Write(&value, 1) != 1) {
                    refused++;
                }
            }
        });
    }
    for (std::thread &t : writers) {
        t.join();
    }
    findings.Expect(refused.load() == 0, Str(refused.load()) + " single writes from 4 threads were refused");
    uint32_t nextOf[kWriters] = {};
    uint64_t value = 0;
    uint32_t total = 0;
    while (queue.Read(&value, 1) == 1 && findings.Holds()) {
        uint32_t writer = static_cast<uint32_t>(value >> 32);
        uint32_t seq = static_cast<uint32_t>(value);
        if (!findings.Expect(writer < kWriters, "read an element no writer wrote: " + Str(int64_t(value)))) {
            break;
        }
        findings.Expect(seq == nextOf[writer], "writer " + Str(writer) + ": element " + Str(seq) +
                                                   " came where " + Str(nextOf[writer]) + " was due");
        nextOf[writer] = seq + 1;
        total++;
    }
    findings.Expect(total == kWriters * kEach,
                    "read " + Str(total) + " of " + Str(kWriters * kEach) + " elements written by 4 threads");
}

/* What the readable callback of the loop check saw; written on the loop thread. */
struct ReadableLog {
    std::mutex mu;
    void *queue = nullptr;
    std::vector<uint64_t> values;
    uint32_t emptyCalls = 0;
    uint32_t wrongHandle = 0;
    uint32_t offLoop = 0;
    const PlatformApi *api = nullptr;
};
ReadableLog g_readable;

uint32_t OnReadable(void *queue)
{
    std::lock_guard<std::mutex> lock(g_readable.mu);
    g_readable.wrongHandle += queue != g_readable.queue;
    g_readable.offLoop += !LoopThread::OnLoopThread();
    uint64_t value = 0;
    if (g_readable.api->FWM_QUE_AsyRead(g_readable.queue, &value, 1) == 1) {
        g_readable.values.push_back(value);
    } else {
        g_readable.emptyCalls++;
    }
    return 0;
}

void CheckReadable(const PlatformApi &api, const CheckSettings &, Findings &findings)
{
    constexpr uint32_t kCount = 100;
    LoopThread loop(api, findings);
    Queue queue(api, "check.readable", 6, 256, 8);
    if (!loop.Started() || !findings.Expect(queue.Get() != nullptr, "FWM_QUE_CreateNew returned NULL")) {
        return;
    }
    {
        std::lock_guard<std::mutex> lock(g_readable.mu);
        g_readable.queue = queue.Get();
        g_readable.api = &api;
    }
    uint32_t ret = api.FWM_QUE_EpollReg(queue.Get(), loop.EpollId(), OnReadable);
    if (!findings.Expect(ret == 0, "FWM_QUE_EpollReg returned " + Str(ret))) {
        return;
    }
    for (uint64_t i = 0; i < kCount; i++) {
        queue.Write(&i, 1);
        if (i % 25 == 0) {
            std::this_thread::sleep_for(5ms);
        }
    }
    auto readAll = [] {
        std::lock_guard<std::mutex> lock(g_readable.mu);
        return g_readable.values.size() >= kCount;
    };
    findings.Expect(WaitFor(readAll, 3s), "the loop did not call the readable callback until the queue was empty");
    std::this_thread::sleep_for(200ms); /* calls on the empty queue would show now */
    std::lock_guard<std::mutex> lock(g_readable.mu);
    for (size_t i = 0; i < g_readable.values.size(); i++) {
        if (!findings.Expect(g_readable.values[i] == i, "the callback read element " + Str(g_readable.values[i]) +
                                                            " in place " + Str(i))) {
            break;
        }
    }
    findings.Expect(g_readable.emptyCalls == 0, "the readable callback ran " + Str(g_readable.emptyCalls) +
                                                    " times with the queue empty");
    findings.Expect(g_readable.wrongHandle == 0, "the readable callback got another pointer than the queue's handle");
    findings.Expect(g_readable.offLoop == 0,
                    "the readable callback ran " + Str(g_readable.offLoop) + " times off the loop's thread");
    g_readable.queue = nullptr;
}

/* Flow-control events in arrival order. */
struct FlowLog {
    std::mutex mu;
    std::vector<uint32_t> events;
};
FlowLog g_flow;

uint32_t OnFlowCtrl(uint32_t event)
{
    std::lock_guard<std::mutex> lock(g_flow.mu);
    g_flow.events.push_back(event);
    return 0;
}

std::vector<uint32_t> FlowEvents()
{
    std::lock_guard<std::mutex> lock(g_flow.mu);
    return g_flow.events;
}

std::string EventList(const std::vector<uint32_t> &events)
{
    std::string text = "[";
    for (uint32_t e : events) {
        text += (text.size() > 1 ? "," : "") + Str(e);
    }
    return text + "]";
}

void CheckFlowControl(const PlatformApi &api, const CheckSettings &, Findings &findings)
{
    int32_t epollId = api.FWM_EPOLL_Create();
    Queue queue(api, "check.flow", 1, 100, 8);
    if (!findings.Expect(epollId >= 0 && queue.Get() != nullptr, "cannot create the epoll instance or the queue")) {
        return;
    }
    MDTLM_QUE_MONITOR_CFG cfg{80, 20, static_cast<uint32_t>(epollId), 0, 0};
    uint32_t ret = api.FWM_QUE_MonitorReg(queue.Get(), &cfg, OnFlowCtrl);
    if (!findings.Expect(ret == 0, "FWM_QUE_MonitorReg returned " + Str(ret))) {
        return;
    }
    uint32_t fill = 0;
    uint64_t element = 0;
    auto moveTo = [&](uint32_t target) {
        for (; fill < target; fill++) {
            queue.Write(&element, 1);
        }
        for (; fill > target; fill--) {
            queue.Read(&element, 1);
        }
    };
    /* Fill levels to walk, with the events expected after each: one start
     * (0) per rise through the high mark (80), one stop (1) per fall through
     * the low mark (20), nothing else, in that order, twice over. */
    struct Step {
        uint32_t fill;
        std::vector<uint32_t> events;
    };
    const Step steps[] = {{79, {}},        {81, {0}},          {95, {0}},          {21, {0}},
                          {19, {0, 1}},    {0, {0, 1}},        {81, {0, 1, 0}},    {100, {0, 1, 0}},
                          {50, {0, 1, 0}}, {19, {0, 1, 0, 1}}, {70, {0, 1, 0, 1}}, {0, {0, 1, 0, 1}}};
    for (const Step &step : steps) {
        uint32_t from = fill;
        moveTo(step.fill);
        auto arrived = [&] { return FlowEvents().size() >= step.events.size(); };
        WaitFor(arrived, 500ms);
        std::this_thread::sleep_for(20ms); /* an extra event would show now */
        std::vector<uint32_t> seen = FlowEvents();
        if (!findings.Expect(seen == step.events, "moving the fill level from " + Str(from) + " to " + Str(step.fill) +
                                                      " (marks 80/20) left the events " + EventList(seen) +
                                                      ", expected " + EventList(step.events))) {
            break;
        }
    }
    queue.Destroy();
    api.FWM_EPOLL_Destroy(static_cast<uint32_t>(epollId));
}

std::atomic<uint32_t> g_slowCalls{0};
const PlatformApi *g_slowApi = nullptr;

uint32_t OnReadableSlowly(void *queue)
{
    uint64_t value;
    g_slowApi->FWM_QUE_AsyRead(queue, &value, 1);
    g_slowCalls++;
    std::this_thread::sleep_for(1ms);
    return 0;
}

void CheckDestroy(const PlatformApi &api, const CheckSettings &, Findings &findings)
{
    LoopThread loop(api, findings);
    Queue queue(api, "check.destroy", 6, 1024, 8);
    if (!loop.Started() || !findings.Expect(queue.Get() != nullptr, "FWM_QUE_CreateNew returned NULL")) {
        return;
    }
    g_slowApi = &api;
    uint64_t values[1000] = {};
    queue.Write(values, 1000);
    uint32_t ret = api.FWM_QUE_EpollReg(queue.Get(), loop.EpollId(), OnReadableSlowly);
    if (!findings.Expect(ret == 0, "FWM_QUE_EpollReg returned " + Str(ret))) {
        return;
    }
    WaitFor([] { return g_slowCalls.load() >= 10; }, 2s);
    ret = queue.Destroy();
    findings.Expect(ret == 0, "FWM_QUE_Destory returned " + Str(ret));
    uint32_t atDestroy = g_slowCalls.load();
    std::this_thread::sleep_for(200ms);
    findings.Expect(g_slowCalls.load() == atDestroy, "the readable callback ran " + Str(g_slowCalls.load() - atDestroy) +
                                                          " more times after FWM_QUE_Destory returned");
}

const Rule kQueueRules[] = {
    {"queue.create", "the plug-in's two queues are created, registered on a loop and for flow control, and destroyed",
     CheckCreate},
    {"queue.depth", "a queue holds its depth and no more; a full write returns 0 at once, an empty read 0",
     CheckDepth},
    {"queue.order", "elements come out whole and in the order they went in, across the ring's wrap-around",
     CheckOrder},
    {"queue.writers", "writers on several threads lose nothing and keep each writer's order", CheckWriters},
    {"queue.epoll", "a queue on a loop calls its readable callback on the loop's thread while, and only while, "
                    "elements remain",
     CheckReadable},
    {"queue.flow-control", "one start (0) per rise through the high mark, one stop (1) per fall through the low mark",
     CheckFlowControl},
    {"queue.destroy", "no readable callback runs once FWM_QUE_Destory has returned", CheckDestroy},
};

} // namespace

std::span<const Rule> QueueRules()
{
    return kQueueRules;
}

} // namespace mdtlm::check
