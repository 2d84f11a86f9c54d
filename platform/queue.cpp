/*
 * Queues: bounded rings of fixed-size elements, safe for any number of
 * writers and readers (one mutex per queue), never blocking.
 *
 * A queue registered on an epoll instance owns an eventfd whose counter is
 * non-zero exactly while the queue holds elements, so the level-triggered loop
 * calls the readable callback again and again until the queue is empty.
 *
 * Flow-control events are computed under the queue's lock and delivered in
 * the order they arose, without the lock held: the first thread that finds
 * events pending delivers them all, and a thread that arrives while another is
 * delivering leaves its events to that one. So a callback may use the queue,
 * and events never overtake each other.
 */
#include <sys/eventfd.h>

#include <condition_variable>
#include <cstring>
#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <unordered_map>

#include "epoll_loop.h"
#include "mdtlm_platform.h"
#include "platform_internal.h"

namespace {

using ReadableFn = uint32_t (*)(void *queue);
using FlowCtrlFn = uint32_t (*)(uint32_t event);

constexpr uint32_t kFlowStart = 0;
constexpr uint32_t kFlowStop = 1;
constexpr size_t kMaxQueueBytes = size_t{1} << 30;

class Queue : public std::enable_shared_from_this<Queue> {
public:
    Queue(const char *name, uint32_t mode, uint32_t depth, uint32_t elementSize, uint64_t serial)
        : name_(name), mode_(mode), depth_(depth), elementSize_(elementSize), serial_(serial),
          ring_(new (std::nothrow) uint8_t[size_t{depth} * elementSize])
    {
    }

    bool Allocated() const { return ring_ != nullptr; }
    const std::string &Name() const { return name_; }
    uint64_t Serial() const { return serial_; }

    int32_t Write(const uint8_t *elements, uint32_t count)
    {
        uint32_t written;
        bool flowPending;
        {
            std::lock_guard<std::mutex> lock(mu_);
            if (closed_)
                return -1;
            written = std::min(count, depth_ - count_);
            uint32_t tail = Wrap(head_ + count_);
            CopyIn(tail, elements, written);
            count_ += written;
            if (monitored_ && !flowStarted_ && count_ >= highMark_) {
                flowStarted_ = true;
                pendingFlow_.push_back(kFlowStart);
            }
            SyncReadableLocked();
            flowPending = !pendingFlow_.empty();
        }
        /* Whoever queues a flow event delivers it; with none queued the
         * delivery step would only take the lock again to find that out. */
        if (flowPending)
            DeliverFlowEvents();
        return static_cast<int32_t>(written);
    }

    int32_t Read(uint8_t *elements, uint32_t count)
    {
        uint32_t read;
        bool flowPending;
        {
            std::lock_guard<std::mutex> lock(mu_);
            if (closed_)
                return -1;
            read = std::min(count, count_);
            CopyOut(elements, read);
            head_ = Wrap(head_ + read);
            count_ -= read;
            if (monitored_ && flowStarted_ && count_ <= lowMark_) {
                flowStarted_ = false;
                pendingFlow_.push_back(kFlowStop);
            }
            SyncReadableLocked();
            flowPending = !pendingFlow_.empty();
        }
        if (flowPending)
            DeliverFlowEvents();
        return static_cast<int32_t>(read);
    }

    int32_t Count()
    {
        std::lock_guard<std::mutex> lock(mu_);
        return static_cast<int32_t>(count_);
    }

    bool RegisterReadable(uint32_t epollId, ReadableFn readable)
    {
        {
            std::lock_guard<std::mutex> lock(mu_);
            if (!eventFd_.Valid()) {
                eventFd_.Reset(eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC));
                if (!eventFd_.Valid())
                    return false;
            }
            readable_ = readable;
            SyncReadableLocked();
        }
        std::weak_ptr<Queue> weak = weak_from_this();
        return registration_.Attach(epollId, eventFd_.Get(), [weak]() -> uint32_t {
            std::shared_ptr<Queue> queue = weak.lock();
            return queue ? queue->OnReadable() : 0;
        });
    }

