/*
 * Records of "fem_mdtlm_stat": one per task id, created when a task is added,
 * accumulating the task's counter deltas once per period tick, removed when
 * the task is deleted.
 */
#include <cstring>

#include "catalogue.h"
#include "db_handle.h"
#include "mdtlm_log.h"
#include "mdtlm_platform.h"
#include "mdtlm_vraldcn.h"
#include "task_list.h"
#include "task_log_lines.h"

namespace {

bool IsKnownSensor(uint32_t sensorType)
{
    return sensorType >= MDTLM_SENSOR_VRAL_FLOW && sensorType <= MDTLM_SENSOR_ZELK_CACHE;
}

/* Adds the task's deltas into a stored record; times only when set. */
void AccumulateTaskStats(const MDTLM_TASK_STATS &stats, MDTLM_FEM_TASK_STAT_REC *rec)
{
    rec->recv_msg_count += stats.recvMsgCnt;
    rec->match_item_count += stats.matchItemCnt;
    rec->upload_ok_count += stats.uploadOkCnt;
    rec->upload_fail_count += stats.uploadFailCnt;
    if (stats.lastUploadOkTime != 0) {
        rec->last_upload_ok_time = stats.lastUploadOkTime;
    }
    if (stats.lastUploadFailTime != 0) {
        rec->last_upload_fail_time = stats.lastUploadFailTime;
    }
}

} // namespace

extern "C" {

const char *MDTLM_FEM_TASK_GetPathName(uint32_t sensorType)
{
    MDTLM_PATH_NAME_ENTRY *row = MDTLM_CataloguePathNameRow(sensorType);
    return row != nullptr ? row->pathName : nullptr;
}

uint32_t MDTLM_FEM_SetTaskStatDbRecord(const MDTLM_FEM_TASK_STAT_REC *rec)
{
    if (rec == nullptr) {
        return 1;
    }
    MDTLM_TaskStatDbHandle handle;
    if (handle.Create(MDTLM_DB_OP_WRITE) != 0) {
        return 1;
    }
    if (db_set_fem_mdtlm_stat_all_fields(handle.Get(), rec, sizeof(*rec)) != 0) {
        return 1;
    }
    return db_write_obj(handle.Get());
}

uint32_t MDTLM_FEM_GetTaskStatDbRecord(const MDTLM_DB_KEY *key, MDTLM_FEM_TASK_STAT_REC *rec)
{
    if (key == nullptr || rec == nullptr) {
        return 1;
    }
    MDTLM_TaskStatDbHandle handle;
    if (handle.Create(MDTLM_DB_OP_READ) != 0) {
        return 1;
    }
    const MDTLM_DB_KEY_DESC desc = MDTLM_DbKeyDesc();
    if (db_read_obj(handle.Get(), &desc, key) != 0) {
        return 1;
    }
    return db_get_fem_mdtlm_stat_all_fields(handle.Get(), rec, sizeof(*rec)) == 0 ? 0u : 1u;
}

void MDTLM_FEM_DelTaskStatDbRecord(const MDTLM_DB_KEY *key)
{
    if (key == nullptr) {
        return;
    }
    MDTLM_TaskStatDbHandle handle;
    if (handle.Create(MDTLM_DB_OP_REMOVE) != 0) {
        return;
    }
    const MDTLM_DB_KEY_DESC desc = MDTLM_DbKeyDesc();
    (void)db_remove_obj(handle.Get(), &desc, key);
}

uint32_t MDTLM_FEM_AddTaskStatDb(uint32_t sensorType, MDTLM_TASK_DATA *task, MDTLM_FEM_TASK_STAT_REC *rec)
{
    if (task == nullptr || rec == nullptr) {
        return 1;
    }
    rec->task_id = task->taskId;
    rec->sensor_type = sensorType;
    rec->encode_type = task->pathInfo.encodeType;
    rec->sample_interval = task->pathInfo.sampleInterval;
    rec->recv_msg_count = task->stats.recvMsgCnt;
    rec->match_item_count = task->stats.matchItemCnt;
    rec->upload_ok_count = task->stats.uploadOkCnt;
    rec->upload_fail_count = task->stats.uploadFailCnt;
    rec->last_upload_ok_time = task->stats.lastUploadOkTime;
    rec->last_upload_fail_time = task->stats.lastUploadFailTime;

    const char *path = MDTLM_FEM_TASK_GetPathName(sensorType);
    if (path != nullptr &&
        sprintf_s(rec->sensor_path, sizeof(rec->sensor_path), "%.*s", static_cast<int>(sizeof(rec->sensor_path) - 1),
                  path) < 0) {
        return 1;
    }
    uint32_t ret = MDTLM_FEM_SetTaskStatDbRecord(rec);
    if (ret != 0) {
        MDTLM_LOG_AT(MDTLM_LOG_FAILURE, MDTLM_LINE_TASK_STAT_NEW_WRITE_FAILED,
                     "[MDTLM_VRALDCN_TASK] Write task stat to db failed.");
    }
    return ret;
}

void MDTLM_FEM_UpdateTaskStatDb(uint32_t sensorType, MDTLM_TASK_DATA *task, MDTLM_FEM_TASK_STAT_REC *rec)
{
    (void)sensorType;
    if (task == nullptr || rec == nullptr) {
        return;
    }
    AccumulateTaskStats(task->stats, rec);
    if (MDTLM_FEM_SetTaskStatDbRecord(rec) != 0) {
        MDTLM_LOG_AT(MDTLM_LOG_FAILURE, MDTLM_LINE_TASK_STAT_UPDATE_WRITE_FAILED,
                     "[MDTLM_VRALDCN_TASK] Write task stat to db failed.");
    }
}

uint32_t MDTLM_FEM_WriteTaskStat2DbProc(uint32_t sensorType, MDTLM_TASK_DATA *task)
{
    if (!IsKnownSensor(sensorType) || task == nullptr) {
        return 1;
    }
    const MDTLM_DB_KEY key{0, task->taskId};
    MDTLM_FEM_TASK_STAT_REC rec{};
    if (MDTLM_FEM_GetTaskStatDbRecord(&key, &rec) == 0) {
        MDTLM_FEM_UpdateTaskStatDb(sensorType, task, &rec);
    } else {
        /* A failed fetch may have left part of a record behind. */
        std::memset(&rec, 0, sizeof(rec));
        (void)MDTLM_FEM_AddTaskStatDb(sensorType, task, &rec);
    }
    /* The deltas are gone once offered to the database, stored or not. */
    std::memset(&task->stats, 0, sizeof(task->stats));
    return 0;
}

void MDTLM_FEM_WriteAllTaskStat2Db(void)
{
    for (const MDTLM_TASK_LIST_ENTRY &row : g_vralDcnTlmTaskListMap) {
        const uint32_t sensorType = row.sensorType;
        MDTLM_TaskListWalk(row.taskList, [sensorType](MDTLM_TASK_DATA &task) {
            (void)MDTLM_FEM_WriteTaskStat2DbProc(sensorType, &task);
            return true;
        });
    }
}

void MDTLM_FEM_DelTaskStatDb(MDTLM_TASK_DATA *task)
{
    if (task == nullptr) {
        return;
    }
    const MDTLM_DB_KEY key{0, task->taskId};
    MDTLM_FEM_DelTaskStatDbRecord(&key);
}

} /* extern "C" */
