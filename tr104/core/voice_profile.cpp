// A line's audio settings live in the voice profile bound to its port.  Each handler finds the
// bound profile through the port status and, when the port has none, creates a profile named
// "port%d" and binds it.  One body serves every member; the members are descriptors (the
// catalogue's ProfileValue rows of the SIP area, and the audio settings below, which SIP and
// H.248 share).
#include "tr104/core/voice_profile.h"

#include <cstdio>
#include <cstring>

namespace tr104::core {
namespace {

constexpr uint8_t kTransmit = offsetof(Tr104SipProfileRecord, cTransmitGain);
constexpr uint8_t kReceive = offsetof(Tr104SipProfileRecord, cReceiveGain);

constexpr Signature lineSignature(const char *name, const char *valueName) {
    return Signature{name, valueName, Locate::Line, Access::GetSet};
}

// A one-byte flag or target: the low byte stored, no check.
constexpr ProfileValue byteValue(const char *name, const char *valueName, uint8_t offset, uint32_t bit,
                                 const char *getError, const char *getDone = nullptr) {
    return ProfileValue{lineSignature(name, valueName),
                        offset,
                        1,
                        bit,
                        ProfileConv::Byte,
                        0,
                        0,
                        TR104_ERR_PARAM,
                        getError,
                        getDone,
                        nullptr,
                        nullptr,
                        nullptr};
}

// Gains: out of range is -1, not -2.
constexpr ProfileValue gainValue(const char *name, const char *valueName, uint8_t offset, uint32_t bit, int limit,
                                 const char *getError, const char *rangeBound, const char *rangeCreate) {
    return ProfileValue{lineSignature(name, valueName),
                        offset,
                        1,
                        bit,
                        ProfileConv::SignedByte,
                        -limit,
                        limit,
                        TR104_ERR_EXCHANGE,
                        getError,
                        nullptr,
                        rangeBound,
                        rangeCreate,
                        nullptr};
}

// In the order of LineAudio.  The audio settings take their handler's name when called: the SIP
// and the H.248 variant of each are the same descriptor.
const ProfileValue kLineAudio[] = {
    gainValue(nullptr, "pLineTransmitGain", kTransmit, TR104_PROFILE_TRANSMIT_GAIN, 32,
              "get line[%d] transmit gain error\n", "transmit gain value is out of range[-32,32].\n",
              "transmit gain value is out of range[-32,32].\n"),
    // The bound path reports a receive gain with the transmit gain's words: operators grep for it.
    gainValue(nullptr, "pLineReceiveGain", kReceive, TR104_PROFILE_RECEIVE_GAIN, 31,
              "get line[%d] receive gain error\n", "transmit gain value is out of range[-31,31].\n",
              "receive gain value is out of range[-31,31].\n"),
    byteValue(nullptr, "pLineEchoCancelFlag", offsetof(Tr104SipProfileRecord, ucEchoCancel), TR104_PROFILE_ECHO_CANCEL,
              "get line[%d] echo cancel error\n", "get line[%d] echo cancel [%d]\n"),
    // Comfort noise shares the echo canceller's texts.
    byteValue(nullptr, "pLineComfortNoiseFlag", offsetof(Tr104SipProfileRecord, ucComfortNoise),
              TR104_PROFILE_COMFORT_NOISE, "get line[%d] echo cancel error\n", "get line[%d] echo cancel [%d]\n"),
    byteValue(nullptr, "pLineJitterBufferTarget", offsetof(Tr104SipProfileRecord, ucJitterTarget),
              TR104_PROFILE_JITTER_TARGET, "get line[%d] jitter buffer target error\n"),
};
static_assert(sizeof(kLineAudio) / sizeof(kLineAudio[0]) == static_cast<size_t>(LineAudio::Count));

const TextCode kDtmfMethods[] = {{"InBand", 0}, {"RFC2833", 1}, {"RFC2833 Redundancy", 2}, {"SIPInfo", 3}};

// T.38 rate codes: 1..6 for 2400..14400 bit/s; a stored 0 is the highest rate.
constexpr int kT38Rates[] = {2400, 4800, 7200, 9600, 12000, 14400};
constexpr int kT38RateCount = sizeof(kT38Rates) / sizeof(kT38Rates[0]);
constexpr int kT38DefaultRate = 14400;
const TextCode kTcfMethods[] = {{"Local", 2}, {"Network", 3}};

int8_t &byteOf(Tr104SipProfileRecord &profile, uint8_t offset) { return reinterpret_cast<int8_t *>(&profile)[offset]; }

// The field as stored: a signed byte widened, or a word.
int fieldOf(const ProfileValue &v, const Tr104SipProfileRecord &profile) {
    const char *at = reinterpret_cast<const char *>(&profile) + v.offset;
    if (v.width == 1) {
        return v.conv == ProfileConv::SignedByte ? static_cast<int8_t>(*at) : static_cast<uint8_t>(*at);
    }
    uint32_t word;
    std::memcpy(&word, at, sizeof(word));
    return static_cast<int>(word);
}

void setField(const ProfileValue &v, Tr104SipProfileRecord &profile, int value) {
    char *at = reinterpret_cast<char *>(&profile) + v.offset;
    if (v.width == 1) {
        *at = static_cast<char>(value);
    } else {
        const uint32_t word = static_cast<uint32_t>(value);
        std::memcpy(at, &word, sizeof(word));
    }
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

// Converts the caller's value into the profile's field and sets its bit; -1 or -2 after a
// refusal.
int storeValue(const ProfileValue &v, bool bound, Tr104SipProfileRecord &profile, const void *pValue) {
    const char *refusal = bound ? v.rangeBound : v.rangeCreate;
    const char *text = static_cast<const char *>(pValue);
    const TextCode *row = nullptr;
    int stored = 0;
    switch (v.conv) {
    case ProfileConv::Byte: stored = intValue(pValue); break;
    case ProfileConv::SignedByte:
    case ProfileConv::Word:
        stored = intValue(pValue);
        if (!inRange(stored, v.low, v.high)) {
            TR104_DEBUG_AS(v.sig.name, refusal, stored);
            return v.refusal;
        }
        break;
    case ProfileConv::T38Rate:
        stored = 0;
        for (int code = 1; code <= kT38RateCount; ++code) {
            stored = kT38Rates[code - 1] == intValue(pValue) ? code : stored;
        }
        if (stored == 0) {
            TR104_DEBUG_AS(v.sig.name, refusal, intValue(pValue));
            return v.refusal;
        }
        break;
    case ProfileConv::DtmfText:
    case ProfileConv::TcfText:
        row = v.conv == ProfileConv::DtmfText ? findText(kDtmfMethods, text) : findText(kTcfMethods, text);
        if (row == nullptr) {
            TR104_DEBUG_AS(v.sig.name, refusal, text);
            return v.refusal;
        }
        stored = row->code;
        break;
    }
    setField(v, profile, stored);
    profile.unChangeMask = v.bit;
    return TR104_OK;
}

// The stored field in the data model's form; -1 when it has none.
int convertStored(const ProfileValue &v, int stored, int line, void *pValue) {
    const TextCode *row = nullptr;
    switch (v.conv) {
    case ProfileConv::SignedByte:
    case ProfileConv::Byte:
        putInt(pValue, stored);
        if (v.getDone != nullptr) {
            TR104_DEBUG_AS(v.sig.name, v.getDone, line, stored);
        }
        return TR104_OK;
    case ProfileConv::Word:
        if (!inRange(stored, v.low, v.high)) {
            break;
        }
        putInt(pValue, stored);
        return TR104_OK;
    case ProfileConv::T38Rate:
        if (stored == 0) {
            putInt(pValue, kT38DefaultRate);
            return TR104_OK;
        }
        if (!inRange(stored, 1, kT38RateCount)) {
            break;
        }
        putInt(pValue, kT38Rates[stored - 1]);
        return TR104_OK;
    case ProfileConv::DtmfText:
    case ProfileConv::TcfText:
        row = v.conv == ProfileConv::DtmfText ? findCode(kDtmfMethods, stored) : findCode(kTcfMethods, stored);
        if (row == nullptr) {
            break;
        }
        std::strcpy(static_cast<char *>(pValue), row->text);
        return TR104_OK;
    }
    TR104_DEBUG_AS(v.sig.name, v.badStored, stored);
    return TR104_ERR_EXCHANGE;
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
    return convertStored(v, fieldOf(v, profile), line, pValue);
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

constexpr int kGainLow = -32;
constexpr int kGainHigh = 32;

}  // namespace

// Both directions through the port status block and one combined request when the port has no
// profile yet.
int lineGain(const char *name, int nFlag, int nDirection, void *pValue, int *nLocate) {
    const Signature sig{name, "pGain", Locate::Line, Access::GetSet};
    if (const int rc = checkArguments(sig, nFlag, pValue, nLocate); rc != TR104_OK) {
        return rc;
    }
    const int line = lineOf(nLocate);
    const bool receive = nDirection != 0;
    const uint8_t offset = receive ? kReceive : kTransmit;
    Tr104SipLineRecord status{};
    if (getLineStatus(line, &status) != 0) {
        TR104_DEBUG_AS(sig.name, "get port[%d] status error\n", line);
        return TR104_ERR_EXCHANGE;
    }
    Tr104SipProfileRecord profile{};
    copyBounded(profile.aName, status.aProfileName, sizeof(profile.aName) - 1);
    if (nFlag == 0) {
        if (readRecord(sig.name, &profile, sizeof(profile), GET_PROFILE_CMD_ID) != TR104_OK) {
            TR104_DEBUG_AS(sig.name,
                           receive ? "get line[%d] receive gain error\n" : "get line[%d] transmit gain error\n", line);
            return TR104_ERR_EXCHANGE;
        }
        putInt(pValue, byteOf(profile, offset));
        return TR104_OK;
    }
    const int gain = intValue(pValue);
    if (!inRange(gain, kGainLow, kGainHigh)) {
        say(sig.name, receive ? "receive gain value is out of range[-32,32].\n"
                              : "transmit gain value is out of range[-32,32].\n");
        return TR104_ERR_EXCHANGE;
    }
    byteOf(profile, offset) = static_cast<int8_t>(gain);
    profile.unChangeMask = receive ? TR104_PROFILE_RECEIVE_GAIN : TR104_PROFILE_TRANSMIT_GAIN;
    TR104_DEBUG_AS(sig.name, "gain:%d profileid:%d.\n", gain, static_cast<int>(status.unProfileId));
    if (status.unProfileId != 0) {
        return sendtr104Msg(SET_PROFILE_CMD_ID, &profile, sizeof(profile)) == 0 ? TR104_OK : TR104_ERR_EXCHANGE;
    }
    nameForPort(profile, line);
    profile.ucPort = static_cast<uint8_t>(line);
    if (sendtr104Msg(CREATE_SET_BIND_PROFILE_ID, &profile, sizeof(profile)) != 0) {
        say(sig.name, "CREATE_SET_BIND_PROFILE_ID msg snd failed.\n");
        return TR104_ERR_EXCHANGE;
    }
    return TR104_OK;
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

int lineAudio(LineAudio which, const char *name, int nFlag, void *pValue, int *nLocate) {
    ProfileValue v = kLineAudio[static_cast<size_t>(which)];
    v.sig.name = name;
    return profileValue(v, nFlag, pValue, nLocate);
}

}  // namespace tr104::core
