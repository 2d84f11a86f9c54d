/*
 * Object handles of the database: db_create_* makes one for an object kind
 * and an operation, the setters fill its record, and the generic db_*_obj
 * calls carry out the operation it was made for against the stored rows.
 *
 * A handle remembers which fields were set, so an update writes only those.
 * Handles are checked against the table of live ones: a released or foreign
 * pointer is refused rather than followed.
 */
#include <cstring>
#include <mutex>
#include <unordered_set>

#include "db_schema.h"
#include "mdtlm_platform.h"
#include "platform_internal.h"

namespace {

using mdtlm_host::DbKey;
using mdtlm_host::DbObjectKind;
using mdtlm_host::DbResult;
using mdtlm_host::FaultCheck;
using mdtlm_host::kFemStatObject;
using mdtlm_host::kReportPerfObject;

struct DbObject {
    const DbObjectKind *kind;
    uint32_t operation;
    uint32_t flags; /* recorded; no flag changes how an operation runs */
    uint8_t record[mdtlm_host::kMaxRecordSize];
    uint64_t fieldsSet; /* bit i: column i was set */
    bool loaded;        /* a read found the row */
};

/*
 * Live handles. Every handle operation runs under this lock, so a handle
 * cannot be released while another thread is using it; the connection's own
 * lock is taken inside it.
 */
struct HandleTable {
    std::mutex mu;
    std::unordered_set<DbObject *> live;
};

HandleTable &Handles()
{
    static HandleTable *table = new HandleTable(); /* lives as long as the process */
    return *table;
}

/* The live handle of `kind` (any kind when null), or null. Caller holds the lock. */
DbObject *FindLocked(HandleTable &table, void *handle, const DbObjectKind *kind)
{
    auto *object = static_cast<DbObject *>(handle);
    if (handle == nullptr || table.live.count(object) == 0)
        return nullptr;
    if (kind != nullptr && object->kind != kind)
        return nullptr;
    return object;
}

uint64_t AllFields(const DbObjectKind &kind)
{
    return (uint64_t{1} << kind.columnCount) - 1;
}

bool ValidOperation(uint32_t operation)
{
    return operation == MDTLM_DB_OP_WRITE || operation == MDTLM_DB_OP_UPDATE || operation == MDTLM_DB_OP_READ ||
           operation == MDTLM_DB_OP_REMOVE;
}

/* Reads the key through its descriptor; false when either is missing or the
 * descriptor is not the one for an 8-byte two-part key. */
bool ReadKey(const void *keyDesc, const void *key, DbKey *out)
{
    if (keyDesc == nullptr || key == nullptr)
        return false;
    uint32_t desc;
    std::memcpy(&desc, keyDesc, sizeof(desc));
    if (desc != MDTLM_DB_KEY_DESC_VALUE)
        return false;
    std::memcpy(out, key, sizeof(*out));
    return true;
}

/* Counts the call as `op`, then runs `work` on the live handle of `kind` (any
 * kind when null) under the table's lock; 1 when the handle is refused. */
template <typename Work>
uint32_t WithObject(MDTLM_HOST_OP op, void *handle, const DbObjectKind *kind, Work work)
{
    int64_t injected;
    if (FaultCheck(op, &injected))
        return static_cast<uint32_t>(injected);
    HandleTable &table = Handles();
    std::lock_guard<std::mutex> lock(table.mu);
    DbObject *object = FindLocked(table, handle, kind);
    return object == nullptr ? 1 : work(*object);
}

/* As WithObject, for a handle made for `operation`, with its key read. */
template <typename Work>
uint32_t WithKeyedObject(MDTLM_HOST_OP op, void *handle, uint32_t operation, const void *keyDesc, const void *key,
                         Work work)
{
    return WithObject(op, handle, nullptr, [&](DbObject &object) -> uint32_t {
        DbKey dbKey;
        if (object.operation != operation || !ReadKey(keyDesc, key, &dbKey))
            return 1;
        return work(object, dbKey);
    });
}

uint32_t CreateObject(const DbObjectKind &kind, uint32_t operation, uint32_t flags, void **handle)
{
    int64_t injected;
    if (FaultCheck(MDTLM_HOST_OP_DB_CREATE, &injected)) {
        if (handle != nullptr)
            *handle = nullptr;
        return static_cast<uint32_t>(injected);
    }
    if (handle == nullptr)
        return 1;
    *handle = nullptr;
    if (!ValidOperation(operation))
        return 1;
    auto *object = new DbObject{&kind, operation, flags, {}, 0, false};
    HandleTable &table = Handles();
    std::lock_guard<std::mutex> lock(table.mu);
    table.live.insert(object);
    *handle = object;
    return 0;
}

uint32_t ReleaseObject(const DbObjectKind &kind, void *handle)
{
    int64_t injected;
    if (FaultCheck(MDTLM_HOST_OP_DB_RELEASE, &injected))
        return static_cast<uint32_t>(injected);
    HandleTable &table = Handles();
    std::lock_guard<std::mutex> lock(table.mu);
    DbObject *object = FindLocked(table, handle, &kind);
    if (object == nullptr)
        return 1;
    table.live.erase(object);
    delete object;
    return 0;
}

uint32_t SetAllFields(const DbObjectKind &kind, void *handle, const void *record, uint32_t length)
{
    return WithObject(MDTLM_HOST_OP_DB_SET_ALL, handle, &kind, [&](DbObject &object) -> uint32_t {
        if (record == nullptr || length != kind.recordSize)
            return 1;
        std::memcpy(object.record, record, length);
        object.fieldsSet = AllFields(kind);
        return 0;
    });
}

/* One u32 field of a report-performance handle, by column. */
uint32_t SetReportPerfField(void *handle, uint32_t column, uint32_t value)
{
    return WithObject(MDTLM_HOST_OP_DB_SET_FIELD, handle, &kReportPerfObject, [&](DbObject &object) -> uint32_t {
        std::memcpy(object.record + kReportPerfObject.columns[column].offset, &value, sizeof(value));
        object.fieldsSet |= uint64_t{1} << column;
        return 0;
    });
}

uint32_t ResultCode(DbResult result)
{
    return result == DbResult::Ok ? 0 : 1;
}

/* Column numbers of the report-performance fields with setters. */
enum ReportPerfColumn : uint32_t {
    kPeriodIndex = 2,
    kInFwmMsgCount,
    kInFwmMsgByteCount,
    kInFwmItemCount,
    kInFwmItemByteCount,
    kOutMsgCount,
    kOutMsgByteCount,
    kOutItemCount,
    kOutItemByteCount,
    kStartTimeS,
    kStartTimeMs,
    kEndTimeS,
    kEndTimeMs,
};

} /* namespace */

