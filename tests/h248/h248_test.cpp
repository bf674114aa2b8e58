// H.248 handlers against the emulated voice module: exact request bytes of a set and the value
// a get then reads, for every block; the refused values; the conversions; the protocol dispatch.
#include <array>
#include <chrono>
#include <cstring>
#include <string>
#include <vector>

#include "emulator/h248_emulator.h"
#include "sip/sip_fixture.h"
#include "support/channel_fixture.h"
#include "tr104/h248.h"

namespace {

using Handler = int (*)(int, void *, int *);
template <int (*F)(int, void *)>
int two(int nFlag, void *pValue, int *) {
    return F(nFlag, pValue);
}

class H248 : public tr104test::ChannelTest {
protected:
    void SetUp() override {
        ChannelTest::SetUp();
        gTr104CurrProtocolType = TR104_PROTOCOL_H248;
    }
    void TearDown() override {
        gTr104CurrProtocolType = 0;
        ChannelTest::TearDown();
    }
    int *line(int n) {
        locate_ = {0, n, n, 0};
        return locate_.data();
    }
    // The requests seen since the log was last cleared, once n have arrived.
    std::vector<vmemu::Request> seen(size_t n) {
        EXPECT_TRUE(emulator.waitForRequests(n, std::chrono::seconds(10))) << "expected " << n << " requests";
        return emulator.requests();
    }
    // A get after the sets: the voice module serves in order, so once it is answered every
    // request sent before it is in the log.
    void settle() {
        int v = 0;
        ASSERT_EQ(Tr104MgRegisterCycleH248(0, &v), 0);
    }
    std::array<int, 4> locate_{};
};

using siptest::debugOutput;
using siptest::zeroExcept;

// ---- Round trips of integer fields ---------------------------------------------------------------

struct IntRow {
    const char *name;
    Handler fn;
    int value;
    uint32_t cmd;
    uint16_t mask;
    size_t offset;
    size_t width;
    uint32_t raw;  // what the block carries
};

const IntRow kIntRows[] = {
    {"primary MGC port 0", two<Tr104PrimaryMGCPortH248>, 0, SET_MGC_CFG_ID, 0x2, 270, 2, 0},
    {"primary MGC port", two<Tr104PrimaryMGCPortH248>, 2944, SET_MGC_CFG_ID, 0x2, 270, 2, 2944},
    {"local port", two<Tr104MgLocalPortH248>, 2945, SET_LOCAL_PORT, 0, 4, 4, 2945},
    {"registration mode", two<Tr104MgRegModeH248>, 2, SET_MID, 0x2, 4, 4, 2},
    {"physical start", two<Tr104PhysicalTermIDStartVlaueH248>, 65535, SET_PHY_NAME, 0x2, 20, 4, 65535},
    {"physical added length", two<Tr104PhysicalTermIDAddLenH248>, 5, SET_PHY_NAME, 0x4, 24, 4, 5},
    {"physical uniform", two<Tr104PhysicalTermIDUniformH248>, 1, SET_PHY_NAME, 0x8, 28, 4, 0},
    {"physical not uniform", two<Tr104PhysicalTermIDUniformH248>, 0, SET_PHY_NAME, 0x8, 28, 4, 1},
    {"ephemeral added length", two<Tr104EphemeralTermIDAddLenH248>, 1, SET_EPH_NAME, 0x2, 32, 4, 1},
    {"ephemeral uniform", two<Tr104EphemeralTermIDUniformH248>, 0, SET_EPH_NAME, 0x4, 36, 4, 1},
    {"ephemeral start", two<Tr104EphemeralTermIDStartVlaueH248>, 10, SET_EPH_NAME, 0x8, 20, 4, 10},
    {"heartbeat mode", two<Tr104HeartbeatModeH248>, 2, SET_ALIVE_PARAM, 0x10, 4, 4, 2},
    {"heartbeat cycle", two<Tr104HeartbeatCycleH248>, 60, SET_ALIVE_PARAM, 0x1, 8, 4, 60},
    {"heartbeat count", two<Tr104HeartbeatCountH248>, 65535, SET_ALIVE_PARAM, 0x2, 12, 4, 65535},
    {"heartbeat format", two<Tr104HeartbeatFormatH248>, 1, SET_ALIVE_PARAM, 0x8, 20, 4, 1},
    {"three-way handshake", two<Tr104ThreeHandShakeEnableH248>, 1, SET_TRANS_TIME, 0x10, 24, 4, 1},
    {"initial retransmission s", two<Tr104RetranTimerInitialH248>, 20, SET_TRANS_TIME, 0x1, 4, 4, 20000},
    {"retransmission cycle s", two<Tr104RetransmissionCycleH248>, 1, SET_TRANS_TIME, 0x2, 12, 4, 1000},
    {"retransmission time 60 s", two<Tr104RetransmissionTimeH248>, 60, SET_TRANS_TIME, 0x4, 16, 4, 60000},
    {"max retransmissions", two<Tr104MaxRetranCountH248>, 7, SET_TRANS_TIME, 0x8, 20, 4, 7},
    {"register cycle", two<Tr104MgRegisterCycleH248>, 300, SET_REGMG_PARAM, 0, 8, 4, 300},
    {"authentication", two<Tr104AuthenticationMethH248>, 1, SET_MD5_PARAM, 0, 4, 4, 1},
    {"dial tone s", two<Tr104DialToneTimerH248>, 1, SET_TONE_TIMEOUT_ID, 0x1, 4, 4, 1000},
    {"no answer 254 s", two<Tr104NoAnswerTimerH248>, 254, SET_TONE_TIMEOUT_ID, 0x2, 8, 4, 254000},
    {"busy tone s", two<Tr104BusyToneTimerH248>, 40, SET_TONE_TIMEOUT_ID, 0x10, 20, 4, 40000},
    {"hanging reminder s", two<Tr104HangingReminderToneTimerH248>, 60, SET_TONE_TIMEOUT_ID, 0x20, 24, 4, 60000},
    {"start digit unscaled", two<Tr104StartDigitTimerH248>, 254, SET_H248_DIG_TIMEOUT_ID, 0x40, 28, 4, 254},
    {"short digit 65535", two<Tr104ShortDigitTimerH248>, 65535, SET_H248_DIG_TIMEOUT_ID, 0x80, 32, 4, 65535},
    {"long digit", two<Tr104LongDigitTimerH248>, 20000, SET_H248_DIG_TIMEOUT_ID, 0x100, 36, 4, 20000},
    {"fax control", two<Tr104FaxCtrlModeH248>, 2, SET_H248_FAX_MODE_ID, 0x400, 44, 4, 2},
    {"T.38 event detect 3", two<Tr104FaxT38EventDetectModeH248>, 3, SET_H248_FAX_MODE_ID, 0x4, 12, 4, 2},
    {"VBD enable", two<Tr104VbdEnableH248>, 1, SET_H248_FAX_MODE_ID, 0x8, 16, 4, 1},
    {"VBD transmit", two<Tr104VbdTxIntervalH248>, 20, SET_H248_FAX_MODE_ID, 0x10, 24, 4, 20},
    {"VBD receive", two<Tr104VbdRxIntervalH248>, 30, SET_H248_FAX_MODE_ID, 0x20, 20, 4, 30},
    {"VBD codec 18", two<Tr104VbdCodecH248>, 18, SET_H248_FAX_MODE_ID, 0x40, 28, 4, 18},
};

TEST_F(H248, IntegerFieldsTravelWithTheirMaskAndReadBack) {
    for (const IntRow &row : kIntRows) {
        SCOPED_TRACE(row.name);
        emulator.clearLog();
        int value = row.value;
        ASSERT_EQ(row.fn(1, &value, nullptr), 0);
        int got = -5;
        ASSERT_EQ(row.fn(0, &got, nullptr), 0);
        EXPECT_EQ(got, row.value);
        const auto sent = seen(2);
        ASSERT_EQ(sent.size(), 2u);
        const vmemu::Request &set = sent[0];
        EXPECT_EQ(set.cmd, row.cmd);
        EXPECT_EQ(set.word<uint16_t>(0), row.mask);
        const uint32_t raw = row.width == 2 ? set.word<uint16_t>(row.offset) : set.word<uint32_t>(row.offset);
        EXPECT_EQ(raw, row.raw);
        EXPECT_TRUE(zeroExcept(set, {{0, 2}, {row.offset, row.width}}));
    }
}

// ---- Round trips of texts and per-line values ------------------------------------------------------

struct TextRow {
    const char *name;
    Handler fn;
    int line;
    std::string value;
    uint32_t cmd;
    uint16_t mask;
    size_t offset;
    std::vector<std::pair<size_t, uint32_t>> words;  // other words the request carries
};

const std::string k68(68, 'm');

const std::vector<TextRow> &textRows() {
    static const std::vector<TextRow> rows = {
        {"primary MGC 68", two<Tr104PrimaryMGCH248>, 0, k68, SET_MGC_CFG_ID, 0x1, 2, {}},
        {"secondary MGC", two<Tr104SecondaryMGCH248>, 0, "mgc2.example.net", SET_MGC_CFG_ID, 0x1, 71, {{280, 1}}},
        {"MID", two<Tr104MgIdH248>, 0, "[10.0.0.2]:2944", SET_MID, 0x1, 10, {}},
        {"physical prefix", two<Tr104PhysicalTermIDPrefixH248>, 0, "AALN/", SET_PHY_NAME, 0x1, 2, {}},
        {"ephemeral prefix", two<Tr104EphemeralTermIDPrefixH248>, 0, "RTP/", SET_EPH_NAME, 0x1, 4, {}},
        {"termination id line 2",
         Tr104PhysicalTermIdH248,
         2,
         std::string(32, 't'),
         SET_SINGLE_USERNAME,
         0,
         37,
         {{0, 2}}},
        {"caller id DTMF", two<Tr104CallerIdModeH248>, 0, "DTMF", SET_CALLID_PARAM, 0x2, 0, {{8, 8}}},
        {"match mode Min", two<Tr104ProfileDigitMapMatchModeH248>, 0, "Min", SET_H248_MATCH_MODE_ID, 0, 0, {{12, 1}}},
        {"line 2 disabled", Tr104LineEnableH248, 2, "Disabled", SET_H248_LINE_ENABLE_ID, 0, 0, {{0, 2}, {120, 0}}},
    };
    return rows;
}

TEST_F(H248, TextsAndLineValuesTravelInTheirEntryAndReadBack) {
    for (const TextRow &row : textRows()) {
        SCOPED_TRACE(row.name);
        emulator.clearLog();
        std::vector<char> buf(row.value.begin(), row.value.end());
        buf.push_back('\0');
        ASSERT_EQ(row.fn(1, buf.data(), line(row.line)), 0);
        std::vector<char> got(256, 0);
        ASSERT_EQ(row.fn(0, got.data(), line(row.line)), 0);
        EXPECT_EQ(std::string(got.data()), row.value);
        const auto sent = seen(2);
        const vmemu::Request &set = sent[0];
        EXPECT_EQ(set.cmd, row.cmd);
        if (row.line == 0) {
            EXPECT_EQ(set.word<uint16_t>(0), row.mask);
        }
        std::vector<std::pair<size_t, size_t>> fields{{0, 4}};
        if (row.offset != 0) {
            EXPECT_EQ(set.text_at(row.offset, 100), row.value);
            fields.emplace_back(row.offset, row.value.size());
        }
        for (const auto &[offset, word] : row.words) {
            EXPECT_EQ(set.word<uint32_t>(offset), word) << offset;
            fields.emplace_back(offset, 4);
        }
        for (size_t i = 0; i < set.payload.size(); ++i) {
            bool inside = false;
            for (const auto &f : fields) {
                inside = inside || (i >= f.first && i < f.first + f.second);
            }
            ASSERT_TRUE(inside || set.payload[i] == 0) << "byte " << i;
        }
    }
}

// ---- Refused values: -2, nothing sent, the lock free ---------------------------------------------

struct Refusal {
    const char *name;
    Handler fn;
    int nFlag;
    int value;
    const char *text;  // a text value instead of `value`
    int line;
    const char *message;
};

const std::string k69(69, 'm');
const std::string k16(16, 'p');

const std::vector<Refusal> &refusals() {
    static const std::vector<Refusal> rows = {
        {"MGC address 69", two<Tr104PrimaryMGCH248>, 1, 0, k69.c_str(), 0, "param error, pPrimaryMgc is too long\n"},
        {"secondary MGC 69", two<Tr104SecondaryMGCH248>, 1, 0, k69.c_str(), 0, "pSecondaryMgc is too long\n"},
        {"port 65536", two<Tr104PrimaryMGCPortH248>, 1, 65536, nullptr, 0, "param error, pPort[65536]\n"},
        {"port -1", two<Tr104SecondaryMGCPortH248>, 1, -1, nullptr, 0, "param error, pPort[-1]\n"},
        {"local port 65536", two<Tr104MgLocalPortH248>, 1, 65536, nullptr, 0, "param error, pLocalPort[65536]\n"},
        {"retransmission 0", two<Tr104RetransmissionTimeH248>, 1, 0, nullptr, 0, "pRetransmissionTime[0]\n"},
        {"retransmission 61", two<Tr104RetransmissionTimeH248>, 1, 61, nullptr, 0, "pRetransmissionTime[61]\n"},
        {"initial 21", two<Tr104RetranTimerInitialH248>, 1, 21, nullptr, 0, "param error, pRetranTime[21]\n"},
        {"added length 0", two<Tr104PhysicalTermIDAddLenH248>, 1, 0, nullptr, 0, "param error, pAddLen[0]\n"},
        {"added length 6", two<Tr104PhysicalTermIDAddLenH248>, 1, 6, nullptr, 0, "param error, pAddLen[6]\n"},
        {"uniform 2", two<Tr104EphemeralTermIDUniformH248>, 1, 2, nullptr, 0, "param error, pUniform[2]\n"},
        {"prefix 16", two<Tr104PhysicalTermIDPrefixH248>, 1, 0, k16.c_str(), 0, "param error, pPrefix is too long\n"},
        {"abnf lower case", two<Tr104MessageEncodingTypeH248>, 1, 0, "abnf", 0, "param error, pEncodingType[abnf]\n"},
        {"register mode 3", two<Tr104MgRegModeH248>, 1, 3, nullptr, 0, "param error, pMgRegMode[3]\n"},
        {"register flag 2", two<Tr104MgRegisterH248>, 1, 2, nullptr, 0, "param error, pRegisterFlag[2]\n"},
        {"register cycle 301", two<Tr104MgRegisterCycleH248>, 1, 301, nullptr, 0, "pRegisterCycle[301]\n"},
        {"heartbeat cycle 0", two<Tr104HeartbeatCycleH248>, 1, 0, nullptr, 0, "pHeartbeatCycle[0]\n"},
        {"no answer 255", two<Tr104NoAnswerTimerH248>, 1, 255, nullptr, 0, "set param error \n"},
        {"dial tone 0", two<Tr104DialToneTimerH248>, 1, 0, nullptr, 0, "set param error, pDialTime[0].\n"},
        {"short digit 0", two<Tr104ShortDigitTimerH248>, 1, 0, nullptr, 0, "set param error \n"},
        {"VBD codec 3", two<Tr104VbdCodecH248>, 1, 3, nullptr, 0, "pVbdCodec error [3] \n"},
        {"event detect 4", two<Tr104FaxT38EventDetectModeH248>, 1, 4, nullptr, 0, "*pDetectMode=4(1~3)error \n"},
        {"VBD interval 9", two<Tr104VbdTxIntervalH248>, 1, 9, nullptr, 0, "*pVbdTxInterval [9]  error \n"},
        {"RTP min 65536", two<Tr104RtpMinLocalPortH248>, 1, 65536, nullptr, 0, "pMinLocalPort [65536] is error\n"},
        {"line enable word", Tr104LineEnableH248, 1, 0, "enabled", 1, "line enable param error.\n"},
        {"caller id mode", two<Tr104CallerIdModeH248>, 1, 0, "fsk", 0, "param error, pCallerIdMode[fsk]\n"},
        {"reset with 0", Tr104LineResetStatisticsFlagH248, 1, 0, nullptr, 1, "must be TRUE.\n"},
        {"line 3", Tr104LineEnableH248, 0, 0, nullptr, 3, "param error, nLocate[2]=3\n"},
        {"line 0", Tr104LineIncomingCallsReceivedH248, 0, 0, nullptr, 0, "param error, nLocate[2]=0\n"},
        {"port 3", Tr104PortStatusH248, 0, 0, nullptr, 3, "param error, nLocate[1]=3\n"},
        {"instance 3", Tr104EphemeralTermIDNameH248, 0, 0, nullptr, 3, "param error, nLocate[2]=3\n"},
        {"nFlag 2", two<Tr104HeartbeatModeH248>, 2, 0, nullptr, 0, "param error, nFlag[2]\n"},
        {"counter set", two<Tr104RcvdReqsH248>, 1, 0, nullptr, 0, "param error, nFlag[1]\n"},
        {"version set", two<Tr104ProtocolVersionH248>, 1, 2, nullptr, 0, "param error, nFlag[1]\n"},
        {"status set", two<Tr104MgcStatusH248>, 1, 2, nullptr, 0, "param error, nFlag[1]\n"},
    };
    return rows;
}

TEST_F(H248, BadInputIsRefusedWithItsMessageAndNothingSent) {
    for (const Refusal &row : refusals()) {
        SCOPED_TRACE(row.name);
        int value = row.value;
        std::vector<char> text;
        if (row.text != nullptr) {
            text.assign(row.text, row.text + std::strlen(row.text) + 1);
        }
        void *p = row.text != nullptr ? static_cast<void *>(text.data()) : &value;
        int rc = 0;
        const std::string out = debugOutput([&] { rc = row.fn(row.nFlag, p, line(row.line)); });
        EXPECT_EQ(rc, -2);
        EXPECT_NE(out.find(row.message), std::string::npos) << out;
        EXPECT_EQ(row.fn(row.nFlag, nullptr, line(1)), -2);
    }
    EXPECT_EQ(emulator.requestCount(), 0u);
    EXPECT_EQ(tr104test::semValue(), 1);
    uint32_t n = 0;
    EXPECT_EQ(Tr104PhyNameRuleH248(1, nullptr, &n, &n, &n), -2);
    char prefix[17] = "0123456789abcdef";
    EXPECT_EQ(Tr104PhyNameRuleH248(1, prefix, &n, &n, &n), -2);
    uint32_t two = 2;
    EXPECT_EQ(Tr104EphNameRuleH248(1, prefix + 5, &n, &n, &n, &two), -2);
    EXPECT_EQ(Tr104MgcRegisterH248(1, &n, nullptr, nullptr), -2);
    EXPECT_EQ(Tr104MgcRegisterH248(1, nullptr, prefix, nullptr), -2);
    EXPECT_EQ(emulator.requestCount(), 0u);
}

// ---- Conversions and rules ---------------------------------------------------------------------

TEST_F(H248, HeldValuesStartAtTheirInitialValuesWithoutAnExchange) {
    char text[80] = "x";
    EXPECT_EQ(Tr104MessageEncodingTypeH248(0, text), 0);
    EXPECT_STREQ(text, "ABNF");
    EXPECT_EQ(Tr104DeviceNameH248(0, text), 0);
    EXPECT_STREQ(text, "");
    struct {
        int (*fn)(int, void *);
        int initial;
    } const ints[] = {{Tr104LongTimerH248, 60},
                      {Tr104PendingTimerH248, 10},
                      {Tr104MgRegisterH248, 0},
                      {Tr104ProtocolVersionH248, 1},
                      {Tr104MessageFormatH248, 0}};
    for (const auto &row : ints) {
        int v = -1;
        EXPECT_EQ(row.fn(0, &v), 0);
        EXPECT_EQ(v, row.initial);
    }
    std::strcpy(text, "ASN.1");
    EXPECT_EQ(Tr104MessageEncodingTypeH248(1, text), 0);
    int v = 12345;
    EXPECT_EQ(Tr104LongTimerH248(1, &v), 0);
    EXPECT_EQ(Tr104LongTimerH248(0, &v), 0);
    EXPECT_EQ(v, 12345);
    EXPECT_EQ(Tr104MessageEncodingTypeH248(0, text), 0);
    EXPECT_STREQ(text, "ASN.1");
    EXPECT_EQ(emulator.requestCount(), 0u);
    std::strcpy(text, "ABNF");
    EXPECT_EQ(Tr104MessageEncodingTypeH248(1, text), 0);
    v = 60;
    EXPECT_EQ(Tr104LongTimerH248(1, &v), 0);
}

TEST_F(H248, MgcEntriesAreCheckedByIndexAndStatusIsMapped) {
    char text[100] = "mgc1";
    ASSERT_EQ(Tr104PrimaryMGCH248(1, text), 0);
    std::strcpy(text, "mgc2");
    ASSERT_EQ(Tr104SecondaryMGCH248(1, text), 0);
    std::memset(text, 0, sizeof(text));
    ASSERT_EQ(Tr104SecondaryMGCH248(0, text), 0);
    EXPECT_STREQ(text, "mgc2");
    EXPECT_EQ(emulator.requestsFor(GET_MGC_CFG_ID).back().word<uint32_t>(280), 1u);

    // A voice module that answers for the primary entry whatever was asked.
    emulator.setHandler(GET_MGC_CFG_ID, [](const vmemu::Request &, vmemu::Payload &reply) {
        reply.fill(0);
        return true;
    });
    int port = 7;
    const std::string out = debugOutput([&] { EXPECT_EQ(Tr104SecondaryMGCPortH248(0, &port), -1); });
    EXPECT_NE(out.find("param error\n"), std::string::npos) << out;
    EXPECT_EQ(port, 7);
    EXPECT_EQ(Tr104PrimaryMGCPortH248(0, &port), 0);
    emulator.setHandler(GET_MGC_CFG_ID, [](const vmemu::Request &, vmemu::Payload &reply) {
        reply.fill(0);
        const uint32_t secondary = 1;
        std::memcpy(reply.data() + 280, &secondary, sizeof(secondary));
        return true;
    });
    EXPECT_EQ(Tr104PrimaryMGCH248(0, text), -1);
}

TEST_F(H248, MgcStatusMapping) {
    const std::pair<uint32_t, int> rows[] = {{0, 1}, {1, 2}, {2, 0}, {3, 3}, {77, 3}};
    for (const auto &[code, mapped] : rows) {
        vmemu::h248::setMgcState(emulator, code, 2, "mgc2");
        int v = -1;
        ASSERT_EQ(Tr104MgcStatusH248(0, &v), 0);
        EXPECT_EQ(v, mapped) << code;
    }
    int num = 0;
    char addr[140] = "";
    EXPECT_EQ(Tr104CurrMgcNumH248(0, &num), 0);
    EXPECT_EQ(num, 2);
    EXPECT_EQ(Tr104CurrMgcAddrH248(0, addr), 0);
    EXPECT_STREQ(addr, "mgc2");
}

TEST_F(H248, RegistrationCommandsAndTheStatusTheyLeave) {
    char addr[] = "mgc1";
    uint32_t on = 1, off = 0;
    ASSERT_EQ(Tr104MgcRegisterH248(1, &on, addr, nullptr), 0);
    int status = -1;
    ASSERT_EQ(Tr104MgcStatusH248(0, &status), 0);
    EXPECT_EQ(status, 1);
    ASSERT_EQ(Tr104MgcRegisterH248(1, &off, addr, nullptr), 0);
    ASSERT_EQ(Tr104MgcStatusH248(0, &status), 0);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(emulator.requestsFor(REG_MGC_ID).at(0).text_at(2, 69), "mgc1");
    ASSERT_EQ(emulator.requestsFor(UNREG_MGC_ID).size(), 1u);

    int v = 1;
    ASSERT_EQ(Tr104LineRegisterH248(1, &v, line(2)), 0);
    char state[32] = "";
    ASSERT_EQ(Tr104LineRegStatusH248(0, state, line(2)), 0);
    EXPECT_STREQ(state, "Up");
    v = 5;
    ASSERT_EQ(Tr104LineRegisterH248(1, &v, line(2)), 0);
    settle();
    EXPECT_EQ(emulator.requestsFor(REG_H248_LINE_ID).at(0).word<uint32_t>(0), 2u);
    EXPECT_EQ(emulator.requestsFor(UNREG_H248_LINE_ID).size(), 1u);
}

TEST_F(H248, PortStatusConversions) {
    struct Row {
        const char *reg;
        const char *state;  // "" when nothing is written
        int server;
    };
    const Row rows[] = {{"IDLE", "Up", 1},
                        {"INACTIVE", "Initializing", 0},
                        {"REGING", "Registering", 2},
                        {"LOCAL_REG", "Unregistering", 2},
                        {"REG_FAIL", "Error", 5},
                        {"LINE_FAIL", "Disabled", 2},
                        {"BOGUS", "", 2}};
    for (const Row &row : rows) {
        SCOPED_TRACE(row.reg);
        vmemu::h248::PortStatus p;
        p.regState = row.reg;
        p.hookState = "OffHook";
        p.sessionType = 3;
        p.portState = 9;
        p.serviceState = 1;
        p.localRtpPort = 50002;
        p.announceType = 1;
        vmemu::h248::setPortStatus(emulator, 2, p);
        char text[64] = "";
        int v = -1;
        ASSERT_EQ(Tr104LineRegStatusH248(0, text, line(2)), 0);
        EXPECT_STREQ(text, row.state);
        ASSERT_EQ(Tr104LineServerStatusH248(0, &v, line(2)), 0);
        EXPECT_EQ(v, row.server);
    }
    EXPECT_EQ(emulator.requestsFor(GET_H248_PORT_STATUS_ID).back().word<uint32_t>(0), 2u);
    char text[64] = "";
    int v = 0;
    ASSERT_EQ(Tr104LineHookStatusH248(0, text, line(2)), 0);
    EXPECT_STREQ(text, "OffHook");
    ASSERT_EQ(Tr104LineSessionTypeH248(0, &v, line(2)), 0);
    EXPECT_EQ(v, 3);
    ASSERT_EQ(Tr104PortStatusH248(0, &v, line(2)), 0);
    EXPECT_EQ(v, 9);
    ASSERT_EQ(Tr104PortServiceStateH248(0, text, line(2)), 0);
    EXPECT_STREQ(text, "OutOfService");
    ASSERT_EQ(Tr104SessionLocalRtpPortH248(0, &v, line(2)), 0);
    EXPECT_EQ(v, 50002);
    ASSERT_EQ(Tr104LineAnnounceTypeH248(0, text, line(2)), 0);
    EXPECT_STREQ(text, "Remote");
}

TEST_F(H248, RtpMinimumPortKeepsTheMaximum) {
    int port = 40000;
    ASSERT_EQ(Tr104RtpMinLocalPortH248(1, &port), 0);
    settle();
    const auto sets = emulator.requestsFor(SET_RTP_LOCAL_PORT_ID);
    ASSERT_EQ(sets.size(), 1u);
    EXPECT_EQ(sets[0].word<uint32_t>(0), 40000u);
    EXPECT_EQ(sets[0].word<uint32_t>(4), 50999u);
    port = 0;
    ASSERT_EQ(Tr104RtpMaxLocalPortH248(0, &port), 0);
    EXPECT_EQ(port, 50999);
}

TEST_F(H248, NamingRules) {
    char prefix[16] = "AALN/";
    uint32_t length = 3, start = 1, uniform = 1;
    ASSERT_EQ(Tr104PhyNameRuleH248(1, prefix, &length, &start, &uniform), 0);
    settle();
    const auto set = emulator.requestsFor(SET_PHY_NAME).at(0);
    EXPECT_EQ(set.word<uint16_t>(0), 0xF);
    EXPECT_EQ(set.word<uint32_t>(28), 0u);
    uint32_t l = 0, s = 0, u = 9;
    char got[16] = "";
    ASSERT_EQ(Tr104PhyNameRuleH248(0, got, &l, &s, &u), 0);
    EXPECT_STREQ(got, "AALN/");
    EXPECT_EQ(l, 3u);
    EXPECT_EQ(s, 1u);
    EXPECT_EQ(u, 1u);

    // Range rule: no mask, names per instance, the count.
    char first[16] = "EPH/";
    uint32_t from = 5, to = 14, step = 3, fill = 0;
    ASSERT_EQ(Tr104EphNameRuleH248(1, first, &from, &to, &step, &fill), 0);
    settle();
    EXPECT_EQ(emulator.requestsFor(SET_EPH_NAME).at(0).word<uint16_t>(0), 0u);
    int count = 0;
    ASSERT_EQ(Tr104EphemeralTermIDNumberH248(0, &count), 0);
    EXPECT_EQ(count, 4);
    char name[64] = "";
    ASSERT_EQ(Tr104EphemeralTermIDNameH248(0, name, line(2)), 0);
    EXPECT_STREQ(name, "EPH/00008");
    EXPECT_EQ(emulator.requestsFor(GET_EPH_NAME).back().word<uint16_t>(2), 2u);
    ASSERT_EQ(Tr104EphemeralTermIDFirstNameH248(0, name), 0);
    EXPECT_STREQ(name, "EPH/00005");
    length = 2;
    ASSERT_EQ(Tr104EphNameRule2H248(1, first, &length, &start, &uniform), 0);
    settle();
    EXPECT_EQ(emulator.requestsFor(SET_EPH_NAME).at(1).word<uint16_t>(0), 0xF);
    ASSERT_EQ(Tr104EphemeralTermIDNameH248(0, name, line(1)), 0);
    EXPECT_STREQ(name, "EPH/01");
}

// ---- Statistics ------------------------------------------------------------------------------------

TEST_F(H248, CountersReadTheirFieldAndTheGatewayAsksForLine1) {
    using vmemu::h248::setCounter;
    struct Row {
        Handler fn;
        uint32_t offset;
        bool perLine;
    };
    const Row rows[] = {
        {Tr104LineIncomingCallsReceivedH248, 4, true},
        {Tr104LineIncomingCallsAnsweredH248, 8, true},
        {Tr104LineIncomingCallsConnectedH248, 12, true},
        {Tr104LineIncomingCallsFailedH248, 16, true},
        {Tr104LineOutgoingCallsAttemptedH248, 20, true},
        {Tr104LineOutgoingCallsAnsweredH248, 24, true},
        {Tr104LineOutgoingCallsConnectedH248, 28, true},
        {Tr104LineOutgoingCallsFailedH248, 32, true},
        {Tr104LineTotalCallsDroppedH248, 36, true},
        {Tr104LineTotalCallsTimeH248, 40, true},
        {Tr104LineTotalCallsSetupTimerH248, 44, true},
        {Tr104LineTotalCallTerminateFailsH248, 48, true},
        {Tr104LineTotalPotsReleaseCountsH248, 52, true},
        {Tr104LineTotalPotsOffHookTimerH248, 56, true},
        {two<Tr104RcvdReqsH248>, 60, false},
        {two<Tr104SendReqsH248>, 64, false},
        {two<Tr104RcvdResponsesH248>, 68, false},
        {two<Tr104SendResponsesH248>, 72, false},
        {two<Tr104NgnPacketLossH248>, 108, false},
        {two<Tr104NgnPacketRetransH248>, 112, false},
        {two<Tr104NgnPacketErrorH248>, 116, false},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.offset);
        setCounter(emulator, 1, row.offset, 1000 + row.offset);
        setCounter(emulator, 2, row.offset, 2000 + row.offset);
        int v = 0;
        ASSERT_EQ(row.fn(0, &v, line(2)), 0);
        EXPECT_EQ(v, static_cast<int>((row.perLine ? 2000 : 1000) + row.offset));
        EXPECT_EQ(emulator.requestsFor(GET_H248_STATISTICS_ID).back().word<uint32_t>(0), row.perLine ? 2u : 1u);
    }
    setCounter(emulator, 1, 120, 3);
    int unknown = 5;
    ASSERT_EQ(Tr104NgnPacketUnKnownH248(0, &unknown), 0);
    EXPECT_EQ(unknown, 8);

