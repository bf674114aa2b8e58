// The exported wrappers that pass a handler call on to the SIP or the H.248 variant.
//
// Every wrapper reads gTr104CurrProtocolType once and hands its own arguments, unchanged, to
// the variant its family names for that protocol.  The wrappers are generated from the lists of
// tr104/catalogue/dispatch_lists.h (written from the catalogue's wrapper rows, whose families
// tr104/catalogue/shapes.toml describes); one generic body per family does the work.
//
// Variants are referenced weakly: a variant that is not part of this build leaves a null
// address, and the wrapper then answers -1 for that protocol.  The variants' public headers are
// included, so a weak reference whose type differs from the variant's does not compile.  Once a variant is defined in the
// library (or by the process that loads it) the same wrapper reaches it without change.
#include <cstdint>

#include "tr104/channel.h"
#include "tr104/framework.h"
#include "tr104/core/core.h"
#include "tr104/core/registry.h"
#include "tr104/framework/framework_internal.h"
#include "tr104/h248.h"
#include "tr104/handlers.h"
#include "tr104/protocol.h"
#include "tr104/catalogue/dispatch_lists.h"
#include "tr104/catalogue/inbound_lists.h"
#include "tr104/sip.h"

namespace {

using Handler = int (*)(int nFlag, void *pValue, int *nLocate);
using ProfileHandler = int (*)(int nFlag, void *pValue);
using Notifier = int (*)(const Tr104Msg *msg);

// What a wrapper does under one protocol.
enum class Route : uint8_t {
    Sip,  // call the SIP variant
    H248,  // call the H.248 variant
    Refuse,  // -1
    Accept,  // 0, nothing done
};

struct Family {
    Route underSip;
    Route underH248;  // any other protocol refuses
};

constexpr Family kBothProtocols{Route::Sip, Route::H248};
constexpr Family kSipOnly{Route::Sip, Route::Refuse};
constexpr Family kSipTolerated{Route::Sip, Route::Accept};
constexpr Family kH248Only{Route::Refuse, Route::H248};
constexpr Family kSipStub{Route::Accept, Route::Refuse};

inline Route routeFor(const Family &family, int protocol) {
    switch (protocol) {
    case TR104_PROTOCOL_SIP: return family.underSip;
    case TR104_PROTOCOL_H248: return family.underH248;
    default: return Route::Refuse;
    }
}

// An H.248-only wrapper with any argument list: the variant, or -1 under any other protocol.
template <typename... Args>
inline int dispatchH248(int (*h248)(Args...), Args... args) {
    const int protocol = gTr104CurrProtocolType;
    if (protocol == TR104_PROTOCOL_H248 && h248 != nullptr) {
        return h248(args...);
    }
    return -1;
}

template <typename Fn, typename... Args>
inline int dispatch(const Family &family, Fn sip, Fn h248, Args... args) {
    const int protocol = gTr104CurrProtocolType;
    switch (routeFor(family, protocol)) {
    case Route::Sip: return sip != nullptr ? sip(args...) : -1;
    case Route::H248: return h248 != nullptr ? h248(args...) : -1;
    case Route::Accept: return 0;
    case Route::Refuse: break;
    }
    return -1;
}

// Both protocols, the H.248 variant gateway-wide: it is handed no nLocate.
inline int dispatchGatewayH248(Handler sip, ProfileHandler h248, int nFlag, void *pValue, int *nLocate) {
    switch (routeFor(kBothProtocols, gTr104CurrProtocolType)) {
    case Route::Sip: return sip != nullptr ? sip(nFlag, pValue, nLocate) : -1;
    case Route::H248: return h248 != nullptr ? h248(nFlag, pValue) : -1;
    default: return -1;
    }
}

// Under any protocol but SIP the inbound message is dropped.
inline int notify(Notifier sip, const Tr104Msg *msg) {
    if (gTr104CurrProtocolType == TR104_PROTOCOL_SIP && sip != nullptr) {
        return sip(msg);
    }
    return 0;
}

}  // namespace

// Weak references to the variants.
#define TR104_WEAK_SIP(name) extern "C" __attribute__((weak)) int name##Sip(int, void *, int *);
#define TR104_WEAK_H248(name) extern "C" __attribute__((weak)) int name##H248(int, void *, int *);
#define TR104_WEAK_BOTH(name) TR104_WEAK_SIP(name) TR104_WEAK_H248(name)
#define TR104_WEAK_NOTIFY(name) extern "C" __attribute__((weak)) int name##Sip(const Tr104Msg *);

