/*
 * The forwarding side's end of the statistics channel: UDP datagrams to
 * 127.0.0.1 carrying messages back to back, each [u32 type][u32 length][body]
 * in host byte order.
 */
#ifndef MDTLM_TOOLS_STATS_WIRE_H
#define MDTLM_TOOLS_STATS_WIRE_H

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace mdtlm::tools {

struct StatsMessage {
    uint32_t type = 0;         /* sensor type */
    std::vector<uint8_t> body; /* one record (or a deliberately short or long body) */
};

/* Largest UDP payload over IPv4. */
constexpr size_t kMaxDatagram = 65507;

/* Appends one framed message. */
void AppendFrame(std::vector<uint8_t> &datagram, const StatsMessage &message);

/* Groups messages in order into datagrams of at most `batch` messages each,
 * starting a new datagram early when the next message would not fit. */
std::vector<std::vector<uint8_t>> PackDatagrams(std::span<const StatsMessage> messages, uint32_t batch);

/* A UDP socket connected to 127.0.0.1:port, so that the kernel reports a port
 * where nothing listens (as "Connection refused" on a later send or Check). */
class StatsSender {
public:
    explicit StatsSender(uint16_t port); /* throws std::runtime_error */
    ~StatsSender();
    StatsSender(const StatsSender &) = delete;
    StatsSender &operator=(const StatsSender &) = delete;

    /* Sends one datagram, retrying briefly while the socket buffer is full.
     * Returns an empty string, or why it could not be sent. */
    std::string Send(const std::vector<uint8_t> &datagram);
    /* Waits up to `waitMs` for an error the kernel reports about datagrams
     * already sent (such as an unreachable port). Returns it, or "". */
    std::string Check(int waitMs);

private:
    int fd_ = -1;
    uint16_t port_;
};

} // namespace mdtlm::tools

#endif /* MDTLM_TOOLS_STATS_WIRE_H */
