/*
 * The field catalogue: per sensor, the condition and filter maps its handler
 * searches, how each field id is compared, and the address-family codes of
 * its records. Hosts read it to check task configurations and to document
 * them; the maps are the ones the pipelines use, not copies.
 */
#include "mdtlm_vraldcn.h"
#include "sensor_record_fields.h"
#include "srvtlm_address.h"


#include "flow_family.h"

namespace {

template <std::size_t CondRows, std::size_t FilterRows>
constexpr MDTLM_FIELD_CATALOGUE_ENTRY CatalogueRow(uint32_t sensorType, const MDTLM_FILTER_MAP_ENTRY (&condMap)[CondRows],
                                                   const MDTLM_FILTER_MAP_ENTRY (&filterMap)[FilterRows],
                                                   MDTLM_FIELD_FORM_FUNC form, uint32_t familyIpv4 = MDTLM_NO_ADDRESS_FAMILY,
                                                   uint32_t familyIpv6 = MDTLM_NO_ADDRESS_FAMILY)
{
    return MDTLM_FIELD_CATALOGUE_ENTRY{sensorType, static_cast<uint32_t>(CondRows), condMap, filterMap,
                                       static_cast<uint32_t>(FilterRows), familyIpv4, familyIpv6, 0, form};
}

} // namespace

extern "C" {

const MDTLM_FIELD_CATALOGUE_ENTRY g_mdtlmFieldCatalogue[MDTLM_SENSOR_COUNT] = {
    CatalogueRow(MDTLM_SENSOR_VRAL_FLOW, g_mdTlmFlowStatsCondMap, g_mdTlmFlowStatsFilterMap, MDTLM_FlowStatsFieldForm,
                 MDTLM_FLOW_FAMILY_IPV4, MDTLM_FLOW_FAMILY_IPV6),
    CatalogueRow(MDTLM_SENSOR_VRAL_FLOWHOP, g_femMdTlmFlowHopStatsCondMap, g_mdTlmFlowHopStatsFilterMap,
                 MDTLM_FlowHopStatsFieldForm),
    CatalogueRow(MDTLM_SENSOR_SRVTLM_FLOW, g_femMdTlmSrvtlmFlowCondMap, g_femMdTlmSrvtlmFlowFilterMap,
                 MDTLM_SrvtlmFlowFieldForm, MDTLM_SRVTLM_FAMILY_IPV4, MDTLM_SRVTLM_FAMILY_IPV6),
    CatalogueRow(MDTLM_SENSOR_QUMA_RESULT, g_femMdTlmQumaResultCondMap, g_femMdTlmQumaResultFilterMap,
                 MDTLM_QumaResultFieldForm),
    CatalogueRow(MDTLM_SENSOR_SRVTLM_FCTFLOW, g_femMdTlmSrvtlmFctFlowCondMap, g_femMdTlmSrvtlmFctFlowFilterMap,
                 MDTLM_SrvtlmFctFlowFieldForm, MDTLM_SRVTLM_FAMILY_IPV4, MDTLM_SRVTLM_FAMILY_IPV6),
    CatalogueRow(MDTLM_SENSOR_ZELK_CACHE, g_femMdTlmZelkCacheCondMap, g_femMdTlmZelkCacheFilterMap,
                 MDTLM_ZelkCacheFieldForm),
};

} /* extern "C" */
