// A voice module that runs without hardware.
//
// It serves the channel exactly as the voice module does: it reads every request from the send
// queue (key 30), keeps the records it is sent, answers gets from them, applies change masks,
// and replies on the requesting module's reply queue.  It can push unsolicited messages on a
// module's inbound queue and inject faults, and it records every request so that tests can look
// at the exact bytes.  Families of commands are described as data (RecordFamily) so that each
// area of the library registers the records it uses.
#pragma once

#include <array>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <cstring>
#include <deque>
#include <functional>
#include <istream>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "tr104/channel.h"

namespace vmemu {

using Payload = std::array<char, TR104_CFG_BUFFER_LEN>;

// One request as it came off the send queue.
struct Request {
    long module = 0;  // message type of the request: the sender's module number
    uint32_t cmd = 0;  // command id (text bytes 0..3)
    Payload payload{};  // cfgBuffer (text bytes 4..2051)
    Payload reply{};  // the request's reply area as sent (should be zero)
    std::array<char, TR104_MSG_TEXT_LEN> text{};  // the whole message text as received

    template <typename T>
    T word(size_t offset) const;  // a native-order integer of the payload
    std::string text_at(size_t offset, size_t max) const;  // NUL-terminated text of the payload
    template <typename T>
    T record() const;  // the payload as a record of type T
};

// Puts a record at the start of a reply.
template <typename T>
void putRecord(Payload &reply, const T &record) {
    static_assert(sizeof(T) <= sizeof(Payload));
    std::memcpy(reply.data(), &record, sizeof(record));
}

// A field of a record: where it is and how wide.
struct Field {
    uint32_t offset;
    uint32_t width;
    const char *name = nullptr;  // printed for key fields
};

// A masked field: applied by a set only when its bit is in the record's change mask.
struct MaskedField {
    uint32_t bit;
    Field field;
};

// A record's member by name: where it is and how wide.
#define VMEMU_MEMBER(record, member) \
    Field { offsetof(record, member), sizeof(record::member) }
// X of the masked-field lists the library's rows give (generated/tr104/catalogue/field_lists.h).
#define VMEMU_MASKED_FIELD(bit, record, member) {bit, VMEMU_MEMBER(record, member)},

// How the voice module keeps one kind of record.
struct RecordFamily {
    std::string name;
    uint32_t length = 0;  // bytes of the record
    std::vector<Field> keys;  // fields that select the stored instance (line, name ...)
    std::vector<uint32_t> getCmds;  // commands answered from the stored record
    std::vector<uint32_t> setCmds;  // commands that store the record (no reply)
    std::optional<Field> mask;  // change-mask word, when a set applies only masked fields
    std::vector<MaskedField> maskedFields;  // fields of a masked set
    std::vector<Field> setFields;  // when non-empty: the only fields a set copies (others kept)
};

// Faults the emulator can inject, per command or for every command.
enum class Fault {
    None,
    FailureMarker,  // reply whose payload starts with thirteen 0xFF bytes and a zero byte
    Silent,  // read the request, never answer
    Late,  // answer after delayMs
    WrongCmd,  // answer with another command id
    WrongType,  // answer with cmd_type 2 instead of 1
    Garbage,  // answer with cmd_type 1 and pseudo-random text
    Noise,  // answer the right command (cmd_type 1) with a pseudo-random reply payload
    // that holds no zero byte: no terminator anywhere, no failure marker
};

struct FaultSpec {
    Fault kind = Fault::None;
    int delayMs = 0;
    int count = -1;  // how many requests it applies to; -1 for ever
};

const char *faultName(Fault fault);
std::optional<Fault> faultFromName(const std::string &name);

// A custom answer for one command: fills the reply payload from the request; returns false to
// send no reply.  Runs under the emulator's lock: it reaches stored records with heldRecord().
using CommandHandler = std::function<bool(const Request &, Payload &reply)>;

class VoiceModuleEmulator {
public:
    VoiceModuleEmulator();
    ~VoiceModuleEmulator();
    VoiceModuleEmulator(const VoiceModuleEmulator &) = delete;
    VoiceModuleEmulator &operator=(const VoiceModuleEmulator &) = delete;

    // Opens the send queue and starts serving.  false when the queue cannot be opened.
    bool start();
    // Stops serving; the queues stay as they are.
    void stop();
    bool running() const { return thread_.joinable(); }

