/* Message queues between tasks of one process (unrelated to the System V queues). */
#ifndef V2LIN_LMSGQLIB_H
#define V2LIN_LMSGQLIB_H

#include "v2lin/ltaskLib.h"

#define V2LIN_MSG_Q_FIFO 0x00
#define V2LIN_MSG_Q_PRIORITY 0x01
#define V2LIN_MSG_PRI_NORMAL 0
#define V2LIN_MSG_PRI_URGENT 1

TR104_EXTERN_C_BEGIN

typedef struct v2lin_msgq *MSG_Q_ID;

TR104_API MSG_Q_ID msgQCreate(int maxMsgs, int maxMsgLength, int options);
TR104_API int msgQSend(MSG_Q_ID queue, const void *buffer, uint32_t nBytes, int32_t timeout, int priority);
TR104_API int msgQReceive(MSG_Q_ID queue, void *buffer, uint32_t maxNBytes, int32_t timeout);
TR104_API int msgQDelete(MSG_Q_ID queue);
TR104_API int msgQNumMsgs(MSG_Q_ID queue);
TR104_API int msgQShow(MSG_Q_ID queue, FILE *stream, void *verbose);
TR104_API int msgQList(FILE *stream, void *verbose);

TR104_EXTERN_C_END

#endif
