/*
 * The six sensors' record layouts, field names and value plans. Offsets come
 * from the record structures themselves, so the table cannot drift from them.
 */
#include "sensor_table.h"

#include <cstddef>
#include <cstring>

#include "mdtlm_types.h"

namespace mdtlm::tools {
namespace {

using K = FieldKind;
using P = Pick;

/* Value lists the generator draws from. */
constexpr uint64_t kTunnelTypeOdd[] = {7};
constexpr uint64_t kFlowFamilyOdd[] = {3};
constexpr uint64_t kIoFamilyOdd[] = {2};
constexpr uint64_t kIpProtocols[] = {6, 17, 1, 47};
constexpr uint64_t kServicePorts[] = {80, 443, 4791, 8080, 179};
constexpr uint64_t kErrorCodes[] = {1, 2, 7};
constexpr uint64_t kErrorCodesExt[] = {1, 0x100, 0x80000001};
constexpr uint64_t kDelayOdd[] = {16777217, 0xFFFFFFFFu};
constexpr uint64_t kIntervals[] = {1, 5, 10, 30};
constexpr uint64_t kResultProtocolOdd[] = {4, 9};
constexpr uint64_t kCacheProtocolOdd[] = {17, 1};
constexpr uint64_t kCacheStateOdd[] = {4, 9};
constexpr uint64_t kRecoveryModeOdd[] = {0, 1, 5};
constexpr uint64_t kOpModeOdd[] = {0, 5};
constexpr uint64_t kRareZeroOne[] = {1};

constexpr const char *kChassis[] = {"chassis-1", "chassis-2", "cluster-a"};
constexpr const char *kSlots[] = {"1", "2/0", "3/1", "lpu-4"};
constexpr const char *kAclNames[] = {"acl-edge-in", "acl-core", "tenant-blue-egress", ""};
constexpr const char *kWarnings[] = {"", "", "loss above threshold", "no response"};

#define MDTLM_F(rec, member) static_cast<uint32_t>(offsetof(rec, member))

constexpr FieldDesc kFlowFields[] = {
    {"ttl", MDTLM_F(MDTLM_FLOW_STATS_REC, ttl), K::U32, 4, P::Range, 1, 255},
    {"outer-ttl", MDTLM_F(MDTLM_FLOW_STATS_REC, outerTtl), K::U32, 4, P::Range, 1, 255},
    {"tunnel-id", MDTLM_F(MDTLM_FLOW_STATS_REC, tunnelId), K::U32, 4, P::Range, 1, 4096},
    {"queue-pair", MDTLM_F(MDTLM_FLOW_STATS_REC, queuePair), K::U32, 4, P::Range, 0, 63},
    {"measure-mode", MDTLM_F(MDTLM_FLOW_STATS_REC, measureMode), K::U32, 4, P::Range, 0, 2},
    {"tunnel-type", MDTLM_F(MDTLM_FLOW_STATS_REC, tunnelType), K::U32, 4, P::Rare, 1, 2, kTunnelTypeOdd},
    {"tunnel-flag", MDTLM_F(MDTLM_FLOW_STATS_REC, tunnelFlag), K::U32, 4, P::Range, 0, 1},
    {"interval", MDTLM_F(MDTLM_FLOW_STATS_REC, interval), K::U32, 4, P::Choice, 0, 0, kIntervals},
    {"cast-type", MDTLM_F(MDTLM_FLOW_STATS_REC, castType), K::U32, 4, P::Range, 1, 2},
    {"sequence-number", MDTLM_F(MDTLM_FLOW_STATS_REC, sequenceNumber), K::U32, 4, P::Zero},
    {"chassis-id", MDTLM_F(MDTLM_FLOW_STATS_REC, chassisId), K::Text, 32, P::Choice, 0, 0, {}, kChassis, 31},
    {"slot-id", MDTLM_F(MDTLM_FLOW_STATS_REC, slotId), K::Text, 32, P::Choice, 0, 0, {}, kSlots, 31},
    {"source-ip", MDTLM_F(MDTLM_FLOW_STATS_REC, srcAddr), K::Address, 16, P::Address},
    {"destination-ip", MDTLM_F(MDTLM_FLOW_STATS_REC, dstAddr), K::Address, 16, P::Address},
    {"address-family", MDTLM_F(MDTLM_FLOW_STATS_REC, addressFamily), K::U8, 1, P::Rare, 1, 2, kFlowFamilyOdd},
    {"protocol", MDTLM_F(MDTLM_FLOW_STATS_REC, protocol), K::U8, 1, P::Choice, 0, 0, kIpProtocols},
    {"source-port", MDTLM_F(MDTLM_FLOW_STATS_REC, srcPort), K::U16, 2, P::Range, 1024, 65535},
    {"destination-port", MDTLM_F(MDTLM_FLOW_STATS_REC, dstPort), K::U16, 2, P::Choice, 0, 0, kServicePorts},
    {"flow-id-high", MDTLM_F(MDTLM_FLOW_STATS_REC, flowIdHigh), K::U32, 4, P::Range, 0, 3},
    {"flow-id-low", MDTLM_F(MDTLM_FLOW_STATS_REC, flowIdLow), K::U32, 4, P::Range, 1, 8},
    {"if-index", MDTLM_F(MDTLM_FLOW_STATS_REC, ifIndex), K::U32, 4, P::Range, 1, 48},
    {"vlan", MDTLM_F(MDTLM_FLOW_STATS_REC, vlan), K::U16, 2, P::Range, 1, 4094},
    {"direction", MDTLM_F(MDTLM_FLOW_STATS_REC, direction), K::U8, 1, P::Range, 1, 2},
    {"period-id", MDTLM_F(MDTLM_FLOW_STATS_REC, periodId), K::U32, 4, P::Period},
    {"report-period-index", MDTLM_F(MDTLM_FLOW_STATS_REC, reportPeriodIndex), K::U32, 4, P::Period},
    {"timestamp-second", MDTLM_F(MDTLM_FLOW_STATS_REC, timestampSecond), K::U32, 4, P::Clock},
    {"timestamp-nanosecond", MDTLM_F(MDTLM_FLOW_STATS_REC, timestampNanosecond), K::U32, 4, P::Nanos},
    {"packet-count", MDTLM_F(MDTLM_FLOW_STATS_REC, packetCount), K::U64, 8, P::Counter},
    {"byte-count", MDTLM_F(MDTLM_FLOW_STATS_REC, byteCount), K::U64, 8, P::Counter},
    {"error-info-ext", MDTLM_F(MDTLM_FLOW_STATS_REC, errorInfoExt), K::U32, 4, P::Rare, 0, 0, kErrorCodesExt},
    {"error-info", MDTLM_F(MDTLM_FLOW_STATS_REC, errorInfo), K::U8, 1, P::Rare, 0, 0, kErrorCodes},
};

constexpr FieldDesc kFlowHopFields[] = {
    {"ttl", MDTLM_F(MDTLM_FLOWHOP_STATS_REC, ttl), K::U32, 4, P::Range, 1, 255},
    {"outer-ttl", MDTLM_F(MDTLM_FLOWHOP_STATS_REC, outerTtl), K::U32, 4, P::Range, 1, 255},
    {"tunnel-id", MDTLM_F(MDTLM_FLOWHOP_STATS_REC, tunnelId), K::U32, 4, P::Range, 1, 4096},
    {"queue-pair", MDTLM_F(MDTLM_FLOWHOP_STATS_REC, queuePair), K::U32, 4, P::Range, 0, 63},
    {"measure-mode", MDTLM_F(MDTLM_FLOWHOP_STATS_REC, measureMode), K::U32, 4, P::Range, 0, 2},
    {"tunnel-type", MDTLM_F(MDTLM_FLOWHOP_STATS_REC, tunnelType), K::U32, 4, P::Rare, 1, 2, kTunnelTypeOdd},
    {"tunnel-flag", MDTLM_F(MDTLM_FLOWHOP_STATS_REC, tunnelFlag), K::U32, 4, P::Range, 0, 1},
    {"interval", MDTLM_F(MDTLM_FLOWHOP_STATS_REC, interval), K::U32, 4, P::Choice, 0, 0, kIntervals},
    {"cast-type", MDTLM_F(MDTLM_FLOWHOP_STATS_REC, castType), K::U32, 4, P::Range, 1, 2},
    {"sequence-number", MDTLM_F(MDTLM_FLOWHOP_STATS_REC, sequenceNumber), K::U32, 4, P::Zero},
    {"chassis-id", MDTLM_F(MDTLM_FLOWHOP_STATS_REC, chassisId), K::Text, 32, P::Choice, 0, 0, {}, kChassis, 31},
    {"slot-id", MDTLM_F(MDTLM_FLOWHOP_STATS_REC, slotId), K::Text, 32, P::Choice, 0, 0, {}, kSlots, 31},
    {"flow-id-high", MDTLM_F(MDTLM_FLOWHOP_STATS_REC, flowIdHigh), K::U32, 4, P::Range, 0, 3},
    {"flow-id-low", MDTLM_F(MDTLM_FLOWHOP_STATS_REC, flowIdLow), K::U32, 4, P::Range, 1, 8},
    {"if-index", MDTLM_F(MDTLM_FLOWHOP_STATS_REC, ifIndex), K::U32, 4, P::Range, 1, 48},
    {"vlan", MDTLM_F(MDTLM_FLOWHOP_STATS_REC, vlan), K::U16, 2, P::Range, 1, 4094},
    {"direction", MDTLM_F(MDTLM_FLOWHOP_STATS_REC, direction), K::U8, 1, P::Range, 1, 2},
    {"period-id", MDTLM_F(MDTLM_FLOWHOP_STATS_REC, periodId), K::U32, 4, P::Period},
    {"timestamp-second", MDTLM_F(MDTLM_FLOWHOP_STATS_REC, timestampSecond), K::U32, 4, P::Clock},
    {"timestamp-nanosecond", MDTLM_F(MDTLM_FLOWHOP_STATS_REC, timestampNanosecond), K::U32, 4, P::Nanos},
    {"maximum-delay", MDTLM_F(MDTLM_FLOWHOP_STATS_REC, maximumDelay), K::U32, 4, P::Rare, 0, 65535, kDelayOdd},
    {"total-delay", MDTLM_F(MDTLM_FLOWHOP_STATS_REC, totalDelay), K::U64, 8, P::Counter},
    {"total-count", MDTLM_F(MDTLM_FLOWHOP_STATS_REC, totalCount), K::U64, 8, P::Counter},
    {"packet-count", MDTLM_F(MDTLM_FLOWHOP_STATS_REC, packetCount), K::U64, 8, P::Counter},
    {"byte-count", MDTLM_F(MDTLM_FLOWHOP_STATS_REC, byteCount), K::U64, 8, P::Counter},
    {"error-info-ext", MDTLM_F(MDTLM_FLOWHOP_STATS_REC, errorInfoExt), K::U32, 4, P::Rare, 0, 0, kErrorCodesExt},
    {"error-info", MDTLM_F(MDTLM_FLOWHOP_STATS_REC, errorInfo), K::U8, 1, P::Rare, 0, 0, kErrorCodes},
};

constexpr FieldDesc kIoFlowFields[] = {
    {"access-type", MDTLM_F(MDTLM_SRVTLM_FLOW_STATS_REC, accessType), K::U8, 1, P::Range, 0, 2},
    {"address-family", MDTLM_F(MDTLM_SRVTLM_FLOW_STATS_REC, addressFamily), K::U8, 1, P::Rare, 0, 1, kIoFamilyOdd},
    {"source-ip", MDTLM_F(MDTLM_SRVTLM_FLOW_STATS_REC, srcIp), K::Address, 16, P::Address},
    {"destination-ip", MDTLM_F(MDTLM_SRVTLM_FLOW_STATS_REC, dstIp), K::Address, 16, P::Address},
    {"logical-unit-num", MDTLM_F(MDTLM_SRVTLM_FLOW_STATS_REC, logicalUnitNum), K::U32, 4, P::Range, 0, 15},
    {"period-id", MDTLM_F(MDTLM_SRVTLM_FLOW_STATS_REC, periodId), K::U32, 4, P::Period},
    {"if-index", MDTLM_F(MDTLM_SRVTLM_FLOW_STATS_REC, ifIndex), K::U16, 2, P::Range, 1, 48},
    {"measure-mode", MDTLM_F(MDTLM_SRVTLM_FLOW_STATS_REC, measureMode), K::U8, 1, P::Range, 0, 1},
    {"read-io-avg-latency", MDTLM_F(MDTLM_SRVTLM_FLOW_STATS_REC, readIoAvgLatency), K::U32, 4, P::Range, 20, 5000},
    {"write-io-avg-latency", MDTLM_F(MDTLM_SRVTLM_FLOW_STATS_REC, writeIoAvgLatency), K::U32, 4, P::Range, 20, 9000},
    {"read-dal", MDTLM_F(MDTLM_SRVTLM_FLOW_STATS_REC, readDal), K::U32, 4, P::Range, 0, 1000},
    {"write-dal", MDTLM_F(MDTLM_SRVTLM_FLOW_STATS_REC, writeDal), K::U32, 4, P::Range, 0, 1000},
    {"write-dpl", MDTLM_F(MDTLM_SRVTLM_FLOW_STATS_REC, writeDpl), K::U32, 4, P::Range, 0, 1000},
    {"read-iops", MDTLM_F(MDTLM_SRVTLM_FLOW_STATS_REC, readIops), K::U32, 4, P::Range, 0, 250000},
    {"write-iops", MDTLM_F(MDTLM_SRVTLM_FLOW_STATS_REC, writeIops), K::U32, 4, P::Range, 0, 150000},
    {"read-io-avg-size", MDTLM_F(MDTLM_SRVTLM_FLOW_STATS_REC, readIoAvgSize), K::U32, 4, P::Range, 512, 1048576},
    {"write-io-avg-size", MDTLM_F(MDTLM_SRVTLM_FLOW_STATS_REC, writeIoAvgSize), K::U32, 4, P::Range, 512, 1048576},
    {"read-pending-io-cnt", MDTLM_F(MDTLM_SRVTLM_FLOW_STATS_REC, readPendingIoCnt), K::U32, 4, P::Range, 0, 64},
    {"write-pending-io-cnt", MDTLM_F(MDTLM_SRVTLM_FLOW_STATS_REC, writePendingIoCnt), K::U32, 4, P::Range, 0, 64},
    {"interval", MDTLM_F(MDTLM_SRVTLM_FLOW_STATS_REC, interval), K::U32, 4, P::Choice, 0, 0, kIntervals},
    {"error-info", MDTLM_F(MDTLM_SRVTLM_FLOW_STATS_REC, errorInfo), K::U32, 4, P::Rare, 0, 0, kRareZeroOne},
    {"sequence-number", MDTLM_F(MDTLM_SRVTLM_FLOW_STATS_REC, sequenceNumber), K::U32, 4, P::Sequence},
};

constexpr FieldDesc kResultFields[] = {
    {"id", MDTLM_F(MDTLM_QUMA_RESULT_REC, id), K::U32, 4, P::Range, 1, 16},
    {"period-id", MDTLM_F(MDTLM_QUMA_RESULT_REC, periodId), K::U32, 4, P::Period},
    {"protocol", MDTLM_F(MDTLM_QUMA_RESULT_REC, protocol), K::U32, 4, P::Rare, 0, 3, kResultProtocolOdd},
    {"rule-id", MDTLM_F(MDTLM_QUMA_RESULT_REC, ruleId), K::U32, 4, P::Range, 1, 100},
    {"acl-number", MDTLM_F(MDTLM_QUMA_RESULT_REC, aclNumber), K::U32, 4, P::Range, 3000, 3999},
    {"acl-name", MDTLM_F(MDTLM_QUMA_RESULT_REC, aclName), K::Text, 64, P::Choice, 0, 0, {}, kAclNames, 64},
    {"vxlan-reserved-value", MDTLM_F(MDTLM_QUMA_RESULT_REC, vxlanReservedValue), K::U32, 4, P::Range, 0, 255},
    {"vxlan-reserved-value-second", MDTLM_F(MDTLM_QUMA_RESULT_REC, vxlanReservedValueSecond), K::U32, 4, P::Range,
     0, 255},
    {"input-packets", MDTLM_F(MDTLM_QUMA_RESULT_REC, inputPackets), K::U64, 8, P::Counter},
    {"output-packets", MDTLM_F(MDTLM_QUMA_RESULT_REC, outputPackets), K::U64, 8, P::Counter},
    {"loss-rate", MDTLM_F(MDTLM_QUMA_RESULT_REC, lossRate), K::U32, 4, P::Range, 0, 10000},
    {"warn-info", MDTLM_F(MDTLM_QUMA_RESULT_REC, warnInfo), K::Text, 32, P::Choice, 0, 0, {}, kWarnings, 32},
    {"time-stamp", MDTLM_F(MDTLM_QUMA_RESULT_REC, timeStamp), K::U32, 4, P::Clock},
};

constexpr FieldDesc kIoThroughputFields[] = {
    {"address-family", MDTLM_F(MDTLM_SRVTLM_FCTFLOW_STATS_REC, addressFamily), K::U32, 4, P::Rare, 0, 1,
     kIoFamilyOdd},
    {"source-ip", MDTLM_F(MDTLM_SRVTLM_FCTFLOW_STATS_REC, srcIp), K::Address, 16, P::Address},
    {"destination-ip", MDTLM_F(MDTLM_SRVTLM_FCTFLOW_STATS_REC, dstIp), K::Address, 16, P::Address},
    {"period-id", MDTLM_F(MDTLM_SRVTLM_FCTFLOW_STATS_REC, periodId), K::U32, 4, P::Period},
    {"slot-id", MDTLM_F(MDTLM_SRVTLM_FCTFLOW_STATS_REC, slotId), K::U32, 4, P::Range, 1, 8},
    {"source-if-index", MDTLM_F(MDTLM_SRVTLM_FCTFLOW_STATS_REC, srcIfIndex), K::U32, 4, P::Range, 1, 48},
    {"destination-if-index", MDTLM_F(MDTLM_SRVTLM_FCTFLOW_STATS_REC, dstIfIndex), K::U32, 4, P::Range, 1, 48},
    {"interface-change-status", MDTLM_F(MDTLM_SRVTLM_FCTFLOW_STATS_REC, interfaceChangeStatus), K::U32, 4,
     P::Range, 0, 1},
    {"fct-max", MDTLM_F(MDTLM_SRVTLM_FCTFLOW_STATS_REC, fctMax), K::U32, 4, P::Range, 1000, 900000},
    {"fct-min", MDTLM_F(MDTLM_SRVTLM_FCTFLOW_STATS_REC, fctMin), K::U32, 4, P::Range, 1, 1000},
    {"fct-mean", MDTLM_F(MDTLM_SRVTLM_FCTFLOW_STATS_REC, fctMean), K::U32, 4, P::Range, 100, 50000},
    {"fet-max", MDTLM_F(MDTLM_SRVTLM_FCTFLOW_STATS_REC, fetMax), K::U64, 8, P::Counter},
    {"fet-min", MDTLM_F(MDTLM_SRVTLM_FCTFLOW_STATS_REC, fetMin), K::U64, 8, P::Range, 0, 5000},
    {"fet-mean", MDTLM_F(MDTLM_SRVTLM_FCTFLOW_STATS_REC, fetMean), K::U64, 8, P::Counter},
    {"nak-packet-number", MDTLM_F(MDTLM_SRVTLM_FCTFLOW_STATS_REC, nakPacketNumber), K::U32, 4, P::Range, 0, 100},
    {"rdma-packet-number", MDTLM_F(MDTLM_SRVTLM_FCTFLOW_STATS_REC, rdmaPacketNumber), K::U32, 4, P::Range, 0,
     2000000},
    {"rdma-message-number", MDTLM_F(MDTLM_SRVTLM_FCTFLOW_STATS_REC, rdmaMessageNumber), K::U32, 4, P::Range, 0,
     200000},
    {"error-info", MDTLM_F(MDTLM_SRVTLM_FCTFLOW_STATS_REC, errorInfo), K::U32, 4, P::Rare, 0, 0, kRareZeroOne},
    {"sequence-number", MDTLM_F(MDTLM_SRVTLM_FCTFLOW_STATS_REC, sequenceNumber), K::U32, 4, P::Sequence},
};

constexpr FieldDesc kExportCacheFields[] = {
    {"slot-id", MDTLM_F(MDTLM_ZELK_CACHE_REC, slotId), K::U32, 4, P::Range, 1, 8},
    {"source-ip", MDTLM_F(MDTLM_ZELK_CACHE_REC, sourceIp), K::Ipv4, 4, P::Address},
    {"destination-ip", MDTLM_F(MDTLM_ZELK_CACHE_REC, destinationIp), K::Ipv4, 4, P::Address},
    {"protocol-id", MDTLM_F(MDTLM_ZELK_CACHE_REC, protocolId), K::U32, 4, P::Rare, 6, 6, kCacheProtocolOdd},
    {"l4-source-port", MDTLM_F(MDTLM_ZELK_CACHE_REC, l4SourcePort), K::U32, 4, P::Range, 1024, 65535},
    {"l4-destination-port", MDTLM_F(MDTLM_ZELK_CACHE_REC, l4DestinationPort), K::U32, 4, P::Choice, 0, 0,
     kServicePorts},
    {"if-index", MDTLM_F(MDTLM_ZELK_CACHE_REC, ifIndex), K::U32, 4, P::Range, 1, 48},
    {"detect-timestamp-second", MDTLM_F(MDTLM_ZELK_CACHE_REC, detectTimestampSecond), K::U32, 4, P::Clock},
    {"state", MDTLM_F(MDTLM_ZELK_CACHE_REC, state), K::U32, 4, P::Rare, 0, 3, kCacheStateOdd},
    {"seed", MDTLM_F(MDTLM_ZELK_CACHE_REC, seed), K::U32, 4, P::Range, 0, 0xFFFFFFFFu},
    {"recovery-count", MDTLM_F(MDTLM_ZELK_CACHE_REC, recoveryCount), K::U32, 4, P::Range, 0, 5},
    {"sequence-number", MDTLM_F(MDTLM_ZELK_CACHE_REC, sequenceNumber), K::U32, 4, P::Sequence},
    {"recovery-mode", MDTLM_F(MDTLM_ZELK_CACHE_REC, recoveryMode), K::U32, 4, P::Rare, 2, 3, kRecoveryModeOdd},
    {"op-mode", MDTLM_F(MDTLM_ZELK_CACHE_REC, opMode), K::U32, 4, P::Rare, 1, 4, kOpModeOdd},
};

#undef MDTLM_F

constexpr SensorDesc kSensors[] = {
    {MDTLM_SENSOR_VRAL_FLOW, "flow", "dravik-vral:vral/dravik-vral-statistics:flow-statistics/flow-statistic",
     sizeof(MDTLM_FLOW_STATS_REC), "flow_statistics.proto", "mdtlm.flow.Sample", "address-family", 1, 2,
     kFlowFields},
    {MDTLM_SENSOR_VRAL_FLOWHOP, "flow-hop",
     "dravik-vral:vral/dravik-vral-statistics:flow-hop-statistics/flow-hop-statistic",
     sizeof(MDTLM_FLOWHOP_STATS_REC), "flow_hop_statistics.proto", "mdtlm.flowhop.Sample", nullptr, 0, 0,
     kFlowHopFields},
    {MDTLM_SENSOR_SRVTLM_FLOW, "io-flow", "dravik-io-service-tlm:io-service-tlm/flow-statistics/flow-statistic",
     sizeof(MDTLM_SRVTLM_FLOW_STATS_REC), "io_service_flow_statistics.proto", "mdtlm.srvtlmflow.Sample",
     "address-family", 0, 1, kIoFlowFields},
    {MDTLM_SENSOR_QUMA_RESULT, "result", "dravik-quma:quma/result-statistics/result-statistic",
     sizeof(MDTLM_QUMA_RESULT_REC), "result_statistics.proto", "mdtlm.quma.Sample", nullptr, 0, 0, kResultFields},
    {MDTLM_SENSOR_SRVTLM_FCTFLOW, "io-throughput",
     "dravik-io-service-tlm:io-service-tlm/flow-throughput-statistics/flow-throughput-statistic",
     sizeof(MDTLM_SRVTLM_FCTFLOW_STATS_REC), "io_service_flow_throughput.proto", "mdtlm.srvtlmfct.Sample",
     "address-family", 0, 1, kIoThroughputFields},
    {MDTLM_SENSOR_ZELK_CACHE, "export-cache", "dravik-zelk:zelk/export-flow-caches/export-flow-cache",
     sizeof(MDTLM_ZELK_CACHE_REC), "export_flow_caches.proto", "mdtlm.zelk.Sample", nullptr, 0, 0,
     kExportCacheFields},
};

} // namespace

const FieldDesc *SensorDesc::Field(std::string_view name) const
{
    for (const FieldDesc &field : fields) {
        if (name == field.name) {
            return &field;
        }
    }
    return nullptr;
}

uint64_t SensorDesc::Family(const uint8_t *record) const
{
    const FieldDesc *field = familyField != nullptr ? Field(familyField) : nullptr;
    if (field == nullptr) {
        return 0;
    }
    uint64_t value = 0;
    std::memcpy(&value, record + field->offset, field->size); /* little-endian host */
    return value;
}

std::span<const SensorDesc> Sensors()
{
    return kSensors;
}

const SensorDesc *FindSensor(std::string_view nameOrPath)
{
    for (const SensorDesc &sensor : kSensors) {
        if (nameOrPath == sensor.shortName || nameOrPath == sensor.xpath ||
            nameOrPath == std::to_string(sensor.type)) {
            return &sensor;
        }
    }
    return nullptr;
}

const SensorDesc *SensorByType(uint32_t type)
{
    for (const SensorDesc &sensor : kSensors) {
        if (sensor.type == type) {
            return &sensor;
        }
    }
    return nullptr;
}

std::string SensorNameList()
{
    std::string names;
    for (const SensorDesc &sensor : kSensors) {
        names += names.empty() ? "" : ", ";
        names += sensor.shortName;
    }
    return names;
}

} // namespace mdtlm::tools
