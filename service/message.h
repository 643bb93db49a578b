// The message catalog and its printer. Texts live in message.cpp alone; each
// message is one line on standard error.
#pragma once

#include <cstdint>

namespace kef {

enum class Message {
    fatal_memory,    // no arguments
    unknown_status,  // name
    value_a,         // index, value: first argument
    value_b,         // second argument
    value_r,         // the one result of a one-argument function
    value_y,         // first result
    value_z,         // second result
};

// Prints a catalog message with its printf-style arguments.
void print_message(Message message, ...);

// Prints the message of a vector-math status (vm/control/status.def; any other code has
// the unknown_status text). `count` is read for VTM_STATUS_BADSIZE only.
void print_status_message(std::int32_t status, const char* function, std::int32_t count);

// Prints fatal_memory and ends the process with exit code 1.
[[noreturn]] void fatal_memory_error();

}  // namespace kef
