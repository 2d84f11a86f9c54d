/*
 * The statistics channel server: the forwarding side sends one record per
 * message; the receive callback keeps the messages of sensors that have tasks
 * and copies each onto the statistics queue.
 */
#include <arpa/inet.h>

#include <cstdint>
#include <cstring>

#include "loss_counters.h"
#include "mdtlm_log.h"
#include "mdtlm_platform.h"
#include "mdtlm_vraldcn.h"
#include "platform_release.h"

extern "C" {
MDTLM_EXPORT void *g_mdtlmNtvVralDcnChanHandle = nullptr;
}

namespace {

constexpr char kServerName[] = "MDTLM_VRALDCN";
constexpr char kServerAddr[] = "127.0.0.1";
constexpr uint16_t kServerPort = 32090;
constexpr uint32_t kServerParam = 25;
constexpr uint32_t kServerFlags = 0;
constexpr size_t kServerHandleAreaSize = 16;

/* The message buffer size (header plus body) must fit in 32 bits. */
constexpr uint32_t kMaxBodyLen = UINT32_MAX - sizeof(MDTLM_STATS_MSG);

/* Record size of each sensor: a shorter body would make its handler read
 * past the copy, so such a message is refused at intake. */
struct SensorRecordSize {
    uint32_t sensorType;
    uint32_t recordSize;
};

constexpr SensorRecordSize kRecordSizes[] = {
    {MDTLM_SENSOR_VRAL_FLOW, sizeof(MDTLM_FLOW_STATS_REC)},
    {MDTLM_SENSOR_VRAL_FLOWHOP, sizeof(MDTLM_FLOWHOP_STATS_REC)},
    {MDTLM_SENSOR_SRVTLM_FLOW, sizeof(MDTLM_SRVTLM_FLOW_STATS_REC)},
    {MDTLM_SENSOR_QUMA_RESULT, sizeof(MDTLM_QUMA_RESULT_REC)},
    {MDTLM_SENSOR_SRVTLM_FCTFLOW, sizeof(MDTLM_SRVTLM_FCTFLOW_STATS_REC)},
    {MDTLM_SENSOR_ZELK_CACHE, sizeof(MDTLM_ZELK_CACHE_REC)},
};

uint32_t RecordSizeOf(uint32_t sensorType)
{
    for (const SensorRecordSize &row : kRecordSizes) {
        if (row.sensorType == sensorType) {
            return row.recordSize;
        }
    }
    return 0;
}

bool IsShortBody(const MDTLM_STATS_IPC_ENTRY &entry)
{
    /* A missing or empty body is not short: the copy step drops it silently. */
    return entry.body != nullptr && entry.msgLen != 0 && entry.msgLen < RecordSizeOf(entry.msgType);
}

/* Every handler reads exactly one record: the bytes behind it are never used,
 * so a longer body is kept only up to the record's size. That bounds what a
 * queued message costs whatever the sender puts in a datagram. */
uint32_t KeptBodyLen(const MDTLM_STATS_IPC_ENTRY &entry)
{
    const uint32_t recordSize = RecordSizeOf(entry.msgType);
    if (entry.body != nullptr && recordSize != 0 && entry.msgLen > recordSize) {
        MDTLM_LossAddOnWorker(MDTLM_LOSS_SLOT(cutBodyCnt));
        return recordSize;
    }
    return entry.msgLen;
}

/* Counts the entry that ended its batch and every entry behind it. */
void CountBatchStop(const MDTLM_STATS_IPC_ENTRY &entry, uint32_t entriesBehind)
{
    MDTLM_LossAddOnWorker(RecordSizeOf(entry.msgType) == 0 ? MDTLM_LOSS_SLOT(stopUnknownTypeCnt)
                                                             : MDTLM_LOSS_SLOT(stopNoTaskCnt));
    MDTLM_LossAddOnWorker(MDTLM_LOSS_SLOT(stopBehindCnt), entriesBehind);
}

} // namespace

