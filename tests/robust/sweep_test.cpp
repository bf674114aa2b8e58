// Every exported handler, called under SIP, H.248 and no protocol with refused arguments and
// against a voice module that answers wrongly or not at all.  Each call must return 0, -1 or -2,
// send nothing when it refuses its arguments, leave the channel lock free and stay inside the value
// buffer it was given (the buffer ends at an inaccessible page; a text's buffer is no larger than
// the record field it comes from).  Replies that fill every text and word of a record with
// extreme bytes must leave every arithmetic defined (the sanitizer build aborts on any fault).
#include <gtest/gtest.h>

#include <setjmp.h>
#include <signal.h>

#include <chrono>
#include <cstdio>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "handler_table.h"
#include "text_rooms.h"
#include "protocol/private_root.h"
#include "support/channel_fixture.h"
#include "tr104.h"

namespace {

using namespace std::chrono_literals;
using robust::Shape;
using robust::Target;
using Clock = std::chrono::steady_clock;

// Handlers that, by design, keep the caller's thread for 30 or 40 seconds on a valid get:
// their refused arguments are swept, their valid calls are left to the line-test suite.
bool blocksCaller(const std::string &name) {
    return name.rfind("Tr104PhysicalInterfaceTestEnd", 0) == 0 ||
           name.rfind("Tr104PhysicalInterfaceAllTestsEnd", 0) == 0;
}

[[maybe_unused]] ::testing::Environment *const privateRoot =
    ::testing::AddGlobalTestEnvironment(new tr104test::PrivateRootEnvironment);

// A fault on a guard page is caught and reported as a failure of the handler that made it, so
// that one run names every handler that steps past its buffer.
sigjmp_buf guardJump;
volatile sig_atomic_t guardArmed = 0;
void onGuardFault(int) {
    if (guardArmed != 0) {
        guardArmed = 0;
        siglongjmp(guardJump, 1);
    }
    signal(SIGSEGV, SIG_DFL);
    raise(SIGSEGV);
}

struct Protocol {
    const char *name;
    int value;
};
constexpr Protocol kProtocols[] = {{"SIP", TR104_PROTOCOL_SIP}, {"H.248", TR104_PROTOCOL_H248}, {"none", 0}};

// A protocol variant does not read the protocol: it is called under its own only.
bool calledUnder(const Target &t, int protocol) {
    const std::string base = tr104ctl::baseName(t.name);
    if (base == t.name) {
        return true;
    }
    return t.name.size() - base.size() == 3 ? protocol == TR104_PROTOCOL_SIP : protocol == TR104_PROTOCOL_H248;
}

class Sweep : public tr104test::ChannelTest {
protected:
    // Module 9: the short reply wait, so that a silent voice module costs 0.2 s a get.
    int moduleKind() const override { return 2; }

    void SetUp() override {
        ChannelTest::SetUp();
        handlers = robust::exportedHandlers(TR104_EXPORTS_FILE);
        ASSERT_GT(handlers.size(), 500u) << "the export list was not read";
    }
    void TearDown() override {
        gTr104CurrProtocolType = 0;
        ChannelTest::TearDown();
    }

    // One call; a step past the value buffer or nLocate fails the test and returns -99.
    int call(const Target &t, int flag, robust::GuardedBuffer *value, const int *locate) {
        struct sigaction action {
        }, old{};
        action.sa_handler = &onGuardFault;
        sigaction(SIGSEGV, &action, &old);
        int rc = -99;
        if (sigsetjmp(guardJump, 1) == 0) {
            guardArmed = 1;
            rc = callUnguarded(t, flag, value, locate);
            guardArmed = 0;
        } else {
            ADD_FAILURE() << t.name << " (flag " << flag << ") stepped past its "
                          << (value != nullptr ? value->size() : 0) << "-byte value buffer or nLocate";
            semctl(gTr104RcvMsgQueueSemId, 0, SETVAL, 1);
        }
        sigaction(SIGSEGV, &old, nullptr);
        return rc;
    }

    // One call with the value in a guarded buffer; pValue null when value is null.
    static int callUnguarded(const Target &t, int flag, robust::GuardedBuffer *value, const int *locate) {
        robust::GuardedBuffer where(sizeof(int) * 4);  // nLocate ends at the guard page too
        int *nLocate = reinterpret_cast<int *>(where.data());
        std::memcpy(nLocate, locate, sizeof(int) * 4);
        void *pValue = value != nullptr ? value->data() : nullptr;
        switch (t.shape) {
        case Shape::Three: return reinterpret_cast<int (*)(int, void *, int *)>(t.fn)(flag, pValue, nLocate);
        case Shape::Two: return reinterpret_cast<int (*)(int, void *)>(t.fn)(flag, pValue);
        case Shape::None: return reinterpret_cast<int (*)()>(t.fn)();
        case Shape::Directed: return reinterpret_cast<int (*)(int, int, void *, int *)>(t.fn)(flag, 1, pValue, nLocate);
        case Shape::Custom: {
            const tr104ctl::CustomResult r = t.custom(t.fn, flag == 1, "", nLocate);
            return r.called ? r.rc : 0;
        }
        }
        return -99;
    }

