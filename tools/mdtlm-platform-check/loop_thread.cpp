/*
 * The loop task. Its entry takes no argument, so the instance it runs and
 * what it observed live in module globals; a check process runs one loop.
 */
#include "loop_thread.h"

#include <atomic>

namespace mdtlm::check {
namespace {

using namespace std::chrono_literals;

const PlatformApi *g_loopApi = nullptr;
std::atomic<int32_t> g_loopEpollId{-1};
std::atomic<bool> g_loopEntered{false};
std::atomic<bool> g_loopReturned{false};
std::atomic<std::thread::id> g_loopThreadId{};

uint32_t LoopEntry()
{
    g_loopThreadId.store(std::this_thread::get_id());
    g_loopEntered.store(true);
    g_loopApi->FWM_EPOLL_Run(static_cast<uint32_t>(g_loopEpollId.load()), 5, -1);
    g_loopReturned.store(true);
    return 0;
}

} // namespace

LoopThread::LoopThread(const PlatformApi &api, Findings &findings) : api_(api), findings_(findings)
{
    epollId_ = api.FWM_EPOLL_Create();
    if (!findings.Expect(epollId_ >= 0, "FWM_EPOLL_Create returned " + std::to_string(epollId_))) {
        return;
    }
    g_loopApi = &api;
    g_loopEpollId.store(epollId_);
    uint32_t taskId = 0;
    uint8_t param[32] = {};
    uint32_t ret = api.PAL_TaskCreate("MDTLM_VRALDCN_STATS", &taskId, LoopEntry, 1, 0, 0, param);
    if (!findings.Expect(ret == 0, "PAL_TaskCreate returned " + std::to_string(ret))) {
        return;
    }
    started_ = findings.Expect(WaitFor([] { return g_loopEntered.load(); }, 2s),
                               "the task's entry did not run within 2 s of PAL_TaskCreate");
}

LoopThread::~LoopThread()
{
    if (epollId_ >= 0 && !stopped_) {
        Stop();
    }
}

bool LoopThread::OnLoopThread()
{
    return g_loopEntered.load() && std::this_thread::get_id() == g_loopThreadId.load();
}

bool LoopThread::Stop()
{
    stopped_ = true;
    uint32_t ret = api_.FWM_EPOLL_Destroy(static_cast<uint32_t>(epollId_));
    findings_.Expect(ret == 0, "FWM_EPOLL_Destroy returned " + std::to_string(ret));
    if (!started_) {
        return true;
    }
    return WaitFor([] { return g_loopReturned.load(); }, 2s);
}

} // namespace mdtlm::check
