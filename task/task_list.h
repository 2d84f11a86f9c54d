/*
 * Walking and editing the per-sensor task lists (circular, doubly linked,
 * with a sentinel head). A node's link is its first member, so a link
 * pointer is the node pointer. All of this runs on the worker thread.
 */
#ifndef MDTLM_TASK_TASK_LIST_H
#define MDTLM_TASK_TASK_LIST_H

#include <cstdint>

#include "mdtlm_types.h"

inline MDTLM_TASK_NODE *MDTLM_TaskNodeOf(MDTLM_LIST_LINK *link)
{
    return reinterpret_cast<MDTLM_TASK_NODE *>(link);
}

inline bool MDTLM_TaskListIsEmpty(const MDTLM_LIST_LINK *head)
{
    return head->next == head;
}

/* Visits every task from the first node (the newest) to the last. The visitor
 * returns false to stop the walk early. The visitor must not unlink nodes. */
template <typename Visit>
void MDTLM_TaskListWalk(MDTLM_LIST_LINK *head, Visit &&visit)
{
    if (head == nullptr) {
        return;
    }
    for (MDTLM_LIST_LINK *link = head->next; link != head; link = link->next) {
        if (!visit(MDTLM_TaskNodeOf(link)->data)) {
            return;
        }
    }
}

/* First node whose (instanceId, taskId) pair matches, or null. */
MDTLM_TASK_NODE *MDTLM_TaskListFind(MDTLM_LIST_LINK *head, uint32_t instanceId, uint32_t taskId);

/* Links the node directly behind the head: the newest task is visited first. */
void MDTLM_TaskListPushFront(MDTLM_LIST_LINK *head, MDTLM_TASK_NODE *node);

/* Takes the node out of its list; its links are left pointing at itself. */
void MDTLM_TaskListUnlink(MDTLM_TASK_NODE *node);

/* Frees the node's two sample buffers and the node; the caller's pointer becomes null. */
void MDTLM_TaskNodeFree(MDTLM_TASK_NODE **node);

/* The buffer a task fills: JSON for encode type 1, GPB for every other value. */
inline MDTLM_SAMPLE_BUFFER *MDTLM_TaskActiveBuffer(const MDTLM_TASK_DATA *task)
{
    return task->pathInfo.encodeType == MDTLM_ENCODE_TYPE_JSON ? task->jsonBuffer : task->gpbBuffer;
}

#endif /* MDTLM_TASK_TASK_LIST_H */
