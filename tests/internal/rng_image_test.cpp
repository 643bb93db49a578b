// Save and load, and images from outside that lie.
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <functional>
#include <string>

#include "rng/registry.h"
#include "service/alloc.h"
#include "service/platform.h"
#include "tests/internal/failing_allocator.h"
#include "tests/rng_streams.h"
#include "tests/system.h"

// The linker leads image.cpp's question here.
static bool rdrand_is_missing = false;
extern "C" bool __real__ZN3kef3rng12rdrand_worksEv();
extern "C" bool __wrap__ZN3kef3rng12rdrand_worksEv() {
    return !rdrand_is_missing && __real__ZN3kef3rng12rdrand_worksEv();
}

namespace {

class RngImage : public testing::Test {
protected:
    std::string path = kef_test::scratch_file("kef_stream_image");
    ~RngImage() override { std::remove(path.c_str()); }

    void write(const Bytes& image) {
        std::ofstream(path, std::ios::binary)
            .write(reinterpret_cast<const char*>(image.data()),
                   static_cast<std::streamsize>(image.size()));
    }
    std::int32_t load_file(Stream& stream, const Bytes& image) {
        write(image);
        kef_stream* handle = reinterpret_cast<kef_stream*>(this);
        const std::int32_t status = __vtsLoadStreamF(&handle, path.c_str(), -1);
        EXPECT_EQ(handle == nullptr, status != VTS_STATUS_OK);
        stream.reset(handle);
        return status;
    }
    std::int32_t load_memory(Stream& stream, const Bytes& image) {
        kef_stream* handle = reinterpret_cast<kef_stream*>(this);
        const std::int32_t status = __vtsLoadStreamM(&handle, image.data());
        EXPECT_EQ(handle == nullptr, status != VTS_STATUS_OK);
        stream.reset(handle);
        EXPECT_EQ(load_bounded(image), status);
        return status;
    }
    // From a block of its own, so that a read past the end is seen by a sanitizer.
    static std::int32_t load_bounded(const Bytes& image) {
        const Bytes exact(image.begin(), image.end());
        kef_stream* handle = nullptr;
        const std::int32_t status = __vtsLoadStreamMBounded(&handle, exact.data(), exact.size());
        EXPECT_EQ(handle == nullptr, status != VTS_STATUS_OK);
        __vtsDeleteStream(&handle);
        return status;
    }
};

Bytes file_bytes(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(file), {});
}

void add_chunk(const Stream& stream, std::int32_t key, const std::string& text) {
    void* data = kef::allocate_aligned(text.size());
    std::memcpy(data, text.data(), text.size());
    EXPECT_EQ(
        __vtsAddChunk(stream.get(), key, nullptr, data, static_cast<std::int32_t>(text.size())),
        VTS_STATUS_OK);
}

// Draws a little of everything; whatever the state is, nothing may go out of bounds.
void exercise(const Stream& stream) {
    std::vector<std::uint32_t> raw(4 * 700);
    std::vector<double> d(650);
    const kef_brng& brng = kef::rng::resolve(__vtsGetStreamStateBrng(stream.get())).brng();
    brng.generate_bits(stream.get(), 700, raw.data());
    brng.generate_double(stream.get(), 650, d.data(), 0, 1);
    __vtsSkipAheadStream(stream.get(), 12345);
    brng.generate_bits(stream.get(), 700, raw.data());
    image_of(stream);
}

TEST_F(RngImage, EveryGeneratorContinues) {
    for (const std::int32_t brng : repeatable_generators) {
        const Stream stream = make_stream(brng, {3});
        draw_raw(stream, 333);
        add_chunk(stream, 5, "five");
        add_chunk(stream, -6, "minus six");
        ASSERT_EQ(__vtsSaveStreamF(stream.get(), (path + "junk").c_str(),
                                   static_cast<std::int32_t>(path.size())),
                  VTS_STATUS_OK);
        const Bytes image = image_of(stream);
        EXPECT_EQ(file_bytes(path), image);
        const auto next = draw_raw(stream, 1000);
        Stream from_file, from_memory;
        EXPECT_EQ(load_file(from_file, image), VTS_STATUS_OK);
        EXPECT_EQ(load_memory(from_memory, image), VTS_STATUS_OK);
        for (const Stream* loaded : {&from_file, &from_memory}) {
            EXPECT_EQ(image_of(*loaded), image);
            EXPECT_EQ(0, std::memcmp(__vtsSearchChunk(loaded->get(), -6), "minus six", 9));
            EXPECT_EQ(draw_raw(*loaded, 1000), next) << brng;
        }
    }
}

