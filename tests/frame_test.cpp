// What every element-wise function has in common: the same bits at every length,
// place and alignment, nothing written elsewhere, floating-point control and flags.
#include <bit>
#include <cfloat>
#include <cmath>
#include <functional>
#include <limits>
#include <random>

#include <emmintrin.h>
#include <gtest/gtest.h>

#include "tests/rows.h"
#include "tests/threads.h"

namespace kef_test {
namespace {

using Bytes = std::vector<unsigned char>;

constexpr std::uint32_t flags_mask = 0x3F, divide_by_zero = 0x04, inexact = 0x20;
constexpr std::uint32_t mask_all = 0x1F80, flush_to_zero = 0x8000, denormals_are_zero = 0x0040;

// Arguments within most domains, and all kinds of them.
const std::vector<double> ordinary = {0.5, 0.75, 0.3, 0.9, 0.999, 0.0625, 0.123456789, 0.7071};
// clang-format off
const std::vector<double> mixed = {
    0.5, 1.5, -1.25, 3.75, 0.0, -0.0, INFINITY, -INFINITY, NAN, 1e-310, -1e-40, 1.0, 2.5, -2.5,
    0.49999999999999994, 4503599627370497.5, 8388609.0, -708.4, -745.0, 709.78, 88.5, -104.0, 1e300,
    -1e300, 1e38, 1e-300, 0x1p-126, 0x1p-1022, 1e22, -7.0, 0.1, 170.5,
    // zeros and tiny numbers beside such as a second formula takes
    87.5, -0.0, 1e-20, -88.0};
// clang-format on
// Different ones, whose payloads single precision can hold.
const std::vector<double> nans = [] {
    std::vector<double> values;
    for (std::uint64_t i = 1; i <= 7; ++i)
        values.push_back(std::bit_cast<double>((0x7FF8 | i << 15) << 48 | i << 40));
    return values;
}();

// `count` elements cycling through the values, from `first` on.
Bytes elements(const Row& row, int parts, int count, const std::vector<double>& values, int first) {
    Bytes bytes(count * parts * row.component_size());
    for (int i = 0; i < count * parts; ++i) {
        const double x = values[(first + i) % values.size()];
        const float narrow = static_cast<float>(x);
        if (row.single()) std::memcpy(&bytes[4 * i], &narrow, 4);
        else std::memcpy(&bytes[8 * i], &x, 8);
    }
    return bytes;
}

// The arguments and results of a row, `count` elements of each.
struct Data {
    Data(const Row& r, int n, const std::vector<double>& values)
        : row(r),
          count(n),
          a(elements(r, r.argument_parts, n, values, 0)),
          b(elements(r, r.argument_parts, n, values, 5)),
          scalars(elements(r, r.argument_parts, 4, {1.5, 0.25, 0.75, 2.5}, 0)),
          r1(n * r.result_size()),
          r2(r1) {}
    // Elements first .. first + n - 1, in place in the result vectors.
    void compute(int slot, int first, int n) {
        const std::size_t in = first * row.argument_size(), out = first * row.result_size();
        row.invoke(row.slots[slot], {n, &a[in], &b[in], scalars.data(), &r1[out], &r2[out]});
    }
    void compute_singly(int slot) {
        for (int i = 0; i < count; ++i) compute(slot, i, 1);
    }
    const Row& row;
    int count;
    Bytes a, b, scalars, r1, r2;
};

// A vector at a chosen address modulo 16, with guards on both sides.
class Place {
public:
    Place(std::size_t size, int address) : bytes_(size + 2 * guard + 32, filler), size_(size) {
        start_ = &bytes_[guard];
        while (reinterpret_cast<std::uintptr_t>(start_) % 16 != static_cast<unsigned>(address))
            ++start_;
    }
    Place(const Bytes& contents, int address) : Place(contents.size(), address) {
        if (size_ > 0) std::memcpy(start_, contents.data(), size_);
    }
    unsigned char* data() { return start_; }
    // The first `used` bytes equal the expected ones, everything else the filler.
    bool holds(const Bytes& expected, std::size_t used) const {
        for (const unsigned char& byte : bytes_) {
            const std::size_t i = &byte - start_;  // wraps in front of the start
            if (byte != (i < used ? expected[i] : filler)) return false;
        }
        return true;
    }

private:
    static constexpr std::size_t guard = 64;
    static constexpr unsigned char filler = 0xA5;
    Bytes bytes_;
    std::size_t size_;
    unsigned char* start_;
};

// Every kernel of every element-wise row, in a fresh thread that ignores errors.
void for_every_kernel(const std::function<void(const Row&, int slot)>& body) {
    in_fresh_thread([&] {
        for (const Row& row : rows())
            for (int slot = 0; slot < 3 && row.element_wise(); ++slot) {
                bool seen = false;
                for (int other = 0; other < slot; ++other)
                    seen |= row.slots[other] == row.slots[slot];
                if (seen) continue;
                SCOPED_TRACE(row.name() + " slot " + std::to_string(slot));
                kef_vtm_kernel_SetMode(VTM_ERRMODE_IGNORE | VTM_FTZDAZ_OFF);
                _mm_setcsr(mask_all);
                body(row, slot);
                _mm_setcsr(mask_all);
            }
    });
}

// Alignments are tried byte by byte, where the sanitizer does not object to it.
#if defined(KEF_SANITIZE)
int step(const Row& row) { return static_cast<int>(row.component_size()); }
#else
int step(const Row&) { return 1; }
#endif

TEST(Frame, SameBitsAtEveryLengthAndAlignment) {
    constexpr int most = 40;
    for_every_kernel([&](const Row& row, int slot) {
        for (const auto* values : {&ordinary, &mixed, &nans}) {
            Data data(row, most, *values);
            data.compute_singly(slot);
            for (int n = 0; n <= most; ++n)
                for (int shift = 0; shift < 16; shift += step(row)) {
                    Place a(data.a, shift), b(data.b, shift * 5 % 16);
                    Place r(data.r1.size(), shift * 3 % 16), z(data.r2.size(), shift * 7 % 16);
                    row.invoke(row.slots[slot],
                               {n, a.data(), b.data(), data.scalars.data(), r.data(), z.data()});
                    const std::size_t used = n * row.result_size();
                    ASSERT_TRUE(r.holds(data.r1, used)) << "n = " << n << ", address " << shift;
                    ASSERT_TRUE(z.holds(data.r2, row.results == 2 ? used : 0)) << n << ' ' << shift;
                    ASSERT_TRUE(a.holds(data.a, data.a.size()) && b.holds(data.b, data.b.size()));
                }
        }
    });
}

// Of any size: alone as by other formulas, beside NaN.
TEST(Frame, SameBitsBesideNan) {
    std::mt19937 random(1);
    std::uniform_real_distribution<double> exponent(-60, 60);
    std::vector<double> sizes;
    while (sizes.size() < 2000)
        sizes.push_back(std::exp2(exponent(random)) * (random() % 2 ? 1 : -1));
    for_every_kernel([&](const Row& row, int slot) {
        Data data(row, 800, sizes);
        data.compute_singly(slot);
        for (int i = 0; i < data.count; ++i) {
            Data pair(row, 2, {NAN});
            std::memcpy(&pair.a[0], &data.a[i * row.argument_size()], row.argument_size());
            std::memcpy(&pair.b[0], &data.b[i * row.argument_size()], row.argument_size());
            pair.compute(slot, 0, 2);
            const std::size_t size = row.result_size();
            ASSERT_EQ(std::memcmp(&pair.r1[0], &data.r1[i * size], size), 0) << i;
            ASSERT_EQ(std::memcmp(&pair.r2[0], &data.r2[i * size], size), 0) << i;
        }
    });
}

TEST(Frame, InPlaceEqualsOutOfPlace) {
    for_every_kernel([&](const Row& row, int slot) {
        if (row.argument_parts != row.result_parts) return;
        Data data(row, 2 * static_cast<int>(mixed.size()) + 3, mixed);
        data.compute(slot, 0, data.count);
        for (int argument = 0; argument < row.arguments; ++argument)
            for (int result = 0; result < row.results; ++result) {
                Data place(row, data.count, mixed);
                Bytes& shared = argument == 0 ? place.a : place.b;
                void* r = result == 0 ? shared.data() : place.r1.data();
                void* z = result == 1 ? shared.data() : place.r2.data();
                row.invoke(row.slots[slot], {data.count, place.a.data(), place.b.data(),
                                             place.scalars.data(), r, z});
                EXPECT_EQ(shared, result == 0 ? data.r1 : data.r2);
            }
    });
}

// Arguments of several formulas and of the edge in long arrays: every element as by itself, the
// reports one a time from the first element to the last.
TEST(Frame, MixturesAreComputedAsSingleElements) {
    static std::vector<std::pair<std::int32_t, std::int32_t>> reports;  // index, code
    const auto note = [](kef_vtm_error_record* record) {
        reports.emplace_back(record->index, record->code);
        return 1;
    };
    // One in four of a run is of another kind; from the middle on, of any.
    std::vector<double> mixture;
    const std::vector<double> plain = {0.5, -2.75, 25.5, -25.25, 1e-20, 3e4},
                              rare = {-3.0, 0.0, NAN};
    std::uint32_t random = 1;
    const auto draw = [&](std::size_t n) {
        random = random * 1664525 + 1013904223;
        return (random >> 8) % n;
    };
    while (mixture.size() < 1200) {
        const double main = plain[draw(plain.size())];
        for (std::size_t i = draw(90); i-- > 0;) {
            const bool any = mixture.size() > 600 || draw(4) == 0;
            mixture.push_back(any ? plain[draw(plain.size())] : main);
            if (draw(50) == 0) mixture.back() = rare[draw(rare.size())];
        }
    }
    // Two NaNs together, which differ: `Data` has as the second argument what stands 5 places on.
    for (std::size_t i = 0; i + 5 < mixture.size(); i += 97)
        mixture[i] = nans[0], mixture[i + 5] = nans[1];
    for_every_kernel([&](const Row& row, int slot) {
        if (row.argument_parts == 2 || row.result_parts == 2) return;
        kef_vtm_kernel_SetErrorCallBack(note);
        const int n = static_cast<int>(mixture.size());
        Data single(row, n, mixture), whole(single);
        std::vector<std::pair<std::int32_t, std::int32_t>> expected;
        for (int i = 0; i < n; ++i) {
            reports.clear();
            single.compute(slot, i, 1);
            for (const auto& [index, code] : reports) expected.emplace_back(i, code);
        }
        reports.clear();
        const bool in_place = row.results == 1;
        Bytes& r1 = in_place ? whole.a : whole.r1;
        row.invoke(row.slots[slot], {n, whole.a.data(), whole.b.data(), whole.scalars.data(),
                                     r1.data(), whole.r2.data()});
        EXPECT_EQ(r1, single.r1);
        EXPECT_EQ(reports, expected);
        kef_vtm_kernel_ClearErrorCallBack();
    });
}

TEST(Frame, CountsOfZeroAndBelowDoNothing) {
    for_every_kernel([&](const Row& row, int slot) {
        for (std::int32_t n : {0, -1, -1000, INT32_MIN})
            row.invoke(row.slots[slot], {n, nullptr, nullptr, Bytes(64).data(), nullptr, nullptr});
        EXPECT_EQ(_mm_getcsr(), mask_all);
    });
}

// The same results under every state of the caller's control register, and the
// register as before but for flags, which stay.
TEST(Frame, FloatingPointControlComesFromTheModeWord) {
    for_every_kernel([&](const Row& row, int slot) {
        for (std::uint32_t mode : {+VTM_FTZDAZ_OFF, +VTM_FTZDAZ_ON, 0x100000}) {
            kef_vtm_kernel_SetMode(mode);
            Data expected(row, static_cast<int>(mixed.size()) + 1, mixed);
            expected.compute(slot, 0, expected.count);
            for (std::uint32_t rounding = 0; rounding < 4; ++rounding)
                for (std::uint32_t control :
                     {0u, flush_to_zero, denormals_are_zero, flush_to_zero | denormals_are_zero}) {
                    Data data(row, expected.count, mixed);
                    const std::uint32_t before =
                        mask_all | rounding << 13 | control | divide_by_zero;
                    _mm_setcsr(before);
                    data.compute(slot, 0, data.count);
                    const std::uint32_t after = _mm_getcsr();
                    _mm_setcsr(mask_all);
                    ASSERT_EQ(after & ~flags_mask, before & ~flags_mask);
                    ASSERT_EQ(after & divide_by_zero, divide_by_zero) << "a sticky flag is lost";
                    ASSERT_EQ(data.r1, expected.r1) << std::hex << mode << ' ' << before;
                    ASSERT_EQ(data.r2, expected.r2) << std::hex << mode << ' ' << before;
                }
        }
    });
}

TEST(Frame, SubnormalNumbersByTheModeWord) {
    in_fresh_thread([] {
        const double tiny = 1e-310, zero = 0.0, small = 1e-160;
        double sum, product;
        for (std::uint32_t caller : {mask_all, mask_all | flush_to_zero | denormals_are_zero})
            for (std::uint32_t mode : {0, +VTM_FTZDAZ_ON, 0x2C0000, +VTM_FTZDAZ_OFF}) {
                kef_vtm_kernel_SetMode(mode);
                _mm_setcsr(caller);
                _vtmdAdd(1, &tiny, &zero, &sum);
                _vtmdMul(1, &small, &small, &product);
                _mm_setcsr(mask_all);
                const bool on = mode == VTM_FTZDAZ_ON;
                EXPECT_EQ(sum == 0, on) << std::hex << mode;
                EXPECT_EQ(product == 0, on) << std::hex << mode;
            }
    });
}

// Under VTM_FTZDAZ_ON every subnormal argument gives what a zero of its sign gives, and no result
// is subnormal, but for functions that only move or change signs.
TEST(Frame, SubnormalNumbersAreZerosWhereTheModeSaysSo) {
    const auto subnormal = [](double x) { return std::fpclassify(x) == FP_SUBNORMAL; };
    const auto component = [](const Row& row, const Bytes& bytes, std::size_t i) {
        double wide;
        float narrow;
        if (!row.single()) return std::memcpy(&wide, &bytes[8 * i], 8), wide;
        std::memcpy(&narrow, &bytes[4 * i], 4);
        return std::fpclassify(narrow) == FP_SUBNORMAL ? 1e-310 : narrow;
    };
    for_every_kernel([&](const Row& row, int slot) {
        const std::string function = row.function;
        if (function == "Conj" || (function == "Abs" && row.argument_parts == 1)) return;
        kef_vtm_kernel_SetMode(VTM_FTZDAZ_ON);
        for (const double tiny :
             row.single() ? std::vector{1e-40, -1e-45} : std::vector{1e-310, -5e-324})
            for (const double x : mixed) {
                if (row.single() ? subnormal(x * 0x1p-896) : subnormal(x)) continue;
                const double zero = std::copysign(0.0, tiny);
                Data data(row, 5, {tiny, x, x, tiny, tiny}),
                    zeros(row, 5, {zero, x, x, zero, zero});
                data.compute(slot, 0, 5), zeros.compute(slot, 0, 5);
                EXPECT_EQ(data.r1, zeros.r1) << x << ' ' << tiny;
                EXPECT_EQ(data.r2, zeros.r2) << x << ' ' << tiny;
                for (std::size_t i = 0; i < data.r1.size() / row.component_size(); ++i) {
                    EXPECT_FALSE(subnormal(component(row, data.r1, i))) << x << ' ' << tiny;
                    EXPECT_FALSE(subnormal(component(row, data.r2, i))) << x << ' ' << tiny;
                }
            }
    });
}

// Normal numbers whose low halves would be zeros: the mode changes nothing.
TEST(Frame, SmallNormalNumbersWhateverTheMode) {
    in_fresh_thread([] {
        const Row& row = *find_row("dLinearFrac");
        constexpr double x = 0x1.c86f2deb14638p-1015, large = 0x1.9d4f3a5b7c6e9p1015;
        const double a[] = {x, x, -x, large, large}, b[] = {1, 2.5, 3, 4, 0.75};
        for (const double scale : {large, x})
            for (int slot = 0; slot < 3; ++slot) {
                const double scalars[] = {scale, 2.75, 1.25, 0.5};
                double results[2][5];
                for (const bool on : {false, true}) {
                    kef_vtm_kernel_SetMode(on ? VTM_FTZDAZ_ON : VTM_FTZDAZ_OFF);
                    row.invoke(row.slots[slot], {5, a, b, scalars, results[on], nullptr});
                }
                EXPECT_EQ(std::memcmp(results[0], results[1], sizeof results[0]), 0) << slot;
            }
    });
}

// The x87 unit is no part of any kernel: a subnormal result that passed through it would raise its
// flag, and trap in whatever the caller does next.
void clear_x87_flags() { asm volatile("fnclex"); }
std::uint32_t x87_flags() {
    std::uint16_t status;
    asm volatile("fnstsw %0" : "=m"(status));
    return status & 0x7F;
}

std::uint32_t flags_of(const Row& row, int slot, Data& data, int n) {
    _mm_setcsr(mask_all);
    clear_x87_flags();
    row.invoke(row.slots[slot], {n, data.a.data(), data.b.data(), data.scalars.data(),
                                 data.r1.data(), data.r2.data()});
    const std::uint32_t flags = _mm_getcsr() & flags_mask;
    EXPECT_EQ(x87_flags(), 0u) << row.name();
    _mm_setcsr(mask_all);
    return flags;
}

TEST(Frame, PaddingLanesRaiseNoFlags) {
    for_every_kernel([&](const Row& row, int slot) {
        for (double x : mixed)
            for (double y : {x, 0.75}) {
                Data data(row, 8, {x, y, x, y, x, y, x, y});  // both parts of a complex element
                if (row.argument_parts == 1) data.b = elements(row, 1, 8, {y}, 0);
                if (row.argument_parts == 1) data.a = elements(row, 1, 8, {x}, 0);
                const std::uint32_t whole = flags_of(row, slot, data, 4);
                for (int n : {1, 2, 3, 5})
                    EXPECT_EQ(flags_of(row, slot, data, n), whole) << x << ' ' << y << ' ' << n;
            }
    });
}

bool arithmetic(const Row& row) {
    const std::string function = row.function;
    for (const char* name : {"Add", "Sub"})  // part by part
        if (function == name) return true;
    for (const char* name : {"Mul", "Sqr", "Div", "Inv", "Sqrt", "Rint"})
        if (function == name && row.argument_parts == 1) return true;
    return false;
}

// Whatever the formulas do on the way, and whichever exceptions the caller unmasked: no
// trap, and no flags but those of an arithmetic function's operation.
TEST(Frame, NothingTrapsWhereErrorsAreIgnored) {
    for_every_kernel([&](const Row& row, int slot) {
        Data expected(row, 2 * static_cast<int>(mixed.size()) + 1, mixed), data(expected);
        const std::uint32_t flags = flags_of(row, slot, expected, data.count);
        if (!arithmetic(row)) EXPECT_EQ(flags, 0u);
        _mm_setcsr(0);  // a trap would end the process
        data.compute(slot, 0, data.count);
        const std::uint32_t after = _mm_getcsr();
        _mm_setcsr(mask_all);
        EXPECT_EQ(after, flags);
        EXPECT_EQ(data.r1, expected.r1);
    });
}

// Nor do scalars of any kind.
TEST(Frame, ScalarsRaiseNothing) {
    for_every_kernel([&](const Row& row, int slot) {
        if (row.scalars == 0) return;
        Data data(row, 9, mixed);
        for (int first = 0; first < static_cast<int>(mixed.size()); ++first) {
            data.scalars = elements(row, row.argument_parts, 4, mixed, first);
            _mm_setcsr(0);
            data.compute(slot, 0, data.count);
            const std::uint32_t after = _mm_getcsr();
            _mm_setcsr(mask_all);
            EXPECT_EQ(after, 0u) << first;
        }
    });
}

// The flags of the bare instruction, on all kinds of numbers. Values go through memory
// alone: an x87 register would make a signalling NaN quiet.
template <class T>
void expect_flags_of(const char* function,
                     void (*instruction)(const T& a, const T& b, volatile T& r)) {
    using Limits = std::numeric_limits<T>;
    constexpr T small = Limits::min(), tiny = Limits::denorm_min(), large = Limits::max();
    T kinds[] = {0,
                 1,
                 -2,
                 3,
                 tiny,
                 -tiny,
                 small / 3,
                 small,
                 large,
                 -large,
                 Limits::epsilon(),
                 Limits::infinity(),
                 -Limits::infinity(),
                 Limits::quiet_NaN(),
                 0};
    const T signalling = Limits::signaling_NaN();
    std::memcpy(&std::end(kinds)[-1], &signalling, sizeof signalling);
    const Row& row = *find_row((sizeof(T) == 4 ? "s" : "d") + std::string(function));
    for (T& a : kinds)
        for (T& b : kinds) {
            Data data(row, 4, {1.0});
            for (int i = 0; i < 4; ++i) {
                std::memcpy(&data.a[i * sizeof(T)], &a, sizeof(T));
                std::memcpy(&data.b[i * sizeof(T)], &b, sizeof(T));
            }
            _mm_setcsr(mask_all);
            volatile T r;
            instruction(a, b, r);
            const std::uint32_t expected = _mm_getcsr() & flags_mask;
            for (int n : {1, 4})
                EXPECT_EQ(flags_of(row, 0, data, n), expected)
                    << row.name() << ' ' << &a - kinds << ' ' << &b - kinds << ' ' << n;
        }
}

// std::sqrt leaves negative numbers to a function.
float root(float x) { return _mm_cvtss_f32(_mm_sqrt_ss(_mm_set_ss(x))); }
double root(double x) { return _mm_cvtsd_f64(_mm_sqrt_pd(_mm_set1_pd(x))); }

template <class T> void expect_flags_of_instructions() {
    expect_flags_of<T>("Add", [](auto& a, auto& b, auto& r) { r = a + b; });
    expect_flags_of<T>("Sub", [](auto& a, auto& b, auto& r) { r = a - b; });
    expect_flags_of<T>("Mul", [](auto& a, auto& b, auto& r) { r = a * b; });
    expect_flags_of<T>("Sqr", [](auto& a, auto&, auto& r) { r = a * a; });
    expect_flags_of<T>("Div", [](auto& a, auto& b, auto& r) { r = a / b; });
    expect_flags_of<T>("Inv", [](auto& a, auto&, auto& r) { r = 1 / a; });
    expect_flags_of<T>("Sqrt", [](auto& a, auto&, auto& r) { r = root(a); });
}
TEST(Frame, ArithmeticRaisesTheFlagsOfTheInstruction) {
    in_fresh_thread([] {
        kef_vtm_kernel_SetMode(VTM_ERRMODE_IGNORE);
        expect_flags_of_instructions<float>();
        expect_flags_of_instructions<double>();
    });
}

TEST(Frame, RintRaisesInexactWhereTheArgumentChanges) {
    for_every_kernel([&](const Row& row, int slot) {
        if (row.function != std::string("Rint")) return;
        Data whole(row, 5, {1.0, -2.0, 0.0, INFINITY, NAN}), half(row, 1, {0.5});
        EXPECT_EQ(flags_of(row, slot, whole, 5), 0u);
        EXPECT_EQ(flags_of(row, slot, half, 1), inexact);
    });
}

// An accepted report stores the results again, as they were, subnormal ones too.
TEST(Frame, ReportsLeaveSubnormalResultsAlone) {
    in_fresh_thread([] {
        const float a = -100.0f;
        float r = 0;
        kef_vtm_kernel_SetErrorCallBack([](kef_vtm_error_record*) { return 0; });
        _mm_setcsr(mask_all | flush_to_zero | denormals_are_zero);
        _vtmsExp(1, &a, &r);
        _mm_setcsr(mask_all);
        EXPECT_EQ(r, std::exp(-100.0f));
    });
}

#if defined(__i386__)
TEST(Frame, CallersWithAFourByteAlignedStack) {
    for_every_kernel([&](const Row& row, int slot) {
        Data expected(row, 11, mixed);
        expected.compute(slot, 0, 11);
        for (int address : {0, 4, 8, 12}) {
            Data data(row, 11, mixed);
            row.invoke(row.entries[slot], {11, data.a.data(), data.b.data(), data.scalars.data(),
                                           data.r1.data(), data.r2.data(), address});
            EXPECT_EQ(data.r1, expected.r1);
            EXPECT_EQ(data.r2, expected.r2);
        }
    });
}
#endif

}  // namespace
}  // namespace kef_test
