#include "scenario.h"

#include <cstring>

#include "../sensors/sensor_records.h"
#include "manual_host.h"
#include "mdtlm_vraldcn.h"

namespace robustness {
namespace {

using manual_host::Pump;
using manual_host::Tick;

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
    (void)manual_host::Deliver(entries);
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
    manual_host::Unload();
    return init;
}

} // namespace robustness
