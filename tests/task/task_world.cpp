#include "task_world.h"

#include <cstring>

#include "manual_host.h"

/* Every sensor's handler: the body is the record, appended with the buffer
 * discipline; a body starting with '!' is rejected. */
static uint32_t AppendBodyMsgProc(MDTLM_TASK_DATA *task, MDTLM_STATS_MSG *msg)
{
    if (msg->msgLen > 0 && msg->body[0] == '!') {
        return 0;
    }
    MDTLM_SAMPLE_BUFFER *b = task->pathInfo.encodeType == MDTLM_ENCODE_TYPE_JSON ? task->jsonBuffer : task->gpbBuffer;
    for (int attempt = 0; b != nullptr && attempt < 2; ++attempt) {
        if (msg->msgLen <= MDTLM_SAMPLE_DATA_SIZE - b->dataLen) {
            std::memcpy(b->data + b->dataLen, msg->body, msg->msgLen);
            b->dataLen += msg->msgLen;
            b->itemCnt += 1;
            break;
        }
        MDTLM_VRALDCN_TASK_UploadStatsDataByTask(b, task);
        b->itemCnt = 0;
        b->dataLen = 0;
    }
    return 1;
}

void TaskWorld::SetUp()
{
    ManualHostTest::SetUp();
    ASSERT_EQ(MDTLM_HOST_DbOpen(nullptr), 0u);
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
    ManualHostTest::TearDown();
    EXPECT_EQ(MDTLM_HOST_DbOpenHandles(), 0u);
}

uint32_t TaskWorld::Add(uint32_t sensor, uint32_t instanceId, uint32_t taskId, uint32_t encode, uint32_t ms)
{
    MDTLM_SENSOR_PATH_INFO info{};
    info.encodeType = encode;
    info.sampleInterval = ms;
    uint32_t ret = g_mdtlmVralDcnXpathNode[sensor - 1].addFunc(instanceId, taskId, &info);
    Pump();
    return ret;
}

uint32_t TaskWorld::Del(uint32_t sensor, uint32_t instanceId, uint32_t taskId)
{
    uint32_t ret = g_mdtlmVralDcnXpathNode[sensor - 1].delFunc(instanceId, taskId);
    Pump();
    return ret;
}

void TaskWorld::Tick()
{
    ASSERT_EQ(manual_host::Tick(), 0u);
}

void TaskWorld::Queue(uint32_t sensor, const std::string &body, int times)
{
    for (int i = 0; i < times; ++i) {
        auto *msg = static_cast<MDTLM_STATS_MSG *>(MDTLM_VRALDCN_BufAlloc(sizeof(MDTLM_STATS_MSG) + body.size()));
        msg->msgType = sensor;
        msg->msgLen = static_cast<uint32_t>(body.size());
        std::memcpy(msg->body, body.data(), body.size());
        ASSERT_EQ(MDTLM_VRALDCN_STATS_QUE_Push(msg), 0u);
    }
}

Pairs TaskWorld::Walk(uint32_t sensor)
{
    Pairs out;
    MDTLM_LIST_LINK *head = MDTLM_VRALDCN_TASK_GetTaskHead(sensor);
    for (MDTLM_LIST_LINK *link = head->next; link != head; link = link->next) {
        const MDTLM_TASK_DATA &task = reinterpret_cast<MDTLM_TASK_NODE *>(link)->data;
        out.emplace_back(task.instanceId, task.taskId);
    }
    return out;
}

void TaskWorld::Pump() { manual_host::Pump(); }
