// One spin lock guards the table. It is never held across a call to a generator or to the
// allocator.
#include "rng/shared_table.h"

#include <x86intrin.h>

#include <algorithm>

#include "service/alloc.h"

namespace kef::rng {

namespace {

std::uint32_t lock_word = 0;

class Lock {
public:
    Lock() {
        std::uint32_t free = 0;
        while (!__atomic_compare_exchange_n(&lock_word, &free, 1, false, __ATOMIC_ACQUIRE,
                                            __ATOMIC_RELAXED))
            free = 0;
    }
    ~Lock() { __atomic_store_n(&lock_word, 0, __ATOMIC_RELEASE); }
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;
};

kef_shared_entry table[VTS_MAX_SHARED_ENTRIES];
std::int32_t entries = 0;

// Under the lock.
kef_shared_entry* find(const std::uint32_t* id) {
    kef_shared_entry* const end = table + entries;
    kef_shared_entry* const entry = std::find_if(
        table, end, [id](const kef_shared_entry& e) { return std::equal(e.id, e.id + 4, id); });
    return entry == end ? nullptr : entry;
}

// Under the lock. The block to free when this was the last reference, else null.
void* drop_reference(kef_shared_entry& entry) {
    if (--entry.references != 0) return nullptr;
    void* const data = entry.data;
    entry = table[--entries];
    return data;
}

}  // namespace

bool refer(kef_chunk& chunk, bool check_size) {
    if (is_null_id(chunk.shared_id)) return false;
    const Lock lock;
    kef_shared_entry* const entry = find(chunk.shared_id);
    if (entry == nullptr) return false;
    if (check_size && chunk.size > 0) {
        const std::size_t held = entry->data == nullptr ? 0 : block_size(entry->data);
        if (static_cast<std::size_t>(chunk.size) > held) return false;
    }
    ++entry->references;
    chunk.data = entry->data;
    return true;
}

void release(const kef_chunk& chunk) {
    void* data = chunk.data;
    if (!is_null_id(chunk.shared_id)) {
        const Lock lock;
        kef_shared_entry* const entry = find(chunk.shared_id);
        // A chunk whose entry was absent when it was attached has data of its own.
        if (entry != nullptr && entry->data == data) data = drop_reference(*entry);
    }
    free_aligned(data);
}

}  // namespace kef::rng

using namespace kef::rng;

std::int32_t __vtsFindGlobRODataTableEntry(const std::uint32_t* id, kef_shared_entry** entry) {
    if (is_null_id(id)) return VTS_STATUS_RO_ENTRY_NOT_FOUND;
    const Lock lock;
    kef_shared_entry* const found = find(id);
    if (found == nullptr) return VTS_STATUS_RO_ENTRY_NOT_FOUND;
    *entry = found;
    return VTS_STATUS_OK;
}

std::int32_t __vtsCreateGlobRODataTableEntry(kef_shared_entry** entry, const std::uint32_t* id,
                                             void* data) {
    const Lock lock;
    if (entries == VTS_MAX_SHARED_ENTRIES) return VTS_STATUS_RO_TABLE_FULL;
    kef_shared_entry& created = table[entries++];
    created = {{id[0], id[1], id[2], id[3]}, 1, data};
    *entry = &created;
    return VTS_STATUS_OK;
}

std::int32_t __vtsRegisterGlobRODataReference(const std::uint32_t* id, kef_chunk* chunk) {
    if (is_null_id(id)) return VTS_STATUS_RO_ENTRY_NOT_FOUND;
    const Lock lock;
    kef_shared_entry* const entry = find(id);
    if (entry == nullptr) return VTS_STATUS_RO_ENTRY_NOT_FOUND;
    ++entry->references;
    chunk->data = entry->data;
    return VTS_STATUS_OK;
}

std::int32_t __vtsUnregisterGlobRODataReference(const std::uint32_t* id) {
    if (is_null_id(id)) return VTS_STATUS_RO_ENTRY_NOT_FOUND;
    void* data = nullptr;
    {
        const Lock lock;
        kef_shared_entry* const entry = find(id);
        if (entry == nullptr) return VTS_STATUS_RO_ENTRY_NOT_FOUND;
        data = drop_reference(*entry);
    }
    kef::free_aligned(data);
    return VTS_STATUS_OK;
}

std::int32_t __vtsGenerateNewGlobalRODataTableEntryId(std::uint32_t* id, std::int32_t tag) {
    id[2] = static_cast<std::uint32_t>(tag);
    id[3] = tag < 0 ? ~std::uint32_t{0} : 0;
    kef_shared_entry* entry = nullptr;
    do {
        const std::uint64_t ticks = __rdtsc();
        id[0] = static_cast<std::uint32_t>(ticks);
        id[1] = static_cast<std::uint32_t>(ticks >> 32);
    } while (__vtsFindGlobRODataTableEntry(id, &entry) == VTS_STATUS_OK);
    return VTS_STATUS_OK;
}
