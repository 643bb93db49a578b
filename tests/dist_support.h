// Checks shared by the tests of the distributions: an exact law against drawn numbers, and what
// every distribution promises about the stream, the status and the vector-math state.
#pragma once

#include <algorithm>
#include <bit>
#include <cfenv>
#include <cmath>
#include <cstring>
#include <functional>
#include <limits>
#include <string>

#include "kef_vm.h"
#include "tests/rng_streams.h"

namespace dist_tests {

// One check of a right generator fails for this share of the seeds; seeds are fixed.
inline constexpr double failure = 1e-6;
inline constexpr double deviations = 4.8916;  // of a normal number, both sides, for that share

// A distribution function with its method and parameters bound.
template <class T> using Draw = std::function<std::int32_t(kef_stream*, std::int32_t, T*)>;

// --- special functions --------------------------------------------------------

struct TwoTails {
    double p, q;  // below, above; each accurate where it is small
};

// Regularised incomplete gamma functions P(a, x) and Q(a, x): power series for x < a + 1,
// continued fraction (Legendre; Lentz's evaluation) above.
inline TwoTails incomplete_gamma(double a, double x) {
    if (!(x > 0)) return {0, 1};
    const double front = std::exp(a * std::log(x) - x - std::lgamma(a));
    if (x < a + 1) {
        double term = 1 / a, sum = term;
        for (double k = 1; term > sum * 1e-17; ++k) sum += term *= x / (a + k);
        return {front * sum, 1 - front * sum};
    }
    double b = x + 1 - a, c = 1e300, d = 1 / b, fraction = d;
    for (double k = 1; k < 1e7; ++k) {
        const double numerator = k * (a - k);
        b += 2;
        d = 1 / (numerator * d + b);
        c = b + numerator / c;
        fraction *= c * d;
        if (std::fabs(c * d - 1) < 1e-15) break;
    }
    return {1 - front * fraction, front * fraction};
}

// P(K > d) of the Kolmogorov-Smirnov distance d of n numbers (Stephens, J. Roy. Statist. Soc. B 32
// (1970) 115-122).
inline double kolmogorov(double d, double n) {
    const double x = d * (std::sqrt(n) + 0.12 + 0.11 / std::sqrt(n));
    if (x < 0.3) return 1;
    double sum = 0;
    for (int k = 1; k < 20; ++k) sum += (k % 2 ? 2 : -2) * std::exp(-2 * (k * x) * (k * x));
    return sum;
}

// The smaller tail, twice, of a count that is Poisson of the given mean.
inline double poisson_tails(double count, double mean) {
    const double above = count > 0 ? incomplete_gamma(count, mean).p : 1;
    return 2 * std::min(above, incomplete_gamma(count + 1, mean).q);
}

// --- laws ---------------------------------------------------------------------

struct Law {
    std::function<double(double)> cdf, ccdf;  // P(X <= x), P(X > x), each accurate where small
    // Fourth central moment over squared variance. What is NaN is not checked.
    double mean = NAN, variance = NAN, kurtosis = NAN;
    bool discrete = false;

