// The DLL in programs that load it while they run: threads, unloading, the end of the process, and
// the errno of other C libraries.
#include <gtest/gtest.h>

#include "tests/system.h"

namespace kef_test {
namespace {

TEST(Lifecycle, LoadedByPrograms) {
    for (const char* what : {"threads", "loop", "terminated", "exits"})
        EXPECT_EQ(run_client("life", {what, library()}).exit_code, 0) << what;
}

// The modules whose errno is found, each in a program of its own.
TEST(Errors, ErrnoOfEveryCLibrary) {
    const struct {
        const char *program, *module;
    } hosts[] = {
        {"errno_host", "msvcrt.dll"},       {"errno_host", "msvcr100.dll"},
        {"errno_host", "msvcr90.dll"},      {"errno_host", "msvcr80.dll"},
        {"errno_host", "msvcr71.dll"},      {"errno_host", "msvcr70.dll"},
        {"errno_ucrtbase", "ucrtbase.dll"}, {"errno_msvcr110", "msvcr110.dll"},
        {"errno_msvcr120", "msvcr120.dll"},
    };
    for (const auto& host : hosts) {
        const Outcome outcome = run_client(host.program, {library(), host.module});
        if (outcome.exit_code == 77) continue;  // not on this system
        EXPECT_EQ(outcome.exit_code, 0) << host.module;
        EXPECT_EQ(outcome.out, "errno 34, last error 4711\n") << host.module;
    }
}

}  // namespace
}  // namespace kef_test
