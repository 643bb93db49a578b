// No kernel meets a subnormal number on its way from ordinary arguments to ordinary results:
// many processors take a hundred cycles or more for an instruction that does. Which instruction
// does is seen on every processor, by unmasking the exceptions for subnormal operands and results
// while a kernel runs.
#if defined(__linux__)
#include <cmath>
#include <csignal>
#include <cstring>
#include <limits>
#include <numeric>
#include <vector>

#include <gtest/gtest.h>
#include <ucontext.h>
#include <xmmintrin.h>

#include "bench/batch.h"
#include "kef_vm.h"

namespace kef {
namespace {

// Kernels mask all exceptions for their time. So a call begins in single steps: as soon as a
// trap finds the masks set it takes off those that are watched, in the register that the return
// from the signal loads, and stepping ends.
class Watch {
public:
    // Whether the call meets a subnormal number.
    template <class Function> static bool met(Function call) {
        seen_ = 0;
        steps_ = 0;
        const std::uint32_t callers = _mm_getcsr();
        _mm_setcsr((callers | masks) & ~(watched | flags));
        trap_flag(true);
        call();
        trap_flag(false);
        _mm_setcsr(callers);
        return seen_ != 0;
    }
    Watch() {
        struct sigaction action = {};
        action.sa_flags = SA_SIGINFO;
        action.sa_sigaction = on_step;
        sigaction(SIGTRAP, &action, &before_[0]);
        action.sa_sigaction = on_exception;
        sigaction(SIGFPE, &action, &before_[1]);
    }
    ~Watch() {
        sigaction(SIGTRAP, &before_[0], nullptr);
        sigaction(SIGFPE, &before_[1], nullptr);
    }

private:
    static constexpr std::uint32_t masks = 0x1F80, flags = 0x003F;
    static constexpr std::uint32_t watched = 0x0900;  // masks of subnormal operand, underflow
    static constexpr long trap_bit = 0x100;
    static constexpr int most_steps = 2000;

    static void trap_flag(bool on) {
#if defined(__x86_64__)
        __asm__ volatile(
            "sub $128, %%rsp\n\tpushfq\n\tandq $-257, (%%rsp)\n\torq %0, (%%rsp)\n\t"
            "popfq\n\tadd $128, %%rsp"
            :
            : "r"(on ? trap_bit : 0)
            : "cc", "memory");
#else
        __asm__ volatile("pushfl\n\tandl $-257, (%%esp)\n\torl %0, (%%esp)\n\tpopfl"
                         :
                         : "r"(on ? trap_bit : 0)
                         : "cc", "memory");
#endif
    }

    // MXCSR and flags register of the interrupted code.
    static std::uint32_t& control(void* context) {
        auto& machine = static_cast<ucontext_t*>(context)->uc_mcontext;
        constexpr std::size_t offset = sizeof(void*) == 8 ? 24 : 112 + 24;  // FXSAVE area
        return *reinterpret_cast<std::uint32_t*>(reinterpret_cast<char*>(machine.fpregs) + offset);
    }
    static void on_step(int, siginfo_t*, void* context) {
        auto& machine = static_cast<ucontext_t*>(context)->uc_mcontext;
        std::uint32_t& word = control(context);
        steps_ = steps_ + 1;
        const bool inside = (word & masks) == masks;
        if (inside) word &= ~(watched | flags);
        if (inside || steps_ >= most_steps) machine.gregs[REG_EFL] &= ~trap_bit;
    }
    static void on_exception(int, siginfo_t*, void* context) {
        seen_ = seen_ + 1;
        control(context) |= watched;
    }

