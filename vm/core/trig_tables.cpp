#include "vm/core/trig_core.h"

namespace kef::vm {

alignas(32) constinit const SineEntry sine256_table[256] = {
#define KEF_SINE(sine, cosine, sine_low, cosine_less)                                       \
    {from_bits(UINT64_C(sine)), from_bits(UINT64_C(cosine)), from_bits(UINT64_C(sine_low)), \
     from_bits(UINT64_C(cosine_less))},
#include "vm/tables/sine256.inc"
#undef KEF_SINE
};

constinit const Sine16 sine16_table = by_fields<Sine16>({
#define KEF_SINE(sine, cosine, sine_low, cosine_low)                                        \
    {from_bits(UINT64_C(sine)), from_bits(UINT64_C(cosine)), from_bits(UINT64_C(sine_low)), \
     from_bits(UINT64_C(cosine_low))},
#include "vm/tables/sine16.inc"
});

}  // namespace kef::vm
