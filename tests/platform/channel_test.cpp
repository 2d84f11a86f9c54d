#include <arpa/inet.h>
#include <gtest/gtest.h>
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
    for (uint32_t i = 0; i < count; i++)
        batch.push_back({entries[i].msgType, std::string(static_cast<const char *>(entries[i].body), entries[i].msgLen)});
    g_batches.push_back(batch);
    return 0;
}

/* [type][length][body]; the length written is the body's own unless given. */
std::string Frame(uint32_t type, const std::string &body, int64_t declaredLength = -1)
{
    uint32_t header[2] = {type, static_cast<uint32_t>(declaredLength < 0 ? body.size() : declaredLength)};
    return std::string(reinterpret_cast<const char *>(header), sizeof(header)) + body;
}

/* A server on an ephemeral port and a client socket connected to it. */
class ChannelTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        MDTLM_HOST_ChanSetPortOverride(1, 0);
        MDTLM_UCSERVER_CFG cfg{};
        cfg.localAddr = cfg.peerAddr = inet_addr("127.0.0.1");
        cfg.localPort = cfg.peerPort = htons(32090);
        cfg.param = 25;
        cfg.epollId = ep_.Id();
        cfg.recvFunc = CaptureBatch;
        uint8_t area[16] = {};
        ASSERT_EQ(FWM_CHAN_UCServer("MDTLM_VRALDCN", 0, &cfg, area), 0u);
        std::memcpy(&server_, area, sizeof(server_));
        sockaddr_in to{AF_INET, htons(MDTLM_HOST_ChanLocalPort(server_)), {cfg.localAddr}, {}};
        ASSERT_NE(to.sin_port, 0);
        client_ = socket(AF_INET, SOCK_DGRAM, 0);
        ASSERT_EQ(connect(client_, reinterpret_cast<sockaddr *>(&to), sizeof(to)), 0);
    }

    void TearDown() override
    {
        FWM_CHAN_UCServerDestory(server_);
        close(client_);
    }

    void Send(const std::string &datagram)
    {
        ASSERT_EQ(send(client_, datagram.data(), datagram.size(), 0), static_cast<ssize_t>(datagram.size()));
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
    int client_ = -1;
};

struct FramingCase {
    const char *name;
    std::string datagram;
    std::vector<Message> delivered; /* empty: no callback */
    uint64_t malformed;
};

TEST_F(ChannelTest, EachDatagramArrivesAsOneBatchAndFramesPastItsEndAreDroppedAndCounted)
{
    const std::string flow = "\x01" + std::string(262, 'f') + "\xfe", zeros(56, '\0');
    /* The largest datagram: one frame filling it, or as many empty frames as
     * fit followed by three bytes of a header. */
    constexpr size_t kMaxPayload = 65507;
    std::string big(kMaxPayload - 8, '\0'), empties;
    for (size_t i = 0; i < big.size(); i++)
        big[i] = static_cast<char>(i * 131);
    while (empties.size() + 8 <= kMaxPayload)
        empties += Frame(6, "");
    const FramingCase cases[] = {
        {"three frames", Frame(1, flow) + Frame(4, "quma-record") + Frame(6, zeros),
         {{1, flow}, {4, "quma-record"}, {6, zeros}}, 0},
        {"length past the end after a good frame", Frame(1, "abc") + Frame(2, "xy", 3), {{1, "abc"}}, 1},
        {"rest after a bad frame is dropped too", Frame(3, "x", 50) + Frame(4, "never"), {}, 1},
        {"header cut short", Frame(5, "ok") + std::string(7, '\x01'), {{5, "ok"}}, 1},
        {"length near 4 GiB", Frame(1, "a") + Frame(2, "b", 0xFFFFFFF9u), {{1, "a"}}, 1},
        {"empty body", Frame(2, "") + Frame(3, "z"), {{2, ""}, {3, "z"}}, 0},
        {"empty datagram", std::string(), {}, 0},
        {"lone partial header", std::string(3, '\x00'), {}, 1},
        {"largest single frame", Frame(3, big), {{3, big}}, 0},
        {"largest run of empty frames", empties + "abc", std::vector<Message>(kMaxPayload / 8, Message{6, ""}), 1},
    };
    uint64_t sent = 0, malformed = 0, messages = 0;
    for (const FramingCase &c : cases) {
        g_batches.clear();
        Send(c.datagram);
        PumpUntil(++sent);
        malformed += c.malformed;
        messages += c.delivered.size();
        if (c.delivered.empty()) {
            EXPECT_TRUE(g_batches.empty()) << c.name;
        } else {
            ASSERT_EQ(g_batches.size(), 1u) << c.name;
            EXPECT_EQ(g_batches[0], c.delivered) << c.name;
            EXPECT_EQ(g_context, nullptr) << c.name;
            EXPECT_EQ(g_callbackThread, std::this_thread::get_id()) << c.name;
        }
        MDTLM_HOST_CHAN_COUNTERS counters = Counters();
        EXPECT_EQ(counters.malformedFrames, malformed) << c.name;
        EXPECT_EQ(counters.messages, messages) << c.name;
    }
}

TEST_F(ChannelTest, KernelDropsAreCountedFromTheOverflowReport)
{
    constexpr int kBurst = 12000;
    std::string datagram = Frame(1, std::string(1000, 'd'));
    for (int i = 0; i < kBurst; i++)
        Send(datagram);
    for (uint32_t n = 1; n > 0;)
        n = MDTLM_HOST_EpollPump(ep_.Id(), 20, 1);
    uint64_t received = Counters().datagrams;
    ASSERT_LT(received, static_cast<uint64_t>(kBurst)) << "the receive buffer never filled";
    /* The next datagram carries the kernel's drop count. */
    Send(datagram);
    PumpUntil(received + 1);
    EXPECT_EQ(Counters().kernelDrops, kBurst - received);
}

} /* namespace */
