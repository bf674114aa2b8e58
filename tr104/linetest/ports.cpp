// The analogue phone ports: names and identifiers, dial mode, dial-tone timing, polarity
// reversal, the metering pulse (Kc) type, caller-id timing and the hook-flash times; and the
// held-value body every handler of this area shares.
#include <cstdio>

#include "tr104/linetest/linetest_internal.h"

namespace tr104::linetest {

int held(const Held &h, int nFlag, void *pValue, int *nLocate) {
    const int rc = checkArguments(h.sig, nFlag, pValue, nLocate);
    if (rc != TR104_OK) {
        return rc;
    }
    if (h.entry != nullptr) {
        TR104_DEBUG_AS(h.sig.name, h.entry, nFlag, intValue(pValue));
    }
    const int port = h.sig.locate == Locate::None ? 0 : portOf(nLocate);
    int32_t &entry = h.values[h.sig.locate == Locate::None ? 0 : port - 1];
    const auto print = [&](const char *format, int value) {
        if (h.valueFirst) {
            TR104_DEBUG_AS(h.sig.name, format, value, port);
        } else {
            TR104_DEBUG_AS(h.sig.name, format, port, value);
        }
    };
    if (nFlag == 0) {
        putInt(pValue, entry);
        print(h.getDone, entry);
        return TR104_OK;
    }
    const int value = intValue(pValue);
    if (h.accept == Accept::Bool && value != 0 && value != 1) {
        say(h.sig.name, h.rangeError);
        return TR104_ERR_PARAM;
    }
    entry = value;
    print(h.setDone, value);
    return TR104_OK;
}

namespace {

constexpr char kPortNames[TR104_LINETEST_PORTS][10] = {"PORT1", "PORT2"};
constexpr int32_t kPortIds[TR104_LINETEST_PORTS] = {1, 2};
int32_t gReversePole[TR104_LINETEST_PORTS] = {1, 1};
char gClipWhen[16] = "AfterRing";
int32_t gClipReversePole[1] = {0};

const TextCode kDialModes[] = {{"First", 0}, {"DTMF", 1}, {"Pulse", 2}};
const TextCode kKcTypes[] = {{"16Kc", 0}, {"12Kc", 1}, {"disable", 2}};
const TextCode kClipWhen[] = {{"AfterRing", 0}, {"BeforeRing", 1}};

// Dial mode: one body for both protocols.  The port record and its dial-mode byte belong to
// the analogue port, not to the signalling stack, so the same exchange serves SIP and H.248.
int dialMode(const char *name, int nFlag, void *pValue, int *nLocate) {
    const int port = checkedPort({name, "pDialMode", Locate::Port, Access::GetSet}, nFlag, pValue, nLocate);
    if (port < 0) {
        return port;
    }
    TR104_DEBUG_AS(name, "nFlag[%d], pDialMode[%s], nLocate[1]=%d\n", nFlag,
                   nFlag == 1 ? static_cast<const char *>(pValue) : "", port);
    Tr104PortRecord rec{};
    rec.ucPort = static_cast<uint8_t>(port);
    if (nFlag == 0) {
        if (readRecord(name, &rec, sizeof(rec), GET_PORT_DIAL_MODE_ID) != TR104_OK) {
            TR104_DEBUG_AS(name, "get port[%d] dial mode error \n", port);
            return TR104_ERR_EXCHANGE;
        }
        const TextCode *mode = findCode(kDialModes, rec.cDialMode);
        if (mode == nullptr) {
            TR104_DEBUG_AS(name, "get port[%d] dial mode error \n", port);
            return TR104_ERR_EXCHANGE;
        }
        putText(pValue, mode->text);
        TR104_DEBUG_AS(name, "get port[%d] dial mode[%s] ok \n", port, mode->text);
        return TR104_OK;
    }
    const char *text = static_cast<const char *>(pValue);
    const TextCode *mode = findText(kDialModes, text);
    if (mode == nullptr) {
        TR104_DEBUG_AS(name, "set port[%d] dial mode[%s] error\n", port, text);
        return TR104_ERR_PARAM;
    }
    rec.cDialMode = static_cast<int8_t>(mode->code);
    if (sendRecord(name, &rec, sizeof(rec), SET_PORT_DIAL_MODE_ID) != TR104_OK) {
        say(name, "SET_PORT_DIAL_MODE_ID msg snd failed.\n");
        return TR104_ERR_EXCHANGE;
    }
    return TR104_OK;
}

// Hook-flash times: multiple of 10 first, then the range; the record carries the one field.
struct Flash {
    const char *name;
    const char *valueName;
    uint32_t selector;
    int low;
    const char *multipleError;
    const char *rangeError;
    const char *getError;
    const char *getDone;
    const char *entry;
};
int flashTime(const Flash &f, int nFlag, void *pValue) {
    const int rc = checkArguments({f.name, f.valueName, Locate::None, Access::GetSet}, nFlag, pValue, nullptr);
    if (rc != TR104_OK) {
        return rc;
    }
    TR104_DEBUG_AS(f.name, f.entry, nFlag, intValue(pValue));
    Tr104FlashRecord rec{};
    rec.unSelector = f.selector;
    uint32_t &field = f.selector == TR104_FLASH_UP ? rec.unFlashUp : rec.unFlashDown;
    if (nFlag == 0) {
        if (readRecord(f.name, &rec, sizeof(rec), GET_CODEC_TIME_ID) != TR104_OK) {
            say(f.name, f.getError);
            return TR104_ERR_EXCHANGE;
        }
        putInt(pValue, static_cast<int>(field));
        TR104_DEBUG_AS(f.name, f.getDone, static_cast<int>(field));
        return TR104_OK;
    }
    const int value = intValue(pValue);
    if (value % 10 != 0) {
        say(f.name, f.multipleError);
        return TR104_ERR_PARAM;
    }
    if (value < f.low || value > 2500) {
        say(f.name, f.rangeError);
        return TR104_ERR_PARAM;
    }
    field = static_cast<uint32_t>(value);
    if (sendRecord(f.name, &rec, sizeof(rec), SET_CODEC_TIME_ID) != TR104_OK) {
        say(f.name, "SET_CODEC_TIME_ID msg snd failed.\n");
        return TR104_ERR_EXCHANGE;
    }
    return TR104_OK;
}

// A text chosen from a short list and kept in library memory.
int clipWhen(int nFlag, void *pValue) {
    constexpr const char *name = "Tr104PhysicalInterfaceClipWhen";
    const int rc = checkArguments({name, "pClipWhen", Locate::None, Access::GetSet}, nFlag, pValue, nullptr);
    if (rc != TR104_OK) {
        return rc;
    }
    TR104_DEBUG_AS(name, "nFlag[%d], *pClipWhen[%s]\n", nFlag,
                   nFlag == 1 ? static_cast<const char *>(pValue) : gClipWhen);
    if (nFlag == 0) {
        putText(pValue, gClipWhen);
        TR104_DEBUG_AS(name, "get pClipWhen[%s]\n", gClipWhen);
        return TR104_OK;
    }
    const TextCode *when = findText(kClipWhen, static_cast<const char *>(pValue));
    if (when == nullptr) {
        say(name, " ClipWhen param error.\n");
        return TR104_ERR_PARAM;
    }
    std::strcpy(gClipWhen, when->text);
    TR104_DEBUG_AS(name, "set pClipWhen[%s]\n", gClipWhen);
    return TR104_OK;
}

}  // namespace
}  // namespace tr104::linetest

