/*
 * The two forwarding sides: the simulator's generator must lose nothing and its
 * samples must decode; mdtlm-send's batched, repeated datagrams must arrive as
 * records in order; and an interrupted simulator must still stop cleanly.
 */
#include <gtest/gtest.h>

#include <signal.h>

#include <algorithm>
#include <regex>
#include <set>
#include <utility>
#include <string>
#include <vector>

#include "sim_runner.h"

namespace {

using Json = nlohmann::json;

TEST(SimGenerator, TrafficOfEverySensorIsOfferedToEveryTaskAndDecoded)
{
    const char *const sensors[] = {"flow", "flow-hop", "io-flow", "result", "io-throughput", "export-cache"};
    std::string config = "{\"generator\": {\"rate\": 40, \"seed\": 9}, \"tasks\": [\n";
    for (size_t i = 0; i < std::size(sensors); ++i) {
        for (const char *encoding : {"gpb", "json"}) {
            config += std::string(config.back() == '\n' ? "" : ",\n") + "{\"sensor\": \"" + sensors[i] +
                      "\", \"task\": " + std::to_string(10 * (i + 1) + (encoding[0] == 'j')) +
                      ", \"encoding\": \"" + encoding + "\"}";
        }
    }
    ScratchDir dir;
    dir.Write("gen.json", config + "\n]}\n");
    SimRun run = ToolProcess(dir, "mdtlm-sim", PluginArgs("gen.json", {"--duration", "2.5"})).Wait(90);
    ASSERT_EQ(run.exitCode, 0) << run.err;
    EXPECT_NE(run.err.find("mdtlm-sim: clean stop"), std::string::npos) << run.err;

    /* Summary rows: sent and offered agree for every task (nothing lost on the way in); without an
     * invalid share every record is valid, so all accepted are uploaded and nothing fails to encode. */
    std::regex row(R"(\n(\S+) \d+/(\d+)\s+(gpb|json)\s+(\d+)\s+(\d+)\s+(\d+)\s+(\d+))");
    int rows = 0;
    for (std::sregex_iterator it(run.err.begin(), run.err.end(), row), end; it != end; ++it, ++rows) {
        EXPECT_EQ((*it)[4].str(), (*it)[5].str()) << "task " << (*it)[2] << ": sent vs offered\n" << run.err;
        EXPECT_EQ((*it)[6].str(), (*it)[7].str()) << "task " << (*it)[2] << ": accepted vs uploaded\n" << run.err;
        EXPECT_GT(std::stoull((*it)[4].str()), 40u) << "task " << (*it)[2];
    }
    EXPECT_EQ(rows, 12) << run.err;
    EXPECT_NE(run.err.find("encode failures logged: 0\n"), std::string::npos) << run.err;
    std::regex failureLine(R"(plug-in failure: [^\n]*)");
    std::vector<std::string> failureLines;
    for (std::sregex_iterator it(run.err.begin(), run.err.end(), failureLine), end; it != end; ++it) {
        failureLines.push_back(it->str());
    }
    ASSERT_EQ(failureLines.size(), 1u) << run.err;
    EXPECT_NE(failureLines[0].find("No C2H func"), std::string::npos) << "hot-patch start-up line expected";

    std::vector<Json> lines = ReadSamples(dir.File("samples.ndjson"));
    std::set<uint32_t> tasksSeen;
    for (const Json &line : lines) {
        EXPECT_FALSE(line.contains("problem")) << line.dump();
        EXPECT_EQ(line.at("items").get<size_t>(), line.at("records").size()) << line.dump();
        tasksSeen.insert(line.at("task").get<uint32_t>());
    }
    EXPECT_EQ(tasksSeen.size(), 12u);

    /* The flow records vary as a forwarding side's would. */
    std::set<uint64_t> families;
    std::set<uint64_t> tunnelModes;
    uint64_t largest = 0;
    std::map<uint32_t, std::vector<Json>> records = RecordsByTask(lines);
    for (const Json &record : records[10]) {
        families.insert(record.at("address-family").get<uint64_t>());
        tunnelModes.insert(record.at("tunnel-mode").get<uint64_t>());
        largest = std::max(largest, record.at("byte-count").get<uint64_t>());
    }
    EXPECT_EQ(families, (std::set<uint64_t>{0, 1}));
    EXPECT_TRUE(tunnelModes.count(1) && (tunnelModes.count(3) || tunnelModes.count(4)));
    EXPECT_GT(largest, uint64_t{1} << 32);
}

TEST(SimGenerator, InvalidRecordsComeOnlyWithAnInvalidShare)
{
    ScratchDir dir;
    dir.Write("gen.json", R"({"generator": {"rate": 50, "seed": 4, "invalid-share": 0.5}, "tasks": [
        {"sensor": "flow", "task": 1, "encoding": "gpb"}, {"sensor": "flow", "task": 2, "encoding": "json"}]})");
    SimRun run =
        ToolProcess(dir, "mdtlm-sim", PluginArgs("gen.json", {"--duration", "2", "--log-level", "failures"})).Wait(90);
    ASSERT_EQ(run.exitCode, 0) << run.err;
    std::smatch failures;
    ASSERT_TRUE(std::regex_search(run.err, failures, std::regex(R"(encode failures logged: (\d+)\n)"))) << run.err;
    EXPECT_GT(std::stoull(failures[1]), 0u);
    EXPECT_NE(run.err.find("Stats data encode failed"), std::string::npos) << run.err;
    EXPECT_NE(run.err.find("accepted but not uploaded"), std::string::npos) << run.err;
}

