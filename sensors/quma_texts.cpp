/*
 * Protocol names of the result statistics sensor. GPB carries the raw code;
 * JSON carries the name, and a code without a name fails the JSON encoding.
 */
#include "mdtlm_vraldcn.h"
#include "sensor_text_table.h"

namespace {

constexpr const char *kProtocolNames[] = {"Protocol_INVALID", "Protocol_IPV4", "Protocol_IPV6", "Protocol_L2"};
constexpr MDTLM_TEXT_TABLE kProtocols = {0, 4, kProtocolNames};

} // namespace

extern "C" int32_t MDTLM_QUMA_GetProtocolName(uint32_t protocol, char *out, uint32_t size)
{
    return MDTLM_TextTableWrite(kProtocols, protocol, out, size);
}
