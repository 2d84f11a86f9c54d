/*
 * Runs the host tools as child processes in a scratch directory and collects
 * what they left behind: exit code, stdout, stderr, and their files.
 */
#ifndef MDTLM_E2E_SIM_RUNNER_H
#define MDTLM_E2E_SIM_RUNNER_H

#include <sys/types.h>

#include <cstdint>
#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

struct SimRun {
    int exitCode = -1; /* -1: killed or did not finish in time */
    std::string err;
};

std::string ReadFile(const std::string &path);

class ScratchDir {
public:
    ScratchDir();
    ~ScratchDir();
    ScratchDir(const ScratchDir &) = delete;
    ScratchDir &operator=(const ScratchDir &) = delete;

    const std::string &Path() const { return path_; }
    std::string File(const std::string &name) const { return path_ + "/" + name; }
    void Write(const std::string &name, const std::string &text) const;

private:
    std::string path_;
};

/* One child process; its stdout and stderr go to files of the scratch directory. */
class ToolProcess {
public:
    /* Starts MDTLM_BUILD_DIR/tools/<tool> with `args` in `dir`. */
    ToolProcess(const ScratchDir &dir, const std::string &tool, const std::vector<std::string> &args);
    ~ToolProcess();
    ToolProcess(const ToolProcess &) = delete;
    ToolProcess &operator=(const ToolProcess &) = delete;

    /* Waits until stderr so far contains `text`; false after `timeoutSeconds`. */
    bool WaitForErr(const std::string &text, int timeoutSeconds);
    std::string ErrSoFar() const { return ReadFile(errPath_); }
    /* Sends `signal` to the process. */
    void Signal(int signal);
    /* Waits for the end (killing the process after `timeoutSeconds`). */
    SimRun Wait(int timeoutSeconds);

private:
    std::string outPath_;
    std::string errPath_;
    pid_t pid_ = -1;
};

/* mdtlm-sim arguments that load the plug-in with `config` and write samples to samples.ndjson. */
std::vector<std::string> PluginArgs(const std::string &config, const std::vector<std::string> &extra = {});
/* The lines of a samples file, parsed. */
std::vector<nlohmann::json> ReadSamples(const std::string &path);
/* Every uploaded record by task id, in upload order; keys of both encodings spelled with '-'. */
std::map<uint32_t, std::vector<nlohmann::json>> RecordsByTask(const std::vector<nlohmann::json> &lines);

#endif /* MDTLM_E2E_SIM_RUNNER_H */
