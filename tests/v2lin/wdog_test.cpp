// Watchdog timers, the clock and the time-stamp trace.
#include <errno.h>
#include <stdio.h>
#include <sys/time.h>

#include <algorithm>

#include <atomic>
#include <regex>
#include <string>

#include "v2lin_test_util.h"

using namespace v2test;

namespace {

class Watchdogs : public Runtime {};

// Handlers get a 32-bit argument: it indexes these slots.
struct Slot {
    std::atomic<int> fired{0};
    std::atomic<long long> atMs{-1};
    Clock::time_point t0;
};
Slot gSlots[8];

void record(int32_t i) {
    gSlots[i].atMs = msSince(gSlots[i].t0);
    gSlots[i].fired++;
}

Slot &arm(int32_t i) {
    gSlots[i].fired = 0;
    gSlots[i].atMs = -1;
    gSlots[i].t0 = Clock::now();
    return gSlots[i];
}

TEST_F(Watchdogs, DelayZeroOrNegativeFiresOnTheNextPass) {
    for (int32_t delay : {0, -5}) {
        WDOG_ID wd = wdCreate();
        ASSERT_NE(wd, nullptr);
        Slot &s = arm(0);
        EXPECT_EQ(wdStart(wd, delay, record, 0), 0);
        EXPECT_TRUE(waitFor([&] { return s.fired.load() == 1; }, 2000)) << delay;
        EXPECT_LT(s.atMs.load(), 1000);
        EXPECT_EQ(wdDelete(wd), 0);
    }
}

TEST_F(Watchdogs, DelayTwoHundredFiresAfterTwoHundredMilliseconds) {
    WDOG_ID wd = wdCreate();
    Slot &s = arm(1);
    EXPECT_EQ(wdStart(wd, 200, record, 1), 0);
    ASSERT_TRUE(waitFor([&] { return s.fired.load() == 1; }, 3000));
    EXPECT_GE(s.atMs.load(), 199);
    EXPECT_LT(s.atMs.load(), 1500);
    usleep(120000);
    EXPECT_EQ(s.fired.load(), 1);  // one shot
    EXPECT_EQ(wdDelete(wd), 0);
}

TEST_F(Watchdogs, CancelBeforeExpiryThenRearm) {
    WDOG_ID wd = wdCreate();
    Slot &s = arm(2);
    EXPECT_EQ(wdStart(wd, 100, record, 2), 0);
    EXPECT_EQ(wdCancel(wd), 0);
    usleep(300000);
    EXPECT_EQ(s.fired.load(), 0);
    EXPECT_EQ(wdStart(wd, 50, record, 2), 0);
    EXPECT_TRUE(waitFor([&] { return s.fired.load() == 1; }, 3000));
    EXPECT_EQ(wdDelete(wd), 0);
}

WDOG_ID gSelfWd;
std::atomic<int> gSelfRuns{0};
void rearmItself(int32_t arg) {
    if (++gSelfRuns < 3)
        wdStart(gSelfWd, 10, rearmItself, arg);
}

TEST_F(Watchdogs, HandlerRestartsItsOwnTimer) {
    gSelfWd = wdCreate();
    gSelfRuns = 0;
    EXPECT_EQ(wdStart(gSelfWd, 10, rearmItself, 7), 0);
    EXPECT_TRUE(waitFor([] { return gSelfRuns.load() == 3; }, 5000));
    usleep(150000);
    EXPECT_EQ(gSelfRuns.load(), 3);
    EXPECT_EQ(wdDelete(gSelfWd), 0);
}

TEST_F(Watchdogs, DeletedHandleIsRefused) {
    WDOG_ID wd = wdCreate();
    EXPECT_EQ(wdDelete(wd), 0);
    const struct {
        const char *what;
        int (*op)(WDOG_ID);
    } ops[] = {
        {"delete", wdDelete},
        {"cancel", wdCancel},
        {"start", [](WDOG_ID w) { return wdStart(w, 10, record, 3); }},
    };
    for (const auto &o : ops) {
        errno = 0;
        EXPECT_EQ(o.op(wd), -1) << o.what;
        EXPECT_EQ(errno, S_objLib_OBJ_ID_ERROR) << o.what;
    }
}

TEST_F(Watchdogs, ShowListsHandlerDelayAndArgument) {
    WDOG_ID wd = wdCreate();
    EXPECT_EQ(wdStart(wd, 100000, record, 5), 0);
    char line[64];
    snprintf(line, sizeof line, "%x 100000 5\n", static_cast<unsigned>(reinterpret_cast<uintptr_t>(&record)));
    std::string out = capture([&](FILE *f) { EXPECT_GE(wdogShow(f), 1); });
    EXPECT_NE(out.find(line), std::string::npos) << out;
    EXPECT_EQ(wdCancel(wd), 0);
    EXPECT_EQ(wdDelete(wd), 0);
}

double uptimeMs() {
    double up = 0;
    FILE *f = fopen("/proc/uptime", "r");
    if (f) {
        if (fscanf(f, "%lf", &up) != 1)
            up = 0;
        fclose(f);
    }
    return up * 1000.0;
}

TEST_F(Watchdogs, ClockCountsMillisecondsAndIgnoresTickSet) {
    EXPECT_EQ(sysClkRateGet(), 1000);
    double before = uptimeMs();
    uint32_t t = tickGet();
    double after = uptimeMs();
    // Milliseconds since boot (ticks of 10 ms would be a tenth of it); the two clocks may
    // drift apart a little on a virtual machine.
    EXPECT_GE(static_cast<double>(t), before - 1000);
    EXPECT_LE(static_cast<double>(t), after + 1000);
    tickSet(0);
    EXPECT_LE(offset, 0);
    uint32_t t2 = tickGet();
    EXPECT_GE(t2, t);
    EXPECT_LT(t2 - t, 5000u);
}

V2LIN_TV secondsAgo(int32_t sec, int32_t usec) {
    struct timeval now;
    gettimeofday(&now, nullptr);
    V2LIN_TV tv{static_cast<int32_t>(now.tv_sec) - sec, static_cast<int32_t>(now.tv_usec) - usec};
    if (tv.tv_usec < 0) {
        tv.tv_usec += 1000000;
        tv.tv_sec -= 1;
    }
    return tv;
}

TEST_F(Watchdogs, TraceTimeSuppressesCloseCalls) {
    // A call 5 ms after the previous one writes nothing.  The previous call's time is set to
    // 5 ms ago rather than slept for: under a loaded emulator a 5 ms sleep can last 15 ms.
    prev_tv = V2LIN_TV{0, 0};
    testing::internal::CaptureStderr();
    trace_time();
    prev_tv = secondsAgo(0, 5000);
    int second = trace_time();
    std::string quiet = testing::internal::GetCapturedStderr();
    EXPECT_EQ(second, 1);
    EXPECT_EQ(std::count(quiet.begin(), quiet.end(), '+'), 1) << quiet;

    usleep(30000);
    testing::internal::CaptureStderr();
    int third = trace_time();
    std::string out = testing::internal::GetCapturedStderr();
    EXPECT_EQ(third, 0);
    EXPECT_TRUE(std::regex_match(out, std::regex("uptime=[0-9]+\\.[0-9]{6} s \\+0\\.[0-9]{6} \n"))) << out;
    EXPECT_EQ(prev_tv.tv_sec != 0 || prev_tv.tv_usec != 0, true);

    // Only the microsecond part of the gap counts: 3.005 s is quiet, 0.5 s is written.
    prev_tv = secondsAgo(3, 5000);
    testing::internal::CaptureStderr();
    EXPECT_EQ(trace_time(), 1);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    prev_tv = secondsAgo(0, 500000);
    testing::internal::CaptureStderr();
    EXPECT_EQ(trace_time(), 0);
    EXPECT_NE(testing::internal::GetCapturedStderr().find(" +0.5"), std::string::npos);
}

}  // namespace
