/*
 * Periodic timers on timerfd, run by an epoll instance's loop.
 *
 * Every timer has two descriptors on its loop: the timerfd, armed with the
 * period while the clock is real, and an eventfd that MDTLM_HOST_TimerFire
 * adds expirations to. The loop reads both and calls the callback once per
 * expiration, so a manual clock and a real one look the same to the callback.
 */
#include <sys/eventfd.h>
#include <sys/timerfd.h>

#include <atomic>
#include <map>
#include <memory>
#include <mutex>

#include "epoll_loop.h"
#include "mdtlm_platform.h"
#include "platform_internal.h"

namespace {

using TimerFn = uint32_t (*)(void);

std::atomic<bool> g_manualClock{false};

/* Reads an expiration counter (timerfd or eventfd); 0 when there is none. */
uint64_t TakeExpirations(int fd)
{
    uint64_t expirations = 0;
    if (read(fd, &expirations, sizeof(expirations)) != sizeof(expirations))
        return 0;
    return expirations;
}

class Timer : public std::enable_shared_from_this<Timer> {
public:
    Timer(uint32_t periodMs, TimerFn callback, void *context)
        : periodMs_(periodMs), callback_(callback), context_(context)
    {
    }

    bool Open(uint32_t epollId)
    {
        timerFd_.Reset(timerfd_create(CLOCK_MONOTONIC, TFD_NONBLOCK | TFD_CLOEXEC));
        tickFd_.Reset(eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC));
        if (!timerFd_.Valid() || !tickFd_.Valid())
            return false;
        std::weak_ptr<Timer> weak = weak_from_this();
        auto onReady = [weak]() -> uint32_t {
            std::shared_ptr<Timer> timer = weak.lock();
            return timer ? timer->OnReady() : 0;
        };
        return timerReg_.Attach(epollId, timerFd_.Get(), onReady) && tickReg_.Attach(epollId, tickFd_.Get(), onReady);
    }

    bool Arm(bool running)
    {
        std::lock_guard<std::mutex> lock(mu_);
        if (closed_)
            return false;
        itimerspec period{};
        if (running) {
            period.it_interval.tv_sec = periodMs_ / 1000;
            period.it_interval.tv_nsec = static_cast<long>(periodMs_ % 1000) * 1000000L;
            period.it_value = period.it_interval;
        }
        return timerfd_settime(timerFd_.Get(), 0, &period, nullptr) == 0;
    }

    bool Fire(uint32_t ticks)
    {
        std::lock_guard<std::mutex> lock(mu_);
        if (closed_)
            return false;
        uint64_t added = ticks;
        return ticks == 0 || write(tickFd_.Get(), &added, sizeof(added)) == sizeof(added);
    }

    /* Stops the callback: it does not run on another thread once this returns. */
    void Close()
    {
        {
            std::lock_guard<std::mutex> lock(mu_);
            closed_ = true;
        }
        timerReg_.Detach();
        tickReg_.Detach();
        std::lock_guard<std::mutex> lock(mu_);
        timerFd_.Reset();
        tickFd_.Reset();
    }

private:
    uint32_t OnReady()
    {
        uint64_t due;
        {
            std::lock_guard<std::mutex> lock(mu_);
            if (closed_)
                return 0;
            due = TakeExpirations(timerFd_.Get()) + TakeExpirations(tickFd_.Get());
        }
        uint32_t ran = 0;
        for (uint64_t i = 0; i < due; i++) {
            {
                std::lock_guard<std::mutex> lock(mu_);
                if (closed_)
                    break; /* the callback destroyed its own timer */
            }
            callback_();
            ran++;
        }
        return ran;
    }

    const uint32_t periodMs_;
    const TimerFn callback_;
    void *const context_; /* kept for the owner; the callback takes no argument */

    std::mutex mu_;
    bool closed_ = false;
    mdtlm_host::UniqueFd timerFd_;
    mdtlm_host::UniqueFd tickFd_;
    mdtlm_host::LoopRegistration timerReg_;
    mdtlm_host::LoopRegistration tickReg_;
};

/* Live timers by id; ids start at 1 and are never reused. */
struct TimerTable {
    std::mutex mu;
    std::map<int32_t, std::shared_ptr<Timer>> live;
    int32_t nextId = 1;
};

TimerTable &Timers()
{
    static TimerTable *table = new TimerTable(); /* lives as long as the process */
    return *table;
}

std::shared_ptr<Timer> FindTimer(int32_t timerId)
{
    TimerTable &table = Timers();
    std::lock_guard<std::mutex> lock(table.mu);
    auto it = table.live.find(timerId);
    return it == table.live.end() ? nullptr : it->second;
}

} /* namespace */

MDTLM_PLATFORM_API int32_t FWM_TIMER_Create(uint32_t periodMs, uint32_t (*callback)(void), void *context,
                                            uint32_t epollId)
{
    int64_t injected;
    if (mdtlm_host::FaultCheck(MDTLM_HOST_OP_TIMER_CREATE, &injected))
        return static_cast<int32_t>(injected);
    if (periodMs == 0 || callback == nullptr)
        return -1;

    auto timer = std::make_shared<Timer>(periodMs, callback, context);
    if (!timer->Open(epollId)) {
        timer->Close();
        return -1;
    }
    /* Armed under the table's lock, so a concurrent switch of the clock
     * cannot leave a new timer running on the wrong one. */
    TimerTable &table = Timers();
    std::unique_lock<std::mutex> lock(table.mu);
    if (table.nextId == INT32_MAX || !timer->Arm(!g_manualClock.load())) {
        lock.unlock();
        timer->Close();
        return -1;
    }
    int32_t id = table.nextId++;
    table.live.emplace(id, std::move(timer));
    return id;
}

MDTLM_PLATFORM_API uint32_t FWM_TIMER_Destroy(int32_t timerId)
{
    int64_t injected;
    if (mdtlm_host::FaultCheck(MDTLM_HOST_OP_TIMER_DESTROY, &injected))
        return static_cast<uint32_t>(injected);
    return mdtlm_host::TakeAndClose(Timers(), timerId) ? 0 : 1;
}

uint32_t mdtlm_host::LiveTimers()
{
    TimerTable &table = Timers();
    std::lock_guard<std::mutex> lock(table.mu);
    return static_cast<uint32_t>(table.live.size());
}

MDTLM_PLATFORM_API void MDTLM_HOST_SetManualClock(int enabled)
{
    TimerTable &table = Timers();
    std::lock_guard<std::mutex> lock(table.mu);
    g_manualClock.store(enabled != 0);
    for (auto &[id, timer] : table.live)
        timer->Arm(enabled == 0);
}

MDTLM_PLATFORM_API uint32_t MDTLM_HOST_TimerFire(int32_t timerId, uint32_t ticks)
{
    std::shared_ptr<Timer> found = FindTimer(timerId);
    if (found == nullptr)
        return 1;
    return found->Fire(ticks) ? 0 : 1;
}
