// The C++ interface to vector math: agreement with the C functions, what is refused, and the scopes
// of element errors.
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstring>
#include <string>
#include <thread>

#include "tests/cxx_support.h"

namespace {

using cxx_test::refused;
using kef::ElementError;
using kef::Errors;
using kef::OnError;
using std::span;
using Complex = std::complex<double>;

template <class T> bool same_bits(const std::vector<T>& a, const std::vector<T>& b) {
    return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(T)) == 0;
}

// Calls that are wrong do not compile.
template <class... A> constexpr bool exp_takes = requires(A... a) {
    kef::exp(static_cast<A>(a)...);
};
using Vector = std::vector<double>;
static_assert(exp_takes<Vector&>);
static_assert(exp_takes<const Vector&, Vector&>);
static_assert(exp_takes<Vector, Vector&>);  // an argument may be a temporary
static_assert(exp_takes<span<const double>, span<double>, kef::Accuracy>);
static_assert(exp_takes<double (&)[3]>);
static_assert(!exp_takes<const Vector&>);
static_assert(!exp_takes<Vector&, const Vector&>);
static_assert(!exp_takes<Vector&, span<const double>>);
static_assert(!exp_takes<Vector&, Vector>);  // a result may not
static_assert(!exp_takes<Vector&, std::vector<float>&>);
static_assert(!exp_takes<std::vector<int>&>);
static_assert(!exp_takes<std::vector<bool>&>);
static_assert(!exp_takes<Vector&, Vector&, int>);
template <class X, class Y> constexpr bool erf_takes = requires(X x, Y y) { kef::erf(x, y); };
static_assert(!erf_takes<std::vector<Complex>&, std::vector<Complex>&>);
template <class X> constexpr bool abs_in_place = requires(X x) { kef::abs(x); };
static_assert(abs_in_place<Vector&> && !abs_in_place<std::vector<Complex>&>);
static_assert(!std::is_copy_constructible_v<Errors> && !std::is_move_assignable_v<Errors>);
static_assert(std::is_base_of_v<std::exception, ElementError>);

const Vector x5{0.5, 1.25, 2, 0.125, 3};

TEST(CxxVm, FunctionsAreTheKernelsOfTheirAccuracy) {
    Vector y(5), c(5);
    const auto expect = [&](auto&& kernel, auto&& call) {
        kernel();
        call();
        EXPECT_TRUE(same_bits(y, c));
    };
    const double* x = x5.data();
    double* r = c.data();
    expect([&] { _vtmdSin_HA(5, x, r); }, [&] { kef::sin(x5, y); });
    expect([&] { _vtmdSin_50(5, x, r); }, [&] { kef::sin(x5, y, kef::low); });
    expect([&] { _vtmdSin_26(5, x, r); }, [&] { kef::sin(x5, y, kef::enhanced); });
    expect([&] { _vtmdLn(5, x, r); }, [&] { kef::log(x5, y); });
    expect([&] { _vtmdSub(5, x, x + 0, r); }, [&] { kef::sub(x5, x5, y); });
    expect([&] { _vtmdPow(5, x, x, r); }, [&] { kef::pow(x5, x5, y); });
    expect([&] { _vtmdPowx(5, x, 1.7, r); }, [&] { kef::pow(x5, 1.7, y); });
    expect([&] { _vtmdLinearFrac(5, x, x, 2, 3, 5, 7, r); },
           [&] { kef::linear_frac(x5, x5, 2, 3, 5, 7, y); });
    expect([&] { _vtmdExp(5, x, r); },
           [&] {
               y = x5;
               kef::exp(y);
           });

    Vector z(5), cz(5);
    kef::modf(x5, y, z);
    _vtmdModf(5, x, c.data(), cz.data());
    EXPECT_TRUE(same_bits(y, c) && same_bits(z, cz));

    const std::vector<Complex> w{{1, 2}, {-3, 0.5}, {0, 1}};
    std::vector<Complex> v(3), u(3);
    const auto* cw = reinterpret_cast<const kef_complex16*>(w.data());
    kef::pow(w, {0.5, 1}, v);
    _vtmzPowx(3, cw, {0.5, 1}, reinterpret_cast<kef_complex16*>(u.data()));
    EXPECT_TRUE(same_bits(v, u));
    Vector modulus(3), angle(3);
    kef::abs(w, modulus);
    EXPECT_EQ(modulus[1], std::abs(w[1]));
    kef::cis(angle, v);
    EXPECT_EQ(v[2], Complex(1, 0));

    std::array<float, 3> f{1, 4, 9};
    kef::sqrt(f);
    EXPECT_EQ(f[2], 3);
    std::vector<std::complex<float>> g{{3, 4}};
    std::vector<float> m(1);
    kef::abs(g, m);
    EXPECT_EQ(m[0], 5);
}

