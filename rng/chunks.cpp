// Chunks: a singly linked list with head and tail in the stream's header.
#include "rng/chunks.h"

#include <algorithm>
#include <cstring>

#include "rng/registry.h"
#include "rng/shared_table.h"
#include "service/alloc.h"

namespace kef::rng {

namespace {

// Every chunk in a list comes from new_chunk.
const ListedChunk& listed(const kef_chunk& chunk) { return static_cast<const ListedChunk&>(chunk); }

void delete_list(kef_chunk* chunk) {
    while (chunk != nullptr) {
        kef_chunk* const next = chunk->next;
        release(listed(*chunk));
        free_aligned(chunk);
        chunk = next;
    }
}

ListedChunk* new_chunk(std::int32_t key, const std::uint32_t* shared_id, void* data,
                       std::int32_t size) {
    auto* chunk = static_cast<ListedChunk*>(allocate_aligned(sizeof(ListedChunk)));
    if (chunk == nullptr) return nullptr;
    *chunk = {{key, size, data, nullptr, {}}, false};
    if (shared_id != nullptr) std::copy_n(shared_id, 4, chunk->shared_id);
    return chunk;
}

// With one more reference, or a copy of the data; null when there is no memory.
kef_chunk* copy_of(const kef_chunk& source) {
    ListedChunk* const copy = new_chunk(source.key, source.shared_id, nullptr, source.size);
    if (copy == nullptr || refer_alike(*copy, listed(source))) return copy;
    if (source.data == nullptr || source.size <= 0) return copy;
    const auto size = static_cast<std::size_t>(source.size);
    copy->data = allocate_aligned(size);
    if (copy->data == nullptr) {
        free_aligned(copy);
        return nullptr;
    }
    std::memcpy(copy->data, source.data, size);
    return copy;
}

void append(kef_stream* stream, kef_chunk* chunk) {
    Header& header = stream->header;
    (header.last == nullptr ? header.first : header.last->next) = chunk;
    header.last = chunk;
}

}  // namespace

std::int32_t attach(kef_stream* stream, std::int32_t key, const std::uint32_t* shared_id,
                    void* data, std::int32_t size) {
    ListedChunk* const chunk = new_chunk(key, shared_id, data, size);
    if (chunk == nullptr) return VTS_STATUS_NO_MEMORY;
    if (refer(*chunk) && chunk->data != data) free_aligned(data);
    append(stream, chunk);
    return VTS_STATUS_OK;
}

}  // namespace kef::rng

using namespace kef;
using namespace kef::rng;

// Defines a name and its spelling with one underscore.
#define KEF_TWO_NAMES(result, name, ...)                            \
    result _##name(__VA_ARGS__) __attribute__((alias("__" #name))); \
    result __##name(__VA_ARGS__)

extern "C" {

KEF_TWO_NAMES(std::int32_t, vtsAddChunk, kef_stream* stream, std::int32_t key,
              const std::uint32_t* shared_id, void* data, std::int32_t size) {
    if (data != nullptr || size <= 0 || !is_null_id(shared_id))
        return attach(stream, key, shared_id, data, size);
    data = allocate_aligned(static_cast<std::size_t>(size));
    if (data == nullptr) return VTS_STATUS_NO_MEMORY;
    std::memset(data, 0, static_cast<std::size_t>(size));
    const std::int32_t status = attach(stream, key, shared_id, data, size);
    if (status != VTS_STATUS_OK) free_aligned(data);
    return status;
}

KEF_TWO_NAMES(void*, vtsSearchChunk, const kef_stream* stream, std::int32_t key) {
    const kef_chunk* chunk = stream->header.first;
    while (chunk != nullptr && chunk->key != key) chunk = chunk->next;
    return chunk == nullptr ? nullptr : chunk->data;
}

KEF_TWO_NAMES(std::int32_t, vtsGetNumChunks, const kef_stream* stream) {
    std::int32_t count = 0;
    for (const kef_chunk* chunk = stream->header.first; chunk != nullptr; chunk = chunk->next)
        ++count;
    return count;
}

KEF_TWO_NAMES(std::int32_t, vtsDeleteChunks, kef_stream* stream) {
    delete_list(stream->header.first);
    stream->header.first = stream->header.last = nullptr;
    return VTS_STATUS_OK;
}

KEF_TWO_NAMES(std::int32_t, vtsCopyChunks, kef_stream* destination, const kef_stream* source) {
    Header& header = destination->header;
    kef_chunk* const old_last = header.last;
    const kef_chunk* const end = source->header.last;  // also where source is destination
    for (const kef_chunk* chunk = source->header.first; chunk != nullptr; chunk = chunk->next) {
        kef_chunk* const copy = copy_of(*chunk);
        if (copy == nullptr) {
            kef_chunk*& added = old_last == nullptr ? header.first : old_last->next;
            delete_list(added);
            added = nullptr;
            header.last = old_last;
            return VTS_STATUS_NO_MEMORY;
        }
        append(destination, copy);
        if (chunk == end) break;
    }
    return VTS_STATUS_OK;
}

}  // extern "C"
