// SIP line identity and authentication: directory number and URI (sent at once), user name and
// password (staged together in slot 5 of the deferred buffer and sent in one request).
#include <bit>
#include <cstring>
#include <initializer_list>

#include "tr104/sip/server_record.h"
#include "tr104/sip/sip_internal.h"
#include "tr104/sip_identity.h"
#include "tr104/startup.h"

namespace tr104::sip {
namespace {

using LineIdentityRecord = Tr104SipLineIdentityRecord;
static_assert(sizeof(LineIdentityRecord) == 452);
static_assert(sizeof(LineIdentityRecord) == sizeof(Tr104SipLineRecord));
static_assert(offsetof(LineIdentityRecord, unLine) == 0);
static_assert(offsetof(LineIdentityRecord, aNumber) == TR104_LINE_NUMBER_OFFSET);
static_assert(offsetof(LineIdentityRecord, aAuthUserName) == TR104_LINE_AUTH_USER_OFFSET);
static_assert(offsetof(LineIdentityRecord, aAuthPassword) == TR104_LINE_AUTH_PWD_OFFSET);
static_assert(offsetof(LineIdentityRecord, aucReserved1) == 4);
static_assert(offsetof(LineIdentityRecord, aucReserved2) == 74);
static_assert(offsetof(LineIdentityRecord, aucReserved3) == 356);
static_assert(alignof(LineIdentityRecord) == 4);

constexpr size_t kTextMax = TR104_LINE_IDENTITY_LEN - 1;  // characters of an identity text
// Every identity text has the same room in the record.
constexpr size_t kTextRoom = TR104_FIELD_ROOM(LineIdentityRecord, aNumber, aucReserved2);
static_assert(kTextRoom == TR104_FIELD_ROOM(LineIdentityRecord, aAuthUserName, aAuthPassword));
static_assert(kTextRoom == TR104_FIELD_ROOM(LineIdentityRecord, aAuthPassword, aucReserved3));
constexpr int kAuthSlot = 5;
constexpr uint16_t kUserBit = 0x1;
constexpr uint16_t kPasswordBit = 0x2;

LineIdentityRecord loadRecord(const void *bytes) {
    LineIdentityRecord record;
    std::memcpy(&record, bytes, sizeof(record));
    return record;
}

bool tooLong(const void *pValue) {
    return strnlen(static_cast<const char *>(pValue), TR104_LINE_IDENTITY_LEN) >= TR104_LINE_IDENTITY_LEN;
}

// Replaces a text field with at most 65 characters of text, the rest of the field zero.
void putText(char (&field)[TR104_LINE_IDENTITY_LEN], const char *text) {
    std::memset(field, 0, sizeof(field));
    copyBounded(field, text, kTextMax);
}

// ---- Directory number and URI: their own command pair, sent at once -------------------------

struct DirectField {
    Signature sig;
    uint32_t getCmd;
    uint32_t setCmd;
    const char *tooLong;
    const char *getFailed;  // "%d" the line
    const char *setFailed;
};

int directValue(const DirectField &f, int nFlag, void *pValue, int *nLocate) {
    if (const int rc = checkArguments(f.sig, nFlag, pValue, nLocate); rc != TR104_OK) {
        return rc;
    }
    const int line = lineOf(nLocate);
    LineIdentityRecord record{};
    record.unLine = static_cast<uint32_t>(line);
    if (nFlag == 0) {
        if (readRecord(f.sig.name, &record, sizeof(record), f.getCmd) != TR104_OK) {
            TR104_DEBUG_AS(f.sig.name, f.getFailed, line);
            return TR104_ERR_EXCHANGE;
        }
        copyFieldText(static_cast<char *>(pValue), record.aNumber, kTextRoom);
        return TR104_OK;
    }
    if (tooLong(pValue)) {
        say(f.sig.name, f.tooLong);
        return TR104_ERR_PARAM;
    }
    putText(record.aNumber, static_cast<const char *>(pValue));
    if (sendRecord(f.sig.name, &record, sizeof(record), f.setCmd) != TR104_OK) {
        TR104_DEBUG_AS(f.sig.name, f.setFailed, line);
        return TR104_ERR_EXCHANGE;
    }
    return TR104_OK;
}

// ---- User name and password: read together, written through slot 5 -------------------------

struct StagedField {
    Signature sig;
    uint16_t bit;  // slot mask bit; also names the field
    const char *tooLong;
    const char *getFailed;  // "%d" the line
};

char (&fieldOf(LineIdentityRecord &record, uint16_t bit))[TR104_LINE_IDENTITY_LEN] {
    return bit == kUserBit ? record.aAuthUserName : record.aAuthPassword;
}

int stagedValue(const StagedField &f, int nFlag, void *pValue, int *nLocate) {
    if (const int rc = checkArguments(f.sig, nFlag, pValue, nLocate); rc != TR104_OK) {
        return rc;
    }
    const int line = lineOf(nLocate);
    Tr104Msg msg;
    if (tr104MsgConstruct(&msg) != 0) {
        say(f.sig.name, "construct msg fail!\n");
        return TR104_ERR_PARAM;
    }
    if (nFlag == 0) {
        LineIdentityRecord record{};
        record.unLine = static_cast<uint32_t>(line);
        if (CfgPreHandleGetParam(&msg, &record, sizeof(record), GET_USER_AUTHOR_ID) != 0) {
            TR104_DEBUG_AS(f.sig.name, f.getFailed, line);
            return TR104_ERR_EXCHANGE;
        }
        copyFieldText(static_cast<char *>(pValue), fieldOf(record, f.bit), kTextRoom);
        return TR104_OK;
    }
    if (tooLong(pValue)) {
        say(f.sig.name, f.tooLong);
        return TR104_ERR_PARAM;
    }
    // One slot for both lines: the line of the latest write is the line the slot is sent for.
    void *buffer = getTr104CfgParamInfoParamBuffer(kAuthSlot);
    LineIdentityRecord staged = loadRecord(buffer);
    staged.unLine = static_cast<uint32_t>(line);
    putText(fieldOf(staged, f.bit), static_cast<const char *>(pValue));
    std::memcpy(buffer, &staged, sizeof(staged));
    appendTr104CfgParamInfoCfgFlag(kAuthSlot, f.bit);
    return tr104CfgParamHandleByTimer(kAuthSlot, &msg, buffer);
}

constexpr char kApplyName[] = "setLineAuthCfg";

// Sends the staged authentication of the staged line.  With only one of the two values staged,
// the other comes from the voice module's current record (sent back as it was read, with the
// staged value in place).
int applyLineAuth(Tr104Msg *msg, void *paramBuffer) {
    if (msg == nullptr || paramBuffer == nullptr) {
        return TR104_ERR_EXCHANGE;
    }
    LineIdentityRecord staged = loadRecord(paramBuffer);
    const uint16_t mask = getTr104CfgParamInfoCfgFlag(kAuthSlot);
    LineIdentityRecord record{};
    record.unLine = staged.unLine;
    if ((mask & (kUserBit | kPasswordBit)) != (kUserBit | kPasswordBit)) {
        if (CfgPreHandleGetParam(msg, &record, sizeof(record), GET_USER_AUTHOR_ID) != 0) {
            TR104_DEBUG_AS(kApplyName, "get line[%d] authentication cfg failed.\n", static_cast<int>(staged.unLine));
            return TR104_ERR_EXCHANGE;
        }
        // The voice module's texts are 65 characters at most.
        record.aAuthUserName[kTextMax] = '\0';
        record.aAuthPassword[kTextMax] = '\0';
    }
    for (uint16_t bit : {kUserBit, kPasswordBit}) {
        if (mask & bit) {
            putText(fieldOf(record, bit), fieldOf(staged, bit));
        }
    }
    if (sendOnRecord(msg, SET_USER_AUTHOR_ID, &record, sizeof(record)) != 0) {
        say(kApplyName, "SET_USER_AUTHOR_ID msg snd failed.\n");
        return TR104_ERR_EXCHANGE;
    }
    return TR104_OK;
}

constexpr char kForTr069Name[] = "Tr104LineAuthUserNameAndURIForTr069Sip";

int setUserName(void *pValue, int *nLocate) {
    if (Tr104LineAuthUserNameSip(1, pValue, nLocate) != TR104_OK) {
        say(kForTr069Name, "set AuthUserName error\n");
        return TR104_ERR_EXCHANGE;
    }
    return TR104_OK;
}

// The user name, and the URI as well while the line has no directory number.
int userNameAndUri(int nFlag, void *pValue, int *nLocate) {
    if (nFlag != 1) {
        TR104_DEBUG_AS(kForTr069Name, "param error, nFlag=%d\n", nFlag);
        return TR104_ERR_PARAM;
    }
    if (pValue == nullptr) {
        say(kForTr069Name, "param error, pAuthUserName is null\n");
        return TR104_ERR_PARAM;
    }
    char number[TR104_LINE_IDENTITY_LEN] = {};
    if (Tr104LineTelNumSip(0, number, nLocate) != TR104_OK) {
        say(kForTr069Name, "Tr104LineTelNumSip get uri error\n");
        return setUserName(pValue, nLocate);
    }
    if (number[0] != '\0') {
        return setUserName(pValue, nLocate);
    }
    if (Tr104LineURISip(1, pValue, nLocate) != TR104_OK) {
        say(kForTr069Name, "set URI error\n");
        return TR104_ERR_EXCHANGE;
    }
    if (Tr104LineAuthUserNameSip(1, pValue, nLocate) != TR104_OK) {
        // The URI goes back to empty (the line had no number to derive one from).
        char empty[1] = {'\0'};
        (void)Tr104LineURISip(1, empty, nLocate);
        say(kForTr069Name, "set URI ok, set AuthUserName error\n");
        return TR104_ERR_EXCHANGE;
    }
    return TR104_OK;
}

}  // namespace
}  // namespace tr104::sip

extern "C" TR104_API int Tr104LineAuthUserNameAndURIForTr069Sip(int nFlag, void *pValue, int *nLocate) {
    return tr104::sip::userNameAndUri(nFlag, pValue, nLocate);
}

extern "C" TR104_API int setLineAuthCfg(Tr104Msg *msg, void *paramBuffer) {
    return tr104::sip::applyLineAuth(msg, paramBuffer);
}

namespace tr104::sip {
namespace {
constexpr core::DeferredGroup kIdentityGroups[] = {
    {kAuthSlot, setLineAuthCfg, std::popcount(static_cast<unsigned>(kUserBit | kPasswordBit))},
};
}  // namespace

constinit const core::Registration kIdentityRegistration{"sip", {}, kIdentityGroups};

}  // namespace tr104::sip

#include "tr104/catalogue/sip_LineDirectText.inc"
#include "tr104/catalogue/sip_LineStagedText.inc"
