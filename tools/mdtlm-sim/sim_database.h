/*
 * The object database of the simulated device: a SQLite file that the host
 * platform writes for the plug-in. Deleting a task removes its statistics row
 * and emptying a sensor's task list empties the report-performance table, so
 * at stop the simulator copies the report-performance rows aside before it
 * deletes the tasks, keeps each statistics row as it stood when the plug-in
 * deleted it (after the task's last tick, so it agrees with the uploads), and
 * puts both back once the plug-in is gone.
 */
#ifndef MDTLM_SIM_SIM_DATABASE_H
#define MDTLM_SIM_SIM_DATABASE_H

#include <cstdint>
#include <string>
#include <vector>

namespace mdtlm::sim {

struct TaskStatRow {
    uint32_t taskId = 0;
    uint32_t sensorType = 0;
    uint64_t recvMsgCount = 0;
    uint64_t matchItemCount = 0;
    uint64_t uploadOkCount = 0;
    uint64_t uploadFailCount = 0;
};

class SimDatabase {
public:
    explicit SimDatabase(std::string path) : path_(std::move(path)) {}

    const std::string &Path() const { return path_; }
    /* Removes an old file and has the host platform open a fresh one. Returns a problem or "". */
    std::string Create();
    /* Rows of the task statistics table now. */
    int64_t TaskStatCount() const;
    /* Before the tasks are deleted: copies the report-performance rows aside
     * and starts keeping the statistics rows the plug-in deletes. Returns a problem or "". */
    std::string Snapshot();
    /* After the deletes: the statistics rows kept and those never deleted. Returns a problem or "". */
    std::string ReadTaskStats();
    const std::vector<TaskStatRow> &TaskStats() const { return taskStats_; }
    /* Closes the platform's connection and puts the copies back. Returns a problem or "". */
    std::string Restore();

private:
    std::string path_;
    std::vector<TaskStatRow> taskStats_;
    bool snapshotTaken_ = false;
};

} // namespace mdtlm::sim

#endif /* MDTLM_SIM_SIM_DATABASE_H */
