/*
 * JSON encoding of an I/O service flow throughput record: one object and a
 * comma.
 */
#include "mdtlm_vraldcn.h"
#include "sensor_json_object.h"
#include "sensor_log_lines.h"
#include "srvtlm_address.h"

/* The record body: the record's names with underscores for hyphens; the slot
 * is a number inside quotes, the FET values are 64-bit. */
#define MDTLM_SRVTLM_FCTFLOW_JSON_BODY                                                                         \
    "\"address_family\":%u,\"source_ip\":\"%s\",\"destination_ip\":\"%s\",\"period_id\":%u,"                  \
    "\"slot_id\":\"%u\",\"source_if_index\":%u,\"destination_if_index\":%u,\"interface_change_status\":%u,"   \
    "\"fct_max\":%u,\"fct_min\":%u,\"fct_mean\":%u,\"fet_max\":%llu,\"fet_min\":%llu,\"fet_mean\":%llu,"      \
    "\"nak_packet_number\":%u,\"rdma_packet_number\":%u,\"rdma_message_number\":%u,\"error_info\":%u,"        \
    "\"sequence_number\":%u"

extern "C" const char *const MDTLM_SRVTLM_FCTFLOW_STATS_JSON_TEMPLATE = MDTLM_SRVTLM_FCTFLOW_JSON_BODY;

namespace {

using Rec = MDTLM_SRVTLM_FCTFLOW_STATS_REC;

/* Below this much room the sample buffer counts as full (the longest object,
 * with two IPv6 texts, is 596 bytes). */
constexpr int32_t kJsonMinRoom = 959;

} // namespace

extern "C" int32_t MDTLM_SRVTLM_FCTFLOW_JSON_CheckEncodePara(const Rec *rec, const uint8_t *out, int32_t cap)
{
    return MDTLM_JsonCheckEncodePara(rec, out, cap, kJsonMinRoom, kSrvtlmFctFlowLogLines.jsonNullParam);
}

extern "C" uint32_t MDTLM_SRVTLM_FCTFLOW_JSON_EncodeIpv4(const Rec *rec, char *src, char *dst, uint32_t cap)
{
    return MDTLM_SrvtlmIpv4Pair(rec->srcIp, rec->dstIp, src, dst, cap);
}

/* IPv6 records are reported in the library's IPv6 text form, the form an
 * address condition on these records must spell. */
extern "C" uint32_t MDTLM_SRVTLM_FCTFLOW_JSON_EncodeIpv6(const Rec *rec, char *src, char *dst, uint32_t cap)
{
    return MDTLM_SrvtlmIpv6Pair(rec->srcIp, rec->dstIp, src, dst, cap);
}

extern "C" int32_t MDTLM_SRVTLM_FCTFLOW_JSON_EncodeMsg(const Rec *rec, uint8_t *out, int32_t cap)
{
    const int32_t check = MDTLM_SRVTLM_FCTFLOW_JSON_CheckEncodePara(rec, out, cap);
    if (check != 0) {
        return check;
    }
    MDTLM_SRVTLM_ADDR_TEXTS texts;
    if (MDTLM_SrvtlmAddressTexts(rec->addressFamily, rec->srcIp, rec->dstIp, &texts) != 0) {
        return MDTLM_ENCODE_FAIL;
    }
    return MDTLM_JsonWriteMembers<MDTLM_SRVTLM_FCTFLOW_JSON_BODY>(out, cap, rec->addressFamily, texts.src, texts.dst,
                                 rec->periodId, rec->slotId, rec->srcIfIndex, rec->dstIfIndex,
                                 rec->interfaceChangeStatus, rec->fctMax, rec->fctMin, rec->fctMean,
                                 static_cast<unsigned long long>(rec->fetMax),
                                 static_cast<unsigned long long>(rec->fetMin),
                                 static_cast<unsigned long long>(rec->fetMean), rec->nakPacketNumber,
                                 rec->rdmaPacketNumber, rec->rdmaMessageNumber, rec->errorInfo, rec->sequenceNumber);
}
