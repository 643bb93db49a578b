// kef spline: a curve through points; its values, derivatives and integrals.
#include <algorithm>
#include <cmath>
#include <limits>

#include "kef_fit.h"
#include "numbers.h"
#include "output.h"
#include "plot.h"
#include "table.h"

namespace command {

namespace {

void check(std::int32_t status) {
    if (status == DF_STATUS_NO_MEMORY) throw std::bad_alloc();
    if (status < 0) throw Failure(kef_df_status_text(status));
}

struct Kind {
    const char* name;
    std::size_t points;  // the least number
    std::int64_t order, type, boundary;
    std::int32_t (*construct)(const kef_df_task*, std::int64_t);
};
const Kind kinds[] = {
    {"not-a-knot", 3, DF_CUBIC, DF_TYPE_NATURAL, DF_NOT_A_KNOT,
     kef_df_kernel_dDFNaturalCubicSpline1D},
    {"natural", 3, DF_CUBIC, DF_TYPE_NATURAL, DF_FREE_END, kef_df_kernel_dDFNaturalCubicSpline1D},
    {"periodic", 3, DF_CUBIC, DF_TYPE_NATURAL, DF_PERIODIC, kef_df_kernel_dDFNaturalCubicSpline1D},
    {"akima", 2, DF_CUBIC, DF_TYPE_AKIMA, DF_NO_CONDITIONS, kef_df_kernel_dDFAkimaCubicSpline1D},
    {"bessel", 2, DF_CUBIC, DF_TYPE_BESSEL, DF_NO_CONDITIONS, kef_df_kernel_dDFBesselCubicSpline1D},
    {"quadratic", 2, DF_QUADRATIC, DF_TYPE_DEFAULT, DF_NO_CONDITIONS,
     kef_df_kernel_dDFQuadraticSpline1D},
    {"linear", 2, DF_LINEAR, DF_TYPE_DEFAULT, DF_NO_CONDITIONS, kef_df_kernel_dDFLinearSpline1D}};

struct Task {
    Task() = default;
    Task(const Task&) = delete;
    ~Task() { kef_df_kernel_DeleteTask(&handle); }
    kef_df_task* handle = nullptr;
};

// Splines through y over x, a row of values for each function, of a file.
class Curves {
public:
    Curves(const std::string& file, const Kind& kind, const std::vector<double>& x,
           const std::vector<double>& y)
        : functions(y.size() / x.size()),
          coefficients_((x.size() - 1) * functions * (std::size_t)kind.order) {
        check(kef_df_kernel_dNewTask1D(&task_.handle, (std::int64_t)x.size(), x.data(),
                                       DF_NON_UNIFORM, (std::int64_t)functions, y.data(),
                                       DF_BY_ROWS, 1));
        check(kef_df_kernel_dEditPPSpline1D(task_.handle, kind.order, kind.type, kind.boundary,
                                            nullptr, DF_NO_CONDITIONS, nullptr,
                                            coefficients_.data(), DF_BY_ROWS));
        check(kind.construct(task_.handle, 0));
        if (!std::all_of(coefficients_.begin(), coefficients_.end(),
                         [](double c) { return std::isfinite(c); }))
            throw Failure(
                file +
                ": the numbers are so large, or x so close together, that the spline overflows");
        if (kind.boundary == DF_PERIODIC) period_ = x.back() - x.front();
        start_ = x.front();
    }

    // Element i * functions + f: function f at place i.
    std::vector<double> at(std::vector<double> places, int derivative) const {
        std::vector<double> result(places.size() * functions);
        if (period_ > 0)
            for (double& place : places) place -= periods(place) * period_;
        std::vector<std::int64_t> asked((std::size_t)derivative + 1);
        asked.back() = 1;
        check(kef_df_kernel_dDFInterpolate1D(
            task_.handle, DF_SPLINE, (std::int64_t)places.size(), places.data(), DF_ANY_ORDER,
            (std::int64_t)asked.size(), asked.data(), result.data(), DF_BY_COLUMNS, nullptr));
        return result;
    }
    std::vector<double> integral(double from, double to) const {
        if (period_ > 0) {
            const double skipped = periods(from), passed = periods(to);
            auto result = plain_integral(from - skipped * period_, to - passed * period_);
            const auto whole = plain_integral(start_, start_ + period_);
            for (std::size_t f = 0; f < functions; ++f) result[f] += (passed - skipped) * whole[f];
            return result;
        }
        return plain_integral(from, to);
    }
    const std::size_t functions;

private:
    // Whole periods from the first one; the last point ends it.
    double periods(double place) const {
        return place == start_ + period_ ? 0 : std::floor((place - start_) / period_);
    }
    std::vector<double> plain_integral(double from, double to) const {
        std::vector<double> result(functions);
        check(kef_df_kernel_dDFIntegrate1D(task_.handle, 0, 1, &from, DF_ANY_ORDER, &to,
                                           DF_ANY_ORDER, result.data(), DF_BY_ROWS));
        return result;
    }

