// Mode word, status, callback and error modes of the calling thread.
#include <cerrno>
#include <cmath>
#include <cstddef>
#include <cstdlib>

#include <gtest/gtest.h>
#include <xmmintrin.h>

#include "kef_vm.h"
#include "tests/system.h"
#include "tests/threads.h"

namespace kef_test {
namespace {

constexpr std::uint32_t default_mode = 0x1A02;

int refuse(kef_vtm_error_record*) { return 1; }
int accept(kef_vtm_error_record*) { return 0; }

TEST(Mode, StartsAsTheDefault) {
    in_fresh_thread([] {
        EXPECT_EQ(kef_vtm_kernel_GetMode(), default_mode);
        EXPECT_EQ(kef_vtm_kernel_GetTTableIndex(), 1);
        EXPECT_EQ(kef_vtm_kernel_GetErrStatus(), VTM_STATUS_OK);
        EXPECT_EQ(kef_vtm_kernel_GetErrorCallBack(), nullptr);
    });
}

TEST(Mode, SetModeReplacesTheFieldsThatAreGiven) {
    const struct {
        std::uint32_t set, expected;
    } steps[] = {{0x0001, 0x1A01},     {0x0030, 0x1A01},       {0x0000, 0x1A01},
                 {0x0100, 0x0101},     {0x0403, 0x0403},       {0x280000, 0x280403},
                 {0x140000, 0x140403}, {0x040000, 0x040403},   {0xF0000000, 0x040403},
                 {0x30000, 0x040403},  {0xC00000, 0x040403},   {0x800000F2, 0x040402},
                 {0x1000, 0x041002},   {0xFFFFFFFF, 0x3CFF0F}, {0x1, 0x3CFF01}};
    in_fresh_thread([&] {
        std::uint32_t before = default_mode;
        for (const auto& step : steps) {
            EXPECT_EQ(kef_vtm_kernel_SetMode(step.set), before) << std::hex << step.set;
            EXPECT_EQ(kef_vtm_kernel_GetMode(), step.expected) << std::hex << step.set;
            before = step.expected;
        }
    });
}

TEST(Mode, TableIndexOfAnyModeWord) {
    for (std::uint32_t accuracy : {0u, 1u, 2u, 3u, 15u})
        for (std::uint32_t rest : {0u, 0x1A00u, 0xFFFFFFF0u})
            EXPECT_EQ(kef_vtm_kernel_GetTTableIndexM(7, rest | accuracy),
                      static_cast<int>(accuracy) - 1);
}

TEST(Mode, ShortNamesAreTheLongOnes) {
    const auto same = [](auto* x, auto* y) {
        return reinterpret_cast<void*>(x) == reinterpret_cast<void*>(y);
    };
    EXPECT_TRUE(same(_vtmGetMode, kef_vtm_kernel_GetMode));
    EXPECT_TRUE(same(_vtmSetMode, kef_vtm_kernel_SetMode));
    EXPECT_TRUE(same(_vtmGetErrStatus, kef_vtm_kernel_GetErrStatus));
    EXPECT_TRUE(same(_vtmSetErrStatus, kef_vtm_kernel_SetErrStatus));
    EXPECT_TRUE(same(_vtmClearErrStatus, kef_vtm_kernel_ClearErrStatus));
    EXPECT_TRUE(same(_vtmGetErrorCallBack, kef_vtm_kernel_GetErrorCallBack));
    EXPECT_TRUE(same(_vtmSetErrorCallBack, kef_vtm_kernel_SetErrorCallBack));
    EXPECT_TRUE(same(_vtmClearErrorCallBack, kef_vtm_kernel_ClearErrorCallBack));
    EXPECT_TRUE(same(_vtmSetInterfInputVectorPointer, kef_vtm_kernel_SetInterfInputVectorPointer));
}

TEST(Mode, CallbackBitFollowsTheCallback) {
    in_fresh_thread([] {
        for (std::uint32_t start : {0x1A02, 0x1002, 0x0402, 0x0102, 0xF002}) {
            SCOPED_TRACE(start);
            kef_vtm_kernel_SetMode(start);
            EXPECT_EQ(kef_vtm_kernel_SetErrorCallBack(refuse), nullptr);
            EXPECT_EQ(kef_vtm_kernel_GetMode(), start | VTM_ERRMODE_CALLBACK);
            EXPECT_EQ(kef_vtm_kernel_SetErrorCallBack(accept), refuse);
            EXPECT_EQ(kef_vtm_kernel_GetErrorCallBack(), accept);
            EXPECT_EQ(kef_vtm_kernel_SetErrorCallBack(nullptr), accept);
            EXPECT_EQ(kef_vtm_kernel_GetMode(), start & ~VTM_ERRMODE_CALLBACK);
            EXPECT_EQ(kef_vtm_kernel_ClearErrorCallBack(), nullptr);
            EXPECT_EQ(kef_vtm_kernel_GetMode(), start & ~VTM_ERRMODE_CALLBACK);
        }
    });
}

// The environment is read by threads whose mode word is zero.
TEST(Mode, ZeroFromTheEnvironmentIsReadAgainAndZeroByClearingIsNot) {
    set_environment("KEF_VTM_MODE", "VTM_DEFAULT_PRECISION");
    in_fresh_thread([] {
        EXPECT_EQ(kef_vtm_kernel_GetMode(), 0u);
        EXPECT_EQ(kef_vtm_kernel_GetTTableIndex(), -1);
        set_environment("KEF_VTM_MODE", "VTM_EP");
        EXPECT_EQ(kef_vtm_kernel_GetMode(), 3u);
        set_environment("KEF_VTM_MODE", "VTM_LA");
        EXPECT_EQ(kef_vtm_kernel_GetMode(), 3u);
    });
    set_environment("KEF_VTM_MODE", "VTM_ERRMODE_CALLBACK");
    in_fresh_thread([] {
        EXPECT_EQ(kef_vtm_kernel_SetErrorCallBack(refuse), nullptr);
        EXPECT_EQ(kef_vtm_kernel_GetMode(), 0x1000u);
        EXPECT_EQ(kef_vtm_kernel_ClearErrorCallBack(), refuse);
        EXPECT_EQ(kef_vtm_kernel_GetMode(), 0u);
        EXPECT_EQ(kef_vtm_kernel_SetMode(0), 0u);
        EXPECT_EQ(kef_vtm_kernel_SetMode(0x30), 0u);
        EXPECT_EQ(kef_vtm_kernel_GetMode(), 0u);
        EXPECT_EQ(kef_vtm_kernel_SetMode(VTM_EP), 0u);
        EXPECT_EQ(kef_vtm_kernel_GetMode(), 3u);
    });
    set_environment("KEF_VTM_MODE", nullptr);
}

TEST(Mode, EnvironmentValues) {
    std::string many;  // 238 characters
    for (int i = 0; i < 34; ++i) many += "VTM_LA,";
    // clang-format off
    const struct { std::string value; const char* mode; } cases[] = {
        {"", "1A02 1"},
        {"VTM_LA", "1 0"}, {"VTM_HA", "2 1"}, {"VTM_EP", "3 2"},
        {"VTM_DEFAULT_PRECISION", "0 -1"},
        {"VTM_FLOAT_CONSISTENT", "10 -1"}, {"VTM_DOUBLE_CONSISTEN", "20 -1"}, {"VTM_RESTORE", "30 -1"},
        {"VTM_ERRMODE_IGNORE", "100 -1"}, {"VTM_ERRMODE_ERRNO", "200 -1"},
        {"VTM_ERRMODE_STDERR", "400 -1"}, {"VTM_ERRMODE_EXCEPT", "800 -1"},
        {"VTM_ERRMODE_CALLBACK", "1000 -1"}, {"VTM_ERRMODE_DEFAULT", "1A00 -1"},
        {"VTM_EP,VTM_ERRMODE_STDERR", "403 2"}, {"VTM_LA,VTM_HA", "3 2"},
        {"VTM_HA,VTM_DOUBLE_CONSISTEN,VTM_ERRMODE_ERRNO,VTM_ERRMODE_EXCEPT", "A22 1"},
        {"VTM_EP,", "1A02 1"}, {",VTM_EP", "1A02 1"}, {"VTM_EP,,VTM_LA", "1A02 1"},
        {"VTM_EP, VTM_LA", "1A02 1"}, {" VTM_EP", "1A02 1"}, {"VTM_EP ", "1A02 1"},
        {"VTM_DOUBLE_CONSISTENT", "1A02 1"}, {"VTM_EP,VTM_DOUBLE_CONSISTENT", "1A02 1"},
        {"EP", "1A02 1"}, {"VTM_", "1A02 1"}, {"VTM", "1A02 1"}, {"vtm_ep", "1A02 1"},
        {"VTM_EPX", "1A02 1"}, {"VTM_LAHA", "1A02 1"}, {"VTM_ERRMODE_", "1A02 1"},
        {"VTM_LA;VTM_HA", "1A02 1"},
        // 255 characters fit the buffer, 256 do not.
        {many + "VTM_ERRMODE_ERRNO", "201 0"}, {many + "VTM_ERRMODE_STDERR", "1A02 1"},
        {many + many + "VTM_EP", "1A02 1"}, {"VTM_LA," + std::string(100000, 'x'), "1A02 1"},
    };
    // clang-format on
    for (const auto& c : cases) {
        const Outcome outcome = run_client("control", {"mode"}, {"KEF_VTM_MODE=" + c.value});
        EXPECT_EQ(outcome.out, std::string(c.mode) + "\n") << c.value.substr(0, 300);
        EXPECT_EQ(outcome.exit_code, 0);
    }
}

TEST(Status, SetAndClearGiveTheStatusBefore) {
    in_fresh_thread([] {
        EXPECT_EQ(kef_vtm_kernel_SetErrStatus(-77), 0);
        EXPECT_EQ(kef_vtm_kernel_SetErrStatus(VTM_STATUS_SING), -77);
        EXPECT_EQ(kef_vtm_kernel_GetErrStatus(), VTM_STATUS_SING);
        EXPECT_EQ(kef_vtm_kernel_ClearErrStatus(), VTM_STATUS_SING);
        EXPECT_EQ(kef_vtm_kernel_GetErrStatus(), VTM_STATUS_OK);
    });
}

TEST(Threads, ShareNothing) {
    in_fresh_thread([] {
        const double bad = -1.0;
        double r, input[1];
        kef_vtm_kernel_SetMode(VTM_LA | VTM_ERRMODE_IGNORE);
        kef_vtm_kernel_SetErrorCallBack(accept);
        kef_vtm_kernel_SetInterfInputVectorPointer(input);
        _vtmdSqrt(1, &bad, &r);
        in_fresh_thread([] {
            EXPECT_EQ(kef_vtm_kernel_GetMode(), default_mode);
            EXPECT_EQ(kef_vtm_kernel_GetErrStatus(), VTM_STATUS_OK);
            EXPECT_EQ(kef_vtm_kernel_GetErrorCallBack(), nullptr);
            kef_vtm_kernel_SetMode(VTM_EP);
            kef_vtm_kernel_SetErrStatus(VTM_STATUS_OVERFLOW);
            kef_vtm_kernel_SetErrorCallBack(refuse);
        });
        EXPECT_EQ(kef_vtm_kernel_GetMode(), 0x1101u);
        EXPECT_EQ(kef_vtm_kernel_GetErrStatus(), VTM_STATUS_ERRDOM);
        EXPECT_EQ(kef_vtm_kernel_GetErrorCallBack(), accept);
    });
}

// One failing element of each status, by functions of one and two arguments.
struct Failure {
    const char* name;
    void (*call)(std::int32_t, const double*, const double*, double*);
    double a, b, r;
    std::int32_t status, errno_value;
    std::uint32_t flags;
};
constexpr std::uint32_t invalid = 0x01, divide_by_zero = 0x04, overflow = 0x08, underflow = 0x10;
template <auto function> void one(std::int32_t n, const double* a, const double*, double* r) {
    function(n, a, r);
}
const Failure failures[] = {
    {"vdSqrt", one<_vtmdSqrt>, -2.0, -2.0, NAN, VTM_STATUS_ERRDOM, 33, invalid},
    {"vdInv", one<_vtmdInv>, -0.0, -0.0, -INFINITY, VTM_STATUS_SING, 34, divide_by_zero},
    {"vdExp", one<_vtmdExp>, 800.0, 800.0, INFINITY, VTM_STATUS_OVERFLOW, 34, overflow},
    {"vdExp", one<_vtmdExp>, -800.0, -800.0, 0.0, VTM_STATUS_UNDERFLOW, 34, underflow},
    {"vdDiv", _vtmdDiv, 3.0, -0.0, -INFINITY, VTM_STATUS_SING, 34, divide_by_zero},
    {"vdDiv", _vtmdDiv, 1e300, 1e-300, INFINITY, VTM_STATUS_OVERFLOW, 34, overflow},
};

thread_local kef_vtm_error_record last;
thread_local int calls;
thread_local double replacement1, replacement2;
thread_local int answer;
int scripted(kef_vtm_error_record* record) {
    ++calls;
    last = *record;
    record->result1 = replacement1;
    record->result2 = replacement2;
    return answer;
}
bool equal(double x, double y) { return x == y || (std::isnan(x) && std::isnan(y)); }

TEST(Errors, EachModeDoesItsPartAndNoMore) {
    in_fresh_thread([] {
        for (std::uint32_t mode :
             {0x100, 0x200, 0x800, 0xA00, 0x1000, 0x1A00, 0x1100, 0x2000, 0x4200})
            for (const Failure& f : failures) {
                SCOPED_TRACE(std::string(f.name) + " " + std::to_string(mode));
                double r = 7.0;
                kef_vtm_kernel_SetErrorCallBack(scripted);
                kef_vtm_kernel_SetMode(mode);
                kef_vtm_kernel_ClearErrStatus();
                calls = 0, answer = 0, replacement1 = replacement2 = 42.0;
                errno = 99;
                _mm_setcsr(0x1F80);
                f.call(1, &f.a, &f.b, &r);
                const std::uint32_t flags = _mm_getcsr() & 0x1F;
                _mm_setcsr(0x1F80);
                const bool called = (mode & 0xF000) != 0;
                EXPECT_EQ(kef_vtm_kernel_GetErrStatus(), f.status);
                EXPECT_EQ(errno, (mode & 0x200) != 0 ? f.errno_value : 99);
                if ((mode & 0x800) != 0) EXPECT_EQ(flags & ~0x20, f.flags);
                EXPECT_EQ(flags & ~f.flags & ~0x20u, 0u);
                EXPECT_EQ(calls, called);
                EXPECT_TRUE(equal(r, called ? 42.0 : f.r)) << r;
                kef_vtm_kernel_ClearErrorCallBack();
            }
    });
}

TEST(Errors, ExpRaisesFlagsByTheExceptionModeAlone) {
    in_fresh_thread([] {
        const double a[] = {800.0, -800.0};
        double r[2];
        kef_vtm_kernel_SetMode(VTM_ERRMODE_ERRNO);
        _mm_setcsr(0x1F80);
        _vtmdExp(2, a, r);
        EXPECT_EQ(_mm_getcsr() & (overflow | underflow), 0u);
        _mm_setcsr(0x1F80);
    });
}

TEST(Errors, RecordLayout) {
    EXPECT_EQ(sizeof(kef_vtm_error_record), 144u);
    const std::size_t offsets[] = {offsetof(kef_vtm_error_record, code),
                                   offsetof(kef_vtm_error_record, index),
                                   offsetof(kef_vtm_error_record, argument1),
                                   offsetof(kef_vtm_error_record, argument2),
                                   offsetof(kef_vtm_error_record, result1),
                                   offsetof(kef_vtm_error_record, result2),
                                   offsetof(kef_vtm_error_record, name),
                                   offsetof(kef_vtm_error_record, name_length),
                                   offsetof(kef_vtm_error_record, argument1_imag),
                                   offsetof(kef_vtm_error_record, argument2_imag),
                                   offsetof(kef_vtm_error_record, result1_imag),
                                   offsetof(kef_vtm_error_record, result2_imag)};
    const std::size_t expected[] = {0, 4, 8, 16, 24, 32, 40, 104, 112, 120, 128, 136};
    for (std::size_t i = 0; i < std::size(expected); ++i) EXPECT_EQ(offsets[i], expected[i]) << i;
}

TEST(Errors, RecordTellsTheElement) {
    in_fresh_thread([] {
        kef_vtm_kernel_SetErrorCallBack(scripted);
        answer = 1;
        for (const Failure& f : failures) {
            double a[9], b[9], r[9];
            for (int place = 0; place < 9; ++place) {
                for (int i = 0; i < 9; ++i) a[i] = b[i] = 0.5;
                a[place] = f.a, b[place] = f.b;
                calls = 0;
                f.call(9, a, b, r);
                EXPECT_EQ(calls, 1);
                EXPECT_EQ(last.code, f.status);
                EXPECT_EQ(last.index, place);
                EXPECT_EQ(last.argument1, f.a);
                EXPECT_EQ(last.argument2, f.b);
                EXPECT_TRUE(equal(last.result1, f.r) && equal(last.result2, f.r));
                EXPECT_STREQ(last.name, f.name);
                EXPECT_EQ(last.name_length, static_cast<int>(std::string(f.name).size()));
                EXPECT_TRUE(equal(r[place], f.r)) << "a refused replacement is stored";
            }
        }
        const float a = -3.0f;
        float r;
        _vtmsSqrt(1, &a, &r);
        EXPECT_STREQ(last.name, "vsSqrt");
        EXPECT_EQ(last.argument1, -3.0);
    });
}

TEST(Errors, CallbackReplacesResults) {
    in_fresh_thread([] {
        kef_vtm_kernel_SetErrorCallBack(scripted);
        kef_vtm_kernel_SetMode(VTM_ERRMODE_CALLBACK);
        const struct {
            double first, second, expected;
        } replies[] = {{1.25, -INFINITY, 1.25},  // the second left as it was
                       {-INFINITY, 2.25, 2.25},  // the first left as it was
                       {3.25, 3.25, 3.25},
                       {-INFINITY, -INFINITY, -INFINITY}};
        for (const auto& reply : replies) {
            const double zero = -0.0;
            const float narrow = -0.0f;
            double r;
            float s;
            answer = 0, replacement1 = reply.first, replacement2 = reply.second;
            _vtmdInv(1, &zero, &r);
            _vtmsInv(1, &narrow, &s);
            EXPECT_EQ(r, reply.expected);
            EXPECT_EQ(s, static_cast<float>(reply.expected));
        }
        // In place, the record still holds the argument.
        double x[] = {1.0, 2.0, 0.0};
        replacement1 = replacement2 = 5.0;
        _vtmdInv(3, x, x);
        EXPECT_EQ(last.argument1, 0.0);
        EXPECT_EQ(x[1], 0.5);
        EXPECT_EQ(x[2], 5.0);
        // Two results, each with its own.
        const double angles[] = {0.0, INFINITY};
        double sines[2], cosines[2];
        replacement1 = 1.5, replacement2 = 2.5;
        _vtmdSinCos(2, angles, sines, cosines);
        EXPECT_EQ(sines[1], 1.5);
        EXPECT_EQ(cosines[1], 2.5);
    });
}

TEST(Errors, IndexCountsFromTheInterfaceInputVector) {
    in_fresh_thread([] {
        double a[20], b[20], r[20];
        float s[20], t[20];
        for (int i = 0; i < 20; ++i) a[i] = s[i] = i == 13 ? 0.0 : 1.0, b[i] = 1.0;
        kef_vtm_kernel_SetErrorCallBack(scripted);
        answer = 1;
        EXPECT_EQ(kef_vtm_kernel_SetInterfInputVectorPointer(a), a);
        _vtmdInv(10, a + 10, r);
        EXPECT_EQ(last.index, 13);
        _vtmdInv(1, a + 13, r);
        EXPECT_EQ(last.index, 13);
        _vtmdDiv(10, b, a + 10, r);  // counts from the first argument
        EXPECT_EQ(last.index, 3 + static_cast<int>(b - a));
        kef_vtm_kernel_SetInterfInputVectorPointer(s);
        _vtmsInv(10, s + 10, t);
        EXPECT_EQ(last.index, 13);
        kef_vtm_kernel_SetInterfInputVectorPointer(s + 12);
        _vtmsInv(20, s, t);
        EXPECT_EQ(last.index, 1);
        EXPECT_EQ(kef_vtm_kernel_SetInterfInputVectorPointer(nullptr), nullptr);
        _vtmsInv(10, s + 10, t);
        EXPECT_EQ(last.index, 3);
        // In place.
        kef_vtm_kernel_SetInterfInputVectorPointer(a);
        _vtmdInv(10, a + 10, a + 10);
        EXPECT_EQ(last.index, 13);
    });
}

TEST(Errors, TheLastOneWinsAndStays) {
    in_fresh_thread([] {
        kef_vtm_kernel_SetMode(VTM_ERRMODE_IGNORE);
        const double a[] = {800.0, 1.0, -800.0, 2.0, 3.0}, good = 1.0;
        double r[5];
        _vtmdExp(5, a, r);
        EXPECT_EQ(kef_vtm_kernel_GetErrStatus(), VTM_STATUS_UNDERFLOW);
        EXPECT_EQ(r[4], std::exp(3.0));
        _vtmdExp(1, &good, r);
        EXPECT_EQ(kef_vtm_kernel_GetErrStatus(), VTM_STATUS_UNDERFLOW);
    });
}

TEST(Errors, ACallbackMayUseTheLibrary) {
    in_fresh_thread([] {
        kef_vtm_kernel_SetErrorCallBack([](kef_vtm_error_record* record) {
            const double a = -record->argument1;
            _vtmdSqrt(1, &a, &record->result1);
            kef_vtm_kernel_ClearErrorCallBack();
            return 0;
        });
        const double a[] = {-4.0, -9.0};
        double r[2];
        _vtmdSqrt(2, a, r);
        EXPECT_EQ(r[0], 2.0);
        EXPECT_TRUE(std::isnan(r[1]));
    });
}

// Lines on standard error, to the letter.
TEST(Errors, MessagesOnStandardError) {
    const Outcome outcome =
        run_client("control", {"messages"}, {"KEF_VTM_MODE=VTM_HA,VTM_ERRMODE_STDERR"});
    EXPECT_EQ(outcome.exit_code, 0);
    EXPECT_EQ(outcome.err,
              "Error (VTM_STATUS_ERRDOM) in vdSqrt: argument is out of domain.\n"
              "a(1)=-4\n"
              "r(1)=nan\n"
              "Error (VTM_STATUS_SING) in vsInv: argument caused singularity.\n"
              "a(0)=-0\n"
              "r(0)=-inf\n"
              "Error (VTM_STATUS_OVERFLOW) in vdExp: argument caused overflow.\n"
              "a(2)=1234.57\n"
              "r(2)=inf\n"
              "Error (VTM_STATUS_UNDERFLOW) in vdExp: argument caused underflow.\n"
              "a(3)=-710\n"
              "r(3)=4.47629e-309\n"
              "Error (VTM_STATUS_OVERFLOW) in vdDiv: argument caused overflow.\n"
              "a(5)=1e+300\n"
              "b(5)=1e-300\n"
              "y(5)=inf\n"
              "Error (VTM_STATUS_SING) in vdDiv: argument caused singularity.\n"
              "a(0)=3\n"  // a second argument of 0 is not shown
              "r(0)=inf\n");
    // A callback that refuses silences the message, one that accepts does not.
    EXPECT_EQ(run_client("control", {"refused"}, {"KEF_VTM_MODE=VTM_ERRMODE_STDERR"}).err, "");
    EXPECT_EQ(run_client("control", {"accepted"}, {"KEF_VTM_MODE=VTM_ERRMODE_STDERR"}).err,
              "Error (VTM_STATUS_SING) in vdInv: argument caused singularity.\na(0)=0\nr(0)=6.5\n");
}

// A caller who unmasked an exception is trapped in exception mode, and there alone: after
// the report and by its operation, never by a kernel's own arithmetic. What an arithmetic
// function raised stands in the flags at the end.
TEST(Errors, UnmaskedExceptionsTrap) {
    const struct {
        const char *function, *a, *b, *name;
        int status, errno_value;
        const char *signal, *flags;  // of the function itself
    } cases[] = {{"dSqrt", "-1", "1", "vdSqrt", 1, 33, "FLTINV", "1"},
                 {"sSqrt", "-1", "1", "vsSqrt", 1, 33, "FLTINV", "1"},
                 {"dInv", "0", "1", "vdInv", 2, 34, "FLTDIV", "4"},
                 {"sInv", "0", "1", "vsInv", 2, 34, "FLTDIV", "4"},
                 {"dDiv", "0", "0", "vdDiv", 1, 33, "FLTINV", "1"},
                 {"sDiv", "1e30", "1e-30", "vsDiv", 3, 34, "FLTOVF", "8"},
                 {"dDiv", "1e300", "1e-300", "vdDiv", 3, 34, "FLTOVF", "8"},
                 {"dDiv", "3", "0", "vdDiv", 2, 34, "FLTDIV", "4"},
                 {"dMul", "1e300", "1e300", nullptr, 0, 0, "", "8"},
                 {"dExp", "800", "1", "vdExp", 3, 34, "FLTOVF", "0"},
                 {"dExp", "-800", "1", "vdExp", 4, 34, "FLTUND", "0"}};
    for (const auto& c : cases) {
        const auto out = [&](const char* mode) {
            return run_client("control", {"trap", c.function, c.a, c.b},
                              {"KEF_VTM_MODE=VTM_HA," + std::string(mode)})
                .out;
        };
        const std::string flags = std::string(" flags ") + c.flags + "\n";
        EXPECT_EQ(out("VTM_ERRMODE_IGNORE"), "errno 0" + flags) << c.function;
        const std::string with_errno = "errno " + std::to_string(c.errno_value);
        EXPECT_EQ(out("VTM_ERRMODE_ERRNO"), with_errno + flags) << c.function;
        const std::string report =
            c.name ? std::string(c.name) + ' ' + std::to_string(c.status) + " errno 0\n" : "";
        EXPECT_EQ(out("VTM_ERRMODE_CALLBACK"), report + "errno 0" + flags) << c.function;
        EXPECT_EQ(out("VTM_ERRMODE_DEFAULT"),
                  c.name ? report + c.signal + ' ' + with_errno + '\n' : "errno 0" + flags)
            << c.function;
    }
}

}  // namespace
}  // namespace kef_test
