/*
 * GPB field tables of the sensor records: runs of integer fields written in
 * table order from their record positions, and fixed-size text fields.
 */
#ifndef MDTLM_SENSORS_SENSOR_GPB_FIELDS_H
#define MDTLM_SENSORS_SENSOR_GPB_FIELDS_H

#include <cstddef>
#include <cstdint>

#include "gpb_chain.h"
#include "sensor_record_fields.h"

typedef struct MDTLM_GPB_INT_FIELD {
    uint32_t field;            /* GPB field number, wire type 0 */
    MDTLM_RECORD_FIELD source; /* record position; every width is written whole */
} MDTLM_GPB_INT_FIELD;

/* Chains the integer fields of `rows` in table order. */
template <std::size_t N>
MDTLM_GPB_CHAIN &MDTLM_GpbIntFields(MDTLM_GPB_CHAIN &chain, const MDTLM_GPB_INT_FIELD (&rows)[N], const void *record)
{
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

#endif /* MDTLM_SENSORS_SENSOR_GPB_FIELDS_H */
