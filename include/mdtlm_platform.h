/*
 * Services of the device platform that the plug-in calls. The plug-in defines
 * none of them: on the device they come from the process that loads it, on a
 * development host from libmdtlm_platform.so.
 */
#ifndef MDTLM_PLATFORM_H
#define MDTLM_PLATFORM_H

#include <stdarg.h>
#include <stddef.h>
#include <stdint.h>

#include "mdtlm_types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Component registry */
uint32_t COMP_GetVTable(uint32_t componentId, uint32_t interfaceId, void **table);

/* Queues */
void *FWM_QUE_CreateNew(const char *name, uint32_t mode, uint32_t depth, uint32_t elementSize);
uint32_t FWM_QUE_EpollReg(void *queue, uint32_t epollId, uint32_t (*readable)(void *queue));
uint32_t FWM_QUE_MonitorReg(void *queue, const MDTLM_QUE_MONITOR_CFG *cfg, uint32_t (*flowCtrl)(uint32_t event));
int32_t FWM_QUE_AsyWrite(void *queue, const void *elements, uint32_t count);
int32_t FWM_QUE_AsyRead(void *queue, void *elements, uint32_t count);
uint32_t FWM_QUE_Destory(void *queue);

/* Epoll loop, timer and tasks */
int32_t FWM_EPOLL_Create(void);
uint32_t FWM_EPOLL_Run(uint32_t epollId, uint32_t eventsPerWait, int32_t waitTimeoutMs);
uint32_t FWM_EPOLL_Destroy(uint32_t epollId);
int32_t FWM_TIMER_Create(uint32_t periodMs, uint32_t (*callback)(void), void *context, uint32_t epollId);
uint32_t FWM_TIMER_Destroy(int32_t timerId);
uint32_t PAL_TaskCreate(const char *name, uint32_t *taskId, uint32_t (*entry)(void), uint32_t priority,
                        uintptr_t stackSize, uint32_t flags, void *param);
uint32_t PAL_SystimeGet(PAL_SYSTIME *out);
uint32_t PAL_SystimeSecSince1970(const PAL_SYSTIME *time, uint32_t *high, uint32_t *seconds);

/* Statistics channel */
uint32_t FWM_CHAN_UCServer(const char *name, uint32_t flags, const MDTLM_UCSERVER_CFG *cfg, void *handleArea);
uint32_t FWM_CHAN_UCServerDestory(void *server);

/* Object database: operations of the create calls */
enum { MDTLM_DB_OP_WRITE = 0, MDTLM_DB_OP_UPDATE = 1, MDTLM_DB_OP_READ = 3, MDTLM_DB_OP_REMOVE = 4 };

uint32_t db_create_vraldcn_mdtlm_report_perf_obj(uint32_t operation, uint32_t flags, void **handle);
uint32_t db_release_vraldcn_mdtlm_report_perf_object(void *handle);
uint32_t db_set_vraldcn_mdtlm_report_perf_all_fields(void *handle, const void *record, uint32_t length);
uint32_t db_set_vraldcn_mdtlm_report_perf_period_index(void *handle, uint32_t value);
uint32_t db_set_vraldcn_mdtlm_report_perf_in_fwm_msg_count(void *handle, uint32_t value);
uint32_t db_set_vraldcn_mdtlm_report_perf_in_fwm_msg_byte_count(void *handle, uint32_t value);
uint32_t db_set_vraldcn_mdtlm_report_perf_in_fwm_item_count(void *handle, uint32_t value);
uint32_t db_set_vraldcn_mdtlm_report_perf_in_fwm_item_byte_count(void *handle, uint32_t value);
uint32_t db_set_vraldcn_mdtlm_report_perf_out_msg_count(void *handle, uint32_t value);
uint32_t db_set_vraldcn_mdtlm_report_perf_out_msg_byte_count(void *handle, uint32_t value);
uint32_t db_set_vraldcn_mdtlm_report_perf_out_item_count(void *handle, uint32_t value);
uint32_t db_set_vraldcn_mdtlm_report_perf_out_item_byte_count(void *handle, uint32_t value);
uint32_t db_set_vraldcn_mdtlm_report_perf_start_time_s(void *handle, uint32_t value);
uint32_t db_set_vraldcn_mdtlm_report_perf_start_time_ms(void *handle, uint32_t value);
uint32_t db_set_vraldcn_mdtlm_report_perf_end_time_s(void *handle, uint32_t value);
uint32_t db_set_vraldcn_mdtlm_report_perf_end_time_ms(void *handle, uint32_t value);
uint32_t db_create_fem_mdtlm_stat_obj(uint32_t operation, uint32_t flags, void **handle);
uint32_t db_release_fem_mdtlm_stat_object(void *handle);
uint32_t db_set_fem_mdtlm_stat_all_fields(void *handle, const void *record, uint32_t length);
uint32_t db_get_fem_mdtlm_stat_all_fields(void *handle, void *record, uint32_t length);
uint32_t db_write_obj(void *handle);
uint32_t db_read_obj(void *handle, const void *keyDesc, const void *key);
uint32_t db_update_obj(void *handle, const void *keyDesc, const void *key);
uint32_t db_remove_obj(void *handle, const void *keyDesc, const void *key);
uint32_t db_truncate_table(const char *tableName, uint32_t flags);

/* Hot-patch service */
uint32_t HPX_PAT_GetC2HActiveFunc(const char *key, HPX_C2H_FUNC **funcs, uint32_t *count);
uint32_t HPX_PAT_GetC2HDeactiveFunc(const char *key, HPX_C2H_FUNC **funcs, uint32_t *count);
void HPX_PAT_FreeC2HFunc(HPX_C2H_FUNC *funcs);

/* Bounds-checked functions with C11 Annex K behaviour */
int memcpy_s(void *dest, size_t destSize, const void *src, size_t count);
int memset_s(void *dest, size_t destSize, int value, size_t count);
int sprintf_s(char *dest, size_t destSize, const char *format, ...) __attribute__((format(printf, 3, 4)));
int snprintf_s(char *dest, size_t destSize, const char *format, ...) __attribute__((format(printf, 3, 4)));
int vsprintf_s(char *dest, size_t destSize, const char *format, va_list args) __attribute__((format(printf, 3, 0)));

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif /* MDTLM_PLATFORM_H */
