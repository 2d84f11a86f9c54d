/*
 * Drives the whole plug-in on the test's own thread: the framework double is
 * installed, the host runs no threads and no clock of its own, and the test
 * adds tasks, hands records to the statistics channel's receive callback and
 * runs period ticks itself. Teardown removes the tasks, then does what
 * ManualHostTest's does.
 */
#ifndef MDTLM_TEST_PLUGIN_FIXTURE_H
#define MDTLM_TEST_PLUGIN_FIXTURE_H

#include <cstdint>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "fake_framework.h"
#include "mdtlm_types.h"

/* Builds the sensor-path block of a task. */
class PathInfoBuilder {
public:
    explicit PathInfoBuilder(uint32_t encodeType = MDTLM_ENCODE_TYPE_GPB);

    PathInfoBuilder &Encode(uint32_t encodeType);
    PathInfoBuilder &Interval(uint32_t milliseconds);
    /* Appends a condition (name and value cut to their fields). */
    PathInfoBuilder &Condition(const std::string &name, const std::string &value);
    /* Appends a filter. */
    PathInfoBuilder &Filter(const std::string &name, uint8_t op, uint64_t threshold);
    /* MDTLM_FILTER_LOGIC_AND (1) or anything else for OR. */
    PathInfoBuilder &Logic(uint32_t logic);

    const MDTLM_SENSOR_PATH_INFO &Get() const { return info_; }

private:
    MDTLM_SENSOR_PATH_INFO info_{};
};

/* The captured log lines as "level text": the plug-in's label and line number
 * taken off; a line without the label fails the test. */
std::vector<std::string> LevelAndText();

/* A test on the manual host (manual_host.h). Teardown clears armed faults and
 * allocation failures, puts back the framework table as it was at set-up,
 * unloads the plug-in and checks that every buffer it allocated came back. */
class ManualHostTest : public ::testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    MDTLM_FRM_VTBL savedTable_{};
};

class PluginFixture : public ManualHostTest {
protected:
    static constexpr uint32_t kModuleId = 7;

    void SetUp() override;
    void TearDown() override;

    /* Adds a task through the sensor's add entry and runs the add event; the
     * task's data as the registry holds it (null if it was not added). */
    MDTLM_TASK_DATA *AddTask(uint32_t sensorType, uint32_t instanceId, uint32_t taskId,
                             const MDTLM_SENSOR_PATH_INFO &info);
    /* Deletes a task through the sensor's delete entry and runs the event. */
    void DelTask(uint32_t sensorType, uint32_t instanceId, uint32_t taskId);
    MDTLM_TASK_DATA *Task(uint32_t sensorType, uint32_t instanceId, uint32_t taskId) const;

    /* Runs whatever is ready on the worker's epoll instance. */
    void Pump();

    /* Hands the records to the channel's receive callback in one batch, one
     * message of `recordLen` bytes each; the callback's result. */
    uint32_t Deliver(uint32_t sensorType, const void *records, uint32_t recordLen, uint32_t count = 1);
    template <typename Rec>
    uint32_t Deliver(uint32_t sensorType, const std::vector<Rec> &records)
    {
        return Deliver(sensorType, records.data(), sizeof(Rec), static_cast<uint32_t>(records.size()));
    }
    template <typename Rec>
    uint32_t Deliver(uint32_t sensorType, const Rec &record)
    {
        return Deliver(sensorType, &record, sizeof(Rec), 1);
    }

    /* Runs one period tick on this thread: drain, encode, upload. */
    void Tick();

    std::vector<CapturedSample> Samples() const { return fw.Samples(); }

    FakeFramework &fw = FakeFramework::Get();

private:
    struct TaskKey {
        uint32_t sensorType;
        uint32_t instanceId;
        uint32_t taskId;
    };
    std::vector<TaskKey> tasks_;
};

#endif /* MDTLM_TEST_PLUGIN_FIXTURE_H */
