/*
 * The simulator as an operator runs it: a flood stops within its duration and
 * drain, Ctrl-C is answered at once, every sample's data lands in a file that
 * libprotobuf decodes, configurations are checked against what the plug-in
 * can test, and the configuration reference is what the plug-in reports.
 */
#include <gtest/gtest.h>

#include <signal.h>

#include <chrono>
#include <regex>
#include <string>
#include <thread>
#include <vector>

#include "mdtlm_vraldcn.h"
#include "proto_decode.h"
#include "sim_runner.h"

namespace {

using Clock = std::chrono::steady_clock;

double SecondsSince(Clock::time_point start)
{
    return std::chrono::duration<double>(Clock::now() - start).count();
}

std::string Base64Decode(const std::string &text)
{
    static const std::string kDigits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string out;
    uint32_t bits = 0;
    int count = 0;
    for (char c : text) {
        size_t digit = kDigits.find(c);
        if (c == '=' || digit == std::string::npos) {
            break;
        }
        bits = (bits << 6) | static_cast<uint32_t>(digit);
        count += 6;
        if (count >= 8) {
            count -= 8;
            out += static_cast<char>((bits >> count) & 0xFF);
        }
    }
    return out;
}

/* Two sensors at 100,000 records a second each: far more than the plug-in's 2000 a tick. */
const char *const kFlood = R"({"generator": {"rate": 100000, "seed": 5}, "tasks": [
    {"sensor": "flow", "task": 1, "encoding": "gpb"},
    {"sensor": "result", "task": 2, "encoding": "json"}]})";

/* sent, offered, accepted, uploaded of a task's summary row. */
std::vector<uint64_t> TaskRow(const std::string &err, const std::string &label, const std::string &encoding)
{
    std::smatch match;
    std::regex row(label + R"(\s+)" + encoding + R"(\s+(\d+)\s+(\d+)\s+(\d+)\s+(\d+))");
    if (!std::regex_search(err, match, row)) {
        return {};
    }
    return {std::stoull(match[1]), std::stoull(match[2]), std::stoull(match[3]), std::stoull(match[4])};
}

TEST(SimStop, AFloodEndsWithinDurationPlusDrainAndEveryAcceptedRecordIsUploaded)
{
    ScratchDir dir;
    dir.Write("flood.json", kFlood);
    Clock::time_point start = Clock::now();
    SimRun run = ToolProcess(dir, "mdtlm-sim",
                             PluginArgs("flood.json", {"--duration", "2", "--drain", "1", "--log-level", "none"}))
                     .Wait(120);
    double took = SecondsSince(start);
    ASSERT_EQ(run.exitCode, 0) << run.err;
    /* Start-up, 2 s of traffic, 1 s of drain, task deletion and unload (not the ~100 s a full drain takes). */
    EXPECT_LT(took, 2 + 1 + 12.0) << run.err;

    /* The backlog, what a tick takes, and when the simulator gives up; then what is left. */
    const std::string backlog = R"((\d+) queued messages(?: and (\d+) datagrams? not yet received)?)";
    std::smatch match;
    ASSERT_TRUE(std::regex_search(
        run.err, match, std::regex("draining " + backlog + R"(, about (\d+) s at 2000 per tick; stopping after 1 s\n)")))
        << run.err;
    const uint64_t queued = std::stoull(match[1]) + (match[2].matched ? std::stoull(match[2]) : 0);
    EXPECT_EQ(std::stoull(match[3]), (queued + 1999) / 2000);
    ASSERT_TRUE(std::regex_search(run.err, match,
                                  std::regex("stopping with " + backlog + "; unloading the plug-in discards them\n")))
        << run.err;
    EXPECT_LE(std::stoull(match[1]), queued);

    for (const auto &[label, encoding] : {std::pair{"flow 1/1", "gpb"}, std::pair{"result 1/2", "json"}}) {
        std::vector<uint64_t> row = TaskRow(run.err, label, encoding);
        ASSERT_EQ(row.size(), 4u) << label << "\n" << run.err;
        EXPECT_LT(row[1], row[0]) << label << ": the drain was cut short, so not all was offered";
        EXPECT_EQ(row[2], row[1]) << label << ": no conditions, every record offered is accepted";
        EXPECT_EQ(row[3], row[2]) << label << ": every accepted record is uploaded before the unload";
    }
    EXPECT_NE(run.err.find(", 0 outstanding (0 bytes)"), std::string::npos) << run.err;
    EXPECT_NE(run.err.find("mdtlm-sim: clean stop"), std::string::npos) << run.err;
}

