// Inbound path: an arbitrary message text (up to 4100 bytes) read off the inbound queue, handed
// to processVoiceModuleMsg as the inbound thread hands it, and on to the notifiers it reaches.
// This program plays the management agent: every name and value it is given must be a
// terminated text, and a notification carries one to three of them.
#include <cstdlib>
#include <cstring>

#include "fuzz_support.h"
#include "tr104.h"

extern "C" __attribute__((visibility("default"))) int notifyChangedValues_toTr069(int, char **names, char **values,
                                                                                  int count) {
    if (count < 1 || count > 3 || names == nullptr || values == nullptr) {
        std::abort();
    }
    size_t total = 0;
    for (int i = 0; i < count; ++i) {
        total += std::strlen(names[i]) + std::strlen(values[i]);  // reads each text to its end
    }
    return static_cast<int>(total);
}

extern "C" int LLVMFuzzerInitialize(int *, char ***) {
    tr104fuzz::setUp();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    if (size > TR104_MSG_TEXT_LEN) {
        return -1;
    }
    // The text as it came off the queue (the rest of a short message stays zero), turned into
    // the record the way the inbound thread does it.
    char text[TR104_MSG_TEXT_LEN] = {};
    std::memcpy(text, data, size);
    Tr104Msg msg;
    std::memset(&msg, 0, sizeof(msg));
    msg.cmd_type = TR104_CMD_TYPE_DATA;
    std::memcpy(&msg.cmd, text + TR104_TEXT_CMD_OFFSET, sizeof(msg.cmd));
    std::memcpy(msg.cfgBuffer, text + TR104_TEXT_CFG_OFFSET, TR104_CFG_BUFFER_LEN);
    std::memcpy(msg.rspBuffer, text + TR104_TEXT_RSP_OFFSET, TR104_RSP_BUFFER_LEN);
    // The notifiers run under SIP only.  A message may switch the protocol and the debug print:
    // both go back to the start for the next one.
    gTr104CurrProtocolType = TR104_PROTOCOL_SIP;
    processVoiceModuleMsg(&msg);
    gTr104CfgDebug = 0;
    return 0;
}
