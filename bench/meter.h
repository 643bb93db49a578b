// Counts the errors of the slots of one function against its reference.
#pragma once

#include <array>
#include <cstdint>

#include "bench/batch.h"
#include "tests/reference.h"

namespace kef {

// What errors are counted of: both results, or the components of a complex one and its norm.
inline constexpr std::size_t max_measures = 3;

// Errors of one kernel. Plain data: the exhaustive run saves it as it stands.
template <class T> struct Tally {
    static constexpr std::size_t max_failing = 512;
    using Point = reference::Point<T>;
    struct At {
        double error;
        Point at;
    };
    std::uint64_t count = 0, misrounded = 0;
    std::uint64_t mean_count = 0;
    double sum = 0;  // ulp, over mean_count elements
    At ulps = {-1, {}}, relative = {-1, {}};
    std::array<Point, max_failing> failing = {};  // the first misrounded arguments

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
    Meter(const reference::Reference& reference, const kef_test::Row& row,
          unsigned check_every = 512, bool rounding_only = false)
        : row_(reference),
          results_(result_components(row)),
          with_norm_(row.result_parts == 2),
          check_every_(check_every),
          rounding_only_(rounding_only),
          margin_(reference.screen_error * 0x1p-63 + (std::is_same_v<T, float> ? 0x1p-52 : 0)),
          margin_ulps_(std::ldexp(margin_, std::numeric_limits<T>::digits)) {}

    // Tallies by kernel and measure.
    using Tallies = std::vector<std::array<Tally<T>, max_measures>>;
    int measures() const { return results_ + with_norm_; }

    // Largest error of the 80-bit values seen, in units of 2^-63.
    double screen_error() const { return screen_error_; }

    // The largest errors of each kernel and measure in the last batch, as the screen sees them:
    // by ulp and relative.
    struct Worst {
        typename Tally<T>::At ulps = {-1, {}}, relative = {-1, {}};
    };
    const std::array<Worst, max_measures>& worst(std::size_t kernel) const {
        return worst_[kernel];
    }

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
        // Pairs stand in the first array.
        const std::size_t step = x.result_parts;
        for (int i = 0; i < x.size(); ++i) {
            Element value(row_, results_, x.point(i), scalars);
            if (!value.within_reach()) continue;
            if (++elements_ % check_every_ == 0)
                for (int j = 0; j < results_; ++j) check_screen(value, j);
            for (std::size_t k = 0; k < kernels.size(); ++k) {
                const bool accurate = kernels[k].slot == 1;
                const T got[] = {got_[k][0][i * step],
                                 step == 2 ? got_[k][0][2 * i + 1] : got_[k][1][i]};
                for (int j = 0; j < results_; ++j)
                    judge(value, j, got[j], accurate, for_mean, tallies[k][j], worst_[k][j]);
                if (with_norm_)
                    judge_norm(value, got, for_mean, tallies[k][results_], worst_[k][results_]);
            }
        }
    }

private:
    // The reference values of one element: the 80-bit ones at once, the exact ones when they are
    // needed.
    struct Element {
        Element(const reference::Reference& row, int results, const reference::Point<T>& at,
                const reference::Scalars& scalars)
            : row(row), at(at), scalars(scalars) {
            screened = row.screen_error < INFINITY;
            if (screened) about = row.value<wide>(at, scalars);
            else
                for (int j = 0; j < 2; ++j) about[j] = static_cast<wide>(exact()[j]);
            if (row.complex()) prepare_complex();
            else if (at[0] < 0) least[0] = least[1] = row.least;
            for (int j = 0; j < results; ++j) {
                rounded[j] = static_cast<T>(screened ? about[j] : exact()[j]);
                // Far beyond T, or NaN.
                if (!screened || !(reference::fabs(about[j]) < wide(INFINITY))) continue;
                const wide margin =
                    screen_size(reference::fabs(about[j])) * wide(row.screen_error * 0x1p-63);
                const T low = static_cast<T>(about[j] - margin);
                rounded[j] = static_cast<T>(about[j] + margin);
                if (low != rounded[j]) rounded[j] = static_cast<T>(exact()[j]);
            }
        }
        void prepare_complex() {
            norm = reference::sqrt(about[0] * about[0] + about[1] * about[1]);
            double x[4];
            std::copy(at.begin(), at.end(), x);
            if (row.condition) condition = row.condition(x);
            if (row.share)
                for (const bool accurate : {false, true})
                    least[accurate] = norm * wide(row.share(x, accurate));
        }
        const reference::Values<quad>& exact() {
            if (!known) value = row.value<quad>(at, scalars);
            known = true;
            return value;
        }
        // What the screen's error is relative to.
        template <class R> R screen_size(R component) const {
            if (row.condition) return R(norm) * R(condition);
            return row.complex() ? component : std::max(component, R(least[0]));
        }
        // The error of the screen beside that of a component alone.
        double spread(int j, wide floor) const {
            if (!row.condition) return 1;
            const wide size =
                std::max({reference::fabs(about[j]), floor, wide(std::numeric_limits<T>::min())});
            return static_cast<double>(norm / size) * condition;
        }
        // Whether the references hold: of powers up to there, and of those of 0.
        bool within_reach() const { return !(condition >= 0x1p40) || (at[0] == 0 && at[1] == 0); }
        // What the error of the norm is divided by.
        double scale() const { return std::max(1.0, condition * 0x1p-10); }

