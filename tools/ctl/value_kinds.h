// What kind of value each handler takes, so that the client can pass it the right pValue.
//
// Entries name the parameter without a protocol ending: "Tr104LineEnable" covers the wrapper
// and its variants Tr104LineEnableSip and Tr104LineEnableH248.  Areas that add handlers add
// their rows here.
#pragma once

#include <array>
#include <cstddef>
#include <cstring>
#include <span>
#include <string>

namespace tr104ctl {

enum class ValueKind {
    Integer,    // pValue points to a 32-bit integer
    Text,       // pValue points to a character buffer
    Float,      // pValue points to a single-precision float
    Directed,   // Tr104LineGainSip: an integer direction before pValue (non-zero receive)
    Custom,     // its own arguments: the row's `custom` calls it
};

// What a handler with its own calling convention (several value pointers, say) did.
struct CustomResult {
    bool called = false;  // false: the request was wrong, message says why
    std::string message;
    int rc = 0;
    std::string shown;    // a get's value, rendered
};
// Calls `handler` (the exported function, resolved by name) with the value text of a set, and
// renders what a get returned.
using CustomCall = CustomResult (*)(void *handler, bool set, const std::string &value, int *nLocate);

struct HandlerKind {
    const char *name;
    ValueKind kind;
    size_t textSize;  // Text: the parameter's buffer size (what the agent would pass)
    // The slot of the deferred parameter buffer a set stages its value in; -1: a set is sent
    // at once.  A staged value reaches the voice module only when its group completes or the
    // slot's timer runs out, so the client keeps running until the slot is applied.
    int deferredSlot = -1;
    // Handlers whose arguments are not (nFlag, pValue, nLocate): how to call them.
    CustomCall custom = nullptr;
};

constexpr size_t kDefaultText = 256;
// Server address and line identity texts: at most 65 characters and a terminator.
constexpr size_t kAddressText = 66;

inline constexpr HandlerKind kHandlerKinds[] = {
    // Protocol
    {"Tr104VoiceProtocolType", ValueKind::Text, 6},
    // Line record
    {"Tr104LineEnable", ValueKind::Text, 16},
    {"Tr104LineRegister", ValueKind::Integer, 0},
    {"Tr104LineDisplayName", ValueKind::Text, 65},
    {"Tr104LineHotlineNum", ValueKind::Text, kDefaultText},
    {"Tr104LineHotlineDelay", ValueKind::Integer, 0},
    {"Tr104LineJitterBufferMode", ValueKind::Text, 16},
    {"Tr104LineMaxJitterBufferValue", ValueKind::Integer, 0},
    {"Tr104LineMinJitterBufferValue", ValueKind::Integer, 0},
    // Port status
    {"Tr104LineRegStatus", ValueKind::Text, 32},
    {"Tr104LineServerStatus", ValueKind::Integer, 0},
    {"Tr104PortStatus", ValueKind::Integer, 0},
    {"Tr104LineHookStatus", ValueKind::Text, 32},
    {"Tr104LineCallStatus", ValueKind::Text, 32},
    {"Tr104LineSessionType", ValueKind::Integer, 0},
    // Voice profile of a line
    {"Tr104LineTransmitGain", ValueKind::Integer, 0},
    {"Tr104LineReceiveGain", ValueKind::Integer, 0},
    {"Tr104LineGain", ValueKind::Directed, 0},
    {"Tr104LineEchoCancelFlag", ValueKind::Integer, 0},
    {"Tr104LineComfortNoiseFlag", ValueKind::Integer, 0},
    {"Tr104LineJitterBufferTarget", ValueKind::Integer, 0},
    {"Tr104ProfileDTMFMethod", ValueKind::Text, 32},
    // Line features
    {"Tr104LineCallWaitingFlag", ValueKind::Integer, 0},
    {"Tr104LineCall3wayFlag", ValueKind::Integer, 0},
    {"Tr104LineMaxSessions", ValueKind::Integer, 0},
    {"Tr104LineCallerIdFlag", ValueKind::Integer, 0},
    {"Tr104CallerIdMode", ValueKind::Text, 16},
    {"Tr104CallerIdFormat", ValueKind::Integer, 0},
    // Timers (seconds) and digit timers
    {"Tr104StartDigitTimer", ValueKind::Integer, 0},
    {"Tr104DialToneTimer", ValueKind::Integer, 0},
    {"Tr104NoAnswerTimer", ValueKind::Integer, 0},
    {"Tr104BusyToneTimer", ValueKind::Integer, 0},
    {"Tr104HangingReminderToneTimer", ValueKind::Integer, 0},
    {"Tr104CallWaitingRejectTimer", ValueKind::Integer, 0},
    {"Tr104ShortDigitTimer", ValueKind::Integer, 0},
    {"Tr104LongDigitTimer", ValueKind::Integer, 0},
    // Digit map
    {"Tr104ProfileDigitMapEnable", ValueKind::Integer, 0},
    {"Tr104ProfileDigitMapMatchMode", ValueKind::Text, 8},
    {"Tr104ProfileDigitMapString", ValueKind::Text, 2048},
    // Statistics reset and line swap
    {"Tr104LineResetStatisticsFlag", ValueKind::Integer, 0},
    {"Tr104PhyReferenceList", ValueKind::Text, 32},
    // Read-only profile values
    {"Tr104MaxSessionsPerLine", ValueKind::Integer, 0},
    {"Tr104MaxSessionsAllLines", ValueKind::Integer, 0},
    {"Tr104RTCPFlag", ValueKind::Integer, 0},
    {"Tr104RTPRedundancyFlag", ValueKind::Integer, 0},
    {"Tr104VlanTagCoupledFlag", ValueKind::Integer, 0},
    {"Tr104FaxT38Flag", ValueKind::Integer, 0},
    {"Tr104FaxPassThroughFlag", ValueKind::Integer, 0},
    {"Tr104ModemPassThroughFlag", ValueKind::Integer, 0},
    {"Tr104DigitMapFlag", ValueKind::Integer, 0},
    {"Tr104NumberingPlanFlag", ValueKind::Integer, 0},
    {"Tr104ProfileNumberOfLines", ValueKind::Integer, 0},
    {"Tr104ProfileWanName", ValueKind::Text, 64},
    // Codecs
    {"Tr104LineCodecList", ValueKind::Text, kDefaultText},
    // Line identity; user name and password travel together (deferred slot 5)
    {"Tr104LineTelNum", ValueKind::Text, kAddressText},
    {"Tr104LineURI", ValueKind::Text, kAddressText},
    {"Tr104LineAuthUserName", ValueKind::Text, kAddressText, 5},
    {"Tr104LineAuthPassword", ValueKind::Text, kAddressText, 5},
    {"Tr104LineAuthUserNameAndURIForTr069", ValueKind::Text, kAddressText, 5},
    // SIP servers: address and port of each server travel together (one deferred slot each)
    {"Tr104SipRegistrarServerIp", ValueKind::Text, kAddressText, 1},
    {"Tr104SipRegistrarServerPort", ValueKind::Integer, 0, 1},
    {"Tr104SipSecondaryRegServerIp", ValueKind::Text, kAddressText, 2},
    {"Tr104SipSecondaryRegServerPort", ValueKind::Integer, 0, 2},
    {"Tr104SipProxyServerIp", ValueKind::Text, kAddressText, 3},
    {"Tr104SipProxyServerPort", ValueKind::Integer, 0, 3},
    {"Tr104SipSecondaryProxyServerIp", ValueKind::Text, kAddressText, 4},
    {"Tr104SipSecondaryProxyServerPort", ValueKind::Integer, 0, 4},
    {"Tr104SipOutboundProxyIp", ValueKind::Text, kAddressText, 8},
    {"Tr104SipOutboundProxyPort", ValueKind::Integer, 0, 8},
    {"Tr104SipSecondaryOutboundProxyIp", ValueKind::Text, kAddressText, 9},
    {"Tr104SipSecondaryOutboundProxyPort", ValueKind::Integer, 0, 9},
    {"Tr104ActiveSipProxyServer", ValueKind::Text, kAddressText},
    // Kept in the library; a get copies four bytes
    {"Tr104SipProxyServerTransport", ValueKind::Text, 5},
    // Fax: T.38 of the line's profile (bit/s, "Local"/"Network") and the profile-wide fax modes
    {"Tr104FaxT38Enable", ValueKind::Integer, 0},
    {"Tr104FaxT38BitRate", ValueKind::Integer, 0},
    {"Tr104FaxT38TCFMethod", ValueKind::Text, 16},
    {"Tr104FaxT38HighSpeedRedundancy", ValueKind::Integer, 0},
    {"Tr104FaxT38LowSpeedRedundancy", ValueKind::Integer, 0},
    {"Tr104FaxT38PortAdd2", ValueKind::Integer, 0},
    {"Tr104ProfileFaxPassThrough", ValueKind::Text, 16},
    {"Tr104FaxProcessMode", ValueKind::Integer, 0},
    {"Tr104T38SDPType", ValueKind::Integer, 0},
    {"Tr104FaxModemAttrFlag", ValueKind::Integer, 0},
    {"Tr104EchoCancelAttrFlag", ValueKind::Integer, 0},
    {"Tr104SilenceSuppAttrFlag", ValueKind::Integer, 0},
    // Session of a line, keep-alive (SIP variants left to the embedding process)
    {"Tr104FarEndIPAddress", ValueKind::Text, 64},
    {"Tr104FarEndUDPPort", ValueKind::Integer, 0},
    {"Tr104KeepAliveMode", ValueKind::Integer, 0},
};

}  // namespace tr104ctl

