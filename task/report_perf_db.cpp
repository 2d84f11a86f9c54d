/*
 * Rows of "vraldcn_mdtlm_report_perf" in the object database: a row that
 * exists is updated field by field, a missing one is written whole.
 */
#include "db_handle.h"
#include "mdtlm_log.h"
#include "mdtlm_platform.h"
#include "mdtlm_vraldcn.h"

namespace {

constexpr const char *kReportPerfTable = "vraldcn_mdtlm_report_perf";
constexpr uint32_t kTruncateFlags = 1;

struct FieldSetter {
    uint32_t (*set)(void *handle, uint32_t value);
    uint32_t MDTLM_REPORT_PERF_REC::*field;
};

/* The thirteen stored fields in record order. */
constexpr FieldSetter kFieldSetters[] = {
    {db_set_vraldcn_mdtlm_report_perf_period_index, &MDTLM_REPORT_PERF_REC::period_index},
    {db_set_vraldcn_mdtlm_report_perf_in_fwm_msg_count, &MDTLM_REPORT_PERF_REC::in_fwm_msg_count},
    {db_set_vraldcn_mdtlm_report_perf_in_fwm_msg_byte_count, &MDTLM_REPORT_PERF_REC::in_fwm_msg_byte_count},
    {db_set_vraldcn_mdtlm_report_perf_in_fwm_item_count, &MDTLM_REPORT_PERF_REC::in_fwm_item_count},
    {db_set_vraldcn_mdtlm_report_perf_in_fwm_item_byte_count, &MDTLM_REPORT_PERF_REC::in_fwm_item_byte_count},
    {db_set_vraldcn_mdtlm_report_perf_out_msg_count, &MDTLM_REPORT_PERF_REC::out_msg_count},
    {db_set_vraldcn_mdtlm_report_perf_out_msg_byte_count, &MDTLM_REPORT_PERF_REC::out_msg_byte_count},
    {db_set_vraldcn_mdtlm_report_perf_out_item_count, &MDTLM_REPORT_PERF_REC::out_item_count},
    {db_set_vraldcn_mdtlm_report_perf_out_item_byte_count, &MDTLM_REPORT_PERF_REC::out_item_byte_count},
    {db_set_vraldcn_mdtlm_report_perf_start_time_s, &MDTLM_REPORT_PERF_REC::start_time_s},
    {db_set_vraldcn_mdtlm_report_perf_start_time_ms, &MDTLM_REPORT_PERF_REC::start_time_ms},
    {db_set_vraldcn_mdtlm_report_perf_end_time_s, &MDTLM_REPORT_PERF_REC::end_time_s},
    {db_set_vraldcn_mdtlm_report_perf_end_time_ms, &MDTLM_REPORT_PERF_REC::end_time_ms},
};

/* Whether the row exists; a read handle that cannot be made counts as a missing row. */
bool RowExists(const MDTLM_DB_KEY_DESC *desc, const MDTLM_DB_KEY *key)
{
    MDTLM_ReportPerfDbHandle handle;
    if (handle.Create(MDTLM_DB_OP_READ) != 0) {
        return false;
    }
    return db_read_obj(handle.Get(), desc, key) == 0;
}

} // namespace

