/// Exceptions of the C++ interface, all derived from kef::Error.
#ifndef KEF_ERROR_HPP
#define KEF_ERROR_HPP

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <stdexcept>
#include <string>
#include <utility>

#include "kef_fit.h"
#include "kef_rng.h"
#include "kef_stats.h"
#include "kef_vm.h"

namespace kef {

/// Whose status codes an error carries: VTM_STATUS_, VTS_STATUS_, VTS_SS_STATUS_, DF_STATUS_.
enum class Family { vector_math, streams, statistics, splines };

/// The meaning of a status code in a few English words.
inline const char* status_text(Family family, std::int32_t code) noexcept {
    switch (family) {
        case Family::vector_math: return kef_vtm_status_text(code);
        case Family::streams: return kef_vts_status_text(code);
        case Family::statistics: return kef_ss_status_text(code);
        default: return kef_df_status_text(code);
    }
}

/// Base of all exceptions: what() says in words what was wrong, beginning with the function.
class Error : public std::runtime_error {
public:
    Error(Family family, std::int32_t code, const std::string& words)
        : std::runtime_error(words), family_(family), code_(code) {}

    Family family() const noexcept { return family_; }
    /// The status code that the C interface has for it.
    std::int32_t code() const noexcept { return code_; }

private:
    Family family_;
    std::int32_t code_;
};

/// An argument that was refused before anything was computed or written.
class ArgumentError : public Error {
public:
    ArgumentError(Family family, std::int32_t code, const std::string& function,
                  const std::string& argument, const std::string& words)
        : Error(family, code, function + ": " + argument + " " + words), argument_(argument) {}

    /// Its name, as in the synopsis of the function.
    const std::string& argument() const noexcept { return argument_; }

private:
    std::string argument_;
};

/// A negative status of the C function behind.
class StatusError : public Error {
public:
    StatusError(Family family, std::int32_t code, const std::string& function)
        : StatusError(family, code, function, "") {}
    /// With what it was about, the name of a file.
    StatusError(Family family, std::int32_t code, const std::string& function,
                const std::string& about)
        : Error(family, code,
                function + ": " + about + (about.empty() ? "" : ": ") + status_text(family, code) +
                    " (status " + std::to_string(code) + ")") {}
};

namespace detail {

/// Refuses arguments of one function.
struct Checker {
    Family family;
    std::int32_t code;
    const char* function;

    [[noreturn, gnu::cold, gnu::noinline]] void refuse(const char* argument,
                                                       const std::string& words) const {
        throw ArgumentError(family, code, function, argument, words);
    }
    void require(bool holds, const char* argument, const char* words) const {
        if (!holds) [[unlikely]]
            refuse(argument, words);
    }
    void require_size(std::size_t size, std::size_t wanted, const char* argument) const {
        if (size != wanted) [[unlikely]]
            refuse(argument,
                   "has " + std::to_string(size) + " elements, not " + std::to_string(wanted));
    }
    /// A range with elements has an address.
    template <class Range> void require_data(const Range& range, const char* argument) const {
        require(range.size() == 0 || range.data() != nullptr, argument, "is null");
    }
    /// The status of a C function.
    void status(std::int32_t status) const {
        if (status < 0) [[unlikely]]
            failed(status);
    }
    [[noreturn, gnu::cold, gnu::noinline]] void failed(std::int32_t status) const {
        throw StatusError(family, status, function);
    }
};

/// The one of two functions, for float and for double, that is for T.
template <class T, class Single, class Double>
constexpr auto by_type(Single single_precision, Double double_precision) {
    if constexpr (sizeof(T) == sizeof(float)) return single_precision;
    else return double_precision;
}

}  // namespace detail

}  // namespace kef

#endif
