/*
 * Test helpers of the flow and flow-hop sensors: records in which every
 * reported field holds a distinct value, what a collector must read back from
 * them (worked out here from the raw fields, not with the plug-in's helpers),
 * and readers of wire bytes and uploaded samples.
 */
#ifndef MDTLM_TEST_FLOW_CHECK_H
#define MDTLM_TEST_FLOW_CHECK_H

#include <cstdint>
#include <cstring>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include <google/protobuf/io/coded_stream.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "fake_framework.h"
#include "mdtlm_types.h"
#include "proto_decode.h"

/* Records are built with designated initializers naming only the fields a
 * test sets; every other byte, the reserved ones included, is zero. */
#pragma GCC diagnostic ignored "-Wmissing-field-initializers"

namespace flowtest {

using google::protobuf::Message;
using Json = nlohmann::ordered_json;
using Texts = std::map<std::string, std::string>;

constexpr uint64_t kTwo32 = 1ull << 32;

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

inline const Texts kFlowIpv4Texts = {{"source-ip", "192.168.10.1"}, {"destination-ip", "10.0.0.2"}};
inline const Texts kFlowIpv6Texts = {{"source-ip", "2001:db8:0:0:0:0:0:1"},
                                     {"destination-ip", "fe80:0:0:1:abcd:0:ffff:ffff"}};

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

/* One numeric member: its key, its GPB value and its JSON value. */
struct Member {
    std::string key;
    uint64_t gpb;
    uint64_t json;
};

inline uint64_t FlowIdOf(uint32_t high, uint32_t low) { return (uint64_t{high} << 20) | low; }
inline uint32_t TunnelModeOf(uint32_t flag, uint32_t type) { return flag != 1 ? 1 : type == 1 ? 3 : type == 2 ? 4 : 1; }

template <typename Rec>
std::vector<Member> CommonMembers(const Rec &r, uint32_t seq)
{
    auto m = [](const char *key, uint64_t v) { return Member{key, v, v}; };
    return {m("flow-id", FlowIdOf(r.flowIdHigh, r.flowIdLow)), m("direction", r.direction == 1 ? 1 : 4),
            m("if-index", r.ifIndex), m("error-info", r.errorInfo), m("error-info-ext", r.errorInfoExt),
            m("interval", r.interval), m("period-id", r.periodId), m("packet-count", r.packetCount),
            m("byte-count", r.byteCount), m("timestamp-second", r.timestampSecond),
            m("timestamp-nanosecond", r.timestampNanosecond), m("ttl", r.ttl), m("measure-mode", r.measureMode),
            m("vlan", r.vlan), m("queue-pair", r.queuePair),
            m("tunnel-mode", TunnelModeOf(r.tunnelFlag, r.tunnelType)), m("tunnel-id", r.tunnelId),
            m("outer-ttl", r.outerTtl), m("sequence-number", seq)};
}

inline std::vector<Member> Members(const MDTLM_FLOW_STATS_REC &r, uint32_t seq)
{
    std::vector<Member> members = CommonMembers(r, seq);
    for (const auto &[key, v] : std::vector<std::pair<const char *, uint64_t>>{
             {"address-family", r.addressFamily == 1 ? 0 : 1}, {"source-port", r.srcPort},
             {"destination-port", r.dstPort}, {"protocol", r.protocol}}) {
        members.push_back({key, v, v});
    }
    return members;
}

inline std::vector<Member> Members(const MDTLM_FLOWHOP_STATS_REC &r, uint32_t seq)
{
    std::vector<Member> members = CommonMembers(r, seq);
    members.push_back({"maximum-delay", uint32_t(r.maximumDelay << 8), uint32_t(r.maximumDelay << 8)});
    members.push_back({"total-delay", r.totalDelay << 8, r.totalDelay << 8});
    members.push_back({"total-count", r.totalCount, r.totalCount & 0xFFFFFFFFu}); /* JSON: low 32 bits */
    return members;
}

template <typename Rec>
Texts TextsOf(const Rec &r, Texts extra = {})
{
    extra["chassis-id"] = r.chassisId;
    extra["slot-id"] = r.slotId;
    return extra;
}

inline std::string ProtoName(std::string key)
{
    std::replace(key.begin(), key.end(), '-', '_');
    return key;
}

/* A decoded GPB record against the expected members: every member is on the
 * wire, zero or not, except the two tunnel members of an untunnelled flow. */
inline void ExpectGpb(const Message &m, const std::vector<Member> &members, const Texts &texts, bool tunnelled)
{
    for (const Member &member : members) {
        const std::string name = ProtoName(member.key);
        const bool gated = member.key == "tunnel-id" || member.key == "outer-ttl";
        EXPECT_EQ(Has(m, name), tunnelled || !gated) << name;
        if (tunnelled || !gated) {
            EXPECT_EQ(U(m, name), member.gpb) << name;
        }
    }
    for (const auto &[key, text] : texts) {
        EXPECT_EQ(S(m, ProtoName(key)), text) << key;
    }
}

/* The keys of the two JSON templates in order, with their conversions. */
inline const std::vector<std::pair<std::string, std::string>> kFlowTemplate = {
    {"flow-id", "%llu"}, {"direction", "%u"}, {"address-family", "%u"}, {"source-ip", "s"},
    {"destination-ip", "s"}, {"source-port", "%u"}, {"destination-port", "%u"}, {"protocol", "%u"},
    {"if-index", "%u"}, {"error-info", "%u"}, {"error-info-ext", "%u"}, {"interval", "%u"}, {"period-id", "%u"},
    {"packet-count", "%llu"}, {"byte-count", "%llu"}, {"timestamp-second", "%u"}, {"timestamp-nanosecond", "%u"},
    {"ttl", "%u"}, {"measure-mode", "%u"}, {"vlan", "%u"}, {"queue-pair", "%u"}, {"tunnel-mode", "%u"},
    {"tunnel-id", "%u"}, {"outer-ttl", "%u"}, {"sequence-number", "%u"}, {"chassis-id", "s"}, {"slot-id", "s"}};
inline const std::vector<std::pair<std::string, std::string>> kFlowHopTemplate = {
    {"flow-id", "%llu"}, {"direction", "%u"}, {"if-index", "%u"}, {"error-info", "%u"}, {"error-info-ext", "%u"},
    {"period-id", "%u"}, {"packet-count", "%llu"}, {"byte-count", "%llu"}, {"timestamp-second", "%u"},
    {"timestamp-nanosecond", "%u"}, {"ttl", "%u"}, {"measure-mode", "%u"}, {"maximum-delay", "%u"},
    {"total-delay", "%llu"}, {"total-count", "%u"}, {"interval", "%u"}, {"vlan", "%u"}, {"tunnel-mode", "%u"},
    {"tunnel-id", "%u"}, {"outer-ttl", "%u"}, {"queue-pair", "%u"}, {"sequence-number", "%u"},
    {"chassis-id", "s"}, {"slot-id", "s"}};

/* One JSON record against the expected members, texts and key order. */
inline void ExpectJson(const Json &j, const std::vector<Member> &members, const Texts &texts,
                       const std::vector<std::pair<std::string, std::string>> &templ)
{
    std::vector<std::string> keys, expected;
    for (const auto &item : j.items()) {
        keys.push_back(item.key());
    }
    for (const auto &[key, conversion] : templ) {
        expected.push_back(key);
    }
    EXPECT_EQ(keys, expected);
    for (const Member &member : members) {
        EXPECT_TRUE(j[member.key].is_number_unsigned()) << member.key;
        EXPECT_EQ(j[member.key], member.json) << member.key;
    }
    for (const auto &[key, text] : texts) {
        EXPECT_EQ(j[key], text) << key;
    }
}

/* A run of JSON records as an encoder writes them: objects, each with a comma. */
inline std::vector<Json> ParseRun(const std::string &text)
{
    EXPECT_EQ(text.substr(text.size() - 2), "},");
    const Json array = Json::parse("[" + text.substr(0, text.size() - 1) + "]");
    return {array.begin(), array.end()};
}

/* ---------------------------------------------------------------- wire bytes */

struct WireField {
    uint32_t number;
    uint64_t value;    /* varint */
    std::string bytes; /* length-delimited */
    bool operator==(const WireField &) const = default;
};
inline WireField I(uint32_t number, uint64_t value) { return {number, value, {}}; }
inline WireField T(uint32_t number, const std::string &text) { return {number, 0, text}; }
inline void PrintTo(const WireField &f, std::ostream *os) { *os << f.number << ":" << f.value << f.bytes; }

/* The fields of a flat message in order, read with protobuf's stream reader. */
inline std::vector<WireField> Fields(const std::string &wire)
{
    std::vector<WireField> fields;
    google::protobuf::io::CodedInputStream in(reinterpret_cast<const uint8_t *>(wire.data()),
                                              static_cast<int>(wire.size()));
    for (uint32_t tag = in.ReadTag(); tag != 0; tag = in.ReadTag()) {
        WireField f{tag >> 3, 0, {}};
        uint32_t len = 0;
        const bool ok = (tag & 7) == 0   ? in.ReadVarint64(&f.value)
                        : (tag & 7) == 2 ? in.ReadVarint32(&len) && in.ReadString(&f.bytes, static_cast<int>(len))
                                         : false;
        EXPECT_TRUE(ok) << "bad field " << f.number;
        fields.push_back(f);
    }
    EXPECT_EQ(in.CurrentPosition(), static_cast<int>(wire.size()));
    return fields;
}

/* The body inside one framed record: container field, then field 1. */
inline std::string BodyOf(const std::string &framed, uint32_t container)
{
    const auto outer = Fields(framed);
    const auto inner = outer.size() == 1 && outer[0].number == container ? Fields(outer[0].bytes)
                                                                         : std::vector<WireField>{};
    EXPECT_TRUE(inner.size() == 1 && inner[0].number == 1) << "not one framed record";
    return inner.empty() ? std::string() : inner[0].bytes;
}

/* ------------------------------------------------------------------ samples */

struct Decoded {
    std::unique_ptr<Message> sample;
    std::vector<const Message *> records;
};

inline Decoded DecodeGpb(const std::string &data, const char *protoFile, const char *fullName)
{
    Decoded d;
    std::string error;
    d.sample = DecodeSample(protoFile, fullName, data, &error);
    EXPECT_TRUE(d.sample) << error;
    if (d.sample) {
        d.records = SampleRecords(*d.sample);
    }
    return d;
}

/* The records of a JSON sample: the sensor's opening text, the records
 * separated by commas, "]}}", and nothing else. */
inline std::vector<Json> JsonSampleRecords(const CapturedSample &s, const std::string &container,
                                           const std::string &list)
{
    const std::string opening = "{\"" + container + "\":{\"" + list + "\":[";
    EXPECT_EQ(s.data.substr(0, opening.size()), opening);
    const Json doc = Json::parse(s.data);
    EXPECT_EQ(doc.size(), 1u);
    const Json &array = doc[container][list];
    EXPECT_EQ(array.size(), s.header.itemCnt);
    return {array.begin(), array.end()};
}

inline std::vector<CapturedSample> OfTask(const std::vector<CapturedSample> &all, uint32_t taskId)
{
    std::vector<CapturedSample> mine;
    std::copy_if(all.begin(), all.end(), std::back_inserter(mine),
                 [&](const CapturedSample &s) { return s.header.taskId == taskId; });
    return mine;
}

} // namespace flowtest

#endif /* MDTLM_TEST_FLOW_CHECK_H */
