// The voice module on a real SIP user agent: the emulator's records and answers, plus what a
// voice module applies and reports.  The profile's servers and each line's enable, number and
// credentials become the user agent's accounts (a change re-registers the line, a disabled or
// incomplete line is unregistered); the port status, the line counters, the RTP statistics and
// the simulated call test are answered from what the user agent reports.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <thread>

#include "emulator/voice_module_emulator.h"
#include "voiced/account.h"
#include "voiced/baresip.h"
#include "voiced/line_activity.h"
#include "voiced/simulated_call.h"

namespace voiced {

inline constexpr int kLines = 2;

struct Options {
    BaresipOptions baresip;
    uint32_t registrationPeriod = 3600;  // seconds
    bool autoAnswer[kLines] = {true, true};  // the line's phone goes off hook when called
    CallHold hold;
};

// The settings as the records hold them now.
ProfileSettings storedProfile(vmemu::VoiceModuleEmulator &emulator, uint32_t registrationPeriod);
LineSettings storedLine(vmemu::VoiceModuleEmulator &emulator, uint32_t line);
// Families whose records change what the user agent is told.
bool appliesToAccounts(const std::string &family);

class VoiceModule {
public:
    VoiceModule(vmemu::VoiceModuleEmulator &emulator, Options options);
    ~VoiceModule();
    VoiceModule(const VoiceModule &) = delete;
    VoiceModule &operator=(const VoiceModule &) = delete;

    // Starts the user agent, answers from it and applies the stored configuration.
    bool start(std::string *error);
    void stop();
    // Every request, after the emulator has served it: the commands that act (register,
    // unregister, statistics reset, simulated call start).
    void onRequest(const vmemu::Request &request);

    // Console: one line per line (registration, call, test); a call placed or ended by hand.
    std::string describe();
    std::string dial(int line, const std::string &number);
    std::string hangup(int line);

private:
    struct Line {
        LineActivity activity;
        SimulatedCall test;
        std::string account;  // the account line the user agent has (empty: none)
        std::string aor;
        bool unregistered = false;  // by an unregister request, until a register request
        bool reregister = false;
    };

    void onStored(const vmemu::RecordFamily &family);
    void onEvent(const Event &event);
    void post(std::function<void()> job);
    void act(int line, CallAction action);
    void work();
    void apply();
    // Removes an account, selecting `keep` (another account, or none) first; false while the user
    // agent still lists it.
    bool removeAccount(const std::string &aor, const std::string &keep);
    int lineOf(const std::string &aor) const;  // -1 when no line has it

    vmemu::VoiceModuleEmulator &emulator_;
    Options options_;
    Baresip agent_;
    std::mutex mutex_;
    std::condition_variable wake_;
    std::deque<std::function<void()>> jobs_;
    bool stopping_ = false;
    std::thread worker_;
    Line lines_[kLines];
};

}  // namespace voiced
