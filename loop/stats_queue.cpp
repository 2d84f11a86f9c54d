/*
 * The statistics queue: messages kept by the statistics channel wait here
 * until the next tick drains them. It is not served by the epoll loop.
 */
#include <cstdint>

#include "mdtlm_log.h"
#include "mdtlm_platform.h"
#include "event_queue.h"
#include "mdtlm_vraldcn.h"
#include "queue_setup.h"

extern "C" {
MDTLM_EXPORT void *g_mdtlmNtvVralDcnStatsQueHdl = nullptr;
}

namespace {

const MDTLM_QueueSetup kStatsQueue = {
    "MdtlmNtvVralDcnStatsQue", 1, 196608, 157286, 39321, nullptr, MDTLM_VRALDCN_STATS_QUE_FlowCtrlProc,
    "[%s:%d][NTVVRALDCN_STATS_QUE_Create] Create que failed !",
    nullptr, /* not served by the epoll loop */
    "[%s:%d][NTVVRALDCN_STATS_QUE_Create] Flow ctrl reg failed, ret: %u.",
};

const MDTLM_FlowCtrlTexts kStatsFlowCtrl = {
    {"[%s:%d][TASK_QUE_FlowCtrlProc] Flow ctrl start.", "[%s:%d][TASK_QUE_FlowCtrlProc] Flow ctrl stop."},
    "[%s:%d][TASK_QUE_FlowCtrlProc] Illigal evt, evt: %u.",
};

/* Messages on the queue as far as the plug-in knows. */
MDTLM_QueueHeld g_statsQueueHeld{0};

} // namespace

extern "C" {

MDTLM_EXPORT uint32_t MDTLM_VRALDCN_STATS_QUE_Create(void)
{
    uint32_t ret = MDTLM_QueueCreate(kStatsQueue, &g_mdtlmNtvVralDcnStatsQueHdl);
    if (ret != 0) {
        return ret;
    }
    MDTLM_LOG(MDTLM_LOG_SUCCESS, "[NTVVRALDCN_STATS_QUE_Create] success.");
    return 0;
}

MDTLM_EXPORT uint32_t MDTLM_VRALDCN_STATS_QUE_Push(MDTLM_STATS_MSG *msg)
{
    if (g_mdtlmNtvVralDcnStatsQueHdl == nullptr) {
        MDTLM_LOG(MDTLM_LOG_FAILURE, "[NTVVRALDCN_STATS_QUE_Push] Handle is NULL.");
        return 1;
    }
    /* A full queue fails at once; nothing waits for room. */
    int32_t written = 0;
    if (MDTLM_QueueWriteOne(g_mdtlmNtvVralDcnStatsQueHdl, msg, g_statsQueueHeld, &written)) {
        return 0;
    }
    MDTLM_LOG(MDTLM_LOG_FAILURE, "[NTVVRALDCN_STATS_QUE_Push] Write queue fail. eleCnt: %u.",
              static_cast<uint32_t>(written));
    return 1;
}

MDTLM_EXPORT MDTLM_STATS_MSG *MDTLM_VRALDCN_STATS_QUE_Pop(void)
{
    if (g_mdtlmNtvVralDcnStatsQueHdl == nullptr) {
        return nullptr;
    }
    void *msg = nullptr;
    if (!MDTLM_QueueReadOne(g_mdtlmNtvVralDcnStatsQueHdl, &msg, g_statsQueueHeld)) {
        return nullptr;
    }
    return static_cast<MDTLM_STATS_MSG *>(msg);
}

MDTLM_EXPORT uint32_t MDTLM_VRALDCN_STATS_QUE_FlowCtrlProc(uint32_t event)
{
    return MDTLM_QueueFlowCtrl(kStatsFlowCtrl, event);
}

MDTLM_EXPORT void MDTLM_VRALDCN_STATS_QUE_Destroy(void)
{
    MDTLM_QueueDestroy(&g_mdtlmNtvVralDcnStatsQueHdl);
    g_statsQueueHeld.store(0, std::memory_order_relaxed); /* whatever it held went with it */
}

} /* extern "C" */

MDTLM_QueueReleaseResult MDTLM_StatsQueueReleaseAll(void)
{
    return MDTLM_QueueReleaseAll(g_mdtlmNtvVralDcnStatsQueHdl, g_statsQueueHeld);
}
