#include "engine/FileLayout.h"

#include <array>
#include <charconv>
#include <stdexcept>
#include <string>

namespace quillmer {

namespace {

constexpr std::array<FileSlot, kFileSlotCount> kFileOrder{{
    {0, 0x1f52, "Add", "H 384s 768b"},
    {1, 0x1f54, "Bar", "H 128b"},
    {2, 0x1f56, "Bounds", "H 384s 768b"},
    {3, 0x1f58, "Button", "H 384b"},
    {4, 0x1f5a, "Clock", "H 384s 768b"},
    {5, 0x1f5c, "Number", "H 128b"},
    {6, 0x1f5e, "Counter", "H 640s 1280b"},
    {7, 0x1f60, "Delay", "H 256s 640b"},
    {8, 0x1f62, "Div", "H 256s 512b"},
    {9, 0x1f64, "", "H 128s 768b"},
    {10, 0x1f66, "", "H 128s 768b"},
    {11, 0x1f68, "", "H 128s 768b"},
    {12, 0x1f6a, "", "H 128s 768b"},
    {13, 0x1f6c, "", "H 128s 768b"},
    {14, 0x1f6e, "Knob16", "H 128s 2304b"},
    {15, 0x1f70, "Knob2", "H 128s 512b"},
    {16, 0x1f72, "Knob4", "H 128s 768b"},
    {17, 0x1f74, "Knob8", "H 128s 1280b"},
    {18, 0x1f76, "Latest", "H 384s 768b"},
    {19, 0x1f78, "Level", "H 128s 768b"},
    {20, 0x1f7a, "LogiAND", "H 256s 512b"},
    {21, 0x1f7c, "LogiEQ0", "H 128s 256b"},
    {22, 0x1f7e, "LogiNE0", "H 128s 256b"},
    {23, 0x1f80, "LogiOR", "H 384s 768b"},
    {24, 0x1f82, "LogiXOR", "H 256s 512b"},
    {25, 0x1f84, "Meter", "H 512s 1024b"},
    {26, 0x1f86, "MIDICtrl", "H 128s 512b"},
    {27, 0x1f88, "Minus", "H 256s 512b"},
    {28, 0x1f8a, "Mixer", "H 512s 1664b"},
    {29, 0x1f8c, "Modu", "H 256s 512b"},
    {30, 0x1f8e, "Mult", "H 256s 512b"},
    {31, 0x1f90, "Notes", "H 128b"},
    {32, 0x1f92, "Percent", "H 256s 512b"},
    {33, 0x1f94, "Radio", "H 1152b"},
    {34, 0x1f96, "Rand", "H 384s 768b"},
    {35, 0x1f98, "Relay2", "H 384s 768b"},
    {36, 0x1f9a, "Sample", "H 256s 512b"},
    {37, 0x1f9c, "Step16", "H 128s 2304b"},
    {38, 0x1f9e, "Step2", "H 128s 512b"},
    {39, 0x1fa0, "Step32", "H 128s 4352b"},
    {40, 0x1fa2, "Step4", "H 128s 768b"},
    {41, 0x1fa4, "Step8", "H 128s 1280b"},
    {42, 0x1fa6, "Stepper", "H 640s 1280b"},
    {43, 0x1fa8, "Switch16", "H 2176s 4352b"},
    {44, 0x1faa, "Switch2", "H 384s 768b"},
    {45, 0x1fac, "Switch4", "H 640s 1280b"},
    {46, 0x1fae, "Switch8", "H 1152s 2304b"},
    {47, 0x1fb0, "Test", "H 256s 640b"},
    {48, 0x1fb2, "Value", "H 128b"},
    {49, 0x1fb4, "MIDIChan", "H 896s 1920b"},
    {50, 0x1fb6, "MIDIKey", "H 512s 1280b"},
    {51, 0x1fb8, "Slew", "H 256s 512b"},
    {52, 0x1fba, "Qscale", "H 256s 512b"},
    {53, 0x1fbc, "Run128", "H 128s 16640b"},
    {54, 0x1fbe, "Slide4", "H 128s 896b"},
    {55, 0x1fc0, "Slide8", "H 128s 1408b"},
    {56, 0x1fc2, "Slide16", "H 128s 2432b"},
    {57, 0x1fc4, "Slide32", "H 128s 4480b"},
    {58, 0x1fc6, "Pitch", "H 128s 256b"},
    {59, 0x1fc8, "Sfile", "22b s 512s 1024b d1"},
    {60, 0x1fca, "Slide12", "H 128s 1920b"},
    {61, 0x1fcc, "Slide24", "H 128s 3456b"},
    {62, 0x1fce, "Info", "30b s s"},
    {63, 0x1fd0, "MIDIVoice", "H 896s 2048b"},
    {64, 0x1fd2, "Rhythm", "H 256s 5248b"},
    {65, 0x1fd4, "Mask", "H 128s 384b"},
    {66, 0x1fd6, "Ball", "H 768b"},
    {67, 0x1fd8, "", "H 384s 768b"},
    {68, 0x1fda, "Sync", "H 256s 512b"},
    {69, 0x1fdc, "Run64", "H 128s 8448b"},
    {70, 0x1fde, "Run32", "H 128s 4352b"},
    {71, 0x1fe0, "Run24", "H 128s 3328b"},
    {72, 0x1fe2, "Run16", "H 128s 2304b"},
    {73, 0x1fe4, "Run12", "H 128s 1792b"},
    {74, 0x1fe6, "Flip", "H 256s 640b"},
    {75, 0x1fe8, "Unity", "H 128s 256b"},
    {76, 0x1fea, "Invert", "H 128s 384b"},
    {77, 0x1fec, "Bits", "H 128s 256b"},
    {78, 0x1fee, "MIDICCIn", "H 256b"},
    {79, 0x1ff0, "MIDIPCIn", "H 128b"},
    {80, 0x1ff2, "MIDIPBend", "H 128s 384b"},
    {81, 0x1ff4, "MIDIKeyNum", "H 256b"},
    {82, 0x1ff6, "MIDIKeyVel", "H 256b"},
    {83, 0x1ff8, "Tabla", "H 256s 512b"},
    {84, 0x1ffa, "Kicker", "H 384s 768b"},
    {85, 0x1ffc, "TWrite", "H 512s 1024b"},
    {86, 0x1ffe, "Strobe", "H"},
    {87, 0x2000, "", "H 512s 1536b"},
    {88, 0x2002, "", "H 384b"},
    {89, 0x2004, "Gates", "H 1024s 2048b"},
    {90, 0x2006, "Prob", "H 256s 512b"},
    {91, 0x2008, "SysEx", "H 384s 768b"},
    {92, 0x200a, "Keybd", "H 256b"},
    {93, 0x200c, "Selct", "H 256s 640b"},
    {94, 0x200e, "SelOut", "H 256b"},
    {95, 0x2010, "Accum", "H 768s 1664b"},
    {96, 0x2012, "Shift", "H 256s 768b"},
    {97, 0x2014, "URanOut", "H 256b"},
    {98, 0x2016, "URand", "H 384s 768b"},
    {99, 0x2018, "Scaler", "H 384s 768b"},
    {100, 0x201a, "DLTap", "H 128s 384b"},
    {101, 0x201c, "FunGen", "H 512s 1152b"},
    {102, 0x201e, "Rand3", "H 384s 1024b"},
    {103, 0x2020, "RanPat", "H 768s 1664b"},
    {104, 0x2022, "Octave", "H 384s 768b"},
    {105, 0x2024, "Diff", "H 128s 256b"},
    {106, 0x2026, "Image", "H 32770b 512s 1408b"},
    {107, 0x2028, "ImgOut", "H 512s 1536b"},
    {108, 0x202a, "Fractal", "H 640s 1792b"},
    {109, 0x202c, "FracOut", "H 256s 896b"},
    {110, 0x202e, "NumGen", "H 896s 2048b"},
    {111, 0x2030, "Chaos", "H 640s 1664b"},
    {112, 0x2032, "HiLo", "H 256s 640b"},
    {113, 0x2034, "Tally", "H 384s 896b"},
    {114, 0x2036, "SysExFile", "H s s 256s 512b"},
    {115, 0x2038, "Mousexy", "3226b"},
    {116, 0x203a, "MouseOut", "H 256b"},
    {117, 0x203c, "Arpeg", "H 512s 1024b"},
    {118, 0x203e, "VBar", "H 128b"},
    {119, 0x2040, "Pulse", "H 128s 256b"},
    {120, 0x2042, "Chain", "H s s 256s 512b"},
    {121, 0x2044, "BioSeq", "H 768s 1664b"},
    {122, 0x2046, "BioFlag", "H 128s 384b"},
    {123, 0x2048, "BallCtrl", "H 256s 768b"},
    {124, 0x204a, "Corupt", "H 512s 1280b"},
    {125, 0x204c, "Pick04", "H s 4s 640b"},
    {126, 0x204e, "Pick08", "H s 8s 1152b"},
    {127, 0x2050, "Pick16", "H s 16s 2176b"},
    {128, 0x2052, "Pick24", "H s 24s 3200b"},
    {129, 0x1da7, "Gatex08", "H 512b 256s 640b"},
    {130, 0x1da9, "Gatex16", "H 512b 256s 640b"},
    {131, 0x1dab, "Gatex32", "H 512b 256s 640b"},
    {132, 0x1dad, "Page128", "H 16384b 128f20 256s 640b"},
    {133, 0x1daf, "Page64", "H 8192b 128f20 256s 640b"},
    {134, 0x1db1, "Page32", "H 4096b 128f20 256s 640b"},
    {135, 0x1db3, "Page24", "H 3072b 128f20 256s 640b"},
    {136, 0x1db5, "Page16", "H 2048b 128f20 256s 640b"},
    {137, 0x1db7, "Page12", "H 1536b 128f20 256s 640b"},
    {138, 0x1db9, "Page08", "H 1024b 128f20 256s 640b"},
    {139, 0x1dbb, "MIDIPBIn", "H 128b"},
    {140, 0x1dbd, "GHold", "H 384s 896b"},
    {141, 0x1dbf, "Carry", "H 256b"},
    {142, 0x1dc1, "MulDiv", "H 384s 768b"},
    {143, 0x1dc3, "AddDiv", "H 512s 1280b"},
    {144, 0x1dc5, "MIDIFile", "H 2b d1 d4 f20 f3 64b 384s 1152b"},
    {145, 0x1dc7, "MIDIFileSlave", "H 2b d1 d4 f20 f3 320b"},
    {146, 0x1dc9, "Tempox", "H 512s 1152b"},
    {147, 0x1dcb, "XNote", "H 128s 384b"},
    {148, 0x1dcd, "TNames", "H 128f20 128s 384b"},
    {149, 0x1dcf, "InfoButton", "30b s s"},
    {150, 0x1dd1, "TFit", "H 2b 256s 640b"},
    {151, 0x1dd3, "IPLink", "H 256s 640b"},
    {152, 0x1dd5, "MIDITone", "H 1152s 2816b"},
    {153, 0x1dd7, "ToneTbl", "H 128s 384b"},
    {154, 0x1dd9, "UCalc5", "H 2b 768s 1664b"},
    {155, 0x1ddb, "Slide48", "H 128s 6528b"},
    {156, 0x1ddd, "Matrix16x8", "H 16384b 128f20 512s 17792b"},
    {157, 0x1ddf, "MOut16x8", "H 256s 768b"},
    {158, 0x1de1, "Matrix16x4", "H 8192b 128f20 512s 9472b"},
    {159, 0x1de3, "MOut16x4", "H 256s 768b"},
    {160, 0x1de5, "Matrix8x8", "H 8192b 128f20 512s 9600b"},
    {161, 0x1de7, "MOut8x8", "H 256s 768b"},
    {162, 0x1de9, "Matrix8x4", "H 4096b 128f20 512s 5376b"},
    {163, 0x1deb, "MOut8x4", "H 256s 768b"},
    {164, 0x1ded, "Matrix4x4", "H 2048b 128f20 512s 3328b"},
    {165, 0x1def, "MOut4x4", "H 256s 768b"},
    {166, 0x1df1, "MOut12x8", "H 256s 768b"},
    {167, 0x1df3, "Slide64", "H 128s 8576b"},
    {168, 0x1df5, "Slide128", "H 128s 16768b"},
    {169, 0x1df7, "Run8", "H 128s 1280b"},
    {170, 0x1df9, "Run48", "H 128s 6400b"},
    {171, 0x1dfb, "Knob12", "H 128s 1792b"},
    {172, 0x1dfd, "Knob24", "H 128s 3328b"},
    {173, 0x1dff, "Step12", "H 128s 1792b"},
    {174, 0x1e01, "Step24", "H 128s 3328b"},
    {175, 0x1e03, "UCalc0", "H 258b"},
    {176, 0x1e05, "UCalc1", "H 2b 256s 768b"},
    {177, 0x1e07, "UCalc2", "H 2b 256s 768b"},
    {178, 0x1e09, "UCalc3", "H 3b 640s 1536b"},
    {179, 0x1e0b, "UCalc4", "H 3b 512s 1280b"},
    {180, 0x1e0d, "UCalc6", "H 2b 128b 256s 896b"},
    {181, 0x1e0f, "Matrix12x8", "H 12288b 128f20 512s 13568b"},
    {182, 0x1e11, "UCalc7", "H 258b"},
    {183, 0x1e13, "CtrlOut32", "H s 32s 4354b"},
    {184, 0x1e15, "MIDIPoly", "H 128s 512b"},
    {185, 0x1e17, "MIDIPPIn", "H 256b"},
    {186, 0x1e19, "UCalcXC", "H 3b 2176s 4608b"},
    {187, 0x1e1b, "UCalcXV", "H 3b 2048s 4352b"},
    {188, 0x1e1d, "InfoPic", "30b s s"},
    {189, 0x1e1f, "InfoButPic", "30b s s"},
    {190, 0x1e21, "MulAdd", "H 384s 768b"},
    {191, 0x1e23, "Add2", "H 256s 512b"},
    {192, 0x1e25, "UFSldr", "24b s s 2b 64s 9600b"},
    {193, 0x1e27, "Free", "H 512s 1280b"},
    {194, 0x1e29, "MIDICIn", "H 128s 512b"},
    {195, 0x1e2b, "MIDIPIn", "H 128s 512b"},
    {196, 0x1e2d, "T127", "H 128b"},
}};

uint32_t number(std::string_view digits) {
    uint32_t n = 0;
    const auto [ptr, ec] = std::from_chars(digits.data(), digits.data() + digits.size(), n);
    if (ec != std::errc() || ptr != digits.data() + digits.size()) throw std::logic_error("bad layout token");
    return n;
}

}  // namespace

std::span<const FileSlot> fileOrder() { return kFileOrder; }

const FileSlot& fileSlotOf(ModuleTypeId id) {
    static const std::array<int16_t, kTypeCount + 1> slotOfType = [] {
        std::array<int16_t, kTypeCount + 1> slots{};
        for (const FileSlot& slot : kFileOrder)
            if (!slot.retired()) slots[static_cast<size_t>(*typeIdByName(slot.type))] = slot.k;
        return slots;
    }();
    return kFileOrder[static_cast<size_t>(slotOfType.at(static_cast<size_t>(id)))];
}

std::vector<LayoutToken> parseLayout(std::string_view layout) {
    std::vector<LayoutToken> tokens;
    size_t start = 0;
    while (start < layout.size()) {
        size_t end = layout.find(' ', start);
        if (end == std::string_view::npos) end = layout.size();
        const std::string_view t = layout.substr(start, end - start);
        start = end + 1;
        if (t == "H") {
            tokens.push_back({LayoutToken::Kind::Head});
        } else if (t[0] == 'd') {
            tokens.push_back({LayoutToken::Kind::Dynamic, 1, number(t.substr(1))});
        } else if (const size_t f = t.find('f'); f != std::string_view::npos) {
            tokens.push_back({LayoutToken::Kind::FixedStrings, f == 0 ? 1 : number(t.substr(0, f)), number(t.substr(f + 1))});
        } else if (t.back() == 's') {
            tokens.push_back({LayoutToken::Kind::Strings, t.size() == 1 ? 1 : number(t.substr(0, t.size() - 1))});
        } else if (t.back() == 'b') {
            tokens.push_back({LayoutToken::Kind::Bytes, number(t.substr(0, t.size() - 1))});
        } else {
            throw std::logic_error("bad layout token");
        }
    }
    return tokens;
}

namespace {
constexpr size_t kHeadBytes = 18;  // ... and Top, Left
}  // namespace

// Strings, arrays and blocks are passed over by their lengths; nothing is copied.
void skipRecord(ByteReader& in, const std::vector<LayoutToken>& layout) {
    for (const LayoutToken& t : layout) {
        switch (t.kind) {
            case LayoutToken::Kind::Head:
                in.skip(kHeadBytes);
                in.skip(in.u16());
                break;
            case LayoutToken::Kind::Strings:
                for (uint32_t i = 0; i < t.count; ++i) in.skip(in.u16());
                break;
            case LayoutToken::Kind::Bytes: in.skip(t.count); break;
            case LayoutToken::Kind::FixedStrings: in.skip(size_t{t.count} * t.size); break;
            case LayoutToken::Kind::Dynamic: {
                const uint16_t dims = in.u16();
                // Counted in bytes, saturating: a product too large for 64 bits stays too large.
                uint64_t arrayBytes = dims == 0 ? 0 : t.size;
                for (uint16_t d = 0; d < dims; ++d) {
                    const auto count = static_cast<uint32_t>(in.i32());
                    in.skip(4);  // lower bound
                    arrayBytes = count != 0 && arrayBytes > UINT64_MAX / count ? UINT64_MAX : arrayBytes * count;
                }
                if (arrayBytes > in.remaining()) throw RecordFormatError("array runs past the end");
                in.skip(static_cast<size_t>(arrayBytes));
                break;
            }
        }
    }
}

std::span<const uint8_t> recordSpan(ByteReader& in, const std::vector<LayoutToken>& layout) {
    const size_t start = in.position();
    skipRecord(in, layout);
    return {in.data() + start, in.position() - start};
}

std::vector<uint8_t> readRecordBytes(ByteReader& in, const std::vector<LayoutToken>& layout) {
    const std::span<const uint8_t> record = recordSpan(in, layout);
    return {record.begin(), record.end()};
}

uint64_t maxRecordBytes(const std::vector<LayoutToken>& layout) {
    constexpr uint64_t kLongestString = 2 + 65535;
    uint64_t total = 0;
    for (const LayoutToken& t : layout) {
        switch (t.kind) {
            case LayoutToken::Kind::Head: total += kHeadBytes + kLongestString; break;
            case LayoutToken::Kind::Strings: total += uint64_t{t.count} * kLongestString; break;
            case LayoutToken::Kind::Bytes: total += t.count; break;
            case LayoutToken::Kind::FixedStrings: total += uint64_t{t.count} * t.size; break;
            case LayoutToken::Kind::Dynamic: return UINT64_MAX;
        }
    }
    return total;
}

std::vector<uint8_t> blankRecordBytes(const std::vector<LayoutToken>& layout) {
    ByteWriter out;
    for (const LayoutToken& t : layout) {
        switch (t.kind) {
            case LayoutToken::Kind::Head:
                for (size_t i = 0; i < kHeadBytes; ++i) out.u8(0);
                out.str("");
                break;
            case LayoutToken::Kind::Strings:
                for (uint32_t i = 0; i < t.count; ++i) out.str("");
                break;
            case LayoutToken::Kind::Bytes:
                for (uint32_t i = 0; i < t.count; ++i) out.u8(0);
                break;
            case LayoutToken::Kind::FixedStrings:
                for (uint32_t i = 0; i < t.count; ++i) out.fixed("", t.size);
                break;
            case LayoutToken::Kind::Dynamic: out.u16(0); break;
        }
    }
    return out.bytes();
}

std::optional<UsualForm> usualForm(const std::vector<LayoutToken>& layout) {
    if (layout.empty() || layout[0].kind != LayoutToken::Kind::Head) return std::nullopt;
    if (layout.size() == 1) return UsualForm{0, 0};
    if (layout.size() == 2 && layout[1].kind == LayoutToken::Kind::Bytes) return UsualForm{0, layout[1].count};
    if (layout.size() == 3 && layout[1].kind == LayoutToken::Kind::Strings && layout[2].kind == LayoutToken::Kind::Bytes)
        return UsualForm{layout[1].count, layout[2].count};
    return std::nullopt;
}

}  // namespace quillmer

