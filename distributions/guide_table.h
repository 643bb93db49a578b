// Inversion of a discrete law by a table of its cumulative probabilities and a guide (H.-C. Chen,
// Y. Asau, On generating random variates from an empirical distribution, AIIE Trans. 6 (1974)
// 163-166): one single-precision uniform number a variate.
//
// The numbers are cells of width 2^-24. Where a step of the law lies inside the cell, a further
// uniform decides: the law is resolved to 2^-48, and its tails exist.
//
// A Law gives its mode, low and high, the ends of its support (high may be infinite), and for
// low <= k < high ratio(k) = P(k+1)/P(k) as {numerator, denominator}.
#pragma once

#include "distributions/uniforms.h"

namespace kef::dist {

struct Ratio {
    double numerator, denominator;
};

class GuideTable {
public:
    // Values on each side of the mode.
    static constexpr int reach = 1024;

    // False when the law reaches farther, before its weights fall below 2^-56 of the largest.
    template <class Law> bool build(const Law& law) {
        constexpr double negligible = 0x1p-56;
        const double mode = law.mode;
        double* const middle = cumulative_ + reach;
        *middle = 1;
        double total = 1, weight = 1;
        int up = 0, down = 0;
        for (double k = mode; k < law.high; ++k) {
            const Ratio r = law.ratio(k);
            weight *= r.numerator / r.denominator;
            if (!(weight > negligible)) break;
            if (up == reach) return false;
            middle[++up] = weight;
            total += weight;
        }
        weight = 1;
        for (double k = mode - 1; k >= law.low; --k) {
            const Ratio r = law.ratio(k);
            weight *= r.denominator / r.numerator;
            if (!(weight > negligible)) break;
            if (down == reach) return false;
            middle[-++down] = weight;
            total += weight;
        }
        first_ = mode - down;
        begin_ = middle - down;
        index(down + up + 1, Uniforms::cells / total);
        return true;
    }

    // False when the generator fails; what was made before is in r.
    bool fill(Uniforms& uniforms, std::int32_t n, std::int32_t* r) const {
        std::int32_t cells[block];
        const bool whole = first_ + reach * 2 < 2147483647.0;
        const auto first = whole ? static_cast<std::int32_t>(first_) : 0;
        for (std::int32_t m; n > 0; n -= m, r += m) {
            m = std::min(n, block);
            if (!uniforms.fill_cells(m, cells)) return false;
            for (std::int32_t i = 0; i < m; ++i) {
                const std::int32_t cell = cells[i];
                std::int32_t k = guide_[cell >> shift_];
                k += cell > step_[k];
                if (cell >= step_[k]) [[unlikely]]
                    k = search(uniforms, cell, k);
                r[i] = first + k;
            }
            if (!whole)
                for (std::int32_t i = 0; i < m; ++i) r[i] = as_count(first_ + r[i]);
            if (uniforms.failed()) return false;
        }
        return true;
    }

private:
    static constexpr int most_guides = 4096;

    // Weights become sums, in cells; the guide of a power of two of intervals is at least twice as
    // long as the table: guide_[g] is the first k whose step lies in interval g or behind.
    void index(int size, double scale) {
        int guides = 64;
        shift_ = 18;
        for (; guides < 2 * size && guides < most_guides; guides *= 2) --shift_;
        std::fill(guide_, guide_ + guides, std::int16_t{0});
        double sum = 0;
        for (int k = 0; k < size - 1; ++k) {
            begin_[k] = sum += begin_[k] * scale;
            const auto step = static_cast<std::int32_t>(sum);
            step_[k] = step;
            // The largest k of an interval is written last.
            guide_[std::min((step >> shift_) + 1, guides)] = static_cast<std::int16_t>(k + 1);
        }
        step_[size - 1] = INT32_MAX;  // searches end
        begin_[size - 1] = 0x1p31;
        std::int16_t least = 0;
        for (int g = 0; g < guides; ++g) guide_[g] = least = std::max(least, guide_[g]);
    }

    [[gnu::noinline]] std::int32_t search(Uniforms& uniforms, std::int32_t cell,
                                          std::int32_t k) const {
        while (cell > step_[k]) ++k;
        if (cell < step_[k]) return k;
        const double u = cell + uniforms.fraction();
        while (u >= begin_[k]) ++k;
        return k;
    }

    int shift_;
    double first_;
    double* begin_;                        // the first of
    double cumulative_[2 * reach + 1];     // P(X <= k), in cells
    std::int32_t step_[2 * reach + 1];     // the cell that it lies in
    std::int16_t guide_[most_guides + 1];  // one more is written, never read
};

}  // namespace kef::dist
