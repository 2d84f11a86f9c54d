/*
 * The whole path on a host, driven by a scripted run of records: each record
 * must reach exactly the tasks whose conditions and filters it passes, in the
 * order sent, with each task's own flow sequence numbers; the database must
 * count what was offered, accepted and uploaded; no buffer may be left over.
 */
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <array>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "sim_runner.h"

namespace {

struct TaskCase {
    uint32_t id; /* task id; instance is 1 for even ids, 2 for odd ones */
    const char *sensor;
    const char *settings; /* the rest of the task's configuration */
};

const TaskCase kTasks[] = {
    {11, "flow", R"("encoding": "gpb")"},
    {12, "flow", R"("encoding": "json", "conditions": [{"name": "flow-id", "value": "1048578"}])"},
    {13, "flow", R"("encoding": "gpb", "filter-logic": "or", "filters": [
        {"name": "byte-count", "operator": "gt", "threshold": 4294967296},
        {"name": "packet-count", "operator": "eq", "threshold": 7}])"},
    {14, "flow", R"("encoding": "json", "conditions": [{"name": "direction", "value": "4"}],
        "filter-logic": "and", "filters": [
        {"name": "byte-count", "operator": "gt", "threshold": 4294967296},
        {"name": "if-index", "operator": "lt", "threshold": 10}])"},
    {21, "flow-hop", R"("encoding": "json", "filters": [{"name": "total-delay", "operator": "eq", "threshold": 3}])"},
    {31, "io-flow", R"("encoding": "gpb", "conditions": [{"name": "address-family", "value": "1"},
        {"name": "source-ip", "value": "2001:db8:0:0:0:0:0:1"}])"},
    {41, "result", R"("encoding": "gpb", "conditions": [{"name": "id", "value": "7"}])"},
    {42, "result", R"("encoding": "json")"},
    {51, "io-throughput", R"("encoding": "json", "conditions": [{"name": "slot-id", "value": "3"}])"},
    {61, "export-cache", R"("encoding": "json", "conditions": [{"name": "source-ip", "value": "10.0.0.1"}])"},
    {62, "export-cache", R"("encoding": "gpb", "filters": [{"name": "state", "operator": "ge", "threshold": 2}])"},
};

/* The field that tells the records of a sensor apart, as both encodings name it (after '_' -> '-'). */
const std::map<std::string, std::string> kKeyField = {
    {"flow", "timestamp-nanosecond"}, {"flow-hop", "timestamp-nanosecond"}, {"io-flow", "sequence-number"},
    {"result", "time-stamp"},         {"io-throughput", "sequence-number"}, {"export-cache", "seed"},
};

struct RecordCase {
    const char *sensor;
    uint64_t key;
    const char *fields;
    std::set<uint32_t> accepted;    /* tasks whose conditions and filters it passes */
    std::set<uint32_t> unencodable; /* of those, tasks that cannot encode it */
    bool shortBody = false;         /* sent shorter than the sensor's record: refused at intake */
};

