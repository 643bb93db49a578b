/// Random streams, and laws whose numbers they make.
///
///   kef::Stream stream(kef::Generator::mt19937, 2024);
///   kef::Normal(0.0, 1.0).fill(stream, x);      a range
///   double one = kef::Normal(0.0, 1.0)(stream); one number, by a call of its own
///   kef::Draws draws(stream, kef::Normal(0.0, 1.0));
///   double next = draws();                      one number out of a block
///
/// Streams satisfy std::uniform_random_bit_generator. Status codes of the library are thrown as
/// kef::StatusError, wrong arguments as kef::ArgumentError.
#ifndef KEF_RANDOM_HPP
#define KEF_RANDOM_HPP

#include <algorithm>
#include <array>
#include <cmath>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <exception>
#include <filesystem>
#include <functional>
#include <istream>
#include <limits>
#include <memory>
#include <ostream>
#include <ranges>
#include <span>
#include <string>
#include <system_error>
#include <type_traits>
#include <utility>
#include <vector>

#include "kef/error.hpp"
#include "kef/vm.hpp"
#include "kef_dist.h"
#include "kef_rng.h"

namespace kef {

/// The generators; docs/generators.md tells periods, seeds and jumps. wh and mt2203 are families of
/// 273 and 6024 members. A generator of one's own is Generator(the id of __vtsRegisterBrng).
enum class Generator : std::int32_t {
    mcg31m1 = VTS_BRNG_MCG31M1,
    r250 = VTS_BRNG_R250,
    mrg32k3a = VTS_BRNG_MRG32K3A,
    mcg59 = VTS_BRNG_MCG59,
    wh = VTS_BRNG_WH,
    sobol = VTS_BRNG_SOBOL,      ///< the seed word is the dimension, 1 to 40
    niederr = VTS_BRNG_NIEDERR,  ///< likewise, 1 to 318
    mt19937 = VTS_BRNG_MT19937,
    mt2203 = VTS_BRNG_MT2203,
    sfmt19937 = VTS_BRNG_SFMT19937,
    trng = VTS_BRNG_TRNG  ///< random numbers of the processor; nothing to seed
};

/// Member k of a family: member(Generator::mt2203, 17).
inline Generator member(Generator family, std::int32_t k) {
    const detail::Checker check{Family::streams, VTS_STATUS_BAD_BRNG, "kef::member"};
    std::int32_t row, sub;
    const std::int64_t id = std::int64_t(family) + k;
    const kef_brng* const table = __vtsGetBrngBaseOffset(std::int32_t(family), &row, &sub);
    check.require(__vtsIsBrngValid(table, row, sub) == VTS_STATUS_OK && sub == 0, "family",
                  "is no family of generators");
    check.require(k >= 0 && k < 1 << 20 && __vtsIsBrngValid(table, row, k) == VTS_STATUS_OK, "k",
                  "is no member of the family");
    return Generator(std::int32_t(id));
}

namespace detail {

/// The caller's numbers behind a stream: a buffer that knows its owner, which is all that a refill
/// callback is told, and what the caller's function has thrown.
struct Source {
    virtual ~Source() = default;
    std::exception_ptr failure;
};
template <class T> class SourceOf : public Source {
public:
    using Refill = std::function<std::size_t(std::span<T>)>;
    SourceOf(Refill refill, std::size_t length)
        : refill_(std::move(refill)), block_(header + length * sizeof(T)), length_(length) {
        SourceOf* const self = this;
        std::memcpy(block_.data(), &self, sizeof self);
    }
    SourceOf(const SourceOf&) = delete;
    T* numbers() { return reinterpret_cast<T*>(block_.data() + header); }
    /// The buffer is full when a stream begins.
    void fill() {
        for (std::size_t filled = 0; filled < length_;) {
            const std::size_t more = refill_(std::span<T>(numbers() + filled, length_ - filled));
            checker().require(more > 0 && more <= length_ - filled, "refill",
                              "wrote no number, or more than there is room for");
            filled += more;
        }
    }
    static Checker checker() {
        return {Family::streams, VTS_STATUS_BAD_REFILL, "kef::Stream::from_numbers"};
    }
    static std::int32_t callback(kef_stream*, T* buffer, std::int32_t length,
                                 std::int32_t) noexcept {
        SourceOf* self;
        std::memcpy(&self, reinterpret_cast<const std::byte*>(buffer) - header, sizeof self);
        try {
            const std::size_t count = self->refill_(std::span<T>(buffer, std::size_t(length)));
            return std::int32_t(std::min(count, std::size_t(length) + 1));  // too many stays so
        } catch (...) {
            self->failure = std::current_exception();
            return VTS_STATUS_NO_NUMBERS;
        }
    }

private:
    static constexpr std::size_t header = 16;
    Refill refill_;
    std::vector<std::byte> block_;
    std::size_t length_;
};

}  // namespace detail

/// A random stream: the state of one generator, with what laws keep from call to call. A stream
/// that was moved from takes assignment and destruction; anything else throws. One thread at a
/// time.
class Stream {
public:
    using result_type = std::uint32_t;
    static constexpr result_type min() { return 0; }
    static constexpr result_type max() { return 0xFFFFFFFF; }

