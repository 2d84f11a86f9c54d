/*
 * Fault injection and call counting for every platform operation, and the
 * count of live platform objects.
 *
 * Each operation has a call counter and an optional rule "let `skip` calls
 * through, then fail the next `count`". Counting is a relaxed atomic add; the
 * rule is consulted under a lock only while one is armed, so the bounds-checked
 * copies that the plug-in makes for every message stay cheap.
 */
#include <atomic>
#include <mutex>

#include "platform_internal.h"

namespace {

struct FaultRule {
    uint32_t skip = 0;
    uint32_t count = 0;
    int64_t result = 0;
};

struct FaultTable {
    std::atomic<uint64_t> calls[MDTLM_HOST_OP_COUNT];
    std::atomic<bool> armed[MDTLM_HOST_OP_COUNT];
    std::mutex mu;
    FaultRule rules[MDTLM_HOST_OP_COUNT];
};

FaultTable &Faults()
{
    static FaultTable *table = new FaultTable(); /* lives as long as the process */
    return *table;
}

bool ValidOp(MDTLM_HOST_OP op)
{
    return static_cast<int>(op) >= 0 && op < MDTLM_HOST_OP_COUNT;
}

} /* namespace */

namespace mdtlm_host {

bool FaultCheck(MDTLM_HOST_OP op, int64_t *result)
{
    FaultTable &t = Faults();
    t.calls[op].fetch_add(1, std::memory_order_relaxed);
    if (!t.armed[op].load(std::memory_order_acquire))
        return false;

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
        t.armed[op].store(false, std::memory_order_release);
    *result = rule.result;
    return true;
}

} /* namespace mdtlm_host */

MDTLM_PLATFORM_API void MDTLM_HOST_FaultSet(MDTLM_HOST_OP op, uint32_t skip, uint32_t count, int64_t result)
{
    if (!ValidOp(op))
        return;
    FaultTable &t = Faults();
    std::lock_guard<std::mutex> lock(t.mu);
    t.rules[op] = FaultRule{skip, count, result};
    t.armed[op].store(count > 0, std::memory_order_release);
}

MDTLM_PLATFORM_API void MDTLM_HOST_FaultClear(void)
{
    FaultTable &t = Faults();
    std::lock_guard<std::mutex> lock(t.mu);
    for (int op = 0; op < MDTLM_HOST_OP_COUNT; op++) {
        t.rules[op] = FaultRule{};
        t.armed[op].store(false, std::memory_order_release);
    }
}

MDTLM_PLATFORM_API uint64_t MDTLM_HOST_CallCount(MDTLM_HOST_OP op)
{
    if (!ValidOp(op))
        return 0;
    return Faults().calls[op].load(std::memory_order_relaxed);
}

MDTLM_PLATFORM_API void MDTLM_HOST_CallCountReset(void)
{
    FaultTable &t = Faults();
    for (auto &calls : t.calls)
        calls.store(0, std::memory_order_relaxed);
}

MDTLM_PLATFORM_API uint32_t MDTLM_HOST_LiveObjects(MDTLM_HOST_OBJECT kind)
{
    static constexpr uint32_t (*kCounters[MDTLM_HOST_OBJECT_COUNT])() = {
        mdtlm_host::LiveQueues, mdtlm_host::LiveEpolls, mdtlm_host::LiveTimers, mdtlm_host::LiveServers};
    return static_cast<int>(kind) >= 0 && kind < MDTLM_HOST_OBJECT_COUNT ? kCounters[kind]() : 0;
}
