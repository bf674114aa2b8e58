// A fresh channel for one test: globals back to their load-time values, the queues of a module
// kind opened, and the emulator serving the send queue.
#pragma once

#include <gtest/gtest.h>
#include <sys/ipc.h>
#include <sys/msg.h>
#include <sys/sem.h>

#include <chrono>

#include "emulator/voice_module_emulator.h"
#include "tr104.h"

namespace tr104test {

inline void resetChannelGlobals() {
    gTr104RcvMsgQueueSemId = -1;
    gTr104SndMsgQueueId = -1;
    gTr104RcvOutMsgQueueId = -1;
    gTr104RcvInMsgQueueId = -1;
    gCurrentModule = 7;
    gTr104CfgDebug = 0;
}

inline int semValue() { return semctl(gTr104RcvMsgQueueSemId, 0, GETVAL); }

inline size_t queueDepth(int queueId) {
    msqid_ds ds{};
    return msgctl(queueId, IPC_STAT, &ds) == 0 ? ds.msg_qnum : static_cast<size_t>(-1);
}

class ChannelTest : public ::testing::Test {
protected:
    // Module kind whose queues the test uses (1: module 7, the long wait).
    virtual int moduleKind() const { return 1; }

    void SetUp() override {
        resetChannelGlobals();
        ASSERT_EQ(tr104VoiceMsgQueuesInit(moduleKind()), 0);
        ASSERT_TRUE(emulator.start());
    }
    void TearDown() override { emulator.stop(); }

    // A record of this process, ready for a request.
    static Tr104Msg request(uint32_t cmd) {
        Tr104Msg msg;
        tr104MsgConstruct(&msg);
        msg.cmd = cmd;
        return msg;
    }

    vmemu::VoiceModuleEmulator emulator;
};

}  // namespace tr104test
