// One call of a function, whoever made it: a slot of ours, or a peer.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "tests/reference.h"
#include "tests/rows.h"

namespace kef {

// Vectors of components, as the function takes them: a complex element is two of them.
template <class T> struct Batch {
    explicit Batch(std::size_t n, std::size_t argument_parts = 1, std::size_t result_parts = 1)
        : argument_parts(argument_parts),
          result_parts(result_parts),
          a(n * argument_parts),
          b(n * argument_parts),
          result{std::vector<T>(n * result_parts), std::vector<T>(n * result_parts)} {}
    Batch(std::size_t n, const kef_test::Row& row)
        : Batch(n, row.argument_parts, row.result_parts) {}
    std::int32_t size() const { return static_cast<std::int32_t>(a.size() / argument_parts); }

    // A component of an element's arguments: those of a, then those of b.
    T& at(std::size_t i, std::size_t component) {
        return component < argument_parts ? a[i * argument_parts + component]
                                          : b[i * argument_parts + component - argument_parts];
    }
    // All of them.
    std::array<T, 4> point(std::size_t i) const {
        if (argument_parts == 1) return {a[i], b[i]};
        return {a[2 * i], a[2 * i + 1], b[2 * i], b[2 * i + 1]};
    }

    std::size_t argument_parts, result_parts;
    std::vector<T> a, b;
    std::array<T, 4> scalars = {};  // Powx: the exponent, b holds it too; LinearFrac: all
    std::array<std::vector<T>, 2> result;
};

// The reference of a function; null without.
inline const reference::Reference* find_reference(const kef_test::Row& row) {
    return reference::find(row.function, row.type == 'c' || row.type == 'z');
}

// How many components the arguments of an element have, and its results, whether as two vectors or
// as pairs.
inline std::size_t argument_components(const kef_test::Row& row) {
    return static_cast<std::size_t>(row.argument_parts) *
           (row.arguments == 2 || row.scalars == 1 ? 2 : 1);
}
inline int result_components(const kef_test::Row& row) { return row.results * row.result_parts; }

template <class T> struct Kernel {
    std::string name;  // the slots that share it, or the peer's name
    std::function<void(Batch<T>&)> run;
    int slot = -1;  // the strictest of its slots
};

inline constexpr const char* slot_names[] = {"LA", "HA", "EP"};

// A call of `code`. The common shapes are called as a user would: the detour through
// kef_test::Call costs as much as a hundred additions.
template <class T>
std::function<void(Batch<T>&)> caller(const kef_test::Row& row, kef_test::Code code) {
    using kef_test::Shape;
    if (row.shape == Shape::map1 || row.shape == Shape::modulus || row.shape == Shape::from_real)
        return [f = reinterpret_cast<void (*)(std::int32_t, const T*, T*)>(code)](Batch<T>& x) {
            f(x.size(), x.a.data(), x.result[0].data());
        };
    if (row.shape == Shape::map2)
        return [f = reinterpret_cast<void (*)(std::int32_t, const T*, const T*, T*)>(code)](
                   Batch<T>& x) { f(x.size(), x.a.data(), x.b.data(), x.result[0].data()); };
    return [invoke = row.invoke, code](Batch<T>& x) {
        invoke(code, {x.size(), x.a.data(), x.b.data(), x.scalars.data(), x.result[0].data(),
                      x.result[1].data()});
    };
}

// The different kernels in the slots of a row, or in those that another member has for it; HA's
// first.
template <class T>
std::vector<Kernel<T>> kernels(const kef_test::Row& row, const kef_test::Code* slots = nullptr) {
    std::vector<Kernel<T>> result;
    std::vector<kef_test::Code> codes;
    for (const int slot : {1, 0, 2}) {
        const kef_test::Code code = (slots ? slots : row.slots)[slot];
        std::size_t k = 0;
        while (k < codes.size() && codes[k] != code) ++k;
        if (k < codes.size()) {
            result[k].name += std::string(" ") + slot_names[slot];
            continue;
        }
        codes.push_back(code);
        result.push_back({slot_names[slot], caller<T>(row, code), slot});
    }
    return result;
}

}  // namespace kef
