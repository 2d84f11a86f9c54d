/*
 * Address texts of the two I/O service sensors (flow statistics and flow
 * throughput), whose records carry a source and a destination address of
 * either family in the same 16-byte form.
 */
#ifndef MDTLM_SENSORS_SRVTLM_ADDRESS_H
#define MDTLM_SENSORS_SRVTLM_ADDRESS_H

#include <cstdint>

enum {
    MDTLM_SRVTLM_FAMILY_IPV4 = 0,
    MDTLM_SRVTLM_FAMILY_IPV6 = 1,
};

#define MDTLM_SRVTLM_IPV4_TEXT_CAP 32u
#define MDTLM_SRVTLM_IPV6_TEXT_CAP 40u

typedef struct MDTLM_SRVTLM_ADDR_TEXTS {
    char src[MDTLM_SRVTLM_IPV6_TEXT_CAP];
    char dst[MDTLM_SRVTLM_IPV6_TEXT_CAP];
} MDTLM_SRVTLM_ADDR_TEXTS;

/* Source and destination in one family's text form, the destination only when
 * the source succeeded; the result of the failing conversion, else 0. */
uint32_t MDTLM_SrvtlmIpv4Pair(const uint32_t *src, const uint32_t *dst, char *srcText, char *dstText, uint32_t cap);
uint32_t MDTLM_SrvtlmIpv6Pair(const uint32_t *src, const uint32_t *dst, char *srcText, char *dstText, uint32_t cap);

/* Both address texts of a record: 0, or MDTLM_ENCODE_FAIL for a family other
 * than IPv4 and IPv6 or a failed conversion. */
int32_t MDTLM_SrvtlmAddressTexts(uint32_t family, const uint32_t *src, const uint32_t *dst,
                                 MDTLM_SRVTLM_ADDR_TEXTS *texts);

/* The two address texts as GPB text fields `srcField` and `dstField`: bytes
 * written, MDTLM_ENCODE_FAIL for an unknown family, or the writer's failure. */
int32_t MDTLM_SrvtlmGpbAddressFields(uint32_t family, const uint32_t *src, const uint32_t *dst, uint32_t srcField,
                                     uint32_t dstField, uint8_t *out, int32_t cap);

/* An address condition: 1 when the address, in its family's text form, equals
 * the text exactly; 0 for any other family. */
uint32_t MDTLM_SrvtlmCmpAddress(uint32_t family, const uint32_t *addr, const char *text);

#endif /* MDTLM_SENSORS_SRVTLM_ADDRESS_H */
