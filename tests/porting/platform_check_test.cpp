/*
 * mdtlm-platform-check against the host platform (every rule holds) and
 * against a test double with one rule broken at a time (exactly the rules
 * that breakage violates fail, by name, and the exit status is 1).
 */
#include <sys/wait.h>

#include <cstdio>
#include <set>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

namespace {

struct CheckRun {
    int status = -1;
    std::string output;
    std::set<std::string> failed; /* rule names on "FAIL" lines */
};

CheckRun RunCheck(const std::string &environment, const std::string &arguments)
{
    std::string command = environment + " " MDTLM_PLATFORM_CHECK " " + arguments + " 2>&1";
    CheckRun run;
    FILE *pipe = popen(command.c_str(), "r");
    if (pipe == nullptr) {
        return run;
    }
    char buffer[4096];
    size_t n;
    while ((n = fread(buffer, 1, sizeof(buffer), pipe)) > 0) {
        run.output.append(buffer, n);
    }
    int status = pclose(pipe);
    run.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    std::istringstream lines(run.output);
    std::string line;
    while (std::getline(lines, line)) {
        std::istringstream words(line);
        std::string verdict, name;
        words >> verdict >> name;
        if (verdict == "FAIL") {
            run.failed.insert(name);
        }
    }
    return run;
}

TEST(PlatformCheck, HostPlatformHoldsEveryRule)
{
    CheckRun run = RunCheck("", MDTLM_HOST_PLATFORM);
    EXPECT_EQ(run.status, 0) << run.output;
    EXPECT_TRUE(run.failed.empty()) << run.output;
    EXPECT_NE(run.output.find("rules checked, all hold"), std::string::npos) << run.output;
}

TEST(PlatformCheck, DoubleWithNothingBrokenHolds)
{
    CheckRun run = RunCheck("MDTLM_BROKEN_RULE=", MDTLM_BROKEN_PLATFORM);
    EXPECT_EQ(run.status, 0) << run.output;
}

struct Breakage {
    const char *breakage;
    const char *only; /* the area to run, to keep the run short */
    std::set<std::string> failing;
    const char *finding; /* a text the findings must contain */
};

void PrintTo(const Breakage &b, std::ostream *out)
{
    *out << b.breakage;
}

class BrokenPlatform : public ::testing::TestWithParam<Breakage> {};

TEST_P(BrokenPlatform, NamesTheBrokenRule)
{
    const Breakage &b = GetParam();
    CheckRun run = RunCheck(std::string("MDTLM_BROKEN_RULE=") + b.breakage,
                            std::string("--only ") + b.only + " " MDTLM_BROKEN_PLATFORM);
    EXPECT_EQ(run.status, 1) << run.output;
    EXPECT_EQ(run.failed, b.failing) << run.output;
    std::string summary = run.output.substr(run.output.rfind(" broken: ") + 1);
    for (const std::string &rule : b.failing) {
        EXPECT_NE(run.output.find("      " + rule + ": "), std::string::npos) << "no finding of " << rule;
        EXPECT_NE(summary.find(rule), std::string::npos) << "the summary does not name " << rule;
    }
    EXPECT_NE(run.output.find(b.finding), std::string::npos) << run.output;
}

INSTANTIATE_TEST_SUITE_P(
    OneRuleEach, BrokenPlatform,
    ::testing::Values(
        Breakage{"full-write-counts", "queue", {"queue.depth"}, "returned 17, not 16"},
        Breakage{"no-flow-events", "queue", {"queue.flow-control"}, "left the events [], expected [0]"},
        Breakage{"split-batches", "channel", {"channel.batch"}, "one datagram of three messages"},
        Breakage{"late-timer", "timer", {"timer.destroy"}, "after FWM_TIMER_Destroy returned"},
        Breakage{"loop-keeps-running", "epoll", {"epoll.destroy"}, "did not return within 2 s"},
        Breakage{"phantom-rows", "db", {"db.read-missing", "db.remove", "db.truncate"}, "never written"},
        Breakage{"hotpatch-fails-unknown", "hotpatch", {"hotpatch.unknown-key", "hotpatch.own-keys"},
                 "returned 2, not 1"},
        Breakage{"exact-fit-truncates", "bounds", {"bounds.sprintf_s"}, "into 4 bytes returned 3"}),
    [](const ::testing::TestParamInfo<Breakage> &info) {
        std::string name = info.param.breakage;
        for (char &c : name) {
            c = c == '-' ? '_' : c;
        }
        return name;
    });

TEST(PlatformCheck, LibraryWithoutTheServicesIsRefusedWithTheMissingNames)
{
    CheckRun run = RunCheck("", MDTLM_EMPTY_LIBRARY);
    EXPECT_EQ(run.status, 2) << run.output;
    for (const char *name : {"does not define", " FWM_QUE_CreateNew", " db_truncate_table", " vsprintf_s"}) {
        EXPECT_NE(run.output.find(name), std::string::npos) << name << "\n" << run.output;
    }
}

TEST(PlatformCheck, LibraryThatCannotLoadIsRefused)
{
    /* The plug-in leaves every platform service to its host process. */
    CheckRun run = RunCheck("", MDTLM_PLUGIN);
    EXPECT_EQ(run.status, 2) << run.output;
    EXPECT_NE(run.output.find("undefined symbol"), std::string::npos) << run.output;
}

TEST(PlatformCheck, MissingLibraryIsAUsageError)
{
    CheckRun run = RunCheck("", "/nonexistent/libplatform.so");
    EXPECT_EQ(run.status, 2) << run.output;
    EXPECT_NE(run.output.find("/nonexistent/libplatform.so"), std::string::npos) << run.output;
}

} // namespace
