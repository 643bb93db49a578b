// Save and load of the sketches of StreamQuantiles. Image, little-endian, the same for pointers of
// any width: header, then of each variable its record, the observations of the open run, and the
// summaries of its levels in ascending order; at the end a checksum of everything before it.
#include "stats/checks.h"
#include "stats/stream.h"

namespace kef::stats {

namespace {

constexpr char magic[6] = {'K', 'E', 'F', 'S', 'Q', 1};

struct ImageHeader {
    char magic[6];
    std::uint8_t element_size;
    std::uint8_t reserved;
    std::int64_t p, k;
};
static_assert(sizeof(ImageHeader) == 24);

struct VariableRecord {
    std::uint64_t count, odd;
    double least, greatest;
    std::uint64_t nan;
};
static_assert(sizeof(VariableRecord) == 40);

// FNV-1a over words of 32 bits: every single change of a word changes it.
std::uint64_t checksum(const char* image, std::size_t size) {
    std::uint64_t hash = 0xCBF29CE484222325u;
    for (std::size_t at = 0; at + 4 <= size; at += 4) {
        std::uint32_t word;
        std::memcpy(&word, image + at, 4);
        hash = (hash ^ word) * 0x100000001B3u;
    }
    return hash;
}

// The values of a variable in an image; UINT64_MAX when no image holds as many.
std::uint64_t values_of(std::uint64_t count, std::uint64_t k) {
    const std::uint64_t run = condensed * k;
    return count % run + std::popcount(count / run) * k;
}

template <class T> std::uint64_t image_size(const Stream<T>& stream) {
    std::uint64_t size = sizeof(ImageHeader) + sizeof(std::uint64_t);
    for (std::ptrdiff_t i = 0; i < stream.p(); ++i)
        size +=
            sizeof(VariableRecord) + values_of(stream.variable(i).count, stream.k()) * sizeof(T);
    return size;
}

template <class T> void save(const Stream<T>& stream, char* image) {
    char* to = image;
    const auto write = [&](const void* data, std::size_t size) {
        std::memcpy(to, data, size);
        to += size;
    };
    ImageHeader header{};
    std::memcpy(header.magic, magic, sizeof magic);
    header.element_size = sizeof(T);
    header.p = stream.p();
    header.k = stream.k();
    write(&header, sizeof header);
    for (std::ptrdiff_t i = 0; i < stream.p(); ++i) {
        const StreamVariable& v = stream.variable(i);
        const VariableRecord record = {v.count, v.odd, v.least, v.greatest, v.nan};
        write(&record, sizeof record);
        stream.for_each_raw(i, stream.open(i),
                            [&](const T* part, std::ptrdiff_t n) { write(part, n * sizeof(T)); });
        for (int l = 0; stream.runs(i) >> l != 0; ++l)
            if (stream.runs(i) >> l & 1) write(stream.level(i, l), stream.k() * sizeof(T));
    }
    const std::uint64_t sum = checksum(image, to - image);
    write(&sum, sizeof sum);
}

// An image that has been found to be whole; the reading cannot leave it.
class Reader {
public:
    Reader(const char* image, std::uint64_t size) : at_(image), left_(size) {}
    bool read(void* data, std::uint64_t size) {
        if (size > left_) return false;
        std::memcpy(data, at_, static_cast<std::size_t>(size));
        at_ += size;
        left_ -= size;
        return true;
    }
    template <class T> const char* values(std::uint64_t count) {
        if (count > left_ / sizeof(T)) return nullptr;
        const char* start = at_;
        at_ += count * sizeof(T);
        left_ -= count * sizeof(T);
        return start;
    }
    bool done() const { return left_ == 0; }

private:
    const char* at_;
    std::uint64_t left_;
};

// Whether the numbers are inside the range of the variable and, where it matters, in order.
template <class T>
bool are_values(const char* image, std::uint64_t count, const VariableRecord& v, bool ascending) {
    T before = static_cast<T>(v.least), value;
    for (std::uint64_t j = 0; j < count; ++j) {
        std::memcpy(&value, image + j * sizeof(T), sizeof(T));
        if (!(value >= (ascending ? before : static_cast<T>(v.least)) && value <= v.greatest))
            return false;
        before = value;
    }
    return true;
}

// Goes through the variables of an image: f(i, record, values), or false where it cannot be one.
template <class T, class F> bool for_each_variable(Reader reader, const ImageHeader& header, F f) {
    for (std::int64_t i = 0; i < header.p; ++i) {
        VariableRecord record;
        if (!reader.read(&record, sizeof record)) return false;
        const char* values = reader.values<T>(values_of(record.count, header.k));
        if (values == nullptr || !f(static_cast<std::ptrdiff_t>(i), record, values)) return false;
    }
    return reader.done();
}

template <class T>
std::int32_t load(Task& task, std::ptrdiff_t p, const char* image, std::uint64_t size) {
    ImageHeader header;
    std::uint64_t sum;
    if (size < sizeof header + sizeof sum || size % 4 != 0) return VTS_SS_STATUS_BAD_IMAGE;
    std::memcpy(&header, image, sizeof header);
    std::memcpy(&sum, image + size - sizeof sum, sizeof sum);
    if (std::memcmp(header.magic, magic, sizeof magic) != 0 || header.reserved != 0 ||
        header.k < summary_size(0.5) || header.k > most_values ||
        sum != checksum(image, static_cast<std::size_t>(size - sizeof sum)))
        return VTS_SS_STATUS_BAD_IMAGE;
    if (header.element_size != sizeof(T)) return VTS_SS_STATUS_BAD_PRECISION;
    if (header.p != p) return VTS_SS_STATUS_BAD_DIMENSION;
    const auto k = static_cast<std::ptrdiff_t>(header.k);
    const Reader body(image + sizeof header, size - sizeof header - sizeof sum);

    // A checksum can be made to fit: everything that the sketches rely on is looked at.
    std::uint64_t most = 0;
    const bool sound = for_each_variable<T>(
        body, header, [&](std::ptrdiff_t, const VariableRecord& v, const char* values) {
            const std::uint64_t run = condensed * k, open = v.count % run, runs = v.count / run;
            most = std::max(most, v.count);
            if (v.count > std::uint64_t(1) << 60 || v.nan > 1 || !(v.least <= v.greatest))
                return false;
            if (!are_values<T>(values, open, v, false)) return false;
            values += open * sizeof(T);
            for (int b = std::popcount(runs); b > 0; --b, values += k * sizeof(T))
                if (!are_values<T>(values, k, v, true)) return false;
            return true;
        });
    if (!sound) return VTS_SS_STATUS_BAD_IMAGE;

    if (!Stream<T>::make_room(task, k, p, most)) return VTS_SS_STATUS_NO_MEMORY;
    const Stream<T> stream(task);
    for_each_variable<T>(body, header,
                         [&](std::ptrdiff_t i, const VariableRecord& v, const char* values) {
                             stream.variable(i) = {v.count, v.odd, v.least, v.greatest, v.nan != 0};
                             const auto take = [&](T* to, std::ptrdiff_t n) {
                                 std::memcpy(to, values, n * sizeof(T));
                                 values += n * sizeof(T);
                             };
                             stream.for_each_raw(i, stream.open(i), take);
                             for (int l = 0; stream.runs(i) >> l != 0; ++l)
                                 if (stream.runs(i) >> l & 1) take(stream.level(i, l), k);
                             return true;
                         });
    return VTS_SS_STATUS_OK;
}

bool is_single(const Task& task) { return reinterpret_cast<const OwnedTask&>(task).single; }

// f(sketches) for the task's precision; TOO_FEW_OBSERVATIONS where it has none.
template <class F> std::int64_t with_stream(const Task* task, F f) {
    if (task == nullptr) return VTS_SS_STATUS_NULL_TASK;
    const auto call = [&](const auto& stream) -> std::int64_t {
        if (!stream.started()) return VTS_SS_STATUS_TOO_FEW_OBSERVATIONS;
        return f(stream);
    };
    return is_single(*task) ? call(Stream<float>(*task)) : call(Stream<double>(*task));
}

}  // namespace

}  // namespace kef::stats

