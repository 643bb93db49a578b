// Numbers as text, independent of the locale.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace command {

struct Reading {
    enum Kind { number, missing, malformed, overflow } kind;
    double value;  // NaN where there is none
    bool is_number() const { return kind == number; }
};

// The whole text as a double, with blanks around it. Nothing, "NA" and "NaN" are missing values;
// what is too small is rounded to a subnormal number or 0.
Reading read_number(std::string_view text);

// What is wrong with such a text, for a message.
std::string complaint(Reading::Kind kind, std::string_view text);

// The value of an option or parameter, which is named where the text is no number.
double number_of(std::string_view text, const std::string& name);
// Likewise a count: a whole number from 0 up, also as 1e9.
std::uint64_t count_of(std::string_view text, const std::string& name);

// Appends the shortest digits that give the number back.
void append(std::string& to, double x);
// So many significant digits, for tables.
std::string rounded(double x, int digits = 6);

}  // namespace command
