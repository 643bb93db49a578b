// Leapfrog and skip-ahead against the parent sequence, and the arithmetic behind them.
#include <cstring>
#include <random>
#include <utility>

#include "tests/rng_streams.h"

namespace {

std::vector<std::uint32_t> after_skip(const Stream& source, std::uint64_t count, int n) {
    const Stream stream = copy_of(source);
    EXPECT_EQ(__vtsSkipAheadStream(stream.get(), count), VTS_STATUS_OK);
    return draw_raw(stream, n);
}

struct Jumper {
    std::int32_t brng;
    std::vector<std::uint32_t> seed;
};
const Jumper skipping[] = {
    {VTS_BRNG_MCG31M1, {777}},
    {VTS_BRNG_MCG59, {1, 2}},
    {VTS_BRNG_MRG32K3A, {1, 2, 3, 4, 5, 6}},
    {VTS_BRNG_WH + 7, {3, 4}},
    {VTS_BRNG_SOBOL, {40}},
    {VTS_BRNG_SOBOL, {3}},
    {VTS_BRNG_NIEDERR, {5}},
    {VTS_BRNG_MT19937, {1, 2, 3}},
    {VTS_BRNG_SFMT19937, {9}},
};

// From several positions inside a block of the generator.
TEST(RngJumps, SkipEqualsSteps) {
    for (const Jumper& g : skipping)
        for (const int start : {0, 1, 2, 623, 624, 625, 1000}) {
            SCOPED_TRACE(std::to_string(g.brng) + " from " + std::to_string(start));
            const Stream stream = make_stream(g.brng, g.seed);
            draw_raw(stream, start);
            for (const int count : {0,   1,   3,   7,   8,    9,    17,    21,    22,    33,   65,
                                    100, 216, 217, 624, 1000, 1001, 19936, 19937, 19968, 50000})
                EXPECT_EQ(after_skip(stream, count, 700), [&] {
                    const Stream walked = copy_of(stream);
                    draw_raw(walked, count);
                    return draw_raw(walked, 700);
                }()) << count;
        }
}

// Long jumps: in one and in parts; a part of 10^6 is walked.
TEST(RngJumps, LongSkips) {
    for (const Jumper& g : skipping) {
        SCOPED_TRACE(g.brng);
        const Stream stream = make_stream(g.brng, g.seed);
        draw_raw(stream, 5);
        for (const std::uint64_t count :
             {UINT64_C(1000000), (UINT64_C(1) << 40) + 3, UINT64_C(0xFEDCBA9876543210)}) {
            const Stream parts = copy_of(stream);
            const std::uint64_t first = count / 3 + 1;
            ASSERT_EQ(__vtsSkipAheadStream(parts.get(), first), VTS_STATUS_OK);
            const bool walk = count == 1000000;
            if (walk) draw_raw(parts, static_cast<int>(count - first));
            else ASSERT_EQ(__vtsSkipAheadStream(parts.get(), count - first), VTS_STATUS_OK);
            EXPECT_EQ(after_skip(stream, count, 1300), draw_raw(parts, 1300)) << count;
        }
    }
}

// Twice 2^b is 2^(b+1), from where numbers can still be walked to the largest power.
TEST(RngJumps, PowersOfTwo) {
    for (const std::int32_t brng : {VTS_BRNG_MT19937, VTS_BRNG_SFMT19937}) {
        const Stream stream = make_stream(brng, {4});
        Stream once = copy_of(stream), twice = copy_of(stream);
        draw_raw(twice, 1 << 18);
        for (int bit = 18; bit < 64; ++bit) {
            SCOPED_TRACE(bit);
            once = copy_of(stream);
            ASSERT_EQ(__vtsSkipAheadStream(once.get(), UINT64_C(1) << bit), VTS_STATUS_OK);
            ASSERT_EQ(draw_raw(copy_of(once), 700), draw_raw(twice, 700));
            twice = copy_of(once);
            ASSERT_EQ(__vtsSkipAheadStream(twice.get(), UINT64_C(1) << bit), VTS_STATUS_OK);
        }
    }
}

// Around the counts at which a skip regenerates no more.
TEST(RngJumps, Crossings) {
    const auto check = [](std::int32_t brng, int count) {
        for (const int start : {0, 624, 1000}) {
            const Stream stream = make_stream(brng, {8});
            draw_raw(stream, start);
            const Stream walked = copy_of(stream);
            draw_raw(walked, count);
            EXPECT_EQ(after_skip(stream, count, 1300), draw_raw(walked, 1300)) << start;
        }
    };
    for (const int count : {1199999, 1200000, 1200001}) check(VTS_BRNG_MT19937, count);
    // At the start of a block all bits of its first word are still to come, and in a saved stream
    // they may be any; later numbers take its top bit alone.
    const Stream stream = make_stream(VTS_BRNG_MT19937);
    draw_raw(stream, 625);
    auto* const words =
        reinterpret_cast<std::uint32_t*>(reinterpret_cast<kef_stream_header*>(stream.get()) + 1);
    words[0] ^= 0x12345678;
    words[624] = 0;
    const Stream walked = copy_of(stream);
    draw_raw(walked, 1200000);
    for (int count = 1200000; count < 1200010; ++count) {
        EXPECT_EQ(after_skip(stream, count, 700), draw_raw(copy_of(walked), 700)) << count;
        draw_raw(walked, 1);
    }
    for (const int count : {(1 << 19) - 1, 1 << 19, (1 << 19) + 1, (1 << 20) + 5})
        check(VTS_BRNG_SFMT19937, count);
}

// A whole period of the small generators comes back to the start.
TEST(RngJumps, Periods) {
    const Stream mcg31 = make_stream(VTS_BRNG_MCG31M1), mcg59 = make_stream(VTS_BRNG_MCG59);
    EXPECT_EQ(after_skip(mcg31, 0x7FFFFFFE, 9), draw_raw(copy_of(mcg31), 9));
    EXPECT_EQ(after_skip(mcg59, UINT64_C(1) << 57, 9), draw_raw(copy_of(mcg59), 9));
    EXPECT_NE(after_skip(mcg59, UINT64_C(1) << 56, 9), draw_raw(copy_of(mcg59), 9));
    const Stream sobol = make_stream(VTS_BRNG_SOBOL, {7});
    EXPECT_EQ(after_skip(sobol, UINT64_C(7) << 32, 30), draw_raw(copy_of(sobol), 30));
}

// Index 0, the point of zeros, stands at the end of the period. The walk crosses it point by point,
// number by number, and with one coordinate alone.
TEST(RngJumps, EndOfThePoints) {
    for (const auto& [brng, dimension] :
         {std::pair(VTS_BRNG_SOBOL, 7), {VTS_BRNG_SOBOL, 88}, {VTS_BRNG_NIEDERR, 200}}) {
        const auto width = static_cast<std::uint32_t>(dimension);
        std::vector<std::uint32_t> parameters = {width};
        if (dimension == 88)  // more than SOBOL has by itself
            for (std::uint32_t i = 0; i < 32 * width; ++i)
                parameters.push_back(0x80000000u >> i % 32 | i);
        const Stream start = make_stream(brng, parameters), before = copy_of(start);
        ASSERT_EQ(__vtsSkipAheadStream(before.get(), (std::uint64_t{width} << 32) - 10 * width),
                  VTS_STATUS_OK);
        const auto head = draw_raw(copy_of(start), 10 * dimension);
        const auto expect_end = [&](const std::vector<std::uint32_t>& words) {
            EXPECT_EQ(std::vector(words.begin() + 9 * width, words.begin() + 10 * width),
                      std::vector<std::uint32_t>(width, 0));
            EXPECT_EQ(std::vector(words.begin() + 10 * width, words.end()), head);
        };
        expect_end(draw_raw(copy_of(before), 20 * dimension));
        const Stream single = copy_of(before);
        std::vector<std::uint32_t> joined;
        for (int i = 0; i < 20 * dimension; ++i) joined.push_back(draw_raw(single, 1)[0]);
        expect_end(joined);
        ASSERT_EQ(__vtsLeapfrogStream(before.get(), 3, dimension), VTS_STATUS_OK);
        const auto third = draw_raw(before, 20);
        EXPECT_EQ(third[9], 0u);
        for (int i = 0; i < 10; ++i) EXPECT_EQ(third[10 + i], head[i * dimension + 3]);
    }
}

TEST(RngJumps, LeapfrogTilesTheParent) {
    for (const Jumper& g : {Jumper{VTS_BRNG_MCG31M1, {777}}, Jumper{VTS_BRNG_MCG59, {5, 6}},
                            Jumper{VTS_BRNG_WH + 100, {9, 8, 7, 6}}}) {
        SCOPED_TRACE(g.brng);
        const Stream parent = make_stream(g.brng, g.seed);
        draw_raw(parent, 3);
        const auto whole = draw_raw(copy_of(parent), 3000);
        const int width = static_cast<int>(whole.size() / 3000);
        for (const int streams : {1, 2, 7})
            for (int k = 0; k < streams; ++k) {
                const Stream part = copy_of(parent);
                ASSERT_EQ(__vtsLeapfrogStream(part.get(), k, streams), VTS_STATUS_OK);
                // The skip counts numbers of the part.
                ASSERT_EQ(__vtsSkipAheadStream(part.get(), 10), VTS_STATUS_OK);
                const auto words = draw_raw(part, 400);
                for (int i = 0; i < 400; ++i)
                    ASSERT_EQ(0, std::memcmp(&words[i * width],
                                             &whole[(k + (i + 10) * streams) * width], width * 4));
            }
    }
}

// No streams at all: number k for ever.
TEST(RngJumps, LeapfrogByNothing) {
    for (const std::int32_t brng : {VTS_BRNG_MCG31M1 + 0, VTS_BRNG_MCG59 + 0, VTS_BRNG_WH + 3}) {
        const Stream parent = make_stream(brng, {12345, 2, 3, 4});
        const auto whole = draw_raw(copy_of(parent), 20);
        const std::size_t width = whole.size() / 20;
        for (const int k : {0, 1, 17}) {
            const Stream part = copy_of(parent);
            ASSERT_EQ(__vtsLeapfrogStream(part.get(), k, 0), VTS_STATUS_OK);
            const auto words = draw_raw(part, 30);
            for (std::size_t i = 0; i < words.size(); ++i)
                ASSERT_EQ(words[i], whole[static_cast<std::size_t>(k) * width + i % width]) << brng;
        }
    }
    for (const std::int32_t brng : {VTS_BRNG_SOBOL, VTS_BRNG_NIEDERR})
        EXPECT_EQ(__vtsLeapfrogStream(make_stream(brng, {4}).get(), 0, 0), VTS_STATUS_NO_LEAPFROG);
}

// One coordinate of the quasi-random points, from the start of a point and from inside it.
TEST(RngJumps, LeapfrogSelectsACoordinate) {
    for (const std::int32_t brng : {VTS_BRNG_SOBOL + 0, VTS_BRNG_NIEDERR + 0})
        for (const int start : {0, 3}) {
            const Stream parent = make_stream(brng, {6});
            draw_raw(parent, start);
            const auto whole = draw_raw(copy_of(parent), 6 * 500);
            for (int k = 0; k < 6; ++k) {
                const Stream part = copy_of(parent);
                ASSERT_EQ(__vtsLeapfrogStream(part.get(), k, 6), VTS_STATUS_OK);
                const auto head = draw_raw(part, 100);
                ASSERT_EQ(__vtsSkipAheadStream(part.get(), 50), VTS_STATUS_OK);
                const auto tail = draw_raw(part, 100);
                for (int i = 0; i < 100; ++i) {
                    EXPECT_EQ(head[i], whole[k + 6 * i]);
                    EXPECT_EQ(tail[i], whole[k + 6 * (i + 150)]);
                }
            }
            EXPECT_EQ(__vtsLeapfrogStream(parent.get(), 0, 5), VTS_STATUS_NO_LEAPFROG);
        }
}

TEST(RngJumps, Refusals) {
    for (const std::int32_t brng : {VTS_BRNG_R250 + 0, VTS_BRNG_MRG32K3A + 0, VTS_BRNG_MT19937 + 0,
                                    VTS_BRNG_MT2203 + 1, VTS_BRNG_SFMT19937 + 0})
        EXPECT_EQ(__vtsLeapfrogStream(make_stream(brng).get(), 0, 2), VTS_STATUS_NO_LEAPFROG);
    for (const std::int32_t brng : {VTS_BRNG_R250 + 0, VTS_BRNG_MT2203 + 1})
        EXPECT_EQ(__vtsSkipAheadStream(make_stream(brng).get(), 2), VTS_STATUS_NO_SKIPAHEAD);
    const Stream stream = make_stream(VTS_BRNG_R250);
    EXPECT_EQ(__vtsLeapfrogStream(stream.get(), 0, -1), VTS_STATUS_BAD_LEAPFROG_COUNT);
    for (std::int32_t row = 0; row < 14; ++row) {
        kef_brng brng;
        ASSERT_EQ(__vtsGetBrngProperties((row + 1) << 20, &brng), VTS_STATUS_OK);
        const std::uint32_t words[2] = {1, 0};
        EXPECT_EQ(brng.init_stream(3, stream.get(), 1, words), VTS_STATUS_BAD_METHOD) << row;
    }
}

TEST(RngJumps, ModularPowers) {
    EXPECT_EQ(__vtsiPowMod2P31M1(1132489760, 0), 1u);
    EXPECT_EQ(__vtsiPowMod2P31M1(0x7FFFFFFF, 5), 0u);
    EXPECT_EQ(__vtsiPowMod2P31M1(0xFFFFFFFF, 1), 1u);
    EXPECT_EQ(__vtsiPowMod2P31M1(7, 0x7FFFFFFE), 1u);
    EXPECT_EQ(__vtsiPowMod2P59(13, 13), UINT64_C(302875106592253));
    EXPECT_EQ(__vtsiPowMod2P59(~UINT64_C(0), 3), (UINT64_C(1) << 59) - 1);
    EXPECT_EQ(__vtsiPowMod(4294967290u, UINT64_C(0xFFFFFFFFFFFFFFFF), 4294967291u),
              4294967290u);  // (-1)^odd modulo the largest 32-bit prime
    EXPECT_EQ(__vtsiPowMod(5, 0, 1), 0u);
    // A three-term recurrence by hand: (1, 1, 1) modulo a large m, and k across 32 bits against its
    // parts.
    const std::uint32_t ones[3] = {1, 1, 1}, m = 4294944443u;
    std::uint32_t v[3] = {1, 0, 0}, w[3] = {123, 456, 789}, u[3] = {123, 456, 789};
    __vtsiVect3PowMod(v, ones, m, 5, 0);
    EXPECT_EQ(v[0], 13u);
    EXPECT_EQ(v[1], 7u);
    EXPECT_EQ(v[2], 4u);
    const std::uint32_t row[3] = {527612, 0, m - 1370589};
    __vtsiVect3PowMod(w, row, m, 0, 1);
    __vtsiVect3PowMod(u, row, m, 0xFFFFFFFF, 0);
    __vtsiVect3PowMod(u, row, m, 1, 0);
    for (int i = 0; i < 3; ++i) EXPECT_EQ(w[i], u[i]);
}

// Against the remainder bit by bit, for degrees of every residue modulo 8.
TEST(RngJumps, PolynomialRemainder) {
    std::mt19937 random(3);
    for (int degree = 1024; degree < 1032; ++degree)
        for (const int blocks : {1, 2, 5}) {
            const std::vector<std::uint16_t> exponents = {static_cast<std::uint16_t>(degree),
                                                          static_cast<std::uint16_t>(degree - 504),
                                                          77,
                                                          76,
                                                          8,
                                                          3,
                                                          0};
            const int bits = degree + 504 * blocks;
            std::vector<std::uint8_t> p(bits / 8 + 1 + 80);
            for (int i = 0; i < bits; ++i) p[i / 8] |= (random() & 1) << i % 8;
            std::vector<std::uint8_t> expected = p;
            for (int i = bits - 1; i >= degree; --i)
                if ((expected[i / 8] >> i % 8 & 1) != 0)
                    for (const int e : exponents)
                        expected[(i - degree + e) / 8] ^= 1 << (i - degree + e) % 8;
            ASSERT_EQ(__vtsPolyRem(p.data(), blocks, degree,
                                   static_cast<std::int32_t>(exponents.size()), exponents.data()),
                      VTS_STATUS_OK);
            EXPECT_EQ(p, expected) << degree << ", " << blocks;
        }
}

// Jumps of a generator of one's own: x[k+1279] = x[k+216] ^ x[k], two words a step.
namespace own {

constexpr std::int32_t degree = 1279, stride = 2, words = degree * stride;
constexpr std::uint16_t exponents[] = {degree, 216, 0};
std::uint32_t* state(const kef_stream* stream) {
    return reinterpret_cast<std::uint32_t*>(
        reinterpret_cast<kef_stream_header*>(const_cast<kef_stream*>(stream)) + 1);
}
void load(const kef_stream* s, std::uint32_t* w) { std::copy_n(state(s), words, w); }
void store(kef_stream* s, const std::uint32_t* w) { std::copy_n(w, words, state(s)); }
void clear(std::uint32_t* w) { std::fill_n(w, words, 0); }
void copy(std::uint32_t* to, const std::uint32_t* from) { std::copy_n(from, words, to); }
void step(std::uint32_t* w, std::int32_t count) {
    for (std::int32_t i = 0; i < stride * count; ++i) w[words + i] = w[216 * stride + i] ^ w[i];
}
void add(std::uint32_t* to, const std::uint32_t* from, const std::uint32_t* places,
         std::int32_t count) {
    for (std::int32_t i = 0; i < count; ++i)
        for (std::int32_t j = 0; j < words; ++j) to[j] ^= from[places[i] + j];
}

std::int32_t seed(std::int32_t, kef_stream* stream, std::int32_t, const std::uint32_t*) {
    std::mt19937 random(6);
    for (std::int32_t i = 0; i < words; ++i) state(stream)[i] = random();
    return VTS_STATUS_OK;
}

}  // namespace own

TEST(RngJumps, OwnGenerator) {
    constexpr std::int32_t size = sizeof(kef_stream_header) + 4 * own::words;
    const kef_brng row = {size,
                          1,
                          1,
                          4,
                          32,
                          own::seed,
                          [](auto...) { return std::int32_t{0}; },
                          [](auto...) { return std::int32_t{0}; },
                          [](auto...) { return std::int32_t{0}; }};
    const std::int32_t brng = __vtsRegisterBrng(&row);
    const auto jump = [&](auto way, std::uint64_t k, std::int32_t state_size) {
        Stream stream = make_stream(brng);
        const std::int32_t status =
            way(stream.get(), own::load, own::store, own::clear, own::copy, own::step, own::add, k,
                own::words, own::stride, own::degree, state_size, 3, own::exponents);
        return std::pair(
            status, std::vector(own::state(stream.get()), own::state(stream.get()) + own::words));
    };
    std::vector<std::uint32_t> walked(own::words + 20000 * own::stride);
    own::load(make_stream(brng).get(), walked.data());
    own::step(walked.data(), 20000);
    for (const std::int32_t k : {0, 1, 2, 1000, 1278, 1279, 1280, 2557, 2558, 20000}) {
        const std::vector<std::uint32_t> expected(walked.begin() + k * own::stride,
                                                  walked.begin() + k * own::stride + own::words);
        EXPECT_EQ(jump(__vts_SkipAheadHorner, k, size), std::pair(VTS_STATUS_OK + 0, expected));
        EXPECT_EQ(jump(__vts_SkipAheadSWin, k, size), std::pair(VTS_STATUS_OK + 0, expected));
    }
    for (const std::uint64_t k : {UINT64_C(1) << 40, UINT64_C(0xFEDCBA9876543210)})
        EXPECT_EQ(jump(__vts_SkipAheadHorner, k, size), jump(__vts_SkipAheadSWin, k, size)) << k;
    EXPECT_EQ(jump(__vts_SkipAheadHorner, 5, size - 1).first, VTS_STATUS_BAD_ARGUMENT);
    EXPECT_EQ(jump(__vts_SkipAheadSWin, 5, size - 1).first, VTS_STATUS_BAD_ARGUMENT);
}

}  // namespace
