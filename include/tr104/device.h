/*
 * Capabilities and profile limits, private protocol, activity LED, heartbeat and voice
 * operations, profile-level settings, the codec list of a line and the remaining handlers that
 * serve both protocols with one body.
 *
 * Handlers of a parameter that exists once per device or profile take (nFlag, pValue) only;
 * line handlers take nLocate as well (nLocate[2] the line, nLocate[3] the codec list entry).
 * Results: 0 success, -1 the exchange failed or the value cannot be applied, -2 bad argument
 * (nothing is sent to the voice module).
 *
 * ---- Capabilities (get only; a set answers -2) --------------------------------------------
 *   asked from the voice module:  Tr104ProfileNumber (command 94), Tr104MaxCountPerProfile (95)
 *   fixed answers, whatever the protocol:
 *     Tr104MaxLineCount 2 (the pointer is not checked), Tr104VoiceProtocolGroup 6,
 *     Tr104CapabilityRegions "", Tr104SRTPFlag 0, Tr104DSCPCoupledFlag 0,
 *     Tr104PSTNSoftSwitchOverFlag 0, Tr104ToneGenerationFlag 0, Tr104RingGenerationFlag 0,
 *     Tr104DigitMapFlag 1, Tr104ButtonMapFlag 0, Tr104VoicePortTestsFlag 1
 *   under SIP the <name>Sip handler answers, under H.248 the fixed value, otherwise -1:
 *     Tr104MaxSessionsPerLine 1, Tr104MaxSessionsAllLines 2, Tr104RTCPFlag 1,
 *     Tr104RTPRedundancyFlag 1, Tr104VlanTagCoupledFlag 1, Tr104FaxT38Flag 1,
 *     Tr104FaxPassThroughFlag 1, Tr104ModemPassThroughFlag 1, Tr104NumberingPlanFlag 0
 *
 * ---- Device operations -------------------------------------------------------------------
 *   Tr104PrivateProtocolEnable        int, get command 6, set command 5 (send only)
 *   Tr104PrivateIgnoreClearCfgEnable  int, get command 8, set command 7 (send only)
 *   get_act_led()                     voice LED: module 1 -> 0, 2 -> 2, 0 -> 1, other -> -1
 *   Tr104HeartbeatFlag                get 1
 *   Tr104VoiceOperation               set only: 0 register with the call agent, 1 unregister
 *                                     (both through Tr104MgcRegister), 2 restart the device
 *                                     (runs the shell command "reboot" after one second)
 *
 * ---- Profile-level settings (kept in the library unless said otherwise) -------------------
 *   Tr104ProfileEnable            text "Enabled", "Disabled" or "Quiescent" (exact case)
 *   Tr104ProfileReset             int, kept
 *   Tr104ProfileNumberOfLines     int, get only: the SIP handler, 2 under H.248
 *   Tr104ProfileName              text, at most TR104_PROFILE_NAME_LEN - 1 characters kept
 *   Tr104ProfileSignalingProtocol text: get "H.248", "SIP" or "NONE" from the current protocol;
 *                                 set sends command 1 with the text (the running protocol is
 *                                 not changed)
 *   Tr104ServerType               int 0..2: 2 sets the signalling protocol "H.248", 0 and 1 "SIP"
 *
 * ---- Codec list of a line (Line.{i}.Codec.List.{i}) --------------------------------------
 * The list lives in gCodecListUnit (codec.h): five entries per line, nLocate[2] the line (1..2),
 * nLocate[3] the entry (1..5).  A get answers from the list.  A set changes the entry and applies
 * the line's codec settings to the running voice module at once, through the voice profile bound
 * to the line's port (read from the port status; a port without one gets "port<n>" created,
 * set and bound in one request):
 *   - codec, enable, priority: the codec selection (profile change-mask bit 0x01), the payload
 *     types of the enabled entries that name a codec, in priority order (lower number first,
 *     then entry order), in aucCodecs; unused places hold 0xFF;
 *   - packetization period (10..60 ms): bit 0x100; silence suppression (0 or 1): bit 0x02.
 *     The voice profile holds one value of each for the line, so the value written through any
 *     entry is taken by every entry of the line: a get of any entry reports what runs.
 * A set that cannot be applied answers -1 and leaves the list as it was:
 *   - the voice module does not run SIP (gTr104CurrProtocolType other than 4: under H.248 the
 *     call agent chooses the codecs, and no profile record carries them);
 *   - the same codec would be selected twice on the line;
 *   - the line would be left without any enabled codec (disabling or clearing the last one);
 *   - the voice module cannot be reached (the port status read or the profile write failed).
 * Bad values answer -2 (unknown codec name, packetization outside 10..60, silence suppression or
 * enable other than 0 and 1, priority 0).  The entry's change mask records what was written:
 * 0x1 codec, 0x2 priority, 0x4 packetization, 0x8 enable, 0x10 silence suppression.
 *
 *   Tr104LineCodecListType                  text, codec name ("" for none)
 *   Tr104LineCodecListBitRate               int, bit/s of the entry's codec, get only
 *   Tr104LineCodecListPacketizationPeriod   int, ms
 *   Tr104LineCodecListSilenceSuppression    int, 0 or 1
 *   Tr104LineCodecListEnable                int, 0 or 1
 *   Tr104LineCodecListPriority              int, 1 or more
 *   Tr104LineCodecUsed                      text, get only: the codec the line offers first
 *                                           (the first codec of its selection), "" when none
 *
 * ---- Codecs the device supports (Capabilities.Codecs.{i}, nLocate[1] 1..5, get only) ------
 *   Tr104CodecType "G.711MuLaw", "G.723.1", "G.711ALaw", "G.722", "G.729" for entries 1..5;
 *   Tr104CodecBitRate its bit rate; Tr104CodecPacketizationPeriod "10-60";
 *   Tr104CodecSilenceSuppression 1.
 *
 * ---- Parameters this voice module does not provide ----------------------------------------
 *   Tr104SessionStartTime, Tr104SessionEndTime, Tr104SessionDuration,
 *   Tr104SipSessionTimerSessionExpires, Tr104LineSessionTimerFlag and the registration
 *   diagnostics Tr104IADDiagnosticsState (device-wide, two arguments): after the argument checks
 *   they answer -1 with the debug message "%s: this voice module does not provide the
 *   parameter\n".
 *
 * ---- Extension point: SIP variants left to the embedding process ---------------------------
 * The wrappers of handlers.h reference their variants weakly.  The library defines no SIP
 * variant for the parameters below; a process that loads the library (for a voice module that
 * supports them) may define one, with C linkage and the wrapper's signature
 * int <name>Sip(int nFlag, void *pValue, int *nLocate), and the wrapper calls it while the
 * protocol is SIP (without one, the wrapper answers -1).  The list is TR104_EXTENSION_VARIANTS.
 * Tr104MgcRegisterSip (registration with the call agent under SIP, reached by Tr104MgcRegister
 * and Tr104VoiceOperation) works the same way, with Tr104MgcRegister's signature.
 */
