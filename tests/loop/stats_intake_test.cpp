/* Statistics intake: which batch entries are kept, exact copies, short bodies, a full queue. */
#include "../frame/frame_fixture.h"

namespace {

using LoopTest = PluginTest;
using Bytes = std::vector<uint8_t>;

struct Entry {
    uint32_t type, len;
    bool nullBody = false;
};

/* What one batch adds to the loss counters. */
struct Losses {
    uint64_t recv, queued, cut, shortBody, empty, stopNoTask, stopUnknown, stopBehind;
};

struct Kept {
    size_t entry;
    uint32_t len; /* body bytes kept: up to the sensor's record size */
};

const struct {
    const char *name;
    std::vector<Entry> entries;
    std::vector<Kept> kept; /* entries expected on the queue, in order */
    std::vector<std::string> lines;
    Losses losses;
} kBatches[] = {
    {"stops at a sensor without tasks", {{1, 264}, {2, 264}, {3, 112}, {6, 56}}, {{0, 264}}, {},
     {4, 1, 0, 0, 0, 1, 0, 2}},
    {"unknown sensor stops the batch", {{6, 56}, {9, 56}, {6, 56}}, {{0, 56}}, {}, {3, 1, 0, 0, 0, 0, 1, 1}},
    {"sensor type 0 stops the batch", {{0, 56}}, {}, {}, {1, 0, 0, 0, 0, 0, 1, 0}},
    {"empty and missing bodies are skipped", {{1, 0}, {3, 112, true}, {6, 56}}, {{2, 56}}, {},
     {3, 1, 0, 0, 2, 0, 0, 0}},
    {"short bodies are refused and counted",
     {{1, 100}, {3, 112}, {6, 55}, {6, 57}},
     {{1, 112}, {3, 56}},
     {"[STATS_IPC_RecvMsgProc] Msg too short, msgType: 1, msgLen: 100.",
      "[STATS_IPC_RecvMsgProc] Msg too short, msgType: 6, msgLen: 55."},
     {4, 2, 1, 2, 0, 0, 0, 0}},
    {"long bodies are cut to the record", {{1, 65499}, {3, 113}, {6, 65499}, {1, 264}}, {{0, 264}, {1, 112}, {2, 56}, {3, 264}},
     {}, {4, 4, 3, 0, 0, 0, 0, 0}},
};

Bytes Body(size_t len, uint8_t seed)
{
    Bytes body(len);
    for (size_t i = 0; i < len; ++i) {
        body[i] = static_cast<uint8_t>(seed + i * 7);
    }
    return body;
}

void ExpectPopped(uint32_t type, const Bytes &body)
{
    MDTLM_STATS_MSG *msg = MDTLM_VRALDCN_STATS_QUE_Pop();
    ASSERT_NE(msg, nullptr);
    EXPECT_EQ(msg->msgType, type);
    ASSERT_EQ(msg->msgLen, body.size());
    EXPECT_EQ(Bytes(msg->body, msg->body + msg->msgLen), body);
    void *raw = msg;
    MDTLM_VRALDCN_BufFree(&raw);
}

MDTLM_LOSS_COUNTERS Counters()
{
    MDTLM_LOSS_COUNTERS counters{};
    EXPECT_EQ(MDTLM_VRALDCN_STATS_GetLossCounters(&counters), 0u);
    return counters;
}

Losses IntakeLosses(const MDTLM_LOSS_COUNTERS &c)
{
    return {c.recvMsgCnt,   c.queuedMsgCnt,  c.cutBodyCnt,         c.shortBodyCnt,
            c.emptyBodyCnt, c.stopNoTaskCnt, c.stopUnknownTypeCnt, c.stopBehindCnt};
}

Losses Minus(const Losses &a, const Losses &b)
{
    return {a.recv - b.recv,   a.queued - b.queued,         a.cut - b.cut,
            a.shortBody - b.shortBody, a.empty - b.empty,   a.stopNoTask - b.stopNoTask,
            a.stopUnknown - b.stopUnknown, a.stopBehind - b.stopBehind};
}

bool operator==(const Losses &a, const Losses &b)
{
    return std::memcmp(&a, &b, sizeof(a)) == 0;
}

std::ostream &operator<<(std::ostream &os, const Losses &l)
{
    return os << "recv " << l.recv << " queued " << l.queued << " cut " << l.cut << " short " << l.shortBody
              << " empty " << l.empty << " stop(no task) " << l.stopNoTask << " stop(unknown) " << l.stopUnknown
              << " stop(behind) " << l.stopBehind;
}

} // namespace