using namespace kef::stats;

extern "C" {

std::int64_t __vtsSSGetStreamQuantilesSize(const Task* task) {
    return with_stream(
        task, [](const auto& stream) { return static_cast<std::int64_t>(image_size(stream)); });
}

std::int32_t __vtsSSSaveStreamQuantiles(const Task* task, void* image) {
    if (image == nullptr) return VTS_SS_STATUS_BAD_IMAGE;
    return static_cast<std::int32_t>(with_stream(task, [&](const auto& stream) {
        save(stream, static_cast<char*>(image));
        return VTS_SS_STATUS_OK;
    }));
}

std::int32_t __vtsSSLoadStreamQuantiles(Task* task, const void* image, std::uint64_t size) {
    if (task == nullptr) return VTS_SS_STATUS_NULL_TASK;
    if (image == nullptr || size > PTRDIFF_MAX) return VTS_SS_STATUS_BAD_IMAGE;
    const std::ptrdiff_t p = positive_at(*task, task->dimension);
    if (p == 0) return VTS_SS_STATUS_BAD_DIMENSION;
    const auto* bytes = static_cast<const char*>(image);
    return is_single(*task) ? load<float>(*task, p, bytes, size)
                            : load<double>(*task, p, bytes, size);
}

}  // extern "C"
