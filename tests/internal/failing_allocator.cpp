// The other side of the linker's --wrap.
#include "failing_allocator.h"

#include <atomic>
#include <cerrno>
#include <cstddef>
#include <new>

extern "C" {
void* __real_malloc(std::size_t size);
void* __real_calloc(std::size_t count, std::size_t size);
void* __real_realloc(void* block, std::size_t size);
void __real_free(void* block);
}

namespace kef::test {

namespace {

std::atomic<long> live{0};
std::atomic<long> until_failure{0};  // the allocation that brings it to 0 fails
std::atomic<bool> has_failed{false};

bool fails_now() {
    if (until_failure.load() == 0 || until_failure.fetch_sub(1) != 1) return false;
    has_failed = true;
    errno = ENOMEM;
    return true;
}

void* counted(void* block) {
    if (block != nullptr) ++live;
    return block;
}

}  // namespace

long live_blocks() { return live; }

void fail_allocation(long n) {
    has_failed = false;
    until_failure = n;
}

bool allocation_failed() {
    until_failure = 0;
    return has_failed;
}

}  // namespace kef::test

extern "C" {

void* __wrap_malloc(std::size_t size) {
    using namespace kef::test;
    return fails_now() ? nullptr : counted(__real_malloc(size));
}

void* __wrap_calloc(std::size_t count, std::size_t size) {
    using namespace kef::test;
    return fails_now() ? nullptr : counted(__real_calloc(count, size));
}

void* __wrap_realloc(void* block, std::size_t size) {
    using namespace kef::test;
    if (fails_now()) return nullptr;
    void* moved = __real_realloc(block, size);
    return block == nullptr ? counted(moved) : moved;
}

void __wrap_free(void* block) {
    if (block != nullptr) --kef::test::live;
    __real_free(block);
}

}  // extern "C"

#if defined(_WIN32)
// The C++ library is linked in there, and would be led through it too.
void* operator new(std::size_t size) {
    if (void* block = __real_malloc(size)) return block;
    throw std::bad_alloc();
}
void operator delete(void* block) noexcept { __real_free(block); }
void operator delete(void* block, std::size_t) noexcept { __real_free(block); }
#endif
