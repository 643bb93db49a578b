// The stream object: registry, life, chunks, shared data.
#include "tests/rng_streams.h"

#include <cstring>
#include <iterator>

#include "tests/internal/failing_allocator.h"

namespace {

TEST(RngStreams, Ids) {
    struct Case {
        std::int32_t id;
        bool valid;
    };
    for (const auto& [id, good] : {Case{0, true},
                                   {276, true},
                                   {277, true},
                                   {278, true},
                                   {279, false},
                                   {-1, false},
                                   {INT32_MIN, false},
                                   {0xFFFFF, false},
                                   {0x100000, true},
                                   {0x100001, false},
                                   {0x500000 + 272, true},
                                   {0x500000 + 273, false},
                                   {0x900000 + 6023, true},
                                   {0x900000 + 6024, false},
                                   {0xA00001, false},
                                   {0xB00001, false},
                                   {0x7FF00000, false},
                                   {0x7FFFFFFF, false}}) {
        kef_stream* stream = nullptr;
        EXPECT_EQ(__vtsNewStreamEx(&stream, id, 0, nullptr),
                  good ? VTS_STATUS_OK : VTS_STATUS_BAD_BRNG)
            << id;
        kef_brng row;
        EXPECT_EQ(__vtsGetBrngProperties(id, &row), good ? VTS_STATUS_OK : VTS_STATUS_BAD_BRNG)
            << id;
        if (good) EXPECT_EQ(__vtsGetStreamStateBrng(stream), id);
        EXPECT_EQ(stream != nullptr, good);
        __vtsDeleteStream(&stream);
        EXPECT_EQ(stream, nullptr);
    }
    for (const std::int32_t id : {0xA00000, 0xB00000, 0xC00000}) {
        kef_stream* stream = reinterpret_cast<kef_stream*>(&stream);
        EXPECT_EQ(__vtsNewStreamEx(&stream, id, 0, nullptr), VTS_STATUS_BAD_BRNG);
        EXPECT_EQ(stream, reinterpret_cast<kef_stream*>(&stream)) << "handle touched";
    }
    std::int32_t row, sub;
    EXPECT_EQ(__vtsGetBrngBaseOffset(276, &row, &sub), __RegBrngs);
    EXPECT_EQ(row, 4);
    EXPECT_EQ(sub, 272);
    EXPECT_EQ(__vtsGetBrngBaseOffset(0x900000 + 6023, &row, &sub), __RegBrngsNew);
    EXPECT_EQ(row, 8);
    EXPECT_EQ(sub, 6023);
    EXPECT_EQ(__vtsIsBrngValid(__RegBrngs, 278, 999), VTS_STATUS_OK);
    EXPECT_EQ(__vtsIsBrngValid(__RegBrngs, 279, 0), VTS_STATUS_BAD_BRNG);
    EXPECT_EQ(__vtsIsBrngValid(__RegBrngsNew, -1, 0), VTS_STATUS_BAD_BRNG);
    // Both tables hold the same rows.
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ(0, std::memcmp(&__RegBrngs[i], &__RegBrngsNew[i], sizeof(kef_brng)));
    for (int i = 4; i < 277; ++i)
        EXPECT_EQ(0, std::memcmp(&__RegBrngs[i], &__RegBrngsNew[4], sizeof(kef_brng)));
    EXPECT_EQ(0, std::memcmp(&__RegBrngs[277], &__RegBrngsNew[5], 2 * sizeof(kef_brng)));
}

std::int32_t user_init(std::int32_t method, kef_stream*, std::int32_t, const std::uint32_t*) {
    return method == VTS_INIT_SEED ? -4242 : VTS_STATUS_NO_LEAPFROG;
}
std::int32_t user_float(kef_stream*, std::int32_t, float*, float, float) { return 0; }
std::int32_t user_double(kef_stream*, std::int32_t, double*, double, double) { return 0; }
std::int32_t user_bits(kef_stream*, std::int32_t, void*) { return 0; }

TEST(RngStreams, Registration) {
    const kef_brng good = {64, 1, 0, 4, 32, user_init, user_float, user_double, user_bits};
    const auto refused = [&good](auto change, std::int32_t status) {
        kef_brng brng = good;
        change(brng);
        EXPECT_EQ(__vtsRegisterBrng(&brng), status);
    };
    refused([](kef_brng& b) { b.stream_state_size = -1, b.word_size = 5; },
            VTS_STATUS_BAD_STATE_SIZE);
    refused([](kef_brng& b) { b.word_size = 5, b.seed_count = 0; }, VTS_STATUS_BAD_WORD_SIZE);
    refused([](kef_brng& b) { b.seed_count = 0, b.bit_count = 0; }, VTS_STATUS_BAD_SEED_COUNT);
    refused([](kef_brng& b) { b.bit_count = 0, b.init_stream = nullptr; },
            VTS_STATUS_BAD_BIT_COUNT);
    refused([](kef_brng& b) { b.init_stream = nullptr; }, VTS_STATUS_NULL_ENTRY);
    refused([](kef_brng& b) { b.generate_double = nullptr; }, VTS_STATUS_NULL_ENTRY);
    refused([](kef_brng& b) { b.generate_float = nullptr; }, VTS_STATUS_NULL_ENTRY);
    refused([](kef_brng& b) { b.generate_bits = nullptr; }, VTS_STATUS_NULL_ENTRY);

    const std::int32_t rows = __vtsGetNumRegBrngs();
    EXPECT_GE(rows, 14);
    const std::int32_t id = __vtsRegisterBrng(&good);
    EXPECT_EQ(id, (rows + 1) << 20);
    EXPECT_EQ(__vtsGetNumRegBrngs(), rows + 1);
    EXPECT_EQ(0, std::memcmp(&__RegBrngsNew[rows], &good, sizeof good));
    kef_stream* stream = nullptr;
    EXPECT_EQ(__vtsNewStreamEx(&stream, id + 1, 0, nullptr), VTS_STATUS_BAD_BRNG);
    // A failed seeding leaves a stream to delete.
    EXPECT_EQ(__vtsNewStreamEx(&stream, id, 0, nullptr), -4242);
    ASSERT_NE(stream, nullptr);
    EXPECT_EQ(__vtsGetStreamStateBrng(stream), id);
    EXPECT_EQ(__vtsDeleteStream(&stream), VTS_STATUS_OK);
    // A state smaller than the header still gets one.
    kef_brng tiny = good;
    tiny.stream_state_size = 0;
    kef_stream *small = nullptr, *copy = nullptr;
    EXPECT_EQ(__vtsNewStreamEx(&small, __vtsRegisterBrng(&tiny), 0, nullptr), -4242);
    EXPECT_EQ(__vtsCopyStream(&copy, small), VTS_STATUS_OK);
    EXPECT_EQ(__vtsCopyStreamState(copy, small), VTS_STATUS_OK);
    EXPECT_EQ(__vtsGetStreamSize(copy), 20);
    __vtsDeleteStream(&small);
    __vtsDeleteStream(&copy);
}

// In a process of its own: the rows stay.
TEST(RngStreams, RegistryHolds512Rows) {
    const auto fill = [] {
        const kef_brng row = {64, 1, 0, 4, 32, user_init, user_float, user_double, user_bits};
        for (std::int32_t rows = __vtsGetNumRegBrngs(); rows < 512; ++rows)
            if (__vtsRegisterBrng(&row) != (rows + 1) << 20) std::exit(1);
        std::exit(__vtsRegisterBrng(&row) == VTS_STATUS_REGISTRY_FULL ? 0 : 2);
    };
    EXPECT_EXIT(fill(), testing::ExitedWithCode(0), "");
}

TEST(RngStreams, BlocksAndHeader) {
    const Stream stream = make_stream(VTS_BRNG_MCG31M1);
    const auto* header = reinterpret_cast<const kef_stream_header*>(stream.get());
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(header) % 128, 0u);
    EXPECT_EQ(header->brng, VTS_BRNG_MCG31M1);
    EXPECT_EQ(header->created, 1u);
    EXPECT_EQ(header->first, nullptr);
    EXPECT_EQ(header->last, nullptr);
}

