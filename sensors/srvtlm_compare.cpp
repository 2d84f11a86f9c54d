/*
 * Condition and filter maps of the I/O service flow statistics sensor and the
 * compare callbacks behind them. logical-unit-num and period-id stand in both
 * maps: as conditions they test equality, as filters any operator.
 */
#include "mdtlm_vraldcn.h"
#include "sensor_record_fields.h"
#include "srvtlm_address.h"

extern "C" {

const MDTLM_FILTER_MAP_ENTRY g_femMdTlmSrvtlmFlowCondMap[6] = {
    {"access-type", 0},    {"address-family", 1},   {"source-ip", 2},
    {"destination-ip", 3}, {"logical-unit-num", 4}, {"period-id", 5},
};

const MDTLM_FILTER_MAP_ENTRY g_femMdTlmSrvtlmFlowFilterMap[16] = {
    {"error-info", 6},          {"if-index", 7},
    {"logical-unit-num", 4},    {"period-id", 5},
    {"read-dal", 8},            {"read-io-avg-latency", 9},
    {"read-io-avg-size", 10},   {"read-iops", 11},
    {"read-pending-io-cnt", 12}, {"sequence-number", 13},
    {"write-dal", 14},          {"write-dpl", 15},
    {"write-io-avg-latency", 16}, {"write-io-avg-size", 17},
    {"write-iops", 18},         {"write-pending-io-cnt", 19},
};

} // extern "C"

namespace {

enum : uint32_t { kSourceIp = 2, kDestinationIp = 3 };

constexpr MDTLM_RECORD_FIELD kConditionFields[] = {
    MDTLM_FIELD_U8(MDTLM_SRVTLM_FLOW_STATS_REC, accessType),
    MDTLM_FIELD_U8(MDTLM_SRVTLM_FLOW_STATS_REC, addressFamily),
    MDTLM_FIELD_ABSENT, /* source-ip: address text */
    MDTLM_FIELD_ABSENT, /* destination-ip: address text */
    MDTLM_FIELD_U32(MDTLM_SRVTLM_FLOW_STATS_REC, logicalUnitNum),
    MDTLM_FIELD_U32(MDTLM_SRVTLM_FLOW_STATS_REC, periodId),
};

constexpr MDTLM_RECORD_FIELD kFilterFields[] = {
    MDTLM_FIELD_ABSENT, MDTLM_FIELD_ABSENT, MDTLM_FIELD_ABSENT, MDTLM_FIELD_ABSENT,
    MDTLM_FIELD_U32(MDTLM_SRVTLM_FLOW_STATS_REC, logicalUnitNum),
    MDTLM_FIELD_U32(MDTLM_SRVTLM_FLOW_STATS_REC, periodId),
    MDTLM_FIELD_U32(MDTLM_SRVTLM_FLOW_STATS_REC, errorInfo),
    MDTLM_FIELD_U16(MDTLM_SRVTLM_FLOW_STATS_REC, ifIndex),
    MDTLM_FIELD_U32(MDTLM_SRVTLM_FLOW_STATS_REC, readDal),
    MDTLM_FIELD_U32(MDTLM_SRVTLM_FLOW_STATS_REC, readIoAvgLatency),
    MDTLM_FIELD_U32(MDTLM_SRVTLM_FLOW_STATS_REC, readIoAvgSize),
    MDTLM_FIELD_U32(MDTLM_SRVTLM_FLOW_STATS_REC, readIops),
    MDTLM_FIELD_U32(MDTLM_SRVTLM_FLOW_STATS_REC, readPendingIoCnt),
    MDTLM_FIELD_U32(MDTLM_SRVTLM_FLOW_STATS_REC, sequenceNumber),
    MDTLM_FIELD_U32(MDTLM_SRVTLM_FLOW_STATS_REC, writeDal),
    MDTLM_FIELD_U32(MDTLM_SRVTLM_FLOW_STATS_REC, writeDpl),
    MDTLM_FIELD_U32(MDTLM_SRVTLM_FLOW_STATS_REC, writeIoAvgLatency),
    MDTLM_FIELD_U32(MDTLM_SRVTLM_FLOW_STATS_REC, writeIoAvgSize),
    MDTLM_FIELD_U32(MDTLM_SRVTLM_FLOW_STATS_REC, writeIops),
    MDTLM_FIELD_U32(MDTLM_SRVTLM_FLOW_STATS_REC, writePendingIoCnt),
};

} // namespace

uint32_t MDTLM_SrvtlmFlowFieldForm(uint32_t mapKind, uint32_t fieldId)
{
    if (mapKind == MDTLM_FIELD_MAP_FILTER) {
        return MDTLM_RecordFieldForm(kFilterFields, fieldId);
    }
    return MDTLM_AddressConditionForm(kConditionFields, kSourceIp, kDestinationIp, MDTLM_FIELD_FORM_IP, fieldId);
}

extern "C" uint32_t MDTLM_SRVTLM_CmpSrcIpWithStr(const MDTLM_SRVTLM_FLOW_STATS_REC *rec, const char *text)
{
    return MDTLM_SrvtlmCmpAddress(rec->addressFamily, rec->srcIp, text);
}

extern "C" uint32_t MDTLM_SRVTLM_CmpDstIpWithStr(const MDTLM_SRVTLM_FLOW_STATS_REC *rec, const char *text)
{
    return MDTLM_SrvtlmCmpAddress(rec->addressFamily, rec->dstIp, text);
}

extern "C" uint32_t MDTLM_SRVTLM_FLOW_STATS_CmpFieldWithInfo(uint32_t fieldId, const MDTLM_PATH_CONDITION *cond,
                                                             const void *record)
{
    return MDTLM_AddressConditionHolds<MDTLM_SRVTLM_FLOW_STATS_REC>(kConditionFields, kSourceIp,
                                                                    MDTLM_SRVTLM_CmpSrcIpWithStr, kDestinationIp,
                                                                    MDTLM_SRVTLM_CmpDstIpWithStr, fieldId, cond,
                                                                    record);
}

extern "C" uint32_t MDTLM_SRVTLM_FLOW_STATS_CmpFieldWithFilter(uint32_t fieldId, const MDTLM_PATH_FILTER *filter,
                                                               const void *record)
{
    return MDTLM_RecordFilterHolds(kFilterFields, fieldId, filter, record);
}
