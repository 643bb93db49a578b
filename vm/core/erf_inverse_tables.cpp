#include "vm/core/erf_inverse_core.h"

namespace kef::vm {

#define KEF_ERF_INVERSE(high, low, high2, low2, c1, c2, c3, c4, c5, c6, c7, c8)  \
    {{{from_bits(UINT64_C(high)), from_bits(UINT64_C(low))},                     \
      {from_bits(UINT64_C(high2)), from_bits(UINT64_C(low2))}},                  \
     {from_bits(UINT64_C(c1)), from_bits(UINT64_C(c2)), from_bits(UINT64_C(c3)), \
      from_bits(UINT64_C(c4)), from_bits(UINT64_C(c5)), from_bits(UINT64_C(c6)), \
      from_bits(UINT64_C(c7)), from_bits(UINT64_C(c8))}},
constinit const ErfInverseEntry erf_inverse_near_table[erf_inverse_near_entries] = {
#include "vm/tables/erf_inverse_near.inc"
};
constinit const ErfInverseEntry erf_inverse_tail_table[erf_inverse_tail_entries] = {
#include "vm/tables/erf_inverse_tail.inc"
};
#undef KEF_ERF_INVERSE

constinit const ErfInverseCubic erf_inverse_single_table[erf_inverse_single_entries] = {
#define KEF_ERF_INVERSE(c0, c1, c2, c3, start, slope) \
    {{from_bits(c0##u), from_bits(c1##u), from_bits(c2##u), from_bits(c3##u)}},
#include "vm/tables/erf_inverse_single.inc"
#undef KEF_ERF_INVERSE
};
constinit const ErfInverseLine erf_inverse_line_table[erf_inverse_single_entries] = {
#define KEF_ERF_INVERSE(c0, c1, c2, c3, start, slope) \
    {from_bits(UINT64_C(slope) << 32 | UINT64_C(start))},
#include "vm/tables/erf_inverse_single.inc"
};

}  // namespace kef::vm
