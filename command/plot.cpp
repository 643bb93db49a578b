#include "plot.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>

#include "command.h"
#include "output.h"

namespace command {

void save_picture(const std::string& path, int rows, const std::function<void(picture&)>& draw) {
    char* text = nullptr;
    std::size_t size = 0;
    FILE* to = open_memstream(&text, &size);
    if (to == nullptr) throw std::bad_alloc();
    picture drawn;
    start_picture(&drawn, to, rows);
    draw(drawn);
    finish_picture(&drawn);
    const bool complete = std::fclose(to) == 0;
    const std::string svg(text, complete ? size : 0);
    std::free(text);
    if (!complete) throw std::bad_alloc();
    Output output(path);
    output.write(svg);
    output.close();
}

std::string label(const std::string& text) {
    std::string shown = text;
    for (std::size_t i = 0; i < shown.size();) {
        const unsigned char c = (unsigned char)shown[i];
        const std::size_t more = c >= 0xF0 && c < 0xF5 ? 3 : c >= 0xE0 ? 2 : c >= 0xC2 ? 1 : 0;
        bool right =
            c < 0x80 ? c >= ' ' && c != 127 : more > 0 && c < 0xF5 && i + more < shown.size();
        for (std::size_t k = 1; right && k <= more; ++k) right = (shown[i + k] & 0xC0) == 0x80;
        if (!right) shown[i] = '?';
        i += right ? 1 + more : 1;
    }
    return shown;
}

void fit_axis(std::span<const double> numbers, double& low, double& high) {
    low = std::numeric_limits<double>::infinity(), high = -low;
    for (const double x : numbers)
        if (std::isfinite(x)) low = std::min(low, x), high = std::max(high, x);
    if (!(low <= high)) low = 0, high = 1;
    // Room on both sides, more than what divides into ticks; halves, as the difference may
    // overflow.
    const double room = std::max(
        {0.05 * (high / 2 - low / 2), 1e-6 * std::fabs(low), 1e-6 * std::fabs(high), 1e-290});
    const bool one = low == high && room < 1e-6;
    low -= one ? 1 : room, high += one ? 1 : room;
    constexpr double most = 1e307;  // ticks stay finite
    low = std::clamp(low, -most, most), high = std::clamp(high, -most, most);
}

// ---- histogram

namespace {

constexpr std::size_t most_bins = 4096, kept = 4096;

}  // namespace

scale Histogram::width() const {
    const int exponent = level_ >= 0 ? level_ / 2 : -((1 - level_) / 2);
    return {level_ - 2 * exponent == 1 ? 2.0 : 1.0, std::pow(10, std::abs(exponent)),
            exponent < 0 ? -exponent : 0};
}

void Histogram::add(double x) {
    if (!std::isfinite(x) || std::fabs(x) > 1e300) return;
    if (!bins_.empty()) return place(x);
    first_.push_back(x);
    if (first_.size() == kept) settle();
}

void Histogram::settle() {
    if (first_.empty()) return;
    const auto [least, greatest] = std::minmax_element(first_.begin(), first_.end());
    // Multiples of the width have to be exact integers.
    const double finest = std::max({(*greatest - *least) / 1000, 0x1p-50 * std::fabs(*least),
                                    0x1p-50 * std::fabs(*greatest), 1e-290});
    level_ = 2 * (int)std::floor(std::log10(finest));
    while (multiple(width(), 1) < finest) ++level_;
    low_ = (std::int64_t)multiple_below(width(), *least);
    bins_.assign(1, 0);
    for (const double x : first_) place(x);
    first_.clear();
}

void Histogram::place(double x) {
    for (;;) {
        const scale w = width();
        const double at = w.decimals > 0 ? std::floor(x / w.factor * w.power)
                                         : std::floor(x / w.factor / w.power);
        const double from = std::min(at, (double)low_);
        const double to = std::max(at, (double)low_ + (double)bins_.size() - 1);
        if (to - from < (double)most_bins && std::fabs(at) < 0x1p53) {
            if (at < (double)low_) {
                bins_.insert(bins_.begin(), (std::size_t)((double)low_ - at), 0);
                low_ = (std::int64_t)at;
            }
            if (to - from >= (double)bins_.size()) bins_.resize((std::size_t)(to - from) + 1);
            ++bins_[(std::size_t)(at - (double)low_)];
            return;
        }
        coarsen();
    }
}

void Histogram::coarsen() {
    const int times = level_ % 2 == 0 ? 2 : 5;
    const auto down = [&](std::int64_t k) { return (k - (k % times + times) % times) / times; };
    const std::int64_t low = down(low_), high = down(low_ + (std::int64_t)bins_.size() - 1);
    std::vector<std::uint64_t> bins((std::size_t)(high - low + 1));
    for (std::size_t i = 0; i < bins_.size(); ++i)
        bins[(std::size_t)(down(low_ + (std::int64_t)i) - low)] += bins_[i];
    bins_.swap(bins);
    low_ = low;
    ++level_;
}

void Histogram::draw(const panel& place, const std::string& title, const std::string& name) {
    settle();
    if (bins_.empty()) return;
    const scale w = width(),
                round = round_steps(multiple(w, 1) *
                                    std::max<double>((double)bins_.size() / 40, 1) * (1 - 1e-9));
    const std::int64_t times =
        std::max<std::int64_t>(1, std::llround(multiple(round, 1) / multiple(w, 1)));
    const auto down = [&](std::int64_t k) { return (k - (k % times + times) % times) / times; };
    const std::int64_t low = down(low_), high = down(low_ + (std::int64_t)bins_.size() - 1);
    std::vector<double> counts((std::size_t)(high - low + 1));
    for (std::size_t i = 0; i < bins_.size(); ++i)
        counts[(std::size_t)(down(low_ + (std::int64_t)i) - low)] += (double)bins_[i];
    panel at = place;
    at.low_x = multiple(w, (double)((low - 1) * times)),
    at.high_x = multiple(w, (double)((high + 2) * times));
    at.low_y = 0, at.high_y = 1.05 * *std::max_element(counts.begin(), counts.end());
    draw_axes(&at, label(title).c_str(), label(name).c_str(), "values in a bin");
    for (std::size_t i = 0; i < counts.size(); ++i)
        if (counts[i] > 0)
            draw_box(&at, multiple(w, (double)((low + (std::int64_t)i) * times)),
                     multiple(w, (double)((low + (std::int64_t)i + 1) * times)), 0, counts[i]);
}

void draw_boxes(panel at, const std::string& title, const std::string& name,
                std::span<const Box> boxes) {
    std::vector<double> ends;
    for (const Box& box : boxes) ends.insert(ends.end(), {box.least, box.greatest});
    fit_axis(ends, at.low_y, at.high_y);
    at.low_x = 0, at.high_x = (double)boxes.size();
    draw_axes(&at, label(title).c_str(), nullptr, label(name).c_str());
    const auto line = [&](double x0, double y0, double x1, double y1) {
        const double x[] = {x0, x1}, y[] = {y0, y1};
        draw_curve(&at, "#204080", 2, x, y);
    };
    double middle = 0.5;
    for (const Box& b : boxes) {
        const double left = middle - 0.25, right = middle + 0.25;
        draw_label(&at, middle, label(b.name).c_str());
        if (std::isfinite(b.least) && std::isfinite(b.greatest)) {
            draw_box(&at, left, right, b.quarter, b.three_quarters);
            line(left, b.median, right, b.median);
            line(middle, b.three_quarters, middle, b.ninety_five);
            line(middle, b.quarter, middle, b.five);
            for (const double end : {b.five, b.ninety_five})
                line(middle - 0.1, end, middle + 0.1, end);
            for (const double end : {b.least, b.greatest}) draw_dot(&at, "#204080", middle, end);
        }
        middle += 1;
    }
}

}  // namespace command
