// The list of functions of the example front end: complete, and its references are exact enough to
// judge a kernel by.
#include <cmath>
#include <set>

#include <gtest/gtest.h>

#include "tests/reference.h"
#include "tests/rows.h"

extern "C" {
#include "examples/functions.h"
}

namespace kef_test {
namespace {

// What the front end takes for the exact result, against 113 bits: at most 1/64 ulp of a double
// off.
// Errors of the C library's own functions, relative and absolute: its sines on Windows have a pi of
// 66 bits.
#if defined(_WIN32)
constexpr double own_error = 0x1p-52, near_zeros = 0x1p-62;
#else
constexpr double own_error = 0x1p-59, near_zeros = 0;
#endif

TEST(Examples, References) {
    using kef::reference::quad;
    std::set<std::string> without;
    for (int i = 0; i < function_count; ++i) {
        const function& f = functions[i];
        const kef::reference::Reference* exact = kef::reference::find(f.name + 1);
        ASSERT_NE(exact, nullptr) << f.name;
        if (f.size == sizeof(double)) EXPECT_GE(f.bound, exact->bound) << f.name;
        const kef::reference::Scalars scalars = {SCALE_A, SHIFT_A, SCALE_B, SHIFT_B};
        kef::reference::Random random(f.name);
        for (int k = 0; k < 2000; ++k) {
            const auto draw = [&] {
                const double x = f.low + random.unit() * (f.high - f.low);
                return f.size == sizeof(float) ? static_cast<float>(x) : x;
            };
            const double x = draw(), y = f.name + 1 == std::string("Powx") ? POWER : draw();
            for (int output = 0; output < f.outputs; ++output) {
                const long double got = f.reference(output, x, y);
                if (std::isnan(got)) without.insert(f.name + 1);
                const quad want = (output == 0 ? exact->exact : exact->exact2)(x, y, scalars);
                const quad off = std::isnan(got) ? 0 : got > want ? got - want : want - got;
                ASSERT_LE(off, (want < 0 ? -want : want) * own_error + near_zeros)
                    << f.name << " of " << x << ", " << y << ": "
                    << static_cast<double>(off / want) * 0x1p53 << " ulp";
            }
        }
    }
    EXPECT_EQ(without, (std::set<std::string>{"CdfNormInv", "ErfInv", "ErfcInv"}));
}

// Every element-wise function of a real type stands in the list.
TEST(Examples, Complete) {
    std::set<std::string> missing;
    for (const Row& row : rows())
        if (row.element_wise() && (row.type == 's' || row.type == 'd') &&
            find_function(row.name().c_str()) == nullptr)
            missing.insert(row.name());
    EXPECT_EQ(missing, std::set<std::string>());
}

}  // namespace
}  // namespace kef_test
