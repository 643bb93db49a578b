// Numbers of the basic generators: references by exact integers, published outputs, mappings.
#include <bit>
#include <cmath>
#include <cstring>
#include <fstream>
#include <random>
#include <sstream>

#include "places.h"
#include "rng/registry.h"
#include "tests/rng_streams.h"

namespace {

// Every line of the reference file, drawn in one call and in uneven pieces.
TEST(RngGenerators, ExactReferences) {
    std::ifstream file(KEF_SOURCE_DIR "/tests/data/rng_reference.txt");
    int lines = 0;
    for (std::string line; std::getline(file, line); ++lines) {
        std::istringstream in(line);
        std::int32_t brng, seeds, place, count;
        in >> std::hex >> brng >> std::dec >> seeds;
        std::vector<std::uint32_t> seed(seeds);
        for (auto& w : seed) in >> std::hex >> w;
        in >> std::dec >> place >> count;
        kef_brng row;
        ASSERT_EQ(__vtsGetBrngProperties(brng, &row), VTS_STATUS_OK);
        std::vector<std::uint32_t> expected;
        for (int i = 0; i < count; ++i) {
            std::uint64_t word;
            const int parts = row.word_size == 16 ? 4 : 1;
            for (int j = 0; j < parts; ++j) {
                in >> std::hex >> word;
                expected.push_back(static_cast<std::uint32_t>(word));
                if (row.word_size == 8) expected.push_back(static_cast<std::uint32_t>(word >> 32));
            }
        }
        ASSERT_TRUE(in) << line;
        const Stream whole = make_stream(brng, seed), pieces = make_stream(brng, seed);
        const auto at = [&](const std::vector<std::uint32_t>& words) {
            return std::vector(words.end() - expected.size(), words.end());
        };
        EXPECT_EQ(at(draw_raw(whole, place + count)), expected) << line;
        std::vector<std::uint32_t> joined;
        for (int left = place + count, size = 1; left > 0; size = size * 3 % 101) {
            const auto piece = draw_raw(pieces, std::min(left, size));
            joined.insert(joined.end(), piece.begin(), piece.end());
            left -= std::min(left, size);
        }
        EXPECT_EQ(at(joined), expected) << line;
    }
    EXPECT_GT(lines, 100);
}

// Published outputs of the key-array initialisations.
TEST(RngGenerators, PublishedTwisters) {
    EXPECT_EQ(
        draw_raw(make_stream(VTS_BRNG_MT19937, {0x123, 0x234, 0x345, 0x456}), 10),
        (std::vector<std::uint32_t>{1067595299, 955945823, 477289528, 4107218783, 4228976476,
                                    3344332714, 3355579695, 227628506, 810200273, 2591290167}));
    EXPECT_EQ(
        draw_raw(make_stream(VTS_BRNG_SFMT19937, {0x1234, 0x5678, 0x9ABC, 0xDEF0}), 10),
        (std::vector<std::uint32_t>{2920711183, 3885745737, 3501893680, 856470934, 1421864068,
                                    277361036, 1518638004, 2328404353, 3355513634, 64329189}));
}

// The state of the C++ library's mt19937, written where ours stands: its 10000th number is given by
// the C++ standard.
TEST(RngGenerators, StandardTwister) {
    const Stream stream = make_stream(VTS_BRNG_MT19937);
    std::uint32_t* x =
        reinterpret_cast<std::uint32_t*>(reinterpret_cast<kef_stream_header*>(stream.get()) + 1);
    x[0] = 5489;
    for (std::uint32_t i = 1; i < 624; ++i) x[i] = 1812433253 * (x[i - 1] ^ x[i - 1] >> 30) + i;
    EXPECT_EQ(x[624], 624u) << "position of a fresh stream";
    const auto words = draw_raw(stream, 10000);
    EXPECT_EQ(words.back(), 4123659995u);
    std::mt19937 peer;
    for (const std::uint32_t w : words) ASSERT_EQ(w, peer());
}

// RngStreams, first numbers of the package seed (12345, six times), to the digits that it prints.
TEST(RngGenerators, PublishedMrg32k3a) {
    const auto u =
        draw_doubles(make_stream(VTS_BRNG_MRG32K3A, std::vector<std::uint32_t>(6, 12345)), 5);
    const double published[] = {0.12701112204657714, 0.3185275653967945, 0.30918601558701775,
                                0.8258468629271136, 0.2216299157820229};
    for (int i = 0; i < 5; ++i) EXPECT_NEAR(u[i], published[i], 1e-9);
}

// Words that a seed cannot keep are reduced or replaced.
TEST(RngGenerators, SeedsAtTheLimits) {
    using Seed = std::vector<std::uint32_t>;
    const auto same = [](std::int32_t brng, const Seed& seed, const Seed& meant) {
        SCOPED_TRACE(testing::Message() << std::hex << brng << ", " << seed.size() << " words");
        EXPECT_EQ(draw_raw(make_stream(brng, seed), 300), draw_raw(make_stream(brng, meant), 300));
    };
    constexpr std::uint32_t m31 = 0x7FFFFFFF, m1 = 4294967087, m2 = 4294944443, most = 0xFFFFFFFF;
    for (const Seed& seed : {Seed{}, {0}, {m31}, {m31 + 1}}) same(VTS_BRNG_MCG31M1, seed, {1});
    same(VTS_BRNG_MCG31M1, {most}, {1});
    same(VTS_BRNG_MCG31M1, {m31 - 1, 5}, {m31 - 1});
    for (const Seed& seed : {Seed{}, {0}, {0, 0x08000000}, {1, 0xF8000000}})
        same(VTS_BRNG_MCG59, seed, {1});
    same(VTS_BRNG_MCG59, {3, most, 9}, {3, 0x07FFFFFF});
    same(VTS_BRNG_MRG32K3A, {}, {1, 1, 1, 1, 1, 1});
    same(VTS_BRNG_MRG32K3A, {7, 8}, {7, 8, 1, 1, 1, 1});
    same(VTS_BRNG_MRG32K3A, Seed(7, most), {208, 208, 208, 22852, 22852, 22852});
    same(VTS_BRNG_MRG32K3A, {m1, 5, 6, m2, 7, 8}, {0, 5, 6, 0, 7, 8});
    same(VTS_BRNG_MRG32K3A, {m1 - 1, 5, 6, m2 - 1, m2, m2}, {m1 - 1, 5, 6, m2 - 1, 0, 0});
    same(VTS_BRNG_MRG32K3A, {m1, m1, m1, m2, m2, m2}, {1, 0, 0, 1, 0, 0});
    same(VTS_BRNG_WH + 2, {0, 5}, {1, 5, 1, 1});
    Seed single_bit(250, 0);
    single_bit[0] = 1;
    same(VTS_BRNG_R250, Seed(250, 0), single_bit);
    same(VTS_BRNG_R250, Seed(251, 0), single_bit);
    EXPECT_EQ(draw_raw(make_stream(VTS_BRNG_R250, single_bit), 1)[0], 1u);
    for (const std::int32_t brng : repeatable_generators) same(brng, {}, {1});
    // A negative count is none.
    for (const std::int32_t brng : repeatable_generators) {
        kef_stream* handle = nullptr;
        ASSERT_EQ(__vtsNewStreamEx(&handle, brng, -7, nullptr), VTS_STATUS_OK);
        EXPECT_EQ(draw_raw(Stream(handle), 9), draw_raw(make_stream(brng, {1}), 9));
    }
}

// Doubles and floats are the documented function of the raw words, bit for bit.
TEST(RngGenerators, Mappings) {
    constexpr int n = 1003;
    for (const std::int32_t brng : repeatable_generators) {
        SCOPED_TRACE(brng);
        kef_brng row;
        ASSERT_EQ(__vtsGetBrngProperties(brng, &row), VTS_STATUS_OK);
        const Stream s = make_stream(brng, {40});
        const auto words = draw_raw(copy_of(s), n);
        for (const auto& [a, b] : {std::pair{0.0, 1.0}, {-3.5, 2.25}, {1e6, 1e6 + 1}}) {
            std::vector<double> d(n);
            std::vector<float> f(n);
            ASSERT_EQ(_vtsdRngUniform(0, copy_of(s).get(), n, d.data(), a, b), VTS_STATUS_OK);
            const auto fa = static_cast<float>(a), fb = static_cast<float>(b);
            ASSERT_EQ(_vtssRngUniform(0, copy_of(s).get(), n, f.data(), fa, fb), VTS_STATUS_OK);
            const bool unit = a == 0 && b == 1;
            for (int i = 0; i < n; ++i) {
                const std::uint32_t* w = &words[i * row.word_size / 4];
                if (row.word_size == 16) {
                    EXPECT_TRUE(!unit || (d[i] >= 0 && d[i] < 1 && f[i] >= 0 && f[i] < 1));
                    // u cut to 24 bits, and the scaling's two roundings.
                    const double size = std::max(std::abs(a), std::abs(b));
                    EXPECT_NEAR(d[i], f[i], (b - a) * 0x1p-24 + size * 0x1p-22);
                    continue;
                }
                double x = *w, unit_scale = 0x1p-32;
                bool top_bits = true;
                if (row.word_size == 8) {
                    x = static_cast<double>(*w + (std::uint64_t{w[1]} << 32));
                    unit_scale = 0x1p-59, top_bits = false;
                } else if (row.bit_count == 31) {
                    unit_scale = std::bit_cast<double>(UINT64_C(0x3E00000000200000)),
                    top_bits = false;
                } else if (brng == 2 || brng == VTS_BRNG_MRG32K3A) {
                    unit_scale = std::bit_cast<double>(UINT64_C(0x3DF000000D10000B)),
                    top_bits = false;
                }
                EXPECT_EQ(d[i], x * ((b - a) * unit_scale) + a);
                const double s = (static_cast<double>(fb) - fa) * unit_scale;
                EXPECT_EQ(f[i], top_bits ? static_cast<float>(*w >> 8) * ((fb - fa) * 0x1p-24f) + fa
                                         : static_cast<float>(x * s + fa));
                if (unit) {
                    EXPECT_TRUE(d[i] >= 0 && d[i] < 1);
                    EXPECT_TRUE(!top_bits || (f[i] >= 0 && f[i] < 1));
                }
            }
        }
    }
}

// The largest words stay below 1 where the mapping is ours.
TEST(RngGenerators, LargestWordsStayBelowOne) {
    const std::uint32_t top[2] = {0xFFFFFFFF, 0x07FFFFFF};
    const Stream mcg59 = make_stream(VTS_BRNG_MCG59, {top[0], top[1]});
    EXPECT_LT(draw_doubles(mcg59, 1)[0], 1);
    const Stream twister = make_stream(VTS_BRNG_SFMT19937);
    auto* x =
        reinterpret_cast<std::uint32_t*>(reinterpret_cast<kef_stream_header*>(twister.get()) + 1);
    const auto fill = [x] {
        for (int i = 0; i < 624; ++i) x[i] = 0xFFFFFFFF;
        x[624] = 624;  // all of the block is still to come
    };
    fill();
    for (const double u : draw_doubles(twister, 9)) EXPECT_EQ(u, 1 - 0x1p-32);
    fill();
    float f[9];
    ASSERT_EQ(_vtssRngUniform(0, twister.get(), 9, f, 0, 1), VTS_STATUS_OK);
    for (const float u : f) EXPECT_EQ(u, 1 - 0x1p-24f);
}

TEST(RngGenerators, StateSizes) {
    EXPECT_EQ(sizeof(kef_stream_header), sizeof(void*) == 4 ? 16u : 24u);
    kef_brng row;
    const std::int32_t sizes[] = {24,   1024, 40, 32, 48, 11648, 43280,
                                  2520, 312,  40, 56, 48, 2536,  24};
    for (std::int32_t i = 0; i < 14; ++i) {
        ASSERT_EQ(__vtsGetBrngProperties((i + 1) << 20, &row), VTS_STATUS_OK);
        EXPECT_TRUE(sizeof(void*) != 4 || row.stream_state_size == sizes[i]) << i;
    }
}

TEST(RngGenerators, HardwareNumbers) {
    kef_stream* handle = nullptr;
    const std::int32_t status = __vtsNewStreamEx(&handle, VTS_BRNG_TRNG, 0, nullptr);
    const Stream stream(handle);
    if (status == VTS_STATUS_NO_RDRAND) GTEST_SKIP() << "no RDRAND";
    ASSERT_EQ(status, VTS_STATUS_OK);
    const auto words = draw_raw(stream, 4096);
    // Each bit is set 2048 times, standard deviation 32; 6 deviations over 32 bits: 6e-8.
    for (int bit = 0; bit < 32; ++bit) {
        int ones = 0;
        for (const std::uint32_t w : words) ones += w >> bit & 1;
        EXPECT_NEAR(ones, 2048, 6 * 32) << bit;
    }
    EXPECT_EQ(__vtsLeapfrogStream(stream.get(), 0, 2), VTS_STATUS_NO_LEAPFROG);
    EXPECT_EQ(__vtsSkipAheadStream(stream.get(), 1), VTS_STATUS_NO_SKIPAHEAD);
}

// --- abstract streams -------------------------------------------------------------------------

int refills = 0;
std::int32_t answer = 0;  // what the callback claims to have made; 0: as scripted
template <class T>
std::int32_t counting_refill(kef_stream*, T* buffer, std::int32_t length, std::int32_t wanted) {
    EXPECT_GT(wanted, 0);
    if (answer != 0) return answer == -1 ? 0 : answer;
    // Fewer than asked, more than asked, all, in turn.
    const std::int32_t counts[] = {1, length, std::min(wanted, length), 2};
    const std::int32_t made = counts[refills++ % 4];
    for (std::int32_t i = 0; i < made; ++i) buffer[i] = static_cast<T>(100 * refills + i);
    return made;
}

TEST(RngGenerators, AbstractRefill) {
    std::uint32_t buffer[5] = {1, 2, 3, 4, 5};
    kef_stream* handle = nullptr;
    EXPECT_EQ(__vtsiNewAbstractStream(nullptr, 5, buffer, counting_refill),
              VTS_STATUS_BAD_ARGUMENT);
    EXPECT_EQ(__vtsdNewAbstractStream(nullptr, 5, nullptr, 0, 1, nullptr), VTS_STATUS_BAD_ARGUMENT);
    EXPECT_EQ(__vtsiNewAbstractStream(&handle, 0, buffer, counting_refill),
              VTS_STATUS_BAD_ARGUMENT);
    EXPECT_EQ(__vtsiNewAbstractStream(&handle, -1, buffer, counting_refill),
              VTS_STATUS_BAD_ARGUMENT);
    EXPECT_EQ(__vtsiNewAbstractStream(&handle, INT32_MIN, buffer, counting_refill),
              VTS_STATUS_BAD_ARGUMENT);
    EXPECT_EQ(__vtsiNewAbstractStream(&handle, 5, nullptr, counting_refill),
              VTS_STATUS_BAD_ARGUMENT);
    EXPECT_EQ(__vtsiNewAbstractStream(&handle, 5, buffer, nullptr), VTS_STATUS_BAD_ARGUMENT);
    ASSERT_EQ(__vtsiNewAbstractStream(&handle, 5, buffer, counting_refill), VTS_STATUS_OK);
    const Stream stream(handle);
    refills = 0, answer = 0;
    EXPECT_EQ(draw_raw(stream, 3), (std::vector<std::uint32_t>{1, 2, 3}));
    EXPECT_EQ(refills, 0);
    EXPECT_EQ(draw_raw(stream, 7), (std::vector<std::uint32_t>{4, 5, 100, 200, 201, 202, 203}));
    EXPECT_EQ(draw_raw(stream, 4), (std::vector<std::uint32_t>{204, 300, 301, 302}));
    std::uint32_t r[8] = {};
    answer = -1;
    EXPECT_EQ(_vtsiRngUniformBits(0, stream.get(), 8, r), VTS_STATUS_NO_NUMBERS);
    answer = 6;
    EXPECT_EQ(_vtsiRngUniformBits(0, stream.get(), 8, r), VTS_STATUS_BAD_REFILL);
    answer = -4711;
    EXPECT_EQ(_vtsiRngUniformBits(0, stream.get(), 8, r), -4711);
    answer = 0;
    EXPECT_EQ(draw_raw(stream, 2), (std::vector<std::uint32_t>{400, 401}));
    double d;
    float f;
    EXPECT_EQ(_vtsdRngUniform(0, stream.get(), 1, &d, 0, 1), VTS_STATUS_WRONG_ABSTRACT_TYPE);
    EXPECT_EQ(_vtssRngUniform(0, stream.get(), 1, &f, 0, 1), VTS_STATUS_WRONG_ABSTRACT_TYPE);
    EXPECT_EQ(__vtsLeapfrogStream(stream.get(), 0, 2), VTS_STATUS_NO_LEAPFROG);
    EXPECT_EQ(__vtsSkipAheadStream(stream.get(), 1), VTS_STATUS_NO_SKIPAHEAD);
}

TEST(RngGenerators, AbstractBounds) {
    double buffer[4] = {10, 12, 15, 20};
    kef_stream* handle = nullptr;
    refills = 1, answer = 0;
    ASSERT_EQ(__vtsdNewAbstractStream(&handle, 4, buffer, 10, 30, counting_refill), VTS_STATUS_OK);
    const Stream stream(handle);
    EXPECT_EQ(draw_doubles(copy_of(stream), 4, 10, 30), (std::vector<double>{10, 12, 15, 20}));
    EXPECT_EQ(draw_doubles(copy_of(stream), 4, -1, 1), (std::vector<double>{-1, -0.8, -0.5, 0}));
    std::uint32_t w;
    EXPECT_EQ(_vtsiRngUniformBits(0, stream.get(), 1, &w), VTS_STATUS_WRONG_ABSTRACT_TYPE);
    float floats[2] = {0.25f, 0.5f}, r[2];
    ASSERT_EQ(__vtssNewAbstractStream(&handle, 2, floats, 0, 1, counting_refill), VTS_STATUS_OK);
    const Stream single(handle);
    ASSERT_EQ(_vtssRngUniform(0, single.get(), 2, r, 0, 4), VTS_STATUS_OK);
    EXPECT_EQ(r[0], 1.0f);
    EXPECT_EQ(r[1], 2.0f);
    EXPECT_EQ(reinterpret_cast<void*>(__vtsdBRngiAbstract),
              reinterpret_cast<void*>(__vtssBRngdAbstract));
}

// Widths that overflow or are tiny, of the caller's range and of the one asked for.
TEST(RngGenerators, AbstractRangesOfAnyWidth) {
    const std::pair<double, double> ranges[] = {
        {0, 1}, {-1.7e308, 1.7e308}, {-3, 1e308}, {0, 1e-305}, {-0x1p-1030, 0x1.8p-1029}};
    for (const auto& [from, to] : ranges)
        for (const auto& [a, b] : ranges) {
            SCOPED_TRACE(testing::Message() << from << ' ' << to << " to " << a << ' ' << b);
            double buffer[3] = {from, from / 2 + to / 2, to};
            kef_stream* handle = nullptr;
            ASSERT_EQ(__vtsdNewAbstractStream(&handle, 3, buffer, from, to, counting_refill),
                      VTS_STATUS_OK);
            const Stream stream(handle);
            const std::vector<double> r = draw_doubles(stream, 3, a, b);
            const double tolerance = std::max(-a, b) * 0x1p-52;
            EXPECT_EQ(r[0], a);
            EXPECT_NEAR(r[1], a / 2 + b / 2, tolerance);
            EXPECT_NEAR(r[2], b, tolerance);
        }
    float floats[3] = {-3e38f, 0, 3e38f}, r[3];
    kef_stream* handle = nullptr;
    ASSERT_EQ(__vtssNewAbstractStream(&handle, 3, floats, -3e38f, 3e38f, counting_refill),
              VTS_STATUS_OK);
    const Stream single(handle);
    ASSERT_EQ(_vtssRngUniform(0, single.get(), 3, r, -1, 1), VTS_STATUS_OK);
    EXPECT_EQ(std::vector<float>(r, r + 3), (std::vector<float>{-1, 0, 1}));
}

}  // namespace
