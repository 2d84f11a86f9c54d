/*
 * One period tick of the whole plug-in on the host platform: 2000 flow
 * records queued, then the timer fired and the worker's loop pumped once, so
 * the tick drains the queue, offers every record to every task, encodes it,
 * uploads the samples and writes the report-performance and task-statistics
 * rows to the in-memory object database. Measured at 1, 8 and 32 tasks, GPB
 * and JSON; the figure to compare with the 1000 ms period is the time per
 * tick. BM_TaskDatabaseRows is the database part alone, per task and tick.
 *
 * The framework's table is a minimal one: malloc'ed buffers, uploads and log
 * lines accepted and dropped.
 */
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <cstring>

#include "flow_records.h"
#include "mdtlm_host.h"
#include "mdtlm_vraldcn.h"

namespace {

constexpr uint32_t kRecordsPerTick = 2000;

uint32_t AcceptRegistration(uint32_t, const char *, const MDTLM_XPATH_REG_INFO *) { return 0; }
uint32_t AcceptSample(uint32_t, MDTLM_SAMPLE_BUFFER *) { return 0; }
uint32_t DropLine(uint32_t, uint32_t, const char *) { return 0; }
void *Allocate(uint32_t, uint32_t size) { return std::malloc(size); }
void Release(uint32_t, void *buf) { std::free(buf); }

/* The plug-in started on the host with manual timers and loops, and `tasks`
 * flow tasks of one encoding; stopped again when the benchmark ends. */
class TickWorld {
public:
    TickWorld(uint32_t tasks, uint32_t encodeType)
    {
        table_.RegXpath = AcceptRegistration;
        table_.SampleDataUpload = AcceptSample;
        table_.WriteLog = DropLine;
        table_.BufAlloc = Allocate;
        table_.BufFree = Release;
        MDTLM_HOST_SetFrameworkTable(&table_);
        MDTLM_HOST_DbOpen(nullptr);
        MDTLM_HOST_SetManualTasks(1);
        MDTLM_HOST_SetManualClock(1);
        MDTLM_HOST_ChanSetPortOverride(1, 0);
        ok_ = MDTLM_VRALDCN_Init(1) == 0;
        for (uint32_t t = 0; ok_ && t < tasks; ++t) {
            MDTLM_SENSOR_PATH_INFO info{};
            info.encodeType = encodeType;
            info.sampleInterval = 1000;
            ok_ = g_mdtlmVralDcnXpathNode[0].addFunc(1, t + 1, &info) == 0;
            Pump();
        }
        Tick(); /* the first tick allocates the sample buffers and database rows */
    }
    ~TickWorld()
    {
        Pump();
        MDTLM_VRALDCN_Unload();
        MDTLM_HOST_JoinTasks();
        MDTLM_HOST_DbClose();
    }
    bool Ok() const { return ok_; }

    void Queue(const MDTLM_FLOW_STATS_REC &rec, uint32_t count)
    {
        for (uint32_t i = 0; i < count; ++i) {
            auto *msg = static_cast<MDTLM_STATS_MSG *>(MDTLM_VRALDCN_BufAlloc(sizeof(MDTLM_STATS_MSG) + sizeof(rec)));
            msg->msgType = MDTLM_SENSOR_VRAL_FLOW;
            msg->msgLen = sizeof(rec);
            std::memcpy(msg->body, &rec, sizeof(rec));
            if (MDTLM_VRALDCN_STATS_QUE_Push(msg) != 0) {
                MDTLM_VRALDCN_BufFree(reinterpret_cast<void **>(&msg));
            }
        }
    }
    void Tick()
    {
        MDTLM_HOST_TimerFire(g_mdtlmVralDcnTimerId, 1);
        Pump();
    }

private:
    static void Pump() { MDTLM_HOST_EpollPump(g_mdtlmVralDcnEpollId, 0, 1); }

    MDTLM_FRM_VTBL table_{};
    bool ok_ = false;
};

void BM_Tick(benchmark::State &state)
{
    const uint32_t tasks = static_cast<uint32_t>(state.range(0));
    TickWorld world(tasks, static_cast<uint32_t>(state.range(1)));
    if (!world.Ok()) {
        state.SkipWithError("plug-in did not start");
        return;
    }
    const MDTLM_FLOW_STATS_REC rec = flow_bench::MakeFlow(false);
    for (auto _ : state) {
        state.PauseTiming();
        world.Queue(rec, kRecordsPerTick);
        state.ResumeTiming();
        world.Tick();
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
    TickWorld world(tasks, 0);
    if (!world.Ok()) {
        state.SkipWithError("plug-in did not start");
        return;
    }
    for (auto _ : state) {
        world.Tick();
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * tasks);
}
BENCHMARK(BM_TaskDatabaseRows)->Arg(32)->Unit(benchmark::kMicrosecond)->UseRealTime();

} // namespace
