/*
 * Statistics intake: which entries of a batch are kept, exact copies on the
 * statistics queue, refused bodies, a full queue and a real datagram.
 */
#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

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
        std::vector<std::string> expected;
        for (const std::string &line : c.lines) {
            expected.push_back(L(line));
        }
        EXPECT_EQ(Fw().Shapes(), expected);
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

TEST_F(LoopTest, UncopiedMessagesAreDropped)
{
    Bind();
    Bytes body = Body(264, 3);
    MDTLM_VRALDCN_STATS_IPC_PushMsgToStatsQue(6, body.data(), 56);
    EXPECT_EQ(Fw().Shapes(), Lines({"[NTVVRALDCN_STATS_QUE_Push] Handle is NULL.",
                                    "[PushMsgToStatsQue] Push msg to task queue failed, 1."}));
    EXPECT_EQ(MDTLM_VRALDCN_STATS_QUE_Pop(), nullptr);

    Start();
    const struct {
        uint32_t len;
        bool failCopy, allocAttempted;
    } cases[] = {{4294967288u, false, false}, {4294967287u, false, true}, {264, true, true}};
    for (const auto &c : cases) {
        SCOPED_TRACE(c.len);
        Fw().ClearLogs();
        if (c.failCopy) {
            MDTLM_HOST_FaultSet(MDTLM_HOST_OP_MEMCPY_S, 0, 1, 22);
        } else {
            Fw().FailAlloc(1); /* used up only if the plug-in asks for a buffer */
        }
        MDTLM_VRALDCN_STATS_IPC_PushMsgToStatsQue(1, body.data(), c.len);
        EXPECT_EQ(Fw().Shapes(),
                  Lines({"[PushMsgToStatsQue] Buff alloc failed buff is NULL, msgLen: " + std::to_string(c.len) + ","}));
        void *probe = MDTLM_VRALDCN_BufAlloc(8);
        EXPECT_EQ(probe != nullptr, c.allocAttempted);
        Free(probe);
        Fw().FailAlloc(0, 0);
        EXPECT_EQ(MDTLM_HOST_QueueCount(g_mdtlmNtvVralDcnStatsQueHdl), 0);
        EXPECT_EQ(Fw().Outstanding(), 0);
    }
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

TEST_F(LoopTest, DatagramReachesTheStatisticsQueue)
{
    Start();
    ScopedTask zelk(6);
    uint16_t port = MDTLM_HOST_ChanLocalPort(nullptr);
    ASSERT_NE(port, 0);

    /* One datagram, two messages: a whole record, then a short one. */
    Bytes body = Body(56, 5), datagram;
    for (const Bytes &b : {body, Body(10, 1)}) {
        uint32_t header[2] = {6, static_cast<uint32_t>(b.size())};
        datagram.insert(datagram.end(), reinterpret_cast<uint8_t *>(header), reinterpret_cast<uint8_t *>(header + 2));
        datagram.insert(datagram.end(), b.begin(), b.end());
    }
    int sock = socket(AF_INET, SOCK_DGRAM, 0);
    ASSERT_GE(sock, 0);
    sockaddr_in to{};
    to.sin_family = AF_INET;
    to.sin_port = htons(port);
    to.sin_addr.s_addr = inet_addr("127.0.0.1");
    ASSERT_EQ(sendto(sock, datagram.data(), datagram.size(), 0, reinterpret_cast<sockaddr *>(&to), sizeof(to)),
              static_cast<ssize_t>(datagram.size()));
    close(sock);

    auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(5);
    while (MDTLM_VRALDCN_STATS_IPC_GetShortMsgCnt() == 0 && std::chrono::steady_clock::now() < deadline) {
        MDTLM_HOST_EpollPump(g_mdtlmVralDcnEpollId, 100, 1);
    }
    EXPECT_EQ(MDTLM_VRALDCN_STATS_IPC_GetShortMsgCnt(), 1u);
    ASSERT_EQ(MDTLM_HOST_QueueCount(g_mdtlmNtvVralDcnStatsQueHdl), 1);
    ExpectPopped(6, body);
}
