#include "scenario.h"

#include <cstring>

#include "../sensors/sensor_records.h"
#include "fake_framework.h"
#include "mdtlm_host.h"
#include "mdtlm_vraldcn.h"

namespace robustness {
namespace {

constexpr uint32_t kModuleId = 7;

template <typename Rec>
SensorRecord Make(uint32_t sensorType, const Rec &rec)
{
    SensorRecord record{sensorType, std::vector<uint8_t>(sizeof(Rec))};
    std::memcpy(record.body.data(), &rec, sizeof(Rec));
    return record;
}

/* Task id of a sensor's task in one encoding. */
uint32_t TaskId(uint32_t sensorType, uint32_t encodeType)
{
    return sensorType * 10 + encodeType;
}

const MDTLM_XPATH_NODE &Node(uint32_t sensorType)
{
    return g_mdtlmVralDcnXpathNode[sensorType - 1];
}

void AddTasks()
{
    for (uint32_t sensor = 1; sensor <= MDTLM_SENSOR_COUNT; ++sensor) {
        for (uint32_t encode : {MDTLM_ENCODE_TYPE_GPB, MDTLM_ENCODE_TYPE_JSON}) {
            MDTLM_SENSOR_PATH_INFO block = TaskBlock(encode);
            (void)Node(sensor).addFunc(1, TaskId(sensor, encode), &block);
        }
    }
    Pump();
}

void DeleteTasks(uint32_t encodeType)
{
    for (uint32_t sensor = 1; sensor <= MDTLM_SENSOR_COUNT; ++sensor) {
        (void)Node(sensor).delFunc(1, TaskId(sensor, encodeType));
    }
    Pump();
}

} // namespace

const std::vector<SensorRecord> &Records()
{
    static const std::vector<SensorRecord> records = {
        Make(MDTLM_SENSOR_VRAL_FLOW, sensor_test::FlowRecord()),
        Make(MDTLM_SENSOR_VRAL_FLOWHOP, sensor_test::FlowHopRecord()),
        Make(MDTLM_SENSOR_SRVTLM_FLOW, sensor_test::SrvtlmRecord(1, 11)),
        Make(MDTLM_SENSOR_QUMA_RESULT, sensor_test::QumaRecord(7, 1, "edge", "none", 10, 20)),
        Make(MDTLM_SENSOR_SRVTLM_FCTFLOW, sensor_test::FctRecord(1, 12)),
        Make(MDTLM_SENSOR_ZELK_CACHE, MDTLM_ZELK_CACHE_REC{1, 0x0A000001, 0x0A000002, 6, 80, 443, 3, 1700000000, 2,
                                                           99, 1, 5, 2, 1}),
    };
    return records;
}

MDTLM_SENSOR_PATH_INFO TaskBlock(uint32_t encodeType)
{
    MDTLM_SENSOR_PATH_INFO block{};
    block.encodeType = encodeType;
    block.sampleInterval = 1000;
    return block;
}

void DeliverAll(uint32_t copies)
{
    std::vector<MDTLM_STATS_IPC_ENTRY> entries;
    for (uint32_t i = 0; i < copies; ++i) {
        for (const SensorRecord &record : Records()) {
            entries.push_back({const_cast<uint8_t *>(record.body.data()), record.sensorType,
                               static_cast<uint32_t>(record.body.size())});
        }
    }
    (void)MDTLM_VRALDCN_STATS_IPC_RecvMsgProc(nullptr, entries.data(), static_cast<uint32_t>(entries.size()));
}

void Pump()
{
    if (g_mdtlmVralDcnEpollId != UINT32_MAX) {
        MDTLM_HOST_EpollPump(g_mdtlmVralDcnEpollId, 0, 1);
    }
}

void Tick()
{
    if (g_mdtlmVralDcnTimerId > 0) {
        MDTLM_HOST_TimerFire(g_mdtlmVralDcnTimerId, 1);
    }
    Pump();
}

void PrepareHost()
{
    FakeFramework &fw = FakeFramework::Get();
    fw.Reset();
    fw.Install();
    MDTLM_HOST_FaultClear();
    MDTLM_HOST_HpxClear();
    MDTLM_HOST_SetManualTasks(1);
    MDTLM_HOST_SetManualClock(1);
    MDTLM_HOST_ChanSetPortOverride(1, 0);
}

uint32_t Run()
{
    const uint32_t init = MDTLM_VRALDCN_Init(kModuleId);
    AddTasks();
    DeliverAll(2);
    Tick();
    DeliverAll(1);
    Tick();
    DeleteTasks(MDTLM_ENCODE_TYPE_GPB);
    /* The last task of a sensor goes: the report-performance table is emptied. */
    (void)Node(MDTLM_SENSOR_ZELK_CACHE).delFunc(1, TaskId(MDTLM_SENSOR_ZELK_CACHE, MDTLM_ENCODE_TYPE_JSON));
    Pump();
    DeliverAll(1);
    Tick();
    DeliverAll(1); /* still queued at the unload */
    MDTLM_VRALDCN_Unload();
    MDTLM_HOST_JoinTasks();
    return init;
}

std::vector<std::string> Leftovers()
{
    std::vector<std::string> left;
    auto expect = [&left](bool holds, const std::string &what) {
        if (!holds) {
            left.push_back(what);
        }
    };
    const int64_t buffers = FakeFramework::Get().Outstanding();
    expect(buffers == 0, std::to_string(buffers) + " buffers outstanding");
    expect(MDTLM_HOST_DbOpenHandles() == 0, std::to_string(MDTLM_HOST_DbOpenHandles()) + " database handles open");
    expect(MDTLM_HOST_HpxOutstanding() == 0, "hot-patch arrays not given back");
    const char *kinds[MDTLM_HOST_OBJECT_COUNT] = {"queues", "epoll instances", "timers", "channel servers"};
    for (int kind = 0; kind < MDTLM_HOST_OBJECT_COUNT; ++kind) {
        const uint32_t live = MDTLM_HOST_LiveObjects(static_cast<MDTLM_HOST_OBJECT>(kind));
        expect(live == 0, std::to_string(live) + " " + kinds[kind] + " alive");
    }
    expect(g_mdtlmVralDcnEpollId == UINT32_MAX && g_mdtlmVralDcnTimerId == -1 &&
               g_mdtlmVralDcnTaskEventHdl == nullptr && g_mdtlmNtvVralDcnStatsQueHdl == nullptr &&
               g_mdtlmNtvVralDcnChanHandle == nullptr,
           "plug-in handles not cleared");
    expect(MDTLM_HOST_RunningTasks() == 0, "threads still running");
    return left;
}

} // namespace robustness
