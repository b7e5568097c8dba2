#pragma once
// A started formula runtime over stores that record what the functions send and let a test
// set what they read.

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <tuple>
#include <vector>

#include "engine/MidiInputTables.h"
#include "expression/FormulaRuntime.h"

namespace quillmer::testing {

struct RecordingStores : FormulaStores {
    struct Sent {
        int port;
        int status;
        int data1;
        int data2;
        bool operator==(const Sent&) const = default;
    };
    std::vector<Sent> sent;
    std::vector<std::string> messages;
    std::map<std::tuple<int, int, int, int>, int> cells;
    std::map<int, int> counters;
    MidiInputTables in;
    bool run = false;
    uint8_t bus[256]{};

    void sendMidi(int port, uint8_t status, uint8_t d1, uint8_t d2) override { sent.push_back({port, status, d1, d2}); }
    void message(std::string_view text) override { messages.emplace_back(text); }
    int gridCell(GridShape s, int mid, int row, int col) override {
        const auto it = cells.find({static_cast<int>(s), mid, row, col});
        return it == cells.end() ? 0 : it->second;
    }
    bool writeGridCell(GridShape s, int mid, int row, int col, int value) override {
        cells[{static_cast<int>(s), mid, row, col}] = value;
        return true;
    }
    int durationCounter(int code) override { return counters[code]; }
    MidiInputTables* midiInput() override { return &in; }
    void setRun(bool r) override { run = r; }
    uint8_t busValue(int id) override { return id >= 0 && id < 256 ? bus[id] : 0; }
};

struct RuntimeHarness {
    explicit RuntimeHarness(std::string folder = {}) : runtime(&stores, std::move(folder)) { runtime.start(); }

    // Runs `text` as formula 0 of module `module`; the error check is the caller's.
    double run(const std::string& text, uint16_t module = 100) {
        const int error = runtime.setFormula(0, text);
        EXPECT_EQ(error, expr::kOk) << text << ": " << runtime.calc().errorMessage();
        return runtime.evaluate(module, 0);
    }
    void formula(int n, const std::string& text) {
        ASSERT_EQ(runtime.setFormula(n, text), expr::kOk) << text << ": " << runtime.calc().errorMessage();
    }
    double value(const std::string& text) {
        const expr::Calc::Result r = runtime.calc().eval(text);
        EXPECT_EQ(r.error, expr::kOk) << text << ": " << r.message;
        return r.value;
    }
    std::string text(const std::string& name) {
        const expr::Calc::Result r = runtime.calc().eval(name);
        return r.text;
    }

    RecordingStores stores;
    FormulaRuntime runtime;
};

}  // namespace quillmer::testing
