// Rows of tables, one a lane: loads of single numbers and of pairs, put together block by block.
// Gathers of the processors at hand are no faster.
#pragma once

#include <array>
#include <bit>
#include <cstdint>

#include "vm/simd/simd.h"

namespace KEF_VM {

// The number of the row for each lane of Vector<T>: a word of 16 bits of the lane, or some of its
// bits, less `first`.
template <class T> struct RowNumbers { int of[lanes<T>]; };
inline RowNumbers<double> row_numbers(longs x, int mask = 0xFFFF, int word = 0, int first = 0) {
    RowNumbers<double> rows;
    if constexpr (lanes < double >> 2) {  // one operation instead of one a lane
        x &= std::int64_t{mask} << (16 * word);
        mask = 0xFFFF;
    }
#pragma GCC unroll 8
    for (int i = 0; i < lanes<double>; ++i)
        rows.of[i] = (((ushorts)x)[4 * i + word] & mask) - first;
    return rows;
}
inline RowNumbers<float> row_numbers(ints x, int mask = 0xFFFF, int first = 0) {
    RowNumbers<float> rows;
#pragma GCC unroll 16
    for (int i = 0; i < lanes<float>; ++i) rows.of[i] = (((ushorts)x)[2 * i] & mask) - first;
    return rows;
}
// Those of the two vectors of doubles that floats are widened to.
struct RowNumbersPair {
    RowNumbers<double> low, high;
};
inline RowNumbersPair split(const RowNumbers<float>& x) {
    RowNumbersPair r;
#pragma GCC unroll 8
    for (int i = 0; i < lanes<double>; ++i)
        r.low.of[i] = x.of[i], r.high.of[i] = x.of[lanes<double> + i];
    return r;
}

// The 16 bytes at `end - number` for each lane, wherever they begin: as their first and second
// halves.
inline Two<ulongs> bytes_behind(const std::uint8_t* end, const RowNumbers<double>& number) {
    const auto of = [&](int odd) {
        return (ulongs)of_blocks([&](int block) {
            return (__m128d)_mm_loadu_si128(
                reinterpret_cast<const __m128i*>(end - number.of[2 * block + odd]));
        });
    };
    const ulongs x = of(0), y = of(1);
    return {in_blocks<0, 2>(x, y), in_blocks<1, 3>(x, y)};
}

// A constant for rows or for numbers that are looked up in registers.
constexpr auto rows_or_lookup(const auto& of_rows, const auto& of_lookup) {
    if constexpr (has_lookup) return of_lookup;
    else return of_rows;
}

// Rows of 16 numbers field by field, as they are looked up.
template <class Table, std::size_t fields>
consteval Table by_fields(const double (&rows)[16][fields]) {
    std::array<std::array<double, 16>, fields> columns;
    for (std::size_t field = 0; field < fields; ++field)
        for (std::size_t row = 0; row < 16; ++row) columns[field][row] = rows[row][field];
    return std::bit_cast<Table>(columns);
}

// The rows themselves. A field is named by a pointer to the member or, in an array of the entry, by
// that and an index.
template <class Entry, class T = double> class Rows {
public:
    Rows(const Entry* table, const RowNumbers<T>& numbers) {
#pragma GCC unroll 16
        for (int i = 0; i < lanes<T>; ++i) row_[i] = &table[numbers.of[i]];
    }

    doubles field(auto member, auto... index) const {
        return of_blocks([&](int block) {
            return __m128d{*place(2 * block, member, index...),
                           *place(2 * block + 1, member, index...)};
        });
    }

    // A field at an even place of an entry that is a multiple of 16 bytes, and the one behind it.
    Two<doubles> pair(auto member, auto... index) const {
        const doubles x = pairs_of(0, member, index...), y = pairs_of(1, member, index...);
        return {in_blocks<0, 2>(x, y), in_blocks<1, 3>(x, y)};
    }
    // The same of a field and the next one, by the fewest operations for the width.
    Two<doubles> neighbours(auto member, auto next) const {
        if constexpr (lanes < double >> 2) return pair(member);
        else return {field(member), field(next)};
    }
    // Pairs as they stand, those of each second row from `first` on.
    doubles pairs_of(int first, auto member, auto... index) const {
        return of_blocks([&](int block) {
            return *reinterpret_cast<const __m128d*>(place(2 * block + first, member, index...));
        });
    }

    // Two floats in the place of a double.
    Two<floats> float_pair(auto member) const {
        const auto of = [&](int row) {
            return (floats)of_blocks([&](int block) {
                return __m128d{*place(4 * block + row, member),
                               *place(4 * block + row + 1, member)};
            });
        };
        const floats x = of(0), y = of(2);
        return {in_blocks<0, 2, 4, 6>(x, y), in_blocks<1, 3, 5, 7>(x, y)};
    }

    // Four floats from the index on, a multiple of 4 likewise.
    std::array<floats, 4> quad(auto member, int index) const {
        const auto of = [&](int row) {
            return (floats)of_blocks([&](int block) {
                return *reinterpret_cast<const __m128d*>(place(4 * block + row, member, index));
            });
        };
        const floats x0 = of(0), x1 = of(1), x2 = of(2), x3 = of(3);
        const floats a = in_blocks<0, 4, 1, 5>(x0, x1), b = in_blocks<0, 4, 1, 5>(x2, x3);
        const floats c = in_blocks<2, 6, 3, 7>(x0, x1), d = in_blocks<2, 6, 3, 7>(x2, x3);
        return {in_blocks<0, 1, 4, 5>(a, b), in_blocks<2, 3, 6, 7>(a, b),
                in_blocks<0, 1, 4, 5>(c, d), in_blocks<2, 3, 6, 7>(c, d)};
    }

private:
    using AnyDouble = double __attribute__((may_alias));
    const AnyDouble* place(int row, auto member) const {
        return reinterpret_cast<const AnyDouble*>(&(row_[row]->*member));
    }
    const AnyDouble* place(int row, auto member, int index) const {
        return reinterpret_cast<const AnyDouble*>(&(row_[row]->*member)[index]);
    }

    const Entry* row_[lanes<T>];
};

}  // namespace KEF_VM
