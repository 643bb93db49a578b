// The exported vector-math surface, expanded from surface.def: dispatch and cost
// tables, and entry points that jump through their slot.
#include <cstddef>
#include <type_traits>

#include "vm/surface/shapes.h"

#define KEF_STRING_(x) #x
#define KEF_STRING(x) KEF_STRING_(x)
#define KEF_LABEL(name) KEF_STRING(__USER_LABEL_PREFIX__) #name

namespace kef::vm {

namespace {

enum Kernel { LA, HA, EP };

// Slots that share a kernel carry one cost.
constexpr bool consistent(Kernel k0, Kernel k1, Kernel k2, float c0, float c1, float c2) {
    return (k0 != k1 || c0 == c1) && (k1 != k2 || c1 == c2) && (k0 != k2 || c0 == c2);
}

}  // namespace

// Dispatch table and, right behind it, cost table: one object, so that nothing
// can come between. Not in an unnamed namespace: then the tables
// would not be exported. The library reads a slot at every call and writes none.
template <class Function> struct Tables {
    Function* slot[3];
    float cost[3];
};

#define KEF_OFF(type, function, form)

// The type of a slot's function.
#define KEF_SLOT(type, form) std::type_identity_t<void KEF_SLOT_PARAMETERS(form, element_##type)>

// The kernels, each defined in the file of its function.
#define KEF_ROW(type, function, form, k0, k1, k2, c0, c1, c2) \
    KEF_SLOT(type, form) type##function##_##k0, type##function##_##k1, type##function##_##k2;
#include "vm/surface/surface.def"
#undef KEF_ROW

// The tables. The cost table's name is a second label inside the object. Windows
// exports both by a list (cmake/exports.cmake).
#if defined(__ELF__)
#define KEF_DATA_LABEL(name) ".type " #name ", @object\n.size " #name ", 12\n"
#define KEF_TABLE KEF_API
#else
#define KEF_DATA_LABEL(name)
#define KEF_TABLE
#endif
#define KEF_ROW(type, function, form, k0, k1, k2, c0, c1, c2)                                     \
    static_assert(consistent(k0, k1, k2, c0, c1, c2), "one kernel, two costs: " #type #function); \
    extern KEF_TABLE Tables<KEF_SLOT(type, form)> tables_##type##function __asm__(                \
        KEF_LABEL(kef_vtm_kernel_##type##function##_ttab));                                       \
    Tables<KEF_SLOT(type, form)> tables_##type##function = {                                      \
        {type##function##_##k0, type##function##_##k1, type##function##_##k2}, {c0, c1, c2}};     \
    static_assert(offsetof(Tables<KEF_SLOT(type, form)>, cost) == 3 * sizeof(void*));             \
    __asm__(".globl " KEF_LABEL(kef_vtm_kernel_##type##function##_ctab) "\n"                     \
            ".set " KEF_LABEL(kef_vtm_kernel_##type##function##_ctab) ", "                       \
            KEF_LABEL(kef_vtm_kernel_##type##function##_ttab) " + 3 * "                          \
            KEF_STRING(__SIZEOF_POINTER__) "\n"                                                  \
            KEF_DATA_LABEL(kef_vtm_kernel_##type##function##_ctab));
#include "vm/surface/surface.def"
#undef KEF_ROW

}  // namespace kef::vm

using namespace kef::vm;

#define KEF_SUFFIX_0_s _21
#define KEF_SUFFIX_0_c _21
#define KEF_SUFFIX_0_d _50
#define KEF_SUFFIX_0_z _50
#define KEF_SUFFIX_2_s _11
#define KEF_SUFFIX_2_c _11
#define KEF_SUFFIX_2_d _26
#define KEF_SUFFIX_2_z _26

#define KEF_JOIN_(a, b) a##b
#define KEF_JOIN(a, b) KEF_JOIN_(a, b)

// Pack and Unpack append the interface-width flag, all others hand on what they got: a bare jump.
#define KEF_ENTRY(type, function, form, suffix, number)                                      \
    void KEF_JOIN(_vtm##type##function, suffix) KEF_ENTRY_PARAMETERS(form, element_##type) { \
        tables_##type##function.slot[number] KEF_ENTRY_ARGUMENTS(form);                      \
    }

// The plain name is that of slot 1; of zPowx it is a function that calls slot 1 with a copy of its
// arguments.
#define KEF_ALIAS(type, function, form)                                  \
    void _vtm##type##function KEF_ENTRY_PARAMETERS(form, element_##type) \
        __attribute__((alias("_vtm" #type #function "_HA")));
#define KEF_FORWARDER(type, function, form) \
    __attribute__((optimize("no-optimize-sibling-calls"))) KEF_ENTRY(type, function, form, , 1)
#define KEF_FORWARDED_zPowx ,
#define KEF_THIRD(first, second, third, ...) third
#define KEF_CHOICE(...) KEF_THIRD(__VA_ARGS__)
#define KEF_PLAIN(type, function, form) \
    KEF_CHOICE(KEF_FORWARDED_##type##function, KEF_FORWARDER, KEF_ALIAS, )(type, function, form)

extern "C" {
#define KEF_ROW(type, function, form, k0, k1, k2, c0, c1, c2) \
    KEF_ENTRY(type, function, form, KEF_SUFFIX_0_##type, 0)   \
    KEF_ENTRY(type, function, form, _HA, 1)                   \
    KEF_ENTRY(type, function, form, KEF_SUFFIX_2_##type, 2)   \
    KEF_PLAIN(type, function, form)
#include "vm/surface/surface.def"
#undef KEF_ROW
}
