// p(T) times the state for p = t^k modulo the characteristic polynomial of T: H. Haramoto, M.
// Matsumoto, T. Nishimura, F. Panneton, P. L'Ecuyer, Efficient jump ahead for F2-linear random
// number generators, INFORMS J. Comput. 20 (2008) 385-390; sliding window: Haramoto, Matsumoto,
// L'Ecuyer, A fast jump ahead algorithm for linear recurrences in a polynomial space, SETA 2008.
#include "rng/gf2_jump.h"

#include <algorithm>
#include <bit>

#include "rng/gf2_polynomial.h"
#include "service/alloc.h"

namespace kef::rng {

namespace {

// One block of memory, dealt out piece by piece.
class Memory {
public:
    template <class... Counts>
    explicit Memory(Counts... bytes)
        : start_(static_cast<char*>(allocate_aligned((rounded(bytes) + ...)))) {}
    ~Memory() { free_aligned(start_); }
    Memory(const Memory&) = delete;
    Memory& operator=(const Memory&) = delete;
    explicit operator bool() const { return start_ != nullptr; }

    template <class T> T* take(std::size_t bytes) {
        T* const piece = reinterpret_cast<T*>(start_ + used_);
        used_ += rounded(bytes);
        return piece;
    }

private:
    static std::size_t rounded(std::size_t bytes) { return (bytes + 63) / 64 * 64; }
    char* start_;
    std::size_t used_ = 0;
};

// t^k modulo the characteristic polynomial.
class Power {
public:
    Power(const Jump& g, std::uint64_t k)
        : modulus_(g.degree, g.count, g.exponents),
          memory_(modulus_.power_bytes(), modulus_.power_bytes()) {
        if (!modulus_ || !memory_) return;
        auto* const p = memory_.take<std::uint8_t>(modulus_.power_bytes());
        auto* const scratch = memory_.take<std::uint8_t>(modulus_.power_bytes());
        coefficients_ = modulus_.power_of_t(k, p, scratch);
    }
    // Null where there was no memory.
    const std::uint8_t* coefficients() const { return coefficients_; }

private:
    Modulus modulus_;
    Memory memory_;
    const std::uint8_t* coefficients_ = nullptr;
};

// The next coefficients from t^i on, the lowest one in bit 0; at least 25 of them.
std::uint32_t coefficients_from(const std::uint8_t* p, std::int32_t i) {
    std::uint32_t word;
    std::memcpy(&word, p + i / 8, sizeof word);
    return word >> i % 8;
}

// Evaluation by groups of coefficients that begin with a one: p = sum over groups of v(t) t^i,
// v odd and below 2^width. The states T^i s are windows of one sequence. They are summed for each
// v, and the sums S(v) go together by the bits of v: sum over b of T^b (sum of S(v) with bit b).
class Evaluation {
public:
    explicit Evaluation(const Jump& g)
        : g_(g),
          words_(static_cast<std::size_t>(g.words)),
          memory_(sequence_bytes(), sums_bytes(), sum_bytes(), places_bytes()) {
        if (!memory_) return;
        sequence_ = memory_.take<std::uint32_t>(sequence_bytes());
        sums_ = memory_.take<std::uint32_t>(sums_bytes());
        sum_ = memory_.take<std::uint32_t>(sum_bytes());
        places_ = memory_.take<std::uint32_t>(places_bytes());
    }
    explicit operator bool() const { return static_cast<bool>(memory_); }

    void load(const kef_stream* stream) { g_.load(stream, sequence_); }
    void store(kef_stream* stream) const { g_.store(stream, sequence_); }

    // state <- p(T) state. Four bytes above p are zeros.
    void apply(const std::uint8_t* p) {
        g_.step(sequence_, g_.degree);
        sum_windows(p);
        std::uint32_t* sum = sum_;
        g_.clear(sum);
        for (std::int32_t bit = width - 1; bit >= 0; --bit) {
            g_.step(sum, 1);
            sum += g_.stride;
            std::int32_t count = 0;
            for (std::int32_t i = 0; i < groups; ++i)
                if (((2 * i + 1) >> bit & 1) != 0)
                    places_[count++] = static_cast<std::uint32_t>(i * g_.words);
            g_.add(sum, sums_, places_, count);
        }
        g_.copy(sequence_, sum);
    }

private:
    static constexpr std::int32_t width = 7, groups = 1 << (width - 1);  // v = 2 group + 1

    template <class Visit> void each_group(const std::uint8_t* p, Visit visit) const {
        for (std::int32_t i = 0; i < g_.degree;) {
            std::uint32_t next = coefficients_from(p, i);
            const std::int32_t zeros = std::countr_zero(next | 1u << width);
            next >>= zeros;
            i += zeros;
            if ((next & 1) == 0 || i >= g_.degree) continue;
            visit(next >> 1 & (groups - 1), i);
            i += width;
        }
    }

    // The sum of each group's windows, by their places sorted by group.
    void sum_windows(const std::uint8_t* p) {
        std::int32_t begin[groups + 1] = {};
        each_group(p, [&](std::uint32_t group, std::int32_t) { ++begin[group + 1]; });
        for (std::int32_t group = 0; group < groups; ++group) begin[group + 1] += begin[group];
        std::int32_t next[groups];
        std::copy_n(begin, groups, next);
        each_group(p, [&](std::uint32_t group, std::int32_t i) {
            places_[next[group]++] = static_cast<std::uint32_t>(i * g_.stride);
        });
        for (std::int32_t group = 0; group < groups; ++group) {
            std::uint32_t* const sum = sums_ + group * g_.words;
            g_.clear(sum);
            g_.add(sum, sequence_, places_ + begin[group], begin[group + 1] - begin[group]);
        }
    }

