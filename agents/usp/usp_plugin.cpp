// libtr104-usp.so: serves the voice data model through a USP agent's vendor layer.
//
// A USP controller knows the voice service by its issue-2 shape (SIP.Client, CallControl.Line,
// POTS.FXS, ...), so VENDOR_Init registers the issue-2 paths of the data-model map as they are,
// under "Device.Services.VoiceService.", with their type and access; the multi-instance objects
// become read-only tables with the instances a two-port device has.  The issue-1 tree
// ("InternetGatewayDevice.Services.VoiceService.{i}.VoiceProfile...") is not registered here:
// mixing two versions of one object would give a controller paths its schema does not know, and
// the management agent of the other protocol still serves it.  Only its vendor parameters (a
// segment "X_..."), which no issue-2 path carries, stay where they always were, "Device." in
// place of "InternetGatewayDevice." (Device.X_QRV_VOIP_IPPARAMS., ...VoiceProfile.1.X_QRV_Stats.).
//
// Gets and sets go through the map's calls by path (tr104MapGet / tr104MapSet), the same lookup
// and value conversions as the client's.  A Set message is one transaction of the agent: the
// deferred buffer's groups that its sets touched are applied when the agent commits it, so a Get
// right after the Set reads the new values, and dropped when the agent aborts it.
// POTS.FXS.{i}.DiagTests() runs the port's line test on a thread of the plug-in and completes
// through the agent's operation-complete signal.  VENDOR_Start starts the library as the
// management agent does and announces the instances.
#include <pthread.h>
#include <sched.h>

#include <atomic>
#include <cstdio>
#include <cstring>
#include <map>
#include <set>
#include <string>
#include <vector>

extern "C" {
#include "usp_api.h"
#include "usp_err_codes.h"
#include "vendor_api.h"
}

#include "fxs_diag.h"
#include "set_transaction.h"
#include "tr104.h"
#include "tr104/map.h"
#include "tr104/protocol.h"
#include "tr104/startup.h"

