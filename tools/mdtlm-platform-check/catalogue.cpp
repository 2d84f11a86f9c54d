/*
 * The whole contract, area after area, and the polling helper the checks share.
 */
#include <thread>

#include "rule.h"

namespace mdtlm::check {

std::vector<Rule> AllRules()
{
    std::vector<Rule> rules;
    for (std::span<const Rule> area :
         {QueueRules(), LoopRules(), ChannelRules(), DatabaseRules(), ServiceRules(), BoundsRules()}) {
        rules.insert(rules.end(), area.begin(), area.end());
    }
    return rules;
}

bool WaitFor(const std::function<bool()> &done, std::chrono::milliseconds timeout)
{
    auto deadline = std::chrono::steady_clock::now() + timeout;
    while (!done()) {
        if (std::chrono::steady_clock::now() >= deadline) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

} // namespace mdtlm::check
