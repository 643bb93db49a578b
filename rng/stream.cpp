// Life of a stream and the requests that its generator's initialiser serves.
#include "rng/stream.h"

#include <cstring>

#include "service/alloc.h"

namespace kef::rng {

kef_stream* allocate_stream(const Place& place, std::int32_t brng) {
    const std::size_t size = sizeof(Header) + state_bytes(place);
    auto* stream = static_cast<kef_stream*>(allocate_aligned(size));
    if (stream == nullptr) return nullptr;
    std::memset(stream, 0, size);
    stream->header = {brng, 1, nullptr, nullptr};
    return stream;
}

}  // namespace kef::rng

using namespace kef::rng;

std::int32_t __vtsAllocateStream(kef_stream** stream, const kef_brng* table, std::int32_t brng,
                                 std::int32_t row, std::int32_t sub) {
    const Place place{table, row, sub};
    if (!valid(place)) return VTS_STATUS_BAD_BRNG;
    *stream = allocate_stream(place, brng);
    return *stream == nullptr ? VTS_STATUS_NO_MEMORY : VTS_STATUS_OK;
}

std::int32_t __vtsNewStreamEx(kef_stream** stream, std::int32_t brng, std::int32_t n,
                              const std::uint32_t* parameters) {
    if (brng == VTS_BRNG_IABSTRACT || brng == VTS_BRNG_DABSTRACT || brng == VTS_BRNG_SABSTRACT)
        return VTS_STATUS_BAD_BRNG;
    const Place place = resolve(brng);
    const std::int32_t status =
        __vtsAllocateStream(stream, place.table, brng, place.row, place.sub);
    if (status != VTS_STATUS_OK) return status;
    return place.brng().init_stream(VTS_INIT_SEED, *stream, n, parameters);
}

std::int32_t __vtsCopyStream(kef_stream** stream, const kef_stream* source) {
    const Place place = resolve(source->header.brng);
    if (!valid(place)) return VTS_STATUS_BAD_BRNG;
    kef_stream* copy = allocate_stream(place, source->header.brng);
    *stream = copy;
    if (copy == nullptr) return VTS_STATUS_NO_MEMORY;
    std::memcpy(copy, source, sizeof(Header) + state_bytes(place));
    copy->header.first = copy->header.last = nullptr;
    const std::int32_t status = __vtsCopyChunks(copy, source);
    if (status != VTS_STATUS_OK) __vtsDeleteStream(stream);
    return status;
}

std::int32_t __vtsCopyStreamState(kef_stream* destination, const kef_stream* source) {
    const Place from = resolve(source->header.brng), to = resolve(destination->header.brng);
    if (!valid(from) || !valid(to) || family_row(from) != family_row(to) || from.sub != to.sub)
        return VTS_STATUS_BAD_BRNG;
    std::memmove(destination + 1, source + 1, state_bytes(from));
    return VTS_STATUS_OK;
}

std::int32_t __vtsDeleteStream(kef_stream** stream) {
    if (*stream == nullptr) return VTS_STATUS_OK;
    __vtsDeleteChunks(*stream);
    kef::free_aligned(*stream);
    *stream = nullptr;
    return VTS_STATUS_OK;
}

std::int32_t __vtsLeapfrogStream(kef_stream* stream, std::int32_t k, std::int32_t count) {
    if (count < 0) return VTS_STATUS_BAD_LEAPFROG_COUNT;
    const auto word = static_cast<std::uint32_t>(k);
    return resolve(stream->header.brng).brng().init_stream(VTS_INIT_LEAPFROG, stream, count, &word);
}

std::int32_t __vtsSkipAheadStream(kef_stream* stream, std::uint64_t count) {
    const std::uint32_t words[2] = {static_cast<std::uint32_t>(count),
                                    static_cast<std::uint32_t>(count >> 32)};
    return resolve(stream->header.brng).brng().init_stream(VTS_INIT_SKIPAHEAD, stream, 2, words);
}

void* __vtsAllocate(std::uint64_t size) {
    return size > SIZE_MAX ? nullptr : kef::allocate_aligned(static_cast<std::size_t>(size));
}

void __vtsFree(void* block) { kef::free_aligned(block); }

std::int32_t __vtsGetStreamStateBrng(const kef_stream* stream) { return stream->header.brng; }
