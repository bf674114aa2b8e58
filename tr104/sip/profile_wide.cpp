// Profile-wide values of a record that holds several of them: a get reads the record, a set
// sends the one value with a word naming it (a selector) or marking the others unchanged.
#include "tr104/sip/templates.h"

namespace tr104::sip {
namespace {

// Large enough for every such record.
constexpr size_t kLargestRecord = 64;

// The fax control mode by name.
const TextCode kPassThroughNames[] = {{"Force", 0}, {"Disable", 1}, {"Auto", 2}};

bool accepted(const ProfileWide &w, int value) {
    switch (w.accept) {
    case Accept::Any: return true;
    case Accept::Range: return inRange(value, w.low, w.high);
    case Accept::LowByte:
        // The low byte alone is tested: 266 passes as 10.
        return inRange(value & 0xFF, w.low, w.high);
    case Accept::VbdCodec: return value == 0 || value == 4 || value == 8 || value == 18 || value >= 255;
    }
    return false;
}

// The caller's value as the record's word; -2 after printing why it is refused.
int wordToSet(const ProfileWide &w, const void *pValue, int *word) {
    if (w.names != nullptr) {
        const char *text = static_cast<const char *>(pValue);
        const TextCode *row = findText(w.names, w.nameCount, text);
        if (row == nullptr) {
            TR104_DEBUG_AS(w.sig.name, w.rangeError, text);
            return TR104_ERR_PARAM;
        }
        *word = row->code;
        return TR104_OK;
    }
    const int value = intValue(pValue);
    if (!accepted(w, value)) {
        TR104_DEBUG_AS(w.sig.name, w.rangeError, value);
        return TR104_ERR_PARAM;
    }
    *word = value;
    return TR104_OK;
}

// The word read back in the data model's form.  A text with no name for the code is empty.
void storeGot(const ProfileWide &w, uint32_t word, void *pValue) {
    if (w.names != nullptr) {
        const TextCode *row = findCode(w.names, w.nameCount, static_cast<int>(word));
        std::strcpy(static_cast<char *>(pValue), row != nullptr ? row->text : "");
        return;
    }
    putInt(pValue, static_cast<int>(word / w.scale));
}

}  // namespace

int profileWide(const ProfileWide &w, int nFlag, void *pValue, int *nLocate) {
    if (const int rc = checkArguments(w.sig, nFlag, pValue, nLocate); rc != TR104_OK) {
        return rc;
    }
    char rec[kLargestRecord] = {};
    uint32_t word = 0;
    if (nFlag == 0) {
        if (readRecord(w.sig.name, rec, w.recordLen, w.getCmd) != TR104_OK) {
            say(w.sig.name, w.getError);
            return TR104_ERR_EXCHANGE;
        }
        std::memcpy(&word, rec + w.offset, sizeof(word));
        storeGot(w, word, pValue);
        return TR104_OK;
    }
    int value = 0;
    if (const int rc = wordToSet(w, pValue, &value); rc != TR104_OK) {
        return rc;
    }
    if (w.marker.width == 2) {
        const uint16_t mark = static_cast<uint16_t>(w.marker.value);
        std::memcpy(rec + w.marker.offset, &mark, sizeof(mark));
    } else {
        std::memcpy(rec + w.marker.offset, &w.marker.value, sizeof(w.marker.value));
    }
    word = static_cast<uint32_t>(value) * w.scale;
    std::memcpy(rec + w.offset, &word, sizeof(word));
    if (sendRecord(w.sig.name, rec, w.recordLen, w.setCmd) != TR104_OK) {
        say(w.sig.name, w.setError);
        return TR104_ERR_EXCHANGE;
    }
    return TR104_OK;
}

}  // namespace tr104::sip

// The descriptors and handlers of the catalogue's ProfileWide rows (tr104/catalogue/sip.toml):
// the fax mode and voice-band-data records, the signalling and inter-digit timers.
#include "tr104/catalogue/sip_ProfileWide.inc"
