// The deferred parameter buffer in the demo tour: a server's address and port written one
// after the other reach the voice module as one write at the second call; a port written alone
// is applied by its slot's timer, which first reads the server's current record and then
// writes it back with the new port.  Every request is shown with the time it arrived.
#pragma once

#include <algorithm>
#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <vector>

#include "ctl/area.h"
#include "ctl/startup.h"
#include "emulator/voice_module_emulator.h"

namespace tr104ctl {

// The emulator's requests with the time each arrived.
class TimedRequests {
public:
    struct Entry {
        Clock::time_point at;
        vmemu::Request request;
    };

    explicit TimedRequests(vmemu::VoiceModuleEmulator &emulator) : emulator_(emulator) {
        emulator_.onRequest([this](const vmemu::Request &request) {
            std::lock_guard lock(mutex_);
            entries_.push_back({Clock::now(), request});
            arrived_.notify_all();
        });
    }
    ~TimedRequests() { emulator_.onRequest(nullptr); }
    TimedRequests(const TimedRequests &) = delete;
    TimedRequests &operator=(const TimedRequests &) = delete;

    size_t size() const {
        std::lock_guard lock(mutex_);
        return entries_.size();
    }
    // Waits until n requests have arrived in all; false when the timeout passed first.
    bool waitFor(size_t n, Millis timeout) const {
        std::unique_lock lock(mutex_);
        return arrived_.wait_for(lock, timeout, [&] { return entries_.size() >= n; });
    }
    std::vector<Entry> since(size_t mark) const {
        std::lock_guard lock(mutex_);
        return std::vector<Entry>(entries_.begin() + static_cast<std::ptrdiff_t>(std::min(mark, entries_.size())),
                                  entries_.end());
    }

private:
    vmemu::VoiceModuleEmulator &emulator_;
    mutable std::mutex mutex_;
    mutable std::condition_variable arrived_;
    std::vector<Entry> entries_;
};

// Both groups; the number of things that went other than they should.
int runDeferredDemo(Context &context, const TimedRequests &log);

}  // namespace tr104ctl
