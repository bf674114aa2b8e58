// The voice interface's network settings as the emulated voice module keeps them: addressing,
// VLANs, DNS, DHCP (enable, options 60, 120 and 125), PPPoE, the management URL, the network
// time client, the POS and IPT number tables, the LED standard and the private management
// address.  Values persist between requests; the local time runs on the host's clock shifted
// by the configured zone.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "emulator/voice_module_emulator.h"
#include "tr104/netcfg.h"

namespace vmemu {

struct NumberEntry {
    std::string number;
    char type = 0;
};

struct NetState {
    Tr104IpConfigPayload ip{};  // commands 40 / 41
    Tr104VlanPayload vlan{};  // commands 44 / 43
    uint32_t dns[2] = {0, 0};  // commands 78 / 77
    int dhcpEnable = 0;  // commands 29 / 25, 26
    std::string option120;  // command 33
    std::string acsUrl = "http://acs.example.net:7547/acs";  // command 80
    int timeEnable = 0;  // commands 62 / 63
    std::string ntpServer1, ntpServer2;
    int32_t zoneOffset = 0;  // seconds east of UTC, commands 69 / 70
    std::vector<NumberEntry> pos, ipt;
    uint8_t ledStandard = 0;  // commands 22 / 21
    // The private management address (command 4): OLT and ONU numbers and the address.
    int oltNo = 0, onuNo = 0;
    uint32_t privateAddr = 0;
    // Writes received, by kind.
    int ipWrites = 0;  // 276-byte configurations under command 41
    int directIpWrites = 0;  // Tr104VoiceIpAddr's 28-byte payload under command 41
    int vlanWrites = 0;
    int dnsWrites = 0;  // one server under command 77
    int directDnsWrites = 0;  // both servers under command 77
    Tr104DirectIpPayload lastDirectIp{};
};

NetState netState(VoiceModuleEmulator &emulator);
// Changes made by the voice module itself (an address learnt by DHCP, a VLAN set by the OLT).
void setVoiceAddress(VoiceModuleEmulator &emulator, uint32_t addr, uint32_t mask, uint32_t gateway);
void setVlanClass(VoiceModuleEmulator &emulator, bool rtp, const Tr104VlanClass &values);

// Stored blocks of the masked families (fields-present word at 0), as a get answers them.
Tr104Option60Payload option60(VoiceModuleEmulator &emulator);
Tr104Option125Payload option125(VoiceModuleEmulator &emulator);
Tr104PppoePayload pppoe(VoiceModuleEmulator &emulator);

// "Disabled", "Error_FailedToSynchronize" (enabled without a server) or "Synchronized".
std::string timeStatus(const NetState &state);
// The local time the voice module reports: "YYYY-MM-DD hh:mm:ss" at UTC + the zone offset.
std::string localTime(const NetState &state);

}  // namespace vmemu
