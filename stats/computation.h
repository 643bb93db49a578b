// What the rows of computation.def call.
#pragma once

#include "stats/checks.h"
#include "stats/matrix.h"

namespace kef::stats {

// What a field that is null and must not be gives.
namespace null_status {
enum : std::int32_t {
#define KEF_PARAMETER(kind, id, name, status) name = VTS_SS_STATUS_##status,
#include "stats/task.def"
};
}  // namespace null_status

#define KEF_COMPUTATION(Name, function, ...) template <class T> std::int32_t function(Task& task);
#include "stats/computation.def"

// The two precisions of a computation, in the file that defines it.
#define KEF_BOTH_PRECISIONS(function)              \
    template std::int32_t function<double>(Task&); \
    template std::int32_t function<float>(Task&)

}  // namespace kef::stats
