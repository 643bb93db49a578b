// Values and derivatives: Horner's rule on the cell's coefficients, a vector of
// sites at a time. The derivative of order r is sum_k k!/(k-r)! c_k t^(k-r).
#include <limits>

#include "fit/evaluate.h"

namespace kef::fit {

namespace {

using vm::d2;
template <class T> using V = vm::Vector<T>;

constexpr double falling(int k, int r) {  // k!/(k-r)!
    double product = 1;
    for (int i = 0; i < r; ++i) product *= k - i;
    return product;
}

// c[0 .. order-1] of a vector's cells.
template <int order> inline void gather(const double* c, const std::uint32_t* at, d2* to) {
    const double *a = c + at[0], *b = c + at[1];
    for (int k = 0; k + 1 < order; k += 2) {
        const d2 x = vm::load(a + k), y = vm::load(b + k);
        to[k] = __builtin_shufflevector(x, y, 0, 2);
        to[k + 1] = __builtin_shufflevector(x, y, 1, 3);
    }
    if (order % 2 == 1) to[order - 1] = d2{a[order - 1], b[order - 1]};
}
template <int order> inline void gather(const float* c, const std::uint32_t* at, vm::f4* to) {
    const float *p0 = c + at[0], *p1 = c + at[1], *p2 = c + at[2], *p3 = c + at[3];
    if constexpr (order == 4) {
        __m128 a = _mm_loadu_ps(p0), b = _mm_loadu_ps(p1), e = _mm_loadu_ps(p2),
               f = _mm_loadu_ps(p3);
        _MM_TRANSPOSE4_PS(a, b, e, f);
        to[0] = (vm::f4)a, to[1] = (vm::f4)b, to[2] = (vm::f4)e, to[3] = (vm::f4)f;
    } else {
        for (int k = 0; k < order; ++k) to[k] = vm::f4{p0[k], p1[k], p2[k], p3[k]};
    }
}

// Derivative r of n sites, whose cells' coefficients stand at c + at[j].
template <class T>
using Kernel = void (*)(const T* c, const std::uint32_t* at, const T* t, std::uint32_t n,
                        std::int64_t order, std::int64_t r, T* value);

template <class T, int order, int r>
void fixed_order(const T* c, const std::uint32_t* at, const T* t, std::uint32_t n, std::int64_t,
                 std::int64_t, T* value) {
    for (std::uint32_t j = 0; j < n; j += lanes<T>) {
        V<T> k[order];
        gather<order>(c, at + j, k);
        const V<T> tj = vm::load(t + j);
        V<T> sum = k[order - 1] * T(falling(order - 1, r));
#pragma GCC unroll 4
        for (int i = order - 2; i >= r; --i) sum = sum * tj + k[i] * T(falling(i, r));
        vm::store(value + j, sum);
    }
}

template <class T>
void any_order(const T* c, const std::uint32_t* at, const T* t, std::uint32_t n, std::int64_t order,
               std::int64_t r, T* value) {
    for (std::uint32_t j = 0; j < n; ++j) {
        T sum = 0;
        for (std::int64_t k = order - 1; k >= r; --k) {
            T factor = 1;
            for (std::int64_t i = 0; i < r; ++i) factor *= static_cast<T>(k - i);
            sum = sum * t[j] + c[at[j] + k] * factor;
        }
        value[j] = sum;
    }
}

template <class T> Kernel<T> kernel_of(std::int64_t order, std::int64_t r) {
    constexpr Kernel<T> fixed[3][4] = {
        {fixed_order<T, 2, 0>, fixed_order<T, 2, 1>},
        {fixed_order<T, 3, 0>, fixed_order<T, 3, 1>, fixed_order<T, 3, 2>},
        {fixed_order<T, 4, 0>, fixed_order<T, 4, 1>, fixed_order<T, 4, 2>, fixed_order<T, 4, 3>},
    };
    return order >= 2 && order <= 4 && r < order ? fixed[order - 2][r] : any_order<T>;
}

// The orders asked for, read by the task's integer width.
class Orders {
public:
    Orders(const Task& task, std::int64_t n, const void* flags)
        : wide_(task.int64_flag != 0), n_(n), flags_(flags) {}

