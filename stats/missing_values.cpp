// _vtsdSSMissingValues, _vtssSSMissingValues: normal data with missing values, by the EM algorithm
// (Dempster, Laird & Rubin, JRSS B 39:1, 1977) and data augmentation (Tanner & Wong, JASA 82:528,
// 1987; Schafer, Analysis of Incomplete Multivariate Data, 1997).
#include "kef_dist.h"
#include "kef_rng.h"
#include "stats/computation.h"
#include "stats/conditional.h"
#include "stats/missing_data.h"

namespace kef::stats {

namespace {

// Random numbers of the data augmentation: MRG32K3A with seed 1.
class Numbers {
public:
    Numbers() = default;
    ~Numbers() { __vtsDeleteStream(&stream_); }
    Numbers(const Numbers&) = delete;
    // False when there is no memory.
    bool create() {
        const std::uint32_t seed = 1;
        return __vtsNewStreamEx(&stream_, VTS_BRNG_MRG32K3A, 1, &seed) == VTS_STATUS_OK;
    }

    double normal() {
        if (used_ == size) {
            _vtsdRngGaussian(VTS_METHOD_GAUSSIAN_INVERSION, stream_, size, normals_, 0, 1);
            used_ = 0;
        }
        return normals_[used_++];
    }
    double chi_square(double nu) {
        double x;
        _vtsdRngGamma(VTS_METHOD_STANDARD, stream_, 1, &x, nu / 2, 0, 2);
        return x;
    }

private:
    static constexpr int size = 512;
    kef_stream* stream_ = nullptr;
    int used_ = size;
    double normals_[size];
};

// The array A.
struct Method {
    double iterations, draws, tolerance, imputations, missing;
    template <class T>
    explicit Method(const T* a)
        : iterations(a[0]), draws(a[1]), tolerance(a[2]), imputations(a[3]), missing(a[4]) {}
    bool valid() const {
        const auto is_count = [](double x, double least) {
            return x >= least && x <= 0x1p31 && x == std::floor(x);
        };
        return is_count(iterations, 1) && tolerance >= 0 && tolerance < 1 &&
               is_count(imputations, 0) && (imputations == 0 || is_count(draws, 1)) && missing >= 0;
    }
};

// The prior of array C, around the centre: the mean mu0 counts as tau observations, the
// covariance has the density of an inverse Wishart law of nu degrees of freedom and the matrix.
struct Prior {
    double tau, nu;
    Moments law;  // mu0 and the matrix
};

template <class T> class Imputation {
public:
    class Room {
    public:
        Room(KeptLayout& layout, const MissingCounts& c)
            : data(layout, c),
              conditional(layout, c.p),
              law(Moments::reserve(layout, c.p)),
              next(Moments::reserve(layout, c.p)),
              complete(Moments::reserve(layout, c.p)),
              unsure(Moments::reserve(layout, c.p)),
              prior(Moments::reserve(layout, c.p)),
              posterior(Cholesky::reserve(layout, c.p)),
              rows(layout.reserve(c.p, c.p * sizeof(double), 2)),
              list(layout.reserve(c.p, sizeof(std::ptrdiff_t) + sizeof(double))) {}

    private:
        friend Imputation;
        typename MissingData<T>::Room data;
        Conditional::Room conditional;
        std::uint64_t law, next, complete, unsure, prior, posterior, rows, list;
    };

    Imputation(const Task& task, const MissingCounts& counts, const Room& room, char* block)
        : all_(positive_at(task, task.dimension)),
          p_(counts.p),
          n_(static_cast<double>(counts.n)),
          data_(task, counts, room.data, block),
          conditional_(room.conditional, block, p_),
          law_(block + room.law, p_),
          next_(block + room.next, p_),
          complete_(block + room.complete, p_),
          unsure_(block + room.unsure, p_),
          prior_{0, -1, Moments(block + room.prior, p_)},
          posterior_(block + room.posterior, p_),
          bartlett_(reinterpret_cast<double*>(block + room.rows)),
          root_(bartlett_ + p_ * p_),
          noise_(reinterpret_cast<double*>(block + room.list)),
          list_(reinterpret_cast<std::ptrdiff_t*>(noise_ + p_)) {}

    // The start from available values or B, the prior from C; null where there is none.
    std::int32_t start(const T* B, const T* C) {
        const auto zero = [](auto...) { return 0.0; };
        if (!data_.available(noise_)) return VTS_SS_STATUS_TOO_FEW_OBSERVATIONS;
        law_.set(zero, [&](std::ptrdiff_t a, std::ptrdiff_t b) { return a == b ? noise_[a] : 0; });
        if (B != nullptr) read(B, law_);
        prior_.law.set(zero, zero);
        if (C != nullptr) {
            prior_.tau = C[0];
            prior_.nu = C[1];
            read(C + 2, prior_.law);
        }
        if (!(prior_.tau >= 0 && prior_.tau < 0x1p1000) || !(prior_.nu < 0x1p1000) ||
            !(prior_.nu + n_ >= static_cast<double>(p_)))
            return VTS_SS_STATUS_BAD_PARAMETERS;
        data_.read(complete_);
        return VTS_SS_STATUS_OK;
    }

    // EM: OK, ITERATION_LIMIT or NOT_POSITIVE_DEFINITE.
    std::int32_t maximise(double iterations, double tolerance) {
        bool done = false;
        for (double k = 0; k < iterations && !done; ++k) {
            if (!conditional_.set(law_) || !fill(nullptr))
                return VTS_SS_STATUS_NOT_POSITIVE_DEFINITE;
            for (std::ptrdiff_t a = 0; a < p_ * (p_ + 1) / 2; ++a) next_.products[a] /= n_;
            done = settled(law_, next_, tolerance);
            std::swap(law_, next_);
        }
        if (!conditional_.set(law_)) return VTS_SS_STATUS_NOT_POSITIVE_DEFINITE;
        return done ? VTS_SS_STATUS_OK : VTS_SS_STATUS_ITERATION_LIMIT;
    }

    // What is missing, drawn by the law.
    bool draw_values(Numbers& numbers) { return fill(&numbers); }

    // Whether the matrix of the prior is positive semidefinite, to rounding, and makes a posterior
    // of the data as EM expects them.
    bool has_posterior() {
        const double more = 1 + 4 * static_cast<double>(p_) * std::numeric_limits<T>::epsilon();
        const auto raised = [&](std::ptrdiff_t i, std::ptrdiff_t j) {
            const double element = prior_.law.at(i, j);
            return i != j ? element : element * more + std::numeric_limits<double>::min();
        };
        if (!posterior_.factor(raised, 0)) return false;
        std::copy_n(law_.mean, p_, next_.mean);
        for (std::ptrdiff_t a = 0; a < p_ * (p_ + 1) / 2; ++a)
            next_.products[a] = law_.products[a] * n_;
        return add_prior();
    }

    // The law, drawn from its posterior by the data as they are filled. False where that is
    // singular.
    bool draw_law(Numbers& numbers) {
        if (!add_prior()) return false;
        // Few degrees of freedom may draw what is singular to rounding.
        for (int tries = 0; tries < 100; ++tries) {
            draw_from_posterior(numbers);
            if (conditional_.set(law_)) return true;
        }
        return false;
    }
    // The law as a record of the array E.
    void write_law(T* record) const {
        const SymmetricMatrix<T> C = {record + all_, all_, VTS_SS_LAYOUT_UPPER};
        const std::ptrdiff_t* const variable = data_.variable;
        for (std::ptrdiff_t a = 0; a < p_; ++a) {
            record[variable[a]] = static_cast<T>(law_.mean[a] + data_.centre[a]);
            for (std::ptrdiff_t b = 0; b <= a; ++b) C.put(variable[a], variable[b], law_.at(a, b));
        }
    }
    void write_values(T* values) const {
        data_.for_each_filled(
            [=](std::ptrdiff_t k, double value) { values[k] = static_cast<T>(value); });
    }

private:
    // Means and a packed upper matrix.
    void read(const T* record, const Moments& to) const {
        const SymmetricMatrix<const T> C = {record + all_, all_, VTS_SS_LAYOUT_UPPER};
        const std::ptrdiff_t* const variable = data_.variable;
        to.set([&](std::ptrdiff_t a) { return record[variable[a]] - data_.centre[a]; },
               [&](std::ptrdiff_t a, std::ptrdiff_t b) -> double {
                   return C.get(variable[a], variable[b]);
               });
    }

    // What is filled in becomes the posterior: its mean, and the factor of its matrix. False where
    // that is singular.
    bool add_prior() {
        const double share = prior_.tau / (prior_.tau + n_);
        const Moments &mine = next_, &prior = prior_.law;
        for (std::ptrdiff_t a = 0; a < p_; ++a)
            for (std::ptrdiff_t b = 0; b <= a; ++b)
                mine.at(a, b) += prior.at(a, b) + n_ * share * (mine.mean[a] - prior.mean[a]) *
                                                      (mine.mean[b] - prior.mean[b]);
        for (std::ptrdiff_t a = 0; a < p_; ++a)
            mine.mean[a] += share * (prior.mean[a] - mine.mean[a]);
        return posterior_.factor([&](std::ptrdiff_t i, std::ptrdiff_t j) { return mine.at(i, j); },
                                 singular);
    }

    void draw_from_posterior(Numbers& numbers) {
        const double tau = prior_.tau + n_, nu = prior_.nu + n_;
        // Bartlett (Proc. R. Soc. Edinburgh 53, 1933): with G G^T the matrix of the posterior and A
        // lower triangular, A_ii^2 chi-square with nu - i degrees of freedom and normal numbers
        // below, the covariance is B^T B, B = A^-1 G^T.
        for (std::ptrdiff_t i = 0; i < p_; ++i) {
            double *const A = bartlett_ + i * p_, *const B = root_ + i * p_;
            for (std::ptrdiff_t k = 0; k < i; ++k) A[k] = numbers.normal();
            const double diagonal = std::sqrt(numbers.chi_square(nu - static_cast<double>(i)));
            for (std::ptrdiff_t j = 0; j < p_; ++j) B[j] = j < i ? 0 : posterior_.row(j)[i];
            for (std::ptrdiff_t k = 0; k < i; ++k) add_scaled(B, -A[k], root_ + k * p_, p_);
            for (std::ptrdiff_t j = 0; j < p_; ++j) B[j] /= diagonal;
        }
        std::copy_n(next_.mean, p_, law_.mean);
        std::fill_n(law_.products, p_ * (p_ + 1) / 2, 0);
        for (std::ptrdiff_t i = 0; i < p_; ++i) {
            const double* const B = root_ + i * p_;
            add_scaled(law_.mean, numbers.normal() / std::sqrt(tau), B, p_);
            for (std::ptrdiff_t a = 0; a < p_; ++a) add_scaled(&law_.at(a, 0), B[a], B, a + 1);
        }
    }

    // What is missing becomes its mean under the law, or is drawn; next_ the mean and the sum of
    // products of all data then, or their expectations.
    bool fill(Numbers* numbers) {
        const bool expected = numbers == nullptr;
        std::fill_n(unsure_.products, p_ * (p_ + 1) / 2, 0);
        const bool regular =
            data_.for_each_pattern(list_, [&](std::ptrdiff_t m, double* row, std::ptrdiff_t count) {
                if (!conditional_.know_all_but(list_, m)) return false;
                if (expected)
                    conditional_.add_covariance(unsure_, list_, static_cast<double>(count));
                for (; count > 0; --count, row += data_.stride()) {
                    for (std::ptrdiff_t i = 0; i < m; ++i)
                        row[list_[i]] = conditional_.mean(i, row);
                    if (expected) continue;
                    for (std::ptrdiff_t i = 0; i < m; ++i) noise_[i] = numbers->normal();
                    conditional_.colour(noise_);
                    for (std::ptrdiff_t i = 0; i < m; ++i) row[list_[i]] += noise_[i];
                }
                return true;
            });
        if (!regular) return false;
        std::copy_n(law_.mean, p_, next_.mean);
        data_.weigh(next_);
        const auto rows = static_cast<double>(data_.counts.rows);
        const double share = (n_ - rows) / n_;
        for (std::ptrdiff_t a = 0; a < p_; ++a)
            for (std::ptrdiff_t b = 0; b <= a; ++b)
                next_.at(a, b) += complete_.at(a, b) + unsure_.at(a, b) +
                                  rows * share * (complete_.mean[a] - next_.mean[a]) *
                                      (complete_.mean[b] - next_.mean[b]);
        for (std::ptrdiff_t a = 0; a < p_; ++a)
            next_.mean[a] += share * (complete_.mean[a] - next_.mean[a]);
        return true;
    }

    std::ptrdiff_t all_, p_;
    double n_;
    MissingData<T> data_;
    Conditional conditional_;
    Moments law_, next_, complete_, unsure_;
    Prior prior_;
    Cholesky posterior_;
    double *bartlett_, *root_, *noise_;
    std::ptrdiff_t* list_;
};

// Whether the optional array has the elements that its count says, 0 or `elements`; null becomes 0.
// BAD_PARAMETERS for another count, the array's own status where it is null.
std::int32_t check_array(const Task& task, const void* count, const void* array,
                         std::uint64_t elements, std::int32_t null_array, bool& present) {
    const std::int64_t given = count != nullptr ? integer_at(task, count) : 0;
    present = given != 0;
    if (!present) return VTS_SS_STATUS_OK;
    if (given < 0 || static_cast<std::uint64_t>(given) != elements)
        return VTS_SS_STATUS_BAD_PARAMETERS;
    return array != nullptr ? VTS_SS_STATUS_OK : null_array;
}

}  // namespace

template <class T> std::int32_t missing_values(Task& task) {
    if (integer_at(task, task.missing_a_count) != 5) return VTS_SS_STATUS_BAD_PARAMETERS;
    const Method method(static_cast<const T*>(task.missing_a));
    if (!method.valid()) return VTS_SS_STATUS_BAD_PARAMETERS;
    const std::uint64_t all = positive_at(task, task.dimension), record = all + all * (all + 1) / 2;
    const auto imputations = static_cast<std::uint64_t>(method.imputations);
    bool has_start, has_prior, has_laws;
    std::int32_t status = check_array(task, task.missing_b_count, task.missing_b, record,
                                      null_status::missing_b, has_start);
    if (status == VTS_SS_STATUS_OK)
        status = check_array(task, task.missing_c_count, task.missing_c, record + 2,
                             null_status::missing_c, has_prior);
    if (status == VTS_SS_STATUS_OK)
        status = check_array(task, task.missing_e_count, task.missing_e, (1 + imputations) * record,
                             null_status::missing_e, has_laws);
    if (status == VTS_SS_STATUS_OK && imputations > 0 && task.missing_d == nullptr)
        status = null_status::missing_d;
    if (status != VTS_SS_STATUS_OK) return status;

    const auto counts = MissingCounts::of<T>(task);
    if (method.missing != 0 && static_cast<T>(counts.values) != method.missing)
        return VTS_SS_STATUS_BAD_PARAMETERS;
    if (imputations > 0 && static_cast<double>(integer_at(task, task.missing_d_count)) <
                               method.imputations * static_cast<double>(counts.values))
        return VTS_SS_STATUS_BAD_PARAMETERS;
    if (counts.p == 0) return VTS_SS_STATUS_OK;
    if (counts.n <= counts.p) return VTS_SS_STATUS_TOO_FEW_OBSERVATIONS;

    KeptLayout layout;
    const typename Imputation<T>::Room room(layout, counts);
    char* block = scratch(task, layout);
    if (block == nullptr) return VTS_SS_STATUS_NO_MEMORY;
    Imputation<T> imputation(task, counts, room, block);
    status = imputation.start(has_start ? static_cast<const T*>(task.missing_b) : nullptr,
                              has_prior ? static_cast<const T*>(task.missing_c) : nullptr);
    if (status != VTS_SS_STATUS_OK) return status;
    Numbers numbers;
    if (imputations > 0 && !numbers.create()) return VTS_SS_STATUS_NO_MEMORY;
    status = imputation.maximise(method.iterations, method.tolerance);
    if (status != VTS_SS_STATUS_OK && status != VTS_SS_STATUS_ITERATION_LIMIT) return status;

    constexpr std::int32_t no = VTS_SS_STATUS_NOT_POSITIVE_DEFINITE;
    if (imputations > 0 && !imputation.has_posterior()) return no;
    auto* laws = has_laws ? static_cast<T*>(task.missing_e) : nullptr;
    if (laws != nullptr) imputation.write_law(laws);
    if (imputations > 0 && !imputation.draw_values(numbers)) return no;
    auto* values = static_cast<T*>(task.missing_d);
    for (std::uint64_t k = 0; k < imputations; ++k) {
        for (double step = 0; step < method.draws; ++step)
            if (!imputation.draw_law(numbers) || !imputation.draw_values(numbers)) return no;
        if (laws != nullptr) imputation.write_law(laws += record);
        imputation.write_values(values);
        values += counts.values;
    }
    return status;
}

KEF_BOTH_PRECISIONS(missing_values);

}  // namespace kef::stats
