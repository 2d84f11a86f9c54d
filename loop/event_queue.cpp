/*
 * The event queue that carries add-task, delete-task and tick events to the
 * worker thread. Producers on any thread push event pointers; the worker's
 * epoll loop pops one event per callback and dispatches it by type.
 */
#include "event_queue.h"

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

constexpr char kEventQueueName[] = "MDTLM_VRALDCN_EVENT";
constexpr uint32_t kEventQueueMode = 6;
constexpr uint32_t kEventQueueDepth = 1024;
constexpr uint32_t kEventQueueHighMark = 819; /* 80 % of the depth, rounded down */
constexpr uint32_t kEventQueueLowMark = 204;  /* 20 % of the depth, rounded down */
constexpr uint32_t kQueueElementSize = sizeof(void *);

/* Lines of the flow-control callback, by flow-control event. */
constexpr const char *kFlowCtrlFormats[] = {
    "[%s:%d][VRALDCN_EVENT_FlowCtrlProc] Flow ctrl start.",
    "[%s:%d][VRALDCN_EVENT_FlowCtrlProc] Flow ctrl stop.",
};
constexpr uint32_t kFlowCtrlEventCount = sizeof(kFlowCtrlFormats) / sizeof(kFlowCtrlFormats[0]);

/* Reads at most one element; null when the queue gave nothing. */
bool ReadOneEvent(void *queue, void **event)
{
    *event = nullptr;
    return FWM_QUE_AsyRead(queue, event, 1) >= 1;
}

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
    void *queue = FWM_QUE_CreateNew(kEventQueueName, kEventQueueMode, kEventQueueDepth, kQueueElementSize);
    if (queue == nullptr) {
        MDTLM_LOG(MDTLM_LOG_FAILURE, "Create que failed !");
        return 1;
    }

    uint32_t epollId = MDTLM_VRALDCN_THREAD_GetEpollId();
    uint32_t ret = FWM_QUE_EpollReg(queue, epollId, MDTLM_VRALDCN_EVENT_Pop);
    if (ret != 0) {
        FWM_QUE_Destory(queue);
        MDTLM_LOG(MDTLM_LOG_FAILURE, "[VRALDCN_EVENT_Init] EpollReg failed, ret: %u.", ret);
        return ret;
    }

    MDTLM_QUE_MONITOR_CFG monitor = {};
    monitor.highMark = kEventQueueHighMark;
    monitor.lowMark = kEventQueueLowMark;
    monitor.epollId = epollId;
    ret = FWM_QUE_MonitorReg(queue, &monitor, MDTLM_VRALDCN_EVENT_FlowCtrlProc);
    if (ret != 0) {
        FWM_QUE_Destory(queue);
        MDTLM_LOG(MDTLM_LOG_FAILURE, "[VRALDCN_EVENT_Init] Flow ctrl reg failed, ret: %u.", ret);
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
    int32_t written = FWM_QUE_AsyWrite(queue, &event, 1);
    if (written == 1) {
        return 0;
    }
    MDTLM_LOG(MDTLM_LOG_FAILURE, "[VRALDCN_EVENT_Push] Write queue fail. eleCnt: %u.",
              static_cast<uint32_t>(written));
    return 1;
}

MDTLM_EXPORT uint32_t MDTLM_VRALDCN_EVENT_Pop(void *queue)
{
    void *raw = nullptr;
    if (!ReadOneEvent(queue, &raw)) {
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
    if (event >= kFlowCtrlEventCount) {
        MDTLM_LOG(MDTLM_LOG_NOTICE, "[VRALDCN_EVENT_FlowCtrlProc] Illigal evt, evt: %u.", event);
        return 1;
    }
    MDTLM_VRALDCN_WriteTlmLog(MDTLM_LOG_NOTICE, kFlowCtrlFormats[event], MDTLM_LOG_LABEL, __LINE__);
    return 0;
}

MDTLM_EXPORT void MDTLM_VRALDCN_EVENT_Destroy(void)
{
    if (g_mdtlmVralDcnTaskEventHdl != nullptr) {
        FWM_QUE_Destory(g_mdtlmVralDcnTaskEventHdl);
        g_mdtlmVralDcnTaskEventHdl = nullptr;
    }
}

} /* extern "C" */

void MDTLM_EventQueueDiscardAll(void)
{
    void *queue = g_mdtlmVralDcnTaskEventHdl;
    if (queue == nullptr) {
        return;
    }
    void *raw = nullptr;
    while (ReadOneEvent(queue, &raw)) {
        MDTLM_VRALDCN_BufFree(&raw);
    }
}
