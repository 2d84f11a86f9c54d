/*
 * The host as the plug-in's tests and fuzz targets run it: the framework
 * double installed, no threads and no clock of the host's own (the caller
 * runs the worker's loop and fires the period timer), the statistics channel
 * on a free port and no fault armed. Free of the test framework, so that the
 * fuzz targets link it too.
 */
#ifndef MDTLM_TEST_MANUAL_HOST_H
#define MDTLM_TEST_MANUAL_HOST_H

#include <cstdint>
#include <string>
#include <vector>

#include "mdtlm_types.h"

namespace manual_host {

/* Forgets captures, faults, hot-patch arrays and call counts, installs the
 * framework double and switches the host to manual tasks and clock. */
void Prepare();

/* Runs whatever is ready on the worker's epoll instance; the callbacks run. */
uint32_t Pump();
/* Fires one period tick (when the timer exists), then runs the loop; the fire's result. */
uint32_t Tick();

/* Hands the entries to the statistics channel's receive callback as one batch. */
uint32_t Deliver(std::vector<MDTLM_STATS_IPC_ENTRY> &entries);

/* Unloads the plug-in and waits for the host's tasks. */
void Unload();

/* Whether the plug-in's handles (epoll instance, timer, queues, channel
 * server) are all cleared, as after an unload. */
bool HandlesCleared();

/* What must hold after an unload: empty when nothing is left behind,
 * otherwise one description per leftover (buffers, database handles,
 * hot-patch arrays, platform objects, plug-in handles, threads). */
std::vector<std::string> Leftovers();

} // namespace manual_host

#endif /* MDTLM_TEST_MANUAL_HOST_H */
