/*
 * Records of the flow and flow-hop sensors for tests, and what a collector
 * must read back from them. Expected values are worked out here from the
 * record's raw fields, independently of the plug-in's helpers.
 */
#ifndef MDTLM_TEST_FLOW_RECORDS_H
#define MDTLM_TEST_FLOW_RECORDS_H

#include <cstdint>
#include <algorithm>
#include <cstring>
#include <map>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "mdtlm_types.h"
#include "proto_decode.h"

namespace flowtest {

constexpr uint64_t kTwo32 = 1ull << 32;

template <std::size_t N>
inline void SetText(char (&field)[N], const std::string &text)
{
    std::memset(field, 0, N);
    std::memcpy(field, text.data(), std::min(text.size(), N));
}

/* A flow record in which every reported field holds a distinct value, wide
 * where the field is wide, so that a field read from the wrong place or
 * truncated shows. IPv4, unicast, tunnelled with tunnel type 2. */
inline MDTLM_FLOW_STATS_REC FlowRecord()
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
    r.sequenceNumber = 0xDEADBEEF; /* overwritten by the plug-in */
    SetText(r.chassisId, "chassis-1");
    SetText(r.slotId, "slot-3");
    r.srcAddr[0] = 0xC0A80A01; /* 192.168.10.1 */
    r.dstAddr[0] = 0x0A000002; /* 10.0.0.2 */
    r.addressFamily = 1;
    r.protocol = 17;
    r.srcPort = 5000;
    r.dstPort = 65535;
    r.flowIdHigh = 4097;
    r.flowIdLow = 0x12345;
    r.ifIndex = 33;
    r.vlan = 4094;
    r.direction = 2;
    r.periodId = 5;
    r.reportPeriodIndex = 70;
    r.timestampSecond = 1700000000;
    r.timestampNanosecond = 999999999;
    r.packetCount = (1ull << 40) + 3;
    r.byteCount = (1ull << 50) + 7;
    r.errorInfoExt = 0x80000001;
    r.errorInfo = 200;
    return r;
}

inline void SetIpv6(MDTLM_FLOW_STATS_REC *r)
{
    r->addressFamily = 2;
    const uint32_t src[4] = {0x20010db8, 0, 0, 1};
    const uint32_t dst[4] = {0xfe800000, 0x00000001, 0xabcd0000, 0xffffffff};
    std::memcpy(r->srcAddr, src, sizeof(src));
    std::memcpy(r->dstAddr, dst, sizeof(dst));
}

/* The flow-hop counterpart, with delays that exercise the scaling by 256. */
inline MDTLM_FLOWHOP_STATS_REC FlowHopRecord()
{
    MDTLM_FLOWHOP_STATS_REC r{};
    r.ttl = 41;
    r.outerTtl = 42;
    r.tunnelId = 80002;
    r.queuePair = 12;
    r.measureMode = 3;
    r.tunnelType = 1;
    r.tunnelFlag = 1;
    r.interval = 2000;
    r.castType = 1;
    r.sequenceNumber = 0xDEADBEEF;
    SetText(r.chassisId, "hop-chassis");
    SetText(r.slotId, "hop-slot");
    r.flowIdHigh = 0x3FF;
    r.flowIdLow = 0x100001;
    r.ifIndex = 44;
    r.vlan = 100;
    r.direction = 1;
    r.periodId = 66;
    r.timestampSecond = 1700000100;
    r.timestampNanosecond = 5;
    r.maximumDelay = 16777217; /* 2^24 + 1 */
    r.totalDelay = 3;
    r.totalCount = kTwo32 + 5;
    r.packetCount = kTwo32 + 11;
    r.byteCount = (1ull << 45) + 13;
    r.errorInfoExt = 77;
    r.errorInfo = 1;
    return r;
}

/* One numeric member as the collector reads it: its key, the GPB value and
 * the JSON value (they differ only where the JSON prints fewer bits). */
struct Member {
    std::string key;
    uint64_t gpb;
    uint64_t json;
};

