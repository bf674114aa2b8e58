/*
 * The TR-104 data model as libtr104 serves it (libtr104map.so, a small library beside
 * libtr104.so that a device image may leave out).  The table is generated from the map shipped
 * with it (voice-map.tsv): one entry per parameter path, served or not.
 *
 * A path pattern names instances with {i}: "InternetGatewayDevice.Services.VoiceService.{i}.
 * VoiceProfile.{i}.Line.{i}.Enable".  tr104MapLookup resolves a concrete path ("...Line.2.
 * Enable") to its entry and the nLocate array its handler takes.  The map holds both trees of
 * the standard: "InternetGatewayDevice.Services.VoiceService." (issue 1) and
 * "Device.Services.VoiceService." (issue 2), served by the same handlers.
 */
#ifndef TR104_MAP_H
#define TR104_MAP_H

#include "tr104/export.h"

/* Exports of libtr104map (not of libtr104). */
#if defined(TR104_BUILDING_MAP)
#define TR104_MAP_API __attribute__((visibility("default")))
#else
#define TR104_MAP_API
#endif

TR104_EXTERN_C_BEGIN

typedef void (*Tr104MapFunction)(void);

/* What a handler's pValue points to. */
typedef enum Tr104MapValueKind {
    TR104_MAP_VALUE_NONE = 0, /* no handler serves the parameter */
    TR104_MAP_VALUE_INT, /* a 32-bit integer */
    TR104_MAP_VALUE_FLOAT, /* a single-precision float */
    TR104_MAP_VALUE_BYTE, /* one unsigned byte */
    TR104_MAP_VALUE_ADDR, /* a 32-bit IPv4 address word */
    TR104_MAP_VALUE_TEXT /* a character buffer of valueSize bytes */
} Tr104MapValueKind;

typedef struct Tr104MapEntry {
    const char *path; /* the pattern */
    const char *handler; /* exported handler, NULL when no handler serves the parameter */
    Tr104MapFunction fn; /* its address: int (*)(int, void *) or int (*)(int, void *, int *) */
    int arity; /* 2 (nFlag, pValue) or 3 (nFlag, pValue, nLocate); 0 when not served */
    signed char locate[4]; /* nLocate index of the path's first, second ... instance number; -1 none */
    int instances; /* how many {i} the path has */
    const char *type; /* TR-069 type: string, int, unsignedInt, boolean, dateTime, base64, float */
    const char *access; /* "R", "W" or "RW" */
    int valueKind; /* Tr104MapValueKind */
    unsigned int valueSize; /* bytes of the value pValue points to (a text: its buffer) */
    const char *convert; /* "-", "bool01", "dotted" or "enum:TEXT=N,..." */
    const char *arg; /* "-", or "nLocate[K]=N": a fixed instance number (applied by the lookup) */
    const char *note; /* the deferred group or protocol; why a parameter is not served */
    /* The deferred buffer's slot a set stages its value in; -1 when a set is sent at once. */
    int deferredSlot;
    /* 1: the standard hides the value (a password): a get by path reads it as "". */
    int hidden;
    /* 1: a get keeps the caller 30 s or more (the end of a line test). */
    int blocksCaller;
    /* The protocol type whose handlers alone answer it (2 H.248, 4 SIP); 0: either. */
    int protocol;
    /* A value the map serves itself (handler NULL, read only), else NULL: a reference such as
     * "Device.Services.VoiceService.{1}.SIP.Client.{2}" ({N}: the path's N-th instance number)
     * or an instance count "{#Line}" (tr104MapInstanceCount of the object). */
    const char *fixed;
} Tr104MapEntry;

TR104_MAP_API extern const Tr104MapEntry gTr104Map[];
TR104_MAP_API extern const unsigned int gTr104MapCount;

/* Results of tr104MapLookup. */
#define TR104_MAP_SERVED 0
#define TR104_MAP_NOT_SERVED 1 /* a standard parameter no handler serves: entry->note says why */
#define TR104_MAP_UNKNOWN (-1) /* neither in the standard nor in the map */
#define TR104_MAP_MALFORMED (-2) /* empty, an empty name, an instance that is not 1..N */

/* Resolves a concrete path.  On TR104_MAP_SERVED and TR104_MAP_NOT_SERVED *entry is set and
 * nLocate (4 ints, may be NULL) holds the path's instance numbers at their indexes (0 elsewhere;
 * for a value the map serves itself, the N-th instance number at index N-1).
 * On an error, error (if given, errorLen bytes) receives one line saying what is wrong.
 * Instance numbers outside gTr104MapRanges are malformed; an object not listed there takes
 * 1..65535. */
