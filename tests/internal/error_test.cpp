// The error handler where no exported function reaches it yet or ever: counts and
// null pointers, unknown codes, long names, two results, complex elements.
#include <cerrno>
#include <cmath>
#include <cstring>
#include <string>

#include <gtest/gtest.h>
#include <xmmintrin.h>

#include "tests/threads.h"
#include "vm/control/error.h"

namespace kef::vm {
namespace {

thread_local kef_vtm_error_record last;
int keep(kef_vtm_error_record* record) { return last = *record, 0; }

struct Printed {
    std::int32_t code;
    double a, b, y, z;
    bool one_place;  // both results are one
    const char* text;
};

TEST(ErrorHandler, PrintsByCodeArgumentsAndResults) {
    const Printed cases[] = {
        {VTM_STATUS_BADSIZE, 1, 1, 1, 1, true,
         "Error (VTM_STATUS_BADSIZE) in vdF: array size 7 is not positive.\n"},
        {VTM_STATUS_BADMEM, 1, 1, 1, 1, true,
         "Error (VTM_STATUS_BADMEM) in vdF: NULL pointer is passed.\n"},
        {99, 1, 1, 2, 2, true, "Unknown error in vdF.\na(7)=1\nr(7)=2\n"},
        {-3, 1, 0, 2, 2, true, "Unknown error in vdF.\na(7)=1\nr(7)=2\n"},
        {0, 1, 1, 2, 0, false, "Unknown error in vdF.\na(7)=1\nr(7)=2\n"},
        {99, 1, 1, 2, 3, false, "Unknown error in vdF.\na(7)=1\ny(7)=2\nz(7)=3\n"},
        {99, 1, 4, 2, 2, true, "Unknown error in vdF.\na(7)=1\nb(7)=4\ny(7)=2\n"},
        {99, 1, 4, 2, 0, false, "Unknown error in vdF.\na(7)=1\nb(7)=4\ny(7)=2\n"},
        {99, 1, 4, 2, 3, false, "Unknown error in vdF.\na(7)=1\nb(7)=4\ny(7)=2\nz(7)=3\n"},
        {99, NAN, NAN, NAN, NAN, true, "Unknown error in vdF.\na(7)=nan\nr(7)=nan\n"},
        {99, 1e10, 1e10, 1e-5, 1e-5, true, "Unknown error in vdF.\na(7)=1e+10\nr(7)=1e-05\n"},
    };
    kef_vtm_kernel_SetMode(VTM_ERRMODE_STDERR);
    for (const Printed& c : cases) {
        double results[] = {c.y, c.z};
        testing::internal::CaptureStderr();
        handle_error(ElementError<double>{c.code, 7, "vdF", &c.a, c.a, c.b, &results[0],
                                          &results[c.one_place ? 0 : 1]});
        EXPECT_EQ(testing::internal::GetCapturedStderr(), c.text);
        EXPECT_EQ(kef_vtm_kernel_GetErrStatus(), c.code);
        EXPECT_EQ(std::memcmp(results, &c.y, sizeof results), 0);
    }
}

TEST(ErrorHandler, ErrnoOfEveryCode) {
    const int expected[][2] = {{0, 0},  {-1, 22}, {-2, 13}, {1, 33}, {2, 34},
                               {3, 34}, {4, 34},  {5, 14},  {-3, 14}};
    kef_vtm_kernel_SetMode(VTM_ERRMODE_ERRNO);
    for (const auto& [code, value] : expected) {
        double x = 1;
        errno = 99;
        handle_error(ElementError<double>{code, 0, "vdF", &x, x, x, &x, &x});
        EXPECT_EQ(errno, value) << code;
    }
}

TEST(ErrorHandler, FlagsOfEveryCode) {
    const std::uint32_t expected[][2] = {{1, 0x01}, {2, 0x04}, {3, 0x08},
                                         {4, 0x10}, {5, 0},    {0, 0}};
    kef_vtm_kernel_SetMode(VTM_ERRMODE_EXCEPT);
    for (const auto& [code, flags] : expected) {
        double x = 1;
        _mm_setcsr(0x1F80);
        handle_error(ElementError<double>{static_cast<int>(code), 0, "vdF", &x, x, x, &x, &x});
        EXPECT_EQ(_mm_getcsr() & 0x1F, flags) << code;
    }
    _mm_setcsr(0x1F80);
}

TEST(ErrorHandler, CountsAndNullPointersReadNoVector) {
    kef_vtm_kernel_SetErrorCallBack(keep);
    int somewhere = 0;
    kef_vtm_kernel_SetInterfInputVectorPointer(&somewhere);
    for (int code : {VTM_STATUS_BADSIZE, VTM_STATUS_BADMEM}) {
        handle_error(ElementError<double>{code, -5, "vdF", nullptr, 1, 2, nullptr, nullptr});
        EXPECT_EQ(last.code, code);
        EXPECT_EQ(last.index, -5);
        EXPECT_EQ(last.argument1, 0.0);
    }
}

TEST(ErrorHandler, LongNamesAreCutAndEnded) {
    kef_vtm_kernel_SetErrorCallBack(keep);
    const std::string name(100, 'n');
    double x = 1;
    handle_error(ElementError<double>{99, 0, name.c_str(), &x, x, x, &x, &x});
    EXPECT_EQ(last.name_length, 63);
    EXPECT_EQ(std::strlen(last.name), 63u);
}

TEST(ErrorHandler, TwoResultsAreReplacedApart) {
    kef_vtm_kernel_SetErrorCallBack([](kef_vtm_error_record* record) {
        record->result1 = 10 * record->result1;
        record->result2 = 10 * record->result2;
        return 0;
    });
    float y = 2, z = 3, x = 1;
    handle_error(ElementError<float>{99, 0, "vsF", &x, x, x, &y, &z});
    EXPECT_EQ(y, 20);
    EXPECT_EQ(z, 30);
}

TEST(ErrorHandler, ComplexElements) {
    kef_vtm_kernel_SetErrorCallBack([](kef_vtm_error_record* record) {
        last = *record;
        record->result1 = 0.5, record->result1_imag = 0.25;
        return 0;
    });
    kef_complex8 vector[] = {{1, 2}, {3, 4}, {5, 6}}, result = {7, 8};
    kef_vtm_kernel_SetInterfInputVectorPointer(vector);
    handle_error(
        ElementError<kef_complex8>{99, 1, "vcF", &vector[1], {1, 2}, {3, 4}, &result, &result});
    const double got[] = {last.argument1, last.argument1_imag, last.argument2, last.argument2_imag,
                          last.result1,   last.result1_imag,   last.result2,   last.result2_imag};
    const double expected[] = {1, 2, 3, 4, 7, 8, 7, 8};
    for (int i = 0; i < 8; ++i) EXPECT_EQ(got[i], expected[i]) << i;
    EXPECT_EQ(last.index, 2);
    EXPECT_EQ(result.re, 0.5f);
    EXPECT_EQ(result.im, 0.25f);

    const kef_complex16 wide = {3, 4};
    double modulus = 5;
    handle_error(
        ElementError<kef_complex16, double>{99, 0, "vzAbs", &wide, wide, wide, &modulus, &modulus});
    EXPECT_EQ(modulus, 0.5);
    EXPECT_EQ(last.argument1_imag, 4.0);
}

// A pointer to another vector gives some index, and no more.
TEST(ErrorHandler, UnrelatedInterfaceVector) {
    kef_vtm_kernel_SetErrorCallBack(keep);
    const float x = 1;
    float r = 1;
    for (std::uintptr_t far : {std::uintptr_t{16}, ~std::uintptr_t{15}}) {
        kef_vtm_kernel_SetInterfInputVectorPointer(reinterpret_cast<const void*>(far));
        handle_error(ElementError<float>{99, INT32_MAX, "vsF", &x, x, x, &r, &r});
        EXPECT_EQ(last.code, 99);
    }
}

// Distances of half the address space and more, forwards and back.
TEST(ErrorHandler, IndexInAVectorOfAnyLength) {
    kef_vtm_kernel_SetErrorCallBack(keep);
    constexpr std::uintptr_t start = 0x1000, half = ~std::uintptr_t{0} / 2 + 1;
    const auto index_of = [](std::uintptr_t vector, std::uintptr_t start_of_all) {
        double r = 1;
        kef_vtm_kernel_SetInterfInputVectorPointer(reinterpret_cast<const void*>(start_of_all));
        handle_error(ElementError<double>{99, 3, "vdF", reinterpret_cast<const double*>(vector), 1,
                                          1, &r, &r});
        return last.index;
    };
    for (const std::uintptr_t distance : {std::uintptr_t{40}, half + 40, half + half / 2 + 80}) {
        const auto elements = static_cast<std::int32_t>(distance / sizeof(double));
        EXPECT_EQ(index_of(start + distance, start), elements + 3);
        EXPECT_EQ(index_of(start, start + distance), 3 - elements);
    }
    kef_vtm_kernel_SetInterfInputVectorPointer(nullptr);
}

}  // namespace
}  // namespace kef::vm
