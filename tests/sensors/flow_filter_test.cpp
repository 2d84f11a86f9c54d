/*
 * Condition and filter maps of the flow and flow-hop sensors, their compare
 * callbacks, the derived values they share, and the sequence helpers.
 */
#include <cstring>
#include <functional>
#include <tuple>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "flow_records.h"
#include "mdtlm_vraldcn.h"

using namespace flowtest;

namespace {

using MapRows = std::vector<std::pair<std::string, uint32_t>>;

template <std::size_t N>
MapRows Rows(const MDTLM_FILTER_MAP_ENTRY (&map)[N])
{
    MapRows rows;
    for (const MDTLM_FILTER_MAP_ENTRY &row : map) {
        EXPECT_LT(strnlen(row.fieldName, sizeof(row.fieldName)), sizeof(row.fieldName));
        rows.emplace_back(row.fieldName, row.fieldId);
    }
    return rows;
}

template <std::size_t N>
uint32_t IdOf(const MDTLM_FILTER_MAP_ENTRY (&map)[N], const std::string &name)
{
    for (const MDTLM_FILTER_MAP_ENTRY &row : map) {
        if (name == row.fieldName) {
            return row.fieldId;
        }
    }
    ADD_FAILURE() << "no row " << name;
    return UINT32_MAX;
}

MDTLM_PATH_CONDITION Cond(const std::string &value)
{
    MDTLM_PATH_CONDITION c{};
    SetText(c.value, value);
    return c;
}

MDTLM_PATH_FILTER Filter(uint8_t op, uint64_t threshold)
{
    MDTLM_PATH_FILTER f{};
    f.op = op;
    f.threshold = threshold;
    return f;
}

} // namespace

TEST(FlowMaps, NamesIdsAndOrder)
{
    EXPECT_EQ(Rows(g_mdTlmFlowStatsCondMap), (MapRows{{"flow-id", 0}, {"direction", 1}}));
    EXPECT_EQ(Rows(g_femMdTlmFlowHopStatsCondMap), (MapRows{{"flow-id", 0}, {"direction", 1}}));
    EXPECT_EQ(Rows(g_mdTlmFlowStatsFilterMap),
              (MapRows{{"byte-count", 11},
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
                       {"vlan", 18}}));
    EXPECT_EQ(Rows(g_mdTlmFlowHopStatsFilterMap),
              (MapRows{{"byte-count", 12},
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
                       {"tunnel-mode", 20}}));
}

TEST(FlowDerived, TunnelMode)
{
    struct Case {
        uint32_t flag, type, mode;
    };
    for (const Case &c : std::vector<Case>{{0, 1, 1}, {0, 2, 1}, {2, 1, 1}, {1, 1, 3}, {1, 2, 4}, {1, 7, 1}, {1, 0, 1}}) {
        EXPECT_EQ(MDTLM_VRALDCN_FLOW_GetTunnelMode(c.flag, c.type), c.mode) << c.flag << "/" << c.type;
    }
}

TEST(FlowDerived, FlowInfoAndPacketInfo)
{
    struct Case {
        uint32_t high, low;
        uint8_t directionCode, family, errorInfo;
        uint32_t errorInfoExt;
        uint64_t flowId;
        uint32_t direction, addressFamily;
    };
    const std::vector<Case> cases = {
        {4096, 0, 1, 1, 0, 0, kTwo32, 1, 0},
        {1, 0x100000, 2, 2, 255, 0xFFFFFFFF, 0x100000, 4, 1}, /* parts are ORed, not added */
        {0xFFFFFFFF, 0xFFFFFFFF, 0, 3, 7, 9, 0xFFFFFFFFFFFFFull, 4, 1},
    };
    for (const Case &c : cases) {
        MDTLM_FLOW_STATS_REC r{};
        r.flowIdHigh = c.high;
        r.flowIdLow = c.low;
        r.direction = c.directionCode;
        r.addressFamily = c.family;
        r.errorInfo = c.errorInfo;
        r.errorInfoExt = c.errorInfoExt;
        r.tunnelFlag = 1;
        r.tunnelType = 1;
        uint64_t flowId = 0;
        uint32_t direction = 0, family = 0, mode = 0, err = 0, errExt = 0;
        MDTLM_VRALDCN_FLOW_JSON_GenFlowInfo(&r, &flowId, &direction);
        MDTLM_VRALDCN_FLOW_JSON_GenPacketInfo(&r, &family, &mode, &err, &errExt);
        EXPECT_EQ(flowId, c.flowId);
        EXPECT_EQ(direction, c.direction);
        EXPECT_EQ(family, c.addressFamily);
        EXPECT_EQ(mode, 3u);
        EXPECT_EQ(err, c.errorInfo);
        EXPECT_EQ(errExt, c.errorInfoExt);
    }
}

