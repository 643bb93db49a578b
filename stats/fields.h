// The result fields of Basic as a set of bits, what each estimate requires, and what each
// field is made of: all from estimate.def.
#pragma once

#include <cstdint>

#include "stats/task.h"

namespace kef::stats {

using FieldSet = std::uint32_t;

namespace field {

enum Index {
#define KEF_ESTIMATE(NAME, result, ...) index_##result,
#include "stats/estimate.def"
    count
};

enum : FieldSet {
#define KEF_ESTIMATE(NAME, result, ...) result = 1u << index_##result,
#include "stats/estimate.def"
    impossible = 1u << count
};

inline constexpr FieldSet raw_moments = raw_moment_2 | raw_moment_3 | raw_moment_4;
inline constexpr FieldSet raw_sums = sum | raw_sum_2 | raw_sum_3 | raw_sum_4;
inline constexpr FieldSet central_sums = central_sum_2 | central_sum_3 | central_sum_4;
inline constexpr FieldSet central_moments = central_moment_2 | central_moment_3 | central_moment_4;
inline constexpr FieldSet shapes = kurtosis | skewness | variation;
inline constexpr FieldSet matrices = covariance | correlation | cross_product;

}  // namespace field

static_assert(field::impossible == 1u << 20);

// What results are made of, of one variable or of a pair: the accumulated ones, up to the
// product, and those that follow from them.
namespace quantity {
enum Index {
    mean,
    raw_1,  // sums of w x^k
    raw_2,
    raw_3,
    raw_4,
    central_2,  // sums of w (x - mean)^k
    central_3,
    central_4,
    product,  // sums of w (x - mean)(y - mean of y)
    kurtosis,
    skewness,
    variation,
    correlation,
    count
};
}
using Quantity = quantity::Index;

using QuantitySet = std::uint32_t;
constexpr QuantitySet set_of(Quantity first, Quantity last) { return (2u << last) - (1u << first); }
constexpr QuantitySet set_of(Quantity q) { return set_of(q, q); }

enum class Scale { one, W, N };
enum class Shape { vector, matrix };

struct ResultField {
    FieldSet bit;
    Shape shape;
    Quantity quantity;
    Scale scale;
    kef_ss_output Task::*array;
    kef_ss_integer Task::*layout;  // of a matrix, else null
};

// In the order of field::Index.
inline constexpr ResultField result_fields[] = {
#define KEF_LAYOUT_vector(result) nullptr
#define KEF_LAYOUT_matrix(result) &Task::result##_storage
#define KEF_ESTIMATE(NAME, result, status, form, made_of, divisor, ...) \
    {field::result,  Shape::form,   quantity::made_of,                  \
     Scale::divisor, &Task::result, KEF_LAYOUT_##form(result)},
#include "stats/estimate.def"
#undef KEF_LAYOUT_vector
#undef KEF_LAYOUT_matrix
};

// Calls f with each of the fields, in their order.
template <class F> inline void for_each_field(FieldSet fields, F f) {
    for (; fields != 0; fields &= fields - 1) f(result_fields[__builtin_ctz(fields)]);
}

// Which of the three requirement columns of estimate.def holds, in their order.
enum class Requirements { raw, observed, derived };

// The estimates asked for, as the fields that hold them.
inline FieldSet requested_fields(std::uint64_t estimates) {
    FieldSet fields = 0;
#define KEF_ESTIMATE(NAME, result, ...) \
    if (estimates & VTS_SS_ESTIMATE_##NAME) fields |= field::result;
#include "stats/estimate.def"
    return fields;
}

inline FieldSet required_fields(FieldSet requested, Requirements column) {
    using namespace field;
    const int number = static_cast<int>(column);
    FieldSet fields = 0;
#define KEF_ESTIMATE(NAME, result, status, shape, quantity, scale, raw, observed, derived) \
    if (requested & field::result) fields |= (const FieldSet[]){raw, observed, derived}[number];
#include "stats/estimate.def"
    return fields;
}

// The accumulated quantities behind one: with the lower central sums, from which a higher one
// is brought on, or, `from_raw`, with the raw sums that take their place.
constexpr QuantitySet accumulated_behind(Quantity q, bool from_raw) {
    using namespace quantity;
    if (q == mean) return set_of(from_raw ? raw_1 : mean);
    if (q <= raw_4) return set_of(q);
    if (q <= central_4)
        return from_raw ? set_of(raw_1, Quantity(q - central_2 + raw_2))
                        : set_of(mean) | set_of(central_2, q);
    return q == product || q == correlation ? set_of(mean) | set_of(product) : 0;
}

inline QuantitySet accumulated_quantities(FieldSet fields, bool from_raw) {
    QuantitySet set = 0;
#define KEF_ESTIMATE(NAME, result, status, shape, made_of, ...)       \
    if (fields & field::result)                                       \
        set |= from_raw ? accumulated_behind(quantity::made_of, true) \
                        : accumulated_behind(quantity::made_of, false);
#include "stats/estimate.def"
    return set;
}

// The fields that the task has.
inline FieldSet registered_fields(const Task& task) {
    FieldSet fields = 0;
    for (const ResultField& field : result_fields)
        if (task.*field.array != nullptr) fields |= field.bit;
    return fields;
}

// The status of the first required field that the task lacks.
inline std::int32_t check_present(const Task& task, FieldSet required) {
#define KEF_ESTIMATE(NAME, result, status, ...) \
    if ((required & field::result) && task.result == nullptr) return VTS_SS_STATUS_##status;
#include "stats/estimate.def"
    return (required & field::impossible) ? VTS_SS_STATUS_BAD_METHOD : VTS_SS_STATUS_OK;
}

}  // namespace kef::stats
