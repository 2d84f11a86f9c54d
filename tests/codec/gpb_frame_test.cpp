/*
 * Record framing and field chaining, read back by libprotobuf.
 */
#include <cstring>

#include "gpb_chain.h"
/* The framing helper is internal to the plug-in (hidden there); the test
 * builds its own copy of the one unit. */
#include "gpb_frame.cpp"
#include "wire_check.h"

namespace {

using namespace codec_test;

/* A body of `size` bytes, counted. */
struct Body {
    size_t size;
    int32_t fail; /* returned instead when negative */
    int calls;
};

int32_t WriteBody(const void *record, uint8_t *out, int32_t cap)
{
    Body *body = static_cast<Body *>(const_cast<void *>(record));
    body->calls++;
    if (body->fail < 0) {
        return body->fail;
    }
    if (static_cast<int64_t>(body->size) > cap) {
        return MDTLM_ENCODE_NO_SPACE;
    }
    for (size_t i = 0; i < body->size; ++i) {
        out[i] = static_cast<uint8_t>(i * 13 + 1);
    }
    return static_cast<int32_t>(body->size);
}

std::string BodyBytes(size_t size)
{
    std::string bytes(size, '\0');
    for (size_t i = 0; i < size; ++i) {
        bytes[i] = static_cast<char>(i * 13 + 1);
    }
    return bytes;
}

uint8_t g_scratch1[MDTLM_GPB_SCRATCH_SIZE];
uint8_t g_scratch2[MDTLM_GPB_SCRATCH_SIZE];

TEST(GpbFrame, RecordSitsInFieldOneOfTheContainer)
{
    const struct {
        size_t body;
        uint32_t container;
        int32_t total;
    } cases[] = {
        {0, 2, 4},            /* 12 02 0A 00 */
        {10, 3, 14},          /* one-byte lengths */
        {200, 33, 2 + 2 + 3 + 200}, /* two-byte container key and lengths */
        {1021, 2, 1 + 2 + 1024},    /* 1 + 2 + 1021 exactly fills the wrapping's scratch */
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.body);
        Body body{c.body, 0, 0};
        Guarded exact(static_cast<size_t>(c.total));
        ASSERT_EQ(MDTLM_GPB_FrameRecord(WriteBody, &body, g_scratch1, g_scratch2, c.container, exact.out(),
                                        exact.cap()),
                  c.total);
        EXPECT_TRUE(exact.GuardIntact());
        const auto outer = Decode(exact.out(), c.total);
        ASSERT_EQ(outer.size(), 1u);
        EXPECT_EQ(outer[0].number, static_cast<int>(c.container));
        ASSERT_EQ(outer[0].type, UnknownField::TYPE_LENGTH_DELIMITED);
        const auto entry = Decode(outer[0].bytes);
        ASSERT_EQ(entry.size(), 1u);
        EXPECT_EQ(entry[0].number, 1);
        ASSERT_EQ(entry[0].type, UnknownField::TYPE_LENGTH_DELIMITED);
        EXPECT_EQ(entry[0].bytes, BodyBytes(c.body));

        /* One byte short at the caller's output: -2, nothing past the capacity. */
        Guarded shorter(static_cast<size_t>(c.total - 1));
        EXPECT_EQ(MDTLM_GPB_FrameRecord(WriteBody, &body, g_scratch1, g_scratch2, c.container, shorter.out(),
                                        shorter.cap()),
                  MDTLM_ENCODE_NO_SPACE);
        EXPECT_TRUE(shorter.GuardIntact());
    }
}

