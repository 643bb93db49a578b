// The uniform numbers of the discrete laws: single-precision draws, read as cells of width 2^-24,
// that a further draw divides by 2^24 once more. The status of the last draw.
#pragma once

#include "distributions/frame.h"

namespace kef::dist {

class Uniforms {
public:
    static constexpr std::int32_t cells = 1 << 24;

    explicit Uniforms(kef_stream* stream, std::int32_t status = VTS_STATUS_OK)
        : stream_(stream), status_(status) {}

    // n numbers on [0, 1) as the generator makes them; false when it fails or has failed.
    bool fill(std::int32_t n, float* r) {
        if (status_ >= 0) status_ = draw(stream_, n, r, 0, 1);
        return status_ >= 0;
    }

    // The cell of a number; a generator that rounds up to 1 means the last one.
    static std::int32_t cell(float u) {
        return static_cast<std::int32_t>(std::min(u * 0x1p24f, 0x1p24f - 1));
    }
    // A number of 48 bits out of two.
    static double join(float u, float v) { return (cell(u) + cell(v) * 0x1p-24) * 0x1p-24; }

    // Single numbers from a small store. After a failure they are 1/2: a loop that ends for a
    // right generator ends then, too.
    float next() {
        if (used_ == store_size) {
            if (!fill(store_size, store_)) return 0.5f;
            used_ = 0;
        }
        return store_[used_++];
    }
    double fraction() { return cell(next()) * 0x1p-24; }
    double next48() {
        const float u = next();
        return join(u, next());
    }

    // Another draw of the stream ended so.
    void note(std::int32_t status) { status_ = status; }
    std::int32_t status() const { return status_; }
    bool failed() const { return status_ < 0; }

private:
    static constexpr std::int32_t store_size = 16;

    kef_stream* stream_;
    std::int32_t status_, used_ = store_size;
    float store_[store_size];
};

// The largest whole number up to x >= 0.
inline double whole(double x) {
    const double near = (x + 0x1p52) - 0x1p52;
    return near - (near > x);
}

// A count as it is stored: not above what 32 bits hold.
inline std::int32_t as_count(double k) {
    return k < 0x1p31 ? static_cast<std::int32_t>(k) : INT32_MAX;
}

}  // namespace kef::dist
