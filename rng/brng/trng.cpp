// TRNG: the processor's RDRAND instruction. No seed, no jump. Map: 32 bits of a word in a double,
// the top 24 in a float.
#include "rng/brng/trng.h"

#include "rng/brng_frame.h"
#include "service/cpu.h"

namespace kef::rng {

namespace {

// The unit may be drained for a moment by other cores; after ten tries it does not work.
bool hardware_word(std::uint32_t& word) {
    for (int attempt = 0; attempt < 10; ++attempt) {
        unsigned char good = 0;
        asm volatile("rdrand %0\n\tsetc %1" : "=r"(word), "=qm"(good) : : "cc");
        if (good != 0) return true;
    }
    return false;
}

// Whether the processor has the instruction. Asked once: CPUID is slow in virtual machines.
bool has_rdrand() {
    enum Answer : std::uint32_t { unknown, no, yes };
    static std::uint32_t answer = unknown;
    std::uint32_t known = __atomic_load_n(&answer, __ATOMIC_RELAXED);
    if (known == unknown) {
        known = cpu_features().rdrand ? yes : no;
        __atomic_store_n(&answer, known, __ATOMIC_RELAXED);
    }
    return known == yes;
}

struct Trng {
    struct State {
        std::uint32_t spare[2];
    };
    using Word = std::uint32_t;

    static std::int32_t seed(State& s, std::int32_t, const std::uint32_t*, std::int32_t) {
        s = {};
        return rdrand_works() ? VTS_STATUS_OK : VTS_STATUS_NO_RDRAND;
    }

    // A stream whose creation was refused is still in the caller's hands.
    static std::int32_t words(State&, Word* r, std::int32_t n, std::int32_t) {
        if (!has_rdrand()) return VTS_STATUS_NO_RDRAND;
        for (std::int32_t i = 0; i < n; ++i)
            if (!hardware_word(r[i])) return VTS_STATUS_RDRAND_FAILED;
        return VTS_STATUS_OK;
    }

    template <class Real> using Map = FullWordMap<Real>;

    static bool valid(const State&, std::int32_t) { return true; }
};

}  // namespace

// Some processors report success and give all ones for ever.
bool rdrand_works() {
    if (!has_rdrand()) return false;
    for (int i = 0; i < 4; ++i) {
        std::uint32_t word;
        if (!hardware_word(word)) return false;
        if (word != 0xFFFFFFFF) return true;
    }
    return false;
}

}  // namespace kef::rng

KEF_GENERATOR(TRNG, kef::rng::Trng)
