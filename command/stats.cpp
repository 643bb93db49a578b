// kef stats: moments, extremes, quantiles and robust estimates of columns, in one pass.
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <memory>

#include "kef_stats.h"
#include "numbers.h"
#include "output.h"
#include "plot.h"
#include "progress.h"
#include "table.h"

namespace command {

namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr std::size_t block = 2048, most_groups = 10000, most_panels = 50, most_boxes = 12;

void check(std::int32_t status) {
    if (status == VTS_SS_STATUS_NO_MEMORY) throw std::bad_alloc();
    if (status < 0) throw Failure(kef_ss_status_text(status));
}

// What is asked of every column.
struct Wanted {
    std::vector<double> orders;  // of quantiles
    double epsilon;
    bool robust;
};

// One column of one group: a task that is fed block by block.
class Column {
public:
    explicit Column(const Wanted& wanted) : wanted_(wanted), quantiles(wanted.orders.size(), nan) {}
    ~Column() {
        if (task_ != nullptr) __vtsSSDeleteTask(&task_);
    }
    Column(const Column&) = delete;

    void add(double x) {
        if (std::isnan(x)) {
            ++missing;
            return;
        }
        ++count;
        if (wanted_.robust) { all_.push_back(x); }
        if (values_.size() == block) feed();
        values_.push_back(x);
    }

    // The estimates are there after this.
    void finish() {
        if (count == 0) {
            mean = sum = nan;
            return;
        }
        orders_ = (std::int64_t)quantiles.size();
        feed();
        deviation = std::sqrt(central_[0]);
        if (wanted_.robust) estimate_robustly();
        __vtsSSDeleteTask(&task_);
        std::vector<double>().swap(values_);
        std::vector<double>().swap(all_);
    }

    std::uint64_t count = 0, missing = 0;
    double mean = nan, sum = nan, deviation = nan, least = nan, greatest = nan, skewness = nan,
           kurtosis = nan;
    double median = nan, absolute_deviation = nan, robust_mean = nan, robust_deviation = nan,
           outliers = nan;
    const Wanted& wanted_;
    std::vector<double> quantiles;

private:
    // A task has some 16 KiB: only what is fed has one, until it is finished.
    void make_task() {
        check(__vtsdSSNewTask(&task_, &one_, &n_, &storage_, nullptr, nullptr, nullptr, 1));
        __vtsdSSEditTask(task_, VTS_SS_ID_ACCUMULATED_WEIGHTS, weights_);
        __vtsdSSEditMoments(task_, &mean, raw_, raw_ + 1, raw_ + 2, central_, central_ + 1,
                            central_ + 2);
        __vtsdSSEditTask(task_, VTS_SS_ID_SKEWNESS, &skewness);
        __vtsdSSEditTask(task_, VTS_SS_ID_KURTOSIS, &kurtosis);
        __vtsdSSEditTask(task_, VTS_SS_ID_SUM, &sum);
        __vtsdSSEditTask(task_, VTS_SS_ID_MINIMUM, &least);
        __vtsdSSEditTask(task_, VTS_SS_ID_MAXIMUM, &greatest);
        if (!quantiles.empty())
            __vtsdSSEditStreamQuantiles(task_, &orders_, wanted_.orders.data(), quantiles.data(),
                                        &one_, &wanted_.epsilon);
    }
    void feed() {
        if (task_ == nullptr) make_task();
        n_ = (std::int64_t)values_.size();
        __vtsdSSEditTask(task_, VTS_SS_ID_X, values_.data());
        check(_vtsdSSBasic(task_,
                           VTS_SS_ESTIMATE_MEAN | VTS_SS_ESTIMATE_CENTRAL_MOMENT_2 |
                               VTS_SS_ESTIMATE_SKEWNESS | VTS_SS_ESTIMATE_KURTOSIS |
                               VTS_SS_ESTIMATE_SUM,
                           VTS_SS_METHOD_TILED));
        check(_vtsdSSMinmax(task_, VTS_SS_ESTIMATE_MINIMUM | VTS_SS_ESTIMATE_MAXIMUM,
                            VTS_SS_METHOD_MINMAX));
        if (!quantiles.empty()) check(_vtsdSSStreamQuantiles(task_, 0, 0));
        values_.clear();
    }

