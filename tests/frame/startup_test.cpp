/*
 * Start-up and the partial shut-down of a failed start-up: the order of the
 * steps, what each failure logs, returns and leaves behind.
 */
#include <cstdint>
#include <string>
#include <vector>

#include "plugin_fixture.h"

namespace {

const char kTaskLine[] = "<task created>"; /* stands for the line naming the worker's task id */

struct StartupFailureCase {
    const char *name;
    void (*arrange)();
    uint32_t result;
    std::vector<std::string> lines; /* without the label prefix */
    bool eventQueueLeft;
    uint64_t queueDestroys;
    uint64_t epollDestroys;
};

std::string TaskLine()
{
    return "[VRALDCN_THREAD_CreateStatsTask] Create task success, taskId: " +
           std::to_string(g_mdtlmVralDcnStatsTaskId) + ".";
}

const char kNoC2H[] = "[PATCH][FWM_MDTLM_VRALDCN]No C2H func";

const std::vector<StartupFailureCase> kFailureCases = {
    {"binding", [] { FakeFramework::Get().Uninstall(); }, 1, {}, false, 0, 0},
    {"slot3null", [] { FakeFramework::Get().table.RegXpath = nullptr; }, 1,
     {"[VRALDCN_Init]  register simple xpath failed, ret: 1.", kNoC2H}, false, 0, 0},
    {"epoll", [] { MDTLM_HOST_FaultSet(MDTLM_HOST_OP_EPOLL_CREATE, 0, 1, -5); }, 1,
     {"[VRALDCN_THREAD_InitEpoll] Epoll create failed, epollFd: -5.",
      "[VRALDCN_THREAD_Init] Create Epoll failed. ret: 1.", "[VRALDCN_Init] thread init failed, ret: 1.", kNoC2H},
     false, 0, 0},
    {"thread", [] { MDTLM_HOST_FaultSet(MDTLM_HOST_OP_TASK_CREATE, 0, 1, 7); }, 1,
     {"[VRALDCN_THREAD_CreateStatsTask] TaskCreate failed. ret: 7.",
      "[VRALDCN_THREAD_Init] Create stats task failed. ret: 1.", "[VRALDCN_Init] thread init failed, ret: 1.",
      kNoC2H},
     false, 0, 1},
    {"eventCreate", [] { MDTLM_HOST_FaultSet(MDTLM_HOST_OP_QUE_CREATE, 0, 1, 0); }, 1,
     {kTaskLine, "Create que failed !", "[VRALDCN_Init] Event init failed, ret: 1.", kNoC2H}, false, 0, 1},
    {"eventEpollReg", [] { MDTLM_HOST_FaultSet(MDTLM_HOST_OP_QUE_EPOLL_REG, 0, 1, 9); }, 9,
     {kTaskLine, "[VRALDCN_EVENT_Init] EpollReg failed, ret: 9.", "[VRALDCN_Init] Event init failed, ret: 9.",
      kNoC2H},
     false, 1, 1},
    {"eventFlowCtrlReg", [] { MDTLM_HOST_FaultSet(MDTLM_HOST_OP_QUE_MONITOR_REG, 0, 1, 11); }, 11,
     {kTaskLine, "[VRALDCN_EVENT_Init] Flow ctrl reg failed, ret: 11.", "[VRALDCN_Init] Event init failed, ret: 11.",
      kNoC2H},
     false, 1, 1},
    {"statsQueueCreate", [] { MDTLM_HOST_FaultSet(MDTLM_HOST_OP_QUE_CREATE, 1, 1, 0); }, 1,
     {kTaskLine, "[VRALDCN_EVENT_Init] success.", "[NTVVRALDCN_STATS_QUE_Create] Create que failed !",
      "[VRALDCN_STATS_Init]  Create stats queue failed, ret: 1.", "[VRALDCN_Init] stats init failed, ret: 1.",
      kNoC2H},
     true, 0, 1},
    {"statsFlowCtrlReg", [] { MDTLM_HOST_FaultSet(MDTLM_HOST_OP_QUE_MONITOR_REG, 1, 1, 13); }, 1,
     {kTaskLine, "[VRALDCN_EVENT_Init] success.", "[NTVVRALDCN_STATS_QUE_Create] Flow ctrl reg failed, ret: 13.",
      "[VRALDCN_STATS_Init]  Create stats queue failed, ret: 13.", "[VRALDCN_Init] stats init failed, ret: 1.",
      kNoC2H},
     true, 1, 1},
    {"ipcServer", [] { MDTLM_HOST_FaultSet(MDTLM_HOST_OP_CHAN_SERVER, 0, 1, 4); }, 1,
     {kTaskLine, "[VRALDCN_EVENT_Init] success.", "[NTVVRALDCN_STATS_QUE_Create] success.",
      "[NTVVRALDCN_STATS_IPC_InitServer] UCServer ret: 4.",
      "[NTVVRALDCN_STATS_IPC_Init] IPC_InitSocket failed, ret: 1.",
      "[VRALDCN_STATS_Init]  Create stats ipc failed, ret: 1.", "[VRALDCN_Init] stats init failed, ret: 1.",
      kNoC2H},
     true, 1, 1},
};

class StartupFailure : public PluginTest, public ::testing::WithParamInterface<StartupFailureCase> {};

} // namespace

