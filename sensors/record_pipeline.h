/*
 * The record pipeline shared by all six sensors: conditions, filters, encode
 * into the task's sample buffer with upload-and-retry. Each sensor supplies a
 * table of its maps, compare callbacks and encoders; the steps exist once.
 */
#ifndef MDTLM_SENSORS_RECORD_PIPELINE_H
#define MDTLM_SENSORS_RECORD_PIPELINE_H

#include <cstdint>

#include "mdtlm_types.h"

typedef int32_t (*MDTLM_RECORD_ENCODE_FUNC)(const void *record, uint8_t *out, int32_t cap);

#define MDTLM_PIPELINE_NO_PERF UINT32_MAX

typedef struct MDTLM_SENSOR_PIPELINE {
    uint32_t sensorType;
    const MDTLM_FILTER_MAP_ENTRY *condMap;
    uint32_t condRows;
    MDTLM_CONDITION_CMP_FUNC condCmp;
    const MDTLM_FILTER_MAP_ENTRY *filterMap;
    uint32_t filterRows;
    MDTLM_FILTER_CMP_FUNC filterCmp;
    MDTLM_RECORD_ENCODE_FUNC gpbEncode;
    MDTLM_RECORD_ENCODE_FUNC jsonEncode;
    /* Number carried by the encode-failure line, or MDTLM_LOG_LINE_OF_CALL. */
    int encodeFailLine;
    /* Format of the encode-failure line, "[%s:%d][...] ... ret: %d." */
    const char *encodeFailFormat;
    /* Flow family: stamp the task's sequence number for the record's cast type
     * (u32 at 52) into the record (u32 at 56) before the tests, advance it after. */
    uint32_t stampsSequence;
    /* Flow family: offset of the u32 period key of the report-performance
     * counters, or MDTLM_PIPELINE_NO_PERF. */
    uint32_t perfPeriodOffset;
    /* Bytes counted as one accepted input item. */
    uint32_t perfItemBytes;
} MDTLM_SENSOR_PIPELINE;

/* Offers one statistics message to one task: 1 when the record passed the
 * task's conditions and filters (stored or not), 0 when it was rejected. */
uint32_t MDTLM_PIPELINE_ProcessMsg(const MDTLM_SENSOR_PIPELINE *pipeline, MDTLM_TASK_DATA *task,
                                   MDTLM_STATS_MSG *msg);

/* Encodes one record into the task's buffer of its encode type; a full buffer
 * is uploaded and emptied and the record encoded once more. */
void MDTLM_PIPELINE_EncodeIntoTask(const MDTLM_SENSOR_PIPELINE *pipeline, const void *record,
                                   MDTLM_TASK_DATA *task);

/* Adapts a typed record encoder to the pipeline's untyped signature. */
template <typename Rec, int32_t (*Encode)(const Rec *, uint8_t *, int32_t)>
int32_t MDTLM_PipelineEncoder(const void *record, uint8_t *out, int32_t cap)
{
    return Encode(static_cast<const Rec *>(record), out, cap);
}

#endif /* MDTLM_SENSORS_RECORD_PIPELINE_H */