TEST(SimStop, CtrlCIsAcknowledgedAtOnceAndASecondOneSkipsTheDrain)
{
    ScratchDir dir;
    dir.Write("flood.json", kFlood);
    ToolProcess sim(dir, "mdtlm-sim", PluginArgs("flood.json", {"--drain", "60", "--log-level", "none"}));
    /* The first status line, then about a second more of flood (a loaded machine may print 2.1s). */
    ASSERT_TRUE(sim.WaitForErr("mdtlm-sim   1.", 60)) << sim.ErrSoFar();
    std::this_thread::sleep_for(std::chrono::seconds(1));

    sim.Signal(SIGINT);
    Clock::time_point first = Clock::now();
    ASSERT_TRUE(sim.WaitForErr("Interrupt: stopping; the plug-in may drain its queue for up to 60 s "
                               "(Ctrl-C again to skip that)",
                               5))
        << sim.ErrSoFar();
    EXPECT_LT(SecondsSince(first), 1.0);
    /* Two seconds of flood leave tens of seconds of work queued. */
    ASSERT_TRUE(sim.WaitForErr(" at 2000 per tick", 30)) << sim.ErrSoFar();

    sim.Signal(SIGINT);
    Clock::time_point second = Clock::now();
    ASSERT_TRUE(sim.WaitForErr("Interrupt again: skipping the drain", 5)) << sim.ErrSoFar();
    EXPECT_LT(SecondsSince(second), 1.0);
    SimRun run = sim.Wait(60);
    EXPECT_LT(SecondsSince(second), 15.0) << run.err;
    ASSERT_EQ(run.exitCode, 0) << run.err;
    EXPECT_NE(run.err.find("; unloading the plug-in discards them"), std::string::npos) << run.err;
    EXPECT_NE(run.err.find("mdtlm-sim: clean stop"), std::string::npos) << run.err;
}

TEST(SimRawSamples, EachSampleIsAFileNamedByOrderSensorAndTaskHoldingTheBytesOfItsOutLine)
{
    ScratchDir dir;
    dir.Write("tasks.json", R"({"tasks": [
        {"sensor": "flow", "instance": 3, "task": 11, "encoding": "gpb"},
        {"sensor": "export-cache", "instance": 3, "task": 12, "encoding": "json"}]})");
    dir.Write("records.json", R"([
        {"sensor": "flow", "flow-id-low": 5, "address-family": 1, "source-ip": "10.0.0.1", "chassis-id": "c1"},
        {"sensor": "export-cache", "seed": 7, "protocol-id": 6, "recovery-mode": 2, "op-mode": 1},
        {"sensor": "flow", "flow-id-low": 6, "address-family": 2, "source-ip": "2001:db8::1"}])");
    SimRun run =
        ToolProcess(dir, "mdtlm-sim", PluginArgs("tasks.json", {"--records", "records.json", "--raw-dir", "raw"}))
            .Wait(60);
    ASSERT_EQ(run.exitCode, 0) << run.err;

    std::vector<nlohmann::json> lines = ReadSamples(dir.File("samples.ndjson"));
    ASSERT_EQ(lines.size(), 2u) << run.err;
    std::regex name(R"((\d{6})-([a-z-]+)-(\d+)-(\d+)\.(gpb|json))");
    for (size_t i = 0; i < lines.size(); ++i) {
        const nlohmann::json &line = lines[i];
        SCOPED_TRACE(line.dump());
        std::smatch parts;
        std::string file = line.at("raw_file").get<std::string>();
        ASSERT_TRUE(std::regex_match(file, parts, name));
        EXPECT_EQ(std::stoul(parts[1]), i + 1);
        EXPECT_EQ(parts[2].str(), line.at("sensor").get<std::string>());
        EXPECT_EQ(parts[3].str(), "3");
        EXPECT_EQ(std::stoul(parts[4]), line.at("task").get<uint32_t>());
        EXPECT_EQ(parts[5].str(), line.at("encoding").get<std::string>());

        std::string bytes = ReadFile(dir.File("raw/" + file));
        EXPECT_EQ(bytes.size(), line.at("data_len").get<size_t>());
        EXPECT_EQ(Base64Decode(line.at("data").get<std::string>()), bytes);
        if (parts[5] == "gpb") {
            std::string error;
            std::unique_ptr<google::protobuf::Message> sample =
                DecodeSample("flow_statistics.proto", "mdtlm.flow.Sample", bytes, &error);
            ASSERT_NE(sample, nullptr) << error;
            std::vector<const google::protobuf::Message *> records = SampleRecords(*sample);
            ASSERT_EQ(records.size(), 2u);
            EXPECT_EQ(U(*records[0], "flow_id"), 5u);
            EXPECT_EQ(S(*records[0], "source_ip"), "10.0.0.1");
            EXPECT_EQ(S(*records[0], "chassis_id"), "c1");
            EXPECT_EQ(U(*records[1], "flow_id"), 6u);
            EXPECT_EQ(S(*records[1], "source_ip"), "2001:db8:0:0:0:0:0:1");
        } else {
            nlohmann::json sample = nlohmann::json::parse(bytes);
            EXPECT_EQ(sample.at("export-flow-caches").at("export-flow-cache").size(), 1u);
        }
    }
}

