/*
 * Child-process plumbing for the end-to-end tests.
 */
#include "sim_runner.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <thread>

ScratchDir::ScratchDir()
{
    std::string pattern = (std::filesystem::temp_directory_path() / "mdtlm-e2e-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) {
        throw std::runtime_error("cannot create a scratch directory");
    }
    path_ = pattern;
}

ScratchDir::~ScratchDir()
{
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

std::string ScratchDir::Write(const std::string &name, const std::string &text) const
{
    std::string path = File(name);
    std::ofstream(path, std::ios::binary) << text;
    return path;
}

std::string ReadFile(const std::string &path)
{
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

SimRun RunSimulator(const ScratchDir &dir, const std::vector<std::string> &args, int timeoutSeconds)
{
    std::string program = std::string(MDTLM_BUILD_DIR) + "/tools/mdtlm-sim";
    std::string outPath = dir.File("sim.stdout");
    std::string errPath = dir.File("sim.stderr");
    std::vector<char *> argv;
    argv.push_back(program.data());
    std::vector<std::string> copies = args;
    for (std::string &arg : copies) {
        argv.push_back(arg.data());
    }
    argv.push_back(nullptr);

    pid_t child = fork();
    if (child == 0) {
        int out = open(outPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        int err = open(errPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        if (out < 0 || err < 0 || chdir(dir.Path().c_str()) != 0) {
            _exit(127);
        }
        dup2(out, STDOUT_FILENO);
        dup2(err, STDERR_FILENO);
        execv(program.c_str(), argv.data());
        _exit(127);
    }
    SimRun run;
    auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(timeoutSeconds);
    int status = 0;
    for (;;) {
        pid_t done = waitpid(child, &status, WNOHANG);
        if (done == child) {
            run.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
            break;
        }
        if (std::chrono::steady_clock::now() >= deadline) {
            kill(child, SIGKILL);
            waitpid(child, &status, 0);
            break;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    run.out = ReadFile(outPath);
    run.err = ReadFile(errPath);
    return run;
}
