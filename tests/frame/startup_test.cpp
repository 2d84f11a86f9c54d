/* Start-up order, and for each failing step its lines, result and releases. */
#include "frame_fixture.h"

namespace {

using FrameTest = PluginTest;

const char kTaskLine[] = "<task created>"; /* the line naming the worker's task id */
const char kNoC2H[] = "[PATCH][FWM_MDTLM_VRALDCN]No C2H func";

std::string TaskLine()
{
    return "[VRALDCN_THREAD_CreateStatsTask] Create task success, taskId: " +
           std::to_string(g_mdtlmVralDcnStatsTaskId) + ".";
}

struct FailureCase {
    const char *name;
    void (*arrange)();
    uint32_t result;
    std::vector<std::string> lines;
    bool eventQueueLeft;
    uint64_t queueDestroys, epollDestroys;
};

void Fault(MDTLM_HOST_OP op, uint32_t skip, int64_t result) { MDTLM_HOST_FaultSet(op, skip, 1, result); }

const std::vector<FailureCase> kFailures = {
    {"binding", [] { FakeFramework::Get().Uninstall(); }, 1, {}, false, 0, 0},
    {"slot3null", [] { FakeFramework::Get().table.RegXpath = nullptr; }, 1,
     {"[VRALDCN_Init]  register simple xpath failed, ret: 1."}, false, 0, 0},
    {"epoll", [] { Fault(MDTLM_HOST_OP_EPOLL_CREATE, 0, -5); }, 1,
     {"[VRALDCN_THREAD_InitEpoll] Epoll create failed, epollFd: -5.",
      "[VRALDCN_THREAD_Init] Create Epoll failed. ret: 1.", "[VRALDCN_Init] thread init failed, ret: 1."},
     false, 0, 0},
    {"thread", [] { Fault(MDTLM_HOST_OP_TASK_CREATE, 0, 7); }, 1,
     {"[VRALDCN_THREAD_CreateStatsTask] TaskCreate failed. ret: 7.",
      "[VRALDCN_THREAD_Init] Create stats task failed. ret: 1.", "[VRALDCN_Init] thread init failed, ret: 1."},
     false, 0, 1},
    {"eventCreate", [] { Fault(MDTLM_HOST_OP_QUE_CREATE, 0, 0); }, 1,
     {kTaskLine, "Create que failed !", "[VRALDCN_Init] Event init failed, ret: 1."}, false, 0, 1},
    {"eventEpollReg", [] { Fault(MDTLM_HOST_OP_QUE_EPOLL_REG, 0, 9); }, 9,
     {kTaskLine, "[VRALDCN_EVENT_Init] EpollReg failed, ret: 9.", "[VRALDCN_Init] Event init failed, ret: 9."},
     false, 1, 1},
    {"eventFlowCtrlReg", [] { Fault(MDTLM_HOST_OP_QUE_MONITOR_REG, 0, 11); }, 11,
     {kTaskLine, "[VRALDCN_EVENT_Init] Flow ctrl reg failed, ret: 11.", "[VRALDCN_Init] Event init failed, ret: 11."},
     false, 1, 1},
    {"statsQueueCreate", [] { Fault(MDTLM_HOST_OP_QUE_CREATE, 1, 0); }, 1,
     {kTaskLine, "[VRALDCN_EVENT_Init] success.", "[NTVVRALDCN_STATS_QUE_Create] Create que failed !",
      "[VRALDCN_STATS_Init]  Create stats queue failed, ret: 1.", "[VRALDCN_Init] stats init failed, ret: 1."},
     true, 0, 1},
    {"statsFlowCtrlReg", [] { Fault(MDTLM_HOST_OP_QUE_MONITOR_REG, 1, 13); }, 1,
     {kTaskLine, "[VRALDCN_EVENT_Init] success.", "[NTVVRALDCN_STATS_QUE_Create] Flow ctrl reg failed, ret: 13.",
      "[VRALDCN_STATS_Init]  Create stats queue failed, ret: 13.", "[VRALDCN_Init] stats init failed, ret: 1."},
     true, 1, 1},
    {"ipcServer", [] { Fault(MDTLM_HOST_OP_CHAN_SERVER, 0, 4); }, 1,
     {kTaskLine, "[VRALDCN_EVENT_Init] success.", "[NTVVRALDCN_STATS_QUE_Create] success.",
      "[NTVVRALDCN_STATS_IPC_InitServer] UCServer ret: 4.",
      "[NTVVRALDCN_STATS_IPC_Init] IPC_InitSocket failed, ret: 1.",
      "[VRALDCN_STATS_Init]  Create stats ipc failed, ret: 1.", "[VRALDCN_Init] stats init failed, ret: 1."},
     true, 1, 1},
};

class FrameStartupFailure : public PluginTest, public ::testing::WithParamInterface<FailureCase> {};

} // namespace

