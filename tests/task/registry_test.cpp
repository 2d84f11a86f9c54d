/*
 * Task registry: the entry points, the add and delete handlers and the
 * lookups, driven through the real event queue and worker loop.
 */
#include <cstring>

#include "mdtlm_host.h"
#include "mdtlm_vraldcn.h"
#include "task_world.h"

namespace {

using Pairs = std::vector<std::pair<uint32_t, uint32_t>>;

const std::string kAddOk = "[NTVVRALDCN_AdddTlmTask] Add telemetry task[%u] success.";

std::string Fmt(const char *format, uint32_t a)
{
    char text[256];
    std::snprintf(text, sizeof(text), format, a);
    return text;
}

class Registry : public TaskWorld {};

TEST_F(Registry, EveryEntryReachesItsOwnSensorList)
{
    struct Entry {
        MDTLM_ADD_TASK_FUNC add;
        MDTLM_DEL_TASK_FUNC del;
        uint32_t sensorType;
    };
    const Entry entries[] = {
        {MDTLM_VRALDCN_FLOW_AddTlmTask, MDTLM_VRALDCN_FLOW_DelTlmTask, 1},
        {MDTLM_VRALDCN_FLOWHOP_AddTlmTask, MDTLM_VRALDCN_FLOWHOP_DelTlmTask, 2},
        {FWM_SRVTLM_FLOW_AddTlmTask, FWM_SRVTLM_FLOW_DelTlmTask, 3},
        {FWM_QUMA_FLOW_AddTlmTask, FWM_QUMA_FLOW_DelTlmTask, 4},
        {FWM_SRVTLM_FCTFLOW_AddTlmTask, FWM_SRVTLM_FCTFLOW_DelTlmTask, 5},
        {FWM_ZELK_FLOW_AddTlmTask, FWM_ZELK_FLOW_DelTlmTask, 6},
    };
    for (const Entry &e : entries) {
        SCOPED_TRACE(e.sensorType);
        MDTLM_SENSOR_PATH_INFO info = PathInfo(1, 5000);
        ASSERT_EQ(e.add(40 + e.sensorType, 100 + e.sensorType, &info), 0u);
        std::memset(&info, 0xEE, sizeof(info)); /* the entry copied it before returning */
        Pump();
        for (uint32_t s = 1; s <= 6; ++s) {
            EXPECT_EQ(MDTLM_VRALDCN_TASK_HasTlmTask(s), s == e.sensorType ? 1u : 0u);
        }
        MDTLM_TASK_DATA *task = Task(e.sensorType, 40 + e.sensorType, 100 + e.sensorType);
        ASSERT_NE(task, nullptr);
        EXPECT_EQ(task->sensorType, e.sensorType);
        EXPECT_EQ(task->pathInfo.encodeType, 1u);
        EXPECT_EQ(task->pathInfo.sampleInterval, 5000u);
        EXPECT_EQ(task->unicastSeqNum, 0u);
        EXPECT_EQ(task->multicastSeqNum, 0u);
        EXPECT_EQ(task->stats.recvMsgCnt, 0u);
        ASSERT_NE(task->gpbBuffer, nullptr);
        ASSERT_NE(task->jsonBuffer, nullptr);
        EXPECT_EQ(task->gpbBuffer->dataLen, 0u);
        EXPECT_EQ(task->jsonBuffer->itemCnt, 0u);

        ASSERT_EQ(e.del(40 + e.sensorType, 100 + e.sensorType), 0u);
        Pump();
        EXPECT_EQ(MDTLM_VRALDCN_TASK_HasTlmTask(e.sensorType), 0u);
    }
    EXPECT_EQ(CountLogs("[NTVVRALDCN_AdddTlmTask] Add telemetry task[101] success.", 1), 1u);
    EXPECT_EQ(CountLogs("[NTVVRALDCN_TASK_DelTlmTaskFromList] Delete telemetry task[106] success.", 1), 1u);
}

TEST_F(Registry, SamePairReplacesPathInfoOnlyAndNewestIsFirst)
{
    ASSERT_EQ(Add(1, 7, 3, 0, 1000), 0u);
    MDTLM_TASK_DATA *task = Task(1, 7, 3);
    ASSERT_NE(task, nullptr);
    MDTLM_SAMPLE_BUFFER *gpb = task->gpbBuffer;
    task->unicastSeqNum = 11;
    task->stats.recvMsgCnt = 5;
    fw().ClearLogs();
    const uint64_t creates = MDTLM_HOST_CallCount(MDTLM_HOST_OP_DB_CREATE);

    ASSERT_EQ(Add(1, 7, 3, 1, 30000), 0u); /* same pair: replace */
    EXPECT_EQ(Walk(1), (Pairs{{7, 3}}));
    EXPECT_EQ(Task(1, 7, 3), task);
    EXPECT_EQ(task->pathInfo.encodeType, 1u);
    EXPECT_EQ(task->pathInfo.sampleInterval, 30000u);
    EXPECT_EQ(task->gpbBuffer, gpb);
    EXPECT_EQ(task->unicastSeqNum, 11u);
    EXPECT_EQ(task->stats.recvMsgCnt, 5u);
    EXPECT_TRUE(fw().Logs().empty());
    EXPECT_EQ(MDTLM_HOST_CallCount(MDTLM_HOST_OP_DB_CREATE), creates);

    ASSERT_EQ(Add(1, 8, 3), 0u); /* same task id, other instance: a second task */
    ASSERT_EQ(Add(1, 7, 4), 0u);
    EXPECT_EQ(Walk(1), (Pairs{{7, 4}, {8, 3}, {7, 3}}));
    EXPECT_EQ(CountLogs(Fmt(kAddOk.c_str(), 3), 1), 1u);
    EXPECT_EQ(CountLogs(Fmt(kAddOk.c_str(), 4), 1), 1u);

    ASSERT_EQ(Add(4, 1, 1), 0u);
    ASSERT_EQ(Add(2, 1, 1), 0u);
    EXPECT_EQ(Walk(4), (Pairs{{1, 1}}));
    EXPECT_EQ(Walk(2), (Pairs{{1, 1}}));
    EXPECT_EQ(MDTLM_VRALDCN_TASK_HasTlmTask(3), 0u);
    EXPECT_EQ(Task(3, 1, 1), nullptr);
    EXPECT_EQ(Task(1, 9, 9), nullptr);
    EXPECT_EQ(MDTLM_VRALDCN_TASK_GetTaskHead(7), nullptr);
    EXPECT_EQ(MDTLM_VRALDCN_TASK_GetTaskHead(4), &g_qumaTaskListHead);
}

TEST_F(Registry, EncodeTypeOfASensor)
{
    struct Case {
        uint32_t sensorType;
        std::vector<uint32_t> encodeTypes;
        uint32_t expected;
    };
    const Case cases[] = {
        {1, {}, 0}, {2, {1, 1}, 1}, {3, {0, 5}, 0}, {4, {1, 0}, 2}, {5, {3, 1, 1}, 2}, {6, {0}, 0},
    };
    uint32_t taskId = 1;
    for (const Case &c : cases) {
        for (uint32_t encodeType : c.encodeTypes) {
            ASSERT_EQ(Add(c.sensorType, 1, taskId++, encodeType), 0u);
        }
    }
    for (const Case &c : cases) {
        EXPECT_EQ(MDTLM_VRALDCN_TASK_GetEncodeType(c.sensorType), c.expected) << "sensor " << c.sensorType;
    }
    EXPECT_EQ(MDTLM_VRALDCN_TASK_GetEncodeType(0), 0u);
    EXPECT_EQ(MDTLM_VRALDCN_TASK_GetEncodeType(7), 0u);
    EXPECT_STREQ(MDTLM_VRALDCN_TASK_GetJsonHeader(4), "{\"result-statistic\":{\"result-statistic\":[");
    EXPECT_EQ(MDTLM_VRALDCN_TASK_GetJsonHeader(0), nullptr);
}

TEST_F(Registry, RefusedAddKeepsSlotsAndTimerThatItCreated)
{
    ASSERT_EQ(g_mdtlmNtvVralDcnReportPerf, nullptr);
    ASSERT_EQ(g_mdtlmVralDcnTimerId, -1);
    MDTLM_TASK_DATA payload{};
    payload.sensorType = 1;
    EXPECT_EQ(MDTLM_VRALDCN_TASK_AddTlmTaskToList(&payload, sizeof(payload) - 1), 1u);
    EXPECT_EQ(fw().Shapes(),
              std::vector<std::string>{LogShape("[NTVVRALDCN_TASK_AddTlmTaskToList] Msg is NULL, msgLen: 3543")});
    EXPECT_NE(g_mdtlmNtvVralDcnReportPerf, nullptr);
    EXPECT_GE(g_mdtlmVralDcnTimerId, 0);
    EXPECT_EQ(MDTLM_VRALDCN_TASK_AddTlmTaskToList(nullptr, sizeof(payload)), 1u);
    EXPECT_EQ(CountLogs("[NTVVRALDCN_TASK_AddTlmTaskToList] Msg is NULL, msgLen: 3544", 2), 1u);

    /* Unknown sensor: refused without a line, nothing allocated. */
    fw().ClearLogs();
    const int64_t live = fw().Outstanding();
    payload.sensorType = 9;
    EXPECT_EQ(MDTLM_VRALDCN_TASK_AddTlmTaskToList(&payload, sizeof(payload)), 1u);
    EXPECT_TRUE(fw().Logs().empty());
    EXPECT_EQ(fw().Outstanding(), live);
}

TEST_F(Registry, FailedStartOfAddLeavesNoSlotsBehind)
{
    MDTLM_HOST_FaultSet(MDTLM_HOST_OP_TIMER_CREATE, 0, 1, -5);
    MDTLM_TASK_DATA payload{};
    payload.sensorType = 1;
    EXPECT_EQ(MDTLM_VRALDCN_TASK_AddTlmTaskToList(&payload, sizeof(payload)), 1u);
    EXPECT_EQ(g_mdtlmNtvVralDcnReportPerf, nullptr);
    EXPECT_EQ(MDTLM_VRALDCN_TASK_HasTlmTask(1), 0u);

    fw().FailAllocOfSize(MDTLM_REPORT_PERF_SLOTS * sizeof(MDTLM_REPORT_PERF_SLOT), 1);
    fw().ClearLogs();
    EXPECT_EQ(MDTLM_VRALDCN_TASK_AddTlmTaskToList(&payload, sizeof(payload)), 1u);
    EXPECT_TRUE(fw().Logs().empty());
    EXPECT_EQ(g_mdtlmVralDcnTimerId, -1);

    EXPECT_EQ(Add(1, 1, 1), 0u); /* the next add tries again */
    EXPECT_NE(g_mdtlmNtvVralDcnReportPerf, nullptr);
    EXPECT_GE(g_mdtlmVralDcnTimerId, 0);
    EXPECT_EQ(MDTLM_VRALDCN_TASK_HasTlmTask(1), 1u);
}

TEST_F(Registry, AllocationFailuresLeaveTheListAsItWas)
{
    ASSERT_EQ(Add(3, 1, 1), 0u);
    struct Case {
        uint32_t size;
        uint32_t k; /* k-th allocation of that size fails */
        const char *line;
    };
    const Case cases[] = {
        {sizeof(MDTLM_TASK_NODE), 1,
         "[NTVVRALDCN_AdddTlmTask] Add telemetry task[2] failed, alloc memery falied."},
        {sizeof(MDTLM_SAMPLE_BUFFER), 1, nullptr}, /* GPB buffer */
        {sizeof(MDTLM_SAMPLE_BUFFER), 2, nullptr}, /* JSON buffer: GPB given back */
    };
    for (const Case &c : cases) {
        fw().ClearLogs();
        const int64_t live = fw().Outstanding();
        fw().FailAllocOfSize(c.size, c.k);
        EXPECT_EQ(Add(3, 1, 2), 0u); /* the entry accepted; the handler failed */
        EXPECT_EQ(Walk(3), (Pairs{{1, 1}}));
        EXPECT_EQ(fw().Outstanding(), live);
        std::vector<std::string> expected;
        if (c.line != nullptr) {
            expected.push_back(LogShape(c.line));
        }
        expected.push_back(LogShape("[VRALDCN_EVENT_Pop] Msg proc failed, ret: 1, msgType: 1."));
        EXPECT_EQ(fw().Shapes(), expected);
    }
}

TEST_F(Registry, EntryPointFailures)
{
    fw().FailAllocOfSize(sizeof(MDTLM_EVENT_MSG) + sizeof(MDTLM_TASK_DATA), 1, 2);
    MDTLM_SENSOR_PATH_INFO info = PathInfo(0);
    EXPECT_EQ(FWM_QUMA_FLOW_AddTlmTask(1, 21, &info), 1u);
    EXPECT_EQ(FWM_QUMA_FLOW_DelTlmTask(1, 21), 1u);
    EXPECT_EQ(fw().Shapes(), (std::vector<std::string>{
                                 LogShape("[NTVVRALDCN_AddTlmTask] Alloc memory failed.., taskId: 21."),
                                 LogShape("[NTVVRALDCN_DelTlmTask] Alloc memory failed.."),
                             }));

    /* A full event queue: the request is dropped, the caller still gets 0. */
    fw().ClearLogs();
    MDTLM_HOST_FaultSet(MDTLM_HOST_OP_QUE_WRITE, 0, 2, 0);
    EXPECT_EQ(FWM_QUMA_FLOW_AddTlmTask(1, 22, &info), 0u);
    EXPECT_EQ(FWM_QUMA_FLOW_DelTlmTask(1, 22), 0u);
    Pump();
    EXPECT_EQ(CountLogs("[NTVVRALDCN_AddTlmTask] push task to event queue failed, ret: 1, taskId: 22.", 2), 1u);
    EXPECT_EQ(CountLogs("[NTVVRALDCN_DelTlmTask] push task to event queue failed, ret: 1.", 2), 1u);
    EXPECT_EQ(MDTLM_VRALDCN_TASK_HasTlmTask(4), 0u);
    EXPECT_EQ(fw().Outstanding(), 0);
    EXPECT_EQ(FWM_QUMA_FLOW_AddTlmTask(1, 23, nullptr), 1u);
}

TEST_F(Registry, DeleteRules)
{
    fw().ClearLogs();
    EXPECT_EQ(Del(5, 1, 1), 0u); /* empty list */
    EXPECT_EQ(fw().Shapes(), std::vector<std::string>{
                                 LogShape("[NTVVRALDCN_TASK_DelTlmTaskFromList] Telemetry task list is empty.")});
    EXPECT_EQ(fw().Logs()[0].level, 0u);

    ASSERT_EQ(Add(5, 1, 1), 0u);
    ASSERT_EQ(Add(5, 1, 2), 0u);
    fw().ClearLogs();
    EXPECT_EQ(Del(5, 2, 1), 0u); /* no such pair: silent */
    EXPECT_EQ(Del(5, 1, 3), 0u);
    EXPECT_TRUE(fw().Logs().empty());
    EXPECT_EQ(Walk(5), (Pairs{{1, 2}, {1, 1}}));

    MDTLM_TASK_DATA payload{};
    payload.sensorType = 0;
    EXPECT_EQ(MDTLM_VRALDCN_TASK_DelTlmTaskFromList(&payload, sizeof(payload)), 1u);
    EXPECT_TRUE(fw().Logs().empty());
    EXPECT_EQ(MDTLM_VRALDCN_TASK_DelTlmTaskFromList(&payload, 8), 1u);
    EXPECT_EQ(CountLogs("[NTVVRALDCN_TASK_DelTlmTaskFromList] Msg is NULL, msgLen: 8", 2), 1u);

    /* An add and a delete of one pair queued together leave no task. */
    MDTLM_SENSOR_PATH_INFO info = PathInfo(0);
    ASSERT_EQ(FWM_SRVTLM_FCTFLOW_AddTlmTask(3, 3, &info), 0u);
    ASSERT_EQ(FWM_SRVTLM_FCTFLOW_DelTlmTask(3, 3), 0u);
    Pump();
    EXPECT_EQ(Walk(5), (Pairs{{1, 2}, {1, 1}}));
    const int64_t live = fw().Outstanding();
    EXPECT_EQ(Del(5, 1, 2), 0u);
    EXPECT_EQ(fw().Outstanding(), live - 3); /* node and its two buffers */
    EXPECT_EQ(Walk(5), (Pairs{{1, 1}}));
}

TEST_F(Registry, EmptyListNoticeWhenTheFirstTaskArrives)
{
    ASSERT_EQ(Add(6, 1, 1), 0u);
    EXPECT_EQ(fw().Shapes(), (std::vector<std::string>{
                                 LogShape("[NTVVRALDCN_GetTlmTaskInfo] Telemetry task list is empty."),
                                 LogShape(Fmt(kAddOk.c_str(), 1)),
                             }));
    fw().ClearLogs();
    EXPECT_EQ(Task(6, 2, 2), nullptr); /* non-empty list: no notice */
    EXPECT_EQ(Task(5, 2, 2), nullptr);
    EXPECT_EQ(fw().Shapes(), std::vector<std::string>{
                                 LogShape("[NTVVRALDCN_GetTlmTaskInfo] Telemetry task list is empty.")});
}

TEST_F(Registry, OversizedPathInfoIsAcceptedAndNotedOnce)
{
    const std::string clamped =
        "[NTVVRALDCN_TASK_AddTlmTaskToList] Path info clamped, taskId: %u, conditionCnt: %u, filterCnt: %u.";
    struct Case {
        uint32_t taskId, conditionCnt, filterCnt;
        bool noted;
    };
    const Case cases[] = {{1, 32, 2, false}, {2, 33, 0, true}, {3, 0, 3, true}, {4, 1000, 7, true}};
    for (const Case &c : cases) {
        SCOPED_TRACE(c.taskId);
        fw().ClearLogs();
        MDTLM_SENSOR_PATH_INFO info = PathInfo(0);
        info.conditionCnt = c.conditionCnt;
        info.filterCnt = c.filterCnt;
        ASSERT_EQ(MDTLM_VRALDCN_FLOW_AddTlmTask(1, c.taskId, &info), 0u);
        ASSERT_EQ(MDTLM_VRALDCN_FLOW_AddTlmTask(1, c.taskId, &info), 0u); /* replace */
        Pump();
        char line[256];
        std::snprintf(line, sizeof(line), clamped.c_str(), c.taskId, c.conditionCnt, c.filterCnt);
        EXPECT_EQ(CountLogs(line, 2), c.noted ? 2u : 0u);
        ASSERT_NE(Task(1, 1, c.taskId), nullptr);
        EXPECT_EQ(Task(1, 1, c.taskId)->pathInfo.conditionCnt, c.conditionCnt);
    }
}

} // namespace
