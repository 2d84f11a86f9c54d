/*
 * Worker operations used only inside the plug-in.
 */
#ifndef MDTLM_LOOP_WORKER_H
#define MDTLM_LOOP_WORKER_H

/* Destroys the epoll instance, which ends the worker's loop, and clears its
 * id. False when the platform kept refusing: the loop may then still run. */
bool MDTLM_WorkerStop(void);

#endif /* MDTLM_LOOP_WORKER_H */