    /// Seeded with one word.
    explicit Stream(Generator generator = Generator::mt19937, std::uint32_t seed = 1)
        : Stream(generator, std::span<const std::uint32_t>(&seed, 1)) {}
    /// Seeded with the words of a range; none: the generator's default.
    Stream(Generator generator, std::span<const std::uint32_t> seed) {
        const detail::Checker check = checker("kef::Stream");
        check.require_data(seed, "seed");
        check.require(seed.size() <= std::numeric_limits<std::int32_t>::max(), "seed",
                      "has more than 2^31 - 1 words");
        const std::uint32_t most = generator == Generator::sobol     ? 40
                                   : generator == Generator::niederr ? 318
                                                                     : 0;
        check.require(most == 0 || seed.size() != 1 || (seed[0] >= 1 && seed[0] <= most), "seed",
                      "is no dimension that the generator has");
        check.status(settle(__vtsNewStreamEx(&handle_, std::int32_t(generator),
                                             std::int32_t(seed.size()), seed.data())));
    }
    /// The caller's own numbers: refill(span) writes some from the start of it on and gives how
    /// many, at least one; it is called when `length` numbers are used up. T: double or float, on
    /// [a, b), which laws scale as they need, or std::uint32_t. What refill throws leaves the call
    /// that needed numbers. Such a stream is neither copied nor saved.
    template <class T>
    static Stream from_numbers(
        std::type_identity_t<std::function<std::size_t(std::span<T>)>> refill,
        std::size_t length = 1024, T a = 0, T b = 1) {
        const detail::Checker check = detail::SourceOf<T>::checker();
        check.require(bool(refill), "refill", "is empty");
        check.require(length > 0 && length < std::size_t(1) << 30, "length",
                      "is not in 1 .. 2^30 - 1");
        auto source = std::make_shared<detail::SourceOf<T>>(std::move(refill), length);
        source->fill();
        Stream stream(nullptr);
        const auto callback = detail::SourceOf<T>::callback;
        const std::int32_t n = std::int32_t(length);
        std::int32_t status;
        if constexpr (std::floating_point<T>) {
            check.require(std::isfinite(a) && std::isfinite(b) && a < b, "b", "is not above a");
            status = detail::by_type<T>(__vtssNewAbstractStream, __vtsdNewAbstractStream)(
                &stream.handle_, n, source->numbers(), a, b, callback);
        } else {
            static_assert(std::same_as<T, std::uint32_t>);
            status = __vtsiNewAbstractStream(&stream.handle_, n, source->numbers(), callback);
        }
        check.status(stream.settle(status));
        stream.source_ = std::move(source);
        return stream;
    }
    /// A stream with chunks of its own that goes on like the other one.
    Stream(const Stream& other) {
        other.require_generator("kef::Stream");
        checker("kef::Stream").status(settle(__vtsCopyStream(&handle_, other.get("kef::Stream"))));
    }
    Stream(Stream&& other) noexcept
        : handle_(std::exchange(other.handle_, nullptr)), source_(std::move(other.source_)) {}
    Stream& operator=(const Stream& other) {
        if (this != &other) Stream(other).swap(*this);
        return *this;
    }
    Stream& operator=(Stream&& other) noexcept {
        if (this != &other) Stream(std::move(other)).swap(*this);
        return *this;
    }
    ~Stream() { __vtsDeleteStream(&handle_); }
    void swap(Stream& other) noexcept {
        std::swap(handle_, other.handle_);
        source_.swap(other.source_);
    }
    friend void swap(Stream& a, Stream& b) noexcept { a.swap(b); }

    Generator generator() const {
        return Generator(__vtsGetStreamStateBrng(get("kef::Stream::generator")));
    }
    /// False after the stream was moved from.
    bool valid() const noexcept { return handle_ != nullptr; }

    /// 32 bits. From generators without (docs/streams.md) the floor of a uniform number on
    /// [0, 2^32), whose low bits are as good as the generator's resolution.
    result_type operator()() {
        kef_stream* const stream = get("kef::Stream::operator()");
        result_type word;
        std::int32_t status = _vtsiRngUniformBits32(0, stream, 1, &word);
        if (status == VTS_STATUS_NO_BITS) {
            double u = 0;
            status = _vtsdRngUniform(VTS_METHOD_ACCURATE, stream, 1, &u, 0, 0x1p32);
            word = u < 0x1p32 ? result_type(u) : max();
        }
        settled("kef::Stream::operator()", status);
        return word;
    }

