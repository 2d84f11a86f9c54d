/*
 * Epoll instances: a small table of epoll descriptors, the loop that runs one
 * (FWM_EPOLL_Run, or MDTLM_HOST_EpollPump for hosts that drive it by hand),
 * and the attach/detach protocol that the sources use.
 *
 * Each attached descriptor gets a token (never reused) that travels in the
 * epoll event; the loop looks the token up under the instance's lock before
 * calling, so an event that names a source detached since the wait is simply
 * skipped. A dispatch counts itself in its entry while it runs, which is what
 * Detach waits on. Destroying an instance wakes its loop through an eventfd
 * that is never drained, so every later wait returns at once and the loop sees
 * the instance is gone.
 */
#include <sys/epoll.h>
#include <sys/eventfd.h>

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <mutex>
#include <unordered_map>
#include <vector>

#include "epoll_loop.h"
#include "mdtlm_platform.h"
#include "platform_internal.h"

namespace mdtlm_host {

struct LoopEntry {
    explicit LoopEntry(ReadyFn fn) : onReady(std::move(fn)) {}
    ReadyFn onReady;
    uint32_t inflight = 0; /* dispatches running now; guarded by the instance's mutex */
};

class EpollInstance {
public:
    UniqueFd epfd;
    UniqueFd wakefd;
    std::mutex mu;
    std::condition_variable changed; /* a dispatch or a loop has ended */
    std::atomic<bool> destroyed{false};
    uint32_t loopers = 0; /* threads inside Run or Pump on this instance */
    std::unordered_map<uint64_t, std::shared_ptr<LoopEntry>> entries;
};

} /* namespace mdtlm_host */

using mdtlm_host::EpollInstance;
using mdtlm_host::LoopEntry;

namespace {

constexpr uint32_t kMaxInstances = 64;
constexpr uint32_t kMaxEventsPerWait = 64;
constexpr uint64_t kWakeToken = 0;

struct InstanceTable {
    std::mutex mu;
    std::shared_ptr<EpollInstance> slots[kMaxInstances];
};

InstanceTable &Instances()
{
    static InstanceTable *table = new InstanceTable(); /* lives as long as the process */
    return *table;
}

std::atomic<uint64_t> g_nextToken{kWakeToken + 1};

/*
 * What the calling thread is inside of, innermost last: the instances whose
 * loop it runs and the entries whose readiness function it runs. A callback
 * may destroy its own source or its own instance; the waits below leave out
 * what the calling thread itself holds, which would otherwise never end.
 */
thread_local std::vector<const EpollInstance *> t_running;
thread_local std::vector<const LoopEntry *> t_dispatching;

template <typename T>
uint32_t HeldByThisThread(const std::vector<const T *> &held, const T *item)
{
    return static_cast<uint32_t>(std::count(held.begin(), held.end(), item));
}

std::shared_ptr<EpollInstance> LookupLive(uint32_t epollId)
{
    if (epollId >= kMaxInstances)
        return nullptr;
    InstanceTable &table = Instances();
    std::lock_guard<std::mutex> lock(table.mu);
    std::shared_ptr<EpollInstance> instance = table.slots[epollId];
    if (instance == nullptr || instance->destroyed.load())
        return nullptr;
    return instance;
}

/* Marks the calling thread as running the instance's loop for its lifetime. */
class LooperScope {
public:
    explicit LooperScope(EpollInstance &instance) : instance_(instance)
    {
        std::lock_guard<std::mutex> lock(instance_.mu);
        instance_.loopers++;
        t_running.push_back(&instance_);
    }
    ~LooperScope()
    {
        t_running.pop_back();
        {
            std::lock_guard<std::mutex> lock(instance_.mu);
            instance_.loopers--;
        }
        instance_.changed.notify_all();
    }
    LooperScope(const LooperScope &) = delete;
    LooperScope &operator=(const LooperScope &) = delete;

private:
    EpollInstance &instance_;
};

struct PassResult {
    uint32_t ready = 0;     /* sources dispatched */
    uint32_t callbacks = 0; /* callbacks of their owners that ran */
};

/* One wait, then the readiness function of every ready source in turn. */
PassResult RunOnce(EpollInstance &instance, uint32_t maxEvents, int32_t timeoutMs)
{
    epoll_event events[kMaxEventsPerWait];
    int n = epoll_wait(instance.epfd.Get(), events, static_cast<int>(maxEvents), timeoutMs);
    PassResult result;
    for (int i = 0; i < n; i++) {
        uint64_t token = events[i].data.u64;
        if (token == kWakeToken)
            continue;
        std::shared_ptr<LoopEntry> entry;
        {
            std::lock_guard<std::mutex> lock(instance.mu);
            if (instance.destroyed.load())
                break;
            auto it = instance.entries.find(token);
            if (it == instance.entries.end())
                continue; /* detached since the wait */
            entry = it->second;
            entry->inflight++;
        }
        t_dispatching.push_back(entry.get());
        result.ready++;
        result.callbacks += entry->onReady();
        t_dispatching.pop_back();
        {
            std::lock_guard<std::mutex> lock(instance.mu);
            entry->inflight--;
        }
        instance.changed.notify_all();
    }
    return result;
}

} /* namespace */

