/*
 * The JSON records of all six sensors written by plain code: a direct writer
 * emitting the plug-in's bytes member by member (literal keys copied, numbers
 * with std::to_chars, enumeration names from its own tables, address texts
 * formatted with plain code), each from the raw record. Before timing, its
 * bytes must equal the plug-in's record. The plug-in's own lines are
 * BM_FlowJson, BM_FlowJsonIpv6, BM_FlowHopJson (flow_bench.cpp) and the
 * BM_*_Json lines of sensors_bench.cpp, with the same names and arguments.
 */
#include <benchmark/benchmark.h>

#include <cstdint>
#include <string_view>

#include "direct_json.h"
#include "flow_records.h"
#include "sensor_records.h"
#include "mdtlm_vraldcn.h"

namespace {

using namespace flow_bench;
using namespace sensor_bench;

constexpr int32_t kFlowRoom = 1536;  /* as the flow lines of flow_bench.cpp */
constexpr int32_t kSensorRoom = 1100; /* as the lines of sensors_bench.cpp */

/* ------------------------------------------------------------- writers */

int32_t WriteDirect(const MDTLM_FLOW_STATS_REC &r, uint8_t *out)
{
    char src[40], dst[40];
    FormatAddress(r.srcAddr, r.addressFamily == 2, src);
    FormatAddress(r.dstAddr, r.addressFamily == 2, dst);
    DirectJson w(out);
    w.Num("{\"flow-id\":", FlowId(r.flowIdHigh, r.flowIdLow));
    w.Num(",\"direction\":", r.direction == 1 ? 1 : 4);
    w.Num(",\"address-family\":", r.addressFamily == 1 ? 0 : 1);
    w.Text(",\"source-ip\":", src);
    w.Text(",\"destination-ip\":", dst);
    w.Num(",\"source-port\":", r.srcPort);
    w.Num(",\"destination-port\":", r.dstPort);
    w.Num(",\"protocol\":", r.protocol);
    w.Num(",\"if-index\":", r.ifIndex);
    w.Num(",\"error-info\":", r.errorInfo);
    w.Num(",\"error-info-ext\":", r.errorInfoExt);
    w.Num(",\"interval\":", r.interval);
    w.Num(",\"period-id\":", r.periodId);
    w.Num(",\"packet-count\":", r.packetCount);
    w.Num(",\"byte-count\":", r.byteCount);
    w.Num(",\"timestamp-second\":", r.timestampSecond);
    w.Num(",\"timestamp-nanosecond\":", r.timestampNanosecond);
    w.Num(",\"ttl\":", r.ttl);
    w.Num(",\"measure-mode\":", r.measureMode);
    w.Num(",\"vlan\":", r.vlan);
    w.Num(",\"queue-pair\":", r.queuePair);
    w.Num(",\"tunnel-mode\":", TunnelMode(r.tunnelFlag, r.tunnelType));
    w.Num(",\"tunnel-id\":", r.tunnelId);
    w.Num(",\"outer-ttl\":", r.outerTtl);
    w.Num(",\"sequence-number\":", r.sequenceNumber);
    w.Field(",\"chassis-id\":", r.chassisId);
    w.Field(",\"slot-id\":", r.slotId);
    return w.End();
}

int32_t WriteDirect(const MDTLM_FLOWHOP_STATS_REC &r, uint8_t *out)
{
    DirectJson w(out);
    w.Num("{\"flow-id\":", FlowId(r.flowIdHigh, r.flowIdLow));
    w.Num(",\"direction\":", r.direction == 1 ? 1 : 4);
    w.Num(",\"if-index\":", r.ifIndex);
    w.Num(",\"error-info\":", r.errorInfo);
    w.Num(",\"error-info-ext\":", r.errorInfoExt);
    w.Num(",\"period-id\":", r.periodId);
    w.Num(",\"packet-count\":", r.packetCount);
    w.Num(",\"byte-count\":", r.byteCount);
    w.Num(",\"timestamp-second\":", r.timestampSecond);
    w.Num(",\"timestamp-nanosecond\":", r.timestampNanosecond);
    w.Num(",\"ttl\":", r.ttl);
    w.Num(",\"measure-mode\":", r.measureMode);
    w.Num(",\"maximum-delay\":", uint32_t(r.maximumDelay << 8));
    w.Num(",\"total-delay\":", r.totalDelay << 8);
    w.Num(",\"total-count\":", uint32_t(r.totalCount));
    w.Num(",\"interval\":", r.interval);
    w.Num(",\"vlan\":", r.vlan);
    w.Num(",\"tunnel-mode\":", TunnelMode(r.tunnelFlag, r.tunnelType));
    w.Num(",\"tunnel-id\":", r.tunnelId);
    w.Num(",\"outer-ttl\":", r.outerTtl);
    w.Num(",\"queue-pair\":", r.queuePair);
    w.Num(",\"sequence-number\":", r.sequenceNumber);
    w.Field(",\"chassis-id\":", r.chassisId);
    w.Field(",\"slot-id\":", r.slotId);
    return w.End();
}

/* The export flow cache's enumeration names, each table from its first value. */
constexpr std::string_view kZelkProtocols[] = {"tcp"};
constexpr std::string_view kZelkStates[] = {"success", "failed", "reach-limit", "disable"};
constexpr std::string_view kZelkRecoveryModes[] = {"underlay-overlay", "none"};
constexpr std::string_view kZelkOpModes[] = {"auto-fail-detection", "manual-fail-recovery",
                                             "tcp-reserved-value-isolate-outbound", "none"};

int32_t WriteDirect(const MDTLM_ZELK_CACHE_REC &r, uint8_t *out)
{
    const std::string_view protocol = EnumName(kZelkProtocols, 6, r.protocolId);
    const std::string_view state = EnumName(kZelkStates, 0, r.state);
    const std::string_view recovery = EnumName(kZelkRecoveryModes, 2, r.recoveryMode);
    const std::string_view opMode = EnumName(kZelkOpModes, 1, r.opMode);
    if (protocol.empty() || state.empty() || recovery.empty() || opMode.empty()) {
        return -1;
    }
    char src[40], dst[40];
    Ipv4Text(r.sourceIp, src);
    Ipv4Text(r.destinationIp, dst);
    DirectJson w(out);
    w.QuotedNum("{\"slot-id\":", r.slotId);
    w.Text(",\"source-ip\":", src);
    w.Text(",\"destination-ip\":", dst);
    w.Text(",\"protocol-id\":", protocol);
    w.Num(",\"l4-source-port\":", r.l4SourcePort);
    w.Num(",\"l4-destination-port\":", r.l4DestinationPort);
    w.Num(",\"if-index\":", r.ifIndex);
    w.Num(",\"detect-timestamp-second\":", r.detectTimestampSecond);
    w.Text(",\"state\":", state);
    w.Num(",\"seed\":", r.seed);
    w.Num(",\"recovery-count\":", r.recoveryCount);
    w.Num(",\"sequence-number\":", r.sequenceNumber);
    w.Text(",\"recovery-mode\":", recovery);
    w.Text(",\"op-mode\":", opMode);
    return w.End();
}

constexpr std::string_view kQumaProtocols[] = {"Protocol_INVALID", "Protocol_IPV4", "Protocol_IPV6", "Protocol_L2"};

int32_t WriteDirect(const MDTLM_QUMA_RESULT_REC &r, uint8_t *out)
{
    const std::string_view protocol = EnumName(kQumaProtocols, 0, r.protocol);
    if (protocol.empty()) {
        return -1;
    }
    DirectJson w(out);
    w.Num("{\"id\":", r.id);
    w.Num(",\"period_id\":", r.periodId);
    w.Text(",\"protocol\":", protocol);
    w.QuotedNum(",\"rule_id\":", r.ruleId);
    w.Num(",\"acl_number\":", r.aclNumber);
    w.Field(",\"acl_name\":", r.aclName);
    w.Num(",\"vxlan_reserved_value\":", r.vxlanReservedValue);
    w.Num(",\"vxlan-reserved-value-second\":", r.vxlanReservedValueSecond);
    w.Num(",\"input_packets\":", r.inputPackets);
    w.Num(",\"output_packets\":", r.outputPackets);
    w.Field(",\"warn_info\":", r.warnInfo);
    w.Num(",\"time_stamp\":", r.timeStamp);
    return w.End();
}

int32_t WriteDirect(const MDTLM_SRVTLM_FLOW_STATS_REC &r, uint8_t *out)
{
    sensor_bench::Texts t;
    AddressTexts(r.addressFamily, r.srcIp, r.dstIp, t);
    DirectJson w(out);
    w.Num("{\"access_type\":", r.accessType);
    w.Num(",\"address_family\":", r.addressFamily);
    w.Text(",\"source_ip\":", t.src);
    w.Text(",\"destination_ip\":", t.dst);
    w.Num(",\"logical_unit_num\":", r.logicalUnitNum);
    w.Num(",\"period_id\":", r.periodId);
    w.Num(",\"if_index\":", r.ifIndex);
    w.Num(",\"measure_mode\":", r.measureMode);
    w.Num(",\"read_io_avg_latency\":", r.readIoAvgLatency);
    w.Num(",\"read_dal\":", r.readDal);
    w.Num(",\"read_iops\":", r.readIops);
    w.Num(",\"read_io_avg_size\":", r.readIoAvgSize);
    w.Num(",\"read_pending_io_cnt\":", r.readPendingIoCnt);
    w.Num(",\"write_io_avg_latency\":", r.writeIoAvgLatency);
    w.Num(",\"write_dal\":", r.writeDal);
    w.Num(",\"write_dpl\":", r.writeDpl);
    w.Num(",\"write_iops\":", r.writeIops);
    w.Num(",\"write_io_avg_size\":", r.writeIoAvgSize);
    w.Num(",\"write_pending_io_cnt\":", r.writePendingIoCnt);
    w.Num(",\"error_info\":", r.errorInfo);
    w.Num(",\"interval\":", r.interval);
    w.Num(",\"sequence_number\":", r.sequenceNumber);
    return w.End();
}

int32_t WriteDirect(const MDTLM_SRVTLM_FCTFLOW_STATS_REC &r, uint8_t *out)
{
    sensor_bench::Texts t;
    AddressTexts(r.addressFamily, r.srcIp, r.dstIp, t);
    DirectJson w(out);
    w.Num("{\"address_family\":", r.addressFamily);
    w.Text(",\"source_ip\":", t.src);
    w.Text(",\"destination_ip\":", t.dst);
    w.Num(",\"period_id\":", r.periodId);
    w.QuotedNum(",\"slot_id\":", r.slotId);
    w.Num(",\"source_if_index\":", r.srcIfIndex);
    w.Num(",\"destination_if_index\":", r.dstIfIndex);
    w.Num(",\"interface_change_status\":", r.interfaceChangeStatus);
    w.Num(",\"fct_max\":", r.fctMax);
    w.Num(",\"fct_min\":", r.fctMin);
    w.Num(",\"fct_mean\":", r.fctMean);
    w.Num(",\"fet_max\":", r.fetMax);
    w.Num(",\"fet_min\":", r.fetMin);
    w.Num(",\"fet_mean\":", r.fetMean);
    w.Num(",\"nak_packet_number\":", r.nakPacketNumber);
    w.Num(",\"rdma_packet_number\":", r.rdmaPacketNumber);
    w.Num(",\"rdma_message_number\":", r.rdmaMessageNumber);
    w.Num(",\"error_info\":", r.errorInfo);
    w.Num(",\"sequence_number\":", r.sequenceNumber);
    return w.End();
}

/* ---------------------------------------------------------------- runs */

template <typename Rec>
void RunDirect(benchmark::State &state, int32_t room, const Rec &rec,
               int32_t (*encode)(const Rec *, uint8_t *, int32_t))
{
    RunJsonPeer(state, room, rec, encode, [&](uint8_t *out, int32_t) { return WriteDirect(rec, out); });
}

void BM_FlowJson_Direct(benchmark::State &s)
{
    RunDirect(s, kFlowRoom, MakeFlow(false), MDTLM_VRALDCN_FLOW_JSON_EncodeMsg);
}
void BM_FlowJsonIpv6_Direct(benchmark::State &s)
{
    RunDirect(s, kFlowRoom, MakeFlow(true), MDTLM_VRALDCN_FLOW_JSON_EncodeMsg);
}
void BM_FlowHopJson_Direct(benchmark::State &s)
{
    RunDirect(s, kFlowRoom, MakeFlowHop(), MDTLM_VRALDCN_FLOWHOP_JSON_EncodeMsg);
}
/* Argument: address family (0 IPv4, 1 IPv6) where the record has one. */
void BM_ExportFlowCache_Json_Direct(benchmark::State &s)
{
    RunDirect(s, kSensorRoom, ZelkRecord(s.range(0)), MDTLM_ZELK_JSON_EncodeMsg);
}
void BM_ResultStatistic_Json_Direct(benchmark::State &s)
{
    RunDirect(s, kSensorRoom, QumaRecord(s.range(0)), MDTLM_QUMA_JSON_EncodeMsg);
}
void BM_IoServiceFlow_Json_Direct(benchmark::State &s)
{
    RunDirect(s, kSensorRoom, SrvtlmRecord(s.range(0)), MDTLM_SRVTLM_FLOW_JSON_EncodeMsg);
}
void BM_IoServiceThroughput_Json_Direct(benchmark::State &s)
{
    RunDirect(s, kSensorRoom, FctRecord(s.range(0)), MDTLM_SRVTLM_FCTFLOW_JSON_EncodeMsg);
}
BENCHMARK(BM_FlowJson_Direct);
BENCHMARK(BM_FlowJsonIpv6_Direct);
BENCHMARK(BM_FlowHopJson_Direct);
BENCHMARK(BM_ExportFlowCache_Json_Direct)->Arg(0);
BENCHMARK(BM_ResultStatistic_Json_Direct)->Arg(0);
BENCHMARK(BM_IoServiceFlow_Json_Direct)->Arg(0)->Arg(1);
BENCHMARK(BM_IoServiceThroughput_Json_Direct)->Arg(0)->Arg(1);

} // namespace
