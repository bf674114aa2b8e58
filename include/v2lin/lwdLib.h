/* Watchdog timers, clock, start-up of the runtime and debugging aids. */
#ifndef V2LIN_LWDLIB_H
#define V2LIN_LWDLIB_H

#include "v2lin/ltaskLib.h"

TR104_EXTERN_C_BEGIN

/* Watchdog handler: one 32-bit argument; runs in "tExcTask" with no runtime lock held. */
typedef void (*V2LIN_WDFUNC)(int32_t);
typedef struct v2lin_wdog *WDOG_ID;

/* Seconds and microseconds as two 32-bit words. */
typedef struct v2lin_tv {
    int32_t tv_sec;
    int32_t tv_usec;
} V2LIN_TV;

TR104_API WDOG_ID wdCreate(void);
TR104_API int wdStart(WDOG_ID wd, int32_t delay, V2LIN_WDFUNC handler, int32_t argument);
TR104_API int wdCancel(WDOG_ID wd);
TR104_API int wdDelete(WDOG_ID wd);
TR104_API int wdogShow(FILE *stream);
TR104_API void process_timer_list(void);

TR104_API int sysClkRateGet(void);
TR104_API uint32_t tickGet(void);
TR104_API void tickSet(uint32_t ticks);
TR104_API extern int32_t offset;
TR104_API extern V2LIN_TV start_tv;
TR104_API extern V2LIN_TV prev_tv;
TR104_API extern int exit_value;

/* Start-up: adopts the caller as "tUsrRoot" and starts the timer task "tExcTask". */
TR104_API int v2lin_init(void);
TR104_API int32_t exception_task(int32_t a1, int32_t a2, int32_t a3, int32_t a4, int32_t a5, int32_t a6, int32_t a7,
                                 int32_t a8, int32_t a9, int32_t a10);

/* Time-stamp trace to stderr; 1 when the call was suppressed. */
TR104_API int trace_time(void);

/* Crash hook. */
TR104_API void signal_init(void);
TR104_API void sighandler(int signum);
TR104_API void gdb(void);

TR104_EXTERN_C_END

#endif
