/*
 * Control interface of the host platform library (libmdtlm_platform.so), for
 * hosts and tests only. The plug-in never calls any of this.
 */
#ifndef MDTLM_HOST_H
#define MDTLM_HOST_H

#include <stdint.h>

#include "mdtlm_types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ------------------------------------------------------- component registry */

/* The table that COMP_GetVTable(1000, 1000, ...) hands out; NULL makes it
 * answer "not found" (result 1, table pointer left NULL). */
void MDTLM_HOST_SetFrameworkTable(MDTLM_FRM_VTBL *table);

/* ------------------------------------------------------------ object database */

/* Where the object database lives: NULL or "" for a private in-memory database,
 * otherwise a SQLite file (created if missing). Closes and reopens; 0 on success. */
uint32_t MDTLM_HOST_DbOpen(const char *path);
/* Closes the database (a later db_ call reopens in memory). */
void MDTLM_HOST_DbClose(void);
/* Runs one SQL statement on the database and returns the first column of the
 * first row as a 64-bit integer (or -1 when there is no row); for tests. */
int64_t MDTLM_HOST_DbQueryInt(const char *sql);
/* Handles created by db_create_* and not yet released. */
uint64_t MDTLM_HOST_DbOpenHandles(void);

/* ------------------------------------------------------------ hot-patch service */

/* Registers the activation and deactivation lists handed out for a key (copied).
 * A key with no registration answers 1 ("none for the key"). */
uint32_t MDTLM_HOST_HpxRegister(const char *key, const HPX_C2H_FUNC *active, uint32_t activeCnt,
                                const HPX_C2H_FUNC *deactive, uint32_t deactiveCnt);
void MDTLM_HOST_HpxClear(void);
/* Arrays handed out and not yet given back through HPX_PAT_FreeC2HFunc. */
uint64_t MDTLM_HOST_HpxOutstanding(void);

/* ------------------------------------------------------------------- queues */

/* The queue created under this name most recently, or NULL. */
void *MDTLM_HOST_QueueFind(const char *name);
/* Elements the queue holds now, or -1 for an unknown handle. */
int32_t MDTLM_HOST_QueueCount(void *queue);

/* --------------------------------------------------------- statistics channel */

typedef struct MDTLM_HOST_CHAN_COUNTERS {
    uint64_t datagrams;       /* datagrams received */
    uint64_t messages;        /* messages handed to the receive callback */
    uint64_t batches;         /* receive callback invocations */
    uint64_t malformedFrames; /* frames that ran past their datagram (rest of datagram dropped) */
    uint64_t kernelDrops;     /* datagrams the kernel dropped (SO_RXQ_OVFL) */
} MDTLM_HOST_CHAN_COUNTERS;

/* Port redirection for hosts that run several plug-in instances side by side
 * (parallel tests): while enabled, a server configured for any port binds
 * `port` instead (host byte order; 0 = an ephemeral port of the kernel's choice). */
void MDTLM_HOST_ChanSetPortOverride(int enabled, uint16_t port);
/* The local port (host byte order) a server is bound to (NULL: the most recent one); 0 if unknown. */
uint16_t MDTLM_HOST_ChanLocalPort(void *server);

/* Counters of a server from FWM_CHAN_UCServer (NULL: the most recent one); 0 on success. */
uint32_t MDTLM_HOST_ChanCounters(void *server, MDTLM_HOST_CHAN_COUNTERS *out);

/* ------------------------------------------------------------ fault injection */

