#pragma once
// The formula functions' doors wired to an engine: the bus, the transport, the duration
// counters, MIDI out and the MIDI input tables, the options' absolute clocks, the formula
// timers on the engine's timer service, and the engine's random generator for RND.
// The general tables and the matrices' cells are the engine's; the pictures of Image
// modules are reached by the numbers in their names; Sfile data, slider banks and the mouse
// pads of formula modules by instance numbers.

#include <array>

#include "engine/Engine.h"
#include "engine/StepData.h"
#include "expression/FormulaRuntime.h"
#include "expression/FormulaStores.h"

namespace quillmer {

class EngineFormulaStores : public FormulaStores {
public:
    explicit EngineFormulaStores(Engine& engine) : engine_(engine) {}
    // Stops the formula timers, which call into the runtime.
    ~EngineFormulaStores() override;
    // The runtime that the formula timers report to; also routes its RND to the engine.
    void attach(FormulaRuntime& runtime);

    uint8_t busValue(int busId) override;
    void setRun(bool run) override { engine_.setRun(run); }
    void setAbsClock(int which, int ms) override;
    int64_t midiClockTicks() override { return static_cast<int64_t>(engine_.ticksRun()); }
    int durationCounter(int code) override;
    void setFormulaTimer(int kind, int n, int ms) override;
    void sendMidi(int port, uint8_t status, uint8_t data1, uint8_t data2) override;
    MidiInputTables* midiInput() override { return &engine_.ports.in; }
    int tableStep(int table, int step) override { return engine_.generalTableStep(table, step); }
    void writeTableStep(int table, int step, int value) override { engine_.writeGeneralTableStep(table, step, value); }
    bool readPixel(int mid, int x, int y, uint32_t& colour) override;
    bool writePixel(int mid, int x, int y, uint32_t colour) override;
    bool fillPicture(int mid, uint32_t colour) override;
    int fileStep(int mid, int step) override;
    void writeFileStep(int mid, int step, int value) override;
    int fileChanged(int mid) override;
    // The matrices' cells; a cell outside the grid reads 0 and takes no write.
    int gridCell(GridShape shape, int mid, int row, int col) override;
    bool writeGridCell(GridShape shape, int mid, int row, int col, int value) override;
    int gridChanged(GridShape shape, int mid) override;
    // Slider banks and mouse pads, by instance number.
    int mouse(int mid, int reading) override;
    double slider(int mid, int num) override;
    void putSlider(int mid, int num, double value) override;
    void sliderRange(int mid, int num, double range, double offset) override;

private:
    StepData* fileData(int mid);  // the Sfile module of instance index `mid`
    GridCells* grid(GridShape shape, int mid, int row, int col, int& at);
    Engine& engine_;
    FormulaRuntime* runtime_ = nullptr;
    std::array<TimerId, 10> aclockTimers_{-1, -1, -1, -1, -1, -1, -1, -1, -1, -1};
    std::array<TimerId, 20> timerTimers_{-1, -1, -1, -1, -1, -1, -1, -1, -1, -1,
                                         -1, -1, -1, -1, -1, -1, -1, -1, -1, -1};
};

}  // namespace quillmer
