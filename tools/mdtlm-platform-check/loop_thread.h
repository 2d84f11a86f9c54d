/*
 * An epoll instance with its loop running on a platform task, the way the
 * plug-in runs its worker: PAL_TaskCreate with the plug-in's arguments, and
 * FWM_EPOLL_Run(id, 5, -1) as the task's body.
 */
#ifndef MDTLM_CHECK_LOOP_THREAD_H
#define MDTLM_CHECK_LOOP_THREAD_H

#include <cstdint>
#include <thread>

#include "rule.h"

namespace mdtlm::check {

class LoopThread {
public:
    /* Starts the loop; Started() tells whether it runs. One at a time per process. */
    LoopThread(const PlatformApi &api, Findings &findings);
    /* Destroys the instance (when Stop has not) and waits for the loop to return. */
    ~LoopThread();
    LoopThread(const LoopThread &) = delete;
    LoopThread &operator=(const LoopThread &) = delete;

    bool Started() const { return started_; }
    uint32_t EpollId() const { return static_cast<uint32_t>(epollId_); }
    /* True on the thread that runs the loop. */
    static bool OnLoopThread();
    /* FWM_EPOLL_Destroy from the calling thread; true when the loop's
     * FWM_EPOLL_Run returned within two seconds. */
    bool Stop();

private:
    const PlatformApi &api_;
    Findings &findings_;
    int32_t epollId_ = -1;
    bool started_ = false;
    bool stopped_ = false;
};

} // namespace mdtlm::check

#endif /* MDTLM_CHECK_LOOP_THREAD_H */
