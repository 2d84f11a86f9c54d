/*
 * Hot-patch service: per key, the activation and deactivation function lists
 * that hosts register. Each query hands out a fresh copy of a list, which the
 * caller gives back through HPX_PAT_FreeC2HFunc.
 */
#include <cstdlib>
#include <cstring>
#include <map>
#include <mutex>
#include <string>
#include <unordered_set>
#include <vector>

#include "mdtlm_platform.h"
#include "platform_internal.h"

namespace {

constexpr uint32_t kHanded = 0;
constexpr uint32_t kNoneForKey = 1;
constexpr uint32_t kBadArguments = 2;

struct PatchLists {
    std::vector<HPX_C2H_FUNC> active;
    std::vector<HPX_C2H_FUNC> deactive;
};

struct PatchTable {
    std::mutex mu;
    std::map<std::string, PatchLists> byKey;
    std::unordered_set<HPX_C2H_FUNC *> handedOut;
};

PatchTable &Patches()
{
    static PatchTable *table = new PatchTable(); /* lives as long as the process */
    return *table;
}

uint32_t HandOut(const char *key, std::vector<HPX_C2H_FUNC> PatchLists::*list, HPX_C2H_FUNC **funcs,
                 uint32_t *count)
{
    if (key == nullptr || funcs == nullptr || count == nullptr)
        return kBadArguments;
    PatchTable &table = Patches();
    std::lock_guard<std::mutex> lock(table.mu);
    auto it = table.byKey.find(key);
    if (it == table.byKey.end())
        return kNoneForKey;
    const std::vector<HPX_C2H_FUNC> &source = it->second.*list;
    /* At least one slot, so an empty list is still an array to give back. */
    auto *copy = static_cast<HPX_C2H_FUNC *>(std::calloc(source.size() + 1, sizeof(HPX_C2H_FUNC)));
    if (copy == nullptr)
        return kBadArguments;
    if (!source.empty())
        std::memcpy(copy, source.data(), source.size() * sizeof(HPX_C2H_FUNC));
    table.handedOut.insert(copy);
    *funcs = copy;
    *count = static_cast<uint32_t>(source.size());
    return kHanded;
}

} /* namespace */

MDTLM_PLATFORM_API uint32_t HPX_PAT_GetC2HActiveFunc(const char *key, HPX_C2H_FUNC **funcs, uint32_t *count)
{
    int64_t injected;
    if (mdtlm_host::FaultCheck(MDTLM_HOST_OP_HPX_GET_ACTIVE, &injected))
        return static_cast<uint32_t>(injected);
    return HandOut(key, &PatchLists::active, funcs, count);
}

MDTLM_PLATFORM_API uint32_t HPX_PAT_GetC2HDeactiveFunc(const char *key, HPX_C2H_FUNC **funcs, uint32_t *count)
{
    int64_t injected;
    if (mdtlm_host::FaultCheck(MDTLM_HOST_OP_HPX_GET_DEACTIVE, &injected))
        return static_cast<uint32_t>(injected);
    return HandOut(key, &PatchLists::deactive, funcs, count);
}

MDTLM_PLATFORM_API void HPX_PAT_FreeC2HFunc(HPX_C2H_FUNC *funcs)
{
    if (funcs == nullptr)
        return;
    PatchTable &table = Patches();
    std::lock_guard<std::mutex> lock(table.mu);
    /* Only arrays this service handed out are freed; anything else is left alone. */
    if (table.handedOut.erase(funcs) > 0)
        std::free(funcs);
}

MDTLM_PLATFORM_API uint32_t MDTLM_HOST_HpxRegister(const char *key, const HPX_C2H_FUNC *active, uint32_t activeCnt,
                                                   const HPX_C2H_FUNC *deactive, uint32_t deactiveCnt)
{
    if (key == nullptr || (active == nullptr && activeCnt > 0) || (deactive == nullptr && deactiveCnt > 0))
        return 1;
    PatchLists lists;
    if (activeCnt > 0)
        lists.active.assign(active, active + activeCnt);
    if (deactiveCnt > 0)
        lists.deactive.assign(deactive, deactive + deactiveCnt);
    PatchTable &table = Patches();
    std::lock_guard<std::mutex> lock(table.mu);
    table.byKey[key] = std::move(lists);
    return 0;
}

MDTLM_PLATFORM_API void MDTLM_HOST_HpxClear(void)
{
    PatchTable &table = Patches();
    std::lock_guard<std::mutex> lock(table.mu);
    table.byKey.clear();
}

MDTLM_PLATFORM_API uint64_t MDTLM_HOST_HpxOutstanding(void)
{
    PatchTable &table = Patches();
    std::lock_guard<std::mutex> lock(table.mu);
    return table.handedOut.size();
}
