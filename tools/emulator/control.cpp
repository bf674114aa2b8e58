// The emulator's console commands and its control socket (see control.h).
#include "emulator/control.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <sstream>
#include <vector>

#include "emulator/write_all.h"

namespace vmemu {
namespace {

constexpr size_t kMaxLine = 4096;

}  // namespace

bool parseFault(const std::string &text, uint32_t *cmd, FaultSpec *wanted) {
    std::vector<std::string> parts;
    std::stringstream in(text);
    for (std::string part; std::getline(in, part, ':');) {
        parts.push_back(part);
    }
    if (parts.size() < 2) {
        return false;
    }
    auto kind = faultFromName(parts[1]);
    if (!kind) {
        return false;
    }
    *cmd = static_cast<uint32_t>(std::strtoul(parts[0].c_str(), nullptr, 0));
    wanted->kind = *kind;
    wanted->delayMs = parts.size() > 2 ? std::atoi(parts[2].c_str()) : 0;
    wanted->count = parts.size() > 3 ? std::atoi(parts[3].c_str()) : -1;
    return true;
}

std::string controlHelp() {
    std::string out =
        "fault CMD KIND [MS [COUNT]]   inject a fault (KIND: none marker silent late wrongcmd wrongtype\n"
        "                              garbage noise; CMD 0: every command)\n"
        "clear                         remove every fault\n"
        "inbound MODULE TYPE CMD [WORD]...  push an unsolicited message (words of the payload)\n"
        "log [N]                       the last N requests (10), then how many were served\n"
        "requests CMD [BYTES]          the requests received with that command id, the first BYTES\n"
        "                              (16) bytes of each payload in hex\n"
        "help                          this list\n";
    for (const std::string &help : consoleHelp()) {
        out += help + "\n";
    }
    return out;
}

std::string runControlLine(VoiceModuleEmulator &emulator, const std::string &line) {
    std::stringstream in(line);
    std::string verb;
    in >> verb;
    char buf[160];
    if (verb.empty()) {
        return "";
    }
    if (verb == "fault") {
        std::string cmd, kind, ms = "0", count = "-1";
        in >> cmd >> kind >> ms >> count;
        uint32_t id;
        FaultSpec wanted;
        if (!parseFault(cmd + ":" + kind + ":" + ms + ":" + count, &id, &wanted)) {
            return "bad fault\n";
        }
        emulator.setFault(id, wanted);
        std::snprintf(buf, sizeof(buf), "fault %u %s\n", id, faultName(wanted.kind));
        return buf;
    }
    if (verb == "clear") {
        emulator.clearFaults();
        return "faults cleared\n";
    }
    if (verb == "inbound") {
        long module = 0;
        uint32_t type = 0, cmd = 0, word = 0;
        in >> module >> type >> cmd;
        std::vector<uint32_t> words;
        while (in >> word) {
            words.push_back(word);
        }
        const bool ok = emulator.sendInbound(module, type, cmd, words.data(), words.size() * sizeof(uint32_t));
        std::snprintf(buf, sizeof(buf), "inbound module=%ld cmd=%u %s\n", module, cmd, ok ? "sent" : "failed");
        return buf;
    }
    if (verb == "log") {
        size_t n = 10;
        in >> n;
        const std::vector<Request> log = emulator.requests();
        std::string out;
        for (size_t i = log.size() > n ? log.size() - n : 0; i < log.size(); ++i) {
            out += emulator.describe(log[i]) + "\n";
        }
        std::snprintf(buf, sizeof(buf), "%zu requests served\n", emulator.requestCount());
        return out + buf;
    }
    if (verb == "requests") {
        uint32_t cmd = 0;
        size_t bytes = 16;
        in >> cmd >> bytes;
        const std::vector<Request> seen = emulator.requestsFor(cmd);
        std::snprintf(buf, sizeof(buf), "requests cmd=%u: %zu\n", cmd, seen.size());
        std::string out = buf;
        for (const Request &r : seen) {
            std::snprintf(buf, sizeof(buf), "request cmd=%u payload", cmd);
            out += buf;
            for (size_t i = 0; i < std::min(bytes, r.payload.size()); ++i) {
                std::snprintf(buf, sizeof(buf), " %02x", static_cast<unsigned char>(r.payload[i]));
                out += buf;
            }
            out += "\n";
        }
        return out;
    }
    if (verb == "help") {
        return controlHelp();
    }
    std::string out;
    if (runConsoleCommand(emulator, verb, in, &out)) {
        if (!out.empty() && out.back() != '\n') {
            out += "\n";
        }
        return out;
    }
    return "unknown command: " + verb + " (help lists the commands)\n";
}

bool ControlServer::start(VoiceModuleEmulator &emulator, const std::string &path, std::string *error) {
    sockaddr_un addr{};
    if (path.empty() || path.size() >= sizeof(addr.sun_path)) {
        *error = "control socket path empty or too long: " + path;
        return false;
    }
    addr.sun_family = AF_UNIX;
    std::memcpy(addr.sun_path, path.c_str(), path.size());
    listen_ = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    unlink(path.c_str());
    if (listen_ < 0 || bind(listen_, reinterpret_cast<sockaddr *>(&addr), sizeof(addr)) != 0 ||
        listen(listen_, 8) != 0 || pipe2(wake_, O_CLOEXEC) != 0) {
        *error = "control socket " + path + ": " + std::strerror(errno);
        stop();
        return false;
    }
    path_ = path;
    thread_ = std::thread(&ControlServer::serve, this, &emulator);
    return true;
}

void ControlServer::stop() {
    if (thread_.joinable()) {
        const char stopByte = 0;
        (void)!write(wake_[1], &stopByte, 1);
        thread_.join();
    }
    for (int *fd : {&listen_, &wake_[0], &wake_[1]}) {
        if (*fd >= 0) {
            close(*fd);
            *fd = -1;
        }
    }
    if (!path_.empty()) {
        unlink(path_.c_str());
        path_.clear();
    }
}

// One thread polls the listening socket, the stop pipe and every connection; a connection's
// complete lines are run in order and answered on it.
void ControlServer::serve(VoiceModuleEmulator *emulator) {
    std::map<int, std::string> pending;  // connection -> bytes of an unfinished line
    for (;;) {
        std::vector<pollfd> fds = {{wake_[0], POLLIN, 0}, {listen_, POLLIN, 0}};
        for (const auto &conn : pending) {
            fds.push_back({conn.first, POLLIN, 0});
        }
        if (poll(fds.data(), fds.size(), -1) < 0 && errno != EINTR) {
            break;
        }
        if (fds[0].revents != 0) {
            break;
        }
        if (fds[1].revents & POLLIN) {
            const int conn = accept4(listen_, nullptr, nullptr, SOCK_CLOEXEC);
            if (conn >= 0) {
                pending[conn];
            }
        }
        for (size_t i = 2; i < fds.size(); ++i) {
            if (fds[i].revents == 0) {
                continue;
            }
            char buf[512];
            const ssize_t got = read(fds[i].fd, buf, sizeof(buf));
            std::string &line = pending[fds[i].fd];
            // A connection that ends, or sends a line longer than any command, is closed.
            if (got <= 0 || line.size() > kMaxLine) {
                close(fds[i].fd);
                pending.erase(fds[i].fd);
                continue;
            }
            line.append(buf, static_cast<size_t>(got));
            for (size_t nl; (nl = line.find('\n')) != std::string::npos;) {
                const std::string answer = runControlLine(*emulator, line.substr(0, nl));
                line.erase(0, nl + 1);
                // A reader that went away only loses its answer (MSG_NOSIGNAL: no SIGPIPE).
                (void)!writeAll(fds[i].fd, answer, Descriptor::Socket);
            }
        }
    }
    for (const auto &conn : pending) {
        close(conn.first);
    }
}

}  // namespace vmemu
