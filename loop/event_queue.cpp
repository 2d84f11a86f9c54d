/*
 * The event queue that carries add-task, delete-task and tick events to the
 * worker thread. Producers on any thread push event pointers; the worker's
 * epoll loop pops one event per callback and dispatches it by type.
 */
#include "event_queue.h"
#include "queue_setup.h"

#include <cstdint>

#include "mdtlm_log.h"
#include "mdtlm_platform.h"
#include "mdtlm_vraldcn.h"

extern "C" {
MDTLM_EXPORT void *g_mdtlmVralDcnTaskEventHdl = nullptr;
MDTLM_EXPORT MDTLM_EVENT_PROC_FUNC g_mdtlmVralDcnEventProcList[MDTLM_EVENT_TYPE_COUNT] = {
    MDTLM_VRALDCN_STATS_UploadStatsData,   /* MDTLM_EVENT_STATS_UPLOAD */
    MDTLM_VRALDCN_TASK_AddTlmTaskToList,   /* MDTLM_EVENT_ADD_TASK */
    MDTLM_VRALDCN_TASK_DelTlmTaskFromList, /* MDTLM_EVENT_DEL_TASK */
};
}

namespace {

const MDTLM_QueueSetup kEventQueue = {
    "MDTLM_VRALDCN_EVENT", 6, 1024, 819, 204, MDTLM_VRALDCN_EVENT_Pop, MDTLM_VRALDCN_EVENT_FlowCtrlProc,
    "[%s:%d]Create que failed !",
    "[%s:%d][VRALDCN_EVENT_Init] EpollReg failed, ret: %u.",
    "[%s:%d][VRALDCN_EVENT_Init] Flow ctrl reg failed, ret: %u.",
};

const MDTLM_FlowCtrlTexts kEventFlowCtrl = {
    {"[%s:%d][VRALDCN_EVENT_FlowCtrlProc] Flow ctrl start.", "[%s:%d][VRALDCN_EVENT_FlowCtrlProc] Flow ctrl stop."},
    "[%s:%d][VRALDCN_EVENT_FlowCtrlProc] Illigal evt, evt: %u.",
};

/* Events on the queue as far as the plug-in knows. */
MDTLM_QueueHeld g_eventQueueHeld{0};

void DispatchEvent(MDTLM_EVENT_MSG *event)
{
    if (event->msgType >= MDTLM_EVENT_TYPE_COUNT || event->msgLen == 0) {
        MDTLM_LOG(MDTLM_LOG_FAILURE, "[VRALDCN_EVENT_Pop] Msg info error, msgType: %u.", event->msgType);
        return;
    }
    MDTLM_EVENT_PROC_FUNC handler = g_mdtlmVralDcnEventProcList[event->msgType];
    if (handler == nullptr) {
        return;
    }
    uint32_t ret = handler(event->payload, event->msgLen);
    if (ret != 0) {
        MDTLM_LOG(MDTLM_LOG_FAILURE, "[VRALDCN_EVENT_Pop] Msg proc failed, ret: %u, msgType: %u.", ret,
                  event->msgType);
    }
}

} // namespace

extern "C" {

MDTLM_EXPORT uint32_t MDTLM_VRALDCN_EVENT_Init(void)
{
    void *queue = nullptr;
    uint32_t ret = MDTLM_QueueCreate(kEventQueue, &queue);
    if (ret != 0) {
        return ret;
    }
    /* Published only once fully set up: earlier pushes fail instead of
     * reaching a half-registered queue. */
    g_mdtlmVralDcnTaskEventHdl = queue;
    MDTLM_LOG(MDTLM_LOG_SUCCESS, "[VRALDCN_EVENT_Init] success.");
    return 0;
}

MDTLM_EXPORT uint32_t MDTLM_VRALDCN_EVENT_Push(MDTLM_EVENT_MSG *event)
{
    void *queue = g_mdtlmVralDcnTaskEventHdl;
    if (queue == nullptr) {
        return 1;
    }
    int32_t written = 0;
    if (MDTLM_QueueWriteOne(queue, event, g_eventQueueHeld, &written)) {
        return 0;
    }
    MDTLM_LOG(MDTLM_LOG_FAILURE, "[VRALDCN_EVENT_Push] Write queue fail. eleCnt: %u.",
              static_cast<uint32_t>(written));
    return 1;
}

MDTLM_EXPORT uint32_t MDTLM_VRALDCN_EVENT_Pop(void *queue)
{
    void *raw = nullptr;
    if (!MDTLM_QueueReadOne(queue, &raw, g_eventQueueHeld)) {
        MDTLM_LOG(MDTLM_LOG_FAILURE, "[VRALDCN_EVENT_Pop] Queue no data.");
        return 0;
    }
    if (raw == nullptr) {
        MDTLM_LOG(MDTLM_LOG_FAILURE, "[VRALDCN_EVENT_Pop] Msg is null.");
        return 0;
    }
    /* The consumer owns the event: it is released whatever the handler did. */
    DispatchEvent(static_cast<MDTLM_EVENT_MSG *>(raw));
    MDTLM_VRALDCN_BufFree(&raw);
    return 0;
}

MDTLM_EXPORT uint32_t MDTLM_VRALDCN_EVENT_FlowCtrlProc(uint32_t event)
{
    return MDTLM_QueueFlowCtrl(kEventFlowCtrl, event);
}

MDTLM_EXPORT void MDTLM_VRALDCN_EVENT_Destroy(void)
{
    MDTLM_QueueDestroy(&g_mdtlmVralDcnTaskEventHdl);
    g_eventQueueHeld.store(0, std::memory_order_relaxed); /* whatever it held went with it */
}

} /* extern "C" */

MDTLM_QueueReleaseResult MDTLM_EventQueueReleaseAll(void)
{
    return MDTLM_QueueReleaseAll(g_mdtlmVralDcnTaskEventHdl, g_eventQueueHeld);
}
