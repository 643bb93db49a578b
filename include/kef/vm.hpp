/// Vector math over contiguous ranges of float, double, std::complex<float> and
/// std::complex<double>.
///
///   kef::exp(x, y);               y[i] = e^x[i]
///   kef::exp(x);                  in place
///   kef::exp(x, y, kef::low);     the accuracy: high (the default), low or enhanced
///   kef::pow(a, b, y);            two vectors, or a vector and one number
///
/// Ranges are contiguous and know their size: std::vector, std::array, std::span, arrays. Ranges of
/// one call have one size, of any length (2^31 and more included); a result may be an argument
/// itself, and otherwise must not overlap it (ArgumentError). Results of a range that is const or a
/// temporary do not compile. The functions are objects: they can be handed on as they are.
///
/// What an element without a proper result does is said by the innermost kef::Errors of the thread,
/// without one by the thread's own mode word, as in C.
#ifndef KEF_VM_HPP
#define KEF_VM_HPP

#include <algorithm>
#include <bit>
#include <complex>
#include <concepts>
#include <cstdint>
#include <cstring>
#include <exception>
#include <functional>
#include <initializer_list>
#include <limits>
#include <ranges>
#include <span>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "kef/error.hpp"
#include "kef_vm.h"

namespace kef {

/// Good bits of a result, double and single precision: high, nearly all (at most 0.55 ulp for most
/// functions); low, 50 and 21; enhanced (performance), 26 and 11. docs/accuracy.md has the figures.
enum class Accuracy : int { low = VTM_SLOT_LA, high = VTM_SLOT_HA, enhanced = VTM_SLOT_EP };
inline constexpr Accuracy low = Accuracy::low;
inline constexpr Accuracy high = Accuracy::high;
inline constexpr Accuracy enhanced = Accuracy::enhanced;

/// One element without a proper result. Numbers of single precision are widened; of real functions
/// the imaginary parts mean nothing.
struct ElementReport {
    std::int32_t code;     ///< VTM_STATUS_ERRDOM, _SING, _OVERFLOW or _UNDERFLOW
    std::size_t index;     ///< in the range that was given to the function
    std::string function;  ///< "kef::log"; of a call of a C function the name in its record
    std::complex<double> argument1, argument2;  ///< equal where the function has one argument
    std::complex<double> result1, result2;      ///< equal where it has one result
};

/// What kef::Errors throws for an element.
class ElementError : public Error {
public:
    explicit ElementError(const ElementReport& report)
        : Error(Family::vector_math, report.code, words(report)), report_(report) {}

    const ElementReport& report() const noexcept { return report_; }
    std::size_t index() const noexcept { return report_.index; }

private:
    static std::string words(const ElementReport& r) {
        char numbers[160];
        const auto print = [&](const std::complex<double>& z, int at) {
            return std::snprintf(numbers + at, sizeof numbers - std::size_t(at),
                                 z.imag() != 0 ? "%.17g%+.17gi" : "%.17g", z.real(), z.imag());
        };
        int at = print(r.argument1, 0);
        if (r.argument2 != r.argument1) {
            at += std::snprintf(numbers + at, sizeof numbers - std::size_t(at), ", ");
            print(r.argument2, at);
        }
        return r.function + ": element " + std::to_string(r.index) + ", argument " + numbers +
               ": " + kef_vtm_status_text(r.code);
    }

    ElementReport report_;
};

/// What an element error does besides setting the thread's status.
enum class OnError {
    raise,    ///< after the call, which has computed all elements, the first one is thrown
    collect,  ///< all are added to Errors::reports()
    ignore    ///< nothing
};

/// Scope of a way to treat element errors, on the thread that it was made on: the innermost one
/// counts. At its end the thread's mode word and error callback are as they were, however it ends.
/// Scopes end in the reverse order of their beginning, on their own thread.
class Errors {
public:
    /// Called for each element; may change the results, and then these are stored.
    using Handler = std::function<void(ElementReport&)>;