/* ------------------------------------------------- vraldcn_mdtlm_report_perf */

MDTLM_PLATFORM_API uint32_t db_create_vraldcn_mdtlm_report_perf_obj(uint32_t operation, uint32_t flags, void **handle)
{
    return CreateObject(kReportPerfObject, operation, flags, handle);
}

MDTLM_PLATFORM_API uint32_t db_release_vraldcn_mdtlm_report_perf_object(void *handle)
{
    return ReleaseObject(kReportPerfObject, handle);
}

MDTLM_PLATFORM_API uint32_t db_set_vraldcn_mdtlm_report_perf_all_fields(void *handle, const void *record,
                                                                        uint32_t length)
{
    return SetAllFields(kReportPerfObject, handle, record, length);
}

#define REPORT_PERF_SETTER(field, column)                                                      \
    MDTLM_PLATFORM_API uint32_t db_set_vraldcn_mdtlm_report_perf_##field(void *handle, uint32_t value) \
    {                                                                                          \
        return SetReportPerfField(handle, column, value);                                      \
    }

REPORT_PERF_SETTER(period_index, kPeriodIndex)
REPORT_PERF_SETTER(in_fwm_msg_count, kInFwmMsgCount)
REPORT_PERF_SETTER(in_fwm_msg_byte_count, kInFwmMsgByteCount)
REPORT_PERF_SETTER(in_fwm_item_count, kInFwmItemCount)
REPORT_PERF_SETTER(in_fwm_item_byte_count, kInFwmItemByteCount)
REPORT_PERF_SETTER(out_msg_count, kOutMsgCount)
REPORT_PERF_SETTER(out_msg_byte_count, kOutMsgByteCount)
REPORT_PERF_SETTER(out_item_count, kOutItemCount)
REPORT_PERF_SETTER(out_item_byte_count, kOutItemByteCount)
REPORT_PERF_SETTER(start_time_s, kStartTimeS)
REPORT_PERF_SETTER(start_time_ms, kStartTimeMs)
REPORT_PERF_SETTER(end_time_s, kEndTimeS)
REPORT_PERF_SETTER(end_time_ms, kEndTimeMs)

