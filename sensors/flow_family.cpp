/*
 * Derived values, condition tests, texts and sequence counters shared by the
 * flow and flow-hop statistics sensors. The derived-value helpers take an
 * untyped record: both records hold these fields at the same offsets, which
 * are read here by offset rather than through either record type.
 */
#include "flow_family.h"

#include <cstdlib>
#include <cstring>

#include "mdtlm_platform.h"

namespace {

template <typename T>
T ReadAt(const void *record, std::size_t offset)
{
    T value;
    std::memcpy(&value, static_cast<const uint8_t *>(record) + offset, sizeof(value));
    return value;
}

#define FLOW_FIELD(type, member) ReadAt<type>(record, offsetof(MDTLM_FLOW_STATS_REC, member))

constexpr uint8_t kFamilyIpv4 = 1;
constexpr uint8_t kDirectionIn = 1;

/* Condition values are texts of at most 34 bytes; one not terminated there
 * is read only up to its field's end. */
struct ConditionValue {
    char text[sizeof(MDTLM_PATH_CONDITION::value) + 1];

    explicit ConditionValue(const MDTLM_PATH_CONDITION *cond)
    {
        const std::size_t len = strnlen(cond->value, sizeof(cond->value));
        std::memcpy(text, cond->value, len);
        text[len] = '\0';
    }
};

bool CutText(const char (&field)[MDTLM_FLOW_TEXT_FIELD_LEN], char (&out)[MDTLM_FLOW_TEXT_FIELD_LEN + 1])
{
    /* At most the field's 32 characters and the NUL: `out` holds them. */
    static_assert(sizeof(out) > sizeof(field), "room for the text and its NUL");
    const std::size_t len = strnlen(field, sizeof(field));
    std::memcpy(out, field, len);
    out[len] = '\0';
    return true;
}

} // namespace

extern "C" {

uint32_t MDTLM_VRALDCN_FLOW_GetTunnelMode(uint32_t tunnelFlag, uint32_t tunnelType)
{
    if (tunnelFlag != MDTLM_FLOW_TUNNELLED) {
        return 1;
    }
    switch (tunnelType) {
    case 1:
        return 3;
    case 2:
        return 4;
    default:
        return 1;
    }
}

void MDTLM_VRALDCN_FLOW_JSON_GenFlowInfo(const void *record, uint64_t *flowId, uint32_t *direction)
{
    if (record == nullptr) {
        return;
    }
    if (flowId != nullptr) {
        *flowId = (static_cast<uint64_t>(FLOW_FIELD(uint32_t, flowIdHigh)) << 20) | FLOW_FIELD(uint32_t, flowIdLow);
    }
    if (direction != nullptr) {
        *direction = FLOW_FIELD(uint8_t, direction) == kDirectionIn ? 1u : 4u;
    }
}

void MDTLM_VRALDCN_FLOW_JSON_GenPacketInfo(const void *record, uint32_t *addressFamily, uint32_t *tunnelMode,
                                           uint32_t *errorInfo, uint32_t *errorInfoExt)
{
    if (record == nullptr) {
        return;
    }
    if (addressFamily != nullptr) {
        *addressFamily = FLOW_FIELD(uint8_t, addressFamily) == kFamilyIpv4 ? 0u : 1u;
    }
    if (tunnelMode != nullptr) {
        *tunnelMode =
            MDTLM_VRALDCN_FLOW_GetTunnelMode(FLOW_FIELD(uint32_t, tunnelFlag), FLOW_FIELD(uint32_t, tunnelType));
    }
    if (errorInfo != nullptr) {
        *errorInfo = FLOW_FIELD(uint8_t, errorInfo);
    }
    if (errorInfoExt != nullptr) {
        *errorInfoExt = FLOW_FIELD(uint32_t, errorInfoExt);
    }
}

} /* extern "C" */

MDTLM_FLOW_DERIVED MDTLM_FlowDerive(const void *record)
{
    MDTLM_FLOW_DERIVED d{};
    MDTLM_VRALDCN_FLOW_JSON_GenFlowInfo(record, &d.flowId, &d.direction);
    MDTLM_VRALDCN_FLOW_JSON_GenPacketInfo(record, &d.addressFamily, &d.tunnelMode, &d.errorInfo, &d.errorInfoExt);
    return d;
}

uint32_t MDTLM_FlowCompareCondition(uint32_t fieldId, const MDTLM_PATH_CONDITION *cond, const void *record)
{
    const ConditionValue value(cond);
    switch (fieldId) {
    case 0: {
        uint64_t flowId = 0;
        MDTLM_VRALDCN_FLOW_JSON_GenFlowInfo(record, &flowId, nullptr);
        return std::strtoull(value.text, nullptr, 10) == flowId ? 1u : 0u;
    }
    case 1: {
        uint32_t direction = 0;
        MDTLM_VRALDCN_FLOW_JSON_GenFlowInfo(record, nullptr, &direction);
        return static_cast<uint32_t>(std::strtoul(value.text, nullptr, 10)) == direction ? 1u : 0u;
    }
    default:
        return 1;
    }
}

bool MDTLM_FlowCutTexts(const char (&chassisId)[MDTLM_FLOW_TEXT_FIELD_LEN],
                        const char (&slotId)[MDTLM_FLOW_TEXT_FIELD_LEN], MDTLM_FLOW_TEXTS *texts)
{
    return CutText(chassisId, texts->chassisId) && CutText(slotId, texts->slotId);
}

void MDTLM_FlowAdvanceJsonCounter(uint32_t castType, uint32_t *unicast, uint32_t *multicast)
{
    *(castType == MDTLM_FLOW_CAST_UNICAST ? unicast : multicast) += 1;
}
