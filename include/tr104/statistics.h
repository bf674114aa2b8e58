/*
 * RTP and call statistics, telephone events, capabilities, device operations, profile settings.
 */
#ifndef TR104_STATISTICS_H
#define TR104_STATISTICS_H

#include "tr104/channel.h"

TR104_EXTERN_C_BEGIN

TR104_EXTERN_C_END

#endif
