/*
 * I/O service flow statistics sensor: IPv4 and IPv6 records through the whole
 * path in GPB and JSON, an IPv6 condition against the texts the encodings
 * show, unknown address families, conditions and filters, leading bytes,
 * JSON room.
 */
#include <cstring>
#include <string>
#include <vector>

#include "table_sensor_check.h"

namespace sensor_test {
namespace {

const Schema kSchema = {"io_service_flow_statistics.proto", "mdtlm.srvtlmflow.Sample", "flow_statistics",
                        "flow_statistic"};
constexpr const char *kV6Src = "2001:db8:0:0:0:0:0:1";
constexpr const char *kV6Dst = "fe80:0:0:0:21a:2bff:fe3c:4d5e";

using Rec = MDTLM_SRVTLM_FLOW_STATS_REC;

Rec MakeRec(uint8_t family, uint32_t seq)
{
    Rec r{};
    r.accessType = 2;
    r.addressFamily = family;
    if (family == 1) {
        r.srcIp[0] = 0x20010db8;
        r.srcIp[3] = 1;
        r.dstIp[0] = 0xfe800000;
        r.dstIp[2] = 0x021a2bff;
        r.dstIp[3] = 0xfe3c4d5e;
    } else { /* only the first word of an IPv4 address is read */
        r.srcIp[0] = 0xC0A80101;
        r.dstIp[0] = 0x0A000002;
        r.srcIp[1] = r.dstIp[3] = 0xFFFFFFFF;
    }
    r.logicalUnitNum = 5;
    r.periodId = 6;
    r.ifIndex = 0xFFFF;
    r.measureMode = 3;
    uint32_t counters[11]; /* read-io-avg-latency to write-pending-io-cnt, each distinct */
    for (uint32_t i = 0; i < 11; ++i) {
        counters[i] = seq + (i + 1) * 0x01010101u;
    }
    std::memcpy(&r.readIoAvgLatency, counters, sizeof(counters));
    r.reserved92[0] = 0xAB;
    r.interval = 1000;
    r.errorInfo = 2;
    r.sequenceNumber = seq;
    return r;
}

std::vector<FieldCase> Fields(const Rec &r, const std::string &src, const std::string &dst)
{
    return {
        Num("access_type", r.accessType),
        Num("address_family", r.addressFamily),
        {"source_ip", "source_ip", T(src), T(src)},
        {"destination_ip", "destination_ip", T(dst), T(dst)},
        Num("logical_unit_num", r.logicalUnitNum),
        Num("period_id", r.periodId),
        Num("if_index", r.ifIndex),
        Num("measure_mode", r.measureMode),
        Num("read_io_avg_latency", r.readIoAvgLatency),
        Num("read_dal", r.readDal),
        Num("read_iops", r.readIops),
        Num("read_io_avg_size", r.readIoAvgSize),
        Num("read_pending_io_cnt", r.readPendingIoCnt),
        Num("write_io_avg_latency", r.writeIoAvgLatency),
        Num("write_dal", r.writeDal),
        Num("write_dpl", r.writeDpl),
        Num("write_iops", r.writeIops),
        Num("write_io_avg_size", r.writeIoAvgSize),
        Num("write_pending_io_cnt", r.writePendingIoCnt),
        Num("error_info", r.errorInfo),
        Num("interval", r.interval),
        Num("sequence_number", r.sequenceNumber),
    };
}

class SrvtlmSensorTest : public TableSensorTest {};

TEST_F(SrvtlmSensorTest, Ipv4AndIpv6RecordsReachGpbAndJsonTasksFieldForField)
{
    const std::vector<Rec> recs = {MakeRec(0, 0x10), MakeRec(1, 0x80000000), Rec{}};
    ExpectWholePath(MDTLM_SENSOR_SRVTLM_FLOW, kSchema, recs,
                    {Fields(recs[0], "192.168.1.1", "10.0.0.2"), Fields(recs[1], kV6Src, kV6Dst),
                     Fields(recs[2], "0.0.0.0", "0.0.0.0")});
}

TEST_F(SrvtlmSensorTest, Ipv6ConditionMatchesTheTextTheRecordIsReportedWith)
{
    const PathInfoBuilder info = PathInfoBuilder().Condition("source-ip", kV6Src);
    AddTask(MDTLM_SENSOR_SRVTLM_FLOW, 1, 1, PathInfoBuilder(info).Encode(MDTLM_ENCODE_TYPE_GPB).Get());
    AddTask(MDTLM_SENSOR_SRVTLM_FLOW, 1, 2, PathInfoBuilder(info).Encode(MDTLM_ENCODE_TYPE_JSON).Get());
    Rec other = MakeRec(1, 2);
    other.srcIp[3] = 2;
    Rec family2 = MakeRec(1, 3);
    family2.addressFamily = 2;
    Deliver(MDTLM_SENSOR_SRVTLM_FLOW, std::vector<Rec>{MakeRec(0, 0), MakeRec(1, 1), other, family2});
    Tick();

    const std::vector<const Message *> gpb = GpbOf(1, kSchema);
    const std::vector<Json> json = JsonOf(2, kSchema);
    ASSERT_EQ(gpb.size(), 1u);
    ASSERT_EQ(json.size(), 1u);
    EXPECT_EQ(U(*gpb[0], "sequence_number"), 1u);
    EXPECT_EQ(S(*gpb[0], "source_ip"), kV6Src);
    EXPECT_EQ(json[0]["sequence_number"], 1u);
    EXPECT_EQ(json[0]["source_ip"], kV6Src);
}

TEST_F(SrvtlmSensorTest, UnknownAddressFamilyIsStoredByNoTask)
{
    AddTask(MDTLM_SENSOR_SRVTLM_FLOW, 1, 1, PathInfoBuilder(MDTLM_ENCODE_TYPE_GPB).Get());
    AddTask(MDTLM_SENSOR_SRVTLM_FLOW, 1, 2, PathInfoBuilder(MDTLM_ENCODE_TYPE_JSON).Get());
    Rec rec = MakeRec(0, 1);
    rec.addressFamily = 2;
    Deliver(MDTLM_SENSOR_SRVTLM_FLOW, rec);
    fw.ClearLogs();
    Tick();
    EXPECT_TRUE(fw.Samples().empty());
    EXPECT_EQ(EncodeFailures(-1), 2u);
}

TEST_F(SrvtlmSensorTest, ConditionsAndFilters)
{
    struct Case {
        const char *what;
        PathInfoBuilder info;
        uint8_t family;
        uint32_t passed;
    };
    using B = PathInfoBuilder;
    const Case cases[] = {
        {"family 1 passes IPv6", B().Condition("address-family", "1"), 1, 1},
        {"family 1 rejects IPv4", B().Condition("address-family", "1"), 0, 0},
        {"IPv6 text against an IPv4 record", B().Condition("source-ip", kV6Src), 0, 0},
        {"upper-case IPv6 text", B().Condition("source-ip", "2001:DB8:0:0:0:0:0:1"), 1, 0},
        {"compressed IPv6 text", B().Condition("source-ip", "2001:db8::1"), 1, 0},
        {"IPv6 destination", B().Condition("destination-ip", kV6Dst), 1, 1},
        {"IPv4 destination", B().Condition("destination-ip", "10.0.0.2"), 0, 1},
        {"address condition on family 2", B().Condition("destination-ip", "10.0.0.2"), 2, 0},
        {"access type", B().Condition("access-type", "2"), 0, 1},
        {"access type beyond 8 bits", B().Condition("access-type", "258"), 0, 0},
        {"logical unit as condition", B().Condition("logical-unit-num", "5").Condition("period-id", "6"), 0, 1},
        {"logical unit as filter", B().Filter("logical-unit-num", MDTLM_FILTER_OP_GT, 4), 0, 1},
        {"period as filter", B().Filter("period-id", MDTLM_FILTER_OP_EQ, 7), 0, 0},
        {"if-index below 2^16", B().Filter("if-index", MDTLM_FILTER_OP_LT, 1 << 16), 0, 1},
        {"access-type is no filter field", B().Filter("access-type", MDTLM_FILTER_OP_EQ, 2), 0, 0},
        {"measure-mode is no filter field", B().Filter("measure-mode", MDTLM_FILTER_OP_EQ, 3), 0, 0},
        {"interval is no filter field", B().Filter("interval", MDTLM_FILTER_OP_GE, 0), 0, 0},
        {"if-index is no condition field", B().Condition("if-index", "1"), 0, 1},
    };
    uint32_t taskId = 10;
    for (const Case &c : cases) {
        SCOPED_TRACE(c.what);
        MDTLM_TASK_DATA *task = ReadyTask(MDTLM_SENSOR_SRVTLM_FLOW, taskId++, c.info);
        Rec rec = MakeRec(c.family == 2 ? 0 : c.family, 1);
        rec.addressFamily = c.family;
        EXPECT_EQ(Offer(MDTLM_SENSOR_SRVTLM_FLOW, task, rec), c.passed);
    }
}

TEST_F(SrvtlmSensorTest, FramingAndMissingRecords)
{
    ExpectLeadingBytes(MDTLM_SRVTLM_FLOW_GPB_EncodeMsg, MakeRec(0, 1), 0x2A, 2);
    uint8_t out[1100];
    fw.ClearLogs();
    EXPECT_EQ(MDTLM_SRVTLM_FLOW_GPB_EncodeMsg(nullptr, out, sizeof(out)), MDTLM_ENCODE_FAIL);
    EXPECT_EQ(MDTLM_SRVTLM_FLOW_JSON_EncodeMsg(nullptr, out, sizeof(out)), MDTLM_ENCODE_FAIL);
    EXPECT_EQ(fw.Shapes(), NullRecordLines("[FLOW_JSON_CheckEncodePara]"));
}

TEST_F(SrvtlmSensorTest, JsonBufferCountsAsFullBelow1059BytesLeft)
{
    ExpectJsonFloor(MDTLM_SENSOR_SRVTLM_FLOW, 1059, MakeRec(1, 0xFFFFFFFF));
}

} // namespace
} // namespace sensor_test
