#include "kef_version.h"

#include "kef_vm.h"
#include "vm/simd/simd.h"

namespace {

// What this library was built for, which is no probe of the processor.
constexpr const char* members[] = {"generic", "x86-64-v3", "x86-64-v4"};
constexpr std::int32_t member = kef::vm::vector_bytes / 32;

}  // namespace

int32_t kef_version(void) { return KEF_VERSION; }
const char* kef_member(void) { return members[member]; }
std::int32_t dll_cpu_version(void) { return member; }
