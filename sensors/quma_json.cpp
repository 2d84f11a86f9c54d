/*
 * JSON encoding of a result statistics record: one object and a comma.
 */
#include "mdtlm_vraldcn.h"
#include "sensor_json_object.h"
#include "sensor_log_lines.h"
#include "quma_texts.h"
#include "sensor_record_fields.h"

/* The record body. The keys use underscores, all but "vxlan-reserved-value-second",
 * which keeps its hyphens: collectors match the keys as written. */
#define MDTLM_QUMA_JSON_BODY                                                                                   \
    "\"id\":%u,\"period_id\":%u,\"protocol\":\"%s\",\"rule_id\":\"%u\",\"acl_number\":%u,\"acl_name\":\"%s\"," \
    "\"vxlan_reserved_value\":%u,\"vxlan-reserved-value-second\":%u,\"input_packets\":%llu,"                 \
    "\"output_packets\":%llu,\"warn_info\":\"%s\",\"time_stamp\":%u"

extern "C" const char *const MDTLM_QUMA_STATS_JSON_TEMPLATE = MDTLM_QUMA_JSON_BODY;

namespace {

/* Below this much room the sample buffer counts as full (the longest object is 417 bytes). */
constexpr int32_t kJsonMinRoom = 745;

} // namespace

extern "C" int32_t MDTLM_QUMA_JSON_CheckEncodePara(const MDTLM_QUMA_RESULT_REC *rec, const uint8_t *out, int32_t cap)
{
    return MDTLM_JsonCheckEncodePara(rec, out, cap, kJsonMinRoom, kQumaLogLines.jsonNullParam);
}

extern "C" int32_t MDTLM_QUMA_JSON_EncodeMsg(const MDTLM_QUMA_RESULT_REC *rec, uint8_t *out, int32_t cap)
{
    const int32_t check = MDTLM_QUMA_JSON_CheckEncodePara(rec, out, cap);
    if (check != 0) {
        return check;
    }

    const MDTLM_SIZED_TEXT *protocol = MDTLM_TextTableFind(kQumaProtocols, rec->protocol);
    if (protocol == nullptr) {
        return MDTLM_ENCODE_FAIL;
    }
    char aclName[sizeof(rec->aclName) + 1];
    char warnInfo[sizeof(rec->warnInfo) + 1];
    return MDTLM_JsonWriteMembers<MDTLM_QUMA_JSON_BODY>(out, cap, rec->id, rec->periodId, *protocol, rec->ruleId,
                                 rec->aclNumber, MDTLM_FixedFieldSizedText(rec->aclName, aclName),
                                 rec->vxlanReservedValue, rec->vxlanReservedValueSecond,
                                 static_cast<unsigned long long>(rec->inputPackets),
                                 static_cast<unsigned long long>(rec->outputPackets),
                                 MDTLM_FixedFieldSizedText(rec->warnInfo, warnInfo), rec->timeStamp);
}
