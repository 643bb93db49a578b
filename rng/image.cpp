// Save and load. Image, little-endian: header of 20 bytes, the generator's state as it stands in
// the stream block, chunk records of 24 bytes and data. One writer and one reader serve file and
// memory.
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <limits>

#include "rng/brng/trng.h"
#include "rng/chunks.h"
#include "rng/stream.h"
#include "service/alloc.h"
#include "service/platform.h"

namespace kef::rng {

namespace {

constexpr char magic[3] = {'R', 'N', 'G'};

struct ImageHeader {
    std::uint8_t version;
    char early_magic[3];  // reserved; an earlier layout had version and magic the other way round
    char magic[3];
    std::uint8_t reserved7;
    std::uint16_t header_size;
    std::uint16_t state_size;
    std::uint16_t chunks;
    std::uint16_t reserved14;
    std::int32_t brng;
};
static_assert(sizeof(ImageHeader) == 20);

struct ChunkRecord {
    std::int32_t key;
    std::uint32_t shared_id[4];
    std::int32_t size;
};
static_assert(sizeof(ChunkRecord) == 24);

// --- media: write and read whole items, with a status of their own ----------------------------

class MemoryWriter {
public:
    explicit MemoryWriter(void* image) : at_(static_cast<char*>(image)) {}
    std::int32_t write(const void* data, std::size_t size) {
        std::memcpy(at_, data, size);
        at_ += size;
        return VTS_STATUS_OK;
    }

private:
    char* at_;
};

class MemoryReader {
public:
    static constexpr std::int32_t bad_content = VTS_STATUS_BAD_IMAGE;
    static constexpr std::size_t trusted = std::numeric_limits<std::size_t>::max();
    MemoryReader(const void* image, std::size_t size)
        : at_(static_cast<const char*>(image)), left_(size) {}
    bool may_hold(std::size_t size) const { return size <= left_; }
    std::int32_t read(void* data, std::size_t size) {
        if (!may_hold(size)) return bad_content;
        std::memcpy(data, at_, size);
        at_ += size;
        left_ -= size;
        return VTS_STATUS_OK;
    }

private:
    const char* at_;
    std::size_t left_;
};

// The caller's name: zero-terminated when the length is negative.
class File {
public:
    static constexpr std::int32_t bad_content = VTS_STATUS_BAD_FILE;
    static constexpr std::size_t trusted = 1 << 16;  // bytes worth allocating before they are seen
    ~File() {
        if (file_ != nullptr) std::fclose(file_);
    }
    std::int32_t open(const char* name, std::int32_t length, const char* mode) {
        if (length < 0) {
            file_ = std::fopen(name, mode);
        } else {
            const auto size = static_cast<std::size_t>(length);
            auto* copy = static_cast<char*>(allocate_aligned(size + 1));
            if (copy == nullptr) return VTS_STATUS_NO_MEMORY;
            std::memcpy(copy, name, size);
            copy[size] = '\0';
            file_ = std::fopen(copy, mode);
            free_aligned(copy);
        }
        return file_ == nullptr ? VTS_STATUS_FILE_OPEN : VTS_STATUS_OK;
    }
    std::int32_t write(const void* data, std::size_t size) {
        return std::fwrite(data, size, 1, file_) == 1 ? VTS_STATUS_OK : VTS_STATUS_FILE_WRITE;
    }
    bool may_hold(std::size_t) const { return true; }
    std::int32_t read(void* data, std::size_t size) {
        return std::fread(data, size, 1, file_) == 1 ? VTS_STATUS_OK : VTS_STATUS_FILE_READ;
    }
    // `status`, or that of the close where all was well until then.
    std::int32_t close(std::int32_t status) {
        const bool closed = std::fclose(file_) == 0;
        file_ = nullptr;
        return status == VTS_STATUS_OK && !closed ? VTS_STATUS_FILE_CLOSE : status;
    }

private:
    const platform::ErrorsKept kept_;  // goes last
    std::FILE* file_ = nullptr;
};

// --- the image --------------------------------------------------------------------------------

std::int32_t data_size(const kef_chunk& chunk) {
    return chunk.data == nullptr || chunk.size < 0 ? 0 : chunk.size;
}

// Bytes of the image, or the status of a stream that cannot be saved: the fields for the size of
// the state and the number of chunks have 16 bits.
std::int32_t image_size(const kef_stream* stream) {
    constexpr std::int32_t most = 0xFFFF;
    const Place place = resolve(stream->header.brng);
    if (!valid(place)) return VTS_STATUS_BAD_BRNG;
    if (state_bytes(place) > most || __vtsGetNumChunks(stream) > most) return VTS_STATUS_TOO_LARGE;
    auto size = static_cast<std::int64_t>(sizeof(ImageHeader) + state_bytes(place));
    for (const kef_chunk* chunk = stream->header.first; chunk != nullptr; chunk = chunk->next)
        size += static_cast<std::int64_t>(sizeof(ChunkRecord)) + data_size(*chunk);
    return size > INT32_MAX ? VTS_STATUS_TOO_LARGE : static_cast<std::int32_t>(size);
}

template <class Writer> std::int32_t save(const kef_stream* stream, Writer& writer) {
    const Place place = resolve(stream->header.brng);
    ImageHeader header = {};
    header.version = 1;
    std::copy_n(magic, sizeof magic, header.magic);
    header.header_size = sizeof header;
    header.state_size = static_cast<std::uint16_t>(state_bytes(place));
    header.chunks = static_cast<std::uint16_t>(__vtsGetNumChunks(stream));
    header.brng = stream->header.brng;
    std::int32_t status = VTS_STATUS_OK;
    const auto put = [&](const void* data, std::size_t size) {
        if (status == VTS_STATUS_OK && size > 0) status = writer.write(data, size);
    };
    put(&header, sizeof header);
    put(stream + 1, header.state_size);
    for (const kef_chunk* chunk = stream->header.first; chunk != nullptr; chunk = chunk->next) {
        const std::int32_t size = data_size(*chunk);
        put(&chunk->key, sizeof chunk->key);
        put(chunk->shared_id, sizeof chunk->shared_id / 2);
        put(chunk->shared_id + 2, sizeof chunk->shared_id / 2);
        put(&size, sizeof size);
        put(chunk->data, static_cast<std::size_t>(size));
    }
    return status;
}

bool accepted(const ImageHeader& header) {
    const auto has_magic = [](const void* at) { return std::memcmp(at, magic, sizeof magic) == 0; };
    if (!has_magic(header.magic) && !has_magic(&header)) return false;
    const Place place = resolve(header.brng);
    return valid(place) && header.state_size == state_bytes(place) &&
           header.header_size >= sizeof header;
}

// A new block with `size` bytes of input. A size that the input may not have is believed
// piece by piece.
template <class Reader> std::int32_t read_block(Reader& reader, std::size_t size, void*& block) {
    if (!reader.may_hold(size)) return Reader::bad_content;
    std::size_t room = std::min(size, Reader::trusted), filled = 0;
    auto* data = static_cast<char*>(allocate_aligned(room));
    std::int32_t status = data == nullptr ? VTS_STATUS_NO_MEMORY : VTS_STATUS_OK;
    while (status == VTS_STATUS_OK) {
        status = reader.read(data + filled, room - filled);
        filled = room;
        if (status != VTS_STATUS_OK || filled == size) break;
        room = size - filled > filled ? 2 * filled : size;
        auto* larger = static_cast<char*>(allocate_aligned(room));
        if (larger == nullptr) {
            status = VTS_STATUS_NO_MEMORY;
        } else {
            std::memcpy(larger, data, filled);
            free_aligned(data);
            data = larger;
        }
    }
    if (status != VTS_STATUS_OK) {
        free_aligned(data);
        data = nullptr;
    }
    block = data;
    return status;
}

template <class Reader> std::int32_t read_chunk(kef_stream* stream, Reader& reader) {
    ChunkRecord record;
    std::int32_t status = reader.read(&record, sizeof record);
    if (status != VTS_STATUS_OK) return status;
    void* data = nullptr;
    if (record.size > 0) status = read_block(reader, static_cast<std::size_t>(record.size), data);
    if (status != VTS_STATUS_OK) return status;
    status = attach(stream, record.key, record.shared_id, data, record.size);
    if (status != VTS_STATUS_OK) free_aligned(data);
    return status;
}

template <class Reader>
std::int32_t read_content(kef_stream* stream, const Place& place, const ImageHeader& header,
                          Reader& reader) {
    std::int32_t status = VTS_STATUS_OK;
    if (header.state_size > 0) status = reader.read(stream + 1, header.state_size);
    if (status != VTS_STATUS_OK) return status;
    if (!valid_state(place, stream)) return Reader::bad_content;
    if (header.brng == VTS_BRNG_TRNG && !rdrand_works()) return VTS_STATUS_NO_RDRAND;
    for (std::uint16_t i = 0; i < header.chunks && status == VTS_STATUS_OK; ++i)
        status = read_chunk(stream, reader);
    return status;
}

template <class Reader> std::int32_t load(kef_stream** stream, Reader& reader) {
    ImageHeader header;
    const std::int32_t status = reader.read(&header, sizeof header);
    if (status != VTS_STATUS_OK) return status;
    if (!accepted(header)) return Reader::bad_content;
    const Place place = resolve(header.brng);
    *stream = allocate_stream(place, header.brng);
    if (*stream == nullptr) return VTS_STATUS_NO_MEMORY;
    return read_content(*stream, place, header, reader);
}

}  // namespace

}  // namespace kef::rng

