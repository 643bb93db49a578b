// The central handler of element errors.
#pragma once

#include <cstdint>

namespace kef::vm {

// One failing element of a kernel's call. Values rather than vectors hold the
// arguments: in a call in place the vector already holds the result. The vector
// serves the index arithmetic alone.
//
// T is float, double, or a complex of them (vm/shapes.h). A kernel of one argument
// gives it twice, one with one result gives its address twice.
template <class T>
struct ElementError {
    std::int32_t code;   // VTM_STATUS_...
    std::int32_t index;  // within the kernel's own input; the count for BADSIZE
    const char* name;    // for instance "vdExp" or "sCos_HA"
    const T* vector1;    // the first argument vector; what follows is not read
    T argument1;         // for BADSIZE and BADMEM
    T argument2;
    T* result1;          // the element's place in the first result vector
    T* result2;
};

// Stores the status and does what the thread's error mode asks for; a callback
// may replace the results in their vectors.
void handle_error(const ElementError<float>& error);
void handle_error(const ElementError<double>& error);

}  // namespace kef::vm
