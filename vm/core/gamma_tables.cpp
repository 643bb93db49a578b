#include "vm/core/gamma_single.h"

namespace kef::vm {

#define KEF_GAMMA(j, a0, a1, a2, a3, a4, a5, a6, a7, a8, a9, a10, a11, a12, low0, low1) \
    {{from_bits(UINT64_C(a0)), from_bits(UINT64_C(a1)), from_bits(UINT64_C(a2)),        \
      from_bits(UINT64_C(a3)), from_bits(UINT64_C(a4)), from_bits(UINT64_C(a5)),        \
      from_bits(UINT64_C(a6)), from_bits(UINT64_C(a7)), from_bits(UINT64_C(a8)),        \
      from_bits(UINT64_C(a9)), from_bits(UINT64_C(a10)), from_bits(UINT64_C(a11)),      \
      from_bits(UINT64_C(a12))},                                                        \
     {from_bits(UINT64_C(low0)), from_bits(UINT64_C(low1))}},

constinit const GammaRow gamma_table[gamma_rows] = {
#include "vm/tables/gamma353.inc"
};
constinit const GammaRow lgamma_table[gamma_rows] = {
#include "vm/tables/lgamma353.inc"
};

namespace {

constexpr GammaRowSingle in_single(double scale, double a0, auto... a) {
    const auto high = static_cast<float>(scale * a0);
    return {{high, static_cast<float>(scale * a)...}, static_cast<float>(scale * a0 - high)};
}
constexpr double gamma_scale(int j) { return j < 8 * gamma_scaled_from ? 1 : 0x1p-96; }

}  // namespace

#undef KEF_GAMMA
#define KEF_GAMMA(j, a0, a1, a2, a3, a4, a5, a6, ...)                                    \
    in_single(KEF_SCALE(j), from_bits(UINT64_C(a0)), from_bits(UINT64_C(a1)),            \
              from_bits(UINT64_C(a2)), from_bits(UINT64_C(a3)), from_bits(UINT64_C(a4)), \
              from_bits(UINT64_C(a5)), from_bits(UINT64_C(a6))),

constinit const GammaRowSingle gamma_table_single[2 * gamma_rows] = {
#define KEF_SCALE(j) gamma_scale(j)
#include "vm/tables/gamma353.inc"
#undef KEF_SCALE
#define KEF_SCALE(j) 1
#include "vm/tables/lgamma353.inc"
};

}  // namespace kef::vm
