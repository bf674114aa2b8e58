// The generic bodies of the H.248 handlers: a field of a voice-module block, a value held in
// library memory.
#include "tr104/h248/h248_internal.h"

namespace tr104::h248 {
namespace {

using core::intValue;
using core::putInt;
using core::say;

constexpr uint32_t kMgcIndexOffset = offsetof(Tr104H248MgcBlock, unMgcIndex);

uint32_t readAt(const char *data, uint16_t offset, uint8_t width) {
    if (width == 1) {
        return static_cast<unsigned char>(data[offset]);
    }
    if (width == 2) {
        uint16_t v;
        std::memcpy(&v, data + offset, sizeof(v));
        return v;
    }
    uint32_t v;
    std::memcpy(&v, data + offset, sizeof(v));
    return v;
}

void writeAt(char *data, uint16_t offset, uint8_t width, uint32_t value) {
    if (width == 2) {
        const uint16_t v = static_cast<uint16_t>(value);
        std::memcpy(data + offset, &v, sizeof(v));
    } else {
        std::memcpy(data + offset, &value, sizeof(value));
    }
}

// Writes the request's instance word.
void placeInstance(char *data, Where where, int line) {
    switch (where) {
    case Where::Line:
    case Where::Port:
    case Where::Line1: writeAt(data, 0, 4, static_cast<uint32_t>(line)); break;
    case Where::Instance: writeAt(data, 2, 2, static_cast<uint32_t>(line)); break;
    case Where::Secondary: writeAt(data, kMgcIndexOffset, 4, 1); break;
    case Where::Primary:
    case Where::None: break;
    }
}

bool isLine(Where where) { return where == Where::Line || where == Where::Port || where == Where::Instance; }

struct TextMap {
    const char *from;
    const char *to;
    int server;
};

// Registration state texts of the port status: the data model's state and server status.
const TextMap kRegStates[] = {
    {"IDLE", "Up", 1},
    {"INACTIVE", "Initializing", 0},
    {"REGING", "Registering", 2},
    {"LOCAL_REG", "Unregistering", 2},
    {"REG_FAIL", "Error", 5},
    {"LINE_FAIL", "Disabled", 2},
};

const TextMap *regState(const char *data, uint16_t offset, uint8_t width) {
    char state[64];
    core::copyFieldText(state, data + offset, width < sizeof(state) ? width : sizeof(state));
    for (const TextMap &row : kRegStates) {
        if (std::strcmp(row.from, state) == 0) {
            return &row;
        }
    }
    return nullptr;
}

int mgcStatus(uint32_t code) {
    switch (code) {
    case 0: return 1;
    case 1: return 2;
    case 2: return 0;
    default: return 3;
    }
}

void printDone(const BlockValue &v, int nFlag, int line, const void *pValue) {
    if (!gTr104CfgDebug) {
        return;
    }
    const bool text = v.conv == Conv::Text || v.conv == Conv::Codes || v.conv == Conv::RegText;
    if (v.done == nullptr) {
        if (text) {
            TR104_DEBUG_AS(v.sig.name, "nFlag[%d], %s[%s]\n", nFlag, v.sig.valueName,
                           static_cast<const char *>(pValue));
        } else {
            TR104_DEBUG_AS(v.sig.name, "nFlag[%d], %s[%d]\n", nFlag, v.sig.valueName, intValue(pValue));
        }
    } else if (v.where == Where::Instance || v.doneNamesFlag) {
        TR104_DEBUG_AS(v.sig.name, v.done, nFlag, static_cast<const char *>(pValue), line);
    } else if (isLine(v.where)) {
        if (text) {
            TR104_DEBUG_AS(v.sig.name, v.done, line, static_cast<const char *>(pValue));
        } else {
            TR104_DEBUG_AS(v.sig.name, v.done, line, intValue(pValue));
        }
    } else {
        TR104_DEBUG_AS(v.sig.name, v.done, intValue(pValue));
    }
}

int getValue(const BlockValue &v, int nFlag, void *pValue, int line) {
    alignas(4) char data[TR104_CFG_BUFFER_LEN] = {};
    const char *getError = v.getError != nullptr ? v.getError : v.block->getError;
    if (fetchBlock(v.sig.name, *v.block, data, v.where, line) != TR104_OK) {
        TR104_DEBUG_AS(v.sig.name, getError, line);
        return TR104_ERR_EXCHANGE;
    }
    if (v.where == Where::Primary || v.where == Where::Secondary) {
        const uint32_t wanted = v.where == Where::Secondary ? 1u : 0u;
        if (readAt(data, kMgcIndexOffset, 4) != wanted) {
            say(v.sig.name, "param error\n");
            return TR104_ERR_EXCHANGE;
        }
    }
    const uint16_t offset = static_cast<uint16_t>(v.offset + (line > 0 ? line - 1 : 0) * v.stride);
    const uint32_t raw = v.conv == Conv::Text || v.conv == Conv::RegText || v.conv == Conv::ServerStatus
                             ? 0
                             : readAt(data, offset, v.width);
    char *text = static_cast<char *>(pValue);
    switch (v.conv) {
    case Conv::Word: putInt(pValue, static_cast<int>(raw / v.scale)); break;
    case Conv::Byte: putInt(pValue, static_cast<int>(raw)); break;
    case Conv::AddWord: putInt(pValue, static_cast<int>(static_cast<uint32_t>(intValue(pValue)) + raw)); break;
    case Conv::Inverted: putInt(pValue, raw != 1 ? 1 : 0); break;
    case Conv::PlusOne: putInt(pValue, static_cast<int>(raw + 1u)); break;
    case Conv::MgcStatus: putInt(pValue, mgcStatus(raw)); break;
    case Conv::Text: core::copyFieldText(text, data + offset, v.width); break;
    case Conv::Codes: {
        const TextCode *row = core::findCode(v.codes, v.codeCount, static_cast<int>(raw));
        std::strcpy(text, (row != nullptr ? row : &v.codes[v.codeCount - 1])->text);
        break;
    }
    case Conv::RegText:
        // An unknown state writes nothing.
        if (const TextMap *row = regState(data, offset, v.width)) {
            std::strcpy(text, row->to);
        }
        break;
    case Conv::ServerStatus: {
        const TextMap *row = regState(data, offset, v.width);
        putInt(pValue, row != nullptr ? row->server : 2);
        break;
    }
    }
    printDone(v, nFlag, line, pValue);
    return TR104_OK;
}

// The block value of a set, or false after printing why the value is refused.
bool encode(const BlockValue &v, const void *pValue, uint32_t *raw) {
    if (v.conv == Conv::Codes) {
        const TextCode *row = core::findText(v.codes, v.codeCount, static_cast<const char *>(pValue));
        if (row == nullptr) {
            TR104_DEBUG_AS(v.sig.name, v.rangeError, static_cast<const char *>(pValue));
            return false;
        }
        *raw = static_cast<uint32_t>(row->code);
        return true;
    }
    const int value = intValue(pValue);
    bool ok = core::inRange(value, v.low, v.high);
    if (v.conv == Conv::Word && v.codes != nullptr) {
        ok = core::findCode(v.codes, v.codeCount, value) != nullptr;
    }
    if (!ok) {
        TR104_DEBUG_AS(v.sig.name, v.rangeError, value);
        return false;
    }
    switch (v.conv) {
    case Conv::Inverted: *raw = value == 0 ? 1u : 0u; break;
    case Conv::PlusOne: *raw = static_cast<uint32_t>(value) - 1u; break;
    default: *raw = static_cast<uint32_t>(value) * v.scale; break;
    }
    return true;
}

int setValue(const BlockValue &v, const void *pValue, int line) {
    alignas(4) char data[TR104_CFG_BUFFER_LEN] = {};
    const uint16_t offset = static_cast<uint16_t>(v.offset + (line > 0 ? line - 1 : 0) * v.stride);
    if (v.conv == Conv::Text) {
        const char *text = static_cast<const char *>(pValue);
        if (strnlen(text, static_cast<size_t>(v.high) + 1) > static_cast<size_t>(v.high)) {
            core::say(v.sig.name, v.rangeError);
            return TR104_ERR_PARAM;
        }
        core::copyBounded(data + offset, text, static_cast<size_t>(v.high));
    } else {
        uint32_t raw = 0;
        if (!encode(v, pValue, &raw)) {
            return TR104_ERR_PARAM;
        }
        if (v.readFirst) {
            const char *getError = v.getError != nullptr ? v.getError : v.block->getError;
            if (fetchBlock(v.sig.name, *v.block, data, v.where, line) != TR104_OK) {
                TR104_DEBUG_AS(v.sig.name, getError, line);
                return TR104_ERR_EXCHANGE;
            }
        }
        writeAt(data, offset, v.width, raw);
    }
    placeInstance(data, v.where, line);
    if (v.bit != 0) {
        writeAt(data, 0, 2, v.bit);
    }
    if (core::sendRecord(v.sig.name, data, v.block->len, v.block->setCmd) != TR104_OK) {
        TR104_DEBUG_AS(v.sig.name, v.block->setError, line);
        return TR104_ERR_EXCHANGE;
    }
    if (v.doneNamesFlag) {
        printDone(v, 1, line, pValue);
    } else if (v.conv == Conv::Text || v.conv == Conv::Codes) {
        TR104_DEBUG_AS(v.sig.name, "nFlag[%d], %s[%s]\n", 1, v.sig.valueName, static_cast<const char *>(pValue));
    } else {
        TR104_DEBUG_AS(v.sig.name, "nFlag[%d], %s[%d]\n", 1, v.sig.valueName, intValue(pValue));
    }
    return TR104_OK;
}

}  // namespace

int instanceOf(Where where, const int *nLocate) {
    switch (where) {
    case Where::Line:
    case Where::Instance: return nLocate[2];
    case Where::Port: return nLocate[1];
    case Where::Line1: return 1;
    default: return 0;
    }
}

int checkArgs(const Signature &sig, Where where, int nFlag, const void *pValue, const int *nLocate) {
    if (where != Where::Port) {
        return core::checkArguments(sig, nFlag, pValue, nLocate);
    }
    const Signature unlocated{sig.name, sig.valueName, Locate::None, sig.access, sig.flagError};
    if (pValue != nullptr && (nLocate == nullptr || (nLocate[1] != 1 && nLocate[1] != 2))) {
        TR104_DEBUG_AS(sig.name, "param error, nLocate[1]=%d\n", nLocate != nullptr ? nLocate[1] : -1);
        return TR104_ERR_PARAM;
    }
    return core::checkArguments(unlocated, nFlag, pValue, nullptr);
}

int fetchBlock(const char *name, const Block &block, void *data, Where where, int line) {
    std::memset(data, 0, block.len);
    placeInstance(static_cast<char *>(data), where, line);
    return core::readRecord(name, data, block.len, block.getCmd);
}

int blockValue(const BlockValue &v, int nFlag, void *pValue, int *nLocate) {
    if (const int rc = checkArgs(v.sig, v.where, nFlag, pValue, nLocate); rc != TR104_OK) {
        return rc;
    }
    const int line = instanceOf(v.where, nLocate);
    return nFlag == 0 ? getValue(v, nFlag, pValue, line) : setValue(v, pValue, line);
}

int heldValue(const HeldValue &v, int nFlag, void *pValue) {
    if (const int rc = core::checkArguments(v.sig, nFlag, pValue, nullptr); rc != TR104_OK) {
        return rc;
    }
    const char *shown = v.shownName != nullptr ? v.shownName : v.sig.valueName;
    if (v.text) {
        char *held = static_cast<char *>(v.storage);
        char *text = static_cast<char *>(pValue);
        if (nFlag == 0) {
            core::copyBounded(text, held, v.size - 1u);
        } else {
            if (v.accepted != nullptr && core::findText(v.accepted, v.acceptedCount, text) == nullptr) {
                TR104_DEBUG_AS(v.sig.name, v.rangeError, text);
                return TR104_ERR_PARAM;
            }
            // Longer texts keep what the buffer holds.
            std::memset(held, 0, v.size);
            core::copyBounded(held, text, v.size - 1u);
        }
        TR104_DEBUG_AS(v.sig.name, "nFlag[%d], %s[%s]\n", nFlag, shown, text);
        return TR104_OK;
    }
    int *held = static_cast<int *>(v.storage);
    if (nFlag == 0) {
        putInt(pValue, *held);
    } else {
        const int value = intValue(pValue);
        if (!v.anyValue && !core::inRange(value, v.low, v.high)) {
            TR104_DEBUG_AS(v.sig.name, v.rangeError, value);
            return TR104_ERR_PARAM;
        }
        *held = value;
    }
    TR104_DEBUG_AS(v.sig.name, "nFlag[%d], %s[%d]\n", nFlag, shown, intValue(pValue));
    return TR104_OK;
}

}  // namespace tr104::h248
