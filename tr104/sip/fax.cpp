// Fax settings of a SIP line: the T.38 relay values of the line's voice profile, T.38 on the
// line record, and the profile-wide fax mode and voice-band-data (VBD) records.
#include "tr104/sip/templates.h"

namespace tr104::sip {
namespace {

// ---- T.38 values in the voice profile ----------------------------------------------------------

constexpr Signature lineSignature(const char *name, const char *valueName) {
    return Signature{name, valueName, Locate::Line, Access::GetSet};
}

// A word of the profile in low..high both ways; a refused set is -2.
constexpr ProfileValue t38Word(const char *name, const char *valueName, uint8_t offset, uint32_t bit, int high,
                               const char *getError, const char *refused, const char *badStored) {
    return ProfileValue{lineSignature(name, valueName), offset, 4, bit, ProfileConv::Word, 0, high, TR104_ERR_PARAM,
                        getError, nullptr, refused, refused, badStored};
}

// A refused rate is -1.
const ProfileValue kT38BitRate{lineSignature("Tr104FaxT38BitRateSip", "pFaxT38BitRate"),
                               offsetof(Tr104SipProfileRecord, unT38BitRate), 4, TR104_PROFILE_T38_BIT_RATE,
                               ProfileConv::T38Rate, 0, 0, TR104_ERR_EXCHANGE, "get line[%d] fax t38 bit rate error\n",
                               nullptr, "fax Rate param error \n", "fax Rate param error \n",
                               "No Match Fax T38 Bit Rate \n"};
const ProfileValue kT38TcfMethod{lineSignature("Tr104FaxT38TCFMethodSip", "pTCFMethod"),
                                 offsetof(Tr104SipProfileRecord, unT38TcfMethod), 4, TR104_PROFILE_T38_TCF_METHOD,
                                 ProfileConv::TcfText, 0, 0, TR104_ERR_PARAM, "get line[%d] TCF method error\n", nullptr,
                                 "param error.\n", "param error.\n", "get TCFMethod error.\n"};
const ProfileValue kT38HighSpeed =
    t38Word("Tr104FaxT38HighSpeedRedundancySip", "pHighSpeedRedundancy",
            offsetof(Tr104SipProfileRecord, unT38HighSpeedRedundancy), TR104_PROFILE_T38_HIGH_SPEED_REDUNDANCY, 3,
            "get line[%d] high speed redundancy error\n",
            "set HighSpeedRedundancy param *pHighSpeedRedundancy=%d(0~3)error \n",
            "get HighSpeedRedundancy[%d] error \n");
// The low-speed redundancy has no change-mask bit of its own.
const ProfileValue kT38LowSpeed =
    t38Word("Tr104FaxT38LowSpeedRedundancySip", "pLowSpeedRedundancy",
            offsetof(Tr104SipProfileRecord, unT38LowSpeedRedundancy), 0, 7, "get line[%d] low speed redundancy error\n",
            "set LowSpeedRedundancy param *pLowSpeedRedundancy=%d(0~7)error \n", "get LowSpeedRedundancy[%d] error \n");
const ProfileValue kT38PortAdd2 = t38Word("Tr104FaxT38PortAdd2Sip", "pPortAdd2",
                                          offsetof(Tr104SipProfileRecord, unT38PortAdd2), TR104_PROFILE_T38_PORT_ADD2,
                                          1, "get line[%d] port add 2 error\n",
                                          "set pPortAdd2 param *pPortAdd2=%d(0~1)error \n", "get PortAdd2[%d] error \n");

// T.38 on a line: the line record's switch word.  Line 0 is line 1.
const LineValue kT38Enable{{"Tr104FaxT38EnableSip", "pFaxT38Enable", Locate::LineOrAll, Access::GetSet},
                           GET_FAX_T38_ENABLE_ID, SET_FAX_T38_ENABLE_ID, offsetof(Tr104SipLineRecord, unEnable), 4,
                           LineConv::Integer, "get line[%d] fax t38 enable error.\n",
                           "SET_FAX_MODE_ID msg snd failed.\n", nullptr};

// ---- Fax mode record ---------------------------------------------------------------------------

constexpr Signature profileSignature(const char *name, const char *valueName) {
    return Signature{name, valueName, Locate::None, Access::GetSet};
}

constexpr ProfileWide faxAttribute(Signature sig, uint8_t offset, uint32_t flag, const char *getError,
                                   const char *setError, Accept accept = Accept::Any, int high = 0,
                                   const char *rangeError = nullptr) {
    return ProfileWide{sig, GET_FAX_MODE_ID, SET_FAX_MODE_ID, sizeof(Tr104SipFaxModeRecord), offset, 1, accept, 0,
                       high, Marker{offsetof(Tr104SipFaxModeRecord, unConfigFlag), 4, flag}, getError, rangeError,
                       setError};
}

constexpr uint8_t kCtrlMode = offsetof(Tr104SipFaxModeRecord, unFaxCtrlMode);

// Its null-argument message names the detection mode: operators know it by that name.
const ProfileWide kFaxCtrlMode = faxAttribute(profileSignature("Tr104FaxCtrlModeSip", "pDetectMode"), kCtrlMode,
                                              CONFIG_FLAG_FAX_CTRL_MODE, "get FaxCtrlMode error \n",
                                              "SET_FAX_MODE_ID msg snd failed.\n", Accept::Range, 2,
                                              "set FaxCtrlMode param *pFaxCtrlMode=%d(0~2)error \n");

const TextCode kPassThroughNames[] = {{"Force", 0}, {"Disable", 1}, {"Auto", 2}};
const ProfileWide kFaxPassThrough = [] {
    ProfileWide w = faxAttribute(profileSignature("Tr104ProfileFaxPassThroughSip", "pFaxPassThrough"), kCtrlMode,
                                 CONFIG_FLAG_FAX_CTRL_MODE, "get FaxPassThrough error \n",
                                 "SET_FAX_MODE_ID msg snd failed.\n");
    w.rangeError = "set FaxPassThrough param *pFaxPassThrough(%s) error \n";
    w.names = kPassThroughNames;
    w.nameCount = sizeof(kPassThroughNames) / sizeof(kPassThroughNames[0]);
    return w;
}();

const ProfileWide kFaxProcessMode = faxAttribute(
    profileSignature("Tr104FaxProcessModeSip", "pFaxProcessMode"), offsetof(Tr104SipFaxModeRecord, unProcessMode),
    CONFIG_FLAG_FAX_PROCESS_MODE, "get FaxProcessMode error \n", "CONFIG_FLAG_FAX_PROCESS_MODE msg snd failed.\n");
const ProfileWide kT38SdpType = faxAttribute(
    profileSignature("Tr104T38SDPTypeSip", "pT38SDPType"), offsetof(Tr104SipFaxModeRecord, unT38SdpType),
    CONFIG_FLAG_FAX_T38_SDP_TYPE, "get T38SDPType error \n", "CONFIG_FLAG_FAX_T38_SDP_TYPE msg snd failed.\n");
const ProfileWide kFaxModemAttr = faxAttribute(profileSignature("Tr104FaxModemAttrFlagSip", "pFaxModemAttrFlag"),
                                               offsetof(Tr104SipFaxModeRecord, unFaxModemSwitch),
                                               CONFIG_FLAG_FAX_FAX_MODEM_SWITCH, "get FaxModemAttrFlag error \n",
                                               "CONFIG_FLAG_FAX_FAX_MODEM_SWITCH msg snd failed.\n");
const ProfileWide kEchoCancelAttr = faxAttribute(
    profileSignature("Tr104EchoCancelAttrFlagSip", "pEchoCancelAttrFlag"),
    offsetof(Tr104SipFaxModeRecord, unEchoCancelSwitch), CONFIG_FLAG_FAX_ECHO_CANCEL_SWITCH,
    "get EchoCancelAttrFlag error \n", "CONFIG_FLAG_FAX_ECHO_CANCEL_SWITCH msg snd failed.\n");
const ProfileWide kSilenceSuppAttr = faxAttribute(
    profileSignature("Tr104SilenceSuppAttrFlagSip", "pSilenceSuppAttrFlag"),
    offsetof(Tr104SipFaxModeRecord, unSilenceSuppSwitch), CONFIG_FLAG_FAX_SILENCE_SUPP_SWITCH,
    "get SilenceSuppAttrFlag error \n", "CONFIG_FLAG_FAX_SILENCE_SUPP_SWITCH msg snd failed.\n");

// ---- Voice-band data ---------------------------------------------------------------------------

constexpr ProfileWide vbdValue(const char *name, const char *valueName, uint8_t offset, uint32_t selector,
                               Accept accept, int low, int high, const char *getError, const char *rangeError,
                               const char *setError) {
    return ProfileWide{profileSignature(name, valueName), GET_VBD_ID, SET_VBD_ID, sizeof(Tr104SipVbdRecord), offset,
                       1, accept, low, high, Marker{offsetof(Tr104SipVbdRecord, unSelector), 4, selector}, getError,
                       rangeError, setError};
}

const ProfileWide kVbdEnable = vbdValue("Tr104VbdEnableSip", "pVbdEnable", offsetof(Tr104SipVbdRecord, unEnable),
                                        TR104_VBD_ENABLE, Accept::Range, 0, 1, "get VbdEnable error \n",
                                        "set VbdEnable param *pVbdEnable=%d(0~1)error \n",
                                        "config vbd enable msg snd failed.\n");
const ProfileWide kVbdCodec = vbdValue("Tr104VbdCodecSip", "pVbdCodec", offsetof(Tr104SipVbdRecord, unCodec),
                                       TR104_VBD_CODEC, Accept::VbdCodec, 0, 0, "get VbdCodec error \n",
                                       "pVbdCodec error  [%d] \n", "config vbd codec msg snd failed.\n");
// Packet intervals: only the value's low byte is tested (10..60 ms); the whole value is sent.
const ProfileWide kVbdRxInterval =
    vbdValue("Tr104VbdRxIntervalSip", "pVbdRxInterval", offsetof(Tr104SipVbdRecord, unRxInterval),
             TR104_VBD_RX_INTERVAL, Accept::LowByte, 10, 60, "get VbdRxInterval error \n",
             "*pVbdRxInterval [%d]  error \n", "config vbd recv packet interval msg snd failed.\n");
const ProfileWide kVbdTxInterval =
    vbdValue("Tr104VbdTxIntervalSip", "pVbdTxInterval", offsetof(Tr104SipVbdRecord, unTxInterval),
             TR104_VBD_TX_INTERVAL, Accept::LowByte, 10, 60, "get VbdTxInterval error \n",
             "*pVbdTxInterval [%d]  error \n", "config vbd send packet interval msg snd failed.\n");

}  // namespace
}  // namespace tr104::sip

