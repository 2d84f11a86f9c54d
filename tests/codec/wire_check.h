/*
 * Helpers of the codec tests: an independent reading of the writers' bytes
 * (libprotobuf's unknown-field parser), a reference encoding (libprotobuf's
 * CodedOutputStream), guarded output buffers and the logging set-up.
 */
#ifndef MDTLM_TESTS_CODEC_WIRE_CHECK_H
#define MDTLM_TESTS_CODEC_WIRE_CHECK_H

#include <google/protobuf/io/coded_stream.h>
#include <google/protobuf/io/zero_copy_stream_impl_lite.h>
#include <google/protobuf/unknown_field_set.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "fake_framework.h"
#include "mdtlm_vraldcn.h"

namespace codec_test {

using google::protobuf::UnknownField;
using google::protobuf::UnknownFieldSet;

/* One decoded field: number, wire type and value. */
struct WireField {
    int number;
    UnknownField::Type type;
    uint64_t varint;
    std::string bytes;
};

inline std::vector<WireField> Decode(const uint8_t *data, int32_t len)
{
    UnknownFieldSet set;
    EXPECT_TRUE(set.ParseFromArray(data, len)) << "not a protobuf message";
    std::vector<WireField> fields;
    for (int i = 0; i < set.field_count(); ++i) {
        const UnknownField &f = set.field(i);
        WireField w{f.number(), f.type(), 0, {}};
        if (f.type() == UnknownField::TYPE_VARINT) {
            w.varint = f.varint();
        } else if (f.type() == UnknownField::TYPE_LENGTH_DELIMITED) {
            w.bytes = f.length_delimited();
        }
        fields.push_back(w);
    }
    return fields;
}

inline std::vector<WireField> Decode(const std::string &bytes)
{
    return Decode(reinterpret_cast<const uint8_t *>(bytes.data()), static_cast<int32_t>(bytes.size()));
}

/* The bytes libprotobuf writes for the same content. */
template <typename Fn>
std::string Reference(Fn write)
{
    std::string out(64 * 1024, '\0');
    google::protobuf::io::ArrayOutputStream array(out.data(), static_cast<int>(out.size()));
    int64_t used;
    {
        google::protobuf::io::CodedOutputStream stream(&array);
        write(stream);
        used = stream.ByteCount();
    }
    out.resize(static_cast<size_t>(used));
    return out;
}

/* An output range of `cap` bytes followed by guard bytes that no writer may touch. */
class Guarded {
public:
    static constexpr uint8_t kFill = 0xA5;
    static constexpr size_t kGuard = 16;

    explicit Guarded(size_t cap) : cap_(cap), bytes_(cap + kGuard, kFill) {}
    uint8_t *out() { return bytes_.data(); }
    int32_t cap() const { return static_cast<int32_t>(cap_); }
    std::string Head(int32_t n) const { return std::string(bytes_.begin(), bytes_.begin() + n); }
    bool GuardIntact() const
    {
        for (size_t i = cap_; i < bytes_.size(); ++i) {
            if (bytes_[i] != kFill) {
                return false;
            }
        }
        return true;
    }
    bool Untouched() const { return GuardIntact() && Head(cap()) == std::string(cap_, static_cast<char>(kFill)); }

private:
    size_t cap_;
    std::vector<uint8_t> bytes_;
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
    static std::vector<std::string> Shapes() { return FakeFramework::Get().Shapes(); }
    static std::vector<uint32_t> Levels()
    {
        std::vector<uint32_t> levels;
        for (const CapturedLog &log : FakeFramework::Get().Logs()) {
            levels.push_back(log.level);
        }
        return levels;
    }
};

inline std::string Line(const std::string &tagAndText) { return "[mdtlm.vraldcn.statis:#]" + tagAndText; }

} // namespace codec_test

#endif /* MDTLM_TESTS_CODEC_WIRE_CHECK_H */
