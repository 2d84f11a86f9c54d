/*
 * The platform services the plug-in calls, resolved by name from a library
 * loaded with dlopen. Nothing here links a platform: the declarations only
 * give each pointer its type.
 */
#ifndef MDTLM_CHECK_PLATFORM_API_H
#define MDTLM_CHECK_PLATFORM_API_H

#include <string>
#include <vector>

#include "mdtlm_platform.h"

namespace mdtlm::check {

/* Every service of the platform ABI, once. */
#define MDTLM_PLATFORM_SERVICES(X)                                                                           \
    X(COMP_GetVTable)                                                                                        \
    X(FWM_QUE_CreateNew) X(FWM_QUE_EpollReg) X(FWM_QUE_MonitorReg) X(FWM_QUE_AsyWrite) X(FWM_QUE_AsyRead)   \
    X(FWM_QUE_Destory)                                                                                       \
    X(FWM_EPOLL_Create) X(FWM_EPOLL_Run) X(FWM_EPOLL_Destroy) X(FWM_TIMER_Create) X(FWM_TIMER_Destroy)      \
    X(PAL_TaskCreate) X(PAL_SystimeGet) X(PAL_SystimeSecSince1970)                                           \
    X(FWM_CHAN_UCServer) X(FWM_CHAN_UCServerDestory)                                                         \
    X(db_create_vraldcn_mdtlm_report_perf_obj) X(db_release_vraldcn_mdtlm_report_perf_object)                \
    X(db_set_vraldcn_mdtlm_report_perf_all_fields) X(db_set_vraldcn_mdtlm_report_perf_period_index)          \
    X(db_set_vraldcn_mdtlm_report_perf_in_fwm_msg_count) X(db_set_vraldcn_mdtlm_report_perf_in_fwm_msg_byte_count) \
    X(db_set_vraldcn_mdtlm_report_perf_in_fwm_item_count)                                                    \
    X(db_set_vraldcn_mdtlm_report_perf_in_fwm_item_byte_count) X(db_set_vraldcn_mdtlm_report_perf_out_msg_count) \
    X(db_set_vraldcn_mdtlm_report_perf_out_msg_byte_count) X(db_set_vraldcn_mdtlm_report_perf_out_item_count) \
    X(db_set_vraldcn_mdtlm_report_perf_out_item_byte_count) X(db_set_vraldcn_mdtlm_report_perf_start_time_s) \
    X(db_set_vraldcn_mdtlm_report_perf_start_time_ms) X(db_set_vraldcn_mdtlm_report_perf_end_time_s)         \
    X(db_set_vraldcn_mdtlm_report_perf_end_time_ms)                                                          \
    X(db_create_fem_mdtlm_stat_obj) X(db_release_fem_mdtlm_stat_object) X(db_set_fem_mdtlm_stat_all_fields)  \
    X(db_get_fem_mdtlm_stat_all_fields)                                                                      \
    X(db_write_obj) X(db_read_obj) X(db_update_obj) X(db_remove_obj) X(db_truncate_table)                    \
    X(HPX_PAT_GetC2HActiveFunc) X(HPX_PAT_GetC2HDeactiveFunc) X(HPX_PAT_FreeC2HFunc)                         \
    X(memcpy_s) X(memset_s) X(sprintf_s) X(snprintf_s) X(vsprintf_s)

struct PlatformApi {
#define MDTLM_PLATFORM_MEMBER(name) decltype(&::name) name = nullptr;
    MDTLM_PLATFORM_SERVICES(MDTLM_PLATFORM_MEMBER)
#undef MDTLM_PLATFORM_MEMBER
};

/* Loads `path` and resolves every service. On failure `error` says why: the
 * loader's message, or the names the library does not define. The library
 * stays loaded for the life of the process. */
bool LoadPlatform(const std::string &path, PlatformApi &api, std::string &error);

} // namespace mdtlm::check

#endif /* MDTLM_CHECK_PLATFORM_API_H */
