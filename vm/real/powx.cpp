// Powx: r = a^b for one exponent b. Special cases and errors are those of Pow.
//
//   b = 2, 1, 1/2, -1               one operation, correctly rounded in every slot; b = 0 gives 1
//   b half of a small integer       products, a root, a quotient (small_power.h)
//   any other b                     the formulas of Pow
//
// Double HA 0.52 ulp, 0.5 for halves of integers up to 16; single HA 0.5 ulp + 2^-10; also LA.
// What the gates of a formula hold back is computed by Pow's edge.
#include "vm/core/pow_core.h"
#include "vm/core/small_power.h"
#include "vm/simd/frame.h"
#include "vm/surface/shapes.h"

namespace kef::vm {

template <class T, class Accuracy> class Powx : public PowFormula<T, Accuracy> {
public:
    using V = Vector<T>;
    KEF_REPORT_NAME(Powx);

    explicit Powx(T b) : b_(b), outside_(Powx::y_outside(all(head(b)))) {
        const Parity<V> kind = parity(all(b));
        odd_ = kind.odd;
        beyond_ = outside_ | Powx::y_beyond(all(head(b)));
        fraction_ = all(head(kind.fraction[0]));
    }

    ints outside(ints a) const { return Powx::x_outside(a) | outside_; }
    auto fast(V a) const { return PowFormula<T, Accuracy>::fast(a, all(b_)); }
    ints beyond(ints a) const { return Powx::x_beyond(a) | beyond_ | (a & fraction_); }
    auto far(V a) const { return PowFormula<T, Accuracy>::far(a, all(b_), odd_); }
    int edge(T a, T& r) const { return pow_edge(a, b_, r); }
    T scalar() const { return b_; }

private:
    T b_;
    V odd_;
    ints outside_, beyond_, fraction_;  // verdicts on the exponent
};

template <class T, class Method> class PowxSmall : public SmallPower<T, Method> {
public:
    KEF_REPORT_NAME(Powx);
    PowxSmall(T b, int halves) : SmallPower<T, Method>(halves), b_(b) {}
    int edge(T a, T& r) const { return pow_edge(a, b_, r); }
    T scalar() const { return b_; }

private:
    T b_;
};

namespace {

// One operation; its gates are those of normal arguments and results.
struct Square {
    static constexpr double exponent = 2;
    static auto of(auto x) { return x * x; }
    template <class T> static ints outside(ints h) {
        constexpr bool single = std::is_same_v<T, float>;
        constexpr std::uint32_t low = single ? 0x20000000 : 0x20000000,
                                high = single ? 0x5F800000 : 0x5FF00000;
        return not_between(magnitude(h), low, high);  // 2^-63 to 2^64, 2^-511 to 2^512
    }
};
struct Itself {
    static constexpr double exponent = 1;
    static auto of(auto x) { return x; }
    template <class T> static ints outside(ints h) {
        return not_between(magnitude(h), Format<T>::normal_head, Format<T>::infinity_head);
    }
};
struct Root {
    static constexpr double exponent = 0.5;
    static auto of(auto x) { return square_root(x); }
    template <class T> static ints outside(ints h) {
        return not_between(h, Format<T>::normal_head, Format<T>::infinity_head);
    }
};
struct Reciprocal {
    static constexpr double exponent = -1;
    static auto of(auto x) { return 1.0f / x; }
    template <class T> static ints outside(ints h) {  // to 2^126, 2^1022
        return not_between(magnitude(h), Format<T>::normal_head,
                           Format<T>::infinity_head - 2 * Format<T>::normal_head);
    }
};

}  // namespace

template <class T, class Operation> struct PowxOne {
    using V = Vector<T>;
    KEF_REPORT_NAME(Powx);
    static ints outside(ints h) { return Operation::template outside<T>(h); }
    static V fast(V x) { return Operation::of(x); }
    static int edge(T x, T& r) {
        return pow_edge(x, scalar(), r, [](double a, double) {
            return Power{Operation::of(all(a))[0], false};
        });
    }
    static constexpr T scalar() { return T(Operation::exponent); }
};

// x^0, of anything.
template <class T> struct PowxZero {
    static Vector<T> fast(Vector<T>) { return all(T(1)); }
};

template <class T, class Accuracy> void powx(std::int32_t n, const T* a, T b, T* r) {
    constexpr bool single = std::is_same_v<T, float>, low = std::is_same_v<Accuracy, EP>;
    const int halves = halves_of(b), size = halves < 0 ? -halves : halves;
    switch (halves) {
        case 4: return map1<PowxOne<T, Square>>(n, a, r);
        case 2: return map1<PowxOne<T, Itself>>(n, a, r);
        case 1: return map1<PowxOne<T, Root>>(n, a, r);
        case 0: return map1<PowxZero<T>>(n, a, r);
        case -2: return map1<PowxOne<T, Reciprocal>>(n, a, r);
    }
    // As long as that is faster than the general formula, and in LA no less accurate.
    if constexpr (single) {
        using Method = std::conditional_t<low, Plain, InDouble>;
        if (size <= (low ? 31 : 64)) return map1<PowxSmall<T, Method>>(n, a, r, b, halves);
    } else if (size <= 64) {
        constexpr bool high = std::is_same_v<Accuracy, HA>;
        const SmallExponent exponent(halves);
        if constexpr (!high)
            if (low || exponent.roundings() <= 5)
                return map1<PowxSmall<T, Plain>>(n, a, r, b, halves);
        if constexpr (!low)
            if (exponent.steps() <= (high ? 7 : 5))
                return map1<PowxSmall<T, Extended>>(n, a, r, b, halves);
    }
    map1<Powx<T, Accuracy>>(n, a, r, b);
}

#define KEF_POWX(type, accuracy)                                                          \
    void type##Powx_##accuracy(std::int32_t n, const element_##type* a, element_##type b, \
                               element_##type* r) {                                       \
        powx<element_##type, accuracy>(n, a, b, r);                                       \
    }
KEF_POWX(s, HA)
KEF_POWX(s, EP)
KEF_POWX(d, LA)
KEF_POWX(d, HA)
KEF_POWX(d, EP)

}  // namespace kef::vm
