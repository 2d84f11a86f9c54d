/*
 * Release of everything the task subsystem holds, for a full unload after
 * the worker thread has stopped. The database is left as it is.
 */
#include "mdtlm_vraldcn.h"
#include "task_list.h"

extern "C" void MDTLM_VRALDCN_TASK_ReleaseAll(void)
{
    for (MDTLM_TASK_LIST_ENTRY &row : g_vralDcnTlmTaskListMap) {
        MDTLM_LIST_LINK *head = row.taskList;
        if (head == nullptr) {
            continue;
        }
        while (!MDTLM_TaskListIsEmpty(head)) {
            MDTLM_TASK_NODE *node = MDTLM_TaskNodeOf(head->next);
            MDTLM_TaskListUnlink(node);
            MDTLM_TaskNodeFree(&node);
        }
    }
    for (MDTLM_STATS_MAP_ENTRY &row : g_femMdtlmStatsMap) {
        if (row.sampleData != nullptr) {
            MDTLM_VRALDCN_BufFree(reinterpret_cast<void **>(&row.sampleData->gpbBuffer));
            MDTLM_VRALDCN_BufFree(reinterpret_cast<void **>(&row.sampleData->jsonBuffer));
        }
    }
    MDTLM_VRALDCN_DestoryReportPerf();
}
