// Values kept in the line record: line enable and registration, display name, hotline,
// jitter buffer, and the conversions of the port status.  Each handler is a descriptor (the
// catalogue's LineValue rows); one body reads or writes the record and converts the value.
#include "tr104/sip/templates.h"

namespace tr104::sip {
namespace {

using Conv = LineConv;

// The longest hotline number a set accepts, and the part of a jitter-buffer mode a set keeps:
// the field less its terminator.
constexpr uint16_t kHotlineNumLimit = sizeof(Tr104SipLineRecord::aHotlineNum) - 1;
constexpr uint16_t kJitterModeKept = sizeof(Tr104SipLineRecord::aJitterMode) - 1;

struct TextMap {
    const char *from;
    const char *to;
};

const TextMap kRegStates[] = {
    {"N/A", "Initializing"},  {"reg-ok", "Up"},      {"reg-ing", "Registering"}, {"unreg-ing", "Unregistering"},
    {"unreg-ok", "Disabled"}, {"reg-fail", "Error"}, {"unreg-fail", "Error"},
};

// Call texts the data model names otherwise; the rest pass unchanged.
const TextMap kCallStates[] = {
    {"Call Setuping", "Connecting"},
    {"Call Setup", "InCall"},
    {"Call Hold", "Hold"},
};

const TextCode kSessionTypes[] = {
    {"Idle", 0},       {"Detecting", 1}, {"Dial Timeout", 1}, {"Calling", 1},       {"Call Failed", 1},
    {"Call Setup", 1}, {"Call End", 1},  {"Call Hold", 1},    {"Call Setuping", 1}, {"Terminate", 1},
    {"Dialing", 1},    {"Ringing", 1},   {"Fax Setup", 3},    {"Fax Calling", 3},   {"Fax Setuping", 3},
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
    case Conv::Integer: putInt(pValue, static_cast<int>(wordAt(rec, v.offset))); break;
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
    case Conv::PortState: putInt(pValue, static_cast<int>(rec.unPortState & 0xFFu)); break;
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
    case Conv::Register: break;
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
    case Conv::Register: return intValue(pValue) == 1 ? REGISTER_LINE_ID : UNREGISTER_LINE_ID;
    default: return 0;
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

extern "C" {
// A get yields 0 without asking; a set of 1 resets the line's counters, any other value is
// reported and accepted.
TR104_API int Tr104LineResetStatisticsFlagSip(int nFlag, void *pValue, int *nLocate) {
    static const tr104::sip::LineReset kReset{tr104::sip::kResetStatistics, RESET_LINE_STATISTICS_ID, TR104_OK,
                                              "RESET_LINE_STATISTICS_ID msg snd failed.\n"};
    return tr104::sip::resetLineStatistics(kReset, nFlag, pValue, nLocate);
}
}

// The descriptors and handlers of the catalogue's LineValue rows (tr104/catalogue/sip.toml).
#include "tr104/catalogue/sip_LineValue.inc"
