/*
 * Release of platform objects (queues, epoll instance, timer, channel server,
 * database handles). A release that reports failure is tried again a few
 * times: a passing refusal must not leave the object behind. One that keeps
 * failing is logged and counted, and the object is given up on.
 */
#ifndef MDTLM_FRAME_PLATFORM_RELEASE_H
#define MDTLM_FRAME_PLATFORM_RELEASE_H

#include <cstdint>

constexpr uint32_t kMdtlmReleaseTries = 3;

/* Logs and counts a release that kept failing; always false. */
bool MDTLM_PlatformReleaseFailed(const char *what, uint32_t lastResult);

/* Calls `release` (returning the platform's u32, 0 = released) until it
 * succeeds, at most kMdtlmReleaseTries times; true when released. */
template <typename Release>
bool MDTLM_PlatformRelease(const char *what, Release release)
{
    uint32_t ret = 0;
    for (uint32_t attempt = 0; attempt < kMdtlmReleaseTries; ++attempt) {
        ret = release();
        if (ret == 0) {
            return true;
        }
    }
    return MDTLM_PlatformReleaseFailed(what, ret);
}

#endif /* MDTLM_FRAME_PLATFORM_RELEASE_H */
