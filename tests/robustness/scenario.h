/*
 * The whole life of the plug-in in one scenario, driven on the calling thread
 * (manual clock and tasks): start-up, a GPB and a JSON task on every sensor,
 * traffic, ticks, deletes, traffic again and a full unload. The fault sweep
 * reruns it with one failure injected at a time; the fuzz targets and the
 * concurrency test reuse its records and tasks.
 */
#ifndef MDTLM_TESTS_ROBUSTNESS_SCENARIO_H
#define MDTLM_TESTS_ROBUSTNESS_SCENARIO_H

#include <cstdint>
#include <vector>

#include "mdtlm_types.h"

namespace robustness {

/* One valid record of a sensor, as the forwarding side sends it. */
struct SensorRecord {
    uint32_t sensorType;
    std::vector<uint8_t> body;
};

/* One record of every sensor, each passing the scenario's tasks. */
const std::vector<SensorRecord> &Records();

/* The sensor-path block of the scenario's task: GPB or JSON, no conditions. */
MDTLM_SENSOR_PATH_INFO TaskBlock(uint32_t encodeType);

/* Hands every record to the receive callback, `copies` times each, in one batch. */
void DeliverAll(uint32_t copies);

/* Runs the scenario on a host made ready by manual_host::Prepare; the result
 * of MDTLM_VRALDCN_Init. Check manual_host::Leftovers afterwards. */
uint32_t Run();

} // namespace robustness

#endif /* MDTLM_TESTS_ROBUSTNESS_SCENARIO_H */
