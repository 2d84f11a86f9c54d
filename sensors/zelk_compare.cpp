/*
 * Condition and filter maps of the export flow cache sensor and the compare
 * callbacks behind them. A field id is the field's index in the record
 * (offset / 4).
 */
#include "mdtlm_vraldcn.h"
#include "sensor_record_fields.h"

extern "C" {

const MDTLM_FILTER_MAP_ENTRY g_femMdTlmZelkCacheCondMap[7] = {
    {"slot-id", 0},        {"source-ip", 1},      {"destination-ip", 2},      {"protocol-id", 3},
    {"l4-source-port", 4}, {"l4-destination-port", 5}, {"if-index", 6},
};

const MDTLM_FILTER_MAP_ENTRY g_femMdTlmZelkCacheFilterMap[7] = {
    {"detect-timestamp-second", 7}, {"state", 8},          {"seed", 9},     {"recovery-count", 10},
    {"sequence-number", 11},        {"recovery-mode", 12}, {"op-mode", 13},
};

} // extern "C"

namespace {

enum : uint32_t { kSourceIp = 1, kDestinationIp = 2 };

/* Conditions test equality on these; protocol-id (3) is accepted whatever its value. */
constexpr MDTLM_RECORD_FIELD kConditionFields[] = {
    MDTLM_FIELD_U32(MDTLM_ZELK_CACHE_REC, slotId),
    MDTLM_FIELD_ABSENT, /* source-ip: address text */
    MDTLM_FIELD_ABSENT, /* destination-ip: address text */
    MDTLM_FIELD_ABSENT, /* protocol-id */
    MDTLM_FIELD_U32(MDTLM_ZELK_CACHE_REC, l4SourcePort),
    MDTLM_FIELD_U32(MDTLM_ZELK_CACHE_REC, l4DestinationPort),
    MDTLM_FIELD_U32(MDTLM_ZELK_CACHE_REC, ifIndex),
};

constexpr MDTLM_RECORD_FIELD kFilterFields[] = {
    MDTLM_FIELD_ABSENT, MDTLM_FIELD_ABSENT, MDTLM_FIELD_ABSENT, MDTLM_FIELD_ABSENT,
    MDTLM_FIELD_ABSENT, MDTLM_FIELD_ABSENT, MDTLM_FIELD_ABSENT,
    MDTLM_FIELD_U32(MDTLM_ZELK_CACHE_REC, detectTimestampSecond),
    MDTLM_FIELD_U32(MDTLM_ZELK_CACHE_REC, state),
    MDTLM_FIELD_U32(MDTLM_ZELK_CACHE_REC, seed),
    MDTLM_FIELD_U32(MDTLM_ZELK_CACHE_REC, recoveryCount),
    MDTLM_FIELD_U32(MDTLM_ZELK_CACHE_REC, sequenceNumber),
    MDTLM_FIELD_U32(MDTLM_ZELK_CACHE_REC, recoveryMode),
    MDTLM_FIELD_U32(MDTLM_ZELK_CACHE_REC, opMode),
};

} // namespace

uint32_t MDTLM_ZelkCacheFieldForm(uint32_t mapKind, uint32_t fieldId)
{
    if (mapKind == MDTLM_FIELD_MAP_FILTER) {
        return MDTLM_RecordFieldForm(kFilterFields, fieldId);
    }
    return MDTLM_AddressConditionForm(kConditionFields, kSourceIp, kDestinationIp, MDTLM_FIELD_FORM_IPV4, fieldId);
}

extern "C" uint32_t MDTLM_ZELK_CmpIpv4WithStr(uint32_t addr, const char *text)
{
    return MDTLM_SRVTLM_CmpIpv4WithStr(addr, text);
}

extern "C" uint32_t MDTLM_ZELK_CmpFieldWithCondition(uint32_t fieldId, const MDTLM_PATH_CONDITION *cond,
                                                     const void *record)
{
    using Rec = MDTLM_ZELK_CACHE_REC;
    return MDTLM_AddressConditionHolds<Rec>(
        kConditionFields, kSourceIp,
        [](const Rec *rec, const char *text) { return MDTLM_ZELK_CmpIpv4WithStr(rec->sourceIp, text); },
        kDestinationIp,
        [](const Rec *rec, const char *text) { return MDTLM_ZELK_CmpIpv4WithStr(rec->destinationIp, text); },
        fieldId, cond, record);
}

extern "C" uint32_t MDTLM_ZELK_CmpFieldWithThread(uint32_t fieldId, const MDTLM_PATH_FILTER *filter,
                                                  const void *record)
{
    return MDTLM_RecordFilterHolds(kFilterFields, fieldId, filter, record);
}