    /// Of the numbers that would come, from now on k, k + count, k + 2 count, ...; 0 <= k < count.
    void leapfrog(std::int32_t k, std::int32_t count) {
        const detail::Checker check = checker("kef::Stream::leapfrog");
        check.require(count > 0, "count", "is not positive");
        check.require(k >= 0 && k < count, "k", "is not in 0 .. count - 1");
        check.status(__vtsLeapfrogStream(get(check.function), k, count));
    }
    /// Without the next `count` numbers.
    void skip(std::uint64_t count) {
        const detail::Checker check = checker("kef::Stream::skip");
        check.status(__vtsSkipAheadStream(get(check.function), count));
    }

    /// State and chunks as bytes, the same on every system: docs/streams.md has the layout.
    std::vector<std::byte> image() const {
        const detail::Checker check = checker("kef::Stream::image");
        require_generator(check.function);
        const std::int32_t size = __vtsGetStreamSize(get(check.function));
        check.status(size);
        std::vector<std::byte> bytes{std::size_t(size)};
        check.status(__vtsSaveStreamM(handle_, bytes.data()));
        return bytes;
    }
    /// A stream from an image, of which no byte is trusted.
    static Stream from_image(std::span<const std::byte> image) {
        const detail::Checker check = checker("kef::Stream::from_image");
        check.require_data(image, "image");
        Stream stream(nullptr);
        const std::byte none{};
        check.status(stream.settle(__vtsLoadStreamMBounded(
            &stream.handle_, image.empty() ? &none : image.data(), image.size())));
        return stream;
    }

    /// A file of the image. It gets its name when it is whole: where saving fails, a file that was
    /// there is as it was. Devices and pipes are written to as they are, links followed, to a
    /// place where there is no file yet too.
    void save(const std::filesystem::path& name) const {
        const detail::Checker check = checker("kef::Stream::save");
        kef_stream* const stream = get(check.function);
        require_generator(check.function);
        check.require(!name.empty(), "name", "is empty");
        std::error_code failed;
        const std::filesystem::file_status before = std::filesystem::status(name, failed);
        const bool exists = before.type() == std::filesystem::file_type::regular;
        if (!exists && before.type() != std::filesystem::file_type::not_found) {  // a device
            file_status(check, __vtsSaveStreamF(stream, name.string().c_str(), -1), name);
            return;
        }
        std::filesystem::path whole = name;
        while (std::filesystem::is_symlink(std::filesystem::symlink_status(whole, failed))) {
            const std::filesystem::path to = std::filesystem::read_symlink(whole, failed);
            if (failed) file_status(check, VTS_STATUS_FILE_OPEN, name);
            whole = whole.parent_path() / to;
        }
        std::filesystem::path part = whole;  // beside it, and no file of the caller's
        do part += ".part";
        while (std::filesystem::exists(std::filesystem::symlink_status(part, failed)));
        std::int32_t status = __vtsSaveStreamF(stream, part.string().c_str(), -1);
        std::error_code ignored;
        if (status == VTS_STATUS_OK) {
            if (exists) std::filesystem::permissions(part, before.permissions(), ignored);
            std::filesystem::rename(part, whole, failed);
            if (!failed) return;
        }
        if (status != VTS_STATUS_FILE_OPEN) std::filesystem::remove(part, ignored);
        file_status(check, status == VTS_STATUS_OK ? VTS_STATUS_FILE_OPEN : status, name);
    }
    static Stream load(const std::filesystem::path& name) {
        const detail::Checker check = checker("kef::Stream::load");
        check.require(!name.empty(), "name", "is empty");
        Stream stream(nullptr);
        file_status(check,
                    stream.settle(__vtsLoadStreamF(&stream.handle_, name.string().c_str(), -1)),
                    name);
        return stream;
    }

    /// The image on a C++ stream, in binary mode; what follows on it stays there. Failing throws
    /// StatusError (VTS_STATUS_FILE_WRITE, _FILE_READ, _BAD_IMAGE).
    void save(std::ostream& out) const {
        const std::vector<std::byte> bytes = image();
        out.write(reinterpret_cast<const char*>(bytes.data()), std::streamsize(bytes.size()));
        if (!out) checker("kef::Stream::save").failed(VTS_STATUS_FILE_WRITE);
    }
    static Stream load(std::istream& in) {
        const detail::Checker check = checker("kef::Stream::load");
        std::vector<std::byte> bytes;
        const auto take = [&](std::size_t count) {  // memory as data arrives
            const std::size_t at = bytes.size();
            for (std::size_t left = count; left != 0;) {
                const std::size_t step = left < 1 << 16 ? left : 1 << 16;
                bytes.resize(bytes.size() + step);
                if (!in.read(reinterpret_cast<char*>(&bytes[bytes.size() - step]),
                             std::streamsize(step)))
                    check.failed(VTS_STATUS_FILE_READ);
                left -= step;
            }
            return at;
        };
        const auto number = [&](std::size_t at, int size) {
            std::uint32_t value = 0;
            while (size-- > 0) value = value << 8 | std::uint32_t(bytes[at + std::size_t(size)]);
            return value;
        };
        const std::size_t header = take(20);
        take(number(header + 10, 2));
        for (std::uint32_t chunks = number(header + 12, 2); chunks != 0; --chunks) {
            const std::size_t size = number(take(24) + 20, 4);
            if (size <= 0x7FFFFFFF) take(size);  // of a negative size there is nothing
        }
        return from_image(bytes);
    }

