#include "numbers.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>

#include "command.h"

namespace command {

Reading read_number(std::string_view text) {
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    const auto blank = [](char c) { return c == ' ' || c == '\t'; };
    while (!text.empty() && blank(text.front())) text.remove_prefix(1);
    while (!text.empty() && blank(text.back())) text.remove_suffix(1);
    if (text.empty() || text == "NA" || text == "NaN" || text == "nan")
        return {Reading::missing, nan};
    std::string_view digits = text;
    if (digits.front() == '+' && digits.size() > 1 && digits[1] != '-') digits.remove_prefix(1);
    double value;
    const auto [end, error] = std::from_chars(digits.begin(), digits.end(), value);
    if (end != digits.end() || error == std::errc::invalid_argument ||
        (error == std::errc() && std::isnan(value)))
        return {Reading::malformed, nan};
    if (error == std::errc()) return {Reading::number, value};
    value = std::strtod(std::string(digits).c_str(), nullptr);  // the program keeps the C locale
    if (std::isinf(value)) return {Reading::overflow, nan};
    return {Reading::number, value};
}

std::string complaint(Reading::Kind kind, std::string_view text) {
    std::string shown(text.substr(0, 40));
    if (text.size() > 40) shown += "...";
    return kind == Reading::overflow ? "too large for a double: " + shown
                                     : "not a number: \"" + shown + '"';
}

double number_of(std::string_view text, const std::string& name) {
    const Reading reading = read_number(text);
    if (!reading.is_number()) wrong(name + ": " + complaint(reading.kind, text));
    return reading.value;
}

std::uint64_t count_of(std::string_view text, const std::string& name) {
    std::uint64_t whole;
    const auto [end, error] = std::from_chars(text.begin(), text.end(), whole);
    if (error == std::errc() && end == text.end()) return whole;
    const double value = number_of(text, name);
    if (!(value >= 0) || value != std::floor(value) || value >= 0x1p63)
        wrong(name + ": not a count: " + std::string(text));
    return (std::uint64_t)value;
}

void append(std::string& to, double x) {
    char digits[32];
    const auto [end, error] = std::to_chars(digits, digits + sizeof digits, x);
    if (std::isnan(x)) to += "nan";  // also one with a sign
    else to.append(digits, end);
}

std::string rounded(double x, int digits) {
    if (std::isnan(x)) return "nan";
    char text[40];
    std::snprintf(text, sizeof text, "%.*g", digits, x);
    return text;
}

}  // namespace command
