// Vector math over strided elements, in the shape of an array library's inner loop.
#include <algorithm>
#include <cstddef>
#include <cstring>

#include "kef_bind.h"
#include "vm/control/mode_scope.h"

namespace kef::vm {

namespace {

constexpr std::intptr_t buffered = 512;        // elements that go through buffers at a time
constexpr std::intptr_t contiguous = 1 << 30;  // elements of one kernel call otherwise
constexpr int most_operands = 3, largest_element = 16;

template <std::size_t Size>
void move(std::intptr_t n, char* to, std::intptr_t to_step, const char* from,
          std::intptr_t from_step) {
    for (; n > 0; --n, to += to_step, from += from_step) std::memcpy(to, from, Size);
}

void move(std::intptr_t size, std::intptr_t n, char* to, std::intptr_t to_step, const char* from,
          std::intptr_t from_step) {
    if (size == 4) move<4>(n, to, to_step, from, from_step);
    else if (size == 8) move<8>(n, to, to_step, from, from_step);
    else move<16>(n, to, to_step, from, from_step);
}

struct Operand {
    char* first;
    std::intptr_t step, size;

    bool is_contiguous() const { return step == size; }
    // The bytes that n elements touch.
    std::intptr_t begin(std::intptr_t n) const {
        return reinterpret_cast<std::intptr_t>(first) + std::min<std::intptr_t>(0, (n - 1) * step);
    }
    std::intptr_t end(std::intptr_t n) const {
        return reinterpret_cast<std::intptr_t>(first) + std::max<std::intptr_t>(0, (n - 1) * step) +
               size;
    }
};

// Whether a result of one element is, or may be, an argument of another.
bool entangled(const Operand& argument, const Operand& result, std::intptr_t n) {
    const bool in_place = argument.first == result.first && argument.step == result.step &&
                          argument.size == result.size && result.step != 0;
    return !in_place && argument.begin(n) < result.end(n) && result.begin(n) < argument.end(n);
}

void call(const kef_loop& loop, std::int32_t n, char* const* at) {
    if (loop.arguments + loop.results == 2)
        reinterpret_cast<void (*)(std::int32_t, const void*, void*)>(loop.kernel)(n, at[0], at[1]);
    else
        reinterpret_cast<void (*)(std::int32_t, const void*, const void*, void*)>(loop.kernel)(
            n, at[0], at[1], at[2]);
}

}  // namespace

}  // namespace kef::vm

using namespace kef::vm;

void kef_vtm_loop(char** operands, const intptr_t* counts, const intptr_t* steps, void* data) {
    const kef_loop& loop = *static_cast<const kef_loop*>(data);
    const int arguments = loop.arguments, all = arguments + loop.results;
    const ModeScope mode(VTM_ERRMODE_EXCEPT);

    Operand operand[most_operands];
    std::intptr_t block = contiguous, left = counts[0];
    for (int i = 0; i < all; ++i) {
        operand[i] = {operands[i], steps[i], loop.sizes[i]};
        if (!operand[i].is_contiguous()) block = buffered;
    }
    for (int i = 0; i < arguments; ++i)
        for (int j = arguments; j < all; ++j)
            if (entangled(operand[i], operand[j], left)) block = 1;

    alignas(16) char buffer[most_operands][buffered * largest_element];
    for (; left > 0; left -= block) {
        const std::intptr_t n = std::min(left, block);
        char* at[most_operands];
        for (int i = 0; i < all; ++i) {
            const Operand& o = operand[i];
            at[i] = o.is_contiguous() ? o.first : buffer[i];
            if (i < arguments && !o.is_contiguous())
                move(o.size, n, buffer[i], o.size, o.first, o.step);
        }
        call(loop, static_cast<std::int32_t>(n), at);
        for (int i = 0; i < all; ++i) {
            Operand& o = operand[i];
            if (i >= arguments && !o.is_contiguous())
                move(o.size, n, o.first, o.step, buffer[i], o.size);
            o.first += n * o.step;
        }
    }
}
