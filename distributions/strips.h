// Rejection from a hat of strips of equal area (after J. H. Ahrens, A one-table method for sampling
// from continuous and discrete distributions, Computing 54 (1995) 127-146) for log-concave discrete
// laws of any width. Set-up and time a variate do not depend on the width.
//
// From the mode m outwards, a strip begins at b with the weight p(b) = P(b)/P(m); its hat is p(b)
// over a width of area/p(b), of which the whole numbers are counts and the rest is waste. Where the
// geometric hat p(b) q^i, q = p(b+1)/p(b), of all that is left has no more than that area, it is
// the last one. Two single-precision uniforms a trial: 48 bits that choose the strip, the place x
// in it, whose whole part i is the candidate b + i, and by what remains the height y under the hat.
// Accepted where y <= p(b+i)/p(b). Bounds save most evaluations of p: ln p is concave, so that the
// ratio lies
//   above e^-ci, c from the first weight of the next strip;  below e^-ti, t = 1 - q <= -ln q.
#pragma once

#include "distributions/guide_table.h"
#include "distributions/log_poisson.h"
#include "distributions/uniforms.h"

namespace kef::dist {

// A Law gives, besides what guide_table.h asks for, deviation, the standard deviation, and
// log_weight(k), ln P(k) up to a constant. No strip begins beyond 2^50.
template <class Law> class Strips {
public:
    // wanted: about so many strips.
    Strips(const Law& law, int wanted) : law_(law), log_mode_(law.log_weight(law.mode)) {
        // sqrt(2 pi) deviation is the sum of the weights where they are normal; a law that needs
        // more strips than there is room for gets larger ones.
        area_ = std::max(1.0, law.deviation * 2.5066 / wanted);
        for (; !(build(law.mode, 1) && build(law.mode - 1, -1)); area_ *= 2) count_ = 0;
    }

    // Until the generator fails.
    void fill(Uniforms& uniforms, std::int32_t n, std::int32_t* r) const {
        constexpr std::int32_t trials = block / 2;
        alignas(16) std::int32_t cells[block];
        alignas(16) double place[trials];
        for (int barren = 0; n > 0;) {
            const std::int32_t m = std::min(n, trials);
            if (!uniforms.fill_cells(2 * m, cells)) return;
            if (m % 2 != 0) cells[2 * m] = cells[2 * m + 1] = 0;
            places(m, cells, place);
            std::int32_t made = 0;
            for (std::int32_t i = 0; i < m; ++i) made += trial(uniforms, place[i], r[made]);
            if (uniforms.failed()) return;
            r += made;
            n -= made;
            barren = made == 0 ? barren + 1 : 0;
            if (barren == patience) {  // no random numbers
                std::fill(r, r + n, as_count(law_.mode));
                return;
            }
        }
    }

private:
    static constexpr int most = 256;
    // A trial fails with a probability below 2/3.
    static constexpr int patience = 200;

    struct Strip {
        // What trials in 32 bits read.
        double width;              // area/p(b); of a geometric hat 1
        double chord;              // c
        std::uint32_t fast;        // counts, if all the numbers have 32 bits; otherwise 0
        std::int32_t first, sign;  // b, step
        // The others, and the set-up.
        double counts;       // whole numbers in it; 0: a geometric hat
        double begin, step;  // b; +1, -1
        double log;          // ln p(b)
        double tangent;      // t; of a geometric hat its share of the area
        double log_q;        // of a geometric hat
    };

    double log_weight(double k) const { return law_.log_weight(k) - log_mode_; }

    // q = p(b + step)/p(b)
    double quotient(double b, double step) const {
        const Ratio ratio = law_.ratio(step > 0 ? b : b - 1);
        return step > 0 ? ratio.numerator / ratio.denominator : ratio.denominator / ratio.numerator;
    }

    // Strips from b in one direction; false when there is no room for them.
    bool build(double b, double step) {
        double left = step > 0 ? law_.high - b + 1 : b - law_.low + 1;
        double log = left >= 1 ? log_weight(b) : 0;
        while (left >= 1) {
            if (count_ == most) return false;
            Strip& s = strip_[count_++] = {};
            s.begin = b;
            s.step = step;
            s.log = log;
            const double p = exp_of(log), q = left < 2 ? 0 : quotient(b, step);
            if (p <= area_ * (1 - q)) {
                s.width = 1;
                s.tangent = p / (area_ * (1 - q));
                s.log_q = log_of(std::max(q, 1e-300));
                return true;
            }
            s.width = area_ / p;
            s.counts = std::min(whole(s.width), left);
            s.tangent = 1 - q;
            left -= s.counts;
            b += step * s.counts;
            log = left >= 1 ? log_weight(b) : -1e9;
            s.chord = (s.log - log) / s.counts;
            if (std::max(s.begin, b) < 0x1p31) {
                s.fast = static_cast<std::uint32_t>(s.counts);
                s.first = static_cast<std::int32_t>(s.begin);
                s.sign = static_cast<std::int32_t>(step);
            }
        }
        return true;
    }

    // Pairs of cells, joined to a number on [0, 1), times the number of strips; two at a time, of
    // which a last odd one is read and written, too.
    void places(std::int32_t m, const std::int32_t* cells, double* place) const {
        const double scale = count_ * 0x1p-24;
        for (std::int32_t i = 0; i < m; i += 2) {
            const __m128i pairs = _mm_load_si128(reinterpret_cast<const __m128i*>(cells + 2 * i));
            const d2 first = (d2)_mm_cvtepi32_pd(_mm_shuffle_epi32(pairs, 0x08));
            const d2 second = (d2)_mm_cvtepi32_pd(_mm_shuffle_epi32(pairs, 0x0D));
            vm::store(place + i, Uniforms::joined(first, second) * scale);
        }
    }

    // Whether one trial makes a number; k is written in any case, and lies in r. Mostly y is below
    // the line 1 - ci, which is below e^-ci.
    bool trial(Uniforms& uniforms, double place, std::int32_t& k) const {
        const auto j = static_cast<std::int32_t>(place);
        const Strip& s = strip_[j];
        const double x = (place - j) * s.width;
        const auto i = static_cast<std::int32_t>(std::min(x, 2147483647.0));
        if (static_cast<std::uint32_t>(i) < s.fast && (x - i) + i * s.chord <= 1) [[likely]] {
            k = s.first + s.sign * i;
            return true;
        }
        return undecided(uniforms, s, x, k);
    }

    [[gnu::noinline]] bool undecided(Uniforms& uniforms, const Strip& s, double x,
                                     std::int32_t& k) const {
        const double i = whole(x), y = x - i;
        if (s.counts == 0) return y < s.tangent && geometric(uniforms, s, k);
        if (i >= s.counts) return false;
        const double number = s.begin + s.step * i, above = i * s.tangent;
        k = as_count(number);
        if (y <= below_exp(i * s.chord)) return true;
        if (y > 1 - above * (1 - above * 0.5)) return false;
        return y <= exp_of(log_weight(number) - s.log);
    }

    // A number of the geometric hat by inversion, against its height there.
    [[gnu::noinline]] bool geometric(Uniforms& uniforms, const Strip& s, std::int32_t& k) const {
        const double v = std::max(uniforms.next48(), 0x1p-50);
        const double i = whole(log_of(v) / s.log_q), number = s.begin + s.step * i;
        if (number < law_.low || number > law_.high) return false;
        k = as_count(number);
        return uniforms.next48() <= exp_of(log_weight(number) - (s.log + i * s.log_q));
    }

    Law law_;
    double log_mode_, area_;
    int count_ = 0;
    Strip strip_[most];
};

}  // namespace kef::dist