        const reference::Reference& row;
        const reference::Point<T> at;
        const reference::Scalars& scalars;
        wide least[2] = {0, 0};  // of the slots below HA, and of HA
        bool screened, known = false;
        reference::Values<wide> about = {};
        reference::Values<quad> value = {};
        T rounded[2] = {0, 0};
        wide norm = 0;  // complex
        double condition = 1;
    };

    // Errors of floats are screened in double arithmetic, which is faster.
    using Screen = std::conditional_t<std::is_same_v<T, float>, double, wide>;

    void judge(Element& value, int j, T got, bool accurate, bool for_mean, Tally<T>& tally,
               Worst& worst) const {
        using reference::error;
        const T rounded = value.rounded[j];
        const bool same = got == rounded || (got != got && rounded != rounded);
        if (!same) {
            if (tally.misrounded < tally.max_failing) tally.failing[tally.misrounded] = value.at;
            ++tally.misrounded;
        }
        ++tally.count;
        if (same && rounding_only_) return;
        const wide least = value.least[accurate];
        enter(value, value.spread(j, least), 0.25, for_mean, tally, worst, [&](bool exactly) {
            return exactly ? error(got, value.exact()[j], least)
                           : error(got, static_cast<Screen>(value.about[j]), least);
        });
    }

    void judge_norm(Element& value, const T* got, bool for_mean, Tally<T>& tally,
                    Worst& worst) const {
        using reference::norm_error;
        ++tally.count;
        const double scale = value.scale();
        const reference::Values<Screen> about = {static_cast<Screen>(value.about[0]),
                                                 static_cast<Screen>(value.about[1])};
        enter(value, value.condition / scale, 0.5, for_mean, tally, worst, [&](bool exactly) {
            return exactly ? norm_error(got[0], got[1], value.exact(), scale)
                           : norm_error(got[0], got[1], about, scale);
        });
    }

    // Enters an error: that of the screen where the screen's own, `spread` times the margin,
    // changes nothing. Errors below `small_ulps` are of no interest to more digits.
    template <class ErrorOf>
    void enter(Element& value, double spread, double small_ulps, bool for_mean, Tally<T>& tally,
               Worst& worst, ErrorOf error_of) const {
        auto e = error_of(!value.screened);
        if (e.ulps > worst.ulps.error) worst.ulps = {e.ulps, value.at};
        if (e.relative > worst.relative.error) worst.relative = {e.relative, value.at};
        constexpr double small = std::numeric_limits<T>::epsilon() / 8;
        if (value.screened &&
            (e.ulps + margin_ulps_ * spread > std::max(tally.ulps.error, small_ulps) ||
             e.relative + margin_ * spread > std::max(tally.relative.error, small)))
            e = error_of(true);
        if (e.ulps > tally.ulps.error) tally.ulps = {e.ulps, value.at};
        if (e.relative > tally.relative.error) tally.relative = {e.relative, value.at};
        if (for_mean && e.ulps < INFINITY) {
            ++tally.mean_count;
            tally.sum += e.ulps;
        }
    }

    void check_screen(Element& value, int j) {
        if (!value.screened) return;
        const quad exact = value.exact()[j], about = value.about[j];
        const quad size = value.screen_size(fabsq(exact));
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
    const int results_;
    const bool with_norm_;
    const unsigned check_every_;
    const bool rounding_only_;
    const double margin_, margin_ulps_;  // of the screened error of a result
    unsigned elements_ = 0;
    std::vector<std::array<std::vector<T>, 2>> got_;
    std::vector<std::array<Worst, max_measures>> worst_;
    double screen_error_ = 0;
};

}  // namespace kef