    // The least x with cdf(x) >= p; the least with ccdf(x) <= p.
    double quantile(double p) const {
        return least([&](double x) { return cdf(x) >= p; });
    }
    double upper_quantile(double p) const {
        return least([&](double x) { return ccdf(x) <= p; });
    }

private:
    // Bisection over the integers of 32 bits, or over all finite doubles by their bits.
    template <class Reached> double least(Reached reached) const {
        const auto value = [this](std::int64_t i) {
            return discrete ? static_cast<double>(i)
                            : std::copysign(std::bit_cast<double>(std::abs(i)), i < 0 ? -1.0 : 1.0);
        };
        const auto bound = discrete
                               ? std::int64_t{INT32_MAX}
                               : std::bit_cast<std::int64_t>(std::numeric_limits<double>::max());
        std::int64_t low = -bound, high = bound;
        while (low < high) {
            const std::int64_t middle = (low >> 1) + (high >> 1) + (low & high & 1);
            if (reached(value(middle))) high = middle;
            else low = middle + 1;
        }
        return value(low);
    }
};

// X -> shift + scale X, scale > 0.
inline Law affine(const Law& law, double shift, double scale) {
    return {[=](double x) { return law.cdf((x - shift) / scale); },
            [=](double x) { return law.ccdf((x - shift) / scale); },
            law.mean * scale + shift,
            law.variance * scale * scale,
            law.kurtosis,
            law.discrete};
}

// A discrete law from the logarithms of its weights (a common factor does not matter) on the
// integers of [low, high], summed from the mode outwards until they vanish; moments included.
template <class LogWeight>
Law tabulated(LogWeight log_weight, double low, double high, double mode) {
    const double top = log_weight(mode);
    const auto end = [&](double step, double last) {
        double k = mode;
        while (k != last && log_weight(k) > top - 60) k += step;
        return k;
    };
    const double first = end(-1, low), last = end(1, high);
    const auto size = static_cast<std::size_t>(last - first) + 1;
    std::vector<double> weights(size), below(size), above(size);
    Law law;
    double total = 0;
    for (std::size_t i = 0; i < size; ++i)
        total += weights[i] = std::exp(log_weight(first + static_cast<double>(i)) - top);
    const auto moment = [&](int power, double center) {
        double sum = 0;
        for (std::size_t i = 0; i < size; ++i)
            sum += weights[i] / total * std::pow(first + static_cast<double>(i) - center, power);
        return sum;
    };
    law.mean = moment(1, mode) + mode;
    law.variance = moment(2, law.mean);
    law.kurtosis = moment(4, law.mean) / (law.variance * law.variance);
    double sum = 0;
    for (std::size_t i = 0; i < size; ++i) below[i] = (sum += weights[i]) / total;
    sum = 0;
    for (std::size_t i = size; i-- > 0; sum += weights[i]) above[i] = sum / total;
    const auto look_up = [first](std::vector<double> table, double before, double behind) {
        return [=](double x) {
            if (x < first) return before;
            const double i = std::floor(x) - first;
            return i < static_cast<double>(table.size()) ? table[static_cast<std::size_t>(i)]
                                                         : behind;
        };
    };
    law.cdf = look_up(below, 0, 1);
    law.ccdf = look_up(above, 1, 0);
    law.discrete = true;
    return law;
}

// Draws n numbers in one call: Kolmogorov-Smirnov distance (continuous laws), chi-square over up to
// 256 bins of equal probability, mean and variance.
template <class T>
void expect_law(const Law& law, const Draw<T>& draw, int n = 1 << 18, std::uint32_t seed = 777) {
    const Stream stream = make_stream(VTS_BRNG_MT19937, {seed});
    std::vector<T> x(static_cast<std::size_t>(n));
    ASSERT_EQ(draw(stream.get(), n, x.data()), VTS_STATUS_OK);
    for (const T value : x) ASSERT_TRUE(std::isfinite(static_cast<double>(value)));
    std::sort(x.begin(), x.end());

    if (!law.discrete) {
        double distance = 0;
        for (int i = 0; i < n; ++i) {
            const double p = law.cdf(x[i]);
            distance = std::max({distance, (i + 1.0) / n - p, p - double(i) / n});
        }
        EXPECT_GT(kolmogorov(distance, n), failure) << "distance " << distance;
    }

    // A bin takes in its neighbours until 10 numbers are expected there.
    double chi_square = 0, before = 0, last_edge = -INFINITY;
    int bins = 0;
    std::size_t taken = 0;
    const auto close = [&](double probability, std::size_t count) {
        const double expected = n * probability;
        chi_square += (count - expected) * (count - expected) / expected;
        ++bins;
    };
    for (int i = 1; i < 256; ++i) {
        const double edge = law.quantile(i / 256.0), p = law.cdf(edge);
        if (edge == last_edge || n * (p - before) < 10 || n * law.ccdf(edge) < 10) continue;
        const auto up_to = static_cast<std::size_t>(
            std::upper_bound(x.begin(), x.end(), edge,
                             [](double e, T value) { return e < static_cast<double>(value); }) -
            x.begin());
        close(p - before, up_to - taken);
        last_edge = edge;
        before = p;
        taken = up_to;
    }
    close(last_edge == -INFINITY ? 1 : law.ccdf(last_edge), x.size() - taken);
    if (bins > 1)
        EXPECT_GT(incomplete_gamma((bins - 1) / 2.0, chi_square / 2).q, failure)
            << "chi-square " << chi_square << " of " << bins << " bins";

    if (std::isnan(law.mean)) return;
    double sum = 0, squares = 0;
    for (const T value : x) {
        const double d = static_cast<double>(value) - law.mean;
        sum += d;
        squares += d * d;
    }
    if (std::isnan(law.variance)) return;
    EXPECT_LT(std::fabs(sum / n), deviations * std::sqrt(law.variance / n)) << "mean";
    if (std::isnan(law.kurtosis)) return;
    EXPECT_LT(std::fabs(squares / n - law.variance),
              deviations * law.variance * std::sqrt((law.kurtosis - 1) / n))
        << "variance";
}

// Counts the numbers beyond the quantiles of 10^-2 to 10^-6 on both sides.
template <class T> void expect_tails(const Law& law, const Draw<T>& draw, int n = 20'000'000) {
    constexpr int levels = 5, piece = 10'000;
    double low[levels], high[levels], low_count[levels] = {}, high_count[levels] = {};
    for (int i = 0; i < levels; ++i) {
        low[i] = law.quantile(std::pow(10, -2 - i));
        high[i] = law.upper_quantile(std::pow(10, -2 - i));
    }
    const Stream stream = make_stream(VTS_BRNG_MT19937);
    std::vector<T> x(piece);
    for (int done = 0; done < n; done += piece) {
        ASSERT_EQ(draw(stream.get(), piece, x.data()), VTS_STATUS_OK);
        for (const T value : x) {
            for (int i = 0; i < levels && value <= low[i]; ++i) ++low_count[i];
            for (int i = 0; i < levels && value > high[i]; ++i) ++high_count[i];
        }
    }
    const auto judge = [n](double count, double p, const char* side, double at) {
        if (p > 0.05 || p == 0) return;  // a step of a discrete law: no tail there
        EXPECT_GT(poisson_tails(count, n * p), failure)
            << count << " numbers " << side << ' ' << at << " instead of " << n * p;
    };
    for (int i = 0; i < levels; ++i) {
        judge(low_count[i], law.cdf(low[i]), "up to", low[i]);
        judge(high_count[i], law.ccdf(high[i]), "above", high[i]);
    }
}

// --- the stream ---------------------------------------------------------------

// A generator of the tests: MT19937's numbers, but first the listed ones, and every number and call
// counted.
struct Probe {
    Stream source;
    std::vector<double> listed;                  // on [0, 1); a request on [a, b) gets their image
    bool repeats = false;                        // the list, again and again
    std::int32_t double_status = VTS_STATUS_OK;  // of a request in double precision
    std::int64_t consumed = 0;
    int calls = 0, fails_at = 0;  // the number of the call that fails, from 1
    std::int32_t status = VTS_STATUS_OK, failing_status = -4321;
};
inline Probe probe;

template <class Real>
std::int32_t probe_numbers(kef_stream*, std::int32_t n, Real* r, Real a, Real b) {
    if (++probe.calls == probe.fails_at) return probe.failing_status;
    if (sizeof(Real) == sizeof(double) && probe.double_status < 0) return probe.double_status;
    if constexpr (std::is_same_v<Real, double>) _vtsdRngUniform(0, probe.source.get(), n, r, a, b);
    else _vtssRngUniform(0, probe.source.get(), n, r, a, b);
    for (std::int32_t i = 0; i < n; ++i, ++probe.consumed) {
        const auto size = static_cast<std::int64_t>(probe.listed.size());
        const std::int64_t j = probe.repeats ? probe.consumed % size : probe.consumed;
        if (j < size) r[i] = static_cast<Real>(a + (b - a) * probe.listed[j]);
    }
    return probe.status;
}

inline Stream probe_stream(std::vector<double> listed = {}) {
    static const std::int32_t id = [] {
        const kef_brng brng = {
            sizeof(kef_stream_header),
            1,
            1,
            4,
            32,
            [](std::int32_t, kef_stream*, std::int32_t, const std::uint32_t*) { return 0; },
            probe_numbers<float>,
            probe_numbers<double>,
            [](kef_stream*, std::int32_t, void*) { return VTS_STATUS_NO_BITS + 0; }};
        return __vtsRegisterBrng(&brng);
    }();
    probe = {};
    probe.source = make_stream(VTS_BRNG_MT19937);
    probe.listed = std::move(listed);
    return make_stream(id);
}

// Uniform numbers that a call for n uses on a fresh stream.
template <class T> std::int64_t consumption(const Draw<T>& draw, int n) {
    const Stream stream = probe_stream();
    std::vector<T> r(static_cast<std::size_t>(n));
    EXPECT_EQ(draw(stream.get(), n, r.data()), VTS_STATUS_OK);
    return probe.consumed;
}

// The numbers made when the first uniforms are the listed ones.
template <class T>
std::vector<T> from_listed(const Draw<T>& draw, int n, std::vector<double> listed) {
    const Stream stream = probe_stream(std::move(listed));
    std::vector<T> r(static_cast<std::size_t>(n));
    EXPECT_EQ(draw(stream.get(), n, r.data()), VTS_STATUS_OK);
    return r;
}

// Calls for the parts give the same numbers as one call for their sum, and leave the stream the
// same.
template <class T> void expect_split(const Draw<T>& draw, const std::vector<int>& parts) {
    std::vector<T> whole, pieces;
    for (const int part : parts) pieces.resize(pieces.size() + static_cast<std::size_t>(part));
    whole = pieces;
    const Stream one = make_stream(VTS_BRNG_MT19937), many = make_stream(VTS_BRNG_MT19937);
    ASSERT_EQ(draw(one.get(), static_cast<int>(whole.size()), whole.data()), VTS_STATUS_OK);
    T* next = pieces.data();
    for (const int part : parts) {
        ASSERT_EQ(draw(many.get(), part, next), VTS_STATUS_OK);
        next += part;
    }
    EXPECT_EQ(std::memcmp(whole.data(), pieces.data(), whole.size() * sizeof(T)), 0);
    EXPECT_EQ(draw_doubles(one, 3), draw_doubles(many, 3));
}

// Nothing that a program traps may be raised between construction and destruction.
class RaisedFlags {
public:
    RaisedFlags() { std::feclearexcept(FE_ALL_EXCEPT); }
    ~RaisedFlags() {
        EXPECT_EQ(std::fetestexcept(FE_INVALID | FE_DIVBYZERO | FE_OVERFLOW), 0)
            << "floating-point exceptions";
    }
};

// What every distribution promises: n <= 0 draws nothing; nothing is written behind r[n - 1]; the
// status of a failing draw comes back at once and that of the last draw otherwise; the thread's
// mode word and callback are the caller's again on every way out.
template <class T> void expect_contract(const Draw<T>& draw, int n) {
    const std::uint32_t mode = kef_vtm_kernel_GetMode();
    const kef_vtm_error_callback none =
        kef_vtm_kernel_SetErrorCallBack([](kef_vtm_error_record*) { return 0; });
    kef_vtm_kernel_SetMode(VTM_EP | VTM_ERRMODE_ERRNO | VTM_FTZDAZ_ON);
    const auto before = std::pair(kef_vtm_kernel_GetMode(), kef_vtm_kernel_GetErrorCallBack());

    std::vector<T> r(static_cast<std::size_t>(n) + 1);
    const T guard = T(-123);
    const auto run = [&](int count, int fails_at, std::int32_t status) {
        const Stream stream = probe_stream();
        probe.fails_at = fails_at;
        probe.status = status;
        std::fill(r.begin(), r.end(), guard);
        const RaisedFlags flags;
        const std::int32_t result = draw(stream.get(), count, r.data());
        EXPECT_EQ(r.back(), guard) << "written behind the end";
        EXPECT_EQ(before, std::pair(kef_vtm_kernel_GetMode(), kef_vtm_kernel_GetErrorCallBack()));
        return result;
    };
    for (const int count : {0, -7, INT32_MIN + 1, INT32_MIN}) {
        EXPECT_EQ(run(count, 0, VTS_STATUS_OK), VTS_STATUS_OK);
        EXPECT_EQ(probe.consumed, 0);
        EXPECT_EQ(r.front(), guard);
    }
    EXPECT_EQ(run(n, 0, VTS_STATUS_OK), VTS_STATUS_OK);
    const int calls = probe.calls;
    for (const int k : {1, (calls + 1) / 2, calls}) {
        EXPECT_EQ(run(n, k, VTS_STATUS_OK), probe.failing_status) << "call " << k;
        EXPECT_EQ(probe.calls, k);
    }
    EXPECT_EQ(run(n, 0, 7), 7);

    kef_vtm_kernel_SetErrorCallBack(none);
    kef_vtm_kernel_SetMode(mode | VTM_FTZDAZ_OFF);
}

}  // namespace dist_tests
