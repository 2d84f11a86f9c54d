/*
 * Record handler of the I/O service flow throughput sensor: the shared record
 * pipeline driven by this sensor's maps, compare callbacks and encoders.
 */
#include "mdtlm_vraldcn.h"
#include "sensor_log_lines.h"
#include "sensor_table_pipeline.h"

namespace {

const MDTLM_SENSOR_PIPELINE kFctFlowPipeline =
    MDTLM_TablePipeline<MDTLM_SRVTLM_FCTFLOW_STATS_REC, MDTLM_SRVTLM_FCTFLOW_GPB_EncodeMsg,
                        MDTLM_SRVTLM_FCTFLOW_JSON_EncodeMsg>(
        MDTLM_SENSOR_SRVTLM_FCTFLOW, g_femMdTlmSrvtlmFctFlowCondMap, MDTLM_SRVTLM_FCTFLOW_STATS_CmpFieldWithInfo,
        g_femMdTlmSrvtlmFctFlowFilterMap, MDTLM_SRVTLM_FCTFLOW_STATS_CmpFieldWithFilter,
        kSrvtlmFctFlowLogLines.encodeFail);

} // namespace

extern "C" uint32_t MDTLM_SRVTLM_FCT_FLOW_STATS_StatsMsgProc(MDTLM_TASK_DATA *task, MDTLM_STATS_MSG *msg)
{
    return MDTLM_TablePipelineProc(kFctFlowPipeline, task, msg);
}

extern "C" void MDTLM_SRVTLM_FCTFLOW_STATS_EncodeStatsData(const MDTLM_SRVTLM_FCTFLOW_STATS_REC *rec,
                                                           MDTLM_TASK_DATA *task)
{
    MDTLM_TablePipelineEncode(kFctFlowPipeline, rec, task);
}
