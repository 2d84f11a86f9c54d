/*
 * Task nodes: set-up of a new node from an add request, list linking and
 * release of a node together with the two sample buffers it owns.
 */
#include <cstring>

#include "mdtlm_vraldcn.h"
#include "task_list.h"

MDTLM_TASK_NODE *MDTLM_TaskListFind(MDTLM_LIST_LINK *head, uint32_t instanceId, uint32_t taskId)
{
    if (head == nullptr) {
        return nullptr;
    }
    for (MDTLM_LIST_LINK *link = head->next; link != head; link = link->next) {
        MDTLM_TASK_NODE *node = MDTLM_TaskNodeOf(link);
        if (node->data.instanceId == instanceId && node->data.taskId == taskId) {
            return node;
        }
    }
    return nullptr;
}

void MDTLM_TaskListPushFront(MDTLM_LIST_LINK *head, MDTLM_TASK_NODE *node)
{
    MDTLM_LIST_LINK *link = &node->link;
    link->next = head->next;
    link->prev = head;
    head->next->prev = link;
    head->next = link;
}

void MDTLM_TaskListUnlink(MDTLM_TASK_NODE *node)
{
    MDTLM_LIST_LINK *link = &node->link;
    link->prev->next = link->next;
    link->next->prev = link->prev;
    link->next = link;
    link->prev = link;
}

void MDTLM_TaskNodeFree(MDTLM_TASK_NODE **node)
{
    if (node == nullptr || *node == nullptr) {
        return;
    }
    MDTLM_VRALDCN_BufFree(reinterpret_cast<void **>(&(*node)->data.gpbBuffer));
    MDTLM_VRALDCN_BufFree(reinterpret_cast<void **>(&(*node)->data.jsonBuffer));
    MDTLM_VRALDCN_BufFree(reinterpret_cast<void **>(node));
}

extern "C" uint32_t MDTLM_VRALDCN_InitTaskNodeTask(const MDTLM_TASK_DATA *payload, MDTLM_TASK_DATA *task)
{
    if (payload == nullptr || task == nullptr) {
        return 1;
    }
    auto *gpb = static_cast<MDTLM_SAMPLE_BUFFER *>(MDTLM_VRALDCN_BufAlloc(sizeof(MDTLM_SAMPLE_BUFFER)));
    if (gpb == nullptr) {
        return 1;
    }
    auto *json = static_cast<MDTLM_SAMPLE_BUFFER *>(MDTLM_VRALDCN_BufAlloc(sizeof(MDTLM_SAMPLE_BUFFER)));
    if (json == nullptr) {
        MDTLM_VRALDCN_BufFree(reinterpret_cast<void **>(&gpb));
        return 1;
    }
    std::memset(gpb, 0, sizeof(*gpb));
    std::memset(json, 0, sizeof(*json));

    /* Only the identity and the path info of the request are taken; the rest
     * of the request payload was never written by the entry point. */
    task->sensorType = payload->sensorType;
    task->instanceId = payload->instanceId;
    task->taskId = payload->taskId;
    std::memcpy(&task->pathInfo, &payload->pathInfo, sizeof(task->pathInfo));
    task->gpbBuffer = gpb;
    task->jsonBuffer = json;
    task->unicastSeqNum = 0;
    task->multicastSeqNum = 0;
    task->lastReportSecondCnt = MDTLM_VRALDCN_STATS_GetTimerSecondCnt();
    std::memset(&task->stats, 0, sizeof(task->stats));
    return 0;
}
