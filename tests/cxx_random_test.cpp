// Streams and laws of the C++ interface.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <limits>
#include <random>
#include <set>
#include <sstream>

#include "tests/cxx_support.h"

namespace {

using cxx_test::refused;
using kef::Generator;
using kef::Stream;

static_assert(std::uniform_random_bit_generator<Stream>);
static_assert(std::uniform_random_bit_generator<kef::Draws<kef::Bits64>>);
static_assert(!std::uniform_random_bit_generator<kef::Draws<kef::Normal<>>>);
static_assert(std::is_nothrow_move_constructible_v<Stream> && std::is_copy_assignable_v<Stream>);
static_assert(!std::is_convertible_v<std::uint32_t, Stream>);
template <class R> constexpr bool normal_fills = requires(Stream s, R r) {
    kef::Normal<>().fill(s, r);
};
static_assert(normal_fills<std::vector<double>&> && normal_fills<std::span<double>>);
static_assert(!normal_fills<const std::vector<double>&> && !normal_fills<std::vector<float>&> &&
              !normal_fills<std::span<const double>>);

constexpr Generator all_generators[] = {
    Generator::mcg31m1, Generator::r250,     Generator::mrg32k3a, Generator::mcg59,
    Generator::wh,      Generator::sobol,    Generator::niederr,  Generator::mt19937,
    Generator::mt2203,  Generator::sfmt19937};

TEST(CxxStream, EveryGeneratorIsCopiedSavedAndABitGenerator) {
    for (const Generator generator : all_generators) {
        Stream stream(generator, 5);
        EXPECT_EQ(stream.generator(), generator);
        const std::uint32_t first = stream();
        Stream copy = stream, assigned;
        assigned = copy;
        std::stringstream out;
        copy.save(out);
        out << "behind";
        Stream loaded = Stream::load(out);
        std::string behind;
        out >> behind;
        EXPECT_EQ(behind, "behind");
        Stream imaged = Stream::from_image(stream.image());
        std::set<std::uint32_t> words{first};
        for (int i = 0; i < 100; ++i) {
            const std::uint32_t word = stream();
            words.insert(word);
            EXPECT_EQ(copy(), word);
            EXPECT_EQ(assigned(), word);
            EXPECT_EQ(loaded(), word);
            EXPECT_EQ(imaged(), word);
        }
        EXPECT_GT(words.size(), 20u) << std::int32_t(generator);
        EXPECT_GT(*words.rbegin(), 0xE0000000u);
        EXPECT_LT(*words.begin(), 0x20000000u);
    }
}

TEST(CxxStream, SeedsFamiliesAndJumps) {
    const std::vector<std::uint32_t> words{1, 2, 3};
    Stream one(Generator::mrg32k3a, words), other(Generator::mrg32k3a, 1);
    EXPECT_NE(one(), other());
    EXPECT_EQ(kef::member(Generator::mt2203, 6023), Generator(VTS_BRNG_MT2203 + 6023));
    EXPECT_NE(Stream(kef::member(Generator::wh, 3))(), Stream(kef::member(Generator::wh, 4))());
    EXPECT_EQ(refused([] { kef::member(Generator::mt2203, 6024); }), "kef::member: k");
    EXPECT_EQ(refused([] { kef::member(Generator::wh, -1); }), "kef::member: k");
    EXPECT_EQ(refused([] { kef::member(Generator::mt19937, 1); }), "kef::member: k");
    EXPECT_EQ(refused([] { kef::member(Generator(0x7F00000), 0); }), "kef::member: family");

    Stream whole(Generator::mcg59, 9), part(Generator::mcg59, 9);
    std::vector<double> x(30), y(10);
    kef::Uniform<>().fill(whole, x);
    part.leapfrog(1, 3);
    kef::Uniform<>().fill(part, y);
    for (std::size_t i = 0; i < 10; ++i) EXPECT_EQ(y[i], x[3 * i + 1]);
    Stream skipped(Generator::mcg59, 9);
    skipped.skip(20);
    EXPECT_EQ(kef::Uniform<>()(skipped), x[20]);

    EXPECT_EQ(refused([&] { part.leapfrog(3, 3); }), "kef::Stream::leapfrog: k");
    EXPECT_EQ(refused([&] { part.leapfrog(-1, 3); }), "kef::Stream::leapfrog: k");
    EXPECT_EQ(refused([&] { part.leapfrog(0, 0); }), "kef::Stream::leapfrog: count");
    EXPECT_EQ(refused([] { Stream(Generator::mt19937).leapfrog(0, 2); }),
              "kef::Stream::leapfrog: -1002");
    EXPECT_EQ(refused([] { Stream(Generator(0x7F00000)); }), "kef::Stream: -1000");
    const std::span<const std::uint32_t> null(static_cast<const std::uint32_t*>(nullptr), 2);
    EXPECT_EQ(refused([&] { Stream(Generator::mt19937, null); }), "kef::Stream: seed");
    Stream(Generator::sobol, 40), Stream(Generator::niederr, 318);
    EXPECT_EQ(refused([&] { Stream(Generator::sobol, 41); }), "kef::Stream: seed");
    EXPECT_EQ(refused([&] { Stream(Generator::sobol, 0); }), "kef::Stream: seed");
    EXPECT_EQ(refused([&] { Stream(Generator::niederr, 319); }), "kef::Stream: seed");
    Stream unseeded(Generator::mt19937, std::span<const std::uint32_t>());
    unseeded();
}

TEST(CxxStream, MovedFromIsEmptyUntilAssigned) {
    Stream a(Generator::mt19937, 3), b(Generator::mt19937, 3);
    Stream taken = std::move(a);
    EXPECT_FALSE(a.valid());
    EXPECT_EQ(a.handle(), nullptr);
    EXPECT_EQ(refused([&] { a(); }), "kef::Stream::operator(): stream");
    EXPECT_EQ(refused([&] { Stream copy = a; }), "kef::Stream: stream");
    EXPECT_EQ(refused([&] { a.skip(1); }), "kef::Stream::skip: stream");
    EXPECT_EQ(refused([&] { a.image(); }), "kef::Stream::image: stream");
    EXPECT_EQ(refused([&] { kef::Normal<>()(a); }), "kef::Normal: stream");
    Stream& same = taken;
    taken = std::move(same);
    taken = same;
    const std::uint32_t word = b();
    EXPECT_EQ(taken(), word);
    a = taken;
    swap(a, b);
    EXPECT_EQ(a(), b());
}

class Directory {
public:
    Directory()
        : path_(std::filesystem::temp_directory_path() /
                ("kef_cxx_" + std::to_string(std::random_device()()))) {
        std::filesystem::create_directory(path_);
    }
    ~Directory() { std::filesystem::remove_all(path_); }
    std::filesystem::path operator/(const char* name) const { return path_ / name; }
    std::size_t files() const {
        return std::size_t(std::distance(std::filesystem::directory_iterator(path_), {}));
    }

private:
    std::filesystem::path path_;
};

TEST(CxxStream, FilesAreWholeOrAsTheyWere) {
    const Directory directory;
    const auto name = directory / "stream";
    Stream stream(Generator::sfmt19937, 7);
    stream.save(name);
    stream();
    stream.save(name);  // in its place
    EXPECT_EQ(directory.files(), 1u);
    EXPECT_EQ(Stream::load(name)(), Stream(stream)());
    EXPECT_EQ(refused([&] { Stream::load(directory / "absent"); }), "kef::Stream::load: -1101");
    EXPECT_EQ(refused([&] { Stream::load(""); }), "kef::Stream::load: name");
    EXPECT_EQ(refused([&] { stream.save(std::filesystem::path()); }), "kef::Stream::save: name");
    EXPECT_EQ(refused([&] { stream.save(directory / "no" / "stream"); }),
              "kef::Stream::save: -1101");
    try {
        Stream::load(directory / "absent");
    } catch (const kef::StatusError& error) {
        EXPECT_NE(std::string(error.what()).find("absent"), std::string::npos);
    }
    // What is the caller's beside it stays; a link stays one, and rights stay with the file.
    std::ofstream(directory / "stream.part") << "other";
    std::error_code no_links;
    std::filesystem::create_symlink("stream", directory / "link", no_links);
    const auto rights = std::filesystem::perms::owner_read | std::filesystem::perms::owner_write;
    std::filesystem::permissions(name, rights);
    const auto rights_kept = std::filesystem::status(name).permissions();
    stream.save(no_links ? name : directory / "link");
    EXPECT_EQ(std::filesystem::file_size(directory / "stream.part"), 5u);
    EXPECT_EQ(std::filesystem::is_symlink(directory / "link"), !no_links);
    EXPECT_EQ(std::filesystem::status(name).permissions(), rights_kept);
    EXPECT_EQ(Stream::load(name)(), Stream(stream)());
    EXPECT_EQ(directory.files(), no_links ? 2u : 3u);
    if (!no_links) {  // to a place without a file, by way of another link; and to itself
        std::filesystem::create_symlink("ahead", directory / "first");
        std::filesystem::create_symlink("new", directory / "ahead");
        stream.save(directory / "first");
        EXPECT_TRUE(std::filesystem::is_symlink(directory / "first"));
        EXPECT_TRUE(std::filesystem::is_symlink(directory / "ahead"));
        EXPECT_FALSE(std::filesystem::is_symlink(directory / "new"));
        EXPECT_EQ(Stream::load(directory / "new")(), Stream(stream)());
        std::filesystem::create_symlink("loop", directory / "loop");
        EXPECT_EQ(refused([&] { stream.save(directory / "loop"); }), "kef::Stream::save: -1101");
        EXPECT_TRUE(std::filesystem::is_symlink(directory / "loop"));
    }

    // Short, longer than it says, and hostile content, from a file and from a C++ stream.
    const auto image = stream.image();
    std::string bytes(reinterpret_cast<const char*>(image.data()), image.size());
    const auto load = [&](const std::string& content, const char* status) {
        std::ofstream(name, std::ios::binary) << content;
        EXPECT_EQ(refused([&] { Stream::load(name); }).substr(0, 19), "kef::Stream::load: ");
        std::istringstream in(content);
        EXPECT_EQ(refused([&] { Stream::load(in); }), status);
    };
    for (const std::size_t size :
         {std::size_t(0), std::size_t(19), std::size_t(20), bytes.size() - 1})
        load(bytes.substr(0, size), "kef::Stream::load: -1103");
    std::string wrong = bytes;
    wrong[4] = 'X';
    load(wrong, "kef::Stream::from_image: -1200");
    wrong = bytes;
    wrong[12] = wrong[13] = '\xFF';  // 65535 chunks
    load(wrong, "kef::Stream::load: -1103");
    wrong = bytes;
    wrong[12] = 1;
    load(wrong + std::string(20, '\0') + "\xFF\xFF\xFF\x7Fx", "kef::Stream::load: -1103");
    EXPECT_EQ(refused([&] { Stream::from_image(std::span(image).first(40)); }),
              "kef::Stream::from_image: -1200");
    EXPECT_EQ(refused([&] { Stream::from_image({}); }), "kef::Stream::from_image: -1200");

    std::ostringstream out;
    out.setstate(std::ios::badbit);
    EXPECT_EQ(refused([&] { stream.save(out); }), "kef::Stream::save: -1102");
    // Chunks, which laws leave in a stream, go along.
    kef::Normal normal(0.0, 1.0, kef::NormalMethod::box_muller_pairs);
    normal(stream);
    std::stringstream both;
    stream.save(both);
    Stream again = Stream::load(both);
    EXPECT_EQ(normal(again), normal(stream));
}

// Mean and variance of 100000 numbers within 6 standard errors, and the numbers of the C function.
struct Moments {
    double mean, variance, fourth;
};
template <class Law> void expect_moments(const Law& law, const char* name, Moments expected) {
    using T = typename Law::result_type;
    Stream stream(Generator::mt19937, 77);
    std::vector<T> x(100000);
    law.fill(stream, x);
    double sum = 0, squares = 0;
    for (const T v : x) sum += double(v);
    const double mean = sum / double(x.size());
    for (const T v : x) squares += (double(v) - expected.mean) * (double(v) - expected.mean);
    const double n = double(x.size()), s2 = expected.variance;
    EXPECT_NEAR(mean, expected.mean, 6 * std::sqrt(s2 / n)) << name;
    EXPECT_NEAR(squares / n, s2, 6 * std::sqrt((expected.fourth - s2 * s2) / n)) << name;
}

TEST(CxxLaws, HaveTheirMoments) {
    const double pi = 3.14159265358979323846;
    expect_moments(kef::Uniform(2.0, 5.0), "uniform", {3.5, 0.75, 81 / 80.});
    expect_moments(kef::Uniform(2.0f, 5.0f), "uniform", {3.5, 0.75, 81 / 80.});
    expect_moments(kef::UniformInteger(-2, 3), "integers", {0, 2, 34 / 5.});
    expect_moments(kef::Normal(1.0, 2.0), "normal", {1, 4, 48});
    expect_moments(kef::Normal(1.0f, 2.0f, kef::NormalMethod::box_muller), "normal", {1, 4, 48});
    const double e = std::exp(0.04);
    expect_moments(
        kef::Lognormal(0.0, 0.2, 1.0, 3.0), "lognormal",
        {1 + 3 * std::sqrt(e), 9 * e * (e - 1),
         std::pow(9 * e * (e - 1), 2) * (std::pow(e, 4) + 2 * e * e * e + 3 * e * e - 3)});
    expect_moments(kef::Exponential(1.0, 2.0), "exponential", {3, 4, 144});
    expect_moments(kef::Laplace(1.0f, 2.0f), "laplace", {1, 8, 24 * 16});
    expect_moments(kef::Rayleigh(0.0, 1.0), "rayleigh", {std::sqrt(pi) / 2, 1 - pi / 4, 0.1495});
    expect_moments(kef::Gumbel(0.0, 1.0), "gumbel", {-0.5772156649, pi * pi / 6, 14.61});
    expect_moments(kef::Weibull(2.0), "weibull", {std::sqrt(pi) / 2, 1 - pi / 4, 0.1495});
    expect_moments(kef::Gamma(3.0, 1.0, 2.0), "gamma", {7, 12, 16 * 45});
    expect_moments(kef::Beta(2.0f, 2.0f), "beta", {0.5, 0.05, 3 / 560.});
    expect_moments(kef::Bernoulli(0.25), "bernoulli", {0.25, 0.1875, 0.08203125});
    expect_moments(kef::Geometric(0.5), "geometric", {1, 2, 38});
    expect_moments(kef::Binomial(10, 0.5), "binomial", {5, 2.5, 17.5});
    expect_moments(kef::Hypergeometric(20, 10, 10), "hypergeometric", {5, 25 / 19., 4.7});
    expect_moments(kef::Poisson(4), "poisson", {4, 4, 52});
    expect_moments(kef::NegativeBinomial(2, 0.5), "negative binomial", {2, 4, 76});
    // A Cauchy law has none: a quarter of the numbers lies above 1, beta.
    Stream stream;
    std::vector<double> x(100000);
    kef::Cauchy(0.0, 1.0).fill(stream, x);
    EXPECT_NEAR(double(std::count_if(x.begin(), x.end(), [](double v) { return v > 1; })), 25000,
                900);
}

TEST(CxxLaws, CorrelatedVectorsAndPoissonOfManyMeans) {
    const std::vector<double> mean{1, -1}, full{2, 99, 1, 0.5}, packed{2, 1, 0.5}, diagonal{2, 3};
    Stream a, b, c;
    std::vector<double> x(20000), y(20000);
    kef::NormalVectors<double>(mean, full).fill(a, x);
    kef::NormalVectors<double>(mean, packed, kef::Factor::packed).fill(b, y);
    EXPECT_EQ(x, y);
    kef::Statistics<> s(2, kef::Estimate::mean | kef::Estimate::covariance);
    s.add(kef::Sample(x, 2));
    EXPECT_NEAR(s["mean"][1], -1, 0.1);
    EXPECT_NEAR(s["covariance"](0, 1), 2, 0.15);
    EXPECT_NEAR(s["covariance"](1, 1), 1.25, 0.1);
    kef::NormalVectors<double>(mean, diagonal, kef::Factor::diagonal).fill(c, x);
    const auto vectors = [&](std::span<const double> factor, kef::Factor storage) {
        return refused([&] { kef::NormalVectors<double>(mean, factor, storage); });
    };
    EXPECT_EQ(vectors(packed, kef::Factor::full), "kef::NormalVectors: factor");
    EXPECT_EQ(vectors(full, kef::Factor::packed), "kef::NormalVectors: factor");
    EXPECT_EQ(vectors(full, kef::Factor(3)), "kef::NormalVectors: storage");
    EXPECT_EQ(refused([&] { kef::NormalVectors<double>({}, full); }), "kef::NormalVectors: mean");
    EXPECT_EQ(
        refused([&] { kef::NormalVectors<double>(mean, full).fill(c, std::span(x).first(3)); }),
        "kef::NormalVectors: range");

    const std::vector<double> means{0, 1000, 3};
    std::vector<std::int32_t> counts(3, -1);
    kef::Poisson::fill_each(a, means, counts);
    EXPECT_EQ(counts[0], 0);
    EXPECT_NEAR(counts[1], 1000, 200);
    EXPECT_EQ(refused([&] { kef::Poisson::fill_each(a, mean, counts); }),
              "kef::Poisson::fill_each: lambda");
    EXPECT_EQ(refused([&] {
                  kef::Poisson::fill_each(a, std::vector<double>{1, -1, 1}, counts);
              }),
              "kef::Poisson::fill_each: lambda");
}

TEST(CxxLaws, RefuseParameters) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double inf = std::numeric_limits<double>::infinity();
    EXPECT_EQ(refused([&] { kef::Uniform(1.0, 1.0); }), "kef::Uniform: b");
    EXPECT_EQ(refused([&] { kef::Uniform(nan, 1.0); }), "kef::Uniform: a");
    EXPECT_EQ(refused([&] { kef::Uniform(0.0, inf); }), "kef::Uniform: b");
    EXPECT_EQ(refused([&] { kef::UniformInteger(3, 3); }), "kef::UniformInteger: b");
    EXPECT_EQ(refused([&] { kef::Normal(0.0, 0.0); }), "kef::Normal: deviation");
    EXPECT_EQ(refused([&] { kef::Normal(inf, 1.0); }), "kef::Normal: mean");
    EXPECT_EQ(refused([&] { kef::Normal(0.0, 1.0, kef::NormalMethod(3)); }), "kef::Normal: method");
    EXPECT_EQ(refused([&] { kef::Lognormal(0.0, 1.0, 0.0, -1.0); }), "kef::Lognormal: beta");
    EXPECT_EQ(refused([&] { kef::Lognormal(0.0, 1.0, 0.0, 1.0, kef::NormalMethod::box_muller); }),
              "kef::Lognormal: method");
    EXPECT_EQ(refused([&] { kef::Exponential(0.0, nan); }), "kef::Exponential: beta");
    EXPECT_EQ(refused([&] { kef::Weibull(0.0); }), "kef::Weibull: alpha");
    EXPECT_EQ(refused([&] { kef::Gamma(-1.0); }), "kef::Gamma: alpha");
    EXPECT_EQ(refused([&] { kef::Beta(1.0, 0.0); }), "kef::Beta: q");
    EXPECT_EQ(refused([&] { kef::Bernoulli(1.5); }), "kef::Bernoulli: p");
    EXPECT_EQ(refused([&] { kef::Bernoulli{nan}; }), "kef::Bernoulli: p");
    EXPECT_EQ(refused([&] { kef::Geometric(0); }), "kef::Geometric: p");
    EXPECT_EQ(refused([&] { kef::Binomial(-1, 0.5); }), "kef::Binomial: trials");
    EXPECT_EQ(refused([&] { kef::Hypergeometric(5, 6, 1); }), "kef::Hypergeometric: sample");
    EXPECT_EQ(refused([&] { kef::Hypergeometric(5, 1, -1); }), "kef::Hypergeometric: marked");
    EXPECT_EQ(refused([&] { kef::Poisson{nan}; }), "kef::Poisson: lambda");
    EXPECT_EQ(refused([&] { kef::NegativeBinomial(0, 0.5); }), "kef::NegativeBinomial: a");