#ifndef TR104_DEVICE_H
#define TR104_DEVICE_H

#include "tr104/channel.h"

TR104_EXTERN_C_BEGIN

/* Capabilities */
#define TR104_GET_PROFILE_NUMBER_ID 94
#define TR104_GET_MAX_COUNT_PER_PROFILE_ID 95
TR104_API int Tr104ProfileNumber(int nFlag, void *pValue);
TR104_API int Tr104MaxCountPerProfile(int nFlag, void *pValue);
TR104_API int Tr104MaxLineCount(int nFlag, void *pValue);
TR104_API int Tr104MaxSessionsPerLine(int nFlag, void *pValue);
TR104_API int Tr104MaxSessionsAllLines(int nFlag, void *pValue);
TR104_API int Tr104VoiceProtocolGroup(int nFlag, void *pValue);
TR104_API int Tr104CapabilityRegions(int nFlag, void *pValue);
TR104_API int Tr104RTCPFlag(int nFlag, void *pValue);
TR104_API int Tr104SRTPFlag(int nFlag, void *pValue);
TR104_API int Tr104RTPRedundancyFlag(int nFlag, void *pValue);
TR104_API int Tr104DSCPCoupledFlag(int nFlag, void *pValue);
TR104_API int Tr104VlanTagCoupledFlag(int nFlag, void *pValue);
TR104_API int Tr104PSTNSoftSwitchOverFlag(int nFlag, void *pValue);
TR104_API int Tr104FaxT38Flag(int nFlag, void *pValue);
TR104_API int Tr104FaxPassThroughFlag(int nFlag, void *pValue);
TR104_API int Tr104ModemPassThroughFlag(int nFlag, void *pValue);
TR104_API int Tr104ToneGenerationFlag(int nFlag, void *pValue);
TR104_API int Tr104RingGenerationFlag(int nFlag, void *pValue);
TR104_API int Tr104DigitMapFlag(int nFlag, void *pValue);
TR104_API int Tr104NumberingPlanFlag(int nFlag, void *pValue);
TR104_API int Tr104ButtonMapFlag(int nFlag, void *pValue);
TR104_API int Tr104VoicePortTestsFlag(int nFlag, void *pValue);

