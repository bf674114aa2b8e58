/* Export marker of libtr104: only names declared with TR104_API leave the shared object. */
#ifndef TR104_EXPORT_H
#define TR104_EXPORT_H

#if defined(TR104_BUILDING_LIBRARY)
#define TR104_API __attribute__((visibility("default")))
#else
#define TR104_API
#endif

#ifdef __cplusplus
#define TR104_EXTERN_C_BEGIN extern "C" {
#define TR104_EXTERN_C_END }
#else
#define TR104_EXTERN_C_BEGIN
#define TR104_EXTERN_C_END
#endif

#endif
