/*
 * JSON encoding of a flow statistics record: one object followed by a comma,
 * members in the order of the template, texts inserted as they are.
 */
#include "flow_family.h"
#include "mdtlm_platform.h"
#include "sensor_json_object.h"

/* 27 members; the longest record it can produce stays far below the floor. */
#define FLOW_STATS_JSON_TEMPLATE                                                                                   \
    "\"flow-id\":%llu,\"direction\":%u,\"address-family\":%u,\"source-ip\":\"%s\",\"destination-ip\":\"%s\","   \
    "\"source-port\":%u,\"destination-port\":%u,\"protocol\":%u,\"if-index\":%u,\"error-info\":%u,"             \
    "\"error-info-ext\":%u,\"interval\":%u,\"period-id\":%u,\"packet-count\":%llu,\"byte-count\":%llu,"         \
    "\"timestamp-second\":%u,\"timestamp-nanosecond\":%u,\"ttl\":%u,\"measure-mode\":%u,\"vlan\":%u,"           \
    "\"queue-pair\":%u,\"tunnel-mode\":%u,\"tunnel-id\":%u,\"outer-ttl\":%u,\"sequence-number\":%u,"            \
    "\"chassis-id\":\"%s\",\"slot-id\":\"%s\""

namespace {

/* Below this capacity a record is refused with -2, so a JSON sample buffer is
 * uploaded while it still has room for the longest record. */
constexpr int32_t kJsonFloor = 1449;

using Rec = MDTLM_FLOW_STATS_REC;

} // namespace

extern "C" {

const char *const MDTLM_VRALDCN_FLOW_STATS_JSON_TEMPLATE = FLOW_STATS_JSON_TEMPLATE;

/* Per cast type counters of JSON records; the flow path leaves them alone. */
uint32_t g_unicastJsonSequenceNumber = 0;
uint32_t g_multicastJsonSequenceNumber = 0;

void MDTLM_VRALDCN_FLOW_JSON_AddSequenceNumber(uint32_t castType)
{
    MDTLM_FlowAdvanceJsonCounter(castType, &g_unicastJsonSequenceNumber, &g_multicastJsonSequenceNumber);
}

int32_t MDTLM_VRALDCN_FLOW_JSON_CheckEncodePara(const Rec *rec, const uint8_t *out, int32_t cap)
{
    return MDTLM_JsonCheckEncodePara(rec, out, cap, kJsonFloor);
}

int32_t MDTLM_VRALDCN_FLOW_JSON_EncodeMsg(const Rec *rec, uint8_t *out, int32_t cap)
{
    const int32_t check = MDTLM_VRALDCN_FLOW_JSON_CheckEncodePara(rec, out, cap);
    if (check != 0) {
        return check;
    }
    /* The opening brace is written before the record is looked at, so a
     * record refused for its addresses or texts leaves it behind. */
    if (MDTLM_JsonOpen(out, cap) < 0) {
        return MDTLM_ENCODE_FAIL;
    }
    char src[MDTLM_FLOW_ADDR_TEXT_LEN];
    char dst[MDTLM_FLOW_ADDR_TEXT_LEN];
    MDTLM_FLOW_TEXTS texts;
    if (MDTLM_FlowFormatAddresses(rec, src, dst) != 0 || !MDTLM_FlowCutTexts(rec->chassisId, rec->slotId, &texts)) {
        return MDTLM_ENCODE_FAIL;
    }

    const MDTLM_FLOW_DERIVED d = MDTLM_FlowDerive(rec);
    return MDTLM_JsonWriteMembers<FLOW_STATS_JSON_TEMPLATE>(out, cap, static_cast<unsigned long long>(d.flowId), d.direction,
        d.addressFamily, src, dst, unsigned{rec->srcPort}, unsigned{rec->dstPort}, unsigned{rec->protocol},
        rec->ifIndex, d.errorInfo, d.errorInfoExt, rec->interval, rec->periodId,
        static_cast<unsigned long long>(rec->packetCount), static_cast<unsigned long long>(rec->byteCount),
        rec->timestampSecond, rec->timestampNanosecond, rec->ttl, rec->measureMode, unsigned{rec->vlan},
        rec->queuePair, d.tunnelMode, rec->tunnelId, rec->outerTtl, rec->sequenceNumber, texts.chassisId,
        texts.slotId);
}

} /* extern "C" */