TEST(CxxVm, GathersAndScatters) {
    const std::vector<float> x{0, 1, 2, 3, 4, 5, 6};
    std::vector<float> y(3);
    kef::pack_stride(x, 3, y);
    EXPECT_EQ(y, (std::vector<float>{0, 3, 6}));
    kef::pack_index(x, std::vector<std::int64_t>{6, 0, 5}, y);
    EXPECT_EQ(y, (std::vector<float>{6, 0, 5}));
    EXPECT_EQ(kef::pack_mask(x, std::vector<std::int32_t>{0, 1, 0, 0, -1, 0, 0}, y), 2u);
    EXPECT_EQ(y, (std::vector<float>{1, 4, 5}));
    std::vector<float> wide(7, -1);
    kef::unpack_stride(y, wide, 2);
    EXPECT_EQ(wide, (std::vector<float>{1, -1, 4, -1, 5, -1, -1}));
    kef::unpack_index(y, wide, std::vector<std::int32_t>{6, 5, 3});
    EXPECT_EQ(wide, (std::vector<float>{1, -1, 4, 5, 5, 4, 1}));
    EXPECT_EQ(kef::unpack_mask(y, wide, std::vector<std::int64_t>{0, 1, 0, 0, 0, 0, 1}), 2u);
    EXPECT_EQ(wide, (std::vector<float>{1, 1, 4, 5, 5, 4, 4}));

    const std::vector<std::int32_t> below{0, -1, 2}, beyond{0, 7, 2}, few{1, 1};
    const std::vector<std::int64_t> far{0, std::int64_t(1) << 40, 2}, all(7, 1);
    EXPECT_EQ(refused([&] { kef::pack_stride(x, 4, y); }), "kef::pack_stride: x");
    EXPECT_EQ(refused([&] { kef::pack_stride(x, 0, y); }), "kef::pack_stride: stride");
    EXPECT_EQ(refused([&] { kef::unpack_stride(y, wide, 4); }), "kef::unpack_stride: y");
    EXPECT_EQ(refused([&] { kef::pack_index(x, below, y); }), "kef::pack_index: index");
    EXPECT_EQ(refused([&] { kef::pack_index(x, beyond, y); }), "kef::pack_index: index");
    EXPECT_EQ(refused([&] { kef::pack_index(x, far, y); }), "kef::pack_index: index");
    EXPECT_EQ(refused([&] { kef::unpack_index(y, wide, beyond); }), "kef::unpack_index: index");
    EXPECT_EQ(refused([&] { kef::pack_index(x, few, y); }), "kef::pack_index: y");
    EXPECT_EQ(refused([&] { kef::pack_mask(x, all, y); }), "kef::pack_mask: y");
    EXPECT_EQ(refused([&] { kef::pack_mask(x, few, y); }), "kef::pack_mask: mask");
    EXPECT_EQ(refused([&] { kef::unpack_mask(y, wide, all); }), "kef::unpack_mask: x");
    EXPECT_EQ(refused([&] { kef::pack_stride(wide, 2, span(wide).first(4)); }),
              "kef::pack_stride: y");
    std::vector<std::int32_t> index(3);
    const span<float> on_index(reinterpret_cast<float*>(index.data()), 3);
    EXPECT_EQ(refused([&] { kef::pack_index(x, index, on_index); }), "kef::pack_index: y");
    kef::pack_index(x, std::vector<std::int32_t>{}, span<float>{});
}

