/// Statistics: estimates that are carried from block to block, and computations of one sample.
///
///   kef::Statistics<> s(3, kef::Estimate::mean | kef::Estimate::covariance);
///   s.add(kef::Sample(block, 3));                 any number of blocks
///   s[kef::Estimate::covariance](0, 1)            of all observations so far
///   s.merge(other);                               what another one has seen
///   kef::quantiles(kef::Sample(x, 3), orders)     of one sample
///
/// Formulas, sources and bounds: kef_stats.h and docs/statistics.md. Status codes of the library
/// are thrown as kef::StatusError, wrong arguments as kef::ArgumentError.
#ifndef KEF_STATS_HPP
#define KEF_STATS_HPP

#include <array>
#include <bit>
#include <cmath>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <ranges>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "kef/error.hpp"
#include "kef_stats.h"

namespace kef {

/// Where the values of an observation stand.
enum class Order : std::int32_t {
    by_observation = VTS_SS_STORAGE_COLUMNS,  ///< all variables of observation 0, of 1, ...
    by_variable = VTS_SS_STORAGE_ROWS         ///< all observations of variable 0, of 1, ...
};

/// A matrix of numbers of its own, by rows.
template <class T = double> class Matrix {
public:
    Matrix() = default;
    Matrix(std::size_t rows, std::size_t columns, T value = T())
        : rows_(rows), columns_(columns), values_(product(rows, columns), value) {}
    /// From rows * columns numbers.
    Matrix(std::size_t rows, std::size_t columns, std::vector<T> values)
        : rows_(rows), columns_(columns), values_(std::move(values)) {
        check().require_size(values_.size(), product(rows, columns), "values");
    }
    Matrix(const Matrix&) = default;
    Matrix& operator=(const Matrix&) = default;
    /// What was moved from is empty.
    Matrix(Matrix&& other) noexcept
        : rows_(std::exchange(other.rows_, 0)),
          columns_(std::exchange(other.columns_, 0)),
          values_(std::exchange(other.values_, {})) {}
    Matrix& operator=(Matrix&& other) noexcept {
        Matrix taken(std::move(other));
        std::swap(rows_, taken.rows_);
        std::swap(columns_, taken.columns_);
        values_.swap(taken.values_);
        return *this;
    }

    std::size_t rows() const noexcept { return rows_; }
    std::size_t columns() const noexcept { return columns_; }
    T& operator()(std::size_t i, std::size_t j) { return values_[place(i, j)]; }
    const T& operator()(std::size_t i, std::size_t j) const { return values_[place(i, j)]; }
    std::span<T> row(std::size_t i) { return {values_.data() + start(i), columns_}; }
    std::span<const T> row(std::size_t i) const { return {values_.data() + start(i), columns_}; }
    T* data() noexcept { return values_.data(); }
    const T* data() const noexcept { return values_.data(); }
    std::size_t size() const noexcept { return values_.size(); }

private:
    static detail::Checker check() {
        return {Family::statistics, VTS_SS_STATUS_BAD_DIMENSION, "kef::Matrix"};
    }
    static std::size_t product(std::size_t rows, std::size_t columns) {
        check().require(columns == 0 || rows <= std::size_t(-1) / columns, "rows",
                        "make with columns a matrix too large");
        return rows * columns;
    }
    std::size_t start(std::size_t i) const {
        check().require(i < rows_, "i", "is not below rows()");
        return i * columns_;
    }
    std::size_t place(std::size_t i, std::size_t j) const {
        const std::size_t first = start(i);
        check().require(j < columns_, "j", "is not below columns()");
        return first + j;
    }

    std::size_t rows_ = 0, columns_ = 0;
    std::vector<T> values_;
};

/// A view of observations of `variables` variables, with a weight each or without weights. The
/// number of observations follows from the sizes.
template <std::floating_point T> class Sample {
public:
    Sample(std::span<const T> x, std::size_t variables, Order order = Order::by_observation,
           std::span<const T> weights = {})
        : x_(x), weights_(weights), variables_(variables), order_(order) {
        const detail::Checker check{Family::statistics, VTS_SS_STATUS_BAD_COUNT, "kef::Sample"};
        check.require_data(x, "x");
        check.require_data(weights, "weights");
        check.require(variables > 0, "variables", "is zero");
        observations_ = x.size() / variables;
        if (observations_ * variables != x.size())
            check.refuse("x", "has " + std::to_string(x.size()) + " elements, not a multiple of " +
                                  std::to_string(variables) + " variables");
        check.require(order == Order::by_observation || order == Order::by_variable, "order",
                      "is not one of Order");
        if (!weights.empty()) check.require_size(weights.size(), observations(), "weights");
    }

    std::span<const T> x() const noexcept { return x_; }
    std::span<const T> weights() const noexcept { return weights_; }
    std::size_t variables() const noexcept { return variables_; }
    std::size_t observations() const noexcept { return observations_; }
    Order order() const noexcept { return order_; }

private:
    std::span<const T> x_, weights_;
    std::size_t variables_, observations_;
    Order order_;
};
template <class R, class... More> Sample(R&&, More&&...) -> Sample<std::ranges::range_value_t<R>>;

/// Estimates of Statistics; they are combined by |.
enum class Estimate : std::uint64_t {
    none = 0,
    mean = VTS_SS_ESTIMATE_MEAN,
    raw_moment_2 = VTS_SS_ESTIMATE_RAW_MOMENT_2,
    raw_moment_3 = VTS_SS_ESTIMATE_RAW_MOMENT_3,
    raw_moment_4 = VTS_SS_ESTIMATE_RAW_MOMENT_4,
    variance = VTS_SS_ESTIMATE_CENTRAL_MOMENT_2,  ///< the unbiased one, divisor n - 1
    central_moment_3 = VTS_SS_ESTIMATE_CENTRAL_MOMENT_3,
    central_moment_4 = VTS_SS_ESTIMATE_CENTRAL_MOMENT_4,
    kurtosis = VTS_SS_ESTIMATE_KURTOSIS,
    skewness = VTS_SS_ESTIMATE_SKEWNESS,
    variation = VTS_SS_ESTIMATE_VARIATION,
    minimum = VTS_SS_ESTIMATE_MINIMUM,
    maximum = VTS_SS_ESTIMATE_MAXIMUM,
    covariance = VTS_SS_ESTIMATE_COVARIANCE,
    correlation = VTS_SS_ESTIMATE_CORRELATION,
    sum = VTS_SS_ESTIMATE_SUM,
    raw_sum_2 = VTS_SS_ESTIMATE_RAW_SUM_2,
    raw_sum_3 = VTS_SS_ESTIMATE_RAW_SUM_3,
    raw_sum_4 = VTS_SS_ESTIMATE_RAW_SUM_4,
    central_sum_2 = VTS_SS_ESTIMATE_CENTRAL_SUM_2,
    central_sum_3 = VTS_SS_ESTIMATE_CENTRAL_SUM_3,
    central_sum_4 = VTS_SS_ESTIMATE_CENTRAL_SUM_4,
    cross_product = VTS_SS_ESTIMATE_CROSS_PRODUCT
};
constexpr Estimate operator|(Estimate a, Estimate b) {
    return Estimate(std::uint64_t(a) | std::uint64_t(b));
}
constexpr Estimate operator&(Estimate a, Estimate b) {
    return Estimate(std::uint64_t(a) & std::uint64_t(b));
}

/// How Statistics passes over the observations (docs/statistics.md).
enum class Method : std::int32_t {
    tiled = VTS_SS_METHOD_TILED,            ///< the fastest and most accurate
    recurrence = VTS_SS_METHOD_RECURRENCE,  ///< for weights of both signs
    raw = VTS_SS_METHOD_RAW                 ///< plain sums of powers
};

/// A result with its name and shape: p values, or a p by p matrix by rows. A view.
template <class T> struct Result {
    std::string_view name;
    std::span<const T> values;
    std::size_t rows, columns;

    T operator[](std::size_t i) const {
        check(i < values.size(), "i");
        return values[i];
    }
    T operator()(std::size_t i, std::size_t j) const {
        check(i < rows, "i");
        check(j < columns, "j");
        return values[i * columns + j];
    }

private:
    static void check(bool holds, const char* argument) {
        detail::Checker{Family::statistics, VTS_SS_STATUS_BAD_DIMENSION, "kef::Result"}.require(
            holds, argument, "is outside the shape");
    }
};

namespace detail {

/// One row for each estimate.
struct EstimateRow {
    Estimate estimate;
    std::string_view name;
    std::int64_t id, storage_id;  // no storage: p values
    Estimate needs;               // arrays that carry its state from block to block
    Estimate with;                // estimates to ask for beside it, for the same reason
};
using enum Estimate;
inline constexpr Estimate raw_2 = raw_moment_2, raw_23 = raw_2 | raw_moment_3,
                          raw_234 = raw_23 | raw_moment_4;
// clang-format off
inline constexpr EstimateRow estimate_rows[] = {
    {mean, "mean", VTS_SS_ID_MEAN, 0, none, none},
    {raw_moment_2, "raw_moment_2", VTS_SS_ID_RAW_MOMENT_2, 0, none, none},
    {raw_moment_3, "raw_moment_3", VTS_SS_ID_RAW_MOMENT_3, 0, none, none},
    {raw_moment_4, "raw_moment_4", VTS_SS_ID_RAW_MOMENT_4, 0, none, none},
    {variance, "variance", VTS_SS_ID_CENTRAL_MOMENT_2, 0, mean | raw_2, none},
    {central_moment_3, "central_moment_3", VTS_SS_ID_CENTRAL_MOMENT_3, 0, mean | raw_23, none},
    {central_moment_4, "central_moment_4", VTS_SS_ID_CENTRAL_MOMENT_4, 0, mean | raw_234, none},
    {kurtosis, "kurtosis", VTS_SS_ID_KURTOSIS, 0, mean | raw_234 | variance | central_moment_4, none},
    {skewness, "skewness", VTS_SS_ID_SKEWNESS, 0, mean | raw_23 | variance | central_moment_3, none},
    {variation, "variation", VTS_SS_ID_VARIATION, 0, mean | raw_2 | variance, none},
    {minimum, "minimum", VTS_SS_ID_MINIMUM, 0, none, none},
    {maximum, "maximum", VTS_SS_ID_MAXIMUM, 0, none, none},
    {covariance, "covariance", VTS_SS_ID_COVARIANCE, VTS_SS_ID_COVARIANCE_STORAGE, mean, none},
    {correlation, "correlation", VTS_SS_ID_CORRELATION, VTS_SS_ID_CORRELATION_STORAGE, mean | raw_2, variance},
    {sum, "sum", VTS_SS_ID_SUM, 0, none, none},
    {raw_sum_2, "raw_sum_2", VTS_SS_ID_RAW_SUM_2, 0, none, none},
    {raw_sum_3, "raw_sum_3", VTS_SS_ID_RAW_SUM_3, 0, none, none},
    {raw_sum_4, "raw_sum_4", VTS_SS_ID_RAW_SUM_4, 0, none, none},
    {central_sum_2, "central_sum_2", VTS_SS_ID_CENTRAL_SUM_2, 0, mean | raw_2, none},
    {central_sum_3, "central_sum_3", VTS_SS_ID_CENTRAL_SUM_3, 0, mean | raw_23, central_sum_2},
    {central_sum_4, "central_sum_4", VTS_SS_ID_CENTRAL_SUM_4, 0, mean | raw_234, central_sum_2 | central_sum_3},
    {cross_product, "cross_product", VTS_SS_ID_CROSS_PRODUCT, VTS_SS_ID_CROSS_PRODUCT_STORAGE, mean, none},
};
// clang-format on
inline constexpr Estimate extremes = minimum | maximum;

constexpr bool has(Estimate set, Estimate one) { return (set & one) != none; }

inline Checker stats_argument(const char* function) {
    return {Family::statistics, VTS_SS_STATUS_BAD_PARAMETERS, function};
}
inline Checker stats_shape(const char* function) {
    return {Family::statistics, VTS_SS_STATUS_BAD_DIMENSION, function};
}

/// A task with the integers that it points to, all of 64 bits. It stays where it is.
template <class T> class Task {
public:
    Task(const char* function, std::size_t p) : function_(function), p_(std::int64_t(p)) {
        check(p > 0, "variables", "is zero");
        const auto make = by_type<T>(__vtssSSNewTask, __vtsdSSNewTask);
        status(make(&task_, &p_, &n_, &storage_, nullptr, nullptr, nullptr, 1));
    }
    Task(const Task&) = delete;
    Task& operator=(const Task&) = delete;
    ~Task() { __vtsSSDeleteTask(&task_); }

    /// Data of the next computation.
    void observe(const Sample<T>& sample) {
        stats_shape(function_).require(sample.variables() == std::size_t(p_), "sample",
                                       "has another number of variables");
        stats_argument(function_).require(
            sample.observations() <= std::size_t(std::numeric_limits<std::int64_t>::max()),
            "sample", "is too long");
        n_ = std::int64_t(sample.observations());
        storage_ = std::int64_t(sample.order());
        if (sample.x().data() != x_) set(VTS_SS_ID_X, x_ = sample.x().data());
        if (!sample.weights().empty()) {
            set(VTS_SS_ID_WEIGHTS, sample.weights().data());
            weighted_ = true;
        } else if (weighted_) {  // weights cannot be taken away
            ones_.resize(sample.observations(), T(1));
            set(VTS_SS_ID_WEIGHTS, ones_.data());
        }
    }
    void set(std::int64_t id, const T* array) {
        status(by_type<T>(__vtssSSEditTask, __vtsdSSEditTask)(task_, id, array));
    }
    /// The address must stay.
    void set_integers(std::int64_t id, const std::int64_t* integers) {
        status(__vtsiSSEditTask(task_, id, integers));
    }
    void set_matrix(std::int64_t id, std::int64_t storage_id, const T* matrix) {
        set(id, matrix);
        set_integers(storage_id, &full_layout);
    }
    /// A computation; gives its status where that is one of the two.
    template <class Computation>
    std::int32_t compute(Computation computation, std::uint64_t estimates = 0,
                         std::int32_t method = 0) {
        return computation(task_, estimates, method);
    }
    void status(std::int32_t status) const { stats_argument(function_).status(status); }
    void check(bool holds, const char* argument, const char* words) const {
        stats_argument(function_).require(holds, argument, words);
    }
    kef_ss_task* handle() const { return task_; }
    const char* function() const { return function_; }

    static constexpr std::int64_t full_layout = VTS_SS_LAYOUT_FULL;
    static constexpr std::int64_t by_rows = VTS_SS_STORAGE_ROWS;

private:
    const char* function_;
    kef_ss_task* task_ = nullptr;
    std::int64_t p_, n_ = 0, storage_ = VTS_SS_STORAGE_COLUMNS;
    const T* x_ = nullptr;
    bool weighted_ = false;
    std::vector<T> ones_;
};

}  // namespace detail

/// Estimates of observations that come block by block: moments, sums, covariances, extremes. After
/// each block they are those of all blocks so far, whatever the blocks are. Before the first one
/// they are NaN. Copies go on by themselves; an object that was moved from takes assignment and
/// destruction, anything else throws.
template <std::floating_point T = double> class Statistics {
public:
    Statistics(std::size_t variables, Estimate estimates, Method method = Method::tiled)
        : state_(std::make_unique<State>(variables, estimates, method)) {}
    Statistics(const Statistics& other) : Statistics(other.state("kef::Statistics")) {
        merge(other);
    }
    Statistics(Statistics&&) noexcept = default;
    Statistics& operator=(const Statistics& other) {
        if (this != &other) *this = Statistics(other);
        return *this;
    }
    Statistics& operator=(Statistics&& other) noexcept {
        if (this != &other) state_ = std::move(other.state_);
        return *this;
    }

    /// Adds a block. A block that is refused leaves everything as it was; an empty one does
    /// nothing.
    void add(const Sample<T>& block) {
        State& s = state("kef::Statistics::add");
        detail::stats_shape("kef::Statistics::add")
            .require(block.variables() == s.p, "block", "has another number of variables");
        if (block.observations() == 0) return;
        s.task.observe(block);
        const auto basic = detail::by_type<T>(_vtssSSBasic, _vtsdSSBasic);
        if (s.basic != Estimate::none)
            s.task.status(s.task.compute(basic, std::uint64_t(s.basic), std::int32_t(s.method)));
        const auto minmax = detail::by_type<T>(_vtssSSMinmax, _vtsdSSMinmax);
        if (const Estimate extremes = s.asked & detail::extremes; extremes != Estimate::none)
            s.task.status(s.task.compute(minmax, std::uint64_t(extremes), VTS_SS_METHOD_MINMAX));
        s.count += block.observations();
    }
    /// Adds what another one has seen, of the same variables, estimates and method.
    void merge(const Statistics& other) {
        State& s = state("kef::Statistics::merge");
        const State& o = other.state("kef::Statistics::merge");
        const detail::Checker check = detail::stats_shape("kef::Statistics::merge");
        check.require(&s != &o, "other", "is the object itself");
        check.require(s.p == o.p, "other", "has another number of variables");
        check.require(s.asked == o.asked, "other", "has other estimates");
        check.require(s.method == o.method, "other", "has another method");
        if (o.count == 0) return;
        s.task.status(detail::by_type<T>(_vtssSSMerge, _vtsdSSMerge)(
            s.task.handle(), o.task.handle(),
            std::uint64_t(s.basic) | std::uint64_t(s.asked & detail::extremes),
            std::int32_t(s.method)));
        s.count += o.count;
    }

    /// One estimate that was asked for.
    Result<T> operator[](Estimate estimate) const {
        const State& s = state("kef::Statistics");
        for (const detail::EstimateRow& row : detail::estimate_rows)
            if (row.estimate == estimate && detail::has(s.asked, estimate)) return s.result(row);
        refuse_estimate("estimate");
    }
    /// By its name, which is that of the enumerator.
    Result<T> operator[](std::string_view name) const {
        const State& s = state("kef::Statistics");
        for (const detail::EstimateRow& row : detail::estimate_rows)
            if (row.name == name && detail::has(s.asked, row.estimate)) return s.result(row);
        refuse_estimate("name");
    }
    /// All that were asked for.
    std::vector<Result<T>> results() const {
        const State& s = state("kef::Statistics::results");
        std::vector<Result<T>> all;
        for (const detail::EstimateRow& row : detail::estimate_rows)
            if (detail::has(s.asked, row.estimate)) all.push_back(s.result(row));
        return all;
    }

    std::size_t variables() const { return state("kef::Statistics::variables").p; }
    /// Observations so far.
    std::uint64_t count() const { return state("kef::Statistics::count").count; }
    /// The sum of their weights.
    T weight() const { return state("kef::Statistics::weight").weights[0]; }

private:
    struct State {
        std::size_t p;
        Estimate asked, basic = Estimate::none;
        Method method;
        std::uint64_t count = 0;
        detail::Task<T> task;
        std::array<T, 2> weights{};
        std::array<std::vector<T>, std::size(detail::estimate_rows)> arrays;

        State(std::size_t variables, Estimate estimates, Method how)
            : p(variables), asked(estimates), method(how), task("kef::Statistics", variables) {
            using namespace detail;
            Estimate known = Estimate::none, carried = estimates;
            for (const EstimateRow& row : estimate_rows) known = known | row.estimate;
            task.check(estimates != Estimate::none && (estimates | known) == known, "estimates",
                       "is empty, or not of Estimate");
            task.check(how == Method::tiled || how == Method::recurrence || how == Method::raw,
                       "method", "is not one of Method");
            for (const EstimateRow& row : estimate_rows) {
                if (!has(estimates, row.estimate)) continue;
                if (!has(row.estimate, extremes)) basic = basic | row.estimate | row.with;
                carried = carried | row.needs | row.with;
            }
            task.set(VTS_SS_ID_ACCUMULATED_WEIGHTS, weights.data());
            for (std::size_t i = 0; i < arrays.size(); ++i) {
                const EstimateRow& row = estimate_rows[i];
                if (!has(carried, row.estimate)) continue;
                if (row.storage_id && p > std::size_t(-1) / sizeof(T) / p)
                    task.check(false, "variables", "makes a matrix too large");
                arrays[i].assign(row.storage_id ? p * p : p, std::numeric_limits<T>::quiet_NaN());
                if (row.storage_id) task.set_matrix(row.id, row.storage_id, arrays[i].data());
                else task.set(row.id, arrays[i].data());
            }
        }
        Result<T> result(const detail::EstimateRow& row) const {
            return {row.name, arrays[std::size_t(&row - detail::estimate_rows)], p,
                    row.storage_id ? p : 1};
        }
    };
    // Of the same kind; it has seen nothing.
    explicit Statistics(const State& like) : Statistics(like.p, like.asked, like.method) {}
    State& state(const char* function) const {
        detail::stats_argument(function).require(state_ != nullptr, "object", "was moved from");
        return *state_;
    }
    [[noreturn]] static void refuse_estimate(const char* argument) {
        detail::stats_argument("kef::Statistics")
            .refuse(argument, "is no estimate that was asked for");
    }

    std::unique_ptr<State> state_;
};

/// Quantiles of observations that come block by block, in bounded memory: of all N so far the rank
/// of a quantile of order q is within epsilon N of q N, for any data in any order.
template <std::floating_point T = double> class StreamQuantiles {
public:
    /// 2^-20 <= epsilon <= 1/2.
    explicit StreamQuantiles(std::size_t variables, T epsilon = T(0.001))
        : state_(std::make_unique<State>("kef::StreamQuantiles", variables, epsilon)) {}
    StreamQuantiles(const StreamQuantiles& other)
        : StreamQuantiles(other.state("kef::StreamQuantiles")) {
        merge(other);
    }
    StreamQuantiles(StreamQuantiles&&) noexcept = default;
    StreamQuantiles& operator=(const StreamQuantiles& other) {
        if (this != &other) *this = StreamQuantiles(other);
        return *this;
    }
    StreamQuantiles& operator=(StreamQuantiles&& other) noexcept {
        if (this != &other) state_ = std::move(other.state_);
        return *this;
    }

    /// Adds a block without weights.
    void add(const Sample<T>& block) {
        State& s = state("kef::StreamQuantiles::add");
        const detail::Checker check = detail::stats_argument("kef::StreamQuantiles::add");
        check.require(block.variables() == s.p, "block", "has another number of variables");
        check.require(block.weights().empty(), "block", "has weights");
        if (block.observations() == 0) return;
        s.task.observe(block);
        s.task.status(
            s.task.compute(detail::by_type<T>(_vtssSSStreamQuantiles, _vtsdSSStreamQuantiles)));
        s.count += block.observations();
    }
    /// Adds what another one of the same variables and epsilon has seen.
    void merge(const StreamQuantiles& other) {
        State& s = state("kef::StreamQuantiles::merge");
        const State& o = other.state("kef::StreamQuantiles::merge");
        const detail::Checker check = detail::stats_shape("kef::StreamQuantiles::merge");
        check.require(&s != &o, "other", "is the object itself");
        check.require(s.p == o.p, "other", "has another number of variables");
        check.require(s.epsilon == o.epsilon, "other", "has another epsilon");
        if (o.count != 0) s.join(o);
    }
    /// One row for each variable, one column for each order in [0, 1]; NaN before the first block.
    Matrix<T> quantiles(std::span<const T> orders) const {
        const State& s = state("kef::StreamQuantiles::quantiles");
        const detail::Checker check = detail::stats_argument("kef::StreamQuantiles::quantiles");
        check.require_data(orders, "orders");
        for (const T q : orders) check.require(q >= 0 && q <= 1, "orders", "are not in [0, 1]");
        Matrix<T> result(s.p, orders.size(), std::numeric_limits<T>::quiet_NaN());
        if (s.count == 0 || orders.empty()) return result;
        // A call that asks adds a block; a merge does not.
        State all("kef::StreamQuantiles::quantiles", s.p, s.epsilon);
        all.order_count = std::int64_t(orders.size());
        all.task.set(VTS_SS_ID_STREAM_QUANTILE_ORDERS, orders.data());
        all.task.set(VTS_SS_ID_STREAM_QUANTILES, result.data());
        all.join(s);
        return result;
    }
    /// What it has seen as bytes, the same on every system: variables, epsilon (bits of a double)
    /// and count, 8 bytes each, the least first, then the sketches, if there are any.
    std::vector<std::byte> image() const {
        const State& s = state("kef::StreamQuantiles::image");
        const std::int64_t size = s.count == 0 ? 0 : __vtsSSGetStreamQuantilesSize(s.task.handle());
        if (size < 0) s.task.status(std::int32_t(size));
        std::vector<std::byte> bytes(24 + std::size_t(size));
        const std::uint64_t head[3] = {s.p, std::bit_cast<std::uint64_t>(double(s.epsilon)),
                                       s.count};
        for (std::size_t i = 0; i < 24; ++i) bytes[i] = std::byte(head[i / 8] >> (8 * (i % 8)));
        if (size > 0) s.task.status(__vtsSSSaveStreamQuantiles(s.task.handle(), &bytes[24]));
        return bytes;
    }
    /// From an image of an object of the same T; a damaged one is refused (damage to the count
    /// alone, which no quantile depends on, is not seen).
    static StreamQuantiles from_image(std::span<const std::byte> image) {
        const detail::Checker check{Family::statistics, VTS_SS_STATUS_BAD_IMAGE,
                                    "kef::StreamQuantiles::from_image"};
        check.require_data(image, "image");
        check.require(image.size() >= 24, "image", "is too short");
        std::uint64_t head[3] = {};
        for (std::size_t i = 24; i-- > 0;) head[i / 8] = head[i / 8] << 8 | std::uint64_t(image[i]);
        const T epsilon = T(std::bit_cast<double>(head[1]));
        check.require(head[0] > 0 && head[0] <= std::size_t(-1) && epsilon >= T(0x1p-20) &&
                          epsilon <= T(0.5) && (head[2] == 0) == (image.size() == 24),
                      "image", "is damaged");
        StreamQuantiles result(static_cast<std::size_t>(head[0]), epsilon);
        if (head[2] == 0) return result;
        check.status(__vtsSSLoadStreamQuantiles(result.state_->task.handle(), &image[24],
                                                image.size() - 24));
        result.state_->count = head[2];
        return result;
    }
    std::size_t variables() const { return state("kef::StreamQuantiles::variables").p; }
    std::uint64_t count() const { return state("kef::StreamQuantiles::count").count; }

private:
    struct State {
        std::size_t p;
        T epsilon;
        std::uint64_t count = 0;
        std::int64_t order_count = 0, parameter_count = 1;
        std::array<T, 1> unused{};
        detail::Task<T> task;

        State(const char* function, std::size_t variables, T bound)
            : p(variables), epsilon(bound), task(function, variables) {
            task.check(bound >= T(0x1p-20) && bound <= T(0.5), "epsilon", "is not in [2^-20, 1/2]");
            task.set_integers(VTS_SS_ID_STREAM_QUANTILE_ORDER_COUNT, &order_count);
            task.set_integers(VTS_SS_ID_STREAM_QUANTILE_PARAMETER_COUNT, &parameter_count);
            task.set(VTS_SS_ID_STREAM_QUANTILE_PARAMETERS, &epsilon);
            task.set(VTS_SS_ID_STREAM_QUANTILE_ORDERS, unused.data());
            task.set(VTS_SS_ID_STREAM_QUANTILES, unused.data());
        }
        void join(const State& other) {
            task.status(detail::by_type<T>(_vtssSSMerge, _vtsdSSMerge)(
                task.handle(), other.task.handle(), VTS_SS_ESTIMATE_STREAM_QUANTILES,
                VTS_SS_METHOD_TILED));
            count += other.count;
        }
    };
    explicit StreamQuantiles(const State& like) : StreamQuantiles(like.p, like.epsilon) {}
    State& state(const char* function) const {
        detail::stats_argument(function).require(state_ != nullptr, "object", "was moved from");
        return *state_;
    }

    std::unique_ptr<State> state_;
};

// ---- computations of one sample ------------------------------------------------

namespace detail {

inline void require_orders(const Checker& check, const auto& orders) {
    check.require_data(orders, "orders");
    check.require(!orders.empty(), "orders", "are empty");
    for (const auto q : orders) check.require(q >= 0 && q <= 1, "orders", "are not in [0, 1]");
}

/// A task over a sample with observations.
template <class T> class SampleTask : public Task<T> {
public:
    SampleTask(const char* function, const Sample<T>& sample)
        : Task<T>(function, sample.variables()) {
        this->check(sample.observations() > 0, "sample", "is empty");
        this->observe(sample);
    }
};

/// A square matrix of p rows.
template <class T>
void require_square(const char* function, const Matrix<T>& matrix, std::size_t p,
                    const char* argument) {
    if (matrix.rows() != p || matrix.columns() != p) [[unlikely]]
        stats_shape(function).refuse(argument, "is " + std::to_string(matrix.rows()) + " by " +
                                                   std::to_string(matrix.columns()) + ", not " +
                                                   std::to_string(p) + " by " + std::to_string(p));
}

/// False for a computation that has reached its limit of iterations.
template <class T, class Computation> bool settled(Task<T>& task, Computation computation) {
    const std::int32_t status = task.compute(computation);
    if (status == VTS_SS_STATUS_ITERATION_LIMIT) return false;
    task.status(status);
    return true;
}

}  // namespace detail

/// Quantiles (definition 7 of Hyndman & Fan, as R and NumPy): one row for each variable, one column
/// for each order in [0, 1].
template <std::floating_point T>
Matrix<T> quantiles(const Sample<T>& sample, std::span<const std::type_identity_t<T>> orders) {
    detail::SampleTask<T> task("kef::quantiles", sample);
    detail::require_orders(detail::stats_argument(task.function()), orders);
    const std::int64_t count = std::int64_t(orders.size());
    Matrix<T> result(sample.variables(), orders.size());
    task.set_integers(VTS_SS_ID_QUANTILE_ORDER_COUNT, &count);
    task.set(VTS_SS_ID_QUANTILE_ORDERS, orders.data());
    task.set(VTS_SS_ID_QUANTILES, result.data());
    task.status(task.compute(detail::by_type<T>(_vtssSSQuantiles, _vtsdSSQuantiles)));
    return result;
}

/// The observations of each variable in ascending order: one row for each variable.
template <std::floating_point T> Matrix<T> order_statistics(const Sample<T>& sample) {
    detail::SampleTask<T> task("kef::order_statistics", sample);
    Matrix<T> result(sample.variables(), sample.observations());
    task.set(VTS_SS_ID_ORDER_STATISTICS, result.data());
    task.set_integers(VTS_SS_ID_ORDER_STATISTICS_STORAGE, &task.by_rows);
    task.status(task.compute(detail::by_type<T>(_vtssSSQuantiles, _vtsdSSQuantiles)));
    return result;
}

/// The median of |x - median| of each variable.
template <std::floating_point T> std::vector<T> median_absolute_deviation(const Sample<T>& sample) {
    detail::SampleTask<T> task("kef::median_absolute_deviation", sample);
    std::vector<T> result(sample.variables());
    task.set(VTS_SS_ID_MEDIAN_ABSOLUTE_DEVIATION, result.data());
    task.status(task.compute(detail::by_type<T>(_vtssSSMAD, _vtsdSSMAD)));
    return result;
}

/// The weighted median of each variable; the weights are finite and not negative.
template <std::floating_point T> std::vector<T> weighted_median(const Sample<T>& sample) {
    detail::SampleTask<T> task("kef::weighted_median", sample);
    task.check(!sample.weights().empty(), "sample", "has no weights");
    std::vector<T> result(sample.variables());
    task.set(VTS_SS_ID_QUANTILES, result.data());
    task.status(task.compute(detail::by_type<T>(_vtssSSWMedian, _vtsdSSWMedian)));
    return result;
}

/// The Mahalanobis distance (not squared) of each observation from a mean under a covariance.
template <std::floating_point T>
std::vector<T> mahalanobis_distance(const Sample<T>& sample,
                                    std::span<const std::type_identity_t<T>> mean,
                                    const Matrix<T>& covariance) {
    detail::SampleTask<T> task("kef::mahalanobis_distance", sample);
    detail::stats_shape(task.function()).require_size(mean.size(), sample.variables(), "mean");
    detail::require_square(task.function(), covariance, sample.variables(), "covariance");
    std::vector<T> result(sample.observations());
    task.set(VTS_SS_ID_MEAN, mean.data());
    task.set_matrix(VTS_SS_ID_COVARIANCE, VTS_SS_ID_COVARIANCE_STORAGE, covariance.data());
    task.set(VTS_SS_ID_MAHALANOBIS_DISTANCE, result.data());
    task.status(task.compute(detail::by_type<T>(_vtssSSMahDistance, _vtsdSSMahDistance)));
    return result;
}

/// Covariance and correlation of the variables with positive marks, those with negative marks held
/// fixed; variables marked 0 play no part.
template <class T> struct Partial { Matrix<T> covariance, correlation; };
template <std::floating_point T>
Partial<T> partial_covariance(const Matrix<T>& covariance, std::span<const int> marks) {
    const char* const function = "kef::partial_covariance";
    detail::require_square(function, covariance, marks.size(), "covariance");
    detail::Task<T> task(function, marks.size());
    const std::vector<std::int64_t> wide(marks.begin(), marks.end());
    std::size_t of_interest = 0;
    for (const int mark : marks) of_interest += mark > 0;
    Partial<T> result{Matrix<T>(of_interest, of_interest), Matrix<T>(of_interest, of_interest)};
    task.set_integers(VTS_SS_ID_PARTIAL_INDICES, wide.data());
    task.set_matrix(VTS_SS_ID_COVARIANCE, VTS_SS_ID_COVARIANCE_STORAGE, covariance.data());
    task.check(of_interest > 0, "marks", "name no variable of interest");
    task.set_matrix(VTS_SS_ID_PARTIAL_COVARIANCE, VTS_SS_ID_PARTIAL_COVARIANCE_STORAGE,
                    result.covariance.data());
    task.set_matrix(VTS_SS_ID_PARTIAL_CORRELATION, VTS_SS_ID_PARTIAL_CORRELATION_STORAGE,
                    result.correlation.data());
    task.status(
        task.compute(detail::by_type<T>(_vtssSSPartialCovariance, _vtsdSSPartialCovariance)));
    return result;
}

/// Pooled covariance and mean of groups, and each group's own. The group of each observation is
/// 0 .. groups - 1, negative for one that takes no part; a group without members has NaN.
template <class T> struct Pooled {
    std::vector<T> mean;
    Matrix<T> covariance;
    Matrix<T> group_means;  ///< one row for each group
    std::vector<Matrix<T>> group_covariances;
};
template <std::floating_point T>
Pooled<T> pooled_covariance(const Sample<T>& sample, std::span<const int> group) {
    detail::SampleTask<T> task("kef::pooled_covariance", sample);
    detail::stats_shape(task.function()).require_size(group.size(), sample.observations(), "group");
    const std::vector<std::int64_t> wide(group.begin(), group.end());
    std::size_t groups = 0;
    for (const int g : group)
        if (g >= 0 && std::size_t(g) >= groups) groups = std::size_t(g) + 1;
    task.check(groups > 0, "group", "has no observation that takes part");
    task.check(groups <= group.size(), "group", "has a number above that of the observations");
    const std::size_t p = sample.variables();
    const std::vector<std::int64_t> wanted(groups, 1);
    Pooled<T> result{std::vector<T>(p), Matrix<T>(p, p), Matrix<T>(groups, p), {}};
    std::vector<T> covariances(groups * p * p);
    task.set_integers(VTS_SS_ID_GROUP_INDICES, wide.data());
    task.set_integers(VTS_SS_ID_REQUESTED_GROUPS, wanted.data());
    task.set(VTS_SS_ID_POOLED_MEAN, result.mean.data());
    task.set_matrix(VTS_SS_ID_POOLED_COVARIANCE, VTS_SS_ID_POOLED_COVARIANCE_STORAGE,
                    result.covariance.data());
    task.set(VTS_SS_ID_GROUP_MEANS, result.group_means.data());
    task.set_matrix(VTS_SS_ID_GROUP_COVARIANCES, VTS_SS_ID_GROUP_COVARIANCE_STORAGE,
                    covariances.data());
    task.status(task.compute(detail::by_type<T>(_vtssSSPooledCovariance, _vtsdSSPooledCovariance)));
    for (std::size_t g = 0; g < groups; ++g) {
        const auto first = covariances.begin() + std::ptrdiff_t(g * p * p);
        result.group_covariances.emplace_back(p, p,
                                              std::vector<T>(first, first + std::ptrdiff_t(p * p)));
    }
    return result;
}

/// A correlation matrix near a symmetric one that has negative eigenvalues: those become 0, and the
/// diagonal 1.
template <std::floating_point T> Matrix<T> nearby_correlation(const Matrix<T>& matrix) {
    const char* const function = "kef::nearby_correlation";
    const std::size_t p = matrix.rows();
    detail::stats_shape(function).require(p > 0, "matrix", "is empty");
    detail::require_square(function, matrix, p, "matrix");
    for (std::size_t i = 0; i < p; ++i)
        for (std::size_t j = 0; j < i; ++j)
            detail::stats_argument(function).require(matrix(i, j) == matrix(j, i), "matrix",
                                                     "is not symmetric");
    detail::Task<T> task(function, p);
    Matrix<T> result(p, p);
    task.set_matrix(VTS_SS_ID_CORRELATION, VTS_SS_ID_CORRELATION_STORAGE, matrix.data());
    task.set_matrix(VTS_SS_ID_PARAMETRIZED_MATRIX, VTS_SS_ID_PARAMETRIZED_MATRIX_STORAGE,
                    result.data());
    task.status(
        task.compute(detail::by_type<T>(_vtssSSCorParametrization, _vtsdSSCorParametrization)));
    return result;
}

/// How outliers are looked for.
struct OutlierOptions {
    bool from_medians =
        true;              ///< else from mean and covariance: follows affine changes, stands less
    double alpha = 0.05;   ///< chance of calling any observation of normal data an outlier
    double tolerance = 0;  ///< stops when the subset changes by this share of the sample
};
/// weights: 1 for an observation that is kept, 0 for an outlier; fit for a Sample. settled: false
/// where 100 rounds did not bring rest.
template <class T> struct Outliers {
    std::vector<T> weights;
    bool settled;
};
template <std::floating_point T>
Outliers<T> find_outliers(const Sample<T>& sample, const OutlierOptions& options = {}) {
    detail::SampleTask<T> task("kef::find_outliers", sample);
    task.check(options.alpha >= 1e-30 && options.alpha < 1, "options.alpha",
               "is not in [1e-30, 1)");
    task.check(options.tolerance >= 0 && options.tolerance < 1, "options.tolerance",
               "is not in [0, 1)");
    const std::int64_t count = 3;
    const T parameters[3] = {T(options.from_medians ? 2 : 1), T(options.alpha),
                             T(options.tolerance)};
    Outliers<T> result{std::vector<T>(sample.observations()), false};
    task.set_integers(VTS_SS_ID_OUTLIER_PARAMETER_COUNT, &count);
    task.set(VTS_SS_ID_OUTLIER_PARAMETERS, parameters);
    task.set(VTS_SS_ID_OUTLIER_WEIGHTS, result.weights.data());
    result.settled = detail::settled(
        task, detail::by_type<T>(_vtssSSOutliersDetection, _vtsdSSOutliersDetection));
    return result;
}

/// The S-estimate behind robust_covariance.
struct RobustOptions {
    double breakdown = 0.5;   ///< share of outliers that it can bear, [1e-9, 1/2]
    double rejection = 0.05;  ///< chance of weight 0 for an observation of normal data, [1e-30, 1)
    double tolerance = 1e-8;  ///< relative change at which it stops, [0, 1)
    int limit = 200;          ///< the most steps, at least 1
};
/// settled: false where the limit of steps did not bring rest.
template <class T> struct Robust {
    std::vector<T> mean;
    Matrix<T> covariance;
    bool settled;
};
template <std::floating_point T>
Robust<T> robust_covariance(const Sample<T>& sample, const RobustOptions& options = {}) {
    detail::SampleTask<T> task("kef::robust_covariance", sample);
    task.check(options.breakdown >= 1e-9 && options.breakdown <= 0.5, "options.breakdown",
               "is not in [1e-9, 1/2]");
    task.check(options.rejection >= 1e-30 && options.rejection < 1, "options.rejection",
               "is not in [1e-30, 1)");
    task.check(options.tolerance >= 0 && options.tolerance < 1, "options.tolerance",
               "is not in [0, 1)");
    task.check(options.limit >= 1, "options.limit", "is not positive");
    const std::int64_t count = 4;
    const T parameters[4] = {T(options.breakdown), T(options.rejection), T(options.tolerance),
                             T(options.limit)};
    const std::size_t p = sample.variables();
    Robust<T> result{std::vector<T>(p), Matrix<T>(p, p), false};
    task.set_integers(VTS_SS_ID_ROBUST_PARAMETER_COUNT, &count);
    task.set(VTS_SS_ID_ROBUST_PARAMETERS, parameters);
    task.set(VTS_SS_ID_ROBUST_MEAN, result.mean.data());
    task.set_matrix(VTS_SS_ID_ROBUST_COVARIANCE, VTS_SS_ID_ROBUST_COVARIANCE_STORAGE,
                    result.covariance.data());
    result.settled =
        detail::settled(task, detail::by_type<T>(_vtssSSRobustCovariance, _vtsdSSRobustCovariance));
    return result;
}

/// A normal law.
template <class T> struct NormalLaw {
    std::vector<T> mean;
    Matrix<T> covariance;
};

/// The prior of the data augmentation: covariances of an inverse Wishart law of nu degrees of
/// freedom and the matrix V, means normal around a mean with that covariance over tau.
template <class T> struct Prior {
    T tau, nu;
    std::vector<T> mean;
    Matrix<T> matrix;
};

/// EM, and imputations by data augmentation.
template <class T = double> struct MissingOptions {
    int limit = 1000;         ///< the most EM iterations, at least 1
    int steps = 20;           ///< of data augmentation from one imputation to the next, at least 1
    double tolerance = 1e-8;  ///< relative change at which EM stops, [0, 1)
    int imputations = 0;      ///< 0: EM alone
    std::optional<NormalLaw<T>> start = {};  ///< of EM; else means and variances of what is there
    std::optional<Prior<T>> prior = {};      ///< else tau = 0, nu = -1, V = 0
};
/// law: by EM. values: one row for each imputation, the missing values (NaN in the sample) of
/// observation after observation, its variables ascending. laws: of each imputation, the one that
/// it was drawn from. settled: false where EM has not come to rest.
template <class T> struct Missing {
    NormalLaw<T> law;
    Matrix<T> values;
    std::vector<NormalLaw<T>> laws;
    bool settled;
};
template <std::floating_point T>
Missing<T> missing_values(const Sample<T>& sample,
                          const std::type_identity_t<MissingOptions<T>>& options = {}) {
    detail::SampleTask<T> task("kef::missing_values", sample);
    task.check(options.limit >= 1, "options.limit", "is not positive");
    task.check(options.steps >= 1, "options.steps", "is not positive");
    task.check(options.tolerance >= 0 && options.tolerance < 1, "options.tolerance",
               "is not in [0, 1)");
    task.check(options.imputations >= 0, "options.imputations", "is negative");
    const std::size_t p = sample.variables(), size = p + p * (p + 1) / 2;
    const std::size_t most = std::size_t(options.imputations);
    std::size_t missing = 0;
    for (const T x : sample.x()) missing += std::isnan(x);
    const T how[5] = {T(options.limit), T(options.steps), T(options.tolerance),
                      T(options.imputations), 0};
    Missing<T> result{{}, Matrix<T>(most, missing), {}, false};
    std::vector<T> laws((1 + most) * size);
    const std::int64_t how_count = 5, value_count = std::int64_t(result.values.size()),
                       law_count = std::int64_t(laws.size());
    task.set_integers(VTS_SS_ID_MISSING_A_COUNT, &how_count);
    task.set(VTS_SS_ID_MISSING_A, how);
    if (value_count > 0) {
        task.set_integers(VTS_SS_ID_MISSING_D_COUNT, &value_count);
        task.set(VTS_SS_ID_MISSING_D, result.values.data());
    }
    // A mean and the triangle of a matrix from the diagonal to the right, behind what is there.
    const auto append = [&](std::vector<T>& numbers, const std::vector<T>& mean,
                            const Matrix<T>& matrix, const char* argument) {
        detail::stats_shape(task.function()).require_size(mean.size(), p, argument);
        detail::require_square(task.function(), matrix, p, argument);
        numbers.insert(numbers.end(), mean.begin(), mean.end());
        for (std::size_t i = 0; i < p; ++i)
            for (std::size_t j = i; j < p; ++j) numbers.push_back(matrix(i, j));
    };
    std::vector<T> start, prior;
    if (options.start)
        append(start, options.start->mean, options.start->covariance, "options.start");
    if (options.prior) {
        prior = {options.prior->tau, options.prior->nu};
        append(prior, options.prior->mean, options.prior->matrix, "options.prior");
    }
    const std::int64_t start_count = std::int64_t(start.size()),
                       prior_count = std::int64_t(prior.size());
    if (start_count > 0) {
        task.set_integers(VTS_SS_ID_MISSING_B_COUNT, &start_count);
        task.set(VTS_SS_ID_MISSING_B, start.data());
    }
    if (prior_count > 0) {
        task.set_integers(VTS_SS_ID_MISSING_C_COUNT, &prior_count);
        task.set(VTS_SS_ID_MISSING_C, prior.data());
    }
    task.set_integers(VTS_SS_ID_MISSING_E_COUNT, &law_count);
    task.set(VTS_SS_ID_MISSING_E, laws.data());
    result.settled =
        detail::settled(task, detail::by_type<T>(_vtssSSMissingValues, _vtsdSSMissingValues));
    for (std::size_t k = 0; k <= most; ++k) {
        const T* number = laws.data() + k * size;
        NormalLaw<T> law{std::vector<T>(number, number + p), Matrix<T>(p, p)};
        number += p;
        for (std::size_t i = 0; i < p; ++i)  // the triangle from the diagonal to the right
            for (std::size_t j = i; j < p; ++j)
                law.covariance(i, j) = law.covariance(j, i) = *number++;
        if (k == 0) result.law = std::move(law);
        else result.laws.push_back(std::move(law));
    }
    return result;
}

}  // namespace kef

#endif
