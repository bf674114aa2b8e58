/*
 * H.248 gateway configuration, line and profile handlers and statistics.
 */
#ifndef TR104_H248_H
#define TR104_H248_H

#include "tr104/channel.h"

TR104_EXTERN_C_BEGIN

TR104_EXTERN_C_END

#endif
