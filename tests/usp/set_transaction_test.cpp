// A Set message's grouped parameters through the agent's transaction, against the emulator.
#include <chrono>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "set_transaction.h"
#include "support/deferred_fixture.h"
#include "tr104/map.h"
#include "tr104/sip_identity.h"
#include "tr104/sip_servers.h"
#include "tr104/startup.h"

namespace {

using namespace std::chrono_literals;

const std::string kVoice = "Device.Services.VoiceService.1.";
const std::string kUser1 = kVoice + "SIP.Client.1.AuthUserName", kUser2 = kVoice + "SIP.Client.2.AuthUserName",
                  kPassword1 = kVoice + "SIP.Client.1.AuthPassword", kProxy = kVoice + "SIP.Network.1.ProxyServer",
                  kProxyPort = kVoice + "SIP.Network.1.ProxyServerPort",
                  kNumber = kVoice + "CallControl.Line.1.DirectoryNumber";

class SetMessage : public tr104test::DeferredBufferTest {
protected:
    // The sets of one message; the first refused one's result, else 0.
    int sets(const std::vector<std::pair<std::string, const char *>> &values) {
        for (const auto &[path, value] : values) {
            const int rc = message.set(path, value, error, sizeof(error));
            if (rc != 0) {
                return rc;
            }
        }
        return 0;
    }
    std::string get(const std::string &path) {
        char value[128] = "";
        return tr104MapGet(path.c_str(), value, sizeof(value), error, sizeof(error)) == 0 ? value : error;
    }
    // The writes of cmd once at least n arrived (writes go unanswered: waited for, 2 s at most).
    size_t arrived(uint32_t cmd, size_t n) {
        const auto end = std::chrono::steady_clock::now() + 2s;
        while (emulator.requestsFor(cmd).size() < n && std::chrono::steady_clock::now() < end) {
            std::this_thread::sleep_for(2ms);
        }
        return emulator.requestsFor(cmd).size();
    }
    // Waits for the writes still on their way, then a timer's delay more, and counts them.
    size_t written(uint32_t cmd) {
        std::this_thread::sleep_for(std::chrono::milliseconds(2 * kTimeoutMs));
        return emulator.requestsFor(cmd).size();
    }
    tr104usp::SetTransaction message;
    char error[256] = "";
};

// What a committed message writes, and when.
TEST_F(SetMessage, CommittedGroupsAreWrittenOnceAndReadBack) {
    struct Case {
        const char *what;
        std::vector<std::pair<std::string, const char *>> sets;
        uint32_t cmd;  // the group's write
        size_t writes;  // of it, once the message is committed
        size_t writesBeforeCommit;
        std::vector<std::pair<std::string, std::string>> readBack;
    };
    const Case cases[] = {
        {"a proxy port alone", {{kProxyPort, "5070"}}, SET_PROXY_CFG_ID, 1, 0, {{kProxyPort, "5070"}}},
        {"a proxy and its port: written by the last set",
         {{kProxy, "proxy.example.net"}, {kProxyPort, "5080"}},
         SET_PROXY_CFG_ID,
         1,
         1,
         {{kProxy, "proxy.example.net"}, {kProxyPort, "5080"}}},
        {"both lines' user names: line 1's group written before line 2's takes the slot",
         {{kUser1, "alice"}, {kUser2, "bob"}},
         SET_USER_AUTHOR_ID,
         2,
         1,
         {{kUser1, "alice"}, {kUser2, "bob"}}},
        {"a user name and a password",
         {{kUser1, "carol"}, {kPassword1, "s3cret"}},
         SET_USER_AUTHOR_ID,
         1,
         1,
         {{kUser1, "carol"}}},
        {"a value sent at once, no group", {{kNumber, "5551234"}}, SET_USER_AUTHOR_ID, 0, 0, {{kNumber, "5551234"}}},
    };
    for (const Case &c : cases) {
        emulator.clearLog();
        message.start();
        ASSERT_EQ(sets(c.sets), 0) << c.what << ": " << error;
        EXPECT_EQ(arrived(c.cmd, c.writesBeforeCommit), c.writesBeforeCommit) << c.what;
        ASSERT_EQ(message.commit(error, sizeof(error)), 0) << c.what << ": " << error;
        for (int slot = 0; slot < TR104_CFG_PARAM_SLOTS; ++slot) {
            EXPECT_EQ(getTr104CfgParamInfoCfgFlag(slot), 0) << c.what << ": slot " << slot << " still waits";
        }
        for (const auto &[path, value] : c.readBack) {
            EXPECT_EQ(get(path), value) << c.what;
        }
        EXPECT_EQ(written(c.cmd), c.writes) << c.what << ": the timers were cancelled";
    }
}

// A refused message drops what it staged; a group that cannot be written fails the commit.
TEST_F(SetMessage, AbortDropsAndAFailedWriteFailsTheCommit) {
    message.start();
    ASSERT_EQ(sets({{kProxyPort, "5070"}, {kUser1, "dave"}}), 0) << error;
    const std::vector<int> dropped = message.abort();
    EXPECT_EQ(dropped, (std::vector<int>{3, 5}));
    EXPECT_EQ(written(SET_PROXY_CFG_ID), 0u);
    EXPECT_EQ(written(SET_USER_AUTHOR_ID), 0u);
    EXPECT_NE(get(kProxyPort), "5070");

    message.start();
    EXPECT_EQ(sets({{kProxyPort, "70000"}}), -2) << "out of its range: the handler refuses it";
    EXPECT_EQ(getTr104CfgParamInfoCfgFlag(3), 0) << "nothing staged";

    emulator.setFault(GET_PROXY_CFG_ID, vmemu::FaultSpec{vmemu::Fault::FailureMarker});
    ASSERT_EQ(sets({{kProxyPort, "5070"}}), 0) << error;
    EXPECT_EQ(message.commit(error, sizeof(error)), -1);
    EXPECT_STREQ(error, "the values staged in slot 3 of the deferred buffer could not be sent");
    EXPECT_EQ(getTr104CfgParamInfoCfgFlag(3), 0);
    EXPECT_EQ(written(SET_PROXY_CFG_ID), 0u);

    // Outside a message (no transaction), a set's group is written at once.
    emulator.clearFaults();
    ASSERT_EQ(message.set(kProxyPort, "5090", error, sizeof(error)), 0) << error;
    EXPECT_EQ(get(kProxyPort), "5090");
}

}  // namespace
