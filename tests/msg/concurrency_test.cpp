// Many callers at once, threads and processes: each gets its own reply, never another's.
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cstring>
#include <thread>

#include "support/channel_fixture.h"

namespace {

using tr104test::ChannelTest;
using tr104test::semValue;

class Concurrent : public ChannelTest {
protected:
    void SetUp() override {
        ChannelTest::SetUp();
        // Every port's block names its own port, so a reply that reached the wrong caller shows.
        for (uint32_t port = 100; port < 120; ++port) {
            char block[452] = {};
            std::memcpy(block, &port, 4);
            std::snprintf(block + 360, 22, "owner%u", port);
            emulator.put("port status", block, sizeof(block));
        }
    }

    // Runs `rounds` gets of one port; returns the number of wrong or failed answers.
    static int hammer(uint32_t port, int rounds) {
        int bad = 0;
        char expected[22];
        std::snprintf(expected, sizeof(expected), "owner%u", port);
        for (int i = 0; i < rounds; ++i) {
            char block[452] = {};
            if (getLineStatus(static_cast<int>(port), block) != 0 || std::strcmp(block + 360, expected) != 0) {
                ++bad;
            }
        }
        return bad;
    }
};

TEST_F(Concurrent, FourThreadsAndTwoProcessesEachReceiveTheirOwnReplies) {
    constexpr int kRounds = 40;
    pid_t children[2];
    for (int c = 0; c < 2; ++c) {
        children[c] = fork();
        ASSERT_GE(children[c], 0);
        if (children[c] == 0) {
            _exit(hammer(110 + c, kRounds) == 0 ? 0 : 1);
        }
    }
    std::atomic<int> bad{0};
    std::vector<std::thread> threads;
    for (uint32_t t = 0; t < 4; ++t) {
        threads.emplace_back([&bad, t] { bad += hammer(100 + t, kRounds); });
    }
    for (auto &t : threads) {
        t.join();
    }
    EXPECT_EQ(bad.load(), 0);
    for (pid_t child : children) {
        int status = 0;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "a child process saw a foreign reply";
    }
    EXPECT_EQ(emulator.requestCount(), static_cast<size_t>(6 * kRounds));
    EXPECT_EQ(semValue(), 1);
}

}  // namespace
