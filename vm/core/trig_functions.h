// What the kernels of Sin, Cos, SinCos and Tan share: gates, the formula of each slot,
// special results and the names in reports.
//
//   double HA   table and Cody-Waite with a low part (trig_core.h)
//   double LA   one polynomial in plain double arithmetic (trig_plain.h); EP: a shorter one
//   single HA   one polynomial in double, rounded once
//   single LA   one polynomial in single precision; EP: a shorter one
//
// What the gates hold back comes to the formula of double HA with the reduction for
// arguments of any size.
#pragma once

#include "vm/core/trig_core.h"
#include "vm/core/trig_plain.h"

namespace kef::vm {

template <class T, class Accuracy> inline constexpr TrigRange trig_range = {};
template <> inline constexpr TrigRange trig_range<double, HA> = {0x2D300000, 0x40A80000};  // 2^-300, 3072
template <> inline constexpr TrigRange trig_range<double, LA> = {0x2D300000, 0x41000000};  // 2^-300, 2^17
template <> inline constexpr TrigRange trig_range<double, EP> = {0x2D300000, 0x40B00000};  // 2^-300, 2^12
template <> inline constexpr TrigRange trig_range<float, HA> = {0x00800000, 0x48000000};   // 2^-126, 2^17
template <> inline constexpr TrigRange trig_range<float, LA> = {0x21800000, 0x45C00000};   // 2^-60, 6144
template <> inline constexpr TrigRange trig_range<float, EP> = trig_range<float, LA>;

template <class T, class Accuracy, Phase phase>
inline Vector<T> sine_fast(Vector<T> x) {
    constexpr bool accurate = std::is_same_v<Accuracy, HA>;
    if constexpr (!accurate) return sine_plain<phase, Accuracy>(x);
    else if constexpr (std::is_same_v<T, float>) return in_double(x, [](d2 y) { return sine_plain<phase, SingleHA>(y); });
    else return sine_core<phase == Phase::sine ? sine_bias : cosine_bias>(x);
}

template <class T, class Accuracy>
inline Vector<T> tangent_fast(Vector<T> x) {
    constexpr bool accurate = std::is_same_v<Accuracy, HA>;
    if constexpr (!accurate) return tangent_plain<Accuracy>(x);
    else if constexpr (std::is_same_v<T, float>) return in_double(x, [](d2 y) { return tangent_plain<SingleHA>(y); });
    else return tangent_core(x);
}

// NaN and infinity; true where the results are settled.
template <class T>
inline bool trig_special(T x, T& r, int& status) {
    status = VTM_STATUS_OK;
    if (is_nan(x)) return r = quiet(x), true;
    if (is_infinite(x)) return r = Format<T>::invalid, status = VTM_STATUS_ERRDOM, true;
    return false;
}

// Where sine and tangent equal their argument.
template <class T>
inline bool trig_tiny(T x, T& r, int& status) {
    constexpr T bound = std::is_same_v<T, double> ? T(0x1p-300) : T(0x1p-60);
    if (x == 0) return r = x * T(0), true;  // also subnormals that count as zero
    if (x >= bound || x <= -bound) return false;
    if (x < Format<T>::smallest_normal && x > -Format<T>::smallest_normal) status = VTM_STATUS_UNDERFLOW;
    return r = x, true;
}

// The sum, rounded once to T.
template <class T>
inline T rounded_sum(const DoubleDouble<double>& x) {
    if constexpr (std::is_same_v<T, double>) return x.high;
    else return narrow(x.high, x.low);
}

// Reports name the type, the function and the accuracy: "sCos_HA".
template <class Accuracy, class T>
constexpr const char* trig_name(const char* const (&names)[6]) {
    constexpr int accuracy = std::is_same_v<Accuracy, LA> ? 0 : std::is_same_v<Accuracy, HA> ? 1 : 2;
    return names[(std::is_same_v<T, float> ? 0 : 3) + accuracy];
}
#define KEF_TRIG_NAME(function)                                                              \
    static constexpr const char* name = trig_name<Accuracy, T>(                              \
        {"s" #function "_LA", "s" #function "_HA", "s" #function "_EP", "d" #function "_LA", \
         "d" #function "_HA", "d" #function "_EP"})

}  // namespace kef::vm
