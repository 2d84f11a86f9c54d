/*
 * Pipeline tables of the sensors: typed encoders adapted to the pipeline. The
 * sensors whose records are handled as they arrive (export flow cache, result
 * statistics and the two I/O service sensors) keep the defaults: no sequence
 * stamping, no report-performance counting and the shared encode-failure
 * line, which they give their own number. The flow family sets all of them
 * but the number: its line carries the line of its call.
 */
#ifndef MDTLM_SENSORS_SENSOR_TABLE_PIPELINE_H
#define MDTLM_SENSORS_SENSOR_TABLE_PIPELINE_H

#include <cstddef>
#include <cstdint>

#include "mdtlm_log.h"
#include "record_pipeline.h"
#include "sensor_log_texts.h"

template <typename Rec, int32_t (*GpbEncode)(const Rec *, uint8_t *, int32_t),
          int32_t (*JsonEncode)(const Rec *, uint8_t *, int32_t), std::size_t CondRows, std::size_t FilterRows>
constexpr MDTLM_SENSOR_PIPELINE MDTLM_TablePipeline(uint32_t sensorType,
                                                    const MDTLM_FILTER_MAP_ENTRY (&condMap)[CondRows],
                                                    MDTLM_CONDITION_CMP_FUNC condCmp,
                                                    const MDTLM_FILTER_MAP_ENTRY (&filterMap)[FilterRows],
                                                    MDTLM_FILTER_CMP_FUNC filterCmp,
                                                    int encodeFailLine = MDTLM_LOG_LINE_OF_CALL,
                                                    const char *encodeFailFormat = MDTLM_SENSOR_ENCODE_FAIL_FORMAT,
                                                    uint32_t stampsSequence = 0,
                                                    uint32_t perfPeriodOffset = MDTLM_PIPELINE_NO_PERF,
                                                    uint32_t perfItemBytes = 0)
{
    return MDTLM_SENSOR_PIPELINE{
        sensorType,
        condMap,
        static_cast<uint32_t>(CondRows),
        condCmp,
        filterMap,
        static_cast<uint32_t>(FilterRows),
        filterCmp,
        MDTLM_PipelineEncoder<Rec, GpbEncode>,
        MDTLM_PipelineEncoder<Rec, JsonEncode>,
        encodeFailLine,
        encodeFailFormat,
        stampsSequence,
        perfPeriodOffset,
        perfItemBytes,
    };
}

/* The handler of a statistics message: 1 when the record passed the task's
 * conditions and filters (stored or not), 0 when it was rejected. */
inline uint32_t MDTLM_TablePipelineProc(const MDTLM_SENSOR_PIPELINE &pipeline, MDTLM_TASK_DATA *task,
                                        MDTLM_STATS_MSG *msg)
{
    if (task == nullptr || msg == nullptr) {
        return 0;
    }
    return MDTLM_PIPELINE_ProcessMsg(&pipeline, task, msg);
}

/* Encodes one record into the task's buffer of its encode type. */
inline void MDTLM_TablePipelineEncode(const MDTLM_SENSOR_PIPELINE &pipeline, const void *record,
                                      MDTLM_TASK_DATA *task)
{
    if (record == nullptr || task == nullptr) {
        return;
    }
    MDTLM_PIPELINE_EncodeIntoTask(&pipeline, record, task);
}

#endif /* MDTLM_SENSORS_SENSOR_TABLE_PIPELINE_H */
