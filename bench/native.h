// Vectors as wide as this build's, for libraries whose functions are called by a vector's name.
#pragma once

#include <cstring>

#include <immintrin.h>

#include "bench/peers.h"

namespace kef {

#if defined(__AVX512F__)
using NativeDoubles = __m512d;
using NativeFloats = __m512;
#define KEF_BY_WIDTH(sse2, avx2, avx512) avx512
#elif defined(__AVX2__)
using NativeDoubles = __m256d;
using NativeFloats = __m256;
#define KEF_BY_WIDTH(sse2, avx2, avx512) avx2
#else
using NativeDoubles = __m128d;
using NativeFloats = __m128;
#define KEF_BY_WIDTH(sse2, avx2, avx512) sse2
#endif

template <class V, class T> struct NativeLanes {
    using Element = T;
    static constexpr int count = sizeof(V) / sizeof(T);
    static V load(const T* p) {
        V x;
        std::memcpy(&x, p, sizeof x);
        return x;
    }
    static void store(T* p, V x) { std::memcpy(p, &x, sizeof x); }
};
template <> struct Lanes<NativeDoubles> : NativeLanes<NativeDoubles, double> {};
template <> struct Lanes<NativeFloats> : NativeLanes<NativeFloats, float> {};

}  // namespace kef