    Task task_;
    std::vector<double> coefficients_;
    double start_ = 0, period_ = 0;  // 0: there is none
};

std::vector<double> grid(double from, double to, std::size_t n) {
    std::vector<double> x(n);
    for (std::size_t i = 0; i < n; ++i)
        x[i] = i + 1 == n ? to : std::lerp(from, to, (double)i / (double)(n - 1));
    return x;
}

int run(const Arguments& arguments) {
    if (arguments.words.size() != 1) wrong("one file is wanted, or - for standard input");
    const std::string kind_name = arguments.text("--kind", kinds[0].name);
    const Kind* kind = std::find_if(std::begin(kinds), std::end(kinds),
                                    [&](const Kind& k) { return kind_name == k.name; });
    if (kind == std::end(kinds)) {
        std::vector<std::string> known;
        for (const Kind& k : kinds) known.emplace_back(k.name);
        wrong("--kind: one of " + joined(known) + ": " + kind_name);
    }
    if (!arguments.has("--at") && !arguments.has("--grid") && !arguments.has("--integrate") &&
        !arguments.has("--plot"))
        wrong("what is wanted? --at, --grid, --integrate or --plot");
    if (arguments.has("--at") && arguments.has("--grid")) wrong("--at or --grid, not both");
    const auto derivative = arguments.count("--derivative", 0);
    if (derivative > 3) wrong("--derivative: 0 to 3");
    const auto points = arguments.count("--grid", 0);
    if (arguments.has("--grid") && (points < 2 || points > 100000000))
        wrong("--grid: 2 to 100000000 places");
    double limits[2] = {0, 0};
    if (arguments.has("--integrate"))
        for (int i : {0, 1})
            limits[i] = number_of(arguments.values("--integrate")[(std::size_t)i], "--integrate");
    const auto sites = arguments.numbers("--at");

    const auto table = open_table(arguments.words[0], arguments);
    const auto columns = choose_columns(*table, arguments);
    const std::size_t width = columns.size();
    if (width < 2) throw Failure(table->name() + ": two columns are wanted, x and y");
    table->select(columns);
    const auto name = [&](std::size_t i) { return table->columns()[columns[i]]; };
    std::vector<double> x;
    std::vector<std::vector<double>> ys(width - 1);
    Rows rows;
    while (table->read(rows))
        for (std::size_t k = 0; k < rows.size(); ++k) {
            const double* row = rows.values.data() + k * width;
            const auto refuse = [&](std::size_t i, const std::string& what) {
                throw Failure(table->name() + ":" + std::to_string(rows.lines[k]) + ": column " +
                              name(i) + ": " + what);
            };
            for (std::size_t i = 0; i < width; ++i)
                if (!std::isfinite(row[i])) refuse(i, "a finite number is wanted");
            if (!x.empty() && !(row[0] > x.back()))
                refuse(0, rounded(row[0], 17) + " is not above the row before it");
            x.push_back(row[0]);
            for (std::size_t i = 1; i < width; ++i) ys[i - 1].push_back(row[i]);
        }
    if (interrupted()) throw Interrupted();
    if (x.size() < kind->points)
        throw Failure(table->name() + ": " + std::to_string(x.size()) + " points; " + kind->name +
                      " needs " + std::to_string(kind->points));
    if (kind->boundary == DF_PERIODIC)
        for (std::size_t i = 1; i < width; ++i) {
            const double first = ys[i - 1].front(), last = ys[i - 1].back();
            if (!(std::fabs(last - first) <= 1e-12 * std::fmax(std::fabs(first), std::fabs(last)) ||
                  std::fabs(last - first) <= 1e-15))
                throw Failure(table->name() + ": column " + name(i) + ": it begins with " +
                              rounded(first, 17) + " and ends with " + rounded(last, 17) +
                              "; a periodic spline needs the same");
        }
    std::vector<double> y;
    for (const auto& row : ys) y.insert(y.end(), row.begin(), row.end());
    const Curves curves(table->name(), *kind, x, y);

    Output output(arguments.text("-o"));
    std::string text;
    const auto heading = [&](const std::vector<std::string>& first, const std::string& prefix) {
        for (const auto& word : first) text += quoted(word) + ",";
        for (std::size_t i = 1; i < width; ++i)
            text += quoted(prefix + name(i)) + (i + 1 < width ? "," : "\n");
    };
    const auto line = [&](const std::vector<double>& first, const double* values) {
        for (const double value : first) append(text, value), text += ',';
        for (std::size_t i = 0; i < curves.functions; ++i)
            append(text, values[i]), text += i + 1 < curves.functions ? ',' : '\n';
    };
    if (!sites.empty() || points > 0) {
        heading({name(0)}, derivative > 0 ? "d" + std::to_string(derivative) + " " : "");
        const auto places = points > 0 ? grid(x.front(), x.back(), points) : sites;
        for (std::size_t done = 0; done < places.size(); done += 4096) {
            if (interrupted()) throw Interrupted();
            const std::vector<double> part(
                places.begin() + (long)done,
                places.begin() + (long)std::min(places.size(), done + 4096));
            const auto values = curves.at(part, (int)derivative);
            for (std::size_t i = 0; i < part.size(); ++i)
                line({part[i]}, values.data() + i * curves.functions);
            output.write(text);
            text.clear();
        }
    }
    if (arguments.has("--integrate")) {
        heading({"from", "to"}, "integral of ");
        line({limits[0], limits[1]}, curves.integral(limits[0], limits[1]).data());
        output.write(text);
    }
    output.close();

    if (arguments.has("--plot")) {
        const auto places = grid(x.front(), x.back(), 401);
        const auto values = curves.at(places, 0), slopes = curves.at(places, 1);
        save_picture(arguments.text("--plot"), (int)curves.functions, [&](picture& drawn) {
            for (std::size_t f = 0; f < curves.functions; ++f) {
                const auto one = [&](panel at, const std::vector<double>& all,
                                     const std::string& title, const std::string& axis, bool dots) {
                    std::vector<double> curve;
                    for (std::size_t i = 0; i < places.size(); ++i)
                        curve.push_back(all[i * curves.functions + f]);
                    fit_axis(places, at.low_x, at.high_x);
                    fit_axis(curve, at.low_y, at.high_y);
                    draw_axes(&at, label(title).c_str(), label(name(0)).c_str(),
                              label(axis).c_str());
                    draw_curve(&at, "#204080", (int)places.size(), places.data(), curve.data());
                    if (dots && x.size() <= 1000)
                        for (std::size_t i = 0; i < x.size(); ++i)
                            draw_dot(&at, "#c04020", x[i], ys[f][i]);
                };
                one(left_panel(&drawn), values, name(f + 1) + ": " + kind->name + " spline",
                    name(f + 1), true);
                one(right_panel(&drawn), slopes, "its slope",
                    "d " + name(f + 1) + " / d " + name(0), false);
                end_row(&drawn);
            }
        });
    }
    return succeeded;
}

const Option options[] = {
    KEF_TABLE_OPTIONS,
    {"--kind", "NAME",
     "not-a-knot, natural, periodic, akima, bessel, quadratic or linear (not-a-knot)"},
    {"--at", "LIST", "values at these places"},
    {"--grid", "N", "values at N places from the first point to the last"},
    {"--derivative", "K", "the derivative of order K instead of the value, 1 to 3"},
    {"--integrate", "A B", "the integral from A to B"},
    {"--plot", "FILE", "draw curve and slope, as SVG"},
    {"-o", "FILE", "values to this file, not to standard output"}};

}  // namespace

const Command spline = {"spline", "a curve through points", "FILE", options, run, nullptr};

}  // namespace command
