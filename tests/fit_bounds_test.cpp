// Nothing is read or written outside the caller's arrays: each array ends, or begins, at
// a page that may not be touched.
#include "tests/fit_data.h"
#include "tests/system.h"

namespace {

using namespace fit_test;
using kef_test::Guard;
using kef_test::Guarded;

template <class T>
void use_every_array(const Kind& kind, const Spline<T>& s, std::size_t n, Guard guard) {
    const std::size_t ny = s.ny, sites = 37;
    const Guarded<T> x(s.x, guard), y(s.y, guard), ic(s.ic, guard);
    const bool values = s.bc_type & (12 | 48) || s.bc_type == DF_PERIODIC;
    const Guarded<T> bc(
        values ? std::vector<T>(s.bc_type == DF_PERIODIC ? 1 : 2, T(0.5)) : std::vector<T>(),
        guard);
    const std::size_t cells = kind.type == DF_TYPE_SUBBOTIN ? n : n - 1;
    const Guarded<T> c(std::vector<T>(ny * cells * kind.order), guard);
    kef_df_task* task = nullptr;
    ASSERT_EQ(DF_STATUS_OK,
              Api<T>::new_task(&task, n, x.data(), s.x_hint, ny, y.data(), s.y_hint, 0));
    ASSERT_EQ(DF_STATUS_OK, Api<T>::edit_spline(task, kind.order, kind.type, s.bc_type, bc.data(),
                                                s.ic_type, ic.data(), c.data(), s.c_hint));
    ASSERT_EQ(DF_STATUS_OK, (sizeof(T) == 8 ? kind.in_double : kind.in_single)(task, 0))
        << kind.name << ", n " << n << ", boundary " << s.bc_type;
    std::vector<T> at(sites);
    for (std::size_t j = 0; j < sites; ++j)
        at[j] = s.x[0] - 1 + (s.x[n - 1] - s.x[0] + 2) * T(j * 11 % sites) / T(sites - 1);
    const Guarded<T> site(at, guard), result(std::vector<T>(2 * ny * sites), guard);
    const Guarded<int32_t> orders({1, 0, 1}, guard), cell(std::vector<int32_t>(sites), guard);
    EXPECT_EQ(DF_STATUS_OK,
              Api<T>::interpolate(task, DF_SPLINE, sites, site.data(), DF_ANY_ORDER, 3,
                                  orders.data(), result.data(), DF_BY_COLUMNS, cell.data()));
    EXPECT_EQ(DF_STATUS_OK,
              Api<T>::integrate(task, 0, sites - 1, site.data(), DF_ANY_ORDER, site.data() + 1,
                                DF_ANY_ORDER, result.data(), DF_BY_ROWS));
    // A proposal one behind the last cell.
    std::size_t behind = n;
    EXPECT_EQ(DF_STATUS_OK,
              Searches<T>::user32(
                  task, sites, site.data(), DF_ANY_ORDER, cell.data(),
                  [](const kef_df_task*, int64_t m, const T*, int64_t* at, void* user) {
                      std::fill_n(at, m, *static_cast<std::size_t*>(user));
                      return int32_t{0};
                  },
                  &behind));
    kef_df_kernel_DeleteTask(&task);
}

template <class T> void every_spline() {
    for (const Kind& kind : kinds())
        for (int64_t boundary : kind.boundaries)
            for (int64_t internal : kind.internals)
                for (std::size_t n = kind.min_nx; n <= 6; ++n)
                    for (std::size_t ny : {1, 2})
                        for (int64_t storage : {DF_BY_ROWS, DF_BY_COLUMNS})
                            for (int64_t x_hint : {DF_NON_UNIFORM, DF_UNIFORM})
                                for (Guard guard : {Guard::before, Guard::behind}) {
                                    Spline<T> s;
                                    s.x = uneven<T>(n, n), s.y = noise<T>(n * ny, n);
                                    s.set_conditions(boundary, internal);
                                    // One value a gap for knots, one a breakpoint inside else.
                                    if (internal != 0 && internal != DF_INTERNAL_KNOTS)
                                        s.ic.resize(std::max<std::size_t>(n, 3) - 2);
                                    s.ny = ny, s.x_hint = x_hint;
                                    s.y_hint = s.c_hint = storage;
                                    use_every_array(kind, s, n, guard);
                                }
}

TEST(FitBounds, EveryArrayDouble) { every_spline<double>(); }
TEST(FitBounds, EveryArraySingle) { every_spline<float>(); }

}  // namespace
