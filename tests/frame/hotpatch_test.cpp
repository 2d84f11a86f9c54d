/* Hot-patch hooks: the service's function lists and the sync hook. */
#include "frame_fixture.h"

namespace {

using FrameTest = PluginTest;

std::vector<int> g_ran;

uint32_t First() { g_ran.push_back(1); return 0; }
uint32_t Second() { g_ran.push_back(2); return 7; }
uint32_t Third() { g_ran.push_back(3); return 0; }
uint32_t Deactivate() { g_ran.push_back(-1); return 0; }

} // namespace

TEST_F(FrameTest, ActivationStopsAtTheFirstFailingFunctionAndTheSyncHook)
{
    Bind();
    const HPX_C2H_FUNC active[] = {First, Second, Third};
    const HPX_C2H_FUNC deactive[] = {Deactivate};
    ASSERT_EQ(MDTLM_HOST_HpxRegister("FWM_MDTLM_VRALDCN_C2HActive", active, 3, nullptr, 0), 0u);
    ASSERT_EQ(MDTLM_HOST_HpxRegister("FWM_MDTLM_VRALDCN_C2HDeactive", nullptr, 0, deactive, 1), 0u);
    FWM_MDTLM_VRALDCN_C2HActive();
    EXPECT_EQ(g_ran, (std::vector<int>{1, 2}));
    EXPECT_EQ(Fw().Shapes(), Lines({"[PATCH][FWM_MDTLM_VRALDCN]C2H func execute failed"}));
    EXPECT_EQ(MDTLM_HOST_HpxOutstanding(), 0u); /* the list is given back */

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

