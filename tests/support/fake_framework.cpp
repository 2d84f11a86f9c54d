#include "fake_framework.h"

#include <cstdlib>
#include <cstring>

#include "mdtlm_host.h"

FakeFramework &FakeFramework::Get()
{
    static FakeFramework *instance = new FakeFramework(); /* lives as long as the process */
    return *instance;
}

FakeFramework::FakeFramework()
{
    table.RegXpath = &FakeFramework::RegXpath;
    table.SampleDataUpload = &FakeFramework::Upload;
    table.WriteLog = &FakeFramework::WriteLog;
    table.BufAlloc = &FakeFramework::Alloc;
    table.BufFree = &FakeFramework::Free;
}

void FakeFramework::Install() { MDTLM_HOST_SetFrameworkTable(&table); }
void FakeFramework::Uninstall() { MDTLM_HOST_SetFrameworkTable(nullptr); }

void FakeFramework::Reset()
{
    std::lock_guard<std::mutex> lock(mu_);
    failAllocAt_ = failAllocCount_ = 0;
    failSize_ = failSizeAt_ = failSizeCount_ = 0;
    logs_.clear();
    regs_.clear();
    regResults_.clear();
    samples_.clear();
    uploadResult_ = 0;
    uploadHook_ = nullptr;
    logHook_ = nullptr;
}

int64_t FakeFramework::Outstanding() const
{
    std::lock_guard<std::mutex> lock(mu_);
    return static_cast<int64_t>(live_.size());
}

uint64_t FakeFramework::Allocations() const
{
    std::lock_guard<std::mutex> lock(mu_);
    return allocations_;
}

void FakeFramework::FailAlloc(uint32_t k, uint32_t count)
{
    std::lock_guard<std::mutex> lock(mu_);
    failAllocAt_ = k;
    failAllocCount_ = count;
}

void FakeFramework::FailAllocOfSize(uint32_t size, uint32_t k, uint32_t count)
{
    std::lock_guard<std::mutex> lock(mu_);
    failSize_ = size;
    failSizeAt_ = k;
    failSizeCount_ = count;
}

std::string FakeFramework::ShapeOf(const std::string &text)
{
    /* "[label:123]rest" becomes "[label:#]rest"; anything else stays as it is. */
    if (text.empty() || text[0] != '[') {
        return text;
    }
    size_t colon = text.find(':');
    size_t close = text.find(']');
    if (colon == std::string::npos || close == std::string::npos || colon > close || close == colon + 1) {
        return text;
    }
    for (size_t i = colon + 1; i < close; ++i) {
        if (text[i] < '0' || text[i] > '9') {
            return text;
        }
    }
    return text.substr(0, colon + 1) + "#" + text.substr(close);
}

std::vector<CapturedLog> FakeFramework::Logs() const
{
    std::lock_guard<std::mutex> lock(mu_);
    return logs_;
}

std::vector<std::string> FakeFramework::Shapes() const
{
    std::lock_guard<std::mutex> lock(mu_);
    std::vector<std::string> out;
    for (const auto &l : logs_) {
        out.push_back(l.shape);
    }
    return out;
}

size_t FakeFramework::CountShape(const std::string &shape, int level) const
{
    std::lock_guard<std::mutex> lock(mu_);
    size_t n = 0;
    for (const auto &l : logs_) {
        if (l.shape == shape && (level < 0 || static_cast<int>(l.level) == level)) {
            ++n;
        }
    }
    return n;
}

void FakeFramework::ClearLogs()
{
    std::lock_guard<std::mutex> lock(mu_);
    logs_.clear();
}

std::vector<CapturedRegistration> FakeFramework::Registrations() const
{
    std::lock_guard<std::mutex> lock(mu_);
    return regs_;
}

void FakeFramework::SetRegResult(const std::string &xpath, uint32_t result)
{
    std::lock_guard<std::mutex> lock(mu_);
    regResults_.emplace_back(xpath, result);
}

std::vector<CapturedSample> FakeFramework::Samples() const
{
    std::lock_guard<std::mutex> lock(mu_);
    return samples_;
}

