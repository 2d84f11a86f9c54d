/*
 * JSON encoding of an export flow cache record: one object and a comma.
 */
#include "mdtlm_platform.h"
#include "mdtlm_vraldcn.h"
#include "sensor_json_object.h"
#include "sensor_log_lines.h"
#include "srvtlm_address.h"
#include "zelk_texts.h"

/* The record body: members in record order, enumerations as texts. */
#define MDTLM_ZELK_JSON_BODY                                                                                   \
    "\"slot-id\":\"%s\",\"source-ip\":\"%s\",\"destination-ip\":\"%s\",\"protocol-id\":\"%s\","               \
    "\"l4-source-port\":%u,\"l4-destination-port\":%u,\"if-index\":%u,\"detect-timestamp-second\":%u,"      \
    "\"state\":\"%s\",\"seed\":%u,\"recovery-count\":%u,\"sequence-number\":%u,\"recovery-mode\":\"%s\","    \
    "\"op-mode\":\"%s\""

extern "C" const char *const MDTLM_ZELK_STATS_JSON_TEMPLATE = MDTLM_ZELK_JSON_BODY;

namespace {

/* Below this much room the sample buffer counts as full (the longest object is 410 bytes). */
constexpr int32_t kJsonMinRoom = 633;
constexpr const char *kNullParamFormat = "[%s:%d][ZELK][JSON] Param error, msg is NULL.";
constexpr uint32_t kNumberTextSize = 32;
constexpr uint32_t kAddressTextSize = 32;

} // namespace

extern "C" int32_t MDTLM_ZELK_JSON_CheckEncodePara(const MDTLM_ZELK_CACHE_REC *rec, const uint8_t *out, int32_t cap)
{
    return MDTLM_JsonCheckEncodePara(rec, out, cap, kJsonMinRoom, kZelkLogLines.jsonNullParam, kNullParamFormat);
}

extern "C" uint32_t MDTLM_ZELK_JSON_EncodeIpv4(const MDTLM_ZELK_CACHE_REC *rec, char *src, char *dst, uint32_t cap)
{
    return MDTLM_SrvtlmIpv4Pair(&rec->sourceIp, &rec->destinationIp, src, dst, cap);
}

extern "C" int32_t MDTLM_ZELK_JSON_EncodeMsg(const MDTLM_ZELK_CACHE_REC *rec, uint8_t *out, int32_t cap)
{
    const int32_t check = MDTLM_ZELK_JSON_CheckEncodePara(rec, out, cap);
    if (check != 0) {
        return check;
    }

    char slot[kNumberTextSize];
    char src[kAddressTextSize];
    char dst[kAddressTextSize];
    slot[MDTLM_PutDecimal(slot, rec->slotId)] = '\0';
    const MDTLM_SIZED_TEXT *protocol = MDTLM_TextTableFind(kZelkProtocols, rec->protocolId);
    const MDTLM_SIZED_TEXT *recoveryMode = MDTLM_TextTableFind(kZelkRecoveryModes, rec->recoveryMode);
    const MDTLM_SIZED_TEXT *opMode = MDTLM_TextTableFind(kZelkOpModes, rec->opMode);
    const MDTLM_SIZED_TEXT *state = MDTLM_TextTableFind(kZelkAclAppStates, rec->state);
    if (protocol == nullptr || MDTLM_ZELK_JSON_EncodeIpv4(rec, src, dst, kAddressTextSize) != 0 ||
        recoveryMode == nullptr || opMode == nullptr || state == nullptr) {
        return MDTLM_ENCODE_FAIL;
    }

    return MDTLM_JsonWriteMembers<MDTLM_ZELK_JSON_BODY>(out, cap, slot, src, dst, *protocol, rec->l4SourcePort,
                                 rec->l4DestinationPort, rec->ifIndex, rec->detectTimestampSecond, *state, rec->seed,
                                 rec->recoveryCount, rec->sequenceNumber, *recoveryMode, *opMode);
}
