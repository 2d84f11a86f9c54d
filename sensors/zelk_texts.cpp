/*
 * The export flow cache's enumeration texts written into a caller's buffer.
 */
#include "mdtlm_vraldcn.h"
#include "zelk_texts.h"

extern "C" int32_t MDTLM_ZELK_GetProtocol(uint32_t protocol, char *out, uint32_t size)
{
    return MDTLM_TextTableWrite(kZelkProtocols, protocol, out, size);
}

extern "C" int32_t MDTLM_ZELK_GetAclAppStatStr(uint32_t state, char *out, uint32_t size)
{
    return MDTLM_TextTableWrite(kZelkAclAppStates, state, out, size);
}

extern "C" int32_t MDTLM_ZELK_GetRecoveryModeStr(uint32_t mode, char *out, uint32_t size)
{
    return MDTLM_TextTableWrite(kZelkRecoveryModes, mode, out, size);
}

extern "C" int32_t MDTLM_ZELK_GetOpModeStr(uint32_t mode, char *out, uint32_t size)
{
    return MDTLM_TextTableWrite(kZelkOpModes, mode, out, size);
}
