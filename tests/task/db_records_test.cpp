/* The report-performance ring with its rows, and the per-task statistics records. */
#include <cstring>
#include <ctime>

#include "task_world.h"

static int64_t Perf(uint32_t slot, const std::string &column)
{
    return Sql("SELECT " + column + " FROM vraldcn_mdtlm_report_perf WHERE history_id = " + std::to_string(slot));
}

static int64_t Stat(uint32_t taskId, const std::string &column)
{
    return Sql("SELECT " + column + " FROM fem_mdtlm_stat WHERE reserved = 0 AND task_id = " + std::to_string(taskId));
}

static MDTLM_REPORT_PERF_REC &Rec(uint32_t slot) { return g_mdtlmNtvVralDcnReportPerf[slot].rec; }

TEST_F(TaskWorld, SlotsAreClaimedByPeriodAndTakenOver64Later)
{
    ASSERT_EQ(Add(1, 1, 1), 0u);
    MDTLM_VRALDCN_UpdateReportPerfInFwmItermCnt(0, 1, 264); /* slot 0 holds period 0 already */
    EXPECT_EQ(Rec(0).start_time_s, 0u);

    const uint32_t now = static_cast<uint32_t>(std::time(nullptr));
    MDTLM_VRALDCN_UpdateReportPerfInFwmItermCnt(70, 2, 528);
    MDTLM_VRALDCN_UpdateReportPerfOutItemCnt(70, 1, 90);
    EXPECT_EQ(Rec(6).period_index, 70u);
    EXPECT_GE(Rec(6).start_time_s, now);
    Rec(6).start_time_s = 1;
    Rec(6).end_time_s = 2;
    MDTLM_VRALDCN_UpdateReportPerfOutItemCnt(6, 1, 0xFFFFFFFFu); /* period 6 takes slot 6 over */
    EXPECT_EQ(Rec(6).period_index, 6u);
    EXPECT_EQ(Rec(6).in_fwm_item_count, 0u);
    EXPECT_EQ(Rec(6).out_item_byte_count, 0xFFFFFFFFu);
    EXPECT_EQ(Rec(6).end_time_s, 0u);
    EXPECT_GE(Rec(6).start_time_s, now);
    MDTLM_VRALDCN_UpdateReportPerfOutItemCnt(6, 1, 40);
    EXPECT_EQ(Rec(6).out_item_byte_count, 39u); /* 32-bit wrap */

    MDTLM_VRALDCN_UpdateReportPerfEndTime(5, 100, 200);
    MDTLM_VRALDCN_UpdateReportPerfStartTime(133, 21, 22); /* claims slot 5 for its period */
    EXPECT_EQ(Rec(5).period_index, 133u);
    EXPECT_EQ(Rec(5).start_time_s, 21u);
    MDTLM_VRALDCN_UpdateReportPerfPeriodIndex(73);
    EXPECT_EQ(Rec(9).period_index, 73u);

    Tick(); /* the write time replaces the end time */
    EXPECT_GE(Perf(5, "end_time_s"), now);
    EXPECT_EQ(Perf(5, "start_time_s"), 21);
    EXPECT_EQ(Perf(9, "period_index"), -1); /* claimed, never counted: not written */
}

