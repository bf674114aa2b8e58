// Profile-wide timers: the signalling timers (seconds in the data model, milliseconds in the
// voice module, one record naming the timer being set in a selector) and the inter-digit
// timers (no scaling, the other timer sent as "unchanged").
#include "tr104/sip/templates.h"

namespace tr104::sip {
namespace {

using Timer = ProfileWide;

constexpr uint8_t kSigLen = sizeof(Tr104SipSignalTimerRecord);
constexpr uint8_t kDigitLen = sizeof(Tr104SipDigitTimerRecord);
constexpr uint8_t kSelector = offsetof(Tr104SipSignalTimerRecord, usSelector);
constexpr uint8_t kStartDigit = offsetof(Tr104SipSignalTimerRecord, unStartDigit);
constexpr uint8_t kShortDigit = offsetof(Tr104SipDigitTimerRecord, unShortDigit);
constexpr uint8_t kLongDigit = offsetof(Tr104SipDigitTimerRecord, unLongDigit);

constexpr const char *kSecondsRange = "invalid parameter should be 1-600.\n";
constexpr const char *kDigitRange = "invalid parameter should be 0-65535.\n";
constexpr const char *kSigSetError = "SET_SIG_TIMEOUT_ID msg snd failed.\n";
constexpr const char *kDigitSetError = "SET_DIG_TIMEOUT msg snd failed.\n";

constexpr Timer signalTimer(const char *name, const char *valueName, uint8_t offset, uint16_t selector,
                            const char *getError, const char *rangeError = kSecondsRange,
                            const char *setError = kSigSetError) {
    return Timer{{name, valueName, Locate::None, Access::GetSet},
                 GET_SIG_TIMEOUT_ID, SET_SIG_TIMEOUT_ID, kSigLen, offset, 1000, Accept::Range, 1, 600,
                 Marker{kSelector, 2, selector}, getError, rangeError, setError};
}

constexpr Timer digitTimer(const char *name, const char *valueName, uint8_t offset, uint8_t other,
                           const char *getError) {
    return Timer{{name, valueName, Locate::None, Access::GetSet},
                 GET_DIG_TIMEOUT, SET_DIG_TIMEOUT, kDigitLen, offset, 1, Accept::Range, -1, 65535,
                 Marker{other, 4, TR104_DIGIT_TIMER_UNCHANGED}, getError, kDigitRange, kDigitSetError};
}

// The start-digit timer's send failure names the digit timer command, as it always has.
const Timer kStartDigitTimer = signalTimer("Tr104StartDigitTimerSip", "pStartDigitTimer", kStartDigit,
                                           TR104_SIG_TIMER_START_DIGIT, "get starttime error.\n", kSecondsRange,
                                           kDigitSetError);
// The dial-tone timer is the start-digit timer under another name.
const Timer kDialToneTimer = signalTimer("Tr104DialToneTimerSip", "pDialToneTimer", kStartDigit,
                                         TR104_SIG_TIMER_START_DIGIT, "get dialtone time error.\n",
                                         "set param error, pDialTime[%d].\n");
const Timer kNoAnswerTimer = signalTimer("Tr104NoAnswerTimerSip", "pNoAnswerTimer",
                                         offsetof(Tr104SipSignalTimerRecord, unNoAnswer), TR104_SIG_TIMER_NO_ANSWER,
                                         "get noanswer time error.\n");
const Timer kBusyToneTimer = signalTimer("Tr104BusyToneTimerSip", "pBusyToneTimer",
                                         offsetof(Tr104SipSignalTimerRecord, unBusyTone), TR104_SIG_TIMER_BUSY_TONE,
                                         "get busytone time error.\n");
const Timer kHangingReminderTimer =
    signalTimer("Tr104HangingReminderToneTimerSip", "pHangingReminderToneTimer",
                offsetof(Tr104SipSignalTimerRecord, unHangingReminder), TR104_SIG_TIMER_HANGING_REMINDER,
                "get hanging reminder time error.\n");
const Timer kCallWaitingRejectTimer =
    signalTimer("Tr104CallWaitingRejectTimerSip", "pCallWaitingRejectTimer",
                offsetof(Tr104SipSignalTimerRecord, unCallWaitingReject), TR104_SIG_TIMER_CALL_WAITING_REJECT,
                "get call waiting reject time error.\n");
const Timer kShortDigitTimer = digitTimer("Tr104ShortDigitTimerSip", "pShortDigitTimer", kShortDigit, kLongDigit,
                                          "get short digit timer error.\n");
const Timer kLongDigitTimer = digitTimer("Tr104LongDigitTimerSip", "pLongDigitTimer", kLongDigit, kShortDigit,
                                         "get long digit timer error.\n");

}  // namespace
}  // namespace tr104::sip

using tr104::sip::profileWide;

extern "C" {
TR104_API int Tr104StartDigitTimerSip(int nFlag, void *pValue, int *nLocate) {
    return profileWide(tr104::sip::kStartDigitTimer, nFlag, pValue, nLocate);
}
TR104_API int Tr104DialToneTimerSip(int nFlag, void *pValue, int *nLocate) {
    return profileWide(tr104::sip::kDialToneTimer, nFlag, pValue, nLocate);
}
TR104_API int Tr104NoAnswerTimerSip(int nFlag, void *pValue, int *nLocate) {
    return profileWide(tr104::sip::kNoAnswerTimer, nFlag, pValue, nLocate);
}
TR104_API int Tr104BusyToneTimerSip(int nFlag, void *pValue, int *nLocate) {
    return profileWide(tr104::sip::kBusyToneTimer, nFlag, pValue, nLocate);
}
TR104_API int Tr104HangingReminderToneTimerSip(int nFlag, void *pValue, int *nLocate) {
    return profileWide(tr104::sip::kHangingReminderTimer, nFlag, pValue, nLocate);
}
TR104_API int Tr104CallWaitingRejectTimerSip(int nFlag, void *pValue, int *nLocate) {
    return profileWide(tr104::sip::kCallWaitingRejectTimer, nFlag, pValue, nLocate);
}
TR104_API int Tr104ShortDigitTimerSip(int nFlag, void *pValue, int *nLocate) {
    return profileWide(tr104::sip::kShortDigitTimer, nFlag, pValue, nLocate);
}
TR104_API int Tr104LongDigitTimerSip(int nFlag, void *pValue, int *nLocate) {
    return profileWide(tr104::sip::kLongDigitTimer, nFlag, pValue, nLocate);
}
}