namespace {

constexpr char kIssue1Root[] = "InternetGatewayDevice.";
constexpr char kAgentRoot[] = "Device.";
constexpr char kVoiceService[] = "Device.Services.VoiceService.{i}";
constexpr char kFxsTable[] = "Device.Services.VoiceService.{i}.POTS.FXS.{i}";
constexpr char kDiagTests[] = "Device.Services.VoiceService.{i}.POTS.FXS.{i}.DiagTests()";
// The management agent runs as module kind 1: module number 7, reply queue 36, inbound queue 37,
// the long reply wait.
constexpr int kAgentModuleKind = 1;

bool startsWith(const std::string &text, const std::string &prefix) {
    return text.compare(0, prefix.size(), prefix) == 0;
}

std::string replaceRoot(const std::string &path, const std::string &from, const std::string &to) {
    return startsWith(path, from) ? to + path.substr(from.size()) : path;
}

bool issue2(const Tr104MapEntry &e) { return startsWith(e.path, kVoiceService); }
bool vendorOfIssue1(const Tr104MapEntry &e) {
    return startsWith(e.path, kIssue1Root) && std::strstr(e.path, ".X_") != nullptr;
}

// Served: by a handler or by the map itself (references, instance counts).  Parameters whose
// get keeps the caller 30 s or more (the end of a line test) are left out: the agent answers
// every request on one thread.
bool servedByAgent(const Tr104MapEntry &e) {
    return (e.handler != nullptr || e.fixed != nullptr) && e.blocksCaller == 0 && (issue2(e) || vendorOfIssue1(e));
}

// The agent's path of an entry, and back from a registered (schema) path to its entry.
std::string agentPath(const Tr104MapEntry &e) { return replaceRoot(e.path, kIssue1Root, kAgentRoot); }
std::map<std::string, const Tr104MapEntry *> gRegistered;

// The map's path of a concrete agent path: issue-2 paths are the map's own, a vendor parameter
// of issue 1 takes its old root back.
std::string modelPath(const dm_req_t *req, const Tr104MapEntry **entry) {
    const auto found = gRegistered.find(req->schema_path);
    *entry = found == gRegistered.end() ? nullptr : found->second;
    return *entry != nullptr && vendorOfIssue1(**entry) ? replaceRoot(req->path, kAgentRoot, kIssue1Root)
                                                        : std::string(req->path);
}

unsigned typeFlags(const Tr104MapEntry &e) {
    const std::string type = e.type;
    return type == "int"            ? DM_INT
           : type == "unsignedInt"  ? DM_UINT
           : type == "boolean"      ? DM_BOOL
           : type == "dateTime"     ? DM_DATETIME
           : type == "base64"       ? DM_BASE64
           : type == "float"        ? DM_DECIMAL
           : type == "decimal"      ? DM_DECIMAL
           : type == "long"         ? DM_LONG
           : type == "unsignedLong" ? DM_ULONG
           : type == "hexBinary"    ? DM_HEXBIN
                                    : DM_STRING;
}

// The agent's error for a failed call: the message names the parameter and the handler's result.
int agentError(int rc, const std::string &agent, const std::string &model, const char *why, bool set) {
    std::string text = why;
    if (startsWith(text, model + ": ")) {
        text = text.substr(model.size() + 2);
    }
    char format[] = "%s: %s";
    USP_ERR_SetMessage(format, agent.c_str(), text.c_str());
    switch (rc) {
    case TR104_MAP_NO_ACCESS: return set ? USP_ERR_PARAM_READ_ONLY : USP_ERR_PERMISSION_DENIED;
    // The agent has converted the value to its type already: what the map refuses is outside the
    // enumeration, the range or the length.
    case TR104_MAP_BAD_VALUE: return USP_ERR_INVALID_VALUE;
    case TR104_MAP_BAD_PATH: return USP_ERR_INVALID_PATH;
    case -2: return set ? USP_ERR_INVALID_VALUE : USP_ERR_GENERAL_FAILURE;
    default: return set ? USP_ERR_SET_FAILURE : USP_ERR_GENERAL_FAILURE;
    }
}

int getValue(dm_req_t *req, char *buf, int len) {
    const Tr104MapEntry *entry = nullptr;
    const std::string model = modelPath(req, &entry);
    // A parameter of the other protocol's handlers is not answered while the voice module speaks
    // this one (what they would read is the other protocol's setting), as tr104ctl dump leaves it
    // out; a get of a subtree leaves it out too.
    const int protocol = gTr104CurrProtocolType;
    if (entry != nullptr && entry->protocol != 0 &&
        (protocol == TR104_PROTOCOL_SIP || protocol == TR104_PROTOCOL_H248) && entry->protocol != protocol) {
        char format[] = "%s: answered under %s only (the voice module speaks %s)";
        USP_ERR_SetMessage(format, req->path, entry->protocol == TR104_PROTOCOL_H248 ? "H.248" : "SIP",
                           protocol == TR104_PROTOCOL_H248 ? "H.248" : "SIP");
        return USP_ERR_GENERAL_FAILURE;
    }
    char error[512] = "";
    const int rc = tr104MapGet(model.c_str(), buf, static_cast<unsigned>(len), error, sizeof(error));
    return rc == 0 ? USP_ERR_OK : agentError(rc, req->path, model, error, false);
}

// A write-only parameter (a password) reads back empty, as agents show secrets.
int getNothing(dm_req_t *, char *buf, int len) {
    if (len > 0) {
        buf[0] = '\0';
    }
    return USP_ERR_OK;
}

// The agent's concrete paths of a parameter the library names by its issue-1 path: the issue-2
// parameters of the same handler, each instance number taken from the nLocate index its own
// pattern gives it (a vendor parameter: its path under "Device.").
std::vector<std::string> agentPathsOf(const char *name) {
    const Tr104MapEntry *entry = nullptr;
    int locate[4] = {};
    if (tr104MapLookup(name, &entry, locate, nullptr, 0) != TR104_MAP_SERVED || entry->handler == nullptr) {
        return {};
    }
    if (vendorOfIssue1(*entry)) {
        return {replaceRoot(name, kIssue1Root, kAgentRoot)};
    }
    std::vector<std::string> paths;
    for (const auto &[schema, e] : gRegistered) {
        if (!issue2(*e) || e->handler == nullptr || std::strcmp(e->handler, entry->handler) != 0) {
            continue;
        }
        std::string path = schema;
        int k = 0;
        for (size_t at = path.find("{i}"); at != std::string::npos; at = path.find("{i}", at), ++k) {
            const int index = k < 4 ? e->locate[k] : -1;
            path.replace(at, 3, std::to_string(index >= 0 && index < 4 && locate[index] > 0 ? locate[index] : 1));
        }
        paths.push_back(path);
    }
    return paths;
}

// ---- Transactions: a Set message's groups ---------------------------------------------------

// Sets and the transaction hooks all run on the agent's data-model thread.
tr104usp::SetTransaction gTransaction;

int startTransaction() {
    gTransaction.start();
    return USP_ERR_OK;
}

// The groups the message left incomplete are written now, completed from the voice module's
// current values as their timers would; a group it completed went out with its last set.  A
// group that cannot be written fails the message.
int commitTransaction() {
    char error[256] = "";
    if (gTransaction.commit(error, sizeof(error)) != 0) {
        char format[] = "%s";
        USP_ERR_SetMessage(format, error);
        return USP_ERR_SET_FAILURE;
    }
    return USP_ERR_OK;
}

// A refused message changes nothing that is still waiting: its staged values are dropped (a
// group it completed has already been sent and stays).
int abortTransaction() {
    for (const int slot : gTransaction.abort()) {
        USP_LOG_Info("libtr104-usp: dropped the values a refused Set staged in group %d", slot);
    }
    return USP_ERR_OK;
}

int setValue(dm_req_t *req, char *buf) {
    const Tr104MapEntry *entry = nullptr;
    const std::string model = modelPath(req, &entry);
    char error[512] = "";
    const int rc = gTransaction.set(model, buf, error, sizeof(error));
    return rc == 0 ? USP_ERR_OK : agentError(rc, req->path, model, error, true);
}

// ---- POTS.FXS.{i}.DiagTests() ---------------------------------------------------------------

constexpr int kDiagPollMs = 200;
constexpr int kDiagTimeoutMs = 90 * 1000;

struct DiagJob {
    int instance;  // of Device.LocalAgent.Request.{i}
    int port;
    char selector[32];
};

// One test at a time per port; the threads are joined when the agent stops.
std::atomic<bool> gStopping{false};
std::atomic<bool> gPortBusy[TR104_LINETEST_PORTS];
pthread_t gDiagThread[TR104_LINETEST_PORTS];
bool gDiagJoinable[TR104_LINETEST_PORTS] = {};

void *diagThread(void *arg) {
    const DiagJob job = *static_cast<DiagJob *>(arg);
    delete static_cast<DiagJob *>(arg);
    char active[] = "Active";
    (void)USP_SIGNAL_OperationStatus(job.instance, active);
    const tr104usp::DiagOutcome o =
        tr104usp::runFxsDiag(job.port, job.selector, gStopping, kDiagPollMs, kDiagTimeoutMs);
    USP_LOG_Info("libtr104-usp: POTS.FXS.%d.DiagTests(%s) done: Status %s, TestResult %s (%s)", job.port, job.selector,
                 o.status, o.result != nullptr ? o.result : "-", o.detail);
    kv_vector_t *out = USP_ARG_Create();
    USP_ARG_Add(out, const_cast<char *>("Status"), const_cast<char *>(o.status));
    if (o.result != nullptr) {
        USP_ARG_Add(out, const_cast<char *>("TestResult"), const_cast<char *>(o.result));
    }
    gPortBusy[job.port - 1] = false;
    (void)USP_SIGNAL_OperationComplete(job.instance, USP_ERR_OK, nullptr, out);
    return nullptr;
}

int startDiagTests(dm_req_t *req, kv_vector_t *input, int instance) {
    const int port = req->inst->order > 0 ? req->inst->instances[req->inst->order - 1] : 0;
    char none[] = "";
    const char *selector = USP_ARG_Get(input, const_cast<char *>("TestSelector"), none);
    if (!tr104usp::diagSelectorKnown(selector)) {
        char format[] =
            "%s: TestSelector '%s' is not one of \"Hazard Potential\", \"Foreign Voltage\", "
            "\"Resistive Faults\", \"Off-hook\", \"REN\"";
        USP_ERR_SetMessage(format, req->path, selector);
        return USP_ERR_INVALID_ARGUMENTS;
    }
    if (port < 1 || port > TR104_LINETEST_PORTS || gPortBusy[port - 1].exchange(true)) {
        char format[] = "%s: a test is already running on this port";
        USP_ERR_SetMessage(format, req->path);
        return USP_ERR_COMMAND_FAILURE;
    }
    if (gDiagJoinable[port - 1]) {
        (void)pthread_join(gDiagThread[port - 1], nullptr);  // ended: its port was free
        gDiagJoinable[port - 1] = false;
    }
    auto *job = new DiagJob{instance, port, {}};
    std::snprintf(job->selector, sizeof(job->selector), "%s", selector);
    if (pthread_create(&gDiagThread[port - 1], nullptr, diagThread, job) != 0) {
        delete job;
        gPortBusy[port - 1] = false;
        char format[] = "%s: no thread for the test";
        USP_ERR_SetMessage(format, req->path);
        return USP_ERR_COMMAND_FAILURE;
    }
    gDiagJoinable[port - 1] = true;
    return USP_ERR_OK;
}

int registerDiagTests() {
    char *in[] = {const_cast<char *>("TestSelector")};
    char *out[] = {const_cast<char *>("Status"), const_cast<char *>("TestResult")};
    char *path = const_cast<char *>(kDiagTests);
    int err = USP_REGISTER_AsyncOperation(path, startDiagTests, nullptr);
    if (err == USP_ERR_OK) {
        err = USP_REGISTER_OperationArguments(path, in, 1, out, 2);
    }
    return err;
}

// ---- Tables and instances -------------------------------------------------------------------

// How many instances of a table ("....X.{i}") a two-port device has.
int instancesOf(const std::string &table) {
    const size_t end = table.rfind(".{i}");
    const size_t start = table.rfind('.', end - 1) + 1;
    return tr104MapInstanceCount(table.substr(start, end - start).c_str());
}

// Every table ("....X.{i}") of the served parameters, and the phone ports' table of the test
// operation; a set orders parents before children.
std::set<std::string> servedTables() {
    std::set<std::string> tables{kFxsTable};
    for (unsigned i = 0; i < gTr104MapCount; ++i) {
        if (!servedByAgent(gTr104Map[i])) {
            continue;
        }
        const std::string path = agentPath(gTr104Map[i]);
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
// learnt at run time), named by their issue-1 paths.  Every get asks the voice module, so the
// next get shows them; the agent's value-change subscriptions on vendor parameters are served by
// its own polling, since the vendor layer has no call that marks a parameter as changed.  Here
// they are logged under the agent's paths, hidden values (passwords) without their text.
__attribute__((visibility("default"))) int notifyChangedValues_toTr069(int module, char **names, char **values,
                                                                       int count) {
    for (int i = 0; i < count; ++i) {
        const char *name = names[i] != nullptr ? names[i] : "";
        const Tr104MapEntry *entry = nullptr;
        const int found = tr104MapLookup(name, &entry, nullptr, nullptr, 0);
        const bool hidden = (found == TR104_MAP_SERVED || found == TR104_MAP_NOT_SERVED) && entry->hidden != 0;
        std::string shown;
        for (const std::string &path : agentPathsOf(name)) {
            shown += (shown.empty() ? "" : ", ") + path;
        }
        USP_LOG_Info("voice module changed %s to '%s'%s (%s, module %d)", shown.empty() ? name : shown.c_str(),
                     hidden || values[i] == nullptr ? "" : values[i], hidden ? " (hidden)" : "", name, module);
    }
    return 0;
}

__attribute__((visibility("default"))) int VENDOR_Init(void) {
    vendor_hook_cb_t hooks{};
    hooks.start_trans_cb = startTransaction;
    hooks.commit_trans_cb = commitTransaction;
    hooks.abort_trans_cb = abortTransaction;
    int registered = USP_REGISTER_CoreVendorHooks(&hooks);
    if (registered != USP_ERR_OK) {
        return registered;
    }
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
        std::string path = agentPath(e);
        gRegistered[path] = &e;
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
    registered = registerDiagTests();
    if (registered != USP_ERR_OK) {
        return registered;
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

// The library keeps its threads and the channel until the process ends.  A test still running
// ends as "Canceled".  A grouped write still waiting for the rest of its group (a port set
// without its address) is applied now, as its timer would have done, rather than lost with the
// process.
__attribute__((visibility("default"))) int VENDOR_Stop(void) {
    gStopping = true;
    for (int port = 0; port < TR104_LINETEST_PORTS; ++port) {
        if (gDiagJoinable[port]) {
            (void)pthread_join(gDiagThread[port], nullptr);
            gDiagJoinable[port] = false;
        }
    }
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