#undef REPORT_PERF_SETTER

/* ------------------------------------------------------------ fem_mdtlm_stat */

MDTLM_PLATFORM_API uint32_t db_create_fem_mdtlm_stat_obj(uint32_t operation, uint32_t flags, void **handle)
{
    return CreateObject(kFemStatObject, operation, flags, handle);
}

MDTLM_PLATFORM_API uint32_t db_release_fem_mdtlm_stat_object(void *handle)
{
    return ReleaseObject(kFemStatObject, handle);
}

MDTLM_PLATFORM_API uint32_t db_set_fem_mdtlm_stat_all_fields(void *handle, const void *record, uint32_t length)
{
    return SetAllFields(kFemStatObject, handle, record, length);
}

MDTLM_PLATFORM_API uint32_t db_get_fem_mdtlm_stat_all_fields(void *handle, void *record, uint32_t length)
{
    return WithObject(MDTLM_HOST_OP_DB_GET_ALL, handle, &kFemStatObject, [&](DbObject &object) -> uint32_t {
        if (!object.loaded || record == nullptr || length != kFemStatObject.recordSize)
            return 1;
        std::memcpy(record, object.record, length);
        return 0;
    });
}

/* ------------------------------------------------------- generic operations */

MDTLM_PLATFORM_API uint32_t db_write_obj(void *handle)
{
    return WithObject(MDTLM_HOST_OP_DB_WRITE, handle, nullptr, [](DbObject &object) -> uint32_t {
        if (object.operation != MDTLM_DB_OP_WRITE)
            return 1;
        return ResultCode(mdtlm_host::DbStore(*object.kind, object.record));
    });
}

MDTLM_PLATFORM_API uint32_t db_read_obj(void *handle, const void *keyDesc, const void *key)
{
    auto load = [](DbObject &object, const DbKey &dbKey) -> uint32_t {
        uint8_t loaded[mdtlm_host::kMaxRecordSize] = {};
        if (mdtlm_host::DbLoad(*object.kind, dbKey, loaded) != DbResult::Ok)
            return 1;
        std::memcpy(object.record, loaded, object.kind->recordSize);
        object.loaded = true;
        return 0;
    };
    return WithKeyedObject(MDTLM_HOST_OP_DB_READ, handle, MDTLM_DB_OP_READ, keyDesc, key, load);
}

MDTLM_PLATFORM_API uint32_t db_update_obj(void *handle, const void *keyDesc, const void *key)
{
    return WithKeyedObject(MDTLM_HOST_OP_DB_UPDATE, handle, MDTLM_DB_OP_UPDATE, keyDesc, key,
                           [](DbObject &object, const DbKey &dbKey) {
                               return ResultCode(
                                   mdtlm_host::DbUpdate(*object.kind, dbKey, object.record, object.fieldsSet));
                           });
}

MDTLM_PLATFORM_API uint32_t db_remove_obj(void *handle, const void *keyDesc, const void *key)
{
    return WithKeyedObject(MDTLM_HOST_OP_DB_REMOVE, handle, MDTLM_DB_OP_REMOVE, keyDesc, key,
                           [](DbObject &object, const DbKey &dbKey) {
                               return ResultCode(mdtlm_host::DbRemove(*object.kind, dbKey));
                           });
}

MDTLM_PLATFORM_API uint32_t db_truncate_table(const char *tableName, uint32_t flags)
{
    (void)flags; /* no truncation option exists on the host */
    int64_t injected;
    if (FaultCheck(MDTLM_HOST_OP_DB_TRUNCATE, &injected))
        return static_cast<uint32_t>(injected);
    const DbObjectKind *kind = mdtlm_host::FindObjectKind(tableName);
    if (kind == nullptr)
        return 1;
    return ResultCode(mdtlm_host::DbTruncate(*kind));
}

MDTLM_PLATFORM_API uint64_t MDTLM_HOST_DbOpenHandles(void)
{
    HandleTable &table = Handles();
    std::lock_guard<std::mutex> lock(table.mu);
    return table.live.size();
}
