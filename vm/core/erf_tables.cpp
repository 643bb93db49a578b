#include "vm/core/erf_core.h"

namespace kef::vm {

// clang-format off
constinit const ErfEntry erf_table[97] = {
#define KEF_ERF(a0, a1, a2, a3, a4, a5, a6, a7, a8, a9, a10, a11, low, slope, slope_low)           \
    {{from_bits(UINT64_C(a0)), from_bits(UINT64_C(a1)), from_bits(UINT64_C(a2)),                   \
      from_bits(UINT64_C(a3)), from_bits(UINT64_C(a4)), from_bits(UINT64_C(a5)),                   \
      from_bits(UINT64_C(a6)), from_bits(UINT64_C(a7)), from_bits(UINT64_C(a8)),                   \
      from_bits(UINT64_C(a9)), from_bits(UINT64_C(a10)), from_bits(UINT64_C(a11))},                \
     from_bits(UINT64_C(low)),                                                                     \
     from_bits(UINT64_C(slope)),                                                                   \
     from_bits(UINT64_C(slope_low))},
#include "vm/tables/erf97.inc"
};
// clang-format on

// clang-format off
constinit const ErfShortEntry erf_short_table[193] = {
#undef KEF_ERF
#define KEF_ERF(a0, a1, a2, a3, a4, a5)                                                             \
    {{from_bits(UINT64_C(a0)), from_bits(UINT64_C(a1)), from_bits(UINT64_C(a2)),                    \
      from_bits(UINT64_C(a3)), from_bits(UINT64_C(a4)), from_bits(UINT64_C(a5))}},
#include "vm/tables/erf193_short.inc"
};
// clang-format on

constinit const ErfSlopeEntry erf_slope_table[769] = {
#undef KEF_ERF
#define KEF_ERF(erf, erfc, slope) {from_bits(UINT64_C(erf)), from_bits(UINT64_C(slope))},
#include "vm/tables/erf769_slope.inc"
};
constinit const ErfSlopeEntry erfc_slope_table[769] = {
#undef KEF_ERF
#define KEF_ERF(erf, erfc, slope) {from_bits(UINT64_C(erfc)), -from_bits(UINT64_C(slope))},
#include "vm/tables/erf769_slope.inc"
};

}  // namespace kef::vm