    // Record families and command names (printed in the request log).
    void addFamily(const RecordFamily &family);
    void nameCommand(uint32_t cmd, const std::string &name);
    std::string commandName(uint32_t cmd) const;
    void setHandler(uint32_t cmd, CommandHandler handler);

    // Stored records.  put() stores a whole record under the key fields it carries.
    void put(const std::string &family, const void *record, size_t len);
    // The stored record of a family for the key fields carried by keyRecord (nullopt if none).
    std::optional<std::vector<char>> get(const std::string &family, const void *keyRecord, size_t len) const;
    void clearRecords();
    // Every stored record with its family's name and raw key bytes (a state file saves them),
    // and one put back: under its family's key fields when the family is registered, else under
    // the given key bytes.  families() lists the registered families.
    struct StoredRecord {
        std::string family;
        std::string keyBytes;
        std::vector<char> data;
        bool operator==(const StoredRecord &) const = default;
    };
    std::vector<StoredRecord> storedRecords() const;
    void restoreRecord(const StoredRecord &record);
    std::vector<RecordFamily> families() const;
    // For command handlers only: they run under the emulator's lock, so they reach the stored
    // records through this unlocked accessor.  The record of a family under raw key bytes (the
    // key fields' bytes in order, a text key up to its terminator followed by a NUL), created
    // zero-filled with `length` bytes when missing.
    std::vector<char> &heldRecord(const std::string &family, uint32_t length, const std::string &keyBytes);

    // Fields of a command's payload that are never logged or shown (passwords): the request log
    // and the request callback see them as "********" (or zeros when the field is empty); the
    // stored records and the answers keep them.
    void hideInLog(uint32_t cmd, Field field);

    // Faults: for one command, or for every command (cmd 0).
    void setFault(uint32_t cmd, FaultSpec fault);
    void clearFaults();

    // Unsolicited message on the inbound queue of a module (7, 9, 10, 15).  false when the
    // module has no inbound queue or the send fails (a full queue is retried for two seconds).
    bool sendInbound(long module, uint32_t cmdType, uint32_t cmd, const void *payload, size_t len);

    // The request log.  It keeps the most recent requests (kLogLimit by default, so that a
    // long-running emulator does not grow without bound); requestCount() counts every request
    // seen since the last clearLog().
    static constexpr size_t kLogLimit = 1024;
    void setLogLimit(size_t limit);
    std::vector<Request> requests() const;
    size_t requestCount() const;
    void clearLog();
    // Waits until at least n requests have been seen in total, or the timeout passes.
    bool waitForRequests(size_t n, std::chrono::milliseconds timeout) const;
    // Requests of one command.
    std::vector<Request> requestsFor(uint32_t cmd) const;

    // Called for every request after it is served (the executable prints it), as it is logged.
    void onRequest(std::function<void(const Request &)> callback);
    // One readable line: command id and name, module and key fields.
    std::string describe(const Request &request) const;

    // Replies that could not be queued because the reply queue was full.
    size_t droppedReplies() const;

    // Answers every reply this long after its request was read (0: at once), as a busy voice
    // module does.  Faults that delay (late) come on top.
    void setReplyDelay(std::chrono::microseconds delay);
    // Service times in nanoseconds, from reading a request to having queued its reply (or
    // having decided not to answer), without the reply delay: the most recent kServiceSamples.
    static constexpr size_t kServiceSamples = 1u << 16;
    std::vector<uint32_t> serviceTimes() const;
    void clearServiceTimes();

    // Rewrites every reply before it is queued: `out` holds the answer the emulator would give
    // (records already stored); the hook may change its type and any byte of its text, and
    // returns false to send nothing.  Runs outside the emulator's lock.  An empty hook removes it.
    using ReplyOverride = std::function<bool(const Request &, Tr104WireMsg &out)>;
    void setReplyOverride(ReplyOverride hook);

    // A voice module that applies what it is sent: `stored` is called after a set has stored its
    // record in a family, with the family and the request; `live` answers a get of one command
    // from live values instead of the stored record (it gets the stored answer to change, and
    // is not called when a fault takes the request).  Both run outside the emulator's lock, in
    // the serving thread: keep them short.
    using StoredHook = std::function<void(const RecordFamily &, const Request &)>;
    using LiveAnswer = std::function<void(const Request &, Payload &reply)>;
    void onStored(StoredHook hook);
    void setLiveAnswer(uint32_t cmd, LiveAnswer answer);

