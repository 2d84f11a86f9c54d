/*
 * What a task of each sensor can test, read from the plug-in itself: the
 * condition and filter names of its handlers' maps, how each is compared and
 * the address-family codes of its records. The simulator checks
 * configurations against it and prints it as the configuration reference.
 */
#ifndef MDTLM_SIM_FIELD_REFERENCE_H
#define MDTLM_SIM_FIELD_REFERENCE_H

#include <cstdint>
#include <string>
#include <vector>

#include "sensor_table.h"

namespace mdtlm::sim {

struct TestableField {
    std::string name;
    uint32_t form = 0; /* MDTLM_FIELD_FORM_x */
};

struct SensorFields {
    const tools::SensorDesc *sensor = nullptr;
    std::vector<TestableField> conditions; /* in map order */
    std::vector<TestableField> filters;
    bool hasFamily = false;
    uint32_t familyIpv4 = 0;
    uint32_t familyIpv6 = 0;

    const TestableField *Condition(const std::string &name) const;
    const TestableField *Filter(const std::string &name) const;
    /* "flow-id, direction" */
    std::string ConditionNames() const;
    std::string FilterNames() const;
};

class FieldCatalogue {
public:
    /* Reads the catalogue the plug-in at `pluginPath` exports; throws std::runtime_error. */
    static FieldCatalogue Load(const std::string &pluginPath);

    const SensorFields &For(const tools::SensorDesc &sensor) const;
    const std::vector<SensorFields> &Sensors() const { return sensors_; }

private:
    std::vector<SensorFields> sensors_; /* in sensor-type order */
};

/* The configuration reference (docs/configuration.md): every configuration
 * key, then per sensor its conditions and filters. With `only`, just that
 * sensor's section. */
std::string ConfigurationReference(const FieldCatalogue &catalogue, const tools::SensorDesc *only = nullptr);

/* A condition value checked against the form of its field: `problem` when it
 * can never match; otherwise the value the plug-in compares (rewritten when
 * needed) and a note saying what was rewritten or what to expect. */
struct ConditionValueCheck {
    std::string problem;
    std::string value;
    std::string note;
};
ConditionValueCheck CheckConditionValue(const SensorFields &fields, const TestableField &field,
                                        const std::string &value);
/* A note for a filter whose threshold or field behaves unexpectedly, else "". */
std::string FilterNote(const TestableField &field, uint64_t threshold);

} // namespace mdtlm::sim

#endif /* MDTLM_SIM_FIELD_REFERENCE_H */
