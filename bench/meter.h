// Counts the errors of the slots of one function against its reference.
#pragma once

#include <array>
#include <cstdint>

#include "bench/batch.h"
#include "tests/reference.h"

namespace kef {

// Errors of one kernel. Plain data: the exhaustive run saves it as it stands.
template <class T> struct Tally {
    static constexpr std::size_t max_failing = 512;
    struct At {
        double error;
        T a, b, got;
    };
    std::uint64_t count = 0, misrounded = 0;
    std::uint64_t mean_count = 0;
    double sum = 0;  // ulp, over mean_count elements
    At ulps = {-1, 0, 0, 0}, relative = {-1, 0, 0, 0};
    std::array<T, max_failing> failing = {};  // the first misrounded arguments

    double mean() const { return sum / static_cast<double>(mean_count); }

    void merge(const Tally& other, bool with_mean = true) {
        for (std::size_t i = 0; i < std::min<std::uint64_t>(other.misrounded, max_failing); ++i)
            if (misrounded + i < max_failing) failing[misrounded + i] = other.failing[i];
        count += other.count;
        misrounded += other.misrounded;
        if (with_mean) {
            mean_count += other.mean_count;
            sum += other.sum;
        }
        if (other.ulps.error > ulps.error) ulps = other.ulps;
        if (other.relative.error > relative.error) relative = other.relative;
    }
};

// Runs the kernels of one function on batches of arguments. The 80-bit value
// of the reference decides on every element that its error cannot change; the
// others, and every candidate for the worst error, are computed in __float128. Its
// error bound is itself checked, on every `check_every`-th element.
template <class T> class Meter {
public:
    using quad = reference::quad;
    using wide = reference::wide;

    // `rounding_only`: errors of elements that are correctly rounded are not counted.
    explicit Meter(const reference::Reference& row, unsigned check_every = 512,
                   bool rounding_only = false)
        : row_(row),
          check_every_(check_every),
          rounding_only_(rounding_only),
          margin_(row.screen_error * 0x1p-63 + (std::is_same_v<T, float> ? 0x1p-52 : 0)),
          margin_ulps_(std::ldexp(margin_, std::numeric_limits<T>::digits)) {}

    // Tallies by kernel and number of the result.
    using Tallies = std::vector<std::array<Tally<T>, 2>>;
    int results() const { return row_.exact2 ? 2 : 1; }

    // Largest error of the 80-bit values seen, in units of 2^-63.
    double screen_error() const { return screen_error_; }

    // The largest errors of each kernel and result in the last batch, as the screen sees them:
    // by ulp and relative.
    struct Worst {
        typename Tally<T>::At ulps = {-1, 0, 0, 0}, relative = {-1, 0, 0, 0};
    };
    const std::array<Worst, 2>& worst(std::size_t kernel) const { return worst_[kernel]; }

    // Runs and judges every kernel on one batch of arguments.
    void take(const std::vector<Kernel<T>>& kernels, Batch<T>& x, bool for_mean, Tallies& tallies) {
        reference::Scalars scalars;
        for (std::size_t i = 0; i < scalars.size(); ++i) scalars[i] = x.scalars[i];
        got_.resize(kernels.size());
        worst_.assign(kernels.size(), {});
        for (std::size_t k = 0; k < kernels.size(); ++k) {
            kernels[k].run(x);
            got_[k] = x.result;
        }
        for (int i = 0; i < x.size(); ++i)
            for (int j = 0; j < results(); ++j) {
                Element value(row_, j, x.a[i], x.b[i], scalars);
                if (++elements_ % check_every_ == 0) check_screen(value);
                for (std::size_t k = 0; k < kernels.size(); ++k)
                    judge(value, got_[k][j][i], for_mean, tallies[k][j], worst_[k][j]);
            }
    }

private:
    // One reference value: the 80-bit one at once, the exact one when it is needed.
    struct Element {
        Element(const reference::Reference& row, int j, T a, T b, const reference::Scalars& scalars)
            : row(row), j(j), a(a), b(b), scalars(scalars), least(a < 0 ? row.least : 0) {
            screened = row.screen_error < INFINITY;
            if (!screened) {
                rounded = static_cast<T>(exact());
                return;
            }
            about = (j ? row.screen2 : row.screen)(a, b, scalars);
            rounded = static_cast<T>(about);
            if (!(reference::fabs(about) < wide(INFINITY))) return;  // far beyond T, or NaN
            const wide size = std::max(reference::fabs(about), wide(least));
            const wide margin = size * wide(row.screen_error * 0x1p-63);
            const T low = static_cast<T>(about - margin);
            rounded = static_cast<T>(about + margin);
            if (low != rounded) rounded = static_cast<T>(exact());
        }
        quad exact() {
            if (!known) value = (j ? row.exact2 : row.exact)(a, b, scalars);
            known = true;
            return value;
        }

        const reference::Reference& row;
        int j;
        T a, b;
        const reference::Scalars& scalars;
        double least;
        bool screened, known = false;
        wide about = 0;
        quad value = 0;
        T rounded = 0;
    };

    // Errors of floats are screened in double arithmetic, which is faster.
    using Screen = std::conditional_t<std::is_same_v<T, float>, double, wide>;

    void judge(Element& value, T got, bool for_mean, Tally<T>& tally, Worst& worst) const {
        using reference::error;
        const bool same = got == value.rounded || (got != got && value.rounded != value.rounded);
        if (!same) {
            if (tally.misrounded < tally.max_failing) tally.failing[tally.misrounded] = value.a;
            ++tally.misrounded;
        }
        ++tally.count;
        if (same && rounding_only_) return;
        auto e = value.screened ? error(got, static_cast<Screen>(value.about), value.least)
                                : error(got, value.exact(), value.least);
        if (e.ulps > worst.ulps.error) worst.ulps = {e.ulps, value.a, value.b, got};
        if (e.relative > worst.relative.error) worst.relative = {e.relative, value.a, value.b, got};
        // Errors below a quarter of an ulp are of no interest to more digits.
        constexpr double small = std::numeric_limits<T>::epsilon() / 8;
        if (value.screened && (e.ulps + margin_ulps_ > std::max(tally.ulps.error, 0.25) ||
                               e.relative + margin_ > std::max(tally.relative.error, small)))
            e = error(got, value.exact(), value.least);
        if (e.ulps > tally.ulps.error) tally.ulps = {e.ulps, value.a, value.b, got};
        if (e.relative > tally.relative.error) tally.relative = {e.relative, value.a, value.b, got};
        if (for_mean && e.ulps < INFINITY) {
            ++tally.mean_count;
            tally.sum += e.ulps;
        }
    }

    void check_screen(Element& value) {
        if (!value.screened) return;
        const quad exact = value.exact(), about = value.about;
        const quad size = std::max(fabsq(exact), quad(value.least));
        double deviation = 0;
        if (exact != exact || isinfq(exact))
            deviation = exact == about || (exact != exact && about != about) ? 0 : INFINITY;
        else if (exact != about)
            deviation = static_cast<double>(fabsq(about - exact) / size * 0x1p63Q);
        // What overflows or vanishes in both types is no fault of the screen.
        if (std::isinf(static_cast<T>(exact)) && static_cast<T>(exact) == static_cast<T>(about))
            return;
        if (static_cast<T>(2 * exact) == 0 && static_cast<T>(2 * about) == 0) return;
        if (deviation > screen_error_) screen_error_ = deviation;
    }

    const reference::Reference& row_;
    const unsigned check_every_;
    const bool rounding_only_;
    const double margin_, margin_ulps_;  // of the screened error of a result
    unsigned elements_ = 0;
    std::vector<std::array<std::vector<T>, 2>> got_;
    std::vector<std::array<Worst, 2>> worst_;
    double screen_error_ = 0;
};

}  // namespace kef
