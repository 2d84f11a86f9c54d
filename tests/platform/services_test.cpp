#include <gtest/gtest.h>

#include <vector>

#include "platform_test_util.h"

namespace {

TEST(PlatformRegistry, HandsOutTheFrameworkTableForItsIdsOnly)
{
    MDTLM_FRM_VTBL table{};
    void *const untouched = reinterpret_cast<void *>(0x1234);
    struct {
        bool installed;
        uint32_t component, interface;
        uint32_t rc;
    } cases[] = {
        {false, 1000, 1000, 1}, {true, 1000, 1000, 0}, {true, 1000, 1001, 1}, {true, 999, 1000, 1}, {true, 0, 0, 1},
    };
    for (const auto &c : cases) {
        MDTLM_HOST_SetFrameworkTable(c.installed ? &table : nullptr);
        void *out = untouched;
        EXPECT_EQ(COMP_GetVTable(c.component, c.interface, &out), c.rc) << c.component << "/" << c.interface;
        EXPECT_EQ(out, c.rc == 0 ? static_cast<void *>(&table) : untouched) << c.component << "/" << c.interface;
    }
    EXPECT_NE(COMP_GetVTable(1000, 1000, nullptr), 0u);
}

uint32_t First(void)
{
    return 1;
}

uint32_t Second(void)
{
    return 2;
}

TEST(PlatformHotPatch, HandsOutCopiesThatMustBeGivenBack)
{
    HPX_C2H_FUNC active[] = {First, Second};
    ASSERT_EQ(MDTLM_HOST_HpxRegister("FWM_MDTLM_VRALDCN_C2HActive", active, 2, nullptr, 0), 0u);
    active[0] = Second; /* the service keeps its own copy */

    HPX_C2H_FUNC *funcs = nullptr;
    uint32_t count = 99;
    ASSERT_EQ(HPX_PAT_GetC2HActiveFunc("FWM_MDTLM_VRALDCN_C2HActive", &funcs, &count), 0u);
    ASSERT_EQ(count, 2u);
    EXPECT_EQ(funcs[0], First);
    EXPECT_EQ(funcs[1], Second);

    HPX_C2H_FUNC *empty = nullptr;
    ASSERT_EQ(HPX_PAT_GetC2HDeactiveFunc("FWM_MDTLM_VRALDCN_C2HActive", &empty, &count), 0u);
    EXPECT_EQ(count, 0u);
    EXPECT_NE(empty, nullptr);
    EXPECT_EQ(MDTLM_HOST_HpxOutstanding(), 2u);
    HPX_PAT_FreeC2HFunc(funcs);
    HPX_PAT_FreeC2HFunc(empty);
    HPX_PAT_FreeC2HFunc(empty); /* not outstanding any more: ignored */
    HPX_PAT_FreeC2HFunc(nullptr);
    EXPECT_EQ(MDTLM_HOST_HpxOutstanding(), 0u);

    HPX_C2H_FUNC *none = reinterpret_cast<HPX_C2H_FUNC *>(0x10);
    count = 7;
    EXPECT_EQ(HPX_PAT_GetC2HActiveFunc("other", &none, &count), 1u);
    EXPECT_EQ(none, reinterpret_cast<HPX_C2H_FUNC *>(0x10));
    EXPECT_EQ(count, 7u);
    EXPECT_GT(HPX_PAT_GetC2HActiveFunc(nullptr, &none, &count), 1u);

    MDTLM_HOST_HpxClear();
    EXPECT_EQ(HPX_PAT_GetC2HActiveFunc("FWM_MDTLM_VRALDCN_C2HActive", &funcs, &count), 1u);
    EXPECT_EQ(MDTLM_HOST_HpxOutstanding(), 0u);
    EXPECT_NE(MDTLM_HOST_HpxRegister("bad", nullptr, 1, nullptr, 0), 0u);
}

} /* namespace */
