// The abstract generators: numbers that the caller makes, handed over in the caller's buffer.
// kef_rng.h tells the refill protocol.
#include <x86intrin.h>

#include <algorithm>

#include "rng/registry.h"
#include "rng/scaled_range.h"
#include "rng/stream.h"

namespace kef::rng {

namespace {

template <class T> using Refill = std::int32_t (*)(kef_stream*, T*, std::int32_t, std::int32_t);

// Creation parameters: what the initialiser takes as parameter words.
template <class T> struct Parameters {
    const std::int32_t* length;
    T* buffer;
    Refill<T> refill;
};

// `tag` ties the addresses to this process, so that an image of it loads nowhere else.
template <class T> struct Source {
    std::int32_t length, position, available;
    T* buffer;
    Refill<T> refill;
    std::uint32_t tag;
};
// The bounds of the numbers that the caller makes, in the types that have any.
template <class T> struct State : Source<T> { T a, b; };
template <> struct State<std::uint32_t> : Source<std::uint32_t> {};

static_assert(sizeof(State<std::uint32_t>) <= state_bytes_iAbstract);
static_assert(sizeof(State<double>) <= state_bytes_dAbstract);
static_assert(sizeof(State<float>) <= state_bytes_sAbstract);

std::uint32_t process_secret() {
    static std::uint64_t secret = 0;
    std::uint64_t value = __atomic_load_n(&secret, __ATOMIC_RELAXED);
    if (value == 0) {
        std::uint64_t fresh = (__rdtsc() ^ reinterpret_cast<std::uintptr_t>(&secret)) | 1;
        __atomic_compare_exchange_n(&secret, &value, fresh, false, __ATOMIC_RELAXED,
                                    __ATOMIC_RELAXED);
        value = __atomic_load_n(&secret, __ATOMIC_RELAXED);
    }
    return static_cast<std::uint32_t>(value ^ value >> 32);
}

// A keyed hash of the addresses and the length.
template <class T> std::uint32_t tag_of(const Source<T>& s) {
    std::uint64_t h = process_secret();
    const auto mix = [&h](std::uint64_t word) {
        h = (h ^ word) * 0x9E3779B97F4A7C15u;
        h ^= h >> 29;
    };
    mix(reinterpret_cast<std::uintptr_t>(s.buffer));
    mix(reinterpret_cast<std::uintptr_t>(s.refill));
    mix(static_cast<std::uint32_t>(s.length));
    mix(process_secret());
    return static_cast<std::uint32_t>(h >> 32);
}

template <class T>
std::int32_t initialise_abstract(std::int32_t method, kef_stream* stream,
                                 const std::uint32_t* words) {
    switch (method) {
        case VTS_INIT_SEED: {
            const auto& p = *reinterpret_cast<const Parameters<T>*>(words);
            auto& s = state_of<State<T>>(stream);
            s.length = s.available = *p.length;
            s.position = 0;
            s.buffer = p.buffer;
            s.refill = p.refill;
            s.tag = tag_of(s);
            return VTS_STATUS_OK;
        }
        case VTS_INIT_LEAPFROG: return VTS_STATUS_NO_LEAPFROG;
        case VTS_INIT_SKIPAHEAD: return VTS_STATUS_NO_SKIPAHEAD;
        default: return VTS_STATUS_BAD_METHOD;
    }
}

template <class T>
std::int32_t new_abstract_stream(kef_stream** stream, Row row, std::int32_t brng, std::int32_t n,
                                 T* buffer, Refill<T> refill) {
    if (stream == nullptr || n <= 0 || buffer == nullptr || refill == nullptr)
        return VTS_STATUS_BAD_ARGUMENT;
    const std::int32_t status = __vtsAllocateStream(stream, __RegBrngsNew, brng, row, 0);
    if (status != VTS_STATUS_OK) return status;
    const Parameters<T> parameters{&n, buffer, refill};
    return __RegBrngsNew[row].init_stream(VTS_INIT_SEED, *stream, 6,
                                          reinterpret_cast<const std::uint32_t*>(&parameters));
}

template <class T>
std::int32_t new_bounded_stream(kef_stream** stream, Row row, std::int32_t brng, std::int32_t n,
                                T* buffer, T a, T b, Refill<T> refill) {
    const std::int32_t status = new_abstract_stream(stream, row, brng, n, buffer, refill);
    if (status == VTS_STATUS_OK) {
        auto& s = state_of<State<T>>(*stream);
        s.a = a;
        s.b = b;
    }
    return status;
}

// Gives out n numbers through emit(from, count, to).
template <class T, class Emit>
std::int32_t draw(kef_stream* stream, std::int32_t n, T* r, Emit emit) {
    auto& s = state_of<State<T>>(stream);
    while (n > 0) {
        if (s.position >= s.available) {
            const std::int32_t made = s.refill(stream, s.buffer, s.length, n);
            if (made <= 0) return made < 0 ? made : VTS_STATUS_NO_NUMBERS;
            if (made > s.length) return VTS_STATUS_BAD_REFILL;
            s.position = 0;
            s.available = made;
        }
        const std::int32_t taken = std::min(n, s.available - s.position);
        emit(s.buffer + s.position, taken, r);
        s.position += taken;
        r += taken;
        n -= taken;
    }
    return VTS_STATUS_OK;
}

// The caller's numbers as they are, or moved from their bounds to [a, b). Where the width of either
// range, or their ratio, is no normal number, the bounds are scaled, and no number leaves [a, b].
template <class T> std::int32_t draw_reals(kef_stream* stream, std::int32_t n, T* r, T a, T b) {
    const auto& s = state_of<State<T>>(stream);
    const T factor = range_factor(a, b), to = a * factor, width = b * factor - to;
    const T unit = range_factor(s.a, s.b), from = s.a * unit, own_width = s.b * unit - from;
    const bool same = a == s.a && b == s.b, usual = factor == 1 && unit == 1;
    const T scale = width / own_width;
    return draw(stream, n, r, [=](const T* x, std::int32_t count, T* out) {
        if (same) {
            std::copy_n(x, count, out);
        } else if (usual) {
            std::transform(x, x + count, out, [=](T v) { return to + (v - from) * scale; });
        } else {
            std::transform(x, x + count, out,
                           [=](T v) { return to + (v * unit - from) / own_width * width; });
            bring_back(count, out, factor, a, b);
        }
    });
}

template <class T> bool valid_abstract(const kef_stream* stream) {
    const auto& s = state_of<State<T>>(stream);
    return s.tag == tag_of(s) && s.position >= 0 && s.position <= s.available &&
           s.available <= s.length;
}

}  // namespace

bool valid_state_iAbstract(const kef_stream* s) { return valid_abstract<std::uint32_t>(s); }
bool valid_state_dAbstract(const kef_stream* s) { return valid_abstract<double>(s); }
bool valid_state_sAbstract(const kef_stream* s) { return valid_abstract<float>(s); }

}  // namespace kef::rng

