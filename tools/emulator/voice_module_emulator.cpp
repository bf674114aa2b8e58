#include "emulator/voice_module_emulator.h"
#include "emulator/line_states.h"
#include "tr104/sip.h"

#include <sys/ipc.h>
#include <sys/msg.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>

namespace vmemu {

namespace {

// Message type of the private message that stops the serving thread.
constexpr long kStopType = 0x7FFFFFF0L;

uint32_t readWord(const char *p) {
    uint32_t v;
    std::memcpy(&v, p, sizeof(v));
    return v;
}

struct ModuleQueues {
    long module;
    int replyKey;
    int inboundKey;
};
constexpr ModuleQueues kModuleQueues[] = {{7, 36, 37}, {9, 160, 161}, {10, 162, 163}, {15, 164, 165}};

}  // namespace

std::string Request::text_at(size_t offset, size_t max) const {
    if (offset >= payload.size()) {
        return {};
    }
    const size_t limit = std::min(max, payload.size() - offset);
    const char *start = payload.data() + offset;
    return std::string(start, strnlen(start, limit));
}

const char *faultName(Fault fault) {
    switch (fault) {
    case Fault::None: return "none";
    case Fault::FailureMarker: return "marker";
    case Fault::Silent: return "silent";
    case Fault::Late: return "late";
    case Fault::WrongCmd: return "wrongcmd";
    case Fault::WrongType: return "wrongtype";
    case Fault::Garbage: return "garbage";
    case Fault::Noise: return "noise";
    }
    return "?";
}

std::optional<Fault> faultFromName(const std::string &name) {
    for (Fault f : {Fault::None, Fault::FailureMarker, Fault::Silent, Fault::Late, Fault::WrongCmd, Fault::WrongType,
                    Fault::Garbage, Fault::Noise}) {
        if (name == faultName(f)) {
            return f;
        }
    }
    return std::nullopt;
}

int VoiceModuleEmulator::replyKey(long module) {
    for (const ModuleQueues &q : kModuleQueues) {
        if (q.module == module) {
            return q.replyKey;
        }
    }
    return 0;
}

int VoiceModuleEmulator::inboundKey(long module) {
    for (const ModuleQueues &q : kModuleQueues) {
        if (q.module == module) {
            return q.inboundKey;
        }
    }
    return 0;
}

VoiceModuleEmulator::VoiceModuleEmulator() { registerBaseFamilies(*this); }

VoiceModuleEmulator::~VoiceModuleEmulator() { stop(); }

bool VoiceModuleEmulator::start() {
    if (running()) {
        return true;
    }
    sendQueue_ = msgget(TR104_SND_QUEUE_KEY, IPC_CREAT | 0666);
    if (sendQueue_ == -1) {
        std::perror("vmemu: msgget send queue");
        return false;
    }
    thread_ = std::thread([this] { serve(); });
    return true;
}

void VoiceModuleEmulator::stop() {
    if (!running()) {
        return;
    }
    Tr104WireMsg stopMsg{};
    stopMsg.mtype = kStopType;
    // Blocking send: the serving thread always reads, so a full queue drains.
    while (msgsnd(sendQueue_, &stopMsg, TR104_MSG_TEXT_LEN, 0) == -1 && errno == EINTR) {
    }
    thread_.join();
}

void VoiceModuleEmulator::onStored(StoredHook hook) {
    std::lock_guard lock(mutex_);
    stored_ = std::move(hook);
}

void VoiceModuleEmulator::setLiveAnswer(uint32_t cmd, LiveAnswer answer) {
    std::lock_guard lock(mutex_);
    if (answer) {
        live_[cmd] = std::move(answer);
    } else {
        live_.erase(cmd);
    }
}

void VoiceModuleEmulator::setReplyOverride(ReplyOverride hook) {
    std::lock_guard lock(mutex_);
    replyOverride_ = std::move(hook);
}

size_t VoiceModuleEmulator::servePending() {
    if (sendQueue_ == -1) {
        sendQueue_ = msgget(TR104_SND_QUEUE_KEY, IPC_CREAT | 0666);
    }
    Tr104WireMsg msg;
    size_t served = 0;
    for (;;) {
        const ssize_t n = msgrcv(sendQueue_, &msg, TR104_MSG_TEXT_LEN, 0, IPC_NOWAIT | MSG_NOERROR);
        if (n < 0) {
            if (errno == EINTR) {
                continue;
            }
            return served;
        }
        handle(msg, static_cast<size_t>(n));
        ++served;
    }
}

void VoiceModuleEmulator::serve() {
    Tr104WireMsg msg;
    for (;;) {
        const ssize_t n = msgrcv(sendQueue_, &msg, TR104_MSG_TEXT_LEN, 0, MSG_NOERROR);
        if (n < 0) {
            if (errno == EINTR) {
                continue;
            }
            std::perror("vmemu: msgrcv");
            return;
        }
        if (msg.mtype == kStopType) {
            return;
        }
        handle(msg, static_cast<size_t>(n));
    }
}

void VoiceModuleEmulator::addFamily(const RecordFamily &family) {
    std::lock_guard lock(mutex_);
    families_.erase(std::remove_if(families_.begin(), families_.end(),
                                   [&](const RecordFamily &f) { return f.name == family.name; }),
                    families_.end());
    families_.push_back(family);
}

void VoiceModuleEmulator::nameCommand(uint32_t cmd, const std::string &name) {
    std::lock_guard lock(mutex_);
    names_[cmd] = name;
}

std::string VoiceModuleEmulator::commandName(uint32_t cmd) const {
    std::lock_guard lock(mutex_);
    auto it = names_.find(cmd);
    return it == names_.end() ? std::string("?") : it->second;
}

void VoiceModuleEmulator::setHandler(uint32_t cmd, CommandHandler handler) {
    std::lock_guard lock(mutex_);
    handlers_[cmd] = std::move(handler);
}

const RecordFamily *VoiceModuleEmulator::familyOf(uint32_t cmd, bool *isSet) const {
    for (const RecordFamily &f : families_) {
        if (std::find(f.setCmds.begin(), f.setCmds.end(), cmd) != f.setCmds.end()) {
            *isSet = true;
            return &f;
        }
        if (std::find(f.getCmds.begin(), f.getCmds.end(), cmd) != f.getCmds.end()) {
            *isSet = false;
            return &f;
        }
    }
    return nullptr;
}

std::string VoiceModuleEmulator::keyOf(const RecordFamily &family, const char *record) const {
    std::string key = family.name;
    key.push_back('\0');
    for (const Field &k : family.keys) {
        if (k.width > 4) {
            // Text keys (names) compare up to their terminator.
            key.append(record + k.offset, strnlen(record + k.offset, k.width));
            key.push_back('\0');
        } else {
            key.append(record + k.offset, k.width);
        }
    }
    return key;
}

void VoiceModuleEmulator::put(const std::string &family, const void *record, size_t len) {
    std::lock_guard lock(mutex_);
    for (const RecordFamily &f : families_) {
        if (f.name == family) {
            std::vector<char> stored(f.length, 0);
            std::memcpy(stored.data(), record, std::min<size_t>(len, f.length));
            records_[keyOf(f, stored.data())] = std::move(stored);
            return;
        }
    }
    std::fprintf(stderr, "vmemu: no record family \"%s\"\n", family.c_str());
}

std::optional<std::vector<char>> VoiceModuleEmulator::get(const std::string &family, const void *keyRecord,
                                                          size_t len) const {
    std::lock_guard lock(mutex_);
    for (const RecordFamily &f : families_) {
        if (f.name == family) {
            std::vector<char> probe(f.length, 0);
            std::memcpy(probe.data(), keyRecord, std::min<size_t>(len, f.length));
            auto it = records_.find(keyOf(f, probe.data()));
            if (it == records_.end()) {
                return std::nullopt;
            }
            return it->second;
        }
    }
    return std::nullopt;
}

std::vector<char> &VoiceModuleEmulator::heldRecord(const std::string &family, uint32_t length,
                                                   const std::string &keyBytes) {
    std::string key = family;
    key.push_back('\0');
    key += keyBytes;
    auto it = records_.find(key);
    if (it == records_.end()) {
        it = records_.emplace(key, std::vector<char>(length, 0)).first;
    }
    return it->second;
}

void VoiceModuleEmulator::clearRecords() {
    std::lock_guard lock(mutex_);
    records_.clear();
}

std::vector<VoiceModuleEmulator::StoredRecord> VoiceModuleEmulator::storedRecords() const {
    std::lock_guard lock(mutex_);
    std::vector<StoredRecord> out;
    for (const auto &[key, data] : records_) {
        const size_t nul = key.find('\0');
        out.push_back({key.substr(0, nul), key.substr(nul + 1), data});
    }
    return out;
}

void VoiceModuleEmulator::restoreRecord(const StoredRecord &record) {
    std::lock_guard lock(mutex_);
    for (const RecordFamily &f : families_) {
        if (f.name == record.family) {
            std::vector<char> stored(f.length, 0);
            std::memcpy(stored.data(), record.data.data(), std::min<size_t>(record.data.size(), f.length));
            records_[keyOf(f, stored.data())] = std::move(stored);
            return;
        }
    }
    records_[record.family + '\0' + record.keyBytes] = record.data;
}

std::vector<RecordFamily> VoiceModuleEmulator::families() const {
    std::lock_guard lock(mutex_);
    return families_;
}

void VoiceModuleEmulator::storeSet(const RecordFamily &family, const Request &request) {
    const char *in = request.payload.data();
    const std::string key = keyOf(family, in);
    auto it = records_.find(key);
    if (it == records_.end()) {
        it = records_.emplace(key, std::vector<char>(family.length, 0)).first;
    }
    std::vector<char> &rec = it->second;
    auto copyField = [&](const Field &f) {
        if (f.offset + f.width <= family.length) {
            std::memcpy(rec.data() + f.offset, in + f.offset, f.width);
        }
    };
    for (const Field &k : family.keys) {
        copyField(k);
    }
    if (family.mask) {
        const uint32_t mask = readWord(in + family.mask->offset);
        for (const MaskedField &mf : family.maskedFields) {
            if (mask & mf.bit) {
                copyField(mf.field);
            }
        }
    } else if (!family.setFields.empty()) {
        for (const Field &f : family.setFields) {
            copyField(f);
        }
    } else {
        std::memcpy(rec.data(), in, family.length);
    }
}

bool VoiceModuleEmulator::answer(const Request &request, Payload &reply, const RecordFamily **stored) {
    auto h = handlers_.find(request.cmd);
    if (h != handlers_.end()) {
        return h->second(request, reply);
    }
    bool isSet = false;
    const RecordFamily *family = familyOf(request.cmd, &isSet);
    if (family == nullptr) {
        // Unknown command: echo the request payload, as a voice module that accepts it would.
        reply = request.payload;
        return true;
    }
    if (isSet) {
        storeSet(*family, request);
        *stored = family;
        return false;
    }
    auto it = records_.find(keyOf(*family, request.payload.data()));
    if (it != records_.end()) {
        std::memcpy(reply.data(), it->second.data(), family->length);
    } else {
        std::memcpy(reply.data(), request.payload.data(), family->length);
    }
    return true;
}

void VoiceModuleEmulator::setFault(uint32_t cmd, FaultSpec fault) {
    std::lock_guard lock(mutex_);
    faults_[cmd] = fault;
}

void VoiceModuleEmulator::clearFaults() {
    std::lock_guard lock(mutex_);
    faults_.clear();
}

std::optional<FaultSpec> VoiceModuleEmulator::takeFault(uint32_t cmd) {
    for (uint32_t key : {cmd, 0u}) {
        auto it = faults_.find(key);
        if (it == faults_.end() || it->second.kind == Fault::None || it->second.count == 0) {
            continue;
        }
        FaultSpec wanted = it->second;
        if (it->second.count > 0) {
            --it->second.count;
        }
        return wanted;
    }
    return std::nullopt;
}

int VoiceModuleEmulator::replyQueue(long module) {
    auto it = replyQueues_.find(module);
    if (it != replyQueues_.end()) {
        return it->second;
    }
    const int key = replyKey(module);
    const int id = key == 0 ? -1 : msgget(key, IPC_CREAT | 0666);
    replyQueues_[module] = id;
    return id;
}

void VoiceModuleEmulator::handle(const Tr104WireMsg &msg, size_t length) {
    const auto readAt = std::chrono::steady_clock::now();
    Request request;
    request.module = msg.mtype;
    std::memcpy(request.text.data(), msg.text, std::min(length, request.text.size()));
    request.cmd = readWord(request.text.data() + TR104_TEXT_CMD_OFFSET);
    std::memcpy(request.payload.data(), request.text.data() + TR104_TEXT_CFG_OFFSET, TR104_CFG_BUFFER_LEN);
    std::memcpy(request.reply.data(), request.text.data() + TR104_TEXT_RSP_OFFSET, TR104_RSP_BUFFER_LEN);

    Tr104WireMsg out{};
    out.mtype = TR104_CMD_TYPE_DATA;
    uint32_t replyCmd = request.cmd;
    Payload reply{};
    bool send;
    FaultSpec fault;
    int queue;
    std::function<void(const Request &)> callback;
    ReplyOverride override;
    Request shown;  // as logged: hidden fields blanked
    std::optional<RecordFamily> storedIn;
    StoredHook storedHook;
    LiveAnswer live;
    {
        std::lock_guard lock(mutex_);
        fault = takeFault(request.cmd).value_or(FaultSpec{});
        const RecordFamily *stored = nullptr;
        send = answer(request, reply, &stored);
        if (stored != nullptr && stored_) {
            storedIn = *stored;
            storedHook = stored_;
        }
        if (auto it = live_.find(request.cmd); it != live_.end() && fault.kind == Fault::None) {
            live = it->second;
        }
        queue = replyQueue(request.module);
        switch (fault.kind) {
        case Fault::Silent: send = false; break;
        case Fault::FailureMarker:
            reply.fill(0);
            std::memset(reply.data(), 0xFF, 13);
            break;
        case Fault::WrongCmd: replyCmd = request.cmd + 1; break;
        case Fault::WrongType: out.mtype = 2; break;
        case Fault::Garbage:
            for (char &c : out.text) {
                garbageSeed_ = garbageSeed_ * 1103515245u + 12345u;
                c = static_cast<char>(garbageSeed_ >> 16);
            }
            break;
        case Fault::Noise:
            for (char &c : reply) {
                garbageSeed_ = garbageSeed_ * 1103515245u + 12345u;
                c = static_cast<char>((garbageSeed_ >> 16) |
                                      0x01);  // odd bytes: never 0, so never the failure marker either
            }
            break;
        default: break;
        }
        shown = logged(request);
        log_.push_back(shown);
        ++seenCount_;
        while (log_.size() > logLimit_) {
            log_.pop_front();
        }
        callback = onRequest_;
        override = replyOverride_;
    }
    seen_.notify_all();
    if (storedIn) {
        storedHook(*storedIn, request);
    }
    if (live && send) {
        live(request, reply);
    }
    if (callback) {
        callback(shown);
    }
    if (!send) {
        noteServiceTime(readAt);
        return;
    }
    // Time spent on purpose (a busy or late voice module) is not service time.
    const auto waitFrom = std::chrono::steady_clock::now();
    waitReplyDelay(readAt);
    if (fault.kind == Fault::Late && fault.delayMs > 0) {
        std::this_thread::sleep_for(std::chrono::milliseconds(fault.delayMs));
    }
    const auto waited = std::chrono::steady_clock::now() - waitFrom;
    if (fault.kind != Fault::Garbage) {
        std::memcpy(out.text + TR104_TEXT_CMD_OFFSET, &replyCmd, sizeof(replyCmd));
        std::memcpy(out.text + TR104_TEXT_CFG_OFFSET, request.payload.data(), TR104_CFG_BUFFER_LEN);
        std::memcpy(out.text + TR104_TEXT_RSP_OFFSET, reply.data(), TR104_RSP_BUFFER_LEN);
    }
    if (override && !override(request, out)) {
        return;
    }
    // Never block on a client that does not read: a full reply queue drops the reply.
    if (queue == -1 || msgsnd(queue, &out, TR104_MSG_TEXT_LEN, IPC_NOWAIT) == -1) {
        std::lock_guard lock(mutex_);
        ++dropped_;
    }
    noteServiceTime(readAt + waited);
}

void VoiceModuleEmulator::setReplyDelay(std::chrono::microseconds delay) { replyDelayUs_ = delay.count(); }

// Sleeps until the reply is due.  The serving thread's timer slack (50 us by default, as long
// as the shortest delays) is lowered first; it does not spin, which would hold the processor
// that a caller on the same core needs.
void VoiceModuleEmulator::waitReplyDelay(std::chrono::steady_clock::time_point readAt) const {
    const int64_t us = replyDelayUs_.load(std::memory_order_relaxed);
    if (us <= 0) {
        return;
    }
    prctl(PR_SET_TIMERSLACK, 1UL, 0UL, 0UL, 0UL);
    std::this_thread::sleep_until(readAt + std::chrono::microseconds(us));
}

void VoiceModuleEmulator::noteServiceTime(std::chrono::steady_clock::time_point readAt) {
    const auto ns = std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::steady_clock::now() - readAt);
    const uint32_t sample = static_cast<uint32_t>(std::min<int64_t>(ns.count(), UINT32_MAX));
    std::lock_guard lock(mutex_);
    if (service_.size() < kServiceSamples) {
        service_.push_back(sample);
    } else {
        service_[serviceNext_] = sample;
        serviceNext_ = (serviceNext_ + 1) % kServiceSamples;
    }
}

