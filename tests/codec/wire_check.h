/* Codec test helpers: libprotobuf as reader (and, in coded_reference.h, as reference writer), guarded outputs, logs. */
#ifndef MDTLM_TESTS_CODEC_WIRE_CHECK_H
#define MDTLM_TESTS_CODEC_WIRE_CHECK_H

#include <google/protobuf/unknown_field_set.h>
#include <gtest/gtest.h>

#include "coded_reference.h"
#include "plugin_fixture.h"
#include "mdtlm_vraldcn.h"

namespace codec_test {

using google::protobuf::UnknownField;

struct WireField {
    int number;
    UnknownField::Type type;
    uint64_t varint;
    std::string bytes;
};

inline std::vector<WireField> Decode(const std::string &bytes)
{
    google::protobuf::UnknownFieldSet set;
    EXPECT_TRUE(set.ParseFromString(bytes)) << "not a protobuf message";
    std::vector<WireField> fields;
    for (int i = 0; i < set.field_count(); ++i) {
        const UnknownField &f = set.field(i);
        fields.push_back({f.number(), f.type(), f.type() == UnknownField::TYPE_VARINT ? f.varint() : 0,
                          f.type() == UnknownField::TYPE_LENGTH_DELIMITED ? f.length_delimited() : ""});
    }
    return fields;
}

/* An output range of `cap` bytes followed by guard bytes that no writer may touch. */
struct Guarded {
    static constexpr uint8_t kFill = 0xA5;
    explicit Guarded(size_t capacity) : cap_(capacity), bytes(capacity + 16, kFill) {}
    uint8_t *out() { return bytes.data(); }
    int32_t cap() const { return static_cast<int32_t>(cap_); }
    std::string Head(int32_t n) const { return std::string(bytes.begin(), bytes.begin() + n); }
    bool GuardIntact() const { return std::string(bytes.begin() + cap_, bytes.end()) == std::string(16, kFill); }
    bool Untouched() const { return Head(static_cast<int32_t>(bytes.size())) == std::string(bytes.size(), kFill); }
    size_t cap_;
    std::vector<uint8_t> bytes;
};

/* Tests that check log lines bind the framework double's table first. */
class CodecLog : public ::testing::Test {
protected:
    void SetUp() override
    {
        FakeFramework::Get().Install();
        ASSERT_EQ(MDTLM_VRALDCN_InitTlmFrmVtbl(), 0u);
        FakeFramework::Get().ClearLogs();
    }
};

} // namespace codec_test

#endif /* MDTLM_TESTS_CODEC_WIRE_CHECK_H */
