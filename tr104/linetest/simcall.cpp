// The simulated call test: the voice module places a call from a port (caller test) or waits
// for one (called test) and reports how far the call got; and the dial-confirm digit.
#include <cstdio>
#include <iterator>

#include "tr104/linetest/linetest_internal.h"

TR104_API int32_t gSmultTestType[TR104_LINETEST_PORTS];
TR104_API char gSmultCalledNum[TR104_LINETEST_PORTS][TR104_LINETEST_TEXT_LEN];
TR104_API int32_t gSmultTimeout[TR104_LINETEST_PORTS];
// The table order does not follow the codes: caller fail code 2 takes the first entry.
const char aCallerFailReason[5][32] = {"NoDailTone", "OffhookRelease", "DialingRelease", "AfterDialRelease",
                                       "NoAnswer"};
const char aCalledFailReason[3][32] = {"NoIncomingCall", "OffhookRelease", "NoAnswer"};

namespace tr104::linetest {
namespace {

const TextCode kCallerStatus[] = {{"Idle", 1},       {"Off-hook", 2},     {"Dialtone", 3},  {"Receiving", 4},
                                  {"ReceiveEnd", 5}, {"Ringing-back", 6}, {"Connected", 7}, {"Testend", 10}};
const TextCode kCalledStatus[] = {{"Idle", 1},      {"Off-hook", 2}, {"Ringing-back", 3},
                                  {"Connected", 4}, {"Testend", 5},  {"Testend", 6}};
// Fail code -> entry of the tables above.
const TextCode kCallerFail[] = {{aCallerFailReason[1], 1}, {aCallerFailReason[0], 2}, {aCallerFailReason[2], 3},
                                {aCallerFailReason[3], 4}, {aCallerFailReason[4], 5}, {aCallerFailReason[4], 6},
                                {aCallerFailReason[4], 7}};
const TextCode kCalledFail[] = {{aCalledFailReason[0], 1}, {aCalledFailReason[1], 2}, {aCalledFailReason[2], 3}};

const char kQueryFailed[] = "get port[%d] Smult conclusion failed.\n";

const char *textOf(const TextCode *table, size_t count, uint32_t code) {
    const TextCode *t = findCode(table, count, static_cast<int>(code));
    return t != nullptr ? t->text : "";
}

// Queries the port's block; the failure message is the caller's.
bool query(int port, Tr104SmultParam *block) {
    *block = Tr104SmultParam{};
    block->unPort = static_cast<uint32_t>(port);
    return getSmultParam(block) == TR104_OK;
}

// A handler whose answer comes from the port's query block.
struct Answer {
    const char *name;
    const char *valueName;
    // Writes the value from the block; returns the text or number it printed.
    void (*put)(const char *name, int port, const Tr104SmultParam &block, void *pValue);
};

int answer(const Answer &a, int nFlag, void *pValue, int *nLocate) {
    const int port = checkedPort({a.name, a.valueName, Locate::Port, Access::GetOnly}, nFlag, pValue, nLocate);
    if (port < 0) {
        return port;
    }
    Tr104SmultParam block;
    if (!query(port, &block)) {
        TR104_DEBUG_AS(a.name, kQueryFailed, port);
        return TR104_ERR_EXCHANGE;
    }
    a.put(a.name, port, block, pValue);
    return TR104_OK;
}

const char *statusOf(int port, const Tr104SmultParam &block) {
    switch (gSmultTestType[port - 1]) {
    case TR104_SMULT_CALLED: return textOf(kCalledStatus, std::size(kCalledStatus), block.unCalledStatus);
    case TR104_SMULT_CALLER: return textOf(kCallerStatus, std::size(kCallerStatus), block.unCallerStatus);
    default: return "Testend";
    }
}

const Answer kStatus{"Tr104SmultStatus", "pSmultStatus",
                     [](const char *name, int port, const Tr104SmultParam &b, void *v) {
                         const char *text = statusOf(port, b);
                         putBare(v, text);
                         TR104_DEBUG_AS(name, "nFlag[%d] nLocate[1]=%d smultstatus[%s].\n", 0, port, text);
                     }};
const Answer kConclusion{"Tr104SmultConclusion", "pConclusion",
                         [](const char *name, int port, const Tr104SmultParam &b, void *v) {
                             const char *text = b.unConclusion == 1 || b.unConclusion == 3 ? "Success" : "Fail";
                             putBare(v, text);
                             TR104_DEBUG_AS(name, "get port[%d] Smult conclusion [%s].\n", port, text);
                         }};
// A fail reason, bounded at 32 bytes; an unknown code leaves the caller's buffer untouched.
void putReason(const char *name, int port, const char *text, void *pValue, const char *done) {
    if (*text != '\0') {
        std::strncpy(static_cast<char *>(pValue), text, 32);
    }
    TR104_DEBUG_AS(name, done, port, text);
}

const Answer kCallerFailReason{
    "Tr104SmultCallerFailReason", "pFailReason", [](const char *name, int port, const Tr104SmultParam &b, void *v) {
        putReason(name, port, textOf(kCallerFail, std::size(kCallerFail), b.unCallerFailCode), v,
                  "get port[%d] Smult caller fail reason [%s].\n");
    }};
const Answer kCalledFailReason{
    "Tr104SmultCalledFailReason", "pFailReason", [](const char *name, int port, const Tr104SmultParam &b, void *v) {
        putReason(name, port, textOf(kCalledFail, std::size(kCalledFail), b.unCalledFailCode), v,
                  "get port[%d] Smult called fail reason [%s].\n");
    }};
// The test type comes from port 1's entry whatever port is asked; the block is the port's own.
const Answer kFailedRspCode{
    "Tr104SmultFailedRspCode", "pFailedRspCode", [](const char *name, int port, const Tr104SmultParam &b, void *v) {
        const int type = gSmultTestType[0];
        if (type == TR104_SMULT_CALLED || type == TR104_SMULT_CALLED_STOPPED) {
            putInt(v, static_cast<int>(b.unCalledFailCode));
        } else if (type == TR104_SMULT_CALLER || type == TR104_SMULT_CALLER_STOPPED) {
            putInt(v, static_cast<int>(b.unCallerFailCode));
        } else {
            return;
        }
        TR104_DEBUG_AS(name, "get port[%d] Smult fail response code [%d].\n", port, core::intValue(v));
    }};

// ---- Dial confirm ------------------------------------------------------------------------------

struct Confirm {
    const char *name;
    const char *valueName;
    uint32_t selector;
    Access access;
    const char *getError;
    const char *setError;
};
const Confirm kConfirmEnable{"Tr104SmultDialConfirmEnable",      "pDialConfirmEnable",
                             TR104_DIAL_CONFIRM_ENABLE,          Access::GetSet,
                             "get dial confirm enable error \n", "config dial confirm enable msg snd failed.\n"};
const Confirm kConfirmNum{"Tr104SmultDialConfirmNum",      "pDialConfirmNum",
                          TR104_DIAL_CONFIRM_DIGIT,        Access::GetSet,
                          "get dial confirm num error \n", "config dial confirm num msg snd failed.\n"};
const Confirm kConfirmResult{"Tr104SmultDialConfirmResult",      "pDialConfirmResult",
                             TR104_DIAL_CONFIRM_ENABLE,          Access::GetOnly,
                             "get dial confirm result error \n", nullptr};

bool confirmDigit(const char *text) {
    return text[0] != '\0' && text[1] == '\0' && std::strchr("0123456789*#", text[0]) != nullptr;
}

int dialConfirm(const Confirm &c, int nFlag, void *pValue, int *nLocate) {
    const int rc = checkArguments({c.name, c.valueName, Locate::Port, c.access}, nFlag, pValue, nLocate);
    if (rc != TR104_OK) {
        return rc;
    }
    Tr104DialConfirmRecord rec{};
    rec.unSelector = c.selector;
    rec.unPort = static_cast<uint32_t>(portOf(nLocate));
    if (nFlag == 0) {
        if (readRecord(c.name, &rec, sizeof(rec), GET_DIAL_CONFIRM_ID) != TR104_OK) {
            say(c.name, c.getError);
            return TR104_ERR_EXCHANGE;
        }
        if (&c == &kConfirmEnable) {
            putInt(pValue, static_cast<int>(rec.unEnable));
            TR104_DEBUG_AS(c.name, "get dial confirm enable[%d]\n", static_cast<int>(rec.unEnable));
        } else if (&c == &kConfirmNum) {
            const char digit[2] = {rec.cDigit, '\0'};
            std::memcpy(pValue, digit, sizeof(digit));
            TR104_DEBUG_AS(c.name, "get dial confirm num[%s]\n", digit);
        } else {
            const char *text = rec.unResult == 1 ? "Success" : "Fail";
            putBare(pValue, text);
            TR104_DEBUG_AS(c.name, "get dial confirm result[%s]\n", text);
        }
        return TR104_OK;
    }
    if (&c == &kConfirmEnable) {
        rec.unEnable = static_cast<uint32_t>(intValue(pValue));
    } else {
        const char *text = static_cast<const char *>(pValue);
        if (!confirmDigit(text)) {
            TR104_DEBUG_AS(c.name, "param error, nFlag[%d]\n", 1);
            return TR104_ERR_PARAM;
        }
        rec.cDigit = text[0];
    }
    if (sendRecord(c.name, &rec, sizeof(rec), SET_DIAL_CONFIRM_ID) != TR104_OK) {
        say(c.name, c.setError);
        return TR104_ERR_EXCHANGE;
    }
    return TR104_OK;
}

}  // namespace

const char *smultStatusText(const char *name, int port) {
    Tr104SmultParam block;
    if (!query(port, &block)) {
        TR104_DEBUG_AS(name, kQueryFailed, port);
        return nullptr;
    }
    return statusOf(port, block);
}

}  // namespace tr104::linetest

