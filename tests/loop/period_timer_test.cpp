/* The period timer: one tick event per tick carrying the counter, gaps, wrap-around. */
#include "../frame/frame_fixture.h"

namespace {

std::vector<uint32_t> g_ticks;

uint32_t RecordTick(void *payload, uint32_t payloadLen)
{
    EXPECT_EQ(payloadLen, 4u);
    uint32_t second = 0;
    std::memcpy(&second, payload, 4);
    g_ticks.push_back(second);
    return 0;
}

class LoopTimerTest : public PluginTest {
protected:
    void SetUp() override
    {
        PluginTest::SetUp();
        Start();
        ASSERT_EQ(MDTLM_VRALDCN_STATS_CreateTimer(), 0u);
        g_mdtlmVralDcnEventProcList[MDTLM_EVENT_STATS_UPLOAD] = RecordTick;
    }
    static void Tick(uint32_t ticks)
    {
        MDTLM_HOST_TimerFire(g_mdtlmVralDcnTimerId, ticks);
        Pump();
    }
};

} // namespace

TEST_F(LoopTimerTest, TenTicksQueueTenEventsCarryingTheCounterThenWrap)
{
    Tick(10);
    EXPECT_EQ(g_ticks, (std::vector<uint32_t>{1, 2, 3, 4, 5, 6, 7, 8, 9, 10}));
    EXPECT_EQ(Fw().Outstanding(), 0);
    g_mdtlmVralTimerSecondCnt = 4294967295u;
    Tick(1);
    EXPECT_EQ(g_ticks.back(), 0u);
    EXPECT_EQ(MDTLM_VRALDCN_STATS_GetTimerSecondCnt(), 0u);
}

TEST_F(LoopTimerTest, LostTicksLeaveGapsInTheCounter)
{
    Tick(1);
    Fw().FailAllocOfSize(12, 1);
    Tick(1);
    MDTLM_HOST_FaultSet(MDTLM_HOST_OP_QUE_WRITE, 0, 1, 0);
    Tick(1);
    Tick(1);
    EXPECT_EQ(g_ticks, (std::vector<uint32_t>{1, 4}));
    EXPECT_EQ(Fw().Shapes(),
              Lines({"[NTVVRALDCN_STATS_PushStatsEventToQu] Alloc memory failed, timerSecondCnt: 2.",
                     "[VRALDCN_STATS_TimerCallback] push stats event to queue failed, ret: 1.",
                     "[VRALDCN_EVENT_Push] Write queue fail. eleCnt: 0.",
                     "[NTVVRALDCN_STATS_PushStatsEventToQu] push task to event queue failed, timerSecondCnt: 3, "
                     "ret: 1."}));
    EXPECT_EQ(Fw().Outstanding(), 0);
}
