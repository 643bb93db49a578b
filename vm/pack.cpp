// Pack (gather) and Unpack (scatter): strides, index vectors, masks. Elements are
// moved as bits; no element is looked at. n <= 0 does nothing.
#include <cstddef>

#include "vm/shapes.h"

namespace kef::vm {

namespace {

// Calls body(typed count, null pointer to the index type) in the interface width.
template <class Body>
inline void in_width(std::int64_t n, std::int32_t width, Body body) {
    if (width == narrow_interface)
        body(std::int64_t{static_cast<std::int32_t>(n)}, static_cast<const std::int32_t*>(nullptr));
    else
        body(n, static_cast<const std::int64_t*>(nullptr));
}

inline std::int64_t in_width(std::int64_t stride, std::int32_t width) {
    return width == narrow_interface ? static_cast<std::int32_t>(stride) : stride;
}

// The address of element i of a strided vector.
template <class T>
inline T* strided(T* p, std::int64_t i, std::int64_t stride) {
    return p + static_cast<std::ptrdiff_t>(i * stride);
}

template <class T>
void gather_strided(std::int64_t n, const T* a, std::int64_t inca, T* y, std::int32_t width) {
    in_width(n, width, [=](std::int64_t count, auto) {
        const std::int64_t stride = in_width(inca, width);
        for (std::int64_t i = 0; i < count; ++i) y[i] = *strided(a, i, stride);
    });
}

template <class T>
void scatter_strided(std::int64_t n, const T* a, T* y, std::int64_t incy, std::int32_t width) {
    in_width(n, width, [=](std::int64_t count, auto) {
        const std::int64_t stride = in_width(incy, width);
        for (std::int64_t i = 0; i < count; ++i) *strided(y, i, stride) = a[i];
    });
}

template <class T>
void gather_indexed(std::int64_t n, const T* a, const void* indices, T* y, std::int32_t width) {
    in_width(n, width, [=](std::int64_t count, auto type) {
        const auto ia = static_cast<decltype(type)>(indices);
        for (std::int64_t i = 0; i < count; ++i) y[i] = a[ia[i]];
    });
}

template <class T>
void scatter_indexed(std::int64_t n, const T* a, T* y, const void* indices, std::int32_t width) {
    in_width(n, width, [=](std::int64_t count, auto type) {
        const auto iy = static_cast<decltype(type)>(indices);
        for (std::int64_t i = 0; i < count; ++i) y[iy[i]] = a[i];
    });
}

template <class T>
void gather_masked(std::int64_t n, const T* a, const void* mask, T* y, std::int32_t width) {
    in_width(n, width, [=, next = y](std::int64_t count, auto type) mutable {
        const auto chosen = static_cast<decltype(type)>(mask);
        for (std::int64_t i = 0; i < count; ++i)
            if (chosen[i] != 0) *next++ = a[i];
    });
}

template <class T>
void scatter_masked(std::int64_t n, const T* a, T* y, const void* mask, std::int32_t width) {
    in_width(n, width, [=, next = a](std::int64_t count, auto type) mutable {
        const auto chosen = static_cast<decltype(type)>(mask);
        for (std::int64_t i = 0; i < count; ++i)
            if (chosen[i] != 0) y[i] = *next++;
    });
}

}  // namespace

#define KEF_PACK(type)                                                                            \
    void type##PackI_HA(std::int64_t n, const element_##type* a, std::int64_t inca,               \
                        element_##type* y, std::int32_t width) {                                  \
        gather_strided(n, a, inca, y, width);                                                     \
    }                                                                                             \
    void type##UnpackI_HA(std::int64_t n, const element_##type* a, element_##type* y,             \
                          std::int64_t incy, std::int32_t width) {                                \
        scatter_strided(n, a, y, incy, width);                                                    \
    }                                                                                             \
    void type##PackV_HA(std::int64_t n, const element_##type* a, const void* ia,                  \
                        element_##type* y, std::int32_t width) {                                  \
        gather_indexed(n, a, ia, y, width);                                                       \
    }                                                                                             \
    void type##UnpackV_HA(std::int64_t n, const element_##type* a, element_##type* y,             \
                          const void* iy, std::int32_t width) {                                   \
        scatter_indexed(n, a, y, iy, width);                                                      \
    }                                                                                             \
    void type##PackM_HA(std::int64_t n, const element_##type* a, const void* mask,                \
                        element_##type* y, std::int32_t width) {                                  \
        gather_masked(n, a, mask, y, width);                                                      \
    }                                                                                             \
    void type##UnpackM_HA(std::int64_t n, const element_##type* a, element_##type* y,             \
                          const void* mask, std::int32_t width) {                                 \
        scatter_masked(n, a, y, mask, width);                                                     \
    }
KEF_PACK(s)
KEF_PACK(d)
KEF_PACK(c)
KEF_PACK(z)

}  // namespace kef::vm
