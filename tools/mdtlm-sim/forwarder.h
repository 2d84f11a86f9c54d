/*
 * The forwarding side of the simulated device: a thread that sends statistics
 * records to the plug-in's channel, either generated at a steady rate or read
 * from a record script, and counts what it sent.
 */
#ifndef MDTLM_SIM_FORWARDER_H
#define MDTLM_SIM_FORWARDER_H

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "config.h"
#include "sensor_table.h"
#include "stats_wire.h"

namespace mdtlm::sim {

struct SentCounts {
    std::map<uint32_t, uint64_t> perSensor; /* messages by sensor type */
    uint64_t messages = 0;
    uint64_t datagrams = 0;
    uint64_t sendErrors = 0;
    std::string lastError;
};

class Forwarder {
public:
    /* Generated records for each of `sensors`, `rate` per second each. */
    Forwarder(uint16_t port, std::vector<const tools::SensorDesc *> sensors, GeneratorConfig generator);
    /* The script's records, in order, `batch` per datagram. */
    Forwarder(uint16_t port, std::vector<tools::StatsMessage> script, uint32_t batch);
    ~Forwarder();
    Forwarder(const Forwarder &) = delete;
    Forwarder &operator=(const Forwarder &) = delete;

    void Start();
    /* Stops sending and joins the thread. */
    void Stop();
    /* A script has been sent completely. */
    bool Finished() const { return finished_; }
    SentCounts Counts() const;

private:
    void RunGenerated();
    void RunScripted();
    /* False when stopped part-way. */
    bool Send(const std::vector<tools::StatsMessage> &messages, uint32_t batch, bool paced);
    void SendDatagram(const std::vector<uint8_t> &datagram, const std::vector<uint32_t> &types);
    bool WaitFor(std::chrono::milliseconds pause);

    tools::StatsSender sender_;
    std::vector<const tools::SensorDesc *> sensors_;
    GeneratorConfig generator_;
    std::vector<tools::StatsMessage> script_;
    uint32_t batch_ = 1;
    bool scripted_ = false;

    std::thread thread_;
    std::mutex mutex_;
    std::condition_variable wake_;
    bool stop_ = false;
    std::atomic<bool> stopping_{false}; /* stop_, readable without the lock */
    std::atomic<bool> finished_{false};

    mutable std::mutex countMutex_;
    SentCounts counts_;
};

} // namespace mdtlm::sim

#endif /* MDTLM_SIM_FORWARDER_H */
