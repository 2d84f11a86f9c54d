/* The simulator's reconciliation: every message the channel handed the
 * plug-in is handled, still queued or counted lost, or the line says how
 * many are not. */
#include <gtest/gtest.h>

#include "loss_report.h"

namespace {

MDTLM_LOSS_COUNTERS Counters(uint64_t handled, uint64_t shortBody, uint64_t stopBehind, uint64_t queueFull,
                             uint64_t discarded, uint64_t cut)
{
    MDTLM_LOSS_COUNTERS c{};
    c.recvMsgCnt = handled + shortBody + stopBehind + queueFull + discarded;
    c.handledMsgCnt = handled;
    c.shortBodyCnt = shortBody;
    c.stopBehindCnt = stopBehind;
    c.queueFullCnt = queueFull;
    c.discardedAtStopCnt = discarded;
    c.cutBodyCnt = cut;
    return c;
}

const struct {
    const char *name;
    MDTLM_LOSS_COUNTERS counters;
    uint64_t channel, queued;
    int64_t unaccounted;
    const char *lastLine;
} kCases[] = {
    {"all handled", Counters(10, 0, 0, 0, 0, 0), 10, 0, 0,
     "reconciliation: channel handed 10 messages (plug-in counted 10); handled by ticks 10 + still queued 0 + lost 0; "
     "unaccounted 0\n"},
    {"losses and a stop with messages queued", Counters(5, 1, 2, 3, 4, 7), 15, 0, 0,
     "reconciliation: channel handed 15 messages (plug-in counted 15); handled by ticks 5 + still queued 0 + lost 10; "
     "unaccounted 0\n"},
    {"still queued", Counters(5, 0, 0, 0, 0, 0), 8, 3, 0,
     "reconciliation: channel handed 8 messages (plug-in counted 5); handled by ticks 5 + still queued 3 + lost 0; "
     "unaccounted 0\n"},
    {"messages missing", Counters(5, 1, 0, 0, 0, 0), 9, 0, 3,
     "reconciliation: channel handed 9 messages (plug-in counted 6); handled by ticks 5 + still queued 0 + lost 1; "
     "unaccounted 3\n"},
    {"more counted than handed", Counters(5, 0, 0, 0, 0, 0), 4, 0, -1,
     "reconciliation: channel handed 4 messages (plug-in counted 5); handled by ticks 5 + still queued 0 + lost 0; "
     "unaccounted -1\n"},
};

} // namespace

TEST(LossReport, ReconcilesEveryMessage)
{
    for (const auto &c : kCases) {
        SCOPED_TRACE(c.name);
        mdtlm::sim::LossReport report = mdtlm::sim::ReconcileLosses(c.counters, c.channel, c.queued);
        EXPECT_EQ(report.unaccounted, c.unaccounted);
        const size_t last = report.text.rfind("reconciliation:");
        ASSERT_NE(last, std::string::npos) << report.text;
        EXPECT_EQ(report.text.substr(last), c.lastLine);
    }
    const std::string text = mdtlm::sim::ReconcileLosses(Counters(5, 1, 2, 3, 4, 7), 15, 0).text;
    EXPECT_NE(text.find("discarded at stop 4"), std::string::npos) << text;
    EXPECT_NE(text.find("altered: 7 bodies cut"), std::string::npos) << text;
}
