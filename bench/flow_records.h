/*
 * The flow and flow-hop records the benchmarks encode, and their reported
 * values derived from the raw record the way a user of another encoder would
 * (the same values the plug-in reports), in the plug-in's body order.
 */
#ifndef MDTLM_BENCH_FLOW_RECORDS_H
#define MDTLM_BENCH_FLOW_RECORDS_H

#include <charconv>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "mdtlm_vraldcn.h"

namespace flow_bench {

/* The flow identification, counters and errors both records carry, past the
 * head they share. */
template <typename Rec>
inline void SetSharedValues(Rec &r)
{
    r.flowIdHigh = 4097;
    r.flowIdLow = 0x12345;
    r.ifIndex = 33;
    r.vlan = 4094;
    r.direction = 1;
    r.periodId = 5;
    r.timestampSecond = 1700000000;
    r.timestampNanosecond = 999999999;
    r.packetCount = 123456789;
    r.byteCount = 98765432100;
    r.errorInfoExt = 3;
    r.errorInfo = 1;
}

inline MDTLM_FLOW_STATS_REC MakeFlow(bool ipv6)
{
    MDTLM_FLOW_STATS_REC r{};
    r.ttl = 61;
    r.outerTtl = 62;
    r.tunnelId = 70001;
    r.queuePair = 9;
    r.measureMode = 2;
    r.tunnelType = 2;
    r.tunnelFlag = 1;
    r.interval = 1000;
    r.castType = 1;
    r.sequenceNumber = 123456;
    std::strcpy(r.chassisId, "chassis-0001");
    std::strcpy(r.slotId, "slot-3");
    const uint32_t src6[4] = {0x20010db8, 0, 0, 1}, dst6[4] = {0xfe800000, 1, 0xabcd0000, 0xffffffff};
    const uint32_t src4[4] = {0xC0A80A01}, dst4[4] = {0x0A000002};
    std::memcpy(r.srcAddr, ipv6 ? src6 : src4, sizeof(r.srcAddr));
    std::memcpy(r.dstAddr, ipv6 ? dst6 : dst4, sizeof(r.dstAddr));
    r.addressFamily = ipv6 ? 2 : 1;
    r.protocol = 17;
    r.srcPort = 5000;
    r.dstPort = 443;
    r.reportPeriodIndex = 70;
    SetSharedValues(r);
    return r;
}

inline MDTLM_FLOWHOP_STATS_REC MakeFlowHop()
{
    const MDTLM_FLOW_STATS_REC flow = MakeFlow(false);
    MDTLM_FLOWHOP_STATS_REC r{};
    std::memcpy(&r, &flow, offsetof(MDTLM_FLOW_STATS_REC, srcAddr)); /* the head both records share */
    SetSharedValues(r);
    r.maximumDelay = 5000;
    r.totalDelay = 700000;
    r.totalCount = 1000;
    return r;
}

/* ------------------------------------------- the reported values, derived */

/* One record's reported values in body order, as the reference encoders
 * derive them from the raw record. */
struct Field {
    uint32_t number;
    uint64_t value;
    const char *text; /* null for integers */
};

struct Body {
    Field fields[32];
    int count = 0;
    char src[40], dst[40], chassis[33], slot[33];

