/*
 * Command line of the simulator.
 */
#ifndef MDTLM_SIM_OPTIONS_H
#define MDTLM_SIM_OPTIONS_H

#include <cstdint>
#include <string>

namespace mdtlm::sim {

enum class GpbFormat { Text, Json };

/* Which plug-in log lines are shown on stderr; --log FILE always gets every line. */
enum class LogLevel { None, Failures, Notices, All };

struct Options {
    std::string plugin;      /* path of libmdtlm_vraldcn.so */
    std::string config;      /* task configuration (JSON) */
    double duration = 0;     /* seconds; 0 = until Ctrl-C (or until --records are delivered) */
    bool durationGiven = false;
    double drain = 3;        /* seconds the plug-in may take to empty its queue after the traffic stops */
    uint32_t port = 32090;   /* statistics channel port; 0 = let the kernel choose */
    std::string logFile;     /* plug-in log lines are also written here */
    std::string outFile;     /* NDJSON, one line per sample */
    std::string rawDir;      /* one file per sample holding its data */
    LogLevel logLevel = LogLevel::Notices;
    bool listFields = false; /* print the configuration reference and exit */
    std::string listSensor;  /* only this sensor's part of it */
    std::string dbFile = "mdtlm-sim.db";
    std::string protoDir;
    std::string recordsFile; /* record script sent instead of generated records */
    uint32_t batch = 1;      /* messages per datagram for --records */
    bool quiet = false;
    bool compact = false;
    GpbFormat gpbFormat = GpbFormat::Text;
    uint32_t moduleId = 0x4D44;
};

/* Parses the command line; throws tools::UsageError. Exits on --help. */
Options ParseOptions(int argc, char **argv);
void PrintUsage(FILE *out);

} // namespace mdtlm::sim

#endif /* MDTLM_SIM_OPTIONS_H */
