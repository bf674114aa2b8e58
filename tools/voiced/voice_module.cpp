#include "voiced/voice_module.h"

#include <cstdio>
#include <cstring>
#include <sstream>

#include "tr104/linetest.h"
#include "tr104/sip.h"
#include "tr104/sip/server_record.h"
#include "tr104/sip_identity.h"
#include "tr104/statistics.h"

namespace voiced {

namespace {

using tr104::sip::ServerRecord;

// The line record as the identity commands fill it (line number, directory number, user name
// and password); the other fields of the 452 bytes are not ours.
struct LineIdentity {
    uint32_t unLine;
    uint8_t aucReserved1[4];
    char aNumber[TR104_LINE_IDENTITY_LEN];
    uint8_t aucReserved2[150];
    char aAuthUserName[TR104_LINE_IDENTITY_LEN];
    char aAuthPassword[TR104_LINE_IDENTITY_LEN];
    uint8_t aucReserved3[96];
};
static_assert(sizeof(LineIdentity) == sizeof(Tr104SipLineRecord));
static_assert(offsetof(LineIdentity, aNumber) == TR104_LINE_NUMBER_OFFSET);
static_assert(offsetof(LineIdentity, aAuthUserName) == TR104_LINE_AUTH_USER_OFFSET);
static_assert(offsetof(LineIdentity, aAuthPassword) == TR104_LINE_AUTH_PWD_OFFSET);

// The emulator's families that hold the settings.
constexpr const char *kRegistrarFamily = "sip registrar server";
constexpr const char *kProxyFamily = "sip proxy server";
constexpr const char *kOutboundFamily = "sip outbound proxy";
constexpr const char *kEnableFamily = "sip line enable";
constexpr const char *kNumberFamily = "sip directory number";
constexpr const char *kAuthFamily = "sip line auth";
constexpr const char *kSettingFamilies[] = {kRegistrarFamily, kProxyFamily,  kOutboundFamily,
                                            kEnableFamily,    kNumberFamily, kAuthFamily};

constexpr auto kPollEvery = std::chrono::milliseconds(200);

template <size_t N>
std::string textOf(const char (&field)[N]) {
    return std::string(field, strnlen(field, N));
}

template <typename Record>
Record stored(vmemu::VoiceModuleEmulator &e, const char *family, const Record &key) {
    Record record = key;
    if (auto held = e.get(family, &key, sizeof(key))) {
        std::memcpy(&record, held->data(), std::min(sizeof(record), held->size()));
    }
    return record;
}

Server primaryServer(vmemu::VoiceModuleEmulator &e, const char *family) {
    ServerRecord key{};
    key.nServerFlag = TR104_SERVER_PRIMARY;
    const ServerRecord record = stored(e, family, key);
    return {textOf(record.aHostAddr), record.usPort};
}

void say(const char *format, const std::string &a = "", const std::string &b = "") {
    std::printf("[voiced] ");
    std::printf(format, a.c_str(), b.c_str());
    std::printf("\n");
    std::fflush(stdout);
}

}  // namespace

ProfileSettings storedProfile(vmemu::VoiceModuleEmulator &e, uint32_t registrationPeriod) {
    ProfileSettings profile;
    profile.registrar = primaryServer(e, kRegistrarFamily);
    profile.proxy = primaryServer(e, kProxyFamily);
    profile.outboundProxy = primaryServer(e, kOutboundFamily);
    profile.registrationPeriod = registrationPeriod;
    return profile;
}

LineSettings storedLine(vmemu::VoiceModuleEmulator &e, uint32_t line) {
    LineIdentity key{};
    key.unLine = line;
    Tr104SipLineRecord enableKey{};
    enableKey.unLine = line;
    LineSettings settings;
    settings.enabled = stored(e, kEnableFamily, enableKey).unEnable != 0;
    settings.number = textOf(stored(e, kNumberFamily, key).aNumber);
    const LineIdentity auth = stored(e, kAuthFamily, key);
    settings.authUser = textOf(auth.aAuthUserName);
    settings.password = textOf(auth.aAuthPassword);
    return settings;
}

bool appliesToAccounts(const std::string &family) {
    for (const char *name : kSettingFamilies) {
        if (family == name) {
            return true;
        }
    }
    return false;
}

VoiceModule::VoiceModule(vmemu::VoiceModuleEmulator &emulator, Options options)
    : emulator_(emulator), options_(std::move(options)) {
    for (Line &line : lines_) {
        line.test = SimulatedCall(options_.hold);
    }
}

VoiceModule::~VoiceModule() { stop(); }

bool VoiceModule::start(std::string *error) {
    if (!agent_.start(
            options_.baresip, [this](const Event &event) { onEvent(event); }, error)) {
        return false;
    }
    say("baresip %s on %s (its configuration in a private folder)", std::to_string(agent_.pid()),
        options_.baresip.sipAddress + ":" + std::to_string(options_.baresip.sipPort));
    const auto lineOfRequest = [](const vmemu::Request &r) { return r.word<uint32_t>(0); };
    emulator_.setLiveAnswer(GET_PORT_STATUS_ID, [this, lineOfRequest](const vmemu::Request &r, vmemu::Payload &reply) {
        const uint32_t line = lineOfRequest(r);
        if (line < 1 || line > kLines) {
            return;
        }
        Tr104SipLineRecord status;
        std::memcpy(&status, reply.data(), sizeof(status));
        {
            std::lock_guard lock(mutex_);
            lines_[line - 1].activity.fillStatus(&status);
        }
        vmemu::putRecord(reply, status);
    });
    emulator_.setLiveAnswer(
        TR104_SIP_LINE_STATS_CMD, [this, lineOfRequest](const vmemu::Request &r, vmemu::Payload &reply) {
            const uint32_t line = lineOfRequest(r);
            if (line >= 1 && line <= kLines) {
                std::lock_guard lock(mutex_);
                const Tr104SipLineStatsRecord counters = lines_[line - 1].activity.counters(line, Clock::now());
                vmemu::putRecord(reply, counters);
            }
        });
    emulator_.setLiveAnswer(TR104_RTP_STATS_CMD, [this, lineOfRequest](const vmemu::Request &r, vmemu::Payload &reply) {
        const uint32_t line = lineOfRequest(r);
        if (line >= 1 && line <= kLines) {
            std::lock_guard lock(mutex_);
            const Tr104LineRtpStatsBlock rtp = lines_[line - 1].activity.rtp(line);
            vmemu::putRecord(reply, rtp);
        }
    });
    emulator_.setLiveAnswer(GET_SMULT_TEST_ID, [this](const vmemu::Request &r, vmemu::Payload &reply) {
        auto block = r.record<Tr104SmultParam>();
        if (block.unPort < 1 || block.unPort > kLines) {
            return;
        }
        {
            std::lock_guard lock(mutex_);
            lines_[block.unPort - 1].test.fill(&block);
        }
        vmemu::putRecord(reply, block);
    });
    // The proxy in use (a proxy read with flag 0): the server a registered line's requests go to.
    emulator_.setLiveAnswer(GET_PROXY_CFG_ID, [this](const vmemu::Request &r, vmemu::Payload &reply) {
        auto record = r.record<ServerRecord>();
        if (record.nServerFlag != TR104_SERVER_IN_USE) {
            return;
        }
        std::memcpy(&record, reply.data(), sizeof(record));
        bool anyRegistered = false;
        {
            std::lock_guard lock(mutex_);
            for (const Line &l : lines_) {
                anyRegistered = anyRegistered || l.activity.registered();
            }
        }
        if (anyRegistered) {
            const std::string host = routeOf(storedProfile(emulator_, options_.registrationPeriod)).host;
            std::memset(record.aActiveProxy, 0, sizeof(record.aActiveProxy));
            std::memcpy(record.aActiveProxy, host.data(), std::min(host.size(), sizeof(record.aActiveProxy) - 1));
            vmemu::putRecord(reply, record);
        }
    });
    emulator_.onStored([this](const vmemu::RecordFamily &family, const vmemu::Request &) { onStored(family); });
    worker_ = std::thread([this] { work(); });
    post([this] { apply(); });
    return true;
}

void VoiceModule::stop() {
    {
        std::lock_guard lock(mutex_);
        if (!worker_.joinable()) {
            return;
        }
        stopping_ = true;
    }
    wake_.notify_all();
    worker_.join();
    emulator_.onStored(nullptr);
    for (uint32_t cmd : {static_cast<uint32_t>(GET_PORT_STATUS_ID), static_cast<uint32_t>(TR104_SIP_LINE_STATS_CMD),
                         static_cast<uint32_t>(TR104_RTP_STATS_CMD), static_cast<uint32_t>(GET_SMULT_TEST_ID),
                         static_cast<uint32_t>(GET_PROXY_CFG_ID)}) {
        emulator_.setLiveAnswer(cmd, nullptr);
    }
    agent_.stop();
}

void VoiceModule::post(std::function<void()> job) {
    {
        std::lock_guard lock(mutex_);
        jobs_.push_back(std::move(job));
    }
    wake_.notify_all();
}

void VoiceModule::onStored(const vmemu::RecordFamily &family) {
    if (appliesToAccounts(family.name)) {
        post([this] { apply(); });
    }
}

void VoiceModule::onRequest(const vmemu::Request &request) {
    const auto now = Clock::now();
    switch (request.cmd) {
    case REGISTER_LINE_ID:
    case UNREGISTER_LINE_ID: {
        const uint32_t line = request.word<uint32_t>(0);
        if (line >= 1 && line <= kLines) {
            std::lock_guard lock(mutex_);
            lines_[line - 1].unregistered = request.cmd == UNREGISTER_LINE_ID;
            lines_[line - 1].reregister = request.cmd == REGISTER_LINE_ID;
        }
        post([this] { apply(); });
        break;
    }
    case RESET_LINE_STATISTICS_ID: {
        const uint32_t line = request.word<uint32_t>(0);
        if (line >= 1 && line <= kLines) {
            std::lock_guard lock(mutex_);
            lines_[line - 1].activity.resetStatistics(now);
        }
        break;
    }
    case SET_SMULT_TEST_ID: {
        const auto block = request.record<Tr104SmultParam>();
        if (block.unPort < 1 || block.unPort > kLines) {
            break;
        }
        const int line = static_cast<int>(block.unPort);
        CallAction action;
        {
            std::lock_guard lock(mutex_);
            Line &l = lines_[line - 1];
            action =
                l.test.start(block.unTestType, textOf(block.aCalledNum), block.unTimeout, l.activity.registered(), now);
            say("line %s: simulated call test: %s", std::to_string(line), l.test.describe());
        }
        act(line, action);
        break;
    }
    default: break;
    }
}

int VoiceModule::lineOf(const std::string &aor) const {
    for (int i = 0; i < kLines; ++i) {
        if (!lines_[i].aor.empty() && lines_[i].aor == aor) {
            return i;
        }
    }
    return -1;
}

void VoiceModule::onEvent(const Event &event) {
    CallAction actions[kLines] = {};
    {
        std::lock_guard lock(mutex_);
        const int line = lineOf(event.aor);
        if (line < 0) {
            return;
        }
        // Each test follows its own call, whichever of our lines the event is for.
        for (int i = 0; i < kLines; ++i) {
            actions[i] = lines_[i].test.onEvent(event, Clock::now());
        }
        Line &l = lines_[line];
        const bool wasRegistered = l.activity.registered();
        l.activity.onEvent(event, Clock::now());
        const std::string head = "line " + std::to_string(line + 1);
        if (event.type == "REGISTER_OK" && !wasRegistered) {
            say("%s: registered (%s)", head, event.param);
        } else if (event.type == "REGISTER_FAIL") {
            say("%s: registration failed: %s", head, event.param);
        } else if (event.type == "CALL_INCOMING" || event.type == "CALL_RINGING" || event.type == "CALL_ESTABLISHED" ||
                   event.type == "CALL_CLOSED") {
            say("%s: %s", head,
                event.type + " " + event.direction + " " + event.peer +
                    (event.param.empty() || event.param == event.peer ? "" : " (" + event.param + ")"));
        }
        if ((event.type == "CALL_CLOSED" || event.type == "CALL_ESTABLISHED") && l.test.started()) {
            say("%s: simulated call test: %s", head, l.test.describe());
        }
    }
    for (int i = 0; i < kLines; ++i) {
        act(i + 1, actions[i]);
    }
}

void VoiceModule::act(int line, CallAction action) {
    if (action == CallAction::None) {
        return;
    }
    post([this, line, action] {
        std::string aor, uri;
        {
            std::lock_guard lock(mutex_);
            const Line &l = lines_[line - 1];
            aor = l.aor;
            uri = dialUri(storedProfile(emulator_, options_.registrationPeriod), l.test.number());
        }
        if (aor.empty() || !agent_.command("uafind", aor).ok) {
            return;
        }
        if (action == CallAction::Dial) {
            say("line %s: dialling %s", std::to_string(line), uri);
            agent_.command("dial", uri);
        } else {
            say("line %s: hanging up", std::to_string(line));
            agent_.command("hangup");
        }
    });
}

void VoiceModule::work() {
    std::unique_lock lock(mutex_);
    while (!stopping_) {
        if (jobs_.empty()) {
            wake_.wait_for(lock, kPollEvery);
        }
        std::deque<std::function<void()>> jobs;
        jobs.swap(jobs_);
        CallAction actions[kLines];
        const auto now = Clock::now();
        for (int i = 0; i < kLines; ++i) {
            actions[i] = lines_[i].test.poll(now);
        }
        lock.unlock();
        for (auto &job : jobs) {
            job();
        }
        for (int i = 0; i < kLines; ++i) {
            act(i + 1, actions[i]);
        }
        lock.lock();
    }
}

bool VoiceModule::removeAccount(const std::string &aor, const std::string &keep) {
    // baresip 1.0.0's menu keeps its own pointer to the selected account and follows it when the
    // selected account is removed: a pointer left to an account removed earlier crashes it.
    // Selecting an account that stays (or the one removed) first keeps that pointer valid.  What
    // baresip lists afterwards decides whether the account is gone.
    for (int attempt = 0; attempt < 3; ++attempt) {
        agent_.command("uafind", keep.empty() ? aor : keep);
        agent_.command("uadel", aor);
        const Baresip::Answer listed = agent_.command("reginfo");
        if (listed.ok && listed.data.find(aor + " ") == std::string::npos) {
            return true;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(300));
    }
    return false;
}

void VoiceModule::apply() {
    const ProfileSettings profile = storedProfile(emulator_, options_.registrationPeriod);
    for (int i = 0; i < kLines; ++i) {
        const LineSettings settings = storedLine(emulator_, static_cast<uint32_t>(i + 1));
        std::string account = accountLine(profile, settings, options_.autoAnswer[i]).value_or("");
        const std::string head = "line " + std::to_string(i + 1);
        std::string oldAor, keep;
        {
            std::lock_guard lock(mutex_);
            Line &l = lines_[i];
            if (l.unregistered) {
                account.clear();
            }
            if (account == l.account && !l.reregister) {
                continue;
            }
            l.reregister = false;
            oldAor = l.aor;
            keep = lines_[kLines - 1 - i].aor;
            l.aor.clear();
            l.account.clear();
            if (!oldAor.empty()) {
                l.activity.accountRemoving();
            }
        }
        if (!oldAor.empty()) {
            say("%s: unregistering %s", head, oldAor);
            if (!removeAccount(oldAor, keep)) {
                say("%s: the user agent still lists %s", head, oldAor);
            }
        }
        if (account.empty()) {
            std::lock_guard lock(mutex_);
            lines_[i].activity.accountRemoved();
            say("%s: not registering: %s", head,
                lines_[i].unregistered ? std::string("unregistered on request")
                                       : notRegisteringBecause(profile, settings));
            continue;
        }
        {
            // The address of record first: the account's events come back while it is added.
            std::lock_guard lock(mutex_);
            lines_[i].account = account;
            lines_[i].aor = addressOfRecord(profile, settings);
            lines_[i].activity.accountAdded();
        }
        say("%s: registering %s", head, redacted(account));
        if (!agent_.command("uanew", account).ok) {
            say("the user agent refused the account %s", redacted(account));
        }
    }
}

std::string VoiceModule::describe() {
    std::lock_guard lock(mutex_);
    std::ostringstream out;
    for (int i = 0; i < kLines; ++i) {
        const Line &l = lines_[i];
        out << "line " << i + 1 << ": " << (l.aor.empty() ? "no account" : l.aor) << ", " << l.activity.registration();
        if (!l.activity.failureReason().empty()) {
            out << " (" << l.activity.failureReason() << ")";
        }
        Tr104SipLineRecord status{};
        l.activity.fillStatus(&status);
        const Tr104SipLineStatsRecord c = l.activity.counters(static_cast<uint32_t>(i + 1), Clock::now());
        const Tr104LineRtpStatsBlock r = l.activity.rtp(static_cast<uint32_t>(i + 1));
        out << ", call " << textOf(status.aCallState) << "; calls in " << c.unInCallsReceived << "/"
            << c.unInCallsConnected << " out " << c.unOutCallsAttempted << "/" << c.unOutCallsConnected
            << ", call time " << c.unTotalCallTime << " s; rtp sent " << r.unSendPackets << " received "
            << r.unRcvdPackets << " lost " << r.unLostPackets << " jitter " << r.unJitter << " us; "
            << l.test.describe() << "\n";
    }
    return out.str();
}

std::string VoiceModule::dial(int line, const std::string &number) {
    std::string aor, uri;
    {
        std::lock_guard lock(mutex_);
        aor = lines_[line - 1].aor;
        uri = dialUri(storedProfile(emulator_, options_.registrationPeriod), number);
    }
    if (aor.empty()) {
        return "line " + std::to_string(line) + " has no account\n";
    }
    const bool ok = agent_.command("uafind", aor).ok && agent_.command("dial", uri).ok;
    return "line " + std::to_string(line) + (ok ? ": dialling " : ": could not dial ") + uri + "\n";
}

std::string VoiceModule::hangup(int line) {
    std::string aor;
    {
        std::lock_guard lock(mutex_);
        aor = lines_[line - 1].aor;
    }
    const bool ok = !aor.empty() && agent_.command("uafind", aor).ok && agent_.command("hangup").ok;
    return "line " + std::to_string(line) + (ok ? ": hung up\n" : ": nothing to hang up\n");
}

}  // namespace voiced
