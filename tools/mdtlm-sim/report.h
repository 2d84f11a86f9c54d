/*
 * What the simulator tells a person while it runs (one status line a second)
 * and when it stops (a summary reconciling what was sent with what the tasks
 * were offered, accepted and uploaded).
 */
#ifndef MDTLM_SIM_REPORT_H
#define MDTLM_SIM_REPORT_H

#include <cstdint>
#include <string>
#include <vector>

#include "config.h"
#include "forwarder.h"
#include "framework.h"
#include "mdtlm_host.h"
#include "sample_recorder.h"
#include "sim_database.h"

namespace mdtlm::sim {

struct RunState {
    double seconds = 0;
    SentCounts sent;
    bool channelKnown = false;
    MDTLM_HOST_CHAN_COUNTERS channel{};
    int32_t queued = -1;          /* statistics queue fill; -1 unknown */
    int64_t shortRefused = -1;    /* short messages refused at intake; -1 unknown */
    SampleTotals samples;
    LogCounts logs;
    BufferCounts buffers;
};

std::string StatusLine(const RunState &state);

/* The end-of-run report, several lines. `stats` are the database rows at stop. */
std::string Summary(const SimConfig &config, const RunState &state, const std::vector<TaskTally> &tallies,
                    const std::vector<TaskStatRow> &stats, bool statsKnown);

} // namespace mdtlm::sim

#endif /* MDTLM_SIM_REPORT_H */
