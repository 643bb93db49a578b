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
    KeptLayout own;
    own.reserve(1, sizeof(BasicState));
    const auto variable = own.reserve(p, sizeof(std::ptrdiff_t));
    const SumsRoom sums(own, p);
    char* start = keep(task, Kept::basic, own);
    if (start == nullptr) return nullptr;
    auto* state = reinterpret_cast<BasicState*>(start);
    if (products) {
        KeptLayout matrix;
        const ProductsRoom room(matrix, p);
        char* second = keep(task, Kept::basic_products, matrix);
        if (second == nullptr) return nullptr;
        room.give(state->sums, second);
    }
    if (state->p != p) state->valid = false;
    state->p = p;
    state->variable = reinterpret_cast<std::ptrdiff_t*>(start + variable);
    sums.give(state->sums, start);
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
    set_pairs(state.sums, state.variable, count);
    return same;
}

}  // namespace kef::stats
