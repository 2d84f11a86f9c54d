// Transient link scaffold: weak definitions that the real units override.
// Every entry here aborts when called; the file is removed once all units exist.
#pragma GCC diagnostic ignored "-Wunused-parameter"
#include <cstdio>
#include <cstdlib>
#include "mdtlm_vraldcn.h"
#define W __attribute__((weak))
[[noreturn]] static void missing(const char *n){std::fprintf(stderr,"missing: %s\n",n);std::abort();}
extern "C" {
W uint32_t g_vralDcnTlmModuleId{};
W MDTLM_FRM_VTBL *g_vralDcnTlmFrmVtbl{};
W uint32_t MDTLM_VRALDCN_Init(uint32_t moduleId) { missing("MDTLM_VRALDCN_Init"); }
W void MDTLM_VRALDCN_Destory(void) { missing("MDTLM_VRALDCN_Destory"); }
W void MDTLM_VRALDCN_Unload(void) { missing("MDTLM_VRALDCN_Unload"); }
W uint32_t MDTLM_VRALDCN_InitTlmFrmVtbl(void) { missing("MDTLM_VRALDCN_InitTlmFrmVtbl"); }
W MDTLM_FRM_VTBL * MDTLM_VRALDCN_GetTlmFrmVtbl(void) { missing("MDTLM_VRALDCN_GetTlmFrmVtbl"); }
W uint32_t MDTLM_VRALDCN_GetModuleId(void) { missing("MDTLM_VRALDCN_GetModuleId"); }
W uint32_t MDTLM_VRALDCN_QueryFunc(void) { missing("MDTLM_VRALDCN_QueryFunc"); }
W void * MDTLM_VRALDCN_BufAlloc(uint32_t size) { missing("MDTLM_VRALDCN_BufAlloc"); }
W void MDTLM_VRALDCN_BufFree(void **buf) { missing("MDTLM_VRALDCN_BufFree"); }
W uint32_t MDTLM_VRALDCN_WriteTlmLog(uint32_t level, const char *format, ...) { missing("MDTLM_VRALDCN_WriteTlmLog"); }
W MDTLM_XPATH_NODE g_mdtlmVralDcnXpathNode[MDTLM_SENSOR_COUNT]{};
W MDTLM_STATS_MAP_ENTRY g_femMdtlmStatsMap[MDTLM_SENSOR_COUNT]{};
W MDTLM_TASK_LIST_ENTRY g_vralDcnTlmTaskListMap[MDTLM_SENSOR_COUNT]{};
W MDTLM_PATH_NAME_ENTRY g_femMdtlmPathNamList[MDTLM_SENSOR_COUNT]{};
W MDTLM_LIST_LINK g_vralDcnTlmFlowTaskListHead{};
W MDTLM_LIST_LINK g_vralDcnTlmFlowHopTaskListHead{};
W MDTLM_LIST_LINK g_srvtlmTaskListHead{};
W MDTLM_LIST_LINK g_qumaTaskListHead{};
W MDTLM_LIST_LINK g_srvtlmFctTaskListHead{};
W MDTLM_LIST_LINK g_zelkTaskListHead{};
W MDTLM_SAMPLE_DATA g_mdtlmVralDcnFlowSampleData{};
W MDTLM_SAMPLE_DATA g_mdtlmVralDcnFlowHopSampleData{};
W MDTLM_SAMPLE_DATA g_mdtlmSrvtlmSampleData{};
W MDTLM_SAMPLE_DATA g_mdtlmQumaSampleData{};
W MDTLM_SAMPLE_DATA g_mdtlmSrvtlmFctSampleData{};
W MDTLM_SAMPLE_DATA g_mdtlmZelkSampleData{};
W extern const char *const MDTLM_VRALDCN_FLOW_STATS_JSON_TEMPLATE = {};
W extern const char *const MDTLM_VRALDCN_FLOWHOP_STATS_JSON_TEMPLATE = {};
W extern const char *const MDTLM_SRVTLM_FLOW_STATS_JSON_TEMPLATE = {};
W extern const char *const MDTLM_QUMA_STATS_JSON_TEMPLATE = {};
W extern const char *const MDTLM_SRVTLM_FCTFLOW_STATS_JSON_TEMPLATE = {};
W extern const char *const MDTLM_ZELK_STATS_JSON_TEMPLATE = {};
W uint32_t MDTLM_VRALDCN_SampleXpathRegister(void) { missing("MDTLM_VRALDCN_SampleXpathRegister"); }
W void FWM_MDTLM_VRALDCN_C2HActive(void) { missing("FWM_MDTLM_VRALDCN_C2HActive"); }
W void FWM_MDTLM_VRALDCN_C2HDeactive(void) { missing("FWM_MDTLM_VRALDCN_C2HDeactive"); }
W uint32_t libmdtlm_vraldcn_PAT_C2HSyncHookFunc(int32_t operation, void *handle, void *record, uint32_t *flag) { missing("libmdtlm_vraldcn_PAT_C2HSyncHookFunc"); }
W uint32_t FWM_MDTLM_PatchReservedFun1(void) { missing("FWM_MDTLM_PatchReservedFun1"); }
W uint32_t FWM_MDTLM_PatchReservedFun2(void) { missing("FWM_MDTLM_PatchReservedFun2"); }
W uint32_t FWM_MDTLM_PatchReservedFun3(void) { missing("FWM_MDTLM_PatchReservedFun3"); }
W uint32_t FWM_MDTLM_PatchReservedFun4(void) { missing("FWM_MDTLM_PatchReservedFun4"); }
W uint32_t FWM_MDTLM_PatchReservedFun5(void) { missing("FWM_MDTLM_PatchReservedFun5"); }
W uint32_t FWM_MDTLM_PatchReservedFun6(void) { missing("FWM_MDTLM_PatchReservedFun6"); }
W uint32_t FWM_MDTLM_PatchReservedFun7(void) { missing("FWM_MDTLM_PatchReservedFun7"); }
W uint32_t FWM_MDTLM_PatchReservedFun8(void) { missing("FWM_MDTLM_PatchReservedFun8"); }
W uint32_t FWM_MDTLM_PatchReservedFun9(void) { missing("FWM_MDTLM_PatchReservedFun9"); }
W uint32_t FWM_MDTLM_PatchReservedFun10(void) { missing("FWM_MDTLM_PatchReservedFun10"); }
W void *g_mdtlmVralDcnTaskEventHdl{};
W MDTLM_EVENT_PROC_FUNC g_mdtlmVralDcnEventProcList[MDTLM_EVENT_TYPE_COUNT]{};
W uint32_t MDTLM_VRALDCN_EVENT_Init(void) { missing("MDTLM_VRALDCN_EVENT_Init"); }
W uint32_t MDTLM_VRALDCN_EVENT_Push(MDTLM_EVENT_MSG *event) { missing("MDTLM_VRALDCN_EVENT_Push"); }
W uint32_t MDTLM_VRALDCN_EVENT_Pop(void *queue) { missing("MDTLM_VRALDCN_EVENT_Pop"); }
W uint32_t MDTLM_VRALDCN_EVENT_FlowCtrlProc(uint32_t event) { missing("MDTLM_VRALDCN_EVENT_FlowCtrlProc"); }
W void MDTLM_VRALDCN_EVENT_Destroy(void) { missing("MDTLM_VRALDCN_EVENT_Destroy"); }
W uint32_t g_mdtlmVralDcnEpollId{};
W uint32_t g_mdtlmVralDcnStatsTaskId{};
W int32_t g_mdtlmVralDcnTimerId{};
W uint32_t g_mdtlmVralTimerSecondCnt{};
W uint32_t MDTLM_VRALDCN_THREAD_Init(void) { missing("MDTLM_VRALDCN_THREAD_Init"); }
W uint32_t MDTLM_VRALDCN_THREAD_CreateEpoll(void) { missing("MDTLM_VRALDCN_THREAD_CreateEpoll"); }
W uint32_t MDTLM_VRALDCN_THREAD_CreateStatsTask(void) { missing("MDTLM_VRALDCN_THREAD_CreateStatsTask"); }
W uint32_t MDTLM_VRALDCN_THREAD_StatsMain(void) { missing("MDTLM_VRALDCN_THREAD_StatsMain"); }
W void MDTLM_VRALDCN_THREAD_Destroy(void) { missing("MDTLM_VRALDCN_THREAD_Destroy"); }
W uint32_t MDTLM_VRALDCN_THREAD_GetEpollId(void) { missing("MDTLM_VRALDCN_THREAD_GetEpollId"); }
W uint32_t MDTLM_VRALDCN_STATS_CreateTimer(void) { missing("MDTLM_VRALDCN_STATS_CreateTimer"); }
W uint32_t MDTLM_VRALDCN_STATS_TimerCallback(void) { missing("MDTLM_VRALDCN_STATS_TimerCallback"); }
W uint32_t MDTLM_VRALDCN_STATS_PushStatsEventToQue(uint32_t secondCnt) { missing("MDTLM_VRALDCN_STATS_PushStatsEventToQue"); }
W uint32_t MDTLM_VRALDCN_STATS_GetTimerSecondCnt(void) { missing("MDTLM_VRALDCN_STATS_GetTimerSecondCnt"); }
W void MDTLM_VRALDCN_STATS_DestroyTimer(void) { missing("MDTLM_VRALDCN_STATS_DestroyTimer"); }
W void *g_mdtlmNtvVralDcnStatsQueHdl{};
W void *g_mdtlmNtvVralDcnChanHandle{};
W uint32_t MDTLM_VRALDCN_STATS_Init(void) { missing("MDTLM_VRALDCN_STATS_Init"); }
W void MDTLM_VRALDCN_STATS_Destory(void) { missing("MDTLM_VRALDCN_STATS_Destory"); }
W uint32_t MDTLM_VRALDCN_STATS_IPC_Init(void) { missing("MDTLM_VRALDCN_STATS_IPC_Init"); }
W uint32_t MDTLM_VRALDCN_STATS_IPC_InitServer(void) { missing("MDTLM_VRALDCN_STATS_IPC_InitServer"); }
W uint32_t MDTLM_VRALDCN_STATS_IPC_RecvMsgProc(void *context, MDTLM_STATS_IPC_ENTRY *entries, uint32_t entryCnt) { missing("MDTLM_VRALDCN_STATS_IPC_RecvMsgProc"); }
W void MDTLM_VRALDCN_STATS_IPC_PushMsgToStatsQue(uint32_t msgType, const void *body, uint32_t bodyLen) { missing("MDTLM_VRALDCN_STATS_IPC_PushMsgToStatsQue"); }
W void MDTLM_VRALDCN_STATS_IPC_Destroy(void) { missing("MDTLM_VRALDCN_STATS_IPC_Destroy"); }
W void MDTLM_VRALDCN_STATS_IPC_DestroyServer(void) { missing("MDTLM_VRALDCN_STATS_IPC_DestroyServer"); }
W uint64_t MDTLM_VRALDCN_STATS_IPC_GetShortMsgCnt(void) { missing("MDTLM_VRALDCN_STATS_IPC_GetShortMsgCnt"); }
W uint32_t MDTLM_VRALDCN_STATS_QUE_Create(void) { missing("MDTLM_VRALDCN_STATS_QUE_Create"); }
W uint32_t MDTLM_VRALDCN_STATS_QUE_Push(MDTLM_STATS_MSG *msg) { missing("MDTLM_VRALDCN_STATS_QUE_Push"); }
W MDTLM_STATS_MSG * MDTLM_VRALDCN_STATS_QUE_Pop(void) { missing("MDTLM_VRALDCN_STATS_QUE_Pop"); }
W uint32_t MDTLM_VRALDCN_STATS_QUE_FlowCtrlProc(uint32_t event) { missing("MDTLM_VRALDCN_STATS_QUE_FlowCtrlProc"); }
W void MDTLM_VRALDCN_STATS_QUE_Destroy(void) { missing("MDTLM_VRALDCN_STATS_QUE_Destroy"); }
W uint32_t MDTLM_VRALDCN_FLOW_AddTlmTask(uint32_t instanceId, uint32_t taskId, const MDTLM_SENSOR_PATH_INFO *pathInfo) { missing("MDTLM_VRALDCN_FLOW_AddTlmTask"); }
W uint32_t MDTLM_VRALDCN_FLOW_DelTlmTask(uint32_t instanceId, uint32_t taskId) { missing("MDTLM_VRALDCN_FLOW_DelTlmTask"); }
W uint32_t MDTLM_VRALDCN_FLOWHOP_AddTlmTask(uint32_t instanceId, uint32_t taskId, const MDTLM_SENSOR_PATH_INFO *pathInfo) { missing("MDTLM_VRALDCN_FLOWHOP_AddTlmTask"); }
W uint32_t MDTLM_VRALDCN_FLOWHOP_DelTlmTask(uint32_t instanceId, uint32_t taskId) { missing("MDTLM_VRALDCN_FLOWHOP_DelTlmTask"); }
W uint32_t FWM_SRVTLM_FLOW_AddTlmTask(uint32_t instanceId, uint32_t taskId, const MDTLM_SENSOR_PATH_INFO *pathInfo) { missing("FWM_SRVTLM_FLOW_AddTlmTask"); }
W uint32_t FWM_SRVTLM_FLOW_DelTlmTask(uint32_t instanceId, uint32_t taskId) { missing("FWM_SRVTLM_FLOW_DelTlmTask"); }
W uint32_t FWM_QUMA_FLOW_AddTlmTask(uint32_t instanceId, uint32_t taskId, const MDTLM_SENSOR_PATH_INFO *pathInfo) { missing("FWM_QUMA_FLOW_AddTlmTask"); }
W uint32_t FWM_QUMA_FLOW_DelTlmTask(uint32_t instanceId, uint32_t taskId) { missing("FWM_QUMA_FLOW_DelTlmTask"); }
W uint32_t FWM_SRVTLM_FCTFLOW_AddTlmTask(uint32_t instanceId, uint32_t taskId, const MDTLM_SENSOR_PATH_INFO *pathInfo) { missing("FWM_SRVTLM_FCTFLOW_AddTlmTask"); }
W uint32_t FWM_SRVTLM_FCTFLOW_DelTlmTask(uint32_t instanceId, uint32_t taskId) { missing("FWM_SRVTLM_FCTFLOW_DelTlmTask"); }
W uint32_t FWM_ZELK_FLOW_AddTlmTask(uint32_t instanceId, uint32_t taskId, const MDTLM_SENSOR_PATH_INFO *pathInfo) { missing("FWM_ZELK_FLOW_AddTlmTask"); }
W uint32_t FWM_ZELK_FLOW_DelTlmTask(uint32_t instanceId, uint32_t taskId) { missing("FWM_ZELK_FLOW_DelTlmTask"); }
W uint32_t MDTLM_VRALDCN_AddTlmTask(uint32_t sensorType, uint32_t instanceId, uint32_t taskId, const MDTLM_SENSOR_PATH_INFO *pathInfo) { missing("MDTLM_VRALDCN_AddTlmTask"); }
W uint32_t MDTLM_VRALDCN_DelTlmTask(uint32_t sensorType, uint32_t instanceId, uint32_t taskId) { missing("MDTLM_VRALDCN_DelTlmTask"); }
W uint32_t MDTLM_VRALDCN_TASK_AddTlmTaskToList(void *payload, uint32_t payloadLen) { missing("MDTLM_VRALDCN_TASK_AddTlmTaskToList"); }
W uint32_t MDTLM_VRALDCN_TASK_DelTlmTaskFromList(void *payload, uint32_t payloadLen) { missing("MDTLM_VRALDCN_TASK_DelTlmTaskFromList"); }
W uint32_t MDTLM_VRALDCN_InitTaskNodeTask(const MDTLM_TASK_DATA *payload, MDTLM_TASK_DATA *task) { missing("MDTLM_VRALDCN_InitTaskNodeTask"); }
W MDTLM_LIST_LINK * MDTLM_VRALDCN_TASK_GetTaskHead(uint32_t sensorType) { missing("MDTLM_VRALDCN_TASK_GetTaskHead"); }
W const char * MDTLM_VRALDCN_TASK_GetJsonHeader(uint32_t sensorType) { missing("MDTLM_VRALDCN_TASK_GetJsonHeader"); }
W uint32_t MDTLM_VRALDCN_TASK_HasTlmTask(uint32_t sensorType) { missing("MDTLM_VRALDCN_TASK_HasTlmTask"); }
W uint32_t MDTLM_VRALDCN_TASK_GetEncodeType(uint32_t sensorType) { missing("MDTLM_VRALDCN_TASK_GetEncodeType"); }
W MDTLM_TASK_DATA * MDTLM_VRALDCN_GetTlmTaskInfo(uint32_t sensorType, uint32_t instanceId, uint32_t taskId) { missing("MDTLM_VRALDCN_GetTlmTaskInfo"); }
W void MDTLM_VRALDCN_TASK_ReleaseAll(void) { missing("MDTLM_VRALDCN_TASK_ReleaseAll"); }
W uint64_t MDTLM_VRALDCN_STATS_GetTimestamps(void) { missing("MDTLM_VRALDCN_STATS_GetTimestamps"); }
W uint32_t MDTLM_VRALDCN_STATS_GetTimestampSec(void) { missing("MDTLM_VRALDCN_STATS_GetTimestampSec"); }
W void MDTLM_VRALDCN_STATS_SetCollectTimestamp(MDTLM_SAMPLE_BUFFER *a, MDTLM_SAMPLE_BUFFER *b) { missing("MDTLM_VRALDCN_STATS_SetCollectTimestamp"); }
W void MDTLM_VRALDCN_STATS_InitSampleBuffer(MDTLM_STATS_MAP_ENTRY *row) { missing("MDTLM_VRALDCN_STATS_InitSampleBuffer"); }
W uint32_t MDTLM_STATS_InitTaskSampleBuffer(MDTLM_TASK_DATA *task) { missing("MDTLM_STATS_InitTaskSampleBuffer"); }
W void MDTLM_STATS_InitTaskStats(uint32_t sensorType) { missing("MDTLM_STATS_InitTaskStats"); }
W void MDTLM_VRALDCN_STATS_InitStatsMap(void) { missing("MDTLM_VRALDCN_STATS_InitStatsMap"); }
W MDTLM_STATS_MAP_ENTRY * MDTLM_VRALDCN_STATS_GetStatsMap(uint32_t sensorType) { missing("MDTLM_VRALDCN_STATS_GetStatsMap"); }
W uint32_t MDTLM_VRALDCN_STATS_UploadStatsData(void *payload, uint32_t payloadLen) { missing("MDTLM_VRALDCN_STATS_UploadStatsData"); }
W uint32_t MDTLM_VRALDCN_STATS_UploadStatsDataByStatsMsg(MDTLM_STATS_MSG *msg) { missing("MDTLM_VRALDCN_STATS_UploadStatsDataByStatsMsg"); }
W void MDTLM_VRALDCN_STATS_UploadRest(void) { missing("MDTLM_VRALDCN_STATS_UploadRest"); }
W void MDTLM_VRALDCN_STATS_UploadRestByTask(uint32_t sensorType) { missing("MDTLM_VRALDCN_STATS_UploadRestByTask"); }
W void MDTLM_VRALDCN_TASK_UploadStatsDataByTask(MDTLM_SAMPLE_BUFFER *buffer, MDTLM_TASK_DATA *task) { missing("MDTLM_VRALDCN_TASK_UploadStatsDataByTask"); }
W uint32_t MDTLM_VRALDCN_TASK_FormatStatsData(uint32_t sensorType, uint32_t codeType, const MDTLM_SAMPLE_BUFFER *src, MDTLM_SAMPLE_BUFFER *dst) { missing("MDTLM_VRALDCN_TASK_FormatStatsData"); }
W uint32_t MDTLM_VRALDCN_TASK_IsActiveReportEnd(MDTLM_TASK_DATA *task) { missing("MDTLM_VRALDCN_TASK_IsActiveReportEnd"); }
W void MDTLM_VRALDCN_TASK_UploadStatsDataProc(MDTLM_SAMPLE_BUFFER *sample, MDTLM_TASK_DATA *task) { missing("MDTLM_VRALDCN_TASK_UploadStatsDataProc"); }
W void MDTLM_VRALDCN_TASK_UploadStatsData(uint32_t sensorType, const MDTLM_SAMPLE_BUFFER *src, uint32_t codeType) { missing("MDTLM_VRALDCN_TASK_UploadStatsData"); }
W uint32_t MDTLM_VRALDCN_UploadDataToTlm(MDTLM_SAMPLE_BUFFER *sample) { missing("MDTLM_VRALDCN_UploadDataToTlm"); }
W MDTLM_REPORT_PERF_SLOT *g_mdtlmNtvVralDcnReportPerf{};
W uint32_t MDTLM_VRALDCN_InitReportPerf(void) { missing("MDTLM_VRALDCN_InitReportPerf"); }
W void MDTLM_VRALDCN_DestoryReportPerf(void) { missing("MDTLM_VRALDCN_DestoryReportPerf"); }
W void MDTLM_VRALDCN_ResetReportPerf(void) { missing("MDTLM_VRALDCN_ResetReportPerf"); }
W void MDTLM_VRALDCN_SetReportPerfTimestamps(uint32_t *seconds, uint32_t *milliseconds) { missing("MDTLM_VRALDCN_SetReportPerfTimestamps"); }
W void MDTLM_VRALDCN_UpdateReportPerfPeriodIndex(uint32_t period) { missing("MDTLM_VRALDCN_UpdateReportPerfPeriodIndex"); }
W void MDTLM_VRALDCN_UpdateReportPerfInFwmItermCnt(uint32_t period, uint32_t items, uint32_t bytes) { missing("MDTLM_VRALDCN_UpdateReportPerfInFwmItermCnt"); }
W void MDTLM_VRALDCN_UpdateReportPerfOutItemCnt(uint32_t period, uint32_t items, uint32_t bytes) { missing("MDTLM_VRALDCN_UpdateReportPerfOutItemCnt"); }
W void MDTLM_VRALDCN_UpdateReportPerfStartTime(uint32_t period, uint32_t seconds, uint32_t milliseconds) { missing("MDTLM_VRALDCN_UpdateReportPerfStartTime"); }
W void MDTLM_VRALDCN_UpdateReportPerfEndTime(uint32_t period, uint32_t seconds, uint32_t milliseconds) { missing("MDTLM_VRALDCN_UpdateReportPerfEndTime"); }
W void MDTLM_VRALDCN_UpdateReportPerfToDb(void) { missing("MDTLM_VRALDCN_UpdateReportPerfToDb"); }
W void MDTLM_VRALDCN_ClearReportPerfData(void) { missing("MDTLM_VRALDCN_ClearReportPerfData"); }
W void MDTLM_VRALDCN_TruncateReportPerfEntryDbData(void) { missing("MDTLM_VRALDCN_TruncateReportPerfEntryDbData"); }
W uint32_t MDTLM_VRALDCN_AddReportPerfEntryDbData(const MDTLM_REPORT_PERF_REC *rec) { missing("MDTLM_VRALDCN_AddReportPerfEntryDbData"); }
W uint32_t MDTLM_VRALDCN_UpdateReportPerfEntryDb(const MDTLM_DB_KEY_DESC *desc, const MDTLM_DB_KEY *key, const MDTLM_REPORT_PERF_REC *rec) { missing("MDTLM_VRALDCN_UpdateReportPerfEntryDb"); }
W uint32_t MDTLM_VRALDCN_WriteReportPerfEntryDb(const MDTLM_REPORT_PERF_REC *rec) { missing("MDTLM_VRALDCN_WriteReportPerfEntryDb"); }
W uint32_t MDTLM_VRALDCN_CheckReportPerfEntryDataExist(const MDTLM_DB_KEY_DESC *desc, const MDTLM_DB_KEY *key) { missing("MDTLM_VRALDCN_CheckReportPerfEntryDataExist"); }
W const char * MDTLM_FEM_TASK_GetPathName(uint32_t sensorType) { missing("MDTLM_FEM_TASK_GetPathName"); }
W uint32_t MDTLM_FEM_SetTaskStatDbRecord(const MDTLM_FEM_TASK_STAT_REC *rec) { missing("MDTLM_FEM_SetTaskStatDbRecord"); }
W uint32_t MDTLM_FEM_GetTaskStatDbRecord(const MDTLM_DB_KEY *key, MDTLM_FEM_TASK_STAT_REC *rec) { missing("MDTLM_FEM_GetTaskStatDbRecord"); }
W void MDTLM_FEM_DelTaskStatDbRecord(const MDTLM_DB_KEY *key) { missing("MDTLM_FEM_DelTaskStatDbRecord"); }
W uint32_t MDTLM_FEM_AddTaskStatDb(uint32_t sensorType, MDTLM_TASK_DATA *task, MDTLM_FEM_TASK_STAT_REC *rec) { missing("MDTLM_FEM_AddTaskStatDb"); }
W void MDTLM_FEM_UpdateTaskStatDb(uint32_t sensorType, MDTLM_TASK_DATA *task, MDTLM_FEM_TASK_STAT_REC *rec) { missing("MDTLM_FEM_UpdateTaskStatDb"); }
W uint32_t MDTLM_FEM_WriteTaskStat2DbProc(uint32_t sensorType, MDTLM_TASK_DATA *task) { missing("MDTLM_FEM_WriteTaskStat2DbProc"); }
W void MDTLM_FEM_WriteAllTaskStat2Db(void) { missing("MDTLM_FEM_WriteAllTaskStat2Db"); }
W void MDTLM_FEM_DelTaskStatDb(MDTLM_TASK_DATA *task) { missing("MDTLM_FEM_DelTaskStatDb"); }
W int32_t MDTLM_VRALDCN_GPB_EncodeVarint(uint64_t value, uint8_t *out, int32_t cap) { missing("MDTLM_VRALDCN_GPB_EncodeVarint"); }
W int32_t MDTLM_VRALDCN_GPB_EncodeFieldType(uint32_t fieldId, uint32_t wireType, uint8_t *out, int32_t cap) { missing("MDTLM_VRALDCN_GPB_EncodeFieldType"); }
W int32_t MDTLM_VRALDCN_GPB_EncodeLengthDelimited(uint32_t fieldId, const uint8_t *bytes, uint32_t len, uint8_t *out, int32_t cap) { missing("MDTLM_VRALDCN_GPB_EncodeLengthDelimited"); }
W int32_t MDTLM_VRALDCN_GPB_EncodeString(uint32_t fieldId, const char *text, uint8_t *out, int32_t cap) { missing("MDTLM_VRALDCN_GPB_EncodeString"); }
W int32_t MDTLM_VRALDCN_GPB_EncodeInterger(uint32_t fieldId, uint64_t value, uint8_t *out, int32_t cap) { missing("MDTLM_VRALDCN_GPB_EncodeInterger"); }
W uint32_t MDTLM_VRALDCN_ConvertIpv4AddrToStr(uint32_t addr, char *out, uint32_t cap) { missing("MDTLM_VRALDCN_ConvertIpv4AddrToStr"); }
W uint32_t MDTLM_VRALDCN_ConvertIpv6AddrToStr(const void *addr, char *out, uint32_t cap) { missing("MDTLM_VRALDCN_ConvertIpv6AddrToStr"); }
W uint32_t MDTLM_VRALDCN_ConvertMacAddrToStr(const uint8_t *mac, char *out, uint32_t cap) { missing("MDTLM_VRALDCN_ConvertMacAddrToStr"); }
W uint32_t MDTLM_STATS_SensorPathCondition(const MDTLM_SENSOR_PATH_INFO *pathInfo, const void *record, const MDTLM_FILTER_MAP_ENTRY *map, uint32_t mapRows, MDTLM_CONDITION_CMP_FUNC cmp) { missing("MDTLM_STATS_SensorPathCondition"); }
W uint32_t MDTLM_STATS_SensorPathFilter(const MDTLM_SENSOR_PATH_INFO *pathInfo, const void *record, const MDTLM_FILTER_MAP_ENTRY *map, uint32_t mapRows, MDTLM_FILTER_CMP_FUNC cmp) { missing("MDTLM_STATS_SensorPathFilter"); }
W uint32_t MDTLM_STATS_SensorFilterOp(uint32_t threshold, uint32_t value, uint32_t op) { missing("MDTLM_STATS_SensorFilterOp"); }
W uint32_t MDTLM_STATS_SensorFilterOp64(uint64_t threshold, uint64_t value, uint32_t op) { missing("MDTLM_STATS_SensorFilterOp64"); }
W uint32_t MDTLM_STATS_SensorFilterIsAnd(uint32_t filterCnt, uint32_t filterLogic) { missing("MDTLM_STATS_SensorFilterIsAnd"); }
W uint32_t g_unicastJsonSequenceNumber{};
W uint32_t g_multicastJsonSequenceNumber{};
W uint8_t g_vralDcnFlowStatsBuff1[MDTLM_GPB_SCRATCH_SIZE]{};
W uint8_t g_vralDcnFlowStatsBuff2[MDTLM_GPB_SCRATCH_SIZE]{};
W extern const MDTLM_FILTER_MAP_ENTRY g_mdTlmFlowStatsCondMap[2] = {};
W extern const MDTLM_FILTER_MAP_ENTRY g_mdTlmFlowStatsFilterMap[13] = {};
W uint32_t MDTLM_VRALDCN_FLOW_STATS_StatsMsgProc(MDTLM_TASK_DATA *task, MDTLM_STATS_MSG *msg) { missing("MDTLM_VRALDCN_FLOW_STATS_StatsMsgProc"); }
W void MDTLM_VRALDCN_FLOW_STATS_EncodeStatsData(const MDTLM_FLOW_STATS_REC *rec, MDTLM_TASK_DATA *task) { missing("MDTLM_VRALDCN_FLOW_STATS_EncodeStatsData"); }
W int32_t MDTLM_VRALDCN_FLOW_GPB_EncodeMsg(const MDTLM_FLOW_STATS_REC *rec, uint8_t *out, int32_t cap) { missing("MDTLM_VRALDCN_FLOW_GPB_EncodeMsg"); }
W int32_t MDTLM_VRALDCN_FLOW_JSON_EncodeMsg(const MDTLM_FLOW_STATS_REC *rec, uint8_t *out, int32_t cap) { missing("MDTLM_VRALDCN_FLOW_JSON_EncodeMsg"); }
W int32_t MDTLM_VRALDCN_FLOW_GPB_EncodeData(const MDTLM_FLOW_STATS_REC *rec, uint8_t *out, int32_t cap) { missing("MDTLM_VRALDCN_FLOW_GPB_EncodeData"); }
W int32_t MDTLM_VRALDCN_FLOW_GPB_EncodeFlowInfo(const MDTLM_FLOW_STATS_REC *rec, uint8_t *out, int32_t cap) { missing("MDTLM_VRALDCN_FLOW_GPB_EncodeFlowInfo"); }
W int32_t MDTLM_VRALDCN_FLOW_GPB_EncodeTuple(const MDTLM_FLOW_STATS_REC *rec, uint8_t *out, int32_t cap) { missing("MDTLM_VRALDCN_FLOW_GPB_EncodeTuple"); }
W int32_t MDTLM_VRALDCN_FLOW_GPB_EncodeIpAddress(const MDTLM_FLOW_STATS_REC *rec, uint8_t *out, int32_t cap) { missing("MDTLM_VRALDCN_FLOW_GPB_EncodeIpAddress"); }
W int32_t MDTLM_VRALDCN_FLOW_GPB_EncodeStatistics(const MDTLM_FLOW_STATS_REC *rec, uint8_t *out, int32_t cap) { missing("MDTLM_VRALDCN_FLOW_GPB_EncodeStatistics"); }
W int32_t MDTLM_VRALDCN_FLOW_GPB_EncodePacketInfo(const MDTLM_FLOW_STATS_REC *rec, uint8_t *out, int32_t cap) { missing("MDTLM_VRALDCN_FLOW_GPB_EncodePacketInfo"); }
W int32_t MDTLM_VRALDCN_FLOW_GPB_EncodeProtocolPort(const MDTLM_FLOW_STATS_REC *rec, uint8_t *out, int32_t cap) { missing("MDTLM_VRALDCN_FLOW_GPB_EncodeProtocolPort"); }
W int32_t MDTLM_VRALDCN_FLOW_GPB_EncodeErrorInfo(const MDTLM_FLOW_STATS_REC *rec, uint8_t *out, int32_t cap) { missing("MDTLM_VRALDCN_FLOW_GPB_EncodeErrorInfo"); }
W int32_t MDTLM_VRALDCN_FLOW_GPB_EncodePacketByteCnt(const MDTLM_FLOW_STATS_REC *rec, uint8_t *out, int32_t cap) { missing("MDTLM_VRALDCN_FLOW_GPB_EncodePacketByteCnt"); }
W int32_t MDTLM_VRALDCN_FLOW_GPB_EncodeTimeStamp(const MDTLM_FLOW_STATS_REC *rec, uint8_t *out, int32_t cap) { missing("MDTLM_VRALDCN_FLOW_GPB_EncodeTimeStamp"); }
W int32_t MDTLM_VRALDCN_FLOW_JSON_CheckEncodePara(const MDTLM_FLOW_STATS_REC *rec, const uint8_t *out, int32_t cap) { missing("MDTLM_VRALDCN_FLOW_JSON_CheckEncodePara"); }
W uint32_t MDTLM_VRALDCN_FlowCmpFieldWithCondition(uint32_t fieldId, const MDTLM_PATH_CONDITION *cond, const void *record) { missing("MDTLM_VRALDCN_FlowCmpFieldWithCondition"); }
W uint32_t MDTLM_VRALDCN_FlowCmpFieldWithFilter(uint32_t fieldId, const MDTLM_PATH_FILTER *filter, const void *record) { missing("MDTLM_VRALDCN_FlowCmpFieldWithFilter"); }
W uint32_t MDTLM_VRALDCN_FLOW_JSON_EncodeIpv4(const MDTLM_FLOW_STATS_REC *rec, char *src, char *dst, uint32_t cap) { missing("MDTLM_VRALDCN_FLOW_JSON_EncodeIpv4"); }
W uint32_t MDTLM_VRALDCN_FLOW_JSON_EncodeIpv6(const MDTLM_FLOW_STATS_REC *rec, char *src, char *dst, uint32_t cap) { missing("MDTLM_VRALDCN_FLOW_JSON_EncodeIpv6"); }
W uint32_t MDTLM_VRALDCN_FLOW_GetSequenceNumber(uint32_t castType, const MDTLM_TASK_DATA *task) { missing("MDTLM_VRALDCN_FLOW_GetSequenceNumber"); }
W void MDTLM_VRALDCN_FLOW_AddSequenceNumber(uint32_t castType, MDTLM_TASK_DATA *task) { missing("MDTLM_VRALDCN_FLOW_AddSequenceNumber"); }
W void MDTLM_VRALDCN_FLOW_JSON_AddSequenceNumber(uint32_t castType) { missing("MDTLM_VRALDCN_FLOW_JSON_AddSequenceNumber"); }
W void MDTLM_VRALDCN_FLOW_JSON_GenFlowInfo(const void *record, uint64_t *flowId, uint32_t *direction) { missing("MDTLM_VRALDCN_FLOW_JSON_GenFlowInfo"); }
W void MDTLM_VRALDCN_FLOW_JSON_GenPacketInfo(const void *record, uint32_t *addressFamily, uint32_t *tunnelMode, uint32_t *errorInfo, uint32_t *errorInfoExt) { missing("MDTLM_VRALDCN_FLOW_JSON_GenPacketInfo"); }
W uint32_t MDTLM_VRALDCN_FLOW_GetTunnelMode(uint32_t tunnelFlag, uint32_t tunnelType) { missing("MDTLM_VRALDCN_FLOW_GetTunnelMode"); }
W uint32_t g_unicastJsonHopSequenceNumber{};
W uint32_t g_multicastJsonHopSequenceNumber{};
W uint8_t g_vralDcnFlowHopStatsBuff1[MDTLM_GPB_SCRATCH_SIZE]{};
W uint8_t g_vralDcnFlowHopStatsBuff2[MDTLM_GPB_SCRATCH_SIZE]{};
W extern const MDTLM_FILTER_MAP_ENTRY g_femMdTlmFlowHopStatsCondMap[2] = {};
W extern const MDTLM_FILTER_MAP_ENTRY g_mdTlmFlowHopStatsFilterMap[15] = {};
W uint32_t MDTLM_VRALDCN_FLOWHOP_STATS_StatsMsgProc(MDTLM_TASK_DATA *task, MDTLM_STATS_MSG *msg) { missing("MDTLM_VRALDCN_FLOWHOP_STATS_StatsMsgProc"); }
W void MDTLM_VRALDCN_FLOWHOP_STATS_EncodeStatsData(const MDTLM_FLOWHOP_STATS_REC *rec, MDTLM_TASK_DATA *task) { missing("MDTLM_VRALDCN_FLOWHOP_STATS_EncodeStatsData"); }
W int32_t MDTLM_VRALDCN_FLOWHOP_GPB_EncodeMsg(const MDTLM_FLOWHOP_STATS_REC *rec, uint8_t *out, int32_t cap) { missing("MDTLM_VRALDCN_FLOWHOP_GPB_EncodeMsg"); }
W int32_t MDTLM_VRALDCN_FLOWHOP_JSON_EncodeMsg(const MDTLM_FLOWHOP_STATS_REC *rec, uint8_t *out, int32_t cap) { missing("MDTLM_VRALDCN_FLOWHOP_JSON_EncodeMsg"); }
W int32_t MDTLM_VRALDCN_FLOWHOP_GPB_EncodeData(const MDTLM_FLOWHOP_STATS_REC *rec, uint8_t *out, int32_t cap) { missing("MDTLM_VRALDCN_FLOWHOP_GPB_EncodeData"); }
W int32_t MDTLM_VRALDCN_FLOWHOP_GPB_EncodeFlowInfo(const MDTLM_FLOWHOP_STATS_REC *rec, uint8_t *out, int32_t cap) { missing("MDTLM_VRALDCN_FLOWHOP_GPB_EncodeFlowInfo"); }
W int32_t MDTLM_VRALDCN_FLOWHOP_GPB_EncodeStatistics(const MDTLM_FLOWHOP_STATS_REC *rec, uint8_t *out, int32_t cap) { missing("MDTLM_VRALDCN_FLOWHOP_GPB_EncodeStatistics"); }
W int32_t MDTLM_VRALDCN_FLOWHOP_GPB_EncodePacketInfo(const MDTLM_FLOWHOP_STATS_REC *rec, uint8_t *out, int32_t cap) { missing("MDTLM_VRALDCN_FLOWHOP_GPB_EncodePacketInfo"); }
W int32_t MDTLM_VRALDCN_FLOWHOP_GPB_EncodeDelay(const MDTLM_FLOWHOP_STATS_REC *rec, uint8_t *out, int32_t cap) { missing("MDTLM_VRALDCN_FLOWHOP_GPB_EncodeDelay"); }
W int32_t MDTLM_VRALDCN_FLOWHOP_GPB_EncodeErrorInfo(const MDTLM_FLOWHOP_STATS_REC *rec, uint8_t *out, int32_t cap) { missing("MDTLM_VRALDCN_FLOWHOP_GPB_EncodeErrorInfo"); }
W int32_t MDTLM_VRALDCN_FLOWHOP_GPB_EncodePacketByteCnt(const MDTLM_FLOWHOP_STATS_REC *rec, uint8_t *out, int32_t cap) { missing("MDTLM_VRALDCN_FLOWHOP_GPB_EncodePacketByteCnt"); }
W int32_t MDTLM_VRALDCN_FLOWHOP_GPB_EncodeTimeStamp(const MDTLM_FLOWHOP_STATS_REC *rec, uint8_t *out, int32_t cap) { missing("MDTLM_VRALDCN_FLOWHOP_GPB_EncodeTimeStamp"); }
W int32_t MDTLM_VRALDCN_FLOWHOP_JSON_CheckEncodePara(const MDTLM_FLOWHOP_STATS_REC *rec, const uint8_t *out, int32_t cap) { missing("MDTLM_VRALDCN_FLOWHOP_JSON_CheckEncodePara"); }
W uint32_t MDTLM_VRALDCN_FlowHopCmpFieldWithInfo(uint32_t fieldId, const MDTLM_PATH_CONDITION *cond, const void *record) { missing("MDTLM_VRALDCN_FlowHopCmpFieldWithInfo"); }
W uint32_t MDTLM_VRALDCN_FlowHopCmpFieldWithFilter(uint32_t fieldId, const MDTLM_PATH_FILTER *filter, const void *record) { missing("MDTLM_VRALDCN_FlowHopCmpFieldWithFilter"); }
W uint32_t MDTLM_VRALDCN_FLOWHOP_GetSequenceNumber(uint32_t castType, const MDTLM_TASK_DATA *task) { missing("MDTLM_VRALDCN_FLOWHOP_GetSequenceNumber"); }
W void MDTLM_VRALDCN_FLOWHOP_AddSequenceNumber(uint32_t castType, MDTLM_TASK_DATA *task) { missing("MDTLM_VRALDCN_FLOWHOP_AddSequenceNumber"); }
W void MDTLM_VRALDCN_FLOWHOP_JSON_AddSequenceNumber(uint32_t castType) { missing("MDTLM_VRALDCN_FLOWHOP_JSON_AddSequenceNumber"); }
W uint8_t g_zelkCachesBuff1[MDTLM_GPB_SCRATCH_SIZE]{};
W uint8_t g_zelkCachesBuff2[MDTLM_GPB_SCRATCH_SIZE]{};
W extern const MDTLM_FILTER_MAP_ENTRY g_femMdTlmZelkCacheCondMap[7] = {};
W extern const MDTLM_FILTER_MAP_ENTRY g_femMdTlmZelkCacheFilterMap[7] = {};
W uint32_t MDTLM_ZELK_CacheMsgProc(MDTLM_TASK_DATA *task, MDTLM_STATS_MSG *msg) { missing("MDTLM_ZELK_CacheMsgProc"); }
W void MDTLM_ZELK_EncodeCacheData(const MDTLM_ZELK_CACHE_REC *rec, MDTLM_TASK_DATA *task) { missing("MDTLM_ZELK_EncodeCacheData"); }
W uint32_t MDTLM_ZELK_CmpFieldWithCondition(uint32_t fieldId, const MDTLM_PATH_CONDITION *cond, const void *record) { missing("MDTLM_ZELK_CmpFieldWithCondition"); }
W uint32_t MDTLM_ZELK_CmpFieldWithThread(uint32_t fieldId, const MDTLM_PATH_FILTER *filter, const void *record) { missing("MDTLM_ZELK_CmpFieldWithThread"); }
W uint32_t MDTLM_ZELK_CmpIpv4WithStr(uint32_t addr, const char *text) { missing("MDTLM_ZELK_CmpIpv4WithStr"); }
W int32_t MDTLM_ZELK_GPB_EncodeMsg(const MDTLM_ZELK_CACHE_REC *rec, uint8_t *out, int32_t cap) { missing("MDTLM_ZELK_GPB_EncodeMsg"); }
W int32_t MDTLM_ZELK_GPB_EncodeData(const MDTLM_ZELK_CACHE_REC *rec, uint8_t *out, int32_t cap) { missing("MDTLM_ZELK_GPB_EncodeData"); }
W int32_t MDTLM_ZELK_GPB_EncodeCacheKeyInfo(const MDTLM_ZELK_CACHE_REC *rec, uint8_t *out, int32_t cap) { missing("MDTLM_ZELK_GPB_EncodeCacheKeyInfo"); }
W int32_t MDTLM_ZELK_GPB_EncodeCacheDataInfo(const MDTLM_ZELK_CACHE_REC *rec, uint8_t *out, int32_t cap) { missing("MDTLM_ZELK_GPB_EncodeCacheDataInfo"); }
W int32_t MDTLM_ZELK_GPB_EncodeIpAddress(const MDTLM_ZELK_CACHE_REC *rec, uint8_t *out, int32_t cap) { missing("MDTLM_ZELK_GPB_EncodeIpAddress"); }
W int32_t MDTLM_ZELK_JSON_EncodeMsg(const MDTLM_ZELK_CACHE_REC *rec, uint8_t *out, int32_t cap) { missing("MDTLM_ZELK_JSON_EncodeMsg"); }
W int32_t MDTLM_ZELK_JSON_CheckEncodePara(const MDTLM_ZELK_CACHE_REC *rec, const uint8_t *out, int32_t cap) { missing("MDTLM_ZELK_JSON_CheckEncodePara"); }
W uint32_t MDTLM_ZELK_JSON_EncodeIpv4(const MDTLM_ZELK_CACHE_REC *rec, char *src, char *dst, uint32_t cap) { missing("MDTLM_ZELK_JSON_EncodeIpv4"); }
W int32_t MDTLM_ZELK_GetProtocol(uint32_t protocol, char *out, uint32_t size) { missing("MDTLM_ZELK_GetProtocol"); }
W int32_t MDTLM_ZELK_GetRecoveryModeStr(uint32_t mode, char *out, uint32_t size) { missing("MDTLM_ZELK_GetRecoveryModeStr"); }
W int32_t MDTLM_ZELK_GetOpModeStr(uint32_t mode, char *out, uint32_t size) { missing("MDTLM_ZELK_GetOpModeStr"); }
W int32_t MDTLM_ZELK_GetAclAppStatStr(uint32_t state, char *out, uint32_t size) { missing("MDTLM_ZELK_GetAclAppStatStr"); }
W uint8_t g_qumaStatsBuff1[MDTLM_GPB_SCRATCH_SIZE]{};
W uint8_t g_qumaStatsBuff2[MDTLM_GPB_SCRATCH_SIZE]{};
W extern const MDTLM_FILTER_MAP_ENTRY g_femMdTlmQumaResultCondMap[2] = {};
W extern const MDTLM_FILTER_MAP_ENTRY g_femMdTlmQumaResultFilterMap[10] = {};
W uint32_t MDTLM_QUMA_STATS_StatsMsgProc(MDTLM_TASK_DATA *task, MDTLM_STATS_MSG *msg) { missing("MDTLM_QUMA_STATS_StatsMsgProc"); }
W void MDTLM_QUMA_STATS_EncodeStatsData(const MDTLM_QUMA_RESULT_REC *rec, MDTLM_TASK_DATA *task) { missing("MDTLM_QUMA_STATS_EncodeStatsData"); }
W uint32_t MDTLM_QUMA_STATS_CmpFieldWithCondition(uint32_t fieldId, const MDTLM_PATH_CONDITION *cond, const void *record) { missing("MDTLM_QUMA_STATS_CmpFieldWithCondition"); }
W uint32_t MDTLM_QUMA_STATS_CmpFieldWithThread(uint32_t fieldId, const MDTLM_PATH_FILTER *filter, const void *record) { missing("MDTLM_QUMA_STATS_CmpFieldWithThread"); }
W int32_t MDTLM_QUMA_GPB_EncodeMsg(const MDTLM_QUMA_RESULT_REC *rec, uint8_t *out, int32_t cap) { missing("MDTLM_QUMA_GPB_EncodeMsg"); }
W int32_t MDTLM_QUMA_GPB_EncodeData(const MDTLM_QUMA_RESULT_REC *rec, uint8_t *out, int32_t cap) { missing("MDTLM_QUMA_GPB_EncodeData"); }
W int32_t MDTLM_QUMA_GPB_EncodeCommonInfo(const MDTLM_QUMA_RESULT_REC *rec, uint8_t *out, int32_t cap) { missing("MDTLM_QUMA_GPB_EncodeCommonInfo"); }
W int32_t MDTLM_QUMA_GPB_EncodeAclInfo(const MDTLM_QUMA_RESULT_REC *rec, uint8_t *out, int32_t cap) { missing("MDTLM_QUMA_GPB_EncodeAclInfo"); }
W int32_t MDTLM_QUMA_GPB_EncodeResultInfo(const MDTLM_QUMA_RESULT_REC *rec, uint8_t *out, int32_t cap) { missing("MDTLM_QUMA_GPB_EncodeResultInfo"); }
W int32_t MDTLM_QUMA_GPB_EncodeStatistics(const MDTLM_QUMA_RESULT_REC *rec, uint8_t *out, int32_t cap) { missing("MDTLM_QUMA_GPB_EncodeStatistics"); }
W int32_t MDTLM_QUMA_JSON_EncodeMsg(const MDTLM_QUMA_RESULT_REC *rec, uint8_t *out, int32_t cap) { missing("MDTLM_QUMA_JSON_EncodeMsg"); }
W int32_t MDTLM_QUMA_JSON_CheckEncodePara(const MDTLM_QUMA_RESULT_REC *rec, const uint8_t *out, int32_t cap) { missing("MDTLM_QUMA_JSON_CheckEncodePara"); }
W int32_t MDTLM_QUMA_GetProtocolName(uint32_t protocol, char *out, uint32_t size) { missing("MDTLM_QUMA_GetProtocolName"); }
W uint8_t g_srvtlmFlowStatsBuff1[MDTLM_GPB_SCRATCH_SIZE]{};
W uint8_t g_srvtlmFlowStatsBuff2[MDTLM_GPB_SCRATCH_SIZE]{};
W extern const MDTLM_FILTER_MAP_ENTRY g_femMdTlmSrvtlmFlowCondMap[6] = {};
W extern const MDTLM_FILTER_MAP_ENTRY g_femMdTlmSrvtlmFlowFilterMap[16] = {};
W uint32_t MDTLM_SRVTLM_FLOW_STATS_StatsMsgProc(MDTLM_TASK_DATA *task, MDTLM_STATS_MSG *msg) { missing("MDTLM_SRVTLM_FLOW_STATS_StatsMsgProc"); }
W void MDTLM_SRVTLM_FLOW_STATS_EncodeStatsData(const MDTLM_SRVTLM_FLOW_STATS_REC *rec, MDTLM_TASK_DATA *task) { missing("MDTLM_SRVTLM_FLOW_STATS_EncodeStatsData"); }
W uint32_t MDTLM_SRVTLM_FLOW_STATS_CmpFieldWithInfo(uint32_t fieldId, const MDTLM_PATH_CONDITION *cond, const void *record) { missing("MDTLM_SRVTLM_FLOW_STATS_CmpFieldWithInfo"); }
W uint32_t MDTLM_SRVTLM_FLOW_STATS_CmpFieldWithFilter(uint32_t fieldId, const MDTLM_PATH_FILTER *filter, const void *record) { missing("MDTLM_SRVTLM_FLOW_STATS_CmpFieldWithFilter"); }
W uint32_t MDTLM_SRVTLM_CmpIpv4WithStr(uint32_t addr, const char *text) { missing("MDTLM_SRVTLM_CmpIpv4WithStr"); }
W uint32_t MDTLM_SRVTLM_CmpIpv6WithStr(const void *addr, const char *text) { missing("MDTLM_SRVTLM_CmpIpv6WithStr"); }
W uint32_t MDTLM_SRVTLM_CmpSrcIpWithStr(const MDTLM_SRVTLM_FLOW_STATS_REC *rec, const char *text) { missing("MDTLM_SRVTLM_CmpSrcIpWithStr"); }
W uint32_t MDTLM_SRVTLM_CmpDstIpWithStr(const MDTLM_SRVTLM_FLOW_STATS_REC *rec, const char *text) { missing("MDTLM_SRVTLM_CmpDstIpWithStr"); }
W int32_t MDTLM_SRVTLM_FLOW_GPB_EncodeMsg(const MDTLM_SRVTLM_FLOW_STATS_REC *rec, uint8_t *out, int32_t cap) { missing("MDTLM_SRVTLM_FLOW_GPB_EncodeMsg"); }
W int32_t MDTLM_SRVTLM_FLOW_GPB_EncodeData(const MDTLM_SRVTLM_FLOW_STATS_REC *rec, uint8_t *out, int32_t cap) { missing("MDTLM_SRVTLM_FLOW_GPB_EncodeData"); }
W int32_t MDTLM_SRVTLM_FLOW_GPB_EncodeFlowInfo(const MDTLM_SRVTLM_FLOW_STATS_REC *rec, uint8_t *out, int32_t cap) { missing("MDTLM_SRVTLM_FLOW_GPB_EncodeFlowInfo"); }
W int32_t MDTLM_SRVTLM_FLOW_GPB_EncodeIpAddress(const MDTLM_SRVTLM_FLOW_STATS_REC *rec, uint8_t *out, int32_t cap) { missing("MDTLM_SRVTLM_FLOW_GPB_EncodeIpAddress"); }
W int32_t MDTLM_SRVTLM_FLOW_GPB_EncodeStatistics(const MDTLM_SRVTLM_FLOW_STATS_REC *rec, uint8_t *out, int32_t cap) { missing("MDTLM_SRVTLM_FLOW_GPB_EncodeStatistics"); }
W int32_t MDTLM_SRVTLM_FLOW_GPB_EncodeReadInfo(const MDTLM_SRVTLM_FLOW_STATS_REC *rec, uint8_t *out, int32_t cap) { missing("MDTLM_SRVTLM_FLOW_GPB_EncodeReadInfo"); }
W int32_t MDTLM_SRVTLM_FLOW_GPB_EncodeWriteInfo(const MDTLM_SRVTLM_FLOW_STATS_REC *rec, uint8_t *out, int32_t cap) { missing("MDTLM_SRVTLM_FLOW_GPB_EncodeWriteInfo"); }
W int32_t MDTLM_SRVTLM_FLOW_JSON_EncodeMsg(const MDTLM_SRVTLM_FLOW_STATS_REC *rec, uint8_t *out, int32_t cap) { missing("MDTLM_SRVTLM_FLOW_JSON_EncodeMsg"); }
W int32_t MDTLM_SRVTLM_FLOW_JSON_CheckEncodePara(const MDTLM_SRVTLM_FLOW_STATS_REC *rec, const uint8_t *out, int32_t cap) { missing("MDTLM_SRVTLM_FLOW_JSON_CheckEncodePara"); }
W uint32_t MDTLM_SRVTLM_FLOW_JSON_EncodeIpv4(const MDTLM_SRVTLM_FLOW_STATS_REC *rec, char *src, char *dst, uint32_t cap) { missing("MDTLM_SRVTLM_FLOW_JSON_EncodeIpv4"); }
W uint32_t MDTLM_SRVTLM_FLOW_JSON_EncodeIpv6(const MDTLM_SRVTLM_FLOW_STATS_REC *rec, char *src, char *dst, uint32_t cap) { missing("MDTLM_SRVTLM_FLOW_JSON_EncodeIpv6"); }
W extern const MDTLM_FILTER_MAP_ENTRY g_femMdTlmSrvtlmFctFlowCondMap[5] = {};
W extern const MDTLM_FILTER_MAP_ENTRY g_femMdTlmSrvtlmFctFlowFilterMap[14] = {};
W uint32_t MDTLM_SRVTLM_FCT_FLOW_STATS_StatsMsgProc(MDTLM_TASK_DATA *task, MDTLM_STATS_MSG *msg) { missing("MDTLM_SRVTLM_FCT_FLOW_STATS_StatsMsgProc"); }
W void MDTLM_SRVTLM_FCTFLOW_STATS_EncodeStatsData(const MDTLM_SRVTLM_FCTFLOW_STATS_REC *rec, MDTLM_TASK_DATA *task) { missing("MDTLM_SRVTLM_FCTFLOW_STATS_EncodeStatsData"); }
W uint32_t MDTLM_SRVTLM_FCTFLOW_STATS_CmpFieldWithInfo(uint32_t fieldId, const MDTLM_PATH_CONDITION *cond, const void *record) { missing("MDTLM_SRVTLM_FCTFLOW_STATS_CmpFieldWithInfo"); }
W uint32_t MDTLM_SRVTLM_FCTFLOW_STATS_CmpFieldWithFilter(uint32_t fieldId, const MDTLM_PATH_FILTER *filter, const void *record) { missing("MDTLM_SRVTLM_FCTFLOW_STATS_CmpFieldWithFilter"); }
W uint32_t MDTLM_SRVTLM_FCTCmpSrcIpWithStr(const MDTLM_SRVTLM_FCTFLOW_STATS_REC *rec, const char *text) { missing("MDTLM_SRVTLM_FCTCmpSrcIpWithStr"); }
W uint32_t MDTLM_SRVTLM_FCTCmpDstIpWithStr(const MDTLM_SRVTLM_FCTFLOW_STATS_REC *rec, const char *text) { missing("MDTLM_SRVTLM_FCTCmpDstIpWithStr"); }
W int32_t MDTLM_SRVTLM_FCTFLOW_GPB_EncodeMsg(const MDTLM_SRVTLM_FCTFLOW_STATS_REC *rec, uint8_t *out, int32_t cap) { missing("MDTLM_SRVTLM_FCTFLOW_GPB_EncodeMsg"); }
W int32_t MDTLM_SRVTLM_FCTFLOW_GPB_EncodeData(const MDTLM_SRVTLM_FCTFLOW_STATS_REC *rec, uint8_t *out, int32_t cap) { missing("MDTLM_SRVTLM_FCTFLOW_GPB_EncodeData"); }
W int32_t MDTLM_SRVTLM_FCTFLOW_GPB_EncodeFlowInfo(const MDTLM_SRVTLM_FCTFLOW_STATS_REC *rec, uint8_t *out, int32_t cap) { missing("MDTLM_SRVTLM_FCTFLOW_GPB_EncodeFlowInfo"); }
W int32_t MDTLM_SRVTLM_FCTFLOW_GPB_EncodeIpAddress(const MDTLM_SRVTLM_FCTFLOW_STATS_REC *rec, uint8_t *out, int32_t cap) { missing("MDTLM_SRVTLM_FCTFLOW_GPB_EncodeIpAddress"); }
W int32_t MDTLM_SRVTLM_FCTFLOW_GPB_EncodeStatistics(const MDTLM_SRVTLM_FCTFLOW_STATS_REC *rec, uint8_t *out, int32_t cap) { missing("MDTLM_SRVTLM_FCTFLOW_GPB_EncodeStatistics"); }
W int32_t MDTLM_SRVTLM_FCTFLOW_GPB_EncodeWriteInfo(const MDTLM_SRVTLM_FCTFLOW_STATS_REC *rec, uint8_t *out, int32_t cap) { missing("MDTLM_SRVTLM_FCTFLOW_GPB_EncodeWriteInfo"); }
W int32_t MDTLM_SRVTLM_FCTFLOW_GPB_EncodeOtherInfo(const MDTLM_SRVTLM_FCTFLOW_STATS_REC *rec, uint8_t *out, int32_t cap) { missing("MDTLM_SRVTLM_FCTFLOW_GPB_EncodeOtherInfo"); }
W int32_t MDTLM_SRVTLM_FCTFLOW_JSON_EncodeMsg(const MDTLM_SRVTLM_FCTFLOW_STATS_REC *rec, uint8_t *out, int32_t cap) { missing("MDTLM_SRVTLM_FCTFLOW_JSON_EncodeMsg"); }
W int32_t MDTLM_SRVTLM_FCTFLOW_JSON_CheckEncodePara(const MDTLM_SRVTLM_FCTFLOW_STATS_REC *rec, const uint8_t *out, int32_t cap) { missing("MDTLM_SRVTLM_FCTFLOW_JSON_CheckEncodePara"); }
W uint32_t MDTLM_SRVTLM_FCTFLOW_JSON_EncodeIpv4(const MDTLM_SRVTLM_FCTFLOW_STATS_REC *rec, char *src, char *dst, uint32_t cap) { missing("MDTLM_SRVTLM_FCTFLOW_JSON_EncodeIpv4"); }
W uint32_t MDTLM_SRVTLM_FCTFLOW_JSON_EncodeIpv6(const MDTLM_SRVTLM_FCTFLOW_STATS_REC *rec, char *src, char *dst, uint32_t cap) { missing("MDTLM_SRVTLM_FCTFLOW_JSON_EncodeIpv6"); }
}