    // Estimates that need all numbers at once. What cannot be had (too few numbers, half of them
    // equal) stays NaN.
    void estimate_robustly() {
        n_ = (std::int64_t)all_.size();
        const double half = 0.5, robust[] = {0.5, 0.001, 1e-8, 100}, outlying[] = {2, 0.05, 0};
        const std::int64_t full = VTS_SS_LAYOUT_FULL, four = 4, three = 3;
        double covariance = nan;
        std::vector<double> kept(all_.size());
        __vtsdSSEditTask(task_, VTS_SS_ID_X, all_.data());
        __vtsdSSEditQuantiles(task_, &one_, &half, &median, nullptr, nullptr);
        __vtsdSSEditTask(task_, VTS_SS_ID_MEDIAN_ABSOLUTE_DEVIATION, &absolute_deviation);
        __vtsdSSEditRCov(task_, &full, &four, robust, &robust_mean, &covariance);
        __vtsdSSEditOutDetect(task_, &three, outlying, kept.data());
        check(_vtsdSSQuantiles(task_, 0, 0));
        check(_vtsdSSMAD(task_, 0, 0));
        const auto found = [](std::int32_t status) {
            if (status == VTS_SS_STATUS_NO_MEMORY) check(status);
            return status == VTS_SS_STATUS_OK || status == VTS_SS_STATUS_ITERATION_LIMIT;
        };
        if (found(_vtsdSSRobustCovariance(task_, 0, 0))) robust_deviation = std::sqrt(covariance);
        if (found(_vtsdSSOutliersDetection(task_, 0, 0)))
            outliers = (double)std::count(kept.begin(), kept.end(), 0.0);
    }

    kef_ss_task* task_ = nullptr;
    const std::int64_t one_ = 1, storage_ = VTS_SS_STORAGE_ROWS;
    std::int64_t n_ = 0, orders_ = 0;
    double weights_[2] = {0, 0}, raw_[3], central_[3];
    std::vector<double> values_, all_;
};

using Group = std::vector<std::unique_ptr<Column>>;

struct Cells {
    std::vector<std::vector<std::string>> rows;

