// What Basic keeps in the task from call to call: the accumulators behind the results that
// were last written, in full precision.
#pragma once

#include "stats/accumulators.h"
#include "stats/checks.h"
#include "stats/task.h"

namespace kef::stats {

// The rest of its block, and a second block where there are products, are the arrays that it
// points to.
struct BasicState {
    bool valid;            // `sums` hold the state behind what was last written
    bool from_raw;         // mean and central moments come from the raw sums
    FieldSet written;      // to these fields, which the caller may have changed since
    FieldSet derived;      // those of them that were worked out from the others
    QuantitySet held;      // the accumulators that cover all observations so far
    std::ptrdiff_t p;      // the arrays are laid out for
    std::ptrdiff_t count;  // processed variables
    std::ptrdiff_t* variable;
    Accumulators sums;
};

// The state, with arrays for p variables. A block that is there already moves or stays as it is;
// null when there is no memory, and then the state is as before.
inline BasicState* state_of(Task& task, std::ptrdiff_t p, bool products) {
    const std::uint64_t pairs = (static_cast<std::uint64_t>(p) + 1) / 2;
    KeptLayout own;
    own.reserve(1, sizeof(BasicState));
    const auto coefficients = own.reserve(1, sizeof(Coefficients));
    const auto variable = own.reserve(p, sizeof(std::ptrdiff_t));
    const auto pair = own.reserve(pairs, sizeof(Pair));
    const auto sums = own.reserve(pairs, sizeof(PairSums));
    char* start = keep(task, Kept::basic, own);
    if (start == nullptr) return nullptr;
    auto* state = reinterpret_cast<BasicState*>(start);
    Accumulators& A = state->sums;
    if (products) {
        KeptLayout matrix;
        const auto tile_sum = matrix.reserve(pairs, sizeof(d2));
        const auto tile_distance = matrix.reserve(pairs, sizeof(d2));
        const auto deviation = matrix.reserve(pairs, column * sizeof(d2));
        const auto scaled = matrix.reserve(pairs, column * sizeof(d2));
        const auto blocks = matrix.reserve(pairs, pairs + 1, sizeof(ProductBlock) / 2);
        char* second = keep(task, Kept::basic_products, matrix);
        if (second == nullptr) return nullptr;
        A.tile_sum = reinterpret_cast<d2*>(second + tile_sum);
        A.tile_distance = reinterpret_cast<d2*>(second + tile_distance);
        A.deviation = reinterpret_cast<d2*>(second + deviation);
        A.scaled = reinterpret_cast<d2*>(second + scaled);
        A.products = reinterpret_cast<ProductBlock*>(second + blocks);
    }
    if (state->p != p) state->valid = false;
    state->p = p;
    state->variable = reinterpret_cast<std::ptrdiff_t*>(start + variable);
    A.coefficients = reinterpret_cast<Coefficients*>(start + coefficients);
    A.pair = reinterpret_cast<Pair*>(start + pair);
    A.sums = reinterpret_cast<PairSums*>(start + sums);
    return state;
}

// Puts the list of processed variables into the state; false when it is another one
// than at the last call.
inline bool select_variables(const Task& task, BasicState& state) {
    bool same = true;
    std::ptrdiff_t count = 0;
    for (std::ptrdiff_t i = 0; i < state.p; ++i) {
        if (!is_selected(task, i)) continue;
        same = same && count < state.count && state.variable[count] == i;
        state.variable[count++] = i;
    }
    same = same && count == state.count;
    state.count = count;
    Accumulators& A = state.sums;
    A.pairs = (count + 1) / 2;
    for (std::ptrdiff_t k = 0; k < A.pairs; ++k)
        A.pair[k] = {state.variable[2 * k], state.variable[2 * k + (2 * k + 1 < count)]};
    return same;
}

}  // namespace kef::stats
