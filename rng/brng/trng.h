#pragma once

namespace kef::rng {

// Whether the processor has an RDRAND instruction that gives changing numbers.
bool rdrand_works();

}  // namespace kef::rng
