// How good the references of tests/reference.def are, on their own intervals:
//
//   g++ -std=gnu++20 -O2 -I. tools/check_references.cpp -lquadmath -lmpfr -lgmp   the 113-bit
//   values g++ -m32 -msse2 -mfpmath=sse -std=gnu++20 -O2 -I. ... -lquadmath              the 80-bit
//   values
//
//   check_references [function...]
//
// Compares the 113-bit expressions with MPFR at 400 bits (where it is there) and the
// 80-bit ones with the 113-bit ones. Ends with status 1 where less than 100 bits
// hold, or an 80-bit value is worse than its row says.
#include <cstdio>
#include <cstdlib>
#include <string>

#include "tests/reference.h"

#if !defined(__i386__) && __has_include(<mpfr.h>)
#include <mpfr.h>
#define KEF_HAS_MPFR 1
#endif

using namespace kef::reference;

#if KEF_HAS_MPFR
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

// r = f(x, y); r holds the 113-bit value at first.
using Function = void (*)(mpfr_t r, const mpfr_t x, const mpfr_t y, const Scalars& c);
struct Row {
    std::string_view name;
    Function value, value2 = nullptr;
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

#define KEF_BODY                                                                   \
    [](mpfr_t r, [[maybe_unused]] const mpfr_t x, [[maybe_unused]] const mpfr_t y, \
       [[maybe_unused]] const Scalars& c)
#define KEF_1(name, f)                          \
    {#name, KEF_BODY{mpfr_##f(r, x, MPFR_RNDN); \
    }                                           \
    }                                           \
    ,
#define KEF_2(name, f)                             \
    {#name, KEF_BODY{mpfr_##f(r, x, y, MPFR_RNDN); \
    }                                              \
    }                                              \
    ,
const Row rows[] = {
    KEF_1(Abs, abs) KEF_1(Sqr, sqr) KEF_1(Sqrt, sqrt) KEF_1(InvSqrt, rec_sqrt) KEF_1(Cbrt, cbrt)
        KEF_1(Exp, exp) KEF_1(Expm1, expm1) KEF_1(Ln, log) KEF_1(Log10, log10) KEF_1(Log1p, log1p)
            KEF_1(Sin, sin) KEF_1(Cos, cos) KEF_1(Tan, tan) KEF_1(Asin, asin) KEF_1(
                Acos, acos) KEF_1(Atan, atan) KEF_1(Sinh, sinh) KEF_1(Cosh, cosh) KEF_1(Tanh, tanh)
                KEF_1(Asinh, asinh) KEF_1(Acosh, acosh) KEF_1(Atanh, atanh) KEF_1(Erf, erf) KEF_1(
                    Erfc, erfc) KEF_1(TGamma, gamma) KEF_2(Add, add) KEF_2(Sub, sub) KEF_2(Mul, mul)
                    KEF_2(Div, div) KEF_2(Hypot, hypot) KEF_2(Pow, pow) KEF_2(Powx, pow)
                        KEF_2(Atan2, atan2){"Inv", KEF_BODY{mpfr_ui_div(r, 1, x, MPFR_RNDN);
}  // namespace
}
, {"Ceil", KEF_BODY{mpfr_ceil(r, x);
}
}
, {"Floor", KEF_BODY{mpfr_floor(r, x);
}
}
, {"Trunc", KEF_BODY{mpfr_trunc(r, x);
}
}
, {"Round", KEF_BODY{mpfr_round(r, x);
}
}
, {"Rint", KEF_BODY{mpfr_rint(r, x, MPFR_RNDN);
}
}
, {"NearbyInt", KEF_BODY{mpfr_rint(r, x, MPFR_RNDN);
}
}
, {"Modf", KEF_BODY{mpfr_trunc(r, x);
}
, KEF_BODY { mpfr_frac(r, x, MPFR_RNDN); }
}
, {"SinCos", KEF_BODY{mpfr_sin(r, x, MPFR_RNDN);
}
, KEF_BODY { mpfr_cos(r, x, MPFR_RNDN); }
}
, {"InvCbrt", KEF_BODY{mpfr_cbrt(r, x, MPFR_RNDN);
mpfr_ui_div(r, 1, r, MPFR_RNDN);
}
}
, {"Pow2o3", KEF_BODY{mpfr_cbrt(r, x, MPFR_RNDN);
mpfr_sqr(r, r, MPFR_RNDN);
}
}
, {"Pow3o2", KEF_BODY{mpfr_sqrt(r, x, MPFR_RNDN);
mpfr_mul(r, r, x, MPFR_RNDN);
}
}
, {"LGamma", KEF_BODY{int sign;
mpfr_lgamma(r, &sign, x, MPFR_RNDN);
}
}
, {"CdfNorm", KEF_BODY{error_function_complement_of_root(r, x);
}
}
, {"ErfInv", KEF_BODY{improve_root(r, x, false);
}
}
, {"ErfcInv", KEF_BODY{improve_root(r, x, true);
}
}
, {"CdfNormInv", KEF_BODY{Big root, q;
mpfr_sqrt_ui(root.v, 2, MPFR_RNDN);
mpfr_neg(root.v, root.v, MPFR_RNDN);
mpfr_div(r, r, root.v, MPFR_RNDN);
mpfr_mul_2ui(q.v, x, 1, MPFR_RNDN);
improve_root(r, q.v, true);
mpfr_mul(r, r, root.v, MPFR_RNDN);
}
}
, {"LinearFrac", KEF_BODY{Big below;
mpfr_mul_d(r, x, c[0], MPFR_RNDN);
mpfr_add_d(r, r, c[1], MPFR_RNDN);
mpfr_mul_d(below.v, y, c[2], MPFR_RNDN);
mpfr_add_d(below.v, below.v, c[3], MPFR_RNDN);
mpfr_div(r, r, below.v, MPFR_RNDN);
}
}
,
}
;