extern "C" {

MDTLM_EXPORT uint32_t MDTLM_VRALDCN_STATS_IPC_InitServer(void)
{
    MDTLM_UCSERVER_CFG cfg = {};
    cfg.localAddr = inet_addr(kServerAddr);
    cfg.localPort = htons(kServerPort);
    cfg.peerAddr = inet_addr(kServerAddr);
    cfg.peerPort = htons(kServerPort);
    cfg.param = kServerParam;
    cfg.epollId = MDTLM_VRALDCN_THREAD_GetEpollId();
    cfg.recvFunc = MDTLM_VRALDCN_STATS_IPC_RecvMsgProc;

    uint8_t handleArea[kServerHandleAreaSize] = {};
    uint32_t ret = FWM_CHAN_UCServer(kServerName, kServerFlags, &cfg, handleArea);
    if (ret != 0) {
        MDTLM_LOG(MDTLM_LOG_FAILURE, "[NTVVRALDCN_STATS_IPC_InitServer] UCServer ret: %u.", ret);
        return 1;
    }
    void *server = nullptr;
    std::memcpy(&server, handleArea, sizeof(server));
    g_mdtlmNtvVralDcnChanHandle = server;
    MDTLM_LOG(MDTLM_LOG_SUCCESS, "[NTVVRALDCN_STATS_IPC_InitServer] success.");
    return 0;
}

MDTLM_EXPORT uint32_t MDTLM_VRALDCN_STATS_IPC_Init(void)
{
    uint32_t ret = MDTLM_VRALDCN_STATS_IPC_InitServer();
    if (ret != 0) {
        MDTLM_LOG(MDTLM_LOG_FAILURE, "[NTVVRALDCN_STATS_IPC_Init] IPC_InitSocket failed, ret: %u.", ret);
        return 1;
    }
    MDTLM_LOG(MDTLM_LOG_SUCCESS, "[NTVVRALDCN_STATS_IPC_Init] success.");
    return 0;
}

MDTLM_EXPORT uint32_t MDTLM_VRALDCN_STATS_IPC_RecvMsgProc(void *context, MDTLM_STATS_IPC_ENTRY *entries,
                                                          uint32_t entryCnt)
{
    (void)context;
    if (entries == nullptr || entryCnt == 0) {
        MDTLM_LOG(MDTLM_LOG_FAILURE, "[STATS_IPC_RecvMsgProc] Revc msg is null.");
        return 1;
    }
    MDTLM_LossAddOnWorker(MDTLM_LOSS_SLOT(recvMsgCnt), entryCnt);
    for (uint32_t i = 0; i < entryCnt; ++i) {
        const MDTLM_STATS_IPC_ENTRY &entry = entries[i];
        /* The first entry of a sensor without tasks ends the batch: it and
         * everything behind it are dropped before any copy. */
        if (MDTLM_VRALDCN_TASK_HasTlmTask(entry.msgType) == 0) {
            CountBatchStop(entry, entryCnt - i - 1);
            return 0;
        }
        if (IsShortBody(entry)) {
            MDTLM_LossAddOnWorker(MDTLM_LOSS_SLOT(shortBodyCnt));
            MDTLM_LOG(MDTLM_LOG_FAILURE, "[STATS_IPC_RecvMsgProc] Msg too short, msgType: %u, msgLen: %u.",
                      entry.msgType, entry.msgLen);
            continue;
        }
        MDTLM_VRALDCN_STATS_IPC_PushMsgToStatsQue(entry.msgType, entry.body, KeptBodyLen(entry));
    }
    return 0;
}

MDTLM_EXPORT void MDTLM_VRALDCN_STATS_IPC_PushMsgToStatsQue(uint32_t msgType, const void *body, uint32_t bodyLen)
{
    if (body == nullptr || bodyLen == 0) {
        MDTLM_LossAddOnWorker(MDTLM_LOSS_SLOT(emptyBodyCnt));
        return;
    }
    void *raw = nullptr;
    if (bodyLen <= kMaxBodyLen) {
        raw = MDTLM_VRALDCN_BufAlloc(static_cast<uint32_t>(sizeof(MDTLM_STATS_MSG)) + bodyLen);
    }
    if (raw == nullptr) {
        MDTLM_LossAddOnWorker(MDTLM_LOSS_SLOT(msgAllocFailCnt));
        MDTLM_LOG(MDTLM_LOG_FAILURE, "[PushMsgToStatsQue] Buff alloc failed buff is NULL, msgLen: %u,", bodyLen);
        return;
    }

    /* The copy belongs to the library; the channel's body is never kept. */
    MDTLM_STATS_MSG *msg = static_cast<MDTLM_STATS_MSG *>(raw);
    if (memcpy_s(msg->body, bodyLen, body, bodyLen) != 0) {
        MDTLM_LossAddOnWorker(MDTLM_LOSS_SLOT(msgAllocFailCnt));
        MDTLM_LOG(MDTLM_LOG_FAILURE, "[PushMsgToStatsQue] Buff alloc failed buff is NULL, msgLen: %u,", bodyLen);
        MDTLM_VRALDCN_BufFree(&raw);
        return;
    }
    msg->msgType = msgType;
    msg->msgLen = bodyLen;

    uint32_t ret = MDTLM_VRALDCN_STATS_QUE_Push(msg);
    if (ret != 0) {
        MDTLM_LossAddOnWorker(MDTLM_LOSS_SLOT(queueFullCnt));
        MDTLM_LOG(MDTLM_LOG_FAILURE, "[PushMsgToStatsQue] Push msg to task queue failed, %u.", ret);
        MDTLM_VRALDCN_BufFree(&raw);
        return;
    }
    MDTLM_LossAddOnWorker(MDTLM_LOSS_SLOT(queuedMsgCnt));
}

MDTLM_EXPORT void MDTLM_VRALDCN_STATS_IPC_DestroyServer(void)
{
    if (g_mdtlmNtvVralDcnChanHandle != nullptr) {
        void *server = g_mdtlmNtvVralDcnChanHandle;
        (void)MDTLM_PlatformRelease("channel server", [server] { return FWM_CHAN_UCServerDestory(server); });
        g_mdtlmNtvVralDcnChanHandle = nullptr;
    }
}

MDTLM_EXPORT void MDTLM_VRALDCN_STATS_IPC_Destroy(void)
{
    MDTLM_VRALDCN_STATS_IPC_DestroyServer();
}

} /* extern "C" */