// Whatever the system said to the library, its caller's errno and last error stay.
TEST_F(RngImage, ErrorsOfTheSystemStayInside) {
    const Stream stream = make_stream(VTS_BRNG_MCG31M1, {7});
    const std::string absent = path + "/absent";
    kef_stream* loaded = nullptr;
    const std::function<bool()> calls[] = {
        [&] { return __vtsSaveStreamF(stream.get(), path.c_str(), -1) == VTS_STATUS_OK; },
        [&] { return __vtsLoadStreamF(&loaded, path.c_str(), -1) == VTS_STATUS_OK; },
        [&] { return __vtsDeleteStream(&loaded) == VTS_STATUS_OK; },
        [&] { return __vtsSaveStreamF(stream.get(), absent.c_str(), -1) == VTS_STATUS_FILE_OPEN; },
        [&] { return __vtsLoadStreamF(&loaded, absent.c_str(), -1) == VTS_STATUS_FILE_OPEN; },
        [] {  // no process has room for the third
            void* blocks[3];
            for (void*& block : blocks) block = __vtsAllocate(PTRDIFF_MAX - 1000);
            for (void* block : blocks) __vtsFree(block);
            return blocks[2] == nullptr;
        },
    };
    for (const auto& call : calls) {
        errno = 99;
        kef::platform::set_last_error(4711);
        const bool as_expected = call();
        EXPECT_EQ(errno, 99) << &call - calls;
#if defined(_WIN32)
        EXPECT_EQ(kef::platform::last_error(), 4711u) << &call - calls;
#endif
        EXPECT_TRUE(as_expected) << &call - calls;
    }
}

TEST_F(RngImage, LayoutIsFixed) {
    const Stream stream = make_stream(VTS_BRNG_MCG31M1, {0x11223344});
    EXPECT_EQ(image_of(stream),
              (Bytes{1, 0, 0, 0, 'R',  'N', 'G',  0,    20,   0,    8,    0,    0,    0,
                     0, 0, 0, 0, 0x10, 0,   0x44, 0x33, 0x22, 0x11, 0x20, 0x6C, 0x80, 0x43}));
    EXPECT_EQ(__vtsGetStreamSize(stream.get()), 28);
    add_chunk(stream, 0x01020304, "xyz");
    const Bytes image = image_of(stream);
    ASSERT_EQ(image.size(), 28u + 24 + 3);
    EXPECT_EQ(image[12], 1);
    EXPECT_EQ(Bytes(image.begin() + 28, image.end()),
              (Bytes{4, 3, 2, 1, 0, 0, 0, 0, 0, 0, 0,   0,   0,  0,
                     0, 0, 0, 0, 0, 0, 3, 0, 0, 0, 'x', 'y', 'z'}));
}

TEST_F(RngImage, HeaderChecks) {
    const Stream stream = make_stream(VTS_BRNG_MCG59, {42});
    const Bytes good = image_of(stream);
    const auto both = [&](auto change, std::int32_t file_status, std::int32_t memory_status) {
        Bytes image = good;
        change(image);
        Stream loaded;
        EXPECT_EQ(load_file(loaded, image), file_status);
        EXPECT_EQ(load_memory(loaded, image), memory_status);
        if (memory_status == VTS_STATUS_OK)
            EXPECT_EQ(draw_raw(loaded, 9), draw_raw(copy_of(stream), 9));
    };
    const auto fine = [&](auto change) { both(change, VTS_STATUS_OK, VTS_STATUS_OK); };
    const auto bad = [&](auto change) { both(change, VTS_STATUS_BAD_FILE, VTS_STATUS_BAD_IMAGE); };
    fine([](Bytes& b) { std::memcpy(&b[0], "RNG", 3), b[4] = 0; });
    fine([](Bytes& b) { b[0] = 9, b[1] = b[2] = b[3] = b[7] = b[14] = b[15] = 0xFF; });
    fine([](Bytes& b) { b[8] = 24; });
    fine([](Bytes& b) { b[9] = 0xFF; });
    bad([](Bytes& b) { b[5] = 'M'; });
    bad([](Bytes& b) { b[8] = 19; });
    bad([](Bytes& b) { b[10] += 1; });
    bad([](Bytes& b) { b[10] -= 1; });
    bad([](Bytes& b) { b[18] = 0x0F, b[19] = 0x7F; });  // no such generator
    bad([](Bytes& b) { b[18] = 0x10; });                // another one, with another size
    kef_stream* handle = nullptr;
    EXPECT_EQ(__vtsLoadStreamF(&handle, "/nonexistent/stream", -1), VTS_STATUS_FILE_OPEN);
    EXPECT_EQ(__vtsSaveStreamF(stream.get(), "/nonexistent/stream", -1), VTS_STATUS_FILE_OPEN);
}

