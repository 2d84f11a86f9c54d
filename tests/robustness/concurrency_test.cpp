/*
 * Several framework threads add and delete tasks of every sensor while the
 * forwarding side sends records over the channel and the real one-second
 * timer ticks; then the loop is stopped and the registry is compared with the
 * requests. Meant for ThreadSanitizer (make test-tsan), and a plain check of
 * the registry everywhere else.
 */
#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <map>
#include <random>
#include <thread>
#include <tuple>

#include "fake_framework.h"
#include "manual_host.h"
#include "mdtlm_host.h"
#include "mdtlm_vraldcn.h"
#include "scenario.h"

namespace {

using namespace std::chrono_literals;
using TaskKey = std::tuple<uint32_t, uint32_t, uint32_t>; /* sensor, instance, task */

constexpr uint32_t kFrameworkThreads = 4;
constexpr uint32_t kRequestsPerThread = 400;
constexpr uint32_t kTasksPerThreadAndSensor = 4;

/* Requests the current thread saw dropped by a full event queue (its entry
 * logs the push failure on the calling thread). */
thread_local uint32_t t_droppedHere = 0;

/* One datagram with a record of every sensor, framed as the channel expects. */
std::vector<uint8_t> TrafficDatagram()
{
    std::vector<uint8_t> datagram;
    for (const robustness::SensorRecord &record : robustness::Records()) {
        const uint32_t header[2] = {record.sensorType, static_cast<uint32_t>(record.body.size())};
        const auto *bytes = reinterpret_cast<const uint8_t *>(header);
        datagram.insert(datagram.end(), bytes, bytes + sizeof(header));
        datagram.insert(datagram.end(), record.body.begin(), record.body.end());
    }
    return datagram;
}

void SendTraffic(uint16_t port, const std::atomic<bool> &stop)
{
    int fd = socket(AF_INET, SOCK_DGRAM, 0);
    ASSERT_GE(fd, 0);
    sockaddr_in to{};
    to.sin_family = AF_INET;
    to.sin_port = htons(port);
    to.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    const std::vector<uint8_t> datagram = TrafficDatagram();
    while (!stop.load()) {
        (void)sendto(fd, datagram.data(), datagram.size(), 0, reinterpret_cast<sockaddr *>(&to), sizeof(to));
        std::this_thread::sleep_for(2ms);
    }
    close(fd);
}

/* One framework thread: random adds and deletes on its own tasks of every
 * sensor; the last accepted request for each task. */
std::map<TaskKey, bool> RunRequests(uint32_t thread, uint32_t *dropped)
{
    std::mt19937 random(1234 + thread);
    std::map<TaskKey, bool> lastIsAdd;
    for (uint32_t i = 0; i < kRequestsPerThread; ++i) {
        const uint32_t sensor = 1 + random() % MDTLM_SENSOR_COUNT;
        const uint32_t instance = 1 + random() % 2;
        const uint32_t task = thread * 100 + random() % kTasksPerThreadAndSensor;
        const bool add = random() % 3 != 0;
        const MDTLM_XPATH_NODE &node = g_mdtlmVralDcnXpathNode[sensor - 1];
        const uint32_t droppedBefore = t_droppedHere;
        uint32_t result = 0;
        if (add) {
            MDTLM_SENSOR_PATH_INFO block = robustness::TaskBlock(random() % 2);
            result = node.addFunc(instance, task, &block);
        } else {
            result = node.delFunc(instance, task);
        }
        if (result == 0 && t_droppedHere == droppedBefore) {
            lastIsAdd[{sensor, instance, task}] = add;
        }
        if (i % 50 == 49) {
            std::this_thread::sleep_for(1ms); /* let the worker catch up now and then */
        }
    }
    *dropped = t_droppedHere;
    return lastIsAdd;
}

bool WaitForEmptyEventQueue()
{
    for (int i = 0; i < 2000; ++i) {
        void *queue = MDTLM_HOST_QueueFind("MDTLM_VRALDCN_EVENT");
        if (queue == nullptr || MDTLM_HOST_QueueCount(queue) == 0) {
            return true;
        }
        std::this_thread::sleep_for(5ms);
    }
    return false;
}

} // namespace

