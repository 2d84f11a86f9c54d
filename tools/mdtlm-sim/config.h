/*
 * The simulator's configuration: the telemetry tasks it subscribes, as the
 * framework would, and the settings of its built-in forwarding side.
 *
 * {
 *   "generator": {"rate": 20, "seed": 7, "invalid-share": 0},
 *   "tasks": [
 *     {"sensor": "flow", "instance": 1, "task": 10, "encoding": "json", "sample-interval": 5000,
 *      "conditions": [{"name": "direction", "value": "1"}],
 *      "filters": [{"name": "byte-count", "operator": "gt", "threshold": 4294967296}],
 *      "filter-logic": "and"}
 *   ]
 * }
 */
#ifndef MDTLM_SIM_CONFIG_H
#define MDTLM_SIM_CONFIG_H

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "json_source.h"
#include "mdtlm_types.h"
#include "sensor_table.h"

namespace mdtlm::sim {

struct ConditionConfig {
    std::string name;
    std::string value;
};

struct FilterConfig {
    std::string name;
    uint8_t op = MDTLM_FILTER_OP_EQ;
    uint64_t threshold = 0;
};

struct TaskConfig {
    const tools::SensorDesc *sensor = nullptr;
    uint32_t instance = 1;
    uint32_t task = 0;
    uint32_t encodeType = MDTLM_ENCODE_TYPE_GPB;
    uint32_t sampleInterval = 1000;
    std::vector<ConditionConfig> conditions;
    std::vector<FilterConfig> filters;
    uint32_t filterLogic = MDTLM_FILTER_LOGIC_AND;

    bool Json() const { return encodeType == MDTLM_ENCODE_TYPE_JSON; }
    const char *EncodingName() const { return Json() ? "json" : "gpb"; }
    /* "flow 1/10": sensor, instance, task. */
    std::string Label() const;
    /* The sensor-path block handed to the add entry. */
    MDTLM_SENSOR_PATH_INFO PathInfo() const;
};

struct GeneratorConfig {
    double rate = 5;   /* records per second per subscribed sensor */
    uint64_t seed = 1;
    double invalidShare = 0; /* share of values drawn from the values the plug-in refuses or cannot encode */
};

struct SimConfig {
    std::vector<TaskConfig> tasks;
    GeneratorConfig generator;
    /* "FILE:LINE: FIELD: note: ..." for values that were rewritten or behave unexpectedly. */
    std::vector<std::string> notes;

    /* Samples name only instance and task; the pair is unique across sensors. */
    const TaskConfig *FindTask(uint32_t instance, uint32_t task) const;
};

/* One key of the configuration file, as the reference documents it. */
struct ConfigKey {
    const char *key;
    const char *value;
    const char *meaning;
};

struct ConfigSection {
    const char *title;
    std::span<const ConfigKey> keys;
};

/* Every key the reader accepts, by object. */
std::span<const ConfigSection> ConfigSections();

class FieldCatalogue;

/* Throws tools::InputError "FILE:LINE: FIELD: problem" for anything malformed,
 * and for conditions and filters that the sensors in `catalogue` cannot test. */
SimConfig LoadConfig(const std::string &path, const FieldCatalogue &catalogue);
SimConfig ReadConfig(const tools::JsonSource &source, const FieldCatalogue &catalogue);

} // namespace mdtlm::sim

#endif /* MDTLM_SIM_CONFIG_H */
