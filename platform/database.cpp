/*
 * The object database on SQLite: one connection for the process, serialised
 * by a lock, opened in memory on first use unless a host named a file. Each
 * statement an operation needs is prepared once per connection, kept, and
 * reset after every use: the tick writes the same few statements for every
 * task, and preparing them cost more than running them.
 *
 * Records move between their byte layout and the table's columns here:
 * u32 and u64 fields are INTEGER columns (a u64 keeps its bits in SQLite's
 * signed 64-bit integer), the path field is TEXT up to its first NUL.
 */
#include <sqlite3.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <tuple>

#include "db_schema.h"
#include "mdtlm_platform.h"
#include "platform_internal.h"

namespace {

using mdtlm_host::ColumnType;
using mdtlm_host::DbColumn;
using mdtlm_host::DbKey;
using mdtlm_host::DbObjectKind;
using mdtlm_host::DbResult;

constexpr int kBusyTimeoutMs = 1000; /* another process (the sqlite3 shell) may hold the file */

/* A prepared statement, finalised on every path. */
class Statement {
public:
    Statement(sqlite3 *db, const std::string &sql)
    {
        if (sqlite3_prepare_v2(db, sql.c_str(), -1, &stmt_, nullptr) != SQLITE_OK)
            stmt_ = nullptr;
    }
    ~Statement() { sqlite3_finalize(stmt_); }
    Statement(const Statement &) = delete;
    Statement &operator=(const Statement &) = delete;

    bool Ok() const { return stmt_ != nullptr; }
    sqlite3_stmt *Get() const { return stmt_; }

private:
    sqlite3_stmt *stmt_ = nullptr;
};

/* What a kept statement does: the operation, its object kind and, for
 * updates, the columns it sets. */
enum class StatementOp { Store, Load, Update, Exists, Remove, Truncate };

struct StatementKey {
    const DbObjectKind *kind;
    StatementOp op;
    uint64_t columns;
    bool operator<(const StatementKey &o) const
    {
        return std::tie(kind, op, columns) < std::tie(o.kind, o.op, o.columns);
    }
};

struct Connection {
    std::mutex mu;
    sqlite3 *db = nullptr;
    std::map<StatementKey, sqlite3_stmt *> prepared; /* finalised when the connection closes */
};

/* One use of a kept statement, prepared from `sql()` on first use; reset and
 * its bindings cleared when the use ends, on every path. */
class KeptStatement {
public:
    KeptStatement(Connection &c, const StatementKey &key, const std::function<std::string()> &sql)
    {
        auto found = c.prepared.find(key);
        if (found != c.prepared.end()) {
            stmt_ = found->second;
            return;
        }
        if (sqlite3_prepare_v3(c.db, sql().c_str(), -1, SQLITE_PREPARE_PERSISTENT, &stmt_, nullptr) != SQLITE_OK) {
            sqlite3_finalize(stmt_);
            stmt_ = nullptr;
            return;
        }
        c.prepared.emplace(key, stmt_);
    }
    ~KeptStatement()
    {
        if (stmt_ != nullptr) {
            sqlite3_reset(stmt_);
            sqlite3_clear_bindings(stmt_);
        }
    }
    KeptStatement(const KeptStatement &) = delete;
    KeptStatement &operator=(const KeptStatement &) = delete;

