// Handler diagnostics: printed through Tr104DebugPrint, and only while debugging is on.
#pragma once

#include "tr104/framework.h"

#define TR104_DEBUG(...)                                      \
    do {                                                      \
        if (gTr104CfgDebug) {                                 \
            Tr104DebugPrint(__func__, __LINE__, __VA_ARGS__); \
        }                                                     \
    } while (0)

// Same, naming another function (generic handler bodies print the exported handler's name).
#define TR104_DEBUG_AS(function, ...)                         \
    do {                                                      \
        if (gTr104CfgDebug) {                                 \
            Tr104DebugPrint(function, __LINE__, __VA_ARGS__); \
        }                                                     \
    } while (0)