// A device that takes nothing: what is buffered fails at the close, what is not at the write.
TEST_F(RngImage, FailedSaveIsReported) {
    std::FILE* full = std::fopen("/dev/full", "wb");
    if (full == nullptr || std::fputc('x', full) == EOF || std::fclose(full) == 0)
        GTEST_SKIP() << "no /dev/full";
    EXPECT_EQ(__vtsSaveStreamF(make_stream(VTS_BRNG_MCG59).get(), "/dev/full", -1),
              VTS_STATUS_FILE_CLOSE);
    EXPECT_EQ(__vtsSaveStreamF(make_stream(VTS_BRNG_NIEDERR).get(), "/dev/full", -1),
              VTS_STATUS_FILE_WRITE);
}

TEST_F(RngImage, HardwareStreams) {
    kef_stream* handle = nullptr;
    const std::int32_t status = __vtsNewStreamEx(&handle, VTS_BRNG_TRNG, 0, nullptr);
    const Stream stream(handle);
    Stream loaded;
    EXPECT_EQ(load_memory(loaded, image_of(stream)), status);
    EXPECT_EQ(load_file(loaded, image_of(stream)), status);
    // On a processor without the instruction.
    ASSERT_EQ(__vtsAllocateStream(&handle, __RegBrngsNew, VTS_BRNG_TRNG, 13, 0), VTS_STATUS_OK);
    const Stream unseeded(handle);
    add_chunk(unseeded, 1, "kept by nobody");
    loaded.reset();
    rdrand_is_missing = true;
    const long before = kef::test::live_blocks();
    EXPECT_EQ(load_memory(loaded, image_of(unseeded)), VTS_STATUS_NO_RDRAND);
    EXPECT_EQ(load_file(loaded, image_of(unseeded)), VTS_STATUS_NO_RDRAND);
    EXPECT_EQ(kef::test::live_blocks(), before);
    rdrand_is_missing = false;
}

// Every truncation of an image, and every change of one byte, of a stream with chunks: to all other
// values in the shortest image, to three of them in the others.
TEST_F(RngImage, HostileFiles) {
#if defined(_WIN32)
    constexpr bool slow = true;  // files on a disk
#else
    constexpr bool slow = false;
#endif
    for (const std::int32_t brng :
         {VTS_BRNG_MCG31M1, VTS_BRNG_MCG59, VTS_BRNG_MRG32K3A, VTS_BRNG_WH, VTS_BRNG_MT2203}) {
        const Stream stream = make_stream(brng);
        draw_raw(stream, 5);
        add_chunk(stream, 1, "0123456789");
        add_chunk(stream, 2, "abc");
        const Bytes good = image_of(stream);
        Stream loaded;
        for (std::size_t size = 0; size < good.size(); ++size) {
            const Bytes cut(good.begin(), good.begin() + size);
            EXPECT_EQ(load_file(loaded, cut), VTS_STATUS_FILE_READ) << size;
            EXPECT_EQ(load_bounded(cut), VTS_STATUS_BAD_IMAGE) << size;
        }
        for (std::size_t i = 0; i < good.size(); ++i)
            for (int change = 1; change < 256;
                 change += brng == VTS_BRNG_MCG31M1 && !slow ? 1 : 0x7F) {
                Bytes image = good;
                image[i] ^= change;
                const std::int32_t status = load_file(loaded, image);
                EXPECT_TRUE(status == VTS_STATUS_OK || status == VTS_STATUS_FILE_READ ||
                            status == VTS_STATUS_BAD_FILE || status == VTS_STATUS_NO_MEMORY)
                    << status;
                const std::int32_t bounded = load_bounded(image);
                EXPECT_TRUE(bounded == status || bounded == VTS_STATUS_BAD_IMAGE) << bounded;
                if (loaded) exercise(loaded);
            }
    }
}