TEST(RngStreams, CopiesContinueAlike) {
    for (const std::int32_t brng : repeatable_generators) {
        const Stream stream = make_stream(brng);
        draw_raw(stream, 700);
        const Stream copy = copy_of(stream), other = make_stream(brng, {5});
        const auto next = draw_raw(copy_of(stream), 1500);
        EXPECT_EQ(draw_raw(copy, 1500), next) << brng;
        EXPECT_EQ(__vtsCopyStreamState(other.get(), stream.get()), VTS_STATUS_OK);
        EXPECT_EQ(draw_raw(other, 1500), next) << brng;
    }
    const auto copy_state = [](std::int32_t to, std::int32_t from) {
        const Stream destination = make_stream(to), source = make_stream(from, {5});
        const std::int32_t status = __vtsCopyStreamState(destination.get(), source.get());
        if (status == VTS_STATUS_OK) EXPECT_EQ(draw_raw(destination, 9), draw_raw(source, 9));
        return status;
    };
    EXPECT_EQ(copy_state(VTS_BRNG_MT2203, VTS_BRNG_MT2203 + 1), VTS_STATUS_BAD_BRNG);
    EXPECT_EQ(copy_state(VTS_BRNG_WH + 3, 8), VTS_STATUS_BAD_BRNG);
    // A small id and a family id of one generator.
    EXPECT_EQ(copy_state(VTS_BRNG_WH + 3, 7), VTS_STATUS_OK);
    EXPECT_EQ(copy_state(278, VTS_BRNG_NIEDERR), VTS_STATUS_OK);
}

