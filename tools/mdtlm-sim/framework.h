/*
 * The simulator's stand-in for the telemetry framework: the function table the
 * plug-in binds, with a path registry, a counting allocator, a log sink and a
 * sample sink. The plug-in calls these slots from its worker thread and from
 * the threads that add and delete tasks, so every slot is thread-safe.
 */
#ifndef MDTLM_SIM_FRAMEWORK_H
#define MDTLM_SIM_FRAMEWORK_H

#include <cstdint>
#include <cstdio>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <unordered_map>

#include "mdtlm_types.h"
#include "options.h"

namespace mdtlm::sim {

struct BufferCounts {
    uint64_t allocations = 0;
    uint64_t frees = 0;
    uint64_t failedAllocations = 0; /* size 0 or out of memory */
    uint64_t badFrees = 0;          /* pointers the allocator never handed out, or freed twice */
    uint64_t liveBuffers = 0;
    uint64_t liveBytes = 0;
};

struct LogCounts {
    uint64_t lines[3] = {0, 0, 0}; /* by level: notice, success, failure */
    uint64_t encodeFailures = 0;   /* lines reporting a record that could not be encoded */
};

class Framework {
public:
    using SampleSink = std::function<uint32_t(const MDTLM_SAMPLE_BUFFER &sample)>;

    explicit Framework(uint32_t moduleId);
    ~Framework();
    Framework(const Framework &) = delete;
    Framework &operator=(const Framework &) = delete;

    /* The table handed to the host registry. */
    MDTLM_FRM_VTBL *Table() { return &table_; }

    /* Log lines of the levels `shown` selects go to stderr; every line goes to `file` when given. */
    void SetLogFile(FILE *file);
    void SetLogShown(LogLevel shown);
    void SetSampleSink(SampleSink sink);

    /* The registration the plug-in made for a path, if any. */
    std::optional<MDTLM_XPATH_REG_INFO> Registration(const std::string &xpath) const;
    size_t RegistrationCount() const;

    BufferCounts Buffers() const;
    /* Sizes of the buffers still outstanding, by size, for the exit report. */
    std::map<uint32_t, uint64_t> OutstandingBySize() const;
    LogCounts Logs() const;
    /* Calls whose module id was not the one handed to the plug-in. */
    uint64_t ForeignModuleCalls() const;

private:
    static uint32_t RegXpath(uint32_t moduleId, const char *xpath, const MDTLM_XPATH_REG_INFO *info);
    static uint32_t SampleDataUpload(uint32_t moduleId, MDTLM_SAMPLE_BUFFER *sample);
    static uint32_t WriteLog(uint32_t moduleId, uint32_t level, const char *line);
    static void *BufAlloc(uint32_t moduleId, uint32_t size);
    static void BufFree(uint32_t moduleId, void *buf);
    void CheckModule(uint32_t moduleId);

    static Framework *instance_; /* the slots are plain C functions */

    const uint32_t moduleId_;
    MDTLM_FRM_VTBL table_{};

    mutable std::mutex registryMutex_;
    std::map<std::string, MDTLM_XPATH_REG_INFO> registry_;

    mutable std::mutex bufferMutex_;
    std::unordered_map<void *, uint32_t> live_;
    BufferCounts buffers_;

    mutable std::mutex logMutex_;
    FILE *logFile_ = nullptr;
    bool shown_[3] = {true, false, true}; /* by level: notice, success, failure */
    LogCounts logs_;
    uint64_t foreignModuleCalls_ = 0;

    std::mutex sinkMutex_;
    SampleSink sink_;
};

} // namespace mdtlm::sim

#endif /* MDTLM_SIM_FRAMEWORK_H */