    /// Throws what a draw of `function` ended with, if it is an error.
    void settled(const char* function, std::int32_t status) {
        if (source_ && source_->failure) [[unlikely]]
            std::rethrow_exception(std::exchange(source_->failure, nullptr));
        checker(function).status(status);
    }
    /// For calls of the C interface; null after the stream was moved from.
    kef_stream* handle() noexcept { return handle_; }
    const kef_stream* handle() const noexcept { return handle_; }

private:
    explicit Stream(std::nullptr_t) {}
    static detail::Checker checker(const char* function) {
        return {Family::streams, VTS_STATUS_BAD_ARGUMENT, function};
    }
    static void file_status(const detail::Checker& check, std::int32_t status,
                            const std::filesystem::path& name) {
        if (status < 0) throw StatusError(check.family, status, check.function, name.string());
    }
    kef_stream* get(const char* function) const {
        checker(function).require(handle_ != nullptr, "stream", "was moved from");
        return handle_;
    }
    void require_generator(const char* function) const {
        checker(function).require(!source_, "stream", "is one of the caller's numbers");
    }
    // A constructor that throws has no destructor behind it.
    std::int32_t settle(std::int32_t status) {
        if (status != VTS_STATUS_OK) __vtsDeleteStream(&handle_);
        return status;
    }

    kef_stream* handle_ = nullptr;
    std::shared_ptr<detail::Source> source_;  // of from_numbers
};

namespace detail {

inline Checker stream_argument(const char* function) {
    return {Family::streams, VTS_STATUS_BAD_ARGUMENT, function};
}

/// What all laws have: fill() and single numbers, from Derived::draw(stream, n, r).
template <class Derived, class T> class Law {
public:
    using result_type = T;

    /// Fills a range with numbers of the law.
    template <output_of<T> R> void fill(Stream& stream, R&& range) const {
        const Checker check = stream_argument(Derived::name);
        check.require(stream.valid(), "stream", "was moved from");
        T* const r = std::ranges::data(range);
        const std::size_t n = size_of(range);
        check.require(n == 0 || r != nullptr, "range", "is null");
        fill_places(check, stream, r, n);
    }
    /// One number. A law of integers makes its tables anew for each: take Draws or fill() for many.
    T operator()(Stream& stream) const {
        T number{};
        fill(stream, std::span<T>(&number, 1));
        return number;
    }

protected:
    /// How many numbers belong together.
    std::size_t together() const { return 1; }

private:
    void fill_places(const Checker& check, Stream& stream, T* r, std::size_t n) const {
        std::int32_t status = VTS_STATUS_OK;
        // The exponentials of a lognormal law may report elements.
        Errors::run(Derived::name, [&] {
            const Derived& law = static_cast<const Derived&>(*this);
            const std::size_t most = most_elements / law.together() * law.together();
            for (std::size_t i = 0; i < n && status >= 0; i += most) {
                Errors::at(i);
                status =
                    law.draw(stream.handle(), std::int32_t(n - i < most ? n - i : most), r + i);
            }
        });
        stream.settled(check.function, status);
    }
};

template <class T> T finite(const char* law, T value, const char* argument) {
    stream_argument(law).require(std::isfinite(value), argument, "is not finite");
    return value;
}
template <class T> T positive(const char* law, T value, const char* argument) {
    finite(law, value, argument);
    stream_argument(law).require(value > 0, argument, "is not positive");
    return value;
}
template <class T> T not_negative(const char* law, T value, const char* argument) {
    if constexpr (std::is_floating_point_v<T>) finite(law, value, argument);
    stream_argument(law).require(value >= 0, argument, "is negative");
    return value;
}
/// In [0, 1], or without zero.
inline double probability(const char* law, double value, const char* argument, bool zero = true) {
    stream_argument(law).require(value >= 0 && value <= 1 && (zero || value > 0), argument,
                                 zero ? "is not in [0, 1]" : "is not in (0, 1]");
    return value;
}

/// A law of a displacement a and a scale beta > 0. Names gives the name and the C functions.
template <class T, class Names> class ScaledLaw : public Law<ScaledLaw<T, Names>, T> {
public:
    static constexpr const char* name = Names::name;

    explicit ScaledLaw(T a = 0, T beta = 1)
        : a_(finite(name, a, "a")), beta_(positive(name, beta, "beta")) {}
    T a() const noexcept { return a_; }
    T beta() const noexcept { return beta_; }

private:
    friend Law<ScaledLaw, T>;
    std::int32_t draw(kef_stream* stream, std::int32_t n, T* r) const {
        return by_type<T>(Names::single, Names::twice)(VTS_METHOD_STANDARD, stream, n, r, a_,
                                                       beta_);
    }
    T a_, beta_;
};

#define KEF_LAW_NAMES(law)                                                            \
    struct law##Names {                                                               \
        static constexpr const char* name = "kef::" #law;                             \
        static constexpr auto single = [](auto... x) { return _vtssRng##law(x...); }; \
        static constexpr auto twice = [](auto... x) { return _vtsdRng##law(x...); };  \
    };
KEF_LAW_NAMES(Exponential)
KEF_LAW_NAMES(Laplace)
KEF_LAW_NAMES(Cauchy)
KEF_LAW_NAMES(Rayleigh)
KEF_LAW_NAMES(Gumbel)
#undef KEF_LAW_NAMES

}  // namespace detail

// Laws. kef_dist.h tells formulas, methods and sources. T is float or double; for laws of integers
// numbers are std::int32_t.

/// Uniform on [a, b), a < b; never outside [a, b].
template <std::floating_point T = double> class Uniform : public detail::Law<Uniform<T>, T> {
public:
    static constexpr const char* name = "kef::Uniform";

    explicit Uniform(T a = 0, T b = 1)
        : a_(detail::finite(name, a, "a")), b_(detail::finite(name, b, "b")) {
        detail::stream_argument(name).require(a < b, "b", "is not above a");
    }
    T a() const noexcept { return a_; }
    T b() const noexcept { return b_; }

private:
    friend detail::Law<Uniform, T>;
    std::int32_t draw(kef_stream* stream, std::int32_t n, T* r) const {
        return detail::by_type<T>(_vtssRngUniform, _vtsdRngUniform)(VTS_METHOD_ACCURATE, stream, n,
                                                                    r, a_, b_);
    }
    T a_, b_;
};

/// Integers uniform on [a, b), a < b.
class UniformInteger : public detail::Law<UniformInteger, std::int32_t> {
public:
    static constexpr const char* name = "kef::UniformInteger";

