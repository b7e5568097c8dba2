// The store and memory, bit matrix, bit, random and angle families.

#include <bit>
#include <cmath>
#include <string>

#include "expression/RuntimeStores.h"
#include "tables/ScaleFit.h"

namespace quillmer {

using expr::Args;
using namespace fx;

namespace {

FormulaRuntime::Stores& st(const Args& a) { return rt(a).state(); }
size_t uid(const Args& a) { return static_cast<size_t>(rt(a).uidOf(rt(a).EvalModuleId)); }

std::vector<float>& grid(std::vector<float>& g, size_t size) {
    if (g.empty()) g.assign(size, 0.0f);
    return g;
}

// --- store and memory ---

template <int N>
double readV(const Args& a) {
    return st(a).v[uid(a)][N];
}
template <int N>
double writeV(const Args& a) {
    st(a).v[uid(a)][N] = a[1];
    return a[1];
}
template <int L>
double writeLetter(const Args& a) {
    a.calc.setVariable(Vocabulary::letters(rt(a))[L], a[1]);
    return a[1];
}

const Definition kStores[] = {
    {"Store(P, I, V)",
     [](const Args& a) {
         if (!inRange(a[1], 0, 1023) || !inRange(a[2], 0, 31)) return 0.0;
         grid(st(a).store, 1024 * 32)[static_cast<size_t>(cut(a[1], 0, 1023) * 32 + cut(a[2], 0, 31))] =
             static_cast<float>(a[3]);
         return a[3];
     }},
    {"Fetch(2)",
     [](const Args& a) {
         if (!inRange(a[1], 0, 1023) || !inRange(a[2], 0, 31) || st(a).store.empty()) return 0.0;
         return static_cast<double>(st(a).store[static_cast<size_t>(cut(a[1], 0, 1023) * 32 + cut(a[2], 0, 31))]);
     }},
    {"MakeXTable(2)",
     [](const Args& a) {
         if (!inRange(a[1], 0, 127) || a[2] < 1) return 0.0;
         std::vector<float>& g = grid(st(a).storeX, 128 * 128);
         const size_t row = static_cast<size_t>(cut(a[1], 0, 127)) * 128;
         for (size_t i = 0; i < 128; ++i) g[row + i] = static_cast<float>(std::pow(a[2], static_cast<double>(i)));
         return a[2];
     }},
    {"StoreX(P, I, V)",
     [](const Args& a) {
         if (!inRange(a[1], 0, 127) || !inRange(a[2], 0, 127)) return 0.0;
         grid(st(a).storeX, 128 * 128)[static_cast<size_t>(cut(a[1], 0, 127) * 128 + cut(a[2], 0, 127))] =
             static_cast<float>(a[3]);
         return a[3];
     }},
    {"FetchX(2)",
     [](const Args& a) {
         if (!inRange(a[1], 0, 127) || !inRange(a[2], 0, 127) || st(a).storeX.empty()) return 0.0;
         return static_cast<double>(st(a).storeX[static_cast<size_t>(cut(a[1], 0, 127) * 128 + cut(a[2], 0, 127))]);
     }},
    {"Get(1)",
     [](const Args& a) {
         return inRange(a[1], 0, 15) ? st(a).slots[uid(a)][static_cast<size_t>(cut(a[1], 0, 15))] : 0.0;
     }},
    {"Put(2)",
     [](const Args& a) {
         if (!inRange(a[1], 0, 15)) return 0.0;
         st(a).slots[uid(a)][static_cast<size_t>(cut(a[1], 0, 15))] = a[2];
         return a[2];
     }},
    {"Ins(1)",
     [](const Args& a) {
         auto& s = st(a).slots[uid(a)];
         for (size_t i = 15; i > 0; --i) s[i] = s[i - 1];
         s[0] = a[1];
         return a[1];
     }},
    {"V0()", readV<0>}, {"V1()", readV<1>}, {"V2()", readV<2>}, {"V3()", readV<3>}, {"V4()", readV<4>},
    {"V5()", readV<5>}, {"V6()", readV<6>}, {"V7()", readV<7>}, {"V8()", readV<8>}, {"V9()", readV<9>},
    {"V0.(1)", writeV<0>}, {"V1.(1)", writeV<1>}, {"V2.(1)", writeV<2>}, {"V3.(1)", writeV<3>},
    {"V4.(1)", writeV<4>}, {"V5.(1)", writeV<5>}, {"V6.(1)", writeV<6>}, {"V7.(1)", writeV<7>},
    {"V8.(1)", writeV<8>}, {"V9.(1)", writeV<9>},
    {"A.(1)", writeLetter<0>}, {"B.(1)", writeLetter<1>}, {"C.(1)", writeLetter<2>}, {"D.(1)", writeLetter<3>},
    {"E.(1)", writeLetter<4>}, {"F.(1)", writeLetter<5>}, {"G.(1)", writeLetter<6>}, {"H.(1)", writeLetter<7>},
    {"I.(1)", writeLetter<8>}, {"J.(1)", writeLetter<9>}, {"K.(1)", writeLetter<10>}, {"L.(1)", writeLetter<11>},
    {"M.(1)", writeLetter<12>}, {"N.(1)", writeLetter<13>}, {"O.(1)", writeLetter<14>}, {"P.(1)", writeLetter<15>},
    {"Q.(1)", writeLetter<16>}, {"R.(1)", writeLetter<17>}, {"S.(1)", writeLetter<18>}, {"T.(1)", writeLetter<19>},
    {"U.(1)", writeLetter<20>}, {"V.(1)", writeLetter<21>}, {"W.(1)", writeLetter<22>}, {"X.(1)", writeLetter<23>},
    {"Y.(1)", writeLetter<24>}, {"Z.(1)", writeLetter<25>},
};

// --- bit matrix ---

uint32_t randomWord(const Args& a) {
    const double hi = a.calc.random();
    const double lo = a.calc.random();
    return (static_cast<uint32_t>(hi * 65536.0) << 16) | static_cast<uint32_t>(lo * 65536.0);
}

bool pageOk(double p) { return inRange(p, 0, kUidCount - 1); }
std::array<uint32_t, 32>& page(const Args& a, double p) { return st(a).lm[static_cast<size_t>(cut(p, 0, 127))]; }

// The nine scales of Qscale: 0 and above 8 leave the value as it is.
double fitScale(double value, double scale) { return static_cast<double>(fitToScale(whole(value), whole(scale))); }

const Definition kBitMatrix[] = {
    {"LM(1)",
     [](const Args& a) {
         return inRange(a[1], 0, 31) ? static_cast<double>(st(a).lm[uid(a)][static_cast<size_t>(cut(a[1], 0, 31))])
                                     : 0.0;
     }},
    {"LM.(2)",
     [](const Args& a) {
         if (!inRange(a[1], 0, 31)) return 0.0;
         const uint32_t w = fold32(a[2]);
         st(a).lm[uid(a)][static_cast<size_t>(cut(a[1], 0, 31))] = w;
         return static_cast<double>(w);
     }},
    {"LMI(1)",
     [](const Args& a) {
         auto& m = st(a).lm[uid(a)];
         for (size_t i = 31; i > 0; --i) m[i] = m[i - 1];
         m[0] = fold32(a[1]);
         return static_cast<double>(m[0]);
     }},
    {"LMCRC()",
     [](const Args& a) {
         uint32_t x = 0;
         for (const uint32_t w : st(a).lm[uid(a)]) x ^= w;
         return static_cast<double>(x);
     }},
    {"LMClr()",
     [](const Args& a) {
         st(a).lm[uid(a)].fill(0);
         return 0.0;
     }},
    {"LMRan()",
     [](const Args& a) {
         for (uint32_t& w : st(a).lm[uid(a)]) w = randomWord(a);
         return 0.0;
     }},
    {"LRan()", [](const Args& a) { return static_cast<double>(randomWord(a)); }},
    {"LMBit(Page, Row, Col)",
     [](const Args& a) {
         if (!pageOk(a[1]) || !inRange(a[2], 0, 31) || !inRange(a[3], 0, 31)) return 0.0;
         return static_cast<double>((page(a, a[1])[static_cast<size_t>(cut(a[2], 0, 31))] >> cut(a[3], 0, 31)) & 1u);
     }},
    {"LMRow(2)",
     [](const Args& a) {
         if (!pageOk(a[1]) || !inRange(a[2], 0, 31)) return 0.0;
         return static_cast<double>(page(a, a[1])[static_cast<size_t>(cut(a[2], 0, 31))]);
     }},
    {"LMWrite(Page, Row, val)",
     [](const Args& a) {
         if (!pageOk(a[1]) || !inRange(a[2], 0, 31)) return 0.0;
         const uint32_t w = fold32(a[3]);
         page(a, a[1])[static_cast<size_t>(cut(a[2], 0, 31))] = w;
         return static_cast<double>(w);
     }},
    {"LMCopy(2)",
     [](const Args& a) {
         if (!pageOk(a[1]) || !pageOk(a[2])) return 0.0;
         page(a, a[2]) = page(a, a[1]);
         return 1.0;
     }},
    // Life(from, to): the next generation of page `from` into page `to`; cells off the edge
    // are dead. Returns the number of live cells.
    {"Life(2)",
     [](const Args& a) {
         if (!pageOk(a[1]) || !pageOk(a[2])) return 0.0;
         const std::array<uint32_t, 32> m = page(a, a[1]);
         std::array<uint32_t, 32> next{};
         int alive = 0;
         for (int r = 0; r < 32; ++r)
             for (int c = 0; c < 32; ++c) {
                 int n = 0;
                 for (int dr = -1; dr <= 1; ++dr)
                     for (int dc = -1; dc <= 1; ++dc) {
                         const int rr = r + dr;
                         const int cc = c + dc;
                         if ((dr || dc) && rr >= 0 && rr < 32 && cc >= 0 && cc < 32)
                             n += static_cast<int>((m[static_cast<size_t>(rr)] >> cc) & 1u);
                     }
                 const bool live = (m[static_cast<size_t>(r)] >> c) & 1u;
                 if (n == 3 || (live && n == 2)) {
                     next[static_cast<size_t>(r)] |= 1u << c;
                     ++alive;
                 }
             }
         page(a, a[2]) = next;
         return static_cast<double>(alive);
     }},
    // CA(num, rule, val): one step of elementary rule `rule` on the low `num` bits of `val`
    // (1..32, else 32), the ends joined in a ring.
    {"CA(num, rule, val)",
     [](const Args& a) {
         const int width = inRange(a[1], 1, 32) ? cut(a[1], 1, 32) : 32;
         const uint32_t rule = static_cast<uint32_t>(cut(a[2], 0, 255));
         const uint32_t v = fold32(a[3]);
         uint32_t out = 0;
         for (int i = 0; i < width; ++i) {
             const uint32_t left = (v >> ((i + 1) % width)) & 1u;
             const uint32_t self = (v >> i) & 1u;
             const uint32_t right = (v >> ((i + width - 1) % width)) & 1u;
             out |= ((rule >> ((left << 2) | (self << 1) | right)) & 1u) << i;
         }
         return static_cast<double>(out);
     }},
    {"FitScale(2)", [](const Args& a) { return fitScale(a[1], a[2]); }},
};

// --- bits: registers of 7, 8, 16 and 32 bits sharing one carry ---

template <int W>
constexpr uint32_t mask() {
    return W == 32 ? 0xFFFFFFFFu : ((1u << W) - 1u);
}
template <int W>
uint32_t reg(double x) {
    return static_cast<uint32_t>(static_cast<uint64_t>(whole(x))) & mask<W>();
}
template <int W>
double shr(const Args& a) {
    const uint32_t x = reg<W>(a[1]);
    st(a).carry = x & 1u;
    return x >> 1;
}
template <int W>
double shl(const Args& a) {
    const uint32_t x = reg<W>(a[1]);
    st(a).carry = (x >> (W - 1)) & 1u;
    return (x << 1) & mask<W>();
}
template <int W>
double rr(const Args& a) {
    const uint32_t x = reg<W>(a[1]);
    st(a).carry = x & 1u;
    return ((x >> 1) | ((x & 1u) << (W - 1))) & mask<W>();
}
template <int W>
double rl(const Args& a) {
    const uint32_t x = reg<W>(a[1]);
    const uint32_t top = (x >> (W - 1)) & 1u;
    st(a).carry = top;
    return ((x << 1) | top) & mask<W>();
}
template <int W>
double rcr(const Args& a) {
    const uint32_t x = reg<W>(a[1]);
    const uint32_t in = st(a).carry ? 1u : 0u;
    st(a).carry = x & 1u;
    return ((x >> 1) | (in << (W - 1))) & mask<W>();
}
template <int W>
double rcl(const Args& a) {
    const uint32_t x = reg<W>(a[1]);
    const uint32_t in = st(a).carry ? 1u : 0u;
    st(a).carry = (x >> (W - 1)) & 1u;
    return ((x << 1) | in) & mask<W>();
}
template <int W>
int count(const Args& a) {
    const int64_t n = whole(a[2]);
    if (n < 0) return 0;
    if (W == 7) return static_cast<int>(n % 7);
    return n > 63 ? 63 : static_cast<int>(n);
}
template <int W>
double srx(const Args& a) {
    const int n = count<W>(a);
    return n >= W ? 0.0 : static_cast<double>(reg<W>(a[1]) >> n);
}
template <int W>
double slx(const Args& a) {
    const int n = count<W>(a);
    return n >= W ? 0.0 : static_cast<double>((static_cast<uint64_t>(reg<W>(a[1])) << n) & mask<W>());
}
template <int W>
double rrx(const Args& a) {
    const int n = count<W>(a) % W;
    const uint64_t x = reg<W>(a[1]);
    return n == 0 ? static_cast<double>(x) : static_cast<double>(((x >> n) | (x << (W - n))) & mask<W>());
}
template <int W>
double rlx(const Args& a) {
    const int n = count<W>(a) % W;
    const uint64_t x = reg<W>(a[1]);
    return n == 0 ? static_cast<double>(x) : static_cast<double>(((x << n) | (x >> (W - n))) & mask<W>());
}

#define QUILLMER_BIT_FAMILY(S, W)                                                                      \
    {"SHR" S "(1)", shr<W>}, {"SHL" S "(1)", shl<W>}, {"RR" S "(1)", rr<W>}, {"RL" S "(1)", rl<W>},     \
        {"RCR" S "(1)", rcr<W>}, {"RCL" S "(1)", rcl<W>}, {"SRX" S "(2)", srx<W>}, {"SLX" S "(2)", slx<W>}, \
        {"RRX" S "(2)", rrx<W>}, {"RLX" S "(2)", rlx<W>}

const Definition kBits[] = {
    QUILLMER_BIT_FAMILY("M", 7),
    QUILLMER_BIT_FAMILY("B", 8),
    QUILLMER_BIT_FAMILY("W", 16),
    QUILLMER_BIT_FAMILY("L", 32),
    {"RBIT(2)",
     [](const Args& a) {
         return inRange(a[2], 0, 31) ? static_cast<double>((fold32(a[1]) >> cut(a[2], 0, 31)) & 1u) : 0.0;
     }},
    {"WBIT(val,num,t)",
     [](const Args& a) {
         const uint32_t v = fold32(a[1]);
         if (!inRange(a[2], 0, 31)) return static_cast<double>(v);
         const uint32_t bit = 1u << cut(a[2], 0, 31);
         return static_cast<double>(a[3] != 0 ? (v | bit) : (v & ~bit));
     }},
    {"TBIT(2)",
     [](const Args& a) {
         const uint32_t v = fold32(a[1]);
         return inRange(a[2], 0, 31) ? static_cast<double>(v ^ (1u << cut(a[2], 0, 31))) : static_cast<double>(v);
     }},
};
#undef QUILLMER_BIT_FAMILY

// --- random tables and angle mode ---

double nextFrom(std::vector<float>& table, int& index) {
    if (table.empty()) return 0;
    const double v = table[static_cast<size_t>(index)];
    index = (index + 1) & 16383;
    return v;
}

const Definition kRandom[] = {
    {"RRSeed(1)",
     [](const Args& a) {
         st(a).randomIndex = cut(a[1], 0, 16383);
         return static_cast<double>(st(a).randomIndex);
     }},
    {"RWSeed(1)",
     [](const Args& a) {
         st(a).walkIndex = cut(a[1], 0, 16383);
         return static_cast<double>(st(a).walkIndex);
     }},
    {"RRAN()", [](const Args& a) { return nextFrom(st(a).randomTable, st(a).randomIndex); }},
    {"RW()", [](const Args& a) { return nextFrom(st(a).walkTable, st(a).walkIndex); }},
    {"TrigMode()", [](const Args& a) { return static_cast<double>(a.calc.trigMode()); }},
    {"Radian()",
     [](const Args& a) {
         a.calc.setTrigMode(expr::TrigMode::Radian);
         return static_cast<double>(a.calc.trigMode());
     }},
    {"Degree()",
     [](const Args& a) {
         a.calc.setTrigMode(expr::TrigMode::Degree);
         return static_cast<double>(a.calc.trigMode());
     }},
    {"Grad()",
     [](const Args& a) {
         a.calc.setTrigMode(expr::TrigMode::Grad);
         return static_cast<double>(a.calc.trigMode());
     }},
};

}  // namespace

void Vocabulary::storesAndBitMatrix(FormulaRuntime& r) {
    define(r, kStores, std::size(kStores));
    for (char digit = '0'; digit <= '9'; ++digit) {
        const char name[] = {'V', digit, '\0'};
        const char call[] = {'V', digit, '(', ')', '\0'};
        r.calc().alias(name, call);
    }
    define(r, kBitMatrix, std::size(kBitMatrix));
    for (const char* name : {"LMCRC", "LMClr", "LMRan", "LRan"}) r.calc().alias(name, std::string(name) + "()");
}

void Vocabulary::bits(FormulaRuntime& r) { define(r, kBits, std::size(kBits)); }

void Vocabulary::randomAndAngle(FormulaRuntime& r) {
    // The two tables: even numbers in 0..1, and a walk in 0..1 that moves at most 1/16 a step.
    FormulaRuntime::Stores& s = r.state();
    uint64_t seed = 0x853C49E6748FEA9Bull;
    if (r.seed() != 0) seed ^= (static_cast<uint64_t>(r.seed()) * 0x9E3779B97F4A7C15ull) | 1u;
    auto next = [&seed] {
        seed = seed * 6364136223846793005ull + 1442695040888963407ull;
        return static_cast<float>(static_cast<double>(seed >> 40) / 16777216.0);
    };
    s.randomTable.resize(16384);
    s.walkTable.resize(16384);
    float walk = 0.5f;
    for (size_t i = 0; i < 16384; ++i) {
        s.randomTable[i] = next();
        walk += (next() - 0.5f) / 8.0f;
        if (walk < 0) walk = -walk;
        if (walk >= 1) walk = 2.0f - walk - 1e-6f;
        s.walkTable[i] = walk;
    }
    define(r, kRandom, std::size(kRandom));
    for (const char* name : {"RRAN", "RW", "TrigMode", "Radian", "Degree", "Grad"})
        r.calc().alias(name, std::string(name) + "()");
}

}  // namespace quillmer
