/*
 * Reads protobuf wire bytes field by field with the protobuf library's own
 * stream reader, so tests can check field order and the framing of records.
 */
#ifndef MDTLM_TEST_FLOW_WIRE_H
#define MDTLM_TEST_FLOW_WIRE_H

#include <cstdint>
#include <string>
#include <vector>

#include <google/protobuf/io/coded_stream.h>
#include <gtest/gtest.h>

namespace flowtest {

struct WireField {
    uint32_t number;
    uint32_t wireType;
    uint64_t value;      /* varint fields */
    std::string bytes;   /* length-delimited fields */

    bool operator==(const WireField &o) const
    {
        return number == o.number && wireType == o.wireType && value == o.value && bytes == o.bytes;
    }
};

inline void PrintTo(const WireField &f, std::ostream *os)
{
    *os << "{" << f.number << "/" << f.wireType << ": " << (f.wireType == 0 ? std::to_string(f.value) : f.bytes)
        << "}";
}

inline WireField Int(uint32_t number, uint64_t value) { return {number, 0, value, {}}; }
inline WireField Text(uint32_t number, const std::string &text) { return {number, 2, 0, text}; }

/* The fields of a flat message in wire order; fails the test on anything but
 * varint and length-delimited fields or on truncated bytes. */
inline std::vector<WireField> Fields(const std::string &wire)
{
    std::vector<WireField> fields;
    google::protobuf::io::CodedInputStream in(reinterpret_cast<const uint8_t *>(wire.data()),
                                              static_cast<int>(wire.size()));
    while (true) {
        const uint32_t tag = in.ReadTag();
        if (tag == 0) {
            EXPECT_TRUE(in.ConsumedEntireMessage() || in.CurrentPosition() == static_cast<int>(wire.size()));
            return fields;
        }
        WireField f{tag >> 3, tag & 7, 0, {}};
        if (f.wireType == 0) {
            EXPECT_TRUE(in.ReadVarint64(&f.value)) << "truncated varint of field " << f.number;
        } else if (f.wireType == 2) {
            uint32_t len = 0;
            EXPECT_TRUE(in.ReadVarint32(&len) && in.ReadString(&f.bytes, static_cast<int>(len)))
                << "truncated field " << f.number;
        } else {
            ADD_FAILURE() << "unexpected wire type " << f.wireType << " of field " << f.number;
            return fields;
        }
        fields.push_back(f);
    }
}

inline std::vector<uint32_t> Numbers(const std::vector<WireField> &fields)
{
    std::vector<uint32_t> numbers;
    for (const WireField &f : fields) {
        numbers.push_back(f.number);
    }
    return numbers;
}

/* The record body inside one framed record: container field, then field 1. */
inline std::string BodyOf(const std::string &framed, uint32_t containerField)
{
    const std::vector<WireField> outer = Fields(framed);
    if (outer.size() != 1 || outer[0].number != containerField || outer[0].wireType != 2) {
        ADD_FAILURE() << "not one container field " << containerField;
        return {};
    }
    const std::vector<WireField> inner = Fields(outer[0].bytes);
    if (inner.size() != 1 || inner[0].number != 1 || inner[0].wireType != 2) {
        ADD_FAILURE() << "container does not hold one field 1";
        return {};
    }
    return inner[0].bytes;
}

} // namespace flowtest

#endif /* MDTLM_TEST_FLOW_WIRE_H */
