/*
 * Registration of the six sensor paths with the framework, each with its own
 * add and delete entries and the shared query callback.
 */
#include <cstdint>

#include "mdtlm_log.h"
#include "mdtlm_vraldcn.h"

extern "C" MDTLM_EXPORT uint32_t MDTLM_VRALDCN_SampleXpathRegister(void)
{
    MDTLM_FRM_VTBL *table = MDTLM_VRALDCN_GetTlmFrmVtbl();
    if (table == nullptr || table->RegXpath == nullptr) {
        return 1;
    }

    /* One record for all rows: only the two entries change from row to row.
     * The framework copies what it keeps before RegXpath returns. */
    MDTLM_XPATH_REG_INFO info = {};
    info.regParam = MDTLM_XPATH_REG_PARAM;
    info.queryFunc = MDTLM_VRALDCN_QueryFunc;
    info.one = 1;

    for (const MDTLM_XPATH_NODE &node : g_mdtlmVralDcnXpathNode) {
        info.addFunc = node.addFunc;
        info.delFunc = node.delFunc;
        uint32_t ret = table->RegXpath(MDTLM_VRALDCN_GetModuleId(), node.xpath, &info);
        if (ret != 0) {
            /* A refused path does not keep the others from registering. */
            MDTLM_LOG(MDTLM_LOG_FAILURE, "[SampleXpathRegister] failed, ret: %u, xpath: %s.", ret, node.xpath);
        }
    }
    return 0;
}
