/* Codec test helpers: libprotobuf as reader and reference writer, guarded outputs, logs. */
#ifndef MDTLM_TESTS_CODEC_WIRE_CHECK_H
#define MDTLM_TESTS_CODEC_WIRE_CHECK_H

#include <google/protobuf/io/coded_stream.h>
#include <google/protobuf/io/zero_copy_stream_impl_lite.h>
#include <google/protobuf/unknown_field_set.h>
#include <gtest/gtest.h>

#include "fake_framework.h"
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

/* The bytes libprotobuf writes for the same content. */
template <typename Fn>
std::string Reference(Fn write)
{
    std::string out;
    {
        google::protobuf::io::StringOutputStream string(&out);
        google::protobuf::io::CodedOutputStream stream(&string);
        write(stream);
    }
    return out;
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
    /* Delivered lines as "level shape-without-label". */
    static std::vector<std::string> Logged()
    {
        const std::string label = "[mdtlm.vraldcn.statis:#]";
        std::vector<std::string> out;
        for (const CapturedLog &log : FakeFramework::Get().Logs()) {
            EXPECT_EQ(log.shape.rfind(label, 0), 0u) << log.text;
            out.push_back(std::to_string(log.level) + " " + log.shape.substr(label.size()));
        }
        return out;
    }
};

} // namespace codec_test

#endif /* MDTLM_TESTS_CODEC_WIRE_CHECK_H */