TEST(SendTool, BatchedRecordsArriveInOrderAndAnInterruptStopsCleanly)
{
    ScratchDir dir;
    dir.Write("tasks.json", R"({"generator": {"rate": 0}, "tasks": [
        {"sensor": "flow", "task": 1, "encoding": "gpb"},
        {"sensor": "export-cache", "task": 2, "encoding": "json"}]})");
    dir.Write("records.json", R"([
        {"sensor": "flow", "timestamp-nanosecond": 1, "address-family": 1, "cast-type": 1},
        {"sensor": "export-cache", "seed": 301, "protocol-id": 6, "recovery-mode": 2, "op-mode": 1},
        {"sensor": "flow", "timestamp-nanosecond": 2, "address-family": 1, "cast-type": 1}])");
    /* Every plug-in line is shown, the task deletions' success lines included. */
    ToolProcess sim(dir, "mdtlm-sim", PluginArgs("tasks.json", {"--log-level", "all"}));
    ASSERT_TRUE(sim.WaitForErr("generating 0 records per second", 30)) << sim.ErrSoFar();
    std::smatch port;
    std::string err = sim.ErrSoFar();
    ASSERT_TRUE(std::regex_search(err, port, std::regex(R"(statistics channel on 127\.0\.0\.1:(\d+))"))) << err;

    SimRun send = ToolProcess(dir, "mdtlm-send", {"--port", port[1].str(), "--batch", "2", "--repeat", "3",
                                                  "records.json"})
                      .Wait(30);
    EXPECT_EQ(send.exitCode, 0) << send.err;
    EXPECT_NE(send.err.find("9 messages in 6 datagrams"), std::string::npos) << send.err;
    /* Stop with the tasks still subscribed, once every record has been uploaded. */
    ASSERT_TRUE(sim.WaitForErr("(9 records)", 30)) << sim.ErrSoFar();
    sim.Signal(SIGINT);
    SimRun run = sim.Wait(60);

    ASSERT_EQ(run.exitCode, 0) << run.err;
    EXPECT_NE(run.err.find("channel: received 9 messages in 6 datagrams"), std::string::npos) << run.err;
    EXPECT_NE(run.err.find("stopping"), std::string::npos) << run.err;
    for (const char *task : {"[1]", "[2]"}) {
        EXPECT_NE(run.err.find(std::string("Delete telemetry task") + task + " success"), std::string::npos)
            << task << "\n" << run.err;
    }
    EXPECT_NE(run.err.find(", 0 outstanding (0 bytes)"), std::string::npos) << run.err;
    EXPECT_NE(run.err.find("mdtlm-sim: clean stop"), std::string::npos) << run.err;

    std::map<uint32_t, std::vector<Json>> records = RecordsByTask(ReadSamples(dir.File("samples.ndjson")));
    std::vector<std::pair<uint64_t, uint64_t>> flows; /* record key, sequence number */
    for (const Json &record : records[1]) {
        flows.emplace_back(record.at("timestamp-nanosecond").get<uint64_t>(),
                           record.at("sequence-number").get<uint64_t>());
    }
    EXPECT_EQ(flows, (std::vector<std::pair<uint64_t, uint64_t>>{{1, 0}, {2, 1}, {1, 2}, {2, 3}, {1, 4}, {2, 5}}));
    std::vector<uint64_t> cacheSeeds;
    for (const Json &record : records[2]) {
        cacheSeeds.push_back(record.at("seed").get<uint64_t>());
    }
    EXPECT_EQ(cacheSeeds, (std::vector<uint64_t>{301, 301, 301}));
}

} // namespace
