/*
 * Formatting of a collecting buffer into a sample for the framework. GPB
 * samples carry the records as they are; JSON samples are framed as one
 * document: the sensor's header, the records without the comma after the
 * last one, and the closing "]}}".
 */
#include <cstring>

#include "mdtlm_log.h"
#include "mdtlm_platform.h"
#include "mdtlm_vraldcn.h"
#include "task_log_lines.h"

namespace {

constexpr const char *kJsonClosing = "]}}";

/* Header fields that travel from the collecting buffer into the sample:
 * bytes 8 to 31 and 36 to 43. Identity, bytes 32 to 35 and the length are
 * the sample's own. */
void CopyHeader(const MDTLM_SAMPLE_BUFFER *src, MDTLM_SAMPLE_BUFFER *dst)
{
    std::memcpy(dst->reserved1, src->reserved1, sizeof(dst->reserved1));
    dst->collectTimestamp = src->collectTimestamp;
    std::memcpy(dst->reserved2, src->reserved2, sizeof(dst->reserved2));
    dst->reportEnd = src->reportEnd;
    dst->itemCnt = src->itemCnt;
    dst->dataLen = 0;
}

} // namespace

extern "C" uint32_t MDTLM_VRALDCN_TASK_FormatStatsData(uint32_t sensorType, uint32_t codeType,
                                                       const MDTLM_SAMPLE_BUFFER *src, MDTLM_SAMPLE_BUFFER *dst)
{
    if (src == nullptr || dst == nullptr) {
        return 1;
    }
    CopyHeader(src, dst);
    char *text = reinterpret_cast<char *>(dst->data);
    const bool json = codeType == MDTLM_ENCODE_TYPE_JSON;

    if (json) {
        const char *header = MDTLM_VRALDCN_TASK_GetJsonHeader(sensorType);
        if (header == nullptr) {
            return 1;
        }
        /* The header lives in a 128-byte field; never read past it. */
        int written =
            sprintf_s(text, MDTLM_SAMPLE_DATA_SIZE, "%.*s", static_cast<int>(MDTLM_JSON_HEADER_LEN), header);
        if (written < 0) {
            return 1;
        }
        dst->dataLen = static_cast<uint32_t>(written);
    }

    if (memcpy_s(dst->data + dst->dataLen, MDTLM_SAMPLE_DATA_SIZE - dst->dataLen, src->data, src->dataLen) != 0) {
        MDTLM_LOG_AT(MDTLM_LOG_FAILURE, MDTLM_LINE_FORMAT_COPY_FAILED,
                     "[NTVVRALDCN_TASK_FormatStatsData] Copy sampleData failed, codetype: %u.", codeType);
        return 1;
    }
    dst->dataLen += src->dataLen;
    if (!json) {
        return 0;
    }

    /* The closing replaces the comma that follows the last record. */
    if (dst->dataLen == 0) {
        return 1;
    }
    const uint32_t at = dst->dataLen - 1;
    if (sprintf_s(text + at, MDTLM_SAMPLE_DATA_SIZE - at, "%s", kJsonClosing) < 0) {
        return 1;
    }
    dst->dataLen = at + static_cast<uint32_t>(std::strlen(kJsonClosing));
    return 0;
}
