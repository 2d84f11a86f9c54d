/*
 * Hot-patch hooks: running the service's function lists, the sync hook and
 * the reserved entry points.
 */
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "plugin_fixture.h"

namespace {

std::vector<int> g_ran;

uint32_t First() { g_ran.push_back(1); return 0; }
uint32_t Second() { g_ran.push_back(2); return 7; }
uint32_t Third() { g_ran.push_back(3); return 0; }
uint32_t Deactivate() { g_ran.push_back(-1); return 0; }

const char kActiveKey[] = "FWM_MDTLM_VRALDCN_C2HActive";

void RegisterPatches()
{
    const HPX_C2H_FUNC active[] = {First, Second, Third};
    const HPX_C2H_FUNC deactive[] = {Deactivate};
    ASSERT_EQ(MDTLM_HOST_HpxRegister(kActiveKey, active, 3, nullptr, 0), 0u);
    ASSERT_EQ(MDTLM_HOST_HpxRegister("FWM_MDTLM_VRALDCN_C2HDeactive", nullptr, 0, deactive, 1), 0u);
}

} // namespace

TEST_F(PluginTest, ActivationStopsAtTheFirstFailingFunctionAndGivesTheListBack)
{
    ASSERT_EQ(MDTLM_VRALDCN_InitTlmFrmVtbl(), 0u);
    RegisterPatches();
    FWM_MDTLM_VRALDCN_C2HActive();
    EXPECT_EQ(g_ran, (std::vector<int>{1, 2}));
    EXPECT_EQ(Fw().Shapes(), std::vector<std::string>{L("[PATCH][FWM_MDTLM_VRALDCN]C2H func execute failed")});
    EXPECT_EQ(MDTLM_HOST_HpxOutstanding(), 0u);
}

TEST_F(PluginTest, ListQueriesWithoutFunctionsOrFailing)
{
    ASSERT_EQ(MDTLM_VRALDCN_InitTlmFrmVtbl(), 0u);
    FWM_MDTLM_VRALDCN_C2HActive();
    FWM_MDTLM_VRALDCN_C2HDeactive();
    MDTLM_HOST_FaultSet(MDTLM_HOST_OP_HPX_GET_ACTIVE, 0, 1, 5);
    FWM_MDTLM_VRALDCN_C2HActive();
    MDTLM_HOST_FaultSet(MDTLM_HOST_OP_HPX_GET_DEACTIVE, 0, 1, 5);
    FWM_MDTLM_VRALDCN_C2HDeactive();
    EXPECT_EQ(Fw().Shapes(), (std::vector<std::string>{
                                 L("[PATCH][FWM_MDTLM_VRALDCN]No C2H func"),
                                 L("[PATCH][FWM_MDTLM_VRALDCN]No C2H func"),
                                 L("[PATCH][FWM_MDTLM_VRALDCN]HPX_PAT_GetC2HActiveFunc failed"),
                                 L("[PATCH][FWM_MDTLM_VRALDCN]HPX_PAT_GetC2HDeactiveFunc failed"),
                             }));
    EXPECT_EQ(MDTLM_HOST_HpxOutstanding(), 0u);
}

TEST_F(PluginTest, SyncHook)
{
    ASSERT_EQ(MDTLM_VRALDCN_InitTlmFrmVtbl(), 0u);
    RegisterPatches();
    const struct {
        const char *name;
        int32_t operation;
        bool handle;
        const char *lib;
        uint32_t result;
        uint32_t flag; /* 99: left alone */
        std::vector<int> ran;
    } cases[] = {
        {"no handle", 0, false, "libmdtlm_vraldcn.so", 1, 99, {}},
        {"other library", 0, true, "libother.so", 1, 1, {}},
        {"activate", 0, true, "libmdtlm_vraldcn.so", 0, 0, {1, 2}},
        {"deactivate", 1, true, "libmdtlm_vraldcn.so", 0, 0, {-1}},
        {"unknown operation", 2, true, "libmdtlm_vraldcn.so", 1, 0, {}},
    };
    int handle = 0;
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        g_ran.clear();
        char record[512] = {};
        std::strcpy(record + 397, c.lib);
        uint32_t flag = 99;
        EXPECT_EQ(libmdtlm_vraldcn_PAT_C2HSyncHookFunc(c.operation, c.handle ? &handle : nullptr, record, &flag),
                  c.result);
        EXPECT_EQ(flag, c.flag);
        EXPECT_EQ(g_ran, c.ran);
    }
    EXPECT_EQ(MDTLM_HOST_HpxOutstanding(), 0u);
}

TEST_F(PluginTest, ReservedFunctionsWriteTheirLineNineTimesOnConsecutiveLines)
{
    ASSERT_EQ(MDTLM_VRALDCN_InitTlmFrmVtbl(), 0u);
    const struct {
        uint32_t (*fn)(void);
        const char *text;
    } cases[] = {
        {FWM_MDTLM_PatchReservedFun1, "This is FEM's FWM_MDTLM_PatchFun1"},
        {FWM_MDTLM_PatchReservedFun2, "This is FEM's FWM_MDTLM_PatchFun2"},
        {FWM_MDTLM_PatchReservedFun3, "This is FEM's FWM_MDTLM_PatchFun3"},
        {FWM_MDTLM_PatchReservedFun4, "This is FEM's FWM_MDTLM_PatchFun4"},
        {FWM_MDTLM_PatchReservedFun5, "This is FEM's FWM_MDTLM_PatchFun5"},
        {FWM_MDTLM_PatchReservedFun6, "This is FEM's FWM_MDTLM_PatchFun6"},
        {FWM_MDTLM_PatchReservedFun7, "This is FEM's FWM_MDTLM_PatchFun7"},
        {FWM_MDTLM_PatchReservedFun8, "This is FEM's FWM_MDTLM_PatchFun8"},
        {FWM_MDTLM_PatchReservedFun9, "This is FEM's FWM_MDTLM_PatchFun9"},
        {FWM_MDTLM_PatchReservedFun10, "This is FEM's PatchFun10"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.text);
        Fw().ClearLogs();
        EXPECT_EQ(c.fn(), 0u);
        auto logs = Fw().Logs();
        ASSERT_EQ(logs.size(), 9u);
        int first = 0;
        for (size_t i = 0; i < logs.size(); ++i) {
            EXPECT_EQ(logs[i].shape, L(c.text));
            EXPECT_EQ(logs[i].level, 2u);
            int line = 0;
            ASSERT_EQ(std::sscanf(logs[i].text.c_str(), "[mdtlm.vraldcn.statis:%d]", &line), 1);
            first = i == 0 ? line : first;
            EXPECT_EQ(line, first + static_cast<int>(i));
        }
    }
}