TEST_F(TaskWorld, StartTimeIsStoredOnlyInASlotItClaims)
{
    ASSERT_EQ(Add(1, 1, 1), 0u);
    struct Case {
        const char *name;
        bool countedBefore; /* the slot was claimed by a count for `held` */
        uint32_t held;
        uint32_t period;
        bool claims;
    };
    const Case cases[] = {
        {"fresh slot 0 already holds period 0", false, 0, 0, false},
        {"slot holds the period", true, 70, 70, false},
        {"slot holds another period", true, 6, 70, true},
        {"slot holds a period 64 later", true, 137, 73, true},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.name);
        MDTLM_REPORT_PERF_SLOT &slot = g_mdtlmNtvVralDcnReportPerf[c.period & 63];
        if (c.countedBefore) {
            MDTLM_VRALDCN_UpdateReportPerfInFwmItermCnt(c.held, 1, 264);
        }
        const MDTLM_REPORT_PERF_REC before = slot.rec;
        slot.dirty = 0;
        MDTLM_VRALDCN_UpdateReportPerfStartTime(c.period, 21, 22);
        EXPECT_EQ(slot.dirty, 1u);
        EXPECT_EQ(slot.rec.period_index, c.period);
        EXPECT_EQ(slot.rec.history_id, c.period & 63);
        if (c.claims) {
            EXPECT_EQ(slot.rec.start_time_s, 21u);
            EXPECT_EQ(slot.rec.start_time_ms, 22u);
            EXPECT_EQ(slot.rec.in_fwm_item_count, 0u); /* the older period's counts are gone */
        } else {
            EXPECT_EQ(slot.rec.start_time_s, before.start_time_s); /* the start of its claim */
            EXPECT_EQ(slot.rec.start_time_ms, before.start_time_ms);
            EXPECT_EQ(slot.rec.in_fwm_item_count, before.in_fwm_item_count);
        }
    }
}

TEST_F(TaskWorld, DirtySlotsWrittenWholeThenUpdatedFieldByField)
{
    ASSERT_EQ(Add(1, 1, 1), 0u);
    MDTLM_VRALDCN_UpdateReportPerfInFwmItermCnt(70, 2, 528);
    MDTLM_VRALDCN_UpdateReportPerfOutItemCnt(3, 1, 50);
    fw().ClearLogs();
    MDTLM_HOST_CallCountReset();
    Tick();
    EXPECT_EQ(Sql("SELECT COUNT(*) FROM vraldcn_mdtlm_report_perf"), 2);
    EXPECT_EQ(Perf(6, "in_fwm_item_byte_count"), 528);
    EXPECT_EQ(Perf(3, "out_item_byte_count"), 50);
    EXPECT_EQ(Calls(MDTLM_HOST_OP_DB_UPDATE), 0u);
    EXPECT_EQ(Logs(), (Lines{"1 [VRALDCN_AddReportPerfEntryDbData] Write db vraldcn_mdtlm_report_perf success, ret: "
                             "0, history_id: 3, period_index: 3.",
                             "1 [VRALDCN_AddReportPerfEntryDbData] Write db vraldcn_mdtlm_report_perf success, ret: "
                             "0, history_id: 6, period_index: 70."}));
    MDTLM_HOST_CallCountReset();
    Tick(); /* unchanged slots are not written again */
    EXPECT_EQ(Calls(MDTLM_HOST_OP_DB_SET_FIELD) + Calls(MDTLM_HOST_OP_DB_UPDATE), 0u);
    MDTLM_VRALDCN_UpdateReportPerfInFwmItermCnt(70, 1, 264);
    Tick();
    EXPECT_EQ(Calls(MDTLM_HOST_OP_DB_UPDATE), 1u);
    EXPECT_EQ(Calls(MDTLM_HOST_OP_DB_SET_FIELD), 13u);
    EXPECT_EQ(Perf(6, "in_fwm_item_byte_count"), 792);
}