TEST_F(PluginTest, StartupBuildsEverythingInOrderAndActivatesPatches)
{
    ASSERT_EQ(MDTLM_VRALDCN_Init(7), 0u);

    /* The start notice precedes the binding, so a first start-up drops it. */
    std::vector<std::string> expected = {
        L(TaskLine()),
        L("[VRALDCN_EVENT_Init] success."),
        L("[NTVVRALDCN_STATS_QUE_Create] success."),
        L("[NTVVRALDCN_STATS_IPC_InitServer] success."),
        L("[NTVVRALDCN_STATS_IPC_Init] success."),
        L(kNoC2H),
    };
    EXPECT_EQ(Fw().Shapes(), expected);
    EXPECT_EQ(Fw().Logs()[0].level, 1u);
    EXPECT_EQ(Fw().Logs()[5].level, 2u);
    EXPECT_EQ(MDTLM_VRALDCN_GetModuleId(), 7u);
    EXPECT_EQ(MDTLM_VRALDCN_GetTlmFrmVtbl(), &Fw().table);
    EXPECT_EQ(Fw().Registrations().size(), 6u);
    EXPECT_NE(g_mdtlmVralDcnEpollId, UINT32_MAX);
    EXPECT_EQ(MDTLM_VRALDCN_THREAD_GetEpollId(), g_mdtlmVralDcnEpollId);
    EXPECT_EQ(g_mdtlmVralDcnTaskEventHdl, MDTLM_HOST_QueueFind("MDTLM_VRALDCN_EVENT"));
    EXPECT_EQ(g_mdtlmNtvVralDcnStatsQueHdl, MDTLM_HOST_QueueFind("MdtlmNtvVralDcnStatsQue"));
    EXPECT_NE(g_mdtlmNtvVralDcnChanHandle, nullptr);
    EXPECT_EQ(g_mdtlmVralDcnTimerId, -1); /* created by the first task, not here */
    EXPECT_EQ(MDTLM_HOST_CallCount(MDTLM_HOST_OP_HPX_GET_ACTIVE), 1u);
}

TEST_P(StartupFailure, LogsReleasesAndReturnsTheStepCode)
{
    const StartupFailureCase &c = GetParam();
    c.arrange();

    EXPECT_EQ(MDTLM_VRALDCN_Init(7), c.result);

    std::vector<std::string> expected;
    for (const std::string &line : c.lines) {
        expected.push_back(L(line == kTaskLine ? TaskLine() : line));
    }
    EXPECT_EQ(Fw().Shapes(), expected);
    for (const CapturedLog &log : Fw().Logs()) {
        if (log.shape.find("success") == std::string::npos) {
            EXPECT_EQ(log.level, 2u) << log.text;
        }
    }
    /* The intake and the epoll instance are released; the event queue stays. */
    EXPECT_EQ(g_mdtlmVralDcnEpollId, UINT32_MAX);
    EXPECT_EQ(g_mdtlmNtvVralDcnStatsQueHdl, nullptr);
    EXPECT_EQ(g_mdtlmNtvVralDcnChanHandle, nullptr);
    EXPECT_EQ(g_mdtlmVralDcnTaskEventHdl != nullptr, c.eventQueueLeft);
    EXPECT_EQ(MDTLM_HOST_CallCount(MDTLM_HOST_OP_QUE_DESTROY), c.queueDestroys);
    EXPECT_EQ(MDTLM_HOST_CallCount(MDTLM_HOST_OP_EPOLL_DESTROY), c.epollDestroys);
    EXPECT_EQ(MDTLM_HOST_CallCount(MDTLM_HOST_OP_CHAN_DESTROY), 0u);
    /* Patch activation runs on every path after the binding. */
    EXPECT_EQ(MDTLM_HOST_CallCount(MDTLM_HOST_OP_HPX_GET_ACTIVE), c.lines.empty() ? 0u : 1u);
}

INSTANTIATE_TEST_SUITE_P(Steps, StartupFailure, ::testing::ValuesIn(kFailureCases),
                         [](const auto &info) { return std::string(info.param.name); });

TEST_F(PluginTest, BindingFailureRegistersNothingAndStartsNothing)
{
    Fw().Uninstall();
    EXPECT_EQ(MDTLM_VRALDCN_Init(3), 1u);
    EXPECT_EQ(MDTLM_VRALDCN_GetTlmFrmVtbl(), nullptr);
    EXPECT_TRUE(Fw().Registrations().empty());
    EXPECT_EQ(MDTLM_HOST_CallCount(MDTLM_HOST_OP_EPOLL_CREATE), 0u);
    EXPECT_EQ(MDTLM_VRALDCN_InitTlmFrmVtbl(), 1u);
    Fw().Install();
    EXPECT_EQ(MDTLM_VRALDCN_InitTlmFrmVtbl(), 0u);
    EXPECT_EQ(MDTLM_VRALDCN_GetTlmFrmVtbl(), &Fw().table);
}

TEST_F(PluginTest, SecondStartupDeliversTheStartNotice)
{
    Fw().table.RegXpath = nullptr;
    ASSERT_EQ(MDTLM_VRALDCN_Init(7), 1u);
    Fw().ClearLogs();
    ASSERT_EQ(MDTLM_VRALDCN_Init(7), 1u);
    ASSERT_FALSE(Fw().Logs().empty());
    EXPECT_EQ(Fw().Logs()[0].shape, L("[VRALDCN_Init] start."));
    EXPECT_EQ(Fw().Logs()[0].level, 2u);
}

TEST_F(PluginTest, DestoryWithNothingToReleaseCallsNoPlatformFunction)
{
    MDTLM_VRALDCN_Destory();
    MDTLM_VRALDCN_Destory();
    EXPECT_EQ(MDTLM_HOST_CallCount(MDTLM_HOST_OP_QUE_DESTROY), 0u);
    EXPECT_EQ(MDTLM_HOST_CallCount(MDTLM_HOST_OP_CHAN_DESTROY), 0u);
    EXPECT_EQ(MDTLM_HOST_CallCount(MDTLM_HOST_OP_EPOLL_DESTROY), 0u);
}
