/*
 * Chaining of GPB field writers into one flat message.
 *
 * A record encoder writes its fields one after another at a running offset;
 * each writer gets the output at that offset and the capacity that remains.
 * The first negative result stops the chain and is returned unchanged: what
 * was written up to then is abandoned (the caller never counts it). Groups of
 * fields (flow information, statistics, addresses, ...) are plain functions
 * that write into the same flat message at the running offset; they are
 * chained like a field and do not create nested messages.
 *
 * A sensor's encoder then reads as its field table:
 *
 *     int32_t EncodeFlowInfo(const MDTLM_FLOW_STATS_REC *rec, uint8_t *out, int32_t cap)
 *     {
 *         MDTLM_GPB_CHAIN chain(out, cap);
 *         chain.Int(1, rec->ttl);
 *         chain.Int(2, rec->outerTtl);
 *         chain.Str(3, rec->chassisId);
 *         chain.Group(EncodeIpAddress, rec);
 *         return chain.Result();
 *     }
 *
 * Every step after a failure does nothing, so no step needs its own test of
 * the previous result. Steps return the chain, so `chain.Int(1, a).Int(2, b)`
 * works as well.
 */
#ifndef MDTLM_CODEC_GPB_CHAIN_H
#define MDTLM_CODEC_GPB_CHAIN_H

#include <stdint.h>

#include <string.h>

#include "gpb_wire.h"
#include "mdtlm_vraldcn.h"

struct MDTLM_GPB_CHAIN {
    uint8_t *out; /* start of the message */
    int32_t cap;  /* capacity of the whole message range */
    int32_t used; /* bytes written so far by successful steps */
    int32_t err;  /* first negative result, 0 while every step succeeded */

    MDTLM_GPB_CHAIN(uint8_t *output, int32_t capacity) : out(output), cap(capacity), used(0), err(0) {}

    /* Where the next step writes and how much room it has. */
    uint8_t *Here() const { return out + used; }
    int32_t Room() const { return cap - used; }
    bool Ok() const { return err == 0; }

    /* Folds in the result of a writer the caller ran itself at Here()/Room(). */
    MDTLM_GPB_CHAIN &Add(int32_t ret)
    {
        if (err == 0) {
            if (ret < 0) {
                err = ret;
            } else {
                used += ret;
            }
        }
        return *this;
    }

    /* Unsigned integer field (wire type 0); 32-bit values are zero-extended.
     * With room for the longest key and value the bytes are stored here;
     * otherwise the exported writer tests every byte and logs a refusal. */
    MDTLM_GPB_CHAIN &Int(uint32_t field, uint64_t value)
    {
        if (err != 0) {
            return *this;
        }
        if (out != nullptr && Room() >= MDTLM_GPB_KEY_MAX_BYTES + MDTLM_GPB_VARINT_MAX_BYTES) {
            IntInRoom(field, value);
            return *this;
        }
        return Add(MDTLM_VRALDCN_GPB_EncodeInterger(field, value, Here(), Room()));
    }

    /* Text field (wire type 2) holding the NUL-terminated text without its NUL;
     * stored here when key, length and text fit, else by the exported writer. */
    MDTLM_GPB_CHAIN &Str(uint32_t field, const char *text)
    {
        if (err != 0) {
            return *this;
        }
        if (out != nullptr && text != nullptr) {
            const size_t len = strlen(text);
            if (len <= static_cast<size_t>(INT32_MAX) - 2 * MDTLM_GPB_KEY_MAX_BYTES &&
                static_cast<int64_t>(Room()) >= static_cast<int64_t>(len) + 2 * MDTLM_GPB_KEY_MAX_BYTES) {
                PutInRoom(field, reinterpret_cast<const uint8_t *>(text), static_cast<uint32_t>(len));
                return *this;
            }
        }
        return Add(MDTLM_VRALDCN_GPB_EncodeString(field, text, Here(), Room()));
    }

    /* Length-delimited field (wire type 2) holding `len` bytes; stored here
     * when key, length and bytes fit, else by the exported writer. */
    MDTLM_GPB_CHAIN &Bytes(uint32_t field, const uint8_t *bytes, uint32_t len)
    {
        if (err != 0) {
            return *this;
        }
        if (out != nullptr && bytes != nullptr &&
            static_cast<int64_t>(Room()) >= static_cast<int64_t>(len) + 2 * MDTLM_GPB_KEY_MAX_BYTES) {
            PutInRoom(field, bytes, len);
            return *this;
        }
        return Add(MDTLM_VRALDCN_GPB_EncodeLengthDelimited(field, bytes, len, Here(), Room()));
    }

    /* A group writer `int32_t fn(const Rec *record, uint8_t *out, int32_t cap)`
     * (or any callable with that shape) writing into the same message. */
    template <typename Fn, typename Rec>
    MDTLM_GPB_CHAIN &Group(Fn fn, const Rec *record)
    {
        return err != 0 ? *this : Add(fn(record, Here(), Room()));
    }

    /* Key and value of an integer field, the room tested by the caller. */
    void IntInRoom(uint32_t field, uint64_t value)
    {
        uint8_t *at = Here();
        const int32_t keyLen = MDTLM_GPB_PutVarintInRoom((field << 3) | MDTLM_GPB_WIRE_VARINT, at);
        used += keyLen + MDTLM_GPB_PutVarintInRoom(value, at + keyLen);
    }

    /* Key, length and bytes of a length-delimited field, the room tested by the caller. */
    void PutInRoom(uint32_t field, const uint8_t *bytes, uint32_t len)
    {
        uint8_t *at = Here();
        int32_t n = MDTLM_GPB_PutVarintInRoom((field << 3) | MDTLM_GPB_WIRE_LENGTH_DELIMITED, at);
        n += MDTLM_GPB_PutVarintInRoom(len, at + n);
        memcpy(at + n, bytes, len);
        used += n + static_cast<int32_t>(len);
    }

    /* The chain's result: the first negative result, or the bytes written. */
    int32_t Result() const { return err != 0 ? err : used; }
};

#endif /* MDTLM_CODEC_GPB_CHAIN_H */
