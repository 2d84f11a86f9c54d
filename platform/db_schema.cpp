/*
 * Field tables of the two database objects. Offsets follow the records of
 * mdtlm_types.h; the compiler checks them against the structures.
 */
#include <cstddef>
#include <cstring>
#include <initializer_list>

#include "db_schema.h"
#include "mdtlm_types.h"

namespace mdtlm_host {

namespace {

#define PERF_COLUMN(field) \
    DbColumn{#field, offsetof(MDTLM_REPORT_PERF_REC, field), ColumnType::U32, 4}
#define FEM_COLUMN(field, type) \
    DbColumn{#field, offsetof(MDTLM_FEM_TASK_STAT_REC, field), type, sizeof(MDTLM_FEM_TASK_STAT_REC::field)}

const DbColumn kReportPerfColumns[] = {
    PERF_COLUMN(reserved),
    PERF_COLUMN(history_id),
    PERF_COLUMN(period_index),
    PERF_COLUMN(in_fwm_msg_count),
    PERF_COLUMN(in_fwm_msg_byte_count),
    PERF_COLUMN(in_fwm_item_count),
    PERF_COLUMN(in_fwm_item_byte_count),
    PERF_COLUMN(out_msg_count),
    PERF_COLUMN(out_msg_byte_count),
    PERF_COLUMN(out_item_count),
    PERF_COLUMN(out_item_byte_count),
    PERF_COLUMN(start_time_s),
    PERF_COLUMN(start_time_ms),
    PERF_COLUMN(end_time_s),
    PERF_COLUMN(end_time_ms),
};

const DbColumn kFemStatColumns[] = {
    FEM_COLUMN(reserved, ColumnType::U32),
    FEM_COLUMN(task_id, ColumnType::U32),
    FEM_COLUMN(sensor_type, ColumnType::U32),
    FEM_COLUMN(encode_type, ColumnType::U32),
    FEM_COLUMN(sample_interval, ColumnType::U32),
    FEM_COLUMN(recv_msg_count, ColumnType::U64),
    FEM_COLUMN(match_item_count, ColumnType::U64),
    FEM_COLUMN(upload_ok_count, ColumnType::U64),
    FEM_COLUMN(upload_fail_count, ColumnType::U64),
    FEM_COLUMN(last_upload_ok_time, ColumnType::U32),
    FEM_COLUMN(last_upload_fail_time, ColumnType::U32),
    FEM_COLUMN(sensor_path, ColumnType::Text),
};

#undef PERF_COLUMN
#undef FEM_COLUMN

static_assert(sizeof(MDTLM_REPORT_PERF_REC) == 60);
static_assert(sizeof(MDTLM_FEM_TASK_STAT_REC) == kMaxRecordSize);

} /* namespace */

const DbObjectKind kReportPerfObject = {
    "vraldcn_mdtlm_report_perf", sizeof(MDTLM_REPORT_PERF_REC), kReportPerfColumns,
    sizeof(kReportPerfColumns) / sizeof(kReportPerfColumns[0])};

const DbObjectKind kFemStatObject = {
    "fem_mdtlm_stat", sizeof(MDTLM_FEM_TASK_STAT_REC), kFemStatColumns,
    sizeof(kFemStatColumns) / sizeof(kFemStatColumns[0])};

const DbObjectKind *FindObjectKind(const char *table)
{
    if (table == nullptr)
        return nullptr;
    for (const DbObjectKind *kind : {&kReportPerfObject, &kFemStatObject}) {
        if (std::strcmp(kind->table, table) == 0)
            return kind;
    }
    return nullptr;
}

} /* namespace mdtlm_host */
