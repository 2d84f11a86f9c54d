/*
 * Framing and sending of statistics messages.
 */
#include "stats_wire.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <thread>

namespace mdtlm::tools {

void AppendFrame(std::vector<uint8_t> &datagram, const StatsMessage &message)
{
    uint32_t header[2] = {message.type, static_cast<uint32_t>(message.body.size())};
    const uint8_t *raw = reinterpret_cast<const uint8_t *>(header);
    datagram.insert(datagram.end(), raw, raw + sizeof header);
    datagram.insert(datagram.end(), message.body.begin(), message.body.end());
}

std::vector<std::vector<uint8_t>> PackDatagrams(std::span<const StatsMessage> messages, uint32_t batch)
{
    std::vector<std::vector<uint8_t>> datagrams;
    uint32_t inCurrent = 0;
    for (const StatsMessage &message : messages) {
        size_t frameSize = 8 + message.body.size();
        bool full = inCurrent >= (batch == 0 ? 1 : batch) ||
                    (!datagrams.empty() && datagrams.back().size() + frameSize > kMaxDatagram);
        if (datagrams.empty() || full) {
            datagrams.emplace_back();
            inCurrent = 0;
        }
        AppendFrame(datagrams.back(), message);
        ++inCurrent;
    }
    return datagrams;
}

StatsSender::StatsSender(uint16_t port) : port_(port)
{
    fd_ = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (fd_ < 0) {
        throw std::runtime_error(std::string("cannot open a UDP socket: ") + std::strerror(errno));
    }
    sockaddr_in to{};
    to.sin_family = AF_INET;
    to.sin_port = htons(port_);
    to.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (connect(fd_, reinterpret_cast<const sockaddr *>(&to), sizeof to) != 0) {
        std::string reason = std::strerror(errno);
        close(fd_);
        throw std::runtime_error("cannot address 127.0.0.1:" + std::to_string(port_) + ": " + reason);
    }
}

StatsSender::~StatsSender()
{
    if (fd_ >= 0) {
        close(fd_);
    }
}

std::string StatsSender::Send(const std::vector<uint8_t> &datagram)
{
    for (int attempt = 0;; ++attempt) {
        ssize_t sent = send(fd_, datagram.data(), datagram.size(), 0);
        if (sent == static_cast<ssize_t>(datagram.size())) {
            return "";
        }
        bool transient = sent < 0 && (errno == ENOBUFS || errno == EAGAIN || errno == EINTR);
        if (!transient || attempt >= 100) {
            return sent < 0 ? std::strerror(errno) : "datagram cut short";
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}

std::string StatsSender::Check(int waitMs)
{
    pollfd ready{fd_, 0, 0}; /* errors are reported whatever is asked for */
    if (poll(&ready, 1, waitMs) <= 0 || (ready.revents & POLLERR) == 0) {
        return "";
    }
    int error = 0;
    socklen_t length = sizeof error;
    if (getsockopt(fd_, SOL_SOCKET, SO_ERROR, &error, &length) != 0 || error == 0) {
        return "";
    }
    return std::strerror(error);
}

} // namespace mdtlm::tools