// One word of a state at a time: values that no stream can have, and the last ones that it can.
TEST_F(RngImage, ImpossibleStates) {
    constexpr std::uint32_t most = 0xFFFFFFFF, sign = 0x80000000, m31 = 0x7FFFFFFF;
    struct Case {
        std::int32_t brng;
        int word;  // of the state
        std::vector<std::uint32_t> bad, good;
    };
    for (const auto& [brng, word, bad, good] :
         {Case{VTS_BRNG_MCG31M1, 0, {0, m31, most}, {1, m31 - 1}},
          {VTS_BRNG_MCG31M1, 1, {0, m31, most}, {1, m31 - 1}},
          {VTS_BRNG_R250, 250, {251, m31, most, sign}, {0, 250}},
          {VTS_BRNG_MRG32K3A, 0, {4294967087, most}, {4294967086}},
          {VTS_BRNG_MRG32K3A, 4, {4294944443, most}, {4294944442}},
          {VTS_BRNG_MCG59, 0, {0}, {2, most}},
          {VTS_BRNG_MCG59, 1, {0x08000000, most}, {0x07FFFFFF}},
          {VTS_BRNG_MCG59, 2, {0, 2, 3, 4, 7}, {1, 5}},
          {VTS_BRNG_MCG59, 3, {0x08000000, most}, {0, 0x07FFFFFF}},
          {VTS_BRNG_WH, 0, {0, 16776899, most}, {16344178}},
          {VTS_BRNG_WH, 5, {0, 16776899, most}, {16344178}},
          {VTS_BRNG_SOBOL, 0, {0, 89, most, sign}, {}},  // seven coordinates
          {VTS_BRNG_SOBOL, 1, {0, 2, most}, {1}},
          {VTS_BRNG_SOBOL, 2, {7, most}, {6}},
          {VTS_BRNG_SOBOL, 3, {2, most}, {1}},
          {VTS_BRNG_SOBOL, 4 + 6, {0, 1}, {sign}},
          {VTS_BRNG_SOBOL, 4 + 33 * 7 + 6, {1}, {0}},
          {VTS_BRNG_SOBOL, 4 + 34 * 7, {0, 1}, {sign}},
          {VTS_BRNG_NIEDERR, 0, {0, 328, most, sign}, {}},
          {VTS_BRNG_NIEDERR, 1, {0, 2}, {1}},
          {VTS_BRNG_NIEDERR, 2, {7, most}, {6}},
          {VTS_BRNG_NIEDERR, 3, {2, most}, {1}},
          {VTS_BRNG_MT19937, 624, {625, m31, most, sign}, {0, 624}},
          {VTS_BRNG_MT2203 + 8, 69, {70, m31, most, sign}, {0, 69}},
          {VTS_BRNG_MT2203 + 8, 70, {0, 0xAF81055F}, {}},
          {VTS_BRNG_MT2203 + 8, 71, {0, 0xDD7EEF80}, {}},
          {VTS_BRNG_MT2203 + 8, 72, {0, 0xEFD78000}, {}},
          {VTS_BRNG_SFMT19937, 624, {625, m31, most, sign}, {0, 624}},
          {1, 250, {251}, {}},
          {4, 0, {0}, {}}})
        for (const auto* values : {&bad, &good})
            for (const std::uint32_t value : *values) {
                Bytes image = image_of(make_stream(brng, {7}));
                std::memcpy(&image[20 + 4 * word], &value, 4);
                Stream loaded;
                EXPECT_EQ(load_memory(loaded, image),
                          values == &bad ? VTS_STATUS_BAD_IMAGE : VTS_STATUS_OK)
                    << std::hex << brng << ", word " << std::dec << word << ": " << value;
                if (loaded) exercise(loaded);
            }
}

