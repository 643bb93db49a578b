#include "vm/core/log_core.h"

namespace kef::vm {

constinit const LogEntry log128_table[128] = {
#define KEF_LOG128(inverse, high, low, rounded)                                             \
    {from_bits(UINT64_C(inverse)), from_bits(UINT64_C(rounded)), from_bits(UINT64_C(high)), \
     from_bits(UINT64_C(low))},
#include "vm/tables/log128.inc"
};

constinit const Log16 log16_table = by_fields<Log16>({
#define KEF_LOG16(inverse, high, low, rounded)                                              \
    {from_bits(UINT64_C(inverse)), from_bits(UINT64_C(rounded)), from_bits(UINT64_C(high)), \
     from_bits(UINT64_C(low))},
#include "vm/tables/log16.inc"
});

}  // namespace kef::vm
