// The references of complex functions beside the C library's long double ones: formulas, branches
// and the sides of the cuts. How exact they are tools/check_references.cpp tells. (Other C
// libraries get the cuts wrong.)
#include <complex>

#include <gtest/gtest.h>

#include "tests/reference.h"

namespace kef::reference {
namespace {

using Number = std::complex<long double>;

Number of_library(std::string_view name, Number z, Number w) {
    const auto is = [&](const char* other) { return name == other; };
    // clang-format off
    if (is("Add")) return z + w;
    if (is("Sub")) return z - w;
    if (is("Mul")) return z * w;
    if (is("MulByConj")) return z * std::conj(w);
    if (is("Div")) return z / w;
    if (is("Conj")) return std::conj(z);
    if (is("Abs")) return std::abs(z);
    if (is("Arg")) return std::arg(z);
    if (is("CIS")) return {std::cos(z.real()), std::sin(z.real())};
    if (is("Exp")) return std::exp(z);
    if (is("Ln")) return std::log(z);
    if (is("Log10")) return std::log(z) / std::log(10.0L);
    if (is("Sqrt")) return std::sqrt(z);
    if (is("Sin")) return std::sin(z);
    if (is("Cos")) return std::cos(z);
    if (is("Tan")) return std::tan(z);
    if (is("Sinh")) return std::sinh(z);
    if (is("Cosh")) return std::cosh(z);
    if (is("Tanh")) return std::tanh(z);
    if (is("Asin")) return std::asin(z);
    if (is("Acos")) return std::acos(z);
    if (is("Atan")) return std::atan(z);
    if (is("Asinh")) return std::asinh(z);
    if (is("Acosh")) return std::acosh(z);
    if (is("Atanh")) return std::atanh(z);
    if (is("Pow") || is("Powx")) return std::pow(z, w);
    // clang-format on
    ADD_FAILURE() << "no other value of " << name;
    return {};
}

// Both parts on either side of the axes, of the cuts and of the branch points.
TEST(ComplexReferences, AgreeWithTheLibrary) {
    Random random("complex references");
    std::vector<double> parts = {0.0, -0.0, 0.5, -0.5, 2, -2, 1e-30, -1e-30};
    for (int i = 0; i < 8; ++i) parts.push_back(random.draw<double>({-5, 5}, true));
    for (const Reference& row : table()) {
        if (!row.complex()) continue;
        for (const double x : parts)
            for (const double y : parts) {
                const double u = random.draw<double>({-3, 3}, true),
                             v = random.draw<double>({-3, 3}, true);
                if (x == 0 && y == 0) continue;
                const Values<quad> exact = row.value<quad>(Point<double>{x, y, u, v}, {});
                const Values<wide> screen = row.value<wide>(Point<double>{x, y, u, v}, {});
                const Number other = of_library(row.name, {x, y}, {u, v});
                const wide norm = std::abs(other);
                const wide parts_of_other[] = {other.real(), other.imag()};
                for (int j = 0; j < 2; ++j) {
                    SCOPED_TRACE(testing::Message() << row.name << " part " << j << " of " << x
                                                    << ", " << y << ", " << u << ", " << v);
                    EXPECT_LE(fabs(static_cast<wide>(exact[j]) - parts_of_other[j]),
                              norm * 0x1p-55L);
                    EXPECT_LE(fabs(screen[j] - parts_of_other[j]), norm * 0x1p-55L);
                }
            }
    }
}

TEST(ComplexReferences, CountErrors) {
    // Half a last place of a part that is a millionth of the norm, of the part and of the norm.
    const quad exact = 0x1p-20Q + 0x1p-73Q;
    EXPECT_EQ(error(0x1p-20, exact).ulps, 0.5);
    EXPECT_EQ(error(0x1p-20, exact, 1).ulps, 0x1p-21);
    EXPECT_NEAR(norm_error(1.0, 0x1p-20, Values<quad>{1, exact}).ulps, 0x1p-20, 1e-12);
    EXPECT_NEAR(norm_error(1.0, 0x1p-20, Values<quad>{1, exact}, 8).ulps, 0x1p-23, 1e-12);
    // Both parts too large, or one NaN.
    EXPECT_EQ(norm_error(HUGE_VAL, -HUGE_VAL, Values<quad>{1e4000Q, -1e4000Q}).ulps, 0);
    EXPECT_EQ(norm_error(1.0, double(NAN), Values<quad>{1, 1}).ulps, INFINITY);
    EXPECT_GT(error(1.0, quad(1e4000Q)).ulps, 1e9);
    EXPECT_LT(error(1.0, quad(1e400Q), 1e500L).ulps, 1e-60);
}

}  // namespace
}  // namespace kef::reference
