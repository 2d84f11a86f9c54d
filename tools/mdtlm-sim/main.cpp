/*
 * mdtlm-sim: runs libmdtlm_vraldcn.so on a development host as the telemetry
 * framework would, feeds it statistics records as the forwarding side would,
 * and shows every sample it uploads.
 */
#include <csignal>
#include <cstdio>
#include <optional>

#include "cli_args.h"
#include "config.h"
#include "options.h"
#include "record_script.h"
#include "simulator.h"

using namespace mdtlm;

int main(int argc, char **argv)
{
    /* Ctrl-C and termination are taken by the run itself; every thread started
     * from here on (the plug-in's included) inherits the blocked mask. */
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);

    sim::Options options;
    sim::SimConfig config;
    std::optional<std::vector<tools::StatsMessage>> script;
    try {
        options = sim::ParseOptions(argc, argv);
        config = sim::LoadConfig(options.config);
        if (!options.recordsFile.empty()) {
            script = tools::LoadRecordScript(options.recordsFile);
        }
    } catch (const tools::UsageError &e) {
        std::fprintf(stderr, "mdtlm-sim: %s\n", e.what());
        sim::PrintUsage(stderr);
        return sim::kExitBadInput;
    } catch (const tools::InputError &e) {
        std::fprintf(stderr, "mdtlm-sim: %s\n", e.what());
        return sim::kExitBadInput;
    }
    sim::Simulator simulator(options, config, std::move(script), signals);
    return simulator.Run();
}
