// A line's audio settings live in the voice profile bound to its port.  Each handler finds the
// bound profile through the port status and, when the port has none, creates a profile named
// "port%d" and binds it.  One body serves every member; the members are descriptors.
#include <cstdio>

#include "tr104/sip/sip_internal.h"

namespace tr104::sip {
namespace {

enum class ProfileConv : uint8_t {
    SignedByte,  // gains: a signed byte widened, range checked
    Byte,        // flags and targets: the low byte, no check
    DtmfText,    // DTMF method names
};

struct ProfileValue {
    Signature sig;
    uint8_t offset;  // field in the profile record
    uint32_t bit;    // change-mask bit of the field
    ProfileConv conv;
    int low, high;   // accepted range of SignedByte values
    const char *getError;       // "%d" the line
    const char *getDone;        // printed after a successful get (line, value), or null
    const char *rangeBound;     // out of range while a profile is bound
    const char *rangeCreate;    // out of range while none is
};

constexpr uint8_t kTransmit = offsetof(Tr104SipProfileRecord, cTransmitGain);
constexpr uint8_t kReceive = offsetof(Tr104SipProfileRecord, cReceiveGain);

const ProfileValue kTransmitGain{{"Tr104LineTransmitGainSip", "pLineTransmitGain", Locate::Line, Access::GetSet},
                                 kTransmit, TR104_PROFILE_TRANSMIT_GAIN, ProfileConv::SignedByte, -32, 32,
                                 "get line[%d] transmit gain error\n", nullptr,
                                 "transmit gain value is out of range[-32,32].\n",
                                 "transmit gain value is out of range[-32,32].\n"};
// The bound path reports a receive gain with the transmit gain's words: operators grep for it.
const ProfileValue kReceiveGain{{"Tr104LineReceiveGainSip", "pLineReceiveGain", Locate::Line, Access::GetSet},
                                kReceive, TR104_PROFILE_RECEIVE_GAIN, ProfileConv::SignedByte, -31, 31,
                                "get line[%d] receive gain error\n", nullptr,
                                "transmit gain value is out of range[-31,31].\n",
                                "receive gain value is out of range[-31,31].\n"};
const ProfileValue kEchoCancel{{"Tr104LineEchoCancelFlagSip", "pLineEchoCancelFlag", Locate::Line, Access::GetSet},
                               offsetof(Tr104SipProfileRecord, ucEchoCancel), TR104_PROFILE_ECHO_CANCEL,
                               ProfileConv::Byte, 0, 0, "get line[%d] echo cancel error\n",
                               "get line[%d] echo cancel [%d]\n", nullptr, nullptr};
// Comfort noise shares the echo canceller's texts.
const ProfileValue kComfortNoise{{"Tr104LineComfortNoiseFlagSip", "pLineComfortNoiseFlag", Locate::Line,
                                  Access::GetSet},
                                 offsetof(Tr104SipProfileRecord, ucComfortNoise), TR104_PROFILE_COMFORT_NOISE,
                                 ProfileConv::Byte, 0, 0, "get line[%d] echo cancel error\n",
                                 "get line[%d] echo cancel [%d]\n", nullptr, nullptr};
const ProfileValue kJitterTarget{{"Tr104LineJitterBufferTargetSip", "pLineJitterBufferTarget", Locate::Line,
                                  Access::GetSet},
                                 offsetof(Tr104SipProfileRecord, ucJitterTarget), TR104_PROFILE_JITTER_TARGET,
                                 ProfileConv::Byte, 0, 0, "get line[%d] jitter buffer target error\n", nullptr,
                                 nullptr, nullptr};
const ProfileValue kDtmfMethod{{"Tr104ProfileDTMFMethodSip", "pProfileDTMFMethod", Locate::LineOrAll,
                                Access::GetSet},
                               offsetof(Tr104SipProfileRecord, ucDtmfMethod), TR104_PROFILE_DTMF_METHOD,
                               ProfileConv::DtmfText, 0, 0, "get line[%d] DTMF method error\n", nullptr, nullptr,
                               nullptr};

const TextCode kDtmfMethods[] = {{"InBand", 0}, {"RFC2833", 1}, {"RFC2833 Redundancy", 2}, {"SIPInfo", 3}};

int8_t &byteOf(Tr104SipProfileRecord &profile, uint8_t offset) {
    return reinterpret_cast<int8_t *>(&profile)[offset];
}

// The profile of a port: its name and whether it is bound, from the port status.
int readPortProfile(const char *name, int line, Tr104SipLineRecord &status, Tr104SipProfileRecord &profile) {
    status = Tr104SipLineRecord{};
    status.unLine = static_cast<uint32_t>(line);
    if (readRecord(name, &status, sizeof(status), GET_PORT_STATUS_ID) != TR104_OK) {
        TR104_DEBUG_AS(name, "get port[%d] status error\n", line);
        return TR104_ERR_EXCHANGE;
    }
    // At most 21 characters of the bound name are used; the field keeps its terminator.
    copyBounded(profile.aName, status.aProfileName, sizeof(profile.aName) - 1);
    return TR104_OK;
}

void nameForPort(Tr104SipProfileRecord &profile, int line) {
    std::snprintf(profile.aName, sizeof(profile.aName), "port%d", line);
}

// Converts the caller's value into the profile's byte; -1 or -2 after a refusal.
int storeValue(const ProfileValue &v, bool bound, Tr104SipProfileRecord &profile, const void *pValue) {
    int stored = 0;
    switch (v.conv) {
    case ProfileConv::SignedByte: {
        const int value = intValue(pValue);
        if (!inRange(value, v.low, v.high)) {
            say(v.sig.name, bound ? v.rangeBound : v.rangeCreate);
            return TR104_ERR_EXCHANGE;
        }
        stored = value;
        break;
    }
    case ProfileConv::Byte:
        stored = intValue(pValue);
        break;
    case ProfileConv::DtmfText: {
        const TextCode *row = findText(kDtmfMethods, static_cast<const char *>(pValue));
        if (row == nullptr) {
            TR104_DEBUG_AS(v.sig.name, "param error, DTMF Method[%s].\n", static_cast<const char *>(pValue));
            return TR104_ERR_PARAM;
        }
        stored = row->code;
        break;
    }
    }
    byteOf(profile, v.offset) = static_cast<int8_t>(stored);
    profile.unChangeMask = v.bit;
    return TR104_OK;
}

int getProfileValue(const ProfileValue &v, int line, void *pValue) {
    Tr104SipLineRecord status;
    Tr104SipProfileRecord profile{};
    if (const int rc = readPortProfile(v.sig.name, line, status, profile); rc != TR104_OK) {
        return rc;
    }
    if (readRecord(v.sig.name, &profile, sizeof(profile), GET_PROFILE_CMD_ID) != TR104_OK) {
        TR104_DEBUG_AS(v.sig.name, v.getError, line);
        return TR104_ERR_EXCHANGE;
    }
    const int8_t raw = byteOf(profile, v.offset);
    switch (v.conv) {
    case ProfileConv::SignedByte:
        putInt(pValue, raw);
        break;
    case ProfileConv::Byte:
        putInt(pValue, static_cast<uint8_t>(raw));
        if (v.getDone != nullptr) {
            TR104_DEBUG_AS(v.sig.name, v.getDone, line, static_cast<uint8_t>(raw));
        }
        break;
    case ProfileConv::DtmfText: {
        const TextCode *row = findCode(kDtmfMethods, static_cast<uint8_t>(raw));
        if (row == nullptr) {
            TR104_DEBUG_AS(v.sig.name, "DTMF method[%d] error.\n", static_cast<uint8_t>(raw));
            return TR104_ERR_EXCHANGE;
        }
        std::strcpy(static_cast<char *>(pValue), row->text);
        break;
    }
    }
    return TR104_OK;
}

int sendProfile(const char *name, const Tr104SipProfileRecord &profile, unsigned int cmd, const char *failure) {
    if (sendRecord(name, &profile, sizeof(profile), cmd) != TR104_OK) {
        say(name, failure);
        return TR104_ERR_EXCHANGE;
    }
    return TR104_OK;
}

int setProfileValue(const ProfileValue &v, int line, const void *pValue) {
    Tr104SipLineRecord status;
    Tr104SipProfileRecord profile{};
    if (const int rc = readPortProfile(v.sig.name, line, status, profile); rc != TR104_OK) {
        return rc;
    }
    const bool bound = status.unProfileId != 0;
    if (const int rc = storeValue(v, bound, profile, pValue); rc != TR104_OK) {
        return rc;
    }
    if (bound) {
        return sendProfile(v.sig.name, profile, SET_PROFILE_CMD_ID, "SET_PROFILE_CMD_ID msg snd failed.\n");
    }
    nameForPort(profile, line);
    if (const int rc = sendProfile(v.sig.name, profile, CREATE_PROFILE_ID, "CREATE_PROFILE_ID msg snd failed.\n");
        rc != TR104_OK) {
        return rc;
    }
    if (const int rc = sendProfile(v.sig.name, profile, SET_PROFILE_CMD_ID, "SET_PROFILE_CMD_ID msg snd failed.\n");
        rc != TR104_OK) {
        return rc;
    }
    profile.ucPort = static_cast<uint8_t>(line);
    return sendProfile(v.sig.name, profile, BIND_PROFILE_ID, "BIND_PROFILE_ID msg snd failed.\n");
}

int profileValue(const ProfileValue &v, int nFlag, void *pValue, int *nLocate) {
    if (const int rc = checkArguments(v.sig, nFlag, pValue, nLocate); rc != TR104_OK) {
        return rc;
    }
    // Line 0 (where a handler accepts it) means every line: a get reads line 1, a set writes
    // line 1 and then line 2; a line already written stays written when the next one fails.
    const int line = lineOf(nLocate);
    const int first = line == 0 ? 1 : line;
    const int last = line == 0 ? 2 : line;
    if (nFlag == 0) {
        return getProfileValue(v, first, pValue);
    }
    for (int l = first; l <= last; ++l) {
        if (const int rc = setProfileValue(v, l, pValue); rc != TR104_OK) {
            return rc;
        }
    }
    return TR104_OK;
}

// Tr104LineGainSip: both directions through the port status block and one combined request
// when the port has no profile yet.
const Signature kGain{"Tr104LineGainSip", "pGain", Locate::Line, Access::GetSet};
constexpr int kGainLow = -32;
constexpr int kGainHigh = 32;

int lineGain(int nFlag, int nDirection, void *pValue, int *nLocate) {
    if (const int rc = checkArguments(kGain, nFlag, pValue, nLocate); rc != TR104_OK) {
        return rc;
    }
    const int line = lineOf(nLocate);
    const bool receive = nDirection != 0;
    const uint8_t offset = receive ? kReceive : kTransmit;
    Tr104SipLineRecord status{};
    if (getLineStatus(line, &status) != 0) {
        TR104_DEBUG_AS(kGain.name, "get port[%d] status error\n", line);
        return TR104_ERR_EXCHANGE;
    }
    Tr104SipProfileRecord profile{};
    copyBounded(profile.aName, status.aProfileName, sizeof(profile.aName) - 1);
    if (nFlag == 0) {
        if (readRecord(kGain.name, &profile, sizeof(profile), GET_PROFILE_CMD_ID) != TR104_OK) {
            TR104_DEBUG_AS(kGain.name, receive ? "get line[%d] receive gain error\n" : "get line[%d] transmit gain error\n",
                           line);
            return TR104_ERR_EXCHANGE;
        }
        putInt(pValue, byteOf(profile, offset));
        return TR104_OK;
    }
    const int gain = intValue(pValue);
    if (!inRange(gain, kGainLow, kGainHigh)) {
        say(kGain.name, receive ? "receive gain value is out of range[-32,32].\n"
                                : "transmit gain value is out of range[-32,32].\n");
        return TR104_ERR_EXCHANGE;
    }
    byteOf(profile, offset) = static_cast<int8_t>(gain);
    profile.unChangeMask = receive ? TR104_PROFILE_RECEIVE_GAIN : TR104_PROFILE_TRANSMIT_GAIN;
    TR104_DEBUG_AS(kGain.name, "gain:%d profileid:%d.\n", gain, static_cast<int>(status.unProfileId));
    if (status.unProfileId != 0) {
        return sendtr104Msg(SET_PROFILE_CMD_ID, &profile, sizeof(profile)) == 0 ? TR104_OK : TR104_ERR_EXCHANGE;
    }
    nameForPort(profile, line);
    profile.ucPort = static_cast<uint8_t>(line);
    if (sendtr104Msg(CREATE_SET_BIND_PROFILE_ID, &profile, sizeof(profile)) != 0) {
        say(kGain.name, "CREATE_SET_BIND_PROFILE_ID msg snd failed.\n");
        return TR104_ERR_EXCHANGE;
    }
    return TR104_OK;
}

}  // namespace
}  // namespace tr104::sip

