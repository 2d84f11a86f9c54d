/*
 * What the benchmark programs share: the loop that appends one writer's output
 * after another into a buffer of one sample's size, starting over when it is
 * nearly full, as the period tick does with a sample buffer; and the same
 * loop for the libprotobuf references, which write through one stream per
 * pass over the buffer.
 */
#ifndef MDTLM_BENCH_BENCH_SUPPORT_H
#define MDTLM_BENCH_BENCH_SUPPORT_H

#include <benchmark/benchmark.h>
#include <google/protobuf/io/coded_stream.h>
#include <google/protobuf/io/zero_copy_stream_impl_lite.h>

#include <cstdint>
#include <optional>
#include <utility>

#include "mdtlm_vraldcn.h"

constexpr int32_t kBenchSampleSize = static_cast<int32_t>(MDTLM_SAMPLE_DATA_SIZE);

/* Every benchmark's measured work, one record per call and never inlined, so
 * that bench/instructions.sh can count the instructions spent inside it with
 * callgrind (--toggle-collect) and divide them by its calls. */
template <typename Write, typename... Args>
__attribute__((noinline)) auto MDTLM_BenchOneRecord(Write &write, Args &&...args)
{
    return write(std::forward<Args>(args)...);
}

/* Runs `write(out, cap)` once per iteration at a running offset of the buffer,
 * starting over at offset 0 when less than `room` bytes would remain. A result
 * below `smallestResult` stops the benchmark with `failure`. */
template <typename Write>
void BenchAppendLoop(benchmark::State &state, int32_t room, int32_t smallestResult, const char *failure,
                     Write write)
{
    static uint8_t buffer[kBenchSampleSize];
    int32_t used = 0;
    for (auto _ : state) {
        if (used > kBenchSampleSize - room) {
            used = 0;
        }
        const int32_t ret = MDTLM_BenchOneRecord(write, buffer + used, kBenchSampleSize - used);
        if (ret < smallestResult) {
            state.SkipWithError(failure);
            break;
        }
        used += ret;
        benchmark::DoNotOptimize(buffer);
    }
}

/* One record encoder appending record after record; an encoder that writes
 * nothing counts as failed. */
template <typename Rec>
void BenchAppendRecords(benchmark::State &state, int32_t room, int32_t (*encode)(const Rec *, uint8_t *, int32_t),
                        const Rec &rec)
{
    BenchAppendLoop(state, room, 1, "encoder failed",
                    [&](uint8_t *out, int32_t cap) { return encode(&rec, out, cap); });
}

/* Runs `write(stream)` once per iteration on a stream over the buffer, opening
 * a new stream at offset 0 when less than `room` bytes would remain. */
template <typename Write>
void BenchStreamLoop(benchmark::State &state, int32_t room, Write write)
{
    static uint8_t buffer[kBenchSampleSize];
    std::optional<google::protobuf::io::ArrayOutputStream> array;
    std::optional<google::protobuf::io::CodedOutputStream> stream;
    for (auto _ : state) {
        if (!stream || stream->ByteCount() > kBenchSampleSize - room) {
            stream.reset();
            array.emplace(buffer, kBenchSampleSize);
            stream.emplace(&*array);
        }
        MDTLM_BenchOneRecord(write, *stream);
        benchmark::DoNotOptimize(buffer);
    }
}

#endif /* MDTLM_BENCH_BENCH_SUPPORT_H */
