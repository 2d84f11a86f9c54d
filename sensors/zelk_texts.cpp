/*
 * Enumeration texts of the export flow cache sensor. GPB carries the raw
 * values; JSON carries these texts, and a value without a text fails the
 * record's JSON encoding.
 */
#include "mdtlm_vraldcn.h"
#include "sensor_text_table.h"

namespace {

constexpr const char *kProtocolTexts[] = {"tcp"};
constexpr const char *kAclAppStateTexts[] = {"success", "failed", "reach-limit", "disable"};
constexpr const char *kRecoveryModeTexts[] = {"underlay-overlay", "none"};
constexpr const char *kOpModeTexts[] = {"auto-fail-detection", "manual-fail-recovery",
                                        "tcp-reserved-value-isolate-outbound", "none"};

constexpr MDTLM_TEXT_TABLE kProtocols = {6, 1, kProtocolTexts};
constexpr MDTLM_TEXT_TABLE kAclAppStates = {0, 4, kAclAppStateTexts};
constexpr MDTLM_TEXT_TABLE kRecoveryModes = {2, 2, kRecoveryModeTexts};
constexpr MDTLM_TEXT_TABLE kOpModes = {1, 4, kOpModeTexts};

} // namespace

extern "C" int32_t MDTLM_ZELK_GetProtocol(uint32_t protocol, char *out, uint32_t size)
{
    return MDTLM_TextTableWrite(kProtocols, protocol, out, size);
}

extern "C" int32_t MDTLM_ZELK_GetAclAppStatStr(uint32_t state, char *out, uint32_t size)
{
    return MDTLM_TextTableWrite(kAclAppStates, state, out, size);
}

extern "C" int32_t MDTLM_ZELK_GetRecoveryModeStr(uint32_t mode, char *out, uint32_t size)
{
    return MDTLM_TextTableWrite(kRecoveryModes, mode, out, size);
}

extern "C" int32_t MDTLM_ZELK_GetOpModeStr(uint32_t mode, char *out, uint32_t size)
{
    return MDTLM_TextTableWrite(kOpModes, mode, out, size);
}