TEST_F(LoopTest, IntakeBatches)
{
    Start();
    ScopedTask flow(1), srvtlm(3), zelk(6);
    for (const auto &c : kBatches) {
        SCOPED_TRACE(c.name);
        Fw().ClearLogs();
        const Losses before = IntakeLosses(Counters());
        const uint64_t shortBefore = MDTLM_VRALDCN_STATS_IPC_GetShortMsgCnt();
        const uint64_t cutBefore = MDTLM_VRALDCN_STATS_IPC_GetCutMsgCnt();
        std::vector<Bytes> bodies;
        std::vector<MDTLM_STATS_IPC_ENTRY> entries;
        for (const Entry &e : c.entries) {
            bodies.push_back(Body(e.len, static_cast<uint8_t>(bodies.size() * 40 + 1)));
        }
        for (size_t i = 0; i < c.entries.size(); ++i) {
            entries.push_back({c.entries[i].nullBody ? nullptr : bodies[i].data(), c.entries[i].type,
                               c.entries[i].len});
        }
        EXPECT_EQ(MDTLM_VRALDCN_STATS_IPC_RecvMsgProc(nullptr, entries.data(), entries.size()), 0u);

        std::vector<Bytes> originals = bodies;
        for (Bytes &body : bodies) {
            std::fill(body.begin(), body.end(), 0xEE); /* the channel reuses its buffers */
        }
        for (const Kept &k : c.kept) {
            const Bytes &original = originals[k.entry];
            ExpectPopped(c.entries[k.entry].type, Bytes(original.begin(), original.begin() + k.len));
        }
        EXPECT_EQ(MDTLM_VRALDCN_STATS_QUE_Pop(), nullptr);
        EXPECT_EQ(Fw().Shapes(), Lines(c.lines));
        EXPECT_EQ(Minus(IntakeLosses(Counters()), before), c.losses);
        EXPECT_EQ(MDTLM_VRALDCN_STATS_IPC_GetShortMsgCnt() - shortBefore, c.losses.shortBody);
        EXPECT_EQ(MDTLM_VRALDCN_STATS_IPC_GetCutMsgCnt() - cutBefore, c.losses.cut);
    }

    MDTLM_STATS_IPC_ENTRY entry = {nullptr, 1, 0};
    Fw().ClearLogs();
    const Losses before = IntakeLosses(Counters());
    EXPECT_EQ(MDTLM_VRALDCN_STATS_IPC_RecvMsgProc(nullptr, nullptr, 1), 1u);
    EXPECT_EQ(MDTLM_VRALDCN_STATS_IPC_RecvMsgProc(nullptr, &entry, 0), 1u);
    EXPECT_EQ(Fw().Shapes(), Lines({"[STATS_IPC_RecvMsgProc] Revc msg is null.",
                                    "[STATS_IPC_RecvMsgProc] Revc msg is null."}));
    EXPECT_EQ(IntakeLosses(Counters()), before);
    EXPECT_EQ(MDTLM_VRALDCN_STATS_GetLossCounters(nullptr), 1u);
}

TEST_F(LoopTest, DirectPushKeepsTheWholeBody)
{
    /* Only the receive callback bounds the copy; a direct push copies what it is given. */
    Start();
    Bytes body = Body(300, 3);
    MDTLM_VRALDCN_STATS_IPC_PushMsgToStatsQue(6, body.data(), static_cast<uint32_t>(body.size()));
    ExpectPopped(6, body);
    EXPECT_EQ(MDTLM_VRALDCN_STATS_IPC_GetCutMsgCnt(), 0u);
}

TEST_F(LoopTest, FullStatisticsQueueDropsTheNextMessage)
{
    Start();
    Bytes body = Body(56, 9);
    for (uint32_t i = 0; i < 196608; ++i) {
        MDTLM_VRALDCN_STATS_IPC_PushMsgToStatsQue(6, body.data(), 56);
    }
    ASSERT_EQ(MDTLM_HOST_QueueCount(g_mdtlmNtvVralDcnStatsQueHdl), 196608);
    Fw().ClearLogs();
    MDTLM_VRALDCN_STATS_IPC_PushMsgToStatsQue(6, body.data(), 56);
    EXPECT_EQ(Fw().Shapes(), Lines({"[NTVVRALDCN_STATS_QUE_Push] Write queue fail. eleCnt: 0.",
                                    "[PushMsgToStatsQue] Push msg to task queue failed, 1."}));
    EXPECT_EQ(Fw().Outstanding(), 196608); /* the teardown's unload releases them */
    EXPECT_EQ(Counters().queueFullCnt, 1u);
    EXPECT_EQ(Counters().queuedMsgCnt, 196608u);
    ExpectPopped(6, body);
}

