// The voice module's statistics: RTP statistics per line and per 15-minute interval, SIP call
// counters per line (cleared by the line's statistics reset), and the telephone-event settings
// (a set changes only the words its mask names).
#include <ctime>
#include <sstream>

#include "emulator/stats_emulator.h"
#include "tr104/catalogue/field_lists.h"
#include "tr104/sip.h"

namespace vmemu::stats {
namespace {

Field key(Field f, const char *name) {
    f.name = name;
    return f;
}

RecordFamily family(const char *name, uint32_t length, std::vector<Field> keys, uint32_t getCmd) {
    RecordFamily f;
    f.name = name;
    f.length = length;
    f.keys = std::move(keys);
    f.getCmds = {getCmd};
    return f;
}

void installStatsFamilies(VoiceModuleEmulator &e) {
    e.addFamily(family(kRtpFamily, sizeof(Tr104LineRtpStatsBlock),
                       {key(VMEMU_MEMBER(Tr104LineRtpStatsBlock, unLine), "line")}, TR104_RTP_STATS_CMD));
    e.addFamily(family(kIntervalFamily, sizeof(Tr104LineRtpIntervalBlock),
                       {key(VMEMU_MEMBER(Tr104LineRtpIntervalBlock, unLine), "line"),
                        key(VMEMU_MEMBER(Tr104LineRtpIntervalBlock, unInterval), "interval")},
                       TR104_RTP_INTERVAL_CMD));
    e.addFamily(family(kSipFamily, sizeof(Tr104SipLineStatsRecord),
                       {key(VMEMU_MEMBER(Tr104SipLineStatsRecord, unLine), "line")}, TR104_SIP_LINE_STATS_CMD));
    RecordFamily events = family(kTelEventFamily, sizeof(Tr104TelEventBlock), {}, TR104_TEL_EVENT_GET_CMD);
    events.setCmds = {TR104_TEL_EVENT_SET_PAYLOAD_CMD, TR104_TEL_EVENT_SET_NEGO_CMD};
    events.mask = VMEMU_MEMBER(Tr104TelEventBlock, unMask);
    events.maskedFields = {TR104_MASKED_FIELDS_Tr104TelEventBlock(VMEMU_MASKED_FIELD)};
    e.addFamily(events);
    // A voice module starts with the usual dynamic payload types, negotiation on.
    const Tr104TelEventBlock defaults{0, 101, 100, 1, 0};
    e.put(kTelEventFamily, &defaults, sizeof(defaults));
    e.nameCommand(TR104_RTP_STATS_CMD, "GET_RTP_STATISTICS");
    e.nameCommand(TR104_RTP_INTERVAL_CMD, "GET_RTP_INTERVAL_STATISTICS");
    e.nameCommand(TR104_SIP_LINE_STATS_CMD, "GET_SIP_LINE_STATISTICS");
    e.nameCommand(TR104_TEL_EVENT_GET_CMD, "GET_TELEPHONE_EVENT");
    e.nameCommand(TR104_TEL_EVENT_SET_PAYLOAD_CMD, "SET_TELEPHONE_EVENT_PAYLOAD");
    e.nameCommand(TR104_TEL_EVENT_SET_NEGO_CMD, "SET_TELEPHONE_EVENT_NEGO");
}

FamilyRegistrar registrar(&installStatsFamilies);

template <typename T>
T stored(VoiceModuleEmulator &e, const char *name, const T &key) {
    T record = key;
    if (auto held = e.get(name, &key, sizeof(key))) {
        std::memcpy(&record, held->data(), sizeof(record));
    }
    return record;
}

// "stats call LINE SECONDS [in|out] [unanswered]", "stats show LINE", "stats reset LINE"
bool console(VoiceModuleEmulator &e, const std::string &verb, std::istream &args, std::string *out) {
    if (verb != "stats") {
        return false;
    }
    std::string what, direction, answered;
    uint32_t line = 0, seconds = 0;
    args >> what >> line;
    if (line < 1 || line > 2) {
        *out = "usage: stats call LINE SECONDS [in|out] [unanswered] | stats show LINE | stats reset LINE\n";
        return true;
    }
    if (what == "call") {
        args >> seconds >> direction >> answered;
        addCall(e, line, seconds, direction == "in", answered != "unanswered");
    } else if (what == "reset") {
        resetLine(e, line);
    } else if (what != "show") {
        *out = "unknown stats command: " + what + "\n";
        return true;
    }
    const Tr104SipLineStatsRecord s = sip(e, line);
    const Tr104LineRtpStatsBlock r = rtp(e, line);
    std::ostringstream text;
    text << "line " << line << ": calls in " << s.unInCallsReceived << "/" << s.unInCallsConnected << " out "
         << s.unOutCallsAttempted << "/" << s.unOutCallsConnected << ", call time " << s.unTotalCallTime
         << " s, rtp sent " << r.unSendPackets << " received " << r.unRcvdPackets << " lost " << r.unLostPackets
         << "\n";
    *out = text.str();
    return true;
}

ConsoleRegistrar consoleCommand(
    "stats call LINE SECONDS [in|out] [unanswered] | stats show LINE | stats reset LINE"
    "   drive the statistics",
    &console);

}  // namespace

Tr104LineRtpStatsBlock rtp(VoiceModuleEmulator &e, uint32_t line) {
    Tr104LineRtpStatsBlock key{};
    key.unLine = line;
    return stored(e, kRtpFamily, key);
}

Tr104LineRtpIntervalBlock interval(VoiceModuleEmulator &e, uint32_t line, uint32_t number) {
    Tr104LineRtpIntervalBlock key{};
    key.unLine = line;
    key.unInterval = number;
    return stored(e, kIntervalFamily, key);
}

Tr104SipLineStatsRecord sip(VoiceModuleEmulator &e, uint32_t line) {
    Tr104SipLineStatsRecord key{};
    key.unLine = line;
    return stored(e, kSipFamily, key);
}

void setRtp(VoiceModuleEmulator &e, const Tr104LineRtpStatsBlock &block) { e.put(kRtpFamily, &block, sizeof(block)); }
void setInterval(VoiceModuleEmulator &e, const Tr104LineRtpIntervalBlock &block) {
    e.put(kIntervalFamily, &block, sizeof(block));
}
void setSip(VoiceModuleEmulator &e, const Tr104SipLineStatsRecord &record) {
    e.put(kSipFamily, &record, sizeof(record));
}

void addCall(VoiceModuleEmulator &e, uint32_t line, uint32_t seconds, bool incoming, bool answered) {
    Tr104SipLineStatsRecord s = sip(e, line);
    if (incoming) {
        ++s.unInCallsReceived;
        ++s.unRxInviteReqs;
        s.unTxResponse += answered ? 3 : 2;  // trying, ringing (, ok)
        s.unInCallsAnswered += answered;
        s.unInCallsConnected += answered;
        s.unInCallsFailed += !answered;
    } else {
        ++s.unOutCallsAttempted;
        ++s.unTxInviteReqs;
        s.unRxResponse += answered ? 3 : 2;
        s.unOutCallsAnswered += answered;
        s.unOutCallsConnected += answered;
        s.unOutCallsFailed += !answered;
    }
    // The end of the call: a BYE and its answer, or a CANCEL.
    ++(incoming ? s.unRxNoninviteReqs : s.unTxNoninviteReqs);
    ++(incoming ? s.unTxResponse : s.unRxResponse);
    s.unCallSetupTime += 2;
    ++s.unPotsReleaseCount;
    s.unPotsOffHookTime += seconds + 2;
    if (answered) {
        s.unTotalCallTime += seconds;
    }
    setSip(e, s);
    if (!answered) {
        return;
    }
    constexpr uint32_t kPacketsPerSecond = 50, kPacketBytes = 172;
    const uint32_t packets = seconds * kPacketsPerSecond;
    const uint32_t lost = packets / 100;
    Tr104LineRtpStatsBlock r = rtp(e, line);
    r.unSendPackets += packets;
    r.unSendBytes += packets * kPacketBytes;
    r.unRcvdPackets += packets - lost;
    r.unRcvdBytes += (packets - lost) * kPacketBytes;
    r.unLostPackets += lost;
    r.unLostPercent =
        r.unRcvdPackets + r.unLostPackets == 0 ? 0 : 100 * r.unLostPackets / (r.unRcvdPackets + r.unLostPackets);
    r.unJitter = 12;
    r.unFarEndJitter = 14;
    r.unStreamSpeed = 64;
    r.unNetworkDelay = 20;
    r.unMaxRtcpTime = 5000;
    setRtp(e, r);
    Tr104LineRtpIntervalBlock i = interval(e, line, 0);
    i.unEndTime = static_cast<uint32_t>(std::time(nullptr));
    i.unRcvdPackets += packets - lost;
    i.unLostPackets += lost;
    i.unMaxJitter = 18;
    i.unMaxRtcpTime = 5000;
    setInterval(e, i);
}

void resetLine(VoiceModuleEmulator &e, uint32_t line) {
    Tr104SipLineStatsRecord s{};
    s.unLine = line;
    setSip(e, s);
    Tr104LineRtpStatsBlock r{};
    r.unLine = line;
    setRtp(e, r);
}

}  // namespace vmemu::stats