void* block_of(std::initializer_list<char> bytes) {
    auto* block = static_cast<char*>(__vtsAllocate(bytes.size()));
    std::copy(bytes.begin(), bytes.end(), block);
    return block;
}

TEST(RngStreams, Chunks) {
    const Stream stream = make_stream(VTS_BRNG_MCG59);
    EXPECT_EQ(__vtsGetNumChunks(stream.get()), 0);
    EXPECT_EQ(__vtsSearchChunk(stream.get(), 1), nullptr);
    void* const first = block_of({1, 2, 3});
    EXPECT_EQ(__vtsAddChunk(stream.get(), 1, nullptr, first, 3), VTS_STATUS_OK);
    EXPECT_EQ(_vtsAddChunk(stream.get(), 1, nullptr, block_of({4}), 1), VTS_STATUS_OK);
    void* const used_before = __vtsAllocate(20);
    std::memset(used_before, 0xFF, 20);
    __vtsFree(used_before);
    EXPECT_EQ(_vtsAddChunk(stream.get(), -7, nullptr, nullptr, 20), VTS_STATUS_OK);
    EXPECT_EQ(__vtsGetNumChunks(stream.get()), 3);
    EXPECT_EQ(__vtsSearchChunk(stream.get(), 1), first) << "the first one with the key";
    const char zeros[20] = {};
    EXPECT_EQ(0, std::memcmp(_vtsSearchChunk(stream.get(), -7), zeros, 20));

    // A copy has chunks of its own, in the same order.
    Stream copy = copy_of(stream);
    EXPECT_EQ(_vtsGetNumChunks(copy.get()), 3);
    auto* copied = static_cast<char*>(__vtsSearchChunk(copy.get(), 1));
    EXPECT_NE(copied, first);
    EXPECT_EQ(copied[2], 3);
    EXPECT_EQ(__vtsCopyChunks(copy.get(), copy.get()), VTS_STATUS_OK);
    EXPECT_EQ(__vtsGetNumChunks(copy.get()), 6);
    EXPECT_EQ(__vtsCopyChunks(copy.get(), stream.get()), VTS_STATUS_OK);
    EXPECT_EQ(__vtsGetNumChunks(copy.get()), 9);
    EXPECT_EQ(__vtsDeleteChunks(copy.get()), VTS_STATUS_OK);
    EXPECT_EQ(__vtsGetNumChunks(copy.get()), 0);
    EXPECT_EQ(_vtsCopyChunks(copy.get(), stream.get()), VTS_STATUS_OK);
    EXPECT_EQ(__vtsGetNumChunks(copy.get()), 3);
    EXPECT_EQ(_vtsDeleteChunks(stream.get()), VTS_STATUS_OK);
    EXPECT_EQ(static_cast<char*>(__vtsSearchChunk(copy.get(), 1))[1], 2);
}