// Relative error of the 113-bit value.
double exact_error(std::string_view name, int j, double x, double y, const Scalars& c, quad value,
                   double least) {
    for (const Row& row : rows) {
        if (row.name != name) continue;
        const Big a(x), b(y), got(value);
        Big r(value);
        (j ? row.value2 : row.value)(r.v, a.v, b.v, c);
        if (!mpfr_number_p(r.v) || !finiteq(value) || mpfr_zero_p(r.v))
            return mpfr_nan_p(r.v) ? (value != value ? 0 : INFINITY)
                                   : (mpfr_equal_p(r.v, got.v) ? 0 : INFINITY);
        Big size;
        mpfr_abs(size.v, r.v, MPFR_RNDN);
        if (mpfr_cmp_d(size.v, least) < 0) mpfr_set_d(size.v, least, MPFR_RNDN);
        mpfr_sub(r.v, r.v, got.v, MPFR_RNDN);
        mpfr_div(r.v, r.v, size.v, MPFR_RNDN);
        return std::fabs(mpfr_get_d(r.v, MPFR_RNDN));
    }
    std::fprintf(stderr, "no MPFR value for %s\n", std::string(name).c_str());
    std::exit(2);
}

}  // namespace
#endif

namespace {

struct Worst {
    double error = 0, a = 0, b = 0;
    void note(double e, double x, double y) {
        if (e > error) *this = {e, x, y};
    }
};

template <class T> bool check(const Reference& row, const char* type, int count) {
    std::vector<Interval> intervals = {row.main};
    for (const auto* more : {&row.both, std::is_same_v<T, float> ? &row.s : &row.d})
        intervals.insert(intervals.end(), more->begin(), more->end());
    intervals.push_back({everything, everything, row.main.scalars});
    Worst exact, screen;
    for (const Interval& interval : intervals) {
        Random random(row.name);
        const auto edges_a = edges<T>(interval.a), edges_b = edges<T>(interval.b);
        for (int i = 0; i < count; ++i) {
            const T a = i < int(edges_a.size()) ? edges_a[i] : random.draw<T>(interval.a, i & 1);
            const T b = i < int(edges_b.size()) ? edges_b[edges_b.size() - 1 - i]
                                                : random.draw<T>(interval.b, i & 2);
            const double least = a < 0 ? row.least : 0;
            for (int j = 0; j < (row.exact2 ? 2 : 1); ++j) {
                const quad value = (j ? row.exact2 : row.exact)(a, b, interval.scalars);
                const wide about = (j ? row.screen2 : row.screen)(a, b, interval.scalars);
                const quad size = std::max(fabsq(value), quad(least));
                // Beyond the range of T both are what they are.
                const bool outside =
                    !std::isfinite(static_cast<T>(value)) || static_cast<T>(2 * value) == 0;
                if (outside ? static_cast<T>(2 * value) != static_cast<T>(2 * about) &&
                                  !(value != value && about != about)
                            : value != quad(about))
                    screen.note(outside ? INFINITY : double(fabsq(value - about) / size * 0x1p63Q),
                                a, b);
#if KEF_HAS_MPFR
                if (!outside)
                    exact.note(exact_error(row.name, j, a, b, interval.scalars, value, least), a,
                               b);
#endif
            }
        }
    }
    const bool good = exact.error < 0x1p-100 && screen.error <= row.screen_error;
    std::printf("%s%-11s 80 bits: %8.3g of %g at %.17g %.17g", type, std::string(row.name).c_str(),
                screen.error, row.screen_error, screen.a, screen.b);
#if KEF_HAS_MPFR
    std::printf("   113 bits: %.1f at %.17g %.17g", -std::log2(exact.error), exact.a, exact.b);
#endif
    std::printf("%s\n", good ? "" : "  BAD");
    std::fflush(stdout);
    return good;
}

}  // namespace

int main(int argc, char** argv) {
#if KEF_HAS_MPFR
    mpfr_set_emin(-200000);
    mpfr_set_emax(200000);
    constexpr int count = 2000;
#else
    constexpr int count = 20000;
#endif
    bool good = true;
    for (const Reference& row : table()) {
        bool wanted = argc == 1;
        for (int i = 1; i < argc; ++i) wanted |= row.name == argv[i];
        if (!wanted) continue;
        good &= check<double>(row, "d", count);
        good &= check<float>(row, "s", count);
    }
    return good ? 0 : 1;
}