    bool RegisterMonitor(const MDTLM_QUE_MONITOR_CFG &cfg, FlowCtrlFn flowCtrl)
    {
        if (cfg.highMark == 0 || cfg.highMark > depth_ || cfg.lowMark >= cfg.highMark)
            return false;
        std::lock_guard<std::mutex> lock(mu_);
        monitored_ = true;
        highMark_ = cfg.highMark;
        lowMark_ = cfg.lowMark;
        monitorEpollId_ = cfg.epollId;
        flowCtrl_ = flowCtrl;
        flowStarted_ = false;
        pendingFlow_.clear();
        return true;
    }

    /* Stops every callback: none runs on another thread once this returns. */
    void Close()
    {
        {
            std::unique_lock<std::mutex> lock(mu_);
            closed_ = true;
            pendingFlow_.clear();
            flowIdle_.wait(lock, [&] { return !delivering_ || deliverer_ == std::this_thread::get_id(); });
        }
        registration_.Detach();
        std::lock_guard<std::mutex> lock(mu_);
        eventFd_.Reset();
    }

private:
    uint32_t OnReadable()
    {
        ReadableFn readable;
        {
            std::lock_guard<std::mutex> lock(mu_);
            if (closed_ || count_ == 0 || readable_ == nullptr) {
                SyncReadableLocked();
                return 0;
            }
            readable = readable_;
        }
        readable(this);
        return 1;
    }

    /* Keeps the eventfd readable exactly while elements remain. */
    void SyncReadableLocked()
    {
        if (!eventFd_.Valid())
            return;
        bool wanted = count_ > 0 && !closed_;
        if (wanted && !signalled_) {
            uint64_t one = 1;
            signalled_ = write(eventFd_.Get(), &one, sizeof(one)) == sizeof(one);
        } else if (!wanted && signalled_) {
            uint64_t drained;
            signalled_ = read(eventFd_.Get(), &drained, sizeof(drained)) != sizeof(drained);
        }
    }

    void DeliverFlowEvents()
    {
        std::unique_lock<std::mutex> lock(mu_);
        if (delivering_ || pendingFlow_.empty())
            return;
        delivering_ = true;
        deliverer_ = std::this_thread::get_id();
        while (!pendingFlow_.empty() && !closed_) {
            uint32_t event = pendingFlow_.front();
            pendingFlow_.pop_front();
            FlowCtrlFn flowCtrl = flowCtrl_;
            lock.unlock();
            flowCtrl(event);
            lock.lock();
        }
        delivering_ = false;
        deliverer_ = std::thread::id();
        lock.unlock();
        flowIdle_.notify_all();
    }

    /* A slot index past the end of the ring, back into it (both terms are
     * below the depth). */
    uint32_t Wrap(uint32_t slot) const { return slot >= depth_ ? slot - depth_ : slot; }

    void CopyIn(uint32_t slot, const uint8_t *src, uint32_t count)
    {
        uint32_t first = std::min(count, depth_ - slot);
        std::memcpy(ring_.get() + size_t{slot} * elementSize_, src, size_t{first} * elementSize_);
        if (count > first)
            std::memcpy(ring_.get(), src + size_t{first} * elementSize_, size_t{count - first} * elementSize_);
    }

    void CopyOut(uint8_t *dst, uint32_t count)
    {
        uint32_t first = std::min(count, depth_ - head_);
        std::memcpy(dst, ring_.get() + size_t{head_} * elementSize_, size_t{first} * elementSize_);
        if (count > first)
            std::memcpy(dst + size_t{first} * elementSize_, ring_.get(), size_t{count - first} * elementSize_);
    }

    const std::string name_;
    const uint32_t mode_; /* recorded as given; the ring behaves the same for every mode */
    const uint32_t depth_;
    const uint32_t elementSize_;
    const uint64_t serial_;
    std::unique_ptr<uint8_t[]> ring_;

