// The arrays of a construction.
#pragma once

#include <algorithm>
#include <cstddef>

#include "service/alloc.h"

namespace kef::fit {

// How many arrays a method takes: lasting ones, which are read while cells are
// written; transient ones, which are not; and `nodal` (at most one), n numbers that are
// read at i and i + 1 when cell i is written, in ascending order.
struct ArrayCount {
    std::size_t lasting = 0, transient = 0, nodal = 0;
    ArrayCount operator+(ArrayCount other) const {
        return {lasting + other.lasting, transient + other.transient, nodal + other.nodal};
    }
};

// One allocation, and where it can be the room where the coefficients will stand: its
// end for the nodal array, of which a cubic's cells overwrite only what has been read,
// and what fits before that for transient ones. Fresh memory costs more than the
// arithmetic on it when the arrays are long.
class Scratch {
public:
    // For n breakpoints and the padding; `lent` are lent_size numbers, or 0.
    Scratch(ArrayCount arrays, std::size_t n, std::size_t padding, double* lent,
            std::size_t lent_size)
        : length_((n + padding + 3) & ~std::size_t(1)), lent_(lent) {
        std::size_t own = arrays.lasting;
        if (arrays.nodal != 0 && lent_size >= n) {
            lent_size -= n;
            nodal_ = lent + lent_size;
        } else {
            own += arrays.nodal;
        }
        lent_left_ = lent_size / length_;
        own += arrays.transient - std::min(arrays.transient, lent_left_);
        block_ = static_cast<double*>(allocate_aligned(own * length_ * sizeof(double)));
        next_ = block_;
    }
    ~Scratch() { free_aligned(block_); }
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;

    bool failed() const { return block_ == nullptr; }
    double* take() { return step(next_); }
    double* take_nodal() { return nodal_ != nullptr ? nodal_ : take(); }
    double* take_transient() {
        if (lent_left_ == 0) return take();
        --lent_left_;
        return step(lent_);
    }

private:
    double* step(double*& next) const {
        double* array = next;
        next += length_;
        return array;
    }
    std::size_t length_;
    double* block_;
    double* next_;
    double* lent_;
    double* nodal_ = nullptr;
    std::size_t lent_left_;
};

}  // namespace kef::fit
