/*
 * The two forwarding sides: the simulator's generator, whose traffic must be
 * offered to every task without loss and come back decodable, and mdtlm-send,
 * whose batched and repeated datagrams must arrive as records in order.
 */
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <nlohmann/json.hpp>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "sim_runner.h"

namespace {

using Json = nlohmann::json;

const std::string kPlugin = std::string(MDTLM_BUILD_DIR) + "/libmdtlm_vraldcn.so";

std::vector<Json> ReadLines(const std::string &path)
{
    std::vector<Json> lines;
    std::istringstream in(ReadFile(path));
    for (std::string line; std::getline(in, line);) {
        lines.push_back(Json::parse(line));
    }
    return lines;
}

/* Every record of a task, keys spelled with '-', in upload order. */
std::map<uint32_t, std::vector<Json>> RecordsByTask(const std::vector<Json> &lines)
{
    std::map<uint32_t, std::vector<Json>> records;
    for (const Json &line : lines) {
        for (const Json &record : line.at("records")) {
            Json normalised = Json::object();
            for (const auto &[key, value] : record.items()) {
                std::string name = key;
                std::replace(name.begin(), name.end(), '_', '-');
                normalised[name] = value;
            }
            records[line.at("task").get<uint32_t>()].push_back(normalised);
        }
    }
    return records;
}

const char *const kSensors[] = {"flow", "flow-hop", "io-flow", "result", "io-throughput", "export-cache"};

TEST(SimGenerator, TrafficOfEverySensorIsOfferedToEveryTaskAndDecoded)
{
    ScratchDir dir;
    std::string config = "{\"generator\": {\"rate\": 40, \"seed\": 9}, \"tasks\": [\n";
    for (size_t i = 0; i < std::size(kSensors); ++i) {
        config += std::string(i == 0 ? "" : ",\n") + " {\"sensor\": \"" + kSensors[i] + "\", \"task\": " +
                  std::to_string(10 * (i + 1)) + ", \"encoding\": \"gpb\"},\n {\"sensor\": \"" + kSensors[i] +
                  "\", \"task\": " + std::to_string(10 * (i + 1) + 1) + ", \"encoding\": \"json\"}";
    }
    dir.Write("gen.json", config + "\n]}\n");
    SimRun run = RunSimulator(dir, {"--plugin", kPlugin, "--config", "gen.json", "--duration", "2.5", "--port", "0",
                                    "--quiet", "--out", "samples.ndjson", "--proto-dir", MDTLM_PROTO_DIR});
    ASSERT_EQ(run.exitCode, 0) << run.err;
    EXPECT_NE(run.err.find("mdtlm-sim: clean stop"), std::string::npos) << run.err;

    /* Summary rows: sent and offered agree for every task (nothing lost on the way in). */
    std::regex row(R"(\n(\S+) \d+/(\d+)\s+(gpb|json)\s+(\d+)\s+(\d+)\s+(\d+)\s+(\d+))");
    int rows = 0;
    for (std::sregex_iterator it(run.err.begin(), run.err.end(), row), end; it != end; ++it, ++rows) {
        EXPECT_EQ((*it)[4].str(), (*it)[5].str()) << "task " << (*it)[2] << ": sent vs offered\n" << run.err;
        EXPECT_GT(std::stoull((*it)[4].str()), 40u) << "task " << (*it)[2];
    }
    EXPECT_EQ(rows, 12) << run.err;

    std::vector<Json> lines = ReadLines(dir.File("samples.ndjson"));
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

TEST(SendTool, BatchedAndRepeatedRecordsArriveInOrder)
{
    ScratchDir dir;
    dir.Write("tasks.json", R"({"generator": {"rate": 0}, "tasks": [
        {"sensor": "flow", "task": 1, "encoding": "gpb"},
        {"sensor": "export-cache", "task": 2, "encoding": "json"}]})");
    dir.Write("records.json", R"([
        {"sensor": "flow", "timestamp-nanosecond": 1, "address-family": 1, "cast-type": 1},
        {"sensor": "export-cache", "seed": 301, "protocol-id": 6, "recovery-mode": 2, "op-mode": 1},
        {"sensor": "flow", "timestamp-nanosecond": 2, "address-family": 1, "cast-type": 1}])");
    ToolProcess sim(dir, "mdtlm-sim",
                    {"--plugin", kPlugin, "--config", "tasks.json", "--duration", "4", "--port", "0", "--quiet",
                     "--out", "samples.ndjson", "--proto-dir", MDTLM_PROTO_DIR});
    ASSERT_TRUE(sim.WaitForErr("generating 0 records per second", 30)) << sim.ErrSoFar();
    std::smatch port;
    std::string err = sim.ErrSoFar();
    ASSERT_TRUE(std::regex_search(err, port, std::regex(R"(statistics channel on 127\.0\.0\.1:(\d+))"))) << err;

    SimRun send = ToolProcess(dir, "mdtlm-send", {"--port", port[1].str(), "--batch", "2", "--repeat", "3",
                                                  "records.json"})
                      .Wait(30);
    EXPECT_EQ(send.exitCode, 0) << send.err;
    EXPECT_NE(send.err.find("9 messages in 6 datagrams"), std::string::npos) << send.err;

    SimRun run = sim.Wait(60);
    ASSERT_EQ(run.exitCode, 0) << run.err;
    EXPECT_NE(run.err.find("channel: received 9 messages in 6 datagrams"), std::string::npos) << run.err;

    std::map<uint32_t, std::vector<Json>> records = RecordsByTask(ReadLines(dir.File("samples.ndjson")));
    std::vector<uint64_t> flowKeys;
    std::vector<uint64_t> flowSequence;
    for (const Json &record : records[1]) {
        flowKeys.push_back(record.at("timestamp-nanosecond").get<uint64_t>());
        flowSequence.push_back(record.at("sequence-number").get<uint64_t>());
    }
    EXPECT_EQ(flowKeys, (std::vector<uint64_t>{1, 2, 1, 2, 1, 2}));
    EXPECT_EQ(flowSequence, (std::vector<uint64_t>{0, 1, 2, 3, 4, 5}));
    std::vector<uint64_t> cacheSeeds;
    for (const Json &record : records[2]) {
        cacheSeeds.push_back(record.at("seed").get<uint64_t>());
    }
    EXPECT_EQ(cacheSeeds, (std::vector<uint64_t>{301, 301, 301}));
}

} // namespace
