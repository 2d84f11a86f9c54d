/*
 * Command line of the simulator.
 */
#include "options.h"

#include <cstdio>
#include <cstdlib>
#include <utility>

#include "cli_args.h"
#include "install_paths.h"
#include "sensor_table.h"

namespace mdtlm::sim {
namespace {

const std::pair<const char *, LogLevel> kLogLevels[] = {
    {"none", LogLevel::None},
    {"failures", LogLevel::Failures},
    {"notices", LogLevel::Notices},
    {"all", LogLevel::All},
};

LogLevel ParseLogLevel(const std::string &text)
{
    for (const auto &[name, level] : kLogLevels) {
        if (text == name) {
            return level;
        }
    }
    throw tools::UsageError("--log-level: expected none, failures, notices or all, got \"" + text + "\"");
}

} // namespace

void PrintUsage(FILE *out)
{
    std::fprintf(out,
                 "usage: mdtlm-sim --config FILE [options]\n"
                 "       mdtlm-sim --list-fields [SENSOR] [--plugin PATH]\n"
                 "Plays the telemetry framework and the forwarding side around libmdtlm_vraldcn.so.\n"
                 "  --config FILE        tasks and generator settings (JSON; keys: --list-fields)\n"
                 "  --list-fields [SENSOR]  print every configuration key and, per sensor, the condition and\n"
                 "                       filter names with the form of their values, as the plug-in reports\n"
                 "                       them (markdown; the whole text is docs/configuration.md); exit\n"
                 "  --plugin PATH        the plug-in (default: the installed one, or the build tree's)\n"
                 "  --duration SECONDS   generate records for this long, then stop (0, the default: until\n"
                 "                       Ctrl-C; with --records: until every record is sent)\n"
                 "  --drain SECONDS      after the traffic stops, let the plug-in empty its queue (2000\n"
                 "                       messages a second) for at most this long (default 3); what is still\n"
                 "                       queued then is discarded when the plug-in is unloaded. Ctrl-C stops\n"
                 "                       the run the same way; a second Ctrl-C skips the drain\n"
                 "  --port N             statistics channel port (default 32090; 0: any free port)\n"
                 "  --records FILE       send these records (mdtlm-send format) instead of generated ones\n"
                 "  --batch N            messages per datagram for --records (default 1)\n"
                 "  --out FILE           write every sample as one JSON line, its data in base64\n"
                 "  --raw-dir DIR        write each sample's data to a file of its own, named\n"
                 "                       NNNNNN-SENSOR-INSTANCE-TASK.gpb|json (NNNNNN: upload order from 1);\n"
                 "                       .gpb files decode with protoc --decode (see README)\n"
                 "  --db FILE            object database file, recreated at start (default mdtlm-sim.db)\n"
                 "  --log FILE           also write every plug-in log line here\n"
                 "  --log-level LEVEL    plug-in lines shown on stderr: none, failures, notices (failures and\n"
                 "                       notices, the default) or all (also success lines)\n"
                 "  --proto-dir DIR      schemas that decode GPB samples (default: the installed ones, or the source tree's)\n"
                 "  --gpb-format text|json  how GPB samples are printed (default text)\n"
                 "  --compact            one line per printed sample\n"
                 "  --quiet              print no samples\n"
                 "  --module-id N        module id handed to the plug-in (default %u)\n"
                 "  --version            print the version and exit\n"
                 "  --help               print this text and exit\n"
                 "exit status: 0 clean stop, 1 the run could not start or did not stop cleanly,\n"
                 "  2 bad command line or input file\n",
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
        tools::ExitOnInfoFlag(args, "mdtlm-sim", PrintUsage);
        if (args.Option("--config", value)) {
            options.config = value;
        } else if (args.Option("--plugin", value)) {
            options.plugin = value;
        } else if (args.Option("--duration", value)) {
            options.duration = tools::ParseNumber("--duration", value);
            options.durationGiven = true;
        } else if (args.Option("--drain", value)) {
            options.drain = tools::ParseNumber("--drain", value);
        } else if (args.Option("--raw-dir", value)) {
            options.rawDir = value;
        } else if (args.Option("--log-level", value)) {
            options.logLevel = ParseLogLevel(value);
        } else if (args.Flag("--list-fields")) {
            options.listFields = true;
            if (!args.Done() && !args.Current().starts_with("-")) {
                options.listSensor = args.Positional();
                if (tools::FindSensor(options.listSensor) == nullptr) {
                    throw tools::UsageError("--list-fields: unknown sensor \"" + options.listSensor +
                                            "\" (one of " + tools::SensorNameList() + ")");
                }
            }
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
    if (options.config.empty() && !options.listFields) {
        throw tools::UsageError("--config FILE is required");
    }
    if (options.dbFile.empty()) {
        throw tools::UsageError("--db: a file name is required");
    }
    return options;
}

} // namespace mdtlm::sim
