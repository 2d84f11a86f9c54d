/*
 * Fault sweep: the scenario once clean, to learn how many framework
 * allocations and platform calls it makes, then once per allocation with that
 * allocation failing, and once per platform call with that call failing.
 * Every run must end with nothing left behind and with the failure logged.
 */
#include <gtest/gtest.h>

#include <cstdio>
#include <map>
#include <set>

#include "fake_framework.h"
#include "manual_host.h"
#include "mdtlm_host.h"
#include "mdtlm_vraldcn.h"
#include "scenario.h"

namespace {

const char *const kOpNames[MDTLM_HOST_OP_COUNT] = {
    "COMP_GetVTable", "FWM_QUE_CreateNew", "FWM_QUE_EpollReg", "FWM_QUE_MonitorReg", "FWM_QUE_AsyWrite",
    "FWM_QUE_AsyRead", "FWM_QUE_Destory", "FWM_EPOLL_Create", "FWM_EPOLL_Run", "FWM_EPOLL_Destroy",
    "FWM_TIMER_Create", "FWM_TIMER_Destroy", "PAL_TaskCreate", "PAL_SystimeGet", "PAL_SystimeSecSince1970",
    "FWM_CHAN_UCServer", "FWM_CHAN_UCServerDestory", "db_create", "db_release", "db_set_all_fields",
    "db_set_field", "db_get_all_fields", "db_write_obj", "db_read_obj", "db_update_obj", "db_remove_obj",
    "db_truncate_table", "HPX_PAT_GetC2HActiveFunc", "HPX_PAT_GetC2HDeactiveFunc", "memcpy_s", "memset_s",
    "sprintf_s", "snprintf_s", "vsprintf_s"};

/* The failure lines a fault must produce. `everyRun`: each run with this
 * fault shows a level-2 line holding one of `anyOf`; otherwise (where the
 * plug-in writes no line for some of the calls) at least one run does. Kinds not
 * listed are silent by design: the result is ignored, means "no row", is
 * tried again, or is the log line's own formatting. */
struct Expectation {
    bool everyRun;
    std::vector<std::string> anyOf;
};

const std::map<int, Expectation> kExpected = {
    {-1, {true, {"Alloc", "alloc", "Msg proc failed"}}},
    {MDTLM_HOST_OP_QUE_CREATE, {true, {"Create que failed !"}}},
    {MDTLM_HOST_OP_QUE_EPOLL_REG, {true, {"EpollReg failed"}}},
    {MDTLM_HOST_OP_QUE_MONITOR_REG, {true, {"Flow ctrl reg failed"}}},
    {MDTLM_HOST_OP_QUE_WRITE, {true, {"Write queue fail."}}},
    {MDTLM_HOST_OP_QUE_READ, {false, {"Queue no data."}}},
    {MDTLM_HOST_OP_EPOLL_CREATE, {true, {"Epoll create failed"}}},
    {MDTLM_HOST_OP_TIMER_CREATE, {true, {"create timer failed"}}},
    {MDTLM_HOST_OP_TASK_CREATE, {true, {"TaskCreate failed"}}},
    {MDTLM_HOST_OP_CHAN_SERVER, {true, {"UCServer ret:"}}},
    {MDTLM_HOST_OP_DB_CREATE, {false, {"Create vraldcn_mdtlm_report_perf obj failed", "Write task stat to db failed."}}},
    {MDTLM_HOST_OP_DB_SET_ALL, {false, {"Write task stat to db failed.", "Set vraldcn_mdtlm_report_perf all field failed"}}},
    {MDTLM_HOST_OP_DB_SET_FIELD, {true, {"set vraldcn_mdtlm_report_perf field failed"}}},
    {MDTLM_HOST_OP_DB_WRITE, {false, {"Write task stat to db failed.", "Write db vraldcn_mdtlm_report_perf failed"}}},
    {MDTLM_HOST_OP_DB_UPDATE, {true, {"Update vraldcn_mdtlm_report_perf failed"}}},
    {MDTLM_HOST_OP_HPX_GET_ACTIVE, {true, {"HPX_PAT_GetC2HActiveFunc failed"}}},
    {MDTLM_HOST_OP_MEMCPY_S, {true, {"failed"}}},
    {MDTLM_HOST_OP_SPRINTF_S, {false, {"encode failed", "Format sampleData failed"}}},
};

bool ShowsOneOf(const std::set<std::string> &lines, const std::vector<std::string> &anyOf)
{
    for (const std::string &line : lines) {
        for (const std::string &tag : anyOf) {
            if (line.find(tag) != std::string::npos) {
                return true;
            }
        }
    }
    return false;
}

struct Baseline {
    uint64_t allocations = 0;
    uint64_t calls[MDTLM_HOST_OP_COUNT] = {};
};

/* Level-2 lines of the run, by shape. */
std::set<std::string> FailureLines()
{
    std::set<std::string> lines;
    for (const CapturedLog &log : FakeFramework::Get().Logs()) {
        /* The start notice and the hot-patch notice for a key without patches are level 2 in every run. */
        if (log.level == 2 && log.shape.find("[VRALDCN_Init] start.") == std::string::npos &&
            log.shape.find("No C2H func") == std::string::npos) {
            lines.insert(log.shape);
        }
    }
    return lines;
}

Baseline CleanRun()
{
    Baseline baseline;
    manual_host::Prepare(); /* call counts start again here */
    const uint64_t before = FakeFramework::Get().Allocations();
    EXPECT_EQ(robustness::Run(), 0u);
    baseline.allocations = FakeFramework::Get().Allocations() - before;
    for (int op = 0; op < MDTLM_HOST_OP_COUNT; ++op) {
        baseline.calls[op] = MDTLM_HOST_CallCount(static_cast<MDTLM_HOST_OP>(op));
    }
    EXPECT_EQ(manual_host::Leftovers(), std::vector<std::string>{});
    EXPECT_EQ(FailureLines(), std::set<std::string>{});
    EXPECT_FALSE(FakeFramework::Get().Samples().empty());
    return baseline;
}

} // namespace

