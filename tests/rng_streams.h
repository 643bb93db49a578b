// Streams for tests: created, checked and deleted.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "kef_dist.h"
#include "kef_rng.h"

struct StreamDeleter {
    void operator()(kef_stream* stream) const { __vtsDeleteStream(&stream); }
};
using Stream = std::unique_ptr<kef_stream, StreamDeleter>;

inline Stream make_stream(std::int32_t brng, const std::vector<std::uint32_t>& seed = {777}) {
    kef_stream* stream = nullptr;
    EXPECT_EQ(__vtsNewStreamEx(&stream, brng, static_cast<std::int32_t>(seed.size()), seed.data()),
              VTS_STATUS_OK)
        << std::hex << brng;
    return Stream(stream);
}

inline Stream copy_of(const Stream& source) {
    kef_stream* stream = nullptr;
    EXPECT_EQ(__vtsCopyStream(&stream, source.get()), VTS_STATUS_OK);
    return Stream(stream);
}

// Raw output of n words as 32-bit words.
inline std::vector<std::uint32_t> draw_raw(const Stream& stream, int n) {
    kef_brng brng;
    EXPECT_EQ(__vtsGetBrngProperties(__vtsGetStreamStateBrng(stream.get()), &brng), VTS_STATUS_OK);
    std::vector<std::uint32_t> words(static_cast<std::size_t>(n) * brng.word_size / 4 + 1,
                                     0xC0FFEE);
    EXPECT_EQ(brng.generate_bits(stream.get(), n, words.data()), VTS_STATUS_OK);
    EXPECT_EQ(words.back(), 0xC0FFEEu) << "written past the end";
    words.pop_back();
    return words;
}

inline std::vector<double> draw_doubles(const Stream& stream, int n, double a = 0, double b = 1) {
    std::vector<double> r(n + 1, -77);
    EXPECT_EQ(_vtsdRngUniform(0, stream.get(), n, r.data(), a, b), VTS_STATUS_OK);
    EXPECT_EQ(r.back(), -77) << "written past the end";
    r.pop_back();
    return r;
}

using Bytes = std::vector<std::uint8_t>;

inline Bytes image_of(const Stream& stream) {
    Bytes image(static_cast<std::size_t>(__vtsGetStreamSize(stream.get())) + 1, 0xA5);
    EXPECT_EQ(__vtsSaveStreamM(stream.get(), image.data()), VTS_STATUS_OK);
    EXPECT_EQ(image.back(), 0xA5) << "written past the end";
    image.pop_back();
    return image;
}

// One id of every generator that makes numbers by itself and repeatably.
inline const std::vector<std::int32_t> repeatable_generators = {VTS_BRNG_MCG31M1,
                                                                VTS_BRNG_R250,
                                                                VTS_BRNG_MRG32K3A,
                                                                VTS_BRNG_MCG59,
                                                                VTS_BRNG_WH + 5,
                                                                VTS_BRNG_SOBOL,
                                                                VTS_BRNG_NIEDERR,
                                                                VTS_BRNG_MT19937,
                                                                VTS_BRNG_MT2203 + 9,
                                                                VTS_BRNG_SFMT19937,
                                                                0,
                                                                1,
                                                                2,
                                                                3,
                                                                4,
                                                                276,
                                                                277,
                                                                278};
