/*
 * The GPB records of all six sensors written with the C code nanopb
 * generates from proto/ (texts and record lists sized in nanopb.options):
 * one sample kept per run, each record's fields set with their presence
 * flags, texts copied into the message, then the sample encoded into the
 * sample buffer with pb_encode. Before timing, its bytes must decode to the
 * plug-in's record field for field. Compiled in when nanopb is installed
 * (scripts/install-deps.sh bench).
 */
#include <benchmark/benchmark.h>
#include <pb_encode.h>

#include <cstring>

/* A text copied into the message's own array, as nanopb messages hold them. */
template <std::size_t N>
void CopyPeerText(char (&to)[N], const char *text)
{
    const std::size_t len = strnlen(text, N - 1);
    std::memcpy(to, text, len);
    to[len] = '\0';
}
#define PEER_SET(m, f, v) ((m).has_##f = true, (m).f = (v))
#define PEER_TEXT(m, f, text) ((m).has_##f = true, CopyPeerText((m).f, (text)))
#include "c_peer_fill.h"

#include "export_flow_caches.nanopb.h"
#include "export_flow_caches.pb.h"
#include "flow_hop_statistics.nanopb.h"
#include "flow_hop_statistics.pb.h"
#include "flow_statistics.nanopb.h"
#include "flow_statistics.pb.h"
#include "generated_peer.h"
#include "io_service_flow_statistics.nanopb.h"
#include "io_service_flow_statistics.pb.h"
#include "io_service_flow_throughput.nanopb.h"
#include "io_service_flow_throughput.pb.h"
#include "result_statistics.nanopb.h"
#include "result_statistics.pb.h"
#include "sensor_records.h"

namespace {

constexpr int32_t kFlowRoom = 1536;
constexpr int32_t kSensorRoom = 1100;

/* The sample holds its list through kList (present by kHasList); the list
 * holds kCount records in its array kRecords. */
template <typename GoogleSample, auto kHasList, auto kList, auto kCount, auto kRecords, typename Rec>
void RunNanopb(benchmark::State &state, int32_t room, const Rec &rec,
               int32_t (*encode)(const Rec *, uint8_t *, int32_t), const pb_msgdesc_t *fields)
{
    using Sample = typename MemberOf<decltype(kList)>::Class;
    Sample sample{};
    sample.*kHasList = true;
    auto &list = sample.*kList;
    list.*kCount = 1;
    auto &record = (list.*kRecords)[0];
    PeerTexts texts;
    RunCheckedGpbPeer<GoogleSample>(state, room, rec, encode, [&](uint8_t *out, int32_t cap) -> int32_t {
        Fill(rec, texts, record);
        pb_ostream_t stream = pb_ostream_from_buffer(out, static_cast<size_t>(cap));
        return pb_encode(&stream, fields, &sample) ? static_cast<int32_t>(stream.bytes_written) : -1;
    });
}

void RunFlow(benchmark::State &s, bool ipv6)
{
    RunNanopb<mdtlm::flow::Sample, &mdtlm_flow_Sample::has_flow_statistics, &mdtlm_flow_Sample::flow_statistics,
              &mdtlm_flow_FlowStatistics::flow_statistic_count, &mdtlm_flow_FlowStatistics::flow_statistic>(
        s, kFlowRoom, flow_bench::MakeFlow(ipv6), MDTLM_VRALDCN_FLOW_GPB_EncodeMsg, mdtlm_flow_Sample_fields);
}
void BM_FlowGpb_Nanopb(benchmark::State &s) { RunFlow(s, false); }
void BM_FlowGpbIpv6_Nanopb(benchmark::State &s) { RunFlow(s, true); }
void BM_FlowHopGpb_Nanopb(benchmark::State &s)
{
    RunNanopb<mdtlm::flowhop::Sample, &mdtlm_flowhop_Sample::has_flow_hop_statistics,
              &mdtlm_flowhop_Sample::flow_hop_statistics, &mdtlm_flowhop_FlowHopStatistics::flow_hop_statistic_count,
              &mdtlm_flowhop_FlowHopStatistics::flow_hop_statistic>(
        s, kFlowRoom, flow_bench::MakeFlowHop(), MDTLM_VRALDCN_FLOWHOP_GPB_EncodeMsg, mdtlm_flowhop_Sample_fields);
}
void BM_ExportFlowCache_Gpb_Nanopb(benchmark::State &s)
{
    RunNanopb<mdtlm::zelk::Sample, &mdtlm_zelk_Sample::has_export_flow_caches, &mdtlm_zelk_Sample::export_flow_caches,
              &mdtlm_zelk_ExportFlowCaches::export_flow_cache_count, &mdtlm_zelk_ExportFlowCaches::export_flow_cache>(
        s, kSensorRoom, sensor_bench::ZelkRecord(s.range(0)), MDTLM_ZELK_GPB_EncodeMsg, mdtlm_zelk_Sample_fields);
}
void BM_ResultStatistic_Gpb_Nanopb(benchmark::State &s)
{
    RunNanopb<mdtlm::quma::Sample, &mdtlm_quma_Sample::has_result_statistic, &mdtlm_quma_Sample::result_statistic,
              &mdtlm_quma_ResultStatistics::result_statistic_count, &mdtlm_quma_ResultStatistics::result_statistic>(
        s, kSensorRoom, sensor_bench::QumaRecord(s.range(0)), MDTLM_QUMA_GPB_EncodeMsg, mdtlm_quma_Sample_fields);
}
void BM_IoServiceFlow_Gpb_Nanopb(benchmark::State &s)
{
    RunNanopb<mdtlm::srvtlmflow::Sample, &mdtlm_srvtlmflow_Sample::has_flow_statistics,
              &mdtlm_srvtlmflow_Sample::flow_statistics, &mdtlm_srvtlmflow_FlowStatistics::flow_statistic_count,
              &mdtlm_srvtlmflow_FlowStatistics::flow_statistic>(
        s, kSensorRoom, sensor_bench::SrvtlmRecord(s.range(0)), MDTLM_SRVTLM_FLOW_GPB_EncodeMsg,
        mdtlm_srvtlmflow_Sample_fields);
}
void BM_IoServiceThroughput_Gpb_Nanopb(benchmark::State &s)
{
    RunNanopb<mdtlm::srvtlmfct::Sample, &mdtlm_srvtlmfct_Sample::has_flow_throughput_statistics,
              &mdtlm_srvtlmfct_Sample::flow_throughput_statistics,
              &mdtlm_srvtlmfct_FlowThroughputStatistics::flow_throughput_statistic_count,
              &mdtlm_srvtlmfct_FlowThroughputStatistics::flow_throughput_statistic>(
        s, kSensorRoom, sensor_bench::FctRecord(s.range(0)), MDTLM_SRVTLM_FCTFLOW_GPB_EncodeMsg,
        mdtlm_srvtlmfct_Sample_fields);
}

/* Argument: address family (0 IPv4, 1 IPv6) where the record has one. */
BENCHMARK(BM_FlowGpb_Nanopb);
BENCHMARK(BM_FlowGpbIpv6_Nanopb);
BENCHMARK(BM_FlowHopGpb_Nanopb);
BENCHMARK(BM_ExportFlowCache_Gpb_Nanopb)->Arg(0);
BENCHMARK(BM_ResultStatistic_Gpb_Nanopb)->Arg(0);
BENCHMARK(BM_IoServiceFlow_Gpb_Nanopb)->Arg(0)->Arg(1);
BENCHMARK(BM_IoServiceThroughput_Gpb_Nanopb)->Arg(0)->Arg(1);

} // namespace