TEST(RngStreams, SharedData) {
    kef_shared_entry* entry = nullptr;
    const std::uint32_t zero[4] = {};
    EXPECT_EQ(__vtsFindGlobRODataTableEntry(nullptr, &entry), VTS_STATUS_RO_ENTRY_NOT_FOUND);
    EXPECT_EQ(__vtsFindGlobRODataTableEntry(zero, &entry), VTS_STATUS_RO_ENTRY_NOT_FOUND);

    std::uint32_t id[4];
    ASSERT_EQ(__vtsGenerateNewGlobalRODataTableEntryId(id, -3), VTS_STATUS_OK);
    EXPECT_EQ(id[2], static_cast<std::uint32_t>(-3));
    EXPECT_EQ(id[3], 0xFFFFFFFFu);
    EXPECT_EQ(__vtsFindGlobRODataTableEntry(id, &entry), VTS_STATUS_RO_ENTRY_NOT_FOUND);
    void* const data = block_of({5, 6, 7, 8});
    ASSERT_EQ(__vtsCreateGlobRODataTableEntry(&entry, id, data), VTS_STATUS_OK);
    EXPECT_EQ(entry->references, 1u);

    // Chunks refer to the data; copies and deletions of streams count.
    Stream stream = make_stream(VTS_BRNG_MCG59);
    ASSERT_EQ(__vtsAddChunk(stream.get(), 9, id, block_of({0, 0}), 4), VTS_STATUS_OK);
    EXPECT_EQ(__vtsSearchChunk(stream.get(), 9), data);
    EXPECT_EQ(entry->references, 2u);
    Stream copy = copy_of(stream);
    EXPECT_EQ(__vtsSearchChunk(copy.get(), 9), data);
    EXPECT_EQ(entry->references, 3u);
    stream.reset();
    EXPECT_EQ(entry->references, 2u);
    kef_chunk chunk = {};
    EXPECT_EQ(__vtsRegisterGlobRODataReference(id, &chunk), VTS_STATUS_OK);
    EXPECT_EQ(chunk.data, data);
    EXPECT_EQ(__vtsUnregisterGlobRODataReference(id), VTS_STATUS_OK);

    // A chunk attached under an absent id keeps data of its own, also when the entry comes later.
    const std::uint32_t late[4] = {1, 2, 3, 4};
    ASSERT_EQ(__vtsAddChunk(copy.get(), 10, late, block_of({1}), 1), VTS_STATUS_OK);
    kef_shared_entry* late_entry = nullptr;
    ASSERT_EQ(__vtsCreateGlobRODataTableEntry(&late_entry, late, nullptr), VTS_STATUS_OK);
    // Nor does one without data take or give back a reference.
    const std::uint32_t later[4] = {1, 2, 3, 5};
    ASSERT_EQ(__vtsAddChunk(copy.get(), 11, later, nullptr, 64), VTS_STATUS_OK);
    kef_shared_entry* later_entry = nullptr;
    ASSERT_EQ(__vtsCreateGlobRODataTableEntry(&later_entry, later, nullptr), VTS_STATUS_OK);
    copy_of(copy).reset();
    EXPECT_EQ(later_entry->references, 1u);
    copy.reset();
    EXPECT_EQ(__vtsFindGlobRODataTableEntry(later, &later_entry), VTS_STATUS_OK);
    EXPECT_EQ(later_entry->references, 1u);
    EXPECT_EQ(__vtsUnregisterGlobRODataReference(later), VTS_STATUS_OK);
    EXPECT_EQ(late_entry->references, 1u);
    EXPECT_EQ(entry->references, 1u);

    // The last entry moves into the place of a removed one.
    EXPECT_EQ(__vtsUnregisterGlobRODataReference(id), VTS_STATUS_OK);
    EXPECT_EQ(__vtsFindGlobRODataTableEntry(id, &entry), VTS_STATUS_RO_ENTRY_NOT_FOUND);
    EXPECT_EQ(__vtsUnregisterGlobRODataReference(id), VTS_STATUS_RO_ENTRY_NOT_FOUND);
    EXPECT_EQ(__vtsRegisterGlobRODataReference(id, &chunk), VTS_STATUS_RO_ENTRY_NOT_FOUND);
    EXPECT_EQ(__vtsFindGlobRODataTableEntry(late, &entry), VTS_STATUS_OK);
    EXPECT_EQ(__vtsUnregisterGlobRODataReference(late), VTS_STATUS_OK);

    std::uint32_t ids[128][4];
    for (std::uint32_t i = 0; i < 128; ++i) {
        ids[i][0] = i, ids[i][1] = ids[i][2] = 0, ids[i][3] = 9;
        ASSERT_EQ(__vtsCreateGlobRODataTableEntry(&entry, ids[i], nullptr), VTS_STATUS_OK);
    }
    EXPECT_EQ(__vtsCreateGlobRODataTableEntry(&entry, id, nullptr), VTS_STATUS_RO_TABLE_FULL);
    for (const auto& i : ids) EXPECT_EQ(__vtsUnregisterGlobRODataReference(i), VTS_STATUS_OK);
}

