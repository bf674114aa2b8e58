// The voice module's H.248 blocks: configuration applied field by field under the change mask,
// the two MGC entries addressed by the index word, termination ids per line, ephemeral names per
// instance, port status and statistics per line, registration of the gateway and its lines.
// A set followed by a get returns what was set.  Console commands: "h248 ...".
#include <algorithm>
#include <cstring>
#include <map>
#include <memory>
#include <mutex>
#include <sstream>

#include "emulator/area_state.h"
#include "emulator/h248_emulator.h"
#include "emulator/state_file.h"
#include "tr104/catalogue/field_lists.h"
#include "emulator/protocol_family.h"

namespace vmemu::h248 {
namespace {

enum class Mode : uint8_t {
    Masked,  // 16-bit mask at 0: each field whose bit is set
    WholeMask,  // the mask is one field's value
    Fields,  // no mask: the listed fields
    Mgc,  // mask bits 0/1: address/port of the entry the index word names
    TermId,  // the entry of the line in word 0
    EphName,  // masked fields; mask 0 carries the range rule's five fields
    Line,  // per line (word 0): the listed fields
};

struct BlockKind {
    const char *name;
    uint32_t getCmd;
    std::vector<uint32_t> setCmds;
    uint32_t length;
    Mode mode;
    std::vector<MaskedField> fields;
};

#define OFF(type, field) static_cast<uint32_t>(offsetof(type, field))

const std::vector<BlockKind> &blockKinds() {
    static const std::vector<BlockKind> kinds = {
        {"MGC", GET_MGC_CFG_ID, {SET_MGC_CFG_ID}, sizeof(Tr104H248MgcBlock), Mode::Mgc, {}},
        {"MID",
         GET_MID,
         {SET_MID},
         sizeof(Tr104H248MidBlock),
         Mode::Masked,
         {TR104_MASKED_FIELDS_Tr104H248MidBlock(VMEMU_MASKED_FIELD)}},
        {"PHY_NAME",
         GET_PHY_NAME,
         {SET_PHY_NAME},
         sizeof(Tr104H248PhyNameBlock),
         Mode::Masked,
         {TR104_MASKED_FIELDS_Tr104H248PhyNameBlock(VMEMU_MASKED_FIELD)}},
        {"EPH_NAME",
         GET_EPH_NAME,
         {SET_EPH_NAME},
         sizeof(Tr104H248EphNameBlock),
         Mode::EphName,
         // The fill word opens the tail, which holds the names as well.
         {{TR104_H248_EPH_PREFIX_BIT, VMEMU_MEMBER(Tr104H248EphNameBlock, aPrefix)},
          {TR104_H248_EPH_ADD_LEN_BIT, VMEMU_MEMBER(Tr104H248EphNameBlock, unAddLen)},
          {TR104_H248_EPH_FILL_BIT, {OFF(Tr104H248EphNameBlock, aTail), sizeof(uint32_t)}},
          {TR104_H248_EPH_START_BIT, VMEMU_MEMBER(Tr104H248EphNameBlock, unStart)}}},
        {"SINGLE_USERNAME", GET_SINGLE_USERNAME, {SET_SINGLE_USERNAME}, sizeof(Tr104H248TermIdBlock), Mode::TermId, {}},
        {"ALIVE_PARAM",
         GET_ALIVE_PARAM,
         {SET_ALIVE_PARAM},
         sizeof(Tr104H248AliveBlock),
         Mode::Masked,
         {TR104_MASKED_FIELDS_Tr104H248AliveBlock(VMEMU_MASKED_FIELD)}},
        {"TRANS_TIME",
         GET_TRANS_TIME,
         {SET_TRANS_TIME},
         sizeof(Tr104H248TransTimerBlock),
         Mode::Masked,
         {TR104_MASKED_FIELDS_Tr104H248TransTimerBlock(VMEMU_MASKED_FIELD)}},
        {"REGMG_PARAM",
         GET_REGMG_PARAM,
         {SET_REGMG_PARAM},
         sizeof(Tr104H248RegBlock),
         Mode::Fields,
         {TR104_MASKED_FIELDS_Tr104H248RegBlock(VMEMU_MASKED_FIELD)}},
        {"MD5_PARAM",
         GET_MD5_PARAM,
         {SET_MD5_PARAM},
         sizeof(Tr104H248AuthBlock),
         Mode::Fields,
         {TR104_MASKED_FIELDS_Tr104H248AuthBlock(VMEMU_MASKED_FIELD)}},
        {"LOCAL_PORT",
         GET_LOCAL_PORT,
         {SET_LOCAL_PORT},
         sizeof(Tr104H248LocalPortBlock),
         Mode::Fields,
         {TR104_MASKED_FIELDS_Tr104H248LocalPortBlock(VMEMU_MASKED_FIELD)}},
        {"DIG_TIMEOUT",
         GET_H248_DIG_TIMEOUT_ID,
         {SET_TONE_TIMEOUT_ID, SET_H248_DIG_TIMEOUT_ID},
         sizeof(Tr104H248DigitTimerBlock),
         Mode::Masked,
         {TR104_MASKED_FIELDS_Tr104H248DigitTimerBlock(VMEMU_MASKED_FIELD)}},
        {"LINE_ENABLE",
         GET_H248_LINE_ENABLE_ID,
         {SET_H248_LINE_ENABLE_ID},
         sizeof(Tr104H248LineEnableBlock),
         Mode::Line,
         {VMEMU_MASKED_FIELD(0, Tr104H248LineEnableBlock, unEnable)}},
        {"MATCH_MODE",
         GET_H248_MATCH_MODE_ID,
         {SET_H248_MATCH_MODE_ID},
         sizeof(Tr104H248MatchModeBlock),
         Mode::Fields,
         {TR104_MASKED_FIELDS_Tr104H248MatchModeBlock(VMEMU_MASKED_FIELD)}},
        {"RTP_LOCAL_PORT",
         GET_RTP_LOCAL_PORT_ID,
         {SET_RTP_LOCAL_PORT_ID},
         sizeof(Tr104H248RtpPortBlock),
         Mode::Fields,
         {TR104_MASKED_FIELDS_Tr104H248RtpPortBlock(VMEMU_MASKED_FIELD)}},
        {"FAX_MODE",
         GET_H248_FAX_MODE_ID,
         {SET_H248_FAX_MODE_ID},
         sizeof(Tr104H248FaxBlock),
         Mode::WholeMask,
         {TR104_MASKED_FIELDS_Tr104H248FaxBlock(VMEMU_MASKED_FIELD)}},
        {"CALLID_PARAM",
         GET_CALLID_PARAM,
         {SET_CALLID_PARAM},
         sizeof(Tr104H248CallerIdBlock),
         Mode::Masked,
         {TR104_MASKED_FIELDS_Tr104H248CallerIdBlock(VMEMU_MASKED_FIELD)}},
    };
    return kinds;
}

// Read-only profile values and what this voice module reports for them.
const std::pair<uint32_t, uint32_t> kReadOnly[] = {
    {GET_H248_MAX_SESSIONS_PER_LINE_ID, 2}, {GET_H248_MAX_SESSIONS_ALL_LINES_ID, 4}, {GET_H248_RTCP_FLAG_ID, 1},
    {GET_H248_RTP_REDUNDANCY_FLAG_ID, 0},   {GET_H248_VLAN_TAG_COUPLED_FLAG_ID, 0},  {GET_H248_NUMBER_OF_LINES_ID, 2},
};

struct State {
    std::mutex mutex;
    std::map<std::pair<uint32_t, int>, std::vector<char>> blocks;  // (get command, line) -> block
    PortStatus ports[3];
    Tr104H248StatsBlock stats[3]{};
};

PerEmulator<State> states;

std::shared_ptr<State> stateOf(const VoiceModuleEmulator &emulator) { return states.find(emulator); }

uint32_t wordAt(const char *data, uint32_t offset) {
    uint32_t v;
    std::memcpy(&v, data + offset, sizeof(v));
    return v;
}
uint16_t maskOf(const char *data) {
    uint16_t v;
    std::memcpy(&v, data, sizeof(v));
    return v;
}
void putWord(char *data, uint32_t offset, uint32_t v) { std::memcpy(data + offset, &v, sizeof(v)); }

bool validLine(int line) { return line == 1 || line == 2; }

// The first state of a voice module: the values a fresh device carries.
void initialise(State &s) {
    s.blocks.clear();
    for (int line = 1; line <= 2; ++line) {
        s.ports[line] = PortStatus{};
        s.stats[line] = Tr104H248StatsBlock{};
        s.stats[line].unLine = static_cast<uint32_t>(line);
        std::vector<char> enable(sizeof(Tr104H248LineEnableBlock), 0);
        putWord(enable.data(), 0, static_cast<uint32_t>(line));
        putWord(enable.data(), OFF(Tr104H248LineEnableBlock, unEnable), 1);
        s.blocks[{GET_H248_LINE_ENABLE_ID, line}] = enable;
    }
    std::vector<char> mgc(sizeof(Tr104H248MgcBlock), 0);
    putWord(mgc.data(), OFF(Tr104H248MgcBlock, unMgcStatus), 2);
    s.blocks[{GET_MGC_CFG_ID, 0}] = mgc;
    std::vector<char> trans(sizeof(Tr104H248TransTimerBlock), 0);
    putWord(trans.data(), OFF(Tr104H248TransTimerBlock, unRetranInitial), 2000);
    putWord(trans.data(), OFF(Tr104H248TransTimerBlock, unRetranCycle), 4000);
    putWord(trans.data(), OFF(Tr104H248TransTimerBlock, unRetranTime), 30000);
    putWord(trans.data(), OFF(Tr104H248TransTimerBlock, unMaxRetranCount), 3);
    s.blocks[{GET_TRANS_TIME, 0}] = trans;
    std::vector<char> eph(sizeof(Tr104H248EphNameBlock), 0);
    std::memcpy(eph.data() + OFF(Tr104H248EphNameBlock, aPrefix), "RTP/", 4);
    putWord(eph.data(), OFF(Tr104H248EphNameBlock, unStart), 0);
    putWord(eph.data(), OFF(Tr104H248EphNameBlock, unEnd), 99);
    putWord(eph.data(), OFF(Tr104H248EphNameBlock, unStep), 1);
    putWord(eph.data(), OFF(Tr104H248EphNameBlock, unAddLen), 5);
    s.blocks[{GET_EPH_NAME, 0}] = eph;
    std::vector<char> rtp(sizeof(Tr104H248RtpPortBlock), 0);
    putWord(rtp.data(), 0, 50000);
    putWord(rtp.data(), 4, 50999);
    s.blocks[{GET_RTP_LOCAL_PORT_ID, 0}] = rtp;
}

std::vector<char> &stored(State &s, const BlockKind &kind, int line) {
    auto &rec = s.blocks[{kind.getCmd, line}];
    if (rec.size() != kind.length) {
        rec.assign(kind.length, 0);
    }
    return rec;
}

void copyField(std::vector<char> &rec, const char *in, const Field &f) {
    std::memcpy(rec.data() + f.offset, in + f.offset, f.width);
}

int lineOfKind(const BlockKind &kind, const char *in) {
    return kind.mode == Mode::Line ? static_cast<int>(wordAt(in, 0)) : 0;
}

void applySet(State &s, const BlockKind &kind, const char *in) {
    const uint16_t mask = maskOf(in);
    switch (kind.mode) {
    case Mode::Masked:
    case Mode::WholeMask:
    case Mode::EphName: {
        auto &rec = stored(s, kind, 0);
        if (kind.mode == Mode::EphName && mask == 0) {
            // The range rule: first part, start, end, step and the fill word that opens the tail.
            for (const Field &f :
                 {VMEMU_MEMBER(Tr104H248EphNameBlock, aPrefix), VMEMU_MEMBER(Tr104H248EphNameBlock, unStart),
                  VMEMU_MEMBER(Tr104H248EphNameBlock, unEnd), VMEMU_MEMBER(Tr104H248EphNameBlock, unStep),
                  Field{OFF(Tr104H248EphNameBlock, aTail), sizeof(uint32_t)}}) {
                copyField(rec, in, f);
            }
            break;
        }
        for (const MaskedField &f : kind.fields) {
            if (kind.mode == Mode::WholeMask ? mask == f.bit : (mask & f.bit) != 0) {
                copyField(rec, in, f.field);
            }
        }
        break;
    }
    case Mode::Fields:
        for (const MaskedField &f : kind.fields) {
            copyField(stored(s, kind, 0), in, f.field);
        }
        break;
    case Mode::Line: {
        const int line = lineOfKind(kind, in);
        if (!validLine(line)) {
            break;
        }
        auto &rec = stored(s, kind, line);
        putWord(rec.data(), 0, static_cast<uint32_t>(line));
        for (const MaskedField &f : kind.fields) {
            copyField(rec, in, f.field);
        }
        break;
    }
    case Mode::Mgc: {
        const uint32_t index = wordAt(in, OFF(Tr104H248MgcBlock, unMgcIndex));
        if (index > 1) {
            break;
        }
        auto &rec = stored(s, kind, 0);
        // Entry 0 is the primary MGC, entry 1 the secondary.
        if (mask & TR104_H248_MGC_ADDR_BIT) {
            copyField(rec, in,
                      index == 0 ? VMEMU_MEMBER(Tr104H248MgcBlock, aMgcAddr[0])
                                 : VMEMU_MEMBER(Tr104H248MgcBlock, aMgcAddr[1]));
        }
        if (mask & TR104_H248_MGC_PORT_BIT) {
            copyField(rec, in,
                      index == 0 ? VMEMU_MEMBER(Tr104H248MgcBlock, usMgcPort[0])
                                 : VMEMU_MEMBER(Tr104H248MgcBlock, usMgcPort[1]));
        }
        break;
    }
    case Mode::TermId: {
        const uint32_t line = wordAt(in, 0);
        if (line >= 1 && line <= TR104_H248_TERM_IDS) {
            copyField(
                stored(s, kind, 0), in,
                {OFF(Tr104H248TermIdBlock, aTermId) + (line - 1) * TR104_H248_TERM_ID_LEN, TR104_H248_TERM_ID_LEN});
        }
        break;
    }
    }
}

// The name of an ephemeral termination: prefix and number, zero-filled to the added length
// while the fill flag is 0.
std::string ephemeralName(const char *rec, uint32_t instance) {
    const Tr104H248EphNameBlock *b = reinterpret_cast<const Tr104H248EphNameBlock *>(rec);
    const uint32_t fill = wordAt(rec, TR104_H248_EPH_FILL_OFFSET);
    const uint32_t number = b->unStart + (instance - 1) * b->unStep;
    std::string digits = std::to_string(number);
    if (fill == 0 && digits.size() < b->unAddLen) {
        digits.insert(0, b->unAddLen - digits.size(), '0');
    }
    return std::string(b->aPrefix, strnlen(b->aPrefix, sizeof(b->aPrefix))) + digits;
}

void answerGet(State &s, const BlockKind &kind, const Request &request, Payload &reply) {
    const int line = lineOfKind(kind, request.payload.data());
    if (kind.mode == Mode::Line && !validLine(line)) {
        std::memcpy(reply.data(), request.payload.data(), kind.length);
        return;
    }
    const auto &rec = stored(s, kind, line);
    std::memcpy(reply.data(), rec.data(), kind.length);
    if (kind.mode == Mode::Mgc) {
        putWord(reply.data(), OFF(Tr104H248MgcBlock, unMgcIndex),
                request.word<uint32_t>(OFF(Tr104H248MgcBlock, unMgcIndex)));
    } else if (kind.mode == Mode::TermId) {
        putWord(reply.data(), 0, request.word<uint32_t>(0));
    } else if (kind.mode == Mode::EphName) {
        // Instance 0 names none: the reply carries the fill word whole.
        const uint16_t instance = request.word<uint16_t>(2);
        std::memcpy(reply.data() + 2, &instance, sizeof(instance));
        const std::string first = ephemeralName(rec.data(), 1).substr(0, 34);
        std::memcpy(reply.data() + TR104_H248_EPH_FIRST_NAME_OFFSET, first.c_str(), first.size() + 1);
        if (instance != 0) {
            const std::string name = ephemeralName(rec.data(), instance).substr(0, TR104_H248_EPH_NAME_LEN - 1);
            std::memset(reply.data() + TR104_H248_EPH_NAME_OFFSET, 0, TR104_H248_EPH_NAME_LEN);
            std::memcpy(reply.data() + TR104_H248_EPH_NAME_OFFSET, name.c_str(), name.size());
        }
    }
}

void fillPortStatus(const PortStatus &p, Payload &reply) {
    Tr104H248PortStatusBlock b{};
    b.ucSessionType = p.sessionType;
    b.ucPortState = p.portState;
    b.ucServiceState = p.serviceState;
    b.unLocalRtpPort = p.localRtpPort;
    b.unAnnounceType = p.announceType;
    std::strncpy(b.aRegState, p.regState.c_str(), sizeof(b.aRegState) - 1);
    std::strncpy(b.aHookState, p.hookState.c_str(), sizeof(b.aHookState) - 1);
    putRecord(reply, b);
}

void install(VoiceModuleEmulator &emulator) {
    auto state = states.install(emulator);
    initialise(*state);
    for (const BlockKind &kind : blockKinds()) {
        emulator.nameCommand(kind.getCmd, std::string("GET_") + kind.name);
        emulator.setHandler(kind.getCmd, [state, &kind](const Request &request, Payload &reply) {
            std::lock_guard lock(state->mutex);
            answerGet(*state, kind, request, reply);
            return true;
        });
        for (uint32_t cmd : kind.setCmds) {
            emulator.nameCommand(cmd, std::string("SET_") + kind.name);
            emulator.setHandler(cmd, [state, &kind](const Request &request, Payload &) {
                std::lock_guard lock(state->mutex);
                applySet(*state, kind, request.payload.data());
                return false;
            });
        }
    }
    for (const auto &[cmd, value] : kReadOnly) {
        emulator.nameCommand(cmd, "GET_H248_PROFILE_VALUE");
        emulator.setHandler(cmd, [value = value](const Request &, Payload &reply) {
            putWord(reply.data(), 0, value);
            return true;
        });
    }
    // Registration with the MGC: the named address becomes the current one.
    for (uint32_t cmd : {uint32_t{REG_MGC_ID}, uint32_t{UNREG_MGC_ID}}) {
        emulator.nameCommand(cmd, cmd == REG_MGC_ID ? "REG_MGC" : "UNREG_MGC");
        emulator.setHandler(cmd, [state, cmd](const Request &request, Payload &) {
            std::lock_guard lock(state->mutex);
            auto &mgc = state->blocks[{GET_MGC_CFG_ID, 0}];
            auto *b = reinterpret_cast<Tr104H248MgcBlock *>(mgc.data());
            const char *addr = request.payload.data() + OFF(Tr104H248MgcBlock, aMgcAddr);
            if (cmd == REG_MGC_ID) {
                b->unMgcStatus = 0;
                b->unCurrMgcNum = std::strncmp(addr, b->aMgcAddr[1], TR104_H248_MGC_ADDR_LEN) == 0 && addr[0] ? 2 : 1;
                std::memset(b->aCurrMgcAddr, 0, sizeof(b->aCurrMgcAddr));
                std::strncpy(b->aCurrMgcAddr, addr, TR104_H248_MGC_ADDR_LEN - 1);
            } else {
                b->unMgcStatus = 2;
                b->unCurrMgcNum = 0;
                std::memset(b->aCurrMgcAddr, 0, sizeof(b->aCurrMgcAddr));
            }
            return false;
        });
    }
    // Lines register and unregister; the port status follows.
    for (uint32_t cmd : {uint32_t{REG_H248_LINE_ID}, uint32_t{UNREG_H248_LINE_ID}}) {
        emulator.nameCommand(cmd, cmd == REG_H248_LINE_ID ? "REG_H248_LINE" : "UNREG_H248_LINE");
        emulator.setHandler(cmd, [state, cmd](const Request &request, Payload &) {
            std::lock_guard lock(state->mutex);
            const int line = static_cast<int>(request.word<uint32_t>(0));
            if (validLine(line)) {
                state->ports[line].regState = cmd == REG_H248_LINE_ID ? "IDLE" : "INACTIVE";
            }
            return false;
        });
    }
    emulator.nameCommand(GET_H248_PORT_STATUS_ID, "GET_H248_PORT_STATUS");
    emulator.setHandler(GET_H248_PORT_STATUS_ID, [state](const Request &request, Payload &reply) {
        std::lock_guard lock(state->mutex);
        const int line = static_cast<int>(request.word<uint32_t>(0));
        fillPortStatus(validLine(line) ? state->ports[line] : PortStatus{"", "", 0, 0, 0, 0, 0}, reply);
        return true;
    });
    emulator.nameCommand(GET_H248_STATISTICS_ID, "GET_H248_STATISTICS");
    emulator.setHandler(GET_H248_STATISTICS_ID, [state](const Request &request, Payload &reply) {
        std::lock_guard lock(state->mutex);
        const int line = static_cast<int>(request.word<uint32_t>(0));
        if (validLine(line)) {
            putRecord(reply, state->stats[line]);
        }
        return true;
    });
    emulator.nameCommand(RESET_H248_LINE_STATISTICS_ID, "RESET_H248_LINE_STATISTICS");
    emulator.setHandler(RESET_H248_LINE_STATISTICS_ID, [state](const Request &request, Payload &) {
        std::lock_guard lock(state->mutex);
        const int line = static_cast<int>(request.word<uint32_t>(0));
        if (validLine(line)) {
            state->stats[line] = Tr104H248StatsBlock{};
            state->stats[line].unLine = static_cast<uint32_t>(line);
        }
        return false;
    });
}

FamilyRegistrar registrar(&install);

// ---- Console: "h248 ..." ----------------------------------------------------------------------

struct CounterName {
    const char *name;
    uint32_t offset;
};
const CounterName kCounters[] = {
    {"in-received", OFF(Tr104H248StatsBlock, unIncomingReceived)},
    {"in-answered", OFF(Tr104H248StatsBlock, unIncomingAnswered)},
    {"in-connected", OFF(Tr104H248StatsBlock, unIncomingConnected)},
    {"in-failed", OFF(Tr104H248StatsBlock, unIncomingFailed)},
    {"out-attempted", OFF(Tr104H248StatsBlock, unOutgoingAttempted)},
    {"out-answered", OFF(Tr104H248StatsBlock, unOutgoingAnswered)},
    {"out-connected", OFF(Tr104H248StatsBlock, unOutgoingConnected)},
    {"out-failed", OFF(Tr104H248StatsBlock, unOutgoingFailed)},
    {"dropped", OFF(Tr104H248StatsBlock, unCallsDropped)},
    {"calls-time", OFF(Tr104H248StatsBlock, unCallsTime)},
    {"rcvd-reqs", OFF(Tr104H248StatsBlock, unRcvdReqs)},
    {"send-reqs", OFF(Tr104H248StatsBlock, unSendReqs)},
    {"rcvd-replies", OFF(Tr104H248StatsBlock, unRcvdResponses)},
    {"send-replies", OFF(Tr104H248StatsBlock, unSendResponses)},
    {"loss", OFF(Tr104H248StatsBlock, unPacketLoss)},
    {"retrans", OFF(Tr104H248StatsBlock, unPacketRetrans)},
    {"error", OFF(Tr104H248StatsBlock, unPacketError)},
    {"unknown", OFF(Tr104H248StatsBlock, unPacketUnknown)},
};

bool console(VoiceModuleEmulator &emulator, const std::string &verb, std::istream &args, std::string *out) {
    if (verb != "h248") {
        return false;
    }
    std::string what;
    args >> what;
    std::ostringstream os;
    if (what == "protocol") {
        std::string name;
        long module = 7;
        args >> name >> module;
        if (name != "h248" && name != "sip") {
            os << "usage: h248 protocol h248|sip [MODULE]\n";
        } else {
            const bool ok = switchProtocol(emulator, module, name == "h248");
            os << "protocol " << protocolName(emulator)
               << (ok ? ", change sent to module " : ", no inbound queue for module ") << module << "\n";
        }
    } else if (what == "counter") {
        std::string name;
        int line = 0;
        uint32_t value = 0;
        args >> line >> name >> value;
        const auto *row = std::find_if(std::begin(kCounters), std::end(kCounters),
                                       [&](const CounterName &c) { return name == c.name; });
        if (!validLine(line) || row == std::end(kCounters) || args.fail()) {
            os << "usage: h248 counter LINE NAME VALUE   (NAME:";
            for (const CounterName &c : kCounters) {
                os << " " << c.name;
            }
            os << ")\n";
        } else {
            setCounter(emulator, line, row->offset, value);
            os << "line " << line << " " << name << " = " << value << "\n";
        }
    } else if (what == "reg" || what == "hook") {
        int line = 0;
        std::string text;
        args >> line >> text;
        if (!validLine(line) || text.empty()) {
            os << "usage: h248 reg|hook LINE TEXT\n";
        } else {
            PortStatus p = portStatus(emulator, line);
            (what == "reg" ? p.regState : p.hookState) = text;
            setPortStatus(emulator, line, p);
            os << "line " << line << " " << what << " " << text << "\n";
        }
    } else if (what == "mgc") {
        uint32_t status = 0, number = 0;
        std::string address;
        args >> status >> number >> address;
        setMgcState(emulator, status, number, address);
        os << "mgc status " << status << " current " << number << " " << address << "\n";
    } else if (what == "show") {
        const std::vector<char> mgc = block(emulator, GET_MGC_CFG_ID);
        const auto *b = reinterpret_cast<const Tr104H248MgcBlock *>(mgc.data());
        os << "primary " << std::string(b->aMgcAddr[0], strnlen(b->aMgcAddr[0], TR104_H248_MGC_ADDR_LEN)) << ":"
           << b->usMgcPort[0] << " secondary "
           << std::string(b->aMgcAddr[1], strnlen(b->aMgcAddr[1], TR104_H248_MGC_ADDR_LEN)) << ":" << b->usMgcPort[1]
           << " status " << b->unMgcStatus << "\n";
        for (int line = 1; line <= 2; ++line) {
            const PortStatus p = portStatus(emulator, line);
            os << "line " << line << " reg " << p.regState << " hook " << p.hookState << "\n";
        }
    } else {
        os << "usage: h248 protocol|counter|reg|hook|mgc|show ...\n";
    }
    *out += os.str();
    return true;
}

ConsoleRegistrar consoleRegistrar(
    "h248 protocol h248|sip [MODULE] | counter LINE NAME VALUE | reg|hook LINE TEXT | mgc STATUS NUM ADDR | show",
    &console);

// The H.248 configuration blocks in the emulator's state file: one entry per block (its get
// command and line), the block in hex.  Counters and port states are not configuration.
nlohmann::json saveBlocks(VoiceModuleEmulator &emulator) {
    nlohmann::json out = nlohmann::json::array();
    if (auto s = stateOf(emulator)) {
        std::lock_guard lock(s->mutex);
        for (const auto &[key, block] : s->blocks) {
            out.push_back({{"cmd", key.first}, {"line", key.second}, {"data", stateHex(block.data(), block.size())}});
        }
    }
    return out;
}

bool loadBlocks(VoiceModuleEmulator &emulator, const nlohmann::json &saved, std::string *why) {
    auto s = stateOf(emulator);
    if (s == nullptr) {
        return true;
    }
    std::lock_guard lock(s->mutex);
    for (const nlohmann::json &entry : saved) {
        const auto key = std::make_pair(entry.at("cmd").get<uint32_t>(), entry.at("line").get<int>());
        auto block = s->blocks.find(key);
        if (block == s->blocks.end() || !stateBytes(entry.at("data"), block->second.data(), block->second.size())) {
            *why = "no block of command " + std::to_string(key.first) + " and line " + std::to_string(key.second) +
                   " with that length";
            return false;
        }
    }
    return true;
}

StatePartRegistrar statePart({"h248", &saveBlocks, &loadBlocks});

}  // namespace

void setCounter(VoiceModuleEmulator &emulator, int line, uint32_t offset, uint32_t value) {
    auto s = stateOf(emulator);
    if (s && validLine(line) && offset + 4 <= sizeof(Tr104H248StatsBlock)) {
        std::lock_guard lock(s->mutex);
        putWord(reinterpret_cast<char *>(&s->stats[line]), offset, value);
    }
}

uint32_t counter(VoiceModuleEmulator &emulator, int line, uint32_t offset) {
    auto s = stateOf(emulator);
    if (!s || !validLine(line) || offset + 4 > sizeof(Tr104H248StatsBlock)) {
        return 0;
    }
    std::lock_guard lock(s->mutex);
    return wordAt(reinterpret_cast<const char *>(&s->stats[line]), offset);
}

void setPortStatus(VoiceModuleEmulator &emulator, int line, const PortStatus &status) {
    if (auto s = stateOf(emulator); s && validLine(line)) {
        std::lock_guard lock(s->mutex);
        s->ports[line] = status;
    }
}

PortStatus portStatus(VoiceModuleEmulator &emulator, int line) {
    auto s = stateOf(emulator);
    if (!s || !validLine(line)) {
        return {};
    }
    std::lock_guard lock(s->mutex);
    return s->ports[line];
}

void setMgcState(VoiceModuleEmulator &emulator, uint32_t status, uint32_t currentNumber, const std::string &address) {
    if (auto s = stateOf(emulator)) {
        std::lock_guard lock(s->mutex);
        auto &mgc = s->blocks[{GET_MGC_CFG_ID, 0}];
        auto *b = reinterpret_cast<Tr104H248MgcBlock *>(mgc.data());
        b->unMgcStatus = status;
        b->unCurrMgcNum = currentNumber;
        std::memset(b->aCurrMgcAddr, 0, sizeof(b->aCurrMgcAddr));
        std::strncpy(b->aCurrMgcAddr, address.c_str(), sizeof(b->aCurrMgcAddr) - 1);
    }
}

std::vector<char> block(VoiceModuleEmulator &emulator, uint32_t getCmd, int line) {
    auto s = stateOf(emulator);
    if (!s) {
        return {};
    }
    std::lock_guard lock(s->mutex);
    for (const BlockKind &kind : blockKinds()) {
        if (kind.getCmd == getCmd) {
            return stored(*s, kind, kind.mode == Mode::Line ? line : 0);
        }
    }
    return {};
}

bool switchProtocol(VoiceModuleEmulator &emulator, long module, bool h248) {
    setProtocolName(emulator, h248 ? "H.248" : "SIP");
    const uint32_t words[2] = {1, h248 ? 2u : 4u};
    return emulator.sendInbound(module, TR104_CMD_TYPE_DATA, 3, words, sizeof(words));
}

void reset(VoiceModuleEmulator &emulator) {
    if (auto s = stateOf(emulator)) {
        std::lock_guard lock(s->mutex);
        initialise(*s);
    }
}

}  // namespace vmemu::h248
