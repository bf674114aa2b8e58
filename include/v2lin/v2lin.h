/* The whole task and timer runtime. */
#ifndef V2LIN_V2LIN_H
#define V2LIN_V2LIN_H

#include "v2lin/ltaskLib.h"
#include "v2lin/lsemLib.h"
#include "v2lin/lmsgQLib.h"
#include "v2lin/lwdLib.h"

#endif