    // A valid value for a set: an empty text or 0.
    static void fillValid(robust::GuardedBuffer &value) { std::memset(value.data(), 0, value.size()); }

    // Nothing reached the voice module since `before`: nothing queued, nothing served.
    void expectNothingSent(size_t before, const std::string &what) {
        EXPECT_EQ(tr104test::queueDepth(gTr104SndMsgQueueId), 0u) << what;
        EXPECT_EQ(emulator.requestCount(), before) << what << " sent a request";
    }

    // Every request of the earlier calls served: a port-status read goes out after them (the
    // voice module serves in order).  Always, because a request the voice module has taken off
    // the queue but not yet logged shows neither in the queue nor in the log.
    void settle() {
        char status[TR104_PORT_STATUS_LEN];
        getLineStatus(1, status);
    }

    void expectSafe(int rc, const std::string &what) {
        EXPECT_TRUE(rc == 0 || rc == -1 || rc == -2 || rc == -99) << what << " returned " << rc;
        EXPECT_EQ(tr104test::semValue(), 1) << what << " left the channel lock taken";
    }

    // Refused arguments: a flag of 2, a null value, instance numbers out of range.
    void sweepRefused(const Target &t, const char *protocol, int *calls) {
        const std::string who = t.name + " under " + protocol;
        if (t.shape == Shape::None || t.shape == Shape::Custom) {
            return;
        }
        robust::GuardedBuffer value(t.size);
        struct Case {
            const char *what;
            int flag;
            bool null;
            int index;  // nLocate index made out of range, -1 none
            int bad;  // its value
        };
        std::vector<Case> cases = {{"nFlag 2", 2, false, -1, 0},
                                   {"nFlag -1", -1, false, -1, 0},
                                   {"null pValue (get)", 0, true, -1, 0},
                                   {"null pValue (set)", 1, true, -1, 0}};
        for (int index : t.instanceIndexes) {
            for (int bad : {0, 99, -1}) {
                cases.push_back({"nLocate out of range", 0, false, index, bad});
                cases.push_back({"nLocate out of range (set)", 1, false, index, bad});
            }
        }
        for (const Case &c : cases) {
            if (c.index >= 0 && blocksCaller(t.name)) {
                continue;
            }
            const auto start = Clock::now();
            std::array<int, 4> locate = t.locate;
            if (c.index >= 0) {
                locate[c.index] = c.bad;
            }
            fillValid(value);
            if (c.index < 0) {
                settle();
            }
            const size_t before = emulator.requestCount();
            const int rc = call(t, c.flag, c.null ? nullptr : &value, locate.data());
            ++*calls;
            const std::string what =
                who + ", " + c.what +
                (c.index >= 0 ? " nLocate[" + std::to_string(c.index) + "]=" + std::to_string(c.bad) : "");
            expectSafe(rc, what);
            // A bad flag or value pointer is refused before anything is sent.  Instance numbers
            // are checked by the handlers that name them, except where a handler deliberately
            // ignores one (the maximum sessions of a line, the profile-wide timers) or reads the
            // stored record before it judges the value: there the call must still be safe.
            if (c.index < 0) {
                expectNothingSent(before, what);
            }
            if (Clock::now() - start > 100ms) {
                std::printf("[slow] %s: %lld ms\n", what.c_str(), static_cast<long long>((Clock::now() - start) / 1ms));
            }
        }
    }

    // A get and a set with valid arguments.
    void sweepValid(const Target &t, const std::string &who, int *calls) {
        if (blocksCaller(t.name)) {
            return;
        }
        // A text's buffer holds what its record field holds, where that is less than the map's.
        const size_t size = t.text ? robust::textRoom(t.name, gTr104CurrProtocolType, t.size) : t.size;
        for (int flag : {0, 1}) {
            robust::GuardedBuffer value(size);
            fillValid(value);
            const int rc = call(t, flag, &value, t.locate.data());
            ++*calls;
            const std::string what = who + (flag == 0 ? " get" : " set");
            expectSafe(rc, what);
            // A text reply that fills the handler's length arrives without a terminator, exactly as
            // the channel copies it: callers pass a buffer one byte longer, zero-filled (as the map's
            // callers do).  The guard page after the buffer proves nothing is written past it.
        }
    }

