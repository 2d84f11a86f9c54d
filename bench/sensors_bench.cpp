/*
 * Cost per record of the GPB and JSON encoders of the export flow cache,
 * result statistics and the two I/O service sensors, each next to a
 * reference built on libprotobuf:
 *   - GPB: CodedOutputStream writing the same bytes (sizes computed first,
 *     then the container, the field 1 entry and the fields, as generated code
 *     does); the bytes are checked to be equal before timing;
 *   - JSON: the record set into a DynamicMessage of the schema in proto/ and
 *     printed with libprotobuf's JSON printer.
 * Both sides append record after record into a buffer of one sample's size
 * and start over when it is nearly full. Read the figures as ratios of
 * neighbouring lines.
 */
#include <benchmark/benchmark.h>
#include <google/protobuf/compiler/importer.h>
#include <google/protobuf/dynamic_message.h>
#include <google/protobuf/io/coded_stream.h>
#include <google/protobuf/io/zero_copy_stream_impl_lite.h>
#include <google/protobuf/util/json_util.h>

#include <charconv>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "bench_support.h"
#include "export_flow_caches.pb.h"
#include "flow_records.h"
#include "generated_peer.h"
#include "io_service_flow_statistics.pb.h"
#include "io_service_flow_throughput.pb.h"
#include "result_statistics.pb.h"
#include "sensor_records.h"
#include "mdtlm_vraldcn.h"

