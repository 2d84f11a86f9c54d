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

const Schema kSchema = {"io_service_flow_throughput.proto", "mdtlm.srvtlmfct.Sample", "flow_throughput_statistics",
                        "flow_throughput_statistic"};

using Rec = MDTLM_SRVTLM_FCTFLOW_STATS_REC;

Rec MakeRec(uint32_t family, uint32_t seq)
{
    Rec r{0xFFFFFFFF, family, {}, {}, 40, 3, 11, 12, 1, 0xFFFFFFFF, 1, 600, (1ull << 32) + 1, 5, UINT64_MAX,
          7, 8, 9, 10, seq};
    if (family == 1) {
        r.srcIp[0] = r.dstIp[0] = 0x20010db8;
        r.srcIp[3] = 0xffff0001;
        r.dstIp[1] = 0xabcd;
    } else { /* only the first word of an IPv4 address is read */
        r.srcIp[0] = 0xAC100001;
        r.dstIp[0] = 0xAC100002;
        r.srcIp[2] = 0xFFFFFFFF;
    }
    return r;
}

std::vector<FieldCase> Fields(const Rec &r, const std::string &src, const std::string &dst)
{
    const std::string slot = std::to_string(r.slotId);
    return {
        Num("address_family", r.addressFamily),
        {"source_ip", "source_ip", T(src), T(src)},
        {"destination_ip", "destination_ip", T(dst), T(dst)},
        Num("period_id", r.periodId),
        {"slot_id", "slot_id", T(slot), T(slot)},
        Num("source_if_index", r.srcIfIndex),
        Num("destination_if_index", r.dstIfIndex),
        Num("interface_change_status", r.interfaceChangeStatus),
        Num("fct_max", r.fctMax),
        Num("fct_min", r.fctMin),
        Num("fct_mean", r.fctMean),
        Num("fet_max", r.fetMax),
        Num("fet_min", r.fetMin),
        Num("fet_mean", r.fetMean),
        Num("nak_packet_number", r.nakPacketNumber),
        Num("rdma_packet_number", r.rdmaPacketNumber),
        Num("rdma_message_number", r.rdmaMessageNumber),
        Num("error_info", r.errorInfo),
        Num("sequence_number", r.sequenceNumber),
    };
}

class FctSensorTest : public TableSensorTest {};

TEST_F(FctSensorTest, Ipv4AndIpv6RecordsReachGpbAndJsonTasksFieldForField)
{
    const std::vector<Rec> recs = {MakeRec(0, 1), MakeRec(1, 2), Rec{}};
    ExpectWholePath(MDTLM_SENSOR_SRVTLM_FCTFLOW, kSchema, recs,
                    {Fields(recs[0], "172.16.0.1", "172.16.0.2"),
                     Fields(recs[1], "2001:db8:0:0:0:0:ffff:1", "2001:db8:0:abcd:0:0:0:0"),
                     Fields(recs[2], "0.0.0.0", "0.0.0.0")});
}

TEST_F(FctSensorTest, UnknownAddressFamilyIsStoredByNoTask)
{
    AddTask(MDTLM_SENSOR_SRVTLM_FCTFLOW, 1, 1, PathInfoBuilder(MDTLM_ENCODE_TYPE_GPB).Get());
    AddTask(MDTLM_SENSOR_SRVTLM_FCTFLOW, 1, 2, PathInfoBuilder(MDTLM_ENCODE_TYPE_JSON).Get());
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
        {"fct-max at its top", B().Filter("fct-max", MDTLM_FILTER_OP_GE, 0xFFFFFFFF), 0, 1},
        {"sequence or error (one holds)",
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

    /* Ids no map row names: the compare callbacks pass them. */
    const Rec rec = MakeRec(0, 1);
    const MDTLM_PATH_CONDITION cond{};
    MDTLM_PATH_FILTER filter{};
    filter.op = 9;
    EXPECT_EQ(MDTLM_SRVTLM_FCTFLOW_STATS_CmpFieldWithInfo(0, &cond, &rec), 1u);
    EXPECT_EQ(MDTLM_SRVTLM_FCTFLOW_STATS_CmpFieldWithInfo(6, &cond, &rec), 1u);
    EXPECT_EQ(MDTLM_SRVTLM_FCTFLOW_STATS_CmpFieldWithFilter(5, &filter, &rec), 1u);
    EXPECT_EQ(MDTLM_SRVTLM_FCTFLOW_STATS_CmpFieldWithFilter(20, &filter, &rec), 1u);
}

TEST_F(FctSensorTest, FramingAndMissingRecords)
{
    const Rec rec = MakeRec(1, 1);
    ExpectLeadingBytes(MDTLM_SRVTLM_FCTFLOW_GPB_EncodeMsg, rec, 0x42, 1);
    uint8_t out[1000];
    fw.ClearLogs();
    EXPECT_EQ(MDTLM_SRVTLM_FCTFLOW_GPB_EncodeMsg(nullptr, out, sizeof(out)), MDTLM_ENCODE_FAIL);
    EXPECT_EQ(MDTLM_SRVTLM_FCTFLOW_JSON_CheckEncodePara(nullptr, out, sizeof(out)), MDTLM_ENCODE_FAIL);
    EXPECT_EQ(MDTLM_SRVTLM_FCTFLOW_JSON_CheckEncodePara(&rec, out, 958), MDTLM_ENCODE_NO_SPACE);
    EXPECT_EQ(fw.Shapes(), NullRecordLines("[FLOW_JSON_CheckEncodePara]"));
}

TEST_F(FctSensorTest, JsonBufferCountsAsFullBelow959BytesLeft)
{
    ExpectJsonFloor(MDTLM_SENSOR_SRVTLM_FCTFLOW, 959, MakeRec(1, 0xFFFFFFFF));
}

} // namespace
} // namespace sensor_test
