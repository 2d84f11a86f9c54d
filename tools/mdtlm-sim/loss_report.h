/*
 * The plug-in's loss counters as the simulator reports them at the end of a
 * run, and the reconciliation of every message the channel handed the plug-in.
 */
#ifndef MDTLM_SIM_LOSS_REPORT_H
#define MDTLM_SIM_LOSS_REPORT_H

#include <cstdint>
#include <string>

#include "mdtlm_types.h"

namespace mdtlm::sim {

struct LossReport {
    std::string text;     /* several lines, the last one ends in "unaccounted N" */
    int64_t unaccounted;  /* 0 when every message is accounted for */
};

/* `channelMessages`: messages the channel handed the receive callback (the
 * host's own count); `stillQueued`: messages on the statistics queue now
 * (0 once the plug-in is unloaded). */
LossReport ReconcileLosses(const MDTLM_LOSS_COUNTERS &losses, uint64_t channelMessages, uint64_t stillQueued);

} // namespace mdtlm::sim

#endif /* MDTLM_SIM_LOSS_REPORT_H */
