/*
 * The framework's slots as the simulator provides them.
 */
#include "framework.h"

#include <cstdlib>
#include <cstring>

namespace mdtlm::sim {
namespace {

const char *const kLevelNames[] = {"notice", "success", "failure"};
/* Fresh buffers are filled with this byte: the framework's allocator does not promise zeroed memory. */
constexpr int kFreshFill = 0xA5;
/* Text of the plug-in's log line for a record that could not be encoded. */
constexpr const char *kEncodeFailureText = "encode failed";

} // namespace

Framework *Framework::instance_ = nullptr;

Framework::Framework(uint32_t moduleId) : moduleId_(moduleId)
{
    instance_ = this;
    table_.RegXpath = RegXpath;
    table_.SampleDataUpload = SampleDataUpload;
    table_.WriteLog = WriteLog;
    table_.BufAlloc = BufAlloc;
    table_.BufFree = BufFree;
}

Framework::~Framework()
{
    instance_ = nullptr;
    /* Whatever the plug-in still holds is reported by the caller, not freed here:
     * the memory may still be referenced by a plug-in that was not unloaded. */
}

void Framework::SetLogFile(FILE *file)
{
    std::lock_guard lock(logMutex_);
    logFile_ = file;
}

void Framework::SetLogShown(LogLevel shown)
{
    std::lock_guard lock(logMutex_);
    shown_[0] = shown == LogLevel::Notices || shown == LogLevel::All;
    shown_[1] = shown == LogLevel::All;
    shown_[2] = shown != LogLevel::None;
}

void Framework::SetSampleSink(SampleSink sink)
{
    std::lock_guard lock(sinkMutex_);
    sink_ = std::move(sink);
}

std::optional<MDTLM_XPATH_REG_INFO> Framework::Registration(const std::string &xpath) const
{
    std::lock_guard lock(registryMutex_);
    auto found = registry_.find(xpath);
    if (found == registry_.end()) {
        return std::nullopt;
    }
    return found->second;
}

size_t Framework::RegistrationCount() const
{
    std::lock_guard lock(registryMutex_);
    return registry_.size();
}

BufferCounts Framework::Buffers() const
{
    std::lock_guard lock(bufferMutex_);
    return buffers_;
}

std::map<uint32_t, uint64_t> Framework::OutstandingBySize() const
{
    std::lock_guard lock(bufferMutex_);
    std::map<uint32_t, uint64_t> bySize;
    for (const auto &[buffer, size] : live_) {
        ++bySize[size];
    }
    return bySize;
}

LogCounts Framework::Logs() const
{
    std::lock_guard lock(logMutex_);
    return logs_;
}

uint64_t Framework::ForeignModuleCalls() const
{
    std::lock_guard lock(logMutex_);
    return foreignModuleCalls_;
}

void Framework::CheckModule(uint32_t moduleId)
{
    if (moduleId != moduleId_) {
        std::lock_guard lock(logMutex_);
        ++foreignModuleCalls_;
    }
}

uint32_t Framework::RegXpath(uint32_t moduleId, const char *xpath, const MDTLM_XPATH_REG_INFO *info)
{
    Framework &self = *instance_;
    self.CheckModule(moduleId);
    if (xpath == nullptr || info == nullptr) {
        return 1;
    }
    /* The record is the caller's and may be reused as soon as this returns: keep a copy. */
    std::lock_guard lock(self.registryMutex_);
    self.registry_[xpath] = *info;
    return 0;
}

uint32_t Framework::SampleDataUpload(uint32_t moduleId, MDTLM_SAMPLE_BUFFER *sample)
{
    Framework &self = *instance_;
    self.CheckModule(moduleId);
    if (sample == nullptr) {
        return 1;
    }
    std::lock_guard lock(self.sinkMutex_);
    return self.sink_ ? self.sink_(*sample) : 0;
}

uint32_t Framework::WriteLog(uint32_t moduleId, uint32_t level, const char *line)
{
    Framework &self = *instance_;
    self.CheckModule(moduleId);
    const char *text = line != nullptr ? line : "(null)";
    const char *levelName = level < 3 ? kLevelNames[level] : "level?";
    std::lock_guard lock(self.logMutex_);
    if (level < 3) {
        ++self.logs_.lines[level];
    }
    if (std::strstr(text, kEncodeFailureText) != nullptr) {
        ++self.logs_.encodeFailures;
    }
    if (level >= 3 || self.shown_[level]) {
        std::fprintf(stderr, "plug-in %s: %s\n", levelName, text);
    }
    if (self.logFile_ != nullptr) {
        std::fprintf(self.logFile_, "%u %s %s\n", level, levelName, text);
        std::fflush(self.logFile_);
    }
    return 0;
}

void *Framework::BufAlloc(uint32_t moduleId, uint32_t size)
{
    Framework &self = *instance_;
    self.CheckModule(moduleId);
    void *buffer = size > 0 ? std::malloc(size) : nullptr;
    std::lock_guard lock(self.bufferMutex_);
    if (buffer == nullptr) {
        ++self.buffers_.failedAllocations;
        return nullptr;
    }
    std::memset(buffer, kFreshFill, size);
    self.live_.emplace(buffer, size);
    ++self.buffers_.allocations;
    ++self.buffers_.liveBuffers;
    self.buffers_.liveBytes += size;
    return buffer;
}

void Framework::BufFree(uint32_t moduleId, void *buf)
{
    Framework &self = *instance_;
    self.CheckModule(moduleId);
    if (buf == nullptr) {
        return;
    }
    std::lock_guard lock(self.bufferMutex_);
    auto found = self.live_.find(buf);
    if (found == self.live_.end()) {
        /* Not ours, or already freed: count it and leave the memory alone. */
        ++self.buffers_.badFrees;
        return;
    }
    self.buffers_.liveBytes -= found->second;
    --self.buffers_.liveBuffers;
    ++self.buffers_.frees;
    self.live_.erase(found);
    std::free(buf);
}

} // namespace mdtlm::sim