TEST_F(TaskWorld, ReportPerfDatabaseFailures)
{
    ASSERT_EQ(Add(1, 1, 1), 0u);
    MDTLM_VRALDCN_UpdateReportPerfOutItemCnt(4, 1, 1);
    Tick(); /* row 4 exists from here on; row 8 never does */
    struct Case {
        uint32_t period;
        MDTLM_HOST_OP op;
        uint32_t skip, count;
        int64_t result;
        std::string line; /* empty: written whole instead */
    };
    const Case cases[] = {
        {4, MDTLM_HOST_OP_DB_CREATE, 1, 1, 7, "[UpdateDbData] Create vraldcn_mdtlm_report_perf obj failed, ret: 7."},
        {4, MDTLM_HOST_OP_DB_SET_FIELD, 3, 2, 3, "[UpdateDbData] set vraldcn_mdtlm_report_perf field failed, ret: 6."},
        {4, MDTLM_HOST_OP_DB_UPDATE, 0, 1, 9, "[UpdateDbData] Update vraldcn_mdtlm_report_perf failed, ret: 9."},
        {8, MDTLM_HOST_OP_DB_CREATE, 1, 1, 5,
         "[VRALDCN_WriteReportPerfEntryDb] Create vraldcn_mdtlm_report_perf failed ret: 5."},
        {8, MDTLM_HOST_OP_DB_SET_ALL, 0, 1, 4,
         "[VRALDCN_WriteReportPerfEntryDb] Set vraldcn_mdtlm_report_perf all field failed ret: 4."},
        {8, MDTLM_HOST_OP_DB_WRITE, 0, 1, 2, "[VRALDCN_WriteReportPerfEntryDb] Write vraldcn_mdtlm_report_perf failed ret: 2."},
        {4, MDTLM_HOST_OP_DB_READ, 0, 1, 1, ""},
        {4, MDTLM_HOST_OP_DB_CREATE, 0, 1, 1, ""},
    };
    for (const Case &c : cases) {
        const uint32_t slot = c.period & 63;
        MDTLM_VRALDCN_UpdateReportPerfOutItemCnt(c.period, 1, 1);
        fw().ClearLogs();
        MDTLM_HOST_CallCountReset();
        MDTLM_HOST_FaultSet(c.op, c.skip, c.count, c.result);
        MDTLM_VRALDCN_UpdateReportPerfToDb();
        MDTLM_HOST_FaultClear();
        if (c.line.empty()) {
            EXPECT_EQ(Calls(MDTLM_HOST_OP_DB_WRITE), 1u);
            EXPECT_EQ(Logs().size(), 1u);
        } else {
            const std::string ids = "history_id: " + std::to_string(slot) + ", period_index: " + std::to_string(c.period);
            EXPECT_EQ(Logs(), (Lines{"2 " + c.line,
                                     "2 [VRALDCN_AddReportPerfEntryDbData] Write db vraldcn_mdtlm_report_perf failed "
                                     "ret: 1, " + ids + ".",
                                     "2 [ FEM ]Update report perf to db failed ret: 1, index: " + std::to_string(slot) +
                                         ", periodIndex: " + std::to_string(c.period) + "."}));
        }
        EXPECT_EQ(g_mdtlmNtvVralDcnReportPerf[slot].dirty, 0u); /* not repeated */
        EXPECT_EQ(MDTLM_HOST_DbOpenHandles(), 0u);
        EXPECT_EQ(Calls(MDTLM_HOST_OP_DB_CREATE), Calls(MDTLM_HOST_OP_DB_RELEASE) + (c.op == MDTLM_HOST_OP_DB_CREATE));
    }
    EXPECT_EQ(Sql("SELECT COUNT(*) FROM vraldcn_mdtlm_report_perf"), 1);
}

TEST_F(TaskWorld, EmptiedSensorListTruncatesTheTable)
{
    ASSERT_EQ(Add(1, 1, 1), 0u);
    ASSERT_EQ(Add(2, 1, 1), 0u);
    ASSERT_EQ(Add(2, 1, 2), 0u);
    MDTLM_VRALDCN_UpdateReportPerfInFwmItermCnt(1, 1, 264);
    MDTLM_VRALDCN_UpdateReportPerfInFwmItermCnt(2, 1, 264);
    Tick();
    MDTLM_HOST_CallCountReset();
    ASSERT_EQ(Del(2, 1, 2), 0u); /* sensor 2 keeps a task */
    EXPECT_EQ(Calls(MDTLM_HOST_OP_DB_TRUNCATE), 0u);
    ASSERT_EQ(Del(2, 1, 1), 0u); /* sensor 2 empties while sensor 1 keeps its task */
    EXPECT_EQ(Calls(MDTLM_HOST_OP_DB_TRUNCATE), 1u);
    EXPECT_EQ(Sql("SELECT COUNT(*) FROM vraldcn_mdtlm_report_perf"), 0);
    EXPECT_EQ(Rec(1).in_fwm_item_count, 1u); /* memory stays */
    MDTLM_VRALDCN_UpdateReportPerfInFwmItermCnt(2, 1, 264);
    Tick(); /* only the dirty slot comes back */
    EXPECT_EQ(Sql("SELECT COUNT(*) FROM vraldcn_mdtlm_report_perf"), 1);
    EXPECT_EQ(Perf(2, "in_fwm_item_count"), 2);

    fw().ClearLogs();
    MDTLM_HOST_FaultSet(MDTLM_HOST_OP_DB_TRUNCATE, 0, 1, 1);
    MDTLM_VRALDCN_ClearReportPerfData();
    EXPECT_EQ(Logs(), Lines{"2 [VRALDCN_TruncateReportPerfEntryDbData] Truncate db data failed."});
}

