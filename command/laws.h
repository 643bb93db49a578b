// The laws and generators of the library by name.
#pragma once

#include <string>
#include <vector>

#include "kef_dist.h"

namespace command {

// What a parameter may be.
enum class Domain { any, above_zero, not_negative, probability, chance, whole, count, list, means };

struct Parameter {
    const char* name;
    Domain domain;
    double otherwise = __builtin_nan("");  // NaN: has to be given
};

enum class Element { real, integer, word32, word64 };

// Values of the parameters in their order; a list stands apart.
struct Drawing {
    kef_stream* stream;
    int method;
    const double* p;
    std::vector<double> list, factor;
};

struct Law {
    const char* name;
    const char* help;
    std::vector<Parameter> parameters;
    std::vector<const char*> methods;  // the first one is taken unless another is named
    std::vector<int> method_codes;
    Element element;
    std::int32_t (*draw)(const Drawing&, std::int32_t n, void* to);
    // What is wrong with the parameters together, or null.
    const char* (*problem)(const double* p) = nullptr;
};
extern const std::vector<Law> laws;

struct Generator {
    const char* name;
    std::int32_t id;
    int streams;  // of the family: name:0, name:1, ...
    const char* help;
    std::uint32_t dimensions = 0;  // quasi-random: the most
};
extern const std::vector<Generator> generators;

// What a parameter may be, in words, and whether x is that.
const char* words_of(Domain domain);
bool holds(Domain domain, double x);

}  // namespace command
