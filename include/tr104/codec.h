/*
 * Codec tables: the data model's codec names ("G.711MuLaw" ...), the voice module's inner
 * names ("pcmu" ...) and the RTP payload-type numbers used as integer codes, plus the per-line
 * codec list of the SIP profile kept in the library.
 *
 *   data-model name   code  inner name  bit rate
 *   "G.711MuLaw"         0  "pcmu"       64000
 *   "G.723.1"            4  "g7231"       5300
 *   "G.711ALaw"          8  "pcma"       64000
 *   "G.722"              9  "g722"       64000
 *   "G.729"             18  "g729"        8000
 *   "" (no codec)       -1
 */
#ifndef TR104_CODEC_H
#define TR104_CODEC_H

#include <stdint.h>

#include "tr104/export.h"

TR104_EXTERN_C_BEGIN

#define TR104_CODEC_NONE (-1)
#define TR104_CODEC_UNKNOWN (-2)

/* Code of a data-model codec name, compared without regard to case; "" gives -1.  An unknown
 * or null name gives -2 and prints "param error, *pCodecType=%s.\n". */
TR104_API int ConvertCodecTypeStr2Int(const char *pCodecType);

/* Data-model name of a code (a static text); -1 gives "", an unknown code gives "" and prints
 * "param error, nCodecType=%d.\n". */
TR104_API const char *ConvertCodecTypeInt2Str(int nCodecType);

/* Data-model name of an inner name ("pcmu", "pcma", "g7231", "g729", "g722"), compared exactly
 * (case-sensitive).  Null or unknown give "" with a message. */
TR104_API const char *ConvertCodecTypeInnerStr2Tr069Str(const char *InnerCodecStr);

/* Bit rate in bit/s of a code: codes 4..18 from a 15-entry table (5300 for 4, 8000 for 18,
 * 64000 between), every other code 64000. */
TR104_API unsigned int tr104GetBitRateByCodecEnum(int nCodecType);

/* Change-mask bits of a codec list entry. */
#define TR104_CODEC_CHANGE_PRIORITY 0x2u
#define TR104_CODEC_CHANGE_ENABLE 0x8u

/* One entry of the per-line codec list (20 bytes). */
typedef struct CodecListUnit {
    uint32_t unLineNo; /* line number, 1 or 2 */
    uint32_t unChangeMask; /* fields set: 0x2 priority, 0x8 enable; other bits codec
                                       type and packetization */
    int32_t nCodecType; /* code from the codec table, -1 none */
    uint32_t unPriority; /* codec priority */
    uint8_t ucPacketizationPeriod; /* milliseconds */
    uint8_t ucSilenceSuppression; /* flag */
    uint8_t ucEnable; /* entry enabled */
    uint8_t ucReserved;
} CodecListUnit;

#define TR104_CODEC_LIST_LINES 2
#define TR104_CODEC_LIST_ENTRIES 5
/* Entry k (1..5) of line l (1..2). */
#define TR104_CODEC_LIST_INDEX(l, k) (((l)-1) * TR104_CODEC_LIST_ENTRIES + ((k)-1))

TR104_API extern CodecListUnit gCodecListUnit[TR104_CODEC_LIST_LINES * TR104_CODEC_LIST_ENTRIES];

/* Every entry to its initial value: zero, then its line number, codec type -1 and enable 1. */
TR104_API void CodecListUnitConfigInit(void);

TR104_EXTERN_C_END

#endif
