/*
 * Realistic statistics records for the built-in forwarding side, drawn from the
 * value plans of the sensor table: both address families, tunnels on and off,
 * every enumeration value, counters above 2^32, running sequence numbers.
 * With an invalid share above 0, that share of the fields that have them get
 * values the plug-in rejects or cannot encode (an enumeration value without a
 * text, an address family that is neither IPv4 nor IPv6).
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
    RecordGenerator(uint64_t seed, double invalidShare) : random_(seed), invalidShare_(invalidShare) {}

    tools::StatsMessage Make(const tools::SensorDesc &sensor);
    /* True with probability `p`. */
    bool Chance(double p) { return std::bernoulli_distribution(p)(random_); }
    uint64_t Between(uint64_t lo, uint64_t hi) { return std::uniform_int_distribution<uint64_t>(lo, hi)(random_); }

private:
    uint64_t PickNumber(const tools::SensorDesc &sensor, const tools::FieldDesc &field);

    std::mt19937_64 random_;
    double invalidShare_;
    std::map<uint32_t, uint32_t> sequence_; /* by sensor type */
};

} // namespace mdtlm::sim

#endif /* MDTLM_SIM_RECORD_GENERATOR_H */