    UniformInteger(std::int32_t a, std::int32_t b) : a_(a), b_(b) {
        detail::stream_argument(name).require(a < b, "b", "is not above a");
    }
    std::int32_t a() const noexcept { return a_; }
    std::int32_t b() const noexcept { return b_; }

private:
    friend detail::Law<UniformInteger, std::int32_t>;
    std::int32_t draw(kef_stream* stream, std::int32_t n, std::int32_t* r) const {
        const std::int32_t status = _vtsiRngUniform(VTS_METHOD_STANDARD, stream, n, r, a_, b_);
        // The product of a uniform rounds up to b once in a while.
        for (std::int32_t i = 0; status >= 0 && i < n; ++i) r[i] -= r[i] == b_;
        return status;
    }
    std::int32_t a_, b_;
};

/// Random bits, from the generators that have 32 or 64 (StatusError from others). Draws of them are
/// uniform random bit generators.
template <class Word> class Bits : public detail::Law<Bits<Word>, Word> {
    static_assert(std::same_as<Word, std::uint32_t> || std::same_as<Word, std::uint64_t>);

public:
    static constexpr const char* name = "kef::Bits";
    static constexpr Word min() { return 0; }
    static constexpr Word max() { return std::numeric_limits<Word>::max(); }

private:
    friend detail::Law<Bits, Word>;
    std::int32_t draw(kef_stream* stream, std::int32_t n, Word* r) const {
        if constexpr (sizeof(Word) == 4)
            return _vtsiRngUniformBits32(VTS_METHOD_STANDARD, stream, n, r);
        else return _vtsiRngUniformBits64(VTS_METHOD_STANDARD, stream, n, r);
    }
};
using Bits32 = Bits<std::uint32_t>;
using Bits64 = Bits<std::uint64_t>;

/// How normal numbers are made.
enum class NormalMethod : std::int32_t {
    box_muller = VTS_METHOD_GAUSSIAN_BOX_MULLER,
    box_muller_pairs = VTS_METHOD_GAUSSIAN_BOX_MULLER_PAIRS,
    inversion = VTS_METHOD_GAUSSIAN_INVERSION
};

namespace detail {

inline std::int32_t normal_method(const char* law, NormalMethod method) {
    stream_argument(law).require(
        method >= NormalMethod::box_muller && method <= NormalMethod::inversion, "method",
        "is not one of NormalMethod");
    return std::int32_t(method);
}

}  // namespace detail

/// Normal with a mean and a standard deviation > 0.
template <std::floating_point T = double> class Normal : public detail::Law<Normal<T>, T> {
public:
    static constexpr const char* name = "kef::Normal";

    explicit Normal(T mean = 0, T deviation = 1, NormalMethod method = NormalMethod::inversion)
        : mean_(detail::finite(name, mean, "mean")),
          deviation_(detail::positive(name, deviation, "deviation")),
          method_(detail::normal_method(name, method)) {}
    T mean() const noexcept { return mean_; }
    T deviation() const noexcept { return deviation_; }

private:
    friend detail::Law<Normal, T>;
    std::int32_t draw(kef_stream* stream, std::int32_t n, T* r) const {
        return detail::by_type<T>(_vtssRngGaussian, _vtsdRngGaussian)(method_, stream, n, r, mean_,
                                                                      deviation_);
    }
    T mean_, deviation_;
    std::int32_t method_;
};

/// b + beta exp(x), x normal with a mean and a deviation > 0; beta > 0. By inversion, which stands
/// at any deviation, or from box_muller_pairs. An exponential that overflows is an element error.
template <std::floating_point T = double> class Lognormal : public detail::Law<Lognormal<T>, T> {
public:
    static constexpr const char* name = "kef::Lognormal";

    explicit Lognormal(T mean = 0, T deviation = 1, T b = 0, T beta = 1,
                       NormalMethod method = NormalMethod::inversion)
        : mean_(detail::finite(name, mean, "mean")),
          deviation_(detail::positive(name, deviation, "deviation")),
          b_(detail::finite(name, b, "b")),
          beta_(detail::positive(name, beta, "beta")),
          method_(method == NormalMethod::inversion ? VTS_METHOD_LOGNORMAL_INVERSION
                                                    : VTS_METHOD_LOGNORMAL_BOX_MULLER_PAIRS) {
        detail::stream_argument(name).require(
            method == NormalMethod::inversion || method == NormalMethod::box_muller_pairs, "method",
            "is not inversion or box_muller_pairs");
    }

private:
    friend detail::Law<Lognormal, T>;
    std::int32_t draw(kef_stream* stream, std::int32_t n, T* r) const {
        return detail::by_type<T>(_vtssRngLognormal, _vtsdRngLognormal)(
            method_, stream, n, r, mean_, deviation_, b_, beta_);
    }
    T mean_, deviation_, b_, beta_;
    std::int32_t method_;
};

/// How the factor of a covariance matrix stands in a range.
enum class Factor : std::int32_t {
    full = VTS_MATRIX_FULL,         ///< by rows; what is above the diagonal is not read
    packed = VTS_MATRIX_PACKED,     ///< the lower triangle by columns
    diagonal = VTS_MATRIX_DIAGONAL  ///< the diagonal alone
};

/// Vectors a + T z of `dimension` numbers, one after another, z of independent standard normal
/// numbers: their covariance is T T^t. The mean a gives the dimension; the factor T has dimension^2
/// (full), dimension (dimension + 1) / 2 (packed) or dimension (diagonal) elements. Both are
/// copied.
template <std::floating_point T = double>
class NormalVectors : private detail::Law<NormalVectors<T>, T> {
public:
    using result_type = T;
    static constexpr const char* name = "kef::NormalVectors";

