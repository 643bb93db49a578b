// From the accumulators to the caller's arrays: one way over the results, which writes them or
// tells whether the arrays still hold what was written.
#pragma once

#include <bit>
#include <type_traits>

#include "stats/derive.h"
#include "stats/matrix.h"
#include "stats/state.h"

namespace kef::stats {

// The operations that a way over the results takes: op(place, value), false to stop.
struct Write {
    template <class T> bool operator()(T& place, double value) const {
        place = static_cast<T>(value);
        return true;
    }
};
struct SameBits {
    template <class T> bool operator()(const T& place, double value) const {
        using Bits = std::conditional_t<sizeof(T) == 8, std::uint64_t, std::uint32_t>;
        return std::bit_cast<Bits>(place) == std::bit_cast<Bits>(static_cast<T>(value));
    }
};

// Element i of the vectors among the fields.
template <class T, class Op>
bool visit_vectors(const Task& task, FieldSet fields, std::ptrdiff_t i, const Quantities& q,
                   const Scales& scales, Op op) {
#define KEF_VISIT_matrix(result, quantity, scale)
#define KEF_VISIT_vector(result, quantity, scale)                                       \
    if ((fields & field::result) &&                                                     \
        !op(static_cast<T*>(task.result)[i], scales.divide<Scale::scale>(q[quantity]))) \
        return false;
#define KEF_ESTIMATE(NAME, result, status, shape, made_of, scale, ...) \
    KEF_VISIT_##shape(result, quantity::made_of, scale)
#include "stats/estimate.def"
#undef KEF_VISIT_matrix
#undef KEF_VISIT_vector
    return true;
}

// The matrices among the fields, for the members 0 .. count - 1 of a list of variables:
// variable(a) is that of member a, or negative; product(a, b) the sum of products of members
// a >= b.
template <class T, class Variable, class Product, class Op>
bool visit_matrices(const Task& task, std::ptrdiff_t p, FieldSet fields, std::ptrdiff_t count,
                    Variable variable, Product product, const Scales& scales, Op op) {
    for (fields &= field::matrices; fields != 0; fields &= fields - 1) {
        const ResultField& field = result_fields[std::countr_zero(fields)];
        const auto matrix = matrix_at<T>(task, p, task.*field.array, task.*field.layout);
        // value(a, b) for all elements.
        const auto visit = [&](auto value) {
            for (std::ptrdiff_t a = 0; a < count; ++a) {
                const std::ptrdiff_t i = variable(a);
                for (std::ptrdiff_t b = 0; i >= 0 && b <= a; ++b) {
                    const std::ptrdiff_t j = variable(b);
                    if (j < 0) continue;
                    const double element = value(a, b);
                    if (!matrix.places(i, j, [&](T& place) { return op(place, element); }))
                        return false;
                }
            }
            return true;
        };
        const double scale = scales[field.scale];
        const bool done =
            field.quantity == quantity::product
                ? visit([&](auto a, auto b) { return product(a, b) / scale; })
                : visit([&](auto a, auto b) {
                      return a == b ? 1
                                    : correlation_of(product(a, b), product(a, a), product(b, b));
                  });
        if (!done) return false;
    }
    return true;
}

// The quantities of list member a that these fields are made of.
inline Quantities quantities_of(const BasicState& state, std::ptrdiff_t a, FieldSet fields,
                                const Scales& scales) {
    using namespace quantity;
    const Accumulators& A = state.sums;
    const PairSums& s = A.sums[a / 2];
    const int lane = a & 1;
    Quantities q;
    const auto raw = [&](int k) { return s.raw_high[k][lane] + s.raw_low[k][lane]; };
    if (state.from_raw) {
        for (int k = 0; k < 4; ++k) q.value[raw_1 + k] = raw(k);
        central_from_raw(A.W, A.one_observation(), q);
    } else {
        q[mean] = s.mean_high[lane];
        q[central_2] = s.central.m2[lane];
        q[central_3] = s.central.m3[lane];
        q[central_4] = s.central.m4[lane];
        // Raw moments that are required only, not asked for, follow from the others.
        if (fields & state.derived) raw_from_central(A.W, q);
        for (int k = 0; k < 4; ++k)
            if (state.held >> (raw_1 + k) & 1) q.value[raw_1 + k] = raw(k);
    }
    if (fields & field::shapes) shapes_from_central(A.W, scales, q);
    return q;
}

// Goes over the accumulated weights and these results of the processed variables.
template <class T, class Op>
bool visit_results(const Task& task, const BasicState& state, FieldSet fields, Op op) {
    const Accumulators& A = state.sums;
    const Scales scales(A.W, A.W2);
    if (auto* accumulated = static_cast<T*>(task.accumulated_weights))
        if (!op(accumulated[0], A.W) || !op(accumulated[1], A.W2.plain())) return false;
    // A mean from raw sums needs a weight to divide by.
    const FieldSet vectors = state.from_raw && !(A.W > 0) ? fields & field::raw_sums : fields;
    if (vectors & ~field::matrices)
        for (std::ptrdiff_t a = 0; a < state.count; ++a)
            if (!visit_vectors<T>(task, vectors, state.variable[a],
                                  quantities_of(state, a, vectors, scales), scales, op))
                return false;
    return visit_matrices<T>(
        task, state.p, fields, state.count, [&](std::ptrdiff_t a) { return state.variable[a]; },
        [&](std::ptrdiff_t a, std::ptrdiff_t b) { return A.get_product(a, b); }, scales, op);
}

}  // namespace kef::stats
