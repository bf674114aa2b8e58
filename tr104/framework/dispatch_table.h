// The dispatching wrappers as data: one list per family, each entry the exported name.  The
// SIP variant of an entry is <name>Sip, the H.248 variant <name>H248.  dispatch.cpp expands the
// lists into the exported wrappers; the mixed members (Tr104LineCallerIdFlag,
// Tr104PhyReferenceList) are written out there.
//
// Rule of each family, by gTr104CurrProtocolType:
//   family            SIP (4)     H.248 (2)          other
//   both protocols    <name>Sip   <name>H248         -1
//   SIP only          <name>Sip   -1                 -1
//   SIP, tolerated    <name>Sip   0, nothing done    -1
//   H.248 only        -1          <name>H248         -1
//   change notify     <name>Sip   nothing            nothing
//   SIP stub          0           -1                 -1
// A variant that is not linked into the library answers -1 for its protocol.
#pragma once

// Both protocols: the SIP or the H.248 variant
#define TR104_BOTH_PROTOCOL_WRAPPERS(X)           \
    X(Tr104FaxT38Enable)                          \
    X(Tr104FaxT38BitRate)                         \
    X(Tr104FaxT38HighSpeedRedundancy)             \
    X(Tr104FaxT38LowSpeedRedundancy)              \
    X(Tr104FaxT38TCFMethod)                       \
    X(Tr104FaxT38PortAdd2)                        \
    X(Tr104LineComfortNoiseFlag)                  \
    X(Tr104LineTransmitGain)                      \
    X(Tr104LineReceiveGain)                       \
    X(Tr104LineEchoCancelFlag)                    \
    X(Tr104LineJitterBufferTarget)                \
    X(Tr104LineDisplayName)                       \
    X(Tr104LineCallWaitingFlag)                   \
    X(Tr104LineMaxSessions)                       \
    X(Tr104LineAnnounceType)                      \
    X(Tr104LineEnable)                            \
    X(Tr104LineRegister)                          \
    X(Tr104LineRegStatus)                         \
    X(Tr104LineServerStatus)                      \
    X(Tr104LineCallStatus)                        \
    X(Tr104LineHookStatus)                        \
    X(Tr104PortStatus)                            \
    X(Tr104LineSessionType)                       \
    X(Tr104LineResetStatisticsFlag)               \
    X(Tr104LineNewTransactions)                   \
    X(Tr104LineIncomingCallsReceived)             \
    X(Tr104LineIncomingCallsAnswered)             \
    X(Tr104LineIncomingCallsConnected)            \
    X(Tr104LineIncomingCallsFailed)               \
    X(Tr104LineOutgoingCallsAttempted)            \
    X(Tr104LineOutgoingCallsAnswered)             \
    X(Tr104LineOutgoingCallsConnected)            \
    X(Tr104LineOutgoingCallsFailed)               \
    X(Tr104LineTotalCallsDropped)                 \
    X(Tr104LineTotalCallTimes)                    \
    X(Tr104LineTotalCallsTime)                    \
    X(Tr104LineTotalCallsSetupTimer)              \
    X(Tr104LineTotalCallTerminateFails)           \
    X(Tr104LineTotalPotsReleaseCounts)            \
    X(Tr104LineTotalPotsOffHookTimer)             \
    X(Tr104SessionLocalRtpPort)                   \
    X(Tr104FarEndIPAddress)                       \
    X(Tr104FarEndUDPPort)                         \
    X(Tr104PhysicalInterfaceTestDialToneDrawTime) \
    X(Tr104PhysicalInterfaceReversePole)

// Both protocols, profile- or gateway-wide: (nFlag, pValue), no third argument
// Both protocols: the SIP variant per line (nLocate), the H.248 variant gateway-wide, taking
// (nFlag, pValue) only
#define TR104_BOTH_PROTOCOL_GATEWAY_H248_WRAPPERS(X) \
    X(Tr104FaxCtrlMode) \
    X(Tr104VbdEnable) \
    X(Tr104VbdTxInterval) \
    X(Tr104VbdRxInterval) \
    X(Tr104VbdCodec) \
    X(Tr104FaxT38EventDetectMode)

#define TR104_BOTH_PROTOCOL_PROFILE_WRAPPERS(X) \
    X(Tr104RcvdReqs) \
    X(Tr104SendReqs) \
    X(Tr104RcvdResponses) \
    X(Tr104SendResponses) \
    X(Tr104NgnPacketLoss) \
    X(Tr104NgnPacketRetrans) \
    X(Tr104NgnPacketError) \
    X(Tr104NgnPacketUnKnown)

