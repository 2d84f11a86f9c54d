/*
 * JSON encoding of an I/O service flow statistics record: one object and a
 * comma.
 */
#include "mdtlm_vraldcn.h"
#include "sensor_json_object.h"
#include "sensor_log_lines.h"
#include "srvtlm_address.h"

/* The record body: the record's names with underscores for hyphens. */
#define MDTLM_SRVTLM_FLOW_JSON_BODY                                                                            \
    "\"access_type\":%u,\"address_family\":%u,\"source_ip\":\"%s\",\"destination_ip\":\"%s\","                 \
    "\"logical_unit_num\":%u,\"period_id\":%u,\"if_index\":%u,\"measure_mode\":%u,\"read_io_avg_latency\":%u," \
    "\"read_dal\":%u,\"read_iops\":%u,\"read_io_avg_size\":%u,\"read_pending_io_cnt\":%u,"                     \
    "\"write_io_avg_latency\":%u,\"write_dal\":%u,\"write_dpl\":%u,\"write_iops\":%u,\"write_io_avg_size\":%u," \
    "\"write_pending_io_cnt\":%u,\"error_info\":%u,\"interval\":%u,\"sequence_number\":%u"

extern "C" const char *const MDTLM_SRVTLM_FLOW_STATS_JSON_TEMPLATE = MDTLM_SRVTLM_FLOW_JSON_BODY;

namespace {

/* Below this much room the sample buffer counts as full (the longest object,
 * with two IPv6 texts, is 628 bytes). */
constexpr int32_t kJsonMinRoom = 1059;

} // namespace

extern "C" int32_t MDTLM_SRVTLM_FLOW_JSON_CheckEncodePara(const MDTLM_SRVTLM_FLOW_STATS_REC *rec, const uint8_t *out,
                                                          int32_t cap)
{
    return MDTLM_JsonCheckEncodePara(rec, out, cap, kJsonMinRoom, kSrvtlmFlowLogLines.jsonNullParam);
}

extern "C" uint32_t MDTLM_SRVTLM_FLOW_JSON_EncodeIpv4(const MDTLM_SRVTLM_FLOW_STATS_REC *rec, char *src, char *dst,
                                                      uint32_t cap)
{
    return MDTLM_SrvtlmIpv4Pair(rec->srcIp, rec->dstIp, src, dst, cap);
}

/* IPv6 records are reported in the library's IPv6 text form, the form an
 * address condition on these records must spell. */
extern "C" uint32_t MDTLM_SRVTLM_FLOW_JSON_EncodeIpv6(const MDTLM_SRVTLM_FLOW_STATS_REC *rec, char *src, char *dst,
                                                      uint32_t cap)
{
    return MDTLM_SrvtlmIpv6Pair(rec->srcIp, rec->dstIp, src, dst, cap);
}

extern "C" int32_t MDTLM_SRVTLM_FLOW_JSON_EncodeMsg(const MDTLM_SRVTLM_FLOW_STATS_REC *rec, uint8_t *out, int32_t cap)
{
    const int32_t check = MDTLM_SRVTLM_FLOW_JSON_CheckEncodePara(rec, out, cap);
    if (check != 0) {
        return check;
    }
    MDTLM_SRVTLM_ADDR_TEXTS texts;
    if (MDTLM_SrvtlmAddressTexts(rec->addressFamily, rec->srcIp, rec->dstIp, &texts) != 0) {
        return MDTLM_ENCODE_FAIL;
    }
    return MDTLM_JsonWriteMembers<MDTLM_SRVTLM_FLOW_JSON_BODY>(out, cap, static_cast<unsigned>(rec->accessType),
        static_cast<unsigned>(rec->addressFamily), texts.src, texts.dst, rec->logicalUnitNum, rec->periodId,
        static_cast<unsigned>(rec->ifIndex), static_cast<unsigned>(rec->measureMode), rec->readIoAvgLatency,
        rec->readDal, rec->readIops, rec->readIoAvgSize, rec->readPendingIoCnt, rec->writeIoAvgLatency, rec->writeDal,
        rec->writeDpl, rec->writeIops, rec->writeIoAvgSize, rec->writePendingIoCnt, rec->errorInfo, rec->interval,
        rec->sequenceNumber);
}
