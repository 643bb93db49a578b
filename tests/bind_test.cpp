// What bindings call through pointers: strided vector math, and random numbers one at a time.
#include <gtest/gtest.h>

#include <algorithm>
#include <cfenv>
#include <cmath>
#include <cstring>
#include <vector>

#include "kef_bind.h"
#include "kef_dist.h"
#include "kef_vm.h"

namespace kef_test {
namespace {

template <class Kernel> kef_loop loop_of(Kernel* kernel, int arguments, int results, int size) {
    return {reinterpret_cast<void (*)()>(kernel), arguments, results, {size, size, size}};
}

void run(kef_loop loop, std::vector<void*> operands, std::intptr_t n,
         std::vector<std::intptr_t> steps) {
    kef_vtm_loop(reinterpret_cast<char**>(operands.data()), &n, steps.data(), &loop);
}

// Where results of the step of an array begin: the sanitizer objects to numbers in between.
#if defined(KEF_SANITIZE)
constexpr int unaligned = 0;
#else
constexpr int unaligned = 1;
#endif

// Any steps give the bits of one call, in lengths around the buffers' and with unaligned places.
TEST(BindLoop, StridesGiveTheBitsOfOneCall) {
    for (const int n : {0, 1, 3, 511, 512, 513, 2000}) {
        SCOPED_TRACE(n);
        std::vector<double> x(n), expected(n);
        for (int i = 0; i < n; ++i) x[i] = std::sin(i) * 3;
        _vtmdExp(n, x.data(), expected.data());
        for (const int from : {8, 17, -16})
            for (const int to : {8, 13, -24}) {
                std::vector<char> a(32 * n + 64), r(32 * n + 64);
                char* const first = from < 0 ? a.data() + 32 * n : a.data();
                char* const result = to < 0 ? r.data() + 32 * n : r.data() + unaligned;
                for (int i = 0; i < n; ++i) std::memcpy(first + i * from, &x[i], 8);
                run(loop_of(_vtmdExp, 1, 1, 8), {first, result}, n, {from, to});
                for (int i = 0; i < n; ++i)
                    ASSERT_EQ(std::memcmp(result + i * to, &expected[i], 8), 0)
                        << i << " " << from << " " << to;
            }
    }
}

TEST(BindLoop, ShapesAndSizes) {
    // A step of 0 repeats a number.
    std::vector<float> x = {1, 2, 3}, r(3), s(3);
    float two = 2;
    run(loop_of(_vtmsMul, 2, 1, 4), {x.data(), &two, r.data()}, 3, {4, 0, 4});
    EXPECT_EQ(r, (std::vector<float>{2, 4, 6}));
    // Two results, one of them strided and backwards.
    run(loop_of(_vtmsModf, 1, 2, 4), {x.data(), &r[2], s.data()}, 3, {4, -4, 4});
    EXPECT_EQ(r, (std::vector<float>{3, 2, 1}));
    EXPECT_EQ(s, (std::vector<float>{0, 0, 0}));
    // Operands of different sizes.
    std::vector<kef_complex16> z = {{3, 4}, {9, 9}, {5, 12}};
    std::vector<double> modulus(2);
    kef_loop loop = loop_of(_vtmzAbs, 1, 1, 16);
    loop.sizes[1] = 8;
    run(loop, {z.data(), modulus.data()}, 2, {32, 8});
    EXPECT_EQ(modulus, (std::vector<double>{5, 13}));
}

// In place, and the two ways in which array libraries overlap operands: reduction and accumulation.
TEST(BindLoop, OverlapsAreThoseOfALoop) {
    const int n = 1500;
    std::vector<double> x(n, 1.0);
    run(loop_of(_vtmdAdd, 2, 1, 8), {x.data(), x.data(), x.data()}, n, {8, 8, 8});
    EXPECT_EQ(x, std::vector<double>(n, 2.0));
    run(loop_of(_vtmdSqr, 1, 1, 8), {x.data(), x.data()}, n / 2, {16, 16});
    EXPECT_EQ(x[0], 4);
    EXPECT_EQ(x[1], 2);
    EXPECT_EQ(x[n - 2], 4);
    double sum = 0;
    run(loop_of(_vtmdAdd, 2, 1, 8), {&sum, x.data(), &sum}, n, {0, 8, 0});
    EXPECT_EQ(sum, 3.0 * n);
    std::vector<double> sums(n);
    sums[0] = x[0];
    run(loop_of(_vtmdAdd, 2, 1, 8), {sums.data(), &x[1], &sums[1]}, n - 1, {8, 8, 8});
    EXPECT_EQ(sums[n - 1], 3.0 * n);
}

// Flags tell of errors, and mode, callback and the caller's other settings are left alone.
TEST(BindLoop, ErrorsRaiseFlags) {
    static int called;
    called = 0;
    kef_vtm_kernel_SetErrorCallBack([](kef_vtm_error_record*) { return ++called; });
    const std::uint32_t mode = VTM_LA | VTM_ERRMODE_IGNORE | VTM_FTZDAZ_ON;
    const std::uint32_t before = kef_vtm_kernel_SetMode(mode), set = kef_vtm_kernel_GetMode();
    kef_vtm_kernel_ClearErrStatus();
    std::feclearexcept(FE_ALL_EXCEPT);
    double x[2] = {-1, 0}, r[2];
    run(loop_of(_vtmdLn, 1, 1, 8), {x, r}, 2, {8, 8});
    EXPECT_EQ(std::fetestexcept(FE_ALL_EXCEPT), FE_INVALID | FE_DIVBYZERO);
    EXPECT_EQ(kef_vtm_kernel_ClearErrStatus(), VTM_STATUS_SING);
    EXPECT_EQ(kef_vtm_kernel_GetMode(), set);
    EXPECT_EQ(called, 0);
    std::feclearexcept(FE_ALL_EXCEPT);
    kef_vtm_kernel_ClearErrorCallBack();
    kef_vtm_kernel_SetMode(before | VTM_FTZDAZ_OFF);
}

struct Source : kef_bit_source {
    explicit Source(std::int32_t brng, std::uint32_t seed = 7) : kef_bit_source{} {
        EXPECT_EQ(__vtsNewStreamEx(&stream, brng, 1, &seed), VTS_STATUS_OK);
    }
    ~Source() { __vtsDeleteStream(&stream); }
};

TEST(BindBits, WordsPairsAndDoubles) {
    Source words(VTS_BRNG_MT19937), source(VTS_BRNG_MT19937);
    std::vector<std::uint32_t> w(2 * KEF_BIT_SOURCE_WORDS + 3);
    const int n = static_cast<int>(w.size());
    _vtsiRngUniformBits32(VTS_METHOD_STANDARD, words.stream, n, w.data());
    int i = 0;
    for (; i + 2 < n; i += 3) {
        // A pair goes over the end of what was read ahead.
        ASSERT_EQ(kef_vts_next_uint32(&source), w[i]);
        ASSERT_EQ(kef_vts_next_uint64(&source), std::uint64_t{w[i + 1]} << 32 | w[i + 2]);
    }
    EXPECT_EQ(source.status, VTS_STATUS_OK);
    Source again(VTS_BRNG_MT19937);
    for (i = 0; i + 1 < n; i += 2)
        ASSERT_EQ(kef_vts_next_double(&again),
                  std::ldexp(w[i] >> 5, -27) + std::ldexp(w[i + 1] >> 6, -53));
}

// Generators without words of 32 random bits give what their doubles have.
TEST(BindBits, EveryGenerator) {
    Source r250(VTS_BRNG_R250), raw(VTS_BRNG_R250);
    std::uint32_t word[600];
    _vtsiRngUniformBits(VTS_METHOD_STANDARD, raw.stream, 600, word);
    for (const std::uint32_t w : word) ASSERT_EQ(kef_vts_next_uint32(&r250), w);

    Source mcg(VTS_BRNG_MCG31M1), doubles(VTS_BRNG_MCG31M1);
    double u[1200];
    _vtsdRngUniform(VTS_METHOD_STANDARD, doubles.stream, 1200, u, 0, 65536);
    for (int i = 0; i < 600; ++i)
        ASSERT_EQ(kef_vts_next_uint32(&mcg), static_cast<std::uint32_t>(u[2 * i]) << 16 |
                                                 static_cast<std::uint32_t>(u[2 * i + 1]));

    for (const std::int32_t brng : {VTS_BRNG_MCG59, VTS_BRNG_MRG32K3A, VTS_BRNG_WH, VTS_BRNG_SOBOL,
                                    VTS_BRNG_NIEDERR, VTS_BRNG_MT2203, VTS_BRNG_SFMT19937}) {
        Source source(brng);
        double sum = 0;
        for (int i = 0; i < 20000; ++i) sum += kef_vts_next_uint32(&source) * 0x1p-32;
        EXPECT_NEAR(sum / 20000, 0.5, 5 * std::sqrt(1.0 / 12 / 20000)) << brng;
    }
}

TEST(BindBits, AFailedRefillGivesZeros) {
    static std::uint32_t buffer[4] = {1, 2, 3, 4};
    Source source(VTS_BRNG_MT19937);
    __vtsDeleteStream(&source.stream);
    ASSERT_EQ(__vtsiNewAbstractStream(&source.stream, 4, buffer,
                                      [](kef_stream*, std::uint32_t*, std::int32_t, std::int32_t) {
                                          return std::int32_t{0};
                                      }),
              VTS_STATUS_OK);
    std::fill_n(source.words, KEF_BIT_SOURCE_WORDS, 77u);
    EXPECT_EQ(kef_vts_next_uint64(&source), 0u);
    EXPECT_EQ(source.status, VTS_STATUS_WRONG_ABSTRACT_TYPE);
}

}  // namespace
}  // namespace kef_test
