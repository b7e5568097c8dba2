#pragma once
// The engine harness with every built type real (no probes), its timers started, and
// helpers to set inputs to constants and read an output tick by tick.

#include <initializer_list>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "../engine/Harness.h"

namespace quillmer::testing {

struct ModuleHarness : Harness {
    ModuleHarness() : Harness(std::vector<std::string>{}) { engine->StartTimers(); }

    // The constant output that carries v: "~   0" .. "~ 127".
    static std::string constant(int v) {
        const std::string digits = std::to_string(v);
        return "~ " + std::string(3 - digits.size(), ' ') + digits;
    }
    void set(Module& m, int k, int v) { connect(m, k, constant(v)); }

    // n ticks; after each, 'X' when m's output is 127, '.' when it is 0, '?' otherwise.
    std::string gates(const Module& m, int n) {
        std::string trace;
        for (int i = 0; i < n; ++i) {
            ticks(1);
            const uint8_t v = out(m);
            trace += v == 127 ? 'X' : v == 0 ? '.' : '?';
        }
        return trace;
    }
    // n ticks; m's output after each.
    std::vector<int> values(const Module& m, int n) {
        std::vector<int> trace;
        for (int i = 0; i < n; ++i) {
            ticks(1);
            trace.push_back(out(m));
        }
        return trace;
    }
    // The input low for a tick, then high for a tick: one rising edge.
    void edge(Module& m, int k) {
        set(m, k, 0);
        ticks(1);
        set(m, k, 127);
        ticks(1);
    }
};

// Sets the inputs of m to the constants in `values` and ticks once; the output after it.
inline int run(ModuleHarness& h, Module& m, std::initializer_list<int> values) {
    int k = 0;
    for (int v : values) h.set(m, k++, v);
    h.ticks(1);
    return h.out(m);
}

// A module's record body as the file layer writes it.
inline std::vector<uint8_t> body(const ModuleHarness& h, const Module& m) {
    ByteWriter out;
    m.writeBody(out, h.engine->names);
    return out.bytes();
}

// A module read back from bytes, as the file layer makes one.
inline std::unique_ptr<Module> readBack(const ModuleHarness& h, std::string_view type, const std::vector<uint8_t>& bytes) {
    std::unique_ptr<Module> m = h.registry.make(*typeIdByName(type));
    ByteReader in(bytes);
    m->readBody(in, h.engine->names);
    EXPECT_EQ(in.remaining(), 0u) << type;
    return m;
}

inline std::string repeat(const std::string& s, int n) {
    std::string r;
    for (int i = 0; i < n; ++i) r += s;
    return r;
}

}  // namespace quillmer::testing
