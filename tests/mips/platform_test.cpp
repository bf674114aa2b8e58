// The device's platform as the MIPS build sees it: o32 ABI, big-endian words, a 4-byte System V
// message type, and the semaphore behaviour the channel lock depends on (timed wait, undo on exit).
#include <gtest/gtest.h>
#include <sys/ipc.h>
#include <sys/msg.h>
#include <sys/sem.h>
#include <sys/utsname.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstring>

#include "tr104/channel.h"

#if !defined(__mips__) || _MIPS_SIM != _ABIO32
#error "this test describes the device: build it with the mips-linux-gnu toolchain (o32 ABI)"
#endif
static_assert(__BYTE_ORDER__ == __ORDER_BIG_ENDIAN__, "the device is big-endian");
static_assert(sizeof(long) == 4 && sizeof(void *) == 4, "o32: 32-bit long and pointers");
static_assert(alignof(long long) == 8 && alignof(double) == 8, "o32 aligns 64-bit words to 8");
static_assert(sizeof(Tr104WireMsg) == 4 + TR104_MSG_TEXT_LEN, "the message type word is 4 bytes");

namespace {

TEST(DevicePlatform, RunsAsBigEndianMips) {
    utsname name{};
    ASSERT_EQ(uname(&name), 0);
    EXPECT_STREQ(name.machine, "mips") << "the MIPS suite must run under the MIPS emulator";

    const uint32_t word = 0x01020304;
    unsigned char bytes[4];
    std::memcpy(bytes, &word, sizeof(word));
    EXPECT_EQ(bytes[0], 0x01);
    EXPECT_EQ(bytes[3], 0x04);
}

class DeviceQueue : public ::testing::Test {
protected:
    void SetUp() override {
        queue = msgget(IPC_PRIVATE, IPC_CREAT | 0600);
        ASSERT_NE(queue, -1) << std::strerror(errno);
    }
    void TearDown() override { msgctl(queue, IPC_RMID, nullptr); }

    // A full-length message whose text is a pattern derived from its type.
    static Tr104WireMsg message(long type) {
        Tr104WireMsg msg{};
        msg.mtype = type;
        for (size_t i = 0; i < sizeof(msg.text); ++i) {
            msg.text[i] = static_cast<char>(i * 7 + type);
        }
        return msg;
    }

    int queue = -1;
};

// The type word crosses the kernel at the device's width: module numbers and the keep-alive type
// come back unchanged, selection by type works, and the 4100-byte text is carried byte for byte.
// (A queue holds three full-length messages.)
TEST_F(DeviceQueue, CarriesTypeWordAndTextUnchanged) {
    const long sent[] = {15, 7, 3};
    for (long type : sent) {
        Tr104WireMsg msg = message(type);
        ASSERT_EQ(msgsnd(queue, &msg, TR104_MSG_TEXT_LEN, IPC_NOWAIT), 0) << std::strerror(errno);
    }

    struct Case {
        long selector;  // msgtyp of msgrcv
        long expected;
    };
    const Case cases[] = {
        {7, 7},  // exactly this type
        {-9, 3},  // the lowest type not above 9
        {0, 15},  // the oldest message
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.selector);
        Tr104WireMsg got{};
        ASSERT_EQ(msgrcv(queue, &got, TR104_MSG_TEXT_LEN, c.selector, IPC_NOWAIT), TR104_MSG_TEXT_LEN)
            << std::strerror(errno);
        EXPECT_EQ(got.mtype, c.expected);
        const Tr104WireMsg want = message(c.expected);
        EXPECT_EQ(std::memcmp(got.text, want.text, sizeof(want.text)), 0);
    }
    Tr104WireMsg none{};
    EXPECT_EQ(msgrcv(queue, &none, TR104_MSG_TEXT_LEN, 0, IPC_NOWAIT), -1);
    EXPECT_EQ(errno, ENOMSG);
}

class DeviceSemaphore : public ::testing::Test {
protected:
    void SetUp() override {
        sem = semget(IPC_PRIVATE, 1, IPC_CREAT | 0600);
        ASSERT_NE(sem, -1) << std::strerror(errno);
        ASSERT_EQ(semctl(sem, 0, SETVAL, 1), 0);
    }
    void TearDown() override { semctl(sem, 0, IPC_RMID); }

    int take(time_t seconds, long nanoseconds) const {
        sembuf op{};
        op.sem_num = 0;
        op.sem_op = -1;
        op.sem_flg = SEM_UNDO;
        timespec timeout{seconds, nanoseconds};
        return semtimedop(sem, &op, 1, &timeout);
    }

    int sem = -1;
};

// A timed take of a held lock gives up with EAGAIN after about the timeout, not at once and not never.
TEST_F(DeviceSemaphore, TimedTakeOfHeldLockGivesUp) {
    ASSERT_EQ(take(5, 0), 0);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(take(0, 300'000'000), -1);
    EXPECT_EQ(errno, EAGAIN);
    const auto waited = std::chrono::steady_clock::now() - start;
    EXPECT_GE(waited, std::chrono::milliseconds(250));
    EXPECT_LT(waited, std::chrono::seconds(30));
}

// A process that dies holding the lock taken with undo does not leave it taken.
TEST_F(DeviceSemaphore, LockTakenWithUndoIsReturnedWhenHolderExits) {
    const pid_t child = fork();
    ASSERT_NE(child, -1);
    if (child == 0) {
        _exit(take(5, 0) == 0 && semctl(sem, 0, GETVAL) == 0 ? 0 : 1);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 0) << "the child could not take the lock";
    EXPECT_EQ(semctl(sem, 0, GETVAL), 1);
    EXPECT_EQ(take(5, 0), 0);
}

}  // namespace
