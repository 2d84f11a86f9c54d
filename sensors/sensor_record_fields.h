/*
 * Field tables of the sensor records: for each field id the position and width
 * of the record field that conditions and filters test. The condition and
 * filter compare callbacks of a sensor are lookups in its table.
 */
#ifndef MDTLM_SENSORS_SENSOR_RECORD_FIELDS_H
#define MDTLM_SENSORS_SENSOR_RECORD_FIELDS_H

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "mdtlm_platform.h"
#include "mdtlm_vraldcn.h"
#include "sensor_text_table.h"

enum MDTLM_FIELD_COMPARE : uint8_t {
    MDTLM_FIELD_NONE = 0,   /* the id names no testable field: the test holds */
    MDTLM_FIELD_LOW32 = 1,  /* compared by its low 32 bits */
    MDTLM_FIELD_FULL64 = 2, /* compared at its full 64-bit width */
};

typedef struct MDTLM_RECORD_FIELD {
    uint16_t offset;
    uint8_t width; /* 1, 2, 4 or 8 bytes */
    MDTLM_FIELD_COMPARE compare;
} MDTLM_RECORD_FIELD;

#define MDTLM_FIELD_U8(rec, member) {offsetof(rec, member), 1, MDTLM_FIELD_LOW32}
#define MDTLM_FIELD_U16(rec, member) {offsetof(rec, member), 2, MDTLM_FIELD_LOW32}
#define MDTLM_FIELD_U32(rec, member) {offsetof(rec, member), 4, MDTLM_FIELD_LOW32}
#define MDTLM_FIELD_U64_LOW32(rec, member) {offsetof(rec, member), 8, MDTLM_FIELD_LOW32}
#define MDTLM_FIELD_U64(rec, member) {offsetof(rec, member), 8, MDTLM_FIELD_FULL64}
#define MDTLM_FIELD_ABSENT {0, 0, MDTLM_FIELD_NONE}

/* Room for a condition value and its terminating NUL, whatever the block holds. */
#define MDTLM_CONDITION_TEXT_SIZE (sizeof(MDTLM_PATH_CONDITION::value) + 1)

inline uint64_t MDTLM_RecordFieldValue(const void *record, const MDTLM_RECORD_FIELD &field)
{
    const uint8_t *at = static_cast<const uint8_t *>(record) + field.offset;
    switch (field.width) {
    case 1:
        return *at;
    case 2: {
        uint16_t v;
        std::memcpy(&v, at, sizeof(v));
        return v;
    }
    case 4: {
        uint32_t v;
        std::memcpy(&v, at, sizeof(v));
        return v;
    }
    default: {
        uint64_t v;
        std::memcpy(&v, at, sizeof(v));
        return v;
    }
    }
}

/* Copies the condition's value into `text` so that it ends with a NUL even
 * when the block's value fills its field. */
inline void MDTLM_ConditionText(const MDTLM_PATH_CONDITION *cond, char (&text)[MDTLM_CONDITION_TEXT_SIZE])
{
    std::memcpy(text, cond->value, sizeof(cond->value));
    text[sizeof(cond->value)] = '\0';
}

/* Copies a fixed-size text field of a record into `text`, one byte longer
 * than the field and terminated there: the text ends at its first NUL or at
 * the end of the field, and nothing past the field is read. */
template <std::size_t N>
bool MDTLM_FixedFieldText(const char (&field)[N], char (&text)[N + 1])
{
    std::memcpy(text, field, N);
    text[N] = '\0';
    return true;
}

/* The same text with its length (up to the field's first NUL). */
template <std::size_t N>
MDTLM_SIZED_TEXT MDTLM_FixedFieldSizedText(const char (&field)[N], char (&text)[N + 1])
{
    MDTLM_FixedFieldText(field, text);
    return {text, static_cast<uint32_t>(strnlen(field, N))};
}

/* Condition on a numeric field: the value text read as an unsigned decimal
 * number, whose low 32 bits must equal the field. An id without a field holds. */
template <std::size_t N>
uint32_t MDTLM_RecordConditionEquals(const MDTLM_RECORD_FIELD (&fields)[N], uint32_t fieldId,
                                     const MDTLM_PATH_CONDITION *cond, const void *record)
{
    if (fieldId >= N || fields[fieldId].compare == MDTLM_FIELD_NONE) {
        return 1;
    }
    char text[MDTLM_CONDITION_TEXT_SIZE];
    MDTLM_ConditionText(cond, text);
    const uint32_t wanted = static_cast<uint32_t>(std::strtoul(text, nullptr, 10));
    return static_cast<uint32_t>(MDTLM_RecordFieldValue(record, fields[fieldId])) == wanted ? 1u : 0u;
}

