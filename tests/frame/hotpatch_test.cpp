/*
 * Hot-patch hooks: the service's function lists, the sync hook and the
 * reserved entry points.
 */
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "frame_fixture.h"

namespace {

using FrameTest = PluginTest;

std::vector<int> g_ran;

uint32_t First() { g_ran.push_back(1); return 0; }
uint32_t Second() { g_ran.push_back(2); return 7; }
uint32_t Third() { g_ran.push_back(3); return 0; }
uint32_t Deactivate() { g_ran.push_back(-1); return 0; }

void RegisterPatches()
{
    const HPX_C2H_FUNC active[] = {First, Second, Third};
    const HPX_C2H_FUNC deactive[] = {Deactivate};
    ASSERT_EQ(MDTLM_HOST_HpxRegister("FWM_MDTLM_VRALDCN_C2HActive", active, 3, nullptr, 0), 0u);
    ASSERT_EQ(MDTLM_HOST_HpxRegister("FWM_MDTLM_VRALDCN_C2HDeactive", nullptr, 0, deactive, 1), 0u);
}

} // namespace

TEST_F(FrameTest, ActivationStopsAtTheFirstFailingFunctionAndGivesTheListBack)
{
    Bind();
    RegisterPatches();
    FWM_MDTLM_VRALDCN_C2HActive();
    EXPECT_EQ(g_ran, (std::vector<int>{1, 2}));
    EXPECT_EQ(Fw().Shapes(), Lines({"[PATCH][FWM_MDTLM_VRALDCN]C2H func execute failed"}));
    EXPECT_EQ(MDTLM_HOST_HpxOutstanding(), 0u);
}

TEST_F(FrameTest, ListQueriesWithoutFunctionsOrFailing)
{
    Bind();
    FWM_MDTLM_VRALDCN_C2HActive();
    FWM_MDTLM_VRALDCN_C2HDeactive();
    MDTLM_HOST_FaultSet(MDTLM_HOST_OP_HPX_GET_ACTIVE, 0, 1, 5);
    FWM_MDTLM_VRALDCN_C2HActive();
    MDTLM_HOST_FaultSet(MDTLM_HOST_OP_HPX_GET_DEACTIVE, 0, 1, 5);
    FWM_MDTLM_VRALDCN_C2HDeactive();
    EXPECT_EQ(Fw().Shapes(), Lines({"[PATCH][FWM_MDTLM_VRALDCN]No C2H func", "[PATCH][FWM_MDTLM_VRALDCN]No C2H func",
                                    "[PATCH][FWM_MDTLM_VRALDCN]HPX_PAT_GetC2HActiveFunc failed",
                                    "[PATCH][FWM_MDTLM_VRALDCN]HPX_PAT_GetC2HDeactiveFunc failed"}));
    EXPECT_EQ(MDTLM_HOST_HpxOutstanding(), 0u);
}

TEST_F(FrameTest, SyncHook)
{
    Bind();
    RegisterPatches();
    const struct {
        int32_t operation;
        bool handle;
        const char *lib;
        uint32_t result, flag; /* flag 99: left alone */
        std::vector<int> ran;
    } cases[] = {
        {0, false, "libmdtlm_vraldcn.so", 1, 99, {}}, {0, true, "libother.so", 1, 1, {}},
        {0, true, "libmdtlm_vraldcn.so", 0, 0, {1, 2}}, {1, true, "libmdtlm_vraldcn.so", 0, 0, {-1}},
        {2, true, "libmdtlm_vraldcn.so", 1, 0, {}},
    };
    int handle = 0;
    for (const auto &c : cases) {
        SCOPED_TRACE(testing::Message() << c.operation << " " << c.handle << " " << c.lib);
        g_ran.clear();
        char record[512] = {};
        std::strcpy(record + 397, c.lib);
        uint32_t flag = 99;
        EXPECT_EQ(libmdtlm_vraldcn_PAT_C2HSyncHookFunc(c.operation, c.handle ? &handle : nullptr, record, &flag),
                  c.result);
        EXPECT_EQ(flag, c.flag);
        EXPECT_EQ(g_ran, c.ran);
    }
}

TEST_F(FrameTest, ReservedFunctionsWriteTheirLineNineTimesOnConsecutiveLines)
{
    Bind();
    uint32_t (*const fns[])(void) = {FWM_MDTLM_PatchReservedFun1, FWM_MDTLM_PatchReservedFun2,
                                     FWM_MDTLM_PatchReservedFun3, FWM_MDTLM_PatchReservedFun4,
                                     FWM_MDTLM_PatchReservedFun5, FWM_MDTLM_PatchReservedFun6,
                                     FWM_MDTLM_PatchReservedFun7, FWM_MDTLM_PatchReservedFun8,
                                     FWM_MDTLM_PatchReservedFun9, FWM_MDTLM_PatchReservedFun10};
    for (int n = 1; n <= 10; ++n) {
        std::string text = n < 10 ? "This is FEM's FWM_MDTLM_PatchFun" + std::to_string(n) : "This is FEM's PatchFun10";
        SCOPED_TRACE(text);
        Fw().ClearLogs();
        EXPECT_EQ(fns[n - 1](), 0u);
        auto logs = Fw().Logs();
        ASSERT_EQ(logs.size(), 9u);
        int first = -1;
        for (size_t i = 0; i < logs.size(); ++i) {
            int line = 0;
            EXPECT_EQ(logs[i].shape, L(text));
            EXPECT_EQ(logs[i].level, 2u);
            ASSERT_EQ(std::sscanf(logs[i].text.c_str(), "[mdtlm.vraldcn.statis:%d]", &line), 1);
            first = i == 0 ? line : first;
            EXPECT_EQ(line, first + static_cast<int>(i));
        }
    }
}