TEST(FlowConditions, BothSensorsTestFlowIdAndDirection)
{
    MDTLM_FLOW_STATS_REC flow{};
    flow.flowIdHigh = 4096; /* flow-id 2^32 */
    flow.direction = 2;     /* reported and compared as 4 */
    MDTLM_FLOWHOP_STATS_REC hop{};
    hop.flowIdHigh = 4096;
    hop.direction = 2;
    struct Case {
        uint32_t id;
        const char *value;
        uint32_t holds;
    };
    const std::vector<Case> cases = {
        {0, "4294967296", 1}, {0, "0", 0},   {0, " 4294967296xyz", 1}, /* leading blanks, trailing letters */
        {0, "", 0},           {1, "4", 1},   {1, "2", 0},
        {1, "4294967300", 1}, /* low 32 bits: 4 */
        {1, "abc", 0},        {2, "0", 1},   {99, "junk", 1}, /* ids without a test hold */
    };
    for (const Case &c : cases) {
        const MDTLM_PATH_CONDITION cond = Cond(c.value);
        EXPECT_EQ(MDTLM_VRALDCN_FlowCmpFieldWithCondition(c.id, &cond, &flow), c.holds) << c.id << " " << c.value;
        EXPECT_EQ(MDTLM_VRALDCN_FlowHopCmpFieldWithInfo(c.id, &cond, &hop), c.holds) << c.id << " " << c.value;
    }
    /* A value filling its whole field without a terminator is read up to the field's end. */
    MDTLM_PATH_CONDITION full[2]{};
    std::memset(full[0].value, '0', sizeof(full[0].value));
    std::memcpy(full[1].fieldName, "4", 2);
    EXPECT_EQ(MDTLM_VRALDCN_FlowCmpFieldWithCondition(1, &full[0], &flow), 0u);
}

/* For every filter name: a record whose field holds `value` passes EQ value
 * and fails EQ value + 1; a 32-bit field compares the threshold's low 32 bits. */
template <typename Rec, std::size_t N>
void CheckFilterFields(const MDTLM_FILTER_MAP_ENTRY (&map)[N],
                       uint32_t (*cmp)(uint32_t, const MDTLM_PATH_FILTER *, const void *),
                       const std::vector<std::tuple<std::string, std::function<void(Rec &)>, uint64_t, bool>> &cases)
{
    ASSERT_EQ(cases.size(), N) << "every filter row has a case";
    for (const auto &[name, set, value, wide] : cases) {
        SCOPED_TRACE(name);
        Rec rec{};
        set(rec);
        const uint32_t id = IdOf(map, name);
        const MDTLM_PATH_FILTER eq = Filter(MDTLM_FILTER_OP_EQ, value);
        const MDTLM_PATH_FILTER off = Filter(MDTLM_FILTER_OP_EQ, value + 1);
        const MDTLM_PATH_FILTER high = Filter(MDTLM_FILTER_OP_EQ, value + kTwo32);
        const MDTLM_PATH_FILTER gt = Filter(MDTLM_FILTER_OP_GT, value - 1);
        const MDTLM_PATH_FILTER le = Filter(MDTLM_FILTER_OP_LE, value - 1);
        EXPECT_EQ(cmp(id, &eq, &rec), 1u);
        EXPECT_EQ(cmp(id, &off, &rec), 0u);
        EXPECT_EQ(cmp(id, &high, &rec), wide ? 0u : 1u);
        EXPECT_EQ(cmp(id, &gt, &rec), 1u);
        EXPECT_EQ(cmp(id, &le, &rec), 0u);
    }
}