// SIP only
#define TR104_SIP_ONLY_WRAPPERS(X) \
    X(Tr104LineCodecList) \
    X(Tr104LineAuthUserName) \
    X(Tr104LineAuthPassword) \
    X(Tr104LineURI) \
    X(Tr104LineAuthUserNameAndURIForTr069) \
    X(Tr104SipRoleString) \
    X(Tr104SipExtensions) \
    X(Tr104SipTransportProtocols) \
    X(Tr104SipURISchemes) \
    X(Tr104SipEventSubscription) \
    X(Tr104SipResponseMap) \
    X(Tr104ActiveSipProxyServer) \
    X(Tr104SipProxyServerIp) \
    X(Tr104SipProxyServerPort) \
    X(Tr104SipProxyServerTransport) \
    X(Tr104SipSecondaryProxyServerIp) \
    X(Tr104SipSecondaryProxyServerPort) \
    X(Tr104SipSecondaryProxyServerTransport) \
    X(Tr104SipRegistrarServerIp) \
    X(Tr104SipRegistrarServerPort) \
    X(Tr104SipRegistrarServerTransport) \
    X(Tr104SipSecondaryRegServerIp) \
    X(Tr104SipSecondaryRegServerPort) \
    X(Tr104SipSecondaryRegServerTransport) \
    X(Tr104SipOutboundProxyIp) \
    X(Tr104SipOutboundProxyPort) \
    X(Tr104SipSecondaryOutboundProxyIp) \
    X(Tr104SipSecondaryOutboundProxyPort) \
    X(Tr104SipRegistrationPeriod) \
    X(Tr104SipRegisterRetryInterval) \
    X(Tr104SipReRegistrationHeader) \
    X(Tr104SipUserAgentDomain) \
    X(Tr104SipUserAgentPort) \
    X(Tr104SipUseCodecPriorityInSDPResponse) \
    X(Tr104SipDSCPMark) \
    X(Tr104SipTimerT1) \
    X(Tr104SipTimerT2) \
    X(Tr104SipTimerT4) \
    X(Tr104KeepAliveEnable) \
    X(Tr104KeepAliveInterval) \
    X(Tr104KeepAliveTimes) \
    X(Tr104SipSessionUpdateTimer) \
    X(Tr104JINGCharMode) \
    X(Tr104CIDHeadField) \
    X(Tr104CodecAndPtPriority) \
    X(Tr104PromptToneOfNoReg) \
    X(Tr104AttentedTransferCode) \
    X(Tr104UnattentedTransferCode) \
    X(Tr104FaxProcessMode) \
    X(Tr104T38SDPType) \
    X(Tr104FaxModemAttrFlag) \
    X(Tr104EchoCancelAttrFlag) \
    X(Tr104SilenceSuppAttrFlag) \
    X(Tr104PbxDailingFlag) \
    X(Tr104PbxDailingNum) \
    X(Tr104CallWaitingOnlyFlash) \
    X(Tr104CallConferenceOnlyFlash) \
    X(Tr104LineHotlineNum) \
    X(Tr104LineHotlineDelay) \
    X(Tr104DialTonePattern) \
    X(Tr104MCidService) \
    X(Tr104NoDialingBehaviour) \
    X(Tr104LineRxInviteReqs) \
    X(Tr104LineRxInviteRetrans) \
    X(Tr104LineRxNoninviteReqs) \
    X(Tr104LineRxNoninviteRetrans) \
    X(Tr104LineRxResponse) \
    X(Tr104LineRxResponseRetrans) \
    X(Tr104LineTxInviteReqs) \
    X(Tr104LineTxInviteRetrans) \
    X(Tr104LineTxNoninviteReqs) \
    X(Tr104LineTxNoninviteRetrans) \
    X(Tr104LineTxResponse) \
    X(Tr104LineTxResponseRetrans)

// SIP only; under H.248 they answer 0 and do nothing
#define TR104_SIP_TOLERATED_WRAPPERS(X) \
    X(Tr104LineTelNum) \
    X(Tr069LineCodecListCodecType) \
    X(Tr104LineCall3wayFlag)

// H.248 only, per line or port
#define TR104_H248_ONLY_WRAPPERS(X) \
    X(Tr104PhysicalTermId) \
    X(Tr104EphemeralTermIDName) \
    X(Tr104PortServiceState)

// H.248 only, gateway-wide: (nFlag, pValue), no third argument
#define TR104_H248_GATEWAY_WRAPPERS(X) \
    X(Tr104ProtocolVersion) \
    X(Tr104MessageFormat) \
    X(Tr104TermId) \
    X(Tr104PrimaryMGC) \
    X(Tr104PrimaryMGCPort) \
    X(Tr104SecondaryMGC) \
    X(Tr104SecondaryMGCPort) \
    X(Tr104CurrMgcNum) \
    X(Tr104MgLocalPort) \
    X(Tr104MessageEncodingType) \
    X(Tr104MgId) \
    X(Tr104DeviceName) \
    X(Tr104MgRegMode) \
    X(Tr104EphemeralTermIDPrefix) \
    X(Tr104EphemeralTermIDAddLen) \
    X(Tr104EphemeralTermIDUniform) \
    X(Tr104EphemeralTermIDStartVlaue) \
    X(Tr104EphemeralTermIDNumber) \
    X(Tr104EphemeralTermIDFirstName) \
    X(Tr104ThreeHandShakeEnable) \
    X(Tr104LongTimer) \
    X(Tr104PendingTimer) \
    X(Tr104RetranTimerInitial) \
    X(Tr104MaxRetranCount) \
    X(Tr104RetransmissionTime) \
    X(Tr104RetransmissionCycle) \
    X(Tr104HeartbeatMode) \
    X(Tr104HeartbeatCycle) \
    X(Tr104HeartbeatCount) \
    X(Tr104HeartbeatFormat) \
    X(Tr104MgRegisterCycle) \
    X(Tr104MgRegister) \
    X(Tr104AuthenticationMeth) \
    X(Tr104PhysicalTermIDPrefix) \
    X(Tr104PhysicalTermIDAddLen) \
    X(Tr104PhysicalTermIDStartVlaue) \
    X(Tr104PhysicalTermIDUniform)

// H.248 only with several value pointers (Tr104PhyNameRule, Tr104EphNameRule,
// Tr104EphNameRule2) are written out in dispatch.cpp.

// Change notifications: SIP only, nothing under any other protocol
#define TR104_CHANGE_NOTIFY_WRAPPERS(X) \
    X(Tr104LineTelNumChangeNotify) \
    X(Tr104LineAuthParamsChangeNotify) \
    X(Tr104ProxyParamsChangeNotify) \
    X(Tr104RegParamsChangeNotify)

// SIP stub: 0 under SIP, no variant behind it
#define TR104_SIP_STUB_WRAPPERS(X) \
    X(Tr104KeepAliveMode)
