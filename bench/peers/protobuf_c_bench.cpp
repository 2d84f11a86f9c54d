/*
 * The GPB records of all six sensors written with the C code protoc-c
 * generates from proto/ (protobuf-c): one message tree kept per run, each
 * record's fields set with their presence flags, texts pointing at buffers
 * the peer formats itself, then the sample sized and packed into the sample
 * buffer. Before timing, its bytes must decode to the plug-in's record field
 * for field. Compiled in when protobuf-c is installed
 * (scripts/install-deps.sh bench).
 */
#include <benchmark/benchmark.h>
#include <protobuf-c/protobuf-c.h>

#include <type_traits>

#define PEER_SET(m, f, v) ((m).has_##f = 1, (m).f = (v))
#define PEER_TEXT(m, f, text) ((m).f = (text))
#include "c_peer_fill.h"

#include "export_flow_caches.pb-c.h"
#include "export_flow_caches.pb.h"
#include "flow_hop_statistics.pb-c.h"
#include "flow_hop_statistics.pb.h"
#include "flow_statistics.pb-c.h"
#include "flow_statistics.pb.h"
#include "generated_peer.h"
#include "io_service_flow_statistics.pb-c.h"
#include "io_service_flow_statistics.pb.h"
#include "io_service_flow_throughput.pb-c.h"
#include "io_service_flow_throughput.pb.h"
#include "result_statistics.pb-c.h"
#include "result_statistics.pb.h"
#include "sensor_records.h"