using namespace kef::rng;

extern "C" {

#define KEF_ABSTRACT_INIT(name, T)                                                       \
    std::int32_t __vtsBRng##name##InitStream(std::int32_t method, kef_stream* stream,    \
                                             std::int32_t, const std::uint32_t* words) { \
        return initialise_abstract<T>(method, stream, words);                            \
    }
KEF_ABSTRACT_INIT(iAbstract, std::uint32_t)
KEF_ABSTRACT_INIT(dAbstract, double)
KEF_ABSTRACT_INIT(sAbstract, float)

std::int32_t __vtsiBRngiAbstract(kef_stream* stream, std::int32_t n, void* r) {
    return draw(stream, n, static_cast<std::uint32_t*>(r),
                [](const std::uint32_t* x, std::int32_t count, std::uint32_t* out) {
                    std::copy_n(x, count, out);
                });
}
std::int32_t __vtsdBRngdAbstract(kef_stream* stream, std::int32_t n, double* r, double a,
                                 double b) {
    return draw_reals(stream, n, r, a, b);
}
std::int32_t __vtssBRngsAbstract(kef_stream* stream, std::int32_t n, float* r, float a, float b) {
    return draw_reals(stream, n, r, a, b);
}

// One routine for all wrong types; it looks at none of its arguments.
std::int32_t kef_rng_refuse_type() { return VTS_STATUS_WRONG_ABSTRACT_TYPE; }
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wattribute-alias"
#define KEF_REFUSAL __attribute__((alias("kef_rng_refuse_type")))
std::int32_t __vtsdBRngiAbstract(kef_stream*, std::int32_t, double*, double, double) KEF_REFUSAL;
std::int32_t __vtssBRngiAbstract(kef_stream*, std::int32_t, float*, float, float) KEF_REFUSAL;
std::int32_t __vtsiBRngdAbstract(kef_stream*, std::int32_t, void*) KEF_REFUSAL;
std::int32_t __vtssBRngdAbstract(kef_stream*, std::int32_t, float*, float, float) KEF_REFUSAL;
std::int32_t __vtsiBRngsAbstract(kef_stream*, std::int32_t, void*) KEF_REFUSAL;
std::int32_t __vtsdBRngsAbstract(kef_stream*, std::int32_t, double*, double, double) KEF_REFUSAL;
#pragma GCC diagnostic pop

std::int32_t __vtsiNewAbstractStream(kef_stream** stream, std::int32_t n, std::uint32_t* buffer,
                                     kef_refill_bits refill) {
    return new_abstract_stream(stream, row_iAbstract, VTS_BRNG_IABSTRACT, n, buffer, refill);
}

std::int32_t __vtsdNewAbstractStream(kef_stream** stream, std::int32_t n, double* buffer, double a,
                                     double b, kef_refill_double refill) {
    return new_bounded_stream(stream, row_dAbstract, VTS_BRNG_DABSTRACT, n, buffer, a, b, refill);
}

std::int32_t __vtssNewAbstractStream(kef_stream** stream, std::int32_t n, float* buffer, float a,
                                     float b, kef_refill_float refill) {
    return new_bounded_stream(stream, row_sAbstract, VTS_BRNG_SABSTRACT, n, buffer, a, b, refill);
}

}  // extern "C"