/* The sweep of one kind of fault: every framework allocation (kAllocations)
 * or every call of one platform operation. Each kind runs in a process of its
 * own, so a leftover of one kind cannot spoil the runs of another. */
constexpr int kAllocations = -1;

class FaultSweep : public ::testing::TestWithParam<int> {};

/* Runs the scenario with the n-th fault of this kind; false when something
 * was left behind. `logged` tells whether the run showed an expected line. */
bool RunWithFault(int kind, uint64_t n, bool *logged)
{
    manual_host::Prepare();
    if (kind == kAllocations) {
        FakeFramework::Get().FailAlloc(static_cast<uint32_t>(n));
    } else {
        MDTLM_HOST_FaultSet(static_cast<MDTLM_HOST_OP>(kind), static_cast<uint32_t>(n - 1), 1, -1);
    }
    (void)robustness::Run();
    MDTLM_HOST_FaultClear();
    std::vector<std::string> left = manual_host::Leftovers();
    EXPECT_EQ(left, std::vector<std::string>{});
    const std::set<std::string> lines = FailureLines();
    auto expected = kExpected.find(kind);
    *logged = expected != kExpected.end() && ShowsOneOf(lines, expected->second.anyOf);
    if (expected != kExpected.end() && expected->second.everyRun) {
        EXPECT_TRUE(*logged) << ::testing::PrintToString(lines);
    }
    return left.empty();
}

TEST_P(FaultSweep, EveryFaultInTurnLeavesNothingBehind)
{
    const int kind = GetParam();
    const Baseline baseline = CleanRun();
    const uint64_t faults = kind == kAllocations ? baseline.allocations : baseline.calls[kind];
    bool anyLogged = false;
    for (uint64_t n = 1; n <= faults; ++n) {
        SCOPED_TRACE(std::string(kind == kAllocations ? "allocation" : kOpNames[kind]) + " " + std::to_string(n));
        bool logged = false;
        if (!RunWithFault(kind, n, &logged)) {
            break; /* later runs would only count the same leftovers again */
        }
        anyLogged = anyLogged || logged;
    }
    if (kExpected.count(kind) != 0 && faults > 0) {
        EXPECT_TRUE(anyLogged) << "no run showed the failure line";
    }
    RecordProperty("faults", static_cast<int>(faults));
    std::printf("faults injected: %llu\n", static_cast<unsigned long long>(faults));
}

INSTANTIATE_TEST_SUITE_P(Kinds, FaultSweep, ::testing::Range(kAllocations, static_cast<int>(MDTLM_HOST_OP_COUNT)),
                         [](const ::testing::TestParamInfo<int> &info) {
                             return info.param == kAllocations ? std::string("FrameworkAlloc")
                                                               : std::string(kOpNames[info.param]);
                         });
