#include "manual_host.h"

#include "fake_framework.h"
#include "mdtlm_host.h"
#include "mdtlm_vraldcn.h"

namespace manual_host {

void Prepare()
{
    FakeFramework &fw = FakeFramework::Get();
    fw.Reset();
    fw.Install();
    MDTLM_HOST_FaultClear();
    MDTLM_HOST_HpxClear();
    MDTLM_HOST_CallCountReset();
    MDTLM_HOST_SetManualTasks(1);
    MDTLM_HOST_SetManualClock(1);
    MDTLM_HOST_ChanSetPortOverride(1, 0);
}

uint32_t Pump() { return MDTLM_HOST_EpollPump(g_mdtlmVralDcnEpollId, 0, 1); }

uint32_t Tick()
{
    const uint32_t fired = g_mdtlmVralDcnTimerId > 0 ? MDTLM_HOST_TimerFire(g_mdtlmVralDcnTimerId, 1) : 1;
    Pump();
    return fired;
}

uint32_t Deliver(std::vector<MDTLM_STATS_IPC_ENTRY> &entries)
{
    return MDTLM_VRALDCN_STATS_IPC_RecvMsgProc(nullptr, entries.data(), static_cast<uint32_t>(entries.size()));
}

void Unload()
{
    MDTLM_VRALDCN_Unload();
    MDTLM_HOST_JoinTasks();
}

bool HandlesCleared()
{
    return g_mdtlmVralDcnEpollId == UINT32_MAX && g_mdtlmVralDcnTimerId == -1 && g_mdtlmVralDcnTaskEventHdl == nullptr &&
           g_mdtlmNtvVralDcnStatsQueHdl == nullptr && g_mdtlmNtvVralDcnChanHandle == nullptr;
}

std::vector<std::string> Leftovers()
{
    std::vector<std::string> left;
    auto expect = [&left](bool holds, const std::string &what) {
        if (!holds) {
            left.push_back(what);
        }
    };
    const int64_t buffers = FakeFramework::Get().Outstanding();
    expect(buffers == 0, std::to_string(buffers) + " buffers outstanding");
    expect(MDTLM_HOST_DbOpenHandles() == 0, std::to_string(MDTLM_HOST_DbOpenHandles()) + " database handles open");
    expect(MDTLM_HOST_HpxOutstanding() == 0, "hot-patch arrays not given back");
    const char *kinds[MDTLM_HOST_OBJECT_COUNT] = {"queues", "epoll instances", "timers", "channel servers"};
    for (int kind = 0; kind < MDTLM_HOST_OBJECT_COUNT; ++kind) {
        const uint32_t live = MDTLM_HOST_LiveObjects(static_cast<MDTLM_HOST_OBJECT>(kind));
        expect(live == 0, std::to_string(live) + " " + kinds[kind] + " alive");
    }
    expect(HandlesCleared(), "plug-in handles not cleared");
    expect(MDTLM_HOST_RunningTasks() == 0, "threads still running");
    return left;
}

} // namespace manual_host
