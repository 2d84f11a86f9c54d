/*
 * The statistics intake as one unit: the statistics queue and the channel
 * server that fills it are created and released together.
 */
#include <cstdint>

#include "mdtlm_log.h"
#include "mdtlm_vraldcn.h"

extern "C" {

MDTLM_EXPORT uint32_t MDTLM_VRALDCN_STATS_Init(void)
{
    uint32_t ret = MDTLM_VRALDCN_STATS_QUE_Create();
    if (ret != 0) {
        MDTLM_LOG(MDTLM_LOG_FAILURE, "[VRALDCN_STATS_Init]  Create stats queue failed, ret: %u.", ret);
        return 1;
    }
    /* On failure the queue stays; the caller's shut-down releases it. */
    ret = MDTLM_VRALDCN_STATS_IPC_Init();
    if (ret != 0) {
        MDTLM_LOG(MDTLM_LOG_FAILURE, "[VRALDCN_STATS_Init]  Create stats ipc failed, ret: %u.", ret);
        return 1;
    }
    return 0;
}

MDTLM_EXPORT void MDTLM_VRALDCN_STATS_Destory(void)
{
    MDTLM_VRALDCN_STATS_IPC_Destroy();
    MDTLM_VRALDCN_STATS_QUE_Destroy();
}

} /* extern "C" */
