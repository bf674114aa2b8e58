// The exchanges of one record, the bounded text copies, the text/code tables and the line
// statistics reset that every handler area uses.
#include "tr104/core/core.h"

namespace tr104::core {

namespace {

// A request record of this process; false, reported under name, when it cannot be built.
bool freshRecord(const char *name, Tr104Msg *msg) {
    if (tr104MsgConstruct(msg) != 0) {
        say(name, "construct msg error\n");
        return false;
    }
    return true;
}

}  // namespace

int readRecord(const char *name, void *record, unsigned int len, unsigned int cmd) {
    Tr104Msg msg;
    if (!freshRecord(name, &msg)) {
        return TR104_ERR_EXCHANGE;
    }
    return CfgPreHandleGetParam(&msg, record, len, cmd) == 0 ? TR104_OK : TR104_ERR_EXCHANGE;
}

int sendRecord(const char *name, const void *record, unsigned int len, unsigned int cmd) {
    Tr104Msg msg;
    if (!freshRecord(name, &msg)) {
        return TR104_ERR_EXCHANGE;
    }
    return sendRecord(&msg, record, len, cmd);
}

int sendRecord(Tr104Msg *msg, const void *record, unsigned int len, unsigned int cmd) {
    msg->cmd_type = static_cast<uint32_t>(gCurrentModule);
    msg->cmd = cmd;
    std::memset(msg->cfgBuffer, 0, sizeof(msg->cfgBuffer));
    std::memset(msg->rspBuffer, 0, sizeof(msg->rspBuffer));
    if (record != nullptr) {
        std::memcpy(msg->cfgBuffer, record, len < TR104_CFG_BUFFER_LEN ? len : TR104_CFG_BUFFER_LEN);
    }
    return msgSndAndRcvSem(msg, 1) == -1 ? TR104_ERR_EXCHANGE : TR104_OK;
}

int readText(const char *name, char *dst, unsigned int len, unsigned int cmd) {
    Tr104Msg msg;
    if (!freshRecord(name, &msg)) {
        return TR104_ERR_EXCHANGE;
    }
    return CfgPreHandleGetStringParam(&msg, dst, len, static_cast<int>(cmd)) == 0 ? TR104_OK : TR104_ERR_EXCHANGE;
}

const TextCode *findText(const TextCode *table, size_t count, const char *text) {
    for (size_t i = 0; i < count; ++i) {
        if (std::strcmp(table[i].text, text) == 0) {
            return &table[i];
        }
    }
    return nullptr;
}

const TextCode *findCode(const TextCode *table, size_t count, int code) {
    for (size_t i = 0; i < count; ++i) {
        if (table[i].code == code) {
            return &table[i];
        }
    }
    return nullptr;
}

int resetLineStatistics(const LineReset &r, int nFlag, void *pValue, int *nLocate) {
    if (const int rc = checkArguments(r.sig, nFlag, pValue, nLocate); rc != TR104_OK) {
        return rc;
    }
    if (nFlag == 0) {
        putInt(pValue, 0);
        return TR104_OK;
    }
    if (intValue(pValue) != 1) {
        say(r.sig.name, "param error, when write, *pLineResetStatisticsFlag must be TRUE.\n");
        return r.notOne;
    }
    const uint32_t line = static_cast<uint32_t>(lineOf(nLocate));
    if (sendRecord(r.sig.name, &line, sizeof(line), r.resetCmd) != TR104_OK) {
        TR104_DEBUG_AS(r.sig.name, r.sendFailed, lineOf(nLocate));
        return TR104_ERR_EXCHANGE;
    }
    return TR104_OK;
}

void copyBounded(char *dst, const char *src, size_t max) {
    const size_t n = strnlen(src, max);
    std::memcpy(dst, src, n);
    dst[n] = '\0';
}

void copyFieldText(char *dst, const char *field, size_t room) {
    if (room > 0) {
        copyBounded(dst, field, fieldTextLength(field, room));
    }
}

}  // namespace tr104::core
