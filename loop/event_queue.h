/*
 * Event queue operations used only inside the plug-in.
 */
#ifndef MDTLM_LOOP_EVENT_QUEUE_H
#define MDTLM_LOOP_EVENT_QUEUE_H

/* Pops every event still queued and releases it without handling it. Only
 * for the full unload, once the loop no longer runs. */
void MDTLM_EventQueueDiscardAll(void);

#endif /* MDTLM_LOOP_EVENT_QUEUE_H */
