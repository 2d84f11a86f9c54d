/*
 * GPB encoding of an export flow cache record: container field 7 holding one
 * field 1 entry with the key group (fields 1-7) and the data group (8-14).
 */
#include "gpb_chain.h"
#include "mdtlm_vraldcn.h"
#include "sensor_gpb_fields.h"
#include "sensor_log_lines.h"

extern "C" {
uint8_t g_zelkCachesBuff1[MDTLM_GPB_SCRATCH_SIZE];
uint8_t g_zelkCachesBuff2[MDTLM_GPB_SCRATCH_SIZE];
}

namespace {

constexpr uint32_t kContainerField = 7;
constexpr uint32_t kSlotField = 1;
constexpr uint32_t kSourceIpField = 2;
constexpr uint32_t kDestinationIpField = 3;
constexpr uint32_t kAddressTextSize = 32;

constexpr MDTLM_GPB_INT_FIELD kKeyInts[] = {
    {4, MDTLM_FIELD_U32(MDTLM_ZELK_CACHE_REC, protocolId)},
    {5, MDTLM_FIELD_U32(MDTLM_ZELK_CACHE_REC, l4SourcePort)},
    {6, MDTLM_FIELD_U32(MDTLM_ZELK_CACHE_REC, l4DestinationPort)},
    {7, MDTLM_FIELD_U32(MDTLM_ZELK_CACHE_REC, ifIndex)},
};

constexpr MDTLM_GPB_INT_FIELD kDataInts[] = {
    {8, MDTLM_FIELD_U32(MDTLM_ZELK_CACHE_REC, detectTimestampSecond)},
    {9, MDTLM_FIELD_U32(MDTLM_ZELK_CACHE_REC, state)},
    {10, MDTLM_FIELD_U32(MDTLM_ZELK_CACHE_REC, seed)},
    {11, MDTLM_FIELD_U32(MDTLM_ZELK_CACHE_REC, recoveryCount)},
    {12, MDTLM_FIELD_U32(MDTLM_ZELK_CACHE_REC, sequenceNumber)},
    {13, MDTLM_FIELD_U32(MDTLM_ZELK_CACHE_REC, recoveryMode)},
    {14, MDTLM_FIELD_U32(MDTLM_ZELK_CACHE_REC, opMode)},
};

} // namespace

extern "C" int32_t MDTLM_ZELK_GPB_EncodeIpAddress(const MDTLM_ZELK_CACHE_REC *rec, uint8_t *out, int32_t cap)
{
    char src[kAddressTextSize];
    char dst[kAddressTextSize];
    if (MDTLM_ZELK_JSON_EncodeIpv4(rec, src, dst, kAddressTextSize) != 0) {
        return MDTLM_ENCODE_FAIL;
    }
    MDTLM_GPB_CHAIN chain(out, cap);
    chain.Str(kSourceIpField, src).Str(kDestinationIpField, dst);
    return chain.Result();
}

extern "C" int32_t MDTLM_ZELK_GPB_EncodeCacheKeyInfo(const MDTLM_ZELK_CACHE_REC *rec, uint8_t *out, int32_t cap)
{
    MDTLM_GPB_CHAIN chain(out, cap);
    MDTLM_GpbNumberText(chain, kSlotField, rec->slotId).Group(MDTLM_ZELK_GPB_EncodeIpAddress, rec);
    return MDTLM_GpbIntFields(chain, kKeyInts, rec).Result();
}

extern "C" int32_t MDTLM_ZELK_GPB_EncodeCacheDataInfo(const MDTLM_ZELK_CACHE_REC *rec, uint8_t *out, int32_t cap)
{
    return MDTLM_GpbIntGroup(kDataInts, rec, out, cap);
}

extern "C" int32_t MDTLM_ZELK_GPB_EncodeData(const MDTLM_ZELK_CACHE_REC *rec, uint8_t *out, int32_t cap)
{
    return MDTLM_GpbGroups(rec, out, cap, MDTLM_ZELK_GPB_EncodeCacheKeyInfo, MDTLM_ZELK_GPB_EncodeCacheDataInfo);
}

extern "C" int32_t MDTLM_ZELK_GPB_EncodeMsg(const MDTLM_ZELK_CACHE_REC *rec, uint8_t *out, int32_t cap)
{
    return MDTLM_GpbEncodeSensorMsg<MDTLM_ZELK_CACHE_REC, MDTLM_ZELK_GPB_EncodeData>(
        rec, g_zelkCachesBuff1, g_zelkCachesBuff2, kContainerField, out, cap,
        kZelkLogLines.gpbNullRecord);
}
