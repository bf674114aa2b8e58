// A channel with the emulated voice module, and small helpers for calling SIP handlers.
#pragma once

#include <array>
#include <chrono>
#include <cstring>
#include <initializer_list>
#include <utility>
#include <string>
#include <vector>

#include "support/channel_fixture.h"
#include "tr104/sip.h"

namespace siptest {

using Handler = int (*)(int, void *, int *);

class SipTest : public tr104test::ChannelTest {
protected:
    // The locator of a line (profile 1).
    int *line(int n) {
        locate_ = {0, 1, n, 0};
        return locate_.data();
    }

    int getInt(Handler h, int lineNo, int *value) { return h(0, value, line(lineNo)); }
    int setInt(Handler h, int lineNo, int value) { return h(1, &value, line(lineNo)); }
    int setText(Handler h, int lineNo, const char *text) {
        std::vector<char> buf(text, text + std::strlen(text) + 1);
        return h(1, buf.data(), line(lineNo));
    }
    // A get into a zeroed buffer; the text, or "<rc>" on failure.
    std::string getText(Handler h, int lineNo) {
        std::vector<char> buf(4096, 0);
        const int rc = h(0, buf.data(), line(lineNo));
        return rc == 0 ? std::string(buf.data()) : "<" + std::to_string(rc) + ">";
    }

    // Starts a fresh request log once everything sent so far has been served (a blocking read
    // goes after every set still on its way).
    void restartLog() {
        char status[TR104_PORT_STATUS_LEN];
        EXPECT_EQ(getLineStatus(1, status), 0);
        emulator.clearLog();
    }

    // Waits until the voice module has seen n requests in all, and returns them.
    std::vector<vmemu::Request> seen(size_t n) {
        EXPECT_TRUE(emulator.waitForRequests(n, std::chrono::seconds(10))) << "expected " << n << " requests";
        return emulator.requests();
    }

    // Stores a port status block for a line.
    void putPortStatus(const Tr104SipLineRecord &status) { emulator.put("port status", &status, sizeof(status)); }

    std::array<int, 4> locate_{};
};

// True when every payload byte outside the given (offset, width) fields is zero.
inline bool zeroExcept(const vmemu::Request &r, std::initializer_list<std::pair<size_t, size_t>> fields) {
    for (size_t i = 0; i < r.payload.size(); ++i) {
        bool inside = false;
        for (const auto &f : fields) {
            inside = inside || (i >= f.first && i < f.first + f.second);
        }
        if (!inside && r.payload[i] != 0) {
            return false;
        }
    }
    return true;
}

// Runs f with debugging on and returns what it printed.
template <typename F>
std::string debugOutput(F &&f) {
    gTr104CfgDebug = 1;
    std::fflush(stdout);
    testing::internal::CaptureStdout();
    f();
    std::fflush(stdout);
    gTr104CfgDebug = 0;
    return testing::internal::GetCapturedStdout();
}

// The message a handler prints: its name as the function, then the text.
inline bool printed(const std::string &out, const char *handler, const std::string &text) {
    return out.find(std::string("[") + handler + ",") != std::string::npos && out.find(text) != std::string::npos;
}

}  // namespace siptest
