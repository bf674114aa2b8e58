/*
 * The TR-104 data model as libtr104 serves it (libtr104map.so, a small library beside
 * libtr104.so that a device image may leave out).  The table is generated from the map shipped
 * with it (voice-map.tsv): one entry per parameter path, served or not.
 *
 * A path pattern names instances with {i}: "InternetGatewayDevice.Services.VoiceService.{i}.
 * VoiceProfile.{i}.Line.{i}.Enable".  tr104MapLookup resolves a concrete path ("...Line.2.
 * Enable") to its entry and the nLocate array its handler takes.
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

typedef struct Tr104MapEntry {
    const char *path;     /* the pattern */
    const char *handler;  /* exported handler, NULL when no handler serves the parameter */
    Tr104MapFunction fn;  /* its address: int (*)(int, void *) or int (*)(int, void *, int *) */
    int arity;            /* 2 (nFlag, pValue) or 3 (nFlag, pValue, nLocate); 0 when not served */
    signed char locate[4];/* nLocate index of the path's first, second ... instance number; -1 none */
    int instances;        /* how many {i} the path has */
    const char *type;     /* TR-069 type: string, int, unsignedInt, boolean, dateTime, base64, float */
    const char *access;   /* "R", "W" or "RW" */
    const char *value;    /* the handler's value: "int", "float", "byte", "addr", "text:N" */
    const char *convert;  /* "-", "bool01", "dotted" or "enum:TEXT=N,..." */
    const char *arg;      /* "-", or "nLocate[K]=N": a fixed instance number (applied by the lookup) */
    const char *note;     /* the deferred group or protocol; why a parameter is not served */
} Tr104MapEntry;

TR104_MAP_API extern const Tr104MapEntry gTr104Map[];
TR104_MAP_API extern const unsigned int gTr104MapCount;

/* Results of tr104MapLookup. */
#define TR104_MAP_SERVED 0
#define TR104_MAP_NOT_SERVED 1  /* a standard parameter no handler serves: entry->note says why */
#define TR104_MAP_UNKNOWN (-1)  /* neither in the standard nor in the map */
#define TR104_MAP_MALFORMED (-2) /* empty, an empty name, an instance that is not 1..N */

/* Resolves a concrete path.  On TR104_MAP_SERVED and TR104_MAP_NOT_SERVED *entry is set and
 * nLocate (4 ints, may be NULL) holds the path's instance numbers at their indexes (0 elsewhere).
 * On an error, error (if given, errorLen bytes) receives one line saying what is wrong.
 * Instance ranges: one voice service and one profile, lines and physical interfaces 1..2, codec
 * and codec list entries 1..5, sessions 1..2. */
TR104_MAP_API int tr104MapLookup(const char *path, const Tr104MapEntry **entry, int *nLocate, char *error,
                             unsigned int errorLen);

/* The entry of a pattern (exact text), or NULL. */
TR104_MAP_API const Tr104MapEntry *tr104MapFind(const char *pattern);

TR104_EXTERN_C_END

#endif
