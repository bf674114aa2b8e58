// Argument checks and record exchanges shared by every SIP handler.
#include "tr104/sip/sip_internal.h"

namespace tr104::sip {

int checkArguments(const Signature &sig, int nFlag, const void *pValue, const int *nLocate) {
    if (pValue == nullptr) {
        TR104_DEBUG_AS(sig.name, "param error, %s is null\n", sig.valueName);
        return TR104_ERR_PARAM;
    }
    if (sig.locate != Locate::None) {
        if (nLocate == nullptr) {
            say(sig.name, "param error, nLocate is null\n");
            return TR104_ERR_PARAM;
        }
        // One unsigned comparison: lines 1..2, or 0..2 where 0 means every line.
        const unsigned int first = sig.locate == Locate::LineOrAll ? 0u : 1u;
        if (sig.locate != Locate::Unchecked && static_cast<unsigned int>(nLocate[2]) - first >= 3u - first) {
            TR104_DEBUG_AS(sig.name, "param error, nLocate[2]=%d\n", nLocate[2]);
            return TR104_ERR_PARAM;
        }
    }
    const bool flagServed = (nFlag == 0 && sig.access != Access::SetOnly) ||
                            (nFlag == 1 && sig.access != Access::GetOnly);
    if (!flagServed) {
        TR104_DEBUG_AS(sig.name, sig.flagError, nFlag);
        return TR104_ERR_PARAM;
    }
    return TR104_OK;
}

int readRecord(const char *name, void *record, unsigned int len, unsigned int cmd) {
    Tr104Msg msg;
    if (tr104MsgConstruct(&msg) != 0) {
        say(name, "construct msg error\n");
        return TR104_ERR_EXCHANGE;
    }
    return CfgPreHandleGetParam(&msg, record, len, cmd) == 0 ? TR104_OK : TR104_ERR_EXCHANGE;
}

int sendRecord(const char *name, const void *record, unsigned int len, unsigned int cmd) {
    Tr104Msg msg;
    if (tr104MsgConstruct(&msg) != 0) {
        say(name, "construct msg error\n");
        return TR104_ERR_EXCHANGE;
    }
    msg.cmd_type = static_cast<uint32_t>(gCurrentModule);
    msg.cmd = cmd;
    if (record != nullptr) {
        std::memcpy(msg.cfgBuffer, record, len < TR104_CFG_BUFFER_LEN ? len : TR104_CFG_BUFFER_LEN);
    }
    return msgSndAndRcvSem(&msg, 1) == -1 ? TR104_ERR_EXCHANGE : TR104_OK;
}

int readText(const char *name, char *dst, unsigned int len, unsigned int cmd) {
    Tr104Msg msg;
    if (tr104MsgConstruct(&msg) != 0) {
        say(name, "construct msg error\n");
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

}  // namespace tr104::sip