using tr104::sip::profileValue;

extern "C" {
TR104_API int Tr104LineTransmitGainSip(int nFlag, void *pValue, int *nLocate) {
    return profileValue(tr104::sip::kTransmitGain, nFlag, pValue, nLocate);
}
TR104_API int Tr104LineReceiveGainSip(int nFlag, void *pValue, int *nLocate) {
    return profileValue(tr104::sip::kReceiveGain, nFlag, pValue, nLocate);
}
TR104_API int Tr104LineEchoCancelFlagSip(int nFlag, void *pValue, int *nLocate) {
    return profileValue(tr104::sip::kEchoCancel, nFlag, pValue, nLocate);
}
TR104_API int Tr104LineComfortNoiseFlagSip(int nFlag, void *pValue, int *nLocate) {
    return profileValue(tr104::sip::kComfortNoise, nFlag, pValue, nLocate);
}
TR104_API int Tr104LineJitterBufferTargetSip(int nFlag, void *pValue, int *nLocate) {
    return profileValue(tr104::sip::kJitterTarget, nFlag, pValue, nLocate);
}
TR104_API int Tr104ProfileDTMFMethodSip(int nFlag, void *pValue, int *nLocate) {
    return profileValue(tr104::sip::kDtmfMethod, nFlag, pValue, nLocate);
}
TR104_API int Tr104LineGainSip(int nFlag, int nDirection, void *pValue, int *nLocate) {
    return tr104::sip::lineGain(nFlag, nDirection, pValue, nLocate);
}
}
