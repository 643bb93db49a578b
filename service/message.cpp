#include "service/message.h"

#include <cstdarg>
#include <cstdio>

#include "kef_vm.h"
#include "service/platform.h"

namespace kef {

namespace {

const char* text(Message message) {
    switch (message) {
        case Message::fatal_memory: return "Fatal error: memory allocation failed.";
        case Message::unknown_status: return "Unknown error in %s.";
        case Message::value_a: return "a(%d)=%g";
        case Message::value_b: return "b(%d)=%g";
        case Message::value_r: return "r(%d)=%g";
        case Message::value_y: return "y(%d)=%g";
        case Message::value_z: return "z(%d)=%g";
    }
    return "";
}

// One line, cut to the buffer, in one write so that threads do not mix.
void print_line(const char* format, std::va_list arguments) {
    char line[512];
    const int length = std::vsnprintf(line, sizeof line - 1, format, arguments);
    if (length < 0) return;
    std::size_t end = static_cast<std::size_t>(length);
    if (end > sizeof line - 2) end = sizeof line - 2;
    line[end] = '\n';
    platform::write_standard_error(line, end + 1);
}

// Arguments that the format does not name are ignored.
void print_format(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    print_line(format, arguments);
    va_end(arguments);
}

}  // namespace

void print_message(Message message, ...) {
    std::va_list arguments;
    va_start(arguments, message);
    print_line(text(message), arguments);
    va_end(arguments);
}

void print_status_message(std::int32_t status, const char* function, std::int32_t count) {
    switch (status) {
#define KEF_STATUS(code, message, errno_value)  \
    case code:                                  \
        print_format(message, function, count); \
        return;
#include "vm/control/status.def"
#undef KEF_STATUS
        default: print_message(Message::unknown_status, function);
    }
}

void fatal_memory_error() {
    print_message(Message::fatal_memory);
    platform::exit_process(1);
}

}  // namespace kef
