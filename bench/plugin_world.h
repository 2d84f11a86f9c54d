/*
 * The plug-in started on the host platform for a benchmark: manual timers and
 * loops driven by the benchmark's thread, the in-memory object database, a
 * statistics channel on a free port, and `tasks` flow tasks of one encoding.
 * The framework's table is a minimal one: malloc'ed buffers, uploads and log
 * lines accepted and dropped. Stopped again when the benchmark ends.
 */
#ifndef MDTLM_BENCH_PLUGIN_WORLD_H
#define MDTLM_BENCH_PLUGIN_WORLD_H

#include <cstdlib>
#include <cstring>

#include "mdtlm_host.h"
#include "mdtlm_vraldcn.h"

namespace plugin_world {

inline uint32_t AcceptRegistration(uint32_t, const char *, const MDTLM_XPATH_REG_INFO *) { return 0; }
inline uint32_t AcceptSample(uint32_t, MDTLM_SAMPLE_BUFFER *) { return 0; }
inline uint32_t DropLine(uint32_t, uint32_t, const char *) { return 0; }
inline void *Allocate(uint32_t, uint32_t size) { return std::malloc(size); }
inline void Release(uint32_t, void *buf) { std::free(buf); }

class PluginWorld {
public:
    PluginWorld(uint32_t tasks, uint32_t encodeType)
    {
        table_.RegXpath = AcceptRegistration;
        table_.SampleDataUpload = AcceptSample;
        table_.WriteLog = DropLine;
        table_.BufAlloc = Allocate;
        table_.BufFree = Release;
        MDTLM_HOST_SetFrameworkTable(&table_);
        MDTLM_HOST_DbOpen(nullptr);
        MDTLM_HOST_SetManualTasks(1);
        MDTLM_HOST_SetManualClock(1);
        MDTLM_HOST_ChanSetPortOverride(1, 0);
        ok_ = MDTLM_VRALDCN_Init(1) == 0;
        for (uint32_t t = 0; ok_ && t < tasks; ++t) {
            MDTLM_SENSOR_PATH_INFO info{};
            info.encodeType = encodeType;
            info.sampleInterval = 1000;
            ok_ = g_mdtlmVralDcnXpathNode[0].addFunc(1, t + 1, &info) == 0;
            Pump();
        }
        Tick(); /* the first tick allocates the sample buffers and database rows */
    }
    ~PluginWorld()
    {
        Pump();
        MDTLM_VRALDCN_Unload();
        MDTLM_HOST_JoinTasks();
        MDTLM_HOST_DbClose();
    }
    bool Ok() const { return ok_; }

    void Queue(const MDTLM_FLOW_STATS_REC &rec, uint32_t count)
    {
        for (uint32_t i = 0; i < count; ++i) {
            auto *msg = static_cast<MDTLM_STATS_MSG *>(MDTLM_VRALDCN_BufAlloc(sizeof(MDTLM_STATS_MSG) + sizeof(rec)));
            msg->msgType = MDTLM_SENSOR_VRAL_FLOW;
            msg->msgLen = sizeof(rec);
            std::memcpy(msg->body, &rec, sizeof(rec));
            if (MDTLM_VRALDCN_STATS_QUE_Push(msg) != 0) {
                MDTLM_VRALDCN_BufFree(reinterpret_cast<void **>(&msg));
            }
        }
    }
    void Tick()
    {
        MDTLM_HOST_TimerFire(g_mdtlmVralDcnTimerId, 1);
        Pump();
    }

    static void Pump() { MDTLM_HOST_EpollPump(g_mdtlmVralDcnEpollId, 0, 1); }

private:
    MDTLM_FRM_VTBL table_{};
    bool ok_ = false;
};

} // namespace plugin_world

#endif /* MDTLM_BENCH_PLUGIN_WORLD_H */