/* Sent in this order, one record per datagram. */
const RecordCase kRecords[] = {
    {"flow", 1, R"("flow-id-high": 1, "flow-id-low": 2, "address-family": 1, "source-ip": "10.0.0.1",
        "byte-count": 100, "packet-count": 7, "if-index": 5, "direction": 1, "cast-type": 1)",
     {11, 12, 13}, {}},
    {"export-cache", 301, R"("source-ip": "10.0.0.1", "protocol-id": 6, "state": 0, "recovery-mode": 2,
        "op-mode": 1)",
     {61}, {}},
    {"flow", 2, R"("flow-id-low": 2, "address-family": 1, "byte-count": 5000000000, "packet-count": 1,
        "if-index": 20, "direction": 2, "cast-type": 2)",
     {11, 13}, {}},
    {"result", 201, R"("id": 7, "protocol": 1, "acl-name": "edge")", {41, 42}, {}},
    {"flow-hop", 101, R"("total-delay": 3, "cast-type": 1)", {21}, {}},
    {"io-flow", 1, R"("address-family": 1, "source-ip": "2001:db8::1", "destination-ip": "2001:db8::2")", {31}, {}},
    {"io-throughput", 11, R"("slot-id": 3, "address-family": 0, "source-ip": "10.0.0.1")", {51}, {}},
    {"flow", 3, R"("flow-id-high": 1, "flow-id-low": 2, "address-family": 2, "source-ip": "2001:db8::5",
        "byte-count": 4294967297, "if-index": 3, "direction": 2, "cast-type": 1)",
     {11, 12, 13, 14}, {}},
    {"export-cache", 302, R"("source-ip": "10.0.0.2", "protocol-id": 6, "state": 2, "recovery-mode": 3,
        "op-mode": 4)",
     {62}, {}},
    {"flow", 4, R"("flow-id-high": 1, "flow-id-low": 2, "address-family": 1, "packet-count": 7,
        "body-length": 100)",
     {}, {}, true},
    {"result", 202, R"("id": 8, "protocol": 9)", {42}, {42}},
    {"flow-hop", 102, R"("total-delay": 768, "cast-type": 2)", {}, {}},
    {"io-flow", 2, R"("address-family": 0, "source-ip": "10.0.0.1")", {}, {}},
    {"io-throughput", 12, R"("slot-id": 4, "address-family": 0)", {}, {}},
    {"flow", 5, R"("flow-id-high": 1, "flow-id-low": 2, "address-family": 3, "packet-count": 7, "direction": 1,
        "cast-type": 1)",
     {11, 12, 13}, {11, 12, 13}},
    {"export-cache", 303, R"("source-ip": "10.0.0.1", "protocol-id": 6, "state": 3, "recovery-mode": 2,
        "op-mode": 2)",
     {61, 62}, {}},
    {"result", 203, R"("id": 7, "protocol": 9)", {41, 42}, {42}},
    {"io-flow", 3, R"("address-family": 1, "source-ip": "2001:db8::2")", {}, {}},
    {"io-throughput", 13, R"("slot-id": 3, "address-family": 1, "source-ip": "2001:db8::1")", {51}, {}},
    {"flow", 6, R"("flow-id-high": 1, "flow-id-low": 2, "address-family": 1, "byte-count": 4294967296,
        "packet-count": 8, "if-index": 9, "direction": 2, "cast-type": 2)",
     {11, 12}, {}},
    {"export-cache", 304, R"("source-ip": "10.0.0.1", "protocol-id": 6, "state": 4, "recovery-mode": 2,
        "op-mode": 0)",
     {61, 62}, {61}},
    /* A body far longer than its record: only the record is kept, and it is delivered like any other. */
    {"export-cache", 305, R"("source-ip": "10.0.0.1", "protocol-id": 6, "state": 0, "recovery-mode": 2,
        "op-mode": 1, "body-length": 65000)",
     {61}, {}},
};

std::string ConfigText()
{
    std::string text = "{\"tasks\": [\n";
    for (const TaskCase &task : kTasks) {
        text += std::string(&task == kTasks ? "" : ",\n") + " {\"sensor\": \"" + task.sensor +
                "\", \"instance\": " + std::to_string(task.id % 2 == 0 ? 1 : 2) +
                ", \"task\": " + std::to_string(task.id) + ", " + task.settings + "}";
    }
    return text + "\n]}\n";
}

std::string ScriptText()
{
    std::string text = "[\n";
    for (const RecordCase &record : kRecords) {
        text += std::string(&record == kRecords ? "" : ",\n") + " {\"sensor\": \"" + record.sensor + "\", \"" +
                kKeyField.at(record.sensor) + "\": " + std::to_string(record.key) + ", " + record.fields + "}";
    }
    return text + "\n]\n";
}

uint64_t Number(const nlohmann::json &value)
{
    return value.is_string() ? std::stoull(value.get<std::string>()) : value.get<uint64_t>();
}

/* Per task: messages offered, records accepted, uploads done, uploads failed. */
std::map<uint32_t, std::array<int64_t, 4>> ReadTaskStats(const std::string &path)
{
    std::map<uint32_t, std::array<int64_t, 4>> rows;
    sqlite3 *db = nullptr;
    sqlite3_stmt *stmt = nullptr;
    if (sqlite3_open_v2(path.c_str(), &db, SQLITE_OPEN_READONLY, nullptr) == SQLITE_OK &&
        sqlite3_prepare_v2(db, "SELECT task_id, recv_msg_count, match_item_count, upload_ok_count, upload_fail_count "
                               "FROM fem_mdtlm_stat", -1, &stmt, nullptr) == SQLITE_OK) {
        while (sqlite3_step(stmt) == SQLITE_ROW) {
            rows[static_cast<uint32_t>(sqlite3_column_int64(stmt, 0))] = {
                sqlite3_column_int64(stmt, 1), sqlite3_column_int64(stmt, 2), sqlite3_column_int64(stmt, 3),
                sqlite3_column_int64(stmt, 4)};
        }
    }
    sqlite3_finalize(stmt);
    sqlite3_close(db);
    return rows;
}

