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
#include "flow_records.h"
#include "mdtlm_vraldcn.h"

namespace {

using namespace flow_bench;
using google::protobuf::FieldDescriptor;
using google::protobuf::Message;
using google::protobuf::Reflection;
using google::protobuf::io::CodedOutputStream;

constexpr int32_t kRoom = 1536; /* kept free before every record: the largest record and the JSON floor */

/* ------------------------------------------------------------ the plug-in */

template <typename Rec>
void RunPlugin(benchmark::State &state, int32_t (*encode)(const Rec *, uint8_t *, int32_t), const Rec &rec)
{
    BenchAppendRecords(state, kRoom, encode, rec);
    state.SetItemsProcessed(state.iterations());
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

/* The sample message of a schema in proto/ (its directory given by the build). */
class Schema {
public:
    Schema(const char *file, const char *sample)
    {
        tree_.MapPath("", MDTLM_BENCH_PROTO_DIR);
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
void BM_FlowJsonIpv6(benchmark::State &s) { RunPlugin(s, MDTLM_VRALDCN_FLOW_JSON_EncodeMsg, kFlow6); }
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
BENCHMARK(BM_FlowJsonIpv6);
BENCHMARK(BM_FlowHopGpb);
BENCHMARK(BM_FlowHopGpb_CodedStream);
BENCHMARK(BM_FlowHopGpb_Dynamic);
BENCHMARK(BM_FlowHopJson);
BENCHMARK(BM_FlowHopJson_Dynamic);
