// A cubic spline through values of the sine: values, slopes, an integral, and its root by Newton's
// method.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <kef.hpp>
#include <vector>

int main() {
    std::vector<double> x(21), y(21);
    for (std::size_t i = 0; i < x.size(); ++i) x[i] = double(i) / 4;
    kef::sin(x, y);
    const kef::Spline s(kef::SplineKind::natural, x, y,
                        {.end = kef::End::slopes, .left = 1, .right = std::cos(5.0)});

    const std::vector<double> sites{0.3, 1.6, 2.9, 4.2};
    std::vector<double> value(4), slope(4);
    s.evaluate(sites, value, 0, kef::Sites::sorted);
    s.evaluate(sites, slope, 1, kef::Sites::sorted);
    double worst = 0;
    std::puts("   x     value     slope");
    for (std::size_t i = 0; i < sites.size(); ++i) {
        std::printf("%4.1f  %8.5f  %8.5f\n", sites[i], value[i], slope[i]);
        worst = std::max(worst, std::abs(value[i] - std::sin(sites[i])));
    }

    const double integral = s.integrate(0, 5);
    std::printf("integral from 0 to 5: %.5f, of the sine %.5f\n", integral, 1 - std::cos(5.0));

    double root = 3;
    for (int step = 0; step < 5; ++step) root -= s(root) / s(root, 1);
    std::vector<std::int32_t> cell(1);
    s.search(std::vector{root}, cell);
    std::printf("root %.5f, in cell %d from %g\n", root, int(cell[0] - 1),
                s.breakpoints()[std::size_t(cell[0] - 1)]);
    return worst > 2e-5 || std::abs(integral - (1 - std::cos(5.0))) > 1e-4 ||
           std::abs(root - 3.14159265) > 2e-5 || cell[0] != 13;
}
