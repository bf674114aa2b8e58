/*
 * The data-model handlers whose body depends on the signalling protocol.  Each one reads
 * gTr104CurrProtocolType (2 H.248, 4 SIP) and passes the call, unchanged, to its variant
 * Tr104<Param>Sip or Tr104<Param>H248, or refuses it:
 *
 *   both protocols     SIP variant, H.248 variant, -1 for any other protocol
 *   SIP only           SIP variant, else -1
 *   SIP, tolerated     SIP variant, 0 under H.248 (nothing done), else -1
 *   H.248 only         H.248 variant, else -1
 *   change notify      SIP variant under SIP; otherwise nothing done and 0
 *   SIP stub           0 under SIP, else -1
 *
 * A variant that is not part of the library answers -1 for its protocol.
 * Handler signature: nFlag 0 get, 1 set; pValue an int or a text buffer; nLocate[1] profile,
 * nLocate[2] line.  Returns 0, -1 (exchange failed) or -2 (bad argument).
 */
#ifndef TR104_HANDLERS_H
#define TR104_HANDLERS_H

#include "tr104/channel.h"

TR104_EXTERN_C_BEGIN

/* Both protocols */
TR104_API int Tr104FaxCtrlMode(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104VbdEnable(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104VbdTxInterval(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104VbdRxInterval(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104VbdCodec(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104FaxT38EventDetectMode(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104FaxT38Enable(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104FaxT38BitRate(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104FaxT38HighSpeedRedundancy(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104FaxT38LowSpeedRedundancy(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104FaxT38TCFMethod(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104FaxT38PortAdd2(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineComfortNoiseFlag(int nFlag, void *pValue, int *nLocate);
/* The line's other voice-profile audio settings (gains, echo cancellation, jitter-buffer
 * target): the same protocol rule. */
TR104_API int Tr104LineTransmitGain(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineReceiveGain(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineEchoCancelFlag(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineJitterBufferTarget(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineDisplayName(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineCallWaitingFlag(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineMaxSessions(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineAnnounceType(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineEnable(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineRegister(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineRegStatus(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineServerStatus(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineCallStatus(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineHookStatus(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104PortStatus(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineSessionType(int nFlag, void *pValue, int *nLocate);
/* Profile-wide signalling counters: (nFlag, pValue), no third argument */
TR104_API int Tr104RcvdReqs(int nFlag, void *pValue);
TR104_API int Tr104SendReqs(int nFlag, void *pValue);
TR104_API int Tr104RcvdResponses(int nFlag, void *pValue);
TR104_API int Tr104SendResponses(int nFlag, void *pValue);
TR104_API int Tr104NgnPacketLoss(int nFlag, void *pValue);
TR104_API int Tr104NgnPacketRetrans(int nFlag, void *pValue);
TR104_API int Tr104NgnPacketError(int nFlag, void *pValue);
TR104_API int Tr104NgnPacketUnKnown(int nFlag, void *pValue);
TR104_API int Tr104LineResetStatisticsFlag(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineNewTransactions(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineIncomingCallsReceived(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineIncomingCallsAnswered(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineIncomingCallsConnected(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineIncomingCallsFailed(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineOutgoingCallsAttempted(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineOutgoingCallsAnswered(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineOutgoingCallsConnected(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineOutgoingCallsFailed(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineTotalCallsDropped(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineTotalCallTimes(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineTotalCallsTime(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineTotalCallsSetupTimer(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineTotalCallTerminateFails(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineTotalPotsReleaseCounts(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineTotalPotsOffHookTimer(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104SessionLocalRtpPort(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104FarEndIPAddress(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104FarEndUDPPort(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104PhysicalInterfaceTestDialToneDrawTime(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104PhysicalInterfaceReversePole(int nFlag, void *pValue, int *nLocate);

/* SIP only */
TR104_API int Tr104LineCodecList(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineAuthUserName(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineAuthPassword(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineURI(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineAuthUserNameAndURIForTr069(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104SipRoleString(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104SipExtensions(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104SipTransportProtocols(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104SipURISchemes(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104SipEventSubscription(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104SipResponseMap(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104ActiveSipProxyServer(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104SipProxyServerIp(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104SipProxyServerPort(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104SipProxyServerTransport(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104SipSecondaryProxyServerIp(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104SipSecondaryProxyServerPort(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104SipSecondaryProxyServerTransport(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104SipRegistrarServerIp(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104SipRegistrarServerPort(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104SipRegistrarServerTransport(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104SipSecondaryRegServerIp(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104SipSecondaryRegServerPort(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104SipSecondaryRegServerTransport(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104SipOutboundProxyIp(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104SipOutboundProxyPort(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104SipSecondaryOutboundProxyIp(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104SipSecondaryOutboundProxyPort(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104SipRegistrationPeriod(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104SipRegisterRetryInterval(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104SipReRegistrationHeader(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104SipUserAgentDomain(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104SipUserAgentPort(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104SipUseCodecPriorityInSDPResponse(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104SipDSCPMark(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104SipTimerT1(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104SipTimerT2(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104SipTimerT4(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104KeepAliveEnable(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104KeepAliveInterval(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104KeepAliveTimes(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104SipSessionUpdateTimer(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104JINGCharMode(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104CIDHeadField(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104CodecAndPtPriority(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104PromptToneOfNoReg(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104AttentedTransferCode(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104UnattentedTransferCode(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104FaxProcessMode(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104T38SDPType(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104FaxModemAttrFlag(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104EchoCancelAttrFlag(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104SilenceSuppAttrFlag(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104PbxDailingFlag(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104PbxDailingNum(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104CallWaitingOnlyFlash(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104CallConferenceOnlyFlash(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineHotlineNum(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineHotlineDelay(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104DialTonePattern(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104MCidService(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104NoDialingBehaviour(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineRxInviteReqs(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineRxInviteRetrans(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineRxNoninviteReqs(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineRxNoninviteRetrans(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineRxResponse(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineRxResponseRetrans(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineTxInviteReqs(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineTxInviteRetrans(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineTxNoninviteReqs(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineTxNoninviteRetrans(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineTxResponse(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineTxResponseRetrans(int nFlag, void *pValue, int *nLocate);

/* SIP only, H.248 tolerated */
TR104_API int Tr104LineTelNum(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr069LineCodecListCodecType(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineCall3wayFlag(int nFlag, void *pValue, int *nLocate);

/* H.248 only.  Gateway-wide parameters take (nFlag, pValue); the naming rules take their
 * fields' pointers, as their H.248 variants do (tr104/h248.h). */
TR104_API int Tr104ProtocolVersion(int nFlag, void *pValue);
TR104_API int Tr104MessageFormat(int nFlag, void *pValue);
TR104_API int Tr104TermId(int nFlag, void *pValue);
TR104_API int Tr104PhysicalTermId(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104PrimaryMGC(int nFlag, void *pValue);
TR104_API int Tr104PrimaryMGCPort(int nFlag, void *pValue);
TR104_API int Tr104SecondaryMGC(int nFlag, void *pValue);
TR104_API int Tr104SecondaryMGCPort(int nFlag, void *pValue);
TR104_API int Tr104CurrMgcNum(int nFlag, void *pValue);
TR104_API int Tr104MgLocalPort(int nFlag, void *pValue);
TR104_API int Tr104MessageEncodingType(int nFlag, void *pValue);
TR104_API int Tr104MgId(int nFlag, void *pValue);
TR104_API int Tr104DeviceName(int nFlag, void *pValue);
TR104_API int Tr104MgRegMode(int nFlag, void *pValue);
TR104_API int Tr104EphemeralTermIDPrefix(int nFlag, void *pValue);
TR104_API int Tr104EphemeralTermIDAddLen(int nFlag, void *pValue);
TR104_API int Tr104EphemeralTermIDUniform(int nFlag, void *pValue);
TR104_API int Tr104EphemeralTermIDStartVlaue(int nFlag, void *pValue);
TR104_API int Tr104EphemeralTermIDNumber(int nFlag, void *pValue);
TR104_API int Tr104EphemeralTermIDName(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104EphemeralTermIDFirstName(int nFlag, void *pValue);
TR104_API int Tr104EphNameRule(int nFlag, char *pFirstPart, uint32_t *pStart, uint32_t *pEnd, uint32_t *pStep,
                               uint32_t *pFillOrNot);
TR104_API int Tr104EphNameRule2(int nFlag, char *pPrefix, uint32_t *pLength, uint32_t *pStart, uint32_t *pFillFlag);
TR104_API int Tr104ThreeHandShakeEnable(int nFlag, void *pValue);
TR104_API int Tr104LongTimer(int nFlag, void *pValue);
TR104_API int Tr104PendingTimer(int nFlag, void *pValue);
TR104_API int Tr104RetranTimerInitial(int nFlag, void *pValue);
TR104_API int Tr104MaxRetranCount(int nFlag, void *pValue);
TR104_API int Tr104RetransmissionTime(int nFlag, void *pValue);
TR104_API int Tr104RetransmissionCycle(int nFlag, void *pValue);
TR104_API int Tr104HeartbeatMode(int nFlag, void *pValue);
TR104_API int Tr104HeartbeatCycle(int nFlag, void *pValue);
TR104_API int Tr104HeartbeatCount(int nFlag, void *pValue);
TR104_API int Tr104HeartbeatFormat(int nFlag, void *pValue);
TR104_API int Tr104MgRegisterCycle(int nFlag, void *pValue);
TR104_API int Tr104MgRegister(int nFlag, void *pValue);
TR104_API int Tr104AuthenticationMeth(int nFlag, void *pValue);
TR104_API int Tr104PhysicalTermIDPrefix(int nFlag, void *pValue);
TR104_API int Tr104PhysicalTermIDAddLen(int nFlag, void *pValue);
TR104_API int Tr104PhysicalTermIDStartVlaue(int nFlag, void *pValue);
TR104_API int Tr104PhysicalTermIDUniform(int nFlag, void *pValue);
TR104_API int Tr104PhyNameRule(int nFlag, char *pPrefix, uint32_t *pLength, uint32_t *pStart, uint32_t *pFillFlag);
TR104_API int Tr104PortServiceState(int nFlag, void *pValue, int *nLocate);

/* Change notifications: the inbound message of the voice module, data in rspBuffer */
TR104_API int Tr104LineTelNumChangeNotify(const Tr104Msg *msg);
TR104_API int Tr104LineAuthParamsChangeNotify(const Tr104Msg *msg);
TR104_API int Tr104ProxyParamsChangeNotify(const Tr104Msg *msg);
TR104_API int Tr104RegParamsChangeNotify(const Tr104Msg *msg);

/* SIP stub */
TR104_API int Tr104KeepAliveMode(int nFlag, void *pValue, int *nLocate);
/* Mixed members.  Caller ID: SIP variant under SIP; under H.248 a get reports 1 and a set is
 * accepted and ignored (null value or another nFlag -2); else -1. */
TR104_API int Tr104LineCallerIdFlag(int nFlag, void *pValue, int *nLocate);
/* Physical port of a line ("1" or "2"): a null value or nLocate[2] other than 1 or 2 gives
 * -2 whatever the protocol; then the SIP variant under SIP, else -1. */
TR104_API int Tr104PhyReferenceList(int nFlag, void *pValue, int *nLocate);

TR104_EXTERN_C_END

#endif