TEST(GpbFrame, FailuresLeaveTheOutputUntouched)
{
    const struct {
        const char *name;
        Body body;
        bool nullOut;
        int32_t cap;
        int32_t result;
        int calls;
    } cases[] = {
        {"wrapping of 1022 exceeds scratch", {1022, 0, 0}, false, 4096, MDTLM_ENCODE_NO_SPACE, 1},
        {"body exceeds scratch", {1025, 0, 0}, false, 4096, MDTLM_ENCODE_NO_SPACE, 1},
        {"body fails", {10, MDTLM_ENCODE_FAIL, 0}, false, 4096, MDTLM_ENCODE_FAIL, 1},
        {"null output", {10, 0, 0}, true, 4096, MDTLM_ENCODE_NO_SPACE, 0},
        {"capacity 0", {10, 0, 0}, false, 0, MDTLM_ENCODE_NO_SPACE, 0},
        {"negative capacity", {10, 0, 0}, false, -5, MDTLM_ENCODE_NO_SPACE, 0},
    };
    for (auto c : cases) {
        SCOPED_TRACE(c.name);
        Guarded out(c.cap > 0 ? static_cast<size_t>(c.cap) : 0);
        EXPECT_EQ(MDTLM_GPB_FrameRecord(WriteBody, &c.body, g_scratch1, g_scratch2, 2, c.nullOut ? nullptr : out.out(),
                                        c.cap),
                  c.result);
        EXPECT_EQ(c.body.calls, c.calls);
        EXPECT_TRUE(out.Untouched());
    }
}

/* A sensor-style record encoder: fields and a group in one flat message. */
struct Rec {
    uint32_t id;
    uint64_t count;
    char name[16];
    uint8_t raw[3];
};

int32_t WriteGroup(const Rec *rec, uint8_t *out, int32_t cap)
{
    MDTLM_GPB_CHAIN chain(out, cap);
    chain.Int(10, rec->count).Str(11, rec->name);
    return chain.Result();
}

int32_t WriteRec(const Rec *rec, uint8_t *out, int32_t cap)
{
    MDTLM_GPB_CHAIN chain(out, cap);
    chain.Int(1, rec->id);
    chain.Group(WriteGroup, rec);
    chain.Bytes(33, rec->raw, sizeof(rec->raw));
    chain.Int(2, 0);
    return chain.Result();
}

TEST(GpbChain, FieldsAndGroupsFormOneFlatMessage)
{
    const Rec rec{7, UINT64_MAX, "flow", {1, 2, 3}};
    uint8_t out[64];
    const int32_t n = WriteRec(&rec, out, sizeof(out));
    ASSERT_EQ(n, 2 + 11 + 6 + 6 + 2);
    const auto fields = Decode(out, n);
    ASSERT_EQ(fields.size(), 5u);
    const int numbers[] = {1, 10, 11, 33, 2};
    for (size_t i = 0; i < 5; ++i) {
        EXPECT_EQ(fields[i].number, numbers[i]);
    }
    EXPECT_EQ(fields[0].varint, 7u);
    EXPECT_EQ(fields[1].varint, UINT64_MAX);
    EXPECT_EQ(fields[2].bytes, "flow");
    EXPECT_EQ(fields[3].bytes, std::string("\x01\x02\x03"));
    EXPECT_EQ(fields[4].varint, 0u);
}

TEST_F(CodecLog, ChainReturnsTheFirstFailureAndWritesNoFurther)
{
    const Rec rec{7, UINT64_MAX, "flow", {1, 2, 3}};
    const int32_t total = 2 + 11 + 6 + 6 + 2;
    for (int32_t cap = 0; cap < total; ++cap) {
        Guarded out(static_cast<size_t>(cap));
        EXPECT_EQ(WriteRec(&rec, out.out(), cap), MDTLM_ENCODE_NO_SPACE) << "cap " << cap;
        EXPECT_TRUE(out.GuardIntact()) << "cap " << cap;
    }
    /* A failing step stops the chain: the fields after it are never tried. */
    FakeFramework::Get().ClearLogs();
    uint8_t out[64];
    MDTLM_GPB_CHAIN chain(out, 3);
    chain.Int(1, 1).Int(2, 300).Int(3, 1).Str(4, "x");
    EXPECT_EQ(chain.Result(), MDTLM_ENCODE_NO_SPACE);
    EXPECT_EQ(chain.used, 2);
    EXPECT_EQ(Shapes(), std::vector<std::string>{Line(
                            "[NTVVRALDCN_GPB_EncodeInterge] Encode val failed, fieldId: 2, val: 300")});
}

} // namespace
