/*
 * Report-performance ring and its rows in the object database.
 */
#include <sys/time.h>

#include <cstring>
#include <ctime>

#include "mdtlm_host.h"
#include "mdtlm_vraldcn.h"
#include "task_world.h"

namespace {

int64_t PerfColumn(uint32_t historyId, const std::string &column)
{
    const std::string sql = "SELECT " + column + " FROM vraldcn_mdtlm_report_perf WHERE history_id = " +
                            std::to_string(historyId);
    return MDTLM_HOST_DbQueryInt(sql.c_str());
}

int64_t PerfRows()
{
    return MDTLM_HOST_DbQueryInt("SELECT COUNT(*) FROM vraldcn_mdtlm_report_perf");
}

class ReportPerf : public TaskWorld {
protected:
    void SetUp() override
    {
        TaskWorld::SetUp();
        ASSERT_EQ(Add(1, 1, 1), 0u); /* creates the ring and the timer */
        ASSERT_NE(g_mdtlmNtvVralDcnReportPerf, nullptr);
    }
    MDTLM_REPORT_PERF_SLOT &Slot(uint32_t i) { return g_mdtlmNtvVralDcnReportPerf[i]; }
    uint64_t Calls(MDTLM_HOST_OP op) { return MDTLM_HOST_CallCount(op); }
};

TEST_F(ReportPerf, FreshRingIsNumberedAndClean)
{
    for (uint32_t i = 0; i < MDTLM_REPORT_PERF_SLOTS; ++i) {
        MDTLM_REPORT_PERF_SLOT expected{};
        expected.rec.history_id = i;
        EXPECT_EQ(std::memcmp(&Slot(i), &expected, sizeof(expected)), 0) << i;
    }
    /* Period 0 finds slot 0 already holding period 0: no claim, no start time. */
    MDTLM_VRALDCN_UpdateReportPerfInFwmItermCnt(0, 1, 264);
    EXPECT_EQ(Slot(0).rec.start_time_s, 0u);
    EXPECT_EQ(Slot(0).rec.in_fwm_item_count, 1u);
    EXPECT_EQ(Slot(0).dirty, 1u);

    MDTLM_VRALDCN_ResetReportPerf();
    EXPECT_EQ(Slot(0).dirty, 0u);
    EXPECT_EQ(Slot(0).rec.in_fwm_item_count, 0u);
    EXPECT_EQ(Slot(63).rec.history_id, 63u);
}

TEST_F(ReportPerf, APeriod64LaterTakesTheSlotOver)
{
    const uint32_t before = static_cast<uint32_t>(std::time(nullptr));
    MDTLM_VRALDCN_UpdateReportPerfInFwmItermCnt(70, 1, 264);
    MDTLM_VRALDCN_UpdateReportPerfInFwmItermCnt(70, 1, 264);
    MDTLM_VRALDCN_UpdateReportPerfOutItemCnt(70, 1, 90);
    MDTLM_REPORT_PERF_REC &rec = Slot(6).rec;
    EXPECT_EQ(rec.period_index, 70u);
    EXPECT_EQ(rec.history_id, 6u);
    EXPECT_EQ(rec.in_fwm_item_count, 2u);
    EXPECT_EQ(rec.in_fwm_item_byte_count, 528u);
    EXPECT_EQ(rec.out_item_count, 1u);
    EXPECT_EQ(rec.out_item_byte_count, 90u);
    EXPECT_GE(rec.start_time_s, before);
    EXPECT_LT(rec.start_time_ms, 1000u);

    rec.start_time_s = 1; /* so that a new claim is visible */
    rec.end_time_s = 2;
    MDTLM_VRALDCN_UpdateReportPerfOutItemCnt(6, 1, 40);
    EXPECT_EQ(rec.period_index, 6u);
    EXPECT_EQ(rec.in_fwm_item_count, 0u);
    EXPECT_EQ(rec.out_item_count, 1u);
    EXPECT_EQ(rec.out_item_byte_count, 40u);
    EXPECT_EQ(rec.end_time_s, 0u);
    EXPECT_GE(rec.start_time_s, before);

    /* Counters wrap in 32 bits. */
    MDTLM_VRALDCN_UpdateReportPerfOutItemCnt(6, 1, 0xFFFFFFFFu);
    EXPECT_EQ(rec.out_item_byte_count, 39u);

    /* A claim without counting leaves the dirty flag alone. */
    Slot(9).dirty = 0;
    MDTLM_VRALDCN_UpdateReportPerfPeriodIndex(9);
    EXPECT_EQ(Slot(9).dirty, 0u);
    EXPECT_GE(Slot(9).rec.start_time_s, before);
    MDTLM_VRALDCN_UpdateReportPerfPeriodIndex(73);
    EXPECT_EQ(Slot(9).rec.period_index, 73u);
}

TEST_F(ReportPerf, StartAndEndTimesOfAPeriod)
{
    MDTLM_VRALDCN_UpdateReportPerfEndTime(5, 100, 200);
    EXPECT_EQ(Slot(5).rec.end_time_s, 100u);
    EXPECT_EQ(Slot(5).rec.end_time_ms, 200u);
    EXPECT_EQ(Slot(5).dirty, 1u);

    MDTLM_VRALDCN_UpdateReportPerfInFwmItermCnt(69, 3, 3);
    MDTLM_VRALDCN_UpdateReportPerfStartTime(69, 11, 12); /* the slot's own period */
    EXPECT_EQ(Slot(5).rec.start_time_s, 11u);
    EXPECT_EQ(Slot(5).rec.in_fwm_item_count, 3u);
    MDTLM_VRALDCN_UpdateReportPerfStartTime(133, 21, 22); /* a later period claims it */
    EXPECT_EQ(Slot(5).rec.period_index, 133u);
    EXPECT_EQ(Slot(5).rec.start_time_s, 21u);
    EXPECT_EQ(Slot(5).rec.start_time_ms, 22u);
    EXPECT_EQ(Slot(5).rec.in_fwm_item_count, 0u);

    /* The tick overwrites the end time with the time of the write. */
    const uint32_t before = static_cast<uint32_t>(std::time(nullptr));
    Tick();
    EXPECT_GE(PerfColumn(5, "end_time_s"), before);
    EXPECT_EQ(PerfColumn(5, "start_time_s"), 21);
    EXPECT_EQ(PerfColumn(5, "period_index"), 133);

    uint32_t s = 7, ms = 8;
    MDTLM_VRALDCN_SetReportPerfTimestamps(&s, &ms);
    EXPECT_GE(s, before);
    EXPECT_LT(ms, 1000u);
}

TEST_F(ReportPerf, DirtySlotsAreWrittenOnceAfterTheirLastChange)
{
    MDTLM_VRALDCN_UpdateReportPerfInFwmItermCnt(70, 2, 528);
    MDTLM_VRALDCN_UpdateReportPerfOutItemCnt(3, 1, 50);
    fw().ClearLogs();
    MDTLM_HOST_CallCountReset();
    Tick();
    EXPECT_EQ(PerfRows(), 2);
    EXPECT_EQ(PerfColumn(6, "period_index"), 70);
    EXPECT_EQ(PerfColumn(6, "in_fwm_item_count"), 2);
    EXPECT_EQ(PerfColumn(6, "in_fwm_item_byte_count"), 528);
    EXPECT_EQ(PerfColumn(6, "in_fwm_msg_count"), 0);
    EXPECT_EQ(PerfColumn(3, "out_item_byte_count"), 50);
    EXPECT_EQ(PerfColumn(3, "reserved"), 0);
    EXPECT_EQ(Slot(3).dirty, 0u);
    EXPECT_EQ(Slot(6).dirty, 0u);
    /* Rows that did not exist are written whole, slot order. */
    EXPECT_EQ(Calls(MDTLM_HOST_OP_DB_SET_ALL), 2u + 1u); /* and the task statistics record */
    EXPECT_EQ(Calls(MDTLM_HOST_OP_DB_UPDATE), 0u);
    EXPECT_EQ(fw().Shapes(),
              (std::vector<std::string>{
                  LogShape("[VRALDCN_AddReportPerfEntryDbData] Write db vraldcn_mdtlm_report_perf success, ret: 0, "
                           "history_id: 3, period_index: 3."),
                  LogShape("[VRALDCN_AddReportPerfEntryDbData] Write db vraldcn_mdtlm_report_perf success, ret: 0, "
                           "history_id: 6, period_index: 70."),
              }));

    MDTLM_HOST_CallCountReset();
    Tick(); /* nothing changed: nothing written */
    EXPECT_EQ(Calls(MDTLM_HOST_OP_DB_UPDATE), 0u);
    EXPECT_EQ(Calls(MDTLM_HOST_OP_DB_SET_FIELD), 0u);

    MDTLM_VRALDCN_UpdateReportPerfInFwmItermCnt(70, 1, 264);
    Tick(); /* a row that exists is updated field by field */
    EXPECT_EQ(Calls(MDTLM_HOST_OP_DB_UPDATE), 1u);
    EXPECT_EQ(Calls(MDTLM_HOST_OP_DB_SET_FIELD), 13u);
    EXPECT_EQ(PerfColumn(6, "in_fwm_item_count"), 3);
    EXPECT_EQ(PerfColumn(6, "in_fwm_item_byte_count"), 792);
}

TEST_F(ReportPerf, DatabaseFailuresAreLoggedAndNotRepeated)
{
    MDTLM_VRALDCN_UpdateReportPerfOutItemCnt(4, 1, 1);
    Tick(); /* row 4 exists from here on */

    const std::string failed = "[VRALDCN_AddReportPerfEntryDbData] Write db vraldcn_mdtlm_report_perf failed ret: 1, "
                               "history_id: %u, period_index: %u.";
    struct Case {
        uint32_t period;
        MDTLM_HOST_OP op;
        uint32_t skip, count;
        int64_t result;
        std::string line; /* empty: the write goes through */
    };
    const Case cases[] = {
        /* update path (row 4 exists); the read handle is the first create */
        {4, MDTLM_HOST_OP_DB_CREATE, 1, 1, 7,
         "[UpdateDbData] Create vraldcn_mdtlm_report_perf obj failed, ret: 7."},
        {4, MDTLM_HOST_OP_DB_SET_FIELD, 3, 2, 3, "[UpdateDbData] set vraldcn_mdtlm_report_perf field failed, ret: 6."},
        {4, MDTLM_HOST_OP_DB_UPDATE, 0, 1, 9, "[UpdateDbData] Update vraldcn_mdtlm_report_perf failed, ret: 9."},
        /* write path (row 8 does not exist) */
        {8, MDTLM_HOST_OP_DB_CREATE, 1, 1, 5,
         "[VRALDCN_WriteReportPerfEntryDb] Create vraldcn_mdtlm_report_perf failed ret: 5."},
        {8, MDTLM_HOST_OP_DB_SET_ALL, 0, 1, 4,
         "[VRALDCN_WriteReportPerfEntryDb] Set vraldcn_mdtlm_report_perf all field failed ret: 4."},
        {8, MDTLM_HOST_OP_DB_WRITE, 0, 1, 2,
         "[VRALDCN_WriteReportPerfEntryDb] Write vraldcn_mdtlm_report_perf failed ret: 2."},
        /* an unreadable row counts as missing: written whole */
        {4, MDTLM_HOST_OP_DB_READ, 0, 1, 1, ""},
        {4, MDTLM_HOST_OP_DB_CREATE, 0, 1, 1, ""},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.line);
        MDTLM_VRALDCN_UpdateReportPerfOutItemCnt(c.period, 1, 1);
        fw().ClearLogs();
        MDTLM_HOST_CallCountReset();
        MDTLM_HOST_FaultSet(c.op, c.skip, c.count, c.result);
        MDTLM_VRALDCN_UpdateReportPerfToDb();
        MDTLM_HOST_FaultClear();
        const uint32_t slot = c.period & 63;
        if (c.line.empty()) {
            EXPECT_EQ(Calls(MDTLM_HOST_OP_DB_UPDATE), 0u);
            EXPECT_EQ(Calls(MDTLM_HOST_OP_DB_WRITE), 1u);
            EXPECT_EQ(fw().Logs().size(), 1u);
            EXPECT_EQ(fw().Logs()[0].level, 1u);
        } else {
            char stored[256], tick[256];
            std::snprintf(stored, sizeof(stored), failed.c_str(), slot, c.period);
            std::snprintf(tick, sizeof(tick),
                          "[ FEM ]Update report perf to db failed ret: 1, index: %u, periodIndex: %u.", slot,
                          c.period);
            EXPECT_EQ(fw().Shapes(), (std::vector<std::string>{LogShape(c.line), LogShape(stored), LogShape(tick)}));
        }
        EXPECT_EQ(Slot(slot).dirty, 0u);
        EXPECT_EQ(MDTLM_HOST_DbOpenHandles(), 0u);
        EXPECT_EQ(Calls(MDTLM_HOST_OP_DB_CREATE), Calls(MDTLM_HOST_OP_DB_RELEASE) + (c.op == MDTLM_HOST_OP_DB_CREATE));
    }
    EXPECT_EQ(PerfRows(), 1); /* row 8 was never stored */
}

