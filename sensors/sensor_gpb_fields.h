/*
 * GPB field tables of the sensor records: runs of integer fields written in
 * table order from their record positions, and fixed-size text fields.
 */
#ifndef MDTLM_SENSORS_SENSOR_GPB_FIELDS_H
#define MDTLM_SENSORS_SENSOR_GPB_FIELDS_H

#include <cstddef>
#include <cstdint>

#include "gpb_chain.h"
#include "gpb_frame.h"
#include "mdtlm_log.h"
#include "mdtlm_platform.h"
#include "number_text.h"
#include "record_pipeline.h"
#include "sensor_log_texts.h"
#include "sensor_record_fields.h"

typedef struct MDTLM_GPB_INT_FIELD {
    uint32_t field;            /* GPB field number, wire type 0 */
    MDTLM_RECORD_FIELD source; /* record position; every width is written whole */
} MDTLM_GPB_INT_FIELD;

/* Chains the integer fields of `rows` in table order. With room for every
 * row at its longest, the room is tested once for the whole table. */
template <std::size_t N>
MDTLM_GPB_CHAIN &MDTLM_GpbIntFields(MDTLM_GPB_CHAIN &chain, const MDTLM_GPB_INT_FIELD (&rows)[N], const void *record)
{
    constexpr int32_t kMost = static_cast<int32_t>(N) * (MDTLM_GPB_KEY_MAX_BYTES + MDTLM_GPB_VARINT_MAX_BYTES);
    if (chain.Ok() && chain.out != nullptr && chain.Room() >= kMost) {
        for (const MDTLM_GPB_INT_FIELD &row : rows) {
            chain.IntInRoom(row.field, MDTLM_RecordFieldValue(record, row.source));
        }
        return chain;
    }
    for (const MDTLM_GPB_INT_FIELD &row : rows) {
        chain.Int(row.field, MDTLM_RecordFieldValue(record, row.source));
    }
    return chain;
}

/* Chains a text field of a fixed-size record field: the text ends at its first
 * NUL or at the end of the field, and nothing past the field is read. */
template <std::size_t N>
MDTLM_GPB_CHAIN &MDTLM_GpbFixedText(MDTLM_GPB_CHAIN &chain, uint32_t field, const char (&source)[N])
{
    char text[N + 1];
    if (!MDTLM_FixedFieldText(source, text)) {
        return chain.Add(MDTLM_ENCODE_FAIL);
    }
    return chain.Str(field, text);
}

/* Chains a number as a decimal text field. */
inline MDTLM_GPB_CHAIN &MDTLM_GpbNumberText(MDTLM_GPB_CHAIN &chain, uint32_t field, uint32_t value)
{
    char text[MDTLM_DECIMAL_MAX_DIGITS_32 + 1];
    text[MDTLM_PutDecimal(text, value)] = '\0';
    return chain.Str(field, text);
}

/* A group made of one table of integer fields. */
template <std::size_t N>
int32_t MDTLM_GpbIntGroup(const MDTLM_GPB_INT_FIELD (&rows)[N], const void *record, uint8_t *out, int32_t cap)
{
    MDTLM_GPB_CHAIN chain(out, cap);
    return MDTLM_GpbIntFields(chain, rows, record).Result();
}

/* Group writers chained one after another into the same message. */
template <typename Rec, typename... Groups>
int32_t MDTLM_GpbGroups(const Rec *record, uint8_t *out, int32_t cap, Groups... groups)
{
    MDTLM_GPB_CHAIN chain(out, cap);
    (chain.Group(groups, record), ...);
    return chain.Result();
}

/* The GPB message encoder of a sensor: a null record is refused with the line
 * `nullFormat` ("[%s:%d]...") carrying the number `nullLine`; any other record
 * has its body written by `EncodeData` and framed into `containerField`
 * through the sensor's scratch buffers. */
template <typename Rec, int32_t (*EncodeData)(const Rec *, uint8_t *, int32_t)>
int32_t MDTLM_GpbEncodeSensorMsg(const Rec *rec, uint8_t *scratch1, uint8_t *scratch2, uint32_t containerField,
                                 uint8_t *out, int32_t cap, int nullLine = MDTLM_LOG_LINE_OF_CALL,
                                 const char *nullFormat = MDTLM_SENSOR_GPB_NULL_RECORD_FORMAT)
{
    if (rec == nullptr) {
        MDTLM_LOG_FORMAT_AT(MDTLM_LOG_FAILURE, MDTLM_LOG_LINE_OR_CALL(nullLine), nullFormat);
        return MDTLM_ENCODE_FAIL;
    }
    return MDTLM_GPB_FrameRecord(MDTLM_PipelineEncoder<Rec, EncodeData>, rec, scratch1, scratch2, containerField, out,
                                 cap);
}

#endif /* MDTLM_SENSORS_SENSOR_GPB_FIELDS_H */
