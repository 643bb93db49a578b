// How good the references of tests/reference.def are, on their own intervals:
//
//   g++ -std=gnu++20 -O2 -I. tools/check_references.cpp -lquadmath -lmpc -lmpfr -lgmp
//       the 113-bit values
//   g++ -m32 -msse2 -mfpmath=sse -std=gnu++20 -O2 -I. ... -lquadmath
//       the 80-bit values
//
//   check_references [function...]
//
// Compares the 113-bit expressions with MPFR, those of complex functions with MPC, at 400 bits
// (where they are there) and the 80-bit ones with the 113-bit ones, by component. Ends with status
// 1 where less than 100 bits hold, or an 80-bit value is worse than its row says.
#include <cstdio>
#include <cstdlib>
#include <string>

#include "tests/reference.h"

#if !defined(__i386__) && __has_include(<mpc.h>)
#include <mpc.h>
#define KEF_HAS_MPC 1
#endif

using namespace kef::reference;

namespace {

template <class T> double condition_of(const Reference& row, const Point<T>& at) {
    const double components[] = {at[0], at[1], at[2], at[3]};
    return row.condition(components);
}

}  // namespace

#if KEF_HAS_MPC
namespace {

struct Big {
    mpfr_t v;
    Big() { mpfr_init2(v, 400); }
    explicit Big(quad x) : Big() {
        char text[64];
        quadmath_snprintf(text, sizeof text, "%Qa", x);
        mpfr_set_str(v, text, 0, MPFR_RNDN);
    }
    Big(const Big&) = delete;
    ~Big() { mpfr_clear(v); }
};

void error_function_complement_of_root(mpfr_t r, const mpfr_t x) {  // r = cdf_norm(x)
    mpfr_sqrt_ui(r, 2, MPFR_RNDN);
    mpfr_div(r, x, r, MPFR_RNDN);
    mpfr_neg(r, r, MPFR_RNDN);
    mpfr_erfc(r, r, MPFR_RNDN);
    mpfr_div_ui(r, r, 2, MPFR_RNDN);
}

// Newton: r -= (f(r) - y) / f'(r), f = erf or erfc, f' = +-2/sqrt(pi) exp(-r^2).
void improve_root(mpfr_t r, const mpfr_t y, bool complement) {
    if (!mpfr_regular_p(r)) return;
    Big residual, slope;
    for (int i = 0; i < 2; ++i) {
        (complement ? mpfr_erfc : mpfr_erf)(residual.v, r, MPFR_RNDN);
        mpfr_sub(residual.v, residual.v, y, MPFR_RNDN);
        mpfr_sqr(slope.v, r, MPFR_RNDN);
        mpfr_neg(slope.v, slope.v, MPFR_RNDN);
        mpfr_exp(slope.v, slope.v, MPFR_RNDN);
        mpfr_div(residual.v, residual.v, slope.v, MPFR_RNDN);
        mpfr_const_pi(slope.v, MPFR_RNDN);
        mpfr_sqrt(slope.v, slope.v, MPFR_RNDN);
        mpfr_mul(residual.v, residual.v, slope.v, MPFR_RNDN);
        mpfr_div_2ui(residual.v, residual.v, 1, MPFR_RNDN);
        (complement ? mpfr_add : mpfr_sub)(r, r, residual.v, MPFR_RNDN);
    }
}

// r = f(x, y); r holds the 113-bit value at first.
using Function = void (*)(mpfr_t r, const mpfr_t x, const mpfr_t y, const Scalars& c);
struct Row {
    std::string_view name;
    Function value, value2 = nullptr;
};
// r = f(z, w).
using ComplexFunction = void (*)(mpc_t r, const mpc_t z, const mpc_t w);
struct ComplexRow {
    std::string_view name;
    ComplexFunction value;
};

// MPC's tangent has no value where e^(-2|y|) leaves the range of exponents; from |y| = 10^5 on the
// result is the same to 400 bits, or too small.
void tangent(mpc_t r, const mpc_t z, bool hyperbolic) {
    mpc_set(r, z, MPC_RNDNN);
    const mpfr_ptr size = hyperbolic ? mpc_realref(r) : mpc_imagref(r);
    if (mpfr_cmp_d(size, 1e5) > 0) mpfr_set_d(size, 1e5, MPFR_RNDN);
    if (mpfr_cmp_d(size, -1e5) < 0) mpfr_set_d(size, -1e5, MPFR_RNDN);
    (hyperbolic ? mpc_tanh : mpc_tan)(r, r, MPC_RNDNN);
}

// MPC's inverse sine takes forever where the parts are of very different size: -i ln(iz + sqrt(1 -
// z^2)), with the bits that cancel.
void inverse_sine(mpc_t r, const mpc_t z) {
    mpc_t root, iz;
    long bits = 600;
    for (const mpfr_srcptr part : {mpc_realref(z), mpc_imagref(z)})
        if (mpfr_regular_p(part)) bits += 3 * std::labs(mpfr_get_exp(part));
    for (mpc_t* number : {&root, &iz}) mpc_init2(*number, bits);
    mpc_sqr(root, z, MPC_RNDNN);
    mpc_ui_sub(root, 1, root, MPC_RNDNN);
    mpc_sqrt(root, root, MPC_RNDNN);
    mpc_mul_i(iz, z, 1, MPC_RNDNN);
    mpc_add(root, root, iz, MPC_RNDNN);
    mpc_log(root, root, MPC_RNDNN);
    mpc_mul_i(r, root, -1, MPC_RNDNN);
    for (mpc_t* number : {&root, &iz}) mpc_clear(*number);
}
void inverse_hyperbolic_sine(mpc_t r, const mpc_t z) {
    mpc_mul_i(r, z, 1, MPC_RNDNN);
    inverse_sine(r, r);
    mpc_mul_i(r, r, -1, MPC_RNDNN);
}

// clang-format off
#define KEF_BODY                                                                   \
    [](mpfr_t r, [[maybe_unused]] const mpfr_t x, [[maybe_unused]] const mpfr_t y, \
       [[maybe_unused]] const Scalars& c)
#define KEF_1(name, f) {#name, KEF_BODY { mpfr_##f(r, x, MPFR_RNDN); }},
#define KEF_2(name, f) {#name, KEF_BODY { mpfr_##f(r, x, y, MPFR_RNDN); }},
const Row rows[] = {
    KEF_1(Abs, abs) KEF_1(Sqr, sqr) KEF_1(Sqrt, sqrt) KEF_1(InvSqrt, rec_sqrt) KEF_1(Cbrt, cbrt)
    KEF_1(Exp, exp) KEF_1(Expm1, expm1) KEF_1(Ln, log) KEF_1(Log10, log10) KEF_1(Log1p, log1p)
    KEF_1(Sin, sin) KEF_1(Cos, cos) KEF_1(Tan, tan) KEF_1(Asin, asin) KEF_1(Acos, acos)
    KEF_1(Atan, atan) KEF_1(Sinh, sinh) KEF_1(Cosh, cosh) KEF_1(Tanh, tanh) KEF_1(Asinh, asinh)
    KEF_1(Acosh, acosh) KEF_1(Atanh, atanh) KEF_1(Erf, erf) KEF_1(Erfc, erfc) KEF_1(TGamma, gamma)
    KEF_1(Rint, rint) KEF_1(NearbyInt, rint)
    KEF_2(Add, add) KEF_2(Sub, sub) KEF_2(Mul, mul) KEF_2(Div, div) KEF_2(Hypot, hypot)
    KEF_2(Pow, pow) KEF_2(Powx, pow) KEF_2(Atan2, atan2)
    {"Inv", KEF_BODY { mpfr_ui_div(r, 1, x, MPFR_RNDN); }},
    {"Ceil", KEF_BODY { mpfr_ceil(r, x); }},
    {"Floor", KEF_BODY { mpfr_floor(r, x); }},
    {"Trunc", KEF_BODY { mpfr_trunc(r, x); }},
    {"Round", KEF_BODY { mpfr_round(r, x); }},
    {"Modf", KEF_BODY { mpfr_trunc(r, x); }, KEF_BODY { mpfr_frac(r, x, MPFR_RNDN); }},
    {"SinCos", KEF_BODY { mpfr_sin(r, x, MPFR_RNDN); }, KEF_BODY { mpfr_cos(r, x, MPFR_RNDN); }},
    {"InvCbrt", KEF_BODY {
        mpfr_cbrt(r, x, MPFR_RNDN);
        mpfr_ui_div(r, 1, r, MPFR_RNDN);
    }},
    {"Pow2o3", KEF_BODY {
        mpfr_cbrt(r, x, MPFR_RNDN);
        mpfr_sqr(r, r, MPFR_RNDN);
    }},
    {"Pow3o2", KEF_BODY {
        mpfr_sqrt(r, x, MPFR_RNDN);
        mpfr_mul(r, r, x, MPFR_RNDN);
    }},
    {"LGamma", KEF_BODY {
        int sign;
        mpfr_lgamma(r, &sign, x, MPFR_RNDN);
    }},
    {"CdfNorm", KEF_BODY { error_function_complement_of_root(r, x); }},
    {"ErfInv", KEF_BODY { improve_root(r, x, false); }},
    {"ErfcInv", KEF_BODY { improve_root(r, x, true); }},
    {"CdfNormInv", KEF_BODY {
        Big root, q;
        mpfr_sqrt_ui(root.v, 2, MPFR_RNDN);
        mpfr_neg(root.v, root.v, MPFR_RNDN);
        mpfr_div(r, r, root.v, MPFR_RNDN);
        mpfr_mul_2ui(q.v, x, 1, MPFR_RNDN);
        improve_root(r, q.v, true);
        mpfr_mul(r, r, root.v, MPFR_RNDN);
    }},
    {"LinearFrac", KEF_BODY {
        Big below;
        mpfr_mul_d(r, x, c[0], MPFR_RNDN);
        mpfr_add_d(r, r, c[1], MPFR_RNDN);
        mpfr_mul_d(below.v, y, c[2], MPFR_RNDN);
        mpfr_add_d(below.v, below.v, c[3], MPFR_RNDN);
        mpfr_div(r, r, below.v, MPFR_RNDN);
    }},
};

#define KEF_COMPLEX_BODY \
    [](mpc_t r, [[maybe_unused]] const mpc_t z, [[maybe_unused]] const mpc_t w)
#define KEF_Z(name, f) {#name, KEF_COMPLEX_BODY { mpc_##f(r, z, MPC_RNDNN); }},
#define KEF_ZW(name, f) {#name, KEF_COMPLEX_BODY { mpc_##f(r, z, w, MPC_RNDNN); }},
#define KEF_PARTS(name, re, im) {#name, KEF_COMPLEX_BODY { re; im; }},
const ComplexRow complex_rows[] = {
    KEF_Z(Conj, conj) KEF_Z(Exp, exp) KEF_Z(Ln, log) KEF_Z(Log10, log10) KEF_Z(Sqrt, sqrt)
    KEF_Z(Sin, sin) KEF_Z(Cos, cos) KEF_Z(Sinh, sinh) KEF_Z(Cosh, cosh)
    KEF_Z(Acos, acos) KEF_Z(Atan, atan) 
    KEF_Z(Acosh, acosh) KEF_Z(Atanh, atanh)
    KEF_ZW(Add, add) KEF_ZW(Sub, sub) KEF_ZW(Mul, mul) KEF_ZW(Div, div) KEF_ZW(Pow, pow)
    KEF_ZW(Powx, pow)
    KEF_PARTS(MulByConj, mpc_conj(r, w, MPC_RNDNN), mpc_mul(r, z, r, MPC_RNDNN))
    {"Asin", KEF_COMPLEX_BODY { inverse_sine(r, z); }},
    {"Asinh", KEF_COMPLEX_BODY { inverse_hyperbolic_sine(r, z); }},
    {"Tan", KEF_COMPLEX_BODY { tangent(r, z, false); }},
    {"Tanh", KEF_COMPLEX_BODY { tangent(r, z, true); }},
    KEF_PARTS(Abs, mpc_abs(mpc_realref(r), z, MPFR_RNDN), mpfr_set_zero(mpc_imagref(r), 1))
    KEF_PARTS(Arg, mpc_arg(mpc_realref(r), z, MPFR_RNDN), mpfr_set_zero(mpc_imagref(r), 1))
    KEF_PARTS(CIS, mpfr_cos(mpc_realref(r), mpc_realref(z), MPFR_RNDN),
              mpfr_sin(mpc_imagref(r), mpc_realref(z), MPFR_RNDN))
};
// clang-format on

// |value - exact| relative to |exact|, or to `least` where that is more. `exact` is changed.
double relative_error(mpfr_t exact, quad value, const mpfr_t least) {
    const Big got(value);
    if (!mpfr_number_p(exact) || !finiteq(value) || (mpfr_zero_p(exact) && mpfr_zero_p(least)))
        return mpfr_nan_p(exact) ? (value != value ? 0 : INFINITY)
                                 : (mpfr_equal_p(exact, got.v) ? 0 : INFINITY);
    Big size;
    mpfr_abs(size.v, exact, MPFR_RNDN);
    if (mpfr_cmp(size.v, least) < 0) mpfr_set(size.v, least, MPFR_RNDN);
    mpfr_sub(exact, exact, got.v, MPFR_RNDN);
    mpfr_div(exact, exact, size.v, MPFR_RNDN);
    return std::fabs(mpfr_get_d(exact, MPFR_RNDN));
}

template <class Rows> const auto& row_of(const Rows& rows, std::string_view name) {
    for (const auto& row : rows)
        if (row.name == name) return row;
    std::fprintf(stderr, "no value at 400 bits for %s\n", std::string(name).c_str());
    std::exit(2);
}

// Relative errors of the 113-bit values.
template <class T>
std::array<double, 2> exact_errors(const Reference& reference, const Point<T>& at, const Scalars& c,
                                   const Values<quad>& values, double least) {
    std::array<double, 2> errors = {};
    const Big x(at[0]), y(at[1]), u(at[2]), v(at[3]);
    if (reference.complex()) {
        mpc_t z, w, r;
        for (mpc_t* number : {&z, &w, &r}) mpc_init2(*number, 400);
        mpc_set_fr_fr(z, x.v, y.v, MPC_RNDNN);
        mpc_set_fr_fr(w, u.v, v.v, MPC_RNDNN);
        row_of(complex_rows, reference.name).value(r, z, w);
        Big floor;
        mpfr_set_zero(floor.v, 1);
        if (reference.condition) {
            mpc_abs(floor.v, r, MPFR_RNDN);
            mpfr_mul_d(floor.v, floor.v, condition_of(reference, at), MPFR_RNDN);
        }
        errors = {relative_error(mpc_realref(r), values[0], floor.v),
                  relative_error(mpc_imagref(r), values[1], floor.v)};
        for (mpc_t* number : {&z, &w, &r}) mpc_clear(*number);
    } else {
        const Row& row = row_of(rows, reference.name);
        const Big floor{quad(least)};
        for (int j = 0; j < (row.value2 ? 2 : 1); ++j) {
            Big r(values[j]);
            (j ? row.value2 : row.value)(r.v, x.v, y.v, c);
            errors[j] = relative_error(r.v, values[j], floor.v);
        }
    }
    return errors;
}

}  // namespace
#endif

