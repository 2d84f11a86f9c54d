/*
 * The flow statistics sensor's record handling: its condition and filter
 * maps with their compare callbacks, its per-task sequence numbers, and the
 * handler that runs each record through the shared record pipeline.
 */
#include "flow_family.h"
#include "sensor_table_pipeline.h"

namespace {

using Rec = MDTLM_FLOW_STATS_REC;

/* Values the filter ids of this sensor test; ids without a row hold. */
const MDTLM_FLOW_FILTER_FIELD<Rec> kFilterFields[] = {
    {0, true, [](const Rec *r) -> uint64_t { return MDTLM_FlowDerive(r).flowId; }},
    {6, false, [](const Rec *r) -> uint64_t { return r->ifIndex; }},
    {7, false, [](const Rec *r) -> uint64_t { return r->errorInfoExt; }},
    {9, false, [](const Rec *r) -> uint64_t { return r->periodId; }},
    {10, true, [](const Rec *r) -> uint64_t { return r->packetCount; }},
    {11, true, [](const Rec *r) -> uint64_t { return r->byteCount; }},
    {12, false, [](const Rec *r) -> uint64_t { return r->timestampSecond; }},
    {13, false, [](const Rec *r) -> uint64_t { return r->timestampNanosecond; }},
    {14, false, [](const Rec *r) -> uint64_t { return r->queuePair; }},
    {15, false, [](const Rec *r) -> uint64_t { return r->sequenceNumber; }},
    {16, false, [](const Rec *r) -> uint64_t { return r->tunnelId; }},
    {17, false, [](const Rec *r) -> uint64_t { return MDTLM_FlowDerive(r).tunnelMode; }},
    {18, false, [](const Rec *r) -> uint64_t { return r->vlan; }},
};

} // namespace

extern "C" {

const MDTLM_FILTER_MAP_ENTRY g_mdTlmFlowStatsCondMap[2] = {
    {"flow-id", 0},
    {"direction", 1},
};

const MDTLM_FILTER_MAP_ENTRY g_mdTlmFlowStatsFilterMap[13] = {
    {"byte-count", 11},
    {"error-info-ext", 7},
    {"flow-id", 0},
    {"if-index", 6},
    {"packet-count", 10},
    {"period-id", 9},
    {"queue-pair", 14},
    {"sequence-number", 15},
    {"timestamp-nanosecond", 13},
    {"timestamp-second", 12},
    {"tunnel-id", 16},
    {"tunnel-mode", 17},
    {"vlan", 18},
};

uint32_t MDTLM_VRALDCN_FlowCmpFieldWithCondition(uint32_t fieldId, const MDTLM_PATH_CONDITION *cond,
                                                 const void *record)
{
    return MDTLM_FlowCompareCondition(fieldId, cond, record);
}

uint32_t MDTLM_VRALDCN_FlowCmpFieldWithFilter(uint32_t fieldId, const MDTLM_PATH_FILTER *filter, const void *record)
{
    return MDTLM_FlowCompareFilter(kFilterFields, fieldId, filter, record);
}

uint32_t MDTLM_VRALDCN_FLOW_GetSequenceNumber(uint32_t castType, const MDTLM_TASK_DATA *task)
{
    return MDTLM_FlowGetSequence(castType, task);
}

void MDTLM_VRALDCN_FLOW_AddSequenceNumber(uint32_t castType, MDTLM_TASK_DATA *task)
{
    MDTLM_FlowAddSequence(castType, task);
}

} /* extern "C" */

namespace {

const MDTLM_SENSOR_PIPELINE kFlowPipeline =
    MDTLM_TablePipeline<Rec, MDTLM_VRALDCN_FLOW_GPB_EncodeMsg, MDTLM_VRALDCN_FLOW_JSON_EncodeMsg>(
        MDTLM_SENSOR_VRAL_FLOW, g_mdTlmFlowStatsCondMap, MDTLM_VRALDCN_FlowCmpFieldWithCondition,
        g_mdTlmFlowStatsFilterMap, MDTLM_VRALDCN_FlowCmpFieldWithFilter, MDTLM_LOG_LINE_OF_CALL,
        MDTLM_SENSOR_ENCODE_FAIL_FORMAT, MDTLM_FLOW_STAMPS_SEQUENCE, offsetof(Rec, reportPeriodIndex), sizeof(Rec));

} // namespace

extern "C" {

uint32_t MDTLM_VRALDCN_FLOW_STATS_StatsMsgProc(MDTLM_TASK_DATA *task, MDTLM_STATS_MSG *msg)
{
    return MDTLM_FlowPipelineProc<Rec>(kFlowPipeline, task, msg);
}

void MDTLM_VRALDCN_FLOW_STATS_EncodeStatsData(const Rec *rec, MDTLM_TASK_DATA *task)
{
    MDTLM_TablePipelineEncode(kFlowPipeline, rec, task);
}

} /* extern "C" */
