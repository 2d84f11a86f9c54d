/*
 * Upload of samples to the framework: one task buffer at a time, or one
 * sensor-wide buffer shared by every task of its encode type. Each upload
 * uses a fresh sample that is freed as soon as the framework returns.
 */
#include <cstring>

#include "mdtlm_log.h"
#include "mdtlm_vraldcn.h"
#include "task_list.h"
#include "task_log_lines.h"

namespace {

/* A zeroed sample, so that nothing the formatting leaves untouched (the
 * identity until it is stamped, header bytes 32 to 35, the data behind the
 * formatted length) reaches the framework as stale memory. */
MDTLM_SAMPLE_BUFFER *NewSample()
{
    auto *sample = static_cast<MDTLM_SAMPLE_BUFFER *>(MDTLM_VRALDCN_BufAlloc(sizeof(MDTLM_SAMPLE_BUFFER)));
    if (sample != nullptr) {
        std::memset(sample, 0, sizeof(*sample));
    }
    return sample;
}

void FreeSample(MDTLM_SAMPLE_BUFFER **sample)
{
    MDTLM_VRALDCN_BufFree(reinterpret_cast<void **>(sample));
}

} // namespace

extern "C" {

uint32_t MDTLM_VRALDCN_UploadDataToTlm(MDTLM_SAMPLE_BUFFER *sample)
{
    MDTLM_FRM_VTBL *vtbl = MDTLM_VRALDCN_GetTlmFrmVtbl();
    if (vtbl == nullptr || vtbl->SampleDataUpload == nullptr) {
        MDTLM_LOG_AT(MDTLM_LOG_FAILURE, MDTLM_LINE_UPLOAD_NO_TABLE, "[NTVVRALDCN_UploadDataToTlm] mdtlmVtbl is NULL.");
        return 1;
    }
    uint32_t ret = vtbl->SampleDataUpload(MDTLM_VRALDCN_GetModuleId(), sample);
    if (ret != 0) {
        MDTLM_LOG_AT(MDTLM_LOG_FAILURE, MDTLM_LINE_UPLOAD_REFUSED,
                     "[NTVVRALDCN_UploadDataToTlm] SampleDataUpload failed, ret: %u.", ret);
    }
    return ret;
}

uint32_t MDTLM_VRALDCN_TASK_IsActiveReportEnd(MDTLM_TASK_DATA *task)
{
    if (task == nullptr) {
        return 0;
    }
    const uint32_t now = MDTLM_VRALDCN_STATS_GetTimerSecondCnt();
    const uint32_t mark = task->lastReportSecondCnt;
    /* Across a wrap of the tick counter one tick less has elapsed than the
     * plain unsigned difference says. */
    const uint32_t elapsed = (now >= mark) ? now - mark : now - mark - 1u;
    if (elapsed >= task->pathInfo.sampleInterval / 1000u) {
        task->lastReportSecondCnt = now;
        return 1;
    }
    return 0;
}

void MDTLM_VRALDCN_TASK_UploadStatsDataProc(MDTLM_SAMPLE_BUFFER *sample, MDTLM_TASK_DATA *task)
{
    if (sample == nullptr || task == nullptr) {
        return;
    }
    sample->instanceId = task->instanceId;
    sample->taskId = task->taskId;
    sample->reportEnd = MDTLM_VRALDCN_TASK_IsActiveReportEnd(task);

    if (MDTLM_VRALDCN_UploadDataToTlm(sample) == 0) {
        task->stats.uploadOkCnt += 1;
        task->stats.lastUploadOkTime = MDTLM_VRALDCN_STATS_GetTimestampSec();
    } else {
        task->stats.uploadFailCnt += 1;
        task->stats.lastUploadFailTime = MDTLM_VRALDCN_STATS_GetTimestampSec();
    }
}

void MDTLM_VRALDCN_TASK_UploadStatsDataByTask(MDTLM_SAMPLE_BUFFER *buffer, MDTLM_TASK_DATA *task)
{
    if (buffer == nullptr || task == nullptr || buffer->dataLen == 0) {
        return;
    }
    const uint32_t codeType = task->pathInfo.encodeType;
    MDTLM_SAMPLE_BUFFER *sample = NewSample();
    if (sample == nullptr) {
        MDTLM_LOG_AT(MDTLM_LOG_FAILURE, MDTLM_LINE_TASK_UPLOAD_ALLOC_FAILED,
                     "[NTVVRALDCN_UploadDataToTlm] Alloc buff failed, codetype: %u.", codeType);
        return;
    }
    if (MDTLM_VRALDCN_TASK_FormatStatsData(task->sensorType, codeType, buffer, sample) != 0) {
        MDTLM_LOG_AT(MDTLM_LOG_FAILURE, MDTLM_LINE_TASK_UPLOAD_FORMAT_FAILED,
                     "[NTVVRALDCN_UploadDataToTlm] Format sampleData failed, codetype: %u.", codeType);
        FreeSample(&sample);
        return;
    }
    MDTLM_VRALDCN_TASK_UploadStatsDataProc(sample, task);
    FreeSample(&sample);
}

void MDTLM_VRALDCN_TASK_UploadStatsData(uint32_t sensorType, const MDTLM_SAMPLE_BUFFER *src, uint32_t codeType)
{
    if (src == nullptr || src->dataLen == 0) {
        return;
    }
    MDTLM_SAMPLE_BUFFER *sample = NewSample();
    if (sample == nullptr) {
        MDTLM_LOG_AT(MDTLM_LOG_FAILURE, MDTLM_LINE_SENSOR_UPLOAD_ALLOC_FAILED,
                     "[UploadStatsData] Alloc buff failed, codetype: %u.", codeType);
        return;
    }
    if (MDTLM_VRALDCN_TASK_FormatStatsData(sensorType, codeType, src, sample) != 0) {
        MDTLM_LOG_AT(MDTLM_LOG_FAILURE, MDTLM_LINE_SENSOR_UPLOAD_FORMAT_FAILED,
                     "[UploadStatsData] Format sampleData failed, codetype: %u.", codeType);
        FreeSample(&sample);
        return;
    }
    /* Every matching task stamps its own identity and flag into the shared sample. */
    MDTLM_TaskListWalk(MDTLM_VRALDCN_TASK_GetTaskHead(sensorType), [&](MDTLM_TASK_DATA &task) {
        if (task.pathInfo.encodeType == codeType) {
            MDTLM_VRALDCN_TASK_UploadStatsDataProc(sample, &task);
        }
        return true;
    });
    FreeSample(&sample);
}

} /* extern "C" */