/* Filter on a numeric field with the filter's operator and threshold: 64-bit
 * comparison for full-width fields, otherwise the 32-bit comparison of the
 * field's and the threshold's low 32 bits. An id without a field holds. */
template <std::size_t N>
uint32_t MDTLM_RecordFilterHolds(const MDTLM_RECORD_FIELD (&fields)[N], uint32_t fieldId,
                                 const MDTLM_PATH_FILTER *filter, const void *record)
{
    if (fieldId >= N || fields[fieldId].compare == MDTLM_FIELD_NONE) {
        return 1;
    }
    const uint64_t value = MDTLM_RecordFieldValue(record, fields[fieldId]);
    if (fields[fieldId].compare == MDTLM_FIELD_FULL64) {
        return MDTLM_STATS_SensorFilterOp64(filter->threshold, value, filter->op);
    }
    return MDTLM_STATS_SensorFilterOp(static_cast<uint32_t>(filter->threshold), static_cast<uint32_t>(value),
                                      filter->op);
}

/* A condition of a sensor whose ids `srcId` and `dstId` name address texts:
 * those two are decided by `cmpSrc(rec, text)` and `cmpDst(rec, text)` with the
 * condition's text, every other id by the record table. */
template <typename Rec, std::size_t N, typename CmpSrc, typename CmpDst>
uint32_t MDTLM_AddressConditionHolds(const MDTLM_RECORD_FIELD (&fields)[N], uint32_t srcId, CmpSrc cmpSrc,
                                     uint32_t dstId, CmpDst cmpDst, uint32_t fieldId,
                                     const MDTLM_PATH_CONDITION *cond, const void *record)
{
    if (fieldId != srcId && fieldId != dstId) {
        return MDTLM_RecordConditionEquals(fields, fieldId, cond, record);
    }
    const Rec *rec = static_cast<const Rec *>(record);
    char text[MDTLM_CONDITION_TEXT_SIZE];
    MDTLM_ConditionText(cond, text);
    return fieldId == srcId ? cmpSrc(rec, text) : cmpDst(rec, text);
}

/* How a test on `fieldId` is compared, read from the table the compare callback uses. */
template <std::size_t N>
uint32_t MDTLM_RecordFieldForm(const MDTLM_RECORD_FIELD (&fields)[N], uint32_t fieldId)
{
    if (fieldId >= N || fields[fieldId].compare == MDTLM_FIELD_NONE) {
        return MDTLM_FIELD_FORM_NONE;
    }
    return fields[fieldId].compare == MDTLM_FIELD_FULL64 ? MDTLM_FIELD_FORM_NUMBER64 : MDTLM_FIELD_FORM_NUMBER32;
}

/* The same for a condition of a sensor whose ids `srcId` and `dstId` are
 * address texts of `addressForm`. */
template <std::size_t N>
uint32_t MDTLM_AddressConditionForm(const MDTLM_RECORD_FIELD (&fields)[N], uint32_t srcId, uint32_t dstId,
                                    uint32_t addressForm, uint32_t fieldId)
{
    return fieldId == srcId || fieldId == dstId ? addressForm : MDTLM_RecordFieldForm(fields, fieldId);
}

/* Comparison forms of each sensor's condition and filter ids (MDTLM_FIELD_FORM_FUNC). */
uint32_t MDTLM_FlowStatsFieldForm(uint32_t mapKind, uint32_t fieldId);
uint32_t MDTLM_FlowHopStatsFieldForm(uint32_t mapKind, uint32_t fieldId);
uint32_t MDTLM_SrvtlmFlowFieldForm(uint32_t mapKind, uint32_t fieldId);
uint32_t MDTLM_QumaResultFieldForm(uint32_t mapKind, uint32_t fieldId);
uint32_t MDTLM_SrvtlmFctFlowFieldForm(uint32_t mapKind, uint32_t fieldId);
uint32_t MDTLM_ZelkCacheFieldForm(uint32_t mapKind, uint32_t fieldId);

#endif /* MDTLM_SENSORS_SENSOR_RECORD_FIELDS_H */
