// What interpolation and integration share: their checks, and the cells of sites
// with the distances from the cells' left ends.
#pragma once

#include "fit/arrays.h"
#include "fit/cells/choose.h"
#include "fit/knots.h"

namespace kef::fit {

// The checks of a spline that is there to be evaluated.
template <class T> std::int32_t check_spline(const Task& task) {
    if (task.order <= 0 || task.order > INT32_MAX) return DF_STATUS_ORDER;
    if (task.type > DF_TYPE_AKIMA) return DF_STATUS_TYPE;
    if (task.type == DF_TYPE_SUBBOTIN && (task.ic_type & DF_INTERNAL_KNOTS) && task.ic == nullptr)
        return DF_STATUS_INTERNAL_CONDITIONS;
    if (!is_storage_hint(task.coefficient_hint)) return DF_STATUS_COEFFICIENT_HINT;
    if (task.ny <= 0) return DF_STATUS_NY;
    if (!has_coefficients(task)) return DF_STATUS_COEFFICIENTS;
    return partition_is_accepted<T>(task) ? DF_STATUS_OK : DF_STATUS_X;
}

inline bool is_result_hint(std::int64_t h) { return is_storage_hint(h) && h != DF_SEPARATE_ROWS; }

// The cells of sites and the distances from their left ends.
template <class T> class CellMap {
public:
    explicit CellMap(const Task& task) : partition_(task), knots_(task), cells_(cell_count(task)) {
        // A step function that is y itself has a value for the last breakpoint too.
        if (task.order == DF_STEP && !knots_.between && task.y_rows != nullptr &&
            task.y_slots > 0 && task.y_rows[0] == task.coefficient_rows[0])
            ++cells_, holds_last_ = true;
    }
    const Partition<T>& partition() const { return partition_; }
    std::size_t cells() const { return cells_; }

    T left(std::size_t cell) const { return knots_.left(cell); }
    // The right end of a cell; of a last cell that is a point, the point.
    T right(std::size_t cell) const { return cell + 1 < cells_ ? left(cell + 1) : partition_.last; }

    // The spline's cell of a site in cell i of the partition.
    std::uint32_t cell(std::uint32_t i, T q) const {
        if (knots_.between) i += q >= knots_.gap(i);
        if (holds_last_) i += q >= partition_.last;
        return i;
    }

    // Places of the coefficients of n located sites, `stride` elements a cell, and their
    // distances from the cells' left ends, padded to whole groups by a harmless site.
    void map(const std::uint32_t* located, const T* q, std::uint32_t n, std::uint32_t stride,
             std::uint32_t* place, T* distance) const {
        if (!knots_.between && !holds_last_) {
            const T* x = partition_.x;
            for (std::uint32_t j = 0; j < n; ++j) {
                place[j] = located[j] * stride;
                distance[j] = q[j] - x[located[j]];
            }
        } else {
            for (std::uint32_t j = 0; j < n; ++j) {
                const std::uint32_t i = cell(located[j], q[j]);
                place[j] = i * stride;
                distance[j] = q[j] - left(i);
            }
        }
        for (std::uint32_t j = n; j % group != 0; ++j) place[j] = 0, distance[j] = 0;
    }

private:
    Partition<T> partition_;
    Knots<T> knots_;
    std::size_t cells_;
    bool holds_last_ = false;
};

}  // namespace kef::fit
