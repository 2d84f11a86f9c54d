/*
 * The statistics receive path: arbitrary batches (types, lengths, bodies)
 * with period ticks in between, offered to a GPB and a JSON task of every
 * sensor and to tasks whose conditions and filters come from the input.
 */
#include "fuzz_host.h"
#include "mdtlm_vraldcn.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    FuzzedDataProvider input(data, size);
    fuzz::Start();
    for (uint32_t sensor = 1; sensor <= MDTLM_SENSOR_COUNT; ++sensor) {
        MDTLM_SENSOR_PATH_INFO plain{};
        plain.sampleInterval = 1000;
        fuzz::AddTask(sensor, 1, sensor * 100, plain);
        fuzz::AddTask(sensor, 1, sensor * 100 + 1, plain);
        fuzz::AddTask(sensor, 2, sensor * 100 + 2 + input.ConsumeIntegralInRange<uint32_t>(0, 1),
                      fuzz::PathBlock(sensor, input));
    }
    fuzz::Pump(false);
    while (input.remaining_bytes() > 0) {
        if (input.ConsumeIntegralInRange<int>(0, 7) == 0) {
            fuzz::Pump(true);
        } else {
            fuzz::DeliverBatch(input);
        }
    }
    fuzz::Pump(true);
    fuzz::StopAndCheck();
    return 0;
}
