// The start-up mode word: tokens separated by single commas, each "VTM_" and a
// keyword, their values ORed. One wrong token discards the whole text.
#include <cstring>

#include "vm/control/thread_state.h"

namespace kef::vm {

namespace {

struct Keyword {
    const char* text;
    std::uint32_t value;
};

// Tried in this order. DOUBLE_CONSISTEN has no final T, by design.
constexpr Keyword keywords[] = {
    {"LA", VTM_LA},
    {"HA", VTM_HA},
    {"EP", VTM_EP},
    {"DEFAULT_PRECISION", 0},
    {"FLOAT_CONSISTENT", VTM_FLOAT_CONSISTENT},
    {"DOUBLE_CONSISTEN", VTM_DOUBLE_CONSISTENT},
    {"RESTORE", VTM_RESTORE},
    {"ERRMODE_IGNORE", VTM_ERRMODE_IGNORE},
    {"ERRMODE_ERRNO", VTM_ERRMODE_ERRNO},
    {"ERRMODE_STDERR", VTM_ERRMODE_STDERR},
    {"ERRMODE_EXCEPT", VTM_ERRMODE_EXCEPT},
    {"ERRMODE_CALLBACK", VTM_ERRMODE_CALLBACK},
    {"ERRMODE_DEFAULT", VTM_ERRMODE_DEFAULT},
};

// The keyword that `text` begins with, or null.
const Keyword* match(const char* text) {
    for (const Keyword& keyword : keywords)
        if (std::strncmp(text, keyword.text, std::strlen(keyword.text)) == 0) return &keyword;
    return nullptr;
}

}  // namespace

bool parse_mode(const char* text, std::uint32_t& mode) {
    constexpr char prefix[] = "VTM_";
    std::uint32_t value = 0;
    for (;;) {
        if (std::strncmp(text, prefix, sizeof prefix - 1) != 0) return false;
        text += sizeof prefix - 1;
        const Keyword* keyword = match(text);
        if (keyword == nullptr) return false;
        value |= keyword->value;
        text += std::strlen(keyword->text);
        if (*text == '\0') break;
        if (*text != ',') return false;
        ++text;
    }
    mode = value;
    return true;
}

}  // namespace kef::vm