    // Handlers with several value pointers: flags they refuse, then each pointer null in a get
    // and a set.  The pointers' order comes from the client's call of the handler (ctl/kinds/).
    struct PointerShape {
        tr104ctl::CustomCall custom;
        int pointers;
        int (*invoke)(void *fn, int flag, void *const *p);
        std::vector<int> badFlags = {2, -1};  // the POS/IPT lists take 2 (delete); MGC registration no flag
    };
    static std::span<const PointerShape> pointerShapes() {
        using U = uint32_t *;
        static const std::vector<PointerShape> shapes = {
            {&tr104ctl::net::triple, 3,
             [](void *f, int flag, void *const *p) {
                 return reinterpret_cast<int (*)(int, U, U, U)>(f)(flag, U(p[0]), U(p[1]), U(p[2]));
             }},
            {&tr104ctl::net::voiceIpAddr, 5,
             [](void *f, int flag, void *const *p) {
                 return reinterpret_cast<int (*)(int, U, U, U, const char *, const uint32_t *)>(f)(
                     flag, U(p[0]), U(p[1]), U(p[2]), static_cast<const char *>(p[3]), U(p[4]));
             }},
            {&tr104ctl::net::dnsAddr, 3,
             [](void *f, int flag, void *const *p) {
                 return reinterpret_cast<int (*)(int, U, U, const uint32_t *)>(f)(flag, U(p[0]), U(p[1]), U(p[2]));
             }},
            {&tr104ctl::net::numbers,
             2,
             [](void *f, int flag, void *const *p) {
                 int nLocate[4] = {1, 1, 1, 1};
                 return reinterpret_cast<int (*)(int, char *, char *, int *)>(f)(flag, static_cast<char *>(p[0]),
                                                                                 static_cast<char *>(p[1]), nLocate);
             },
             {3, -1}},
            {&tr104ctl::h248kinds::nameRule, 4,
             [](void *f, int flag, void *const *p) {
                 return reinterpret_cast<int (*)(int, char *, U, U, U)>(f)(flag, static_cast<char *>(p[0]), U(p[1]),
                                                                           U(p[2]), U(p[3]));
             }},
            {&tr104ctl::h248kinds::ephemeralRangeRule, 5,
             [](void *f, int flag, void *const *p) {
                 return reinterpret_cast<int (*)(int, char *, U, U, U, U)>(f)(flag, static_cast<char *>(p[0]), U(p[1]),
                                                                              U(p[2]), U(p[3]), U(p[4]));
             }},
            {&tr104ctl::h248kinds::mgcRegister,
             2,
             [](void *f, int flag, void *const *p) {
                 return reinterpret_cast<int (*)(int, void *, char *, int *)>(f)(flag, p[0], static_cast<char *>(p[1]),
                                                                                 nullptr);
             },
             {}},
        };
        return shapes;
    }
    void sweepPointers(const Target &t, const char *protocol, int *calls) {
        for (const PointerShape &shape : pointerShapes()) {
            if (shape.custom != t.custom) {
                continue;
            }
            std::vector<std::unique_ptr<robust::GuardedBuffer>> buffers;
            for (int i = 0; i < shape.pointers; ++i) {
                buffers.push_back(std::make_unique<robust::GuardedBuffer>(64));
            }
            for (int nulled = -1; nulled < shape.pointers; ++nulled) {
                for (int flag : nulled < 0 ? shape.badFlags : std::vector<int>{0, 1}) {
                    void *p[5] = {};
                    for (int i = 0; i < shape.pointers; ++i) {
                        std::memset(buffers[i]->data(), 0, 64);
                        p[i] = i == nulled ? nullptr : buffers[i]->data();
                    }
                    settle();
                    const size_t before = emulator.requestCount();
                    const int rc = shape.invoke(t.fn, flag, p);
                    ++*calls;
                    const std::string what = t.name + " under " + protocol + ", flag " + std::to_string(flag) +
                                             (nulled >= 0 ? ", pointer " + std::to_string(nulled + 1) + " null" : "");
                    expectSafe(rc, what);
                    if (nulled < 0 || rc == -2) {
                        expectNothingSent(before, what);
                    }
                }
            }
            return;
        }
        ADD_FAILURE() << t.name << ": the sweep does not know this calling convention";
    }

