// The texts of the status codes.
#include <gtest/gtest.h>

#include <cctype>
#include <set>
#include <string>
#include <vector>

#include "kef_fit.h"
#include "kef_rng.h"
#include "kef_stats.h"
#include "kef_vm.h"

namespace {

struct Family {
    const char* (*text)(int32_t);
    std::vector<int32_t> codes;
};

std::vector<Family> families() {
#define KEF_STATUS_ROW(name, code, meaning) code,
    return {{kef_vtm_status_text,
             {
#include "kef_vm_status.def"
             }},
            {kef_vts_status_text,
             {
#include "kef_rng_status.def"
             }},
            {kef_ss_status_text,
             {
#include "kef_stats_status.def"
             }},
            {kef_df_status_text,
             {
#include "kef_fit_status.def"
             }}};
#undef KEF_STATUS_ROW
}

// Each code of a family has words of its own, fit for the middle of a line.
TEST(StatusText, TellsCodesApart) {
    for (const Family& family : families()) {
        std::set<std::string> seen = {"unknown status"};
        for (int32_t code : family.codes) {
            const std::string text = family.text(code);
            EXPECT_TRUE(seen.insert(text).second) << code << ": " << text;
            EXPECT_GE(text.size(), 8u) << code;
            EXPECT_TRUE(std::isalpha(text.front()) && text.back() != '.') << text;
        }
        EXPECT_STREQ(family.text(0), "no error");
        for (int32_t code : {INT32_MIN, INT32_MAX, 99, -999, -5000})
            EXPECT_STREQ(family.text(code), "unknown status") << code;
    }
    // One number, another meaning in each family.
    EXPECT_STRNE(kef_vts_status_text(-1000), kef_df_status_text(-1000));
}

}  // namespace
