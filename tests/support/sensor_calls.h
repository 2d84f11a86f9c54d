/*
 * What the tests and fuzz targets call on each sensor, in one row per sensor
 * (row `sensorType - 1`): its record size, its two record encoders and the
 * JSON encoder's capacity floor, the call that stores a record into a task's
 * buffer, its condition and filter maps and its compare callbacks.
 */
#ifndef MDTLM_TEST_SENSOR_CALLS_H
#define MDTLM_TEST_SENSOR_CALLS_H

#include <cstddef>
#include <cstdint>

#include "mdtlm_vraldcn.h"

namespace sensor_table {

using RecordEncoder = int32_t (*)(const void *record, uint8_t *out, int32_t cap);
using RecordStore = void (*)(const void *record, MDTLM_TASK_DATA *task);

struct SensorCalls {
    uint32_t sensorType;
    uint32_t recordSize;
    RecordEncoder gpb, json;
    int32_t jsonFloor; /* the JSON encoder refuses a smaller capacity before writing */
    RecordStore store;
    const MDTLM_FILTER_MAP_ENTRY *condMap;
    size_t condRows;
    const MDTLM_FILTER_MAP_ENTRY *filterMap;
    size_t filterRows;
    MDTLM_CONDITION_CMP_FUNC condition;
    MDTLM_FILTER_CMP_FUNC filter;
};

template <typename Rec, int32_t (*Gpb)(const Rec *, uint8_t *, int32_t), int32_t (*Json)(const Rec *, uint8_t *, int32_t),
          void (*Store)(const Rec *, MDTLM_TASK_DATA *), size_t C, size_t F>
constexpr SensorCalls Row(uint32_t sensorType, int32_t jsonFloor, const MDTLM_FILTER_MAP_ENTRY (&cond)[C],
                          const MDTLM_FILTER_MAP_ENTRY (&filter)[F], MDTLM_CONDITION_CMP_FUNC condition,
                          MDTLM_FILTER_CMP_FUNC filterCmp)
{
    return {sensorType,
            sizeof(Rec),
            [](const void *r, uint8_t *out, int32_t cap) { return Gpb(static_cast<const Rec *>(r), out, cap); },
            [](const void *r, uint8_t *out, int32_t cap) { return Json(static_cast<const Rec *>(r), out, cap); },
            jsonFloor,
            [](const void *r, MDTLM_TASK_DATA *task) { Store(static_cast<const Rec *>(r), task); },
            cond,
            C,
            filter,
            F,
            condition,
            filterCmp};
}

inline const SensorCalls kSensors[MDTLM_SENSOR_COUNT] = {
    Row<MDTLM_FLOW_STATS_REC, MDTLM_VRALDCN_FLOW_GPB_EncodeMsg, MDTLM_VRALDCN_FLOW_JSON_EncodeMsg,
        MDTLM_VRALDCN_FLOW_STATS_EncodeStatsData>(MDTLM_SENSOR_VRAL_FLOW, 1449, g_mdTlmFlowStatsCondMap,
                                                  g_mdTlmFlowStatsFilterMap, MDTLM_VRALDCN_FlowCmpFieldWithCondition,
                                                  MDTLM_VRALDCN_FlowCmpFieldWithFilter),
    Row<MDTLM_FLOWHOP_STATS_REC, MDTLM_VRALDCN_FLOWHOP_GPB_EncodeMsg, MDTLM_VRALDCN_FLOWHOP_JSON_EncodeMsg,
        MDTLM_VRALDCN_FLOWHOP_STATS_EncodeStatsData>(
        MDTLM_SENSOR_VRAL_FLOWHOP, 1335, g_femMdTlmFlowHopStatsCondMap, g_mdTlmFlowHopStatsFilterMap,
        MDTLM_VRALDCN_FlowHopCmpFieldWithInfo, MDTLM_VRALDCN_FlowHopCmpFieldWithFilter),
    Row<MDTLM_SRVTLM_FLOW_STATS_REC, MDTLM_SRVTLM_FLOW_GPB_EncodeMsg, MDTLM_SRVTLM_FLOW_JSON_EncodeMsg,
        MDTLM_SRVTLM_FLOW_STATS_EncodeStatsData>(
        MDTLM_SENSOR_SRVTLM_FLOW, 1059, g_femMdTlmSrvtlmFlowCondMap, g_femMdTlmSrvtlmFlowFilterMap,
        MDTLM_SRVTLM_FLOW_STATS_CmpFieldWithInfo, MDTLM_SRVTLM_FLOW_STATS_CmpFieldWithFilter),
    Row<MDTLM_QUMA_RESULT_REC, MDTLM_QUMA_GPB_EncodeMsg, MDTLM_QUMA_JSON_EncodeMsg, MDTLM_QUMA_STATS_EncodeStatsData>(
        MDTLM_SENSOR_QUMA_RESULT, 745, g_femMdTlmQumaResultCondMap, g_femMdTlmQumaResultFilterMap,
        MDTLM_QUMA_STATS_CmpFieldWithCondition, MDTLM_QUMA_STATS_CmpFieldWithThread),
    Row<MDTLM_SRVTLM_FCTFLOW_STATS_REC, MDTLM_SRVTLM_FCTFLOW_GPB_EncodeMsg, MDTLM_SRVTLM_FCTFLOW_JSON_EncodeMsg,
        MDTLM_SRVTLM_FCTFLOW_STATS_EncodeStatsData>(
        MDTLM_SENSOR_SRVTLM_FCTFLOW, 959, g_femMdTlmSrvtlmFctFlowCondMap, g_femMdTlmSrvtlmFctFlowFilterMap,
        MDTLM_SRVTLM_FCTFLOW_STATS_CmpFieldWithInfo, MDTLM_SRVTLM_FCTFLOW_STATS_CmpFieldWithFilter),
    Row<MDTLM_ZELK_CACHE_REC, MDTLM_ZELK_GPB_EncodeMsg, MDTLM_ZELK_JSON_EncodeMsg, MDTLM_ZELK_EncodeCacheData>(
        MDTLM_SENSOR_ZELK_CACHE, 633, g_femMdTlmZelkCacheCondMap, g_femMdTlmZelkCacheFilterMap,
        MDTLM_ZELK_CmpFieldWithCondition, MDTLM_ZELK_CmpFieldWithThread),
};

/* The row of a sensor type; null for any other value. */
inline const SensorCalls *Of(uint32_t sensorType)
{
    return sensorType >= 1 && sensorType <= MDTLM_SENSOR_COUNT ? &kSensors[sensorType - 1] : nullptr;
}

} // namespace sensor_table

#endif /* MDTLM_TEST_SENSOR_CALLS_H */