TR104_BOTH_PROTOCOL_WRAPPERS(TR104_WEAK_BOTH)
#define TR104_WEAK_BOTH_PROFILE(name)                            \
    extern "C" __attribute__((weak)) int name##Sip(int, void *); \
    extern "C" __attribute__((weak)) int name##H248(int, void *);
TR104_BOTH_PROTOCOL_PROFILE_WRAPPERS(TR104_WEAK_BOTH_PROFILE)
#define TR104_WEAK_GATEWAY_H248(name) TR104_WEAK_SIP(name) extern "C" __attribute__((weak)) int name##H248(int, void *);
TR104_BOTH_PROTOCOL_GATEWAY_H248_WRAPPERS(TR104_WEAK_GATEWAY_H248)
TR104_SIP_ONLY_WRAPPERS(TR104_WEAK_SIP)
TR104_SIP_TOLERATED_WRAPPERS(TR104_WEAK_SIP)
TR104_H248_ONLY_WRAPPERS(TR104_WEAK_H248)
#define TR104_WEAK_H248_GATEWAY(name) extern "C" __attribute__((weak)) int name##H248(int, void *);
TR104_H248_GATEWAY_WRAPPERS(TR104_WEAK_H248_GATEWAY)
extern "C" __attribute__((weak)) int Tr104PhyNameRuleH248(int, char *, uint32_t *, uint32_t *, uint32_t *);
extern "C" __attribute__((weak)) int Tr104EphNameRuleH248(int, char *, uint32_t *, uint32_t *, uint32_t *, uint32_t *);
extern "C" __attribute__((weak)) int Tr104EphNameRule2H248(int, char *, uint32_t *, uint32_t *, uint32_t *);
TR104_CHANGE_NOTIFY_WRAPPERS(TR104_WEAK_NOTIFY)
extern "C" __attribute__((weak)) int Tr104LineCallerIdFlagSip(int, void *, int *);
extern "C" __attribute__((weak)) int Tr104PhyReferenceListSip(int, void *, int *);

// The exported wrappers, one line each.
#define TR104_WRAPPER(name, family, sip, h248)                               \
    extern "C" TR104_API int name(int nFlag, void *pValue, int *nLocate) {   \
        return dispatch<Handler>(family, sip, h248, nFlag, pValue, nLocate); \
    }
