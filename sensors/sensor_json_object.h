/*
 * One JSON record of a sample: "{", the body written with the sensor's
 * template, and "},". Every piece is written with the bounded formatter into
 * the space that remains behind the previous one.
 */
#ifndef MDTLM_SENSORS_SENSOR_JSON_OBJECT_H
#define MDTLM_SENSORS_SENSOR_JSON_OBJECT_H

#include <cstdarg>
#include <cstdint>

#include "mdtlm_log.h"
#include "mdtlm_platform.h"
#include "mdtlm_types.h"
#include "sensor_log_texts.h"

/* The parameter check of a JSON message encoder: MDTLM_ENCODE_FAIL, logged
 * with `nullFormat` ("[%s:%d]...") carrying the number `nullLine`, without a
 * record or an output; MDTLM_ENCODE_NO_SPACE below `minRoom`, so the sample buffer is uploaded while
 * it still has room for the longest record; else 0. */
inline int32_t MDTLM_JsonCheckEncodePara(const void *rec, const uint8_t *out, int32_t cap, int32_t minRoom,
                                         int nullLine = MDTLM_LOG_LINE_OF_CALL,
                                         const char *nullFormat = MDTLM_SENSOR_JSON_NULL_PARAM_FORMAT)
{
    if (rec == nullptr || out == nullptr) {
        MDTLM_LOG_FORMAT_AT(MDTLM_LOG_FAILURE, MDTLM_LOG_LINE_OR_CALL(nullLine), nullFormat);
        return MDTLM_ENCODE_FAIL;
    }
    return cap < minRoom ? MDTLM_ENCODE_NO_SPACE : 0;
}

/* Returns the length of "{", body and "}," together, or MDTLM_ENCODE_FAIL when
 * a piece does not fit. The terminating NUL the formatter leaves behind is not
 * counted: the next record starts on it. */
inline int32_t MDTLM_JsonWriteObject(uint8_t *out, int32_t cap, const char *bodyFormat, ...)
    __attribute__((format(printf, 3, 4)));

inline int32_t MDTLM_JsonWriteObject(uint8_t *out, int32_t cap, const char *bodyFormat, ...)
{
    char *text = reinterpret_cast<char *>(out);
    const int open = sprintf_s(text, static_cast<size_t>(cap), "{");
    if (open < 0) {
        return MDTLM_ENCODE_FAIL;
    }
    va_list args;
    va_start(args, bodyFormat);
    const int body = vsprintf_s(text + open, static_cast<size_t>(cap - open), bodyFormat, args);
    va_end(args);
    if (body < 0) {
        return MDTLM_ENCODE_FAIL;
    }
    const int used = open + body;
    const int close = sprintf_s(text + used, static_cast<size_t>(cap - used), "},");
    if (close < 0) {
        return MDTLM_ENCODE_FAIL;
    }
    return used + close;
}

#endif /* MDTLM_SENSORS_SENSOR_JSON_OBJECT_H */
