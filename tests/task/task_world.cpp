#include "task_world.h"

#include <cstring>

#include "mdtlm_host.h"
#include "mdtlm_vraldcn.h"

std::string LogShape(const std::string &text)
{
    return "[mdtlm.vraldcn.statis:#]" + text;
}

MDTLM_SENSOR_PATH_INFO PathInfo(uint32_t encodeType, uint32_t sampleIntervalMs)
{
    MDTLM_SENSOR_PATH_INFO info{};
    info.encodeType = encodeType;
    info.sampleInterval = sampleIntervalMs;
    return info;
}

uint32_t AppendBodyMsgProc(MDTLM_TASK_DATA *task, MDTLM_STATS_MSG *msg)
{
    if (msg->msgLen > 0 && msg->body[0] == '!') {
        return 0;
    }
    MDTLM_SAMPLE_BUFFER *buffer =
        task->pathInfo.encodeType == MDTLM_ENCODE_TYPE_JSON ? task->jsonBuffer : task->gpbBuffer;
    if (buffer == nullptr) {
        return 1;
    }
    for (int attempt = 0; attempt < 2; ++attempt) {
        if (msg->msgLen <= MDTLM_SAMPLE_DATA_SIZE - buffer->dataLen) {
            std::memcpy(buffer->data + buffer->dataLen, msg->body, msg->msgLen);
            buffer->dataLen += msg->msgLen;
            buffer->itemCnt += 1;
            break;
        }
        if (buffer->dataLen == 0) {
            break;
        }
        MDTLM_VRALDCN_TASK_UploadStatsDataByTask(buffer, task);
        buffer->itemCnt = 0;
        buffer->dataLen = 0;
    }
    return 1;
}

void TaskWorld::SetUp()
{
    fw().Reset();
    fw().Install();
    ASSERT_EQ(MDTLM_HOST_DbOpen(nullptr), 0u);
    MDTLM_HOST_SetManualTasks(1);
    MDTLM_HOST_SetManualClock(1);
    MDTLM_HOST_ChanSetPortOverride(1, 0);
    ASSERT_EQ(MDTLM_VRALDCN_Init(17), 0u);
    for (MDTLM_STATS_MAP_ENTRY &row : g_femMdtlmStatsMap) {
        row.msgProc = AppendBodyMsgProc;
    }
    fw().ClearLogs();
}

void TaskWorld::TearDown()
{
    MDTLM_HOST_FaultClear();
    fw().Reset();
    Pump();
    while (MDTLM_STATS_MSG *msg = MDTLM_VRALDCN_STATS_QUE_Pop()) {
        MDTLM_VRALDCN_BufFree(reinterpret_cast<void **>(&msg));
    }
    MDTLM_VRALDCN_Unload();
    MDTLM_HOST_JoinTasks();
    EXPECT_EQ(fw().Outstanding(), 0);
    EXPECT_EQ(MDTLM_HOST_DbOpenHandles(), 0u);
}

void TaskWorld::Pump()
{
    if (g_mdtlmVralDcnEpollId != UINT32_MAX) {
        MDTLM_HOST_EpollPump(g_mdtlmVralDcnEpollId, 0, 1);
    }
}

uint32_t TaskWorld::Add(uint32_t sensorType, uint32_t instanceId, uint32_t taskId, uint32_t encodeType,
                        uint32_t sampleIntervalMs)
{
    MDTLM_SENSOR_PATH_INFO info = PathInfo(encodeType, sampleIntervalMs);
    uint32_t ret = g_mdtlmVralDcnXpathNode[sensorType - 1].addFunc(instanceId, taskId, &info);
    Pump();
    return ret;
}

uint32_t TaskWorld::Del(uint32_t sensorType, uint32_t instanceId, uint32_t taskId)
{
    uint32_t ret = g_mdtlmVralDcnXpathNode[sensorType - 1].delFunc(instanceId, taskId);
    Pump();
    return ret;
}

void TaskWorld::Tick()
{
    ASSERT_GE(g_mdtlmVralDcnTimerId, 0);
    ASSERT_EQ(MDTLM_HOST_TimerFire(g_mdtlmVralDcnTimerId, 1), 0u);
    Pump();
}

void TaskWorld::Queue(uint32_t sensorType, const std::string &body)
{
    auto *msg = static_cast<MDTLM_STATS_MSG *>(MDTLM_VRALDCN_BufAlloc(sizeof(MDTLM_STATS_MSG) + body.size()));
    ASSERT_NE(msg, nullptr);
    msg->msgType = sensorType;
    msg->msgLen = static_cast<uint32_t>(body.size());
    std::memcpy(msg->body, body.data(), body.size());
    ASSERT_EQ(MDTLM_VRALDCN_STATS_QUE_Push(msg), 0u);
}

MDTLM_TASK_DATA *TaskWorld::Task(uint32_t sensorType, uint32_t instanceId, uint32_t taskId)
{
    return MDTLM_VRALDCN_GetTlmTaskInfo(sensorType, instanceId, taskId);
}

std::vector<std::pair<uint32_t, uint32_t>> TaskWorld::Walk(uint32_t sensorType)
{
    std::vector<std::pair<uint32_t, uint32_t>> out;
    MDTLM_LIST_LINK *head = MDTLM_VRALDCN_TASK_GetTaskHead(sensorType);
    for (MDTLM_LIST_LINK *link = head->next; link != head; link = link->next) {
        const MDTLM_TASK_DATA &task = reinterpret_cast<MDTLM_TASK_NODE *>(link)->data;
        out.emplace_back(task.instanceId, task.taskId);
    }
    return out;
}

int32_t TaskWorld::StatsQueueCount()
{
    return MDTLM_HOST_QueueCount(g_mdtlmNtvVralDcnStatsQueHdl);
}
