/*
 * Condition and filter maps of the flow and flow-hop sensors, their compare
 * callbacks, the derived values they share, and the sequence helpers.
 */
#include <cstring>
#include <functional>
#include <string>
#include <tuple>
#include <vector>

#include <gtest/gtest.h>

#include "flow_check.h"
#include "mdtlm_vraldcn.h"

using namespace flowtest;

namespace {

using MapRows = std::vector<std::pair<std::string, uint32_t>>;

template <std::size_t N>
MapRows Rows(const MDTLM_FILTER_MAP_ENTRY (&map)[N])
{
    MapRows rows;
    for (const MDTLM_FILTER_MAP_ENTRY &row : map) {
        rows.emplace_back(std::string(row.fieldName, strnlen(row.fieldName, sizeof(row.fieldName))), row.fieldId);
    }
    return rows;
}

MDTLM_PATH_FILTER Filter(uint8_t op, uint64_t threshold)
{
    MDTLM_PATH_FILTER f{};
    f.op = op;
    f.threshold = threshold;
    return f;
}

/* For every filter row: a record whose field holds `value` passes EQ value,
 * GT value - 1 and (for 32-bit fields, which see the threshold's low 32 bits)
 * EQ value + 2^32; it fails EQ value + 1 and LE value - 1. */
template <typename Rec, std::size_t N>
void CheckFilters(const MDTLM_FILTER_MAP_ENTRY (&map)[N], MDTLM_FILTER_CMP_FUNC cmp,
                  const std::vector<std::tuple<std::function<void(Rec &)>, uint64_t, bool>> &values)
{
    ASSERT_EQ(values.size(), N) << "one case per row, in map order";
    for (size_t i = 0; i < N; ++i) {
        const auto &[set, value, wide] = values[i];
        SCOPED_TRACE(map[i].fieldName);
        Rec rec{};
        set(rec);
        const struct {
            uint8_t op;
            uint64_t threshold;
            uint32_t verdict;
        } checks[] = {{MDTLM_FILTER_OP_EQ, value, 1},
                      {MDTLM_FILTER_OP_GT, value - 1, 1},
                      {MDTLM_FILTER_OP_EQ, value + kTwo32, wide ? 0u : 1u},
                      {MDTLM_FILTER_OP_EQ, value + 1, 0},
                      {MDTLM_FILTER_OP_LE, value - 1, 0}};
        for (const auto &c : checks) {
            const MDTLM_PATH_FILTER f = Filter(c.op, c.threshold);
            EXPECT_EQ(cmp(map[i].fieldId, &f, &rec), c.verdict) << int{c.op} << " " << c.threshold;
        }
    }
}

} // namespace

TEST(FlowMaps, NamesIdsAndOrder)
{
    const MapRows cond = {{"flow-id", 0}, {"direction", 1}};
    EXPECT_EQ(Rows(g_mdTlmFlowStatsCondMap), cond);
    EXPECT_EQ(Rows(g_femMdTlmFlowHopStatsCondMap), cond);
    EXPECT_EQ(Rows(g_mdTlmFlowStatsFilterMap),
              (MapRows{{"byte-count", 11}, {"error-info-ext", 7}, {"flow-id", 0}, {"if-index", 6},
                       {"packet-count", 10}, {"period-id", 9}, {"queue-pair", 14}, {"sequence-number", 15},
                       {"timestamp-nanosecond", 13}, {"timestamp-second", 12}, {"tunnel-id", 16},
                       {"tunnel-mode", 17}, {"vlan", 18}}));
    EXPECT_EQ(Rows(g_mdTlmFlowHopStatsFilterMap),
              (MapRows{{"byte-count", 12}, {"error-info-ext", 8}, {"flow-id", 0}, {"if-index", 6},
                       {"maximum-delay", 7}, {"packet-count", 11}, {"period-id", 10}, {"queue-pair", 17},
                       {"sequence-number", 18}, {"timestamp-nanosecond", 13}, {"timestamp-second", 14},
                       {"total-count", 15}, {"total-delay", 16}, {"tunnel-id", 19}, {"tunnel-mode", 20}}));
}