typedef enum MDTLM_HOST_OP {
    MDTLM_HOST_OP_COMP_GET_VTABLE,
    MDTLM_HOST_OP_QUE_CREATE,
    MDTLM_HOST_OP_QUE_EPOLL_REG,
    MDTLM_HOST_OP_QUE_MONITOR_REG,
    MDTLM_HOST_OP_QUE_WRITE,
    MDTLM_HOST_OP_QUE_READ,
    MDTLM_HOST_OP_QUE_DESTROY,
    MDTLM_HOST_OP_EPOLL_CREATE,
    MDTLM_HOST_OP_EPOLL_RUN,
    MDTLM_HOST_OP_EPOLL_DESTROY,
    MDTLM_HOST_OP_TIMER_CREATE,
    MDTLM_HOST_OP_TIMER_DESTROY,
    MDTLM_HOST_OP_TASK_CREATE,
    MDTLM_HOST_OP_SYSTIME_GET,
    MDTLM_HOST_OP_SYSTIME_SEC,
    MDTLM_HOST_OP_CHAN_SERVER,
    MDTLM_HOST_OP_CHAN_DESTROY,
    MDTLM_HOST_OP_DB_CREATE,      /* both db_create_* */
    MDTLM_HOST_OP_DB_RELEASE,     /* both db_release_* */
    MDTLM_HOST_OP_DB_SET_ALL,     /* both db_set_*_all_fields */
    MDTLM_HOST_OP_DB_SET_FIELD,   /* the thirteen report-perf field setters */
    MDTLM_HOST_OP_DB_GET_ALL,
    MDTLM_HOST_OP_DB_WRITE,
    MDTLM_HOST_OP_DB_READ,
    MDTLM_HOST_OP_DB_UPDATE,
    MDTLM_HOST_OP_DB_REMOVE,
    MDTLM_HOST_OP_DB_TRUNCATE,
    MDTLM_HOST_OP_HPX_GET_ACTIVE,
    MDTLM_HOST_OP_HPX_GET_DEACTIVE,
    MDTLM_HOST_OP_MEMCPY_S,
    MDTLM_HOST_OP_MEMSET_S,
    MDTLM_HOST_OP_SPRINTF_S,
    MDTLM_HOST_OP_SNPRINTF_S,
    MDTLM_HOST_OP_VSPRINTF_S,
    MDTLM_HOST_OP_COUNT
} MDTLM_HOST_OP;

/* After `skip` further calls of `op` have run normally, the next `count` calls
 * fail without doing their work and return `result` (cast to the operation's
 * result type; for handle-returning operations any result means NULL, for
 * FWM_EPOLL_Create/FWM_TIMER_Create it is the negative id). The k-th call
 * from now: skip = k - 1, count = 1. The next N calls: skip = 0, count = N. */
void MDTLM_HOST_FaultSet(MDTLM_HOST_OP op, uint32_t skip, uint32_t count, int64_t result);
void MDTLM_HOST_FaultClear(void);
/* Calls of `op` since start (or the last MDTLM_HOST_CallCountReset), failed ones included. */
uint64_t MDTLM_HOST_CallCount(MDTLM_HOST_OP op);
void MDTLM_HOST_CallCountReset(void);

/* Platform objects that exist now, by kind: what a plug-in created and has
 * not destroyed (for checks that nothing is left behind). */
typedef enum MDTLM_HOST_OBJECT {
    MDTLM_HOST_OBJECT_QUEUE,
    MDTLM_HOST_OBJECT_EPOLL,
    MDTLM_HOST_OBJECT_TIMER,
    MDTLM_HOST_OBJECT_SERVER,
    MDTLM_HOST_OBJECT_COUNT
} MDTLM_HOST_OBJECT;
uint32_t MDTLM_HOST_LiveObjects(MDTLM_HOST_OBJECT kind);

/* ---------------------------------------------------- clock, loop and tasks */

/* Manual clock: timers never expire on their own; MDTLM_HOST_TimerFire queues
 * expirations that the loop delivers as callback calls, one call each. */
void MDTLM_HOST_SetManualClock(int enabled);
uint32_t MDTLM_HOST_TimerFire(int32_t timerId, uint32_t ticks);

/* Manual tasks: PAL_TaskCreate records the task but starts no thread; the
 * caller drives loops with MDTLM_HOST_EpollPump on its own thread. */
void MDTLM_HOST_SetManualTasks(int enabled);
/* Runs the callbacks of the sources that are ready on the epoll instance, one
 * wait of at most `timeoutMs` (0: do not wait), and returns how many callbacks
 * ran. Repeats until nothing is ready when `drain` is non-zero. */
uint32_t MDTLM_HOST_EpollPump(uint32_t epollId, int32_t timeoutMs, int drain);
/* Waits for every thread started by PAL_TaskCreate to return, and joins it.
 * Returns how many threads were joined. */
uint32_t MDTLM_HOST_JoinTasks(void);
/* Threads started by PAL_TaskCreate that have not returned yet. */
uint32_t MDTLM_HOST_RunningTasks(void);

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif /* MDTLM_HOST_H */
