// Pow and Powx: bases of either sign, and the exponents that have formulas of their own.
#include <algorithm>
#include <cmath>
#include <vector>

#include <gtest/gtest.h>

#include "tests/reference.h"
#include "tests/rows.h"
#include "tests/threads.h"

namespace kef_test {
namespace {

namespace reference = kef::reference;

template <class T> constexpr char letter = sizeof(T) == 4 ? 's' : 'd';

// r = a^b by a slot of Pow, or of Powx, one exponent after the other.
template <class T> struct Power {
    const Row& pow = *find_row(std::string(1, letter<T>) + "Pow");
    const Row& powx = *find_row(std::string(1, letter<T>) + "Powx");
    std::vector<T> operator()(int slot, const std::vector<T>& a, const std::vector<T>& b) const {
        std::vector<T> r(a.size());
        pow.invoke(pow.slots[slot], {static_cast<std::int32_t>(a.size()), a.data(), b.data(),
                                     nullptr, r.data(), nullptr});
        return r;
    }
    std::vector<T> operator()(int slot, const std::vector<T>& a, T b, int first, int n) const {
        std::vector<T> r(n);
        powx.invoke(powx.slots[slot], {n, a.data() + first, nullptr, &b, r.data(), nullptr});
        return r;
    }
};

template <class T> bool same_bits(T x, T y) { return std::memcmp(&x, &y, sizeof x) == 0; }

template <class T> bool is_odd(T y) { return std::fabs(std::fmod(y, T(2))) == 1; }

// Integers and halves, as far as Pow's vector formulas take them for bases below zero.
template <class T> std::vector<T> exponents() {
    std::vector<T> result;
    for (int m = -140; m <= 140; ++m) result.push_back(T(m) / 2);
    for (T y : {T(1001), T(-1000), T(8388607), T(8388608), T(16777215), T(2.7), T(-1) / 3, T(1e-30),
                std::numeric_limits<T>::denorm_min()})
        result.push_back(y);
    return result;
}

// Ordinary numbers of both signs, with few and many neighbours of the other sign, and all kinds
// among them.
template <class T> std::vector<T> bases() {
    using Limits = std::numeric_limits<T>;
    reference::Random random("bases");
    const T kinds[] = {0,
                       T(-0.0),
                       Limits::infinity(),
                       -Limits::infinity(),
                       Limits::quiet_NaN(),
                       1,
                       -1,
                       Limits::denorm_min(),
                       -Limits::min() / 3,
                       Limits::max(),
                       -Limits::max()};
    std::vector<T> result;
    for (int part = 0; part < 4; ++part)
        for (int i = 0; i < 100; ++i) {
            const T x = random.draw<T>({0.1, 9}, true);
            result.push_back(part == 0 || (part > 1 && random.bits() % 2) ? -x : x);
            if (part == 3 && i % 7 == 0) result.push_back(kinds[i / 7 % std::size(kinds)]);
        }
    return result;
}

template <class T> void expect_symmetry() {
    const Power<T> power;
    const std::vector<T> x = bases<T>();
    std::vector<T> magnitudes = x;
    for (T& a : magnitudes) a = std::fabs(a);
    for (const T y : exponents<T>())
        for (int slot : {0, 1, 2}) {
            SCOPED_TRACE(testing::Message() << letter<T> << " slot " << slot << " exponent " << y);
            const std::vector<T> b(x.size(), y);
            const auto n = static_cast<int>(x.size());
            const auto got = power(slot, x, b), positive = power(slot, magnitudes, b);
            const auto gotx = power(slot, x, y, 0, n), positivex = power(slot, magnitudes, y, 0, n);
            for (int i = 0; i < n; ++i) {
                const bool negative = x[i] < 0;
                if (negative && y != std::floor(y) && !std::isinf(x[i])) {
                    ASSERT_TRUE(std::isnan(got[i]) && std::isnan(gotx[i])) << x[i];
                    continue;
                }
                const bool minus = negative && is_odd(y);
                ASSERT_TRUE(std::isnan(x[i]) || x[i] == 0 ||
                            (same_bits(got[i], minus ? -positive[i] : positive[i]) &&
                             same_bits(gotx[i], minus ? -positivex[i] : positivex[i])))
                    << x[i] << ' ' << got[i] << ' ' << gotx[i];
                // Alone as among others.
                const auto alone = power(slot, {x[i]}, {y});
                ASSERT_TRUE(same_bits(got[i], alone[0])) << x[i];
                ASSERT_TRUE(same_bits(gotx[i], power(slot, x, y, i, 1)[0])) << x[i];
            }
            for (int n : {1, 2, 3, 5, 6, 7})
                ASSERT_EQ(
                    std::memcmp(power(slot, x, y, 3, n).data(), gotx.data() + 3, n * sizeof(T)), 0);
        }
}

TEST(Pow, SignsOfTheBase) {
    in_fresh_thread([] {
        kef_vtm_kernel_SetMode(VTM_ERRMODE_IGNORE);
        expect_symmetry<float>();
        expect_symmetry<double>();
    });
}

// Large odd and even exponents: next to where integers end to have halves, and to be odd.
TEST(Pow, LargeExponentsOfNegativeBases) {
    in_fresh_thread([] {
        kef_vtm_kernel_SetMode(VTM_ERRMODE_IGNORE);
        const double near = std::nextafter(-1.0, 0.0);
        for (double size : {0x1p21, 0x1p22, 0x1p23, 0x1p24, 0x1p30, 0x1p31, 0x1p32, 0x1p50, 0x1p51,
                            0x1p52, 0x1p53, 0x1p54})
            for (double step : {-2.0, -1.5, -1.0, -0.5, 0.0, 0.5, 1.0, 1.5, 2.0})
                for (int slot : {0, 1, 2}) {
                    const double y = size + step;
                    const double expected = std::pow(near, y);
                    const std::vector<double> x = {near, 0.5, near, near}, b = {y, 2, y, y};
                    for (double r :
                         {Power<double>()(slot, x, b)[3], Power<double>()(slot, x, y, 0, 4)[3]})
                        EXPECT_TRUE(std::isnan(expected) ? std::isnan(r)
                                                         : std::fabs(r / expected - 1) < 1e-7)
                            << size << ' ' << step << ' ' << slot << ' ' << r;
                    const float z = static_cast<float>(y), before = std::nextafter(-1.0f, 0.0f);
                    const double single = std::pow(double(before), double(z));
                    const std::vector<float> u = {before, 0.5f, before, before}, v = {z, 2, z, z};
                    for (float r :
                         {Power<float>()(slot, u, v)[3], Power<float>()(slot, u, z, 0, 4)[3]})
                        EXPECT_TRUE(std::isnan(single)
                                        ? std::isnan(r)
                                        : std::fabs(r - single) <= 1e-3 * std::fabs(single) + 1e-37)
                            << z << ' ' << slot << ' ' << r;
                }
    });
}

// Error and status of one power r, which was the last one computed.
template <class T> void expect_power(int slot, T x, T y, T r, bool one_operation) {
    using Limits = std::numeric_limits<T>;
    constexpr bool single = sizeof(T) == 4;
    constexpr double bounds[] = {single ? 0x1p-21 : 0x1p-50, single ? 0.501 : 0.55,
                                 single ? 0x1p-11 : 0x1p-26};
    const __float128 exact = powq(x, y);
    const auto error = reference::error(r, exact);
    EXPECT_LE(slot == 1 || one_operation ? error.ulps : error.relative,
              one_operation ? 0.5 : bounds[slot])
        << letter<T> << " slot " << slot << ": " << x << " ^ " << y;
    EXPECT_EQ(kef_vtm_kernel_GetErrStatus(), std::isinf(r)                  ? VTM_STATUS_OVERFLOW
                                             : fabsq(exact) < Limits::min() ? VTM_STATUS_UNDERFLOW
                                                                            : VTM_STATUS_OK)
        << letter<T> << " slot " << slot << ": " << x << " ^ " << y;
}

// Error and status of Powx with each half of a small integer: over all results, with more
// bases near 1 and where results begin to be subnormal, or infinite.
template <class T> void expect_accuracy() {
    using Limits = std::numeric_limits<T>;
    const double least = Limits::min_exponent - 1, most = Limits::max_exponent;
    const Power<T> power;
    reference::Random random("accuracy");
    for (int m = -130; m <= 130; ++m) {
        const T y = T(m) / 2;
        const bool one = m == 4 || m == 2 || m == 1 || m == 0 || m == -2;
        for (int i = 0; i < 300; ++i) {
            // log2 of the result, and of the base.
            const double u = random.unit();
            const double powers[] = {(u - 0.5) * y / 4, least - 30 + u * (most - least + 32),
                                     least - 2 + 40 * u, most - 2 + 3 * u};
            const double e = m == 0 ? powers[0] : powers[i % 4] / y;
            if (std::fabs(e) > most - 1) continue;
            const T a = static_cast<T>(std::exp2(e)), x = m % 2 == 0 && i % 3 == 0 ? -a : a;
            for (int slot : {0, 1, 2}) {
                kef_vtm_kernel_ClearErrStatus();
                expect_power(slot, x, y, power(slot, {x}, y, 0, 1)[0], one);
                if (testing::Test::HasFailure()) return;
            }
        }
    }
}

TEST(Pow, HalvesOfIntegers) {
    in_fresh_thread([] {
        kef_vtm_kernel_SetMode(VTM_ERRMODE_IGNORE);
        expect_accuracy<float>();
        expect_accuracy<double>();
    });
}

// Results next to the smallest and to the largest normal number, most of them of exponents without
// a formula of their own: inside alone, on both sides with both signs, and with some other kinds.
template <class T> void expect_ends() {
    using Limits = std::numeric_limits<T>;
    const double ends[] = {Limits::min_exponent - 1, Limits::max_exponent};
    const Power<T> power;
    reference::Random random("ends");
    for (const T y : {T(2.7), T(-3.3), T(7), T(-40), T(101), T(-1001)}) {
        std::vector<T> x;
        for (int i = 0; i < 600; ++i) {
            const double away = random.unit() * (i % 3 == 0 ? 0.05 : 30);
            const bool upper = i / 2 % 2, above = i < 200 ? !upper : i % 2;
            const double e = ends[upper] + (above ? away : -away);
            const T a = static_cast<T>(std::exp2(e / y));
            x.push_back(y == std::floor(y) && i > 200 && random.bits() % 2 ? -a : a);
            if (i > 400 && i % 10 == 0) x.push_back(i % 20 ? T(NAN) : T(0));
        }
        const auto n = static_cast<int>(x.size());
        const std::vector<T> b(n, y);
        for (int slot : {0, 1, 2}) {
            const auto got = power(slot, x, b), gotx = power(slot, x, y, 0, n);
            for (int i = 0; i < n; ++i) {
                const bool special = std::isnan(x[i]) || x[i] == 0;
                kef_vtm_kernel_ClearErrStatus();
                const T alone = power(slot, {x[i]}, {y})[0];
                if (!special) expect_power(slot, x[i], y, alone, false);
                kef_vtm_kernel_ClearErrStatus();
                const T alonex = power(slot, x, y, i, 1)[0];
                if (!special) expect_power(slot, x[i], y, alonex, false);
                ASSERT_TRUE(same_bits(alone, got[i]) && same_bits(alonex, gotx[i]))
                    << letter<T> << " slot " << slot << ": " << x[i] << " ^ " << y;
                if (testing::Test::HasFailure()) return;
            }
        }
    }
}

TEST(Pow, EndsOfTheRange) {
    in_fresh_thread([] {
        kef_vtm_kernel_SetMode(VTM_ERRMODE_IGNORE);
        expect_ends<float>();
        expect_ends<double>();
    });
}

// Exponentials next to the largest number, where the power of two is close to the first that is
// none.
template <class T> void expect_large_exponentials() {
    using Limits = std::numeric_limits<T>;
    constexpr double bounds[] = {sizeof(T) == 4 ? 0x1p-21 : 0x1p-50, sizeof(T) == 4 ? 0.501 : 0.55,
                                 sizeof(T) == 4 ? 0x1p-11 : 0x1p-26};
    for (const auto& [name, factor] : {std::pair{"Exp", 1.0}, {"Expm1", 1.0}, {"Cosh", 0.5}}) {
        const Row& row = *find_row(std::string(1, letter<T>) + name);
        const double last = std::log(double(Limits::max())) - std::log(factor);
        std::vector<T> x, r(500);
        for (int i = 0; i < 500; ++i) x.push_back(T(last - 0.1 * i / 500));
        for (int slot : {0, 1, 2}) {
            row.invoke(row.slots[slot], {500, x.data(), nullptr, nullptr, r.data(), nullptr});
            for (int i = 1; i < 500; ++i) {
                const auto error = reference::error(r[i], expq(x[i]) * factor);
                ASSERT_LE(slot == 1 ? error.ulps : error.relative, bounds[slot])
                    << row.name() << " slot " << slot << ": " << x[i];
            }
        }
    }
}
TEST(Pow, LargeExponentials) {
    in_fresh_thread([] {
        kef_vtm_kernel_SetMode(VTM_ERRMODE_IGNORE);
        expect_large_exponentials<float>();
        expect_large_exponentials<double>();
    });
}

// One operation, whatever the base; the status that the result asks for.
template <class T> void expect_operations() {
    using Limits = std::numeric_limits<T>;
    const struct {
        T exponent;
        T (*operation)(T);
    } cases[] = {{2, [](T x) { return x * x; }},
                 {1, [](T x) { return x; }},
                 {T(0.5), [](T x) { return std::sqrt(x); }},
                 {-1, [](T x) { return 1 / x; }},
                 {0, [](T) { return T(1); }}};
    const Power<T> power;
    reference::Random random("operations");
    for (const auto& c : cases)
        for (int i = 0; i < 20000; ++i) {
            const T x = random.draw<T>(reference::everything, false);
            const bool negative_root = c.exponent == T(0.5) && x < 0;
            const T expected = negative_root ? T(NAN) : c.operation(x);
            kef_vtm_kernel_ClearErrStatus();
            const T r = power(i % 3, {x}, c.exponent, 0, 1)[0];
            ASSERT_TRUE(same_bits(r, expected) || (std::isnan(r) && std::isnan(expected)))
                << x << " ^ " << c.exponent;
            const int status = negative_root                            ? VTM_STATUS_ERRDOM
                               : std::isinf(r) && x != 0                ? VTM_STATUS_OVERFLOW
                               : std::isinf(r)                          ? VTM_STATUS_SING
                               : std::fabs(r) < Limits::min() && x != 0 ? VTM_STATUS_UNDERFLOW
                                                                        : VTM_STATUS_OK;
            ASSERT_EQ(kef_vtm_kernel_GetErrStatus(), status) << x << " ^ " << c.exponent;
        }
}

TEST(Pow, OneOperation) {
    in_fresh_thread([] {
        kef_vtm_kernel_SetMode(VTM_ERRMODE_IGNORE);
        expect_operations<float>();
        expect_operations<double>();
    });
}

}  // namespace
}  // namespace kef_test
