/*
 * Command line of the simulator.
 */
#include "options.h"

#include <cstdio>
#include <cstdlib>

#include "cli_args.h"
#include "install_paths.h"
#include "mdtlm_version.h"

namespace mdtlm::sim {

void PrintUsage(FILE *out)
{
    std::fprintf(out,
                 "usage: mdtlm-sim --config FILE [options]\n"
                 "Plays the telemetry framework and the forwarding side around libmdtlm_vraldcn.so.\n"
                 "  --config FILE        tasks and generator settings (JSON)\n"
                 "  --plugin PATH        the plug-in (default: the installed one, or the build tree's)\n"
                 "  --duration SECONDS   run time (default: until Ctrl-C; with --records: until delivered)\n"
                 "  --port N             statistics channel port (default 32090; 0: any free port)\n"
                 "  --records FILE       send these records (mdtlm-send format) instead of generated ones\n"
                 "  --batch N            messages per datagram for --records (default 1)\n"
                 "  --out FILE           write every sample as one JSON line\n"
                 "  --db FILE            object database file, recreated at start (default mdtlm-sim.db)\n"
                 "  --log FILE           also write the plug-in's log lines here\n"
                 "  --proto-dir DIR      schemas that decode GPB samples (default: the installed ones, or the source tree's)\n"
                 "  --gpb-format text|json  how GPB samples are printed (default text)\n"
                 "  --compact            one line per printed sample\n"
                 "  --quiet              print no samples\n"
                 "  --module-id N        module id handed to the plug-in (default %u)\n"
                 "  --version            print the version and exit\n",
                 Options{}.moduleId);
}

Options ParseOptions(int argc, char **argv)
{
    using tools::ParseUnsigned;
    Options options;
    options.plugin = DefaultPluginPath();
    options.protoDir = DefaultProtoDir();
    tools::ArgReader args(argc, argv);
    std::string value;
    while (!args.Done()) {
        if (args.Flag("--help") || args.Flag("-h")) {
            PrintUsage(stdout);
            std::exit(0);
        } else if (args.Flag("--version")) {
            std::printf("mdtlm-sim %s\n", MDTLM_VERSION_STRING);
            std::exit(0);
        } else if (args.Option("--config", value)) {
            options.config = value;
        } else if (args.Option("--plugin", value)) {
            options.plugin = value;
        } else if (args.Option("--duration", value)) {
            options.duration = tools::ParseNumber("--duration", value);
            options.durationGiven = true;
        } else if (args.Option("--port", value)) {
            options.port = static_cast<uint32_t>(ParseUnsigned("--port", value, 0, 65535));
        } else if (args.Option("--records", value)) {
            options.recordsFile = value;
        } else if (args.Option("--batch", value)) {
            options.batch = static_cast<uint32_t>(ParseUnsigned("--batch", value, 1, 10000));
        } else if (args.Option("--out", value)) {
            options.outFile = value;
        } else if (args.Option("--db", value)) {
            options.dbFile = value;
        } else if (args.Option("--log", value)) {
            options.logFile = value;
        } else if (args.Option("--proto-dir", value)) {
            options.protoDir = value;
        } else if (args.Option("--gpb-format", value)) {
            if (value != "text" && value != "json") {
                throw tools::UsageError("--gpb-format: expected text or json, got \"" + value + "\"");
            }
            options.gpbFormat = value == "json" ? GpbFormat::Json : GpbFormat::Text;
        } else if (args.Option("--module-id", value)) {
            options.moduleId = static_cast<uint32_t>(ParseUnsigned("--module-id", value, 0, UINT32_MAX));
        } else if (args.Flag("--compact")) {
            options.compact = true;
        } else if (args.Flag("--quiet")) {
            options.quiet = true;
        } else {
            throw tools::UsageError("unexpected argument " + args.Positional());
        }
    }
    if (options.config.empty()) {
        throw tools::UsageError("--config FILE is required");
    }
    if (options.dbFile.empty()) {
        throw tools::UsageError("--db: a file name is required");
    }
    return options;
}

} // namespace mdtlm::sim