// In every place of a vector of the passes and of what stands before and behind them.
template <class I> void passes_look_at_every_element(std::size_t start) {
    using Unsigned = std::make_unsigned_t<I>;
    using limits = std::numeric_limits<I>;
    using namespace kef::detail;
    for (std::size_t n = 1; n <= 150; n += n < 70 ? 1 : 13) {
        std::vector<I> indices(start + n + 16, -1), marks(start + n + 16, 1);
        I *const index = indices.data() + start, *const mask = marks.data() + start;
        std::fill_n(index, n, 8), std::fill_n(mask, n, 0);
        for (std::size_t i = 0; i < n; ++i) {
            for (const I wrong : {I(-1), I(9), limits::min(), limits::max()}) {
                index[i] = wrong;
                EXPECT_FALSE(indices_within(index, n, Unsigned(8)));
                if (in_lanes(n)) EXPECT_FALSE(indices_within_avx2(index, n, Unsigned(8)));
            }
            index[i] = I(i % 9);
            mask[i] = i % 2 ? limits::min() : I(1);
            EXPECT_EQ(marks_of(mask, n), i + 1);
            if (in_lanes(n)) EXPECT_EQ(marks_avx2(mask, n), i + 1);
        }
        EXPECT_TRUE(indices_within(index, n, Unsigned(8)));
        if (in_lanes(n)) EXPECT_TRUE(indices_within_avx2(index, n, Unsigned(8)));
    }
}
TEST(CxxVm, IndicesAndMarksAreLookedAtOneByOne) {
    for (const std::size_t start : {0, 1, 3, 4, 7}) {
        passes_look_at_every_element<std::int32_t>(start);
        passes_look_at_every_element<std::int64_t>(start);
    }
    // No index is within a range of no elements.
    const std::vector<std::int32_t> zero(16);
    std::vector<float> y(16);
    EXPECT_EQ(refused([&] { kef::pack_index(span<const float>{}, zero, y); }),
              "kef::pack_index: index");
}

TEST(CxxVm, RefusesSizesNullAndOverlaps) {
    Vector x(8, 1), y(8), z(8);
    const span<double> null(static_cast<double*>(nullptr), 8), v(x);
    EXPECT_EQ(refused([&] { kef::exp(x, span(y).first(7)); }), "kef::exp: y");
    EXPECT_EQ(refused([&] { kef::exp(null, y); }), "kef::exp: x");
    EXPECT_EQ(refused([&] { kef::exp(x, null); }), "kef::exp: y");
    EXPECT_EQ(refused([&] { kef::exp(null); }), "kef::exp: x");
    EXPECT_EQ(refused([&] { kef::exp(v.first(7), v.last(7)); }), "kef::exp: y");
    EXPECT_EQ(refused([&] { kef::exp(v.last(7), v.first(7)); }), "kef::exp: y");
    EXPECT_EQ(refused([&] { kef::add(x, span(y).first(2), z); }), "kef::add: b");
    EXPECT_EQ(refused([&] { kef::add(x, y, span(z).first(2)); }), "kef::add: y");
    EXPECT_EQ(refused([&] { kef::add(x, null, z); }), "kef::add: b");
    EXPECT_EQ(refused([&] { kef::add(v.first(4), v.subspan(1, 4), v.subspan(2, 4)); }),
              "kef::add: y");
    EXPECT_EQ(refused([&] { kef::add(span(y).first(4), v.first(4), v.subspan(3, 4)); }),
              "kef::add: y");
    EXPECT_EQ(refused([&] { kef::pow(v.first(4), 2, v.subspan(3, 4)); }), "kef::pow: y");
    EXPECT_EQ(refused([&] { kef::sincos(x, y, y); }), "kef::sincos: z");
    EXPECT_EQ(refused([&] { kef::sincos(v.first(4), span(y).first(4), v.subspan(3, 4)); }),
              "kef::sincos: z");
    EXPECT_EQ(refused([&] { kef::exp(x, y, kef::Accuracy(7)); }), "kef::exp: accuracy");
    EXPECT_EQ(y, Vector(8)) << "written by a call that was refused";
    try {
        kef::exp(x, span(y).first(7));
    } catch (const kef::Error& error) {
        EXPECT_STREQ(error.what(), "kef::exp: y has 7 elements, x 8");
        EXPECT_EQ(error.code(), VTM_STATUS_BADSIZE);
    }
    // A modulus is smaller than its number: there is no result in place.
    std::vector<Complex> c(4);
    const span<double> parts(reinterpret_cast<double*>(c.data()), 8);
    EXPECT_EQ(refused([&] { kef::abs(c, parts.first(4)); }), "kef::abs: y");
    EXPECT_EQ(refused([&] { kef::abs(c, parts.last(4)); }), "kef::abs: y");

    // What is allowed: neighbours, the same range, overlapping arguments, nothing at all.
    kef::exp(v.first(4), v.last(4));
    kef::add(x, x, x);
    kef::add(v.first(4), v.subspan(1, 4), span(y).first(4));
    kef::sincos(x, x, y);
    kef::exp(span<double>{});
    kef::exp(Vector{}, span<double>{});
}

