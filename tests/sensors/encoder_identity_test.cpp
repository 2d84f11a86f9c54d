/*
 * The encoders and address converters on thousands of pseudo-random records,
 * every field at random values, against references written here without the
 * plug-in's code:
 *   - JSON: "{", the exported template filled conversion by conversion with
 *     libc snprintf from the fields a collector must read, "}," and the NUL
 *     the formatter leaves behind, byte for byte;
 *   - GPB: a plain wire writer putting the same fields in the field table's
 *     order, framed as field 1 inside the sample's container field, byte for
 *     byte, and the bytes decoded with libprotobuf against proto/;
 *   - results: -1 for unknown address families and values without a text,
 *     -2 one byte below each floor, with the output untouched but for what a
 *     refused record leaves behind;
 *   - address texts: libc snprintf, at and one byte below each capacity floor.
 */
#include <cstdio>
#include <functional>
#include <random>

#include "sensor_records.h"

namespace sensor_test {
namespace {

constexpr int kRecordsPerSensor = 5000;
constexpr uint8_t kSentinel = 0x5A;

using Rng = std::mt19937_64;

/* ------------------------------------------------------------ references */

std::string Ipv4Ref(uint32_t a)
{
    char t[32];
    std::snprintf(t, sizeof(t), "%u.%u.%u.%u", a >> 24, (a >> 16) & 0xFF, (a >> 8) & 0xFF, a & 0xFF);
    return t;
}

std::string Ipv6Ref(const uint32_t *w)
{
    char t[48];
    std::snprintf(t, sizeof(t), "%x:%x:%x:%x:%x:%x:%x:%x", w[0] >> 16, w[0] & 0xFFFF, w[1] >> 16, w[1] & 0xFFFF,
                  w[2] >> 16, w[2] & 0xFFFF, w[3] >> 16, w[3] & 0xFFFF);
    return t;
}

std::string MacRef(const uint8_t *m)
{
    char t[32];
    std::snprintf(t, sizeof(t), "%02X%02X-%02X%02X-%02X%02X", m[0], m[1], m[2], m[3], m[4], m[5]);
    return t;
}

/* One JSON object: the template's conversions filled in order from the
 * listed JSON members, followed by "}," and the formatter's NUL. */
std::string JsonRef(const char *tmpl, const std::vector<FieldCase> &fields)
{
    std::vector<const FieldCase *> members;
    for (const FieldCase &f : fields) {
        if (!f.jsonKey.empty()) {
            members.push_back(&f);
        }
    }
    std::string out = "{";
    size_t next = 0;
    for (const char *p = tmpl; *p != '\0';) {
        if (*p != '%') {
            out += *p++;
            continue;
        }
        const char *end = std::strpbrk(p, "us");
        if (end == nullptr || next >= members.size()) {
            ADD_FAILURE() << "template and members disagree at " << p;
            return out;
        }
        const std::string conv(p, end + 1);
        const Value &v = members[next++]->json;
        char piece[128];
        if (v.text) { /* a quoted number ("%u" in quotes) is listed as its text */
            std::snprintf(piece, sizeof(piece), "%s", v.str.c_str());
        } else if (conv == "%llu") {
            std::snprintf(piece, sizeof(piece), "%llu", static_cast<unsigned long long>(v.number));
        } else {
            std::snprintf(piece, sizeof(piece), "%u", static_cast<unsigned>(v.number));
        }
        out += piece;
        p = end + 1;
    }
    EXPECT_EQ(next, members.size()) << "members left over";
    out += "},";
    out.push_back('\0');
    return out;
}

void PutVarint(std::string &out, uint64_t v)
{
    for (; v >= 0x80; v >>= 7) {
        out.push_back(static_cast<char>((v & 0x7F) | 0x80));
    }
    out.push_back(static_cast<char>(v));
}

void PutBytes(std::string &out, int field, const std::string &bytes)
{
    PutVarint(out, (static_cast<uint64_t>(field) << 3) | 2);
    PutVarint(out, bytes.size());
    out += bytes;
}

/* The GPB record: the listed GPB fields in `wireOrder` (numbers; empty: the
 * listed order), framed as field 1 of the container field. */
std::string GpbRef(const google::protobuf::Descriptor *sample, const std::vector<FieldCase> &fields,
                   const std::vector<int> &wireOrder)
{
    const google::protobuf::FieldDescriptor *container = sample->field(0);
    const google::protobuf::Descriptor *rec = container->message_type()->field(0)->message_type();
    std::vector<std::pair<int, const FieldCase *>> listed;
    for (const FieldCase &f : fields) {
        if (!f.gpbName.empty()) {
            listed.emplace_back(rec->FindFieldByName(f.gpbName)->number(), &f);
        }
    }
    if (!wireOrder.empty()) {
        std::stable_sort(listed.begin(), listed.end(), [&](const auto &a, const auto &b) {
            return std::find(wireOrder.begin(), wireOrder.end(), a.first) <
                   std::find(wireOrder.begin(), wireOrder.end(), b.first);
        });
    }
    std::string body;
    for (const auto &[number, f] : listed) {
        if (f->gpb.text) {
            PutBytes(body, number, f->gpb.str);
        } else {
            PutVarint(body, static_cast<uint64_t>(number) << 3);
            PutVarint(body, f->gpb.number);
        }
    }
    std::string entry, framed;
    PutBytes(entry, 1, body);
    PutBytes(framed, container->number(), entry);
    return framed;
}

/* --------------------------------------------------------- random records */

template <typename Rec>
Rec RandomBytes(Rng &rng)
{
    Rec r;
    auto *p = reinterpret_cast<uint8_t *>(&r);
    for (size_t i = 0; i < sizeof(r); ++i) {
        p[i] = static_cast<uint8_t>(rng());
    }
    return r;
}

/* A text of random length that may fill its field; bytes after its NUL stay random. */
template <size_t N>
void RandomText(Rng &rng, char (&field)[N])
{
    const size_t len = rng() % (N + 1);
    for (size_t i = 0; i < len; ++i) {
        field[i] = static_cast<char>(' ' + rng() % 95);
    }
    if (len < N) {
        field[len] = '\0';
    }
}

/* Mostly one of `known`, sometimes any value. */
uint32_t Pick(Rng &rng, std::initializer_list<uint32_t> known)
{
    if (rng() % 8 == 0) {
        return static_cast<uint32_t>(rng());
    }
    return *(known.begin() + rng() % known.size());
}

/* What a record must become: its fields, and whether each encoding refuses it. */
struct Expected {
    std::vector<FieldCase> fields;
    bool gpbFails = false;
    bool jsonFails = false;
    size_t jsonLeftBehind = 0; /* bytes a refused JSON record leaves ("{" and its NUL) */
};

template <typename Rec>
bool AddressTexts(const Rec &r, uint32_t family, uint32_t v4, uint32_t v6, std::string *src, std::string *dst)
{
    const auto *s = reinterpret_cast<const uint32_t *>(&r.srcAddr);
    const auto *d = reinterpret_cast<const uint32_t *>(&r.dstAddr);
    if (family == v4) {
        *src = Ipv4Ref(s[0]);
        *dst = Ipv4Ref(d[0]);
        return true;
    }
    if (family == v6) {
        *src = Ipv6Ref(s);
        *dst = Ipv6Ref(d);
        return true;
    }
    return false;
}

std::pair<MDTLM_FLOW_STATS_REC, Expected> RandomFlow(Rng &rng)
{
    auto r = RandomBytes<MDTLM_FLOW_STATS_REC>(rng);
    r.addressFamily = static_cast<uint8_t>(Pick(rng, {1, 2}));
    r.direction = static_cast<uint8_t>(Pick(rng, {1, 2}));
    r.tunnelFlag = Pick(rng, {0, 1});
    r.tunnelType = Pick(rng, {1, 2});
    RandomText(rng, r.chassisId);
    RandomText(rng, r.slotId);
    std::string src, dst;
    Expected e;
    const bool known = AddressTexts(r, r.addressFamily, 1, 2, &src, &dst);
    e.fields = FlowFields(r, r.sequenceNumber, src, dst);
    e.gpbFails = e.jsonFails = !known;
    e.jsonLeftBehind = 2;
    return {r, e};
}

std::pair<MDTLM_FLOWHOP_STATS_REC, Expected> RandomHop(Rng &rng)
{
    auto r = RandomBytes<MDTLM_FLOWHOP_STATS_REC>(rng);
    r.direction = static_cast<uint8_t>(Pick(rng, {1, 2}));
    r.tunnelFlag = Pick(rng, {0, 1});
    r.tunnelType = Pick(rng, {1, 2});
    RandomText(rng, r.chassisId);
    RandomText(rng, r.slotId);
    return {r, Expected{FlowHopFields(r, r.sequenceNumber)}};
}

/* Texts of the export flow cache's enumerations, by value. */
const char *ZelkText(uint32_t v, uint32_t first, std::initializer_list<const char *> texts)
{
    return v >= first && v - first < texts.size() ? *(texts.begin() + (v - first)) : nullptr;
}

std::pair<MDTLM_ZELK_CACHE_REC, Expected> RandomZelk(Rng &rng)
{
    auto r = RandomBytes<MDTLM_ZELK_CACHE_REC>(rng);
    r.protocolId = Pick(rng, {6});
    r.state = Pick(rng, {0, 1, 2, 3});
    r.recoveryMode = Pick(rng, {2, 3});
    r.opMode = Pick(rng, {1, 2, 3, 4});
    const char *state = ZelkText(r.state, 0, {"success", "failed", "reach-limit", "disable"});
    const char *recovery = ZelkText(r.recoveryMode, 2, {"underlay-overlay", "none"});
    const char *op = ZelkText(r.opMode, 1, {"auto-fail-detection", "manual-fail-recovery",
                                            "tcp-reserved-value-isolate-outbound", "none"});
    Expected e;
    const bool texts = r.protocolId == 6 && state && recovery && op;
    const ZelkCase c{r, "", "", state ? state : "", recovery ? recovery : "", op ? op : ""};
    const std::string src = Ipv4Ref(r.sourceIp), dst = Ipv4Ref(r.destinationIp);
    e.fields = ZelkFields({r, src.c_str(), dst.c_str(), c.state, c.recovery, c.op});
    e.jsonFails = !texts;
    return {r, e};
}

std::pair<MDTLM_QUMA_RESULT_REC, Expected> RandomQuma(Rng &rng)
{
    auto r = RandomBytes<MDTLM_QUMA_RESULT_REC>(rng);
    r.protocol = Pick(rng, {0, 1, 2, 3});
    RandomText(rng, r.aclName);
    RandomText(rng, r.warnInfo);
    static const char *const kNames[] = {"Protocol_INVALID", "Protocol_IPV4", "Protocol_IPV6", "Protocol_L2"};
    Expected e;
    e.fields = QumaFields(r, r.protocol < 4 ? kNames[r.protocol] : "");
    e.jsonFails = r.protocol >= 4;
    return {r, e};
}

template <typename Rec>
bool SrvAddressTexts(const Rec &r, std::string *src, std::string *dst)
{
    uint32_t s[4], d[4];
    std::memcpy(s, r.srcIp, sizeof(s));
    std::memcpy(d, r.dstIp, sizeof(d));
    if (r.addressFamily == 0) {
        *src = Ipv4Ref(s[0]);
        *dst = Ipv4Ref(d[0]);
        return true;
    }
    if (r.addressFamily == 1) {
        *src = Ipv6Ref(s);
        *dst = Ipv6Ref(d);
        return true;
    }
    return false;
}

std::pair<MDTLM_SRVTLM_FLOW_STATS_REC, Expected> RandomSrvtlm(Rng &rng)
{
    auto r = RandomBytes<MDTLM_SRVTLM_FLOW_STATS_REC>(rng);
    r.addressFamily = static_cast<uint8_t>(Pick(rng, {0, 1}));
    std::string src, dst;
    Expected e;
    e.gpbFails = e.jsonFails = !SrvAddressTexts(r, &src, &dst);
    e.fields = SrvtlmFields(r, src, dst);
    return {r, e};
}

std::pair<MDTLM_SRVTLM_FCTFLOW_STATS_REC, Expected> RandomFct(Rng &rng)
{
    auto r = RandomBytes<MDTLM_SRVTLM_FCTFLOW_STATS_REC>(rng);
    r.addressFamily = Pick(rng, {0, 1});
    std::string src, dst;
    Expected e;
    e.gpbFails = e.jsonFails = !SrvAddressTexts(r, &src, &dst);
    e.fields = FctFields(r, src, dst);
    return {r, e};
}

/* ----------------------------------------------------------------- checks */

using Encode = int32_t (*)(const void *, uint8_t *, int32_t);
template <typename Rec, int32_t (*Fn)(const Rec *, uint8_t *, int32_t)>
int32_t Erased(const void *rec, uint8_t *out, int32_t cap)
{
    return Fn(static_cast<const Rec *>(rec), out, cap);
}

struct Out {
    std::vector<uint8_t> bytes;
    int32_t ret;
};

/* Encodes into a sentinel-filled buffer of `cap` bytes (and a margin that must stay untouched). */
Out EncodeInto(Encode encode, const void *rec, int32_t cap)
{
    Out o{std::vector<uint8_t>(static_cast<size_t>(cap) + 64, kSentinel), 0};
    o.ret = encode(rec, o.bytes.data(), cap);
    return o;
}

std::string Head(const Out &o, size_t n) { return std::string(o.bytes.begin(), o.bytes.begin() + n); }
bool Untouched(const Out &o, size_t from)
{
    return std::all_of(o.bytes.begin() + from, o.bytes.end(), [](uint8_t b) { return b == kSentinel; });
}

struct Row {
    const char *name;
    Schema schema;
    std::vector<int> wireOrder;
    const char *jsonTemplate;
    int32_t jsonFloor;
    Encode gpb, json;
    /* One random record and what it must become. */
    std::function<std::pair<std::vector<uint8_t>, Expected>(Rng &)> make;
};

template <typename Rec>
std::function<std::pair<std::vector<uint8_t>, Expected>(Rng &)> Maker(std::pair<Rec, Expected> (*fn)(Rng &))
{
    return [fn](Rng &rng) {
        auto [rec, e] = fn(rng);
        return std::make_pair(Bytes(rec), e);
    };
}

std::vector<Row> Rows()
{
    return {
        {"flow", kFlowSchema,
         {1, 2, 12, 14, 25, 3, 4, 5, 10, 8, 9, 13, 33, 15, 16, 17, 18, 19, 21, 23, 36, 37, 38, 39, 35, 41, 42},
         MDTLM_VRALDCN_FLOW_STATS_JSON_TEMPLATE, 1449, Erased<MDTLM_FLOW_STATS_REC, MDTLM_VRALDCN_FLOW_GPB_EncodeMsg>,
         Erased<MDTLM_FLOW_STATS_REC, MDTLM_VRALDCN_FLOW_JSON_EncodeMsg>, Maker(RandomFlow)},
        {"flowhop", kHopSchema, {1, 2, 3, 13, 27, 4, 23, 5, 6, 7, 8, 9, 11, 29, 30, 31, 32, 33, 14, 16, 17, 28, 35, 36},
         MDTLM_VRALDCN_FLOWHOP_STATS_JSON_TEMPLATE, 1335,
         Erased<MDTLM_FLOWHOP_STATS_REC, MDTLM_VRALDCN_FLOWHOP_GPB_EncodeMsg>,
         Erased<MDTLM_FLOWHOP_STATS_REC, MDTLM_VRALDCN_FLOWHOP_JSON_EncodeMsg>, Maker(RandomHop)},
        {"zelk", kZelkSchema, {}, MDTLM_ZELK_STATS_JSON_TEMPLATE, 633,
         Erased<MDTLM_ZELK_CACHE_REC, MDTLM_ZELK_GPB_EncodeMsg>, Erased<MDTLM_ZELK_CACHE_REC, MDTLM_ZELK_JSON_EncodeMsg>,
         Maker(RandomZelk)},
        {"quma", kQumaSchema, {}, MDTLM_QUMA_STATS_JSON_TEMPLATE, 745,
         Erased<MDTLM_QUMA_RESULT_REC, MDTLM_QUMA_GPB_EncodeMsg>, Erased<MDTLM_QUMA_RESULT_REC, MDTLM_QUMA_JSON_EncodeMsg>,
         Maker(RandomQuma)},
        {"srvtlm", kSrvSchema, {}, MDTLM_SRVTLM_FLOW_STATS_JSON_TEMPLATE, 1059,
         Erased<MDTLM_SRVTLM_FLOW_STATS_REC, MDTLM_SRVTLM_FLOW_GPB_EncodeMsg>,
         Erased<MDTLM_SRVTLM_FLOW_STATS_REC, MDTLM_SRVTLM_FLOW_JSON_EncodeMsg>, Maker(RandomSrvtlm)},
        {"fct", kFctSchema, {}, MDTLM_SRVTLM_FCTFLOW_STATS_JSON_TEMPLATE, 959,
         Erased<MDTLM_SRVTLM_FCTFLOW_STATS_REC, MDTLM_SRVTLM_FCTFLOW_GPB_EncodeMsg>,
         Erased<MDTLM_SRVTLM_FCTFLOW_STATS_REC, MDTLM_SRVTLM_FCTFLOW_JSON_EncodeMsg>, Maker(RandomFct)},
    };
}

void PrintTo(const Row &row, std::ostream *os) { *os << row.name; }

class EncoderIdentity : public PluginFixture, public ::testing::WithParamInterface<Row> {};

INSTANTIATE_TEST_SUITE_P(Sensors, EncoderIdentity, ::testing::ValuesIn(Rows()),
                         [](const auto &info) { return std::string(info.param.name); });

TEST_P(EncoderIdentity, RandomRecordsMatchTheReferencesByteForByte)
{
    const Row &row = GetParam();
    Rng rng(0x5EED0000u + row.jsonFloor);
    const google::protobuf::Descriptor *sampleType = nullptr;
    int checked = 0;
    for (int i = 0; i < kRecordsPerSensor && !HasFailure(); ++i) {
        auto [rec, e] = row.make(rng);
        SCOPED_TRACE(std::string(row.name) + " record " + std::to_string(i));

        /* JSON: at the floor and above it the object; one byte below, -2 and nothing written. */
        const int32_t jsonCap = row.jsonFloor + static_cast<int32_t>(rng() % 3 == 0 ? 0 : rng() % 4000);
        const Out json = EncodeInto(row.json, rec.data(), jsonCap);
        if (e.jsonFails) {
            EXPECT_EQ(json.ret, MDTLM_ENCODE_FAIL);
            EXPECT_EQ(Head(json, e.jsonLeftBehind), std::string("{\0", e.jsonLeftBehind));
            EXPECT_TRUE(Untouched(json, e.jsonLeftBehind));
        } else {
            const std::string ref = JsonRef(row.jsonTemplate, e.fields);
            ASSERT_EQ(json.ret, static_cast<int32_t>(ref.size()) - 1);
            EXPECT_EQ(Head(json, ref.size()), ref);
            EXPECT_TRUE(Untouched(json, ref.size()));
        }
        const Out below = EncodeInto(row.json, rec.data(), row.jsonFloor - 1);
        EXPECT_EQ(below.ret, MDTLM_ENCODE_NO_SPACE);
        EXPECT_TRUE(Untouched(below, 0));

        /* GPB: the reference bytes at exactly their length; one byte less is -2. */
        if (e.gpbFails) {
            EXPECT_EQ(EncodeInto(row.gpb, rec.data(), 4096).ret, MDTLM_ENCODE_FAIL);
            continue;
        }
        const Out probe = EncodeInto(row.gpb, rec.data(), 4096);
        ASSERT_GT(probe.ret, 0);
        if (sampleType == nullptr) {
            std::string err;
            auto decoded = DecodeSample(row.schema.protoFile, row.schema.sampleName,
                                        std::string(probe.bytes.begin(), probe.bytes.begin() + probe.ret), &err);
            ASSERT_NE(decoded, nullptr) << err;
            sampleType = decoded->GetDescriptor();
        }
        const std::string ref = GpbRef(sampleType, e.fields, row.wireOrder);
        const Out exact = EncodeInto(row.gpb, rec.data(), static_cast<int32_t>(ref.size()));
        ASSERT_EQ(exact.ret, static_cast<int32_t>(ref.size()));
        EXPECT_EQ(Head(exact, ref.size()), ref);
        EXPECT_TRUE(Untouched(exact, ref.size()));
        EXPECT_EQ(EncodeInto(row.gpb, rec.data(), static_cast<int32_t>(ref.size()) - 1).ret, MDTLM_ENCODE_NO_SPACE);

        /* A standard parser reads the fields back from every 64th record. */
        if (i % 64 == 0) {
            std::string err;
            auto decoded = DecodeSample(row.schema.protoFile, row.schema.sampleName, ref, &err);
            ASSERT_NE(decoded, nullptr) << err;
            const auto records = SampleRecords(*decoded);
            ASSERT_EQ(records.size(), 1u);
            ExpectGpb(*records[0], e.fields);
        }
        ++checked;
    }
    EXPECT_GT(checked, kRecordsPerSensor / 2);
}

/* Address texts against snprintf, at each capacity floor and one byte below it. */
TEST(AddressIdentity, RandomAddressesMatchSnprintf)
{
    Rng rng(42);
    for (int i = 0; i < 20000; ++i) {
        uint32_t words[4];
        uint8_t mac[6];
        for (uint32_t &w : words) {
            /* Small groups and octets too, so every digit count occurs. */
            w = static_cast<uint32_t>(rng()) >> (rng() % 32);
        }
        for (uint8_t &b : mac) {
            b = static_cast<uint8_t>(rng());
        }
        struct Conv {
            uint32_t floor;
            std::string ref;
            std::function<uint32_t(char *, uint32_t)> run;
        };
        const Conv convs[] = {
            {32, Ipv4Ref(words[0]), [&](char *o, uint32_t c) { return MDTLM_VRALDCN_ConvertIpv4AddrToStr(words[0], o, c); }},
            {40, Ipv6Ref(words), [&](char *o, uint32_t c) { return MDTLM_VRALDCN_ConvertIpv6AddrToStr(words, o, c); }},
            {18, MacRef(mac), [&](char *o, uint32_t c) { return MDTLM_VRALDCN_ConvertMacAddrToStr(mac, o, c); }},
        };
        for (const Conv &c : convs) {
            char out[64];
            std::memset(out, kSentinel, sizeof(out));
            ASSERT_EQ(c.run(out, c.floor - 1), 1u) << c.ref;
            ASSERT_TRUE(std::all_of(out, out + sizeof(out), [](char b) { return b == char(kSentinel); }));
            ASSERT_EQ(c.run(out, c.floor + static_cast<uint32_t>(rng() % 3)), 0u) << c.ref;
            ASSERT_EQ(std::string(out, c.ref.size() + 1), std::string(c.ref.c_str(), c.ref.size() + 1));
            ASSERT_TRUE(std::all_of(out + c.ref.size() + 1, out + sizeof(out),
                                    [](char b) { return b == char(kSentinel); }))
                << c.ref;
            ASSERT_EQ(c.run(nullptr, c.floor), 1u);
        }
    }
}

} // namespace
} // namespace sensor_test