inline uint64_t FlowIdOf(uint32_t high, uint32_t low) { return (uint64_t{high} << 20) | low; }
inline uint32_t DirectionOf(uint8_t code) { return code == 1 ? 1 : 4; }
inline uint32_t TunnelModeOf(uint32_t flag, uint32_t type)
{
    return flag != 1 ? 1 : type == 1 ? 3 : type == 2 ? 4 : 1;
}

/* Numeric members of a flow record stamped with `seq`, in template order. */
inline std::vector<Member> FlowMembers(const MDTLM_FLOW_STATS_REC &r, uint32_t seq)
{
    auto same = [](const std::string &key, uint64_t v) { return Member{key, v, v}; };
    return {
        same("flow-id", FlowIdOf(r.flowIdHigh, r.flowIdLow)),
        same("direction", DirectionOf(r.direction)),
        same("address-family", r.addressFamily == 1 ? 0 : 1),
        same("source-port", r.srcPort),
        same("destination-port", r.dstPort),
        same("protocol", r.protocol),
        same("if-index", r.ifIndex),
        same("error-info", r.errorInfo),
        same("error-info-ext", r.errorInfoExt),
        same("interval", r.interval),
        same("period-id", r.periodId),
        same("packet-count", r.packetCount),
        same("byte-count", r.byteCount),
        same("timestamp-second", r.timestampSecond),
        same("timestamp-nanosecond", r.timestampNanosecond),
        same("ttl", r.ttl),
        same("measure-mode", r.measureMode),
        same("vlan", r.vlan),
        same("queue-pair", r.queuePair),
        same("tunnel-mode", TunnelModeOf(r.tunnelFlag, r.tunnelType)),
        same("tunnel-id", r.tunnelId),
        same("outer-ttl", r.outerTtl),
        same("sequence-number", seq),
    };
}

/* Numeric members of a flow-hop record stamped with `seq`, in template order. */
inline std::vector<Member> FlowHopMembers(const MDTLM_FLOWHOP_STATS_REC &r, uint32_t seq)
{
    auto same = [](const std::string &key, uint64_t v) { return Member{key, v, v}; };
    return {
        same("flow-id", FlowIdOf(r.flowIdHigh, r.flowIdLow)),
        same("direction", DirectionOf(r.direction)),
        same("if-index", r.ifIndex),
        same("error-info", r.errorInfo),
        same("error-info-ext", r.errorInfoExt),
        same("period-id", r.periodId),
        same("packet-count", r.packetCount),
        same("byte-count", r.byteCount),
        same("timestamp-second", r.timestampSecond),
        same("timestamp-nanosecond", r.timestampNanosecond),
        same("ttl", r.ttl),
        same("measure-mode", r.measureMode),
        same("maximum-delay", static_cast<uint32_t>(r.maximumDelay * 256u)),
        same("total-delay", r.totalDelay * 256u),
        Member{"total-count", r.totalCount, r.totalCount & 0xFFFFFFFFu},
        same("interval", r.interval),
        same("vlan", r.vlan),
        same("tunnel-mode", TunnelModeOf(r.tunnelFlag, r.tunnelType)),
        same("tunnel-id", r.tunnelId),
        same("outer-ttl", r.outerTtl),
        same("queue-pair", r.queuePair),
        same("sequence-number", seq),
    };
}

inline std::string ProtoName(std::string key)
{
    for (char &c : key) {
        c = c == '-' ? '_' : c;
    }
    return key;
}

/* Compares a decoded GPB record with the expected members and texts. The two
 * tunnel members are on the wire only for tunnelled records; every other
 * member is always there, zero or not. */
inline void ExpectGpbRecord(const google::protobuf::Message &m, const std::vector<Member> &members,
                            const std::map<std::string, std::string> &texts, bool tunnelled)
{
    for (const Member &member : members) {
        const std::string name = ProtoName(member.key);
        if (!tunnelled && (member.key == "tunnel-id" || member.key == "outer-ttl")) {
            EXPECT_FALSE(Has(m, name)) << name << " written for a flow that is not tunnelled";
            continue;
        }
        EXPECT_TRUE(Has(m, name)) << name << " missing";
        EXPECT_EQ(U(m, name), member.gpb) << name;
    }
    for (const auto &[key, text] : texts) {
        EXPECT_TRUE(Has(m, ProtoName(key))) << key << " missing";
        EXPECT_EQ(S(m, ProtoName(key)), text) << key;
    }
}