void FakeFramework::ClearSamples()
{
    std::lock_guard<std::mutex> lock(mu_);
    samples_.clear();
}

void FakeFramework::SetUploadResult(uint32_t result)
{
    std::lock_guard<std::mutex> lock(mu_);
    uploadResult_ = result;
}

void FakeFramework::OnUpload(std::function<void(const MDTLM_SAMPLE_BUFFER *)> hook)
{
    std::lock_guard<std::mutex> lock(mu_);
    uploadHook_ = std::move(hook);
}

uint32_t FakeFramework::RegXpath(uint32_t, const char *xpath, const MDTLM_XPATH_REG_INFO *info)
{
    FakeFramework &f = Get();
    std::lock_guard<std::mutex> lock(f.mu_);
    CapturedRegistration reg{xpath ? xpath : "", {}};
    if (info != nullptr) {
        std::memcpy(&reg.info, info, sizeof(reg.info));
    }
    f.regs_.push_back(reg);
    uint32_t result = 0;
    for (const auto &r : f.regResults_) {
        if (r.first == reg.xpath) {
            result = r.second;
        }
    }
    return result;
}

uint32_t FakeFramework::Upload(uint32_t, MDTLM_SAMPLE_BUFFER *sample)
{
    FakeFramework &f = Get();
    std::function<void(const MDTLM_SAMPLE_BUFFER *)> hook;
    uint32_t result;
    {
        std::lock_guard<std::mutex> lock(f.mu_);
        CapturedSample s{};
        std::memcpy(&s.header, sample, MDTLM_SAMPLE_HEADER_SIZE);
        uint32_t len = sample->dataLen <= MDTLM_SAMPLE_DATA_SIZE ? sample->dataLen : MDTLM_SAMPLE_DATA_SIZE;
        s.data.assign(reinterpret_cast<const char *>(sample->data), len);
        f.samples_.push_back(std::move(s));
        hook = f.uploadHook_;
        result = f.uploadResult_;
    }
    if (hook) {
        hook(sample);
    }
    return result;
}

uint32_t FakeFramework::WriteLog(uint32_t, uint32_t level, const char *line)
{
    FakeFramework &f = Get();
    std::string text = line ? line : "";
    std::function<void(uint32_t, const std::string &)> hook;
    {
        std::lock_guard<std::mutex> lock(f.mu_);
        f.logs_.push_back({level, text, ShapeOf(text)});
        hook = f.logHook_;
    }
    if (hook) {
        hook(level, text);
    }
    return 0;
}

void FakeFramework::OnLog(std::function<void(uint32_t level, const std::string &text)> hook)
{
    std::lock_guard<std::mutex> lock(mu_);
    logHook_ = std::move(hook);
}

void *FakeFramework::Alloc(uint32_t, uint32_t size)
{
    FakeFramework &f = Get();
    std::lock_guard<std::mutex> lock(f.mu_);
    if (f.failAllocAt_ > 0) {
        if (--f.failAllocAt_ == 0) {
            if (--f.failAllocCount_ > 0) {
                f.failAllocAt_ = 1;
            }
            return nullptr;
        }
    }
    if (f.failSizeAt_ > 0 && size == f.failSize_) {
        if (--f.failSizeAt_ == 0) {
            if (--f.failSizeCount_ > 0) {
                f.failSizeAt_ = 1;
            }
            return nullptr;
        }
    }
    /* Garbage-filled, like a real allocator that does not clear memory. */
    void *p = std::malloc(size == 0 ? 1 : size);
    if (p != nullptr) {
        std::memset(p, 0xA5, size);
        f.live_.insert(p);
        ++f.allocations_;
    }
    return p;
}

void FakeFramework::Free(uint32_t, void *buf)
{
    FakeFramework &f = Get();
    {
        std::lock_guard<std::mutex> lock(f.mu_);
        if (f.live_.erase(buf) == 0) {
            std::fprintf(stderr, "FakeFramework: free of a buffer it did not hand out: %p\n", buf);
            std::abort();
        }
    }
    std::free(buf);
}
