// Complex functions: those that are real functions of their parts against these, products and
// quotients against 113 bits.
#include <cmath>
#include <complex>
#include <random>
#include <tuple>

#include <gtest/gtest.h>

#include "tests/reference.h"
#include "tests/rows.h"
#include "tests/threads.h"

namespace kef_test {
namespace {

using kef::reference::quad;

constexpr int slots[] = {0, 1, 2};

template <class T> constexpr char real_letter = sizeof(T) == 4 ? 's' : 'd';
template <class T> constexpr char letter = sizeof(T) == 4 ? 'c' : 'z';

template <class T> void call(char type, const char* function, int slot, const Call& c) {
    const Row* row = find_row(type + std::string(function));
    ASSERT_NE(row, nullptr) << type << function;
    row->invoke(row->slots[slot], c);
}

// Numbers with exponents within +-width of 0, some of them special where `specials` says so.
template <class T>
std::vector<T> numbers(std::mt19937_64& random, int n, int width, bool specials) {
    constexpr T limits[] = {0,
                            T(-0.0),
                            INFINITY,
                            -INFINITY,
                            NAN,
                            std::numeric_limits<T>::denorm_min(),
                            -std::numeric_limits<T>::max(),
                            1};
    std::vector<T> x(n);
    for (T& v : x) {
        const T significand = 1 + std::ldexp(T(random() >> 40), -24);
        const int exponent = static_cast<int>(random() % (2 * width + 1)) - width;
        v = std::ldexp(random() % 2 ? significand : -significand, exponent);
        if (specials && random() % 4 == 0) v = limits[random() % std::size(limits)];
    }
    return x;
}

template <class T> bool same_bits(const std::vector<T>& x, const std::vector<T>& y) {
    return x.size() == y.size() && std::memcmp(x.data(), y.data(), x.size() * sizeof(T)) == 0;
}

template <class T> void expect_real_functions_of_parts() {
    std::mt19937_64 random(1);
    constexpr int n = 203;
    constexpr T unit = std::numeric_limits<T>::denorm_min();
    const int widest = std::numeric_limits<T>::max_exponent - 2;
    for (const auto& [width, scale] :
         {std::pair(3, T(1)), std::pair(widest, T(1)), std::pair(30, T(4096) * unit)}) {
        std::vector<T> a = numbers<T>(random, 2 * n, width, true),
                       b = numbers<T>(random, 2 * n, width, true);
        for (T& x : a) x *= scale;
        std::vector<T> re(n), im(n);
        for (int i = 0; i < n; ++i) re[i] = a[2 * i], im[i] = a[2 * i + 1];
        for (const int slot : slots) {
            SCOPED_TRACE(slot);
            std::vector<T> got(n), wanted(n);
            const auto status = [] { return kef_vtm_kernel_ClearErrStatus(); };
            status();
            call<T>(letter<T>, "Abs", slot, {n, a.data(), nullptr, nullptr, got.data(), nullptr});
            const int abs_status = status();
            call<T>(real_letter<T>, "Hypot", slot,
                    {n, re.data(), im.data(), nullptr, wanted.data(), nullptr});
            EXPECT_EQ(status(), abs_status);
            // LA of subnormal numbers: plain arithmetic here.
            for (int i = 0; i < n; ++i)
                if (slot != 1 && wanted[i] < std::numeric_limits<T>::min() &&
                    std::fabs(got[i] - wanted[i]) <= unit)
                    got[i] = wanted[i];
            EXPECT_TRUE(same_bits(got, wanted)) << "Abs";
            call<T>(letter<T>, "Arg", slot, {n, a.data(), nullptr, nullptr, got.data(), nullptr});
            const int arg_status = status();
            call<T>(real_letter<T>, "Atan2", slot,
                    {n, im.data(), re.data(), nullptr, wanted.data(), nullptr});
            EXPECT_EQ(status(), arg_status);
            EXPECT_TRUE(same_bits(got, wanted)) << "Arg";

            std::vector<T> pairs(2 * n), sines(n), cosines(n), wanted_pairs(2 * n);
            call<T>(letter<T>, "CIS", slot,
                    {n, re.data(), nullptr, nullptr, pairs.data(), nullptr});
            const int cis_status = status();
            call<T>(real_letter<T>, "SinCos", slot,
                    {n, re.data(), nullptr, nullptr, sines.data(), cosines.data()});
            EXPECT_EQ(status(), cis_status);
            for (int i = 0; i < n; ++i)
                wanted_pairs[2 * i] = cosines[i], wanted_pairs[2 * i + 1] = sines[i];
            EXPECT_TRUE(same_bits(pairs, wanted_pairs)) << "CIS";
            for (const char* function : {"Add", "Sub"}) {
                call<T>(letter<T>, function, slot,
                        {n, a.data(), b.data(), nullptr, pairs.data(), nullptr});
                call<T>(real_letter<T>, function, slot,
                        {2 * n, a.data(), b.data(), nullptr, wanted_pairs.data(), nullptr});
                EXPECT_TRUE(same_bits(pairs, wanted_pairs)) << function;
            }
            call<T>(letter<T>, "Conj", slot,
                    {n, a.data(), nullptr, nullptr, pairs.data(), nullptr});
            for (int i = 0; i < 2 * n; ++i)
                EXPECT_TRUE(same_bits<T>({pairs[i]}, {i % 2 ? -a[i] : a[i]})) << "Conj " << i;
        }
    }
}
TEST(Complex, RealFunctionsOfParts) {
    in_fresh_thread([] {
        kef_vtm_kernel_SetMode(VTM_ERRMODE_IGNORE | VTM_FTZDAZ_OFF);
        expect_real_functions_of_parts<float>();
        expect_real_functions_of_parts<double>();
    });
}

// The error of x in ulp of the larger of `exact` and `floor`.
template <class T> double error(T x, quad exact, quad floor) {
    const quad size = fmaxq(fabsq(exact), floor);
    int exponent;
    frexpq(size, &exponent);
    exponent = std::max(exponent, std::numeric_limits<T>::min_exponent);
    return static_cast<double>(
        ldexpq(fabsq(quad(x) - exact), std::numeric_limits<T>::digits - exponent));
}

struct Product {
    const char* function;
    bool conjugate, quotient;
};

// `share`: parts count down to this share of the norm.
template <class T> void expect_products(Product p, int slot, double bound, double share) {
    std::mt19937_64 random(2);
    constexpr int n = 1001;
    const int widest = std::numeric_limits<T>::max_exponent;
    const T small = 64 * std::numeric_limits<T>::min();
    const struct {
        int width;
        T of_a, of_b;
    } sizes[] = {{1, 1, 1},          {20, 1, 1},         {widest / 4, 1, 1}, {widest / 2 - 2, 1, 1},
                 {widest - 1, 1, 1}, {20, small, small}, {20, small, 1},     {20, 1, small}};
    for (const auto& [width, of_a, of_b] : sizes) {
        std::vector<T> a = numbers<T>(random, 2 * n, width, false),
                       b = numbers<T>(random, 2 * n, width, false), r(2 * n);
        // Every third one cancels in one part, to a few or to all bits.
        for (int i = 0; i < 2 * n; i += 6) {
            const T k = std::ldexp(T(1), static_cast<int>(random() % 9) - 4 - width / 2);
            b[i] = k * a[i + 1] * (1 + std::ldexp(T(random() % 3), -12));
            b[i + 1] = p.conjugate ? -k * a[i] : k * a[i];
        }
        for (T& x : a) x *= of_a;
        for (T& x : b) x *= of_b;
        call<T>(letter<T>, p.function, slot, {n, a.data(), b.data(), nullptr, r.data(), nullptr});
        for (int i = 0; i < 2 * n; i += 2) {
            const quad x = a[i], y = a[i + 1], u = b[i], v = p.conjugate ? -b[i + 1] : b[i + 1];
            quad re = x * u - y * v, im = x * v + y * u;
            if (p.quotient) {
                const quad norm = u * u + v * v;
                if (norm == 0) continue;
                re /= norm, im /= norm;
            }
            const quad size = fmaxq(fabsq(re), fabsq(im));
            if (size >= quad(std::numeric_limits<T>::max())) continue;
            for (const int part : {0, 1}) {
                const quad exact = part ? im : re;
                SCOPED_TRACE(part ? "im" : "re");
                ASSERT_LE(error(r[i + part], exact, share * size), bound)
                    << a[i] << ' ' << a[i + 1] << ' ' << b[i] << ' ' << b[i + 1];
                if (fabsq(exact) > share * size)  // zeros of an underflow too
                    ASSERT_EQ(std::signbit(r[i + part]), exact < 0)
                        << a[i] << ' ' << a[i + 1] << ' ' << b[i] << ' ' << b[i + 1];
            }
        }
    }
}
TEST(Complex, ProductsAndQuotients) {
    in_fresh_thread([] {
        kef_vtm_kernel_SetMode(VTM_ERRMODE_IGNORE | VTM_FTZDAZ_OFF);
        for (const Product p : {Product{"Mul", false, false}, Product{"MulByConj", true, false},
                                Product{"Div", true, true}})
            for (const int slot : slots) {
                SCOPED_TRACE(std::string(p.function) + " slot " + std::to_string(slot));
                const bool plain = p.quotient && slot != 1;
                expect_products<double>(p, slot, plain ? 8 : 0.51, plain ? 1 : 0x1p-49);
                expect_products<float>(p, slot, plain ? 8 : 0.501, plain ? 1 : 0x1p-49);
            }
    });
}

// Of positive numbers to real powers: no imaginary part, and HA beside the real function.
template <class T> void expect_real_powers() {
    std::mt19937_64 random(2);
    constexpr int n = 1000;
    std::vector<T> x = numbers<T>(random, n, 3, false), y = numbers<T>(random, n, 3, false);
    std::vector<T> a(2 * n), b(2 * n), got(2 * n), wanted(n);
    for (int i = 0; i < n; ++i) a[2 * i] = x[i] = std::fabs(x[i]), b[2 * i] = y[i];
    call<T>(real_letter<T>, "Pow", 1, {n, x.data(), y.data(), nullptr, wanted.data(), nullptr});
    for (const int slot : slots) {
        call<T>(letter<T>, "Pow", slot, {n, a.data(), b.data(), nullptr, got.data(), nullptr});
        for (int i = 0; i < n; ++i) {
            EXPECT_EQ(got[2 * i + 1], 0) << slot << ' ' << x[i] << ' ' << y[i];
            if (slot == 1)
                EXPECT_NEAR(got[2 * i], wanted[i], std::numeric_limits<T>::epsilon() * wanted[i]);
        }
    }
}
TEST(Complex, RealPowers) {
    expect_real_powers<float>();
    expect_real_powers<double>();
}

// Small results have the same bits whichever formula their neighbours are for.
void expect_as_alone(const char* function, const std::vector<double>& a,
                     const std::vector<double>& b) {
    const int n = static_cast<int>(a.size() / 2);
    std::vector<double> together(2 * n), single(2 * n);
    for (const int slot : slots) {
        call<double>('z', function, slot,
                     {n, a.data(), b.data(), nullptr, together.data(), nullptr});
        for (int i = 0; i < 2 * n; i += 2)
            call<double>('z', function, slot, {1, &a[i], &b[i], nullptr, &single[i], nullptr});
        EXPECT_TRUE(same_bits(together, single)) << function << ' ' << slot;
    }
}
TEST(Complex, SmallResultsBesideOthers) {
    std::mt19937_64 random(3);
    constexpr int n = 200;
    // Powers whose imaginary part is rounded into the subnormal numbers.
    std::vector<double> a = numbers<double>(random, 2 * n, 3, false), b(2 * n);
    for (int i = 0; i < n; ++i) {
        a[2 * i] = i % 5 ? 2 + std::fabs(a[2 * i]) : 0x1p-300;
        a[2 * i + 1] *= 0x1p-40;
        b[2 * i] = i % 5 ? -990 / std::log2(a[2 * i]) : 1, b[2 * i + 1] = 0x1p-60;
    }
    expect_as_alone("Pow", a, b);
    // Quotients and products whose terms are zeros and underflow.
    constexpr double parts[] = {0,   0x1.8p-1074, 0x1.37p-1030, 0x1.cp-1018, 0x1.4p-905, 0x1.2p-250,
                                1.5, 0x1.b8p102,  0x1.1p210,    0x1.7p600,   0x1.9p1020};
    for (std::vector<double>* x : {&a, &b}) {
        x->resize(20000);
        for (double& part : *x)
            part = parts[random() % std::size(parts)] * (random() % 2 ? 1.0 : -1.0);
    }
    expect_as_alone("Div", a, b);
    expect_as_alone("Mul", a, b);
}

// A part that is rounded once to a subnormal number, beside one of any size.
TEST(Complex, SubnormalPartsBesideOthers) {
    using Complex = std::complex<double>;
    constexpr double part = 1 + 0x1p-45 + 0x1p-52, rounded = (1 + 0x1p-44) * 0x1p-1030;
    for (int e = -600; e <= -438; ++e)
        for (const bool swapped : {false, true}) {
            const auto of = [&](double subnormal, double other) {
                return swapped ? Complex(other, subnormal) : Complex(subnormal, other);
            };
            const Complex a = of(-std::ldexp(part, -1030 - e), 0x1p430),
                          exact = of(-rounded, std::ldexp(1.0, 430 + e));
            for (const auto& [name, b] :
                 {std::pair("Mul", std::ldexp(1.0, e)), {"Div", std::ldexp(1.0, -e)}}) {
                Complex r;
                const Complex second = b;
                call<double>('z', name, 1, {1, &a, &second, nullptr, &r, nullptr});
                EXPECT_EQ(r, exact) << name << ' ' << e << ' ' << swapped;
            }
        }
}

// Parts far below the norm, beside infinite ones too; what is left of products that cancel.
TEST(Complex, PartsFarBelowTheNorm) {
    using Complex = std::complex<double>;
    constexpr double infinity = std::numeric_limits<double>::infinity();
    const std::tuple<const char*, Complex, Complex, Complex> cases[] = {
        {"Mul", {-0x1.8p1022, 0x1p-56}, {16, -0x1p1021}, {-infinity, infinity}},
        {"Mul", {0x1p1023, 0x1.8p-40}, {0x1p1023, 0}, {infinity, 0x1.8p983}},
        {"Div", {0x1p973, 0x1.8p-60}, {0x1p-1074, 0}, {infinity, 0x1.8p1014}},
        {"Div", {0x1p1000, 0x1.8p-60}, {0x1p-1074, 0}, {infinity, 0x1.8p1014}},
        {"Div", {0x1p1000, 0x1.8p-60}, {0, 0x1p-1074}, {0x1.8p1014, -infinity}},
        {"Div", {0x1.8p1023, 0x1p-10}, {0x1p-1074, 0}, {infinity, infinity}},
        {"Mul", {0x1p1023, 0x1.8p-1000}, {0x1p1023, 0}, {infinity, 0x1.8p23}},
        {"Mul", {0x1p500, 0x1.8p-700}, {0, -0x1p450}, {0x1.8p-250, -0x1p950}},
        {"Mul", {0x1p1000, 0x1p1000}, {0x1p1000, 0x1p1000}, {0, infinity}},
        {"Mul",
         {0x1.0000001p520, 0x1.0000002p520},
         {0x1.0000001p0, 1},
         {0x1p464, 0x1.0000002p521}}};
    for (const auto& [name, a, b, exact] : cases) {
        Complex r;
        call<double>('z', name, 1, {1, &a, &b, nullptr, &r, nullptr});
        EXPECT_EQ(r, exact) << name << a << b;
    }
}

// On the axes a part of the result is zero; its sign is the C library's, that of a tangent the one
// of (sin 2x, sinh 2y), since not every C library has it right beside a pole.
template <class T> void expect_signs_of_zeros() {
    using Complex = std::complex<T>;
    const std::tuple<const char*, Complex (*)(const Complex&)> functions[] = {
        {"Sin", std::sin},
        {"Cos", std::cos},
        {"Sinh", std::sinh},
        {"Cosh", std::cosh},
        {"Exp", std::exp},
        {"Tan",
         [](const Complex& z) { return Complex(std::sin(2 * z.real()), std::sinh(2 * z.imag())); }},
        {"Tanh", [](const Complex& z) {
             return Complex(std::sinh(2 * z.real()), std::sin(2 * z.imag()));
         }}};
    std::vector<Complex> x;
    for (int i = -40; i < 40; ++i)
        for (const T zero : {T(0), T(-0.0)})
            x.insert(x.end(), {Complex(T(i + 0.3) / 4, zero), Complex(zero, T(i + 0.3) / 4)});
    const auto pi = static_cast<T>(std::acos(-1.0));
    x.insert(x.end(), {Complex(pi, 0), Complex(0, pi), Complex(pi / 2, 0), Complex(0, -pi / 2)});
    const auto n = static_cast<int>(x.size());
    for (const auto& [name, exact] : functions)
        for (int slot : {0, 1, 2}) {
            std::vector<Complex> r(x.size());
            call<T>(letter<T>, name, slot, {n, x.data(), nullptr, nullptr, r.data(), nullptr});
            for (int i = 0; i < n; ++i) {
                const Complex expected = exact(x[i]);
                EXPECT_TRUE(std::signbit(r[i].real()) == std::signbit(expected.real()) &&
                            std::signbit(r[i].imag()) == std::signbit(expected.imag()))
                    << letter<T> << name << " slot " << slot << ": " << x[i] << ' ' << r[i];
            }
        }
}
TEST(Complex, SignsOfZeros) {
    expect_signs_of_zeros<float>();
    expect_signs_of_zeros<double>();
}

// Of two NaN the first one is the result, whatever their signs.
template <class T> void expect_first_nan() {
    const auto nan = [](T sign) {
        return std::copysign(std::numeric_limits<T>::quiet_NaN(), sign);
    };
    for (const char* name : {"Asin", "Acos", "Atan", "Sqrt", "Ln", "Log10"})
        for (int slot : {0, 1, 2})
            for (const T sign : {T(1), T(-1)}) {
                const T x[2] = {nan(sign), nan(-sign)};
                T r[2] = {};
                call<T>(letter<T>, name, slot, {1, x, nullptr, nullptr, r, nullptr});
                EXPECT_TRUE(std::isnan(r[0]) && std::signbit(r[0]) == (sign < 0) &&
                            std::isnan(r[1]) && std::signbit(r[1]) == (sign < 0))
                    << letter<T> << name << " slot " << slot << ", sign " << sign;
            }
}
TEST(Complex, FirstOfTwoNaN) {
    expect_first_nan<float>();
    expect_first_nan<double>();
}

std::vector<kef_vtm_error_record> records;
int replace_both_parts(kef_vtm_error_record* record) {
    records.push_back(*record);
    record->result1 = 5, record->result1_imag = -6;
    return 0;
}

// Both parts go to the callback and come back from it, in place as elsewhere.
template <class Element> void expect_replaced() {
    using T = decltype(Element::re);
    for (const bool in_place : {false, true}) {
        std::vector<Element> a = {{1, 0}, {0, 1}, {-0.0, 0.0}, {2, 3}, {0, 0}},
                             b = {{2, 0}, {0, 1}, {-1, 3}, {1, 1}, {-2, -7}}, r(5);
        std::vector<Element>& result = in_place ? a : r;
        records.clear();
        call<T>(letter<T>, "Pow", 1, {5, a.data(), b.data(), nullptr, result.data(), nullptr});
        ASSERT_EQ(records.size(), 2u);
        for (const int k : {0, 1}) {
            const kef_vtm_error_record& e = records[k];
            EXPECT_EQ(e.index, k == 0 ? 2 : 4);
            EXPECT_EQ(e.code, VTM_STATUS_SING);
            EXPECT_EQ(e.argument1, 0);
            EXPECT_EQ(std::signbit(e.argument1), k == 0);
            EXPECT_EQ(e.argument2, k == 0 ? -1 : -2);
            EXPECT_EQ(e.argument2_imag, k == 0 ? 3 : -7);
            EXPECT_EQ(e.result1, INFINITY);
            EXPECT_EQ(result[e.index].re, 5);
            EXPECT_EQ(result[e.index].im, -6);
        }
        EXPECT_EQ(result[0].re, 1);
        EXPECT_NEAR(result[1].re, std::exp(-std::acos(0.0)), 1e-7);  // i^i
        EXPECT_EQ(result[1].im, 0);
    }
}
TEST(Complex, CallbacksReplaceBothParts) {
    in_fresh_thread([] {
        kef_vtm_kernel_SetMode(VTM_ERRMODE_CALLBACK);
        kef_vtm_kernel_SetErrorCallBack(replace_both_parts);
        expect_replaced<kef_complex8>();
        expect_replaced<kef_complex16>();
    });
}

// What overflows and underflows in whole groups, in parts of groups and in the rest: every report
// with its own element, in their order; the same bits at every place, of a part that stays finite
// beside an infinite one too.
struct Range {
    const char* function;
    struct Arguments {
        double large[4], small[4];  // whose results overflow, and underflow
    } of_floats, of_doubles;
    int of_small;  // the status of these
};
constexpr double half_pi = 0x1.921fb54442d18p0;
constexpr Range ranges[] = {
    {"Exp", {{1e4, 1}, {-1e4, 1}}, {{1e4, 1}, {-1e4, 1}}, VTM_STATUS_UNDERFLOW},
    {"Exp", {{89, half_pi}, {-90, 1}}, {{715, half_pi}, {-710, 1}}, VTM_STATUS_UNDERFLOW},
    {"Sin", {{1e-10, 100}, {1, 1}}, {{1.3e-20, 715}, {1, 1}}, VTM_STATUS_OK},
    {"Cosh", {{-1e4, 1}, {1, 1}}, {{-1e4, 1}, {1, 1}}, VTM_STATUS_OK},
    {"Pow",
     {{10, 1, 1e4, 1}, {10, 1, -1e4, 1}},
     {{10, 1, 1e4, 1}, {10, 1, -1e4, 1}},
     VTM_STATUS_UNDERFLOW},
    {"Div",
     {{1e30, -1e30, 1e-30, 0}, {1, 1, 2, 1}},
     {{1e270, -1e270, 1e-270, 0}, {1, 1, 2, 1}},
     VTM_STATUS_OK},
};
template <class Element> void expect_reports(const Range& range) {
    using T = decltype(Element::re);
    const Range::Arguments& of = sizeof(T) == 4 ? range.of_floats : range.of_doubles;
    const auto element = [](const double* x) {
        return Element{static_cast<T>(x[0]), static_cast<T>(x[1])};
    };
    const std::string kinds =
        "oooo"
        "ouou"
        "1o1u"
        "1111"
        "uuun"
        "nouo"
        "o1u";
    const int n = static_cast<int>(kinds.size());
    for (const int slot : slots)
        for (const bool in_place : {false, true}) {
            SCOPED_TRACE(std::string(range.function) + " slot " + std::to_string(slot));
            std::vector<Element> a(n, {1, 1}), b(n, {1, 1}), r(n);
            std::vector<int> failing;
            for (int i = 0; i < n; ++i) {
                if (kinds[i] == 'o') a[i] = element(of.large), b[i] = element(of.large + 2);
                if (kinds[i] == 'u') a[i] = element(of.small), b[i] = element(of.small + 2);
                if (kinds[i] == 'n') a[i] = {NAN, NAN};
                if (kinds[i] == 'o' || (kinds[i] == 'u' && range.of_small != VTM_STATUS_OK))
                    failing.push_back(i);
            }
            const std::vector<Element> arguments = a;
            const auto code = [&](int i) {
                return kinds[i] == 'o' ? VTM_STATUS_OVERFLOW : range.of_small;
            };
            const auto run = [&](std::vector<Element>& result) {
                call<T>(letter<T>, range.function, slot,
                        {n, a.data(), b.data(), nullptr, result.data(), nullptr});
            };
            kef_vtm_kernel_SetMode(VTM_ERRMODE_IGNORE);
            run(r);
            for (const int i : failing) {
                const auto first = kinds.find(kinds[i]);
                EXPECT_EQ(std::memcmp(&r[i], &r[first], sizeof r[i]), 0) << i;
            }
            kef_vtm_kernel_SetMode(VTM_ERRMODE_CALLBACK);
            kef_vtm_kernel_SetErrorCallBack(replace_both_parts);
            records.clear();
            std::vector<Element> replaced(n), &result = in_place ? a : replaced;
            run(result);
            ASSERT_EQ(records.size(), failing.size());
            for (std::size_t k = 0; k < records.size(); ++k) {
                const int i = failing[k];
                EXPECT_EQ(records[k].index, i);
                EXPECT_EQ(records[k].code, code(i)) << i;
                EXPECT_EQ(records[k].argument1, arguments[i].re);
                EXPECT_EQ(records[k].argument1_imag, arguments[i].im);
                EXPECT_EQ(records[k].result1, r[i].re);
                EXPECT_EQ(records[k].result1_imag, r[i].im);
                r[i] = {5, -6};
            }
            EXPECT_EQ(std::memcmp(result.data(), r.data(), n * sizeof r[0]), 0);
        }
}
TEST(Complex, ReportsOfWholeGroups) {
    in_fresh_thread([] {
        for (const Range& range : ranges) {
            expect_reports<kef_complex8>(range);
            expect_reports<kef_complex16>(range);
        }
    });
}

}  // namespace
}  // namespace kef_test
