/*
 * mdtlm-send: plays the forwarding side from a script. Sends the records of a
 * JSON file to the plug-in's statistics channel, in order, framed as the
 * channel expects, optionally several per datagram and several times over.
 */
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>
#include <thread>

#include "cli_args.h"
#include "record_script.h"
#include "sensor_table.h"
#include "stats_wire.h"

using namespace mdtlm::tools;

namespace {

constexpr uint16_t kDefaultPort = 32090;
/* Datagrams sent back to back before yielding, so the receiver keeps up. */
constexpr uint32_t kBurst = 256;
/* How long the kernel may take to report that nothing listens on the port. */
constexpr int kRefusalWaitMs = 200;

std::string Count(uint64_t count, const char *one, const char *many)
{
    return std::to_string(count) + " " + (count == 1 ? one : many);
}

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
                 "                an address text must agree with the record's address-family field;\n"
                 "                a text holding \" or \\ is sent but warned about (it breaks JSON samples)\n"

                 "  --port N      statistics channel port on 127.0.0.1 (default %u)\n"
                 "  --repeat N    send the whole list N times (default 1)\n"
                 "  --batch N     messages per datagram (default 1)\n"
                 "  --version     print the version and exit\n"
                 "  --help        print this text and exit\n"
                 "exit status: 0 sent, 1 not delivered (nothing listens on the port, or a send failed),\n"
                 "  2 bad command line or records file\n"
                 "example: mdtlm-send examples/records.json\n",
                 SensorNameList().c_str(), kDefaultPort);
}

Options ParseOptions(int argc, char **argv)
{
    Options options;
    ArgReader args(argc, argv);
    std::string value;
    while (!args.Done()) {
        ExitOnInfoFlag(args, "mdtlm-send", Usage);
        if (args.Option("--port", value)) {
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
    std::vector<std::string> warnings;
    try {
        options = ParseOptions(argc, argv);
        messages = LoadRecordScript(options.file, &warnings);
    } catch (const UsageError &e) {
        std::fprintf(stderr, "mdtlm-send: %s\n", e.what());
        Usage(stderr);
        return 2;
    } catch (const InputError &e) {
        std::fprintf(stderr, "mdtlm-send: %s\n", e.what());
        return 2;
    }

    for (const std::string &warning : warnings) {
        std::fprintf(stderr, "mdtlm-send: %s\n", warning.c_str());
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
                    std::fprintf(stderr, "mdtlm-send: sending to 127.0.0.1:%u failed after %s: %s%s\n",
                                 options.port, Count(sent, "datagram", "datagrams").c_str(), problem.c_str(),
                                 errno == ECONNREFUSED ? " (nothing listens on that port)" : "");
                    return 1;
                }
                if (++sent % kBurst == 0) {
                    std::this_thread::sleep_for(std::chrono::milliseconds(1));
                }
            }
        }
        std::string refused = sender.Check(kRefusalWaitMs);
        if (!refused.empty()) {
            std::fprintf(stderr, "mdtlm-send: 127.0.0.1:%u did not take the %s: %s (nothing listens on that port)\n",
                         options.port, Count(sent, "datagram", "datagrams").c_str(), refused.c_str());
            return 1;
        }
        std::fprintf(stderr, "mdtlm-send: %s in %s to 127.0.0.1:%u",
                     Count(messages.size() * options.repeat, "message", "messages").c_str(),
                     Count(sent, "datagram", "datagrams").c_str(), options.port);
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