TEST(SimDelivery, EachRecordReachesExactlyThePassingTasksInOrderAndIsCounted)
{
    ScratchDir dir;
    dir.Write("tasks.json", ConfigText());
    dir.Write("records.json", ScriptText());
    std::vector<std::string> args = PluginArgs("tasks.json", {"--records", "records.json", "--db", "sim.db"});
    SimRun run = ToolProcess(dir, "mdtlm-sim", args).Wait(90);
    ASSERT_EQ(run.exitCode, 0) << run.err;
    EXPECT_NE(run.err.find("mdtlm-sim: clean stop"), std::string::npos) << run.err;
    EXPECT_NE(run.err.find(", 0 outstanding (0 bytes)"), std::string::npos) << run.err;
    /* The short flow record is refused at intake and reported as such. */
    EXPECT_NE(run.err.find("1 short messages refused"), std::string::npos) << run.err;
    EXPECT_NE(run.err.find("sent " + std::to_string(std::size(kRecords)) + " messages"), std::string::npos)
        << run.err;
    /* Every message is accounted for: the short one is the only loss, and every
     * record a task accepted but could not encode is counted for its sensor. */
    const std::string messages = std::to_string(std::size(kRecords));
    EXPECT_NE(run.err.find("reconciliation: channel handed " + messages + " messages (plug-in counted " + messages +
                           "); handled by ticks " + std::to_string(std::size(kRecords) - 1) +
                           " + still queued 0 + lost 1; unaccounted 0\n"),
              std::string::npos)
        << run.err;
    EXPECT_NE(run.err.find("altered: 1 bodies cut to their record's size"), std::string::npos) << run.err;
    std::map<std::string, size_t> unencodable;
    for (const RecordCase &record : kRecords) {
        unencodable[record.sensor] += record.unencodable.size();
    }
    EXPECT_NE(run.err.find("records not stored (encode failures): flow " + std::to_string(unencodable["flow"]) +
                           ", flow-hop 0, io-flow 0, result " + std::to_string(unencodable["result"]) +
                           ", io-throughput 0, export-cache " + std::to_string(unencodable["export-cache"]) +
                           "; samples not sent 0"),
              std::string::npos)
        << run.err;

    std::vector<nlohmann::json> lines = ReadSamples(dir.File("samples.ndjson"));
    std::map<uint32_t, std::vector<nlohmann::json>> uploaded = RecordsByTask(lines);
    std::map<uint32_t, int64_t> samples;
    for (const nlohmann::json &line : lines) {
        uint32_t id = line.at("task").get<uint32_t>();
        ++samples[id];
        EXPECT_EQ(line.at("instance").get<uint32_t>(), id % 2 == 0 ? 1u : 2u) << line.dump();
        EXPECT_EQ(line.at("items").get<size_t>(), line.at("records").size()) << line.dump();
        EXPECT_FALSE(line.contains("problem")) << line.dump();
        EXPECT_GT(line.at("timestamp").get<uint64_t>(), 1500000000000u);
    }
    std::map<uint32_t, std::array<int64_t, 4>> rows = ReadTaskStats(dir.File("sim.db"));

    /* Flow sequence numbers count, per cast type, the flow records offered before. */
    std::map<uint64_t, uint32_t> flowSequence;
    uint32_t perCast[2] = {0, 0};
    for (const RecordCase &record : kRecords) {
        if (std::string(record.sensor) == "flow" && !record.shortBody) {
            bool unicast = std::string(record.fields).find("\"cast-type\": 1") != std::string::npos;
            flowSequence[record.key] = perCast[unicast ? 0 : 1]++;
        }
    }

    for (const TaskCase &task : kTasks) {
        SCOPED_TRACE("task " + std::to_string(task.id) + " (" + task.sensor + ")");
        const std::string &keyField = kKeyField.at(task.sensor);
        bool isJson = std::string(task.settings).find("\"json\"") != std::string::npos;
        std::vector<uint64_t> expected;
        int64_t offered = 0;
        int64_t accepted = 0;
        for (const RecordCase &record : kRecords) {
            if (record.sensor != std::string(task.sensor) || record.shortBody) {
                continue;
            }
            ++offered;
            accepted += record.accepted.count(task.id);
            if (record.accepted.count(task.id) && !record.unencodable.count(task.id)) {
                expected.push_back(record.key);
            }
        }
        std::vector<uint64_t> got;
        for (const nlohmann::json &record : uploaded[task.id]) {
            ASSERT_TRUE(record.contains(keyField)) << record.dump();
            got.push_back(Number(record.at(keyField)));
            if (task.sensor == std::string("flow")) {
                EXPECT_EQ(Number(record.at("sequence-number")), flowSequence.at(got.back())) << record.dump();
            }
        }
        EXPECT_EQ(got, expected);
        for (const nlohmann::json &line : lines) {
            if (line.at("task").get<uint32_t>() == task.id) {
                EXPECT_EQ(line.at("sensor").get<std::string>(), task.sensor);
                EXPECT_EQ(line.at("encoding").get<std::string>(), isJson ? "json" : "gpb");
            }
        }
        ASSERT_TRUE(rows.count(task.id)) << "no statistics row";
        EXPECT_EQ(rows[task.id], (std::array<int64_t, 4>{offered, accepted, samples[task.id], 0}));
    }
}

} // namespace