extern "C" {

uint32_t MDTLM_VRALDCN_UpdateReportPerfEntryDb(const MDTLM_DB_KEY_DESC *desc, const MDTLM_DB_KEY *key,
                                               const MDTLM_REPORT_PERF_REC *rec)
{
    if (rec == nullptr) {
        return 1;
    }
    MDTLM_ReportPerfDbHandle handle;
    uint32_t ret = handle.Create(MDTLM_DB_OP_UPDATE);
    if (ret != 0) {
        MDTLM_LOG(MDTLM_LOG_FAILURE, "[UpdateDbData] Create vraldcn_mdtlm_report_perf obj failed, ret: %d.",
                  static_cast<int32_t>(ret));
        return 1;
    }
    /* Every setter runs even after one fails; their results are summed. */
    uint32_t sum = 0;
    for (const FieldSetter &setter : kFieldSetters) {
        sum += setter.set(handle.Get(), rec->*setter.field);
    }
    if (sum != 0) {
        handle.Release();
        MDTLM_LOG(MDTLM_LOG_FAILURE, "[UpdateDbData] set vraldcn_mdtlm_report_perf field failed, ret: %d.",
                  static_cast<int32_t>(sum));
        return 1;
    }
    ret = db_update_obj(handle.Get(), desc, key);
    handle.Release();
    if (ret != 0) {
        MDTLM_LOG(MDTLM_LOG_FAILURE, "[UpdateDbData] Update vraldcn_mdtlm_report_perf failed, ret: %d.",
                  static_cast<int32_t>(ret));
        return 1;
    }
    return 0;
}

uint32_t MDTLM_VRALDCN_WriteReportPerfEntryDb(const MDTLM_REPORT_PERF_REC *rec)
{
    if (rec == nullptr) {
        return 1;
    }
    MDTLM_ReportPerfDbHandle handle;
    uint32_t ret = handle.Create(MDTLM_DB_OP_WRITE);
    if (ret != 0) {
        MDTLM_LOG(MDTLM_LOG_FAILURE, "[VRALDCN_WriteReportPerfEntryDb] Create vraldcn_mdtlm_report_perf failed ret: %d.",
                  static_cast<int32_t>(ret));
        return 1;
    }
    ret = db_set_vraldcn_mdtlm_report_perf_all_fields(handle.Get(), rec, sizeof(*rec));
    if (ret != 0) {
        handle.Release();
        MDTLM_LOG(MDTLM_LOG_FAILURE,
                  "[VRALDCN_WriteReportPerfEntryDb] Set vraldcn_mdtlm_report_perf all field failed ret: %d.",
                  static_cast<int32_t>(ret));
        return 1;
    }
    ret = db_write_obj(handle.Get());
    handle.Release();
    if (ret != 0) {
        MDTLM_LOG(MDTLM_LOG_FAILURE, "[VRALDCN_WriteReportPerfEntryDb] Write vraldcn_mdtlm_report_perf failed ret: %d.",
                  static_cast<int32_t>(ret));
        return 1;
    }
    return 0;
}

uint32_t MDTLM_VRALDCN_AddReportPerfEntryDbData(const MDTLM_REPORT_PERF_REC *rec)
{
    if (rec == nullptr) {
        return 1;
    }
    const MDTLM_DB_KEY key{0, rec->history_id};
    const MDTLM_DB_KEY_DESC desc = MDTLM_DbKeyDesc();
    const uint32_t ret = RowExists(&desc, &key) ? MDTLM_VRALDCN_UpdateReportPerfEntryDb(&desc, &key, rec)
                                                : MDTLM_VRALDCN_WriteReportPerfEntryDb(rec);
    if (ret != 0) {
        MDTLM_LOG(MDTLM_LOG_FAILURE,
                  "[VRALDCN_AddReportPerfEntryDbData] Write db vraldcn_mdtlm_report_perf failed ret: %u, history_id: "
                  "%u, period_index: %u.",
                  ret, rec->history_id, rec->period_index);
        return 1;
    }
    MDTLM_LOG(MDTLM_LOG_SUCCESS,
              "[VRALDCN_AddReportPerfEntryDbData] Write db vraldcn_mdtlm_report_perf success, ret: %u, history_id: "
              "%u, period_index: %u.",
              ret, rec->history_id, rec->period_index);
    return 0;
}

uint32_t MDTLM_VRALDCN_CheckReportPerfEntryDataExist(const MDTLM_DB_KEY_DESC *desc, const MDTLM_DB_KEY *key)
{
    MDTLM_ReportPerfDbHandle handle;
    if (handle.Create(MDTLM_DB_OP_READ) != 0) {
        return 1;
    }
    uint32_t ret = db_read_obj(handle.Get(), desc, key);
    handle.Release();
    return ret == 0 ? 0u : 1u;
}

void MDTLM_VRALDCN_TruncateReportPerfEntryDbData(void)
{
    if (db_truncate_table(kReportPerfTable, kTruncateFlags) != 0) {
        MDTLM_LOG(MDTLM_LOG_FAILURE, "[VRALDCN_TruncateReportPerfEntryDbData] Truncate db data failed.");
    }
}

} /* extern "C" */
