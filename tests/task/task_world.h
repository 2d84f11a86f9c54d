/*
 * A running plug-in for the task tests: framework double installed, manual
 * tasks and clock, the plug-in started; helpers to add and delete tasks,
 * queue statistics messages and run period ticks on the test's thread.
 */
#ifndef MDTLM_TEST_TASK_WORLD_H
#define MDTLM_TEST_TASK_WORLD_H

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "fake_framework.h"
#include "mdtlm_host.h"
#include "mdtlm_vraldcn.h"

using Lines = std::vector<std::string>;
using Pairs = std::vector<std::pair<uint32_t, uint32_t>>;

/* Test statistics handler of every sensor: the message body is the record,
 * appended with the buffer discipline; a body starting with '!' is rejected. */
uint32_t AppendBodyMsgProc(MDTLM_TASK_DATA *task, MDTLM_STATS_MSG *msg);

class TaskWorld : public ::testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    FakeFramework &fw() { return FakeFramework::Get(); }
    void Pump() { MDTLM_HOST_EpollPump(g_mdtlmVralDcnEpollId, 0, 1); }
    /* Through the sensor's registered entry; the worker then handles the event. */
    uint32_t Add(uint32_t sensor, uint32_t instanceId, uint32_t taskId, uint32_t encode = 0, uint32_t ms = 1000);
    uint32_t Del(uint32_t sensor, uint32_t instanceId, uint32_t taskId);
    void Tick(); /* one expiration of the period timer, handled completely */
    void Queue(uint32_t sensor, const std::string &body, int times = 1);
    MDTLM_TASK_DATA *Task(uint32_t s, uint32_t i, uint32_t t) { return MDTLM_VRALDCN_GetTlmTaskInfo(s, i, t); }
    Pairs Walk(uint32_t sensor);
    /* Captured log lines, each reduced to its shape without the label. */
    Lines Logs();
    std::vector<uint32_t> ItemCounts();
    MDTLM_SAMPLE_BUFFER *NewBuffer(uint32_t dataLen, char fill);
    void FreeBuffer(MDTLM_SAMPLE_BUFFER *b) { MDTLM_VRALDCN_BufFree(reinterpret_cast<void **>(&b)); }
};

/* First column of the first row of a query on the object database. */
int64_t Sql(const std::string &query);

#endif /* MDTLM_TEST_TASK_WORLD_H */
