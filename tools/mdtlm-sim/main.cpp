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
#include "field_reference.h"
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
    } catch (const tools::UsageError &e) {
        std::fprintf(stderr, "mdtlm-sim: %s\n", e.what());
        sim::PrintUsage(stderr);
        return sim::kExitBadInput;
    }
    /* The plug-in's own field catalogue: what each sensor's tasks can test. */
    std::optional<sim::FieldCatalogue> catalogue;
    try {
        catalogue = sim::FieldCatalogue::Load(options.plugin);
    } catch (const std::runtime_error &e) {
        std::fprintf(stderr, "mdtlm-sim: cannot read what the plug-in's sensors can test: %s\n", e.what());
        return sim::kExitFailure;
    }
    if (options.listFields) {
        std::fputs(sim::ConfigurationReference(*catalogue, options.listSensor.empty()
                                                                ? nullptr
                                                                : tools::FindSensor(options.listSensor))
                       .c_str(),
                   stdout);
        return sim::kExitOk;
    }
    try {
        config = sim::LoadConfig(options.config, *catalogue);
        for (const std::string &note : config.notes) {
            std::fprintf(stderr, "mdtlm-sim: %s\n", note.c_str());
        }
        if (!options.recordsFile.empty()) {
            std::vector<std::string> warnings;
            script = tools::LoadRecordScript(options.recordsFile, &warnings);
            for (const std::string &warning : warnings) {
                std::fprintf(stderr, "mdtlm-sim: %s\n", warning.c_str());
            }
        }
    } catch (const tools::InputError &e) {
        std::fprintf(stderr, "mdtlm-sim: %s\n", e.what());
        return sim::kExitBadInput;
    }
    sim::Simulator simulator(options, config, std::move(script), signals);
    return simulator.Run();
}
