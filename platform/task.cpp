/*
 * Tasks: named POSIX threads that run an entry function to its return.
 *
 * Every task is recorded with its id; hosts join the threads through
 * MDTLM_HOST_JoinTasks. In manual mode a task is recorded and no thread
 * starts: the host drives the task's loop itself with MDTLM_HOST_EpollPump.
 */
#include <pthread.h>

#include <atomic>
#include <cstring>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "mdtlm_platform.h"
#include "platform_internal.h"

namespace {

using TaskEntry = uint32_t (*)(void);

constexpr size_t kThreadNameMax = 15; /* the kernel keeps 15 characters and a NUL */
constexpr size_t kParamBlockSize = 32;

struct Task {
    uint32_t id = 0;
    std::string name;
    TaskEntry entry = nullptr;
    uint32_t priority = 0; /* recorded; host threads run at the default priority */
    uint32_t flags = 0;
    uint8_t param[kParamBlockSize] = {};
    bool started = false;      /* a thread exists */
    bool joinClaimed = false;  /* a joiner has taken it */
    std::atomic<bool> returned{false};
    pthread_t thread{};
};

struct TaskTable {
    std::mutex mu;
    std::vector<std::shared_ptr<Task>> tasks;
    uint32_t nextId = 1;
    bool manual = false;
};

TaskTable &Tasks()
{
    static TaskTable *table = new TaskTable(); /* lives as long as the process */
    return *table;
}

void *RunTask(void *arg)
{
    std::unique_ptr<std::shared_ptr<Task>> owned(static_cast<std::shared_ptr<Task> *>(arg));
    std::shared_ptr<Task> task = *owned;
    pthread_setname_np(pthread_self(), task->name.c_str());
    task->entry();
    task->returned.store(true);
    return nullptr;
}

/* Starts the task's thread; false when the system refuses it. */
bool StartThread(const std::shared_ptr<Task> &task, uintptr_t stackSize)
{
    pthread_attr_t attr;
    if (pthread_attr_init(&attr) != 0)
        return false;
    if (stackSize >= static_cast<uintptr_t>(PTHREAD_STACK_MIN))
        pthread_attr_setstacksize(&attr, stackSize);
    auto *arg = new std::shared_ptr<Task>(task);
    int rc = pthread_create(&task->thread, &attr, RunTask, arg);
    pthread_attr_destroy(&attr);
    if (rc != 0) {
        delete arg;
        return false;
    }
    return true;
}

} /* namespace */

MDTLM_PLATFORM_API uint32_t PAL_TaskCreate(const char *name, uint32_t *taskId, uint32_t (*entry)(void),
                                           uint32_t priority, uintptr_t stackSize, uint32_t flags, void *param)
{
    int64_t injected;
    if (mdtlm_host::FaultCheck(MDTLM_HOST_OP_TASK_CREATE, &injected))
        return static_cast<uint32_t>(injected);
    if (taskId == nullptr || entry == nullptr)
        return 1;

    auto task = std::make_shared<Task>();
    task->name = std::string(name != nullptr ? name : "").substr(0, kThreadNameMax);
    task->entry = entry;
    task->priority = priority;
    task->flags = flags;
    if (param != nullptr)
        std::memcpy(task->param, param, kParamBlockSize);

    TaskTable &table = Tasks();
    std::lock_guard<std::mutex> lock(table.mu);
    if (!table.manual) {
        if (!StartThread(task, stackSize))
            return 1;
        task->started = true;
    }
    task->id = table.nextId++;
    table.tasks.push_back(task);
    *taskId = task->id;
    return 0;
}

MDTLM_PLATFORM_API void MDTLM_HOST_SetManualTasks(int enabled)
{
    TaskTable &table = Tasks();
    std::lock_guard<std::mutex> lock(table.mu);
    table.manual = enabled != 0;
}

MDTLM_PLATFORM_API uint32_t MDTLM_HOST_JoinTasks(void)
{
    TaskTable &table = Tasks();
    uint32_t joined = 0;
    /* Threads may start further tasks while we wait: take rounds until none is left. */
    for (;;) {
        std::vector<std::shared_ptr<Task>> round;
        {
            std::lock_guard<std::mutex> lock(table.mu);
            for (auto &task : table.tasks) {
                if (task->started && !task->joinClaimed && !pthread_equal(task->thread, pthread_self())) {
                    task->joinClaimed = true;
                    round.push_back(task);
                }
            }
        }
        if (round.empty())
            return joined;
        for (auto &task : round) {
            pthread_join(task->thread, nullptr);
            joined++;
        }
    }
}

MDTLM_PLATFORM_API uint32_t MDTLM_HOST_RunningTasks(void)
{
    TaskTable &table = Tasks();
    std::lock_guard<std::mutex> lock(table.mu);
    uint32_t running = 0;
    for (auto &task : table.tasks) {
        if (task->started && !task->returned.load())
            running++;
    }
    return running;
}
