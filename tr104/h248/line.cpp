// H.248 line and profile handlers: digit and tone timers, line enable and registration, digit
// map match mode, RTP port range, fax and voice-band data, caller id, read-only profile values,
// and the port status conversions.  Each handler is a descriptor; line registration and the
// statistics reset are written out.
//
// Port status record (get 12299), fields this library settles beside the session type, the
// registration text and the hook text:
//   byte 2   port status code, reported as it is by Tr104PortStatusH248 (nLocate[1] the port)
//   byte 3   service state: 0 "InService", 1 "OutOfService", 2 "Locked" (Tr104PortServiceStateH248;
//            a code outside the table reads "Unknown")
//   word 4   local RTP port of the line's session (Tr104SessionLocalRtpPortH248, get only)
//   word 8   announcement type: 0 "Local", 1 "Remote" (Tr104LineAnnounceTypeH248, get only; the
//            H.248 stack takes announcements from the controller, so the data model only reads it)
// The codec selection and list, DTMF method and digit map are served under H.248 by the
// protocol-neutral codec handlers and the SIP profile record; they have no H.248 variant here.
// The gains, echo cancellation, comfort noise and jitter-buffer target live in the voice profile
// bound to the line's port, as under SIP: their H.248 variants are the same profile values.
#include "tr104/h248/h248_internal.h"
#include "tr104/core/voice_profile.h"

