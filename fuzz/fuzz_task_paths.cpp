/*
 * Arbitrary sensor-path blocks through the add entries of every sensor, then
 * traffic, ticks, replacing adds and deletes in any order.
 */
#include "fuzz_host.h"
#include "mdtlm_vraldcn.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    FuzzedDataProvider input(data, size);
    fuzz::Start();
    while (input.remaining_bytes() > 0) {
        const uint32_t sensor = input.ConsumeIntegralInRange<uint32_t>(1, MDTLM_SENSOR_COUNT);
        const uint32_t instance = input.ConsumeIntegralInRange<uint32_t>(1, 2);
        const uint32_t task = sensor * 100 + input.ConsumeIntegralInRange<uint32_t>(0, 3);
        switch (input.ConsumeIntegralInRange<int>(0, 4)) {
        case 0:
        case 1:
            fuzz::AddTask(sensor, instance, task, fuzz::PathBlock(sensor, input));
            fuzz::Pump(false);
            break;
        case 2:
            fuzz::DelTask(sensor, instance, task);
            fuzz::Pump(false);
            break;
        case 3:
            fuzz::DeliverBatch(input);
            break;
        default:
            fuzz::Pump(true);
            break;
        }
    }
    fuzz::Pump(true);
    fuzz::StopAndCheck();
    return 0;
}
