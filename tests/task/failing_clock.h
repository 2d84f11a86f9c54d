/* A wall clock that a test can make fail: while failing, the C library's
 * gettimeofday returns -1 for every caller in the test program. */
#ifndef MDTLM_TEST_FAILING_CLOCK_H
#define MDTLM_TEST_FAILING_CLOCK_H

void TestClockFails(bool fails);

/* Makes the clock fail for the life of the scope. */
class ScopedFailingClock {
public:
    ScopedFailingClock() { TestClockFails(true); }
    ~ScopedFailingClock() { TestClockFails(false); }
    ScopedFailingClock(const ScopedFailingClock &) = delete;
    ScopedFailingClock &operator=(const ScopedFailingClock &) = delete;
};

#endif /* MDTLM_TEST_FAILING_CLOCK_H */
