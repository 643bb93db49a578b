// Whether members of the library give the same bits: single-precision functions of one argument,
// HA, for every float.
//
//   same_bits LIBRARY [function...]     the member this is linked with against that in a file
//
// Ends with status 1 where they differ.
#include <array>
#include <bit>
#include <chrono>
#include <cinttypes>

#include "bench/other_member.h"
#include "bench/select.h"
#include "include/kef_version.h"

namespace kef {

namespace {

constexpr int slot = 1;  // HA
constexpr std::uint32_t block = 1 << 16;

struct Differences {
    std::uint64_t count = 0;
    std::uint32_t argument = 0, ours = 0, theirs = 0;  // of the first
};

Differences differences(const kef_test::Row& row, const OtherMember& other) {
    static std::array<float, block> x;
    static std::array<std::array<float, block>, 2> ours, theirs;  // of functions with two results
    Differences found;
    std::uint32_t start = 0;
    do {
        for (std::uint32_t i = 0; i < block; ++i) x[i] = std::bit_cast<float>(start + i);
        const auto call = [&](kef_test::Code code, auto& r) {
            row.invoke(code, {block, x.data(), nullptr, nullptr, r[0].data(), r[1].data()});
        };
        call(row.slots[slot], ours);
        call(other.slots(row)[slot], theirs);
        for (int j = 0; j < row.results; ++j)
            for (std::uint32_t i = 0; i < block; ++i) {
                const auto a = std::bit_cast<std::uint32_t>(ours[j][i]);
                const auto b = std::bit_cast<std::uint32_t>(theirs[j][i]);
                if (a != b && found.count++ == 0) found = {1, start + i, a, b};
            }
        start += block;
    } while (start != 0);
    return found;
}

int main(int argc, char** argv) {
    if (argc < 2) return std::fputs("usage: same_bits LIBRARY [function...]\n", stderr), 2;
    const OtherMember other(argv[1]);
    Selection selection;
    for (int i = 2; i < argc; ++i)
        if (!selection.add(argv[i])) return 2;
    kef_vtm_kernel_SetMode(VTM_ERRMODE_IGNORE);
    bool differ = false;
    for (const kef_test::Row* row : selection.rows()) {
        if (row->type != 's' || row->arguments != 1 || row->scalars != 0) continue;
        const auto start = std::chrono::steady_clock::now();
        const Differences found = differences(*row, other);
        const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - start;
        std::printf("%s HA, %s and %s: ", row->name().c_str(), kef_member(), other.name().c_str());
        if (found.count == 0) std::printf("the same bits for every float");
        else
            std::printf("%" PRIu64 " floats differ, first at %08" PRIX32 ": %08" PRIX32
                        " and %08" PRIX32,
                        found.count, found.argument, found.ours, found.theirs);
        std::printf(" (%.0f s)\n", seconds.count());
        std::fflush(stdout);
        differ |= found.count > 0;
    }
    return differ;
}

}  // namespace

}  // namespace kef

int main(int argc, char** argv) { return kef::main(argc, argv); }
