// The room of the record field a text handler reads, where it is smaller than the buffer the
// data-model map gives the agent: a get never hands over more than the field holds, so the
// robustness tests pass exactly that many bytes.  Every room comes from the record's layout.
#pragma once

#include <cstddef>
#include <string>

#include "tr104.h"

namespace robust {

struct TextRoom {
    const char *handler;  // the handler as the map names it, or its protocol variant
    size_t room;
};

inline constexpr TextRoom kTextRooms[] = {
    {"Tr104TimeStatus", TR104_FIELD_ROOM(Tr104TimePayload, aStatus, aNtpServer1)},
    {"Tr104TimeNtpServer1", TR104_FIELD_ROOM(Tr104TimePayload, aNtpServer1, aNtpServer2)},
    {"Tr104TimeNtpServer2", TR104_LAST_FIELD_ROOM(Tr104TimePayload, aNtpServer2)},
    {"Tr104LineHotlineNumSip", TR104_FIELD_ROOM(Tr104SipLineRecord, aHotlineNum, aDisplayName)},
    {"Tr104LineDisplayNameSip", TR104_FIELD_ROOM(Tr104SipLineRecord, aDisplayName, aucReserved1)},
    {"Tr104LineJitterBufferModeSip", TR104_FIELD_ROOM(Tr104SipLineRecord, aJitterMode, aucReserved3)},
    {"Tr104LineHookStatusSip", TR104_FIELD_ROOM(Tr104SipLineRecord, aHookState, aCallState)},
    {"Tr104LineCallStatusSip", TR104_FIELD_ROOM(Tr104SipLineRecord, aCallState, unProfileId)},
    {"Tr104LineHookStatusH248", TR104_LAST_FIELD_ROOM(Tr104H248PortStatusBlock, aHookState)},
    {"Tr104CurrMgcAddrH248", TR104_LAST_FIELD_ROOM(Tr104H248MgcBlock, aCurrMgcAddr)},
    {"Tr104PPPoEAccount", TR104_FIELD_ROOM(Tr104PppoePayload, aAccount, aPassword)},
    {"Tr104PPPoEPassword", TR104_FIELD_ROOM(Tr104PppoePayload, aPassword, aucZero)},
    {"Tr104DHCPOption60Value", TR104_LAST_FIELD_ROOM(Tr104Option60Payload, aValue)},
    {"Tr104DHCPOption125Value", TR104_LAST_FIELD_ROOM(Tr104Option125Payload, aValue)},
    {"Tr104PhysicalInterfaceTestAGACVoltage2",
     TR104_FIELD_ROOM(Tr104OuterLineResult, aGroundACVoltage, bGroundACVoltage)},
    {"Tr104PhysicalInterfaceTestBGACVoltage2", TR104_FIELD_ROOM(Tr104OuterLineResult, bGroundACVoltage, abACVoltage)},
    {"Tr104PhysicalInterfaceTestABACVoltage2", TR104_FIELD_ROOM(Tr104OuterLineResult, abACVoltage, loopResistance)},
    {"Tr104PhysicalInterfaceTestAGDCVoltage2",
     TR104_FIELD_ROOM(Tr104OuterLineResult, aGroundDCVoltage, bGroundDCVoltage)},
    {"Tr104PhysicalInterfaceTestBGDCVoltage2", TR104_FIELD_ROOM(Tr104OuterLineResult, bGroundDCVoltage, abDCVoltage)},
    {"Tr104PhysicalInterfaceTestABDCVoltage2",
     TR104_FIELD_ROOM(Tr104OuterLineResult, abDCVoltage, aGroundInsulationResistance)},
};

// The bytes a get of `handler` (a map name, called under `protocol`, or a protocol variant) may
// write into a buffer of `mapSize` bytes: the field's room where the table names it.
inline size_t textRoom(const std::string &handler, int protocol, size_t mapSize) {
    const std::string variant = handler + (protocol == TR104_PROTOCOL_SIP    ? "Sip"
                                           : protocol == TR104_PROTOCOL_H248 ? "H248"
                                                                             : "");
    for (const TextRoom &r : kTextRooms) {
        if ((handler == r.handler || variant == r.handler) && r.room < mapSize) {
            return r.room;
        }
    }
    return mapSize;
}

}  // namespace robust
