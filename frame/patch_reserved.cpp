/*
 * Ten reserved entry points that a hot patch can replace. Nothing in the
 * library calls them; each writes its own line nine times, one call per source
 * line so that the nine lines carry consecutive line numbers.
 */
#include <cstdint>

#include "mdtlm_log.h"
#include "mdtlm_vraldcn.h"

extern "C" {

MDTLM_EXPORT uint32_t FWM_MDTLM_PatchReservedFun1(void)
{
    MDTLM_LOG(MDTLM_LOG_FAILURE, "This is FEM's FWM_MDTLM_PatchFun1");
    MDTLM_LOG(MDTLM_LOG_FAILURE, "This is FEM's FWM_MDTLM_PatchFun1");
    MDTLM_LOG(MDTLM_LOG_FAILURE, "This is FEM's FWM_MDTLM_PatchFun1");
    MDTLM_LOG(MDTLM_LOG_FAILURE, "This is FEM's FWM_MDTLM_PatchFun1");
    MDTLM_LOG(MDTLM_LOG_FAILURE, "This is FEM's FWM_MDTLM_PatchFun1");
    MDTLM_LOG(MDTLM_LOG_FAILURE, "This is FEM's FWM_MDTLM_PatchFun1");
    MDTLM_LOG(MDTLM_LOG_FAILURE, "This is FEM's FWM_MDTLM_PatchFun1");
    MDTLM_LOG(MDTLM_LOG_FAILURE, "This is FEM's FWM_MDTLM_PatchFun1");
    MDTLM_LOG(MDTLM_LOG_FAILURE, "This is FEM's FWM_MDTLM_PatchFun1");
    return 0;
}

MDTLM_EXPORT uint32_t FWM_MDTLM_PatchReservedFun2(void)
{
    MDTLM_LOG(MDTLM_LOG_FAILURE, "This is FEM's FWM_MDTLM_PatchFun2");
    MDTLM_LOG(MDTLM_LOG_FAILURE, "This is FEM's FWM_MDTLM_PatchFun2");
    MDTLM_LOG(MDTLM_LOG_FAILURE, "This is FEM's FWM_MDTLM_PatchFun2");
    MDTLM_LOG(MDTLM_LOG_FAILURE, "This is FEM's FWM_MDTLM_PatchFun2");
    MDTLM_LOG(MDTLM_LOG_FAILURE, "This is FEM's FWM_MDTLM_PatchFun2");
    MDTLM_LOG(MDTLM_LOG_FAILURE, "This is FEM's FWM_MDTLM_PatchFun2");
    MDTLM_LOG(MDTLM_LOG_FAILURE, "This is FEM's FWM_MDTLM_PatchFun2");
    MDTLM_LOG(MDTLM_LOG_FAILURE, "This is FEM's FWM_MDTLM_PatchFun2");
    MDTLM_LOG(MDTLM_LOG_FAILURE, "This is FEM's FWM_MDTLM_PatchFun2");
    return 0;
}

MDTLM_EXPORT uint32_t FWM_MDTLM_PatchReservedFun3(void)
{
    MDTLM_LOG(MDTLM_LOG_FAILURE, "This is FEM's FWM_MDTLM_PatchFun3");
    MDTLM_LOG(MDTLM_LOG_FAILURE, "This is FEM's FWM_MDTLM_PatchFun3");
    MDTLM_LOG(MDTLM_LOG_FAILURE, "This is FEM's FWM_MDTLM_PatchFun3");
    MDTLM_LOG(MDTLM_LOG_FAILURE, "This is FEM's FWM_MDTLM_PatchFun3");
    MDTLM_LOG(MDTLM_LOG_FAILURE, "This is FEM's FWM_MDTLM_PatchFun3");
    MDTLM_LOG(MDTLM_LOG_FAILURE, "This is FEM's FWM_MDTLM_PatchFun3");
    MDTLM_LOG(MDTLM_LOG_FAILURE, "This is FEM's FWM_MDTLM_PatchFun3");
    MDTLM_LOG(MDTLM_LOG_FAILURE, "This is FEM's FWM_MDTLM_PatchFun3");
    MDTLM_LOG(MDTLM_LOG_FAILURE, "This is FEM's FWM_MDTLM_PatchFun3");
    return 0;
}

MDTLM_EXPORT uint32_t FWM_MDTLM_PatchReservedFun4(void)
{
    MDTLM_LOG(MDTLM_LOG_FAILURE, "This is FEM's FWM_MDTLM_PatchFun4");
    MDTLM_LOG(MDTLM_LOG_FAILURE, "This is FEM's FWM_MDTLM_PatchFun4");
    MDTLM_LOG(MDTLM_LOG_FAILURE, "This is FEM's FWM_MDTLM_PatchFun4");
    MDTLM_LOG(MDTLM_LOG_FAILURE, "This is FEM's FWM_MDTLM_PatchFun4");
    MDTLM_LOG(MDTLM_LOG_FAILURE, "This is FEM's FWM_MDTLM_PatchFun4");
    MDTLM_LOG(MDTLM_LOG_FAILURE, "This is FEM's FWM_MDTLM_PatchFun4");
    MDTLM_LOG(MDTLM_LOG_FAILURE, "This is FEM's FWM_MDTLM_PatchFun4");
    MDTLM_LOG(MDTLM_LOG_FAILURE, "This is FEM's FWM_MDTLM_PatchFun4");
    MDTLM_LOG(MDTLM_LOG_FAILURE, "This is FEM's FWM_MDTLM_PatchFun4");
    return 0;
}

MDTLM_EXPORT uint32_t FWM_MDTLM_PatchReservedFun5(void)
{
    MDTLM_LOG(MDTLM_LOG_FAILURE, "This is FEM's FWM_MDTLM_PatchFun5");
    MDTLM_LOG(MDTLM_LOG_FAILURE, "This is FEM's FWM_MDTLM_PatchFun5");
    MDTLM_LOG(MDTLM_LOG_FAILURE, "This is FEM's FWM_MDTLM_PatchFun5");
    MDTLM_LOG(MDTLM_LOG_FAILURE, "This is FEM's FWM_MDTLM_PatchFun5");
    MDTLM_LOG(MDTLM_LOG_FAILURE, "This is FEM's FWM_MDTLM_PatchFun5");
    MDTLM_LOG(MDTLM_LOG_FAILURE, "This is FEM's FWM_MDTLM_PatchFun5");
    MDTLM_LOG(MDTLM_LOG_FAILURE, "This is FEM's FWM_MDTLM_PatchFun5");
    MDTLM_LOG(MDTLM_LOG_FAILURE, "This is FEM's FWM_MDTLM_PatchFun5");
    MDTLM_LOG(MDTLM_LOG_FAILURE, "This is FEM's FWM_MDTLM_PatchFun5");
    return 0;
}

MDTLM_EXPORT uint32_t FWM_MDTLM_PatchReservedFun6(void)
{
    MDTLM_LOG(MDTLM_LOG_FAILURE, "This is FEM's FWM_MDTLM_PatchFun6");
    MDTLM_LOG(MDTLM_LOG_FAILURE, "This is FEM's FWM_MDTLM_PatchFun6");
    MDTLM_LOG(MDTLM_LOG_FAILURE, "This is FEM's FWM_MDTLM_PatchFun6");
    MDTLM_LOG(MDTLM_LOG_FAILURE, "This is FEM's FWM_MDTLM_PatchFun6");
    MDTLM_LOG(MDTLM_LOG_FAILURE, "This is FEM's FWM_MDTLM_PatchFun6");
    MDTLM_LOG(MDTLM_LOG_FAILURE, "This is FEM's FWM_MDTLM_PatchFun6");
    MDTLM_LOG(MDTLM_LOG_FAILURE, "This is FEM's FWM_MDTLM_PatchFun6");
    MDTLM_LOG(MDTLM_LOG_FAILURE, "This is FEM's FWM_MDTLM_PatchFun6");
    MDTLM_LOG(MDTLM_LOG_FAILURE, "This is FEM's FWM_MDTLM_PatchFun6");
    return 0;
}

MDTLM_EXPORT uint32_t FWM_MDTLM_PatchReservedFun7(void)
{
    MDTLM_LOG(MDTLM_LOG_FAILURE, "This is FEM's FWM_MDTLM_PatchFun7");
    MDTLM_LOG(MDTLM_LOG_FAILURE, "This is FEM's FWM_MDTLM_PatchFun7");
    MDTLM_LOG(MDTLM_LOG_FAILURE, "This is FEM's FWM_MDTLM_PatchFun7");
    MDTLM_LOG(MDTLM_LOG_FAILURE, "This is FEM's FWM_MDTLM_PatchFun7");
    MDTLM_LOG(MDTLM_LOG_FAILURE, "This is FEM's FWM_MDTLM_PatchFun7");
    MDTLM_LOG(MDTLM_LOG_FAILURE, "This is FEM's FWM_MDTLM_PatchFun7");
    MDTLM_LOG(MDTLM_LOG_FAILURE, "This is FEM's FWM_MDTLM_PatchFun7");
    MDTLM_LOG(MDTLM_LOG_FAILURE, "This is FEM's FWM_MDTLM_PatchFun7");
    MDTLM_LOG(MDTLM_LOG_FAILURE, "This is FEM's FWM_MDTLM_PatchFun7");
    return 0;
}

MDTLM_EXPORT uint32_t FWM_MDTLM_PatchReservedFun8(void)
{
    MDTLM_LOG(MDTLM_LOG_FAILURE, "This is FEM's FWM_MDTLM_PatchFun8");
    MDTLM_LOG(MDTLM_LOG_FAILURE, "This is FEM's FWM_MDTLM_PatchFun8");
    MDTLM_LOG(MDTLM_LOG_FAILURE, "This is FEM's FWM_MDTLM_PatchFun8");
    MDTLM_LOG(MDTLM_LOG_FAILURE, "This is FEM's FWM_MDTLM_PatchFun8");
    MDTLM_LOG(MDTLM_LOG_FAILURE, "This is FEM's FWM_MDTLM_PatchFun8");
    MDTLM_LOG(MDTLM_LOG_FAILURE, "This is FEM's FWM_MDTLM_PatchFun8");
    MDTLM_LOG(MDTLM_LOG_FAILURE, "This is FEM's FWM_MDTLM_PatchFun8");
    MDTLM_LOG(MDTLM_LOG_FAILURE, "This is FEM's FWM_MDTLM_PatchFun8");
    MDTLM_LOG(MDTLM_LOG_FAILURE, "This is FEM's FWM_MDTLM_PatchFun8");
    return 0;
}

MDTLM_EXPORT uint32_t FWM_MDTLM_PatchReservedFun9(void)
{
    MDTLM_LOG(MDTLM_LOG_FAILURE, "This is FEM's FWM_MDTLM_PatchFun9");
    MDTLM_LOG(MDTLM_LOG_FAILURE, "This is FEM's FWM_MDTLM_PatchFun9");
    MDTLM_LOG(MDTLM_LOG_FAILURE, "This is FEM's FWM_MDTLM_PatchFun9");
    MDTLM_LOG(MDTLM_LOG_FAILURE, "This is FEM's FWM_MDTLM_PatchFun9");
    MDTLM_LOG(MDTLM_LOG_FAILURE, "This is FEM's FWM_MDTLM_PatchFun9");
    MDTLM_LOG(MDTLM_LOG_FAILURE, "This is FEM's FWM_MDTLM_PatchFun9");
    MDTLM_LOG(MDTLM_LOG_FAILURE, "This is FEM's FWM_MDTLM_PatchFun9");
    MDTLM_LOG(MDTLM_LOG_FAILURE, "This is FEM's FWM_MDTLM_PatchFun9");
    MDTLM_LOG(MDTLM_LOG_FAILURE, "This is FEM's FWM_MDTLM_PatchFun9");
    return 0;
}

MDTLM_EXPORT uint32_t FWM_MDTLM_PatchReservedFun10(void)
{
    MDTLM_LOG(MDTLM_LOG_FAILURE, "This is FEM's PatchFun10");
    MDTLM_LOG(MDTLM_LOG_FAILURE, "This is FEM's PatchFun10");
    MDTLM_LOG(MDTLM_LOG_FAILURE, "This is FEM's PatchFun10");
    MDTLM_LOG(MDTLM_LOG_FAILURE, "This is FEM's PatchFun10");
    MDTLM_LOG(MDTLM_LOG_FAILURE, "This is FEM's PatchFun10");
    MDTLM_LOG(MDTLM_LOG_FAILURE, "This is FEM's PatchFun10");
    MDTLM_LOG(MDTLM_LOG_FAILURE, "This is FEM's PatchFun10");
    MDTLM_LOG(MDTLM_LOG_FAILURE, "This is FEM's PatchFun10");
    MDTLM_LOG(MDTLM_LOG_FAILURE, "This is FEM's PatchFun10");
    return 0;
}

} /* extern "C" */
