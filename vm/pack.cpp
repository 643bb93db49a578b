// Pack (gather) and Unpack (scatter): strides, index vectors, masks. Elements are
// moved as bits; no element is looked at. n <= 0 does nothing.
#include <cstddef>

#include "vm/surface/shapes.h"

namespace kef::vm {

namespace {

// Calls body(count) in the interface width: the count, and with it strides, index
// and mask vectors, is of type int32_t or int64_t.
template <class Body> inline void in_width(std::int64_t n, std::int32_t width, Body body) {
    if (width == narrow_interface) body(static_cast<std::int32_t>(n));
    else body(n);
}

// The address of element i of a strided vector.
template <class Index, class T> inline T* strided(T* p, Index i, std::int64_t stride) {
    return p +
           static_cast<std::ptrdiff_t>(i) * static_cast<std::ptrdiff_t>(static_cast<Index>(stride));
}

template <class T>
void gather_strided(std::int64_t n, const T* a, std::int64_t inca, T* y, std::int32_t width) {
    in_width(n, width, [=]<class Index>(Index count) {
        for (Index i = 0; i < count; ++i) y[i] = *strided(a, i, inca);
    });
}

template <class T>
void scatter_strided(std::int64_t n, const T* a, T* y, std::int64_t incy, std::int32_t width) {
    in_width(n, width, [=]<class Index>(Index count) {
        for (Index i = 0; i < count; ++i) *strided(y, i, incy) = a[i];
    });
}

template <class T>
void gather_indexed(std::int64_t n, const T* a, const void* indices, T* y, std::int32_t width) {
    in_width(n, width, [=]<class Index>(Index count) {
        const auto* ia = static_cast<const Index*>(indices);
        for (Index i = 0; i < count; ++i) y[i] = a[ia[i]];
    });
}

template <class T>
void scatter_indexed(std::int64_t n, const T* a, T* y, const void* indices, std::int32_t width) {
    in_width(n, width, [=]<class Index>(Index count) {
        const auto* iy = static_cast<const Index*>(indices);
        for (Index i = 0; i < count; ++i) y[iy[i]] = a[i];
    });
}

template <class T>
void gather_masked(std::int64_t n, const T* a, const void* mask, T* y, std::int32_t width) {
    in_width(n, width, [=, next = y]<class Index>(Index count) mutable {
        const auto* chosen = static_cast<const Index*>(mask);
        for (Index i = 0; i < count; ++i)
            if (chosen[i] != 0) *next++ = a[i];
    });
}

template <class T>
void scatter_masked(std::int64_t n, const T* a, T* y, const void* mask, std::int32_t width) {
    in_width(n, width, [=, next = a]<class Index>(Index count) mutable {
        const auto* chosen = static_cast<const Index*>(mask);
        for (Index i = 0; i < count; ++i)
            if (chosen[i] != 0) y[i] = *next++;
    });
}

}  // namespace

#define KEF_PACK(type)                                                                \
    void type##PackI_HA(std::int64_t n, const element_##type* a, std::int64_t inca,   \
                        element_##type* y, std::int32_t width) {                      \
        gather_strided(n, a, inca, y, width);                                         \
    }                                                                                 \
    void type##UnpackI_HA(std::int64_t n, const element_##type* a, element_##type* y, \
                          std::int64_t incy, std::int32_t width) {                    \
        scatter_strided(n, a, y, incy, width);                                        \
    }                                                                                 \
    void type##PackV_HA(std::int64_t n, const element_##type* a, const void* ia,      \
                        element_##type* y, std::int32_t width) {                      \
        gather_indexed(n, a, ia, y, width);                                           \
    }                                                                                 \
    void type##UnpackV_HA(std::int64_t n, const element_##type* a, element_##type* y, \
                          const void* iy, std::int32_t width) {                       \
        scatter_indexed(n, a, y, iy, width);                                          \
    }                                                                                 \
    void type##PackM_HA(std::int64_t n, const element_##type* a, const void* mask,    \
                        element_##type* y, std::int32_t width) {                      \
        gather_masked(n, a, mask, y, width);                                          \
    }                                                                                 \
    void type##UnpackM_HA(std::int64_t n, const element_##type* a, element_##type* y, \
                          const void* mask, std::int32_t width) {                     \
        scatter_masked(n, a, y, mask, width);                                         \
    }
KEF_PACK(s)
KEF_PACK(d)
KEF_PACK(c)
KEF_PACK(z)

}  // namespace kef::vm
