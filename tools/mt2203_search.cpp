// Finds the parameter sets of MT2203: 6024 Mersenne twisters of period 2^2203 - 1 with distinct
// characteristic polynomials and tempering masks chosen for equidistribution.
//
//   g++ -std=c++20 -O3 -mpclmul -mavx2 -o build/mt2203_search tools/mt2203_search.cpp
//   build/mt2203_search check                        the four given rows: irreducible, defect, k(v)
//   build/mt2203_search search ROWS BEAM BOUND   appends rows to the text file ROWS; resumable
//   build/mt2203_search emit ROWS > rng/brng/tables/mt2203.inc
//   build/mt2203_search verify rng/brng/tables/mt2203.inc  every row again, from nothing
//
// The table that stands: search with beam 8, bound 720 and then bound 710.
//
// Recurrence: n = 69, m = 34, w = 32, r = 5. With p = t^69 + t^34 and q = t^68 + t^33 the
// characteristic polynomial of the matrix word a is
//   phi(t) = p^27 q^5 + sum_{i<5} a_i p^27 q^(4-i) + sum_{5<=i<32} a_i p^(31-i),   a_31 = 1.
// 2^2203 - 1 is prime, so phi irreducible means full period. phi is affine in the bits of a: a
// residue table per small irreducible f sieves the candidates; then one chain of squarings
// t^(2^i) mod phi (Montgomery form, carry-less multiply) with a few gcds of the product of
// t^(2^i) - t rejects most of the rest, and its end, t^(2^2203) = t, decides.
//
// Every set has an identifier in the low 16 bits of its matrix word, so no two are equal. The
// masks come from a beam search over the output bits from the top: output bit b (0 = top) depends
// on B_b, C_b and, where C_b = 1, B_(b+15). Each partial choice is judged by
// sum_v floor(2203/v) - k(v), k(v) being the smallest norm of a reduced basis of the lattice of
// the top v output bits (Couture and L'Ecuyer, Math. Comp. 69 (2000) 757-765; the extension of
// the basis by one bit after Harase, Math. Comp. 80 (2011) 525-553).
#include <immintrin.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <vector>