using namespace tr104::linetest;

TR104_API int setSmultParam(int nPortNum) {
    if (nPortNum != 1 && nPortNum != 2) {
        TR104_DEBUG("param error, nPortNum=%d\n", nPortNum);
        return TR104_ERR_PARAM;
    }
    Tr104SmultParam block{};
    block.unPort = static_cast<uint32_t>(nPortNum);
    block.unTestType = static_cast<uint32_t>(gSmultTestType[nPortNum - 1]);
    if (gSmultTestType[nPortNum - 1] == TR104_SMULT_CALLER) {
        const char *number = gSmultCalledNum[nPortNum - 1];
        if (number[0] == '\0') {
            say(__func__, "no call num\n");
            return TR104_ERR_EXCHANGE;
        }
        std::memcpy(block.aCalledNum, number, strnlen(number, TR104_LINETEST_TEXT_LEN));
    }
    // No timeout means the voice module's usual minute.
    const int32_t timeout = gSmultTimeout[nPortNum - 1];
    block.unTimeout = static_cast<uint32_t>(timeout == 0 ? 60 : timeout);
    if (sendRecord(__func__, &block, sizeof(block), SET_SMULT_TEST_ID) != TR104_OK) {
        say(__func__, "SET_FAX_MODE_ID msg snd failed.\n");
        return TR104_ERR_EXCHANGE;
    }
    return TR104_OK;
}

