// Message queues: full and urgent sends, ordering, lengths, timeouts, blocked readers and writers,
// deletion, ring wrap-around and the show routines.
#include <errno.h>
#include <string.h>

#include <atomic>
#include <string>
#include <vector>

#include "v2lin_test_util.h"

using namespace v2test;

namespace {

class Queues : public Runtime {};

int sendText(MSG_Q_ID q, const char *text, int32_t timeout = V2LIN_NO_WAIT, int pri = V2LIN_MSG_PRI_NORMAL) {
    return msgQSend(q, text, static_cast<uint32_t>(strlen(text)), timeout, pri);
}

std::string receiveText(MSG_Q_ID q, int32_t timeout = V2LIN_NO_WAIT) {
    char buf[64] = {};
    int n = msgQReceive(q, buf, sizeof buf, timeout);
    return n < 0 ? "<error>" : std::string(buf, static_cast<size_t>(n));
}

TEST_F(Queues, FullQueueRefusesNormalButTakesUrgent) {
    MSG_Q_ID q = msgQCreate(2, 8, 0);
    ASSERT_NE(q, nullptr);
    EXPECT_EQ(sendText(q, "one"), 0);
    EXPECT_EQ(sendText(q, "two"), 0);
    EXPECT_EQ(sendText(q, "three"), -1);
    EXPECT_EQ(errno, S_objLib_OBJ_UNAVAILABLE);
    EXPECT_EQ(sendText(q, "urgent", V2LIN_NO_WAIT, V2LIN_MSG_PRI_URGENT), 0);
    EXPECT_EQ(msgQNumMsgs(q), 3);
    // Above the maximum even an urgent message waits.
    EXPECT_EQ(sendText(q, "more", V2LIN_NO_WAIT, V2LIN_MSG_PRI_URGENT), -1);
    EXPECT_EQ(errno, S_objLib_OBJ_UNAVAILABLE);
    EXPECT_EQ(receiveText(q), "urgent");
    EXPECT_EQ(receiveText(q), "one");
    EXPECT_EQ(receiveText(q), "two");
    EXPECT_EQ(msgQNumMsgs(q), 0);
    EXPECT_EQ(msgQDelete(q), 0);
}

TEST_F(Queues, UrgentMessagesComeOutLastInFirstOut) {
    MSG_Q_ID q = msgQCreate(4, 8, 0);
    EXPECT_EQ(sendText(q, "N"), 0);
    EXPECT_EQ(sendText(q, "A", 0, V2LIN_MSG_PRI_URGENT), 0);
    EXPECT_EQ(sendText(q, "B", 0, V2LIN_MSG_PRI_URGENT), 0);
    EXPECT_EQ(receiveText(q), "B");
    EXPECT_EQ(receiveText(q), "A");
    EXPECT_EQ(receiveText(q), "N");
    EXPECT_EQ(msgQDelete(q), 0);
}

TEST_F(Queues, LengthChecks) {
    MSG_Q_ID q = msgQCreate(2, 8, 0);
    EXPECT_EQ(msgQSend(q, "123456789", 9, 0, 0), -1);
    EXPECT_EQ(errno, S_msgQLib_INVALID_MSG_LENGTH);
    EXPECT_EQ(msgQSend(q, "12345678", 8, 0, 0), 0);
    EXPECT_EQ(sendText(q, "hi"), 0);
    char small[7];
    EXPECT_EQ(msgQReceive(q, small, sizeof small, 0), -1);
    EXPECT_EQ(errno, S_msgQLib_INVALID_MSG_LENGTH);
    EXPECT_EQ(msgQNumMsgs(q), 2);  // left in place
    char buf[8];
    EXPECT_EQ(msgQReceive(q, buf, sizeof buf, 0), 8);
    EXPECT_EQ(memcmp(buf, "12345678", 8), 0);
    // A null buffer sends and receives the length alone.
    EXPECT_EQ(msgQReceive(q, nullptr, 8, 0), 2);
    EXPECT_EQ(msgQSend(q, nullptr, 5, 0, 0), 0);
    EXPECT_EQ(msgQReceive(q, buf, sizeof buf, 0), 5);
    EXPECT_EQ(msgQDelete(q), 0);
}

TEST_F(Queues, ReceiveTimeouts) {
    MSG_Q_ID q = msgQCreate(2, 8, 0);
    auto t0 = Clock::now();
    EXPECT_EQ(msgQReceive(q, nullptr, 8, 10), -1);
    long long ms = msSince(t0);
    EXPECT_EQ(errno, S_objLib_OBJ_TIMEOUT);
    EXPECT_GE(ms, 95);
    EXPECT_LT(ms, 2000);
    t0 = Clock::now();
    EXPECT_EQ(msgQReceive(q, nullptr, 8, 0), -1);
    EXPECT_EQ(errno, S_objLib_OBJ_UNAVAILABLE);
    EXPECT_LT(msSince(t0), 500);  // no wait (generous: the machine may be loaded)
    EXPECT_EQ(msgQDelete(q), 0);
}

TEST_F(Queues, SendTimeoutOnAFullQueue) {
    MSG_Q_ID q = msgQCreate(1, 4, 0);
    EXPECT_EQ(sendText(q, "x"), 0);
    auto t0 = Clock::now();
    EXPECT_EQ(sendText(q, "y", 5), -1);
    EXPECT_EQ(errno, S_objLib_OBJ_TIMEOUT);
    EXPECT_GE(msSince(t0), 45);
    EXPECT_EQ(msgQNumMsgs(q), 1);
    EXPECT_EQ(msgQDelete(q), 0);
}

TEST_F(Queues, BlockedWriterSendsWhenRoomAppears) {
    MSG_Q_ID q = msgQCreate(1, 4, 0);
    EXPECT_EQ(sendText(q, "a"), 0);
    std::atomic<int> rc{-2};
    int32_t w = spawn("tWriter", 50, [&] { rc = sendText(q, "b", V2LIN_WAIT_FOREVER); });
    ASSERT_TRUE(waitPended(w));
    std::string show = capture([&](FILE *f) { msgQShow(q, f, nullptr); });
    EXPECT_NE(show.find("writers: "), std::string::npos);
    EXPECT_NE(show.find(" tWriter "), std::string::npos) << show;
    EXPECT_EQ(receiveText(q), "a");
    EXPECT_TRUE(waitGone(w));
    EXPECT_EQ(rc.load(), 0);
    EXPECT_EQ(receiveText(q), "b");
    EXPECT_EQ(msgQDelete(q), 0);
}

TEST_F(Queues, ReadersAreServedInArrivalOrder) {
    MSG_Q_ID q = msgQCreate(4, 8, 0);
    std::string got[2];
    int32_t r1 = spawn("tR1", 50, [&] { got[0] = receiveText(q, V2LIN_WAIT_FOREVER); });
    ASSERT_TRUE(waitPended(r1));
    int32_t r2 = spawn("tR2", 55, [&] { got[1] = receiveText(q, V2LIN_WAIT_FOREVER); });
    ASSERT_TRUE(waitPended(r2));
    EXPECT_EQ(sendText(q, "first"), 0);
    EXPECT_EQ(sendText(q, "second"), 0);
    EXPECT_TRUE(waitGone(r1));
    EXPECT_TRUE(waitGone(r2));
    EXPECT_EQ(got[0], "first");
    EXPECT_EQ(got[1], "second");
    EXPECT_EQ(msgQDelete(q), 0);
}

// With the priority option the reader of highest base priority is served first, whenever it came.
TEST_F(Queues, PriorityOrderedReaders) {
    MSG_Q_ID q = msgQCreate(4, 8, V2LIN_MSG_Q_PRIORITY);
    std::string got[2];
    int32_t low = spawn("tLow", 40, [&] { got[0] = receiveText(q, V2LIN_WAIT_FOREVER); });
    ASSERT_TRUE(waitPended(low));
    int32_t high = spawn("tHigh", 60, [&] { got[1] = receiveText(q, V2LIN_WAIT_FOREVER); });
    ASSERT_TRUE(waitPended(high));
    EXPECT_EQ(sendText(q, "first"), 0);
    EXPECT_TRUE(waitGone(high));
    EXPECT_EQ(got[1], "first");
    EXPECT_TRUE(isPended(low));
    EXPECT_EQ(sendText(q, "second"), 0);
    EXPECT_TRUE(waitGone(low));
    EXPECT_EQ(got[0], "second");
    EXPECT_EQ(msgQDelete(q), 0);
}

// Deleting with a blocked reader or writer: it returns S_objLib_OBJ_DELETED and msgQDelete
// returns after it has left.
TEST_F(Queues, DeleteWithBlockedReaderOrWriter) {
    for (bool reader : {true, false}) {
        SCOPED_TRACE(reader ? "reader" : "writer");
        MSG_Q_ID q = msgQCreate(1, 4, 0);
        if (!reader) {
            ASSERT_EQ(sendText(q, "full"), 0);
        }
        std::atomic<int> rc{-2}, err{0}, release{0};
        int32_t id = spawn("tBlocked", 50, [&] {
            rc = reader ? msgQReceive(q, nullptr, 4, V2LIN_WAIT_FOREVER) : sendText(q, "w", V2LIN_WAIT_FOREVER);
            err = errno;
            waitFor([&] { return release.load() != 0; }, 10000);
        });
        ASSERT_TRUE(waitPended(id));
        EXPECT_EQ(msgQDelete(q), 0);
        EXPECT_FALSE(isPended(id));
        EXPECT_TRUE(waitFor([&] { return rc.load() != -2; }));
        EXPECT_EQ(rc.load(), -1);
        EXPECT_EQ(err.load(), S_objLib_OBJ_DELETED);
        release = 1;
        EXPECT_TRUE(waitGone(id));
        EXPECT_EQ(msgQSend(q, "x", 1, 0, 0), -1);
        EXPECT_EQ(errno, S_objLib_OBJ_ID_ERROR);
        EXPECT_EQ(msgQDelete(q), -1);
        EXPECT_EQ(errno, S_objLib_OBJ_ID_ERROR);
    }
}

TEST_F(Queues, QueueWithoutRoomHandsOverToAWaitingReader) {
    MSG_Q_ID q = msgQCreate(0, 4, 0);
    EXPECT_EQ(sendText(q, "lost"), -1);  // nobody reads
    EXPECT_EQ(errno, S_objLib_OBJ_UNAVAILABLE);
    std::string got;
    int32_t r = spawn("tR0", 50, [&] { got = receiveText(q, V2LIN_WAIT_FOREVER); });
    ASSERT_TRUE(waitPended(r));
    EXPECT_EQ(sendText(q, "hand"), 0);
    EXPECT_TRUE(waitGone(r));
    EXPECT_EQ(got, "hand");
    // A waiting writer is let through when a reader arrives.
    std::atomic<int> rc{-2};
    int32_t w = spawn("tW0", 50, [&] { rc = sendText(q, "late", V2LIN_WAIT_FOREVER); });
    ASSERT_TRUE(waitPended(w));
    EXPECT_EQ(receiveText(q, 200), "late");
    EXPECT_TRUE(waitGone(w));
    EXPECT_EQ(rc.load(), 0);
    EXPECT_EQ(msgQDelete(q), 0);
}

TEST_F(Queues, RingWrapsRoundWithAThousandMessages) {
    MSG_Q_ID q = msgQCreate(3, 4, 0);
    std::atomic<int> sent{0};
    int32_t producer = spawn("tProducer", 50, [&] {
        for (uint32_t i = 0; i < 1000; i++) {
            if (msgQSend(q, &i, sizeof i, V2LIN_WAIT_FOREVER, 0) != 0)
                break;
            sent++;
        }
    });
    std::vector<uint32_t> got;
    for (int i = 0; i < 1000; i++) {
        uint32_t v = 0;
        int n = msgQReceive(q, &v, sizeof v, 500);
        if (n != 4)
            break;
        got.push_back(v);
    }
    EXPECT_TRUE(waitGone(producer));
    ASSERT_EQ(got.size(), 1000u);
    for (uint32_t i = 0; i < 1000; i++)
        ASSERT_EQ(got[i], i);
    EXPECT_EQ(msgQNumMsgs(q), 0);

    // Urgent messages step back across the ring start as well.
    for (uint32_t round = 0; round < 10; round++) {
        uint32_t a = round, b = round + 100;
        ASSERT_EQ(msgQSend(q, &a, 4, 0, 0), 0);
        ASSERT_EQ(msgQSend(q, &b, 4, 0, V2LIN_MSG_PRI_URGENT), 0);
        uint32_t v = 0;
        ASSERT_EQ(msgQReceive(q, &v, 4, 0), 4);
        EXPECT_EQ(v, b);
        ASSERT_EQ(msgQReceive(q, &v, 4, 0), 4);
        EXPECT_EQ(v, a);
    }
    EXPECT_EQ(msgQDelete(q), 0);
}

TEST_F(Queues, UnknownHandles) {
    MSG_Q_ID q = msgQCreate(1, 4, 0);
    ASSERT_EQ(msgQDelete(q), 0);
    errno = 1234;
    EXPECT_EQ(msgQNumMsgs(q), -1);
    EXPECT_EQ(errno, 1234);
    EXPECT_EQ(msgQReceive(q, nullptr, 4, 0), -1);
    EXPECT_EQ(errno, S_objLib_OBJ_ID_ERROR);
    EXPECT_EQ(msgQCreate(-1, 4, 0), nullptr);
    EXPECT_EQ(errno, S_memLib_NOT_ENOUGH_MEMORY);
}

TEST_F(Queues, ShowAndList) {
    MSG_Q_ID q = msgQCreate(3, 16, 0);
    char expect[64];
    snprintf(expect, sizeof expect, "%x num=3 len=16: readers: writers: \n",
             static_cast<unsigned>(reinterpret_cast<uintptr_t>(q)));
    EXPECT_EQ(capture([&](FILE *f) { EXPECT_EQ(msgQShow(q, f, nullptr), 0); }), expect);
    std::string list = capture([&](FILE *f) { EXPECT_GE(msgQList(f, nullptr), 1); });
    EXPECT_NE(list.find(std::string(" ") + expect), std::string::npos) << list;
    std::string verbose = capture([&](FILE *f) { msgQShow(q, f, reinterpret_cast<void *>(1)); });
    EXPECT_GT(verbose.size(), strlen(expect));
    EXPECT_EQ(msgQDelete(q), 0);
}

}  // namespace
