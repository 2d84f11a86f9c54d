/* Child-process plumbing for the end-to-end tests. */
#include "sim_runner.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
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

void ScratchDir::Write(const std::string &name, const std::string &text) const
{
    std::ofstream(File(name), std::ios::binary) << text;
}

std::string ReadFile(const std::string &path)
{
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

ToolProcess::ToolProcess(const ScratchDir &dir, const std::string &tool, const std::vector<std::string> &args)
    : outPath_(dir.File(tool + ".stdout")), errPath_(dir.File(tool + ".stderr"))
{
    std::string program = std::string(MDTLM_BUILD_DIR) + "/tools/" + tool;
    std::vector<std::string> copies = args;
    std::vector<char *> argv{program.data()};
    for (std::string &arg : copies) {
        argv.push_back(arg.data());
    }
    argv.push_back(nullptr);
    pid_ = fork();
    if (pid_ == 0) {
        int out = open(outPath_.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        int err = open(errPath_.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        if (out < 0 || err < 0 || chdir(dir.Path().c_str()) != 0) {
            _exit(127);
        }
        dup2(out, STDOUT_FILENO);
        dup2(err, STDERR_FILENO);
        execv(program.c_str(), argv.data());
        _exit(127);
    }
}

ToolProcess::~ToolProcess()
{
    if (pid_ > 0) {
        kill(pid_, SIGKILL);
        waitpid(pid_, nullptr, 0);
    }
}

void ToolProcess::Signal(int signal)
{
    if (pid_ > 0) {
        kill(pid_, signal);
    }
}

bool ToolProcess::WaitForErr(const std::string &text, int timeoutSeconds)
{
    auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(timeoutSeconds);
    while (ErrSoFar().find(text) == std::string::npos) {
        if (std::chrono::steady_clock::now() >= deadline) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return true;
}

SimRun ToolProcess::Wait(int timeoutSeconds)
{
    SimRun run;
    auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(timeoutSeconds);
    int status = 0;
    while (pid_ > 0) {
        if (waitpid(pid_, &status, WNOHANG) == pid_) {
            run.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
            pid_ = -1;
        } else if (std::chrono::steady_clock::now() >= deadline) {
            kill(pid_, SIGKILL);
            waitpid(pid_, &status, 0);
            pid_ = -1;
        } else {
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        }
    }
    run.err = ReadFile(errPath_);
    return run;
}

std::vector<std::string> PluginArgs(const std::string &config, const std::vector<std::string> &extra)
{
    std::vector<std::string> args = {"--plugin", std::string(MDTLM_BUILD_DIR) + "/libmdtlm_vraldcn.so", "--config",
                                     config, "--port", "0", "--quiet", "--out", "samples.ndjson", "--proto-dir",
                                     MDTLM_PROTO_DIR};
    args.insert(args.end(), extra.begin(), extra.end());
    return args;
}

std::vector<nlohmann::json> ReadSamples(const std::string &path)
{
    std::vector<nlohmann::json> lines;
    std::istringstream in(ReadFile(path));
    for (std::string line; std::getline(in, line);) {
        lines.push_back(nlohmann::json::parse(line));
    }
    return lines;
}

std::map<uint32_t, std::vector<nlohmann::json>> RecordsByTask(const std::vector<nlohmann::json> &lines)
{
    std::map<uint32_t, std::vector<nlohmann::json>> records;
    for (const nlohmann::json &line : lines) {
        for (const nlohmann::json &record : line.at("records")) {
            nlohmann::json normalised = nlohmann::json::object();
            for (const auto &[key, value] : record.items()) {
                std::string name = key;
                std::replace(name.begin(), name.end(), '_', '-');
                normalised[name] = value;
            }
            records[line.at("task").get<uint32_t>()].push_back(normalised);
        }
    }
    return records;
}
