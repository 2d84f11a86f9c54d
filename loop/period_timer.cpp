/*
 * The one-second period timer and the second counter it advances. Each tick
 * queues a statistics-upload event carrying the counter's new value.
 */
#include <cstdint>
#include <cstring>

#include "loss_counters.h"
#include "mdtlm_log.h"
#include "mdtlm_platform.h"
#include "mdtlm_vraldcn.h"
#include "platform_release.h"

extern "C" {
MDTLM_EXPORT int32_t g_mdtlmVralDcnTimerId = -1;
MDTLM_EXPORT uint32_t g_mdtlmVralTimerSecondCnt = 0;
}

namespace {

constexpr int32_t kNoTimer = -1;
constexpr uint32_t kTimerPeriodMs = 1000;
constexpr uint32_t kTickPayloadLen = sizeof(uint32_t);

} // namespace

extern "C" {

MDTLM_EXPORT uint32_t MDTLM_VRALDCN_STATS_CreateTimer(void)
{
    /* Only a positive id counts as an existing timer. */
    if (g_mdtlmVralDcnTimerId > 0) {
        return 0;
    }
    int32_t timerId = FWM_TIMER_Create(kTimerPeriodMs, MDTLM_VRALDCN_STATS_TimerCallback, nullptr,
                                       MDTLM_VRALDCN_THREAD_GetEpollId());
    if (timerId < 0) {
        MDTLM_LOG(MDTLM_LOG_FAILURE, "[VRALDCN_TIMER_Create] create timer failed, timerId: %d.", timerId);
        return 1;
    }
    g_mdtlmVralDcnTimerId = timerId;
    return 0;
}

MDTLM_EXPORT uint32_t MDTLM_VRALDCN_STATS_TimerCallback(void)
{
    /* The counter advances even when the tick cannot be queued: a lost tick
     * shows as a gap, never as a delay. It wraps after 4294967295. */
    ++g_mdtlmVralTimerSecondCnt;
    uint32_t ret = MDTLM_VRALDCN_STATS_PushStatsEventToQue(g_mdtlmVralTimerSecondCnt);
    if (ret != 0) {
        MDTLM_LOG(MDTLM_LOG_FAILURE, "[VRALDCN_STATS_TimerCallback] push stats event to queue failed, ret: %u.",
                  ret);
    }
    return 0;
}

MDTLM_EXPORT uint32_t MDTLM_VRALDCN_STATS_PushStatsEventToQue(uint32_t secondCnt)
{
    void *raw = MDTLM_VRALDCN_BufAlloc(sizeof(MDTLM_EVENT_MSG) + kTickPayloadLen);
    if (raw == nullptr) {
        MDTLM_LOG(MDTLM_LOG_FAILURE,
                  "[NTVVRALDCN_STATS_PushStatsEventToQu] Alloc memory failed, timerSecondCnt: %u.", secondCnt);
        MDTLM_LossAdd(MDTLM_LOSS_SLOT(tickDroppedCnt));
        return 1;
    }
    MDTLM_EVENT_MSG *event = static_cast<MDTLM_EVENT_MSG *>(raw);
    event->msgType = MDTLM_EVENT_STATS_UPLOAD;
    event->msgLen = kTickPayloadLen;
    std::memcpy(event->payload, &secondCnt, kTickPayloadLen);

    uint32_t ret = MDTLM_VRALDCN_EVENT_Push(event);
    if (ret != 0) {
        MDTLM_LOG(MDTLM_LOG_FAILURE,
                  "[NTVVRALDCN_STATS_PushStatsEventToQu] push task to event queue failed, timerSecondCnt: %u, "
                  "ret: %u.",
                  secondCnt, ret);
        MDTLM_LossAdd(MDTLM_LOSS_SLOT(tickDroppedCnt));
        MDTLM_VRALDCN_BufFree(&raw);
    }
    return 0;
}

MDTLM_EXPORT uint32_t MDTLM_VRALDCN_STATS_GetTimerSecondCnt(void)
{
    return g_mdtlmVralTimerSecondCnt;
}

MDTLM_EXPORT void MDTLM_VRALDCN_STATS_DestroyTimer(void)
{
    /* The stored id is handed over whatever it is; only a timer that exists
     * is worth asking again when the platform refuses. */
    const int32_t timerId = g_mdtlmVralDcnTimerId;
    if (timerId == kNoTimer) {
        (void)FWM_TIMER_Destroy(timerId);
    } else {
        (void)MDTLM_PlatformRelease("timer", [timerId] { return FWM_TIMER_Destroy(timerId); });
    }
    g_mdtlmVralDcnTimerId = kNoTimer;
}

} /* extern "C" */
