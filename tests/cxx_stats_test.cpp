// Statistics of the C++ interface: blocks, copies and merges against one block, computations
// against small data that are worked out by hand, and what is refused.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "tests/cxx_support.h"

namespace {

using cxx_test::refused;
using kef::Estimate;
using kef::Matrix;
using kef::Method;
using kef::Order;
using kef::Sample;
using Vector = std::vector<double>;

static_assert(!std::is_constructible_v<Sample<double>, std::vector<float>, int>);
static_assert(std::is_same_v<decltype(Sample(std::vector<float>(), 1)), Sample<float>>);
template <class R> constexpr bool is_added = requires(const kef::Statistics<> s, R r) { s.add(r); };
static_assert(!is_added<Sample<double>>);  // a constant object does not take blocks

constexpr Estimate every_estimate = [] {
    Estimate all = Estimate::none;
    for (const auto& row : kef::detail::estimate_rows) all = all | row.estimate;
    return all;
}();

template <class T> std::vector<T> data(std::size_t n, std::uint32_t seed = 1) {
    std::vector<T> x(n);
    kef::Stream stream(kef::Generator::mt19937, seed);
    kef::Gamma<T>(2).fill(stream, x);
    return x;
}

template <class T> class CxxStatistics : public testing::Test {};
using Types = testing::Types<float, double>;
TYPED_TEST_SUITE(CxxStatistics, Types);

// One estimate at a time, so that each finds what carries it, and all at once; in blocks, in a
// copy, in two objects that are merged; with and without weights in turn.
TYPED_TEST(CxxStatistics, BlocksCopiesAndMergesAreOneBlock) {
    using T = TypeParam;
    const auto x = data<T>(3 * 60);
    const auto weights = data<T>(60, 2);
    const std::span<const T> all(x), w(weights);
    std::vector<Estimate> sets{every_estimate};
    for (const auto& row : kef::detail::estimate_rows) sets.push_back(row.estimate);
    for (const Estimate set : sets) {
        for (const Method method : {Method::tiled, Method::recurrence, Method::raw}) {
            for (const bool weighted : {false, true}) {
                const auto block = [&](std::size_t from, std::size_t n) {
                    return Sample<T>(all.subspan(3 * from, 3 * n), 3, Order::by_observation,
                                     weighted ? w.subspan(from, n) : w.first(0));
                };
                kef::Statistics<T> one(3, set, method), blocks(3, set, method),
                    part(3, set, method);
                one.add(block(0, 60));
                blocks.add(block(0, 0));
                for (std::size_t i = 0; i < 40; i += 8) blocks.add(block(i, 8));
                kef::Statistics<T> merged = blocks, assigned(1, Estimate::mean);
                part.add(block(40, 20));
                merged.merge(part);
                assigned = blocks;
                assigned.add(block(40, 20));
                const auto results = one.results();
                for (std::size_t k = 0; k < results.size(); ++k) {
                    const auto& r = results[k];
                    ASSERT_EQ(r.values.size(), r.rows * r.columns);
                    for (std::size_t i = 0; i < r.values.size(); ++i) {
                        const double value = double(r[i]),
                                     bound = 2e3 * std::numeric_limits<T>::epsilon() *
                                             (1 + std::abs(value));
                        EXPECT_NEAR(double(merged.results()[k][i]), value, bound) << r.name;
                        EXPECT_NEAR(double(assigned[r.name][i]), value, bound) << r.name;
                    }
                }
                EXPECT_EQ(merged.count(), 60u);
                EXPECT_EQ(blocks.count(), 40u);
            }
        }
    }
}

TEST(CxxStatisticsResults, HaveNamesShapesAndOrders) {
    const Vector by_observation{1, 10, 2, 30, 3, 20, 4, 40},
        by_variable{1, 2, 3, 4, 10, 30, 20, 40};
    const Estimate set = Estimate::mean | Estimate::covariance | Estimate::minimum;
    kef::Statistics<> s(2, set), t(2, set);
    EXPECT_TRUE(std::isnan(s[Estimate::mean][1]));
    s.add(Sample(by_observation, 2));
    t.add(Sample(by_variable, 2, Order::by_variable));
    EXPECT_EQ(s["mean"][1], 25);
    EXPECT_EQ(t[Estimate::mean][1], 25);
    EXPECT_EQ(s["minimum"].rows, 2u);
    EXPECT_EQ(s["minimum"].columns, 1u);
    EXPECT_EQ(s["covariance"].columns, 2u);
    EXPECT_DOUBLE_EQ(s["covariance"](0, 1), 40 / 3.);
    EXPECT_DOUBLE_EQ(t["covariance"](1, 0), 40 / 3.);
    EXPECT_EQ(s.results().size(), 3u);
    EXPECT_EQ(s.variables(), 2u);
    EXPECT_EQ(s.weight(), 4);
    // Blocks with and without weights in turn: one of weight 2 is two observations' weight.
    kef::Statistics<> u(1, Estimate::mean);
    u.add(Sample(Vector{1, 2}, 1));
    u.add(Sample(Vector{4}, 1, Order::by_observation, Vector{2}));
    u.add(Sample(Vector{9, 10, 11}, 1));
    EXPECT_DOUBLE_EQ(u["mean"][0], 41 / 7.);

    EXPECT_EQ(refused([&] { s["variance"]; }), "kef::Statistics: name");
    EXPECT_EQ(refused([&] { s[Estimate::sum]; }), "kef::Statistics: estimate");
    EXPECT_EQ(refused([&] { s["mean"][2]; }), "kef::Result: i");
    EXPECT_EQ(refused([&] { s["covariance"](0, 2); }), "kef::Result: j");
}

TEST(CxxStatisticsChecks, RefuseShapesAndMovedFrom) {
    const Vector x(12, 1);
    const std::span<const double> null(static_cast<const double*>(nullptr), 6);
    EXPECT_EQ(refused([&] { Sample(x, 5); }), "kef::Sample: x");
    EXPECT_EQ(refused([&] { Sample(x, 0); }), "kef::Sample: variables");
    EXPECT_EQ(refused([&] { Sample<double>(null, 2); }), "kef::Sample: x");
    EXPECT_EQ(refused([&] { Sample(x, 3, Order(7)); }), "kef::Sample: order");
    EXPECT_EQ(refused([&] { Sample(x, 3, Order::by_variable, Vector(3)); }),
              "kef::Sample: weights");
    EXPECT_EQ(refused([&] { kef::Statistics<>(0, Estimate::mean); }), "kef::Statistics: variables");
    EXPECT_EQ(refused([&] { kef::Statistics<>(2, Estimate::none); }), "kef::Statistics: estimates");
    EXPECT_EQ(refused([&] { kef::Statistics<>(2, Estimate(1ull << 60)); }),
              "kef::Statistics: estimates");
    EXPECT_EQ(refused([&] { kef::Statistics<>(2, Estimate::mean, Method(3)); }),
              "kef::Statistics: method");
    kef::Statistics<> s(3, Estimate::mean), other(2, Estimate::mean), more(3, Estimate::variance),
        raw(3, Estimate::mean, Method::raw);
    s.add(Sample(x, 3));
    EXPECT_EQ(refused([&] { s.add(Sample(x, 2)); }), "kef::Statistics::add: block");
    for (const auto* wrong : {&s, &other, &more, &raw})
        EXPECT_EQ(refused([&] { s.merge(*wrong); }), "kef::Statistics::merge: other");
    EXPECT_EQ(s.count(), 4u);

    kef::Statistics<> taken = std::move(s);
    EXPECT_EQ(refused([&] { s.add(Sample(x, 3)); }), "kef::Statistics::add: object");
    EXPECT_EQ(refused([&] { kef::Statistics<> copy = s; }), "kef::Statistics: object");
    EXPECT_EQ(refused([&] { taken.merge(s); }), "kef::Statistics::merge: object");
    auto& same = taken;
    taken = std::move(same);
    taken = same;
    s = taken;
    EXPECT_EQ(s.count(), 4u);
}

TEST(CxxMatrix, RefusesShapesAndMovedFrom) {
    EXPECT_EQ(refused([] { Matrix<>(2, 2, Vector(3)); }), "kef::Matrix: values");
    EXPECT_EQ(refused([] { Matrix<>(2, 2)(2, 0); }), "kef::Matrix: i");
    const std::size_t half = std::size_t(1) << (4 * sizeof(std::size_t));  // of the bits
    EXPECT_EQ(refused([&] { Matrix<>(half, half); }), "kef::Matrix: rows");
    EXPECT_EQ(refused([&] { Matrix<>(half, half, Vector()); }), "kef::Matrix: rows");
    EXPECT_EQ(Matrix<>(3, 0).row(2).size(), 0u);
    EXPECT_EQ(refused([&] { Matrix<>(3, 0).row(3); }), "kef::Matrix: i");
    Matrix<> one(2, 2, 1), other = std::move(one), third;
    EXPECT_EQ(refused([&] { one(0, 0) = 2; }), "kef::Matrix: i");
    third = std::move(other);
    EXPECT_EQ(other.rows() + other.columns() + other.size(), 0u);
    Matrix<>& alias = third;
    third = std::move(alias);
    EXPECT_EQ(third(1, 1), 1);
}

TEST(CxxStatisticsStreams, QuantilesOfBlocksAndMerges) {
    Vector x(1000);
    for (std::size_t i = 0; i < 500; ++i) {
        x[2 * i] = double((i * 7919) % 500);
        x[2 * i + 1] = -x[2 * i];
    }
    const Vector orders{0, 0.5, 1};
    kef::StreamQuantiles<> whole(2, 0.01), parts(2, 0.01), rest(2, 0.01);
    EXPECT_TRUE(std::isnan(whole.quantiles(orders)(0, 0)));
    whole.add(Sample(x, 2));
    const std::span<const double> all(x);
    for (std::size_t i = 0; i < 600; i += 100) parts.add(Sample(all.subspan(i, 100), 2));
    rest.add(Sample(all.last(400), 2));
    rest.add(Sample(all.first(0), 2));
    auto merged = parts;
    merged.merge(rest);
    for (const auto* q : {&whole, &merged}) {
        for (int again = 0; again < 2; ++again) {  // asking changes nothing
            const Matrix<> m = q->quantiles(orders);
            EXPECT_EQ(m(0, 0), 0);
            EXPECT_EQ(m(0, 2), 499);
            EXPECT_NEAR(m(0, 1), 250, 5);
            EXPECT_EQ(m(1, 0), -499);
        }
        EXPECT_EQ(q->count(), 500u);
    }
    EXPECT_EQ(refused([] { kef::StreamQuantiles<>(1, 0); }), "kef::StreamQuantiles: epsilon");
    EXPECT_EQ(refused([&] { whole.quantiles(Vector{1.5}); }),
              "kef::StreamQuantiles::quantiles: orders");
    const auto image = merged.image();
    auto loaded = kef::StreamQuantiles<>::from_image(image);
    EXPECT_EQ(loaded.count(), 500u);
    EXPECT_EQ(loaded.quantiles(orders)(1, 1), merged.quantiles(orders)(1, 1));
    loaded.merge(whole);
    loaded.add(Sample(x, 2));
    EXPECT_EQ(loaded.count(), 1500u);
    EXPECT_EQ(kef::StreamQuantiles<>::from_image(kef::StreamQuantiles<>(2).image()).count(), 0u);
    // NaN before anything else: nothing is counted then.
    kef::StreamQuantiles<> nan(1, 0.01), after(1, 0.01);
    nan.add(Sample(Vector{std::nan(""), 1, 2}, 1));
    after.merge(kef::StreamQuantiles<>::from_image(nan.image()));
    for (const auto* q : {&nan, &after}) {
        EXPECT_TRUE(std::isnan(q->quantiles(orders)(0, 1)));
        EXPECT_EQ(q->count(), 3u);
    }
    const auto load = [](std::span<const std::byte> bytes) {
        return refused([&] { kef::StreamQuantiles<>::from_image(bytes); });
    };
    const char* const argument = "kef::StreamQuantiles::from_image: image";
    const char* const status = "kef::StreamQuantiles::from_image: -4060";
    EXPECT_EQ(load(std::span(image).first(image.size() - 1)), status);
    EXPECT_EQ(load(std::span(image).first(24)), argument);
    EXPECT_EQ(load({}), argument);
    for (const std::size_t at : {0, 15, 30, 200}) {
        auto damaged = image;
        damaged[at] ^= std::byte(0x7F);
        EXPECT_NE(load(damaged), "nothing") << at;
    }

    const auto taken = std::move(rest);
    EXPECT_EQ(refused([&] { auto copy = rest; }), "kef::StreamQuantiles: object");
    EXPECT_EQ(refused([&] { whole.merge(whole); }), "kef::StreamQuantiles::merge: other");
    EXPECT_EQ(refused([&] { whole.merge(kef::StreamQuantiles<>(2, 0.02)); }),
              "kef::StreamQuantiles::merge: other");
    EXPECT_EQ(refused([&] { whole.add(Sample(x, 2, Order::by_observation, Vector(500, 1))); }),
              "kef::StreamQuantiles::add: block");
}

TYPED_TEST(CxxStatistics, ComputationsOfOneSample) {
    using T = TypeParam;
    using List = std::vector<T>;
    const List x{1, 10, 5, 30, 3, 20, 2, 40, 4, 50};
    const Sample sample(x, 2);
    const Matrix<T> q = kef::quantiles(sample, List{0, 0.5, 1});
    EXPECT_EQ(q(0, 1), 3);
    EXPECT_EQ(q(1, 2), 50);
    const Matrix<T> sorted = kef::order_statistics(sample);
    EXPECT_EQ(List(sorted.row(0).begin(), sorted.row(0).end()), (List{1, 2, 3, 4, 5}));
    EXPECT_EQ(kef::median_absolute_deviation(sample), (List{1, 10}));
    const List weights{9, 1, 1, 1, 1};
    EXPECT_EQ(kef::weighted_median(Sample<T>(x, 2, Order::by_observation, weights)), (List{1, 10}));

    const Matrix<T> unit(2, 2, List{4, 0, 0, 100});
    const List distance = kef::mahalanobis_distance(sample, List{1, 20}, unit);
    EXPECT_NEAR(distance[1], std::sqrt(5.0), 1e-6);

    // Three variables, a pair at correlation 1/2 to the third: what is left of it is 1/3.
    const Matrix<T> c(3, 3, List{1, T(0.5), T(0.5), T(0.5), 1, T(0.5), T(0.5), T(0.5), 1});
    const auto partial = kef::partial_covariance(c, std::vector<int>{1, 1, -1});
    EXPECT_NEAR(partial.covariance(0, 0), 0.75, 1e-6);
    EXPECT_NEAR(partial.correlation(1, 0), 1 / 3., 1e-6);

    const auto pooled = kef::pooled_covariance(sample, std::vector<int>{0, 2, 0, 2, -1});
    EXPECT_EQ(pooled.group_means.rows(), 3u);
    EXPECT_EQ(pooled.group_means(0, 0), 2);
    EXPECT_TRUE(std::isnan(pooled.group_means(1, 0)));
    EXPECT_NEAR(pooled.covariance(0, 0), (2 + 4.5) / 2, 1e-5);
    EXPECT_NEAR(pooled.group_covariances[2](0, 1), -15, 1e-5);
    EXPECT_NEAR(pooled.mean[1], 25, 1e-5);

    const Matrix<T> wrong(2, 2, List{1, 2, 2, 1});
    const Matrix<T> near = kef::nearby_correlation(wrong);
    EXPECT_EQ(near(0, 0), 1);
    EXPECT_NEAR(near(0, 1), 1, 1e-6);

    List y = data<T>(120);
    y[6] = 1000;
    y[41] = std::numeric_limits<T>::quiet_NaN();
    const List without(y.begin(), y.begin() + 40);
    const auto outliers = kef::find_outliers(Sample(without, 2));
    EXPECT_TRUE(outliers.settled);
    EXPECT_EQ(outliers.weights[3], 0);
    EXPECT_EQ(outliers.weights[4], 1);
    const auto robust = kef::robust_covariance(Sample(without, 2));
    EXPECT_TRUE(robust.settled);
    EXPECT_LT(robust.mean[0], 5);
    EXPECT_EQ(robust.covariance(0, 1), robust.covariance(1, 0));
    EXPECT_FALSE(kef::robust_covariance(Sample(without, 2), {.tolerance = 0, .limit = 1}).settled);

    const auto filled = kef::missing_values(Sample(y, 2), {.imputations = 2});
    EXPECT_TRUE(filled.settled);
    EXPECT_EQ(filled.values.rows(), 2u);
    EXPECT_EQ(filled.values.columns(), 1u);
    EXPECT_EQ(filled.laws.size(), 2u);
    EXPECT_EQ(filled.law.covariance(0, 1), filled.law.covariance(1, 0));
    List known;
    for (std::size_t i = 0; i < y.size(); i += 2) known.push_back(y[i]);
    kef::Statistics<T> s(1, Estimate::mean | Estimate::variance);
    s.add(Sample(known, 1));
    EXPECT_NEAR(filled.law.mean[0], s["mean"][0], 1e-4 * s["mean"][0]);
    EXPECT_NEAR(filled.law.covariance(0, 0), s["variance"][0] * 59 / 60, 1e-4 * s["variance"][0]);
    EXPECT_EQ(kef::missing_values(Sample(without, 2)).values.size(), 0u);
    // EM that starts at its result is at rest; a prior of much weight decides.
    EXPECT_TRUE(
        kef::missing_values(Sample(y, 2), {.limit = 1, .tolerance = 1e-3, .start = filled.law})
            .settled);
    const kef::Prior<T> prior{1e6, 1e6, {7, 8}, Matrix<T>(2, 2, List{1e6, 0, 0, 1e6})};
    const auto drawn = kef::missing_values(Sample(y, 2), {.imputations = 1, .prior = prior});
    EXPECT_NEAR(drawn.laws[0].mean[0], 7, 0.1);
    EXPECT_NEAR(drawn.laws[0].covariance(1, 1), 1, 0.1);
    EXPECT_EQ(
        refused([&] {
            kef::missing_values(Sample(y, 2), {.start = kef::NormalLaw<T>{{1}, Matrix<T>(2, 2)}});
        }),
        "kef::missing_values: options.start");
}

TEST(CxxStatisticsChecks, ComputationsNameTheirArguments) {
    const Vector x(20, 1);
    const Sample sample(x, 2), none(std::span<const double>(), 2);
    const Matrix<> small(1, 1), square(2, 2), oblong(2, 3), skew(2, 2, Vector{1, 0, 0.5, 1});
    const std::vector<int> two{1, 1};
    EXPECT_EQ(refused([&] { kef::quantiles(none, Vector{0.5}); }), "kef::quantiles: sample");
    EXPECT_EQ(refused([&] { kef::quantiles(sample, Vector{}); }), "kef::quantiles: orders");
    EXPECT_EQ(refused([&] {
                  kef::quantiles(sample, Vector{0.5, -0.1});
              }),
              "kef::quantiles: orders");
    EXPECT_EQ(refused([&] { kef::weighted_median(sample); }), "kef::weighted_median: sample");
    EXPECT_EQ(refused([&] { kef::mahalanobis_distance(sample, Vector{1}, square); }),
              "kef::mahalanobis_distance: mean");
    EXPECT_EQ(refused([&] {
                  kef::mahalanobis_distance(sample, Vector{1, 1}, small);
              }),
              "kef::mahalanobis_distance: covariance");
    EXPECT_EQ(refused([&] {
                  kef::mahalanobis_distance(sample, Vector{1, 1}, square);
              }),
              "kef::mahalanobis_distance: -4033");
    EXPECT_EQ(refused([&] { kef::partial_covariance(small, two); }),
              "kef::partial_covariance: covariance");
    EXPECT_EQ(refused([&] {
                  kef::partial_covariance(square, std::vector<int>{-1, 0});
              }),
              "kef::partial_covariance: marks");
    EXPECT_EQ(refused([&] { kef::pooled_covariance(sample, two); }),
              "kef::pooled_covariance: group");
    EXPECT_EQ(refused([&] { kef::pooled_covariance(sample, std::vector<int>(10, 1 << 30)); }),
              "kef::pooled_covariance: group");
    EXPECT_EQ(refused([&] { kef::nearby_correlation(oblong); }), "kef::nearby_correlation: matrix");
    EXPECT_EQ(refused([&] { kef::nearby_correlation(skew); }), "kef::nearby_correlation: matrix");
    EXPECT_EQ(refused([&] { kef::find_outliers(sample, {.alpha = 1}); }),
              "kef::find_outliers: options.alpha");
    EXPECT_EQ(refused([&] { kef::robust_covariance(sample, {.breakdown = 0.6}); }),
              "kef::robust_covariance: options.breakdown");
    EXPECT_EQ(refused([&] { kef::robust_covariance(sample, {.limit = 0}); }),
              "kef::robust_covariance: options.limit");
    EXPECT_EQ(refused([&] { kef::missing_values(sample, {.imputations = -1}); }),
              "kef::missing_values: options.imputations");
}

}  // namespace