TEST(Concurrency, AddAndDeleteFromManyThreadsWhileRecordsFlowAndTicksRun)
{
    manual_host::Prepare();
    FakeFramework &fw = FakeFramework::Get();
    fw.OnLog([](uint32_t, const std::string &text) {
        if (text.find("push task to event queue failed") != std::string::npos &&
            text.find("TlmTask]") != std::string::npos) {
            ++t_droppedHere;
        }
    });
    MDTLM_HOST_SetManualTasks(0); /* real threads and clock */
    MDTLM_HOST_SetManualClock(0);
    ASSERT_EQ(MDTLM_VRALDCN_Init(7), 0u);
    const uint16_t port = MDTLM_HOST_ChanLocalPort(nullptr);
    ASSERT_NE(port, 0);

    std::atomic<bool> stopTraffic{false};
    std::thread sender(SendTraffic, port, std::cref(stopTraffic));

    std::vector<std::map<TaskKey, bool>> results(kFrameworkThreads);
    std::vector<uint32_t> dropped(kFrameworkThreads, 0);
    std::vector<std::thread> framework;
    for (uint32_t t = 0; t < kFrameworkThreads; ++t) {
        framework.emplace_back([&, t] { results[t] = RunRequests(t, &dropped[t]); });
    }
    for (std::thread &thread : framework) {
        thread.join();
    }
    std::this_thread::sleep_for(2500ms); /* at least two ticks with records */
    stopTraffic.store(true);
    sender.join();

    /* Every accepted request has been handled once the queue is empty; the
     * loop is then stopped, and joining the worker makes its state ours. */
    ASSERT_TRUE(WaitForEmptyEventQueue());
    MDTLM_VRALDCN_THREAD_Destroy();
    EXPECT_EQ(MDTLM_HOST_JoinTasks(), 1u);

    uint32_t droppedTotal = 0;
    size_t expectedTasks = 0;
    for (uint32_t t = 0; t < kFrameworkThreads; ++t) {
        droppedTotal += dropped[t];
        for (const auto &[key, isAdd] : results[t]) {
            const auto &[sensor, instance, task] = key;
            SCOPED_TRACE("sensor " + std::to_string(sensor) + " task " + std::to_string(instance) + "/" +
                         std::to_string(task));
            EXPECT_EQ(MDTLM_VRALDCN_GetTlmTaskInfo(sensor, instance, task) != nullptr, isAdd);
            expectedTasks += isAdd ? 1 : 0;
        }
    }
    size_t linked = 0;
    for (uint32_t sensor = 1; sensor <= MDTLM_SENSOR_COUNT; ++sensor) {
        MDTLM_LIST_LINK *head = MDTLM_VRALDCN_TASK_GetTaskHead(sensor);
        for (MDTLM_LIST_LINK *link = head->next; link != head; link = link->next) {
            ++linked;
        }
    }
    EXPECT_EQ(linked, expectedTasks) << "tasks no request asked for";

    MDTLM_LOSS_COUNTERS losses{};
    ASSERT_EQ(MDTLM_VRALDCN_STATS_GetLossCounters(&losses), 0u);
    EXPECT_EQ(losses.addDroppedCnt + losses.delDroppedCnt, droppedTotal);
    EXPECT_GT(losses.handledMsgCnt, 0u);
    EXPECT_FALSE(fw.Samples().empty());

    MDTLM_VRALDCN_Unload();
    fw.OnLog(nullptr);
    EXPECT_EQ(fw.Outstanding(), 0);
    EXPECT_EQ(manual_host::Leftovers(), std::vector<std::string>{});
    std::printf("requests dropped on a full event queue: %u of %u; tasks at the end: %zu\n", droppedTotal,
                kFrameworkThreads * kRequestsPerThread, expectedTasks);
}
