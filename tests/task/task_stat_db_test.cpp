/*
 * Task statistics records: created at add, deltas added every tick, removed
 * at delete; one record per task id.
 */
#include <cstring>
#include <ctime>

#include "mdtlm_host.h"
#include "mdtlm_vraldcn.h"
#include "task_world.h"

namespace {

int64_t StatColumn(uint32_t taskId, const std::string &column)
{
    const std::string sql =
        "SELECT " + column + " FROM fem_mdtlm_stat WHERE reserved = 0 AND task_id = " + std::to_string(taskId);
    return MDTLM_HOST_DbQueryInt(sql.c_str());
}

int64_t StatRows()
{
    return MDTLM_HOST_DbQueryInt("SELECT COUNT(*) FROM fem_mdtlm_stat");
}

class TaskStatDb : public TaskWorld {};

TEST_F(TaskStatDb, AddStoresTheTaskWithZeroCounts)
{
    ASSERT_EQ(Add(4, 3, 9, MDTLM_ENCODE_TYPE_JSON, 7000), 0u);
    EXPECT_EQ(StatRows(), 1);
    MDTLM_FEM_TASK_STAT_REC rec{};
    MDTLM_DB_KEY key{0, 9};
    ASSERT_EQ(MDTLM_FEM_GetTaskStatDbRecord(&key, &rec), 0u);
    MDTLM_FEM_TASK_STAT_REC expected{};
    expected.task_id = 9;
    expected.sensor_type = 4;
    expected.encode_type = 1;
    expected.sample_interval = 7000;
    std::strcpy(expected.sensor_path, "dravik-quma:quma/result-statistics/result-statistic");
    EXPECT_EQ(std::memcmp(&rec, &expected, sizeof(rec)), 0);
    EXPECT_EQ(StatColumn(9, "sensor_type"), 4);
    EXPECT_STREQ(MDTLM_FEM_TASK_GetPathName(4), expected.sensor_path);
    EXPECT_EQ(MDTLM_FEM_TASK_GetPathName(0), nullptr);

    /* A new path info for the same task leaves the record's identity alone. */
    ASSERT_EQ(Add(4, 3, 9, MDTLM_ENCODE_TYPE_GPB, 1000), 0u);
    Tick();
    EXPECT_EQ(StatColumn(9, "encode_type"), 1);
    EXPECT_EQ(StatColumn(9, "sample_interval"), 7000);
}

TEST_F(TaskStatDb, TicksAddTheDeltasAndClearTheTask)
{
    ASSERT_EQ(Add(4, 3, 9), 0u);
    for (const char *body : {"a", "b", "!", "c", "!"}) {
        Queue(4, body);
    }
    const int64_t before = std::time(nullptr);
    Tick();
    EXPECT_EQ(StatColumn(9, "recv_msg_count"), 5);
    EXPECT_EQ(StatColumn(9, "match_item_count"), 3);
    EXPECT_EQ(StatColumn(9, "upload_ok_count"), 1);
    EXPECT_EQ(StatColumn(9, "upload_fail_count"), 0);
    const int64_t okTime = StatColumn(9, "last_upload_ok_time");
    EXPECT_GE(okTime, before - 1);
    EXPECT_LE(okTime, std::time(nullptr) + 1);
    EXPECT_EQ(StatColumn(9, "last_upload_fail_time"), 0);
    MDTLM_TASK_STATS zero{};
    EXPECT_EQ(std::memcmp(&Task(4, 3, 9)->stats, &zero, sizeof(zero)), 0);

    /* Without uploads the stored times stay; counters keep accumulating. */
    MDTLM_HOST_DbQueryInt("UPDATE fem_mdtlm_stat SET last_upload_ok_time = 1234 WHERE task_id = 9");
    Queue(4, "!");
    Tick();
    EXPECT_EQ(StatColumn(9, "recv_msg_count"), 6);
    EXPECT_EQ(StatColumn(9, "match_item_count"), 3);
    EXPECT_EQ(StatColumn(9, "last_upload_ok_time"), 1234);

    /* Delete removes it; a new task 9 starts from zero. */
    ASSERT_EQ(Del(4, 3, 9), 0u);
    EXPECT_EQ(StatRows(), 0);
    ASSERT_EQ(Add(4, 3, 9), 0u);
    EXPECT_EQ(StatColumn(9, "recv_msg_count"), 0);
    EXPECT_EQ(StatColumn(9, "last_upload_ok_time"), 0);
}

TEST_F(TaskStatDb, OneRecordPerTaskIdAcrossSensors)
{
    ASSERT_EQ(Add(1, 1, 9, MDTLM_ENCODE_TYPE_GPB, 2000), 0u);
    ASSERT_EQ(Add(2, 5, 9, MDTLM_ENCODE_TYPE_JSON, 3000), 0u);
    EXPECT_EQ(StatRows(), 1);
    Queue(1, "x");
    Queue(2, "y,");
    Queue(2, "z,");
    Tick();
    EXPECT_EQ(StatColumn(9, "recv_msg_count"), 3);
    EXPECT_EQ(StatColumn(9, "upload_ok_count"), 2);
    EXPECT_EQ(StatColumn(9, "sensor_type"), 1);
    EXPECT_EQ(StatColumn(9, "sample_interval"), 2000);

    ASSERT_EQ(Del(2, 5, 9), 0u); /* the shared record goes with either task */
    EXPECT_EQ(StatRows(), 0);
    Tick(); /* the remaining task recreates it from its own deltas */
    EXPECT_EQ(StatRows(), 1);
    EXPECT_EQ(StatColumn(9, "sensor_type"), 1);
}

TEST_F(TaskStatDb, UnknownSensorTouchesNothing)
{
    ASSERT_EQ(Add(1, 1, 9), 0u);
    MDTLM_TASK_DATA *task = Task(1, 1, 9);
    task->stats.recvMsgCnt = 4;
    MDTLM_HOST_CallCountReset();
    EXPECT_NE(MDTLM_FEM_WriteTaskStat2DbProc(7, task), 0u);
    EXPECT_NE(MDTLM_FEM_WriteTaskStat2DbProc(0, task), 0u);
    EXPECT_EQ(MDTLM_HOST_CallCount(MDTLM_HOST_OP_DB_CREATE), 0u);
    EXPECT_EQ(task->stats.recvMsgCnt, 4u);
}

TEST_F(TaskStatDb, StoreFailuresAreLoggedAndTheDeltaIsLost)
{
    ASSERT_EQ(Add(3, 1, 9), 0u);
    const std::string line = "[MDTLM_VRALDCN_TASK] Write task stat to db failed.";
    struct Case {
        const char *what;
        MDTLM_HOST_OP op;
        uint32_t skip;
        bool logged;
        int64_t recvAfter; /* -1: no record */
    };
    const Case cases[] = {
        {"update write", MDTLM_HOST_OP_DB_WRITE, 0, true, 0},
        {"update set", MDTLM_HOST_OP_DB_SET_ALL, 0, true, 0},
        {"update handle", MDTLM_HOST_OP_DB_CREATE, 1, true, 0},
        /* an unreadable record is created anew from the deltas */
        {"read", MDTLM_HOST_OP_DB_READ, 0, false, 2},
        {"fetch", MDTLM_HOST_OP_DB_GET_ALL, 0, false, 2},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.what);
        MDTLM_DB_KEY key{0, 9};
        MDTLM_TASK_DATA *task = Task(3, 1, 9);
        task->stats.recvMsgCnt = 2;
        fw().ClearLogs();
        MDTLM_HOST_FaultSet(c.op, c.skip, 1, 1);
        MDTLM_FEM_WriteTaskStat2DbProc(3, task);
        MDTLM_HOST_FaultClear();
        EXPECT_EQ(CountLogs(line, 2), c.logged ? 1u : 0u);
        EXPECT_EQ(task->stats.recvMsgCnt, 0u);
        EXPECT_EQ(StatColumn(9, "recv_msg_count"), c.recvAfter);
        EXPECT_EQ(MDTLM_HOST_DbOpenHandles(), 0u);
        MDTLM_FEM_DelTaskStatDbRecord(&key);
        MDTLM_FEM_WriteTaskStat2DbProc(3, task); /* fresh record with zero counts */
    }

