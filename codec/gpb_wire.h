/*
 * The two smallest pieces of the GPB wire format, inline so that every field
 * writer stores its key and varints without a call: a base-128 varint and a
 * field key (field number shifted left by 3, OR the wire type, as a varint).
 */
#ifndef MDTLM_CODEC_GPB_WIRE_H
#define MDTLM_CODEC_GPB_WIRE_H

#include <stdint.h>

#include "mdtlm_log.h"
#include "mdtlm_types.h"

enum {
    MDTLM_GPB_WIRE_VARINT = 0,
    MDTLM_GPB_WIRE_LENGTH_DELIMITED = 2,
};

/* Stores `value` as a varint at out/cap, testing the room before every byte:
 * the byte count, or -2 for a null output, a capacity below 1 or a value that
 * does not fit (the bytes stored so far stay; callers abandon the output). */
inline int32_t MDTLM_GPB_PutVarint(uint64_t value, uint8_t *out, int32_t cap)
{
    if (out == nullptr || cap < 1) {
        return MDTLM_ENCODE_NO_SPACE;
    }
    int32_t written = 0;
    uint64_t before;
    do {
        if (written == cap) {
            return MDTLM_ENCODE_NO_SPACE;
        }
        out[written++] = static_cast<uint8_t>((value & 0x7fu) | 0x80u);
        before = value;
        value >>= 7;
    } while (before > 0x7fu);
    out[written - 1] &= 0x7fu; /* the last byte carries no continuation bit */
    return written;
}

/* The most bytes a key (a 32-bit varint) and a 64-bit varint take. */
#define MDTLM_GPB_KEY_MAX_BYTES 5
#define MDTLM_GPB_VARINT_MAX_BYTES 10

/* Stores `value` as a varint at `out` without testing the room: for callers
 * that have tested it for MDTLM_GPB_VARINT_MAX_BYTES (or the value's own
 * bound). The bytes are those of MDTLM_GPB_PutVarint. */
inline int32_t MDTLM_GPB_PutVarintInRoom(uint64_t value, uint8_t *out)
{
    int32_t written = 0;
    while (value > 0x7fu) {
        out[written++] = static_cast<uint8_t>((value & 0x7fu) | 0x80u);
        value >>= 7;
    }
    out[written++] = static_cast<uint8_t>(value);
    return written;
}

/* Stores a field key; a key that does not fit is logged here, in the words
 * every writer uses for it. */
inline int32_t MDTLM_GPB_PutKey(uint32_t fieldId, uint32_t wireType, uint8_t *out, int32_t cap)
{
    const int32_t ret = MDTLM_GPB_PutVarint((fieldId << 3) | wireType, out, cap);
    if (ret < 0) {
        MDTLM_LOG(MDTLM_LOG_FAILURE,
                  "[NTVVRALDCN_GPB_EncodeKey] Encode varint failed, fieldId: %u, wtiteType: %u, retLen: %d.",
                  fieldId, wireType, ret);
    }
    return ret;
}

#endif /* MDTLM_CODEC_GPB_WIRE_H */