    bool Ok() const { return stmt_ != nullptr; }
    sqlite3_stmt *Get() const { return stmt_; }

private:
    sqlite3_stmt *stmt_ = nullptr;
};

Connection &Db()
{
    static Connection *connection = new Connection(); /* lives as long as the process */
    return *connection;
}

std::string CreateTableSql(const DbObjectKind &kind)
{
    std::string sql = std::string("CREATE TABLE IF NOT EXISTS ") + kind.table + " (";
    for (uint32_t i = 0; i < kind.columnCount; i++) {
        sql += kind.columns[i].name;
        sql += kind.columns[i].type == ColumnType::Text ? " TEXT, " : " INTEGER, ";
    }
    sql += std::string("PRIMARY KEY (") + kind.columns[0].name + ", " + kind.columns[1].name + "))";
    return sql;
}

std::string KeyClause(const DbObjectKind &kind)
{
    return std::string(" WHERE ") + kind.columns[0].name + " = ?1 AND " + kind.columns[1].name + " = ?2";
}

bool Exec(sqlite3 *db, const std::string &sql)
{
    return sqlite3_exec(db, sql.c_str(), nullptr, nullptr, nullptr) == SQLITE_OK;
}

void CloseLocked(Connection &c)
{
    for (auto &entry : c.prepared) {
        sqlite3_finalize(entry.second);
    }
    c.prepared.clear();
    if (c.db != nullptr) {
        sqlite3_close_v2(c.db);
        c.db = nullptr;
    }
}

bool OpenLocked(Connection &c, const char *path)
{
    CloseLocked(c);
    bool inMemory = path == nullptr || path[0] == '\0';
    sqlite3 *db = nullptr;
    if (sqlite3_open_v2(inMemory ? ":memory:" : path, &db, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, nullptr) !=
        SQLITE_OK) {
        sqlite3_close_v2(db);
        return false;
    }
    sqlite3_busy_timeout(db, kBusyTimeoutMs);
    bool ok = Exec(db, CreateTableSql(mdtlm_host::kReportPerfObject)) &&
              Exec(db, CreateTableSql(mdtlm_host::kFemStatObject));
    if (ok && !inMemory)
        Exec(db, "PRAGMA journal_mode=WAL; PRAGMA synchronous=NORMAL");
    if (!ok) {
        sqlite3_close_v2(db);
        return false;
    }
    c.db = db;
    return true;
}

/* The open connection, opening an in-memory one when there is none. */
sqlite3 *EnsureOpenLocked(Connection &c)
{
    if (c.db == nullptr)
        OpenLocked(c, nullptr);
    return c.db;
}

void BindColumn(sqlite3_stmt *stmt, int index, const DbColumn &column, const uint8_t *record)
{
    const uint8_t *field = record + column.offset;
    switch (column.type) {
    case ColumnType::U32: {
        uint32_t value;
        std::memcpy(&value, field, sizeof(value));
        sqlite3_bind_int64(stmt, index, value);
        break;
    }
    case ColumnType::U64: {
        uint64_t value;
        std::memcpy(&value, field, sizeof(value));
        sqlite3_bind_int64(stmt, index, static_cast<sqlite3_int64>(value));
        break;
    }
    case ColumnType::Text: {
        const char *text = reinterpret_cast<const char *>(field);
        sqlite3_bind_text(stmt, index, text, static_cast<int>(strnlen(text, column.width)), SQLITE_TRANSIENT);
        break;
    }
    }
}

void ReadColumn(sqlite3_stmt *stmt, int index, const DbColumn &column, uint8_t *record)
{
    uint8_t *field = record + column.offset;
    switch (column.type) {
    case ColumnType::U32: {
        uint32_t value = static_cast<uint32_t>(sqlite3_column_int64(stmt, index));
        std::memcpy(field, &value, sizeof(value));
        break;
    }
    case ColumnType::U64: {
        uint64_t value = static_cast<uint64_t>(sqlite3_column_int64(stmt, index));
        std::memcpy(field, &value, sizeof(value));
        break;
    }
    case ColumnType::Text: {
        std::memset(field, 0, column.width);
        const unsigned char *text = sqlite3_column_text(stmt, index);
        size_t length = static_cast<size_t>(sqlite3_column_bytes(stmt, index));
        if (text != nullptr)
            std::memcpy(field, text, std::min<size_t>(length, column.width));
        break;
    }
    }
}

void BindKey(sqlite3_stmt *stmt, const DbKey &key)
{
    sqlite3_bind_int64(stmt, 1, key.reserved);
    sqlite3_bind_int64(stmt, 2, key.id);
}

/* Runs a statement that returns no rows; the rows it changed, or -1. */
int Change(sqlite3 *db, sqlite3_stmt *stmt)
{
    if (sqlite3_step(stmt) != SQLITE_DONE)
        return -1;
    return sqlite3_changes(db);
}

DbResult ChangeResult(int changed)
{
    if (changed < 0)
        return DbResult::Error;
    return changed == 0 ? DbResult::NoRow : DbResult::Ok;
}

} /* namespace */

