/*
 * Reads decoded samples (see sample_check.h) in tests: the records of a
 * sample and their fields by name, failing the test on a name the schema
 * does not have.
 */
#ifndef MDTLM_TEST_PROTO_DECODE_H
#define MDTLM_TEST_PROTO_DECODE_H

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include <google/protobuf/message.h>

#include "sample_check.h"

// The record messages of a decoded Sample, in order (container field → repeated field 1).
std::vector<const google::protobuf::Message *> SampleRecords(const google::protobuf::Message &sample);
// Field accessors by name on a record message (uint32/uint64 widened; string as is); fail the test if absent.
uint64_t U(const google::protobuf::Message &m, const std::string &field);
std::string S(const google::protobuf::Message &m, const std::string &field);

// Whether the field was present on the wire (schemas use explicit presence);
// fails the test if the schema has no such field.
bool Has(const google::protobuf::Message &m, const std::string &field);

#endif /* MDTLM_TEST_PROTO_DECODE_H */
