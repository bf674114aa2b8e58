// The voice module's network time client: enable, status, two NTP servers, the current local
// time and the time zone as a signed offset; plus the time-zone name, kept in the library.
#include <cstdio>

#include "tr104/netcfg/netcfg_internal.h"

extern "C" {
TR104_API char gLocalTimeZoneName[64] = {0};
}

namespace tr104::netcfg {
namespace {

constexpr char kFlagError[] = "param error, nFlag[%d]\n";

// A text of the time block (or, for the local time, the whole answer).  A set copies the text
// as it stands, so a long server name runs on over the fields after it (bounded at the block's
// end); a get reads the text within its own field, whatever runs on after it.
struct TimeText {
    const char *name;
    const char *valueName;
    const char *entry;  // "%d" nFlag, "%s" the text (sets only); null: none
    uint16_t getCmd, setCmd;  // setCmd 0: read only
    uint16_t offset;  // in the time block; 0: the answer is the text itself
    uint16_t room;  // bytes a get hands the caller at most: the field's room
    const char *getError;
    const char *getDone;
    const char *sendError;
};

using Block = Tr104TimePayload;
// The current local time: the voice module answers with the text alone.
constexpr uint16_t kLocalTimeLen = 256;

int timeText(const TimeText &t, int nFlag, void *pValue) {
    if (pValue == nullptr) {
        TR104_DEBUG_AS(t.name, "param error, %s is null\n", t.valueName);
        return TR104_ERR_PARAM;
    }
    char *text = static_cast<char *>(pValue);
    if (t.entry != nullptr) {
        TR104_DEBUG_AS(t.name, t.entry, nFlag, nFlag == 1 ? text : "");
    }
    if (nFlag == 0) {
        if (t.offset == 0) {
            if (readText(t.name, text, t.room, t.getCmd) != TR104_OK) {
                say(t.name, t.getError);
                return TR104_ERR_EXCHANGE;
            }
            TR104_DEBUG_AS(t.name, t.getDone, text);
            return TR104_OK;
        }
        char block[sizeof(Block)] = {};
        if (readRecord(t.name, block, sizeof(block), t.getCmd) != TR104_OK) {
            say(t.name, t.getError);
            return TR104_ERR_EXCHANGE;
        }
        tr104::core::copyFieldText(text, block + t.offset, t.room);
        TR104_DEBUG_AS(t.name, t.getDone, text);
        return TR104_OK;
    }
    if (nFlag != 1 || t.setCmd == 0) {
        TR104_DEBUG_AS(t.name, kFlagError, nFlag);
        return TR104_ERR_PARAM;
    }
    char block[sizeof(Block)] = {};
    tr104::core::copyBounded(block + t.offset, text, sizeof(block) - t.offset - 1u);
    if (sendRecord(t.name, block, sizeof(block), t.setCmd) != TR104_OK) {
        say(t.name, t.sendError);
        return TR104_ERR_EXCHANGE;
    }
    return TR104_OK;
}

bool digit(char c) { return c >= '0' && c <= '9'; }

}  // namespace
}  // namespace tr104::netcfg

using namespace tr104::netcfg;

// "+HH:MM" or "-HH:MM", hours 00..12.  Hours 02 and 12 take only ":00"; the other hours take any
// minutes 00..59.
extern "C" TR104_API int checkTimeZoneValid(const char *pTimeZone) {
    if (pTimeZone == nullptr || strnlen(pTimeZone, 7) != 6) {
        return 0;
    }
    const char *z = pTimeZone;
    if (z[0] != '+' && z[0] != '-')
        return 0;
    if (z[1] != '0' && z[1] != '1')
        return 0;
    if (!digit(z[2]) || z[3] != ':')
        return 0;
    if (z[4] < '0' || z[4] > '5' || !digit(z[5]))
        return 0;
    if (z[1] == '1' && z[2] > '2')
        return 0;
    if (z[2] == '2' && (z[4] != '0' || z[5] != '0'))
        return 0;
    return 1;
}

