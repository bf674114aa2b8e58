// The runtime's deadline arithmetic, tested on its own (this binary compiles the runtime's
// sources instead of linking libtr104.so, where the helpers are hidden).
#include <errno.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/time.h>

#include "v2lin/v2lin_internal.h"

namespace {

// Whole seconds are carried only from 1 000 001 microseconds on: a sum of exactly one second
// stays in the microseconds, as 1 000 000 000 nanoseconds.
TEST(Deadline, CarryRule) {
    const struct {
        long usec;
        uint32_t ticks;
        time_t sec;
        long nsec;
    } cases[] = {
        {0, 0, 100, 0},
        {990000, 0, 100, 990000000L},
        {990000, 1, 100, 1000000000L},  // exactly 1 000 000 us: no carry
        {990001, 1, 101, 1000L},
        {995000, 1, 101, 5000000L},
        {0, 100, 100, 1000000000L},
        {0, 250, 102, 500000000L},
        {500000, 0xFFFFFFFEu, 100 + 42949673, 440000000L},  // no 32-bit overflow
    };
    for (const auto &c : cases) {
        struct timeval now {};
        now.tv_sec = 100;
        now.tv_usec = c.usec;
        struct timespec d = v2lin::deadlineFrom(now, c.ticks);
        EXPECT_EQ(d.tv_sec, c.sec) << c.usec << "+" << c.ticks;
        EXPECT_EQ(d.tv_nsec, c.nsec) << c.usec << "+" << c.ticks;
    }
}

TEST(Deadline, NormalisedFormForTheConditionWait) {
    struct timespec d {};
    d.tv_sec = 100;
    d.tv_nsec = 1000000000L;
    struct timespec n = v2lin::normalisedDeadline(d);
    EXPECT_EQ(n.tv_sec, 101);
    EXPECT_EQ(n.tv_nsec, 0);
    d.tv_nsec = 999999999L;
    n = v2lin::normalisedDeadline(d);
    EXPECT_EQ(n.tv_sec, 100);
    EXPECT_EQ(n.tv_nsec, 999999999L);
}

// A wait whose deadline has exactly 1 000 000 000 ns ends with a timeout, never EINVAL (a loop
// that waits again after anything but a timeout would otherwise never end).
TEST(Deadline, WaitAtExactlyOneSecondOfNanosecondsTimesOut) {
    pthread_mutex_t mu = PTHREAD_MUTEX_INITIALIZER;
    pthread_cond_t cond = PTHREAD_COND_INITIALIZER;
    struct timeval now;
    gettimeofday(&now, nullptr);
    struct timespec past {};
    past.tv_sec = now.tv_sec - 2;
    past.tv_nsec = 1000000000L;
    pthread_mutex_lock(&mu);
    EXPECT_EQ(v2lin::condWait(&cond, &mu, &past), ETIMEDOUT);
    pthread_mutex_unlock(&mu);
}

TEST(Deadline, PassedComparesSecondsThenMicroseconds) {
    struct timeval now;
    gettimeofday(&now, nullptr);
    struct timespec d {};
    d.tv_sec = now.tv_sec - 1;
    d.tv_nsec = 999999999L;
    EXPECT_TRUE(v2lin::deadlinePassed(d));
    d.tv_sec = now.tv_sec + 2;
    d.tv_nsec = 0;
    EXPECT_FALSE(v2lin::deadlinePassed(d));
    // Same second, 1 000 000 000 ns: not passed before the second is over.
    gettimeofday(&now, nullptr);
    d.tv_sec = now.tv_sec;
    d.tv_nsec = 1000000000L;
    struct timeval after;
    gettimeofday(&after, nullptr);
    if (after.tv_sec == now.tv_sec) {
        EXPECT_FALSE(v2lin::deadlinePassed(d));
    }
}

}  // namespace
