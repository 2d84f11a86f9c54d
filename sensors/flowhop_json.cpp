/*
 * JSON encoding of a flow-hop statistics record: one object followed by a
 * comma, members in the order of the template, texts inserted as they are.
 * Every record written advances the hop counter of its cast type.
 */
#include "flow_family.h"
#include "mdtlm_platform.h"
#include "sensor_json_object.h"

/* 24 members; total-count is printed from its low 32 bits. */
#define FLOWHOP_STATS_JSON_TEMPLATE                                                                                \
    "\"flow-id\":%llu,\"direction\":%u,\"if-index\":%u,\"error-info\":%u,\"error-info-ext\":%u,"                 \
    "\"period-id\":%u,\"packet-count\":%llu,\"byte-count\":%llu,\"timestamp-second\":%u,"                       \
    "\"timestamp-nanosecond\":%u,\"ttl\":%u,\"measure-mode\":%u,\"maximum-delay\":%u,\"total-delay\":%llu,"     \
    "\"total-count\":%u,\"interval\":%u,\"vlan\":%u,\"tunnel-mode\":%u,\"tunnel-id\":%u,\"outer-ttl\":%u,"      \
    "\"queue-pair\":%u,\"sequence-number\":%u,\"chassis-id\":\"%s\",\"slot-id\":\"%s\""

namespace {

/* Below this capacity a record is refused with -2, so a JSON sample buffer is
 * uploaded while it still has room for the longest record. */
constexpr int32_t kJsonFloor = 1335;

using Rec = MDTLM_FLOWHOP_STATS_REC;

} // namespace

extern "C" {

const char *const MDTLM_VRALDCN_FLOWHOP_STATS_JSON_TEMPLATE = FLOWHOP_STATS_JSON_TEMPLATE;

/* Per cast type counters of the JSON records written; nothing reads them back. */
uint32_t g_unicastJsonHopSequenceNumber = 0;
uint32_t g_multicastJsonHopSequenceNumber = 0;

void MDTLM_VRALDCN_FLOWHOP_JSON_AddSequenceNumber(uint32_t castType)
{
    MDTLM_FlowAdvanceJsonCounter(castType, &g_unicastJsonHopSequenceNumber, &g_multicastJsonHopSequenceNumber);
}

int32_t MDTLM_VRALDCN_FLOWHOP_JSON_CheckEncodePara(const Rec *rec, const uint8_t *out, int32_t cap)
{
    return MDTLM_JsonCheckEncodePara(rec, out, cap, kJsonFloor);
}

int32_t MDTLM_VRALDCN_FLOWHOP_JSON_EncodeMsg(const Rec *rec, uint8_t *out, int32_t cap)
{
    const int32_t check = MDTLM_VRALDCN_FLOWHOP_JSON_CheckEncodePara(rec, out, cap);
    if (check != 0) {
        return check;
    }
    MDTLM_FLOW_TEXTS texts;
    if (!MDTLM_FlowCutTexts(rec->chassisId, rec->slotId, &texts)) {
        return MDTLM_ENCODE_FAIL;
    }

    const MDTLM_FLOW_DERIVED d = MDTLM_FlowDerive(rec);
    const int32_t used = MDTLM_JsonWriteMembers<FLOWHOP_STATS_JSON_TEMPLATE>(out, cap, static_cast<unsigned long long>(d.flowId), d.direction,
        rec->ifIndex, d.errorInfo, d.errorInfoExt, rec->periodId, static_cast<unsigned long long>(rec->packetCount),
        static_cast<unsigned long long>(rec->byteCount), rec->timestampSecond, rec->timestampNanosecond, rec->ttl,
        rec->measureMode, MDTLM_FlowHopMaximumDelay(rec), static_cast<unsigned long long>(MDTLM_FlowHopTotalDelay(rec)),
        static_cast<uint32_t>(rec->totalCount), rec->interval, unsigned{rec->vlan}, d.tunnelMode, rec->tunnelId,
        rec->outerTtl, rec->queuePair, rec->sequenceNumber, texts.chassisId, texts.slotId);
    if (used < 0) {
        return used;
    }
    MDTLM_FlowAdvanceJsonCounter(rec->castType, &g_unicastJsonHopSequenceNumber, &g_multicastJsonHopSequenceNumber);
    return used;
}

} /* extern "C" */
