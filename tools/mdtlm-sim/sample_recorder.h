/*
 * What happens to each uploaded sample: it is matched to its task, decoded,
 * printed for a person, written as one JSON line (its data in base64) and,
 * with a raw directory, as one file of its data bytes, and counted.
 */
#ifndef MDTLM_SIM_SAMPLE_RECORDER_H
#define MDTLM_SIM_SAMPLE_RECORDER_H

#include <cstdint>
#include <cstdio>
#include <mutex>
#include <string>
#include <vector>

#include "config.h"
#include "mdtlm_types.h"
#include "sample_decoder.h"

namespace mdtlm::sim {

struct TaskTally {
    uint64_t samples = 0;
    uint64_t items = 0;       /* sum of the samples' record counts */
    uint64_t reportEnds = 0;  /* samples that closed a sample interval */
    uint64_t undecodable = 0; /* samples whose data could not be read in full */
};

struct SampleTotals {
    uint64_t samples = 0;
    uint64_t items = 0;
    uint64_t undecodable = 0;
    uint64_t unknownTask = 0; /* samples naming no configured task */
    uint64_t rawWriteErrors = 0;
};

class SampleRecorder {
public:
    /* `ndjson` may be null; `print` false keeps samples off stdout; an empty
     * `rawDir` writes no data files (the directory must exist). */
    SampleRecorder(const SimConfig &config, const SampleDecoder &decoder, bool print, bool compact, FILE *ndjson,
                   std::string rawDir);

    /* "000017-flow-1-101.gpb": upload order (from 1), sensor, instance, task, encoding. */
    static std::string RawFileName(uint64_t order, const char *sensor, uint32_t instance, uint32_t task,
                                   const char *encoding);

    /* The framework's upload slot: runs on the plug-in's worker thread. Returns 0 (accepted). */
    uint32_t OnSample(const MDTLM_SAMPLE_BUFFER &sample);

    /* Per configured task, in configuration order. */
    std::vector<TaskTally> Tallies() const;
    SampleTotals Totals() const;

private:
    const SimConfig &config_;
    const SampleDecoder &decoder_;
    bool print_;
    bool compact_;
    FILE *ndjson_;
    std::string rawDir_;
    std::string lastRawProblem_; /* reported once */

    mutable std::mutex mutex_;
    std::vector<TaskTally> tallies_;
    SampleTotals totals_;
};

} // namespace mdtlm::sim

#endif /* MDTLM_SIM_SAMPLE_RECORDER_H */
