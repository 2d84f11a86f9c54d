/*
 * Address text forms at their extremes, and the capacity floors that are
 * tested before anything is written.
 */
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "mdtlm_vraldcn.h"

namespace {

constexpr char kFill = '#';

struct Out {
    char text[64];
    Out() { std::memset(text, kFill, sizeof(text)); }
    bool Untouched() const
    {
        for (char c : text) {
            if (c != kFill) {
                return false;
            }
        }
        return true;
    }
};

TEST(AddrFormat, Ipv4DottedDecimal)
{
    const struct {
        uint32_t addr;
        const char *text;
    } cases[] = {
        {0, "0.0.0.0"},
        {0xffffffffu, "255.255.255.255"},
        {0xc0a80a01u, "192.168.10.1"},
        {0x0a000001u, "10.0.0.1"},
        {0x01020304u, "1.2.3.4"},
    };
    for (const auto &c : cases) {
        Out out;
        ASSERT_EQ(MDTLM_VRALDCN_ConvertIpv4AddrToStr(c.addr, out.text, 32), 0u);
        EXPECT_STREQ(out.text, c.text);
    }
}

TEST(AddrFormat, Ipv6GroupsHighHalfFirstWithoutCompression)
{
    const struct {
        uint32_t words[4];
        const char *text;
    } cases[] = {
        {{0x20010db8u, 0, 0, 1}, "2001:db8:0:0:0:0:0:1"},
        {{0, 0, 0, 0}, "0:0:0:0:0:0:0:0"},
        {{0xffffffffu, 0xffffffffu, 0xffffffffu, 0xffffffffu}, "ffff:ffff:ffff:ffff:ffff:ffff:ffff:ffff"},
        {{0xfe800000u, 0, 0x02aabbffu, 0xfe00000au}, "fe80:0:0:0:2aa:bbff:fe00:a"},
    };
    for (const auto &c : cases) {
        Out out;
        ASSERT_EQ(MDTLM_VRALDCN_ConvertIpv6AddrToStr(c.words, out.text, 40), 0u);
        EXPECT_STREQ(out.text, c.text);
    }
    /* Units of memory order 0..7 print as 1,0,3,2,5,4,7,6 on this host; the
     * address need not be aligned. */
    alignas(4) uint8_t raw[17];
    for (uint8_t i = 0; i < 16; ++i) {
        raw[1 + i] = i;
    }
    Out out;
    ASSERT_EQ(MDTLM_VRALDCN_ConvertIpv6AddrToStr(raw + 1, out.text, 40), 0u);
    EXPECT_STREQ(out.text, "302:100:706:504:b0a:908:f0e:d0c");
}

TEST(AddrFormat, MacUpperCaseGroupsOfFour)
{
    const struct {
        uint8_t mac[6];
        const char *text;
    } cases[] = {
        {{0x00, 0x1a, 0x2b, 0x3c, 0x4d, 0x5e}, "001A-2B3C-4D5E"},
        {{0xff, 0xff, 0xff, 0xff, 0xff, 0xff}, "FFFF-FFFF-FFFF"},
        {{0, 0, 0, 0, 0, 0}, "0000-0000-0000"},
    };
    for (const auto &c : cases) {
        Out out;
        ASSERT_EQ(MDTLM_VRALDCN_ConvertMacAddrToStr(c.mac, out.text, 18), 0u);
        EXPECT_STREQ(out.text, c.text);
        EXPECT_EQ(out.text[15], kFill) << "15 bytes written";
    }
}

TEST(AddrFormat, CapacityFloorsAndNullOutputRefuseBeforeWriting)
{
    const uint32_t words[4] = {0, 0, 0, 1};
    const uint8_t mac[6] = {1, 2, 3, 4, 5, 6};
    const struct {
        const char *name;
        uint32_t (*convert)(const uint32_t *words, const uint8_t *mac, char *out, uint32_t cap);
        uint32_t floor;
    } cases[] = {
        {"ipv4", [](const uint32_t *, const uint8_t *, char *o, uint32_t c) {
             return MDTLM_VRALDCN_ConvertIpv4AddrToStr(0, o, c);
         }, 32},
        {"ipv6", [](const uint32_t *w, const uint8_t *, char *o, uint32_t c) {
             return MDTLM_VRALDCN_ConvertIpv6AddrToStr(w, o, c);
         }, 40},
        {"mac", [](const uint32_t *, const uint8_t *m, char *o, uint32_t c) {
             return MDTLM_VRALDCN_ConvertMacAddrToStr(m, o, c);
         }, 18},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        for (uint32_t cap : {0u, 1u, c.floor - 1}) {
            Out out;
            EXPECT_EQ(c.convert(words, mac, out.text, cap), 1u) << "cap " << cap;
            EXPECT_TRUE(out.Untouched()) << "cap " << cap;
        }
        EXPECT_EQ(c.convert(words, mac, nullptr, c.floor), 1u);
        Out out;
        EXPECT_EQ(c.convert(words, mac, out.text, c.floor), 0u);
    }
}

} // namespace
