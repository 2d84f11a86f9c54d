/* The log helper's line bound and the buffer helpers' ownership rules. */
#include "frame_fixture.h"

using FrameTest = PluginTest;

TEST_F(FrameTest, LogLinesLongerThan254CharactersAreDroppedWhole)
{
    Bind();
    const struct {
        size_t chars;
        bool delivered;
    } cases[] = {{1, true}, {254, true}, {255, false}, {256, false}, {400, false}, {0, false}};
    for (const auto &c : cases) {
        SCOPED_TRACE(c.chars);
        Fw().ClearLogs();
        std::string text(c.chars, 'x');
        MDTLM_VRALDCN_WriteTlmLog(5, "%s", text.c_str());
        auto logs = Fw().Logs();
        ASSERT_EQ(logs.size(), c.delivered ? 1u : 0u);
        if (c.delivered) {
            EXPECT_EQ(logs[0].text, text);
            EXPECT_EQ(logs[0].level, 5u);
        }
    }
}

TEST_F(FrameTest, BufFreeNullsTheCallersPointerOnlyWhenItFreed)
{
    Bind();
    void *buf = MDTLM_VRALDCN_BufAlloc(40);
    ASSERT_NE(buf, nullptr);
    Fw().table.BufFree = nullptr;
    MDTLM_VRALDCN_BufFree(&buf);
    EXPECT_NE(buf, nullptr); /* nothing released, the variable keeps its value */
    Fw().table.BufFree = savedTable_.BufFree;
    EXPECT_EQ(Fw().Outstanding(), 1);

    MDTLM_VRALDCN_BufFree(&buf);
    EXPECT_EQ(buf, nullptr);
    EXPECT_EQ(Fw().Outstanding(), 0);
    MDTLM_VRALDCN_BufFree(&buf); /* a second release of the same variable */
    MDTLM_VRALDCN_BufFree(nullptr);

    Fw().table.BufAlloc = nullptr;
    EXPECT_EQ(MDTLM_VRALDCN_BufAlloc(40), nullptr);
    Fw().table.BufAlloc = savedTable_.BufAlloc;
    Fw().FailAlloc(1);
    EXPECT_EQ(MDTLM_VRALDCN_BufAlloc(40), nullptr); /* the allocator's null is passed on */
}
