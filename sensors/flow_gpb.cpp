/*
 * GPB encoding of a flow statistics record: the body as one flat message of
 * fields written group by group, then framed as one entry of the sample's
 * container field 2.
 */
#include "flow_family.h"
#include "gpb_chain.h"
#include "sensor_gpb_fields.h"

namespace {

constexpr uint32_t kContainerField = 2;

constexpr MDTLM_FLOW_GPB_STATS_FIELDS kStatsFields = {
    .errorInfo = 13,
    .errorInfoExt = 33,
    .periodId = 15,
    .packetCount = 16,
    .byteCount = 17,
    .timestampSecond = 18,
    .timestampNanosecond = 19,
};

constexpr MDTLM_FLOW_GPB_PACKET_FIELDS kPacketFields = {
    .ttl = 21,
    .vlan = 23,
    .tunnelMode = 36,
    .tunnelId = 37,
    .outerTtl = 38,
    .queuePair = 39,
};

using Rec = MDTLM_FLOW_STATS_REC;

} // namespace

extern "C" {

uint8_t g_vralDcnFlowStatsBuff1[MDTLM_GPB_SCRATCH_SIZE];
uint8_t g_vralDcnFlowStatsBuff2[MDTLM_GPB_SCRATCH_SIZE];

int32_t MDTLM_VRALDCN_FLOW_GPB_EncodeFlowInfo(const Rec *rec, uint8_t *out, int32_t cap)
{
    const MDTLM_FLOW_DERIVED d = MDTLM_FlowDerive(rec);
    return MDTLM_GPB_CHAIN(out, cap)
        .Int(1, d.flowId)
        .Int(2, d.direction)
        .Int(12, rec->ifIndex)
        .Int(14, rec->interval)
        .Int(25, rec->measureMode)
        .Result();
}

int32_t MDTLM_VRALDCN_FLOW_GPB_EncodeIpAddress(const Rec *rec, uint8_t *out, int32_t cap)
{
    char src[MDTLM_FLOW_ADDR_TEXT_LEN];
    char dst[MDTLM_FLOW_ADDR_TEXT_LEN];
    const int32_t ret = MDTLM_FlowFormatAddresses(rec, src, dst);
    if (ret < 0) {
        return ret;
    }
    return MDTLM_GPB_CHAIN(out, cap).Str(4, src).Str(5, dst).Result();
}

int32_t MDTLM_VRALDCN_FLOW_GPB_EncodeProtocolPort(const Rec *rec, uint8_t *out, int32_t cap)
{
    return MDTLM_GPB_CHAIN(out, cap).Int(10, rec->protocol).Int(8, rec->srcPort).Int(9, rec->dstPort).Result();
}

int32_t MDTLM_VRALDCN_FLOW_GPB_EncodeTuple(const Rec *rec, uint8_t *out, int32_t cap)
{
    return MDTLM_GPB_CHAIN(out, cap)
        .Int(3, MDTLM_FlowDerive(rec).addressFamily)
        .Group(MDTLM_VRALDCN_FLOW_GPB_EncodeIpAddress, rec)
        .Group(MDTLM_VRALDCN_FLOW_GPB_EncodeProtocolPort, rec)
        .Result();
}

int32_t MDTLM_VRALDCN_FLOW_GPB_EncodeErrorInfo(const Rec *rec, uint8_t *out, int32_t cap)
{
    return MDTLM_FlowGpbErrorInfo<kStatsFields>(rec, out, cap);
}

int32_t MDTLM_VRALDCN_FLOW_GPB_EncodePacketByteCnt(const Rec *rec, uint8_t *out, int32_t cap)
{
    return MDTLM_FlowGpbPacketByteCnt<kStatsFields>(rec, out, cap);
}

int32_t MDTLM_VRALDCN_FLOW_GPB_EncodeTimeStamp(const Rec *rec, uint8_t *out, int32_t cap)
{
    return MDTLM_FlowGpbTimeStamp<kStatsFields>(rec, out, cap);
}

int32_t MDTLM_VRALDCN_FLOW_GPB_EncodeStatistics(const Rec *rec, uint8_t *out, int32_t cap)
{
    return MDTLM_FlowGpbStatistics<kStatsFields>(rec, out, cap);
}

int32_t MDTLM_VRALDCN_FLOW_GPB_EncodePacketInfo(const Rec *rec, uint8_t *out, int32_t cap)
{
    return MDTLM_FlowGpbPacketInfo<kPacketFields>(rec, out, cap);
}

int32_t MDTLM_VRALDCN_FLOW_GPB_EncodeData(const Rec *rec, uint8_t *out, int32_t cap)
{
    return MDTLM_GPB_CHAIN(out, cap)
        .Group(MDTLM_VRALDCN_FLOW_GPB_EncodeFlowInfo, rec)
        .Group(MDTLM_VRALDCN_FLOW_GPB_EncodeTuple, rec)
        .Group(MDTLM_VRALDCN_FLOW_GPB_EncodeStatistics, rec)
        .Group(MDTLM_VRALDCN_FLOW_GPB_EncodePacketInfo, rec)
        .Group(MDTLM_FlowGpbTail<35, 41, 42, Rec>, rec)
        .Result();
}

int32_t MDTLM_VRALDCN_FLOW_GPB_EncodeMsg(const Rec *rec, uint8_t *out, int32_t cap)
{
    return MDTLM_GpbEncodeSensorMsg<Rec, MDTLM_VRALDCN_FLOW_GPB_EncodeData>(
        rec, g_vralDcnFlowStatsBuff1, g_vralDcnFlowStatsBuff2, kContainerField, out, cap);
}

} /* extern "C" */
