/*
 * Runs the host tools as child processes in a scratch directory and collects
 * what they left behind: exit code, stdout, stderr, and their files.
 */
#ifndef MDTLM_E2E_SIM_RUNNER_H
#define MDTLM_E2E_SIM_RUNNER_H

#include <sys/types.h>

#include <string>
#include <vector>

struct SimRun {
    int exitCode = -1; /* -1: killed or did not finish in time */
    std::string out;
    std::string err;
};

class ScratchDir {
public:
    ScratchDir();
    ~ScratchDir();
    ScratchDir(const ScratchDir &) = delete;
    ScratchDir &operator=(const ScratchDir &) = delete;

    const std::string &Path() const { return path_; }
    std::string File(const std::string &name) const { return path_ + "/" + name; }
    /* Writes `text` to the file `name` and returns its path. */
    std::string Write(const std::string &name, const std::string &text) const;

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
    std::string ErrSoFar() const;
    /* Sends `signal` to the process. */
    void Signal(int signal);
    /* Waits for the end (killing the process after `timeoutSeconds`). */
    SimRun Wait(int timeoutSeconds);

private:
    std::string outPath_;
    std::string errPath_;
    pid_t pid_ = -1;
};

/* Runs mdtlm-sim with `args` in `dir` to its end. */
SimRun RunSimulator(const ScratchDir &dir, const std::vector<std::string> &args, int timeoutSeconds = 90);

std::string ReadFile(const std::string &path);

#endif /* MDTLM_E2E_SIM_RUNNER_H */
