// Line swap: which physical port a line uses.  Moving a line to the other port exchanges the
// two lines' subscriber data (directory number, authentication user name and password), read
// and written through the line identity handlers.
#include <strings.h>

#include <cstdio>

#include "tr104/sip/sip_internal.h"

// The line identity handlers live in their own unit; the swap binds to them by name when they
// are present and refuses to run when one is not.
extern "C" __attribute__((weak)) int Tr104LineTelNumSip(int nFlag, void *pValue, int *nLocate);
extern "C" __attribute__((weak)) int Tr104LineAuthUserNameSip(int nFlag, void *pValue, int *nLocate);
extern "C" __attribute__((weak)) int Tr104LineAuthPasswordSip(int nFlag, void *pValue, int *nLocate);

extern "C" {
TR104_API char gPhyReferenceList[2][TR104_PHY_REFERENCE_LEN] = {"1", "2"};
}

namespace tr104::sip {
namespace {

using IdentityHandler = int (*)(int, void *, int *);

// One piece of a line's identity, with the words its progress reports use.
struct IdentityField {
    IdentityHandler handler;
    const char *getWord;
    const char *setWord;
    const char *placeholder;  // "%d" the line: held while the other line takes the real value
};

// A line identity text: at most 65 characters and a terminator.
constexpr size_t kIdentityLen = 66;

const IdentityField kIdentity[] = {
    {Tr104LineTelNumSip, "number", "phone number", "#swap-line%d-number#"},
    {Tr104LineAuthUserNameSip, "auth user name", "auth user name", "#swap-line%d-user#"},
    {Tr104LineAuthPasswordSip, "auth password", "auth password", "#swap-line%d-password#"},
};

const Signature kPhyReference{"Tr104PhyReferenceListSip", "pPhyReferenceList", Locate::Line, Access::GetSet};

void report(int line, const char *verb, const char *word, int rc) {
    TR104_DEBUG_AS(kPhyReference.name, "Line %d %s %s %s.\r\n", line, verb, word, rc == 0 ? "success" : "failed");
}

int identityCall(const IdentityField &field, int nFlag, int line, char *value) {
    int locate[4] = {0, 1, line, 0};
    const int rc = field.handler(nFlag, value, locate);
    report(line, nFlag == 0 ? "get" : "set", nFlag == 0 ? field.getWord : field.setWord, rc);
    return rc;
}

// Exchanges the identities of line 1 and line 2.  A failed step is reported and the swap goes
// on; -1 only when the identity handlers are not there at all.
int swapLines() {
    for (const IdentityField &field : kIdentity) {
        if (field.handler == nullptr) {
            say(kPhyReference.name, "line identity handlers are not available.\n");
            return TR104_ERR_EXCHANGE;
        }
    }
    constexpr size_t kFields = sizeof(kIdentity) / sizeof(kIdentity[0]);
    char values[2][kFields][kIdentityLen] = {};
    for (int line = 1; line <= 2; ++line) {
        for (size_t f = 0; f < kFields; ++f) {
            identityCall(kIdentity[f], 0, line, values[line - 1][f]);
        }
    }
    for (int line = 1; line <= 2; ++line) {
        for (size_t f = 0; f < kFields; ++f) {
            char placeholder[kIdentityLen];
            std::snprintf(placeholder, sizeof(placeholder), kIdentity[f].placeholder, line);
            identityCall(kIdentity[f], 1, line, placeholder);
        }
    }
    for (int line = 1; line <= 2; ++line) {
        for (size_t f = 0; f < kFields; ++f) {
            identityCall(kIdentity[f], 1, line, values[2 - line][f]);
        }
    }
    return TR104_OK;
}

int phyReferenceList(int nFlag, void *pValue, int *nLocate) {
    if (const int rc = checkArguments(kPhyReference, nFlag, pValue, nLocate); rc != TR104_OK) {
        return rc;
    }
    const int line = lineOf(nLocate);
    char *text = static_cast<char *>(pValue);
    char *own = gPhyReferenceList[line - 1];
    if (nFlag == 0) {
        copyBounded(text, own, TR104_PHY_REFERENCE_LEN - 1);
        return TR104_OK;
    }
    if (strcasecmp(text, "1") != 0 && strcasecmp(text, "2") != 0) {
        TR104_DEBUG_AS(kPhyReference.name, "param error, pPhyReferenceList=%s\n", text);
        return TR104_ERR_PARAM;
    }
    if (strcasecmp(text, own) == 0) {
        return TR104_OK;
    }
    if (const int rc = swapLines(); rc != TR104_OK) {
        return rc;
    }
    // The two lines have exchanged ports.
    char *other = gPhyReferenceList[2 - line];
    copyBounded(other, own, TR104_PHY_REFERENCE_LEN - 1);
    copyBounded(own, text, TR104_PHY_REFERENCE_LEN - 1);
    return TR104_OK;
}

}  // namespace
}  // namespace tr104::sip

extern "C" TR104_API int Tr104PhyReferenceListSip(int nFlag, void *pValue, int *nLocate) {
    return tr104::sip::phyReferenceList(nFlag, pValue, nLocate);
}
