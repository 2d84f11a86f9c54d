#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "platform_test_util.h"

namespace {

struct Message {
    uint32_t type;
    std::string body;
    bool operator==(const Message &o) const { return type == o.type && body == o.body; }
};

std::vector<std::vector<Message>> g_batches;
std::thread::id g_callbackThread;
void *g_context = reinterpret_cast<void *>(1);

uint32_t CaptureBatch(void *context, MDTLM_STATS_IPC_ENTRY *entries, uint32_t count)
{
    g_context = context;
    g_callbackThread = std::this_thread::get_id();
    std::vector<Message> batch;
    for (uint32_t i = 0; i < count; i++) {
        EXPECT_NE(entries[i].body, nullptr);
        batch.push_back({entries[i].msgType, std::string(static_cast<const char *>(entries[i].body), entries[i].msgLen)});
    }
    g_batches.push_back(batch);
    return 0;
}

/* [type][length][body]; the length written is the body's own unless given. */
std::string Frame(uint32_t type, const std::string &body, int64_t declaredLength = -1)
{
    uint32_t header[2] = {type, static_cast<uint32_t>(declaredLength < 0 ? body.size() : declaredLength)};
    return std::string(reinterpret_cast<const char *>(header), sizeof(header)) + body;
}

MDTLM_UCSERVER_CFG ServerConfig(uint32_t epollId)
{
    MDTLM_UCSERVER_CFG cfg{};
    cfg.localAddr = inet_addr("127.0.0.1");
    cfg.localPort = htons(32090);
    cfg.peerAddr = cfg.localAddr;
    cfg.peerPort = cfg.localPort;
    cfg.param = 25;
    cfg.epollId = epollId;
    cfg.recvFunc = CaptureBatch;
    return cfg;
}

/* A server on an ephemeral port and a client socket aimed at it. */
class ChannelTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(ep_.Valid());
        MDTLM_HOST_ChanSetPortOverride(1, 0);
        MDTLM_UCSERVER_CFG cfg = ServerConfig(ep_.Id());
        uint8_t area[16] = {};
        ASSERT_EQ(FWM_CHAN_UCServer("MDTLM_VRALDCN", 0, &cfg, area), 0u);
        std::memcpy(&server_, area, sizeof(server_));
        ASSERT_NE(server_, nullptr);
        port_ = MDTLM_HOST_ChanLocalPort(server_);
        ASSERT_NE(port_, 0);
        client_ = socket(AF_INET, SOCK_DGRAM, 0);
        ASSERT_GE(client_, 0);
    }

    void TearDown() override
    {
        if (server_ != nullptr)
            FWM_CHAN_UCServerDestory(server_);
        if (client_ >= 0)
            close(client_);
    }

    void Send(const std::string &datagram)
    {
        sockaddr_in to{};
        to.sin_family = AF_INET;
        to.sin_addr.s_addr = inet_addr("127.0.0.1");
        to.sin_port = htons(port_);
        ASSERT_EQ(sendto(client_, datagram.data(), datagram.size(), 0, reinterpret_cast<sockaddr *>(&to), sizeof(to)),
                  static_cast<ssize_t>(datagram.size()));
    }

    MDTLM_HOST_CHAN_COUNTERS Counters()
    {
        MDTLM_HOST_CHAN_COUNTERS c{};
        EXPECT_EQ(MDTLM_HOST_ChanCounters(server_, &c), 0u);
        return c;
    }

    /* Pumps the loop until `datagrams` have been received in total. */
    void PumpUntil(uint64_t datagrams)
    {
        for (int i = 0; i < 200 && Counters().datagrams < datagrams; i++)
            MDTLM_HOST_EpollPump(ep_.Id(), 20, 1);
        ASSERT_EQ(Counters().datagrams, datagrams);
    }

    ScopedEpoll ep_;
    void *server_ = nullptr;
    uint16_t port_ = 0;
    int client_ = -1;
};

TEST_F(ChannelTest, MessagesOfOneDatagramArriveAsOneBatchOnTheLoopThread)
{
    EXPECT_NE(port_, 32090); /* the override chose an ephemeral port */
    EXPECT_EQ(MDTLM_HOST_ChanLocalPort(nullptr), port_);
    std::string flow(264, 'f');
    flow[0] = '\x01';
    flow[263] = '\xfe';
    Send(Frame(1, flow) + Frame(4, "quma-record") + Frame(6, std::string(56, '\0')));
    PumpUntil(1);

    ASSERT_EQ(g_batches.size(), 1u);
    EXPECT_EQ(g_batches[0], (std::vector<Message>{{1, flow}, {4, "quma-record"}, {6, std::string(56, '\0')}}));
    EXPECT_EQ(g_context, nullptr);
    EXPECT_EQ(g_callbackThread, std::this_thread::get_id());
    MDTLM_HOST_CHAN_COUNTERS c = Counters();
    EXPECT_EQ(c.messages, 3u);
    EXPECT_EQ(c.batches, 1u);
    EXPECT_EQ(c.malformedFrames, 0u);
}