    std::size_t count() const {
        std::size_t count = 0;
        each_order([&](std::int64_t, std::size_t) { ++count; });
        return count;
    }
    // Calls use(order, position).
    template <class Use> void each_order(Use use) const {
        std::size_t position = 0;
        for (std::int64_t r = 0; r < n_; ++r)
            if (wide_ ? static_cast<const std::int64_t*>(flags_)[r] != 0
                      : static_cast<const std::int32_t*>(flags_)[r] != 0)
                use(r, position++);
    }

private:
    bool wide_;
    std::int64_t n_;
    const void* flags_;
};

// The places of the results.
template <class T> struct Results {
    T* first;
    std::size_t nsite, ny, m;
    bool columns;

    // Stores one derivative of one function at the n sites from `from` on.
    void store(const T* value, std::size_t from, std::uint32_t n, std::size_t function,
               std::size_t position) const {
        const std::size_t stride = columns ? ny * m : m;
        T* to = first + (columns ? (from * ny + function) * m : (function * nsite + from) * m) +
                position;
        if (stride == 1) {
            std::copy_n(value, n, to);
        } else {
            for (std::uint32_t j = 0; j < n; ++j) to[j * stride] = value[j];
        }
    }
};

// Locates the sites block by block, stores their cells where the caller wants them, and
// hands each block to use(located).
template <class T, class Use>
void each_block(const Task& task, const Partition<T>& partition, const Sites<T>& sites, void* cell,
                Use use) {
    with_search(task, partition, SearchMethod::automatic, sites.ascending(), sites.size(),
                [&]<class Search>(const Search& search) {
                    Located<T, Search> located(partition, search, sites);
                    while (located.next()) {
                        if (cell != nullptr && task.int64_flag != 0)
                            located.store(static_cast<std::int64_t*>(cell));
                        else if (cell != nullptr) located.store(static_cast<std::int32_t*>(cell));
                        use(located);
                    }
                });
}

template <class T>
void evaluate_spline(const Task& task, const Sites<T>& sites, const Orders& orders,
                     const Results<T>& results, void* cell) {
    const CellMap<T> map(task);
    const std::size_t order = static_cast<std::size_t>(task.order);
    const Coefficients<T> coefficients(task, 0, order);
    const auto stride = static_cast<std::uint32_t>(coefficients.stride);
    alignas(16) T distance[block_size], value[block_size];
    std::uint32_t place[block_size];
    each_block(task, map.partition(), sites, cell, [&](const auto& b) {
        map.map(b.cell, b.site, b.n, stride, place, distance);
        for (std::size_t i = 0; i < results.ny; ++i) {
            const T* c = Coefficients<T>(task, i, order).first;
            orders.each_order([&](std::int64_t r, std::size_t position) {
                kernel_of<T>(task.order, r)(c, place, distance, whole_groups(b.n), task.order, r,
                                            value);
                if (!b.all_inside) [[unlikely]]
                    for (std::uint32_t j = 0; j < b.n; ++j)
                        if (b.site[j] != b.site[j]) value[j] = b.site[j];
                results.store(value, b.from, b.n, i, position);
            });
        }
    });
}

template <class T>
void look_up(const Task& task, const Sites<T>& sites, const Orders& orders,
             const Results<T>& results, void* cell) {
    const Partition<T> partition(task);
    T value[block_size];
    each_block(task, partition, sites, cell, [&](const auto& b) {
        for (std::size_t i = 0; i < results.ny; ++i) {
            const Values<T> y(task, i);
            orders.each_order([&](std::int64_t r, std::size_t position) {
                for (std::uint32_t j = 0; j < b.n; ++j) {
                    const T q = b.site[j];
                    const std::uint32_t k = q == partition.last ? partition.n - 1 : b.cell[j];
                    value[j] = r == 0 && partition.x[k] == q ? y.first[k * y.stride]
                                                             : std::numeric_limits<T>::quiet_NaN();
                }
                results.store(value, b.from, b.n, i, position);
            });
        }
    });
}

template <class T> std::int32_t check_lookup(const Task& task) {
    if (!is_storage_hint(task.y_hint)) return DF_STATUS_Y_HINT;
    if (task.ny <= 0) return DF_STATUS_NY;
    if (!has_values(task)) return DF_STATUS_Y;
    return partition_is_accepted<T>(task) ? DF_STATUS_OK : DF_STATUS_X;
}

template <class T>
std::int32_t interpolate(const Task* task, std::int64_t method, std::int64_t nsite, const T* site,
                         std::int64_t site_hint, std::int64_t norder, const void* derivatives,
                         T* result, std::int64_t result_hint, void* cell) {
    if (const std::int32_t status = check_precision<T>(task)) return status;
    if (method != DF_SPLINE && method != DF_LOOKUP) return DF_STATUS_METHOD;
    if (const std::int32_t status = check_sites(nsite, {site_hint}, {site})) return status;
    if (norder <= 0 || derivatives == nullptr) return DF_STATUS_DERIVATIVES;
    const Orders orders(*task, norder, derivatives);
    const std::size_t m = orders.count();
    if (m == 0) return DF_STATUS_DERIVATIVES;
    if (nsite > 0 && result == nullptr) return DF_STATUS_RESULTS;
    if (!is_result_hint(result_hint)) return DF_STATUS_RESULT_HINT;
    const bool spline = method == DF_SPLINE;
    if (const std::int32_t status = spline ? check_spline<T>(*task) : check_lookup<T>(*task))
        return status;
    if (nsite == 0) return DF_STATUS_OK;
    const Sites<T> sites(site, nsite, site_hint);
    const Results<T> results = {result, static_cast<std::size_t>(nsite),
                                static_cast<std::size_t>(task->ny), m,
                                result_hint == DF_BY_COLUMNS};
    (spline ? evaluate_spline<T> : look_up<T>)(*task, sites, orders, results, cell);
    return DF_STATUS_OK;
}

}  // namespace

}  // namespace kef::fit

using namespace kef::fit;

#define KEF_DF_INTERPOLATE(letter, T)                                                             \
    int32_t kef_df_kernel_##letter##DFInterpolate1D(                                              \
        const kef_df_task* task, int64_t method, int64_t nsite, const T* site, int64_t site_hint, \
        int64_t norder, const void* derivatives, T* result, int64_t result_hint, void* cell) {    \
        return interpolate(task, method, nsite, site, site_hint, norder, derivatives, result,     \
                           result_hint, cell);                                                    \
    }
KEF_DF_INTERPOLATE(d, double)
KEF_DF_INTERPOLATE(s, float)
