/*
 * Rows of "vraldcn_mdtlm_report_perf" in the object database: a row that
 * exists is updated field by field, a missing one is written whole.
 */
#include "db_handle.h"
#include "mdtlm_log.h"
#include "mdtlm_platform.h"
#include "mdtlm_vraldcn.h"
#include "task_log_lines.h"

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

/* A failure line of one step of storing a row, with "ret: %d", and its number. */
struct StoreLine {
    int line;
    const char *format;
};

/* The failure lines of the three steps of storing a row. */
struct StoreTexts {
    StoreLine create;
    StoreLine fill;
    StoreLine store;
};

constexpr StoreTexts kUpdateTexts = {
    {MDTLM_LINE_REPORT_PERF_UPDATE_HANDLE_FAILED,
     "[%s:%d][UpdateDbData] Create vraldcn_mdtlm_report_perf obj failed, ret: %d."},
    {MDTLM_LINE_REPORT_PERF_UPDATE_SET_FAILED,
     "[%s:%d][UpdateDbData] set vraldcn_mdtlm_report_perf field failed, ret: %d."},
    {MDTLM_LINE_REPORT_PERF_UPDATE_FAILED, "[%s:%d][UpdateDbData] Update vraldcn_mdtlm_report_perf failed, ret: %d."},
};

constexpr StoreTexts kWriteTexts = {
    {MDTLM_LINE_REPORT_PERF_WRITE_HANDLE_FAILED,
     "[%s:%d][VRALDCN_WriteReportPerfEntryDb] Create vraldcn_mdtlm_report_perf failed ret: %d."},
    {MDTLM_LINE_REPORT_PERF_WRITE_SET_FAILED,
     "[%s:%d][VRALDCN_WriteReportPerfEntryDb] Set vraldcn_mdtlm_report_perf all field failed ret: %d."},
    {MDTLM_LINE_REPORT_PERF_WRITE_FAILED,
     "[%s:%d][VRALDCN_WriteReportPerfEntryDb] Write vraldcn_mdtlm_report_perf failed ret: %d."},
};

void LogStoreFailure(const StoreLine &line, uint32_t ret)
{
    MDTLM_LOG_FORMAT_AT(MDTLM_LOG_FAILURE, line.line, line.format, static_cast<int32_t>(ret));
}

/* Creates a handle for `operation`, fills it, stores it. The handle is given
 * back before a failure is logged; any failing step makes the result 1. */
template <typename Fill, typename Store>
uint32_t StoreRow(uint32_t operation, const StoreTexts &texts, Fill fill, Store store)
{
    MDTLM_ReportPerfDbHandle handle;
    uint32_t ret = handle.Create(operation);
    if (ret != 0) {
        LogStoreFailure(texts.create, ret);
        return 1;
    }
    ret = fill(handle.Get());
    if (ret != 0) {
        handle.Release();
        LogStoreFailure(texts.fill, ret);
        return 1;
    }
    ret = store(handle.Get());
    handle.Release();
    if (ret != 0) {
        LogStoreFailure(texts.store, ret);
        return 1;
    }
    return 0;
}

} // namespace

extern "C" {

uint32_t MDTLM_VRALDCN_UpdateReportPerfEntryDb(const MDTLM_DB_KEY_DESC *desc, const MDTLM_DB_KEY *key,
                                               const MDTLM_REPORT_PERF_REC *rec)
{
    if (rec == nullptr) {
        return 1;
    }
    return StoreRow(MDTLM_DB_OP_UPDATE, kUpdateTexts,
                    [rec](void *handle) {
                        /* Every setter runs even after one fails; their results are summed. */
                        uint32_t sum = 0;
                        for (const FieldSetter &setter : kFieldSetters) {
                            sum += setter.set(handle, rec->*setter.field);
                        }
                        return sum;
                    },
                    [desc, key](void *handle) { return db_update_obj(handle, desc, key); });
}

uint32_t MDTLM_VRALDCN_WriteReportPerfEntryDb(const MDTLM_REPORT_PERF_REC *rec)
{
    if (rec == nullptr) {
        return 1;
    }
    return StoreRow(
        MDTLM_DB_OP_WRITE, kWriteTexts,
        [rec](void *handle) { return db_set_vraldcn_mdtlm_report_perf_all_fields(handle, rec, sizeof(*rec)); },
        [](void *handle) { return db_write_obj(handle); });
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
        MDTLM_LOG_AT(MDTLM_LOG_FAILURE, MDTLM_LINE_REPORT_PERF_STORE_FAILED,
                  "[VRALDCN_AddReportPerfEntryDbData] Write db vraldcn_mdtlm_report_perf failed ret: %u, history_id: "
                  "%u, period_index: %u.",
                  ret, rec->history_id, rec->period_index);
        return 1;
    }
    MDTLM_LOG_AT(MDTLM_LOG_SUCCESS, MDTLM_LINE_REPORT_PERF_STORE_SUCCESS,
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
        MDTLM_LOG_AT(MDTLM_LOG_FAILURE, MDTLM_LINE_REPORT_PERF_TRUNCATE_FAILED,
                     "[VRALDCN_TruncateReportPerfEntryDbData] Truncate db data failed.");
    }
}

} /* extern "C" */
