/*
 * The export flow cache, result statistics and I/O service records the
 * benchmarks encode, and the texts a peer formats for itself from them with
 * plain code (addresses, slot numbers, fixed-size text fields).
 */
#ifndef MDTLM_BENCH_SENSOR_RECORDS_H
#define MDTLM_BENCH_SENSOR_RECORDS_H

#include <charconv>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "flow_records.h"
#include "mdtlm_vraldcn.h"

namespace sensor_bench {

/* Text forms the reference computes for itself. */
struct Texts {
    char slot[16];
    char src[40];
    char dst[40];
    std::string_view acl, warn;
};

inline void Ipv4Text(uint32_t a, char (&out)[40]) { flow_bench::FormatAddress(&a, false, out); }
inline void Ipv6Text(const uint32_t *w, char (&out)[40]) { flow_bench::FormatAddress(w, true, out); }

inline void AddressTexts(uint32_t family, const uint32_t *src, const uint32_t *dst, Texts &t)
{
    if (family == 1) {
        Ipv6Text(src, t.src);
        Ipv6Text(dst, t.dst);
    } else {
        Ipv4Text(src[0], t.src);
        Ipv4Text(dst[0], t.dst);
    }
}

inline void SlotText(uint32_t slot, Texts &t)
{
    *std::to_chars(t.slot, t.slot + sizeof(t.slot) - 1, slot).ptr = '\0';
}

template <size_t N>
inline std::string_view FieldText(const char (&field)[N])
{
    return std::string_view(field, strnlen(field, N));
}

inline void MakeTexts(const MDTLM_ZELK_CACHE_REC &r, Texts &t)
{
    SlotText(r.slotId, t);
    Ipv4Text(r.sourceIp, t.src);
    Ipv4Text(r.destinationIp, t.dst);
}
inline void MakeTexts(const MDTLM_QUMA_RESULT_REC &r, Texts &t)
{
    t.acl = FieldText(r.aclName);
    t.warn = FieldText(r.warnInfo);
}
inline void MakeTexts(const MDTLM_SRVTLM_FLOW_STATS_REC &r, Texts &t)
{
    AddressTexts(r.addressFamily, r.srcIp, r.dstIp, t);
}
inline void MakeTexts(const MDTLM_SRVTLM_FCTFLOW_STATS_REC &r, Texts &t)
{
    AddressTexts(r.addressFamily, r.srcIp, r.dstIp, t);
    SlotText(r.slotId, t);
}

inline MDTLM_ZELK_CACHE_REC ZelkRecord(int64_t)
{
    return {3, 0x0A000001, 0xC0A80A01, 6, 443, 51000, 17, 1700000000, 2, 0x12345678, 4, 99, 2, 3};
}

inline MDTLM_QUMA_RESULT_REC QumaRecord(int64_t)
{
    MDTLM_QUMA_RESULT_REC r{};
    r = {7, 107, 1, 21, 3007, {}, 0x1122, 0x3344, 0, 123456789012ull, 123456789000ull, 50, {}, 1700000000};
    std::memcpy(r.aclName, "acl-web-ingress-01", 18);
    std::memcpy(r.warnInfo, "loss above limit", 16);
    return r;
}

/* Sample addresses of the I/O service records: an IPv4 pair, or an IPv6 pair
 * given by the first and last word of each address (the rest zero). */
struct SampleAddresses {
    uint32_t ipv4Src, ipv4Dst;
    uint32_t ipv6SrcFirst, ipv6SrcLast, ipv6DstFirst, ipv6DstLast;
};

inline void SetAddresses(int64_t family, const SampleAddresses &a, uint32_t (&src)[4], uint32_t (&dst)[4])
{
    const bool ipv6 = family == 1;
    src[0] = ipv6 ? a.ipv6SrcFirst : a.ipv4Src;
    src[3] = ipv6 ? a.ipv6SrcLast : 0;
    dst[0] = ipv6 ? a.ipv6DstFirst : a.ipv4Dst;
    dst[3] = ipv6 ? a.ipv6DstLast : 0;
}

inline MDTLM_SRVTLM_FLOW_STATS_REC SrvtlmRecord(int64_t family)
{
    MDTLM_SRVTLM_FLOW_STATS_REC r{};
    r.accessType = 1;
    r.addressFamily = static_cast<uint8_t>(family);
    SetAddresses(family, {0xC0A80101, 0x0A000002, 0x20010db8, 0x12345678, 0xfe800000, 0xabcdef01}, r.srcIp, r.dstIp);
    r.logicalUnitNum = 12;
    r.periodId = 345;
    r.ifIndex = 4000;
    r.readIoAvgLatency = 250;
    r.writeIoAvgLatency = 480;
    r.readDal = 31;
    r.writeDal = 44;
    r.writeDpl = 7;
    r.readIops = 120000;
    r.writeIops = 80000;
    r.readIoAvgSize = 4096;
    r.writeIoAvgSize = 8192;
    r.readPendingIoCnt = 3;
    r.writePendingIoCnt = 9;
    r.interval = 1000;
    r.sequenceNumber = 987654;
    return r;
}

inline MDTLM_SRVTLM_FCTFLOW_STATS_REC FctRecord(int64_t family)
{
    MDTLM_SRVTLM_FCTFLOW_STATS_REC r{};
    r.addressFamily = static_cast<uint32_t>(family);
    SetAddresses(family, {0xAC100001, 0xAC100002, 0x20010db8, 0x1, 0x20010db8, 0x2}, r.srcIp, r.dstIp);
    r.periodId = 345;
    r.slotId = 3;
    r.srcIfIndex = 11;
    r.dstIfIndex = 12;
    r.fctMax = 900000;
    r.fctMin = 1200;
    r.fctMean = 40000;
    r.fetMax = 12345678901ull;
    r.fetMin = 1000;
    r.fetMean = 600000;
    r.nakPacketNumber = 2;
    r.rdmaPacketNumber = 100000;
    r.rdmaMessageNumber = 2500;
    r.sequenceNumber = 987654;
    return r;
}

} // namespace sensor_bench

#endif /* MDTLM_BENCH_SENSOR_RECORDS_H */
