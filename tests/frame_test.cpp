// What every element-wise function has in common: the same bits at every length,
// place and alignment, nothing written elsewhere, floating-point control and flags.
#include <algorithm>
#include <array>
#include <bit>
#include <cfloat>
#include <cmath>
#include <cstdlib>
#include <functional>
#include <limits>
#include <sstream>
#include <tuple>

#include <emmintrin.h>
#include <gtest/gtest.h>

#include "tests/reference.h"
#include "tests/rows.h"
#include "tests/threads.h"

namespace kef_test {
namespace {

using kef::reference::everything;
using kef::reference::Random;
using Bytes = std::vector<unsigned char>;

constexpr std::uint32_t flags_mask = 0x3F, divide_by_zero = 0x04, inexact = 0x20;
constexpr std::uint32_t mask_all = 0x1F80, flush_to_zero = 0x8000, denormals_are_zero = 0x0040;

// Arguments of all kinds.
// clang-format off
const std::vector<double> mixed = {
    0.5, 1.5, -1.25, 3.75, 0.0, -0.0, INFINITY, -INFINITY, NAN, 1e-310, -1e-40, 1.0, 2.5, -2.5,
    0.49999999999999994, 4503599627370497.5, 8388609.0, -708.4, -745.0, 709.78, 88.5, -104.0, 1e300,
    -1e300, 1e38, 1e-300, 0x1p-126, 0x1p-1022, 1e22, -7.0, 0.1, 170.5,
    // zeros and tiny numbers beside such as a second formula takes
    87.5, -0.0, 1e-20, -88.0};
// clang-format on
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
    const Row& row;
    int count;
    Bytes a, b, scalars, r1, r2;
};

// A vector at a chosen address modulo 64, with guards on both sides, and what it is to hold.
struct Place {
    Place(int size, int address, const unsigned char* contents = nullptr)
        : bytes(size + 192, 0xA5),
          start(64 + (address - reinterpret_cast<std::uintptr_t>(bytes.data())) % 64) {
        if (contents) std::copy_n(contents, size, data());
        expected = bytes;
    }
    unsigned char* data() { return &bytes[start]; }
    void expect(const unsigned char* p, std::size_t size) {
        std::copy_n(p, size, &expected[start]);
    }
    Bytes bytes, expected;
    std::size_t start;
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

// Alignments are tried byte by byte, where the sanitizer does not object to it. Instrumented code
// may raise the denormal flag where an instruction by itself does not.
#if defined(KEF_SANITIZE)
int step(const Row& row) { return static_cast<int>(row.component_size()); }
constexpr std::uint32_t compared = flags_mask & ~0x02u;
#else
int step(const Row&) { return 1; }
constexpr std::uint32_t compared = flags_mask;
#endif

// Components in runs: most of a run are one number or of one kind, the others of any kind.
template <class T> Bytes mixture(Random& random, int count) {
    using Bits = std::conditional_t<sizeof(T) == 4, std::uint32_t, std::uint64_t>;
    constexpr double small = 2 * std::numeric_limits<T>::min();  // and what is subnormal
    static constexpr kef::reference::Range ranges[] = {
        everything, {-0x1p60, 0x1p60}, {-50, 50}, {-2, 2}, {0, 1}, {-64, 64, 0.5}, {-small, small}};
    static const std::vector<T> edges = kef::reference::edges<T>(everything);
    constexpr std::size_t nan = std::size(ranges), kinds = nan + 2;
    const auto put = [&](unsigned char* p, std::size_t kind) {
        const std::uint64_t bits = random.bits();
        const T number = kind == nan  ? std::numeric_limits<T>::infinity()
                         : kind < nan ? random.draw<T>(ranges[kind], bits % 2 == 0)
                                      : edges[bits % edges.size()];
        const Bits x = std::bit_cast<Bits>(number) | (kind == nan ? bits | 1 : 0);  // any NaN
        std::memcpy(p, &x, sizeof x);
    };
    Bytes bytes(count * sizeof(T));
    std::size_t kind = 0, others = 0;  // others: sixteenths
    for (int i = 0, start = 0, end = 0; i < count; ++i) {
        if (i == end) {
            start = i, end = i + 1 + static_cast<int>(random.bits() % 90);
            kind = random.bits() % (2 * kinds), others = std::array{0, 1, 4, 16}[random.bits() % 4];
        }
        unsigned char* const p = &bytes[i * sizeof(T)];
        if (i > start && random.bits() % 16 < others) put(p, random.bits() % kinds);
        else if (i > start && kind < kinds) std::memcpy(p, &bytes[start * sizeof(T)], sizeof(T));
        else put(p, kind % kinds);
    }
    return bytes;
}

// Numbers and their bits.
double component(const Row& row, const unsigned char* p) {
    float narrow;
    double wide;
    if (!row.single()) return std::memcpy(&wide, p, sizeof wide), wide;
    return std::memcpy(&narrow, p, sizeof narrow), narrow;
}
std::string text(const Row& row, const unsigned char* p, int components) {
    std::ostringstream result;
    for (; components > 0; --components, p += row.component_size()) {
        std::uint64_t bits = 0;
        std::memcpy(&bits, p, row.component_size());
        result << ' ' << std::hexfloat << component(row, p) << " (" << std::hex << bits << ')';
    }
    return result.str();
}

using Reports = std::vector<kef_vtm_error_record>;
Reports reports;
int note(kef_vtm_error_record* record) { return reports.push_back(*record), 1; }

// Any n elements together, at any addresses, in place or not, with a callback or in silence:
// whether they are as in `data`, which was computed singly, with the reports `all`.
bool is_as_singly(const Data& data, int slot, int n, const Reports& all, Random& random) {
    const Row& row = data.row;
    const auto below = [&](int end) { return static_cast<int>(random.bits() % end); };
    const auto address = [&] {
        return below(2) ? 16 * below(4) : below(64 / step(row)) * step(row);
    };
    const int first = below(data.count - n + 1), parts = row.argument_parts;
    const int in = static_cast<int>(row.argument_size()), out = static_cast<int>(row.result_size());
    const unsigned char *a = data.a.data() + first * in, *b = data.b.data() + first * in;
    Place places[] = {
        {n * in, address(), a}, {n * in, address(), b}, {n * out, address()}, {n * out, address()}};
    Place* results[] = {&places[2], &places[3]};
    if (parts == row.result_parts && below(2) == 0)
        results[below(row.results)] = &places[below(row.arguments)];
    results[0]->expect(data.r1.data() + first * out, n * out);
    if (row.results == 2) results[1]->expect(data.r2.data() + first * out, n * out);
    Reports expected;
    for (const kef_vtm_error_record& record : all)
        if (record.index >= first && record.index < first + n)
            expected.push_back(record), expected.back().index -= first;
    const auto [status, last] = expected.empty()
                                    ? std::pair(+VTM_STATUS_OK, n)
                                    : std::pair(expected.back().code, expected.back().index);
    if (below(2) == 0) kef_vtm_kernel_SetErrorCallBack(note);
    else kef_vtm_kernel_ClearErrorCallBack(), expected.clear();
    reports.clear();
    kef_vtm_kernel_ClearErrStatus();
    row.invoke(row.slots[slot], {n, places[0].data(), places[1].data(), data.scalars.data(),
                                 results[0]->data(), results[1]->data()});

    std::ostringstream faults;
    const auto fault = [&](int i) -> std::ostream& {
        faults << "\nelement " << i << " of " << n;
        if (i < 0 || i >= n) return faults;
        return faults << ':' << text(row, a + i * in, parts) << ',' << text(row, b + i * in, parts)
                      << ", scalars" << text(row, data.scalars.data(), row.scalars * parts);
    };
    for (Place& place : places) {
        if (place.bytes == place.expected) continue;
        const auto wrong =
            std::mismatch(place.bytes.begin(), place.bytes.end(), place.expected.begin());
        const auto at = static_cast<int>(&*wrong.first - place.data());
        const int i = at < 0 ? -1 : std::min(at / out, n);
        fault(i) << ": byte " << at << " of vector " << &place - places << ", together"
                 << text(row, place.data() + i * out, row.result_parts) << ", singly"
                 << text(row, &place.expected[place.start + i * out], row.result_parts);
    }
    const auto [report, singly] =
        std::mismatch(reports.begin(), reports.end(), expected.begin(), expected.end(),
                      [](auto& x, auto& y) { return std::memcmp(&x, &y, sizeof x) == 0; });
    if (report != reports.end() || singly != expected.end())
        fault((report != reports.end() ? report : singly)->index) << ": other reports";
    if (kef_vtm_kernel_GetErrStatus() != status)
        fault(last) << ": status " << kef_vtm_kernel_GetErrStatus() << ", singly " << status;
    EXPECT_EQ(faults.str(), "");
    return faults.str().empty();
}

// Elements of all kinds side by side: every one as by itself, at every length, place and alignment,
// in place too. The same in every run; KEF_TEST_ROUNDS asks for so many times as many.
void expect_mixtures_as_singly(std::uint32_t mode) {
    constexpr int size = 600, lengths = 67;
    const char* const factor = std::getenv("KEF_TEST_ROUNDS");
    const int rounds = 6 * std::max(1, factor ? std::atoi(factor) : 1);
    for_every_kernel([&](const Row& row, int slot) {
        kef_vtm_kernel_SetMode(VTM_ERRMODE_IGNORE | mode);
        Random random(row.name() + std::to_string(slot));
        const auto arguments = [&](int n) {
            return (row.single() ? mixture<float> : mixture<double>)(random,
                                                                     n * row.argument_parts);
        };
        for (int round = 0; round < rounds; ++round) {
            Data data(row, size, {1.0});
            data.a = arguments(size), data.b = arguments(size);
            if (round % 2) data.scalars = arguments(4);
            kef_vtm_kernel_SetErrorCallBack(note);
            Reports all;
            for (int i = 0; i < size; ++i) {
                reports.clear();
                data.compute(slot, i, 1);
                for (auto& record : reports) record.index = i, all.push_back(record);
            }
            for (int window = 0; window < lengths + 4; ++window)
                if (!is_as_singly(data, slot, window < lengths ? window : size, all, random))
                    return;
        }
    });
}
TEST(Frame, MixturesAreComputedAsSingleElements) { expect_mixtures_as_singly(VTM_FTZDAZ_OFF); }
TEST(Frame, MixturesWhereSubnormalNumbersAreZeros) { expect_mixtures_as_singly(VTM_FTZDAZ_ON); }

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
    const auto subnormal = [](const Row& row, double x) {
        return std::fpclassify(row.single() ? x * 0x1p-896 : x) == FP_SUBNORMAL;
    };
    for_every_kernel([&](const Row& row, int slot) {
        const std::string function = row.function;
        if (function == "Conj" || (function == "Abs" && row.argument_parts == 1)) return;
        kef_vtm_kernel_SetMode(VTM_FTZDAZ_ON);
        for (const double tiny :
             row.single() ? std::vector{1e-40, -1e-45} : std::vector{1e-310, -5e-324})
            for (const double x : mixed) {
                if (subnormal(row, x)) continue;
                const double zero = std::copysign(0.0, tiny);
                Data data(row, 5, {tiny, x, x, tiny, tiny}),
                    zeros(row, 5, {zero, x, x, zero, zero});
                data.compute(slot, 0, 5), zeros.compute(slot, 0, 5);
                EXPECT_EQ(data.r1, zeros.r1) << x << ' ' << tiny;
                EXPECT_EQ(data.r2, zeros.r2) << x << ' ' << tiny;
                for (std::size_t i = 0; i < data.r1.size(); i += row.component_size())
                    for (const Bytes* r : {&data.r1, &data.r2})
                        EXPECT_FALSE(subnormal(row, component(row, &(*r)[i]))) << x << ' ' << tiny;
            }
    });
}

// Normal numbers, arguments or results, whose low halves would be zeros: the mode changes nothing.
TEST(Frame, SmallNormalNumbersWhateverTheMode) {
    in_fresh_thread([] {
        constexpr double x = 0x1.c86f2deb14638p-1015, large = 0x1.9d4f3a5b7c6e9p1015;
        const double b[] = {1, 2.5, 3, 4, 0.75};
        const std::tuple<const char*, std::array<double, 5>, double> cases[] = {
            {"dLinearFrac", {x, x, -x, large, large}, large},
            {"dLinearFrac", {x, x, -x, large, large}, x},
            {"dExp", {-708.3963, -708.39641, -708.3961, -708, -700.5}, 0},
            {"dTGamma", {-169.6254, -169.5, -168.25, -167.9, -160.5}, 0}};
        for (const auto& [name, a, scale] : cases)
            for (int slot = 0; slot < 3; ++slot) {
                const Row& row = *find_row(name);
                const double scalars[] = {scale, 2.75, 1.25, 0.5};
                double results[2][5];
                for (const bool on : {false, true}) {
                    kef_vtm_kernel_SetMode(on ? VTM_FTZDAZ_ON : VTM_FTZDAZ_OFF);
                    row.invoke(row.slots[slot], {5, a.data(), b, scalars, results[on], nullptr});
                }
                EXPECT_EQ(std::memcmp(results[0], results[1], sizeof results[0]), 0)
                    << name << ' ' << slot;
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
                EXPECT_EQ(flags_of(row, 0, data, n) & compared, expected & compared)
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
