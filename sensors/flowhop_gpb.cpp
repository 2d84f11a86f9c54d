/*
 * GPB encoding of a flow-hop statistics record: the body as one flat message
 * of fields written group by group, then framed as one entry of the sample's
 * container field 3.
 */
#include "flow_family.h"
#include "gpb_chain.h"
#include "sensor_gpb_fields.h"

namespace {

/* This sensor names its own encoder in the null-record line. */
constexpr const char *kNullRecordFormat = "[%s:%d][VRALDCN_FLOWHOP_GPB_EncodeMsg] Param error, msg is NULL.";
constexpr uint32_t kContainerField = 3;

constexpr MDTLM_FLOW_GPB_STATS_FIELDS kStatsFields = {
    .errorInfo = 4,
    .errorInfoExt = 23,
    .periodId = 5,
    .packetCount = 6,
    .byteCount = 7,
    .timestampSecond = 8,
    .timestampNanosecond = 9,
};

constexpr MDTLM_FLOW_GPB_PACKET_FIELDS kPacketFields = {
    .ttl = 11,
    .vlan = 29,
    .tunnelMode = 30,
    .tunnelId = 31,
    .outerTtl = 32,
    .queuePair = 33,
};

using Rec = MDTLM_FLOWHOP_STATS_REC;

} // namespace

extern "C" {

uint8_t g_vralDcnFlowHopStatsBuff1[MDTLM_GPB_SCRATCH_SIZE];
uint8_t g_vralDcnFlowHopStatsBuff2[MDTLM_GPB_SCRATCH_SIZE];

int32_t MDTLM_VRALDCN_FLOWHOP_GPB_EncodeFlowInfo(const Rec *rec, uint8_t *out, int32_t cap)
{
    const MDTLM_FLOW_DERIVED d = MDTLM_FlowDerive(rec);
    return MDTLM_GPB_CHAIN(out, cap)
        .Int(1, d.flowId)
        .Int(2, d.direction)
        .Int(3, rec->ifIndex)
        .Int(13, rec->measureMode)
        .Int(27, rec->interval)
        .Result();
}

int32_t MDTLM_VRALDCN_FLOWHOP_GPB_EncodeErrorInfo(const Rec *rec, uint8_t *out, int32_t cap)
{
    return MDTLM_FlowGpbErrorInfo<kStatsFields>(rec, out, cap);
}

int32_t MDTLM_VRALDCN_FLOWHOP_GPB_EncodePacketByteCnt(const Rec *rec, uint8_t *out, int32_t cap)
{
    return MDTLM_FlowGpbPacketByteCnt<kStatsFields>(rec, out, cap);
}

int32_t MDTLM_VRALDCN_FLOWHOP_GPB_EncodeTimeStamp(const Rec *rec, uint8_t *out, int32_t cap)
{
    return MDTLM_FlowGpbTimeStamp<kStatsFields>(rec, out, cap);
}

int32_t MDTLM_VRALDCN_FLOWHOP_GPB_EncodeStatistics(const Rec *rec, uint8_t *out, int32_t cap)
{
    return MDTLM_FlowGpbStatistics<kStatsFields>(rec, out, cap);
}

int32_t MDTLM_VRALDCN_FLOWHOP_GPB_EncodePacketInfo(const Rec *rec, uint8_t *out, int32_t cap)
{
    return MDTLM_FlowGpbPacketInfo<kPacketFields>(rec, out, cap);
}

int32_t MDTLM_VRALDCN_FLOWHOP_GPB_EncodeDelay(const Rec *rec, uint8_t *out, int32_t cap)
{
    return MDTLM_GPB_CHAIN(out, cap)
        .Int(14, MDTLM_FlowHopMaximumDelay(rec))
        .Int(16, MDTLM_FlowHopTotalDelay(rec))
        .Int(17, rec->totalCount)
        .Result();
}

int32_t MDTLM_VRALDCN_FLOWHOP_GPB_EncodeData(const Rec *rec, uint8_t *out, int32_t cap)
{
    return MDTLM_GPB_CHAIN(out, cap)
        .Group(MDTLM_VRALDCN_FLOWHOP_GPB_EncodeFlowInfo, rec)
        .Group(MDTLM_VRALDCN_FLOWHOP_GPB_EncodeStatistics, rec)
        .Group(MDTLM_VRALDCN_FLOWHOP_GPB_EncodePacketInfo, rec)
        .Group(MDTLM_VRALDCN_FLOWHOP_GPB_EncodeDelay, rec)
        .Group(MDTLM_FlowGpbTail<28, 35, 36, Rec>, rec)
        .Result();
}

int32_t MDTLM_VRALDCN_FLOWHOP_GPB_EncodeMsg(const Rec *rec, uint8_t *out, int32_t cap)
{
    return MDTLM_GpbEncodeSensorMsg<Rec, MDTLM_VRALDCN_FLOWHOP_GPB_EncodeData>(
        rec, g_vralDcnFlowHopStatsBuff1, g_vralDcnFlowHopStatsBuff2, kContainerField, out, cap, MDTLM_LOG_LINE_OF_CALL,
        kNullRecordFormat);
}

} /* extern "C" */