TEST(SimConfigCheck, AnIpv6ConditionValueIsRewrittenToTheFormThePluginComparesAndThenMatches)
{
    ScratchDir dir;
    dir.Write("tasks.json", R"({"tasks": [
        {"sensor": "io-flow", "task": 31, "encoding": "json", "conditions": [
          {"name": "source-ip", "value": "2001:DB8::1"}]},
        {"sensor": "io-throughput", "task": 51, "encoding": "json", "conditions": [
          {"name": "destination-ip", "value": "2001:db8:0:0:0:0:0:2"}]}]})");
    dir.Write("records.json", R"([
        {"sensor": "io-flow", "address-family": 1, "source-ip": "2001:db8::1", "sequence-number": 1},
        {"sensor": "io-flow", "address-family": 1, "source-ip": "2001:db8::3", "sequence-number": 2},
        {"sensor": "io-throughput", "address-family": 1, "destination-ip": "2001:db8::2", "sequence-number": 3}])");
    SimRun run = ToolProcess(dir, "mdtlm-sim", PluginArgs("tasks.json", {"--records", "records.json"})).Wait(60);
    ASSERT_EQ(run.exitCode, 0) << run.err;
    EXPECT_NE(run.err.find("mdtlm-sim: tasks.json:3: tasks[0].conditions[0].value: note: \"2001:DB8::1\" rewritten "
                           "as \"2001:db8:0:0:0:0:0:1\", the form the plug-in compares"),
              std::string::npos)
        << run.err;
    /* A value already in that form is taken as it is. */
    EXPECT_EQ(run.err.find("tasks[1].conditions[0].value: note"), std::string::npos) << run.err;

    std::map<uint32_t, std::vector<nlohmann::json>> records = RecordsByTask(ReadSamples(dir.File("samples.ndjson")));
    ASSERT_EQ(records[31].size(), 1u) << run.err;
    EXPECT_EQ(records[31][0].at("sequence-number"), 1);
    ASSERT_EQ(records[51].size(), 1u) << run.err;
    EXPECT_EQ(records[51][0].at("sequence-number"), 3);
}

/* The reference as the simulator prints it from the plug-in (whole, or for one sensor). */
std::string ListFields(const std::string &sensor)
{
    ScratchDir dir;
    std::vector<std::string> args = {"--plugin", std::string(MDTLM_BUILD_DIR) + "/libmdtlm_vraldcn.so",
                                     "--list-fields"};
    if (!sensor.empty()) {
        args.push_back(sensor);
    }
    SimRun run = ToolProcess(dir, "mdtlm-sim", args).Wait(30);
    EXPECT_EQ(run.exitCode, 0) << run.err;
    return ReadFile(dir.File("mdtlm-sim.stdout"));
}

TEST(ConfigurationReference, TheCommittedFileIsWhatTheSimulatorPrints)
{
    std::string committed = ReadFile(std::string(MDTLM_SOURCE_DIR) + "/docs/configuration.md");
    ASSERT_FALSE(committed.empty());
    EXPECT_EQ(ListFields(""), committed)
        << "docs/configuration.md is out of date: build/tools/mdtlm-sim --list-fields > docs/configuration.md";
}

TEST(ConfigurationReference, EachSensorsPartListsEveryNameOfThePluginsMapsAndItsFamilyCodes)
{
    std::string whole = ListFields("");
    for (const MDTLM_FIELD_CATALOGUE_ENTRY &row : g_mdtlmFieldCatalogue) {
        SCOPED_TRACE("sensor type " + std::to_string(row.sensorType));
        std::string part = ListFields(std::to_string(row.sensorType));
        EXPECT_NE(whole.find(part), std::string::npos);
        size_t filters = part.find("\nFilters");
        ASSERT_NE(filters, std::string::npos) << part;
        for (uint32_t i = 0; i < row.condRows; ++i) {
            size_t at = part.find(std::string("| `") + row.condMap[i].fieldName + "`");
            EXPECT_LT(at, filters) << row.condMap[i].fieldName << "\n" << part;
        }
        for (uint32_t i = 0; i < row.filterRows; ++i) {
            size_t at = part.find(std::string("| `") + row.filterMap[i].fieldName + "`", filters);
            EXPECT_NE(at, std::string::npos) << row.filterMap[i].fieldName << "\n" << part;
        }
        if (row.familyIpv4 != MDTLM_NO_ADDRESS_FAMILY) {
            EXPECT_NE(part.find(": " + std::to_string(row.familyIpv4) + " IPv4, " + std::to_string(row.familyIpv6) +
                                " IPv6;"),
                      std::string::npos)
                << part;
        }
    }
}

} // namespace
