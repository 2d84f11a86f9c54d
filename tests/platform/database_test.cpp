#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "platform_test_util.h"

namespace {

const MDTLM_DB_KEY_DESC kDesc = {MDTLM_DB_KEY_DESC_VALUE, {}};

const char *const kPerfColumns[] = {
    "reserved", "history_id", "period_index", "in_fwm_msg_count", "in_fwm_msg_byte_count",
    "in_fwm_item_count", "in_fwm_item_byte_count", "out_msg_count", "out_msg_byte_count",
    "out_item_count", "out_item_byte_count", "start_time_s", "start_time_ms", "end_time_s", "end_time_ms",
};

/* Field i holds i, except the key. */
MDTLM_REPORT_PERF_REC PerfRecord(uint32_t historyId)
{
    MDTLM_REPORT_PERF_REC r;
    uint32_t *words = reinterpret_cast<uint32_t *>(&r);
    for (uint32_t i = 0; i < sizeof(r) / 4; i++)
        words[i] = i;
    r.reserved = 0;
    r.history_id = historyId;
    return r;
}

MDTLM_FEM_TASK_STAT_REC StatRecord(uint32_t taskId)
{
    MDTLM_FEM_TASK_STAT_REC r;
    std::memset(&r, 0, sizeof(r));
    r.task_id = taskId;
    r.recv_msg_count = 0x123456789ull;
    r.match_item_count = 0xFFFFFFFFFFFFFFFFull; /* the top bit survives SQLite's signed integers */
    r.upload_fail_count = 0x8000000000000000ull;
    r.last_upload_ok_time = 1700000000;
    r.last_upload_fail_time = 0xFFFFFFFFu;
    std::strcpy(r.sensor_path, "dravik-quma:quma/result-statistics/result-statistic");
    return r;
}

uint32_t WritePerf(const MDTLM_REPORT_PERF_REC &r)
{
    void *h = nullptr;
    uint32_t rc = db_create_vraldcn_mdtlm_report_perf_obj(MDTLM_DB_OP_WRITE, 0, &h);
    rc = rc ? rc : db_set_vraldcn_mdtlm_report_perf_all_fields(h, &r, sizeof(r));
    rc = rc ? rc : db_write_obj(h);
    db_release_vraldcn_mdtlm_report_perf_object(h);
    return rc;
}

uint32_t WriteStat(const MDTLM_FEM_TASK_STAT_REC &r)
{
    void *h = nullptr;
    uint32_t rc = db_create_fem_mdtlm_stat_obj(MDTLM_DB_OP_WRITE, 0, &h);
    rc = rc ? rc : db_set_fem_mdtlm_stat_all_fields(h, &r, sizeof(r));
    rc = rc ? rc : db_write_obj(h);
    db_release_fem_mdtlm_stat_object(h);
    return rc;
}

uint32_t ReadStat(uint32_t taskId, MDTLM_FEM_TASK_STAT_REC *out)
{
    void *h = nullptr;
    MDTLM_DB_KEY key{0, taskId};
    uint32_t rc = db_create_fem_mdtlm_stat_obj(MDTLM_DB_OP_READ, 0, &h);
    rc = rc ? rc : db_read_obj(h, &kDesc, &key);
    rc = rc ? rc : db_get_fem_mdtlm_stat_all_fields(h, out, sizeof(*out));
    db_release_fem_mdtlm_stat_object(h);
    return rc;
}

int64_t Query(const std::string &sql)
{
    return MDTLM_HOST_DbQueryInt(sql.c_str());
}

class DatabaseTest : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_EQ(MDTLM_HOST_DbOpen(nullptr), 0u); }
    void TearDown() override { EXPECT_EQ(MDTLM_HOST_DbOpenHandles(), 0u) << "a handle was not released"; }
};

TEST_F(DatabaseTest, StatRecordReadsBackByteForByteAndWriteReplaces)
{
    MDTLM_FEM_TASK_STAT_REC in = StatRecord(9), out;
    ASSERT_EQ(WriteStat(in), 0u);
    std::memset(&out, 0x5A, sizeof(out));
    ASSERT_EQ(ReadStat(9, &out), 0u);
    EXPECT_EQ(std::memcmp(&in, &out, sizeof(in)), 0);
    EXPECT_NE(ReadStat(10, &out), 0u);

    in.upload_ok_count = 42;
    in.sensor_path[0] = 'X';
    ASSERT_EQ(WriteStat(in), 0u);
    ASSERT_EQ(WriteStat(StatRecord(10)), 0u);
    EXPECT_EQ(Query("select count(*) from fem_mdtlm_stat"), 2);
    ASSERT_EQ(ReadStat(9, &out), 0u);
    EXPECT_EQ(std::memcmp(&in, &out, sizeof(in)), 0);
}