TEST_F(ReportPerf, EmptiedSensorListTruncatesTheTable)
{
    ASSERT_EQ(Add(2, 1, 1), 0u);
    ASSERT_EQ(Add(2, 1, 2), 0u);
    MDTLM_VRALDCN_UpdateReportPerfInFwmItermCnt(1, 1, 264);
    MDTLM_VRALDCN_UpdateReportPerfInFwmItermCnt(2, 1, 264);
    Tick();
    ASSERT_EQ(PerfRows(), 2);

    MDTLM_HOST_CallCountReset();
    ASSERT_EQ(Del(2, 1, 2), 0u); /* sensor 2 keeps a task */
    EXPECT_EQ(Calls(MDTLM_HOST_OP_DB_TRUNCATE), 0u);
    EXPECT_EQ(PerfRows(), 2);
    ASSERT_EQ(Del(2, 1, 1), 0u); /* sensor 2 is empty, sensor 1 still has a task */
    EXPECT_EQ(Calls(MDTLM_HOST_OP_DB_TRUNCATE), 1u);
    EXPECT_EQ(PerfRows(), 0);
    EXPECT_NE(g_mdtlmNtvVralDcnReportPerf, nullptr); /* memory and timer stay */
    EXPECT_EQ(Slot(1).rec.in_fwm_item_count, 1u);

    MDTLM_VRALDCN_UpdateReportPerfInFwmItermCnt(2, 1, 264);
    Tick(); /* only dirty slots come back, written whole */
    EXPECT_EQ(PerfRows(), 1);
    EXPECT_EQ(PerfColumn(2, "in_fwm_item_count"), 2);

    fw().ClearLogs();
    MDTLM_HOST_FaultSet(MDTLM_HOST_OP_DB_TRUNCATE, 0, 1, 1);
    MDTLM_VRALDCN_ClearReportPerfData();
    EXPECT_EQ(fw().Shapes(), std::vector<std::string>{
                                 LogShape("[VRALDCN_TruncateReportPerfEntryDbData] Truncate db data failed.")});
}

