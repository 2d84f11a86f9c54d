/*
 * mdtlm-send: plays the forwarding side from a script. Sends the records of a
 * JSON file to the plug-in's statistics channel, in order, framed as the
 * channel expects, optionally several per datagram and several times over.
 */
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>
#include <thread>

#include "cli_args.h"
#include "mdtlm_version.h"
#include "record_script.h"
#include "sensor_table.h"
#include "stats_wire.h"

using namespace mdtlm::tools;

namespace {

constexpr uint16_t kDefaultPort = 32090;
/* Datagrams sent back to back before yielding, so the receiver keeps up. */
constexpr uint32_t kBurst = 256;

struct Options {
    std::string file;
    uint16_t port = kDefaultPort;
    uint64_t repeat = 1;
    uint32_t batch = 1;
};

void Usage(FILE *out)
{
    std::fprintf(out,
                 "usage: mdtlm-send [--port N] [--repeat N] [--batch N] RECORDS.json\n"
                 "  RECORDS.json  array of records: {\"sensor\": NAME, FIELD: VALUE, ...}; fields not given are 0\n"
                 "                sensors: %s\n"
                 "  --port N      statistics channel port on 127.0.0.1 (default %u)\n"
                 "  --repeat N    send the whole list N times (default 1)\n"
                 "  --batch N     messages per datagram (default 1)\n"
                 "  --version     print the version and exit\n"
                 "example: mdtlm-send examples/records.json\n",
                 SensorNameList().c_str(), kDefaultPort);
}

Options ParseOptions(int argc, char **argv)
{
    Options options;
    ArgReader args(argc, argv);
    std::string value;
    while (!args.Done()) {
        if (args.Flag("--help") || args.Flag("-h")) {
            Usage(stdout);
            std::exit(0);
        } else if (args.Flag("--version")) {
            std::printf("mdtlm-send %s\n", MDTLM_VERSION_STRING);
            std::exit(0);
        } else if (args.Option("--port", value)) {
            options.port = static_cast<uint16_t>(ParseUnsigned("--port", value, 1, 65535));
        } else if (args.Option("--repeat", value)) {
            options.repeat = ParseUnsigned("--repeat", value, 1, UINT32_MAX);
        } else if (args.Option("--batch", value)) {
            options.batch = static_cast<uint32_t>(ParseUnsigned("--batch", value, 1, 10000));
        } else if (options.file.empty()) {
            options.file = args.Positional();
        } else {
            throw UsageError("more than one records file: " + std::string(args.Current()));
        }
    }
    if (options.file.empty()) {
        throw UsageError("no records file given");
    }
    return options;
}

} // namespace

int main(int argc, char **argv)
{
    Options options;
    std::vector<StatsMessage> messages;
    try {
        options = ParseOptions(argc, argv);
        messages = LoadRecordScript(options.file);
    } catch (const UsageError &e) {
        std::fprintf(stderr, "mdtlm-send: %s\n", e.what());
        Usage(stderr);
        return 2;
    } catch (const InputError &e) {
        std::fprintf(stderr, "mdtlm-send: %s\n", e.what());
        return 2;
    }

    std::vector<std::vector<uint8_t>> datagrams = PackDatagrams(messages, options.batch);
    std::map<uint32_t, uint64_t> perSensor;
    for (const StatsMessage &message : messages) {
        perSensor[message.type] += options.repeat;
    }
    try {
        StatsSender sender(options.port);
        uint64_t sent = 0;
        for (uint64_t round = 0; round < options.repeat; ++round) {
            for (const std::vector<uint8_t> &datagram : datagrams) {
                std::string problem = sender.Send(datagram);
                if (!problem.empty()) {
                    std::fprintf(stderr, "mdtlm-send: sending to 127.0.0.1:%u failed after %llu datagrams: %s\n",
                                 options.port, static_cast<unsigned long long>(sent), problem.c_str());
                    return 1;
                }
                if (++sent % kBurst == 0) {
                    std::this_thread::sleep_for(std::chrono::milliseconds(1));
                }
            }
        }
        std::fprintf(stderr, "mdtlm-send: %llu messages in %llu datagrams to 127.0.0.1:%u",
                     static_cast<unsigned long long>(messages.size() * options.repeat),
                     static_cast<unsigned long long>(sent), options.port);
        const char *separator = " (";
        for (const auto &[type, count] : perSensor) {
            std::fprintf(stderr, "%s%s %llu", separator, SensorByType(type)->shortName,
                         static_cast<unsigned long long>(count));
            separator = ", ";
        }
        std::fprintf(stderr, "%s\n", perSensor.empty() ? "" : ")");
    } catch (const std::runtime_error &e) {
        std::fprintf(stderr, "mdtlm-send: %s\n", e.what());
        return 1;
    }
    return 0;
}
