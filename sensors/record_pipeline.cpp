/*
 * Record processing shared by every sensor handler.
 */
#include "record_pipeline.h"

#include <cstring>

#include "mdtlm_log.h"
#include "mdtlm_vraldcn.h"

namespace {

constexpr uint32_t kCastTypeOffset = 52;
constexpr uint32_t kSequenceOffset = 56;
constexpr uint32_t kCastUnicast = 1;

uint32_t *SequenceCounter(MDTLM_TASK_DATA *task, uint32_t castType)
{
    return castType == kCastUnicast ? &task->unicastSeqNum : &task->multicastSeqNum;
}

uint32_t ReadU32(const uint8_t *record, uint32_t offset)
{
    uint32_t value;
    std::memcpy(&value, record + offset, sizeof(value));
    return value;
}

bool PassesTask(const MDTLM_SENSOR_PIPELINE *p, const MDTLM_TASK_DATA *task, const void *record)
{
    /* The engine reads the task's block in place: it never writes it and never
     * reads past its room, so a copy per test would only cost time. */
    const MDTLM_SENSOR_PATH_INFO *block = &task->pathInfo;
    if (MDTLM_STATS_SensorPathCondition(block, record, p->condMap, p->condRows, p->condCmp) == 0) {
        return false;
    }
    return MDTLM_STATS_SensorPathFilter(block, record, p->filterMap, p->filterRows, p->filterCmp) != 0;
}

} // namespace

void MDTLM_PIPELINE_EncodeIntoTask(const MDTLM_SENSOR_PIPELINE *p, const void *record, MDTLM_TASK_DATA *task)
{
    const bool json = task->pathInfo.encodeType == MDTLM_ENCODE_TYPE_JSON;
    MDTLM_SAMPLE_BUFFER *buffer = json ? task->jsonBuffer : task->gpbBuffer;
    MDTLM_RECORD_ENCODE_FUNC encode = json ? p->jsonEncode : p->gpbEncode;
    if (buffer == nullptr) {
        /* The tick could not allocate this task's buffers; nothing may be appended. */
        MDTLM_LOG_FORMAT_AT(MDTLM_LOG_FAILURE, MDTLM_LOG_LINE_OR_CALL(p->encodeFailLine), p->encodeFailFormat,
                            MDTLM_ENCODE_FAIL);
        return;
    }

    int32_t ret = MDTLM_ENCODE_FAIL;
    for (int attempt = 0; attempt < 2; ++attempt) {
        ret = encode(record, buffer->data + buffer->dataLen,
                     static_cast<int32_t>(MDTLM_SAMPLE_DATA_SIZE - buffer->dataLen));
        if (ret > 0) {
            buffer->dataLen += static_cast<uint32_t>(ret);
            buffer->itemCnt += 1;
            if (p->perfPeriodOffset != MDTLM_PIPELINE_NO_PERF) {
                MDTLM_VRALDCN_UpdateReportPerfOutItemCnt(
                    ReadU32(static_cast<const uint8_t *>(record), p->perfPeriodOffset), 1,
                    static_cast<uint32_t>(ret));
            }
            return;
        }
        if (ret != MDTLM_ENCODE_NO_SPACE || buffer->dataLen == 0) {
            break;
        }
        /* Full buffer: upload it, empty it, and encode the same record once more. */
        MDTLM_VRALDCN_TASK_UploadStatsDataByTask(buffer, task);
        buffer->itemCnt = 0;
        buffer->dataLen = 0;
    }
    MDTLM_LOG_FORMAT_AT(MDTLM_LOG_FAILURE, MDTLM_LOG_LINE_OR_CALL(p->encodeFailLine), p->encodeFailFormat, ret);
}

uint32_t MDTLM_PIPELINE_ProcessMsg(const MDTLM_SENSOR_PIPELINE *p, MDTLM_TASK_DATA *task, MDTLM_STATS_MSG *msg)
{
    uint8_t *record = msg->body;
    uint32_t *sequence = nullptr;
    if (p->stampsSequence != 0) {
        /* Each task sees its own numbering; filters and encoders use the stamped value. */
        sequence = SequenceCounter(task, ReadU32(record, kCastTypeOffset));
        std::memcpy(record + kSequenceOffset, sequence, sizeof(*sequence));
    }

    const bool passed = PassesTask(p, task, record);
    if (passed) {
        if (p->perfPeriodOffset != MDTLM_PIPELINE_NO_PERF) {
            MDTLM_VRALDCN_UpdateReportPerfInFwmItermCnt(ReadU32(record, p->perfPeriodOffset), 1,
                                                        p->perfItemBytes);
        }
        MDTLM_PIPELINE_EncodeIntoTask(p, record, task);
    }
    if (sequence != nullptr) {
        *sequence += 1; /* every offered record of the cast type counts, passed or not */
    }
    return passed ? 1u : 0u;
}