    std::size_t sequence_bytes() const { return 4 * (words_ + steps(g_.degree)); }
    std::size_t sums_bytes() const { return 4 * groups * words_; }
    std::size_t sum_bytes() const { return 4 * (words_ + steps(width)); }
    std::size_t places_bytes() const {
        return 4 * static_cast<std::size_t>(std::max(g_.degree / width + 1, groups));
    }
    std::size_t steps(std::int32_t count) const {
        return static_cast<std::size_t>(count) * static_cast<std::size_t>(g_.stride);
    }

    const Jump& g_;
    std::size_t words_;
    Memory memory_;
    std::uint32_t *sequence_ = nullptr, *sums_ = nullptr, *sum_ = nullptr, *places_ = nullptr;
};

// A window that walks through a buffer of two.
class Walk {
public:
    Walk(const Jump& g, std::uint32_t* buffer) : g_(g), buffer_(buffer), window_(buffer) {
        g.clear(window_);
    }
    std::uint32_t* window() const { return window_; }
    void by(std::int32_t steps) {
        const std::int32_t room = g_.words / g_.stride;
        while (steps > 0) {
            const std::int32_t next = std::min(steps, room - walked_);
            g_.step(window_, next);
            window_ += next * g_.stride;
            walked_ += next;
            steps -= next;
            if (walked_ == room) {
                g_.copy(buffer_, window_);
                window_ = buffer_;
                walked_ = 0;
            }
        }
    }

private:
    const Jump& g_;
    std::uint32_t *buffer_, *window_;
    std::int32_t walked_ = 0;
};

// p(T) s = (...(p_n T + p_(n-1)) T + ...) s + p_0 s.
std::int32_t jump_by_horner(kef_stream* stream, const Jump& g, std::uint64_t k) {
    const Power power(g, k);
    const auto window_bytes = 4 * static_cast<std::size_t>(g.words);
    Memory memory(window_bytes, 2 * window_bytes);
    if (power.coefficients() == nullptr || !memory) return VTS_STATUS_NO_MEMORY;
    auto* const state = memory.take<std::uint32_t>(window_bytes);
    g.load(stream, state);
    Walk sum(g, memory.take<std::uint32_t>(2 * window_bytes));
    const std::uint32_t here = 0;
    std::int32_t steps = 0;
    for (std::int32_t i = g.degree - 1; i >= 0; --i, ++steps) {
        if ((coefficients_from(power.coefficients(), i) & 1) == 0) continue;
        sum.by(steps);
        steps = 0;
        g.add(sum.window(), state, &here, 1);
    }
    sum.by(steps - 1);
    g.store(stream, sum.window());
    return VTS_STATUS_OK;
}

}  // namespace

std::int32_t jump_by_squaring(kef_stream* stream, const Jump& g, std::uint64_t k) {
    const Power power(g, k);
    Evaluation evaluation(g);
    if (power.coefficients() == nullptr || !evaluation) return VTS_STATUS_NO_MEMORY;
    evaluation.load(stream);
    evaluation.apply(power.coefficients());
    evaluation.store(stream);
    return VTS_STATUS_OK;
}

std::int32_t jump_by_powers(kef_stream* stream, const Jump& g, std::uint64_t k,
                            const std::uint64_t* powers, std::size_t power_words) {
    Evaluation evaluation(g);
    if (!evaluation) return VTS_STATUS_NO_MEMORY;
    evaluation.load(stream);
    for (; k != 0; k >>= 1, powers += power_words)
        if ((k & 1) != 0) evaluation.apply(reinterpret_cast<const std::uint8_t*>(powers));
    evaluation.store(stream);
    return VTS_STATUS_OK;
}

}  // namespace kef::rng

using namespace kef::rng;

std::int32_t __vtsPolyRem(std::uint8_t* polynomial, std::int32_t blocks, std::int32_t degree,
                          std::int32_t count, const std::uint16_t* exponents) {
    const Modulus modulus(degree, count, exponents);
    if (!modulus) return VTS_STATUS_NO_MEMORY;
    modulus.reduce(polynomial, blocks);
    return VTS_STATUS_OK;
}

#define KEF_SKIP(name, way)                                                                        \
    std::int32_t name(kef_stream* stream, kef_jump_load load, kef_jump_store store,                \
                      kef_jump_clear clear, kef_jump_copy copy, kef_jump_step step,                \
                      kef_jump_add add, std::uint64_t k, std::int32_t words, std::int32_t stride,  \
                      std::int32_t degree, std::int32_t state_size, std::int32_t count,            \
                      const std::uint16_t* exponents) {                                            \
        if (state_size < words * 4 + std::int32_t{sizeof(Header)}) return VTS_STATUS_BAD_ARGUMENT; \
        return way(stream,                                                                         \
                   {load, store, clear, copy, step, add, words, stride, degree, count, exponents}, \
                   k);                                                                             \
    }
KEF_SKIP(__vts_SkipAheadHorner, jump_by_horner)
KEF_SKIP(__vts_SkipAheadSWin, jump_by_squaring)
