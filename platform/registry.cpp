/*
 * Component registry: the one component the plug-in asks for is the
 * framework's function table, component 1000, interface 1000.
 */
#include <atomic>

#include "mdtlm_platform.h"
#include "platform_internal.h"

namespace {

constexpr uint32_t kFrameworkComponent = 1000;
constexpr uint32_t kFrameworkInterface = 1000;

std::atomic<MDTLM_FRM_VTBL *> g_frameworkTable{nullptr};

} /* namespace */

MDTLM_PLATFORM_API void MDTLM_HOST_SetFrameworkTable(MDTLM_FRM_VTBL *table)
{
    g_frameworkTable.store(table, std::memory_order_release);
}

MDTLM_PLATFORM_API uint32_t COMP_GetVTable(uint32_t componentId, uint32_t interfaceId, void **table)
{
    int64_t injected;
    if (mdtlm_host::FaultCheck(MDTLM_HOST_OP_COMP_GET_VTABLE, &injected))
        return static_cast<uint32_t>(injected);
    if (table == nullptr || componentId != kFrameworkComponent || interfaceId != kFrameworkInterface)
        return 1;
    MDTLM_FRM_VTBL *found = g_frameworkTable.load(std::memory_order_acquire);
    if (found == nullptr)
        return 1;
    *table = found;
    return 0;
}
