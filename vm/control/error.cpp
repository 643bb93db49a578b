#include "vm/control/error.h"

#include <bit>
#include <cmath>
#include <cstring>

#include "service/message.h"
#include "service/platform.h"
#include "vm/control/thread_state.h"
#include "vm/surface/shapes.h"

namespace kef::vm {

static_assert(sizeof(kef_vtm_error_record) == 144);
static_assert(offsetof(kef_vtm_error_record, name) == 40);
static_assert(offsetof(kef_vtm_error_record, name_length) == 104);
static_assert(offsetof(kef_vtm_error_record, argument1_imag) == 112);

namespace {

constexpr std::uint32_t any_callback = 0xF000;
constexpr std::uint32_t any_other_handling = 0x0F00;

bool has_values(std::int32_t code) {
    return code != VTM_STATUS_BADSIZE && code != VTM_STATUS_BADMEM;
}

// Equal as a reader of the message sees it: NaN equals the same NaN.
bool same(double x, double y) {
    return x == y || std::bit_cast<std::uint64_t>(x) == std::bit_cast<std::uint64_t>(y);
}

std::int32_t errno_value(std::int32_t code) {
    switch (code) {
        case VTM_STATUS_OK: return 0;
#define KEF_STATUS(status, message, value) \
    case status:                           \
        return value;
#include "vm/control/status.def"
#undef KEF_STATUS
        default: return 14;
    }
}

// The search is done once; two threads that both do it find the same.
void set_errno(std::int32_t code) {
    static bool searched = false;
    static platform::ErrnoAccessor accessor = nullptr;
    if (!__atomic_load_n(&searched, __ATOMIC_ACQUIRE)) {
        __atomic_store_n(&accessor, platform::find_errno_accessor(), __ATOMIC_RELAXED);
        __atomic_store_n(&searched, true, __ATOMIC_RELEASE);
    }
    if (accessor != nullptr) *accessor() = errno_value(code);
}

void print(const kef_vtm_error_record& record) {
    print_status_message(record.code, record.name, record.index);
    if (!has_values(record.code)) return;
    const bool one_argument = record.argument2 == 0 || same(record.argument1, record.argument2);
    const bool one_result = record.result2 == 0 || same(record.result1, record.result2);
    // The sign of a NaN says nothing, and C libraries print it in several ways.
    const auto line = [&](Message name, double value) {
        print_message(name, record.index, value == value ? value : std::abs(value));
    };
    line(Message::value_a, record.argument1);
    if (!one_argument) line(Message::value_b, record.argument2);
    if (one_argument && one_result) {
        line(Message::value_r, record.result1);
    } else {
        // The lone result of a two-argument function has the y form, too.
        line(Message::value_y, record.result1);
        if (!one_result) line(Message::value_z, record.result2);
    }
}

// Raises the flag of the code by an operation, so that a caller who unmasked the
// exception is trapped.
void raise_exception(std::int32_t code) {
    const auto multiply = [](std::uint64_t bits) {
        volatile double x = std::bit_cast<double>(bits);
        x = x * x;
    };
    const auto divide_by_zero = [](double numerator) {
        volatile double zero = 0.0;
        zero = numerator / zero;
    };
    switch (code) {
        case VTM_STATUS_ERRDOM: divide_by_zero(0.0); break;
        case VTM_STATUS_SING: divide_by_zero(1.0); break;
        case VTM_STATUS_OVERFLOW: multiply(0x7FEFFFFFFFFFFFFF); break;
        case VTM_STATUS_UNDERFLOW: multiply(0x0010000000000001); break;
        default: break;
    }
}

// An element as real and imaginary part in double precision, and back.
template <class T> void widen(T x, double& re, double&) { re = x; }
template <class T> void narrow(double re, double, T& x) { x = static_cast<T>(re); }
void widen(kef_complex8 x, double& re, double& im) { re = x.re, im = x.im; }
void widen(kef_complex16 x, double& re, double& im) { re = x.re, im = x.im; }
void narrow(double re, double im, kef_complex8& x) {
    x = {static_cast<float>(re), static_cast<float>(im)};
}
void narrow(double re, double im, kef_complex16& x) { x = {re, im}; }

// Callback, errno, message and exception; true where the record's results are to
// be stored.
bool report(kef_vtm_error_record& record, std::uint32_t mode_word,
            kef_vtm_error_callback callback) {
    if ((mode_word & any_callback) != 0 && callback != nullptr && callback(&record) != 0)
        return false;
    if ((mode_word & any_other_handling) != 0) {
        if ((mode_word & VTM_ERRMODE_ERRNO) != 0) set_errno(record.code);
        if ((mode_word & VTM_ERRMODE_STDERR) != 0) print(record);
        if ((mode_word & VTM_ERRMODE_EXCEPT) != 0) raise_exception(record.code);
    }
    return true;
}

}  // namespace

bool wants_status_alone() {
    return (state_with_mode().mode & VTM_ERRMODE_MASK) == VTM_ERRMODE_IGNORE;
}

bool store_status_alone(std::int32_t code) {
    const bool alone = wants_status_alone();
    if (alone) thread_state().status = code;
    return alone;
}

template <class Argument, class Result>
void handle_error(const ElementError<Argument, Result>& error) {
    ThreadState& state = state_with_mode();
    state.status = error.code;
    const std::uint32_t mode_word = state.mode;

    kef_vtm_error_record record = {};
    record.code = error.code;
    record.index = error.index;
    // The zeros of the record end the name.
    const std::size_t length = strnlen(error.name, sizeof record.name - 1);
    record.name_length = static_cast<std::int32_t>(length);
    std::memcpy(record.name, error.name, length);
    if (!has_values(error.code)) {
        report(record, mode_word, state.callback);
        return;
    }

    if (state.interface_input != nullptr) {
        const auto vector = reinterpret_cast<std::uintptr_t>(error.vector1);
        const auto start = reinterpret_cast<std::uintptr_t>(state.interface_input);
        const std::uintptr_t elements =
            (vector >= start ? vector - start : start - vector) / sizeof(Argument);
        // Cut to 32 bits: the pointer may belong to another vector.
        const auto index = static_cast<std::uint32_t>(error.index);
        const auto distance = static_cast<std::uint32_t>(elements);
        record.index =
            static_cast<std::int32_t>(vector >= start ? index + distance : index - distance);
    }
    widen(error.argument1, record.argument1, record.argument1_imag);
    widen(error.argument2, record.argument2, record.argument2_imag);
    widen(*error.result1, record.result1, record.result1_imag);
    widen(*error.result2, record.result2, record.result2_imag);
    if (!report(record, mode_word, state.callback)) return;

    Result result1, result2;
    narrow(record.result1, record.result1_imag, result1);
    narrow(record.result2, record.result2_imag, result2);
    // Where both results are one place, an untouched second result must not undo
    // what the callback did to the first.
    const bool second_touched = std::memcmp(&result2, error.result2, sizeof result2) != 0;
    *error.result1 = result1;
    if (second_touched || error.result2 != error.result1) *error.result2 = result2;
}

template void handle_error(const ElementError<float>&);
template void handle_error(const ElementError<double>&);
template void handle_error(const ElementError<kef_complex8>&);
template void handle_error(const ElementError<kef_complex16>&);
template void handle_error(const ElementError<kef_complex8, float>&);  // modulus, argument
template void handle_error(const ElementError<kef_complex16, double>&);
template void handle_error(const ElementError<float, kef_complex8>&);  // CIS
template void handle_error(const ElementError<double, kef_complex16>&);

}  // namespace kef::vm
