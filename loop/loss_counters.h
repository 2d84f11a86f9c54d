/*
 * Loss counters of the plug-in. Each counter is one u64 slot of
 * MDTLM_LOSS_COUNTERS, addressed by the field's position in that record, so
 * the record and the counting sites cannot drift apart.
 */
#ifndef MDTLM_LOOP_LOSS_COUNTERS_H
#define MDTLM_LOOP_LOSS_COUNTERS_H

#include <atomic>
#include <cstddef>
#include <cstdint>

#include "mdtlm_types.h"

/* Slot of a counter field of MDTLM_LOSS_COUNTERS. */
#define MDTLM_LOSS_SLOT(field) static_cast<uint32_t>(offsetof(MDTLM_LOSS_COUNTERS, field) / sizeof(uint64_t))

constexpr uint32_t MDTLM_LOSS_SLOT_COUNT = sizeof(MDTLM_LOSS_COUNTERS) / sizeof(uint64_t);
static_assert(sizeof(MDTLM_LOSS_COUNTERS) % sizeof(uint64_t) == 0, "loss counters are u64 slots");

/* The counters, read from any thread with relaxed loads. */
extern std::atomic<uint64_t> g_mdtlmLossSlots[MDTLM_LOSS_SLOT_COUNT];

/* Adds `count` to a slot that more than one thread writes (the framework's
 * threads as well as the worker): an atomic add. */
inline void MDTLM_LossAdd(uint32_t slot, uint64_t count = 1)
{
    if (slot < MDTLM_LOSS_SLOT_COUNT) {
        g_mdtlmLossSlots[slot].fetch_add(count, std::memory_order_relaxed);
    }
}

/* Adds `count` to a slot that only the worker thread writes (intake and the
 * tick): a load and a store, no locked instruction on the per-message path.
 * Readers on other threads still see whole values. */
inline void MDTLM_LossAddOnWorker(uint32_t slot, uint64_t count = 1)
{
    if (slot < MDTLM_LOSS_SLOT_COUNT) {
        std::atomic<uint64_t> &counter = g_mdtlmLossSlots[slot];
        counter.store(counter.load(std::memory_order_relaxed) + count, std::memory_order_relaxed);
    }
}

/* Records that passed a task of `sensorType` but could not be stored. */
void MDTLM_LossEncodeFail(uint32_t sensorType);

#endif /* MDTLM_LOOP_LOSS_COUNTERS_H */
