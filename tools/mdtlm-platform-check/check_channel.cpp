/*
 * The statistics channel: the plug-in's server configuration, the framing of
 * messages in a datagram and one batch per datagram, delivered on the loop.
 */
#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstring>
#include <mutex>
#include <thread>

#include "loop_thread.h"
#include "rule.h"

namespace mdtlm::check {
namespace {

using namespace std::chrono_literals;

struct Message {
    uint32_t type;
    std::vector<uint8_t> body;
    bool operator==(const Message &) const = default;
};
using Batch = std::vector<Message>;

struct BatchLog {
    std::mutex mu;
    std::vector<Batch> batches;
    uint32_t offLoop = 0;
};
BatchLog g_batches;

uint32_t OnBatch(void *, MDTLM_STATS_IPC_ENTRY *entries, uint32_t count)
{
    Batch batch;
    for (uint32_t i = 0; i < count; i++) {
        const uint8_t *body = static_cast<const uint8_t *>(entries[i].body);
        batch.push_back({entries[i].msgType, std::vector<uint8_t>(body, body + entries[i].msgLen)});
    }
    std::lock_guard<std::mutex> lock(g_batches.mu);
    g_batches.offLoop += !LoopThread::OnLoopThread();
    g_batches.batches.push_back(std::move(batch));
    return 0;
}

size_t BatchCount()
{
    std::lock_guard<std::mutex> lock(g_batches.mu);
    return g_batches.batches.size();
}

/* A local UDP port nobody uses now (the kernel's choice), unless one is set. */
uint16_t PickPort(const CheckSettings &settings)
{
    if (settings.port != 0) {
        return settings.port;
    }
    int fd = socket(AF_INET, SOCK_DGRAM, 0);
    sockaddr_in addr{};
    addr.sin_family = AF_INET;
    addr.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t len = sizeof(addr);
    uint16_t port = 0;
    if (fd >= 0 && bind(fd, reinterpret_cast<sockaddr *>(&addr), sizeof(addr)) == 0 &&
        getsockname(fd, reinterpret_cast<sockaddr *>(&addr), &len) == 0) {
        port = ntohs(addr.sin_port);
    }
    if (fd >= 0) {
        close(fd);
    }
    return port;
}

/* The plug-in's channel server on a running loop, and a sender to it. */
class ChannelServer {
public:
    ChannelServer(const PlatformApi &api, const CheckSettings &settings, Findings &findings)
        : api_(api), loop_(api, findings), port_(PickPort(settings)), sender_(socket(AF_INET, SOCK_DGRAM, 0))
    {
        if (!loop_.Started() || !findings.Expect(port_ != 0 && sender_ >= 0, "no local UDP port to test with")) {
            return;
        }
        MDTLM_UCSERVER_CFG cfg{};
        cfg.localAddr = inet_addr("127.0.0.1");
        cfg.localPort = htons(port_);
        cfg.peerAddr = cfg.localAddr;
        cfg.peerPort = cfg.localPort;
        cfg.param = 25;
        cfg.epollId = loop_.EpollId();
        cfg.recvFunc = OnBatch;
        uint8_t area[16] = {};
        uint32_t ret = api.FWM_CHAN_UCServer("MDTLM_VRALDCN", 0, &cfg, area);
        if (!findings.Expect(ret == 0, "FWM_CHAN_UCServer returned " + Str(ret))) {
            return;
        }
        std::memcpy(&handle_, area, sizeof(handle_));
        findings.Expect(handle_ != nullptr, "FWM_CHAN_UCServer wrote no handle into the area's first 8 bytes");
    }
    ~ChannelServer()
    {
        Destroy();
        if (sender_ >= 0) {
            close(sender_);
        }
    }
    ChannelServer(const ChannelServer &) = delete;
    ChannelServer &operator=(const ChannelServer &) = delete;

