/*
 * Address texts and address compares of the I/O service sensors.
 *
 * Both families are rendered with the library's address formatting: IPv4 as
 * dotted decimal, IPv6 as eight lower-case groups without zero compression.
 * The encoders and the address conditions use the same texts, so a condition
 * matches a record exactly when its value is the text a collector receives.
 */
#include "srvtlm_address.h"

#include <cstring>

#include "gpb_chain.h"
#include "mdtlm_vraldcn.h"

extern "C" uint32_t MDTLM_SRVTLM_CmpIpv4WithStr(uint32_t addr, const char *text)
{
    char formatted[MDTLM_SRVTLM_IPV4_TEXT_CAP];
    if (text == nullptr || MDTLM_VRALDCN_ConvertIpv4AddrToStr(addr, formatted, sizeof(formatted)) != 0) {
        return 0;
    }
    return std::strcmp(formatted, text) == 0 ? 1u : 0u;
}

extern "C" uint32_t MDTLM_SRVTLM_CmpIpv6WithStr(const void *addr, const char *text)
{
    char formatted[MDTLM_SRVTLM_IPV6_TEXT_CAP];
    if (addr == nullptr || text == nullptr ||
        MDTLM_VRALDCN_ConvertIpv6AddrToStr(addr, formatted, sizeof(formatted)) != 0) {
        return 0;
    }
    return std::strcmp(formatted, text) == 0 ? 1u : 0u;
}

uint32_t MDTLM_SrvtlmIpv4Pair(const uint32_t *src, const uint32_t *dst, char *srcText, char *dstText, uint32_t cap)
{
    const uint32_t ret = MDTLM_VRALDCN_ConvertIpv4AddrToStr(src[0], srcText, cap);
    if (ret != 0) {
        return ret;
    }
    return MDTLM_VRALDCN_ConvertIpv4AddrToStr(dst[0], dstText, cap);
}

uint32_t MDTLM_SrvtlmIpv6Pair(const uint32_t *src, const uint32_t *dst, char *srcText, char *dstText, uint32_t cap)
{
    const uint32_t ret = MDTLM_VRALDCN_ConvertIpv6AddrToStr(src, srcText, cap);
    if (ret != 0) {
        return ret;
    }
    return MDTLM_VRALDCN_ConvertIpv6AddrToStr(dst, dstText, cap);
}

int32_t MDTLM_SrvtlmAddressTexts(uint32_t family, const uint32_t *src, const uint32_t *dst,
                                 MDTLM_SRVTLM_ADDR_TEXTS *texts)
{
    uint32_t ret;
    if (family == MDTLM_SRVTLM_FAMILY_IPV4) {
        ret = MDTLM_SrvtlmIpv4Pair(src, dst, texts->src, texts->dst, MDTLM_SRVTLM_IPV4_TEXT_CAP);
    } else if (family == MDTLM_SRVTLM_FAMILY_IPV6) {
        ret = MDTLM_SrvtlmIpv6Pair(src, dst, texts->src, texts->dst, MDTLM_SRVTLM_IPV6_TEXT_CAP);
    } else {
        return MDTLM_ENCODE_FAIL;
    }
    return ret == 0 ? 0 : MDTLM_ENCODE_FAIL;
}

int32_t MDTLM_SrvtlmGpbAddressFields(uint32_t family, const uint32_t *src, const uint32_t *dst, uint32_t srcField,
                                     uint32_t dstField, uint8_t *out, int32_t cap)
{
    MDTLM_SRVTLM_ADDR_TEXTS texts;
    const int32_t ret = MDTLM_SrvtlmAddressTexts(family, src, dst, &texts);
    if (ret != 0) {
        return ret;
    }
    MDTLM_GPB_CHAIN chain(out, cap);
    chain.Str(srcField, texts.src).Str(dstField, texts.dst);
    return chain.Result();
}

uint32_t MDTLM_SrvtlmCmpAddress(uint32_t family, const uint32_t *addr, const char *text)
{
    if (family == MDTLM_SRVTLM_FAMILY_IPV4) {
        return MDTLM_SRVTLM_CmpIpv4WithStr(addr[0], text);
    }
    if (family == MDTLM_SRVTLM_FAMILY_IPV6) {
        return MDTLM_SRVTLM_CmpIpv6WithStr(addr, text);
    }
    return 0;
}
