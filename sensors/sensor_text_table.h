/*
 * Enumeration texts of the sensors: a run of consecutive values, each with its
 * text. A value outside the run has no text.
 */
#ifndef MDTLM_SENSORS_SENSOR_TEXT_TABLE_H
#define MDTLM_SENSORS_SENSOR_TEXT_TABLE_H

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "mdtlm_platform.h"

/* A text and its length; the text ends with a NUL at that length, so it can
 * also be handed to a formatter's "%s". */
typedef struct MDTLM_SIZED_TEXT {
    const char *text;
    uint32_t len;
} MDTLM_SIZED_TEXT;

template <std::size_t N>
constexpr MDTLM_SIZED_TEXT MDTLM_SizedText(const char (&literal)[N])
{
    return {literal, static_cast<uint32_t>(N - 1)};
}

typedef struct MDTLM_TEXT_TABLE {
    uint32_t first;                /* value of texts[0] */
    uint32_t count;                /* number of texts */
    const MDTLM_SIZED_TEXT *texts;
} MDTLM_TEXT_TABLE;

/* The text of `value`, or null when the value has none. */
inline const MDTLM_SIZED_TEXT *MDTLM_TextTableFind(const MDTLM_TEXT_TABLE &table, uint32_t value)
{
    return value < table.first || value - table.first >= table.count ? nullptr : &table.texts[value - table.first];
}

/* Writes the text of `value` and its NUL into `out` and returns the text's length
 * (as sprintf_s with "%s" would; a text that does not fit goes through it),
 * or -1 when the value has no text (nothing is written then). */
inline int32_t MDTLM_TextTableWrite(const MDTLM_TEXT_TABLE &table, uint32_t value, char *out, uint32_t size)
{
    const MDTLM_SIZED_TEXT *found = MDTLM_TextTableFind(table, value);
    if (found == nullptr) {
        return -1;
    }
    if (out == nullptr || found->len >= size) {
        /* Short room: the bounded formatter refuses it as it always has. */
        return sprintf_s(out, size, "%s", found->text);
    }
    memcpy(out, found->text, found->len + 1);
    return static_cast<int32_t>(found->len);
}

#endif /* MDTLM_SENSORS_SENSOR_TEXT_TABLE_H */
