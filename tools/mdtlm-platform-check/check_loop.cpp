/*
 * Tasks, the epoll loop, timers and the system time: the plug-in's worker
 * thread, its one-second tick and its time stamps.
 */
#include <atomic>
#include <ctime>
#include <thread>

#include "loop_thread.h"
#include "rule.h"

namespace mdtlm::check {
namespace {

using namespace std::chrono_literals;

std::atomic<bool> g_taskRan{false};
std::atomic<std::thread::id> g_taskThread{};

uint32_t TaskEntry()
{
    g_taskThread.store(std::this_thread::get_id());
    g_taskRan.store(true);
    return 0;
}

void CheckTask(const PlatformApi &api, const CheckSettings &, Findings &findings)
{
    constexpr uint32_t kUnset = 0xFFFFFFFFu;
    uint32_t taskId = kUnset;
    uint8_t param[32] = {};
    uint32_t ret = api.PAL_TaskCreate("MDTLM_VRALDCN_STATS", &taskId, TaskEntry, 1, 0, 0, param);
    if (!findings.Expect(ret == 0, "PAL_TaskCreate with the plug-in's arguments returned " + Str(ret))) {
        return;
    }
    findings.Expect(taskId != kUnset, "PAL_TaskCreate wrote no task id");
    if (findings.Expect(WaitFor([] { return g_taskRan.load(); }, 2s), "the entry did not run within 2 s")) {
        findings.Expect(g_taskThread.load() != std::this_thread::get_id(), "the entry ran on the caller's thread");
    }
}

void CheckEpoll(const PlatformApi &api, const CheckSettings &, Findings &findings)
{
    int32_t spare = api.FWM_EPOLL_Create();
    LoopThread loop(api, findings);
    if (!loop.Started()) {
        return;
    }
    findings.Expect(spare >= 0 && static_cast<uint32_t>(spare) != loop.EpollId(),
                    "two FWM_EPOLL_Create calls returned " + Str(spare) + " and " + Str(loop.EpollId()));
    std::this_thread::sleep_for(50ms); /* the loop is waiting now */
    findings.Expect(loop.Stop(), "FWM_EPOLL_Run did not return within 2 s of FWM_EPOLL_Destroy on another thread");
    if (spare >= 0) {
        api.FWM_EPOLL_Destroy(static_cast<uint32_t>(spare));
    }
}

std::atomic<uint32_t> g_ticks{0};
std::atomic<uint32_t> g_ticksOffLoop{0};

uint32_t OnTick()
{
    g_ticksOffLoop += !LoopThread::OnLoopThread();
    g_ticks++;
    return 0;
}

void CheckTimerPeriod(const PlatformApi &api, const CheckSettings &, Findings &findings)
{
    LoopThread loop(api, findings);
    if (!loop.Started()) {
        return;
    }
    int context = 0;
    auto start = std::chrono::steady_clock::now();
    int32_t timerId = api.FWM_TIMER_Create(100, OnTick, &context, loop.EpollId());
    /* The plug-in takes a stored id above 0 as "a timer exists". */
    if (!findings.Expect(timerId > 0, "FWM_TIMER_Create returned " + Str(timerId) + ", not an id above 0")) {
        return;
    }
    std::this_thread::sleep_until(start + 1050ms);
    uint32_t ticks = g_ticks.load();
    /* Ten periods of 100 ms; a loaded machine may lose a few or bunch them. */
    findings.Expect(ticks >= 6 && ticks <= 14,
                    "a 100 ms timer ran its callback " + Str(ticks) + " times in 1.05 s (expected about 10)");
    findings.Expect(g_ticksOffLoop.load() == 0, "the timer callback ran off the loop's thread");
    uint32_t ret = api.FWM_TIMER_Destroy(timerId);
    findings.Expect(ret == 0, "FWM_TIMER_Destroy returned " + Str(ret));
}

void CheckTimerDestroy(const PlatformApi &api, const CheckSettings &, Findings &findings)
{
    LoopThread loop(api, findings);
    if (!loop.Started()) {
        return;
    }
    int32_t timerId = api.FWM_TIMER_Create(20, OnTick, nullptr, loop.EpollId());
    if (!findings.Expect(timerId > 0, "FWM_TIMER_Create returned " + Str(timerId))) {
        return;
    }
    if (!findings.Expect(WaitFor([] { return g_ticks.load() >= 3; }, 2s), "a 20 ms timer did not run 3 times in 2 s")) {
        return;
    }
    uint32_t ret = api.FWM_TIMER_Destroy(timerId);
    findings.Expect(ret == 0, "FWM_TIMER_Destroy returned " + Str(ret));
    uint32_t atDestroy = g_ticks.load();
    std::this_thread::sleep_for(200ms);
    findings.Expect(g_ticks.load() == atDestroy,
                    "the callback ran " + Str(g_ticks.load() - atDestroy) + " times after FWM_TIMER_Destroy returned");
}

void CheckSystime(const PlatformApi &api, const CheckSettings &, Findings &findings)
{
    PAL_SYSTIME t{};
    std::time_t before = std::time(nullptr);
    uint32_t ret = api.PAL_SystimeGet(&t);
    std::time_t after = std::time(nullptr);
    if (!findings.Expect(ret == 0, "PAL_SystimeGet returned " + Str(ret))) {
        return;
    }
    const struct {
        const char *field;
        uint32_t value, low, high;
    } ranges[] = {{"month", t.month, 1, 12},       {"day", t.day, 1, 31},          {"hour", t.hour, 0, 23},
                  {"minute", t.minute, 0, 59},     {"second", t.second, 0, 60},    {"weekday", t.weekday, 0, 6},
                  {"millisecond", t.millisecond, 0, 999}, {"reserved", t.reserved, 0, 0}};
    for (const auto &range : ranges) {
        findings.Expect(range.value >= range.low && range.value <= range.high,
                        std::string(range.field) + " is " + Str(range.value));
    }
    std::tm fields{};
    fields.tm_year = t.year - 1900;
    fields.tm_mon = t.month - 1;
    fields.tm_mday = t.day;
    fields.tm_hour = t.hour;
    fields.tm_min = t.minute;
    fields.tm_sec = t.second;
    std::time_t stamp = timegm(&fields);
    findings.Expect(stamp >= before - 1 && stamp <= after + 1,
                    "PAL_SystimeGet is " + Str(stamp - before) + " s away from the UTC time");
    findings.Expect(fields.tm_wday == t.weekday, "weekday " + Str(t.weekday) + " for a date that is a weekday " +
                                                     Str(fields.tm_wday) + " (0 = Sunday)");
    uint32_t high = 0xFFFFFFFFu;
    uint32_t seconds = 0;
    ret = api.PAL_SystimeSecSince1970(&t, &high, &seconds);
    if (findings.Expect(ret == 0, "PAL_SystimeSecSince1970 returned " + Str(ret))) {
        findings.Expect(high == 0 && seconds == static_cast<uint32_t>(stamp),
                        "PAL_SystimeSecSince1970 gave high " + Str(high) + ", seconds " + Str(seconds) + " for " +
                            Str(stamp));
    }
}

const Rule kLoopRules[] = {
    {"task.create", "PAL_TaskCreate with the plug-in's arguments starts the entry on a thread of its own", CheckTask},
    {"epoll.destroy", "FWM_EPOLL_Destroy from another thread makes the running FWM_EPOLL_Run return", CheckEpoll},
    {"timer.period", "a timer gets an id above 0 and runs its callback once a period on the loop's thread",
     CheckTimerPeriod},
    {"timer.destroy", "no timer callback runs once FWM_TIMER_Destroy has returned", CheckTimerDestroy},
    {"systime", "PAL_SystimeGet gives the UTC time in range; PAL_SystimeSecSince1970 the matching seconds",
     CheckSystime},
};

} // namespace

std::span<const Rule> LoopRules()
{
    return kLoopRules;
}

} // namespace mdtlm::check
