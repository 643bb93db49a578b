/* The version of these headers, and that of the library which a program runs with. Plain C. */
#ifndef KEF_VERSION_H
#define KEF_VERSION_H

#include <stdint.h>

#include "kef_export.h"

/* Libraries are compatible where major and minor number agree. The file that the loader looks for
 * (libkef.so.MAJOR.MINOR), the version of its symbols (KEF_MAJOR.MINOR) and the CMake package
 * follow that one rule. */
#define KEF_VERSION_MAJOR 0
#define KEF_VERSION_MINOR 1
#define KEF_VERSION_PATCH 0

/* One number, which grows with every release. */
#define KEF_VERSION (KEF_VERSION_MAJOR * 10000 + KEF_VERSION_MINOR * 100 + KEF_VERSION_PATCH)

KEF_BEGIN_DECLS

/* KEF_VERSION as the library was built with it; always the same, on any thread. */
KEF_API int32_t kef_version(void);

/* The member of the library that the loader has chosen: "generic", "x86-64-v3" (vectors of 32
 * bytes) or "x86-64-v4" (64 bytes). Members differ in speed, and in last bits as docs/members.md
 * tells. */
KEF_API const char *kef_member(void);

KEF_END_DECLS

#endif
