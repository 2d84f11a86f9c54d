/*
 * The object database of the simulated device: a SQLite file that the host
 * platform writes for the plug-in. Deleting a task removes its statistics row
 * and emptying a sensor's task list empties the report-performance table, so
 * the simulator copies both tables aside before it deletes the tasks at stop
 * and puts the copies back once the plug-in is gone: after a run the file
 * shows the rows as they stood at the end of the traffic.
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
    /* Copies both tables aside and reads the task statistics. Returns a problem or "". */
    std::string Snapshot();
    const std::vector<TaskStatRow> &TaskStats() const { return taskStats_; }
    uint64_t ReportPerfRows() const { return reportPerfRows_; }
    /* Closes the platform's connection and puts the copies back. Returns a problem or "". */
    std::string Restore();

private:
    std::string path_;
    std::vector<TaskStatRow> taskStats_;
    uint64_t reportPerfRows_ = 0;
    bool snapshotTaken_ = false;
};

} // namespace mdtlm::sim

#endif /* MDTLM_SIM_SIM_DATABASE_H */
