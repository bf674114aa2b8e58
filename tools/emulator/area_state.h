// The state an area of the emulator keeps per emulator (the registrar installs it when an
// emulator is constructed; the area's functions reach it by the emulator).
#pragma once

#include <map>
#include <memory>
#include <mutex>

#include "emulator/voice_module_emulator.h"

namespace vmemu {

template <typename State>
class AreaState {
public:
    struct Held {
        std::mutex mutex;
        State state;
    };

    // A fresh state for an emulator (replacing one left by an emulator at the same address).
    std::shared_ptr<Held> install(const VoiceModuleEmulator &emulator, State initial = State{}) {
        auto held = std::make_shared<Held>();
        held->state = std::move(initial);
        std::lock_guard lock(mutex_);
        held_[&emulator] = held;
        return held;
    }

    // Runs f on the emulator's state under its lock (nothing when it has none).
    template <typename F>
    void change(const VoiceModuleEmulator &emulator, F &&f) {
        std::shared_ptr<Held> held;
        {
            std::lock_guard lock(mutex_);
            auto it = held_.find(&emulator);
            if (it == held_.end()) {
                return;
            }
            held = it->second;
        }
        std::lock_guard lock(held->mutex);
        f(held->state);
    }

    State copy(const VoiceModuleEmulator &emulator) {
        State out{};
        change(emulator, [&](State &s) { out = s; });
        return out;
    }

private:
    std::mutex mutex_;
    std::map<const VoiceModuleEmulator *, std::shared_ptr<Held>> held_;
};

}  // namespace vmemu
