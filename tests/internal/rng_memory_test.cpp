// Streams when there is no memory: every allocation of every call fails once.
#include <cstring>
#include <string>

#include "kef_rng.h"
#include "tests/internal/failing_allocator.h"
#include "tests/rng_streams.h"
#include "tests/system.h"

namespace {

using kef::test::for_each_failed_allocation;

const std::uint32_t shared[4] = {5, 4, 3, 2};

// A stream with private chunks, a shared one, and one that keeps data of its own under an id.
Stream stream_with_chunks(std::int32_t brng) {
    Stream stream = make_stream(brng);
    EXPECT_EQ(__vtsAddChunk(stream.get(), 1, nullptr, nullptr, 100), VTS_STATUS_OK);
    EXPECT_EQ(__vtsAddChunk(stream.get(), 2, shared, nullptr, 8), VTS_STATUS_OK);
    EXPECT_EQ(__vtsAddChunk(stream.get(), 3, shared, __vtsAllocate(9), 9), VTS_STATUS_OK);
    std::memset(__vtsSearchChunk(stream.get(), 3), 'x', 9);
    return stream;
}

class RngMemory : public testing::Test {
protected:
    RngMemory() {
        void* const data = __vtsAllocate(8);
        std::memset(data, 's', 8);
        EXPECT_EQ(__vtsCreateGlobRODataTableEntry(&entry, shared, data), VTS_STATUS_OK);
    }
    ~RngMemory() override {
        EXPECT_EQ(entry->references, 1u) << "a reference is lost";
        EXPECT_EQ(__vtsUnregisterGlobRODataReference(shared), VTS_STATUS_OK);
    }
    kef_shared_entry* entry = nullptr;

    // A call that makes a stream: none is left where it fails.
    template <class Call> long creates(Call call) {
        return for_each_failed_allocation(
            [] { return reinterpret_cast<kef_stream*>(8); },
            [&](kef_stream*& handle) { return call(&handle); },
            [](kef_stream*& handle, std::int32_t status, bool failed) {
                EXPECT_EQ(status, failed ? VTS_STATUS_NO_MEMORY : VTS_STATUS_OK);
                EXPECT_EQ(handle == nullptr, failed);
                __vtsDeleteStream(&handle);
            });
    }