    Stream stream, no_bits(Generator::mcg31m1);
    const std::span<double> null(static_cast<double*>(nullptr), 2);
    EXPECT_EQ(refused([&] { kef::Normal<>().fill(stream, null); }), "kef::Normal: range");
    kef::Normal<>().fill(stream, std::span<double>());
    EXPECT_EQ(refused([&] { kef::Bits32()(no_bits); }), "kef::Bits: -1014");
}

TEST(CxxLaws, DrawsAreTheNumbersOfTheLaw) {
    Stream a, b;
    std::vector<double> x(25);
    kef::Exponential(0.0, 1.0).fill(a, x);
    kef::Draws draws(b, kef::Exponential(0.0, 1.0), 10);
    for (const double v : x) EXPECT_EQ(draws(), v);
    EXPECT_EQ(draws.left(), 5u);
    EXPECT_EQ(refused([&] { kef::Draws(b, kef::Poisson(1), 0); }), "kef::Draws: block");
    kef::Draws bits(b, kef::Bits64());
    std::vector<int> order(100);
    for (int i = 0; i < 100; ++i) order[std::size_t(i)] = i;
    std::shuffle(order.begin(), order.end(), bits);
    EXPECT_FALSE(std::is_sorted(order.begin(), order.end()));
    std::normal_distribution<> normal;
    EXPECT_LT(std::abs(normal(a)), 10);
}

