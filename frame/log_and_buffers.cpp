/*
 * The framework services every other unit reaches through here: log lines
 * (slot WriteLog) and buffers (slots BufAlloc and BufFree). None of them keeps
 * state of its own, so they may be called from any thread.
 */
#include <cstdarg>
#include <cstdint>

#include "mdtlm_platform.h"
#include "mdtlm_vraldcn.h"

namespace {

/* A log line lives in this many bytes on the caller's stack; the formatter is
 * bounded one byte short of it, so a delivered line has at most 254 characters. */
constexpr size_t kLogLineSize = 256;
constexpr size_t kLogFormatBound = kLogLineSize - 1;

} // namespace

extern "C" {

MDTLM_EXPORT uint32_t MDTLM_VRALDCN_WriteTlmLog(uint32_t level, const char *format, ...)
{
    char line[kLogLineSize] = {};
    if (format == nullptr) {
        return 1;
    }
    MDTLM_FRM_VTBL *table = g_vralDcnTlmFrmVtbl;
    if (table == nullptr || table->WriteLog == nullptr) {
        return 1;
    }

    va_list args;
    va_start(args, format);
    int written = vsprintf_s(line, kLogFormatBound, format, args);
    va_end(args);
    /* An error, a line that does not fit, or an empty line: nothing is sent;
     * a long line is dropped whole rather than cut. */
    if (written < 1) {
        return 1;
    }

    table->WriteLog(g_vralDcnTlmModuleId, level, line);
    return 0;
}

MDTLM_EXPORT void *MDTLM_VRALDCN_BufAlloc(uint32_t size)
{
    MDTLM_FRM_VTBL *table = g_vralDcnTlmFrmVtbl;
    if (table == nullptr || table->BufAlloc == nullptr) {
        return nullptr;
    }
    return table->BufAlloc(g_vralDcnTlmModuleId, size);
}

MDTLM_EXPORT void MDTLM_VRALDCN_BufFree(void **buf)
{
    if (buf == nullptr || *buf == nullptr) {
        return;
    }
    MDTLM_FRM_VTBL *table = g_vralDcnTlmFrmVtbl;
    if (table == nullptr || table->BufFree == nullptr) {
        return; /* the caller's pointer keeps its value */
    }
    table->BufFree(g_vralDcnTlmModuleId, *buf);
    *buf = nullptr;
}

} /* extern "C" */
