// libtr104-usp.so: serves the voice data model through a USP agent's vendor layer.
//
// VENDOR_Init registers every parameter of the data-model map that a handler serves under the
// agent's root, "Device." in place of "InternetGatewayDevice.", with its type and access; the
// multi-instance objects become read-only tables.  Gets and sets go through the map's calls by
// path (tr104MapGet / tr104MapSet), the same lookup and value conversions as the client's.
// VENDOR_Start starts the library as the management agent does and announces the instances of
// a two-port device.
#include <pthread.h>
#include <sched.h>

#include <cstdio>
#include <cstring>
#include <set>
#include <string>

extern "C" {
#include "usp_api.h"
#include "usp_err_codes.h"
#include "vendor_api.h"
}

#include "tr104.h"
#include "tr104/map.h"

namespace {

constexpr char kModelRoot[] = "InternetGatewayDevice.";
constexpr char kAgentRoot[] = "Device.";
// The management agent runs as module kind 1: module number 7, reply queue 36, inbound queue 37,
// the long reply wait.
constexpr int kAgentModuleKind = 1;

std::string replaceRoot(const std::string &path, const std::string &from, const std::string &to) {
    return path.compare(0, from.size(), from) == 0 ? to + path.substr(from.size()) : path;
}
std::string toAgent(const std::string &path) { return replaceRoot(path, kModelRoot, kAgentRoot); }
std::string toModel(const std::string &path) { return replaceRoot(path, kAgentRoot, kModelRoot); }

// Parameters whose get keeps the caller 30 s or more (the end of a line test) are left out: the
// agent answers every request on one thread.
bool servedByAgent(const Tr104MapEntry &e) { return e.handler != nullptr && e.blocksCaller == 0; }

unsigned typeFlags(const Tr104MapEntry &e) {
    const std::string type = e.type;
    return type == "int"           ? DM_INT
           : type == "unsignedInt" ? DM_UINT
           : type == "boolean"     ? DM_BOOL
           : type == "dateTime"    ? DM_DATETIME
           : type == "base64"      ? DM_BASE64
           : type == "float"       ? DM_DECIMAL
                                   : DM_STRING;
}

// The agent's error for a failed call: the message names the parameter and the handler's result.
int agentError(int rc, const std::string &path, const char *why, bool set) {
    const std::string model = toModel(path);
    std::string text = why;
    if (text.compare(0, model.size() + 2, model + ": ") == 0) {
        text = text.substr(model.size() + 2);
    }
    char format[] = "%s: %s";
    USP_ERR_SetMessage(format, path.c_str(), text.c_str());
    switch (rc) {
    case TR104_MAP_NO_ACCESS: return set ? USP_ERR_PARAM_READ_ONLY : USP_ERR_PERMISSION_DENIED;
    case TR104_MAP_BAD_VALUE: return USP_ERR_INVALID_TYPE;
    case TR104_MAP_BAD_PATH: return USP_ERR_INVALID_PATH;
    case -2: return set ? USP_ERR_INVALID_VALUE : USP_ERR_GENERAL_FAILURE;
    default: return set ? USP_ERR_SET_FAILURE : USP_ERR_GENERAL_FAILURE;
    }
}

int getValue(dm_req_t *req, char *buf, int len) {
    char error[512] = "";
    const int rc = tr104MapGet(toModel(req->path).c_str(), buf, static_cast<unsigned>(len), error, sizeof(error));
    return rc == 0 ? USP_ERR_OK : agentError(rc, req->path, error, false);
}

// A write-only parameter (a password) reads back empty, as agents show secrets.
int getNothing(dm_req_t *, char *buf, int len) {
    if (len > 0) {
        buf[0] = '\0';
    }
    return USP_ERR_OK;
}

int setValue(dm_req_t *req, char *buf) {
    char error[512] = "";
    const int rc = tr104MapSet(toModel(req->path).c_str(), buf, error, sizeof(error));
    return rc == 0 ? USP_ERR_OK : agentError(rc, req->path, error, true);
}

// How many instances of a table ("....X.{i}") a two-port device has.
int instancesOf(const std::string &table) {
    const size_t end = table.rfind(".{i}");
    const size_t start = table.rfind('.', end - 1) + 1;
    return tr104MapInstanceCount(table.substr(start, end - start).c_str());
}

// Every table ("....X.{i}") of the served parameters, parents before children.
std::set<std::string> servedTables() {
    std::set<std::string> tables;
    for (unsigned i = 0; i < gTr104MapCount; ++i) {
        if (!servedByAgent(gTr104Map[i])) {
            continue;
        }
        const std::string path = toAgent(gTr104Map[i].path);
        for (size_t at = path.find(".{i}"); at != std::string::npos; at = path.find(".{i}", at + 1)) {
            tables.insert(path.substr(0, at + 4));
        }
    }
    return tables;
}

// Announces every instance of `table` under the concrete parent `prefix`, recursively below.
int announce(const std::set<std::string> &tables, const std::string &pattern, const std::string &concrete) {
    for (const std::string &table : tables) {
        // The direct child tables of `pattern`: one more {i} than it.
        if (table.compare(0, pattern.size(), pattern) != 0 || table.find(".{i}", pattern.size()) != table.size() - 4) {
            continue;
        }
        const std::string middle = table.substr(pattern.size(), table.size() - 4 - pattern.size());
        for (int n = 1; n <= instancesOf(table); ++n) {
            const std::string instance = concrete + middle + "." + std::to_string(n);
            const int err = USP_DM_InformInstance(const_cast<char *>(instance.c_str()));
            if (err != USP_ERR_OK) {
                return err;
            }
            const int below = announce(tables, table, instance);
            if (below != USP_ERR_OK) {
                return below;
            }
        }
    }
    return USP_ERR_OK;
}

}  // namespace