std::vector<uint32_t> VoiceModuleEmulator::serviceTimes() const {
    std::lock_guard lock(mutex_);
    return service_;
}

void VoiceModuleEmulator::clearServiceTimes() {
    std::lock_guard lock(mutex_);
    service_.clear();
    serviceNext_ = 0;
}

bool VoiceModuleEmulator::sendInbound(long module, uint32_t cmdType, uint32_t cmd, const void *payload, size_t len) {
    const int key = inboundKey(module);
    if (key == 0) {
        return false;
    }
    const int queue = msgget(key, IPC_CREAT | 0666);
    if (queue == -1) {
        return false;
    }
    Tr104WireMsg msg{};
    msg.mtype = static_cast<long>(cmdType);
    std::memcpy(msg.text + TR104_TEXT_CMD_OFFSET, &cmd, sizeof(cmd));
    if (payload != nullptr) {
        std::memcpy(msg.text + TR104_TEXT_RSP_OFFSET, payload, std::min<size_t>(len, TR104_RSP_BUFFER_LEN));
    }
    // The queue holds three messages; give the reader up to two seconds to make room.
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(2);
    while (msgsnd(queue, &msg, TR104_MSG_TEXT_LEN, IPC_NOWAIT) != 0) {
        if (errno != EAGAIN || std::chrono::steady_clock::now() >= deadline) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

std::vector<Request> VoiceModuleEmulator::requests() const {
    std::lock_guard lock(mutex_);
    return std::vector<Request>(log_.begin(), log_.end());
}

void VoiceModuleEmulator::setLogLimit(size_t limit) {
    std::lock_guard lock(mutex_);
    logLimit_ = limit == 0 ? 1 : limit;
}

size_t VoiceModuleEmulator::requestCount() const {
    std::lock_guard lock(mutex_);
    return seenCount_;
}

void VoiceModuleEmulator::clearLog() {
    std::lock_guard lock(mutex_);
    log_.clear();
    seenCount_ = 0;
}

bool VoiceModuleEmulator::waitForRequests(size_t n, std::chrono::milliseconds timeout) const {
    std::unique_lock lock(mutex_);
    return seen_.wait_for(lock, timeout, [&] { return seenCount_ >= n; });
}

std::vector<Request> VoiceModuleEmulator::requestsFor(uint32_t cmd) const {
    std::lock_guard lock(mutex_);
    std::vector<Request> out;
    for (const Request &r : log_) {
        if (r.cmd == cmd) {
            out.push_back(r);
        }
    }
    return out;
}

void VoiceModuleEmulator::onRequest(std::function<void(const Request &)> callback) {
    std::lock_guard lock(mutex_);
    onRequest_ = std::move(callback);
}

size_t VoiceModuleEmulator::droppedReplies() const {
    std::lock_guard lock(mutex_);
    return dropped_;
}

void VoiceModuleEmulator::hideInLog(uint32_t cmd, Field field) {
    std::lock_guard lock(mutex_);
    hidden_[cmd].push_back(field);
}

// The request as the log keeps it: each hidden field that holds anything becomes "********"
// (as much of it as fits before a terminator), in the payload and in the whole text alike.
Request VoiceModuleEmulator::logged(const Request &request) const {
    Request out = request;
    const auto hidden = hidden_.find(request.cmd);
    if (hidden == hidden_.end()) {
        return out;
    }
    constexpr size_t kPayloadAt = sizeof(uint32_t);  // the payload follows the command id in the text
    for (const Field &f : hidden->second) {
        const size_t room = out.payload.size();
        if (f.width == 0 || f.offset >= room || f.width > room - f.offset) {
            continue;
        }
        const size_t width = f.width;
        char *at = out.payload.data() + f.offset;
        const bool set = std::any_of(at, at + width, [](char c) { return c != 0; });
        std::fill(at, at + width, '\0');
        if (set) {
            std::fill(at, at + std::min<size_t>(8, width - 1), '*');
        }
        std::copy(at, at + width, out.text.data() + kPayloadAt + f.offset);
    }
    return out;
}

std::string VoiceModuleEmulator::describe(const Request &request) const {
    std::lock_guard lock(mutex_);
    char head[96];
    auto name = names_.find(request.cmd);
    std::snprintf(head, sizeof(head), "module=%ld cmd=%u (0x%04X %s)", request.module, request.cmd, request.cmd,
                  name == names_.end() ? "?" : name->second.c_str());
    std::string line = head;
    bool isSet = false;
    if (const RecordFamily *family = familyOf(request.cmd, &isSet)) {
        for (const Field &k : family->keys) {
            char field[96];
            const char *label = k.name ? k.name : "key";
            if (k.width == 1) {
                std::snprintf(field, sizeof(field), " %s=%u", label, request.word<uint8_t>(k.offset));
            } else if (k.width == 2) {
                std::snprintf(field, sizeof(field), " %s=%u", label, request.word<uint16_t>(k.offset));
            } else if (k.width == 4) {
                std::snprintf(field, sizeof(field), " %s=%u", label, request.word<uint32_t>(k.offset));
            } else {
                std::snprintf(field, sizeof(field), " %s=\"%s\"", label, request.text_at(k.offset, k.width).c_str());
            }
            line += field;
        }
        line += isSet ? " set" : " get";
    }
    return line;
}

namespace {
std::vector<FamilyInstaller> &installers() {
    static std::vector<FamilyInstaller> list;
    return list;
}
}  // namespace

FamilyRegistrar::FamilyRegistrar(FamilyInstaller installer) { installers().push_back(installer); }

namespace {
struct ConsoleEntry {
    const char *help;
    ConsoleCommand command;
};
std::vector<ConsoleEntry> &consoleCommands() {
    static std::vector<ConsoleEntry> commands;
    return commands;
}
}  // namespace

ConsoleRegistrar::ConsoleRegistrar(const char *help, ConsoleCommand command) {
    consoleCommands().push_back({help, command});
}

bool runConsoleCommand(VoiceModuleEmulator &emulator, const std::string &verb, std::istream &args, std::string *out) {
    const std::streampos start = args.tellg();
    for (const ConsoleEntry &entry : consoleCommands()) {
        args.clear();
        args.seekg(start);
        if (entry.command(emulator, verb, args, out)) {
            return true;
        }
    }
    return false;
}

std::vector<std::string> consoleHelp() {
    std::vector<std::string> lines;
    for (const ConsoleEntry &entry : consoleCommands()) {
        lines.emplace_back(entry.help);
    }
    return lines;
}

void registerBaseFamilies(VoiceModuleEmulator &emulator) {
    for (FamilyInstaller install : installers()) {
        install(emulator);
    }
    RecordFamily simple;
    simple.name = "simple data";
    simple.length = TR104_CFG_BUFFER_LEN;
    simple.keys = {{4, 4, "port"}, {8, 4, "param"}};
    simple.setCmds = {20481};
    simple.getCmds = {20482};
    emulator.addFamily(simple);
    emulator.nameCommand(20481, "SET_SIMPLE_DATA");
    emulator.nameCommand(20482, "GET_SIMPLE_DATA");

    RecordFamily portStatus;
    portStatus.name = "port status";
    portStatus.length = TR104_PORT_STATUS_LEN;
    portStatus.keys = {{0, 4, "port"}};
    portStatus.getCmds = {TR104_GET_PORT_STATUS_ID};
    emulator.addFamily(portStatus);
    emulator.nameCommand(TR104_GET_PORT_STATUS_ID, "GET_PORT_STATUS_ID");
    // The ports at power-on: not registered, idle (no voice profile bound yet).
    for (uint32_t line = 1; line <= 2; ++line) {
        Tr104SipLineRecord status{};
        status.unLine = line;
        std::strcpy(status.aRegState, line::kUnregistered);
        std::strcpy(status.aCallState, line::kCallIdle);
        emulator.put(portStatus.name, &status, sizeof(status));
    }
}

}  // namespace vmemu
