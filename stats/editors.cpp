// The editors, expanded from task.def and editors.def.
#include "stats/each.h"
#include "stats/task.h"

namespace kef::stats {

namespace {

enum class Kind { integer, input, output };

std::int32_t edit(Task* task, std::int64_t id, const void* address, bool integers) {
    if (task == nullptr) return VTS_SS_STATUS_NULL_TASK;
    switch (id) {
#define KEF_PARAMETER(kind, number, name, status)              \
    case number:                                               \
        if ((Kind::kind == Kind::integer) != integers) break;  \
        if (address == nullptr) return VTS_SS_STATUS_##status; \
        task->name = const_cast<void*>(address);               \
        return VTS_SS_STATUS_OK;
#include "stats/task.def"
    }
    return VTS_SS_STATUS_BAD_ID;
}

// A null address leaves the field as it was.
void set(const void*& field, const void* address) { field = address != nullptr ? address : field; }
void set(void*& field, void* address) { field = address != nullptr ? address : field; }

}  // namespace

}  // namespace kef::stats

using namespace kef::stats;

#define KEF_DECLARE(argument) , KEF_DECLARE_##argument
#define KEF_DECLARE_integer(name) const void* name
#define KEF_DECLARE_input(name) const Data* name
#define KEF_DECLARE_output(name) Data* name

#define KEF_SET(argument) KEF_SET_##argument;
#define KEF_SET_integer(name) set(task->name, name)
#define KEF_SET_input(name) set(task->name, static_cast<const void*>(name))
#define KEF_SET_output(name) set(task->name, static_cast<void*>(name))

#define KEF_GROUPED(type, group, ...)                                                        \
    std::int32_t __vts##type##SSEdit##group(Task* task KEF_EACH(KEF_DECLARE, __VA_ARGS__)) { \
        if (task == nullptr) return VTS_SS_STATUS_NULL_TASK;                                 \
        KEF_EACH(KEF_SET, __VA_ARGS__)                                                       \
        return VTS_SS_STATUS_OK;                                                             \
    }

extern "C" {

std::int32_t __vtsiSSEditTask(Task* task, std::int64_t id, const void* address) {
    return edit(task, id, address, true);
}
std::int32_t __vtsdSSEditTask(Task* task, std::int64_t id, const double* address) {
    return edit(task, id, address, false);
}
std::int32_t __vtssSSEditTask(Task* task, std::int64_t id, const float* address) {
    return edit(task, id, address, false);
}

#define Data double
#define KEF_EDITOR(group, ...) KEF_GROUPED(d, group, __VA_ARGS__)
#include "stats/editors.def"
#undef Data
#define Data float
#define KEF_EDITOR(group, ...) KEF_GROUPED(s, group, __VA_ARGS__)
#include "stats/editors.def"
#undef Data

}  // extern "C"
