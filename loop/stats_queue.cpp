/*
 * The statistics queue: messages kept by the statistics channel wait here
 * until the next tick drains them. It is not served by the epoll loop.
 */
#include <cstdint>

#include "mdtlm_log.h"
#include "mdtlm_platform.h"
#include "mdtlm_vraldcn.h"

extern "C" {
MDTLM_EXPORT void *g_mdtlmNtvVralDcnStatsQueHdl = nullptr;
}

namespace {

constexpr char kStatsQueueName[] = "MdtlmNtvVralDcnStatsQue";
constexpr uint32_t kStatsQueueMode = 1;
constexpr uint32_t kStatsQueueDepth = 196608;
constexpr uint32_t kStatsQueueHighMark = 157286; /* 80 % of the depth, rounded down */
constexpr uint32_t kStatsQueueLowMark = 39321;   /* 20 % of the depth, rounded down */
constexpr uint32_t kQueueElementSize = sizeof(void *);

/* Lines of the flow-control callback, by flow-control event. */
constexpr const char *kFlowCtrlFormats[] = {
    "[%s:%d][TASK_QUE_FlowCtrlProc] Flow ctrl start.",
    "[%s:%d][TASK_QUE_FlowCtrlProc] Flow ctrl stop.",
};
constexpr uint32_t kFlowCtrlEventCount = sizeof(kFlowCtrlFormats) / sizeof(kFlowCtrlFormats[0]);

} // namespace

extern "C" {

MDTLM_EXPORT uint32_t MDTLM_VRALDCN_STATS_QUE_Create(void)
{
    g_mdtlmNtvVralDcnStatsQueHdl =
        FWM_QUE_CreateNew(kStatsQueueName, kStatsQueueMode, kStatsQueueDepth, kQueueElementSize);
    if (g_mdtlmNtvVralDcnStatsQueHdl == nullptr) {
        MDTLM_LOG(MDTLM_LOG_FAILURE, "[NTVVRALDCN_STATS_QUE_Create] Create que failed !");
        return 1;
    }

    MDTLM_QUE_MONITOR_CFG monitor = {};
    monitor.highMark = kStatsQueueHighMark;
    monitor.lowMark = kStatsQueueLowMark;
    monitor.epollId = MDTLM_VRALDCN_THREAD_GetEpollId();
    uint32_t ret = FWM_QUE_MonitorReg(g_mdtlmNtvVralDcnStatsQueHdl, &monitor, MDTLM_VRALDCN_STATS_QUE_FlowCtrlProc);
    if (ret != 0) {
        FWM_QUE_Destory(g_mdtlmNtvVralDcnStatsQueHdl);
        g_mdtlmNtvVralDcnStatsQueHdl = nullptr;
        MDTLM_LOG(MDTLM_LOG_FAILURE, "[NTVVRALDCN_STATS_QUE_Create] Flow ctrl reg failed, ret: %u.", ret);
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
    int32_t written = FWM_QUE_AsyWrite(g_mdtlmNtvVralDcnStatsQueHdl, &msg, 1);
    if (written == 1) {
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
    MDTLM_STATS_MSG *msg = nullptr;
    if (FWM_QUE_AsyRead(g_mdtlmNtvVralDcnStatsQueHdl, &msg, 1) < 1) {
        return nullptr;
    }
    return msg;
}

MDTLM_EXPORT uint32_t MDTLM_VRALDCN_STATS_QUE_FlowCtrlProc(uint32_t event)
{
    if (event >= kFlowCtrlEventCount) {
        MDTLM_LOG(MDTLM_LOG_NOTICE, "[TASK_QUE_FlowCtrlProc] Illigal evt, evt: %u.", event);
        return 1;
    }
    MDTLM_VRALDCN_WriteTlmLog(MDTLM_LOG_NOTICE, kFlowCtrlFormats[event], MDTLM_LOG_LABEL, __LINE__);
    return 0;
}

MDTLM_EXPORT void MDTLM_VRALDCN_STATS_QUE_Destroy(void)
{
    if (g_mdtlmNtvVralDcnStatsQueHdl != nullptr) {
        FWM_QUE_Destory(g_mdtlmNtvVralDcnStatsQueHdl);
        g_mdtlmNtvVralDcnStatsQueHdl = nullptr;
    }
}

} /* extern "C" */
