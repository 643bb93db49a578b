// The result fields of Basic as a set of bits, and what each estimate requires.
#pragma once

#include <cstdint>

#include "stats/task.h"

namespace kef::stats {

using FieldSet = std::uint32_t;

namespace field {

enum Index {
#define KEF_ESTIMATE(NAME, result, status, raw, observed, derived) index_##result,
#include "stats/estimate.def"
    count
};

enum : FieldSet {
#define KEF_ESTIMATE(NAME, result, status, raw, observed, derived) result = 1u << index_##result,
#include "stats/estimate.def"
    impossible = 1u << count
};

inline constexpr FieldSet raw_moments = raw_moment_2 | raw_moment_3 | raw_moment_4;
inline constexpr FieldSet matrices = covariance | correlation | cross_product;

}  // namespace field

static_assert(field::impossible == 1u << 20);

// Which of the three requirement columns of estimate.def holds, in their order.
enum class Requirements { raw, observed, derived };

// The estimates asked for, as the fields that hold them.
inline FieldSet requested_fields(std::uint64_t estimates) {
    FieldSet fields = 0;
#define KEF_ESTIMATE(NAME, result, status, raw, observed, derived) \
    if (estimates & VTS_SS_ESTIMATE_##NAME) fields |= field::result;
#include "stats/estimate.def"
    return fields;
}

inline FieldSet required_fields(FieldSet requested, Requirements column) {
    using namespace field;
    const int number = static_cast<int>(column);
    FieldSet fields = 0;
#define KEF_ESTIMATE(NAME, result, status, raw, observed, derived) \
    if (requested & field::result) fields |= (const FieldSet[]){raw, observed, derived}[number];
#include "stats/estimate.def"
    return fields;
}

// The status of the first required field that the task lacks.
inline std::int32_t check_present(const Task& task, FieldSet required) {
#define KEF_ESTIMATE(NAME, result, status, raw, observed, derived) \
    if ((required & field::result) && task.result == nullptr) return VTS_SS_STATUS_##status;
#include "stats/estimate.def"
    return (required & field::impossible) ? VTS_SS_STATUS_BAD_METHOD : VTS_SS_STATUS_OK;
}

}  // namespace kef::stats
