#include "kef_version.h"

int32_t kef_version(void) { return KEF_VERSION; }
