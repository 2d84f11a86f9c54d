/*
 * Epoll instances as the other services see them: a source (a queue's
 * eventfd, a timer, a channel socket) attaches a file descriptor with a
 * readiness function, and the loop that runs the instance calls the function
 * on its own thread while the descriptor is readable (level-triggered).
 */
#ifndef MDTLM_PLATFORM_EPOLL_LOOP_H
#define MDTLM_PLATFORM_EPOLL_LOOP_H

#include <cstdint>
#include <functional>
#include <memory>

#pragma GCC visibility push(hidden)

namespace mdtlm_host {

class EpollInstance;
struct LoopEntry;

/* Runs when the attached descriptor is readable; returns how many callbacks
 * of the source's owner it ran. */
using ReadyFn = std::function<uint32_t()>;

/*
 * One descriptor's membership in an epoll instance. Detach (also run by the
 * destructor) removes it. When Detach returns, the readiness function is not
 * running on any other thread and will not be called again; a source detached
 * from inside its own readiness function returns to it normally.
 * Destroying the instance drops the membership: Detach then does nothing.
 */
class LoopRegistration {
public:
    LoopRegistration() = default;
    ~LoopRegistration() { Detach(); }
    LoopRegistration(const LoopRegistration &) = delete;
    LoopRegistration &operator=(const LoopRegistration &) = delete;

    /* Attaches `fd` to the instance `epollId`, replacing an earlier
     * membership of this registration; false when the instance does not exist
     * or the kernel refuses the descriptor. */
    bool Attach(uint32_t epollId, int fd, ReadyFn onReady);
    void Detach();

private:
    std::weak_ptr<EpollInstance> instance_;
    std::shared_ptr<LoopEntry> entry_;
    uint64_t token_ = 0;
    int fd_ = -1;
};

/* True when `epollId` names a live instance. */
bool EpollExists(uint32_t epollId);

} /* namespace mdtlm_host */

#pragma GCC visibility pop

#endif /* MDTLM_PLATFORM_EPOLL_LOOP_H */
