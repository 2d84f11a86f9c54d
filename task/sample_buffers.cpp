/*
 * Sample buffers of the sensors and of their tasks, re-initialised at the
 * start of every period tick: missing buffers are allocated, every buffer is
 * zeroed and stamped with the collect time of the tick.
 */
#include <sys/time.h>

#include <cstring>

#include "catalogue.h"
#include "mdtlm_log.h"
#include "mdtlm_platform.h"
#include "mdtlm_vraldcn.h"
#include "task_list.h"
#include "task_log_lines.h"

namespace {

constexpr uint32_t kCodeTypeGpb = 0;
constexpr uint32_t kCodeTypeJson = 1;

MDTLM_SAMPLE_BUFFER *AllocSampleBuffer()
{
    return static_cast<MDTLM_SAMPLE_BUFFER *>(MDTLM_VRALDCN_BufAlloc(sizeof(MDTLM_SAMPLE_BUFFER)));
}

void ZeroSampleBuffer(MDTLM_SAMPLE_BUFFER *buffer)
{
    std::memset(buffer, 0, sizeof(*buffer));
}

} // namespace

extern "C" {

uint64_t MDTLM_VRALDCN_STATS_GetTimestamps(void)
{
    struct timeval now {};
    if (gettimeofday(&now, nullptr) != 0) {
        MDTLM_LOG_AT(MDTLM_LOG_FAILURE, MDTLM_LINE_COLLECT_CLOCK_FAILED,
                     "[NTVVRALDCN_STATS_GetTimestamps] Get collect timestamp failed");
        return 0;
    }
    return static_cast<uint64_t>(now.tv_sec) * 1000u + static_cast<uint64_t>(now.tv_usec) / 1000u;
}

uint32_t MDTLM_VRALDCN_STATS_GetTimestampSec(void)
{
    PAL_SYSTIME time{};
    uint32_t high = 0;
    uint32_t seconds = 0;
    if (PAL_SystimeGet(&time) != 0) {
        /* An unread clock gives no time rather than the conversion of an empty record. */
        return 0;
    }
    (void)PAL_SystimeSecSince1970(&time, &high, &seconds);
    return seconds;
}

void MDTLM_VRALDCN_STATS_SetCollectTimestamp(MDTLM_SAMPLE_BUFFER *a, MDTLM_SAMPLE_BUFFER *b)
{
    const uint64_t stamp = MDTLM_VRALDCN_STATS_GetTimestamps();
    if (a != nullptr) {
        a->collectTimestamp = stamp;
    }
    if (b != nullptr) {
        b->collectTimestamp = stamp;
    }
}

void MDTLM_VRALDCN_STATS_InitSampleBuffer(MDTLM_STATS_MAP_ENTRY *row)
{
    if (row == nullptr || row->sampleData == nullptr) {
        return;
    }
    MDTLM_SAMPLE_BUFFER **buffers[] = {&row->sampleData->gpbBuffer, &row->sampleData->jsonBuffer};
    const uint32_t codeTypes[] = {kCodeTypeGpb, kCodeTypeJson};
    for (uint32_t i = 0; i < 2; ++i) {
        if (*buffers[i] == nullptr) {
            *buffers[i] = AllocSampleBuffer();
            if (*buffers[i] == nullptr) {
                MDTLM_LOG_AT(MDTLM_LOG_FAILURE, MDTLM_LINE_SENSOR_BUFFER_ALLOC_FAILED,
                             "[GetAndInitSampleDataBuff] Alloc buff failed, msgId: %u, codeType: %u",
                          row->sensorType, codeTypes[i]);
                return;
            }
        }
        ZeroSampleBuffer(*buffers[i]);
    }
}

uint32_t MDTLM_STATS_InitTaskSampleBuffer(MDTLM_TASK_DATA *task)
{
    if (task == nullptr) {
        return 1;
    }
    if (task->gpbBuffer == nullptr) {
        task->gpbBuffer = AllocSampleBuffer();
        if (task->gpbBuffer == nullptr) {
            MDTLM_LOG_AT(MDTLM_LOG_FAILURE, MDTLM_LINE_TASK_GPB_BUFFER_ALLOC_FAILED,
                         "[InitTaskSampleBuffer] Alloc buff failed, msgId: %u, codeType: %u", task->sensorType,
                         kCodeTypeGpb);
            return 1;
        }
    }
    ZeroSampleBuffer(task->gpbBuffer);
    if (task->jsonBuffer == nullptr) {
        task->jsonBuffer = AllocSampleBuffer();
        if (task->jsonBuffer == nullptr) {
            MDTLM_LOG_AT(MDTLM_LOG_FAILURE, MDTLM_LINE_TASK_JSON_BUFFER_ALLOC_FAILED,
                         "[InitTaskSampleBuffer] Alloc buff failed, msgId: %u, codeType: %u", task->sensorType,
                         kCodeTypeJson);
            /* A task holds both of its buffers or neither. */
            MDTLM_VRALDCN_BufFree(reinterpret_cast<void **>(&task->gpbBuffer));
            return 1;
        }
    }
    ZeroSampleBuffer(task->jsonBuffer);
    return 0;
}

void MDTLM_STATS_InitTaskStats(uint32_t sensorType)
{
    MDTLM_TaskListWalk(MDTLM_VRALDCN_TASK_GetTaskHead(sensorType), [](MDTLM_TASK_DATA &task) {
        if (MDTLM_STATS_InitTaskSampleBuffer(&task) != 0) {
            MDTLM_LOG_AT(MDTLM_LOG_FAILURE, MDTLM_LINE_TASK_WALK_STOPPED, "[InitTaskStats] Alloc buff failed");
            return false;
        }
        MDTLM_VRALDCN_STATS_SetCollectTimestamp(task.gpbBuffer, task.jsonBuffer);
        return true;
    });
}

void MDTLM_VRALDCN_STATS_InitStatsMap(void)
{
    for (MDTLM_STATS_MAP_ENTRY &row : g_femMdtlmStatsMap) {
        row.encodeType = MDTLM_VRALDCN_TASK_GetEncodeType(row.sensorType);
        MDTLM_VRALDCN_STATS_InitSampleBuffer(&row);
        if (row.sampleData != nullptr) {
            MDTLM_VRALDCN_STATS_SetCollectTimestamp(row.sampleData->gpbBuffer, row.sampleData->jsonBuffer);
        }
        MDTLM_STATS_InitTaskStats(row.sensorType);
    }
}

MDTLM_STATS_MAP_ENTRY *MDTLM_VRALDCN_STATS_GetStatsMap(uint32_t sensorType)
{
    return MDTLM_CatalogueStatsRow(sensorType);
}

} /* extern "C" */
