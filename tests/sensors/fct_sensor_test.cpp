/*
 * I/O service flow throughput sensor: IPv4 and IPv6 records through the whole
 * path in GPB and JSON with 64-bit FET values at full width, filters on their
 * low 32 bits, unknown address families, leading bytes, JSON room.
 */
#include <string>
#include <vector>

#include "table_sensor_check.h"

namespace sensor_test {
namespace {

constexpr const char *kProto = "io_service_flow_throughput.proto";
constexpr const char *kSample = "mdtlm.srvtlmfct.Sample";

using Rec = MDTLM_SRVTLM_FCTFLOW_STATS_REC;

Rec MakeRec(uint32_t family, uint32_t seq)
{
    Rec r{};
    r.reserved0 = 0xFFFFFFFF;
    r.addressFamily = family;
    if (family == 1) {
        r.srcIp[0] = 0x20010db8;
        r.srcIp[3] = 0xffff0001;
        r.dstIp[1] = 0xabcd;
    } else {
        r.srcIp[0] = 0xAC100001;
        r.dstIp[0] = 0xAC100002;
        r.srcIp[2] = 0xFFFFFFFF;
    }
    r.periodId = 40;
    r.slotId = 3;
    r.srcIfIndex = 11;
    r.dstIfIndex = 12;
    r.interfaceChangeStatus = 1;
    r.fctMax = 0xFFFFFFFF;
    r.fctMin = 1;
    r.fctMean = 600;
    r.fetMax = (1ull << 32) + 1;
    r.fetMin = 5;
    r.fetMean = UINT64_MAX;
    r.nakPacketNumber = 7;
    r.rdmaPacketNumber = 8;
    r.rdmaMessageNumber = 9;
    r.errorInfo = 10;
    r.sequenceNumber = seq;
    return r;
}

std::vector<FieldCase> Fields(const Rec &r, const std::string &src, const std::string &dst)
{
    const auto n = [](const char *name, uint64_t v) { return FieldCase{name, name, N(v), N(v)}; };
    const std::string slot = std::to_string(r.slotId);
    return {
        n("address_family", r.addressFamily),
        {"source_ip", "source_ip", T(src), T(src)},
        {"destination_ip", "destination_ip", T(dst), T(dst)},
        n("period_id", r.periodId),
        {"slot_id", "slot_id", T(slot), T(slot)},
        n("source_if_index", r.srcIfIndex),
        n("destination_if_index", r.dstIfIndex),
        n("interface_change_status", r.interfaceChangeStatus),
        n("fct_max", r.fctMax),
        n("fct_min", r.fctMin),
        n("fct_mean", r.fctMean),
        n("fet_max", r.fetMax),
        n("fet_min", r.fetMin),
        n("fet_mean", r.fetMean),
        n("nak_packet_number", r.nakPacketNumber),
        n("rdma_packet_number", r.rdmaPacketNumber),
        n("rdma_message_number", r.rdmaMessageNumber),
        n("error_info", r.errorInfo),
        n("sequence_number", r.sequenceNumber),
    };
}

class FctSensorTest : public TableSensorTest {
protected:
    void AddBothTasks()
    {
        AddTask(MDTLM_SENSOR_SRVTLM_FCTFLOW, 1, 1, PathInfoBuilder(MDTLM_ENCODE_TYPE_GPB).Get());
        AddTask(MDTLM_SENSOR_SRVTLM_FCTFLOW, 1, 2, PathInfoBuilder(MDTLM_ENCODE_TYPE_JSON).Get());
    }
};

TEST_F(FctSensorTest, Ipv4AndIpv6RecordsReachGpbAndJsonTasksFieldForField)
{
    AddBothTasks();
    const std::vector<Rec> recs = {MakeRec(0, 1), MakeRec(1, 2), Rec{}};
    const std::vector<std::vector<FieldCase>> expected = {
        Fields(recs[0], "172.16.0.1", "172.16.0.2"),
        Fields(recs[1], "2001:db8:0:0:0:0:ffff:1", "0:0:0:abcd:0:0:0:0"),
        Fields(recs[2], "0.0.0.0", "0.0.0.0"),
    };
    Deliver(MDTLM_SENSOR_SRVTLM_FCTFLOW, recs);
    Tick();

    GpbRecords gpb = GpbOf(1, kProto, kSample);
    std::vector<Json> json = JsonOf(2, "flow_throughput_statistics", "flow_throughput_statistic");
    ASSERT_EQ(gpb.records.size(), recs.size());
    ASSERT_EQ(json.size(), recs.size());
    for (size_t i = 0; i < recs.size(); ++i) {
        SCOPED_TRACE("record " + std::to_string(i));
        ExpectGpb(*gpb.records[i], expected[i], &gpb.raw[0]);
        ExpectJson(json[i], expected[i]);
    }
}

TEST_F(FctSensorTest, UnknownAddressFamilyIsStoredByNoTask)
{
    AddBothTasks();
    Deliver(MDTLM_SENSOR_SRVTLM_FCTFLOW, std::vector<Rec>{MakeRec(2, 1), MakeRec(0xFFFFFFFF, 2)});
    fw.ClearLogs();
    Tick();
    EXPECT_TRUE(fw.Samples().empty());
    EXPECT_EQ(EncodeFailures(-1), 4u);
}

TEST_F(FctSensorTest, ConditionsAndFilters)
{
    struct Case {
        const char *what;
        PathInfoBuilder info;
        uint64_t fetMax;
        uint32_t passed;
    };
    using B = PathInfoBuilder;
    const uint64_t k32 = 1ull << 32;
    const Case cases[] = {
        {"fet-max 5 above 2^32 (low bits 0)", B().Filter("fet-max", MDTLM_FILTER_OP_GT, k32), 5, 1},
        {"fet-max 2^32+1 (low bits 1) not above 3", B().Filter("fet-max", MDTLM_FILTER_OP_GT, 3), k32 + 1, 0},
        {"fet-mean by its low 32 bits", B().Filter("fet-mean", MDTLM_FILTER_OP_EQ, 0xFFFFFFFF), 0, 1},
        {"fet-min equal", B().Filter("fet-min", MDTLM_FILTER_OP_LE, 5), 0, 1},
        {"fct-max at its top", B().Filter("fct-max", MDTLM_FILTER_OP_GE, 0xFFFFFFFF), 0, 1},
        {"sequence and error (OR, one holds)",
         B().Filter("sequence-number", MDTLM_FILTER_OP_EQ, 99).Filter("error-info", MDTLM_FILTER_OP_EQ, 10), 0, 1},
        {"slot-id is no filter field", B().Filter("slot-id", MDTLM_FILTER_OP_EQ, 3), 0, 0},
        {"slot 3", B().Condition("slot-id", "3").Condition("period-id", "40"), 0, 1},
        {"slot 4", B().Condition("slot-id", "4"), 0, 0},
        {"source-if-index is no condition field", B().Condition("source-if-index", "999"), 0, 1},
        {"IPv4 source", B().Condition("source-ip", "172.16.0.1").Condition("address-family", "0"), 0, 1},
    };
    uint32_t taskId = 10;
    for (const Case &c : cases) {
        SCOPED_TRACE(c.what);
        MDTLM_TASK_DATA *task = ReadyTask(MDTLM_SENSOR_SRVTLM_FCTFLOW, taskId++, c.info);
        Rec rec = MakeRec(0, 1);
        rec.fetMax = c.fetMax;
        EXPECT_EQ(Offer(MDTLM_SENSOR_SRVTLM_FCTFLOW, task, rec), c.passed);
    }

    /* Ids outside the maps cannot be named by a task; the compare callbacks pass them. */
    const Rec rec = MakeRec(0, 1);
    MDTLM_PATH_CONDITION cond{};
    EXPECT_EQ(MDTLM_SRVTLM_FCTFLOW_STATS_CmpFieldWithInfo(0, &cond, &rec), 1u);
    EXPECT_EQ(MDTLM_SRVTLM_FCTFLOW_STATS_CmpFieldWithInfo(6, &cond, &rec), 1u);
    MDTLM_PATH_FILTER filter{};
    filter.op = 9;
    EXPECT_EQ(MDTLM_SRVTLM_FCTFLOW_STATS_CmpFieldWithFilter(5, &filter, &rec), 1u);
    EXPECT_EQ(MDTLM_SRVTLM_FCTFLOW_STATS_CmpFieldWithFilter(20, &filter, &rec), 1u);
}

TEST_F(FctSensorTest, GpbRecordOpensWithContainer8AndTheFamily)
{
    const Rec rec = MakeRec(1, 1);
    uint8_t out[512];
    const int32_t len = MDTLM_SRVTLM_FCTFLOW_GPB_EncodeMsg(&rec, out, sizeof(out));
    ASSERT_GT(len, 6);
    ASSERT_LT(len, 128);
    EXPECT_EQ(out[0], 0x42);
    EXPECT_EQ(out[1], len - 2);
    EXPECT_EQ(out[2], 0x0A);
    EXPECT_EQ(out[3], len - 4);
    EXPECT_EQ(out[4], 0x08);
    EXPECT_EQ(out[5], 1);

    fw.ClearLogs();
    EXPECT_EQ(MDTLM_SRVTLM_FCTFLOW_GPB_EncodeMsg(nullptr, out, sizeof(out)), MDTLM_ENCODE_FAIL);
    EXPECT_EQ(MDTLM_SRVTLM_FCTFLOW_JSON_CheckEncodePara(nullptr, out, 2000), MDTLM_ENCODE_FAIL);
    EXPECT_EQ(MDTLM_SRVTLM_FCTFLOW_JSON_CheckEncodePara(&rec, out, 958), MDTLM_ENCODE_NO_SPACE);
    EXPECT_EQ(fw.Shapes(), (std::vector<std::string>{
                               "[mdtlm.vraldcn.statis:#][VRALDCN_FLOW_GPB_EncodeMsg] Param error, msg is NULL.",
                               "[mdtlm.vraldcn.statis:#][FLOW_JSON_CheckEncodePara] Param error, msg is NULL.",
                           }));
}

TEST_F(FctSensorTest, JsonBufferCountsAsFullBelow959BytesLeft)
{
    ExpectJsonFloor(MDTLM_SENSOR_SRVTLM_FCTFLOW, 959, MakeRec(1, 0xFFFFFFFF));
}

} // namespace
} // namespace sensor_test
