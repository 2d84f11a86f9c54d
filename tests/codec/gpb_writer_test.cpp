/* GPB field writers: libprotobuf's bytes, read back, -2 for every capacity short of the fit. */
#include <functional>

#include "wire_check.h"

namespace {

using namespace codec_test;
using google::protobuf::io::CodedOutputStream;
using Writer = std::function<int32_t(uint8_t *, int32_t)>;

struct WriterCase {
    std::string name;
    Writer write;
    std::string ref;
    int number; /* 0: a bare varint, no field to read back */
    UnknownField::Type type;
    uint64_t varint;
    std::string bytes;
};

std::vector<WriterCase> WriterCases()
{
    const uint64_t values[] = {0, 1, 127, 128, 300, 16383, 16384, 0xffffffffull, 1ull << 32, 1ull << 63, UINT64_MAX};
    const uint32_t ids[] = {1, 15, 16, 33, 2047, 2048, (1u << 29) - 1}; /* one- to five-byte keys */
    std::vector<WriterCase> cases;
    for (uint64_t v : values) {
        for (uint32_t f : ids) {
            cases.push_back({"int " + std::to_string(f) + "=" + std::to_string(v),
                             [f, v](uint8_t *o, int32_t c) { return MDTLM_VRALDCN_GPB_EncodeInterger(f, v, o, c); },
                             CodedReference([f, v](CodedOutputStream &s) { s.WriteTag(f << 3); s.WriteVarint64(v); }),
                             static_cast<int>(f), UnknownField::TYPE_VARINT, v, ""});
        }
    }
    std::string data(1000, '\0');
    for (size_t i = 0; i < data.size(); ++i) {
        data[i] = static_cast<char>(i * 7);
    }
    for (uint32_t f : {1u, 33u, 2048u}) {
        for (size_t len : {0, 1, 127, 128, 1000}) {
            const std::string part = data.substr(0, len);
            cases.push_back({"bytes " + std::to_string(f) + "/" + std::to_string(len),
                             [f, part](uint8_t *o, int32_t c) {
                                 return MDTLM_VRALDCN_GPB_EncodeLengthDelimited(
                                     f, reinterpret_cast<const uint8_t *>(part.data()),
                                     static_cast<uint32_t>(part.size()), o, c);
                             },
                             CodedReference([&](CodedOutputStream &s) { WriteDelimited(s, f, part); }), static_cast<int>(f),
                             UnknownField::TYPE_LENGTH_DELIMITED, 0, part});
        }
    }
    cases.push_back({"string 200", [](uint8_t *o, int32_t c) {
                         return MDTLM_VRALDCN_GPB_EncodeString(33, std::string(200, 'a').c_str(), o, c); },
                     CodedReference([](CodedOutputStream &s) { WriteDelimited(s, 33, std::string(200, 'a')); }), 33,
                     UnknownField::TYPE_LENGTH_DELIMITED, 0, std::string(200, 'a')});
    return cases;
}

TEST_F(CodecLog, WritersMatchLibprotobufAndNeedEveryByte)
{
    for (const WriterCase &c : WriterCases()) {
        SCOPED_TRACE(c.name);
        const int32_t n = static_cast<int32_t>(c.ref.size());
        Guarded exact(c.ref.size());
        ASSERT_EQ(c.write(exact.out(), n), n);
        EXPECT_EQ(exact.Head(n), c.ref);
        EXPECT_TRUE(exact.GuardIntact());
        if (c.number != 0) {
            const auto fields = Decode(exact.Head(n));
            ASSERT_EQ(fields.size(), 1u);
            EXPECT_EQ(fields[0].number, c.number);
            EXPECT_EQ(fields[0].type, c.type);
            EXPECT_EQ(fields[0].varint, c.varint);
            EXPECT_EQ(fields[0].bytes, c.bytes);
        }
        for (int32_t cap = -1; cap < n; ++cap) {
            Guarded shorter(cap < 0 ? 0 : static_cast<size_t>(cap));
            ASSERT_EQ(c.write(shorter.out(), cap), MDTLM_ENCODE_NO_SPACE) << "cap " << cap;
            ASSERT_TRUE(shorter.GuardIntact()) << "cap " << cap;
        }
        EXPECT_EQ(c.write(nullptr, n), MDTLM_ENCODE_NO_SPACE);
    }
    for (const std::string &line : LevelAndText()) {
        ASSERT_EQ(line.substr(0, 2), "2 ") << line;
    }
}

TEST_F(CodecLog, FailureLinesWordForWord)
{
    static const uint8_t kData[200] = {};
    uint8_t buf[16];
    const std::string key = "2 [NTVVRALDCN_GPB_EncodeKey] Encode varint failed, fieldId: ";
    const struct {
        const char *name;
        std::function<int32_t()> call;
        int32_t result;
        std::vector<std::string> lines;
    } cases[] = {
        {"integer key short", [&] { return MDTLM_VRALDCN_GPB_EncodeInterger(33, 1, buf, 1); }, -2,
         {key + "33, wtiteType: 0, retLen: -2.",
          "2 [NTVVRALDCN_GPB_EncodeInterge] Encode field type failed, fieldId: 33, val: 1"}},
        {"integer value short (low 32 bits shown)",
         [&] { return MDTLM_VRALDCN_GPB_EncodeInterger(1, (1ull << 32) + 300, buf, 2); }, -2,
         {"2 [NTVVRALDCN_GPB_EncodeInterge] Encode val failed, fieldId: 1, val: 300"}},
        {"length varint short", [&] { return MDTLM_VRALDCN_GPB_EncodeLengthDelimited(5, kData, 200, buf, 2); }, -2,
         {"2 [NTVVRALDCN_GPB_EncodeLengthDelimited] Encode string length failed, fieldId: 5, totalLen: 1, "
          "buffLen: 2."}},
        {"data one byte short is silent",
         [&] { return MDTLM_VRALDCN_GPB_EncodeLengthDelimited(5, kData, 3, buf, 4); }, -2, {}},
        {"copy refused", [&] { return MDTLM_VRALDCN_GPB_EncodeLengthDelimited(5, nullptr, 3, buf, 10); }, -1,
         {"2 [NTVVRALDCN_GPB_EncodeLengthDelimited] Memery copy failed. fieldId: 5, totalLen: 2, buffLen: 10, "
          "leftBuffLen: 8."}},
        {"string capacity 0", [&] { return MDTLM_VRALDCN_GPB_EncodeString(7, "abc", buf, 0); }, -2,
         {key + "7, wtiteType: 2, retLen: -2.",
          "2 [NTVVRALDCN_GPB_EncodeLengthDelimited] Encode field type failed, fieldId: 7.",
          "2 [NTVVRALDCN_GPB_EncodeString] Encode string length failed, fieldId: 7, strVal: abc, buffLen: 0."}},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        FakeFramework::Get().ClearLogs();
        EXPECT_EQ(c.call(), c.result);
        EXPECT_EQ(LevelAndText(), c.lines);
    }
}

} // namespace
