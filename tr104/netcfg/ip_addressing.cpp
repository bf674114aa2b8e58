// The voice interface's addressing: address, mask and gateway (grouped in slot 0 of the deferred
// buffer, applied by setIpConfig), the RTP addresses, the direct address message, the address
// mode and the private management address.
#include <bit>
#include <cstdio>

#include "tr104/netcfg/netcfg_internal.h"
#include "tr104/startup.h"

namespace tr104::netcfg {
namespace {

constexpr int kSlot = 0;
constexpr uint16_t kAddrBit = 0x1;
constexpr uint16_t kMaskBit = 0x2;
constexpr uint16_t kGatewayBit = 0x4;
constexpr uint16_t kAllBits = kAddrBit | kMaskBit | kGatewayBit;
constexpr char kFlagError[] = "param error, nFlag[%d]\n";

// One of the three words of the voice interface, read alone and written through slot 0.
struct IpWord {
    const char *name;
    const char *nullError;
    const char *entry;  // "%d" nFlag, "0x%x" the value
    const char *getError;
    const char *getDone;  // "%u" the value
    uint32_t Tr104IpConfigPayload::*field;
    uint16_t bit;
};

Tr104IpConfigPayload *slotPayload() {
    return static_cast<Tr104IpConfigPayload *>(getTr104CfgParamInfoParamBuffer(kSlot));
}

// Stores the voice interface's word in slot 0 (the first 16 bytes of the payload's layout).
void stage(uint32_t Tr104IpConfigPayload::*field, uint32_t value, uint16_t bit) {
    Tr104IpConfigPayload *staged = slotPayload();
    staged->ucKind = TR104_IP_KIND_VOICE;
    staged->*field = value;
    appendTr104CfgParamInfoCfgFlag(kSlot, bit);
}

int ipWord(const IpWord &w, int nFlag, void *pValue) {
    if (pValue == nullptr) {
        say(w.name, w.nullError);
        return TR104_ERR_PARAM;
    }
    const uint32_t value = static_cast<uint32_t>(intValue(pValue));
    TR104_DEBUG_AS(w.name, w.entry, nFlag, value);
    Tr104Msg msg;
    core::fillRequestRecord(&msg);
    if (nFlag == 0) {
        Tr104IpConfigPayload payload{};
        if (CfgPreHandleGetParam(&msg, &payload, sizeof(payload), TR104_GET_DEVICE_IP_ID) != 0) {
            say(w.name, w.getError);
            return TR104_ERR_EXCHANGE;
        }
        putInt(pValue, static_cast<int>(payload.*w.field));
        TR104_DEBUG_AS(w.name, w.getDone, payload.*w.field);
        return TR104_OK;
    }
    if (nFlag == 1) {
        stage(w.field, value, w.bit);
        return tr104CfgParamHandleByTimer(kSlot, &msg, getTr104CfgParamInfoParamBuffer(kSlot));
    }
    TR104_DEBUG_AS(w.name, kFlagError, nFlag);
    return TR104_ERR_PARAM;
}

// Reads the three words of one traffic class in a single get.
int readTriple(const char *name, const char *getError, uint32_t *a, uint32_t *m, uint32_t *g, bool rtp) {
    Tr104IpConfigPayload payload{};
    if (readRecord(name, &payload, sizeof(payload), TR104_GET_DEVICE_IP_ID) != TR104_OK) {
        say(name, getError);
        return TR104_ERR_EXCHANGE;
    }
    *a = rtp ? payload.unRtpAddr : payload.unVoiceAddr;
    *m = rtp ? payload.unRtpMask : payload.unVoiceMask;
    *g = rtp ? payload.unRtpGateway : payload.unVoiceGateway;
    return TR104_OK;
}

}  // namespace
}  // namespace tr104::netcfg

using namespace tr104::netcfg;

// The RTP address and gateway handlers act on the voice interface's address and gateway, in the
// same slot and bits: the voice module derives the media addresses from those.  Only
// Tr104RtpIpParamConfig reaches the RTP words themselves.
extern "C" TR104_API int Tr104RtpIpAddrConfig(int nFlag, void *pIpAddr) { return Tr104IpAddrConfig(nFlag, pIpAddr); }
extern "C" TR104_API int Tr104RtpGateWayConfig(int nFlag, void *pGateway) {
    return Tr104GatewayConfig(nFlag, pGateway);
}