struct FramingCase {
    const char *name;
    std::string datagram;
    std::vector<Message> delivered; /* empty: no callback */
    uint64_t malformed;
};

TEST_F(ChannelTest, FramesRunningPastTheDatagramEndItAndAreCounted)
{
    const FramingCase cases[] = {
        {"length past the end after a good frame", Frame(1, "abc") + Frame(2, "xy", 3), {{1, "abc"}}, 1},
        {"rest after a bad frame is dropped too", Frame(3, "x", 50) + Frame(4, "never"), {}, 1},
        {"header cut short", Frame(5, "ok") + std::string(7, '\x01'), {{5, "ok"}}, 1},
        {"length near 4 GiB", Frame(1, "a") + Frame(2, "b", 0xFFFFFFF9u), {{1, "a"}}, 1},
        {"empty body", Frame(2, "") + Frame(3, "z"), {{2, ""}, {3, "z"}}, 0},
        {"empty datagram", std::string(), {}, 0},
        {"lone partial header", std::string(3, '\x00'), {}, 1},
    };
    uint64_t sent = 0, malformed = 0;
    for (const FramingCase &c : cases) {
        g_batches.clear();
        Send(c.datagram);
        PumpUntil(++sent);
        malformed += c.malformed;
        if (c.delivered.empty()) {
            EXPECT_TRUE(g_batches.empty()) << c.name;
        } else {
            ASSERT_EQ(g_batches.size(), 1u) << c.name;
            EXPECT_EQ(g_batches[0], c.delivered) << c.name;
        }
        EXPECT_EQ(Counters().malformedFrames, malformed) << c.name;
    }
}

TEST_F(ChannelTest, LargestDatagramsArriveWhole)
{
    constexpr size_t kMaxPayload = 65507;
    std::string body(kMaxPayload - 8, '\0');
    for (size_t i = 0; i < body.size(); i++)
        body[i] = static_cast<char>(i * 131);
    Send(Frame(3, body));
    /* As many empty frames as fit, then three bytes of a header. */
    std::string many;
    while (many.size() + 8 <= kMaxPayload)
        many += Frame(6, "");
    many += "abc";
    Send(many);
    PumpUntil(2);

    ASSERT_EQ(g_batches.size(), 2u);
    ASSERT_EQ(g_batches[0].size(), 1u);
    EXPECT_EQ(g_batches[0][0].body, body);
    EXPECT_EQ(g_batches[1].size(), kMaxPayload / 8);
    EXPECT_EQ(Counters().malformedFrames, 1u);
}

TEST_F(ChannelTest, KernelDropsAreCountedFromTheOverflowReport)
{
    constexpr int kBurst = 12000;
    std::string datagram = Frame(1, std::string(1000, 'd'));
    for (int i = 0; i < kBurst; i++)
        Send(datagram);
    uint64_t received = 0;
    for (uint32_t n = 1; n > 0;)
        n = MDTLM_HOST_EpollPump(ep_.Id(), 20, 1);
    received = Counters().datagrams;
    ASSERT_LT(received, static_cast<uint64_t>(kBurst)) << "the receive buffer never filled";
    /* The next datagram carries the kernel's drop count. */
    Send(datagram);
    PumpUntil(received + 1);
    EXPECT_EQ(Counters().kernelDrops, kBurst - received);
}

TEST_F(ChannelTest, ThePortIsHeldUntilDestroyAndCountersOutliveTheServer)
{
    Send(Frame(1, "one"));
    PumpUntil(1);
    MDTLM_HOST_ChanSetPortOverride(1, port_);
    MDTLM_UCSERVER_CFG cfg = ServerConfig(ep_.Id());
    uint8_t area[16] = {};
    EXPECT_NE(FWM_CHAN_UCServer("MDTLM_VRALDCN", 0, &cfg, area), 0u); /* port taken */
    EXPECT_EQ(MDTLM_HOST_ChanLocalPort(nullptr), port_);

    ASSERT_EQ(FWM_CHAN_UCServerDestory(server_), 0u);
    EXPECT_NE(FWM_CHAN_UCServerDestory(server_), 0u);
    MDTLM_HOST_CHAN_COUNTERS c{};
    ASSERT_EQ(MDTLM_HOST_ChanCounters(nullptr, &c), 0u); /* the most recent server, gone or not */
    EXPECT_EQ(c.messages, 1u);
    ASSERT_EQ(FWM_CHAN_UCServer("MDTLM_VRALDCN", 0, &cfg, area), 0u);
    std::memcpy(&server_, area, sizeof(server_));
    EXPECT_EQ(MDTLM_HOST_ChanLocalPort(server_), port_);
    ASSERT_EQ(MDTLM_HOST_ChanCounters(nullptr, &c), 0u);
    EXPECT_EQ(c.messages, 0u);
}

} /* namespace */
