// Opening the channel: module kinds, queue keys, the lock's reset, the record filling, and the
// bytes that actually cross the kernel.
#include <arpa/inet.h>

#include <cstring>

#include "support/channel_fixture.h"

namespace {

using tr104test::resetChannelGlobals;

struct KindRow {
    int kind;
    int module;
    int replyKey;  // 0: none
    int inboundKey;
};

class ModuleKinds : public ::testing::TestWithParam<KindRow> {
protected:
    void SetUp() override { resetChannelGlobals(); }
};

TEST_P(ModuleKinds, OpensTheQueuesOfTheKind) {
    const KindRow row = GetParam();
    ASSERT_EQ(tr104VoiceMsgQueuesInit(row.kind), 0);
    EXPECT_EQ(gCurrentModule, row.module);
    EXPECT_EQ(gTr104RcvMsgQueueSemId, semget(36, 1, 0));
    EXPECT_EQ(gTr104SndMsgQueueId, msgget(30, 0));
    if (row.replyKey == 0) {
        EXPECT_EQ(gTr104RcvOutMsgQueueId, -1);
        EXPECT_EQ(gTr104RcvInMsgQueueId, -1);
    } else {
        EXPECT_EQ(gTr104RcvOutMsgQueueId, msgget(row.replyKey, 0));
        EXPECT_EQ(gTr104RcvInMsgQueueId, msgget(row.inboundKey, 0));
        EXPECT_NE(gTr104RcvOutMsgQueueId, gTr104RcvInMsgQueueId);
    }
}

INSTANTIATE_TEST_SUITE_P(AllKinds, ModuleKinds,
                         ::testing::Values(KindRow{1, 7, 36, 37}, KindRow{2, 9, 160, 161}, KindRow{3, 10, 162, 163},
                                           KindRow{4, 15, 164, 165}, KindRow{5, 13, 0, 0}, KindRow{6, 11, 0, 0},
                                           KindRow{7, 14, 0, 0}));

TEST(ChannelInit, UnknownKindIsReportedButNotAnError) {
    for (int kind : {0, 8, -1}) {
        resetChannelGlobals();
        testing::internal::CaptureStdout();
        EXPECT_EQ(tr104VoiceMsgQueuesInit(kind), 0) << kind;
        const std::string out = testing::internal::GetCapturedStdout();
        EXPECT_EQ(out, "Tr104VoiceMsgQueuesInit failed, module name error!\n");
        EXPECT_EQ(gCurrentModule, 7);
        EXPECT_EQ(gTr104RcvOutMsgQueueId, -1);
        EXPECT_NE(gTr104SndMsgQueueId, -1);  // the send queue is opened before the kind is looked at
    }
}

TEST(ChannelInit, SecondCallReusesEverythingAndKeepsTheLockAsItIs) {
    resetChannelGlobals();
    ASSERT_EQ(tr104VoiceMsgQueuesInit(1), 0);
    const int sem = gTr104RcvMsgQueueSemId, snd = gTr104SndMsgQueueId, out = gTr104RcvOutMsgQueueId,
              in = gTr104RcvInMsgQueueId;
    ASSERT_EQ(semctl(sem, 0, SETVAL, 0), 0);  // taken by someone
    ASSERT_EQ(tr104VoiceMsgQueuesInit(1), 0);
    EXPECT_EQ(gTr104RcvMsgQueueSemId, sem);
    EXPECT_EQ(gTr104SndMsgQueueId, snd);
    EXPECT_EQ(gTr104RcvOutMsgQueueId, out);
    EXPECT_EQ(gTr104RcvInMsgQueueId, in);
    EXPECT_EQ(semctl(sem, 0, GETVAL), 0);  // not reopened, so not reset
}

TEST(ChannelInit, EveryOpeningProcessResetsTheLockToFree) {
    resetChannelGlobals();
    ASSERT_EQ(tr104VoiceMsgQueuesInit(2), 0);
    ASSERT_EQ(semctl(gTr104RcvMsgQueueSemId, 0, SETVAL, 0), 0);
    gTr104RcvMsgQueueSemId = -1;  // as a newly started process sees it
    ASSERT_EQ(tr104VoiceMsgQueuesInit(2), 0);
    EXPECT_EQ(semctl(gTr104RcvMsgQueueSemId, 0, GETVAL), 1);
}

TEST(ChannelInit, ConstructFillsTheRecordAndRefusesNullSilently) {
    resetChannelGlobals();
    ASSERT_EQ(tr104VoiceMsgQueuesInit(3), 0);
    Tr104Msg msg;
    std::memset(&msg, 0xAB, sizeof(msg));
    ASSERT_EQ(tr104MsgConstruct(&msg), 0);
    EXPECT_EQ(msg.cmd_type, 10u);
    EXPECT_EQ(msg.cmd, 0u);
    EXPECT_EQ(msg.semId, gTr104RcvMsgQueueSemId);
    EXPECT_EQ(msg.sndQueueId, gTr104SndMsgQueueId);
    EXPECT_EQ(msg.rcvQueueId, gTr104RcvOutMsgQueueId);
    for (size_t i = 0; i < sizeof(msg.cfgBuffer); ++i) {
        ASSERT_EQ(msg.cfgBuffer[i], 0);
        ASSERT_EQ(msg.rspBuffer[i], 0);
    }
    Tr104Msg viaInit;
    std::memset(&viaInit, 0x5A, sizeof(viaInit));
    tr104MsgInit(&viaInit);
    EXPECT_EQ(std::memcmp(&msg, &viaInit, sizeof(msg)), 0);

    gTr104CfgDebug = 1;
    testing::internal::CaptureStdout();
    EXPECT_EQ(tr104MsgConstruct(nullptr), -1);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    testing::internal::CaptureStdout();
    tr104MsgInit(nullptr);
    const std::string out = testing::internal::GetCapturedStdout();
    EXPECT_NE(out.find("][tr104MsgInit,"), std::string::npos) << out;
    EXPECT_NE(out.find("param error, pMsg is null\n"), std::string::npos) << out;
    gTr104CfgDebug = 0;
}

// The kernel message must hold exactly what the 32-bit device sends: a type word, then the
// command id, the request payload and a zero reply area, 4100 bytes of text.
TEST(ChannelWire, RequestTextIsCommandPayloadAndZeroReplyArea) {
    resetChannelGlobals();
    ASSERT_EQ(tr104VoiceMsgQueuesInit(1), 0);
    unsigned char payload[300];
    for (size_t i = 0; i < sizeof(payload); ++i) {
        payload[i] = static_cast<unsigned char>(i * 7 + 1);
    }
    const uint32_t cmd = 0x00004015;  // 16405
    ASSERT_EQ(sendtr104Msg(cmd, payload, sizeof(payload)), 0);

    struct {
        long mtype;
        unsigned char text[8192];
    } raw;
    const ssize_t n = msgrcv(gTr104SndMsgQueueId, &raw, sizeof(raw.text), 0, IPC_NOWAIT);
    ASSERT_EQ(n, 4100);
    EXPECT_EQ(raw.mtype, 7);

    // The command id in the platform's byte order: on the big-endian device 00 00 40 15.
    unsigned char expectedCmd[4];
    std::memcpy(expectedCmd, &cmd, 4);
    EXPECT_EQ(std::memcmp(raw.text, expectedCmd, 4), 0);
    const bool bigEndian = htonl(1) == 1;
    const unsigned char be[4] = {0x00, 0x00, 0x40, 0x15};
    const unsigned char le[4] = {0x15, 0x40, 0x00, 0x00};
    EXPECT_EQ(std::memcmp(raw.text, bigEndian ? be : le, 4), 0);

    EXPECT_EQ(std::memcmp(raw.text + 4, payload, sizeof(payload)), 0);
    for (size_t i = 4 + sizeof(payload); i < 4100; ++i) {
        ASSERT_EQ(raw.text[i], 0) << "text byte " << i;
    }
}

TEST(ChannelWire, RecordLayoutIsTheDevicesOnEveryHost) {
    EXPECT_EQ(sizeof(Tr104Msg), 4116u);
    EXPECT_EQ(offsetof(Tr104Msg, rspBuffer), 2056u);
    EXPECT_EQ(offsetof(Tr104Msg, rcvQueueId), 4112u);
    EXPECT_EQ(offsetof(Tr104WireMsg, text), sizeof(long));
    EXPECT_EQ(sizeof(Tr104SimpleDataBlock), 2048u);
}

}  // namespace
