/*
 * The worker thread "MDTLM_VRALDCN_STATS" and the epoll instance it runs.
 * Every source of work (event queue, statistics channel, period timer) is
 * registered on this instance, so all of it runs on the one worker thread.
 */
#include <atomic>
#include <cstdint>

#include "mdtlm_log.h"
#include "mdtlm_platform.h"
#include "mdtlm_vraldcn.h"
#include "platform_release.h"
#include "worker.h"

extern "C" {
MDTLM_EXPORT uint32_t g_mdtlmVralDcnEpollId = UINT32_MAX;
MDTLM_EXPORT uint32_t g_mdtlmVralDcnStatsTaskId = 0;
}

namespace {

constexpr uint32_t kNoEpoll = UINT32_MAX;

constexpr char kWorkerTaskName[] = "MDTLM_VRALDCN_STATS";
constexpr uint32_t kWorkerPriority = 1;
constexpr uintptr_t kWorkerStackSize = 0;
constexpr uint32_t kWorkerFlags = 0;
constexpr size_t kWorkerParamSize = 32;

constexpr uint32_t kEpollEventsPerWait = 5;
constexpr int32_t kEpollWaitForever = -1;

/* The worker reads the id when its loop starts, which may be while a full
 * unload clears it on another thread; the id is therefore accessed atomically. */
uint32_t LoadEpollId()
{
    return std::atomic_ref<uint32_t>(g_mdtlmVralDcnEpollId).load(std::memory_order_acquire);
}

void StoreEpollId(uint32_t id)
{
    std::atomic_ref<uint32_t>(g_mdtlmVralDcnEpollId).store(id, std::memory_order_release);
}

} // namespace

bool MDTLM_WorkerStop(void)
{
    uint32_t epollId = LoadEpollId();
    if (epollId == kNoEpoll) {
        return true;
    }
    const bool stopped = MDTLM_PlatformRelease("epoll instance", [epollId] { return FWM_EPOLL_Destroy(epollId); });
    StoreEpollId(kNoEpoll);
    return stopped;
}

extern "C" {

MDTLM_EXPORT uint32_t MDTLM_VRALDCN_THREAD_CreateEpoll(void)
{
    int32_t epollFd = FWM_EPOLL_Create();
    if (epollFd < 0) {
        MDTLM_LOG(MDTLM_LOG_FAILURE, "[VRALDCN_THREAD_InitEpoll] Epoll create failed, epollFd: %d.", epollFd);
        return 1;
    }
    StoreEpollId(static_cast<uint32_t>(epollFd));
    return 0;
}

MDTLM_EXPORT uint32_t MDTLM_VRALDCN_THREAD_CreateStatsTask(void)
{
    uint32_t taskId = 0;
    uint8_t param[kWorkerParamSize] = {};
    uint32_t ret = PAL_TaskCreate(kWorkerTaskName, &taskId, MDTLM_VRALDCN_THREAD_StatsMain, kWorkerPriority,
                                  kWorkerStackSize, kWorkerFlags, param);
    if (ret != 0) {
        MDTLM_LOG(MDTLM_LOG_FAILURE, "[VRALDCN_THREAD_CreateStatsTask] TaskCreate failed. ret: %u.", ret);
        return 1;
    }
    g_mdtlmVralDcnStatsTaskId = taskId;
    MDTLM_LOG(MDTLM_LOG_SUCCESS, "[VRALDCN_THREAD_CreateStatsTask] Create task success, taskId: %u.", taskId);
    return 0;
}

MDTLM_EXPORT uint32_t MDTLM_VRALDCN_THREAD_Init(void)
{
    /* The id is stored before the thread starts, so the thread always finds it. */
    if (MDTLM_VRALDCN_THREAD_CreateEpoll() != 0) {
        MDTLM_LOG(MDTLM_LOG_FAILURE, "[VRALDCN_THREAD_Init] Create Epoll failed. ret: %u.", 1u);
        return 1;
    }
    /* On failure the epoll instance stays; the caller's shut-down releases it. */
    if (MDTLM_VRALDCN_THREAD_CreateStatsTask() != 0) {
        MDTLM_LOG(MDTLM_LOG_FAILURE, "[VRALDCN_THREAD_Init] Create stats task failed. ret: %u.", 1u);
        return 1;
    }
    return 0;
}

MDTLM_EXPORT uint32_t MDTLM_VRALDCN_THREAD_StatsMain(void)
{
    MDTLM_LOG(MDTLM_LOG_SUCCESS, "[VRALDCN_THREAD_StatsMain] Start run mdtlm vral stats thread.");
    /* Returns once the instance is destroyed, which ends the thread. */
    return FWM_EPOLL_Run(LoadEpollId(), kEpollEventsPerWait, kEpollWaitForever);
}

MDTLM_EXPORT void MDTLM_VRALDCN_THREAD_Destroy(void)
{
    (void)MDTLM_WorkerStop();
}

MDTLM_EXPORT uint32_t MDTLM_VRALDCN_THREAD_GetEpollId(void)
{
    return LoadEpollId();
}

} /* extern "C" */
