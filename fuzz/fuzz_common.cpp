// The text, number and IP-address utilities with arbitrary text.  The first byte picks the
// routine, a few more bytes its numeric arguments; the rest is the text, in a heap buffer of
// exactly its size (terminated), so AddressSanitizer sees any byte touched past it.  Output
// buffers are exactly as large as each routine's contract says.
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "fuzz_support.h"
#include "tr104.h"

namespace {

using tr104fuzz::Input;

// The text in a buffer of exactly its length + 1 (extra bytes on request).
std::vector<char> cText(const std::string &s, size_t room = 0) {
    std::vector<char> buf(s.size() + 1 + room, 0);
    std::memcpy(buf.data(), s.data(), s.size());
    return buf;
}

// The space collapser never returns for a region with two or more pairs of adjacent spaces (a
// property its callers rely on, documented with it): such text is not handed to it.
std::string withoutSpaceRuns(std::string s) {
    for (size_t i = 1; i < s.size(); ++i) {
        if (s[i] == ' ' && s[i - 1] == ' ') {
            s[i] = '_';
        }
    }
    return s;
}

CommIpAddr address(Input &in) {
    CommIpAddr a{};
    in.bytes(&a, sizeof(a));
    return a;
}

using Routine = void (*)(Input &in);

const Routine kRoutines[] = {
    [](Input &in) {
        const std::string a = in.text(255), b = in.rest();
        stricmp(cText(a).data(), cText(b).data());
    },
    [](Input &in) {
        std::vector<char> text = cText(in.rest());
        std::vector<unsigned char> hex(std::strlen(text.data()) / 2 + 1);
        rvConvertStrToHexs(text.data(), hex.data());
    },
    [](Input &in) { rvGetNumberFromStr(cText(in.rest()).data()); },
    [](Input &in) {
        const char fill = static_cast<char>(in.byte());
        const int width = in.word<uint16_t>() % 300;
        const int left = in.byte() & 1;
        const std::string s = in.rest();
        const size_t len = std::strlen(s.c_str());
        std::vector<char> buf = cText(s, static_cast<size_t>(width) > len ? width - len : 0);
        rvFillStringWithChar(buf.data(), fill, width, left);
    },
    [](Input &in) {
        const std::string s = in.rest();
        rvValidDecimal(cText(s).data());
        validDecimal(cText(s).data());
        check_ipaddr(cText(s).data());
        rvVerifyIpValid(cText(s).data());
        CommCheckIpValid(cText(s).data());
        CommIpAddrStrToUnInt(cText(s).data());
        delete_space_from_string(cText(s).data());
    },
    [](Input &in) {
        std::string s = withoutSpaceRuns(in.rest());
        std::vector<char> buf = cText(s);
        rvSkipAllRedundantSpace(buf.data(), static_cast<int>(std::strlen(buf.data())));
    },
    [](Input &in) {
        const int len = in.word<uint16_t>();
        std::vector<char> buf = cText(in.rest());
        rvSkipAllInvalidSpaceInSdp(buf.data(), std::min<int>(len, static_cast<int>(buf.size())));
    },
    [](Input &in) {
        const int lo = in.word<int16_t>(), hi = in.word<int16_t>();
        const int capacity = in.byte();
        std::vector<char> list = cText(withoutSpaceRuns(in.rest()));
        // Every item after the capacity is reached still stores one value past it.
        std::vector<uint16_t> values(static_cast<size_t>(capacity) + list.size() + 1);
        int count = 0;
        rvResolveNumList(list.data(), lo, hi, capacity, values.data(), &count);
    },
    [](Input &in) {
        const uint8_t mask = in.byte();
        const std::string s = in.rest();
        CommIpAddr a{};
        if (CommGetIpValueByStr(&a, cText(s).data(), mask) == 1) {
            char text[64];
            uint8_t bits = 0;
            CommGetIpStrByValue(text, &bits, &a, sizeof(text));
            CommIpAddr b{};
            CommIpAddrCopy(&b, &a);
            if (CommIpAddrCompare(&a, &b) != 1 || CommIpAddrInSameSubnet(a, b) != 1) {
                std::abort();  // an address equals its copy and lies in its own subnet
            }
        }
    },
    [](Input &in) {
        CommIpAddr a = address(in), b = address(in);
        const unsigned size = in.byte() % 64;
        std::vector<char> text(size > 0 ? size : 1);
        uint8_t bits = 0;
        CommGetIpStrByValue(text.data(), &bits, &a, size);
        CommIpAddrCompare(&a, &b);
        CommIpAddrInSameSubnet(a, b);
        uint32_t ip = 0, mask = 0;
        CommGetIp4FromIpAddr(&ip, &mask, &a);
        CommGetIpAddrFromIp4(&b, ip, mask);
    },
    [](Input &in) {
        const uint32_t word = in.word<uint32_t>();
        char text[16];
        CommIpAddrUnIntToStr(word, text);
        uint32_t mask = 0;
        uint8_t bits = 0;
        CommIpMaskFromBitToUnInt(&mask, word);
        CommIpMaskFromUnIntToBit(&bits, word);
    },
    [](Input &in) {
        const unsigned size = in.word<uint32_t>();
        std::vector<char> out((size & 0xFFu) > 0 ? size & 0xFFu : 1);
        CommGetProtclModuleVersion(out.data(), size);
    },
};

}  // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***) {
    tr104fuzz::setUp();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    Input in(data, size);
    kRoutines[in.byte() % (sizeof(kRoutines) / sizeof(kRoutines[0]))](in);
    return 0;
}
