// Complex numbers in memory, their real and imaginary parts side by side, as a vector of each.
#pragma once

#include "vm/simd/simd.h"

namespace KEF_VM {

// The even and the odd lanes of two vectors, and back.
template <class V> inline Two<V> unzip(V x, V y) {
    constexpr int count = sizeof(V) / sizeof(x[0]);
    return [&]<int... i>(std::integer_sequence<int, i...>) {
        return Two<V>{__builtin_shufflevector(x, y, 2 * i...),
                      __builtin_shufflevector(x, y, 2 * i + 1 ...)};
    }
    (std::make_integer_sequence<int, count>());
}
template <class V> inline Two<V> zip(V x, V y) {
    constexpr int count = sizeof(V) / sizeof(x[0]);
    return [&]<int... i>(std::integer_sequence<int, i...>) {
        return Two<V>{__builtin_shufflevector(x, y, i / 2 + i % 2 * count...),
                      __builtin_shufflevector(x, y, (count + i) / 2 + i % 2 * count...)};
    }
    (std::make_integer_sequence<int, count>());
}

// As many numbers as a vector has lanes.
template <class T> inline Two<Vector<T>> load_pairs(const T* p) {
    return unzip(load(p), load(p + lanes<T>));
}
template <class T> inline void store_pairs(T* p, Vector<T> re, Vector<T> im) {
    const auto [x, y] = zip(re, im);
    store(p, x), store(p + lanes<T>, y);
}

// Those from number `first` on of `count`, the last one in place of those behind it.
template <class T> inline Two<Vector<T>> load_some_pairs(const T* p, int first, int count) {
    const auto number = [&](int i) { return p + 2 * (i < count ? i : count - 1); };
    const auto vector = [&](int from) {
        if constexpr (sizeof(T) == 8)
            return of_blocks([&](int block) { return _mm_loadu_pd(number(from + block)); });
        else
            return (floats)of_blocks([&](int block) {
                const auto pair = [&](int i) {
                    return reinterpret_cast<const __m64*>(number(from + 2 * block + i));
                };
                return (__m128d)_mm_loadh_pi(_mm_loadl_pi(__m128{}, pair(0)), pair(1));
            });
    };
    return unzip(vector(first), vector(first + lanes<T> / 2));
}

}  // namespace KEF_VM