namespace tr104::h248 {
namespace {

using core::intValue;
using core::putInt;
using core::say;

constexpr Signature pw(const char *name, const char *valueName, Access access = Access::GetSet) {
    return Signature{name, valueName, Locate::None, access};
}
constexpr Signature ln(const char *name, const char *valueName, Access access = Access::GetSet) {
    return Signature{name, valueName, Locate::Line, access};
}

// ---- Digit and tone timers ---------------------------------------------------------------------

constexpr const char *kDigitTimeout = "SET_DIG_TIMEOUT msg snd failed.\n";
const Block kToneTimers{sizeof(Tr104H248DigitTimerBlock), GET_H248_DIG_TIMEOUT_ID, SET_TONE_TIMEOUT_ID, kDigitTimeout};
const Block kDigitTimers{sizeof(Tr104H248DigitTimerBlock), GET_H248_DIG_TIMEOUT_ID, SET_H248_DIG_TIMEOUT_ID,
                         kDigitTimeout};

// The four tone and answer timers are seconds here and milliseconds in the voice module; the
// three digit timers are kept unscaled, as the voice module reads them.
constexpr BlockValue timer(const char *name, const char *valueName, const Block *block, uint16_t offset, uint16_t bit,
                           int high, uint32_t scale, const char *getError,
                           const char *rangeError = "set param error \n") {
    return BlockValue{pw(name, valueName), block,       offset, 4, Conv::Word, bit, 1,       high,
                      rangeError,          Where::None, scale,  0, nullptr,    0,   getError};
}
const BlockValue kDialTone =
    timer("Tr104DialToneTimerH248", "pDialTime", &kToneTimers, offsetof(Tr104H248DigitTimerBlock, unDialTone), 0x1, 254,
          1000, "get dialTone error.\n", "set param error, pDialTime[%d].\n");
const BlockValue kNoAnswer =
    timer("Tr104NoAnswerTimerH248", "pNoAnswerTime", &kToneTimers, offsetof(Tr104H248DigitTimerBlock, unNoAnswer), 0x2,
          254, 1000, "get noAnswerTime error.\n");
const BlockValue kBusyTone =
    timer("Tr104BusyToneTimerH248", "pBusyToneTime", &kToneTimers, offsetof(Tr104H248DigitTimerBlock, unBusyTone), 0x10,
          254, 1000, "get busyToneTime error.\n");
const BlockValue kHangingReminder =
    timer("Tr104HangingReminderToneTimerH248", "pHangingReminderTime", &kToneTimers,
          offsetof(Tr104H248DigitTimerBlock, unHangingReminder), 0x20, 254, 1000, "get hangingReminderTime error.\n");
const BlockValue kStartDigit =
    timer("Tr104StartDigitTimerH248", "pStartTime", &kDigitTimers, offsetof(Tr104H248DigitTimerBlock, unStartDigit),
          0x40, 254, 1, "get startTime error.\n");
const BlockValue kShortDigit =
    timer("Tr104ShortDigitTimerH248", "pShortTime", &kDigitTimers, offsetof(Tr104H248DigitTimerBlock, unShortDigit),
          0x80, 65535, 1, "get shortTime error.\n");
const BlockValue kLongDigit =
    timer("Tr104LongDigitTimerH248", "pLongTime", &kDigitTimers, offsetof(Tr104H248DigitTimerBlock, unLongDigit), 0x100,
          65535, 1, "get longTime error.\n");

// ---- Line enable, match mode, RTP ports, caller id ---------------------------------------------

const TextCode kEnableWords[] = {{"Disabled", 0}, {"Enabled", 1}};
const TextCode kMatchModes[] = {{"Max", 0}, {"Min", 1}};
// A code other than 0 and 8 reads "DTMF".
const TextCode kCallerIdModes[] = {{"FSK", 0}, {"DTMF", 8}};

const Block kLineEnableBlock{sizeof(Tr104H248LineEnableBlock), GET_H248_LINE_ENABLE_ID, SET_H248_LINE_ENABLE_ID,
                             "SET_LINE_ENABLE_ID msg snd failed.\n"};
const BlockValue kLineEnable{ln("Tr104LineEnableH248", "pLineEnable"),
                             &kLineEnableBlock,
                             offsetof(Tr104H248LineEnableBlock, unEnable),
                             4,
                             Conv::Codes,
                             0,
                             0,
                             0,
                             "line enable param error.\n",
                             Where::Line,
                             1,
                             0,
                             kEnableWords,
                             2,
                             "get Line Enable error.\n"};
const Block kMatchModeBlock{sizeof(Tr104H248MatchModeBlock), GET_H248_MATCH_MODE_ID, SET_H248_MATCH_MODE_ID,
                            "SET_DigitMapMatchMode_ID msg snd failed.\n"};
const BlockValue kMatchMode{pw("Tr104ProfileDigitMapMatchModeH248", "pMatchMode"),
                            &kMatchModeBlock,
                            offsetof(Tr104H248MatchModeBlock, unMatchMode),
                            4,
                            Conv::Codes,
                            0,
                            0,
                            0,
                            "param error.\n",
                            Where::None,
                            1,
                            0,
                            kMatchModes,
                            2,
                            "get DigitMapMatchMode error.\n"};
const Block kMinPortBlock{sizeof(Tr104H248RtpPortBlock), GET_RTP_LOCAL_PORT_ID, SET_RTP_LOCAL_PORT_ID,
                          "SET_MIN_LOCAL_PORT_ID msg snd failed.\n"};
const Block kMaxPortBlock{sizeof(Tr104H248RtpPortBlock), GET_RTP_LOCAL_PORT_ID, SET_RTP_LOCAL_PORT_ID,
                          "SET_MAX_LOCAL_PORT_ID msg snd failed.\n"};
// A set reads both ports and sends them back with one changed.
const BlockValue kRtpMinPort{pw("Tr104RtpMinLocalPortH248", "pMinLocalPort"),
                             &kMinPortBlock,
                             0,
                             4,
                             Conv::Word,
                             0,
                             0,
                             65535,
                             "param error, pMinLocalPort [%d] is error\n",
                             Where::None,
                             1,
                             0,
                             nullptr,
                             0,
                             "get MinLocalPort error.\n",
                             "get MinLocalPort [%d] \n",
                             true};
const BlockValue kRtpMaxPort{pw("Tr104RtpMaxLocalPortH248", "pMaxLocalPort"),
                             &kMaxPortBlock,
                             4,
                             4,
                             Conv::Word,
                             0,
                             0,
                             65535,
                             "param error, pMaxLocalPort [%d] is error\n",
                             Where::None,
                             1,
                             0,
                             nullptr,
                             0,
                             "get MaxLocalPort error.\n",
                             "get MaxLocalPort [%d] \n",
                             true};
const Block kCallerIdBlock{sizeof(Tr104H248CallerIdBlock), GET_CALLID_PARAM, SET_CALLID_PARAM,
                           "send msg SET_CALLID_PARAM failed\n"};
const BlockValue kCallerIdMode{pw("Tr104CallerIdModeH248", "pCallerIdMode"),
                               &kCallerIdBlock,
                               offsetof(Tr104H248CallerIdBlock, unMode),
                               4,
                               Conv::Codes,
                               0x2,
                               0,
                               0,
                               "param error, pCallerIdMode[%s]\n",
                               Where::None,
                               1,
                               0,
                               kCallerIdModes,
                               2,
                               "get caller id mode error.\n"};

// ---- Fax and voice-band data: the mask names the one field a request changes --------------------

constexpr BlockValue fax(const char *name, const char *valueName, uint16_t offset, uint16_t mask, Conv conv, int low,
                         int high, const char *rangeError, const char *getError, const TextCode *allowed = nullptr,
                         uint8_t allowedCount = 0) {
    // One block per field: each reports its own send failure.
    return BlockValue{pw(name, valueName), nullptr,     offset, 4, conv,    mask,         low,     high,
                      rangeError,          Where::None, 1,      0, allowed, allowedCount, getError};
}
constexpr Block faxBlock(const char *setError) {
    return Block{sizeof(Tr104H248FaxBlock), GET_H248_FAX_MODE_ID, SET_H248_FAX_MODE_ID, setError};
}
const Block kFaxMode = faxBlock("SET_FAX_MODE_ID msg snd failed.\n");
const Block kVbdEnableBlock = faxBlock("config vbd enable msg snd failed.\n");
const Block kVbdTxBlock = faxBlock("config vbd send packet interval msg snd failed.\n");
const Block kVbdRxBlock = faxBlock("config vbd recv packet interval msg snd failed.\n");
const Block kVbdCodecBlock = faxBlock("config vbd codec msg snd failed.\n");
const TextCode kVbdCodecs[] = {{"", 0}, {"", 4}, {"", 8}, {"", 18}, {"", 255}};

constexpr BlockValue with(BlockValue v, const Block *block) {
    v.block = block;
    return v;
}
const BlockValue kFaxCtrlMode =
    with(fax("Tr104FaxCtrlModeH248", "pFaxCtrlMode", offsetof(Tr104H248FaxBlock, unFaxCtrlMode), 0x400, Conv::Word, 0,
             2, "set FaxCtrlMode param *pFaxCtrlMode=%d(0~2)error \n", "get FaxCtrlMode error \n"),
         &kFaxMode);
const BlockValue kEventDetect = with(
    fax("Tr104FaxT38EventDetectModeH248", "pDetectMode", offsetof(Tr104H248FaxBlock, unEventDetect), 0x4, Conv::PlusOne,
        1, 3, "set EventDetectMode param *pDetectMode=%d(1~3)error \n", "get EventDetectMode error \n"),
    &kFaxMode);
const BlockValue kVbdEnable =
    with(fax("Tr104VbdEnableH248", "pVbdEnable", offsetof(Tr104H248FaxBlock, unVbdEnable), 0x8, Conv::Word, 0, 1,
             "set VbdEnable param *pVbdEnable=%d(0~1)error \n", "get VbdEnable error \n"),
         &kVbdEnableBlock);
// Packet intervals of 10 to 60 ms, as the voice module's codecs packetise.
const BlockValue kVbdTxInterval =
    with(fax("Tr104VbdTxIntervalH248", "pVbdTxInterval", offsetof(Tr104H248FaxBlock, unVbdTxInterval), 0x10, Conv::Word,
             10, 60, "*pVbdTxInterval [%d]  error \n", "get VbdTxInterval error \n"),
         &kVbdTxBlock);
const BlockValue kVbdRxInterval =
    with(fax("Tr104VbdRxIntervalH248", "pVbdRxInterval", offsetof(Tr104H248FaxBlock, unVbdRxInterval), 0x20, Conv::Word,
             10, 60, "*pVbdRxInterval [%d]  error \n", "get VbdRxInterval error \n"),
         &kVbdRxBlock);
const BlockValue kVbdCodec =
    with(fax("Tr104VbdCodecH248", "pVbdCodec", offsetof(Tr104H248FaxBlock, unVbdCodec), 0x40, Conv::Word, 0, 255,
             "pVbdCodec error [%d] \n", "get vbd codec error \n", kVbdCodecs, 5),
         &kVbdCodecBlock);

// ---- Read-only profile values: a word under its own get command ---------------------------------

constexpr Block readOnly(uint16_t cmd) { return Block{4, cmd, 0, nullptr}; }
const Block kMaxSessionsLine = readOnly(GET_H248_MAX_SESSIONS_PER_LINE_ID);
const Block kMaxSessionsAll = readOnly(GET_H248_MAX_SESSIONS_ALL_LINES_ID);
const Block kRtcp = readOnly(GET_H248_RTCP_FLAG_ID);
const Block kRtpRedundancy = readOnly(GET_H248_RTP_REDUNDANCY_FLAG_ID);
const Block kVlanTagCoupled = readOnly(GET_H248_VLAN_TAG_COUPLED_FLAG_ID);
const Block kNumberOfLines = readOnly(GET_H248_NUMBER_OF_LINES_ID);
constexpr BlockValue readOnlyValue(const char *name, const char *valueName, const Block *block, const char *getError) {
    return BlockValue{pw(name, valueName, Access::GetOnly),
                      block,
                      0,
                      4,
                      Conv::Word,
                      0,
                      0,
                      0,
                      nullptr,
                      Where::None,
                      1,
                      0,
                      nullptr,
                      0,
                      getError};
}
const BlockValue kMaxSessionsPerLine =
    readOnlyValue("Tr104MaxSessionsPerLineH248", "pMaxSessions", &kMaxSessionsLine, "getMaxSessionsPerLine error \n");
const BlockValue kMaxSessionsAllLines =
    readOnlyValue("Tr104MaxSessionsAllLinesH248", "pMaxSessions", &kMaxSessionsAll, "getMaxSessionsAllLines error \n");
const BlockValue kRtcpFlag = readOnlyValue("Tr104RTCPFlagH248", "pRTCPFlag", &kRtcp, "getRTCPFlag error \n");
const BlockValue kRtpRedundancyFlag =
    readOnlyValue("Tr104RTPRedundancyFlagH248", "pRTPRedundancyFlag", &kRtpRedundancy, "getRTPRedundancyFlag error \n");
const BlockValue kVlanTagCoupledFlag = readOnlyValue("Tr104VlanTagCoupledFlagH248", "pVlanTagCoupledFlag",
                                                     &kVlanTagCoupled, "getVlanTagCoupledFlag error \n");
const BlockValue kProfileNumberOfLines =
    readOnlyValue("Tr104ProfileNumberOfLinesH248", "pNumberOfLines", &kNumberOfLines, "getNumberOfLines error \n");

// ---- Port status conversions -------------------------------------------------------------------

const Block kPortStatus{sizeof(Tr104H248PortStatusBlock), GET_H248_PORT_STATUS_ID, 0, nullptr};
const TextCode kServiceStates[] = {{"InService", 0}, {"OutOfService", 1}, {"Locked", 2}, {"Unknown", -1}};
const TextCode kAnnounceTypes[] = {{"Local", 0}, {"Remote", 1}};

constexpr BlockValue status(const char *name, const char *valueName, uint16_t offset, uint8_t width, Conv conv,
                            const char *getError, const char *done = nullptr, Where where = Where::Line,
                            const TextCode *codes = nullptr, uint8_t codeCount = 0) {
    return BlockValue{Signature{name, valueName, Locate::Line, Access::GetOnly},
                      &kPortStatus,
                      offset,
                      width,
                      conv,
                      0,
                      0,
                      0,
                      nullptr,
                      where,
                      1,
                      0,
                      codes,
                      codeCount,
                      getError,
                      done};
}
constexpr uint16_t kRegState = offsetof(Tr104H248PortStatusBlock, aRegState);
const BlockValue kLineRegStatus = status("Tr104LineRegStatusH248", "pLineRegStatus", kRegState, 20, Conv::RegText,
                                         "get line[%d] register status failed.\n");
const BlockValue kLineServerStatus = status("Tr104LineServerStatusH248", "pLineServerStatus", kRegState, 20,
                                            Conv::ServerStatus, "get line[%d] server status failed.\n");
const BlockValue kLineSessionType =
    status("Tr104LineSessionTypeH248", "pLineSessionType", offsetof(Tr104H248PortStatusBlock, ucSessionType), 1,
           Conv::Byte, "get line[%d] session type failed.\n");
const BlockValue kLineHookStatus =
    status("Tr104LineHookStatusH248", "pLineHookStatus", offsetof(Tr104H248PortStatusBlock, aHookState),
           sizeof(Tr104H248PortStatusBlock::aHookState), Conv::Text, "get line[%d] Hook status failed.\n",
           "get Line [%d] Hook Status[%s]\n");
const BlockValue kPortStatusValue =
    status("Tr104PortStatusH248", "pPortStatus", offsetof(Tr104H248PortStatusBlock, ucPortState), 1, Conv::Byte,
           "get port[%d] status error\n", nullptr, Where::Port);
const BlockValue kPortServiceState =
    status("Tr104PortServiceStateH248", "pPortServiceState", offsetof(Tr104H248PortStatusBlock, ucServiceState), 1,
           Conv::Codes, "get port[%d] service state error\n", nullptr, Where::Port, kServiceStates, 4);
const BlockValue kSessionLocalRtpPort =
    status("Tr104SessionLocalRtpPortH248", "pSessionLocalRtpPort", offsetof(Tr104H248PortStatusBlock, unLocalRtpPort),
           4, Conv::Word, "get line[%d] session local rtp port failed.\n");
const BlockValue kLineAnnounceType =
    status("Tr104LineAnnounceTypeH248", "pLineAnnounceType", offsetof(Tr104H248PortStatusBlock, unAnnounceType), 4,
           Conv::Codes, "get line[%d] announce type failed.\n", nullptr, Where::Line, kAnnounceTypes, 2);

const Signature kLineRegister = ln("Tr104LineRegisterH248", "pLineRegister", Access::SetOnly);
const Signature kResetStatistics = ln("Tr104LineResetStatisticsFlagH248", "pLineResetStatisticsFlag");

}  // namespace
}  // namespace tr104::h248