TR104_API int getSmultParam(Tr104SmultParam *pSultParam) {
    if (pSultParam == nullptr) {
        say(__func__, "param error, pSultParam is null\n");
        return TR104_ERR_PARAM;
    }
    // The port picks the entry of the test type: only ports 1 and 2 have one.
    const uint32_t port = pSultParam->unPort;
    if (port != 1 && port != 2) {
        TR104_DEBUG("param error, nPortNum=%d\n", static_cast<int>(port));
        return TR104_ERR_PARAM;
    }
    switch (gSmultTestType[port - 1]) {
    case TR104_SMULT_CALLED:
    case TR104_SMULT_CALLED_STOPPED: pSultParam->unTestType = TR104_SMULT_QUERY_CALLED; break;
    case TR104_SMULT_CALLER:
    case TR104_SMULT_CALLER_STOPPED: pSultParam->unTestType = TR104_SMULT_QUERY_CALLER; break;
    default: pSultParam->unTestType = 0; break;
    }
    if (readRecord(__func__, pSultParam, sizeof(*pSultParam), GET_SMULT_TEST_ID) != TR104_OK) {
        TR104_DEBUG("get port[%d] Smult status failed.\n", static_cast<int>(port));
        return TR104_ERR_EXCHANGE;
    }
    return TR104_OK;
}

