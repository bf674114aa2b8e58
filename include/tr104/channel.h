/*
 * The message channel to the voice module.
 *
 * Every request travels as one Tr104Msg record over System V message queues; one System V
 * semaphore (key 36) serialises the exchanges of all threads and processes.  All words are
 * 32-bit in the platform's byte order; the voice module shares that order.
 */
#ifndef TR104_CHANNEL_H
#define TR104_CHANNEL_H

#include <stddef.h>
#include <stdint.h>

#include "tr104/export.h"

TR104_EXTERN_C_BEGIN

#define TR104_CFG_BUFFER_LEN 2048
#define TR104_RSP_BUFFER_LEN 2048
/* Message text of every msgsnd/msgrcv on the channel: cmd, cfgBuffer, rspBuffer. */
#define TR104_MSG_TEXT_LEN 4100

/* The room of a text field of a record: its bytes up to the next field, or up to the record's
 * end for the last one.  A text read from the field is at most room - 1 characters and its
 * terminator, whatever the voice module left there. */
#define TR104_FIELD_ROOM(type, field, next) (offsetof(type, next) - offsetof(type, field))
#define TR104_LAST_FIELD_ROOM(type, field) (sizeof(type) - offsetof(type, field))

/* Queue and semaphore keys. */
#define TR104_SEM_KEY 36
#define TR104_SND_QUEUE_KEY 30

/* Reply cmd_type values. */
#define TR104_CMD_TYPE_DATA 1
#define TR104_CMD_TYPE_KEEPALIVE 3

/* The record a caller fills and hands to msgSndAndRcvSem.  Its first 4104 bytes are the
 * System V message as the 32-bit device sends it; the last three words never leave the
 * process. */
typedef struct Tr104Msg {
    uint32_t cmd_type; /* request: module number; reply: 1, keep-alive: 3 */
    uint32_t cmd; /* command id */
    char cfgBuffer[TR104_CFG_BUFFER_LEN]; /* request payload */
    char rspBuffer[TR104_RSP_BUFFER_LEN]; /* reply payload (zero in a request) */
    int32_t semId; /* semaphore taken around the exchange */
    int32_t sndQueueId; /* queue the request goes out on */
    int32_t rcvQueueId; /* queue the reply is read from */
} Tr104Msg;

/* What the kernel carries.  The message type is a `long` (8 bytes on 64-bit hosts, 4 on the
 * device), so the kernel buffer is never the record itself: the text always holds exactly
 * cmd, cfgBuffer and rspBuffer, byte for byte as on the device. */
typedef struct Tr104WireMsg {
    long mtype;
    char text[TR104_MSG_TEXT_LEN];
} Tr104WireMsg;

/* Byte offsets inside Tr104WireMsg.text. */
#define TR104_TEXT_CMD_OFFSET 0
#define TR104_TEXT_CFG_OFFSET 4
#define TR104_TEXT_RSP_OFFSET (4 + TR104_CFG_BUFFER_LEN)

/* Channel identifiers of this process; -1 until created. */
TR104_API extern int32_t gTr104RcvMsgQueueSemId;
TR104_API extern int32_t gTr104SndMsgQueueId;
TR104_API extern int32_t gTr104RcvOutMsgQueueId;
TR104_API extern int32_t gTr104RcvInMsgQueueId;
/* Module number written into cmd_type of every request (7 until the module kind is set). */
TR104_API extern int32_t gCurrentModule;

/* Opens (creating when needed) the semaphore and the queues of a module kind (1..7) and sets
 * gCurrentModule.  Returns 0, or -1 when an object cannot be created; an unknown kind is
 * reported and returns 0. */
TR104_API int tr104VoiceMsgQueuesInit(int moduleKind);
/* Zero the record and fill cmd_type and the three identifiers.  -1 for a null record. */
TR104_API int tr104MsgConstruct(Tr104Msg *msg);
TR104_API void tr104MsgInit(Tr104Msg *msg);

/* One locked exchange: ifNeedResponse 0 sends and waits for the reply, 1 only sends.
 * Returns -1 on failure, 0 after a send, else the length of the reply text received. */
TR104_API int msgSndAndRcvSem(Tr104Msg *pIoSemMsgPara, unsigned int ifNeedResponse);
/* Typed exchange for command ids 20481..24574: 0, -1 (exchange failed), -2 (bad argument). */
TR104_API int tr104MsgSndAndWaitIfNeedResponse(int eCmdId, void *pCfgBuffer, unsigned int unCfgBufferLen,
                                               unsigned int ifNeedResponse);
/* Send len bytes of data as the payload of cmd, without waiting.  0 or -1. */
TR104_API int sendtr104Msg(unsigned int cmd, const void *data, unsigned int len);

#define TR104_PORT_STATUS_LEN 452
#define TR104_GET_PORT_STATUS_ID 16592
/* Reads the 452-byte port-status block of a port into status.  0, -1 or -2. */
TR104_API int getLineStatus(int port, void *status);

TR104_EXTERN_C_END

#endif
