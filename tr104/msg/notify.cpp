// Change notification to the management agent.
#include <cstdio>
#include <cstring>

#include "tr104/framework/debug.h"
#include "tr104/msg/host_imports.h"
#include "tr104/notify.h"

namespace {

constexpr size_t kNameLen = 200;   // one data-model path
constexpr size_t kValueLen = 256;  // one value string

// Offsets in the inbound blocks: the 452-byte line record and the 276-byte server record.
constexpr size_t kLineNumberOffset = 0;
constexpr size_t kLineDirectoryNumberOffset = 8;
constexpr size_t kLineAuthUserNameOffset = 224;
constexpr size_t kLineAuthPasswordOffset = 290;
constexpr size_t kServerFlagOffset = 44;
constexpr size_t kServerHostAddrOffset = 48;
constexpr size_t kServerPortOffset = 118;

constexpr char kProfile[] = "InternetGatewayDevice.Services.VoiceService.1.VoiceProfile.1.";

// Up to two name/value pairs on the notifier's stack, cleared before use.
struct Notification {
    char names[2][kNameLen];
    char values[2][kValueLen];
    int count = 0;

    Notification() {
        std::memset(names, 0, sizeof(names));
        std::memset(values, 0, sizeof(values));
    }
    void name(int i, const char *suffix) { std::snprintf(names[i], kNameLen, "%s%s", kProfile, suffix); }
    // Copies a string of the inbound block, bounded by the value buffer.
    void text(int i, const char *block, size_t offset) {
        std::strncpy(values[i], block + offset, kValueLen - 1);
    }
    void number(int i, int n) { std::snprintf(values[i], kValueLen, "%d", n); }
    void send() {
        char *namePtrs[2] = {names[0], names[1]};
        char *valuePtrs[2] = {values[0], values[1]};
        Tr104NotifyChangeValuesToTr069(namePtrs, valuePtrs, count);
    }
};

uint32_t word(const char *block, size_t offset) {
    uint32_t v;
    std::memcpy(&v, block + offset, sizeof(v));
    return v;
}

// A server record's address and port, under the primary or the standby names.
int notifyServer(const Tr104Msg *msg, const char *primary[2], const char *standby[2]) {
    if (msg == nullptr) {
        return -1;
    }
    const char *block = msg->rspBuffer;
    const char **names = word(block, kServerFlagOffset) == 1 ? primary : standby;
    Notification n;
    n.count = 2;
    n.name(0, names[0]);
    n.name(1, names[1]);
    n.text(0, block, kServerHostAddrOffset);
    uint16_t port;
    std::memcpy(&port, block + kServerPortOffset, sizeof(port));
    n.number(1, port);
    n.send();
    return 0;
}

}  // namespace

extern "C" TR104_API void Tr104NotifyChangeValuesToTr069(char **names, char **values, int count) {
    if (names == nullptr || values == nullptr || count < 1) {
        return;
    }
    if (gTr104CfgDebug) {
        for (int i = 0; i < count; ++i) {
            Tr104DebugPrint(__func__, __LINE__, "NameList[%d]= [%s],ValueList[%d] =[%s]\n", i, names[i], i,
                            values[i]);
        }
    }
    int result = -1;
    if (notifyChangedValues_toTr069 != nullptr) {
        result = notifyChangedValues_toTr069(TR104_NOTIFY_MODULE, names, values, count);
    }
    TR104_DEBUG("  notifyChangedValues_toTr069 return value = [%d]\n", result);
}

extern "C" TR104_API int Tr104LineTelNumChangeNotifySip(const Tr104Msg *msg) {
    if (msg == nullptr) {
        return -1;
    }
    const char *block = msg->rspBuffer;
    Notification n;
    n.count = 1;
    // Only lines 1 and 2 have a path; another line is still reported, with an empty name.
    const uint32_t line = word(block, kLineNumberOffset);
    if (line == 1 || line == 2) {
        std::snprintf(n.names[0], kNameLen, "%sLine.%u.DirectoryNumber", kProfile, line);
    }
    n.text(0, block, kLineDirectoryNumberOffset);
    n.send();
    return 0;
}

extern "C" TR104_API int Tr104LineAuthParamsChangeNotifySip(const Tr104Msg *msg) {
    if (msg == nullptr) {
        return -1;
    }
    const char *block = msg->rspBuffer;
    // Any line other than 1 is reported as line 2.
    const unsigned line = word(block, kLineNumberOffset) == 1 ? 1 : 2;
    Notification n;
    n.count = 2;
    std::snprintf(n.names[0], kNameLen, "%sLine.%u.SIP.AuthUserName", kProfile, line);
    std::snprintf(n.names[1], kNameLen, "%sLine.%u.SIP.AuthPassword", kProfile, line);
    n.text(0, block, kLineAuthUserNameOffset);
    n.text(1, block, kLineAuthPasswordOffset);
    n.send();
    return 0;
}

extern "C" TR104_API int Tr104ProxyParamsChangeNotifySip(const Tr104Msg *msg) {
    static const char *primary[2] = {"SIP.ProxyServer", "SIP.ProxyServerPort"};
    static const char *standby[2] = {"SIP.X_CT-COM_Standby-ProxyServer", "SIP.X_CT-COM_Standby-ProxyServerPort"};
    return notifyServer(msg, primary, standby);
}

extern "C" TR104_API int Tr104RegParamsChangeNotifySip(const Tr104Msg *msg) {
    static const char *primary[2] = {"SIP.RegistrarServer", "SIP.RegistrarServerPort"};
    static const char *standby[2] = {"SIP.X_CT-COM_Standby-RegistrarServer",
                                     "SIP.X_CT-COM_Standby-RegistrarServerPort"};
    return notifyServer(msg, primary, standby);
}
