/*
 * Intake: flow records sent as UDP datagrams (one message each) to the
 * plug-in's statistics channel and taken in by one pump of the worker's loop
 * (one recvmmsg batch, the receive callback, one copy per message onto the
 * statistics queue), next to a bare receiver on a plain socket that makes the
 * same copy: recvmmsg, then per message a buffer allocated, the body copied
 * and the buffer kept in a list. Both are fed by the same sender, outside the
 * timing, and emptied outside the timing. Per iteration one batch of
 * kDatagrams messages; divide by it for the cost per message.
 */
#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <cstring>
#include <vector>

#include "bench_support.h"
#include "flow_records.h"
#include "plugin_world.h"

namespace {

using plugin_world::PluginWorld;

constexpr uint32_t kDatagrams = 16; /* the channel's batch */

struct Frame {
    uint32_t type;
    uint32_t len;
    MDTLM_FLOW_STATS_REC rec;
};

/* A UDP socket; closed on every path. */
class Socket {
public:
    Socket() : fd_(socket(AF_INET, SOCK_DGRAM, 0)) {}
    ~Socket()
    {
        if (fd_ >= 0) {
            close(fd_);
        }
    }
    Socket(const Socket &) = delete;
    Socket &operator=(const Socket &) = delete;
    int Get() const { return fd_; }

private:
    int fd_;
};

sockaddr_in Loopback(uint16_t port)
{
    sockaddr_in addr{};
    addr.sin_family = AF_INET;
    addr.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    addr.sin_port = htons(port);
    return addr;
}

/* Sends one batch of frames to the port. */
void SendBatch(const Socket &sender, uint16_t port, const Frame &frame)
{
    const sockaddr_in to = Loopback(port);
    for (uint32_t i = 0; i < kDatagrams; ++i) {
        (void)sendto(sender.Get(), &frame, sizeof(frame), 0, reinterpret_cast<const sockaddr *>(&to), sizeof(to));
    }
}

Frame FlowFrame()
{
    return {MDTLM_SENSOR_VRAL_FLOW, sizeof(MDTLM_FLOW_STATS_REC), flow_bench::MakeFlow(false)};
}

/* Per iteration: a batch sent (untimed), taken in by `intake` (timed), and
 * the copies released by `drain` (untimed), which must find the whole batch. */
template <typename Intake, typename Drain>
void RunBatches(benchmark::State &state, uint16_t port, Intake &intake, Drain &drain)
{
    Socket sender;
    const Frame frame = FlowFrame();
    for (auto _ : state) {
        state.PauseTiming();
        SendBatch(sender, port, frame);
        state.ResumeTiming();
        MDTLM_BenchOneRecord(intake);
        state.PauseTiming();
        if (drain() != kDatagrams) {
            state.SkipWithError("a batch was not taken in whole");
            break;
        }
        state.ResumeTiming();
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * kDatagrams);
}

void BM_Intake(benchmark::State &state)
{
    PluginWorld world(1, 0);
    if (!world.Ok() || g_mdtlmNtvVralDcnChanHandle == nullptr) {
        state.SkipWithError("plug-in did not start");
        return;
    }
    /* One pass of the worker's loop: one wait that finds the channel
     * readable, then its batch, as the running loop takes a batch in. */
    auto intake = [] { MDTLM_HOST_EpollPump(g_mdtlmVralDcnEpollId, 0, 0); };
    auto drain = [] {
        uint32_t released = 0;
        for (MDTLM_STATS_MSG *msg = MDTLM_VRALDCN_STATS_QUE_Pop(); msg != nullptr;
             msg = MDTLM_VRALDCN_STATS_QUE_Pop()) {
            MDTLM_VRALDCN_BufFree(reinterpret_cast<void **>(&msg));
            ++released;
        }
        return released;
    };
    RunBatches(state, MDTLM_HOST_ChanLocalPort(g_mdtlmNtvVralDcnChanHandle), intake, drain);
}
BENCHMARK(BM_Intake);

void BM_Intake_BareRecvmmsg(benchmark::State &state)
{
    Socket receiver;
    sockaddr_in addr = Loopback(0);
    socklen_t len = sizeof(addr);
    if (bind(receiver.Get(), reinterpret_cast<sockaddr *>(&addr), sizeof(addr)) != 0 ||
        getsockname(receiver.Get(), reinterpret_cast<sockaddr *>(&addr), &len) != 0) {
        state.SkipWithError("no socket");
        return;
    }
    const uint16_t port = ntohs(addr.sin_port);
    static uint8_t buffers[kDatagrams][65536];
    std::vector<MDTLM_STATS_MSG *> kept;
    kept.reserve(kDatagrams);
    auto intake = [&] {
        mmsghdr msgs[kDatagrams] = {};
        iovec iov[kDatagrams];
        for (uint32_t i = 0; i < kDatagrams; ++i) {
            iov[i] = {buffers[i], sizeof(buffers[i])};
            msgs[i].msg_hdr.msg_iov = &iov[i];
            msgs[i].msg_hdr.msg_iovlen = 1;
        }
        const int got = recvmmsg(receiver.Get(), msgs, kDatagrams, MSG_DONTWAIT, nullptr);
        for (int i = 0; i < got; ++i) {
            uint32_t type, bodyLen;
            std::memcpy(&type, buffers[i], sizeof(type));
            std::memcpy(&bodyLen, buffers[i] + 4, sizeof(bodyLen));
            auto *msg = static_cast<MDTLM_STATS_MSG *>(std::malloc(sizeof(MDTLM_STATS_MSG) + bodyLen));
            msg->msgType = type;
            msg->msgLen = bodyLen;
            std::memcpy(msg->body, buffers[i] + 8, bodyLen);
            kept.push_back(msg);
        }
    };
    auto drain = [&] {
        const auto released = static_cast<uint32_t>(kept.size());
        for (MDTLM_STATS_MSG *msg : kept) {
            std::free(msg);
        }
        kept.clear();
        return released;
    };
    RunBatches(state, port, intake, drain);
}
BENCHMARK(BM_Intake_BareRecvmmsg);

} // namespace
