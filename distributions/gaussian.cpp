// Normal numbers: G. E. P. Box, M. E. Muller, A note on the generation of random normal deviates,
// Ann. Math. Statist. 29 (1958) 610-611, and inversion.
#include "distributions/closed_form.h"
#include "rng/shared_table.h"
#include "service/alloc.h"
#include "vm/core/constants.h"

namespace kef::dist {

namespace {

KEF_IN_PLACE(sin, Sin)
KEF_IN_PLACE(erf_inv, ErfInv)
void sin_cos(std::int32_t n, double* x, double* cosine) {
    evaluate(kef_vtm_kernel_dSinCos_ttab[2], n, x, x, cosine);
}
void sin_cos(std::int32_t n, float* x, float* cosine) {
    evaluate(kef_vtm_kernel_sSinCos_ttab[2], n, x, x, cosine);
}

// Results for the inverse error function at the ends of its domain, not mirror images.
constexpr double negative_end = vm::from_bits(UINT64_C(0xBFE88BB0708B16B6));  // -0.767...
constexpr double positive_end = vm::from_bits(UINT64_C(0x4017744F8F74E94A));  // 5.863...

int replace_ends(kef_vtm_error_record* error) {
    const double x = error->argument1;
    const bool singular = error->code == VTM_STATUS_SING;
    if (!singular && error->code != VTM_STATUS_ERRDOM) return 0;
    if (singular && x == 0) error->result1 = log_of_zero;
    else if (x < 0) error->result1 = negative_end;
    else if (x >= 0) error->result1 = positive_end;
    return 0;
}

// Of n points by uniforms u1, u2: the radius sqrt(-2 ln u1) and the angle 2 pi u2. The square of
// the radius is exponential.
template <class T> void radii(std::int32_t n, T* u1) {
    ln(n, u1);
    transform(
        n, u1, [](auto x) { return -(x + x); }, u1);
    square_root(n, u1);
}
template <class T> constexpr auto angle = [](auto u2) { return u2 * static_cast<T>(2 * vm::pi); };

// One number from each pair of uniforms.
template <class T> std::int32_t box_muller(kef_stream* stream, std::int32_t n, T* r, T a, T sigma) {
    alignas(16) T scratch[2 * block];
    return in_blocks(n, r, [&](T* out, std::int32_t m) {
        const std::int32_t status = draw(stream, 2 * m, scratch, T(0), T(1));
        if (status < 0) return status;
        split_pairs(m, scratch, scratch, out, angle<T>);
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
    T u[2];

    // A stream image from outside may hold anything under the key: a chunk of another size is
    // not ours, nor one with a shared id, whose data others read.
    static SavedPair* find(const kef_stream* stream) {
        for (const kef_chunk* c = stream->header.first; c != nullptr; c = c->next)
            if (c->key == key && c->size == sizeof(SavedPair) && rng::is_null_id(c->shared_id))
                return static_cast<SavedPair*>(c->data);
        return nullptr;
    }

    // The stream's pair, attached to it if need be. VTS_STATUS_NO_MEMORY where that fails.
    static std::int32_t of(kef_stream* stream, SavedPair*& pair) {
        pair = find(stream);
        if (pair != nullptr) return VTS_STATUS_OK;
        pair = static_cast<SavedPair*>(allocate_aligned(sizeof(SavedPair)));
        if (pair == nullptr) return VTS_STATUS_NO_MEMORY;
        *pair = {{none, none}};
        const std::int32_t status = _vtsAddChunk(stream, key, nullptr, pair, sizeof(SavedPair));
        if (status < 0) free_aligned(pair);
        return status;
    }
};

// Two numbers from each pair of uniforms: radius * sine, then radius * cosine. The cosine number of
// the last pair of an odd count begins the next call.
template <class T>
std::int32_t box_muller_pairs(kef_stream* stream, std::int32_t n, T* r, T a, T sigma) {
    constexpr std::int32_t pairs = block / 2;
    alignas(16) T uniforms[block], cosines[pairs], radius[pairs];

    if (n <= 0) return VTS_STATUS_OK;
    SavedPair<T>* saved;
    std::int32_t status = SavedPair<T>::of(stream, saved);
    if (status < 0) return status;
    // Single pairs too: so the numbers do not depend on how calls are split.
    const auto points = [&](std::int32_t m, const T* u, T* out) {
        split_pairs(m, u, radius, uniforms, angle<T>);
        radii(m, radius);
        sin_cos(m, uniforms, cosines);
        join_pairs(m, out, radius, uniforms, cosines,
                   [=](auto size, auto x) { return sigma * (size * x) + a; });
    };

    T last[2];
    if (saved->u[0] != SavedPair<T>::none) {
        points(1, saved->u, last);
        *r++ = last[1];
        --n;
    }
    status = in_blocks(n & ~1, r, [&](T* out, std::int32_t m) {
        const std::int32_t result = draw(stream, m, uniforms, T(0), T(1));
        if (result >= 0) points(m / 2, uniforms, out);
        return result;
    });
    if (status < 0) return status;
    SavedPair<T> next = {{SavedPair<T>::none, SavedPair<T>::none}};
    if (n % 2 != 0) {
        status = draw(stream, 2, uniforms, T(0), T(1));
        if (status < 0) return status;
        next = {{uniforms[0], uniforms[1]}};
        points(1, uniforms, last);
        r[n - 1] = last[0];
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
    const Bracket bracket(replace_ends);
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
