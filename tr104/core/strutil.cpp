// Text and number utilities shared by the handlers and exported to the device's other
// components.  All of them work in place on NUL-terminated byte strings and keep no state.
#include <arpa/inet.h>
#include <cctype>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "tr104/common.h"

namespace {

bool isDigit(char c) { return c >= '0' && c <= '9'; }

// Value of one hexadecimal digit; anything else counts as 0.
unsigned hexValue(char c) {
    if (isDigit(c))
        return static_cast<unsigned>(c - '0');
    if (c >= 'a' && c <= 'f')
        return static_cast<unsigned>(c - 'a' + 10);
    if (c >= 'A' && c <= 'F')
        return static_cast<unsigned>(c - 'A' + 10);
    return 0;
}

// Decimal value of text already checked for digits, clamped to the int range.  The clamp
// makes out-of-range numbers behave the same on 32-bit and 64-bit `long` platforms.
long long decimalValue(const char *text) {
    long long v = std::strtoll(text, nullptr, 10);
    if (v > INT_MAX)
        return INT_MAX;
    if (v < INT_MIN)
        return INT_MIN;
    return v;
}

// Removes n bytes at pos from the region [0, end) by shifting its tail left, and writes n
// spaces at the region's end.
void shiftOut(char *buf, int end, int pos, int n) {
    std::memmove(buf + pos, buf + pos + n, static_cast<size_t>(end - pos - n));
    std::memset(buf + end - n, ' ', static_cast<size_t>(n));
}

// Length of the session-description white-space unit at i within [0, end): 1 for a space or
// a line feed, 2 for a carriage return directly followed by a line feed, 0 for anything else.
int sdpSpaceUnit(const char *buf, int i, int end) {
    if (buf[i] == ' ' || buf[i] == '\n')
        return 1;
    if (buf[i] == '\r' && i + 1 < end && buf[i + 1] == '\n')
        return 2;
    return 0;
}

}  // namespace

int sdpMdy = 0;

