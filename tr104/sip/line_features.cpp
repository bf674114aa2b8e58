// Line features kept in the line feature record: caller ID, call waiting, three-way calling
// (and the maximum number of sessions it implies), plus the caller ID format.
#include "tr104/sip/sip_internal.h"

namespace tr104::sip {
namespace {

enum class FeatureConv : uint8_t {
    Byte,  // the value's low byte, no check
    MaxSessions,  // 1 or 2 sessions <-> conference flag clear or set
    CallerIdFlag,  // 1 <-> FSK, anything else off
    CallerIdMode,  // "FSK", "DTMF" (and "DISABLED" on a get)
};

struct LineFeature {
    Signature sig;
    uint16_t getCmd;
    uint16_t setCmd;
    uint8_t offset;  // byte in the line feature record
    FeatureConv conv;
    const char *getError;  // "%d" the line
    const char *setError;  // "%d" the line
};

// Caller ID mode codes as the data model names them.  "DISABLED" is only ever read: switching
// caller ID off goes through the caller ID flag.
const TextCode kModeNames[] = {{"DISABLED", 0}, {"FSK", 1}, {"FSK", 2}, {"DTMF", 3}};
const TextCode kModeWrites[] = {{"FSK", 1}, {"DTMF", 3}};

uint8_t &byteOf(Tr104SipLineFeatureRecord &rec, uint8_t offset) { return reinterpret_cast<uint8_t *>(&rec)[offset]; }

// The caller's value from the stored byte: 0, or -1 for a code the data model has no word for.
int convertGet(const LineFeature &f, uint8_t stored, void *pValue) {
    switch (f.conv) {
    case FeatureConv::Byte: putInt(pValue, stored); return TR104_OK;
    case FeatureConv::MaxSessions: putInt(pValue, stored != 0 ? 2 : 1); return TR104_OK;
    case FeatureConv::CallerIdFlag:
        if (stored > 3) {
            putInt(pValue, 0);
            say(f.sig.name, "unknown caller id mode.\n");
            return TR104_ERR_EXCHANGE;
        }
        putInt(pValue, stored != 0 ? 1 : 0);
        return TR104_OK;
    case FeatureConv::CallerIdMode: {
        const TextCode *row = findCode(kModeNames, stored);
        std::strcpy(static_cast<char *>(pValue), row != nullptr ? row->text : "FSK");
        return row != nullptr ? TR104_OK : TR104_ERR_EXCHANGE;
    }
    }
    return TR104_ERR_EXCHANGE;
}

// The byte to store for a set, or -2 after printing why the value is refused.
int convertSet(const LineFeature &f, int line, const void *pValue) {
    switch (f.conv) {
    case FeatureConv::Byte: return intValue(pValue) & 0xFF;
    case FeatureConv::MaxSessions: {
        const int sessions = intValue(pValue);
        if (sessions != 1 && sessions != 2) {
            TR104_DEBUG_AS(f.sig.name, "param error, line[%d] max sessions is[%d] excess to 2\n", line, sessions);
            return TR104_ERR_PARAM;
        }
        return sessions == 2 ? 1 : 0;
    }
    case FeatureConv::CallerIdFlag: return intValue(pValue) == 1 ? 1 : 0;
    case FeatureConv::CallerIdMode: {
        const TextCode *row = findText(kModeWrites, static_cast<const char *>(pValue));
        if (row == nullptr) {
            TR104_DEBUG_AS(f.sig.name, "param error, pCallerIdMode[%s]\n", static_cast<const char *>(pValue));
            return TR104_ERR_PARAM;
        }
        return row->code;
    }
    }
    return TR104_ERR_PARAM;
}

int lineFeature(const LineFeature &f, int nFlag, void *pValue, int *nLocate) {
    if (const int rc = checkArguments(f.sig, nFlag, pValue, nLocate); rc != TR104_OK) {
        return rc;
    }
    const int line = lineOf(nLocate);
    Tr104SipLineFeatureRecord rec{};
    rec.unLine = static_cast<uint32_t>(line);
    if (nFlag == 0) {
        if (readRecord(f.sig.name, &rec, sizeof(rec), f.getCmd) != TR104_OK) {
            TR104_DEBUG_AS(f.sig.name, f.getError, line);
            return TR104_ERR_EXCHANGE;
        }
        return convertGet(f, byteOf(rec, f.offset), pValue);
    }
    const int stored = convertSet(f, line, pValue);
    if (stored < 0) {
        return stored;
    }
    byteOf(rec, f.offset) = static_cast<uint8_t>(stored);
    if (sendRecord(f.sig.name, &rec, sizeof(rec), f.setCmd) != TR104_OK) {
        TR104_DEBUG_AS(f.sig.name, f.setError, line);
        return TR104_ERR_EXCHANGE;
    }
    return TR104_OK;
}

// The caller ID format travels as the value itself, without a record.
const Signature kCallerIdFormat{"Tr104CallerIdFormatSip", "pCallerIdFormat", Locate::None, Access::GetSet,
                                "Tr104CallerIdFormatSip param error, nFlag[%d]\n"};

int callerIdFormat(int nFlag, void *pValue, int *nLocate) {
    if (const int rc = checkArguments(kCallerIdFormat, nFlag, pValue, nLocate); rc != TR104_OK) {
        return rc;
    }
    int32_t value = 0;
    if (nFlag == 0) {
        if (readRecord(kCallerIdFormat.name, &value, sizeof(value), GET_CALLERID_FORMAT_ID) != TR104_OK) {
            say(kCallerIdFormat.name, "get caller id format error.\n");
            return TR104_ERR_EXCHANGE;
        }
        putInt(pValue, value);
        return TR104_OK;
    }
    value = intValue(pValue);
    if (sendRecord(kCallerIdFormat.name, &value, sizeof(value), SET_CALLERID_FORMAT_ID) != TR104_OK) {
        say(kCallerIdFormat.name, "SET_CALLERID_FORMAT_ID msg snd failed.\n");
        return TR104_ERR_EXCHANGE;
    }
    return TR104_OK;
}

}  // namespace
}  // namespace tr104::sip

extern "C" {
TR104_API int Tr104CallerIdFormatSip(int nFlag, void *pValue, int *nLocate) {
    return tr104::sip::callerIdFormat(nFlag, pValue, nLocate);
}
}

#include "tr104/catalogue/sip_LineFeature.inc"