namespace quillmer {

const std::vector<ModuleTypeId>& recallOrder() {
    static const std::vector<ModuleTypeId> order = [] {
        std::vector<ModuleTypeId> ids;
        std::array<bool, kTypeCount + 1> taken{};
        for (std::string_view name : {"Info", "InfoButPic", "InfoButton", "InfoPic", "Mousexy"})
            taken[static_cast<size_t>(*typeIdByName(name))] = true;
        auto take = [&](ModuleTypeId id) {
            if (taken[static_cast<size_t>(id)]) return;
            taken[static_cast<size_t>(id)] = true;
            ids.push_back(id);
        };
        for (std::string_view name : {"Bar", "VBar", "Value", "Button", "Pick04", "Pick08", "Pick16", "Pick24",
                                      "CtrlOut32", "UFSldr", "Strobe", "Ball", "Number", "Keybd", "Notes", "T127",
                                      "Radio", "Add", "Bounds", "Clock", "Counter", "Free", "Arpeg", "Corupt",
                                      "Delay", "DLTap", "FunGen", "Div"})
            take(*typeIdByName(name));
        for (const FileSlot& slot : fileOrder())
            if (!slot.retired()) take(*typeIdByName(slot.type));
        return ids;
    }();
    return order;
}

}  // namespace quillmer
