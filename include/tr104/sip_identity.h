/*
 * SIP line identity and authentication: the directory number, the URI and the user name and
 * password with which a line (nLocate[2], 1 or 2) authenticates to the registrar.
 *
 * The directory number and the URI are sent to the voice module at once.  User name and
 * password travel together in one authentication request: a set stages its value in slot 5 of
 * the deferred parameter buffer (startup.h), applied when both have been written or when the
 * slot's timer runs out (the missing value is then read from the voice module).  One slot
 * serves both lines: a write for the other line before the slot is applied moves the staged
 * values to that line.
 *
 * Handlers follow framework.h: int f(nFlag, pValue, nLocate), nFlag 0 get, 1 set.  Values are
 * texts of at most 65 characters: a get needs a buffer of TR104_LINE_IDENTITY_LEN bytes.
 * Returns 0, -1 (the exchange failed) or -2 (bad argument).
 */
#ifndef TR104_SIP_IDENTITY_H
#define TR104_SIP_IDENTITY_H

#include "tr104/channel.h"

TR104_EXTERN_C_BEGIN

/* Command ids of the line identity values (all carry the 452-byte line record). */
enum Tr104SipIdentityCommandId {
    SET_LINE_TEL_NUM_ID = 16578,
    GET_LINE_TEL_NUM_ID = 16579,
    SET_USER_AUTHOR_ID = 16585,
    GET_USER_AUTHOR_ID = 16586,
    SET_LINE_URI_ID = 16588,
    GET_LINE_URI_ID = 16589
};

/* Byte offsets of the identity fields in the line record. */
#define TR104_LINE_NUMBER_OFFSET 8 /* directory number or URI, by command */
#define TR104_LINE_AUTH_USER_OFFSET 224 /* authentication user name */
#define TR104_LINE_AUTH_PWD_OFFSET 290 /* authentication password */
/* An identity text: at most 65 characters and a terminator. */
#define TR104_LINE_IDENTITY_LEN 66

/* The line record (452 bytes) as the identity commands fill it: the line number and, by
 * command, the directory number or URI, or the authentication user name and password. */
typedef struct Tr104SipLineIdentityRecord {
    uint32_t unLine; /*   0 line number, 1 or 2 */
    uint8_t aucReserved1[4]; /*   4 */
    char aNumber[TR104_LINE_IDENTITY_LEN]; /*   8 directory number or URI */
    uint8_t aucReserved2[150]; /*  74 */
    char aAuthUserName[TR104_LINE_IDENTITY_LEN]; /* 224 authentication user name */
    char aAuthPassword[TR104_LINE_IDENTITY_LEN]; /* 290 authentication password */
    uint8_t aucReserved3[96]; /* 356 */
} Tr104SipLineIdentityRecord;

TR104_API int Tr104LineTelNumSip(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineURISip(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineAuthUserNameSip(int nFlag, void *pValue, int *nLocate);
TR104_API int Tr104LineAuthPasswordSip(int nFlag, void *pValue, int *nLocate);

/* Set only: the user name, which also becomes the line's URI when the line has no directory
 * number.  Should the user name then fail, the URI is set back to the empty text. */
TR104_API int Tr104LineAuthUserNameAndURIForTr069Sip(int nFlag, void *pValue, int *nLocate);

/* Apply function of slot 5: sends the staged user name and password of the staged line,
 * completed from the voice module's current values when only one of them was written.
 * 0 or -1. */
TR104_API int setLineAuthCfg(Tr104Msg *msg, void *paramBuffer);

TR104_EXTERN_C_END

#endif
