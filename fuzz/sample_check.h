/*
 * Checks a sample the plug-in uploaded: a GPB sample must parse as its
 * sensor's sample message with libprotobuf, hold `itemCnt` records and carry
 * no bytes the schema does not know; a JSON sample must be framed by its
 * sensor's header and "]}}". Returns an empty text when it holds.
 */
#ifndef MDTLM_FUZZ_SAMPLE_CHECK_H
#define MDTLM_FUZZ_SAMPLE_CHECK_H

#include <cstdint>
#include <string>

#include <google/protobuf/message.h>

std::string CheckGpbSample(uint32_t sensorType, const std::string &data, uint32_t itemCnt);
std::string CheckJsonSample(uint32_t sensorType, const std::string &data, uint32_t itemCnt);

/* Parses `bytes` as the sensor's sample message; null when they do not parse. */
std::unique_ptr<google::protobuf::Message> ParseSample(uint32_t sensorType, const std::string &bytes);

/* True when the message or any message inside it carries unknown fields. */
bool HasUnknownFields(const google::protobuf::Message &message);

#endif /* MDTLM_FUZZ_SAMPLE_CHECK_H */
