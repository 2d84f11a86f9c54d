/*
 * The catalogue of the six sensors: the static per-sensor tables that the rest
 * of the plug-in indexes by sensor type. Rows stand in sensor-type order 1..6.
 */
#include "catalogue.h"

#include <cstring>

#include "mdtlm_vraldcn.h"

#define MDTLM_XPATH_FLOW "dravik-vral:vral/dravik-vral-statistics:flow-statistics/flow-statistic"
#define MDTLM_XPATH_FLOWHOP "dravik-vral:vral/dravik-vral-statistics:flow-hop-statistics/flow-hop-statistic"
#define MDTLM_XPATH_SRVTLM "dravik-io-service-tlm:io-service-tlm/flow-statistics/flow-statistic"
#define MDTLM_XPATH_QUMA "dravik-quma:quma/result-statistics/result-statistic"
#define MDTLM_XPATH_FCT "dravik-io-service-tlm:io-service-tlm/flow-throughput-statistics/flow-throughput-statistic"
#define MDTLM_XPATH_ZELK "dravik-zelk:zelk/export-flow-caches/export-flow-cache"

extern "C" {

MDTLM_LIST_LINK g_vralDcnTlmFlowTaskListHead = {&g_vralDcnTlmFlowTaskListHead, &g_vralDcnTlmFlowTaskListHead};
MDTLM_LIST_LINK g_vralDcnTlmFlowHopTaskListHead = {&g_vralDcnTlmFlowHopTaskListHead,
                                                   &g_vralDcnTlmFlowHopTaskListHead};
MDTLM_LIST_LINK g_srvtlmTaskListHead = {&g_srvtlmTaskListHead, &g_srvtlmTaskListHead};
MDTLM_LIST_LINK g_qumaTaskListHead = {&g_qumaTaskListHead, &g_qumaTaskListHead};
MDTLM_LIST_LINK g_srvtlmFctTaskListHead = {&g_srvtlmFctTaskListHead, &g_srvtlmFctTaskListHead};
MDTLM_LIST_LINK g_zelkTaskListHead = {&g_zelkTaskListHead, &g_zelkTaskListHead};

MDTLM_SAMPLE_DATA g_mdtlmVralDcnFlowSampleData = {nullptr, nullptr};
MDTLM_SAMPLE_DATA g_mdtlmVralDcnFlowHopSampleData = {nullptr, nullptr};
MDTLM_SAMPLE_DATA g_mdtlmSrvtlmSampleData = {nullptr, nullptr};
MDTLM_SAMPLE_DATA g_mdtlmQumaSampleData = {nullptr, nullptr};
MDTLM_SAMPLE_DATA g_mdtlmSrvtlmFctSampleData = {nullptr, nullptr};
MDTLM_SAMPLE_DATA g_mdtlmZelkSampleData = {nullptr, nullptr};

MDTLM_XPATH_NODE g_mdtlmVralDcnXpathNode[MDTLM_SENSOR_COUNT] = {
    {MDTLM_XPATH_FLOW, MDTLM_VRALDCN_FLOW_AddTlmTask, MDTLM_VRALDCN_FLOW_DelTlmTask},
    {MDTLM_XPATH_FLOWHOP, MDTLM_VRALDCN_FLOWHOP_AddTlmTask, MDTLM_VRALDCN_FLOWHOP_DelTlmTask},
    {MDTLM_XPATH_SRVTLM, FWM_SRVTLM_FLOW_AddTlmTask, FWM_SRVTLM_FLOW_DelTlmTask},
    {MDTLM_XPATH_QUMA, FWM_QUMA_FLOW_AddTlmTask, FWM_QUMA_FLOW_DelTlmTask},
    {MDTLM_XPATH_FCT, FWM_SRVTLM_FCTFLOW_AddTlmTask, FWM_SRVTLM_FCTFLOW_DelTlmTask},
    {MDTLM_XPATH_ZELK, FWM_ZELK_FLOW_AddTlmTask, FWM_ZELK_FLOW_DelTlmTask},
};

MDTLM_STATS_MAP_ENTRY g_femMdtlmStatsMap[MDTLM_SENSOR_COUNT] = {
    {MDTLM_SENSOR_VRAL_FLOW, 0, &g_mdtlmVralDcnFlowSampleData, MDTLM_VRALDCN_FLOW_STATS_StatsMsgProc},
    {MDTLM_SENSOR_VRAL_FLOWHOP, 0, &g_mdtlmVralDcnFlowHopSampleData, MDTLM_VRALDCN_FLOWHOP_STATS_StatsMsgProc},
    {MDTLM_SENSOR_SRVTLM_FLOW, 0, &g_mdtlmSrvtlmSampleData, MDTLM_SRVTLM_FLOW_STATS_StatsMsgProc},
    {MDTLM_SENSOR_QUMA_RESULT, 0, &g_mdtlmQumaSampleData, MDTLM_QUMA_STATS_StatsMsgProc},
    {MDTLM_SENSOR_SRVTLM_FCTFLOW, 0, &g_mdtlmSrvtlmFctSampleData, MDTLM_SRVTLM_FCT_FLOW_STATS_StatsMsgProc},
    {MDTLM_SENSOR_ZELK_CACHE, 0, &g_mdtlmZelkSampleData, MDTLM_ZELK_CacheMsgProc},
};

MDTLM_TASK_LIST_ENTRY g_vralDcnTlmTaskListMap[MDTLM_SENSOR_COUNT] = {
    {MDTLM_SENSOR_VRAL_FLOW, &g_vralDcnTlmFlowTaskListHead, "{\"flow_statistics\":{\"flow_statistic\":["},
    {MDTLM_SENSOR_VRAL_FLOWHOP, &g_vralDcnTlmFlowHopTaskListHead,
     "{\"flow_hop_statistics\":{\"flow_hop_statistic\":["},
    {MDTLM_SENSOR_SRVTLM_FLOW, &g_srvtlmTaskListHead, "{\"flow_statistics\":{\"flow_statistic\":["},
    {MDTLM_SENSOR_QUMA_RESULT, &g_qumaTaskListHead, "{\"result-statistic\":{\"result-statistic\":["},
    {MDTLM_SENSOR_SRVTLM_FCTFLOW, &g_srvtlmFctTaskListHead,
     "{\"flow_throughput_statistics\":{\"flow_throughput_statistic\":["},
    {MDTLM_SENSOR_ZELK_CACHE, &g_zelkTaskListHead, "{\"export-flow-caches\":{\"export-flow-cache\":["},
};

MDTLM_PATH_NAME_ENTRY g_femMdtlmPathNamList[MDTLM_SENSOR_COUNT] = {
    {MDTLM_SENSOR_VRAL_FLOW, MDTLM_XPATH_FLOW},     {MDTLM_SENSOR_VRAL_FLOWHOP, MDTLM_XPATH_FLOWHOP},
    {MDTLM_SENSOR_SRVTLM_FLOW, MDTLM_XPATH_SRVTLM}, {MDTLM_SENSOR_QUMA_RESULT, MDTLM_XPATH_QUMA},
    {MDTLM_SENSOR_SRVTLM_FCTFLOW, MDTLM_XPATH_FCT}, {MDTLM_SENSOR_ZELK_CACHE, MDTLM_XPATH_ZELK},
};

} /* extern "C" */

MDTLM_STATS_MAP_ENTRY *MDTLM_CatalogueStatsRow(uint32_t sensorType)
{
    return MDTLM_CatalogueFind(g_femMdtlmStatsMap, sensorType);
}

MDTLM_TASK_LIST_ENTRY *MDTLM_CatalogueTaskListRow(uint32_t sensorType)
{
    return MDTLM_CatalogueFind(g_vralDcnTlmTaskListMap, sensorType);
}

MDTLM_PATH_NAME_ENTRY *MDTLM_CataloguePathNameRow(uint32_t sensorType)
{
    return MDTLM_CatalogueFind(g_femMdtlmPathNamList, sensorType);
}
