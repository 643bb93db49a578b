#include "progress.h"

#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>

#include "command.h"

namespace command {

Progress::Progress(std::string what, double total)
    : what_(printable(std::move(what))),
      total_(total),
      shown_(isatty(STDERR_FILENO)),
      start_(clock::now()),
      next_(start_ + std::chrono::milliseconds(300)) {}

Progress::~Progress() { clear(); }

void Progress::clear() {
    if (drawn_) std::fputs("\r\033[K", stderr);
    drawn_ = false;
}

void Progress::at(double done) {
    if (!shown_ || clock::now() < next_) return;
    const auto now = clock::now();
    next_ = now + std::chrono::milliseconds(100);
    drawn_ = true;
    if (!(total_ > 0)) {
        std::fprintf(stderr, "\r%s: %.0f MB\033[K", what_.c_str(), done / 1e6);
        return;
    }
    const double share = std::clamp(done / total_, 1e-9, 1.0);
    const double left = std::chrono::duration<double>(now - start_).count() * (1 - share) / share;
    constexpr int width = 30;
    char bar[width + 1];
    std::memset(bar, '-', width);
    std::memset(bar, '#', (std::size_t)(share * width));
    bar[width] = 0;
    std::fprintf(stderr, "\r%s [%s] %3.0f %%, %.0f:%02.0f left\033[K", what_.c_str(), bar,
                 100 * share, std::floor(left / 60), std::floor(std::fmod(left, 60)));
}

}  // namespace command
