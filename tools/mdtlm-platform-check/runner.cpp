/*
 * Every rule runs in a forked child: the platform's state starts fresh for
 * each, and a rule that crashes or hangs the platform is reported by name
 * while the others still run. The child sends its findings through a pipe
 * and exits 0 when the rule holds, 1 when it does not.
 */
#include "runner.h"

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstring>
#include <thread>

namespace mdtlm::check {
namespace {

constexpr size_t kMaxReport = 4096; /* fits a pipe's buffer: the child never blocks on it */

[[noreturn]] void RunChild(const Rule &rule, const PlatformApi &api, const CheckSettings &settings, int reportFd)
{
    Findings findings;
    rule.check(api, settings, findings);
    std::string report;
    for (const std::string &detail : findings.Details()) {
        report += detail + "\n";
    }
    report.resize(std::min(report.size(), kMaxReport));
    ssize_t written = write(reportFd, report.data(), report.size());
    (void)written; /* a short report is still a report; the exit status carries the verdict */
    /* Leave at once: platform threads may still run, and destructors of the
     * platform's state must not wait for them. */
    _exit(findings.Holds() ? 0 : 1);
}

std::string ReadAll(int fd)
{
    std::string text;
    char buffer[512];
    ssize_t n;
    while ((n = read(fd, buffer, sizeof(buffer))) > 0) {
        text.append(buffer, static_cast<size_t>(n));
    }
    return text;
}

/* Waits for the child until `limit`, then kills it. The wait status, or -1 on timeout. */
int WaitChild(pid_t child, std::chrono::seconds limit)
{
    auto deadline = std::chrono::steady_clock::now() + limit;
    int status = 0;
    while (waitpid(child, &status, WNOHANG) == 0) {
        if (std::chrono::steady_clock::now() >= deadline) {
            kill(child, SIGKILL);
            waitpid(child, &status, 0);
            return -1;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return status;
}

/* The findings of one rule: empty when it holds. */
std::string RunOne(const Rule &rule, const PlatformApi &api, const CheckSettings &settings, std::chrono::seconds limit)
{
    int fds[2];
    if (pipe(fds) != 0) {
        return std::string("cannot create a pipe: ") + std::strerror(errno) + "\n";
    }
    std::fflush(nullptr);
    pid_t child = fork();
    if (child < 0) {
        close(fds[0]);
        close(fds[1]);
        return std::string("cannot fork: ") + std::strerror(errno) + "\n";
    }
    if (child == 0) {
        close(fds[0]);
        RunChild(rule, api, settings, fds[1]);
    }
    close(fds[1]);
    int status = WaitChild(child, limit);
    std::string report = ReadAll(fds[0]);
    close(fds[0]);
    if (status == -1) {
        return report + "did not finish within " + std::to_string(limit.count()) + " s (a call blocked or hung)\n";
    }
    if (WIFSIGNALED(status)) {
        return report + "the check crashed with signal " + std::to_string(WTERMSIG(status)) + " (" +
               strsignal(WTERMSIG(status)) + ")\n";
    }
    int code = WEXITSTATUS(status);
    if (code != 0 && code != 1) {
        /* Neither verdict: something in the process ended it (an exit inside
         * the platform, or a sanitizer's report). */
        return report + "the check process exited with status " + std::to_string(code) + "\n";
    }
    return code == 0 ? std::string() : report;
}

} // namespace

RunSummary RunRules(const std::vector<Rule> &rules, const PlatformApi &api, const CheckSettings &settings,
                    std::chrono::seconds limit, FILE *out)
{
    RunSummary summary;
    for (const Rule &rule : rules) {
        std::string findings = RunOne(rule, api, settings, limit);
        summary.checked++;
        std::fprintf(out, "%-5s %-22s %s\n", findings.empty() ? "ok" : "FAIL", rule.name, rule.text);
        if (findings.empty()) {
            continue;
        }
        summary.broken.push_back(rule.name);
        size_t start = 0;
        for (size_t end; (end = findings.find('\n', start)) != std::string::npos; start = end + 1) {
            std::fprintf(out, "      %s: %s\n", rule.name, findings.substr(start, end - start).c_str());
        }
        std::fflush(out);
    }
    return summary;
}

} // namespace mdtlm::check
