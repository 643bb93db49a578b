// Pictures, as SVG.
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <vector>

extern "C" {
#include "../examples/picture.h"
}

namespace command {

// The picture that `draw` draws, in so many rows of two panels, to a file.
void save_picture(const std::string& path, int rows, const std::function<void(picture&)>& draw);

// As text of a picture: well-formed UTF-8 without control characters.
std::string label(const std::string& text);

// Counts of numbers that come in any order, in bins of a round width, which grows with the range.
class Histogram {
public:
    void add(double x);  // infinities are left out
    // On some 20 to 50 bins of a width that is 1, 2 or 5 times a power of ten.
    void draw(const panel& at, const std::string& title, const std::string& name);

private:
    void settle();
    void place(double x);
    void coarsen();
    scale width() const;

    std::vector<double> first_;  // the numbers before there are bins
    int level_ = 0;              // of the width: 1, 2, 10, 20, 100, ... for 0, 1, 2, 3, 4
    std::int64_t low_ = 0;       // multiple of the width where bin 0 begins
    std::vector<std::uint64_t> bins_;
};

// A box from the first to the third quartile with the median, whiskers to the percentiles 5 and 95,
// and dots at the least and the greatest.
struct Box {
    std::string name;
    double least, five, quarter, median, three_quarters, ninety_five, greatest;
};
void draw_boxes(panel at, const std::string& title, const std::string& name,
                std::span<const Box> boxes);

// Lower and upper end of an axis for these numbers, never equal.
void fit_axis(std::span<const double> numbers, double& low, double& high);

}  // namespace command
