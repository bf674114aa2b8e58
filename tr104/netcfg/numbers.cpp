// The POS and IPT number tables of the voice module (ten numbers of up to 20 characters, each
// with a one-character type), the LED signalling standard and the RTP DSCP mark's dispatch.
#include "tr104/netcfg/netcfg_internal.h"
#include "tr104/protocol.h"

// The SIP variant of the RTP DSCP mark belongs to a process that provides it.
extern "C" __attribute__((weak)) int Tr104RtpDSCPMarkSip(int nFlag, void *pValue);

namespace tr104::netcfg {
namespace {

struct NumberTable {
    const char *name;
    const char *numberName;  // "pPosNum": the argument in messages
    const char *typeName;
    const char *what;  // "pos" / "ipt" in the get messages
    uint16_t getCmd, addCmd, deleteCmd;
    int (*check)(const char *);
    const char *addFailed;
    const char *deleteFailed;
};

bool numberChar(char c) {
    return (c >= '0' && c <= '9') || c == '*' || c == '#' || (c >= 'A' && c <= 'D') || (c >= 'a' && c <= 'd');
}

int checkNumber(const char *caller, const char *num, const char *tooLong, const char *invalid) {
    if (num == nullptr) {
        return 0;
    }
    const size_t n = strnlen(num, TR104_NUMBER_MAX_LEN + 1);
    if (n > TR104_NUMBER_MAX_LEN) {
        say(caller, tooLong);
        return 0;
    }
    for (size_t i = 0; i < n; ++i) {
        if (!numberChar(num[i])) {
            say(caller, invalid);
            return 0;
        }
    }
    return 1;
}

int numberTable(const NumberTable &t, int nFlag, char *pNum, char *pType, int *nLocate) {
    if (pType == nullptr || (pNum == nullptr && (nFlag == 0 || nFlag == 1))) {
        TR104_DEBUG_AS(t.name, "param error, %s or %s is null\n", t.numberName, t.typeName);
        return TR104_ERR_PARAM;
    }
    if (gTr104CfgDebug) {
        char shown[TR104_NUMBER_MAX_LEN + 1] = {};
        if (pNum != nullptr && nFlag != 0) {
            core::copyBounded(shown, pNum, TR104_NUMBER_MAX_LEN);
        }
        TR104_DEBUG_AS(t.name, "nFlag[%d], %s[%s], %s[%c] nLocate[2]=%d\n", nFlag, t.numberName, shown, t.typeName,
                       *pType, nLocate != nullptr ? nLocate[2] : 0);
    }
    Tr104NumberTable table{};
    if (nFlag == 0) {
        // The entry is an index into the reply's ten numbers: outside 1..10 it names none.
        if (nLocate == nullptr || !core::inRange(nLocate[2], 1, TR104_NUMBER_ENTRIES)) {
            TR104_DEBUG_AS(t.name, "param error, nLocate[2]=%d\n", nLocate != nullptr ? nLocate[2] : 0);
            return TR104_ERR_PARAM;
        }
        const int entry = nLocate[2];
        table.ucEntry = static_cast<uint8_t>(entry);
        if (readRecord(t.name, &table, sizeof(table), t.getCmd) != TR104_OK) {
            TR104_DEBUG_AS(t.name, "get the [%d] %s num failed.\n", entry, t.what);
            return TR104_ERR_EXCHANGE;
        }
        if (entry > table.ucEntry) {
            std::memset(pNum, 0, strnlen(pNum, TR104_NUMBER_MAX_LEN + 1));
            *pNum = '\0';
            *pType = 0;
        } else {
            // Copied without its terminator, as callers have always had it: they clear the buffer.
            const char *number = table.aNumbers[entry - 1];
            std::memcpy(pNum, number, core::fieldTextLength(number, sizeof(table.aNumbers[0])));
            *pType = table.aTypes[entry - 1];
        }
        TR104_DEBUG_AS(t.name, "\n get the [%d] %s num [%.20s] %s type[%c]\n", entry, t.what, pNum, t.what, *pType);
        return TR104_OK;
    }
    if (nFlag != 1 && nFlag != 2) {
        TR104_DEBUG_AS(t.name, "param error, nFlag[%d]\n", nFlag);
        return TR104_ERR_PARAM;
    }
    if (pNum != nullptr) {
        if (t.check(pNum) == 0 || (nFlag == 1 && checkPOSorIPTTypeValid(pType) == 0)) {
            return TR104_ERR_PARAM;
        }
        const size_t n = strnlen(pNum, TR104_NUMBER_MAX_LEN);
        std::memcpy(table.aNumbers[0], pNum, n);
        table.ucLength = static_cast<uint8_t>(n);
        if (nFlag == 1) {
            table.aTypes[0] = *pType;
        }
    } else {
        table.ucDeleteAll = 1;
    }
    if (sendRecord(t.name, &table, sizeof(table), nFlag == 1 ? t.addCmd : t.deleteCmd) != TR104_OK) {
        say(t.name, nFlag == 1 ? t.addFailed : t.deleteFailed);
        return TR104_ERR_EXCHANGE;
    }
    return TR104_OK;
}

}  // namespace
}  // namespace tr104::netcfg

using namespace tr104::netcfg;

extern "C" TR104_API int checkPosNumValid(const char *pNum) {
    return checkNumber(__func__, pNum, "phone number too long! \n", "Invalid phone number! \n");
}
extern "C" TR104_API int checkIptNumValid(const char *pNum) {
    return checkNumber(__func__, pNum, "IPT number too long! \n", "Invalid IPT number! \n");
}
// The meaning of the type characters belongs to the voice module: any type is taken.
extern "C" TR104_API int checkPOSorIPTTypeValid(const char *pType) { return pType != nullptr ? 1 : 0; }

// Under SIP the variant of the embedding process (-1 without one); H.248 keeps no such mark.
extern "C" TR104_API int Tr104RtpDSCPMark(int nFlag, void *pValue) {
    if (gTr104CurrProtocolType == TR104_PROTOCOL_SIP) {
        return Tr104RtpDSCPMarkSip != nullptr ? Tr104RtpDSCPMarkSip(nFlag, pValue) : TR104_ERR_EXCHANGE;
    }
    return gTr104CurrProtocolType == TR104_PROTOCOL_H248 ? TR104_OK : TR104_ERR_EXCHANGE;
}

#include "tr104/catalogue/netcfg_NumberTable.inc"
