// Symmetric matrices in the layouts that callers ask for.
#pragma once

#include <cstddef>
#include <cstdint>

#include "stats/task.h"

namespace kef::stats {

template <class T> struct SymmetricMatrix {
    T* data;
    std::ptrdiff_t p;
    std::int64_t layout;

    // The element of i >= j.
    T get(std::ptrdiff_t i, std::ptrdiff_t j) const { return data[index(i, j)]; }
    // The element of any i and j.
    T at(std::ptrdiff_t i, std::ptrdiff_t j) const { return i < j ? get(j, i) : get(i, j); }

    // Hands every place of the element of i >= j to f until it says no.
    template <class F> bool places(std::ptrdiff_t i, std::ptrdiff_t j, F f) const {
        return f(data[index(i, j)]) &&
               (layout != VTS_SS_LAYOUT_FULL || i == j || f(data[j * p + i]));
    }

    // Sets the element of i >= j, in every place.
    void put(std::ptrdiff_t i, std::ptrdiff_t j, double value) const {
        places(i, j, [=](T& place) {
            place = static_cast<T>(value);
            return true;
        });
    }
    // Sets all, to value(i, j), i >= j.
    template <class Value> void fill(Value value) const {
        for (std::ptrdiff_t i = 0; i < p; ++i)
            for (std::ptrdiff_t j = 0; j <= i; ++j) put(i, j, value(i, j));
    }

private:
    std::ptrdiff_t index(std::ptrdiff_t i, std::ptrdiff_t j) const {
        if (layout == VTS_SS_LAYOUT_FULL) return i * p + j;
        if (layout == VTS_SS_LAYOUT_LOWER) return i * (i + 1) / 2 + j;
        return j * p - j * (j - 1) / 2 + i - j;
    }
};

inline bool is_layout(const Task& task, const void* code) {
    if (code == nullptr) return false;
    const std::int64_t layout = integer_at(task, code);
    return layout >= VTS_SS_LAYOUT_FULL && layout <= VTS_SS_LAYOUT_UPPER;
}

// The matrix field whose layout has been checked.
template <class T>
SymmetricMatrix<T> matrix_at(const Task& task, std::ptrdiff_t p, void* data, const void* layout) {
    return {static_cast<T*>(data), p, integer_at(task, layout)};
}

}  // namespace kef::stats
