/* Record framing, read back by libprotobuf; the helper is internal, so its unit is built here. */
#include "gpb_frame.cpp"
#include "wire_check.h"

namespace {

using namespace codec_test;

/* A body of `size` bytes (byte i is i*13+1), or `fail` when negative; calls counted. */
struct Body {
    size_t size;
    int32_t fail;
    int calls;
};

int32_t WriteBody(const void *record, uint8_t *out, int32_t cap)
{
    Body *body = static_cast<Body *>(const_cast<void *>(record));
    body->calls++;
    if (body->fail < 0 || static_cast<int64_t>(body->size) > cap) {
        return body->fail < 0 ? body->fail : MDTLM_ENCODE_NO_SPACE;
    }
    for (size_t i = 0; i < body->size; ++i) {
        out[i] = static_cast<uint8_t>(i * 13 + 1);
    }
    return static_cast<int32_t>(body->size);
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
        const auto outer = Decode(exact.Head(c.total));
        ASSERT_EQ(outer.size(), 1u);
        EXPECT_EQ(outer[0].number, static_cast<int>(c.container));
        const auto entry = Decode(outer[0].bytes);
        ASSERT_EQ(entry.size(), 1u);
        EXPECT_EQ(entry[0].number, 1);
        std::vector<uint8_t> expected(c.body);
        WriteBody(&body, expected.data(), static_cast<int32_t>(c.body));
        EXPECT_EQ(entry[0].bytes, std::string(expected.begin(), expected.end()));

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

} // namespace
