// Reply path: every handler of the data-model map, get and set, against a voice module whose
// replies come from the fuzzer's bytes.  The voice module is the emulator, served in this thread
// the moment a request is queued (no serving thread, no waiting): each reply is the emulator's
// own answer, rewritten as the input says: a reply area with no terminator anywhere, a failure
// marker cut short, a wrong command id or type, a text of raw input bytes, or every word from
// some offset on at an edge of its range (0, 1, -1, INT_MIN, INT_MAX and their neighbours).
//
// Input: protocol, handler index (16 bits; a regression input names the parameter instead, see
// below), flag, nLocate[0..3], the value, then one rewrite per reply.  Every call must leave the
// channel lock free; the value buffer is exactly as large as the handler's value (for a text
// read from a record field, the field's room) and ends at an inaccessible page, so any byte
// written or read past it faults.  The build aborts on undefined behaviour.
#include <pthread.h>
#include <sched.h>
#include <sys/msg.h>
#include <sys/sem.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstdio>
#include <ctime>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <string>
#include <vector>

#include "emulator/voice_module_emulator.h"
#include "fuzz_support.h"
#include "robust/guarded_buffer.h"
#include "robust/text_rooms.h"
#include "tr104.h"
#include "tr104/map.h"
#include "v2lin/v2lin.h"

namespace {

vmemu::VoiceModuleEmulator *gEmulator = nullptr;
tr104fuzz::Input *gInput = nullptr;
bool gServing = false;

constexpr uint32_t kEdgeWords[] = {0u,          1u,          0xFFFFFFFFu, 0x80000000u,
                                   0x7FFFFFFFu, 0x80000001u, 0x7FFFFFFEu, 0x41414141u};

// One rewrite of the emulator's reply, chosen by the input.
bool rewriteReply(const vmemu::Request &, Tr104WireMsg &out) {
    tr104fuzz::Input &in = *gInput;
    char *rsp = out.text + TR104_TEXT_RSP_OFFSET;
    const uint8_t how = in.byte();
    if (how >= 0xF0) {  // one edge word over the reply area from a word offset on (the words before it kept)
        const uint32_t word = kEdgeWords[in.byte() % std::size(kEdgeWords)];
        for (size_t at = 4u * (in.byte() % 64u); at < TR104_RSP_BUFFER_LEN; at += sizeof(word)) {
            std::memcpy(rsp + at, &word, sizeof(word));
        }
        return true;
    }
    switch (how % 8) {
    case 1: {  // the whole reply area without a terminator
        std::string s = in.text(64);
        if (s.empty()) {
            s = "A";
        }
        for (size_t i = 0; i < TR104_RSP_BUFFER_LEN; ++i) {
            rsp[i] = s[i % s.size()] != 0 ? s[i % s.size()] : 'x';
        }
        break;
    }
    case 2: {  // a failure marker cut short (0..13 marker bytes, then anything but the zero byte)
        const size_t n = in.byte() % 14;
        std::memset(rsp, 0xFF, n);
        rsp[n] = static_cast<char>(in.byte() | 1);
        break;
    }
    case 3:  // the whole failure marker
        std::memset(rsp, 0xFF, 13);
        rsp[13] = 0;
        break;
    case 4: {  // another command's reply
        uint32_t cmd;
        std::memcpy(&cmd, out.text + TR104_TEXT_CMD_OFFSET, sizeof(cmd));
        cmd += in.word<uint32_t>() | 1;
        std::memcpy(out.text + TR104_TEXT_CMD_OFFSET, &cmd, sizeof(cmd));
        break;
    }
    case 5:  // another message type
        out.mtype = in.byte() | 2;
        break;
    case 6: {  // input bytes over part of the reply area
        const size_t at = in.word<uint16_t>() % TR104_RSP_BUFFER_LEN;
        const std::string s = in.text(255);
        std::memcpy(rsp + at, s.data(), std::min(s.size(), TR104_RSP_BUFFER_LEN - at));
        break;
    }
    case 7:  // the whole text from the input (the rest zero)
        std::memset(out.text, 0, sizeof(out.text));
        in.bytes(out.text, sizeof(out.text));
        break;
    default:  // the emulator's own answer
        break;
    }
    return true;
}

std::vector<const Tr104MapEntry *> servedEntries() {
    std::vector<const Tr104MapEntry *> served;
    for (unsigned i = 0; i < gTr104MapCount; ++i) {
        if (gTr104Map[i].fn != nullptr && (gTr104Map[i].arity == 2 || gTr104Map[i].arity == 3)) {
            served.push_back(&gTr104Map[i]);
        }
    }
    return served;
}

// The map's value size; a text read from a record field gets its field's room when that is less.
size_t valueSize(const Tr104MapEntry &e) {
    if (std::strncmp(e.value, "text:", 5) == 0) {
        return robust::textRoom(e.handler, gTr104CurrProtocolType, std::strtoul(e.value + 5, nullptr, 10));
    }
    return std::strcmp(e.value, "byte") == 0 ? 1 : 4;
}

}  // namespace

