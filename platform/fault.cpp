/*
 * Fault injection and call counting for every platform operation, and the
 * count of live platform objects.
 *
 * Each operation has a call counter and an optional rule "let `skip` calls
 * through, then fail the next `count`". Every thread counts its own calls in
 * its own record, so a call costs a plain add with no locked instruction; the
 * totals sum the records of the running threads and what the threads that
 * have ended left behind. The rule is consulted under a lock only while one is
 * armed, so the bounds-checked copies that the plug-in makes for every message
 * stay cheap.
 */
#include <pthread.h>

#include <atomic>
#include <mutex>

#include "platform_internal.h"

namespace {

struct FaultRule {
    uint32_t skip = 0;
    uint32_t count = 0;
    int64_t result = 0;
};

/* The calls one thread has made. Only that thread adds to `calls`; the
 * readers load them under the table's `callsMu`, which also guards `atReset`
 * (each count when the totals were last reset) and the list links. */
struct ThreadCalls {
    std::atomic<uint64_t> calls[MDTLM_HOST_OP_COUNT] = {};
    uint64_t atReset[MDTLM_HOST_OP_COUNT] = {};
    ThreadCalls *prev = nullptr;
    ThreadCalls *next = nullptr;
};

struct FaultTable {
    std::mutex mu;
    FaultRule rules[MDTLM_HOST_OP_COUNT];

    std::mutex callsMu;
    ThreadCalls *threads = nullptr;         /* records of the running threads */
    uint64_t ended[MDTLM_HOST_OP_COUNT] = {}; /* calls since the last reset of threads that have ended */
    pthread_key_t threadEnd{};              /* hands a thread's record back when it ends */
};

/* Whether a rule is armed for each operation: read on every call, so it sits
 * apart from the table and needs no lookup. */
constinit std::atomic<bool> g_faultArmed[MDTLM_HOST_OP_COUNT] = {};

/* The calling thread's record; null until its first platform call. Hosts link
 * this library, so it sits in the static TLS block and is reached without a
 * call. */
constinit thread_local ThreadCalls *t_threadCalls __attribute__((tls_model("initial-exec"))) = nullptr;

void EndThreadCalls(void *record);

FaultTable &Faults()
{
    static FaultTable *table = [] {
        auto *created = new FaultTable(); /* lives as long as the process */
        (void)pthread_key_create(&created->threadEnd, EndThreadCalls);
        return created;
    }();
    return *table;
}

/* Folds an ending thread's calls into the totals and drops its record. */
void EndThreadCalls(void *record)
{
    auto *mine = static_cast<ThreadCalls *>(record);
    FaultTable &t = Faults();
    {
        std::lock_guard<std::mutex> lock(t.callsMu);
        for (int op = 0; op < MDTLM_HOST_OP_COUNT; op++)
            t.ended[op] += mine->calls[op].load(std::memory_order_relaxed) - mine->atReset[op];
        (mine->prev != nullptr ? mine->prev->next : t.threads) = mine->next;
        if (mine->next != nullptr)
            mine->next->prev = mine->prev;
    }
    if (t_threadCalls == mine)
        t_threadCalls = nullptr;
    delete mine;
}

__attribute__((noinline)) ThreadCalls &StartThreadCalls()
{
    FaultTable &t = Faults();
    auto *mine = new ThreadCalls();
    {
        std::lock_guard<std::mutex> lock(t.callsMu);
        mine->next = t.threads;
        if (t.threads != nullptr)
            t.threads->prev = mine;
        t.threads = mine;
    }
    (void)pthread_setspecific(t.threadEnd, mine);
    t_threadCalls = mine;
    return *mine;
}

/* Whether the armed rule of `op` claims this call. */
__attribute__((noinline)) bool ClaimArmedCall(MDTLM_HOST_OP op, int64_t *result)
{
    FaultTable &t = Faults();
    std::lock_guard<std::mutex> lock(t.mu);
    FaultRule &rule = t.rules[op];
    if (rule.count == 0)
        return false;
    if (rule.skip > 0) {
        rule.skip--;
        return false;
    }
    rule.count--;
    if (rule.count == 0)
        g_faultArmed[op].store(false, std::memory_order_release);
    *result = rule.result;
    return true;
}

bool ValidOp(MDTLM_HOST_OP op)
{
    return static_cast<int>(op) >= 0 && op < MDTLM_HOST_OP_COUNT;
}

} /* namespace */

namespace mdtlm_host {

bool FaultCheck(MDTLM_HOST_OP op, int64_t *result)
{
    ThreadCalls *mine = t_threadCalls;
    if (mine == nullptr) [[unlikely]]
        mine = &StartThreadCalls();
    /* Only this thread writes its counts: a load and a store, no locked add. */
    std::atomic<uint64_t> &calls = mine->calls[op];
    calls.store(calls.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
    if (!g_faultArmed[op].load(std::memory_order_acquire)) [[likely]]
        return false;
    return ClaimArmedCall(op, result);
}

} /* namespace mdtlm_host */

MDTLM_PLATFORM_API void MDTLM_HOST_FaultSet(MDTLM_HOST_OP op, uint32_t skip, uint32_t count, int64_t result)
{
    if (!ValidOp(op))
        return;
    FaultTable &t = Faults();
    std::lock_guard<std::mutex> lock(t.mu);
    t.rules[op] = FaultRule{skip, count, result};
    g_faultArmed[op].store(count > 0, std::memory_order_release);
}

MDTLM_PLATFORM_API void MDTLM_HOST_FaultClear(void)
{
    FaultTable &t = Faults();
    std::lock_guard<std::mutex> lock(t.mu);
    for (int op = 0; op < MDTLM_HOST_OP_COUNT; op++) {
        t.rules[op] = FaultRule{};
        g_faultArmed[op].store(false, std::memory_order_release);
    }
}

MDTLM_PLATFORM_API uint64_t MDTLM_HOST_CallCount(MDTLM_HOST_OP op)
{
    if (!ValidOp(op))
        return 0;
    FaultTable &t = Faults();
    std::lock_guard<std::mutex> lock(t.callsMu);
    uint64_t total = t.ended[op];
    for (const ThreadCalls *thread = t.threads; thread != nullptr; thread = thread->next)
        total += thread->calls[op].load(std::memory_order_relaxed) - thread->atReset[op];
    return total;
}

MDTLM_PLATFORM_API void MDTLM_HOST_CallCountReset(void)
{
    FaultTable &t = Faults();
    std::lock_guard<std::mutex> lock(t.callsMu);
    for (int op = 0; op < MDTLM_HOST_OP_COUNT; op++) {
        t.ended[op] = 0;
        for (ThreadCalls *thread = t.threads; thread != nullptr; thread = thread->next)
            thread->atReset[op] = thread->calls[op].load(std::memory_order_relaxed);
    }
}

MDTLM_PLATFORM_API uint32_t MDTLM_HOST_LiveObjects(MDTLM_HOST_OBJECT kind)
{
    static constexpr uint32_t (*kCounters[MDTLM_HOST_OBJECT_COUNT])() = {
        mdtlm_host::LiveQueues, mdtlm_host::LiveEpolls, mdtlm_host::LiveTimers, mdtlm_host::LiveServers};
    return static_cast<int>(kind) >= 0 && kind < MDTLM_HOST_OBJECT_COUNT ? kCounters[kind]() : 0;
}
