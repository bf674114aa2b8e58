// The client's calls of two-argument handlers (device::integer, device::text) and the rows of the
// device handlers that are not one data-model parameter (get_act_led takes nothing; the codec
// list texts and the web records have no path).  Included by ctl/value_kinds.h.
#pragma once

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <span>
#include <string>
#include <vector>

namespace tr104ctl {

namespace device {

using TwoArguments = int (*)(int nFlag, void *pValue);

inline CustomResult callTwo(void *handler, bool set, const std::string &value, bool text) {
    CustomResult r;
    std::vector<char> buffer(text ? 2048 : sizeof(int), 0);
    if (set && text) {
        std::memcpy(buffer.data(), value.c_str(), std::min(value.size(), buffer.size() - 1));
    } else if (set) {
        errno = 0;
        char *end = nullptr;
        const long v = std::strtol(value.c_str(), &end, 10);
        if (value.empty() || errno != 0 || *end != '\0' || v < INT32_MIN || v > INT32_MAX) {
            r.message = "the value must be an integer";
            return r;
        }
        const int word = static_cast<int>(v);
        std::memcpy(buffer.data(), &word, sizeof(word));
    }
    r.called = true;
    r.rc = reinterpret_cast<TwoArguments>(handler)(set ? 1 : 0, buffer.data());
    if (text) {
        r.shown.assign(buffer.data(), strnlen(buffer.data(), buffer.size()));
    } else {
        int word;
        std::memcpy(&word, buffer.data(), sizeof(word));
        r.shown = std::to_string(word);
    }
    return r;
}

inline CustomResult integer(void *handler, bool set, const std::string &value, int *) {
    return callTwo(handler, set, value, false);
}
inline CustomResult text(void *handler, bool set, const std::string &value, int *) {
    return callTwo(handler, set, value, true);
}
// get_act_led(): no arguments, the LED state as its result (a get only).
inline CustomResult led(void *handler, bool set, const std::string &, int *) {
    CustomResult r;
    if (set) {
        r.message = "get_act_led is read only";
        return r;
    }
    r.called = true;
    const int state = reinterpret_cast<int (*)()>(handler)();
    r.rc = state < 0 ? state : 0;
    r.shown = std::to_string(state);
    return r;
}

}  // namespace device

// Integers of a device-wide value, texts of one, and line handlers.
#define TR104_DEVICE_INT(name) {name, ValueKind::Custom, 0, -1, device::integer}
#define TR104_DEVICE_TEXT(name) {name, ValueKind::Custom, 0, -1, device::text}

inline constexpr HandlerKind kDeviceKindRows[] = {
    {"get_act_led", ValueKind::Custom, 0, -1, device::led},
    {"Tr104VoiceRecordItemNumForWEB", ValueKind::Custom, 0, -1, device::integer},
    {"Tr104VoiceRecordForWEB", ValueKind::Custom, 0, -1, device::text},
    {"Tr104LineCodecList", ValueKind::Text, kDefaultText},
    {"Tr069LineCodecListCodecType", ValueKind::Text, kDefaultText},
    {"Tr104LineAuthUserNameAndURIForTr069", ValueKind::Text, kAddressText, 5},
    // The map serves the vendor path through the SIP variant; the wrapper serves either protocol.
    {"Tr104LineJitterBufferTarget", ValueKind::Integer, 0},
};

#undef TR104_DEVICE_INT
#undef TR104_DEVICE_TEXT

inline constexpr std::span<const HandlerKind> kDeviceKinds{kDeviceKindRows};

}  // namespace tr104ctl