// Apply function of slot 0: complete, the staged words alone; else the staged words over the
// voice module's current configuration.  Sent as command 41 without waiting.
extern "C" TR104_API int setIpConfig(Tr104Msg *msg, void *paramBuffer) {
    if (msg == nullptr || paramBuffer == nullptr) {
        return TR104_ERR_EXCHANGE;
    }
    Tr104IpConfigPayload staged;
    std::memcpy(&staged, paramBuffer, sizeof(staged));
    const uint16_t bits = getTr104CfgParamInfoCfgFlag(kSlot);
    Tr104IpConfigPayload payload{};
    if ((bits & kAllBits) != kAllBits) {
        if (CfgPreHandleGetParam(msg, &payload, sizeof(payload), TR104_GET_DEVICE_IP_ID) != 0) {
            TR104_DEBUG("get ip config failed.\n");
            return TR104_ERR_EXCHANGE;
        }
    }
    payload.ucKind = staged.ucKind;
    if (bits & kAddrBit)
        payload.unVoiceAddr = staged.unVoiceAddr;
    if (bits & kMaskBit)
        payload.unVoiceMask = staged.unVoiceMask;
    if (bits & kGatewayBit)
        payload.unVoiceGateway = staged.unVoiceGateway;
    if (sendRecord(msg, &payload, sizeof(payload), TR104_SET_DEVICE_IP_ID) != TR104_OK) {
        TR104_DEBUG("SET_DEVICE_IP_ID msg snd failed.\n");
        return TR104_ERR_EXCHANGE;
    }
    return TR104_OK;
}

extern "C" TR104_API int Tr104IpParamConfig(int nFlag, uint32_t *pIpAddr, uint32_t *pNetMask, uint32_t *pGateway) {
    if (pIpAddr == nullptr || pNetMask == nullptr || pGateway == nullptr) {
        TR104_DEBUG("param error, pIpAddr or pNetMask or pGateway is null\n");
        return TR104_ERR_PARAM;
    }
    Tr104Msg msg;
    if (tr104MsgConstruct(&msg) != 0) {
        TR104_DEBUG("construct msg fail!\n");
        return TR104_ERR_PARAM;
    }
    if (nFlag == 0) {
        if (readTriple(__func__, "get ip param error \n", pIpAddr, pNetMask, pGateway, false) != TR104_OK) {
            return TR104_ERR_EXCHANGE;
        }
        return TR104_OK;
    }
    if (nFlag != 1) {
        TR104_DEBUG(kFlagError, nFlag);
        return TR104_ERR_PARAM;
    }
    TR104_DEBUG("nFlag[%d], *pIpAddr[0x%x], *pNetMask[0x%x], *pGateway[0x%x]\n", nFlag, *pIpAddr, *pNetMask, *pGateway);
    stage(&Tr104IpConfigPayload::unVoiceAddr, *pIpAddr, kAddrBit);
    stage(&Tr104IpConfigPayload::unVoiceMask, *pNetMask, kMaskBit);
    stage(&Tr104IpConfigPayload::unVoiceGateway, *pGateway, kGatewayBit);
    const int rc = setIpConfig(&msg, getTr104CfgParamInfoParamBuffer(kSlot));
    resetTr104CfgParamInfo(kSlot);
    if (rc != TR104_OK) {
        TR104_DEBUG("setIpConfig failed.\n");
        return TR104_ERR_EXCHANGE;
    }
    return TR104_OK;
}

extern "C" TR104_API int Tr104RtpIpParamConfig(int nFlag, uint32_t *pRtpIp, uint32_t *pRtpMask, uint32_t *pRtpGw) {
    if (pRtpIp == nullptr || pRtpMask == nullptr || pRtpGw == nullptr) {
        TR104_DEBUG("param error, pRtpIp or pRtpMask or pRtpGw is null\n");
        return TR104_ERR_PARAM;
    }
    constexpr char kEntry[] = "nFlag[%d], pRtpIp[0x%x], pRtpMask[0x%x], pRtpGw[0x%x]\n";
    if (nFlag == 0) {
        if (readTriple(__func__, "get rtp ip param failed\n", pRtpIp, pRtpMask, pRtpGw, true) != TR104_OK) {
            return TR104_ERR_EXCHANGE;
        }
        TR104_DEBUG(kEntry, nFlag, *pRtpIp, *pRtpMask, *pRtpGw);
        return TR104_OK;
    }
    if (nFlag != 1) {
        TR104_DEBUG(kFlagError, nFlag);
        return TR104_ERR_PARAM;
    }
    TR104_DEBUG(kEntry, nFlag, *pRtpIp, *pRtpMask, *pRtpGw);
    Tr104IpConfigPayload payload{};
    payload.ucKind = TR104_IP_KIND_RTP;
    payload.unRtpAddr = *pRtpIp;
    payload.unRtpMask = *pRtpMask;
    payload.unRtpGateway = *pRtpGw;
    if (sendRecord(__func__, &payload, sizeof(payload), TR104_SET_DEVICE_IP_ID) != TR104_OK) {
        TR104_DEBUG("send msg SET_DEVICE_IP_ID failed\n");
        return TR104_ERR_EXCHANGE;
    }
    return TR104_OK;
}

