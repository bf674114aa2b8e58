// IP address utilities: conversions, comparisons, masks, prints and the small helpers.
#include <arpa/inet.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstring>
#include <memory>
#include <string>

#include "common/stdout_capture.h"
#include "tr104/common.h"

namespace {

using tr104test::capturedStdout;

// An address value built from text; reserved bytes and unused address bytes are garbage so
// that the routines' own zeroing is visible.
CommIpAddr addrOf(const char *text, uint8_t prefix) {
    CommIpAddr a;
    std::memset(&a, 0xA5, sizeof a);
    EXPECT_EQ(CommGetIpValueByStr(&a, text, prefix), 1) << text;
    return a;
}

// The 32-bit number whose bytes in memory are the four octets (what inet_addr gives).
uint32_t ip4(uint8_t a, uint8_t b, uint8_t c, uint8_t d) {
    const uint8_t bytes[4] = {a, b, c, d};
    uint32_t v;
    std::memcpy(&v, bytes, 4);
    return v;
}

TEST(CommCheckIpValid, Table) {
    struct Case {
        const char *text;
        int expected;
    } cases[] = {
        {"10.0.0.1", 1}, {"::1", 2},    {"::ffff:1.2.3.4", 2}, {"host", 0},        {"1.2.3", 0},
        {"", -1},        {nullptr, -1}, {"1.2.3.4 ", 0},       {"2001:db8::1", 2},
    };
    for (const Case &c : cases)
        EXPECT_EQ(CommCheckIpValid(c.text), c.expected) << (c.text ? c.text : "null");
}

TEST(CommIpValue, TextRoundTrip) {
    struct Case {
        const char *text;
        uint8_t prefix;
        uint32_t type;
        std::vector<uint8_t> bytes;  // all 16 address bytes
    } cases[] = {
        {"192.168.1.5", 24, 1, {192, 168, 1, 5, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}},
        {"::1", 128, 2, {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1}},
        {"2001:db8::1", 64, 2, {0x20, 0x01, 0x0d, 0xb8, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1}},
        {"255.255.255.255", 32, 1, {255, 255, 255, 255, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}},
    };
    for (const Case &c : cases) {
        CommIpAddr a = addrOf(c.text, c.prefix);
        EXPECT_EQ(a.unType, c.type) << c.text;
        EXPECT_EQ(a.ucMask, c.prefix) << c.text;
        EXPECT_EQ(std::vector<uint8_t>(a.aucAddr, a.aucAddr + 16), c.bytes) << c.text;

        size_t size = std::strlen(c.text) + 1;
        std::unique_ptr<char[]> text(new char[size]);
        uint8_t prefix = 0;
        EXPECT_EQ(CommGetIpStrByValue(text.get(), &prefix, &a, static_cast<unsigned>(size)), 1);
        EXPECT_STREQ(text.get(), c.text);
        EXPECT_EQ(prefix, c.prefix);
    }
}

TEST(CommIpValue, BadInput) {
    CommIpAddr a;
    std::memset(&a, 0x5A, sizeof a);
    const CommIpAddr before = a;
    EXPECT_EQ(capturedStdout([&] { EXPECT_EQ(CommGetIpValueByStr(&a, "host", 8), 0); }),
              "input error, ip type nor ipv4 or ipv6");
    EXPECT_EQ(capturedStdout([&] { EXPECT_EQ(CommGetIpValueByStr(&a, "", 8), 0); }),
              "input error, ip type nor ipv4 or ipv6");
    EXPECT_EQ(std::memcmp(&a, &before, sizeof a), 0);
    EXPECT_EQ(capturedStdout([&] { EXPECT_EQ(CommGetIpValueByStr(nullptr, "1.2.3.4", 8), 0); }),
              "input error, Addr or Str is NULL \r");
    EXPECT_EQ(capturedStdout([&] { EXPECT_EQ(CommGetIpValueByStr(&a, nullptr, 8), 0); }),
              "input error, Addr or Str is NULL \r");

    CommIpAddr v4 = addrOf("10.0.0.1", 8);
    char text[16];
    uint8_t prefix;
    const std::string message = "input data errpr\r";
    EXPECT_EQ(capturedStdout([&] { EXPECT_EQ(CommGetIpStrByValue(nullptr, &prefix, &v4, 16), 0); }), message);
    EXPECT_EQ(capturedStdout([&] { EXPECT_EQ(CommGetIpStrByValue(text, nullptr, &v4, 16), 0); }), message);
    EXPECT_EQ(capturedStdout([&] { EXPECT_EQ(CommGetIpStrByValue(text, &prefix, nullptr, 16), 0); }), message);
    v4.unType = 3;
    EXPECT_EQ(capturedStdout([&] { EXPECT_EQ(CommGetIpStrByValue(text, &prefix, &v4, 16), 0); }), "");
}

TEST(CommIpValue, TextCopyStopsAtSize) {
    CommIpAddr a = addrOf("192.168.1.5", 24);
    struct Case {
        unsigned size;
        std::string expected;  // the whole buffer of size bytes
    } cases[] = {
        {5, "192.1"},
        {11, "192.168.1.5"},
        {12, std::string("192.168.1.5\0", 12)},
        {1, "1"},
    };
    for (const Case &c : cases) {
        std::unique_ptr<char[]> text(new char[c.size]);
        uint8_t prefix = 0;
        EXPECT_EQ(CommGetIpStrByValue(text.get(), &prefix, &a, c.size), 1);
        EXPECT_EQ(std::string(text.get(), c.size), c.expected);
    }
    char untouched = 'x';
    uint8_t prefix = 0;
    EXPECT_EQ(CommGetIpStrByValue(&untouched, &prefix, &a, 0), 1);
    EXPECT_EQ(untouched, 'x');
}

TEST(CommIpAddr, CopyAndCompare) {
    CommIpAddr src = addrOf("2001:db8::7", 48);
    CommIpAddr dst;
    std::memset(&dst, 0, sizeof dst);
    EXPECT_EQ(CommIpAddrCopy(&dst, &src), 1);
    EXPECT_EQ(CommIpAddrCompare(&dst, &src), 1);
    dst.aucReserved[0] = 7;  // reserved bytes take no part
    EXPECT_EQ(CommIpAddrCompare(&dst, &src), 1);

    for (void (*change)(CommIpAddr &) :
         {+[](CommIpAddr &a) { a.unType = 1; }, +[](CommIpAddr &a) { a.aucAddr[15] ^= 1; },
          +[](CommIpAddr &a) { a.aucAddr[0] ^= 0x80; }, +[](CommIpAddr &a) { a.ucMask = 49; }}) {
        CommIpAddr other = src;
        change(other);
        EXPECT_EQ(CommIpAddrCompare(&other, &src), 0);
    }
    EXPECT_EQ(CommIpAddrCopy(nullptr, &src), 0);
    EXPECT_EQ(CommIpAddrCopy(&dst, nullptr), 0);
    std::string out = capturedStdout([&] { EXPECT_EQ(CommIpAddrCompare(nullptr, &src), 0); });
    EXPECT_EQ(out.rfind("\n input error, pDstAddr = ", 0), 0u) << out;
}

TEST(CommIpAddrInSameSubnet, Table) {
    struct Case {
        const char *a;
        uint8_t aPrefix;
        const char *b;
        uint8_t bPrefix;
        int expected;
    } cases[] = {
        {"192.168.1.5", 24, "192.168.1.9", 24, 1},
        {"192.168.1.5", 24, "192.168.2.9", 24, 0},
        {"192.168.1.5", 24, "::1", 0, 1},  // the IPv6 loopback with prefix 0 matches anything
        {"::2", 128, "::1", 128, 0},  // ... only with prefix 0
        {"10.1.2.3", 0, "10.255.0.0", 8, 1},  // only b's prefix counts
        {"10.1.2.3", 8, "10.1.3.0", 24, 0},
        {"192.168.1.129", 24, "192.168.1.128", 25, 1},
        {"192.168.1.1", 24, "192.168.1.128", 25, 0},
        {"192.168.1.1", 24, "192.168.1.0", 31, 1},
        {"192.168.1.2", 24, "192.168.1.0", 31, 0},
        {"1.2.3.4", 24, "9.9.9.9", 0, 1},
        {"1.2.3.4", 24, "102:304::", 32, 1},  // the types are not compared
        {"2001:db8::1", 64, "2001:db8::ffff", 64, 1},
        {"2001:db8:0:1::1", 64, "2001:db8::ffff", 64, 0},
        {"2001:db8::1", 64, "2001:db8::1", 128, 1},
        {"2001:db8::1", 64, "2001:db8::2", 127, 0},
    };
    for (const Case &c : cases) {
        EXPECT_EQ(CommIpAddrInSameSubnet(addrOf(c.a, c.aPrefix), addrOf(c.b, c.bPrefix)), c.expected)
            << c.a << " in " << c.b << "/" << int(c.bPrefix);
    }
    // Prefix lengths beyond the address compare the 16 bytes and read nothing else.
    CommIpAddr a = addrOf("2001:db8::1", 64), b = addrOf("2001:db8::1", 255);
    EXPECT_EQ(CommIpAddrInSameSubnet(a, b), 1);
    b.aucAddr[15] = 2;
    EXPECT_EQ(CommIpAddrInSameSubnet(a, b), 0);
}

TEST(CommIpNumbers, TextConversions) {
    char text[16];
    EXPECT_EQ(CommIpAddrUnIntToStr(ip4(192, 168, 1, 5), text), 0);
    EXPECT_STREQ(text, "192.168.1.5");
    EXPECT_EQ(CommIpAddrUnIntToStr(0xFFFFFFFFu, text), 0);
    EXPECT_STREQ(text, "255.255.255.255");
    EXPECT_EQ(CommIpAddrUnIntToStr(1, nullptr), -1);

    EXPECT_EQ(CommIpAddrStrToUnInt("1.2.3.4"), ip4(1, 2, 3, 4));
    EXPECT_EQ(CommIpAddrStrToUnInt("bad"), 0xFFFFFFFFu);
    EXPECT_EQ(CommIpAddrStrToUnInt(nullptr), 0xFFFFFFFFu);
}

TEST(CommIpMask, BitsToNumberTable) {
    struct Case {
        unsigned bits;
        int result;
        uint32_t mask;
    } cases[] = {
        {24, 0, 0xFFFFFF00u}, {32, 0, 0xFFFFFFFFu},  {0, 0, 0},
        {1, 0, 0x80000000u},  {31, 0, 0xFFFFFFFEu},  {280, 0, 0xFFFFFF00u},
        {256, 0, 0},          {33, -1, 0x12345678u}, {255, -1, 0x12345678u},
    };
    for (const Case &c : cases) {
        uint32_t mask = 0x12345678u;
        EXPECT_EQ(CommIpMaskFromBitToUnInt(&mask, c.bits), c.result) << c.bits;
        EXPECT_EQ(mask, c.mask) << c.bits;
    }
    EXPECT_EQ(CommIpMaskFromBitToUnInt(nullptr, 8), -1);
}

TEST(CommIpMask, NumberToBitsTable) {
    struct Case {
        uint32_t mask;
        uint8_t bits;
    } cases[] = {
        {0xFFFFFF00u, 24}, {0x0000FF00u, 24}, {0, 0}, {0xFFFFFFFFu, 32}, {1, 32}, {0x80000000u, 1}, {0xF0F0F000u, 20},
    };
    for (const Case &c : cases) {
        uint8_t bits = 99;
        EXPECT_EQ(CommIpMaskFromUnIntToBit(&bits, c.mask), 0);
        EXPECT_EQ(bits, c.bits) << std::hex << c.mask;
    }
    EXPECT_EQ(CommIpMaskFromUnIntToBit(nullptr, 0xFF), -1);
}

TEST(CommIpMask, ConversionsAreInverseOn0To32) {
    for (unsigned n = 0; n <= 32; ++n) {
        uint32_t mask = 0;
        uint8_t bits = 99;
        ASSERT_EQ(CommIpMaskFromBitToUnInt(&mask, n), 0);
        ASSERT_EQ(CommIpMaskFromUnIntToBit(&bits, mask), 0);
        EXPECT_EQ(bits, n);
        uint32_t again = 0;
        CommIpMaskFromBitToUnInt(&again, bits);
        EXPECT_EQ(again, mask);
    }
}

TEST(CommIp4, FromAndToAddressValue) {
    uint32_t ip = 0, mask = 0;
    CommIpAddr a = addrOf("192.168.1.5", 24);
    EXPECT_EQ(CommGetIp4FromIpAddr(&ip, &mask, &a), 0);
    EXPECT_EQ(ip, ip4(192, 168, 1, 5));
    EXPECT_EQ(mask, 0xFFFFFF00u);

    CommIpAddr v6 = addrOf("::1", 16);
    EXPECT_EQ(CommGetIp4FromIpAddr(&ip, &mask, &v6), 0);
    EXPECT_EQ(ip, 0xFFFFFFFFu);
    EXPECT_EQ(mask, 0xFFFF0000u);

    ip = mask = 7;
    EXPECT_EQ(CommGetIp4FromIpAddr(nullptr, &mask, &a), -1);
    EXPECT_EQ(CommGetIp4FromIpAddr(&ip, nullptr, &a), -1);
    EXPECT_EQ(CommGetIp4FromIpAddr(&ip, &mask, nullptr), -1);
    EXPECT_EQ(ip, 7u);
    EXPECT_EQ(mask, 7u);

    CommIpAddr b;
    std::memset(&b, 0xA5, sizeof b);
    EXPECT_EQ(CommGetIpAddrFromIp4(&b, ip4(10, 0, 0, 1), 0xFFFF0000u), 0);
    CommIpAddr expected;
    std::memset(&expected, 0, sizeof expected);
    expected.unType = 1;
    expected.aucAddr[0] = 10;
    expected.aucAddr[3] = 1;
    expected.ucMask = 16;
    EXPECT_EQ(std::memcmp(&b, &expected, sizeof b), 0);
    EXPECT_EQ(CommGetIpAddrFromIp4(nullptr, 1, 1), -1);
}

TEST(CommIpPrints, OnlyWhileTestFlagIsSet) {
    CommIpAddr a = addrOf("10.0.0.1", 8);
    nIpv6TestFlag = 0;
    EXPECT_EQ(capturedStdout([&] {
                  CommIpv6AddrPrint(&a, "wan");
                  CommIpv6StrPrint(&a, "wan");
              }),
              "");
    nIpv6TestFlag = 1;
    std::string bytes = "0x0a:0x00:0x00:0x01:";
    for (int i = 0; i < 12; ++i)
        bytes += "0x00:";
    EXPECT_EQ(capturedStdout([&] { CommIpv6AddrPrint(&a, "wan"); }),
              "\r\n                 wan address:" + bytes + " mask:   8 type:   1\r\n");
    EXPECT_EQ(capturedStdout([&] { CommIpv6StrPrint(&a, "wan"); }),
              "\r\n                 wan  ip address: 10.0.0.1 mask:   8 type:   1\r\n");
    CommIpAddr v6 = addrOf("2001:db8::1", 64);
    EXPECT_EQ(capturedStdout([&] { CommIpv6StrPrint(&v6, "lan"); }),
              "\r\n                 lan  ip address: 2001:db8::1 mask:  64 type:   2\r\n");
    nIpv6TestFlag = 0;

    const std::string nullMessage = "CommIpv6AddrPrint: address pointer is null \r";
    EXPECT_EQ(capturedStdout([&] { CommIpv6AddrPrint(nullptr, "x"); }), nullMessage);
    EXPECT_EQ(capturedStdout([&] { CommIpv6StrPrint(nullptr, "x"); }), nullMessage);
    EXPECT_EQ(capturedStdout([&] { CommIpv6StrPrint(&a, nullptr); }), nullMessage);
}

TEST(CommStubs, MacLookupAndNeighbourCommand) {
    CommIpAddr a = addrOf("10.0.0.1", 8);
    uint8_t mac[6] = {1, 2, 3, 4, 5, 6};
    EXPECT_EQ(CommGetMacFromIp(nullptr, &a), -1);
    EXPECT_EQ(CommGetMacFromIp(mac, &a), 0);
    EXPECT_EQ(mac[0], 1);
    EXPECT_EQ(mac[5], 6);
    EXPECT_EQ(nat_nd6_lookup_cmd(&a, mac), -1);
    EXPECT_EQ(nat_nd6_lookup_cmd(nullptr, nullptr), -1);
}

TEST(CommSocketSetCloseExec, SetsFlagOrReportsFailure) {
    int fds[2];
    ASSERT_EQ(pipe(fds), 0);
    ASSERT_EQ(fcntl(fds[0], F_SETFD, 0), 0);
    EXPECT_EQ(CommSocketSetCloseExec(fds[0]), 0);
    EXPECT_NE(fcntl(fds[0], F_GETFD) & FD_CLOEXEC, 0);
    close(fds[0]);
    close(fds[1]);
    EXPECT_EQ(CommSocketSetCloseExec(fds[1]), 1);  // closed
    EXPECT_EQ(CommSocketSetCloseExec(-1), -1);
}

TEST(CommGetProtclModuleVersion, SizeTestIsInverted) {
    const std::string version = gProtclModuleVersion;
    ASSERT_LE(version.size(), 30u);
    EXPECT_EQ(version.rfind("SIP:", 0), 0u) << version;
    EXPECT_NE(version.find("  H.248:"), std::string::npos) << version;
    ASSERT_GE(version.size(), 16u);

    struct Case {
        unsigned size, bytes;  // size given, bytes zeroed (its low byte)
        std::string text;
        bool message;
    } cases[] = {
        {16, 16, version.substr(0, 15), false},
        {31, 31, version, false},
        {1, 1, "", false},
        {32, 32, "", true},
        {64, 64, "", true},
        {16 + 256, 16, version.substr(0, 15), false},
    };
    for (const Case &c : cases) {
        std::unique_ptr<char[]> buf(new char[c.bytes]);
        std::memset(buf.get(), 'x', c.bytes);
        std::string out = capturedStdout([&] { CommGetProtclModuleVersion(buf.get(), c.size); });
        EXPECT_EQ(out, c.message ? "SIP module version len is too long." : "") << c.size;
        std::string expected = c.text + std::string(c.bytes - c.text.size(), '\0');
        EXPECT_EQ(std::string(buf.get(), c.bytes), expected) << c.size;
    }
    char untouched = 'x';
    CommGetProtclModuleVersion(&untouched, 256);  // low byte 0: nothing
    EXPECT_EQ(untouched, 'x');
    CommGetProtclModuleVersion(nullptr, 16);
}

}  // namespace