namespace {

using namespace sensor_bench;
using google::protobuf::FieldDescriptor;
using google::protobuf::Message;
using google::protobuf::io::CodedOutputStream;

constexpr int32_t kRoomKept = 1100; /* above the largest JSON room demanded */

/* ------------------------------------------------------------ field visits */

/* Every sensor lists its fields in wire order once, for any visitor. */
template <typename V>
void Visit(const MDTLM_ZELK_CACHE_REC &r, const Texts &t, V &v)
{
    v.Str(1, t.slot).Str(2, t.src).Str(3, t.dst);
    v.Int(4, r.protocolId).Int(5, r.l4SourcePort).Int(6, r.l4DestinationPort).Int(7, r.ifIndex);
    v.Int(8, r.detectTimestampSecond).Int(9, r.state).Int(10, r.seed).Int(11, r.recoveryCount);
    v.Int(12, r.sequenceNumber).Int(13, r.recoveryMode).Int(14, r.opMode);
}

template <typename V>
void Visit(const MDTLM_QUMA_RESULT_REC &r, const Texts &t, V &v)
{
    v.Int(1, r.id).Int(2, r.periodId).Int(3, r.protocol).Int(13, r.ruleId);
    v.Int(5, r.aclNumber).Str(6, t.acl).Int(7, r.vxlanReservedValue).Int(14, r.vxlanReservedValueSecond);
    v.Int(8, r.inputPackets).Int(9, r.outputPackets).Str(12, t.warn).Int(10, r.timeStamp);
}

template <typename V>
void Visit(const MDTLM_SRVTLM_FLOW_STATS_REC &r, const Texts &t, V &v)
{
    v.Int(1, r.accessType).Int(2, r.addressFamily).Str(3, t.src).Str(4, t.dst).Int(5, r.logicalUnitNum);
    v.Int(6, r.periodId).Int(7, r.ifIndex).Int(8, r.measureMode);
    v.Int(9, r.readIoAvgLatency).Int(10, r.readDal).Int(11, r.readIops).Int(12, r.readIoAvgSize);
    v.Int(13, r.readPendingIoCnt).Int(14, r.writeIoAvgLatency).Int(15, r.writeDal).Int(16, r.writeDpl);
    v.Int(17, r.writeIops).Int(18, r.writeIoAvgSize).Int(19, r.writePendingIoCnt);
    v.Int(20, r.errorInfo).Int(21, r.interval).Int(22, r.sequenceNumber);
}

template <typename V>
void Visit(const MDTLM_SRVTLM_FCTFLOW_STATS_REC &r, const Texts &t, V &v)
{
    v.Int(1, r.addressFamily).Str(2, t.src).Str(3, t.dst).Int(4, r.periodId).Str(5, t.slot);
    v.Int(6, r.srcIfIndex).Int(7, r.dstIfIndex).Int(8, r.interfaceChangeStatus);
    v.Int(9, r.fctMax).Int(10, r.fctMin).Int(11, r.fctMean).Int(12, r.fetMax).Int(13, r.fetMin).Int(14, r.fetMean);
    v.Int(15, r.nakPacketNumber).Int(16, r.rdmaPacketNumber).Int(17, r.rdmaMessageNumber).Int(18, r.errorInfo);
    v.Int(19, r.sequenceNumber);
}

struct SizeVisitor {
    size_t n = 0;
    SizeVisitor &Int(uint32_t f, uint64_t v)
    {
        n += CodedOutputStream::VarintSize32(f << 3) + CodedOutputStream::VarintSize64(v);
        return *this;
    }
    SizeVisitor &Str(uint32_t f, std::string_view s)
    {
        n += CodedOutputStream::VarintSize32(f << 3 | 2) + CodedOutputStream::VarintSize32(s.size()) + s.size();
        return *this;
    }
};

struct WriteVisitor {
    CodedOutputStream &s;
    WriteVisitor &Int(uint32_t f, uint64_t v)
    {
        s.WriteTag(f << 3);
        s.WriteVarint64(v);
        return *this;
    }
    WriteVisitor &Str(uint32_t f, std::string_view text)
    {
        s.WriteTag(f << 3 | 2);
        s.WriteVarint32(static_cast<uint32_t>(text.size()));
        s.WriteRaw(text.data(), static_cast<int>(text.size()));
        return *this;
    }
};

/* Sets the visited fields on a DynamicMessage (descriptors resolved once). */
struct DynamicVisitor {
    Message *m;
    const std::vector<const FieldDescriptor *> &byNumber;
    DynamicVisitor &Int(uint32_t f, uint64_t v)
    {
        const FieldDescriptor *fd = byNumber[f];
        if (fd->cpp_type() == FieldDescriptor::CPPTYPE_UINT64) {
            m->GetReflection()->SetUInt64(m, fd, v);
        } else {
            m->GetReflection()->SetUInt32(m, fd, static_cast<uint32_t>(v));
        }
        return *this;
    }
    DynamicVisitor &Str(uint32_t f, std::string_view s)
    {
        m->GetReflection()->SetString(m, byNumber[f], std::string(s));
        return *this;
    }
};

/* One record as the reference writes it: container, field 1 entry, body. */
template <typename Rec>
void WriteReference(const Rec &rec, uint32_t container, CodedOutputStream &s)
{
    Texts t{};
    MakeTexts(rec, t);
    SizeVisitor size;
    Visit(rec, t, size);
    const size_t entry = 1 + CodedOutputStream::VarintSize32(static_cast<uint32_t>(size.n)) + size.n;
    s.WriteTag(container << 3 | 2);
    s.WriteVarint32(static_cast<uint32_t>(entry));
    s.WriteTag(1 << 3 | 2);
    s.WriteVarint32(static_cast<uint32_t>(size.n));
    WriteVisitor write{s};
    Visit(rec, t, write);
}

/* ---------------------------------------------------------------- sensors */

template <typename Rec>
struct Sensor {
    int32_t (*gpb)(const Rec *, uint8_t *, int32_t);
    int32_t (*json)(const Rec *, uint8_t *, int32_t);
    uint32_t container;
    const char *protoFile;
    const char *recordName;
};

const Sensor<MDTLM_ZELK_CACHE_REC> kZelk = {MDTLM_ZELK_GPB_EncodeMsg, MDTLM_ZELK_JSON_EncodeMsg, 7,
                                            "export_flow_caches.proto", "mdtlm.zelk.ExportFlowCache"};
const Sensor<MDTLM_QUMA_RESULT_REC> kQuma = {MDTLM_QUMA_GPB_EncodeMsg, MDTLM_QUMA_JSON_EncodeMsg, 3,
                                             "result_statistics.proto", "mdtlm.quma.ResultStatistic"};
const Sensor<MDTLM_SRVTLM_FLOW_STATS_REC> kSrvtlm = {MDTLM_SRVTLM_FLOW_GPB_EncodeMsg, MDTLM_SRVTLM_FLOW_JSON_EncodeMsg,
                                                     5, "io_service_flow_statistics.proto",
                                                     "mdtlm.srvtlmflow.FlowStatistic"};
const Sensor<MDTLM_SRVTLM_FCTFLOW_STATS_REC> kFct = {
    MDTLM_SRVTLM_FCTFLOW_GPB_EncodeMsg, MDTLM_SRVTLM_FCTFLOW_JSON_EncodeMsg, 8, "io_service_flow_throughput.proto",
    "mdtlm.srvtlmfct.FlowThroughputStatistic"};

/* ---------------------------------------------------------------- runners */

template <typename Rec>
void RunOurs(benchmark::State &state, const Rec &rec, int32_t (*encode)(const Rec *, uint8_t *, int32_t))
{
    BenchAppendRecords(state, kRoomKept, encode, rec);
    benchmark::ClobberMemory();
}

template <typename Rec>
void RunGpbReference(benchmark::State &state, const Rec &rec, const Sensor<Rec> &sensor)
{
    /* The reference must write exactly what the encoder writes. */
    uint8_t ours[1024];
    std::string theirs;
    {
        google::protobuf::io::StringOutputStream out(&theirs);
        CodedOutputStream s(&out);
        WriteReference(rec, sensor.container, s);
    }
    const int32_t len = sensor.gpb(&rec, ours, sizeof(ours));
    if (len < 0 || theirs != std::string(reinterpret_cast<char *>(ours), static_cast<size_t>(len))) {
        state.SkipWithError("reference bytes differ from the encoder's");
        return;
    }

    BenchStreamLoop(state, kRoomKept,
                    [&](CodedOutputStream &stream) { WriteReference(rec, sensor.container, stream); });
    benchmark::ClobberMemory();
}

/* The schemas of proto/ (its directory given by the build). */
struct Schemas {
    google::protobuf::compiler::DiskSourceTree tree;
    struct Quiet : google::protobuf::compiler::MultiFileErrorCollector {
        void AddError(const std::string &, int, int, const std::string &) override {}
    } errors;
    google::protobuf::compiler::Importer importer{&tree, &errors};
    google::protobuf::DynamicMessageFactory factory;

