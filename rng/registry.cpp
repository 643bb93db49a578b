// The registry tables, expanded from registry.def; id resolution and registration.
#include "rng/registry.h"

#include <iterator>

namespace kef::rng {

namespace {

#define KEF_BRNG(name, size, wide, seeds, zero, word, bits, subs)       \
    constexpr kef_brng brng_##name = {                                  \
        static_cast<std::int32_t>(sizeof(Header) + state_bytes_##name), \
        seeds,                                                          \
        zero,                                                           \
        word,                                                           \
        bits,                                                           \
        __vtsBRng##name##InitStream,                                    \
        __vtssBRng##name,                                               \
        __vtsdBRng##name,                                               \
        __vtsiBRng##name};
#include "rng/registry.def"
#undef KEF_BRNG

std::int32_t rows_in_use = built_in_rows;
std::int32_t sub_generators[VTS_MAX_ROWS] = {
#define KEF_BRNG(name, size, wide, seeds, zero, word, bits, subs) subs,
#include "rng/registry.def"
#undef KEF_BRNG
};

}  // namespace

bool valid(const Place& place) {
    const auto row = static_cast<std::uint32_t>(place.row);
    if (place.table == __RegBrngs) return row < VTS_SMALL_ROWS;
    return place.table == __RegBrngsNew && row < static_cast<std::uint32_t>(rows_in_use) &&
           static_cast<std::uint32_t>(place.sub) < static_cast<std::uint32_t>(sub_generators[row]);
}

std::int32_t family_row(const Place& place) {
    if (place.table == __RegBrngsNew || place.row <= row_WH) return place.row;
    return place.row <= last_small_wh ? row_WH : place.row - last_small_wh + row_WH;
}

bool valid_state(const Place& place, const kef_stream* stream) {
    using Check = bool (*)(const kef_stream*);
    constexpr Check checks[] = {
#define KEF_BRNG(name, ...) valid_state_##name,
#include "rng/registry.def"
#undef KEF_BRNG
    };
    const std::int32_t row = family_row(place);
    return row >= built_in_rows || checks[row](stream);
}

}  // namespace kef::rng

using namespace kef::rng;

#define KEF_4(row) row, row, row, row
#define KEF_16(row) KEF_4(row), KEF_4(row), KEF_4(row), KEF_4(row)
#define KEF_256(row) KEF_4(KEF_4(KEF_16(row)))
kef_brng __RegBrngs[] = {
    brng_MCG31M1,    brng_R250, brng_MRG32K3A, brng_MCG59,   KEF_256(brng_WH),
    KEF_16(brng_WH), brng_WH,   brng_Sobol,    brng_Niederr,
};
static_assert(std::size(__RegBrngs) == VTS_SMALL_ROWS);

kef_brng __RegBrngsNew[VTS_MAX_ROWS] = {
#define KEF_BRNG(name, ...) brng_##name,
#include "rng/registry.def"
#undef KEF_BRNG
};

const kef_brng* __vtsGetBrngBaseOffset(std::int32_t brng, std::int32_t* row, std::int32_t* sub) {
    const Place place = resolve(brng);
    *row = place.row;
    *sub = place.sub;
    return place.table;
}

std::int32_t __vtsIsBrngValid(const kef_brng* table, std::int32_t row, std::int32_t sub) {
    return valid({table, row, sub}) ? VTS_STATUS_OK : VTS_STATUS_BAD_BRNG;
}

std::int32_t __vtsGetBrngProperties(std::int32_t brng, kef_brng* properties) {
    const Place place = resolve(brng);
    if (!valid(place)) return VTS_STATUS_BAD_BRNG;
    *properties = place.brng();
    return VTS_STATUS_OK;
}

std::int32_t __vtsGetNumRegBrngs(void) { return rows_in_use; }

std::int32_t __vtsRegisterBrng(const kef_brng* properties) {
    const kef_brng& p = *properties;
    if (p.stream_state_size < 0) return VTS_STATUS_BAD_STATE_SIZE;
    if (p.word_size != 4 && p.word_size != 8 && p.word_size != 16) return VTS_STATUS_BAD_WORD_SIZE;
    if (p.seed_count <= 0) return VTS_STATUS_BAD_SEED_COUNT;
    if (p.bit_count <= 0) return VTS_STATUS_BAD_BIT_COUNT;
    if (p.init_stream == nullptr || p.generate_double == nullptr || p.generate_float == nullptr ||
        p.generate_bits == nullptr)
        return VTS_STATUS_NULL_ENTRY;
    if (rows_in_use == VTS_MAX_ROWS) return VTS_STATUS_REGISTRY_FULL;
    __RegBrngsNew[rows_in_use] = p;
    sub_generators[rows_in_use] = 1;
    ++rows_in_use;
    return rows_in_use << family_shift;
}
