// Gateway-wide H.248 configuration: the MGCs, the MID, the gateway's port, the naming rules of
// physical and ephemeral terminations, heartbeat, transaction timers, registration and
// authentication.  Each handler is a descriptor; the naming rules with several value pointers
// and the MGC registration are written out.
#include "tr104/h248/h248_internal.h"

namespace tr104::h248 {
namespace {

using core::intValue;
using core::putInt;
using core::say;

// ---- Blocks ------------------------------------------------------------------------------------

const Block kMgc{sizeof(Tr104H248MgcBlock), GET_MGC_CFG_ID, SET_MGC_CFG_ID, "send msg SET_MGC_CFG_ID failed\n"};
const Block kMid{sizeof(Tr104H248MidBlock), GET_MID, SET_MID, "send msg SET_MID failed\n"};
const Block kMidMode{sizeof(Tr104H248MidBlock), GET_MID, SET_MID, "send msg SET_MID failed.\n"};
const Block kPhyName{sizeof(Tr104H248PhyNameBlock), GET_PHY_NAME, SET_PHY_NAME, "send msg SET_PHY_NAME failed\n"};
const Block kEphName{sizeof(Tr104H248EphNameBlock), GET_EPH_NAME, SET_EPH_NAME, "send msg SET_EPH_NAME failed\n"};
const Block kTermId{sizeof(Tr104H248TermIdBlock), GET_SINGLE_USERNAME, SET_SINGLE_USERNAME,
                    "send msg SET_SINGLE_USERNAME failed\n"};
const Block kAlive{sizeof(Tr104H248AliveBlock), GET_ALIVE_PARAM, SET_ALIVE_PARAM, "send msg SET_ALIVE_PARAM failed\n"};
const Block kTrans{sizeof(Tr104H248TransTimerBlock), GET_TRANS_TIME, SET_TRANS_TIME,
                   "send msg SET_TRANS_TIME failed\n"};
const Block kReg{sizeof(Tr104H248RegBlock), GET_REGMG_PARAM, SET_REGMG_PARAM, "send msg SET_REGMG_PARAM failed\n"};
const Block kAuth{sizeof(Tr104H248AuthBlock), GET_MD5_PARAM, SET_MD5_PARAM, "send msg SET_MD5_PARAM failed\n"};
const Block kLocalPort{sizeof(Tr104H248LocalPortBlock), GET_LOCAL_PORT, SET_LOCAL_PORT,
                       "send msg SET_LOCAL_PORT failed\n"};

// Limits of the rows' values (tr104/catalogue/h248.toml): texts keep one byte for the NUL.
constexpr int kMaxPort = 65535;
constexpr int kMgcAddrLongest = TR104_H248_MGC_ADDR_LEN - 1;
constexpr int kMidLongest = TR104_H248_MID_LEN - 1;
constexpr int kPrefixLongest = TR104_H248_PREFIX_LEN - 1;
constexpr int kTermIdLongest = TR104_H248_TERM_ID_LEN - 1;
constexpr int kAddLenFewest = 1;  // digits added to a termination name
constexpr int kAddLenMost = 5;
constexpr int kRetranSecondsMost = 20;  // the first retransmission and the cycle
constexpr int kRetranTimeMost = 60;
constexpr int kRegisterCycleMost = 300;
constexpr uint32_t kMsPerSecond = 1000;
// Where the ephemeral block's tail holds the instance name and the first name.
constexpr std::size_t kEphNameInTail = TR104_H248_EPH_NAME_OFFSET - TR104_H248_EPH_FILL_OFFSET;
constexpr std::size_t kEphFirstNameInTail = TR104_H248_EPH_FIRST_NAME_OFFSET - TR104_H248_EPH_FILL_OFFSET;
constexpr uint8_t kEphFirstNameRoom = sizeof(Tr104H248EphNameBlock) - TR104_H248_EPH_FIRST_NAME_OFFSET;

// ---- Values held in library memory -------------------------------------------------------------

char gEncodingType[TR104_H248_ENCODING_LEN] = "ABNF";
char gDeviceName[TR104_H248_DEVICE_NAME_LEN] = "";
int gLongTimer = 60;
int gPendingTimer = 10;
int gRegisterFlag = 0;
int gProtocolVersion = 1;
int gMessageFormat = 0;

const TextCode kEncodings[] = {{"ABNF", 0}, {"ASN.1", 1}};

// ---- Naming rules with several pointers --------------------------------------------------------

constexpr const char *kPhyRule = "Tr104PhyNameRuleH248";
constexpr const char *kEphRule = "Tr104EphNameRuleH248";
constexpr const char *kEphRule2 = "Tr104EphNameRule2H248";

int flagError(const char *name, int nFlag) {
    if (nFlag != 0 && nFlag != 1) {
        TR104_DEBUG_AS(name, "param error, nFlag[%d]\n", nFlag);
        return TR104_ERR_PARAM;
    }
    return TR104_OK;
}

// Where a masked naming rule keeps its four values.
struct NameRule {
    const char *name;
    const Block *block;
    uint16_t prefix, length, start, fill;
    uint16_t mask;  // the four bits at once
};
const NameRule kPhyNameRule{
    kPhyRule,
    &kPhyName,
    offsetof(Tr104H248PhyNameBlock, aPrefix),
    offsetof(Tr104H248PhyNameBlock, unAddLen),
    offsetof(Tr104H248PhyNameBlock, unStart),
    offsetof(Tr104H248PhyNameBlock, unFillFlag),
    TR104_H248_PHY_PREFIX_BIT | TR104_H248_PHY_ADD_LEN_BIT | TR104_H248_PHY_START_BIT | TR104_H248_PHY_FILL_BIT};
const NameRule kEphNameRule2{
    kEphRule2,
    &kEphName,
    offsetof(Tr104H248EphNameBlock, aPrefix),
    offsetof(Tr104H248EphNameBlock, unAddLen),
    offsetof(Tr104H248EphNameBlock, unStart),
    TR104_H248_EPH_FILL_OFFSET,
    TR104_H248_EPH_PREFIX_BIT | TR104_H248_EPH_ADD_LEN_BIT | TR104_H248_EPH_START_BIT | TR104_H248_EPH_FILL_BIT};

uint32_t wordAt(const char *data, uint16_t offset) {
    uint32_t v;
    std::memcpy(&v, data + offset, sizeof(v));
    return v;
}
void putWord(char *data, uint16_t offset, uint32_t v) { std::memcpy(data + offset, &v, sizeof(v)); }

int maskedRule(const NameRule &r, int nFlag, char *pPrefix, uint32_t *pLength, uint32_t *pStart, uint32_t *pFillFlag) {
    if (pPrefix == nullptr || pLength == nullptr || pStart == nullptr || pFillFlag == nullptr) {
        say(r.name, "param error, param is null\n");
        return TR104_ERR_PARAM;
    }
    if (const int rc = flagError(r.name, nFlag); rc != TR104_OK) {
        return rc;
    }
    alignas(4) char data[TR104_CFG_BUFFER_LEN] = {};
    if (nFlag == 0) {
        if (fetchBlock(r.name, *r.block, data, Where::None, 0) != TR104_OK) {
            say(r.name, "get param failed\n");
            return TR104_ERR_EXCHANGE;
        }
        core::copyFieldText(pPrefix, data + r.prefix, TR104_H248_PREFIX_LEN);
        *pLength = wordAt(data, r.length);
        *pStart = wordAt(data, r.start);
        *pFillFlag = wordAt(data, r.fill) != 1 ? 1u : 0u;
    } else {
        if (strnlen(pPrefix, TR104_H248_PREFIX_LEN) >= TR104_H248_PREFIX_LEN) {
            say(r.name, "param error, pPrefix is too long\n");
            return TR104_ERR_PARAM;
        }
        if (*pFillFlag > 1) {
            TR104_DEBUG_AS(r.name, "param error, pFillFlag[%d]\n", static_cast<int>(*pFillFlag));
            return TR104_ERR_PARAM;
        }
        std::memcpy(data, &r.mask, sizeof(r.mask));
        core::copyBounded(data + r.prefix, pPrefix, TR104_H248_PREFIX_LEN - 1);
        putWord(data, r.length, *pLength);
        putWord(data, r.start, *pStart);
        putWord(data, r.fill, *pFillFlag == 0 ? 1u : 0u);
        if (core::sendRecord(r.name, data, r.block->len, r.block->setCmd) != TR104_OK) {
            say(r.name, r.block->setError);
            return TR104_ERR_EXCHANGE;
        }
    }
    TR104_DEBUG_AS(r.name, "nFlag[%d], pPrefix[%s], pLength[%d], pStart[%d], pFillFlag[%d]\n", nFlag, pPrefix,
                   static_cast<int>(*pLength), static_cast<int>(*pStart), static_cast<int>(*pFillFlag));
    return TR104_OK;
}

}  // namespace
}  // namespace tr104::h248