// The address of a voice port's interface, sent straight onto the request queue (the embedding
// process calls it from contexts that must not wait for the channel's lock).  Its messages go to
// standard output.
extern "C" TR104_API int Tr104VoiceIpAddr(int nFlag, uint32_t *pIpAddr, uint32_t *pNetmask, uint32_t *pGateway,
                                          const char *pIfName, const uint32_t *pPort) {
    if (const int rc = directChecks(__func__, pIpAddr != nullptr && pNetmask != nullptr && pGateway != nullptr,
                                    "[%s] param error, pIpAddr or pNetmask or pGateway is null!\r\n", nFlag, true);
        rc != 1) {
        return rc;
    }
    Tr104DirectIpPayload payload{};
    if (pIfName != nullptr) {
        std::memcpy(payload.aIfName, pIfName, strnlen(pIfName, 10));
    }
    payload.unPort = portOf(pPort);
    payload.unAddr = *pIpAddr;
    payload.unMask = *pNetmask;
    payload.unGateway = *pGateway;
    printf("[%s] module=%d, port=%d, ip=0x%x, mask=0x%x, gw=0x%x, ifName=%s.\r\n", __func__, gCurrentModule,
           static_cast<int>(payload.unPort), payload.unAddr, payload.unMask, payload.unGateway, payload.aIfName);
    if (sendDirect(TR104_SET_DEVICE_IP_ID, &payload, sizeof(payload)) != TR104_OK) {
        printf("[%s] send msg SET_DEVICE_IP_ID failed.\r\n", __func__);
        return TR104_ERR_EXCHANGE;
    }
    return TR104_OK;
}

// The address mode, 0 static, 1 DHCP, 2 PPPoE, kept by the voice module as its DHCP and PPPoE
// enables.  The value is checked before a get too, so a get needs a buffer holding 0, 1 or 2.
extern "C" TR104_API int Tr104IpMode(int nFlag, void *pIpMode, int *nLocate) {
    (void)nLocate;
    if (pIpMode == nullptr) {
        TR104_DEBUG("param error, pIpMode is null!\n");
        return TR104_ERR_PARAM;
    }
    const int mode = intValue(pIpMode);
    // A negative mode is refused for a set as well: it would otherwise switch both clients off.
    if (mode >= 3 || (nFlag == 1 && mode < 0)) {
        TR104_DEBUG("param error, *pIpMode[%d]\n", mode);
        return TR104_ERR_PARAM;
    }
    if (nFlag == 0) {
        int dhcp = 0;
        int pppoe = 0;
        if (Tr104DhcpEnable(0, &dhcp) != TR104_OK || Tr104PPPoEEnable(0, &pppoe) != TR104_OK) {
            return TR104_ERR_EXCHANGE;
        }
        const int current = dhcp == 1 ? 1 : pppoe == 1 ? 2 : 0;
        putInt(pIpMode, current);
        TR104_DEBUG("nFlag[%d], *pIpMode[%d]\n", nFlag, current);
        return TR104_OK;
    }
    if (nFlag == 1) {
        int dhcp = mode == 1 ? 1 : 0;
        int pppoe = mode == 2 ? 1 : 0;
        (void)Tr104DhcpEnable(1, &dhcp);
        (void)Tr104PPPoEEnable(1, &pppoe);
        return TR104_OK;
    }
    TR104_DEBUG(kFlagError, nFlag);
    return TR104_ERR_PARAM;
}

extern "C" TR104_API int VoipPrivateIpCfg(int nOltNo, int nOnuNo, uint32_t unIpAddr) {
    const uint8_t olt = static_cast<uint8_t>(nOltNo);
    const uint8_t onu = static_cast<uint8_t>(nOnuNo);
    TR104_DEBUG("enter OLTNo=%d ONUNo=%d ip=0x%x\r\n", olt, onu, unIpAddr);
    Tr104Msg msg;
    if (const int rc = tr104MsgConstruct(&msg); rc < 0) {
        return rc;
    }
    uint8_t payload[6] = {olt, onu};
    std::memcpy(payload + 2, &unIpAddr, sizeof(unIpAddr));
    if (sendRecord(&msg, payload, sizeof(payload), TR104_SET_PRI_IP_CFG_ID) != TR104_OK) {
        // What puts returns, not -1: callers have always seen this.
        return puts("\r\nmsgSndAndRcv SET_PRI_IP_CFG_ID return failed.\r");
    }
    return TR104_OK;
}

namespace tr104::netcfg {
namespace {
constexpr core::DeferredGroup kAddressingGroups[] = {{kSlot, setIpConfig, std::popcount(kAllBits)}};
}  // namespace

constinit const core::Registration kAddressingRegistration{"netcfg", {}, kAddressingGroups};

}  // namespace tr104::netcfg

#include "tr104/catalogue/netcfg_IpWord.inc"
