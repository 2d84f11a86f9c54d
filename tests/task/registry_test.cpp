/* Task registry through the entry points, the event queue and the worker. */
#include "task_world.h"

TEST_F(TaskWorld, IdentityReplaceAndOrder)
{
    for (uint32_t s = 1; s <= 6; ++s) { /* every entry reaches its own list */
        ASSERT_EQ(Add(s, 40, 100 + s, 1, 5000), 0u);
        EXPECT_EQ(Walk(s), (Pairs{{40, 100 + s}}));
        ASSERT_EQ(Del(s, 40, 100 + s), 0u);
    }
    EXPECT_EQ(Logs()[1], "1 [NTVVRALDCN_AdddTlmTask] Add telemetry task[101] success.");
    EXPECT_EQ(Logs()[2], "1 [NTVVRALDCN_TASK_DelTlmTaskFromList] Delete telemetry task[101] success.");

    ASSERT_EQ(Add(1, 7, 3, 0, 1000), 0u);
    MDTLM_TASK_DATA *task = Task(1, 7, 3);
    MDTLM_SAMPLE_BUFFER *gpb = task->gpbBuffer;
    task->unicastSeqNum = 11;
    task->stats.recvMsgCnt = 5;
    fw().ClearLogs();
    ASSERT_EQ(Add(1, 7, 3, 1, 30000), 0u); /* same pair: only the path info changes */
    EXPECT_EQ(Task(1, 7, 3), task);
    EXPECT_EQ(std::make_pair(task->pathInfo.encodeType, task->pathInfo.sampleInterval), std::make_pair(1u, 30000u));
    EXPECT_EQ(task->gpbBuffer, gpb);
    EXPECT_EQ(std::make_pair(task->unicastSeqNum, task->stats.recvMsgCnt), std::make_pair(11u, uint64_t{5}));
    EXPECT_EQ(Logs(), Lines{});

    ASSERT_EQ(Add(1, 8, 3), 0u); /* same task id, other instance: a second task */
    ASSERT_EQ(Add(1, 7, 4), 0u);
    ASSERT_EQ(Add(4, 1, 1), 0u);
    EXPECT_EQ(Walk(1), (Pairs{{7, 4}, {8, 3}, {7, 3}})); /* newest first */
    EXPECT_EQ(Walk(4), (Pairs{{1, 1}}));
    EXPECT_EQ(MDTLM_VRALDCN_TASK_HasTlmTask(3), 0u);
    EXPECT_EQ(MDTLM_VRALDCN_TASK_HasTlmTask(4), 1u);

    fw().ClearLogs();
    EXPECT_EQ(Del(1, 9, 9), 0u); /* not there: silent */
    EXPECT_EQ(Del(5, 1, 1), 0u);
    EXPECT_EQ(Task(5, 1, 1), nullptr);
    EXPECT_EQ(Logs(), (Lines{"0 [NTVVRALDCN_TASK_DelTlmTaskFromList] Telemetry task list is empty.",
                             "0 [NTVVRALDCN_GetTlmTaskInfo] Telemetry task list is empty."}));
    const int64_t live = fw().Outstanding();
    ASSERT_EQ(Del(1, 8, 3), 0u);
    EXPECT_EQ(fw().Outstanding(), live - 3); /* node and its two buffers */
    EXPECT_EQ(Walk(1), (Pairs{{7, 4}, {7, 3}}));

    MDTLM_SENSOR_PATH_INFO info{};
    ASSERT_EQ(FWM_ZELK_FLOW_AddTlmTask(2, 2, &info), 0u); /* queued together: add, then delete */
    ASSERT_EQ(FWM_ZELK_FLOW_DelTlmTask(2, 2), 0u);
    Pump();
    EXPECT_EQ(MDTLM_VRALDCN_TASK_HasTlmTask(6), 0u);
}

