#include <gtest/gtest.h>

#include <cstdarg>
#include <cstdint>
#include <cstring>
#include <string>

#include "platform_test_util.h"

namespace {

constexpr size_t kRsizeMax = SIZE_MAX >> 1;

TEST(PlatformAnnexK, MemcpyBoundaries)
{
    const struct {
        const char *name;
        size_t destSize, count;
        bool nullDest, nullSrc, ok, cleared; /* cleared: destination zeroed on failure */
    } cases[] = {
        {"exact fit", 8, 8, false, false, true, false},
        {"shorter copy", 8, 3, false, false, true, false},
        {"one byte too many", 8, 9, false, false, false, true},
        {"zero bytes into zero", 0, 0, false, false, true, false},
        {"null source", 8, 4, false, true, false, true},
        {"null destination", 8, 4, true, false, false, false},
        {"count above RSIZE_MAX", 8, kRsizeMax + 1, false, false, false, true},
        {"size above RSIZE_MAX", kRsizeMax + 1, 4, false, false, false, false},
    };
    const uint8_t src[16] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16};
    for (const auto &c : cases) {
        uint8_t dest[16];
        std::memset(dest, 0xEE, sizeof(dest));
        int rc = memcpy_s(c.nullDest ? nullptr : dest, c.destSize, c.nullSrc ? nullptr : src, c.count);
        EXPECT_EQ(rc == 0, c.ok) << c.name;
        for (size_t i = 0; i < 9; i++) {
            uint8_t expect = 0xEE;
            if (i < c.destSize && i < 8)
                expect = c.ok ? (i < c.count ? src[i] : 0xEE) : (c.cleared ? 0 : 0xEE);
            ASSERT_EQ(dest[i], expect) << c.name << ", byte " << i;
        }
    }

    uint8_t buf[16] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16};
    EXPECT_NE(memcpy_s(buf + 4, 8, buf, 8), 0); /* overlap: refused, destination cleared */
    EXPECT_EQ(std::string(buf + 4, buf + 12), std::string(8, '\0'));
    EXPECT_EQ(memcpy_s(buf + 8, 8, buf, 8), 0); /* adjacent is fine */
}

TEST(PlatformAnnexK, MemsetSetsTheDestinationEvenWhenTheCountIsTooLarge)
{
    const struct {
        size_t destSize, count;
        bool ok;
        size_t setBytes;
    } cases[] = {{8, 8, true, 8}, {8, 3, true, 3}, {8, 9, false, 8}, {0, 0, true, 0}, {8, kRsizeMax + 1, false, 8}};
    for (const auto &c : cases) {
        uint8_t dest[16];
        std::memset(dest, 0xEE, sizeof(dest));
        EXPECT_EQ(memset_s(dest, c.destSize, 0x41, c.count) == 0, c.ok) << c.destSize << "/" << c.count;
        for (size_t i = 0; i < 16; i++)
            ASSERT_EQ(dest[i], i < c.setBytes ? 0x41 : 0xEE) << c.destSize << "/" << c.count << " byte " << i;
    }
    EXPECT_NE(memset_s(nullptr, 8, 0, 8), 0);
}

int CallVsprintf(char *dest, size_t size, const char *format, ...) __attribute__((format(printf, 3, 4)));
int CallVsprintf(char *dest, size_t size, const char *format, ...)
{
    va_list args;
    va_start(args, format);
    int rc = vsprintf_s(dest, size, format, args);
    va_end(args);
    return rc;
}

TEST(PlatformAnnexK, FormattingNeedsRoomForTheTerminator)
{
    enum Fn { Sprintf, Vsprintf, Snprintf };
    const struct {
        Fn fn;
        size_t size;
        int expect;            /* -1: any negative value */
        const char *expectOut; /* null: the destination must stay untouched */
    } cases[] = {
        {Sprintf, 5, 4, "abcd"},  {Sprintf, 4, -1, ""},  {Sprintf, 1, -1, ""},     {Sprintf, 0, -1, nullptr},
        {Vsprintf, 5, 4, "abcd"}, {Vsprintf, 4, -1, ""}, {Snprintf, 5, 4, "abcd"}, {Snprintf, 4, 4, "abc"},
        {Snprintf, 1, 4, ""},     {Snprintf, 0, -1, nullptr},
    };
    for (const auto &c : cases) {
        char dest[8];
        std::memset(dest, 'Z', sizeof(dest));
        int rc = c.fn == Sprintf    ? sprintf_s(dest, c.size, "%s", "abcd")
                 : c.fn == Vsprintf ? CallVsprintf(dest, c.size, "%s", "abcd")
                                    : snprintf_s(dest, c.size, "%s", "abcd");
        std::string label = "function " + std::to_string(c.fn) + ", size " + std::to_string(c.size);
        if (c.expect < 0)
            EXPECT_LT(rc, 0) << label;
        else
            EXPECT_EQ(rc, c.expect) << label;
        if (c.expectOut != nullptr)
            EXPECT_STREQ(dest, c.expectOut) << label;
        else
            EXPECT_EQ(dest[0], 'Z') << label;
    }
}

TEST(PlatformAnnexK, FormatConstraintViolations)
{
    char dest[32];
    const char *volatile nullText = nullptr;
    int counted = 0;
    std::strcpy(dest, "untouched");
    EXPECT_LT(sprintf_s(dest, sizeof(dest), "%d%n", 5, &counted), 0);
    EXPECT_STREQ(dest, "");
    EXPECT_EQ(counted, 0);
    std::strcpy(dest, "untouched");
    EXPECT_LT(snprintf_s(dest, sizeof(dest), "[%s:%d] %s", "label", 7, nullText), 0);
    EXPECT_STREQ(dest, "");
    EXPECT_LT(sprintf_s(nullptr, 8, "x"), 0);
    EXPECT_LT(snprintf_s(dest, kRsizeMax + 1, "x"), 0);

    /* Arguments before a %s are walked by their real sizes. */
    EXPECT_EQ(sprintf_s(dest, sizeof(dest), "%lld|%.*f|%c|%s|%zu", 1LL << 40, 1, 2.25, 'q', "end", size_t{3}), 25);
    EXPECT_STREQ(dest, "1099511627776|2.2|q|end|3");
    EXPECT_EQ(sprintf_s(dest, sizeof(dest), "%%n is text"), 10);
}

} /* namespace */
