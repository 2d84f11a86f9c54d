#include "queue_setup.h"

#include "mdtlm_log.h"
#include "mdtlm_platform.h"
#include "mdtlm_vraldcn.h"

namespace {

constexpr uint32_t kQueueElementSize = sizeof(void *);
constexpr uint32_t kFlowCtrlEventCount = 2;

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
        FWM_QUE_Destory(*queue);
        *queue = nullptr;
    }
}
