/*
 * Statistics channel: a UDP server socket on an epoll loop.
 *
 * Each readiness takes a batch of datagrams with one recvmmsg call. A datagram
 * holds messages back to back, each framed as [u32 type][u32 body length][body]
 * in host byte order; its complete messages go to the receive callback as one
 * batch of entries that point into the receive buffer. A frame whose header or
 * body runs past the end of the datagram ends it: that frame and the rest of
 * the datagram are dropped and counted. SO_RXQ_OVFL reports, with every
 * datagram, how many the kernel has dropped on this socket so far.
 */
#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <atomic>
#include <cstring>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>
#include <vector>

#include "epoll_loop.h"
#include "mdtlm_platform.h"
#include "platform_internal.h"

namespace {

constexpr uint32_t kBatchDatagrams = 16;
constexpr size_t kDatagramBufferSize = 65536; /* above the largest IPv4 UDP payload, 65507 */
constexpr size_t kFrameHeaderSize = 8;
constexpr int kReceiveBufferBytes = 4 << 20;

struct ChanCounters {
    std::atomic<uint64_t> datagrams{0};
    std::atomic<uint64_t> messages{0};
    std::atomic<uint64_t> batches{0};
    std::atomic<uint64_t> malformedFrames{0};
    std::atomic<uint64_t> kernelDrops{0};
};

class ChanServer : public std::enable_shared_from_this<ChanServer> {
public:
    ChanServer(const char *name, MDTLM_IPC_RECV_FUNC recv)
        : name_(name != nullptr ? name : ""), recv_(recv), counters_(std::make_shared<ChanCounters>()),
          buffers_(new uint8_t[kBatchDatagrams * kDatagramBufferSize])
    {
        entries_.reserve(kDatagramBufferSize / kFrameHeaderSize);
    }

