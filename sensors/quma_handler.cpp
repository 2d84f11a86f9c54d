/*
 * Record handler of the result statistics sensor: the shared record pipeline
 * driven by this sensor's maps, compare callbacks and encoders.
 */
#include "mdtlm_vraldcn.h"
#include "sensor_log_lines.h"
#include "sensor_table_pipeline.h"

namespace {

const MDTLM_SENSOR_PIPELINE kQumaPipeline =
    MDTLM_TablePipeline<MDTLM_QUMA_RESULT_REC, MDTLM_QUMA_GPB_EncodeMsg, MDTLM_QUMA_JSON_EncodeMsg>(
        MDTLM_SENSOR_QUMA_RESULT, g_femMdTlmQumaResultCondMap, MDTLM_QUMA_STATS_CmpFieldWithCondition,
        g_femMdTlmQumaResultFilterMap, MDTLM_QUMA_STATS_CmpFieldWithThread,
        kQumaLogLines.encodeFail);

} // namespace

extern "C" uint32_t MDTLM_QUMA_STATS_StatsMsgProc(MDTLM_TASK_DATA *task, MDTLM_STATS_MSG *msg)
{
    return MDTLM_TablePipelineProc(kQumaPipeline, task, msg);
}

extern "C" void MDTLM_QUMA_STATS_EncodeStatsData(const MDTLM_QUMA_RESULT_REC *rec, MDTLM_TASK_DATA *task)
{
    MDTLM_TablePipelineEncode(kQumaPipeline, rec, task);
}