using namespace kef::rng;

std::int32_t __vtsSaveStreamF(const kef_stream* stream, const char* name, std::int32_t length) {
    const std::int32_t size = image_size(stream);
    if (size < 0) return size;
    File file;
    const std::int32_t status = file.open(name, length, "wb");
    if (status != VTS_STATUS_OK) return status;
    return file.close(save(stream, file));
}

std::int32_t __vtsSaveStreamM(const kef_stream* stream, void* image) {
    const std::int32_t size = image_size(stream);
    if (size < 0) return size;
    MemoryWriter writer(image);
    return save(stream, writer);
}

namespace {

// `status`, with no stream left where it is an error.
std::int32_t settled(kef_stream** stream, std::int32_t status) {
    if (status != VTS_STATUS_OK) __vtsDeleteStream(stream);
    return status;
}

std::int32_t load_memory(kef_stream** stream, const void* image, std::size_t size) {
    *stream = nullptr;
    MemoryReader reader(image, size);
    return settled(stream, load(stream, reader));
}

}  // namespace

std::int32_t __vtsLoadStreamF(kef_stream** stream, const char* name, std::int32_t length) {
    *stream = nullptr;
    File file;
    const std::int32_t status = file.open(name, length, "rb");
    if (status != VTS_STATUS_OK) return status;
    return settled(stream, file.close(load(stream, file)));
}

std::int32_t __vtsLoadStreamM(kef_stream** stream, const void* image) {
    return load_memory(stream, image, SIZE_MAX);
}

std::int32_t __vtsLoadStreamMBounded(kef_stream** stream, const void* image, std::uint64_t size) {
    return load_memory(stream, image,
                       static_cast<std::size_t>(std::min<std::uint64_t>(size, SIZE_MAX)));
}

std::int32_t __vtsGetStreamSize(const kef_stream* stream) { return image_size(stream); }
