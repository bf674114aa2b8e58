// IP address utilities: one 24-byte value for IPv4 and IPv6 addresses, conversions to and
// from text and 32-bit numbers, subnet tests, diagnostic prints and the protocol module
// version text.  Exported for the device's other components as well as used by the handlers.
#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <cstddef>
#include <cstdio>
#include <cstring>

#include "tr104/common.h"

static_assert(sizeof(CommIpAddr) == 24);
static_assert(offsetof(CommIpAddr, unType) == 0);
static_assert(offsetof(CommIpAddr, aucAddr) == 4);
static_assert(offsetof(CommIpAddr, ucMask) == 20);
static_assert(offsetof(CommIpAddr, aucReserved) == 21);

namespace {

// inet_ntop output buffer: long enough for any IPv6 text.
constexpr unsigned kIpTextLen = 51;
// Dotted IPv4 text with its terminator.
constexpr unsigned kIp4TextLen = 16;

constexpr uint8_t kIpv6Loopback[16] = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1};

}  // namespace

int nIpv6TestFlag = 0;
// Two protocol labels with their module versions, two spaces apart; at most 30 characters.
char gProtclModuleVersion[COMM_PROTCL_VERSION_LEN] = "SIP:V2.4.17  H.248:V1.9.06";
static_assert(sizeof "SIP:V2.4.17  H.248:V1.9.06" <= COMM_PROTCL_VERSION_LEN);

