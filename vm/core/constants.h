// Constants that several formulas need: the nearest double and what it leaves, and parts whose
// products with short numbers are exact. A formula that wants pi/256 or 64/ln2 scales them itself,
// which is exact. tools/trig_tables.py --constants, tools/log_tables.py
#pragma once

#include "vm/simd/products.h"

namespace KEF_VM {

// pi = pi + pi_low to 2^-107.
inline constexpr double pi = from_bits(UINT64_C(0x400921FB54442D18));
inline constexpr double pi_low = from_bits(UINT64_C(0x3CA1A62633145C07));
inline constexpr double inverse_pi = from_bits(UINT64_C(0x3FD45F306DC9C883));

// 1/ln2 and ln2; for exponents of up to 11 bits ln2_high, a multiple of 2^-43, and the rest.
inline constexpr double inverse_ln2 = from_bits(UINT64_C(0x3FF71547652B82FE));
inline constexpr double ln2 = from_bits(UINT64_C(0x3FE62E42FEFA39EF));
inline constexpr double ln2_high = from_bits(UINT64_C(0x3FE62E42FEFA3800));
inline constexpr double ln2_low = from_bits(UINT64_C(0x3D2EF35793C76730));

inline constexpr double root2 = from_bits(UINT64_C(0x3FF6A09E667F3BCD));
inline constexpr double root_half = root2 / 2;

// pi in parts for numbers of up to 18 bits: of 35 bits each, the last one rounded.
inline constexpr auto pi_parts =
    coefficients(0x400921FB54440000, 0x3D968C234C4C0000, 0x3B398A2E03707345);

// Single precision, for numbers of up to 8 bits: pi in parts of 16 bits, ln2 in one of 15 bits
// and the rest.
inline constexpr std::array pi_parts_single = {0x1.921ep+1f, 0x1.b544p-15f, 0x1.0b4612p-33f};
inline constexpr std::array ln2_parts_single = {0x1.62e4p-1f, 0x1.7f7d1cp-20f};

}  // namespace KEF_VM