/* Compares one JSON record with the expected members and texts, including
 * the order of its keys (the template's order). */
inline void ExpectJsonRecord(const nlohmann::ordered_json &j, const std::vector<Member> &members,
                             const std::map<std::string, std::string> &texts,
                             const std::vector<std::string> &keyOrder)
{
    ASSERT_TRUE(j.is_object());
    std::vector<std::string> keys;
    for (const auto &item : j.items()) {
        keys.push_back(item.key());
    }
    EXPECT_EQ(keys, keyOrder);
    for (const Member &member : members) {
        ASSERT_TRUE(j.contains(member.key)) << member.key;
        ASSERT_TRUE(j[member.key].is_number_unsigned()) << member.key;
        EXPECT_EQ(j[member.key].get<uint64_t>(), member.json) << member.key;
    }
    for (const auto &[key, text] : texts) {
        ASSERT_TRUE(j.contains(key) && j[key].is_string()) << key;
        EXPECT_EQ(j[key].get<std::string>(), text) << key;
    }
}

/* Keys of the two JSON templates, in order, with their conversions. */
struct TemplateMember {
    const char *key;
    const char *conversion; /* "%u", "%llu" or "text" */
};

inline const std::vector<TemplateMember> &FlowTemplateMembers()
{
    static const std::vector<TemplateMember> members = {
        {"flow-id", "%llu"},        {"direction", "%u"},         {"address-family", "%u"},
        {"source-ip", "text"},      {"destination-ip", "text"},  {"source-port", "%u"},
        {"destination-port", "%u"}, {"protocol", "%u"},          {"if-index", "%u"},
        {"error-info", "%u"},       {"error-info-ext", "%u"},    {"interval", "%u"},
        {"period-id", "%u"},        {"packet-count", "%llu"},    {"byte-count", "%llu"},
        {"timestamp-second", "%u"}, {"timestamp-nanosecond", "%u"}, {"ttl", "%u"},
        {"measure-mode", "%u"},     {"vlan", "%u"},              {"queue-pair", "%u"},
        {"tunnel-mode", "%u"},      {"tunnel-id", "%u"},         {"outer-ttl", "%u"},
        {"sequence-number", "%u"},  {"chassis-id", "text"},      {"slot-id", "text"},
    };
    return members;
}

inline const std::vector<TemplateMember> &FlowHopTemplateMembers()
{
    static const std::vector<TemplateMember> members = {
        {"flow-id", "%llu"},          {"direction", "%u"},          {"if-index", "%u"},
        {"error-info", "%u"},         {"error-info-ext", "%u"},     {"period-id", "%u"},
        {"packet-count", "%llu"},     {"byte-count", "%llu"},       {"timestamp-second", "%u"},
        {"timestamp-nanosecond", "%u"}, {"ttl", "%u"},              {"measure-mode", "%u"},
        {"maximum-delay", "%u"},      {"total-delay", "%llu"},      {"total-count", "%u"},
        {"interval", "%u"},           {"vlan", "%u"},               {"tunnel-mode", "%u"},
        {"tunnel-id", "%u"},          {"outer-ttl", "%u"},          {"queue-pair", "%u"},
        {"sequence-number", "%u"},    {"chassis-id", "text"},       {"slot-id", "text"},
    };
    return members;
}

inline std::vector<std::string> KeysOf(const std::vector<TemplateMember> &members)
{
    std::vector<std::string> keys;
    for (const TemplateMember &m : members) {
        keys.push_back(m.key);
    }
    return keys;
}

/* Parses a run of JSON records, each an object followed by a comma. */
inline std::vector<nlohmann::ordered_json> ParseRecordRun(const std::string &text)
{
    EXPECT_FALSE(text.empty());
    EXPECT_EQ(text.back(), ',');
    const auto array = nlohmann::ordered_json::parse("[" + text.substr(0, text.size() - 1) + "]");
    return std::vector<nlohmann::ordered_json>(array.begin(), array.end());
}

} // namespace flowtest

#endif /* MDTLM_TEST_FLOW_RECORDS_H */