using namespace tr104::h248;
namespace core = tr104::core;

#include "tr104/catalogue/h248_GatewayValue.inc"
#include "tr104/catalogue/h248_GatewayLineValue.inc"
#include "tr104/catalogue/h248_HeldValue.inc"

TR104_API int Tr104PhyNameRuleH248(int nFlag, char *pPrefix, uint32_t *pLength, uint32_t *pStart, uint32_t *pFillFlag) {
    return maskedRule(kPhyNameRule, nFlag, pPrefix, pLength, pStart, pFillFlag);
}

// The ephemeral counterpart of the physical rule: prefix, added length, start value and uniform
// flag in one request with their four mask bits.
TR104_API int Tr104EphNameRule2H248(int nFlag, char *pPrefix, uint32_t *pLength, uint32_t *pStart,
                                    uint32_t *pFillFlag) {
    return maskedRule(kEphNameRule2, nFlag, pPrefix, pLength, pStart, pFillFlag);
}

// The range rule of ephemeral names: first part, start, end, step and the fill flag as the
// block holds it (1 = not filled), written in one request without a mask bit.
TR104_API int Tr104EphNameRuleH248(int nFlag, char *pFirstPart, uint32_t *pStart, uint32_t *pEnd, uint32_t *pStep,
                                   uint32_t *pFillOrNot) {
    if (pFirstPart == nullptr || pStart == nullptr || pEnd == nullptr || pStep == nullptr || pFillOrNot == nullptr) {
        say(kEphRule, "param error, param is null\n");
        return TR104_ERR_PARAM;
    }
    if (const int rc = flagError(kEphRule, nFlag); rc != TR104_OK) {
        return rc;
    }
    Tr104H248EphNameBlock block{};
    if (nFlag == 0) {
        if (fetchBlock(kEphRule, kEphName, &block, Where::None, 0) != TR104_OK) {
            say(kEphRule, "get param failed\n");
            return TR104_ERR_EXCHANGE;
        }
        core::copyFieldText(pFirstPart, block.aPrefix, TR104_FIELD_ROOM(Tr104H248EphNameBlock, aPrefix, unStart));
        *pStart = block.unStart;
        *pEnd = block.unEnd;
        *pStep = block.unStep;
        std::memcpy(pFillOrNot, block.aTail, sizeof(*pFillOrNot));
    } else {
        if (strnlen(pFirstPart, sizeof(block.aPrefix)) >= sizeof(block.aPrefix)) {
            say(kEphRule, "param error, pFirstPart is too long\n");
            return TR104_ERR_PARAM;
        }
        if (*pFillOrNot > 1) {
            TR104_DEBUG_AS(kEphRule, "param error, pFillOrNot[%d]\n", static_cast<int>(*pFillOrNot));
            return TR104_ERR_PARAM;
        }
        core::copyBounded(block.aPrefix, pFirstPart, sizeof(block.aPrefix) - 1);
        block.unStart = *pStart;
        block.unEnd = *pEnd;
        block.unStep = *pStep;
        std::memcpy(block.aTail, pFillOrNot, sizeof(*pFillOrNot));
        if (core::sendRecord(kEphRule, &block, sizeof(block), SET_EPH_NAME) != TR104_OK) {
            say(kEphRule, kEphName.setError);
            return TR104_ERR_EXCHANGE;
        }
    }
    TR104_DEBUG_AS(kEphRule, "nFlag[%d], pFirstPart[%s], pStart[%d], pEnd[%d], pStep[%d], pFillOrNot[%d]\n", nFlag,
                   pFirstPart, static_cast<int>(*pStart), static_cast<int>(*pEnd), static_cast<int>(*pStep),
                   static_cast<int>(*pFillOrNot));
    return TR104_OK;
}