    void Int(uint32_t number, uint64_t value) { fields[count++] = {number, value, nullptr}; }
    void Str(uint32_t number, const char *text) { fields[count++] = {number, 0, text}; }
};

inline uint64_t FlowId(uint32_t high, uint32_t low) { return (uint64_t{high} << 20) | low; }
inline uint32_t TunnelMode(uint32_t flag, uint32_t type) { return flag != 1 ? 1 : type == 1 ? 3 : type == 2 ? 4 : 1; }

/* Address texts in plain code, as a user of a generated encoder would write
 * them: each number with std::to_chars and its separator. */
inline void FormatAddress(const uint32_t *words, bool ipv6, char (&out)[40])
{
    char *pos = out;
    if (ipv6) {
        for (int i = 0; i < 8; ++i) {
            const uint32_t group = (words[i / 2] >> (i % 2 == 0 ? 16 : 0)) & 0xFFFF;
            pos = std::to_chars(pos, out + sizeof(out), group, 16).ptr;
            *pos++ = ':';
        }
    } else {
        for (int shift = 24; shift >= 0; shift -= 8) {
            pos = std::to_chars(pos, out + sizeof(out), (words[0] >> shift) & 0xFF).ptr;
            *pos++ = '.';
        }
    }
    pos[-1] = '\0';
}

template <typename Rec>
void Texts(const Rec &r, Body *b)
{
    const size_t chassis = strnlen(r.chassisId, 32), slot = strnlen(r.slotId, 32);
    std::memcpy(b->chassis, r.chassisId, chassis);
    b->chassis[chassis] = '\0';
    std::memcpy(b->slot, r.slotId, slot);
    b->slot[slot] = '\0';
}

/* Field numbers of the statistics and packet values both records carry, in
 * the order they are written, and of the closing sequence number and texts. */
struct SharedNumbers {
    uint32_t errorInfo, errorInfoExt, periodId, packetCount, byteCount, second, nanosecond;
    uint32_t ttl, vlan, tunnelMode, tunnelId, outerTtl, queuePair;
    uint32_t sequenceNumber, chassis, slot;
};

inline constexpr SharedNumbers kFlowNumbers = {13, 33, 15, 16, 17, 18, 19, 21, 23, 36, 37, 38, 39, 35, 41, 42};
inline constexpr SharedNumbers kHopNumbers = {4, 23, 5, 6, 7, 8, 9, 11, 29, 30, 31, 32, 33, 28, 35, 36};

template <typename Rec>
inline void DeriveShared(const Rec &r, const SharedNumbers &n, Body *b)
{
    b->Int(n.errorInfo, r.errorInfo);
    b->Int(n.errorInfoExt, r.errorInfoExt);
    b->Int(n.periodId, r.periodId);
    b->Int(n.packetCount, r.packetCount);
    b->Int(n.byteCount, r.byteCount);
    b->Int(n.second, r.timestampSecond);
    b->Int(n.nanosecond, r.timestampNanosecond);
    b->Int(n.ttl, r.ttl);
    b->Int(n.vlan, r.vlan);
    b->Int(n.tunnelMode, TunnelMode(r.tunnelFlag, r.tunnelType));
    if (r.tunnelFlag == 1) {
        b->Int(n.tunnelId, r.tunnelId);
        b->Int(n.outerTtl, r.outerTtl);
    }
    b->Int(n.queuePair, r.queuePair);
}

template <typename Rec>
inline void DeriveClosing(const Rec &r, const SharedNumbers &n, Body *b)
{
    b->Int(n.sequenceNumber, r.sequenceNumber);
    b->Str(n.chassis, b->chassis);
    b->Str(n.slot, b->slot);
}

inline void Derive(const MDTLM_FLOW_STATS_REC &r, Body *b)
{
    Texts(r, b);
    FormatAddress(r.srcAddr, r.addressFamily == 2, b->src);
    FormatAddress(r.dstAddr, r.addressFamily == 2, b->dst);
    b->Int(1, FlowId(r.flowIdHigh, r.flowIdLow));
    b->Int(2, r.direction == 1 ? 1 : 4);
    b->Int(12, r.ifIndex);
    b->Int(14, r.interval);
    b->Int(25, r.measureMode);
    b->Int(3, r.addressFamily == 1 ? 0 : 1);
    b->Str(4, b->src);
    b->Str(5, b->dst);
    b->Int(10, r.protocol);
    b->Int(8, r.srcPort);
    b->Int(9, r.dstPort);
    DeriveShared(r, kFlowNumbers, b);
    DeriveClosing(r, kFlowNumbers, b);
}

inline void Derive(const MDTLM_FLOWHOP_STATS_REC &r, Body *b)
{
    Texts(r, b);
    b->Int(1, FlowId(r.flowIdHigh, r.flowIdLow));
    b->Int(2, r.direction == 1 ? 1 : 4);
    b->Int(3, r.ifIndex);
    b->Int(13, r.measureMode);
    b->Int(27, r.interval);
    DeriveShared(r, kHopNumbers, b);
    b->Int(14, uint32_t(r.maximumDelay << 8));
    b->Int(16, r.totalDelay << 8);
    b->Int(17, r.totalCount);
    DeriveClosing(r, kHopNumbers, b);
}

} // namespace flow_bench

#endif /* MDTLM_BENCH_FLOW_RECORDS_H */
