/*
 * Condition and filter maps of the I/O service flow throughput sensor and the
 * compare callbacks behind them. Filters compare every field by its low 32
 * bits, the 64-bit FET values included.
 */
#include "mdtlm_vraldcn.h"
#include "sensor_record_fields.h"
#include "srvtlm_address.h"

extern "C" {

const MDTLM_FILTER_MAP_ENTRY g_femMdTlmSrvtlmFctFlowCondMap[5] = {
    {"address-family", 1}, {"source-ip", 2}, {"destination-ip", 3}, {"period-id", 4}, {"slot-id", 5},
};

const MDTLM_FILTER_MAP_ENTRY g_femMdTlmSrvtlmFctFlowFilterMap[14] = {
    {"source-if-index", 6},     {"destination-if-index", 7}, {"interface-change-status", 8},
    {"fct-max", 9},             {"fct-min", 10},             {"fct-mean", 11},
    {"fet-max", 12},            {"fet-min", 13},             {"fet-mean", 14},
    {"nak-packet-number", 15},  {"rdma-packet-number", 16},  {"rdma-message-number", 17},
    {"error-info", 18},         {"sequence-number", 19},
};

} // extern "C"

namespace {

using Rec = MDTLM_SRVTLM_FCTFLOW_STATS_REC;

enum : uint32_t { kSourceIp = 2, kDestinationIp = 3 };

constexpr MDTLM_RECORD_FIELD kConditionFields[] = {
    MDTLM_FIELD_ABSENT,
    MDTLM_FIELD_U32(Rec, addressFamily),
    MDTLM_FIELD_ABSENT, /* source-ip: address text */
    MDTLM_FIELD_ABSENT, /* destination-ip: address text */
    MDTLM_FIELD_U32(Rec, periodId),
    MDTLM_FIELD_U32(Rec, slotId),
};

constexpr MDTLM_RECORD_FIELD kFilterFields[] = {
    MDTLM_FIELD_ABSENT,
    MDTLM_FIELD_ABSENT,
    MDTLM_FIELD_ABSENT,
    MDTLM_FIELD_ABSENT,
    MDTLM_FIELD_ABSENT,
    MDTLM_FIELD_ABSENT,
    MDTLM_FIELD_U32(Rec, srcIfIndex),
    MDTLM_FIELD_U32(Rec, dstIfIndex),
    MDTLM_FIELD_U32(Rec, interfaceChangeStatus),
    MDTLM_FIELD_U32(Rec, fctMax),
    MDTLM_FIELD_U32(Rec, fctMin),
    MDTLM_FIELD_U32(Rec, fctMean),
    MDTLM_FIELD_U64_LOW32(Rec, fetMax),
    MDTLM_FIELD_U64_LOW32(Rec, fetMin),
    MDTLM_FIELD_U64_LOW32(Rec, fetMean),
    MDTLM_FIELD_U32(Rec, nakPacketNumber),
    MDTLM_FIELD_U32(Rec, rdmaPacketNumber),
    MDTLM_FIELD_U32(Rec, rdmaMessageNumber),
    MDTLM_FIELD_U32(Rec, errorInfo),
    MDTLM_FIELD_U32(Rec, sequenceNumber),
};

} // namespace

uint32_t MDTLM_SrvtlmFctFlowFieldForm(uint32_t mapKind, uint32_t fieldId)
{
    if (mapKind == MDTLM_FIELD_MAP_FILTER) {
        return MDTLM_RecordFieldForm(kFilterFields, fieldId);
    }
    return MDTLM_AddressConditionForm(kConditionFields, kSourceIp, kDestinationIp, MDTLM_FIELD_FORM_IP, fieldId);
}

extern "C" uint32_t MDTLM_SRVTLM_FCTCmpSrcIpWithStr(const Rec *rec, const char *text)
{
    return MDTLM_SrvtlmCmpAddress(rec->addressFamily, rec->srcIp, text);
}

extern "C" uint32_t MDTLM_SRVTLM_FCTCmpDstIpWithStr(const Rec *rec, const char *text)
{
    return MDTLM_SrvtlmCmpAddress(rec->addressFamily, rec->dstIp, text);
}

extern "C" uint32_t MDTLM_SRVTLM_FCTFLOW_STATS_CmpFieldWithInfo(uint32_t fieldId, const MDTLM_PATH_CONDITION *cond,
                                                                const void *record)
{
    return MDTLM_AddressConditionHolds<Rec>(kConditionFields, kSourceIp, MDTLM_SRVTLM_FCTCmpSrcIpWithStr,
                                            kDestinationIp, MDTLM_SRVTLM_FCTCmpDstIpWithStr, fieldId, cond, record);
}

extern "C" uint32_t MDTLM_SRVTLM_FCTFLOW_STATS_CmpFieldWithFilter(uint32_t fieldId, const MDTLM_PATH_FILTER *filter,
                                                                  const void *record)
{
    return MDTLM_RecordFilterHolds(kFilterFields, fieldId, filter, record);
}