extern "C" {

int stricmp(const char *s1, const char *s2) {
    if (s1 == nullptr || s2 == nullptr)
        return -1;
    for (; *s1 != '\0'; ++s1, ++s2) {
        if (*s2 == '\0')
            return 1;
        int diff = std::tolower(static_cast<unsigned char>(*s1)) - std::tolower(static_cast<unsigned char>(*s2));
        if (diff != 0)
            return diff;
    }
    return *s2 != '\0' ? -1 : 0;
}

int rvConvertStrToHexs(const char *pcStr, unsigned char *pucHex) {
    if (pcStr == nullptr || pucHex == nullptr)
        return 0;
    size_t len = std::strlen(pcStr);
    if (len % 2 != 0)
        return 0;
    for (size_t i = 0; i < len; i += 2) {
        pucHex[i / 2] = static_cast<unsigned char>((hexValue(pcStr[i]) << 4) | hexValue(pcStr[i + 1]));
    }
    return 1;
}

int rvGetNumberFromStr(char *pcStr) {
    if (pcStr == nullptr)
        return 0;
    int kept = 0;
    for (const char *p = pcStr; *p != '\0'; ++p) {
        if (isDigit(*p))
            pcStr[kept++] = *p;
    }
    pcStr[kept] = '\0';
    return kept;
}

int rvFillStringWithChar(char *pcStr, char cFill, int nWidth, int nLeft) {
    if (pcStr == nullptr)
        return 0;
    int len = static_cast<int>(strnlen(pcStr, 255));
    if (len >= 255)
        return 0;
    if (nWidth <= len)
        return 1;
    size_t pad = static_cast<size_t>(nWidth - len);
    if (nLeft != 0) {
        std::memmove(pcStr + pad, pcStr, static_cast<size_t>(len));
        std::memset(pcStr, cFill, pad);
    } else {
        std::memset(pcStr + len, cFill, pad);
    }
    pcStr[nWidth] = '\0';
    return 1;
}

int rvValidDecimal(const char *pcStr) {
    if (pcStr == nullptr)
        return 0;
    for (const char *p = pcStr; *p != '\0'; ++p) {
        if (p == pcStr && *p == '-')
            continue;
        if (!isDigit(*p))
            return 0;
    }
    return 1;
}

int validDecimal(const char *pcStr) {
    if (pcStr == nullptr)
        return 0;
    // The length is a 16-bit count: longer texts are looked at modulo 65536 characters.
    uint16_t len = static_cast<uint16_t>(std::strlen(pcStr));
    for (uint16_t i = 0; i < len; ++i) {
        if (!isDigit(pcStr[i]))
            return 0;
    }
    return 1;
}

void delete_space_from_string(char *pcStr) {
    if (pcStr == nullptr)
        return;
    size_t lead = 0;
    while (pcStr[lead] == ' ')
        ++lead;
    size_t len = std::strlen(pcStr + lead);
    if (lead != 0)
        std::memmove(pcStr, pcStr + lead, len + 1);
    while (len > 0 && pcStr[len - 1] == ' ')
        pcStr[--len] = '\0';
}

void rvSkipAllRedundantSpace(char *pcBuf, int nLen) {
    if (pcBuf == nullptr || nLen < 1)
        return;
    bool afterSpace = false;
    for (int i = 0; i < nLen; ++i) {
        if (pcBuf[i] != ' ') {
            afterSpace = false;
        } else if (!afterSpace) {
            afterSpace = true;
        } else {
            // Remove the first of the two spaces; the region keeps its length, so the freed
            // byte becomes a space at its end.  Resume at the removed position as if no space
            // preceded it (the loop's increment lands on i - 1).
            shiftOut(pcBuf, nLen, i - 1, 1);
            i -= 2;
            afterSpace = false;
        }
    }
}

void rvSkipAllInvalidSpaceInSdp(char *pcBuf, int nLen) {
    if (pcBuf == nullptr || nLen < 1)
        return;
    if (sdpMdy)
        std::printf("before= %.*s\r\n", nLen, pcBuf);
    int end = nLen;
    int prev = -1;  // start of the white-space unit just scanned, -1 after anything else
    int i = 0;
    while (i < end) {
        int unit = sdpSpaceUnit(pcBuf, i, end);
        if (unit == 0) {
            prev = -1;
            ++i;
        } else if (prev < 0) {
            prev = i;
            i += unit;
        } else {
            // Two units in a row: an earlier space goes; after a line break the later unit
            // goes.  Either way the scan resumes at the earlier unit's position so that longer
            // runs collapse fully, and the padding written at the end is no longer scanned.
            int removePos = pcBuf[prev] == ' ' ? prev : i;
            int removeLen = pcBuf[prev] == ' ' ? 1 : unit;
            shiftOut(pcBuf, end, removePos, removeLen);
            end -= removeLen;
            i = prev;
            prev = -1;
        }
    }
    if (sdpMdy)
        std::printf("after= %.*s\r\n", nLen, pcBuf);
}

int rvResolveNumList(char *pcList, int nMin, int nMax, int nCapacity, uint16_t *pusValues, int *pnCount) {
    if (pcList == nullptr || pusValues == nullptr || pnCount == nullptr)
        return RV_NUMLIST_NULL_ARG;
    int count = 0;
    char *save = nullptr;
    // strtok_r: empty items between commas are skipped, as in the address checks.
    for (char *item = strtok_r(pcList, ",", &save); item != nullptr; item = strtok_r(nullptr, ",", &save)) {
        rvSkipAllRedundantSpace(item, static_cast<int>(std::strlen(item)));
        char *tilde = std::strchr(item, '~');
        if (tilde != nullptr) {
            if (!rvValidDecimal(tilde + 1))
                return RV_NUMLIST_BAD_RANGE_END;
            long long first = decimalValue(item);
            long long last = decimalValue(tilde + 1);
            if (last < first || first < nMin || first > nMax || last > nMax)
                return RV_NUMLIST_BAD_RANGE;
            // The capacity is tested after each stored value and ends only this range.
            for (long long v = first; v <= last; ++v) {
                pusValues[count++] = static_cast<uint16_t>(v);
                if (count >= nCapacity)
                    break;
            }
        } else {
            if (!rvValidDecimal(item))
                return RV_NUMLIST_BAD_NUMBER;
            long long v = decimalValue(item);
            if (v < nMin || v > nMax)
                return RV_NUMLIST_OUT_OF_RANGE;
            pusValues[count++] = static_cast<uint16_t>(v);
            if (count >= nCapacity)
                break;
        }
    }
    *pnCount = count;
    return RV_NUMLIST_OK;
}

int check_ipaddr(const char *pcIpAddr) {
    if (pcIpAddr == nullptr || pcIpAddr[0] == '\0')
        return 0;
    char copy[20] = {};
    std::strncpy(copy, pcIpAddr, sizeof copy - 1);
    char *save = nullptr;
    char *part = strtok_r(copy, ".", &save);
    for (int n = 0; n < 4; ++n, part = strtok_r(nullptr, ".", &save)) {
        if (part == nullptr)
            return -1;
        delete_space_from_string(part);
        if (!validDecimal(part) || decimalValue(part) >= 256)
            return -1;
    }
    return part == nullptr ? 0 : -1;
}

int rvVerifyIpValid(const char *pcIpAddr) {
    if (pcIpAddr == nullptr)
        return -1;
    size_t len = strnlen(pcIpAddr, 69);
    if (len == 0 || len >= 69)
        return -1;
    for (size_t i = 0; i < len; ++i) {
        if (std::isalpha(static_cast<unsigned char>(pcIpAddr[i])))
            return 0;
    }
    int dots = 0;
    for (size_t i = 0; i < len; ++i) {
        if (pcIpAddr[i] == '.') {
            ++dots;
        } else if (!isDigit(pcIpAddr[i])) {
            return -1;
        }
    }
    if (dots != 3)
        return -1;
    in_addr_t addr = inet_addr(pcIpAddr);
    if (addr == INADDR_NONE || addr == 0)
        return -1;
    return 1;
}

}  // extern "C"