    explicit Errors(OnError what) : what_(what) {
        if (what != OnError::raise && what != OnError::collect && what != OnError::ignore)
            refuse("what", "is not one of OnError");
        begin();
    }
    /// A handler that throws is not called again in that call; what it threw leaves the call when
    /// all elements are computed.
    explicit Errors(Handler handler) : handler_(std::move(handler)) {
        if (!handler_) refuse("handler", "is empty");
        begin();
    }
    Errors(const Errors&) = delete;
    Errors& operator=(const Errors&) = delete;
    ~Errors() {
        current_ = outer_;
        // The callback first: installing it sets VTM_ERRMODE_CALLBACK.
        kef_vtm_kernel_SetErrorCallBack(old_callback_);
        const bool field = old_mode_ & VTM_ERRMODE_MASK;
        kef_vtm_kernel_SetMode(field ? old_mode_ : old_mode_ | VTM_ERRMODE_IGNORE);
    }

    /// What OnError::collect has added, in the order of the elements and calls.
    const std::vector<ElementReport>& reports() const noexcept { return reports_; }
    void clear() noexcept { reports_.clear(); }

    /// Throws what is to be thrown and was not yet: element errors of C functions that were called
    /// inside the scope. The functions of this interface do it themselves.
    void check() {
        if (failure_) [[unlikely]]
            std::rethrow_exception(std::exchange(failure_, nullptr));
    }

    /// Runs kernels as part of `function`, if there is a scope.
    template <class Kernels> static void run(const char* function, Kernels&& kernels) {
        if (Errors* const scope = current_) [[unlikely]]
            scope->run_here(function, kernels);
        else kernels();
    }
    /// The position of the piece of a long vector that is being computed.
    static void at(std::size_t base) noexcept {
        if (current_) current_->base_ = base;
    }

private:
    [[noreturn]] static void refuse(const char* argument, const char* words) {
        throw ArgumentError(Family::vector_math, VTM_STATUS_BADSIZE, "kef::Errors", argument,
                            words);
    }
    void begin() {
        if (what_ == OnError::ignore) {
            kef_vtm_kernel_SetMode(VTM_ERRMODE_IGNORE);
        } else {
            kef_vtm_kernel_SetErrorCallBack(callback);
            kef_vtm_kernel_SetMode(VTM_ERRMODE_CALLBACK);
        }
        current_ = this;
    }
    template <class Kernels>
    [[gnu::noinline]] void run_here(const char* function, Kernels&& kernels) {
        // A handler may call functions itself.
        const char* const outer_function = std::exchange(function_, function);
        const std::size_t outer_base = std::exchange(base_, 0);
        kernels();
        function_ = outer_function;
        base_ = outer_base;
        check();
    }

    // No exception leaves it: it waits until the kernel is through. Results that are not changed
    // are the kernel's.
    static int callback(kef_vtm_error_record* record) noexcept {
        Errors& scope = *current_;
        if (scope.failure_) return 1;
        try {
            return scope.take(*record);
        } catch (...) {
            scope.failure_ = std::current_exception();
            return 1;
        }
    }
    int take(kef_vtm_error_record& r) {
        ElementReport report{
            r.code,
            base_ + std::size_t(r.index),
            function_ ? std::string(function_) : std::string(r.name, std::size_t(r.name_length)),
            {r.argument1, r.argument1_imag},
            {r.argument2, r.argument2_imag},
            {r.result1, r.result1_imag},
            {r.result2, r.result2_imag}};
        if (!handler_) {
            if (what_ == OnError::raise) throw ElementError(report);
            reports_.push_back(std::move(report));
            return 1;
        }
        const std::complex<double> before[2] = {report.result1, report.result2};
        handler_(report);
        const std::complex<double> after[2] = {report.result1, report.result2};
        if (std::memcmp(before, after, sizeof before) == 0) return 1;
        r.result1 = after[0].real();
        r.result1_imag = after[0].imag();
        r.result2 = after[1].real();
        r.result2_imag = after[1].imag();
        return 0;
    }

#if defined(__ELF__)
    [[gnu::visibility("default")]]  // one for all shared objects of a process
#endif
    static inline constinit thread_local Errors* current_ = nullptr;