TEST(FlowFilters, EveryFilterReadsItsField)
{
    using R = MDTLM_FLOW_STATS_REC;
    CheckFilterFields<R>(g_mdTlmFlowStatsFilterMap, MDTLM_VRALDCN_FlowCmpFieldWithFilter,
                         {
                             {"byte-count", [](R &r) { r.byteCount = kTwo32 + 11; }, kTwo32 + 11, true},
                             {"error-info-ext", [](R &r) { r.errorInfoExt = 0xFFFFFFF0; }, 0xFFFFFFF0, false},
                             {"flow-id", [](R &r) { r.flowIdHigh = 4096; r.flowIdLow = 3; }, kTwo32 + 3, true},
                             {"if-index", [](R &r) { r.ifIndex = 600; }, 600, false},
                             {"packet-count", [](R &r) { r.packetCount = kTwo32 * 3; }, kTwo32 * 3, true},
                             {"period-id", [](R &r) { r.periodId = 900; }, 900, false},
                             {"queue-pair", [](R &r) { r.queuePair = 14; }, 14, false},
                             {"sequence-number", [](R &r) { r.sequenceNumber = 15; }, 15, false},
                             {"timestamp-nanosecond", [](R &r) { r.timestampNanosecond = 13; }, 13, false},
                             {"timestamp-second", [](R &r) { r.timestampSecond = 12; }, 12, false},
                             {"tunnel-id", [](R &r) { r.tunnelId = 16; }, 16, false},
                             {"tunnel-mode", [](R &r) { r.tunnelFlag = 1; r.tunnelType = 2; }, 4, false},
                             {"vlan", [](R &r) { r.vlan = 65535; }, 65535, false},
                         });
}

TEST(FlowFilters, EveryFlowHopFilterReadsItsField)
{
    using R = MDTLM_FLOWHOP_STATS_REC;
    CheckFilterFields<R>(g_mdTlmFlowHopStatsFilterMap, MDTLM_VRALDCN_FlowHopCmpFieldWithFilter,
                         {
                             {"byte-count", [](R &r) { r.byteCount = kTwo32 + 12; }, kTwo32 + 12, true},
                             {"error-info-ext", [](R &r) { r.errorInfoExt = 8; }, 8, false},
                             {"flow-id", [](R &r) { r.flowIdHigh = 8192; }, 2 * kTwo32, true},
                             {"if-index", [](R &r) { r.ifIndex = 6; }, 6, false},
                             /* delays are compared raw, not scaled */
                             {"maximum-delay", [](R &r) { r.maximumDelay = 16777217; }, 16777217, false},
                             {"packet-count", [](R &r) { r.packetCount = kTwo32 + 1; }, kTwo32 + 1, true},
                             {"period-id", [](R &r) { r.periodId = 10; }, 10, false},
                             {"queue-pair", [](R &r) { r.queuePair = 17; }, 17, false},
                             {"sequence-number", [](R &r) { r.sequenceNumber = 18; }, 18, false},
                             {"timestamp-nanosecond", [](R &r) { r.timestampNanosecond = 13; }, 13, false},
                             {"timestamp-second", [](R &r) { r.timestampSecond = 14; }, 14, false},
                             {"total-count", [](R &r) { r.totalCount = kTwo32 + 5; }, kTwo32 + 5, true},
                             {"total-delay", [](R &r) { r.totalDelay = 3; }, 3, true},
                             {"tunnel-id", [](R &r) { r.tunnelId = 19; }, 19, false},
                             {"tunnel-mode", [](R &r) { r.tunnelFlag = 1; r.tunnelType = 1; }, 3, false},
                         });
}

TEST(FlowFilters, IdsWithoutAFieldHold)
{
    MDTLM_FLOW_STATS_REC flow{};
    MDTLM_FLOWHOP_STATS_REC hop{};
    const MDTLM_PATH_FILTER never = Filter(MDTLM_FILTER_OP_LT, 0);
    for (uint32_t id : {1u, 2u, 3u, 4u, 5u, 8u, 19u, 20u, 1000u}) {
        EXPECT_EQ(MDTLM_VRALDCN_FlowCmpFieldWithFilter(id, &never, &flow), 1u) << id;
    }
    for (uint32_t id : {1u, 2u, 3u, 4u, 5u, 9u, 21u, 1000u}) {
        EXPECT_EQ(MDTLM_VRALDCN_FlowHopCmpFieldWithFilter(id, &never, &hop), 1u) << id;
    }
    /* An operator beyond the five never holds. */
    const MDTLM_PATH_FILTER bad = Filter(5, 0);
    EXPECT_EQ(MDTLM_VRALDCN_FlowCmpFieldWithFilter(IdOf(g_mdTlmFlowStatsFilterMap, "vlan"), &bad, &flow), 0u);
}