// Every held value of the area (thresholds, test and call settings) is described here.
#include "tr104/catalogue/linetest_Held.inc"
#include "tr104/catalogue/linetest_HeldWide.inc"
#include "tr104/catalogue/linetest_Flash.inc"

using namespace tr104::linetest;

TR104_API int Tr104PhysicalInterfacePort(int nFlag, void *pValue, int *nLocate) {
    const int rc =
        checkArguments({__func__, "pPhyInterfacePort", Locate::PortAsLine, Access::GetOnly}, nFlag, pValue, nLocate);
    if (rc == TR104_OK) {
        putText(pValue, kPortNames[slotOf(nLocate)]);
    }
    return rc;
}

TR104_API int Tr104PhysicalInterfaceID(int nFlag, void *pValue, int *nLocate) {
    const int rc = checkArguments({__func__, "pPhyInterfaceID", Locate::Port, Access::GetOnly}, nFlag, pValue, nLocate);
    if (rc == TR104_OK) {
        putInt(pValue, kPortIds[slotOf(nLocate)]);
    }
    return rc;
}

TR104_API int Tr104PhysicalInterfaceDialMode(int nFlag, void *pValue, int *nLocate) {
    return dialMode(__func__, nFlag, pValue, nLocate);
}

TR104_API int Tr104PhysicalInterfaceDialModeH248(int nFlag, void *pValue, int *nLocate) {
    return dialMode(__func__, nFlag, pValue, nLocate);
}