    Schemas()
    {
        tree.MapPath("", MDTLM_BENCH_PROTO_DIR);
    }
};

template <typename Rec>
void RunJsonReference(benchmark::State &state, const Rec &rec, const Sensor<Rec> &sensor)
{
    static Schemas *schemas = new Schemas();
    if (schemas->importer.Import(sensor.protoFile) == nullptr) {
        state.SkipWithError("schema not found");
        return;
    }
    const google::protobuf::Descriptor *desc = schemas->importer.pool()->FindMessageTypeByName(sensor.recordName);
    std::vector<const FieldDescriptor *> byNumber(32, nullptr);
    for (int i = 0; i < desc->field_count(); ++i) {
        byNumber[desc->field(i)->number()] = desc->field(i);
    }
    std::unique_ptr<Message> msg(schemas->factory.GetPrototype(desc)->New());
    google::protobuf::util::JsonPrintOptions options;
    options.preserve_proto_field_names = true;
    std::string out;
    for (auto _ : state) {
        msg->Clear();
        Texts t{};
        MakeTexts(rec, t);
        DynamicVisitor set{msg.get(), byNumber};
        Visit(rec, t, set);
        out.clear();
        if (!google::protobuf::util::MessageToJsonString(*msg, &out, options).ok()) {
            state.SkipWithError("printer failed");
            break;
        }
        benchmark::DoNotOptimize(out.data());
    }
}

/* ------------------------------------------- peer: Google's generated classes */

void Fill(const MDTLM_ZELK_CACHE_REC &r, const Texts &t, mdtlm::zelk::Sample &s)
{
    auto *list = s.mutable_export_flow_caches();
    auto *m = list->export_flow_cache_size() > 0 ? list->mutable_export_flow_cache(0) : list->add_export_flow_cache();
    m->set_slot_id(t.slot);
    m->set_source_ip(t.src);
    m->set_destination_ip(t.dst);
    m->set_protocol_id(r.protocolId);
    m->set_l4_source_port(r.l4SourcePort);
    m->set_l4_destination_port(r.l4DestinationPort);
    m->set_if_index(r.ifIndex);
    m->set_detect_timestamp_second(r.detectTimestampSecond);
    m->set_state(r.state);
    m->set_seed(r.seed);
    m->set_recovery_count(r.recoveryCount);
    m->set_sequence_number(r.sequenceNumber);
    m->set_recovery_mode(r.recoveryMode);
    m->set_op_mode(r.opMode);
}

void Fill(const MDTLM_QUMA_RESULT_REC &r, const Texts &t, mdtlm::quma::Sample &s)
{
    auto *list = s.mutable_result_statistic();
    auto *m = list->result_statistic_size() > 0 ? list->mutable_result_statistic(0) : list->add_result_statistic();
    m->set_id(r.id);
    m->set_period_id(r.periodId);
    m->set_protocol(r.protocol);
    m->set_rule_id(r.ruleId);
    m->set_acl_number(r.aclNumber);
    m->set_acl_name(t.acl.data(), t.acl.size());
    m->set_vxlan_reserved_value(r.vxlanReservedValue);
    m->set_vxlan_reserved_value_second(r.vxlanReservedValueSecond);
    m->set_input_packets(r.inputPackets);
    m->set_output_packets(r.outputPackets);
    m->set_warn_info(t.warn.data(), t.warn.size());
    m->set_time_stamp(r.timeStamp);
}

void Fill(const MDTLM_SRVTLM_FLOW_STATS_REC &r, const Texts &t, mdtlm::srvtlmflow::Sample &s)
{
    auto *list = s.mutable_flow_statistics();
    auto *m = list->flow_statistic_size() > 0 ? list->mutable_flow_statistic(0) : list->add_flow_statistic();
    m->set_access_type(r.accessType);
    m->set_address_family(r.addressFamily);
    m->set_source_ip(t.src);
    m->set_destination_ip(t.dst);
    m->set_logical_unit_num(r.logicalUnitNum);
    m->set_period_id(r.periodId);
    m->set_if_index(r.ifIndex);
    m->set_measure_mode(r.measureMode);
    m->set_read_io_avg_latency(r.readIoAvgLatency);
    m->set_read_dal(r.readDal);
    m->set_read_iops(r.readIops);
    m->set_read_io_avg_size(r.readIoAvgSize);
    m->set_read_pending_io_cnt(r.readPendingIoCnt);
    m->set_write_io_avg_latency(r.writeIoAvgLatency);
    m->set_write_dal(r.writeDal);
    m->set_write_dpl(r.writeDpl);
    m->set_write_iops(r.writeIops);
    m->set_write_io_avg_size(r.writeIoAvgSize);
    m->set_write_pending_io_cnt(r.writePendingIoCnt);
    m->set_error_info(r.errorInfo);
    m->set_interval(r.interval);
    m->set_sequence_number(r.sequenceNumber);
}

void Fill(const MDTLM_SRVTLM_FCTFLOW_STATS_REC &r, const Texts &t, mdtlm::srvtlmfct::Sample &s)
{
    auto *list = s.mutable_flow_throughput_statistics();
    auto *m = list->flow_throughput_statistic_size() > 0 ? list->mutable_flow_throughput_statistic(0)
                                                         : list->add_flow_throughput_statistic();
    m->set_address_family(r.addressFamily);
    m->set_source_ip(t.src);
    m->set_destination_ip(t.dst);
    m->set_period_id(r.periodId);
    m->set_slot_id(t.slot);
    m->set_source_if_index(r.srcIfIndex);
    m->set_destination_if_index(r.dstIfIndex);
    m->set_interface_change_status(r.interfaceChangeStatus);
    m->set_fct_max(r.fctMax);
    m->set_fct_min(r.fctMin);
    m->set_fct_mean(r.fctMean);
    m->set_fet_max(r.fetMax);
    m->set_fet_min(r.fetMin);
    m->set_fet_mean(r.fetMean);
    m->set_nak_packet_number(r.nakPacketNumber);
    m->set_rdma_packet_number(r.rdmaPacketNumber);
    m->set_rdma_message_number(r.rdmaMessageNumber);
    m->set_error_info(r.errorInfo);
    m->set_sequence_number(r.sequenceNumber);
}

template <typename Sample, typename Rec>
void RunGenerated(benchmark::State &state, const Rec &rec, const Sensor<Rec> &sensor)
{
    RunGeneratedPeer<Sample>(state, kRoomKept, rec, sensor.gpb, [&](Sample &sample) {
        Texts t{};
        MakeTexts(rec, t);
        Fill(rec, t, sample);
    });
}

#define MDTLM_SENSOR_BENCH(Name, sensor, makeRecord, SampleType)                                                             \
    void BM_##Name##_Gpb(benchmark::State &state) { RunOurs(state, makeRecord(state.range(0)), sensor.gpb); }   \
    void BM_##Name##_Gpb_Reference(benchmark::State &state)                                                    \
    {                                                                                                          \
        RunGpbReference(state, makeRecord(state.range(0)), sensor);                                            \
    }                                                                                                          \
    void BM_##Name##_Json(benchmark::State &state) { RunOurs(state, makeRecord(state.range(0)), sensor.json); } \
    void BM_##Name##_Json_Reference(benchmark::State &state)                                                   \
    {                                                                                                          \
        RunJsonReference(state, makeRecord(state.range(0)), sensor);                                           \
    }                                                                                                          \
    void BM_##Name##_Gpb_Generated(benchmark::State &state)                                                    \
    {                                                                                                          \
        RunGenerated<SampleType>(state, makeRecord(state.range(0)), sensor);                                   \
    }

MDTLM_SENSOR_BENCH(ExportFlowCache, kZelk, ZelkRecord, mdtlm::zelk::Sample)
MDTLM_SENSOR_BENCH(ResultStatistic, kQuma, QumaRecord, mdtlm::quma::Sample)
MDTLM_SENSOR_BENCH(IoServiceFlow, kSrvtlm, SrvtlmRecord, mdtlm::srvtlmflow::Sample)
MDTLM_SENSOR_BENCH(IoServiceThroughput, kFct, FctRecord, mdtlm::srvtlmfct::Sample)

/* Argument: address family (0 IPv4, 1 IPv6) where the record has one. */
BENCHMARK(BM_ExportFlowCache_Gpb)->Arg(0);
BENCHMARK(BM_ExportFlowCache_Gpb_Reference)->Arg(0);
BENCHMARK(BM_ExportFlowCache_Gpb_Generated)->Arg(0);
BENCHMARK(BM_ExportFlowCache_Json)->Arg(0);
BENCHMARK(BM_ExportFlowCache_Json_Reference)->Arg(0);
BENCHMARK(BM_ResultStatistic_Gpb)->Arg(0);
BENCHMARK(BM_ResultStatistic_Gpb_Reference)->Arg(0);
BENCHMARK(BM_ResultStatistic_Gpb_Generated)->Arg(0);
BENCHMARK(BM_ResultStatistic_Json)->Arg(0);
BENCHMARK(BM_ResultStatistic_Json_Reference)->Arg(0);
BENCHMARK(BM_IoServiceFlow_Gpb)->Arg(0)->Arg(1);
BENCHMARK(BM_IoServiceFlow_Gpb_Reference)->Arg(0)->Arg(1);
BENCHMARK(BM_IoServiceFlow_Gpb_Generated)->Arg(0)->Arg(1);
BENCHMARK(BM_IoServiceFlow_Json)->Arg(0)->Arg(1);
BENCHMARK(BM_IoServiceFlow_Json_Reference)->Arg(0)->Arg(1);
BENCHMARK(BM_IoServiceThroughput_Gpb)->Arg(0)->Arg(1);
BENCHMARK(BM_IoServiceThroughput_Gpb_Reference)->Arg(0)->Arg(1);
BENCHMARK(BM_IoServiceThroughput_Gpb_Generated)->Arg(0)->Arg(1);
BENCHMARK(BM_IoServiceThroughput_Json)->Arg(0)->Arg(1);
BENCHMARK(BM_IoServiceThroughput_Json_Reference)->Arg(0)->Arg(1);

} // namespace
