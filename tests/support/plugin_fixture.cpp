#include "plugin_fixture.h"

#include <algorithm>
#include <cstring>

#include "manual_host.h"
#include "mdtlm_host.h"
#include "mdtlm_vraldcn.h"

namespace {

template <std::size_t N>
void CopyText(char (&field)[N], const std::string &text)
{
    const std::size_t len = std::min(text.size(), N);
    std::memcpy(field, text.data(), len);
    if (len < N) {
        field[len] = '\0';
    }
}

/* The catalogue row of a sensor: its add and delete entries. */
const MDTLM_XPATH_NODE *PathNode(uint32_t sensorType)
{
    if (sensorType < 1 || sensorType > MDTLM_SENSOR_COUNT) {
        return nullptr;
    }
    return &g_mdtlmVralDcnXpathNode[sensorType - 1];
}

} // namespace

std::vector<std::string> LevelAndText()
{
    const std::string label = "[mdtlm.vraldcn.statis:#]";
    std::vector<std::string> out;
    for (const CapturedLog &log : FakeFramework::Get().Logs()) {
        EXPECT_EQ(log.shape.rfind(label, 0), 0u) << log.text;
        out.push_back(std::to_string(log.level) + " " + log.shape.substr(label.size()));
    }
    return out;
}

PathInfoBuilder::PathInfoBuilder(uint32_t encodeType)
{
    info_.encodeType = encodeType;
    info_.sampleInterval = 1000;
}

PathInfoBuilder &PathInfoBuilder::Encode(uint32_t encodeType)
{
    info_.encodeType = encodeType;
    return *this;
}

PathInfoBuilder &PathInfoBuilder::Interval(uint32_t milliseconds)
{
    info_.sampleInterval = milliseconds;
    return *this;
}

PathInfoBuilder &PathInfoBuilder::Condition(const std::string &name, const std::string &value)
{
    if (info_.conditionCnt >= MDTLM_MAX_CONDITIONS) {
        ADD_FAILURE() << "more than " << MDTLM_MAX_CONDITIONS << " conditions";
        return *this;
    }
    MDTLM_PATH_CONDITION &cond = info_.conditions[info_.conditionCnt++];
    CopyText(cond.fieldName, name);
    CopyText(cond.value, value);
    return *this;
}

PathInfoBuilder &PathInfoBuilder::Filter(const std::string &name, uint8_t op, uint64_t threshold)
{
    if (info_.filterCnt >= MDTLM_MAX_FILTERS) {
        ADD_FAILURE() << "more than " << MDTLM_MAX_FILTERS << " filters";
        return *this;
    }
    MDTLM_PATH_FILTER &filter = info_.filters[info_.filterCnt++];
    CopyText(filter.fieldName, name);
    filter.op = op;
    filter.threshold = threshold;
    return *this;
}

PathInfoBuilder &PathInfoBuilder::Logic(uint32_t logic)
{
    info_.filterLogic = logic;
    return *this;
}

void ManualHostTest::SetUp()
{
    savedTable_ = FakeFramework::Get().table;
    manual_host::Prepare();
}

void ManualHostTest::TearDown()
{
    FakeFramework &fw = FakeFramework::Get();
    MDTLM_HOST_FaultClear();
    fw.FailAlloc(0, 0);
    fw.FailAllocOfSize(0, 0, 0);
    fw.table = savedTable_; /* tests may blank slots */
    manual_host::Unload();
    EXPECT_EQ(fw.Outstanding(), 0) << "buffers the plug-in did not give back";
}

void PluginFixture::SetUp()
{
    ManualHostTest::SetUp();
    ASSERT_EQ(MDTLM_VRALDCN_Init(kModuleId), 0u);
}

void PluginFixture::TearDown()
{
    MDTLM_HOST_FaultClear();
    fw.FailAlloc(0, 0);
    fw.FailAllocOfSize(0, 0, 0);
    for (const TaskKey &key : std::vector<TaskKey>(tasks_)) {
        DelTask(key.sensorType, key.instanceId, key.taskId);
    }
    Pump();
    ManualHostTest::TearDown();
}

MDTLM_TASK_DATA *PluginFixture::AddTask(uint32_t sensorType, uint32_t instanceId, uint32_t taskId,
                                        const MDTLM_SENSOR_PATH_INFO &info)
{
    const MDTLM_XPATH_NODE *node = PathNode(sensorType);
    if (node == nullptr) {
        ADD_FAILURE() << "no add entry for sensor " << sensorType;
        return nullptr;
    }
    EXPECT_EQ(node->addFunc(instanceId, taskId, &info), 0u);
    Pump();
    tasks_.push_back({sensorType, instanceId, taskId});
    return Task(sensorType, instanceId, taskId);
}

void PluginFixture::DelTask(uint32_t sensorType, uint32_t instanceId, uint32_t taskId)
{
    const MDTLM_XPATH_NODE *node = PathNode(sensorType);
    if (node == nullptr) {
        ADD_FAILURE() << "no delete entry for sensor " << sensorType;
        return;
    }
    EXPECT_EQ(node->delFunc(instanceId, taskId), 0u);
    Pump();
    tasks_.erase(std::remove_if(tasks_.begin(), tasks_.end(),
                                [&](const TaskKey &k) {
                                    return k.sensorType == sensorType && k.instanceId == instanceId &&
                                           k.taskId == taskId;
                                }),
                 tasks_.end());
}

MDTLM_TASK_DATA *PluginFixture::Task(uint32_t sensorType, uint32_t instanceId, uint32_t taskId) const
{
    return MDTLM_VRALDCN_GetTlmTaskInfo(sensorType, instanceId, taskId);
}

void PluginFixture::Pump() { manual_host::Pump(); }

uint32_t PluginFixture::Deliver(uint32_t sensorType, const void *records, uint32_t recordLen, uint32_t count)
{
    std::vector<MDTLM_STATS_IPC_ENTRY> entries;
    for (uint32_t i = 0; i < count; ++i) {
        entries.push_back({const_cast<uint8_t *>(static_cast<const uint8_t *>(records) + size_t{i} * recordLen),
                           sensorType, recordLen});
    }
    return manual_host::Deliver(entries);
}

void PluginFixture::Tick() { EXPECT_EQ(MDTLM_VRALDCN_STATS_UploadStatsData(nullptr, 0), 0u); }
