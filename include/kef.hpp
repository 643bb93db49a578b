/// The checked C++20 interface, header-only, on the exported C functions alone. docs/cxx.md has an
/// example of each class.
///
///   kef/error.hpp    exceptions: an argument, a status, an element
///   kef/vm.hpp       vector math over contiguous ranges, and what an element error does
///   kef/random.hpp   streams and laws
///   kef/stats.hpp    statistics block by block, and of one sample
///   kef/spline.hpp   splines of one variable
///
/// Every argument is checked before anything is written: sizes, null pointers, overlaps, ranges of
/// numbers, shapes of matrices. What is wrong is thrown as kef::ArgumentError, whose words name the
/// function and the argument.
#ifndef KEF_HPP
#define KEF_HPP

#include "kef/error.hpp"
#include "kef/random.hpp"
#include "kef/spline.hpp"
#include "kef/stats.hpp"
#include "kef/vm.hpp"
#include "kef_version.h"

#endif
