// The voice profile's own parameters.  Its enable state, reset value, name and server type are
// kept in the library; the signalling protocol is sent to the voice module.
#include <cstring>

#include "tr104/device/device_internal.h"

extern "C" {
TR104_API char gProfileEnable[TR104_PROFILE_ENABLE_LEN] = "Enabled";
TR104_API char gProfileName[TR104_PROFILE_NAME_LEN] = "VoiceProfile1";
TR104_API int gVoiceServerType = 1;
}

namespace tr104::device {
namespace {

int gProfileReset = 0;

const Signature kEnable = deviceSignature("Tr104ProfileEnable", "pProfileEnable", Access::GetSet);
const Signature kReset = deviceSignature("Tr104ProfileReset", "pProfileReset", Access::GetSet);
const Signature kName = deviceSignature("Tr104ProfileName", "pProfileName", Access::GetSet);
const Signature kProtocol =
    deviceSignature("Tr104ProfileSignalingProtocol", "pProfileSignalingProtocol", Access::GetSet);
const Signature kServerType = deviceSignature("Tr104ServerType", "pServerType", Access::GetSet);

// Exact words: "enabled" is not "Enabled".
constexpr const char *kEnableStates[] = {"Disabled", "Quiescent", "Enabled"};

const char *protocolName(int protocol) {
    switch (protocol) {
    case TR104_PROTOCOL_H248: return "H.248";
    case TR104_PROTOCOL_SIP: return "SIP";
    default: return "NONE";
    }
}

// Server types 0 and 1 run SIP, 2 runs H.248.
constexpr int kServerTypeLimit = 3;
constexpr int kServerTypeH248 = 2;

}  // namespace
}  // namespace tr104::device

using namespace tr104::device;
using tr104::core::intValue;
using tr104::core::putInt;

extern "C" {

TR104_API int Tr104ProfileEnable(int nFlag, void *pValue) {
    if (const int rc = checkDevice(kEnable, nFlag, pValue); rc != TR104_OK) {
        return rc;
    }
    char *text = static_cast<char *>(pValue);
    if (nFlag == 0) {
        std::strcpy(text, gProfileEnable);
        return TR104_OK;
    }
    for (const char *state : kEnableStates) {
        if (std::strcmp(text, state) == 0) {
            std::strcpy(gProfileEnable, state);
            return TR104_OK;
        }
    }
    TR104_DEBUG("param error, pProfileEnable[%s]\n", text);
    return TR104_ERR_PARAM;
}

TR104_API int Tr104ProfileReset(int nFlag, void *pValue) {
    if (const int rc = checkDevice(kReset, nFlag, pValue); rc != TR104_OK) {
        return rc;
    }
    if (nFlag == 0) {
        putInt(pValue, gProfileReset);
    } else {
        gProfileReset = intValue(pValue);
    }
    return TR104_OK;
}

// A name longer than the kept text is cut at TR104_PROFILE_NAME_LEN - 1 characters.
TR104_API int Tr104ProfileName(int nFlag, void *pValue) {
    // A get's buffer holds nothing yet: only a set's text is printed.
    TR104_DEBUG("nFlag[%d], *pProfileName[%s]\n", nFlag,
                pValue != nullptr && nFlag == 1 ? static_cast<const char *>(pValue) : "");
    if (const int rc = checkDevice(kName, nFlag, pValue); rc != TR104_OK) {
        return rc;
    }
    char *text = static_cast<char *>(pValue);
    if (nFlag == 0) {
        std::strcpy(text, gProfileName);
        TR104_DEBUG("get ProfileName[%s]\n", text);
        return TR104_OK;
    }
    tr104::core::copyBounded(gProfileName, text, sizeof(gProfileName) - 1);
    return TR104_OK;
}

// The set tells the voice module which protocol to run after its next start; the running
// protocol (gTr104CurrProtocolType) changes only when the voice module reports it.
TR104_API int Tr104ProfileSignalingProtocol(int nFlag, void *pValue) {
    TR104_DEBUG("nFlag[%d], *pProfileSignalingProtocol[%s]\n", nFlag,
                pValue != nullptr && nFlag == 1 ? static_cast<const char *>(pValue) : "");
    if (const int rc = checkDevice(kProtocol, nFlag, pValue); rc != TR104_OK) {
        return rc;
    }
    char *text = static_cast<char *>(pValue);
    if (nFlag == 0) {
        std::strcpy(text, protocolName(gTr104CurrProtocolType));
        TR104_DEBUG("get voice protocol type[%s] \n", text);
        return TR104_OK;
    }
    // The text without its terminator, bounded by the request area.
    if (tr104::core::sendRecord(kProtocol.name, text, strnlen(text, TR104_CFG_BUFFER_LEN), SET_NGN_PROTOCOL) !=
        TR104_OK) {
        TR104_DEBUG("SET_NGN_PROTOCOL msg snd failed.\n");
        return TR104_ERR_EXCHANGE;
    }
    return TR104_OK;
}

TR104_API int Tr104ServerType(int nFlag, void *pValue) {
    TR104_DEBUG("nFlag[%d], *pServerType[%d]\n", nFlag, pValue != nullptr ? intValue(pValue) : 0);
    if (const int rc = checkDevice(kServerType, nFlag, pValue); rc != TR104_OK) {
        return rc;
    }
    if (nFlag == 0) {
        putInt(pValue, gVoiceServerType);
        return TR104_OK;
    }
    const int type = intValue(pValue);
    if (static_cast<unsigned int>(type) >= kServerTypeLimit) {
        TR104_DEBUG("param error, pServerType[%d]\n", type);
        return TR104_ERR_PARAM;
    }
    gVoiceServerType = type;
    char protocol[8];
    std::strcpy(protocol, type == kServerTypeH248 ? "H.248" : "SIP");
    return Tr104ProfileSignalingProtocol(1, protocol);
}

}  // extern "C"
