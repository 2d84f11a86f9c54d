#include "platform_release.h"

#include "loss_counters.h"
#include "mdtlm_log.h"

bool MDTLM_PlatformReleaseFailed(const char *what, uint32_t lastResult)
{
    MDTLM_LossAdd(MDTLM_LOSS_SLOT(releaseFailCnt));
    MDTLM_LOG(MDTLM_LOG_FAILURE, "[VRALDCN_PlatformRelease] Release %s failed %u times, ret: %u.", what,
              kMdtlmReleaseTries, lastResult);
    return false;
}
