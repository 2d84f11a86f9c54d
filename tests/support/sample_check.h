/*
 * Reads sample data areas with Google's protobuf library against the schemas
 * in proto/ (MDTLM_PROTO_DIR), without generated classes, so that tests and
 * fuzz targets compare what the plug-in's own wire writer produced with what
 * a standard parser reads. Free of the test framework: the fuzz targets link
 * it too.
 */
#ifndef MDTLM_TEST_SAMPLE_CHECK_H
#define MDTLM_TEST_SAMPLE_CHECK_H

#include <cstdint>
#include <memory>
#include <string>

#include <google/protobuf/message.h>

#include "mdtlm_types.h"

/* Where a sensor's samples are described: the schema file and sample
 * message of GPB samples, the two keys that open JSON samples. */
struct SampleSchema {
    const char *protoFile, *sampleName, *jsonOuter, *jsonInner;
};

/* Row `sensorType - 1` describes that sensor's samples. */
inline constexpr SampleSchema kSampleSchemas[MDTLM_SENSOR_COUNT] = {
    {"flow_statistics.proto", "mdtlm.flow.Sample", "flow_statistics", "flow_statistic"},
    {"flow_hop_statistics.proto", "mdtlm.flowhop.Sample", "flow_hop_statistics", "flow_hop_statistic"},
    {"io_service_flow_statistics.proto", "mdtlm.srvtlmflow.Sample", "flow_statistics", "flow_statistic"},
    {"result_statistics.proto", "mdtlm.quma.Sample", "result-statistic", "result-statistic"},
    {"io_service_flow_throughput.proto", "mdtlm.srvtlmfct.Sample", "flow_throughput_statistics",
     "flow_throughput_statistic"},
    {"export_flow_caches.proto", "mdtlm.zelk.Sample", "export-flow-caches", "export-flow-cache"},
};

/* Decodes bytes as `fullName` (e.g. "mdtlm.flow.Sample") of `protoFile`;
 * on failure returns null and sets *error. */
std::unique_ptr<google::protobuf::Message> DecodeSample(const std::string &protoFile, const std::string &fullName,
                                                        const std::string &bytes, std::string *error);

/* Parses `bytes` as the sensor's sample message; null when they do not parse. */
std::unique_ptr<google::protobuf::Message> ParseSample(uint32_t sensorType, const std::string &bytes);

/* True when the message or any message inside it carries unknown fields. */
bool HasUnknownFields(const google::protobuf::Message &message);

/* A GPB sample must parse as its sensor's sample message, hold `itemCnt`
 * records and carry no bytes the schema does not know; a JSON sample must be
 * framed by its sensor's header and "]}}". Empty when it holds, otherwise
 * what is wrong. */
std::string CheckGpbSample(uint32_t sensorType, const std::string &data, uint32_t itemCnt);
std::string CheckJsonSample(uint32_t sensorType, const std::string &data, uint32_t itemCnt);

#endif /* MDTLM_TEST_SAMPLE_CHECK_H */
