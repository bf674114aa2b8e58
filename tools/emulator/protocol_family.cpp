// Command 2: the voice module names the signalling protocol it runs.  The answer is a
// NUL-terminated text at the start of the reply; every emulator starts with "SIP".
#include "emulator/protocol_family.h"

#include <algorithm>
#include <map>
#include <memory>
#include <mutex>

namespace vmemu {
namespace {

constexpr uint32_t kGetProtocolName = 2;

struct ProtocolState {
    std::mutex mutex;
    std::string name = kDefaultProtocolName;
};

// The state of each live emulator.  An emulator installs a fresh state when it is constructed,
// so one built where an old one lived never inherits its name.
std::mutex registryMutex;
std::map<const VoiceModuleEmulator *, std::shared_ptr<ProtocolState>> registry;

std::shared_ptr<ProtocolState> stateOf(const VoiceModuleEmulator &emulator) {
    std::lock_guard lock(registryMutex);
    auto it = registry.find(&emulator);
    return it != registry.end() ? it->second : nullptr;
}

void installProtocolFamily(VoiceModuleEmulator &emulator) {
    auto state = std::make_shared<ProtocolState>();
    {
        std::lock_guard lock(registryMutex);
        registry[&emulator] = state;
    }
    emulator.nameCommand(kGetProtocolName, "GET_VOICE_PROTOCOL");
    emulator.setHandler(kGetProtocolName, [state](const Request &, Payload &reply) {
        std::lock_guard lock(state->mutex);
        const size_t len = std::min(state->name.size(), reply.size() - 1);
        std::copy_n(state->name.data(), len, reply.begin());
        reply[len] = '\0';
        return true;
    });
}

FamilyRegistrar registrar(&installProtocolFamily);

}  // namespace

void setProtocolName(VoiceModuleEmulator &emulator, const std::string &name) {
    if (auto state = stateOf(emulator)) {
        std::lock_guard lock(state->mutex);
        state->name = name;
    }
}

std::string protocolName(VoiceModuleEmulator &emulator) {
    if (auto state = stateOf(emulator)) {
        std::lock_guard lock(state->mutex);
        return state->name;
    }
    return kDefaultProtocolName;
}

}  // namespace vmemu