    // Serves, in the caller's thread, every request waiting on the send queue now; returns how
    // many.  For a voice module driven step by step (no serving thread, no waiting): call it
    // right after a request is queued.  Opens the send queue on first use.
    size_t servePending();

    // Reply and inbound queue keys of a module number (0 when it has none).
    static int replyKey(long module);
    static int inboundKey(long module);

private:
    struct Stored;
    void serve();
    void handle(const Tr104WireMsg &msg, size_t length);
    bool answer(const Request &request, Payload &reply, const RecordFamily **stored);
    const RecordFamily *familyOf(uint32_t cmd, bool *isSet) const;
    std::string keyOf(const RecordFamily &family, const char *record) const;
    void storeSet(const RecordFamily &family, const Request &request);
    int replyQueue(long module);
    std::optional<FaultSpec> takeFault(uint32_t cmd);
    void waitReplyDelay(std::chrono::steady_clock::time_point readAt) const;
    void noteServiceTime(std::chrono::steady_clock::time_point readAt);
    Request logged(const Request &request) const;

    mutable std::mutex mutex_;
    mutable std::condition_variable seen_;
    std::thread thread_;
    int sendQueue_ = -1;
    std::map<long, int> replyQueues_;
    std::vector<RecordFamily> families_;
    std::map<uint32_t, std::string> names_;
    std::map<uint32_t, CommandHandler> handlers_;
    std::map<std::string, std::vector<char>> records_;  // family name + key bytes -> record
    std::map<uint32_t, FaultSpec> faults_;
    std::map<uint32_t, std::vector<Field>> hidden_;
    std::deque<Request> log_;
    size_t logLimit_ = kLogLimit;
    size_t seenCount_ = 0;
    std::function<void(const Request &)> onRequest_;
    ReplyOverride replyOverride_;
    StoredHook stored_;
    std::map<uint32_t, LiveAnswer> live_;
    size_t dropped_ = 0;
    uint32_t garbageSeed_ = 0x1234567u;
    std::atomic<int64_t> replyDelayUs_{0};
    std::vector<uint32_t> service_;  // ring of kServiceSamples once full
    size_t serviceNext_ = 0;
};

template <typename T>
T Request::record() const {
    static_assert(sizeof(T) <= sizeof(Payload));
    T value;
    std::memcpy(&value, payload.data(), sizeof(value));
    return value;
}

template <typename T>
T Request::word(size_t offset) const {
    T value{};
    if (offset + sizeof(T) <= payload.size()) {
        std::memcpy(&value, payload.data() + offset, sizeof(T));
    }
    return value;
}

// Registers the records every voice module serves: the typed exchange (20481/20482), the
// port-status block (16592), and every family announced with a FamilyRegistrar.
void registerBaseFamilies(VoiceModuleEmulator &emulator);

// Each area of the emulator announces the records it serves with one static registrar in its
// own source file:  static vmemu::FamilyRegistrar sipLines(&registerSipLineFamilies);
// Every emulator registers all of them when it is constructed.
using FamilyInstaller = void (*)(VoiceModuleEmulator &);
struct FamilyRegistrar {
    explicit FamilyRegistrar(FamilyInstaller installer);
};

// Commands of tr104-vmemu's standard input that an area of the emulator serves ("h248 ...",
// "linetest ...").  A command reads its arguments from `args`, appends what it has to say to
// `*out` (one or more lines) and returns true; it returns false when `verb` is not its own.
// Register one with a static ConsoleRegistrar in the area's source file.
using ConsoleCommand = bool (*)(VoiceModuleEmulator &emulator, const std::string &verb, std::istream &args,
                                std::string *out);
struct ConsoleRegistrar {
    // help: one line per command, "VERB ARGS...   what it does"
    ConsoleRegistrar(const char *help, ConsoleCommand command);
};
// Runs the area command that takes `verb`; false when none does.
bool runConsoleCommand(VoiceModuleEmulator &emulator, const std::string &verb, std::istream &args, std::string *out);
// The help lines of every area command.
std::vector<std::string> consoleHelp();

}  // namespace vmemu
