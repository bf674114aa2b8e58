// Telephone-event settings, the same under both protocols: one 20-byte block read whole; a set
// sends a zero block with its own word and its bit in the mask, without waiting for a reply.
// Each handler is a descriptor (the catalogue's TelEvent rows).
#include "tr104/core/core.h"
#include "tr104/statistics.h"

static_assert(sizeof(Tr104TelEventBlock) == 20);
static_assert(offsetof(Tr104TelEventBlock, un2833PayloadType) == 4);
static_assert(offsetof(Tr104TelEventBlock, un2198PayloadType) == 8);
static_assert(offsetof(Tr104TelEventBlock, un2833NegoState) == 12);

namespace tr104::stats {
namespace {

struct TelEvent {
    const char *name;
    const char *valueName;  // "param error, %s is null\n", and the entry line
    uint8_t offset;
    uint32_t mask;
    uint32_t setCmd;
    uint32_t high;  // largest value a set accepts
    const char *getDone;
    const char *getError;
    const char *rangeError;  // value, and the upper limit where the text names it
    const char *setError;
};

int telEvent(const TelEvent &e, int nFlag, void *pValue) {
    if (pValue == nullptr) {
        TR104_DEBUG_AS(e.name, "param error, %s is null\n", e.valueName);
        return TR104_ERR_PARAM;
    }
    TR104_DEBUG_AS(e.name, " nFlag =[%d], *%s= [%d]\n", nFlag, e.valueName, core::intValue(pValue));
    Tr104TelEventBlock block{};
    char *word = reinterpret_cast<char *>(&block) + e.offset;
    if (nFlag == 0) {
        if (core::readRecord(e.name, &block, sizeof(block), TR104_TEL_EVENT_GET_CMD) != TR104_OK) {
            core::say(e.name, e.getError);
            return TR104_ERR_EXCHANGE;
        }
        uint32_t value;
        std::memcpy(&value, word, sizeof(value));
        core::putInt(pValue, static_cast<int>(value));
        TR104_DEBUG_AS(e.name, e.getDone, static_cast<int>(value));
        return TR104_OK;
    }
    if (nFlag != 1) {
        TR104_DEBUG_AS(e.name, "param error, nFlag[%d]\n", nFlag);
        return TR104_ERR_PARAM;
    }
    const uint32_t value = static_cast<uint32_t>(core::intValue(pValue));
    if (value > e.high) {
        TR104_DEBUG_AS(e.name, e.rangeError, static_cast<int>(value), static_cast<int>(e.high));
        return TR104_ERR_PARAM;
    }
    std::memcpy(word, &value, sizeof(value));
    block.unMask = e.mask;
    if (core::sendRecord(e.name, &block, sizeof(block), e.setCmd) != TR104_OK) {
        core::say(e.name, e.setError);
        return TR104_ERR_EXCHANGE;
    }
    return TR104_OK;
}

}  // namespace
}  // namespace tr104::stats

// The descriptors and handlers of the catalogue's TelEvent rows (tr104/catalogue/framework.toml).
#include "tr104/catalogue/framework_TelEvent.inc"
