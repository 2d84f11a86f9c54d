/*
 * Records of the six sensors in which every reported field holds a distinct
 * value, and the fields a collector must read back from them.
 */
#ifndef MDTLM_TESTS_SENSORS_SENSOR_RECORDS_H
#define MDTLM_TESTS_SENSORS_SENSOR_RECORDS_H

#include <cstring>
#include <string>
#include <tuple>
#include <vector>

#include "sensor_check.h"

namespace sensor_test {

inline constexpr const Schema &kFlowSchema = kSampleSchemas[MDTLM_SENSOR_VRAL_FLOW - 1];
inline constexpr const Schema &kHopSchema = kSampleSchemas[MDTLM_SENSOR_VRAL_FLOWHOP - 1];
inline constexpr const Schema &kSrvSchema = kSampleSchemas[MDTLM_SENSOR_SRVTLM_FLOW - 1];
inline constexpr const Schema &kQumaSchema = kSampleSchemas[MDTLM_SENSOR_QUMA_RESULT - 1];
inline constexpr const Schema &kFctSchema = kSampleSchemas[MDTLM_SENSOR_SRVTLM_FCTFLOW - 1];
inline constexpr const Schema &kZelkSchema = kSampleSchemas[MDTLM_SENSOR_ZELK_CACHE - 1];

/* ------------------------------------------------------ flow and flow-hop */

/* IPv4 (192.168.10.1 to 10.0.0.2), unicast, tunnelled with tunnel type 2. */
inline MDTLM_FLOW_STATS_REC FlowRecord()
{
    return {.ttl = 61, .outerTtl = 62, .tunnelId = 70001, .queuePair = 9, .measureMode = 2, .tunnelType = 2,
            .tunnelFlag = 1, .interval = 1000, .castType = 1, .sequenceNumber = 0xDEADBEEF,
            .chassisId = "chassis-1", .slotId = "slot-3", .srcAddr = {0xC0A80A01}, .dstAddr = {0x0A000002},
            .addressFamily = 1, .protocol = 17, .srcPort = 5000, .dstPort = 65535, .flowIdHigh = 4097,
            .flowIdLow = 0x12345, .ifIndex = 33, .vlan = 4094, .direction = 2, .periodId = 5,
            .reportPeriodIndex = 70, .timestampSecond = 1700000000, .timestampNanosecond = 999999999,
            .packetCount = (1ull << 40) + 3, .byteCount = (1ull << 50) + 7, .errorInfoExt = 0x80000001,
            .errorInfo = 200};
}

inline MDTLM_FLOW_STATS_REC FlowRecordIpv6()
{
    MDTLM_FLOW_STATS_REC r = FlowRecord();
    r.addressFamily = 2;
    const uint32_t src[4] = {0x20010db8, 0, 0, 1}, dst[4] = {0xfe800000, 1, 0xabcd0000, 0xffffffff};
    std::memcpy(r.srcAddr, src, sizeof(src));
    std::memcpy(r.dstAddr, dst, sizeof(dst));
    return r;
}

/* Tunnel type 1; delays 2^24 + 1 and 3 (reported 256 and 768), total count 2^32 + 5. */
inline MDTLM_FLOWHOP_STATS_REC FlowHopRecord()
{
    return {.ttl = 41, .outerTtl = 42, .tunnelId = 80002, .queuePair = 12, .measureMode = 3, .tunnelType = 1,
            .tunnelFlag = 1, .interval = 2000, .castType = 1, .sequenceNumber = 0xDEADBEEF,
            .chassisId = "hop-chassis", .slotId = "hop-slot", .flowIdHigh = 0x3FF, .flowIdLow = 0x100001,
            .ifIndex = 44, .vlan = 100, .direction = 1, .periodId = 66, .timestampSecond = 1700000100,
            .timestampNanosecond = 5, .maximumDelay = 16777217, .totalDelay = 3, .totalCount = kTwo32 + 5,
            .packetCount = kTwo32 + 11, .byteCount = (1ull << 45) + 13, .errorInfoExt = 77, .errorInfo = 1};
}

template <typename Rec>
uint64_t FlowIdOf(const Rec &r)
{
    return (uint64_t{r.flowIdHigh} << 20) | r.flowIdLow;
}
inline uint32_t TunnelModeOf(uint32_t flag, uint32_t type) { return flag != 1 ? 1 : type == 1 ? 3 : type == 2 ? 4 : 1; }

/* A key of the flow templates: JSON writes it with '-', GPB with '_'. */
inline FieldCase F(const std::string &key, Value gpb, Value json)
{
    std::string name = key;
    std::replace(name.begin(), name.end(), '-', '_');
    return {name, key, std::move(gpb), std::move(json)};
}
inline FieldCase F(const std::string &key, uint64_t v) { return F(key, N(v), N(v)); }
inline FieldCase F(const std::string &key, const std::string &v) { return F(key, T(v), T(v)); }

/* Tunnel id and outer TTL reach GPB only for a tunnelled flow (flag 1); JSON always carries them. */
template <typename Rec>
std::vector<FieldCase> Gated(const Rec &r, std::vector<FieldCase> fields)
{
    for (FieldCase &f : fields) {
        if (r.tunnelFlag != 1 && (f.jsonKey == "tunnel-id" || f.jsonKey == "outer-ttl")) {
            f.gpbName.clear();
        }
    }
    return fields;
}

inline std::vector<FieldCase> FlowFields(const MDTLM_FLOW_STATS_REC &r, uint32_t seq, const std::string &src,
                                         const std::string &dst)
{
    return Gated(r, {F("flow-id", FlowIdOf(r)), F("direction", r.direction == 1 ? 1 : 4),
                     F("address-family", r.addressFamily == 1 ? 0 : 1), F("source-ip", src),
                     F("destination-ip", dst), F("source-port", r.srcPort), F("destination-port", r.dstPort),
                     F("protocol", r.protocol), F("if-index", r.ifIndex), F("error-info", r.errorInfo),
                     F("error-info-ext", r.errorInfoExt), F("interval", r.interval), F("period-id", r.periodId),
                     F("packet-count", r.packetCount), F("byte-count", r.byteCount),
                     F("timestamp-second", r.timestampSecond), F("timestamp-nanosecond", r.timestampNanosecond),
                     F("ttl", r.ttl), F("measure-mode", r.measureMode), F("vlan", r.vlan),
                     F("queue-pair", r.queuePair), F("tunnel-mode", TunnelModeOf(r.tunnelFlag, r.tunnelType)),
                     F("tunnel-id", r.tunnelId), F("outer-ttl", r.outerTtl), F("sequence-number", seq),
                     F("chassis-id", Text(r.chassisId)), F("slot-id", Text(r.slotId))});
}

/* Delays are reported shifted by 8 within 32 bits; JSON shows the total count's low 32 bits. */
inline std::vector<FieldCase> FlowHopFields(const MDTLM_FLOWHOP_STATS_REC &r, uint32_t seq)
{
    return Gated(r, {F("flow-id", FlowIdOf(r)), F("direction", r.direction == 1 ? 1 : 4),
                     F("if-index", r.ifIndex), F("error-info", r.errorInfo), F("error-info-ext", r.errorInfoExt),
                     F("period-id", r.periodId), F("packet-count", r.packetCount), F("byte-count", r.byteCount),
                     F("timestamp-second", r.timestampSecond), F("timestamp-nanosecond", r.timestampNanosecond),
                     F("ttl", r.ttl), F("measure-mode", r.measureMode),
                     F("maximum-delay", uint32_t(r.maximumDelay << 8)), F("total-delay", uint64_t{r.totalDelay} << 8),
                     F("total-count", N(r.totalCount), N(r.totalCount & 0xFFFFFFFFu)), F("interval", r.interval),
                     F("vlan", r.vlan), F("tunnel-mode", TunnelModeOf(r.tunnelFlag, r.tunnelType)),
                     F("tunnel-id", r.tunnelId), F("outer-ttl", r.outerTtl), F("queue-pair", r.queuePair),
                     F("sequence-number", seq), F("chassis-id", Text(r.chassisId)), F("slot-id", Text(r.slotId))});
}

/* ------------------------------------------------------ export flow cache */

/* A record with the texts its encodings must show. */
struct ZelkCase {
    MDTLM_ZELK_CACHE_REC rec;
    const char *src, *dst, *state, *recovery, *op;
};

inline std::vector<FieldCase> ZelkFields(const ZelkCase &c)
{
    const MDTLM_ZELK_CACHE_REC &r = c.rec;
    return {F("slot-id", std::to_string(r.slotId)), F("source-ip", c.src), F("destination-ip", c.dst),
            F("protocol-id", N(r.protocolId), T("tcp")), F("l4-source-port", r.l4SourcePort),
            F("l4-destination-port", r.l4DestinationPort), F("if-index", r.ifIndex),
            F("detect-timestamp-second", r.detectTimestampSecond), F("state", N(r.state), T(c.state)),
            F("seed", r.seed), F("recovery-count", r.recoveryCount), F("sequence-number", r.sequenceNumber),
            F("recovery-mode", N(r.recoveryMode), T(c.recovery)), F("op-mode", N(r.opMode), T(c.op))};
}

/* Between them every value that has a text. */
inline const ZelkCase kZelk[] = {
    {{3, 0x0A000001, 0xC0A80A01, 6, 443, 51000, 17, 1700000000, 2, 0xFFFFFFFF, 4, 99, 2, 3}, "10.0.0.1",
     "192.168.10.1", "reach-limit", "underlay-overlay", "tcp-reserved-value-isolate-outbound"},
    {{0xFFFFFFFF, 0xFFFFFFFF, 0, 6, 0, 65535, 0, 0, 0, 0, 0, 0xFFFFFFFF, 3, 1}, "255.255.255.255", "0.0.0.0",
     "success", "none", "auto-fail-detection"},
    {{0, 0x01020304, 0x7F000001, 6, 1, 2, 3, 4, 1, 5, 6, 7, 3, 2}, "1.2.3.4", "127.0.0.1", "failed", "none",
     "manual-fail-recovery"},
    {{9, 0, 0, 6, 0, 0, 0, 0, 3, 0, 0, 0, 2, 4}, "0.0.0.0", "0.0.0.0", "disable", "underlay-overlay", "none"},
};

/* ------------------------------------------------------ result statistics */

inline MDTLM_QUMA_RESULT_REC QumaRecord(uint32_t id, uint32_t protocol, const std::string &acl,
                                        const std::string &warn, uint64_t in, uint64_t out)
{
    MDTLM_QUMA_RESULT_REC r{id, id + 100, protocol, id * 3, 3000 + id, {}, 0x11223344, 0x55667788, 0xDEADBEEF,
                            in, out, 50, {}, 1700000000 + id};
    std::memcpy(r.aclName, acl.data(), std::min(acl.size(), sizeof(r.aclName)));
    std::memcpy(r.warnInfo, warn.data(), std::min(warn.size(), sizeof(r.warnInfo)));
    return r;
}

/* Texts that fill their fields are followed by non-zero bytes, which must not show. */
inline const MDTLM_QUMA_RESULT_REC kQumaFull =
    QumaRecord(7, 3, std::string(64, 'A'), std::string(32, 'w'), kTwo32 + 5, UINT64_MAX);

inline std::vector<FieldCase> QumaFields(const MDTLM_QUMA_RESULT_REC &r, const char *protocolName)
{
    return {Num("id", r.id),
            Num("period_id", r.periodId),
            {"protocol", "protocol", N(r.protocol), T(protocolName)},
            {"rule_id", "rule_id", N(r.ruleId), T(std::to_string(r.ruleId))},
            Num("acl_number", r.aclNumber),
            Txt("acl_name", Text(r.aclName)),
            Num("vxlan_reserved_value", r.vxlanReservedValue),
            F("vxlan-reserved-value-second", r.vxlanReservedValueSecond),
            Num("input_packets", r.inputPackets),
            Num("output_packets", r.outputPackets),
            Txt("warn_info", Text(r.warnInfo)),
            Num("time_stamp", r.timeStamp)};
}

/* ------------------------------------------------ I/O service flow statistics */

constexpr const char *kSrvV6Src = "2001:db8:0:0:0:0:0:1";
constexpr const char *kSrvV6Dst = "fe80:0:0:0:21a:2bff:fe3c:4d5e";

inline MDTLM_SRVTLM_FLOW_STATS_REC SrvtlmRecord(uint8_t family, uint32_t seq)
{
    MDTLM_SRVTLM_FLOW_STATS_REC r{};
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
    std::tie(r.logicalUnitNum, r.periodId, r.ifIndex, r.measureMode) = std::make_tuple(5, 6, 0xFFFF, 3);
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

inline std::vector<FieldCase> SrvtlmFields(const MDTLM_SRVTLM_FLOW_STATS_REC &r, const std::string &src,
                                           const std::string &dst)
{
    return {Num("access_type", r.accessType), Num("address_family", r.addressFamily), Txt("source_ip", src),
            Txt("destination_ip", dst), Num("logical_unit_num", r.logicalUnitNum), Num("period_id", r.periodId),
            Num("if_index", r.ifIndex), Num("measure_mode", r.measureMode),
            Num("read_io_avg_latency", r.readIoAvgLatency), Num("read_dal", r.readDal),
            Num("read_iops", r.readIops), Num("read_io_avg_size", r.readIoAvgSize),
            Num("read_pending_io_cnt", r.readPendingIoCnt), Num("write_io_avg_latency", r.writeIoAvgLatency),
            Num("write_dal", r.writeDal), Num("write_dpl", r.writeDpl), Num("write_iops", r.writeIops),
            Num("write_io_avg_size", r.writeIoAvgSize), Num("write_pending_io_cnt", r.writePendingIoCnt),
            Num("error_info", r.errorInfo), Num("interval", r.interval),
            Num("sequence_number", r.sequenceNumber)};
}

/* ------------------------------------------------ I/O service flow throughput */

inline MDTLM_SRVTLM_FCTFLOW_STATS_REC FctRecord(uint32_t family, uint32_t seq)
{
    MDTLM_SRVTLM_FCTFLOW_STATS_REC r{0xFFFFFFFF, family, {}, {}, 40, 3, 11, 12, 1, 0xFFFFFFFF, 1, 600,
                                     kTwo32 + 1, 5, UINT64_MAX, 7, 8, 9, 10, seq};
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

/* FET values at full 64-bit width. */
inline std::vector<FieldCase> FctFields(const MDTLM_SRVTLM_FCTFLOW_STATS_REC &r, const std::string &src,
                                        const std::string &dst)
{
    return {Num("address_family", r.addressFamily), Txt("source_ip", src), Txt("destination_ip", dst),
            Num("period_id", r.periodId), Txt("slot_id", std::to_string(r.slotId)),
            Num("source_if_index", r.srcIfIndex), Num("destination_if_index", r.dstIfIndex),
            Num("interface_change_status", r.interfaceChangeStatus), Num("fct_max", r.fctMax),
            Num("fct_min", r.fctMin), Num("fct_mean", r.fctMean), Num("fet_max", r.fetMax),
            Num("fet_min", r.fetMin), Num("fet_mean", r.fetMean), Num("nak_packet_number", r.nakPacketNumber),
            Num("rdma_packet_number", r.rdmaPacketNumber), Num("rdma_message_number", r.rdmaMessageNumber),
            Num("error_info", r.errorInfo), Num("sequence_number", r.sequenceNumber)};
}

} // namespace sensor_test

#endif /* MDTLM_TESTS_SENSORS_SENSOR_RECORDS_H */
