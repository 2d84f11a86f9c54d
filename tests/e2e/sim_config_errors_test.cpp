/*
 * A malformed simulator configuration is refused before anything starts:
 * exit code 2 and one message naming the file, the line and the field.
 */
#include <gtest/gtest.h>

#include <fstream>
#include <ostream>
#include <string>

#include "sim_runner.h"

namespace {

std::string Conditions(int count)
{
    std::string list;
    for (int i = 0; i < count; ++i) {
        list += (i == 0 ? "" : ", ") + std::string("{\"name\": \"flow-id\", \"value\": \"") + std::to_string(i) +
                "\"}";
    }
    return list;
}

struct BadConfig {
    const char *name;
    std::string text;
    int line;
    const char *field;   /* as the message names it; empty for syntax errors */
    const char *because; /* a piece of the explanation */
};

/* Test names show the case's name instead of its bytes. */
void PrintTo(const BadConfig &item, std::ostream *out)
{
    *out << item.name;
}

const BadConfig kBadConfigs[] = {
    {"UnknownOperator",
     "{\"tasks\": [\n {\"sensor\": \"flow\", \"task\": 1,\n  \"filters\": [{\"name\": \"byte-count\",\n"
     "    \"operator\": \"ne\", \"threshold\": 5}]}]}\n",
     4, "tasks[0].filters[0].operator", "unknown operator \"ne\""},
    {"TooManyConditions",
     "{\"tasks\": [\n {\"sensor\": \"flow\", \"task\": 1,\n  \"conditions\": [" + Conditions(33) + "]}]}\n", 3,
     "tasks[0].conditions", "33 conditions given, at most 32"},
    {"TooManyFilters",
     "{\"tasks\": [\n {\"sensor\": \"flow\", \"task\": 1,\n"
     "  \"filters\": [{\"name\": \"vlan\", \"operator\": \"eq\", \"threshold\": 1},\n"
     "               {\"name\": \"vlan\", \"operator\": \"eq\", \"threshold\": 2},\n"
     "               {\"name\": \"vlan\", \"operator\": \"eq\", \"threshold\": 3}]}]}\n",
     3, "tasks[0].filters", "3 filters given, at most 2"},
    {"UnknownSensorPath",
     "{\"tasks\": [\n {\"task\": 1,\n  \"sensor\": \"dravik-vral:vral/no-such-statistics\"}]}\n", 3,
     "tasks[0].sensor", "unknown sensor"},
    {"ValueTextTooLong",
     "{\"tasks\": [\n {\"sensor\": \"export-cache\", \"task\": 1, \"conditions\": [\n"
     "  {\"name\": \"source-ip\",\n   \"value\": \"0123456789012345678901234567890123\"}]}]}\n",
     4, "tasks[0].conditions[0].value", "34 characters, at most 33"},
    {"ConditionNameTooLong",
     "{\"tasks\": [\n {\"sensor\": \"flow\", \"task\": 1, \"conditions\": [\n  {\"value\": \"1\",\n   \"name\": \"" +
         std::string(68, 'n') + "\"}]}]}\n",
     4, "tasks[0].conditions[0].name", "68 characters, at most 67"},
    {"FilterNameTooLong",
     "{\"tasks\": [\n {\"sensor\": \"flow\", \"task\": 1, \"filters\": [\n  {\"operator\": \"eq\", \"threshold\": 1,\n"
     "   \"name\": \"" + std::string(64, 'f') + "\"}]}]}\n",
     4, "tasks[0].filters[0].name", "64 characters, at most 63"},
    {"TaskIdAboveU32", "{\"tasks\": [\n {\"sensor\": \"result\",\n  \"task\": 4294967296}]}\n", 3, "tasks[0].task",
     "out of range"},
    {"InstanceNegative", "{\"tasks\": [\n {\"sensor\": \"result\", \"task\": 1,\n  \"instance\": -1}]}\n", 3,
     "tasks[0].instance", "must not be negative"},
    {"ThresholdAboveU64",
     "{\"tasks\": [\n {\"sensor\": \"flow\", \"task\": 1, \"filters\": [{\"name\": \"byte-count\", \"operator\": "
     "\"gt\",\n   \"threshold\": 18446744073709551616}]}]}\n",
     3, "tasks[0].filters[0].threshold", "whole number"},
    {"UnknownEncoding", "{\"tasks\": [\n {\"sensor\": \"flow\", \"task\": 1,\n  \"encoding\": \"xml\"}]}\n", 3,
     "tasks[0].encoding", "unknown encoding"},
    {"UnknownFilterLogic", "{\"tasks\": [\n {\"sensor\": \"flow\", \"task\": 1,\n  \"filter-logic\": \"xor\"}]}\n",
     3, "tasks[0].filter-logic", "unknown filter logic"},
    {"MisspelledSetting", "{\"tasks\": [\n {\"sensor\": \"flow\", \"task\": 1,\n  \"sample_interval\": 1000}]}\n",
     3, "tasks[0].sample_interval", "unknown setting"},
    {"MissingTaskId", "{\"tasks\": [\n {\"sensor\": \"flow\"},\n {\"sensor\": \"flow\", \"task\": 2}]}\n", 2,
     "tasks[0]", "missing \"task\""},
    {"SamePairTwice",
     "{\"tasks\": [\n {\"sensor\": \"flow\", \"task\": 7},\n {\"sensor\": \"result\",\n  \"task\": 7}]}\n", 4,
     "tasks[1].task", "already used by tasks[0]"},
    {"NegativeRate", "{\"generator\": {\n  \"rate\": -3},\n \"tasks\": [{\"sensor\": \"flow\", \"task\": 1}]}\n", 2,
     "generator.rate", "records per second"},
    {"SyntaxError", "{\"tasks\": [\n {\"sensor\": \"flow\", \"task\": 1,}\n]}\n", 2, "", "syntax error"},
};

class SimConfigErrors : public testing::TestWithParam<BadConfig> {};

TEST_P(SimConfigErrors, ExitTwoNamingFileLineAndField)
{
    const BadConfig &bad = GetParam();
    ScratchDir dir;
    dir.Write("cfg.json", bad.text);
    SimRun run = RunSimulator(dir, {"--config", "cfg.json", "--port", "0", "--duration", "1"});

    EXPECT_EQ(run.exitCode, 2) << run.err;
    std::string where = "cfg.json:" + std::to_string(bad.line) + ":";
    EXPECT_NE(run.err.find(where + (bad.field[0] != '\0' ? " " + std::string(bad.field) + ":" : "")),
              std::string::npos)
        << "expected \"" << where << " " << bad.field << "\" in:\n"
        << run.err;
    EXPECT_NE(run.err.find(bad.because), std::string::npos) << run.err;
    /* Refused before the plug-in was loaded: nothing was started, no database was made. */
    EXPECT_EQ(run.err.find("plug-in"), std::string::npos) << run.err;
    EXPECT_FALSE(std::ifstream(dir.File("mdtlm-sim.db")).good());
}

INSTANTIATE_TEST_SUITE_P(Table, SimConfigErrors, testing::ValuesIn(kBadConfigs),
                         [](const testing::TestParamInfo<BadConfig> &info) { return std::string(info.param.name); });

} // namespace
