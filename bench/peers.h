// What a user would take instead: functions of other libraries, as rows. A source
// file peers_LIBRARY.cpp registers the rows of one library; it is compiled where
// that library is installed.
#pragma once

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
};

// All rows of an element type.
template <class T> std::vector<Peer<T>>& peers() {
    static std::vector<Peer<T>> rows;
    return rows;
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

namespace peer {

template <class V, class T> void put(Batch<T>& x, int i, const V& y) {
    Lanes<V>::store(x.result[0].data() + i, y);
}
template <class V, class T> void put(Batch<T>& x, int i, const Pair<V>& y) {
    Lanes<V>::store(x.result[0].data() + i, y.first);
    Lanes<V>::store(x.result[1].data() + i, y.second);
}

// The loop a user would write: whole vectors, then the rest in a padded one. A
// result is stored where V says, padding goes to a second batch.
template <class V, class T, class Formula>
[[gnu::always_inline]] inline void loop(Batch<T>& x, Formula formula) {
    constexpr int count = Lanes<V>::count;
    const int n = x.size();
    int i = 0;
    for (; i + count <= n; i += count)
        put<V>(x, i, formula(Lanes<V>::load(x.a.data() + i), Lanes<V>::load(x.b.data() + i)));
    if (i == n) return;
    static Batch<T> rest(count);
    for (int j = 0; j < count; ++j) {
        rest.a[j] = x.a[i + j < n ? i + j : i];
        rest.b[j] = x.b[i + j < n ? i + j : i];
    }
    put<V>(rest, 0, formula(Lanes<V>::load(rest.a.data()), Lanes<V>::load(rest.b.data())));
    for (int j = 0; i + j < n; ++j) {
        x.result[0][i + j] = rest.result[0][j];
        x.result[1][i + j] = rest.result[1][j];
    }
}

}  // namespace peer

// Rows over vectors V of a formula in x, or in x and y.
template <class V, auto formula> void one(Batch<typename Lanes<V>::Element>& batch) {
    peer::loop<V>(batch, [](const V& x, const V&) { return formula(x); });
}
template <class V, auto formula> void two(Batch<typename Lanes<V>::Element>& batch) {
    peer::loop<V>(batch, [](const V& x, const V& y) { return formula(x, y); });
}

}  // namespace kef
