// Values kept in the line record: line enable and registration, display name, hotline,
// jitter buffer, and the conversions of the port status.  Each handler is a descriptor; one
// body reads or writes the record and converts the value.
#include "tr104/sip/templates.h"

namespace tr104::sip {
namespace {

using Conv = LineConv;

constexpr uint16_t kEnable = offsetof(Tr104SipLineRecord, unEnable);
constexpr uint16_t kHotlineNum = offsetof(Tr104SipLineRecord, aHotlineNum);
constexpr uint16_t kDisplayName = offsetof(Tr104SipLineRecord, aDisplayName);
constexpr uint16_t kHotlineDelay = offsetof(Tr104SipLineRecord, unHotlineDelay);
constexpr uint16_t kMinJitter = offsetof(Tr104SipLineRecord, unMinJitter);
constexpr uint16_t kMaxJitter = offsetof(Tr104SipLineRecord, unMaxJitter);
constexpr uint16_t kJitterMode = offsetof(Tr104SipLineRecord, aJitterMode);
constexpr uint16_t kHotlineNumRoom = TR104_FIELD_ROOM(Tr104SipLineRecord, aHotlineNum, aDisplayName);
constexpr uint16_t kDisplayNameRoom = TR104_FIELD_ROOM(Tr104SipLineRecord, aDisplayName, aucReserved1);
constexpr uint16_t kJitterModeRoom = TR104_FIELD_ROOM(Tr104SipLineRecord, aJitterMode, aucReserved3);

constexpr const char *kStatusError = "get port[%d] status error\n";

const LineValue kLineEnable{{"Tr104LineEnableSip", "pLineEnable", Locate::Line, Access::GetSet},
                            GET_LINE_ENABLE_ID, SET_LINE_ENABLE_ID, kEnable, 4, Conv::EnableText,
                            "get Line Enable error.\n", "SET_LINE_ENABLE_ID msg snd failed.\n",
                            "line enable param error.\n"};
const LineValue kLineRegister{{"Tr104LineRegisterSip", "pLineRegister", Locate::Line, Access::SetOnly},
                              0, REGISTER_LINE_ID, 0, 0, Conv::Register, nullptr,
                              "register or unregister msg snd failed.\n", nullptr};
const LineValue kLineDisplayName{{"Tr104LineDisplayNameSip", "pLineDisplayName", Locate::Line, Access::GetSet},
                                 GET_PORT_DISPLAY_NAME_ID,
                                 SET_PORT_DISPLAY_NAME_ID,
                                 kDisplayName,
                                 kDisplayNameRoom,
                                 Conv::Text,
                                 "get line[%d] display name error.\n",
                                 "SET_PORT_DISPLAY_NAME_ID msg snd failed.\n",
                                 nullptr,
                                 TooLong::RunOn};
const LineValue kLineHotlineNum{{"Tr104LineHotlineNumSip", "pLineHotlineNum", Locate::Line, Access::GetSet},
                                GET_HOTLINE_NUM_ID,
                                SET_HOTLINE_NUM_ID,
                                kHotlineNum,
                                kHotlineNumRoom,
                                Conv::Text,
                                "get line[%d] hotline num error.\n",
                                "SET_HOTLINE_NUM_ID msg snd failed.\n",
                                "param error, line HotlineNum len too long\n",
                                TooLong::Refuse,
                                65};
const LineValue kLineHotlineDelay{{"Tr104LineHotlineDelaySip", "pLineHotlineDelay", Locate::Line, Access::GetSet},
                                  GET_HOTLINE_DELAY_ID, SET_HOTLINE_DELAY_ID, kHotlineDelay, 4, Conv::Integer,
                                  "get line[%d] hotline delay error.\n", "SET_HOTLINE_DELAY_ID msg snd failed.\n",
                                  nullptr};
// Its send failure names the display name's command: that is the text operators know.
const LineValue kLineJitterMode{{"Tr104LineJitterBufferModeSip", "pLineJitterBufferMode", Locate::Line, Access::GetSet},
                                GET_JIT_MODE_ID,
                                SET_JIT_MODE_ID,
                                kJitterMode,
                                kJitterModeRoom,
                                Conv::Text,
                                "get line[%d] jitter buffer mode error.\n",
                                "SET_PORT_DISPLAY_NAME_ID msg snd failed.\n",
                                nullptr,
                                TooLong::Cut,
                                9};
const LineValue kLineMaxJitter{{"Tr104LineMaxJitterBufferValueSip", "pLineMaxJitterBufferValue", Locate::Line,
                                Access::GetSet},
                               GET_MAX_JIT_VALUE_ID, SET_MAX_JIT_VALUE_ID, kMaxJitter, 4, Conv::Integer,
                               "get line[%d] max jitter buffer value error.\n",
                               "SET_MAX_JIT_VALUE_ID msg snd failed.\n", nullptr};
const LineValue kLineMinJitter{{"Tr104LineMinJitterBufferValueSip", "pLineMinJitterBufferValue", Locate::Line,
                                Access::GetSet},
                               GET_MIN_JIT_VALUE_ID, SET_MIN_JIT_VALUE_ID, kMinJitter, 4, Conv::Integer,
                               "get line[%d] min jitter buffer value error.\n",
                               "SET_MIN_JIT_VALUE_ID msg snd failed.\n", nullptr};

// The port status conversions: get only, from GET_PORT_STATUS_ID.
constexpr LineValue portStatusValue(const char *name, const char *valueName, Conv conv) {
    return LineValue{{name, valueName, Locate::Line, Access::GetOnly}, GET_PORT_STATUS_ID, 0, 0, 0, conv,
                     kStatusError, nullptr, nullptr};
}
const LineValue kLineRegStatus = portStatusValue("Tr104LineRegStatusSip", "pLineRegStatus", Conv::RegStatus);
const LineValue kLineServerStatus =
    portStatusValue("Tr104LineServerStatusSip", "pLineServerStatus", Conv::ServerStatus);
const LineValue kPortStatus = portStatusValue("Tr104PortStatusSip", "pPortStatus", Conv::PortState);
const LineValue kLineHookStatus = portStatusValue("Tr104LineHookStatusSip", "pLineHookStatus", Conv::HookText);
const LineValue kLineCallStatus = portStatusValue("Tr104LineCallStatusSip", "pLineCallStatus", Conv::CallStatus);
const LineValue kLineSessionType =
    portStatusValue("Tr104LineSessionTypeSip", "pLineSessionType", Conv::SessionType);

struct TextMap {
    const char *from;
    const char *to;
};

const TextMap kRegStates[] = {
    {"N/A", "Initializing"},      {"reg-ok", "Up"},       {"reg-ing", "Registering"},
    {"unreg-ing", "Unregistering"}, {"unreg-ok", "Disabled"}, {"reg-fail", "Error"},
    {"unreg-fail", "Error"},
};

// Call texts the data model names otherwise; the rest pass unchanged.
const TextMap kCallStates[] = {
    {"Call Setuping", "Connecting"},
    {"Call Setup", "InCall"},
    {"Call Hold", "Hold"},
};

const TextCode kSessionTypes[] = {
    {"Idle", 0},          {"Detecting", 1},     {"Dial Timeout", 1},  {"Calling", 1},
    {"Call Failed", 1},   {"Call Setup", 1},    {"Call End", 1},      {"Call Hold", 1},
    {"Call Setuping", 1}, {"Terminate", 1},     {"Dialing", 1},       {"Ringing", 1},
    {"Fax Setup", 3},     {"Fax Calling", 3},   {"Fax Setuping", 3},
};

template <size_t N>
const char *mapText(const TextMap (&table)[N], const char *text) {
    for (const TextMap &row : table) {
        if (std::strcmp(row.from, text) == 0) {
            return row.to;
        }
    }
    return nullptr;
}

uint32_t wordAt(const Tr104SipLineRecord &rec, uint16_t offset) {
    uint32_t v;
    std::memcpy(&v, reinterpret_cast<const char *>(&rec) + offset, sizeof(v));
    return v;
}

const char *textAt(const Tr104SipLineRecord &rec, uint16_t offset) {
    return reinterpret_cast<const char *>(&rec) + offset;
}

// Port state code to the data model's server status; -1 leaves the caller's value alone.
int serverStatus(const Tr104SipLineRecord &rec) {
    const uint32_t code = rec.unPortState;
    if (code == 0) {
        return 0;
    }
    if ((code >= 3 && code <= 8) || code == 11) {
        return 2;
    }
    if (strncmp(rec.aRegState, "reg-ok", sizeof(rec.aRegState)) == 0) {
        return 1;
    }
    if (code == 12) {
        return 5;
    }
    return -1;
}

// Converts the record read for a get into the caller's value.
void convertGet(const LineValue &v, const Tr104SipLineRecord &rec, void *pValue) {
    char *text = static_cast<char *>(pValue);
    switch (v.conv) {
    case Conv::EnableText: {
        // The word's characters only, without a terminator: the caller's buffer is zeroed.
        const char *word = wordAt(rec, v.offset) != 0 ? "Enabled" : "Disabled";
        std::memcpy(text, word, std::strlen(word));
        break;
    }
    case Conv::Integer:
        putInt(pValue, static_cast<int>(wordAt(rec, v.offset)));
        break;
    case Conv::Text: copyFieldText(text, textAt(rec, v.offset), v.width); break;
    case Conv::RegStatus: {
        char state[sizeof(rec.aRegState)];
        copyFieldText(state, rec.aRegState, TR104_FIELD_ROOM(Tr104SipLineRecord, aRegState, aHookState));
        if (const char *mapped = mapText(kRegStates, state)) {
            std::strcpy(text, mapped);
        }
        break;
    }
    case Conv::ServerStatus:
        if (const int status = serverStatus(rec); status >= 0) {
            putInt(pValue, status);
        }
        break;
    case Conv::PortState:
        putInt(pValue, static_cast<int>(rec.unPortState & 0xFFu));
        break;
    case Conv::HookText:
        copyFieldText(text, rec.aHookState, TR104_FIELD_ROOM(Tr104SipLineRecord, aHookState, aCallState));
        break;
    case Conv::CallStatus:
        copyFieldText(text, rec.aCallState, TR104_FIELD_ROOM(Tr104SipLineRecord, aCallState, unProfileId));
        if (const char *mapped = mapText(kCallStates, text)) {
            std::strcpy(text, mapped);
        }
        break;
    case Conv::SessionType: {
        char state[sizeof(rec.aCallState)];
        copyFieldText(state, rec.aCallState, TR104_FIELD_ROOM(Tr104SipLineRecord, aCallState, unProfileId));
        const TextCode *row = findText(kSessionTypes, state);
        putInt(pValue, row != nullptr ? row->code : 0);
        break;
    }
    case Conv::Register:
        break;
    }
}

// Fills the record for a set; the command to send, or 0 after printing why the value is refused.
unsigned int convertSet(const LineValue &v, Tr104SipLineRecord &rec, const void *pValue) {
    char *field = reinterpret_cast<char *>(&rec) + v.offset;
    const char *text = static_cast<const char *>(pValue);
    switch (v.conv) {
    case Conv::EnableText: {
        static const TextCode kWords[] = {{"Enabled", 1}, {"Disabled", 0}};
        const TextCode *row = findText(kWords, text);
        if (row == nullptr) {
            say(v.sig.name, v.valueError);
            return 0;
        }
        rec.unEnable = static_cast<uint32_t>(row->code);
        return v.setCmd;
    }
    case Conv::Integer: {
        const uint32_t word = static_cast<uint32_t>(intValue(pValue));
        std::memcpy(field, &word, sizeof(word));
        return v.setCmd;
    }
    case Conv::Text: {
        const size_t len = std::strlen(text);
        if (v.tooLong == TooLong::Refuse && len > v.limit) {
            say(v.sig.name, v.valueError);
            return 0;
        }
        // A text without a length check runs on over the following fields as the voice
        // module expects it; it is bounded only by the end of the record.
        const size_t room = v.tooLong == TooLong::Cut ? v.limit : sizeof(rec) - v.offset - 1;
        copyBounded(field, text, room);
        return v.setCmd;
    }
    case Conv::Register:
        return intValue(pValue) == 1 ? REGISTER_LINE_ID : UNREGISTER_LINE_ID;
    default:
        return 0;
    }
}

const Signature kResetStatistics{"Tr104LineResetStatisticsFlagSip", "pLineResetStatisticsFlag", Locate::Line,
                                 Access::GetSet};

}  // namespace

int lineValue(const LineValue &v, int nFlag, void *pValue, int *nLocate) {
    if (const int rc = checkArguments(v.sig, nFlag, pValue, nLocate); rc != TR104_OK) {
        return rc;
    }
    const int line = lineOf(nLocate) == 0 ? 1 : lineOf(nLocate);
    Tr104SipLineRecord rec{};
    rec.unLine = static_cast<uint32_t>(line);
    if (nFlag == 0) {
        if (readRecord(v.sig.name, &rec, sizeof(rec), v.getCmd) != TR104_OK) {
            TR104_DEBUG_AS(v.sig.name, v.getError, line);
            return TR104_ERR_EXCHANGE;
        }
        convertGet(v, rec, pValue);
        return TR104_OK;
    }
    const unsigned int cmd = convertSet(v, rec, pValue);
    if (cmd == 0) {
        return TR104_ERR_PARAM;
    }
    if (sendRecord(v.sig.name, &rec, sizeof(rec), cmd) != TR104_OK) {
        say(v.sig.name, v.setError);
        return TR104_ERR_EXCHANGE;
    }
    return TR104_OK;
}

}  // namespace tr104::sip

