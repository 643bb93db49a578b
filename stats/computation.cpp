// The entries of computation.def: its checks, and then the function.
#include "stats/computation.h"

#include "stats/each.h"

using namespace kef::stats;

#define KEF_CHECK(check) KEF_CHECK_##check
#define KEF_CHECK_needs(field) \
    if (task->field == nullptr) return null_status::field;
#define KEF_CHECK_any(field, other) \
    if (task->field == nullptr && task->other == nullptr) return null_status::field;
#define KEF_CHECK_any4(field, b, c, d)                                                            \
    if (task->field == nullptr && task->b == nullptr && task->c == nullptr && task->d == nullptr) \
        return null_status::field;
#define KEF_CHECK_with(field, other) \
    if (task->field != nullptr && task->other == nullptr) return null_status::other;
#define KEF_CHECK_observations \
    if (const std::int32_t status = check_observations(*task)) return status;
#define KEF_CHECK_dimension \
    if (positive_at(*task, task->dimension) == 0) return VTS_SS_STATUS_BAD_DIMENSION;
#define KEF_CHECK_layout(matrix)                                              \
    if (task->matrix != nullptr && !is_layout(*task, task->matrix##_storage)) \
        return VTS_SS_STATUS_NULL_STORAGE;
#define KEF_CHECK_either_layout(matrix, other) \
    if (task->matrix != nullptr) {             \
        KEF_CHECK_layout(matrix)               \
    } else {                                   \
        KEF_CHECK_layout(other)                \
    }
#define KEF_CHECK_storage(array)                                                           \
    if (task->array != nullptr && (task->array##_storage == nullptr ||                     \
                                   !is_storage(integer_at(*task, task->array##_storage)))) \
        return VTS_SS_STATUS_NULL_STORAGE;

#define KEF_COMPUTATION_ENTRY(type, T, Name, function, ...)                       \
    std::int32_t _vts##type##SS##Name(Task* task, std::uint64_t, std::int32_t) {  \
        if (task == nullptr) return VTS_SS_STATUS_NULL_TASK;                      \
        KEF_EACH(KEF_CHECK, __VA_ARGS__)                                          \
        if (const std::int32_t status = check_precision<T>(*task)) return status; \
        return function<T>(*task);                                                \
    }

extern "C" {

#define KEF_COMPUTATION(Name, function, ...)                      \
    KEF_COMPUTATION_ENTRY(d, double, Name, function, __VA_ARGS__) \
    KEF_COMPUTATION_ENTRY(s, float, Name, function, __VA_ARGS__)
#include "stats/computation.def"

}  // extern "C"
