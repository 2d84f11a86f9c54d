/*
 * Enumeration texts of the sensors: a run of consecutive values, each with its
 * text. A value outside the run has no text.
 */
#ifndef MDTLM_SENSORS_SENSOR_TEXT_TABLE_H
#define MDTLM_SENSORS_SENSOR_TEXT_TABLE_H

#include <cstdint>
#include <cstring>

#include "mdtlm_platform.h"

typedef struct MDTLM_TEXT_TABLE {
    uint32_t first;            /* value of texts[0] */
    uint32_t count;            /* number of texts */
    const char *const *texts;
} MDTLM_TEXT_TABLE;

/* Writes the text of `value` and its NUL into `out` and returns the text's length
 * (as sprintf_s with "%s" would; a text that does not fit goes through it),
 * or -1 when the value has no text (nothing is written then). */
inline int32_t MDTLM_TextTableWrite(const MDTLM_TEXT_TABLE &table, uint32_t value, char *out, uint32_t size)
{
    if (value < table.first || value - table.first >= table.count) {
        return -1;
    }
    const char *text = table.texts[value - table.first];
    const size_t len = strlen(text);
    if (out == nullptr || len >= size) {
        /* Short room: the bounded formatter refuses it as it always has. */
        return sprintf_s(out, size, "%s", text);
    }
    memcpy(out, text, len + 1);
    return static_cast<int32_t>(len);
}

#endif /* MDTLM_SENSORS_SENSOR_TEXT_TABLE_H */
