// The voice network area of the client: `tr104ctl net` (the voice interface's settings on one
// screen) and the demo's section on them.

#include <cstdio>
#include <iterator>
#include <optional>
#include <span>
#include <string>
#include <thread>
#include <vector>

#include "ctl/areas.h"
#include "ctl/invoke.h"
#include "ctl/startup.h"
#include "ctl/steps.h"
#include "emulator/netcfg_emulator.h"

namespace tr104ctl {

namespace {

struct Row {
    const char *handler;
    const char *label;
    int line;  // nLocate[2]: the entry of a number table
};

constexpr Row kRows[] = {
    {"Tr104IpParamConfig", "address, mask, gateway", 0},
    {"Tr104RtpIpParamConfig", "RTP address, mask, gateway", 0},
    {"Tr104IpMode", "address mode (0 static, 1 DHCP, 2 PPPoE)", 0},
    {"Tr104DnsIpConfig1", "DNS server 1", 0},
    {"Tr104DnsIpConfig2", "DNS server 2", 0},
    {"Tr104SipVlanId", "SIP VLAN id", 0},
    {"Tr104SipVlanPriority", "SIP VLAN priority", 0},
    {"Tr104SipSVlanId", "SIP service VLAN id", 0},
    {"Tr104RtpVlanId", "RTP VLAN id", 0},
    {"Tr104RtpVlanPriority", "RTP VLAN priority", 0},
    {"Tr104RtpSVlanId", "RTP service VLAN id", 0},
    {"Tr104DHCPOption60Enable", "DHCP option 60", 0},
    {"Tr104DHCPOption60Value", "DHCP option 60 value", 0},
    {"Tr104DHCPOption125Enable", "DHCP option 125", 0},
    {"Tr104PPPoEEnable", "PPPoE", 0},
    {"Tr104PPPoEAccount", "PPPoE account", 0},
    {"Tr104AcsUrlConfig", "management server", 0},
    {"Tr104TimeEnable", "network time", 0},
    {"Tr104TimeStatus", "time status", 0},
    {"Tr104TimeNtpServer1", "NTP server 1", 0},
    {"Tr104TimeNtpServer2", "NTP server 2", 0},
    {"Tr104TimeLocalTimeZone", "time zone", 0},
    {"Tr104TimeLocalTimeZoneName", "time zone name", 0},
    {"Tr104TimeCurrentLocalTime", "local time", 0},
    {"Tr104PosParamConfig", "POS number 1", 1},
    {"Tr104IptParamConfig", "IPT number 1", 1},
    {"Tr104LedStandard", "LED standard", 0},
};

// The settings with their values, or why a value is missing.  Returns the rows that failed.
int printSettings(const Library &lib) {
    int failed = 0;
    for (const Row &row : kRows) {
        failed += printValue(lib, row.handler, row.line, row.label, "", 42);
    }
    return failed;
}

int runNet(Context &context) {
    std::printf("voice interface\n");
    return printSettings(context.lib) == 0 ? 0 : 1;
}

}  // namespace

std::vector<AreaCommand> netcfgCommands() {
    return {{"net", "the voice interface's address, VLANs, DNS, DHCP, PPPoE and time", [](CLI::App &) {}, &runNet}};
}

namespace {

// A VLAN id written alone waits in slot 7 until the slot's timer reads the current VLAN
// configuration and writes it back with the new id.
int runLoneVlanId(const Library &lib, vmemu::VoiceModuleEmulator &emulator) {
    std::printf("\n== network: the RTP VLAN id alone -> merged by slot 7's timer after %d ms\n",
                deferredTimeoutMs(lib));
    const size_t reads = emulator.requestsFor(TR104_GET_VLAN_ID).size();
    const size_t writes = emulator.requestsFor(TR104_SET_VLAN_ID).size();
    const Clock::time_point origin = Clock::now();
    static const DemoStep kLone[] = {{"Tr104RtpVlanId", true, "300", 0, "staged in slot 7, nothing sent yet"}};
    int problems = runSteps(lib, kLone, std::size(kLone));
    std::printf("  waiting for slot 7's timer ...\n");
    std::fflush(stdout);
    const std::optional<Millis> took = waitSlotIdle(lib, 7, origin, Millis(deferredTimeoutMs(lib) + 5000));
    // The timer's write needs no answer: it may still be on its way to the voice module when the
    // slot is idle again.  Wait for it (at most 2 s) before counting.
    const Clock::time_point deadline = Clock::now() + Millis(2000);
    while (took && emulator.requestsFor(TR104_SET_VLAN_ID).size() == writes && Clock::now() < deadline) {
        std::this_thread::sleep_for(Millis(1));
    }
    const size_t newReads = emulator.requestsFor(TR104_GET_VLAN_ID).size() - reads;
    const size_t newWrites = emulator.requestsFor(TR104_SET_VLAN_ID).size() - writes;
    if (took) {
        std::printf("  applied after %.1f s: %zu read of the current configuration, %zu write\n",
                    static_cast<double>(took->count()) / 1000.0, newReads, newWrites);
    } else {
        std::printf("  UNEXPECTED: slot 7 was not applied\n");
    }
    problems += !took || newReads != 1 || newWrites != 1;
    static const DemoStep kAfter[] = {
        {"Tr104RtpVlanId", false, nullptr, 0, "the new id"},
        {"Tr104RtpVlanPriority", false, nullptr, 0, "kept from the voice module's configuration"},
    };
    problems += runSteps(lib, kAfter, std::size(kAfter));
    return problems;
}

}  // namespace

// The demo's network section: an address given in three writes reaches the voice module as one
// configuration, and so do the six VLAN values of the signalling traffic; then the address
// mode, the time zone and a POS number.
int runNetcfgDemo(Context &context) {
    const Library &lib = context.lib;
    vmemu::VoiceModuleEmulator &emulator = *context.emulator;
    const vmemu::NetState before = vmemu::netState(emulator);
    static const DemoStep kAddress[] = {
        {"Tr104IpAddrConfig", false, nullptr, 0, ""},
        {"Tr104IpAddrConfig", true, "10.20.0.5", 0, "staged in slot 0"},
        {"Tr104NetMaskConfig", true, "255.255.255.0", 0, "staged"},
        {"Tr104GatewayConfig", true, "10.20.0.1", 0, "the third: one configuration goes out"},
        {"Tr104IpParamConfig", false, nullptr, 0, ""},
        {"Tr104SipVlanId", true, "200", 0, "six values of the SIP VLANs, in slot 6"},
        {"Tr104SipVlanPriority", true, "9", 0, "outside 1..7: stored as 0"},
        {"Tr104SipVlanTypeId", true, "33024", 0, ""},
        {"Tr104SipSVlanId", true, "20", 0, ""},
        {"Tr104SipSVlanPriority", true, "3", 0, ""},
        {"Tr104SipSVlanTypeId", true, "34984", 0, "the sixth: one VLAN configuration goes out"},
        {"Tr104SipVlanPriority", false, nullptr, 0, ""},
        {"Tr104RtpVlanPriority", true, "9", 0, "RTP priorities above 7 are refused"},
    };
    int problems = runSection(lib, "network: address and VLANs, grouped", kAddress);
    const vmemu::NetState after = vmemu::netState(emulator);
    std::printf("  (the voice module received %d address configuration(s) and %d VLAN configuration(s))\n",
                after.ipWrites - before.ipWrites, after.vlanWrites - before.vlanWrites);
    if (after.ipWrites - before.ipWrites != 1 || after.vlanWrites - before.vlanWrites != 1) {
        ++problems;
    }
    problems += runLoneVlanId(lib, emulator);
    static const DemoStep kSettings[] = {
        {"Tr104IpMode", true, "2", 0, "PPPoE: the DHCP client off, the PPPoE client on"},
        {"Tr104PPPoEAccount", true, "subscriber@isp", 0, ""},
        {"Tr104IpMode", false, nullptr, 0, ""},
        {"Tr104TimeLocalTimeZone", true, "+08:00", 0, "sent as 28800 seconds"},
        {"Tr104TimeLocalTimeZone", true, "+13:00", 0, "refused"},
        {"Tr104TimeLocalTimeZone", false, nullptr, 0, ""},
        {"Tr104TimeCurrentLocalTime", false, nullptr, 0, "the voice module's clock in that zone"},
        {"Tr104PosParamConfig", true, "5551234 A", 0, "add a POS number of type A"},
        {"Tr104PosParamConfig", false, nullptr, 1, "entry 1"},
    };
    problems += runSection(lib, "network: address mode, time zone, numbers", kSettings);
    std::printf("\n== network: the voice interface (tr104ctl net)\n");
    problems += printSettings(lib);
    return problems;
}

}  // namespace tr104ctl