namespace mdtlm_host {

bool EpollExists(uint32_t epollId)
{
    return LookupLive(epollId) != nullptr;
}

bool LoopRegistration::Attach(uint32_t epollId, int fd, ReadyFn onReady)
{
    Detach();
    std::shared_ptr<EpollInstance> instance = LookupLive(epollId);
    if (instance == nullptr || fd < 0)
        return false;
    auto entry = std::make_shared<LoopEntry>(std::move(onReady));
    uint64_t token = g_nextToken.fetch_add(1);
    {
        std::lock_guard<std::mutex> lock(instance->mu);
        if (instance->destroyed.load())
            return false;
        epoll_event ev{};
        ev.events = EPOLLIN;
        ev.data.u64 = token;
        if (epoll_ctl(instance->epfd.Get(), EPOLL_CTL_ADD, fd, &ev) != 0)
            return false;
        instance->entries.emplace(token, entry);
    }
    instance_ = instance;
    entry_ = std::move(entry);
    token_ = token;
    fd_ = fd;
    return true;
}

void LoopRegistration::Detach()
{
    if (entry_ == nullptr)
        return;
    /* An instance that no longer exists has no loop left that could call us. */
    if (std::shared_ptr<EpollInstance> instance = instance_.lock()) {
        std::unique_lock<std::mutex> lock(instance->mu);
        if (instance->entries.erase(token_) > 0)
            epoll_ctl(instance->epfd.Get(), EPOLL_CTL_DEL, fd_, nullptr);
        uint32_t own = HeldByThisThread(t_dispatching, static_cast<const LoopEntry *>(entry_.get()));
        instance->changed.wait(lock, [&] { return entry_->inflight <= own; });
    }
    instance_.reset();
    entry_.reset();
    token_ = 0;
    fd_ = -1;
}

} /* namespace mdtlm_host */

MDTLM_PLATFORM_API int32_t FWM_EPOLL_Create(void)
{
    int64_t injected;
    if (mdtlm_host::FaultCheck(MDTLM_HOST_OP_EPOLL_CREATE, &injected))
        return static_cast<int32_t>(injected);

    auto instance = std::make_shared<EpollInstance>();
    instance->epfd.Reset(epoll_create1(EPOLL_CLOEXEC));
    instance->wakefd.Reset(eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC));
    if (!instance->epfd.Valid() || !instance->wakefd.Valid())
        return -1;
    epoll_event ev{};
    ev.events = EPOLLIN;
    ev.data.u64 = kWakeToken;
    if (epoll_ctl(instance->epfd.Get(), EPOLL_CTL_ADD, instance->wakefd.Get(), &ev) != 0)
        return -1;

    InstanceTable &table = Instances();
    std::lock_guard<std::mutex> lock(table.mu);
    for (uint32_t id = 0; id < kMaxInstances; id++) {
        if (table.slots[id] == nullptr) {
            table.slots[id] = std::move(instance);
            return static_cast<int32_t>(id);
        }
    }
    return -1;
}

MDTLM_PLATFORM_API uint32_t FWM_EPOLL_Run(uint32_t epollId, uint32_t eventsPerWait, int32_t waitTimeoutMs)
{
    int64_t injected;
    if (mdtlm_host::FaultCheck(MDTLM_HOST_OP_EPOLL_RUN, &injected))
        return static_cast<uint32_t>(injected);

    std::shared_ptr<EpollInstance> instance = LookupLive(epollId);
    if (instance == nullptr)
        return 1;
    uint32_t maxEvents = std::clamp(eventsPerWait, 1u, kMaxEventsPerWait);
    LooperScope looping(*instance);
    while (!instance->destroyed.load())
        RunOnce(*instance, maxEvents, waitTimeoutMs);
    return 0;
}

MDTLM_PLATFORM_API uint32_t FWM_EPOLL_Destroy(uint32_t epollId)
{
    int64_t injected;
    if (mdtlm_host::FaultCheck(MDTLM_HOST_OP_EPOLL_DESTROY, &injected))
        return static_cast<uint32_t>(injected);
    if (epollId >= kMaxInstances)
        return 1;

    std::shared_ptr<EpollInstance> instance;
    {
        InstanceTable &table = Instances();
        std::lock_guard<std::mutex> lock(table.mu);
        instance = std::move(table.slots[epollId]);
        if (instance == nullptr)
            return 1;
        std::lock_guard<std::mutex> instanceLock(instance->mu);
        instance->destroyed.store(true);
        instance->entries.clear(); /* the sources' memberships are dropped */
    }

    uint64_t one = 1;
    ssize_t written = write(instance->wakefd.Get(), &one, sizeof(one));
    (void)written; /* an eventfd write fails only when its counter would overflow */

    /* Wait for the loops on other threads to leave; a loop on this thread
     * (Destroy called from one of its callbacks) returns after the callback. */
    std::unique_lock<std::mutex> lock(instance->mu);
    uint32_t own = HeldByThisThread(t_running, static_cast<const EpollInstance *>(instance.get()));
    instance->changed.wait(lock, [&] { return instance->loopers <= own; });
    return 0;
}

uint32_t mdtlm_host::LiveEpolls()
{
    InstanceTable &table = Instances();
    std::lock_guard<std::mutex> lock(table.mu);
    uint32_t live = 0;
    for (const auto &slot : table.slots) {
        live += slot != nullptr ? 1 : 0;
    }
    return live;
}

MDTLM_PLATFORM_API uint32_t MDTLM_HOST_EpollPump(uint32_t epollId, int32_t timeoutMs, int drain)
{
    std::shared_ptr<EpollInstance> instance = LookupLive(epollId);
    if (instance == nullptr)
        return 0;
    LooperScope looping(*instance);
    uint32_t callbacks = 0;
    int32_t wait = timeoutMs;
    while (!instance->destroyed.load()) {
        PassResult pass = RunOnce(*instance, kMaxEventsPerWait, wait);
        callbacks += pass.callbacks;
        if (!drain || pass.ready == 0)
            break;
        wait = 0;
    }
    return callbacks;
}
