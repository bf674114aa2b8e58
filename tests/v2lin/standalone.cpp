// A stand-alone program of the runtime: everything, main() included, comes from v2lin_start.
// The exit status is exit_value (0).
#include "v2lin_start.h"

// Keeps the root task body referenced, so the link proves it is in the start-up library.
int32_t (*const keepRootTask)(int32_t, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t,
                              int32_t) = root_task;
