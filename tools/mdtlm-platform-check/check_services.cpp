/*
 * The component registry and the hot-patch service, as far as a check can
 * see them without registering anything: the answers the plug-in acts on.
 */
#include "rule.h"

namespace mdtlm::check {
namespace {

void CheckRegistry(const PlatformApi &api, const CheckSettings &, Findings &findings)
{
    void *table = nullptr;
    uint32_t ret = api.COMP_GetVTable(1000, 1000, &table);
    /* Without a framework in the process there may be no table; a found one must be there. */
    findings.Expect(ret != 0 || table != nullptr, "COMP_GetVTable(1000, 1000) returned 0 without a table");
}

using HpxQuery = uint32_t (*PlatformApi::*)(const char *, HPX_C2H_FUNC **, uint32_t *);

struct HpxQueryRow {
    const char *name;
    HpxQuery query;
    const char *ownKey; /* the key the plug-in asks with */
};
const HpxQueryRow kHpxQueries[] = {
    {"HPX_PAT_GetC2HActiveFunc", &PlatformApi::HPX_PAT_GetC2HActiveFunc, "FWM_MDTLM_VRALDCN_C2HActive"},
    {"HPX_PAT_GetC2HDeactiveFunc", &PlatformApi::HPX_PAT_GetC2HDeactiveFunc, "FWM_MDTLM_VRALDCN_C2HDeactive"},
};

void CheckUnknownKey(const PlatformApi &api, const CheckSettings &, Findings &findings)
{
    for (const HpxQueryRow &row : kHpxQueries) {
        HPX_C2H_FUNC *funcs = nullptr;
        uint32_t count = 0;
        uint32_t ret = (api.*row.query)("mdtlm-platform-check.no-such-key", &funcs, &count);
        findings.Expect(ret == 1, std::string(row.name) + " for a key nobody registered returned " + Str(ret) +
                                      ", not 1 (none for the key)");
        if (ret == 0) {
            api.HPX_PAT_FreeC2HFunc(funcs);
        }
    }
}

void CheckOwnKeys(const PlatformApi &api, const CheckSettings &, Findings &findings)
{
    for (const HpxQueryRow &row : kHpxQueries) {
        HPX_C2H_FUNC *funcs = nullptr;
        uint32_t count = 0;
        uint32_t ret = (api.*row.query)(row.ownKey, &funcs, &count);
        findings.Expect(ret == 0 || ret == 1, std::string(row.name) + "(\"" + row.ownKey + "\") returned " + Str(ret) +
                                                  " (the plug-in logs a failure for anything but 0 and 1)");
        if (ret != 0) {
            continue;
        }
        findings.Expect(count == 0 || funcs != nullptr,
                        std::string(row.name) + " handed out " + Str(count) + " functions in a NULL array");
        /* The functions belong to whoever registered them: the check gives the array back unrun. */
        api.HPX_PAT_FreeC2HFunc(funcs);
    }
}

const Rule kServiceRules[] = {
    {"registry.table", "COMP_GetVTable(1000, 1000) returns 0 only together with a table", CheckRegistry},
    {"hotpatch.unknown-key", "a hot-patch query for a key nobody registered answers 1 (none for the key)",
     CheckUnknownKey},
    {"hotpatch.own-keys", "the plug-in's keys answer 0 with an array to give back, or 1", CheckOwnKeys},
};

} // namespace

std::span<const Rule> ServiceRules()
{
    return kServiceRules;
}

} // namespace mdtlm::check