// The voice module answers as soon as a request is on its queue.
extern "C" __attribute__((visibility("default"))) int msgsnd(int id, const void *msg, size_t len, int flags) {
    const long rc = syscall(SYS_msgsnd, id, msg, len, flags);
    if (rc == 0 && id == gTr104SndMsgQueueId && gEmulator != nullptr && !gServing) {
        gServing = true;
        gEmulator->servePending();
        gServing = false;
    }
    return rc == 0 ? 0 : -1;
}

// The line-test end handlers wait for the test to finish (tens of seconds): while a handler runs
// in the fuzzing thread time does not pass, and its sleep returns at once.  Every other thread
// (libFuzzer's own) sleeps for real.
thread_local bool tInHandler = false;
extern "C" __attribute__((visibility("default"))) unsigned int sleep(unsigned int seconds) {
    if (tInHandler) {
        return 0;
    }
    timespec wanted{static_cast<time_t>(seconds), 0};
    timespec left{};
    return nanosleep(&wanted, &left) == 0 ? 0 : static_cast<unsigned int>(left.tv_sec);
}

namespace {
// Run over the kept inputs once each (-runs=0, as CTest runs them), not fuzzing.
bool gInputsAsGiven = false;
}  // namespace

extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv) {
    for (int i = 1; i < *argc; ++i) {
        gInputsAsGiven = gInputsAsGiven || std::strcmp((*argv)[i], "-runs=0") == 0;
    }
    tr104fuzz::setUp();
    if (tr104VoiceMsgQueuesInit(1) != 0 || v2lin_init() != 0 || constructTr104CfgParamInfo() != 0) {
        std::abort();
    }
    // The runtime's start-up leaves this thread under real-time scheduling; a fuzzer that never
    // blocks must not run so on a shared machine.
    const sched_param normal{};
    pthread_setschedparam(pthread_self(), SCHED_OTHER, &normal);
    // A deferred group is applied when complete; its watchdog never fires during a run.
    gTr104CfgParamTimeout = 24 * 3600 * 1000;
    gEmulator = new vmemu::VoiceModuleEmulator();
    gEmulator->setReplyOverride(rewriteReply);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    static const std::vector<const Tr104MapEntry *> entries = servedEntries();
    tr104fuzz::Input in(data, size);
    gInput = &in;
    gEmulator->clearRecords();
    gEmulator->clearLog();
    for (int slot = 0; slot < TR104_CFG_PARAM_SLOTS; ++slot) {
        resetTr104CfgParamInfo(slot);
    }
    static const int kProtocols[] = {TR104_PROTOCOL_NONE, TR104_PROTOCOL_H248, TR104_PROTOCOL_SIP};
    // A regression input names its parameter ("@" PATH NUL, then the protocol and the rest), so
    // that it keeps calling the same handler whatever the map gains; other inputs pick one by
    // index.
    const Tr104MapEntry *named = nullptr;
    if (size > 1 && data[0] == '@') {
        const void *end = std::memchr(data + 1, 0, size - 1);
        if (end == nullptr) {
            return 0;
        }
        const std::string path(reinterpret_cast<const char *>(data + 1), static_cast<const uint8_t *>(end) - data - 1);
        for (const Tr104MapEntry *candidate : entries) {
            if (path == candidate->path) {
                named = candidate;
            }
        }
        if (named == nullptr) {
            // A kept input must name a served parameter; a mutation of one names anything.
            if (gInputsAsGiven) {
                std::fprintf(stderr, "fuzz_replies: no served parameter %s\n", path.c_str());
                std::abort();
            }
            return 0;
        }
        in.skip(path.size() + 2);
    }
    gTr104CurrProtocolType = kProtocols[in.byte() % 3];

    const Tr104MapEntry &e = named != nullptr ? *named : *entries[in.word<uint16_t>() % entries.size()];
    const uint8_t flagByte = in.byte();
    const int flag = flagByte < 0xF0 ? flagByte & 1 : static_cast<int8_t>(flagByte);
    int locate[4];
    for (int &l : locate) {
        const uint8_t b = in.byte();
        l = b < 0xC0 ? b % 4 : static_cast<int8_t>(b);
    }
    const robust::GuardedBuffer value(valueSize(e));
    std::memset(value.data(), 0, value.size());
    if (flag == 1) {
        const size_t n = in.bytes(value.data(), value.size());
        if (std::strncmp(e.value, "text:", 5) == 0) {
            value.data()[std::min(n, value.size() - 1)] = 0;
        }
        // Restart (2) would reboot the machine: register and unregister only.
        if (std::strcmp(e.handler, "Tr104VoiceOperation") == 0) {
            value.data()[0] &= 1;
            std::memset(value.data() + 1, 0, value.size() - 1);
        }
    }
    tInHandler = true;
    if (e.arity == 2) {
        reinterpret_cast<int (*)(int, void *)>(e.fn)(flag, value.data());
    } else {
        reinterpret_cast<int (*)(int, void *, int *)>(e.fn)(flag, value.data(), locate);
    }
    tInHandler = false;
    if (semctl(gTr104RcvMsgQueueSemId, 0, GETVAL) != 1) {
        std::abort();  // the channel lock was left taken
    }
    gInput = nullptr;
    return 0;
}
