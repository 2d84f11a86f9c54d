#include "fuzz_host.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "fake_framework.h"
#include "manual_host.h"
#include "mdtlm_vraldcn.h"
#include "sample_check.h"
#include "sensor_calls.h"

namespace fuzz {
namespace {

constexpr uint32_t kModuleId = 7;

[[noreturn]] void Fail(const std::string &what)
{
    std::fprintf(stderr, "fuzz check failed: %s\n", what.c_str());
    std::abort();
}

/* A field name: one of the map's rows, or arbitrary text. */
template <size_t N>
void Name(char (&field)[N], const MDTLM_FILTER_MAP_ENTRY *map, size_t rows, FuzzedDataProvider &input)
{
    std::string name = input.ConsumeBool() && rows > 0
                           ? std::string(map[input.ConsumeIntegralInRange<size_t>(0, rows - 1)].fieldName)
                           : input.ConsumeRandomLengthString(N);
    std::memset(field, 0, N);
    std::memcpy(field, name.data(), std::min(name.size(), N));
}

void CheckSamples()
{
    for (const CapturedSample &sample : FakeFramework::Get().Samples()) {
        /* Task ids are sensor * 100 + n; odd n are JSON tasks. */
        const uint32_t sensorType = sample.header.taskId / 100;
        const bool json = sample.header.taskId % 2 == 1;
        std::string problem = json ? CheckJsonSample(sensorType, sample.data, sample.header.itemCnt)
                                   : CheckGpbSample(sensorType, sample.data, sample.header.itemCnt);
        if (!problem.empty()) {
            Fail(problem + " (task " + std::to_string(sample.header.taskId) + ")");
        }
    }
    FakeFramework::Get().ClearSamples();
}

} // namespace

void Start()
{
    manual_host::Prepare();
    if (MDTLM_VRALDCN_Init(kModuleId) != 0) {
        Fail("the plug-in did not start");
    }
}

void StopAndCheck()
{
    Pump(false);
    manual_host::Unload();
    CheckSamples();
    for (const std::string &left : manual_host::Leftovers()) {
        Fail(left);
    }
    /* A release the platform refused, or a queue that kept its elements,
     * means a handle the platform did not know: misuse. */
    MDTLM_LOSS_COUNTERS losses{};
    (void)MDTLM_VRALDCN_STATS_GetLossCounters(&losses);
    if (losses.releaseFailCnt != 0 || losses.leftAtStopCnt != 0 || losses.eventsLeftAtStopCnt != 0) {
        Fail("a platform release or queue read was refused");
    }
    FakeFramework::Get().ClearLogs();
}

void Pump(bool tick)
{
    if (tick) {
        (void)manual_host::Tick();
    } else {
        (void)manual_host::Pump();
    }
    CheckSamples();
}

uint32_t RecordSize(uint32_t sensorType)
{
    const sensor_table::SensorCalls *sensor = sensor_table::Of(sensorType);
    return sensor != nullptr ? sensor->recordSize : 0;
}

MDTLM_SENSOR_PATH_INFO PathBlock(uint32_t sensorType, FuzzedDataProvider &input)
{
    MDTLM_SENSOR_PATH_INFO block{};
    const sensor_table::SensorCalls *maps = sensor_table::Of(sensorType);
    block.encodeType = input.ConsumeIntegralInRange<uint32_t>(0, 2);
    block.sampleInterval = input.ConsumeIntegral<uint32_t>();
    /* Counts may claim more than the block holds: the engine must bound them. */
    block.conditionCnt = input.ConsumeIntegralInRange<uint32_t>(0, MDTLM_MAX_CONDITIONS + 2);
    for (uint32_t i = 0; i < MDTLM_MAX_CONDITIONS && i < block.conditionCnt && input.remaining_bytes() > 0; ++i) {
        Name(block.conditions[i].fieldName, maps->condMap, maps->condRows, input);
        std::string value = input.ConsumeRandomLengthString(sizeof(block.conditions[i].value));
        std::memcpy(block.conditions[i].value, value.data(), std::min(value.size(), sizeof(block.conditions[i].value)));
    }
    block.filterCnt = input.ConsumeIntegralInRange<uint32_t>(0, MDTLM_MAX_FILTERS + 2);
    block.filterLogic = input.ConsumeIntegralInRange<uint32_t>(0, 2);
    for (uint32_t i = 0; i < MDTLM_MAX_FILTERS && i < block.filterCnt && input.remaining_bytes() > 0; ++i) {
        Name(block.filters[i].fieldName, maps->filterMap, maps->filterRows, input);
        block.filters[i].op = input.ConsumeIntegral<uint8_t>();
        block.filters[i].threshold = input.ConsumeIntegral<uint64_t>();
    }
    return block;
}

void AddTask(uint32_t sensorType, uint32_t instanceId, uint32_t taskId, const MDTLM_SENSOR_PATH_INFO &block)
{
    MDTLM_SENSOR_PATH_INFO copy = block;
    /* The id says the encoding; any value but JSON's means GPB. */
    if (taskId % 2 == 1) {
        copy.encodeType = MDTLM_ENCODE_TYPE_JSON;
    } else if (copy.encodeType == MDTLM_ENCODE_TYPE_JSON) {
        copy.encodeType = MDTLM_ENCODE_TYPE_GPB;
    }
    (void)g_mdtlmVralDcnXpathNode[sensorType - 1].addFunc(instanceId, taskId, &copy);
}

void DelTask(uint32_t sensorType, uint32_t instanceId, uint32_t taskId)
{
    (void)g_mdtlmVralDcnXpathNode[sensorType - 1].delFunc(instanceId, taskId);
}

void DeliverBatch(FuzzedDataProvider &input)
{
    const uint32_t count = input.ConsumeIntegralInRange<uint32_t>(1, 8);
    std::vector<std::vector<uint8_t>> bodies;
    std::vector<MDTLM_STATS_IPC_ENTRY> entries;
    for (uint32_t i = 0; i < count && input.remaining_bytes() > 0; ++i) {
        const uint32_t type = input.ConsumeIntegralInRange<uint32_t>(0, 8);
        /* Mostly the record's size, sometimes shorter or longer. */
        uint32_t length = RecordSize(type);
        switch (input.ConsumeIntegralInRange<int>(0, 3)) {
        case 0:
            length = input.ConsumeIntegralInRange<uint32_t>(0, 2 * length + 16);
            break;
        case 1:
            length = input.ConsumeIntegralInRange<uint32_t>(0, 65499);
            break;
        default:
            break;
        }
        bodies.push_back(input.ConsumeBytes<uint8_t>(length));
        bodies.back().resize(length); /* the input may run short: zeros behind it */
        entries.push_back({length == 0 && input.ConsumeBool() ? nullptr : bodies.back().data(), type, length});
    }
    if (!entries.empty()) {
        (void)manual_host::Deliver(entries);
    }
}

} // namespace fuzz