TEST(FlowFilters, DelayThresholdsCompareRawValues)
{
    const MDTLM_FLOWHOP_STATS_REC hop = FlowHopRecord(); /* raw 16777217 and 3 */
    const MDTLM_PATH_FILTER gt1 = Filter(MDTLM_FILTER_OP_GT, 1);
    const MDTLM_PATH_FILTER eq3 = Filter(MDTLM_FILTER_OP_EQ, 3);
    const MDTLM_PATH_FILTER eq768 = Filter(MDTLM_FILTER_OP_EQ, 768);
    const uint32_t maxId = IdOf(g_mdTlmFlowHopStatsFilterMap, "maximum-delay");
    const uint32_t totalId = IdOf(g_mdTlmFlowHopStatsFilterMap, "total-delay");
    EXPECT_EQ(MDTLM_VRALDCN_FlowHopCmpFieldWithFilter(maxId, &gt1, &hop), 1u);
    EXPECT_EQ(MDTLM_VRALDCN_FlowHopCmpFieldWithFilter(totalId, &eq3, &hop), 1u);
    EXPECT_EQ(MDTLM_VRALDCN_FlowHopCmpFieldWithFilter(totalId, &eq768, &hop), 0u);
}

TEST(FlowSequence, CounterByCastType)
{
    using Get = uint32_t (*)(uint32_t, const MDTLM_TASK_DATA *);
    using Add = void (*)(uint32_t, MDTLM_TASK_DATA *);
    const std::vector<std::pair<Get, Add>> sensors = {
        {MDTLM_VRALDCN_FLOW_GetSequenceNumber, MDTLM_VRALDCN_FLOW_AddSequenceNumber},
        {MDTLM_VRALDCN_FLOWHOP_GetSequenceNumber, MDTLM_VRALDCN_FLOWHOP_AddSequenceNumber},
    };
    for (const auto &[get, add] : sensors) {
        MDTLM_TASK_DATA task{};
        task.unicastSeqNum = 10;
        task.multicastSeqNum = 20;
        EXPECT_EQ(get(1, &task), 10u);
        EXPECT_EQ(get(2, &task), 20u);
        EXPECT_EQ(get(0, &task), 20u);
        add(1, &task);
        add(2, &task);
        add(3, &task);
        EXPECT_EQ(task.unicastSeqNum, 11u);
        EXPECT_EQ(task.multicastSeqNum, 22u);
    }
    const uint32_t unicast0 = g_unicastJsonSequenceNumber;
    const uint32_t multicast0 = g_multicastJsonSequenceNumber;
    MDTLM_VRALDCN_FLOW_JSON_AddSequenceNumber(1);
    MDTLM_VRALDCN_FLOW_JSON_AddSequenceNumber(2);
    MDTLM_VRALDCN_FLOW_JSON_AddSequenceNumber(0);
    EXPECT_EQ(g_unicastJsonSequenceNumber - unicast0, 1u);
    EXPECT_EQ(g_multicastJsonSequenceNumber - multicast0, 2u);
}

TEST(FlowHandlers, ShortBodiesAreRefusedUntouched)
{
    using Handler = uint32_t (*)(MDTLM_TASK_DATA *, MDTLM_STATS_MSG *);
    for (Handler handler : {MDTLM_VRALDCN_FLOW_STATS_StatsMsgProc, MDTLM_VRALDCN_FLOWHOP_STATS_StatsMsgProc}) {
        alignas(8) uint8_t raw[8 + 264] = {};
        auto *msg = reinterpret_cast<MDTLM_STATS_MSG *>(raw);
        msg->msgLen = 263;
        std::memset(msg->body + 56, 0x77, 4);
        MDTLM_TASK_DATA task{};
        task.unicastSeqNum = 5;
        EXPECT_EQ(handler(&task, msg), 0u);
        EXPECT_EQ(task.unicastSeqNum, 5u);
        EXPECT_EQ(task.multicastSeqNum, 0u);
        EXPECT_EQ(msg->body[56], 0x77) << "sequence stamped into a refused message";
    }
}
