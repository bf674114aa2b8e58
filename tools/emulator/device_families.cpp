// The voice module's device-level commands: the activity LED (20), the private management
// protocol and its ignore-clear-configuration option (6/5, 8/7), the profile counts (94, 95) and
// the signalling protocol for the next start (1, send only).  Console: "device ..." verbs.
#include <algorithm>
#include <cstring>
#include <map>
#include <memory>
#include <mutex>
#include <sstream>

#include "emulator/area_state.h"
#include "emulator/device_emulator.h"
#include "emulator/state_file.h"
#include "emulator/protocol_family.h"
#include "tr104/device.h"
#include "tr104/sip.h"

namespace vmemu {
namespace {

AreaState<DeviceState> areas;

void putWord(Payload &reply, int value) { std::memcpy(reply.data(), &value, sizeof(value)); }

// A 4-byte value of the state: a get answers it, a set (when there is one) stores it.
struct StateWord {
    uint32_t getCmd;
    uint32_t setCmd;  // 0: read only
    const char *getName;
    const char *setName;
    int DeviceState::*word;
};

const StateWord kWords[] = {
    {GET_VOIP_LED_STATUS_ID, 0, "GET_VOIP_LED_STATUS_ID", nullptr, &DeviceState::led},
    {GET_PRI_PROTOCOL_CONFIG_ID, SET_PRI_PROTOCOL_CONFIG_ID, "GET_PRI_PROTOCOL_CONFIG_ID", "SET_PRI_PROTOCOL_CONFIG_ID",
     &DeviceState::privateProtocol},
    {GET_PRI_PROTOCOL_IGNORE_CLR_CFG_ID, SET_PRI_PROTOCOL_IGNORE_CLR_CFG_ID, "GET_PRI_PROTOCOL_IGNORE_CLR_CFG_ID",
     "SET_PRI_PROTOCOL_IGNORE_CLR_CFG_ID", &DeviceState::ignoreClearConfig},
    {TR104_GET_PROFILE_NUMBER_ID, 0, "GET_PROFILE_NUMBER_ID", nullptr, &DeviceState::profileCount},
    {TR104_GET_MAX_COUNT_PER_PROFILE_ID, 0, "GET_MAX_COUNT_PER_PROFILE_ID", nullptr, &DeviceState::maxLinesPerProfile},
};

void installDeviceFamilies(VoiceModuleEmulator &e) {
    auto held = areas.install(e);
    for (const StateWord &w : kWords) {
        e.nameCommand(w.getCmd, w.getName);
        e.setHandler(w.getCmd, [held, word = w.word](const Request &, Payload &reply) {
            std::lock_guard lock(held->mutex);
            putWord(reply, held->state.*word);
            return true;
        });
        if (w.setCmd != 0) {
            e.nameCommand(w.setCmd, w.setName);
            e.setHandler(w.setCmd, [held, word = w.word](const Request &r, Payload &) {
                std::lock_guard lock(held->mutex);
                held->state.*word = r.word<int>(0);
                return false;
            });
        }
    }
    e.nameCommand(SET_NGN_PROTOCOL, "SET_NGN_PROTOCOL");
    e.setHandler(SET_NGN_PROTOCOL, [held](const Request &r, Payload &) {
        std::lock_guard lock(held->mutex);
        held->state.configuredProtocol = r.text_at(0, TR104_CFG_BUFFER_LEN);
        ++held->state.protocolWrites;
        return false;
    });
}

FamilyRegistrar registrar(&installDeviceFamilies);

// The voice profile bound to a line's port, when there is one.
std::optional<Tr104SipProfileRecord> boundProfile(VoiceModuleEmulator &emulator, int line) {
    Tr104SipLineRecord key{};
    key.unLine = static_cast<uint32_t>(line);
    const auto status = emulator.get("port status", &key, sizeof(key));
    if (!status) {
        return std::nullopt;
    }
    Tr104SipLineRecord s{};
    std::memcpy(&s, status->data(), std::min(status->size(), sizeof(s)));
    if (s.unProfileId == 0) {
        return std::nullopt;
    }
    Tr104SipProfileRecord probe{};
    std::memcpy(probe.aName, s.aProfileName, strnlen(s.aProfileName, sizeof(probe.aName) - 1));
    const auto stored = emulator.get("sip profile", &probe, sizeof(probe));
    if (!stored) {
        return std::nullopt;
    }
    Tr104SipProfileRecord profile{};
    std::memcpy(&profile, stored->data(), std::min(stored->size(), sizeof(profile)));
    return profile;
}

std::string showState(VoiceModuleEmulator &emulator) {
    const DeviceState s = deviceState(emulator);
    std::ostringstream out;
    out << "led " << s.led << ", private protocol " << s.privateProtocol << ", ignore clear config "
        << s.ignoreClearConfig << ", profiles " << s.profileCount << ", lines per profile " << s.maxLinesPerProfile
        << ", protocol " << protocolName(emulator)
        << " (configured for next start: " << (s.configuredProtocol.empty() ? "-" : s.configuredProtocol) << ")\n";
    for (int line = 1; line <= 2; ++line) {
        out << "line " << line << " codecs:";
        for (int code : codecSelection(emulator, line)) {
            out << ' ' << code;
        }
        out << ", packetization " << profilePacketization(emulator, line) << " ms, silence suppression "
            << profileSilenceSuppression(emulator, line) << "\n";
    }
    return out.str();
}

bool deviceCommand(VoiceModuleEmulator &emulator, const std::string &verb, std::istream &args, std::string *out) {
    if (verb != "device") {
        return false;
    }
    std::string what;
    args >> what;
    int a = 0;
    int b = 0;
    if (what == "led" && (args >> a)) {
        setLed(emulator, a);
    } else if (what == "profiles" && (args >> a >> b)) {
        setProfileCounts(emulator, a, b);
    } else if (what == "private" && (args >> a >> b)) {
        setPrivateProtocol(emulator, a, b);
    } else if (what == "protocol" && (args >> what)) {
        setProtocolName(emulator, what);
    } else if (what != "show") {
        *out = "usage: device show | led N | profiles COUNT LINES | private ENABLE IGNORE | protocol NAME\n";
        return true;
    }
    *out = showState(emulator);
    return true;
}

ConsoleRegistrar console(
    "device show|led N|profiles COUNT LINES|private ENABLE IGNORE|protocol NAME   device state, LED, counts, "
    "switches, protocol name; codecs of each line's profile",
    &deviceCommand);

// The device's switches and counts in the emulator's state file.
nlohmann::json saveDevice(VoiceModuleEmulator &emulator) {
    const DeviceState s = deviceState(emulator);
    return {{"led", s.led},
            {"privateProtocol", s.privateProtocol},
            {"ignoreClearConfig", s.ignoreClearConfig},
            {"profileCount", s.profileCount},
            {"maxLinesPerProfile", s.maxLinesPerProfile},
            {"configuredProtocol", s.configuredProtocol}};
}

bool loadDevice(VoiceModuleEmulator &emulator, const nlohmann::json &saved, std::string *) {
    DeviceState s = deviceState(emulator);
    s.led = saved.at("led").get<int>();
    s.privateProtocol = saved.at("privateProtocol").get<int>();
    s.ignoreClearConfig = saved.at("ignoreClearConfig").get<int>();
    s.profileCount = saved.at("profileCount").get<int>();
    s.maxLinesPerProfile = saved.at("maxLinesPerProfile").get<int>();
    s.configuredProtocol = saved.at("configuredProtocol").get<std::string>();
    areas.change(emulator, [&](DeviceState &held) { held = s; });
    return true;
}

StatePartRegistrar statePart({"device", &saveDevice, &loadDevice});

}  // namespace

DeviceState deviceState(VoiceModuleEmulator &emulator) { return areas.copy(emulator); }

void setLed(VoiceModuleEmulator &emulator, int state) {
    areas.change(emulator, [&](DeviceState &s) { s.led = state; });
}

void setProfileCounts(VoiceModuleEmulator &emulator, int profiles, int maxLinesPerProfile) {
    areas.change(emulator, [&](DeviceState &s) {
        s.profileCount = profiles;
        s.maxLinesPerProfile = maxLinesPerProfile;
    });
}

void setPrivateProtocol(VoiceModuleEmulator &emulator, int enable, int ignoreClearConfig) {
    areas.change(emulator, [&](DeviceState &s) {
        s.privateProtocol = enable;
        s.ignoreClearConfig = ignoreClearConfig;
    });
}

std::vector<int> codecSelection(VoiceModuleEmulator &emulator, int line) {
    std::vector<int> codes;
    if (const auto profile = boundProfile(emulator, line)) {
        // A profile never given a selection holds zeros: a repeated code ends the list.
        for (uint8_t code : profile->aucCodecs) {
            if (code == TR104_PROFILE_CODEC_UNUSED || std::find(codes.begin(), codes.end(), code) != codes.end()) {
                break;
            }
            codes.push_back(code);
        }
    }
    return codes;
}

int profilePacketization(VoiceModuleEmulator &emulator, int line) {
    const auto profile = boundProfile(emulator, line);
    return profile ? profile->ucPacketization : 0;
}

int profileSilenceSuppression(VoiceModuleEmulator &emulator, int line) {
    const auto profile = boundProfile(emulator, line);
    return profile ? profile->ucSilenceSuppression : 0;
}

}  // namespace vmemu