// The offset travels in seconds (east positive) at offset 52 of the time block.  An offset of
// 0 reads back as "-00:00".
extern "C" TR104_API int Tr104TimeLocalTimeZone(int nFlag, void *pLocalTimeZone) {
    if (pLocalTimeZone == nullptr) {
        TR104_DEBUG("param error, pLocalTimeZone is null\n");
        return TR104_ERR_PARAM;
    }
    char *text = static_cast<char *>(pLocalTimeZone);
    TR104_DEBUG("nFlag[%d], pLocalTimeZone[%s]\n", nFlag, nFlag == 1 ? text : "");
    char block[TR104_TIME_PAYLOAD_LEN] = {};
    if (nFlag == 0) {
        if (readRecord(__func__, block, sizeof(block), TR104_GET_TIME_ZONE_ID) != TR104_OK) {
            TR104_DEBUG("get Local Time Zone error \n");
            return TR104_ERR_EXCHANGE;
        }
        int offset = intValue(block + TR104_TIME_OFFSET_AT);
        const char sign = offset >= 1 ? '+' : '-';
        // Negated as an unsigned word: the most negative offset has no positive int.
        const unsigned int magnitude =
            offset >= 1 ? static_cast<unsigned int>(offset) : 0u - static_cast<unsigned int>(offset);
        snprintf(text, 7, "%c%02u:%02u", sign, (magnitude / 3600u) % 100u, (magnitude % 3600u) / 60u);
        TR104_DEBUG("get Local Time Zone [%s] \n", text);
        return TR104_OK;
    }
    if (nFlag != 1) {
        TR104_DEBUG("param error, nFlag[%d]\n", nFlag);
        return TR104_ERR_PARAM;
    }
    if (checkTimeZoneValid(text) == 0) {
        TR104_DEBUG("param error, pLocalTimeZone[%.16s]\n", text);
        return TR104_ERR_PARAM;
    }
    const int hours = 10 * (text[1] - '0') + (text[2] - '0');
    const int minutes = 10 * (text[4] - '0') + (text[5] - '0');
    const int seconds = (hours * 3600 + minutes * 60) * (text[0] == '-' ? -1 : 1);
    tr104::core::putInt(block + TR104_TIME_OFFSET_AT, seconds);
    if (sendRecord(__func__, block, sizeof(block), TR104_SET_TIME_ZONE_ID) != TR104_OK) {
        TR104_DEBUG("SET_NTP_LocalTimeZone_ID msg snd failed.\n");
        return TR104_ERR_EXCHANGE;
    }
    return TR104_OK;
}

// The name is the library's own: it is not sent to the voice module.
extern "C" TR104_API int Tr104TimeLocalTimeZoneName(int nFlag, void *pLocalTimeZoneName) {
    if (pLocalTimeZoneName == nullptr) {
        TR104_DEBUG("param error, pLocalTimeZoneName is null\n");
        return TR104_ERR_PARAM;
    }
    char *text = static_cast<char *>(pLocalTimeZoneName);
    TR104_DEBUG("nFlag[%d], pLocalTimeZoneName[%s]\n", nFlag, nFlag == 1 ? text : "");
    if (nFlag == 0) {
        tr104::core::copyBounded(text, gLocalTimeZoneName, sizeof(gLocalTimeZoneName) - 1);
        TR104_DEBUG("get Local Time Zone Name [%s] \n", text);
        return TR104_OK;
    }
    if (nFlag != 1) {
        TR104_DEBUG("param error, nFlag[%d]\n", nFlag);
        return TR104_ERR_PARAM;
    }
    if (strnlen(text, sizeof(gLocalTimeZoneName)) >= sizeof(gLocalTimeZoneName)) {
        TR104_DEBUG("param error, pLocalTimeZoneName is too long\n");
        return TR104_ERR_PARAM;
    }
    std::memset(gLocalTimeZoneName, 0, sizeof(gLocalTimeZoneName));
    tr104::core::copyBounded(gLocalTimeZoneName, text, sizeof(gLocalTimeZoneName) - 1);
    return TR104_OK;
}

#include "tr104/catalogue/netcfg_TimeText.inc"