extern "C" {

int CommCheckIpValid(const char *pcIpStr) {
    if (pcIpStr == nullptr || pcIpStr[0] == '\0')
        return -1;
    uint8_t buf[16];
    if (inet_pton(AF_INET, pcIpStr, buf) == 1)
        return COMM_IP_TYPE_V4;
    if (inet_pton(AF_INET6, pcIpStr, buf) == 1)
        return COMM_IP_TYPE_V6;
    return 0;
}

int CommGetIpValueByStr(CommIpAddr *pAddr, const char *pcIpStr, uint8_t ucMask) {
    if (pAddr == nullptr || pcIpStr == nullptr) {
        std::printf("input error, Addr or Str is NULL \r");
        return 0;
    }
    // Only the low byte of the classification counts: -1 (empty text) is no type either.
    uint8_t type = static_cast<uint8_t>(CommCheckIpValid(pcIpStr));
    if (type == COMM_IP_TYPE_V4) {
        inet_pton(AF_INET, pcIpStr, pAddr->aucAddr);
        std::memset(pAddr->aucAddr + 4, 0, sizeof pAddr->aucAddr - 4);
    } else if (type == COMM_IP_TYPE_V6) {
        inet_pton(AF_INET6, pcIpStr, pAddr->aucAddr);
    } else {
        std::printf("input error, ip type nor ipv4 or ipv6");
        return 0;
    }
    pAddr->unType = type;
    pAddr->ucMask = ucMask;
    return 1;
}

int CommGetIpStrByValue(char *pcIpStr, uint8_t *pucMask, const CommIpAddr *pAddr, unsigned int unSize) {
    if (pAddr == nullptr || pcIpStr == nullptr || pucMask == nullptr) {
        std::printf("input data errpr\r");
        return 0;
    }
    if (pAddr->unType != COMM_IP_TYPE_V4 && pAddr->unType != COMM_IP_TYPE_V6)
        return 0;
    char text[kIpTextLen] = {};
    inet_ntop(pAddr->unType == COMM_IP_TYPE_V6 ? AF_INET6 : AF_INET, pAddr->aucAddr, text, sizeof text);
    // At most unSize characters; the terminator follows only when the text is shorter.  No
    // padding is written beyond the terminator.
    size_t len = std::strlen(text);
    if (len < unSize) {
        std::memcpy(pcIpStr, text, len + 1);
    } else {
        std::memcpy(pcIpStr, text, unSize);
    }
    *pucMask = pAddr->ucMask;
    return 1;
}

int CommIpAddrCopy(CommIpAddr *pDstAddr, const CommIpAddr *pSrcAddr) {
    if (pDstAddr == nullptr || pSrcAddr == nullptr)
        return 0;
    pDstAddr->unType = pSrcAddr->unType;
    std::memcpy(pDstAddr->aucAddr, pSrcAddr->aucAddr, sizeof pDstAddr->aucAddr);
    pDstAddr->ucMask = pSrcAddr->ucMask;
    return 1;
}

int CommIpAddrCompare(const CommIpAddr *pDstAddr, const CommIpAddr *pSrcAddr) {
    if (pDstAddr == nullptr || pSrcAddr == nullptr) {
        std::printf("\n input error, pDstAddr = %p, pSrcAddr = %p\n", static_cast<const void *>(pDstAddr),
                    static_cast<const void *>(pSrcAddr));
        return 0;
    }
    return pDstAddr->unType == pSrcAddr->unType &&
           std::memcmp(pDstAddr->aucAddr, pSrcAddr->aucAddr, sizeof pDstAddr->aucAddr) == 0 &&
           pDstAddr->ucMask == pSrcAddr->ucMask;
}

int CommIpAddrInSameSubnet(CommIpAddr stAddr, CommIpAddr stSubnet) {
    if (stSubnet.unType == COMM_IP_TYPE_V6 && stSubnet.ucMask == 0 &&
        std::memcmp(stSubnet.aucAddr, kIpv6Loopback, sizeof kIpv6Loopback) == 0) {
        return 1;
    }
    unsigned bits = stSubnet.ucMask;
    unsigned whole = bits / 8;
    // A prefix length beyond the 16 address bytes compares all of them and nothing more.
    if (whole >= sizeof stAddr.aucAddr) {
        return std::memcmp(stAddr.aucAddr, stSubnet.aucAddr, sizeof stAddr.aucAddr) == 0;
    }
    if (std::memcmp(stAddr.aucAddr, stSubnet.aucAddr, whole) != 0)
        return 0;
    unsigned rest = bits % 8;
    return ((stAddr.aucAddr[whole] ^ stSubnet.aucAddr[whole]) >> (8 - rest)) == 0;
}

int CommIpAddrUnIntToStr(uint32_t unIpAddr, char *pcIpStr) {
    if (pcIpStr == nullptr)
        return -1;
    // The text inet_ntoa gives, made in a local buffer so that concurrent callers never share
    // the C library's static one.
    in_addr addr{};
    addr.s_addr = unIpAddr;
    char text[kIp4TextLen] = {};
    inet_ntop(AF_INET, &addr, text, sizeof text);
    std::memcpy(pcIpStr, text, std::strlen(text) + 1);
    return 0;
}

uint32_t CommIpAddrStrToUnInt(const char *pcIpStr) {
    if (pcIpStr == nullptr)
        return 0xFFFFFFFFu;
    return inet_addr(pcIpStr);
}

int CommIpMaskFromBitToUnInt(uint32_t *punMask, unsigned int unBits) {
    unsigned bits = unBits & 0xFFu;
    if (punMask == nullptr || bits >= 33)
        return -1;
    *punMask = bits == 0 ? 0u : 0xFFFFFFFFu << (32 - bits);
    return 0;
}

int CommIpMaskFromUnIntToBit(uint8_t *pucBits, uint32_t unMask) {
    if (pucBits == nullptr)
        return -1;
    *pucBits = unMask == 0 ? 0 : static_cast<uint8_t>(32 - __builtin_ctz(unMask));
    return 0;
}

int CommGetIp4FromIpAddr(uint32_t *punIpAddr, uint32_t *punMask, const CommIpAddr *pAddr) {
    if (punIpAddr == nullptr || punMask == nullptr || pAddr == nullptr)
        return -1;
    CommIpMaskFromBitToUnInt(punMask, pAddr->ucMask);
    char text[kIpTextLen] = {};
    uint8_t mask = 0;
    CommGetIpStrByValue(text, &mask, pAddr, sizeof text - 1);
    *punIpAddr = CommIpAddrStrToUnInt(text);
    return 0;
}

int CommGetIpAddrFromIp4(CommIpAddr *pAddr, uint32_t unIpAddr, uint32_t unMask) {
    if (pAddr == nullptr)
        return -1;
    std::memset(pAddr, 0, sizeof *pAddr);
    pAddr->unType = COMM_IP_TYPE_V4;
    char text[kIp4TextLen] = {};
    CommIpAddrUnIntToStr(unIpAddr, text);
    uint8_t bits = 0;
    CommIpMaskFromUnIntToBit(&bits, unMask);
    CommGetIpValueByStr(pAddr, text, bits);
    return 0;
}

void CommIpv6AddrPrint(const CommIpAddr *pAddr, const char *pcLabel) {
    if (pAddr == nullptr || pcLabel == nullptr) {
        std::printf("CommIpv6AddrPrint: address pointer is null \r");
        return;
    }
    if (!nIpv6TestFlag)
        return;
    std::printf("\r\n%20s address:", pcLabel);
    for (uint8_t byte : pAddr->aucAddr)
        std::printf("0x%02x:", byte);
    std::printf(" mask:%4d type:%4d\r\n", pAddr->ucMask, static_cast<int>(pAddr->unType));
}

void CommIpv6StrPrint(const CommIpAddr *pAddr, const char *pcLabel) {
    if (pAddr == nullptr || pcLabel == nullptr) {
        // The same message as CommIpv6AddrPrint, routine name included.
        std::printf("CommIpv6AddrPrint: address pointer is null \r");
        return;
    }
    char text[kIpTextLen] = {};
    uint8_t mask = 0;
    unsigned room = pAddr->unType == COMM_IP_TYPE_V6 ? kIpTextLen : kIp4TextLen;
    CommGetIpStrByValue(text, &mask, pAddr, room - 1);
    if (!nIpv6TestFlag)
        return;
    std::printf("\r\n%20s  ip address:", pcLabel);
    std::printf(" %s mask:%4d type:%4d\r\n", text, pAddr->ucMask, static_cast<int>(pAddr->unType));
}

int CommGetMacFromIp(uint8_t *pucMac, const CommIpAddr *pAddr) {
    if (pucMac == nullptr)
        return -1;
    // The neighbour lookup is not provided: the address is formatted and nothing is written.
    char text[kIpTextLen] = {};
    uint8_t mask = 0;
    CommGetIpStrByValue(text, &mask, pAddr, sizeof text - 1);
    return 0;
}

int nat_nd6_lookup_cmd(const CommIpAddr *, uint8_t *) { return -1; }

int CommSocketSetCloseExec(int nSocket) {
    if (nSocket < 0)
        return -1;
    int flags = fcntl(nSocket, F_GETFD);
    int ret = fcntl(nSocket, F_SETFD, flags | FD_CLOEXEC);
    // 0 done, 1 failed: the sign bit of fcntl's result.
    return static_cast<int>(static_cast<unsigned>(ret) >> 31);
}

void CommGetProtclModuleVersion(char *pcVersion, unsigned int unSize) {
    if (pcVersion == nullptr)
        return;
    unsigned size = unSize & 0xFFu;
    std::memset(pcVersion, 0, size);
    // The test is kept as the device's components know it: only buffers below 32 bytes
    // receive the text.
    if (size < 32) {
        if (size > 0)
            std::strncpy(pcVersion, gProtclModuleVersion, size - 1);
    } else {
        std::printf("SIP module version len is too long.");
    }
}

}  // extern "C"
