/*
 * Hot-patch hooks: running the activation or deactivation functions that the
 * hot-patch service holds for this library, and the service's sync hook.
 */
#include <cstdint>
#include <cstring>

#include "mdtlm_log.h"
#include "mdtlm_platform.h"
#include "mdtlm_vraldcn.h"

namespace {

/* Result of a list query meaning "the service holds nothing for this key". */
constexpr uint32_t kNoC2HFuncForKey = 1;

/* Where the service's record carries the NUL-terminated library file name. */
constexpr size_t kRecordLibNameOffset = 397;
constexpr char kOwnLibName[] = "libmdtlm_vraldcn.so";

/* One direction of patching: the list query, the key (the entry's own name)
 * and the line written when the query fails. */
struct C2HDirection {
    uint32_t (*getFuncs)(const char *key, HPX_C2H_FUNC **funcs, uint32_t *count);
    const char *key;
    const char *queryFailFormat; /* label, line */
};

constexpr C2HDirection kActivate = {
    HPX_PAT_GetC2HActiveFunc, "FWM_MDTLM_VRALDCN_C2HActive",
    "[%s:%d][PATCH][FWM_MDTLM_VRALDCN]HPX_PAT_GetC2HActiveFunc failed"};
constexpr C2HDirection kDeactivate = {
    HPX_PAT_GetC2HDeactiveFunc, "FWM_MDTLM_VRALDCN_C2HDeactive",
    "[%s:%d][PATCH][FWM_MDTLM_VRALDCN]HPX_PAT_GetC2HDeactiveFunc failed"};

/* Runs the list in index order up to the first function that fails, then
 * hands the list back. Problems only reach the log. */
void RunC2HFuncs(const C2HDirection &direction)
{
    HPX_C2H_FUNC *funcs = nullptr;
    uint32_t count = 0;
    uint32_t ret = direction.getFuncs(direction.key, &funcs, &count);
    if (ret == kNoC2HFuncForKey) {
        MDTLM_LOG(MDTLM_LOG_FAILURE, "[PATCH][FWM_MDTLM_VRALDCN]No C2H func");
        return;
    }
    if (ret != 0) {
        MDTLM_VRALDCN_WriteTlmLog(MDTLM_LOG_FAILURE, direction.queryFailFormat, MDTLM_LOG_LABEL, __LINE__);
        return;
    }

    for (uint32_t i = 0; funcs != nullptr && i < count; ++i) {
        if (funcs[i] != nullptr && funcs[i]() != 0) {
            MDTLM_LOG(MDTLM_LOG_FAILURE, "[PATCH][FWM_MDTLM_VRALDCN]C2H func execute failed");
            break;
        }
    }
    HPX_PAT_FreeC2HFunc(funcs);
}

/* The sync hook's operations, by operation number. */
constexpr void (*kSyncOperations[])(void) = {
    FWM_MDTLM_VRALDCN_C2HActive,   /* 0 */
    FWM_MDTLM_VRALDCN_C2HDeactive, /* 1 */
};
constexpr int32_t kSyncOperationCount = static_cast<int32_t>(sizeof(kSyncOperations) / sizeof(kSyncOperations[0]));

} // namespace

extern "C" {

MDTLM_EXPORT void FWM_MDTLM_VRALDCN_C2HActive(void)
{
    RunC2HFuncs(kActivate);
}

MDTLM_EXPORT void FWM_MDTLM_VRALDCN_C2HDeactive(void)
{
    RunC2HFuncs(kDeactivate);
}

MDTLM_EXPORT uint32_t libmdtlm_vraldcn_PAT_C2HSyncHookFunc(int32_t operation, void *handle, void *record,
                                                           uint32_t *flag)
{
    if (handle == nullptr || record == nullptr || flag == nullptr) {
        return 1;
    }
    const char *libName = static_cast<const char *>(record) + kRecordLibNameOffset;
    if (std::strcmp(libName, kOwnLibName) != 0) {
        *flag = 1; /* meant for another library */
        return 1;
    }
    if (operation < 0 || operation >= kSyncOperationCount) {
        *flag = 0;
        return 1;
    }
    kSyncOperations[operation]();
    *flag = 0;
    return 0;
}

} /* extern "C" */
