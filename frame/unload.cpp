/*
 * Full unload for hosts that remove the plug-in. Unlike the partial shut-down
 * of a failed start-up, it stops the loop first and then releases everything
 * the plug-in still holds, including what is waiting on its queues.
 */
#include <cstdint>

#include "event_queue.h"
#include "loss_counters.h"
#include "mdtlm_log.h"
#include "mdtlm_vraldcn.h"
#include "worker.h"

namespace {

constexpr int32_t kNoTimer = -1;

/* What a queue gave back is counted as discarded; what the platform would not
 * give back stays allocated, and the unload says how much. */
void CountRelease(const MDTLM_QueueReleaseResult &result, uint32_t discardedSlot, uint32_t leftSlot,
                  const char *queueName)
{
    MDTLM_LossAdd(discardedSlot, result.released);
    if (result.left == 0) {
        return;
    }
    MDTLM_LossAdd(leftSlot, result.left);
    MDTLM_LOG(MDTLM_LOG_FAILURE, "[VRALDCN_Unload] Queue %s would not give back %llu buffers, left allocated.",
              queueName, static_cast<unsigned long long>(result.left));
}

} // namespace

extern "C" MDTLM_EXPORT void MDTLM_VRALDCN_Unload(void)
{
    /* Destroying the epoll instance returns only once the loop runs no more
     * callbacks; the loop then returns and the worker thread ends. From here
     * on nothing else touches the plug-in's state. */
    if (!MDTLM_WorkerStop()) {
        /* The loop may still run callbacks: releasing what they use would
         * pull it from under them. Everything stays as it is. */
        MDTLM_LOG(MDTLM_LOG_FAILURE, "[VRALDCN_Unload] Epoll instance not destroyed, nothing released.");
        return;
    }

    MDTLM_VRALDCN_STATS_IPC_Destroy();
    CountRelease(MDTLM_StatsQueueReleaseAll(), MDTLM_LOSS_SLOT(discardedAtStopCnt), MDTLM_LOSS_SLOT(leftAtStopCnt),
                 "MdtlmNtvVralDcnStatsQue");
    MDTLM_VRALDCN_STATS_QUE_Destroy();

    if (g_mdtlmVralDcnTimerId != kNoTimer) {
        MDTLM_VRALDCN_STATS_DestroyTimer();
    }

    CountRelease(MDTLM_EventQueueReleaseAll(), MDTLM_LOSS_SLOT(eventsDiscardedAtStopCnt),
                 MDTLM_LOSS_SLOT(eventsLeftAtStopCnt), "MDTLM_VRALDCN_EVENT");
    MDTLM_VRALDCN_EVENT_Destroy();

    MDTLM_VRALDCN_TASK_ReleaseAll();
}