TR104_API int Tr104PhysicalInterfaceTestDialToneDrawTimeH248(int nFlag, void *pValue, int *nLocate) {
    const int port =
        checkedPort({__func__, "pDialToneDrawTime", Locate::Port, Access::GetOnly}, nFlag, pValue, nLocate);
    if (port < 0) {
        return port;
    }
    TR104_DEBUG("nFlag[%d], *pDialToneDrawTime[%f], nLocate[1]=%d\n", nFlag, 0.0, port);
    Tr104PortRecord rec{};
    rec.ucPort = static_cast<uint8_t>(port);
    if (readRecord(__func__, &rec, sizeof(rec), GET_PORT_DRAW_TIME_ID) != TR104_OK) {
        TR104_DEBUG("get line[%d] dial tone draw time failed.\n", port);
        return TR104_ERR_EXCHANGE;
    }
    // Whole seconds: the milliseconds are divided as integers before the conversion.
    const float seconds = static_cast<float>(rec.unDialToneDrawTime / 1000u);
    putFloat(pValue, seconds);
    TR104_DEBUG("get line[%d] dial tone draw time[%f].\n", port, static_cast<double>(seconds));
    return TR104_OK;
}

TR104_API int Tr104PhysicalInterfaceTestDialToneBreakTime(int nFlag, void *pValue, int *nLocate) {
    const int rc =
        checkArguments({__func__, "pDialToneBreakTime", Locate::Port, Access::GetOnly}, nFlag, pValue, nLocate);
    if (rc == TR104_OK) {
        putFloat(pValue, 0.0f);
        TR104_DEBUG("nFlag[%d], *pDialToneBreakTime[%f], nLocate[1]=%d\n", nFlag, 0.0, portOf(nLocate));
    }
    return rc;
}

TR104_API int Tr104PhysicalInterfaceKcType(int nFlag, void *pValue, int *nLocate) {
    const int rc = checkArguments({__func__, "pKcType", Locate::KcPort, Access::GetSet}, nFlag, pValue, nLocate);
    if (rc != TR104_OK) {
        return rc;
    }
    TR104_DEBUG("nFlag[%d], *pKcType[%s], nLocate[1]=%d\n", nFlag, nFlag == 1 ? static_cast<const char *>(pValue) : "",
                portOf(nLocate));
    Tr104KcRecord rec{};
    rec.unPort = static_cast<uint32_t>(portOf(nLocate));
    if (nFlag == 0) {
        if (readRecord(__func__, &rec, sizeof(rec), GET_KC_TYPE_ID) != TR104_OK) {
            say(__func__, "get Physical Interface Kc Type error.\n");
            return TR104_ERR_EXCHANGE;
        }
        const TextCode *type = findCode(kKcTypes, rec.unKcType <= 1u ? static_cast<int>(rec.unKcType) : 2);
        putText(pValue, type->text);
        TR104_DEBUG("get Physical Interface Kc Type [%s].\n", type->text);
        return TR104_OK;
    }
    const TextCode *type = findText(kKcTypes, static_cast<const char *>(pValue));
    if (type == nullptr) {
        say(__func__, " Kc Type param error.\n");
        return TR104_ERR_PARAM;
    }
    rec.unKcType = static_cast<uint32_t>(type->code);
    if (sendRecord(__func__, &rec, sizeof(rec), SET_KC_TYPE_ID) != TR104_OK) {
        say(__func__, "SET_KC_TYPE_ID msg snd failed.\n");
        return TR104_ERR_EXCHANGE;
    }
    return TR104_OK;
}

TR104_API int Tr104PhysicalInterfaceClipWhen(int nFlag, void *pValue) { return clipWhen(nFlag, pValue); }

TR104_API int Tr104PhysicalInterfaceMWIRingFlag(int nFlag, void *pValue) {
    if (pValue == nullptr) {
        say(__func__, "param error, pMWIRingFlag is null\n");
        return TR104_ERR_PARAM;
    }
    TR104_DEBUG("nFlag[%d], *pMWIRingFlag[%d]\n", nFlag, intValue(pValue));
    if (nFlag == 0) {
        putInt(pValue, 0);
        TR104_DEBUG("get *pMWIRingFlag[%d]\n", 0);
        return TR104_OK;
    }
    if (nFlag == 1) {
        say(__func__, "not support write MWIRingFlag\n");
    } else {
        TR104_DEBUG("param error, nFlag[%d]\n", nFlag);
    }
    return TR104_ERR_PARAM;
}
