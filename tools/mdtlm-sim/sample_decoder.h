/*
 * Turns the data area of an uploaded sample into something a person can read
 * and into a list of records: JSON samples are parsed, GPB samples are decoded
 * with the sensors' protobuf schemas, loaded at run time.
 */
#ifndef MDTLM_SIM_SAMPLE_DECODER_H
#define MDTLM_SIM_SAMPLE_DECODER_H

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "options.h"
#include "sensor_table.h"

namespace mdtlm::sim {

struct DecodedSample {
    bool decoded = false;      /* false: `problem` says why; `text` shows what could be read */
    std::string text;          /* the sample for a person */
    nlohmann::ordered_json records = nlohmann::ordered_json::array(); /* one object per record, in order */
    std::string problem;
};

class SampleDecoder {
public:
    SampleDecoder(const std::string &protoDir, GpbFormat format, bool compact);
    ~SampleDecoder();
    SampleDecoder(const SampleDecoder &) = delete;
    SampleDecoder &operator=(const SampleDecoder &) = delete;

    /* One line per schema that could not be loaded. */
    const std::vector<std::string> &Warnings() const { return warnings_; }

    DecodedSample DecodeJson(const uint8_t *data, size_t length) const;
    DecodedSample DecodeGpb(const tools::SensorDesc &sensor, const uint8_t *data, size_t length) const;

private:
    struct Schemas;
    std::unique_ptr<Schemas> schemas_;
    std::vector<std::string> warnings_;
    GpbFormat format_;
    bool compact_;
};

} // namespace mdtlm::sim

#endif /* MDTLM_SIM_SAMPLE_DECODER_H */
