/*
 * The GPB field writers, read back by libprotobuf and compared with the bytes
 * libprotobuf itself writes for the same content.
 */
#include <cstring>
#include <functional>

#include "wire_check.h"

namespace {

using namespace codec_test;
using google::protobuf::io::CodedInputStream;
using google::protobuf::io::CodedOutputStream;

const uint64_t kValues[] = {0, 1, 127, 128, 300, 16383, 16384, 0xffffffffull, 1ull << 32, 1ull << 63, UINT64_MAX};
/* One-, two-, three- and five-byte keys. */
const uint32_t kFields[] = {1, 15, 16, 33, 2047, 2048, (1u << 29) - 1};

TEST(GpbVarint, WritesLibprotobufBytesAndNeedsEveryOne)
{
    for (uint64_t value : kValues) {
        SCOPED_TRACE(value);
        const std::string ref = Reference([&](CodedOutputStream &s) { s.WriteVarint64(value); });
        const int32_t n = static_cast<int32_t>(ref.size());

        Guarded exact(ref.size());
        ASSERT_EQ(MDTLM_VRALDCN_GPB_EncodeVarint(value, exact.out(), n), n);
        EXPECT_EQ(exact.Head(n), ref);
        EXPECT_TRUE(exact.GuardIntact());
        uint64_t read = 0;
        CodedInputStream in(exact.out(), n);
        ASSERT_TRUE(in.ReadVarint64(&read));
        EXPECT_EQ(read, value);

        Guarded shorter(ref.size() - 1);
        EXPECT_EQ(MDTLM_VRALDCN_GPB_EncodeVarint(value, shorter.out(), n - 1), MDTLM_ENCODE_NO_SPACE);
        EXPECT_TRUE(shorter.GuardIntact());
    }
    uint8_t ten[10];
    EXPECT_EQ(MDTLM_VRALDCN_GPB_EncodeVarint(UINT64_MAX, ten, 10), 10);
    EXPECT_EQ(MDTLM_VRALDCN_GPB_EncodeVarint(UINT64_MAX, ten, 9), MDTLM_ENCODE_NO_SPACE);
}

TEST(GpbVarint, RefusesNullAndNonPositiveCapacities)
{
    uint8_t byte = 0xA5;
    const struct {
        uint8_t *out;
        int32_t cap;
    } cases[] = {{nullptr, 16}, {&byte, 0}, {&byte, -1}, {&byte, INT32_MIN}};
    for (const auto &c : cases) {
        EXPECT_EQ(MDTLM_VRALDCN_GPB_EncodeVarint(0, c.out, c.cap), MDTLM_ENCODE_NO_SPACE);
    }
    EXPECT_EQ(byte, 0xA5);
}

TEST(GpbInteger, FieldsAndValuesDecodeAsWritten)
{
    for (uint32_t field : kFields) {
        for (uint64_t value : kValues) {
            SCOPED_TRACE(std::to_string(field) + "=" + std::to_string(value));
            const std::string ref = Reference([&](CodedOutputStream &s) {
                s.WriteTag(field << 3);
                s.WriteVarint64(value);
            });
            Guarded exact(ref.size());
            ASSERT_EQ(MDTLM_VRALDCN_GPB_EncodeInterger(field, value, exact.out(), exact.cap()), exact.cap());
            EXPECT_EQ(exact.Head(exact.cap()), ref);
            EXPECT_TRUE(exact.GuardIntact());
            const auto fields = Decode(exact.out(), exact.cap());
            ASSERT_EQ(fields.size(), 1u);
            EXPECT_EQ(fields[0].number, static_cast<int>(field));
            EXPECT_EQ(fields[0].type, UnknownField::TYPE_VARINT);
            EXPECT_EQ(fields[0].varint, value);
        }
    }
    uint8_t out[8];
    ASSERT_EQ(MDTLM_VRALDCN_GPB_EncodeInterger(1, 0, out, sizeof(out)), 2);
    EXPECT_EQ(std::string(reinterpret_cast<char *>(out), 2), std::string("\x08\x00", 2));
    ASSERT_EQ(MDTLM_VRALDCN_GPB_EncodeInterger(33, 1, out, sizeof(out)), 3);
    EXPECT_EQ(std::string(reinterpret_cast<char *>(out), 3), "\x88\x02\x01");
}

TEST(GpbLengthDelimited, BytesAndTextsDecodeAsWritten)
{
    std::string data(1000, '\0');
    for (size_t i = 0; i < data.size(); ++i) {
        data[i] = static_cast<char>(i * 7);
    }
    for (uint32_t field : {1u, 33u, 2048u}) {
        for (size_t len : {0, 1, 127, 128, 1000}) {
            SCOPED_TRACE(std::to_string(field) + "/" + std::to_string(len));
            const std::string ref = Reference([&](CodedOutputStream &s) {
                s.WriteTag((field << 3) | 2);
                s.WriteVarint32(static_cast<uint32_t>(len));
                s.WriteRaw(data.data(), static_cast<int>(len));
            });
            /* Exact fit, including key and 0x00 exactly filling the range for no bytes. */
            Guarded exact(ref.size());
            ASSERT_EQ(MDTLM_VRALDCN_GPB_EncodeLengthDelimited(field, reinterpret_cast<const uint8_t *>(data.data()),
                                                              static_cast<uint32_t>(len), exact.out(), exact.cap()),
                      exact.cap());
            EXPECT_EQ(exact.Head(exact.cap()), ref);
            EXPECT_TRUE(exact.GuardIntact());
            const auto fields = Decode(exact.out(), exact.cap());
            ASSERT_EQ(fields.size(), 1u);
            EXPECT_EQ(fields[0].number, static_cast<int>(field));
            EXPECT_EQ(fields[0].type, UnknownField::TYPE_LENGTH_DELIMITED);
            EXPECT_EQ(fields[0].bytes, data.substr(0, len));
        }
    }
    for (const std::string &text : {std::string(), std::string("flow-id"), std::string(200, 'a')}) {
        SCOPED_TRACE(text.size());
        const std::string ref = Reference([&](CodedOutputStream &s) {
            s.WriteTag((33 << 3) | 2);
            s.WriteVarint32(static_cast<uint32_t>(text.size()));
            s.WriteString(text);
        });
        Guarded exact(ref.size());
        ASSERT_EQ(MDTLM_VRALDCN_GPB_EncodeString(33, text.c_str(), exact.out(), exact.cap()), exact.cap());
        EXPECT_EQ(exact.Head(exact.cap()), ref);
        EXPECT_TRUE(exact.GuardIntact());
    }
}

TEST(GpbLengthDelimited, DataOneByteShortIsSilentNoSpace)
{
    /* Neither the key nor the length is short, so nothing reaches the log. */
    const uint8_t data[3] = {1, 2, 3};
    Guarded shorter(1 + 1 + 2);
    EXPECT_EQ(MDTLM_VRALDCN_GPB_EncodeLengthDelimited(5, data, 3, shorter.out(), shorter.cap()),
              MDTLM_ENCODE_NO_SPACE);
    EXPECT_TRUE(shorter.GuardIntact());
}

/* Every capacity below the exact fit fails with -2, logs only failures and
 * writes nothing past the capacity. */
TEST_F(CodecLog, EveryShortCapacityIsNoSpace)
{
    const std::string text(130, 't');
    const std::function<int32_t(uint8_t *, int32_t)> writers[] = {
        [](uint8_t *o, int32_t c) { return MDTLM_VRALDCN_GPB_EncodeFieldType(2048, 2, o, c); },
        [](uint8_t *o, int32_t c) { return MDTLM_VRALDCN_GPB_EncodeInterger(33, UINT64_MAX, o, c); },
        [&](uint8_t *o, int32_t c) { return MDTLM_VRALDCN_GPB_EncodeString(33, text.c_str(), o, c); },
        [](uint8_t *o, int32_t c) { return MDTLM_VRALDCN_GPB_EncodeString(1, "", o, c); },
    };
    for (const auto &write : writers) {
        Guarded probe(256);
        const int32_t n = write(probe.out(), probe.cap());
        ASSERT_GT(n, 0);
        for (int32_t cap = -1; cap < n; ++cap) {
            Guarded shorter(cap < 0 ? 0 : static_cast<size_t>(cap));
            EXPECT_EQ(write(shorter.out(), cap), MDTLM_ENCODE_NO_SPACE) << "cap " << cap;
            EXPECT_TRUE(shorter.GuardIntact()) << "cap " << cap;
        }
        EXPECT_EQ(write(nullptr, n), MDTLM_ENCODE_NO_SPACE);
    }
    for (uint32_t level : Levels()) {
        EXPECT_EQ(level, static_cast<uint32_t>(MDTLM_LOG_FAILURE));
    }
}

TEST_F(CodecLog, FailureLinesWordForWord)
{
    static const uint8_t kData[200] = {};
    uint8_t buf[16];
    const struct {
        const char *name;
        std::function<int32_t()> call;
        int32_t result;
        std::vector<std::string> lines;
    } cases[] = {
        {"key of two bytes into one", [&] { return MDTLM_VRALDCN_GPB_EncodeFieldType(33, 2, buf, 1); }, -2,
         {Line("[NTVVRALDCN_GPB_EncodeKey] Encode varint failed, fieldId: 33, wtiteType: 2, retLen: -2.")}},
        {"integer key short", [&] { return MDTLM_VRALDCN_GPB_EncodeInterger(33, 1, buf, 1); }, -2,
         {Line("[NTVVRALDCN_GPB_EncodeKey] Encode varint failed, fieldId: 33, wtiteType: 0, retLen: -2."),
          Line("[NTVVRALDCN_GPB_EncodeInterge] Encode field type failed, fieldId: 33, val: 1")}},
        {"integer value short (low 32 bits shown)",
         [&] { return MDTLM_VRALDCN_GPB_EncodeInterger(1, (1ull << 32) + 300, buf, 2); }, -2,
         {Line("[NTVVRALDCN_GPB_EncodeInterge] Encode val failed, fieldId: 1, val: 300")}},
        {"length-delimited null output",
         [&] { return MDTLM_VRALDCN_GPB_EncodeLengthDelimited(5, kData, 3, nullptr, 10); }, -2,
         {Line("[NTVVRALDCN_GPB_EncodeKey] Encode varint failed, fieldId: 5, wtiteType: 2, retLen: -2."),
          Line("[NTVVRALDCN_GPB_EncodeLengthDelimited] Encode field type failed, fieldId: 5.")}},
        {"length varint short", [&] { return MDTLM_VRALDCN_GPB_EncodeLengthDelimited(5, kData, 200, buf, 2); }, -2,
         {Line("[NTVVRALDCN_GPB_EncodeLengthDelimited] Encode string length failed, fieldId: 5, totalLen: 1, "
               "buffLen: 2.")}},
        {"copy refused", [&] { return MDTLM_VRALDCN_GPB_EncodeLengthDelimited(5, nullptr, 3, buf, 10); }, -1,
         {Line("[NTVVRALDCN_GPB_EncodeLengthDelimited] Memery copy failed. fieldId: 5, totalLen: 2, buffLen: 10, "
               "leftBuffLen: 8.")}},
        {"string room short", [&] { return MDTLM_VRALDCN_GPB_EncodeString(7, "abc", buf, 4); }, -2,
         {Line("[NTVVRALDCN_GPB_EncodeString] Encode string length failed, fieldId: 7, strVal: abc, buffLen: 4.")}},
        {"string capacity 0", [&] { return MDTLM_VRALDCN_GPB_EncodeString(7, "abc", buf, 0); }, -2,
         {Line("[NTVVRALDCN_GPB_EncodeKey] Encode varint failed, fieldId: 7, wtiteType: 2, retLen: -2."),
          Line("[NTVVRALDCN_GPB_EncodeLengthDelimited] Encode field type failed, fieldId: 7."),
          Line("[NTVVRALDCN_GPB_EncodeString] Encode string length failed, fieldId: 7, strVal: abc, buffLen: 0.")}},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        FakeFramework::Get().ClearLogs();
        EXPECT_EQ(c.call(), c.result);
        EXPECT_EQ(Shapes(), c.lines);
        EXPECT_EQ(Levels(), std::vector<uint32_t>(c.lines.size(), MDTLM_LOG_FAILURE));
    }
}

} // namespace