    static inline volatile int seen_ = 0, steps_ = 0;
    struct sigaction before_[2];
};

// Powers of two, and two numbers between each and the next, of both signs.
template <class T> std::vector<T> sizes(int step) {
    using Limits = std::numeric_limits<T>;
    std::vector<T> result;
    for (int e = Limits::min_exponent - 1; e < Limits::max_exponent; e += step)
        for (const double factor : {1.0, 1.3717421, 1.9876543})
            for (const int sign : {1, -1})
                result.push_back(std::ldexp(static_cast<T>(sign * factor), e));
    return result;
}

// Pairs for functions of two arguments, by the same sizes.
template <class T> Batch<T> arguments(const kef_test::Row& row) {
    std::vector<T> a, b;
    if (row.arguments == 1) {
        a = b = sizes<T>(1);
    } else {
        for (const T x : sizes<T>(sizeof(T) == 4 ? 8 : 48))
            for (const T y : sizes<T>(sizeof(T) == 4 ? 9 : 50)) a.push_back(x), b.push_back(y);
    }
    Batch<T> batch(a.size());
    batch.a = a, batch.b = b;
    batch.scalars = {T(1.5), T(0.25), T(0.75), T(2.5)};
    return batch;
}

template <class T> bool is_small(T x) {  // subnormal, or 0, perhaps after an underflow
    return std::fabs(x) < std::numeric_limits<T>::min();
}

template <class T> Batch<T> part(const Batch<T>& all, std::size_t first, std::size_t count) {
    Batch<T> batch(count);
    std::copy_n(&all.a[first], count, batch.a.begin());
    std::copy_n(&all.b[first], count, batch.b.begin());
    batch.scalars = all.scalars;
    return batch;
}

// The elements with ordinary results.
template <class T> Batch<T> ordinary(const Batch<T>& all, const Kernel<T>& kernel, int results) {
    std::vector<std::size_t> kept;
    for (int i = 0; i < all.size(); ++i) {
        Batch<T> one = part(all, i, 1);
        kef_vtm_kernel_ClearErrStatus();
        kernel.run(one);
        if (kef_vtm_kernel_GetErrStatus() == VTM_STATUS_OK && !is_small(one.result[0][0]) &&
            (results < 2 || !is_small(one.result[1][0])))
            kept.push_back(i);
    }
    Batch<T> batch(kept.size());
    for (std::size_t i = 0; i < kept.size(); ++i)
        batch.a[i] = all.a[kept[i]], batch.b[i] = all.b[kept[i]];
    batch.scalars = all.scalars;
    return batch;
}

// The first element of [first, last) that meets one by itself or with its neighbours, where one of
// them does.
template <class T>
std::size_t first_met(const Kernel<T>& kernel, const Batch<T>& batch, std::size_t first,
                      std::size_t last) {
    while (last - first > 4) {
        const std::size_t middle = (first + last) / 2;
        Batch<T> half = part(batch, first, middle - first);
        (Watch::met([&] { kernel.run(half); }) ? last : first) = middle;
    }
    return first;
}

template <class T> void check(const kef_test::Row& row) {
    const Batch<T> all = arguments<T>(row);
    for (const Kernel<T>& kernel : kernels<T>(row)) {
        const Batch<T> batch = ordinary(all, kernel, row.results);
        const std::size_t size = batch.a.size(), chunk = 1024;
        for (std::size_t i = 0; i < size; i += chunk) {
            const std::size_t count = std::min(chunk, size - i);
            Batch<T> many = part(batch, i, count);
            if (!Watch::met([&] { kernel.run(many); })) continue;
            const std::size_t j = first_met(kernel, batch, i, i + count);
            ADD_FAILURE() << row.name() << " " << kernel.name << ": " << batch.a[j] << ", "
                          << batch.b[j];
        }
    }
}

TEST(Subnormals, NoneOnTheWay) {
    const Watch watch;
    kef_vtm_kernel_SetMode(VTM_ERRMODE_IGNORE);
    const float a = 1e-30f, b = 1e-15f;
    float product;
    ASSERT_TRUE(Watch::met([&] { _vtmsMul(1, &a, &b, &product); })) << "nothing is seen here";
    for (const kef_test::Row& row : kef_test::rows()) {
        if (!row.element_wise()) continue;
        if (row.type == 's') check<float>(row);
        if (row.type == 'd') check<double>(row);
    }
}

}  // namespace
}  // namespace kef
#endif
