/*
 * Command-line reading shared by the host tools.
 */
#include "cli_args.h"

#include <cerrno>
#include <cmath>
#include <cstdlib>

#include "mdtlm_version.h"

namespace mdtlm::tools {

bool ArgReader::Flag(std::string_view name)
{
    if (Done() || Current() != name) {
        return false;
    }
    ++next_;
    return true;
}

bool ArgReader::Option(std::string_view name, std::string &value)
{
    if (Done()) {
        return false;
    }
    std::string_view arg = Current();
    if (arg == name) {
        if (next_ + 1 >= argc_) {
            throw UsageError(std::string(name) + " needs a value");
        }
        value = argv_[next_ + 1];
        next_ += 2;
        return true;
    }
    if (arg.size() > name.size() && arg.substr(0, name.size()) == name && arg[name.size()] == '=') {
        value = std::string(arg.substr(name.size() + 1));
        ++next_;
        return true;
    }
    return false;
}

void ExitOnInfoFlag(ArgReader &args, const char *tool, void (*usage)(FILE *out))
{
    if (args.Flag("--help") || args.Flag("-h")) {
        usage(stdout);
        std::exit(0);
    }
    if (args.Flag("--version")) {
        std::printf("%s %s\n", tool, MDTLM_VERSION_STRING);
        std::exit(0);
    }
}

std::string ArgReader::Positional()
{
    std::string arg(Current());
    if (arg.size() > 1 && arg[0] == '-') {
        throw UsageError("unknown option " + arg);
    }
    ++next_;
    return arg;
}

uint64_t ParseUnsigned(std::string_view option, const std::string &text, uint64_t min, uint64_t max)
{
    char *end = nullptr;
    errno = 0;
    unsigned long long value = std::strtoull(text.c_str(), &end, 10);
    bool digits = !text.empty() && text[0] >= '0' && text[0] <= '9';
    if (!digits || *end != '\0' || errno == ERANGE || value < min || value > max) {
        throw UsageError(std::string(option) + ": expected a whole number from " + std::to_string(min) + " to " +
                         std::to_string(max) + ", got \"" + text + "\"");
    }
    return value;
}

double ParseNumber(std::string_view option, const std::string &text)
{
    char *end = nullptr;
    double value = std::strtod(text.c_str(), &end);
    if (text.empty() || *end != '\0' || !std::isfinite(value) || value < 0) {
        throw UsageError(std::string(option) + ": expected a non-negative number, got \"" + text + "\"");
    }
    return value;
}

} // namespace mdtlm::tools