namespace mdtlm_host {

DbResult DbStore(const DbObjectKind &kind, const uint8_t *record)
{
    Connection &c = Db();
    std::lock_guard<std::mutex> lock(c.mu);
    sqlite3 *db = EnsureOpenLocked(c);
    if (db == nullptr)
        return DbResult::Error;
    KeptStatement stmt(c, {&kind, StatementOp::Store, 0}, [&] {
        std::string columns, values;
        for (uint32_t i = 0; i < kind.columnCount; i++) {
            columns += std::string(i ? ", " : "") + kind.columns[i].name;
            values += std::string(i ? ", ?" : "?") + std::to_string(i + 1);
        }
        return std::string("INSERT OR REPLACE INTO ") + kind.table + " (" + columns + ") VALUES (" + values + ")";
    });
    if (!stmt.Ok())
        return DbResult::Error;
    for (uint32_t i = 0; i < kind.columnCount; i++)
        BindColumn(stmt.Get(), static_cast<int>(i + 1), kind.columns[i], record);
    return Change(db, stmt.Get()) > 0 ? DbResult::Ok : DbResult::Error;
}

DbResult DbLoad(const DbObjectKind &kind, const DbKey &key, uint8_t *record)
{
    Connection &c = Db();
    std::lock_guard<std::mutex> lock(c.mu);
    sqlite3 *db = EnsureOpenLocked(c);
    if (db == nullptr)
        return DbResult::Error;
    KeptStatement stmt(c, {&kind, StatementOp::Load, 0}, [&] {
        std::string columns;
        for (uint32_t i = 0; i < kind.columnCount; i++)
            columns += std::string(i ? ", " : "") + kind.columns[i].name;
        return "SELECT " + columns + " FROM " + kind.table + KeyClause(kind);
    });
    if (!stmt.Ok())
        return DbResult::Error;
    BindKey(stmt.Get(), key);
    int rc = sqlite3_step(stmt.Get());
    if (rc == SQLITE_DONE)
        return DbResult::NoRow;
    if (rc != SQLITE_ROW)
        return DbResult::Error;
    for (uint32_t i = 0; i < kind.columnCount; i++)
        ReadColumn(stmt.Get(), static_cast<int>(i), kind.columns[i], record);
    return DbResult::Ok;
}

DbResult DbUpdate(const DbObjectKind &kind, const DbKey &key, const uint8_t *record, uint64_t columns)
{
    Connection &c = Db();
    std::lock_guard<std::mutex> lock(c.mu);
    sqlite3 *db = EnsureOpenLocked(c);
    if (db == nullptr)
        return DbResult::Error;

    uint64_t written = 0; /* the value columns the update sets */
    for (uint32_t i = kKeyColumns; i < kind.columnCount; i++) {
        written |= columns & (uint64_t{1} << i);
    }
    /* Nothing to write still tells whether the row exists. */
    KeptStatement stmt(c, {&kind, written == 0 ? StatementOp::Exists : StatementOp::Update, written}, [&] {
        std::string assignments;
        int parameter = 3; /* ?1 and ?2 are the key */
        for (uint32_t i = kKeyColumns; i < kind.columnCount; i++) {
            if (written & (uint64_t{1} << i))
                assignments += std::string(assignments.empty() ? "" : ", ") + kind.columns[i].name + " = ?" +
                               std::to_string(parameter++);
        }
        return written == 0 ? std::string("SELECT 1 FROM ") + kind.table + KeyClause(kind)
                            : std::string("UPDATE ") + kind.table + " SET " + assignments + KeyClause(kind);
    });
    if (!stmt.Ok())
        return DbResult::Error;
    BindKey(stmt.Get(), key);
    if (written == 0) {
        int rc = sqlite3_step(stmt.Get());
        return rc == SQLITE_ROW ? DbResult::Ok : rc == SQLITE_DONE ? DbResult::NoRow : DbResult::Error;
    }
    int parameter = 3;
    for (uint32_t i = kKeyColumns; i < kind.columnCount; i++) {
        if (written & (uint64_t{1} << i))
            BindColumn(stmt.Get(), parameter++, kind.columns[i], record);
    }
    return ChangeResult(Change(db, stmt.Get()));
}

DbResult DbRemove(const DbObjectKind &kind, const DbKey &key)
{
    Connection &c = Db();
    std::lock_guard<std::mutex> lock(c.mu);
    sqlite3 *db = EnsureOpenLocked(c);
    if (db == nullptr)
        return DbResult::Error;
    KeptStatement stmt(c, {&kind, StatementOp::Remove, 0},
                       [&] { return std::string("DELETE FROM ") + kind.table + KeyClause(kind); });
    if (!stmt.Ok())
        return DbResult::Error;
    BindKey(stmt.Get(), key);
    return ChangeResult(Change(db, stmt.Get()));
}

DbResult DbTruncate(const DbObjectKind &kind)
{
    Connection &c = Db();
    std::lock_guard<std::mutex> lock(c.mu);
    sqlite3 *db = EnsureOpenLocked(c);
    if (db == nullptr)
        return DbResult::Error;
    KeptStatement stmt(c, {&kind, StatementOp::Truncate, 0},
                       [&] { return std::string("DELETE FROM ") + kind.table; });
    if (!stmt.Ok())
        return DbResult::Error;
    return Change(db, stmt.Get()) >= 0 ? DbResult::Ok : DbResult::Error;
}

} /* namespace mdtlm_host */

MDTLM_PLATFORM_API uint32_t MDTLM_HOST_DbOpen(const char *path)
{
    Connection &c = Db();
    std::lock_guard<std::mutex> lock(c.mu);
    return OpenLocked(c, path) ? 0 : 1;
}

MDTLM_PLATFORM_API void MDTLM_HOST_DbClose(void)
{
    Connection &c = Db();
    std::lock_guard<std::mutex> lock(c.mu);
    CloseLocked(c);
}

MDTLM_PLATFORM_API int64_t MDTLM_HOST_DbQueryInt(const char *sql)
{
    if (sql == nullptr)
        return -1;
    Connection &c = Db();
    std::lock_guard<std::mutex> lock(c.mu);
    sqlite3 *db = EnsureOpenLocked(c);
    if (db == nullptr)
        return -1;
    Statement stmt(db, sql);
    if (!stmt.Ok() || sqlite3_step(stmt.Get()) != SQLITE_ROW)
        return -1;
    return sqlite3_column_int64(stmt.Get(), 0);
}
