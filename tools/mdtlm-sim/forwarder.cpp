/*
 * The simulated forwarding side.
 */
#include "forwarder.h"

#include <algorithm>
#include <chrono>

#include "record_generator.h"

namespace mdtlm::sim {
namespace {

using Clock = std::chrono::steady_clock;

constexpr auto kStep = std::chrono::milliseconds(50);
/* Share of generated datagrams that carry several messages, and how many. */
constexpr double kMultiMessageShare = 0.2;
constexpr uint64_t kMaxPerDatagram = 4;
/* Scripts: datagrams sent back to back before a short pause, so the receiver keeps up. */
constexpr uint32_t kBurst = 256;

} // namespace

Forwarder::Forwarder(uint16_t port, std::vector<const tools::SensorDesc *> sensors, GeneratorConfig generator)
    : sender_(port), sensors_(std::move(sensors)), generator_(generator)
{
}

Forwarder::Forwarder(uint16_t port, std::vector<tools::StatsMessage> script, uint32_t batch)
    : sender_(port), script_(std::move(script)), batch_(batch), scripted_(true)
{
}

Forwarder::~Forwarder()
{
    Stop();
}

void Forwarder::Start()
{
    thread_ = std::thread([this] { scripted_ ? RunScripted() : RunGenerated(); });
}

void Forwarder::Stop()
{
    {
        std::lock_guard lock(mutex_);
        stop_ = true;
        stopping_ = true;
    }
    wake_.notify_all();
    if (thread_.joinable()) {
        thread_.join();
    }
}

SentCounts Forwarder::Counts() const
{
    std::lock_guard lock(countMutex_);
    return counts_;
}

bool Forwarder::WaitFor(std::chrono::milliseconds pause)
{
    std::unique_lock lock(mutex_);
    return !wake_.wait_for(lock, pause, [this] { return stop_; });
}

void Forwarder::SendDatagram(const std::vector<uint8_t> &datagram, const std::vector<uint32_t> &types)
{
    std::string problem = sender_.Send(datagram);
    std::lock_guard lock(countMutex_);
    if (!problem.empty()) {
        ++counts_.sendErrors;
        counts_.lastError = problem;
        return;
    }
    ++counts_.datagrams;
    counts_.messages += types.size();
    for (uint32_t type : types) {
        ++counts_.perSensor[type];
    }
}

bool Forwarder::Send(const std::vector<tools::StatsMessage> &messages, uint32_t batch, bool paced)
{
    std::vector<std::vector<uint8_t>> datagrams = tools::PackDatagrams(messages, batch);
    size_t next = 0;
    uint32_t inBurst = 0;
    for (const std::vector<uint8_t> &datagram : datagrams) {
        /* The message types of this datagram, from its frames. */
        std::vector<uint32_t> types;
        for (size_t at = 0; at + 8 <= datagram.size(); ++next) {
            types.push_back(messages[next].type);
            at += 8 + messages[next].body.size();
        }
        SendDatagram(datagram, types);
        if (paced && ++inBurst == kBurst) {
            inBurst = 0;
            if (!WaitFor(std::chrono::milliseconds(1))) {
                return false;
            }
        }
    }
    return true;
}

void Forwarder::RunGenerated()
{
    RecordGenerator generator(generator_.seed, generator_.invalidShare);
    const Clock::time_point start = Clock::now();
    std::vector<uint64_t> made(sensors_.size(), 0);
    while (WaitFor(kStep)) {
        double elapsed = std::chrono::duration<double>(Clock::now() - start).count();
        /* Records due so far for each sensor, interleaved across sensors. */
        std::vector<tools::StatsMessage> due;
        bool more = true;
        while (more) {
            more = false;
            for (size_t i = 0; i < sensors_.size(); ++i) {
                if (static_cast<double>(made[i]) < generator_.rate * elapsed) {
                    due.push_back(generator.Make(*sensors_[i]));
                    ++made[i];
                    more = true;
                }
            }
        }
        /* Mostly one message per datagram, now and then a few back to back. A
         * flood sends many per step: a stop is honoured between datagrams. */
        for (size_t at = 0; at < due.size() && !stopping_;) {
            size_t count = generator.Chance(kMultiMessageShare) ? generator.Between(2, kMaxPerDatagram) : 1;
            count = std::min(count, due.size() - at);
            std::vector<tools::StatsMessage> group(due.begin() + static_cast<long>(at),
                                                   due.begin() + static_cast<long>(at + count));
            Send(group, static_cast<uint32_t>(count), false);
            at += count;
        }
    }
}

void Forwarder::RunScripted()
{
    if (Send(script_, batch_, true)) {
        finished_ = true;
    }
}

} // namespace mdtlm::sim
