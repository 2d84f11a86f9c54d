/*
 * Text forms of addresses, as collectors receive them and as sensor-path
 * conditions must spell them:
 *   IPv4  dotted decimal, no leading zeros           "192.168.10.1"
 *   IPv6  eight lower-case hex groups, no "::"        "2001:db8:0:0:0:0:0:1"
 *   MAC   three groups of four upper-case hex digits  "001A-2B3C-4D5E"
 * Each converter first demands a minimum capacity (32, 40, 18 bytes), then
 * writes the text digit by digit: the floor is above the longest text and
 * its NUL (16, 40 and 15 bytes), so once it is met every character fits.
 * They return 0 on success and 1 on failure, and log nothing.
 */
#include <stdint.h>
#include <string.h>

#include "mdtlm_vraldcn.h"
#include "number_text.h"

namespace {

constexpr uint32_t kIpv4MinCap = 32;
constexpr uint32_t kIpv6MinCap = 40;
constexpr uint32_t kMacMinCap = 18;
constexpr uint32_t kFailed = 1;

/* Octets of an IPv4 word, most significant (the first octet) first. */
constexpr uint32_t kIpv4Shifts[] = {24, 16, 8, 0};

/* Groups of an IPv6 address: word index and shift, in printing order. Each
 * word's high half is the earlier group (units 1, 0, 3, 2, ... in memory on
 * a little-endian host). */
struct Ipv6Group {
    uint32_t word;
    uint32_t shift;
};
constexpr Ipv6Group kIpv6Groups[] = {{0, 16}, {0, 0}, {1, 16}, {1, 0}, {2, 16}, {2, 0}, {3, 16}, {3, 0}};

constexpr char kUpperHex[] = "0123456789ABCDEF";

/* The longest texts and their NUL, which the floors must hold. */
static_assert(kIpv4MinCap >= 4 * (3 + 1), "IPv4 floor below the longest text");
static_assert(kIpv6MinCap >= 8 * (MDTLM_HEX_MAX_DIGITS_32 / 2 + 1), "IPv6 floor below the longest text");
static_assert(kMacMinCap >= 15, "MAC floor below the longest text");

} // namespace

extern "C" {

uint32_t MDTLM_VRALDCN_ConvertIpv4AddrToStr(uint32_t addr, char *out, uint32_t cap)
{
    if (out == nullptr || cap < kIpv4MinCap) {
        return kFailed;
    }
    char *pos = out;
    for (uint32_t shift : kIpv4Shifts) {
        pos += MDTLM_PutDecimal(pos, (addr >> shift) & 0xffu);
        *pos++ = '.';
    }
    pos[-1] = '\0'; /* the last octet has no separator */
    return 0;
}

uint32_t MDTLM_VRALDCN_ConvertIpv6AddrToStr(const void *addr, char *out, uint32_t cap)
{
    if (out == nullptr || cap < kIpv6MinCap || addr == nullptr) {
        return kFailed;
    }
    uint32_t words[4];
    memcpy(words, addr, sizeof(words)); /* records need not align the address */
    char *pos = out;
    for (const Ipv6Group &g : kIpv6Groups) {
        pos += MDTLM_PutHexLower(pos, (words[g.word] >> g.shift) & 0xffffu);
        *pos++ = ':';
    }
    pos[-1] = '\0'; /* the last group has no separator */
    return 0;
}

uint32_t MDTLM_VRALDCN_ConvertMacAddrToStr(const uint8_t *mac, char *out, uint32_t cap)
{
    if (out == nullptr || cap < kMacMinCap || mac == nullptr) {
        return kFailed;
    }
    uint32_t pos = 0;
    for (uint32_t i = 0; i < 6; ++i) {
        out[pos++] = kUpperHex[mac[i] >> 4];
        out[pos++] = kUpperHex[mac[i] & 0x0fu];
        if (i == 1 || i == 3) {
            out[pos++] = '-'; /* after the fourth and the eighth digit */
        }
    }
    out[pos] = '\0';
    return 0;
}

} /* extern "C" */
