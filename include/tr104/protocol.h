/*
 * Protocol selection: which signalling protocol the voice module runs, how the library learns
 * it, how the choice is persisted and how a switch is made.
 *
 * gTr104CurrProtocolType (declared in tr104/framework.h): 2 H.248, 4 SIP, 0 none known.  The
 * persisted type is a small integer below 5, kept in "/uxcfg/voip.conf" as "voipType %d\n".
 */
#ifndef TR104_PROTOCOL_H
#define TR104_PROTOCOL_H

#include "tr104/channel.h"

TR104_EXTERN_C_BEGIN

#define TR104_PROTOCOL_NONE 0
#define TR104_PROTOCOL_H248 2
#define TR104_PROTOCOL_SIP 4
/* Persisted types must stay below this. */
#define TR104_PROTOCOL_TYPE_LIMIT 5

/* Command asking the voice module for its protocol name; inbound command of a change. */
#define TR104_GET_PROTOCOL_NAME_ID 2
#define TR104_SET_PROTOCOL_TYPE_ID 3
/* Buffer of the protocol name ("SIP", "H.248"). */
#define TR104_PROTOCOL_NAME_LEN 6

#define TR104_PROTOCOL_FILE "/uxcfg/voip.conf"
#define TR104_VOICE_CLI_FILE "/uxcfg/voiceconf.ini"

/* Callbacks of the embedding agent, run when the voice module reports a protocol change.
 * The refresh callback receives the address of gTr104CurrProtocolType. */
typedef void (*Tr104RefreshVoiceCfgFunc)(int *pProtocolType);
typedef void (*Tr104LoadVoicePagesFunc)(void);

TR104_API extern Tr104RefreshVoiceCfgFunc gRefreshVoiceConfigFunc;
TR104_API extern Tr104LoadVoicePagesFunc gLoadVoicePagesFunc;

/* Registers a callback; a null fn returns -1 and keeps the old one, else 0. */
TR104_API int RegisterRefreshVoiceCfgFunc(Tr104RefreshVoiceCfgFunc fn);
TR104_API int RegisterLoadVoicePagesFunc(Tr104LoadVoicePagesFunc fn);

/* Asks the voice module for its protocol name and sets gTr104CurrProtocolType ("H.248" 2,
 * "SIP" 4, anything else 0).  0, or -1 with the global unchanged when the exchange fails. */
TR104_API int Tr104RefreshCurrProtocolType(void);
/* The data-model parameter, get only: the protocol name into a 6-byte buffer.  nLocate is
 * ignored.  0, -1 or -2.  Leaves gTr104CurrProtocolType alone. */
TR104_API int Tr104VoiceProtocolType(int nFlag, void *pValue, int *nLocate);
/* Inbound command 3: the second reply word becomes the protocol type; the refresh callback
 * runs when the first word is 1, the page callback always.  -1 for a null msg, else 0. */
TR104_API int Tr104SetProtocolType(const Tr104Msg *msg);

/* Writes the persisted type.  0, or -1 (type 5 or more, file cannot be opened). */
TR104_API int SetProtocolTypeToScript(int type);
/* Reads the persisted type: the integer after the first word, 0 when the line does not
 * match, -1 when the file is missing or empty. */
TR104_API int GetProtocolTypeFromScript(void);
TR104_API int Tr104GetProtocolTypeFromScript(void);

/* Persists the type, waits 2 s and restarts the device.  0 or -1. */
TR104_API int SwitchProtocolType(int type);
/* Same; bRebootFlag 1 restarts, 0 only persists.  -1 for a bad type or flag (nothing
 * written) or when the file cannot be written. */
TR104_API int SwitchProtocolType2(int type, int bRebootFlag);
/* Clears the voice command-line configuration file (a single 0xFF byte).  0 or -1. */
TR104_API int EraseVoiceCliConfig(void);

TR104_EXTERN_C_END

#endif
