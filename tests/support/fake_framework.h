/*
 * A framework double for plug-in tests: the function table the plug-in binds,
 * with a counting allocator (every buffer must come back), captured log lines,
 * captured path registrations and captured samples.
 */
#ifndef MDTLM_TEST_FAKE_FRAMEWORK_H
#define MDTLM_TEST_FAKE_FRAMEWORK_H

#include <cstdint>
#include <functional>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "mdtlm_types.h"

struct CapturedLog {
    uint32_t level;
    std::string text; /* as delivered */
    std::string shape; /* with the line number replaced by '#' */
};

struct CapturedRegistration {
    std::string xpath;
    MDTLM_XPATH_REG_INFO info;
};

struct CapturedSample {
    MDTLM_SAMPLE_BUFFER header; /* header fields only; data is below */
    std::string data;           /* dataLen bytes */
};

class FakeFramework {
public:
    /* The one table of the process; Install() hands it to the host registry. */
    static FakeFramework &Get();

    void Install();   /* MDTLM_HOST_SetFrameworkTable(&table) */
    void Uninstall(); /* registry answers "not found" */
    void Reset();     /* forget captures and failure settings (not live buffers) */

    MDTLM_FRM_VTBL table{};

    /* Allocator accounting. */
    int64_t Outstanding() const;
    uint64_t Allocations() const;
    /* The k-th allocation from now (1 = next) and the `count - 1` after it return null. */
    void FailAlloc(uint32_t k, uint32_t count = 1);
    /* Allocations of exactly `size` bytes fail from the k-th such allocation on, `count` times. */
    void FailAllocOfSize(uint32_t size, uint32_t k, uint32_t count = 1);

    /* Captured log lines. */
    std::vector<CapturedLog> Logs() const;
    std::vector<std::string> Shapes() const; /* shapes in order */
    /* Number of captured lines whose shape equals `shape` (and level, when given). */
    size_t CountShape(const std::string &shape, int level = -1) const;
    bool HasShape(const std::string &shape, int level = -1) const { return CountShape(shape, level) > 0; }
    void ClearLogs();

    /* Path registrations; result per xpath (default 0). */
    std::vector<CapturedRegistration> Registrations() const;
    void SetRegResult(const std::string &xpath, uint32_t result);

    /* Uploaded samples; result of SampleDataUpload (default 0). */
    std::vector<CapturedSample> Samples() const;
    void ClearSamples();
    void SetUploadResult(uint32_t result);
    /* Called with every uploaded sample (on the uploading thread). */
    void OnUpload(std::function<void(const MDTLM_SAMPLE_BUFFER *)> hook);

    /* Called with every log line, on the logging thread. */
    void OnLog(std::function<void(uint32_t level, const std::string &text)> hook);

    static std::string ShapeOf(const std::string &text);

private:
    FakeFramework();
    static uint32_t RegXpath(uint32_t moduleId, const char *xpath, const MDTLM_XPATH_REG_INFO *info);
    static uint32_t Upload(uint32_t moduleId, MDTLM_SAMPLE_BUFFER *sample);
    static uint32_t WriteLog(uint32_t moduleId, uint32_t level, const char *line);
    static void *Alloc(uint32_t moduleId, uint32_t size);
    static void Free(uint32_t moduleId, void *buf);

    mutable std::mutex mu_;
    std::set<void *> live_;
    uint64_t allocations_ = 0;
    uint32_t failAllocAt_ = 0, failAllocCount_ = 0;
    uint32_t failSize_ = 0, failSizeAt_ = 0, failSizeCount_ = 0;
    std::vector<CapturedLog> logs_;
    std::vector<CapturedRegistration> regs_;
    std::vector<std::pair<std::string, uint32_t>> regResults_;
    std::vector<CapturedSample> samples_;
    uint32_t uploadResult_ = 0;
    std::function<void(const MDTLM_SAMPLE_BUFFER *)> uploadHook_;
    std::function<void(uint32_t, const std::string &)> logHook_;
};

#endif /* MDTLM_TEST_FAKE_FRAMEWORK_H */
