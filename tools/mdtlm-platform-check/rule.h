/*
 * A rule of the platform contract: a name, the sentence a porter reads, and
 * the check that exercises it through the platform ABI. Every check runs in
 * a process of its own, so a broken rule cannot disturb the next one.
 */
#ifndef MDTLM_CHECK_RULE_H
#define MDTLM_CHECK_RULE_H

#include <chrono>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <vector>

#include "platform_api.h"

namespace mdtlm::check {

struct CheckSettings {
    uint16_t port = 0; /* statistics channel port; 0: a free one per check */
};

/* What a check found wrong, in the order it found it. */
class Findings {
public:
    /* Records `detail` when `holds` is false; returns `holds`. */
    bool Expect(bool holds, const std::string &detail)
    {
        if (!holds) {
            details_.push_back(detail);
        }
        return holds;
    }
    bool Holds() const { return details_.empty(); }
    const std::vector<std::string> &Details() const { return details_; }

private:
    std::vector<std::string> details_;
};

using CheckFn = void (*)(const PlatformApi &api, const CheckSettings &settings, Findings &findings);

struct Rule {
    const char *name;  /* group.what, as reported */
    const char *text;  /* what the plug-in relies on */
    CheckFn check;
};

/* The rules of each area, in the order they run. */
std::span<const Rule> QueueRules();
std::span<const Rule> LoopRules();
std::span<const Rule> ChannelRules();
std::span<const Rule> DatabaseRules();
std::span<const Rule> ServiceRules();
std::span<const Rule> BoundsRules();

/* Every rule, area after area. */
std::vector<Rule> AllRules();

/* A number as findings print it. */
inline std::string Str(int64_t value)
{
    return std::to_string(value);
}

/* Polls `done` every millisecond until it holds or `timeout` passes. */
bool WaitFor(const std::function<bool()> &done, std::chrono::milliseconds timeout);

} // namespace mdtlm::check

#endif /* MDTLM_CHECK_RULE_H */
