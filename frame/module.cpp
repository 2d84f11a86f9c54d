/*
 * Module lifecycle: start-up in a fixed order, the partial shut-down that a
 * failed start-up runs, and the binding to the framework's table of functions.
 */
#include <cstdint>

#include "mdtlm_log.h"
#include "mdtlm_platform.h"
#include "mdtlm_vraldcn.h"

extern "C" {
MDTLM_EXPORT uint32_t g_vralDcnTlmModuleId = 0;
MDTLM_EXPORT MDTLM_FRM_VTBL *g_vralDcnTlmFrmVtbl = nullptr;
}

namespace {

/* The framework's function table is registered under this component and
 * interface pair; the plug-in never asks for another one. */
constexpr uint32_t kFrameworkComponentId = 1000;
constexpr uint32_t kFrameworkInterfaceId = 1000;

/* A start-up step after the binding, with the line written when it fails. */
struct StartupStep {
    uint32_t (*run)(void);
    const char *failFormat; /* label, line, step result */
};

constexpr StartupStep kStartupSteps[] = {
    {MDTLM_VRALDCN_SampleXpathRegister, "[%s:%d][VRALDCN_Init]  register simple xpath failed, ret: %u."},
    {MDTLM_VRALDCN_THREAD_Init, "[%s:%d][VRALDCN_Init] thread init failed, ret: %u."},
    {MDTLM_VRALDCN_EVENT_Init, "[%s:%d][VRALDCN_Init] Event init failed, ret: %u."},
    {MDTLM_VRALDCN_STATS_Init, "[%s:%d][VRALDCN_Init] stats init failed, ret: %u."},
};

/* Asks the component registry for the table; the binding holds only with
 * result 0 and a table. Once a table is bound it stays bound: an attempt that
 * fails keeps it, whatever the registry left in its output. Before that, the
 * output is taken as the registry left it, so a failed first attempt that
 * still handed out a table can report its failure through it. */
bool BindFrameworkTable()
{
    void *table = g_vralDcnTlmFrmVtbl;
    const uint32_t ret = COMP_GetVTable(kFrameworkComponentId, kFrameworkInterfaceId, &table);
    const bool bound = ret == 0 && table != nullptr;
    if (bound || g_vralDcnTlmFrmVtbl == nullptr) {
        g_vralDcnTlmFrmVtbl = static_cast<MDTLM_FRM_VTBL *>(table);
    }
    return bound;
}

} // namespace

extern "C" {

MDTLM_EXPORT uint32_t MDTLM_VRALDCN_Init(uint32_t moduleId)
{
    g_vralDcnTlmModuleId = moduleId;
    MDTLM_LOG(MDTLM_LOG_FAILURE, "[VRALDCN_Init] start.");

    if (!BindFrameworkTable()) {
        MDTLM_LOG(MDTLM_LOG_FAILURE, "[VRALDCN_Init] init vtbl failed, ret: %u.", 1u);
        return 1;
    }

    uint32_t result = 0;
    for (const StartupStep &step : kStartupSteps) {
        result = step.run();
        if (result != 0) {
            MDTLM_VRALDCN_WriteTlmLog(MDTLM_LOG_FAILURE, step.failFormat, MDTLM_LOG_LABEL, __LINE__, result);
            MDTLM_VRALDCN_Destory();
            break;
        }
    }

    /* The patch functions run whether or not the later steps succeeded. */
    FWM_MDTLM_VRALDCN_C2HActive();
    return result;
}

MDTLM_EXPORT void MDTLM_VRALDCN_Destory(void)
{
    MDTLM_VRALDCN_STATS_Destory();
    MDTLM_VRALDCN_THREAD_Destroy();
}

MDTLM_EXPORT uint32_t MDTLM_VRALDCN_InitTlmFrmVtbl(void)
{
    return BindFrameworkTable() ? 0 : 1;
}

MDTLM_EXPORT MDTLM_FRM_VTBL *MDTLM_VRALDCN_GetTlmFrmVtbl(void)
{
    return g_vralDcnTlmFrmVtbl;
}

MDTLM_EXPORT uint32_t MDTLM_VRALDCN_GetModuleId(void)
{
    return g_vralDcnTlmModuleId;
}

/* Query callback handed to the framework with every path; nothing to answer. */
MDTLM_EXPORT uint32_t MDTLM_VRALDCN_QueryFunc(void)
{
    return 0;
}

} /* extern "C" */
