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
#include <string>
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

/* Fires one period tick and runs the loop until it is idle. */
void Tick();
/* Runs the loop until it is idle. */
void Pump();

/* Installs the framework double and the manual host; call before Run. */
void PrepareHost();
/* Runs the scenario; the result of MDTLM_VRALDCN_Init. */
uint32_t Run();

/* What must hold after any run: empty when nothing is left behind, otherwise
 * one description per leftover (buffers, database handles, platform objects,
 * plug-in handles, threads). */
std::vector<std::string> Leftovers();

} // namespace robustness

#endif /* MDTLM_TESTS_ROBUSTNESS_SCENARIO_H */
