/*
 * Change notification: values the voice module changed on its own (a directory number from
 * the softswitch, a server learnt at run time) reported to the management agent as data-model
 * paths and value strings.
 */
#ifndef TR104_NOTIFY_H
#define TR104_NOTIFY_H

#include "tr104/channel.h"

TR104_EXTERN_C_BEGIN

/* Module number under which the library reports to the management agent. */
#define TR104_NOTIFY_MODULE 28

/* Passes count name/value pairs to the agent's notifyChangedValues_toTr069(28, ...).  Does
 * nothing for null arrays or a count below 1, and skips the call when the host process does
 * not provide the agent's function. */
TR104_API void Tr104NotifyChangeValuesToTr069(char **names, char **values, int count);

/* Inbound 16584: a line's directory number (line number in the block's first word; a line
 * other than 1 or 2 is reported with an empty name). */
TR104_API int Tr104LineTelNumChangeNotifySip(const Tr104Msg *msg);
/* Inbound 16587: a line's authentication user name and password (any line other than 1 is
 * reported as line 2). */
TR104_API int Tr104LineAuthParamsChangeNotifySip(const Tr104Msg *msg);
/* Inbound 16395: the primary (server flag 1) or standby proxy's address and port. */
TR104_API int Tr104ProxyParamsChangeNotifySip(const Tr104Msg *msg);
/* Inbound 16391: the primary (server flag 1) or standby registrar's address and port. */
TR104_API int Tr104RegParamsChangeNotifySip(const Tr104Msg *msg);

/* Called by the embedding process with the voice module's record in rspBuffer: */
/* the voice interface's address, mask and gateway (words 1 to 3, dotted text) */
TR104_API int Tr104IpParamsChangeNotify(const Tr104Msg *msg);
/* the addressing type (first word: 0 "Static", 1 "DHCP", else an empty value) */
TR104_API int Tr104DHCPParamChangeNotify(const Tr104Msg *msg);
/* the SIP VLAN id (16 bits at 18) and priority (byte at 16) */
TR104_API int Tr104SipVlanParamsChangeNotify(const Tr104Msg *msg);
/* the RTP VLAN id (16 bits at 34) and priority (byte at 32) */
TR104_API int Tr104RtpVlanParamsChangeNotify(const Tr104Msg *msg);

TR104_EXTERN_C_END

#endif
