// The voice module's phone ports: dial mode, dial-tone draw time, Kc type and hook-flash
// times; line tests that take time and report measurements; simulated calls that walk through
// their status codes; dial confirmation per port.
#include <algorithm>
#include <cstddef>
#include <map>
#include <memory>
#include <mutex>
#include <sstream>

#include "emulator/area_state.h"
#include "emulator/line_states.h"
#include "emulator/linetest_emulator.h"
#include "tr104/linetest.h"

namespace vmemu::linetest {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

struct MeasureField {
    const char *name;
    bool inner;
    uint32_t offset;
    const char *initial;  // a healthy line
};
#define OUTER(member, initial) \
    MeasureField { #member, false, offsetof(Tr104OuterLineResult, member), initial }
#define INNER(member, initial) \
    MeasureField { #member, true, offsetof(Tr104InnerLineResult, member), initial }
const MeasureField kFields[] = {
    OUTER(aGroundDCVoltage, "1"),
    OUTER(bGroundDCVoltage, "-2"),
    OUTER(abDCVoltage, "48"),
    OUTER(aGroundInsulationResistance, "20000"),
    OUTER(bGroundInsulationResistance, "19000"),
    OUTER(abInsulationResistance, "15000"),
    OUTER(abPolarityReversalResistance, "15000"),
    OUTER(aGroundCapacitance, "120"),
    OUTER(bGroundCapacitance, "118"),
    OUTER(abCapacitance, "560"),
    OUTER(aGroundACVoltage, "0"),
    OUTER(bGroundACVoltage, "0"),
    OUTER(abACVoltage, "0"),
    OUTER(loopResistance, "160"),
    OUTER(ringerEquivalentNumber, "2"),
    INNER(loopCurrent, "25"),
    INNER(feederVoltage, "48"),
    INNER(signalToneVolume, "-12.5"),
    INNER(signalToneFrequency, "450"),
    INNER(ringingCurrentVoltage, "75"),
    INNER(quietChannelPower, "-70.0"),
};
#undef OUTER
#undef INNER

namespace caller = line::caller;
namespace called = line::called;

// Status codes a simulated call walks through before its test end.
const uint32_t kCallerWalk[] = {caller::kOffHook,    caller::kDialTone, caller::kReceiving,
                                caller::kReceiveEnd, caller::kRingBack, caller::kConnected};
const uint32_t kCalledWalk[] = {called::kRingBack, called::kOffHook, called::kConnected};
constexpr size_t kFailingSteps = 2;  // a failing call stops after its first two steps

struct Port {
    Tr104OuterLineResult outer{};
    Tr104InnerLineResult inner{};
    bool notSupported = false;
    uint8_t testType = 0;
    int testsStarted = 0;
    Clock::time_point testStart{};
    // Simulated call.
    uint32_t callType = 0;  // 1 called, 2 caller; 0 none started
    bool callStopped = false;
    uint32_t timeout = 0;
    std::string number;
    Clock::time_point callStart{};
    uint32_t failCode = 0;
    // Dial confirmation.
    uint32_t confirmEnable = 0;
    char confirmDigit = '#';
    uint32_t confirmResult = 1;
};

struct State {
    std::mutex mutex;
    milliseconds duration = kDefaultTestDuration;
    milliseconds step = kDefaultCallStep;
    uint32_t flashDown = 100;
    uint32_t flashUp = 600;
    Port ports[TR104_LINETEST_PORTS];
};

PerEmulator<State> states;

std::shared_ptr<State> stateOf(const VoiceModuleEmulator &emulator) { return states.find(emulator); }

Port *portOf(State &s, uint32_t port) { return port == 1 || port == 2 ? &s.ports[port - 1] : nullptr; }

char *fieldOf(Port &p, const MeasureField &f) {
    return (f.inner ? reinterpret_cast<char *>(&p.inner) : reinterpret_cast<char *>(&p.outer)) + f.offset;
}

void putText(Port &p, const MeasureField &f, const std::string &text) {
    char *field = fieldOf(p, f);
    std::memset(field, 0, TR104_MEASURE_LEN);
    std::memcpy(field, text.data(), std::min<size_t>(text.size(), TR104_MEASURE_LEN));
}

void refuse(Payload &reply) {
    reply.fill(0);
    std::memset(reply.data(), 0xFF, 13);
}

// ---- Line tests ----

uint8_t progressOf(const State &s, const Port &p, uint8_t *result) {
    *result = 0;
    if (p.testsStarted == 0) {
        return 0;  // nothing was started: no progress to report
    }
    if (Clock::now() - p.testStart < s.duration) {
        return TR104_TEST_PROGRESS_TESTING;
    }
    const bool known = p.testType == TR104_TEST_TYPE_OUTER || p.testType == TR104_TEST_TYPE_INNER;
    *result = p.notSupported || !known ? 1 : 0;
    return TR104_TEST_PROGRESS_FINISHED;
}

// ---- Simulated calls ----

struct CallView {
    uint32_t callerStatus = caller::kIdle;
    uint32_t calledStatus = called::kIdle;
    uint32_t conclusion = 0;
    uint32_t callerFail = 0;
    uint32_t calledFail = 0;
    bool ended = false;
};

CallView viewOf(const State &s, const Port &p) {
    CallView v;
    if (p.callType == 0) {
        return v;
    }
    const bool isCaller = p.callType == TR104_SMULT_CALLER;
    const uint32_t *walk = isCaller ? kCallerWalk : kCalledWalk;
    size_t steps = isCaller ? std::size(kCallerWalk) : std::size(kCalledWalk);
    if (p.failCode != 0) {
        steps = std::min(steps, kFailingSteps);
    }
    const auto elapsed = std::chrono::duration_cast<milliseconds>(Clock::now() - p.callStart);
    // The call ends when its walk does, or at the test's timeout when the walk would take longer:
    // the voice module then gives up unanswered.  How late the end is observed changes nothing.
    const milliseconds walkEnd = s.step * static_cast<int64_t>(steps);
    const bool timesOut = p.timeout != 0 && walkEnd > std::chrono::seconds(p.timeout);
    const milliseconds end = timesOut ? milliseconds(std::chrono::seconds(p.timeout)) : walkEnd;
    uint32_t &status = isCaller ? v.callerStatus : v.calledStatus;
    if (!p.callStopped && elapsed < end) {
        status = walk[static_cast<size_t>(elapsed / s.step)];
        return v;
    }
    v.ended = true;
    status = isCaller ? caller::kTestEnd : called::kTestEnd;
    if (p.callStopped) {
        v.conclusion = line::kFailed;  // stopped before its end: failed, with no reason
    } else if (p.failCode != 0 || timesOut) {
        v.conclusion = line::kFailed;  // its own fail code, or no answer before the timeout
        (isCaller ? v.callerFail : v.calledFail) = p.failCode != 0 ? p.failCode
                                                   : isCaller      ? caller::kNoAnswer
                                                                   : called::kNoAnswer;
    } else {
        v.conclusion = line::kSucceeded;
    }
    return v;
}

void startCall(State &s, const Request &r) {
    const auto block = r.record<Tr104SmultParam>();
    Port *p = portOf(s, block.unPort);
    if (p == nullptr) {
        return;
    }
    switch (block.unTestType) {
    case TR104_SMULT_CALLED:
    case TR104_SMULT_CALLER:
        p->callType = block.unTestType;
        p->callStopped = false;
        p->timeout = block.unTimeout;
        p->number.assign(block.aCalledNum, strnlen(block.aCalledNum, sizeof(block.aCalledNum)));
        p->callStart = Clock::now();
        break;
    case TR104_SMULT_CALLED_STOPPED:
    case TR104_SMULT_CALLER_STOPPED:
        if (p->callType == 0) {
            p->callType = block.unTestType - 2;
        }
        p->callStopped = true;
        break;
    default: break;
    }
}

void installLinetestFamilies(VoiceModuleEmulator &e) {
    auto state = states.install(e);
    for (Port &p : state->ports) {
        for (const MeasureField &f : kFields) {
            putText(p, f, f.initial);
        }
    }
    const auto served = [state](auto body) {
        return [state, body](const Request &r, Payload &reply) {
            std::lock_guard lock(state->mutex);
            return body(*state, r, reply);
        };
    };

    // Port record values: dial mode (changed by a set), draw time (read only), Kc type.
    RecordFamily dialMode;
    dialMode.name = "port dial mode";
    dialMode.length = sizeof(Tr104PortRecord);
    dialMode.keys = {{offsetof(Tr104PortRecord, ucPort), sizeof(Tr104PortRecord::ucPort), "port"}};
    dialMode.getCmds = {GET_PORT_DIAL_MODE_ID};
    dialMode.setCmds = {SET_PORT_DIAL_MODE_ID};
    dialMode.setFields = {{offsetof(Tr104PortRecord, cDialMode), sizeof(Tr104PortRecord::cDialMode)}};
    e.addFamily(dialMode);
    RecordFamily drawTime = dialMode;
    drawTime.name = "port draw time";
    drawTime.getCmds = {GET_PORT_DRAW_TIME_ID};
    drawTime.setCmds = {};
    drawTime.setFields = {};
    e.addFamily(drawTime);
    RecordFamily kc;
    kc.name = "port kc type";
    kc.length = sizeof(Tr104KcRecord);
    kc.keys = {{offsetof(Tr104KcRecord, unPort), sizeof(Tr104KcRecord::unPort), "port"}};
    kc.getCmds = {GET_KC_TYPE_ID};
    kc.setCmds = {SET_KC_TYPE_ID};
    kc.setFields = {{offsetof(Tr104KcRecord, unKcType), sizeof(Tr104KcRecord::unKcType)}};
    e.addFamily(kc);
    for (uint8_t port = 1; port <= TR104_LINETEST_PORTS; ++port) {
        Tr104PortRecord rec{};
        rec.ucPort = port;
        rec.cDialMode = 1;  // DTMF
        rec.unDialToneDrawTime = 3500;
        e.put("port dial mode", &rec, sizeof(rec));
        e.put("port draw time", &rec, sizeof(rec));
        Tr104KcRecord k{};
        k.unPort = port;
        e.put("port kc type", &k, sizeof(k));
    }

    // Hook-flash times: a set changes the field its selector names.
    e.setHandler(SET_CODEC_TIME_ID, served([](State &s, const Request &r, Payload &) {
                     const auto rec = r.record<Tr104FlashRecord>();
                     (rec.unSelector == TR104_FLASH_UP ? s.flashUp : s.flashDown) =
                         rec.unSelector == TR104_FLASH_UP ? rec.unFlashUp : rec.unFlashDown;
                     return false;
                 }));
    e.setHandler(GET_CODEC_TIME_ID, served([](State &s, const Request &r, Payload &reply) {
                     auto rec = r.record<Tr104FlashRecord>();
                     rec.unFlashDown = s.flashDown;
                     rec.unFlashUp = s.flashUp;
                     putRecord(reply, rec);
                     return true;
                 }));

    // Line tests.
    e.setHandler(SET_PORT_TEST_STATE_ID, served([](State &s, const Request &r, Payload &) {
                     const auto rec = r.record<Tr104TestStateRecord>();
                     if (Port *p = portOf(s, rec.ucPort)) {
                         p->testType = rec.ucTestType;
                         p->testStart = Clock::now();
                         ++p->testsStarted;
                     }
                     return false;
                 }));
    e.setHandler(GET_PORT_TEST_STATE_ID, served([](State &s, const Request &r, Payload &reply) {
                     auto rec = r.record<Tr104TestStateRecord>();
                     Port *p = portOf(s, rec.ucPort);
                     if (p == nullptr) {
                         refuse(reply);
                         return true;
                     }
                     rec.ucTestType = p->testType;
                     rec.ucProgress = progressOf(s, *p, &rec.ucResult);
                     putRecord(reply, rec);
                     return true;
                 }));
    // Results: the port's record as it stands, under the port number of the request.
    const auto results = [&](uint32_t cmd, auto member) {
        e.setHandler(cmd, served([member](State &s, const Request &r, Payload &reply) {
                         Port *p = portOf(s, static_cast<uint8_t>(r.payload[2]));
                         if (p == nullptr) {
                             refuse(reply);
                             return true;
                         }
                         (p->*member).ucPort = static_cast<uint8_t>(r.payload[2]);
                         putRecord(reply, p->*member);
                         return true;
                     }));
    };
    results(GET_OUTER_LINE_TEST_ID, &Port::outer);
    results(GET_INNER_LINE_TEST_ID, &Port::inner);

    // Simulated calls.
    e.setHandler(SET_SMULT_TEST_ID, served([](State &s, const Request &r, Payload &) {
                     startCall(s, r);
                     return false;
                 }));
    e.setHandler(GET_SMULT_TEST_ID, served([](State &s, const Request &r, Payload &reply) {
                     auto block = r.record<Tr104SmultParam>();
                     Port *p = portOf(s, block.unPort);
                     if (p == nullptr) {
                         refuse(reply);
                         return true;
                     }
                     const CallView v = viewOf(s, *p);
                     block.unCallerStatus = v.callerStatus;
                     block.unCalledStatus = v.calledStatus;
                     block.unConclusion = v.conclusion;
                     block.unCallerFailCode = v.callerFail;
                     block.unCalledFailCode = v.calledFail;
                     putRecord(reply, block);
                     return true;
                 }));
    e.setHandler(SET_DIAL_CONFIRM_ID, served([](State &s, const Request &r, Payload &) {
                     const auto rec = r.record<Tr104DialConfirmRecord>();
                     if (Port *p = portOf(s, rec.unPort)) {
                         if (rec.unSelector == TR104_DIAL_CONFIRM_ENABLE) {
                             p->confirmEnable = rec.unEnable;
                         } else if (rec.unSelector == TR104_DIAL_CONFIRM_DIGIT) {
                             p->confirmDigit = rec.cDigit;
                         }
                     }
                     return false;
                 }));
    e.setHandler(GET_DIAL_CONFIRM_ID, served([](State &s, const Request &r, Payload &reply) {
                     auto rec = r.record<Tr104DialConfirmRecord>();
                     Port *p = portOf(s, rec.unPort);
                     if (p == nullptr) {
                         refuse(reply);
                         return true;
                     }
                     rec.unEnable = p->confirmEnable;
                     rec.cDigit = p->confirmDigit;
                     rec.unResult = p->confirmResult;
                     putRecord(reply, rec);
                     return true;
                 }));

    const std::pair<uint32_t, const char *> names[] = {
        {GET_PORT_DRAW_TIME_ID, "GET_PORT_DRAW_TIME_ID"},
        {SET_SMULT_TEST_ID, "SET_SMULT_TEST_ID"},
        {GET_SMULT_TEST_ID, "GET_SMULT_TEST_ID"},
        {SET_DIAL_CONFIRM_ID, "SET_DIAL_CONFIRM_ID"},
        {GET_DIAL_CONFIRM_ID, "GET_DIAL_CONFIRM_ID"},
        {SET_CODEC_TIME_ID, "SET_CODEC_TIME_ID"},
        {GET_CODEC_TIME_ID, "GET_CODEC_TIME_ID"},
        {SET_PORT_TEST_STATE_ID, "SET_PORT_TEST_STATE_ID"},
        {GET_PORT_TEST_STATE_ID, "GET_PORT_TEST_STATE_ID"},
        {GET_OUTER_LINE_TEST_ID, "GET_OUTER_LINE_TEST_ID"},
        {GET_INNER_LINE_TEST_ID, "GET_INNER_LINE_TEST_ID"},
        {SET_KC_TYPE_ID, "SET_KC_TYPE_ID"},
        {GET_KC_TYPE_ID, "GET_KC_TYPE_ID"},
        {SET_PORT_DIAL_MODE_ID, "SET_PORT_DIAL_MODE_ID"},
        {GET_PORT_DIAL_MODE_ID, "GET_PORT_DIAL_MODE_ID"},
    };
    for (const auto &[cmd, name] : names) {
        e.nameCommand(cmd, name);
    }
}

FamilyRegistrar registrar(&installLinetestFamilies);

// Runs body on the port's state under its lock; false for an unknown port or emulator.
template <typename Body>
bool onPort(VoiceModuleEmulator &e, int port, Body body) {
    auto s = stateOf(e);
    if (!s || (port != 1 && port != 2)) {
        return false;
    }
    std::lock_guard lock(s->mutex);
    body(*s, s->ports[port - 1]);
    return true;
}

// ---- Console ----

// The head both commands share: "TIMEVERB MS" sets a time; anything else names a port.  True
// when the command is answered already (a time set, or the usage for a bad port).
bool commandHead(VoiceModuleEmulator &e, std::istream &args, const std::string &what, const char *timeVerb,
                 void (*setTime)(VoiceModuleEmulator &, milliseconds), const char *usage, std::string *out, int *port) {
    if (what == timeVerb) {
        long ms = -1;
        args >> ms;
        if (ms >= 0) {
            setTime(e, milliseconds(ms));
        }
        *out = ms >= 0 ? std::string(timeVerb) + " " + std::to_string(ms) + " ms\n" : std::string(usage);
        return true;
    }
    args >> *port;
    if (*port != 1 && *port != 2) {
        *out = usage;
        return true;
    }
    return false;
}

bool lineTestCommand(VoiceModuleEmulator &e, const std::string &verb, std::istream &args, std::string *out) {
    if (verb != "linetest") {
        return false;
    }
    std::string what;
    args >> what;
    int port = 0;
    if (commandHead(e, args, what, "duration", &setTestDuration,
                    "usage: linetest duration MS | set PORT FIELD TEXT | conclusion PORT CODE | states PORT TONE "
                    "FEEDER | unsupported PORT on|off | show PORT (PORT 1 or 2)\n",
                    out, &port)) {
        return true;
    }
    if (what == "set") {
        std::string field, text;
        args >> field >> text;
        *out = setMeasurement(e, port, field, text) ? describeLineTest(e, port) : "unknown measurement " + field + "\n";
    } else if (what == "conclusion") {
        std::string code;
        args >> code;
        setConclusion(e, port, code.empty() || code == "0" || code == "normal" ? 0 : static_cast<uint8_t>(code[0]));
        *out = describeLineTest(e, port);
    } else if (what == "states") {
        int tone = 0, feeder = 0;
        args >> tone >> feeder;
        setStateBytes(e, port, static_cast<uint8_t>(tone), static_cast<uint8_t>(feeder));
        *out = describeLineTest(e, port);
    } else if (what == "unsupported") {
        std::string on;
        args >> on;
        setNotSupported(e, port, on != "off");
        *out = describeLineTest(e, port);
    } else {
        *out = describeLineTest(e, port);
    }
    return true;
}

bool callCommand(VoiceModuleEmulator &e, const std::string &verb, std::istream &args, std::string *out) {
    if (verb != "simcall") {
        return false;
    }
    std::string what;
    args >> what;
    int port = 0;
    if (commandHead(e, args, what, "step", &setCallStep,
                    "usage: simcall step MS | end PORT success|FAILCODE | confirm PORT RESULT | show PORT\n", out,
                    &port)) {
        return true;
    }
    if (what == "end") {
        std::string end;
        args >> end;
        setCallEnd(e, port, end == "success" ? 0u : static_cast<uint32_t>(std::strtoul(end.c_str(), nullptr, 10)));
    } else if (what == "confirm") {
        uint32_t result = 1;
        args >> result;
        setDialConfirmResult(e, port, result);
    }
    *out = describeCall(e, port);
    return true;
}

ConsoleRegistrar lineTestConsole(
    "linetest duration MS | set PORT FIELD TEXT | conclusion PORT CODE | states PORT TONE FEEDER | unsupported PORT "
    "on|off | show PORT   line tests of the phone ports",
    &lineTestCommand);
ConsoleRegistrar callConsole(
    "simcall step MS | end PORT success|FAILCODE | confirm PORT RESULT | show PORT   "
    "simulated calls and dial confirmation",
    &callCommand);

}  // namespace

void setTestDuration(VoiceModuleEmulator &e, milliseconds duration) {
    if (auto s = stateOf(e)) {
        std::lock_guard lock(s->mutex);
        s->duration = duration;
    }
}

bool setMeasurement(VoiceModuleEmulator &e, int port, const std::string &field, const std::string &text) {
    const auto f =
        std::find_if(std::begin(kFields), std::end(kFields), [&](const MeasureField &m) { return field == m.name; });
    return f != std::end(kFields) && onPort(e, port, [&](State &, Port &p) { putText(p, *f, text); });
}

std::vector<std::string> measurementNames() {
    std::vector<std::string> names;
    for (const MeasureField &f : kFields) {
        names.emplace_back(f.name);
    }
    return names;
}

void setConclusion(VoiceModuleEmulator &e, int port, uint8_t code) {
    onPort(e, port, [&](State &, Port &p) { p.outer.ucConclusion = code; });
}

void setStateBytes(VoiceModuleEmulator &e, int port, uint8_t signalTone, uint8_t feederVoltage) {
    onPort(e, port, [&](State &, Port &p) {
        p.inner.ucSignalToneState = signalTone;
        p.inner.ucFeederVoltageState = feederVoltage;
    });
}

void setNotSupported(VoiceModuleEmulator &e, int port, bool notSupported) {
    onPort(e, port, [&](State &, Port &p) { p.notSupported = notSupported; });
}

uint8_t lastTestType(VoiceModuleEmulator &e, int port) {
    uint8_t type = 0;
    onPort(e, port, [&](State &, Port &p) { type = p.testType; });
    return type;
}

int testsStarted(VoiceModuleEmulator &e, int port) {
    int n = 0;
    onPort(e, port, [&](State &, Port &p) { n = p.testsStarted; });
    return n;
}

void setCallStep(VoiceModuleEmulator &e, milliseconds step) {
    if (auto s = stateOf(e)) {
        std::lock_guard lock(s->mutex);
        s->step = step;
    }
}

void setCallEnd(VoiceModuleEmulator &e, int port, uint32_t failCode) {
    onPort(e, port, [&](State &, Port &p) { p.failCode = failCode; });
}

void setDialConfirmResult(VoiceModuleEmulator &e, int port, uint32_t result) {
    onPort(e, port, [&](State &, Port &p) { p.confirmResult = result; });
}

std::string describeLineTest(VoiceModuleEmulator &e, int port) {
    std::ostringstream os;
    onPort(e, port, [&](State &s, Port &p) {
        uint8_t result = 0;
        const uint8_t progress = progressOf(s, p, &result);
        os << "port " << port << ": test type 0x" << std::hex << int(p.testType) << std::dec << ", progress "
           << int(progress) << ", result " << int(result) << (p.notSupported ? " (not supported)" : "")
           << ", tests started " << p.testsStarted << ", duration " << s.duration.count() << " ms, conclusion "
           << (p.outer.ucConclusion == 0 ? std::string("0 (normal)") : std::string(1, char(p.outer.ucConclusion)))
           << ", states " << int(p.inner.ucSignalToneState) << "/" << int(p.inner.ucFeederVoltageState) << "\n ";
        for (const MeasureField &f : kFields) {
            os << " " << f.name << "=" << std::string(fieldOf(p, f), strnlen(fieldOf(p, f), TR104_MEASURE_LEN));
        }
        os << "\n";
    });
    return os.str();
}

std::string describeCall(VoiceModuleEmulator &e, int port) {
    std::ostringstream os;
    onPort(e, port, [&](State &s, Port &p) {
        const CallView v = viewOf(s, p);
        os << "port " << port << ": call type " << p.callType << (p.callStopped ? " (stopped)" : "") << ", number \""
           << p.number << "\", timeout " << p.timeout << ", caller status " << v.callerStatus << ", called status "
           << v.calledStatus << ", conclusion " << v.conclusion << ", fail codes " << v.callerFail << "/"
           << v.calledFail << ", end "
           << (p.failCode == 0 ? std::string("success") : "fail " + std::to_string(p.failCode)) << ", step "
           << s.step.count() << " ms; dial confirm enable " << p.confirmEnable << " digit '" << p.confirmDigit
           << "' result " << p.confirmResult << "\n";
    });
    return os.str();
}

}  // namespace vmemu::linetest
