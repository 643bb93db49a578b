// The loop of every element-wise kernel. A kernel is a functor K of one element
// type, and holds mathematics only:
//
//   K::Element             float or double
//   K::name                the name in error reports
//   k.outside(h...)        optional gate, from the leading 32 bits of a group's elements
//                          of each argument: lanes that the fast formula must not
//                          see; one comparison if possible
//   k.fast(x...)           the formula on a vector of each argument; the result,
//                          or Two{first, second}
//   k.in_memory(p...)      optional: fast on a group of complex numbers as it stands in memory, of
//                          two arguments; the results as they are to stand there, with the bits
//                          of fast, and a verdict (MarkedBy). Computes all whole groups
//   k.refuse(h...)         optional gate on the leading bits of what fast gave, for
//                          formulas that are harmless everywhere: lanes that need
//                          the edge; a vector more than the kernel has results is
//                          for this gate alone, and without a gate it is the verdict (Marked)
//   k.beyond(h...), k.far(x...)
//                          optional second gate and formula: far gives the lanes that
//                          `outside` holds back and `beyond` does not
//   k.undefined(x...)      optional: lanes that far must not see either, told by the vectors
//                          themselves; sign bits
//   K::far_everywhere      optional, a bool: far gives those that `outside` lets pass too, and
//                          the same bits as fast
//   k.kinds(h...)          optional, beside far: an array of verdicts. An element is of the
//                          first kind whose verdict its lane has, or of none; elements of one
//                          kind are computed next to each other
//   k.edge(x..., r...)     one element that the gates hold back; the special cases in
//                          their order. Gives the status, VTM_STATUS_OK or an error
//   k.scalar()             the second argument of a kernel that has a vector and a scalar, as an
//                          element
//   K::arithmetic          optional: one arithmetic operation, whose flags stay raised;
//                          all other kernels raise none (vm/control/control.h)
//
// The loop owns the count test, the control register, the groups (as many elements as there are
// floats in a vector; where there are no gates: single vectors), the gates, the rest of an array
// (one group padded with its last element) and the reports. Where a gate holds a group back, its
// lanes are computed by the formula that is for each, and only those that both gates or `refuse`
// hold back come to the edge. So an element's result does not depend on its place, its neighbours,
// on n or on alignment.
//
// A complex number is two arguments or results to a kernel, its real and its imaginary part: T is
// the type of the parts, and the arrays alone know that they stand side by side.
#pragma once

#include <array>
#include <bit>
#include <tuple>
#include <type_traits>
#include <utility>

#include "vm/control/control.h"
#include "vm/simd/pairs.h"
#include "vm/simd/places.h"
#include "vm/simd/simd.h"
#include "vm/surface/shapes.h"