using tr104::sip::lineValue;

extern "C" {
TR104_API int Tr104LineEnableSip(int nFlag, void *pValue, int *nLocate) {
    return lineValue(tr104::sip::kLineEnable, nFlag, pValue, nLocate);
}
TR104_API int Tr104LineRegisterSip(int nFlag, void *pValue, int *nLocate) {
    return lineValue(tr104::sip::kLineRegister, nFlag, pValue, nLocate);
}
TR104_API int Tr104LineDisplayNameSip(int nFlag, void *pValue, int *nLocate) {
    return lineValue(tr104::sip::kLineDisplayName, nFlag, pValue, nLocate);
}
TR104_API int Tr104LineHotlineNumSip(int nFlag, void *pValue, int *nLocate) {
    return lineValue(tr104::sip::kLineHotlineNum, nFlag, pValue, nLocate);
}
TR104_API int Tr104LineHotlineDelaySip(int nFlag, void *pValue, int *nLocate) {
    return lineValue(tr104::sip::kLineHotlineDelay, nFlag, pValue, nLocate);
}
TR104_API int Tr104LineJitterBufferModeSip(int nFlag, void *pValue, int *nLocate) {
    return lineValue(tr104::sip::kLineJitterMode, nFlag, pValue, nLocate);
}
TR104_API int Tr104LineMaxJitterBufferValueSip(int nFlag, void *pValue, int *nLocate) {
    return lineValue(tr104::sip::kLineMaxJitter, nFlag, pValue, nLocate);
}
TR104_API int Tr104LineMinJitterBufferValueSip(int nFlag, void *pValue, int *nLocate) {
    return lineValue(tr104::sip::kLineMinJitter, nFlag, pValue, nLocate);
}
TR104_API int Tr104LineRegStatusSip(int nFlag, void *pValue, int *nLocate) {
    return lineValue(tr104::sip::kLineRegStatus, nFlag, pValue, nLocate);
}
TR104_API int Tr104LineServerStatusSip(int nFlag, void *pValue, int *nLocate) {
    return lineValue(tr104::sip::kLineServerStatus, nFlag, pValue, nLocate);
}
TR104_API int Tr104PortStatusSip(int nFlag, void *pValue, int *nLocate) {
    return lineValue(tr104::sip::kPortStatus, nFlag, pValue, nLocate);
}
TR104_API int Tr104LineHookStatusSip(int nFlag, void *pValue, int *nLocate) {
    return lineValue(tr104::sip::kLineHookStatus, nFlag, pValue, nLocate);
}
TR104_API int Tr104LineCallStatusSip(int nFlag, void *pValue, int *nLocate) {
    return lineValue(tr104::sip::kLineCallStatus, nFlag, pValue, nLocate);
}
TR104_API int Tr104LineSessionTypeSip(int nFlag, void *pValue, int *nLocate) {
    return lineValue(tr104::sip::kLineSessionType, nFlag, pValue, nLocate);
}

// A get yields 0 without asking; a set of 1 resets the line's counters, any other value is
// reported and accepted.
TR104_API int Tr104LineResetStatisticsFlagSip(int nFlag, void *pValue, int *nLocate) {
    static const tr104::sip::LineReset kReset{tr104::sip::kResetStatistics, RESET_LINE_STATISTICS_ID, TR104_OK,
                                             "RESET_LINE_STATISTICS_ID msg snd failed.\n"};
    return tr104::sip::resetLineStatistics(kReset, nFlag, pValue, nLocate);
}
}
