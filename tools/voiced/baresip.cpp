#include "voiced/baresip.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <vector>

#include "emulator/write_all.h"
#include "voiced/account.h"

namespace voiced {

namespace {

using nlohmann::json;
using std::chrono::milliseconds;

constexpr auto kAnswerWait = std::chrono::seconds(5);
constexpr auto kConnectWait = std::chrono::seconds(10);
constexpr size_t kMaxFrame = 1 << 20;
constexpr size_t kOutputLines = 20;
// The audio a call sends: a 425 Hz tone, 8 kHz 16-bit mono.  A call ends when its source runs
// out, so the tone lasts longer than any test holds a call.
constexpr uint32_t kToneRate = 8000, kToneSeconds = 120;

std::string stringField(const json &object, const char *key) {
    auto it = object.find(key);
    return it != object.end() && it->is_string() ? it->get<std::string>() : std::string();
}

template <typename T>
T numberField(const json &object, const char *key) {
    auto it = object.find(key);
    return it != object.end() && it->is_number() ? it->get<T>() : T{};
}

void putLittle(std::string *out, uint32_t value, int bytes) {
    for (int i = 0; i < bytes; ++i) {
        out->push_back(static_cast<char>((value >> (8 * i)) & 0xFF));
    }
}

std::string toneWav() {
    const uint32_t samples = kToneRate * kToneSeconds;
    std::string wav = "RIFF";
    putLittle(&wav, 36 + samples * 2, 4);
    wav += "WAVEfmt ";
    putLittle(&wav, 16, 4);
    putLittle(&wav, 1, 2);  // PCM
    putLittle(&wav, 1, 2);  // mono
    putLittle(&wav, kToneRate, 4);
    putLittle(&wav, kToneRate * 2, 4);  // bytes a second
    putLittle(&wav, 2, 2);  // bytes a frame
    putLittle(&wav, 16, 2);  // bits a sample
    wav += "data";
    putLittle(&wav, samples * 2, 4);
    wav.reserve(wav.size() + samples * 2);
    for (uint32_t i = 0; i < samples; ++i) {
        const double phase = 2.0 * M_PI * 425.0 * i / kToneRate;
        putLittle(&wav, static_cast<uint16_t>(static_cast<int16_t>(6000.0 * std::sin(phase))), 2);
    }
    return wav;
}

bool writeFile(const std::string &path, const std::string &content, std::string *error) {
    const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    if (fd < 0) {
        *error = "cannot write " + path + ": " + std::strerror(errno);
        return false;
    }
    if (!vmemu::writeAll(fd, content)) {
        *error = "cannot write " + path + ": " + std::strerror(errno);
        ::close(fd);
        return false;
    }
    return ::close(fd) == 0;
}

// A TCP port of the loopback address that nothing uses now.
uint16_t freeLoopbackPort() {
    const int fd = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in addr{};
    addr.sin_family = AF_INET;
    addr.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t len = sizeof(addr);
    uint16_t port = 0;
    if (fd >= 0 && ::bind(fd, reinterpret_cast<sockaddr *>(&addr), sizeof(addr)) == 0 &&
        ::getsockname(fd, reinterpret_cast<sockaddr *>(&addr), &len) == 0) {
        port = ntohs(addr.sin_port);
    }
    if (fd >= 0) {
        ::close(fd);
    }
    return port;
}

}  // namespace

std::string netstring(const std::string &payload) { return std::to_string(payload.size()) + ":" + payload + ","; }

int takeNetstring(std::string *buffer, std::string *payload) {
    const size_t colon = buffer->find(':');
    if (colon == std::string::npos) {
        return buffer->size() > 10 ? -1 : 0;
    }
    if (colon == 0 || colon > 10 || buffer->find_first_not_of("0123456789") != colon) {
        return -1;
    }
    const size_t length = std::strtoul(buffer->c_str(), nullptr, 10);
    if (length > kMaxFrame) {
        return -1;
    }
    if (buffer->size() < colon + 1 + length + 1) {
        return 0;
    }
    if ((*buffer)[colon + 1 + length] != ',') {
        return -1;
    }
    *payload = buffer->substr(colon + 1, length);
    buffer->erase(0, colon + 1 + length + 1);
    return 1;
}

std::optional<Event> parseEvent(const std::string &text) {
    const json object = json::parse(text, nullptr, false);
    if (object.is_discarded() || !object.is_object() || !object.value("event", false)) {
        return std::nullopt;
    }
    Event event;
    event.type = stringField(object, "type");
    event.aor = stringField(object, "accountaor");
    event.direction = stringField(object, "direction");
    event.peer = stringField(object, "peeruri");
    event.id = stringField(object, "id");
    event.param = stringField(object, "param");
    auto stats = object.find("rtcp_stats");
    if (stats != object.end() && stats->is_object()) {
        RtcpStats rtcp;
        const json none = json::object();
        const json &tx = stats->contains("tx") && (*stats)["tx"].is_object() ? (*stats)["tx"] : none;
        const json &rx = stats->contains("rx") && (*stats)["rx"].is_object() ? (*stats)["rx"] : none;
        rtcp.txSent = numberField<uint32_t>(tx, "sent");
        rtcp.txLost = numberField<int32_t>(tx, "lost");
        rtcp.txJitter = numberField<uint32_t>(tx, "jit");
        rtcp.rxSent = numberField<uint32_t>(rx, "sent");
        rtcp.rxLost = numberField<int32_t>(rx, "lost");
        rtcp.rxJitter = numberField<uint32_t>(rx, "jit");
        rtcp.rtt = numberField<uint32_t>(*stats, "rtt");
        event.rtcp = rtcp;
    }
    return event;
}

std::optional<Baresip::Answer> parseAnswer(const std::string &text, const std::string &token) {
    if (token.empty()) {
        return std::nullopt;
    }
    const json object = json::parse(text, nullptr, false);
    if (!object.is_discarded() && object.is_object()) {
        if (stringField(object, "token") != token) {
            return std::nullopt;
        }
        return Baresip::Answer{object.value("ok", false), stringField(object, "data")};
    }
    // An answer whose data baresip did not escape as JSON wants: still the answer of its token.
    if (text.find("\"token\":\"" + token + "\"") == std::string::npos) {
        return std::nullopt;
    }
    return Baresip::Answer{text.find("\"ok\":true") != std::string::npos, ""};
}

std::string findProgram(const std::string &program) {
    if (program.find('/') != std::string::npos) {
        return ::access(program.c_str(), X_OK) == 0 ? program : std::string();
    }
    const char *path = std::getenv("PATH");
    std::string dirs = path != nullptr ? path : "/usr/local/bin:/usr/bin:/bin";
    size_t start = 0;
    while (start <= dirs.size()) {
        const size_t end = std::min(dirs.find(':', start), dirs.size());
        std::string candidate = dirs.substr(start, end - start) + "/" + program;
        if (end > start && ::access(candidate.c_str(), X_OK) == 0) {
            return candidate;
        }
        start = end + 1;
    }
    return "";
}

Baresip::~Baresip() {
    // Ending baresip builds a command; a destructor must not let an allocation failure out.
    try {
        stop();
    } catch (...) {
        std::fputs("[voiced] could not end baresip cleanly\n", stderr);
    }
}

bool Baresip::writeConfig(const BaresipOptions &options, uint16_t controlPort, std::string *error) {
    const char *tmp = std::getenv("TMPDIR");
    std::string pattern = std::string(tmp != nullptr && *tmp != '\0' ? tmp : "/tmp") + "/tr104-voiced.XXXXXX";
    std::vector<char> name(pattern.begin(), pattern.end());
    name.push_back('\0');
    if (::mkdtemp(name.data()) == nullptr) {  // mode 0700
        *error = "cannot create a private folder from " + pattern + ": " + std::strerror(errno);
        return false;
    }
    folder_ = name.data();
    const std::string sip = options.sipAddress + ":" + std::to_string(options.sipPort);
    const std::string config =
        "poll_method\t\tepoll\n"
        "sip_listen\t\t" +
        sip +
        "\n"
        "net_interface\t\t" +
        options.sipAddress +
        "\n"
        "audio_source\t\taufile," +
        folder_ +
        "/tone.wav\n"
        "audio_player\t\taubridge,line\n"
        "audio_alert\t\taubridge,line\n"
        "module_path\t\t" +
        options.modules +
        "\n"
        "module\t\t\tg711.so\n"
        "module\t\t\taufile.so\n"
        "module\t\t\taubridge.so\n"
        "module_app\t\taccount.so\n"
        "module_app\t\tmenu.so\n"
        "module_app\t\tctrl_tcp.so\n"
        "ctrl_tcp_listen\t\t127.0.0.1:" +
        std::to_string(controlPort) + "\n";
    return writeFile(folder_ + "/config", config, error) && writeFile(folder_ + "/accounts", "", error) &&
           writeFile(folder_ + "/tone.wav", toneWav(), error);
}

bool Baresip::start(const BaresipOptions &options, EventHandler events, std::string *error) {
    const std::string program = findProgram(options.program);
    if (program.empty()) {
        *error = "baresip not found (" + options.program +
                 "): install the Debian package baresip-core, or give --baresip PATH";
        return false;
    }
    if (::access((options.modules + "/ctrl_tcp.so").c_str(), R_OK) != 0) {
        *error = "no baresip modules in " + options.modules +
                 " (ctrl_tcp.so missing): install the Debian package baresip-core, or give --baresip-modules DIR";
        return false;
    }
    const uint16_t controlPort = freeLoopbackPort();
    if (controlPort == 0) {
        *error = "no free TCP port on 127.0.0.1 for baresip's control connection";
        return false;
    }
    if (!writeConfig(options, controlPort, error)) {
        return false;
    }
    int pipeFds[2];
    if (::pipe2(pipeFds, O_CLOEXEC) != 0) {
        *error = std::string("pipe: ") + std::strerror(errno);
        return false;
    }
    events_ = std::move(events);
    pid_ = ::fork();
    if (pid_ == 0) {
        // baresip ends with us; it reads nothing, its output goes to our reader.
        ::prctl(PR_SET_PDEATHSIG, SIGTERM);
        sigset_t none;
        sigemptyset(&none);
        ::sigprocmask(SIG_SETMASK, &none, nullptr);
        const int null = ::open("/dev/null", O_RDONLY);
        ::dup2(null, 0);
        ::dup2(pipeFds[1], 1);
        ::dup2(pipeFds[1], 2);
        const std::string folder = folder_;
        ::execl(program.c_str(), program.c_str(), "-f", folder.c_str(), static_cast<char *>(nullptr));
        std::fprintf(stderr, "exec %s: %s\n", program.c_str(), std::strerror(errno));
        ::_exit(127);
    }
    ::close(pipeFds[1]);
    if (pid_ < 0) {
        ::close(pipeFds[0]);
        *error = std::string("fork: ") + std::strerror(errno);
        return false;
    }
    output_ = pipeFds[0];
    outputReader_ = std::thread([this, verbose = options.verbose] { readOutput(verbose); });
    if (!connectControl(controlPort, error)) {
        stop();
        return false;
    }
    reader_ = std::thread([this] { readControl(); });
    return true;
}

bool Baresip::connectControl(uint16_t port, std::string *error) {
    sockaddr_in addr{};
    addr.sin_family = AF_INET;
    addr.sin_port = htons(port);
    addr.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    const auto deadline = std::chrono::steady_clock::now() + kConnectWait;
    while (std::chrono::steady_clock::now() < deadline) {
        int status = 0;
        if (::waitpid(pid_, &status, WNOHANG) == pid_) {
            pid_ = -1;
            *error = "baresip ended at start (status " + std::to_string(WIFEXITED(status) ? WEXITSTATUS(status) : -1) +
                     "): " + outputTail();
            return false;
        }
        const int fd = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
        if (fd >= 0 && ::connect(fd, reinterpret_cast<sockaddr *>(&addr), sizeof(addr)) == 0) {
            control_ = fd;
            std::lock_guard lock(mutex_);
            connected_ = true;
            return true;
        }
        if (fd >= 0) {
            ::close(fd);
        }
        std::this_thread::sleep_for(milliseconds(50));
    }
    *error = "baresip does not open its control port 127.0.0.1:" + std::to_string(port) + ": " + outputTail();
    return false;
}

void Baresip::readControl() {
    std::string buffer;
    char chunk[4096];
    for (;;) {
        const ssize_t n = ::recv(control_, chunk, sizeof(chunk), 0);
        if (n < 0 && errno == EINTR) {
            continue;
        }
        if (n <= 0) {
            break;
        }
        buffer.append(chunk, static_cast<size_t>(n));
        std::string payload;
        int taken;
        while ((taken = takeNetstring(&buffer, &payload)) == 1) {
            if (auto event = parseEvent(payload)) {
                events_(*event);
                continue;
            }
            std::lock_guard lock(mutex_);
            if (auto answer = parseAnswer(payload, waitingToken_)) {
                answer_ = std::move(answer);
                answered_.notify_all();
            }
        }
        if (taken < 0) {
            std::fprintf(stderr, "[voiced] baresip's control connection sent a malformed frame; closing it\n");
            break;
        }
    }
    std::lock_guard lock(mutex_);
    if (connected_ && !stopping_) {
        std::fprintf(stderr, "[voiced] baresip closed its control connection: the SIP lines no longer work\n");
    }
    connected_ = false;
    answered_.notify_all();
}

void Baresip::readOutput(bool verbose) {
    std::string line;
    char chunk[1024];
    for (;;) {
        const ssize_t n = ::read(output_, chunk, sizeof(chunk));
        if (n < 0 && errno == EINTR) {
            continue;
        }
        if (n <= 0) {
            return;
        }
        for (ssize_t i = 0; i < n; ++i) {
            if (chunk[i] != '\n' && chunk[i] != '\r') {
                line.push_back(chunk[i]);
                continue;
            }
            if (line.empty()) {
                continue;
            }
            // baresip echoes account lines: never with their password.
            const std::string shown = redacted(line);
            if (verbose) {
                std::printf("[baresip] %s\n", shown.c_str());
                std::fflush(stdout);
            }
            std::lock_guard lock(mutex_);
            outputTail_.push_back(shown);
            if (outputTail_.size() > kOutputLines) {
                outputTail_.pop_front();
            }
            line.clear();
        }
    }
}

std::string Baresip::outputTail() const {
    std::lock_guard lock(mutex_);
    std::string tail;
    for (const std::string &line : outputTail_) {
        tail += (tail.empty() ? "" : " | ") + line;
    }
    return tail.empty() ? "(no output)" : tail;
}

Baresip::Answer Baresip::command(const std::string &name, const std::string &params) {
    std::lock_guard serial(commandMutex_);
    std::unique_lock lock(mutex_);
    if (!connected_) {
        return {};
    }
    waitingToken_ = std::to_string(nextToken_++);
    answer_.reset();
    const json request = {{"command", name}, {"params", params}, {"token", waitingToken_}};
    lock.unlock();
    const bool sent = vmemu::writeAll(control_, netstring(request.dump()), vmemu::Descriptor::Socket);
    lock.lock();
    if (sent) {
        answered_.wait_for(lock, kAnswerWait, [this] { return answer_.has_value() || !connected_; });
    }
    waitingToken_.clear();
    return answer_.value_or(Answer{});
}

void Baresip::stop() {
    {
        std::lock_guard lock(mutex_);
        stopping_ = true;
    }
    if (pid_ > 0) {
        command("quit");
        // baresip takes long to end after a call; a second SIGTERM ends it at once.
        const auto waitEnd = [this](milliseconds bound) {
            const auto deadline = std::chrono::steady_clock::now() + bound;
            while (std::chrono::steady_clock::now() < deadline) {
                if (::waitpid(pid_, nullptr, WNOHANG) == pid_) {
                    return true;
                }
                std::this_thread::sleep_for(milliseconds(20));
            }
            return false;
        };
        if (!waitEnd(milliseconds(500))) {
            ::kill(pid_, SIGTERM);
            if (!waitEnd(milliseconds(300))) {
                ::kill(pid_, SIGTERM);
                if (!waitEnd(milliseconds(3000))) {
                    ::kill(pid_, SIGKILL);
                    ::waitpid(pid_, nullptr, 0);
                }
            }
        }
        pid_ = -1;
    }
    if (control_ >= 0) {
        ::shutdown(control_, SHUT_RDWR);
    }
    if (reader_.joinable()) {
        reader_.join();
    }
    if (outputReader_.joinable()) {
        outputReader_.join();
    }
    for (int *fd : {&control_, &output_}) {
        if (*fd >= 0) {
            ::close(*fd);
            *fd = -1;
        }
    }
    if (!folder_.empty()) {
        std::error_code ignored;
        std::filesystem::remove_all(folder_, ignored);
        folder_.clear();
    }
}

}  // namespace voiced