namespace {

using u32 = std::uint32_t;
using u64 = std::uint64_t;

constexpr int n = 69, m = 34, degree = 2203, words = 35, sets = 6024;
constexpr u32 low_mask = 0x1F;
constexpr u32 given[4][3] = {{0xAF81055F, 0xDD7EEF80, 0xEFD78000},
                             {0x832604E1, 0x66AD7F80, 0xEBD58000},
                             {0x92F70739, 0x656D7780, 0xEFC50000},
                             {0x8B75046E, 0x76957780, 0xEFC48000}};

// --- polynomials over GF(2), lowest coefficient in bit 0 of word 0 -------------------------

struct Poly {
    u64 w[words + 1] = {};
    bool bit(int i) const { return w[i / 64] >> (i % 64) & 1; }
    void flip(int i) { w[i / 64] ^= u64{1} << (i % 64); }
    Poly& operator^=(const Poly& o) {
        for (int i = 0; i <= words; ++i) w[i] ^= o.w[i];
        return *this;
    }
    bool operator==(const Poly&) const = default;
};

Poly shifted_xor(const Poly& x, int a, int b) {  // x * (t^a + t^b)
    Poly r;
    for (int i = 0; i <= degree; ++i)
        if (x.bit(i)) r.flip(i + a), r.flip(i + b);
    return r;
}

// basis[i] is the coefficient of a_i, basis[32] the constant part.
std::array<Poly, 33> make_basis() {
    std::array<Poly, 33> basis;
    Poly power;
    power.flip(0);  // p^0
    for (int i = 31; i >= 5; --i) {
        basis[i] = power;  // p^(31-i)
        power = shifted_xor(power, 69, 34);
    }
    for (int i = 4; i >= 0; --i) {  // power = p^27 q^(4-i)
        basis[i] = power;
        power = shifted_xor(power, 68, 33);
    }
    basis[32] = power;
    return basis;
}
const std::array<Poly, 33> basis = make_basis();

Poly characteristic(u32 a) {
    Poly phi = basis[32];
    for (int i = 0; i < 32; ++i)
        if (a >> i & 1) phi ^= basis[i];
    return phi;
}

// --- sieve by irreducibles of degree 2 to 12 ------------------------------------------------

struct Sieve {
    struct Row {
        std::uint16_t constant, table[4][256];
    };
    std::vector<Row> rows;
    Sieve() {
        std::vector<u32> irreducible;
        for (u32 f = 2; f < (2u << 12); ++f) {
            bool prime = true;
            for (u32 g : irreducible) {
                if (2 * std::bit_width(g) > std::bit_width(f) + 1) break;
                u32 r = f;
                while (std::bit_width(r) >= std::bit_width(g))
                    r ^= g << (std::bit_width(r) - std::bit_width(g));
                if (r == 0) {
                    prime = false;
                    break;
                }
            }
            if (prime) irreducible.push_back(f);
        }
        for (u32 f : irreducible) {
            if (f < 4) continue;  // t and t + 1 never divide
            const int d = std::bit_width(f) - 1;
            std::uint16_t residue[33];
            for (int i = 0; i < 33; ++i) {
                u32 r = 0;
                for (int k = degree; k >= 0; --k) {
                    r = r << 1 | basis[i].bit(k);
                    if (r >> d & 1) r ^= f;
                }
                residue[i] = r;
            }
            Row row;
            row.constant = residue[32];
            for (int b = 0; b < 4; ++b)
                for (int v = 0; v < 256; ++v) {
                    std::uint16_t r = 0;
                    for (int i = 0; i < 8; ++i)
                        if (v >> i & 1) r ^= residue[8 * b + i];
                    row.table[b][v] = r;
                }
            rows.push_back(row);
        }
    }
    bool passes(u32 a) const {
        for (const Row& r : rows)
            if ((r.constant ^ r.table[0][a & 255] ^ r.table[1][a >> 8 & 255] ^
                 r.table[2][a >> 16 & 255] ^ r.table[3][a >> 24]) == 0)
                return false;
        return true;
    }
};

// --- arithmetic modulo phi ------------------------------------------------------------------

inline __m128i clmul(u64 x, u64 y) {
    return _mm_clmulepi64_si128(_mm_cvtsi64_si128(x), _mm_cvtsi64_si128(y), 0);
}

struct Field {
    Poly phi;
    u64 inverse;  // of phi modulo t^64
    explicit Field(const Poly& f) : phi(f) {
        u64 x = 1;  // Newton: each step doubles the correct coefficients
        for (int i = 0; i < 6; ++i) {
            const u64 e = _mm_cvtsi128_si64(clmul(phi.w[0], x));
            x = _mm_cvtsi128_si64(clmul(x, e));  // x * (f x); over GF(2): 2x - f x^2 = f x^2
        }
        inverse = x;
    }
    // T (70 words) times t^-2240 modulo phi.
    void reduce(u64* T, Poly& r) const {
        for (int i = 0; i < words; ++i) {
            const __m128i q =
                _mm_clmulepi64_si128(_mm_cvtsi64_si128(T[i]), _mm_cvtsi64_si128(inverse), 0);
            u64 carry = 0;
            for (int j = 0; j < words; ++j) {
                const __m128i c = _mm_clmulepi64_si128(q, _mm_cvtsi64_si128(phi.w[j]), 0);
                T[i + j] ^= _mm_cvtsi128_si64(c) ^ carry;
                carry = _mm_extract_epi64(c, 1);
            }
            T[i + words] ^= carry;
        }
        // degree < 2240 <= words * 64; bring it below 2203.
        for (int i = 0; i < words; ++i) r.w[i] = T[words + i];
        r.w[words] = 0;
        for (int k = words * 64 - 1; k >= degree; --k)
            if (r.bit(k)) {
                const int s = k - degree;  // < 37
                u64 carry = 0;
                for (int j = 0; j < words; ++j) {
                    r.w[j] ^= phi.w[j] << s | carry;
                    carry = s ? phi.w[j] >> (64 - s) : 0;
                }
            }
    }
    void square(const Poly& x, Poly& r) const {
        u64 T[2 * words];
        for (int i = 0; i < words; ++i)
            _mm_storeu_si128(reinterpret_cast<__m128i*>(T + 2 * i), clmul(x.w[i], x.w[i]));
        reduce(T, r);
    }
    void multiply(const Poly& x, const Poly& y, Poly& r) const {
        u64 T[2 * words] = {};
        for (int i = 0; i < words; ++i) {
            u64 carry = 0;
            for (int j = 0; j < words; ++j) {
                const __m128i c = clmul(x.w[i], y.w[j]);
                T[i + j] ^= _mm_cvtsi128_si64(c) ^ carry;
                carry = _mm_extract_epi64(c, 1);
            }
            T[i + words] ^= carry;
        }
        reduce(T, r);
    }
};

int poly_degree(const Poly& x) {
    for (int i = words; i >= 0; --i)
        if (x.w[i]) return 64 * i + 63 - std::countl_zero(x.w[i]);
    return -1;
}

// Binary gcd: phi has a constant term, so factors t can be dropped from the other.
bool coprime(Poly x, Poly y) {  // x = phi
    int dy = poly_degree(y);
    if (dy < 0) return false;
    int nw = words;
    auto strip = [&nw](Poly& p) {
        for (;;) {
            if (p.w[0] == 0) {
                bool any = false;
                for (int i = 0; i < nw; ++i) any |= (p.w[i] = p.w[i + 1]) != 0;
                p.w[nw] = 0;
                if (!any) return;
                continue;
            }
            const int s = std::countr_zero(p.w[0]);
            if (s == 0) return;
            for (int i = 0; i < nw; ++i) p.w[i] = p.w[i] >> s | p.w[i + 1] << (64 - s);
            return;
        }
    };
    strip(y);
    Poly *a = &x, *b = &y;
    int da = degree, db = poly_degree(*b);
    while (db > 0) {
        if (da < db) std::swap(a, b), std::swap(da, db);
        nw = da / 64 + 1;
        for (int i = 0; i < nw; ++i) a->w[i] ^= b->w[i];
        strip(*a);
        int i = nw;
        while (i >= 0 && a->w[i] == 0) --i;
        da = i < 0 ? -1 : 64 * i + 63 - std::countl_zero(a->w[i]);
        if (da < 0) return db == 0;
        std::swap(a, b), std::swap(da, db);
    }
    return db == 0;
}

bool irreducible(u32 a) {
    const Field field(characteristic(a));
    // t in Montgomery form: t * t^2240 mod phi, by shifting.
    Poly t;
    t.flip(0);
    for (int i = 0; i < words * 64 + 1; ++i) {
        u64 carry = 0;
        for (int j = 0; j < words; ++j) {
            const u64 next = t.w[j] >> 63;
            t.w[j] = t.w[j] << 1 | carry;
            carry = next;
        }
        if (t.bit(degree))
            for (int j = 0; j < words; ++j) t.w[j] ^= field.phi.w[j];
    }
    Poly x = t, product;
    bool empty = true;
    for (int i = 1; i <= degree; ++i) {
        field.square(x, x);
        if (i > 6 && i <= 160) {  // degrees up to 12 are sieved: i = 7.. covers 13 and above
            Poly d = x;
            d ^= t;
            if (i >= 13) {
                if (empty) {
                    product = d;
                    empty = false;
                } else {
                    field.multiply(product, d, product);
                }
                if ((i == 32 || i == 75 || i == 160) && !coprime(field.phi, product)) return false;
            }
        }
    }
    return x == t;
}

// --- the output lattice ---------------------------------------------------------------------

// A state in a sliding window of a longer buffer: stepping writes one word.
struct Vector {
    static constexpr int room = 256;
    int start, count;
    alignas(32) u32 buffer[room + 80];
    u32* window() { return buffer + start; }
    const u32* window() const { return buffer + start; }
    u32 newest() const { return buffer[start + n - 1]; }
    void set(const u32* s) {
        start = 0;
        std::memcpy(buffer, s, n * sizeof(u32));
        std::memset(buffer + n, 0, 12);  // XORs run over 72 words
    }
    void copy(const Vector& o) {
        set(o.window());
        count = o.count;
    }
    void step(u32 a) {
        u32* s = window();
        const u32 y = (s[0] & ~low_mask) | (s[1] & low_mask);
        const u32 x = s[m] ^ (y >> 1) ^ (-(y & 1) & a);
        if (start == room) {
            std::memmove(buffer, s + 1, (n - 1) * sizeof(u32));
            start = 0;
        } else {
            ++start;
        }
        buffer[start + n - 1] = x;
        ++count;
    }
    Vector& operator^=(const Vector& o) {
        u32* x = window();
        const u32* y = o.window();
        for (int i = 0; i < 64; i += 8)
            _mm256_storeu_si256((__m256i*)(x + i),
                                _mm256_xor_si256(_mm256_loadu_si256((const __m256i*)(x + i)),
                                                 _mm256_loadu_si256((const __m256i*)(y + i))));
        for (int i = 64; i < n; ++i) x[i] ^= y[i];
        return *this;
    }
};

struct Masks {
    u32 b = 0, c = 0, known = 0;  // known: bits of b that are decided
};

u32 temper(u32 y, const Masks& k) {
    y ^= y >> 12;
    y ^= y << 7 & k.b;
    y ^= y << 15 & k.c;
    return y;  // the last shift keeps every k(v)
}

// The leading coefficients of a vector of slot b; one without steps is the unit vector.
u32 leading(const Vector& x, int b, const Masks& k) {
    return x.count == 0 ? u32{0x80000000} >> b : temper(x.newest(), k);
}

// A reduced basis for the top v bits; vector i has its leading coefficient in bit i from the top.
struct Lattice {
    int v = 0;
    std::vector<std::array<u32, n>> origin;  // states before their first step
    std::vector<Vector> slot;

