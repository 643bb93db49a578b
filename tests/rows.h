// The exported vector-math functions as data, expanded from the list of all
// functions, and one way to call them whatever their shape.
#pragma once

#include <array>
#include <cstdint>
#include <cstring>
#include <ostream>
#include <string>
#include <vector>

#include "kef_vm.h"

namespace kef_test {

enum class Shape {
    map1,
    map2,
    mapx,
    map1x2,
    modulus,
    from_real,
    linear_frac,
    pack_i,
    pack_v,
    unpack_i,
    unpack_v
};

using Code = void (*)();

// One call. Vectors hold components: a complex element is two of them.
struct Call {
    std::int32_t n;
    const void* a;
    const void* b;        // second vector
    const void* scalars;  // elements
    void* r;
    void* z;         // second result vector
    int stack = -1;  // i386: the address of the arguments modulo 16; -1 for any
};

struct Row {
    char type;
    const char* function;
    Shape shape;
    std::array<Code, 4> entries;  // by slot, and the plain name
    Code* slots;
    const float* costs;
    std::array<const char*, 3> kernels;
    void (*invoke)(Code, const Call&);  // null for Pack and Unpack
    int arguments, scalars, results;    // vectors, scalars, vectors
    int argument_parts, result_parts;   // components of an element

    std::string name() const { return type + std::string(function); }
    bool element_wise() const { return invoke != nullptr; }
    bool single() const { return type == 's' || type == 'c'; }
    std::size_t component_size() const { return single() ? sizeof(float) : sizeof(double); }
    std::size_t argument_size() const { return component_size() * argument_parts; }
    std::size_t result_size() const { return component_size() * result_parts; }
};

// Every row that is switched on, and the number of rows for a type, on or off.
const std::vector<Row>& rows();
int rows_of_type(char type);

// The row of a name such as "dExp", or null.
inline const Row* find_row(const std::string& name) {
    for (const Row& row : rows())
        if (row.name() == name) return &row;
    return nullptr;
}

}  // namespace kef_test
