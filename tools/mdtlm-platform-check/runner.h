/*
 * Runs rules, each in a child process of its own with a time limit, and
 * reports one line per rule.
 */
#ifndef MDTLM_CHECK_RUNNER_H
#define MDTLM_CHECK_RUNNER_H

#include <cstdio>

#include "rule.h"

namespace mdtlm::check {

struct RunSummary {
    size_t checked = 0;
    std::vector<std::string> broken; /* names of the rules that do not hold */
};

/* Runs `rules` against `api` and prints "ok" or "FAIL" lines to `out`. */
RunSummary RunRules(const std::vector<Rule> &rules, const PlatformApi &api, const CheckSettings &settings,
                    std::chrono::seconds limit, FILE *out);

} // namespace mdtlm::check

#endif /* MDTLM_CHECK_RUNNER_H */
