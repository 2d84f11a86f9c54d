/* Once the framework's table is bound it stays bound: later binding attempts
 * that fail leave it, and with it logging and buffers, in place. */
#include "frame_fixture.h"

namespace {

using BindingTest = PluginTest;

struct FailedBinding {
    const char *name;
    void (*breakRegistry)();
    bool throughInit; /* the start entry rather than the bare binding */
};

const FailedBinding kFailedBindings[] = {
    /* The registry reports a failure and leaves its output as it was. */
    {"registry fault, binding", [] { MDTLM_HOST_FaultSet(MDTLM_HOST_OP_COMP_GET_VTABLE, 0, 1, 5); }, false},
    {"registry without a table, binding", [] { FakeFramework::Get().Uninstall(); }, false},
    {"registry fault, start", [] { MDTLM_HOST_FaultSet(MDTLM_HOST_OP_COMP_GET_VTABLE, 0, 1, 5); }, true},
    {"registry without a table, start", [] { FakeFramework::Get().Uninstall(); }, true},
};

TEST_F(BindingTest, ALaterFailedBindingKeepsTheBoundTable)
{
    Bind();
    MDTLM_FRM_VTBL *const bound = MDTLM_VRALDCN_GetTlmFrmVtbl();
    ASSERT_EQ(bound, &Fw().table);
    for (const FailedBinding &c : kFailedBindings) {
        SCOPED_TRACE(c.name);
        Fw().ClearLogs();
        c.breakRegistry();
        const uint32_t ret = c.throughInit ? MDTLM_VRALDCN_Init(7) : MDTLM_VRALDCN_InitTlmFrmVtbl();
        MDTLM_HOST_FaultClear();
        Fw().Install();

        EXPECT_EQ(ret, 1u);
        EXPECT_EQ(MDTLM_VRALDCN_GetTlmFrmVtbl(), bound);
        if (c.throughInit) {
            /* The start entry's own lines still reach the framework. */
            EXPECT_EQ(Fw().Shapes(), Lines({"[VRALDCN_Init] start.", "[VRALDCN_Init] init vtbl failed, ret: 1."}));
        }
        Fw().ClearLogs();
        MDTLM_VRALDCN_WriteTlmLog(1, "still bound");
        ASSERT_EQ(Fw().Logs().size(), 1u);
        EXPECT_EQ(Fw().Logs()[0].text, "still bound");

        void *buf = MDTLM_VRALDCN_BufAlloc(16);
        ASSERT_NE(buf, nullptr);
        MDTLM_VRALDCN_BufFree(&buf);
        EXPECT_EQ(buf, nullptr);
        EXPECT_EQ(Fw().Outstanding(), 0);
    }
}

} // namespace