TR104_API int Tr104SmultTestType(int nFlag, void *pValue, int *nLocate) {
    const int port =
        checkedPort({__func__, "pTestType", Locate::PortNamedLine, Access::GetSet}, nFlag, pValue, nLocate);
    if (port < 0) {
        return port;
    }
    int32_t &type = gSmultTestType[port - 1];
    if (nFlag == 0) {
        const char *text = type == TR104_SMULT_CALLED ? "Called" : type == TR104_SMULT_CALLER ? "Caller" : "None";
        putBare(pValue, text);
        TR104_DEBUG("get  line[%d]  Smult Test Type[%s]\n", port, text);
        return TR104_OK;
    }
    const char *text = static_cast<const char *>(pValue);
    if (std::strcmp(text, "Called") == 0) {
        type = TR104_SMULT_CALLED;
    } else if (std::strcmp(text, "Caller") == 0) {
        type = TR104_SMULT_CALLER;
    } else if (std::strcmp(text, "None") == 0) {
        type = type == TR104_SMULT_CALLED ? TR104_SMULT_CALLED_STOPPED : TR104_SMULT_CALLER_STOPPED;
    } else {
        TR104_DEBUG("Smult Test Type error[%s].\n", text);
        return TR104_ERR_PARAM;
    }
    return TR104_OK;
}

TR104_API int Tr104SmultCalledNum(int nFlag, void *pValue, int *nLocate) {
    const int rc = checkArguments({__func__, "pTelNum", Locate::Port, Access::GetSet}, nFlag, pValue, nLocate);
    if (rc != TR104_OK) {
        return rc;
    }
    char *entry = gSmultCalledNum[slotOf(nLocate)];
    if (nFlag == 0) {
        // At most 32 characters; a 32-character number has no terminator in the entry either.
        std::strncpy(static_cast<char *>(pValue), entry, TR104_LINETEST_TEXT_LEN);
        TR104_DEBUG("get  line[%d]  pCalledNum[%.32s], \n", portOf(nLocate), entry);
        return TR104_OK;
    }
    // A longer number is cut at 32 characters.
    std::memset(entry, 0, TR104_LINETEST_TEXT_LEN);
    std::strncpy(entry, static_cast<const char *>(pValue), TR104_LINETEST_TEXT_LEN);
    return TR104_OK;
}

TR104_API int Tr104SmultStatus(int nFlag, void *pValue, int *nLocate) {
    return answer(kStatus, nFlag, pValue, nLocate);
}
TR104_API int Tr104SmultConclusion(int nFlag, void *pValue, int *nLocate) {
    return answer(kConclusion, nFlag, pValue, nLocate);
}
TR104_API int Tr104SmultCallerFailReason(int nFlag, void *pValue, int *nLocate) {
    return answer(kCallerFailReason, nFlag, pValue, nLocate);
}
TR104_API int Tr104SmultCalledFailReason(int nFlag, void *pValue, int *nLocate) {
    return answer(kCalledFailReason, nFlag, pValue, nLocate);
}
TR104_API int Tr104SmultFailedRspCode(int nFlag, void *pValue, int *nLocate) {
    return answer(kFailedRspCode, nFlag, pValue, nLocate);
}
TR104_API int Tr104SmultDialConfirmEnable(int nFlag, void *pValue, int *nLocate) {
    return dialConfirm(kConfirmEnable, nFlag, pValue, nLocate);
}
TR104_API int Tr104SmultDialConfirmNum(int nFlag, void *pValue, int *nLocate) {
    return dialConfirm(kConfirmNum, nFlag, pValue, nLocate);
}
TR104_API int Tr104SmultDialConfirmResult(int nFlag, void *pValue, int *nLocate) {
    return dialConfirm(kConfirmResult, nFlag, pValue, nLocate);
}