// A chunk refers only where the entry holds as many bytes as the chunk says that it has: what is
// copied and saved is what is there.
TEST(RngStreams, SharedSizes) {
    const std::uint32_t id[4] = {9, 9, 9, 1};
    void* const large = __vtsAllocate(4096);
    std::memset(large, 0x5A, 4096);
    // Own data under an absent id, and an entry of 16 bytes that comes later.
    const Stream stream = make_stream(VTS_BRNG_MCG59);
    ASSERT_EQ(__vtsAddChunk(stream.get(), 1, id, large, 4096), VTS_STATUS_OK);
    kef_shared_entry* entry = nullptr;
    void* const small = block_of({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16});
    ASSERT_EQ(__vtsCreateGlobRODataTableEntry(&entry, id, small), VTS_STATUS_OK);
    const Bytes image = image_of(stream);
    EXPECT_EQ(image.size(), 20u + 16 + 24 + 4096);
    {
        const Stream copy = copy_of(stream);
        EXPECT_EQ(image_of(copy), image);
        EXPECT_EQ(entry->references, 1u);
        // A chunk without data gets none, and one that fits refers.
        ASSERT_EQ(__vtsAddChunk(copy.get(), 7, id, nullptr, 4096), VTS_STATUS_OK);
        EXPECT_EQ(__vtsSearchChunk(copy.get(), 7), nullptr);
        ASSERT_EQ(__vtsAddChunk(copy.get(), 8, id, nullptr, 17), VTS_STATUS_OK);
        EXPECT_EQ(__vtsSearchChunk(copy.get(), 8), nullptr);
        EXPECT_EQ(entry->references, 1u);
        ASSERT_EQ(__vtsAddChunk(copy.get(), 9, id, nullptr, 16), VTS_STATUS_OK);
        EXPECT_EQ(__vtsSearchChunk(copy.get(), 9), small);
        EXPECT_EQ(entry->references, 2u);
        EXPECT_EQ(image_of(copy).size(), image.size() + 3 * 24 + 16);
        EXPECT_EQ(entry->references, 2u);
    }
    EXPECT_EQ(entry->references, 1u);
    kef_chunk chunk = {};
    chunk.size = 17;
    EXPECT_EQ(__vtsRegisterGlobRODataReference(id, &chunk), VTS_STATUS_BAD_ARGUMENT);
    EXPECT_EQ(chunk.data, nullptr);
    EXPECT_EQ(entry->references, 1u);
    // An entry without data holds none that could be lost.
    const std::uint32_t empty[4] = {9, 9, 9, 2};
    ASSERT_EQ(__vtsCreateGlobRODataTableEntry(&entry, empty, nullptr), VTS_STATUS_OK);
    ASSERT_EQ(__vtsAddChunk(stream.get(), 2, empty, nullptr, 5), VTS_STATUS_OK);
    EXPECT_EQ(entry->references, 2u);
    ASSERT_EQ(__vtsAddChunk(stream.get(), 3, empty, block_of({7}), 1), VTS_STATUS_OK);
    EXPECT_EQ(entry->references, 2u);
    EXPECT_EQ(*static_cast<char*>(__vtsSearchChunk(stream.get(), 3)), 7);
    EXPECT_EQ(__vtsDeleteChunks(stream.get()), VTS_STATUS_OK);
    EXPECT_EQ(entry->references, 1u);
    EXPECT_EQ(__vtsUnregisterGlobRODataReference(empty), VTS_STATUS_OK);
    EXPECT_EQ(__vtsUnregisterGlobRODataReference(id), VTS_STATUS_OK);
}

