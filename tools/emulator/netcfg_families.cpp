// The voice module's network settings (see netcfg_emulator.h).  Console: "net ..." verbs.
//
// Two commands carry two payloads each, as on the device:
//  - command 41: the 276-byte configuration (kind 1 voice, 2 RTP) or Tr104VoiceIpAddr's 28-byte
//    payload.  The direct one holds an interface name at 16, where the configuration holds the
//    RTP words, and nothing after byte 28, where a configuration built on a get carries this
//    module's own bytes (it keeps its interface name there);
//  - command 77: one server and its index at 272, or both servers after a port number (a word
//    at 0 or at 8 that is not zero: a one-server payload holds zeros there).
#include <algorithm>
#include <cstring>
#include <ctime>
#include <map>
#include <memory>
#include <mutex>
#include <sstream>

#include "emulator/area_state.h"
#include "emulator/netcfg_emulator.h"
#include "emulator/state_file.h"
#include "tr104/catalogue/field_lists.h"
#include "tr104/common.h"

namespace vmemu {
namespace {

constexpr char kOwnInterface[] = "voip0";  // this module's bytes 28.. of the configuration

AreaState<NetState> areas;

bool nameChar(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' || c == '.' ||
           c == '-';
}
bool zeros(const char *p, size_t n) {
    return std::all_of(p, p + n, [](char c) { return c == 0; });
}

bool isDirectIp(const Request &r) {
    const char *p = r.payload.data();
    size_t n = 0;
    while (n < 10 && nameChar(p[16 + n])) {
        ++n;
    }
    return n > 0 && zeros(p + 16 + n, 12 - n) && zeros(p + 28, sizeof(Tr104IpConfigPayload) - 28);
}

// Numbers of a table as a get answers them: the count, the types and the numbers.
Tr104NumberTable tableOf(const std::vector<NumberEntry> &entries) {
    Tr104NumberTable t{};
    t.ucEntry = static_cast<uint8_t>(entries.size());
    for (size_t i = 0; i < entries.size() && i < TR104_NUMBER_ENTRIES; ++i) {
        t.aTypes[i] = entries[i].type;
        std::memcpy(t.aNumbers[i], entries[i].number.data(), std::min<size_t>(entries[i].number.size(), 20));
    }
    return t;
}

void addNumber(std::vector<NumberEntry> &entries, const Tr104NumberTable &t) {
    const std::string number(t.aNumbers[0], strnlen(t.aNumbers[0], std::min<size_t>(t.ucLength, 20)));
    auto it = std::find_if(entries.begin(), entries.end(), [&](const NumberEntry &e) { return e.number == number; });
    if (it != entries.end()) {
        it->type = t.aTypes[0];
    } else if (entries.size() < TR104_NUMBER_ENTRIES && !number.empty()) {
        entries.push_back({number, t.aTypes[0]});
    }
}

void deleteNumber(std::vector<NumberEntry> &entries, const Tr104NumberTable &t) {
    if (t.ucDeleteAll != 0) {
        entries.clear();
        return;
    }
    const std::string number(t.aNumbers[0], strnlen(t.aNumbers[0], std::min<size_t>(t.ucLength, 20)));
    std::erase_if(entries, [&](const NumberEntry &e) { return e.number == number; });
}

// A command served from the state: fills the reply (true) or takes a set (false).
using StateHandler = bool (*)(NetState &s, const Request &r, Payload &out);

struct Command {
    uint32_t cmd;
    const char *name;
    StateHandler handler;
};

const Command kCommands[] = {
    {TR104_GET_DEVICE_IP_ID, "GET_DEVICE_IP_ID",
     [](NetState &s, const Request &, Payload &out) {
         putRecord(out, s.ip);
         return true;
     }},
    {TR104_SET_DEVICE_IP_ID, "SET_DEVICE_IP_ID",
     [](NetState &s, const Request &r, Payload &) {
         if (isDirectIp(r)) {
             s.lastDirectIp = r.record<Tr104DirectIpPayload>();
             s.ip.unVoiceAddr = s.lastDirectIp.unAddr;
             s.ip.unVoiceMask = s.lastDirectIp.unMask;
             s.ip.unVoiceGateway = s.lastDirectIp.unGateway;
             ++s.directIpWrites;
             return false;
         }
         const auto in = r.record<Tr104IpConfigPayload>();
         if (in.ucKind == TR104_IP_KIND_RTP) {
             s.ip.unRtpAddr = in.unRtpAddr;
             s.ip.unRtpMask = in.unRtpMask;
             s.ip.unRtpGateway = in.unRtpGateway;
         } else {
             s.ip.unVoiceAddr = in.unVoiceAddr;
             s.ip.unVoiceMask = in.unVoiceMask;
             s.ip.unVoiceGateway = in.unVoiceGateway;
         }
         ++s.ipWrites;
         return false;
     }},
    {TR104_GET_VLAN_ID, "GET_VLAN_ID",
     [](NetState &s, const Request &, Payload &out) {
         putRecord(out, s.vlan);
         return true;
     }},
    {TR104_SET_VLAN_ID, "SET_VLAN_ID",
     [](NetState &s, const Request &r, Payload &) {
         const auto in = r.record<Tr104VlanPayload>();
         if (in.unKind == 1)
             s.vlan.sip = in.sip;
         if (in.unKind == 2)
             s.vlan.rtp = in.rtp;
         ++s.vlanWrites;
         return false;
     }},
    {TR104_GET_DNS_SERVER_ID, "GET_DNS_SERVER_ID",
     [](NetState &s, const Request &r, Payload &out) {
         Tr104DnsPayload p = r.record<Tr104DnsPayload>();
         p.unServer = s.dns[p.unIndex == 1 ? 1 : 0];
         putRecord(out, p);
         return true;
     }},
    {TR104_ADD_DNS_SERVER_ID, "ADD_DNS_SERVER_ID",
     [](NetState &s, const Request &r, Payload &) {
         if (r.word<uint32_t>(0) != 0 || r.word<uint32_t>(8) != 0) {
             const auto d = r.record<Tr104DirectDnsPayload>();
             s.dns[0] = d.unServer1;
             s.dns[1] = d.unServer2;
             ++s.directDnsWrites;
         } else {
             const auto p = r.record<Tr104DnsPayload>();
             s.dns[p.unIndex == 1 ? 1 : 0] = p.unServer;
             ++s.dnsWrites;
         }
         return false;
     }},
    {TR104_GET_DHCP_ID, "GET_DHCP_ID",
     [](NetState &s, const Request &, Payload &out) {
         putRecord(out, s.dhcpEnable);
         return true;
     }},
    {TR104_SET_DHCP_ENABLE_ID, "SET_DHCP_ENABLE_ID",
     [](NetState &s, const Request &, Payload &) {
         s.dhcpEnable = 1;
         return false;
     }},
    {TR104_SET_DHCP_DISABLE_ID, "SET_DHCP_DISABLE_ID",
     [](NetState &s, const Request &, Payload &) {
         s.dhcpEnable = 0;
         return false;
     }},
    {TR104_SET_DHCP_OPTION120_ID, "SET_DHCP_OPTION120",
     [](NetState &s, const Request &r, Payload &) {
         s.option120 = r.text_at(0, TR104_CFG_BUFFER_LEN);
         return false;
     }},
    {TR104_GET_ACS_URL_ID, "GET_ACS_URL_ID",
     [](NetState &s, const Request &, Payload &out) {
         std::memcpy(out.data(), s.acsUrl.c_str(), std::min<size_t>(s.acsUrl.size() + 1, 256));
         return true;
     }},
    {TR104_GET_NTP_ENABLE_ID, "GET_NTP_ENABLE_ID",
     [](NetState &s, const Request &, Payload &out) {
         putRecord(out, s.timeEnable);
         return true;
     }},
    {TR104_SET_NTP_ENABLE_ID, "SET_NTP_ENABLE_ID",
     [](NetState &s, const Request &r, Payload &) {
         s.timeEnable = r.word<int>(0);
         return false;
     }},
    {TR104_GET_TIME_STATUS_ID, "GET_TIME_STATUS_ID",
     [](NetState &s, const Request &, Payload &out) {
         const std::string status = timeStatus(s);
         std::memcpy(out.data() + TR104_TIME_STATUS_AT, status.c_str(), status.size() + 1);
         return true;
     }},
    {TR104_GET_NTP_SERVER1_ID, "GET_NTP_SERVER1_ID",
     [](NetState &s, const Request &, Payload &out) {
         std::memcpy(out.data() + TR104_TIME_NTP1_AT, s.ntpServer1.c_str(), s.ntpServer1.size() + 1);
         return true;
     }},
    {TR104_SET_NTP_SERVER1_ID, "SET_NTP_SERVER1_ID",
     [](NetState &s, const Request &r, Payload &) {
         s.ntpServer1 = r.text_at(TR104_TIME_NTP1_AT, TR104_TIME_PAYLOAD_LEN - TR104_TIME_NTP1_AT - 1);
         return false;
     }},
    {TR104_GET_NTP_SERVER2_ID, "GET_NTP_SERVER2_ID",
     [](NetState &s, const Request &, Payload &out) {
         std::memcpy(out.data() + TR104_TIME_NTP2_AT, s.ntpServer2.c_str(), s.ntpServer2.size() + 1);
         return true;
     }},
    {TR104_SET_NTP_SERVER2_ID, "SET_NTP_SERVER2_ID",
     [](NetState &s, const Request &r, Payload &) {
         s.ntpServer2 = r.text_at(TR104_TIME_NTP2_AT, TR104_TIME_PAYLOAD_LEN - TR104_TIME_NTP2_AT - 1);
         return false;
     }},
    {TR104_GET_TIME_ZONE_ID, "GET_TIME_ZONE_ID",
     [](NetState &s, const Request &, Payload &out) {
         std::memcpy(out.data() + TR104_TIME_OFFSET_AT, &s.zoneOffset, sizeof(s.zoneOffset));
         return true;
     }},
    {TR104_SET_TIME_ZONE_ID, "SET_NTP_LocalTimeZone_ID",
     [](NetState &s, const Request &r, Payload &) {
         s.zoneOffset = r.word<int32_t>(TR104_TIME_OFFSET_AT);
         return false;
     }},
    {TR104_GET_LOCAL_TIME_ID, "GET_LOCAL_TIME_ID",
     [](NetState &s, const Request &, Payload &out) {
         const std::string now = localTime(s);
         std::memcpy(out.data(), now.c_str(), now.size() + 1);
         return true;
     }},
    {TR104_GET_POS_NUM_ID, "GET_POS_NUM_ID",
     [](NetState &s, const Request &, Payload &out) {
         putRecord(out, tableOf(s.pos));
         return true;
     }},
    {TR104_ADD_POS_NUM_ID, "ADD_POS_NUM_ID",
     [](NetState &s, const Request &r, Payload &) {
         addNumber(s.pos, r.record<Tr104NumberTable>());
         return false;
     }},
    {TR104_DEL_POS_NUM_ID, "DEL_POS_NUM_ID",
     [](NetState &s, const Request &r, Payload &) {
         deleteNumber(s.pos, r.record<Tr104NumberTable>());
         return false;
     }},
    {TR104_GET_IPT_NUM_ID, "GET_IPT_NUM_ID",
     [](NetState &s, const Request &, Payload &out) {
         putRecord(out, tableOf(s.ipt));
         return true;
     }},
    {TR104_ADD_IPT_NUM_ID, "ADD_IPT_NUM_ID",
     [](NetState &s, const Request &r, Payload &) {
         addNumber(s.ipt, r.record<Tr104NumberTable>());
         return false;
     }},
    {TR104_DEL_IPT_NUM_ID, "DEL_IPT_NUM_ID",
     [](NetState &s, const Request &r, Payload &) {
         deleteNumber(s.ipt, r.record<Tr104NumberTable>());
         return false;
     }},
    {TR104_GET_LED_STANDARD_ID, "GET_LED_STANDARD",
     [](NetState &s, const Request &, Payload &out) {
         out[0] = static_cast<char>(s.ledStandard);
         return true;
     }},
    {TR104_SET_LED_STANDARD_ID, "SET_LED_STANDARD",
     [](NetState &s, const Request &r, Payload &) {
         s.ledStandard = static_cast<uint8_t>(r.payload[0]);
         return false;
     }},
    {TR104_SET_PRI_IP_CFG_ID, "SET_PRI_IP_CFG_ID",
     [](NetState &s, const Request &r, Payload &) {
         s.oltNo = static_cast<uint8_t>(r.payload[0]);
         s.onuNo = static_cast<uint8_t>(r.payload[1]);
         s.privateAddr = r.word<uint32_t>(2);
         return false;
     }},
};

// The blocks whose sets carry a fields-present word: each set changes only its fields, the
// masked fields of the library's rows (generated/tr104/catalogue/field_lists.h).

const RecordFamily kOption60{"dhcp option 60",
                             sizeof(Tr104Option60Payload),
                             {},
                             {TR104_GET_DHCP_OPTION60_ID},
                             {TR104_SET_DHCP_OPTION60_ID},
                             VMEMU_MEMBER(Tr104Option60Payload, unFields),
                             {TR104_MASKED_FIELDS_Tr104Option60Payload(VMEMU_MASKED_FIELD)},
                             {}};
const RecordFamily kOption125{"dhcp option 125",
                              sizeof(Tr104Option125Payload),
                              {},
                              {TR104_GET_DHCP_OPTION125_ID},
                              {TR104_SET_DHCP_OPTION125_ID},
                              VMEMU_MEMBER(Tr104Option125Payload, unFields),
                              {TR104_MASKED_FIELDS_Tr104Option125Payload(VMEMU_MASKED_FIELD)},
                              {}};
const RecordFamily kPppoe{"pppoe",
                          sizeof(Tr104PppoePayload),
                          {},
                          {TR104_GET_PPPOE_PARAM_ID},
                          {TR104_SET_PPPOE_PARAM_ID},
                          VMEMU_MEMBER(Tr104PppoePayload, unFields),
                          {TR104_MASKED_FIELDS_Tr104PppoePayload(VMEMU_MASKED_FIELD)},
                          {}};

NetState initialState() {
    NetState s;
    s.ip.ucKind = TR104_IP_KIND_VOICE;
    s.ip.unVoiceAddr = CommIpAddrStrToUnInt("192.168.100.2");
    s.ip.unVoiceMask = CommIpAddrStrToUnInt("255.255.255.0");
    s.ip.unVoiceGateway = CommIpAddrStrToUnInt("192.168.100.1");
    std::memcpy(s.ip.aucRest, kOwnInterface, sizeof(kOwnInterface));
    s.vlan.sip = {0x8100, 5, 0, 0, 0x8100, 5, 0, 100};
    s.vlan.rtp = {0x8100, 5, 0, 0, 0x8100, 5, 0, 100};
    s.dns[0] = CommIpAddrStrToUnInt("192.168.100.1");
    s.ntpServer1 = "pool.ntp.org";
    return s;
}

void installNetFamilies(VoiceModuleEmulator &e) {
    auto held = areas.install(e, initialState());
    for (const Command &c : kCommands) {
        e.nameCommand(c.cmd, c.name);
        e.setHandler(c.cmd, [held, handler = c.handler](const Request &r, Payload &out) {
            std::lock_guard lock(held->mutex);
            return handler(held->state, r, out);
        });
    }
    e.nameCommand(TR104_GET_DHCP_OPTION60_ID, "GET_DHCP_OPTION60");
    e.nameCommand(TR104_SET_DHCP_OPTION60_ID, "SET_DHCP_OPTION60");
    e.nameCommand(TR104_GET_DHCP_OPTION125_ID, "GET_DHCP_OPTION125");
    e.nameCommand(TR104_SET_DHCP_OPTION125_ID, "SET_DHCP_OPTION125");
    e.nameCommand(TR104_GET_PPPOE_PARAM_ID, "GET_PPPOE_PARAM");
    e.nameCommand(TR104_SET_PPPOE_PARAM_ID, "SET_PPPOE_PARAM");
    for (const RecordFamily *f : {&kOption60, &kOption125, &kPppoe}) {
        e.addFamily(*f);
    }
    // The PPPoE password is kept and answered, never logged.
    for (const uint32_t cmd : {TR104_GET_PPPOE_PARAM_ID, TR104_SET_PPPOE_PARAM_ID}) {
        e.hideInLog(cmd, {offsetof(Tr104PppoePayload, aPassword), sizeof(Tr104PppoePayload::aPassword)});
    }
}

FamilyRegistrar registrar(&installNetFamilies);

template <typename T>
T stored(VoiceModuleEmulator &emulator, const RecordFamily &family) {
    T value{};
    if (const auto rec = emulator.get(family.name, &value, sizeof(value))) {
        std::memcpy(&value, rec->data(), std::min(rec->size(), sizeof(value)));
    }
    return value;
}

std::string dotted(uint32_t addr) {
    char text[16] = {};
    CommIpAddrUnIntToStr(addr, text);
    return text;
}

std::string describeVlan(const char *name, const Tr104VlanClass &c) {
    std::ostringstream out;
    out << name << " vlan " << c.usVlanId << " priority " << int(c.ucVlanPriority) << " type 0x" << std::hex
        << c.unVlanTypeId << std::dec << ", service vlan " << c.usSVlanId << " priority " << int(c.ucSVlanPriority)
        << " type 0x" << std::hex << c.unSVlanTypeId << std::dec << "\n";
    return out.str();
}

std::string showState(VoiceModuleEmulator &emulator) {
    const NetState s = netState(emulator);
    std::ostringstream out;
    out << "voice " << dotted(s.ip.unVoiceAddr) << "/" << dotted(s.ip.unVoiceMask) << " via "
        << dotted(s.ip.unVoiceGateway) << ", rtp " << dotted(s.ip.unRtpAddr) << "/" << dotted(s.ip.unRtpMask) << " via "
        << dotted(s.ip.unRtpGateway) << " (" << s.ipWrites << " configurations, " << s.directIpWrites << " direct)\n";
    out << describeVlan("sip", s.vlan.sip) << describeVlan("rtp", s.vlan.rtp);
    const auto p = pppoe(emulator);
    out << "dns " << dotted(s.dns[0]) << ", " << dotted(s.dns[1]) << "; dhcp " << (s.dhcpEnable ? "on" : "off")
        << ", pppoe " << (p.unEnable ? "on" : "off") << " account \"" << p.aAccount << "\"\n";
    out << "time " << (s.timeEnable ? "on" : "off") << " (" << timeStatus(s) << "), ntp \"" << s.ntpServer1 << "\" \""
        << s.ntpServer2 << "\", zone " << s.zoneOffset << " s, local " << localTime(s) << "\n";
    out << "pos numbers " << s.pos.size() << ", ipt numbers " << s.ipt.size() << ", led standard " << int(s.ledStandard)
        << "\n";
    return out.str();
}

bool netCommand(VoiceModuleEmulator &emulator, const std::string &verb, std::istream &args, std::string *out) {
    if (verb != "net") {
        return false;
    }
    std::string what, a, m, g;
    args >> what;
    int id = 0, priority = 0;
    if (what == "ip" && (args >> a >> m >> g)) {
        setVoiceAddress(emulator, CommIpAddrStrToUnInt(a.c_str()), CommIpAddrStrToUnInt(m.c_str()),
                        CommIpAddrStrToUnInt(g.c_str()));
    } else if (what == "vlan" && (args >> a >> id >> priority) && (a == "sip" || a == "rtp")) {
        areas.change(emulator, [&](NetState &s) {
            Tr104VlanClass &c = a == "rtp" ? s.vlan.rtp : s.vlan.sip;
            c.usVlanId = static_cast<uint16_t>(id);
            c.ucVlanPriority = static_cast<uint8_t>(priority);
        });
    } else if (what != "show") {
        *out = "usage: net show | ip ADDR MASK GATEWAY | vlan sip|rtp ID PRIORITY\n";
        return true;
    }
    *out = showState(emulator);
    return true;
}

ConsoleRegistrar console(
    "net show|ip ADDR MASK GATEWAY|vlan sip|rtp ID PRIORITY   voice network settings; "
    "change the address or a VLAN as the network would",
    &netCommand);

// The network settings in the emulator's state file (not the write counters).
nlohmann::json saveNet(VoiceModuleEmulator &emulator) {
    const NetState s = netState(emulator);
    auto numbers = [](const std::vector<NumberEntry> &entries) {
        nlohmann::json out = nlohmann::json::array();
        for (const NumberEntry &n : entries) {
            out.push_back({{"number", n.number}, {"type", static_cast<int>(n.type)}});
        }
        return out;
    };
    return {{"ip", stateHex(&s.ip, sizeof(s.ip))},
            {"vlan", stateHex(&s.vlan, sizeof(s.vlan))},
            {"dns", {s.dns[0], s.dns[1]}},
            {"dhcpEnable", s.dhcpEnable},
            {"option120", s.option120},
            {"acsUrl", s.acsUrl},
            {"timeEnable", s.timeEnable},
            {"ntpServers", {s.ntpServer1, s.ntpServer2}},
            {"zoneOffset", s.zoneOffset},
            {"pos", numbers(s.pos)},
            {"ipt", numbers(s.ipt)},
            {"ledStandard", s.ledStandard},
            {"private", {{"olt", s.oltNo}, {"onu", s.onuNo}, {"address", s.privateAddr}}}};
}

bool loadNet(VoiceModuleEmulator &emulator, const nlohmann::json &saved, std::string *why) {
    NetState s = netState(emulator);
    if (!stateBytes(saved.at("ip"), &s.ip, sizeof(s.ip)) || !stateBytes(saved.at("vlan"), &s.vlan, sizeof(s.vlan))) {
        *why = "ip and vlan are the records in hex";
        return false;
    }
    auto numbers = [](const nlohmann::json &entries) {
        std::vector<NumberEntry> out;
        for (const nlohmann::json &n : entries) {
            out.push_back({n.at("number").get<std::string>(), static_cast<char>(n.at("type").get<int>())});
        }
        return out;
    };
    s.dns[0] = saved.at("dns").at(0).get<uint32_t>();
    s.dns[1] = saved.at("dns").at(1).get<uint32_t>();
    s.dhcpEnable = saved.at("dhcpEnable").get<int>();
    s.option120 = saved.at("option120").get<std::string>();
    s.acsUrl = saved.at("acsUrl").get<std::string>();
    s.timeEnable = saved.at("timeEnable").get<int>();
    s.ntpServer1 = saved.at("ntpServers").at(0).get<std::string>();
    s.ntpServer2 = saved.at("ntpServers").at(1).get<std::string>();
    s.zoneOffset = saved.at("zoneOffset").get<int32_t>();
    s.pos = numbers(saved.at("pos"));
    s.ipt = numbers(saved.at("ipt"));
    s.ledStandard = saved.at("ledStandard").get<uint8_t>();
    s.oltNo = saved.at("private").at("olt").get<int>();
    s.onuNo = saved.at("private").at("onu").get<int>();
    s.privateAddr = saved.at("private").at("address").get<uint32_t>();
    areas.change(emulator, [&](NetState &held) { held = s; });
    return true;
}

StatePartRegistrar statePart({"net", &saveNet, &loadNet});

}  // namespace

NetState netState(VoiceModuleEmulator &emulator) { return areas.copy(emulator); }

void setVoiceAddress(VoiceModuleEmulator &emulator, uint32_t addr, uint32_t mask, uint32_t gateway) {
    areas.change(emulator, [&](NetState &s) {
        s.ip.unVoiceAddr = addr;
        s.ip.unVoiceMask = mask;
        s.ip.unVoiceGateway = gateway;
    });
}

void setVlanClass(VoiceModuleEmulator &emulator, bool rtp, const Tr104VlanClass &values) {
    areas.change(emulator, [&](NetState &s) { (rtp ? s.vlan.rtp : s.vlan.sip) = values; });
}

Tr104Option60Payload option60(VoiceModuleEmulator &emulator) {
    return stored<Tr104Option60Payload>(emulator, kOption60);
}
Tr104Option125Payload option125(VoiceModuleEmulator &emulator) {
    return stored<Tr104Option125Payload>(emulator, kOption125);
}
Tr104PppoePayload pppoe(VoiceModuleEmulator &emulator) { return stored<Tr104PppoePayload>(emulator, kPppoe); }

std::string timeStatus(const NetState &state) {
    if (state.timeEnable == 0) {
        return "Disabled";
    }
    return state.ntpServer1.empty() && state.ntpServer2.empty() ? "Error_FailedToSynchronize" : "Synchronized";
}

std::string localTime(const NetState &state) {
    const time_t now = time(nullptr) + state.zoneOffset;
    struct tm parts {};
    gmtime_r(&now, &parts);
    char text[32] = {};
    strftime(text, sizeof(text), "%Y-%m-%d %H:%M:%S", &parts);
    return text;
}

}  // namespace vmemu
