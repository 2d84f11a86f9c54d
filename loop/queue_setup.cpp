#include "queue_setup.h"

#include "mdtlm_log.h"
#include "mdtlm_platform.h"
#include "mdtlm_vraldcn.h"
#include "platform_release.h"

namespace {

constexpr uint32_t kQueueElementSize = sizeof(void *);
constexpr uint32_t kFlowCtrlEventCount = 2;
/* Consecutive failing reads after which the release gives up. */
constexpr uint32_t kReleaseReadTries = 4;

} // namespace

uint32_t MDTLM_QueueCreate(const MDTLM_QueueSetup &setup, void **queue)
{
    *queue = FWM_QUE_CreateNew(setup.name, setup.mode, setup.depth, kQueueElementSize);
    if (*queue == nullptr) {
        MDTLM_VRALDCN_WriteTlmLog(MDTLM_LOG_FAILURE, setup.createFailed, MDTLM_LOG_LABEL, __LINE__);
        return 1;
    }

    const uint32_t epollId = MDTLM_VRALDCN_THREAD_GetEpollId();
    uint32_t ret = 0;
    const char *failed = nullptr;
    if (setup.pop != nullptr) {
        ret = FWM_QUE_EpollReg(*queue, epollId, setup.pop);
        failed = setup.epollRegFailed;
    }
    if (ret == 0) {
        MDTLM_QUE_MONITOR_CFG monitor = {};
        monitor.highMark = setup.highMark;
        monitor.lowMark = setup.lowMark;
        monitor.epollId = epollId;
        ret = FWM_QUE_MonitorReg(*queue, &monitor, setup.flowCtrl);
        failed = setup.monitorRegFailed;
    }
    if (ret != 0) {
        MDTLM_QueueDestroy(queue);
        MDTLM_VRALDCN_WriteTlmLog(MDTLM_LOG_FAILURE, failed, MDTLM_LOG_LABEL, __LINE__, ret);
    }
    return ret;
}

uint32_t MDTLM_QueueFlowCtrl(const MDTLM_FlowCtrlTexts &texts, uint32_t event)
{
    if (event >= kFlowCtrlEventCount) {
        MDTLM_VRALDCN_WriteTlmLog(MDTLM_LOG_NOTICE, texts.illegalEvent, MDTLM_LOG_LABEL, __LINE__, event);
        return 1;
    }
    MDTLM_VRALDCN_WriteTlmLog(MDTLM_LOG_NOTICE, texts.byEvent[event], MDTLM_LOG_LABEL, __LINE__);
    return 0;
}

void MDTLM_QueueDestroy(void **queue)
{
    if (*queue != nullptr) {
        void *handle = *queue;
        (void)MDTLM_PlatformRelease("queue", [handle] { return FWM_QUE_Destory(handle); });
        *queue = nullptr;
    }
}

bool MDTLM_QueueWriteOne(void *queue, void *element, MDTLM_QueueHeld &held, int32_t *written)
{
    /* Counted before the write: the reader may pop the element at once. */
    held.fetch_add(1, std::memory_order_relaxed);
    *written = FWM_QUE_AsyWrite(queue, &element, 1);
    if (*written == 1) {
        return true;
    }
    held.fetch_sub(1, std::memory_order_relaxed);
    return false;
}

bool MDTLM_QueueReadOne(void *queue, void **element, MDTLM_QueueHeld &held)
{
    *element = nullptr;
    if (FWM_QUE_AsyRead(queue, element, 1) < 1) {
        return false;
    }
    held.fetch_sub(1, std::memory_order_relaxed);
    return true;
}

MDTLM_QueueReleaseResult MDTLM_QueueReleaseAll(void *queue, MDTLM_QueueHeld &held)
{
    MDTLM_QueueReleaseResult result = {0, 0};
    if (queue == nullptr) {
        return result;
    }
    uint32_t failedReads = 0;
    for (;;) {
        void *element = nullptr;
        if (MDTLM_QueueReadOne(queue, &element, held)) {
            failedReads = 0;
            if (element != nullptr) {
                MDTLM_VRALDCN_BufFree(&element);
                ++result.released;
            }
            continue;
        }
        /* Nothing read: done when nothing should be left, else try again. */
        if (held.load(std::memory_order_relaxed) <= 0 || ++failedReads >= kReleaseReadTries) {
            break;
        }
    }
    const int64_t left = held.exchange(0, std::memory_order_relaxed);
    result.left = left > 0 ? static_cast<uint64_t>(left) : 0;
    return result;
}
