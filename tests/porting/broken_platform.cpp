/*
 * A test double of a platform: the host platform with one rule of the
 * contract broken on purpose, chosen by MDTLM_BROKEN_RULE when the library
 * is loaded. Every service it does not break goes to the host platform,
 * which this library links; with no breakage chosen it behaves as the host.
 */
#include <dlfcn.h>

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "mdtlm_platform.h"

#define BROKEN_API extern "C" __attribute__((visibility("default")))

namespace {

/* The breakage chosen for this process. */
const std::string &Breakage()
{
    static const std::string chosen = [] {
        const char *value = std::getenv("MDTLM_BROKEN_RULE");
        return std::string(value != nullptr ? value : "");
    }();
    return chosen;
}

bool Broken(const char *breakage)
{
    return Breakage() == breakage;
}

/* The host platform's definition of `name`. */
template <typename Fn>
Fn Real(Fn, const char *name)
{
    static void *host = dlopen(MDTLM_HOST_PLATFORM_SONAME, RTLD_NOW | RTLD_NOLOAD);
    void *symbol = host != nullptr ? dlsym(host, name) : nullptr;
    if (symbol == nullptr) {
        std::fprintf(stderr, "broken platform: no host definition of %s\n", name);
        std::abort();
    }
    return reinterpret_cast<Fn>(symbol);
}
#define REAL(name) Real(&::name, #name)

/* The receive callback of the one channel server, for the batch splitter. */
MDTLM_IPC_RECV_FUNC g_realRecv = nullptr;

uint32_t RecvOneByOne(void *context, MDTLM_STATS_IPC_ENTRY *entries, uint32_t count)
{
    uint32_t ret = 0;
    for (uint32_t i = 0; i < count; i++) {
        ret |= g_realRecv(context, entries + i, 1);
    }
    return ret;
}

uint32_t IgnoreFlowEvent(uint32_t)
{
    return 0;
}

} // namespace

/* full-write-counts: a write reports every element written, also into a full queue. */
BROKEN_API int32_t FWM_QUE_AsyWrite(void *queue, const void *elements, uint32_t count)
{
    int32_t written = REAL(FWM_QUE_AsyWrite)(queue, elements, count);
    return Broken("full-write-counts") && written >= 0 ? static_cast<int32_t>(count) : written;
}

/* no-flow-events: flow control is accepted and never reported. */
BROKEN_API uint32_t FWM_QUE_MonitorReg(void *queue, const MDTLM_QUE_MONITOR_CFG *cfg, uint32_t (*flowCtrl)(uint32_t))
{
    return REAL(FWM_QUE_MonitorReg)(queue, cfg, Broken("no-flow-events") ? IgnoreFlowEvent : flowCtrl);
}

/* split-batches: the messages of a datagram arrive one callback each. */
BROKEN_API uint32_t FWM_CHAN_UCServer(const char *name, uint32_t flags, const MDTLM_UCSERVER_CFG *cfg, void *area)
{
    if (!Broken("split-batches") || cfg == nullptr) {
        return REAL(FWM_CHAN_UCServer)(name, flags, cfg, area);
    }
    MDTLM_UCSERVER_CFG split = *cfg;
    g_realRecv = cfg->recvFunc;
    split.recvFunc = RecvOneByOne;
    return REAL(FWM_CHAN_UCServer)(name, flags, &split, area);
}

/* late-timer: destroying a timer reports success and leaves it running. */
BROKEN_API uint32_t FWM_TIMER_Destroy(int32_t timerId)
{
    return Broken("late-timer") ? 0 : REAL(FWM_TIMER_Destroy)(timerId);
}

/* loop-keeps-running: destroying an epoll instance reports success and stops nothing. */
BROKEN_API uint32_t FWM_EPOLL_Destroy(uint32_t epollId)
{
    return Broken("loop-keeps-running") ? 0 : REAL(FWM_EPOLL_Destroy)(epollId);
}

/* phantom-rows: every key reads as present. */
BROKEN_API uint32_t db_read_obj(void *handle, const void *keyDesc, const void *key)
{
    uint32_t ret = REAL(db_read_obj)(handle, keyDesc, key);
    return Broken("phantom-rows") ? 0 : ret;
}

/* hotpatch-fails-unknown: an unknown key is a failure instead of "none". */
BROKEN_API uint32_t HPX_PAT_GetC2HActiveFunc(const char *key, HPX_C2H_FUNC **funcs, uint32_t *count)
{
    uint32_t ret = REAL(HPX_PAT_GetC2HActiveFunc)(key, funcs, count);
    return Broken("hotpatch-fails-unknown") && ret == 1 ? 2 : ret;
}

/* exact-fit-truncates: an output that fills the destination without room
 * for its NUL is cut short and reported as success. */
BROKEN_API int sprintf_s(char *dest, size_t destSize, const char *format, ...)
{
    va_list args;
    va_start(args, format);
    int ret;
    if (Broken("exact-fit-truncates") && dest != nullptr && destSize > 0) {
        int full = std::vsnprintf(dest, destSize, format, args);
        ret = full >= static_cast<int>(destSize) ? static_cast<int>(destSize) - 1 : full;
    } else {
        ret = REAL(vsprintf_s)(dest, destSize, format, args);
    }
    va_end(args);
    return ret;
}
