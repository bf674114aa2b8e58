// The texts the catalogue's rows give their handlers are the texts the handlers print: for a
// representative call of each shape (a read that fails, a value refused), the debug line of the
// handler carries the row's text, as committed in texts.txt.
#include <fstream>
#include <map>
#include <string>
#include <utility>

#include "sip/sip_fixture.h"
#include "tr104/device.h"
#include "tr104/h248.h"
#include "tr104/linetest.h"
#include "tr104/netcfg.h"
#include "tr104/sip.h"
#include "tr104/statistics.h"

namespace {

using siptest::debugOutput;
using siptest::Handler;
using siptest::printed;

// texts.txt: handler, field, text (tab-separated, \n a newline).
std::map<std::pair<std::string, std::string>, std::string> committedTexts() {
    std::map<std::pair<std::string, std::string>, std::string> texts;
    std::ifstream in(TR104_CATALOGUE_TEXTS);
    std::string line;
    while (std::getline(in, line)) {
        if (line.empty() || line[0] == '#') {
            continue;
        }
        const size_t a = line.find('\t');
        const size_t b = line.find('\t', a + 1);
        std::string text;
        for (size_t i = b + 1; i < line.size(); ++i) {
            if (line[i] == '\\' && i + 1 < line.size()) {
                const char c = line[++i];
                text += c == 'n' ? '\n' : c == 't' ? '\t' : c == 'r' ? '\r' : c;
            } else {
                text += line[i];
            }
        }
        texts[{line.substr(0, a), line.substr(a + 1, b - a - 1)}] = text;
    }
    return texts;
}

// The text as printed: its one conversion (%d or %s) replaced by the call's argument.
std::string formatted(std::string text, const std::string &argument) {
    for (const char *conversion : {"%d", "%s"}) {
        if (const size_t at = text.find(conversion); at != std::string::npos) {
            text.replace(at, 2, argument);
        }
    }
    return text;
}

enum class Call { GetFails, SetInt, SetText };

struct Case {
    const char *handler;
    Handler fn;
    const char *field;  // the row's field whose text the call prints
    Call call;
    uint32_t failingCmd;  // GetFails: the command the voice module refuses
    int value;  // SetInt
    const char *text;  // SetText
    const char *argument;  // what the text's conversion shows
    int rc;
};

// A handler without nLocate, called as the others.
int telEventNegoState(int nFlag, void *pValue, int *) { return Tr104TelEvent2833NegoState(nFlag, pValue); }
int sendRtpPackets(int nFlag, void *pValue, int *) { return Tr104SendRtpPackets(nFlag, pValue); }
int pppoeEnable(int nFlag, void *pValue, int *) { return Tr104PPPoEEnable(nFlag, pValue); }
int profileNumber(int nFlag, void *pValue, int *) { return Tr104ProfileNumber(nFlag, pValue); }
int timeEnable(int nFlag, void *pValue, int *) { return Tr104TimeEnable(nFlag, pValue); }
int ntpServer2(int nFlag, void *pValue, int *) { return Tr104TimeNtpServer2(nFlag, pValue); }
int netMask(int nFlag, void *pValue, int *) { return Tr104NetMaskConfig(nFlag, pValue); }
int ignoreClearCfg(int nFlag, void *pValue, int *) { return Tr104PrivateIgnoreClearCfgEnable(nFlag, pValue); }
// A number and its type, as the number tables take them.
int iptNumber(int nFlag, void *pValue, int *nLocate) {
    char type[] = "1";
    return Tr104IptParamConfig(nFlag, static_cast<char *>(pValue), type, nLocate);
}

class CatalogueTexts : public siptest::SipTest {};

TEST_F(CatalogueTexts, EveryShapePrintsItsRowsTexts) {
    const auto texts = committedTexts();
    ASSERT_FALSE(texts.empty()) << TR104_CATALOGUE_TEXTS;
    const std::string tooLong(66, '5');
    const Case cases[] = {
        // LineValue: a read refused, a text too long, a word with no meaning
        {"Tr104LineHotlineNumSip", Tr104LineHotlineNumSip, "getError", Call::GetFails, GET_HOTLINE_NUM_ID, 0, nullptr,
         "1", -1},
        {"Tr104LineHotlineNumSip", Tr104LineHotlineNumSip, "valueError", Call::SetText, 0, 0, tooLong.c_str(), "", -2},
        {"Tr104LineEnableSip", Tr104LineEnableSip, "valueError", Call::SetText, 0, 0, "On", "", -2},
        {"Tr104PortStatusSip", Tr104PortStatusSip, "getError", Call::GetFails, GET_PORT_STATUS_ID, 0, nullptr, "1", -1},
        // ProfileValue: a method name refused, a word out of range, a read refused
        {"Tr104ProfileDTMFMethodSip", Tr104ProfileDTMFMethodSip, "rangeBound", Call::SetText, 0, 0, "Tone", "Tone", -2},
        {"Tr104FaxT38HighSpeedRedundancySip", Tr104FaxT38HighSpeedRedundancySip, "rangeBound", Call::SetInt, 0, 4,
         nullptr, "4", -2},
        // ProfileWide: a range, a name, a timer's read refused
        {"Tr104VbdEnableSip", Tr104VbdEnableSip, "rangeError", Call::SetInt, 0, 2, nullptr, "2", -2},
        {"Tr104ProfileFaxPassThroughSip", Tr104ProfileFaxPassThroughSip, "rangeError", Call::SetText, 0, 0, "Never",
         "Never", -2},
        {"Tr104NoAnswerTimerSip", Tr104NoAnswerTimerSip, "getError", Call::GetFails, GET_SIG_TIMEOUT_ID, 0, nullptr, "",
         -1},
        // ProfileRead: a word and a text the voice module does not give
        {"Tr104RTCPFlagSip", Tr104RTCPFlagSip, "error", Call::GetFails, GET_RTCP_FLAG_ID, 0, nullptr, "", -1},
        {"Tr104ProfileWanNameSip", Tr104ProfileWanNameSip, "error", Call::GetFails, GET_WAN_NAME_ID, 0, nullptr, "",
         -1},
        // TelEvent: a read refused, a value out of range
        {"Tr104TelEvent2833NegoState", telEventNegoState, "getError", Call::GetFails, TR104_TEL_EVENT_GET_CMD, 0,
         nullptr, "", -1},
        {"Tr104TelEvent2833NegoState", telEventNegoState, "rangeError", Call::SetInt, 0, 2, nullptr, "2", -2},
        // RtpValue: a line's block refused; RtpProfileSum: one of its lines refused
        {"Tr104LineSendRtpPackets", Tr104LineSendRtpPackets, "getError", Call::GetFails, TR104_RTP_STATS_CMD, 0,
         nullptr, "1", -1},
        {"Tr104SendRtpPackets", sendRtpPackets, "failed", Call::GetFails, TR104_RTP_STATS_CMD, 0, nullptr, "", -1},
        // MaskedField: a flag out of range
        {"Tr104PPPoEEnable", pppoeEnable, "valueError", Call::SetInt, 0, 2, nullptr, "2", -2},
        // BlockValue: the statistics block refused
        {"Tr104LineTotalCallsTimeH248", Tr104LineTotalCallsTimeH248, "getError", Call::GetFails, GET_H248_STATISTICS_ID,
         0, nullptr, "1", -1},
        // Held: a boolean setting given another value
        {"Tr104PhysicalInterfaceReversePoleH248", Tr104PhysicalInterfaceReversePoleH248, "rangeError", Call::SetInt, 0,
         2, nullptr, "", -2},
        // Capability: the voice module's answer refused
        {"Tr104ProfileNumber", profileNumber, "failure", Call::GetFails, TR104_GET_PROFILE_NUMBER_ID, 0, nullptr, "",
         -1},
        // SmallValue, TimeText, IpWord: a read refused (server 2's names server 1); NumberTable: an add
        // names its number
        {"Tr104TimeEnable", timeEnable, "getError", Call::GetFails, TR104_GET_NTP_ENABLE_ID, 0, nullptr, "", -1},
        {"Tr104TimeNtpServer2", ntpServer2, "getError", Call::GetFails, TR104_GET_NTP_SERVER2_ID, 0, nullptr, "", -1},
        {"Tr104NetMaskConfig", netMask, "getError", Call::GetFails, TR104_GET_DEVICE_IP_ID, 0, nullptr, "", -1},
        // DeviceSwitch: a read refused
        {"Tr104PrivateIgnoreClearCfgEnable", ignoreClearCfg, "failure", Call::GetFails,
         GET_PRI_PROTOCOL_IGNORE_CLR_CFG_ID, 0, nullptr, "", -1},
        {"Tr104IptParamConfig", iptNumber, "numberName", Call::SetText, 0, 0, "123", "", 0},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(std::string(c.handler) + " " + c.field);
        const auto row = texts.find({c.handler, c.field});
        ASSERT_NE(row, texts.end()) << "no such text in " << TR104_CATALOGUE_TEXTS;
        emulator.setFault(0, {});
        std::string out;
        switch (c.call) {
        case Call::GetFails:
            emulator.setFault(c.failingCmd, {vmemu::Fault::FailureMarker, 0, -1});
            out = debugOutput([&] { EXPECT_EQ(getText(c.fn, 1), "<" + std::to_string(c.rc) + ">"); });
            emulator.setFault(c.failingCmd, {});
            break;
        case Call::SetInt: out = debugOutput([&] { EXPECT_EQ(setInt(c.fn, 1, c.value), c.rc); }); break;
        case Call::SetText: out = debugOutput([&] { EXPECT_EQ(setText(c.fn, 1, c.text), c.rc); }); break;
        }
        EXPECT_TRUE(printed(out, c.handler, formatted(row->second, c.argument))) << out;
    }
}

}  // namespace
