#include "vm/core/atan_core.h"

namespace kef::vm {

constinit const AtanEntry atan_table[atan_entries] = {
#define KEF_ATAN(centre, high, low) \
    {from_bits(UINT64_C(centre)), from_bits(UINT64_C(high)), from_bits(UINT64_C(low))},
#include "vm/tables/atan386.inc"
};

constinit const Atan16 atan16_table = by_fields<Atan16>({
#define KEF_ATAN16(centre, high) {from_bits(UINT64_C(centre)), from_bits(UINT64_C(high))},
#include "vm/tables/atan16.inc"
});

}  // namespace kef::vm
