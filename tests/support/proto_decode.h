/*
 * Decodes sample data areas with Google's protobuf library against the
 * schemas in proto/, without generated classes, so tests compare what the
 * plug-in's own wire writer produced with what a standard parser reads.
 */
#ifndef MDTLM_TEST_PROTO_DECODE_H
#define MDTLM_TEST_PROTO_DECODE_H

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include <google/protobuf/message.h>

// Loads proto/ schemas (MDTLM_PROTO_DIR) with google::protobuf::compiler::Importer and decodes bytes as
// `fullName` (e.g. "mdtlm.flow.Sample") into a DynamicMessage; on failure returns null and sets *error.
std::unique_ptr<google::protobuf::Message> DecodeSample(const std::string &protoFile, const std::string &fullName,
                                                        const std::string &bytes, std::string *error);
// The record messages of a decoded Sample, in order (container field → repeated field 1).
std::vector<const google::protobuf::Message *> SampleRecords(const google::protobuf::Message &sample);
// Field accessors by name on a record message (uint32/uint64 widened; string as is); fail the test if absent.
uint64_t U(const google::protobuf::Message &m, const std::string &field);
std::string S(const google::protobuf::Message &m, const std::string &field);

// Whether the field was present on the wire (schemas use explicit presence);
// fails the test if the schema has no such field.
bool Has(const google::protobuf::Message &m, const std::string &field);

#endif /* MDTLM_TEST_PROTO_DECODE_H */
