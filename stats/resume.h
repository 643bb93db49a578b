// The state of Basic before a call over x: what the call is about, and which accumulators it goes
// on from.
#pragma once

#include "stats/accumulators.h"
#include "stats/results.h"
#include "stats/take_up.h"

namespace kef::stats {

inline constexpr int data_methods =
    VTS_SS_METHOD_RAW | VTS_SS_METHOD_RECURRENCE | VTS_SS_METHOD_TILED;

constexpr bool is_one_method(int data_method) {
    return data_method != 0 && (data_method & (data_method - 1)) == 0;
}

// The layouts of the matrices among the fields.
inline std::int32_t check_layouts(const Task& task, FieldSet fields) {
    bool known = true;
    for_each_field(fields & field::matrices, [&](const ResultField& field) {
        known = known && is_layout(task, task.*field.layout);
    });
    return known ? VTS_SS_STATUS_OK : VTS_SS_STATUS_NULL_STORAGE;
}

// What a call over x is about.
struct Call {
    FieldSet required;  // the fields that it writes
    FieldSet asked;     // those that observations are accumulated for
    bool from_raw;      // mean and central moments come from the raw sums
    QuantitySet needed;
    Plan plan;

    Call(FieldSet requested, FieldSet required, int method)
        : required(required), asked(required), from_raw(method & VTS_SS_METHOD_RAW) {
        // Raw moments that are not asked for follow from the mean and the central moments.
        if (!from_raw) asked &= ~(field::raw_moments & ~requested);
        needed = accumulated_quantities(asked, from_raw);
        plan = Plan(needed, method & VTS_SS_METHOD_RECURRENCE);
    }
};

// Brings the accumulators to the state before this call: that of the task while the arrays
// hold what was written last, else the arrays'. Tells which.
template <class T> bool resume(const Task& task, BasicState& state, const Call& call) {
    const auto* accumulated = static_cast<const T*>(task.accumulated_weights);
    const bool fresh = accumulated == nullptr || accumulated[0] == 0;
    // Arrays that this call does not write may be gone: they are not looked at.
    const FieldSet compared = state.written & ~state.derived & call.asked;
    const bool current =
        !fresh && state.valid && visit_results<T>(task, state, compared, SameBits());
    const FieldSet current_fields = current ? state.written : 0;
    const bool kept = select_variables(task, state) && current;
    Accumulators& A = state.sums;
    A.plan = call.plan;
    state.written = call.required;
    state.derived = call.required & ~call.asked;
    state.from_raw = call.from_raw;
    if (!kept) {
        A.clear();
        state.held = fresh ? call.needed : 0;
        if (!fresh) {
            A.W = accumulated[0];
            A.W2 = accumulated[1];
            A.started = true;
            A.positive_weights = false;  // not that anybody knows
        }
    }
    if (const QuantitySet missing = call.needed & ~state.held)
        TakeUp<T>(task, state, call.asked, call.required, current_fields)(missing);
    state.held = (state.held | call.needed) & A.plan.updated();
    return kept;
}

}  // namespace kef::stats
