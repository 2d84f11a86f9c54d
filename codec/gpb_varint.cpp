/*
 * Base-128 varints and field keys: the two smallest GPB writers. Both test
 * the room before every byte they store and never allocate.
 */
#include <stdint.h>

#include "mdtlm_log.h"
#include "mdtlm_vraldcn.h"

extern "C" {

int32_t MDTLM_VRALDCN_GPB_EncodeVarint(uint64_t value, uint8_t *out, int32_t cap)
{
    if (out == nullptr || cap < 1) {
        return MDTLM_ENCODE_NO_SPACE;
    }
    int32_t written = 0;
    uint64_t before;
    do {
        if (written == cap) {
            /* The bytes stored so far stay; the caller abandons the output. */
            return MDTLM_ENCODE_NO_SPACE;
        }
        out[written++] = static_cast<uint8_t>((value & 0x7fu) | 0x80u);
        before = value;
        value >>= 7;
    } while (before > 0x7fu);
    out[written - 1] &= 0x7fu; /* the last byte carries no continuation bit */
    return written;
}

int32_t MDTLM_VRALDCN_GPB_EncodeFieldType(uint32_t fieldId, uint32_t wireType, uint8_t *out, int32_t cap)
{
    const uint32_t key = (fieldId << 3) | wireType;
    const int32_t ret = MDTLM_VRALDCN_GPB_EncodeVarint(key, out, cap);
    if (ret < 0) {
        MDTLM_LOG(MDTLM_LOG_FAILURE,
                  "[NTVVRALDCN_GPB_EncodeKey] Encode varint failed, fieldId: %u, wtiteType: %u, retLen: %d.",
                  fieldId, wireType, ret);
    }
    return ret;
}

} /* extern "C" */
