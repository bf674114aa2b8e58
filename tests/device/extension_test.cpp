// The extension point: a process that loads the library defines SIP variants the library leaves
// to it, and the library's wrappers reach them.  This program defines two and exports them.
#include <gtest/gtest.h>

#include <cstring>

#include "tr104.h"

namespace {
int timerCalls = 0;
int registerCalls = 0;
int lastRegister = -1;
}  // namespace

extern "C" int Tr104SipTimerT1Sip(int nFlag, void *pValue, int *nLocate) {
    ++timerCalls;
    if (nFlag == 0) {
        std::memcpy(pValue, &nLocate[2], sizeof(int));
    }
    return 7;
}

extern "C" int Tr104MgcRegisterSip(int nFlag, void *pRegister, char *pMgcAddr, int *nLocate) {
    ++registerCalls;
    std::memcpy(&lastRegister, pRegister, sizeof(int));
    return nFlag == 1 && pMgcAddr != nullptr && pMgcAddr[0] == '\0' && nLocate == nullptr ? 0 : -9;
}

namespace {

TEST(Extension, WrapperReachesTheProcessVariant) {
    int locate[4] = {0, 1, 2, 0};
    int value = 0;
    gTr104CurrProtocolType = TR104_PROTOCOL_SIP;
    EXPECT_EQ(Tr104SipTimerT1(0, &value, locate), 7);
    EXPECT_EQ(value, 2);
    EXPECT_EQ(timerCalls, 1);
    gTr104CurrProtocolType = TR104_PROTOCOL_H248;
    EXPECT_EQ(Tr104SipTimerT1(0, &value, locate), -1);
    EXPECT_EQ(Tr104SipTimerT2(0, &value, locate), -1) << "a variant nobody defines";
    gTr104CurrProtocolType = TR104_PROTOCOL_SIP;
    EXPECT_EQ(Tr104SipTimerT2(0, &value, locate), -1);
    EXPECT_EQ(timerCalls, 1);
}

TEST(Extension, VoiceOperationRegistersThroughTheSipVariant) {
    gTr104CurrProtocolType = TR104_PROTOCOL_SIP;
    for (const auto &[operation, registered] : {std::pair{0, 1}, {1, 0}}) {
        int op = operation;
        EXPECT_EQ(Tr104VoiceOperation(1, &op), 0);
        EXPECT_EQ(lastRegister, registered);
    }
    EXPECT_EQ(registerCalls, 2);
    gTr104CurrProtocolType = TR104_PROTOCOL_NONE;
    int op = 0;
    EXPECT_EQ(Tr104VoiceOperation(1, &op), -1);
    EXPECT_EQ(registerCalls, 2);
}

}  // namespace
