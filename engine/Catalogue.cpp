#include "engine/Catalogue.h"

#include <stdexcept>
#include <string>

namespace quillmer {
namespace {

constexpr std::array<TypeInfo, kTypeCount> kTypes{{
    TypeInfo{1, "Accum", "Accu-", 89, "Accumulate", MenuGroup::Events},
    TypeInfo{2, "Add", "Add-", 26, "Add", MenuGroup::Math},
    TypeInfo{3, "Add2", "Add2-", 175, "Add2", MenuGroup::Math},
    TypeInfo{4, "AddDiv", "AddDv-", 133, "AddDiv", MenuGroup::Math},
    TypeInfo{5, "Arpeg", "Arpeg-", 109, "Arpeggio", MenuGroup::Clocks},
    TypeInfo{6, "Free", "Free-", 177, "Free Run", MenuGroup::Clocks},
    TypeInfo{7, "Ball", "Ball-", 61, "Ball", MenuGroup::Clocks},
    TypeInfo{8, "BallCtrl", "BallCtrl-", -1, "Ball Ctrl", MenuGroup::Clocks},
    TypeInfo{9, "Bar", "Bar-", 44, "Bar", MenuGroup::Values},
    TypeInfo{10, "BioFlag", "BioFlag-", 113, "Bio Flags", MenuGroup::Files},
    TypeInfo{11, "BioSeq", "BioSq-", 112, "Bio Sequencer", MenuGroup::Files},
    TypeInfo{12, "Bits", "Bits-", -1, "Bits", MenuGroup::Display},
    TypeInfo{13, "Bounds", "Bounds-", 34, "Bounds", MenuGroup::Process},
    TypeInfo{14, "Button", "Button-", 69, "Button", MenuGroup::Values},
    TypeInfo{15, "Carry", "Carry-", 131, "Carry", MenuGroup::Math},
    TypeInfo{16, "Chain", "Chain-", -1, "Chain", MenuGroup::Files},
    TypeInfo{17, "Chaos", "Chaos-", 105, "Chaos", MenuGroup::Fractals},
    TypeInfo{18, "Clock", "Clock-", 2, "Clock", MenuGroup::Clocks},
    TypeInfo{19, "Corupt", "Crupt-", 114, "Corruption", MenuGroup::Random},
    TypeInfo{20, "Counter", "Countr-", 3, "Counter", MenuGroup::Clocks},
    TypeInfo{21, "DLTap", "DLTap-", 94, "Delay Tap", MenuGroup::Events},
    TypeInfo{22, "Delay", "Delay-", 45, "Delay", MenuGroup::Events},
    TypeInfo{23, "Diff", "Diff-", 99, "Difference", MenuGroup::Events},
    TypeInfo{24, "Div", "Div-", 24, "Divide", MenuGroup::Math},
    TypeInfo{25, "Flip", "Flip-", 70, "Flip", MenuGroup::Logic},
    TypeInfo{26, "FracOut", "FracOut-", 103, "Frac Out", MenuGroup::Fractals},
    TypeInfo{27, "Fractal", "Fractal-", 100, "Fractal", MenuGroup::Fractals},
    TypeInfo{28, "FunGen", "FGen-", 95, "Func Gen", MenuGroup::Fractals},
    TypeInfo{29, "GHold", "GHold-", 130, "GHold", MenuGroup::Logic},
    TypeInfo{30, "Gates", "Gates-", 84, "Gates", MenuGroup::Logic},
    TypeInfo{31, "Gatex08", "Pattern08-", 119, "Pattern08", MenuGroup::Patterns},
    TypeInfo{32, "Gatex16", "Pattern16-", 120, "Pattern16", MenuGroup::Patterns},
    TypeInfo{33, "Gatex32", "Pattern32-", 121, "Pattern32", MenuGroup::Patterns},
    TypeInfo{34, "HiLo", "HiLo-", 106, "Hi / Low", MenuGroup::Events},
    TypeInfo{35, "Image", "Image-", 101, "Image", MenuGroup::Fractals},
    TypeInfo{36, "ImgOut", "ImgOut-", 102, "Image Out", MenuGroup::Fractals},
    TypeInfo{37, "UCalc0", "ULR-", 167, "ULR - Row LEDs", MenuGroup::UserFunc},
    TypeInfo{38, "UCalc1", "UC1-", 168, "UC1 - Clock + 1 In", MenuGroup::UserFunc},
    TypeInfo{39, "UCalc2", "UF2-", 169, "UF2 - Fixed 2 Ins", MenuGroup::UserFunc},
    TypeInfo{40, "UCalc3", "UCV-", 170, "UCV - Clk+ 0-4 Ins", MenuGroup::UserFunc},
    TypeInfo{41, "UCalc4", "UFV-", 171, "UFV - 0-4  Ins", MenuGroup::UserFunc},
    TypeInfo{42, "UCalc5", "UFX-", 138, "UFX - Extended", MenuGroup::UserFunc},
    TypeInfo{43, "UCalc6", "ULM-", 151, "ULM - Matrix LEDs", MenuGroup::UserFunc},
    TypeInfo{44, "UCalc7", "UFO-", 152, "UFO - Output Only", MenuGroup::UserFunc},
    TypeInfo{45, "UCalcXC", "UCVX-", 153, "UCXV - Clk+ 0-16 Ins", MenuGroup::UserFunc},
    TypeInfo{46, "UCalcXV", "UFVX-", 154, "UFXV - 0-16 Ins", MenuGroup::UserFunc},
    TypeInfo{47, "Info", "InfoBox-", -1, "Info Box", MenuGroup::Display},
    TypeInfo{48, "InfoPic", "InfoPic-", -1, "Info Picture", MenuGroup::Display},
    TypeInfo{49, "Invert", "Invert-", 72, "Invert", MenuGroup::Logic},
    TypeInfo{50, "Keybd", "Keybd-", 86, "Keyboard", MenuGroup::Values},
    TypeInfo{51, "Kicker", "Kicker-", 79, "Kicker", MenuGroup::Events},
    TypeInfo{52, "Matrix4x4", "Mat4x4-", 148, "Matrix4x4", MenuGroup::Matrix},
    TypeInfo{53, "Matrix8x4", "Mat8x4-", 146, "Matrix8x4", MenuGroup::Matrix},
    TypeInfo{54, "Matrix8x8", "Mat8x8-", 144, "Matrix8x8", MenuGroup::Matrix},
    TypeInfo{55, "Matrix16x4", "Mat16x4-", 142, "Matrix16x4", MenuGroup::Matrix},
    TypeInfo{56, "Matrix16x8", "Mat16x8-", 140, "Matrix16x8", MenuGroup::Matrix},
    TypeInfo{57, "Matrix12x8", "Mat12x8-", 172, "Matrix12x8", MenuGroup::Matrix},
    TypeInfo{58, "MOut4x4", "MOut4x4-", 149, "M.Out4x4", MenuGroup::Matrix},
    TypeInfo{59, "MOut8x4", "MOut8x4-", 147, "M.Out8x4", MenuGroup::Matrix},
    TypeInfo{60, "MOut8x8", "MOut8x8-", 145, "M.Out8x8", MenuGroup::Matrix},
    TypeInfo{61, "MOut16x4", "MOut16x4-", 143, "M.Out16x4", MenuGroup::Matrix},
    TypeInfo{62, "MOut16x8", "MOut16x8-", 141, "M.Out16x8", MenuGroup::Matrix},
    TypeInfo{63, "MOut12x8", "MOut12x8-", 150, "MOut12x8", MenuGroup::Matrix},
    TypeInfo{64, "Knob2", "Knob02-", 4, "Knob2", MenuGroup::Knobs},
    TypeInfo{65, "Knob4", "Knob04-", 5, "Knob4", MenuGroup::Knobs},
    TypeInfo{66, "Knob8", "Knob08-", 6, "Knob8", MenuGroup::Knobs},
    TypeInfo{67, "Knob12", "Knob12-", 163, "Knob12", MenuGroup::Knobs},
    TypeInfo{68, "Knob16", "Knob16-", 7, "Knob16", MenuGroup::Knobs},
    TypeInfo{69, "Knob24", "Knob24-", 164, "Knob24", MenuGroup::Knobs},
    TypeInfo{70, "Latest", "Latest-", 41, "Latest", MenuGroup::Switch},
    TypeInfo{71, "Level", "Level-", 33, "Level", MenuGroup::Process},
    TypeInfo{72, "LogiAND", "AND-", 29, "AND", MenuGroup::Logic},
    TypeInfo{73, "LogiEQ0", "NOT-", 31, "NOT", MenuGroup::Logic},
    TypeInfo{74, "LogiNE0", "Num2G-", 32, "Num2G", MenuGroup::Logic},
    TypeInfo{75, "LogiOR", "OR-", 28, "OR", MenuGroup::Logic},
    TypeInfo{76, "LogiXOR", "XOR-", 30, "XOR", MenuGroup::Logic},
    TypeInfo{77, "MIDICCIn", "CCIn-", 73, "Ctrl Change In", MenuGroup::MIDI},
    TypeInfo{78, "MIDIPPIn", "PPIn-", 62, "Poly Press In", MenuGroup::MIDI},
    TypeInfo{79, "MIDIChan", "ChanOut-", -1, "Chan Out", MenuGroup::MIDI},
    TypeInfo{80, "MIDICtrl", "CtrlOut-", -1, "Ctrl Change Out", MenuGroup::MIDI},
    TypeInfo{81, "MIDIPoly", "PolyOut-", -1, "Poly Press Out", MenuGroup::MIDI},
    TypeInfo{82, "MIDIFile", "MIDIFile-", 82, "MIDI File", MenuGroup::Files},
    TypeInfo{83, "MIDIFileSlave", "MIDISlave-", 83, "MIDI File Slave", MenuGroup::Files},
    TypeInfo{84, "MIDIKey", "KeyOut-", -1, "Key Out", MenuGroup::MIDI},
    TypeInfo{85, "MIDIKeyNum", "KeyNum-", 76, "Key Number", MenuGroup::MIDI},
    TypeInfo{86, "MIDIKeyVel", "KeyVel-", 77, "Key Velocity", MenuGroup::MIDI},
    TypeInfo{87, "MIDIPBIn", "PBIn-", 129, "Pitch Bend In", MenuGroup::MIDI},
    TypeInfo{88, "MIDIPBend", "PBend-", -1, "Pitch Bend", MenuGroup::MIDI},
    TypeInfo{89, "MIDIPCIn", "PCIn-", 74, "Prog Change In", MenuGroup::MIDI},
    TypeInfo{90, "MIDIVoice", "Voice-", -1, "MIDI Voice", MenuGroup::MIDI},
    TypeInfo{91, "MIDITone", "Tone-", -1, "MIDI Tone", MenuGroup::MIDI},
    TypeInfo{92, "Mask", "Mask-", 60, "Mask", MenuGroup::Logic},
    TypeInfo{93, "Meter", "Meter-", -1, "Meter", MenuGroup::Display},
    TypeInfo{94, "Minus", "Minus-", 27, "Minus", MenuGroup::Math},
    TypeInfo{95, "Mixer", "Mixer-", 36, "Mixer", MenuGroup::Process},
    TypeInfo{96, "Modu", "Modu-", 25, "Modulus", MenuGroup::Math},
    TypeInfo{97, "MouseOut", "Mouse-", 108, "Mouse Out", MenuGroup::Values},
    TypeInfo{98, "Mousexy", "MousePad-", -1, "Mouse Pad", MenuGroup::Values},
    TypeInfo{99, "MulDiv", "MulDiv-", 132, "MulDiv", MenuGroup::Math},
    TypeInfo{100, "MulAdd", "MulAdd-", 174, "MulAdd", MenuGroup::Math},
    TypeInfo{101, "Mult", "Mult-", 23, "Multiply", MenuGroup::Math},
    TypeInfo{102, "Notes", "Note-", 43, "Note", MenuGroup::Values},
    TypeInfo{103, "T127", "T-", 180, "Table #127", MenuGroup::Values},
    TypeInfo{104, "NumGen", "NumGen-", 104, "Num Gen", MenuGroup::Fractals},
    TypeInfo{105, "Number", "#-", 47, "Number", MenuGroup::Values},
    TypeInfo{106, "Octave", "Octv-", 98, "Octave", MenuGroup::Process},
    TypeInfo{107, "Page08", "Page08-", 128, "Page08", MenuGroup::Pages},
    TypeInfo{108, "Page12", "Page12-", 127, "Page12", MenuGroup::Pages},
    TypeInfo{109, "Page128", "Page128-", 122, "Page128", MenuGroup::Pages},
    TypeInfo{110, "Page16", "Page16-", 126, "Page16", MenuGroup::Pages},
    TypeInfo{111, "Page24", "Page24-", 125, "Page24", MenuGroup::Pages},
    TypeInfo{112, "Page32", "Page32-", 124, "Page32", MenuGroup::Pages},
    TypeInfo{113, "Page64", "Page64-", 123, "Page64", MenuGroup::Pages},
    TypeInfo{114, "Percent", "Percent-", 38, "Percent", MenuGroup::Math},
    TypeInfo{115, "Pick04", "Pick04-", 115, "Pick04", MenuGroup::Pickers},
    TypeInfo{116, "Pick08", "Pick08-", 116, "Pick08", MenuGroup::Pickers},
    TypeInfo{117, "Pick16", "Pick16-", 117, "Pick16", MenuGroup::Pickers},
    TypeInfo{118, "Pick24", "Pick24-", 118, "Pick24", MenuGroup::Pickers},
    TypeInfo{119, "Pitch", "Pitch-", -1, "Pitch", MenuGroup::Display},
    TypeInfo{120, "Prob", "Prob-", 85, "Probability", MenuGroup::Random},
    TypeInfo{121, "Pulse", "Pulse-", 111, "Pulse", MenuGroup::Logic},
    TypeInfo{122, "Qscale", "Quant-", 49, "Quantize", MenuGroup::Process},
    TypeInfo{123, "Radio", "Radio-", 40, "Radio", MenuGroup::Values},
    TypeInfo{124, "RanPat", "PRan-", 97, "Pattern Rand", MenuGroup::Random},
    TypeInfo{125, "Rand", "Rand-", 37, "Random", MenuGroup::Random},
    TypeInfo{126, "Rand3", "RRan-", 96, "Rpt Rand", MenuGroup::Random},
    TypeInfo{127, "Relay2", "Relay-", 46, "Relay", MenuGroup::Switch},
    TypeInfo{128, "Rhythm", "Rhythm-", 59, "Rhythm", MenuGroup::Clocks},
    TypeInfo{129, "Run8", "Run8-", 161, "Run8", MenuGroup::Runs},
    TypeInfo{130, "Run12", "Run12-", 68, "Run12", MenuGroup::Runs},
    TypeInfo{131, "Run16", "Run16-", 67, "Run16", MenuGroup::Runs},
    TypeInfo{132, "Run24", "Run24-", 66, "Run24", MenuGroup::Runs},
    TypeInfo{133, "Run32", "Run32-", 65, "Run32", MenuGroup::Runs},
    TypeInfo{134, "Run48", "Run48-", 162, "Run48", MenuGroup::Runs},
    TypeInfo{135, "Run64", "Run64-", 64, "Run64", MenuGroup::Runs},
    TypeInfo{136, "Run128", "Run128-", 50, "Run128", MenuGroup::Runs},
    TypeInfo{137, "Sample", "Sample-", 39, "Sample", MenuGroup::Events},
    TypeInfo{138, "Scaler", "Scale-", 93, "Scale", MenuGroup::Process},
    TypeInfo{139, "SelOut", "SctOut-", 88, "Sel Out", MenuGroup::Switch},
    TypeInfo{140, "Selct", "Selct-", 87, "Select", MenuGroup::Switch},
    TypeInfo{141, "Sfile", "File-", 57, "File", MenuGroup::Files},
    TypeInfo{142, "Shift", "Shift-", 90, "Shift", MenuGroup::Logic},
    TypeInfo{143, "Slew", "Slew-", 48, "Slew", MenuGroup::Events},
    TypeInfo{144, "Slide12", "Slide12-", 55, "Slide12", MenuGroup::Sliders},
    TypeInfo{145, "Slide16", "Slide16-", 53, "Slide16", MenuGroup::Sliders},
    TypeInfo{146, "Slide24", "Slide24-", 56, "Slide24", MenuGroup::Sliders},
    TypeInfo{147, "Slide32", "Slide32-", 54, "Slide32", MenuGroup::Sliders},
    TypeInfo{148, "Slide48", "Slide48-", 139, "Slide48", MenuGroup::Sliders},
    TypeInfo{149, "Slide64", "Slide64-", 155, "Slide64", MenuGroup::Sliders},
    TypeInfo{150, "Slide128", "Slide128-", 160, "Slide128", MenuGroup::Sliders},
    TypeInfo{151, "Slide4", "Slide4-", 51, "Slide4", MenuGroup::Sliders},
    TypeInfo{152, "Slide8", "Slide8-", 52, "Slide8", MenuGroup::Sliders},
    TypeInfo{153, "Step12", "Step12-", 165, "Step12", MenuGroup::Steps},
    TypeInfo{154, "Step16", "Step16-", 11, "Step16", MenuGroup::Steps},
    TypeInfo{155, "Step24", "Step24-", 166, "Step24", MenuGroup::Steps},
    TypeInfo{156, "Step2", "Step02-", 8, "Step2", MenuGroup::Steps},
    TypeInfo{157, "Step32", "Step32-", 12, "Step32", MenuGroup::Steps},
    TypeInfo{158, "Step4", "Step04-", 9, "Step4", MenuGroup::Steps},
    TypeInfo{159, "Step8", "Step08-", 10, "Step8", MenuGroup::Steps},
    TypeInfo{160, "Stepper", "Stepper-", 42, "Stepper", MenuGroup::Clocks},
    TypeInfo{161, "Strobe", "Strb-", 81, "Strobe", MenuGroup::Values},
    TypeInfo{162, "Switch16", "Switch16-", 22, "Switch16", MenuGroup::Switch},
    TypeInfo{163, "Switch2", "Switch02-", 19, "Switch2", MenuGroup::Switch},
    TypeInfo{164, "Switch4", "Switch04-", 20, "Switch4", MenuGroup::Switch},
    TypeInfo{165, "Switch8", "Switch08-", 21, "Switch8", MenuGroup::Switch},
    TypeInfo{166, "Sync", "Sync-", 63, "Sync", MenuGroup::Logic},
    TypeInfo{167, "SysEx", "SysEx-", -1, "SysEx Out", MenuGroup::MIDI},
    TypeInfo{168, "SysExFile", "SyxFile-", -1, "SysEx File", MenuGroup::MIDI},
    TypeInfo{169, "TWrite", "TWrite-", 80, "TWrite", MenuGroup::Process},
    TypeInfo{170, "Tabla", "Table-", 78, "Table", MenuGroup::Process},
    TypeInfo{171, "Tally", "Tally-", 107, "Tally", MenuGroup::Events},
    TypeInfo{172, "Test", "Test-", 18, "Test", MenuGroup::Events},
    TypeInfo{173, "URanOut", "MROut-", 91, "MRrand Out", MenuGroup::Random},
    TypeInfo{174, "URand", "MuRan-", 92, "Multi Rand", MenuGroup::Random},
    TypeInfo{175, "Unity", "Unity-", 71, "Unity", MenuGroup::Math},
    TypeInfo{176, "MIDICIn", "CtrlIn-", 178, "MIDI CtrltIn", MenuGroup::Files},
    TypeInfo{177, "MIDIPIn", "PolyIn-", 179, "MIDI PolyIn", MenuGroup::Files},
    TypeInfo{178, "ToneTbl", "ToneTbl-", 137, "Tone Table", MenuGroup::Display},
    TypeInfo{179, "VBar", "VBar-", 110, "VBar", MenuGroup::Values},
    TypeInfo{180, "Value", "Val-", 35, "Value", MenuGroup::Values},
    TypeInfo{181, "Tempox", "Tempo-", -1, "Tempo", MenuGroup::Display},
    TypeInfo{182, "XNote", "XNote-", 134, "XNote", MenuGroup::Process},
    TypeInfo{183, "TNames", "TNames-", -1, "TNames", MenuGroup::Display},
    TypeInfo{184, "InfoButton", "InfoBtn-", -1, "Info Button", MenuGroup::Display},
    TypeInfo{185, "InfoButPic", "PicBtn-", -1, "Pic Button", MenuGroup::Display},
    TypeInfo{186, "TFit", "TFit-", 135, "TFit", MenuGroup::Process},
    TypeInfo{187, "IPLink", "Link-", 136, "Link", MenuGroup::Display},
    TypeInfo{188, "CtrlOut32", "Ctrl32-", -1, "Ctrl Change Sliders", MenuGroup::MIDI},
    TypeInfo{189, "UFSldr", "UFS-", -1, "UF Sliders", MenuGroup::UserFunc},
}};

std::vector<ModuleTypeId> resolveAll(std::initializer_list<std::string_view> names) {
    std::vector<ModuleTypeId> ids;
    ids.reserve(names.size());
    for (std::string_view n : names) {
        const auto id = typeIdByName(n);
        if (!id) throw std::logic_error("catalogue: unknown type " + std::string(n));
        ids.push_back(*id);
    }
    return ids;
}

}  // namespace

std::span<const TypeInfo> allTypes() { return kTypes; }

const TypeInfo& typeInfo(ModuleTypeId id) {
    if (id < 1 || id > kTypeCount) throw std::out_of_range("module type id out of range");
    return kTypes[static_cast<size_t>(id - 1)];
}

std::optional<ModuleTypeId> typeIdByName(std::string_view type) {
    for (const TypeInfo& t : kTypes)
        if (t.type == type) return t.id;
    return std::nullopt;
}

const std::vector<MenuGroupInfo>& menuGroups() {
    static const std::vector<MenuGroupInfo> groups{
    {MenuGroup::Values, "Values", {"Button", "Strobe", "Bar", "VBar", "Value", "Number", "Radio", "Mousexy", "MouseOut", "Keybd", "Notes", "T127"}},
    {MenuGroup::Pickers, "Pickers", {"Pick04", "Pick08", "Pick16", "Pick24"}},
    {MenuGroup::Clocks, "Clocks", {"Clock", "Free", "Ball", "BallCtrl", "Arpeg", "Rhythm", "Stepper", "Counter"}},
    {MenuGroup::Logic, "Logic", {"Sync", "GHold", "Flip", "Pulse", "LogiNE0", "LogiEQ0", "Mask", "LogiAND", "Invert", "LogiXOR", "Shift", "Gates", "LogiOR"}},
    {MenuGroup::UserFunc, "UserFunc", {"UFSldr", "UCalc1", "UCalc3", "UCalcXC", "UCalc2", "UCalc4", "UCalcXV", "UCalc0", "UCalc6", "UCalc5", "UCalc7"}},
    {MenuGroup::Patterns, "Patterns", {"Gatex08", "Gatex16", "Gatex32"}},
    {MenuGroup::Matrix, "Matrix", {"Matrix4x4", "Matrix8x4", "Matrix8x8", "Matrix12x8", "Matrix16x4", "Matrix16x8", "MOut4x4", "MOut8x4", "MOut8x8", "MOut12x8", "MOut16x4", "MOut16x8"}},
    {MenuGroup::Knobs, "Knobs", {"Knob2", "Knob4", "Knob8", "Knob12", "Knob16", "Knob24"}},
    {MenuGroup::Steps, "Steps", {"Step2", "Step4", "Step8", "Step12", "Step16", "Step24", "Step32"}},
    {MenuGroup::Sliders, "Sliders", {"Slide4", "Slide8", "Slide12", "Slide16", "Slide24", "Slide32", "Slide48", "Slide64", "Slide128"}},
    {MenuGroup::Runs, "Runs", {"Run8", "Run12", "Run16", "Run24", "Run32", "Run48", "Run64", "Run128"}},
    {MenuGroup::Pages, "Pages", {"Page08", "Page12", "Page16", "Page24", "Page32", "Page64", "Page128"}},
    {MenuGroup::Files, "Files", {"Sfile", "MIDIFile", "MIDIFileSlave", "MIDICIn", "MIDIPIn", "Chain", "BioSeq", "BioFlag"}},
    {MenuGroup::Random, "Random", {"Rand", "Rand3", "RanPat", "URand", "URanOut", "Prob", "Corupt"}},
    {MenuGroup::Fractals, "Fractals", {"Fractal", "FracOut", "FunGen", "NumGen", "Chaos", "Image", "ImgOut"}},
    {MenuGroup::Events, "Events", {"Accum", "Diff", "HiLo", "Tally", "Kicker", "Test", "Sample", "Delay", "DLTap", "Slew"}},
    {MenuGroup::Switch, "Switch", {"Switch2", "Switch4", "Switch8", "Switch16", "Relay2", "Selct", "SelOut", "Latest"}},
    {MenuGroup::Math, "Math", {"Unity", "Mult", "Div", "Modu", "MulDiv", "MulAdd", "Add2", "Add", "AddDiv", "Minus", "Carry", "Percent"}},
    {MenuGroup::Process, "Process", {"Bounds", "Scaler", "Level", "Octave", "Mixer", "Qscale", "Tabla", "TWrite", "TFit", "XNote"}},
    {MenuGroup::Display, "Display", {"Info", "InfoPic", "InfoButton", "InfoButPic", "Bits", "Pitch", "TNames", "Meter", "IPLink", "Tempox", "ToneTbl"}},
    {MenuGroup::MIDI, "MIDI", {"MIDIChan", "MIDIVoice", "MIDITone", "MIDIKey", "MIDICtrl", "MIDIPoly", "MIDIPBend", "SysEx", "SysExFile", "CtrlOut32", "-", "MIDICCIn", "MIDIPPIn", "MIDIPCIn", "MIDIPBIn", "MIDIKeyNum", "MIDIKeyVel"}},
    };
    return groups;
}

const std::vector<ModuleTypeId>& passOrder() {
    static const std::vector<ModuleTypeId> order = resolveAll({
        // clocks
        "MouseOut", "Clock", "Free", "BallCtrl", "Ball", "Arpeg", "Rhythm", "Stepper", "Counter",
        "Sync", "GHold", "Flip", "Pulse",
        // logic
        "LogiNE0", "LogiEQ0", "Mask", "LogiAND", "LogiOR", "Invert", "LogiXOR", "Shift", "Gates",
        // formulas
        "UCalc1", "UCalc3", "UCalc2", "UCalc4", "UCalcXC", "UCalcXV", "UCalc0", "UCalc6", "UCalc5",
        "UCalc7",
        // sequencers
        "Gatex08", "Gatex16", "Gatex32", "Matrix4x4", "Matrix8x4", "Matrix8x8", "Matrix12x8",
        "Matrix16x4", "Matrix16x8", "MOut4x4", "MOut8x4", "MOut8x8", "MOut12x8", "MOut16x4",
        "MOut16x8", "Knob2", "Knob4", "Knob8", "Knob12", "Knob16", "Knob24", "Step2", "Step4",
        "Step8", "Step12", "Step16", "Step24", "Step32", "Slide4", "Slide8", "Slide12", "Slide16",
        "Slide24", "Slide32", "Slide48", "Slide64", "Slide128", "Run8", "Run12", "Run16", "Run24",
        "Run32", "Run48", "Run64", "Run128", "Page08", "Page12", "Page16", "Page24", "Page32",
        "Page64", "Page128", "Sfile", "MIDIFile", "MIDIFileSlave", "MIDICIn", "MIDIPIn", "BioSeq",
        "BioFlag",
        // generators
        "Rand", "Rand3", "RanPat", "URand", "URanOut", "Prob", "Corupt", "Fractal", "FracOut",
        "Accum", "FunGen", "NumGen", "Chaos", "Image", "ImgOut",
        // processors
        "Diff", "HiLo", "Tally", "Kicker", "Test", "Sample", "Delay", "DLTap", "Slew", "Switch2",
        "Switch4", "Switch8", "Switch16", "Relay2", "Selct", "SelOut", "Latest", "Unity", "Mult",
        "Div", "Modu", "MulDiv", "MulAdd", "Add2", "Add", "AddDiv", "Minus", "Carry", "Percent",
        "Bounds", "Scaler", "Level", "Octave", "Mixer", "Qscale", "Tabla", "TFit", "TWrite",
        "XNote", "IPLink", "ToneTbl"});
    return order;
}

const std::vector<ModuleTypeId>& inputAndDisplayTypes() {
    static const std::vector<ModuleTypeId> order = resolveAll({
        "Value", "Radio", "Number", "Keybd", "Notes", "T127", "Info", "InfoButton", "InfoButPic",
        "InfoPic", "Mousexy", "Button", "Pick04", "Pick08", "Pick16", "Pick24", "CtrlOut32",
        "Strobe", "Bar", "VBar", "MIDICCIn", "MIDIPPIn", "MIDIPCIn", "MIDIPBIn", "MIDIKeyNum",
        "MIDIKeyVel"});
    return order;
}

const std::vector<ModuleTypeId>& afterPassTypes() {
    static const std::vector<ModuleTypeId> order =
        resolveAll({"Meter", "Tempox", "Pitch", "TNames", "Bits"});
    return order;
}

const std::vector<ModuleTypeId>& midiOutputTypes() {
    static const std::vector<ModuleTypeId> order =
        resolveAll({"MIDIChan", "MIDIPBend", "MIDIVoice", "MIDIKey", "MIDITone", "MIDICtrl",
                    "MIDIPoly", "SysEx", "SysExFile", "Chain"});
    return order;
}

const std::vector<ModuleTypeId>& midiInputReaderTypes() {
    static const std::vector<ModuleTypeId> order = resolveAll(
        {"MIDICCIn", "MIDIPPIn", "MIDIPCIn", "MIDIPBIn", "MIDIKeyNum", "MIDIKeyVel"});
    return order;
}

const std::vector<ModuleTypeId>& midiOutputTypesOnInput() {
    static const std::vector<ModuleTypeId> order =
        resolveAll({"MIDIChan", "MIDIPBend", "MIDIVoice", "MIDIKey", "MIDITone", "MIDICtrl",
                    "MIDIPoly", "SysEx", "SysExFile"});
    return order;
}

bool runsOutsidePasses(ModuleTypeId id) {
    static const std::array<bool, kTypeCount + 1> outside = [] {
        std::array<bool, kTypeCount + 1> flags{};
        for (const auto* list : {&inputAndDisplayTypes(), &afterPassTypes(), &midiOutputTypes()})
            for (ModuleTypeId t : *list) flags[static_cast<size_t>(t)] = true;
        return flags;
    }();
    return id >= 1 && id <= kTypeCount && outside[static_cast<size_t>(id)];
}

}  // namespace quillmer
