/* Loss counters of the event queue and the tick: each way a request, a tick
 * or a queued message is lost is counted once, and nothing else moves. */
#include <functional>

#include "../frame/frame_fixture.h"

namespace {

class LossTest : public PluginTest {
public:
    using PluginTest::Fw;
    using PluginTest::NewEvent;
    using PluginTest::Pump;
};

/* The counters these cases move, in this order. */
constexpr uint64_t MDTLM_LOSS_COUNTERS::*kWatched[] = {
    &MDTLM_LOSS_COUNTERS::addDroppedCnt, &MDTLM_LOSS_COUNTERS::delDroppedCnt,
    &MDTLM_LOSS_COUNTERS::tickDroppedCnt, &MDTLM_LOSS_COUNTERS::handledMsgCnt,
    &MDTLM_LOSS_COUNTERS::noTaskAtTickCnt, &MDTLM_LOSS_COUNTERS::queuedMsgCnt,
};

std::vector<uint64_t> Watched()
{
    MDTLM_LOSS_COUNTERS counters{};
    EXPECT_EQ(MDTLM_VRALDCN_STATS_GetLossCounters(&counters), 0u);
    std::vector<uint64_t> values;
    for (auto field : kWatched) {
        values.push_back(counters.*field);
    }
    return values;
}

MDTLM_SENSOR_PATH_INFO GpbBlock()
{
    MDTLM_SENSOR_PATH_INFO block{};
    block.sampleInterval = 1000;
    return block;
}

void FillEventQueue()
{
    for (uint32_t i = 0; i < 1024; ++i) {
        ASSERT_EQ(MDTLM_VRALDCN_EVENT_Push(LossTest::NewEvent(0, 4, i)), 0u);
    }
}

const struct {
    const char *name;
    std::function<void()> act;
    std::vector<uint64_t> moved; /* add, delete, tick dropped; handled, no task at tick, queued */
} kCases[] = {
    {"full event queue: an add, a delete and a tick are dropped",
     [] {
         FillEventQueue();
         MDTLM_SENSOR_PATH_INFO block = GpbBlock();
         EXPECT_EQ(FWM_ZELK_FLOW_AddTlmTask(1, 2, &block), 0u);
         EXPECT_EQ(FWM_ZELK_FLOW_DelTlmTask(1, 2), 0u);
         EXPECT_EQ(MDTLM_VRALDCN_STATS_TimerCallback(), 0u);
     },
     {1, 1, 1, 0, 0, 0}},
    {"no buffer for a tick", [] {
         LossTest::Fw().FailAlloc(1);
         EXPECT_EQ(MDTLM_VRALDCN_STATS_TimerCallback(), 0u);
     },
     {0, 0, 1, 0, 0, 0}},
    {"a refused add is not a dropped one", [] {
         LossTest::Fw().FailAlloc(1);
         MDTLM_SENSOR_PATH_INFO block = GpbBlock();
         EXPECT_EQ(FWM_ZELK_FLOW_AddTlmTask(1, 2, &block), 1u);
     },
     {0, 0, 0, 0, 0, 0}},
    {"a tick handles the messages of sensors with tasks and frees the others", [] {
         MDTLM_SENSOR_PATH_INFO block = GpbBlock();
         EXPECT_EQ(FWM_ZELK_FLOW_AddTlmTask(1, 2, &block), 0u);
         LossTest::Pump();
         const MDTLM_ZELK_CACHE_REC zelk{};
         const MDTLM_SRVTLM_FLOW_STATS_REC srvtlm{};
         MDTLM_VRALDCN_STATS_IPC_PushMsgToStatsQue(MDTLM_SENSOR_ZELK_CACHE, &zelk, sizeof(zelk));
         MDTLM_VRALDCN_STATS_IPC_PushMsgToStatsQue(MDTLM_SENSOR_SRVTLM_FLOW, &srvtlm, sizeof(srvtlm));
         MDTLM_VRALDCN_STATS_IPC_PushMsgToStatsQue(MDTLM_SENSOR_ZELK_CACHE, &zelk, sizeof(zelk));
         EXPECT_EQ(MDTLM_VRALDCN_STATS_UploadStatsData(nullptr, 0), 0u);
         EXPECT_EQ(FWM_ZELK_FLOW_DelTlmTask(1, 2), 0u);
         LossTest::Pump();
     },
     {0, 0, 0, 2, 1, 3}},
};

} // namespace

TEST_F(LossTest, EachLossIsCountedOnce)
{
    for (const auto &c : kCases) {
        SCOPED_TRACE(c.name);
        Start();
        const std::vector<uint64_t> before = Watched();
        c.act();
        std::vector<uint64_t> moved = Watched();
        for (size_t i = 0; i < moved.size(); ++i) {
            moved[i] -= before[i];
        }
        EXPECT_EQ(moved, c.moved);
        Fw().FailAlloc(0, 0);
        MDTLM_VRALDCN_Unload();
        EXPECT_EQ(Fw().Outstanding(), 0);
    }
}
