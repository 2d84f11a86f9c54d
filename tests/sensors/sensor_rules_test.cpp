/*
 * Which records a task takes: conditions and filters of the six sensors as
 * one truth table, records with an unknown address family, and values that
 * have no text in the JSON encoding.
 */
#include "sensor_records.h"

namespace sensor_test {
namespace {

template <typename Rec, typename Change>
std::vector<uint8_t> With(Rec r, Change change)
{
    change(r);
    return Bytes(r);
}

using B = PathInfoBuilder;
constexpr uint8_t EQ = MDTLM_FILTER_OP_EQ, GT = MDTLM_FILTER_OP_GT, GE = MDTLM_FILTER_OP_GE,
                  LT = MDTLM_FILTER_OP_LT, LE = MDTLM_FILTER_OP_LE;

TEST_F(SensorTest, ConditionsAndFiltersDecide)
{
    struct Case {
        const char *what;
        uint32_t type;
        std::vector<uint8_t> rec;
        PathInfoBuilder info;
        uint32_t passed;
    };
    const uint32_t kFlow = MDTLM_SENSOR_VRAL_FLOW, kHop = MDTLM_SENSOR_VRAL_FLOWHOP, kCache = MDTLM_SENSOR_ZELK_CACHE,
                   kQuma = MDTLM_SENSOR_QUMA_RESULT, kSrv = MDTLM_SENSOR_SRVTLM_FLOW,
                   kFct = MDTLM_SENSOR_SRVTLM_FCTFLOW;
    const auto flow = Bytes(FlowRecord()), hop = Bytes(FlowHopRecord()), zelk = Bytes(kZelk[0].rec),
               quma = Bytes(kQumaFull), srv4 = Bytes(SrvtlmRecord(0, 1)), srv6 = Bytes(SrvtlmRecord(1, 1)),
               fct = Bytes(FctRecord(0, 1));
    const uint64_t flowId = FlowIdOf(FlowRecord());
    const auto zelkState = [](uint32_t state) { return With(kZelk[0].rec, [&](auto &r) { r.state = state; }); };
    const auto qumaOut = [](uint64_t out) { return With(kQumaFull, [&](auto &r) { r.outputPackets = out; }); };
    const auto fetMax = [](uint64_t v) { return With(FctRecord(0, 1), [&](auto &r) { r.fetMax = v; }); };
    const auto srvFamily2 = With(SrvtlmRecord(0, 1), [](auto &r) { r.addressFamily = 2; });
    const Case cases[] = {
        /* 64-bit fields compare at full width, 32-bit ones against the threshold's low 32 bits */
        {"flow byte-count at full width", kFlow, flow, B().Filter("byte-count", EQ, (1ull << 50) + 7), 1},
        {"flow byte-count not by its low bits", kFlow, flow, B().Filter("byte-count", EQ, 7), 0},
        {"flow flow-id at full width", kFlow, flow, B().Filter("flow-id", EQ, flowId), 1},
        {"flow flow-id not by its low bits", kFlow, flow, B().Filter("flow-id", EQ, flowId & 0xFFFFFFFF), 0},
        {"flow if-index by the threshold's low bits", kFlow, flow, B().Filter("if-index", EQ, kTwo32 + 33), 1},
        {"flow stamped sequence number", kFlow, flow, B().Filter("sequence-number", EQ, 0), 1},
        {"flow delivered sequence number", kFlow, flow, B().Filter("sequence-number", EQ, 0xDEADBEEF), 0},
        {"flow timestamps (AND)", kFlow, flow,
         B().Filter("timestamp-second", EQ, 1700000000)
             .Filter("timestamp-nanosecond", GT, 999999998)
             .Logic(MDTLM_FILTER_LOGIC_AND),
         1},
        {"flow tunnel-id or vlan (one holds)", kFlow, flow,
         B().Filter("vlan", LT, 4094).Filter("tunnel-id", EQ, 70001), 1},
        {"flow tunnel-mode", kFlow, flow, B().Filter("tunnel-mode", EQ, 4), 1},
        {"flow unknown operator", kFlow, flow, B().Filter("vlan", 5, 0), 0},
        {"flow flow-id condition", kFlow, flow, B().Condition("flow-id", std::to_string(flowId)), 1},
        {"flow flow-id leading blank, trailing text", kFlow, flow,
         B().Condition("flow-id", " " + std::to_string(flowId) + "xyz"), 1},
        {"flow direction as reported", kFlow, flow, B().Condition("direction", "4"), 1},
        {"flow direction raw", kFlow, flow, B().Condition("direction", "2"), 0},
        {"flow direction by low 32 bits", kFlow, flow, B().Condition("direction", "4294967300"), 1},
        {"flow direction not a number", kFlow, flow, B().Condition("direction", "abc"), 0},
        {"hop total-count at full width", kHop, hop, B().Filter("total-count", EQ, kTwo32 + 5), 1},
        {"hop total-count not by its low bits", kHop, hop, B().Filter("total-count", EQ, 5), 0},
        {"hop total-delay raw", kHop, hop, B().Filter("total-delay", EQ, 3), 1},
        {"hop total-delay not as reported", kHop, hop, B().Filter("total-delay", EQ, 768), 0},
        {"hop maximum-delay raw", kHop, hop, B().Filter("maximum-delay", EQ, 16777217), 1},
        {"hop if-index by the threshold's low bits", kHop, hop, B().Filter("if-index", EQ, kTwo32 + 44), 1},
        {"hop direction", kHop, hop, B().Condition("direction", "1"), 1},
        {"zelk source address text", kCache, zelk, B().Condition("source-ip", "10.0.0.1"), 1},
        {"zelk leading zero octet", kCache, zelk, B().Condition("source-ip", "10.0.0.01"), 0},
        {"zelk destination address", kCache, zelk, B().Condition("destination-ip", "192.168.10.1"), 1},
        {"zelk protocol matches any value", kCache, zelk, B().Condition("protocol-id", "99"), 1},
        {"zelk port and slot", kCache, zelk, B().Condition("l4-source-port", "443").Condition("slot-id", "3"), 1},
        {"zelk port differs", kCache, zelk, B().Condition("l4-destination-port", "51001"), 0},
        {"zelk seed is no condition field", kCache, zelk, B().Condition("seed", "12345"), 1},
        {"zelk slot-id is no filter field", kCache, zelk, B().Filter("slot-id", EQ, 3), 0},
        {"zelk state above 1 (disable)", kCache, zelkState(3), B().Filter("state", GT, 1), 1},
        {"zelk state above 1 (failed)", kCache, zelkState(1), B().Filter("state", GT, 1), 0},
        {"zelk seed by the threshold's low bits", kCache, zelk, B().Filter("seed", EQ, 0x1FFFFFFFFull), 1},
        {"quma input above 2^32-1", kQuma, quma, B().Filter("input-packets", GT, kTwo32 - 1), 1},
        {"quma input not above itself", kQuma, quma, B().Filter("input-packets", GT, kTwo32 + 5), 0},
        {"quma output 2^33 below 2^32+1 only by low bits", kQuma, qumaOut(2 * kTwo32),
         B().Filter("output-packets", LT, kTwo32 + 1), 0},
        {"quma output 2^32 at least 2^32", kQuma, qumaOut(kTwo32), B().Filter("output-packets", GE, kTwo32), 1},
        {"quma vxlan second is no filter field", kQuma, quma,
         B().Filter("vxlan-reserved-value-second", EQ, 0x55667788), 0},
        {"quma loss-rate passes", kQuma, quma, B().Filter("loss-rate", GE, 50), 1},
        {"quma loss-rate rejects", kQuma, quma, B().Filter("loss-rate", GT, 50), 0},
        {"quma acl-number and time-stamp (AND)", kQuma, quma,
         B().Filter("acl-number", EQ, 3007).Filter("time-stamp", LE, 1700000006).Logic(MDTLM_FILTER_LOGIC_AND), 0},
        {"quma id and period", kQuma, quma, B().Condition("id", "7").Condition("period-id", "107"), 1},
        {"quma id differs", kQuma, quma, B().Condition("id", "8"), 0},
        {"quma protocol is no condition field", kQuma, quma, B().Condition("protocol", "0"), 1},
        {"srvtlm family 1 passes IPv6", kSrv, srv6, B().Condition("address-family", "1"), 1},
        {"srvtlm family 1 rejects IPv4", kSrv, srv4, B().Condition("address-family", "1"), 0},
        {"srvtlm IPv6 text against IPv4", kSrv, srv4, B().Condition("source-ip", kSrvV6Src), 0},
        {"srvtlm IPv6 text as reported", kSrv, srv6, B().Condition("source-ip", kSrvV6Src), 1},
        {"srvtlm upper-case IPv6 text", kSrv, srv6, B().Condition("source-ip", "2001:DB8:0:0:0:0:0:1"), 0},
        {"srvtlm compressed IPv6 text", kSrv, srv6, B().Condition("source-ip", "2001:db8::1"), 0},
        {"srvtlm IPv6 destination", kSrv, srv6, B().Condition("destination-ip", kSrvV6Dst), 1},
        {"srvtlm IPv4 destination", kSrv, srv4, B().Condition("destination-ip", "10.0.0.2"), 1},
        {"srvtlm address condition on family 2", kSrv, srvFamily2, B().Condition("destination-ip", "10.0.0.2"), 0},
        {"srvtlm access type", kSrv, srv4, B().Condition("access-type", "2"), 1},
        {"srvtlm access type beyond 8 bits", kSrv, srv4, B().Condition("access-type", "258"), 0},
        {"srvtlm logical unit and period", kSrv, srv4,
         B().Condition("logical-unit-num", "5").Condition("period-id", "6"), 1},
        {"srvtlm logical unit as filter", kSrv, srv4, B().Filter("logical-unit-num", GT, 4), 1},
        {"srvtlm period as filter", kSrv, srv4, B().Filter("period-id", EQ, 7), 0},
        {"srvtlm if-index below 2^16", kSrv, srv4, B().Filter("if-index", LT, 1 << 16), 1},
        {"srvtlm measure-mode is no filter field", kSrv, srv4, B().Filter("measure-mode", EQ, 3), 0},
        {"srvtlm if-index is no condition field", kSrv, srv4, B().Condition("if-index", "1"), 1},
        {"fct fet-max 5 above 2^32 (low bits 0)", kFct, fetMax(5), B().Filter("fet-max", GT, kTwo32), 1},
        {"fct fet-max 2^32+1 not above 3", kFct, fetMax(kTwo32 + 1), B().Filter("fet-max", GT, 3), 0},
        {"fct fet-mean by its low 32 bits", kFct, fct, B().Filter("fet-mean", EQ, 0xFFFFFFFF), 1},
        {"fct fct-max at its top", kFct, fct, B().Filter("fct-max", GE, 0xFFFFFFFF), 1},
        {"fct sequence or error (one holds)", kFct, fct,
         B().Filter("sequence-number", EQ, 99).Filter("error-info", EQ, 10), 1},
        {"fct slot-id is no filter field", kFct, fct, B().Filter("slot-id", EQ, 3), 0},
        {"fct slot and period", kFct, fct, B().Condition("slot-id", "3").Condition("period-id", "40"), 1},
        {"fct slot differs", kFct, fct, B().Condition("slot-id", "4"), 0},
        {"fct IPv4 source and family", kFct, fct,
         B().Condition("source-ip", "172.16.0.1").Condition("address-family", "0"), 1},
    };
    uint32_t taskId = 10;
    for (const Case &c : cases) {
        SCOPED_TRACE(c.what);
        MDTLM_TASK_DATA *task = ReadyTask(c.type, taskId++, c.info);
        ASSERT_NE(task, nullptr);
        EXPECT_EQ(Offer(c.type, task, c.rec), c.passed);
        EXPECT_EQ(task->gpbBuffer->itemCnt, c.passed);
    }
}

TEST(FlowConditions, ValueFillingItsFieldEndsThere)
{
    /* The "4" of the next condition must not extend "000...0" to 4. */
    const MDTLM_FLOW_STATS_REC flow{.direction = 2};
    MDTLM_PATH_CONDITION pair[2]{};
    std::memset(pair[0].value, '0', sizeof(pair[0].value));
    std::strcpy(pair[1].fieldName, "4");
    EXPECT_EQ(MDTLM_VRALDCN_FlowCmpFieldWithCondition(1, &pair[0], &flow), 0u);
}

/* Records of an unknown address family fail to encode (one line per task)
 * and are stored by no task; the flow still numbers them. */
TEST_F(SensorTest, UnknownAddressFamilyIsStoredByNoTask)
{
    struct Case {
        uint32_t type;
        Schema schema;
        uint32_t recLen;
        std::vector<uint8_t> recs; /* the last one is good */
        size_t failures;
        uint64_t goodSequence;
    };
    MDTLM_FLOW_STATS_REC flow = FlowRecord();
    flow.addressFamily = 3;
    MDTLM_SRVTLM_FLOW_STATS_REC srv = SrvtlmRecord(0, 1);
    srv.addressFamily = 2;
    const std::vector<Case> cases = {
        {MDTLM_SENSOR_VRAL_FLOW, kFlowSchema, sizeof(flow), Bytes(std::vector{flow, FlowRecord()}), 2, 1},
        {MDTLM_SENSOR_SRVTLM_FLOW, kSrvSchema, sizeof(srv), Bytes(std::vector{srv, SrvtlmRecord(0, 5)}), 2, 5},
        {MDTLM_SENSOR_SRVTLM_FCTFLOW, kFctSchema, sizeof(MDTLM_SRVTLM_FCTFLOW_STATS_REC), Bytes(std::vector{FctRecord(2, 1), FctRecord(0xFFFFFFFF, 2),
                                                                  FctRecord(0, 3)}),
         4, 3},
    };
    uint32_t taskId = 0;
    for (const Case &c : cases) {
        SCOPED_TRACE(c.schema.protoFile);
        const uint32_t gpbId = ++taskId, jsonId = ++taskId;
        ASSERT_NE(AddTask(c.type, 1, gpbId, PathInfoBuilder(MDTLM_ENCODE_TYPE_GPB).Get()), nullptr);
        ASSERT_NE(AddTask(c.type, 1, jsonId, PathInfoBuilder(MDTLM_ENCODE_TYPE_JSON).Get()), nullptr);
        Deliver(c.type, c.recs.data(), c.recLen, static_cast<uint32_t>(c.recs.size() / c.recLen));
        fw.ClearLogs();
        fw.ClearSamples();
        Tick();
        EXPECT_EQ(EncodeFailures(-1), c.failures);
        const std::vector<const Message *> gpb = GpbOf(gpbId, c.schema);
        const std::vector<Json> json = JsonOf(jsonId, c.schema);
        ASSERT_EQ(gpb.size(), 1u);
        ASSERT_EQ(json.size(), 1u);
        EXPECT_EQ(U(*gpb[0], "sequence_number"), c.goodSequence);
        EXPECT_EQ(json[0].contains("sequence-number") ? json[0]["sequence-number"] : json[0]["sequence_number"],
                  c.goodSequence);
    }
}

/* A value without a text is stored by a GPB task as it is; a JSON task drops
 * the record with one failure line and keeps its buffer empty. */
TEST_F(SensorTest, ValuesWithoutTextAreStoredByGpbAndDroppedByJson)
{
    struct Case {
        uint32_t type;
        std::vector<uint8_t> rec;
        const char *field;
        uint32_t value;
    };
    const auto zelk = [](uint32_t MDTLM_ZELK_CACHE_REC::*field, uint32_t value) {
        MDTLM_ZELK_CACHE_REC r = kZelk[0].rec;
        r.*field = value;
        return Bytes(r);
    };
    using Z = MDTLM_ZELK_CACHE_REC;
    const uint32_t kZ = MDTLM_SENSOR_ZELK_CACHE;
    const std::vector<Case> cases = {
        {kZ, zelk(&Z::protocolId, 17), "protocol_id", 17},  {kZ, zelk(&Z::protocolId, 0), "protocol_id", 0},
        {kZ, zelk(&Z::state, 4), "state", 4},                {kZ, zelk(&Z::recoveryMode, 0), "recovery_mode", 0},
        {kZ, zelk(&Z::recoveryMode, 1), "recovery_mode", 1}, {kZ, zelk(&Z::recoveryMode, 4), "recovery_mode", 4},
        {kZ, zelk(&Z::opMode, 0), "op_mode", 0},             {kZ, zelk(&Z::opMode, 5), "op_mode", 5},
        {MDTLM_SENSOR_QUMA_RESULT, Bytes(QumaRecord(4, 4, "acl", "", 9, 9)), "protocol", 4},
    };
    uint32_t taskId = 0;
    for (const Case &c : cases) {
        SCOPED_TRACE(std::string(c.field) + " " + std::to_string(c.value));
        MDTLM_TASK_DATA *gpbTask = ReadyTask(c.type, ++taskId, PathInfoBuilder(MDTLM_ENCODE_TYPE_GPB));
        MDTLM_TASK_DATA *jsonTask = ReadyTask(c.type, ++taskId, PathInfoBuilder(MDTLM_ENCODE_TYPE_JSON));
        ASSERT_TRUE(gpbTask && jsonTask);
        fw.ClearLogs();
        EXPECT_EQ(Offer(c.type, gpbTask, c.rec), 1u);
        EXPECT_EQ(Offer(c.type, jsonTask, c.rec), 1u);
        EXPECT_EQ(EncodeFailures(-1), 1u);
        EXPECT_EQ(jsonTask->jsonBuffer->dataLen, 0u);
        MDTLM_VRALDCN_STATS_UploadRest();
        const auto gpb = GpbOf(taskId - 1, c.type == kZ ? kZelkSchema : kQumaSchema);
        ASSERT_EQ(gpb.size(), 1u);
        EXPECT_EQ(U(*gpb[0], c.field), c.value);
        EXPECT_TRUE(SamplesOf(taskId).empty());
    }
}

} // namespace
} // namespace sensor_test