using namespace tr104::h248;

TR104_API int Tr104StartDigitTimerH248(int nFlag, void *pValue) {
    return blockValue(kStartDigit, nFlag, pValue, nullptr);
}
TR104_API int Tr104ShortDigitTimerH248(int nFlag, void *pValue) {
    return blockValue(kShortDigit, nFlag, pValue, nullptr);
}
TR104_API int Tr104LongDigitTimerH248(int nFlag, void *pValue) {
    return blockValue(kLongDigit, nFlag, pValue, nullptr);
}
TR104_API int Tr104HangingReminderToneTimerH248(int nFlag, void *pValue) {
    return blockValue(kHangingReminder, nFlag, pValue, nullptr);
}
TR104_API int Tr104BusyToneTimerH248(int nFlag, void *pValue) { return blockValue(kBusyTone, nFlag, pValue, nullptr); }
TR104_API int Tr104DialToneTimerH248(int nFlag, void *pValue) { return blockValue(kDialTone, nFlag, pValue, nullptr); }
TR104_API int Tr104NoAnswerTimerH248(int nFlag, void *pValue) { return blockValue(kNoAnswer, nFlag, pValue, nullptr); }
TR104_API int Tr104LineEnableH248(int nFlag, void *pValue, int *nLocate) {
    return blockValue(kLineEnable, nFlag, pValue, nLocate);
}
TR104_API int Tr104ProfileDigitMapMatchModeH248(int nFlag, void *pValue) {
    return blockValue(kMatchMode, nFlag, pValue, nullptr);
}
TR104_API int Tr104RtpMinLocalPortH248(int nFlag, void *pValue) {
    return blockValue(kRtpMinPort, nFlag, pValue, nullptr);
}
TR104_API int Tr104RtpMaxLocalPortH248(int nFlag, void *pValue) {
    return blockValue(kRtpMaxPort, nFlag, pValue, nullptr);
}
TR104_API int Tr104FaxCtrlModeH248(int nFlag, void *pValue) { return blockValue(kFaxCtrlMode, nFlag, pValue, nullptr); }
TR104_API int Tr104FaxT38EventDetectModeH248(int nFlag, void *pValue) {
    return blockValue(kEventDetect, nFlag, pValue, nullptr);
}
TR104_API int Tr104VbdEnableH248(int nFlag, void *pValue) { return blockValue(kVbdEnable, nFlag, pValue, nullptr); }
TR104_API int Tr104VbdTxIntervalH248(int nFlag, void *pValue) {
    return blockValue(kVbdTxInterval, nFlag, pValue, nullptr);
}
TR104_API int Tr104VbdRxIntervalH248(int nFlag, void *pValue) {
    return blockValue(kVbdRxInterval, nFlag, pValue, nullptr);
}
TR104_API int Tr104VbdCodecH248(int nFlag, void *pValue) { return blockValue(kVbdCodec, nFlag, pValue, nullptr); }
TR104_API int Tr104CallerIdModeH248(int nFlag, void *pValue) {
    return blockValue(kCallerIdMode, nFlag, pValue, nullptr);
}
TR104_API int Tr104MaxSessionsPerLineH248(int nFlag, void *pValue) {
    return blockValue(kMaxSessionsPerLine, nFlag, pValue, nullptr);
}
TR104_API int Tr104MaxSessionsAllLinesH248(int nFlag, void *pValue) {
    return blockValue(kMaxSessionsAllLines, nFlag, pValue, nullptr);
}
TR104_API int Tr104RTCPFlagH248(int nFlag, void *pValue) { return blockValue(kRtcpFlag, nFlag, pValue, nullptr); }
TR104_API int Tr104RTPRedundancyFlagH248(int nFlag, void *pValue) {
    return blockValue(kRtpRedundancyFlag, nFlag, pValue, nullptr);
}
TR104_API int Tr104VlanTagCoupledFlagH248(int nFlag, void *pValue) {
    return blockValue(kVlanTagCoupledFlag, nFlag, pValue, nullptr);
}
TR104_API int Tr104ProfileNumberOfLinesH248(int nFlag, void *pValue) {
    return blockValue(kProfileNumberOfLines, nFlag, pValue, nullptr);
}
TR104_API int Tr104LineRegStatusH248(int nFlag, void *pValue, int *nLocate) {
    return blockValue(kLineRegStatus, nFlag, pValue, nLocate);
}
TR104_API int Tr104LineServerStatusH248(int nFlag, void *pValue, int *nLocate) {
    return blockValue(kLineServerStatus, nFlag, pValue, nLocate);
}
TR104_API int Tr104LineSessionTypeH248(int nFlag, void *pValue, int *nLocate) {
    return blockValue(kLineSessionType, nFlag, pValue, nLocate);
}
TR104_API int Tr104LineHookStatusH248(int nFlag, void *pValue, int *nLocate) {
    return blockValue(kLineHookStatus, nFlag, pValue, nLocate);
}
TR104_API int Tr104PortStatusH248(int nFlag, void *pValue, int *nLocate) {
    return blockValue(kPortStatusValue, nFlag, pValue, nLocate);
}
TR104_API int Tr104PortServiceStateH248(int nFlag, void *pValue, int *nLocate) {
    return blockValue(kPortServiceState, nFlag, pValue, nLocate);
}
TR104_API int Tr104SessionLocalRtpPortH248(int nFlag, void *pValue, int *nLocate) {
    return blockValue(kSessionLocalRtpPort, nFlag, pValue, nLocate);
}
TR104_API int Tr104LineAnnounceTypeH248(int nFlag, void *pValue, int *nLocate) {
    return blockValue(kLineAnnounceType, nFlag, pValue, nLocate);
}