TEST(CxxVm, LongVectorsGoInPieces) {
    Vector x(10, 1), y(10);
    x[0] = x[7] = x[9] = -1;
    std::vector<std::size_t> indices;
    Errors scope([&](kef::ElementReport& report) { indices.push_back(report.index); });
    kef::detail::call_in_pieces("kef::log", kef_vtm_kernel_dLn_ttab[1], 4, 10, x.data(), y.data());
    EXPECT_EQ(indices, (std::vector<std::size_t>{0, 7, 9}));
    EXPECT_EQ(y[8], 0);
    EXPECT_TRUE(std::isnan(y[9]));
    kef::detail::call_in_pieces("kef::pow", kef_vtm_kernel_dPowx_ttab[1], 3, 10, x.data(), 2.0,
                                y.data());
    EXPECT_EQ(y, Vector(10, 1));
}

struct Control {
    std::uint32_t mode = kef_vtm_kernel_GetMode();
    kef_vtm_error_callback callback = kef_vtm_kernel_GetErrorCallBack();
    bool operator==(const Control&) const = default;
};

TEST(CxxErrors, RaiseGivesTheFirstElement) {
    const Vector x{1, 0, -2, 4};
    Vector y(4);
    const Control before;
    try {
        Errors scope(OnError::raise);
        kef::log(x, y);
        FAIL();
    } catch (const ElementError& error) {
        EXPECT_EQ(error.index(), 1u);
        EXPECT_EQ(error.code(), VTM_STATUS_SING);
        EXPECT_STREQ(error.what(),
                     "kef::log: element 1, argument 0: an argument is a pole of the function");
    }
    EXPECT_EQ(Control(), before);
    EXPECT_EQ(y[3], std::log(4.0)) << "elements behind the error";
    kef::log(x, y);  // as C does: nothing is thrown

    Errors scope(OnError::raise);
    const std::vector<Complex> zero(1);
    std::vector<Complex> w(1);
    try {
        kef::div(std::vector<Complex>{{1, 2}}, zero, w);
        FAIL();
    } catch (const ElementError& error) {
        EXPECT_EQ(error.report().argument1, Complex(1, 2));
        EXPECT_STREQ(
            error.what(),
            "kef::div: element 0, argument 1+2i, 0: an argument is a pole of the function");
    }
    kef::log(Vector{1, 2}, span(y).first(2));  // what was thrown is not thrown again
}

TEST(CxxErrors, CollectAndIgnoreNest) {
    const Vector x{-1, 1, 0};
    Vector y(3);
    const Control before;
    {
        Errors outer(OnError::collect);
        kef::log(x, y);
        const Control inside;
        {
            Errors quiet(OnError::ignore);
            kef::log(x, y);
            Errors inner(OnError::collect);
            kef::sqrt(x, y);
            EXPECT_EQ(inner.reports().size(), 1u);
        }
        EXPECT_EQ(Control(), inside);
        kef::sqrt(x, y);
        ASSERT_EQ(outer.reports().size(), 3u);
        EXPECT_EQ(outer.reports()[1].function, "kef::log");
        EXPECT_EQ(outer.reports()[1].index, 2u);
        EXPECT_EQ(outer.reports()[2].function, "kef::sqrt");
        outer.clear();
        // A thread of its own has no scope.
        std::thread([&] { kef::log(x, y); }).join();
        EXPECT_TRUE(outer.reports().empty());
    }
    EXPECT_EQ(Control(), before);
}

