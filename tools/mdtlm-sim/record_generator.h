/*
 * Realistic statistics records for the built-in forwarding side, drawn from the
 * value plans of the sensor table: both address families, tunnels on and off,
 * every enumeration value (now and then one without a text), counters above
 * 2^32, running sequence numbers.
 */
#ifndef MDTLM_SIM_RECORD_GENERATOR_H
#define MDTLM_SIM_RECORD_GENERATOR_H

#include <cstdint>
#include <map>
#include <random>

#include "sensor_table.h"
#include "stats_wire.h"

namespace mdtlm::sim {

class RecordGenerator {
public:
    explicit RecordGenerator(uint64_t seed) : random_(seed) {}

    tools::StatsMessage Make(const tools::SensorDesc &sensor);
    /* True with probability `p`. */
    bool Chance(double p) { return std::bernoulli_distribution(p)(random_); }
    uint64_t Between(uint64_t lo, uint64_t hi) { return std::uniform_int_distribution<uint64_t>(lo, hi)(random_); }

private:
    uint64_t PickNumber(const tools::SensorDesc &sensor, const tools::FieldDesc &field);

    std::mt19937_64 random_;
    std::map<uint32_t, uint32_t> sequence_; /* by sensor type */
};

} // namespace mdtlm::sim

#endif /* MDTLM_SIM_RECORD_GENERATOR_H */
