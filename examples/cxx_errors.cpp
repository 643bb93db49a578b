// Elements without a proper result: thrown, collected, replaced.
#include <cmath>
#include <cstdio>
#include <kef.hpp>
#include <vector>

int main() {
    const std::vector<double> x{4, 0, -1, 100};
    std::vector<double> y(x.size());

    try {
        kef::Errors scope(kef::OnError::raise);
        kef::log(x, y);
    } catch (const kef::ElementError& error) { std::printf("thrown: %s\n", error.what()); }

    std::size_t collected;
    {
        kef::Errors scope(kef::OnError::collect);
        kef::log(x, y);
        kef::sqrt(x, y);
        for (const kef::ElementReport& report : scope.reports())
            std::printf("collected: %s of element %zu, %g\n", report.function.c_str(), report.index,
                        report.argument1.real());
        collected = scope.reports().size();
    }

    {
        kef::Errors scope([](kef::ElementReport& report) {
            report.result1 = report.code == VTM_STATUS_SING ? -999 : 0;
        });
        kef::log(x, y);
    }
    std::printf("replaced: %g %g %g %g\n", y[0], y[1], y[2], y[3]);

    // Wrong arguments are always thrown, before anything is written.
    bool refused = false;
    try {
        kef::log(x, std::span(y).first(3));
    } catch (const kef::ArgumentError& error) {
        std::printf("refused: %s\n", error.what());
        refused = error.argument() == "y";
    }
    return collected != 3 || y[1] != -999 || y[2] != 0 || !refused;
}
