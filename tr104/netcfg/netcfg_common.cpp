// The exchanges of the voice network handlers that go straight onto the request queue.
#include <sys/msg.h>

#include <cstdio>

#include "tr104/netcfg/netcfg_internal.h"

namespace tr104::netcfg {

int sendDirect(unsigned int cmd, const void *payload, size_t len) {
    Tr104WireMsg wire;
    std::memset(&wire, 0, sizeof(wire));
    wire.mtype = gCurrentModule;
    const uint32_t command = cmd;
    std::memcpy(wire.text + TR104_TEXT_CMD_OFFSET, &command, sizeof(command));
    std::memcpy(wire.text + TR104_TEXT_CFG_OFFSET, payload, len < TR104_CFG_BUFFER_LEN ? len : TR104_CFG_BUFFER_LEN);
    return msgsnd(gTr104SndMsgQueueId, &wire, TR104_MSG_TEXT_LEN, IPC_NOWAIT) == -1 ? TR104_ERR_EXCHANGE : TR104_OK;
}

int directChecks(const char *name, bool present, const char *nullMessage, int nFlag, bool flagOnStdout) {
    const core::Signature sig{name,
                              nullMessage,
                              core::Locate::None,
                              core::Access::GetSet,
                              flagOnStdout ? "[%s] param error, nFlag[%d]\n" : "param error, nFlag[%d]\n",
                              flagOnStdout ? core::Report::Stdout : core::Report::NullOnStdout};
    if (const int rc = core::checkArguments(sig, nFlag, present ? &present : nullptr, nullptr); rc != TR104_OK) {
        return rc;
    }
    return nFlag == 1 ? 1 : TR104_OK;
}

uint32_t portOf(const uint32_t *pPort) {
    if (pPort == nullptr) {
        return 0;
    }
    uint32_t port;
    std::memcpy(&port, reinterpret_cast<const char *>(pPort) + 2 * sizeof(uint32_t), sizeof(port));
    return port;
}

}  // namespace tr104::netcfg

namespace tr104::netcfg {

int smallValue(const SmallValue &v, int nFlag, void *pValue) {
    if (pValue == nullptr) {
        say(v.name, v.nullError);
        return TR104_ERR_PARAM;
    }
    auto current = [&] { return v.width == 1 ? *static_cast<const uint8_t *>(pValue) : intValue(pValue); };
    TR104_DEBUG_AS(v.name, v.entry, nFlag, current());
    uint8_t payload[4] = {};
    if (nFlag == 0) {
        if (readRecord(v.name, payload, v.width, v.getCmd) != TR104_OK) {
            say(v.name, v.getError);
            return TR104_ERR_EXCHANGE;
        }
        std::memcpy(pValue, payload, v.width);
        TR104_DEBUG_AS(v.name, v.getDone, current());
        return TR104_OK;
    }
    if (nFlag != 1) {
        TR104_DEBUG_AS(v.name, "param error, nFlag[%d]\n", nFlag);
        return TR104_ERR_PARAM;
    }
    std::memcpy(payload, pValue, v.width);
    if (sendRecord(v.name, payload, v.width, v.setCmd) != TR104_OK) {
        say(v.name, v.sendError);
        return TR104_ERR_EXCHANGE;
    }
    return TR104_OK;
}

}  // namespace tr104::netcfg

#include "tr104/catalogue/netcfg_SmallValue.inc"