TR104_MAP_API int tr104MapLookup(const char *path, const Tr104MapEntry **entry, int *nLocate, char *error,
                                 unsigned int errorLen);

/* The instances a two-port device has of an object ("Line", "PhyInterface", ...): one voice
 * service and one profile, lines and physical interfaces 1..2, codecs and codec list entries
 * 1..5, sessions 1..2.  Tables the library does not serve are not listed. */
typedef struct Tr104MapRange {
    const char *object;
    int low, high;
} Tr104MapRange;
TR104_MAP_API extern const Tr104MapRange gTr104MapRanges[];
TR104_MAP_API extern const unsigned int gTr104MapRangeCount;

/* How many instances of an object a two-port device has: its range's high end, 1 for an object
 * the library does not serve (a path may still name any instance number of it). */
TR104_MAP_API int tr104MapInstanceCount(const char *object);

/* The name of a value kind: "int", "float", "byte", "addr", "text" ("-" for none). */
TR104_MAP_API const char *tr104MapValueKindName(int valueKind);

/* The entry of a pattern (exact text), or NULL. */
TR104_MAP_API const Tr104MapEntry *tr104MapFind(const char *pattern);

/* Calls by path.  Results besides the handler's own 0 (done), -1 (the exchange with the voice
 * module failed) and -2 (the handler refused the value or the instance): */
#define TR104_MAP_BAD_PATH (-10) /* unknown, malformed or not served */
#define TR104_MAP_NO_ACCESS (-11) /* a set of a read-only or a get of a write-only parameter */
#define TR104_MAP_BAD_VALUE (-12) /* the value does not fit the parameter's type */

/* A data-model value ("true", "Enabled", "10.0.0.1") as the handler's value text ("1", "2",
 * "10.0.0.1"): 0, or TR104_MAP_BAD_VALUE with one line in error. */
TR104_MAP_API int tr104MapToHandlerValue(const Tr104MapEntry *entry, const char *value, char *out, unsigned int outLen,
                                         char *error, unsigned int errorLen);

/* A handler's value text as the data model shows it (the reverse of tr104MapToHandlerValue). */
TR104_MAP_API void tr104MapToModelValue(const Tr104MapEntry *entry, const char *shown, char *out, unsigned int outLen);

/* Calls the handler of an entry with nLocate (4 ints; unused by two-argument handlers) and pValue
 * (an entry the map serves itself: its value, from the instance numbers nLocate holds)
 * of the entry's value kind: a set takes handlerValue (the handler's value text), a get renders
 * the value into shown ("%d", "%g", dotted address, the text).  Returns the handler's result,
 * or TR104_MAP_BAD_VALUE when handlerValue does not parse (nothing is called). */
TR104_MAP_API int tr104MapCall(const Tr104MapEntry *entry, const int *nLocate, int set, const char *handlerValue,
                               char *shown, unsigned int shownLen, char *error, unsigned int errorLen);

/* A concrete path that a get (set 0) or a set (set 1) may use: TR104_MAP_SERVED with *entry and
 * nLocate set, else TR104_MAP_BAD_PATH (unknown, malformed, not served) or TR104_MAP_NO_ACCESS,
 * and one line in error ("PATH: read only", "PATH: not served: WHY"). */
TR104_MAP_API int tr104MapResolve(const char *path, int set, const Tr104MapEntry **entry, int *nLocate, char *error,
                                  unsigned int errorLen);

/* Get and set by concrete path, with the data model's values: lookup, access, conversion and the
 * call.  On a failure error receives one line naming the path (and the handler and its result).
 * A get of a hidden parameter calls its handler as any get does (a failing exchange still
 * fails) and gives the empty text in place of its value. */
TR104_MAP_API int tr104MapGet(const char *path, char *value, unsigned int valueLen, char *error, unsigned int errorLen);
TR104_MAP_API int tr104MapSet(const char *path, const char *value, char *error, unsigned int errorLen);

/* Applies now the groups of the deferred buffer that sets of these concrete paths (count of them)
 * staged and that are still waiting, as one management message is applied when it ends: a group
 * the sets completed has already been sent by its last handler; a group still incomplete is
 * sent as its slot's timer would send it, completed from the voice module's current values.
 * Each group is sent on the timer's thread (the caller waits for it), so a slot timer firing at
 * the same moment does not send it a second time; the slot's timer is cancelled.  paths NULL:
 * every waiting group.  Unknown paths and paths of values sent at once are passed over.
 * Returns 0, or -1 when a group could not be sent (error: one line naming its slot); the other
 * groups are still applied. */
TR104_MAP_API int tr104MapApplyGroups(const char *const *paths, unsigned int count, char *error, unsigned int errorLen);

TR104_EXTERN_C_END

#endif