    void rewind(u32 a) {
        origin.resize(v);
        for (int i = 0; i < v; ++i) {
            Vector x;
            x.copy(slot[i]);
            // Walk back along a longer buffer from its end.
            std::vector<u32> path(n + x.count);
            std::copy(x.window(), x.window() + n, path.begin() + x.count);
            for (int k = x.count - 1; k >= 0; --k) {
                u32* s = path.data() + k + 1;
                u32 y = s[n - 1] ^ s[m - 1];
                y = y >> 31 ? (y ^ a) << 1 | 1 : y << 1;
                s[0] = (s[0] & ~low_mask) | (y & low_mask);
                s[-1] = y & ~low_mask;
            }
            std::copy(path.begin(), path.begin() + n, origin[i].begin());
        }
    }

    // The basis for one more bit under the masks k; returns k(v).
    int extend(const Lattice& from, u32 a, const Masks& k) {
        v = from.v + 1;
        slot.resize(v);
        std::vector<char> filled(v, 0);
        const u32 top = ~u32{0} << (32 - v);
        // The new unit vector: zero state, count 0.
        const u32 zero[n] = {};
        slot[v - 1].set(zero);
        slot[v - 1].count = 0;
        filled[v - 1] = 1;
        const int inputs = from.v == 0 ? 1 : from.v;
        Vector x, other;
        for (int i = 0; i < inputs; ++i) {
            if (from.v == 0) {
                u32 s[n] = {};
                s[n - 1] = 1;  // any state but zero
                x.set(s);
            } else {
                x.set(from.origin[i].data());
            }
            x.count = 0;
            u32 output = 0;
            for (;;) {
                while (output == 0) {
                    x.step(a);
                    output = temper(x.newest(), k) & top;
                }
                const int b = std::countl_zero(output);
                if (!filled[b]) {
                    slot[b].copy(x);
                    filled[b] = 1;
                    break;
                }
                if (x.count > slot[b].count) {
                    other.copy(slot[b]);
                    slot[b].copy(x);
                    x.copy(other);
                    output = leading(x, b, k) & top;
                    if (slot[b].count == degree) break;  // v = 1: the impulse at 2203
                }
                x ^= slot[b];
                output ^= leading(slot[b], b, k) & top;
            }
        }
        int smallest = degree, sum = 0;
        for (const Vector& s : slot) smallest = std::min(smallest, s.count), sum += s.count;
        if (sum != degree) {
            std::fprintf(stderr, "lattice: v %d sum %d\n", v, sum);
            std::exit(1);
        }
        return smallest;
    }
};

struct Result {
    Masks masks;
    int defect;
    std::array<int, 33> k;
};

// k(v) of given masks.
Result evaluate(u32 a, u32 b, u32 c) {
    Result r{{b, c, ~u32{0}}, 0, {}};
    Lattice lattice;
    for (int v = 1; v <= 32; ++v) {
        Lattice next;
        r.k[v] = next.extend(lattice, a, r.masks);
        next.rewind(a);
        r.defect += degree / v - r.k[v];
        lattice = std::move(next);
    }
    return r;
}

// The best masks that the beam finds; a defect above `bound` may be any number above it.
Result search_masks(u32 a, int beam, int bound) {
    // Losses floor(2203/v) - k(v) that no set seen so far went below.
    constexpr int least[32] = {0,  0,  29, 0,  26, 22, 36, 0,  34, 13, 54, 44, 30, 19, 8, 0,
                               58, 53, 46, 41, 35, 31, 26, 22, 19, 15, 12, 9,  6,  5,  3, 0};
    int rest = 0;
    for (int loss : least) rest += loss;

    struct Node {
        Masks masks;
        int defect;
        Lattice lattice;
    };
    std::vector<Node> nodes(1);
    nodes[0].defect = 0;
    for (int b = 0; b < 32; ++b) {
        struct Choice {
            int parent;
            Masks masks;
            int defect;
        };
        std::vector<Choice> choices;
        Lattice scratch;
        for (int i = 0; i < static_cast<int>(nodes.size()); ++i) {
            const u32 bit = u32{0x80000000} >> b;
            std::vector<Masks> options{nodes[i].masks};
            auto branch = [&options](auto applies, auto apply) {
                for (std::size_t j = options.size(); j-- > 0;)
                    if (applies(options[j])) {
                        Masks other = options[j];
                        apply(options[j], false);
                        apply(other, true);
                        options.push_back(other);
                    }
            };
            auto decide_b = [](u32 position) {
                return [position](Masks& k, bool on) {
                    k.known |= position;
                    if (on) k.b |= position;
                };
            };
            if (b <= 24) branch([bit](const Masks& k) { return !(k.known & bit); }, decide_b(bit));
            if (b <= 16)
                branch([](const Masks&) { return true; },
                       [bit](Masks& k, bool on) {
                           if (on) k.c |= bit;
                       });
            if (b + 15 <= 24)
                branch([bit](const Masks& k) { return (k.c & bit) && !(k.known & bit >> 15); },
                       decide_b(bit >> 15));
            for (const Masks& k : options) {
                const int kv = scratch.extend(nodes[i].lattice, a, k);
                choices.push_back({i, k, nodes[i].defect + degree / (b + 1) - kv});
            }
        }
        std::stable_sort(choices.begin(), choices.end(),
                         [](const Choice& x, const Choice& y) { return x.defect < y.defect; });
        rest -= least[b];
        if (choices[0].defect + rest > bound) return {choices[0].masks, bound + 1, {}};
        if (static_cast<int>(choices.size()) > beam) choices.resize(beam);
        std::vector<Node> next(choices.size());
        for (std::size_t j = 0; j < choices.size(); ++j) {
            next[j].masks = choices[j].masks;
            next[j].defect = choices[j].defect;
            next[j].lattice.extend(nodes[choices[j].parent].lattice, a, choices[j].masks);
            next[j].lattice.rewind(a);
        }
        nodes = std::move(next);
    }
    return {nodes[0].masks, nodes[0].defect, {}};
}

// --- commands -------------------------------------------------------------------------------

struct Row {
    u32 a, b, c;
    int defect, next;  // next: where the walk over upper halves goes on
};

std::map<int, Row> read_rows(const char* path) {
    std::map<int, Row> rows;
    if (FILE* f = std::fopen(path, "r")) {
        int set;
        Row r;
        while (std::fscanf(f, "%d %x %x %x %d %d", &set, &r.a, &r.b, &r.c, &r.defect, &r.next) == 6)
            if (!rows.contains(set) || r.defect < rows[set].defect) rows[set] = r;
        std::fclose(f);
    }
    return rows;
}

// The identifier in the low half of the matrix word. Those of the given rows are taken.
u32 identifier(int set) {
    for (int i = 0; i < 4; ++i)
        if ((given[i][0] & 0xFFFF) == static_cast<u32>(set)) return sets + i;
    return set;
}

// For every set without a row of defect <= bound: walks the 2^15 upper halves in a fixed order,
// from where its last row was found, up to the next polynomial that has such masks.
int search(const char* path, int beam, int bound) {
    const Sieve sieve;
    const auto rows = read_rows(path);
    FILE* f = std::fopen(path, "a");
    if (f == nullptr) return 1;
    for (int set = 4; set < sets; ++set) {
        const auto old = rows.find(set);
        if (old != rows.end() && old->second.defect <= bound) continue;
        for (u32 i = old == rows.end() ? 0 : old->second.next; i < 0x8000; ++i) {
            const u32 upper = (i * 20077 + 12345u * set) & 0x7FFF;
            const u32 a = 0x80000000 | upper << 16 | identifier(set);
            if (!sieve.passes(a) || !irreducible(a)) continue;
            const Result r = search_masks(a, beam, bound);
            if (r.defect > bound) continue;
            std::fprintf(f, "%d %08X %08X %08X %d %d\n", set, a, r.masks.b, r.masks.c, r.defect,
                         i + 1);
            std::fflush(f);
            break;
        }
    }
    std::fclose(f);
    return 0;
}

int check() {
    for (const auto& g : given) {
        const Result r = evaluate(g[0], g[1], g[2]);
        std::printf("%08X %s defect %d k:", g[0], irreducible(g[0]) ? "irreducible" : "REDUCIBLE",
                    r.defect);
        for (int v = 1; v <= 32; ++v) std::printf(" %d", r.k[v]);
        std::printf("\n");
    }
    return 0;
}

// Every row of a table: irreducible, an identifier of its own, and its defect.
int verify(const char* path) {
    FILE* f = std::fopen(path, "r");
    if (f == nullptr) return 1;
    char line[200];
    std::vector<char> seen(0x10000, 0);
    int count = 0, worst = 0, faults = 0;
    double sum = 0;
    while (std::fgets(line, sizeof line, f)) {
        u32 a, b, c;
        if (std::sscanf(line, "{%x, %x, %x}", &a, &b, &c) != 3) continue;
        const int defect = evaluate(a, b, c).defect;
        const bool good = a >> 31 && irreducible(a) && !seen[a & 0xFFFF];
        seen[a & 0xFFFF] = 1;
        if (!good) std::printf("row %d is at fault\n", count);
        faults += !good;
        worst = std::max(worst, defect);
        sum += defect;
        ++count;
    }
    std::fclose(f);
    std::printf("%d rows, %d faults, defect at most %d, mean %.1f\n", count, faults, worst,
                sum / count);
    return count == sets && faults == 0 ? 0 : 1;
}

int emit(const char* path) {
    const auto rows = read_rows(path);
    int worst = 0;
    double sum = 0;
    for (int set = 4; set < sets; ++set) {
        const auto r = rows.find(set);
        if (r == rows.end()) return std::fprintf(stderr, "set %d is missing\n", set), 1;
        worst = std::max(worst, r->second.defect);
        sum += r->second.defect;
    }
    std::printf(
        "// Made by tools/mt2203_search.cpp (commands in its head): matrix word, mask B, mask C.\n"
        "// Equidistribution defect of sets 4 and above: at most %d, mean %.1f.\n",
        worst, sum / (sets - 4));
    for (const auto& g : given) std::printf("{0x%08X, 0x%08X, 0x%08X},\n", g[0], g[1], g[2]);
    for (int set = 4; set < sets; ++set) {
        const Row& r = rows.at(set);
        std::printf("{0x%08X, 0x%08X, 0x%08X},\n", r.a, r.b, r.c);
    }
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc == 2 && !std::strcmp(argv[1], "check")) return check();
    if (argc == 5 && !std::strcmp(argv[1], "search"))
        return search(argv[2], std::atoi(argv[3]), std::atoi(argv[4]));
    if (argc == 3 && !std::strcmp(argv[1], "verify")) return verify(argv[2]);
    if (argc == 3 && !std::strcmp(argv[1], "emit")) return emit(argv[2]);
    std::fprintf(stderr, "usage: see the head of tools/mt2203_search.cpp\n");
    return 2;
}