TEST_F(ReportPerf, ExistenceCheck)
{
    MDTLM_VRALDCN_UpdateReportPerfInFwmItermCnt(10, 1, 1);
    Tick();
    MDTLM_DB_KEY_DESC desc{};
    desc.desc = MDTLM_DB_KEY_DESC_VALUE;
    MDTLM_DB_KEY present{0, 10}, absent{0, 11};
    EXPECT_EQ(MDTLM_VRALDCN_CheckReportPerfEntryDataExist(&desc, &present), 0u);
    EXPECT_EQ(MDTLM_VRALDCN_CheckReportPerfEntryDataExist(&desc, &absent), 1u);
    MDTLM_HOST_FaultSet(MDTLM_HOST_OP_DB_CREATE, 0, 1, 1);
    EXPECT_EQ(MDTLM_VRALDCN_CheckReportPerfEntryDataExist(&desc, &present), 1u);
    EXPECT_EQ(MDTLM_HOST_DbOpenHandles(), 0u);
}

TEST_F(ReportPerf, NothingHappensWithoutTheRing)
{
    MDTLM_VRALDCN_DestoryReportPerf();
    ASSERT_EQ(g_mdtlmNtvVralDcnReportPerf, nullptr);
    MDTLM_HOST_CallCountReset();
    MDTLM_VRALDCN_UpdateReportPerfInFwmItermCnt(1, 1, 1);
    MDTLM_VRALDCN_UpdateReportPerfOutItemCnt(1, 1, 1);
    MDTLM_VRALDCN_UpdateReportPerfEndTime(1, 1, 1);
    MDTLM_VRALDCN_UpdateReportPerfStartTime(1, 1, 1);
    MDTLM_VRALDCN_UpdateReportPerfPeriodIndex(1);
    MDTLM_VRALDCN_ResetReportPerf();
    MDTLM_VRALDCN_UpdateReportPerfToDb();
    EXPECT_EQ(Calls(MDTLM_HOST_OP_DB_CREATE), 0u);
    EXPECT_EQ(g_mdtlmNtvVralDcnReportPerf, nullptr);
}

} // namespace
