/*
 * Minimal command-line reading for the host tools: "--name value",
 * "--name=value", flags and positional arguments.
 */
#ifndef MDTLM_TOOLS_CLI_ARGS_H
#define MDTLM_TOOLS_CLI_ARGS_H

#include <cstdint>
#include <cstdio>
#include <stdexcept>
#include <string>
#include <string_view>

namespace mdtlm::tools {

class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

class ArgReader {
public:
    ArgReader(int argc, char **argv) : argc_(argc), argv_(argv) {}

    bool Done() const { return next_ >= argc_; }
    std::string_view Current() const { return argv_[next_]; }
    /* Consumes the current argument when it is the flag `name`. */
    bool Flag(std::string_view name);
    /* Consumes "--name value" or "--name=value"; throws UsageError when the value is missing. */
    bool Option(std::string_view name, std::string &value);
    /* Consumes the current argument as a positional one; throws on an unknown option. */
    std::string Positional();

private:
    int argc_;
    char **argv_;
    int next_ = 1;
};

/* When the current argument is --help or -h (prints `usage` to stdout) or
 * --version (prints "TOOL VERSION"), exits 0; otherwise consumes nothing. */
void ExitOnInfoFlag(ArgReader &args, const char *tool, void (*usage)(FILE *out));

/* Unsigned decimal in [min, max]; throws UsageError naming the option. */
uint64_t ParseUnsigned(std::string_view option, const std::string &text, uint64_t min, uint64_t max);
/* Non-negative decimal number (fractions allowed); throws UsageError. */
double ParseNumber(std::string_view option, const std::string &text);

} // namespace mdtlm::tools

#endif /* MDTLM_TOOLS_CLI_ARGS_H */