TEST_F(TaskWorld, TaskStatisticsFollowTheTask)
{
    ASSERT_EQ(Add(4, 3, 9, 1, 7000), 0u);
    MDTLM_FEM_TASK_STAT_REC rec{}, expected{};
    MDTLM_DB_KEY key{0, 9};
    ASSERT_EQ(MDTLM_FEM_GetTaskStatDbRecord(&key, &rec), 0u);
    expected.task_id = 9;
    expected.sensor_type = 4;
    expected.encode_type = 1;
    expected.sample_interval = 7000;
    std::strcpy(expected.sensor_path, "dravik-quma:quma/result-statistics/result-statistic");
    EXPECT_EQ(std::memcmp(&rec, &expected, sizeof(rec)), 0);

    Queue(4, "a,");
    Queue(4, "!", 2);
    Queue(4, "b,", 2);
    Tick();
    const std::pair<const char *, int64_t> counts[] = {
        {"recv_msg_count", 5}, {"match_item_count", 3}, {"upload_ok_count", 1}, {"upload_fail_count", 0}};
    for (const auto &[column, count] : counts) {
        EXPECT_EQ(Stat(9, column), count) << column;
    }
    EXPECT_NEAR(Stat(9, "last_upload_ok_time"), std::time(nullptr), 2);
    MDTLM_TASK_STATS zero{};
    EXPECT_EQ(std::memcmp(&Task(4, 3, 9)->stats, &zero, sizeof(zero)), 0);

    Sql("UPDATE fem_mdtlm_stat SET last_upload_ok_time = 1234");
    ASSERT_EQ(Add(4, 3, 9, 0, 1000), 0u); /* new path info: identity stays */
    Queue(4, "!");
    Tick(); /* no upload: the stored time stays */
    EXPECT_EQ(Stat(9, "recv_msg_count"), 6);
    EXPECT_EQ(Stat(9, "last_upload_ok_time"), 1234);
    EXPECT_EQ(Stat(9, "encode_type"), 1);

    ASSERT_EQ(Add(1, 5, 9, 0, 2000), 0u); /* same task id in another sensor: same record */
    Queue(1, "x");
    Tick();
    EXPECT_EQ(Sql("SELECT COUNT(*) FROM fem_mdtlm_stat"), 1);
    EXPECT_EQ(Stat(9, "recv_msg_count"), 7);
    EXPECT_EQ(Stat(9, "sensor_type"), 4);

    ASSERT_EQ(Del(4, 3, 9), 0u);
    EXPECT_EQ(Sql("SELECT COUNT(*) FROM fem_mdtlm_stat"), 0);
    Tick(); /* the remaining task starts a record of its own */
    EXPECT_EQ(Stat(9, "sensor_type"), 1);
    EXPECT_EQ(Stat(9, "recv_msg_count"), 0);
    MDTLM_HOST_CallCountReset();
    Task(1, 5, 9)->stats.recvMsgCnt = 4;
    MDTLM_FEM_WriteTaskStat2DbProc(7, Task(1, 5, 9)); /* unknown sensor: nothing at all */
    EXPECT_EQ(Calls(MDTLM_HOST_OP_DB_CREATE), 0u);
    EXPECT_EQ(Task(1, 5, 9)->stats.recvMsgCnt, 4u);
}
