// Load and unload, the ends of threads and of the process, and no memory.
#include <gtest/gtest.h>

#include "places.h"
#include "tests/process.h"

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

TEST(Lifecycle, LoadedAndUnloadedWhileThreadsLive) {
    expect_success(run_client("loader", {"loop", KEF_LIBRARY}));
}

TEST(Lifecycle, UnloadedByAnExitHandler) {
    expect_success(run_client("loader", {"exit", KEF_LIBRARY}));
}

TEST(Lifecycle, ThreadsGiveTheirBlocksBack) { expect_success(run_client("control", {"threads"})); }

TEST(Lifecycle, ProcessEndsWhileThreadsCompute) {
    for (int i = 0; i < 10; ++i) expect_success(run_client("control", {"busy"}));
}

TEST(Lifecycle, UnloadedWhileThreadsEnd) {
    expect_success(run_client("loader", {"race", KEF_LIBRARY, rounds}));
}

TEST(Lifecycle, LoadedInTurnsWithAnotherLibrary) {
    expect_success(run_client(
        "loader", {"alternate", KEF_LIBRARY, "1000", KEF_CLIENT_DIR "/libneighbour.so"}));
}

TEST(Lifecycle, WorksWithoutAKeyForThreads) {
    expect_success(run_client("loader", {"keys", KEF_LIBRARY}));
}

TEST(Lifecycle, ForkedWhileAThreadHoldsTheSharedTable) {
    expect_success(run_client("control", {"forks"}));
}

#if !defined(KEF_SANITIZE)
TEST(Lifecycle, FirstUseWhileTheProcessExits) {
    expect_success(run_client("control", {"latecomer"}));
}

TEST(Lifecycle, NoMemoryForABlockIsFatal) {
    const Outcome outcome = run_client("control", {"memory"});
    EXPECT_EQ(outcome.exit_code, 1);
    EXPECT_EQ(outcome.err, fatal);
}
#endif

}  // namespace
}  // namespace kef_test