    /* Binds the socket and attaches it to the loop; false on any failure. */
    bool Open(uint32_t localAddr, uint16_t localPortNet, uint32_t epollId)
    {
        socket_.Reset(socket(AF_INET, SOCK_DGRAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
        if (!socket_.Valid())
            return false;
        int on = 1;
        int rcvbuf = kReceiveBufferBytes;
        setsockopt(socket_.Get(), SOL_SOCKET, SO_RXQ_OVFL, &on, sizeof(on));
        setsockopt(socket_.Get(), SOL_SOCKET, SO_RCVBUF, &rcvbuf, sizeof(rcvbuf));

        sockaddr_in addr{};
        addr.sin_family = AF_INET;
        addr.sin_addr.s_addr = localAddr;
        addr.sin_port = localPortNet;
        if (bind(socket_.Get(), reinterpret_cast<sockaddr *>(&addr), sizeof(addr)) != 0)
            return false;
        socklen_t len = sizeof(addr);
        if (getsockname(socket_.Get(), reinterpret_cast<sockaddr *>(&addr), &len) != 0)
            return false;
        port_ = ntohs(addr.sin_port);

        std::weak_ptr<ChanServer> weak = weak_from_this();
        return registration_.Attach(epollId, socket_.Get(), [weak]() -> uint32_t {
            std::shared_ptr<ChanServer> server = weak.lock();
            return server ? server->OnReadable() : 0;
        });
    }

    /* Stops the callback (it does not run on another thread once this
     * returns) and releases the port. */
    void Close()
    {
        closed_.store(true);
        registration_.Detach();
        socket_.Reset();
    }

    uint16_t Port() const { return port_; }
    const std::shared_ptr<ChanCounters> &Counters() const { return counters_; }

private:
    uint32_t OnReadable()
    {
        if (closed_.load())
            return 0;
        mmsghdr msgs[kBatchDatagrams];
        iovec iov[kBatchDatagrams];
        alignas(cmsghdr) uint8_t control[kBatchDatagrams][CMSG_SPACE(sizeof(uint32_t))];
        std::memset(msgs, 0, sizeof(msgs));
        for (uint32_t i = 0; i < kBatchDatagrams; i++) {
            iov[i].iov_base = buffers_.get() + i * kDatagramBufferSize;
            iov[i].iov_len = kDatagramBufferSize;
            msgs[i].msg_hdr.msg_iov = &iov[i];
            msgs[i].msg_hdr.msg_iovlen = 1;
            msgs[i].msg_hdr.msg_control = control[i];
            msgs[i].msg_hdr.msg_controllen = sizeof(control[i]);
        }
        int received = recvmmsg(socket_.Get(), msgs, kBatchDatagrams, MSG_DONTWAIT, nullptr);
        uint32_t calls = 0;
        for (int i = 0; i < received && !closed_.load(); i++) {
            counters_->datagrams.fetch_add(1, std::memory_order_relaxed);
            NoteKernelDrops(msgs[i].msg_hdr);
            calls += Deliver(static_cast<const uint8_t *>(iov[i].iov_base), msgs[i].msg_len);
        }
        return calls;
    }

    void NoteKernelDrops(msghdr &hdr)
    {
        for (cmsghdr *c = CMSG_FIRSTHDR(&hdr); c != nullptr; c = CMSG_NXTHDR(&hdr, c)) {
            if (c->cmsg_level == SOL_SOCKET && c->cmsg_type == SO_RXQ_OVFL) {
                uint32_t dropped;
                std::memcpy(&dropped, CMSG_DATA(c), sizeof(dropped));
                uint64_t seen = counters_->kernelDrops.load(std::memory_order_relaxed);
                if (dropped > seen)
                    counters_->kernelDrops.store(dropped, std::memory_order_relaxed);
            }
        }
    }

    /* Hands the datagram's complete messages to the callback; 1 when it ran. */
    uint32_t Deliver(const uint8_t *data, size_t length)
    {
        entries_.clear();
        size_t offset = 0;
        while (offset < length) {
            if (length - offset < kFrameHeaderSize) {
                counters_->malformedFrames.fetch_add(1, std::memory_order_relaxed);
                break;
            }
            MDTLM_STATS_IPC_ENTRY entry;
            std::memcpy(&entry.msgType, data + offset, sizeof(uint32_t));
            std::memcpy(&entry.msgLen, data + offset + sizeof(uint32_t), sizeof(uint32_t));
            if (entry.msgLen > length - offset - kFrameHeaderSize) {
                counters_->malformedFrames.fetch_add(1, std::memory_order_relaxed);
                break;
            }
            entry.body = const_cast<uint8_t *>(data + offset + kFrameHeaderSize);
            entries_.push_back(entry);
            offset += kFrameHeaderSize + entry.msgLen;
        }
        if (entries_.empty())
            return 0;
        counters_->batches.fetch_add(1, std::memory_order_relaxed);
        counters_->messages.fetch_add(entries_.size(), std::memory_order_relaxed);
        recv_(nullptr, entries_.data(), static_cast<uint32_t>(entries_.size()));
        return 1;
    }

    const std::string name_;
    const MDTLM_IPC_RECV_FUNC recv_;
    std::shared_ptr<ChanCounters> counters_;
    std::unique_ptr<uint8_t[]> buffers_;
    std::vector<MDTLM_STATS_IPC_ENTRY> entries_;
    mdtlm_host::UniqueFd socket_;
    uint16_t port_ = 0;
    std::atomic<bool> closed_{false};
    mdtlm_host::LoopRegistration registration_;
};

/* Live servers by handle, the port redirection, and what hosts can still ask
 * about the most recent server after it is gone. */
struct ChanTable {
    std::mutex mu;
    std::unordered_map<const void *, std::shared_ptr<ChanServer>> live;
    bool overridePort = false;
    uint16_t port = 0;
    const void *newest = nullptr;
    std::shared_ptr<ChanCounters> newestCounters;
    uint16_t newestPort = 0;
};

ChanTable &Channels()
{
    static ChanTable *table = new ChanTable(); /* lives as long as the process */
    return *table;
}

} /* namespace */

MDTLM_PLATFORM_API uint32_t FWM_CHAN_UCServer(const char *name, uint32_t flags, const MDTLM_UCSERVER_CFG *cfg,
                                              void *handleArea)
{
    (void)flags; /* no server option exists on the host */
    int64_t injected;
    if (mdtlm_host::FaultCheck(MDTLM_HOST_OP_CHAN_SERVER, &injected))
        return static_cast<uint32_t>(injected);
    if (cfg == nullptr || handleArea == nullptr || cfg->recvFunc == nullptr)
        return 1;

    ChanTable &table = Channels();
    uint16_t portNet = cfg->localPort;
    {
        std::lock_guard<std::mutex> lock(table.mu);
        if (table.overridePort)
            portNet = htons(table.port);
    }
    auto server = std::make_shared<ChanServer>(name, cfg->recvFunc);
    if (!server->Open(cfg->localAddr, portNet, cfg->epollId)) {
        server->Close();
        return 1;
    }

    void *handle = server.get();
    {
        std::lock_guard<std::mutex> lock(table.mu);
        table.newest = handle;
        table.newestCounters = server->Counters();
        table.newestPort = server->Port();
        table.live.emplace(handle, std::move(server));
    }
    std::memcpy(handleArea, &handle, sizeof(handle));
    return 0;
}

MDTLM_PLATFORM_API uint32_t FWM_CHAN_UCServerDestory(void *server)
{
    int64_t injected;
    if (mdtlm_host::FaultCheck(MDTLM_HOST_OP_CHAN_DESTROY, &injected))
        return static_cast<uint32_t>(injected);
    return mdtlm_host::TakeAndClose(Channels(), server) ? 0 : 1;
}

uint32_t mdtlm_host::LiveServers()
{
    ChanTable &table = Channels();
    std::lock_guard<std::mutex> lock(table.mu);
    return static_cast<uint32_t>(table.live.size());
}

MDTLM_PLATFORM_API void MDTLM_HOST_ChanSetPortOverride(int enabled, uint16_t port)
{
    ChanTable &table = Channels();
    std::lock_guard<std::mutex> lock(table.mu);
    table.overridePort = enabled != 0;
    table.port = port;
}

MDTLM_PLATFORM_API uint16_t MDTLM_HOST_ChanLocalPort(void *server)
{
    ChanTable &table = Channels();
    std::lock_guard<std::mutex> lock(table.mu);
    if (server == nullptr || server == table.newest)
        return table.newestCounters ? table.newestPort : 0;
    auto it = table.live.find(server);
    return it == table.live.end() ? 0 : it->second->Port();
}

MDTLM_PLATFORM_API uint32_t MDTLM_HOST_ChanCounters(void *server, MDTLM_HOST_CHAN_COUNTERS *out)
{
    if (out == nullptr)
        return 1;
    std::shared_ptr<ChanCounters> counters;
    {
        ChanTable &table = Channels();
        std::lock_guard<std::mutex> lock(table.mu);
        if (server == nullptr || server == table.newest) {
            counters = table.newestCounters;
        } else {
            auto it = table.live.find(server);
            if (it != table.live.end())
                counters = it->second->Counters();
        }
    }
    if (counters == nullptr)
        return 1;
    out->datagrams = counters->datagrams.load();
    out->messages = counters->messages.load();
    out->batches = counters->batches.load();
    out->malformedFrames = counters->malformedFrames.load();
    out->kernelDrops = counters->kernelDrops.load();
    return 0;
}