int caller_callback(kef_vtm_error_record*) { return 1; }

TEST(CxxErrors, ControlComesBackWhateverItWas) {
    const Control first;
    for (const std::uint32_t mode : {std::uint32_t(VTM_EP | VTM_ERRMODE_STDERR | VTM_ERRMODE_ERRNO),
                                     std::uint32_t(VTM_LA | VTM_ERRMODE_IGNORE)}) {
        for (const kef_vtm_error_callback callback : {kef_vtm_error_callback(), &caller_callback}) {
            kef_vtm_kernel_SetErrorCallBack(callback);
            kef_vtm_kernel_SetMode(mode);
            const Control before;
            for (const OnError what : {OnError::raise, OnError::collect, OnError::ignore}) {
                try {
                    Errors scope(what);
                    EXPECT_EQ(kef_vtm_kernel_GetMode() & VTM_ACCURACY_MASK,
                              mode & VTM_ACCURACY_MASK);
                    Vector y(1);
                    kef::log(Vector{-1}, y);
                    throw 7;
                } catch (const ElementError&) { EXPECT_EQ(what, OnError::raise); } catch (int) {
                    EXPECT_NE(what, OnError::raise);
                }
                EXPECT_EQ(Control(), before);
            }
        }
    }
    kef_vtm_kernel_SetErrorCallBack(first.callback);
    kef_vtm_kernel_SetMode(first.mode);
    EXPECT_EQ(refused([] { Errors scope{OnError(9)}; }), "kef::Errors: what");
    EXPECT_EQ(refused([] { Errors scope{Errors::Handler()}; }), "kef::Errors: handler");
    EXPECT_EQ(Control(), first) << "after a scope that did not begin";
}

TEST(CxxErrors, HandlersReplaceThrowAndCall) {
    const Vector x{0, 1, -1, 2};
    Vector y(4);
    int calls = 0;
    {
        Errors scope([&](kef::ElementReport& report) {
            ++calls;
            Vector inner{double(report.index)};
            kef::add(inner, inner, inner);
            kef::exp(inner);
            if (report.code == VTM_STATUS_SING) report.result1 = -100 - double(report.index);
        });
        kef::log(x, y);
        EXPECT_EQ(calls, 2);
        EXPECT_EQ(y[0], -100);
        EXPECT_TRUE(std::isnan(y[2]));
        const std::vector<Complex> zero(2);
        std::vector<Complex> w(2);
        Errors second([](kef::ElementReport& report) { report.result1 = {1, -2}; });
        kef::log(zero, w);
        EXPECT_EQ(w[1], Complex(1, -2));
    }
    calls = 0;
    const Control before;
    try {
        Errors scope([&](kef::ElementReport&) {
            ++calls;
            throw std::string("from the handler");
        });
        kef::log(x, y);
        FAIL();
    } catch (const std::string& words) { EXPECT_EQ(words, "from the handler"); }
    EXPECT_EQ(calls, 1) << "called again after it has thrown";
    EXPECT_EQ(y[3], std::log(2.0));
    EXPECT_EQ(Control(), before);

    // A call inside a handler throws there; its error is the outer call's.
    calls = 0;
    Errors scope([&](kef::ElementReport& report) {
        if (++calls == 1) kef::sqrt(Vector{-4}, span(y).first(1));
        else throw report.function;
    });
    try {
        kef::log(x, y);
        FAIL();
    } catch (const std::string& function) { EXPECT_EQ(function, "kef::sqrt"); }
}

TEST(CxxErrors, CallsOfCFunctionsWaitForCheck) {
    Errors scope(OnError::raise);
    const double x = -1;
    double y;
    _vtmdLn(1, &x, &y);
    EXPECT_THROW(scope.check(), ElementError);
    scope.check();
}

}  // namespace
