/*
 * GPB encoding of an I/O service flow throughput record: container field 8
 * holding one field 1 entry with the flow group (fields 1-5) and the
 * statistics group (6-8, the FCT/FET group 9-14, the other group 15-19). The
 * scratch buffers are those of the I/O service flow statistics sensor.
 */
#include "gpb_chain.h"
#include "mdtlm_vraldcn.h"
#include "sensor_gpb_fields.h"
#include "sensor_log_lines.h"
#include "srvtlm_address.h"

namespace {

using Rec = MDTLM_SRVTLM_FCTFLOW_STATS_REC;

constexpr uint32_t kContainerField = 8;
constexpr uint32_t kSourceIpField = 2;
constexpr uint32_t kDestinationIpField = 3;
constexpr uint32_t kSlotField = 5;

constexpr MDTLM_GPB_INT_FIELD kFamilyInts[] = {
    {1, MDTLM_FIELD_U32(Rec, addressFamily)},
};

constexpr MDTLM_GPB_INT_FIELD kPeriodInts[] = {
    {4, MDTLM_FIELD_U32(Rec, periodId)},
};

constexpr MDTLM_GPB_INT_FIELD kInterfaceInts[] = {
    {6, MDTLM_FIELD_U32(Rec, srcIfIndex)},
    {7, MDTLM_FIELD_U32(Rec, dstIfIndex)},
    {8, MDTLM_FIELD_U32(Rec, interfaceChangeStatus)},
};

constexpr MDTLM_GPB_INT_FIELD kFctFetInts[] = {
    {9, MDTLM_FIELD_U32(Rec, fctMax)},  {10, MDTLM_FIELD_U32(Rec, fctMin)}, {11, MDTLM_FIELD_U32(Rec, fctMean)},
    {12, MDTLM_FIELD_U64(Rec, fetMax)}, {13, MDTLM_FIELD_U64(Rec, fetMin)}, {14, MDTLM_FIELD_U64(Rec, fetMean)},
};

constexpr MDTLM_GPB_INT_FIELD kOtherInts[] = {
    {15, MDTLM_FIELD_U32(Rec, nakPacketNumber)},   {16, MDTLM_FIELD_U32(Rec, rdmaPacketNumber)},
    {17, MDTLM_FIELD_U32(Rec, rdmaMessageNumber)}, {18, MDTLM_FIELD_U32(Rec, errorInfo)},
    {19, MDTLM_FIELD_U32(Rec, sequenceNumber)},
};

} // namespace

extern "C" int32_t MDTLM_SRVTLM_FCTFLOW_GPB_EncodeIpAddress(const Rec *rec, uint8_t *out, int32_t cap)
{
    return MDTLM_SrvtlmGpbAddressFields(rec->addressFamily, rec->srcIp, rec->dstIp, kSourceIpField,
                                        kDestinationIpField, out, cap);
}

extern "C" int32_t MDTLM_SRVTLM_FCTFLOW_GPB_EncodeFlowInfo(const Rec *rec, uint8_t *out, int32_t cap)
{
    MDTLM_GPB_CHAIN chain(out, cap);
    MDTLM_GpbIntFields(chain, kFamilyInts, rec).Group(MDTLM_SRVTLM_FCTFLOW_GPB_EncodeIpAddress, rec);
    MDTLM_GpbIntFields(chain, kPeriodInts, rec);
    return MDTLM_GpbNumberText(chain, kSlotField, rec->slotId).Result();
}

extern "C" int32_t MDTLM_SRVTLM_FCTFLOW_GPB_EncodeWriteInfo(const Rec *rec, uint8_t *out, int32_t cap)
{
    return MDTLM_GpbIntGroup(kFctFetInts, rec, out, cap);
}

extern "C" int32_t MDTLM_SRVTLM_FCTFLOW_GPB_EncodeOtherInfo(const Rec *rec, uint8_t *out, int32_t cap)
{
    return MDTLM_GpbIntGroup(kOtherInts, rec, out, cap);
}

extern "C" int32_t MDTLM_SRVTLM_FCTFLOW_GPB_EncodeStatistics(const Rec *rec, uint8_t *out, int32_t cap)
{
    MDTLM_GPB_CHAIN chain(out, cap);
    MDTLM_GpbIntFields(chain, kInterfaceInts, rec)
        .Group(MDTLM_SRVTLM_FCTFLOW_GPB_EncodeWriteInfo, rec)
        .Group(MDTLM_SRVTLM_FCTFLOW_GPB_EncodeOtherInfo, rec);
    return chain.Result();
}

extern "C" int32_t MDTLM_SRVTLM_FCTFLOW_GPB_EncodeData(const Rec *rec, uint8_t *out, int32_t cap)
{
    return MDTLM_GpbGroups(rec, out, cap, MDTLM_SRVTLM_FCTFLOW_GPB_EncodeFlowInfo,
                           MDTLM_SRVTLM_FCTFLOW_GPB_EncodeStatistics);
}

extern "C" int32_t MDTLM_SRVTLM_FCTFLOW_GPB_EncodeMsg(const Rec *rec, uint8_t *out, int32_t cap)
{
    return MDTLM_GpbEncodeSensorMsg<Rec, MDTLM_SRVTLM_FCTFLOW_GPB_EncodeData>(
        rec, g_srvtlmFlowStatsBuff1, g_srvtlmFlowStatsBuff2, kContainerField, out, cap,
        kSrvtlmFctFlowLogLines.gpbNullRecord);
}
