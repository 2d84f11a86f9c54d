/* Address texts at their extremes, and capacity floors checked before any write. */
#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <functional>
#include <string>

#include "mdtlm_vraldcn.h"

namespace {

using Convert = std::function<uint32_t(char *out, uint32_t cap)>;

Convert V4(uint32_t a) { return [a](char *o, uint32_t c) { return MDTLM_VRALDCN_ConvertIpv4AddrToStr(a, o, c); }; }
Convert V6(std::array<uint32_t, 4> w)
{
    return [w](char *o, uint32_t c) { return MDTLM_VRALDCN_ConvertIpv6AddrToStr(w.data(), o, c); };
}
Convert Mac(std::array<uint8_t, 6> m)
{
    return [m](char *o, uint32_t c) { return MDTLM_VRALDCN_ConvertMacAddrToStr(m.data(), o, c); };
}
/* Bytes 0..15 at an odd address: units of memory order print as 1,0,3,2,... on this host. */
uint32_t UnalignedV6(char *o, uint32_t c)
{
    alignas(4) uint8_t raw[17];
    for (uint8_t i = 0; i < 16; ++i) {
        raw[1 + i] = i;
    }
    return MDTLM_VRALDCN_ConvertIpv6AddrToStr(raw + 1, o, c);
}

TEST(AddrFormat, TextsAtTheExtremesAndCapacityFloors)
{
    const uint32_t ff = 0xffffffffu;
    const struct {
        Convert convert;
        uint32_t floor;
        const char *text;
    } cases[] = {
        {V4(0), 32, "0.0.0.0"},
        {V4(ff), 32, "255.255.255.255"},
        {V4(0x01020304u), 32, "1.2.3.4"},
        {V6({0x20010db8u, 0, 0, 1}), 40, "2001:db8:0:0:0:0:0:1"},
        {V6({0, 0, 0, 0}), 40, "0:0:0:0:0:0:0:0"},
        {V6({ff, ff, ff, ff}), 40, "ffff:ffff:ffff:ffff:ffff:ffff:ffff:ffff"},
        {V6({0xfe800000u, 0, 0x02aabbffu, 0xfe00000au}), 40, "fe80:0:0:0:2aa:bbff:fe00:a"},
        {UnalignedV6, 40, "302:100:706:504:b0a:908:f0e:d0c"},
        {Mac({0x00, 0x1a, 0x2b, 0x3c, 0x4d, 0x5e}), 18, "001A-2B3C-4D5E"},
        {Mac({0xff, 0xff, 0xff, 0xff, 0xff, 0xff}), 18, "FFFF-FFFF-FFFF"},
    };
    const std::string untouched(64, '#');
    for (const auto &c : cases) {
        SCOPED_TRACE(c.text);
        char out[64];
        for (uint32_t cap : {0u, 1u, c.floor - 1}) {
            std::memset(out, '#', sizeof(out));
            EXPECT_EQ(c.convert(out, cap), 1u) << "cap " << cap;
            EXPECT_EQ(std::string(out, 64), untouched) << "cap " << cap;
        }
        EXPECT_EQ(c.convert(nullptr, c.floor), 1u);
        std::memset(out, '#', sizeof(out));
        ASSERT_EQ(c.convert(out, c.floor), 0u);
        EXPECT_STREQ(out, c.text);
        EXPECT_EQ(std::string(out + c.floor, 64 - c.floor), untouched.substr(c.floor));
    }
}

} // namespace
