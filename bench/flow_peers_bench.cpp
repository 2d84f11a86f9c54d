/*
 * The flow and flow-hop records encoded by what a user would otherwise pick,
 * each from the raw record, deriving the reported values and formatting the
 * address texts itself with plain code:
 *   - "Generated": the C++ classes protoc generates from proto/ (one message
 *     kept and refilled per record, serialised into the sample buffer);
 *   - "Protozero": protozero's pbf_writer over the sample buffer (when the
 *     headers are installed: scripts/install-deps.sh bench);
 *   - JSON "RapidJson": RapidJSON's Writer producing the same object.
 * Before timing, every peer's record is checked: GPB peers must decode to the
 * plug-in's record field for field, RapidJSON's object followed by "," must be
 * the plug-in's bytes. The plug-in's own lines are BM_FlowGpb, BM_FlowGpbIpv6,
 * BM_FlowJson, BM_FlowJsonIpv6, BM_FlowHopGpb in flow_bench.cpp; the direct
 * JSON writers are in json_direct_bench.cpp.
 */
#include <benchmark/benchmark.h>

#include <charconv>
#include <cstring>
#include <string>
#include <string_view>

#include "bench_support.h"
#include "direct_json.h"
#include "generated_peer.h"
#include "flow_hop_statistics.pb.h"
#include "flow_records.h"
#include "flow_statistics.pb.h"
#include "mdtlm_vraldcn.h"

#if __has_include(<protozero/pbf_writer.hpp>)
#include <protozero/buffer_fixed.hpp>
#include <protozero/basic_pbf_writer.hpp>
#define MDTLM_BENCH_PROTOZERO 1
#endif
#if __has_include(<rapidjson/writer.h>)
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>
#define MDTLM_BENCH_RAPIDJSON 1
#endif

