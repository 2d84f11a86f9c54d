/*
 * What the fuzz targets share: the plug-in started on the calling thread
 * (manual clock and tasks) with the framework double, tasks built from fuzz
 * input, and the checks every input must pass: every buffer back, no
 * platform object or database handle left, every sample decodable.
 */
#ifndef MDTLM_FUZZ_HOST_H
#define MDTLM_FUZZ_HOST_H

#include <cstdint>
#include <vector>

#include <fuzzer/FuzzedDataProvider.h>

#include "mdtlm_types.h"

namespace fuzz {

/* Starts the plug-in; aborts when it does not start. */
void Start();
/* Unloads the plug-in, then checks and aborts on anything left behind and
 * on any sample that does not decode. */
void StopAndCheck();

/* Runs the loop until idle; fires one period tick first when `tick`. */
void Pump(bool tick);

/* Record size of a sensor type, 0 for other types. */
uint32_t RecordSize(uint32_t sensorType);

/* A sensor-path block from fuzz input: any encode type, interval, conditions
 * and filters naming the sensor's own fields or arbitrary text. */
MDTLM_SENSOR_PATH_INFO PathBlock(uint32_t sensorType, FuzzedDataProvider &input);

/* Adds a task through the sensor's add entry. Task ids are sensor * 100 + n
 * and carry the encoding, so that samples can be checked: odd n is JSON (the
 * block's encode type is set to match). */
void AddTask(uint32_t sensorType, uint32_t instanceId, uint32_t taskId, const MDTLM_SENSOR_PATH_INFO &block);
void DelTask(uint32_t sensorType, uint32_t instanceId, uint32_t taskId);

/* Hands entries to the receive callback as one batch: type, claimed length
 * and body bytes from the input (the body never runs past what the input
 * holds, as the channel guarantees for its datagrams). */
void DeliverBatch(FuzzedDataProvider &input);

} // namespace fuzz

#endif /* MDTLM_FUZZ_HOST_H */
