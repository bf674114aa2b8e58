// The SIP user agent: baresip as a child process with a private configuration, driven through
// its TCP control module.  Commands and answers are JSON objects in netstrings
// ({"command","params","token"} out; {"response","ok","data","token"} and {"event","type",...}
// in).  baresip starts with no account; accounts are added and removed by command, so that
// their credentials never reach the disk.
#pragma once

#include <sys/types.h>

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

#include "voiced/line_activity.h"

namespace voiced {

struct BaresipOptions {
    std::string program = "baresip";  // a path, or a name looked up on PATH
    std::string modules = "/usr/lib/baresip/modules";  // its module folder
    std::string sipAddress = "127.0.0.1";
    uint16_t sipPort = 5080;  // baresip also binds the next port
    bool verbose = false;  // print baresip's own output
};

// Netstring framing: "LEN:PAYLOAD,".
std::string netstring(const std::string &payload);
// Takes the first complete netstring off the front of *buffer into *payload: 1 taken, 0 not
// complete yet, -1 malformed.
int takeNetstring(std::string *buffer, std::string *payload);
// An event object of the control connection; nullopt for anything else.
std::optional<Event> parseEvent(const std::string &json);

class Baresip {
public:
    using EventHandler = std::function<void(const Event &)>;
    struct Answer {
        bool ok = false;
        std::string data;
    };

    Baresip() = default;
    ~Baresip();
    Baresip(const Baresip &) = delete;
    Baresip &operator=(const Baresip &) = delete;

    // Writes the configuration into a private folder (mode 0700), starts baresip and connects to
    // its control port.  Events are handed to `events` on the reader thread: it must not send
    // commands itself.  false with a one-line *error.
    bool start(const BaresipOptions &options, EventHandler events, std::string *error);
    // One command and its answer (ok false when baresip refuses it or does not answer in 5 s).
    Answer command(const std::string &name, const std::string &params = "");
    // Ends baresip (quit, then SIGTERM twice, SIGKILL as a last resort) and removes its folder.
    void stop();
    pid_t pid() const { return pid_; }
    const std::string &folder() const { return folder_; }

private:
    bool writeConfig(const BaresipOptions &options, uint16_t controlPort, std::string *error);
    bool connectControl(uint16_t port, std::string *error);
    void readControl();
    void readOutput(bool verbose);
    std::string outputTail() const;

    pid_t pid_ = -1;
    int control_ = -1;
    int output_ = -1;
    std::string folder_;
    EventHandler events_;
    std::thread reader_, outputReader_;
    std::mutex commandMutex_;  // one command at a time
    mutable std::mutex mutex_;
    std::condition_variable answered_;
    uint64_t nextToken_ = 1;
    std::string waitingToken_;
    std::optional<Answer> answer_;
    bool connected_ = false;
    bool stopping_ = false;
    std::deque<std::string> outputTail_;
};

// The answer to the command of `token` in a frame of the control connection; nullopt when the
// frame is something else.
std::optional<Baresip::Answer> parseAnswer(const std::string &json, const std::string &token);

// The program's path: as given when it holds a '/', else the first match on PATH ("" if none).
std::string findProgram(const std::string &program);

}  // namespace voiced
