/* Linkage of every exported name. Plain C. KEF_API may be set from outside: to nothing for the
 * static library (pkg-config and the CMake package do it), or to what a tool that reads the headers
 * needs. */
#ifndef KEF_EXPORT_H
#define KEF_EXPORT_H

#if defined(KEF_API)
#elif defined(_WIN32)
#if defined(KEF_BUILDING)
#define KEF_API __declspec(dllexport)
#else
#define KEF_API __declspec(dllimport)
#endif
#else
#define KEF_API __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
#define KEF_BEGIN_DECLS extern "C" {
#define KEF_END_DECLS }
#else
#define KEF_BEGIN_DECLS
#define KEF_END_DECLS
#endif

#endif
