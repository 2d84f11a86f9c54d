/* The test program's own gettimeofday: the plug-in's calls bind to it, since
 * the program defines the symbol before the C library does. Unless a test
 * makes it fail it reads the real-time clock. */
#include "failing_clock.h"

#include <sys/time.h>
#include <time.h>

#include <atomic>
#include <cerrno>

namespace {

std::atomic<bool> g_clockFails{false};

} // namespace

void TestClockFails(bool fails) { g_clockFails.store(fails); }

extern "C" int gettimeofday(struct timeval *__restrict tv, void *__restrict tz) noexcept
{
    (void)tz;
    if (g_clockFails.load()) {
        errno = EFAULT;
        return -1;
    }
    struct timespec now {};
    if (clock_gettime(CLOCK_REALTIME, &now) != 0) {
        return -1;
    }
    tv->tv_sec = now.tv_sec;
    tv->tv_usec = now.tv_nsec / 1000;
    return 0;
}
