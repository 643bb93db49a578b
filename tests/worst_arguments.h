// Where the search for worst errors has found large ones: tests/data/worst_arguments.txt
// below KEF_SOURCE_DIR.
#pragma once

#include <bit>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <type_traits>
#include <vector>

namespace kef_test {

// By function and type: the bits of the components of its arguments, then of its scalars.
inline const std::multimap<std::string, std::vector<std::uint64_t>>& worst_arguments() {
    static const auto all = [] {
        std::multimap<std::string, std::vector<std::uint64_t>> result;
        std::ifstream file(KEF_SOURCE_DIR "/tests/data/worst_arguments.txt");
        if (!file) std::fprintf(stderr, "tests/data/worst_arguments.txt is missing\n");
        for (std::string line; std::getline(file, line);) {
            std::istringstream words(line);
            std::string name;
            std::vector<std::uint64_t> components;
            words >> name >> std::hex;
            for (std::uint64_t bits; words >> bits;) components.push_back(bits);
            components.resize(4);
            result.insert({name, components});
        }
        return result;
    }();
    return all;
}

template <class T> T from_argument_bits(std::uint64_t bits) {
    using Bits = std::conditional_t<sizeof(T) == 8, std::uint64_t, std::uint32_t>;
    return std::bit_cast<T>(static_cast<Bits>(bits));
}

}  // namespace kef_test
