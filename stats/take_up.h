// From the caller's arrays to the accumulators: where the task has no state of its own, the
// arrays are it.
#pragma once

#include <limits>

#include "stats/derive.h"
#include "stats/matrix.h"
#include "stats/state.h"

namespace kef::stats {

// Sets accumulators from the arrays. A quantity is looked for in the fields that the call asks
// for (first among those that are known to be current), then in those that it requires, then in
// all that are registered, likewise; each time a sum before a moment, and both before what it
// could be worked out from. What stands nowhere is not known, NaN; but deviations of one
// observation are 0.
template <class T> class TakeUp {
public:
    // The accumulators have the W and W2 of the observations before.
    TakeUp(const Task& task, BasicState& state, FieldSet asked, FieldSet required, FieldSet current)
        : task_(task),
          state_(state),
          A_(state.sums),
          scales_(A_.W, A_.W2),
          one_observation_(is_one_observation<T>(A_.W, A_.W2)),
          places_{asked & current, asked, required, current, usable_fields(task)},
          known_(state.held) {}

    void operator()(QuantitySet quantities) {
        using namespace quantity;
        for (int q = mean; q <= central_4; ++q)
            if (quantities & set_of(Quantity(q))) take(Quantity(q));
        if (quantities & set_of(product)) take_products();
    }

private:
    // The registered fields, without matrices of unknown layout.
    static FieldSet usable_fields(const Task& task) {
        FieldSet fields = registered_fields(task);
        for_each_field(fields & field::matrices, [&](const ResultField& field) {
            if (!is_layout(task, task.*field.layout)) fields &= ~field.bit;
        });
        return fields;
    }

    // The field that holds a quantity, the one without a scale first; null when none does.
    static const ResultField* holder(Quantity q, FieldSet fields) {
        const ResultField* found = nullptr;
        for_each_field(fields, [&](const ResultField& field) {
            if (field.quantity == q && (found == nullptr || field.scale == Scale::one))
                found = &field;
        });
        return found;
    }

    double read(const ResultField& field, std::ptrdiff_t i) const {
        return static_cast<const T*>(task_.*field.array)[i] * scales_[field.scale];
    }
    double unknown() const {
        return one_observation_ ? 0 : std::numeric_limits<double>::quiet_NaN();
    }

    // value(i) of variable i into the accumulators.
    template <class Value> void fill(Quantity q, Value value) {
        for (std::ptrdiff_t a = 0; a < state_.count; ++a) A_.set(q, a, value(state_.variable[a]));
    }
    // value(element, a, b) of members a >= b into the products.
    template <class Value> void fill_products(const SymmetricMatrix<T>& matrix, Value value) {
        for (std::ptrdiff_t a = 0; a < state_.count; ++a)
            for (std::ptrdiff_t b = 0; b <= a; ++b) {
                const double element = matrix.get(state_.variable[a], state_.variable[b]);
                A_.set_product(a, b, value(element, a, b));
            }
    }

    void take(Quantity q) {
        known_ |= set_of(q);
        for (const FieldSet fields : places_) {
            if (const ResultField* field = holder(q, fields))
                return fill(q, [&](std::ptrdiff_t i) { return read(*field, i); });
            if (one_observation_ && q >= quantity::central_2) break;
            if (worked_out(q, fields)) return;
        }
        fill(q, [&](std::ptrdiff_t) { return unknown(); });
    }

    // A quantity from others that the fields hold: raw sums from the mean and the central sums up
    // to the same order, those from mean and raw sums, or a second one from the matrix.
    bool worked_out(Quantity q, FieldSet fields) {
        using namespace quantity;
        if (!(fields & field::mean)) return false;
        const bool central = q >= central_2;
        const Quantity second = central ? raw_2 : central_2;
        const int last = q + (second - (central ? central_2 : raw_2));
        const ResultField* others[quantity::count]{};
        bool all = true;
        for (int k = second; k <= last; ++k)
            all = (others[k] = holder(Quantity(k), fields)) != nullptr && all;
        if (all) {
            fill(q, [&](std::ptrdiff_t i) {
                Quantities sums;
                sums[mean] = read(result_fields[field::index_mean], i);
                sums[raw_1] = sums[mean] * A_.W;
                for (int k = second; k <= last; ++k) sums[Quantity(k)] = read(*others[k], i);
                if (central) central_from_raw(A_.W, false, sums);
                else raw_from_central(A_.W, sums);
                return sums[q];
            });
            return true;
        }
        const ResultField* products = q == central_2 ? holder(product, fields) : nullptr;
        if (products == nullptr) return false;
        const auto matrix = matrix_of(*products);
        fill(q, [&](std::ptrdiff_t i) { return matrix.get(i, i) * scales_[products->scale]; });
        return true;
    }

    SymmetricMatrix<T> matrix_of(const ResultField& field) const {
        return matrix_at<T>(task_, state_.p, task_.*field.array, task_.*field.layout);
    }

    void take_products() {
        for (const FieldSet fields : places_) {
            if (const ResultField* field = holder(quantity::product, fields))
                return fill_products(matrix_of(*field),
                                     [&](double c, auto...) { return c * scales_[field->scale]; });
            if (one_observation_) break;
            if (fields & field::correlation) {
                if (!(known_ & set_of(quantity::central_2))) take(quantity::central_2);
                const auto root = [&](std::ptrdiff_t a) {
                    return std::sqrt(A_.get(quantity::central_2, a));
                };
                return fill_products(
                    matrix_of(result_fields[field::index_correlation]),
                    [&](double r, auto a, auto b) { return r * root(a) * root(b); });
            }
        }
        for (std::ptrdiff_t a = 0; a < state_.count; ++a)
            for (std::ptrdiff_t b = 0; b <= a; ++b) A_.set_product(a, b, unknown());
    }

    const Task& task_;
    BasicState& state_;
    Accumulators& A_;
    const Scales scales_;
    const bool one_observation_;
    const FieldSet places_[5];
    QuantitySet known_;
};

}  // namespace kef::stats
