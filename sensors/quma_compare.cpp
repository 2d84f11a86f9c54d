/*
 * Condition and filter maps of the result statistics sensor and the compare
 * callbacks behind them. The packet counters are compared at their full
 * 64-bit width, every other field as a 32-bit value.
 */
#include "mdtlm_vraldcn.h"
#include "sensor_record_fields.h"

extern "C" {

const MDTLM_FILTER_MAP_ENTRY g_femMdTlmQumaResultCondMap[2] = {
    {"id", 0},
    {"period-id", 1},
};

/* vxlan-reserved-value-second (id 10) has no row: no filter reaches it. */
const MDTLM_FILTER_MAP_ENTRY g_femMdTlmQumaResultFilterMap[10] = {
    {"acl-number", 2}, {"id", 0},       {"input-packets", 3}, {"loss-rate", 4},            {"output-packets", 5},
    {"period-id", 1},  {"protocol", 6}, {"rule-id", 7},       {"vxlan-reserved-value", 8}, {"time-stamp", 9},
};

} // extern "C"

namespace {

constexpr MDTLM_RECORD_FIELD kConditionFields[] = {
    MDTLM_FIELD_U32(MDTLM_QUMA_RESULT_REC, id),
    MDTLM_FIELD_U32(MDTLM_QUMA_RESULT_REC, periodId),
};

constexpr MDTLM_RECORD_FIELD kFilterFields[] = {
    MDTLM_FIELD_U32(MDTLM_QUMA_RESULT_REC, id),
    MDTLM_FIELD_U32(MDTLM_QUMA_RESULT_REC, periodId),
    MDTLM_FIELD_U32(MDTLM_QUMA_RESULT_REC, aclNumber),
    MDTLM_FIELD_U64(MDTLM_QUMA_RESULT_REC, inputPackets),
    MDTLM_FIELD_U32(MDTLM_QUMA_RESULT_REC, lossRate),
    MDTLM_FIELD_U64(MDTLM_QUMA_RESULT_REC, outputPackets),
    MDTLM_FIELD_U32(MDTLM_QUMA_RESULT_REC, protocol),
    MDTLM_FIELD_U32(MDTLM_QUMA_RESULT_REC, ruleId),
    MDTLM_FIELD_U32(MDTLM_QUMA_RESULT_REC, vxlanReservedValue),
    MDTLM_FIELD_U32(MDTLM_QUMA_RESULT_REC, timeStamp),
    MDTLM_FIELD_U32(MDTLM_QUMA_RESULT_REC, vxlanReservedValueSecond),
};

} // namespace

uint32_t MDTLM_QumaResultFieldForm(uint32_t mapKind, uint32_t fieldId)
{
    return mapKind == MDTLM_FIELD_MAP_FILTER ? MDTLM_RecordFieldForm(kFilterFields, fieldId)
                                             : MDTLM_RecordFieldForm(kConditionFields, fieldId);
}

extern "C" uint32_t MDTLM_QUMA_STATS_CmpFieldWithCondition(uint32_t fieldId, const MDTLM_PATH_CONDITION *cond,
                                                           const void *record)
{
    return MDTLM_RecordConditionEquals(kConditionFields, fieldId, cond, record);
}

extern "C" uint32_t MDTLM_QUMA_STATS_CmpFieldWithThread(uint32_t fieldId, const MDTLM_PATH_FILTER *filter,
                                                        const void *record)
{
    return MDTLM_RecordFilterHolds(kFilterFields, fieldId, filter, record);
}
