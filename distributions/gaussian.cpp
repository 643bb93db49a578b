// Normal numbers: G. E. P. Box, M. E. Muller, A note on the generation of random normal deviates,
// Ann. Math. Statist. 29 (1958) 610-611, and inversion.
#include "distributions/frame.h"
#include "service/alloc.h"

namespace kef::dist {

namespace {

KEF_IN_PLACE(ln, Ln)
KEF_IN_PLACE(sin, Sin)
KEF_IN_PLACE(sqrt, Sqrt)
KEF_IN_PLACE(erf_inv, ErfInv)
void sin_cos(std::int32_t n, double* x, double* cosine) {
    evaluate(kef_vtm_kernel_dSinCos_ttab[2], n, x, x, cosine);
}
void sin_cos(std::int32_t n, float* x, float* cosine) {
    evaluate(kef_vtm_kernel_sSinCos_ttab[2], n, x, x, cosine);
}

// Finite results for the logarithm and the inverse error function at the ends of their domains. The
// last two are not mirror images.
constexpr double ln_least = vm::from_bits(UINT64_C(0xC0874385446D71C3));      // ln 2^-1074
constexpr double negative_end = vm::from_bits(UINT64_C(0xBFE88BB0708B16B6));  // -0.767...
constexpr double positive_end = vm::from_bits(UINT64_C(0x4017744F8F74E94A));  // 5.863...

int make_finite(kef_vtm_error_record* error) {
    const double x = error->argument1;
    const bool singular = error->code == VTM_STATUS_SING;
    if (!singular && error->code != VTM_STATUS_ERRDOM) return 0;
    if (singular && x == 0) error->result1 = ln_least;
    else if (x < 0) error->result1 = negative_end;
    else if (x >= 0) error->result1 = positive_end;
    return 0;
}

template <class T> constexpr T two_pi = static_cast<T>(0x1.921FB54442D18p2);

// r[i] = sqrt(-2 ln r[i]), the radius of a point whose squared radius is exponential.
template <class T> void radii(std::int32_t n, T* r) {
    ln(n, r);
    transform(
        n, r, [](auto x) { return -(x + x); }, r);
    sqrt(n, r);
}

// One number from each pair of uniforms.
template <class T> std::int32_t box_muller(kef_stream* stream, std::int32_t n, T* r, T a, T sigma) {
    alignas(16) T scratch[2 * block];
    return in_blocks(n, r, [&](T* out, std::int32_t m) {
        const std::int32_t status = draw(stream, 2 * m, scratch, T(0), T(1));
        if (status < 0) return status;
        split_pairs(m, scratch, scratch, out, [](auto u2) { return u2 * two_pi<T>; });
        sin(m, out);
        radii(m, scratch);
        transform(
            m, out, [=](auto radius, auto s) { return (radius * sigma) * s + a; }, scratch, out);
        return status;
    });
}

// A pair of uniforms whose cosine number is still to come, kept in a chunk of the stream.
template <class T> struct SavedPair {
    static constexpr std::int32_t key = sizeof(T) == sizeof(double) ? 2 : 1;
    static constexpr T none = -1;
    T u1, u2;

    // A stream image from outside may hold anything under the key: a chunk of another size is
    // not ours.
    static SavedPair* find(const kef_stream* stream) {
        for (const kef_chunk* c = stream->header.first; c != nullptr; c = c->next)
            if (c->key == key && c->size == sizeof(SavedPair))
                return static_cast<SavedPair*>(c->data);
        return nullptr;
    }

    // The stream's pair, attached to it if need be. VTS_STATUS_NO_MEMORY where that fails.
    static std::int32_t of(kef_stream* stream, SavedPair*& pair) {
        pair = find(stream);
        if (pair != nullptr) return VTS_STATUS_OK;
        pair = static_cast<SavedPair*>(allocate_aligned(sizeof(SavedPair)));
        if (pair == nullptr) return VTS_STATUS_NO_MEMORY;
        *pair = {none, none};
        const std::int32_t status = _vtsAddChunk(stream, key, nullptr, pair, sizeof(SavedPair));
        if (status < 0) free_aligned(pair);
        return status;
    }
};

vm::d2 lows(vm::d2 x, vm::d2 y) { return __builtin_shufflevector(x, y, 0, 2); }
vm::f4 lows(vm::f4 x, vm::f4 y) { return __builtin_shufflevector(x, y, 0, 4, 1, 5); }
vm::d2 highs(vm::d2 x, vm::d2 y) { return __builtin_shufflevector(x, y, 1, 3); }
vm::f4 highs(vm::f4 x, vm::f4 y) { return __builtin_shufflevector(x, y, 2, 6, 3, 7); }

// r[2i] = formula(x[i], y[i]), r[2i + 1] = formula(x[i], z[i]).
template <class T, class Formula>
void join_pairs(std::int32_t n, T* r, const T* x, const T* y, const T* z, Formula formula) {
    constexpr std::int32_t lanes = sizeof(vm::Vector<T>) / sizeof(T);
    std::int32_t i = 0;
    for (; i < (n & -lanes); i += lanes) {
        const auto size = vm::load(x + i);
        const auto first = formula(size, vm::load(y + i)), second = formula(size, vm::load(z + i));
        vm::store(r + 2 * i, lows(first, second));
        vm::store(r + 2 * i + lanes, highs(first, second));
    }
    for (; i < n; ++i) {
        r[2 * i] = formula(x[i], y[i]);
        r[2 * i + 1] = formula(x[i], z[i]);
    }
}

// Two numbers from each pair of uniforms: radius * sine, then radius * cosine. The cosine number of
// the last pair of an odd count begins the next call. Single pairs take the same kernel, so that
// the numbers do not depend on how calls are split.
template <class T>
std::int32_t box_muller_pairs(kef_stream* stream, std::int32_t n, T* r, T a, T sigma) {
    constexpr std::int32_t pairs = block / 2;
    alignas(16) T uniforms[block], cosines[pairs], radius[pairs];

    if (n <= 0) return VTS_STATUS_OK;
    SavedPair<T>* saved;
    std::int32_t status = SavedPair<T>::of(stream, saved);
    if (status < 0) return status;
    const auto number = [=](auto size, auto x) { return sigma * (size * x) + a; };

    if (saved->u1 != SavedPair<T>::none) {
        T size = saved->u1, sine = saved->u2 * two_pi<T>, cosine;
        radii(1, &size);
        sin_cos(1, &sine, &cosine);
        *r++ = number(size, cosine);
        --n;
    }
    status = in_blocks(n & ~1, r, [&](T* out, std::int32_t m) {
        const std::int32_t result = draw(stream, m, uniforms, T(0), T(1));
        if (result < 0) return result;
        split_pairs(m / 2, uniforms, radius, uniforms, [](auto u2) { return u2 * two_pi<T>; });
        radii(m / 2, radius);
        sin_cos(m / 2, uniforms, cosines);
        join_pairs(m / 2, out, radius, uniforms, cosines, number);
        return result;
    });
    if (status < 0) return status;
    SavedPair<T> next = {SavedPair<T>::none, SavedPair<T>::none};
    if (n % 2 != 0) {
        T pair[2], cosine;
        status = draw(stream, 2, pair, T(0), T(1));
        if (status < 0) return status;
        next = {pair[0], pair[1]};
        pair[1] *= two_pi<T>;
        radii(1, &pair[0]);
        sin_cos(1, &pair[1], &cosine);
        r[n - 1] = number(pair[0], pair[1]);
    }
    *saved = next;
    return status;
}

// sqrt2 erf^-1(u) of one uniform on [-1, 1).
template <class T> std::int32_t inversion(kef_stream* stream, std::int32_t n, T* r, T a, T sigma) {
    const T scale = static_cast<T>(0x1.6A09E667F3BCDp0) * sigma;
    return in_blocks(n, r, [=](T* out, std::int32_t m) {
        const std::int32_t status = draw(stream, m, out, T(-1), T(1));
        if (status < 0) return status;
        erf_inv(m, out);
        transform(
            m, out, [=](auto x) { return scale * x + a; }, out);
        return status;
    });
}

template <class T>
std::int32_t gaussian(std::int32_t method, kef_stream* stream, std::int32_t n, T* r, T a, T sigma) {
    static constexpr std::int32_t (*methods[])(kef_stream*, std::int32_t, T*, T, T) = {
        box_muller<T>, box_muller_pairs<T>, inversion<T>};
    const Bracket bracket(make_finite);
    return methods[method & ~VTS_METHOD_ACCURATE](stream, n, r, a, sigma);
}

}  // namespace

}  // namespace kef::dist

std::int32_t _vtsdRngGaussian(std::int32_t method, kef_stream* stream, std::int32_t n, double* r,
                              double a, double sigma) {
    return kef::dist::gaussian(method, stream, n, r, a, sigma);
}

std::int32_t _vtssRngGaussian(std::int32_t method, kef_stream* stream, std::int32_t n, float* r,
                              float a, float sigma) {
    return kef::dist::gaussian(method, stream, n, r, a, sigma);
}
