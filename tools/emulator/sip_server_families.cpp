// The voice module's SIP server records: registrar, proxy and outbound proxy, each kept per
// server flag (1 primary, 2 standby) in the 276-byte server configuration record.  A write
// stores the record of the flag it carries; a read answers the stored record of the flag in
// the request.  A proxy read with flag 0 answers the proxy in use, whose address is the text at
// offset 120 (put("sip proxy server", ...) with flag 0 changes it).
//
// The line identity commands (directory number, URI, user name and password) are served by
// the SIP line families, which keep each of them per line.
#include <cstring>

#include "emulator/voice_module_emulator.h"
#include "tr104/sip_servers.h"

namespace vmemu {
namespace {

const Field kServerFlagKey{44, 4, "server flag"};

struct ServerFamily {
    const char *family;
    uint32_t getCmd, setCmd;
    const char *getName, *setName;
};

const ServerFamily kServerFamilies[] = {
    {"sip proxy server", GET_PROXY_CFG_ID, SET_PROXY_CFG_ID, "GET_PROXY_CFG_ID", "SET_PROXY_CFG_ID"},
    {"sip outbound proxy", GET_OUT_BOUND_CFG_ID, SET_OUT_BOUND_CFG_ID, "GET_OUT_BOUND_CFG_ID", "SET_OUT_BOUND_CFG_ID"},
    {"sip registrar server", GET_REGISTRAR_CFG_ID, SET_REGISTRAR_CFG_ID, "GET_REGISTRAR_CFG_ID",
     "SET_REGISTRAR_CFG_ID"},
};

// The proxy in use before anything else is stored: the primary proxy's factory address.
constexpr char kFactoryProxy[] = "192.168.1.10";
constexpr size_t kActiveProxyOffset = 120;

void installSipServerFamilies(VoiceModuleEmulator &e) {
    for (const ServerFamily &s : kServerFamilies) {
        RecordFamily f;
        f.name = s.family;
        f.length = TR104_SERVER_RECORD_LEN;
        f.keys = {kServerFlagKey};
        f.getCmds = {s.getCmd};
        f.setCmds = {s.setCmd};
        e.addFamily(f);
        e.nameCommand(s.getCmd, s.getName);
        e.nameCommand(s.setCmd, s.setName);
    }
    char inUse[TR104_SERVER_RECORD_LEN] = {};
    std::memcpy(inUse + kActiveProxyOffset, kFactoryProxy, sizeof(kFactoryProxy));
    e.put("sip proxy server", inUse, sizeof(inUse));  // flag 0: the proxy in use
}

FamilyRegistrar sipServerFamilies(&installSipServerFamilies);

}  // namespace
}  // namespace vmemu
