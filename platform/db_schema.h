/*
 * The two objects of the object database, as records and as SQLite tables:
 * one table per object, one column per record field, keyed by the record's
 * first two u32 fields.
 */
#ifndef MDTLM_PLATFORM_DB_SCHEMA_H
#define MDTLM_PLATFORM_DB_SCHEMA_H

#include <cstdint>

#pragma GCC visibility push(hidden)

namespace mdtlm_host {

enum class ColumnType { U32, U64, Text };

struct DbColumn {
    const char *name;
    uint32_t offset; /* in the record */
    ColumnType type;
    uint32_t width;  /* bytes in the record */
};

struct DbObjectKind {
    const char *table;
    uint32_t recordSize;
    const DbColumn *columns;
    uint32_t columnCount;
};

/* Columns 0 and 1 of every object are its key. */
constexpr uint32_t kKeyColumns = 2;
constexpr uint32_t kMaxRecordSize = 572;

extern const DbObjectKind kReportPerfObject; /* "vraldcn_mdtlm_report_perf", 60-byte records */
extern const DbObjectKind kFemStatObject;    /* "fem_mdtlm_stat", 572-byte records */

/* The object stored in `table`, or null. */
const DbObjectKind *FindObjectKind(const char *table);

/* Operations on the database; each takes the connection's lock and opens an
 * in-memory database first when none is open. */
struct DbKey {
    uint32_t reserved;
    uint32_t id;
};

enum class DbResult { Ok, NoRow, Error };

DbResult DbStore(const DbObjectKind &kind, const uint8_t *record);
DbResult DbLoad(const DbObjectKind &kind, const DbKey &key, uint8_t *record);
/* Writes the columns whose bit is set in `columns` (key columns are never
 * written) into the row with the key. */
DbResult DbUpdate(const DbObjectKind &kind, const DbKey &key, const uint8_t *record, uint64_t columns);
DbResult DbRemove(const DbObjectKind &kind, const DbKey &key);
DbResult DbTruncate(const DbObjectKind &kind);

} /* namespace mdtlm_host */

#pragma GCC visibility pop

#endif /* MDTLM_PLATFORM_DB_SCHEMA_H */
