// Pack and Unpack of all types: entry points with 32-bit counts, strides, index and
// mask vectors, and slots called directly with either width.
#include <cstring>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>
#include <xmmintrin.h>

#include "kef_vm.h"

namespace kef_test {
namespace {

// The six functions of a type: entry points by name, and their tables.
template <class T> struct Functions;
#define FUNCTIONS(T, letter, suffix0, suffix2)                                                \
    template <> struct Functions<T> {                                                         \
        static constexpr auto pack_i = _vtm##letter##PackI;                                   \
        static constexpr auto pack_v = _vtm##letter##PackV##suffix0;                          \
        static constexpr auto pack_m = _vtm##letter##PackM##suffix2;                          \
        static constexpr auto unpack_i = _vtm##letter##UnpackI_HA;                            \
        static constexpr auto unpack_v = _vtm##letter##UnpackV##suffix0;                      \
        static constexpr auto unpack_m = _vtm##letter##UnpackM##suffix2;                      \
        static auto slot_pack_i(int i) { return kef_vtm_kernel_##letter##PackI_ttab[i]; }     \
        static auto slot_pack_v(int i) { return kef_vtm_kernel_##letter##PackV_ttab[i]; }     \
        static auto slot_pack_m(int i) { return kef_vtm_kernel_##letter##PackM_ttab[i]; }     \
        static auto slot_unpack_i(int i) { return kef_vtm_kernel_##letter##UnpackI_ttab[i]; } \
        static auto slot_unpack_v(int i) { return kef_vtm_kernel_##letter##UnpackV_ttab[i]; } \
        static auto slot_unpack_m(int i) { return kef_vtm_kernel_##letter##UnpackM_ttab[i]; } \
    };
FUNCTIONS(float, s, _21, _11)
FUNCTIONS(double, d, _50, _26)
FUNCTIONS(kef_complex8, c, _21, _11)
FUNCTIONS(kef_complex16, z, _50, _26)

template <class T> T make(double x) {
    if constexpr (std::is_floating_point_v<T>) return static_cast<T>(x);
    else return {static_cast<decltype(T::re)>(x), static_cast<decltype(T::re)>(-x)};
}
template <class T> double value(T x) {
    if constexpr (std::is_floating_point_v<T>) return x;
    else return x.im == -x.re ? static_cast<double>(x.re) : -99;
}
template <class T, std::size_t size>
void expect_values(const T (&vector)[size], const std::vector<double>& expected) {
    for (std::size_t i = 0; i < size; ++i)
        EXPECT_EQ(value(vector[i]), i < expected.size() ? expected[i] : -1) << i;
}

template <class T> class Pack : public testing::Test {
protected:
    using F = Functions<T>;
    void SetUp() override {
        for (int i = 0; i < 10; ++i) a[i] = make<T>(i + 10), y[i] = make<T>(-1);
    }
    // One call through an entry point, or through a slot in either width, in fresh y.
    template <class Call> void each_way(const std::vector<double>& expected, Call call) {
        for (int way = 0; way < 3; ++way) {
            SetUp();
            call(way);
            SCOPED_TRACE(way);
            expect_values(y, expected);
        }
    }
    T a[10], y[10];
};
using Elements = testing::Types<float, double, kef_complex8, kef_complex16>;
TYPED_TEST_SUITE(Pack, Elements);

// Ways: 0 entry point, 1 slot with 32-bit integers, 2 slot with 64-bit integers. The
// high words of narrow counts and strides are rubbish.
constexpr std::int32_t narrow = 1, wide = 2;
constexpr std::int64_t rubbish = std::int64_t{0x1234567} << 32;

TYPED_TEST(Pack, Strides) {
    using F = typename TestFixture::F;
    const auto pack = [&](std::int64_t n, std::int64_t stride, int from) {
        return [=, this](int way) {
            const auto* a = this->a + from;
            if (way == 0) F::pack_i(rubbish + n, a, rubbish + stride, this->y);
            if (way == 1) F::slot_pack_i(0)(rubbish + n, a, rubbish + stride, this->y, narrow);
            if (way == 2) F::slot_pack_i(2)(n, a, stride, this->y, wide);
        };
    };
    this->each_way({10, 13, 16, 19}, pack(4, 3, 0));
    this->each_way({19, 18, 17}, pack(3, -1, 9));
    this->each_way({15, 15, 15}, pack(3, 0, 5));
    this->each_way({}, pack(0, 1, 0));
    this->each_way({}, pack(-4, 1, 0));
    const auto unpack = [&](std::int64_t n, std::int64_t stride, int to) {
        return [=, this](int way) {
            auto* y = this->y + to;
            if (way == 0) F::unpack_i(rubbish + n, this->a, y, rubbish + stride);
            if (way == 1) F::slot_unpack_i(1)(rubbish + n, this->a, y, rubbish + stride, narrow);
            if (way == 2) F::slot_unpack_i(1)(n, this->a, y, stride, 0);
        };
    };
    this->each_way({10, -1, -1, 11, -1, -1, 12, -1, -1, 13}, unpack(4, 3, 0));
    this->each_way({12, -1, 11, -1, 10}, unpack(3, -2, 4));
    this->each_way({}, unpack(0, 1, 0));
    this->each_way({}, unpack(INT32_MIN, 1, 0));
}

TYPED_TEST(Pack, IndicesAndMasks) {
    using F = typename TestFixture::F;
    const std::int32_t index[] = {7, 0, 7, 3}, mask[] = {0, 5, 0, -1, 0, 0, 1, 0, 0, INT32_MIN};
    const std::int64_t wide_index[] = {7, 0, 7, 3};
    const std::int64_t wide_mask[] = {0, rubbish, 0, -1, 0, 0, 1, 0, 0, INT64_MIN};
    const auto& a = this->a;
    auto& y = this->y;
    this->each_way({17, 10, 17, 13}, [&](int way) {
        if (way == 0) F::pack_v(4, a, index, y);
        if (way == 1) F::slot_pack_v(0)(rubbish + 4, a, index, y, narrow);
        if (way == 2) F::slot_pack_v(1)(4, a, wide_index, y, -1);
    });
    this->each_way({11, -1, -1, 13, -1, -1, -1, 12}, [&](int way) {
        if (way == 0) F::unpack_v(4, a, y, index);
        if (way == 1) F::slot_unpack_v(2)(rubbish + 4, a, y, index, narrow);
        if (way == 2) F::slot_unpack_v(1)(4, a, y, wide_index, wide);
    });
    this->each_way({11, 13, 16, 19}, [&](int way) {
        if (way == 0) F::pack_m(10, a, mask, y);
        if (way == 1) F::slot_pack_m(0)(rubbish + 10, a, mask, y, narrow);
        if (way == 2) F::slot_pack_m(1)(10, a, wide_mask, y, wide);
    });
    this->each_way({-1, 10, -1, 11, -1, -1, 12, -1, -1, 13}, [&](int way) {
        if (way == 0) F::unpack_m(10, a, y, mask);
        if (way == 1) F::slot_unpack_m(2)(rubbish + 10, a, y, mask, narrow);
        if (way == 2) F::slot_unpack_m(0)(10, a, y, wide_mask, wide);
    });
    this->each_way({}, [&](int way) {
        const std::int64_t none = way == 1 ? rubbish : 0;
        F::pack_v(none, a, index, y), F::unpack_v(-1, a, y, index);
        F::pack_m(-1, a, mask, y), F::slot_unpack_m(0)(none, a, y, mask, way == 2 ? wide : narrow);
    });
}

TYPED_TEST(Pack, MovesBitsAndRaisesNothing) {
    unsigned char in[2 * sizeof(TypeParam)], out[sizeof in];
    for (std::size_t i = 0; i < sizeof in; ++i) in[i] = i % 4 == 3 ? 0x7F : i % 4 == 2 ? 0xF0 : 1;
    TypeParam a[2], y[2];
    std::memcpy(a, in, sizeof a);  // signalling NaNs
    _mm_setcsr(0x1F80);
    Functions<TypeParam>::pack_i(2, a, 1, y);
    EXPECT_EQ(_mm_getcsr(), 0x1F80u);
    std::memcpy(out, y, sizeof y);
    EXPECT_EQ(std::memcmp(in, out, sizeof in), 0);
}

}  // namespace
}  // namespace kef_test