    std::string as_table() const {
        std::vector<std::size_t> widths(rows[0].size());
        for (const auto& row : rows)
            for (std::size_t i = 0; i < row.size(); ++i)
                widths[i] = std::max(widths[i], length(row[i]));
        std::string text;
        for (const auto& row : rows) {
            for (std::size_t i = 0; i < row.size(); ++i) {
                const std::string gap(widths[i] - length(row[i]), ' ');
                text += i < words ? printable(row[i]) + gap + "  "
                                  : gap + row[i] + (i + 1 < row.size() ? "  " : "");
            }
            text += '\n';
        }
        return text;
    }
    std::string as_csv() const {
        std::string text;
        for (const auto& row : rows) {
            for (std::size_t i = 0; i < row.size(); ++i)
                text += (i > 0 ? "," : "") + quoted(row[i]);
            text += '\n';
        }
        return text;
    }
    std::size_t words = 1;  // columns of words, on the left

private:
    static std::size_t length(const std::string& text) {  // in characters of UTF-8
        return (std::size_t)std::count_if(text.begin(), text.end(),
                                          [](char c) { return (c & 0xC0) != 0x80; });
    }
};

Cells cells_of(const std::map<std::string, Group>& groups, const std::vector<std::string>& names,
               const std::string& by, const std::vector<double>& orders, bool robust, bool exact) {
    Cells cells;
    std::vector<std::string> head = {"column", "count", "missing", "mean", "deviation", "minimum"};
    for (const double order : orders) head.push_back("q" + rounded(order));
    head.insert(head.end(), {"maximum", "skewness", "kurtosis", "sum"});
    if (robust)
        head.insert(head.end(), {"median", "mad", "robust mean", "robust deviation", "outliers"});
    if (!by.empty()) head.insert(head.begin(), by), cells.words = 2;
    cells.rows.push_back(head);
    const auto number = [&](double x) {
        std::string text;
        if (exact) append(text, x);
        else text = rounded(x);
        return text;
    };
    for (const auto& [key, group] : groups)
        for (std::size_t i = 0; i < names.size(); ++i) {
            const Column& c = *group[i];
            auto& row = cells.rows.emplace_back();
            if (!by.empty()) row.push_back(key);
            row.insert(row.end(), {names[i], std::to_string(c.count), std::to_string(c.missing)});
            std::vector<double> numbers = {c.mean, c.deviation, c.least};
            numbers.insert(numbers.end(), c.quantiles.begin(),
                           c.quantiles.begin() + (long)orders.size());
            numbers.insert(numbers.end(), {c.greatest, c.skewness, c.kurtosis, c.sum});
            if (robust)
                numbers.insert(numbers.end(), {c.median, c.absolute_deviation, c.robust_mean,
                                               c.robust_deviation, c.outliers});
            for (const double x : numbers) row.push_back(number(x));
        }
    return cells;
}

void draw(const std::string& path, const std::map<std::string, Group>& groups,
          std::vector<Histogram>& histograms, const std::vector<std::string>& names,
          const std::string& by, std::size_t first_order) {
    save_picture(path, (int)names.size(), [&](picture& drawn) {
        for (std::size_t i = 0; i < names.size(); ++i) {
            std::uint64_t count = 0;
            std::vector<Box> boxes;
            for (const auto& [key, group] : groups) {
                const Column& c = *group[i];
                count += c.count;
                const double* q = c.quantiles.data() + first_order;
                if (boxes.size() < most_boxes)
                    boxes.push_back({by.empty() ? names[i] : key, c.least, q[0], q[1], q[2], q[3],
                                     q[4], c.greatest});
            }
            histograms[i].draw(left_panel(&drawn),
                               names[i] + ": " + std::to_string(count) + " values", names[i]);
            std::string title = "quartiles, 5 % and 95 %, extremes";
            if (!by.empty()) title += " by " + by;
            if (groups.size() > boxes.size())
                title += " (the first " + std::to_string(boxes.size()) + ")";
            draw_boxes(right_panel(&drawn), title, names[i], boxes);
            end_row(&drawn);
        }
    });
}

int run(const Arguments& arguments) {
    if (arguments.words.size() != 1) wrong("one file is wanted, or - for standard input");
    Wanted wanted{arguments.numbers("--quantiles"), arguments.number("--epsilon", 0.001),
                  arguments.has("--robust")};
    const std::size_t asked = wanted.orders.size();
    for (const double order : wanted.orders)
        if (!(order >= 0 && order <= 1)) wrong("--quantiles: orders lie between 0 and 1");
    if (!(wanted.epsilon >= 0x1p-20 && wanted.epsilon <= 0.5))
        wrong("--epsilon: between 2^-20 and 0.5");
    const std::string format = arguments.text("--format", "table");
    if (format != "table" && format != "csv") wrong("--format: table or csv: " + format);
    const bool plot = arguments.has("--plot");
    if (plot) wanted.orders.insert(wanted.orders.end(), {0.05, 0.25, 0.5, 0.75, 0.95});

    const auto table = open_table(arguments.words[0], arguments);
    std::optional<std::size_t> by;
    if (arguments.has("--by")) by = find_column(*table, arguments.text("--by"));
    const auto columns = choose_columns(*table, arguments, by);
    table->select(columns, by);
    std::vector<std::string> names;
    for (const auto column : columns) names.push_back(table->columns()[column]);
    if (plot && names.size() > most_panels)
        wrong("--plot: more than 50 columns; --columns chooses some");
    const double memory = (double)sysconf(_SC_PHYS_PAGES) * (double)sysconf(_SC_PAGESIZE);

    std::map<std::string, Group> groups;
    std::vector<Histogram> histograms(plot ? names.size() : 0);
    const auto group_of = [&](const std::string& key) -> Group& {
        Group& group = groups[key];
        if (group.empty()) {
            if (groups.size() > most_groups)
                throw Failure(table->name() + ": more than 10000 groups by " +
                              table->columns()[*by]);
            for (std::size_t i = 0; i < names.size(); ++i)
                group.push_back(std::make_unique<Column>(wanted));
        }
        return group;
    };
    std::uint64_t seen = 0;
    {
        Progress progress(table->name(), (double)table->size());
        Rows rows;
        while (table->read(rows)) {
            for (std::size_t k = 0; k < rows.size(); ++k) {
                Group& group = group_of(by ? rows.keys[k] : "");
                for (std::size_t i = 0; i < names.size(); ++i) {
                    const double x = rows.values[k * names.size() + i];
                    group[i]->add(x);
                    if (plot) histograms[i].add(x);
                }
            }
            seen += rows.size();
            if (wanted.robust && 5.0 * 8 * (double)(seen * names.size()) > memory)
                throw Failure(table->name() +
                              ": too large for --robust, which keeps all numbers in memory");
            progress.at((double)table->position());
        }
    }
    const int signal = interrupted();
    if (seen == 0) {
        if (signal) throw Interrupted();
        throw Failure(table->name() + ": no rows of data");
    }
    for (auto& [key, group] : groups)
        for (auto& column : group) column->finish();
    wanted.orders.resize(asked);
    const Cells cells = cells_of(groups, names, by ? table->columns()[*by] : "", wanted.orders,
                                 wanted.robust, format == "csv");
    Output output;
    const std::string partial =
        "partial: stopped by a signal after " + std::to_string(seen) + " rows";
    if (signal) output.write("# " + partial + "\n");
    output.write(format == "csv" ? cells.as_csv() : cells.as_table());
    output.close();
    if (signal) {
        say(partial + (plot ? "; no picture" : ""));
        return 128 + signal;
    }
    if (plot)
        draw(arguments.text("--plot"), groups, histograms, names, by ? table->columns()[*by] : "",
             asked);
    return succeeded;
}

const Option options[] = {
    KEF_TABLE_OPTIONS,
    {"--by", "COLUMN", "each group of rows that have the same there"},
    {"--quantiles", "LIST", "of these orders, such as 0.25,0.5,0.75"},
    {"--epsilon", "E", "the most that a quantile's rank is off, as a share of all (0.001)"},
    {"--robust", "",
     "median, median absolute deviation, location and deviation that outliers do not move, "
     "outliers"},
    {"--plot", "FILE", "draw histograms and box plots, as SVG"},
    {"--format", "table|csv", "six digits in columns, or all digits"}};

}  // namespace

const Command stats = {
    "stats", "statistics of the columns of a file, in one pass", "FILE", options, run, nullptr};

}  // namespace command
