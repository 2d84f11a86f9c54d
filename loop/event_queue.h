/*
 * Queue operations used only inside the plug-in: emptying the event queue and
 * the statistics queue at the full unload.
 */
#ifndef MDTLM_LOOP_EVENT_QUEUE_H
#define MDTLM_LOOP_EVENT_QUEUE_H

#include "queue_setup.h"

/* Pops every event still queued and releases it without handling it. Only
 * for the full unload, once the loop no longer runs. */
MDTLM_QueueReleaseResult MDTLM_EventQueueReleaseAll(void);

/* The same for the statistics messages still queued. */
MDTLM_QueueReleaseResult MDTLM_StatsQueueReleaseAll(void);

#endif /* MDTLM_LOOP_EVENT_QUEUE_H */
