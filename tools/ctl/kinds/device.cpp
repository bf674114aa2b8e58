// The device handlers that are not one data-model parameter: get_act_led takes nothing; the
// codec list texts and the web records have no path.
#include <string>

#include "ctl/kinds.h"

namespace tr104ctl {

namespace device {

// get_act_led(): no arguments, the LED state as its result (a get only).
CustomResult led(void *handler, bool set, const std::string &, int *) {
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

namespace {

// A two-argument text without a path: the client's buffer of 2048 bytes.
constexpr unsigned int kRecordText = 2048;
// Server address and line identity texts: at most 65 characters and a terminator.
constexpr unsigned int kAddressText = 66;

constexpr HandlerKind kDeviceKindRows[] = {
    customRow("get_act_led", device::led),
    valueRow("Tr104VoiceRecordItemNumForWEB", 2, TR104_MAP_VALUE_INT, 4),
    valueRow("Tr104VoiceRecordForWEB", 2, TR104_MAP_VALUE_TEXT, kRecordText),
    valueRow("Tr104LineCodecList", 3, TR104_MAP_VALUE_TEXT, kDefaultText),
    valueRow("Tr069LineCodecListCodecType", 3, TR104_MAP_VALUE_TEXT, kDefaultText),
    valueRow("Tr104LineAuthUserNameAndURIForTr069", 3, TR104_MAP_VALUE_TEXT, kAddressText, 5),
    // The map serves the vendor path through the SIP variant; the wrapper serves either protocol.
    valueRow("Tr104LineJitterBufferTarget", 3, TR104_MAP_VALUE_INT, 4),
};

}  // namespace

std::span<const HandlerKind> deviceKinds() { return kDeviceKindRows; }

}  // namespace tr104ctl
