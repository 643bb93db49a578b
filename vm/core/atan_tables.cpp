#include "vm/core/atan_core.h"

namespace kef::vm {

constinit const AtanEntry atan_table[atan_entries] = {
#define KEF_ATAN(centre, high, low) \
    {from_bits(UINT64_C(centre)), from_bits(UINT64_C(high)), from_bits(UINT64_C(low))},
#include "vm/tables/atan386.inc"
};

}  // namespace kef::vm
