// The central handler of element errors.
#pragma once

#include <cstdint>

#include "kef_vm.h"

namespace kef::vm {

// One failing element of a kernel's call. Values rather than vectors hold the
// arguments: in a call in place the vector already holds the result. The vector
// serves the index arithmetic alone.
//
// Argument and Result are element types (vm/surface/shapes.h). A kernel of one argument
// gives it twice, one with one result gives its address twice.
template <class Argument, class Result = Argument> struct ElementError {
    std::int32_t code;        // VTM_STATUS_...
    std::int32_t index;       // within the kernel's own input; the count for BADSIZE
    const char* name;         // for instance "vdExp" or "sCos_HA"
    const Argument* vector1;  // the first argument vector; what follows is not read
    Argument argument1;       // for BADSIZE and BADMEM
    Argument argument2;
    Result* result1;  // the element's place in the first result vector
    Result* result2;
};

// Stores the status and does what the thread's error mode asks for; a callback
// may replace the results in their vectors.
template <class Argument, class Result>
void handle_error(const ElementError<Argument, Result>& error);

// Whether the thread's error mode asks for no more of an error than its status; and stores that
// where it is so.
bool wants_status_alone();
bool store_status_alone(std::int32_t code);

}  // namespace kef::vm
