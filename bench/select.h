// The functions that a command line names: Exp for every type, dExp for one; all
// that compute, when it names none. --real and --complex take one half of them, --single and
// --double the other way.
#pragma once

#include <cstdio>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tests/rows.h"

namespace kef {

class Selection {
public:
    // False, with a message, for options and names that do not exist or are off.
    bool add(std::string_view word) {
        constexpr std::pair<std::string_view, std::string_view> halves[] = {
            {"--real", "sd"}, {"--complex", "cz"}, {"--single", "sc"}, {"--double", "dz"}};
        for (const auto& [option, types] : halves)
            if (word == option) {
                std::erase_if(types_, [&](char type) { return types.find(type) == types.npos; });
                return true;
            }
        for (const kef_test::Row& row : kef_test::rows())
            if (row.element_wise() && (word == row.function || word == row.name())) {
                words_.emplace_back(word);
                return true;
            }
        std::fprintf(stderr, "%s: no such %s\n", std::string(word).c_str(),
                     word.starts_with('-') ? "option" : "function is switched on");
        return false;
    }

    std::vector<const kef_test::Row*> rows() const {
        std::vector<const kef_test::Row*> result;
        for (const kef_test::Row& row : kef_test::rows()) {
            bool wanted = words_.empty();
            for (const std::string& word : words_)
                wanted |= word == row.function || word == row.name();
            wanted &= types_.find(row.type) != types_.npos;
            if (wanted && row.element_wise()) result.push_back(&row);
        }
        return result;
    }

private:
    std::vector<std::string> words_;
    std::string types_ = "sdcz";
};

}  // namespace kef
