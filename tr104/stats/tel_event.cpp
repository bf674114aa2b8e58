// Telephone-event settings, the same under both protocols: one 20-byte block read whole; a set
// sends a zero block with its own word and its bit in the mask, without waiting for a reply.
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

const TelEvent kEvents[] = {
    {"Tr104TelEvent2833NegoState", "pNegoState", offsetof(Tr104TelEventBlock, un2833NegoState),
     TR104_TEL_EVENT_NEGO_STATE, TR104_TEL_EVENT_SET_NEGO_CMD, 1, "get 2833 nego state [%d] \n",
     "get 2833 nego state error \n", "set 2833NegoState param *pNegoState=%d(0~1)error \n",
     "config 2833 nego state msg snd failed.\n"},
    // 128 is accepted: only 129 and above are refused.
    {"Tr104TelEvent2833PayloadType", "p2833PayloadType", offsetof(Tr104TelEventBlock, un2833PayloadType),
     TR104_TEL_EVENT_2833_PAYLOAD, TR104_TEL_EVENT_SET_PAYLOAD_CMD, 128, "get 2833 payload [%d] \n",
     "get 2833 payload error \n", "set 2833PayloadType param *p2833PayloadType=%d(0~%d)error \n",
     "config 2833 payload msg snd failed.\n"},
    {"Tr104TelEvent2198PayloadType", "p2198PayloadType", offsetof(Tr104TelEventBlock, un2198PayloadType),
     TR104_TEL_EVENT_2198_PAYLOAD, TR104_TEL_EVENT_SET_PAYLOAD_CMD, 128, "get 2198 payload [%d] \n",
     "get 2198 payload error \n", "set p2198PayloadType param *p2198PayloadType=%d(0~%d)error \n",
     "config 2198 payload msg snd failed.\n"},
};

}  // namespace

int telEvent(int index, int nFlag, void *pValue) {
    const TelEvent &e = kEvents[index];
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

}  // namespace tr104::stats

extern "C" TR104_API int Tr104TelEvent2833NegoState(int nFlag, void *pValue) {
    return tr104::stats::telEvent(0, nFlag, pValue);
}
extern "C" TR104_API int Tr104TelEvent2833PayloadType(int nFlag, void *pValue) {
    return tr104::stats::telEvent(1, nFlag, pValue);
}
extern "C" TR104_API int Tr104TelEvent2198PayloadType(int nFlag, void *pValue) {
    return tr104::stats::telEvent(2, nFlag, pValue);
}
