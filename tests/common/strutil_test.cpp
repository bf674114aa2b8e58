// Text and number utilities: one table of input and expected output per routine.  Buffers are
// heap blocks of exactly the size a caller must provide, so the sanitizer build catches any
// write outside them or any read past a terminator.
#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstring>
#include <memory>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "common/stdout_capture.h"
#include "tr104/common.h"

namespace {

// A heap copy of text (embedded NULs kept) in a block of max(size + 1, room) bytes.
std::unique_ptr<char[]> heapText(const std::string &text, size_t room = 0) {
    size_t size = std::max(text.size() + 1, room);
    std::unique_ptr<char[]> buf(new char[size]);
    std::memset(buf.get(), 0, size);
    std::memcpy(buf.get(), text.data(), text.size());
    return buf;
}

TEST(Stricmp, Table) {
    struct Case {
        const char *a, *b;
        int expected;
    } cases[] = {
        {"abc", "ab", 1},
        {"ab", "abc", -1},
        {"ABC", "abc", 0},
        {"", "", 0},
        {"", "a", -1},
        {"a", "", 1},
        {"abd", "abc", 1},
        {"abc", "abd", -1},
        {"a", "B", -1},
        {"z", "A", 25},
        {"G.711alaw", "G.711ALaw", 0},
        {"\xe9", "\xc9", 0xe9 - 0xc9},  // bytes above 127 compare as unsigned, never folded
        {nullptr, "a", -1},
        {"a", nullptr, -1},
        {nullptr, nullptr, -1},
    };
    for (const Case &c : cases) {
        EXPECT_EQ(stricmp(c.a, c.b), c.expected) << (c.a ? c.a : "null") << " / " << (c.b ? c.b : "null");
    }
}

TEST(RvConvertStrToHexs, Table) {
    struct Case {
        const char *text;
        int result;
        std::vector<unsigned char> bytes;
    } cases[] = {
        {"", 1, {}},
        {"0g", 1, {0x00}},
        {"A1ff", 1, {0xA1, 0xFF}},
        {"zz10", 1, {0x00, 0x10}},
        {"0123456789abcdefABCDEF", 1, {0x01, 0x23, 0x45, 0x67, 0x89, 0xAB, 0xCD, 0xEF, 0xAB, 0xCD, 0xEF}},
        {"abc", 0, {}},
    };
    for (const Case &c : cases) {
        size_t room = std::max<size_t>(std::strlen(c.text) / 2, 1);
        std::unique_ptr<unsigned char[]> out(new unsigned char[room]);
        std::memset(out.get(), 0x5A, room);
        EXPECT_EQ(rvConvertStrToHexs(c.text, out.get()), c.result) << c.text;
        for (size_t i = 0; i < c.bytes.size(); ++i)
            EXPECT_EQ(out[i], c.bytes[i]) << c.text << " byte " << i;
        if (c.bytes.empty()) {
            EXPECT_EQ(out[0], 0x5A) << c.text << ": nothing may be written";
        }
    }
    unsigned char byte = 0;
    EXPECT_EQ(rvConvertStrToHexs(nullptr, &byte), 0);
    EXPECT_EQ(rvConvertStrToHexs("00", nullptr), 0);
}

TEST(RvGetNumberFromStr, Table) {
    struct Case {
        const char *text, *expected;
    } cases[] = {
        {"", ""}, {"a1b2c3", "123"}, {"\"12\"34", "1234"}, {"abc", ""}, {"007", "007"}, {"-5.5", "55"},
    };
    for (const Case &c : cases) {
        auto buf = heapText(c.text);
        EXPECT_EQ(rvGetNumberFromStr(buf.get()), static_cast<int>(std::strlen(c.expected))) << c.text;
        EXPECT_STREQ(buf.get(), c.expected);
    }
    EXPECT_EQ(rvGetNumberFromStr(nullptr), 0);
}

TEST(RvFillStringWithChar, Table) {
    struct Case {
        std::string text;
        char fill;
        int width, left, result;
        std::string expected;
    } cases[] = {
        {"12", '0', 5, 1, 1, "00012"},
        {"12", '0', 5, 0, 1, "12000"},
        {"12345", 'x', 5, 1, 1, "12345"},
        {"12345", 'x', 3, 0, 1, "12345"},
        {"abc", ' ', -1, 0, 1, "abc"},
        {"", '*', 3, 1, 1, "***"},
        {std::string(254, 'a'), 'b', 255, 1, 1, "b" + std::string(254, 'a')},
        {std::string(255, 'a'), 'b', 300, 1, 0, std::string(255, 'a')},
    };
    for (const Case &c : cases) {
        auto buf = heapText(c.text, static_cast<size_t>(std::max(c.width, 0)) + 1);
        EXPECT_EQ(rvFillStringWithChar(buf.get(), c.fill, c.width, c.left), c.result) << c.text;
        EXPECT_EQ(std::string(buf.get()), c.expected);
    }
    EXPECT_EQ(rvFillStringWithChar(nullptr, '0', 5, 1), 0);
}

TEST(DecimalChecks, SignedAndUnsignedTables) {
    struct Case {
        const char *text;
        int rvValid, valid;
    } cases[] = {
        {"", 1, 1},   {"0123", 1, 1}, {"-12", 1, 0}, {"-", 1, 0},  {"1-2", 0, 0},   {"--1", 0, 0},
        {" 1", 0, 0}, {"1 ", 0, 0},   {"12a", 0, 0}, {"+1", 0, 0}, {nullptr, 0, 0},
    };
    for (const Case &c : cases) {
        const char *name = c.text ? c.text : "null";
        EXPECT_EQ(rvValidDecimal(c.text), c.rvValid) << name;
        EXPECT_EQ(validDecimal(c.text), c.valid) << name;
    }
}

TEST(DecimalChecks, ValidDecimalCountsLengthIn16Bits) {
    // 65537 characters: only the first (65537 mod 65536 = 1) is looked at.
    std::string longText = "1" + std::string(65536, 'x');
    EXPECT_EQ(validDecimal(longText.c_str()), 1);
    EXPECT_EQ(validDecimal(std::string(65536, 'x').c_str()), 1);
    EXPECT_EQ(rvValidDecimal(longText.c_str()), 0);
}

TEST(DeleteSpaceFromString, Table) {
    struct Case {
        const char *text, *expected;
    } cases[] = {
        {"  ab  ", "ab"}, {"\tab ", "\tab"}, {"ab", "ab"},      {"   ", ""},
        {"", ""},         {" a b ", "a b"},  {"ab\t ", "ab\t"}, {"\n a", "\n a"},
    };
    for (const Case &c : cases) {
        auto buf = heapText(c.text);
        delete_space_from_string(buf.get());
        EXPECT_STREQ(buf.get(), c.expected) << '"' << c.text << '"';
    }
    delete_space_from_string(nullptr);
}

TEST(RvSkipAllRedundantSpace, CollapsesWithinRegion) {
    struct Case {
        std::string text;
        int len;
        std::string expected;  // the whole buffer afterwards
    } cases[] = {
        {"a  b", 4, "a b "}, {"a b", 3, "a b"},     {"ab", 2, "ab"},           {" a", 2, " a"},
        {"  a", 3, " a "},   {"a  bc", 5, "a bc "}, {"a  b  c", 4, "a b   c"},  // only the first 4 bytes are the region
        {"x", 1, "x"},       {" ", 1, " "},         {"a  b", 0, "a  b"},       {"a  b", -3, "a  b"},
    };
    for (const Case &c : cases) {
        auto buf = heapText(c.text);
        rvSkipAllRedundantSpace(buf.get(), c.len);
        EXPECT_EQ(std::string(buf.get(), c.text.size()), c.expected) << '"' << c.text << "\" len " << c.len;
    }
    rvSkipAllRedundantSpace(nullptr, 4);
}

// A region that ends, or comes to end, in two spaces is collapsed forever.  Each case runs in
// a child process; the children must still be running after a generous wait and are killed.
TEST(RvSkipAllRedundantSpace, RegionEndingInTwoSpacesNeverReturns) {
    const char *texts[] = {"ab  ", "a   b", "a  b "};
    std::vector<pid_t> children;
    int ready[2];
    ASSERT_EQ(pipe(ready), 0);
    for (const char *text : texts) {
        pid_t pid = fork();
        ASSERT_GE(pid, 0);
        if (pid == 0) {
            char buf[8] = {};
            std::strcpy(buf, text);
            if (write(ready[1], "r", 1) != 1)
                _exit(2);
            rvSkipAllRedundantSpace(buf, static_cast<int>(std::strlen(buf)));
            _exit(0);
        }
        children.push_back(pid);
    }
    close(ready[1]);
    // Every child has reached the call once its byte has arrived.
    for (size_t i = 0; i < children.size(); ++i) {
        char byte;
        ASSERT_EQ(read(ready[0], &byte, 1), 1);
    }
    close(ready[0]);
    std::this_thread::sleep_for(std::chrono::seconds(1));
    for (size_t i = 0; i < children.size(); ++i) {
        int status = 0;
        EXPECT_EQ(waitpid(children[i], &status, WNOHANG), 0) << "returned for \"" << texts[i] << '"';
        kill(children[i], SIGKILL);
        waitpid(children[i], &status, 0);
    }
}

TEST(RvSkipAllInvalidSpaceInSdp, Table) {
    struct Case {
        std::string text;
        std::string expected;  // the whole region afterwards
    } cases[] = {
        {"a \r\nb", "a\r\nb "},
        {"a\r\n\r\nb", "a\r\nb  "},
        {"a\r\n  b", "a\r\nb  "},
        {"a  b", "a b "},
        {"a   b", "a b  "},
        {"a\n\nb", "a\nb "},
        {"a\n \n b", "a\nb   "},
        {"a \n", "a\n "},
        {"\r\n\r\n", "\r\n  "},
        {"a \r\n \r\nb", "a\r\nb    "},
        {"a\rb", "a\rb"},  // a lone carriage return is an ordinary character
        {"a \rb", "a \rb"},
        {"x\r\r\n", "x\r\r\n"},
        {"a\r", "a\r"},
        {"  ", "  "},
        {"v=0\r\no=- 1 1 IN IP4 1.2.3.4 \r\n\r\ns=  -\r\n", "v=0\r\no=- 1 1 IN IP4 1.2.3.4\r\ns= -\r\n    "},
    };
    for (const Case &c : cases) {
        // Exactly the region, no terminator: nothing past it may be read.
        std::unique_ptr<char[]> buf(new char[c.text.size()]);
        std::memcpy(buf.get(), c.text.data(), c.text.size());
        rvSkipAllInvalidSpaceInSdp(buf.get(), static_cast<int>(c.text.size()));
        EXPECT_EQ(std::string(buf.get(), c.text.size()), c.expected) << testing::PrintToString(c.text);
    }
}

TEST(RvSkipAllInvalidSpaceInSdp, RegionBoundsAndPrinting) {
    // The region ends between a carriage return and its line feed: the return is ordinary.
    auto buf = heapText("a\r\n\n");
    rvSkipAllInvalidSpaceInSdp(buf.get(), 2);
    EXPECT_EQ(std::string(buf.get(), 4), "a\r\n\n");
    rvSkipAllInvalidSpaceInSdp(buf.get(), 0);
    rvSkipAllInvalidSpaceInSdp(nullptr, 4);

    sdpMdy = 1;
    std::unique_ptr<char[]> region(new char[4]);
    std::memcpy(region.get(), "a  b", 4);
    std::string out = tr104test::capturedStdout([&] { rvSkipAllInvalidSpaceInSdp(region.get(), 4); });
    sdpMdy = 0;
    EXPECT_EQ(out, "before= a  b\r\nafter= a b \r\n");
    EXPECT_EQ(tr104test::capturedStdout([&] { rvSkipAllInvalidSpaceInSdp(region.get(), 4); }), "");
}

TEST(RvResolveNumList, Table) {
    constexpr uint16_t kUnset = 0xBEEF;
    struct Case {
        const char *list;
        int low, high, capacity, result;
        std::vector<uint16_t> values;
    } cases[] = {
        {"1~3,5", 1, 10, 8, 1, {1, 2, 3, 5}},
        {"3~1", 1, 10, 8, -5, {}},
        {"a", 1, 10, 8, -1, {}},
        {"11", 1, 10, 8, -2, {}},
        {"0", 1, 10, 8, -2, {}},
        {"1~x", 1, 10, 8, -4, {}},
        {"1~ 3", 1, 10, 8, -4, {}},
        {"1~3~4", 1, 10, 8, -4, {}},
        {"1~11", 1, 10, 8, -5, {}},
        {"0~3", 1, 10, 8, -5, {}},
        {"x~3", 1, 10, 8, -5, {}},  // the start is read as a number without a check: 0
        {" 5", 1, 10, 8, -1, {}},
        {"5 ", 1, 10, 8, -1, {}},
        {"1 ~3", 1, 10, 8, 1, {1, 2, 3}},
        {"1,,2", 1, 10, 8, 1, {1, 2}},
        {"", 1, 10, 8, 1, {}},
        {"7,x", 1, 10, 8, -1, {}},
        {"65535", 0, 65535, 8, 1, {65535}},
        // capacity: tested after each stored value; a range stops only itself.
        {"1,2,3,4", 1, 10, 2, 1, {1, 2}},
        {"1~5,7", 1, 10, 3, 1, {1, 2, 3, 7}},
        {"1~5,6,7", 1, 10, 3, 1, {1, 2, 3, 6}},
        {"1~5,7~9,4", 1, 10, 3, 1, {1, 2, 3, 7, 4}},
        {"4,5", 1, 10, 0, 1, {4}},
    };
    for (const Case &c : cases) {
        auto list = heapText(c.list);
        std::vector<uint16_t> values(16, kUnset);
        int count = -99;
        EXPECT_EQ(rvResolveNumList(list.get(), c.low, c.high, c.capacity, values.data(), &count), c.result)
            << '"' << c.list << '"';
        if (c.result != 1) {
            EXPECT_EQ(count, -99) << "count written on error for \"" << c.list << '"';
            continue;
        }
        ASSERT_EQ(count, static_cast<int>(c.values.size())) << '"' << c.list << '"';
        for (size_t i = 0; i < values.size(); ++i) {
            EXPECT_EQ(values[i], i < c.values.size() ? c.values[i] : kUnset) << '"' << c.list << "\" value " << i;
        }
    }
    uint16_t value;
    int count;
    char text[] = "1";
    EXPECT_EQ(rvResolveNumList(nullptr, 0, 9, 1, &value, &count), RV_NUMLIST_NULL_ARG);
    EXPECT_EQ(rvResolveNumList(text, 0, 9, 1, nullptr, &count), RV_NUMLIST_NULL_ARG);
    EXPECT_EQ(rvResolveNumList(text, 0, 9, 1, &value, nullptr), RV_NUMLIST_NULL_ARG);
}

TEST(CheckIpaddr, Table) {
    struct Case {
        const char *text;
        int expected;
    } cases[] = {
        {"", 0},
        {nullptr, 0},
        {"1.2.3.4", 0},
        {"256.1.1.1", -1},
        {"1.2.3.4.5", -1},
        {"1..2.3.4", 0},  // empty parts are skipped
        {"1. .3.4", 0},  // a part of spaces only counts as 0
        {" 1 . 2 .3.4 ", 0},
        {"1.2.3", -1},
        {"1.2.3.", -1},
        {"1.2.3.4.", 0},
        {"1.2.3.4. ", -1},
        {"...", -1},
        {"1.2.3.4a", -1},
        {"a.b.c.d", -1},
        {"-1.2.3.4", -1},
        {"1.2.3.255", 0},
        {"1.2.3.256", -1},
        {"0001.2.3.4", 0},
        {"\t1.2.3.4", -1},
        {"1.2.3.4            x", 0},  // the 20th character is never looked at
        {"1.2.3.4           x", -1},  // the 19th is
    };
    for (const Case &c : cases) {
        EXPECT_EQ(check_ipaddr(c.text), c.expected) << '"' << (c.text ? c.text : "null") << '"';
    }
}

TEST(RvVerifyIpValid, Table) {
    std::string digits68(60, '1');
    digits68 += "1.1.1.1a";  // 68 characters with a letter: a host name
    std::string digits69 = digits68 + "b";
    struct Case {
        std::string text;
        int expected;
    } cases[] = {
        {"0.0.0.0", -1},   {"255.255.255.255", -1}, {"1.2.3.4", 1},    {"1.2.3", -1},
        {"host", 0},       {"1.2.3.4a", 0},         {"a", 0},          {"", -1},
        {"1.2.3.4.5", -1}, {"1..3.4", -1},          {"1.2.3.256", -1}, {"1.2.3.-4", -1},
        {"1.2.3.4 ", -1},  {"010.0.0.1", 1},        {"08.0.0.1", -1},  {digits68, 0},
        {digits69, -1},
    };
    for (const Case &c : cases)
        EXPECT_EQ(rvVerifyIpValid(c.text.c_str()), c.expected) << '"' << c.text << '"';
    EXPECT_EQ(rvVerifyIpValid(nullptr), -1);
}

// On well-formed dotted quads (octets 0..299, no leading zeros) both checks agree with
// inet_pton; rvVerifyIpValid additionally refuses 0.0.0.0 and 255.255.255.255.
TEST(AddressChecks, AgreeWithInetPtonOnDottedQuads) {
    std::mt19937 rng(104);
    std::uniform_int_distribution<unsigned> octet(0, 299);
    std::vector<std::array<unsigned, 4>> quads = {{0, 0, 0, 0}, {255, 255, 255, 255}, {255, 255, 255, 256}};
    for (int i = 0; i < 3000; ++i)
        quads.push_back({octet(rng), octet(rng), octet(rng), octet(rng)});
    for (const auto &q : quads) {
        char text[32];
        std::snprintf(text, sizeof text, "%u.%u.%u.%u", q[0], q[1], q[2], q[3]);
        in_addr addr{};
        bool valid = inet_pton(AF_INET, text, &addr) == 1;
        bool allZerosOrOnes = valid && (addr.s_addr == 0 || addr.s_addr == 0xFFFFFFFFu);
        EXPECT_EQ(check_ipaddr(text), valid ? 0 : -1) << text;
        EXPECT_EQ(rvVerifyIpValid(text), valid && !allZerosOrOnes ? 1 : -1) << text;
    }
}

}  // namespace
