/* Calling convention and linkage of everything that crosses a module boundary. */
#ifndef ORBNTF_PLATFORM_H
#define ORBNTF_PLATFORM_H

#include <stdint.h>
#ifdef __cplusplus
#define ORB_EXTERN_C extern "C"
#else
#include <uchar.h>
#define ORB_EXTERN_C extern
#endif

#if defined(_WIN32)
#define ORB_CALL __stdcall
#define ORB_EXPORT __declspec(dllexport)
#define ORB_IMPORT __declspec(dllimport)
#else
#define ORB_CALL
#define ORB_EXPORT __attribute__((visibility("default")))
#define ORB_IMPORT __attribute__((visibility("default")))
#endif

/* ORB_API marks an export of this module, ORB_HOST_API an operation of the host toolkit. */
#if defined(ORBNTF_BUILD)
#define ORB_API ORB_EXTERN_C ORB_EXPORT
#elif defined(ORBNTF_STATIC)
#define ORB_API ORB_EXTERN_C
#else
#define ORB_API ORB_EXTERN_C ORB_IMPORT
#endif
#if defined(HOSTKIT_BUILD)
#define ORB_HOST_API ORB_EXTERN_C ORB_EXPORT
#else
#define ORB_HOST_API ORB_EXTERN_C ORB_IMPORT
#endif

#endif
