// What a user would take instead: functions of other libraries, as rows. A source
// file peers_LIBRARY.cpp registers the rows of one library; it is compiled where
// that library is installed.
#pragma once

#include <complex>
#include <initializer_list>
#include <string>
#include <vector>

#include "bench/batch.h"

namespace kef {

template <class T> struct Peer {
    const char* function;  // as in surface.def
    std::string name;
    double ulps;      // its error on ordinary arguments: documented, or measured if larger
    bool everywhere;  // keeps it on all arguments
    void (*run)(Batch<T>&);
    bool complex = false;
};

// All rows of an element type.
template <class T> std::vector<Peer<T>>& peers() {
    static std::vector<Peer<T>> rows;
    return rows;
}
// Those of one function.
template <class T> std::vector<Peer<T>> peers_of(const reference::Reference& reference) {
    std::vector<Peer<T>> result;
    for (const Peer<T>& peer : peers<T>())
        if (peer.function == reference.name && peer.complex == reference.complex())
            result.push_back(peer);
    return result;
}
template <class T> struct AddPeers {
    AddPeers(std::initializer_list<Peer<T>> rows) {
        peers<T>().insert(peers<T>().end(), rows.begin(), rows.end());
    }
};

// Vectors of a library: element type, number of elements, load and store. Here a
// number as a vector of one.
template <class V> struct Lanes {
    using Element = V;
    static constexpr int count = 1;
    static V load(const V* p) { return *p; }
    static void store(V* p, V x) { *p = x; }
};

template <class V> struct Pair { V first, second; };

// Complex numbers, as two components side by side.
template <class V> inline constexpr std::size_t parts = 1;
template <class T> inline constexpr std::size_t parts<std::complex<T>> = 2;
template <class T> struct Lanes<std::complex<T>> {
    using Element = T;
    static constexpr int count = 1;
    static std::complex<T> load(const T* p) { return {p[0], p[1]}; }
    static void store(T* p, std::complex<T> x) { p[0] = x.real(), p[1] = x.imag(); }
};

namespace peer {

template <class V, class T> void put(Batch<T>& x, int i, const V& y) {
    Lanes<V>::store(x.result[0].data() + i * parts<V>, y);
}
template <class V, class T> void put(Batch<T>& x, int i, const Pair<V>& y) {
    Lanes<V>::store(x.result[0].data() + i, y.first);
    Lanes<V>::store(x.result[1].data() + i, y.second);
}

// The loop a user would write: whole vectors V, then the rest in a padded one. A
// result is stored where R says, padding goes to a second batch.
template <class V, class R, class T, class Formula>
[[gnu::always_inline]] inline void loop(Batch<T>& x, Formula formula) {
    constexpr int count = Lanes<V>::count;
    const int n = x.size();
    const auto at = [](const std::vector<T>& v, int i) {
        return Lanes<V>::load(v.data() + i * parts<V>);
    };
    int i = 0;
    for (; i + count <= n; i += count) put<R>(x, i, formula(at(x.a, i), at(x.b, i)));
    if (i == n) return;
    static Batch<T> rest(count, parts<V>, parts<R>);
    for (int j = 0; j < count; ++j)
        for (std::size_t c = 0; c < 2 * parts<V>; ++c)
            rest.at(j, c) = x.at(i + j < n ? i + j : i, c);
    put<R>(rest, 0, formula(at(rest.a, 0), at(rest.b, 0)));
    for (std::size_t j = 0; j < (n - i) * parts<R>; ++j)
        for (int k = 0; k < 2; ++k) x.result[k][i * parts<R> + j] = rest.result[k][j];
}

}  // namespace peer

// Rows over vectors V of a formula in x, or in x and y, with a result R.
template <class V, auto formula, class R = V> void one(Batch<typename Lanes<V>::Element>& batch) {
    peer::loop<V, R>(batch, [](const V& x, const V&) { return formula(x); });
}
template <class V, auto formula, class R = V> void two(Batch<typename Lanes<V>::Element>& batch) {
    peer::loop<V, R>(batch, [](const V& x, const V& y) { return formula(x, y); });
}

}  // namespace kef