    bool Ready() const { return handle_ != nullptr; }
    uint16_t Port() const { return port_; }
    uint32_t Destroy()
    {
        uint32_t ret = handle_ != nullptr ? api_.FWM_CHAN_UCServerDestory(handle_) : 0;
        handle_ = nullptr;
        return ret;
    }
    void Send(const std::vector<uint8_t> &datagram) const
    {
        sockaddr_in to{};
        to.sin_family = AF_INET;
        to.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        to.sin_port = htons(port_);
        sendto(sender_, datagram.data(), datagram.size(), 0, reinterpret_cast<sockaddr *>(&to), sizeof(to));
    }

private:
    const PlatformApi &api_;
    LoopThread loop_;
    uint16_t port_;
    int sender_;
    void *handle_ = nullptr;
};

/* Appends one frame: u32 type, u32 length (host byte order), body. */
void AppendFrame(std::vector<uint8_t> &datagram, uint32_t type, uint32_t length, const std::vector<uint8_t> &body)
{
    const uint8_t *t = reinterpret_cast<const uint8_t *>(&type);
    const uint8_t *l = reinterpret_cast<const uint8_t *>(&length);
    datagram.insert(datagram.end(), t, t + 4);
    datagram.insert(datagram.end(), l, l + 4);
    datagram.insert(datagram.end(), body.begin(), body.end());
}

std::vector<uint8_t> Body(size_t length, uint8_t seed)
{
    std::vector<uint8_t> body(length);
    for (size_t i = 0; i < length; i++) {
        body[i] = static_cast<uint8_t>(seed + i * 7);
    }
    return body;
}

std::vector<uint8_t> Datagram(const Batch &messages)
{
    std::vector<uint8_t> datagram;
    for (const Message &m : messages) {
        AppendFrame(datagram, m.type, static_cast<uint32_t>(m.body.size()), m.body);
    }
    return datagram;
}

std::string Describe(const Batch &batch)
{
    std::string text = "{";
    for (const Message &m : batch) {
        text += (text.size() > 1 ? ", " : "") + ("type " + Str(m.type) + " len " + Str(int64_t(m.body.size())));
    }
    return text + "}";
}

/* Waits for `expected` batches, then compares them with what arrived. */
void ExpectBatches(Findings &findings, const std::vector<Batch> &expected, const std::string &sent)
{
    WaitFor([&] { return BatchCount() >= expected.size(); }, 2s);
    std::this_thread::sleep_for(100ms); /* a split or extra batch would show now */
    std::lock_guard<std::mutex> lock(g_batches.mu);
    std::string got;
    for (const Batch &b : g_batches.batches) {
        got += " " + Describe(b);
    }
    std::string want;
    for (const Batch &b : expected) {
        want += " " + Describe(b);
    }
    findings.Expect(g_batches.batches == expected, sent + ": the receive callback got" + (got.empty() ? " nothing" : got) +
                                                       "; expected" + want + " with the bodies sent");
    findings.Expect(g_batches.offLoop == 0, "the receive callback ran off the loop's thread");
    g_batches.batches.clear();
}

void CheckCreate(const PlatformApi &api, const CheckSettings &settings, Findings &findings)
{
    ChannelServer server(api, settings, findings);
    if (server.Ready()) {
        uint32_t ret = server.Destroy();
        findings.Expect(ret == 0, "FWM_CHAN_UCServerDestory returned " + Str(ret));
    }
}

void CheckBatch(const PlatformApi &api, const CheckSettings &settings, Findings &findings)
{
    ChannelServer server(api, settings, findings);
    if (!server.Ready()) {
        return;
    }
    const Batch three = {{1, Body(16, 1)}, {4, Body(200, 2)}, {6, Body(3, 3)}};
    server.Send(Datagram(three));
    ExpectBatches(findings, {three}, "one datagram of three messages");
}

void CheckDatagrams(const PlatformApi &api, const CheckSettings &settings, Findings &findings)
{
    ChannelServer server(api, settings, findings);
    if (!server.Ready()) {
        return;
    }
    const std::vector<Batch> single = {{{2, Body(40, 4)}}, {{3, Body(8, 5)}}, {{5, Body(64, 6)}}};
    for (const Batch &b : single) {
        server.Send(Datagram(b));
    }
    ExpectBatches(findings, single, "three datagrams of one message each");
}

void CheckShortFrame(const PlatformApi &api, const CheckSettings &settings, Findings &findings)
{
    ChannelServer server(api, settings, findings);
    if (!server.Ready()) {
        return;
    }
    const Message first{2, Body(8, 7)};
    std::vector<uint8_t> datagram = Datagram({first});
    AppendFrame(datagram, 3, 1000, Body(10, 8)); /* claims 1000 bytes, carries 10 */
    AppendFrame(datagram, 4, 4, Body(4, 9));     /* behind the short frame: dropped with it */
    server.Send(datagram);
    const Message next{6, Body(12, 10)};
    server.Send(Datagram({next}));
    ExpectBatches(findings, {{first}, {next}},
                  "a datagram whose second frame runs past its end, then a good one");
}

void CheckDestroy(const PlatformApi &api, const CheckSettings &settings, Findings &findings)
{
    ChannelServer server(api, settings, findings);
    if (!server.Ready()) {
        return;
    }
    uint32_t ret = server.Destroy();
    findings.Expect(ret == 0, "FWM_CHAN_UCServerDestory returned " + Str(ret));
    server.Send(Datagram({{1, Body(16, 11)}}));
    std::this_thread::sleep_for(300ms);
    findings.Expect(BatchCount() == 0, "the receive callback ran after FWM_CHAN_UCServerDestory returned");
    int fd = socket(AF_INET, SOCK_DGRAM, 0);
    sockaddr_in addr{};
    addr.sin_family = AF_INET;
    addr.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    addr.sin_port = htons(server.Port());
    findings.Expect(bind(fd, reinterpret_cast<sockaddr *>(&addr), sizeof(addr)) == 0,
                    "port " + Str(server.Port()) + " is still bound after FWM_CHAN_UCServerDestory");
    close(fd);
}

const Rule kChannelRules[] = {
    {"channel.create", "FWM_CHAN_UCServer with the plug-in's configuration writes a server handle; destroy returns 0",
     CheckCreate},
    {"channel.batch", "a datagram's messages reach the receive callback in one batch, in order, bodies intact, "
                      "on the loop's thread",
     CheckBatch},
    {"channel.datagrams", "every datagram is a batch of its own", CheckDatagrams},
    {"channel.short-frame", "a frame running past its datagram ends it: it and the frames behind it are dropped",
     CheckShortFrame},
    {"channel.destroy", "after FWM_CHAN_UCServerDestory no callback runs and the port is free", CheckDestroy},
};

} // namespace

std::span<const Rule> ChannelRules()
{
    return kChannelRules;
}

} // namespace mdtlm::check
