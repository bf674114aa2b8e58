// Device-level switches and operations: the private management protocol and its
// ignore-clear-configuration option, the voice activity LED and the voice operation (register,
// unregister, restart).  The heartbeat flag is a fixed answer, kept with the capabilities.
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

#include "tr104/device/device_internal.h"

// Registration variants: the H.248 one belongs to the H.248 handlers, the SIP one to a process
// that provides it.  Either may be absent; the wrapper then answers -1 for its protocol.
extern "C" __attribute__((weak)) int Tr104MgcRegisterH248(int nFlag, void *pRegister, char *pMgcAddr, int *nLocate);
extern "C" __attribute__((weak)) int Tr104MgcRegisterSip(int nFlag, void *pRegister, char *pMgcAddr, int *nLocate);

namespace tr104::device {
namespace {

// A 4-byte switch of the voice module: get and set commands of their own, the set sent without
// waiting.
struct Switch {
    Signature sig;
    uint16_t getCmd;
    uint16_t setCmd;
    const char *entry;  // "%d" nFlag and the value
    const char *failure;  // read failed
    const char *done;  // read done ("%d" the value)
    const char *sendFailure;
};

int switchValue(const Switch &s, int nFlag, void *pValue) {
    TR104_DEBUG_AS(s.sig.name, s.entry, nFlag, pValue != nullptr ? core::intValue(pValue) : 0);
    if (const int rc = checkDevice(s.sig, nFlag, pValue); rc != TR104_OK) {
        return rc;
    }
    int value = 0;
    if (nFlag == 0) {
        if (core::readRecord(s.sig.name, &value, sizeof(value), s.getCmd) != TR104_OK) {
            core::say(s.sig.name, s.failure);
            return TR104_ERR_EXCHANGE;
        }
        core::putInt(pValue, value);
        TR104_DEBUG_AS(s.sig.name, s.done, value);
        return TR104_OK;
    }
    value = core::intValue(pValue);
    if (core::sendRecord(s.sig.name, &value, sizeof(value), s.setCmd) != TR104_OK) {
        core::say(s.sig.name, s.sendFailure);
        return TR104_ERR_EXCHANGE;
    }
    return TR104_OK;
}

// The LED state of the voice module and what it is reported as.
struct LedState {
    int module;
    int reported;
    const char *trace;
};
constexpr LedState kLedStates[] = {{1, 0, "return 0 \r\n"}, {2, 2, "return 2 \r\n"}, {0, 1, "return 1 \r\n"}};

const Signature kOperation{"Tr104VoiceOperation", "pOperation", Locate::None, Access::SetOnly,
                           "param error, nFlag=%d\n"};

enum Operation { kRegister = 0, kUnregister = 1, kRestart = 2 };

int registerWithCallAgent(int value) {
    char noAddress[] = "";
    return Tr104MgcRegister(1, &value, noAddress, nullptr);
}

}  // namespace
}  // namespace tr104::device

using namespace tr104::device;

extern "C" {

TR104_API int get_act_led(void) {
    TR104_DEBUG("enter \r\n");
    Tr104Msg msg;
    if (tr104MsgConstruct(&msg) != 0) {
        return TR104_ERR_EXCHANGE;
    }
    int state = 1;  // the request word the voice module expects
    if (CfgPreHandleGetParam(&msg, &state, sizeof(state), GET_VOIP_LED_STATUS_ID) != 0) {
        TR104_DEBUG("\r\n get voip led status failed.\r\n");
        return TR104_ERR_EXCHANGE;
    }
    for (const LedState &s : kLedStates) {
        if (s.module == state) {
            TR104_DEBUG("%s", s.trace);
            return s.reported;
        }
    }
    TR104_DEBUG("return -1 \r\n");
    return -1;
}

TR104_API int Tr104MgcRegister(int nFlag, void *pRegister, char *pMgcAddr, int *nLocate) {
    const int protocol = gTr104CurrProtocolType;
    if (protocol == TR104_PROTOCOL_H248 && Tr104MgcRegisterH248 != nullptr) {
        return Tr104MgcRegisterH248(nFlag, pRegister, pMgcAddr, nLocate);
    }
    if (protocol == TR104_PROTOCOL_SIP && Tr104MgcRegisterSip != nullptr) {
        return Tr104MgcRegisterSip(nFlag, pRegister, pMgcAddr, nLocate);
    }
    return TR104_ERR_EXCHANGE;
}

TR104_API int Tr104VoiceOperation(int nFlag, void *pValue) {
    if (const int rc = checkDevice(kOperation, nFlag, pValue); rc != TR104_OK) {
        return rc;
    }
    const int operation = tr104::core::intValue(pValue);
    switch (operation) {
    case kRegister: return registerWithCallAgent(1);
    case kUnregister: return registerWithCallAgent(0);
    case kRestart: {
        std::printf("[%s] system reboot...\n", "Tr104VoiceOperation");
        std::fflush(stdout);
        sleep(1);
        // The device goes down; a failed restart leaves nothing else to do here.
        const int status = std::system("reboot");
        (void)status;
        return TR104_OK;
    }
    default: TR104_DEBUG("param error, *pOperation=%d\n", operation); return TR104_ERR_PARAM;
    }
}

}  // extern "C"

#include "tr104/catalogue/device_DeviceSwitch.inc"
