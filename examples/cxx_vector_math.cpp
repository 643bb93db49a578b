// Functions over ranges: the price of European calls at many strikes by the formula of Black and
// Scholes, in three accuracies, and a complex function in place.
#include <cmath>
#include <cstdio>
#include <kef.hpp>
#include <vector>

namespace {

struct Market {
    double spot, rate, volatility, years;
};

// spot Phi(d1) - strike e^(-rate years) Phi(d2)
std::vector<double> calls(const Market& m, const std::vector<double>& strike,
                          kef::Accuracy accuracy) {
    const std::size_t n = strike.size();
    const double deviation = m.volatility * std::sqrt(m.years);
    const double discount = std::exp(-m.rate * m.years);
    std::vector<double> d1(n), d2(n), price(n);
    const std::vector<double> one(n, 1);
    // d1 = (ln(spot e^(rate years) / strike) + deviation^2 / 2) / deviation
    kef::linear_frac(one, strike, m.spot / discount, 0, 1, 0, d1, accuracy);
    kef::log(d1, accuracy);
    kef::linear_frac(d1, one, 1 / deviation, deviation / 2, 0, 1, d1, accuracy);
    kef::linear_frac(d1, one, 1, -deviation, 0, 1, d2, accuracy);
    kef::cdf_norm(d1, accuracy);
    kef::cdf_norm(d2, accuracy);
    for (std::size_t i = 0; i < n; ++i) price[i] = m.spot * d1[i] - strike[i] * discount * d2[i];
    return price;
}

}  // namespace

int main() {
    const Market market{100, 0.05, 0.2, 1};
    std::vector<double> strike;
    for (int k = 80; k <= 120; k += 10) strike.push_back(k);
    const auto high = calls(market, strike, kef::high), low = calls(market, strike, kef::low),
               enhanced = calls(market, strike, kef::enhanced);
    std::puts("strike  call (high)        low              enhanced");
    for (std::size_t i = 0; i < strike.size(); ++i)
        std::printf("%6.0f  %-17.13f  %+.1e  %+.1e\n", strike[i], high[i], low[i] - high[i],
                    enhanced[i] - high[i]);

    std::vector<std::complex<double>> z{{0, 3.14159265358979323846}};
    kef::exp(z);
    std::printf("e^(i pi) = %.0f%+.1ei\n", z[0].real(), z[0].imag());

    // The call at 100, by the C library.
    const double d1 = (0.05 + 0.02) / 0.2, d2 = d1 - 0.2;
    const auto phi = [](double x) { return std::erfc(-x / std::sqrt(2.0)) / 2; };
    const double expected = 100 * phi(d1) - 100 * std::exp(-0.05) * phi(d2);
    return std::abs(high[2] - expected) > 1e-12 || std::abs(enhanced[2] - expected) > 1e-5;
}
