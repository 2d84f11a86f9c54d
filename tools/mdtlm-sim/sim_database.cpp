/*
 * The simulator's side of the object database. The host platform owns the
 * tables; this file only opens a second connection to copy them.
 */
#include "sim_database.h"

#include <fcntl.h>
#include <sqlite3.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <memory>

#include "mdtlm_host.h"

namespace mdtlm::sim {
namespace {

constexpr const char *kTaskStatTable = "fem_mdtlm_stat";
constexpr const char *kReportPerfTable = "vraldcn_mdtlm_report_perf";
constexpr const char *kCopyPrefix = "sim_at_stop_";
constexpr const char *kKeepTrigger = "sim_keep_deleted_task_stats";
constexpr int kBusyTimeoutMs = 5000;

struct Closer {
    void operator()(sqlite3 *db) const { sqlite3_close_v2(db); }
};
using Connection = std::unique_ptr<sqlite3, Closer>;

Connection Open(const std::string &path, std::string &problem)
{
    sqlite3 *raw = nullptr;
    int rc = sqlite3_open_v2(path.c_str(), &raw, SQLITE_OPEN_READWRITE, nullptr);
    Connection db(raw);
    if (rc != SQLITE_OK) {
        problem = "cannot open " + path + ": " + (raw != nullptr ? sqlite3_errmsg(raw) : sqlite3_errstr(rc));
        return nullptr;
    }
    sqlite3_busy_timeout(raw, kBusyTimeoutMs);
    return db;
}

std::string Exec(sqlite3 *db, const std::string &sql)
{
    char *message = nullptr;
    if (sqlite3_exec(db, sql.c_str(), nullptr, nullptr, &message) == SQLITE_OK) {
        return "";
    }
    std::string problem = message != nullptr ? message : "unknown error";
    sqlite3_free(message);
    return problem + " (" + sql + ")";
}

} // namespace

std::string SimDatabase::Create()
{
    for (const char *suffix : {"", "-wal", "-shm", "-journal"}) {
        std::error_code ignored;
        std::filesystem::remove(path_ + suffix, ignored);
    }
    /* The host platform reports only that it failed: find the system's reason first. */
    int fd = open(path_.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644);
    if (fd < 0) {
        return "cannot create the object database " + path_ + ": " + std::strerror(errno);
    }
    close(fd);
    if (MDTLM_HOST_DbOpen(path_.c_str()) != 0) {
        std::string problem;
        Connection db = Open(path_, problem);
        if (problem.empty()) {
            problem = Exec(db.get(), "CREATE TABLE mdtlm_sim_probe(x); DROP TABLE mdtlm_sim_probe;");
        }
        return "the host platform cannot set up the object database " + path_ + ": " +
               (problem.empty() ? "its tables could not be created" : problem);
    }
    return "";
}

int64_t SimDatabase::TaskStatCount() const
{
    return MDTLM_HOST_DbQueryInt("SELECT count(*) FROM fem_mdtlm_stat");
}

std::string SimDatabase::Snapshot()
{
    std::string problem;
    Connection db = Open(path_, problem);
    if (!db) {
        return problem;
    }
    /* Report-performance rows as they stand now; each task's statistics row as
     * it stands when the plug-in deletes it, which is after the last tick that
     * counted and uploaded for the task: the row then agrees with the uploads. */
    const std::string perfCopy = std::string(kCopyPrefix) + kReportPerfTable;
    const std::string statCopy = std::string(kCopyPrefix) + kTaskStatTable;
    problem = Exec(db.get(), "DROP TABLE IF EXISTS " + perfCopy + "; CREATE TABLE " + perfCopy +
                                 " AS SELECT * FROM " + kReportPerfTable + "; DROP TABLE IF EXISTS " + statCopy +
                                 "; CREATE TABLE " + statCopy + " AS SELECT * FROM " + kTaskStatTable +
                                 " WHERE 0; DROP TRIGGER IF EXISTS " + kKeepTrigger + "; CREATE TRIGGER " + kKeepTrigger + " BEFORE DELETE ON " +
                                 kTaskStatTable + " BEGIN INSERT INTO " + statCopy + " SELECT * FROM " +
                                 kTaskStatTable + " WHERE rowid = OLD.rowid; END;");
    snapshotTaken_ = problem.empty();
    return problem;
}

std::string SimDatabase::ReadTaskStats()
{
    std::string problem;
    Connection db = Open(path_, problem);
    if (!db) {
        return problem;
    }
    sqlite3_stmt *raw = nullptr;
    const std::string sql = std::string("SELECT task_id, sensor_type, recv_msg_count, match_item_count, "
                                        "upload_ok_count, upload_fail_count FROM ") +
                            kCopyPrefix + kTaskStatTable + " UNION ALL SELECT task_id, sensor_type, recv_msg_count, "
                            "match_item_count, upload_ok_count, upload_fail_count FROM " + kTaskStatTable +
                            " ORDER BY task_id";
    if (sqlite3_prepare_v2(db.get(), sql.c_str(), -1, &raw, nullptr) != SQLITE_OK) {
        return std::string("cannot read the task statistics: ") + sqlite3_errmsg(db.get());
    }
    std::unique_ptr<sqlite3_stmt, int (*)(sqlite3_stmt *)> statement(raw, sqlite3_finalize);
    taskStats_.clear();
    while (sqlite3_step(raw) == SQLITE_ROW) {
        TaskStatRow row;
        row.taskId = static_cast<uint32_t>(sqlite3_column_int64(raw, 0));
        row.sensorType = static_cast<uint32_t>(sqlite3_column_int64(raw, 1));
        row.recvMsgCount = static_cast<uint64_t>(sqlite3_column_int64(raw, 2));
        row.matchItemCount = static_cast<uint64_t>(sqlite3_column_int64(raw, 3));
        row.uploadOkCount = static_cast<uint64_t>(sqlite3_column_int64(raw, 4));
        row.uploadFailCount = static_cast<uint64_t>(sqlite3_column_int64(raw, 5));
        taskStats_.push_back(row);
    }
    return "";
}

std::string SimDatabase::Restore()
{
    MDTLM_HOST_DbClose();
    if (!snapshotTaken_) {
        return "";
    }
    std::string problem;
    Connection db = Open(path_, problem);
    if (!db) {
        return problem;
    }
    /* Rows the plug-in deleted come back; rows it never deleted stay. */
    const std::string perfCopy = std::string(kCopyPrefix) + kReportPerfTable;
    const std::string statCopy = std::string(kCopyPrefix) + kTaskStatTable;
    return Exec(db.get(), std::string("BEGIN; DROP TRIGGER IF EXISTS ") + kKeepTrigger + "; DELETE FROM " +
                              kReportPerfTable + "; INSERT INTO " + kReportPerfTable + " SELECT * FROM " + perfCopy +
                              "; DROP TABLE " + perfCopy + "; INSERT INTO " + kTaskStatTable + " SELECT * FROM " +
                              statCopy + "; DROP TABLE " + statCopy + "; COMMIT;");
}

} // namespace mdtlm::sim
