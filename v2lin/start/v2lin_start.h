/* Stand-alone start-up of the runtime (static library v2lin_start, not part of libtr104.so). */
#ifndef V2LIN_START_H
#define V2LIN_START_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Root task body: starts the timer task "tExcTask", then sleeps for ever. */
int32_t root_task(int32_t a1, int32_t a2, int32_t a3, int32_t a4, int32_t a5, int32_t a6, int32_t a7, int32_t a8,
                  int32_t a9, int32_t a10);

#ifdef __cplusplus
}
#endif

#endif
