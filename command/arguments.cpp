#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdio>

#include "command.h"
#include "numbers.h"

namespace command {

std::string running = "kef";

void wrong(const std::string& message) { throw Failure(message, wrong_use); }

std::string printable(std::string text) {
    for (char& c : text)
        if ((unsigned char)c < ' ' || c == 127) c = '?';
    return text;
}

void say(const std::string& message) {
    std::fprintf(stderr, "%s: %s\n", running.c_str(), printable(message).c_str());
}

std::vector<std::string> split(std::string_view list, char at) {
    std::vector<std::string> parts;
    for (;;) {
        const auto end = list.find(at);
        parts.emplace_back(list.substr(0, end));
        if (end == list.npos) return parts;
        list.remove_prefix(end + 1);
    }
}

std::string joined(const std::vector<std::string>& parts, std::string_view between) {
    std::string all;
    for (const auto& part : parts) all.append(all.empty() ? "" : between).append(part);
    return all;
}

namespace {

bool is_option(std::string_view word) {
    return word.size() > 1 && word[0] == '-' && word[1] != '.' &&
           !std::isdigit((unsigned char)word[1]) && !read_number(word).is_number();
}

}  // namespace

Arguments::Arguments(std::span<const Option> options, std::span<char* const> given) {
    for (std::size_t i = 0; i < given.size(); ++i) {
        const std::string_view word = given[i];
        if (word == "--") {
            words.insert(words.end(), given.begin() + i + 1, given.end());
            return;
        }
        if (!is_option(word)) {
            words.emplace_back(word);
            continue;
        }
        const auto equals = word.starts_with("--") ? word.find('=') : word.npos;
        const std::string name(word.substr(0, equals));
        const auto option = std::find_if(options.begin(), options.end(),
                                         [&](const Option& o) { return name == o.name; });
        if (option == options.end()) wrong("no option " + name + "; --help lists them");
        const std::string_view names = option->values;
        const std::size_t wanted =
            names.empty() ? 0 : 1 + std::count(names.begin(), names.end(), ' ');
        std::vector<std::string> values;
        if (equals != word.npos) values.emplace_back(word.substr(equals + 1));
        while (values.size() < wanted && i + 1 < given.size()) values.emplace_back(given[++i]);
        if (values.size() != wanted)
            wrong(wanted == 0 ? name + " takes no value" : name + " needs " + option->values);
        if (!values_.emplace(name, std::move(values)).second) wrong(name + " is given twice");
    }
}

const std::vector<std::string>& Arguments::values(std::string_view option) const {
    return values_.find(option)->second;
}

std::string Arguments::text(std::string_view option, std::string_view otherwise) const {
    return has(option) ? values(option).front() : std::string(otherwise);
}

double Arguments::number(std::string_view option, double otherwise) const {
    return has(option) ? number_of(values(option).front(), std::string(option)) : otherwise;
}

std::uint64_t Arguments::count(std::string_view option, std::uint64_t otherwise) const {
    return has(option) ? count_of(values(option).front(), std::string(option)) : otherwise;
}

std::vector<double> Arguments::numbers(std::string_view option) const {
    std::vector<double> all;
    if (has(option))
        for (const auto& part : split(values(option).front()))
            all.push_back(number_of(part, std::string(option)));
    return all;
}

}  // namespace command
