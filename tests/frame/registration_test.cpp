/* Path registration: the records handed to the framework, and a refused path. */
#include "frame_fixture.h"

namespace {

using FrameTest = PluginTest;

const struct {
    const char *xpath;
    MDTLM_ADD_TASK_FUNC add;
    MDTLM_DEL_TASK_FUNC del;
} kPaths[] = {
    {"dravik-vral:vral/dravik-vral-statistics:flow-statistics/flow-statistic", MDTLM_VRALDCN_FLOW_AddTlmTask,
     MDTLM_VRALDCN_FLOW_DelTlmTask},
    {"dravik-vral:vral/dravik-vral-statistics:flow-hop-statistics/flow-hop-statistic",
     MDTLM_VRALDCN_FLOWHOP_AddTlmTask, MDTLM_VRALDCN_FLOWHOP_DelTlmTask},
    {"dravik-io-service-tlm:io-service-tlm/flow-statistics/flow-statistic", FWM_SRVTLM_FLOW_AddTlmTask,
     FWM_SRVTLM_FLOW_DelTlmTask},
    {"dravik-quma:quma/result-statistics/result-statistic", FWM_QUMA_FLOW_AddTlmTask, FWM_QUMA_FLOW_DelTlmTask},
    {"dravik-io-service-tlm:io-service-tlm/flow-throughput-statistics/flow-throughput-statistic",
     FWM_SRVTLM_FCTFLOW_AddTlmTask, FWM_SRVTLM_FCTFLOW_DelTlmTask},
    {"dravik-zelk:zelk/export-flow-caches/export-flow-cache", FWM_ZELK_FLOW_AddTlmTask, FWM_ZELK_FLOW_DelTlmTask},
};

template <typename T>
T At(const uint8_t *bytes, size_t offset)
{
    T value;
    std::memcpy(&value, bytes + offset, sizeof(value));
    return value;
}

} // namespace

TEST_F(FrameTest, RegistersSixPathsWithExactRecordsAndSurvivesARefusedPath)
{
    Fw().SetRegResult(kPaths[2].xpath, 6);
    ASSERT_EQ(MDTLM_VRALDCN_Init(7), 0u);

    auto regs = Fw().Registrations();
    ASSERT_EQ(regs.size(), 6u);
    const uint8_t zeros[32] = {};
    const uint8_t regParam[8] = {0x10, 0x27, 0x00, 0x00, 0x00, 0x00, 0x01, 0x00};
    const uint8_t one[8] = {0x01, 0, 0, 0, 0, 0, 0, 0};
    for (size_t i = 0; i < regs.size(); ++i) {
        SCOPED_TRACE(kPaths[i].xpath);
        const auto *bytes = reinterpret_cast<const uint8_t *>(&regs[i].info);
        EXPECT_EQ(regs[i].xpath, kPaths[i].xpath);
        EXPECT_EQ(std::memcmp(bytes, zeros, 32), 0);
        EXPECT_EQ(std::memcmp(bytes + 32, regParam, 8), 0);
        EXPECT_EQ(At<MDTLM_QUERY_FUNC>(bytes, 40), &MDTLM_VRALDCN_QueryFunc);
        EXPECT_EQ(At<MDTLM_DEL_TASK_FUNC>(bytes, 48), kPaths[i].del);
        EXPECT_EQ(std::memcmp(bytes + 56, one, 8), 0);
        EXPECT_EQ(At<MDTLM_ADD_TASK_FUNC>(bytes, 64), kPaths[i].add);
    }
    size_t registerLines = 0;
    for (const std::string &shape : Fw().Shapes()) {
        registerLines += shape.find("[SampleXpathRegister]") != std::string::npos;
    }
    EXPECT_EQ(registerLines, 1u);
    EXPECT_TRUE(Fw().HasShape(L("[SampleXpathRegister] failed, ret: 6, xpath: " + std::string(kPaths[2].xpath) + "."),
                              2));
    EXPECT_EQ(MDTLM_VRALDCN_QueryFunc(), 0u);
}
