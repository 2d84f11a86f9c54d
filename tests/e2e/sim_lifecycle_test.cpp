/*
 * Starting and stopping the simulator: a signal stops it cleanly at any time,
 * and a statistics port that is taken is reported before anything starts.
 */
#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <signal.h>
#include <sys/socket.h>
#include <unistd.h>

#include <fstream>
#include <ostream>
#include <string>

#include "sim_runner.h"

namespace {

const std::string kPlugin = std::string(MDTLM_BUILD_DIR) + "/libmdtlm_vraldcn.so";
constexpr const char *kConfig = R"({"generator": {"rate": 50, "seed": 4}, "tasks": [
    {"sensor": "flow", "task": 1, "encoding": "json"},
    {"sensor": "export-cache", "task": 2, "encoding": "gpb"},
    {"sensor": "result", "task": 3, "encoding": "json"}]})";

struct StopSignal {
    const char *name;
    int signal;
};

/* Test names show the case's name instead of its bytes. */
void PrintTo(const StopSignal &item, std::ostream *out)
{
    *out << item.name;
}

class SimStopsOnSignal : public testing::TestWithParam<StopSignal> {};

TEST_P(SimStopsOnSignal, DeletesTasksUnloadsAndReturnsEveryBuffer)
{
    ScratchDir dir;
    dir.Write("tasks.json", kConfig);
    ToolProcess sim(dir, "mdtlm-sim",
                    {"--plugin", kPlugin, "--config", "tasks.json", "--port", "0", "--quiet", "--out",
                     "samples.ndjson", "--proto-dir", MDTLM_PROTO_DIR});
    /* Let traffic flow through at least one tick before stopping. */
    ASSERT_TRUE(sim.WaitForErr("mdtlm-sim   2.0s", 30)) << sim.ErrSoFar();
    sim.Signal(GetParam().signal);
    SimRun run = sim.Wait(60);

    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_NE(run.err.find("stopping"), std::string::npos) << run.err;
    for (const char *task : {"[1]", "[2]", "[3]"}) {
        EXPECT_NE(run.err.find(std::string("Delete telemetry task") + task + " success"), std::string::npos)
            << task << "\n" << run.err;
    }
    EXPECT_NE(run.err.find(", 0 outstanding (0 bytes)"), std::string::npos) << run.err;
    EXPECT_NE(run.err.find("mdtlm-sim: clean stop"), std::string::npos) << run.err;
    EXPECT_FALSE(ReadFile(dir.File("samples.ndjson")).empty());
}

INSTANTIATE_TEST_SUITE_P(Signals, SimStopsOnSignal,
                         testing::Values(StopSignal{"Interrupt", SIGINT}, StopSignal{"Terminate", SIGTERM}),
                         [](const testing::TestParamInfo<StopSignal> &info) { return std::string(info.param.name); });

TEST(SimPort, TakenPortIsReportedBeforeAnythingStarts)
{
    int holder = socket(AF_INET, SOCK_DGRAM, 0);
    ASSERT_GE(holder, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    ASSERT_EQ(bind(holder, reinterpret_cast<sockaddr *>(&address), sizeof address), 0);
    socklen_t length = sizeof address;
    getsockname(holder, reinterpret_cast<sockaddr *>(&address), &length);
    std::string port = std::to_string(ntohs(address.sin_port));

    ScratchDir dir;
    dir.Write("tasks.json", kConfig);
    SimRun run = RunSimulator(dir, {"--plugin", kPlugin, "--config", "tasks.json", "--port", port});
    close(holder);

    EXPECT_EQ(run.exitCode, 1) << run.err;
    EXPECT_NE(run.err.find("cannot bind the statistics channel to 127.0.0.1:" + port + ": Address already in use"),
              std::string::npos)
        << run.err;
    EXPECT_NE(run.err.find("--port 0"), std::string::npos) << run.err;
    EXPECT_EQ(run.err.find("plug-in"), std::string::npos) << run.err;
    EXPECT_FALSE(std::ifstream(dir.File("mdtlm-sim.db")).good());
}

} // namespace
