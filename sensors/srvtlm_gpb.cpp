/*
 * GPB encoding of an I/O service flow statistics record: container field 5
 * holding one field 1 entry with the flow group (fields 1-5) and the
 * statistics group (6-8, the read group 9-13, the write group 14-19, 20-22).
 */
#include "gpb_chain.h"
#include "mdtlm_vraldcn.h"
#include "sensor_gpb_fields.h"
#include "sensor_log_lines.h"
#include "srvtlm_address.h"

/* Shared by both I/O service sensors; both encode on the worker thread only. */
extern "C" {
uint8_t g_srvtlmFlowStatsBuff1[MDTLM_GPB_SCRATCH_SIZE];
uint8_t g_srvtlmFlowStatsBuff2[MDTLM_GPB_SCRATCH_SIZE];
}

namespace {

using Rec = MDTLM_SRVTLM_FLOW_STATS_REC;

constexpr uint32_t kContainerField = 5;
constexpr uint32_t kSourceIpField = 3;
constexpr uint32_t kDestinationIpField = 4;

constexpr MDTLM_GPB_INT_FIELD kFlowHeadInts[] = {
    {1, MDTLM_FIELD_U8(Rec, accessType)},
    {2, MDTLM_FIELD_U8(Rec, addressFamily)},
};

constexpr MDTLM_GPB_INT_FIELD kFlowTailInts[] = {
    {5, MDTLM_FIELD_U32(Rec, logicalUnitNum)},
};

constexpr MDTLM_GPB_INT_FIELD kStatisticsHeadInts[] = {
    {6, MDTLM_FIELD_U32(Rec, periodId)},
    {7, MDTLM_FIELD_U16(Rec, ifIndex)},
    {8, MDTLM_FIELD_U8(Rec, measureMode)},
};

constexpr MDTLM_GPB_INT_FIELD kReadInts[] = {
    {9, MDTLM_FIELD_U32(Rec, readIoAvgLatency)}, {10, MDTLM_FIELD_U32(Rec, readDal)},
    {11, MDTLM_FIELD_U32(Rec, readIops)},        {12, MDTLM_FIELD_U32(Rec, readIoAvgSize)},
    {13, MDTLM_FIELD_U32(Rec, readPendingIoCnt)},
};

constexpr MDTLM_GPB_INT_FIELD kWriteInts[] = {
    {14, MDTLM_FIELD_U32(Rec, writeIoAvgLatency)}, {15, MDTLM_FIELD_U32(Rec, writeDal)},
    {16, MDTLM_FIELD_U32(Rec, writeDpl)},          {17, MDTLM_FIELD_U32(Rec, writeIops)},
    {18, MDTLM_FIELD_U32(Rec, writeIoAvgSize)},    {19, MDTLM_FIELD_U32(Rec, writePendingIoCnt)},
};

constexpr MDTLM_GPB_INT_FIELD kStatisticsTailInts[] = {
    {20, MDTLM_FIELD_U32(Rec, errorInfo)},
    {21, MDTLM_FIELD_U32(Rec, interval)},
    {22, MDTLM_FIELD_U32(Rec, sequenceNumber)},
};

} // namespace

extern "C" int32_t MDTLM_SRVTLM_FLOW_GPB_EncodeIpAddress(const Rec *rec, uint8_t *out, int32_t cap)
{
    return MDTLM_SrvtlmGpbAddressFields(rec->addressFamily, rec->srcIp, rec->dstIp, kSourceIpField,
                                        kDestinationIpField, out, cap);
}

extern "C" int32_t MDTLM_SRVTLM_FLOW_GPB_EncodeFlowInfo(const Rec *rec, uint8_t *out, int32_t cap)
{
    MDTLM_GPB_CHAIN chain(out, cap);
    MDTLM_GpbIntFields(chain, kFlowHeadInts, rec).Group(MDTLM_SRVTLM_FLOW_GPB_EncodeIpAddress, rec);
    return MDTLM_GpbIntFields(chain, kFlowTailInts, rec).Result();
}

extern "C" int32_t MDTLM_SRVTLM_FLOW_GPB_EncodeReadInfo(const Rec *rec, uint8_t *out, int32_t cap)
{
    return MDTLM_GpbIntGroup(kReadInts, rec, out, cap);
}

extern "C" int32_t MDTLM_SRVTLM_FLOW_GPB_EncodeWriteInfo(const Rec *rec, uint8_t *out, int32_t cap)
{
    return MDTLM_GpbIntGroup(kWriteInts, rec, out, cap);
}

extern "C" int32_t MDTLM_SRVTLM_FLOW_GPB_EncodeStatistics(const Rec *rec, uint8_t *out, int32_t cap)
{
    MDTLM_GPB_CHAIN chain(out, cap);
    MDTLM_GpbIntFields(chain, kStatisticsHeadInts, rec)
        .Group(MDTLM_SRVTLM_FLOW_GPB_EncodeReadInfo, rec)
        .Group(MDTLM_SRVTLM_FLOW_GPB_EncodeWriteInfo, rec);
    return MDTLM_GpbIntFields(chain, kStatisticsTailInts, rec).Result();
}

extern "C" int32_t MDTLM_SRVTLM_FLOW_GPB_EncodeData(const Rec *rec, uint8_t *out, int32_t cap)
{
    return MDTLM_GpbGroups(rec, out, cap, MDTLM_SRVTLM_FLOW_GPB_EncodeFlowInfo, MDTLM_SRVTLM_FLOW_GPB_EncodeStatistics);
}

extern "C" int32_t MDTLM_SRVTLM_FLOW_GPB_EncodeMsg(const Rec *rec, uint8_t *out, int32_t cap)
{
    return MDTLM_GpbEncodeSensorMsg<Rec, MDTLM_SRVTLM_FLOW_GPB_EncodeData>(
        rec, g_srvtlmFlowStatsBuff1, g_srvtlmFlowStatsBuff2, kContainerField, out, cap,
        kSrvtlmFlowLogLines.gpbNullRecord);
}
