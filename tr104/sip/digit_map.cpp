// The profile's digit map (text, match mode, on/off switch) and the read-only profile values.
#include <algorithm>

#include "tr104/sip/sip_internal.h"

namespace tr104::sip {
namespace {

// A value the voice module reports and the data model cannot change: a 4-byte word or a text,
// read with an empty request (the catalogue's ProfileRead rows).
struct ProfileRead {
    Signature sig;
    uint16_t cmd;
    bool text;
    const char *error;
};

int profileRead(const ProfileRead &r, int nFlag, void *pValue, int *nLocate) {
    if (const int rc = checkArguments(r.sig, nFlag, pValue, nLocate); rc != TR104_OK) {
        return rc;
    }
    int rc;
    if (r.text) {
        rc = readText(r.sig.name, static_cast<char *>(pValue), TR104_WAN_NAME_LEN, r.cmd);
    } else {
        int32_t word = 0;
        rc = readRecord(r.sig.name, &word, sizeof(word), r.cmd);
        if (rc == TR104_OK) {
            putInt(pValue, word);
        }
    }
    if (rc != TR104_OK) {
        say(r.sig.name, r.error);
    }
    return rc;
}

// The on/off switch reads back through its own read-only value.
const ProfileRead kDigitMapEnableRead{
    {"Tr104ProfileDigitMapEnableSip", "pDigitMapEnable", Locate::None, Access::GetSet},
    GET_DIGITMAP_ENABLE_ID,
    false,
    "get digitmap enable error.\n"};

int digitMapEnable(int nFlag, void *pValue, int *nLocate) {
    const ProfileRead &r = kDigitMapEnableRead;
    if (nFlag != 1) {
        return profileRead(r, nFlag, pValue, nLocate);
    }
    if (const int rc = checkArguments(r.sig, nFlag, pValue, nLocate); rc != TR104_OK) {
        return rc;
    }
    const int value = intValue(pValue);
    if (value != 0 && value != 1) {
        TR104_DEBUG_AS(r.sig.name, "param error, pDigitMapEnable[%d].\n", value);
        return TR104_ERR_EXCHANGE;
    }
    const bool on = value == 1;
    if (sendRecord(r.sig.name, nullptr, 0, on ? ENABLE_DIGITMAP_ID : DISABLE_DIGITMAP_ID) != TR104_OK) {
        say(r.sig.name, on ? "ENABLE_DIGITMAP_ID msg snd failed.\n" : "DISABLE_DIGITMAP_ID msg snd failed.\n");
        return TR104_ERR_EXCHANGE;
    }
    return TR104_OK;
}

const Signature kMatchMode{"Tr104ProfileDigitMapMatchModeSip", "pDigitMapMatchMode", Locate::None, Access::GetSet};

int digitMapMatchMode(int nFlag, void *pValue, int *nLocate) {
    if (const int rc = checkArguments(kMatchMode, nFlag, pValue, nLocate); rc != TR104_OK) {
        return rc;
    }
    char *text = static_cast<char *>(pValue);
    Tr104SipMatchModeRecord rec{};
    if (nFlag == 0) {
        if (readRecord(kMatchMode.name, &rec, sizeof(rec), GET_DigitMapMatchMode_ID) != TR104_OK) {
            say(kMatchMode.name, "get digitmap match mode error.\n");
            return TR104_ERR_EXCHANGE;
        }
        std::strcpy(text, rec.ucMode != 0 ? "Min" : "Max");
        return TR104_OK;
    }
    static const TextCode kModes[] = {{"Max", 0}, {"Min", 1}};
    const TextCode *row = findText(kModes, text);
    if (row == nullptr) {
        say(kMatchMode.name, "param error.\n");
        return TR104_ERR_PARAM;
    }
    rec.ucMode = static_cast<uint8_t>(row->code);
    if (sendRecord(kMatchMode.name, &rec, sizeof(rec), SET_DigitMapMatchMode_ID) != TR104_OK) {
        say(kMatchMode.name, "SET_DigitMapMatchMode_ID msg snd failed.\n");
        return TR104_ERR_EXCHANGE;
    }
    return TR104_OK;
}

// The voice module writes the keys '*' and '#' of a digit map as 'E' and 'F'.
void replaceKeys(char *text, size_t max, char star, char hash, char newStar, char newHash) {
    for (size_t i = 0; i < max && text[i] != '\0'; ++i) {
        if (text[i] == star) {
            text[i] = newStar;
        } else if (text[i] == hash) {
            text[i] = newHash;
        }
    }
}

const Signature kDigitMap{"Tr104ProfileDigitMapStringSip", "pDigitMapString", Locate::None, Access::GetSet};

int digitMapString(int nFlag, void *pValue, int *nLocate) {
    if (const int rc = checkArguments(kDigitMap, nFlag, pValue, nLocate); rc != TR104_OK) {
        return rc;
    }
    char *text = static_cast<char *>(pValue);
    if (nFlag == 0) {
        if (readText(kDigitMap.name, text, TR104_DIGITMAP_MAX_LEN, GET_DIGITMAP_ID) != TR104_OK) {
            say(kDigitMap.name, "get digitmap string failed.\n");
            return TR104_ERR_EXCHANGE;
        }
        replaceKeys(text, TR104_DIGITMAP_MAX_LEN, 'E', 'F', '*', '#');
        return TR104_OK;
    }
    // The caller's own text is rewritten in the voice module's letters.
    const size_t len = std::strlen(text);
    replaceKeys(text, len, '*', '#', 'E', 'F');
    // Chunks 0 .. len / 192: a text whose length is a multiple of 192 (the empty text too)
    // ends with an empty chunk.
    for (size_t chunk = 0; chunk <= len / TR104_DIGITMAP_CHUNK_CHARS; ++chunk) {
        Tr104SipDigitMapChunk rec{};
        rec.ucChunk = static_cast<uint8_t>(chunk);
        const size_t start = chunk * TR104_DIGITMAP_CHUNK_CHARS;
        std::memcpy(rec.aText, text + start, std::min<size_t>(len - start, TR104_DIGITMAP_CHUNK_CHARS));
        if (sendRecord(kDigitMap.name, &rec, sizeof(rec), SET_DIGITMAP_ID) != TR104_OK) {
            say(kDigitMap.name, "SET_DIGITMAP_ID msg snd failed.\n");
            return TR104_ERR_EXCHANGE;
        }
    }
    // Writing a digit map always switches it on.
    if (sendRecord(kDigitMap.name, nullptr, 0, ENABLE_DIGITMAP_ID) != TR104_OK) {
        say(kDigitMap.name, "ENABLE_DIGITMAP_ID msg snd failed.\n");
        return TR104_ERR_EXCHANGE;
    }
    return TR104_OK;
}

}  // namespace
}  // namespace tr104::sip

extern "C" {
TR104_API int Tr104ProfileDigitMapEnableSip(int nFlag, void *pValue, int *nLocate) {
    return tr104::sip::digitMapEnable(nFlag, pValue, nLocate);
}
TR104_API int Tr104ProfileDigitMapMatchModeSip(int nFlag, void *pValue, int *nLocate) {
    return tr104::sip::digitMapMatchMode(nFlag, pValue, nLocate);
}
TR104_API int Tr104ProfileDigitMapStringSip(int nFlag, void *pValue, int *nLocate) {
    return tr104::sip::digitMapString(nFlag, pValue, nLocate);
}
}

// The descriptors and handlers of the catalogue's ProfileRead rows (tr104/catalogue/sip.toml).
#include "tr104/catalogue/sip_ProfileRead.inc"
