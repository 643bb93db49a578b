// The values of the cost tables: measured cycles on the scale of vm/surface/costs.def.
#pragma once

#include <algorithm>
#include <cmath>
#include <map>

#include "bench/batch.h"
#include "bench/table.h"

namespace kef {

class Costs {
public:
    // Cycles of an element in each slot, in one pass over the functions.
    void add(const kef_test::Row& row, const std::array<double, 3>& cycles) {
        auto& passes = cycles_[row.name()];
        for (int slot = 0; slot < 3; ++slot) passes[slot].push_back(cycles[slot]);
    }

    // After passes over all functions.
    void print(const std::vector<const kef_test::Row*>& rows, bool markdown) const {
        const auto [factor, least, most] = fit();
        Table table({"function", "kernels", "cycles", "on the scale", "published"});
        for (const kef_test::Row* shown : rows) {
            const kef_test::Row& row = *shown;
            std::array<std::string, 3> cells;
            for (int slot = 0; slot < 3; ++slot) {
                const char* comma = slot ? ", " : "";
                const double* settled = anchor(model_of(row.name()), slot);
                cells[0] += format("%s%.2f", comma, median(row.name(), slot));
                cells[1] += settled ? format("%s%.4gf", comma, *settled)
                                    : comma + literal(factor * like_cycles(row.name(), slot));
                cells[2] += format("%s%.4gf", comma, row.costs[slot]);
            }
            table.add({row.name(), kernels(row), cells[0], cells[1], cells[2]});
        }
        table.print(markdown);
        std::printf("%sfactor %.3f; the anchors' costs are between %.2f and %.2f times that\n",
                    markdown ? "\n" : "", factor, least, most);
    }

private:
    static constexpr struct Anchor {
        const char* name;
        double cost[3];
    } anchors[] = {
#define KEF_ANCHOR(type, function, ...) {#type #function, {__VA_ARGS__}},
#define KEF_LIKE(type, function, model)
#include "vm/surface/costs.def"
#undef KEF_ANCHOR
#undef KEF_LIKE
    };
    static constexpr struct Like {
        const char *name, *model;
    } likes[] = {
#define KEF_ANCHOR(type, function, ...)
#define KEF_LIKE(type, function, model) {#type #function, #type #model},
#include "vm/surface/costs.def"
#undef KEF_ANCHOR
#undef KEF_LIKE
    };

    static std::string model_of(const std::string& name) {
        for (const Like& like : likes)
            if (name == like.name) return like.model;
        return name;
    }
    static const double* anchor(const std::string& name, int slot) {
        for (const Anchor& a : anchors)
            if (name == a.name) return &a.cost[slot];
        return nullptr;
    }

    // Three digits, as C writes a float.
    static std::string literal(double cost) {
        const std::string digits = format("%.3g", cost);
        return digits + (digits.find('.') == std::string::npos ? ".0f" : "f");
    }
    static std::string kernels(const kef_test::Row& row) {
        return std::string(row.kernels[0]) + ", " + row.kernels[1] + ", " + row.kernels[2];
    }

    // Over the passes.
    double median(const std::string& name, int slot) const {
        std::vector<double> passes = cycles_.at(name)[slot];
        std::nth_element(passes.begin(), passes.begin() + passes.size() / 2, passes.end());
        return passes[passes.size() / 2];
    }

    // The geometric mean over the functions that are like this one.
    double like_cycles(const std::string& name, int slot) const {
        double sum = 0;
        int count = 0;
        for (const auto& [other, passes] : cycles_)
            if (model_of(other) == model_of(name)) {
                sum += std::log(median(other, slot));
                ++count;
            }
        return std::exp(sum / count);
    }

    // The mean of ln(anchor / cycles), each kernel once, is the solution of least squares.
    struct Fit {
        double factor, least, most;  // of anchor / (factor cycles)
    };
    Fit fit() const {
        std::vector<double> logarithms;
        for (const kef_test::Row& row : kef_test::rows())
            for (int slot = 0; slot < 3; ++slot) {
                const double* cost = anchor(row.name(), slot);
                const auto first = std::find_if(
                    row.kernels.begin(), row.kernels.end(),
                    [&](const char* kernel) { return std::string(kernel) == row.kernels[slot]; });
                if (cost && first - row.kernels.begin() == slot && cycles_.contains(row.name()))
                    logarithms.push_back(std::log(*cost / median(row.name(), slot)));
            }
        double sum = 0;
        for (const double x : logarithms) sum += x;
        const double mean = sum / static_cast<double>(logarithms.size());
        const auto [least, most] = std::minmax_element(logarithms.begin(), logarithms.end());
        return {std::exp(mean), std::exp(*least - mean), std::exp(*most - mean)};
    }

    std::map<std::string, std::array<std::vector<double>, 3>> cycles_;
};

}  // namespace kef