// A recurrence never comes to zeros, nor out of them. `lost`: bits of the first word that take no
// part in it.
TEST_F(RngImage, ZeroStates) {
    struct Case {
        std::int32_t brng;
        int words;
        std::uint32_t lost;
    };
    for (const auto& [brng, words, lost] : {Case{VTS_BRNG_R250, 250, 0},
                                            {VTS_BRNG_MT19937, 624, 0x7FFFFFFF},
                                            {VTS_BRNG_MT2203 + 5, 69, 0x1F},
                                            {VTS_BRNG_SFMT19937, 624, 0}}) {
        Bytes image = image_of(make_stream(brng));
        std::memset(&image[20], 0, 4 * static_cast<std::size_t>(words));
        std::memcpy(&image[20], &lost, 4);
        Stream loaded;
        EXPECT_EQ(load_memory(loaded, image), VTS_STATUS_BAD_IMAGE) << brng;
        const std::uint32_t alive = lost + 1;
        std::memcpy(&image[20], &alive, 4);
        EXPECT_EQ(load_memory(loaded, image), VTS_STATUS_OK) << brng;
    }
}

// Direction numbers of the caller and a single coordinate are states of their own.
TEST_F(RngImage, QuasiRandomStates) {
    std::vector<std::uint32_t> numbers(1 + 32 * 50);
    numbers[0] = 50;
    for (std::size_t i = 1; i < numbers.size(); ++i)
        numbers[i] = static_cast<std::uint32_t>(i * 2654435769u);
    for (const std::int32_t brng : {VTS_BRNG_SOBOL, VTS_BRNG_NIEDERR})
        for (const bool leap : {false, true}) {
            const Stream stream = make_stream(brng, numbers);
            draw_raw(stream, 1234);
            if (leap) {
                ASSERT_EQ(__vtsLeapfrogStream(stream.get(), 3, 50), VTS_STATUS_OK);
                draw_raw(stream, 70);
            }
            Stream loaded;
            ASSERT_EQ(load_memory(loaded, image_of(stream)), VTS_STATUS_OK);
            EXPECT_EQ(draw_raw(loaded, 3000), draw_raw(stream, 3000));
        }
}

// Counts and sizes of chunks that the file does not hold.
TEST_F(RngImage, LyingChunks) {
    const Stream stream = make_stream(VTS_BRNG_MCG59);
    add_chunk(stream, 1, "0123456789");
    const Bytes good = image_of(stream);
    const std::size_t size_at = good.size() - 10 - 4;
    Stream loaded;
    for (const std::uint32_t size : {11u, 70000u, 0x7FFFFFFFu}) {
        Bytes image = good;
        std::memcpy(&image[size_at], &size, 4);
        EXPECT_EQ(load_file(loaded, image), VTS_STATUS_FILE_READ) << size;
        EXPECT_EQ(load_bounded(image), VTS_STATUS_BAD_IMAGE) << size;
    }
    for (const std::uint32_t size : {0u, 0x80000000u, 0xFFFFFFFFu}) {
        Bytes image(good.begin(), good.end() - 10);
        std::memcpy(&image[size_at], &size, 4);
        EXPECT_EQ(load_file(loaded, image), VTS_STATUS_OK) << size;
        EXPECT_EQ(__vtsSearchChunk(loaded.get(), 1), nullptr);
        EXPECT_EQ(image_of(loaded).size(), image.size());
    }
    Bytes image = good;
    image[12] = image[13] = 0xFF;
    EXPECT_EQ(load_file(loaded, image), VTS_STATUS_FILE_READ);
    // Large data, read piece by piece.
    const Stream large = make_stream(VTS_BRNG_MCG59);
    add_chunk(large, 3, std::string(300000, 'q'));
    EXPECT_EQ(load_file(loaded, image_of(large)), VTS_STATUS_OK);
    EXPECT_EQ(image_of(loaded), image_of(large));
}

