/*
 * The flow-hop statistics sensor's record handling: its condition and filter
 * maps with their compare callbacks, its per-task sequence numbers, and the
 * handler that runs each record through the shared record pipeline.
 */
#include "flow_family.h"
#include "sensor_table_pipeline.h"

namespace {

using Rec = MDTLM_FLOWHOP_STATS_REC;

/* Values the filter ids of this sensor test; ids without a row hold. The
 * delays are compared raw, as the forwarding side measured them. */
const MDTLM_FLOW_FILTER_FIELD<Rec> kFilterFields[] = {
    {0, true, [](const Rec *r) -> uint64_t { return MDTLM_FlowDerive(r).flowId; }},
    {6, false, [](const Rec *r) -> uint64_t { return r->ifIndex; }},
    {7, false, [](const Rec *r) -> uint64_t { return r->maximumDelay; }},
    {8, false, [](const Rec *r) -> uint64_t { return r->errorInfoExt; }},
    {10, false, [](const Rec *r) -> uint64_t { return r->periodId; }},
    {11, true, [](const Rec *r) -> uint64_t { return r->packetCount; }},
    {12, true, [](const Rec *r) -> uint64_t { return r->byteCount; }},
    {13, false, [](const Rec *r) -> uint64_t { return r->timestampNanosecond; }},
    {14, false, [](const Rec *r) -> uint64_t { return r->timestampSecond; }},
    {15, true, [](const Rec *r) -> uint64_t { return r->totalCount; }},
    {16, true, [](const Rec *r) -> uint64_t { return r->totalDelay; }},
    {17, false, [](const Rec *r) -> uint64_t { return r->queuePair; }},
    {18, false, [](const Rec *r) -> uint64_t { return r->sequenceNumber; }},
    {19, false, [](const Rec *r) -> uint64_t { return r->tunnelId; }},
    {20, false, [](const Rec *r) -> uint64_t { return MDTLM_FlowDerive(r).tunnelMode; }},
};

} // namespace

extern "C" {

const MDTLM_FILTER_MAP_ENTRY g_femMdTlmFlowHopStatsCondMap[2] = {
    {"flow-id", 0},
    {"direction", 1},
};

const MDTLM_FILTER_MAP_ENTRY g_mdTlmFlowHopStatsFilterMap[15] = {
    {"byte-count", 12},
    {"error-info-ext", 8},
    {"flow-id", 0},
    {"if-index", 6},
    {"maximum-delay", 7},
    {"packet-count", 11},
    {"period-id", 10},
    {"queue-pair", 17},
    {"sequence-number", 18},
    {"timestamp-nanosecond", 13},
    {"timestamp-second", 14},
    {"total-count", 15},
    {"total-delay", 16},
    {"tunnel-id", 19},
    {"tunnel-mode", 20},
};

uint32_t MDTLM_VRALDCN_FlowHopCmpFieldWithInfo(uint32_t fieldId, const MDTLM_PATH_CONDITION *cond,
                                               const void *record)
{
    return MDTLM_FlowCompareCondition(fieldId, cond, record);
}

uint32_t MDTLM_VRALDCN_FlowHopCmpFieldWithFilter(uint32_t fieldId, const MDTLM_PATH_FILTER *filter,
                                                 const void *record)
{
    return MDTLM_FlowCompareFilter(kFilterFields, fieldId, filter, record);
}

uint32_t MDTLM_VRALDCN_FLOWHOP_GetSequenceNumber(uint32_t castType, const MDTLM_TASK_DATA *task)
{
    return MDTLM_FlowGetSequence(castType, task);
}

void MDTLM_VRALDCN_FLOWHOP_AddSequenceNumber(uint32_t castType, MDTLM_TASK_DATA *task)
{
    MDTLM_FlowAddSequence(castType, task);
}

} /* extern "C" */

namespace {

/* This sensor counts by period id and names its own handler in the
 * encode-failure line. */
const MDTLM_SENSOR_PIPELINE kFlowHopPipeline =
    MDTLM_TablePipeline<Rec, MDTLM_VRALDCN_FLOWHOP_GPB_EncodeMsg, MDTLM_VRALDCN_FLOWHOP_JSON_EncodeMsg>(
        MDTLM_SENSOR_VRAL_FLOWHOP, g_femMdTlmFlowHopStatsCondMap, MDTLM_VRALDCN_FlowHopCmpFieldWithInfo,
        g_mdTlmFlowHopStatsFilterMap, MDTLM_VRALDCN_FlowHopCmpFieldWithFilter, MDTLM_LOG_LINE_OF_CALL,
        "[%s:%d][FLOWHOP_STATS_EncodeStatsData] Stats data encode failed, ret: %d.", MDTLM_FLOW_STAMPS_SEQUENCE,
        offsetof(Rec, periodId), sizeof(Rec));

} // namespace

extern "C" {

uint32_t MDTLM_VRALDCN_FLOWHOP_STATS_StatsMsgProc(MDTLM_TASK_DATA *task, MDTLM_STATS_MSG *msg)
{
    return MDTLM_FlowPipelineProc<Rec>(kFlowHopPipeline, task, msg);
}

void MDTLM_VRALDCN_FLOWHOP_STATS_EncodeStatsData(const Rec *rec, MDTLM_TASK_DATA *task)
{
    MDTLM_TablePipelineEncode(kFlowHopPipeline, rec, task);
}

} /* extern "C" */
