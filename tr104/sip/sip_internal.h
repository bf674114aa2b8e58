// Shared pieces of the SIP handlers: the layout checks of their records, and the toolkit of the
// core layer under the names the handlers use.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "tr104/core/core.h"
#include "tr104/core/registry.h"
#include "tr104/core/voice_profile.h"
#include "tr104/sip.h"

// The records are the voice module's layouts: the same offsets on the 64-bit host and on the
// 32-bit device.
static_assert(sizeof(Tr104SipLineFeatureRecord) == 76);
static_assert(offsetof(Tr104SipLineFeatureRecord, unLine) == 0);
static_assert(offsetof(Tr104SipLineFeatureRecord, ucCallerIdMode) == 4);
static_assert(offsetof(Tr104SipLineFeatureRecord, ucCallWaiting) == 5);
static_assert(offsetof(Tr104SipLineFeatureRecord, ucConference) == 73);

static_assert(sizeof(Tr104SipSignalTimerRecord) == 32);
static_assert(offsetof(Tr104SipSignalTimerRecord, usSelector) == 0);
static_assert(offsetof(Tr104SipSignalTimerRecord, unStartDigit) == 4);
static_assert(offsetof(Tr104SipSignalTimerRecord, unNoAnswer) == 8);
static_assert(offsetof(Tr104SipSignalTimerRecord, unBusyTone) == 16);
static_assert(offsetof(Tr104SipSignalTimerRecord, unHangingReminder) == 20);
static_assert(offsetof(Tr104SipSignalTimerRecord, unCallWaitingReject) == 24);

static_assert(sizeof(Tr104SipDigitTimerRecord) == 40);
static_assert(offsetof(Tr104SipDigitTimerRecord, unShortDigit) == 16);
static_assert(offsetof(Tr104SipDigitTimerRecord, unLongDigit) == 20);

static_assert(sizeof(Tr104SipDigitMapChunk) == 258);
static_assert(offsetof(Tr104SipDigitMapChunk, ucChunk) == 1);
static_assert(offsetof(Tr104SipDigitMapChunk, aText) == 2);
static_assert(sizeof(Tr104SipMatchModeRecord) == 258);

static_assert(sizeof(Tr104SipFaxModeRecord) == 36);
static_assert(offsetof(Tr104SipFaxModeRecord, unConfigFlag) == 0);
static_assert(offsetof(Tr104SipFaxModeRecord, unProcessMode) == 4);
static_assert(offsetof(Tr104SipFaxModeRecord, unT38SdpType) == 8);
static_assert(offsetof(Tr104SipFaxModeRecord, unFaxModemSwitch) == 12);
static_assert(offsetof(Tr104SipFaxModeRecord, unEchoCancelSwitch) == 16);
static_assert(offsetof(Tr104SipFaxModeRecord, unSilenceSuppSwitch) == 20);
static_assert(offsetof(Tr104SipFaxModeRecord, unFaxCtrlMode) == 32);

static_assert(sizeof(Tr104SipVbdRecord) == 20);
static_assert(offsetof(Tr104SipVbdRecord, unSelector) == 0);
static_assert(offsetof(Tr104SipVbdRecord, unEnable) == 4);
static_assert(offsetof(Tr104SipVbdRecord, unCodec) == 8);
static_assert(offsetof(Tr104SipVbdRecord, unRxInterval) == 12);
static_assert(offsetof(Tr104SipVbdRecord, unTxInterval) == 16);

namespace tr104::sip {

using core::Access;
using core::checkArguments;
using core::copyBounded;
using core::copyFieldText;
using core::fieldTextLength;
using core::findCode;
using core::findText;
using core::inRange;
using core::intValue;
using core::lineOf;
using core::LineReset;
using core::Locate;
using core::putInt;
using core::readRecord;
using core::readText;
using core::resetLineStatistics;
using core::say;
using core::sendRecord;
using core::Signature;
using core::TextCode;

// The deferred-buffer groups of the server addresses and of the line credentials.
extern const core::Registration kServerRegistration;
extern const core::Registration kIdentityRegistration;

}  // namespace tr104::sip
