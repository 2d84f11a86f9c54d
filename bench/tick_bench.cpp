/*
 * One period tick of the whole plug-in on the host platform: 2000 flow
 * records queued, then the timer fired and the worker's loop pumped once, so
 * the tick drains the queue, offers every record to every task, encodes it,
 * uploads the samples and writes the report-performance and task-statistics
 * rows to the in-memory object database. Measured at 1, 8 and 32 tasks, GPB
 * and JSON; the figure to compare with the 1000 ms period is the time per
 * tick. BM_TaskDatabaseRows is the database part alone, per task and tick.
 * bench/instructions.sh counts these per tick (one "record" is one tick).
 */
#include <benchmark/benchmark.h>

#include "bench_support.h"
#include "flow_records.h"
#include "plugin_world.h"
#include "mdtlm_vraldcn.h"

namespace {

using plugin_world::PluginWorld;

constexpr uint32_t kRecordsPerTick = 2000;

void BM_Tick(benchmark::State &state)
{
    const uint32_t tasks = static_cast<uint32_t>(state.range(0));
    PluginWorld world(tasks, static_cast<uint32_t>(state.range(1)));
    if (!world.Ok()) {
        state.SkipWithError("plug-in did not start");
        return;
    }
    const MDTLM_FLOW_STATS_REC rec = flow_bench::MakeFlow(false);
    auto tick = [&] { world.Tick(); };
    for (auto _ : state) {
        state.PauseTiming();
        world.Queue(rec, kRecordsPerTick);
        state.ResumeTiming();
        MDTLM_BenchOneRecord(tick);
    }
    state.counters["records"] = kRecordsPerTick * tasks;
}
BENCHMARK(BM_Tick)
    ->ArgsProduct({{1, 8, 32}, {0, MDTLM_ENCODE_TYPE_JSON}})
    ->ArgNames({"tasks", "json"})
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

/* The database rows of one tick, per task: the tick with no records queued
 * does nothing else but the uploads of empty buffers (none) and these rows. */
void BM_TaskDatabaseRows(benchmark::State &state)
{
    const uint32_t tasks = static_cast<uint32_t>(state.range(0));
    PluginWorld world(tasks, 0);
    if (!world.Ok()) {
        state.SkipWithError("plug-in did not start");
        return;
    }
    auto tick = [&] { world.Tick(); };
    for (auto _ : state) {
        MDTLM_BenchOneRecord(tick);
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * tasks);
}
BENCHMARK(BM_TaskDatabaseRows)->Arg(32)->Unit(benchmark::kMicrosecond)->UseRealTime();

} // namespace