TEST(FlowDerived, TunnelModeByFlagAndType)
{
    struct Case {
        uint32_t flag, type, mode;
    };
    for (const Case &c : std::vector<Case>{{0, 1, 1}, {2, 2, 1}, {1, 1, 3}, {1, 2, 4}, {1, 7, 1}, {1, 0, 1}}) {
        EXPECT_EQ(MDTLM_VRALDCN_FLOW_GetTunnelMode(c.flag, c.type), c.mode) << c.flag << "/" << c.type;
    }
}

TEST(FlowConditions, BothSensorsTestFlowIdAndDirection)
{
    const MDTLM_FLOW_STATS_REC flow{.flowIdHigh = 4096, .direction = 2}; /* flow-id 2^32, direction 4 */
    const MDTLM_FLOWHOP_STATS_REC hop{.flowIdHigh = 4096, .direction = 2};
    struct Case {
        uint32_t id;
        const char *value;
        uint32_t holds;
    };
    for (const Case &c : std::vector<Case>{{0, "4294967296", 1}, {0, " 4294967296xyz", 1}, {0, "0", 0}, {0, "", 0},
                                           {1, "4", 1}, {1, "2", 0}, {1, "4294967300", 1} /* low 32 bits: 4 */,
                                           {1, "abc", 0}, {2, "0", 1}, {99, "x", 1}}) {
        MDTLM_PATH_CONDITION cond{};
        std::strcpy(cond.value, c.value);
        EXPECT_EQ(MDTLM_VRALDCN_FlowCmpFieldWithCondition(c.id, &cond, &flow), c.holds) << c.id << " " << c.value;
        EXPECT_EQ(MDTLM_VRALDCN_FlowHopCmpFieldWithInfo(c.id, &cond, &hop), c.holds) << c.id << " " << c.value;
    }
    /* A value filling its whole field is read only up to the field's end: the
     * "4" of the next condition must not extend "000...0" to 4. */
    MDTLM_PATH_CONDITION pair[2]{};
    std::memset(pair[0].value, '0', sizeof(pair[0].value));
    std::strcpy(pair[1].fieldName, "4");
    EXPECT_EQ(MDTLM_VRALDCN_FlowCmpFieldWithCondition(1, &pair[0], &flow), 0u);
}

TEST(FlowFilters, EveryFlowFilterReadsItsField)
{
    using R = MDTLM_FLOW_STATS_REC;
    CheckFilters<R>(g_mdTlmFlowStatsFilterMap, MDTLM_VRALDCN_FlowCmpFieldWithFilter,
                    {{[](R &r) { r.byteCount = kTwo32 + 11; }, kTwo32 + 11, true},
                     {[](R &r) { r.errorInfoExt = 0xFFFFFFF0; }, 0xFFFFFFF0, false},
                     {[](R &r) { r.flowIdHigh = 4096, r.flowIdLow = 3; }, kTwo32 + 3, true},
                     {[](R &r) { r.ifIndex = 600; }, 600, false},
                     {[](R &r) { r.packetCount = 3 * kTwo32; }, 3 * kTwo32, true},
                     {[](R &r) { r.periodId = 900; }, 900, false},
                     {[](R &r) { r.queuePair = 14; }, 14, false},
                     {[](R &r) { r.sequenceNumber = 15; }, 15, false},
                     {[](R &r) { r.timestampNanosecond = 13; }, 13, false},
                     {[](R &r) { r.timestampSecond = 12; }, 12, false},
                     {[](R &r) { r.tunnelId = 16; }, 16, false},
                     {[](R &r) { r.tunnelFlag = 1, r.tunnelType = 2; }, 4, false},
                     {[](R &r) { r.vlan = 65535; }, 65535, false}});
}

