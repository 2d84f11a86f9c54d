/*
 * Cost of one record of the flow and flow-hop sensors in each encoding, each
 * next to libprotobuf encoding the same record without generated classes:
 *   - "CodedStream": sizes first, then the same fields written through
 *     CodedOutputStream (what generated code does), same framing, same bytes;
 *   - "Dynamic": a DynamicMessage of the proto/ schema filled through
 *     reflection, then serialised (GPB) or printed by the JSON printer.
 * Every side starts from the raw record, derives the reported values and
 * formats the address texts itself. Records are appended one after another
 * into a buffer of one sample's size, started over when nearly full, as the
 * period tick does. Read the figures as ratios of neighbouring lines.
 */
#include <benchmark/benchmark.h>
#include <google/protobuf/compiler/importer.h>
#include <google/protobuf/dynamic_message.h>
#include <google/protobuf/io/coded_stream.h>
#include <google/protobuf/util/json_util.h>

#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "bench_support.h"
#include "mdtlm_vraldcn.h"

namespace {

using google::protobuf::FieldDescriptor;
using google::protobuf::Message;
using google::protobuf::Reflection;
using google::protobuf::io::CodedOutputStream;

constexpr int32_t kRoom = 1536; /* kept free before every record: the largest record and the JSON floor */

/* The flow identification, counters and errors both records carry, past the
 * head they share. */
template <typename Rec>
void SetSharedValues(Rec &r)
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

MDTLM_FLOW_STATS_REC MakeFlow(bool ipv6)
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

MDTLM_FLOWHOP_STATS_REC MakeFlowHop()
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

/* ------------------------------------------------------------ the plug-in */

template <typename Rec>
void RunPlugin(benchmark::State &state, int32_t (*encode)(const Rec *, uint8_t *, int32_t), const Rec &rec)
{
    BenchAppendRecords(state, kRoom, encode, rec);
    state.SetItemsProcessed(state.iterations());
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

uint64_t FlowId(uint32_t high, uint32_t low) { return (uint64_t{high} << 20) | low; }
uint32_t TunnelMode(uint32_t flag, uint32_t type) { return flag != 1 ? 1 : type == 1 ? 3 : type == 2 ? 4 : 1; }

void FormatAddress(const uint32_t *words, bool ipv6, char (&out)[40])
{
    if (ipv6) {
        std::snprintf(out, sizeof(out), "%x:%x:%x:%x:%x:%x:%x:%x", words[0] >> 16, words[0] & 0xFFFF, words[1] >> 16,
                      words[1] & 0xFFFF, words[2] >> 16, words[2] & 0xFFFF, words[3] >> 16, words[3] & 0xFFFF);
    } else {
        std::snprintf(out, sizeof(out), "%u.%u.%u.%u", words[0] >> 24, (words[0] >> 16) & 0xFF, (words[0] >> 8) & 0xFF,
                      words[0] & 0xFF);
    }
}

template <typename Rec>
void Texts(const Rec &r, Body *b)
{
    std::snprintf(b->chassis, sizeof(b->chassis), "%.32s", r.chassisId);
    std::snprintf(b->slot, sizeof(b->slot), "%.32s", r.slotId);
}

/* Field numbers of the statistics and packet values both records carry, in
 * the order they are written, and of the closing sequence number and texts. */
struct SharedNumbers {
    uint32_t errorInfo, errorInfoExt, periodId, packetCount, byteCount, second, nanosecond;
    uint32_t ttl, vlan, tunnelMode, tunnelId, outerTtl, queuePair;
    uint32_t sequenceNumber, chassis, slot;
};

constexpr SharedNumbers kFlowNumbers = {13, 33, 15, 16, 17, 18, 19, 21, 23, 36, 37, 38, 39, 35, 41, 42};
constexpr SharedNumbers kHopNumbers = {4, 23, 5, 6, 7, 8, 9, 11, 29, 30, 31, 32, 33, 28, 35, 36};

template <typename Rec>
void DeriveShared(const Rec &r, const SharedNumbers &n, Body *b)
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
void DeriveClosing(const Rec &r, const SharedNumbers &n, Body *b)
{
    b->Int(n.sequenceNumber, r.sequenceNumber);
    b->Str(n.chassis, b->chassis);
    b->Str(n.slot, b->slot);
}

void Derive(const MDTLM_FLOW_STATS_REC &r, Body *b)
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

void Derive(const MDTLM_FLOWHOP_STATS_REC &r, Body *b)
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

/* ------------------------------------------ reference: CodedOutputStream */

size_t BodySize(const Body &b)
{
    size_t size = 0;
    for (int i = 0; i < b.count; ++i) {
        const Field &f = b.fields[i];
        size += CodedOutputStream::VarintSize32(f.number << 3);
        if (f.text != nullptr) {
            const size_t len = std::strlen(f.text);
            size += CodedOutputStream::VarintSize32(static_cast<uint32_t>(len)) + len;
        } else {
            size += CodedOutputStream::VarintSize64(f.value);
        }
    }
    return size;
}

void WriteRecord(const Body &b, uint32_t container, CodedOutputStream *out)
{
    const uint32_t bodySize = static_cast<uint32_t>(BodySize(b));
    const uint32_t entrySize = 1 + CodedOutputStream::VarintSize32(bodySize) + bodySize;
    out->WriteTag(container << 3 | 2);
    out->WriteVarint32(entrySize);
    out->WriteTag(1 << 3 | 2);
    out->WriteVarint32(bodySize);
    for (int i = 0; i < b.count; ++i) {
        const Field &f = b.fields[i];
        if (f.text != nullptr) {
            const uint32_t len = static_cast<uint32_t>(std::strlen(f.text));
            out->WriteTag(f.number << 3 | 2);
            out->WriteVarint32(len);
            out->WriteRaw(f.text, static_cast<int>(len));
        } else {
            out->WriteTag(f.number << 3);
            out->WriteVarint64(f.value);
        }
    }
}

template <typename Rec>
void RunCodedStream(benchmark::State &state, const Rec &rec, uint32_t container)
{
    BenchStreamLoop(state, kRoom, [&](CodedOutputStream &stream) {
        Body body;
        Derive(rec, &body);
        WriteRecord(body, container, &stream);
    });
    state.SetItemsProcessed(state.iterations());
}

/* -------------------------------------------- reference: DynamicMessage */

/* The sample message of a schema in proto/, next to this file's directory. */
class Schema {
public:
    Schema(const char *file, const char *sample)
    {
        std::string dir = __FILE__;
        dir = dir.substr(0, dir.rfind('/'));
        tree_.MapPath("", dir.substr(0, dir.rfind('/')) + "/proto");
        importer_.Import(file);
        const auto *desc = importer_.pool()->FindMessageTypeByName(sample);
        if (desc != nullptr) {
            sample_.reset(factory_.GetPrototype(desc)->New());
        }
    }
    Message *sample() { return sample_.get(); }

private:
    struct NoErrors : google::protobuf::compiler::MultiFileErrorCollector {
        void AddError(const std::string &, int, int, const std::string &) override {}
    } errors_;
    google::protobuf::compiler::DiskSourceTree tree_;
    google::protobuf::compiler::Importer importer_{&tree_, &errors_};
    google::protobuf::DynamicMessageFactory factory_;
    std::unique_ptr<Message> sample_;
};

/* Fills the sample with one record through reflection, field descriptors
 * looked up once. */
class Filler {
public:
    explicit Filler(Message *sample) : sample_(sample)
    {
        const auto *desc = sample->GetDescriptor();
        container_ = desc->field(0);
        list_ = container_->message_type()->FindFieldByNumber(1);
        for (int i = 0; i < list_->message_type()->field_count(); ++i) {
            const FieldDescriptor *f = list_->message_type()->field(i);
            byNumber_[f->number()] = f;
        }
    }

    void Fill(const Body &b)
    {
        sample_->Clear();
        Message *list = sample_->GetReflection()->MutableMessage(sample_, container_);
        Message *record = list->GetReflection()->AddMessage(list, list_);
        const Reflection *refl = record->GetReflection();
        for (int i = 0; i < b.count; ++i) {
            const FieldDescriptor *f = byNumber_[b.fields[i].number];
            if (f->cpp_type() == FieldDescriptor::CPPTYPE_STRING) {
                refl->SetString(record, f, b.fields[i].text);
            } else if (f->cpp_type() == FieldDescriptor::CPPTYPE_UINT64) {
                refl->SetUInt64(record, f, b.fields[i].value);
            } else {
                refl->SetUInt32(record, f, static_cast<uint32_t>(b.fields[i].value));
            }
        }
    }

private:
    Message *sample_;
    const FieldDescriptor *container_ = nullptr;
    const FieldDescriptor *list_ = nullptr;
    const FieldDescriptor *byNumber_[64] = {};
};

template <typename Rec>
void RunDynamic(benchmark::State &state, const Rec &rec, const char *file, const char *name, bool json)
{
    static uint8_t buffer[kBenchSampleSize];
    Schema schema(file, name);
    if (schema.sample() == nullptr) {
        state.SkipWithError("schema not found");
        return;
    }
    Filler filler(schema.sample());
    google::protobuf::util::JsonPrintOptions options;
    options.preserve_proto_field_names = true;
    options.always_print_primitive_fields = true;
    std::string text;
    int32_t used = 0;
    for (auto _ : state) {
        Body body;
        Derive(rec, &body);
        filler.Fill(body);
        if (used > kBenchSampleSize - kRoom) {
            used = 0;
        }
        if (json) {
            text.clear();
            (void)google::protobuf::util::MessageToJsonString(*schema.sample(), &text, options);
            std::memcpy(buffer + used, text.data(), text.size());
            used += static_cast<int32_t>(text.size());
        } else {
            const int size = static_cast<int>(schema.sample()->ByteSizeLong());
            schema.sample()->SerializeToArray(buffer + used, size);
            used += size;
        }
        benchmark::DoNotOptimize(buffer);
    }
    state.SetItemsProcessed(state.iterations());
}

/* ------------------------------------------------------------- the runs */

const MDTLM_FLOW_STATS_REC kFlow4 = MakeFlow(false);
const MDTLM_FLOW_STATS_REC kFlow6 = MakeFlow(true);
const MDTLM_FLOWHOP_STATS_REC kHop = MakeFlowHop();
constexpr const char *kFlowProto = "flow_statistics.proto";
constexpr const char *kHopProto = "flow_hop_statistics.proto";

void BM_FlowGpb(benchmark::State &s) { RunPlugin(s, MDTLM_VRALDCN_FLOW_GPB_EncodeMsg, kFlow4); }
void BM_FlowGpb_CodedStream(benchmark::State &s) { RunCodedStream(s, kFlow4, 2); }
void BM_FlowGpb_Dynamic(benchmark::State &s) { RunDynamic(s, kFlow4, kFlowProto, "mdtlm.flow.Sample", false); }
void BM_FlowGpbIpv6(benchmark::State &s) { RunPlugin(s, MDTLM_VRALDCN_FLOW_GPB_EncodeMsg, kFlow6); }
void BM_FlowGpbIpv6_CodedStream(benchmark::State &s) { RunCodedStream(s, kFlow6, 2); }
void BM_FlowJson(benchmark::State &s) { RunPlugin(s, MDTLM_VRALDCN_FLOW_JSON_EncodeMsg, kFlow4); }
void BM_FlowJson_Dynamic(benchmark::State &s) { RunDynamic(s, kFlow4, kFlowProto, "mdtlm.flow.Sample", true); }
void BM_FlowHopGpb(benchmark::State &s) { RunPlugin(s, MDTLM_VRALDCN_FLOWHOP_GPB_EncodeMsg, kHop); }
void BM_FlowHopGpb_CodedStream(benchmark::State &s) { RunCodedStream(s, kHop, 3); }
void BM_FlowHopGpb_Dynamic(benchmark::State &s) { RunDynamic(s, kHop, kHopProto, "mdtlm.flowhop.Sample", false); }
void BM_FlowHopJson(benchmark::State &s) { RunPlugin(s, MDTLM_VRALDCN_FLOWHOP_JSON_EncodeMsg, kHop); }
void BM_FlowHopJson_Dynamic(benchmark::State &s) { RunDynamic(s, kHop, kHopProto, "mdtlm.flowhop.Sample", true); }

} // namespace

BENCHMARK(BM_FlowGpb);
BENCHMARK(BM_FlowGpb_CodedStream);
BENCHMARK(BM_FlowGpb_Dynamic);
BENCHMARK(BM_FlowGpbIpv6);
BENCHMARK(BM_FlowGpbIpv6_CodedStream);
BENCHMARK(BM_FlowJson);
BENCHMARK(BM_FlowJson_Dynamic);
BENCHMARK(BM_FlowHopGpb);
BENCHMARK(BM_FlowHopGpb_CodedStream);
BENCHMARK(BM_FlowHopGpb_Dynamic);
BENCHMARK(BM_FlowHopJson);
BENCHMARK(BM_FlowHopJson_Dynamic);
