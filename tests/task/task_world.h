/*
 * A running plug-in for the task tests: framework double installed, manual
 * tasks and clock, the plug-in started, and helpers to add and delete tasks,
 * queue statistics messages and run period ticks on the test's thread.
 */
#ifndef MDTLM_TEST_TASK_WORLD_H
#define MDTLM_TEST_TASK_WORLD_H

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "fake_framework.h"
#include "mdtlm_types.h"

/* "[label:#]" followed by the text: the shape of a captured log line. */
std::string LogShape(const std::string &text);

MDTLM_SENSOR_PATH_INFO PathInfo(uint32_t encodeType, uint32_t sampleIntervalMs = 1000);

/* Test statistics handler installed in every row of the statistics map: the
 * message body is the record. It is appended to the task's buffer with the
 * buffer discipline (full buffer: upload, empty, append again). A body that
 * starts with '!' is rejected (result 0). */
uint32_t AppendBodyMsgProc(MDTLM_TASK_DATA *task, MDTLM_STATS_MSG *msg);

class TaskWorld : public ::testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    FakeFramework &fw() { return FakeFramework::Get(); }

    /* Runs whatever the worker loop has ready (events, timer expirations). */
    void Pump();
    /* Per-sensor entry, then the worker handles the event. */
    uint32_t Add(uint32_t sensorType, uint32_t instanceId, uint32_t taskId, uint32_t encodeType = 0,
                 uint32_t sampleIntervalMs = 1000);
    uint32_t Del(uint32_t sensorType, uint32_t instanceId, uint32_t taskId);
    /* One expiration of the period timer, handled completely. */
    void Tick();
    /* A statistics message with this body, pushed on the statistics queue. */
    void Queue(uint32_t sensorType, const std::string &body);

    MDTLM_TASK_DATA *Task(uint32_t sensorType, uint32_t instanceId, uint32_t taskId);
    /* (instanceId, taskId) of a sensor's tasks in walk order. */
    std::vector<std::pair<uint32_t, uint32_t>> Walk(uint32_t sensorType);
    size_t CountLogs(const std::string &text, int level = -1) { return fw().CountShape(LogShape(text), level); }
    int32_t StatsQueueCount();
};

#endif /* MDTLM_TEST_TASK_WORLD_H */
