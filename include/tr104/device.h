/*
 * Capabilities and profile limits, private protocol, activity LED, heartbeat and voice
 * operations, profile-level settings and the codec list of a line.
 */
#ifndef TR104_DEVICE_H
#define TR104_DEVICE_H

#include "tr104/channel.h"

TR104_EXTERN_C_BEGIN

TR104_EXTERN_C_END

#endif