// The number of ephemeral names the range rule gives: start to end in steps; no step, or an end
// before the start, gives none.
TR104_API int Tr104EphemeralTermIDNumberH248(int nFlag, void *pValue) {
    constexpr const char *kName = "Tr104EphemeralTermIDNumberH248";
    if (pValue == nullptr) {
        say(kName, "param error, pNumber is null\n");
        return TR104_ERR_PARAM;
    }
    if (nFlag != 0) {
        TR104_DEBUG_AS(kName, "param error, nFlag[%d]\n", nFlag);
        return TR104_ERR_PARAM;
    }
    char first[TR104_H248_PREFIX_LEN];
    uint32_t start = 0, end = 0, step = 0, fill = 0;
    if (Tr104EphNameRuleH248(0, first, &start, &end, &step, &fill) != TR104_OK) {
        return TR104_ERR_EXCHANGE;
    }
    putInt(pValue, step != 0 && end >= start ? static_cast<int>((end - start) / step + 1) : 0);
    TR104_DEBUG_AS(kName, "nFlag[%d], pNumber[%d]\n", nFlag, intValue(pValue));
    return TR104_OK;
}

// Registers with (1) or unregisters from (any other value) the MGC at the given address.  It has
// the signature of Tr104MgcRegister, which passes its arguments on unchanged; nFlag and nLocate
// are not used (the device operations call it with nLocate 0).
TR104_API int Tr104MgcRegisterH248(int, void *pRegister, char *pMgcAddr, int *) {
    constexpr const char *kName = "Tr104MgcRegisterH248";
    if (pMgcAddr == nullptr) {
        say(kName, "param error, pMgcAddr is null\n");
        return TR104_ERR_PARAM;
    }
    if (pRegister == nullptr) {
        say(kName, "param error, pRegister is null\n");
        return TR104_ERR_PARAM;
    }
    Tr104H248MgcBlock block{};
    if (strnlen(pMgcAddr, sizeof(block.aMgcAddr[0])) >= sizeof(block.aMgcAddr[0])) {
        say(kName, "param error, pMgcAddr is too long\n");
        return TR104_ERR_PARAM;
    }
    core::copyBounded(block.aMgcAddr[0], pMgcAddr, sizeof(block.aMgcAddr[0]) - 1);
    block.usMask = TR104_H248_MGC_ADDR_BIT;
    const unsigned int cmd = intValue(pRegister) == 1 ? REG_MGC_ID : UNREG_MGC_ID;
    if (core::sendRecord(kName, &block, sizeof(block), cmd) != TR104_OK) {
        say(kName, "send msg REG_MGC or UNREG_MGC failed\n");
        return TR104_ERR_EXCHANGE;
    }
    return TR104_OK;
}
