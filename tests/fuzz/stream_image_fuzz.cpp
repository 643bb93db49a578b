// Fuzz target: any file as a stream image. Loading gives a status; a stream that loads can be drawn
// from, moved, saved and deleted.
//
// With libFuzzer:
//   clang++ -std=c++20 -O1 -g -msse3 -fsanitize=fuzzer,address -DKEF_LIBFUZZER -Iinclude -I.
//     tests/fuzz/stream_image_fuzz.cpp rng/*.cpp rng/brng/*.cpp service/alloc.cpp service/cpu.cpp
//     -o build/stream_image_fuzzer
// Otherwise a program of its own: it changes saved streams of all generators at random places, the
// given number of times (default 20000), always the same ones.
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "kef_rng.h"

namespace {

[[noreturn]] void fail(const char* what, std::int32_t status) {
    std::fprintf(stderr, "%s: status %d\n", what, status);
    std::abort();
}

void exercise(kef_stream* stream) {
    kef_brng brng;
    if (__vtsGetBrngProperties(__vtsGetStreamStateBrng(stream), &brng) != VTS_STATUS_OK)
        fail("a loaded stream has no generator", VTS_STATUS_BAD_BRNG);
    static std::uint32_t raw[4 * 900];
    static double d[700];
    brng.generate_bits(stream, 900, raw);
    brng.generate_double(stream, 700, d, 0, 1);
    // The jumps of the twisters take milliseconds: theirs stay inside a block.
    const std::int32_t id = __vtsGetStreamStateBrng(stream);
    const bool slow = id == VTS_BRNG_MT19937 || id == VTS_BRNG_SFMT19937;
    __vtsSkipAheadStream(stream, slow ? 1 : UINT64_C(123456789012));
    brng.generate_bits(stream, 300, raw);
    const std::int32_t size = __vtsGetStreamSize(stream);
    if (size < 20) fail("size of an image", size);
    std::vector<char> image(static_cast<std::size_t>(size));
    if (const std::int32_t status = __vtsSaveStreamM(stream, image.data())) fail("save", status);
    kef_stream* copy = nullptr;
    if (const std::int32_t status = __vtsCopyStream(&copy, stream)) fail("copy", status);
    __vtsDeleteStream(&copy);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const int file = memfd_create("stream", 0);
    static const std::string path = "/proc/self/fd/" + std::to_string(file);
    if (ftruncate(file, 0) != 0 || pwrite(file, data, size, 0) != static_cast<ssize_t>(size))
        fail("memory file", 0);
    kef_stream* stream = nullptr;
    const std::int32_t status = __vtsLoadStreamF(&stream, path.c_str(), -1);
    if ((status == VTS_STATUS_OK) != (stream != nullptr)) fail("status and handle differ", status);
    switch (status) {
        case VTS_STATUS_OK:
            exercise(stream);
            __vtsDeleteStream(&stream);
            break;
        case VTS_STATUS_FILE_READ:
        case VTS_STATUS_BAD_FILE:
        case VTS_STATUS_NO_MEMORY:
        case VTS_STATUS_NO_RDRAND: break;
        default: fail("load", status);
    }
    return 0;
}

#if !defined(KEF_LIBFUZZER)

int main(int argc, char** argv) {
    const int rounds = argc > 1 ? std::atoi(argv[1]) : 20000;
    std::vector<std::vector<std::uint8_t>> corpus;
    for (std::int32_t row = 0; row < 14; ++row) {
        kef_stream* stream = nullptr;
        const std::uint32_t seed = 5;
        if (__vtsNewStreamEx(&stream, (row + 1) << 20, 1, &seed) == VTS_STATUS_OK) {
            __vtsAddChunk(stream, 1, nullptr, nullptr, 16);
            __vtsAddChunk(stream, 2, nullptr, nullptr, 3);
            corpus.emplace_back(static_cast<std::size_t>(__vtsGetStreamSize(stream)));
            __vtsSaveStreamM(stream, corpus.back().data());
        }
        __vtsDeleteStream(&stream);
    }
    std::mt19937 random(1);
    const auto below = [&random](std::size_t n) { return random() % n; };
    // Places that matter: the header, the counters at both ends of the state, the chunk records.
    const auto place = [&](const std::vector<std::uint8_t>& image) -> std::size_t {
        switch (below(4)) {
            case 0: return below(20);
            case 1: return std::min(image.size() - 1, 20 + below(32));
            case 2: return image.size() - 1 - below(std::min<std::size_t>(image.size(), 100));
            default: return below(image.size());
        }
    };
    for (int round = 0; round < rounds; ++round) {
        std::vector<std::uint8_t> image = corpus[below(corpus.size())];
        for (std::size_t changes = below(4); changes > 0; --changes) {
            const std::uint8_t values[] = {0,    1,    0x7F,
                                           0x80, 0xFF, static_cast<std::uint8_t>(random())};
            image[place(image)] = values[below(6)];
        }
        if (below(4) == 0) image.resize(below(image.size() + 1));
        if (below(8) == 0) {  // the head of one on the body of another
            const auto& other = corpus[below(corpus.size())];
            std::copy_n(other.begin(), std::min({other.size(), image.size(), below(64)}),
                        image.begin());
        }
        LLVMFuzzerTestOneInput(image.data(), image.size());
    }
    return 0;
}

#endif
