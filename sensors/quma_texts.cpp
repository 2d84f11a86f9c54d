/*
 * The result statistics' protocol names written into a caller's buffer.
 */
#include "mdtlm_vraldcn.h"
#include "quma_texts.h"

extern "C" int32_t MDTLM_QUMA_GetProtocolName(uint32_t protocol, char *out, uint32_t size)
{
    return MDTLM_TextTableWrite(kQumaProtocols, protocol, out, size);
}