#define TR104_WRAP_BOTH(name) TR104_WRAPPER(name, kBothProtocols, name##Sip, name##H248)
#define TR104_WRAP_SIP_ONLY(name) TR104_WRAPPER(name, kSipOnly, name##Sip, nullptr)
#define TR104_WRAP_SIP_TOLERATED(name) TR104_WRAPPER(name, kSipTolerated, name##Sip, nullptr)
#define TR104_WRAP_H248_ONLY(name) TR104_WRAPPER(name, kH248Only, nullptr, name##H248)
#define TR104_WRAP_SIP_STUB(name) TR104_WRAPPER(name, kSipStub, nullptr, nullptr)
#define TR104_WRAP_NOTIFY(name) \
    extern "C" TR104_API int name(const Tr104Msg *msg) { return notify(name##Sip, msg); }

TR104_BOTH_PROTOCOL_WRAPPERS(TR104_WRAP_BOTH)
#define TR104_WRAP_BOTH_PROFILE(name)                                                          \
    extern "C" TR104_API int name(int nFlag, void *pValue) {                                   \
        return dispatch<ProfileHandler>(kBothProtocols, name##Sip, name##H248, nFlag, pValue); \
    }
TR104_BOTH_PROTOCOL_PROFILE_WRAPPERS(TR104_WRAP_BOTH_PROFILE)
#define TR104_WRAP_GATEWAY_H248(name)                                              \
    extern "C" TR104_API int name(int nFlag, void *pValue, int *nLocate) {         \
        return dispatchGatewayH248(name##Sip, name##H248, nFlag, pValue, nLocate); \
    }
TR104_BOTH_PROTOCOL_GATEWAY_H248_WRAPPERS(TR104_WRAP_GATEWAY_H248)
TR104_SIP_ONLY_WRAPPERS(TR104_WRAP_SIP_ONLY)
TR104_SIP_TOLERATED_WRAPPERS(TR104_WRAP_SIP_TOLERATED)
TR104_H248_ONLY_WRAPPERS(TR104_WRAP_H248_ONLY)
#define TR104_WRAP_H248_GATEWAY(name) \
    extern "C" TR104_API int name(int nFlag, void *pValue) { return dispatchH248(name##H248, nFlag, pValue); }
TR104_H248_GATEWAY_WRAPPERS(TR104_WRAP_H248_GATEWAY)
TR104_CHANGE_NOTIFY_WRAPPERS(TR104_WRAP_NOTIFY)
TR104_SIP_STUB_WRAPPERS(TR104_WRAP_SIP_STUB)

// Caller ID under H.248 has no variant: the H.248 stack always presents it, so a get reports 1
// and a set is accepted and ignored.
extern "C" TR104_API int Tr104LineCallerIdFlag(int nFlag, void *pValue, int *nLocate) {
    const int protocol = gTr104CurrProtocolType;
    if (protocol == TR104_PROTOCOL_SIP) {
        return Tr104LineCallerIdFlagSip != nullptr ? Tr104LineCallerIdFlagSip(nFlag, pValue, nLocate) : -1;
    }
    if (protocol != TR104_PROTOCOL_H248) {
        return -1;
    }
    using tr104::core::Access;
    using tr104::core::Locate;
    if (const int rc = tr104::core::checkArguments({__func__, "pLineCallerIdFlag", Locate::None, Access::GetSet}, nFlag,
                                                   pValue, nLocate);
        rc != TR104_OK) {
        return rc;
    }
    if (nFlag == 0) {
        tr104::core::putInt(pValue, 1);
    }
    return 0;
}

// The line swap checks its arguments whatever the protocol, then goes to the SIP variant.
extern "C" TR104_API int Tr104PhyReferenceList(int nFlag, void *pValue, int *nLocate) {
    if (pValue == nullptr) {
        TR104_DEBUG("param error, pPhyReferenceList is null\n");
        return -2;
    }
    if (nLocate == nullptr || (nLocate[2] != 1 && nLocate[2] != 2)) {
        TR104_DEBUG("param error, nLocate[2]=%d\n", nLocate != nullptr ? nLocate[2] : -1);
        return -2;
    }
    TR104_DEBUG("Invoke function %s.\r\n", __func__);
    if (gTr104CurrProtocolType == TR104_PROTOCOL_SIP && Tr104PhyReferenceListSip != nullptr) {
        return Tr104PhyReferenceListSip(nFlag, pValue, nLocate);
    }
    return -1;
}

// The naming rules pass their fields' pointers, unchanged, to the H.248 variant.
extern "C" TR104_API int Tr104PhyNameRule(int nFlag, char *pPrefix, uint32_t *pLength, uint32_t *pStart,
                                          uint32_t *pFillFlag) {
    return dispatchH248(Tr104PhyNameRuleH248, nFlag, pPrefix, pLength, pStart, pFillFlag);
}

extern "C" TR104_API int Tr104EphNameRule(int nFlag, char *pFirstPart, uint32_t *pStart, uint32_t *pEnd,
                                          uint32_t *pStep, uint32_t *pFillOrNot) {
    return dispatchH248(Tr104EphNameRuleH248, nFlag, pFirstPart, pStart, pEnd, pStep, pFillOrNot);
}

extern "C" TR104_API int Tr104EphNameRule2(int nFlag, char *pPrefix, uint32_t *pLength, uint32_t *pStart,
                                           uint32_t *pFillFlag) {
    return dispatchH248(Tr104EphNameRule2H248, nFlag, pPrefix, pLength, pStart, pFillFlag);
}

// The voice module's change messages reach the change-notify wrappers (tr104/catalogue/contract.toml).
namespace tr104::framework {
namespace {
#define TR104_INBOUND_ENTRY(cmd, handler) {cmd, handler},
constexpr core::InboundCommand kChangeMessages[] = {TR104_INBOUND_FRAMEWORK(TR104_INBOUND_ENTRY)};
#undef TR104_INBOUND_ENTRY
}  // namespace

constinit const core::Registration kChangeRegistration{"framework", kChangeMessages, {}};

}  // namespace tr104::framework