// 1 registers the line, any other value unregisters it.
TR104_API int Tr104LineRegisterH248(int nFlag, void *pValue, int *nLocate) {
    using namespace tr104::core;
    if (const int rc = checkArguments(kLineRegister, nFlag, pValue, nLocate); rc != TR104_OK) {
        return rc;
    }
    const uint32_t line = static_cast<uint32_t>(lineOf(nLocate));
    const unsigned int cmd = intValue(pValue) == 1 ? REG_H248_LINE_ID : UNREG_H248_LINE_ID;
    if (sendRecord(kLineRegister.name, &line, sizeof(line), cmd) != TR104_OK) {
        say(kLineRegister.name, "register or unregister msg snd failed.\n");
        return TR104_ERR_EXCHANGE;
    }
    return TR104_OK;
}

// A get yields 0 without asking; a set of 1 resets the line's counters, any other value is
// refused.
TR104_API int Tr104LineResetStatisticsFlagH248(int nFlag, void *pValue, int *nLocate) {
    static const tr104::core::LineReset kReset{kResetStatistics, RESET_H248_LINE_STATISTICS_ID, TR104_ERR_PARAM,
                                               "line[%d] reset statistics flag msg snd failed.\n"};
    return tr104::core::resetLineStatistics(kReset, nFlag, pValue, nLocate);
}

// ---- Audio settings of the line's voice profile ------------------------------------------------

#define TR104_LINE_AUDIO_H248(name) TR104_LINE_AUDIO_VARIANT(name, H248)
TR104_LINE_AUDIO_SETTINGS(TR104_LINE_AUDIO_H248)

TR104_API int Tr104LineGainH248(int nFlag, int nDirection, void *pValue, int *nLocate) {
    return tr104::core::lineGain(__func__, nFlag, nDirection, pValue, nLocate);
}
