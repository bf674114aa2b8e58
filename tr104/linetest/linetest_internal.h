// Shared pieces of the port, line-test and simulated-call handlers: record layout checks, the
// argument checks (the port is nLocate[1]) and the generic bodies of the handler shapes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "tr104/linetest.h"
#include "tr104/protocol.h"
#include "tr104/core/core.h"

// The voice module's layouts: the same offsets on the 64-bit host and on the 32-bit device.
static_assert(sizeof(Tr104PortRecord) == 276);
static_assert(offsetof(Tr104PortRecord, cDialMode) == 138);
static_assert(offsetof(Tr104PortRecord, unDialToneDrawTime) == 164);
static_assert(sizeof(Tr104KcRecord) == 36);
static_assert(offsetof(Tr104KcRecord, unKcType) == 28);
static_assert(sizeof(Tr104FlashRecord) == 20);
static_assert(offsetof(Tr104FlashRecord, unFlashDown) == 4);
static_assert(offsetof(Tr104FlashRecord, unFlashUp) == 8);
static_assert(sizeof(Tr104TestStateRecord) == 37);
static_assert(offsetof(Tr104TestStateRecord, ucPort) == 2);
static_assert(offsetof(Tr104TestStateRecord, ucTestType) == 3);
static_assert(offsetof(Tr104TestStateRecord, ucProgress) == 4);
static_assert(offsetof(Tr104TestStateRecord, ucResult) == 5);
static_assert(sizeof(Tr104OuterLineResult) == 327);
static_assert(offsetof(Tr104OuterLineResult, ucPort) == 2);
static_assert(offsetof(Tr104OuterLineResult, ucConclusion) == 37);
static_assert(offsetof(Tr104OuterLineResult, aGroundDCVoltage) == 38);
static_assert(offsetof(Tr104OuterLineResult, bGroundDCVoltage) == 54);
static_assert(offsetof(Tr104OuterLineResult, abDCVoltage) == 70);
static_assert(offsetof(Tr104OuterLineResult, aGroundInsulationResistance) == 86);
static_assert(offsetof(Tr104OuterLineResult, bGroundInsulationResistance) == 102);
static_assert(offsetof(Tr104OuterLineResult, abInsulationResistance) == 118);
static_assert(offsetof(Tr104OuterLineResult, abPolarityReversalResistance) == 134);
static_assert(offsetof(Tr104OuterLineResult, aGroundCapacitance) == 150);
static_assert(offsetof(Tr104OuterLineResult, bGroundCapacitance) == 166);
static_assert(offsetof(Tr104OuterLineResult, abCapacitance) == 182);
static_assert(offsetof(Tr104OuterLineResult, aGroundACVoltage) == 198);
static_assert(offsetof(Tr104OuterLineResult, bGroundACVoltage) == 214);
static_assert(offsetof(Tr104OuterLineResult, abACVoltage) == 230);
static_assert(offsetof(Tr104OuterLineResult, loopResistance) == 246);
static_assert(offsetof(Tr104OuterLineResult, ringerEquivalentNumber) == 262);
static_assert(sizeof(Tr104InnerLineResult) == 185);
static_assert(offsetof(Tr104InnerLineResult, ucPort) == 2);
static_assert(offsetof(Tr104InnerLineResult, ucSignalToneState) == 37);
static_assert(offsetof(Tr104InnerLineResult, ucFeederVoltageState) == 38);
static_assert(offsetof(Tr104InnerLineResult, loopCurrent) == 40);
static_assert(offsetof(Tr104InnerLineResult, feederVoltage) == 56);
static_assert(offsetof(Tr104InnerLineResult, signalToneVolume) == 72);
static_assert(offsetof(Tr104InnerLineResult, signalToneFrequency) == 88);
static_assert(offsetof(Tr104InnerLineResult, ringingCurrentVoltage) == 104);
static_assert(offsetof(Tr104InnerLineResult, quietChannelPower) == 121);
static_assert(sizeof(Tr104SmultParam) == 288);
static_assert(offsetof(Tr104SmultParam, unPort) == 8);
static_assert(offsetof(Tr104SmultParam, unTimeout) == 12);
static_assert(offsetof(Tr104SmultParam, aCalledNum) == 16);
static_assert(offsetof(Tr104SmultParam, unCallerStatus) == 52);
static_assert(offsetof(Tr104SmultParam, unCalledStatus) == 56);
static_assert(offsetof(Tr104SmultParam, unConclusion) == 92);
static_assert(offsetof(Tr104SmultParam, unCallerFailCode) == 128);
static_assert(offsetof(Tr104SmultParam, unCalledFailCode) == 132);
static_assert(sizeof(Tr104DialConfirmRecord) == 20);
static_assert(offsetof(Tr104DialConfirmRecord, unPort) == 4);
static_assert(offsetof(Tr104DialConfirmRecord, unEnable) == 8);
static_assert(offsetof(Tr104DialConfirmRecord, cDigit) == 12);
static_assert(offsetof(Tr104DialConfirmRecord, unResult) == 16);

namespace tr104::linetest {

using core::Access;
using core::checkArguments;
using core::checkedPort;
using core::findCode;
using core::findText;
using core::intValue;
using core::Locate;
using core::putInt;
using core::readRecord;
using core::say;
using core::sendRecord;
using core::Signature;
using core::TextCode;

// The port of a handler that has passed its checks, and its entry in the per-port tables.
inline int portOf(const int *nLocate) { return nLocate[1]; }
inline int slotOf(const int *nLocate) { return nLocate[1] - 1; }

// Writes exactly the text's characters, without a terminator (the caller zeroes its buffer).
inline void putBare(void *pValue, const char *text) { std::memcpy(pValue, text, std::strlen(text)); }
inline void putText(void *pValue, const char *text) { std::strcpy(static_cast<char *>(pValue), text); }
inline void putFloat(void *pValue, float v) { std::memcpy(pValue, &v, sizeof(v)); }

// ---- A value held in library memory, per port or for the whole gateway -------------------------

enum class Accept : uint8_t { Any, Bool };

struct Held {
    Signature sig;
    int32_t *values;  // two entries (per port) or one (gateway)
    Accept accept;
    bool valueFirst;  // messages print the value before the port
    const char *getDone;  // "%d" port and value, in the order above
    const char *setDone;
    const char *rangeError = nullptr;
    const char *entry = nullptr;  // printed first: "%d" the flag, then the caller's value
};
int held(const Held &h, int nFlag, void *pValue, int *nLocate);

// ---- Line-test results -------------------------------------------------------------------------

// Queries a port's result record (port at byte 2).  0 or -1.
int readOuter(const char *name, int port, Tr104OuterLineResult *rec);
int readInner(const char *name, int port, Tr104InnerLineResult *rec);
// A measurement text as an integer / a float (decimal conversion of at most 16 characters).
int decimal(const char *field);
float decimalFloat(const char *field);

// ---- Simulated call ----------------------------------------------------------------------------

// Queries the port's block and reads the status text ("Idle", "Testend" ...): a pointer to a
// static text, "" for a code without one; nullptr when the query failed.
const char *smultStatusText(const char *name, int port);

}  // namespace tr104::linetest