    NormalVectors(std::span<const T> mean, std::span<const T> factor, Factor storage = Factor::full,
                  NormalMethod method = NormalMethod::inversion)
        : method_(detail::normal_method(name, method)), storage_(std::int32_t(storage)) {
        const detail::Checker check = detail::stream_argument(name);
        check.require_data(mean, "mean");
        check.require_data(factor, "factor");
        const std::size_t d = mean.size();
        check.require(d > 0, "mean", "is empty");
        check.require(d < 1 << 15, "mean", "has more than 32767 elements");
        check.require(storage >= Factor::full && storage <= Factor::diagonal, "storage",
                      "is not one of Factor");
        check.require_size(factor.size(),
                           storage == Factor::full     ? d * d
                           : storage == Factor::packed ? d * (d + 1) / 2
                                                       : d,
                           "factor");
        for (const T x : mean) detail::finite(name, x, "mean");
        for (const T x : factor) check.require(!std::isnan(x), "factor", "has a NaN");
        mean_.assign(mean.begin(), mean.end());
        factor_.assign(factor.begin(), factor.end());
    }
    std::size_t dimension() const noexcept { return mean_.size(); }

    /// Fills a range with whole vectors.
    template <detail::output_of<T> R> void fill(Stream& stream, R&& range) const {
        detail::stream_argument(name).require(detail::size_of(range) % dimension() == 0, "range",
                                              "is not a number of whole vectors");
        Base::fill(stream, std::span<T>(std::ranges::data(range), detail::size_of(range)));
    }

private:
    using Base = detail::Law<NormalVectors, T>;
    friend Base;
    std::size_t together() const { return dimension(); }
    std::int32_t draw(kef_stream* stream, std::int32_t n, T* r) const {
        const std::int32_t d = std::int32_t(dimension());
        return detail::by_type<T>(_vtssRngGaussianMV, _vtsdRngGaussianMV)(
            method_, stream, n / d, r, d, storage_, mean_.data(), factor_.data());
    }
    std::int32_t method_, storage_;
    std::vector<T> mean_, factor_;
};

/// a + beta X, X exponential: density e^-x.
template <std::floating_point T = double>
using Exponential = detail::ScaledLaw<T, detail::ExponentialNames>;
/// a + beta X, density e^-|x| / 2.
template <std::floating_point T = double>
using Laplace = detail::ScaledLaw<T, detail::LaplaceNames>;
/// a + beta X, density 1 / (pi (1 + x^2)).
template <std::floating_point T = double> using Cauchy = detail::ScaledLaw<T, detail::CauchyNames>;
/// a + beta X, P(X > x) = e^-(x^2).
template <std::floating_point T = double>
using Rayleigh = detail::ScaledLaw<T, detail::RayleighNames>;
/// a + beta X, P(X > x) = e^-(e^x): the law of minima.
template <std::floating_point T = double> using Gumbel = detail::ScaledLaw<T, detail::GumbelNames>;

/// a + beta X, P(X > x) = e^-(x^alpha); alpha, beta > 0.
template <std::floating_point T = double> class Weibull : public detail::Law<Weibull<T>, T> {
public:
    static constexpr const char* name = "kef::Weibull";

    explicit Weibull(T alpha, T a = 0, T beta = 1)
        : alpha_(detail::positive(name, alpha, "alpha")),
          a_(detail::finite(name, a, "a")),
          beta_(detail::positive(name, beta, "beta")) {}

private:
    friend detail::Law<Weibull, T>;
    std::int32_t draw(kef_stream* stream, std::int32_t n, T* r) const {
        return detail::by_type<T>(_vtssRngWeibull, _vtsdRngWeibull)(VTS_METHOD_STANDARD, stream, n,
                                                                    r, alpha_, a_, beta_);
    }
    T alpha_, a_, beta_;
};

/// a + beta X, density x^(alpha - 1) e^-x / Gamma(alpha); alpha, beta > 0.
template <std::floating_point T = double> class Gamma : public detail::Law<Gamma<T>, T> {
public:
    static constexpr const char* name = "kef::Gamma";

    explicit Gamma(T alpha, T a = 0, T beta = 1)
        : alpha_(detail::positive(name, alpha, "alpha")),
          a_(detail::finite(name, a, "a")),
          beta_(detail::positive(name, beta, "beta")) {}

private:
    friend detail::Law<Gamma, T>;
    std::int32_t draw(kef_stream* stream, std::int32_t n, T* r) const {
        return detail::by_type<T>(_vtssRngGamma, _vtsdRngGamma)(VTS_METHOD_STANDARD, stream, n, r,
                                                                alpha_, a_, beta_);
    }
    T alpha_, a_, beta_;
};

/// a + beta X, density x^(p - 1) (1 - x)^(q - 1) / B(p, q); p, q, beta > 0.
template <std::floating_point T = double> class Beta : public detail::Law<Beta<T>, T> {
public:
    static constexpr const char* name = "kef::Beta";

    Beta(T p, T q, T a = 0, T beta = 1)
        : p_(detail::positive(name, p, "p")),
          q_(detail::positive(name, q, "q")),
          a_(detail::finite(name, a, "a")),
          beta_(detail::positive(name, beta, "beta")) {}

private:
    friend detail::Law<Beta, T>;
    std::int32_t draw(kef_stream* stream, std::int32_t n, T* r) const {
        return detail::by_type<T>(_vtssRngBeta, _vtsdRngBeta)(VTS_METHOD_STANDARD, stream, n, r, p_,
                                                              q_, a_, beta_);
    }
    T p_, q_, a_, beta_;
};

/// 1 with probability p in [0, 1], or 0.
class Bernoulli : public detail::Law<Bernoulli, std::int32_t> {
public:
    static constexpr const char* name = "kef::Bernoulli";

