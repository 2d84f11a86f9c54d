/*
 * The simulator's run, step by step.
 *
 * Start: fresh database, framework table, plug-in loaded and initialised, the
 * configured tasks added through the entries the plug-in registered.
 * Run: the forwarding side sends; every uploaded sample is shown; a status
 * line once a second.
 * Stop (at the duration, when a script is delivered, or at Ctrl-C): the
 * forwarding side stops; the simulator lets the plug-in's ticks drain the
 * statistics queue for at most --drain seconds, showing how far they got (a
 * second Ctrl-C cuts this short), copies the database aside, deletes every
 * task through the registered delete entries, unloads the plug-in (which
 * discards whatever is still queued), joins its threads, and accounts for
 * every buffer.
 */
#include "simulator.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <future>
#include <set>
#include <thread>

#include "loss_report.h"
#include "mdtlm_host.h"

namespace mdtlm::sim {
namespace {

using namespace std::chrono_literals;

constexpr uint16_t kDevicePort = 32090;
constexpr const char *kStatsQueueName = "MdtlmNtvVralDcnStatsQue";
constexpr const char *kEventQueueName = "MDTLM_VRALDCN_EVENT";
/* Messages the plug-in handles per tick. */
constexpr double kMessagesPerTick = 2000;
/* Long enough for a tick that has just emptied the queue to finish its uploads and database writes. */
constexpr auto kTickSettle = 600ms;
constexpr auto kPoll = 20ms;
constexpr auto kJoinLimit = 10s;
/* How long the channel and the queue must stay empty before the drain counts as done. */
constexpr double kEmptyConfirm = 0.1;

std::string Plural(int64_t count, const char *one, const char *many)
{
    return std::to_string(count) + " " + (count == 1 ? one : many);
}

/* Polls `done` until it holds or `limit` passes; true when it held. */
template <typename Condition>
bool WaitUntil(Condition done, std::chrono::milliseconds limit)
{
    auto deadline = std::chrono::steady_clock::now() + limit;
    while (!done()) {
        if (std::chrono::steady_clock::now() >= deadline) {
            return false;
        }
        std::this_thread::sleep_for(kPoll);
    }
    return true;
}

int32_t QueueFill(const char *name)
{
    void *queue = MDTLM_HOST_QueueFind(name);
    return queue != nullptr ? MDTLM_HOST_QueueCount(queue) : -1;
}

/* Whether 127.0.0.1:port can be bound right now; the reason when not. */
std::string PortProblem(uint16_t port)
{
    int fd = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (fd < 0) {
        return std::strerror(errno);
    }
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    std::string problem;
    if (bind(fd, reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0) {
        problem = std::strerror(errno);
    }
    close(fd);
    return problem;
}

} // namespace

Simulator::Simulator(const Options &options, const SimConfig &config,
                     std::optional<std::vector<tools::StatsMessage>> script, const sigset_t &signals)
    : options_(options), config_(config), script_(std::move(script)), signals_(signals),
      framework_(options.moduleId), decoder_(options.protoDir, options.gpbFormat, options.compact),
      database_(options.dbFile)
{
}

Simulator::~Simulator()
{
    forwarder_.reset();
    if (out_ != nullptr) {
        std::fclose(out_);
    }
    if (log_ != nullptr) {
        std::fclose(log_);
    }
}

double Simulator::Elapsed() const
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count();
}

RunState Simulator::CurrentState() const
{
    RunState state;
    state.seconds = Elapsed();
    if (forwarder_) {
        state.sent = forwarder_->Counts();
    }
    if (finalChannelKnown_) {
        state.channelKnown = true;
        state.channel = finalChannel_;
    } else if (initialised_) {
        state.channelKnown = MDTLM_HOST_ChanCounters(nullptr, &state.channel) == 0;
        state.queued = QueueFill(kStatsQueueName);
    }
    if (finalChannelKnown_) {
        state.shortRefused = finalShortRefused_;
    } else if (shortMessages_ != nullptr && initialised_) {
        state.shortRefused = static_cast<int64_t>(shortMessages_());
    }
    state.samples = recorder_->Totals();
    state.logs = framework_.Logs();
    state.buffers = framework_.Buffers();
    return state;
}

bool Simulator::OpenOutputs()
{
    if (!options_.outFile.empty() && (out_ = std::fopen(options_.outFile.c_str(), "w")) == nullptr) {
        std::fprintf(stderr, "mdtlm-sim: cannot write %s: %s\n", options_.outFile.c_str(), std::strerror(errno));
        return false;
    }
    if (!options_.logFile.empty() && (log_ = std::fopen(options_.logFile.c_str(), "w")) == nullptr) {
        std::fprintf(stderr, "mdtlm-sim: cannot write %s: %s\n", options_.logFile.c_str(), std::strerror(errno));
        return false;
    }
    if (!options_.rawDir.empty()) {
        std::error_code error;
        std::filesystem::create_directories(options_.rawDir, error);
        if (error) {
            std::fprintf(stderr, "mdtlm-sim: cannot create the directory %s: %s\n", options_.rawDir.c_str(),
                         error.message().c_str());
            return false;
        }
    }
    framework_.SetLogFile(log_);
    framework_.SetLogShown(options_.logLevel);
    recorder_ = std::make_unique<SampleRecorder>(config_, decoder_, !options_.quiet, options_.compact, out_,
                                                 options_.rawDir);
    framework_.SetSampleSink([this](const MDTLM_SAMPLE_BUFFER &sample) { return recorder_->OnSample(sample); });
    for (const std::string &warning : decoder_.Warnings()) {
        std::fprintf(stderr, "mdtlm-sim: warning: %s\n", warning.c_str());
    }
    std::string problem = database_.Create();
    if (!problem.empty()) {
        std::fprintf(stderr, "mdtlm-sim: %s\n", problem.c_str());
        return false;
    }
    std::fprintf(stderr, "mdtlm-sim: object database %s (sqlite3 %s 'select * from fem_mdtlm_stat')\n",
                 database_.Path().c_str(), database_.Path().c_str());
    return true;
}

bool Simulator::PortAvailable() const
{
    if (options_.port == 0) {
        return true;
    }
    std::string problem = PortProblem(static_cast<uint16_t>(options_.port));
    if (!problem.empty()) {
        std::fprintf(stderr,
                     "mdtlm-sim: cannot bind the statistics channel to 127.0.0.1:%u: %s\n"
                     "  (another simulator or test run may be using it; choose one with --port N, "
                     "or --port 0 for any free port)\n",
                     options_.port, problem.c_str());
        return false;
    }
    return true;
}

bool Simulator::StartPlugin()
{
    MDTLM_HOST_ChanSetPortOverride(options_.port != kDevicePort, static_cast<uint16_t>(options_.port));
    MDTLM_HOST_SetFrameworkTable(framework_.Table());
    InitFunc init = nullptr;
    try {
        plugin_ = std::make_unique<Plugin>(options_.plugin);
        init = plugin_->Require<InitFunc>("MDTLM_VRALDCN_Init");
        unload_ = plugin_->Require<UnloadFunc>("MDTLM_VRALDCN_Unload");
        shortMessages_ = plugin_->Find<CounterFunc>("MDTLM_VRALDCN_STATS_IPC_GetShortMsgCnt");
        lossCounters_ = plugin_->Find<LossCountersFunc>("MDTLM_VRALDCN_STATS_GetLossCounters");
    } catch (const std::runtime_error &e) {
        std::fprintf(stderr, "mdtlm-sim: %s\n", e.what());
        plugin_.reset();
        return false;
    }
    uint32_t result = init(options_.moduleId);
    initialised_ = true; /* whatever the result, the plug-in may hold resources now */
    if (result != 0) {
        std::fprintf(stderr, "mdtlm-sim: the plug-in did not start: MDTLM_VRALDCN_Init returned %u "
                             "(its log lines above say why)\n", result);
        return false;
    }
    port_ = MDTLM_HOST_ChanLocalPort(nullptr);
    if (port_ == 0) {
        std::fprintf(stderr, "mdtlm-sim: the plug-in started but no statistics channel is listening\n");
        return false;
    }
    std::fprintf(stderr, "mdtlm-sim: plug-in %s started (module %u), %zu sensor paths registered, "
                         "statistics channel on 127.0.0.1:%u\n",
                 plugin_->Path().c_str(), options_.moduleId, framework_.RegistrationCount(), port_);
    return true;
}

bool Simulator::Subscribe()
{
    for (const TaskConfig &task : config_.tasks) {
        std::optional<MDTLM_XPATH_REG_INFO> registration = framework_.Registration(task.sensor->xpath);
        if (!registration || registration->addFunc == nullptr) {
            std::fprintf(stderr, "mdtlm-sim: the plug-in registered no add entry for %s\n", task.sensor->xpath);
            return false;
        }
        MDTLM_SENSOR_PATH_INFO info = task.PathInfo();
        uint32_t result = registration->addFunc(task.instance, task.task, &info);
        std::fprintf(stderr, "mdtlm-sim: task %s (%s, %s, %s) added%s\n", task.Label().c_str(), task.EncodingName(),
                     Plural(static_cast<int64_t>(task.conditions.size()), "condition", "conditions").c_str(),
                     Plural(static_cast<int64_t>(task.filters.size()), "filter", "filters").c_str(),
                     result == 0 ? "" : (" but the add entry returned " + std::to_string(result)).c_str());
    }
    return true;
}

void Simulator::WaitForSubscriptions()
{
    /* Each task id gets its statistics row once the plug-in's worker has linked the task. */
    std::set<uint32_t> ids;
    for (const TaskConfig &task : config_.tasks) {
        ids.insert(task.task);
    }
    const int64_t rows = static_cast<int64_t>(ids.size());
    bool ready =
        WaitUntil([&] { return QueueFill(kEventQueueName) <= 0 && database_.TaskStatCount() >= rows; }, 5000ms);
    if (!ready) {
        std::fprintf(stderr, "mdtlm-sim: warning: the plug-in has not confirmed every task after 5 s; "
                             "sending anyway\n");
    }
}

bool Simulator::StartForwarding()
{
    try {
        if (script_) {
            std::fprintf(stderr, "mdtlm-sim: sending %zu scripted records from %s\n", script_->size(),
                         options_.recordsFile.c_str());
            forwarder_ = std::make_unique<Forwarder>(port_, std::move(*script_), options_.batch);
        } else {
            std::vector<const tools::SensorDesc *> sensors;
            for (const tools::SensorDesc &sensor : tools::Sensors()) {
                for (const TaskConfig &task : config_.tasks) {
                    if (task.sensor == &sensor) {
                        sensors.push_back(&sensor);
                        break;
                    }
                }
            }
            std::fprintf(stderr, "mdtlm-sim: generating %g records per second for each of %zu sensors (seed %llu)\n",
                         config_.generator.rate, sensors.size(),
                         static_cast<unsigned long long>(config_.generator.seed));
            forwarder_ = std::make_unique<Forwarder>(port_, std::move(sensors), config_.generator);
        }
    } catch (const std::runtime_error &e) {
        std::fprintf(stderr, "mdtlm-sim: %s\n", e.what());
        return false;
    }
    forwarder_->Start();
    return true;
}

bool Simulator::AwaitSignal(double seconds)
{
    long nanoseconds = static_cast<long>(std::max(seconds, 0.001) * 1e9);
    timespec timeout{nanoseconds / 1000000000, nanoseconds % 1000000000};
    int signal = sigtimedwait(&signals_, nullptr, &timeout);
    if (signal <= 0) {
        return false;
    }
    if (++interrupts_ == 1) {
        std::fprintf(stderr,
                     "\nmdtlm-sim: %s: stopping; the plug-in may drain its queue for up to %g s "
                     "(%s again to skip that)\n",
                     strsignal(signal), options_.drain, signal == SIGINT ? "Ctrl-C" : "the signal");
    } else {
        std::fprintf(stderr, "\nmdtlm-sim: %s again: skipping the drain\n", strsignal(signal));
    }
    return true;
}

void Simulator::RunUntilStopped()
{
    bool untilDelivered = script_.has_value() && !options_.durationGiven;
    bool timed = options_.durationGiven && options_.duration > 0;
    double nextStatus = 1;
    for (;;) {
        double now = Elapsed();
        if (timed && now >= options_.duration) {
            std::fprintf(stderr, "mdtlm-sim: %g s reached, the forwarding side stops\n", options_.duration);
            return;
        }
        if (untilDelivered && forwarder_->Finished()) {
            return;
        }
        double until = std::min(nextStatus, timed ? options_.duration : nextStatus);
        if (untilDelivered) {
            until = std::min(until, now + 0.05);
        }
        if (AwaitSignal(until - now)) {
            return;
        }
        if (Elapsed() >= nextStatus) {
            std::fprintf(stderr, "%s\n", StatusLine(CurrentState()).c_str());
            nextStatus += 1;
        }
    }
}

bool Simulator::DrainUntil(const std::function<bool()> &done, double deadline)
{
    while (!done()) {
        if (interrupts_ >= 2 || Elapsed() >= deadline) {
            return false;
        }
        AwaitSignal(std::min(std::chrono::duration<double>(kPoll).count(), deadline - Elapsed()));
    }
    return true;
}

void Simulator::DrainTraffic()
{
    forwarder_->Stop();
    const uint64_t sentDatagrams = forwarder_->Counts().datagrams;
    const double drainEnd = Elapsed() + options_.drain;
    /* Datagrams sent but not yet taken by the channel (nor dropped by the
     * kernel), and messages waiting in the statistics queue. */
    auto unreceived = [&]() -> int64_t {
        MDTLM_HOST_CHAN_COUNTERS channel{};
        if (MDTLM_HOST_ChanCounters(nullptr, &channel) != 0) {
            return 0;
        }
        uint64_t taken = channel.datagrams + channel.kernelDrops;
        return taken >= sentDatagrams ? 0 : static_cast<int64_t>(sentDatagrams - taken);
    };
    auto backlog = [&](int64_t datagrams, int32_t queued) {
        std::string text = Plural(queued > 0 ? queued : 0, "queued message", "queued messages");
        if (datagrams > 0) {
            text += " and " + Plural(datagrams, "datagram", "datagrams") + " not yet received";
        }
        return text;
    };
    int64_t datagrams = unreceived();
    int32_t queued = QueueFill(kStatsQueueName);
    if (interrupts_ < 2) {
        if (queued > 0 || datagrams > 0) {
            /* Ticks take up to 2000 messages each, one tick a second. */
            double estimate = std::ceil((std::max(queued, 0) + static_cast<double>(datagrams)) / kMessagesPerTick);
            std::fprintf(stderr, "mdtlm-sim: draining %s, about %g s at %g per tick",
                         backlog(datagrams, queued).c_str(), estimate, kMessagesPerTick);
            if (estimate > options_.drain) {
                std::fprintf(stderr, "; stopping after %g s", options_.drain);
            }
            std::fprintf(stderr, "\n");
        }
        double nextProgress = Elapsed() + 1;
        double emptySince = -1;
        DrainUntil(
            [&] {
                datagrams = unreceived();
                queued = QueueFill(kStatsQueueName);
                bool empty = queued <= 0 && datagrams == 0;
                if (!empty && Elapsed() >= nextProgress) {
                    std::fprintf(stderr, "mdtlm-sim: draining: still %s\n", backlog(datagrams, queued).c_str());
                    nextProgress += 1;
                }
                /* A datagram counted as received may still be on its way into the queue. */
                emptySince = empty ? (emptySince < 0 ? Elapsed() : emptySince) : -1;
                return empty && Elapsed() - emptySince >= kEmptyConfirm;
            },
            drainEnd);
    }
    datagrams = unreceived();
    queued = QueueFill(kStatsQueueName);
    if (queued > 0 || datagrams > 0) {
        std::fprintf(stderr, "mdtlm-sim: stopping with %s; unloading the plug-in discards them\n",
                     backlog(datagrams, queued).c_str());
    }
    /* Let the tick under way finish its uploads and database writes. */
    std::this_thread::sleep_for(kTickSettle);
    finalShortRefused_ = shortMessages_ != nullptr ? static_cast<int64_t>(shortMessages_()) : -1;
    finalChannelKnown_ = MDTLM_HOST_ChanCounters(nullptr, &finalChannel_) == 0;
}

void Simulator::DeleteTasks()
{
    std::string problem = database_.Snapshot();
    snapshotTaken_ = problem.empty();
    if (!problem.empty()) {
        std::fprintf(stderr, "mdtlm-sim: warning: cannot copy the database tables: %s\n", problem.c_str());
    }
    for (const TaskConfig &task : config_.tasks) {
        std::optional<MDTLM_XPATH_REG_INFO> registration = framework_.Registration(task.sensor->xpath);
        if (registration && registration->delFunc != nullptr) {
            uint32_t result = registration->delFunc(task.instance, task.task);
            if (result != 0) {
                std::fprintf(stderr, "mdtlm-sim: warning: deleting task %s returned %u\n", task.Label().c_str(),
                             result);
            }
        }
    }
    /* Deleting the last task with an id removes its statistics row. */
    bool handled = WaitUntil(
        [&] { return QueueFill(kEventQueueName) <= 0 && database_.TaskStatCount() == 0; }, 3000ms);
    if (!handled) {
        std::fprintf(stderr, "mdtlm-sim: warning: the plug-in has not confirmed every delete after 3 s\n");
    }
    std::this_thread::sleep_for(200ms);
}

bool Simulator::UnloadPlugin()
{
    if (!initialised_) {
        return true;
    }
    /* The server goes with the unload: take its count while it is there. */
    MDTLM_HOST_CHAN_COUNTERS channel{};
    if (MDTLM_HOST_ChanCounters(nullptr, &channel) == 0) {
        channelMessagesAtUnload_ = channel.messages;
    }
    unload_();
    /* The worker thread must come back; a plug-in whose loop does not stop would hang here. */
    auto joined = std::async(std::launch::async, [] { return MDTLM_HOST_JoinTasks(); });
    if (joined.wait_for(kJoinLimit) != std::future_status::ready) {
        std::fprintf(stderr, "mdtlm-sim: the plug-in's threads did not stop within %lld s after unload\n",
                     static_cast<long long>(std::chrono::duration_cast<std::chrono::seconds>(kJoinLimit).count()));
        std::fflush(nullptr);
        std::_Exit(kExitFailure);
    }
    initialised_ = false;
    MDTLM_HOST_SetFrameworkTable(nullptr);
    return true;
}

int Simulator::Finish(bool cleanSoFar)
{
    UnloadPlugin();
    if (snapshotTaken_) {
        /* No tick runs any more: rows deleted late, or never, are final too. */
        std::string problem = database_.ReadTaskStats();
        statsKnown_ = problem.empty();
        if (!statsKnown_) {
            std::fprintf(stderr, "mdtlm-sim: warning: %s\n", problem.c_str());
        }
        problem = database_.Restore();
        if (!problem.empty()) {
            std::fprintf(stderr, "mdtlm-sim: warning: cannot restore the database tables: %s\n", problem.c_str());
        }
    } else {
        MDTLM_HOST_DbClose();
    }
    RunState state = CurrentState();
    if (forwarder_) {
        std::fprintf(stderr, "%s", Summary(config_, state, recorder_->Tallies(), database_.TaskStats(),
                                           statsKnown_)
                                       .c_str());
        std::fprintf(stderr,
                     "object database: %s holds the task statistics and report-performance rows as they stood "
                     "before the tasks were deleted:\n  sqlite3 %s 'select * from fem_mdtlm_stat'\n"
                     "  sqlite3 %s 'select * from vraldcn_mdtlm_report_perf'\n",
                     database_.Path().c_str(), database_.Path().c_str(), database_.Path().c_str());
    }
    bool leaked = state.buffers.liveBuffers > 0 || state.buffers.badFrees > 0;
    if (leaked) {
        std::string sizes;
        for (const auto &[size, count] : framework_.OutstandingBySize()) {
            sizes += " " + std::to_string(count) + " x " + std::to_string(size) + " bytes;";
        }
        std::fprintf(stderr, "mdtlm-sim: %llu buffers outstanding at exit:%s %llu frees of unknown buffers\n",
                     static_cast<unsigned long long>(state.buffers.liveBuffers), sizes.c_str(),
                     static_cast<unsigned long long>(state.buffers.badFrees));
        /* The plug-in's leftovers may still be referenced from its image: keep it mapped. */
        if (plugin_) {
            plugin_->Keep();
        }
    }
    if (framework_.ForeignModuleCalls() > 0) {
        std::fprintf(stderr, "mdtlm-sim: warning: %llu framework calls carried another module id than %u\n",
                     static_cast<unsigned long long>(framework_.ForeignModuleCalls()), options_.moduleId);
    }
    bool accounted = ReportLosses();
    bool clean = cleanSoFar && !leaked && accounted;
    if (clean) {
        std::fprintf(stderr, "mdtlm-sim: clean stop, %llu buffers allocated, 0 outstanding\n",
                     static_cast<unsigned long long>(state.buffers.allocations));
    }
    return clean ? kExitOk : kExitFailure;
}

bool Simulator::ReportLosses() const
{
    if (lossCounters_ == nullptr || !channelMessagesAtUnload_) {
        return true; /* a plug-in without loss counters, or no channel: nothing to reconcile */
    }
    MDTLM_LOSS_COUNTERS losses{};
    if (lossCounters_(&losses) != 0) {
        return true;
    }
    /* After the unload nothing is queued any more: what was is counted as discarded. */
    LossReport report = ReconcileLosses(losses, *channelMessagesAtUnload_, 0);
    std::fprintf(stderr, "%s", report.text.c_str());
    return report.unaccounted == 0;
}

int Simulator::Run()
{
    start_ = std::chrono::steady_clock::now();
    if (!PortAvailable() || !OpenOutputs()) {
        return kExitFailure;
    }
    if (!StartPlugin() || !Subscribe()) {
        return Finish(false);
    }
    WaitForSubscriptions();
    if (!StartForwarding()) {
        DeleteTasks();
        return Finish(false);
    }
    RunUntilStopped();
    DrainTraffic();
    DeleteTasks();
    return Finish(true);
}

} // namespace mdtlm::sim
