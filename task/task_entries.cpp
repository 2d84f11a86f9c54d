/*
 * Entry points the framework calls to add and delete telemetry tasks. They
 * run on the framework's threads and only pack the request into an event for
 * the worker thread; the lists are never touched here.
 */
#include <cstring>

#include "mdtlm_log.h"
#include "mdtlm_vraldcn.h"
#include "task_log_lines.h"

namespace {

constexpr uint32_t kTaskEventSize = sizeof(MDTLM_EVENT_MSG) + sizeof(MDTLM_TASK_DATA);

/* Allocates an add or delete event carrying the task's identity. Only the
 * header and the identity are written; the caller fills the path info. */
MDTLM_EVENT_MSG *NewTaskEvent(uint32_t type, uint32_t sensorType, uint32_t instanceId, uint32_t taskId)
{
    auto *event = static_cast<MDTLM_EVENT_MSG *>(MDTLM_VRALDCN_BufAlloc(kTaskEventSize));
    if (event == nullptr) {
        return nullptr;
    }
    event->msgType = type;
    event->msgLen = sizeof(MDTLM_TASK_DATA);
    auto *task = reinterpret_cast<MDTLM_TASK_DATA *>(event->payload);
    task->sensorType = sensorType;
    task->instanceId = instanceId;
    task->taskId = taskId;
    return event;
}

} // namespace

extern "C" {

uint32_t MDTLM_VRALDCN_AddTlmTask(uint32_t sensorType, uint32_t instanceId, uint32_t taskId,
                                  const MDTLM_SENSOR_PATH_INFO *pathInfo)
{
    if (pathInfo == nullptr) {
        /* Nothing to subscribe to: the request is refused before any event exists. */
        return 1;
    }
    MDTLM_EVENT_MSG *event = NewTaskEvent(MDTLM_EVENT_ADD_TASK, sensorType, instanceId, taskId);
    if (event == nullptr) {
        MDTLM_LOG_AT(MDTLM_LOG_FAILURE, MDTLM_LINE_ADD_ENTRY_ALLOC_FAILED,
                     "[NTVVRALDCN_AddTlmTask] Alloc memory failed.., taskId: %u.", taskId);
        return 1;
    }
    auto *task = reinterpret_cast<MDTLM_TASK_DATA *>(event->payload);
    std::memcpy(&task->pathInfo, pathInfo, sizeof(task->pathInfo));

    uint32_t ret = MDTLM_VRALDCN_EVENT_Push(event);
    if (ret != 0) {
        MDTLM_LOG_AT(MDTLM_LOG_FAILURE, MDTLM_LINE_ADD_ENTRY_PUSH_FAILED,
                     "[NTVVRALDCN_AddTlmTask] push task to event queue failed, ret: %u, taskId: %u.",
                  ret, taskId);
        MDTLM_VRALDCN_BufFree(reinterpret_cast<void **>(&event));
    }
    return 0;
}

uint32_t MDTLM_VRALDCN_DelTlmTask(uint32_t sensorType, uint32_t instanceId, uint32_t taskId)
{
    MDTLM_EVENT_MSG *event = NewTaskEvent(MDTLM_EVENT_DEL_TASK, sensorType, instanceId, taskId);
    if (event == nullptr) {
        MDTLM_LOG_AT(MDTLM_LOG_FAILURE, MDTLM_LINE_DEL_ENTRY_ALLOC_FAILED,
                     "[NTVVRALDCN_DelTlmTask] Alloc memory failed..");
        return 1;
    }
    uint32_t ret = MDTLM_VRALDCN_EVENT_Push(event);
    if (ret != 0) {
        MDTLM_LOG_AT(MDTLM_LOG_FAILURE, MDTLM_LINE_DEL_ENTRY_PUSH_FAILED,
                     "[NTVVRALDCN_DelTlmTask] push task to event queue failed, ret: %u.", ret);
        MDTLM_VRALDCN_BufFree(reinterpret_cast<void **>(&event));
    }
    return 0;
}

/* Per-sensor forwarders registered with the sensor paths. */
#define MDTLM_TASK_FORWARDERS(ADD, DEL, SENSOR)                                                     \
    uint32_t ADD(uint32_t instanceId, uint32_t taskId, const MDTLM_SENSOR_PATH_INFO *pathInfo)      \
    {                                                                                               \
        return MDTLM_VRALDCN_AddTlmTask((SENSOR), instanceId, taskId, pathInfo);                    \
    }                                                                                               \
    uint32_t DEL(uint32_t instanceId, uint32_t taskId)                                              \
    {                                                                                               \
        return MDTLM_VRALDCN_DelTlmTask((SENSOR), instanceId, taskId);                              \
    }

MDTLM_TASK_FORWARDERS(MDTLM_VRALDCN_FLOW_AddTlmTask, MDTLM_VRALDCN_FLOW_DelTlmTask, MDTLM_SENSOR_VRAL_FLOW)
MDTLM_TASK_FORWARDERS(MDTLM_VRALDCN_FLOWHOP_AddTlmTask, MDTLM_VRALDCN_FLOWHOP_DelTlmTask, MDTLM_SENSOR_VRAL_FLOWHOP)
MDTLM_TASK_FORWARDERS(FWM_SRVTLM_FLOW_AddTlmTask, FWM_SRVTLM_FLOW_DelTlmTask, MDTLM_SENSOR_SRVTLM_FLOW)
MDTLM_TASK_FORWARDERS(FWM_QUMA_FLOW_AddTlmTask, FWM_QUMA_FLOW_DelTlmTask, MDTLM_SENSOR_QUMA_RESULT)
MDTLM_TASK_FORWARDERS(FWM_SRVTLM_FCTFLOW_AddTlmTask, FWM_SRVTLM_FCTFLOW_DelTlmTask, MDTLM_SENSOR_SRVTLM_FCTFLOW)
MDTLM_TASK_FORWARDERS(FWM_ZELK_FLOW_AddTlmTask, FWM_ZELK_FLOW_DelTlmTask, MDTLM_SENSOR_ZELK_CACHE)

#undef MDTLM_TASK_FORWARDERS

} /* extern "C" */
