#include "tests/rows.h"

namespace kef_test {

namespace {

template <class T> struct Element {
    using Component = T;
    static constexpr int parts = 1;
};
template <> struct Element<kef_complex8> {
    using Component = float;
    static constexpr int parts = 2;
};
template <> struct Element<kef_complex16> {
    using Component = double;
    static constexpr int parts = 2;
};

using element_s = float;
using element_d = double;
using element_c = kef_complex8;
using element_z = kef_complex16;

#if defined(__i386__)
// Calls with the arguments at a chosen address modulo 16, as callers with a
// 4-byte-aligned stack do.
template <class... Arguments>
[[gnu::noinline, gnu::cold]] void call_on_stack(Code code, int address, Arguments... arguments) {
    std::uint32_t words[32] = {};
    int count = 0;
    ((std::memcpy(words + count, &arguments, sizeof arguments),
      count += (sizeof arguments + 3) / 4),
     ...);
    int room = (4 * count + 15) / 16 * 16 + (16 - address) % 16;
    const std::uint32_t* source = words;
    __asm__ volatile(
        "mov %%esp, %%ebx\n\t"
        "and $-16, %%esp\n\t"
        "sub %%edx, %%esp\n\t"
        "mov %%esp, %%edi\n\t"
        "rep movsl\n\t"
        "call *%%eax\n\t"
        "mov %%ebx, %%esp"
        : "+S"(source), "+c"(count), "+a"(code), "+d"(room)
        :
        : "ebx", "edi", "memory", "cc", "xmm0", "xmm1", "xmm2", "xmm3", "xmm4", "xmm5", "xmm6",
          "xmm7");
}
#endif

template <class T, Shape shape> void invoke(Code code, const Call& c) {
    using Real = typename Element<T>::Component;
    const auto call = [&](auto... arguments) {
#if defined(__i386__)
        if (c.stack >= 0) return call_on_stack(code, c.stack, arguments...);
#endif
        reinterpret_cast<void (*)(decltype(arguments)...)>(code)(arguments...);
    };
    const auto* a = static_cast<const T*>(c.a);
    const auto* b = static_cast<const T*>(c.b);
    T* r = static_cast<T*>(c.r);
    T s[4] = {};
    if constexpr (shape == Shape::mapx) std::memcpy(s, c.scalars, sizeof(T));
    if constexpr (shape == Shape::linear_frac) std::memcpy(s, c.scalars, sizeof s);

    if constexpr (shape == Shape::map1) call(c.n, a, r);
    if constexpr (shape == Shape::map2) call(c.n, a, b, r);
    if constexpr (shape == Shape::mapx) call(c.n, a, s[0], r);
    if constexpr (shape == Shape::map1x2) call(c.n, a, r, static_cast<T*>(c.z));
    if constexpr (shape == Shape::modulus) call(c.n, a, static_cast<Real*>(c.r));
    if constexpr (shape == Shape::from_real) call(c.n, static_cast<const Real*>(c.a), r);
    if constexpr (shape == Shape::linear_frac) call(c.n, a, b, s[0], s[1], s[2], s[3], r);
}

template <class T, Shape shape>
Row make_row(const char* type, const char* function, std::array<Code, 4> entries, void* slots,
             const float* costs, std::array<const char*, 3> kernels) {
    constexpr bool pack = shape >= Shape::pack_i;
    constexpr int parts = Element<T>::parts;
    return {*type,
            function,
            shape,
            entries,
            static_cast<Code*>(slots),
            costs,
            kernels,
            pack ? nullptr : invoke<T, shape>,
            shape == Shape::map2 || shape == Shape::linear_frac ? 2 : 1,
            shape == Shape::linear_frac ? 4
            : shape == Shape::mapx      ? 1
                                        : 0,
            shape == Shape::map1x2 ? 2 : 1,
            shape == Shape::from_real ? 1 : parts,
            shape == Shape::modulus ? 1 : parts};
}

// The four entry points: slots 0, 1, 2 by suffix, and the plain name.
#define SINGLE(name) (Code) name##_21, (Code)name##_HA, (Code)name##_11, (Code)name
#define DOUBLE(name) (Code) name##_50, (Code)name##_HA, (Code)name##_26, (Code)name
#define ENTRIES_s(function) SINGLE(_vtms##function)
#define ENTRIES_c(function) SINGLE(_vtmc##function)
#define ENTRIES_d(function) DOUBLE(_vtmd##function)
#define ENTRIES_z(function) DOUBLE(_vtmz##function)

}  // namespace

const std::vector<Row>& rows() {
    static const std::vector<Row> all = {
#define KEF_OFF(type, function, shape)
#define KEF_ROW(type, function, shape, k0, k1, k2, c0, c1, c2)                                \
    make_row<element_##type, Shape::shape>(                                                   \
        #type, #function, {ENTRIES_##type(function)}, kef_vtm_kernel_##type##function##_ttab, \
        kef_vtm_kernel_##type##function##_ctab, {#k0, #k1, #k2}),
#include "vm/surface/surface.def"
#undef KEF_ROW
#undef KEF_OFF
    };
    return all;
}

int rows_of_type(char type) {
    int count = 0;
#define KEF_OFF(row_type, function, shape) count += type == *#row_type;
#define KEF_ROW(row_type, ...) count += type == *#row_type;
#include "vm/surface/surface.def"
#undef KEF_ROW
#undef KEF_OFF
    return count;
}

}  // namespace kef_test
