// The voice module's SIP line and profile records: per-line values, line features, voice
// profiles (created by name, changed through a change mask, bound to a port, reported in the
// port status), signalling and digit timers, the digit map and the read-only profile values.
// A set followed by a get returns what was set.
#include <algorithm>
#include <cstring>
#include <utility>

#include "emulator/line_states.h"
#include "emulator/voice_module_emulator.h"
#include "tr104/sip.h"
#include "tr104/sip_identity.h"

namespace vmemu {

namespace {

constexpr uint32_t kLineRecordLen = sizeof(Tr104SipLineRecord);
constexpr uint32_t kProfileLen = sizeof(Tr104SipProfileRecord);
constexpr uint32_t kFeatureLen = sizeof(Tr104SipLineFeatureRecord);
constexpr uint32_t kDigitMapLen = TR104_DIGITMAP_MAX_LEN;
constexpr uint32_t kWanNameLen = TR104_WAN_NAME_LEN;

const Field kLineKey{0, 4, "line"};
const Field kAuthUserField{offsetof(Tr104SipLineIdentityRecord, aAuthUserName),
                           sizeof(Tr104SipLineIdentityRecord::aAuthUserName)};
const Field kAuthPasswordField{offsetof(Tr104SipLineIdentityRecord, aAuthPassword),
                               sizeof(Tr104SipLineIdentityRecord::aAuthPassword)};
const Field kProfileKey{offsetof(Tr104SipProfileRecord, aName), sizeof(Tr104SipProfileRecord::aName), "profile"};

// Key bytes as the emulator builds them: a word as it is, a name up to its terminator.
std::string wordKey(uint32_t word) { return std::string(reinterpret_cast<const char *>(&word), sizeof(word)); }
std::string nameKey(const char *name, size_t max) { return std::string(name, strnlen(name, max)) + '\0'; }

void putWord(std::vector<char> &record, size_t offset, uint32_t value) {
    std::memcpy(record.data() + offset, &value, sizeof(value));
}

// ---- Families described as data -------------------------------------------------------------

// A member of a shared record as the emulator's field: where the library's handlers find it.
#define RECORD_FIELD(record, member) \
    Field { offsetof(record, member), sizeof(record::member) }
#define LINE_FIELD(member) RECORD_FIELD(Tr104SipLineRecord, member)
#define IDENTITY_FIELD(member) RECORD_FIELD(Tr104SipLineIdentityRecord, member)
#define FEATURE_FIELD(member) RECORD_FIELD(Tr104SipLineFeatureRecord, member)

// A value of the line record with its own command pair; a set changes only its field.
struct LineField {
    const char *family;
    uint32_t getCmd, setCmd;
    const char *getName, *setName;
    std::vector<Field> fields;
    uint32_t length = kLineRecordLen;
};

// One row per family, kept as written.
// clang-format off
const std::vector<LineField> &lineFields() {
    static const std::vector<LineField> fields = {
        {"sip line enable", GET_LINE_ENABLE_ID, SET_LINE_ENABLE_ID, "GET_LINE_ENABLE_ID", "SET_LINE_ENABLE_ID",
         {LINE_FIELD(unEnable)}},
        {"sip display name", GET_PORT_DISPLAY_NAME_ID, SET_PORT_DISPLAY_NAME_ID, "GET_PORT_DISPLAY_NAME_ID",
         "SET_PORT_DISPLAY_NAME_ID", {LINE_FIELD(aDisplayName)}},
        {"sip hotline number", GET_HOTLINE_NUM_ID, SET_HOTLINE_NUM_ID, "GET_HOTLINE_NUM_ID", "SET_HOTLINE_NUM_ID",
         {LINE_FIELD(aHotlineNum)}},
        {"sip hotline delay", GET_HOTLINE_DELAY_ID, SET_HOTLINE_DELAY_ID, "GET_HOTLINE_DELAY_ID",
         "SET_HOTLINE_DELAY_ID", {LINE_FIELD(unHotlineDelay)}},
        {"sip jitter mode", GET_JIT_MODE_ID, SET_JIT_MODE_ID, "GET_JIT_MODE_ID", "SET_JIT_MODE_ID", {LINE_FIELD(aJitterMode)}},
        {"sip max jitter", GET_MAX_JIT_VALUE_ID, SET_MAX_JIT_VALUE_ID, "GET_MAX_JIT_VALUE_ID", "SET_MAX_JIT_VALUE_ID",
         {LINE_FIELD(unMaxJitter)}},
        {"sip min jitter", GET_MIN_JIT_VALUE_ID, SET_MIN_JIT_VALUE_ID, "GET_MIN_JIT_VALUE_ID", "SET_MIN_JIT_VALUE_ID",
         {LINE_FIELD(unMinJitter)}},
        // Line identity: directory number and URI share an offset under their own commands.
        {"sip directory number", GET_LINE_TEL_NUM_ID, SET_LINE_TEL_NUM_ID, "GET_LINE_TEL_NUM_ID", "SET_LINE_TEL_NUM_ID",
         {IDENTITY_FIELD(aNumber)}},
        {"sip line uri", GET_LINE_URI_ID, SET_LINE_URI_ID, "GET_LINE_URI_ID", "SET_LINE_URI_ID", {IDENTITY_FIELD(aNumber)}},
        {"sip line auth", GET_USER_AUTHOR_ID, SET_USER_AUTHOR_ID, "GET_USER_AUTHOR_ID", "SET_USER_AUTHOR_ID",
         {kAuthUserField, kAuthPasswordField}},
        {"sip fax t38 enable", GET_FAX_T38_ENABLE_ID, SET_FAX_T38_ENABLE_ID, "GET_FAX_T38_ENABLE_ID",
         "SET_FAX_T38_ENABLE_ID", {LINE_FIELD(unEnable)}},
        // Line features.
        {"sip caller id mode", GET_CALLERID_MODE_ID, SET_CALLERID_MODE_ID, "GET_CALLERID_MODE_ID",
         "SET_CALLERID_MODE_ID", {FEATURE_FIELD(ucCallerIdMode)}, kFeatureLen},
        {"sip call waiting", GET_CALL_WAITING_ID, SET_CALL_WAITING_ID, "GET_CALL_WAITING_ID", "SET_CALL_WAITING_ID",
         {FEATURE_FIELD(ucCallWaiting)}, kFeatureLen},
        {"sip conference", GET_CONFERENCE_ID, SET_CONFERENCE_ID, "GET_CONFERENCE_ID", "SET_CONFERENCE_ID",
         {FEATURE_FIELD(ucConference)}, kFeatureLen},
    };
    return fields;
}
// clang-format on

// Profile-wide records kept whole: one instance, a set replaces it.
struct WholeRecord {
    const char *family;
    uint32_t getCmd, setCmd;
    const char *getName, *setName;
    uint32_t length;
};

const WholeRecord kWholeRecords[] = {
    {"sip caller id format", GET_CALLERID_FORMAT_ID, SET_CALLERID_FORMAT_ID, "GET_CALLERID_FORMAT_ID",
     "SET_CALLERID_FORMAT_ID", 4},
    {"sip digit map match mode", GET_DigitMapMatchMode_ID, SET_DigitMapMatchMode_ID, "GET_DigitMapMatchMode_ID",
     "SET_DigitMapMatchMode_ID", sizeof(Tr104SipMatchModeRecord)},
};

// Read-only profile values and what this voice module reports for them.
struct ReadOnlyValue {
    const char *family;
    uint32_t cmd;
    const char *name;
    uint32_t value;
};

const ReadOnlyValue kReadOnlyValues[] = {
    {"sip max sessions per line", GET_MAX_SESSIONS_PER_LINE_ID, "GET_MAX_SESSIONS_PER_LINE_ID", 2},
    {"sip max sessions all lines", GET_MAX_SESSIONS_ALL_LINES_ID, "GET_MAX_SESSIONS_ALL_LINES_ID", 4},
    {"sip rtcp flag", GET_RTCP_FLAG_ID, "GET_RTCP_FLAG_ID", 1},
    {"sip rtp redundancy flag", GET_RTP_REDUNDANCY_FLAG_ID, "GET_RTP_REDUNDANCY_FLAG_ID", 0},
    {"sip vlan tag coupled flag", GET_VLAN_TAG_COUPLED_FLAG_ID, "GET_VLAN_TAG_COUPLED_FLAG_ID", 0},
    {"sip fax t38 flag", GET_FAX_T38_FLAG_ID, "GET_FAX_T38_FLAG_ID", 1},
    {"sip fax pass through flag", GET_FAX_PASS_THROUGH_FLAG_ID, "GET_FAX_PASS_THROUGH_FLAG_ID", 1},
    {"sip modem pass through flag", GET_MODEM_PASS_THROUGH_FLAG_ID, "GET_MODEM_PASS_THROUGH_FLAG_ID", 1},
    {"sip digit map flag", GET_DIGITMAP_FLAG_ID, "GET_DIGITMAP_FLAG_ID", 1},
    {"sip numbering plan flag", GET_NUMBERING_PLAN_FLAG_ID, "GET_NUMBERING_PLAN_FLAG_ID", 0},
    {"sip number of lines", GET_NUMBER_OF_LINES_ID, "GET_NUMBER_OF_LINES_ID", 2},
};
constexpr char kWanName[] = "1_VOIP_R_VID_46";

// Change-masked fields of the profile record.
const std::vector<MaskedField> &profileFields() {
    static const std::vector<MaskedField> fields = {
        {TR104_PROFILE_CODEC, {offsetof(Tr104SipProfileRecord, aucCodecs), TR104_PROFILE_CODEC_COUNT}},
        {TR104_PROFILE_SILENCE_SUPPRESSION, {38, 1}},
        {TR104_PROFILE_COMFORT_NOISE, {39, 1}},
        {TR104_PROFILE_DTMF_METHOD, {40, 1}},
        {TR104_PROFILE_ECHO_CANCEL, {41, 1}},
        {TR104_PROFILE_RECEIVE_GAIN, {42, 1}},
        {TR104_PROFILE_TRANSMIT_GAIN, {43, 1}},
        {TR104_PROFILE_JITTER_TARGET, {44, 1}},
        {TR104_PROFILE_PACKETIZATION, {45, 1}},
        {TR104_PROFILE_T38_BIT_RATE, {56, 4}},
        {TR104_PROFILE_T38_TCF_METHOD, {60, 4}},
        {TR104_PROFILE_T38_HIGH_SPEED_REDUNDANCY, {64, 4}},
        {TR104_PROFILE_T38_PORT_ADD2, {72, 4}},
    };
    return fields;
}

// The signalling timer record names the timer a set changes in a 16-bit selector at offset 0.
// The emulator reads the change mask as a word at that offset, which holds the selector in its
// first two bytes on either byte order.
uint32_t selectorBit(uint16_t selector) {
    char bytes[4] = {};
    std::memcpy(bytes, &selector, sizeof(selector));
    uint32_t word;
    std::memcpy(&word, bytes, sizeof(word));
    return word;
}

const char kProfileFamily[] = "sip profile";
const char kPortStatusFamily[] = "port status";
const char kSignalTimerFamily[] = "sip signal timers";
const char kDigitTimerFamily[] = "sip digit timers";
const char kDigitMapFamily[] = "sip digit map";
const char kDigitMapEnableFamily[] = "sip digit map enable";

// ---- Handlers for what a plain record cannot do ----------------------------------------------

std::vector<char> &profileByName(VoiceModuleEmulator &e, const Request &request) {
    std::vector<char> &profile = e.heldRecord(kProfileFamily, kProfileLen,
                                              nameKey(request.payload.data() + kProfileKey.offset, kProfileKey.width));
    const bool fresh = profile[kProfileKey.offset] == 0;
    std::memcpy(profile.data() + kProfileKey.offset, request.payload.data() + kProfileKey.offset, kProfileKey.width);
    if (fresh) {
        // A new profile starts with the voice module's T.38 training method: local TCF.
        putWord(profile, offsetof(Tr104SipProfileRecord, unT38TcfMethod), 2);
    }
    return profile;
}

// The T.38 low-speed redundancy has no bit of its own: this voice module takes it from a set
// whose change mask is empty.
void applyMasked(std::vector<char> &profile, const Request &request) {
    const uint32_t mask = request.word<uint32_t>(offsetof(Tr104SipProfileRecord, unChangeMask));
    if (mask == 0) {
        constexpr size_t low = offsetof(Tr104SipProfileRecord, unT38LowSpeedRedundancy);
        std::memcpy(profile.data() + low, request.payload.data() + low, 4);
    }
    for (const MaskedField &mf : profileFields()) {
        if (mask & mf.bit) {
            std::memcpy(profile.data() + mf.field.offset, request.payload.data() + mf.field.offset, mf.field.width);
        }
    }
}

// Binds the request's profile to the port in its first byte: the port status then reports it.
void bindProfile(VoiceModuleEmulator &e, std::vector<char> &profile, const Request &request) {
    const uint8_t port = request.word<uint8_t>(offsetof(Tr104SipProfileRecord, ucPort));
    profile[offsetof(Tr104SipProfileRecord, ucPort)] = static_cast<char>(port);
    const uint32_t line = port;
    std::vector<char> &status = e.heldRecord(kPortStatusFamily, kLineRecordLen, wordKey(line));
    putWord(status, offsetof(Tr104SipLineRecord, unLine), line);
    putWord(status, offsetof(Tr104SipLineRecord, unProfileId), line);
    char *name = status.data() + offsetof(Tr104SipLineRecord, aProfileName);
    std::memset(name, 0, sizeof(Tr104SipLineRecord::aProfileName));
    std::memcpy(name, profile.data() + kProfileKey.offset, strnlen(profile.data() + kProfileKey.offset, 21));
}

// Registration changes the registration text of the port status.
void setRegistration(VoiceModuleEmulator &e, const Request &request, const char *state) {
    const uint32_t line = request.word<uint32_t>(0);
    std::vector<char> &status = e.heldRecord(kPortStatusFamily, kLineRecordLen, wordKey(line));
    putWord(status, 0, line);
    char *text = status.data() + offsetof(Tr104SipLineRecord, aRegState);
    std::memset(text, 0, sizeof(Tr104SipLineRecord::aRegState));
    std::strcpy(text, state);
}

// Digit map chunks: chunk 0 starts a new map, chunk n continues it at n * 192 characters.
void storeDigitMapChunk(VoiceModuleEmulator &e, const Request &request) {
    std::vector<char> &map = e.heldRecord(kDigitMapFamily, kDigitMapLen, "");
    const size_t chunk = request.word<uint8_t>(offsetof(Tr104SipDigitMapChunk, ucChunk));
    const std::string text = request.text_at(offsetof(Tr104SipDigitMapChunk, aText), TR104_DIGITMAP_CHUNK_CHARS);
    const size_t start = std::min<size_t>(chunk * TR104_DIGITMAP_CHUNK_CHARS, kDigitMapLen - 1);
    std::fill(map.begin() + static_cast<long>(start), map.end(), 0);
    std::memcpy(map.data() + start, text.data(), std::min(text.size(), kDigitMapLen - 1 - start));
}

void storeDigitTimers(VoiceModuleEmulator &e, const Request &request) {
    std::vector<char> &timers = e.heldRecord(kDigitTimerFamily, sizeof(Tr104SipDigitTimerRecord), "");
    for (size_t offset :
         {offsetof(Tr104SipDigitTimerRecord, unShortDigit), offsetof(Tr104SipDigitTimerRecord, unLongDigit)}) {
        const uint32_t value = request.word<uint32_t>(offset);
        if (value != TR104_DIGIT_TIMER_UNCHANGED) {
            putWord(timers, offset, value);
        }
    }
}

void setDigitMapEnable(VoiceModuleEmulator &e, uint32_t on) {
    putWord(e.heldRecord(kDigitMapEnableFamily, 4, ""), 0, on);
}

// A set command served by a handler: applied, never answered.
void onSet(VoiceModuleEmulator &e, uint32_t cmd, std::function<void(const Request &)> apply) {
    e.setHandler(cmd, [apply = std::move(apply)](const Request &request, Payload &) {
        apply(request);
        return false;
    });
}

RecordFamily keyedFamily(const std::string &name, uint32_t length, std::vector<Field> keys, std::vector<uint32_t> gets,
                         std::vector<uint32_t> sets) {
    RecordFamily f;
    f.name = name;
    f.length = length;
    f.keys = std::move(keys);
    f.getCmds = std::move(gets);
    f.setCmds = std::move(sets);
    return f;
}

// A record a set changes field by field: the word at maskOffset names the fields it carries.
struct SelectedRecord {
    const char *family;
    uint32_t length;
    std::vector<Field> keys;
    uint32_t getCmd, setCmd;
    uint32_t maskOffset;
    std::vector<MaskedField> fields;
};

std::vector<SelectedRecord> selectedRecords() {
    using Fax = Tr104SipFaxModeRecord;
    using Vbd = Tr104SipVbdRecord;
    using Sig = Tr104SipSignalTimerRecord;
    return {
        // Voice profiles by name, with their change mask.
        {kProfileFamily,
         kProfileLen,
         {kProfileKey},
         GET_PROFILE_CMD_ID,
         SET_PROFILE_CMD_ID,
         offsetof(Tr104SipProfileRecord, unChangeMask),
         profileFields()},
        // Signalling timers: one record, the selector names the timer a set changes.
        {kSignalTimerFamily,
         sizeof(Sig),
         {},
         GET_SIG_TIMEOUT_ID,
         SET_SIG_TIMEOUT_ID,
         offsetof(Sig, usSelector),
         {{selectorBit(TR104_SIG_TIMER_START_DIGIT), {offsetof(Sig, unStartDigit), 4}},
          {selectorBit(TR104_SIG_TIMER_NO_ANSWER), {offsetof(Sig, unNoAnswer), 4}},
          {selectorBit(TR104_SIG_TIMER_BUSY_TONE), {offsetof(Sig, unBusyTone), 4}},
          {selectorBit(TR104_SIG_TIMER_HANGING_REMINDER), {offsetof(Sig, unHangingReminder), 4}},
          {selectorBit(TR104_SIG_TIMER_CALL_WAITING_REJECT), {offsetof(Sig, unCallWaitingReject), 4}}}},
        // Fax attributes: the configuration flag names the attribute.
        {"sip fax mode",
         sizeof(Fax),
         {},
         GET_FAX_MODE_ID,
         SET_FAX_MODE_ID,
         offsetof(Fax, unConfigFlag),
         {{CONFIG_FLAG_FAX_CTRL_MODE, {offsetof(Fax, unFaxCtrlMode), 4}},
          {CONFIG_FLAG_FAX_PROCESS_MODE, {offsetof(Fax, unProcessMode), 4}},
          {CONFIG_FLAG_FAX_T38_SDP_TYPE, {offsetof(Fax, unT38SdpType), 4}},
          {CONFIG_FLAG_FAX_FAX_MODEM_SWITCH, {offsetof(Fax, unFaxModemSwitch), 4}},
          {CONFIG_FLAG_FAX_ECHO_CANCEL_SWITCH, {offsetof(Fax, unEchoCancelSwitch), 4}},
          {CONFIG_FLAG_FAX_SILENCE_SUPP_SWITCH, {offsetof(Fax, unSilenceSuppSwitch), 4}}}},
        // Voice-band data: the selector names the field.
        {"sip vbd",
         sizeof(Vbd),
         {},
         GET_VBD_ID,
         SET_VBD_ID,
         offsetof(Vbd, unSelector),
         {{TR104_VBD_ENABLE, {offsetof(Vbd, unEnable), 4}},
          {TR104_VBD_CODEC, {offsetof(Vbd, unCodec), 4}},
          {TR104_VBD_RX_INTERVAL, {offsetof(Vbd, unRxInterval), 4}},
          {TR104_VBD_TX_INTERVAL, {offsetof(Vbd, unTxInterval), 4}}}},
    };
}

// Names of the commands not named with their families.
const std::pair<uint32_t, const char *> kCommandNames[] = {
    {GET_WAN_NAME_ID, "GET_WAN_NAME_ID"},
    {GET_PROFILE_CMD_ID, "GET_PROFILE_CMD_ID"},
    {SET_PROFILE_CMD_ID, "SET_PROFILE_CMD_ID"},
    {CREATE_PROFILE_ID, "CREATE_PROFILE_ID"},
    {BIND_PROFILE_ID, "BIND_PROFILE_ID"},
    {CREATE_SET_BIND_PROFILE_ID, "CREATE_SET_BIND_PROFILE_ID"},
    {GET_SIG_TIMEOUT_ID, "GET_SIG_TIMEOUT_ID"},
    {SET_SIG_TIMEOUT_ID, "SET_SIG_TIMEOUT_ID"},
    {GET_FAX_MODE_ID, "GET_FAX_MODE_ID"},
    {SET_FAX_MODE_ID, "SET_FAX_MODE_ID"},
    {GET_VBD_ID, "GET_VBD_ID"},
    {SET_VBD_ID, "SET_VBD_ID"},
    {GET_DIG_TIMEOUT, "GET_DIG_TIMEOUT"},
    {SET_DIG_TIMEOUT, "SET_DIG_TIMEOUT"},
    {GET_DIGITMAP_ID, "GET_DIGITMAP_ID"},
    {SET_DIGITMAP_ID, "SET_DIGITMAP_ID"},
    {ENABLE_DIGITMAP_ID, "ENABLE_DIGITMAP_ID"},
    {DISABLE_DIGITMAP_ID, "DISABLE_DIGITMAP_ID"},
    {GET_DIGITMAP_ENABLE_ID, "GET_DIGITMAP_ENABLE_ID"},
    {REGISTER_LINE_ID, "REGISTER_LINE_ID"},
    {UNREGISTER_LINE_ID, "UNREGISTER_LINE_ID"},
    {RESET_LINE_STATISTICS_ID, "RESET_LINE_STATISTICS_ID"},
};

void installSipFamilies(VoiceModuleEmulator &e) {
    for (const auto &[cmd, name] : kCommandNames) {
        e.nameCommand(cmd, name);
    }
    for (const LineField &lf : lineFields()) {
        RecordFamily f = keyedFamily(lf.family, lf.length, {kLineKey}, {lf.getCmd}, {lf.setCmd});
        f.setFields = lf.fields;
        e.addFamily(f);
        e.nameCommand(lf.getCmd, lf.getName);
        e.nameCommand(lf.setCmd, lf.setName);
    }
    // A line's password is kept and answered, never logged.
    for (const uint32_t cmd : {GET_USER_AUTHOR_ID, SET_USER_AUTHOR_ID}) {
        e.hideInLog(cmd, kAuthPasswordField);
    }
    for (const WholeRecord &w : kWholeRecords) {
        e.addFamily(keyedFamily(w.family, w.length, {}, {w.getCmd}, {w.setCmd}));
        e.nameCommand(w.getCmd, w.getName);
        e.nameCommand(w.setCmd, w.setName);
    }
    for (const ReadOnlyValue &r : kReadOnlyValues) {
        e.addFamily(keyedFamily(r.family, 4, {}, {r.cmd}, {}));
        e.nameCommand(r.cmd, r.name);
        e.put(r.family, &r.value, sizeof(r.value));
    }
    e.addFamily(keyedFamily("sip wan name", kWanNameLen, {}, {GET_WAN_NAME_ID}, {}));
    e.put("sip wan name", kWanName, sizeof(kWanName));
    for (const SelectedRecord &r : selectedRecords()) {
        RecordFamily f = keyedFamily(r.family, r.length, r.keys, {r.getCmd}, {r.setCmd});
        f.mask = Field{r.maskOffset, 4};
        f.maskedFields = r.fields;
        e.addFamily(f);
    }
    // The profile a port without one of its own is served from (its name is empty).
    Tr104SipProfileRecord portDefault{};
    portDefault.unT38TcfMethod = 2;  // local TCF
    const uint8_t codecs[TR104_PROFILE_CODEC_COUNT] = {0, 8, 18, TR104_PROFILE_CODEC_UNUSED,
                                                       TR104_PROFILE_CODEC_UNUSED};  // PCMU, PCMA, G.729
    std::memcpy(portDefault.aucCodecs, codecs, sizeof(codecs));
    e.put(kProfileFamily, &portDefault, sizeof(portDefault));

    Tr104SipSignalTimerRecord defaults{};
    defaults.unStartDigit = 10000;
    defaults.unNoAnswer = 60000;
    defaults.unBusyTone = 40000;
    defaults.unHangingReminder = 60000;
    defaults.unCallWaitingReject = 30000;
    e.put(kSignalTimerFamily, &defaults, sizeof(defaults));

    // Profiles: created by name, changed through the mask, bound to a port (which the port
    // status then reports), or all three in one request.
    onSet(e, CREATE_PROFILE_ID, [&e](const Request &r) { profileByName(e, r); });
    onSet(e, SET_PROFILE_CMD_ID, [&e](const Request &r) { applyMasked(profileByName(e, r), r); });
    onSet(e, BIND_PROFILE_ID, [&e](const Request &r) { bindProfile(e, profileByName(e, r), r); });
    onSet(e, CREATE_SET_BIND_PROFILE_ID, [&e](const Request &r) {
        std::vector<char> &p = profileByName(e, r);
        applyMasked(p, r);
        bindProfile(e, p, r);
    });

    // Digit timers: -1 in a field leaves that timer as it is.
    e.addFamily(keyedFamily(kDigitTimerFamily, sizeof(Tr104SipDigitTimerRecord), {}, {GET_DIG_TIMEOUT}, {}));
    onSet(e, SET_DIG_TIMEOUT, [&e](const Request &r) { storeDigitTimers(e, r); });

    // Digit map: assembled from its chunks; writing or switching turns it on or off.
    e.addFamily(keyedFamily(kDigitMapFamily, kDigitMapLen, {}, {GET_DIGITMAP_ID}, {}));
    e.addFamily(keyedFamily(kDigitMapEnableFamily, 4, {}, {GET_DIGITMAP_ENABLE_ID}, {}));
    onSet(e, SET_DIGITMAP_ID, [&e](const Request &r) { storeDigitMapChunk(e, r); });
    onSet(e, ENABLE_DIGITMAP_ID, [&e](const Request &) { setDigitMapEnable(e, 1); });
    onSet(e, DISABLE_DIGITMAP_ID, [&e](const Request &) { setDigitMapEnable(e, 0); });

    // Registration and statistics.
    onSet(e, REGISTER_LINE_ID, [&e](const Request &r) { setRegistration(e, r, line::kRegistered); });
    onSet(e, UNREGISTER_LINE_ID, [&e](const Request &r) { setRegistration(e, r, line::kUnregistered); });
    onSet(e, RESET_LINE_STATISTICS_ID, [](const Request &) {});
}

FamilyRegistrar sipFamilies(&installSipFamilies);

}  // namespace
}  // namespace vmemu
