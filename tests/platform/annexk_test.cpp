#include <gtest/gtest.h>

#include <cstdarg>
#include <cstdint>
#include <cstring>
#include <string>

#include "platform_test_util.h"

namespace {

constexpr size_t kRsizeMax = SIZE_MAX >> 1;

struct MemcpyCase {
    const char *name;
    size_t destSize;
    bool nullDest;
    bool nullSrc;
    size_t count;
    bool ok;
    bool cleared; /* destination zeroed on failure */
};

TEST(PlatformAnnexK, MemcpyBoundaries)
{
    const MemcpyCase cases[] = {
        {"exact fit", 8, false, false, 8, true, false},
        {"shorter copy", 8, false, false, 3, true, false},
        {"one byte too many", 8, false, false, 9, false, true},
        {"zero bytes into zero", 0, false, false, 0, true, false},
        {"zero bytes into eight", 8, false, false, 0, true, false},
        {"null source", 8, false, true, 4, false, true},
        {"null destination", 8, true, false, 4, false, false},
        {"count above RSIZE_MAX", 8, false, false, kRsizeMax + 1, false, true},
        {"size above RSIZE_MAX", kRsizeMax + 1, false, false, 4, false, false},
    };
    for (const MemcpyCase &c : cases) {
        uint8_t dest[16];
        std::memset(dest, 0xEE, sizeof(dest));
        const uint8_t src[16] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16};
        int rc = memcpy_s(c.nullDest ? nullptr : dest, c.destSize, c.nullSrc ? nullptr : src, c.count);
        EXPECT_EQ(rc == 0, c.ok) << c.name;
        size_t checked = std::min<size_t>(c.destSize, 8);
        for (size_t i = 0; i < checked; i++) {
            uint8_t expect = c.ok ? (i < c.count ? src[i] : 0xEE) : (c.cleared ? 0 : 0xEE);
            ASSERT_EQ(dest[i], expect) << c.name << " byte " << i;
        }
        EXPECT_EQ(dest[c.destSize <= 8 ? c.destSize : 8], 0xEE) << c.name << ": wrote past the destination";
    }
}

TEST(PlatformAnnexK, MemcpyRefusesOverlapAndClearsTheDestination)
{
    uint8_t buf[16];
    for (int i = 0; i < 16; i++)
        buf[i] = static_cast<uint8_t>(i + 1);
    EXPECT_NE(memcpy_s(buf + 4, 8, buf, 8), 0);
    for (int i = 4; i < 12; i++)
        EXPECT_EQ(buf[i], 0) << i;
    EXPECT_EQ(buf[12], 13);
    EXPECT_EQ(memcpy_s(buf + 8, 8, buf, 8), 0); /* adjacent, not overlapping */
}

TEST(PlatformAnnexK, MemsetBoundaries)
{
    struct {
        size_t destSize, count;
        bool ok;
        size_t setBytes;
    } cases[] = {
        {8, 8, true, 8}, {8, 3, true, 3}, {8, 9, false, 8}, {0, 0, true, 0}, {8, kRsizeMax + 1, false, 8},
    };
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

enum class Fn { Sprintf, Vsprintf, Snprintf };

struct FormatCase {
    Fn fn;
    size_t size;
    int expect;           /* result; -1 means any negative value */
    const char *expectOut; /* destination afterwards; null: not checked */
};

TEST(PlatformAnnexK, FormattingNeedsRoomForTheTerminator)
{
    const FormatCase cases[] = {
        {Fn::Sprintf, 5, 4, "abcd"},  {Fn::Sprintf, 4, -1, ""},  {Fn::Sprintf, 1, -1, ""},
        {Fn::Vsprintf, 5, 4, "abcd"}, {Fn::Vsprintf, 4, -1, ""}, {Fn::Snprintf, 5, 4, "abcd"},
        {Fn::Snprintf, 4, 4, "abc"},  {Fn::Snprintf, 1, 4, ""},  {Fn::Snprintf, 0, -1, nullptr},
        {Fn::Sprintf, 0, -1, nullptr},
    };
    for (const FormatCase &c : cases) {
        char dest[8];
        std::memset(dest, 'Z', sizeof(dest));
        int rc;
        const char *text = "abcd";
        switch (c.fn) {
        case Fn::Sprintf:
            rc = sprintf_s(dest, c.size, "%s", text);
            break;
        case Fn::Vsprintf:
            rc = CallVsprintf(dest, c.size, "%s", text);
            break;
        default:
            rc = snprintf_s(dest, c.size, "%s", text);
            break;
        }
        std::string label = "fn " + std::to_string(static_cast<int>(c.fn)) + " size " + std::to_string(c.size);
        if (c.expect < 0)
            EXPECT_LT(rc, 0) << label;
        else
            EXPECT_EQ(rc, c.expect) << label;
        if (c.expectOut != nullptr)
            EXPECT_STREQ(dest, c.expectOut) << label;
        else
            EXPECT_EQ(dest[0], 'Z') << label << ": a zero-size destination was written";
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

    std::strcpy(dest, "untouched");
    EXPECT_LT(sprintf_s(dest, sizeof(dest), nullptr), 0);
    EXPECT_STREQ(dest, "");

    EXPECT_LT(sprintf_s(nullptr, 8, "x"), 0);
    EXPECT_LT(snprintf_s(dest, kRsizeMax + 1, "x"), 0);

    /* Arguments before a %s are walked by their real sizes. */
    EXPECT_EQ(sprintf_s(dest, sizeof(dest), "%lld|%.*f|%c|%s|%zu", 1LL << 40, 1, 2.25, 'q', "end", size_t{3}), 25);
    EXPECT_STREQ(dest, "1099511627776|2.2|q|end|3");
    EXPECT_EQ(sprintf_s(dest, sizeof(dest), "%%n is text"), 10);
    EXPECT_STREQ(dest, "%n is text");
}

} /* namespace */
