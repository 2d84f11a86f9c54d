/*
 * Address texts of a flow statistics record: the source and destination
 * words at offsets 124 and 140, as IPv4 or IPv6 by the record's family.
 */
#include "flow_family.h"
#include "srvtlm_address.h"

namespace {

constexpr uint32_t kIpv4TextCap = 32;
constexpr uint32_t kIpv6TextCap = 40;

} // namespace

extern "C" {

uint32_t MDTLM_VRALDCN_FLOW_JSON_EncodeIpv4(const MDTLM_FLOW_STATS_REC *rec, char *src, char *dst, uint32_t cap)
{
    if (rec == nullptr) {
        return 1;
    }
    return MDTLM_SrvtlmIpv4Pair(rec->srcAddr, rec->dstAddr, src, dst, cap);
}

uint32_t MDTLM_VRALDCN_FLOW_JSON_EncodeIpv6(const MDTLM_FLOW_STATS_REC *rec, char *src, char *dst, uint32_t cap)
{
    if (rec == nullptr) {
        return 1;
    }
    return MDTLM_SrvtlmIpv6Pair(rec->srcAddr, rec->dstAddr, src, dst, cap);
}

} /* extern "C" */

int32_t MDTLM_FlowFormatAddresses(const MDTLM_FLOW_STATS_REC *rec, char (&src)[MDTLM_FLOW_ADDR_TEXT_LEN],
                                  char (&dst)[MDTLM_FLOW_ADDR_TEXT_LEN])
{
    uint32_t ret;
    if (rec->addressFamily == MDTLM_FLOW_FAMILY_IPV6) {
        ret = MDTLM_VRALDCN_FLOW_JSON_EncodeIpv6(rec, src, dst, kIpv6TextCap);
    } else if (rec->addressFamily == MDTLM_FLOW_FAMILY_IPV4) {
        ret = MDTLM_VRALDCN_FLOW_JSON_EncodeIpv4(rec, src, dst, kIpv4TextCap);
    } else {
        return MDTLM_ENCODE_FAIL; /* neither IPv4 nor IPv6: the record cannot be encoded */
    }
    return ret == 0 ? 0 : MDTLM_ENCODE_FAIL;
}
