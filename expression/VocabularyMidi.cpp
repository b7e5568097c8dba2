// The MIDI family and the grid, table, file-data, mouse and slider access.

#include <cmath>

#include "engine/MidiInputTables.h"
#include "expression/RuntimeStores.h"

namespace quillmer {

using expr::Args;
using namespace fx;

namespace {

FormulaStores& out(const Args& a) { return rt(a).stores(); }
int slotOf(double port, double chan) {
    return static_cast<int>((whole(chan) & 15) + (whole(port) & 3) * 16);
}
uint8_t bits7(double x) { return static_cast<uint8_t>(whole(x) & 127); }

double send(const Args& a, uint8_t statusBase) {
    out(a).sendMidi(static_cast<int>(whole(a[1]) & 3), static_cast<uint8_t>(statusBase | (whole(a[2]) & 15)),
                    bits7(a[3]), bits7(a[4]));
    return 0;
}

// A signed value -4096..4095 as two seven-bit halves around 8192; false out of range.
bool split14(double value, uint8_t& msb, uint8_t& lsb) {
    const int64_t v = whole(value);
    if (v < -4096 || v > 4095) return false;
    const int64_t u = v + 8192;
    msb = static_cast<uint8_t>((u >> 7) & 127);
    lsb = static_cast<uint8_t>(u & 127);
    return true;
}

constexpr double kNone = 9999;

const Definition kMidi[] = {
    {"MIDIMsg(port,chan,msg,ctrl,val)",
     [](const Args& a) {
         out(a).sendMidi(static_cast<int>(whole(a[1]) & 3),
                         static_cast<uint8_t>((whole(a[3]) & 0xF0) | (whole(a[2]) & 15)), bits7(a[4]), bits7(a[5]));
         return 0.0;
     }},
    {"MIDICtrl(port,chan,ctrl,val)", [](const Args& a) { return send(a, 0xB0); }},
    {"MIDIPoly(port,chan,ctrl,val)", [](const Args& a) { return send(a, 0xA0); }},
    {"MIDICtrlIn(port,chan,ctrl)",
     [](const Args& a) {
         const MidiInputTables* in = out(a).midiInput();
         if (in == nullptr) return 0.0;
         return static_cast<double>(in->InControl[bits7(a[3])][static_cast<size_t>(slotOf(a[1], a[2]))]);
     }},
    {"MIDIPolyIn(port,chan,ctrl)",
     [](const Args& a) {
         const MidiInputTables* in = out(a).midiInput();
         if (in == nullptr) return 0.0;
         return static_cast<double>(in->InPolyPressure[bits7(a[3])][static_cast<size_t>(slotOf(a[1], a[2]))]);
     }},
    {"MIDIKeysOff(port,chan)", [](const Args& a) { return static_cast<double>(out(a).takeKeyOffs(slotOf(a[1], a[2]))); }},
    // Returns the number of Control Changes sent.
    {"NRPNOut(port,chan,msp,lsp,msd,lsd=9999,rpn=0)",
     [](const Args& a) {
         uint8_t pm;
         uint8_t pl;
         if (a[3] == kNone) {
             if (!split14(a[4], pm, pl)) return 0.0;
         } else {
             pm = bits7(a[3]);
             pl = bits7(a[4]);
         }
         uint8_t dm;
         uint8_t dl = 0;
         bool sendLsb = a[6] != kNone;
         if (a[5] == kNone) {
             if (!split14(a[6], dm, dl)) return 0.0;
             sendLsb = true;
         } else {
             dm = bits7(a[5]);
             if (sendLsb) dl = bits7(a[6]);
         }
         const int port = static_cast<int>(whole(a[1]) & 3);
         const uint8_t status = static_cast<uint8_t>(0xB0 | (whole(a[2]) & 15));
         const bool rpn = a[7] != 0;
         out(a).sendMidi(port, status, rpn ? 101 : 99, pm);
         out(a).sendMidi(port, status, rpn ? 100 : 98, pl);
         out(a).sendMidi(port, status, 6, dm);
         if (sendLsb) out(a).sendMidi(port, status, 38, dl);
         return sendLsb ? 4.0 : 3.0;
     }},
    {"NRPNIn(port,chan,msp,lsp,rpn=0,val=0)",
     [](const Args& a) {
         MidiInputTables* in = out(a).midiInput();
         if (in == nullptr) return 0.0;
         std::vector<int16_t>& table = a[5] != 0 ? in->InRpnTable : in->InNrpnTable;
         if (table.empty()) return 0.0;
         const size_t i = MidiInputTables::parameterIndex(bits7(a[3]), bits7(a[4]), slotOf(a[1], a[2]));
         const double v = table[i];
         if (a[6] != 0) table[i] = 0;
         return v;
     }},
};

// Grids: mid 0..127, row and column inside the shape.
bool cellOk(GridShape s, const Args& a) {
    return inRange(a[1], 0, 127) && inRange(a[2], 0, gridRows(s) - 1) && inRange(a[3], 0, gridColumns(s) - 1);
}
template <GridShape S>
double readCell(const Args& a) {
    if (!cellOk(S, a)) return 0;
    return out(a).gridCell(S, cut(a[1], 0, 127), cut(a[2], 0, 7), cut(a[3], 0, 15));
}
template <GridShape S>
double writeCell(const Args& a) {
    if (!cellOk(S, a)) return 0;
    const int v = cut(a[4], 0, 127);
    out(a).writeGridCell(S, cut(a[1], 0, 127), cut(a[2], 0, 7), cut(a[3], 0, 15), v);
    return v;
}
template <GridShape S>
double changed(const Args& a) {
    return inRange(a[1], 0, 127) ? out(a).gridChanged(S, cut(a[1], 0, 127)) : 0.0;
}

const Definition kGrids[] = {
    {"R16x8(mid,row,col)", readCell<GridShape::G16x8>},
    {"W16x8(mid,row,col,val)", writeCell<GridShape::G16x8>},
    {"F16x8(1)", changed<GridShape::G16x8>},
    {"R16x4(mid,row,col)", readCell<GridShape::G16x4>},
    {"W16x4(mid,row,col,val)", writeCell<GridShape::G16x4>},
    {"F16x4(1)", changed<GridShape::G16x4>},
    {"R12x8(mid,row,col)", readCell<GridShape::G12x8>},
    {"W12x8(mid,row,col,val)", writeCell<GridShape::G12x8>},
    {"R8x8(mid,row,col)", readCell<GridShape::G8x8>},
    {"W8x8(mid,row,col,val)", writeCell<GridShape::G8x8>},
    {"F8x8(1)", changed<GridShape::G8x8>},
    {"R8x4(mid,row,col)", readCell<GridShape::G8x4>},
    {"W8x4(mid,row,col,val)", writeCell<GridShape::G8x4>},
    {"F8x4(1)", changed<GridShape::G8x4>},
    {"R4x4(mid,row,col)", readCell<GridShape::G4x4>},
    {"W4x4(mid,row,col,val)", writeCell<GridShape::G4x4>},
    {"F4x4(1)", changed<GridShape::G4x4>},
    {"RTbl(2)",
     [](const Args& a) {
         if (!inRange(a[1], 0, 127) || !inRange(a[2], 0, 127)) return 0.0;
         return static_cast<double>(out(a).tableStep(cut(a[1], 0, 127), cut(a[2], 0, 127)));
     }},
    {"WTbl(tbl,stp,val)",
     [](const Args& a) {
         if (!inRange(a[1], 0, 127) || !inRange(a[2], 0, 127)) return 0.0;
         const int v = cut(a[3], 0, 127);
         out(a).writeTableStep(cut(a[1], 0, 127), cut(a[2], 0, 127), v);
         return static_cast<double>(v);
     }},
    {"RFile(2)",
     [](const Args& a) {
         if (!inRange(a[1], 0, 127) || a[2] < 0) return 0.0;
         return static_cast<double>(out(a).fileStep(cut(a[1], 0, 127), cut(a[2], 0, 1 << 30)));
     }},
    {"WFile(mid,stp,val)",
     [](const Args& a) {
         if (!inRange(a[1], 0, 127) || a[2] < 0) return 0.0;
         const int v = cut(a[3], 0, 127);
         out(a).writeFileStep(cut(a[1], 0, 127), cut(a[2], 0, 1 << 30), v);
         return static_cast<double>(v);
     }},
    {"FFile(1)",
     [](const Args& a) { return inRange(a[1], 0, 127) ? static_cast<double>(out(a).fileChanged(cut(a[1], 0, 127))) : 0.0; }},
    {"UFOMouse(2)",
     [](const Args& a) {
         return inRange(a[1], 0, 127) ? static_cast<double>(out(a).mouse(cut(a[1], 0, 127), cut(a[2], 0, 15))) : 0.0;
     }},
    {"GetSlider(2)",
     [](const Args& a) {
         if (!inRange(a[1], 0, 127) || !inRange(a[2], 0, 63)) return 0.0;
         return out(a).slider(cut(a[1], 0, 127), cut(a[2], 0, 63));
     }},
    {"PutSlider(mid, num, val)",
     [](const Args& a) {
         if (!inRange(a[1], 0, 127) || !inRange(a[2], 0, 63)) return 0.0;
         out(a).putSlider(cut(a[1], 0, 127), cut(a[2], 0, 63), a[3]);
         return a[3];
     }},
    {"SliderRange(mid, num, rng=127, ofst=0)",
     [](const Args& a) {
         if (!inRange(a[1], 0, 127) || !inRange(a[2], 0, 63)) return 0.0;
         const double range = std::max(0.1, std::fabs(a[3]));
         out(a).sliderRange(cut(a[1], 0, 127), cut(a[2], 0, 63), range, a[4]);
         return range;
     }},
};

}  // namespace

void Vocabulary::midiAndGrids(FormulaRuntime& r) {
    define(r, kMidi, std::size(kMidi));
    define(r, kGrids, std::size(kGrids));
}

}  // namespace quillmer
