// Protocol selection: learning the voice module's protocol, persisting it and switching it.
#include "tr104/protocol.h"

#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "tr104/framework.h"
#include "tr104/core/debug.h"

extern "C" {
TR104_API Tr104RefreshVoiceCfgFunc gRefreshVoiceConfigFunc = nullptr;
TR104_API Tr104LoadVoicePagesFunc gLoadVoicePagesFunc = nullptr;
}

namespace {

constexpr unsigned int kNameLen = TR104_PROTOCOL_NAME_LEN;

// Types are small non-negative integers: a negative type counts as out of range too, so the
// file never holds one.
bool typeInRange(int type) { return static_cast<unsigned int>(type) < TR104_PROTOCOL_TYPE_LIMIT; }

int protocolFromName(const char *name) {
    if (std::strcmp(name, "H.248") == 0) {
        return TR104_PROTOCOL_H248;
    }
    if (std::strcmp(name, "SIP") == 0) {
        return TR104_PROTOCOL_SIP;
    }
    return TR104_PROTOCOL_NONE;
}

// Writes bytes to path (truncating it) and makes them durable before closing.
bool writeDurably(const char *path, const void *data, size_t len) {
    FILE *file = std::fopen(path, "w");
    if (file == nullptr) {
        printf("can't open file %s!\r\n", path);
        return false;
    }
    std::fwrite(data, 1, len, file);
    std::fflush(file);
    fdatasync(fileno(file));
    std::fclose(file);
    return true;
}

// Gives the reader time to see the message, then restarts the device.
void restartDevice() {
    sleep(2);
    printf("\r\nVoice protocol switched, restart system now...\r");
    std::fflush(stdout);
    // The device goes down; a failed restart leaves nothing else to do here.
    const int status = std::system("reboot");
    (void)status;
}

}  // namespace

extern "C" TR104_API int RegisterRefreshVoiceCfgFunc(Tr104RefreshVoiceCfgFunc fn) {
    if (fn == nullptr) {
        return -1;
    }
    gRefreshVoiceConfigFunc = fn;
    return 0;
}

extern "C" TR104_API int RegisterLoadVoicePagesFunc(Tr104LoadVoicePagesFunc fn) {
    if (fn == nullptr) {
        return -1;
    }
    gLoadVoicePagesFunc = fn;
    return 0;
}

extern "C" TR104_API int Tr104RefreshCurrProtocolType(void) {
    Tr104Msg msg;
    tr104MsgConstruct(&msg);
    // One byte more than the voice module may fill, so that a six-character answer still
    // ends inside the buffer.
    char name[kNameLen + 1] = "NONE";
    if (CfgPreHandleGetStringParam(&msg, name, kNameLen, TR104_GET_PROTOCOL_NAME_ID) != 0) {
        TR104_DEBUG("get voice protocol type error \n");
        return -1;
    }
    gTr104CurrProtocolType = protocolFromName(name);
    TR104_DEBUG("get voice protocol type[%s] \n", name);
    return 0;
}

extern "C" TR104_API int Tr104VoiceProtocolType(int nFlag, void *pValue, int * /*nLocate*/) {
    if (pValue == nullptr) {
        TR104_DEBUG("param error, pVoiceProtocolType is null\n");
        return -2;
    }
    if (nFlag != 0) {
        TR104_DEBUG("param error, nFlag[%d]\n", nFlag);
        return -2;
    }
    Tr104Msg msg;
    tr104MsgConstruct(&msg);
    char *name = static_cast<char *>(pValue);
    if (CfgPreHandleGetStringParam(&msg, name, kNameLen, TR104_GET_PROTOCOL_NAME_ID) != 0) {
        TR104_DEBUG("get voice protocol type error \n");
        return -1;
    }
    // The caller's buffer holds six bytes and may carry no terminator.
    TR104_DEBUG("get voice protocol type[%.6s] \n", name);
    return 0;
}

extern "C" TR104_API int Tr104SetProtocolType(const Tr104Msg *msg) {
    if (msg == nullptr) {
        return -1;
    }
    uint32_t words[2];
    std::memcpy(words, msg->rspBuffer, sizeof(words));
    gTr104CurrProtocolType = static_cast<int>(words[1]);
    if (words[0] == 1 && gRefreshVoiceConfigFunc != nullptr) {
        gRefreshVoiceConfigFunc(&gTr104CurrProtocolType);
    }
    if (gLoadVoicePagesFunc != nullptr) {
        gLoadVoicePagesFunc();
    }
    return 0;
}

extern "C" TR104_API int SetProtocolTypeToScript(int type) {
    if (!typeInRange(type)) {
        printf("unknown protocol type: %d!\r\n", type);
        return -1;
    }
    char line[32];
    const int len = std::snprintf(line, sizeof(line), "voipType %d\n", type);
    return writeDurably(TR104_PROTOCOL_FILE, line, static_cast<size_t>(len)) ? 0 : -1;
}

extern "C" TR104_API int GetProtocolTypeFromScript(void) {
    FILE *file = std::fopen(TR104_PROTOCOL_FILE, "r");
    if (file == nullptr) {
        printf("can't open file %s!\r\n", TR104_PROTOCOL_FILE);
        return -1;
    }
    // The keyword is read and ignored; a word longer than the buffer is cut, and its rest
    // then fails to read as the number (0), as any other malformed line does.
    char keyword[128];
    int type = 0;
    const int matched = std::fscanf(file, "%127s %d", keyword, &type);
    std::fclose(file);
    if (matched == EOF) {
        return -1;
    }
    return matched == 2 ? type : 0;
}

extern "C" TR104_API int Tr104GetProtocolTypeFromScript(void) { return GetProtocolTypeFromScript(); }

extern "C" TR104_API int SwitchProtocolType(int type) {
    if (!typeInRange(type)) {
        printf("unknown protocol type: %d!\r\n", type);
        return -1;
    }
    if (SetProtocolTypeToScript(type) != 0) {
        printf("write protocol type error!\r");
        return -1;
    }
    restartDevice();
    return 0;
}

extern "C" TR104_API int SwitchProtocolType2(int type, int bRebootFlag) {
    if (!typeInRange(type)) {
        printf("unknown protocol type: %d!\r\n", type);
        return -1;
    }
    if (bRebootFlag != 0 && bRebootFlag != 1) {
        printf("param err, bRebootFlag=%d!\r\n", bRebootFlag);
        return -1;
    }
    if (SetProtocolTypeToScript(type) != 0) {
        printf("write protocol type error!\r");
        return -1;
    }
    if (bRebootFlag == 1) {
        restartDevice();
    }
    return 0;
}

extern "C" TR104_API int EraseVoiceCliConfig(void) {
    const unsigned char erased = 0xFF;
    if (!writeDurably(TR104_VOICE_CLI_FILE, &erased, sizeof(erased))) {
        return -1;
    }
    printf("\r\nerase voice cli configuration ok.\r");
    return 0;
}
