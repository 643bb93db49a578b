// What tests of the C++ interface share.
#pragma once

#include <string>

#include "kef.hpp"

namespace cxx_test {

// What a call throws, as function and argument, "kef::exp: y"; of a status as function and number,
// "kef::Stream::load: -1101".
template <class Call> std::string refused(Call&& call) {
    try {
        call();
    } catch (const kef::Error& error) {
        const std::string words = error.what(), function = words.substr(0, words.find(": ") + 2);
        if (const auto* argument = dynamic_cast<const kef::ArgumentError*>(&error))
            return function + argument->argument();
        return function + std::to_string(error.code());
    } catch (...) { return "another exception"; }
    return "nothing";
}

}  // namespace cxx_test
