// What the commands of `kef` share: options, failures, exit statuses.
#pragma once

#include <cstdint>
#include <map>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace command {

enum Exit { succeeded = 0, failed = 1, wrong_use = 2 };

// Ends the command with a message and an exit status.
struct Failure : std::runtime_error {
    explicit Failure(const std::string& message, int status = failed)
        : std::runtime_error(message), status(status) {}
    int status;
};

// A wrong command line.
[[noreturn]] void wrong(const std::string& message);

struct Option {
    const char* name;    // "--plot", or a short one, "-n"
    const char* values;  // what follows it, a word each: "FILE", "A B"; "" is a flag
    const char* help;
};

// The words behind the command's name. Numbers below zero are no options.
class Arguments {
public:
    Arguments(std::span<const Option> options, std::span<char* const> words);

    std::vector<std::string> words;  // those that belong to no option

    bool has(std::string_view option) const { return values_.contains(option); }
    // The only value, or where the option is not given the default.
    std::string text(std::string_view option, std::string_view otherwise = "") const;
    double number(std::string_view option, double otherwise) const;
    std::uint64_t count(std::string_view option, std::uint64_t otherwise) const;
    std::vector<double> numbers(std::string_view option) const;
    const std::vector<std::string>& values(std::string_view option) const;

private:
    std::map<std::string, std::vector<std::string>, std::less<>> values_;
};

struct Command {
    const char* name;
    const char* summary;
    const char* operands;
    std::span<const Option> options;
    int (*run)(const Arguments&);
    std::vector<std::string> (*names)();  // what the first operand may be, or null
};
extern const Command stats, random, spline, math, bench, info;

// The name of the command that runs, for messages: "kef stats".
extern std::string running;

// Text for a terminal: control characters become question marks.
std::string printable(std::string text);

// A message on standard error.
void say(const std::string& message);

// Parts of a list, "a,b,c".
std::vector<std::string> split(std::string_view list, char at = ',');
std::string joined(const std::vector<std::string>& parts, std::string_view between = ", ");

}  // namespace command
