/*
 * The voice interface's network settings: addressing, VLANs, DNS, DHCP, PPPoE, time, numbers.
 */
#ifndef TR104_NETCFG_H
#define TR104_NETCFG_H

#include "tr104/channel.h"

TR104_EXTERN_C_BEGIN

TR104_EXTERN_C_END

#endif