    // A call that changes a stream: it is as it was where the call fails.
    template <class Call> long changes(std::int32_t brng, Call call) {
        const Bytes before = image_of(stream_with_chunks(brng));
        return for_each_failed_allocation(
            [&] { return stream_with_chunks(brng); },
            [&](const Stream& stream) { return call(stream.get()); },
            [&](const Stream& stream, std::int32_t status, bool failed) {
                EXPECT_EQ(status, failed ? VTS_STATUS_NO_MEMORY : VTS_STATUS_OK);
                EXPECT_EQ(image_of(stream) == before, failed);
                // The list has its end still.
                EXPECT_EQ(__vtsAddChunk(stream.get(), 77, nullptr, nullptr, 1), VTS_STATUS_OK);
                EXPECT_NE(__vtsSearchChunk(stream.get(), 77), nullptr);
            });
    }
};

TEST_F(RngMemory, Creation) {
    const std::uint32_t seed = 40;
    for (std::int32_t row = 0; row < 14; ++row) {
        const std::int32_t brng = (row + 1) << 20;
        EXPECT_EQ(creates([&](kef_stream** s) {
                      return __vtsAllocateStream(s, __RegBrngsNew, brng, row, 0);
                  }),
                  1);
        if ((row >= 9 && row <= 11) || row == 13) continue;
        EXPECT_EQ(creates([&](kef_stream** s) { return __vtsNewStreamEx(s, brng, 1, &seed); }), 1);
    }
    std::uint32_t words[2];
    double doubles[2];
    float floats[2];
    EXPECT_EQ(creates([&](kef_stream** s) {
                  return __vtsiNewAbstractStream(s, 2, words,
                                                 [](auto...) { return std::int32_t{0}; });
              }),
              1);
    EXPECT_EQ(creates([&](kef_stream** s) {
                  return __vtsdNewAbstractStream(s, 2, doubles, 0, 1,
                                                 [](auto...) { return std::int32_t{0}; });
              }),
              1);
    EXPECT_EQ(creates([&](kef_stream** s) {
                  return __vtssNewAbstractStream(s, 2, floats, 0, 1,
                                                 [](auto...) { return std::int32_t{0}; });
              }),
              1);
}

// The stream, three chunks, and the data of two of them: shared data is not copied.
TEST_F(RngMemory, Copy) {
    const Stream source = stream_with_chunks(VTS_BRNG_WH + 1);
    EXPECT_EQ(creates([&](kef_stream** s) { return __vtsCopyStream(s, source.get()); }), 6);
}

TEST_F(RngMemory, Chunks) {
    const auto add = [](const std::uint32_t* id, std::int32_t size) {
        return [=](kef_stream* s) { return __vtsAddChunk(s, 9, id, nullptr, size); };
    };
    EXPECT_EQ(changes(VTS_BRNG_MCG59, add(nullptr, 50)), 2);
    EXPECT_EQ(changes(VTS_BRNG_MCG59, add(nullptr, 0)), 1);
    EXPECT_EQ(changes(VTS_BRNG_MCG59, add(shared, 8)), 1);
    // Roll-back, behind chunks of its own, on an empty list, and of a copy onto itself.
    const Stream source = stream_with_chunks(VTS_BRNG_MCG59);
    const auto copy = [&](kef_stream* s) { return __vtsCopyChunks(s, source.get()); };
    EXPECT_EQ(changes(VTS_BRNG_MCG59, copy), 5);
    EXPECT_EQ(changes(VTS_BRNG_MCG59, [](kef_stream* s) { return __vtsCopyChunks(s, s); }), 5);
    for_each_failed_allocation([] { return make_stream(VTS_BRNG_MCG59); },
                               [&](const Stream& s) { return copy(s.get()); },
                               [](const Stream& s, std::int32_t status, bool failed) {
                                   EXPECT_EQ(status, failed ? VTS_STATUS_NO_MEMORY : VTS_STATUS_OK);
                                   EXPECT_EQ(__vtsGetNumChunks(s.get()), failed ? 0 : 3);
                               });
}

TEST_F(RngMemory, SaveAndLoad) {
    const Stream source = stream_with_chunks(VTS_BRNG_MT2203 + 7);
    const Bytes image = image_of(source);
    const std::string path = kef_test::scratch_file("kef_rng_memory");
    const auto length = static_cast<std::int32_t>(path.size());
    EXPECT_EQ(for_each_failed_allocation(
                  [] { return 0; },
                  [&](int) { return __vtsSaveStreamF(source.get(), path.c_str(), length); },
                  [](int, std::int32_t status, bool failed) {
                      EXPECT_EQ(status, failed ? VTS_STATUS_NO_MEMORY : VTS_STATUS_OK);
                  }),
              1);
    EXPECT_EQ(creates([&](kef_stream** s) { return __vtsLoadStreamF(s, path.c_str(), length); }),
              8);
    EXPECT_EQ(creates([&](kef_stream** s) { return __vtsLoadStreamM(s, image.data()); }), 7);
    EXPECT_EQ(creates([&](kef_stream** s) {
                  return __vtsLoadStreamMBounded(s, image.data(), image.size());
              }),
              7);
    // Data that is read piece by piece, in a growing block.
    const Stream large = make_stream(VTS_BRNG_MCG59);
    ASSERT_EQ(__vtsAddChunk(large.get(), 1, nullptr, nullptr, 300000), VTS_STATUS_OK);
    ASSERT_EQ(__vtsSaveStreamF(large.get(), path.c_str(), -1), VTS_STATUS_OK);
    EXPECT_GE(creates([&](kef_stream** s) { return __vtsLoadStreamF(s, path.c_str(), -1); }), 5);
    std::remove(path.c_str());
}

TEST_F(RngMemory, Jumps) {
    for (const std::int32_t brng : {VTS_BRNG_MT19937, VTS_BRNG_SFMT19937})
        EXPECT_GE(
            changes(brng,
                    [](kef_stream* s) { return __vtsSkipAheadStream(s, (UINT64_C(1) << 40) + 7); }),
            1);
}

}  // namespace
