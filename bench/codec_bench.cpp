/*
 * Cost of the GPB field writers, each next to libprotobuf's CodedOutputStream
 * writing the same bytes, and of the condition and filter engine.
 *
 * Both sides append field after field into a buffer of one sample's size and
 * start over at its beginning when it is nearly full; the reference keeps one
 * stream per pass over the buffer, so its set-up is spread over a buffer's
 * worth of fields. Read the figures as ratios of neighbouring lines.
 */
#include <benchmark/benchmark.h>
#include <google/protobuf/io/coded_stream.h>

#include <cstdint>
#include <cstring>
#include <string>

#include "bench_support.h"
#include "mdtlm_platform.h"
#include "mdtlm_vraldcn.h"

namespace {

using google::protobuf::io::CodedOutputStream;

constexpr int32_t kLargestField = 512; /* room kept free before every write */

/* A value whose varint takes `bytes` bytes (1..10). */
uint64_t ValueOfLength(int64_t bytes)
{
    return bytes >= 10 ? UINT64_MAX : (1ull << (7 * (bytes - 1)));
}

const std::string kText = "dravik-chassis-01/slot-3";
const std::string kBlob(200, '\x5a');

/* Our writer at a running offset of one sample buffer. */
template <typename Write>
void RunOurs(benchmark::State &state, Write write)
{
    BenchAppendLoop(state, kLargestField, 0, "writer failed", write);
    benchmark::ClobberMemory();
}

/* libprotobuf writing the same bytes through one stream per buffer pass. */
template <typename Write>
void RunReference(benchmark::State &state, Write write)
{
    BenchStreamLoop(state, kLargestField, write);
    benchmark::ClobberMemory();
}

void BM_Varint(benchmark::State &state)
{
    const uint64_t value = ValueOfLength(state.range(0));
    RunOurs(state, [&](uint8_t *out, int32_t cap) { return MDTLM_VRALDCN_GPB_EncodeVarint(value, out, cap); });
}
void BM_Varint_Reference(benchmark::State &state)
{
    const uint64_t value = ValueOfLength(state.range(0));
    RunReference(state, [&](CodedOutputStream &s) { s.WriteVarint64(value); });
}

void BM_IntegerField(benchmark::State &state)
{
    const uint64_t value = ValueOfLength(state.range(0));
    RunOurs(state,
            [&](uint8_t *out, int32_t cap) { return MDTLM_VRALDCN_GPB_EncodeInterger(5, value, out, cap); });
}
void BM_IntegerField_Reference(benchmark::State &state)
{
    const uint64_t value = ValueOfLength(state.range(0));
    RunReference(state, [&](CodedOutputStream &s) {
        s.WriteTag(5 << 3);
        s.WriteVarint64(value);
    });
}

void BM_StringField(benchmark::State &state)
{
    RunOurs(state, [](uint8_t *out, int32_t cap) {
        return MDTLM_VRALDCN_GPB_EncodeString(3, kText.c_str(), out, cap);
    });
}
void BM_StringField_Reference(benchmark::State &state)
{
    RunReference(state, [](CodedOutputStream &s) {
        s.WriteTag((3 << 3) | 2);
        /* The text's length is taken per call, as the writer does. */
        const char *text = kText.c_str();
        const uint32_t len = static_cast<uint32_t>(std::strlen(text));
        s.WriteVarint32(len);
        s.WriteRaw(text, static_cast<int>(len));
    });
}

void BM_LengthDelimitedField(benchmark::State &state)
{
    RunOurs(state, [](uint8_t *out, int32_t cap) {
        return MDTLM_VRALDCN_GPB_EncodeLengthDelimited(1, reinterpret_cast<const uint8_t *>(kBlob.data()),
                                                       static_cast<uint32_t>(kBlob.size()), out, cap);
    });
}
void BM_LengthDelimitedField_Reference(benchmark::State &state)
{
    RunReference(state, [](CodedOutputStream &s) {
        s.WriteTag((1 << 3) | 2);
        s.WriteVarint32(static_cast<uint32_t>(kBlob.size()));
        s.WriteRaw(kBlob.data(), static_cast<int>(kBlob.size()));
    });
}

/* The bounded copy that every length-delimited field makes, on its own. */
void BM_PlatformMemcpyS(benchmark::State &state)
{
    static uint8_t buffer[kBenchSampleSize];
    for (auto _ : state) {
        benchmark::DoNotOptimize(memcpy_s(buffer, kBenchSampleSize, kBlob.data(), kBlob.size()));
        benchmark::ClobberMemory();
    }
}

BENCHMARK(BM_Varint)->Arg(1)->Arg(5)->Arg(10);
BENCHMARK(BM_Varint_Reference)->Arg(1)->Arg(5)->Arg(10);
BENCHMARK(BM_IntegerField)->Arg(1)->Arg(5)->Arg(10);
BENCHMARK(BM_IntegerField_Reference)->Arg(1)->Arg(5)->Arg(10);
BENCHMARK(BM_StringField);
BENCHMARK(BM_StringField_Reference);
BENCHMARK(BM_LengthDelimitedField);
BENCHMARK(BM_LengthDelimitedField_Reference);
BENCHMARK(BM_PlatformMemcpyS);

/* ------------------------------------------------------------ filter engine */

struct BenchRecord {
    uint64_t flowId;
    uint32_t direction;
    uint64_t packets;
    uint64_t bytes;
};

const MDTLM_FILTER_MAP_ENTRY kCondMap[] = {
    {"flow-id", 0}, {"direction", 1}, {"source-address", 2}, {"destination-address", 3}, {"if-index", 4},
};
const MDTLM_FILTER_MAP_ENTRY kFilterMap[] = {
    {"packet-count", 5}, {"byte-count", 6}, {"ttl", 7}, {"vlan", 8}, {"period-id", 9}, {"flow-id", 0},
};

uint32_t CmpCondition(uint32_t id, const MDTLM_PATH_CONDITION *cond, const void *record)
{
    const BenchRecord *rec = static_cast<const BenchRecord *>(record);
    switch (id) {
    case 0:
        return rec->flowId == std::strtoull(cond->value, nullptr, 10) ? 1u : 0u;
    case 1:
        return rec->direction == static_cast<uint32_t>(std::strtoul(cond->value, nullptr, 10)) ? 1u : 0u;
    default:
        return 1;
    }
}

uint32_t CmpFilter(uint32_t id, const MDTLM_PATH_FILTER *filter, const void *record)
{
    const BenchRecord *rec = static_cast<const BenchRecord *>(record);
    switch (id) {
    case 5:
        return MDTLM_STATS_SensorFilterOp64(filter->threshold, rec->packets, filter->op);
    case 6:
        return MDTLM_STATS_SensorFilterOp64(filter->threshold, rec->bytes, filter->op);
    default:
        return 1;
    }
}

MDTLM_SENSOR_PATH_INFO BenchBlock()
{
    MDTLM_SENSOR_PATH_INFO block;
    std::memset(&block, 0, sizeof(block));
    block.conditionCnt = 2;
    std::strcpy(block.conditions[0].fieldName, "flow-id");
    std::strcpy(block.conditions[0].value, "4242");
    std::strcpy(block.conditions[1].fieldName, "direction");
    std::strcpy(block.conditions[1].value, "1");
    block.filterCnt = 2;
    block.filterLogic = MDTLM_FILTER_LOGIC_AND;
    std::strcpy(block.filters[0].fieldName, "packet-count");
    block.filters[0].op = MDTLM_FILTER_OP_GT;
    block.filters[0].threshold = 100;
    std::strcpy(block.filters[1].fieldName, "byte-count");
    block.filters[1].op = MDTLM_FILTER_OP_GE;
    block.filters[1].threshold = 1000;
    return block;
}

/* One record against one task: its two conditions, then its two filters. */
void BM_FilterEngine(benchmark::State &state)
{
    const MDTLM_SENSOR_PATH_INFO block = BenchBlock();
    BenchRecord rec{4242, 1, 500, 64000};
    for (auto _ : state) {
        benchmark::DoNotOptimize(&rec);
        uint32_t pass = MDTLM_STATS_SensorPathCondition(&block, &rec, kCondMap, 5, CmpCondition);
        if (pass != 0) {
            pass = MDTLM_STATS_SensorPathFilter(&block, &rec, kFilterMap, 6, CmpFilter);
        }
        benchmark::DoNotOptimize(pass);
    }
}
BENCHMARK(BM_FilterEngine);

} // namespace
