/*
 * Loss counters: written on the worker thread and, for dropped add, delete
 * and tick requests and at unload, on the framework's threads; read from any
 * thread. Relaxed atomics suffice, since each counter stands alone.
 */
#include "loss_counters.h"

#include <atomic>
#include <cstring>

#include "mdtlm_vraldcn.h"

std::atomic<uint64_t> g_mdtlmLossSlots[MDTLM_LOSS_SLOT_COUNT];

void MDTLM_LossEncodeFail(uint32_t sensorType)
{
    if (sensorType >= 1 && sensorType <= MDTLM_SENSOR_COUNT) {
        MDTLM_LossAdd(MDTLM_LOSS_SLOT(encodeFailCnt) + sensorType - 1);
    }
}

extern "C" {

MDTLM_EXPORT uint32_t MDTLM_VRALDCN_STATS_GetLossCounters(MDTLM_LOSS_COUNTERS *counters)
{
    if (counters == nullptr) {
        return 1;
    }
    uint64_t values[MDTLM_LOSS_SLOT_COUNT];
    for (uint32_t i = 0; i < MDTLM_LOSS_SLOT_COUNT; ++i) {
        values[i] = g_mdtlmLossSlots[i].load(std::memory_order_relaxed);
    }
    std::memcpy(counters, values, sizeof(values));
    return 0;
}

MDTLM_EXPORT uint64_t MDTLM_VRALDCN_STATS_IPC_GetShortMsgCnt(void)
{
    return g_mdtlmLossSlots[MDTLM_LOSS_SLOT(shortBodyCnt)].load(std::memory_order_relaxed);
}

MDTLM_EXPORT uint64_t MDTLM_VRALDCN_STATS_IPC_GetCutMsgCnt(void)
{
    return g_mdtlmLossSlots[MDTLM_LOSS_SLOT(cutBodyCnt)].load(std::memory_order_relaxed);
}

} /* extern "C" */