TEST_F(TaskWorld, RefusedAddsLeaveTheListAsItWas)
{
    MDTLM_TASK_DATA payload{};
    payload.sensorType = 1;
    EXPECT_EQ(MDTLM_VRALDCN_TASK_AddTlmTaskToList(&payload, sizeof(payload) - 1), 1u);
    EXPECT_EQ(Logs(), Lines{"2 [NTVVRALDCN_TASK_AddTlmTaskToList] Msg is NULL, msgLen: 3543"});
    payload.sensorType = 9;
    fw().ClearLogs();
    EXPECT_EQ(MDTLM_VRALDCN_TASK_AddTlmTaskToList(&payload, sizeof(payload)), 1u);
    EXPECT_EQ(MDTLM_VRALDCN_TASK_DelTlmTaskFromList(&payload, sizeof(payload)), 1u);
    EXPECT_EQ(Logs(), Lines{});

    ASSERT_EQ(Add(3, 1, 1), 0u);
    struct Case {
        uint32_t size, k; /* the k-th allocation of this size fails */
        Lines lines;
    };
    const Case cases[] = {
        {sizeof(MDTLM_TASK_NODE), 1, {"2 [NTVVRALDCN_AdddTlmTask] Add telemetry task[2] failed, alloc memery falied."}},
        {sizeof(MDTLM_SAMPLE_BUFFER), 1, {}}, /* GPB buffer */
        {sizeof(MDTLM_SAMPLE_BUFFER), 2, {}}, /* JSON buffer: the GPB one is given back */
    };
    for (const Case &c : cases) {
        fw().ClearLogs();
        const int64_t live = fw().Outstanding();
        fw().FailAllocOfSize(c.size, c.k);
        EXPECT_EQ(Add(3, 1, 2), 0u); /* the entry accepted it; the handler failed */
        EXPECT_EQ(Walk(3), (Pairs{{1, 1}}));
        EXPECT_EQ(fw().Outstanding(), live);
        Lines expected = c.lines;
        expected.push_back("2 [VRALDCN_EVENT_Pop] Msg proc failed, ret: 1, msgType: 1.");
        EXPECT_EQ(Logs(), expected);
    }

    MDTLM_VRALDCN_STATS_DestroyTimer(); /* no timer: the slots made for this add go again */
    MDTLM_HOST_FaultSet(MDTLM_HOST_OP_TIMER_CREATE, 0, 1, -5);
    EXPECT_EQ(MDTLM_VRALDCN_TASK_AddTlmTaskToList(&payload, sizeof(payload)), 1u);
    EXPECT_EQ(g_mdtlmNtvVralDcnReportPerf, nullptr);
}

TEST_F(TaskWorld, EntryPointFailures)
{
    MDTLM_SENSOR_PATH_INFO info{};
    fw().FailAllocOfSize(sizeof(MDTLM_EVENT_MSG) + sizeof(MDTLM_TASK_DATA), 1, 2);
    EXPECT_EQ(FWM_QUMA_FLOW_AddTlmTask(1, 21, &info), 1u);
    EXPECT_EQ(FWM_QUMA_FLOW_DelTlmTask(1, 21), 1u);
    MDTLM_HOST_FaultSet(MDTLM_HOST_OP_QUE_WRITE, 0, 2, 0); /* full event queue */
    EXPECT_EQ(FWM_QUMA_FLOW_AddTlmTask(1, 22, &info), 0u);
    EXPECT_EQ(FWM_QUMA_FLOW_DelTlmTask(1, 22), 0u);
    EXPECT_EQ(FWM_QUMA_FLOW_AddTlmTask(1, 23, nullptr), 1u);
    Pump();
    EXPECT_EQ(Logs(), (Lines{"2 [NTVVRALDCN_AddTlmTask] Alloc memory failed.., taskId: 21.",
                             "2 [NTVVRALDCN_DelTlmTask] Alloc memory failed..",
                             "2 [VRALDCN_EVENT_Push] Write queue fail. eleCnt: 0.",
                             "2 [NTVVRALDCN_AddTlmTask] push task to event queue failed, ret: 1, taskId: 22.",
                             "2 [VRALDCN_EVENT_Push] Write queue fail. eleCnt: 0.",
                             "2 [NTVVRALDCN_DelTlmTask] push task to event queue failed, ret: 1."}));
    EXPECT_EQ(MDTLM_VRALDCN_TASK_HasTlmTask(4), 0u);
    EXPECT_EQ(fw().Outstanding(), 0);
}
