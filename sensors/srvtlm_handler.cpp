/*
 * Record handler of the I/O service flow statistics sensor: the shared record
 * pipeline driven by this sensor's maps, compare callbacks and encoders.
 */
#include "mdtlm_vraldcn.h"
#include "sensor_log_lines.h"
#include "sensor_table_pipeline.h"

namespace {

const MDTLM_SENSOR_PIPELINE kSrvtlmFlowPipeline =
    MDTLM_TablePipeline<MDTLM_SRVTLM_FLOW_STATS_REC, MDTLM_SRVTLM_FLOW_GPB_EncodeMsg, MDTLM_SRVTLM_FLOW_JSON_EncodeMsg>(
        MDTLM_SENSOR_SRVTLM_FLOW, g_femMdTlmSrvtlmFlowCondMap, MDTLM_SRVTLM_FLOW_STATS_CmpFieldWithInfo,
        g_femMdTlmSrvtlmFlowFilterMap, MDTLM_SRVTLM_FLOW_STATS_CmpFieldWithFilter,
        kSrvtlmFlowLogLines.encodeFail);

} // namespace

extern "C" uint32_t MDTLM_SRVTLM_FLOW_STATS_StatsMsgProc(MDTLM_TASK_DATA *task, MDTLM_STATS_MSG *msg)
{
    return MDTLM_TablePipelineProc(kSrvtlmFlowPipeline, task, msg);
}

extern "C" void MDTLM_SRVTLM_FLOW_STATS_EncodeStatsData(const MDTLM_SRVTLM_FLOW_STATS_REC *rec, MDTLM_TASK_DATA *task)
{
    MDTLM_TablePipelineEncode(kSrvtlmFlowPipeline, rec, task);
}
