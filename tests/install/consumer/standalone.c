/* A stand-alone program of the runtime, built from the installed start-up library (tr104::v2lin):
 * main() and the root task body come from it; the exit status is the runtime's exit value (0). */
#include "v2lin_start.h"

int32_t (*const keepRootTask)(int32_t, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t,
                              int32_t) = root_task;