    std::mutex mu_;
    uint32_t head_ = 0;
    uint32_t count_ = 0;
    bool closed_ = false;

    mdtlm_host::UniqueFd eventFd_;
    bool signalled_ = false;
    ReadableFn readable_ = nullptr;
    mdtlm_host::LoopRegistration registration_;

    bool monitored_ = false;
    uint32_t highMark_ = 0;
    uint32_t lowMark_ = 0;
    uint32_t monitorEpollId_ = 0;
    FlowCtrlFn flowCtrl_ = nullptr;
    bool flowStarted_ = false;
    std::deque<uint32_t> pendingFlow_;
    bool delivering_ = false;
    std::thread::id deliverer_;
    std::condition_variable flowIdle_;
};

/* Live queues by handle; a handle that is not here is refused. */
struct QueueTable {
    std::mutex mu;
    std::unordered_map<const void *, std::shared_ptr<Queue>> live;
    uint64_t nextSerial = 1;
};

QueueTable &Queues()
{
    static QueueTable *table = new QueueTable(); /* lives as long as the process */
    return *table;
}

std::shared_ptr<Queue> FindQueue(const void *handle)
{
    if (handle == nullptr)
        return nullptr;
    QueueTable &table = Queues();
    std::lock_guard<std::mutex> lock(table.mu);
    auto it = table.live.find(handle);
    return it == table.live.end() ? nullptr : it->second;
}

/* The queue a thread last wrote to or read from, so that a thread moving
 * elements one by one through the same queue does not take the table's lock
 * and search it every time. The cache holds no reference: while the queue
 * object lives its address cannot name another queue, and a queue destroyed
 * since is either gone (the cache misses) or closed (its reads and writes
 * refuse, as for an unknown handle). */
struct LastQueue {
    const void *handle = nullptr;
    std::weak_ptr<Queue> queue;
};

/* The calling thread's note: null before its first transfer and once the note
 * is gone at the thread's end. Hosts link this library, so the pointer sits in
 * the static TLS block and is reached without a call; being a plain pointer,
 * it needs no per-thread construction check on every transfer either. */
constinit thread_local LastQueue *t_lastQueue __attribute__((tls_model("initial-exec"))) = nullptr;

/* Owns a thread's note and withdraws it when the thread ends. */
struct LastQueueOwner {
    LastQueue note;
    LastQueueOwner() { t_lastQueue = &note; }
    ~LastQueueOwner() { t_lastQueue = nullptr; }
    LastQueueOwner(const LastQueueOwner &) = delete;
    LastQueueOwner &operator=(const LastQueueOwner &) = delete;
};

/* The note of a thread that has none yet; null when the thread is ending. */
__attribute__((noinline)) LastQueue *StartLastQueue()
{
    thread_local LastQueueOwner owner;
    return t_lastQueue;
}

std::shared_ptr<Queue> FindQueueForTransfer(const void *handle)
{
    LastQueue *last = t_lastQueue;
    if (last == nullptr) [[unlikely]]
        last = StartLastQueue();
    if (last != nullptr && handle != nullptr && handle == last->handle) {
        if (std::shared_ptr<Queue> cached = last->queue.lock())
            return cached;
    }
    std::shared_ptr<Queue> found = FindQueue(handle);
    if (found != nullptr && last != nullptr) {
        last->handle = handle;
        last->queue = found;
    }
    return found;
}

} /* namespace */

MDTLM_PLATFORM_API void *FWM_QUE_CreateNew(const char *name, uint32_t mode, uint32_t depth, uint32_t elementSize)
{
    int64_t injected;
    if (mdtlm_host::FaultCheck(MDTLM_HOST_OP_QUE_CREATE, &injected))
        return nullptr;
    if (name == nullptr || depth == 0 || elementSize == 0 || uint64_t{depth} * elementSize > kMaxQueueBytes)
        return nullptr;

    QueueTable &table = Queues();
    std::lock_guard<std::mutex> lock(table.mu);
    auto queue = std::make_shared<Queue>(name, mode, depth, elementSize, table.nextSerial++);
    if (!queue->Allocated())
        return nullptr;
    void *handle = queue.get();
    table.live.emplace(handle, std::move(queue));
    return handle;
}