// One Unregister too many takes the entry from the table, and the data from nobody.
TEST(RngStreams, SharedDataOutlivesItsEntry) {
    const long before = kef::test::live_blocks();
    const std::uint32_t id[4] = {7, 7, 7, 7};
    kef_shared_entry* entry = nullptr;
    void* const data = block_of({1, 2, 3});
    ASSERT_EQ(__vtsCreateGlobRODataTableEntry(&entry, id, data), VTS_STATUS_OK);
    Stream first = make_stream(VTS_BRNG_MCG59), second = make_stream(VTS_BRNG_MCG59), third;
    ASSERT_EQ(__vtsAddChunk(first.get(), 1, id, nullptr, 3), VTS_STATUS_OK);
    ASSERT_EQ(__vtsAddChunk(second.get(), 1, id, nullptr, 3), VTS_STATUS_OK);
    const Bytes image = image_of(first);
    for (int i = 0; i < 3; ++i) EXPECT_EQ(__vtsUnregisterGlobRODataReference(id), VTS_STATUS_OK);
    EXPECT_EQ(__vtsFindGlobRODataTableEntry(id, &entry), VTS_STATUS_RO_ENTRY_NOT_FOUND);
    EXPECT_EQ(__vtsUnregisterGlobRODataReference(id), VTS_STATUS_RO_ENTRY_NOT_FOUND);
    EXPECT_EQ(image_of(first), image);
    // A new entry of the id is another one.
    ASSERT_EQ(__vtsCreateGlobRODataTableEntry(&entry, id, nullptr), VTS_STATUS_OK);
    first.reset();
    third = copy_of(second);
    EXPECT_EQ(__vtsSearchChunk(third.get(), 1), data);
    second.reset();
    EXPECT_EQ(image_of(third), image);
    EXPECT_EQ(entry->references, 1u);
    third.reset();
    EXPECT_EQ(__vtsUnregisterGlobRODataReference(id), VTS_STATUS_OK);
    EXPECT_EQ(kef::test::live_blocks(), before);
}

TEST(RngStreams, Blocks) {
    void* const block = __vtsAllocate(1000);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % 128, 0u);
    std::memset(block, 1, 1000);
    __vtsFree(block);
    __vtsFree(nullptr);
    EXPECT_EQ(__vtsAllocate(~std::uint64_t{0}), nullptr);
    EXPECT_EQ(__vtsAllocate(SIZE_MAX), nullptr);
}

TEST(RngStreams, QuasiRandomParameters) {
    kef_stream* stream = nullptr;
    std::vector<std::uint32_t> numbers(1 + 32 * 88);
    const auto create = [&](std::int32_t brng, std::uint32_t dimension, int n) {
        numbers[0] = dimension;
        for (int i = 1; i < n; ++i) numbers[i] = 0x80000000u >> ((i - 1) % 32);
        const std::int32_t status = __vtsNewStreamEx(&stream, brng, n, numbers.data());
        const Stream owner(stream);
        if (status != VTS_STATUS_OK) return status;
        // Van der Corput in every coordinate.
        const auto words = draw_raw(owner, 3 * static_cast<int>(dimension));
        for (std::uint32_t c = 0; c < dimension; ++c) {
            EXPECT_EQ(words[c], 0x80000000u);
            EXPECT_EQ(words[dimension + c], 0xC0000000u);
            EXPECT_EQ(words[2 * dimension + c], 0x40000000u);
        }
        return status;
    };
    for (const int d : {1, 3, 40, 44, 45, 88})
        EXPECT_EQ(create(VTS_BRNG_SOBOL, d, 1 + 32 * d), VTS_STATUS_OK) << d;
    numbers.resize(1 + 32 * 328);
    EXPECT_EQ(create(VTS_BRNG_SOBOL, 89, 1 + 32 * 89), VTS_STATUS_BAD_ARGUMENT);
    EXPECT_EQ(create(VTS_BRNG_SOBOL, 3, 1 + 32 * 3 - 1), VTS_STATUS_BAD_ARGUMENT);
    EXPECT_EQ(create(VTS_BRNG_SOBOL, 0x80000000u, 2), VTS_STATUS_BAD_ARGUMENT);
    EXPECT_EQ(create(VTS_BRNG_NIEDERR, 327, 1 + 32 * 327), VTS_STATUS_OK);
    EXPECT_EQ(create(VTS_BRNG_NIEDERR, 328, 1 + 32 * 328), VTS_STATUS_BAD_ARGUMENT);
}

}  // namespace
