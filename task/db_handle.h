/*
 * Scoped object-database handle: created through one of the object-specific
 * create calls, released exactly once through the matching release call on
 * every path. Release() lets a caller give the handle back early when the
 * order of release and a following log line matters.
 */
#ifndef MDTLM_TASK_DB_HANDLE_H
#define MDTLM_TASK_DB_HANDLE_H

#include <cstdint>

#include "mdtlm_platform.h"
#include "platform_release.h"

template <uint32_t (*CreateFn)(uint32_t, uint32_t, void **), uint32_t (*ReleaseFn)(void *)>
class MDTLM_DbHandle {
public:
    MDTLM_DbHandle() = default;
    ~MDTLM_DbHandle() { Release(); }
    MDTLM_DbHandle(const MDTLM_DbHandle &) = delete;
    MDTLM_DbHandle &operator=(const MDTLM_DbHandle &) = delete;

    /* Creates the handle for one operation (write, update, read, remove).
     * A failed create leaves nothing to release. */
    uint32_t Create(uint32_t operation)
    {
        Release();
        void *handle = nullptr;
        uint32_t ret = CreateFn(operation, 0, &handle);
        handle_ = (ret == 0) ? handle : nullptr;
        return ret;
    }

    void *Get() const { return handle_; }

    void Release()
    {
        if (handle_ != nullptr) {
            void *handle = handle_;
            (void)MDTLM_PlatformRelease("database handle", [handle] { return ReleaseFn(handle); });
            handle_ = nullptr;
        }
    }

private:
    void *handle_ = nullptr;
};

using MDTLM_ReportPerfDbHandle =
    MDTLM_DbHandle<db_create_vraldcn_mdtlm_report_perf_obj, db_release_vraldcn_mdtlm_report_perf_object>;
using MDTLM_TaskStatDbHandle = MDTLM_DbHandle<db_create_fem_mdtlm_stat_obj, db_release_fem_mdtlm_stat_object>;

/* Key descriptor shared by both tables: 08 00 01 00, then twelve zero bytes. */
inline MDTLM_DB_KEY_DESC MDTLM_DbKeyDesc()
{
    MDTLM_DB_KEY_DESC desc{};
    desc.desc = MDTLM_DB_KEY_DESC_VALUE;
    return desc;
}

#endif /* MDTLM_TASK_DB_HANDLE_H */
