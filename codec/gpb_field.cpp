/*
 * GPB field writers: unsigned integer fields (wire type 0), length-delimited
 * fields and text fields (wire type 2). Each writes key, then value, at the
 * start of the given range and returns the bytes written or a negative code;
 * the caller never counts the bytes of a failed write.
 */
#include <stdint.h>
#include <string.h>

#include "gpb_wire.h"
#include "mdtlm_log.h"
#include "mdtlm_platform.h"
#include "mdtlm_vraldcn.h"

namespace {

int32_t PutLengthDelimited(uint32_t fieldId, const uint8_t *bytes, uint32_t len, uint8_t *out, int32_t cap)
{
    const int32_t keyLen = MDTLM_GPB_PutKey(fieldId, MDTLM_GPB_WIRE_LENGTH_DELIMITED, out, cap);
    if (keyLen < 0) {
        MDTLM_LOG(MDTLM_LOG_FAILURE, "[NTVVRALDCN_GPB_EncodeLengthDelimited] Encode field type failed, fieldId: %u.",
                  fieldId);
        return keyLen;
    }

    const int32_t lenLen = MDTLM_GPB_PutVarint(len, out + keyLen, cap - keyLen);
    if (lenLen < 0) {
        MDTLM_LOG(MDTLM_LOG_FAILURE,
                  "[NTVVRALDCN_GPB_EncodeLengthDelimited] Encode string length failed, fieldId: %u, totalLen: %d, "
                  "buffLen: %d.",
                  fieldId, keyLen, cap);
        return lenLen;
    }

    /* Room check in 64 bits, so that no byte count wraps into a negative
     * number; the caller logs the -2 when it reports the failure. */
    const int32_t room = cap - keyLen - lenLen;
    if (static_cast<int64_t>(room) < static_cast<int64_t>(len)) {
        return MDTLM_ENCODE_NO_SPACE;
    }

    if (memcpy_s(out + keyLen + lenLen, static_cast<size_t>(room), bytes, len) != 0) {
        MDTLM_LOG(MDTLM_LOG_FAILURE,
                  "[NTVVRALDCN_GPB_EncodeLengthDelimited] Memery copy failed. fieldId: %u, totalLen: %d, buffLen: %d, "
                  "leftBuffLen: %d.",
                  fieldId, keyLen + lenLen, cap, room);
        return MDTLM_ENCODE_FAIL;
    }
    return keyLen + lenLen + static_cast<int32_t>(len);
}

} // namespace

extern "C" {

int32_t MDTLM_VRALDCN_GPB_EncodeLengthDelimited(uint32_t fieldId, const uint8_t *bytes, uint32_t len, uint8_t *out,
                                                int32_t cap)
{
    return PutLengthDelimited(fieldId, bytes, len, out, cap);
}

int32_t MDTLM_VRALDCN_GPB_EncodeString(uint32_t fieldId, const char *text, uint8_t *out, int32_t cap)
{
    /* A missing text reaches the copy with no source and fails there (-1). */
    const uint32_t len = text != nullptr ? static_cast<uint32_t>(strlen(text)) : 0u;
    const int32_t ret = PutLengthDelimited(fieldId, reinterpret_cast<const uint8_t *>(text), len, out, cap);
    if (ret < 0) {
        MDTLM_LOG(MDTLM_LOG_FAILURE,
                  "[NTVVRALDCN_GPB_EncodeString] Encode string length failed, fieldId: %u, strVal: %s, buffLen: %d.",
                  fieldId, text != nullptr ? text : "", cap);
    }
    return ret;
}

int32_t MDTLM_VRALDCN_GPB_EncodeInterger(uint32_t fieldId, uint64_t value, uint8_t *out, int32_t cap)
{
    /* The log lines print the value with "%u": its low 32 bits. */
    const int32_t keyLen = MDTLM_GPB_PutKey(fieldId, MDTLM_GPB_WIRE_VARINT, out, cap);
    if (keyLen < 0) {
        MDTLM_LOG(MDTLM_LOG_FAILURE, "[NTVVRALDCN_GPB_EncodeInterge] Encode field type failed, fieldId: %u, val: %u",
                  fieldId, static_cast<uint32_t>(value));
        return keyLen;
    }

    const int32_t valLen = MDTLM_GPB_PutVarint(value, out + keyLen, cap - keyLen);
    if (valLen < 0) {
        MDTLM_LOG(MDTLM_LOG_FAILURE, "[NTVVRALDCN_GPB_EncodeInterge] Encode val failed, fieldId: %u, val: %u",
                  fieldId, static_cast<uint32_t>(value));
        return valLen;
    }
    return keyLen + valLen;
}

} /* extern "C" */