TEST(CxxStream, NumbersOfTheCaller) {
    double next = 0;
    std::size_t most = 3;
    Stream stream = Stream::from_numbers<double>(
        [&](std::span<double> buffer) {
            const std::size_t count = std::min(most, buffer.size());
            for (double& number : buffer.first(count)) {
                if (next >= 40) throw std::string("no more");
                number = next++ / 64;
            }
            return count;
        },
        4);
    std::vector<double> x(20);
    kef::Uniform(0.0, 64.0).fill(stream, x);
    for (int i = 0; i < 20; ++i) EXPECT_EQ(x[std::size_t(i)], i);
    EXPECT_EQ(stream(), std::uint32_t(20) << 26);
    EXPECT_EQ(refused([&] { Stream copy = stream; }), "kef::Stream: stream");
    EXPECT_EQ(refused([&] { stream.image(); }), "kef::Stream::image: stream");
    EXPECT_EQ(refused([&] { stream.save("kef_never_written"); }), "kef::Stream::save: stream");
    Stream moved;
    moved = std::move(stream);
    try {
        kef::Normal(0.0, 1.0).fill(moved, x);
        kef::Normal(0.0, 1.0).fill(moved, x);
        FAIL();
    } catch (const std::string& words) { EXPECT_EQ(words, "no more"); }
    next = 0;
    EXPECT_EQ(kef::Uniform(0.0, 64.0)(moved), 0);  // it goes on where there are numbers again
    most = 0;
    EXPECT_EQ(refused([&] { kef::Uniform(0.0, 1.0).fill(moved, x); }), "kef::Uniform: -1120");
    EXPECT_EQ(refused([&] { Stream::from_numbers<double>([](auto) { return std::size_t(0); }); }),
              "kef::Stream::from_numbers: refill");
    EXPECT_EQ(refused([&] { Stream::from_numbers<float>({}); }),
              "kef::Stream::from_numbers: refill");
    EXPECT_EQ(
        refused([&] { Stream::from_numbers<float>([](auto s) { return s.size(); }, 4, 1, 1); }),
        "kef::Stream::from_numbers: b");
    std::uint32_t word = 0;
    Stream words = Stream::from_numbers<std::uint32_t>([&](auto buffer) {
        for (auto& w : buffer) w = word++;
        return buffer.size();
    });
    std::int32_t raw[3];
    EXPECT_EQ(_vtsiRngUniformBits(0, words.handle(), 3, raw), VTS_STATUS_OK);
    EXPECT_EQ(raw[2], 2);
}

TEST(CxxLaws, OverflowOfALognormalNumberIsAnElementError) {
    Stream stream;
    std::vector<float> x(100);
    kef::Errors scope(kef::OnError::raise);
    EXPECT_THROW(kef::Lognormal(200.0f, 1.0f).fill(stream, x), kef::ElementError);
    kef::Lognormal(1.0f, 1.0f).fill(stream, x);
}

}  // namespace