namespace KEF_VM {

// The accuracy tags: they tell the kernels of a function apart. Which of them stand in which
// slots is said in surface.def.
struct LA;
struct HA;
struct EP;

// A formula's results, V or Two<V>, and the lanes that are for the edge all the same.
template <class V, class R = V> struct MarkedBy {
    R result;
    V marks;
};
using Marked = MarkedBy<floats>;
// Doubles as float results, where midpoints are for the edge; a formula in double.
inline Marked with_midpoints(DoublesPair x) { return {narrow(x), (floats)midpoints(x)}; }
inline Marked marked_in_double(floats x, auto formula) {
    return with_midpoints(on_both(widen(x), formula));
}

namespace frame {

inline constexpr int group = lanes<float>;

template <class V> std::array<V, 1> as_array(V x) { return {x}; }
template <class V> std::array<V, 2> as_array(Two<V> x) { return {x.first, x.second}; }
template <class V> std::array<V, 2> as_array(MarkedBy<V> x) { return {x.result, x.marks}; }
template <class V> std::array<V, 3> as_array(MarkedBy<V, Two<V>> x) {
    return {x.result.first, x.result.second, x.marks};
}

template <class T> inline Vector<T> vector_of(auto element) {
    return [&]<int... lane>(std::integer_sequence<int, lane...>) {
        return Vector<T>{element(lane)...};
    }
    (std::make_integer_sequence<int, lanes<T>>());
}

// A group of elements of one array, in as many vectors as they need; or fewer, padded with the
// last one. Verdicts about a group have the order of its heads.
template <class T> struct Group;
template <> struct Group<double> {
    doubles low, high;
    static constexpr int half = lanes<double>;
    static Group at(const double* p) { return {load(p), load(p + half)}; }
    static Group padded(const double* p, int count) {
        return {count < half ? load_some(p, count) : load(p),
                count > half ? load_some(p + half, count - half) : all(p[count - 1])};
    }
    static Group made_of(auto element) {
        return {vector_of<double>(element),
                vector_of<double>([&](int lane) { return element(half + lane); })};
    }
    static Group all_of(double x) { return {all(x), all(x)}; }
    void store_at(double* p) const { store(p, low), store(p + half, high); }
    void store_some_at(double* p, int count) const {
        if (count < half) store_some(p, count, low);
        else store(p, low);
        if (count > half) store_some(p + half, count - half, high);
    }
    ints head() const { return heads(low, high); }
    double first() const { return low[0]; }
    static unsigned set_in(ints verdict) { return bits(in_order(verdict)); }
    // The lanes whose verdict is set from `other`.
    Group replaced(ints verdict, Group other) const {
        const LongsPair mask = spread(verdict >> 31);
        return {select(mask.low, other.low, low), select(mask.high, other.high, high)};
    }
};
template <> struct Group<float> {
    floats whole;
    static Group at(const float* p) { return {load(p)}; }
    static Group padded(const float* p, int count) { return {load_some(p, count)}; }
    static Group made_of(auto element) { return {vector_of<float>(element)}; }
    static Group all_of(float x) { return {all(x)}; }
    void store_at(float* p) const { store(p, whole); }
    void store_some_at(float* p, int count) const { store_some(p, count, whole); }
    ints head() const { return heads(whole); }
    float first() const { return whole[0]; }
    static unsigned set_in(ints verdict) { return bits(verdict); }
    Group replaced(ints verdict, Group other) const {
        return {select(verdict >> 31, other.whole, whole)};
    }
};

// As many real and imaginary parts, which alternate in memory.
template <class T> struct Pairs { Group<T> re, im; };
template <class T> inline Pairs<T> pairs_of(auto vectors_at) {
    if constexpr (std::is_same_v<T, float>) {
        const Two<floats> x = vectors_at(0);
        return {{x.first}, {x.second}};
    } else {
        const Two<doubles> x = vectors_at(0), y = vectors_at(Group<T>::half);
        return {{x.first, y.first}, {x.second, y.second}};
    }
}
template <class T> inline void store_pairs_at(T* p, const Group<T>& re, const Group<T>& im) {
    if constexpr (std::is_same_v<T, float>) store_pairs(p, re.whole, im.whole);
    else store_pairs(p, re.low, im.low), store_pairs(p + group, re.high, im.high);
}

// The N arrays of the arguments or of the results: their components in vectors and groups. E is the
// type of an element, const where they are read.
template <class E, std::size_t N> struct Arrays {
    using Element = std::remove_const_t<E>;
    using T = Real<Element>;
    static constexpr bool complex = sizeof(Element) > sizeof(T);
    static constexpr std::size_t components = complex ? 2 * N : N;
    using Groups = std::array<Group<T>, components>;

    // From i on: one vector, a whole group, and a group padded with the last of `count` elements.
    std::array<Vector<T>, components> vectors_at(int i) const {
        std::array<Vector<T>, components> x;
        for (std::size_t j = 0; j < N; ++j)
            if constexpr (complex) {
                const auto [re, im] = load_pairs<T>(parts(j, i));
                x[2 * j] = re, x[2 * j + 1] = im;
            } else {
                x[j] = load(p[j] + i);
            }
        return x;
    }
    Groups group_at(int i) const {
        Groups x;
        for (std::size_t j = 0; j < N; ++j)
            if constexpr (complex)
                set_pair(x, j, pairs_of<T>([&](int m) { return load_pairs<T>(parts(j, i + m)); }));
            else x[j] = Group<T>::at(p[j] + i);
        return x;
    }
    Groups padded_at(int i, int count) const {
        Groups x;
        for (std::size_t j = 0; j < N; ++j)
            if constexpr (complex)
                set_pair(x, j, pairs_of<T>([&](int m) {
                             return load_some_pairs<T>(parts(j, i), m, count);
                         }));
            else x[j] = Group<T>::padded(p[j] + i, count);
        return x;
    }

    // The results at i, all of a group or as many as `count` says.
    auto storing(int i) const {
        return [this, i](const auto& y) {
            for (std::size_t j = 0; j < N; ++j)
                if constexpr (complex) store_pairs_at(parts(j, i), y[2 * j], y[2 * j + 1]);
                else y[j].store_at(p[j] + i);
        };
    }
    auto storing(int i, int count) const {
        return [this, i, count](const auto& y) {
            for (std::size_t j = 0; j < N; ++j)
                if constexpr (complex) {
                    T whole[2 * group];
                    store_pairs_at(whole, y[2 * j], y[2 * j + 1]);
                    for (int m = 0; m < 2 * count; ++m) parts(j, i)[m] = whole[m];
                } else {
                    y[j].store_some_at(p[j] + i, count);
                }
        };
    }
    void store_vectors(int i, const auto& y) const {
        for (std::size_t j = 0; j < N; ++j)
            if constexpr (complex) store_pairs(parts(j, i), y[2 * j], y[2 * j + 1]);
            else store(p[j] + i, y[j]);
    }

    // One component of element i; and an element of its components.
    auto& component(std::size_t j, int i) const {
        if constexpr (complex) return parts(j / 2, i)[j % 2];
        else return p[j][i];
    }
    static Element element(const std::array<T, components>& x, std::size_t j) {
        if constexpr (complex) return {x[2 * j], x[2 * j + 1]};
        else return x[j];
    }

    std::array<E*, N> p;

private:
    using Part = std::conditional_t<std::is_const_v<E>, const T, T>;
    Part* parts(std::size_t j, int i) const { return reinterpret_cast<Part*>(p[j] + i); }
    static void set_pair(Groups& x, std::size_t j, const Pairs<T>& pair) {
        x[2 * j] = pair.re, x[2 * j + 1] = pair.im;
    }
};

// A formula on the vectors of each group.
template <class Formula, class T, std::size_t I, std::size_t... N>
inline auto apply(Formula f, const std::array<Group<T>, I>& x, std::index_sequence<N...>) {
    if constexpr (std::is_same_v<T, double>) {
        const auto low = as_array(f(x[N].low...));
        const auto high = as_array(f(x[N].high...));
        std::array<Group<T>, low.size()> y;
        for (std::size_t i = 0; i < y.size(); ++i) y[i] = {low[i], high[i]};
        return y;
    } else {
        const auto whole = as_array(f(x[N].whole...));
        std::array<Group<T>, whole.size()> y;
        for (std::size_t i = 0; i < y.size(); ++i) y[i] = {whole[i]};
        return y;
    }
}

template <class K, std::size_t... N>
int edge(const K& k, const auto& x, auto& r, std::index_sequence<N...>) {
    if constexpr (std::tuple_size_v<std::remove_cvref_t<decltype(r)>> == 1)
        return k.edge(x[N]..., r[0]);
    else return k.edge(x[N]..., r[0], r[1]);
}

// The status of results that stand.
template <class K, class T, std::size_t O> int status_of(const K& k, const std::array<T, O>& r) {
    if constexpr (requires { k.status(r[0]); }) return k.status(r[0]);
    else if constexpr (requires { k.status(r[0], r[O - 1]); }) return k.status(r[0], r[O - 1]);
    else return VTM_STATUS_OK;
}

// The second argument in a report.
template <class In, class K> inline auto second_argument(const K& k, const auto& x) {
    if constexpr (requires { k.scalar(); }) return k.scalar();
    else return In::element(x, std::tuple_size_v<decltype(In::p)> - 1);
}

// The verdicts of the gates on a group: the lanes that the first formula must not see, and those of
// its results y that need the edge.
template <class K, class T, std::size_t I>
inline ints outside(const K& k, const std::array<Group<T>, I>& x) {
    return [&]<std::size_t... N>(std::index_sequence<N...>) {
        if constexpr (requires { k.outside(x[N].head()...); }) return k.outside(x[N].head()...);
        else return ints{};
    }
    (std::make_index_sequence<I>());
}
template <std::size_t O, class K, class T, std::size_t Y>
inline ints refused(const K& k, const std::array<Group<T>, Y>& y) {
    return [&]<std::size_t... N>(std::index_sequence<N...>) {
        if constexpr (requires { k.refuse(y[N].head()...); }) return k.refuse(y[N].head()...);
        else if constexpr (Y > O) return y[O].head();
        else return ints{};
    }
    (std::make_index_sequence<Y>());
}

// The lanes whose results stand and are reported, whether refused or not.
template <class K, std::size_t Y>
inline constexpr bool has_reports = []<std::size_t... N>(std::index_sequence<N...>) {
    return requires(const K& k, ints h) { k.reported((static_cast<void>(N), h)...); };
}
(std::make_index_sequence<Y>());
template <class K, class T, std::size_t Y>
inline ints reported(const K& k, const std::array<Group<T>, Y>& y) {
    return [&]<std::size_t... N>(std::index_sequence<N...>) {
        if constexpr (has_reports<K, Y>) return k.reported(y[N].head()...);
        else return ints{};
    }
    (std::make_index_sequence<Y>());
}

// Computes one group; false where a gate holds it back.
template <std::size_t O, class K, class T, std::size_t I>
inline bool try_group(const K& k, const std::array<Group<T>, I>& x, auto store_results) {
    if (any_lane(outside(k, x))) [[unlikely]]
        return false;
    const auto fast = [&](auto... v) { return k.fast(v...); };
    const auto y = apply(fast, x, std::make_index_sequence<I>());
    if (any_lane(refused<O>(k, y))) [[unlikely]]
        return false;
    store_results(y);
    return true;
}

// The same of the group at i, all of which is there.
template <class K, class In, class Out>
inline bool try_group_at(const K& k, int i, const In& in, const Out& out) {
    if constexpr (requires { k.in_memory(&in.component(0, i), &in.component(2, i)); }) {
        const auto y = k.in_memory(&in.component(0, i), &in.component(2, i));
        if (any_lane((ints)y.marks)) [[unlikely]]
            return false;
        auto* p = &out.component(0, i);
        store(p, y.result.first), store(p + group, y.result.second);
        return true;
    } else {
        return try_group<Out::components>(k, in.group_at(i), out.storing(i));
    }
}

// Whether the kernel of I arguments and O results has an edge.
template <class K, class T, std::size_t I, std::size_t O>
inline constexpr bool has_edge = []<std::size_t... N>(std::index_sequence<N...>) {
    return requires(const K& k, T x) { k.edge((static_cast<void>(N), x)...); };
}
(std::make_index_sequence<I + O>());

// Whether the kernel of I arguments has a second formula, and whether that is good everywhere.
template <class K, std::size_t I>
inline constexpr bool has_far = []<std::size_t... N>(std::index_sequence<N...>) {
    return requires(const K& k, ints h) { k.beyond((static_cast<void>(N), h)...); };
}
(std::make_index_sequence<I>());
template <class K> inline constexpr bool far_is_everywhere = requires {
    requires K::far_everywhere;
};

// The verdicts of the kinds on a group, where the kernel of I arguments has kinds.
template <class K, std::size_t I>
inline constexpr bool has_kinds = []<std::size_t... N>(std::index_sequence<N...>) {
    return requires(const K& k, ints h) { k.kinds((static_cast<void>(N), h)...); };
}
(std::make_index_sequence<I>());
template <class K, class T, std::size_t I>
inline auto kinds(const K& k, const std::array<Group<T>, I>& x) {
    return [&]<std::size_t... N>(std::index_sequence<N...>) { return k.kinds(x[N].head()...); }
    (std::make_index_sequence<I>());
}

template <class K, class T, std::size_t I>
inline bool is_mixed(const K& k, const std::array<Group<T>, I>& x) {
    for (const ints verdict : kinds(k, x)) {
        const unsigned lanes = Group<T>::set_in(verdict);
        if (lanes == (1u << group) - 1) return false;
        if (lanes != 0) return true;
    }
    return false;
}

// The lanes that the second formula must not see.
template <class K, class T, std::size_t I>
inline ints beyond(const K& k, const std::array<Group<T>, I>& x) {
    return [&]<std::size_t... N>(std::index_sequence<N...> indices) {
        const ints verdict = k.beyond(x[N].head()...);
        if constexpr (requires(Vector<T> v) { k.undefined((static_cast<void>(N), v)...); })
            return verdict |
                   apply([&](auto... v) { return k.undefined(v...); }, x, indices)[0].head();
        else return verdict;
    }
    (std::make_index_sequence<I>());
}

// The lanes of the first and of the second formula; those of both are for the second where the
// first one refuses its result.
struct Shares {
    ints first, second;
};
template <class K, class T, std::size_t I>
inline Shares shares(const K& k, const std::array<Group<T>, I>& x) {
    const ints first = ~outside(k, x);
    if constexpr (!has_far<K, I>) return {first, ints{}};
    else if constexpr (far_is_everywhere<K>) {
        const ints second = ~beyond(k, x);
        if (!all_lanes(first) && !any_lane(second & ~first)) return {first, second};
        return {first & ~second, second};
    } else return {first, ~(first | beyond(k, x))};
}

// A group by the formulas, each with one of its own elements in the lanes that are not its share:
// what it must not see it does not see. component(j, m): argument j of element m. The lanes that
// are done; and those of them with a status to report, where the kernel tells.
template <class K, class T, std::size_t I, std::size_t O>
inline ints by_formulas(const K& k, const Shares& share, const std::array<Group<T>, I>& x,
                        auto component, std::array<Group<T>, O>& y, auto&... with_status) {
    ints done{};
    const auto compute = [&](ints chosen, auto formula) {
        if (!any_lane(chosen)) return;
        auto some = x;
        if (!all_lanes(chosen)) {
            const int one = std::countr_zero(Group<T>::set_in(chosen));
            for (std::size_t j = 0; j < I; ++j)
                some[j] = Group<T>::all_of(component(j, one)).replaced(chosen, x[j]);
        }
        const auto r = apply(formula, some, std::make_index_sequence<I>());
        ints good = chosen & ~refused<O>(k, r);
        if constexpr (sizeof...(with_status) == 1) {
            const ints stands = chosen & reported(k, r);
            good |= stands;
            (..., (with_status |= stands));
        }
        for (std::size_t j = 0; j < O; ++j) y[j] = y[j].replaced(good, r[j]);
        done |= good;
    };
    const auto by_far = [&](ints chosen) {
        if constexpr (has_far<K, I>) compute(chosen, [&](auto... v) { return k.far(v...); });
    };
    // The second one first where no lane is of both: behind the first one it costs up to a tenth
    // more.
    if constexpr (!far_is_everywhere<K>) by_far(share.second);
    compute(share.first, [&](auto... v) { return k.fast(v...); });
    if constexpr (far_is_everywhere<K>) by_far(share.second & ~done);
    return done;
}

// Whether the kernel of arrays In and Out reports results of its second formula, which gives one
// vector more.
template <class K, class Out> inline constexpr bool reports = has_reports<K, Out::components + 1>;

// An element's report.
template <class K, class In, class Out>
[[gnu::always_inline]] inline void report(const K& k, int status, int i, const auto& arguments,
                                          auto& guard, const In& in, const Out& out) {
    guard.report(ElementError<typename In::Element, typename Out::Element>{
        status, i, K::name, in.p[0], In::element(arguments, 0), second_argument<In>(k, arguments),
        &out.p.front()[i], &out.p.back()[i]});
}

// The status of element i, which is stored.
template <class K, class Out> int status_at(const K& k, int i, const Out& out) {
    std::array<typename Out::T, Out::components> r;
    for (std::size_t j = 0; j < r.size(); ++j) r[j] = out.component(j, i);
    return status_of(k, r);
}

// The reports of a group that is stored at i, in their order.
template <class K, class In, class Out>
[[gnu::noinline]] void report_group(const K& k, unsigned lanes, int i, const typename In::Groups& x,
                                    auto& guard, const In& in, const Out& out) {
    using T = typename In::T;
    T arguments[In::components][group];
    for (std::size_t j = 0; j < In::components; ++j) x[j].store_at(arguments[j]);
    for (; lanes != 0; lanes &= lanes - 1) {
        const int m = std::countr_zero(lanes);
        std::array<T, In::components> a;
        for (std::size_t j = 0; j < In::components; ++j) a[j] = arguments[j][m];
        report(k, status_at(k, i + m, out), i + m, a, guard, in, out);
    }
}

// Groups that the two formulas compute, up to 16 in a row; the index behind them. Of their statuses
// the last one alone is told, at the end, where the thread wants no more. The kernel comes by value
// here and below: where its address never leaves a loop, its fields stay in registers.
template <class K, class In, class Out>
[[gnu::noinline, gnu::flatten]] int far_groups(K k, int i, int n, const In& in, const Out& out,
                                               auto&... guard) {
    const int most = i + 16 * group, end = most < n ? most : n;
    [[maybe_unused]] int last = -1;
    for (; i <= end - group; i += group) {
        const auto x = in.group_at(i);
        Shares share;  // nothing is for the first formula where the second one is good everywhere
        if constexpr (far_is_everywhere<K>) share = {ints{}, ~beyond(k, x)};
        else share = shares(k, x);
        if (!all_lanes(share.first | share.second)) break;
        const auto component = [&](std::size_t j, int m) { return in.component(j, i + m); };
        typename Out::Groups y{};
        if constexpr (reports<K, Out>) {
            ints with_status{};
            if (!all_lanes(by_formulas(k, share, x, component, y, with_status))) break;
            out.storing(i)(y);
            if (any_lane(with_status)) [[unlikely]] {
                const unsigned lanes = Group<typename In::T>::set_in(with_status);
                if (last >= 0 || wants_status_alone()) last = i + std::bit_width(lanes) - 1;
                else report_group(k, lanes, i, x, guard..., in, out);
            }
        } else {
            if (!all_lanes(by_formulas(k, share, x, component, y))) break;
            out.storing(i)(y);
        }
    }
    if constexpr (reports<K, Out>)
        if (last >= 0) store_status_alone(status_at(k, last, out));
    return i;
}

// Element i, by its edge.
template <class K, class In, class Out>
inline void by_edge(const K& k, int i, const std::array<typename In::T, In::components>& a,
                    auto& guard, const In& in, const Out& out) {
    std::array<typename In::T, Out::components> r;
    const int status = edge(k, a, r, std::make_index_sequence<In::components>());
    for (std::size_t j = 0; j < r.size(); ++j) out.component(j, i) = r[j];
    if (status != VTM_STATUS_OK) [[unlikely]]
        report(k, status, i, a, guard, in, out);
}

// A group of `count` elements that a gate holds back: by the formulas as far as they go; what is
// left comes to the edge, one by one, with its special results and reports.
template <class K, class In, class Out, class Guard>
[[gnu::noinline]] void held_back(K k, int i, int count, Guard& guard, const In& in,
                                 const Out& out) {
    using T = typename In::T;
    constexpr std::size_t I = In::components, O = Out::components;
    const auto x = count < group ? in.padded_at(i, count) : in.group_at(i);
    T arguments[I][group], results[O][group];
    for (std::size_t j = 0; j < I; ++j) x[j].store_at(arguments[j]);
    std::array<Group<T>, O> y{};
    const auto component = [&](std::size_t j, int m) { return arguments[j][m]; };
    ints done;
    unsigned reported = 0;
    if constexpr (reports<K, Out>) {
        ints with_status{};
        done = by_formulas(k, shares(k, x), x, component, y, with_status);
        reported = Group<T>::set_in(with_status);
    } else {
        done = by_formulas(k, shares(k, x), x, component, y);
    }

    for (std::size_t j = 0; j < O; ++j) {
        y[j].store_at(results[j]);
        for (int m = 0; m < count; ++m) out.component(j, i + m) = results[j][m];
    }
    for (unsigned rest = (~Group<T>::set_in(done) | reported) & ((1u << count) - 1); rest != 0;
         rest &= rest - 1) {
        const int m = std::countr_zero(rest);
        std::array<T, I> a;
        for (std::size_t j = 0; j < I; ++j) a[j] = arguments[j][m];
        if constexpr (reports<K, Out>)
            if (reported >> m & 1) {
                std::array<T, O> r;
                for (std::size_t j = 0; j < O; ++j) r[j] = results[j][m];
                report(k, status_of(k, r), i + m, a, guard, in, out);
                continue;
            }
        by_edge(k, i + m, a, guard, in, out);
    }
}

// From i on, at most 16 groups, the first one of several kinds that two such ones follow; the index
// behind them where there is none. Fewer than three are computed as they stand.
template <class K, class In> [[gnu::noinline]] int mixed_from(K k, int i, int n, const In& in) {
    const int most = i + 16 * group, end = most < n ? most : n;
    int mixed = 0;
    for (; i <= end - group; i += group) {
        mixed = is_mixed(k, in.group_at(i)) ? mixed + 1 : 0;
        if (mixed == 3) return i - 2 * group;
    }
    return i;
}

// A block of groups of several kinds: the elements of each kind by themselves, so that few of them
// go through more than one formula; then what needs the edge. The index behind the block, which
// ends where groups of one kind come to be in the majority.
template <class K, class In, class Out, class Guard>
[[gnu::noinline, gnu::flatten]] int block_by_kinds(K k, int first, int n, Guard& guard,
                                                   const In& in, const Out& out) {
    using T = typename In::T;
    constexpr std::size_t I = In::components, O = Out::components;
    static_assert(!In::complex && !Out::complex && !reports<K, Out>);
    constexpr int most = group > 8 ? 256 : 128;
    constexpr int lists = std::tuple_size_v<decltype(kinds(k, in.group_at(0)))> + 1;
    PlaceList<most + group> list[lists];  // places in the block, and padding
    int count[lists] = {};
    int size = 0;
    for (int majority = 0; size < most && first + size <= n - group && majority <= 2;
         size += group) {
        const auto x = in.group_at(first + size);
        const auto verdicts = kinds(k, x);
        unsigned others = (1u << group) - 1;
        majority += is_mixed(k, x) ? -1 : 1;
#pragma GCC unroll 8
        for (int kind = 0; kind < lists; ++kind) {
            unsigned chosen = others;
            if (kind < lists - 1) chosen &= Group<T>::set_in(verdicts[kind]);
            others &= ~chosen;
            add_places(list[kind], count[kind], chosen, size);
        }
    }

    bool left[most] = {}, any_left = false;
    for (int kind = 0; kind < lists; ++kind) {
        for (int m = 0; m < count[kind]; m += group) {
            std::uint8_t* place = list[kind].at + m;
            if (count[kind] - m < group)
                for (int lane = count[kind] - m; lane < group; ++lane) place[lane] = place[0];
            const auto component = [&](std::size_t j, int lane) {
                return in.p[j][first + place[lane]];
            };
            typename In::Groups x;
            for (std::size_t j = 0; j < I; ++j)
                x[j] = Group<T>::made_of([&](int lane) { return component(j, lane); });
            typename Out::Groups y{};
            const ints done = by_formulas(k, shares(k, x), x, component, y);
            T results[O][group];
            for (std::size_t j = 0; j < O; ++j) y[j].store_at(results[j]);
            const bool all_done = all_lanes(done);
            const unsigned lanes = Group<T>::set_in(done);
#pragma GCC unroll 16
            for (int lane = 0; lane < group; ++lane)
                if (all_done || lanes >> lane & 1)
                    for (std::size_t j = 0; j < O; ++j)
                        out.p[j][first + place[lane]] = results[j][lane];
                else left[place[lane]] = any_left = true;
        }
    }
    if (any_left)
        for (int m = 0; m < size; ++m) {
            if (!left[m]) continue;
            std::array<T, I> a;
            for (std::size_t j = 0; j < I; ++j) a[j] = in.p[j][first + m];
            by_edge(k, first + m, a, guard, in, out);
        }
    return first + size;
}

// All groups from one on that the gates hold back, where there is a second formula: by it and the
// first one in turn; the index behind them. Apart from the main loop, whose index moves by a
// constant alone: that makes its addresses simple.
template <class K, class In, class Out, class Guard>
[[gnu::noinline, gnu::flatten]] int resume(K k, int i, int n, Guard& guard, const In& in,
                                           const Out& out) {
    [[maybe_unused]] int mixed = i;  // up to there no groups are for block_by_kinds
    while (i <= n - group) {
        int behind;
        if constexpr (has_kinds<K, In::components>) {
            if (i >= mixed) mixed = mixed_from(k, i, n, in);
            if (i == mixed) behind = block_by_kinds(k, i, n, guard, in, out);
            else behind = far_groups(k, i, mixed, in, out);
        } else if constexpr (reports<K, Out>) {
            behind = far_groups(k, i, n, in, out, guard);
        } else {
            behind = far_groups(k, i, n, in, out);
        }
        if (behind == i) held_back(k, i, group, guard, in, out), i += group;
        else i = behind;
        while (i <= n - group && try_group_at(k, i, in, out)) i += group;
    }
    return i;
}

// How many results stand before one that begins where a vector does in a line of the cache: beyond
// 16 bytes a store across two lines takes two. 0 where calls are short; where that would move all
// of several arguments across lines; and where the number is odd or none, so that parts of complex
// numbers (Conj) keep their lanes.
template <class In, class E, std::size_t N>
inline int before_line(int n, const In& in, const Arrays<E, N>& out) {
    constexpr std::size_t bytes = sizeof(floats);
    if (bytes == 16 || n < 8 * group) return 0;
    const auto before = [](auto* p) { return -reinterpret_cast<std::uintptr_t>(p) % bytes; };
    const std::size_t wanted = before(out.p[0]);
    bool some = in.p.size() == 1;
    for (auto* p : in.p) some |= before(p) == wanted;
    if (!some || wanted % (2 * sizeof(E)) != 0) return 0;
    return static_cast<int>(wanted / sizeof(E));
}

// The loop of a kernel without gates, vector by vector from i on; the index behind them.
template <class K, class In, class Out>
inline int ungated(const K k, int i, int n, In in, Out out) {
    constexpr int step = lanes<typename In::T>;
#pragma GCC unroll 2
    for (; i <= n - step; i += step) {
        const auto fast = [&](auto... x) { return as_array(k.fast(x...)); };
        out.store_vectors(i, std::apply(fast, in.vectors_at(i)));
    }
    return i;
}

template <class K, class In, class Out>
inline void run(int n, const In& in, const Out& out, auto... scalars) {
    if (n <= 0) return;
    constexpr std::size_t I = In::components, O = Out::components;
    constexpr bool has_edge = frame::has_edge<K, typename In::T, I, O>;
    constexpr bool arithmetic = requires { K::arithmetic; };
    ControlGuard<arithmetic> guard;
    const K k{scalars...};  // its arithmetic raises no flags either

    int i = 0;
    if constexpr (!has_edge) {
        i = before_line(n, in, out);
        if (i > 0) try_group<O>(k, in.padded_at(0, i), out.storing(0, i));
        i = ungated(k, i, n, in, out);
    }
    for (; i <= n - group; i += group) {
        const bool done = try_group_at(k, i, in, out);
        if constexpr (has_far<K, I>) {
            if (!done) [[unlikely]] {
                i = resume(k, i, n, guard, in, out);
                break;
            }
        } else if constexpr (has_edge) {
            if (!done) [[unlikely]]
                held_back(k, i, group, guard, in, out);
        }
    }

    const int rest = n - i;
    if (rest == 0) return;
    const bool done = try_group<O>(k, in.padded_at(i, rest), out.storing(i, rest));
    if constexpr (has_edge)
        if (!done) [[unlikely]]
            held_back(k, i, rest, guard, in, out);
}

}  // namespace frame

// Flattened: however long a formula, it is part of the loop. The kernel K is made of the scalars; E
// and R are the elements of arguments and results.
template <class K, class E, class R>
[[gnu::flatten]] void map1(std::int32_t n, const E* a, R* r, auto... scalars) {
    frame::run<K>(n, frame::Arrays<const E, 1>{{a}}, frame::Arrays<R, 1>{{r}}, scalars...);
}
template <class K, class E>
[[gnu::flatten]] void map2(std::int32_t n, const E* a, const E* b, E* r, auto... scalars) {
    frame::run<K>(n, frame::Arrays<const E, 2>{{a, b}}, frame::Arrays<E, 1>{{r}}, scalars...);
}
template <class K, class E> [[gnu::flatten]] void map1x2(std::int32_t n, const E* a, E* y, E* z) {
    frame::run<K>(n, frame::Arrays<const E, 1>{{a}}, frame::Arrays<E, 2>{{y, z}});
}

// Define the kernel of a slot, named as in surface.def, from the functor
// template Function<T, accuracy>, T being the type of the element's parts.
#define KEF_MAP1(type, function, accuracy)                                                         \
    void type##function##_##accuracy(std::int32_t n, const element_##type* a, element_##type* r) { \
        map1<function<Real<element_##type>, accuracy>>(n, a, r);                                   \
    }
#define KEF_MAP2(type, function, accuracy)                                         \
    void type##function##_##accuracy(std::int32_t n, const element_##type* a,      \
                                     const element_##type* b, element_##type* r) { \
        map2<function<Real<element_##type>, accuracy>>(n, a, b, r);                \
    }
#define KEF_MAP1X2(type, function, accuracy)                                                     \
    void type##function##_##accuracy(std::int32_t n, const element_##type* a, element_##type* y, \
                                     element_##type* z) {                                        \
        map1x2<function<Real<element_##type>, accuracy>>(n, a, y, z);                            \
    }

}  // namespace KEF_VM