    OnError what_ = OnError::raise;
    Handler handler_;
    std::vector<ElementReport> reports_;
    std::exception_ptr failure_;
    const char* function_ = nullptr;
    std::size_t base_ = 0;
    Errors* const outer_ = current_;
    const std::uint32_t old_mode_ = kef_vtm_kernel_GetMode();
    const kef_vtm_error_callback old_callback_ = kef_vtm_kernel_GetErrorCallBack();
};

namespace detail {

/// How the C interface calls an element type.
template <class T> struct CType { using type = T; };
template <> struct CType<std::complex<float>> { using type = kef_complex8; };
template <> struct CType<std::complex<double>> { using type = kef_complex16; };
template <class T> using c_type = typename CType<T>::type;

template <class T> struct CxxType { using type = T; };
template <> struct CxxType<kef_complex8> { using type = std::complex<float>; };
template <> struct CxxType<kef_complex16> { using type = std::complex<double>; };

template <class T>
concept element = std::same_as<T, float> || std::same_as<T, double> ||
    std::same_as<T, std::complex<float>> || std::same_as<T, std::complex<double>>;

/// What is read.
template <class R>
concept vector = std::ranges::contiguous_range<R> && std::ranges::sized_range<R>;
template <class R, class T>
concept vector_of = vector<R> && std::same_as<std::ranges::range_value_t<R>, T>;
/// What is written: neither const nor gone after the call.
template <class R>
concept output = vector<R> && std::ranges::borrowed_range<R> &&
    !std::is_const_v<std::remove_reference_t<std::ranges::range_reference_t<R>>>;
template <class R, class T>
concept output_of = output<R> && vector_of<R, T>;

template <class R> using element_of = std::ranges::range_value_t<R>;

template <class R> auto* begin_of(R&& range) {
    using C = c_type<element_of<R>>;
    auto* const p = std::ranges::data(range);
    if constexpr (std::is_const_v<std::remove_pointer_t<decltype(p)>>)
        return reinterpret_cast<const C*>(p);
    else return reinterpret_cast<C*>(p);
}
template <class R> std::size_t size_of(R&& range) { return std::size_t(std::ranges::size(range)); }

/// An argument or result of a call: where it starts, how many elements of which size, its name.
struct Place {
    const void* start;
    std::size_t size;
    std::size_t width;
    const char* name;