    /* Creating: a path text that cannot be written stores nothing. */
    MDTLM_DB_KEY key{0, 9};
    MDTLM_FEM_DelTaskStatDbRecord(&key);
    MDTLM_HOST_FaultSet(MDTLM_HOST_OP_SPRINTF_S, 0, 1, -1);
    MDTLM_FEM_WriteTaskStat2DbProc(3, Task(3, 1, 9));
    MDTLM_HOST_FaultClear();
    EXPECT_EQ(StatRows(), 0);
    fw().ClearLogs();
    MDTLM_HOST_FaultSet(MDTLM_HOST_OP_DB_WRITE, 0, 1, 1);
    MDTLM_FEM_WriteTaskStat2DbProc(3, Task(3, 1, 9));
    EXPECT_EQ(CountLogs(line, 2), 1u);
    EXPECT_EQ(StatRows(), 0);
}

TEST_F(TaskStatDb, DirectRecordAccess)
{
    MDTLM_FEM_TASK_STAT_REC rec{};
    rec.task_id = 44;
    rec.upload_fail_count = 0x100000000ull;
    std::strcpy(rec.sensor_path, "p");
    EXPECT_EQ(MDTLM_FEM_SetTaskStatDbRecord(&rec), 0u);
    EXPECT_EQ(StatColumn(44, "upload_fail_count"), 0x100000000ll);
    EXPECT_EQ(MDTLM_FEM_SetTaskStatDbRecord(nullptr), 1u);

    MDTLM_FEM_TASK_STAT_REC back{};
    MDTLM_DB_KEY key{0, 44};
    EXPECT_EQ(MDTLM_FEM_GetTaskStatDbRecord(&key, &back), 0u);
    EXPECT_EQ(std::memcmp(&rec, &back, sizeof(rec)), 0);
    EXPECT_EQ(MDTLM_FEM_GetTaskStatDbRecord(nullptr, &back), 1u);

    MDTLM_TASK_DATA task{};
    task.taskId = 44;
    task.stats.uploadOkCnt = 3;
    task.stats.lastUploadOkTime = 99;
    MDTLM_FEM_UpdateTaskStatDb(0, &task, &back);
    EXPECT_EQ(StatColumn(44, "upload_ok_count"), 3);
    EXPECT_EQ(StatColumn(44, "last_upload_ok_time"), 99);
    EXPECT_EQ(task.stats.uploadOkCnt, 3u); /* not cleared */

    MDTLM_FEM_DelTaskStatDb(&task);
    EXPECT_EQ(StatRows(), 0);
    EXPECT_EQ(MDTLM_FEM_GetTaskStatDbRecord(&key, &back), 1u);
    EXPECT_EQ(MDTLM_HOST_DbOpenHandles(), 0u);
}

} // namespace