using tr104::sip::profileValue;
using tr104::sip::profileWide;

extern "C" {
TR104_API int Tr104FaxT38BitRateSip(int nFlag, void *pValue, int *nLocate) {
    return profileValue(tr104::sip::kT38BitRate, nFlag, pValue, nLocate);
}
TR104_API int Tr104FaxT38TCFMethodSip(int nFlag, void *pValue, int *nLocate) {
    return profileValue(tr104::sip::kT38TcfMethod, nFlag, pValue, nLocate);
}
TR104_API int Tr104FaxT38HighSpeedRedundancySip(int nFlag, void *pValue, int *nLocate) {
    return profileValue(tr104::sip::kT38HighSpeed, nFlag, pValue, nLocate);
}
TR104_API int Tr104FaxT38LowSpeedRedundancySip(int nFlag, void *pValue, int *nLocate) {
    return profileValue(tr104::sip::kT38LowSpeed, nFlag, pValue, nLocate);
}
TR104_API int Tr104FaxT38PortAdd2Sip(int nFlag, void *pValue, int *nLocate) {
    return profileValue(tr104::sip::kT38PortAdd2, nFlag, pValue, nLocate);
}
TR104_API int Tr104FaxT38EnableSip(int nFlag, void *pValue, int *nLocate) {
    return tr104::sip::lineValue(tr104::sip::kT38Enable, nFlag, pValue, nLocate);
}
TR104_API int Tr104FaxCtrlModeSip(int nFlag, void *pValue, int *nLocate) {
    return profileWide(tr104::sip::kFaxCtrlMode, nFlag, pValue, nLocate);
}
TR104_API int Tr104ProfileFaxPassThroughSip(int nFlag, void *pValue, int *nLocate) {
    return profileWide(tr104::sip::kFaxPassThrough, nFlag, pValue, nLocate);
}
TR104_API int Tr104FaxProcessModeSip(int nFlag, void *pValue, int *nLocate) {
    return profileWide(tr104::sip::kFaxProcessMode, nFlag, pValue, nLocate);
}
TR104_API int Tr104T38SDPTypeSip(int nFlag, void *pValue, int *nLocate) {
    return profileWide(tr104::sip::kT38SdpType, nFlag, pValue, nLocate);
}
TR104_API int Tr104FaxModemAttrFlagSip(int nFlag, void *pValue, int *nLocate) {
    return profileWide(tr104::sip::kFaxModemAttr, nFlag, pValue, nLocate);
}
TR104_API int Tr104EchoCancelAttrFlagSip(int nFlag, void *pValue, int *nLocate) {
    return profileWide(tr104::sip::kEchoCancelAttr, nFlag, pValue, nLocate);
}
TR104_API int Tr104SilenceSuppAttrFlagSip(int nFlag, void *pValue, int *nLocate) {
    return profileWide(tr104::sip::kSilenceSuppAttr, nFlag, pValue, nLocate);
}
TR104_API int Tr104VbdEnableSip(int nFlag, void *pValue, int *nLocate) {
    return profileWide(tr104::sip::kVbdEnable, nFlag, pValue, nLocate);
}
TR104_API int Tr104VbdRxIntervalSip(int nFlag, void *pValue, int *nLocate) {
    return profileWide(tr104::sip::kVbdRxInterval, nFlag, pValue, nLocate);
}
TR104_API int Tr104VbdTxIntervalSip(int nFlag, void *pValue, int *nLocate) {
    return profileWide(tr104::sip::kVbdTxInterval, nFlag, pValue, nLocate);
}
TR104_API int Tr104VbdCodecSip(int nFlag, void *pValue, int *nLocate) {
    return profileWide(tr104::sip::kVbdCodec, nFlag, pValue, nLocate);
}
}