TEST_F(DatabaseTest, EachFieldSetterUpdatesItsOwnColumnOnly)
{
    using Setter = uint32_t (*)(void *, uint32_t);
    /* In column order, from column 2 (period_index) on. */
    const Setter setters[] = {
        db_set_vraldcn_mdtlm_report_perf_period_index,          db_set_vraldcn_mdtlm_report_perf_in_fwm_msg_count,
        db_set_vraldcn_mdtlm_report_perf_in_fwm_msg_byte_count, db_set_vraldcn_mdtlm_report_perf_in_fwm_item_count,
        db_set_vraldcn_mdtlm_report_perf_in_fwm_item_byte_count, db_set_vraldcn_mdtlm_report_perf_out_msg_count,
        db_set_vraldcn_mdtlm_report_perf_out_msg_byte_count,    db_set_vraldcn_mdtlm_report_perf_out_item_count,
        db_set_vraldcn_mdtlm_report_perf_out_item_byte_count,   db_set_vraldcn_mdtlm_report_perf_start_time_s,
        db_set_vraldcn_mdtlm_report_perf_start_time_ms,         db_set_vraldcn_mdtlm_report_perf_end_time_s,
        db_set_vraldcn_mdtlm_report_perf_end_time_ms,
    };
    MDTLM_DB_KEY key{0, 3}, missing{0, 4};
    for (size_t s = 0; s < sizeof(setters) / sizeof(setters[0]); s++) {
        const size_t target = s + 2;
        ASSERT_EQ(WritePerf(PerfRecord(3)), 0u);
        void *h = nullptr;
        ASSERT_EQ(db_create_vraldcn_mdtlm_report_perf_obj(MDTLM_DB_OP_UPDATE, 0, &h), 0u);
        ASSERT_EQ(setters[s](h, 4000000000u), 0u) << kPerfColumns[target];
        EXPECT_EQ(db_update_obj(h, &kDesc, &key), 0u) << kPerfColumns[target];
        EXPECT_NE(db_update_obj(h, &kDesc, &missing), 0u) << kPerfColumns[target];
        db_release_vraldcn_mdtlm_report_perf_object(h);
        for (size_t i = 0; i < sizeof(kPerfColumns) / sizeof(kPerfColumns[0]); i++) {
            int64_t expect = i == target ? 4000000000 : i == 1 ? 3 : static_cast<int64_t>(i);
            EXPECT_EQ(Query(std::string("select ") + kPerfColumns[i] + " from vraldcn_mdtlm_report_perf"), expect)
                << kPerfColumns[i] << " after the setter of " << kPerfColumns[target];
        }
    }
    EXPECT_EQ(Query("select count(*) from vraldcn_mdtlm_report_perf"), 1);
}

TEST_F(DatabaseTest, RemoveAndTruncateDeleteRows)
{
    for (uint32_t id = 0; id < 3; id++) {
        ASSERT_EQ(WritePerf(PerfRecord(id)), 0u);
        ASSERT_EQ(WriteStat(StatRecord(id + 20)), 0u);
    }
    void *h = nullptr;
    MDTLM_DB_KEY key{0, 21};
    ASSERT_EQ(db_create_fem_mdtlm_stat_obj(MDTLM_DB_OP_REMOVE, 0, &h), 0u);
    EXPECT_EQ(db_remove_obj(h, &kDesc, &key), 0u);
    EXPECT_NE(db_remove_obj(h, &kDesc, &key), 0u); /* already gone */
    EXPECT_EQ(db_release_fem_mdtlm_stat_object(h), 0u);
    EXPECT_NE(db_release_fem_mdtlm_stat_object(h), 0u);
    EXPECT_NE(db_remove_obj(h, &kDesc, &key), 0u); /* released handles are refused */
    EXPECT_EQ(Query("select count(*) from fem_mdtlm_stat where task_id = 21"), 0);
    EXPECT_EQ(Query("select count(*) from fem_mdtlm_stat"), 2);

    EXPECT_EQ(db_truncate_table("vraldcn_mdtlm_report_perf", 1), 0u);
    EXPECT_EQ(Query("select count(*) from vraldcn_mdtlm_report_perf"), 0);
    EXPECT_EQ(Query("select count(*) from fem_mdtlm_stat"), 2);
    EXPECT_NE(db_truncate_table("no_such_table", 1), 0u);
}

} /* namespace */
