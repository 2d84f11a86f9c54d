/*
 * GPB encoding of a result statistics record: container field 3 holding one
 * field 1 entry with the common group (fields 1, 2, 3, 13), the ACL group
 * (5, 6, 7, 14) and the result group (8, 9, 12, 10), in that order.
 */
#include "gpb_chain.h"
#include "mdtlm_vraldcn.h"
#include "sensor_gpb_fields.h"
#include "sensor_log_lines.h"

extern "C" {
uint8_t g_qumaStatsBuff1[MDTLM_GPB_SCRATCH_SIZE];
uint8_t g_qumaStatsBuff2[MDTLM_GPB_SCRATCH_SIZE];
}

namespace {

constexpr uint32_t kContainerField = 3;
constexpr uint32_t kAclNameField = 6;
constexpr uint32_t kWarnInfoField = 12;

constexpr MDTLM_GPB_INT_FIELD kCommonInts[] = {
    {1, MDTLM_FIELD_U32(MDTLM_QUMA_RESULT_REC, id)},
    {2, MDTLM_FIELD_U32(MDTLM_QUMA_RESULT_REC, periodId)},
    {3, MDTLM_FIELD_U32(MDTLM_QUMA_RESULT_REC, protocol)},
    {13, MDTLM_FIELD_U32(MDTLM_QUMA_RESULT_REC, ruleId)},
};

constexpr MDTLM_GPB_INT_FIELD kAclNumberInts[] = {
    {5, MDTLM_FIELD_U32(MDTLM_QUMA_RESULT_REC, aclNumber)},
};

constexpr MDTLM_GPB_INT_FIELD kVxlanInts[] = {
    {7, MDTLM_FIELD_U32(MDTLM_QUMA_RESULT_REC, vxlanReservedValue)},
    {14, MDTLM_FIELD_U32(MDTLM_QUMA_RESULT_REC, vxlanReservedValueSecond)},
};

constexpr MDTLM_GPB_INT_FIELD kPacketInts[] = {
    {8, MDTLM_FIELD_U64(MDTLM_QUMA_RESULT_REC, inputPackets)},
    {9, MDTLM_FIELD_U64(MDTLM_QUMA_RESULT_REC, outputPackets)},
};

constexpr MDTLM_GPB_INT_FIELD kTimeStampInts[] = {
    {10, MDTLM_FIELD_U32(MDTLM_QUMA_RESULT_REC, timeStamp)},
};

} // namespace

extern "C" int32_t MDTLM_QUMA_GPB_EncodeCommonInfo(const MDTLM_QUMA_RESULT_REC *rec, uint8_t *out, int32_t cap)
{
    return MDTLM_GpbIntGroup(kCommonInts, rec, out, cap);
}

extern "C" int32_t MDTLM_QUMA_GPB_EncodeAclInfo(const MDTLM_QUMA_RESULT_REC *rec, uint8_t *out, int32_t cap)
{
    MDTLM_GPB_CHAIN chain(out, cap);
    MDTLM_GpbIntFields(chain, kAclNumberInts, rec);
    MDTLM_GpbFixedText(chain, kAclNameField, rec->aclName);
    return MDTLM_GpbIntFields(chain, kVxlanInts, rec).Result();
}

extern "C" int32_t MDTLM_QUMA_GPB_EncodeResultInfo(const MDTLM_QUMA_RESULT_REC *rec, uint8_t *out, int32_t cap)
{
    MDTLM_GPB_CHAIN chain(out, cap);
    MDTLM_GpbIntFields(chain, kPacketInts, rec);
    MDTLM_GpbFixedText(chain, kWarnInfoField, rec->warnInfo);
    return MDTLM_GpbIntFields(chain, kTimeStampInts, rec).Result();
}

extern "C" int32_t MDTLM_QUMA_GPB_EncodeStatistics(const MDTLM_QUMA_RESULT_REC *rec, uint8_t *out, int32_t cap)
{
    return MDTLM_GpbGroups(rec, out, cap, MDTLM_QUMA_GPB_EncodeAclInfo, MDTLM_QUMA_GPB_EncodeResultInfo);
}

extern "C" int32_t MDTLM_QUMA_GPB_EncodeData(const MDTLM_QUMA_RESULT_REC *rec, uint8_t *out, int32_t cap)
{
    return MDTLM_GpbGroups(rec, out, cap, MDTLM_QUMA_GPB_EncodeCommonInfo, MDTLM_QUMA_GPB_EncodeStatistics);
}

extern "C" int32_t MDTLM_QUMA_GPB_EncodeMsg(const MDTLM_QUMA_RESULT_REC *rec, uint8_t *out, int32_t cap)
{
    return MDTLM_GpbEncodeSensorMsg<MDTLM_QUMA_RESULT_REC, MDTLM_QUMA_GPB_EncodeData>(
        rec, g_qumaStatsBuff1, g_qumaStatsBuff2, kContainerField, out, cap,
        kQumaLogLines.gpbNullRecord);
}