MDTLM_PLATFORM_API uint32_t FWM_QUE_EpollReg(void *queue, uint32_t epollId, uint32_t (*readable)(void *queue))
{
    int64_t injected;
    if (mdtlm_host::FaultCheck(MDTLM_HOST_OP_QUE_EPOLL_REG, &injected))
        return static_cast<uint32_t>(injected);
    std::shared_ptr<Queue> found = FindQueue(queue);
    if (found == nullptr || readable == nullptr)
        return 1;
    return found->RegisterReadable(epollId, readable) ? 0 : 1;
}

MDTLM_PLATFORM_API uint32_t FWM_QUE_MonitorReg(void *queue, const MDTLM_QUE_MONITOR_CFG *cfg,
                                               uint32_t (*flowCtrl)(uint32_t event))
{
    int64_t injected;
    if (mdtlm_host::FaultCheck(MDTLM_HOST_OP_QUE_MONITOR_REG, &injected))
        return static_cast<uint32_t>(injected);
    std::shared_ptr<Queue> found = FindQueue(queue);
    if (found == nullptr || cfg == nullptr || flowCtrl == nullptr)
        return 1;
    return found->RegisterMonitor(*cfg, flowCtrl) ? 0 : 1;
}

MDTLM_PLATFORM_API int32_t FWM_QUE_AsyWrite(void *queue, const void *elements, uint32_t count)
{
    int64_t injected;
    if (mdtlm_host::FaultCheck(MDTLM_HOST_OP_QUE_WRITE, &injected))
        return static_cast<int32_t>(injected);
    std::shared_ptr<Queue> found = FindQueueForTransfer(queue);
    if (found == nullptr || elements == nullptr || count > INT32_MAX)
        return -1;
    return found->Write(static_cast<const uint8_t *>(elements), count);
}

MDTLM_PLATFORM_API int32_t FWM_QUE_AsyRead(void *queue, void *elements, uint32_t count)
{
    int64_t injected;
    if (mdtlm_host::FaultCheck(MDTLM_HOST_OP_QUE_READ, &injected))
        return static_cast<int32_t>(injected);
    std::shared_ptr<Queue> found = FindQueueForTransfer(queue);
    if (found == nullptr || elements == nullptr || count > INT32_MAX)
        return -1;
    return found->Read(static_cast<uint8_t *>(elements), count);
}

MDTLM_PLATFORM_API uint32_t FWM_QUE_Destory(void *queue)
{
    int64_t injected;
    if (mdtlm_host::FaultCheck(MDTLM_HOST_OP_QUE_DESTROY, &injected))
        return static_cast<uint32_t>(injected);
    return mdtlm_host::TakeAndClose(Queues(), queue) ? 0 : 1;
}

uint32_t mdtlm_host::LiveQueues()
{
    QueueTable &table = Queues();
    std::lock_guard<std::mutex> lock(table.mu);
    return static_cast<uint32_t>(table.live.size());
}

MDTLM_PLATFORM_API void *MDTLM_HOST_QueueFind(const char *name)
{
    if (name == nullptr)
        return nullptr;
    QueueTable &table = Queues();
    std::lock_guard<std::mutex> lock(table.mu);
    const Queue *newest = nullptr;
    for (const auto &[handle, queue] : table.live) {
        if (queue->Name() == name && (newest == nullptr || queue->Serial() > newest->Serial()))
            newest = queue.get();
    }
    return const_cast<Queue *>(newest);
}

MDTLM_PLATFORM_API int32_t MDTLM_HOST_QueueCount(void *queue)
{
    std::shared_ptr<Queue> found = FindQueue(queue);
    return found ? found->Count() : -1;
}
