/*
 * Record handler of the export flow cache sensor: the shared record pipeline
 * driven by this sensor's maps, compare callbacks and encoders.
 */
#include "mdtlm_vraldcn.h"
#include "sensor_log_lines.h"
#include "sensor_table_pipeline.h"

namespace {

const MDTLM_SENSOR_PIPELINE kZelkPipeline =
    MDTLM_TablePipeline<MDTLM_ZELK_CACHE_REC, MDTLM_ZELK_GPB_EncodeMsg, MDTLM_ZELK_JSON_EncodeMsg>(
        MDTLM_SENSOR_ZELK_CACHE, g_femMdTlmZelkCacheCondMap, MDTLM_ZELK_CmpFieldWithCondition,
        g_femMdTlmZelkCacheFilterMap, MDTLM_ZELK_CmpFieldWithThread,
        kZelkLogLines.encodeFail);

} // namespace

extern "C" uint32_t MDTLM_ZELK_CacheMsgProc(MDTLM_TASK_DATA *task, MDTLM_STATS_MSG *msg)
{
    return MDTLM_TablePipelineProc(kZelkPipeline, task, msg);
}

extern "C" void MDTLM_ZELK_EncodeCacheData(const MDTLM_ZELK_CACHE_REC *rec, MDTLM_TASK_DATA *task)
{
    MDTLM_TablePipelineEncode(kZelkPipeline, rec, task);
}
