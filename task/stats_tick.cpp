/*
 * The period tick: re-initialise the sample buffers, drain the statistics
 * queue through every task of each message's sensor, upload what the task
 * buffers still hold, then write the two database record families.
 */
#include "loss_counters.h"
#include "mdtlm_vraldcn.h"
#include "task_list.h"

namespace {

/* Messages that reached a task and are handled in one tick; the rest of the
 * queue waits for the next tick. */
constexpr uint32_t kMaxMsgsPerTick = 2000;

} // namespace

extern "C" {

uint32_t MDTLM_VRALDCN_STATS_UploadStatsDataByStatsMsg(MDTLM_STATS_MSG *msg)
{
    if (msg == nullptr) {
        return 0;
    }
    MDTLM_LIST_LINK *head = MDTLM_VRALDCN_TASK_GetTaskHead(msg->msgType);
    MDTLM_STATS_MAP_ENTRY *row = MDTLM_VRALDCN_STATS_GetStatsMap(msg->msgType);
    if (head == nullptr || row == nullptr) {
        return 0;
    }
    uint32_t matched = 0;
    MDTLM_TaskListWalk(head, [&](MDTLM_TASK_DATA &task) {
        task.stats.recvMsgCnt += 1;
        if (row->msgProc != nullptr) {
            uint32_t accepted = row->msgProc(&task, msg);
            task.stats.matchItemCnt += accepted;
            matched += accepted;
        }
        return true;
    });
    return matched;
}

void MDTLM_VRALDCN_STATS_UploadRestByTask(uint32_t sensorType)
{
    MDTLM_TaskListWalk(MDTLM_VRALDCN_TASK_GetTaskHead(sensorType), [](MDTLM_TASK_DATA &task) {
        MDTLM_SAMPLE_BUFFER *buffer = MDTLM_TaskActiveBuffer(&task);
        if (buffer != nullptr) {
            MDTLM_VRALDCN_TASK_UploadStatsDataByTask(buffer, &task);
            buffer->itemCnt = 0;
            buffer->dataLen = 0;
        }
        return true;
    });
}

void MDTLM_VRALDCN_STATS_UploadRest(void)
{
    for (const MDTLM_STATS_MAP_ENTRY &row : g_femMdtlmStatsMap) {
        MDTLM_VRALDCN_STATS_UploadRestByTask(row.sensorType);
    }
}

uint32_t MDTLM_VRALDCN_STATS_UploadStatsData(void *payload, uint32_t payloadLen)
{
    (void)payload;
    (void)payloadLen;
    MDTLM_VRALDCN_STATS_InitStatsMap();

    uint32_t handled = 0;
    while (handled < kMaxMsgsPerTick) {
        MDTLM_STATS_MSG *msg = MDTLM_VRALDCN_STATS_QUE_Pop();
        if (msg == nullptr) {
            break;
        }
        /* Messages whose sensor lost its last task since intake are dropped
         * without counting toward the limit. */
        if (MDTLM_VRALDCN_TASK_HasTlmTask(msg->msgType) != 0) {
            (void)MDTLM_VRALDCN_STATS_UploadStatsDataByStatsMsg(msg);
            ++handled;
            MDTLM_LossAddOnWorker(MDTLM_LOSS_SLOT(handledMsgCnt));
        } else {
            MDTLM_LossAddOnWorker(MDTLM_LOSS_SLOT(noTaskAtTickCnt));
        }
        MDTLM_VRALDCN_BufFree(reinterpret_cast<void **>(&msg));
    }

    MDTLM_VRALDCN_STATS_UploadRest();
    MDTLM_VRALDCN_UpdateReportPerfToDb();
    MDTLM_FEM_WriteAllTaskStat2Db();
    return 0;
}

} /* extern "C" */