TEST(FlowFilters, EveryFlowHopFilterReadsItsField)
{
    using R = MDTLM_FLOWHOP_STATS_REC;
    CheckFilters<R>(g_mdTlmFlowHopStatsFilterMap, MDTLM_VRALDCN_FlowHopCmpFieldWithFilter,
                    {{[](R &r) { r.byteCount = kTwo32 + 12; }, kTwo32 + 12, true},
                     {[](R &r) { r.errorInfoExt = 8; }, 8, false},
                     {[](R &r) { r.flowIdHigh = 8192; }, 2 * kTwo32, true},
                     {[](R &r) { r.ifIndex = 6; }, 6, false},
                     {[](R &r) { r.maximumDelay = 16777217; }, 16777217, false}, /* raw, not scaled */
                     {[](R &r) { r.packetCount = kTwo32 + 1; }, kTwo32 + 1, true},
                     {[](R &r) { r.periodId = 10; }, 10, false},
                     {[](R &r) { r.queuePair = 17; }, 17, false},
                     {[](R &r) { r.sequenceNumber = 18; }, 18, false},
                     {[](R &r) { r.timestampNanosecond = 13; }, 13, false},
                     {[](R &r) { r.timestampSecond = 14; }, 14, false},
                     {[](R &r) { r.totalCount = kTwo32 + 5; }, kTwo32 + 5, true},
                     {[](R &r) { r.totalDelay = 3; }, 3, true}, /* raw: EQ 3 holds, EQ 768 does not */
                     {[](R &r) { r.tunnelId = 19; }, 19, false},
                     {[](R &r) { r.tunnelFlag = 1, r.tunnelType = 1; }, 3, false}});
}

TEST(FlowFilters, IdsWithoutAFieldHoldAndUnknownOperatorsFail)
{
    const MDTLM_FLOW_STATS_REC flow{};
    const MDTLM_FLOWHOP_STATS_REC hop{};
    const MDTLM_PATH_FILTER never = Filter(MDTLM_FILTER_OP_LT, 0);
    for (uint32_t id : {1u, 2u, 3u, 4u, 5u, 8u, 19u, 20u, 1000u}) {
        EXPECT_EQ(MDTLM_VRALDCN_FlowCmpFieldWithFilter(id, &never, &flow), 1u) << id;
    }
    for (uint32_t id : {1u, 2u, 3u, 4u, 5u, 9u, 21u, 1000u}) {
        EXPECT_EQ(MDTLM_VRALDCN_FlowHopCmpFieldWithFilter(id, &never, &hop), 1u) << id;
    }
    const MDTLM_PATH_FILTER bad = Filter(5, 0);
    EXPECT_EQ(MDTLM_VRALDCN_FlowCmpFieldWithFilter(18, &bad, &flow), 0u);
}

TEST(FlowSequence, TaskCounterByCastType)
{
    using Get = uint32_t (*)(uint32_t, const MDTLM_TASK_DATA *);
    using Add = void (*)(uint32_t, MDTLM_TASK_DATA *);
    for (const auto &[get, add] : std::vector<std::pair<Get, Add>>{
             {MDTLM_VRALDCN_FLOW_GetSequenceNumber, MDTLM_VRALDCN_FLOW_AddSequenceNumber},
             {MDTLM_VRALDCN_FLOWHOP_GetSequenceNumber, MDTLM_VRALDCN_FLOWHOP_AddSequenceNumber}}) {
        MDTLM_TASK_DATA task{};
        task.unicastSeqNum = 10;
        task.multicastSeqNum = 20;
        EXPECT_EQ(std::make_tuple(get(1, &task), get(2, &task), get(0, &task)), std::make_tuple(10u, 20u, 20u));
        for (uint32_t cast : {1u, 2u, 3u}) {
            add(cast, &task);
        }
        EXPECT_EQ(std::tie(task.unicastSeqNum, task.multicastSeqNum), std::make_tuple(11u, 22u));
    }
}

TEST(FlowSequence, ShortBodiesAreRefusedUntouched)
{
    for (MDTLM_STATS_MSG_PROC_FUNC handler :
         {MDTLM_VRALDCN_FLOW_STATS_StatsMsgProc, MDTLM_VRALDCN_FLOWHOP_STATS_StatsMsgProc}) {
        alignas(8) uint8_t raw[8 + 264] = {};
        auto *msg = reinterpret_cast<MDTLM_STATS_MSG *>(raw);
        msg->msgLen = 263;
        std::memset(msg->body + 56, 0x77, 4);
        MDTLM_TASK_DATA task{};
        EXPECT_EQ(handler(&task, msg), 0u);
        EXPECT_EQ(task.unicastSeqNum + task.multicastSeqNum, 0u);
        EXPECT_EQ(msg->body[56], 0x77) << "sequence stamped into a refused message";
    }
}
