// Load and unload, the ends of threads and of the process, and no memory.
#include <gtest/gtest.h>

#include "places.h"
#include "tests/system.h"

namespace kef_test {
namespace {

const char fatal[] = "Fatal error: memory allocation failed.\n";

// Threads are slow under a sanitizer.
#if defined(KEF_SANITIZE)
const char rounds[] = "1000";
#else
const char rounds[] = "10000";
#endif

void expect_success(const Outcome& outcome) {
    EXPECT_EQ(outcome.exit_code, 0) << outcome.err;
    EXPECT_EQ(outcome.err, "");
}

#if !defined(KEF_STATIC)
TEST(Lifecycle, LoadedAndUnloadedWhileThreadsLive) {
    expect_success(run_client("loader", {"loop", library()}));
}

TEST(Lifecycle, UnloadedByAnExitHandler) {
    expect_success(run_client("loader", {"exit", library()}));
}

TEST(Lifecycle, UnloadedWhileThreadsEnd) {
    expect_success(run_client("loader", {"race", library(), rounds}));
}

TEST(Lifecycle, LoadedInTurnsWithAnotherLibrary) {
    expect_success(
        run_client("loader", {"alternate", library(), "1000", KEF_CLIENT_DIR "/libneighbour.so"}));
}

TEST(Lifecycle, WorksWithoutAKeyForThreads) {
    expect_success(run_client("loader", {"keys", library()}));
}

#endif

// A program with the shared library, and one that holds what it needs of the archive.
const char* const programs[] = {"life", "life_static"};

TEST(Lifecycle, ThreadsGiveTheirBlocksBack) {
    for (const char* program : programs) expect_success(run_client(program, {"threads"}));
}

TEST(Lifecycle, ProcessEndsWhileThreadsCompute) {
    for (const char* program : programs)
        for (int i = 0; i < 10; ++i) expect_success(run_client(program, {"busy"}));
}

TEST(Lifecycle, ForkedWhileAThreadHoldsTheSharedTable) {
    for (const char* program : programs) expect_success(run_client(program, {"forks"}));
}

#if !defined(KEF_SANITIZE)
TEST(Lifecycle, FirstUseWhileTheProcessExits) {
    for (const char* program : programs) expect_success(run_client(program, {"latecomer"}));
}

TEST(Lifecycle, NoMemoryForABlockIsFatal) {
    for (const char* program : programs) {
        const Outcome outcome = run_client(program, {"memory"});
        EXPECT_EQ(outcome.exit_code, 1);
        EXPECT_EQ(outcome.err, fatal);
    }
}
#endif

}  // namespace
}  // namespace kef_test