    std::vector<Target> handlers;
};

TEST_F(Sweep, RefusedArgumentsSendNothingUnderEveryProtocol) {
    int calls = 0;
    for (const Protocol &p : kProtocols) {
        gTr104CurrProtocolType = p.value;
        for (const Target &t : handlers) {
            if (t.shape == Shape::Custom) {
                if (t.custom != &tr104ctl::net::privateIp && t.custom != &tr104ctl::net::check) {  // no pointers
                    sweepPointers(t, p.name, &calls);
                }
                continue;
            }
            sweepRefused(t, p.name, &calls);
        }
    }
    std::printf("[sweep] %zu handlers, %d calls with refused arguments\n", handlers.size(), calls);
}

// Replies that arrive but are wrong.  The emulator answers every command with the fault.
TEST_F(Sweep, WrongRepliesAreSurvived) {
    const vmemu::Fault faults[] = {vmemu::Fault::None,          vmemu::Fault::Noise,    vmemu::Fault::Garbage,
                                   vmemu::Fault::FailureMarker, vmemu::Fault::WrongCmd, vmemu::Fault::WrongType};
    int calls = 0;
    for (vmemu::Fault fault : faults) {
        emulator.clearFaults();
        emulator.setFault(0, {fault});
        for (const Protocol &p : kProtocols) {
            gTr104CurrProtocolType = p.value;
            for (const Target &t : handlers) {
                if (!calledUnder(t, p.value)) {
                    continue;
                }
                sweepValid(t, t.name + " under " + p.name + " against " + vmemu::faultName(fault), &calls);
            }
        }
    }
    std::printf("[sweep] %zu handlers, %d calls against wrong replies\n", handlers.size(), calls);
}

// Every handler under its own protocol, against replies whose record is filled with one pattern:
// texts without a terminator anywhere and words at the edges of their range.  The pattern covers
// the whole reply, or leaves the first two words (the line or entry a reply names) as the voice
// module answered them, so that handlers that check them go on to convert the rest.
TEST_F(Sweep, HostileRepliesStayInTheirFields) {
    struct Pattern {
        const char *name;
        uint32_t word;
    };
    const Pattern patterns[] = {{"text 'A'", 0x41414141u},
                                {"word 0", 0u},
                                {"word 1", 1u},
                                {"word -1", 0xFFFFFFFFu},
                                {"INT_MIN", 0x80000000u},
                                {"INT_MAX", 0x7FFFFFFFu},
                                {"INT_MIN+1", 0x80000001u},
                                {"INT_MAX-1", 0x7FFFFFFEu},
                                {"bytes 0x80", 0x80808080u}};
    int calls = 0;
    for (const Pattern &pattern : patterns) {
        for (size_t keep : {size_t{0}, 2 * sizeof(uint32_t)}) {
            emulator.setReplyOverride([pattern, keep](const vmemu::Request &, Tr104WireMsg &out) {
                char *rsp = out.text + TR104_TEXT_RSP_OFFSET;
                for (size_t at = keep; at < TR104_RSP_BUFFER_LEN; at += sizeof(pattern.word)) {
                    std::memcpy(rsp + at, &pattern.word, sizeof(pattern.word));
                }
                return true;
            });
            for (const Protocol &p : kProtocols) {
                gTr104CurrProtocolType = p.value;
                for (const Target &t : handlers) {
                    // get_act_led returns the LED state itself, not a status.
                    if (p.value == 0 || !calledUnder(t, p.value) || t.shape == Shape::None) {
                        continue;
                    }
                    sweepValid(
                        t, t.name + " under " + p.name + " against " + pattern.name + (keep ? " after two words" : ""),
                        &calls);
                }
            }
        }
    }
    emulator.setReplyOverride(nullptr);
    std::printf("[sweep] %zu handlers, %d calls against hostile replies\n", handlers.size(), calls);
}

// A voice module that reads and never answers.  The handler's path after a give-up is the path
// after a failure marker (the exchange returns -1 in both, swept above for every handler), so
// the silent case checks the time bound on a sample: every 12th handler, which spreads over
// every area of the export list (it is sorted by name).  Each exchange gives up after about
// 0.2 s; a handler makes at most a few.
TEST_F(Sweep, SilentVoiceModuleCostsTheBoundedWait) {
    emulator.setFault(0, {vmemu::Fault::Silent});
    int calls = 0;
    for (const Protocol &p : kProtocols) {
        gTr104CurrProtocolType = p.value;
        for (size_t i = 0; i < handlers.size(); i += 12) {
            const Target &t = handlers[i];
            const size_t before = emulator.requestCount();
            const auto start = Clock::now();
            sweepValid(t, t.name + " under " + p.name + " against silence", &calls);
            const auto exchanges = emulator.requestCount() - before;
            EXPECT_LT(Clock::now() - start, 1s + exchanges * 400ms) << t.name << " under " << p.name;
        }
    }
    std::printf("[sweep] %d calls against a silent voice module\n", calls);
}

}  // namespace
