/* Binary, counting and mutual-exclusion semaphores of the runtime. */
#ifndef V2LIN_LSEMLIB_H
#define V2LIN_LSEMLIB_H

#include "v2lin/ltaskLib.h"

/* Option bits (only first-come-first-served semaphores can be created). */
#define V2LIN_SEM_Q_FIFO 0x00
#define V2LIN_SEM_Q_PRIORITY 0x01
#define V2LIN_SEM_DELETE_SAFE 0x04
#define V2LIN_SEM_INVERSION_SAFE 0x08

TR104_EXTERN_C_BEGIN

typedef struct v2lin_sem *SEM_ID;

TR104_API SEM_ID semBCreate(int options, int initialState);
TR104_API SEM_ID semCCreate(int options, int initialCount);
TR104_API SEM_ID semMCreate(int options);
TR104_API int semTake(SEM_ID sem, int32_t timeout);
TR104_API int semGive(SEM_ID sem);
TR104_API int semFlush(SEM_ID sem);
TR104_API int semDelete(SEM_ID sem);
TR104_API int semShow(SEM_ID sem, FILE *stream, void *verbose);
TR104_API int semList(FILE *stream, void *verbose);
TR104_API pthread_mutex_t *mgMutexConstruct(pthread_mutex_t *mutex);

TR104_EXTERN_C_END

#endif