    std::size_t bytes() const { return size * width; }
    bool null() const { return (start == nullptr) & (size != 0); }
    /// Has a byte in common with another place.
    bool meets(const Place& other) const {
        const auto x = reinterpret_cast<std::uintptr_t>(start);
        const auto y = reinterpret_cast<std::uintptr_t>(other.start);
        return (x - y < other.bytes() && bytes() != 0) || (y - x < bytes() && other.bytes() != 0);
    }
    /// Overlaps another one of the same size otherwise than by being it.
    bool overlaps(const Place& other) const {
        const auto x = reinterpret_cast<std::uintptr_t>(start);
        const auto y = reinterpret_cast<std::uintptr_t>(other.start);
        if (width != other.width) return meets(other);
        return x - y + bytes() - 1 < 2 * bytes() - 1 && x != y;
    }
};
template <class R> Place place(R&& range, const char* name) {
    return {std::ranges::data(range), size_of(range), sizeof(element_of<R>), name};
}

inline Checker vm_size(const char* function) {
    return {Family::vector_math, VTM_STATUS_BADSIZE, function};
}
inline Checker vm_memory(const char* function) {
    return {Family::vector_math, VTM_STATUS_BADMEM, function};
}

inline void require_memory(const char* function, const Place& place) {
    if (place.null()) [[unlikely]]
        vm_memory(function).refuse(place.name, "is null");
}
[[noreturn, gnu::cold, gnu::noinline]] inline void refuse_size(const char* function,
                                                               std::size_t size, const char* name,
                                                               std::size_t other_size,
                                                               const char* other) {
    vm_size(function).refuse(name, "has " + std::to_string(size) + " elements, " + other + " " +
                                       std::to_string(other_size));
}
inline void require_size(const char* function, std::size_t size, const char* name,
                         std::size_t other_size, const char* other) {
    if (size != other_size) [[unlikely]]
        refuse_size(function, size, name, other_size, other);
}
inline void require_disjoint(const char* function, const Place& result, const Place& argument) {
    if (result.meets(argument)) [[unlikely]]
        vm_memory(function).refuse(result.name, std::string("overlaps ") + argument.name);
}

/// What is wrong with a call of element-wise functions, the last place being the result.
[[noreturn, gnu::cold, gnu::noinline]] inline void refuse_places(
    const char* function, std::initializer_list<Place> places) {
    const Place& first = *places.begin();
    const Place& result = *(places.end() - 1);
    for (const Place& place : places)
        require_size(function, place.size, place.name, first.size, first.name);
    for (const Place& place : places) require_memory(function, place);
    for (const Place& place : places)
        vm_memory(function).require(!result.overlaps(place), result.name,
                                    (std::string("overlaps ") + place.name).c_str());
    std::terminate();  // nothing is
}

/// y = F(x)
inline void check(const char* function, const Place& x, const Place& y) {
    if (x.size != y.size) [[unlikely]]
        refuse_places(function, {x, y});
    if (x.size != 0 && ((x.start == nullptr) | (y.start == nullptr) || y.overlaps(x))) [[unlikely]]
        refuse_places(function, {x, y});
}
/// y = F(a, b)
inline void check(const char* function, const Place& a, const Place& b, const Place& y) {
    const std::size_t n = a.size;
    if ((b.size != n) | (y.size != n)) [[unlikely]]
        refuse_places(function, {a, b, y});
    if (n == 0) return;
    const Place result{y.start, n, a.width, y.name};
    if ((a.start == nullptr) | (b.start == nullptr) | (y.start == nullptr) ||
        result.overlaps({a.start, n, a.width, a.name}) ||
        result.overlaps({b.start, n, a.width, b.name})) [[unlikely]]
        refuse_places(function, {a, b, y});
}

/// The slot of an accuracy.
inline int slot(const char* function, Accuracy accuracy) {
    if (accuracy != low && accuracy != high && accuracy != enhanced) [[unlikely]]
        vm_size(function).refuse("accuracy", "is not low, high or enhanced");
    return int(accuracy);
}

/// The most elements of one C call.
inline constexpr std::size_t most_elements = std::size_t(1) << 30;

template <class T> T* advanced(T* p, std::size_t by) { return p + by; }
template <class T> T advanced(T scalar, std::size_t) { return scalar; }

/// Calls a kernel, in pieces where one call does not take n elements. Pointers go on from piece to
/// piece, numbers stay.
template <class Kernel, class... Arguments>
void call_in_pieces(const char* function, Kernel kernel, std::size_t piece, std::size_t n,
                    Arguments... arguments) {
    Errors::run(function, [&] {
        for (std::size_t i = 0; i < n; i += piece) {
            Errors::at(i);
            kernel(std::int32_t(n - i < piece ? n - i : piece), advanced(arguments, i)...);
        }
    });
}
/// Calls the kernel of F that stands in a table for an accuracy. Functions that report no element
/// need no scope.
template <class F, class Kernel, class... Arguments>
void call(Kernel* table, Accuracy accuracy, std::size_t n, Arguments... arguments) {
    const Kernel kernel = table[slot(F::name, accuracy)];
    if (n > most_elements) [[unlikely]]
        call_in_pieces(F::name, kernel, most_elements, n, arguments...);
    else if constexpr (F::reports)
        Errors::run(F::name, [&] { kernel(std::int32_t(n), arguments...); });
    else kernel(std::int32_t(n), arguments...);
}

/// Argument and result type of a function of one argument, told by its table.
template <class Kernel> struct Signature;
template <class A, class R> struct Signature<void (*)(std::int32_t, const A*, R*)> {
    using result = typename CxxType<R>::type;
};
template <class F, class T>
using result_of = typename Signature<
    std::remove_reference_t<decltype(*F::table(static_cast<const T*>(nullptr)))>>::result;

/// F has kernels for elements of type T.
template <class F, class T>
concept defined_for = requires(const T* p) {
    F::table(p);
};

/// y[i] = F(x[i])
template <class F> struct Map1 {
    template <vector X, output Y>
    requires defined_for<F, element_of<X>> &&
        std::same_as<result_of<F, element_of<X>>, element_of<Y>>
    void operator()(X&& x, Y&& y, Accuracy accuracy = high) const {
        check(F::name, place(x, "x"), place(y, "y"));
        call<F>(F::table(std::ranges::data(x)), accuracy, size_of(x), begin_of(x), begin_of(y));
    }
    /// In place.
    template <output X>
    requires defined_for<F, element_of<X>> &&
        std::same_as<result_of<F, element_of<X>>, element_of<X>>
    void operator()(X&& x, Accuracy accuracy = high) const { (*this)(x, x, accuracy); }
};

/// y[i] = F(a[i], b[i])
template <class F> struct Map2 {
    template <vector A, vector_of<element_of<A>> B, output_of<element_of<A>> Y>
    requires defined_for<F, element_of<A>>
    void operator()(A&& a, B&& b, Y&& y, Accuracy accuracy = high) const {
        check(F::name, place(a, "a"), place(b, "b"), place(y, "y"));
        call<F>(F::table(std::ranges::data(a)), accuracy, size_of(a), begin_of(a), begin_of(b),
                begin_of(y));
    }
};

/// Map2, and y[i] = F(a[i], b) with one number b.
template <class F> struct MapPower : Map2<F> {
    using Map2<F>::operator();
    template <vector A, output_of<element_of<A>> Y>
    requires defined_for<F, element_of<A>>
    void operator()(A&& a, std::type_identity_t<element_of<A>> b, Y&& y,
                    Accuracy accuracy = high) const {
        check(F::name, place(a, "a"), place(y, "y"));
        call<F>(F::scalar_table(std::ranges::data(a)), accuracy, size_of(a), begin_of(a),
                std::bit_cast<c_type<element_of<A>>>(b), begin_of(y));
    }
};

/// (y[i], z[i]) = F(x[i])
template <class F> struct Map1x2 {
    template <vector X, output_of<element_of<X>> Y, output_of<element_of<X>> Z>
    requires defined_for<F, element_of<X>>
    void operator()(X&& x, Y&& y, Z&& z, Accuracy accuracy = high) const {
        check(F::name, place(x, "x"), place(y, "y"));
        check(F::name, place(x, "x"), place(z, "z"));
        require_disjoint(F::name, place(z, "z"), place(y, "y"));
        call<F>(F::table(std::ranges::data(x)), accuracy, size_of(x), begin_of(x), begin_of(y),
                begin_of(z));
    }
};

/// y[i] = (a[i] scale_a + shift_a) / (b[i] scale_b + shift_b)
template <class F> struct MapLinearFraction {
    template <vector A, vector_of<element_of<A>> B, output_of<element_of<A>> Y>
    requires defined_for<F, element_of<A>>
    void operator()(A&& a, B&& b, std::type_identity_t<element_of<A>> scale_a,
                    std::type_identity_t<element_of<A>> shift_a,
                    std::type_identity_t<element_of<A>> scale_b,
                    std::type_identity_t<element_of<A>> shift_b, Y&& y,
                    Accuracy accuracy = high) const {
        check(F::name, place(a, "a"), place(b, "b"), place(y, "y"));
        call<F>(F::table(std::ranges::data(a)), accuracy, size_of(a), begin_of(a), begin_of(b),
                scale_a, shift_a, scale_b, shift_b, begin_of(y));
    }
};

/// Indices and masks of the gather and scatter functions.
template <class R>
concept integers = vector_of<R, std::int32_t> || vector_of<R, std::int64_t>;

/// The widths of counts and indices that a slot of them is told.
inline constexpr std::int32_t narrow = 1, wide = 0;

/// Refuses what is wrong with x, y and the places beside them; results do not overlap what is read.
template <class X, class Y, class P>
[[gnu::cold, gnu::noinline]] void refuse_move(const char* function, const X& x, const Y& y,
                                              const P& places, const char* name) {
    const Place result = place(y, "y"), read[] = {place(x, "x"), place(places, name)};
    for (const Place& place : {read[0], result, read[1]}) require_memory(function, place);
    for (const Place& place : read) require_disjoint(function, result, place);
}
/// The same where one test, of places that are not empty, does not tell that nothing is wrong.
template <class X, class Y, class P>
void check_move(const char* function, const X& x, const Y& y, const P& places, const char* name) {
    const Place result = place(y, "y");
    const auto apart = [&](const Place& read) {
        return (read.start != nullptr) & (read.size != 0) &
               (reinterpret_cast<std::uintptr_t>(result.start) -
                    reinterpret_cast<std::uintptr_t>(read.start) + result.bytes() - 1 >=
                result.bytes() + read.bytes() - 1);
    };
    if (!((result.start != nullptr) & (result.size != 0) & apart(place(x, "x")) &
          apart(place(places, name)))) [[unlikely]]
        refuse_move(function, x, y, places, name);
}
/// n places of `stride` elements fit into a range.
inline void require_stride(const char* function, std::size_t stride, std::size_t n,
                           std::size_t size, const char* name) {
    vm_size(function).require(stride > 0, "stride", "is zero");
    if (n != 0 && (size == 0 || (size - 1) / stride < n - 1)) [[unlikely]]
        vm_size(function).refuse(name, "has " + std::to_string(size) + " elements, too few for " +
                                           std::to_string(n) + " with stride " +
                                           std::to_string(stride));
}
/// Passes over all indices and marks, which stand beside a load and a store an element: loops that
/// the compiler vectorises, their sums unsigned; on ELF by vectors of 32 bytes where the processor
/// has AVX2.
#if defined(__GNUC__) && !defined(__clang__)
#define KEF_VECTORISED gnu::optimize("O3", "unroll-loops")
#else
#define KEF_VECTORISED gnu::noinline
#endif

/// No index is negative or above the last. SSE2 has no largest of integers; there the sign tells:
/// of an index that is negative, and of last - index for one beyond the last.
template <class Index, class Unsigned = std::make_unsigned_t<Index>>
[[KEF_VECTORISED]] bool indices_within(const Index* at, std::size_t n, Unsigned last) {
    Unsigned signs = 0;
    for (std::size_t i = 0; i < n; ++i) signs |= Unsigned(at[i]) | (last - Unsigned(at[i]));
    return Index(signs) >= 0;
}
/// How many marks are not zero; at most 2^30 of 32 bits.
template <class Mark> [[KEF_VECTORISED]] std::size_t marks_of(const Mark* mask, std::size_t n) {
    std::make_unsigned_t<Mark> count = 0;
    for (std::size_t i = 0; i < n; ++i) count += mask[i] != 0;
    return std::size_t(count);
}
#undef KEF_VECTORISED

#if defined(__ELF__)
/// Whether n elements are passed over by vectors of 32 bytes.
inline bool in_lanes(std::size_t n) { return n >= 16 && __builtin_cpu_supports("avx2"); }
template <class T> struct Lanes {
    typedef T type __attribute__((vector_size(32)));
    typedef T in_memory __attribute__((vector_size(32), may_alias, aligned(4)));
    static constexpr std::size_t count = sizeof(type) / sizeof(T);
};
/// n >= 8 elements as aligned vectors, and what stands before and behind them: the passes wait for
/// loads, and one that crosses lines of the cache counts twice.
template <class T> struct InLanes {
    using V = typename Lanes<T>::in_memory;
    std::size_t before, behind;           // elements, fewer than a vector
    const V *begin, *end, *first, *last;  // the outer vectors take in what stands outside

    InLanes(const T* p, std::size_t n)
        : before((0 - reinterpret_cast<std::uintptr_t>(p)) % sizeof(V) / sizeof(T)),
          behind((n - before) % Lanes<T>::count),
          begin(reinterpret_cast<const V*>(p + before)),
          end(reinterpret_cast<const V*>(p + n - behind)),
          first(reinterpret_cast<const V*>(p)),
          last(reinterpret_cast<const V*>(p + n - Lanes<T>::count)) {}
};
template <class Index, class Unsigned = std::make_unsigned_t<Index>>
[[gnu::target("avx2"), gnu::noinline]] bool indices_within_avx2(const Index* at, std::size_t n,
                                                                Unsigned last) {
    using V = typename Lanes<Unsigned>::type;
    const InLanes<Unsigned> all(reinterpret_cast<const Unsigned*>(at), n);
    const auto* v = all.begin;
    const auto* const end = all.end;
    typename Lanes<Index>::type beyond;
    if constexpr (sizeof(Index) == 4) {
        V a = *all.first, b = *all.last, c{}, d{};  // the largest
        for (; end - v >= 8; v += 8) {
            a = v[0] > a ? v[0] : a, b = v[1] > b ? v[1] : b;
            c = v[2] > c ? v[2] : c, d = v[3] > d ? v[3] : d;
            a = v[4] > a ? v[4] : a, b = v[5] > b ? v[5] : b;
            c = v[6] > c ? v[6] : c, d = v[7] > d ? v[7] : d;
        }
        for (; v < end; ++v) a = *v > a ? *v : a;
        beyond = (a > last) | (b > last) | (c > last) | (d > last);
    } else {  // AVX2 has no largest of 64 bits
        V signs = *all.first | (last - *all.first) | *all.last | (last - *all.last);
        for (; v < end; ++v) signs |= *v | (last - *v);
        beyond = reinterpret_cast<typename Lanes<Index>::type>(signs) < 0;
    }
    const auto any = reinterpret_cast<typename Lanes<std::uint64_t>::type>(beyond);
    return (any[0] | any[1] | any[2] | any[3]) == 0;
}
template <class Mark>
[[gnu::target("avx2"), gnu::noinline]] std::size_t marks_avx2(const Mark* mask, std::size_t n) {
    using V = typename Lanes<Mark>::type;
    const InLanes<Mark> all(mask, n);
    const auto* v = all.begin;
    const auto* const end = all.end;
    V lane;
    for (std::size_t k = 0; k < Lanes<Mark>::count; ++k) lane[k] = Mark(k);
    // How many are zero, negative.
    V a = (*all.first == 0) & (lane < Mark(all.before)), c{},
      b = (*all.last == 0) & (lane >= Mark(Lanes<Mark>::count - all.behind)), d{};
    for (; end - v >= 8; v += 8) {
        a += v[0] == 0, b += v[1] == 0, c += v[2] == 0, d += v[3] == 0;
        a += v[4] == 0, b += v[5] == 0, c += v[6] == 0, d += v[7] == 0;
    }
    for (; v < end; ++v) a += *v == 0;
    a = (a + b) + (c + d);
    for (std::size_t k = 0; k < Lanes<Mark>::count; ++k) n += std::size_t(a[k]);
    return n;
}
#else
inline constexpr bool in_lanes(std::size_t) { return false; }
template <class T, class U> bool indices_within_avx2(const T*, std::size_t, U) { return false; }
template <class T> std::size_t marks_avx2(const T*, std::size_t) { return 0; }
#endif

template <class I>
void require_indices(const char* function, I&& index, std::size_t size, const char* name) {
    using Index = element_of<I>;
    const Index* const at = std::ranges::data(index);
    const std::size_t n = size_of(index);
    constexpr std::size_t most = std::size_t(std::numeric_limits<Index>::max());
    const Index last = size <= most ? Index(size) - 1 : std::numeric_limits<Index>::max();
    const auto bound = std::make_unsigned_t<Index>(last);
    if (n == 0 || (size != 0 && (in_lanes(n) ? indices_within_avx2(at, n, bound)
                                             : indices_within(at, n, bound)))) [[likely]]
        return;
    for (std::size_t i = 0; i < n; ++i)
        if (at[i] < 0 || at[i] > last)
            vm_size(function).refuse("index", "has " + std::to_string(at[i]) + " at " +
                                                  std::to_string(i) + ", " + name + " has " +
                                                  std::to_string(size) + " elements");
}
/// How many elements a mask names, which is the size of a range or more is refused.
template <class M>
std::size_t count_marks(const char* function, M&& mask, std::size_t size, const char* name) {
    const auto* const marks = std::ranges::data(mask);
    const std::size_t n = size_of(mask);
    const std::size_t count = in_lanes(n) ? marks_avx2(marks, n) : marks_of(marks, n);
    if (count > size) [[unlikely]]
        vm_size(function).refuse(
            name, "has " + std::to_string(size) + " elements, mask names " + std::to_string(count));
    return count;
}

/// A slot of the gather and scatter functions: counts have 64 bits, indices those of their range.
template <class Kernel, class... Arguments>
void move(Kernel kernel, std::size_t n, Arguments... arguments) {
    if (n != 0) kernel(std::int64_t(n), arguments...);
}
template <class I, class Kernel, class... Arguments>
void move_by(const char* function, Kernel kernel, std::size_t n, Arguments... arguments) {
    constexpr bool is_wide = sizeof(element_of<I>) == 8;
    vm_size(function).require(is_wide || n <= most_elements, "x",
                              "is so long that indices and marks need 64 bits");
    move(kernel, n, arguments..., is_wide ? wide : narrow);
}

/// y[i] = x[i stride]
template <class F> struct PackStride {
    template <vector X, output_of<element_of<X>> Y>
    requires defined_for<F, element_of<X>>
    void operator()(X&& x, std::size_t stride, Y&& y) const {
        require_stride(F::name, stride, size_of(y), size_of(x), "x");
        check_move(F::name, x, y, x, "x");
        move(F::table(std::ranges::data(x))[VTM_SLOT_HA], size_of(y), begin_of(x),
             std::int64_t(stride), begin_of(y), wide);
    }
};

/// y[i] = x[index[i]]
template <class F> struct PackIndex {
    template <vector X, integers I, output_of<element_of<X>> Y>
    requires defined_for<F, element_of<X>>
    void operator()(X&& x, I&& index, Y&& y) const {
        require_size(F::name, size_of(y), "y", size_of(index), "index");
        check_move(F::name, x, y, index, "index");
        require_indices(F::name, index, size_of(x), "x");
        move_by<I>(F::name, F::table(std::ranges::data(x))[VTM_SLOT_HA], size_of(y), begin_of(x),
                   std::ranges::data(index), begin_of(y));
    }
};

/// y gets the x[i] whose mask[i] is not zero, in order; gives how many they are.
template <class F> struct PackMask {
    template <vector X, integers M, output_of<element_of<X>> Y>
    requires defined_for<F, element_of<X>> std::size_t operator()(X&& x, M&& mask, Y&& y) const {
        require_size(F::name, size_of(mask), "mask", size_of(x), "x");
        check_move(F::name, x, y, mask, "mask");
        const std::size_t count = count_marks(F::name, mask, size_of(y), "y");
        move_by<M>(F::name, F::table(std::ranges::data(x))[VTM_SLOT_HA], size_of(x), begin_of(x),
                   std::ranges::data(mask), begin_of(y));
        return count;
    }
};

/// y[i stride] = x[i]
template <class F> struct UnpackStride {
    template <vector X, output_of<element_of<X>> Y>
    requires defined_for<F, element_of<X>>
    void operator()(X&& x, Y&& y, std::size_t stride) const {
        require_stride(F::name, stride, size_of(x), size_of(y), "y");
        check_move(F::name, x, y, x, "x");
        move(F::table(std::ranges::data(x))[VTM_SLOT_HA], size_of(x), begin_of(x), begin_of(y),
             std::int64_t(stride), wide);
    }
};

/// y[index[i]] = x[i]
template <class F> struct UnpackIndex {
    template <vector X, output_of<element_of<X>> Y, integers I>
    requires defined_for<F, element_of<X>>
    void operator()(X&& x, Y&& y, I&& index) const {
        require_size(F::name, size_of(index), "index", size_of(x), "x");
        check_move(F::name, x, y, index, "index");
        require_indices(F::name, index, size_of(y), "y");
        move_by<I>(F::name, F::table(std::ranges::data(x))[VTM_SLOT_HA], size_of(x), begin_of(x),
                   begin_of(y), std::ranges::data(index));
    }
};

/// The y[i] whose mask[i] is not zero get the elements of x in order; gives how many they are.
template <class F> struct UnpackMask {
    template <vector X, output_of<element_of<X>> Y, integers M>
    requires defined_for<F, element_of<X>> std::size_t operator()(X&& x, Y&& y, M&& mask) const {
        require_size(F::name, size_of(mask), "mask", size_of(y), "y");
        check_move(F::name, x, y, mask, "mask");
        const std::size_t count = count_marks(F::name, mask, size_of(x), "x");
        move_by<M>(F::name, F::table(std::ranges::data(x))[VTM_SLOT_HA], size_of(y), begin_of(x),
                   begin_of(y), std::ranges::data(mask));
        return count;
    }
};

}  // namespace detail

}  // namespace kef

#include "kef/vm_functions.hpp"

#endif