    explicit Bernoulli(double p) : p_(detail::probability(name, p, "p")) {}

private:
    friend detail::Law<Bernoulli, std::int32_t>;
    std::int32_t draw(kef_stream* stream, std::int32_t n, std::int32_t* r) const {
        return _vtsiRngBernoulli(VTS_METHOD_STANDARD, stream, n, r, p_);
    }
    double p_;
};

/// Failures before the first success of probability p in (0, 1].
class Geometric : public detail::Law<Geometric, std::int32_t> {
public:
    static constexpr const char* name = "kef::Geometric";

    explicit Geometric(double p) : p_(detail::probability(name, p, "p", false)) {}

private:
    friend detail::Law<Geometric, std::int32_t>;
    std::int32_t draw(kef_stream* stream, std::int32_t n, std::int32_t* r) const {
        return _vtsiRngGeometric(VTS_METHOD_STANDARD, stream, n, r, p_);
    }
    double p_;
};

/// Successes in `trials` >= 0 trials of probability p in [0, 1].
class Binomial : public detail::Law<Binomial, std::int32_t> {
public:
    static constexpr const char* name = "kef::Binomial";

    Binomial(std::int32_t trials, double p)
        : trials_(detail::not_negative(name, trials, "trials")),
          p_(detail::probability(name, p, "p")) {}

private:
    friend detail::Law<Binomial, std::int32_t>;
    std::int32_t draw(kef_stream* stream, std::int32_t n, std::int32_t* r) const {
        return _vtsiRngBinomial(VTS_METHOD_STANDARD, stream, n, r, trials_, p_);
    }
    std::int32_t trials_;
    double p_;
};

/// Marked elements in a sample without replacement; 0 <= sample, marked <= population.
class Hypergeometric : public detail::Law<Hypergeometric, std::int32_t> {
public:
    static constexpr const char* name = "kef::Hypergeometric";

