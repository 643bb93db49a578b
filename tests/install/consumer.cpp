// A C++ program of somebody else's, of two files: with KEF_OTHER_FILE the other one.
#include <kef.hpp>

double other_file();

#ifdef KEF_OTHER_FILE
double other_file() {
    kef::Stream stream;
    return kef::Exponential(0.0, 1.0)(stream);
}
#else
int main() {
    std::vector<double> x{0, 1};
    kef::exp(x);
    kef::Statistics<> s(1, kef::Estimate::mean);
    s.add(kef::Sample(x, 1));
    const kef::Spline spline(kef::SplineKind::linear, x, x);
    return x[0] != 1 || s.count() != 2 || spline(x[0]) != 1 || !(other_file() > 0);
}
#endif