namespace {

constexpr int32_t kFlowRoom = 1536;
constexpr int32_t kSensorRoom = 1100;

/* The sample (class of kList) holds its list through kList; the list holds
 * kCount records through kRecords. Each message is initialised from its
 * descriptor, reached from the sample's. */
template <typename GoogleSample, auto kList, auto kCount, auto kRecords, typename Rec>
void RunProtobufC(benchmark::State &state, int32_t room, const Rec &rec,
                  int32_t (*encode)(const Rec *, uint8_t *, int32_t), const ProtobufCMessageDescriptor &sampleDesc)
{
    using Sample = typename MemberOf<decltype(kList)>::Class;
    using List = std::remove_pointer_t<typename MemberOf<decltype(kList)>::Type>;
    using Record = std::remove_pointer_t<std::remove_pointer_t<typename MemberOf<decltype(kRecords)>::Type>>;
    const auto *listDesc = static_cast<const ProtobufCMessageDescriptor *>(sampleDesc.fields[0].descriptor);
    const auto *recordDesc = static_cast<const ProtobufCMessageDescriptor *>(listDesc->fields[0].descriptor);
    Sample sample;
    List list;
    Record record;
    Record *records[1] = {&record};
    protobuf_c_message_init(&sampleDesc, &sample);
    protobuf_c_message_init(listDesc, &list);
    protobuf_c_message_init(recordDesc, &record);
    sample.*kList = &list;
    list.*kCount = 1;
    list.*kRecords = records;
    PeerTexts texts;
    RunCheckedGpbPeer<GoogleSample>(state, room, rec, encode, [&](uint8_t *out, int32_t cap) -> int32_t {
        Fill(rec, texts, record);
        const size_t size = protobuf_c_message_get_packed_size(&sample.base);
        if (size > static_cast<size_t>(cap)) {
            return -1;
        }
        return static_cast<int32_t>(protobuf_c_message_pack(&sample.base, out));
    });
}

void RunFlow(benchmark::State &s, bool ipv6)
{
    RunProtobufC<mdtlm::flow::Sample, &Mdtlm__Flow__Sample::flow_statistics,
                 &Mdtlm__Flow__FlowStatistics::n_flow_statistic, &Mdtlm__Flow__FlowStatistics::flow_statistic>(
        s, kFlowRoom, flow_bench::MakeFlow(ipv6), MDTLM_VRALDCN_FLOW_GPB_EncodeMsg,
        mdtlm__flow__sample__descriptor);
}
void BM_FlowHopGpb_ProtobufC(benchmark::State &s)
{
    RunProtobufC<mdtlm::flowhop::Sample, &Mdtlm__Flowhop__Sample::flow_hop_statistics,
                 &Mdtlm__Flowhop__FlowHopStatistics::n_flow_hop_statistic,
                 &Mdtlm__Flowhop__FlowHopStatistics::flow_hop_statistic>(
        s, kFlowRoom, flow_bench::MakeFlowHop(), MDTLM_VRALDCN_FLOWHOP_GPB_EncodeMsg,
        mdtlm__flowhop__sample__descriptor);
}
void BM_ExportFlowCache_Gpb_ProtobufC(benchmark::State &s)
{
    RunProtobufC<mdtlm::zelk::Sample, &Mdtlm__Zelk__Sample::export_flow_caches,
                 &Mdtlm__Zelk__ExportFlowCaches::n_export_flow_cache,
                 &Mdtlm__Zelk__ExportFlowCaches::export_flow_cache>(
        s, kSensorRoom, sensor_bench::ZelkRecord(s.range(0)), MDTLM_ZELK_GPB_EncodeMsg,
        mdtlm__zelk__sample__descriptor);
}
void BM_ResultStatistic_Gpb_ProtobufC(benchmark::State &s)
{
    RunProtobufC<mdtlm::quma::Sample, &Mdtlm__Quma__Sample::result_statistic,
                 &Mdtlm__Quma__ResultStatistics::n_result_statistic,
                 &Mdtlm__Quma__ResultStatistics::result_statistic>(
        s, kSensorRoom, sensor_bench::QumaRecord(s.range(0)), MDTLM_QUMA_GPB_EncodeMsg,
        mdtlm__quma__sample__descriptor);
}
void BM_IoServiceFlow_Gpb_ProtobufC(benchmark::State &s)
{
    RunProtobufC<mdtlm::srvtlmflow::Sample, &Mdtlm__Srvtlmflow__Sample::flow_statistics,
                 &Mdtlm__Srvtlmflow__FlowStatistics::n_flow_statistic,
                 &Mdtlm__Srvtlmflow__FlowStatistics::flow_statistic>(
        s, kSensorRoom, sensor_bench::SrvtlmRecord(s.range(0)), MDTLM_SRVTLM_FLOW_GPB_EncodeMsg,
        mdtlm__srvtlmflow__sample__descriptor);
}
void BM_IoServiceThroughput_Gpb_ProtobufC(benchmark::State &s)
{
    RunProtobufC<mdtlm::srvtlmfct::Sample, &Mdtlm__Srvtlmfct__Sample::flow_throughput_statistics,
                 &Mdtlm__Srvtlmfct__FlowThroughputStatistics::n_flow_throughput_statistic,
                 &Mdtlm__Srvtlmfct__FlowThroughputStatistics::flow_throughput_statistic>(
        s, kSensorRoom, sensor_bench::FctRecord(s.range(0)), MDTLM_SRVTLM_FCTFLOW_GPB_EncodeMsg,
        mdtlm__srvtlmfct__sample__descriptor);
}

void BM_FlowGpb_ProtobufC(benchmark::State &s) { RunFlow(s, false); }
void BM_FlowGpbIpv6_ProtobufC(benchmark::State &s) { RunFlow(s, true); }

/* Argument: address family (0 IPv4, 1 IPv6) where the record has one. */
BENCHMARK(BM_FlowGpb_ProtobufC);
BENCHMARK(BM_FlowGpbIpv6_ProtobufC);
BENCHMARK(BM_FlowHopGpb_ProtobufC);
BENCHMARK(BM_ExportFlowCache_Gpb_ProtobufC)->Arg(0);
BENCHMARK(BM_ResultStatistic_Gpb_ProtobufC)->Arg(0);
BENCHMARK(BM_IoServiceFlow_Gpb_ProtobufC)->Arg(0)->Arg(1);
BENCHMARK(BM_IoServiceThroughput_Gpb_ProtobufC)->Arg(0)->Arg(1);

} // namespace
