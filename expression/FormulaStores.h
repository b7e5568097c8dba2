#pragma once
// What the formula functions reach outside the expression runtime, one narrow door per store.
// Every call answers 0 or does nothing here; EngineFormulaStores wires the doors to an engine,
// and a store that doesn't exist yet simply keeps these answers.

#include <cstdint>
#include <string_view>


namespace quillmer {

struct MidiInputTables;

// The shapes of the matrix grids that R16x8, W16x8, F16x8 ... reach.
enum class GridShape : uint8_t { G16x8, G16x4, G12x8, G8x8, G8x4, G4x4 };
constexpr int gridColumns(GridShape s) {
    switch (s) {
        case GridShape::G16x8:
        case GridShape::G16x4:
            return 16;
        case GridShape::G12x8:
            return 12;
        case GridShape::G8x8:
        case GridShape::G8x4:
            return 8;
        default:
            return 4;
    }
}
constexpr int gridRows(GridShape s) {
    return (s == GridShape::G16x8 || s == GridShape::G12x8 || s == GridShape::G8x8) ? 8 : 4;
}

class FormulaStores {
public:
    virtual ~FormulaStores() = default;

    // Bus, transport and clocks.
    virtual uint8_t busValue(int /*busId*/) { return 0; }
    virtual void setRun(bool /*run*/) {}
    virtual void setAbsClock(int /*which: 0 A, 1 B*/, int /*ms*/) {}
    virtual int64_t midiClockTicks() { return 0; }
    // The counter of a duration code (counts down to 0, the beat).
    virtual int durationCounter(int /*code*/) { return 0; }
    // Formula timers: kind 0 the absolute clocks (0..9), 1 the timers (0..19); ms 0 stops.
    // A running one calls FormulaRuntime::timerFired each period.
    virtual void setFormulaTimer(int /*kind*/, int /*n*/, int /*ms*/) {}

    // MIDI.
    virtual void sendMidi(int /*port*/, uint8_t /*status*/, uint8_t /*data1*/, uint8_t /*data2*/) {}
    virtual MidiInputTables* midiInput() { return nullptr; }
    // Key-offs seen on a channel slot since the last call.
    virtual int takeKeyOffs(int /*slot*/) { return 0; }

    // Matrix grids by module number; a write says whether the cell changed.
    virtual int gridCell(GridShape, int /*mid*/, int /*row*/, int /*col*/) { return 0; }
    virtual bool writeGridCell(GridShape, int /*mid*/, int /*row*/, int /*col*/, int /*value*/) { return false; }
    virtual int gridChanged(GridShape, int /*mid*/) { return 0; }

    // General tables.
    virtual int tableStep(int /*table*/, int /*step*/) { return 0; }
    virtual void writeTableStep(int /*table*/, int /*step*/, int /*value*/) {}

    // The data of Sfile modules; a step is taken modulo the data's length + 1.
    virtual int fileStep(int /*mid*/, int /*step*/) { return 0; }
    virtual void writeFileStep(int /*mid*/, int /*step*/, int /*value*/) {}
    virtual int fileChanged(int /*mid*/) { return 0; }

    // Panels: mouse pads and slider banks.
    virtual int mouse(int /*mid*/, int /*reading*/) { return 0; }
    // Pictures of the image modules by number, colours as 24-bit numbers. False: no such
    // picture here, and the pixel functions keep a picture of their own under that number.
    virtual bool readPixel(int /*mid*/, int /*x*/, int /*y*/, uint32_t& /*colour*/) { return false; }
    virtual bool writePixel(int /*mid*/, int /*x*/, int /*y*/, uint32_t /*colour*/) { return false; }
    virtual bool fillPicture(int /*mid*/, uint32_t /*colour*/) { return false; }
    virtual double slider(int /*mid*/, int /*num*/) { return 0; }
    virtual void putSlider(int /*mid*/, int /*num*/, double /*value*/) {}
    virtual void sliderRange(int /*mid*/, int /*num*/, double /*range*/, double /*offset*/) {}

    // A message for the user.
    virtual void message(std::string_view /*text*/) {}
};

}  // namespace quillmer
