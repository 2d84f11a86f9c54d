/*
 * Full unload for hosts that remove the plug-in. Unlike the partial shut-down
 * of a failed start-up, it stops the loop first and then releases everything
 * the plug-in still holds, including what is waiting on its queues.
 */
#include <cstdint>

#include "event_queue.h"
#include "mdtlm_vraldcn.h"

namespace {

constexpr int32_t kNoTimer = -1;

void DiscardStatsMessages()
{
    MDTLM_STATS_MSG *msg = nullptr;
    while ((msg = MDTLM_VRALDCN_STATS_QUE_Pop()) != nullptr) {
        void *raw = msg;
        MDTLM_VRALDCN_BufFree(&raw);
    }
}

} // namespace

extern "C" MDTLM_EXPORT void MDTLM_VRALDCN_Unload(void)
{
    /* Destroying the epoll instance returns only once the loop runs no more
     * callbacks; the loop then returns and the worker thread ends. From here
     * on nothing else touches the plug-in's state. */
    MDTLM_VRALDCN_THREAD_Destroy();

    MDTLM_VRALDCN_STATS_IPC_Destroy();
    DiscardStatsMessages();
    MDTLM_VRALDCN_STATS_QUE_Destroy();

    if (g_mdtlmVralDcnTimerId != kNoTimer) {
        MDTLM_VRALDCN_STATS_DestroyTimer();
    }

    MDTLM_EventQueueDiscardAll();
    MDTLM_VRALDCN_EVENT_Destroy();

    MDTLM_VRALDCN_TASK_ReleaseAll();
}