    setCounter(emulator, 2, 12, 4);
    setCounter(emulator, 2, 28, 6);
    int total = 0;
    ASSERT_EQ(Tr104LineTotalCallTimesH248(0, &total, line(2)), 0);
    EXPECT_EQ(total, 10);
    setCounter(emulator, 2, 12, 0x7FFFFFFF);  // past 2^31 the sum wraps as a 32-bit word
    setCounter(emulator, 2, 28, 2);
    ASSERT_EQ(Tr104LineTotalCallTimesH248(0, &total, line(2)), 0);
    EXPECT_EQ(static_cast<uint32_t>(total), 0x80000001u);
    int flag = 1;
    ASSERT_EQ(Tr104LineResetStatisticsFlagH248(1, &flag, line(2)), 0);
    ASSERT_EQ(Tr104LineTotalCallTimesH248(0, &total, line(2)), 0);
    EXPECT_EQ(total, 0);
}

// ---- Dispatch: the wrappers reach the H.248 variants only under H.248 ----------------------------

TEST_F(H248, WrappersReachTheVariantsUnderH248Only) {
    using Gateway = int (*)(int, void *);
    const Gateway gateway[] = {Tr104ProtocolVersion,
                               Tr104MessageFormat,
                               Tr104PrimaryMGC,
                               Tr104PrimaryMGCPort,
                               Tr104SecondaryMGC,
                               Tr104SecondaryMGCPort,
                               Tr104CurrMgcNum,
                               Tr104MgLocalPort,
                               Tr104MessageEncodingType,
                               Tr104MgId,
                               Tr104DeviceName,
                               Tr104MgRegMode,
                               Tr104EphemeralTermIDPrefix,
                               Tr104EphemeralTermIDAddLen,
                               Tr104EphemeralTermIDUniform,
                               Tr104EphemeralTermIDStartVlaue,
                               Tr104EphemeralTermIDNumber,
                               Tr104EphemeralTermIDFirstName,
                               Tr104ThreeHandShakeEnable,
                               Tr104LongTimer,
                               Tr104PendingTimer,
                               Tr104RetranTimerInitial,
                               Tr104MaxRetranCount,
                               Tr104RetransmissionTime,
                               Tr104RetransmissionCycle,
                               Tr104HeartbeatMode,
                               Tr104HeartbeatCycle,
                               Tr104HeartbeatCount,
                               Tr104HeartbeatFormat,
                               Tr104MgRegisterCycle,
                               Tr104MgRegister,
                               Tr104AuthenticationMeth,
                               Tr104PhysicalTermIDPrefix,
                               Tr104PhysicalTermIDAddLen,
                               Tr104PhysicalTermIDStartVlaue,
                               Tr104PhysicalTermIDUniform,
                               Tr104TermId};
    // Both protocols, profile-wide: the SIP variant answers under SIP.
    const Gateway profileWide[] = {Tr104RcvdReqs,      Tr104SendReqs,         Tr104RcvdResponses, Tr104SendResponses,
                                   Tr104NgnPacketLoss, Tr104NgnPacketRetrans, Tr104NgnPacketError};
    const Handler perLine[] = {Tr104PhysicalTermId,
                               Tr104EphemeralTermIDName,
                               Tr104PortServiceState,
                               Tr104FaxCtrlMode,
                               Tr104VbdEnable,
                               Tr104VbdTxInterval,
                               Tr104VbdRxInterval,
                               Tr104VbdCodec,
                               Tr104FaxT38EventDetectMode,
                               Tr104LineEnable,
                               Tr104LineRegStatus,
                               Tr104LineServerStatus,
                               Tr104LineHookStatus,
                               Tr104PortStatus,
                               Tr104LineSessionType,
                               Tr104LineResetStatisticsFlag,
                               Tr104LineIncomingCallsReceived,
                               Tr104LineIncomingCallsAnswered,
                               Tr104LineIncomingCallsConnected,
                               Tr104LineIncomingCallsFailed,
                               Tr104LineOutgoingCallsAttempted,
                               Tr104LineOutgoingCallsAnswered,
                               Tr104LineOutgoingCallsConnected,
                               Tr104LineOutgoingCallsFailed,
                               Tr104LineTotalCallsDropped,
                               Tr104LineTotalCallTimes,
                               Tr104LineTotalCallsTime,
                               Tr104LineTotalCallsSetupTimer,
                               Tr104LineTotalCallTerminateFails,
                               Tr104LineTotalPotsReleaseCounts,
                               Tr104LineTotalPotsOffHookTimer,
                               Tr104SessionLocalRtpPort,
                               Tr104LineAnnounceType};
    char buf[256];
    for (int protocol : {TR104_PROTOCOL_H248, 0, 3, TR104_PROTOCOL_SIP}) {
        SCOPED_TRACE(protocol);
        gTr104CurrProtocolType = protocol;
        emulator.clearLog();
        // Under H.248 every get prints its debug line (a wrong format would show here).
        gTr104CfgDebug = protocol == TR104_PROTOCOL_H248;
        testing::internal::CaptureStdout();
        for (Gateway fn : gateway) {
            std::memset(buf, 0, sizeof(buf));
            EXPECT_EQ(fn(0, buf), protocol == TR104_PROTOCOL_H248 ? 0 : -1);
        }
        for (Gateway fn : profileWide) {
            std::memset(buf, 0, sizeof(buf));
            const int rc = fn(0, buf);
            if (protocol != TR104_PROTOCOL_SIP) {
                EXPECT_EQ(rc, protocol == TR104_PROTOCOL_H248 ? 0 : -1);
            }
        }
        for (Handler fn : perLine) {
            std::memset(buf, 0, sizeof(buf));
            const int rc = fn(0, buf, line(1));
            if (protocol == TR104_PROTOCOL_H248) {
                EXPECT_EQ(rc, 0);
            } else if (protocol != TR104_PROTOCOL_SIP) {
                EXPECT_EQ(rc, -1);
            }
        }
        uint32_t a = 0, b = 0, c = 0, d = 0;
        const int rule = Tr104PhyNameRule(0, buf, &a, &b, &c);
        EXPECT_EQ(rule, protocol == TR104_PROTOCOL_H248 ? 0 : -1);
        EXPECT_EQ(Tr104EphNameRule(0, buf, &a, &b, &c, &d), rule);
        EXPECT_EQ(Tr104EphNameRule2(0, buf, &a, &b, &c), rule);
        gTr104CfgDebug = 0;
        const std::string out = testing::internal::GetCapturedStdout();
        if (protocol == TR104_PROTOCOL_H248) {
            EXPECT_NE(out.find("[Tr104EphemeralTermIDNameH248,"), std::string::npos);
            EXPECT_NE(out.find("get Line [1] Hook Status[OnHook]\n"), std::string::npos) << out;
            EXPECT_NE(out.find("get ngn send reply [0]\n"), std::string::npos);
        }
        // Under any other protocol no H.248 command goes out.
        for (const vmemu::Request &r : emulator.requests()) {
            EXPECT_TRUE(protocol == TR104_PROTOCOL_H248 || r.cmd < 12289 || r.cmd > 12399) << r.cmd;
        }
        if (protocol == 0 || protocol == 3) {
            EXPECT_EQ(emulator.requestCount(), 0u);
        }
    }
}

}  // namespace
