/*
 * One run of the simulator: load the plug-in as the framework would, subscribe
 * the configured tasks, play the forwarding side, show every sample, and stop
 * cleanly, accounting for every buffer.
 */
#ifndef MDTLM_SIM_SIMULATOR_H
#define MDTLM_SIM_SIMULATOR_H

#include <csignal>
#include <cstdio>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "config.h"
#include "forwarder.h"
#include "framework.h"
#include "options.h"
#include "plugin.h"
#include "report.h"
#include "sample_decoder.h"
#include "sample_recorder.h"
#include "sim_database.h"
#include "stats_wire.h"

namespace mdtlm::sim {

/* Exit codes. */
constexpr int kExitOk = 0;
constexpr int kExitFailure = 1;
constexpr int kExitBadInput = 2;

class Simulator {
public:
    /* `signals` are blocked in every thread; the run waits for them itself. */
    Simulator(const Options &options, const SimConfig &config, std::optional<std::vector<tools::StatsMessage>> script,
              const sigset_t &signals);
    ~Simulator();

    int Run();

private:
    using InitFunc = uint32_t (*)(uint32_t);
    using UnloadFunc = void (*)(void);
    using CounterFunc = uint64_t (*)(void);
    using LossCountersFunc = uint32_t (*)(MDTLM_LOSS_COUNTERS *);

    bool PortAvailable() const;
    bool OpenOutputs();
    bool StartPlugin();
    bool Subscribe();
    void WaitForSubscriptions();
    bool StartForwarding();
    void RunUntilStopped();
    /* Waits up to `seconds` for Ctrl-C or termination; true when one came (acknowledged at once). */
    bool AwaitSignal(double seconds);
    /* Polls `done` until it holds (true), the run time reaches `deadline` or a second signal came. */
    bool DrainUntil(const std::function<bool()> &done, double deadline);
    void DrainTraffic();
    void DeleteTasks();
    bool UnloadPlugin();
    int Finish(bool cleanSoFar);
    /* Prints the loss summary; false when messages are unaccounted for. */
    bool ReportLosses() const;

    RunState CurrentState() const;
    double Elapsed() const;

    const Options &options_;
    const SimConfig &config_;
    std::optional<std::vector<tools::StatsMessage>> script_;
    sigset_t signals_;

    FILE *out_ = nullptr;
    FILE *log_ = nullptr;
    Framework framework_;
    SampleDecoder decoder_;
    std::unique_ptr<SampleRecorder> recorder_;
    SimDatabase database_;
    std::unique_ptr<Plugin> plugin_;
    UnloadFunc unload_ = nullptr;
    CounterFunc shortMessages_ = nullptr;
    LossCountersFunc lossCounters_ = nullptr;
    /* Messages the channel had handed the plug-in when it was unloaded. */
    std::optional<uint64_t> channelMessagesAtUnload_;
    bool initialised_ = false;
    int interrupts_ = 0;
    uint16_t port_ = 0;
    std::unique_ptr<Forwarder> forwarder_;
    std::chrono::steady_clock::time_point start_;
    bool snapshotTaken_ = false;
    bool statsKnown_ = false; /* the task statistics rows as the plug-in left them were read */
    /* Intake counters read once the traffic has drained, before the plug-in goes away. */
    MDTLM_HOST_CHAN_COUNTERS finalChannel_{};
    bool finalChannelKnown_ = false;
    int64_t finalShortRefused_ = -1;
};

} // namespace mdtlm::sim

#endif /* MDTLM_SIM_SIMULATOR_H */