// A shared entry is found again; a record that claims more than the entry holds gets its own data.
TEST_F(RngImage, SharedChunks) {
    std::uint32_t id[4];
    __vtsGenerateNewGlobalRODataTableEntryId(id, 1);
    void* data = kef::allocate_aligned(8);
    std::memcpy(data, "eightyes", 8);
    kef_shared_entry* entry = nullptr;
    ASSERT_EQ(__vtsCreateGlobRODataTableEntry(&entry, id, data), VTS_STATUS_OK);
    Stream stream = make_stream(VTS_BRNG_MCG59);
    ASSERT_EQ(__vtsAddChunk(stream.get(), 1, id, nullptr, 8), VTS_STATUS_OK);
    Bytes image = image_of(stream);
    Stream loaded;
    ASSERT_EQ(load_file(loaded, image), VTS_STATUS_OK);
    EXPECT_EQ(__vtsSearchChunk(loaded.get(), 1), data);
    EXPECT_EQ(entry->references, 3u);
    image[image.size() - 12] = 9;
    image.push_back('!');
    ASSERT_EQ(load_file(loaded, image), VTS_STATUS_OK);
    EXPECT_NE(__vtsSearchChunk(loaded.get(), 1), data);
    EXPECT_EQ(0, std::memcmp(__vtsSearchChunk(loaded.get(), 1), "eightyes!", 9));
    EXPECT_EQ(entry->references, 2u);
    stream.reset();
    loaded.reset();
    EXPECT_EQ(entry->references, 1u);
    EXPECT_EQ(__vtsUnregisterGlobRODataReference(id), VTS_STATUS_OK);
    // Without the entry the data comes from the image, and the id stays for the next save.
    ASSERT_EQ(load_file(loaded, image), VTS_STATUS_OK);
    EXPECT_EQ(0, std::memcmp(__vtsSearchChunk(loaded.get(), 1), "eightyes!", 9));
    EXPECT_EQ(image_of(loaded), image);
}

std::int32_t constant_refill(kef_stream*, double* buffer, std::int32_t length, std::int32_t) {
    std::fill_n(buffer, length, 0.5);
    return length;
}

// The image of an abstract stream holds addresses: none but this process's own are accepted.
TEST_F(RngImage, AbstractStreams) {
    double buffer[3] = {0.1, 0.2, 0.3};
    kef_stream* handle = nullptr;
    ASSERT_EQ(__vtsdNewAbstractStream(&handle, 3, buffer, 0, 1, constant_refill), VTS_STATUS_OK);
    const Stream stream(handle);
    draw_doubles(stream, 1);
    const Bytes good = image_of(stream);
    Stream loaded;
    ASSERT_EQ(load_memory(loaded, good), VTS_STATUS_OK);
    EXPECT_EQ(draw_doubles(loaded, 4), (std::vector<double>{0.2, 0.3, 0.5, 0.5}));
    const std::size_t bounds = good.size() - 2 * sizeof(double);
    for (std::size_t i = 20; i < bounds; ++i) {
        Bytes image = good;
        image[i] ^= 0x81;
        const std::int32_t status = load_memory(loaded, image);
        if (status != VTS_STATUS_OK) continue;
        const std::size_t padding[] = {sizeof(void*) == 4 ? SIZE_MAX : 20 + 12};
        EXPECT_TRUE(sizeof(void*) == 8 && ((i >= padding[0] && i < padding[0] + 4) || i >= 20 + 36))
            << i;
    }
}

// 65535 is the most that the chunk count holds. Saving and the size agree.
TEST_F(RngImage, RefusedStreams) {
    const Stream stream = make_stream(VTS_BRNG_MCG59);
    for (int i = 0; i < 65536; ++i)
        ASSERT_EQ(__vtsAddChunk(stream.get(), i, nullptr, nullptr, 0), VTS_STATUS_OK);
    Bytes image(20 + 16 + 65536 * 24, 0xA5);
    EXPECT_EQ(__vtsSaveStreamF(stream.get(), path.c_str(), -1), VTS_STATUS_TOO_LARGE);
    EXPECT_EQ(__vtsSaveStreamM(stream.get(), image.data()), VTS_STATUS_TOO_LARGE);
    EXPECT_EQ(__vtsGetStreamSize(stream.get()), VTS_STATUS_TOO_LARGE);
    EXPECT_EQ(image[0], 0xA5);
    // A generator that is not there.
    reinterpret_cast<kef_stream_header*>(stream.get())->brng = 0x400001;
    EXPECT_EQ(__vtsSaveStreamF(stream.get(), path.c_str(), -1), VTS_STATUS_BAD_BRNG);
    EXPECT_EQ(__vtsSaveStreamM(stream.get(), image.data()), VTS_STATUS_BAD_BRNG);
    EXPECT_EQ(__vtsGetStreamSize(stream.get()), VTS_STATUS_BAD_BRNG);
    EXPECT_EQ(__vtsDeleteChunks(stream.get()), VTS_STATUS_OK);
}

}  // namespace
