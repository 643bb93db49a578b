#include "vm/core/exp_core.h"

namespace kef::vm {

alignas(16) constinit const ExpHighLow exp64_table[64] = {
#define KEF_EXP64(high, low) {from_bits(UINT64_C(high)), from_bits(UINT64_C(low))},
#include "vm/tables/exp64.inc"
};

constinit const Exp128 exp128_table[128] = {
#include "vm/tables/exp128.inc"
};

constinit const Exp16 exp16_table = by_fields<Exp16>({
#define KEF_EXP16(fraction, low) {from_bits(UINT64_C(fraction)), from_bits(UINT64_C(low))},
#include "vm/tables/exp16.inc"
});

}  // namespace kef::vm
