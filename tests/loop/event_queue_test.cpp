/* The event queue: order, malformed and failing events, a full queue, flow control. */
#include <utility>

#include "../frame/frame_fixture.h"

namespace {

using LoopTest = PluginTest;
using Handled = std::vector<std::pair<uint32_t, uint32_t>>; /* (type, first payload word) */

Handled g_handled;

template <uint32_t Type, uint32_t Result>
uint32_t Record(void *payload, uint32_t)
{
    uint32_t word = 0;
    std::memcpy(&word, payload, 4);
    g_handled.emplace_back(Type, word);
    return Result;
}

} // namespace

TEST_F(LoopTest, EventsInQueueOrderAndMalformedOrFailingEventsReleased)
{
    Start();
    g_mdtlmVralDcnEventProcList[0] = Record<0, 0>;
    g_mdtlmVralDcnEventProcList[1] = Record<1, 0>;
    g_mdtlmVralDcnEventProcList[2] = Record<2, 0>;
    ASSERT_EQ(MDTLM_VRALDCN_EVENT_Push(NewEvent(1, 3544, 11)), 0u);
    ASSERT_EQ(MDTLM_VRALDCN_EVENT_Push(NewEvent(2, 3544, 22)), 0u);
    ASSERT_EQ(MDTLM_VRALDCN_EVENT_Push(NewEvent(0, 4, 33)), 0u);
    EXPECT_EQ(Pump(), 3u); /* one handler per pop */
    EXPECT_EQ(g_handled, (Handled{{1, 11}, {2, 22}, {0, 33}}));
    EXPECT_EQ(Fw().Outstanding(), 0);
    EXPECT_TRUE(Fw().Logs().empty());

    g_mdtlmVralDcnEventProcList[1] = Record<1, 5>;
    const struct {
        uint32_t type, len;
        bool nullElement;
        const char *line;
        size_t handled;
    } cases[] = {
        {3, 4, false, "[VRALDCN_EVENT_Pop] Msg info error, msgType: 3.", 0},
        {0, 0, false, "[VRALDCN_EVENT_Pop] Msg info error, msgType: 0.", 0},
        {0, 0, true, "[VRALDCN_EVENT_Pop] Msg is null.", 0},
        {1, 3544, false, "[VRALDCN_EVENT_Pop] Msg proc failed, ret: 5, msgType: 1.", 1},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.line);
        g_handled.clear();
        Fw().ClearLogs();
        ASSERT_EQ(MDTLM_VRALDCN_EVENT_Push(c.nullElement ? nullptr : NewEvent(c.type, c.len, 1)), 0u);
        EXPECT_EQ(Pump(), 1u);
        EXPECT_EQ(Fw().Shapes(), Lines({c.line}));
        EXPECT_TRUE(Fw().HasShape(L(c.line), 2));
        EXPECT_EQ(g_handled.size(), c.handled);
        EXPECT_EQ(Fw().Outstanding(), 0);
    }
    ASSERT_EQ(MDTLM_VRALDCN_EVENT_Push(NewEvent(2, 3544, 9)), 0u); /* later events as usual */
    EXPECT_EQ(Pump(), 1u);
    EXPECT_EQ(g_handled.back(), (std::pair<uint32_t, uint32_t>{2, 9}));
}

TEST_F(LoopTest, FullEventQueueRefusesThe1025thEvent)
{
    Start();
    for (uint32_t i = 0; i < 1024; ++i) {
        ASSERT_EQ(MDTLM_VRALDCN_EVENT_Push(NewEvent(1, 3544, i)), 0u) << i;
    }
    Fw().ClearLogs();
    MDTLM_EVENT_MSG *extra = NewEvent(2, 3544, 0);
    EXPECT_EQ(MDTLM_VRALDCN_EVENT_Push(extra), 1u);
    MDTLM_VRALDCN_BufFree(reinterpret_cast<void **>(&extra));
    EXPECT_EQ(MDTLM_VRALDCN_STATS_PushStatsEventToQue(5), 0u); /* this producer frees its own event */
    EXPECT_EQ(Fw().Shapes(), Lines({"[VRALDCN_EVENT_Push] Write queue fail. eleCnt: 0.",
                                    "[VRALDCN_EVENT_Push] Write queue fail. eleCnt: 0.",
                                    "[NTVVRALDCN_STATS_PushStatsEventToQu] push task to event queue failed, "
                                    "timerSecondCnt: 5, ret: 1."}));
    EXPECT_EQ(Fw().Outstanding(), 1024); /* the teardown's unload releases the queued ones */
    EXPECT_EQ(MDTLM_HOST_QueueCount(g_mdtlmVralDcnTaskEventHdl), 1024);
}