/* Device operations */
#define SET_NGN_PROTOCOL 1
#define SET_PRI_PROTOCOL_CONFIG_ID 5
#define GET_PRI_PROTOCOL_CONFIG_ID 6
#define SET_PRI_PROTOCOL_IGNORE_CLR_CFG_ID 7
#define GET_PRI_PROTOCOL_IGNORE_CLR_CFG_ID 8
#define GET_VOIP_LED_STATUS_ID 20
TR104_API int Tr104PrivateProtocolEnable(int nFlag, void *pValue);
TR104_API int Tr104PrivateIgnoreClearCfgEnable(int nFlag, void *pValue);
TR104_API int get_act_led(void);
TR104_API int Tr104HeartbeatFlag(int nFlag, void *pValue);
TR104_API int Tr104VoiceOperation(int nFlag, void *pValue);
/* Registration with the call agent: Tr104MgcRegisterH248 under H.248, Tr104MgcRegisterSip
 * under SIP (value 1 registers, anything else unregisters), -1 otherwise or when the variant
 * is not present.  The arguments pass unchanged. */
TR104_API int Tr104MgcRegister(int nFlag, void *pRegister, char *pMgcAddr, int *nLocate);

/* Profile-level settings */
#define TR104_PROFILE_ENABLE_LEN 32
#define TR104_PROFILE_NAME_LEN 64
TR104_API extern char gProfileEnable[TR104_PROFILE_ENABLE_LEN];
TR104_API extern char gProfileName[TR104_PROFILE_NAME_LEN];
TR104_API extern int gVoiceServerType;
TR104_API int Tr104ProfileEnable(int nFlag, void *pValue);
TR104_API int Tr104ProfileReset(int nFlag, void *pValue);
TR104_API int Tr104ProfileNumberOfLines(int nFlag, void *pValue);
TR104_API int Tr104ProfileName(int nFlag, void *pValue);
TR104_API int Tr104ProfileSignalingProtocol(int nFlag, void *pValue);
TR104_API int Tr104ServerType(int nFlag, void *pValue);

/* Codec list of a line and the codecs the device supports */
TR104_API int Tr104LineCodecListType(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineCodecListBitRate(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineCodecListPacketizationPeriod(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineCodecListSilenceSuppression(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineCodecListEnable(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineCodecListPriority(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineCodecUsed(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104CodecType(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104CodecBitRate(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104CodecPacketizationPeriod(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104CodecSilenceSuppression(int nFlag, void *pValue, int *nLocate);

/* Parameters this voice module does not provide (-1 after the argument checks) */
TR104_API int Tr104SessionStartTime(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104SessionEndTime(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104SessionDuration(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104SipSessionTimerSessionExpires(int nFlag, void *pValue);
TR104_API int Tr104LineSessionTimerFlag(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104IADDiagnosticsState(int nFlag, void *pValue);

/* SIP variants the library leaves to the embedding process (see above): X(<wrapper name>),
 * TR104_EXTENSION_VARIANTS, written from the wrappers of the catalogue. */
#include "tr104/extension_variants.h"

TR104_EXTERN_C_END

#endif