namespace {

template <class T> struct Worst {
    double error = 0;
    Point<T> at = {};
    void note(double e, const Point<T>& x) {
        if (e > error) *this = {e, x};
    }
    std::string place(std::size_t components) const {
        std::string result;
        for (std::size_t c = 0; c < components; ++c) {
            char text[40];
            std::snprintf(text, sizeof text, " %.17g", static_cast<double>(at[c]));
            result += text;
        }
        return result;
    }
};

template <class T> bool check(const Reference& row, const char* type, int count) {
    std::vector<Interval> intervals = {row.main};
    for (const auto* more : {&row.both, std::is_same_v<T, float> ? &row.s : &row.d})
        intervals.insert(intervals.end(), more->begin(), more->end());
    intervals.push_back(row.whole);
    intervals.back().scalars = row.main.scalars;
    Worst<T> exact, screen;
    for (const Interval& interval : intervals) {
        Random random(row.name);
        const auto ranges = interval.ranges(row.complex());
        std::vector<std::vector<T>> edges_of;
        for (const Range& range : ranges) {
            edges_of.push_back(range.by ? std::vector<T>() : edges<T>(range));
            if (row.complex())
                std::erase_if(edges_of.back(), [](T x) { return !std::isfinite(x); });
        }
        for (int i = 0; i < count; ++i) {
            Point<T> at = {};
            double before[4] = {};
            for (std::size_t c = 0; c < ranges.size(); ++c) {
                // Edges against those of the other argument, then beside random components.
                const auto n = static_cast<int>(edges_of[c].size());
                const bool edge = c % 2 == 0 || i < n ? i < n : i % 8 == 0 && n > 0;
                at[c] = edge ? edges_of[c][c % 2 == 0 ? i : (n - 1 - i % n)]
                             : random.draw<T>(ranges[c], i >> c & 1, before);
                before[c] = at[c];
            }
            if (row.complex() &&
                !std::all_of(at.begin(), at.end(), [](T x) { return std::isfinite(x); }))
                continue;
            const double least = row.complex() || !(at[0] < 0) ? 0 : row.least;
            const Values<quad> value = row.value<quad>(at, interval.scalars);
            const Values<wide> about = row.value<wide>(at, interval.scalars);
            quad floor = least;
            if (row.condition)
                floor = sqrt(value[0] * value[0] + value[1] * value[1]) * condition_of(row, at);
            bool outside[2];
            for (int j = 0; j < 2; ++j) {
                // Beyond the range of T both are what they are.
                outside[j] =
                    !std::isfinite(static_cast<T>(value[j])) || static_cast<T>(2 * value[j]) == 0;
                if (outside[j] && row.condition) continue;
                if (outside[j] ? static_cast<T>(2 * value[j]) != static_cast<T>(2 * about[j]) &&
                                     !(value[j] != value[j] && about[j] != about[j])
                               : value[j] != quad(about[j]))
                    screen.note(outside[j] ? INFINITY
                                           : double(fabsq(value[j] - about[j]) /
                                                    std::max(fabsq(value[j]), floor) * 0x1p63Q),
                                at);
            }
#if KEF_HAS_MPC
            if (outside[0] && outside[1]) continue;
            const auto errors = exact_errors(row, at, interval.scalars, value, least);
            for (int j = 0; j < 2; ++j)
                if (!outside[j]) exact.note(errors[j], at);
#endif
        }
    }
    const std::size_t components = row.whole.ranges(row.complex()).size();
    const bool good = exact.error < 0x1p-100 && screen.error <= row.screen_error;
    std::printf("%s%-11s 80 bits: %8.3g of %g at%s", type, std::string(row.name).c_str(),
                screen.error, row.screen_error, screen.place(components).c_str());
#if KEF_HAS_MPC
    std::printf("   113 bits: %.1f at%s", -std::log2(exact.error), exact.place(components).c_str());
#endif
    std::printf("%s\n", good ? "" : "  BAD");
    std::fflush(stdout);
    return good;
}

}  // namespace

int main(int argc, char** argv) {
#if KEF_HAS_MPC
    mpfr_set_emin(-200000);
    mpfr_set_emax(200000);
    constexpr int count = 2000;
#else
    constexpr int count = 20000;
#endif
    bool good = true;
    for (const Reference& row : table()) {
        const std::string name(row.name);
        const std::string single = (row.complex() ? "c" : "s") + name;
        const std::string twice = (row.complex() ? "z" : "d") + name;
        bool both = argc == 1;
        for (int i = 1; i < argc; ++i) both |= name == argv[i];
        const auto named = [&](const std::string& typed) {
            for (int i = 1; i < argc; ++i)
                if (typed == argv[i]) return true;
            return both;
        };
        if (named(twice)) good &= check<double>(row, twice.substr(0, 1).c_str(), count);
        if (named(single)) good &= check<float>(row, single.substr(0, 1).c_str(), count);
    }
    return good ? 0 : 1;
}