namespace {

using namespace flow_bench;

constexpr int32_t kRoom = 1536;

const MDTLM_FLOW_STATS_REC kFlow4 = MakeFlow(false);
const MDTLM_FLOW_STATS_REC kFlow6 = MakeFlow(true);
const MDTLM_FLOWHOP_STATS_REC kHop = MakeFlowHop();

/* -------------------------------------------------- generated classes */

/* The setters both generated record classes share, by the same names. */
template <typename Rec, typename Msg>
void FillHead(const Rec &r, Msg *m)
{
    m->Clear();
    m->set_flow_id(FlowId(r.flowIdHigh, r.flowIdLow));
    m->set_direction(r.direction == 1 ? 1 : 4);
    m->set_if_index(r.ifIndex);
}

template <typename Rec, typename Msg>
void FillShared(const Rec &r, Msg *m)
{
    m->set_error_info(r.errorInfo);
    m->set_error_info_ext(r.errorInfoExt);
    m->set_period_id(r.periodId);
    m->set_packet_count(r.packetCount);
    m->set_byte_count(r.byteCount);
    m->set_timestamp_second(r.timestampSecond);
    m->set_timestamp_nanosecond(r.timestampNanosecond);
    m->set_ttl(r.ttl);
    m->set_vlan(r.vlan);
    m->set_tunnel_mode(TunnelMode(r.tunnelFlag, r.tunnelType));
    if (r.tunnelFlag == 1) {
        m->set_tunnel_id(r.tunnelId);
        m->set_outer_ttl(r.outerTtl);
    }
    m->set_queue_pair(r.queuePair);
}

template <typename Rec, typename Msg>
void FillClosing(const Rec &r, Msg *m)
{
    m->set_sequence_number(r.sequenceNumber);
    m->set_chassis_id(r.chassisId, strnlen(r.chassisId, sizeof(r.chassisId)));
    m->set_slot_id(r.slotId, strnlen(r.slotId, sizeof(r.slotId)));
}

void Fill(const MDTLM_FLOW_STATS_REC &r, mdtlm::flow::FlowStatistic *m)
{
    char src[40], dst[40];
    FormatAddress(r.srcAddr, r.addressFamily == 2, src);
    FormatAddress(r.dstAddr, r.addressFamily == 2, dst);
    FillHead(r, m);
    m->set_interval(r.interval);
    m->set_measure_mode(r.measureMode);
    m->set_address_family(r.addressFamily == 1 ? 0 : 1);
    m->set_source_ip(src);
    m->set_destination_ip(dst);
    m->set_protocol(r.protocol);
    m->set_source_port(r.srcPort);
    m->set_destination_port(r.dstPort);
    FillShared(r, m);
    FillClosing(r, m);
}

void Fill(const MDTLM_FLOWHOP_STATS_REC &r, mdtlm::flowhop::FlowHopStatistic *m)
{
    FillHead(r, m);
    m->set_measure_mode(r.measureMode);
    m->set_interval(r.interval);
    FillShared(r, m);
    m->set_maximum_delay(uint32_t(r.maximumDelay << 8));
    m->set_total_delay(r.totalDelay << 8);
    m->set_total_count(r.totalCount);
    FillClosing(r, m);
}

mdtlm::flow::FlowStatistic *Entry(mdtlm::flow::Sample &s)
{
    auto *list = s.mutable_flow_statistics();
    return list->flow_statistic_size() > 0 ? list->mutable_flow_statistic(0) : list->add_flow_statistic();
}
mdtlm::flowhop::FlowHopStatistic *Entry(mdtlm::flowhop::Sample &s)
{
    auto *list = s.mutable_flow_hop_statistics();
    return list->flow_hop_statistic_size() > 0 ? list->mutable_flow_hop_statistic(0) : list->add_flow_hop_statistic();
}

template <typename Sample, typename Rec>
void RunGenerated(benchmark::State &state, const Rec &rec, int32_t (*encode)(const Rec *, uint8_t *, int32_t))
{
    RunGeneratedPeer<Sample>(state, kRoom, rec, encode, [&](Sample &sample) { Fill(rec, Entry(sample)); });
}

void BM_FlowGpb_Generated(benchmark::State &s)
{
    RunGenerated<mdtlm::flow::Sample>(s, kFlow4, MDTLM_VRALDCN_FLOW_GPB_EncodeMsg);
}
void BM_FlowGpbIpv6_Generated(benchmark::State &s)
{
    RunGenerated<mdtlm::flow::Sample>(s, kFlow6, MDTLM_VRALDCN_FLOW_GPB_EncodeMsg);
}
void BM_FlowHopGpb_Generated(benchmark::State &s)
{
    RunGenerated<mdtlm::flowhop::Sample>(s, kHop, MDTLM_VRALDCN_FLOWHOP_GPB_EncodeMsg);
}
BENCHMARK(BM_FlowGpb_Generated);
BENCHMARK(BM_FlowGpbIpv6_Generated);
BENCHMARK(BM_FlowHopGpb_Generated);

/* ---------------------------------------------------------- protozero */

#ifdef MDTLM_BENCH_PROTOZERO
template <typename Rec>
void RunProtozero(benchmark::State &state, const Rec &rec, uint32_t container,
                  bool (*same)(const Rec &, const uint8_t *, int32_t))
{
    auto write = [&](uint8_t *out, int32_t cap) -> int32_t {
        Body body;
        Derive(rec, &body);
        protozero::fixed_size_buffer_adaptor buffer(reinterpret_cast<char *>(out), static_cast<std::size_t>(cap));
        {
            protozero::basic_pbf_writer<protozero::fixed_size_buffer_adaptor> sample(buffer);
            protozero::basic_pbf_writer<protozero::fixed_size_buffer_adaptor> list(sample, container);
            protozero::basic_pbf_writer<protozero::fixed_size_buffer_adaptor> entry(list, 1);
            for (int i = 0; i < body.count; ++i) {
                const Field &f = body.fields[i];
                if (f.text != nullptr) {
                    entry.add_string(f.number, f.text);
                } else {
                    entry.add_uint64(f.number, f.value);
                }
            }
        }
        return static_cast<int32_t>(buffer.size());
    };
    uint8_t check[2048];
    const int32_t len = write(check, sizeof(check));
    if (!same(rec, check, len)) {
        state.SkipWithError("protozero record differs from the plug-in's");
        return;
    }
    BenchAppendLoop(state, kRoom, 1, "protozero failed", write);
    state.SetItemsProcessed(state.iterations());
}

bool SameFlow(const MDTLM_FLOW_STATS_REC &r, const uint8_t *p, int32_t n)
{
    return SameAsPlugin<mdtlm::flow::Sample>(r, MDTLM_VRALDCN_FLOW_GPB_EncodeMsg, p, n);
}
bool SameHop(const MDTLM_FLOWHOP_STATS_REC &r, const uint8_t *p, int32_t n)
{
    return SameAsPlugin<mdtlm::flowhop::Sample>(r, MDTLM_VRALDCN_FLOWHOP_GPB_EncodeMsg, p, n);
}

void BM_FlowGpb_Protozero(benchmark::State &s) { RunProtozero(s, kFlow4, 2, SameFlow); }
void BM_FlowGpbIpv6_Protozero(benchmark::State &s)
{
    RunProtozero(s, kFlow6, 2, SameFlow);
}
void BM_FlowHopGpb_Protozero(benchmark::State &s)
{
    RunProtozero(s, kHop, 3, SameHop);
}
BENCHMARK(BM_FlowGpb_Protozero);
BENCHMARK(BM_FlowGpbIpv6_Protozero);
BENCHMARK(BM_FlowHopGpb_Protozero);
#endif

/* ------------------------------------------------------ JSON RapidJSON */

#ifdef MDTLM_BENCH_RAPIDJSON
/* RapidJSON's Writer into a string buffer kept between records, then copied
 * to the sample buffer with the separating ",". */
void RunRapidJson(benchmark::State &state, const MDTLM_FLOW_STATS_REC &r)
{
    rapidjson::StringBuffer text;
    auto write = [&](uint8_t *out, int32_t) -> int32_t {
        Body b;
        Derive(r, &b);
        text.Clear();
        rapidjson::Writer<rapidjson::StringBuffer> w(text);
        w.StartObject();
        const auto num = [&](const char *key, uint64_t v) {
            w.Key(key);
            w.Uint64(v);
        };
        const auto str = [&](const char *key, const char *v) {
            w.Key(key);
            w.String(v);
        };
        num("flow-id", FlowId(r.flowIdHigh, r.flowIdLow));
        num("direction", r.direction == 1 ? 1 : 4);
        num("address-family", r.addressFamily == 1 ? 0 : 1);
        str("source-ip", b.src);
        str("destination-ip", b.dst);
        num("source-port", r.srcPort);
        num("destination-port", r.dstPort);
        num("protocol", r.protocol);
        num("if-index", r.ifIndex);
        num("error-info", r.errorInfo);
        num("error-info-ext", r.errorInfoExt);
        num("interval", r.interval);
        num("period-id", r.periodId);
        num("packet-count", r.packetCount);
        num("byte-count", r.byteCount);
        num("timestamp-second", r.timestampSecond);
        num("timestamp-nanosecond", r.timestampNanosecond);
        num("ttl", r.ttl);
        num("measure-mode", r.measureMode);
        num("vlan", r.vlan);
        num("queue-pair", r.queuePair);
        num("tunnel-mode", TunnelMode(r.tunnelFlag, r.tunnelType));
        num("tunnel-id", r.tunnelId);
        num("outer-ttl", r.outerTtl);
        num("sequence-number", r.sequenceNumber);
        str("chassis-id", b.chassis);
        str("slot-id", b.slot);
        w.EndObject();
        const size_t len = text.GetSize();
        std::memcpy(out, text.GetString(), len);
        out[len] = ',';
        out[len + 1] = '\0';
        return static_cast<int32_t>(len + 1);
    };
    RunJsonPeer(state, kRoom, r, MDTLM_VRALDCN_FLOW_JSON_EncodeMsg, write);
}
void BM_FlowJson_RapidJson(benchmark::State &s) { RunRapidJson(s, kFlow4); }
BENCHMARK(BM_FlowJson_RapidJson);
#endif

} // namespace