// Each area of the library lists its handlers in a table of its own.
#include "ctl/kinds/h248.h"
#include "ctl/kinds/linetest.h"
#include "ctl/kinds/device.h"
#include "ctl/kinds/netcfg.h"
#include "ctl/kinds/stats.h"

namespace tr104ctl {

// Every table the client knows, the base table first.
inline constexpr std::array<std::span<const HandlerKind>, 6> kKindTables = {
    std::span<const HandlerKind>(kHandlerKinds), kH248Kinds, kLinetestKinds, kNetcfgKinds, kStatsKinds, kDeviceKinds};

// The parameter name without its protocol ending.
inline std::string baseName(const std::string &name) {
    for (const char *suffix : {"Sip", "H248"}) {
        const size_t len = std::strlen(suffix);
        if (name.size() > len && name.compare(name.size() - len, len, suffix) == 0) {
            return name.substr(0, name.size() - len);
        }
    }
    return name;
}

// The row of a handler or of one of its variants; nullptr when the client does not know it.
inline const HandlerKind *findKind(const std::string &name) {
    for (const std::string &candidate : {name, baseName(name)}) {
        for (std::span<const HandlerKind> table : kKindTables) {
            for (const HandlerKind &row : table) {
                if (candidate == row.name) {
                    return &row;
                }
            }
        }
    }
    return nullptr;
}

inline const char *kindName(ValueKind kind) {
    switch (kind) {
        case ValueKind::Integer:
            return "integer";
        case ValueKind::Text:
            return "text";
        case ValueKind::Float:
            return "float";
        case ValueKind::Directed:
            return "integer with a direction (--direction 0 transmit, 1 receive)";
        case ValueKind::Custom:
            return "several values";
    }
    return "?";
}

}  // namespace tr104ctl
