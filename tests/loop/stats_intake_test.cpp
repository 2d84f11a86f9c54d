/* Statistics intake: which batch entries are kept, exact copies, short bodies, a full queue. */
#include "../frame/frame_fixture.h"

namespace {

using LoopTest = PluginTest;
using Bytes = std::vector<uint8_t>;

struct Entry {
    uint32_t type, len;
    bool nullBody = false;
};

const struct {
    const char *name;
    std::vector<Entry> entries;
    std::vector<size_t> kept; /* entries expected on the queue, in order */
    std::vector<std::string> lines;
} kBatches[] = {
    {"stops at a sensor without tasks", {{1, 264}, {2, 264}, {3, 112}}, {0}, {}},
    {"unknown sensor stops the batch", {{6, 56}, {9, 56}, {6, 56}}, {0}, {}},
    {"empty and missing bodies are skipped", {{1, 0}, {3, 112, true}, {6, 56}}, {2}, {}},
    {"short bodies are refused and counted",
     {{1, 100}, {3, 112}, {6, 55}, {6, 57}},
     {1, 3},
     {"[STATS_IPC_RecvMsgProc] Msg too short, msgType: 1, msgLen: 100.",
      "[STATS_IPC_RecvMsgProc] Msg too short, msgType: 6, msgLen: 55."}},
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

} // namespace

TEST_F(LoopTest, IntakeBatches)
{
    Start();
    ScopedTask flow(1), srvtlm(3), zelk(6);
    uint64_t shortMsgs = 0;
    for (const auto &c : kBatches) {
        SCOPED_TRACE(c.name);
        Fw().ClearLogs();
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
        for (size_t k : c.kept) {
            ExpectPopped(c.entries[k].type, originals[k]);
        }
        EXPECT_EQ(MDTLM_VRALDCN_STATS_QUE_Pop(), nullptr);
        EXPECT_EQ(Fw().Shapes(), Lines(c.lines));
        shortMsgs += c.lines.size();
        EXPECT_EQ(MDTLM_VRALDCN_STATS_IPC_GetShortMsgCnt(), shortMsgs);
    }

    MDTLM_STATS_IPC_ENTRY entry = {nullptr, 1, 0};
    Fw().ClearLogs();
    EXPECT_EQ(MDTLM_VRALDCN_STATS_IPC_RecvMsgProc(nullptr, nullptr, 1), 1u);
    EXPECT_EQ(MDTLM_VRALDCN_STATS_IPC_RecvMsgProc(nullptr, &entry, 0), 1u);
    EXPECT_EQ(Fw().Shapes(), Lines({"[STATS_IPC_RecvMsgProc] Revc msg is null.",
                                    "[STATS_IPC_RecvMsgProc] Revc msg is null."}));
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
    ExpectPopped(6, body);
}