extern "C" {

// Values changed by the voice module on its own (a number given by the softswitch, a server
// learnt at run time).  Every get asks the voice module, so the next get shows them; the agent's
// value-change subscriptions on vendor parameters are served by its own polling, since the
// vendor layer has no call that marks a parameter as changed.  Here they are logged, hidden
// values (passwords) without their text.
__attribute__((visibility("default"))) int notifyChangedValues_toTr069(int module, char **names, char **values,
                                                                       int count) {
    for (int i = 0; i < count; ++i) {
        const char *name = names[i] != nullptr ? names[i] : "";
        const Tr104MapEntry *entry = nullptr;
        const int found = tr104MapLookup(name, &entry, nullptr, nullptr, 0);
        const bool hidden = (found == TR104_MAP_SERVED || found == TR104_MAP_NOT_SERVED) && entry->hidden != 0;
        USP_LOG_Info("voice module changed %s to '%s'%s (module %d)", toAgent(name).c_str(),
                     hidden || values[i] == nullptr ? "" : values[i], hidden ? " (hidden)" : "", module);
    }
    return 0;
}

__attribute__((visibility("default"))) int VENDOR_Init(void) {
    for (const std::string &table : servedTables()) {
        const int err = USP_REGISTER_Object(const_cast<char *>(table.c_str()), USP_HOOK_DenyAddInstance, nullptr,
                                            nullptr, USP_HOOK_DenyDeleteInstance, nullptr, nullptr);
        if (err != USP_ERR_OK) {
            return err;
        }
    }
    int served = 0;
    for (unsigned i = 0; i < gTr104MapCount; ++i) {
        const Tr104MapEntry &e = gTr104Map[i];
        if (!servedByAgent(e)) {
            continue;
        }
        std::string path = toAgent(e.path);
        char *p = const_cast<char *>(path.c_str());
        const std::string access = e.access;
        const int err = access == "R" ? USP_REGISTER_VendorParam_ReadOnly(p, getValue, typeFlags(e))
                        : access == "W"
                            ? USP_REGISTER_VendorParam_ReadWrite(p, getNothing, setValue, nullptr, typeFlags(e))
                            : USP_REGISTER_VendorParam_ReadWrite(p, getValue, setValue, nullptr, typeFlags(e));
        if (err != USP_ERR_OK) {
            return err;
        }
        ++served;
    }
    USP_LOG_Info("libtr104-usp: %d voice parameters registered", served);
    return USP_ERR_OK;
}

__attribute__((visibility("default"))) int VENDOR_Start(void) {
    // The runtime adopts the calling thread (the agent's data-model thread) as its root task,
    // which leaves it at a real-time priority; the agent's threads keep their own scheduling.
    int policy = SCHED_OTHER;
    sched_param param{};
    pthread_getschedparam(pthread_self(), &policy, &param);
    const int started = Tr104VoiceCfgInit(kAgentModuleKind);
    pthread_setschedparam(pthread_self(), policy, &param);
    if (started != 0) {
        char format[] = "Tr104VoiceCfgInit(%d) failed";
        USP_ERR_SetMessage(format, kAgentModuleKind);
        return USP_ERR_INTERNAL_ERROR;
    }
    // The protocol decides which handlers answer.  A voice module that does not answer yet names
    // it later with its protocol-change message; the agent starts anyway.
    if (Tr104RefreshCurrProtocolType() != 0) {
        USP_LOG_Warning("libtr104-usp: the voice module did not name its protocol");
    }
    return announce(servedTables(), "", "");
}

// The library keeps its threads and the channel until the process ends.  A grouped write still
// waiting for the rest of its group (a port set without its address) is applied now, as its
// timer would have done, rather than lost with the process.
__attribute__((visibility("default"))) int VENDOR_Stop(void) {
    for (int slot = 0; slot < TR104_CFG_PARAM_SLOTS; ++slot) {
        if (getTr104CfgParamInfoCfgFlag(slot) != 0) {
            USP_LOG_Info("libtr104-usp: applying the waiting values of group %d", slot);
        }
    }
    char error[256] = "";
    if (tr104MapApplyGroups(nullptr, 0, error, sizeof(error)) != 0) {
        USP_LOG_Warning("libtr104-usp: %s", error);
    }
    return USP_ERR_OK;
}

}  // extern "C"
