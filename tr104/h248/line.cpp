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

constexpr Signature ln(const char *name, const char *valueName, Access access = Access::GetSet) {
    return Signature{name, valueName, Locate::Line, access};
}

// The blocks, their tables and limits; the descriptors are the rows of tr104/catalogue/h248.toml.

// ---- Digit and tone timers ---------------------------------------------------------------------

constexpr const char *kDigitTimeout = "SET_DIG_TIMEOUT msg snd failed.\n";
const Block kToneTimers{sizeof(Tr104H248DigitTimerBlock), GET_H248_DIG_TIMEOUT_ID, SET_TONE_TIMEOUT_ID, kDigitTimeout};
const Block kDigitTimers{sizeof(Tr104H248DigitTimerBlock), GET_H248_DIG_TIMEOUT_ID, SET_H248_DIG_TIMEOUT_ID,
                         kDigitTimeout};
constexpr int kTimerMost = 254;  // the tone and answer timers and the start digit timer
constexpr int kDigitTimerMost = 65535;  // the short and long digit timers
constexpr uint32_t kMsPerSecond = 1000;

// ---- Line enable, match mode, RTP ports, caller id ---------------------------------------------

const TextCode kEnableWords[] = {{"Disabled", 0}, {"Enabled", 1}};
const TextCode kMatchModes[] = {{"Max", 0}, {"Min", 1}};
// A code other than 0 and 8 reads "DTMF".
const TextCode kCallerIdModes[] = {{"FSK", 0}, {"DTMF", 8}};

const Block kLineEnableBlock{sizeof(Tr104H248LineEnableBlock), GET_H248_LINE_ENABLE_ID, SET_H248_LINE_ENABLE_ID,
                             "SET_LINE_ENABLE_ID msg snd failed.\n"};
const Block kMatchModeBlock{sizeof(Tr104H248MatchModeBlock), GET_H248_MATCH_MODE_ID, SET_H248_MATCH_MODE_ID,
                            "SET_DigitMapMatchMode_ID msg snd failed.\n"};
const Block kMinPortBlock{sizeof(Tr104H248RtpPortBlock), GET_RTP_LOCAL_PORT_ID, SET_RTP_LOCAL_PORT_ID,
                          "SET_MIN_LOCAL_PORT_ID msg snd failed.\n"};
const Block kMaxPortBlock{sizeof(Tr104H248RtpPortBlock), GET_RTP_LOCAL_PORT_ID, SET_RTP_LOCAL_PORT_ID,
                          "SET_MAX_LOCAL_PORT_ID msg snd failed.\n"};
constexpr int kMaxPort = 65535;
const Block kCallerIdBlock{sizeof(Tr104H248CallerIdBlock), GET_CALLID_PARAM, SET_CALLID_PARAM,
                           "send msg SET_CALLID_PARAM failed\n"};

// ---- Fax and voice-band data: the mask names the one field a request changes --------------------

constexpr Block faxBlock(const char *setError) {
    return Block{sizeof(Tr104H248FaxBlock), GET_H248_FAX_MODE_ID, SET_H248_FAX_MODE_ID, setError};
}
const Block kFaxMode = faxBlock("SET_FAX_MODE_ID msg snd failed.\n");
const Block kVbdEnableBlock = faxBlock("config vbd enable msg snd failed.\n");
const Block kVbdTxBlock = faxBlock("config vbd send packet interval msg snd failed.\n");
const Block kVbdRxBlock = faxBlock("config vbd recv packet interval msg snd failed.\n");
const Block kVbdCodecBlock = faxBlock("config vbd codec msg snd failed.\n");
const TextCode kVbdCodecs[] = {{"", 0}, {"", 4}, {"", 8}, {"", 18}, {"", 255}};
// Packet intervals of 10 to 60 ms, as the voice module's codecs packetise.
constexpr int kPacketMsFewest = 10;
constexpr int kPacketMsMost = 60;

// ---- Read-only profile values: a word under its own get command ---------------------------------

static_assert(sizeof(Tr104H248WordBlock) == 4 && offsetof(Tr104H248WordBlock, unValue) == 0);
constexpr Block readOnly(uint16_t cmd) { return Block{sizeof(Tr104H248WordBlock), cmd, 0, nullptr}; }
const Block kMaxSessionsLine = readOnly(GET_H248_MAX_SESSIONS_PER_LINE_ID);
const Block kMaxSessionsAll = readOnly(GET_H248_MAX_SESSIONS_ALL_LINES_ID);
const Block kRtcp = readOnly(GET_H248_RTCP_FLAG_ID);
const Block kRtpRedundancy = readOnly(GET_H248_RTP_REDUNDANCY_FLAG_ID);
const Block kVlanTagCoupled = readOnly(GET_H248_VLAN_TAG_COUPLED_FLAG_ID);
const Block kNumberOfLines = readOnly(GET_H248_NUMBER_OF_LINES_ID);

// ---- Port status conversions -------------------------------------------------------------------

const Block kPortStatus{sizeof(Tr104H248PortStatusBlock), GET_H248_PORT_STATUS_ID, 0, nullptr};
const TextCode kServiceStates[] = {{"InService", 0}, {"OutOfService", 1}, {"Locked", 2}, {"Unknown", -1}};
const TextCode kAnnounceTypes[] = {{"Local", 0}, {"Remote", 1}};

const Signature kLineRegister = ln("Tr104LineRegisterH248", "pLineRegister", Access::SetOnly);
const Signature kResetStatistics = ln("Tr104LineResetStatisticsFlagH248", "pLineResetStatisticsFlag");

}  // namespace
}  // namespace tr104::h248

using namespace tr104::h248;

#include "tr104/catalogue/h248_LineBlockValue.inc"
#include "tr104/catalogue/h248_ProfileBlockValue.inc"

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
