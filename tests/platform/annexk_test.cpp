#include <gtest/gtest.h>

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

TEST(PlatformAnnexK, FormattingNeedsRoomForTheTerminator)
{
    const struct {
        bool truncating; /* snprintf_s rather than sprintf_s */
        size_t size;
        int expect;            /* -1: any negative value */
        const char *expectOut;
    } cases[] = {
        {false, 5, 4, "abcd"}, {false, 4, -1, ""}, {false, 1, -1, ""},   {false, 0, -1, "ZZZZZZZZ"},
        {true, 5, 4, "abcd"},  {true, 4, 4, "abc"}, {true, 1, 4, ""},     {true, 0, -1, "ZZZZZZZZ"},
    };
    for (const auto &c : cases) {
        char dest[9] = "ZZZZZZZZ"; /* size 0: stays untouched */
        int rc = c.truncating ? snprintf_s(dest, c.size, "%s", "abcd") : sprintf_s(dest, c.size, "%s", "abcd");
        std::string label = std::string(c.truncating ? "snprintf_s" : "sprintf_s") + ", size " + std::to_string(c.size);
        EXPECT_TRUE(c.expect < 0 ? rc < 0 : rc == c.expect) << label << ": " << rc;
        EXPECT_STREQ(dest, c.expectOut) << label;
    }
    char dest[8] = "keep";
    int counted = 0;
    EXPECT_LT(sprintf_s(dest, sizeof(dest), "%d%n", 5, &counted), 0); /* %n is refused */
    EXPECT_TRUE(counted == 0 && dest[0] == '\0');
}

} /* namespace */