    Hypergeometric(std::int32_t population, std::int32_t sample, std::int32_t marked)
        : population_(detail::not_negative(name, population, "population")),
          sample_(detail::not_negative(name, sample, "sample")),
          marked_(detail::not_negative(name, marked, "marked")) {
        const detail::Checker check = detail::stream_argument(name);
        check.require(sample <= population, "sample", "is above population");
        check.require(marked <= population, "marked", "is above population");
    }

private:
    friend detail::Law<Hypergeometric, std::int32_t>;
    std::int32_t draw(kef_stream* stream, std::int32_t n, std::int32_t* r) const {
        return _vtsiRngHypergeometric(VTS_METHOD_STANDARD, stream, n, r, population_, sample_,
                                      marked_);
    }
    std::int32_t population_, sample_, marked_;
};

/// Poisson of mean lambda >= 0.
class Poisson : public detail::Law<Poisson, std::int32_t> {
public:
    static constexpr const char* name = "kef::Poisson";

    explicit Poisson(double lambda) : lambda_(detail::not_negative(name, lambda, "lambda")) {}

    /// Poisson numbers of a mean each: r[i] of mean lambda[i].
    template <detail::vector_of<double> L, detail::output_of<std::int32_t> R>
    static void fill_each(Stream& stream, L&& lambda, R&& range) {
        const detail::Checker check = detail::stream_argument("kef::Poisson::fill_each");
        check.require(stream.valid(), "stream", "was moved from");
        const std::size_t n = detail::size_of(range);
        check.require_size(detail::size_of(lambda), n, "lambda");
        const double* const means = std::ranges::data(lambda);
        std::int32_t* const r = std::ranges::data(range);
        check.require(n == 0 || means != nullptr, "lambda", "is null");
        check.require(n == 0 || r != nullptr, "range", "is null");
        check.require(!detail::place(range, "range").meets(detail::place(lambda, "lambda")),
                      "range", "overlaps lambda");
        for (std::size_t i = 0; i < n; ++i)
            detail::not_negative(check.function, means[i], "lambda");
        for (std::size_t i = 0; i < n; i += detail::most_elements) {
            const std::size_t left = n - i;
            stream.settled(
                check.function,
                _vtsiRngPoissonV(
                    VTS_METHOD_STANDARD, stream.handle(),
                    std::int32_t(left < detail::most_elements ? left : detail::most_elements),
                    r + i, means + i));
        }
    }

private:
    friend detail::Law<Poisson, std::int32_t>;
    std::int32_t draw(kef_stream* stream, std::int32_t n, std::int32_t* r) const {
        return _vtsiRngPoisson(VTS_METHOD_POISSON_UNIFORM, stream, n, r, lambda_);
    }
    double lambda_;
};

/// Failures before the a-th success of probability p in (0, 1]; a > 0 need not be whole.
class NegativeBinomial : public detail::Law<NegativeBinomial, std::int32_t> {
public:
    static constexpr const char* name = "kef::NegativeBinomial";

    NegativeBinomial(double a, double p)
        : a_(detail::positive(name, a, "a")), p_(detail::probability(name, p, "p", false)) {}

private:
    friend detail::Law<NegativeBinomial, std::int32_t>;
    std::int32_t draw(kef_stream* stream, std::int32_t n, std::int32_t* r) const {
        return _vtsiRngNegbinomial(VTS_METHOD_STANDARD, stream, n, r, a_, p_);
    }
    double a_, p_;
};

/// Single numbers of a law out of blocks of `block` that are filled at once: as many as are left in
/// the block have been taken from the stream ahead. The stream must outlive it.
template <class LawType> class Draws {
public:
    using result_type = typename LawType::result_type;

    Draws(Stream& stream, LawType law, std::size_t block = 1024)
        : stream_(&stream), law_(std::move(law)), numbers_(block), next_(block) {
        detail::stream_argument("kef::Draws").require(block > 0, "block", "is zero");
    }
    static constexpr result_type min() requires requires { LawType::min(); }
    { return LawType::min(); }
    static constexpr result_type max() requires requires { LawType::max(); }
    { return LawType::max(); }

    result_type operator()() {
        if (next_ == numbers_.size()) {
            law_.fill(*stream_, numbers_);
            next_ = 0;
        }
        return numbers_[next_++];
    }
    /// How many numbers the block still holds.
    std::size_t left() const noexcept { return numbers_.size() - next_; }

private:
    Stream* stream_;
    LawType law_;
    std::vector<result_type> numbers_;
    std::size_t next_;
};

}  // namespace kef

#endif
