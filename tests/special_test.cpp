// Special results by exact bits: every row of data/special.txt, alone, and in every
// place of a longer vector of ordinary elements.
#include <algorithm>
#include <bit>
#include <cmath>
#include <fstream>
#include <limits>
#include <set>
#include <sstream>

#include <gtest/gtest.h>
#include <xmmintrin.h>

#include "places.h"
#include "tests/rows.h"
#include "tests/threads.h"

namespace kef_test {
namespace {

using Bytes = std::vector<unsigned char>;

struct Case {
    const Row* row = nullptr;
    std::vector<int> slots;
    std::vector<Bytes> arguments, scalars, results;  // an element each
    std::int32_t status = 0;
    std::uint32_t flags = 0;
    bool nan_signs = true;  // are checked
};

constexpr std::uint32_t invalid = 0x01, divide_by_zero = 0x04, overflow = 0x08, underflow = 0x10,
                        judged_flags = invalid | divide_by_zero | overflow | underflow;
constexpr std::pair<const char*, std::int32_t> codes[] = {{"OK", VTM_STATUS_OK},
                                                          {"ERRDOM", VTM_STATUS_ERRDOM},
                                                          {"SING", VTM_STATUS_SING},
                                                          {"OVERFLOW", VTM_STATUS_OVERFLOW},
                                                          {"UNDERFLOW", VTM_STATUS_UNDERFLOW}};

// A component as bits (0x and 8 or 16 digits) or as a number.
void append_component(Bytes& element, const std::string& token, bool single) {
    std::uint64_t bits = 0;
    const bool is_bits = token.starts_with("0x") && token.find('p') == token.npos;
    if (is_bits) {
        if (token.size() != (single ? 10 : 18)) throw std::runtime_error("width of " + token);
        bits = std::stoull(token, nullptr, 16);
    } else if (single) {
        const float x = std::strtof(token.c_str(), nullptr);
        std::memcpy(&bits, &x, sizeof x);
    } else {
        const double x = std::strtod(token.c_str(), nullptr);
        std::memcpy(&bits, &x, sizeof x);
    }
    const auto* p = reinterpret_cast<const unsigned char*>(&bits);
    element.insert(element.end(), p, p + (single ? 4 : 8));
}

// One line of the file for one of its types.
Case parse(const std::string& line, char type) {
    std::istringstream words(line);
    std::string function, types, slots, token;
    words >> function >> types >> slots;
    Case c;
    c.row = find_row(type + function);
    if (c.row == nullptr) return c;  // not switched on yet
    for (char slot : slots) c.slots.push_back(static_cast<int>(std::string("LHE").find(slot)));
    const auto element = [&](int parts) {
        Bytes bytes;
        for (int i = 0; i < parts && words >> token; ++i)
            append_component(bytes, token, c.row->single());
        return bytes;
    };
    for (int i = 0; i < c.row->arguments; ++i)
        c.arguments.push_back(element(c.row->argument_parts));
    for (int i = 0; i < c.row->scalars; ++i) c.scalars.push_back(element(c.row->argument_parts));
    words >> token;
    if (token != "->") throw std::runtime_error("no arrow");
    for (int i = 0; i < c.row->results; ++i) c.results.push_back(element(c.row->result_parts));
    words >> token;
    const auto code = std::find_if(std::begin(codes), std::end(codes),
                                   [&](const auto& known) { return token == known.first; });
    if (code == std::end(codes)) throw std::runtime_error("status " + token);
    c.status = code->second;
    if (words >> token)
        for (char flag : token)
            c.flags |= flag == 'V'   ? invalid
                       : flag == 'Z' ? divide_by_zero
                       : flag == 'O' ? overflow
                       : flag == 'U' ? underflow
                                     : throw std::runtime_error("flags " + token);
    return c;
}

// A component with the other sign; without one where it is NaN.
bool is_nan(const unsigned char* bytes, std::size_t component) {
    float narrow;
    double wide;
    if (component == 4) return std::memcpy(&narrow, bytes, 4), std::isnan(narrow);
    return std::memcpy(&wide, bytes, 8), std::isnan(wide);
}
void negate_part(Bytes& element, int part) {
    const std::size_t component = element.size() / 2;
    element[component * (part + 1) - 1] ^= 0x80;
}
Bytes without_nan_signs(Bytes bytes, std::size_t component) {
    for (std::size_t i = 0; i < bytes.size(); i += component)
        if (is_nan(&bytes[i], component)) bytes[i + component - 1] &= 0x7F;
    return bytes;
}

// A complex function of a complex number and its relatives: f(conj z) = conj f(z), odd and even
// functions of -z, and hyperbolic functions from those whose parts they exchange.
std::vector<Case> with_relatives(const Case& c) {
    std::vector<Case> all = {c};
    const Row* row = c.row;
    if (row == nullptr || row->shape != Shape::map1 || row->argument_parts != 2) return all;
    const std::string function = row->function;
    const auto is_one_of = [](const std::string& name, std::initializer_list<const char*> list) {
        return std::find(list.begin(), list.end(), name) != list.end();
    };
    if (function == "Conj") return all;
    if (is_one_of(function, {"Sin", "Cos", "Tan", "Asin", "Atan"})) {
        Case hyperbolic = c;
        hyperbolic.row = find_row(row->type + function + "h");
        const auto exchange = [](Bytes& z) {
            std::rotate(z.begin(), z.begin() + static_cast<std::ptrdiff_t>(z.size() / 2), z.end());
        };
        exchange(hyperbolic.arguments[0]);
        if (function == "Cos") negate_part(hyperbolic.results[0], 1);
        else exchange(hyperbolic.results[0]);
        all.push_back(hyperbolic);
    }
    const auto append = [&](auto change) {
        for (std::size_t i = 0, count = all.size(); i < count; ++i) {
            Case other = all[i];
            other.nan_signs = false;
            change(other);
            all.push_back(other);
        }
    };
    const bool even = function == "Cos";
    if (even || is_one_of(function, {"Sin", "Tan", "Asin", "Atan"}))
        append([&](Case& other) {
            for (int part : {0, 1}) {
                negate_part(other.arguments[0], part);
                if (!even) negate_part(other.results[0], part);
            }
        });
    append(
        [&](Case& other) { negate_part(other.arguments[0], 1), negate_part(other.results[0], 1); });
    return all;
}

std::string text(const Bytes& bytes, std::size_t component) {
    std::string result;
    for (std::size_t i = 0; i < bytes.size(); i += component) {
        char digits[20] = "0x";
        for (std::size_t j = 0; j < component; ++j)
            std::snprintf(digits + 2 + 2 * j, 3, "%02X", bytes[i + component - 1 - j]);
        result += std::string(digits) + ' ';
    }
    return result;
}

double first_component(const Row& row, const Bytes& element) {
    float narrow;
    double wide;
    if (!row.single()) return std::memcpy(&wide, element.data(), 8), wide;
    return std::memcpy(&narrow, element.data(), 4), narrow;
}

thread_local std::vector<kef_vtm_error_record> records;
int keep_record(kef_vtm_error_record* record) {
    records.push_back(*record);
    return 1;
}

// Computes the case at `place` of n elements, the others being 0.5, and gives the
// results there; the neighbours have to come out as they do alone.
std::vector<Bytes> compute(const Case& c, int slot, int place, int n) {
    const Row& row = *c.row;
    Bytes neighbour;
    for (int i = 0; i < row.argument_parts; ++i) append_component(neighbour, "0.5", row.single());
    Bytes in[2], out[2], alone[2], scalars;
    for (const Bytes& s : c.scalars) scalars.insert(scalars.end(), s.begin(), s.end());
    for (int v = 0; v < row.arguments; ++v)
        for (int i = 0; i < n; ++i) {
            const Bytes& element = i == place ? c.arguments[v] : neighbour;
            in[v].insert(in[v].end(), element.begin(), element.end());
        }
    for (int v : {0, 1}) out[v].resize(n * row.result_size()), alone[v].resize(row.result_size());
    row.invoke(row.slots[slot], {1, neighbour.data(), neighbour.data(), scalars.data(),
                                 alone[0].data(), alone[1].data()});
    records.clear();
    kef_vtm_kernel_ClearErrStatus();
    _mm_setcsr(0x1F80);
    row.invoke(row.slots[slot],
               {n, in[0].data(), in[1].data(), scalars.data(), out[0].data(), out[1].data()});
    std::vector<Bytes> results;
    for (int v = 0; v < row.results; ++v)
        for (int i = 0; i < n; ++i) {
            const auto at = out[v].begin() + i * static_cast<std::ptrdiff_t>(row.result_size());
            const Bytes result(at, at + static_cast<std::ptrdiff_t>(row.result_size()));
            if (i == place) results.push_back(result);
            else EXPECT_EQ(result, alone[v]) << "neighbour " << i;
        }
    return results;
}

// The name in records: "v", type and function; for the trigonometric functions type, function
// and accuracy of the kernel.
std::string report_name(const Row& row, int slot) {
    for (const char* name : {"Sin", "Cos", "Tan", "SinCos", "CIS"})
        if (row.function == std::string(name)) return row.name() + "_" + row.kernels[slot];
    return "v" + row.name();
}

// The kernels that have reported.
std::set<std::pair<const Row*, Code>> reporters;

void check(const Case& c, int slot) {
    const Row& row = *c.row;
    const std::size_t width = row.component_size();
    const std::string name = report_name(row, slot);
    for (int n : {1, 5})
        for (int place = 0; place < n; ++place) {
            const std::vector<Bytes> results = compute(c, slot, place, n);
            const std::uint32_t flags = _mm_getcsr() & judged_flags;
            const auto shown = [&](const Bytes& result) {
                return text(c.nan_signs ? result : without_nan_signs(result, width), width);
            };
            for (int v = 0; v < row.results; ++v)
                EXPECT_EQ(shown(results[v]), shown(c.results[v])) << row.name() << " result " << v;
            if (n == 1) {
                EXPECT_EQ(kef_vtm_kernel_GetErrStatus(), c.status);
                EXPECT_EQ(flags, c.flags) << "flags";
            }
            int reports = 0;
            for (const kef_vtm_error_record& record : records) {
                if (record.index != place) continue;
                ++reports;
                EXPECT_EQ(record.code, c.status);
                EXPECT_EQ(record.name, name);
                EXPECT_EQ(record.name_length, static_cast<int>(name.size()));
                reporters.emplace(&row, row.slots[slot]);
                EXPECT_EQ(record.argument1, first_component(row, c.arguments[0]));
                const Bytes& second = row.scalars == 1 ? c.scalars[0] : c.arguments.back();
                EXPECT_EQ(record.argument2, first_component(row, second));
                const double result = first_component(row, c.results[0]);
                EXPECT_TRUE(record.result1 == result ||
                            (std::isnan(result) && std::isnan(record.result1)));
            }
            EXPECT_EQ(reports, c.status != VTM_STATUS_OK);
        }
}

TEST(Special, ResultsStatusesAndReports) {
    in_fresh_thread([] {
        kef_vtm_kernel_SetMode(VTM_ERRMODE_CALLBACK);
        kef_vtm_kernel_SetErrorCallBack(keep_record);
        std::ifstream file(KEF_SOURCE_DIR "/tests/data/special.txt");
        ASSERT_TRUE(file.is_open());
        int number = 0, checked = 0;
        for (std::string line; std::getline(file, line);) {
            ++number;
            if (line.empty() || line[0] == '#') continue;
            SCOPED_TRACE("special.txt:" + std::to_string(number) + ": " + line);
            std::string function, types;
            std::istringstream(line) >> function >> types;
            for (char type : types) {
                try {
                    for (const Case& c : with_relatives(parse(line, type)))
                        for (int slot : c.slots) check(c, slot), ++checked;
                } catch (const std::exception& error) { ADD_FAILURE() << error.what(); }
            }
        }
        EXPECT_GT(checked, 300);
    });
    // Every kernel has, but those of functions without error conditions.
    const std::set<std::string> silent = {"Abs",   "Add",   "Sub",       "Mul",  "Sqr",   "Ceil",
                                          "Floor", "Trunc", "Round",     "Rint", "Modf",  "Atan",
                                          "Asinh", "Tanh",  "NearbyInt", "Cbrt", "Pow2o3"},
                                silent_complex = {"Add",  "Sub",  "Mul",  "MulByConj", "Conj",
                                                  "Sqrt", "Asin", "Acos", "Asinh",     "Acosh"};
    for (const Row& row : rows()) {
        const bool complex = row.argument_parts + row.result_parts > 2;
        for (int slot = 0; slot < 3 && row.element_wise(); ++slot)
            EXPECT_NE(reporters.contains({&row, row.slots[slot]}),
                      (complex ? silent_complex : silent).contains(row.function))
                << row.name() << " slot " << slot;
    }
}

// Every element-wise function that is switched on has rows in the file.
TEST(Special, EveryFunctionHasRows) {
    std::ifstream file(KEF_SOURCE_DIR "/tests/data/special.txt");
    std::vector<std::string> covered;
    for (std::string line; std::getline(file, line);) {
        std::string function, types;
        std::istringstream(line) >> function >> types;
        for (char type : types)
            for (const char* ending : {"", "h"})  // see with_relatives
                if (*ending == 0 || type == 'c' || type == 'z')
                    covered.push_back(type + function + ending);
    }
    for (const Row& row : rows())
        if (row.element_wise())
            EXPECT_NE(std::find(covered.begin(), covered.end(), row.name()), covered.end())
                << row.name();
}

// A signalling NaN comes out quiet, whatever the place and the sign; Abs and Ln keep its bits.
template <class T, class Bits> void expect_quiet(const Row& row) {
    SCOPED_TRACE(row.name());
    constexpr Bits quiet_bit = Bits(1) << (std::numeric_limits<T>::digits - 2);
    constexpr Bits payload = std::bit_cast<Bits>(std::numeric_limits<T>::infinity()) + 0x123;
    constexpr int n = 7;
    std::array<T, n> x, y, z;
    for (int slot = 0; slot < 3; ++slot)
        for (const Bits sign : {Bits(0), Bits(1) << (sizeof(T) * 8 - 1)})
            for (int place = 0; place < n; ++place) {
                x.fill(T(0.5));
                const Bits nan = sign | payload;
                std::memcpy(&x[place], &nan, sizeof nan);
                row.invoke(row.slots[slot], {n, x.data(), nullptr, nullptr, y.data(), z.data()});
                Bits results[2] = {quiet_bit, quiet_bit};
                std::memcpy(&results[0], &y[place], sizeof(T));
                if (row.results == 2) std::memcpy(&results[1], &z[place], sizeof(T));
                EXPECT_TRUE(std::isnan(y[place]) && (results[0] & results[1] & quiet_bit) != 0)
                    << "slot " << slot << " place " << place;
            }
}

TEST(Special, SignallingNanComesOutQuiet) {
    for (const Row& row : rows()) {
        const bool one = row.shape == Shape::map1 || row.shape == Shape::map1x2;
        const std::string name = row.function;
        if (!one || name == "Abs" || name == "Ln") continue;
        if (row.type == 's') expect_quiet<float, std::uint32_t>(row);
        if (row.type == 'd') expect_quiet<double, std::uint64_t>(row);
    }
}

// Next to the multiples of pi/2, where a short polynomial would exceed 1 first.
template <class T> void expect_within_one(const char* name) {
    const Row& row = *find_row(name);
    constexpr int neighbours = 1000, size = 2 * neighbours + 1;
    std::vector<T> x(size), y(size), z(size);
    for (int quarter = 0; quarter < 100; ++quarter) {
        x[0] = static_cast<T>(quarter * 1.5707963267948966);
        for (int i = 0; i < neighbours; ++i) x[0] = std::nextafter(x[0], T(-1e9));
        for (int i = 1; i < size; ++i) x[i] = std::nextafter(x[i - 1], T(1e9));
        for (int slot = 0; slot < 3; ++slot) {
            row.invoke(row.slots[slot], {size, x.data(), nullptr, nullptr, y.data(), z.data()});
            for (int i = 0; i < size; ++i)
                ASSERT_TRUE(std::fabs(y[i]) <= 1 && std::fabs(z[i]) <= 1)
                    << name << " slot " << slot << " of " << x[i];
        }
    }
}

TEST(Special, SinesAndCosinesStayWithinOne) {
    for (const char* name : {"sSin", "sCos", "sSinCos"}) expect_within_one<float>(name);
    for (const char* name : {"dSin", "dCos", "dSinCos"}) expect_within_one<double>(name);
}

}  // namespace
}  // namespace kef_test
