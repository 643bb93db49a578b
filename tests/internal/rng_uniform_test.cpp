// Uniform numbers and bits over a stream.
#include <cmath>
#include <cstring>
#include <limits>

#include "distributions/frame.h"
#include "tests/rng_streams.h"

namespace {

// A generator of a test: its numbers are scripted, every call is counted.
std::vector<double> script;
std::vector<int> calls;
std::int32_t script_status = VTS_STATUS_OK;
std::int32_t scripted_init(std::int32_t, kef_stream*, std::int32_t, const std::uint32_t*) {
    return 0;
}
template <class Real> std::int32_t scripted(kef_stream*, std::int32_t n, Real* r, Real, Real) {
    calls.push_back(n);
    for (std::int32_t i = 0; i < n; ++i) r[i] = static_cast<Real>(script[i % script.size()]);
    return script_status;
}
std::int32_t scripted_bits(kef_stream*, std::int32_t, void*) { return 0; }

std::int32_t scripted_brng() {
    static const std::int32_t id = [] {
        const kef_brng brng = {sizeof(kef_stream_header),
                               1,
                               1,
                               4,
                               32,
                               scripted_init,
                               scripted<float>,
                               scripted<double>,
                               scripted_bits};
        return __vtsRegisterBrng(&brng);
    }();
    return id;
}

TEST(RngUniform, AccurateClamps) {
    const Stream stream = make_stream(scripted_brng());
    script = {-2.0, -1.0000001, -1.0, 0.25, 2.0, 2.0000005, 7.0};
    script_status = VTS_STATUS_OK;
    std::vector<double> d(17), clamped(17);
    std::vector<float> f(17);
    ASSERT_EQ(_vtsdRngUniform(0, stream.get(), 17, d.data(), -1, 2), VTS_STATUS_OK);
    ASSERT_EQ(_vtsdRngUniform(VTS_METHOD_ACCURATE, stream.get(), 17, clamped.data(), -1, 2),
              VTS_STATUS_OK);
    ASSERT_EQ(_vtssRngUniform(VTS_METHOD_ACCURATE | 1, stream.get(), 17, f.data(), -1, 2),
              VTS_STATUS_OK);
    for (int i = 0; i < 17; ++i) {
        EXPECT_EQ(d[i], script[i % 7]);
        EXPECT_EQ(clamped[i], std::fmin(2, std::fmax(-1, script[i % 7])));
        EXPECT_EQ(f[i], static_cast<float>(clamped[i]));
    }
    script_status = 5;  // a positive status is handed on
    EXPECT_EQ(_vtsdRngUniform(VTS_METHOD_ACCURATE, stream.get(), 1, d.data(), -1, 2), 5);
    // After a failed draw the numbers stay as the generator left them.
    script_status = -5;
    EXPECT_EQ(_vtsdRngUniform(VTS_METHOD_ACCURATE, stream.get(), 17, d.data(), -1, 2), -5);
    EXPECT_EQ(_vtssRngUniform(VTS_METHOD_ACCURATE, stream.get(), 17, f.data(), -1, 2), -5);
    for (int i = 0; i < 17; ++i) {
        EXPECT_EQ(d[i], script[i % 7]);
        EXPECT_EQ(f[i], static_cast<float>(script[i % 7]));
    }
}

// Ranges whose width overflows, and tiny ones: numbers inside, and spread as on [0, 1).
template <class Real> void expect_inside(Real a, Real b) {
    using Limits = std::numeric_limits<Real>;
    for (const std::int32_t brng : repeatable_generators) {
        SCOPED_TRACE(testing::Message() << brng << " on " << a << ", " << b);
        constexpr int n = 2001;
        const Stream stream = make_stream(brng), same = copy_of(stream);
        std::vector<Real> r(n), unit(n);
        if constexpr (std::is_same_v<Real, double>) {
            ASSERT_EQ(_vtsdRngUniform(0, stream.get(), n, r.data(), a, b), VTS_STATUS_OK);
            ASSERT_EQ(_vtsdRngUniform(0, same.get(), n, unit.data(), 0, 1), VTS_STATUS_OK);
        } else {
            ASSERT_EQ(_vtssRngUniform(0, stream.get(), n, r.data(), a, b), VTS_STATUS_OK);
            ASSERT_EQ(_vtssRngUniform(0, same.get(), n, unit.data(), 0, 1), VTS_STATUS_OK);
        }
        for (int i = 0; i < n; ++i) {
            ASSERT_TRUE(r[i] >= a && r[i] <= b) << r[i];
            const long double exact = a + (static_cast<long double>(b) - a) * unit[i];
            ASSERT_LE(std::fabs(static_cast<double>((r[i] - exact) /
                                                    std::max(std::fabs(a), std::fabs(b)))),
                      2 * Limits::epsilon() + Limits::denorm_min() / b)
                << r[i];
        }
    }
}

TEST(RngUniform, AnyFiniteRange) {
    constexpr double most = std::numeric_limits<double>::max();
    expect_inside(-1.7e308, 1.7e308);
    expect_inside(-most, most);
    expect_inside(0.0, 1e-305);
    expect_inside(-1e-310, 3e-310);
    expect_inside(0.0, 5e-324);
    constexpr float most_single = std::numeric_limits<float>::max();
    expect_inside(-3e38f, 3e38f);
    expect_inside(-most_single, most_single);
    expect_inside(0.0f, 1.3e-38f);
    expect_inside(1e-38f, 1.3e-38f);
    expect_inside(0.0f, 1e-44f);
}

TEST(RngUniform, IntegersAreFloors) {
    const Stream stream = make_stream(scripted_brng());
    script = {-3.0, -2.5, -0.5, 0.0, 0.99, 1.0, -2147483648.0, 2147483646.5, -2147483647.5};
    const std::int32_t floors[] = {-3, -3, -1, 0, 0, 1, INT32_MIN, INT32_MAX - 1, INT32_MIN};
    script_status = VTS_STATUS_OK;
    calls.clear();
    std::vector<std::int32_t> r(2500, 99);
    ASSERT_EQ(_vtsiRngUniform(0, stream.get(), 2499, r.data(), -3, 2), VTS_STATUS_OK);
    EXPECT_EQ(calls, (std::vector<int>{1024, 1024, 451}));
    for (int i = 0; i < 2499; ++i) EXPECT_EQ(r[i], floors[i % 1024 % 9]) << i;
    EXPECT_EQ(r.back(), 99);
    calls.clear();
    EXPECT_EQ(_vtsiRngUniform(0, stream.get(), 0, r.data(), -3, 2), VTS_STATUS_OK);
    EXPECT_EQ(_vtsiRngUniform(0, stream.get(), -5, r.data(), -3, 2), VTS_STATUS_OK);
    EXPECT_TRUE(calls.empty());
    script_status = -77;
    EXPECT_EQ(_vtsiRngUniform(0, stream.get(), 2000, r.data(), -3, 2), -77);
    EXPECT_EQ(calls.size(), 1u);
}

TEST(RngUniform, IntegersStayInRange) {
    const Stream stream = make_stream(VTS_BRNG_MT19937);
    std::vector<std::int32_t> r(100000);
    ASSERT_EQ(_vtsiRngUniform(0, stream.get(), 100000, r.data(), -3, 2), VTS_STATUS_OK);
    int counts[5] = {};
    for (const std::int32_t x : r) {
        ASSERT_TRUE(x >= -3 && x < 2);
        ++counts[x + 3];
    }
    // 20000 each, standard deviation 126.5: a fixed seed, and 5 deviations all the same.
    for (const int count : counts) EXPECT_NEAR(count, 20000, 633);
}

TEST(RngUniform, Bits) {
    for (const std::int32_t brng :
         {VTS_BRNG_MT19937 + 0, VTS_BRNG_MT2203 + 17, VTS_BRNG_SFMT19937 + 0}) {
        const Stream stream = make_stream(brng);
        const auto words = draw_raw(copy_of(stream), 12);
        std::uint32_t narrow[6];
        std::uint64_t wide[3];
        ASSERT_EQ(_vtsiRngUniformBits32(0, stream.get(), 6, narrow), VTS_STATUS_OK);
        ASSERT_EQ(_vtsiRngUniformBits64(0, stream.get(), 3, wide), VTS_STATUS_OK);
        for (int i = 0; i < 6; ++i) EXPECT_EQ(narrow[i], words[i]);
        for (int i = 0; i < 3; ++i)
            EXPECT_EQ(wide[i], words[6 + 2 * i] | static_cast<std::uint64_t>(words[7 + 2 * i])
                                                      << 32);
    }
    const Stream mcg59 = make_stream(VTS_BRNG_MCG59);
    const auto words = draw_raw(copy_of(mcg59), 2049 + 4);
    std::vector<std::uint32_t> narrow(2049);
    std::uint64_t wide[2];
    ASSERT_EQ(_vtsiRngUniformBits32(0, mcg59.get(), 2049, narrow.data()), VTS_STATUS_OK);
    ASSERT_EQ(_vtsiRngUniformBits64(0, mcg59.get(), 2, wide), VTS_STATUS_OK);
    const auto top = [&words](int i) { return words[2 * i] >> 27 | words[2 * i + 1] << 5; };
    for (int i = 0; i < 2049; ++i) ASSERT_EQ(narrow[i], top(i));
    for (int i = 0; i < 2; ++i)
        EXPECT_EQ(wide[i], top(2049 + 2 * i) | static_cast<std::uint64_t>(top(2050 + 2 * i)) << 32);
    for (const std::int32_t brng :
         {VTS_BRNG_MCG31M1 + 0, VTS_BRNG_R250 + 0, VTS_BRNG_MRG32K3A + 0, VTS_BRNG_WH + 3,
          VTS_BRNG_SOBOL + 0, VTS_BRNG_NIEDERR + 0, 0, 1, 2, 4, 277, 278, scripted_brng()}) {
        const Stream stream = make_stream(brng);
        const Stream before = copy_of(stream);
        EXPECT_EQ(_vtsiRngUniformBits32(0, stream.get(), 2, narrow.data()), VTS_STATUS_NO_BITS);
        EXPECT_EQ(_vtsiRngUniformBits64(0, stream.get(), 1, wide), VTS_STATUS_NO_BITS);
        if (brng != scripted_brng()) EXPECT_EQ(draw_raw(stream, 4), draw_raw(before, 4)) << brng;
    }
    EXPECT_EQ(_vtsiRngUniformBits32(0, make_stream(3).get(), 2, narrow.data()), VTS_STATUS_OK);
}

int callback_of_caller(kef_vtm_error_record*) { return 0; }
int callback_of_bracket(kef_vtm_error_record*) { return 1; }

// Mode word and callback come back bit for bit, a zero field and a zero word included.
TEST(RngUniform, BracketRestores) {
    const std::uint32_t saved = kef_vtm_kernel_GetMode();
    for (const std::uint32_t mode :
         {0x1A02u, 0x3u, 0x403u, 0x280032u, 0x0u, 0x100u, 0x1001u, 0xFF3Fu})
        for (const auto callback :
             {&callback_of_caller, static_cast<decltype(&callback_of_caller)>(nullptr)}) {
            kef_vtm_kernel_SetErrorCallBack(callback);
            kef::vm::store_mode(kef::vm::thread_state(), mode);
            {
                const kef::dist::Bracket bracket(callback_of_bracket);
                EXPECT_EQ(kef_vtm_kernel_GetMode() & VTM_ERRMODE_MASK, VTM_ERRMODE_CALLBACK + 0u);
                EXPECT_EQ(kef_vtm_kernel_GetErrorCallBack(), &callback_of_bracket);
                double x = 4;
                kef::dist::evaluate(
                    +[](std::int32_t, const double*, double*) {
                        EXPECT_EQ(kef_vtm_kernel_GetMode() & VTM_FTZDAZ_MASK, VTM_FTZDAZ_OFF + 0u);
                    },
                    1, &x, &x);
            }
            EXPECT_EQ(kef_vtm_kernel_GetMode(), mode);
            EXPECT_EQ(kef_vtm_kernel_GetErrorCallBack(), callback);
        }
    kef_vtm_kernel_SetErrorCallBack(nullptr);
    kef::vm::store_mode(kef::vm::thread_state(), saved);
}

}  // namespace
