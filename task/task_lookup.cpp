/*
 * Lookups of the task registry by sensor type, through the task list table.
 */
#include "catalogue.h"
#include "mdtlm_log.h"
#include "mdtlm_vraldcn.h"
#include "task_list.h"
#include "task_log_lines.h"

extern "C" {

MDTLM_LIST_LINK *MDTLM_VRALDCN_TASK_GetTaskHead(uint32_t sensorType)
{
    MDTLM_TASK_LIST_ENTRY *row = MDTLM_CatalogueTaskListRow(sensorType);
    return row != nullptr ? row->taskList : nullptr;
}

const char *MDTLM_VRALDCN_TASK_GetJsonHeader(uint32_t sensorType)
{
    MDTLM_TASK_LIST_ENTRY *row = MDTLM_CatalogueTaskListRow(sensorType);
    return row != nullptr ? row->jsonHeader : nullptr;
}

uint32_t MDTLM_VRALDCN_TASK_HasTlmTask(uint32_t sensorType)
{
    MDTLM_LIST_LINK *head = MDTLM_VRALDCN_TASK_GetTaskHead(sensorType);
    return (head != nullptr && !MDTLM_TaskListIsEmpty(head)) ? 1u : 0u;
}

uint32_t MDTLM_VRALDCN_TASK_GetEncodeType(uint32_t sensorType)
{
    bool json = false;
    bool gpb = false;
    MDTLM_TaskListWalk(MDTLM_VRALDCN_TASK_GetTaskHead(sensorType), [&](MDTLM_TASK_DATA &task) {
        if (task.pathInfo.encodeType == MDTLM_ENCODE_TYPE_JSON) {
            json = true;
        } else {
            gpb = true;
        }
        return true;
    });
    if (json && gpb) {
        return MDTLM_ENCODE_TYPE_MIXED;
    }
    return json ? MDTLM_ENCODE_TYPE_JSON : MDTLM_ENCODE_TYPE_GPB;
}

MDTLM_TASK_DATA *MDTLM_VRALDCN_GetTlmTaskInfo(uint32_t sensorType, uint32_t instanceId, uint32_t taskId)
{
    MDTLM_LIST_LINK *head = MDTLM_VRALDCN_TASK_GetTaskHead(sensorType);
    if (head == nullptr) {
        return nullptr;
    }
    if (MDTLM_TaskListIsEmpty(head)) {
        MDTLM_LOG_AT(MDTLM_LOG_NOTICE, MDTLM_LINE_TASK_LIST_EMPTY,
                     "[NTVVRALDCN_GetTlmTaskInfo] Telemetry task list is empty.");
        return nullptr;
    }
    MDTLM_TASK_NODE *node = MDTLM_TaskListFind(head, instanceId, taskId);
    return node != nullptr ? &node->data : nullptr;
}

} /* extern "C" */
