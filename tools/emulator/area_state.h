// The state an area of the emulator keeps per emulator: the area's registrar installs it when an
// emulator is constructed, and the area's functions reach it by the emulator.
#pragma once

#include <map>
#include <memory>
#include <mutex>

#include "emulator/voice_module_emulator.h"

namespace vmemu {

// One T per emulator (an emulator built at the address of a destroyed one replaces its entry).
template <typename T>
class PerEmulator {
public:
    std::shared_ptr<T> install(const VoiceModuleEmulator &emulator) {
        auto value = std::make_shared<T>();
        std::lock_guard lock(mutex_);
        held_[&emulator] = value;
        return value;
    }
    std::shared_ptr<T> find(const VoiceModuleEmulator &emulator) {
        std::lock_guard lock(mutex_);
        auto it = held_.find(&emulator);
        return it != held_.end() ? it->second : nullptr;
    }

private:
    std::mutex mutex_;
    std::map<const VoiceModuleEmulator *, std::shared_ptr<T>> held_;
};

// A copyable state with its own lock.
template <typename State>
class AreaState {
public:
    struct Held {
        std::mutex mutex;
        State state;
    };

    std::shared_ptr<Held> install(const VoiceModuleEmulator &emulator, State initial = State{}) {
        auto held = held_.install(emulator);
        held->state = std::move(initial);
        return held;
    }

    // Runs f on the emulator's state under its lock (nothing when it has none).
    template <typename F>
    void change(const VoiceModuleEmulator &emulator, F &&f) {
        if (auto held = held_.find(emulator)) {
            std::lock_guard lock(held->mutex);
            f(held->state);
        }
    }

    State copy(const VoiceModuleEmulator &emulator) {
        State out{};
        change(emulator, [&](State &s) { out = s; });
        return out;
    }

private:
    PerEmulator<Held> held_;
};

}  // namespace vmemu
