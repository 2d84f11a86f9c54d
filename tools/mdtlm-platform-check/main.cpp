/*
 * mdtlm-platform-check: loads a shared library that implements the platform
 * ABI and checks, through that ABI only, the behaviour the plug-in relies on.
 * Exit status: 0 every rule holds, 1 a rule is broken, 2 bad usage or a
 * library that cannot be loaded or lacks services.
 */
#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "cli_args.h"
#include "mdtlm_version.h"
#include "platform_api.h"
#include "runner.h"

namespace {

using namespace mdtlm;

struct Options {
    std::string library;
    std::vector<std::string> only; /* rule name prefixes to run; empty: all */
    std::vector<std::string> skip; /* rule name prefixes to leave out */
    check::CheckSettings settings;
    std::chrono::seconds limit{20};
    bool list = false;
};

void Usage(FILE *out)
{
    std::fprintf(out,
                 "usage: mdtlm-platform-check [options] LIBRARY.so\n"
                 "Checks that LIBRARY.so provides the platform services the telemetry plug-in relies on.\n"
                 "  --only PREFIX     run only the rules whose names start with PREFIX (repeatable)\n"
                 "  --skip PREFIX     leave out the rules whose names start with PREFIX (repeatable)\n"
                 "  --port N          UDP port for the channel rules (default: a free one per rule)\n"
                 "  --timeout SECONDS time limit of one rule (default 20)\n"
                 "  --list            list the rules and exit\n"
                 "  --version         print the version and exit\n"
                 "Exit status: 0 every rule holds, 1 a rule is broken, 2 usage or loading error.\n");
}

Options ParseOptions(int argc, char **argv)
{
    Options options;
    tools::ArgReader args(argc, argv);
    std::string value;
    while (!args.Done()) {
        tools::ExitOnInfoFlag(args, "mdtlm-platform-check", Usage);
        if (args.Flag("--list")) {
            options.list = true;
        } else if (args.Option("--only", value)) {
            options.only.push_back(value);
        } else if (args.Option("--skip", value)) {
            options.skip.push_back(value);
        } else if (args.Option("--port", value)) {
            options.settings.port = static_cast<uint16_t>(tools::ParseUnsigned("--port", value, 1, 65535));
        } else if (args.Option("--timeout", value)) {
            options.limit = std::chrono::seconds(tools::ParseUnsigned("--timeout", value, 1, 3600));
        } else if (options.library.empty()) {
            options.library = args.Positional();
        } else {
            throw tools::UsageError("unexpected argument " + args.Positional());
        }
    }
    if (options.library.empty() && !options.list) {
        throw tools::UsageError("LIBRARY.so is required");
    }
    return options;
}

bool StartsWithAny(const std::string &name, const std::vector<std::string> &prefixes)
{
    return std::any_of(prefixes.begin(), prefixes.end(),
                       [&](const std::string &prefix) { return name.rfind(prefix, 0) == 0; });
}

std::vector<check::Rule> SelectRules(const Options &options)
{
    std::vector<check::Rule> selected;
    for (const check::Rule &rule : check::AllRules()) {
        if ((options.only.empty() || StartsWithAny(rule.name, options.only)) && !StartsWithAny(rule.name, options.skip)) {
            selected.push_back(rule);
        }
    }
    return selected;
}

} // namespace

/* Under ThreadSanitizer: the platform ABI has no call that joins a task's
 * thread, so every check that starts one leaves it to the process's exit. */
extern "C" const char *__tsan_default_options()
{
    return "report_thread_leaks=0";
}

int main(int argc, char **argv)
{
    Options options;
    try {
        options = ParseOptions(argc, argv);
    } catch (const tools::UsageError &error) {
        std::fprintf(stderr, "mdtlm-platform-check: %s\n", error.what());
        Usage(stderr);
        return 2;
    }
    std::vector<check::Rule> rules = SelectRules(options);
    if (options.list) {
        for (const check::Rule &rule : rules) {
            std::printf("%-22s %s\n", rule.name, rule.text);
        }
        return 0;
    }
    if (rules.empty()) {
        std::fprintf(stderr, "mdtlm-platform-check: --only/--skip leave no rule to check\n");
        return 2;
    }
    check::PlatformApi api;
    std::string error;
    if (!check::LoadPlatform(options.library, api, error)) {
        std::fprintf(stderr, "mdtlm-platform-check: %s\n", error.c_str());
        return 2;
    }
    std::printf("mdtlm-platform-check %s: %s\n", MDTLM_VERSION_STRING, options.library.c_str());
    check::RunSummary summary = check::RunRules(rules, api, options.settings, options.limit, stdout);
    if (summary.broken.empty()) {
        std::printf("%zu rules checked, all hold\n", summary.checked);
        return 0;
    }
    std::string names;
    for (const std::string &name : summary.broken) {
        names += (names.empty() ? "" : ", ") + name;
    }
    std::printf("%zu rules checked, %zu broken: %s\n", summary.checked, summary.broken.size(), names.c_str());
    return 1;
}
