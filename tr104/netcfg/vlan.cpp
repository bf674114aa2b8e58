// VLAN tagging of the signalling (SIP) and media (RTP) traffic: for each, the VLAN id, priority
// and tag type id and the service VLAN's.  Writes wait in slot 6 (SIP) or 7 (RTP) of the
// deferred buffer until all six values of the class are there or the slot's timer fires; the
// handlers start that timer and test the six bits themselves.  The descriptors are the rows of
// tr104/catalogue/netcfg.toml.
#include <bit>

#include "tr104/core/deferred_internal.h"
#include "tr104/netcfg/netcfg_internal.h"
#include "tr104/startup.h"

namespace tr104::netcfg {
namespace {

enum class Field : uint8_t { VlanId, VlanPriority, VlanTypeId, SVlanId, SVlanPriority, SVlanTypeId };

// How a set value is taken.
enum class Fold : uint8_t {
    Id,  // 1..4096 kept, any other value stored as 0
    Priority,  // 1..7 kept, else 0
    TypeId,  // 1..65535 kept, else 0
    PriorityOrRefuse,  // 0..7 kept, anything else refused
};

constexpr uint16_t kAllBits = 0x3F;

struct VlanClassSpec {
    int slot;
    uint32_t kind;
    Tr104VlanClass Tr104VlanPayload::*klass;
    const char *applyName;
    const char *readFailed;
    const char *sendFailed;
};

constexpr VlanClassSpec kSip{6,
                             1,
                             &Tr104VlanPayload::sip,
                             "setSipVlanParam",
                             "get sip vlan param failed.\n",
                             "SET_SIP_VLAN_ID msg snd failed.\n"};
constexpr VlanClassSpec kRtp{7,
                             2,
                             &Tr104VlanPayload::rtp,
                             "setRtpVlanParam",
                             "get rtp vlan param failed.\n",
                             "SET_RTP_VLAN_ID msg snd failed.\n"};

struct VlanValue {
    const char *name;
    const char *valueName;  // "param error, %s is null\n"
    const char *entry;  // "%d" nFlag and the value; null: kCommonEntry
    const char *words;  // "get %s error\n", "get %s [%d]\n"
    const VlanClassSpec &klass;
    Field field;
    Fold fold;
    const char *applyFailed;
};

constexpr char kCommonEntry[] = " nFlag =[%d], *%s= [%d]\n";

uint16_t bitOf(Field f) { return static_cast<uint16_t>(1u << static_cast<unsigned>(f)); }

int read(const Tr104VlanClass &c, Field f) {
    switch (f) {
    case Field::VlanId: return c.usVlanId;
    case Field::VlanPriority: return c.ucVlanPriority;
    case Field::VlanTypeId: return static_cast<int>(c.unVlanTypeId);
    case Field::SVlanId: return c.usSVlanId;
    case Field::SVlanPriority: return c.ucSVlanPriority;
    case Field::SVlanTypeId: return static_cast<int>(c.unSVlanTypeId);
    }
    return 0;
}

void write(Tr104VlanClass &c, Field f, uint32_t v) {
    switch (f) {
    case Field::VlanId: c.usVlanId = static_cast<uint16_t>(v); break;
    case Field::VlanPriority: c.ucVlanPriority = static_cast<uint8_t>(v); break;
    case Field::VlanTypeId: c.unVlanTypeId = v; break;
    case Field::SVlanId: c.usSVlanId = static_cast<uint16_t>(v); break;
    case Field::SVlanPriority: c.ucSVlanPriority = static_cast<uint8_t>(v); break;
    case Field::SVlanTypeId: c.unSVlanTypeId = v; break;
    }
}

// The value a set stores, or -1 when it is refused.
int64_t folded(Fold fold, int value) {
    switch (fold) {
    case Fold::Id: return core::inRange(value, 1, 4096) ? value : 0;
    case Fold::Priority: return core::inRange(value, 1, 7) ? value : 0;
    case Fold::TypeId: return core::inRange(value, 1, 65535) ? value : 0;
    case Fold::PriorityOrRefuse: return core::inRange(value, 0, 7) ? value : -1;
    }
    return -1;
}

Tr104VlanPayload *slotPayload(const VlanClassSpec &k) {
    return static_cast<Tr104VlanPayload *>(getTr104CfgParamInfoParamBuffer(k.slot));
}

int vlanValue(const VlanValue &v, int nFlag, void *pValue) {
    if (pValue == nullptr) {
        TR104_DEBUG_AS(v.name, "param error, %s is null\n", v.valueName);
        return TR104_ERR_PARAM;
    }
    const int value = intValue(pValue);
    if (v.entry == nullptr) {
        TR104_DEBUG_AS(v.name, kCommonEntry, nFlag, v.valueName, value);
    } else {
        TR104_DEBUG_AS(v.name, v.entry, nFlag, value);
    }
    Tr104Msg msg;
    core::fillRequestRecord(&msg);
    if (nFlag == 0) {
        Tr104VlanPayload payload{};
        if (CfgPreHandleGetParam(&msg, &payload, sizeof(payload), TR104_GET_VLAN_ID) != 0) {
            TR104_DEBUG_AS(v.name, "get %s error\n", v.words);
            return TR104_ERR_EXCHANGE;
        }
        const int current = read(payload.*v.klass.klass, v.field);
        putInt(pValue, current);
        TR104_DEBUG_AS(v.name, "get %s [%d]\n", v.words, current);
        return TR104_OK;
    }
    if (nFlag != 1) {
        TR104_DEBUG_AS(v.name, "param error, nFlag[%d]\n", nFlag);
        return TR104_ERR_PARAM;
    }
    const int64_t stored = folded(v.fold, value);
    if (stored < 0) {
        TR104_DEBUG_AS(v.name, "param error, %s[%d] is error\n", v.valueName, value);
        return TR104_ERR_PARAM;
    }
    Tr104VlanPayload *staged = slotPayload(v.klass);
    staged->unKind = v.klass.kind;
    write(staged->*v.klass.klass, v.field, static_cast<uint32_t>(stored));
    appendTr104CfgParamInfoCfgFlag(v.klass.slot, bitOf(v.field));
    core::armCfgParamTimer(v.klass.slot);
    if ((getTr104CfgParamInfoCfgFlag(v.klass.slot) & kAllBits) != kAllBits) {
        return TR104_OK;
    }
    int (*apply)(Tr104Msg *, void *) = v.klass.slot == kSip.slot ? setSipVlanParam : setRtpVlanParam;
    const int rc = apply(&msg, staged);
    resetTr104CfgParamInfo(v.klass.slot);
    if (rc != TR104_OK) {
        say(v.name, v.applyFailed);
        return TR104_ERR_EXCHANGE;
    }
    return TR104_OK;
}

// Apply function of slot 6 or 7: the six values alone when complete, else the staged ones over
// the voice module's current configuration; sent as command 43 without waiting.
int applyVlan(const VlanClassSpec &k, Tr104Msg *msg, void *paramBuffer) {
    if (msg == nullptr || paramBuffer == nullptr) {
        return TR104_ERR_EXCHANGE;
    }
    Tr104VlanPayload staged;
    std::memcpy(&staged, paramBuffer, sizeof(staged));
    const Tr104VlanClass &from = staged.*k.klass;
    const uint16_t bits = getTr104CfgParamInfoCfgFlag(k.slot);
    Tr104VlanPayload payload{};
    if ((bits & kAllBits) != kAllBits) {
        if (CfgPreHandleGetParam(msg, &payload, sizeof(payload), TR104_GET_VLAN_ID) != 0) {
            say(k.applyName, k.readFailed);
            return TR104_ERR_EXCHANGE;
        }
    } else if (k.kind == kSip.kind) {
        TR104_DEBUG_AS(k.applyName, ">>>>>>>2  Tr104SipVlanId type =%d sigSvid=%d sigScos=%d\r\n",
                       static_cast<int>(from.unSVlanTypeId), from.usSVlanId, from.ucSVlanPriority);
    }
    Tr104VlanClass &to = payload.*k.klass;
    for (unsigned f = 0; f < 6; ++f) {
        const Field field = static_cast<Field>(f);
        if (bits & bitOf(field)) {
            write(to, field, static_cast<uint32_t>(read(from, field)));
        }
    }
    payload.unKind = k.kind;
    if (sendRecord(msg, &payload, sizeof(payload), TR104_SET_VLAN_ID) != TR104_OK) {
        say(k.applyName, k.sendFailed);
        return TR104_ERR_EXCHANGE;
    }
    return TR104_OK;
}

}  // namespace
}  // namespace tr104::netcfg

using namespace tr104::netcfg;

extern "C" TR104_API int setSipVlanParam(Tr104Msg *msg, void *paramBuffer) { return applyVlan(kSip, msg, paramBuffer); }
extern "C" TR104_API int setRtpVlanParam(Tr104Msg *msg, void *paramBuffer) { return applyVlan(kRtp, msg, paramBuffer); }

#include "tr104/catalogue/netcfg_VlanValue.inc"

namespace tr104::netcfg {
namespace {
constexpr core::DeferredGroup kVlanGroups[] = {
    {kSip.slot, setSipVlanParam, std::popcount(kAllBits)},
    {kRtp.slot, setRtpVlanParam, std::popcount(kAllBits)},
};
}  // namespace

constinit const core::Registration kVlanRegistration{"netcfg", {}, kVlanGroups};

}  // namespace tr104::netcfg
