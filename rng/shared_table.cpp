// One lock guards the table. It is never held across a call to a generator or to the allocator.
#include "rng/shared_table.h"

#include <x86intrin.h>

#include <algorithm>

#include "service/alloc.h"
#include "service/platform.h"

namespace kef::rng {

namespace {

using platform::Lock;

// `held` of the references are those of chunks in streams. Entries in use stand at the front. One
// whose references are used up while chunks still hold its data (one Unregister too many) is in
// use no more, and stands at the back until the last of them lets go.
struct Entry : kef_shared_entry {
    std::uint32_t held;
};
Entry table[VTS_MAX_SHARED_ENTRIES];
std::int32_t entries = 0, orphans = 0;

// --- under the lock ---

template <class Matches> Entry* find(Entry* first, std::int32_t count, Matches matches) {
    Entry* const found = std::find_if(first, first + count, matches);
    return found == first + count ? nullptr : found;
}

bool has_id(const Entry& e, const std::uint32_t* id) { return std::equal(e.id, e.id + 4, id); }

Entry* find(const std::uint32_t* id) {
    if (is_null_id(id)) return nullptr;
    return find(table, entries, [id](const Entry& e) { return has_id(e, id); });
}

Entry* first_orphan() { return table + VTS_MAX_SHARED_ENTRIES - orphans; }

// What the chunk refers to, else null: a chunk whose entry was absent or too small when it was
// attached has data of its own.
Entry* referred(const ListedChunk& chunk) {
    if (chunk.data == nullptr && !chunk.refers) return nullptr;
    const auto matches = [&chunk](const Entry& e) {
        return e.data == chunk.data && has_id(e, chunk.shared_id);
    };
    Entry* const entry = find(table, entries, matches);
    return entry != nullptr ? entry : find(first_orphan(), orphans, matches);
}

// Whether a chunk of this size may refer to the entry. Without data on either side there is nothing
// to lose and nothing to read.
bool has_room(const Entry& entry, const kef_chunk& chunk) {
    if (chunk.size <= 0) return true;
    if (entry.data == nullptr) return chunk.data == nullptr;
    return static_cast<std::size_t>(chunk.size) <= block_size(entry.data);
}

void take_reference(Entry& entry, kef_chunk& chunk) {
    ++entry.references;
    chunk.data = entry.data;
}

void hold_reference(Entry& entry, ListedChunk& chunk) {
    take_reference(entry, chunk);
    ++entry.held;
    chunk.refers = true;
}

// The block to free when nothing uses it any more, else null.
void* drop_reference(Entry& entry) {
    if (--entry.references != 0) return nullptr;
    const Entry last = entry;
    entry = table[--entries];
    if (last.held == 0) return last.data;
    ++orphans;
    *first_orphan() = last;
    return nullptr;
}
void* drop_held_reference(Entry& entry) {
    if (entry.held != 0) --entry.held;
    if (&entry < table + entries) return drop_reference(entry);
    if (entry.held != 0) return nullptr;
    void* const data = entry.data;
    entry = *first_orphan();
    --orphans;
    return data;
}

}  // namespace

bool refer(ListedChunk& chunk) {
    if (is_null_id(chunk.shared_id)) return false;
    const Lock lock;
    Entry* const entry = find(chunk.shared_id);
    if (entry == nullptr || !has_room(*entry, chunk)) return false;
    hold_reference(*entry, chunk);
    return true;
}

bool refer_alike(ListedChunk& copy, const ListedChunk& source) {
    if (is_null_id(source.shared_id)) return false;
    const Lock lock;
    Entry* const entry = referred(source);
    if (entry == nullptr) return false;
    hold_reference(*entry, copy);
    return true;
}

void release(const ListedChunk& chunk) {
    void* data = chunk.data;
    if (!is_null_id(chunk.shared_id)) {
        const Lock lock;
        Entry* const entry = referred(chunk);
        if (entry != nullptr) data = drop_held_reference(*entry);
    }
    free_aligned(data);
}

}  // namespace kef::rng

using namespace kef::rng;

std::int32_t __vtsFindGlobRODataTableEntry(const std::uint32_t* id, kef_shared_entry** entry) {
    const Lock lock;
    Entry* const found = find(id);
    if (found == nullptr) return VTS_STATUS_RO_ENTRY_NOT_FOUND;
    *entry = found;
    return VTS_STATUS_OK;
}

std::int32_t __vtsCreateGlobRODataTableEntry(kef_shared_entry** entry, const std::uint32_t* id,
                                             void* data) {
    const Lock lock;
    if (entries + orphans == VTS_MAX_SHARED_ENTRIES) return VTS_STATUS_RO_TABLE_FULL;
    Entry& created = table[entries++];
    created = {{{id[0], id[1], id[2], id[3]}, 1, data}, 0};
    *entry = &created;
    return VTS_STATUS_OK;
}

std::int32_t __vtsRegisterGlobRODataReference(const std::uint32_t* id, kef_chunk* chunk) {
    const Lock lock;
    Entry* const entry = find(id);
    if (entry == nullptr) return VTS_STATUS_RO_ENTRY_NOT_FOUND;
    if (!has_room(*entry, *chunk)) return VTS_STATUS_BAD_ARGUMENT;
    take_reference(*entry, *chunk);
    return VTS_STATUS_OK;
}

std::int32_t __vtsUnregisterGlobRODataReference(const std::uint32_t* id) {
    void* data = nullptr;
    {
        const Lock lock;
        Entry* const entry = find(id);
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
