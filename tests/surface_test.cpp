// The exported surface: names, tables and entry points.
#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <set>
#include <sstream>

#include "include/kef_version.h"
#include "places.h"
#include "tests/rows.h"
#include "tests/system.h"

namespace kef_test {
namespace {

// A function that is switched on has its special results documented, its figures measured
// and, as a real function, its line in the example.
TEST(Surface, EveryFunctionIsDocumented) {
    const auto text_of = [](const char* path) {
        std::ifstream file(std::string(KEF_SOURCE_DIR) + path);
        return std::string(std::istreambuf_iterator<char>(file), {});
    };
    const std::string errors = text_of("/docs/errors.md"),
                      lines = text_of("/examples/functions.def");
    const std::string accuracy = text_of("/docs/accuracy.md"),
                      speed = text_of("/docs/performance.md");
    for (const Row& row : rows()) {
        const std::string name = row.function, figures = "| " + row.name() + " ";
        EXPECT_NE(errors.find("`" + name + "`"), errors.npos) << name;
        if (name.find("ack") != name.npos) continue;
        if (row.type == 's' || row.type == 'd')
            EXPECT_NE(lines.find("(" + name + ", "), lines.npos) << name;
        EXPECT_NE(accuracy.find(figures), accuracy.npos) << row.name();
        EXPECT_NE(speed.find(figures), speed.npos) << row.name();
    }
}

TEST(Surface, ListsEveryFunctionOfEveryType) {
    EXPECT_EQ(rows_of_type('s'), 57);
    EXPECT_EQ(rows_of_type('d'), 57);
    EXPECT_EQ(rows_of_type('c'), 33);
    EXPECT_EQ(rows_of_type('z'), 33);
}

TEST(Surface, FourNamesOfARowReachItsSlots) {
    for (const Row& row : rows()) {
        SCOPED_TRACE(row.name());
        EXPECT_EQ(row.entries[3] == row.entries[1], row.name() != "zPowx")
            << "whether the plain name is the entry of slot 1";
        EXPECT_NE(row.entries[0], row.entries[1]);
        EXPECT_NE(row.entries[2], row.entries[1]);
        for (int i : {0, 1, 2})
            for (int j : {0, 1, 2})
                if (std::string(row.kernels[i]) == row.kernels[j]) {
                    EXPECT_EQ(row.slots[i], row.slots[j]);
                    EXPECT_EQ(row.costs[i], row.costs[j]);
                } else {
                    EXPECT_NE(row.slots[i], row.slots[j]);
                }
    }
    EXPECT_EQ(kef_version(), KEF_VERSION);
}

// The member that this build is, or that ./run test lets these programs run with.
TEST(Surface, MemberIsTheOneMeant) {
    const char* const meant = std::getenv("KEF_TEST_MEMBER");
    EXPECT_STREQ(kef_member(), meant != nullptr ? meant : KEF_MEMBER);
    const std::vector<std::string> members = {"generic", "x86-64-v3", "x86-64-v4"};
    EXPECT_EQ(dll_cpu_version(),
              std::find(members.begin(), members.end(), kef_member()) - members.begin());
}

TEST(Surface, CostsStandBehindTheSlots) {
    for (const Row& row : rows()) {
        SCOPED_TRACE(row.name());
        EXPECT_EQ(static_cast<const void*>(row.costs), row.slots + 3);
#if !defined(KEF_STATIC)
        EXPECT_EQ(row.slots, exported("kef_vtm_kernel_" + row.name() + "_ttab"));
        EXPECT_EQ(row.costs, exported("kef_vtm_kernel_" + row.name() + "_ctab"));
#endif
        for (int slot : {0, 1, 2})
            EXPECT_TRUE(row.element_wise() ? row.costs[slot] > 0 : row.costs[slot] == 1111.0f);
    }
}

TEST(Surface, CostsOfAnchorsAndOfEqualLoops) {
    const auto expect = [](const std::string& name, const std::array<float, 3>& costs) {
        if (const Row* row = find_row(name))
            for (int slot : {0, 1, 2}) EXPECT_EQ(row->costs[slot], costs[slot]) << name;
    };
#define KEF_ANCHOR(type, function, ...) expect(#type #function, {__VA_ARGS__});
#define KEF_LIKE(type, function, model) \
    expect(#type #function, std::to_array(kef_vtm_kernel_##type##model##_ctab));
#include "vm/surface/costs.def"
#undef KEF_ANCHOR
#undef KEF_LIKE
    const float* exp = kef_vtm_kernel_dExp_ctab;
    EXPECT_EQ(std::bit_cast<std::uint32_t>(exp[0]), 0x41A9EB85);
    EXPECT_EQ(std::bit_cast<std::uint32_t>(exp[1]), 0x41F3EB85);
    EXPECT_EQ(std::bit_cast<std::uint32_t>(exp[2]), 0x4188E148);
}

TEST(Surface, SharedSlots) {
    // Functions for which it is settled which slots share a kernel.
    const std::map<std::string, std::string> settled = {
        {"dLn", "001"},  {"cExp", "010"}, {"zExp", "000"}, {"sAdd", "000"}, {"dAdd", "000"},
        {"sSub", "000"}, {"dSub", "000"}, {"sMul", "000"}, {"dMul", "000"}, {"dExp", "012"}};
    for (const auto& [name, pattern] : settled)
        if (const Row* row = find_row(name))
            for (int i : {0, 1, 2})
                for (int j : {0, 1, 2})
                    EXPECT_EQ(row->slots[i] == row->slots[j], pattern[i] == pattern[j]) << name;
}

void negate(std::int32_t n, const double* a, double* r) {
    for (int i = 0; i < n; ++i) r[i] = -a[i];
}

TEST(Surface, ARewrittenSlotTakesEffectAtTheNextCall) {
    const double a = 2.0;
    for (int slot : {0, 1, 2}) {
        const auto old = kef_vtm_kernel_dSqrt_ttab[slot];
        kef_vtm_kernel_dSqrt_ttab[slot] = negate;
        double r[4] = {};
        _vtmdSqrt_50(1, &a, &r[0]);
        _vtmdSqrt_HA(1, &a, &r[1]);
        _vtmdSqrt_26(1, &a, &r[2]);
        _vtmdSqrt(1, &a, &r[3]);
        kef_vtm_kernel_dSqrt_ttab[slot] = old;
        for (int entry : {0, 1, 2})
            EXPECT_EQ(r[entry], entry == slot ? -2.0 : std::sqrt(2.0)) << entry << slot;
        EXPECT_EQ(r[3], r[1]);
    }
}

}  // namespace
}  // namespace kef_test
