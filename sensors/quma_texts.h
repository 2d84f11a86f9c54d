/*
 * Protocol names of the result statistics sensor. GPB carries the raw code;
 * JSON carries the name, and a code without a name fails the JSON encoding.
 */
#ifndef MDTLM_SENSORS_QUMA_TEXTS_H
#define MDTLM_SENSORS_QUMA_TEXTS_H

#include "sensor_text_table.h"

inline constexpr MDTLM_SIZED_TEXT kQumaProtocolNames[] = {
    MDTLM_SizedText("Protocol_INVALID"), MDTLM_SizedText("Protocol_IPV4"), MDTLM_SizedText("Protocol_IPV6"),
    MDTLM_SizedText("Protocol_L2")};
inline constexpr MDTLM_TEXT_TABLE kQumaProtocols = {0, 4, kQumaProtocolNames};

#endif /* MDTLM_SENSORS_QUMA_TEXTS_H */
