/*
 * Exported entries and module globals of libmdtlm_vraldcn.so.
 *
 * Every name here has C linkage and default visibility: the framework, a host
 * or a test reaches it by this name.
 */
#ifndef MDTLM_VRALDCN_H
#define MDTLM_VRALDCN_H

#include <stdint.h>

#include "mdtlm_types.h"

#ifdef __cplusplus
extern "C" {
#endif

#define MDTLM_EXPORT __attribute__((visibility("default")))

/* ======================================================== module lifecycle */

MDTLM_EXPORT extern uint32_t g_vralDcnTlmModuleId;
MDTLM_EXPORT extern MDTLM_FRM_VTBL *g_vralDcnTlmFrmVtbl;

MDTLM_EXPORT uint32_t MDTLM_VRALDCN_Init(uint32_t moduleId);
MDTLM_EXPORT void MDTLM_VRALDCN_Destory(void);
/* Full unload for hosts that remove the plug-in: stops the loop and releases
 * everything the plug-in still holds (queues with their contents, timer, tasks,
 * buffers). The host joins the worker thread afterwards. */
MDTLM_EXPORT void MDTLM_VRALDCN_Unload(void);
MDTLM_EXPORT uint32_t MDTLM_VRALDCN_InitTlmFrmVtbl(void);
MDTLM_EXPORT MDTLM_FRM_VTBL *MDTLM_VRALDCN_GetTlmFrmVtbl(void);
MDTLM_EXPORT uint32_t MDTLM_VRALDCN_GetModuleId(void);
MDTLM_EXPORT uint32_t MDTLM_VRALDCN_QueryFunc(void);
MDTLM_EXPORT void *MDTLM_VRALDCN_BufAlloc(uint32_t size);
MDTLM_EXPORT void MDTLM_VRALDCN_BufFree(void **buf);
MDTLM_EXPORT uint32_t MDTLM_VRALDCN_WriteTlmLog(uint32_t level, const char *format, ...)
    __attribute__((format(printf, 2, 3)));

/* ======================================================== sensor catalogue */

MDTLM_EXPORT extern MDTLM_XPATH_NODE g_mdtlmVralDcnXpathNode[MDTLM_SENSOR_COUNT];
MDTLM_EXPORT extern MDTLM_STATS_MAP_ENTRY g_femMdtlmStatsMap[MDTLM_SENSOR_COUNT];
MDTLM_EXPORT extern MDTLM_TASK_LIST_ENTRY g_vralDcnTlmTaskListMap[MDTLM_SENSOR_COUNT];
MDTLM_EXPORT extern MDTLM_PATH_NAME_ENTRY g_femMdtlmPathNamList[MDTLM_SENSOR_COUNT];
/* Per sensor, in sensor-type order: the maps and comparison forms its handler
 * uses, for hosts that check or document task configurations. */
MDTLM_EXPORT extern const MDTLM_FIELD_CATALOGUE_ENTRY g_mdtlmFieldCatalogue[MDTLM_SENSOR_COUNT];

MDTLM_EXPORT extern MDTLM_LIST_LINK g_vralDcnTlmFlowTaskListHead;
MDTLM_EXPORT extern MDTLM_LIST_LINK g_vralDcnTlmFlowHopTaskListHead;
MDTLM_EXPORT extern MDTLM_LIST_LINK g_srvtlmTaskListHead;
MDTLM_EXPORT extern MDTLM_LIST_LINK g_qumaTaskListHead;
MDTLM_EXPORT extern MDTLM_LIST_LINK g_srvtlmFctTaskListHead;
MDTLM_EXPORT extern MDTLM_LIST_LINK g_zelkTaskListHead;

MDTLM_EXPORT extern MDTLM_SAMPLE_DATA g_mdtlmVralDcnFlowSampleData;
MDTLM_EXPORT extern MDTLM_SAMPLE_DATA g_mdtlmVralDcnFlowHopSampleData;
MDTLM_EXPORT extern MDTLM_SAMPLE_DATA g_mdtlmSrvtlmSampleData;
MDTLM_EXPORT extern MDTLM_SAMPLE_DATA g_mdtlmQumaSampleData;
MDTLM_EXPORT extern MDTLM_SAMPLE_DATA g_mdtlmSrvtlmFctSampleData;
MDTLM_EXPORT extern MDTLM_SAMPLE_DATA g_mdtlmZelkSampleData;

MDTLM_EXPORT extern const char *const MDTLM_VRALDCN_FLOW_STATS_JSON_TEMPLATE;
MDTLM_EXPORT extern const char *const MDTLM_VRALDCN_FLOWHOP_STATS_JSON_TEMPLATE;
MDTLM_EXPORT extern const char *const MDTLM_SRVTLM_FLOW_STATS_JSON_TEMPLATE;
MDTLM_EXPORT extern const char *const MDTLM_QUMA_STATS_JSON_TEMPLATE;
MDTLM_EXPORT extern const char *const MDTLM_SRVTLM_FCTFLOW_STATS_JSON_TEMPLATE;
MDTLM_EXPORT extern const char *const MDTLM_ZELK_STATS_JSON_TEMPLATE;

MDTLM_EXPORT uint32_t MDTLM_VRALDCN_SampleXpathRegister(void);

/* ========================================================== hot-patch hooks */

MDTLM_EXPORT void FWM_MDTLM_VRALDCN_C2HActive(void);
MDTLM_EXPORT void FWM_MDTLM_VRALDCN_C2HDeactive(void);
MDTLM_EXPORT uint32_t libmdtlm_vraldcn_PAT_C2HSyncHookFunc(int32_t operation, void *handle, void *record,
                                                           uint32_t *flag);
MDTLM_EXPORT uint32_t FWM_MDTLM_PatchReservedFun1(void);
MDTLM_EXPORT uint32_t FWM_MDTLM_PatchReservedFun2(void);
MDTLM_EXPORT uint32_t FWM_MDTLM_PatchReservedFun3(void);
MDTLM_EXPORT uint32_t FWM_MDTLM_PatchReservedFun4(void);
MDTLM_EXPORT uint32_t FWM_MDTLM_PatchReservedFun5(void);
MDTLM_EXPORT uint32_t FWM_MDTLM_PatchReservedFun6(void);
MDTLM_EXPORT uint32_t FWM_MDTLM_PatchReservedFun7(void);
MDTLM_EXPORT uint32_t FWM_MDTLM_PatchReservedFun8(void);
MDTLM_EXPORT uint32_t FWM_MDTLM_PatchReservedFun9(void);
MDTLM_EXPORT uint32_t FWM_MDTLM_PatchReservedFun10(void);

/* ============================================================= event queue */

MDTLM_EXPORT extern void *g_mdtlmVralDcnTaskEventHdl;
MDTLM_EXPORT extern MDTLM_EVENT_PROC_FUNC g_mdtlmVralDcnEventProcList[MDTLM_EVENT_TYPE_COUNT];

MDTLM_EXPORT uint32_t MDTLM_VRALDCN_EVENT_Init(void);
MDTLM_EXPORT uint32_t MDTLM_VRALDCN_EVENT_Push(MDTLM_EVENT_MSG *event);
MDTLM_EXPORT uint32_t MDTLM_VRALDCN_EVENT_Pop(void *queue);
MDTLM_EXPORT uint32_t MDTLM_VRALDCN_EVENT_FlowCtrlProc(uint32_t event);
MDTLM_EXPORT void MDTLM_VRALDCN_EVENT_Destroy(void);

/* ================================================ worker thread and timer */

MDTLM_EXPORT extern uint32_t g_mdtlmVralDcnEpollId;
MDTLM_EXPORT extern uint32_t g_mdtlmVralDcnStatsTaskId;
MDTLM_EXPORT extern int32_t g_mdtlmVralDcnTimerId;
MDTLM_EXPORT extern uint32_t g_mdtlmVralTimerSecondCnt;

MDTLM_EXPORT uint32_t MDTLM_VRALDCN_THREAD_Init(void);
MDTLM_EXPORT uint32_t MDTLM_VRALDCN_THREAD_CreateEpoll(void);
MDTLM_EXPORT uint32_t MDTLM_VRALDCN_THREAD_CreateStatsTask(void);
MDTLM_EXPORT uint32_t MDTLM_VRALDCN_THREAD_StatsMain(void);
MDTLM_EXPORT void MDTLM_VRALDCN_THREAD_Destroy(void);
MDTLM_EXPORT uint32_t MDTLM_VRALDCN_THREAD_GetEpollId(void);
MDTLM_EXPORT uint32_t MDTLM_VRALDCN_STATS_CreateTimer(void);
MDTLM_EXPORT uint32_t MDTLM_VRALDCN_STATS_TimerCallback(void);
MDTLM_EXPORT uint32_t MDTLM_VRALDCN_STATS_PushStatsEventToQue(uint32_t secondCnt);
MDTLM_EXPORT uint32_t MDTLM_VRALDCN_STATS_GetTimerSecondCnt(void);
MDTLM_EXPORT void MDTLM_VRALDCN_STATS_DestroyTimer(void);

/* =============================================== statistics channel/queue */

MDTLM_EXPORT extern void *g_mdtlmNtvVralDcnStatsQueHdl;
MDTLM_EXPORT extern void *g_mdtlmNtvVralDcnChanHandle;

MDTLM_EXPORT uint32_t MDTLM_VRALDCN_STATS_Init(void);
MDTLM_EXPORT void MDTLM_VRALDCN_STATS_Destory(void);
MDTLM_EXPORT uint32_t MDTLM_VRALDCN_STATS_IPC_Init(void);
MDTLM_EXPORT uint32_t MDTLM_VRALDCN_STATS_IPC_InitServer(void);
MDTLM_EXPORT uint32_t MDTLM_VRALDCN_STATS_IPC_RecvMsgProc(void *context, MDTLM_STATS_IPC_ENTRY *entries,
                                                          uint32_t entryCnt);
MDTLM_EXPORT void MDTLM_VRALDCN_STATS_IPC_PushMsgToStatsQue(uint32_t msgType, const void *body, uint32_t bodyLen);
MDTLM_EXPORT void MDTLM_VRALDCN_STATS_IPC_Destroy(void);
MDTLM_EXPORT void MDTLM_VRALDCN_STATS_IPC_DestroyServer(void);
/* Messages refused at intake because their body is shorter than the sensor's record. */
MDTLM_EXPORT uint64_t MDTLM_VRALDCN_STATS_IPC_GetShortMsgCnt(void);
/* Messages queued with their body cut to the sensor's record size. */
MDTLM_EXPORT uint64_t MDTLM_VRALDCN_STATS_IPC_GetCutMsgCnt(void);
/* Every loss counter at once; 0 when filled, 1 for a null record. Safe from any thread. */
MDTLM_EXPORT uint32_t MDTLM_VRALDCN_STATS_GetLossCounters(MDTLM_LOSS_COUNTERS *counters);
MDTLM_EXPORT uint32_t MDTLM_VRALDCN_STATS_QUE_Create(void);
MDTLM_EXPORT uint32_t MDTLM_VRALDCN_STATS_QUE_Push(MDTLM_STATS_MSG *msg);
MDTLM_EXPORT MDTLM_STATS_MSG *MDTLM_VRALDCN_STATS_QUE_Pop(void);
MDTLM_EXPORT uint32_t MDTLM_VRALDCN_STATS_QUE_FlowCtrlProc(uint32_t event);
MDTLM_EXPORT void MDTLM_VRALDCN_STATS_QUE_Destroy(void);

/* ============================================================ task registry */

MDTLM_EXPORT uint32_t MDTLM_VRALDCN_FLOW_AddTlmTask(uint32_t instanceId, uint32_t taskId,
                                                    const MDTLM_SENSOR_PATH_INFO *pathInfo);
MDTLM_EXPORT uint32_t MDTLM_VRALDCN_FLOW_DelTlmTask(uint32_t instanceId, uint32_t taskId);
MDTLM_EXPORT uint32_t MDTLM_VRALDCN_FLOWHOP_AddTlmTask(uint32_t instanceId, uint32_t taskId,
                                                       const MDTLM_SENSOR_PATH_INFO *pathInfo);
MDTLM_EXPORT uint32_t MDTLM_VRALDCN_FLOWHOP_DelTlmTask(uint32_t instanceId, uint32_t taskId);
MDTLM_EXPORT uint32_t FWM_SRVTLM_FLOW_AddTlmTask(uint32_t instanceId, uint32_t taskId,
                                                 const MDTLM_SENSOR_PATH_INFO *pathInfo);
MDTLM_EXPORT uint32_t FWM_SRVTLM_FLOW_DelTlmTask(uint32_t instanceId, uint32_t taskId);
MDTLM_EXPORT uint32_t FWM_QUMA_FLOW_AddTlmTask(uint32_t instanceId, uint32_t taskId,
                                               const MDTLM_SENSOR_PATH_INFO *pathInfo);
MDTLM_EXPORT uint32_t FWM_QUMA_FLOW_DelTlmTask(uint32_t instanceId, uint32_t taskId);
MDTLM_EXPORT uint32_t FWM_SRVTLM_FCTFLOW_AddTlmTask(uint32_t instanceId, uint32_t taskId,
                                                    const MDTLM_SENSOR_PATH_INFO *pathInfo);
MDTLM_EXPORT uint32_t FWM_SRVTLM_FCTFLOW_DelTlmTask(uint32_t instanceId, uint32_t taskId);
MDTLM_EXPORT uint32_t FWM_ZELK_FLOW_AddTlmTask(uint32_t instanceId, uint32_t taskId,
                                               const MDTLM_SENSOR_PATH_INFO *pathInfo);
MDTLM_EXPORT uint32_t FWM_ZELK_FLOW_DelTlmTask(uint32_t instanceId, uint32_t taskId);

MDTLM_EXPORT uint32_t MDTLM_VRALDCN_AddTlmTask(uint32_t sensorType, uint32_t instanceId, uint32_t taskId,
                                               const MDTLM_SENSOR_PATH_INFO *pathInfo);
MDTLM_EXPORT uint32_t MDTLM_VRALDCN_DelTlmTask(uint32_t sensorType, uint32_t instanceId, uint32_t taskId);
MDTLM_EXPORT uint32_t MDTLM_VRALDCN_TASK_AddTlmTaskToList(void *payload, uint32_t payloadLen);
MDTLM_EXPORT uint32_t MDTLM_VRALDCN_TASK_DelTlmTaskFromList(void *payload, uint32_t payloadLen);
MDTLM_EXPORT uint32_t MDTLM_VRALDCN_InitTaskNodeTask(const MDTLM_TASK_DATA *payload, MDTLM_TASK_DATA *task);
MDTLM_EXPORT MDTLM_LIST_LINK *MDTLM_VRALDCN_TASK_GetTaskHead(uint32_t sensorType);
MDTLM_EXPORT const char *MDTLM_VRALDCN_TASK_GetJsonHeader(uint32_t sensorType);
MDTLM_EXPORT uint32_t MDTLM_VRALDCN_TASK_HasTlmTask(uint32_t sensorType);
MDTLM_EXPORT uint32_t MDTLM_VRALDCN_TASK_GetEncodeType(uint32_t sensorType);
MDTLM_EXPORT MDTLM_TASK_DATA *MDTLM_VRALDCN_GetTlmTaskInfo(uint32_t sensorType, uint32_t instanceId,
                                                          uint32_t taskId);
/* Full unload only (worker stopped): frees every task node with its buffers,
 * the sensors' sample buffers and the report-performance slots. */
MDTLM_EXPORT void MDTLM_VRALDCN_TASK_ReleaseAll(void);

/* ============================================ sample buffers and stats map */

MDTLM_EXPORT uint64_t MDTLM_VRALDCN_STATS_GetTimestamps(void);
MDTLM_EXPORT uint32_t MDTLM_VRALDCN_STATS_GetTimestampSec(void);
MDTLM_EXPORT void MDTLM_VRALDCN_STATS_SetCollectTimestamp(MDTLM_SAMPLE_BUFFER *a, MDTLM_SAMPLE_BUFFER *b);
MDTLM_EXPORT void MDTLM_VRALDCN_STATS_InitSampleBuffer(MDTLM_STATS_MAP_ENTRY *row);
MDTLM_EXPORT uint32_t MDTLM_STATS_InitTaskSampleBuffer(MDTLM_TASK_DATA *task);
MDTLM_EXPORT void MDTLM_STATS_InitTaskStats(uint32_t sensorType);
MDTLM_EXPORT void MDTLM_VRALDCN_STATS_InitStatsMap(void);
MDTLM_EXPORT MDTLM_STATS_MAP_ENTRY *MDTLM_VRALDCN_STATS_GetStatsMap(uint32_t sensorType);

/* ============================================================ sample upload */

MDTLM_EXPORT uint32_t MDTLM_VRALDCN_STATS_UploadStatsData(void *payload, uint32_t payloadLen);
MDTLM_EXPORT uint32_t MDTLM_VRALDCN_STATS_UploadStatsDataByStatsMsg(MDTLM_STATS_MSG *msg);
MDTLM_EXPORT void MDTLM_VRALDCN_STATS_UploadRest(void);
MDTLM_EXPORT void MDTLM_VRALDCN_STATS_UploadRestByTask(uint32_t sensorType);
MDTLM_EXPORT void MDTLM_VRALDCN_TASK_UploadStatsDataByTask(MDTLM_SAMPLE_BUFFER *buffer, MDTLM_TASK_DATA *task);
MDTLM_EXPORT uint32_t MDTLM_VRALDCN_TASK_FormatStatsData(uint32_t sensorType, uint32_t codeType,
                                                         const MDTLM_SAMPLE_BUFFER *src, MDTLM_SAMPLE_BUFFER *dst);
MDTLM_EXPORT uint32_t MDTLM_VRALDCN_TASK_IsActiveReportEnd(MDTLM_TASK_DATA *task);
MDTLM_EXPORT void MDTLM_VRALDCN_TASK_UploadStatsDataProc(MDTLM_SAMPLE_BUFFER *sample, MDTLM_TASK_DATA *task);
MDTLM_EXPORT void MDTLM_VRALDCN_TASK_UploadStatsData(uint32_t sensorType, const MDTLM_SAMPLE_BUFFER *src,
                                                     uint32_t codeType);
MDTLM_EXPORT uint32_t MDTLM_VRALDCN_UploadDataToTlm(MDTLM_SAMPLE_BUFFER *sample);

/* ================================================= report performance ring */

MDTLM_EXPORT extern MDTLM_REPORT_PERF_SLOT *g_mdtlmNtvVralDcnReportPerf;

MDTLM_EXPORT uint32_t MDTLM_VRALDCN_InitReportPerf(void);
MDTLM_EXPORT void MDTLM_VRALDCN_DestoryReportPerf(void);
MDTLM_EXPORT void MDTLM_VRALDCN_ResetReportPerf(void);
MDTLM_EXPORT void MDTLM_VRALDCN_SetReportPerfTimestamps(uint32_t *seconds, uint32_t *milliseconds);
MDTLM_EXPORT void MDTLM_VRALDCN_UpdateReportPerfPeriodIndex(uint32_t period);
MDTLM_EXPORT void MDTLM_VRALDCN_UpdateReportPerfInFwmItermCnt(uint32_t period, uint32_t items, uint32_t bytes);
MDTLM_EXPORT void MDTLM_VRALDCN_UpdateReportPerfOutItemCnt(uint32_t period, uint32_t items, uint32_t bytes);
MDTLM_EXPORT void MDTLM_VRALDCN_UpdateReportPerfStartTime(uint32_t period, uint32_t seconds, uint32_t milliseconds);
MDTLM_EXPORT void MDTLM_VRALDCN_UpdateReportPerfEndTime(uint32_t period, uint32_t seconds, uint32_t milliseconds);
MDTLM_EXPORT void MDTLM_VRALDCN_UpdateReportPerfToDb(void);
MDTLM_EXPORT void MDTLM_VRALDCN_ClearReportPerfData(void);
MDTLM_EXPORT void MDTLM_VRALDCN_TruncateReportPerfEntryDbData(void);
MDTLM_EXPORT uint32_t MDTLM_VRALDCN_AddReportPerfEntryDbData(const MDTLM_REPORT_PERF_REC *rec);
MDTLM_EXPORT uint32_t MDTLM_VRALDCN_UpdateReportPerfEntryDb(const MDTLM_DB_KEY_DESC *desc, const MDTLM_DB_KEY *key,
                                                            const MDTLM_REPORT_PERF_REC *rec);
MDTLM_EXPORT uint32_t MDTLM_VRALDCN_WriteReportPerfEntryDb(const MDTLM_REPORT_PERF_REC *rec);
MDTLM_EXPORT uint32_t MDTLM_VRALDCN_CheckReportPerfEntryDataExist(const MDTLM_DB_KEY_DESC *desc,
                                                                  const MDTLM_DB_KEY *key);

/* ============================================== task statistics records */

MDTLM_EXPORT const char *MDTLM_FEM_TASK_GetPathName(uint32_t sensorType);
MDTLM_EXPORT uint32_t MDTLM_FEM_SetTaskStatDbRecord(const MDTLM_FEM_TASK_STAT_REC *rec);
MDTLM_EXPORT uint32_t MDTLM_FEM_GetTaskStatDbRecord(const MDTLM_DB_KEY *key, MDTLM_FEM_TASK_STAT_REC *rec);
MDTLM_EXPORT void MDTLM_FEM_DelTaskStatDbRecord(const MDTLM_DB_KEY *key);
MDTLM_EXPORT uint32_t MDTLM_FEM_AddTaskStatDb(uint32_t sensorType, MDTLM_TASK_DATA *task,
                                              MDTLM_FEM_TASK_STAT_REC *rec);
MDTLM_EXPORT void MDTLM_FEM_UpdateTaskStatDb(uint32_t sensorType, MDTLM_TASK_DATA *task,
                                             MDTLM_FEM_TASK_STAT_REC *rec);
MDTLM_EXPORT uint32_t MDTLM_FEM_WriteTaskStat2DbProc(uint32_t sensorType, MDTLM_TASK_DATA *task);
MDTLM_EXPORT void MDTLM_FEM_WriteAllTaskStat2Db(void);
MDTLM_EXPORT void MDTLM_FEM_DelTaskStatDb(MDTLM_TASK_DATA *task);

/* ========================================================= GPB wire writers */

MDTLM_EXPORT int32_t MDTLM_VRALDCN_GPB_EncodeVarint(uint64_t value, uint8_t *out, int32_t cap);
MDTLM_EXPORT int32_t MDTLM_VRALDCN_GPB_EncodeFieldType(uint32_t fieldId, uint32_t wireType, uint8_t *out,
                                                       int32_t cap);
MDTLM_EXPORT int32_t MDTLM_VRALDCN_GPB_EncodeLengthDelimited(uint32_t fieldId, const uint8_t *bytes, uint32_t len,
                                                             uint8_t *out, int32_t cap);
MDTLM_EXPORT int32_t MDTLM_VRALDCN_GPB_EncodeString(uint32_t fieldId, const char *text, uint8_t *out, int32_t cap);
MDTLM_EXPORT int32_t MDTLM_VRALDCN_GPB_EncodeInterger(uint32_t fieldId, uint64_t value, uint8_t *out,
                                                      int32_t cap);

/* ====================================================== address formatting */

MDTLM_EXPORT uint32_t MDTLM_VRALDCN_ConvertIpv4AddrToStr(uint32_t addr, char *out, uint32_t cap);
MDTLM_EXPORT uint32_t MDTLM_VRALDCN_ConvertIpv6AddrToStr(const void *addr, char *out, uint32_t cap);
MDTLM_EXPORT uint32_t MDTLM_VRALDCN_ConvertMacAddrToStr(const uint8_t *mac, char *out, uint32_t cap);

/* =========================================================== filter engine */

MDTLM_EXPORT uint32_t MDTLM_STATS_SensorPathCondition(const MDTLM_SENSOR_PATH_INFO *pathInfo, const void *record,
                                                      const MDTLM_FILTER_MAP_ENTRY *map, uint32_t mapRows,
                                                      MDTLM_CONDITION_CMP_FUNC cmp);
MDTLM_EXPORT uint32_t MDTLM_STATS_SensorPathFilter(const MDTLM_SENSOR_PATH_INFO *pathInfo, const void *record,
                                                   const MDTLM_FILTER_MAP_ENTRY *map, uint32_t mapRows,
                                                   MDTLM_FILTER_CMP_FUNC cmp);
MDTLM_EXPORT uint32_t MDTLM_STATS_SensorFilterOp(uint32_t threshold, uint32_t value, uint32_t op);
MDTLM_EXPORT uint32_t MDTLM_STATS_SensorFilterOp64(uint64_t threshold, uint64_t value, uint32_t op);
MDTLM_EXPORT uint32_t MDTLM_STATS_SensorFilterIsAnd(uint32_t filterCnt, uint32_t filterLogic);

/* ============================================= sensor 1: flow statistics */

MDTLM_EXPORT extern uint32_t g_unicastJsonSequenceNumber;
MDTLM_EXPORT extern uint32_t g_multicastJsonSequenceNumber;
MDTLM_EXPORT extern uint8_t g_vralDcnFlowStatsBuff1[MDTLM_GPB_SCRATCH_SIZE];
MDTLM_EXPORT extern uint8_t g_vralDcnFlowStatsBuff2[MDTLM_GPB_SCRATCH_SIZE];
MDTLM_EXPORT extern const MDTLM_FILTER_MAP_ENTRY g_mdTlmFlowStatsCondMap[2];
MDTLM_EXPORT extern const MDTLM_FILTER_MAP_ENTRY g_mdTlmFlowStatsFilterMap[13];

MDTLM_EXPORT uint32_t MDTLM_VRALDCN_FLOW_STATS_StatsMsgProc(MDTLM_TASK_DATA *task, MDTLM_STATS_MSG *msg);
MDTLM_EXPORT void MDTLM_VRALDCN_FLOW_STATS_EncodeStatsData(const MDTLM_FLOW_STATS_REC *rec, MDTLM_TASK_DATA *task);
MDTLM_EXPORT int32_t MDTLM_VRALDCN_FLOW_GPB_EncodeMsg(const MDTLM_FLOW_STATS_REC *rec, uint8_t *out, int32_t cap);
MDTLM_EXPORT int32_t MDTLM_VRALDCN_FLOW_JSON_EncodeMsg(const MDTLM_FLOW_STATS_REC *rec, uint8_t *out, int32_t cap);
MDTLM_EXPORT int32_t MDTLM_VRALDCN_FLOW_GPB_EncodeData(const MDTLM_FLOW_STATS_REC *rec, uint8_t *out, int32_t cap);
MDTLM_EXPORT int32_t MDTLM_VRALDCN_FLOW_GPB_EncodeFlowInfo(const MDTLM_FLOW_STATS_REC *rec, uint8_t *out, int32_t cap);
MDTLM_EXPORT int32_t MDTLM_VRALDCN_FLOW_GPB_EncodeTuple(const MDTLM_FLOW_STATS_REC *rec, uint8_t *out, int32_t cap);
MDTLM_EXPORT int32_t MDTLM_VRALDCN_FLOW_GPB_EncodeIpAddress(const MDTLM_FLOW_STATS_REC *rec, uint8_t *out,
                                                            int32_t cap);
MDTLM_EXPORT int32_t MDTLM_VRALDCN_FLOW_GPB_EncodeStatistics(const MDTLM_FLOW_STATS_REC *rec, uint8_t *out,
                                                             int32_t cap);
MDTLM_EXPORT int32_t MDTLM_VRALDCN_FLOW_GPB_EncodePacketInfo(const MDTLM_FLOW_STATS_REC *rec, uint8_t *out,
                                                             int32_t cap);
MDTLM_EXPORT int32_t MDTLM_VRALDCN_FLOW_GPB_EncodeProtocolPort(const MDTLM_FLOW_STATS_REC *rec, uint8_t *out,
                                                               int32_t cap);
MDTLM_EXPORT int32_t MDTLM_VRALDCN_FLOW_GPB_EncodeErrorInfo(const MDTLM_FLOW_STATS_REC *rec, uint8_t *out,
                                                            int32_t cap);
MDTLM_EXPORT int32_t MDTLM_VRALDCN_FLOW_GPB_EncodePacketByteCnt(const MDTLM_FLOW_STATS_REC *rec, uint8_t *out,
                                                                int32_t cap);
MDTLM_EXPORT int32_t MDTLM_VRALDCN_FLOW_GPB_EncodeTimeStamp(const MDTLM_FLOW_STATS_REC *rec, uint8_t *out,
                                                            int32_t cap);
MDTLM_EXPORT int32_t MDTLM_VRALDCN_FLOW_JSON_CheckEncodePara(const MDTLM_FLOW_STATS_REC *rec, const uint8_t *out,
                                                             int32_t cap);
MDTLM_EXPORT uint32_t MDTLM_VRALDCN_FlowCmpFieldWithCondition(uint32_t fieldId, const MDTLM_PATH_CONDITION *cond,
                                                              const void *record);
MDTLM_EXPORT uint32_t MDTLM_VRALDCN_FlowCmpFieldWithFilter(uint32_t fieldId, const MDTLM_PATH_FILTER *filter,
                                                           const void *record);
MDTLM_EXPORT uint32_t MDTLM_VRALDCN_FLOW_JSON_EncodeIpv4(const MDTLM_FLOW_STATS_REC *rec, char *src, char *dst,
                                                         uint32_t cap);
MDTLM_EXPORT uint32_t MDTLM_VRALDCN_FLOW_JSON_EncodeIpv6(const MDTLM_FLOW_STATS_REC *rec, char *src, char *dst,
                                                         uint32_t cap);
MDTLM_EXPORT uint32_t MDTLM_VRALDCN_FLOW_GetSequenceNumber(uint32_t castType, const MDTLM_TASK_DATA *task);
MDTLM_EXPORT void MDTLM_VRALDCN_FLOW_AddSequenceNumber(uint32_t castType, MDTLM_TASK_DATA *task);
MDTLM_EXPORT void MDTLM_VRALDCN_FLOW_JSON_AddSequenceNumber(uint32_t castType);
/* Derived values shared by the flow and flow-hop records (same offsets). */
MDTLM_EXPORT void MDTLM_VRALDCN_FLOW_JSON_GenFlowInfo(const void *record, uint64_t *flowId, uint32_t *direction);
MDTLM_EXPORT void MDTLM_VRALDCN_FLOW_JSON_GenPacketInfo(const void *record, uint32_t *addressFamily,
                                                        uint32_t *tunnelMode, uint32_t *errorInfo,
                                                        uint32_t *errorInfoExt);
MDTLM_EXPORT uint32_t MDTLM_VRALDCN_FLOW_GetTunnelMode(uint32_t tunnelFlag, uint32_t tunnelType);

/* ========================================= sensor 2: flow-hop statistics */

MDTLM_EXPORT extern uint32_t g_unicastJsonHopSequenceNumber;
MDTLM_EXPORT extern uint32_t g_multicastJsonHopSequenceNumber;
MDTLM_EXPORT extern uint8_t g_vralDcnFlowHopStatsBuff1[MDTLM_GPB_SCRATCH_SIZE];
MDTLM_EXPORT extern uint8_t g_vralDcnFlowHopStatsBuff2[MDTLM_GPB_SCRATCH_SIZE];
MDTLM_EXPORT extern const MDTLM_FILTER_MAP_ENTRY g_femMdTlmFlowHopStatsCondMap[2];
MDTLM_EXPORT extern const MDTLM_FILTER_MAP_ENTRY g_mdTlmFlowHopStatsFilterMap[15];

MDTLM_EXPORT uint32_t MDTLM_VRALDCN_FLOWHOP_STATS_StatsMsgProc(MDTLM_TASK_DATA *task, MDTLM_STATS_MSG *msg);
MDTLM_EXPORT void MDTLM_VRALDCN_FLOWHOP_STATS_EncodeStatsData(const MDTLM_FLOWHOP_STATS_REC *rec,
                                                              MDTLM_TASK_DATA *task);
MDTLM_EXPORT int32_t MDTLM_VRALDCN_FLOWHOP_GPB_EncodeMsg(const MDTLM_FLOWHOP_STATS_REC *rec, uint8_t *out,
                                                         int32_t cap);
MDTLM_EXPORT int32_t MDTLM_VRALDCN_FLOWHOP_JSON_EncodeMsg(const MDTLM_FLOWHOP_STATS_REC *rec, uint8_t *out,
                                                          int32_t cap);
MDTLM_EXPORT int32_t MDTLM_VRALDCN_FLOWHOP_GPB_EncodeData(const MDTLM_FLOWHOP_STATS_REC *rec, uint8_t *out,
                                                          int32_t cap);
MDTLM_EXPORT int32_t MDTLM_VRALDCN_FLOWHOP_GPB_EncodeFlowInfo(const MDTLM_FLOWHOP_STATS_REC *rec, uint8_t *out,
                                                              int32_t cap);
MDTLM_EXPORT int32_t MDTLM_VRALDCN_FLOWHOP_GPB_EncodeStatistics(const MDTLM_FLOWHOP_STATS_REC *rec, uint8_t *out,
                                                                int32_t cap);
MDTLM_EXPORT int32_t MDTLM_VRALDCN_FLOWHOP_GPB_EncodePacketInfo(const MDTLM_FLOWHOP_STATS_REC *rec, uint8_t *out,
                                                                int32_t cap);
MDTLM_EXPORT int32_t MDTLM_VRALDCN_FLOWHOP_GPB_EncodeDelay(const MDTLM_FLOWHOP_STATS_REC *rec, uint8_t *out,
                                                           int32_t cap);
MDTLM_EXPORT int32_t MDTLM_VRALDCN_FLOWHOP_GPB_EncodeErrorInfo(const MDTLM_FLOWHOP_STATS_REC *rec, uint8_t *out,
                                                               int32_t cap);
MDTLM_EXPORT int32_t MDTLM_VRALDCN_FLOWHOP_GPB_EncodePacketByteCnt(const MDTLM_FLOWHOP_STATS_REC *rec,
                                                                   uint8_t *out, int32_t cap);
MDTLM_EXPORT int32_t MDTLM_VRALDCN_FLOWHOP_GPB_EncodeTimeStamp(const MDTLM_FLOWHOP_STATS_REC *rec, uint8_t *out,
                                                               int32_t cap);
MDTLM_EXPORT int32_t MDTLM_VRALDCN_FLOWHOP_JSON_CheckEncodePara(const MDTLM_FLOWHOP_STATS_REC *rec,
                                                                const uint8_t *out, int32_t cap);
MDTLM_EXPORT uint32_t MDTLM_VRALDCN_FlowHopCmpFieldWithInfo(uint32_t fieldId, const MDTLM_PATH_CONDITION *cond,
                                                            const void *record);
MDTLM_EXPORT uint32_t MDTLM_VRALDCN_FlowHopCmpFieldWithFilter(uint32_t fieldId, const MDTLM_PATH_FILTER *filter,
                                                              const void *record);
MDTLM_EXPORT uint32_t MDTLM_VRALDCN_FLOWHOP_GetSequenceNumber(uint32_t castType, const MDTLM_TASK_DATA *task);
MDTLM_EXPORT void MDTLM_VRALDCN_FLOWHOP_AddSequenceNumber(uint32_t castType, MDTLM_TASK_DATA *task);
MDTLM_EXPORT void MDTLM_VRALDCN_FLOWHOP_JSON_AddSequenceNumber(uint32_t castType);

/* ========================================== sensor 6: export flow caches */

MDTLM_EXPORT extern uint8_t g_zelkCachesBuff1[MDTLM_GPB_SCRATCH_SIZE];
MDTLM_EXPORT extern uint8_t g_zelkCachesBuff2[MDTLM_GPB_SCRATCH_SIZE];
MDTLM_EXPORT extern const MDTLM_FILTER_MAP_ENTRY g_femMdTlmZelkCacheCondMap[7];
MDTLM_EXPORT extern const MDTLM_FILTER_MAP_ENTRY g_femMdTlmZelkCacheFilterMap[7];

MDTLM_EXPORT uint32_t MDTLM_ZELK_CacheMsgProc(MDTLM_TASK_DATA *task, MDTLM_STATS_MSG *msg);
MDTLM_EXPORT void MDTLM_ZELK_EncodeCacheData(const MDTLM_ZELK_CACHE_REC *rec, MDTLM_TASK_DATA *task);
MDTLM_EXPORT uint32_t MDTLM_ZELK_CmpFieldWithCondition(uint32_t fieldId, const MDTLM_PATH_CONDITION *cond,
                                                       const void *record);
MDTLM_EXPORT uint32_t MDTLM_ZELK_CmpFieldWithThread(uint32_t fieldId, const MDTLM_PATH_FILTER *filter,
                                                    const void *record);
MDTLM_EXPORT uint32_t MDTLM_ZELK_CmpIpv4WithStr(uint32_t addr, const char *text);
MDTLM_EXPORT int32_t MDTLM_ZELK_GPB_EncodeMsg(const MDTLM_ZELK_CACHE_REC *rec, uint8_t *out, int32_t cap);
MDTLM_EXPORT int32_t MDTLM_ZELK_GPB_EncodeData(const MDTLM_ZELK_CACHE_REC *rec, uint8_t *out, int32_t cap);
MDTLM_EXPORT int32_t MDTLM_ZELK_GPB_EncodeCacheKeyInfo(const MDTLM_ZELK_CACHE_REC *rec, uint8_t *out, int32_t cap);
MDTLM_EXPORT int32_t MDTLM_ZELK_GPB_EncodeCacheDataInfo(const MDTLM_ZELK_CACHE_REC *rec, uint8_t *out,
                                                        int32_t cap);
MDTLM_EXPORT int32_t MDTLM_ZELK_GPB_EncodeIpAddress(const MDTLM_ZELK_CACHE_REC *rec, uint8_t *out, int32_t cap);
MDTLM_EXPORT int32_t MDTLM_ZELK_JSON_EncodeMsg(const MDTLM_ZELK_CACHE_REC *rec, uint8_t *out, int32_t cap);
MDTLM_EXPORT int32_t MDTLM_ZELK_JSON_CheckEncodePara(const MDTLM_ZELK_CACHE_REC *rec, const uint8_t *out,
                                                     int32_t cap);
MDTLM_EXPORT uint32_t MDTLM_ZELK_JSON_EncodeIpv4(const MDTLM_ZELK_CACHE_REC *rec, char *src, char *dst,
                                                 uint32_t cap);
MDTLM_EXPORT int32_t MDTLM_ZELK_GetProtocol(uint32_t protocol, char *out, uint32_t size);
MDTLM_EXPORT int32_t MDTLM_ZELK_GetRecoveryModeStr(uint32_t mode, char *out, uint32_t size);
MDTLM_EXPORT int32_t MDTLM_ZELK_GetOpModeStr(uint32_t mode, char *out, uint32_t size);
MDTLM_EXPORT int32_t MDTLM_ZELK_GetAclAppStatStr(uint32_t state, char *out, uint32_t size);

/* ========================================== sensor 4: result statistics */

MDTLM_EXPORT extern uint8_t g_qumaStatsBuff1[MDTLM_GPB_SCRATCH_SIZE];
MDTLM_EXPORT extern uint8_t g_qumaStatsBuff2[MDTLM_GPB_SCRATCH_SIZE];
MDTLM_EXPORT extern const MDTLM_FILTER_MAP_ENTRY g_femMdTlmQumaResultCondMap[2];
MDTLM_EXPORT extern const MDTLM_FILTER_MAP_ENTRY g_femMdTlmQumaResultFilterMap[10];

MDTLM_EXPORT uint32_t MDTLM_QUMA_STATS_StatsMsgProc(MDTLM_TASK_DATA *task, MDTLM_STATS_MSG *msg);
MDTLM_EXPORT void MDTLM_QUMA_STATS_EncodeStatsData(const MDTLM_QUMA_RESULT_REC *rec, MDTLM_TASK_DATA *task);
MDTLM_EXPORT uint32_t MDTLM_QUMA_STATS_CmpFieldWithCondition(uint32_t fieldId, const MDTLM_PATH_CONDITION *cond,
                                                             const void *record);
MDTLM_EXPORT uint32_t MDTLM_QUMA_STATS_CmpFieldWithThread(uint32_t fieldId, const MDTLM_PATH_FILTER *filter,
                                                          const void *record);
MDTLM_EXPORT int32_t MDTLM_QUMA_GPB_EncodeMsg(const MDTLM_QUMA_RESULT_REC *rec, uint8_t *out, int32_t cap);
MDTLM_EXPORT int32_t MDTLM_QUMA_GPB_EncodeData(const MDTLM_QUMA_RESULT_REC *rec, uint8_t *out, int32_t cap);
MDTLM_EXPORT int32_t MDTLM_QUMA_GPB_EncodeCommonInfo(const MDTLM_QUMA_RESULT_REC *rec, uint8_t *out, int32_t cap);
MDTLM_EXPORT int32_t MDTLM_QUMA_GPB_EncodeAclInfo(const MDTLM_QUMA_RESULT_REC *rec, uint8_t *out, int32_t cap);
MDTLM_EXPORT int32_t MDTLM_QUMA_GPB_EncodeResultInfo(const MDTLM_QUMA_RESULT_REC *rec, uint8_t *out, int32_t cap);
MDTLM_EXPORT int32_t MDTLM_QUMA_GPB_EncodeStatistics(const MDTLM_QUMA_RESULT_REC *rec, uint8_t *out, int32_t cap);
MDTLM_EXPORT int32_t MDTLM_QUMA_JSON_EncodeMsg(const MDTLM_QUMA_RESULT_REC *rec, uint8_t *out, int32_t cap);
MDTLM_EXPORT int32_t MDTLM_QUMA_JSON_CheckEncodePara(const MDTLM_QUMA_RESULT_REC *rec, const uint8_t *out,
                                                     int32_t cap);
MDTLM_EXPORT int32_t MDTLM_QUMA_GetProtocolName(uint32_t protocol, char *out, uint32_t size);

/* ================================ sensor 3: I/O service flow statistics */

MDTLM_EXPORT extern uint8_t g_srvtlmFlowStatsBuff1[MDTLM_GPB_SCRATCH_SIZE];
MDTLM_EXPORT extern uint8_t g_srvtlmFlowStatsBuff2[MDTLM_GPB_SCRATCH_SIZE];
MDTLM_EXPORT extern const MDTLM_FILTER_MAP_ENTRY g_femMdTlmSrvtlmFlowCondMap[6];
MDTLM_EXPORT extern const MDTLM_FILTER_MAP_ENTRY g_femMdTlmSrvtlmFlowFilterMap[16];

MDTLM_EXPORT uint32_t MDTLM_SRVTLM_FLOW_STATS_StatsMsgProc(MDTLM_TASK_DATA *task, MDTLM_STATS_MSG *msg);
MDTLM_EXPORT void MDTLM_SRVTLM_FLOW_STATS_EncodeStatsData(const MDTLM_SRVTLM_FLOW_STATS_REC *rec,
                                                          MDTLM_TASK_DATA *task);
MDTLM_EXPORT uint32_t MDTLM_SRVTLM_FLOW_STATS_CmpFieldWithInfo(uint32_t fieldId, const MDTLM_PATH_CONDITION *cond,
                                                               const void *record);
MDTLM_EXPORT uint32_t MDTLM_SRVTLM_FLOW_STATS_CmpFieldWithFilter(uint32_t fieldId, const MDTLM_PATH_FILTER *filter,
                                                                 const void *record);
MDTLM_EXPORT uint32_t MDTLM_SRVTLM_CmpIpv4WithStr(uint32_t addr, const char *text);
MDTLM_EXPORT uint32_t MDTLM_SRVTLM_CmpIpv6WithStr(const void *addr, const char *text);
MDTLM_EXPORT uint32_t MDTLM_SRVTLM_CmpSrcIpWithStr(const MDTLM_SRVTLM_FLOW_STATS_REC *rec, const char *text);
MDTLM_EXPORT uint32_t MDTLM_SRVTLM_CmpDstIpWithStr(const MDTLM_SRVTLM_FLOW_STATS_REC *rec, const char *text);
MDTLM_EXPORT int32_t MDTLM_SRVTLM_FLOW_GPB_EncodeMsg(const MDTLM_SRVTLM_FLOW_STATS_REC *rec, uint8_t *out,
                                                     int32_t cap);
MDTLM_EXPORT int32_t MDTLM_SRVTLM_FLOW_GPB_EncodeData(const MDTLM_SRVTLM_FLOW_STATS_REC *rec, uint8_t *out,
                                                      int32_t cap);
MDTLM_EXPORT int32_t MDTLM_SRVTLM_FLOW_GPB_EncodeFlowInfo(const MDTLM_SRVTLM_FLOW_STATS_REC *rec, uint8_t *out,
                                                          int32_t cap);
MDTLM_EXPORT int32_t MDTLM_SRVTLM_FLOW_GPB_EncodeIpAddress(const MDTLM_SRVTLM_FLOW_STATS_REC *rec, uint8_t *out,
                                                           int32_t cap);
MDTLM_EXPORT int32_t MDTLM_SRVTLM_FLOW_GPB_EncodeStatistics(const MDTLM_SRVTLM_FLOW_STATS_REC *rec, uint8_t *out,
                                                            int32_t cap);
MDTLM_EXPORT int32_t MDTLM_SRVTLM_FLOW_GPB_EncodeReadInfo(const MDTLM_SRVTLM_FLOW_STATS_REC *rec, uint8_t *out,
                                                          int32_t cap);
MDTLM_EXPORT int32_t MDTLM_SRVTLM_FLOW_GPB_EncodeWriteInfo(const MDTLM_SRVTLM_FLOW_STATS_REC *rec, uint8_t *out,
                                                           int32_t cap);
MDTLM_EXPORT int32_t MDTLM_SRVTLM_FLOW_JSON_EncodeMsg(const MDTLM_SRVTLM_FLOW_STATS_REC *rec, uint8_t *out,
                                                      int32_t cap);
MDTLM_EXPORT int32_t MDTLM_SRVTLM_FLOW_JSON_CheckEncodePara(const MDTLM_SRVTLM_FLOW_STATS_REC *rec,
                                                            const uint8_t *out, int32_t cap);
MDTLM_EXPORT uint32_t MDTLM_SRVTLM_FLOW_JSON_EncodeIpv4(const MDTLM_SRVTLM_FLOW_STATS_REC *rec, char *src,
                                                        char *dst, uint32_t cap);
MDTLM_EXPORT uint32_t MDTLM_SRVTLM_FLOW_JSON_EncodeIpv6(const MDTLM_SRVTLM_FLOW_STATS_REC *rec, char *src,
                                                        char *dst, uint32_t cap);

/* ======================= sensor 5: I/O service flow throughput statistics */

MDTLM_EXPORT extern const MDTLM_FILTER_MAP_ENTRY g_femMdTlmSrvtlmFctFlowCondMap[5];
MDTLM_EXPORT extern const MDTLM_FILTER_MAP_ENTRY g_femMdTlmSrvtlmFctFlowFilterMap[14];

MDTLM_EXPORT uint32_t MDTLM_SRVTLM_FCT_FLOW_STATS_StatsMsgProc(MDTLM_TASK_DATA *task, MDTLM_STATS_MSG *msg);
MDTLM_EXPORT void MDTLM_SRVTLM_FCTFLOW_STATS_EncodeStatsData(const MDTLM_SRVTLM_FCTFLOW_STATS_REC *rec,
                                                             MDTLM_TASK_DATA *task);
MDTLM_EXPORT uint32_t MDTLM_SRVTLM_FCTFLOW_STATS_CmpFieldWithInfo(uint32_t fieldId,
                                                                  const MDTLM_PATH_CONDITION *cond,
                                                                  const void *record);
MDTLM_EXPORT uint32_t MDTLM_SRVTLM_FCTFLOW_STATS_CmpFieldWithFilter(uint32_t fieldId,
                                                                    const MDTLM_PATH_FILTER *filter,
                                                                    const void *record);
MDTLM_EXPORT uint32_t MDTLM_SRVTLM_FCTCmpSrcIpWithStr(const MDTLM_SRVTLM_FCTFLOW_STATS_REC *rec, const char *text);
MDTLM_EXPORT uint32_t MDTLM_SRVTLM_FCTCmpDstIpWithStr(const MDTLM_SRVTLM_FCTFLOW_STATS_REC *rec, const char *text);
MDTLM_EXPORT int32_t MDTLM_SRVTLM_FCTFLOW_GPB_EncodeMsg(const MDTLM_SRVTLM_FCTFLOW_STATS_REC *rec, uint8_t *out,
                                                        int32_t cap);
MDTLM_EXPORT int32_t MDTLM_SRVTLM_FCTFLOW_GPB_EncodeData(const MDTLM_SRVTLM_FCTFLOW_STATS_REC *rec, uint8_t *out,
                                                         int32_t cap);
MDTLM_EXPORT int32_t MDTLM_SRVTLM_FCTFLOW_GPB_EncodeFlowInfo(const MDTLM_SRVTLM_FCTFLOW_STATS_REC *rec,
                                                             uint8_t *out, int32_t cap);
MDTLM_EXPORT int32_t MDTLM_SRVTLM_FCTFLOW_GPB_EncodeIpAddress(const MDTLM_SRVTLM_FCTFLOW_STATS_REC *rec,
                                                              uint8_t *out, int32_t cap);
MDTLM_EXPORT int32_t MDTLM_SRVTLM_FCTFLOW_GPB_EncodeStatistics(const MDTLM_SRVTLM_FCTFLOW_STATS_REC *rec,
                                                               uint8_t *out, int32_t cap);
MDTLM_EXPORT int32_t MDTLM_SRVTLM_FCTFLOW_GPB_EncodeWriteInfo(const MDTLM_SRVTLM_FCTFLOW_STATS_REC *rec,
                                                              uint8_t *out, int32_t cap);
MDTLM_EXPORT int32_t MDTLM_SRVTLM_FCTFLOW_GPB_EncodeOtherInfo(const MDTLM_SRVTLM_FCTFLOW_STATS_REC *rec,
                                                              uint8_t *out, int32_t cap);
MDTLM_EXPORT int32_t MDTLM_SRVTLM_FCTFLOW_JSON_EncodeMsg(const MDTLM_SRVTLM_FCTFLOW_STATS_REC *rec, uint8_t *out,
                                                         int32_t cap);
MDTLM_EXPORT int32_t MDTLM_SRVTLM_FCTFLOW_JSON_CheckEncodePara(const MDTLM_SRVTLM_FCTFLOW_STATS_REC *rec,
                                                               const uint8_t *out, int32_t cap);
MDTLM_EXPORT uint32_t MDTLM_SRVTLM_FCTFLOW_JSON_EncodeIpv4(const MDTLM_SRVTLM_FCTFLOW_STATS_REC *rec, char *src,
                                                           char *dst, uint32_t cap);
MDTLM_EXPORT uint32_t MDTLM_SRVTLM_FCTFLOW_JSON_EncodeIpv6(const MDTLM_SRVTLM_FCTFLOW_STATS_REC *rec, char *src,
                                                           char *dst, uint32_t cap);

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif /* MDTLM_VRALDCN_H */