TEST_F(FrameTest, StartupBuildsEverythingInOrder)
{
    ASSERT_EQ(MDTLM_VRALDCN_Init(7), 0u);
    /* The start notice comes before the binding: a first start-up drops it. */
    EXPECT_EQ(Fw().Shapes(), Lines({TaskLine(), "[VRALDCN_EVENT_Init] success.",
                                    "[NTVVRALDCN_STATS_QUE_Create] success.",
                                    "[NTVVRALDCN_STATS_IPC_InitServer] success.",
                                    "[NTVVRALDCN_STATS_IPC_Init] success.", kNoC2H}));
    EXPECT_EQ(Fw().Logs()[0].level, 1u);
    EXPECT_EQ(g_mdtlmVralDcnTaskEventHdl, MDTLM_HOST_QueueFind("MDTLM_VRALDCN_EVENT"));
    EXPECT_EQ(g_mdtlmNtvVralDcnStatsQueHdl, MDTLM_HOST_QueueFind("MdtlmNtvVralDcnStatsQue"));
    EXPECT_EQ(g_mdtlmVralDcnTimerId, -1); /* the first task creates it */
}

TEST_P(FrameStartupFailure, LogsReleasesAndReturnsTheStepCode)
{
    const FailureCase &c = GetParam();
    c.arrange();
    EXPECT_EQ(MDTLM_VRALDCN_Init(7), c.result);

    std::vector<std::string> expected;
    for (const std::string &line : c.lines) {
        expected.push_back(L(line == kTaskLine ? TaskLine() : line));
    }
    if (!c.lines.empty()) { /* patch activation runs on every path after the binding */
        expected.push_back(L(kNoC2H));
    }
    EXPECT_EQ(Fw().Shapes(), expected);
    for (const CapturedLog &log : Fw().Logs()) {
        EXPECT_EQ(log.level, log.shape.find("success") == std::string::npos ? 2u : 1u) << log.text;
    }
    /* Intake and epoll instance released; a created event queue stays. */
    EXPECT_EQ(g_mdtlmVralDcnEpollId, UINT32_MAX);
    EXPECT_EQ(g_mdtlmNtvVralDcnStatsQueHdl, nullptr);
    EXPECT_EQ(g_mdtlmNtvVralDcnChanHandle, nullptr);
    EXPECT_EQ(g_mdtlmVralDcnTaskEventHdl != nullptr, c.eventQueueLeft);
    EXPECT_EQ(MDTLM_HOST_CallCount(MDTLM_HOST_OP_QUE_DESTROY), c.queueDestroys);
    EXPECT_EQ(MDTLM_HOST_CallCount(MDTLM_HOST_OP_EPOLL_DESTROY), c.epollDestroys);
    EXPECT_EQ(MDTLM_HOST_CallCount(MDTLM_HOST_OP_CHAN_DESTROY), 0u);
    EXPECT_EQ(MDTLM_HOST_CallCount(MDTLM_HOST_OP_HPX_GET_ACTIVE), c.lines.empty() ? 0u : 1u);
}

INSTANTIATE_TEST_SUITE_P(Steps, FrameStartupFailure, ::testing::ValuesIn(kFailures),
                         [](const auto &info) { return std::string(info.param.name); });

