// The emulator as a development server: the configuration survives a restart through the state
// file, and the console answers on the control socket as on standard input.
#include <dirent.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <fstream>
#include <thread>
#include <string>
#include <vector>

#include "emulator/control.h"
#include "emulator/device_emulator.h"
#include "emulator/h248_emulator.h"
#include "emulator/netcfg_emulator.h"
#include "emulator/protocol_family.h"
#include "emulator/service.h"
#include "emulator/state_file.h"
#include "emulator/write_all.h"
#include "support/channel_fixture.h"
#include "tr104/sip_identity.h"

namespace {

using Records = std::vector<vmemu::VoiceModuleEmulator::StoredRecord>;

std::string tempPath(const char *name) { return testing::TempDir() + "tr104-devserver-" + name; }

// A folder of the test's own, on tmpfs where there is one: the directory offsets of a large host
// file system do not fit the device build's 32-bit readdir under qemu-user, which then lists
// nothing.
std::string ownFolder() {
    const std::string base = access("/dev/shm", W_OK) == 0 ? "/dev/shm/" : testing::TempDir();
    std::string folder = base + "tr104-devserver-XXXXXX";
    return mkdtemp(folder.data()) != nullptr ? folder + "/" : std::string();
}

// The names in a folder; fails the test when the folder cannot be listed.
std::vector<std::string> namesIn(const std::string &folder) {
    std::vector<std::string> names;
    DIR *dir = opendir(folder.c_str());
    EXPECT_NE(dir, nullptr) << folder;
    if (dir == nullptr) {
        return names;
    }
    errno = 0;
    while (const dirent *e = readdir(dir)) {
        if (std::string(e->d_name) != "." && std::string(e->d_name) != "..") {
            names.emplace_back(e->d_name);
        }
    }
    EXPECT_EQ(errno, 0) << "listing " << folder;
    closedir(dir);
    return names;
}

TEST(StateFile, EveryRecordComesBackAsSaved) {
    const std::string folder = ownFolder();
    ASSERT_FALSE(folder.empty());
    const std::string path = folder + "state.json";
    vmemu::VoiceModuleEmulator before;
    // Changed records of registered families and one a command handler keeps under its own key.
    Records changed = before.storedRecords();
    ASSERT_FALSE(changed.empty());
    for (auto &r : changed) {
        r.data[r.data.size() / 2] ^= 0x5A;
        r.data.back() = 1;  // the last byte, beyond any trailing zeros the file leaves out
        before.restoreRecord(r);
    }
    before.restoreRecord({"held-only", std::string("\x02\0\0\0", 4), {'a', 0, 'b'}});
    vmemu::setProtocolName(before, "H.248");
    // The areas' own configuration: the voice address, the LED, the call agent's state.
    vmemu::setVoiceAddress(before, 0x0A000002, 0xFFFFFF00, 0x0A000001);
    vmemu::setLed(before, 2);
    vmemu::h248::setMgcState(before, 1, 2, "10.9.8.7");
    // A file everybody could read is replaced by one only its owner can: it holds passwords.
    std::ofstream(path) << "{}";
    ASSERT_EQ(chmod(path.c_str(), 0644), 0);
    std::string error;
    ASSERT_TRUE(vmemu::saveState(before, path, &error)) << error;
    struct stat st {};
    ASSERT_EQ(stat(path.c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 07777, 0600u);
    EXPECT_EQ(namesIn(folder), std::vector<std::string>{"state.json"}) << "no temporary file is left beside it";

    vmemu::VoiceModuleEmulator after;
    ASSERT_TRUE(vmemu::loadState(after, path, &error)) << error;
    EXPECT_EQ(after.storedRecords(), before.storedRecords());
    EXPECT_EQ(vmemu::protocolName(after), "H.248");
    EXPECT_EQ(vmemu::netState(after).ip.unVoiceAddr, 0x0A000002u);
    EXPECT_EQ(vmemu::netState(after).ip.unVoiceGateway, 0x0A000001u);
    EXPECT_EQ(vmemu::deviceState(after).led, 2);
    for (uint32_t cmd : {GET_MGC_CFG_ID, GET_REGMG_PARAM}) {
        EXPECT_EQ(vmemu::h248::block(after, cmd), vmemu::h248::block(before, cmd)) << cmd;
    }
    std::remove(path.c_str());
    rmdir(folder.c_str());
}

TEST(StateFile, RefusesWhatItCannotRead) {
    const std::string path = tempPath("bad.json");
    struct Row {
        const char *text;
        bool loads;
    };
    const Row rows[] = {
        {"not json", false},
        {"{\"something\": 1}", false},
        {"{\"families\": {\"x\": [{\"key\": \"0\", \"length\": 4, \"data\": \"\"}]}}", false},  // odd hex
        {"{\"families\": {\"x\": [{\"key\": \"\", \"length\": 1, \"data\": \"0102\"}]}}", false},  // longer than length
        {"{\"families\": {\"x\": [{\"key\": \"\", \"length\": \"4\", \"data\": \"\"}]}}", false},  // length as text
        {"{\"families\": {}, \"areas\": {\"net\": {\"ip\": \"00\"}}}", false},  // a record of 1 byte
        {"{\"families\": {}, \"areas\": {\"device\": {\"led\": \"on\"}}}", false},  // a word as text
        {"[1, 2]", false},
        {"", false},
        {"{\"families\": {}, \"areas\": {}}", true},
        {"{\"families\": {}}", true},
    };
    for (const Row &row : rows) {
        std::ofstream(path) << row.text;
        vmemu::VoiceModuleEmulator emulator;
        const Records defaults = emulator.storedRecords();
        std::string error;
        EXPECT_EQ(vmemu::loadState(emulator, path, &error), row.loads) << row.text;
        EXPECT_EQ(error.empty(), row.loads) << row.text;
        EXPECT_EQ(error.find('\n'), std::string::npos) << error;
    }
    // Not a file at all.
    std::string error;
    vmemu::VoiceModuleEmulator emulator;
    EXPECT_FALSE(vmemu::loadState(emulator, testing::TempDir(), &error));
    EXPECT_NE(error.find("not a regular file"), std::string::npos) << error;
    std::remove(path.c_str());
    vmemu::VoiceModuleEmulator fresh;
    error.clear();
    EXPECT_TRUE(vmemu::loadState(fresh, path, &error)) << "a missing file is a first start";
}

class ControlSocket : public tr104test::ChannelTest {
protected:
    void SetUp() override {
        ChannelTest::SetUp();
        std::string error;
        ASSERT_TRUE(server.start(emulator, path, &error)) << error;
        sockaddr_un addr{};
        addr.sun_family = AF_UNIX;
        std::snprintf(addr.sun_path, sizeof(addr.sun_path), "%s", path.c_str());
        fd = socket(AF_UNIX, SOCK_STREAM, 0);
        ASSERT_EQ(connect(fd, reinterpret_cast<sockaddr *>(&addr), sizeof(addr)), 0);
    }
    void TearDown() override {
        close(fd);
        server.stop();
        ChannelTest::TearDown();
    }
    // Sends one line and reads until the answer holds `want` and ends a line (5 s at most).
    std::string ask(const std::string &line, const std::string &want) {
        const std::string out = line + "\n";
        EXPECT_EQ(write(fd, out.data(), out.size()), static_cast<ssize_t>(out.size()));
        std::string answer;
        pollfd p{fd, POLLIN, 0};
        while ((answer.find(want) == std::string::npos || answer.back() != '\n') && poll(&p, 1, 5000) == 1) {
            char buf[512];
            const ssize_t got = read(fd, buf, sizeof(buf));
            if (got <= 0) {
                break;
            }
            answer.append(buf, static_cast<size_t>(got));
        }
        return answer;
    }

    const std::string path = tempPath("control.sock");
    vmemu::ControlServer server;
    int fd = -1;
};

TEST_F(ControlSocket, AnswersTheConsoleCommandsOnOneConnection) {
    Tr104Msg msg = request(4321);
    ASSERT_EQ(msgSndAndRcvSem(&msg, 0), TR104_MSG_TEXT_LEN);
    struct Row {
        const char *line;
        const char *answer;
    };
    const Row rows[] = {
        {"fault 4321 silent 0 1", "fault 4321 silent\n"},
        {"clear", "faults cleared\n"},
        {"inbound 7 1 77 5 6", "inbound module=7 cmd=77 sent\n"},
        {"log 1", "1 requests served\n"},
        {"help", "log [N]"},
        {"help", "linetest "},  // the areas' commands too
        {"bogus", "unknown command: bogus (help lists the commands)\n"},
    };
    for (const Row &row : rows) {
        const std::string answer = ask(row.line, row.answer);
        EXPECT_NE(answer.find(row.answer), std::string::npos) << row.line << " -> " << answer;
    }
    // The log names the request; the inbound message is on module 7's inbound queue.
    EXPECT_NE(ask("log 1", "served").find(emulator.describe(emulator.requests().back())), std::string::npos);
    Tr104WireMsg in{};
    ASSERT_GT(msgrcv(gTr104RcvInMsgQueueId, &in, TR104_MSG_TEXT_LEN, 0, IPC_NOWAIT), 0);
    uint32_t cmd = 0, words[2] = {};
    std::memcpy(&cmd, in.text + TR104_TEXT_CMD_OFFSET, sizeof(cmd));
    std::memcpy(words, in.text + TR104_TEXT_RSP_OFFSET, sizeof(words));
    EXPECT_EQ(cmd, 77u);
    EXPECT_EQ(words[0], 5u);
    EXPECT_EQ(words[1], 6u);

    server.stop();
    EXPECT_NE(access(path.c_str(), F_OK), 0) << "the socket file is removed on stop";
}

// A line's password is kept and answered, and shown nowhere: not in the request log, not in the
// console's answers.
TEST_F(ControlSocket, PasswordsAreAnsweredButNeverShown) {
    Tr104SipLineIdentityRecord record{};
    record.unLine = 2;
    std::strcpy(record.aAuthUserName, "alice");
    std::strcpy(record.aAuthPassword, "s3cret");
    Tr104Msg set = request(SET_USER_AUTHOR_ID);
    std::memcpy(set.cfgBuffer, &record, sizeof(record));
    ASSERT_EQ(msgSndAndRcvSem(&set, 1), 0);  // send only
    Tr104Msg get = request(GET_USER_AUTHOR_ID);
    std::memcpy(get.cfgBuffer, &record, sizeof(record));  // a get that carries the password too
    ASSERT_EQ(msgSndAndRcvSem(&get, 0), TR104_MSG_TEXT_LEN);
    Tr104SipLineIdentityRecord answered{};
    std::memcpy(&answered, get.rspBuffer, sizeof(answered));
    EXPECT_STREQ(answered.aAuthPassword, "s3cret");

    const std::vector<vmemu::Request> logged = emulator.requests();
    ASSERT_EQ(logged.size(), 2u);
    for (const vmemu::Request &r : logged) {
        EXPECT_EQ(r.text_at(offsetof(Tr104SipLineIdentityRecord, aAuthPassword), 66), "********") << r.cmd;
        EXPECT_EQ(r.text_at(offsetof(Tr104SipLineIdentityRecord, aAuthUserName), 66), "alice") << r.cmd;
        const std::string text(r.text.begin(), r.text.end());
        EXPECT_EQ(text.find("s3cret"), std::string::npos) << r.cmd;
    }
    const std::string hexPassword = "73 33 63 72 65 74";
    // Each answer read to its last line, so that no answer runs on into the next.
    struct Ask {
        const char *line;
        const char *last;
    };
    for (const Ask &a : {Ask{"requests 16585 452", "request cmd=16585 payload"},
                         Ask{"requests 16586 452", "request cmd=16586 payload"}, Ask{"log 5", "requests served"}}) {
        const std::string answer = ask(a.line, a.last);
        EXPECT_NE(answer.find(a.last), std::string::npos) << a.line << " -> " << answer;
        EXPECT_EQ(answer.find(hexPassword), std::string::npos) << a.line << " -> " << answer;
        EXPECT_EQ(answer.find("s3cret"), std::string::npos) << a.line << " -> " << answer;
    }
    EXPECT_NE(ask("requests 16585 452", "request cmd=16585 payload").find("61 6c 69 63 65"), std::string::npos)
        << "the user name is shown";
}

// The command line of the programs that play the voice module: the shared options, a program's
// own option with its value, and where it stops.
TEST(CommandLine, SharedAndOwnOptions) {
    struct Case {
        std::vector<std::string> args;
        int status;  // vmemu::kTaken: it goes on
        vmemu::ServiceOptions expected;
        std::string own;  // the own option's value
    };
    const Case cases[] = {
        {{}, vmemu::kTaken, {}, ""},
        {{"--state", "s.json", "--control", "c", "--ready-file", "r", "--quiet"},
         vmemu::kTaken,
         {"s.json", "c", "r", true},
         ""},
        // The own option's value is its own, even when it looks like a shared option.
        {{"--own", "--quiet", "--state", "s"}, vmemu::kTaken, {"s", "", "", false}, "--quiet"},
        {{"--own", "bad"}, 3, {}, ""},
        {{"--quiet", "--version", "--bogus"}, 0, {"", "", "", true}, ""},
        {{"--help"}, 0, {}, ""},
        {{"--state"}, 2, {}, ""},  // a value missing
        {{"--quiet", "--bogus", "--state", "s"}, 2, {"", "", "", true}, ""},
    };
    for (const Case &c : cases) {
        std::string own;
        const vmemu::Program program{"prog", "[prog]", "prog: ", [](FILE *) {},
                                     [&own](int argc, char **argv, int *i) {
                                         if (std::string(argv[*i]) != "--own" || *i + 1 >= argc) {
                                             return vmemu::kNotOwn;
                                         }
                                         own = argv[++*i];
                                         return own == "bad" ? 3 : vmemu::kTaken;
                                     }};
        std::vector<std::string> words = {"prog"};
        words.insert(words.end(), c.args.begin(), c.args.end());
        std::vector<char *> argv;
        for (std::string &w : words) {
            argv.push_back(w.data());
        }
        vmemu::ServiceOptions got;
        std::string line;
        for (const std::string &a : c.args) {
            line += a + " ";
        }
        testing::internal::CaptureStdout();
        EXPECT_EQ(vmemu::parseCommandLine(program, static_cast<int>(argv.size()), argv.data(), &got), c.status) << line;
        testing::internal::GetCapturedStdout();
        EXPECT_EQ(got.stateFile, c.expected.stateFile) << line;
        EXPECT_EQ(got.controlPath, c.expected.controlPath) << line;
        EXPECT_EQ(got.readyFile, c.expected.readyFile) << line;
        EXPECT_EQ(got.quiet, c.expected.quiet) << line;
        if (c.status == vmemu::kTaken) {
            EXPECT_EQ(own, c.own) << line;
        }
    }
}

// A buffer larger than a pipe or socket takes at once arrives whole and in order; a reader that
// went away is an error, not a SIGPIPE that ends the process.
TEST(WriteAll, WholeBufferThenAClosedReader) {
    std::string data(1 << 20, '\0');
    for (size_t i = 0; i < data.size(); ++i) {
        data[i] = static_cast<char>(i * 7 + i / 251);
    }
    for (const vmemu::Descriptor kind : {vmemu::Descriptor::File, vmemu::Descriptor::Socket}) {
        int fds[2];
        ASSERT_EQ(kind == vmemu::Descriptor::Socket ? socketpair(AF_UNIX, SOCK_STREAM, 0, fds) : pipe(fds), 0);
        std::string got;
        std::thread reader([&got, fd = fds[0]] {
            char buf[4096];
            for (ssize_t n; (n = read(fd, buf, sizeof(buf))) > 0;) {
                got.append(buf, static_cast<size_t>(n));
            }
        });
        EXPECT_TRUE(vmemu::writeAll(fds[1], data, kind));
        close(fds[1]);
        reader.join();
        EXPECT_TRUE(got == data) << "received " << got.size() << " of " << data.size() << " bytes";
        close(fds[0]);
    }
    int pair[2];
    ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, pair), 0);
    close(pair[0]);
    EXPECT_FALSE(vmemu::writeAll(pair[1], "answer\n", vmemu::Descriptor::Socket));
    EXPECT_EQ(errno, EPIPE);
    close(pair[1]);
}

}  // namespace
