/*
 * What the event queue and the statistics queue share: creation with epoll
 * and flow-control registration, the flow-control callback and destruction.
 * Each queue passes its own names, sizes and log formats; every format starts
 * with "[%s:%d]" like the MDTLM_LOG ones.
 */
#ifndef MDTLM_LOOP_QUEUE_SETUP_H
#define MDTLM_LOOP_QUEUE_SETUP_H

#include <atomic>
#include <cstdint>

struct MDTLM_QueueSetup {
    const char *name;
    uint32_t mode;
    uint32_t depth;
    uint32_t highMark; /* 80 % of the depth, rounded down */
    uint32_t lowMark;  /* 20 % of the depth, rounded down */
    uint32_t (*pop)(void *queue); /* served by the epoll loop when set */
    uint32_t (*flowCtrl)(uint32_t event);
    const char *createFailed;     /* no argument */
    const char *epollRegFailed;   /* ret */
    const char *monitorRegFailed; /* ret */
};

/* Lines of a flow-control callback: one per known event (start, stop), and
 * the line for any other event. */
struct MDTLM_FlowCtrlTexts {
    const char *byEvent[2];
    const char *illegalEvent; /* evt */
};

/* Creates and registers the queue. On failure nothing is left, the step's line
 * is logged and its code returned (1 when the queue could not be created). */
uint32_t MDTLM_QueueCreate(const MDTLM_QueueSetup &setup, void **queue);

/* Logs the line of a flow-control event; 1 for an unknown event. */
uint32_t MDTLM_QueueFlowCtrl(const MDTLM_FlowCtrlTexts &texts, uint32_t event);

/* Destroys the queue if there is one and clears the handle. */
void MDTLM_QueueDestroy(void **queue);

/* Elements a queue holds as far as the plug-in knows: its successful writes
 * minus its successful reads. Writers and the reader may be on any thread. */
using MDTLM_QueueHeld = std::atomic<int64_t>;

/* Writes one buffer pointer; true when the queue took it. */
bool MDTLM_QueueWriteOne(void *queue, void *element, MDTLM_QueueHeld &held, int32_t *written);
/* Reads one buffer pointer; true when the queue gave one (it may be null). */
bool MDTLM_QueueReadOne(void *queue, void **element, MDTLM_QueueHeld &held);

struct MDTLM_QueueReleaseResult {
    uint64_t released; /* elements read back and freed */
    uint64_t left;     /* elements the queue still holds but would not give back */
};

/* Reads every element still on the queue and frees it as a buffer. A failing
 * read is tried again a few times before the rest is given up on; what could
 * not be read back is reported, never guessed at. Only once nothing else
 * reads the queue. */
MDTLM_QueueReleaseResult MDTLM_QueueReleaseAll(void *queue, MDTLM_QueueHeld &held);

#endif /* MDTLM_LOOP_QUEUE_SETUP_H */
