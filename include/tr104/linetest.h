/*
 * Phone ports, line tests and the simulated call test.
 */
#ifndef TR104_LINETEST_H
#define TR104_LINETEST_H

#include "tr104/channel.h"

TR104_EXTERN_C_BEGIN

TR104_EXTERN_C_END

#endif
