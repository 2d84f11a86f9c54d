/*
 * Runs the simulator as a child process in a scratch directory and collects
 * what it left behind: exit code, stdout, stderr, its NDJSON sample file and
 * its database file.
 */
#ifndef MDTLM_E2E_SIM_RUNNER_H
#define MDTLM_E2E_SIM_RUNNER_H

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

/* Runs MDTLM_BUILD_DIR/tools/mdtlm-sim with `args` in `dir`, waiting at most `timeoutSeconds`. */
SimRun RunSimulator(const ScratchDir &dir, const std::vector<std::string> &args, int timeoutSeconds = 90);

std::string ReadFile(const std::string &path);

#endif /* MDTLM_E2E_SIM_RUNNER_H */
