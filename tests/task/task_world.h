/* A started plug-in on manual tasks and clock; the test thread runs the worker. */
#ifndef MDTLM_TEST_TASK_WORLD_H
#define MDTLM_TEST_TASK_WORLD_H

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "fake_framework.h"
#include "mdtlm_host.h"
#include "mdtlm_vraldcn.h"
#include "plugin_fixture.h"

using Lines = std::vector<std::string>;
using Pairs = std::vector<std::pair<uint32_t, uint32_t>>;

class TaskWorld : public ManualHostTest {
protected:
    void SetUp() override;
    void TearDown() override;
    FakeFramework &fw() { return FakeFramework::Get(); }
    void Pump();
    uint32_t Add(uint32_t sensor, uint32_t instanceId, uint32_t taskId, uint32_t encode = 0, uint32_t ms = 1000);
    uint32_t Del(uint32_t sensor, uint32_t instanceId, uint32_t taskId);
    void Tick();
    void Queue(uint32_t sensor, const std::string &body, int times = 1);
    MDTLM_TASK_DATA *Task(uint32_t s, uint32_t i, uint32_t t) { return MDTLM_VRALDCN_GetTlmTaskInfo(s, i, t); }
    Pairs Walk(uint32_t sensor);
    Lines Logs() { return LevelAndText(); }
};

inline int64_t Sql(const std::string &query) { return MDTLM_HOST_DbQueryInt(query.c_str()); }
inline uint64_t Calls(MDTLM_HOST_OP op) { return MDTLM_HOST_CallCount(op); }

#endif /* MDTLM_TEST_TASK_WORLD_H */
