// The uniform numbers of the discrete laws: single-precision draws, read as cells of width 2^-24,
// that a further draw divides by 2^24 once more. The status of the last draw.
#pragma once

#include <cstring>

#include "distributions/frame.h"

namespace kef::dist {

class Uniforms {
public:
    static constexpr std::int32_t cells = 1 << 24;

    explicit Uniforms(kef_stream* stream, std::int32_t status = VTS_STATUS_OK)
        : stream_(stream), status_(status) {}

    // n numbers on [0, 1) as the generator makes them; false when it fails or has failed.
    bool fill(std::int32_t n, float* r) {
        if (status_ >= 0) status_ = draw(stream_, n, r, 0, 1);
        return status_ >= 0;
    }
    // The cells of n numbers, which are made in their place.
    bool fill_cells(std::int32_t n, std::int32_t* r) {
        auto* const u = reinterpret_cast<float*>(r);
        if (!fill(n, u)) return false;
        std::int32_t i = 0;
        constexpr std::int32_t lanes = vm::lanes<float>;
        for (; i < (n & -lanes); i += lanes)
            vm::store(u + i, (vm::floats)vm::truncated_to_ints(in_cells(vm::load(u + i))));
        for (; i < n; ++i) {
            float last;
            std::memcpy(&last, r + i, sizeof last);
            r[i] = cell(last);
        }
        return true;
    }

    static std::int32_t cell(float u) { return static_cast<std::int32_t>(in_cells(u)); }
    // A place of 48 bits in units of cells, from a cell and another that divides it.
    template <class V> static V joined(V cell, V divider) { return cell + divider * 0x1p-24; }

    // Single numbers from a small store. After a failure they are 1/2: a loop that ends for a
    // right generator ends then, too.
    double next_cell() {
        if (used_ == store_size) {
            if (!fill_cells(store_size, store_)) return cells / 2;
            used_ = 0;
        }
        return store_[used_++];
    }
    double fraction() { return next_cell() * 0x1p-24; }
    double next48() {
        const double cell = next_cell();
        return joined(cell, next_cell()) * 0x1p-24;
    }

    // Another draw of the stream ended so.
    void note(std::int32_t status) { status_ = status; }
    std::int32_t status() const { return status_; }
    bool failed() const { return status_ < 0; }

private:
    // A number outside [0, 1), as one that a generator rounds up to 1, means the cell next to it;
    // NaN the first.
    template <class V> static V in_cells(V u) {
        return at_most(0x1p24f - 1, at_least(0.0f, u * 0x1p24f));
    }

    static constexpr std::int32_t store_size = 16;

    kef_stream* stream_;
    std::int32_t status_, used_ = store_size;
    std::int32_t store_[store_size];
};

// The largest whole number up to x >= 0.
inline double whole(double x) {
    const double near = (x + 0x1p52) - 0x1p52;
    return near - (near > x);
}
inline vm::d2 whole(vm::d2 x) {
    const vm::d2 near = (x + 0x1p52) - 0x1p52;
    return near - (vm::d2)((vm::l2)(near > x) & (vm::l2)vm::both(1.0));
}

// A count as it is stored: not above what 32 bits hold.
inline std::int32_t as_count(double k) {
    return k < 0x1p31 ? static_cast<std::int32_t>(k) : INT32_MAX;
}
inline void store_counts(std::int32_t* r, vm::d2 k) {
    const __m128i counts = _mm_cvttpd_epi32(_mm_min_pd((__m128d)k, _mm_set1_pd(2147483647.0)));
    _mm_storel_epi64(reinterpret_cast<__m128i*>(r), counts);
}

}  // namespace kef::dist
