/*
 * How a user of a generated C encoder fills one record's message from the raw
 * record: each reported value derived with plain code, each text formatted or
 * cut into a NUL-terminated buffer of its own, every field set together with
 * its presence flag. protobuf-c and nanopb both name a proto2 optional field
 * `f` and its flag `has_f`; they differ in how a message holds a text. A peer
 * file defines PEER_SET(m, f, v) and PEER_TEXT(m, f, text) for its generator,
 * then includes this file (once, in its own translation unit).
 */
#ifndef MDTLM_BENCH_PEERS_C_PEER_FILL_H
#define MDTLM_BENCH_PEERS_C_PEER_FILL_H

#include <charconv>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "flow_records.h"
#include "mdtlm_vraldcn.h"

namespace {

/* The class and the type of a member pointer: a peer reaches its sample's
 * list and records through them. */
template <typename T>
struct MemberOf;
template <typename C, typename M>
struct MemberOf<M C::*> {
    using Class = C;
    using Type = M;
};

/* The texts of one record, each ending with a NUL. */
struct PeerTexts {
    char src[40], dst[40];
    char slot[33], chassis[33];
    char acl[65], warn[33];
};

/* A fixed-size text field of a record, up to its first NUL or its end. */
template <std::size_t N, std::size_t M>
void CutField(const char (&field)[N], char (&out)[M])
{
    static_assert(M > N, "room for the text and its NUL");
    const std::size_t len = strnlen(field, N);
    std::memcpy(out, field, len);
    out[len] = '\0';
}

template <std::size_t M>
void NumberText(uint32_t value, char (&out)[M])
{
    *std::to_chars(out, out + M - 1, value).ptr = '\0';
}

void AddressTexts(bool ipv6, const uint32_t *src, const uint32_t *dst, PeerTexts &t)
{
    flow_bench::FormatAddress(src, ipv6, t.src);
    flow_bench::FormatAddress(dst, ipv6, t.dst);
}

/* The values the flow and flow-hop records share, by the same field names. */
template <typename Rec, typename Msg>
void FillFlowShared(const Rec &r, PeerTexts &t, Msg &m)
{
    using namespace flow_bench;
    CutField(r.chassisId, t.chassis);
    CutField(r.slotId, t.slot);
    PEER_SET(m, flow_id, FlowId(r.flowIdHigh, r.flowIdLow));
    PEER_SET(m, direction, r.direction == 1 ? 1u : 4u);
    PEER_SET(m, if_index, r.ifIndex);
    PEER_SET(m, interval, r.interval);
    PEER_SET(m, measure_mode, r.measureMode);
    PEER_SET(m, error_info, r.errorInfo);
    PEER_SET(m, error_info_ext, r.errorInfoExt);
    PEER_SET(m, period_id, r.periodId);
    PEER_SET(m, packet_count, r.packetCount);
    PEER_SET(m, byte_count, r.byteCount);
    PEER_SET(m, timestamp_second, r.timestampSecond);
    PEER_SET(m, timestamp_nanosecond, r.timestampNanosecond);
    PEER_SET(m, ttl, r.ttl);
    PEER_SET(m, vlan, r.vlan);
    PEER_SET(m, tunnel_mode, TunnelMode(r.tunnelFlag, r.tunnelType));
    const bool tunnelled = r.tunnelFlag == 1;
    m.has_tunnel_id = tunnelled;
    m.tunnel_id = r.tunnelId;
    m.has_outer_ttl = tunnelled;
    m.outer_ttl = r.outerTtl;
    PEER_SET(m, queue_pair, r.queuePair);
    PEER_SET(m, sequence_number, r.sequenceNumber);
    PEER_TEXT(m, chassis_id, t.chassis);
    PEER_TEXT(m, slot_id, t.slot);
}

template <typename Msg>
void Fill(const MDTLM_FLOW_STATS_REC &r, PeerTexts &t, Msg &m)
{
    AddressTexts(r.addressFamily == 2, r.srcAddr, r.dstAddr, t);
    FillFlowShared(r, t, m);
    PEER_SET(m, address_family, r.addressFamily == 1 ? 0u : 1u);
    PEER_TEXT(m, source_ip, t.src);
    PEER_TEXT(m, destination_ip, t.dst);
    PEER_SET(m, protocol, r.protocol);
    PEER_SET(m, source_port, r.srcPort);
    PEER_SET(m, destination_port, r.dstPort);
}

template <typename Msg>
void Fill(const MDTLM_FLOWHOP_STATS_REC &r, PeerTexts &t, Msg &m)
{
    FillFlowShared(r, t, m);
    PEER_SET(m, maximum_delay, uint32_t(r.maximumDelay << 8));
    PEER_SET(m, total_delay, r.totalDelay << 8);
    PEER_SET(m, total_count, r.totalCount);
}

template <typename Msg>
void Fill(const MDTLM_ZELK_CACHE_REC &r, PeerTexts &t, Msg &m)
{
    NumberText(r.slotId, t.slot);
    AddressTexts(false, &r.sourceIp, &r.destinationIp, t);
    PEER_TEXT(m, slot_id, t.slot);
    PEER_TEXT(m, source_ip, t.src);
    PEER_TEXT(m, destination_ip, t.dst);
    PEER_SET(m, protocol_id, r.protocolId);
    PEER_SET(m, l4_source_port, r.l4SourcePort);
    PEER_SET(m, l4_destination_port, r.l4DestinationPort);
    PEER_SET(m, if_index, r.ifIndex);
    PEER_SET(m, detect_timestamp_second, r.detectTimestampSecond);
    PEER_SET(m, state, r.state);
    PEER_SET(m, seed, r.seed);
    PEER_SET(m, recovery_count, r.recoveryCount);
    PEER_SET(m, sequence_number, r.sequenceNumber);
    PEER_SET(m, recovery_mode, r.recoveryMode);
    PEER_SET(m, op_mode, r.opMode);
}

template <typename Msg>
void Fill(const MDTLM_QUMA_RESULT_REC &r, PeerTexts &t, Msg &m)
{
    CutField(r.aclName, t.acl);
    CutField(r.warnInfo, t.warn);
    PEER_SET(m, id, r.id);
    PEER_SET(m, period_id, r.periodId);
    PEER_SET(m, protocol, r.protocol);
    PEER_SET(m, rule_id, r.ruleId);
    PEER_SET(m, acl_number, r.aclNumber);
    PEER_TEXT(m, acl_name, t.acl);
    PEER_SET(m, vxlan_reserved_value, r.vxlanReservedValue);
    PEER_SET(m, vxlan_reserved_value_second, r.vxlanReservedValueSecond);
    PEER_SET(m, input_packets, r.inputPackets);
    PEER_SET(m, output_packets, r.outputPackets);
    PEER_TEXT(m, warn_info, t.warn);
    PEER_SET(m, time_stamp, r.timeStamp);
}

template <typename Msg>
void Fill(const MDTLM_SRVTLM_FLOW_STATS_REC &r, PeerTexts &t, Msg &m)
{
    AddressTexts(r.addressFamily == 1, r.srcIp, r.dstIp, t);
    PEER_SET(m, access_type, r.accessType);
    PEER_SET(m, address_family, r.addressFamily);
    PEER_TEXT(m, source_ip, t.src);
    PEER_TEXT(m, destination_ip, t.dst);
    PEER_SET(m, logical_unit_num, r.logicalUnitNum);
    PEER_SET(m, period_id, r.periodId);
    PEER_SET(m, if_index, r.ifIndex);
    PEER_SET(m, measure_mode, r.measureMode);
    PEER_SET(m, read_io_avg_latency, r.readIoAvgLatency);
    PEER_SET(m, read_dal, r.readDal);
    PEER_SET(m, read_iops, r.readIops);
    PEER_SET(m, read_io_avg_size, r.readIoAvgSize);
    PEER_SET(m, read_pending_io_cnt, r.readPendingIoCnt);
    PEER_SET(m, write_io_avg_latency, r.writeIoAvgLatency);
    PEER_SET(m, write_dal, r.writeDal);
    PEER_SET(m, write_dpl, r.writeDpl);
    PEER_SET(m, write_iops, r.writeIops);
    PEER_SET(m, write_io_avg_size, r.writeIoAvgSize);
    PEER_SET(m, write_pending_io_cnt, r.writePendingIoCnt);
    PEER_SET(m, error_info, r.errorInfo);
    PEER_SET(m, interval, r.interval);
    PEER_SET(m, sequence_number, r.sequenceNumber);
}

template <typename Msg>
void Fill(const MDTLM_SRVTLM_FCTFLOW_STATS_REC &r, PeerTexts &t, Msg &m)
{
    AddressTexts(r.addressFamily == 1, r.srcIp, r.dstIp, t);
    NumberText(r.slotId, t.slot);
    PEER_SET(m, address_family, r.addressFamily);
    PEER_TEXT(m, source_ip, t.src);
    PEER_TEXT(m, destination_ip, t.dst);
    PEER_SET(m, period_id, r.periodId);
    PEER_TEXT(m, slot_id, t.slot);
    PEER_SET(m, source_if_index, r.srcIfIndex);
    PEER_SET(m, destination_if_index, r.dstIfIndex);
    PEER_SET(m, interface_change_status, r.interfaceChangeStatus);
    PEER_SET(m, fct_max, r.fctMax);
    PEER_SET(m, fct_min, r.fctMin);
    PEER_SET(m, fct_mean, r.fctMean);
    PEER_SET(m, fet_max, r.fetMax);
    PEER_SET(m, fet_min, r.fetMin);
    PEER_SET(m, fet_mean, r.fetMean);
    PEER_SET(m, nak_packet_number, r.nakPacketNumber);
    PEER_SET(m, rdma_packet_number, r.rdmaPacketNumber);
    PEER_SET(m, rdma_message_number, r.rdmaMessageNumber);
    PEER_SET(m, error_info, r.errorInfo);
    PEER_SET(m, sequence_number, r.sequenceNumber);
}

} // namespace

#endif /* MDTLM_BENCH_PEERS_C_PEER_FILL_H */
