/*
 * Add and delete handlers of the task registry, run on the worker thread by
 * the event dispatcher. A task lives from the moment its node is linked
 * into its sensor's list until the node is unlinked.
 */
#include <cstring>

#include "mdtlm_log.h"
#include "mdtlm_vraldcn.h"
#include "task_list.h"
#include "task_log_lines.h"

namespace {

/* The filter engine only looks at as many conditions and filters as the
 * block has room for; larger counts are accepted and noted once. */
void NoteClampedPathInfo(const MDTLM_TASK_DATA &task)
{
    const MDTLM_SENSOR_PATH_INFO &info = task.pathInfo;
    if (info.conditionCnt > MDTLM_MAX_CONDITIONS || info.filterCnt > MDTLM_MAX_FILTERS) {
        MDTLM_LOG(MDTLM_LOG_FAILURE,
                  "[NTVVRALDCN_TASK_AddTlmTaskToList] Path info clamped, taskId: %u, conditionCnt: %u, filterCnt: %u.",
                  task.taskId, info.conditionCnt, info.filterCnt);
    }
}

} // namespace

extern "C" {

uint32_t MDTLM_VRALDCN_TASK_AddTlmTaskToList(void *payload, uint32_t payloadLen)
{
    if (MDTLM_VRALDCN_InitReportPerf() != 0) {
        return 1;
    }
    if (MDTLM_VRALDCN_STATS_CreateTimer() != 0) {
        MDTLM_VRALDCN_DestoryReportPerf();
        return 1;
    }
    if (payload == nullptr || payloadLen != sizeof(MDTLM_TASK_DATA)) {
        MDTLM_LOG_AT(MDTLM_LOG_FAILURE, MDTLM_LINE_ADD_HANDLER_BAD_PAYLOAD,
                     "[NTVVRALDCN_TASK_AddTlmTaskToList] Msg is NULL, msgLen: %u", payloadLen);
        return 1;
    }
    const auto *request = static_cast<const MDTLM_TASK_DATA *>(payload);

    /* An add for a pair that already exists only replaces its path info. */
    MDTLM_TASK_DATA *existing =
        MDTLM_VRALDCN_GetTlmTaskInfo(request->sensorType, request->instanceId, request->taskId);
    if (existing != nullptr) {
        std::memcpy(&existing->pathInfo, &request->pathInfo, sizeof(existing->pathInfo));
        NoteClampedPathInfo(*existing);
        return 0;
    }

    MDTLM_LIST_LINK *head = MDTLM_VRALDCN_TASK_GetTaskHead(request->sensorType);
    if (head == nullptr) {
        return 1;
    }
    auto *node = static_cast<MDTLM_TASK_NODE *>(MDTLM_VRALDCN_BufAlloc(sizeof(MDTLM_TASK_NODE)));
    if (node == nullptr) {
        MDTLM_LOG_AT(MDTLM_LOG_FAILURE, MDTLM_LINE_ADD_HANDLER_NODE_ALLOC_FAILED,
                     "[NTVVRALDCN_AdddTlmTask] Add telemetry task[%u] failed, alloc memery falied.",
                  request->taskId);
        return 1;
    }
    if (MDTLM_VRALDCN_InitTaskNodeTask(request, &node->data) != 0) {
        MDTLM_VRALDCN_BufFree(reinterpret_cast<void **>(&node));
        return 1;
    }
    MDTLM_TaskListPushFront(head, node);
    (void)MDTLM_FEM_WriteTaskStat2DbProc(node->data.sensorType, &node->data);
    NoteClampedPathInfo(node->data);
    MDTLM_LOG_AT(MDTLM_LOG_SUCCESS, MDTLM_LINE_ADD_HANDLER_SUCCESS,
                 "[NTVVRALDCN_AdddTlmTask] Add telemetry task[%u] success.", node->data.taskId);
    return 0;
}

uint32_t MDTLM_VRALDCN_TASK_DelTlmTaskFromList(void *payload, uint32_t payloadLen)
{
    if (payload == nullptr || payloadLen != sizeof(MDTLM_TASK_DATA)) {
        MDTLM_LOG_AT(MDTLM_LOG_FAILURE, MDTLM_LINE_DEL_HANDLER_BAD_PAYLOAD,
                     "[NTVVRALDCN_TASK_DelTlmTaskFromList] Msg is NULL, msgLen: %u", payloadLen);
        return 1;
    }
    const auto *request = static_cast<const MDTLM_TASK_DATA *>(payload);
    MDTLM_LIST_LINK *head = MDTLM_VRALDCN_TASK_GetTaskHead(request->sensorType);
    if (head == nullptr) {
        return 1;
    }
    if (MDTLM_TaskListIsEmpty(head)) {
        MDTLM_LOG_AT(MDTLM_LOG_NOTICE, MDTLM_LINE_DEL_HANDLER_LIST_EMPTY,
                     "[NTVVRALDCN_TASK_DelTlmTaskFromList] Telemetry task list is empty.");
        return 0;
    }
    MDTLM_TASK_NODE *node = MDTLM_TaskListFind(head, request->instanceId, request->taskId);
    if (node == nullptr) {
        return 0;
    }
    const uint32_t taskId = node->data.taskId;
    MDTLM_DB_KEY key{0, taskId};
    MDTLM_FEM_DelTaskStatDbRecord(&key);

    MDTLM_TaskListUnlink(node);
    MDTLM_TaskNodeFree(&node);
    MDTLM_LOG_AT(MDTLM_LOG_SUCCESS, MDTLM_LINE_DEL_HANDLER_SUCCESS,
                 "[NTVVRALDCN_TASK_DelTlmTaskFromList] Delete telemetry task[%u] success.", taskId);

    if (MDTLM_TaskListIsEmpty(head)) {
        MDTLM_VRALDCN_ClearReportPerfData();
    }
    return 0;
}

} /* extern "C" */
