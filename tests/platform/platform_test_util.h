/* Helpers shared by the platform library's tests. */
#ifndef MDTLM_TEST_PLATFORM_UTIL_H
#define MDTLM_TEST_PLATFORM_UTIL_H

#include <chrono>
#include <cstdint>
#include <functional>
#include <thread>

#include "mdtlm_host.h"
#include "mdtlm_platform.h"

/* An epoll instance for one test, destroyed at the end of it. */
class ScopedEpoll {
public:
    ScopedEpoll() : id_(static_cast<uint32_t>(FWM_EPOLL_Create())) {}
    ~ScopedEpoll() { FWM_EPOLL_Destroy(id_); }
    ScopedEpoll(const ScopedEpoll &) = delete;
    ScopedEpoll &operator=(const ScopedEpoll &) = delete;
    uint32_t Id() const { return id_; }

private:
    uint32_t id_;
};

/* Polls `done` until it holds or two seconds pass; true when it held. */
inline bool WaitUntil(const std::function<bool()> &done)
{
    auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(2);
    while (!done()) {
        if (std::chrono::steady_clock::now() > deadline)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

#endif /* MDTLM_TEST_PLATFORM_UTIL_H */
